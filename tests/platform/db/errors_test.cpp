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

using orv::testing::ErrorOf;
using testing::TempDb;

TEST(DatabaseErrors, BadStatementsNameTheStatementAndPlace) {
  TempDb db(testing::kPracticeSql);
  Connection conn(db.url());
  struct Case {
    const char* name;
    const char* statement;
    std::vector<const char*> says;
  } cases[] = {
      {"unknown column", "SELECT ID, Nope FROM Patient", {"Nope", "SELECT ID, Nope FROM Patient", "line 1"}},
      {"missing table", "SELECT * FROM NoSuchTable WHERE ID = 1", {"NoSuchTable", "SELECT * FROM NoSuchTable WHERE ID = 1"}},
      {"malformed", "SELECT ID FROM Patient WHERE (ID = 1", {"SELECT ID FROM Patient WHERE (ID = 1", "line 1"}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Recordset rs;
    std::string d = ErrorOf([&] { rs.Open(c.statement, conn, adOpenStatic, adLockReadOnly); });
    for (const char* s : c.says) EXPECT_NE(d.find(s), std::string::npos) << d;
    // The failure leaves the connection usable.
    Recordset ok;
    ok.Open("SELECT COUNT(*) AS N FROM Patient", conn);
    EXPECT_EQ(ok["N"].Value(), Variant(4));
  }
}

TEST(DatabaseErrors, BadFiles) {
  TempDb db(testing::kPracticeSql);
  std::string corrupt = db.path() + ".corrupt";
  {
    std::ofstream f(corrupt, std::ios::binary);
    f << std::string(4096, 'x');
  }
  struct Case {
    const char* name;
    std::string url;
    const char* says;
  } cases[] = {
      {"missing file", "sqlite:" + db.path() + ".missing", "cannot open the database"},
      {"no database", "sqlite:" + corrupt, "file is not a database"},
      {"unknown engine", "postgresql://localhost/practice", "PostgreSQL"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string d = ErrorOf([&] { Connection conn(c.url); });
    EXPECT_NE(d.find(c.says), std::string::npos) << d;
  }
  std::filesystem::remove(corrupt);
}

TEST(DatabaseErrors, LockedFile) {
  TempDb db(testing::kPracticeSql);
  Connection conn(db.url());
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(db.path().c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  const std::string statement = "UPDATE Patient SET LastName = 'X' WHERE ID = 1";
  std::string d = ErrorOf([&] { conn.Execute(statement); });
  EXPECT_NE(d.find("locked"), std::string::npos) << d;
  EXPECT_NE(d.find(statement), std::string::npos) << d;
  sqlite3_exec(other, "ROLLBACK", nullptr, nullptr, nullptr);
  sqlite3_close(other);
  EXPECT_EQ(conn.Execute(statement), 1);
}

TEST(DatabaseErrors, MisuseOfObjects) {
  TempDb db(testing::kPracticeSql);
  Connection conn(db.url());
  Connection closed;
  Recordset rs;
  struct Case {
    const char* name;
    std::function<void()> run;
    const char* says;
  } cases[] = {
      {"open on a closed connection", [&] { rs.Open("SELECT 1 AS x", closed); }, "not open"},
      {"read a closed recordset", [&] { rs.Eof(); }, "closed"},
      {"Execute a SHAPE", [&] { conn.Execute("SHAPE {SELECT ID FROM Patient}"); }, "recordset"},
      {"open a statement with no rows", [&] { rs.Open("UPDATE Patient SET Rate = 1 WHERE ID = 0", conn); }, "Execute"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    std::string d = ErrorOf(c.run);
    EXPECT_NE(d.find(c.says), std::string::npos) << d;
  }
}

}  // namespace
}  // namespace orv::db
