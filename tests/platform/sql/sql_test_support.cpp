#include "sql_test_support.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "common/datetime.h"
#include "platform/sql/sqlite_functions.h"
#include "test_paths.h"

namespace orv::sql::testing {

std::string ProjectFixture() { return std::string(ORVENDA_SOURCE_DIR) + "/tests/platform/sql/fixture.sql"; }

std::string SampleCasesDir() {
  std::string dir = std::string(ORVENDA_SHARED_DIR) + "/tsql-cases";
  bool there = std::filesystem::is_directory(dir + "/cases") && std::filesystem::exists(dir + "/fixture.sql");
  return there ? dir : std::string();
}

FixtureDb::FixtureDb(const std::string& fixture_sql) {
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  sqlite3_open(":memory:", &db_);
  RegisterSqliteFunctions(db_);
  std::string ddl = FileBytes(fixture_sql);
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

std::string FormatValue(sqlite3_stmt* stmt, int column, ValueKind kind) {
  int type = sqlite3_column_type(stmt, column);
  if (type == SQLITE_NULL) return "NULL";
  char buf[64];
  switch (kind) {
    case ValueKind::Money: {
      double v = std::round(sqlite3_column_double(stmt, column) * 10000.0) / 10000.0;
      if (v == 0) v = 0;  // no "-0.0000"
      std::snprintf(buf, sizeof buf, "%.4f", v);
      return buf;
    }
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

FixtureDb::Result FixtureDb::Run(const std::string& tsql) const {
  return RunTranslated(Translate(tsql, schema_, Dialect::SQLite));
}

FixtureDb::Result FixtureDb::RunTranslated(const Translation& t) const {
  Result r;
  for (const auto& c : t.columns) r.header.push_back(c.name);
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, t.sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << "engine refused: " << sqlite3_errmsg(db_) << "\n  " << t.sql;
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
  if (rc != SQLITE_DONE) ADD_FAILURE() << "engine failed: " << sqlite3_errmsg(db_) << "\n  " << t.sql;
  sqlite3_finalize(stmt);
  return r;
}

std::string FixtureDb::RunError(const std::string& tsql) const {
  Translation t = Translate(tsql, schema_, Dialect::SQLite);
  sqlite3_stmt* stmt = nullptr;
  std::string message;
  if (sqlite3_prepare_v2(db_, t.sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    message = sqlite3_errmsg(db_);
  } else {
    int rc;
    while ((rc = sqlite3_step(stmt)) == SQLITE_ROW) {
    }
    if (rc != SQLITE_DONE) message = sqlite3_errmsg(db_);
  }
  sqlite3_finalize(stmt);
  return message;
}

std::string FixtureDb::Scalar(const std::string& engine_sql) const {
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, engine_sql.c_str(), -1, &stmt, nullptr) != SQLITE_OK) {
    ADD_FAILURE() << "engine refused: " << sqlite3_errmsg(db_) << "\n  " << engine_sql;
    return "";
  }
  std::string out = "NULL";
  if (sqlite3_step(stmt) == SQLITE_ROW) out = FormatValue(stmt, 0, ValueKind::Unknown);
  sqlite3_finalize(stmt);
  return out;
}

namespace {

bool CellMatches(const std::string& want, const std::string& got, double tolerance) {
  if (want.size() > 1 && want[0] == '~') {
    char* end = nullptr;
    double w = std::strtod(want.c_str() + 1, nullptr);
    double g = std::strtod(got.c_str(), &end);
    return !got.empty() && end && *end == '\0' && std::fabs(w - g) <= tolerance * std::max(1.0, std::fabs(w));
  }
  return want == got;
}

bool RowMatches(const std::string& want, const std::vector<std::string>& got, double tolerance) {
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
    if (!CellMatches(cells[i], got[i], tolerance)) return false;
  }
  return true;
}

}  // namespace

std::string RowsText(const Rows& rows) {
  std::string text;
  for (const auto& row : rows) {
    text += "\n ";
    for (size_t i = 0; i < row.size(); ++i) text += (i ? "\t" : "") + row[i];
  }
  return text;
}

bool SameRows(const std::vector<std::string>& want, const Rows& got, bool ordered, double tolerance) {
  if (want.size() != got.size()) return false;
  std::vector<bool> used(got.size(), false);
  for (size_t i = 0; i < want.size(); ++i) {
    bool found = false;
    for (size_t j = ordered ? i : 0; j < (ordered ? i + 1 : got.size()) && !found; ++j) {
      if (!used[j] && RowMatches(want[i], got[j], tolerance)) used[j] = found = true;
    }
    if (!found) return false;
  }
  return true;
}

void ExpectRows(const FixtureDb& db, const RowCase& c) {
  SCOPED_TRACE(std::string(c.name) + ": " + c.tsql);
  try {
    const Rows got = db.Run(c.tsql).rows;
    std::string want;
    for (const std::string& row : c.rows) want += "\n " + row;
    EXPECT_TRUE(SameRows(c.rows, got, c.ordered)) << "want:" << want << "\ngot:" << RowsText(got);
  } catch (const SqlError& e) {
    ADD_FAILURE() << e.description();
  }
}

}  // namespace orv::sql::testing
