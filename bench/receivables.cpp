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
  const std::string path = bench::WriteBenchPractice("receivables", patients, 11);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  clsReports& reports = run.reports;
  auto time = [&](const char* name, const std::function<void()>& body) { run.Time(name, body); };
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
