#include "sql_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdio>

#include "common/datetime.h"
#include "platform/sql/sqlite_functions.h"
#include "test_paths.h"

#if ORVENDA_HAVE_LIBPQ
#include <libpq-fe.h>

#include <memory>

#include "platform/sql/postgres_support.h"
#include "support/postgres.h"
#endif

namespace orv::sql::testing {

namespace {

// Money to four decimals, as both engines' results are printed.
std::string MoneyText(double value) {
  char buf[64];
  const double v = std::round(value * 10000.0) / 10000.0;
  std::snprintf(buf, sizeof buf, "%.4f", v == 0 ? 0.0 : v);  // no "-0.0000"
  return buf;
}

// One value printed by its kind: money "%.4f", NULL as "NULL", integers as
// plain decimals, everything else as the engine's text.
std::string FormatValue(sqlite3_stmt* stmt, int column, ValueKind kind) {
  int type = sqlite3_column_type(stmt, column);
  if (type == SQLITE_NULL) return "NULL";
  char buf[64];
  switch (kind) {
    case ValueKind::Money: return MoneyText(sqlite3_column_double(stmt, column));
    case ValueKind::Integer:
    case ValueKind::Boolean:
      if (type == SQLITE_FLOAT) {
        double v = sqlite3_column_double(stmt, column);
        if (v != std::floor(v)) {
          std::snprintf(buf, sizeof buf, "%.15g", v);
          return buf;
        }
      }
      return std::to_string(sqlite3_column_int64(stmt, column));
    default:
      break;
  }
  if (type == SQLITE_FLOAT) {
    std::snprintf(buf, sizeof buf, "%.15g", sqlite3_column_double(stmt, column));
    return buf;
  }
  const unsigned char* text = sqlite3_column_text(stmt, column);
  return text ? std::string(reinterpret_cast<const char*>(text), static_cast<size_t>(sqlite3_column_bytes(stmt, column)))
              : "NULL";
}

}  // namespace

FixtureDb::FixtureDb() {
  const std::string fixture_sql = std::string(ORVENDA_SOURCE_DIR) + "/tests/platform/sql/fixture.sql";
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  sqlite3_open(":memory:", &db_);
  RegisterSqliteFunctions(db_);
  std::string ddl = orv::testing::FileBytes(fixture_sql);
  char* err = nullptr;
  if (ddl.empty() || sqlite3_exec(db_, ddl.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
    ADD_FAILURE() << "cannot build the fixture " << fixture_sql << ": " << (err ? err : "not found");
    sqlite3_free(err);
  }
  schema_ = LoadSqliteSchema(db_);
}

FixtureDb::~FixtureDb() {
  schema_ = Schema();  // its reader's statement goes before the connection
  sqlite3_close(db_);
  Clock::UseSystem();
}

FixtureDb::Result FixtureDb::Run(const std::string& tsql, std::string* error) const {
  return RunTranslated(Translate(tsql, schema_, Dialect::SQLite), error);
}

FixtureDb::Result FixtureDb::RunTranslated(const Translation& t, std::string* error) const {
  Result r;
  for (const auto& c : t.columns) r.header.push_back(c.name);
  auto failed = [&](const char* what) {
    if (error)
      *error = sqlite3_errmsg(db_);
    else
      ADD_FAILURE() << what << sqlite3_errmsg(db_) << "\n  " << t.sql;
  };
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, t.sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    failed("engine refused: ");
    return r;
  }
  int rc;
  while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    std::vector<std::string> row;
    int n = sqlite3_column_count(stmt);
    for (int i = 0; i < n; ++i) {
      ValueKind kind = i < static_cast<int>(t.columns.size()) ? t.columns[i].kind : ValueKind::Unknown;
      row.push_back(FormatValue(stmt, i, kind));
    }
    r.rows.push_back(std::move(row));
  }
  if (rc != SQLITE_DONE) failed("engine failed: ");
  sqlite3_finalize(stmt);
  return r;
}

namespace {

bool CellMatches(const std::string& want, const std::string& got) {
  constexpr double kTolerance = 1e-9;
  if (want.size() > 1 && want[0] == '~') {
    char* end = nullptr;
    double w = std::strtod(want.c_str() + 1, nullptr);
    double g = std::strtod(got.c_str(), &end);
    return !got.empty() && end && *end == '\0' && std::fabs(w - g) <= kTolerance * std::max(1.0, std::fabs(w));
  }
  return want == got;
}

bool RowMatches(const std::string& want, const std::vector<std::string>& got) {
  std::vector<std::string> cells;
  size_t start = 0;
  for (;;) {
    size_t tab = want.find('\t', start);
    cells.push_back(want.substr(start, tab - start));
    if (tab == std::string::npos) break;
    start = tab + 1;
  }
  if (cells.size() != got.size()) return false;
  for (size_t i = 0; i < cells.size(); ++i) {
    if (!CellMatches(cells[i], got[i])) return false;
  }
  return true;
}

// The rows as text for a failure message: a line per row, values parted by
// tabs.
std::string RowsText(const Rows& rows) {
  std::string text;
  for (const auto& row : rows) {
    text += "\n ";
    for (size_t i = 0; i < row.size(); ++i) text += (i ? "\t" : "") + row[i];
  }
  return text;
}

// Whether `got` holds the rows `want` lists, as RowCase reads them (each
// listed row takes one row of `got`).
bool SameRows(const std::vector<std::string>& want, const Rows& got, bool ordered) {
  if (want.size() != got.size()) return false;
  std::vector<bool> used(got.size(), false);
  for (size_t i = 0; i < want.size(); ++i) {
    bool found = false;
    for (size_t j = ordered ? i : 0; j < (ordered ? i + 1 : got.size()) && !found; ++j) {
      if (!used[j] && RowMatches(want[i], got[j])) used[j] = found = true;
    }
    if (!found) return false;
  }
  return true;
}

}  // namespace

void ExpectRows(const std::vector<RowCase>& cases) {
  FixtureDb db;
  for (const RowCase& c : cases) {
    SCOPED_TRACE(std::string(c.name) + ": " + c.tsql);
    std::string want;
    for (const std::string& row : c.rows) want += "\n " + row;
    try {
      const Rows got = db.Run(c.tsql).rows;
      EXPECT_TRUE(SameRows(c.rows, got, c.ordered)) << "want:" << want << "\nsqlite:" << RowsText(got);
      if (const ServerFixture* server = ServerFixture::Get()) {
        const Rows on_server = server->Run(c.tsql);
        EXPECT_TRUE(SameRows(c.rows, on_server, c.ordered))
            << "want:" << want << "\npostgres:" << RowsText(on_server) << "\n"
            << Translate(c.tsql, db.schema(), Dialect::PostgreSQL).sql;
      }
    } catch (const SqlError& e) {
      ADD_FAILURE() << e.description();
    }
  }
}

#if ORVENDA_HAVE_LIBPQ

namespace {

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
  for (char ch : name) out += ch == '"' ? std::string("\"\"") : std::string(1, ch);
  return out + "\"";
}

void Exec(PGconn* conn, const std::string& sql) {
  PGresult* r = PQexec(conn, sql.c_str());
  if (PQresultStatus(r) != PGRES_COMMAND_OK && PQresultStatus(r) != PGRES_TUPLES_OK)
    ADD_FAILURE() << PQresultErrorMessage(r) << "  " << sql.substr(0, 200);
  PQclear(r);
}

}  // namespace

struct ServerFixture::State {
  FixtureDb sqlite;
  orv::testing::FreshPgDatabase database;
  PGconn* conn = nullptr;
};

const ServerFixture* ServerFixture::Get() {
  if (orv::testing::TestServerUrl().empty()) return nullptr;
  static const std::unique_ptr<ServerFixture> fixture(new ServerFixture());
  return fixture.get();
}

ServerFixture::ServerFixture() : state_(new State) {
  PGconn* conn = state_->conn = PQconnectdb(state_->database.url().c_str());
  if (PQstatus(conn) != CONNECTION_OK) ADD_FAILURE() << "cannot connect: " << PQerrorMessage(conn);
  Exec(conn, "SET client_min_messages = warning");
  Exec(conn, "BEGIN");
  for (const std::string& s : PostgresSupportStatements()) Exec(conn, s);
  Exec(conn, "COMMIT");
  Exec(conn, "SET orvenda.now = '2026-11-20 10:00:00'");
  // Every table of the SQLite fixture, row by row, its values as SQLite's
  // text (blobs in the server's hex form).
  sqlite3_stmt* list = nullptr;
  sqlite3_prepare_v2(state_->sqlite.db(), "SELECT name FROM sqlite_master WHERE type = 'table'", -1, &list, nullptr);
  while (sqlite3_step(list) == SQLITE_ROW) {
    std::string table = reinterpret_cast<const char*>(sqlite3_column_text(list, 0));
    const std::vector<ColumnType>& columns = *state_->sqlite.schema().FindTable(table);
    std::string ddl = "CREATE TABLE " + Ident(table) + " (";
    std::string insert = "INSERT INTO " + Ident(table) + " VALUES (";
    for (size_t i = 0; i < columns.size(); ++i) {
      ddl += (i ? ", " : "") + Ident(columns[i].name) + " " + PgType(columns[i].kind);
      insert += (i ? ", $" : "$") + std::to_string(i + 1);
    }
    Exec(conn, ddl + ")");
    sqlite3_stmt* rows = nullptr;
    sqlite3_prepare_v2(state_->sqlite.db(), ("SELECT * FROM " + Ident(table)).c_str(), -1, &rows, nullptr);
    while (sqlite3_step(rows) == SQLITE_ROW) {
      std::vector<std::string> values(columns.size());
      std::vector<const char*> params(columns.size());
      for (int i = 0; i < static_cast<int>(columns.size()); ++i) {
        const int type = sqlite3_column_type(rows, i);
        if (type == SQLITE_BLOB) {
          static const char* kHex = "0123456789abcdef";
          auto* b = static_cast<const unsigned char*>(sqlite3_column_blob(rows, i));
          values[i] = "\\x";
          for (int k = 0; k < sqlite3_column_bytes(rows, i); ++k) values[i] += {kHex[b[k] >> 4], kHex[b[k] & 15]};
        } else if (type != SQLITE_NULL) {
          values[i] = FormatValue(rows, i, ValueKind::Unknown);
        }
        params[i] = type == SQLITE_NULL ? nullptr : values[i].c_str();
      }
      PGresult* r = PQexecParams(conn, (insert + ")").c_str(), static_cast<int>(params.size()), nullptr,
                                 params.data(), nullptr, nullptr, 0);
      if (PQresultStatus(r) != PGRES_COMMAND_OK) ADD_FAILURE() << table << ": " << PQresultErrorMessage(r);
      PQclear(r);
    }
    sqlite3_finalize(rows);
  }
  sqlite3_finalize(list);
}

ServerFixture::~ServerFixture() {
  PQfinish(state_->conn);
  delete state_;
}

Rows ServerFixture::Run(const std::string& tsql, std::string* error) const {
  Translation t = Translate(tsql, state_->sqlite.schema(), Dialect::PostgreSQL);
  PGresult* r = PQexec(state_->conn, t.sql.c_str());
  Rows rows;
  if (PQresultStatus(r) != PGRES_TUPLES_OK && PQresultStatus(r) != PGRES_COMMAND_OK) {
    if (error)
      *error = PQresultErrorMessage(r);
    else
      ADD_FAILURE() << "engine failed: " << PQresultErrorMessage(r) << "  " << t.sql;
    PQclear(r);
    return rows;
  }
  for (int i = 0; i < PQntuples(r); ++i) {
    std::vector<std::string> row;
    for (int j = 0; j < PQnfields(r); ++j) {
      const ValueKind kind = j < static_cast<int>(t.columns.size()) ? t.columns[j].kind : ValueKind::Unknown;
      std::string cell = PQgetisnull(r, i, j) ? "NULL" : PQgetvalue(r, i, j);
      // numeric(19,4) prints its scale; money is printed as on SQLite.
      if (kind == ValueKind::Money && cell != "NULL") cell = MoneyText(std::strtod(cell.c_str(), nullptr));
      row.push_back(cell);
    }
    rows.push_back(std::move(row));
  }
  PQclear(r);
  return rows;
}

std::string ServerFixture::ScalarWithBigint(const std::string& engine_sql, const std::string& value) const {
  const Oid int8 = 20;
  const char* params[] = {value.c_str()};
  PGresult* r = PQexecParams(state_->conn, engine_sql.c_str(), 1, &int8, params, nullptr, nullptr, 0);
  std::string out = PQresultStatus(r) == PGRES_TUPLES_OK ? PQgetvalue(r, 0, 0) : PQresultErrorMessage(r);
  PQclear(r);
  return out;
}

#else

const ServerFixture* ServerFixture::Get() { return nullptr; }
Rows ServerFixture::Run(const std::string&, std::string*) const { return {}; }
std::string ServerFixture::ScalarWithBigint(const std::string&, const std::string&) const { return ""; }
ServerFixture::~ServerFixture() = default;

#endif

}  // namespace orv::sql::testing
