// What one invoice is worth: settled totals only as of today, the Mar 1 2001
// line, the rate and completeness, rounding half to even. Figures by hand
// from the rows listed in account_fixture.h.
#include <gtest/gtest.h>

#include "account_fixture.h"
#include "accounts/account_model.h"
#include "platform/db/recordset.h"

namespace orv::testing {
namespace {

using InvoiceAmountTest = AccountFixture;

TEST_F(InvoiceAmountTest, ReadByID) {
  const Variant today = Variant(Day(2026, 11, 20));
  const Variant yesterday = Variant(Day(2026, 11, 19));
  struct Case {
    const char* name;
    int32_t id;
    Variant end;
    float rate;
    const char* expected;
  };
  const Case cases[] = {
      // Final 100.0050 > 0 and asked as of today: Round(100.005, 2) goes to
      // the even cent, 100.00 (not 100.01).
      {"settled total as of today", 181, today, 0, "100.00"},
      {"Null end date means today", 181, Variant::Null(), 0, "100.00"},
      // Clock::Now() is today at 10:30; the day is what counts.
      {"today with a time of day", 181, Variant(Clock::Now()), 0, "100.00"},
      // As of yesterday the settled total is not used: total 120.00 stored.
      {"settled total not used as of yesterday", 181, yesterday, 0, "120.00"},
      // Final 0 never counts: total 80.0050, stored as is with no rate.
      {"zero final total, no rate", 182, today, 0, "80.0050"},
      // Final -5 never counts: 70.0250 rounds half-even to 70.02.
      {"negative final total", 183, today, 5, "70.02"},
      // Dated Feb 28 2001: before the interest day, stored 50.0250 stands.
      {"day before interest, rate set", 184, today, 5, "50.0250"},
      // Dated Mar 1 2001: not before it, so 50.025 -> 50.02.
      {"interest day itself, rate set", 185, today, 5, "50.02"},
      // Complete 0: stored 33.3350 even with a rate (rounded would be 33.34).
      {"incomplete invoice", 186, today, 5, "33.3350"},
      // Complete NULL counts as incomplete, like `[Complete?] <> 0` in SQL.
      {"NULL complete flag", 187, today, 5, "33.3350"},
      // InvoiceTotal NULL: the query finds no row; its final 10 never counts.
      {"NULL invoice total", 188, today, 0, "0"},
      // No date: not known to predate interest; 20.005 -> 20.00.
      {"undated invoice, rate set", 189, today, 5, "20.00"},
      {"no such invoice", 999, today, 5, "0"},
      // Complete -1 is a set flag: 100.005 -> 100.00.
      {"complete stored as -1", 111, today, 5, "100.00"},
  };
  for (const Case& c : cases) {
    AccountModel model(conn_, c.rate);
    EXPECT_EQ(model.ReturnInvoiceAmount(c.id, c.end), Money(c.expected)) << c.name;
  }
}

TEST_F(InvoiceAmountTest, ReadFromCallersRow) {
  AccountModel model(conn_, 0);
  struct Case {
    const char* name;
    const char* sql;
    const char* expected;
  };
  const Case cases[] = {
      // The same fields as the routine's own query: settled 100.0050 -> 100.00.
      {"full row",
       "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, "
       "Invoices.[Complete?], Invoices.InvoiceFinalTotal FROM Invoices WHERE ID = 181",
       "100.00"},
      {"recordset at its end",
       "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, "
       "Invoices.[Complete?], Invoices.InvoiceFinalTotal FROM Invoices "
       "WHERE ID = 999",
       "0"},
  };
  for (const Case& c : cases) {
    db::Recordset rs;
    rs.Open(c.sql, conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
    // The ID argument is ignored when a row is given.
    EXPECT_EQ(model.ReturnInvoiceAmount(0, Variant::Null(), &rs), Money(c.expected)) << c.name;
    EXPECT_EQ(rs.State(), db::adStateOpen) << c.name << ": the caller's recordset stays open";
  }
}

}  // namespace
}  // namespace orv::testing
