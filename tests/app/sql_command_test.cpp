// The `sql` command, run as a separate process on a small practice database.
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>
#include "support/shell.h"
#include "test_paths.h"

namespace {

struct CommandResult {
  int status;
  std::string out;
  std::string err;
};

using orv::testing::FileBytes;
using orv::testing::ShellQuote;

class SqlCommand : public ::testing::Test {
 protected:
  void SetUp() override {
    dir_ = std::filesystem::temp_directory_path() / ("orvenda_sql_cmd_" + std::to_string(::getpid()));
    std::filesystem::create_directories(dir_);
    db_ = (dir_ / "practice.db").string();
    std::filesystem::remove(db_);
    sqlite3* db = nullptr;
    ASSERT_EQ(sqlite3_open(db_.c_str(), &db), SQLITE_OK);
    const char* sql = R"sql(
      CREATE TABLE Patient (ID INTEGER PRIMARY KEY, LastName VARCHAR(30), FirstName VARCHAR(30),
        BirthDate DATETIME, Balance MONEY);
      INSERT INTO Patient VALUES (1, 'Tremblay', 'Claire', '1980-03-04 00:00:00', 12.5),
        (2, 'Singh', 'Priya', NULL, -50.25), (3, 'Dubois', 'Marc', '2001-07-08 09:30:00', NULL);
      CREATE TABLE Invoices (ID INTEGER PRIMARY KEY, PatientID INTEGER, [Date] DATETIME, InvoiceTotal MONEY);
      INSERT INTO Invoices VALUES (10, 1, '2026-11-01 00:00:00', 100), (11, 1, '2026-11-02 00:00:00', 0.1),
        (12, 2, '2026-10-01 00:00:00', 75);
      CREATE TABLE PatientNotes (PatientID INTEGER, Note TEXT);
      INSERT INTO PatientNotes VALUES (2, 'call back'), (1, 'premed');
    )sql";
    ASSERT_EQ(sqlite3_exec(db, sql, nullptr, nullptr, nullptr), SQLITE_OK);
    sqlite3_close(db);
  }
  void TearDown() override { std::filesystem::remove_all(dir_); }

  CommandResult Sql(const std::string& options, const std::string& statement, const std::string& stdin_text = "") {
    std::string out = (dir_ / "out").string(), err = (dir_ / "err").string();
    std::string cmd = std::string(ORVENDA_APP) + " sql --db sqlite:" + db_ + " --today 2026-11-20 " + options +
                      " " + ShellQuote(statement) + " >" + out + " 2>" + err;
    if (!stdin_text.empty()) {
      std::string in = (dir_ / "in").string();
      std::ofstream(in) << stdin_text;
      cmd += " <" + in;
    }
    int status = std::system(cmd.c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : -1, FileBytes(out), FileBytes(err)};
  }

  std::filesystem::path dir_;
  std::string db_;
};

TEST_F(SqlCommand, PrintsRows) {
  struct Case {
    const char* name;
    const char* options;
    const char* statement;
    const char* out;
    const char* input = "";  // standard input, for the statement "-"
  } cases[] = {
      {"plain select, values as the layer returns them", "--format tsv",
       "SELECT ID, LastName + ', ' + FirstName AS Name, BirthDate, Balance FROM Patient ORDER BY ID",
       "ID\tName\tBirthDate\tBalance\n"
       "1\tTremblay, Claire\t1980-03-04 00:00:00\t12.5000\n"
       "2\tSingh, Priya\tNULL\t-50.2500\n"
       "3\tDubois, Marc\t2001-07-08 09:30:00\tNULL\n"},
      {"money sum without float noise", "",
       "SELECT SUM(InvoiceTotal) AS Total FROM Invoices WHERE PatientID = 1", "Total\n100.1000\n"},
      {"SHAPE with two children", "--format tsv",
       "SHAPE {SELECT ID, LastName FROM Patient ORDER BY ID} AS P APPEND ({SELECT PatientID, ID, InvoiceTotal "
       "FROM Invoices ORDER BY ID} AS Inv RELATE 'ID' TO 'PatientID') AS Inv, ({SELECT PatientID, Note FROM "
       "PatientNotes} AS N RELATE ID TO PatientID) AS N",
       "ID\tLastName\n"
       "1\tTremblay\n\t1\t10\t100.0000\n\t1\t11\t0.1000\n\t1\tpremed\n"
       "2\tSingh\n\t2\t12\t75.0000\n\t2\tcall back\n"
       "3\tDubois\n"},
      {"csv", "--format csv", "SELECT LastName + ', ' + FirstName AS Name FROM Patient WHERE ID = 1",
       "Name\n\"Tremblay, Claire\"\n"},
      {"table", "--format table", "SELECT ID, LastName FROM Patient WHERE ID <= 2 ORDER BY ID",
       "ID | LastName\n---+---------\n1  | Tremblay\n2  | Singh\n"},
      // A statement that opens with a "--" comment is the statement, not an
      // option; after a lone "--" any text is.
      {"a leading comment", "", "-- the first patient\nSELECT LastName FROM Patient WHERE ID = 1",
       "LastName\nTremblay\n"},
      {"after a lone --", "--", "--count\nSELECT COUNT(*) AS N FROM Patient", "N\n3\n"},
      {"from standard input", "", "-", "FirstName\nPriya\n",
       "SELECT FirstName FROM Patient WHERE ID = 2"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CommandResult r = Sql(c.options, c.statement, c.input);
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out, c.out);
  }
}

// The command reads: a statement that changes the practice runs only with
// --write, and without it changes nothing.
TEST_F(SqlCommand, WritesOnlyWithWrite) {
  const char* update = "UPDATE Patient SET Balance = 0 WHERE Balance < 20";
  CommandResult refused = Sql("", update);
  EXPECT_EQ(refused.status, 2) << refused.out;
  EXPECT_NE(refused.err.find("--write"), std::string::npos) << refused.err;
  EXPECT_EQ(Sql("", "SELECT COUNT(*) AS N FROM Patient WHERE Balance = 0").out, "N\n0\n");

  CommandResult r = Sql("--write", update);
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_EQ(r.out, "2\n");
  EXPECT_EQ(Sql("", "SELECT COUNT(*) AS N FROM Patient WHERE Balance = 0").out, "N\n2\n");
  // A mistyped option is refused, not run as a statement.
  EXPECT_EQ(Sql("--formt tsv", "SELECT 1").status, 2);
}

TEST_F(SqlCommand, TranslatePrintsTheEngineTextWithoutRunning) {
  CommandResult r = Sql("--translate", "UPDATE Patient SET LastName = LastName + 'x' WHERE ID = 1");
  EXPECT_EQ(r.status, 0) << r.err;
  EXPECT_NE(r.out.find("||"), std::string::npos) << r.out;  // text + text is concatenation
  EXPECT_EQ(r.out.find("LastName + "), std::string::npos) << r.out;
  r = Sql("", "SELECT LastName FROM Patient WHERE ID = 1");
  EXPECT_EQ(r.out, "LastName\nTremblay\n");
  // A SHAPE translates command by command, children one tab deeper.
  r = Sql("--translate",
          "SHAPE {SELECT ID FROM Patient} AS P APPEND ({SELECT PatientID FROM Invoices} AS I RELATE ID TO PatientID) AS I");
  EXPECT_EQ(r.status, 0) << r.err;
  ASSERT_EQ(std::count(r.out.begin(), r.out.end(), '\n'), 2) << r.out;
  EXPECT_EQ(r.out.find("SELECT"), 0u) << r.out;
  EXPECT_NE(r.out.find("\n\tSELECT"), std::string::npos) << r.out;
}

TEST_F(SqlCommand, FaultsGoToStandardErrorWithExitOne) {
  struct Case {
    const char* name;
    const char* statement;
    const char* says;
  } cases[] = {
      {"malformed", "SELECT ID FROM Patient WHERE (ID = 1", "line 1"},
      {"unknown column", "SELECT Nope FROM Patient", "Nope"},
      {"malformed SHAPE", "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT 1} RELATE ID)", "TO is expected"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    CommandResult r = Sql("", c.statement);
    EXPECT_EQ(r.status, 1);
    EXPECT_EQ(r.out, "");
    EXPECT_NE(r.err.find(c.says), std::string::npos) << r.err;
    EXPECT_NE(r.err.find(c.statement), std::string::npos) << r.err;
  }
}

}  // namespace
