// The time of the label sheet and the reactivation letters on a large
// practice: the sheet is one statement walked into 30 text boxes a page;
// the letters read each patient, the patient's last visit and the doctor,
// so their time grows with the patients one statement at a time. Prints
// seconds per report, the share spent inside SQLite and the pages.
//
//   bench_labels [patients=20000]
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "platform/practice/demo_practice.h"
#include "bench_practice.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("orvenda_bench_labels_" + std::to_string(::getpid()) + ".db"))
                               .string();
  std::filesystem::remove(path);
  practice::DemoOptions options;
  options.patients = patients;
  options.seed = 11;
  const practice::DemoSummary summary = practice::WriteDemoPracticeFile(path, options);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  host::RecordingHost& host = run.host;
  clsReports& reports = run.reports;

  std::printf("practice: %lld patients, %lld invoices, %lld payments\n",
              static_cast<long long>(summary.patients), static_cast<long long>(summary.invoices),
              static_cast<long long>(summary.payments));
  auto time = [&](const char* name, const std::function<void()>& run) {
    const auto sql0 = g_sql_time;
    const auto t0 = std::chrono::steady_clock::now();
    run();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    std::printf("%-28s %8.3f s  %3.0f%% in SQL  %3d pages  %zu messages\n", name, s,
                s > 0 ? 100 * sql / s : 0.0, form.VSP.PageCount(), host.messages.size());
  };
  time("rptMailingLabels", [&] { reports.rptMailingLabels("0"); });
  time("rptReActivationLetter", [&] { reports.rptReActivationLetter("0", "Demo Dental", "Demo Dental"); });
  (void)conn;

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
