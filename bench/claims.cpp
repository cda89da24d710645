// The insurance billing list on a large practice, and a run of claim forms
// in one process as the front desk prints a day's claims, in English and
// then in French: seconds per form and the process's resident memory after
// the first and the last form, which must stay flat.
//
//   bench_claims [patients=20000] [forms=200]
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

#include "common/common_functions.h"
#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/practice/demo_practice.h"

namespace {

// Resident set size in kB, from /proc.
long ResidentKb() {
  std::ifstream status("/proc/self/status");
  std::string line;
  while (std::getline(status, line))
    if (line.rfind("VmRSS:", 0) == 0) return std::atol(line.c_str() + 6);
  return -1;
}

double Since(std::chrono::steady_clock::time_point t0) {
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
}

}  // namespace

int main(int argc, char** argv) {
  using namespace orv;
  const int patients = argc > 1 ? std::atoi(argv[1]) : 20000;
  const int forms = argc > 2 ? std::atoi(argv[2]) : 200;
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("orvenda_bench_claims_" + std::to_string(::getpid()) + ".db"))
                               .string();
  std::filesystem::remove(path);
  practice::DemoOptions options;
  options.patients = patients;
  options.seed = 5;
  auto t0 = std::chrono::steady_clock::now();
  const practice::DemoSummary summary = practice::WriteDemoPracticeFile(path, options);
  std::printf("practice: %lld patients, %lld invoices (%.1f s to write)\n",
              static_cast<long long>(summary.patients), static_cast<long long>(summary.invoices),
              Since(t0));
  Clock::SetFixed(DateTime::FromParts(2026, 11, 20, 10, 0, 0));

  db::Connection conn;
  conn.Open(path);
  PreviewForm form;
  form.SetNotifier([](const std::string&) {});
  // The printed forms land here, each over the last.
  form.SetPrintFile(path + ".printed.pdf");
  host::RecordingHost host;
  clsReports reports;
  reports.Connection(conn);
  reports.SetPrintPreview(&form);
  reports.SetHostServices(&host);

  t0 = std::chrono::steady_clock::now();
  reports.rptInsuranceBilling("bench");
  std::printf("rptInsuranceBilling          %8.3f s  %d page(s)\n", Since(t0), form.VSP.PageCount());

  // Invoices of insured patients whose employer has an insurer: the forms a
  // desk sends.
  std::vector<int32_t> invoices;
  {
    db::Recordset rs = reports.Open(
        "SELECT Invoices.ID FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID "
        "INNER JOIN Employers ON Patient.EmployerID = Employers.ID WHERE Employers.InsuranceID > 0 "
        "ORDER BY Invoices.ID");
    while (!rs.Eof() && int(invoices.size()) < forms) {
      Variant id = rs["ID"].Value();
      invoices.push_back(reports.Common().ReturnNumber(id));
      rs.MoveNext();
    }
  }
  // The French form too: where its eight lines overrun the page in 8
  // points it is laid out again in smaller sizes before it prints.
  long first_kb = 0;
  for (bool french : {false, true}) {
    const size_t messages = host.messages.size();
    t0 = std::chrono::steady_clock::now();
    for (size_t i = 0; i < invoices.size(); ++i) {
      if (french) reports.rptClaimFormF(invoices[i], 1, 0);
      else reports.rptClaimForm(invoices[i], 1, 0);
      if (i == 0 && !french) first_kb = ResidentKb();
    }
    const double total = Since(t0);
    std::printf("%-13s x %zu          %8.3f s  %.2f ms per form  %zu message(s)\n",
                french ? "rptClaimFormF" : "rptClaimForm", invoices.size(), total,
                invoices.empty() ? 0.0 : 1000 * total / invoices.size(), host.messages.size() - messages);
  }
  std::printf("resident memory: %ld kB after the first form, %ld kB after the last\n", first_kb,
              ResidentKb());

  conn.Close();
  std::filesystem::remove(path);
  std::filesystem::remove(path + ".printed.pdf");
  return 0;
}
