// The time of the production run with every section for a year, and of the
// provider summary and the hygiene company report for the same year, on a
// demo practice. Prints seconds per report, the share of it spent inside
// SQLite, and the pages.
//
//   bench_production [patients=20000]
#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include "bench_practice.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const std::string path = bench::WriteBenchPractice("production", patients);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  host::RecordingHost& host = run.host;
  clsReports& reports = run.reports;
  reports.OfficeID = 1;

  auto time = [&](const char* name, const std::function<void()>& run) {
    const auto sql0 = g_sql_time;
    std::map<std::string, SqlClock::duration> by_statement;
    g_by_statement = &by_statement;
    const auto t0 = std::chrono::steady_clock::now();
    run();
    g_by_statement = nullptr;
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    std::printf("%-36s %8.3f s  %8.3f s in SQL (%3.0f%%)  wall/SQL %.2f  %4d pages  %zu messages\n",
                name, s, sql, s > 0 ? 100 * sql / s : 0.0, sql > 0 ? s / sql : 0.0,
                form.VSP.PageCount(), host.messages.size());
    // The statements that took the most time, to see where the SQL goes.
    std::vector<std::pair<SqlClock::duration, std::string>> slowest;
    for (const auto& [sql, spent] : by_statement) slowest.emplace_back(spent, sql);
    std::sort(slowest.rbegin(), slowest.rend());
    for (size_t i = 0; i < slowest.size() && i < 2; ++i) {
      std::printf("    %6.3f s  %.110s\n", std::chrono::duration<double>(slowest[i].first).count(),
                  slowest[i].second.c_str());
    }
  };
  const DateTime start = DateTime::FromParts(2025, 11, 21);
  const DateTime end = DateTime::FromParts(2026, 11, 20);
  time("rptProductionReports all, entry", [&] {
    reports.rptProductionReports(true, true, true, true, true, true, start, end, 0, "bench", "",
                                 "", "");
  });
  time("rptProductionReports all, treatment", [&] {
    reports.rptProductionReports(true, true, true, true, true, true, start, end, 1, "bench", "",
                                 "", "");
  });
  time("ProductSumReport", [&] { reports.ProductSumReport(start, end, "bench"); });
  time("rptHygieneCompanyReport", [&] {
    reports.rptHygieneCompanyReport(start, end, "", "bench");
  });

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
