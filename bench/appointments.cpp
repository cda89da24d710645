// The time of the appointment reports on a demo practice: every section of
// the appointment set over a year (the booking diagnostics reading each
// provider's days one by one), and the appointments of every patient on a
// larger practice. Prints seconds, pages and the share spent inside SQLite.
//
//   bench_appointments [set_patients=5000] [by_patient_patients=20000]
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <functional>
#include <string>

#include "bench_practice.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "sql_time.h"

namespace {

using namespace orv;

// Runs `body` on a fresh demo practice of `patients`.
void OnPractice(const char* name, int patients, const std::function<void(clsReports&, PreviewForm&)>& body) {
  const std::string path = bench::WriteBenchPractice(name, patients);
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  bench::BenchComponent run(path);
  db::Connection& conn = run.conn;
  PreviewForm& form = run.form;
  clsReports& reports = run.reports;
  reports.OfficeID = 1;
  body(reports, form);
  conn.Close();
  std::filesystem::remove(path);
}

void Time(PreviewForm& form, const char* name, const std::function<void()>& run) {
  const auto sql0 = g_sql_time;
  const long prepares0 = g_prepares;
  const auto t0 = std::chrono::steady_clock::now();
  run();
  const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
  const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
  std::printf("%-34s %8.3f s  %3.0f%% in SQL  %5d pages  %7ld statements prepared\n", name, s,
              s > 0 ? 100 * sql / s : 0.0, form.VSP.PageCount(), g_prepares - prepares0);
}

}  // namespace

int main(int argc, char** argv) {
  const int set_patients = argc > 1 ? std::atoi(argv[1]) : 5000;
  const int by_patient = argc > 2 ? std::atoi(argv[2]) : 20000;
  const DateTime start = DateTime::FromParts(2025, 11, 21), end = DateTime::FromParts(2026, 11, 20);
  OnPractice("appointments_set", set_patients, [&](clsReports& r, PreviewForm& form) {
    Time(form, "rptAppointmentReports, all, a year", [&] {
      r.rptAppointmentReports(true, true, true, true, true, true, true, start, end, "bench", "", 0);
    });
    Time(form, "  of it srptBookingDiagnostics", [&] {
      form.VSP.StartDoc();
      r.srptBookingDiagnostics(start, end);
      form.VSP.EndDoc();
    });
  });
  OnPractice("appointments_by_patient", by_patient, [&](clsReports& r, PreviewForm& form) {
    Time(form, "rptAppointmentsByPatient", [&] { r.rptAppointmentsByPatient("", "bench"); });
  });
  return 0;
}
