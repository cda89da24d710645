// Copying a practice database between engines, here file to file: declared
// types, keys, indexes and every value come through unchanged, and a failed
// or refused copy leaves the target as it was.
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <filesystem>

#include "platform/db/copy_database.h"
#include "platform/db/db_error.h"
#include "temp_db.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

using testing::kCopyPractice;
using testing::RowDifferences;
using testing::TempDb;
using testing::TempFilePath;


std::string SchemaText(const std::string& path) {
  sqlite3* db = nullptr;
  sqlite3_open(path.c_str(), &db);
  sqlite3_stmt* st = nullptr;
  std::string out;
  sqlite3_prepare_v2(db, "SELECT sql FROM sqlite_master WHERE sql IS NOT NULL ORDER BY name", -1, &st, nullptr);
  while (sqlite3_step(st) == SQLITE_ROW) out += std::string(reinterpret_cast<const char*>(sqlite3_column_text(st, 0))) + "\n";
  sqlite3_finalize(st);
  sqlite3_close(db);
  return out;
}

TEST(CopyDatabase, FileToFileKeepsTypesKeysIndexesAndValues) {
  TempDb source(kCopyPractice);
  std::string target = TempFilePath("copy__target.db");
  std::filesystem::remove(target);
  std::vector<int> seen;
  CopyOptions options;
  options.progress = [&](int percent, const std::string&) { seen.push_back(percent); };
  CopySummary s = CopyDatabase(source.url(), "sqlite:" + target, options);
  EXPECT_EQ(s.tables, 2);
  EXPECT_EQ(s.rows, 6);
  EXPECT_EQ(RowDifferences(source.path(), target, "Invoices"), 0);
  EXPECT_EQ(RowDifferences(source.path(), target, "Splits"), 0);
  ASSERT_FALSE(seen.empty());
  EXPECT_EQ(seen.back(), 100);
  std::string schema = SchemaText(target);
  EXPECT_NE(schema.find("\"InvoiceTotal\" MONEY"), std::string::npos) << schema;
  EXPECT_NE(schema.find("\"ID\" INTEGER PRIMARY KEY"), std::string::npos) << schema;
  EXPECT_NE(schema.find("PRIMARY KEY (\"EmployeeID\", \"Code\")"), std::string::npos) << schema;
  EXPECT_NE(schema.find("CREATE UNIQUE INDEX \"IX_Invoices_Code_Date\" ON \"Invoices\" (\"Code\", \"Date\")"),
            std::string::npos)
      << schema;

  // A target that holds tables is refused and left alone; --replace
  // overwrites it.
  TempDb other("CREATE TABLE \"Keep\" (\"ID\" INTEGER); INSERT INTO \"Keep\" VALUES (1);");
  ASSERT_TRUE(orv::testing::ThrowsSaying<DatabaseError>([&] { CopyDatabase(source.url(), other.url()); },
                                                        {"already holds 1 tables (Keep"}));
  EXPECT_NE(SchemaText(other.path()).find("Keep"), std::string::npos);
  options.replace = true;
  CopyDatabase(source.url(), other.url(), options);
  EXPECT_EQ(SchemaText(other.path()).find("Keep"), std::string::npos);
  EXPECT_EQ(RowDifferences(source.path(), other.path(), "Invoices"), 0);
  std::filesystem::remove(target);
}

TEST(CopyDatabase, RefusedCopiesLeaveNothingBehind) {
  TempDb source(kCopyPractice);
  std::string target = TempFilePath("copy__refused.db");
  std::filesystem::remove(target);
  // A source that does not exist makes no target.
  EXPECT_THROW(CopyDatabase("sqlite:/no/such/practice.db", "sqlite:" + target), DatabaseError);
  EXPECT_FALSE(std::filesystem::exists(target));
  // A target in a folder that does not exist.
  EXPECT_THROW(CopyDatabase(source.url(), "sqlite:/no/such/folder/copy.db"), DatabaseError);
}

}  // namespace
}  // namespace orv::db
