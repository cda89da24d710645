// The time of the compensation reports on a demo practice: the first
// hygienist's monitor over a year (about 27 statements a day), payroll for
// every employee over a year, and the specialist analysis of every
// producing employee. Prints seconds per report, the share of it spent
// inside SQLite and the number of statements prepared.
//
//   bench_compensation [patients=5000]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "bench_practice.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/practice/employee_types.h"
#include "sql_time.h"

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 5000;
  const std::string path = bench::WriteBenchPractice("compensation", patients);
  std::fflush(stdout);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  host::RecordingHost& host = run.host;
  clsReports& reports = run.reports;
  reports.OfficeID = 1;

  // Every employee for payroll; the first hygienist for the monitor; every
  // producing employee for the specialist analysis.
  std::string everyone, producers;
  int32_t hygienist = 0;
  {
    clsCommonFunctions cf;
    db::Recordset rs;
    rs.Open("SELECT ID, TypeID FROM Employees ORDER BY ID", conn, db::adOpenForwardOnly, db::adLockReadOnly,
            db::adCmdText);
    while (!rs.Eof()) {
      const int32_t id = static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value()));
      const int32_t type = static_cast<int32_t>(cf.ReturnVal(rs["TypeID"].Value()));
      if (id > 1) everyone += (everyone.empty() ? "ID = " : " OR ID = ") + std::to_string(id);
      if (type == practice::kTypeHygienist && hygienist == 0) hygienist = id;
      if (type >= practice::kTypeSpecialist || type == practice::kTypeDentist || type == practice::kTypeAssociate)
        producers += (producers.empty() ? "ID = " : " OR ID = ") + std::to_string(id);
      rs.MoveNext();
    }
  }

  auto time = [&](const char* name, const std::function<void()>& run) {
    const auto sql0 = g_sql_time;
    const long prepares0 = g_prepares;
    const auto t0 = std::chrono::steady_clock::now();
    run();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    std::printf("%-28s %8.3f s  %3.0f%% in SQL  %6ld statements  %4d pages  %zu messages\n", name, s,
                s > 0 ? 100 * sql / s : 0.0, g_prepares - prepares0, form.VSP.PageCount(),
                host.messages.size());
  };
  const DateTime start = DateTime::FromParts(2025, 11, 1), end = DateTime::FromParts(2026, 10, 31);
  time("rptYearlyEmployeeSummary", [&] { reports.rptYearlyEmployeeSummary(hygienist, start, end, 50); });
  time("rptPayroll (everyone)", [&] { reports.rptPayroll(everyone, start, end, "bench"); });
  time("rptSpecialistYearlySummary", [&] {
    reports.rptSpecialistYearlySummary(producers, "Producers", start, end);
  });

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
