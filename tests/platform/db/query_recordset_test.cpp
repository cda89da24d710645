// Recordsets opened on a practice database: typed values, cursors, Filter,
// Find and Sort on query rows, writes and transactions.
#include <gtest/gtest.h>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "temp_db.h"

namespace orv::db {
namespace {

using QueryRecordset = testing::PracticeTest;

TEST_F(QueryRecordset, FieldsAreFoundByNameAsTheFirstOfThatName) {
  // Two fields named ID and two named LastName: a name finds the first,
  // in any case and in brackets, on every read alike. (Values of each
  // kind as stored: recordset_storage_test.cpp.)
  const std::string statement =
      "SELECT Invoices.ID, Patient.ID, LastName, FirstName AS LASTNAME, InvoiceTotal, [Policy#] FROM Invoices "
      "INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE Invoices.ID = 4";
  Recordset rs;
  rs.Open(statement, conn_, adOpenStatic, adLockReadOnly);
  struct Case {
    const char* field;
    Variant expected;
  } cases[] = {
      {"ID", Variant(4)}, {"id", Variant(4)}, {"[Id]", Variant(4)}, {"LastName", Variant("Singh")},
      {"LASTNAME", Variant("Singh")}, {"invoicetotal", Variant(Currency::FromRaw(755000))},
      {"Policy#", Variant("P#3")}, {"[Policy#]", Variant("P#3")},
  };
  for (int pass = 0; pass < 2; ++pass)
    for (const auto& c : cases) EXPECT_EQ(rs[c.field].Value(), c.expected) << c.field << ", pass " << pass;
  EXPECT_EQ(rs.Fields(1).Value(), Variant(3));
  EXPECT_EQ(rs.Fields(3).Value(), Variant("Priya"));
  EXPECT_THROW(rs["Nope"].Value(), DatabaseError);
  EXPECT_EQ(rs.Source(), statement);
}

// (A forward-only cursor on each engine: recordset_storage_test.cpp.)
TEST_F(QueryRecordset, ClientCursorLocationGivesAStaticCursor) {
  Connection client(db_.url());
  client.CursorLocation(adUseClient);
  Recordset cl;
  cl.Open("SELECT ID FROM Invoices", client, adOpenForwardOnly, adLockReadOnly);
  EXPECT_EQ(cl.RecordCount(), 5);
}

TEST_F(QueryRecordset, TableNameOpensTheTable) {
  Recordset rs;
  rs.Open("Invoices", conn_, adOpenStatic, adLockReadOnly, adCmdTable);
  EXPECT_EQ(rs.RecordCount(), 5);
  EXPECT_EQ(rs.Fields().Count(), 5);
  EXPECT_EQ(rs.Fields(3).Name(), "InvoiceTotal");
}

TEST_F(QueryRecordset, RequeryReadsAgainAndKeepsTheFilter) {
  Recordset rs;
  rs.Open("SELECT ID, InvoiceTotal FROM Invoices", conn_, adOpenStatic, adLockReadOnly);
  rs.Filter("InvoiceTotal >= 100");
  EXPECT_EQ(rs.RecordCount(), 2);
  EXPECT_EQ(conn_.Execute("UPDATE Invoices SET InvoiceTotal = 500 WHERE ID = 5"), 1);
  rs.Requery();
  EXPECT_EQ(rs.RecordCount(), 3);
}

TEST_F(QueryRecordset, ExecuteAndTransactions) {
  EXPECT_EQ(conn_.Execute("UPDATE Patient SET LastName = 'Roy' WHERE PrimaryHolderID = 1"), 2);
  conn_.BeginTrans();
  EXPECT_EQ(conn_.Execute("DELETE FROM InvoicePaymentDetails WHERE InvoiceID = 1"), 2);
  conn_.RollbackTrans();
  conn_.BeginTrans();
  conn_.Execute("UPDATE Invoices SET [Complete?] = 1 WHERE ID = 3");
  conn_.CommitTrans();
  EXPECT_THROW(conn_.CommitTrans(), DatabaseError);

  EXPECT_EQ(conn_.Query("SELECT COUNT(*) AS N FROM InvoicePaymentDetails WHERE InvoiceID = 1")->Get(0, 0),
            Variant(2));
  EXPECT_EQ(conn_.Query("SELECT [Complete?] FROM Invoices WHERE ID = 3")->Get(0, 0), Variant(1));
  EXPECT_EQ(conn_.Query("SELECT LastName FROM Patient WHERE ID = 2")->Get(0, 0), Variant("Roy"));
}

TEST_F(QueryRecordset, UpdateAndAddNewWriteBackByKey) {
  Recordset rs;
  rs.Open("SELECT * FROM Patient WHERE ID = 2", conn_, adOpenStatic, adLockOptimistic);
  rs["Photo"].Value(Bytes{9, 8, 7});
  rs["Balance"].Value("12.34");
  rs.Update();
  rs.AddNew();
  rs["LastName"].Value("Nakamura");
  rs["BirthDate"].Value(DateTime::FromParts(2001, 2, 3));
  rs.Update();
  EXPECT_EQ(rs["ID"].Value(), Variant(5));  // the key the database gave

  Recordset check;
  check.Open("SELECT ID, LastName, Photo, Balance, BirthDate FROM Patient WHERE ID >= 2 ORDER BY ID", conn_,
             adOpenStatic);
  EXPECT_EQ(check["Photo"].Value(), Variant(Bytes{9, 8, 7}));
  EXPECT_EQ(check["Balance"].Value(), Variant(Currency::FromRaw(123400)));
  check.MoveLast();
  EXPECT_EQ(check["LastName"].Value(), Variant("Nakamura"));
  EXPECT_EQ(check["BirthDate"].Value(), Variant(DateTime::FromParts(2001, 2, 3)));

  Recordset ro;
  ro.Open("SELECT * FROM Patient", conn_, adOpenStatic, adLockReadOnly);
  EXPECT_THROW(ro["LastName"].Value("x"), DatabaseError);
  EXPECT_THROW(ro.AddNew(), DatabaseError);

  Recordset joined;
  joined.Open("SELECT Invoices.ID, Patient.LastName FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID",
              conn_, adOpenStatic, adLockOptimistic);
  joined["LastName"].Value("x");
  EXPECT_THROW(joined.Update(), DatabaseError);
}

}  // namespace
}  // namespace orv::db
