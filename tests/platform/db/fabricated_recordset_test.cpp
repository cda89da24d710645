// A recordset built in memory, as the statements report merges its queries:
// fields appended, rows added, then moved through, filtered and searched.
#include <gtest/gtest.h>

#include <functional>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

DateTime D(int y, int m, int d) { return DateTime::FromParts(y, m, d); }

struct Line {
  int patient;
  DateTime date;
  const char* description;
  Variant amount;
};

// Rows in the order the merge adds them: invoices (newest first), then
// payments. (Sorting them, stable among equal keys:
// sort_and_relate_test.cpp; filter conditions: criteria_test.cpp.)
Recordset WorkingSet() {
  Recordset rs;
  rs.Fields().Append("TPatientID", adInteger);
  rs.Fields().Append("TDate", adDate);
  rs.Fields().Append("TDescription", adVarChar, 255);
  rs.Fields().Append("TAmount", adCurrency);
  rs.Open();
  const Line lines[] = {
      {2, D(2026, 11, 3), "Dental Treatment", Variant("180.5")},
      {1, D(2026, 11, 1), "Dental Treatment", Variant(90)},
      {1, D(2026, 10, 6), "Interest", Variant(1.25)},
      {2, D(2026, 11, 3), "Visa", Variant(-50)},
      {1, D(2026, 11, 1), "Cheque", Variant::Null()},
      {1, D(2026, 11, 1), "Cash", Variant(-10)},
  };
  for (const auto& l : lines) {
    rs.AddNew();
    rs["TPatientID"].Value(l.patient);
    rs["TDate"].Value(l.date);
    rs["TDescription"].Value(l.description);
    rs["TAmount"].Value(l.amount);
    rs.Update();
  }
  return rs;
}

std::vector<std::string> Descriptions(Recordset& rs) {
  std::vector<std::string> out;
  if (rs.Eof() && rs.Bof()) return out;
  rs.MoveFirst();
  while (!rs.Eof()) {
    out.push_back(rs["TDescription"].Value().AsString());
    rs.MoveNext();
  }
  return out;
}

TEST(FabricatedRecordset, NavigationAndPositions) {
  Recordset rs = WorkingSet();
  rs.MoveFirst();
  EXPECT_FALSE(rs.Bof());
  EXPECT_EQ(rs.AbsolutePosition(), 1);
  rs.MoveLast();
  EXPECT_EQ(rs.AbsolutePosition(), 6);
  rs.MoveNext();
  EXPECT_TRUE(rs.Eof());
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
  EXPECT_TRUE(rs.Eof() && rs.Bof());
  EXPECT_THROW(rs.MoveFirst(), DatabaseError);
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
      {"date criterion", 1, "TDate = #2026-10-06#", 0, adSearchForward, adBookmarkCurrent, 3},
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

TEST(FabricatedRecordset, CancelUpdateAndReopen) {
  Recordset rs = WorkingSet();
  rs.AddNew();
  rs["TDescription"].Value("draft");
  EXPECT_EQ(rs.EditMode(), adEditAdd);
  rs.CancelUpdate();
  EXPECT_EQ(rs.RecordCount(), 6);
  rs.MoveFirst();
  // Moving off a changed row keeps the change, as Update would.
  rs["TDescription"].Value("kept");
  rs.MoveNext();
  rs.MoveFirst();
  EXPECT_EQ(rs["TDescription"].Value(), Variant("kept"));
  rs.Close();
  EXPECT_EQ(rs.State(), adStateClosed);
  EXPECT_THROW(rs.Eof(), DatabaseError);
  rs.Open();
  EXPECT_EQ(rs.Fields().Count(), 4);
  EXPECT_TRUE(rs.Eof() && rs.Bof());
}

TEST(FabricatedRecordset, ChunksAndSizes) {
  Recordset rs;
  rs.Fields().Append("Logo", adLongVarBinary);
  rs.Fields().Append("Name", adVarChar, 20);
  rs.Fields().Append("N", adInteger);
  rs.Open();
  rs.AddNew();
  Bytes logo(70000);
  for (size_t i = 0; i < logo.size(); ++i) logo[i] = static_cast<unsigned char>(i * 7);
  rs["Logo"].Value(logo);
  rs["Name"].Value("Rideau");
  rs.Update();
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

// Equality filters on a number field go through a hash of the rows; it must
// give what a scan gives, and follow the rows as they change.
TEST(FabricatedRecordset, RepeatedEqualityFiltersFollowTheRows) {
  Recordset rs = WorkingSet();
  rs.Filter(Variant("TPatientID = 1"));
  EXPECT_EQ(Descriptions(rs), (std::vector<std::string>{"Dental Treatment", "Interest", "Cheque", "Cash"}));
  // A money field: 1.25 matches its own row only.
  rs.Filter(Variant("TAmount = 1.25"));
  EXPECT_EQ(Descriptions(rs), (std::vector<std::string>{"Interest"}));

  // A row added and a value changed after the hash was built are seen.
  rs.Filter(Variant(""));
  rs.AddNew();
  rs["TPatientID"].Value(3);
  rs["TDescription"].Value("New");
  rs.Update();
  rs.Filter(Variant("TPatientID = 3"));
  EXPECT_EQ(Descriptions(rs), (std::vector<std::string>{"New"}));
  rs.MoveFirst();
  rs["TPatientID"].Value(2);
  rs.Update();
  rs.Filter(Variant("TPatientID = 2"));
  EXPECT_EQ(Descriptions(rs), (std::vector<std::string>{"Dental Treatment", "Visa", "New"}));
  rs.Filter(Variant("TPatientID = 3"));
  EXPECT_TRUE(rs.Eof());
  // Text in the field: no hash, the scan still answers.
  rs.Filter(Variant("TDescription = 'visa'"));
  EXPECT_EQ(Descriptions(rs), (std::vector<std::string>{"Visa"}));
}

}  // namespace
}  // namespace orv::db
