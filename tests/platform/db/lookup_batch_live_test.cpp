// Per-row lookups on a real server (ORVENDA_TEST_PG): inside a snapshot the
// layer answers them from one read of all keys, and every answer must be the
// one the statement itself gives.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "support/postgres.h"
#include "temp_db.h"

namespace orv::db {
namespace {

using orv::testing::ServerExec;

// Sixty invoices: invoice i belongs to patient i % 7 (none for 0), totals
// i + 0.005, every fifth is not complete; it has i % 4 payment shares of
// i + k/100 (k = 1..), the second one undated.
std::string ManyInvoices() {
  std::string sql =
      "CREATE TABLE Invoices (ID INTEGER PRIMARY KEY, PatientID INTEGER, [Date] DATETIME, "
      "InvoiceTotal MONEY, [Complete?] INTEGER);\n"
      "CREATE TABLE InvoicePaymentDetails (ID INTEGER PRIMARY KEY, InvoiceID INTEGER, Amount MONEY, "
      "[Date] DATETIME);\n";
  int share = 1;
  for (int i = 1; i <= 60; ++i) {
    sql += "INSERT INTO Invoices VALUES (" + std::to_string(i) + ", " +
           (i % 7 ? std::to_string(i % 7) : "NULL") + ", '2026-10-" + std::to_string(1 + i % 28) +
           " 00:00:00', " + std::to_string(i) + ".005, " + (i % 5 ? "1" : "0") + ");\n";
    for (int k = 1; k <= i % 4; ++k) {
      sql += "INSERT INTO InvoicePaymentDetails VALUES (" + std::to_string(share++) + ", " + std::to_string(i) +
             ", " + std::to_string(i) + "." + (k < 10 ? "0" : "") + std::to_string(k) + ", " +
             (k == 2 ? "NULL" : "'2026-11-0" + std::to_string(k) + " 00:00:00'") + ");\n";
    }
  }
  return sql;
}

std::string WithKey(std::string tsql, int key) { return tsql.replace(tsql.find("{}"), 2, std::to_string(key)); }

// A result as text: each field's name and kind, then each value with its
// type, so that a Currency and a Double of the same figure differ.
std::string Dump(const RowSet& rows) {
  std::string out;
  for (const FieldInfo& f : rows.fields) out += f.name + ":" + std::to_string(static_cast<int>(f.kind)) + " ";
  for (size_t r = 0; r < rows.RowCount(); ++r) {
    out += "\n ";
    for (const Variant& v : rows.GetRow(r))
      out += std::to_string(static_cast<int>(v.type())) + "=" + (v.IsNull() ? "Null" : CStr(v)) + " ";
  }
  return out + "\n";
}

// Runs a report's reads (`run(batch, &served)` gives their results as text
// and the statements served from batches) key by key, then batched: the two
// must read the same. The statements served from batches.
int64_t BatchedAsOneByOne(const std::function<std::string(bool batch, int64_t* served)>& run) {
  int64_t served_one = -1, served_batched = -1;
  const std::string one_by_one = run(false, &served_one);
  const std::string batched = run(true, &served_batched);
  EXPECT_EQ(served_one, 0);
  EXPECT_EQ(batched, one_by_one);
  return served_batched;
}

TEST(LookupBatchLive, EveryKeyReadsAsItsOwnStatementAndOnlyInsideTheSnapshot) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(ManyInvoices());
  Connection conn(server.url());

  const std::vector<std::string> lookups = {
      "SELECT SUM(InvoicePaymentDetails.Amount) AS Total FROM InvoicePaymentDetails INNER JOIN Invoices ON "
      "Invoices.ID = InvoicePaymentDetails.InvoiceID WHERE InvoicePaymentDetails.InvoiceID = {} AND "
      "InvoicePaymentDetails.[Date] <= '2026-11-02' AND Invoices.[Complete?] = 1",
      "SELECT COUNT(*) AS N, MIN([Date]) AS First FROM InvoicePaymentDetails WHERE InvoiceID = {}",
      "SELECT ID, Amount, [Date] FROM InvoicePaymentDetails WHERE InvoiceID = {} ORDER BY Amount DESC",
      "SELECT * FROM Invoices WHERE ID = {}",
      "SELECT ID, InvoiceTotal FROM Invoices WHERE PatientID = {} AND [Complete?] = 1 ORDER BY ID",
  };
  // Keys 0 and 61..64 have no rows, nor patients past 6.
  auto run_all = [&](bool batch, int64_t* served) {
    conn.BatchLookups(batch);
    std::string out;
    Snapshot snapshot(conn);
    for (const std::string& lookup : lookups)
      for (int key = 0; key <= 64; ++key) out += Dump(*conn.Query(WithKey(lookup, key)));
    *served = conn.BatchedLookupCount();
    return out;
  };
  // Each lookup's first sixteen keys run as given; the rest from its batch.
  EXPECT_EQ(BatchedAsOneByOne(run_all), 5 * (65 - 16));

  // Worked by hand: invoice 7 (complete) has shares 7.01 on 11-01, 7.02
  // undated (out of "<="), 7.03 on 11-03 (after the day): 7.01 paid.
  {
    Snapshot snapshot(conn);
    for (int key = 1; key <= 30; ++key) conn.Query(WithKey(lookups[0], key));
    ASSERT_GT(conn.BatchedLookupCount(), 0);
    auto rows = conn.Query(WithKey(lookups[0], 7));
    ASSERT_EQ(rows->RowCount(), 1u);
    EXPECT_EQ(CStr(rows->Get(0, 0)), "7.01");
    // Another session pays on invoice 7 while the snapshot is held: the
    // report does not see it, batched or not.
    ServerExec("INSERT INTO \"InvoicePaymentDetails\" VALUES (900, 7, 100, '2026-10-30')", server.url());
    EXPECT_EQ(CStr(conn.Query(WithKey(lookups[0], 7))->Get(0, 0)), "7.01");
  }
  // The next report sees it; outside a snapshot nothing is batched.
  EXPECT_EQ(conn.BatchedLookupCount(), 0);
  for (int key = 1; key <= 30; ++key) conn.Query(WithKey(lookups[0], key));
  EXPECT_EQ(conn.BatchedLookupCount(), 0);
  EXPECT_EQ(CStr(conn.Query(WithKey(lookups[0], 7))->Get(0, 0)), "107.01");
}

// A report walks the complete invoices of a SHAPE's child and looks each one
// up, then asks for invoices it did not walk: a batch of the walked keys
// alone must still answer those as their own statements do.
TEST(LookupBatchLive, AWalkOfHeldRowsAndKeysBeyondItReadAsTheirOwnStatements) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(ManyInvoices());
  // Payments on 5,000 invoices of no listed patient, so that the server
  // prices reading the walked invoices alone well below reading them all.
  ServerExec("INSERT INTO \"InvoicePaymentDetails\" SELECT g, 1000 + g % 5000, 1, '2026-11-01' FROM "
             "generate_series(1000, 30999) AS g; CREATE INDEX ON \"InvoicePaymentDetails\" (\"InvoiceID\"); "
             "ANALYZE",
             server.url());
  Connection conn(server.url());
  const std::string paid =
      "SELECT SUM(Amount) AS Total FROM InvoicePaymentDetails WHERE InvoiceID = {} AND [Date] <= '2026-11-02'";
  const std::string shares = "SELECT ID, Amount FROM InvoicePaymentDetails WHERE InvoiceID = {} ORDER BY ID";
  auto run = [&](bool batch, int64_t* served) {
    conn.BatchLookups(batch);
    std::string out;
    Snapshot snapshot(conn);
    Recordset patients;
    patients.Open(
        "SHAPE {SELECT DISTINCT PatientID FROM Invoices ORDER BY PatientID} AS P APPEND ({SELECT ID, PatientID "
        "FROM Invoices WHERE [Complete?] = 1 ORDER BY ID} AS Inv RELATE 'PatientID' TO 'PatientID') AS Inv",
        conn, adOpenStatic, adLockReadOnly);
    while (!patients.Eof()) {
      Recordset invoices = patients["Inv"].Chapter();
      while (!invoices.Eof()) {
        const int key = static_cast<int>(invoices["ID"].Value().AsInteger());
        out += Dump(*conn.Query(WithKey(paid, key))) + Dump(*conn.Query(WithKey(shares, key)));
        invoices.MoveNext();
      }
      patients.MoveNext();
    }
    // Every fifth invoice is not complete, and 61..64 do not exist.
    for (int key = 5; key <= 64; key += 5) out += Dump(*conn.Query(WithKey(paid, key)));
    for (int key = 61; key <= 64; ++key) out += Dump(*conn.Query(WithKey(shares, key)));
    *served = conn.BatchedLookupCount();
    return out;
  };
  EXPECT_GT(BatchedAsOneByOne(run), 0);
}

TEST(ShapeChildrenLive, RestrictedOrKeptChildrenRelateAsTheWholeChildOnTheFile) {
  ORV_REQUIRE_POSTGRES();
  testing::PracticeOnServer server(ManyInvoices());
  Connection on_file(server.file().url());
  Connection on_server(server.url());

  const std::string payments = "{SELECT ID, InvoiceID, Amount FROM InvoicePaymentDetails} AS Pay";
  const std::vector<std::string> shapes = {
      // Few parent keys: the child is read for them only.
      "SHAPE {SELECT ID, PatientID FROM Invoices WHERE PatientID = 3 ORDER BY ID} AS Inv APPEND (" + payments +
          " RELATE 'ID' TO 'InvoiceID') AS Pay",
      // No parent row: a child of no rows, its columns still there.
      "SHAPE {SELECT ID FROM Invoices WHERE PatientID = 99} AS Inv APPEND (" + payments +
          " RELATE 'ID' TO 'InvoiceID') AS Pay",
      // A child that cannot be restricted (TOP) is read whole, and inside a
      // server snapshot kept for the next SHAPE that reads it.
      "SHAPE {SELECT ID FROM Invoices WHERE ID < 12 ORDER BY ID} AS Inv APPEND ({SELECT TOP 20 ID, InvoiceID, "
      "Amount FROM InvoicePaymentDetails ORDER BY ID} AS Pay RELATE 'ID' TO 'InvoiceID') AS Pay",
  };
  auto run = [](Connection& conn, const std::string& shape) {
    Recordset rs;
    rs.Open(shape, conn, adOpenStatic, adLockReadOnly);
    return testing::DumpRows(rs);
  };
  for (const std::string& shape : shapes) {
    SCOPED_TRACE(shape);
    const std::string expected = run(on_file, shape);
    EXPECT_EQ(run(on_server, shape), expected);
    Snapshot snapshot(on_server);
    EXPECT_EQ(run(on_server, shape), expected);
    EXPECT_EQ(run(on_server, shape), expected);
  }
  // Worked by hand: invoice 3 (patient 3) has three shares, 4 to 6 (after
  // invoice 1's one and invoice 2's two); invoice 10 two, 14 and 15; no
  // parent, no rows.
  const std::string first = "3,3{4,3,3.01 5,3,3.02 6,3,3.03} 10,3{14,10,10.01 15,10,10.02}";
  EXPECT_EQ(run(on_file, shapes[0]).substr(0, first.size()), first);
  EXPECT_EQ(run(on_server, shapes[1]), "");
}

}  // namespace
}  // namespace orv::db
