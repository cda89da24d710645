// A small demo practice on the engine under test (support/test_engine.h), a
// component wired to a recording host and a preview form writing nowhere:
// what the report tests run against.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/practice/demo_practice.h"
#include "support/test_engine.h"
#include <sqlite3.h>

namespace orv::testing {

// One demo practice per test program, made on first use (the same seed and
// day every time, so figures are stable) and removed when the program ends:
// CTest starts a program per test, and each would leave its file behind.
inline const std::string& DemoPracticePath() {
  struct DemoFile {
    std::string path;
    ~DemoFile() {
      std::error_code ec;
      std::filesystem::remove(path, ec);
    }
  };
  static const DemoFile demo{[] {
    std::string p = (std::filesystem::temp_directory_path() /
                     ("orv-reports-demo-" + std::to_string(::getpid()) + ".db"))
                        .string();
    practice::DemoOptions opt;
    opt.patients = 60;
    opt.seed = 7;
    practice::WriteDemoPracticeFile(p, opt);
    return p;
  }()};
  return demo.path;
}

class ReportTest : public ::testing::Test {
 protected:
  void SetUp() override { SetUpPractice(""); }

  // The demo practice with `rows` added (SQLite text, run on the file): what
  // every test of a fixture starts from. A fixture's own rows go here rather
  // than through RawExec, so that on the server all its tests clone one
  // template instead of each copying the practice again.
  void SetUpPractice(const std::string& rows) {
    ORV_REQUIRE_TEST_ENGINE();
    Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
    // Each test works on its own copy, so a test that changes rows cannot
    // change what another one sees.
    db_file = (std::filesystem::temp_directory_path() /
               ("orv-reports-test-" + std::to_string(::getpid()) + ".db"))
                  .string();
    std::filesystem::copy_file(DemoPracticePath(), db_file,
                               std::filesystem::copy_options::overwrite_existing);
    if (!rows.empty()) {
      std::string error = RunOnFile(rows);
      ASSERT_EQ(error, "") << "the fixture's rows";
    }
    practice.Create(db_file, /*shared=*/true);
    db_url = practice.url();
    conn.Open(db_url);
    // A settings file of our own, so the person's real settings never leak
    // into a test.
    settings_file = (std::filesystem::temp_directory_path() /
                     ("orv-settings-" + std::to_string(::getpid()) + ".ini"))
                        .string();
    std::filesystem::remove(settings_file);
    host::SetAppSettings(host::SettingsStore(settings_file));
    // PrintDoc without a printer writes its PDF here, not in the working
    // folder.
    form.SetPrintFile(db_file + ".printed.pdf");
    form.SetNotifier([](const std::string&) {});
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.SetHostServices(&host);
    reports.Progress = [this](uint8_t& p) { progress.push_back(p); };
  }
  void TearDown() override {
    Clock::UseSystem();
    conn.Close();
    if (!settings_file.empty()) std::filesystem::remove(settings_file);
    if (!db_file.empty()) {
      std::filesystem::remove(db_file);
      std::filesystem::remove(db_file + ".printed.pdf");
    }
  }

  // Changes the test's database behind the layer's back, in SQLite's own
  // dialect (for rows the reports never write, such as binary test data).
  // On the server the edited file is copied over the test's database.
  void RawExec(const std::string& sql) {
    std::string error = RunOnFile(sql);
    ASSERT_EQ(error, "");
    practice.Refresh();
  }

  std::string Text() const { return DocumentText(form.VSP.Document()); }
  bool Has(const std::string& what) const { return Text().find(what) != std::string::npos; }
  // The first value of the first row `sql` reads from the test's database.
  Variant ValueOf(const std::string& sql) {
    db::Recordset rs;
    rs.Open(sql, conn);
    return rs[0L].Value();
  }
  // The first value of the first row `sql` reads, as text; "" for no row.
  std::string TextOf(const std::string& sql) {
    db::Recordset rs;
    rs.Open(sql, conn);
    return rs.Eof() ? "" : CStr(rs[0L].Value());
  }
  std::string PageText(int page) const {
    std::string all = Text();
    size_t start = 0;
    for (int p = 1; p < page; ++p) start = all.find('\f', start) + 1;
    size_t end = all.find('\f', start);
    return all.substr(start, end == std::string::npos ? std::string::npos : end - start);
  }

  // First, so that the server's database is dropped after every connection
  // to it has gone.
  PracticeDatabase practice;
  db::Connection conn;
  PreviewForm form;
  host::RecordingHost host;
  clsReports reports;
  std::vector<uint8_t> progress;
  std::string settings_file;
  std::string db_file;
  std::string db_url;  // what conn opened: the file, or the test's server database

 private:
  // Runs SQLite text on the test's file; SQLite's message when it fails.
  std::string RunOnFile(const std::string& sql) {
    sqlite3* h = nullptr;
    if (sqlite3_open(db_file.c_str(), &h) != SQLITE_OK) {
      std::string msg = sqlite3_errmsg(h);
      sqlite3_close(h);
      return "cannot open " + db_file + ": " + msg;
    }
    char* err = nullptr;
    int rc = sqlite3_exec(h, sql.c_str(), nullptr, nullptr, &err);
    std::string msg = rc == SQLITE_OK ? "" : err ? err : "error " + std::to_string(rc);
    sqlite3_free(err);
    sqlite3_close(h);
    return msg;
  }
};

}  // namespace orv::testing
