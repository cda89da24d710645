// The month-end analysis on the March practice of the cash-in tests
// (closing/cash_in_fixture.h): invoice 1320 of the 11th (80.00, complete)
// with lab lines, a write-off applied to it, and idle days around it.
#include <gtest/gtest.h>

#include "closing/cash_in_fixture.h"
#include "common/common_functions.h"
#include "common/vbstrings.h"

namespace orv::testing {
namespace {

class MonthEnd : public CashInTest {
 protected:
  std::string Rows() const override {
    // Lines 99111 (lab) and -99111 (a lab credit, which this report does
    // not read as lab); 20 of the write-off applied to the invoice, and 50
    // of cheque 103 (of the 10th) applied without a date of its own.
    return std::string(kCashInRows) + kSectionRows + R"sql(
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID)
 VALUES (3322, 332, '99111', 30, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21),
        (3323, 332, '-99111', -10, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (3301, 119, 332, 20, '2026-03-11 00:00:00'), (3302, 103, 332, 50, NULL);
)sql";
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
