// The detailed analysis on February of the closing practice
// (closing_practice.h), figures worked by hand from its table.
#include <gtest/gtest.h>

#include "closing/closing_practice.h"
#include "common/errors.h"
#include "support/host_said.h"

namespace orv::testing {
namespace {

class DetailedAnalysis : public ClosingTest {
 protected:
  void SetUp() override {
    ClosingTest::SetUp();
    NewDocument();
  }
  void Run(int16_t view, bool by_allocated, const std::string& providers = kAllThree) {
    reports.srptDetailedAnalysis(Feb(1), Feb(28), view, "Ana", providers, by_allocated);
  }
};

TEST_F(DetailedAnalysis, TreatmentByProviderCountsEntryCancellationAndInvoicesWithoutLines) {
  Run(0, true);
  ASSERT_TRUE(host.messages.empty()) << host.messages.front().prompt;
  // Entered and cancelled in the period: once on its entry day, once
  // negated on the day of the cancellation; both rows, and the invoice's
  // total on the last of them nets to nothing.
  EXPECT_EQ(LinesWith("9003C"),
            (std::vector<std::string>{"02/10/2026 Singh, Priya Bell, Ada 9003C -80.00",
                                      "02/05/2026 Singh, Priya Bell, Ada 9003C 80.00 0.00"}));
  // A line entered after its treatment counts on its entry day; the
  // treatment day only prints under it (with doctor, overseer, code and
  // the insurer's portion).
  EXPECT_EQ(LineWith("01/27/2026"), "01/27/2026 Bell, Ada Bell, Ada 27201 300.00");
  // The invoice without lines, on its date, with the invoice's total.
  EXPECT_EQ(LineWith("9005C"), "02/20/2026 Singh, Priya Bell, Ada 9005C 70.00 70.00");
  // The invoice total prints once, on the last row of the invoice (9003C
  // above); the last record of the set closes its invoice: 90 - 20 on the second
  // of the hygienist's two rows.
  const auto lines_904 = LinesWith("9004C");
  ASSERT_EQ(lines_904.size(), 2u);
  EXPECT_EQ(lines_904[1].substr(lines_904[1].size() - 5), "70.00") << lines_904[1];
  EXPECT_EQ(lines_904[0].find("70.00"), std::string::npos) << lines_904[0];

  // Group totals: patient, overall; then the insurance portion.
  EXPECT_EQ(LinesWith("Totals:").front(), "Totals: 420.00 720.00");
  EXPECT_EQ(LinesWith("Lab Fees:"),
            (std::vector<std::string>{"Lab Fees: 150.00", "Lab Fees: -20.00"}));
  // The write-off on January's line of Bell's; Ivy Stone had no treatment
  // but her write-off still counts.
  EXPECT_EQ(LinesWith("Invoice Adjustments:"),
            (std::vector<std::string>{"Invoice Adjustments: 40.00", "Invoice Adjustments: 0.00",
                                      "Invoice Adjustments: 30.00"}));
  EXPECT_EQ(LineWith("Ivy Stone"), "Ivy Stone");
  EXPECT_EQ(LineWith("Write Offs:"), "Write Offs: 30.00");
  EXPECT_EQ(LineWith("9001 01/15/2026 02/25/2026"),
            "9001 01/15/2026 02/25/2026 Write-off Claire Tremblay 40.00");

  const std::vector<std::pair<std::string, std::string>> footer = {
      {"Lab Total:", "130.00"},      {"Patient Total:", "490.00"}, {"Insurance Total:", "300.00"},
      {"Overall Total:", "790.00"},  {"Write offs:", "70.00"},     {"Net Total:", "720.00"}};
  for (const auto& [label, amount] : footer) {
    EXPECT_EQ(LineWith(label), label + " " + amount);
  }
}

TEST_F(DetailedAnalysis, ThePersonOfEachViewGroupsTheSameRows) {
  struct Case {
    const char* name;
    int16_t view;
    std::vector<std::string> heads;  // group headings, in order
  } const cases[] = {
      {"by provider: the line's provider", 0, {"Bell, Ada", "Hill, Hugo"}},
      // Every invoice is overseen by Bell, Hill's included.
      {"by overseer", 1, {"Bell, Ada"}},
      {"by preferred doctor", 2, {"Bell, Ada"}},
      {"by date: the entry (or cancellation) day",
       3,
       {"Feb/03/2026", "Feb/05/2026", "Feb/10/2026", "Feb/12/2026", "Feb/20/2026"}},
  };
  // The account summary reads the same payment rows as the chapter, in
  // every view and both readings.
  const auto figure = [](const std::string& line) { return line.substr(line.rfind(' ') + 1); };
  for (const Case& c : cases) {
    for (bool by_allocated : {true, false}) {
      SCOPED_TRACE(std::string(c.name) + (by_allocated ? ", by allocated" : ", all payments"));
      NewDocument();
      Run(c.view, by_allocated);
      ASSERT_TRUE(host.messages.empty()) << host.messages.front().prompt;
      std::vector<std::string> heads;
      for (const std::string& h : c.heads) {
        if (!LinesWith(h).empty()) heads.push_back(h);
      }
      EXPECT_EQ(heads, c.heads);
      EXPECT_EQ(LineWith("Patient Total:"), "Patient Total: 490.00");
      EXPECT_EQ(LineWith("Net Total:"), "Net Total: 720.00");
      EXPECT_EQ(figure(LineWith("Net New Payments")), figure(LinesWith("Total ").back()));
    }
  }
}

TEST_F(DetailedAnalysis, APartialAllocationInBothPaymentReadingsAndTheAccountSummary) {
  // By allocated payment: only what was applied in the period, under the
  // provider of the line: Seamus's 60 under Hill; the 40 left on account
  // never shows.
  Run(0, true);
  EXPECT_EQ(LineWith("Partial Allocation"), "");
  EXPECT_EQ(LineWith("952 O'Brien, Seamus"), "952 O'Brien, Seamus Seamus Cheque 1 60.00 0.00 60.00");
  EXPECT_EQ(LineWith("Net New Payments"), "Net New Payments 510.00");
  EXPECT_EQ(LineWith("Patient Total|"), "");
  EXPECT_EQ(LinesWith("Patient Total").back(), "Patient Total 210.00");

  // All payments: the cheques of the period; the 40 nobody allocated
  // belongs to the provider who took it in (Bell) as a credit row.
  NewDocument();
  Run(0, false);
  // (The type cell wraps: "Cheque -  Credit" / "from Partial" / "Allocation".)
  EXPECT_EQ(LinesWith("952 O'Brien, Seamus"),
            (std::vector<std::string>{"952 O'Brien, Seamus Seamus Cheque -  Credit 1 40.00 0.00 40.00",
                                      "952 O'Brien, Seamus Seamus Cheque 1 60.00 0.00 60.00"}));
  EXPECT_EQ(LineWith("Partial"), "from Partial");
  EXPECT_EQ(LineWith("Net New Payments"), "Net New Payments 550.00");
  EXPECT_EQ(LinesWith("Patient Total").back(), "Patient Total 250.00");
  EXPECT_EQ(LinesWith("Insurance Total").back(), "Insurance Total 300.00");
  EXPECT_EQ(LinesWith("Net Total").back(), "Net Total 550.00");
  // The account summary totals the same payments by bank account; the
  // write-offs count in none.
  EXPECT_EQ(LineWith("Operating"), "1 Operating 400.00");  // 300 + 60 + the 40 credit
  EXPECT_EQ(LineWith("Payroll"), "2 Payroll 150.00");
  EXPECT_EQ(LineWith("None "), "None 0.00");
  EXPECT_EQ(LinesWith("Total ").back(), "Total 550.00");
}

TEST_F(DetailedAnalysis, AReallocationSeenFromBothProviders) {
  Run(0, true);
  // Seamus's cheque, taken in by Bell on 02-12, applied to Hill's line on
  // 02-14: it left Bell and arrived at Hill.
  EXPECT_EQ(LinesWith("Payment Reallocation by"),
            (std::vector<std::string>{"Payment Reallocation by Ada Bell",
                                      "Payment Reallocation by Hugo Hill"}));
  EXPECT_EQ(LinesWith("Seamus O'Brien 9004"),
            (std::vector<std::string>{"02/14/2026 Seamus O'Brien 9004 1 Ada Bell Hugo Hill -60.00",
                                      "02/14/2026 Seamus O'Brien 9004 1 Ada Bell Hugo Hill 60.00"}));
  EXPECT_EQ(LinesWith("Reallocation Adjustment:"),
            (std::vector<std::string>{"Reallocation Adjustment: -60.00",
                                      "Reallocation Adjustment: 0.00"}));
  EXPECT_EQ(LinesWith("Net Payments:"),
            (std::vector<std::string>{"Net Payments: -60.00", "Net Payments: 60.00"}));
  EXPECT_EQ(LineWith("Reallocation Adjustment -"), "Reallocation Adjustment -60.00");
  EXPECT_EQ(LineWith("Reallocation Payment "), "Reallocation Payment 60.00");
  // Only Bell's and Hill's: Ivy moved nothing.
  EXPECT_EQ(LineWith("Ivy Stone Hugo"), "");
}

TEST_F(DetailedAnalysis, AReallocationIsNotCountedTwiceForTheProviderItReached) {
  // Hill alone, in both readings: the 60 applied to his line is his
  // payment row already; the reallocation list shows where it came from
  // but must not add it to his totals a second time.
  for (bool by_allocated : {true, false}) {
    SCOPED_TRACE(by_allocated ? "by allocated" : "all payments");
    NewDocument();
    Run(0, by_allocated, "ProviderID = 12");
    EXPECT_EQ(LineWith("Payment Reallocation by"), "Payment Reallocation by Hugo Hill");
    EXPECT_EQ(LineWith("Reallocation Payment "), "Reallocation Payment 60.00");
    EXPECT_EQ(LinesWith("Patient Total").back(), "Patient Total 60.00");
    EXPECT_EQ(LinesWith("Net Total").back(), "Net Total 60.00");
  }
}

// Wherever the section starts on a page, no heading (the chapter's lines,
// a person's name, "Write Offs", a reallocation's title) is the last line
// of a page, and a group's lab fees stay under its totals.
TEST_F(DetailedAnalysis, HeadingsAndClosingRowsStayWithTheirRows) {
  const int kept = ExpectKeptTogether(
      120, 50, [&] { Run(0, true); },
      [](const std::string& l) {
        return l == "Listed by Treatment Entry Date" || l == "Summarized by Provider" ||
               l == "Bell, Ada" || l == "Hill, Hugo" || l == "Ivy Stone" || l == "Write Offs" ||
               StartsWith(l, "Payment Reallocation by ");
      },
      [](const std::string& l) { return StartsWith(l, "Lab Fees:"); });
  EXPECT_GT(kept, 2);
}

TEST_F(DetailedAnalysis, BadInputIsRefusedOrTrapped) {
  // A view outside 0-3: refused before anything is drawn.
  const int pages = form.VSP.PageCount();
  for (int16_t view : {-1, 4}) {
    try {
      Run(view, true);
      ADD_FAILURE() << "view " << view << " was accepted";
    } catch (const ReportError& e) {
      EXPECT_NE(std::string(e.what()).find("Byoption must be 0"), std::string::npos);
    }
  }
  EXPECT_EQ(Text().find("Range Selected"), std::string::npos);
  EXPECT_EQ(form.VSP.PageCount(), pages);

  // A malformed filter: the section's own message, the statement with it.
  Run(0, true, "ProviderID = = 11");
  ASSERT_TRUE(
      SaidOnce(host, "An Error has occurred in Sub srptDetailedAnalysis in Class clsReports.\n"));
  EXPECT_NE(host.messages[0].prompt.find("InvoiceDetails.ProviderID = = 11"), std::string::npos);

  // No provider chosen.
  NewDocument();
  Run(0, true, "");
  EXPECT_EQ(Text(), "Please select a provider\n");
}

}  // namespace
}  // namespace orv::testing
