// ReturnValue and ReturnList.
#include "platform/db/lookup.h"

#include <gtest/gtest.h>

#include "temp_db.h"

namespace orv::db {
namespace {

TEST(Lookup, ReturnValue) {
  testing::TempDb db(testing::kPracticeSql);
  Connection conn(db.url());
  struct Case {
    const char* name;
    const char* table;
    const char* key_field;
    Variant key;
    const char* field;
    const char* expected;
  } cases[] = {
      {"number key", "Patient", "ID", Variant(3), "FirstName", "Priya"},
      {"text key in quotes", "Patient", "LastName", Variant("Singh"), "FirstName", "Priya"},
      {"number in text is quoted and still matches", "Patient", "ID", Variant("2"), "FirstName", "Luc"},
      {"bracketed field with #", "Patient", "ID", Variant(3), "[Policy#]", "P#3"},
      {"money as text", "Patient", "ID", Variant(3), "Balance", "-50.25"},
      {"Null column", "Patient", "ID", Variant(2), "[Policy#]", ""},
      {"no row", "Patient", "ID", Variant(99), "FirstName", ""},
      {"Null key", "Patient", "ID", Variant::Null(), "FirstName", ""},
      {"blank key", "Patient", "ID", Variant("  "), "FirstName", ""},
      {"failure is trapped", "NoSuchTable", "ID", Variant(1), "FirstName", ""},
      {"quote in a text key breaks the statement, trapped", "Patient", "LastName", Variant("O'Brien"), "ID", ""},
  };
  for (const auto& c : cases) {
    Variant v = ReturnValue(conn, c.table, c.key_field, c.key, c.field);
    EXPECT_EQ(v, Variant(c.expected)) << c.name;
  }
}

TEST(Lookup, ReturnList) {
  testing::TempDb db(testing::kPracticeSql);
  Connection conn(db.url());
  Recordset rs;
  rs.Open("SELECT ID, [Policy#] FROM Patient ORDER BY ID", conn, adOpenStatic, adLockReadOnly);
  rs.MoveLast();
  EXPECT_EQ(ReturnList(rs, "ID", "Policy#"), "|#1;POL-1||#2;||#3;P#3||#4;|");
  EXPECT_TRUE(rs.Eof());
  Recordset empty;
  empty.Open("SELECT ID, LastName FROM Patient WHERE ID < 0", conn, adOpenStatic, adLockReadOnly);
  EXPECT_EQ(ReturnList(empty, "ID", "LastName"), "");
}

}  // namespace
}  // namespace orv::db
