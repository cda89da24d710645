// A sort of a large recordset lays its rows, and its SHAPE children's, out
// in the sorted order. Nothing a report sees may change: each row keeps its
// values and its chapters to the third level, "" gives the statement's
// order back, ties keep it, Filter, Find and AbsolutePosition work on the
// sorted rows, a chapter opened before the sort follows it, and chapters
// are still found after the parent's values change.
#include <gtest/gtest.h>

#include <algorithm>
#include <numeric>

#include "platform/db/recordset.h"
#include "temp_db.h"

namespace orv::db {
namespace {

// 20,000 parents, more than a sort lays out anew. Every seventh parent
// relates by the key of the one before (two parents, one group of
// children); a parent has 0 to 2 children, and some children belong to no
// parent; every other child has a grandchild. Labels repeat (a run of one
// text once sorted), Names are unique or Null, Scores tie often.
constexpr int kParents = 20000;
const char* const kLayoutSql = R"sql(
CREATE TABLE P (ID INTEGER PRIMARY KEY, K INTEGER, Grp INTEGER, Label VARCHAR(10), Name VARCHAR(10),
  Score MONEY);
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 20000)
INSERT INTO P SELECT i, CASE WHEN i % 7 = 0 THEN i - 1 ELSE i END, i % 5, 'L' || (i % 4),
  CASE WHEN i % 11 = 0 THEN NULL ELSE printf('N%05d', (i * 7919) % 20011) END, ((i * 37) % 101) / 4.0 FROM n;
CREATE TABLE C (ID INTEGER PRIMARY KEY, PID INTEGER, Amount MONEY);
WITH RECURSIVE n(i) AS (SELECT 1 UNION ALL SELECT i + 1 FROM n WHERE i < 22000)
INSERT INTO C SELECT i, (i * 13) % 22000 + 1, i / 100.0 FROM n WHERE i % 3 <> 0;
CREATE TABLE G (ID INTEGER PRIMARY KEY, CID INTEGER, Note VARCHAR(10));
INSERT INTO G SELECT ID + 100000, ID, 'g' || ID FROM C WHERE ID % 2 = 0;
)sql";
const char* const kShape =
    "SHAPE {SELECT ID, K, Grp, Label, Name, Score FROM P ORDER BY ID} AS P APPEND ((SHAPE {SELECT ID, PID, Amount "
    "FROM C ORDER BY ID} AS C APPEND ({SELECT CID, ID, Note FROM G ORDER BY ID} AS G RELATE 'ID' TO 'CID') AS G) "
    "AS C RELATE 'K' TO 'PID') AS C";

// One row and its chapters, as text, and what it sorts by.
struct Row {
  int grp;
  std::string label;
  double score;
  std::string name;
  std::string text;
};

// The current row and everything below it, as text.
std::string RowText(Recordset& rs) {
  std::string row, chapters;
  for (long i = 0; i < rs.Fields().Count(); ++i) {
    Field f = rs.Fields(i);
    if (f.IsChapter()) {
      chapters += "{" + testing::DumpRows(f.Chapter()) + "}";
      continue;
    }
    const Variant v = f.Value();
    row += (row.empty() ? "" : ",") + (v.IsNull() ? std::string("NULL") : CStr(v));
  }
  return row + chapters;
}

std::vector<std::string> Walk(Recordset& rs) {
  std::vector<std::string> out;
  for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) out.push_back(RowText(rs));
  return out;
}

std::vector<std::string> Texts(const std::vector<Row>& rows) {
  std::vector<std::string> out;
  for (const Row& r : rows) out.push_back(r.text);
  return out;
}

class SortedLayout : public ::testing::Test {
 protected:
  void SetUp() override {
    // The statement's order, read without a sort.
    Recordset rs;
    rs.Open(kShape, conn_, adOpenStatic, adLockReadOnly);
    for (; !rs.Eof(); rs.MoveNext())
      statement_.push_back({static_cast<int>(CLng(rs["Grp"].Value())), CStr(rs["Label"].Value()),
                            CDbl(rs["Score"].Value()),
                            rs["Name"].Value().IsNull() ? std::string() : CStr(rs["Name"].Value()), RowText(rs)});
    ASSERT_EQ(statement_.size(), static_cast<size_t>(kParents));
    // Parents 923 and 924 share their child, and each reads its grandchild.
    EXPECT_EQ(statement_[922].text, "923,923,3,L3,N05222,3.25{16994,923,169.94{16994,116994,g16994}}");
    EXPECT_EQ(statement_[923].text, "924,923,4,L0,NULL,12.5{16994,923,169.94{16994,116994,g16994}}");
  }
  // The statement's rows ordered stably by `less`.
  template <typename Less>
  std::vector<Row> Sorted(Less less) const {
    std::vector<Row> rows = statement_;
    std::stable_sort(rows.begin(), rows.end(), less);
    return rows;
  }

  testing::TempDb db_{kLayoutSql};
  Connection conn_{db_.url()};
  std::vector<Row> statement_;
};

TEST_F(SortedLayout, RowsAndChaptersReadAsBeforeTheSort) {
  const std::vector<Row> want = Sorted([](const Row& a, const Row& b) {
    return a.label != b.label ? a.label < b.label : a.score > b.score;
  });
  {
    // A chapter read on the first row before the sort follows the sorted
    // rows: its first row's ID, as the row's text has it after the brace.
    const auto first_child = [](const std::string& text) {
      const size_t open = text.find('{');
      return text.substr(open + 1, text.find(',', open) - open - 1);
    };
    Recordset rs;
    rs.Open(kShape, conn_, adOpenStatic, adLockReadOnly);
    Recordset early = rs["C"].Chapter();
    EXPECT_EQ(CStr(early["ID"].Value()), first_child(statement_[0].text));
    rs.Sort("Label, Score DESC");
    EXPECT_EQ(CStr(early["ID"].Value()), first_child(want[0].text));
  }

  Recordset rs;
  rs.Open(kShape, conn_, adOpenStatic, adLockOptimistic);
  rs.Sort("Label, Score DESC");
  EXPECT_EQ(Walk(rs), Texts(want));
  rs.AbsolutePosition(12345);
  EXPECT_EQ(RowText(rs), want[12344].text);

  // Filter, then Find, over the sorted rows.
  rs.Filter("Grp = 2");
  std::vector<Row> grp2;
  std::copy_if(want.begin(), want.end(), std::back_inserter(grp2), [](const Row& r) { return r.grp == 2; });
  EXPECT_EQ(Walk(rs), Texts(grp2));
  rs.MoveFirst();
  rs.Find("Name = '" + grp2[777].name + "'");
  ASSERT_FALSE(rs.Eof());
  EXPECT_EQ(rs.AbsolutePosition(), 778);
  EXPECT_EQ(RowText(rs), grp2[777].text);
  rs.Filter("");

  // Back to the statement's order, then sorted a second way.
  rs.Sort("");
  EXPECT_EQ(Walk(rs), Texts(statement_));
  rs.Sort("Grp DESC, Name");
  const std::vector<Row> by_grp = Sorted([](const Row& a, const Row& b) {
    // Null names first, as the recordset orders Null before any text.
    return a.grp != b.grp ? a.grp > b.grp : a.name < b.name;
  });
  EXPECT_EQ(Walk(rs), Texts(by_grp));

  // A value changed and put back: the chapters are found by their keys.
  rs.MoveFirst();
  rs["Label"].Value(Variant("changed"));
  rs.CancelUpdate();
  EXPECT_EQ(Walk(rs), Texts(by_grp));
}

}  // namespace
}  // namespace orv::db
