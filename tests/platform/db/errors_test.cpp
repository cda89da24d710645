// Faults of statements and database files: each gives a ReportError whose
// description says what went wrong and names the statement or the file.
#include <gtest/gtest.h>

#include <sqlite3.h>

#include <filesystem>
#include <fstream>
#include <functional>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "temp_db.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

using orv::testing::ThrowsSaying;
using DatabaseErrors = testing::PracticeTest;

TEST_F(DatabaseErrors, BadStatementsNameTheStatementAndPlace) {
  struct Case {
    const char* name;
    const char* statement;
    std::initializer_list<std::string_view> says;
  } cases[] = {
      {"unknown column", "SELECT ID, Nope FROM Patient", {"Nope", "SELECT ID, Nope FROM Patient", "line 1"}},
      {"malformed", "SELECT ID FROM Patient WHERE (ID = 1", {"SELECT ID FROM Patient WHERE (ID = 1", "line 1"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Recordset rs;
    EXPECT_TRUE(ThrowsSaying([&] { rs.Open(c.statement, conn_, adOpenStatic, adLockReadOnly); }, c.says));
    // The failure leaves the connection usable.
    Recordset ok;
    ok.Open("SELECT COUNT(*) AS N FROM Patient", conn_);
    EXPECT_EQ(ok["N"].Value(), Variant(4));
  }
}

TEST_F(DatabaseErrors, BadFiles) {
  std::string corrupt = db_.path() + ".corrupt";
  {
    std::ofstream f(corrupt, std::ios::binary);
    f << std::string(4096, 'x');
  }
  struct Case {
    const char* name;
    std::string url;
    const char* says;
  } cases[] = {
      {"missing file", "sqlite:" + db_.path() + ".missing", "cannot open the database"},
      {"no database", "sqlite:" + corrupt, "file is not a database"},
      {"unknown engine", "postgresql://localhost/practice", "PostgreSQL"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(ThrowsSaying([&] { Connection conn(c.url); }, {c.says}));
  }
  std::filesystem::remove(corrupt);
}

TEST_F(DatabaseErrors, LockedFile) {
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(db_.path().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  const std::string statement = "UPDATE Patient SET LastName = 'X' WHERE ID = 1";
  EXPECT_TRUE(ThrowsSaying([&] { conn_.Execute(statement); }, {"locked", statement}));
  sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(other);
  EXPECT_EQ(conn_.Execute(statement), 1);
}

TEST_F(DatabaseErrors, MisuseOfObjects) {
  Connection closed;
  Recordset rs;
  struct Case {
    const char* name;
    std::function<void()> run;
    const char* says;
  } cases[] = {
      {"open on a closed connection", [&] { rs.Open("SELECT 1 AS x", closed); }, "not open"},
      {"Execute a SHAPE", [&] { conn_.Execute("SHAPE {SELECT ID FROM Patient}"); }, "recordset"},
      {"open a statement with no rows", [&] { rs.Open("UPDATE Patient SET Rate = 1 WHERE ID = 0", conn_); }, "Execute"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    EXPECT_TRUE(ThrowsSaying(c.run, {c.says}));
  }
}

}  // namespace
}  // namespace orv::db
