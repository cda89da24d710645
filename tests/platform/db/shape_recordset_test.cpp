// SHAPE statements run on a practice database: chapters hold the child rows
// of the current parent row, to three levels, alike on each engine.
#include <gtest/gtest.h>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "temp_db.h"
#include "support/throws_saying.h"

namespace orv::db {
namespace {

using ShapeRecordset = testing::PracticeTest;
using testing::DumpRows;

// Families: holders, their members, the members' invoices and the
// payments on them.
constexpr const char* kFamilies =
    "SHAPE {SELECT ID, LastName FROM Patient WHERE PrimaryHolderID = ID ORDER BY ID} AS Holders APPEND (( SHAPE "
    "{SELECT FirstName, LastName, PrimaryHolderID, ID FROM Patient ORDER BY ID} AS Members APPEND (( SHAPE {SELECT "
    "ID, PatientID, InvoiceTotal FROM Invoices ORDER BY ID} AS MemberInvoices APPEND ({SELECT ID, InvoiceID, Amount "
    "FROM InvoicePaymentDetails ORDER BY ID} AS Payments RELATE 'ID' TO 'InvoiceID') AS Payments) AS MemberInvoices "
    "RELATE 'ID' TO 'PatientID') AS MemberInvoices) AS Members RELATE 'ID' TO 'PrimaryHolderID') AS Members";

TEST(ShapeRecordsetOnEachEngine, Statements) {
  struct Case {
    const char* name;
    const char* statement;
    const char* rows;
    const char* first_chapter;  // the last chapter of the first row
  } cases[] = {
      {"two children",
       "SHAPE {SELECT ID, FirstName FROM Patient ORDER BY ID} AS Patients APPEND ({SELECT PatientID, ID FROM "
       "Invoices ORDER BY ID} AS PatientInvoices RELATE 'ID' TO 'PatientID') AS PatientInvoices, ({SELECT "
       "PrimaryHolderID, FirstName FROM Patient} AS Family RELATE ID TO PrimaryHolderID) AS Family",
       "1,Claire{1,1 1,2}{1,Claire 1,Luc} 2,Luc{2,3}{} 3,Priya{3,4}{3,Priya} 4,Seamus{}{}", "1,Claire 1,Luc"},
      {"three levels", kFamilies,
       "1,Tremblay{Claire,Tremblay,1,1{1,1,100{1,1,60 2,1,40} 2,1,40.1{}} Luc,Tremblay,1,2{3,2,250{3,3,250}}} "
       "3,Singh{Priya,Singh,3,3{4,3,75.5{4,4,0.1 5,4,0.2}}}",
       "Claire,Tremblay,1,1{1,1,100{1,1,60 2,1,40} 2,1,40.1{}} Luc,Tremblay,1,2{3,2,250{3,3,250}}"},
      {"a UNION ALL child",
       "SHAPE {SELECT ID FROM Invoices WHERE ID <= 2} AS I APPEND ({SELECT InvoiceID, Amount FROM "
       "InvoicePaymentDetails UNION ALL SELECT ID, InvoiceTotal FROM Invoices} AS Lines RELATE 'ID' TO "
       "'InvoiceID') AS Lines",
       "1{1,60 1,40 1,100} 2{2,40.1}", "1,60 1,40 1,100"},
  };
  testing::EachEngine engines(testing::kPracticeSql);
  engines.Run([&](Connection& conn) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      Recordset rs;
      rs.Open(c.statement, conn, adOpenStatic, adLockReadOnly);
      EXPECT_EQ(DumpRows(rs), c.rows);
      // A chapter follows its parent back: the first parent row again.
      rs.MoveFirst();
      EXPECT_EQ(DumpRows(rs.Fields(rs.Fields().Count() - 1).Chapter()), c.first_chapter);
    }
  });
}

// A field's value as text, or "-" when the recordset was opened without it.
std::string HeldOrDash(const Field& f) {
  std::string text;
  const std::string error = orv::testing::ErrorOf([&] { text = CStr(f.Value()); });
  if (error == "(no error)") return text;
  return error.find("KeepFields") != std::string::npos ? "-" : "?";
}

// KeepFields: the named fields (and those a SHAPE relates by) read as in a
// recordset opened whole; a level the list names no field of is held
// whole; the rest keep their names but refuse to be read, sorted on,
// filtered or found on, and the recordset refuses writes. Requery reads the
// same fields again.
TEST(ShapeRecordsetOnEachEngine, KeepFieldsHoldsWhatIsNamedAndRefusesTheRest) {
  struct Case {
    const char* name;
    const char* statement;
    std::vector<std::string> keep;
    const char* rows;
  } cases[] = {
      {"a plain statement, names in any case", "SELECT ID, FirstName, LastName FROM Patient ORDER BY ID",
       {"lastname", "[FirstName]"}, "-,Claire,Tremblay -,Luc,Tremblay -,Priya,Singh -,Seamus,O'Brien"},
      {"relate fields held unnamed",
       "SHAPE {SELECT ID, FirstName, LastName FROM Patient ORDER BY ID} AS P APPEND ({SELECT PatientID, ID, "
       "InvoiceTotal FROM Invoices ORDER BY ID} AS Inv RELATE 'ID' TO 'PatientID') AS Inv",
       {"FirstName", "Inv.InvoiceTotal"}, "1,Claire,-{1,-,100 1,-,40.1} 2,Luc,-{2,-,250} 3,Priya,-{3,-,75.5} 4,Seamus,-{}"},
      {"levels not named are whole", kFamilies, {"Members.FirstName", "Members.MemberInvoices.Payments.Amount"},
       "1,Tremblay{Claire,-,1,1{1,1,100{-,1,60 -,1,40} 2,1,40.1{}} Luc,-,1,2{3,2,250{-,3,250}}} "
       "3,Singh{Priya,-,3,3{4,3,75.5{-,4,0.1 -,4,0.2}}}"},
  };
  testing::EachEngine engines(testing::kPracticeSql);
  engines.Run([&](Connection& conn) {
    for (const auto& c : cases) {
      SCOPED_TRACE(c.name);
      Recordset rs;
      rs.KeepFields(c.keep);
      rs.Open(c.statement, conn, adOpenStatic, adLockOptimistic);
      EXPECT_EQ(DumpRows(rs, HeldOrDash), c.rows);
      rs.Requery();
      EXPECT_EQ(DumpRows(rs, HeldOrDash), c.rows);
    }
    Recordset rs;
    rs.KeepFields({"FirstName"});
    rs.Open("SELECT ID, FirstName, LastName FROM Patient", conn, adOpenStatic, adLockOptimistic);
    EXPECT_EQ(rs.Fields().Count(), 3);
    EXPECT_EQ(rs.Fields(2).Name(), "LastName");
    using orv::testing::ThrowsSaying;
    EXPECT_TRUE(ThrowsSaying([&] { rs.Sort("FirstName, LastName"); }, {"sort", "'LastName'", "KeepFields"}));
    EXPECT_TRUE(ThrowsSaying([&] { rs.Filter("LastName = 'Singh'"); }, {"Filter", "'LastName'"}));
    EXPECT_TRUE(ThrowsSaying([&] { rs.Find("LastName = 'Singh'"); }, {"Find", "'LastName'"}));
    EXPECT_TRUE(ThrowsSaying([&] { rs["FirstName"].Value("Clara"); }, {"cannot be written"}));
    EXPECT_TRUE(ThrowsSaying([&] { rs.AddNew(); }, {"cannot be written"}));
    // What failed changed nothing: the order and the rows are the statement's.
    rs.Sort("FirstName DESC");
    EXPECT_EQ(testing::Walk(rs, "FirstName"), "Seamus Priya Luc Claire");
    // A field handle kept across a reopen answers for the rows it reads now:
    // held before, not held after, and gone from a shorter statement.
    rs.Close();
    rs.KeepFields({});
    rs.Open("SELECT ID, FirstName, LastName FROM Patient ORDER BY ID", conn, adOpenStatic, adLockOptimistic);
    const Field last = rs["LastName"];
    EXPECT_EQ(CStr(last.Value()), "Tremblay");
    rs.Close();
    rs.KeepFields({"FirstName"});
    rs.Open("SELECT ID, FirstName, LastName FROM Patient ORDER BY ID", conn, adOpenStatic, adLockOptimistic);
    std::string scratch;
    EXPECT_TRUE(ThrowsSaying([&] { last.Text(scratch); }, {"'LastName'", "KeepFields"}));
    rs.Close();
    rs.KeepFields({});
    rs.Open("SELECT ID FROM Patient", conn, adOpenStatic, adLockOptimistic);
    EXPECT_TRUE(ThrowsSaying([&] { last.Value(); }, {"Item cannot be found"}));
  });
}

TEST_F(ShapeRecordset, ChapterFollowsTheParent) {
  Recordset rs;
  rs.Open("SHAPE {SELECT ID FROM Patient ORDER BY ID} AS P APPEND ({SELECT PatientID, InvoiceTotal FROM Invoices} "
          "AS Inv RELATE 'ID' TO 'PatientID') AS Inv",
          conn_, adOpenStatic, adLockReadOnly);
  EXPECT_EQ(rs.Fields().Count(), 2);
  EXPECT_EQ(rs["Inv"].Type(), adChapter);
  Recordset child = rs["Inv"].Chapter();  // taken once, before the walk
  std::vector<long> counts;
  while (!rs.Eof()) {
    counts.push_back(child.RecordCount());
    rs.MoveNext();
  }
  EXPECT_EQ(counts, (std::vector<long>{2, 1, 1, 0}));
  rs.MoveFirst();
  child.Filter("InvoiceTotal > 50");
  EXPECT_EQ(child.RecordCount(), 1);
  EXPECT_EQ(child["InvoiceTotal"].Value(), Variant(Currency::FromInt(100)));
  EXPECT_THROW(rs["Inv"].Value(), DatabaseError);
  EXPECT_THROW(rs["Inv"].IsNull(), DatabaseError);
  std::string scratch;
  EXPECT_THROW(rs["Inv"].Text(scratch), DatabaseError);
  // After the parent reads its rows again, the child handle shows the new
  // child rows of the current parent.
  conn_.Execute("INSERT INTO Invoices (ID, PatientID, InvoiceTotal) VALUES (6, 1, 300)");
  rs.Requery();
  child.Filter("");
  EXPECT_EQ(child.RecordCount(), 3);
  rs.Close();
  EXPECT_THROW(child.RecordCount(), DatabaseError);
}

// A chapter shows the rows of the parent's current row wherever the parent
// goes (sorted, filtered, back and forth), starting at its first row each
// time; its own Filter and Sort hold across the parent's moves and apply to
// all of that row's children, and one taken off again shows them all.
TEST_F(ShapeRecordset, ChapterFollowsEveryMoveWithItsOwnFilterAndSort) {
  Recordset rs;
  rs.Open("SHAPE {SELECT ID FROM Patient ORDER BY ID} AS P APPEND ({SELECT ID AS InvID, PatientID, InvoiceTotal "
          "FROM Invoices ORDER BY ID} AS Inv RELATE 'ID' TO 'PatientID') AS Inv",
          conn_, adOpenStatic, adLockReadOnly);
  Recordset child = rs["Inv"].Chapter();
  // The parent's ID, then the child's invoice totals from where it stands.
  auto here = [&] {
    std::string totals = CStr(rs["ID"].Value()) + ":";
    for (; !child.Eof(); child.MoveNext()) totals += " " + CStr(child["InvoiceTotal"].Value());
    return totals;
  };
  auto walk = [&] {
    std::string out;
    for (rs.MoveFirst(); !rs.Eof(); rs.MoveNext()) out += "[" + here() + "]";
    return out;
  };
  EXPECT_EQ(walk(), "[1: 100 40.1][2: 250][3: 75.5][4:]");
  rs.Sort("ID DESC");
  EXPECT_EQ(walk(), "[4:][3: 75.5][2: 250][1: 100 40.1]");
  rs.Filter("ID <> 3");
  EXPECT_EQ(walk(), "[4:][2: 250][1: 100 40.1]");
  rs.Filter("");
  rs.Sort("");

  // Back and forth: the chapter starts over at its first row, whatever
  // row it was left on, and a parent at EOF or BOF has no children.
  rs.MoveFirst();
  child.MoveNext();
  EXPECT_EQ(CStr(child["InvoiceTotal"].Value()), "40.1");
  rs.MoveNext();
  EXPECT_EQ(here(), "2: 250");
  rs.MovePrevious();
  EXPECT_EQ(child.AbsolutePosition(), 1);
  EXPECT_EQ(here(), "1: 100 40.1");
  rs.MoveLast();
  EXPECT_TRUE(child.Bof() && child.Eof());
  EXPECT_EQ(child.RecordCount(), 0);
  rs.MoveNext();
  EXPECT_EQ(child.RecordCount(), 0);
  EXPECT_THROW(child["InvoiceTotal"].Value(), DatabaseError);
  EXPECT_THROW(child["InvoiceTotal"].IsNull(), DatabaseError);
  rs.AbsolutePosition(2);
  EXPECT_EQ(child.RecordCount(), 1);
  EXPECT_FALSE(child["InvoiceTotal"].IsNull());

  // The chapter's own Filter, set on a row it has only been shown, keeps
  // to each parent row's children; taken off it shows them all again.
  child.Filter("InvoiceTotal < 300");
  EXPECT_EQ(here(), "2: 250");
  rs.MoveFirst();
  child.Filter("InvoiceTotal > 50");
  EXPECT_EQ(walk(), "[1: 100][2: 250][3: 75.5][4:]");
  rs.MoveFirst();
  child.Filter("");
  EXPECT_EQ(here(), "1: 100 40.1");
  child.Sort("InvoiceTotal");
  EXPECT_EQ(walk(), "[1: 40.1 100][2: 250][3: 75.5][4:]");
  rs.MoveFirst();
  child.Find("InvoiceTotal = 100");
  EXPECT_EQ(child.AbsolutePosition(), 2);
  child.Sort("");
  EXPECT_EQ(walk(), "[1: 100 40.1][2: 250][3: 75.5][4:]");

  // An invoice whose patient is Null relates to no patient, and the
  // patients stay each with their own.
  Recordset invoices;
  invoices.Open("SHAPE {SELECT ID, PatientID FROM Invoices ORDER BY ID} AS I APPEND ({SELECT ID AS PID, FirstName "
                "FROM Patient} AS Pat RELATE 'PatientID' TO 'PID') AS Pat",
                conn_, adOpenStatic, adLockReadOnly);
  EXPECT_EQ(DumpRows(invoices), "1,1{1,Claire} 2,1{1,Claire} 3,2{2,Luc} 4,3{3,Priya} 5,NULL{}");
}

TEST_F(ShapeRecordset, ErrorsNameTheStatement) {
  struct Case {
    const char* name;
    const char* statement;
    const char* says;
  } cases[] = {
      {"relate column missing in the child",
       "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT ID FROM Invoices} RELATE 'ID' TO 'PatID') AS c", "'PatID'"},
      {"relate column missing in the parent",
       "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT PatientID FROM Invoices} RELATE 'Nope' TO 'PatientID')",
       "'Nope'"},
      {"missing table in a child",
       "SHAPE {SELECT ID FROM Patient} APPEND ({SELECT PatientID FROM NoSuchTable} RELATE 'ID' TO 'PatientID')",
       "NoSuchTable"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    Recordset rs;
    EXPECT_TRUE(orv::testing::ThrowsSaying(
        [&] { rs.Open(c.statement, conn_, adOpenStatic, adLockReadOnly); }, {c.says, c.statement}));
    EXPECT_EQ(rs.State(), adStateClosed);
  }
}

}  // namespace
}  // namespace orv::db
