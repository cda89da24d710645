// The production sections on the November of closing_practice.h.
// Figures by hand; the period is 2026-11-01 to 2026-11-30 unless a test
// says otherwise.
#include <gtest/gtest.h>

#include <regex>

#include "common/errors.h"
#include "closing/closing_practice.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using ProductionSections = ProductionTest;
using ProductionRun = ProductionTest;

TEST_F(ProductionSections, ByProviderCountsReversalsInTheFeeButNotAsProcedures) {
  InDocument([&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_TRUE(host.messages.empty());
  // Moreau: 71 100, 72 200 (lab), 79 60 (cancelled later; no cancellation
  // term here), 77 50; the -00100 line and the line in progress are out.
  EXPECT_TRUE(HasAll(Text(), {"Provider: Dr. Anne Moreau", "Procedure Count: 4",
                              "Total($): $410.00", "Nov/10/2026 00100 Priya Singh 7004 $50.00"}));
  EXPECT_TRUE(HasNone(Text(), {"-00100", "7005"}));
  // Chen: 100 + 50 - 120, two procedures: the reversal is not one.
  EXPECT_TRUE(HasAll(Text(), {"Nov/10/2026 -11101 Priya Singh 7003 -$120.00", "Procedure Count: 2",
                              "Total($): $30.00"}));
  // Okafor billed nothing: no section.
  EXPECT_FALSE(Has("Okafor"));
  EXPECT_TRUE(Has("Overall Total: Production Total 440.00 Lab Total 200.00")) << Text();
}

TEST_F(ProductionSections, ByDateChoosesTheDateThatDecides) {
  struct Case {
    const char* name;
    int16_t by_date;
    const char* moreau;
    const char* overall;
  };
  const Case cases[] = {
      // Line 71 was treated on 10-28 and entered on 11-02 (by entry date:
      // ByProviderCountsReversalsInTheFeeButNotAsProcedures).
      {"treatment date", 1, "Total($): $310.00", "Production Total 340.00"},
      // No date term: every line of a provider, whenever. February adds
      // Bell 830, Hill 70 (lab -20), Stone 30; March Ng 100 + 80 (the line
      // in progress out); the lines of 2032 have no status and stay out.
      {"no date", 7, "Total($): $410.00", "Production Total 1,550.00 Lab Total 330.00"},
  };
  for (const Case& c : cases) {
    InDocument([&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", c.by_date); });
    EXPECT_TRUE(Has(c.moreau)) << c.name << "\n" << Text();
    EXPECT_TRUE(Has(c.overall)) << c.name;
  }
  // With the treatment date the header says so.
  InDocument([&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", 1); });
  EXPECT_TRUE(Has("Treatment Date Code Patient Invoice # Tooth# Surface Fee"));
}

TEST_F(ProductionSections, ByOverseerFallsBackToTheProvider) {
  InDocument([&] { reports.srptProductionByOverseer(Nov(1), Nov(30), "", "", "", 0); });
  // Moreau oversees 702 and 704 and, having no overseer, her own 701 and
  // 706: 100 + 200 + 100 + 50 + 50 + 60. Chen oversees his own 703 (no
  // overseer): the reversal alone, no procedure.
  EXPECT_TRUE(
      HasAll(Text(), {"Overseer: Dr. Anne Moreau", "Procedure Count: 6       Total($): $560.00",
                      "Overseer: RDH Paul Chen", "Procedure Count: 0       Total($): -$120.00",
                      // The line's provider shows beside the patient.
                      "Nov/05/2026 11101 Claire Tremblay Paul Chen 7002 $100.00",
                      "Overall Total: Production Total 440.00 Lab Total 200.00"}));
}

TEST_F(ProductionSections, ByCategorySharesTheTotal) {
  InDocument([&] { reports.srptProductionByCategory(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_TRUE(HasAll(
      Text(), {"All Providers Selected", "Orvenda Internal Codes 00000-00299 1 $50.00 11.36%",
               "Diagnostic Services 01000-09999 2 $150.00 34.09%",
               // 11101: 100 + 60 - 120, two procedures.
               "Preventive Services 10000-19999 2 $40.00 9.09%",
               "Adjunctive General Services 90000-99999 1 $200.00 45.45%",
               "Restorative Services 20000-29999 0 $0.00 0.00%", "Total 6 $440.00 100"}));

  // Two providers are named; without a date every line counts: the
  // account practice's three of September and October (350, no provider),
  // February's seven (930: 500 + 150 + 80 + 90 - 20 + 100 + 30, the
  // reversal no procedure) and March's two complete (180).
  InDocument([&] {
    reports.srptProductionByCategory(Nov(1), Nov(30), "ProviderID = 1 OR ProviderID = 2", "", "",
                                     0);
  });
  EXPECT_TRUE(Has("Providers: Chen, Paul; Moreau, Anne")) << Text();
  InDocument([&] { reports.srptProductionByCategory(Nov(1), Nov(30), "", "", "", 2); });
  EXPECT_TRUE(HasAll(Text(), {"Adjunctive General Services 90000-99999 2 $330.00 17.37%",
                              "Total 17 $1,900.00 100"}))
      << Text();
  // An empty period shares nothing: "0%".
  InDocument([&] {
    reports.srptProductionByCategory(DateTime::FromParts(2020, 1, 1),
                                     DateTime::FromParts(2020, 1, 2), "", "", "", 0);
  });
  EXPECT_TRUE(Has("Diagnostic Services 01000-09999 0 $0.00 0%")) << Text();
}

TEST_F(ProductionSections, SummaryByCodeNetsReversalsInFourPeriods) {
  InDocument([&] { reports.srptProductionSummaryByCode(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_TRUE(HasAll(Text(), {"This Year (2026) Last Year (2025)",
                              "Month To Date (November) Year To Date Month To Date Year To Date",
                              // November: 100 + 60 - 120 and one procedure net. The year adds
                              // September's 80 of line 2 and February's 90 of line 95: 210 of
                              // the year's 1,900 (the category table's total).
                              "11101 1 40.00 9.09 3 210.00 11.05 0 0.00 0 0 0.00 0",
                              "01202 2 150.00 34.09 7 580.00 30.53 0 0.00 0 0 0.00 0",
                              "23111 0 0.00 0.00 2 230.00 12.11 0 0.00 0 0 0.00 0"}));
  // The reversed internal code is no row and in no total.
  EXPECT_FALSE(Has("-00100"));
  // The year's lab: 150 + 200 - 20, one procedure net.
  EXPECT_TRUE(HasAll(Text(), {"00100 1 50.00 11.36 1 50.00 2.63",
                              "99111 1 200.00 45.45 1 330.00 17.37 0 0.00 0 0 0.00 0",
                              "Total 5 440.00 100 15 1,900.00 100 0 0.00 100 0 0.00 100"}));
  // Seen from the end of 2027, 2026 is last year: its whole year holds
  // the 1,900, and the three empty periods share nothing ("0").
  InDocument([&] {
    reports.srptProductionSummaryByCode(Nov(1), DateTime::FromParts(2027, 12, 31), "", "", "",
                                        0);
  });
  EXPECT_TRUE(Has("11101 0 0.00 0 0 0.00 0 0 0.00 0 3 210.00 11.05")) << Text();
  // From 2024 every period is empty: the fee codes take no row at all.
  InDocument([&] {
    reports.srptProductionSummaryByCode(Nov(1), DateTime::FromParts(2024, 12, 31), "", "", "",
                                        0);
  });
  EXPECT_FALSE(Has("01202 0")) << Text();
  EXPECT_TRUE(Has("Total 0 0.00 100 0 0.00 100 0 0.00 100 0 0.00 100")) << Text();
}

TEST_F(ProductionSections, ByCodeUndoesACancellationInItsPeriod) {
  InDocument([&] { reports.srptProductionByCode(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_TRUE(HasAll(Text(), {"00100: Internal", "11101: Scaling",
                              // 11101: 100 (Chen) + 60 (Moreau, 706) - 120 (reversal) and 706's
                              // line again, negated on its cancellation day: -20, one procedure.
                              "Anne Moreau Priya Singh 7006 Nov/20/2026 -$60.00",
                              "Paul Chen Priya Singh 7003 Nov/10/2026 -$120.00",
                              "Procedure Count: 1       Total($): -$20.00",
                              "Grand Total: Production Total 380.00 Lab Total 200.00"}));
  // Within a code the lines run by date.
  EXPECT_TRUE(InOrder(Text(), {"Paul Chen Priya Singh 7003 Nov/10/2026 -$120.00",
                               "Anne Moreau Priya Singh 7006 Nov/20/2026 -$60.00"}));
  // The range narrows the codes: only the hygiene ones.
  InDocument([&] { reports.srptProductionByCode(Nov(1), Nov(30), "", "11000", "11999", 0); });
  EXPECT_FALSE(Has("01202:"));
  EXPECT_TRUE(Has("Grand Total: Production Total (20.00) Lab Total 0.00")) << Text();
}

// Two providers whose names sort apart only when case is set aside,
// each with a scaling of the same day; Dubois's line is read first.
class ProductionByCodeProviders : public ProductionTest {
 protected:
  void SetUp() override {
    SetUpWith(R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName, TypeID) VALUES
 (61, 'de Vries', 'Jan', 'Jan de Vries', 3), (62, 'Dubois', 'Luc', 'Luc Dubois', 3);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, [Date], [Complete?],
  Cancelled, CancellationDate, InvoiceTotal) VALUES
 (761, 7601, 1, 62, NULL, '2026-11-12 00:00:00', 1, NULL, NULL, 10),
 (762, 7602, 1, 61, NULL, '2026-11-12 00:00:00', 1, NULL, NULL, 10);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID) VALUES
 (761, 761, '11101', 10, 'Complete', '2026-11-12 09:00:00', '2026-11-12 00:00:00', 62),
 (762, 762, '11101', 10, 'Complete', '2026-11-12 09:00:00', '2026-11-12 00:00:00', 61);
)sql");
  }
};

// Within a day the lines run by the provider's last name, whatever its case.
TEST_F(ProductionByCodeProviders, LinesOfADayRunByProviderName) {
  InDocument([&] { reports.srptProductionByCode(Nov(1), Nov(30), "", "11000", "11999", 0); });
  EXPECT_TRUE(
      InOrder(Text(), {"Jan de Vries", "7602 Nov/12/2026", "Luc Dubois", "7601 Nov/12/2026"}));
}

TEST_F(ProductionSections, SummaryTakesAdjustmentsAsStoredAndFeesWithoutStatus) {
  InDocument([&] { reports.srptProductionSummary(Nov(1), Nov(30), "ID = 1 OR ID = 2", 0); });
  // Moreau (invoices 701, 704, 705, 706). Lab 200. The fee query has no
  // Status test, so the 40 in progress is in: 100 + 200 - 50 + 50 + 40 +
  // 60 - 200 = 200. The discount of -5 is subtracted as stored:
  // 200 + 200 - (-5) = 405. With absolute values it would be 395; with a
  // Status test the fee would be 160.
  EXPECT_TRUE(HasAll(Text(), {"Dr. Anne Moreau $200.00 $200.00 -$5.00 $405.00 $0.00 $405.00",
                              // Chen: 30 of fees; the write-off of -10 as stored: 30 - (-10) = 40.
                              "RDH Paul Chen $30.00 $0.00 $0.00 $30.00 -$10.00 $40.00",
                              "Total $230.00 $200.00 -$5.00 $435.00 -$10.00 $445.00"}));
  // By overseer Moreau has 702 and 704: 100 + 50 - 50 + 50, and 702's
  // write-off.
  InDocument([&] { reports.srptProductionSummary(Nov(1), Nov(30), "ID = 1", 1); });
  EXPECT_TRUE(Has("Dr. Anne Moreau $150.00 $0.00 $0.00 $150.00 -$10.00 $160.00")) << Text();
  // Without a filter only people with figures print: not Okafor.
  InDocument([&] { reports.srptProductionSummary(Nov(1), Nov(30), "", 0); });
  EXPECT_FALSE(Has("Okafor"));
  // A view that names nobody is refused before anything is drawn.
  form.VSP.StartDoc();
  try {
    reports.srptProductionSummary(Nov(1), Nov(30), "", 4);
    ADD_FAILURE() << "view 4 was accepted";
  } catch (const ReportError& e) {
    EXPECT_NE(e.description().find("Byoption must be 0"), std::string::npos) << e.description();
  }
  EXPECT_EQ(form.VSP.CurrentY(), form.VSP.MarginTop());
  form.VSP.EndDoc();
}

TEST_F(ProductionSections, BordersAndWideTotals) {
  InDocument([&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_EQ(form.VSP.TableBorder(), 3);
  host::AppSettings().Override("Settings", "TableBorder", "1");
  InDocument([&] { reports.srptProductionByCategory(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_EQ(form.VSP.TableBorder(), 1);

  // A million and more takes the wider cell and stays on one line.
  InDocument([&] {
    reports.PrintProductionTotals(Currency::FromDecimalText("1234567.5"),
                                  Currency::FromDecimalText("-12"), false);
    reports.PrintProductionTotals(Currency::FromDecimalText("999999.99"), Currency(), true);
  });
  EXPECT_TRUE(HasAll(Text(), {"Overall Total: Production Total 1,234,567.50 Lab Total (12.00)",
                              "Grand Total: Production Total 999,999.99 Lab Total 0.00"}));
}

// Wherever a section starts on a page, a provider's or a code's heading
// goes with its first lines, and "Procedure Count" with its last line.
TEST_F(ProductionSections, HeadingsAndCountsStayWithTheirLines) {
  const std::regex code_heading(R"(^-?\d{5}: .*)");
  const auto heading = [&](const std::string& l) {
    return StartsWith(l, "Provider: ") || std::regex_match(l, code_heading);
  };
  const auto count = [](const std::string& l) { return StartsWith(l, "Procedure Count:"); };
  EXPECT_GT(ExpectKeptTogether(
                90, 40, [&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", 0); },
                heading, count),
            0);
  EXPECT_GT(ExpectKeptTogether(
                90, 40, [&] { reports.srptProductionByCode(Nov(1), Nov(30), "", "", "", 0); },
                heading, count),
            0);
}

TEST_F(ProductionRun, SectionsComeInTheirOwnOrder) {
  reports.rptProductionReports(true, true, true, true, true, true, Nov(1), Nov(30), 0, "dana",
                               "ProviderID = 1 OR ProviderID = 2", "", "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Production Report");
  EXPECT_TRUE(InOrder(Text(), {"Production by Provider\n", "Production by Overseer\n",
                               "Production Summary \n", "Production by Category \n",
                               "Production Summary by Code \n", "Production by Code Report\n"}));
  EXPECT_TRUE(HasAll(
      Text(), {"Code Range: 00000 - 99999   Date: By Entry Date", "For: Chen,Paul,Moreau,Anne",
               // The summary takes the filter over "ID".
               "RDH Paul Chen $30.00"}));
  // Each section starts a page.
  EXPECT_GE(form.VSP.PageCount(), 6);
}

TEST_F(ProductionRun, BadInputIsRefusedBeforeDrawing) {
  struct Case {
    const char* name;
    DateTime start, end;
    const char* from;
    const char* to;
    const char* message;
  };
  const Case cases[] = {
      {"not a code", Nov(1), Nov(30), "1x", "", "The start code \"1x\" is not a fee code"},
      {"range upside down", Nov(1), Nov(30), "20000", "10000", "The code range 20000 - 10000"},
      {"period upside down", Nov(30), Nov(1), "", "", "The period ends (Nov/01/2026)"},
  };
  for (const Case& c : cases) {
    host.messages.clear();
    reports.rptProductionReports(true, true, false, false, false, false, c.start, c.end, 0, "",
                                 "", c.from, c.to);
    ASSERT_EQ(host.messages.size(), 1u) << c.name;
    EXPECT_EQ(host.messages[0].prompt.rfind(c.message, 0), 0u) << host.messages[0].prompt;
    EXPECT_EQ(form.VSP.PageCount(), 0) << c.name;
  }
  // A filter the database refuses gives the report's trap text.
  host.messages.clear();
  reports.rptProductionReports(false, true, false, false, false, false, Nov(1), Nov(30), 0, "",
                               "NoSuchColumn = 1", "", "");
  ASSERT_TRUE(
      SaidOnce(host, "An Error has occurred in Sub rptProductionReports in Class clsReports\n"));
}

}  // namespace
}  // namespace orv::testing
