// The cost of a statement run: rptStatements over the first patients of a
// generated demo practice (patient statements, one run over the whole
// list), laid out in memory (no PDF is written). Prints the wall time, the
// pages made and the share of the time spent inside SQLite (preparing and
// stepping statements), measured by the wrappers of sql_time.h; the rest is
// the T-SQL layer, the account arithmetic and the layout.
//
//   bench_statements [patients=500] [family=0]
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
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
  const int patients = argc > 1 ? std::atoi(argv[1]) : 500;
  const bool family = argc > 2 ? std::atoi(argv[2]) != 0 : false;
  const std::string path = orv::bench::WriteBenchPractice("statements", patients);

  orv::Clock::SetFixed(orv::DateTime::FromParts(2026, 11, 20, 10, 0, 0));
  orv::db::Connection conn;
  conn.Open(path);
  // Every patient of the practice, in ID order, and the spare slot the
  // report's list ends with.
  std::vector<int32_t> ids;
  {
    orv::db::Recordset rs;
    rs.Open("SELECT ID FROM Patient ORDER BY ID", conn);
    while (!rs.Eof() && static_cast<int>(ids.size()) < patients) {
      ids.push_back(orv::CLng(rs["ID"].Value()));
      rs.MoveNext();
    }
    rs.Close();
  }
  const size_t listed = ids.size();
  ids.push_back(0);

  orv::PreviewForm form;
  form.SetNotifier([](const std::string&) {});
  orv::host::RecordingHost host;
  orv::clsReports reports;
  reports.Connection(conn);
  reports.SetPrintPreview(&form);
  reports.SetHostServices(&host);
  reports.OfficeID = 1;

  std::map<std::string, Clock::duration> by_statement;
  g_by_statement = &by_statement;
  g_sql_time = {};
  g_steps = g_prepares = 0;
  auto start = Clock::now();
  // The year so far, with every section, as a month-end run prints it.
  reports.rptStatements(orv::DateTime::FromParts(2026, 1, 1), orv::DateTime::FromParts(2026, 11, 20),
                        ids, family, "", true, true, true, false, true, true, false);
  double wall = std::chrono::duration<double>(Clock::now() - start).count();
  double sql = std::chrono::duration<double>(g_sql_time).count();
  for (const auto& m : host.messages) std::printf("message: %s\n", m.prompt.c_str());

  std::printf("%s statements: %zu listed, %d pages in %.2f s (%.2f ms per statement)\n",
              family ? "family" : "patient", listed, form.VSP.PageCount(), wall,
              listed ? 1000 * wall / static_cast<double>(listed) : 0.0);
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
