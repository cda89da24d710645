// The summary analysis on February of the closing practice
// (closing_practice.h): day rows worked by hand, and the receivable before
// the period plus the rows equal to the receivable at its end in every view
// and payment reading.
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>

#include "closing/closing_practice.h"
#include "common/common_functions.h"
#include "common/errors.h"
#include "common/vbstrings.h"

namespace orv::testing {
namespace {

class SummaryAnalysis : public ClosingTest {
 protected:
  void SetUp() override {
    ClosingTest::SetUp();
    NewDocument();
  }
  void Run(const std::string& filter, int16_t view, bool by_allocated, int from = 1, int to = 28) {
    reports.srptSummaryAnalysis(Feb(from), Feb(to), filter, view, "Practice", by_allocated);
  }
  // The last money cell of a line.
  static std::string LastCell(const std::string& line) {
    return line.substr(line.rfind(' ') + 1);
  }
  std::string Money(Currency c) { return reports.Common().MyFormat(c, "Currency"); }
  std::string TotalRow() const { return SummaryTotalRow(Text()); }
};

TEST_F(SummaryAnalysis, DayRowsByAllocatedPayment) {
  Run("", 0, true);
  EXPECT_EQ(LineWith("- - - -"), "- - - - - - - - 70.00");  // 100 + 30 - 60 in January
  // Entry date|Dental|Lab|Inv. Adj.|Total Fee|Applied|Pmt. Adj.|Pmt. Total|New A/R
  const std::vector<std::string> days = {
      "02/03/2026 500.00 150.00 0.00 650.00 150.00 0.00 150.00 570.00",
      "02/05/2026 80.00 0.00 0.00 80.00 0.00 0.00 0.00 650.00",
      // The reversed lab fee counts as lab, negative.
      "02/12/2026 90.00 -20.00 0.00 70.00 0.00 0.00 0.00 720.00",
      // Seamus's cheque of 02-12 counts when it was applied.
      "02/14/2026 0.00 0.00 0.00 0.00 60.00 0.00 60.00 660.00",
      "02/20/2026 0.00 0.00 0.00 0.00 300.00 0.00 300.00 360.00",
      "02/25/2026 0.00 0.00 40.00 -40.00 0.00 0.00 0.00 320.00",
      "02/26/2026 0.00 0.00 30.00 -30.00 0.00 0.00 0.00 290.00",
  };
  EXPECT_EQ(LinesWith("/2026 "), days);  // the cancellation day (02-10) has no row
  EXPECT_EQ(TotalRow(), "Total 670.00 130.00 70.00 730.00 510.00 0.00 510.00 290.00");
  const std::vector<std::pair<std::string, std::string>> totals = {
      {"Total Dental Fee", "670.00"}, {"Total Lab Fee", "130.00"},
      {"Total Invoice Reversals", "80.00"}, {"Total SubTotal", "720.00"},
      {"Total Write Offs", "70.00"},  {"Total Fees", "650.00"},
      {"Gross Payments", "510.00"},   {"Payment Reallocations", "0.00"},
      {"Net Payments", "510.00"}};
  for (const auto& [label, amount] : totals) EXPECT_EQ(LineWith(label), label + " " + amount);
  EXPECT_EQ(LineWith("Write-off Invoice Adj."), "Write-off Invoice Adj. Small balance 70.00");
}

TEST_F(SummaryAnalysis, DayRowsOfAllPaymentsMoveACreditWhenItIsApplied) {
  // The practice: Seamus's 100 counts on its cheque's day; applying 60 of
  // it two days later moves money between providers and nets to nothing,
  // so 02-14 has no row.
  Run("", 0, false);
  EXPECT_EQ(LineWith("02/12/2026"), "02/12/2026 90.00 -20.00 0.00 70.00 100.00 0.00 100.00 620.00");
  EXPECT_EQ(LineWith("02/14/2026"), "");
  EXPECT_EQ(TotalRow(), "Total 670.00 130.00 70.00 730.00 550.00 0.00 550.00 250.00");

  // Bell alone: he took the 100 in on 02-12 and lost 60 of it to Hill on
  // 02-14; his net payments are what he took in.
  NewDocument();
  Run("ID = 11", 0, false);
  EXPECT_EQ(LineWith("- - - -"), "- - - - - - - - 40.00");
  EXPECT_EQ(LineWith("02/14/2026"), "02/14/2026 0.00 0.00 0.00 0.00 -60.00 0.00 -60.00 580.00");
  EXPECT_EQ(TotalRow(), "Total 580.00 150.00 40.00 690.00 490.00 0.00 490.00 240.00");
  EXPECT_EQ(LineWith("Payment Reallocations"), "Payment Reallocations -60.00");
  EXPECT_EQ(LineWith("Net Payments"), "Net Payments 550.00");
}

TEST_F(SummaryAnalysis, OpeningPlusTheDayRowsIsTheClosingReceivable) {
  // From the 13th, 902 is owed before the period and paid in it, Seamus's
  // cheque of the 12th is applied in it, and Priya's cheque entered on the
  // 10th is dated within it.
  Exec("INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, InitialProviderID, "
       "Value, TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES (958, 3, 1, "
       "1, 11, 35, 0, 35, '2026-02-10 00:00:00', '2026-02-16 00:00:00', 0)");
  struct Case {
    const char* filter;
    int16_t view;
    int from = 1;
  } const cases[] = {{"", 0},          {"ID = 11", 0}, {"ID = 12", 0}, {"ID = 13", 0},
                     {"ID = 11 OR ID = 12", 0}, {"ID = 11", 1}, {"ID = 11", 2},
                     {"ID = 12", 3},   {"0", 3},       {"", 0, 13},    {"ID = 11", 0, 13}};
  for (const Case& c : cases) {
    for (bool by_allocated : {true, false}) {
      SCOPED_TRACE(std::string(c.filter) + " view " + std::to_string(c.view) + " from " +
                   std::to_string(c.from) + (by_allocated ? " by allocated" : " all payments"));
      NewDocument();
      Run(c.filter, c.view, by_allocated, c.from);
      Currency opening, closing;
      reports.srptOpeningReceivable(Feb(c.from), Feb(28), SummaryFilters(c.filter, c.view),
                                    by_allocated, opening, closing);
      EXPECT_EQ(LastCell(LineWith("- - - -")), Money(opening));
      EXPECT_EQ(LastCell(TotalRow()), Money(closing));
    }
  }
}

TEST_F(SummaryAnalysis, AdjustmentsStoredNegativeCountByTheirSize) {
  // A refund of a credit, stored negative under a type whose flag is -1,
  // on nothing: it raises what is owed on its day and shows by its size in
  // the totals.
  Exec("INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, InitialProviderID, "
       "Value, TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES (957, 1, 13, "
       "1, 11, -25, 0, -25, '2026-02-27 00:00:00', '2026-02-27 00:00:00', 0)");
  Run("", 0, false);
  EXPECT_EQ(LineWith("02/27/2026"), "02/27/2026 0.00 0.00 0.00 0.00 0.00 -25.00 -25.00 275.00");
  EXPECT_EQ(TotalRow(), "Total 670.00 130.00 70.00 730.00 550.00 25.00 525.00 275.00");
  EXPECT_EQ(LineWith("Refund Payment Adj."),
            "Patient Refund Payment Adj. Credit paid back -25.00");
  EXPECT_EQ(LineWith("Refunds"), "Refunds 25.00");
  EXPECT_EQ(LineWith("Net Payments"), "Net Payments 525.00");
}

TEST_F(SummaryAnalysis, APeriodWithNothingPrintsTheOpeningAndZeroTotals) {
  // Nothing happens after 02-26: what is owed then (250) opens and closes.
  Run("", 0, false, 27, 28);
  EXPECT_EQ(LineWith("- - - -"), "- - - - - - - - 250.00");
  EXPECT_EQ(TotalRow(), "Total 0.00 0.00 0.00 0.00 0.00 0.00 0.00 250.00");
  EXPECT_EQ(LinesWith("/2026 ").size(), 0u);
}

// Wherever the section starts on a page, its title opens the page of the
// day table's first rows.
TEST_F(SummaryAnalysis, TitleStaysWithTheDayTable) {
  const int kept = ExpectKeptTogether(
      60, 24, [&] { Run("", 0, true); }, [](const std::string& l) { return l == "Practice"; },
      [](const std::string&) { return false; });
  EXPECT_GT(kept, 0);
}

TEST_F(SummaryAnalysis, AViewOutsideTheFourIsRefusedBeforeDrawing) {
  EXPECT_THROW(Run("", 5, true), ReportError);
  EXPECT_EQ(Text(), "");
}

}  // namespace
}  // namespace orv::testing
