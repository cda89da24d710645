// The time of the period-closing sections on a demo practice: the detailed
// analysis of a month in both payment readings, the summary analysis of
// the month for the practice, the income by provider and the practice
// analysis of the month beside the year before. Prints seconds
// per run, the share spent inside SQLite, the pages, and the slowest
// statements of the detailed analysis.
//
//   bench_closing [patients=20000]
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "bench_practice.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const std::string path = bench::WriteBenchPractice("closing", patients);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  host::RecordingHost& host = run.host;
  clsReports& reports = run.reports;

  // Every member of staff, as a closing run names the chosen providers.
  std::string providers;
  for (int id = 2; id <= 15; ++id) {
    providers += (providers.empty() ? "" : " OR ") + std::string("ProviderID = ") + std::to_string(id);
  }
  const DateTime start = DateTime::FromParts(2026, 10, 1);
  const DateTime end = DateTime::FromParts(2026, 10, 31);

  std::map<std::string, SqlClock::duration> statements;
  auto time = [&](const char* name, const std::function<void()>& run, bool by_statement = false) {
    statements.clear();
    g_by_statement = by_statement ? &statements : nullptr;
    const auto sql0 = g_sql_time;
    const auto t0 = std::chrono::steady_clock::now();
    run();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    g_by_statement = nullptr;
    std::printf("%-34s %8.3f s  SQL %7.3f s (%3.0f%%)  %4d pages  %zu messages\n", name, s, sql,
                s > 0 ? 100 * sql / s : 0.0, form.VSP.PageCount(), host.messages.size());
    if (by_statement) PrintSlowestStatements(statements);
  };
  auto section = [&](const std::function<void()>& run) {
    return [&, run] {
      form.VSP.StartDoc();
      run();
      form.VSP.EndDoc();
    };
  };
  time("srptDetailedAnalysis allocated", section([&] {
         reports.srptDetailedAnalysis(start, end, 0, "bench", providers, true);
       }),
       true);
  time("srptDetailedAnalysis all payments", section([&] {
         reports.srptDetailedAnalysis(start, end, 0, "bench", providers, false);
       }),
       true);
  time("srptSummaryAnalysis all payments", section([&] {
         reports.srptSummaryAnalysis(start, end, "", 0, "Practice", false);
       }),
       true);
  time("rptIncomeByProvider", [&] { reports.rptIncomeByProvider(start, end, providers, false, "bench"); });
  // Free units are counted per provider and day in both years: the office
  // of the workstation must be set for its unit length.
  reports.OfficeID = 1;
  time("rptDayEndSummary", [&] { reports.rptDayEndSummary(start, end, "bench"); }, true);

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
