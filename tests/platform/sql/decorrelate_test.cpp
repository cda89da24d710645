// Per-row aggregate subqueries read as grouped joins: the rewritten tree,
// printed for SQLite and run on the fixture, gives the rows the statement
// gives as written.
#include <gtest/gtest.h>

#include <string>

#include "platform/sql/binder.h"
#include "platform/sql/decorrelate.h"
#include "platform/sql/parser.h"
#include "platform/sql/print_sqlite.h"
#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

Translation Decorrelated(const FixtureDb& db, const std::string& tsql) {
  Translation plain = Translate(tsql, db.schema(), Dialect::SQLite);
  Statement st = Parse(tsql);
  Bind(st, db.schema(), tsql);
  DecorrelateAggregateSubqueries(st);
  plain.sql = PrintSqlite(st);
  return plain;
}

TEST(Decorrelate, GroupedJoinsGiveTheRowsOfTheSubqueries) {
  FixtureDb db;
  // Paid up to 11-01 on the patient's invoices, and the last invoice's day.
  const std::string tsql =
      "SELECT ID, ISNULL((SELECT SUM(Amount) FROM InvoicePaymentDetails INNER JOIN Invoices ON Invoices.ID = "
      "InvoicePaymentDetails.InvoiceID WHERE Invoices.PatientID = Patient.ID AND InvoicePaymentDetails.[Date] <= "
      "'2026-11-01'), 0) AS Paid, (SELECT MAX([Date]) FROM Invoices WHERE PatientID = Patient.ID) AS LastVisit "
      "FROM Patient ORDER BY ID";
  const Translation rewritten = Decorrelated(db, tsql);
  const std::string& sql = rewritten.sql;
  EXPECT_NE(sql.find("LEFT JOIN (SELECT"), sql.rfind("LEFT JOIN (SELECT")) << sql;
  EXPECT_EQ(sql.find("(SELECT SUM"), std::string::npos) << sql;
  const auto expected = db.Run(tsql);
  EXPECT_EQ(db.RunTranslated(rewritten).rows, expected.rows);
  // Worked by hand: patient 1 has invoices 1 and 4; 50 (09-15) and 200
  // (10-01) on invoice 1 count, -50 on 11-18 does not; the last invoice is
  // 4 on 11-20. Patient 8 has none of either.
  ASSERT_GE(expected.rows.size(), 8u);
  EXPECT_EQ(expected.rows[0][1], "250.0000");
  EXPECT_EQ(expected.rows[0][2].substr(0, 10), "2026-11-20");
  EXPECT_EQ(expected.rows[7][1], "0.0000");
  EXPECT_EQ(expected.rows[7][2], "NULL");

  // Left as written: COUNT (0, not NULL, for no rows), two outer columns,
  // TOP, a subquery in WHERE, and an outer query with aggregates.
  const char* kept[] = {
      "SELECT ID, (SELECT COUNT(*) FROM Invoices WHERE PatientID = Patient.ID) AS N FROM Patient",
      "SELECT ID, (SELECT SUM(InvoiceTotal) FROM Invoices WHERE PatientID = Patient.ID AND ProviderID = "
      "Patient.PrimaryHolderID) AS T FROM Patient",
      "SELECT ID, (SELECT TOP 1 SUM(InvoiceTotal) FROM Invoices WHERE PatientID = Patient.ID) AS T FROM Patient",
      "SELECT ID FROM Patient WHERE 100 < (SELECT SUM(InvoiceTotal) FROM Invoices WHERE PatientID = Patient.ID)",
      "SELECT MAX(ID) AS M, (SELECT SUM(InvoiceTotal) FROM Invoices WHERE PatientID = 1) AS T FROM Patient",
  };
  for (const char* k : kept) EXPECT_EQ(Decorrelated(db, k).sql.find("LEFT JOIN"), std::string::npos) << k;
}

}  // namespace
}  // namespace orv::sql::testing
