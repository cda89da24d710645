// Cash in, detailed and summary, and the deposit slip, on three days of
// March (closing_practice.h); every figure below is worked out by hand from
// the fixture's table.
#include <gtest/gtest.h>

#include "closing/closing_practice.h"

namespace orv::testing {
namespace {

using CashIn = ClosingTest;

// Cash 265 gross (102 cancelled the same day comes off the bank, 110
// cancelled after the period stays), Cheque 570 (106 cancelled a later day
// stays deposited), Visa 140 less 108's same-day 60, Re-entry 40 in no
// deposit; bulk cheques 250 (bank) and 120 (direct).
TEST_F(CashIn, DetailedBucketsReversalsAndSummaries) {
  DateTime start = Mar(10), end = Mar(12);
  reports.rptCashInDetailed(start, end, "", "Ana");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(form.ShowCount(), 1);
  struct Case {
    const char* name;
    const char* part;
    const char* line;
  } const cases[] = {
      {"cancelled payments stay in the type's count and gross", "Payments#:",
       "Payments#:1 Total ($): 40.00 // Payments#:2 Total ($): 140.00 // Payments#:4 Total ($): "
       "265.00 // Payments#:3 Total ($): 570.00"},
      // Cheque has a later cancellation: its reversal table shows, empty.
      {"only same-day cancellations reverse", "Reversals#:",
       "Reversals#: 1 Total ($): 60.00 // Reversals#: 1 Total ($): 50.00 // Reversals#: 0 Total "
       "($): 0.00"},
      {"reversal row names its day", "108 ana", "108 ana Seamus 60.00 // 108 ana Seamus  "
                                                "Cancellation Date:Mar/12/2026 60.00"},
      {"type totals net of reversals", "Total Cash:", "Total Cash: 215.00"},
      {"bank bulk by the detail rows' type", "1 Ng", "1 Ng Maple Life Mar/11/2026 MC-77 250.00"},
      {"bank total", "Total Bank:", "Total Bank: 1,035.00"},
      {"direct total", "Total Direct:", "Total Direct: 200.00"},
      {"re-entry runs over the types", "Received after Deposit:", "Received after Deposit: 40.00"},
      {"reversal count leaves refunds out", "Total #:", "Total #:2 Total ($): -350.00"},
      // Refunds (-20) apart from the other reversals.
      {"reversals without refunds", "Payment Reversals:", "Payment Reversals: -330.00"},
      {"net", "Net Payments:", "Net Payments: 1,035.00"},
      // Bank deposits without same-day reversals 785, direct 80, bulk 370.
      {"to the bank", "Total to Bank:", "Total to Bank: 1,235.00"},
      {"bulk split, direct first", "Trans#: ",
       "Trans#: 2  Date:Mar/12/2026  Check No.EFT-9  Amount:120.00  Birch Mutual // Trans#: 1  "
       "Date:Mar/11/2026  Check No.MC-77  Amount:250.00  Maple Life"},
      {"bulk patients", "Tremblay, Claire", "114 Tremblay, Claire 150.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_EQ(LineWith(c.part), c.line);
  }
  EXPECT_EQ(LineWith("No Payments"), "");
  EXPECT_LT(Text().find("Visa - Direct Deposit"), Text().find("Cash - Bank Deposit"));
  EXPECT_EQ(LineWith("Mar/10/2026 to Mar/12/2026"), "Mar/10/2026 to Mar/12/2026");
}

// One account, one day: the account line, the single date, and a day
// whose only adjustment is a refund (the NSF is on the other account).
TEST_F(CashIn, DetailedOneAccountOneDayAndAnEmptyPeriod) {
  reports.VSP().StartDoc();
  reports.srptCashInDetailed(Mar(12), Mar(12), "AccountID = 1", "Ana");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(LineWith("Account:"), "Account: Operating No.: 12345 Trans.: 00011");
  EXPECT_EQ(LineAfter("Payments"), "Mar/12/2026");
  // Visa 108 (reversed the same day), Cash 110, Cheque 109.
  EXPECT_EQ(LineWith("Payments#:"),
            "Payments#:1 Total ($): 60.00 // Payments#:1 Total ($): 90.00 // Payments#:1 Total "
            "($): 70.00");
  EXPECT_EQ(LineWith("Total Refund:"), "Total Refund: -20.00");
  EXPECT_EQ(LineWith("No Payments Reversals or Refunds on File"),
            "           No Payments Reversals or Refunds on File");
  EXPECT_EQ(LineWith("Total #:"), "Total #:0 Total ($): -20.00");
  // The direct bulk cheque of the 12th is on account 1; the bank one is
  // of the 11th.
  EXPECT_EQ(LineWith("Bulk Payments - "), "Bulk Payments - Bank: 0.00 // Bulk Payments - Direct: 120.00");
  // Bank 90 + 70, direct 60 - 60, direct bulk 120.
  EXPECT_EQ(LineWith("Total to Bank:"), "Total to Bank: 280.00");

  NewDocument();
  reports.srptCashInDetailed(Day(2026, 4, 1), Day(2026, 4, 2), "", "Ana");
  EXPECT_EQ(LineWith("No Payments on File"), "           No Payments on File");
  EXPECT_EQ(LineWith("Payments Reversals And Refunds"), "Payments Reversals And Refunds");
  EXPECT_EQ(LineWith("Net Payments:"), "Net Payments: 0.00");
  EXPECT_EQ(LineWith("Total to Bank:"), "Total to Bank: 0.00");
  EXPECT_EQ(LineWith("BulkPayment Report"), "");
}

TEST_F(CashIn, SummaryDaysAndFigures) {
  struct Case {
    const char* name;
    DateTime start, end;
    const char* account;
    std::vector<std::string> days;
    const char* totals;
    const char* average;
    const char* min;
    const char* max;
  } const cases[] = {
      // The 13th nets to zero: no row, but its cash and refund are in the
      // sub totals (bank 830, refunds -65); the average is over 3 days.
      {"zero day counts in totals only", Mar(10), Mar(13), "",
       {"Tue,10 Mar,26 80.00 0.00 300.00 0.00 0.00 0.00 0.00 380.00",
        "Wed,11 Mar,26 0.00 0.00 325.00 250.00 0.00 0.00 0.00 575.00",
        // 106's later cancellation (-300) is the returned cheque: the NSF
        // cell takes it all and the net loses it once, with the refund.
        "Thu,12 Mar,26 0.00 120.00 160.00 0.00 -300.00 0.00 -20.00 -40.00"},
       "Sub Totals: 80.00 120.00 830.00 250.00 -300.00 0.00 -65.00 915.00",
       "Daily Net Average($): 318.33", "Minimum Daily Net Income($): -40.00",
       "Maximum Daily Net Income($): 575.00"},
      // Every printed day positive: the minimum still ends at 0.
      {"positive days end at a minimum of 0", Mar(10), Mar(11), "",
       {"Tue,10 Mar,26 80.00 0.00 300.00 0.00 0.00 0.00 0.00 380.00",
        "Wed,11 Mar,26 0.00 0.00 325.00 250.00 0.00 0.00 0.00 575.00"},
       "Sub Totals: 80.00 0.00 625.00 250.00 0.00 0.00 0.00 955.00",
       "Daily Net Average($): 497.50", "Minimum Daily Net Income($): 0.00",
       "Maximum Daily Net Income($): 575.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NewDocument();
    reports.srptCashInSummary(c.start, c.end, c.account, "Ana");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(LinesWith(" Mar,26 "), c.days);
    EXPECT_EQ(LineWith("Sub Totals:"), c.totals);
    EXPECT_EQ(LineWith("Daily Net Average"), c.average);
    EXPECT_EQ(LineWith("Minimum Daily"), c.min);
    EXPECT_EQ(LineWith("Maximum Daily"), c.max);
  }
}

// The types' shares are of the whole period's deposits (1,280.00); the
// re-entered payment is apart and adds to the net.
TEST_F(CashIn, SummaryTypeSharesReentryAndNothingToShow) {
  reports.VSP().StartDoc();
  reports.srptCashInSummary(Mar(10), Mar(13), "", "Ana");
  EXPECT_EQ(LineWith("Total:"), "Total: 1,280.00 -365.00 915.00");
  EXPECT_EQ(LineWith("Payment Re-entry"), "Payment Re-entry($): 40.00");
  EXPECT_EQ(LineWith("Total Net Payment"), "Total Net Payment($): 955.00");
  EXPECT_EQ(LineAfter("Payment Type Total($) Total(%)"), "Cash 260.00 20.31%");
  // The cheque type has no [Adjustment?] flag at all: it is money.
  EXPECT_EQ(LineWith("Cheque "), "Cheque 570.00 44.53%");
  EXPECT_EQ(LineWith("Bulk Direct "), "Bulk Direct 120.00 9.38%");

  struct Case {
    const char* name;
    DateTime start, end;
    const char* account;
  } const cases[] = {
      {"an end before the start", Mar(12), Mar(10), ""},
      {"an account without money", Mar(10), Mar(10), "2"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NewDocument();
    reports.srptCashInSummary(c.start, c.end, c.account, "Ana");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(LineWith("No payments cleared"),
              "No payments cleared the system on this (these) date(s).");
    EXPECT_EQ(LineWith("Sub Totals:"), "");
  }
}

TEST_F(CashIn, DepositSlip) {
  struct Case {
    const char* name;
    DateTime start, end;
    int32_t account;
    std::vector<std::string> payments;
    std::vector<std::string> totals;
    const char* grand;
  } const cases[] = {
      // 102 (cancelled the day of its money) and 109 (dated before its
      // entry) are not in the set; 106, cancelled within the dates, is in
      // the set but not listed, and still counted; 110, cancelled after
      // the dates, was deposited and is listed.
      {"all accounts", Mar(10), Mar(12), 0,
       {"Mar/10/2026 (N/A) 101 Claire 100.00", "Mar/11/2026 (N/A) 107 Claire 25.00",
        "Mar/12/2026 (N/A) 110 Claire 90.00", "Mar/10/2026 123 103 Priya 200.00",
        "Mar/11/2026 MC-77 1 Maple Life $250.00"},
       {"Total # of Payments: 3 Total to Deposit ($): 215.00",
        "Total # of Payments: 2 Total to Deposit ($): 200.00",
        "Total # of Payments: 1 Total to Deposit ($): 250.00"},
       "Grand Total($): 665.00"},
      {"one account", Mar(10), Mar(12), 2, {"Mar/11/2026 (N/A) 107 Claire 25.00"},
       {"Total # of Payments: 1 Total to Deposit ($): 25.00"}, "Grand Total($): 25.00"},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NewDocument();
    reports.srptBankDepositSlip(c.start, c.end, "Ana", c.account);
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(LinesWith("/2026 "), c.payments);
    EXPECT_EQ(LinesWith("Total # of Payments:"), c.totals);
    EXPECT_EQ(LineWith("Grand Total"), c.grand);
    EXPECT_EQ(LineAfter("Coin"), "Total");
  }
  // The last case named account 2.
  EXPECT_EQ(LineWith("Account:"), "Account: Payroll No.: 67890 Trans.: 00022");
}

// A type's name keeps four lines of room below it: with less, name and
// table start the next page together, even where the name, the table's
// header and a first row would still squeeze in; with more, nothing moves.
TEST_F(CashIn, DepositSlipNameAndTableKeptOnOnePage) {
  struct Case {
    const char* name;
    double lines_left;  // in heights of "X" at the name's 10-point bold
    bool moved;
  } const cases[] = {
      {"three and a half lines left", 3.5, true},
      {"five lines left", 5, false},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    NewDocument();
    frame::PrintSurface& vsp = reports.VSP();
    vsp.FontSize(10);
    vsp.FontBold(true);
    const Twips x = vsp.TextHeight("X");
    vsp.FontBold(false);
    vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom() - c.lines_left * x);
    reports.srptBankDepositSlip(Mar(10), Mar(12), "Ana", 0);
    const std::string text = Text();
    const size_t page_break = text.find('\f');
    const size_t name = text.find("Cash\n");
    const size_t first_row = text.find("Mar/10/2026 (N/A) 101 Claire 100.00");
    ASSERT_NE(name, std::string::npos);
    ASSERT_NE(first_row, std::string::npos);
    // Name and first row always share a page.
    EXPECT_EQ(page_break < name, page_break < first_row);
    EXPECT_EQ(page_break != std::string::npos && page_break < name, c.moved);
  }
}

}  // namespace
}  // namespace orv::testing
