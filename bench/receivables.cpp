// The time of the receivables reports on a demo practice: the provider
// list (two account-model queries per invoice), the practice list (one
// query of correlated subqueries), the patients with a balance (four
// account-model queries per open invoice) and the unapplied payments.
// Prints seconds per report, the share of it spent inside SQLite, and the
// size of the practice.
//
//   bench_receivables [patients=300]
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
  const int patients = argc > 1 ? std::atoi(argv[1]) : 300;
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("orvenda_bench_receivables_" + std::to_string(::getpid()) + ".db"))
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
  const DateTime end = DateTime::FromParts(2026, 11, 20);
  time("rptAccountsReceivable", [&] { reports.rptAccountsReceivable("", "", "", "bench"); });
  time("srptAccountReceivable", [&] {
    form.VSP.StartDoc();
    reports.srptAccountReceivable(end, 0, "", "bench");
    form.VSP.EndDoc();
  });
  time("rptPatientsWithABalance", [&] { reports.rptPatientsWithABalance("bench", end, ""); });
  time("rptUnAppliedPayments", [&] { reports.rptUnAppliedPayments(end, "bench"); });

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
