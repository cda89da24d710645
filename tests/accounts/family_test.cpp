// Families by holder: family credit, family balance, and the condition a
// balance reuses. Figures by hand from the rows listed in account_fixture.h;
// today is 2026-11-20.
#include <gtest/gtest.h>

#include "account_fixture.h"
#include "accounts/account_model.h"
#include "platform/db/recordset.h"

namespace orv::testing {
namespace {

using FamilyTest = AccountFixture;

TEST_F(FamilyTest, FamilyCredit) {
  AccountModel model(conn_, 0);
  struct Case {
    const char* name;
    int32_t patient;
    bool post_dates;
    const char* expected;
  };
  const Case cases[] = {
      // Luc: holder 1 reaches Claire, Luc and Marc. Credits by today:
      // 50 + 26 + 10.0050 = 86.0050 -> half-even 86.00 (not 86.01).
      {"family A by today", 2, false, "86.00"},
      // Claire's post-dated 30 joins: 116.0050 -> 116.00.
      {"family A with post-dated cheques", 2, true, "116.00"},
      // Marc: holders 1 and 3 reach both families: 86.005 + 60 + 15 =
      // 161.0050 -> 161.00.
      {"two holders", 5, false, "161.00"},
      // Arjun: holder 3 reaches Priya, Arjun and Marc (secondary holder 3):
      // 60 + 15 + 10.005 = 85.0050 -> 85.00.
      {"family B", 4, false, "85.00"},
      // Seamus has no holder: no family credit, though his own 20 is on file.
      {"no holder", 6, true, "0"},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(model.ReturnFamilyCredit(c.patient, c.post_dates), Money(c.expected)) << c.name;
  }
}

// Zoe (7) belongs to no family and stores 0 rather than NULL as both
// holders; she has 35.00 on account and an invoice of 500.00. A holder read
// as 0 links no one, so her money stays out of every family's figures.
TEST_F(FamilyTest, StrangerWhoStoresZeroHoldersStaysOutOfTheFamily) {
  Exec(
      "INSERT INTO Patient (ID, FirstName, LastName, PrimaryHolderID, SecondaryHolderID) "
      "VALUES (7, 'Zoe', 'Zero', 0, 0);"
      "INSERT INTO InvoicePayments (ID, PatientID, Value, TotalAllocated, TotalToCredit, [Date], "
      "CheckDate, IsInsurance) VALUES (271, 7, 35, 0, 35, '2026-09-01 00:00:00', "
      "'2026-09-01 00:00:00', 0);"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], "
      "InvoiceTotal) VALUES (171, 1071, 7, '2026-10-01 00:00:00', 600, 1, 500);");
  AccountModel model(conn_, 0);
  const Variant today = Variant(Day(2026, 11, 20));
  struct Case {
    const char* name;
    Currency figure;
    const char* expected;
  };
  const Case cases[] = {
      // Luc has holder 1 and no secondary: the secondary's terms would have
      // matched Zoe's stored 0 (86.0050 + 35 -> 121.00).
      {"credit, one holder", model.ReturnFamilyCredit(2, false), "86.00"},
      // Neither holder set: no family, so nothing.
      {"credit, zero holders", model.ReturnFamilyCredit(7, true), "0"},
      // Family A as in FamilyBalance below, Zoe's 500.00 not among it.
      {"balance, one holder", model.ReturnFamilyBalance(2, today, false, false), "235.0550"},
      // Zoe names no holder and nobody names her: her own invoice is not
      // reached, as for Seamus.
      {"balance, zero holders", model.ReturnFamilyBalance(7, today, true, true), "0"},
  };
  for (const Case& c : cases) EXPECT_EQ(c.figure, Money(c.expected)) << c.name;
}

TEST_F(FamilyTest, FamilyBalance) {
  struct Case {
    const char* name;
    int32_t patient;
    float rate;
    Variant end;
    bool ignore_date;
    bool less_credit;
    const char* expected;
  };
  const Variant today = Variant(Day(2026, 11, 20));
  const Case cases[] = {
      // Luc's family A: live complete invoices 101 200 + 102 150 + 105 60
      // (Claire; cancelled 103 and in-progress 104 left out) + 111 100.0050
      // + 112 50.0250 + 113 50.0250 (Luc) + 121 75 (Marc) = 685.0550.
      // Shares by cheque date <= today: 80 + 120 + 150 + 100 = 450.
      {"family A", 2, 0, today, false, false, "235.0550"},
      // Every share, the post-dated 40 too: 685.055 - 490.
      {"family A, dates ignored", 2, 0, today, true, false, "195.0550"},
      // With a rate: 111 -> 100.00, 113 (Mar 1 2001) -> 50.02, 112 (Feb 28)
      // stays 50.0250: 685.0450 - 450.
      {"family A with interest rounding", 2, 5, today, false, false, "235.0450"},
      // As of 10-31: 101, 102, 111, 112, 113 = 550.0550; shares 450.
      {"family A earlier", 2, 0, Variant(Day(2026, 10, 31)), false, false, "100.0550"},
      {"Null end date means today", 2, 0, Variant::Null(), false, false, "235.0550"},
      // Arjun's family B: 131 80 + 141 40 + Marc's 121 75 = 195; Arjun's 80
      // on 131. 115, less family credit 85.00.
      {"family B less credit", 4, 0, today, false, true, "30.00"},
      // Seamus has no holder and names nobody: his own invoice 161 is not
      // reached, so nothing.
      {"patient's own ID left out", 6, 0, today, false, true, "0"},
      // Emile (holder 8) reaches Nadia and himself. Settled totals as stored:
      // 181 100.0050, 182 0, 183 -5, and 188's 10 (its NULL InvoiceTotal is
      // not tested here). Without one: 184 50.0250, 185 -> 50.02, 191 66.65.
      // 189 has no date and fails the date filter; 186 and 187 are not
      // complete. 271.70 less shares 50.02 + 50.02 + 33.325 = 133.365.
      {"settled totals as stored", 9, 5, today, false, false, "138.3350"},
  };
  for (const Case& c : cases) {
    AccountModel model(conn_, c.rate);
    EXPECT_EQ(model.ReturnFamilyBalance(c.patient, c.end, c.ignore_date, c.less_credit),
              Money(c.expected))
        << c.name;
  }
}

TEST_F(FamilyTest, WhereClause) {
  struct Case {
    const char* name;
    const char* sql;
    const char* expected;
  };
  const Case cases[] = {
      {"cut at ORDER BY", "SELECT ID FROM Patient WHERE ID = 1 ORDER BY ID", "ID = 1"},
      // Found in any case; the text keeps its own.
      {"lower case words", "select ID from Patient where LastName = 'Roy' order by ID",
       "LastName = 'Roy'"},
      {"no ORDER BY", "SELECT ID FROM Patient WHERE  ID > 2  ", "ID > 2"},
      {"no WHERE", "SELECT ID FROM Patient ORDER BY ID", ""},
  };
  for (const Case& c : cases) {
    db::Recordset rs;
    rs.Open(c.sql, conn_, db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
    EXPECT_EQ(ReturnWhereClause(rs), c.expected) << c.name;
  }
}

}  // namespace
}  // namespace orv::testing
