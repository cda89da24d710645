// Reading a practice file's tables and views into the schema the binder
// types statements with: columns in declared order with their declared
// types, keys in key order, odd names, and a view that no longer reads.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <unistd.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/errors.h"
#include "platform/sql/sqlite_functions.h"
#include "platform/sql/translate.h"

namespace orv::sql {
namespace {

class SchemaLoad : public ::testing::Test {
 protected:
  void SetUp() override { Reopen(); }
  void TearDown() override {
    sqlite3_close(db_);
    std::filesystem::remove(path_);
  }
  // A new connection reads the schema afresh from the file.
  void Reopen() {
    sqlite3_close(db_);
    ASSERT_EQ(sqlite3_open(path_.c_str(), &db_), SQLITE_OK);
  }
  void Exec(const char* ddl) {
    char* err = nullptr;
    ASSERT_EQ(sqlite3_exec(db_, ddl, nullptr, nullptr, &err), SQLITE_OK) << (err ? err : "");
  }
  static std::vector<std::string> Names(const std::vector<ColumnType>* columns) {
    std::vector<std::string> out;
    if (columns)
      for (const auto& c : *columns) out.push_back(c.name + " " + c.declared);
    return out;
  }
  const std::string path_ = (std::filesystem::temp_directory_path() /
                             ("schema_load_" + std::to_string(::getpid()) + ".db"))
                                .string();
  sqlite3* db_ = nullptr;
};

TEST_F(SchemaLoad, TablesAndViewsWithTheirColumnsAndKeys) {
  Exec(
      "CREATE TABLE Fee (Code VARCHAR(10), GuideID INTEGER, Amount MONEY, Note TEXT,"
      " PRIMARY KEY (GuideID, Code));"
      "CREATE TABLE \"Odd \"\"Name\" (ID INTEGER PRIMARY KEY, [When] DATETIME);"
      "CREATE TABLE Loose (A, B VARCHAR(3));"
      "CREATE INDEX FeeAmount ON Fee (Amount);"
      "CREATE VIEW FeeView AS SELECT Code, Amount * 2 AS Twice FROM Fee;");
  Schema s = LoadSqliteSchema(db_);

  EXPECT_EQ(Names(s.FindTable("fee")), (std::vector<std::string>{"Code VARCHAR(10)", "GuideID INTEGER",
                                                                 "Amount MONEY", "Note TEXT"}));
  EXPECT_EQ(s.PrimaryKey("Fee"), (std::vector<std::string>{"GuideID", "Code"}));
  EXPECT_EQ(s.FindTable("Fee")->at(0).length, 10);
  EXPECT_EQ(s.FindTable("Fee")->at(2).kind, ValueKind::Money);

  EXPECT_EQ(s.TableName("odd \"name"), "Odd \"Name");
  EXPECT_EQ(Names(s.FindTable("Odd \"Name")),
            (std::vector<std::string>{"ID INTEGER", "When DATETIME"}));
  EXPECT_EQ(s.PrimaryKey("Odd \"Name"), (std::vector<std::string>{"ID"}));
  EXPECT_EQ(s.FindTable("Odd \"Name")->at(1).kind, ValueKind::Date);

  EXPECT_EQ(Names(s.FindTable("Loose")), (std::vector<std::string>{"A ", "B VARCHAR(3)"}));
  EXPECT_TRUE(s.PrimaryKey("Loose").empty());

  EXPECT_EQ(Names(s.FindTable("FeeView")), (std::vector<std::string>{"Code VARCHAR(10)", "Twice "}));
  EXPECT_TRUE(s.PrimaryKey("FeeView").empty());

  // Indexes and SQLite's own tables are no tables of the practice.
  EXPECT_EQ(s.FindTable("FeeAmount"), nullptr);
  EXPECT_EQ(s.FindTable("sqlite_master"), nullptr);
}

TEST_F(SchemaLoad, TablesAreReadWhenFirstNamed) {
  Schema s = LoadSqliteSchema(db_);
  EXPECT_EQ(s.FindTable("Fee"), nullptr);
  EXPECT_TRUE(s.PrimaryKey("Fee").empty());
  EXPECT_EQ(s.TableName("fee"), "fee");
  // A table made after the schema was taken (the host's own tables, a
  // practice upgraded while the program runs) is found once it exists.
  Exec("CREATE TABLE Fee (Code VARCHAR(10) PRIMARY KEY, Amount MONEY)");
  EXPECT_EQ(Names(s.FindTable("FEE")), (std::vector<std::string>{"Code VARCHAR(10)", "Amount MONEY"}));
  EXPECT_EQ(s.TableName("fee"), "Fee");
  // A table once read keeps the columns it was read with.
  Exec("ALTER TABLE Fee ADD COLUMN Note TEXT");
  EXPECT_EQ(Names(s.FindTable("Fee")).size(), 2u);
  EXPECT_EQ(Names(LoadSqliteSchema(db_).FindTable("Fee")).size(), 3u);
}

TEST_F(SchemaLoad, AViewThatNoLongerReadsFailsWhereItIsNamed) {
  Exec(
      "CREATE TABLE A (X INTEGER PRIMARY KEY, Y TEXT);"
      "CREATE VIEW Good AS SELECT X FROM A;"
      "CREATE VIEW Stale AS SELECT Y FROM A;");
  // A view left reading a column that is gone, as an older tool's edit of
  // the file can leave it.
  Exec(
      "PRAGMA writable_schema = 1;"
      "UPDATE sqlite_master SET sql = 'CREATE VIEW Stale AS SELECT Z FROM A' WHERE name = 'Stale';"
      "PRAGMA writable_schema = 0;");
  Reopen();
  Schema s = LoadSqliteSchema(db_);
  EXPECT_EQ(Names(s.FindTable("Good")), (std::vector<std::string>{"X INTEGER"}));
  try {
    s.FindTable("Stale");
    FAIL() << "a view that does not read was found";
  } catch (const ReportError& e) {
    EXPECT_NE(e.description().find("the columns of Stale: no such column: Z"), std::string::npos)
        << e.description();
  }
}

}  // namespace
}  // namespace orv::sql
