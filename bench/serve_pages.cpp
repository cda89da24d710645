// How soon the browser host shows a long report: the detailed patient list
// of a demo practice (about 100 pages on 500 patients) run through the
// server's API, then the time from the run's end to page 1's image, as the
// page asks for it, and to the whole PDF.
//
//   bench_serve_pages [PATIENTS]     (default 500; a Release build)
#include <httplib.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "bench_practice.h"
#include "command.h"
#include "serve/server.h"

namespace {

using Clock = std::chrono::steady_clock;
double Ms(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double, std::milli>(b - a).count();
}

}  // namespace

int main(int argc, char** argv) {
  int patients = argc > 1 ? std::atoi(argv[1]) : 500;
  std::string db = orv::bench::WriteBenchPractice("serve_pages", patients);
  orv::app::ApplyToday("2026-11-20");

  orv::app::serve::ServeOptions o;
  o.run.db = db;
  o.run.office = 1;
  o.run.user = "bench";
  o.port = 0;
  orv::app::serve::ReportServer server(o);
  int port = server.Bind();
  std::thread listen([&] { server.Listen(); });
  httplib::Client c("127.0.0.1", port);
  c.set_read_timeout(600, 0);

  auto t0 = Clock::now();
  auto started = c.Post("/api/runs", R"({"method":"rptPatientListDetailed","args":["0"]})",
                        "application/json");
  int id = nlohmann::json::parse(started->body)["id"];
  std::string status = "/api/runs/" + std::to_string(id);
  nlohmann::json s;
  // The page polls every 200 ms; the figure below counts from the end.
  for (int i = 0; i < 60000; ++i) {
    s = nlohmann::json::parse(c.Get(status)->body);
    if (s["state"] == "done" || s["state"] == "failed") break;
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
  }
  auto ended = Clock::now();
  if (s["state"] != "done") {
    std::fprintf(stderr, "the run failed: %s\n", s.dump().c_str());
    return 1;
  }
  auto page = c.Get(status + "/pages/1.png");
  auto shown = Clock::now();
  auto thumb = c.Get(status + "/pages/2.png?dpi=14");
  auto thumbed = Clock::now();
  auto pdf = c.Get(status + "/document.pdf");
  auto pdf_done = Clock::now();
  std::printf(
      "serve_pages: %d patients, %d pages; run %.0f ms; page 1 image %.0f ms after the end (%zu "
      "bytes); a thumbnail %.0f ms; whole PDF %.0f ms (%zu bytes)\n",
      patients, s["pages"].get<int>(), Ms(t0, ended), Ms(ended, shown), page->body.size(),
      Ms(shown, thumbed), Ms(thumbed, pdf_done), pdf->body.size());
  server.Stop();
  listen.join();
  std::filesystem::remove(db);
  return 0;
}
