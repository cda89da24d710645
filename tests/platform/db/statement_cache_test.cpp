// Statements that differ only in their keys and compared dates share
// one translation and one prepared statement, and each still reads exactly
// what its own text asks, on SQLite and (with ORVENDA_TEST_PG) PostgreSQL.
#include <gtest/gtest.h>

#include <string>

#include "platform/db/connection.h"
#include "temp_db.h"

namespace orv::db {
namespace {

// Days off of providers in November 2026. The note of the first holds
// date-like text, of the last digits; a time part starts the fourth at 1 PM.
const char* kHolidays = R"sql(
CREATE TABLE EmployeeHolidays (ID INTEGER PRIMARY KEY, EmployeeID INTEGER, FromDate DATETIME,
  ToDate DATETIME, FromTime INTEGER, ToTime INTEGER, Note VARCHAR(20));
INSERT INTO EmployeeHolidays VALUES
 (1, 1, '2026-11-02 00:00:00', '2026-11-04 00:00:00', NULL, NULL, '2026-11-03'),
 (2, 1, '2026-11-10 00:00:00', '2026-11-10 00:00:00', 600, 720, 'half day'),
 (3, 2, '2026-11-03 00:00:00', '2026-11-12 00:00:00', NULL, NULL, NULL),
 (4, 1, '2026-11-20 13:00:00', '2026-11-20 13:00:00', NULL, NULL, NULL),
 (5, 3, '2026-12-01 00:00:00', '2026-12-01 00:00:00', NULL, NULL, '600');
)sql";

std::string Ids(Connection& conn, const std::string& statement) {
  std::string ids;
  const auto rows = conn.Query(statement);
  for (size_t r = 0; r < rows->RowCount(); ++r) ids += CStr(rows->Get(r, 0)) + " ";
  return ids;
}

std::string Day(int d) { return "2026-11-" + std::string(d < 10 ? "0" : "") + std::to_string(d); }

TEST(StatementCache, DaysAndKeysShareOnePreparedStatementAndReadTheirOwnRows) {
  testing::EachEngine engines(kHolidays);
  for (const std::string& url : engines.urls()) {
    SCOPED_TRACE(url);
    Connection conn(url);
    // The same query with the day read by a cast, which is not lifted: what
    // each day's statement must give.
    Connection plain(url);
    for (int provider = 1; provider <= 2; ++provider) {
      for (int d = 1; d <= 30; ++d) {
        const std::string key = std::to_string(provider);
        const std::string day = Day(d);
        const std::string lifted = "SELECT ID FROM EmployeeHolidays WHERE (FromDate <= '" + day +
                                   "') AND (ToDate >= '" + day + "') AND (EmployeeID = " + key + ") ORDER BY ID";
        const std::string cast = "SELECT ID FROM EmployeeHolidays WHERE (FromDate <= CAST('" + day +
                                 "' AS datetime)) AND (ToDate >= CAST('" + day + "' AS datetime)) AND (EmployeeID = " +
                                 key + ") ORDER BY ID";
        ASSERT_EQ(Ids(conn, lifted), Ids(plain, cast)) << lifted;
      }
    }
    // On the server each day keeps its own text and plan; the keys share it.
    const size_t statements = conn.Dialect() == sql::Dialect::SQLite ? 1 : 30;
    EXPECT_EQ(conn.CachedStatementCount(), statements) << "sixty days of two providers";
    EXPECT_EQ(Ids(conn, "SELECT ID FROM EmployeeHolidays WHERE FromDate <= '2026-11-03' AND EmployeeID = 2"), "3 ");

    struct Case {
      const char* name;
      const char* statement;
      const char* ids;
    } cases[] = {
        // A time of the day is bound with the date: 1 PM starts after the
        // day's midnight and before 5 PM.
        {"midnight", "SELECT ID FROM EmployeeHolidays WHERE FromDate <= '2026-11-20' AND ToDate >= '2026-11-20'", ""},
        {"5 PM", "SELECT ID FROM EmployeeHolidays WHERE FromDate <= '11/20/2026 5:00 PM' AND ToDate >= '2026-11-20'",
         "4 "},
        // Date-like text compared with text is text: never read as a date.
        {"text column", "SELECT ID FROM EmployeeHolidays WHERE Note = '2026-11-03'", "1 "},
        {"text column, other day", "SELECT ID FROM EmployeeHolidays WHERE Note = '2026-11-04'", ""},
        // A key written as text is converted as the server converts it;
        // compared with text it stays text, leading zeros and all.
        {"key as text", "SELECT ID FROM EmployeeHolidays WHERE EmployeeID = '2'", "3 "},
        {"key as text, zeros", "SELECT ID FROM EmployeeHolidays WHERE EmployeeID = '0001' ORDER BY ID", "1 2 4 "},
        {"digits in a text column", "SELECT ID FROM EmployeeHolidays WHERE Note = '0001'", ""},
        {"digits in a text column, found", "SELECT ID FROM EmployeeHolidays WHERE Note = '600'", "5 "},
    };
    for (const auto& c : cases) EXPECT_EQ(Ids(conn, c.statement), c.ids) << c.name;

    // A step that fails names the values bound in place of the literals,
    // since the engine's text shows only markers: the numbers, and the day
    // as the date it was read as. (The server fails such a statement when
    // it is run, before its first step.)
    const std::string failing =
        "SELECT ID FROM EmployeeHolidays WHERE EmployeeID = 1 AND FromDate <= '2026-11-20' AND "
        "CAST(Note AS int) = 5";
    try {
      Ids(conn, failing);
      ADD_FAILURE() << "no error from " << failing;
    } catch (const ReportError& e) {
      if (conn.Dialect() == sql::Dialect::SQLite) {
        EXPECT_NE(e.description().find("bound as ?1 = 1, ?2 = 5, ?3 = '2026-11-20 00:00:00'"), std::string::npos)
            << e.description();
      }
    }
    // The statement runs again once its failed run is over.
    EXPECT_EQ(Ids(conn, "SELECT ID FROM EmployeeHolidays WHERE EmployeeID = 1 AND FromDate <= '2026-11-01'"), "");
  }
}

}  // namespace
}  // namespace orv::db
