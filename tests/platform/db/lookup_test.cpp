// ReturnValue, the two ReturnList, ResetRecordset and ReturnName.
#include "platform/db/lookup.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "common/errors.h"

#include "temp_db.h"

namespace orv::db {
namespace {

using Lookup = testing::PracticeTest;

TEST_F(Lookup, ReturnValue) {
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
      {"quote in a text key breaks the statement, trapped", "Patient", "LastName", Variant("O'Brien"), "ID", ""},
  };
  for (const auto& c : cases) {
    Variant v = ReturnValue(conn_, c.table, c.key_field, c.key, c.field);
    EXPECT_EQ(v, Variant(c.expected)) << c.name;
  }
}

// The host's list of columns, plain and keyed by its place, from wherever
// the recordset was left.
TEST_F(Lookup, ReturnListOfColumns) {
  Recordset rs;
  rs.Open("SELECT ID, FirstName, [Policy#] FROM Patient WHERE ID <= 3 ORDER BY ID", conn_,
          adOpenStatic, adLockReadOnly);
  struct Case {
    const char* name;
    std::vector<std::string> columns;
    const char* mark;
    const char* list;
  } cases[] = {
      {"columns joined, rows ended", {"ID", "FirstName"}, "", "1|Claire;2|Luc;3|Priya;"},
      {"Null as empty, a # in the data kept", {"Policy#"}, "", "POL-1;;P#3;"},
      {"keyed by the row's count", {"FirstName"}, "|#", "|#1;Claire;|#2;Luc;|#3;Priya;"},
      {"another mark stands as it is", {"ID"}, "*", "*1;*2;*3;"},
      {"no columns: empty rows", {}, "", ";;;"},
  };
  for (const auto& c : cases) {
    rs.MoveLast();  // the walk starts from the first row wherever it was left
    EXPECT_EQ(ReturnList(rs, c.columns, c.mark), c.list) << c.name;
    EXPECT_TRUE(rs.Eof()) << c.name;
  }
  EXPECT_THROW(ReturnList(rs, {"NoSuchColumn"}, ""), ReportError);
  // The first list builder keeps its own form under the same name: Null
  // as empty, a # in the data kept, nothing for no rows.
  EXPECT_EQ(ReturnList(rs, "ID", "Policy#"), "|#1;POL-1||#2;||#3;P#3|");
  EXPECT_TRUE(rs.Eof());

  Recordset empty;
  empty.Open("SELECT ID FROM Patient WHERE ID < 0", conn_, adOpenStatic, adLockReadOnly);
  EXPECT_EQ(ReturnList(empty, {"ID"}, "|#"), "") << "no rows, not even a mark";
  EXPECT_EQ(ReturnList(empty, "ID", "ID"), "");
}

TEST_F(Lookup, ResetRecordsetAndReturnName) {
  Recordset rs;
  rs.Open("SELECT ID, FirstName AS Name FROM Patient ORDER BY ID", conn_, adOpenStatic,
          adLockReadOnly);
  rs.MoveLast();
  rs.MoveNext();
  ASSERT_TRUE(rs.Eof());
  ResetRecordset(rs);
  EXPECT_EQ(rs.AbsolutePosition(), 1);

  struct Case {
    const char* name;
    Variant id;
    const char* found;
  } cases[] = {
      {"a number", Variant(3), "Priya"},
      {"a number in text", Variant("2"), "Luc"},
      {"no such row", Variant(99), ""},
      {"Null", Variant::Null(), ""},
      {"blank", Variant(" "), ""},
  };
  rs.MoveLast();  // every search starts from the first row, not from here
  for (const auto& c : cases) EXPECT_EQ(ReturnName(rs, c.id), c.found) << c.name;

  Recordset empty;
  empty.Open("SELECT ID, FirstName AS Name FROM Patient WHERE ID < 0", conn_, adOpenStatic,
             adLockReadOnly);
  ResetRecordset(empty);
  EXPECT_TRUE(empty.Eof() && empty.Bof()) << "an empty recordset is left as it is";
  EXPECT_EQ(ReturnName(empty, Variant(1)), "");
}

}  // namespace
}  // namespace orv::db
