// The month-end package with every section on, one month of a demo
// practice, without and with the receivables reconciliation at its end:
// wall time, the share spent inside SQLite, pages; then the
// reconciliation's parts alone (the three lists' figures, the patient
// balances of every patient and the known causes) to show where its time
// goes, with the slowest statements.
//
//   bench_month_end [patients=20000]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "bench_practice.h"
#include "common/datetime.h"
#include "platform/host/settings.h"
#include "receivables/reconciliation.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const std::string path = bench::WriteBenchPractice("month_end", patients);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  // A settings store of the benchmark's own: the person's settings never
  // decide what is measured.
  const std::string settings = path + ".ini";
  host::SetAppSettings(host::SettingsStore(settings));

  bench::BenchComponent run(path);
  clsReports& reports = run.reports;
  reports.OfficeID = 1;
  std::string providers;
  for (int id = 2; id <= 15; ++id) {
    providers +=
        (providers.empty() ? "" : " OR ") + std::string("ProviderID = ") + std::to_string(id);
  }
  const DateTime start = DateTime::FromParts(2026, 10, 1);
  const DateTime end = DateTime::FromParts(2026, 10, 31);
  auto month_end = [&] {
    reports.rptMonthEndReport(true, true, true, true, true, true, true, start, end, 0, "bench",
                              providers, false, true, true, true, true, "", true);
  };

  host::AppSettings().Override("Settings", "MonthEndReconciliation", "False");
  run.Time("rptMonthEndReport", month_end);
  host::AppSettings().Override("Settings", "MonthEndReconciliation", "True");
  run.Time("with the reconciliation", month_end);

  // The reconciliation alone, statement by statement.
  std::map<std::string, SqlClock::duration> statements;
  g_by_statement = &statements;
  const auto sql0 = g_sql_time;
  const long steps0 = g_steps;
  const auto t0 = std::chrono::steady_clock::now();
  const receivables::ReconciliationFigures f = receivables::ReconcileReceivables(reports, end);
  const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
  g_by_statement = nullptr;
  std::printf("%-28s %8.3f s  %3.0f%% in SQL  %ld steps  %zu patients differ  %zu causes\n",
              "ReconcileReceivables", s, s > 0 ? 100 * sql / s : 0.0, g_steps - steps0,
              f.differences.size(), f.causes.size());
  std::vector<std::pair<SqlClock::duration, std::string>> slow;
  for (const auto& [text, spent] : statements) slow.emplace_back(spent, text);
  std::sort(slow.rbegin(), slow.rend());
  for (size_t i = 0; i < slow.size() && i < 4; ++i) {
    std::printf("    %7.3f s  %.110s...\n", std::chrono::duration<double>(slow[i].first).count(),
                slow[i].second.c_str());
  }

  run.conn.Close();
  std::filesystem::remove(path);
  std::filesystem::remove(settings);
  return 0;
}
