// A small demo practice on disk, a component wired to a recording host and a
// preview form writing nowhere: what the report tests run against.
#pragma once

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "platform/host/settings.h"
#include "platform/practice/demo_practice.h"
#include <sqlite3.h>

namespace orv::testing {

// One demo practice per test program, made on first use (the same seed and
// day every time, so figures are stable).
inline const std::string& DemoPracticePath() {
  static const std::string path = [] {
    std::string p = (std::filesystem::temp_directory_path() /
                     ("orv-reports-demo-" + std::to_string(::getpid()) + ".db"))
                        .string();
    practice::DemoOptions opt;
    opt.patients = 60;
    opt.seed = 7;
    practice::WriteDemoPracticeFile(p, opt);
    return p;
  }();
  return path;
}

class ReportTest : public ::testing::Test {
 protected:
  void SetUp() override {
    Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
    // Each test works on its own copy, so a test that changes rows cannot
    // change what another one sees.
    db_file = (std::filesystem::temp_directory_path() /
               ("orv-reports-test-" + std::to_string(::getpid()) + ".db"))
                  .string();
    std::filesystem::copy_file(DemoPracticePath(), db_file,
                               std::filesystem::copy_options::overwrite_existing);
    conn.Open(db_file);
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
    std::filesystem::remove(settings_file);
    conn.Close();
    std::filesystem::remove(db_file);
    std::filesystem::remove(db_file + ".printed.pdf");
  }

  // Changes the test's database behind the layer's back, in SQLite's own
  // dialect (for rows the reports never write, such as binary test data).
  void RawExec(const std::string& sql) {
    sqlite3* h = nullptr;
    ASSERT_EQ(sqlite3_open(db_file.c_str(), &h), SQLITE_OK);
    char* err = nullptr;
    int rc = sqlite3_exec(h, sql.c_str(), nullptr, nullptr, &err);
    std::string msg = err ? err : "";
    sqlite3_free(err);
    sqlite3_close(h);
    ASSERT_EQ(rc, SQLITE_OK) << msg;
  }

  std::string Text() const { return DocumentText(form.VSP.Document()); }
  std::string PageText(int page) const {
    std::string all = Text();
    size_t start = 0;
    for (int p = 1; p < page; ++p) start = all.find('\f', start) + 1;
    size_t end = all.find('\f', start);
    return all.substr(start, end == std::string::npos ? std::string::npos : end - start);
  }

  db::Connection conn;
  PreviewForm form;
  host::RecordingHost host;
  clsReports reports;
  std::vector<uint8_t> progress;
  std::string settings_file;
  std::string db_file;
};

}  // namespace orv::testing
