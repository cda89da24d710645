// Shared by the T-SQL layer's tests: the practice fixture in memory and on
// the test server, and running a translated statement into rows printed the
// way the conformance cases print them (money with four decimals, NULL,
// dates as stored).
#pragma once

#include <sqlite3.h>

#include <string>
#include <utility>
#include <vector>

#include "platform/sql/translate.h"
#include "support/shell.h"

namespace orv::sql::testing {

// An in-memory database built from the project's fixture
// (tests/platform/sql/fixture.sql), with the layer's functions registered
// and the clock fixed to 2026-11-20 10:00:00.
class FixtureDb {
 public:
  FixtureDb();
  ~FixtureDb();
  FixtureDb(const FixtureDb&) = delete;
  FixtureDb& operator=(const FixtureDb&) = delete;

  sqlite3* db() const { return db_; }
  const Schema& schema() const { return schema_; }

  // Result of one statement: the header (column names) and the rows, each
  // value printed by its column's ValueKind.
  struct Result {
    std::vector<std::string> header;
    std::vector<std::vector<std::string>> rows;
  };
  // Translates `tsql` and runs it. Throws SqlError from the translation;
  // an engine error fails the calling test with the printed SQL, or goes
  // to `error` when one is given.
  Result Run(const std::string& tsql, std::string* error = nullptr) const;
  // Runs a statement already translated for SQLite.
  Result RunTranslated(const Translation& t, std::string* error = nullptr) const;

 private:
  sqlite3* db_ = nullptr;
  Schema schema_;
};

using Rows = std::vector<std::vector<std::string>>;

// A statement and the rows SQL Server returns for it on the fixture: each
// row's values joined by tabs, in order or (not `ordered`) as a multiset.
// A value written `~N` matches any number within a relative 1e-9 of N
// (absolute below 1): decimal and float results.
struct RowCase {
  const char* name;
  const char* tsql;
  std::vector<std::string> rows;
  bool ordered = true;
};

// The project's fixture copied to a database of its own on the test server
// (ORVENDA_TEST_PG; text as bpchar under orvenda.orv_ci, money
// numeric(19,4), dates timestamp, as the engine's schema has them), with the
// support statements installed and the clock at 2026-11-20 10:00:00. Made
// on first use, dropped when the program ends; nullptr without a server.
class ServerFixture {
 public:
  static const ServerFixture* Get();
  // Translates `tsql` for PostgreSQL and runs it; values printed as
  // FormatValue prints the SQLite path's. An engine error fails the test,
  // or goes to `error` when one is given.
  Rows Run(const std::string& tsql, std::string* error = nullptr) const;
  // Runs engine SQL with one bigint parameter; the first value, or the
  // server's message.
  std::string ScalarWithBigint(const std::string& engine_sql, const std::string& value) const;
  ~ServerFixture();
  ServerFixture(const ServerFixture&) = delete;
  ServerFixture& operator=(const ServerFixture&) = delete;

 private:
  ServerFixture();
  struct State;
  State* state_;
};

// Runs each case on the project's fixture, and on its server copy when
// there is one, and compares its rows on each engine.
void ExpectRows(const std::vector<RowCase>& cases);

}  // namespace orv::sql::testing
