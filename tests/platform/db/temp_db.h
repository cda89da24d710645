// A throw-away SQLite database file built from SQL text, for the tests of
// the database layer.
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <filesystem>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>

#include "platform/db/copy_database.h"
#include "platform/db/recordset.h"
#include "support/postgres.h"
#include "support/shell.h"

namespace orv::db::testing {

class TempDb {
 public:
  explicit TempDb(const std::string& sql) {
    static std::atomic<int> counter{0};
    path_ = orv::testing::TempPath("orvenda_db_test_", std::to_string(counter++) + ".db");
    std::filesystem::remove(path_);
    sqlite3* db = nullptr;
    sqlite3_open(path_.c_str(), &db);
    char* err = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
      std::string msg = err ? err : "?";
      sqlite3_free(err);
      sqlite3_close(db);
      throw std::runtime_error("fixture SQL failed: " + msg);
    }
    sqlite3_close(db);
  }
  ~TempDb() { std::filesystem::remove(path_); }
  TempDb(const TempDb&) = delete;
  TempDb& operator=(const TempDb&) = delete;

  const std::string& path() const { return path_; }
  std::string url() const { return "sqlite:" + path_; }

 private:
  std::string path_;
};

// A small practice: patients in two families, invoices and the payments on
// them, with the odd column names and the declared types of the server.
inline const char* kPracticeSql = R"sql(
CREATE TABLE Patient (ID INTEGER PRIMARY KEY, LastName VARCHAR(30), FirstName VARCHAR(30),
  PrimaryHolderID INTEGER, BirthDate DATETIME, [Active?] INTEGER, [Policy#] VARCHAR(10),
  Balance MONEY, Rate FLOAT, Photo BLOB);
INSERT INTO Patient VALUES
 (1, 'Tremblay', 'Claire', 1, '1980-03-04 00:00:00', -1, 'POL-1', 12.5, 0.5, X'0102FF'),
 (2, 'Tremblay', 'Luc', 1, '2010-06-01 00:00:00', 1, NULL, 0, NULL, NULL),
 (3, 'Singh', 'Priya', 3, '1975-12-31 00:00:00', 0, 'P#3', -50.25, 1.5, NULL),
 (4, 'O''Brien', 'Seamus', NULL, NULL, NULL, NULL, NULL, NULL, NULL);
CREATE TABLE Invoices (ID INTEGER PRIMARY KEY, PatientID INTEGER, [Date] DATETIME,
  InvoiceTotal MONEY, [Complete?] INTEGER);
INSERT INTO Invoices VALUES
 (1, 1, '2026-11-01 09:00:00', 100, 1),
 (2, 1, '2026-10-15 00:00:00', 40.1, 1),
 (3, 2, '2026-11-03 00:00:00', 250, 0),
 (4, 3, '2026-09-30 00:00:00', 75.5, 1),
 (5, NULL, '2026-08-01 00:00:00', 10, 1);
CREATE TABLE InvoicePaymentDetails (ID INTEGER PRIMARY KEY, InvoiceID INTEGER, Amount MONEY,
  [Date] DATETIME);
INSERT INTO InvoicePaymentDetails VALUES
 (1, 1, 60, '2026-11-02 00:00:00'),
 (2, 1, 40, '2026-11-05 00:00:00'),
 (3, 3, 250, '2026-11-04 00:00:00'),
 (4, 4, 0.1, '2026-10-01 00:00:00'),
 (5, 4, 0.2, '2026-10-02 00:00:00');
)sql";

// Values chosen for what breaks copies: money with four decimals and at the
// edge of its range, negative money, text with tabs, newlines, backslashes,
// quotes and accents, NULLs, flags of -1, dates with times, a blob.
inline constexpr const char* kCopyPractice = R"(
CREATE TABLE "Invoices" ("ID" INTEGER PRIMARY KEY, "PatientID" INTEGER, "Complete?" INTEGER,
  "InvoiceTotal" MONEY, "Date" DATETIME, "Notes" VARCHAR(60), "Code" CHAR(5), "Rate" FLOAT, "Logo" BLOB);
CREATE INDEX "IX_Invoices_PatientID" ON "Invoices" ("PatientID");
CREATE UNIQUE INDEX "IX_Invoices_Code_Date" ON "Invoices" ("Code", "Date");
CREATE TABLE "Splits" ("EmployeeID" INTEGER, "Code" VARCHAR(10), "Share" FLOAT, PRIMARY KEY ("EmployeeID", "Code"));
INSERT INTO "Invoices" VALUES (1, 7, -1, 125.5, '2026-11-20 00:00:00', 'Crown, tooth 36', 'A1', 0.5, x'00ff10');
INSERT INTO "Invoices" VALUES (2, 7, 0, -0.0001, '2026-11-21 14:05:00', 'tab	and
newline \ back''quote', 'B2', NULL, NULL);
INSERT INTO "Invoices" VALUES (5, 8, 0, 92233720.4775, '1999-12-31 23:59:59', 'Hélène Côté ', NULL, 1e-7, NULL);
INSERT INTO "Invoices" VALUES (6, NULL, NULL, NULL, NULL, NULL, 'C3', NULL, NULL);
INSERT INTO "Splits" VALUES (3, 'HYG', 0.4), (3, 'DDS', 0.6);
)";

// A path in the temporary folder, unique to this process, for a file a test
// makes (the test removes it).
inline std::string TempFilePath(const std::string& name) {
  return orv::testing::TempPath("orvenda_db_test_", name);
}

// Rows of `table` in file `a` that file `b` lacks, plus the other way round:
// 0 when both hold the same rows.
inline int RowDifferences(const std::string& a, const std::string& b, const std::string& table) {
  sqlite3* db = nullptr;
  sqlite3_open(a.c_str(), &db);
  sqlite3_exec(db, ("ATTACH '" + b + "' AS other").c_str(), nullptr, nullptr, nullptr);
  std::string q = "SELECT (SELECT COUNT(*) FROM (SELECT * FROM main.\"" + table +
                  "\" EXCEPT SELECT * FROM other.\"" + table +
                  "\")) + (SELECT COUNT(*) FROM (SELECT * FROM other.\"" + table +
                  "\" EXCEPT SELECT * FROM main.\"" + table + "\"))";
  sqlite3_stmt* st = nullptr;
  int n = -1;
  if (sqlite3_prepare_v2(db, q.c_str(), -1, &st, nullptr) == SQLITE_OK &&
      sqlite3_step(st) == SQLITE_ROW)
    n = sqlite3_column_int(st, 0);
  sqlite3_finalize(st);
  sqlite3_close(db);
  return n;
}

// A practice written from SQL text to a file and copied to a new database
// on the test server (ORVENDA_TEST_PG), for the tests that run the same
// rows on both engines.
class PracticeOnServer {
 public:
  explicit PracticeOnServer(const std::string& sql) : file_(sql) {
    CopyDatabase(file_.url(), server_.url());
  }
  const TempDb& file() const { return file_; }
  const std::string& url() const { return server_.url(); }

 private:
  TempDb file_;
  orv::testing::FreshPgDatabase server_;
};

// The same rows on each engine the test can reach: the file, and a copy on
// the test server when ORVENDA_TEST_PG names one. Run() calls the body once
// per engine with a connection to it, the engine named in the trace.
class EachEngine {
 public:
  explicit EachEngine(const std::string& sql) : file_(sql) {
    if (!orv::testing::TestServerUrl().empty()) server_.emplace(sql);
  }
  void Run(const std::function<void(Connection&)>& body) {
    for (const std::string& url : urls()) {
      SCOPED_TRACE(url == file_.url() ? "SQLite" : "PostgreSQL");
      Connection conn(url);
      body(conn);
    }
  }
  std::vector<std::string> urls() const {
    std::vector<std::string> out{file_.url()};
    if (server_) out.push_back(server_->url());
    return out;
  }
  const TempDb& file() const { return file_; }

 private:
  TempDb file_;
  std::optional<PracticeOnServer> server_;
};

// The small practice open on the file: what most recordset tests start from.
class PracticeTest : public ::testing::Test {
 protected:
  TempDb db_{kPracticeSql};
  Connection conn_{db_.url()};
};

// A recordset built in memory, as the statements report merges its
// queries: `fields` appended, then one row per entry of `rows`, its values
// in field order (a short row leaves the last fields Null).
struct FabricatedField {
  const char* name;
  FieldType type;
  long size = 0;
};
inline Recordset Fabricated(const std::vector<FabricatedField>& fields, const std::vector<std::vector<Variant>>& rows) {
  Recordset rs;
  for (const auto& f : fields) rs.Fields().Append(f.name, f.type, f.size);
  rs.Open();
  for (const auto& row : rows) {
    rs.AddNew();
    for (size_t i = 0; i < row.size(); ++i) rs[static_cast<long>(i)].Value(row[i]);
    rs.Update();
  }
  return rs;
}

// A recordset's rows from the current one on as "a,b" texts (Null as NULL,
// or each field as `shown` gives it), each row's chapters as "{...}" after
// it; leaves the recordset at EOF.
inline std::string DumpRows(Recordset rs, const std::function<std::string(const Field&)>& shown = nullptr) {
  std::string out;
  for (; !rs.Eof(); rs.MoveNext()) {
    std::string row, chapters;
    for (long i = 0; i < rs.Fields().Count(); ++i) {
      Field f = rs.Fields(i);
      if (f.IsChapter()) {
        chapters += "{" + DumpRows(f.Chapter(), shown) + "}";
        continue;
      }
      if (shown) {
        row += (row.empty() ? "" : ",") + shown(f);
        continue;
      }
      const Variant v = f.Value();
      row += (row.empty() ? "" : ",") + (v.IsNull() ? std::string("NULL") : CStr(v));
    }
    out += (out.empty() ? "" : " ") + row + chapters;
  }
  return out;
}

// One field of the current row onwards, as texts parted by blanks; leaves
// the recordset at EOF.
inline std::string Walk(Recordset& rs, const char* field) {
  std::string out;
  for (; !rs.Eof(); rs.MoveNext()) out += (out.empty() ? "" : " ") + CStr(rs[field].Value());
  return out;
}

}  // namespace orv::db::testing
