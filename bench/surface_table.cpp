// Times the bulk path of the print surface: one AddTable of a fee-guide-like
// body, page stamps by an overlay pass, and the PDF.
//
//   bench_surface_table [rows...]     (default: 20000 40000)
//
// Prints, per size, the milliseconds of AddTable, of the overlay pass, of the
// PDF, and in all, then the process's peak resident memory.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <vector>

#include "frame/surface/surface.h"
#include "platform/render/renderer.h"

namespace {

using Clock = std::chrono::steady_clock;

double Ms(Clock::time_point a, Clock::time_point b) {
  return std::chrono::duration<double, std::milli>(b - a).count();
}

// Rows like those of a fee guide: a code, a description of which every third
// is long enough to wrap in its column, a type, and an amount.
std::string FeeGuideBody(int rows) {
  static const char* kWords[] = {"Examination", "recall",   "complete",  "periodontal",
                                 "scaling",     "per unit", "of time",   "restoration",
                                 "amalgam",     "bonded",   "posterior", "primary",
                                 "permanent",   "tooth",    "surfaces"};
  std::string body;
  body.reserve(size_t(rows) * 80);
  for (int i = 0; i < rows; ++i) {
    body += std::to_string(10000 + i % 90000);
    body += '|';
    const int words = i % 3 == 0 ? 12 : 4;
    for (int w = 0; w < words; ++w) {
      if (w) body += ' ';
      body += kWords[(i + w * 7) % 15];
    }
    body += '|';
    body += i % 2 ? "Fee" : "Lab";
    body += "|$";
    body += std::to_string(20 + i % 480) + "." + std::to_string(10 + i % 90);
    body += ';';
  }
  return body;
}

void RunOnce(int rows, const std::string& pdf_path) {
  using orv::frame::PrintSurface;
  const std::string body = FeeGuideBody(rows);

  const auto t0 = Clock::now();
  PrintSurface s;
  s.DocName("Fee Guide");
  s.StartDoc();
  s.FontName("Tahoma");
  s.FontSize(10);
  s.TextAlign(1);
  s.TableBorder(0);
  s.AddTable("<.8in|<3.5in|^.8in|>1.2in", "Code|Description|Type|Amount($)", body, 12169126u);
  s.Action(6);
  const auto t1 = Clock::now();

  const int pages = s.PageCount();
  for (int p = 1; p <= pages; ++p) {
    s.StartOverlay(p, false);
    s.CurrentY(s.PageHeight() - s.MarginBottom());
    s.FontSize(8);
    s.CurrentX(s.MarginLeft());
    s.TextAlign(0);
    s.InlineText("Nov/23/2026");
    s.TextAlign(1);
    s.InlineText("Printed by Orvenda");
    s.TextAlign(2);
    s.InlineText("Page " + std::to_string(p) + " of " + std::to_string(pages));
    s.EndOverlay();
  }
  s.EndDoc();
  const auto t2 = Clock::now();

  orv::render::RenderPdf(s.Document(), pdf_path);
  const auto t3 = Clock::now();

  std::printf(
      "rows %6d  pages %5d  AddTable %8.1f ms  overlay %6.1f ms  pdf %8.1f ms  total %8.1f ms\n",
      rows, pages, Ms(t0, t1), Ms(t1, t2), Ms(t2, t3), Ms(t0, t3));
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes;
  for (int i = 1; i < argc; ++i) sizes.push_back(std::atoi(argv[i]));
  if (sizes.empty()) sizes = {20000, 40000};
  const std::string pdf =
      (std::filesystem::temp_directory_path() / "orv_bench_surface_table.pdf").string();
  for (int rows : sizes) RunOnce(rows, pdf);
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  std::printf("peak resident memory %.1f MB\n", usage.ru_maxrss / 1024.0);
  std::filesystem::remove(pdf);
  return 0;
}
