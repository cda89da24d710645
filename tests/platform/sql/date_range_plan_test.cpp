// A date with only an upper bound reaches SQLite marked as taking in most
// of the table, so that the planner reads the table through rather than
// walking the date index row by row; a period keeps the index.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

std::string SqliteText(const FixtureDb& db, const std::string& tsql) {
  return Translate(tsql, db.schema(), Dialect::SQLite).sql;
}

TEST(DateRangePlan, OnlyAnUpperBoundIsMarkedAndTheRowsStay) {
  FixtureDb db;
  struct Case {
    const char* tsql;
    const char* printed;  // a part of the SQLite text
  };
  const Case marked[] = {
      {"SELECT ID FROM Invoices WHERE [Date] < '11/1/2026'",
       R"(WHERE likelihood("t1"."Date" < '2026-11-01 00:00:00', 0.9))"},
      // Written the other way round, beside other terms, and in a join.
      {"SELECT ID FROM Invoices WHERE [Complete?] <> 0 AND '2026-11-01' >= EntryDate AND PatientID "
       "> 0",
       R"(<> 0 AND likelihood('2026-11-01 00:00:00' >= "t1"."EntryDate", 0.9) AND "t1"."PatientID" > 0)"},
      {"SELECT Invoices.ID FROM Patient INNER JOIN Invoices ON Invoices.PatientID = Patient.ID AND "
       "Invoices.[Date] <= GETDATE()",
       R"(AND likelihood("t2"."Date" <= orv_getdate(), 0.9))"},
      // A lower bound on another column does not make a period of this one.
      {"SELECT ID FROM Invoices WHERE [Date] !> '11/1/2026' AND EntryDate >= '1/1/2026'",
       R"(likelihood("t1"."Date" <= '2026-11-01 00:00:00', 0.9) AND "t1"."EntryDate" >=)"},
      // A query inside a grouped one is not grouped itself.
      {"SELECT ProviderID, COUNT(*) FROM Invoices WHERE PatientID IN (SELECT PatientID FROM InvoicePayments "
       "WHERE CheckDate < '11/1/2026') GROUP BY ProviderID",
       R"(WHERE likelihood("t2"."CheckDate" < '2026-11-01 00:00:00', 0.9)) GROUP BY)"},
      // An OR term stays as written inside its parentheses.
      {"SELECT ID FROM Invoices WHERE [Date] < '11/1/2026' AND (Cancelled = 1 OR notes IS NULL)",
       R"(0.9) AND ("t1"."Cancelled" = 1 OR "t1"."notes" IS NULL))"},
  };
  for (const Case& c : marked) {
    SCOPED_TRACE(c.tsql);
    EXPECT_NE(SqliteText(db, c.tsql).find(c.printed), std::string::npos) << SqliteText(db, c.tsql);
  }

  // Periods, bounds inside an OR, bounds against another column, ranges
  // over numbers and grouped queries read as written.
  const char* kept[] = {
      "SELECT ID FROM Invoices WHERE [Date] >= '10/1/2026' AND [Date] < '11/1/2026'",
      "SELECT ID FROM Invoices WHERE [Date] < '11/1/2026' AND [Date] BETWEEN '1/1/2026' AND "
      "'12/31/2026'",
      "SELECT ID FROM Invoices WHERE '10/1/2026' < [Date] AND [Date] < '11/1/2026'",
      "SELECT ID FROM Invoices WHERE [Date] < '11/1/2026' OR Cancelled = 1",
      "SELECT ID FROM Invoices WHERE [Date] <= FinalDate",
      "SELECT ID FROM Invoices WHERE ID < 5",
      "SELECT SUM(CASE WHEN [Date] < '11/1/2026' THEN InvoiceTotal END) FROM Invoices",
      "SELECT ProviderID, SUM(InvoiceTotal) FROM Invoices WHERE [Date] < '11/1/2026' GROUP BY ProviderID",
  };
  for (const char* tsql : kept) {
    SCOPED_TRACE(tsql);
    EXPECT_EQ(SqliteText(db, tsql).find("likelihood"), std::string::npos) << SqliteText(db, tsql);
  }

  ExpectRows({
      {"upper_bound",
       "SELECT ID FROM Invoices WHERE [Date] < '11/1/2026' ORDER BY ID",
       {"1", "5", "6", "8"}},
      {"upper_bound_among_terms",
       "SELECT ID FROM Invoices WHERE [Complete?] <> 0 AND [Date] <= '11/19/2026 16:45' AND "
       "InvoiceTotal > 100 "
       "ORDER BY ID",
       {"1", "2", "3", "5", "6"}},
      {"upper_bound_in_join",
       "SELECT Invoices.ID FROM Patient INNER JOIN Invoices ON Invoices.PatientID = Patient.ID AND "
       "Invoices.[Date] < '10/1/2026' ORDER BY Invoices.ID",
       {"1", "6"}},
  });
}

// On a table of ten years of invoices with an index on the date, the
// history before a day is read by a pass over the table, a month through
// the index.
TEST(DateRangePlan, HistoryIsScannedAndAMonthIsSought) {
  FixtureDb db;
  std::string setup =
      "CREATE INDEX IX_Invoices_Date ON Invoices ([Date]);"
      "WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 3650) "
      "INSERT INTO Invoices (ID, PatientID, [Date], [Complete?], InvoiceTotal) "
      "SELECT 1000 + i, i % 7 + 1, datetime('2016-11-20', '+' || i || ' days'), 1, i FROM n;"
      "ANALYZE;";
  ASSERT_EQ(sqlite3_exec(db.db(), setup.c_str(), nullptr, nullptr, nullptr), SQLITE_OK)
      << sqlite3_errmsg(db.db());

  auto plan = [&](const std::string& tsql) {
    std::string sql = "EXPLAIN QUERY PLAN " + SqliteText(db, tsql), out;
    sqlite3_stmt* st = nullptr;
    EXPECT_EQ(sqlite3_prepare_v2(db.db(), sql.c_str(), -1, &st, nullptr), SQLITE_OK)
        << sqlite3_errmsg(db.db());
    while (st && sqlite3_step(st) == SQLITE_ROW)
      out += std::string(reinterpret_cast<const char*>(sqlite3_column_text(st, 3))) + "; ";
    sqlite3_finalize(st);
    return out;
  };
  EXPECT_EQ(
      plan(
          "SELECT SUM(InvoiceTotal) FROM Invoices WHERE [Complete?] <> 0 AND [Date] < '11/1/2026'"),
      "SCAN t1; ");
  EXPECT_EQ(plan("SELECT SUM(InvoiceTotal) FROM Invoices WHERE [Date] >= '10/1/2026' AND [Date] < "
                 "'11/1/2026'"),
            "SEARCH t1 USING INDEX IX_Invoices_Date (Date>? AND Date<?); ");
  // The sum is the same either way: the rows before November 2026, that is
  // days 1 to 3632 after 2016-11-20, plus the fixture's own.
  EXPECT_EQ(
      db.Run("SELECT SUM(InvoiceTotal) FROM Invoices WHERE [Date] < '11/1/2026' AND ID > 1000")
          .rows,
      (Rows{{"6597528.0000"}}));
}

}  // namespace
}  // namespace orv::sql::testing
