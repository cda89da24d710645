// The day-end and month-end packages on February of the closing practice
// (closing_practice.h: Bell 11 dentist, Hill 12 hygienist, Stone 13): the
// fixed order of the sections, the page rule, the empty run, the summary
// per provider, the hygiene messages and the trap.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <variant>
#include <vector>

#include "closing/closing_practice.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

class ClosingPackages : public ClosingTest {
 protected:
  void SetUp() override {
    ClosingTest::SetUp();
    NewDocument();
  }
  // Every title the heading routine or a self-headed section printed (the
  // 20-point runs), with the page it stands on (from 1), in page order.
  struct Title {
    std::string text;
    int page;
  };
  std::vector<Title> Titles() const {
    std::vector<Title> titles;
    const render::Document& doc = form.VSP.Document();
    for (size_t p = 0; p < doc.pages.size(); ++p) {
      for (const render::DisplayItem& item : doc.pages[p].items) {
        const auto* run = std::get_if<render::TextRun>(&item);
        if (run != nullptr && run->size_pt == 20.0f) {
          titles.push_back({run->text, static_cast<int>(p) + 1});
        }
      }
    }
    return titles;
  }
  std::vector<std::string> TitleTexts() const {
    std::vector<std::string> texts;
    for (const Title& t : Titles()) texts.push_back(t.text);
    return texts;
  }
  int Pages() const { return static_cast<int>(form.VSP.Document().pages.size()); }

  // The day-end package over February 20 with the chosen flags; every
  // other argument fixed.
  struct DayEndFlags {
    bool detailed = false, applied = false, production = false, deposit = false, cash_in = false,
         adjustment = false, incomplete = false, unapplied = false, new_patient = false,
         by_provider = false, edi = false, summary = false;
  };
  void DayEnd(const DayEndFlags& f, const std::string& providers = kAllThree, int16_t view = 0) {
    reports.rptDayEndReport(f.detailed, f.applied, f.production, f.deposit, f.cash_in, f.adjustment,
                            f.incomplete, f.unapplied, f.new_patient, f.by_provider, f.edi, Feb(20),
                            Feb(20), view, "dana", providers, false, "", f.summary);
  }
  struct MonthEndFlags {
    bool detailed = false, summary = false, ar = false, cash_in = false, adjustment = false,
         incomplete = false, hygiene = false, unapplied = false, applied = false,
         production = false, new_patients = false, provider_summary = false;
  };
  void MonthEnd(const MonthEndFlags& f, const std::string& providers = kAllThree,
                int16_t view = 0) {
    reports.rptMonthEndReport(f.detailed, f.summary, f.ar, f.cash_in, f.adjustment, f.incomplete,
                              f.hygiene, Feb(1), Feb(28), view, "dana", providers, false,
                              f.unapplied, f.applied, f.production, f.new_patients, "",
                              f.provider_summary);
  }
};

// Every section, each on a page of its own, in the package's order; the
// flags come in a different order in the call, so a package that followed
// the arguments would print "Summary Analysis" last in the day-end and
// "Summary Analysis Report" second to the hygiene section in the month-end.
TEST_F(ClosingPackages, SectionsComeInTheirFixedOrder) {
  DayEnd({true, true, true, true, true, true, true, true, true, true, true, true});
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  const std::vector<std::string> day_end = {"Day End Report - Detailed Analysis",
                                            "Applied Payments Report",
                                            "Production Report",
                                            "Summary Analysis",
                                            "Bank Deposit Slip",
                                            "Cash In Detailed Report",
                                            "Adjustment Report",
                                            "Incomplete Invoices Report",
                                            "Unapplied Payments Report",
                                            "New Patient Report",
                                            "Production by Provider",
                                            "EDI Transaction Report"};
  EXPECT_EQ(TitleTexts(), day_end);
  // Each section begins a page of its own, in order (a section may run on).
  const auto each_on_a_new_page = [&] {
    int last_page = 0;
    for (const Title& t : Titles()) {
      EXPECT_GT(t.page, last_page) << t.text;
      last_page = t.page;
    }
  };
  each_on_a_new_page();
  EXPECT_EQ(form.VSP.DocName(), "Analysis Report");
  EXPECT_EQ(form.ShowCount(), 1);

  MonthEnd({true, true, true, true, true, true, true, true, true, true, true, true});
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  const std::vector<std::string> month_end = {
      "Detailed Analysis Report",   "Summary Analysis Report",
      "New Patient Report",         "Accounts Receivable for the Practice",
      "Cash In Summary Report",     "Adjustment Report",
      "Incomplete Invoices Report", "Unapplied Payments Report",
      "Applied Payments Report",    "Production Summary Report",
      "Hygiene Company Report",     "Provider Summary Report"};
  EXPECT_EQ(TitleTexts(), month_end);
  each_on_a_new_page();
  // The provider summary drew into the package: one document, shown once
  // more, numbered throughout.
  EXPECT_EQ(form.ShowCount(), 2);
  EXPECT_NE(Text().find("Page " + std::to_string(Pages()) + " of " + std::to_string(Pages())),
            std::string::npos);
}

// Nothing chosen: one page, empty but for its footer, named and shown.
TEST_F(ClosingPackages, AllFlagsFalseGiveOneFooteredPage) {
  struct Case {
    const char* name;
    std::function<void()> run;
  } const cases[] = {
      {"day end", [&] { DayEnd({}); }},
      {"month end", [&] { MonthEnd({}); }},
  };
  int shown = 0;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    c.run();
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(Pages(), 1);
    EXPECT_TRUE(Titles().empty());
    const std::string footer = LineWith("Page 1 of 1");
    EXPECT_NE(footer.find("Printed by Orvenda - Tessalyne Inc."), std::string::npos) << Text();
    EXPECT_EQ(form.VSP.DocName(), "Analysis Report");
    EXPECT_EQ(form.ShowCount(), ++shown);
  }
}

// A section starts a page only after something was drawn: the first one
// never leaves page 1 empty, and one that drew nothing moves nothing on.
TEST_F(ClosingPackages, NewPageOnlyAfterSomethingWasDrawn) {
  struct Case {
    const char* name;
    MonthEndFlags flags;
    const char* providers;
    std::vector<std::string> titles;
    std::vector<int> pages;
  } const cases[] = {
      {"the first section on the first page",
       [] {
         MonthEndFlags f;
         f.new_patients = true;
         return f;
       }(),
       kAllThree,
       {"New Patient Report"},
       {1}},
      // Bell is no hygienist: the hygiene section is skipped and draws
      // nothing, so the provider summary still opens page 1.
      {"after a section that drew nothing",
       [] {
         MonthEndFlags f;
         f.hygiene = true;
         f.provider_summary = true;
         return f;
       }(),
       "ProviderID = 11",
       {"Provider Summary Report"},
       {1}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    MonthEnd(c.flags, c.providers);
    std::vector<int> pages;
    for (const Title& t : Titles()) pages.push_back(t.page);
    EXPECT_EQ(TitleTexts(), c.titles);
    EXPECT_EQ(pages, c.pages);
    EXPECT_EQ(Pages(), c.pages.back());
  }
}

// The month-end summary analysis: a table per chosen provider, titled with
// the name, and the practice's totals only when more than one was chosen.
TEST_F(ClosingPackages, PracticeTotalsOnlyForMoreThanOneProvider) {
  MonthEndFlags flags;
  flags.summary = true;
  MonthEnd(flags, "ProviderID = 11");
  EXPECT_EQ(LinesWith("Ada Bell").size(), 1u) << Text();
  EXPECT_EQ(LineWith("Practice Totals For Selected Providers"), "");

  MonthEnd(flags, kAllThree);
  EXPECT_TRUE(InOrder(Text(), {"\nAda Bell\n", "\nHugo Hill\n", "\nIvy Stone\n",
                                         "\nPractice Totals For Selected Providers\n"}));
  EXPECT_EQ(LinesWith("Practice Totals For Selected Providers").size(), 1u);
  EXPECT_EQ(LineWith("This Report contains"),
            "This Report contains all payments including unallocated payments");
}

// The hygiene section's two messages, word for word: no hygienist among
// the chosen providers skips it before its heading; no codes for the
// office (office 9 has none) stops it under its heading.
TEST_F(ClosingPackages, HygieneMessagesWordForWord) {
  MonthEndFlags flags;
  flags.hygiene = true;
  MonthEnd(flags, "ProviderID = 11 OR ProviderID = 13");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            " No Hygiene providers were selected. Therefore, the Hygiene Report will be skipped.");
  EXPECT_TRUE(Titles().empty());

  // The codes' message is the hygiene report's own (product_summary_test).
  host.messages.clear();
  reports.OfficeID = 9;
  MonthEnd(flags, kAllThree);
  ASSERT_TRUE(SaidOnce(host, "You must setup the codes you wish to use for your hygiene company"));
  EXPECT_EQ(TitleTexts(), std::vector<std::string>{"Hygiene Company Report"});
}

// A failure shows the packages' message and leaves the document as far as
// it got: no footers, no preview. A filter the database cannot read fails
// before anything is drawn.
TEST_F(ClosingPackages, TrapLeavesTheDocumentAsFarAsItGot) {
  const std::string trap = "An Error has occurred in Sub rptAnalysisReport in Class clsReports\n";
  MonthEndFlags flags;
  flags.new_patients = true;
  flags.adjustment = true;
  MonthEnd(flags, kAllThree, /*view=*/9);
  ASSERT_TRUE(SaidOnce(host, trap));
  EXPECT_EQ(TitleTexts(), (std::vector<std::string>{"New Patient Report", "Adjustment Report"}));
  EXPECT_EQ(LineWith("Printed by Orvenda"), "");
  EXPECT_EQ(form.ShowCount(), 0);

  host.messages.clear();
  DayEndFlags day;
  day.new_patient = true;
  DayEnd(day, "ProviderID = = 11");
  ASSERT_TRUE(SaidOnce(host, trap));
  EXPECT_NE(host.messages[0].prompt.find("ID = = 11"), std::string::npos)
      << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 0);
}

// The aged list of the package covers the chosen providers: with all
// three chosen it is the whole practice's list, row for row.
TEST_F(ClosingPackages, AgedListCoversTheChosenProviders) {
  reports.srptAccountReceivable(Feb(28), 0, "", "dana");
  const std::vector<std::string> whole = LinesWith(", ");
  const std::string balances = LineWith("Balances ");
  ASSERT_NE(balances, "");
  MonthEndFlags flags;
  flags.ar = true;
  MonthEnd(flags, kAllThree);
  EXPECT_EQ(LineWith("Balances "), balances);
  EXPECT_EQ(LinesWith(", "), whole);
}

}  // namespace
}  // namespace orv::testing
