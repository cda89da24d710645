// Reports on a server while the practice keeps working: other sessions add
// invoices and payments as fast as they can while the receivables reports
// run. Each report reads one moment of the database, so its totals are the
// sums of the rows it printed, to the cent.
#include <gtest/gtest.h>
#include <libpq-fe.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <regex>
#include <sstream>
#include <thread>

#include "common/currency.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/db/copy_database.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/practice/demo_practice.h"
#include "support/postgres.h"
#include "support/shell.h"

namespace orv {
namespace {

using testing::FreshPgDatabase;
using testing::ServerExec;

// One busy moment at the desk, in one transaction: a copy of a random
// invoice with its lines for the same patient, and a copy of a random
// payment with its allocations.
constexpr const char* kBusyDesk = R"SQL(
CREATE FUNCTION busy_desk() RETURNS void LANGUAGE plpgsql AS $$
DECLARE inv integer; pay integer; new_inv integer; new_pay integer;
BEGIN
  SELECT "ID" INTO inv FROM "Invoices" ORDER BY random() LIMIT 1;
  CREATE TEMP TABLE IF NOT EXISTS inv_row AS SELECT * FROM "Invoices" WITH NO DATA;
  CREATE TEMP TABLE IF NOT EXISTS det_rows AS SELECT * FROM "InvoiceDetails" WITH NO DATA;
  CREATE TEMP TABLE IF NOT EXISTS pay_row AS SELECT * FROM "InvoicePayments" WITH NO DATA;
  CREATE TEMP TABLE IF NOT EXISTS alloc_rows AS SELECT * FROM "InvoicePaymentAllocations" WITH NO DATA;
  TRUNCATE inv_row, det_rows, pay_row, alloc_rows;
  new_inv := nextval(pg_get_serial_sequence('"Invoices"', 'ID'));
  INSERT INTO inv_row SELECT * FROM "Invoices" WHERE "ID" = inv;
  UPDATE inv_row SET "ID" = new_inv;
  INSERT INTO "Invoices" SELECT * FROM inv_row;
  INSERT INTO det_rows SELECT * FROM "InvoiceDetails" WHERE "InvoiceID" = inv;
  UPDATE det_rows SET "ID" = nextval(pg_get_serial_sequence('"InvoiceDetails"', 'ID')), "InvoiceID" = new_inv;
  INSERT INTO "InvoiceDetails" SELECT * FROM det_rows;
  SELECT "ID" INTO pay FROM "InvoicePayments" ORDER BY random() LIMIT 1;
  new_pay := nextval(pg_get_serial_sequence('"InvoicePayments"', 'ID'));
  INSERT INTO pay_row SELECT * FROM "InvoicePayments" WHERE "ID" = pay;
  UPDATE pay_row SET "ID" = new_pay, "Date" = "Date" + interval '1 minute';
  INSERT INTO "InvoicePayments" SELECT * FROM pay_row;
  INSERT INTO alloc_rows SELECT * FROM "InvoicePaymentAllocations" WHERE "InvoicePaymentID" = pay;
  UPDATE alloc_rows SET "InvoicePaymentID" = new_pay;
  INSERT INTO "InvoicePaymentAllocations" SELECT * FROM alloc_rows;
END $$;
)SQL";

// "$1,397.26" / "-$3.00" in a line of report text, in order.
std::vector<Currency> Amounts(const std::string& line) {
  static const std::regex money(R"((-?)\$([0-9,]+\.[0-9]{2}))");
  std::vector<Currency> out;
  for (auto it = std::sregex_iterator(line.begin(), line.end(), money); it != std::sregex_iterator(); ++it) {
    std::string digits;
    for (char c : (*it)[2].str())
      if (c != ',') digits += c;
    Currency c = Currency::FromDecimalText(digits);
    out.push_back((*it)[1].str().empty() ? c : -c);
  }
  return out;
}

std::vector<std::string> Lines(const std::string& text) {
  std::vector<std::string> out;
  std::string line;
  std::istringstream in(text);
  while (std::getline(in, line)) {
    line.erase(std::remove(line.begin(), line.end(), '\f'), line.end());
    out.push_back(line);
  }
  return out;
}

class BusyPractice : public ::testing::Test {
 protected:
  void SetUp() override {
    if (testing::TestServerUrl().empty())
      GTEST_SKIP() << "ORVENDA_TEST_PG is not set: no PostgreSQL server to test against";
    Clock::SetFixed(DateTime::FromParts(2026, 11, 23));
    file_ = testing::TempPath("orv-busy-", "demo.db");
    std::filesystem::remove(file_);
    practice::DemoOptions opt;
    opt.patients = 80;
    opt.seed = 11;
    practice::WriteDemoPracticeFile(file_, opt);
    db_ = std::make_unique<FreshPgDatabase>();
    db::CopyDatabase(file_, db_->url());
    ServerExec(kBusyDesk, db_->url());
    settings_ = file_ + ".ini";
    host::SetAppSettings(host::SettingsStore(settings_));
  }
  void TearDown() override {
    Clock::UseSystem();
    db_.reset();
    std::filesystem::remove(file_);
    std::filesystem::remove(settings_);
  }

  static void Attach(clsReports& reports, db::Connection& conn, PreviewForm& form, host::RecordingHost& host) {
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.SetHostServices(&host);
  }

  // Runs `report` on its own connection inside the report's snapshot, as
  // the host does, and returns the document's text. With `between`, the
  // report runs twice in the one snapshot, `between` running in the middle.
  std::vector<std::string> Run(const std::function<void(clsReports&)>& report,
                               const std::function<void()>& between = nullptr) {
    db::Connection conn(db_->url());
    std::vector<std::string> texts;
    db::Snapshot snapshot(conn);
    for (int pass = 0; pass < (between ? 2 : 1); ++pass) {
      if (pass) between();
      PreviewForm form;
      host::RecordingHost host;
      clsReports reports;
      Attach(reports, conn, form, host);
      report(reports);
      for (const auto& m : host.messages) ADD_FAILURE() << "message: " << m.prompt;
      texts.push_back(DocumentText(form.VSP.Document()));
    }
    return texts;
  }

  int64_t Count(const char* table) {
    const std::string sql = std::string("SELECT COUNT(*) FROM \"") + table + "\"";
    return std::stoll(testing::ServerSession(db_->url()).Column(sql)[0]);
  }

  std::string file_, settings_;
  std::unique_ptr<FreshPgDatabase> db_;
};

TEST_F(BusyPractice, ReceivablesBalanceWhileOthersWrite) {
  std::atomic<bool> stop{false};
  std::atomic<int> written{0};
  std::vector<std::thread> desks;
  for (int k = 0; k < 2; ++k) {
    desks.emplace_back([&] {
      PGconn* c = PQconnectdb(db_->url().c_str());
      PQsetNoticeProcessor(c, [](void*, const char*) {}, nullptr);
      while (!stop) {
        PGresult* r = PQexec(c, "SELECT busy_desk()");
        if (PQresultStatus(r) == PGRES_TUPLES_OK) ++written;
        PQclear(r);
      }
      PQfinish(c);
    });
  }
  const int64_t invoices_before = Count("Invoices");
  auto families_report = [](clsReports& r) { r.rptFamiliesWithABalance("desk"); };

  // Within one snapshot the practice stands still for the report, however
  // much the desks write meanwhile; a later run sees their work.
  auto wait_for_writes = [&] {
    int seen = written;
    while (written < seen + 5) std::this_thread::sleep_for(std::chrono::milliseconds(5));
  };
  std::vector<std::string> twice = Run(families_report, wait_for_writes);
  EXPECT_EQ(twice[0], twice[1]);
  wait_for_writes();
  EXPECT_NE(Run(families_report)[0], twice[0]);

  for (int round = 0; round < 3; ++round) {
    // Families with a balance: each family's figures are the sums of its
    // members' lines, and the office totals the sums of the families'.
    std::string families = Run(families_report)[0];
    std::vector<Currency> family(4), members(4), office(4), office_sum(4);
    bool in_family = false, saw_office = false;
    int families_seen = 0;
    auto close_family = [&] {
      if (!in_family) return;
      for (int i = 0; i < 4; ++i) EXPECT_EQ(members[i], family[i]) << "family column " << i << "\n" << families;
      in_family = false;
    };
    for (const std::string& line : Lines(families)) {
      std::vector<Currency> a = Amounts(line);
      if (line.rfind("Office Totals:", 0) == 0) {
        close_family();
        ASSERT_EQ(a.size(), 4u) << line;
        office = a;
        saw_office = true;
      } else if (a.size() == 4 && line.rfind("  ", 0) == 0) {
        for (int i = 0; i < 4; ++i) members[i] += a[i];
      } else if (a.size() == 4) {
        close_family();
        family = a;
        members.assign(4, Currency());
        for (int i = 0; i < 4; ++i) office_sum[i] += a[i];
        in_family = true;
        ++families_seen;
      }
    }
    close_family();
    ASSERT_TRUE(saw_office) << families;
    EXPECT_GT(families_seen, 0);
    for (int i = 0; i < 4; ++i) EXPECT_EQ(office_sum[i], office[i]) << "office column " << i;

    // Accounts receivable: each provider's patient row is its four age
    // classes, and the block's total line is the patient plus the insurer
    // row.
    std::string receivable = Run([](clsReports& r) { r.rptAccountsReceivable("", "", "", "desk"); })[0];
    std::vector<Currency> patient, insurer;
    int blocks = 0;
    for (const std::string& line : Lines(receivable)) {
      std::vector<Currency> a = Amounts(line);
      if (line.find(" P: ") != std::string::npos && a.size() >= 5) {
        patient = a;
        EXPECT_EQ(a[0], a[1] + a[2] + a[3] + a[4]) << line;
      } else if (line.rfind("I: ", 0) == 0 && a.size() == 5) {
        insurer = a;
      } else if (line.rfind("Total: ", 0) == 0 && a.size() == 5) {
        ASSERT_EQ(patient.size() >= 5 && insurer.size() == 5, true) << receivable;
        for (int i = 0; i < 5; ++i) EXPECT_EQ(a[i], patient[i] + insurer[i]) << line;
        ++blocks;
      }
    }
    EXPECT_GT(blocks, 0) << receivable;
  }
  stop = true;
  for (auto& t : desks) t.join();
  // The desks did work while the reports ran.
  EXPECT_GT(written.load(), 0);
  EXPECT_GT(Count("Invoices"), invoices_before);
}

// The server drops the desk's session between two reports: the next report
// of a component meets the fault inside its own error handling (a trapped
// report shows its message; one without a trap throws the database error
// to the host), nothing crashes, and nothing is left half begun: a new
// connection runs the report again.
TEST_F(BusyPractice, ServerGoneBetweenTwoReports) {
  db::Connection conn(db_->url());
  PreviewForm form;
  host::RecordingHost host;
  clsReports reports;
  Attach(reports, conn, form, host);
  const DateTime today = DateTime::FromParts(2026, 11, 23);
  reports.rptPatientsWithABalance("desk", today, "");
  ASSERT_TRUE(host.messages.empty());

  ServerExec("SELECT pg_terminate_backend(pid) FROM pg_stat_activity WHERE datname = '" + db_->name() +
             "' AND pid <> pg_backend_pid()");
  reports.rptPatientsWithABalance("desk", today, "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("An error has occurred in sub srptPatientsWithaBalance"), std::string::npos);
  EXPECT_NE(host.messages[0].prompt.find("PostgreSQL"), std::string::npos) << host.messages[0].prompt;
  EXPECT_THROW(reports.rptFamiliesWithABalance("desk"), ReportError);

  db::Connection again(db_->url());
  PreviewForm form2;
  Attach(reports, again, form2, host);
  reports.rptFamiliesWithABalance("desk");
  EXPECT_EQ(host.messages.size(), 1u);
  EXPECT_GT(form2.VSP.PageCount(), 0);
}

}  // namespace
}  // namespace orv
