// The PostgreSQL printer on a real server: the shared fixture is copied
// from SQLite into a fresh PostgreSQL database (text as bpchar under
// orvenda.orv_ci, money numeric(19,4), dates timestamp, as the engine's
// schema has them), the support statements are installed, and each
// statement's rows are compared with the SQLite path's and with the rows
// SQL Server returns. Needs ORVENDA_TEST_PG, a libpq URL of a server where
// the test may create a database.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <cstring>
#include <unistd.h>

#include "platform/sql/postgres_support.h"
#include "sql_test_support.h"
#include "test_paths.h"

#if ORVENDA_HAVE_LIBPQ
#include <libpq-fe.h>
#endif

namespace orv::sql::testing {
namespace {

#if ORVENDA_HAVE_LIBPQ

std::string PgType(ValueKind kind) {
  switch (kind) {
    case ValueKind::Integer:
    case ValueKind::Boolean: return "integer";
    case ValueKind::Money: return "numeric(19,4)";
    case ValueKind::Date: return "timestamp";
    case ValueKind::Text: return "bpchar COLLATE orvenda.orv_ci";
    case ValueKind::Float: return "double precision";
    case ValueKind::Decimal: return "numeric";
    case ValueKind::Blob: return "bytea";
    case ValueKind::Unknown: return "text";
  }
  return "text";
}

std::string Ident(const std::string& name) {
  std::string out = "\"";
  for (char c : name) out += c == '"' ? std::string("\"\"") : std::string(1, c);
  return out + "\"";
}

// A fresh database holding the fixture, dropped at the end.
class PgFixture {
 public:
  explicit PgFixture(const FixtureDb& sqlite) : sqlite_(sqlite) {
    admin_ = Connect(std::getenv("ORVENDA_TEST_PG"), nullptr);
    Exec(admin_, "SET client_min_messages = warning");
    name_ = "orv_sql_live_" + std::to_string(getpid());
    Exec(admin_, "DROP DATABASE IF EXISTS " + name_);
    Exec(admin_, "CREATE DATABASE " + name_ + " ENCODING 'UTF8' TEMPLATE template0");
    db_ = Connect(std::getenv("ORVENDA_TEST_PG"), name_.c_str());
    Exec(db_, "BEGIN");
    for (const std::string& s : PostgresSupportStatements()) Exec(db_, s);
    Exec(db_, "COMMIT");
    Exec(db_, "SET orvenda.now = '2026-11-20 10:00:00'");
    CopyFixture();
  }
  ~PgFixture() {
    if (db_) PQfinish(db_);
    if (admin_) {
      Exec(admin_, "DROP DATABASE IF EXISTS " + name_);
      PQfinish(admin_);
    }
  }

  // Translates `tsql` for PostgreSQL and runs it; rows printed as
  // FormatValue prints the SQLite path's. An engine error fails the test.
  Rows Run(const std::string& tsql, std::string* error = nullptr) const {
    Translation t = Translate(tsql, sqlite_.schema(), Dialect::PostgreSQL);
    PGresult* r = PQexec(db_, t.sql.c_str());
    Rows rows;
    if (PQresultStatus(r) != PGRES_TUPLES_OK && PQresultStatus(r) != PGRES_COMMAND_OK) {
      if (error) {
        *error = PQresultErrorMessage(r);
      } else {
        ADD_FAILURE() << "engine failed: " << PQresultErrorMessage(r) << "  " << t.sql;
      }
      PQclear(r);
      return rows;
    }
    for (int i = 0; i < PQntuples(r); ++i) {
      std::vector<std::string> row;
      for (int j = 0; j < PQnfields(r); ++j) {
        ValueKind kind = j < static_cast<int>(t.columns.size()) ? t.columns[j].kind : ValueKind::Unknown;
        row.push_back(PQgetisnull(r, i, j) ? "NULL" : Format(PQgetvalue(r, i, j), kind));
      }
      rows.push_back(std::move(row));
    }
    PQclear(r);
    return rows;
  }

  PGconn* db() const { return db_; }

 private:
  static PGconn* Connect(const char* url, const char* dbname) {
    const char* keys[] = {"dbname", dbname ? "dbname" : nullptr, nullptr};
    const char* values[] = {url, dbname, nullptr};
    PGconn* c = PQconnectdbParams(keys, values, 1);
    if (PQstatus(c) != CONNECTION_OK) ADD_FAILURE() << "cannot connect: " << PQerrorMessage(c);
    return c;
  }

  static void Exec(PGconn* c, const std::string& sql) {
    PGresult* r = PQexec(c, sql.c_str());
    if (PQresultStatus(r) != PGRES_COMMAND_OK && PQresultStatus(r) != PGRES_TUPLES_OK) {
      ADD_FAILURE() << PQresultErrorMessage(r) << "  " << sql.substr(0, 200);
    }
    PQclear(r);
  }

  static std::string Format(const std::string& text, ValueKind kind) {
    char buf[64];
    if (kind == ValueKind::Money) {
      double v = std::round(std::strtod(text.c_str(), nullptr) * 10000.0) / 10000.0;
      std::snprintf(buf, sizeof buf, "%.4f", v == 0 ? 0.0 : v);
      return buf;
    }
    return text;
  }

  void CopyFixture() {
    sqlite3_stmt* list = nullptr;
    sqlite3_prepare_v2(sqlite_.db(), "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &list, nullptr);
    while (sqlite3_step(list) == SQLITE_ROW) {
      std::string table = reinterpret_cast<const char*>(sqlite3_column_text(list, 0));
      const std::vector<ColumnType>& columns = *sqlite_.schema().FindTable(table);
      std::string ddl = "CREATE TABLE " + Ident(table) + " (";
      std::string insert = "INSERT INTO " + Ident(table) + " VALUES (";
      for (size_t i = 0; i < columns.size(); ++i) {
        ddl += (i ? ", " : "") + Ident(columns[i].name) + " " + PgType(columns[i].kind);
        insert += (i ? ", $" : "$") + std::to_string(i + 1);
      }
      Exec(db_, ddl + ")");
      sqlite3_stmt* rows = nullptr;
      sqlite3_prepare_v2(sqlite_.db(), ("SELECT * FROM " + Ident(table)).c_str(), -1, &rows, nullptr);
      while (sqlite3_step(rows) == SQLITE_ROW) {
        std::vector<std::string> values(columns.size());
        std::vector<const char*> params(columns.size());
        for (size_t i = 0; i < columns.size(); ++i) {
          int type = sqlite3_column_type(rows, static_cast<int>(i));
          if (type == SQLITE_BLOB) {
            static const char* kHex = "0123456789abcdef";
            auto* b = static_cast<const unsigned char*>(sqlite3_column_blob(rows, static_cast<int>(i)));
            values[i] = "\\x";
            for (int k = 0; k < sqlite3_column_bytes(rows, static_cast<int>(i)); ++k) {
              values[i] += kHex[b[k] >> 4];
              values[i] += kHex[b[k] & 15];
            }
          } else if (type != SQLITE_NULL) {
            values[i] = FormatValue(rows, static_cast<int>(i), ValueKind::Unknown);
          }
          params[i] = type == SQLITE_NULL ? nullptr : values[i].c_str();
        }
        PGresult* r = PQexecParams(db_, (insert + ")").c_str(), static_cast<int>(params.size()), nullptr,
                                   params.data(), nullptr, nullptr, 0);
        if (PQresultStatus(r) != PGRES_COMMAND_OK) ADD_FAILURE() << table << ": " << PQresultErrorMessage(r);
        PQclear(r);
      }
      sqlite3_finalize(rows);
    }
    sqlite3_finalize(list);
  }

  const FixtureDb& sqlite_;
  PGconn* admin_ = nullptr;
  PGconn* db_ = nullptr;
  std::string name_;
};

// What a row read on SQLite must be on PostgreSQL: numbers by value
// (numeric and float print differently on the two engines), everything
// else as text.
std::vector<std::string> AsWanted(const Rows& rows) {
  std::vector<std::string> lines;
  for (const auto& row : rows) {
    std::string line;
    for (size_t i = 0; i < row.size(); ++i) {
      const std::string& cell = row[i];
      char* end = nullptr;
      const bool number = !cell.empty() && std::strchr("+-.0123456789", cell[0]) &&
                          (std::strtod(cell.c_str(), &end), *end == '\0');
      line += (i ? "\t" : "") + (number ? "~" + cell : cell);
    }
    lines.push_back(line);
  }
  return lines;
}

class PostgresLive : public ::testing::Test {
 protected:
  void SetUp() override {
    if (!std::getenv("ORVENDA_TEST_PG")) GTEST_SKIP() << "ORVENDA_TEST_PG is not set: no PostgreSQL server to test against";
  }
};

// Every statement of the shared conformance cases gives on PostgreSQL the
// rows it gives on SQLite (SHAPE belongs to the database layer).
TEST_F(PostgresLive, ConformanceCasesGiveTheSqliteRows) {
  if (SampleCasesDir().empty()) GTEST_SKIP() << "no sample cases beside the checkout";
  FixtureDb sqlite(SampleCasesDir() + "/fixture.sql");
  PgFixture pg(sqlite);
  std::filesystem::path dir = std::filesystem::path(SampleCasesDir()) / "cases";
  for (const auto& entry : std::filesystem::directory_iterator(dir)) {
    std::string text = FileBytes(entry.path().string());
    size_t at = text.find("--- statement\n"), end = text.find("\n--- expected");
    std::string statement = text.substr(at + 14, end - at - 14);
    if (statement.rfind("SHAPE", 0) == 0) continue;
    bool ordered = text.find("# order: ordered") != std::string::npos;
    SCOPED_TRACE(entry.path().filename().string() + ": " + statement);
    Rows want = sqlite.Run(statement).rows;
    Rows got = pg.Run(statement);
    EXPECT_TRUE(SameRows(AsWanted(want), got, ordered))
        << "sqlite:" << RowsText(want) << "\npostgres:" << RowsText(got) << "\n"
        << Translate(statement, sqlite.schema(), Dialect::PostgreSQL).sql;
  }
}

// Where PostgreSQL's own semantics differ from SQL Server's: each
// statement with the rows SQL Server returns on the fixture, run on both
// engines.
TEST_F(PostgresLive, ServerSemanticsOnBothEngines) {
  FixtureDb sqlite;
  PgFixture pg(sqlite);
  const RowCase cases[] = {
      // bpchar to text drops trailing blanks; varchar keeps them.
      {"concat_keeps_trailing_blanks", "SELECT '[' + PremedType + ']' FROM Patient WHERE ID = 3", {"[ ]"}},
      {"isnull_of_cast_tooth",
       "SELECT Code + ' ' + ISNULL(CAST([Tooth#] AS varchar(2)), '') + '|' FROM InvoiceDetails WHERE ID = 1",
       {"01101 |"}},
      // Text order is folded code points: '(' (0x28) before letters, 'é'
      // (0xE9) after 'z'; ICU would put 'é' beside 'e'.
      {"order_by_dictionary",
       "SELECT x FROM (SELECT 'zed' AS x UNION ALL SELECT 'École' UNION ALL SELECT '(none)' UNION ALL SELECT 'Eve') AS d "
       "ORDER BY x",
       {"(none)", "École", "Eve", "zed"}},
      {"order_by_desc_nulls_last", "SELECT ID FROM Employees WHERE ID IN (1, 3, 4) ORDER BY [Professional Title] DESC",
       {"3", "4", "1"}},
      {"distinct_ordered_by_text",
       "SELECT DISTINCT x FROM (SELECT 'b' AS x UNION ALL SELECT 'B' UNION ALL SELECT 'a') AS d ORDER BY x DESC",
       {"b", "a"}, true},
      {"union_ci_ordered", "SELECT 'Adult' AS n UNION SELECT Name FROM Patientcategories ORDER BY n", {"Adult", "Child"}},
      {"group_by_concatenation",
       "SELECT LastName + 'X' AS k, COUNT(*) FROM Patient GROUP BY LastName + 'X' HAVING COUNT(*) > 1", {"TremblayX\t3"}},
      // A function of the grouped text: the server would convert the
      // grouping key beneath its collation and no longer find it grouped.
      {"functions_of_grouped_concatenation",
       "SELECT LEN(LastName + 'X'), UPPER(LastName + 'X') FROM Patient GROUP BY LastName + 'X' "
       "HAVING LEFT(LastName + 'X', 1) = 't'",
       {"9\tTREMBLAYX"}},
      // COALESCE and NULLIF of bpchar (a column, a subquery) are bpchar.
      {"coalesce_nullif_keep_trailing_blanks",
       "SELECT '[' + COALESCE(PremedType, 'x') + ']', '[' + NULLIF((SELECT PremedType FROM Patient WHERE ID = 3), 'x') + ']', "
       "COALESCE((SELECT TOP 1 'ab  ' + Symbol FROM Employees WHERE ID = 2), '') + '|' FROM Patient WHERE ID = 3",
       {"[ ]\t[ ]\tab  DW|"}},
      {"min_max_by_dictionary_hyphen_left_out",
       "SELECT MIN(x), MAX(x) FROM (SELECT 'b' AS x UNION ALL SELECT 'Éa' UNION ALL SELECT '-z') AS d", {"b\t-z"}},
      {"less_than_by_dictionary",
       "SELECT COUNT(*) FROM (SELECT 'Lévesque' AS x UNION ALL SELECT 'Élise' UNION ALL SELECT 'Yves') AS d "
       "WHERE x < 'Lindgren' AND x BETWEEN 'Elise' AND 'Zoé'",
       {"2"}},
      {"like_sets_and_escape",
       "SELECT COUNT(*) FROM (SELECT 'a-b' AS t UNION ALL SELECT 'A_B' UNION ALL SELECT 'a.b') AS d "
       "WHERE t LIKE 'a[-_]B' OR t LIKE 'x!%' ESCAPE '!'",
       {"2"}},
      {"like_special_characters_literal", "SELECT COUNT(*) FROM (SELECT 'a.c' AS t UNION ALL SELECT 'abc') AS d WHERE t LIKE 'a.c'",
       {"1"}},
      {"integer_division_and_avg", "SELECT -7 / 2, AVG(x) FROM (SELECT 1 AS x UNION ALL SELECT 2) AS d", {"-3\t1"}},
      {"money_sum_and_division", "SELECT SUM(Cost), SUM(Cost) / 3 FROM InvoiceDetails WHERE ID IN (1, 4)",
       {"135.5000\t45.1667"}},
      {"text_code_equals_number", "SELECT COUNT(*) FROM InvoiceDetails WHERE Code = 1101", {"3"}},
      {"getdate_from_session", "SELECT DATEADD(d, 1, GETDATE())", {"2026-11-21 10:00:00"}},
      {"datediff_parts",
       "SELECT DATEDIFF(week, '2026-11-14', '2026-11-15'), DATEDIFF(hh, '2026-11-19 23:59', '2026-11-20 00:01'), "
       "DATEDIFF(yy, '2026-12-31', '2027-01-01')",
       {"1\t1\t1"}},
      {"text_to_date_at_run_time", "SELECT DATEADD(d, 1, x) FROM (SELECT 'Nov 19, 2026 4:45 PM' AS x) AS d",
       {"2026-11-20 16:45:00"}},
      {"convert_float_and_money", "SELECT CAST(1234567.0E0 AS varchar(20)), CAST(CAST(2.5 AS money) AS varchar(10))",
       {"1.23457e+06\t2.50"}},
  };
  for (const RowCase& c : cases) {
    SCOPED_TRACE(std::string(c.name) + ": " + c.tsql);
    Rows from_sqlite = sqlite.Run(c.tsql).rows;
    Rows from_pg = pg.Run(c.tsql);
    EXPECT_TRUE(SameRows(c.rows, from_sqlite, c.ordered)) << "sqlite:" << RowsText(from_sqlite);
    EXPECT_TRUE(SameRows(c.rows, from_pg, c.ordered))
        << "postgres:" << RowsText(from_pg) << "\n" << Translate(c.tsql, sqlite.schema(), Dialect::PostgreSQL).sql;
  }
}

// A failed conversion fails the statement with the server's message.
TEST_F(PostgresLive, FailedConversionsFailTheStatement) {
  FixtureDb sqlite;
  PgFixture pg(sqlite);
  for (const auto& [tsql, message] : kFailedConversions) {
    std::string error;
    pg.Run(tsql, &error);
    EXPECT_NE(std::string::npos, error.find(message)) << tsql << ": " << error;
  }
}

// The statement cache puts bigint parameters where whole numbers stood
// after "="; integer, text and money columns compare with them.
TEST_F(PostgresLive, BigintParametersAfterEquals) {
  FixtureDb sqlite;
  PgFixture pg(sqlite);
  const std::pair<const char*, const char*> cases[] = {
      {"SELECT COUNT(*) FROM Patient WHERE ID = 4", "1"},
      {"SELECT COUNT(*) FROM FeeCodes WHERE ID = 1101", "1"},
      {"SELECT COUNT(*) FROM InvoiceDetails WHERE Cost = 75", "1"},
  };
  for (const auto& [tsql, count] : cases) {
    std::string sql = Translate(tsql, sqlite.schema(), Dialect::PostgreSQL).sql;
    size_t at = sql.rfind(' ');
    std::string value = sql.substr(at + 1);
    std::string prepared = sql.substr(0, at + 1) + "$1";
    const Oid int8 = 20;
    const char* params[] = {value.c_str()};
    PGresult* r = PQexecParams(pg.db(), prepared.c_str(), 1, &int8, params, nullptr, nullptr, 0);
    ASSERT_EQ(PGRES_TUPLES_OK, PQresultStatus(r)) << PQresultErrorMessage(r) << prepared;
    EXPECT_EQ(std::string(count), PQgetvalue(r, 0, 0)) << prepared;
    PQclear(r);
  }
}

#else

TEST(PostgresLive, NeedsLibpq) { GTEST_SKIP() << "built without libpq: no PostgreSQL client to test with"; }

#endif

}  // namespace
}  // namespace orv::sql::testing
