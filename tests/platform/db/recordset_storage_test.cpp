// What a recordset gives back from its compact store, on each engine: Null
// apart from empty text, trailing blanks kept, money to the fourth decimal,
// dates with and without a time, blobs; Find after Filter after Sort;
// results of no row and of one; and fabricated rows added, changed and
// cancelled. (SHAPE on each engine: shape_recordset_test.cpp.)
#include <gtest/gtest.h>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "temp_db.h"

namespace orv::db {
namespace {

using testing::EachEngine;
using testing::Walk;

constexpr const char* kValuesSql = R"sql(
CREATE TABLE Notes (ID INTEGER PRIMARY KEY, PatientID INTEGER, Note VARCHAR(40), Amount MONEY,
  Seen DATETIME, Logo BLOB);
INSERT INTO Notes VALUES
 (1, 10, NULL, 1.2345, '2026-11-20 00:00:00', X'00FF10'),
 (2, 10, '', -0.0001, '2026-11-20 14:05:30', NULL),
 (3, 11, 'Côté  ', 92233720.4775, NULL, X''),
 (4, 11, 'cote', 0, '1899-12-30 00:00:00', NULL),
 (5, 12, 'Abbott', 250.5, '2026-01-02 09:00:00', NULL),
 (6, 12, 'abbott', 250.5, '2026-01-02 08:00:00', NULL);
)sql";

// A value as a reader tells values apart: its kind and its text.
std::string Shown(const Variant& v) {
  if (v.IsNull()) return "Null";
  if (v.IsEmpty()) return "Empty";
  switch (v.type()) {
    case VarType::String: return "text[" + v.AsString() + "]";
    case VarType::Currency: return "money " + std::to_string(v.AsCurrency().raw()) + "/10000";
    case VarType::Date: return "date " + CStr(v);
    case VarType::Binary: {
      std::string out = "bytes";
      for (unsigned char b : v.AsBytes()) out += " " + std::to_string(b);
      return out;
    }
    default: return "number " + CStr(v);
  }
}

// One field of the row at a 1-based position, as Shown gives it.
struct FieldCase {
  const char* name;
  long position;
  const char* field;
  const char* shown;
};

TEST(RecordsetStorage, ValuesReadBackAsStored) {
  const FieldCase cases[] = {
      {"Null text", 1, "Note", "Null"},
      {"empty text is no Null", 2, "Note", "text[]"},
      {"trailing blanks kept", 3, "Note", "text[Côté  ]"},
      {"money to the fourth decimal", 1, "Amount", "money 12345/10000"},
      {"the smallest negative money", 2, "Amount", "money -1/10000"},
      {"money past a float's exact digits", 3, "Amount", "money 922337204775/10000"},
      {"a date without time", 1, "Seen", "date 2026-11-20"},
      {"a date with time", 2, "Seen", "date 2026-11-20 2:05:30 PM"},
      {"the base day", 4, "Seen", "date 12:00:00 AM"},
      {"a Null date", 3, "Seen", "Null"},
      {"a blob", 1, "Logo", "bytes 0 255 16"},
      {"a Null blob", 2, "Logo", "Null"},
  };
  EachEngine engines(kValuesSql);
  engines.Run([&](Connection& conn) {
    Recordset rs;
    rs.Open("SELECT ID, Note, Amount, Seen, Logo FROM Notes ORDER BY ID", conn, adOpenStatic, adLockReadOnly);
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      rs.AbsolutePosition(c.position);
      const Variant v = rs[c.field].Value();
      EXPECT_EQ(Shown(v), c.shown);
      EXPECT_EQ(rs[c.field].IsNull(), v.IsNull());
      // Read as text in place, every kind gives what CStr gives ("" for
      // Null).
      std::string scratch;
      if (v.type() != VarType::Binary) {
        EXPECT_EQ(rs[c.field].Text(scratch), v.IsNull() ? "" : CStr(v));
      }
    }
    // The field sizes follow the stored bytes, not a padded width.
    rs.AbsolutePosition(3);
    EXPECT_EQ(rs["Note"].ActualSize(), 8);
    rs.AbsolutePosition(2);
    EXPECT_EQ(rs["Note"].ActualSize(), 0);
  });
}

TEST(RecordsetStorage, FindAfterFilterAfterSort) {
  EachEngine engines(kValuesSql);
  engines.Run([&](Connection& conn) {
    Recordset rs;
    rs.Open("SELECT ID, PatientID, Note, Amount, Seen FROM Notes ORDER BY ID", conn, adOpenStatic,
            adLockReadOnly);
    // Null before empty text before the rest; text without regard to case
    // (equal keys keep the statement's order), accents after the plain
    // letter.
    rs.Sort("Note");
    EXPECT_EQ(Walk(rs, "ID"), "1 2 5 6 4 3");
    rs.Sort("Amount DESC, Seen");
    EXPECT_EQ(Walk(rs, "ID"), "3 6 5 1 4 2");
    rs.Filter("Amount > 0");
    EXPECT_EQ(rs.RecordCount(), 4);
    EXPECT_EQ(Walk(rs, "ID"), "3 6 5 1");
    rs.MoveFirst();
    rs.Find("Note = 'ABBOTT'");
    ASSERT_FALSE(rs.Eof());
    EXPECT_EQ(CLng(rs["ID"].Value()), 6);
    EXPECT_EQ(rs.AbsolutePosition(), 2);
    rs.Find("Note = 'ABBOTT'", 1);
    ASSERT_FALSE(rs.Eof());
    EXPECT_EQ(CLng(rs["ID"].Value()), 5);
    // The filtered-out row is not found; the search ends at EOF.
    rs.Find("Note = 'cote'", 1);
    EXPECT_TRUE(rs.Eof());
    // An equality filter on a number (served by the filter's index) after
    // the sort; then every row again, still sorted.
    rs.Filter("PatientID = 12");
    EXPECT_EQ(Walk(rs, "ID"), "6 5");
    rs.Filter("");
    EXPECT_EQ(rs.RecordCount(), 6);
    EXPECT_EQ(Walk(rs, "ID"), "3 6 5 1 4 2");
  });
}

TEST(RecordsetStorage, NoRowAndOneRow) {
  EachEngine engines(kValuesSql);
  engines.Run([&](Connection& conn) {
    Recordset none;
    none.Open("SELECT ID, Note FROM Notes WHERE ID > 100", conn, adOpenStatic, adLockReadOnly);
    EXPECT_TRUE(none.Eof() && none.Bof());
    EXPECT_EQ(none.RecordCount(), 0);
    EXPECT_EQ(none.AbsolutePosition(), adPosBOF);
    EXPECT_EQ(none.Fields().Count(), 2);
    EXPECT_EQ(none.Fields(1L).Name(), "Note");
    EXPECT_THROW(none.MoveFirst(), DatabaseError);
    EXPECT_THROW(none["ID"].Value(), DatabaseError);
    EXPECT_THROW(none["ID"].IsNull(), DatabaseError);
    none.Sort("Note");
    none.Filter("ID = 1");
    EXPECT_TRUE(none.Eof());
    none.Find("Note = 'x'");
    EXPECT_TRUE(none.Eof());

    Recordset one;
    one.Open("SELECT ID, Note FROM Notes WHERE ID = 4", conn, adOpenStatic, adLockReadOnly);
    EXPECT_EQ(one.RecordCount(), 1);
    EXPECT_EQ(one.AbsolutePosition(), 1);
    EXPECT_EQ(CStr(one["Note"].Value()), "cote");
    one.MoveNext();
    EXPECT_TRUE(one.Eof());
    EXPECT_FALSE(one.Bof());
    one.MovePrevious();
    EXPECT_EQ(CLng(one["ID"].Value()), 4);
    one.Filter("Note <> 'COTE'");
    EXPECT_EQ(one.RecordCount(), 0);

    // A forward-only cursor knows neither count nor position, reads the
    // same row and never moves back.
    Recordset forward;
    forward.Open("SELECT Note FROM Notes WHERE ID = 4", conn);
    EXPECT_EQ(forward.RecordCount(), -1);
    EXPECT_EQ(forward.AbsolutePosition(), adPosUnknown);
    EXPECT_EQ(Walk(forward, "Note"), "cote");
    EXPECT_THROW(forward.MovePrevious(), DatabaseError);
  });
}

TEST(RecordsetStorage, FabricatedRowsAddedChangedAndCancelled) {
  Recordset rs = testing::Fabricated(
      {{"ID", adInteger}, {"Name", adVarChar, 40}, {"Amount", adCurrency}, {"Day", adDate}, {"Scan", adLongVarBinary}},
      {{1, "Hélène", "12.34565", "2026-11-20 14:05"},
       {2, "", -0.0001, DateTime::FromParts(2026, 11, 20)},
       {3, Variant::Null(), Variant::Null(), Variant::Null()}});
  EXPECT_EQ(rs.RecordCount(), 3);

  const FieldCase cases[] = {
      {"text as given", 1, "Name", "text[Hélène]"},
      {"empty text stays text", 2, "Name", "text[]"},
      {"Null stays Null", 3, "Name", "Null"},
      {"money rounded half even at the fourth decimal", 1, "Amount", "money 123456/10000"},
      {"the smallest money", 2, "Amount", "money -1/10000"},
      {"a date from text, with its time", 1, "Day", "date 2026-11-20 2:05:00 PM"},
      {"a date alone", 2, "Day", "date 2026-11-20"},
      {"a field never set is Null", 1, "Scan", "Null"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    rs.AbsolutePosition(c.position);
    EXPECT_EQ(Shown(rs[c.field].Value()), c.shown);
  }

  // A row added and cancelled leaves nothing; moving off a changed row
  // keeps the change, as Update would.
  rs.AddNew();
  EXPECT_EQ(rs.EditMode(), adEditAdd);
  rs["Name"].Value("draft");
  rs.CancelUpdate();
  EXPECT_EQ(rs.RecordCount(), 3);
  rs.MoveFirst();
  rs["Name"].Value("kept");
  rs.MoveNext();
  rs.MoveFirst();
  EXPECT_EQ(Shown(rs["Name"].Value()), "text[kept]");

  // Equality filters on a number go through an index of the rows: it sees
  // a key changed and a row added after it was built. Text is scanned.
  rs.Filter("ID = 2");
  EXPECT_EQ(rs.RecordCount(), 1);
  rs["ID"].Value(7);
  rs["Scan"].Value(Bytes{1, 2, 3});
  rs.Update();
  rs.Filter("ID = 2");
  EXPECT_EQ(rs.RecordCount(), 0);
  rs.Filter("");
  rs.AddNew();
  rs["ID"].Value(2);
  rs["Name"].Value("Visa");
  rs.Update();
  rs.Filter("ID = 2");
  EXPECT_EQ(Walk(rs, "Name"), "Visa");
  rs.Filter("Name = 'VISA'");
  EXPECT_EQ(Walk(rs, "ID"), "2");
  rs.Filter("Amount = 12.3456");
  EXPECT_EQ(Walk(rs, "ID"), "1");
  // A change cancelled.
  rs.Filter("ID = 7");
  ASSERT_EQ(rs.RecordCount(), 1);
  EXPECT_EQ(Shown(rs["Scan"].Value()), "bytes 1 2 3");
  rs["Name"].Value("changed");
  rs.CancelUpdate();
  EXPECT_EQ(Shown(rs["Name"].Value()), "text[]");
  rs.Filter("");
  rs.Sort("ID DESC");
  EXPECT_EQ(Walk(rs, "ID"), "7 3 2 1");
  // Closed it refuses to be read; opened again it has its fields, no rows.
  rs.Close();
  EXPECT_EQ(rs.State(), adStateClosed);
  EXPECT_THROW(rs.Eof(), DatabaseError);
  rs.Open();
  EXPECT_EQ(rs.Fields().Count(), 5);
  EXPECT_TRUE(rs.Eof() && rs.Bof());
}

}  // namespace
}  // namespace orv::db
