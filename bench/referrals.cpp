// The time of the referral reports on a demo practice: the summary of the
// referring dentists over a year (a count per dentist and its patients'
// invoices), the referral production summary over a year, and the alert
// pages of every provider with criteria (correlated counts per referring
// dentist). Prints seconds per run, the share spent inside SQLite, the pages
// and the slowest statements.
//
//   bench_referrals [patients=20000]
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
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  // A line at a time, so that a long run shows each figure as it comes.
  std::setvbuf(stdout, nullptr, _IOLBF, 0);
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const std::string path = bench::WriteBenchPractice("referrals", patients);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  PreviewForm& form = run.form;
  clsReports& reports = run.reports;
  reports.OfficeID = 1;
  // The demo's patients without a referring dentist are broken links the
  // production summary offers to repair. The bench answers No, as the
  // command line does by default: the practice stays as written, and the
  // alerts count the referred patients only (after a Yes, every patient
  // counts under the "No Referring" placeholder).
  run.host.answer = host::vbNo;
  const DateTime start = DateTime::FromParts(2025, 11, 21), end = DateTime::FromParts(2026, 11, 20);

  std::map<std::string, SqlClock::duration> statements;
  auto time = [&](const char* name, const std::function<void()>& body) {
    statements.clear();
    g_by_statement = &statements;
    const auto sql0 = g_sql_time;
    const long prepares0 = g_prepares;
    const auto t0 = std::chrono::steady_clock::now();
    body();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    g_by_statement = nullptr;
    std::printf("%-34s %8.3f s  SQL %7.3f s (%3.0f%%)  %4d pages  %6ld prepared  %zu messages\n", name, s, sql,
                s > 0 ? 100 * sql / s : 0.0, form.VSP.PageCount(), g_prepares - prepares0,
                run.host.messages.size());
    PrintSlowestStatements(statements);
  };
  auto section = [&](const std::function<void()>& body) {
    return [&, body] {
      form.VSP.StartDoc();
      body();
      form.VSP.EndDoc();
    };
  };

  time("srptReferringDentistSummary, year", section([&] { reports.srptReferringDentistSummary(start, end, 0); }));
  time("ReferralProductSumReport, year", [&] { reports.ReferralProductSumReport(start, end, "bench"); });

  // The alert page of every provider the practice gave criteria.
  std::vector<std::string> providers;
  {
    db::Recordset rs;
    rs.Open("SELECT DISTINCT EmployeeID FROM ReferralAlerts ORDER BY EmployeeID", run.conn);
    for (; !rs.Eof(); rs.MoveNext()) providers.push_back(CStr(rs[0L].Value()));
  }
  const std::string alerts = "srptReferralAlerts, " + std::to_string(providers.size()) + " providers";
  time(alerts.c_str(), section([&] {
         for (const std::string& id : providers) reports.srptReferralAlerts(id);
       }));

  run.conn.Close();
  std::filesystem::remove(path);
  return 0;
}
