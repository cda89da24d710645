// The demo practice a benchmark runs on: written to a temporary file with a
// fixed seed, its size printed, so runs compare across machines and days.
#pragma once

#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <filesystem>
#include <functional>
#include <string>

#include "frame/preview_form.h"
#include "frame/reports.h"
#include "platform/db/connection.h"
#include "platform/host/host_services.h"
#include "platform/practice/demo_practice.h"
#include "sql_time.h"

namespace orv::bench {

// Writes a demo practice of `patients` to a temporary file named after
// `name` and returns its path; the caller removes it.
inline std::string WriteBenchPractice(const std::string& name, int patients,
                                      uint64_t seed = 20261120) {
  const std::string path = (std::filesystem::temp_directory_path() /
                            ("orvenda_bench_" + name + "_" + std::to_string(::getpid()) + ".db"))
                               .string();
  std::filesystem::remove(path);
  practice::DemoOptions options;
  options.patients = patients;
  options.seed = seed;
  const auto made = std::chrono::steady_clock::now();
  const practice::DemoSummary demo = practice::WriteDemoPracticeFile(path, options);
  std::printf("demo practice: %lld patients, %lld invoices, %lld payments (%.1f s)\n",
              static_cast<long long>(demo.patients), static_cast<long long>(demo.invoices),
              static_cast<long long>(demo.payments),
              std::chrono::duration<double>(std::chrono::steady_clock::now() - made).count());
  return path;
}

// The component as a host wires it for a benchmark: a connection to the
// practice at `path`, a preview form that writes nothing, a host that
// records its messages. Members are declared in the order they must outlive
// one another.
struct BenchComponent {
  explicit BenchComponent(const std::string& path) {
    conn.Open(path);
    form.SetNotifier([](const std::string&) {});
    reports.Connection(conn);
    reports.SetPrintPreview(&form);
    reports.SetHostServices(&host);
  }
  // Runs one report and prints its wall time, the share of it spent in
  // SQL, the pages of the document and the messages shown.
  void Time(const char* name, const std::function<void()>& run) {
    const auto sql0 = g_sql_time;
    const auto t0 = std::chrono::steady_clock::now();
    run();
    const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - t0).count();
    const double sql = std::chrono::duration<double>(g_sql_time - sql0).count();
    std::printf("%-28s %8.3f s  %3.0f%% in SQL  %3d pages  %zu messages\n", name, s,
                s > 0 ? 100 * sql / s : 0.0, form.VSP.PageCount(), host.messages.size());
  }
  db::Connection conn;
  PreviewForm form;
  host::RecordingHost host;
  clsReports reports;
};

}  // namespace orv::bench
