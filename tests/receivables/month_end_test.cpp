// The month-end analysis on March of the closing practice
// (closing/closing_practice.h): invoice 1320 of the 11th (80.00, complete)
// with lab lines, a write-off applied to it, and idle days around it.
#include <gtest/gtest.h>

#include "closing/closing_practice.h"
#include "common/common_functions.h"
#include "common/vbstrings.h"

namespace orv::testing {
namespace {

class MonthEnd : public ClosingTest {
 protected:
  void SetUp() override {
    // Lines 99111 (lab) and -99111 (a lab credit, which this report does
    // not read as lab); 20 of the write-off applied to the invoice, and 50
    // of cheque 103 (of the 10th) applied without a date of its own.
    SetUpWith(R"sql(
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID)
 VALUES (3322, 332, '99111', 30, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21),
        (3323, 332, '-99111', -10, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (3301, 119, 332, 20, '2026-03-11 00:00:00'), (3302, 103, 332, 50, NULL);
)sql");
  }
};

TEST_F(MonthEnd, IdleDaysPrintDashesAndCarryTheReceivable) {
  struct Case {
    const char* name;
    const char* filter;
  } const cases[] = {
      // An empty filter is no term at all, not "AND ()".
      {"whole practice", ""},
      {"the provider", "Invoices.ProviderID = 21"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    form.VSP.KillDoc();
    reports.rptMonthEndAnalysis(Mar(10), Mar(12), c.filter, c.filter, "");
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    const std::string opening_line = LineWith("Opening A/R: ");
    ASSERT_EQ(opening_line.rfind("Opening A/R: ", 0), 0u);
    const Currency opening = Currency::FromDecimalText(
        vb::Replace(opening_line.substr(13), ",", "").c_str());
    // The 11th: fee 80 of which lab 30 (the -99 credit is dental here),
    // the write-off of 20 an invoice adjustment.
    const std::string ar = reports.Common().MyFormat(opening + Money("60"), "Currency");
    EXPECT_EQ(LineAfter("Dental Fee Lab Fee"), "Mar/10/2026 - - - - - - -");
    EXPECT_EQ(LineWith("Mar/11/2026 "), "Mar/11/2026 50.00 30.00 20.00 80.00 0.00 0.00 " + ar);
    EXPECT_EQ(LineAfter("Mar/11/2026 "), "Mar/12/2026 - - - - - - -");
    EXPECT_EQ(LineAfter("Mar/12/2026 - "), "Total 50.00 30.00 20.00 80.00 0.00 0.00 " + ar);
  }
  // Nothing of the provider before March: the opening is 0.
  EXPECT_EQ(LineWith("Opening A/R: "), "Opening A/R: 0.00");
}

// The opening's third read puts each complete invoice still open before
// the start at what it stood for on the eve: with interest charged, whole
// cents (111 is 100.0050, less 100 paid on it); the settled total only when
// the eve is today (181 is 120.00, settled at 100.0050). An invoice of the
// start day is the first day's row and no part of the opening.
TEST_F(MonthEnd, OpeningCountsOpenInvoicesAsOnTheEve) {
  struct Case {
    const char* name;
    double rate;
    const char* invoice;
    DateTime from;
    const char* opening;
  } const cases[] = {
      {"interest charged: whole cents", 1.5, "111", Day(2026, 11, 1), "Opening A/R: 0.00"},
      {"no interest: the stored total", 0, "111", Day(2026, 11, 1), "Opening A/R: 0.01"},
      {"an invoice of the first day", 1.5, "111", Day(2026, 10, 12), "Opening A/R: 0.00"},
      {"settled total, the eve being today", 0, "181", Day(2026, 11, 21), "Opening A/R: 100.00"},
      {"settled total not known on another eve", 0, "181", Day(2026, 11, 22), "Opening A/R: 120.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    form.VSP.KillDoc();
    reports.InterestRate = c.rate;
    const std::string filter = std::string("Invoices.ID = ") + c.invoice;
    reports.rptMonthEndAnalysis(c.from, c.from, filter, filter, "");
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    EXPECT_EQ(LineWith("Opening A/R: "), c.opening);
  }
}

// Interest collected is the money (not adjustments) applied within the
// range to interest invoices: 5.00 of cash on 332 on the 11th; not the
// write-off on it, its undated cheque share, the cash of the 13th, nor cash
// applied the same day to an ordinary invoice.
TEST_F(MonthEnd, InterestCollectedIsMoneyAppliedToInterestInvoices) {
  Exec("UPDATE Invoices SET InterestInvoiceID = 331 WHERE ID = 332;"
       "INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES "
       "(3303, 101, 332, 5, '2026-03-11 00:00:00'), (3304, 101, 332, 7, '2026-03-13 00:00:00'),"
       "(3305, 104, 331, 9, '2026-03-11 00:00:00');");
  reports.rptMonthEndAnalysis(Mar(10), Mar(12), "", "", "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(LineWith("Interest Collected"), "Interest Collected on Behalf of the Practice: 5.00");
}

// The detailed list reads the lines: the -99 credit is lab here, and the
// undated detail of cheque 103 falls in the range by its cheque's date.
TEST_F(MonthEnd, DetailedListOfTheRange) {
  reports.rptNonAgedAR(Mar(10), Mar(12), "", "", "Ana", "Ana Ng");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  struct Case {
    const char* name;
    const char* part;
    const char* line;
  } const cases[] = {
      {"invoice row", "1320 Ng", "1320 Ng Claire Tremblay 80.00 20.00 100.00"},
      {"day total", "Total for Mar/11", "Total for Mar/11/2026 80.00 20.00 100.00"},
      {"grand total", "Grand Total for", "Grand Total for Mar/10/2026 to Mar/12/2026 80.00 20.00 100.00"},
      {"invoice adjustments", "Invoice Adjustment Total", "Invoice Adjustment Total: 20.00"},
      {"net billing", "Net Billing", "Net Billing: 80.00"},
      {"undated detail by its cheque", "Applied Payments Total", "Applied Payments Total: 50.00"},
      {"net payments", "Net Payments", "Net Payments: 50.00"},
      {"change", "Accounts receivable change", "Accounts receivable change over range selected: 30.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(LineWith(c.part), c.line);
  }
  // The incomplete invoice 1310 is not listed.
  EXPECT_EQ(LineWith("1310"), "");
}

// Months step from the start day: Feb 11 to Mar 10, then Mar 11 to Apr
// 10. Cheque 103 of Mar 10 is February's collection, invoice 1320 and the
// write-off of Mar 11 are March's; the provider had nothing before.
TEST_F(MonthEnd, SummaryMonthsEndTheDayBeforeTheNextBegins) {
  std::vector<int32_t> providers{21};
  reports.rptMonthEndSummary(Day(2026, 2, 11), Day(2026, 4, 10), "", "Invoices.ProviderID = 21",
                             "Ana Ng", providers);
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(LineWith("February 2026"), "February 2026 0.00 200.00 0 -200.00 0.00 0.00% 0.00%");
  EXPECT_EQ(LineWith("March 2026"), "March 2026 80.00 -50.00 0 -70.00 0.00 0.00% 0.00%");
  EXPECT_EQ(LineWith("April 2026"), "");
  EXPECT_EQ(LineWith("Totals"), "Totals 80.00 150.00 0 -70.00 0.00 0.00% 0.00%");
}

}  // namespace
}  // namespace orv::testing
