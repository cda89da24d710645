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
    // not read as lab); 20 of the write-off applied to the invoice.
    return std::string(kCashInRows) + kSectionRows + R"sql(
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID)
 VALUES (3322, 332, '99111', 30, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21),
        (3323, 332, '-99111', -10, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (3301, 119, 332, 20, '2026-03-11 00:00:00');
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

}  // namespace
}  // namespace orv::testing
