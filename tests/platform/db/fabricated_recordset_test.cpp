// A recordset built in memory, as the statements report merges its queries:
// fields appended, rows added, then moved through, filtered and searched.
#include <gtest/gtest.h>

#include <functional>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "support/throws_saying.h"
#include "temp_db.h"

namespace orv::db {
namespace {

DateTime D(int y, int m, int d) { return DateTime::FromParts(y, m, d); }

// Rows in the order the merge adds them: invoices (newest first), then
// payments. (Sorting them, stable among equal keys:
// sort_and_relate_test.cpp; filter conditions: criteria_test.cpp; rows
// added, changed and cancelled, and the filter's index following them:
// recordset_storage_test.cpp.)
Recordset WorkingSet() {
  return testing::Fabricated(
      {{"TPatientID", adInteger}, {"TDate", adDate}, {"TDescription", adVarChar, 255}, {"TAmount", adCurrency}},
      {{2, D(2026, 11, 3), "Dental Treatment", "180.5"},
       {1, D(2026, 11, 1), "Dental Treatment", 90},
       {1, D(2026, 10, 6), "Interest", 1.25},
       {2, D(2026, 11, 3), "Visa", -50},
       {1, D(2026, 11, 1), "Cheque", Variant::Null()},
       {1, D(2026, 11, 1), "Cash", -10}});
}

// Past either end, and back; positions on results of no row and of one:
// recordset_storage_test.cpp.
TEST(FabricatedRecordset, NavigationAndPositions) {
  Recordset rs = WorkingSet();
  rs.MoveLast();
  EXPECT_EQ(rs.AbsolutePosition(), 6);
  rs.MoveNext();
  EXPECT_EQ(rs.AbsolutePosition(), adPosEOF);
  EXPECT_THROW(rs.MoveNext(), DatabaseError);
  EXPECT_THROW(rs["TAmount"].Value(), DatabaseError);
  rs.MovePrevious();
  EXPECT_EQ(rs["TDescription"].Value(), Variant("Cash"));
  rs.MoveFirst();
  rs.MovePrevious();
  EXPECT_TRUE(rs.Bof());
  EXPECT_EQ(rs.AbsolutePosition(), adPosBOF);
  rs.AbsolutePosition(4);
  EXPECT_EQ(rs["TDescription"].Value(), Variant("Visa"));
  rs.Filter("TPatientID = 42");
  rs.Filter(0);  // 0 clears the filter, as "" does
  EXPECT_EQ(rs.RecordCount(), 6);
  EXPECT_EQ(rs.AbsolutePosition(), 1);
}

TEST(FabricatedRecordset, FindFromStartAndBackwards) {
  struct Case {
    const char* name;
    int start_position;  // AbsolutePosition before Find
    const char* criteria;
    long skip;
    int direction;
    int start;
    long expected;  // AbsolutePosition after, or adPosEOF / adPosBOF
  } cases[] = {
      {"from the current row", 1, "TPatientID = 1", 0, adSearchForward, adBookmarkCurrent, 2},
      {"the current row matches", 2, "TPatientID = 1", 0, adSearchForward, adBookmarkCurrent, 2},
      {"skip the current row", 2, "TPatientID = 1", 1, adSearchForward, adBookmarkCurrent, 3},
      {"backwards", 6, "TDescription = 'Dental Treatment'", 0, adSearchBackward, adBookmarkCurrent, 2},
      {"from the first row", 5, "TPatientID = 2", 0, adSearchForward, adBookmarkFirst, 1},
      {"from the last row backwards", 1, "TPatientID = 2", 0, adSearchBackward, adBookmarkLast, 4},
      {"not found forwards", 1, "TPatientID = 3", 0, adSearchForward, adBookmarkCurrent, adPosEOF},
      {"not found backwards", 6, "TPatientID = 3", 0, adSearchBackward, adBookmarkCurrent, adPosBOF},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Recordset rs = WorkingSet();
    rs.AbsolutePosition(c.start_position);
    rs.Find(c.criteria, c.skip, c.direction, c.start);
    EXPECT_EQ(rs.AbsolutePosition(), c.expected);
  }
}

TEST(FabricatedRecordset, BadInputGivesClearErrors) {
  Recordset rs = WorkingSet();
  struct Case {
    const char* name;
    std::function<void()> run;
    const char* says;
  } cases[] = {
      {"malformed filter", [&] { rs.Filter("TPatientID = = 1"); }, "malformed filter"},
      {"filter on an unknown field", [&] { rs.Filter("Nope = 1"); }, "'Nope'"},
      {"sort on an unknown field", [&] { rs.Sort("TDate, Nope DESC"); }, "'Nope'"},
      {"unknown field", [&] { rs["Nope"].Value(); }, "'Nope'"},
      {"field number out of range", [&] { rs[17].Value(); }, "field 17"},
      {"Find with two comparisons", [&] { rs.Find("TPatientID = 1 AND TAmount > 0"); }, "exactly one"},
      {"a value that is no date", [&] { rs["TDate"].Value("soon"); }, "Type mismatch"},
      {"append to an open recordset", [&] { rs.Fields().Append("X", adInteger); }, "open recordset"},
  };
  for (const auto& c : cases) EXPECT_TRUE(orv::testing::ThrowsSaying(c.run, {c.says})) << c.name;
  // A failed Sort leaves the previous order in place.
  EXPECT_EQ(rs.Sort(), "");
  EXPECT_EQ(rs.RecordCount(), 6);
}

TEST(FabricatedRecordset, ChunksAndSizes) {
  Bytes logo(70000);
  for (size_t i = 0; i < logo.size(); ++i) logo[i] = static_cast<unsigned char>(i * 7);
  Recordset rs = testing::Fabricated({{"Logo", adLongVarBinary}, {"Name", adVarChar, 20}, {"N", adInteger}},
                                     {{logo, "Rideau"}});
  EXPECT_EQ(rs["Logo"].ActualSize(), 70000);
  EXPECT_EQ(rs["Name"].ActualSize(), 6);
  EXPECT_EQ(rs["N"].ActualSize(), 0);  // Null
  EXPECT_EQ(rs["Name"].DefinedSize(), 20);
  Bytes first = rs["Logo"].GetChunk(65536);
  Bytes rest = rs["Logo"].GetChunk(65536);
  EXPECT_EQ(first.size(), 65536u);
  EXPECT_EQ(rest.size(), 70000u - 65536u);
  first.insert(first.end(), rest.begin(), rest.end());
  EXPECT_EQ(first, logo);
  EXPECT_TRUE(rs["Logo"].GetChunk(10).empty());
}

}  // namespace
}  // namespace orv::db
