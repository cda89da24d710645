// The cost of a month's bulk statements: rptBulkStatements for every family
// of a generated demo practice, laid out in memory (no PDF is written).
// Prints the wall time, the pages made, and the share of the time spent
// inside SQLite (preparing and stepping statements), measured by wrapping
// the library's sqlite3_prepare_v2/v3 and sqlite3_step calls below; the rest
// is the T-SQL layer, the account arithmetic and the layout.
//
//   bench_bulk_statements [patients=5000] [family=1]
#include <dlfcn.h>
#include <sqlite3.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"
#include "platform/host/host_services.h"
#include "platform/practice/demo_practice.h"

#include "bench_practice.h"
#include "sql_time.h"

namespace {
using Clock = std::chrono::steady_clock;
}  // namespace

int main(int argc, char** argv) {
  const int patients = argc > 1 ? std::atoi(argv[1]) : 5000;
  const bool family = argc > 2 ? std::atoi(argv[2]) != 0 : true;
  const std::string path = orv::bench::WriteBenchPractice("bulk", patients);

  orv::Clock::SetFixed(orv::DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  orv::db::Connection conn;
  conn.Open(path);
  orv::db::Recordset families;
  families.Open(
      "SELECT COUNT(DISTINCT PrimaryHolderID) AS N FROM Patient WHERE NOT PrimaryHolderID IS NULL",
      conn);
  long holders = orv::CLng(families["N"].Value());
  families.Close();

  orv::PreviewForm form;
  form.SetNotifier([](const std::string&) {});
  orv::host::RecordingHost host;
  orv::clsReports reports;
  reports.Connection(conn);
  reports.SetPrintPreview(&form);
  reports.SetHostServices(&host);
  reports.OfficeID = 1;
  reports.InterestRate = 0.02f;

  std::map<std::string, Clock::duration> by_statement;
  g_by_statement = &by_statement;
  g_sql_time = {};
  g_steps = g_prepares = 0;
  auto start = Clock::now();
  reports.rptBulkStatements("", "", family, "Bench statements");
  double wall = std::chrono::duration<double>(Clock::now() - start).count();
  double sql = std::chrono::duration<double>(g_sql_time).count();

  std::printf("%s statements: %ld holders, %d pages in %.2f s (%.2f ms per page)\n",
              family ? "family" : "patient", holders, form.VSP.PageCount(), wall,
              form.VSP.PageCount() ? 1000 * wall / form.VSP.PageCount() : 0.0);
  std::printf("inside SQLite: %.2f s (%.0f%%), %ld prepares, %ld steps\n", sql,
              wall > 0 ? 100 * sql / wall : 0.0, g_prepares, g_steps);
  g_by_statement = nullptr;
  std::vector<std::pair<Clock::duration, std::string>> slowest;
  for (const auto& [text, spent] : by_statement) slowest.emplace_back(spent, text);
  std::sort(slowest.rbegin(), slowest.rend());
  for (size_t i = 0; i < slowest.size() && i < 5; ++i) {
    std::printf("  %7.2f s  %.160s\n", std::chrono::duration<double>(slowest[i].first).count(),
                slowest[i].second.c_str());
  }
  conn.Close();
  std::filesystem::remove(path);
  return 0;
}
