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
  const std::string path = bench::WriteBenchPractice("labels", patients, 11);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  clsReports& reports = run.reports;
  auto time = [&](const char* name, const std::function<void()>& body) { run.Time(name, body); };
  time("rptMailingLabels", [&] { reports.rptMailingLabels("0"); });
  time("rptReActivationLetter", [&] { reports.rptReActivationLetter("0", "Demo Dental", "Demo Dental"); });
  (void)conn;

  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
