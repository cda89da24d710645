// A small hand-made practice for the account tests, on the practice schema.
//
// Today is fixed at Friday 2026-11-20, 10:30. Dates are stored at midnight.
//
// Families by holder:
//   A: 1 Claire Tremblay (holder of herself), 2 Luc (holder 1),
//      5 Marc (holder 1, secondary holder 3)
//   B: 3 Priya Singh (holder of herself), 4 Arjun (holder 3); 5 Marc by his
//      secondary holder
//   6 Seamus O'Brien: no holder, nobody's holder
//   8 Nadia Roy: no holder; holder of 9 Emile Gagnon
//
// Invoices (Total / Final / PatientTotal / IsAssignment; Complete 1 unless
// noted):
//   101 p1 2026-09-10  200.00 /      /  80.00 / -1  assigned: patient 80, insurer 120
//   102 p1 2026-10-05  150.00 /      /        /  0
//   103 p1 2026-10-20   90.00 /      /        /  0  CANCELLED on 2026-10-25
//   104 p1 2026-11-15  300.00 /      /        /  0  Complete 0 (in progress)
//   105 p1 2026-11-18   60.00 /      /  NULL  /  1  assigned, no patient total
//   111 p2 2026-10-12  100.0050                     Complete -1
//   112 p2 2001-02-28   50.0250
//   113 p2 2001-03-01   50.0250
//   121 p5 2026-11-01   75.00
//   131 p3 2026-08-01   80.00
//   141 p4 2026-11-19   40.00
//   161 p6 2026-10-01   45.00
//   181 p8 2026-11-02  120.00 / 100.0050
//   182 p8 2026-11-02   80.0050 / 0
//   183 p8 2026-11-02   70.0250 / -5.00
//   184 p8 2001-02-28   50.0250
//   185 p8 2001-03-01   50.0250
//   186 p8 2026-11-02   33.3350                     Complete 0
//   187 p8 2026-11-02   33.3350                     Complete NULL
//   188 p8 2026-11-02   NULL    / 10.00
//   189 p8 (no date)    20.0050
//   191 p9 2026-11-03   66.65
//
// Payments (Value / TotalAllocated / TotalToCredit, entered, cheque date,
// IsInsurance, InitialProviderID) and their shares on invoices:
//   201 p1   80 /  80 /  0   09-15 09-15  0     prov 1  80 on 101 (09-15)
//   202 p1  120 / 120 /  0   10-01 10-01  1     prov 1 120 on 101 (10-01)
//   203 p1  200 / 150 / 50   10-06 10-06  NULL  prov 2 150 on 102 (10-06)
//   204 p1   40 /  40 /  0   11-10 11-21  0     prov 1  40 on 105 (11-21)  post-dated: tomorrow
//   205 p1   30 /   0 / 30   11-12 12-01  0     prov 1  post-dated credit
//   211 p2  100 / 100 /  0   10-15 10-15  0     100 on 111 (10-15)
//   212 p2   26 /   0 / 26   11-01 11-01  0
//   221 p5   10.0050 / 0 / 10.0050  11-05 11-05  0
//   232 p3   60 /   0 / 60   10-01 10-01  0
//   233 p3   15 /   0 / 15   10-02 10-02  1     insurer's money on account
//   241 p4   80 /  80 /  0   08-05 08-05  0     80 on 131, Priya's invoice
//   261 p6   20 /   0 / 20   09-01 09-01  0
//   281 p8  100.04 / 100.04 / 0  06-01 06-01  0  50.02 on 184, 50.02 on 185
//   291 p9   33.3250 / 33.3250 / 0  11-04 11-04  0  33.3250 on 191 (11-04)
#pragma once

#include <gtest/gtest.h>
#include <sqlite3.h>
#include <unistd.h>

#include <atomic>
#include <filesystem>
#include <list>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/practice/schema.h"
#include "support/paged_lines.h"
#include "support/test_engine.h"

namespace orv {
// Failure messages show amounts as "12.3450".
inline void PrintTo(Currency c, std::ostream* os) {
  *os << c.ToFixed4();
}
}  // namespace orv

namespace orv::testing {

inline const char* kAccountRows = R"sql(
INSERT INTO Patient (ID, FirstName, LastName, MiddleInitial, Title, FullName, Address, SIN,
  SignupDate, EmployerID, SecondaryEmployerID, ThirdEmployerID, DefaultOfficeID,
  PrimaryHolderID, SecondaryHolderID, ResponsibleFamilyMemberID) VALUES
 (1, 'Claire', 'Tremblay', 'J', 'Mrs.', 'Tremblay, Claire',
  '12 Main St' || char(13) || char(10) || 'Ottawa, ON' || char(13) || char(10) || 'K1A 0B1',
  '046454286', '2019-04-02 00:00:00', 11, 12, 13, 2, 1, NULL, 1),
 (2, 'Luc', 'Tremblay', NULL, NULL, 'Tremblay, Luc', NULL, NULL, NULL, NULL, NULL, NULL, NULL,
  1, NULL, 1),
 (3, 'Priya', 'Singh', NULL, NULL, 'Singh, Priya', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  3, NULL, 3),
 (4, 'Arjun', 'Singh', NULL, NULL, 'Singh, Arjun', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  3, NULL, 3),
 (5, 'Marc', 'Tremblay', NULL, NULL, 'Tremblay, Marc', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  1, 3, 1),
 (6, 'Seamus', 'O''Brien', NULL, NULL, 'O''Brien, Seamus', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  NULL, NULL, 6),
 (8, 'Nadia', 'Roy', NULL, NULL, 'Roy, Nadia', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  NULL, NULL, 8),
 (9, 'Emile', 'Gagnon', NULL, NULL, 'Gagnon, Emile', NULL, NULL, NULL, NULL, NULL, NULL, 1,
  8, NULL, 9);

INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Time], [Complete?], Cancelled,
  CancellationDate, InvoiceTotal, InvoiceFinalTotal, PatientTotal, IsAssignment) VALUES
 (101, 1001, 1, '2026-09-10 00:00:00', 540, 1, NULL, NULL, 200, NULL, 80, -1),
 (102, 1002, 1, '2026-10-05 00:00:00', 600, 1, NULL, NULL, 150, NULL, NULL, 0),
 (103, 1003, 1, '2026-10-20 00:00:00', 600, 1, 1, '2026-10-25 00:00:00', 90, NULL, NULL, 0),
 (104, 1004, 1, '2026-11-15 00:00:00', 600, 0, NULL, NULL, 300, NULL, NULL, 0),
 (105, 1005, 1, '2026-11-18 00:00:00', 600, 1, NULL, NULL, 60, NULL, NULL, 1),
 (111, 1011, 2, '2026-10-12 00:00:00', 600, -1, NULL, NULL, 100.005, NULL, NULL, NULL),
 (112, 1012, 2, '2001-02-28 00:00:00', 600, 1, NULL, NULL, 50.025, NULL, NULL, 0),
 (113, 1013, 2, '2001-03-01 00:00:00', 600, 1, NULL, NULL, 50.025, NULL, NULL, 0),
 (121, 1021, 5, '2026-11-01 00:00:00', 600, 1, NULL, NULL, 75, NULL, NULL, 0),
 (131, 1031, 3, '2026-08-01 00:00:00', 600, 1, NULL, NULL, 80, NULL, NULL, 0),
 (141, 1041, 4, '2026-11-19 00:00:00', 600, 1, NULL, NULL, 40, NULL, NULL, 0),
 (161, 1061, 6, '2026-10-01 00:00:00', 600, 1, NULL, NULL, 45, NULL, NULL, 0),
 (181, 1081, 8, '2026-11-02 00:00:00', 600, 1, NULL, NULL, 120, 100.005, NULL, 0),
 (182, 1082, 8, '2026-11-02 00:00:00', 600, 1, NULL, NULL, 80.005, 0, NULL, 0),
 (183, 1083, 8, '2026-11-02 00:00:00', 600, 1, NULL, NULL, 70.025, -5, NULL, 0),
 (184, 1084, 8, '2001-02-28 00:00:00', 600, 1, NULL, NULL, 50.025, NULL, NULL, 0),
 (185, 1085, 8, '2001-03-01 00:00:00', 600, 1, NULL, NULL, 50.025, NULL, NULL, 0),
 (186, 1086, 8, '2026-11-02 00:00:00', 600, 0, NULL, NULL, 33.335, NULL, NULL, 0),
 (187, 1087, 8, '2026-11-02 00:00:00', 600, NULL, NULL, NULL, 33.335, NULL, NULL, 0),
 (188, 1088, 8, '2026-11-02 00:00:00', 600, 1, NULL, NULL, NULL, 10, NULL, 0),
 (189, 1089, 8, NULL, 600, 1, NULL, NULL, 20.005, NULL, NULL, 0),
 (191, 1091, 9, '2026-11-03 00:00:00', 600, 1, NULL, NULL, 66.65, NULL, NULL, 0);

-- The treatment lines of the assigned invoice, split into the patient's and
-- the insurer's portion. The invoice-level model reads the invoice totals,
-- not these lines.
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, PrimaryInsCost,
  SecondaryInsCost, TertiaryInsCost, Status, [Date], EntryDate) VALUES
 (1, 101, '01202', 120, 48, 72, 0, 0, 'Complete', '2026-09-10 00:00:00', '2026-09-10 00:00:00'),
 (2, 101, '11101', 80, 32, 48, 0, 0, 'Complete', '2026-09-10 00:00:00', '2026-09-10 00:00:00'),
 (3, 102, '23111', 150, 150, 0, 0, 0, 'Complete', '2026-10-05 00:00:00', '2026-10-05 00:00:00');

INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, [Check#], IsInsurance) VALUES
 (201, 1, 1, 1, 80, 80, 0, '2026-09-15 00:00:00', '2026-09-15 00:00:00', '0', 0),
 (202, 1, 3, 1, 120, 120, 0, '2026-10-01 00:00:00', '2026-10-01 00:00:00', '0', 1),
 (203, 1, 2, 2, 200, 150, 50, '2026-10-06 00:00:00', '2026-10-06 00:00:00', '311', NULL),
 (204, 1, 2, 1, 40, 40, 0, '2026-11-10 00:00:00', '2026-11-21 00:00:00', '312', 0),
 (205, 1, 2, 1, 30, 0, 30, '2026-11-12 00:00:00', '2026-12-01 00:00:00', '313', 0),
 (211, 2, 1, 1, 100, 100, 0, '2026-10-15 00:00:00', '2026-10-15 00:00:00', '0', 0),
 (212, 2, 1, 1, 26, 0, 26, '2026-11-01 00:00:00', '2026-11-01 00:00:00', '0', 0),
 (221, 5, 1, 1, 10.005, 0, 10.005, '2026-11-05 00:00:00', '2026-11-05 00:00:00', '0', 0),
 (232, 3, 1, 1, 60, 0, 60, '2026-10-01 00:00:00', '2026-10-01 00:00:00', '0', 0),
 (233, 3, 3, 1, 15, 0, 15, '2026-10-02 00:00:00', '2026-10-02 00:00:00', '0', 1),
 (241, 4, 1, 1, 80, 80, 0, '2026-08-05 00:00:00', '2026-08-05 00:00:00', '0', 0),
 (261, 6, 1, 1, 20, 0, 20, '2026-09-01 00:00:00', '2026-09-01 00:00:00', '0', 0),
 (281, 8, 1, 1, 100.04, 100.04, 0, '2026-06-01 00:00:00', '2026-06-01 00:00:00', '0', 0),
 (291, 9, 1, 1, 33.325, 33.325, 0, '2026-11-04 00:00:00', '2026-11-04 00:00:00', '0', 0);

INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (1, 201, 101, 80, '2026-09-15 00:00:00'),
 (2, 202, 101, 120, '2026-10-01 00:00:00'),
 (3, 203, 102, 150, '2026-10-06 00:00:00'),
 (4, 204, 105, 40, '2026-11-21 00:00:00'),
 (5, 211, 111, 100, '2026-10-15 00:00:00'),
 (6, 241, 131, 80, '2026-08-05 00:00:00'),
 (7, 281, 184, 50.02, '2026-06-01 00:00:00'),
 (8, 281, 185, 50.02, '2026-06-01 00:00:00'),
 (9, 291, 191, 33.325, '2026-11-04 00:00:00');
)sql";

// Each test gets its own database with the practice schema and the rows
// above, on the engine under test (support/test_engine.h), and a fixed
// today.
class AccountFixture : public ::testing::Test {
 protected:
  void SetUp() override { SetUpPractice(""); }

  // The practice above with `more_rows` added (SQLite text): what every test
  // of a fixture starts from, one template on the server for all of them.
  void SetUpPractice(const std::string& more_rows) {
    ORV_REQUIRE_TEST_ENGINE();
    Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 30, 0));
    static std::atomic<int> counter{0};
    path_ = (std::filesystem::temp_directory_path() /
             ("orvenda_accounts_" + std::to_string(::getpid()) + "_" + std::to_string(counter++) +
              ".db"))
                .string();
    std::filesystem::remove(path_);
    sqlite3* db = nullptr;
    sqlite3_open(path_.c_str(), &db);
    // A throw-away file: no journal on disk and no waiting for the disk.
    RunRaw(db, "PRAGMA journal_mode=MEMORY; PRAGMA synchronous=OFF;");
    practice::CreateSchema(db);
    RunRaw(db, kAccountRows);
    if (!more_rows.empty()) RunRaw(db, more_rows);
    sqlite3_close(db);
    practice_.Create(path_, /*shared=*/true);
    conn_.Open(practice_.url());
  }

  void TearDown() override {
    conn_.Close();
    if (!path_.empty()) std::filesystem::remove(path_);
    Clock::UseSystem();
  }

  // Runs SQLite text on the fixture's file, behind the connection's back
  // (the data changes; the schema does not); on the server the file is then
  // copied over the test's database.
  void Exec(const std::string& sql) {
    sqlite3* db = nullptr;
    sqlite3_open(path_.c_str(), &db);
    try {
      RunRaw(db, sql);
    } catch (...) {
      sqlite3_close(db);
      throw;
    }
    sqlite3_close(db);
    practice_.Refresh();
  }

  static DateTime Day(int y, int m, int d) { return DateTime::FromParts(y, m, d); }
  static Currency Money(const char* text) { return Currency::FromDecimalText(text); }

  // First, so that the server's database is dropped after every connection
  // to it has gone.
  PracticeDatabase practice_;
  db::Connection conn_;

 private:
  static void RunRaw(sqlite3* db, const std::string& sql) {
    char* err = nullptr;
    if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
      std::string msg = err ? err : "?";
      sqlite3_free(err);
      throw std::runtime_error("fixture SQL failed: " + msg);
    }
  }

  std::string path_;
};

// The practice above with a family's rows added, and a component wired to a
// recording host and a preview form writing nowhere: what the report tests
// of the closing, receivables, compensation and referral families run on.
class AccountReportTest : public AccountFixture {
 protected:
  // The practice with `rows` added and the component wired to it; false
  // when the test was skipped or failed on the way.
  bool SetUpReports(const std::string& rows) {
    AccountFixture::SetUpPractice(rows);
    if (IsSkipped() || HasFatalFailure()) return false;
    form.SetNotifier([](const std::string&) {});
    reports.Connection(conn_);
    reports.SetPrintPreview(&form);
    reports.SetHostServices(&host);
    reports.Progress = [this](uint8_t& p) { progress.push_back(p); };
    return true;
  }

  std::string Text() const { return DocumentText(form.VSP.Document()); }
  bool Has(const std::string& part) const { return Text().find(part) != std::string::npos; }
  // The text of one page, from 1.
  std::string PageText(int page) const {
    const std::string all = Text();
    size_t start = 0;
    for (int p = 1; p < page; ++p) start = all.find('\f', start) + 1;
    const size_t end = all.find('\f', start);
    return all.substr(start, end == std::string::npos ? std::string::npos : end - start);
  }
  int Pages() const { return static_cast<int>(form.VSP.Document().pages.size()); }
  // The document's lines, pages parted like lines.
  std::vector<std::string> Lines() const {
    std::vector<std::string> lines;
    const std::string text = Text();
    size_t start = 0;
    while (start < text.size()) {
      size_t end = text.find_first_of("\n\f", start);
      if (end == std::string::npos) end = text.size();
      lines.push_back(text.substr(start, end - start));
      start = end + 1;
    }
    return lines;
  }
  // Every line holding `part`, in order.
  std::vector<std::string> LinesWith(const std::string& part) const {
    std::vector<std::string> found;
    for (const auto& l : Lines())
      if (l.find(part) != std::string::npos) found.push_back(l);
    return found;
  }
  // The lines holding `part` joined by " // " ("" when none).
  std::string LineWith(const std::string& part) const {
    std::string all;
    for (const auto& l : LinesWith(part)) all += (all.empty() ? "" : " // ") + l;
    return all;
  }
  // The line that follows the first line holding `part`.
  std::string LineAfter(const std::string& part) const {
    const auto lines = Lines();
    for (size_t i = 0; i + 1 < lines.size(); ++i)
      if (lines[i].find(part) != std::string::npos) return lines[i + 1];
    return "";
  }

  // Runs `section` `runs` times, each in a fresh document started `step`
  // twips further above the page's foot, and checks that every line
  // `heading` picks stands on the page of the line after it and every line
  // `closing` picks on the page of the line before. Returns in how many
  // runs a page broke right beside such a line, where keeping them together
  // had work to do.
  static bool StartsWith(const std::string& line, const char* start) {
    return line.rfind(start, 0) == 0;
  }
  template <class Section, class Heading, class Closing>
  int ExpectKeptTogether(double step, int runs, Section section, Heading heading,
                         Closing closing) {
    int kept = 0;
    for (int n = 1; n <= runs; ++n) {
      form.VSP.KillDoc();
      form.VSP.StartDoc();
      form.VSP.CurrentY(form.VSP.PageHeight() - form.VSP.MarginBottom() - Twips(step * n));
      section();
      const auto lines = PagedLines(Text());
      bool at_break = false;
      for (size_t i = 0; i < lines.size(); ++i) {
        const std::string& l = lines[i].second;
        SCOPED_TRACE("start " + std::to_string(step * n) + " twips above the foot, line '" + l +
                     "'");
        if (heading(l)) {
          EXPECT_TRUE(i + 1 < lines.size() && lines[i].first == lines[i + 1].first);
          at_break |= i > 0 && lines[i - 1].first != lines[i].first;
        }
        if (closing(l)) {
          EXPECT_TRUE(i > 0 && lines[i].first == lines[i - 1].first);
          at_break |= i + 1 < lines.size() && lines[i + 1].first != lines[i].first;
        }
      }
      kept += at_break;
    }
    return kept;
  }

  // Points the component at a fresh preview form, which the test keeps
  // to read: a report run next starts a document of its own there.
  PreviewForm& FreshForm() {
    PreviewForm& fresh = fresh_forms_.emplace_back();
    fresh.SetNotifier([](const std::string&) {});
    reports.SetPrintPreview(&fresh);
    return fresh;
  }

  // Before the component, which may point at one of them until it goes.
  std::list<PreviewForm> fresh_forms_;
  PreviewForm form;
  host::RecordingHost host;
  clsReports reports;
  std::vector<uint8_t> progress;
};

// The ledger rows: what the receivables, statement and invoice reports read
// besides the rows above: providers, payment types, treatment lines with
// their providers and the allocations of payments to lines.
//
// Today is Friday 2026-11-20. Added to the account rows:
//
// Employees: 1 Moreau, Anne; 2 Chen, Paul; 3 Okafor, Ben.
// Payment types 1 Cash, 2 Cheque, 3 Insurance: none an adjustment.
//
// Invoices of patient 1 (101-105) and the new 106 have provider 1:
//   106 p1 2026-10-21 (exactly 30 days ago)  25.00  complete
// Invoices of Seamus (patient 6), provider 2:
//   601 2026-09-06 (75 days ago)  100.00                 complete
//   602 2026-11-01                120.00 / final 100.00  complete
//   603 (no date)                  30.00                 Complete 0
// Payment 611 p6, 40 on 602 (11-05), cheque 11-05, provider 2.
// Payment 221 (Marc, 10.0050 on account) was refunded in full on 11-10.
// Payment 262 p6, 10 with a 15 share on 161 (10-01): applied beyond its value.
//
// Treatment lines of patient 1 (Cost / PatientCost / PrimaryInsCost,
// Status, EntryDate, line provider):
//   1 inv 101  120 / 48 / 72   Complete 09-10  prov 1
//   2 inv 101   80 / 32 / 48   Complete 09-10  prov 1
//   3 inv 102  150 / 150 / 0   Complete 10-05  prov 1
//   4 inv 105   60 /  0 / 50   Complete 10-21  prov 2   (D - 30)
//   5 inv 104  300 / 300 / 0   Planned  11-15  prov 1   (never a charge)
//   6 inv 103   90 / 90 / 0    Complete 10-20  prov 2   (D - 31)
// Allocations to lines (payment, line, amount, applied):
//   201 -> 1 48, 201 -> 2 32 (09-15); 202 -> 1 72, 202 -> 2 48 (10-01);
//   203 -> 3 150 (10-06). Payment 202 names insurer 5 (InsuranceID).
// Invoice 101 and 105 are overseen by employee 3.
// Patient 7 Zoe Zero: only a cheque entered 11-19 dated 12-05, 50.
inline const char* kLedgerRows = R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName) VALUES
 (1, 'Moreau', 'Anne', 'Moreau, Anne'), (2, 'Chen', 'Paul', 'Chen, Paul'),
 (3, 'Okafor', 'Ben', 'Okafor, Ben');
INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?], OfficePayment) VALUES
 (1, 'Cash', 0, 0, 0), (2, 'Cheque', 0, 0, 0), (3, 'Insurance', 0, 0, 0);

UPDATE Invoices SET ProviderID = 1 WHERE PatientID = 1;
UPDATE Invoices SET OverseerID = 3 WHERE ID IN (101, 105);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Complete?], InvoiceTotal,
  InvoiceFinalTotal) VALUES
 (106, 1006, 1, 1, '2026-10-21 00:00:00', 1, 25, NULL),
 (601, 1601, 6, 2, '2026-09-06 00:00:00', 1, 100, NULL),
 (602, 1602, 6, 2, '2026-11-01 00:00:00', 1, 120, 100),
 (603, 1603, 6, 2, NULL, 0, 30, NULL);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (611, 6, 1, 2, 40, 40, 0, '2026-11-05 00:00:00', '2026-11-05 00:00:00', 0),
 (262, 6, 1, 1, 10, 15, 0, '2026-10-01 00:00:00', '2026-10-01 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (61, 611, 602, 40, '2026-11-05 00:00:00'),
 (62, 262, 161, 15, '2026-10-01 00:00:00');
UPDATE InvoicePayments SET RefundAmount = 10.005, RefundDate = '2026-11-10 00:00:00' WHERE ID = 221;
UPDATE InvoicePayments SET InsuranceID = 5 WHERE ID = 202;

UPDATE InvoiceDetails SET ProviderID = 1;
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, PrimaryInsCost,
  SecondaryInsCost, TertiaryInsCost, Status, [Date], EntryDate, ProviderID) VALUES
 (4, 105, '01202', 60, 0, 50, 0, 0, 'Complete', '2026-10-21 00:00:00', '2026-10-21 00:00:00', 2),
 (5, 104, '27211', 300, 300, 0, 0, 0, 'Planned', '2026-11-15 00:00:00', '2026-11-15 00:00:00', 1),
 (6, 103, '23111', 90, 90, 0, 0, 0, 'Complete', '2026-10-20 00:00:00', '2026-10-20 00:00:00', 2);
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (201, 1, 1, 48, '2026-09-15 00:00:00'), (201, 2, 1, 32, '2026-09-15 00:00:00'),
 (202, 1, 1, 72, '2026-10-01 00:00:00'), (202, 2, 1, 48, '2026-10-01 00:00:00'),
 (203, 3, 1, 150, '2026-10-06 00:00:00');

INSERT INTO Patient (ID, FirstName, LastName, FullName) VALUES (7, 'Zoe', 'Zero', 'Zero, Zoe');
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (271, 7, 2, 1, 50, 0, 50, '2026-11-19 00:00:00', '2026-12-05 00:00:00', 0);
)sql";

// The practice with its ledger rows, and the component wired to it: what
// the account and receivables report tests run on.
class LedgerTest : public AccountReportTest {
 protected:
  void SetUp() override { SetUpLedger(""); }
  // The practice with its ledger rows and `more` added (SQLite text); false
  // when the test was skipped or failed on the way.
  bool SetUpLedger(const std::string& more) {
    return SetUpReports(std::string(kLedgerRows) + more);
  }
  // As SetUpLedger, with offices 1 "Harbour Dental" and 2 (Claire's), and
  // the component printing for office 1: what the letters to patients
  // (statements, invoices, receipts) start from.
  bool SetUpLetters(const std::string& more) {
    if (!SetUpLedger("INSERT INTO OfficeInformation (ID, Name) VALUES (1, 'Harbour Dental'), "
                     "(2, 'Harbour Dental West');" +
                     more))
      return false;
    reports.OfficeID = 1;
    return true;
  }
  // When `id` was last sent a statement; NULL when never.
  Variant LastStatementOf(int32_t id) {
    db::Recordset rs;
    rs.Open("SELECT LastStatement FROM Patient WHERE ID = " + std::to_string(id), conn_);
    return rs[0L].Value();
  }
};

}  // namespace orv::testing
