#include "frame/preview_form.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <fstream>
#include <map>

#include "common/errors.h"
#include "platform/host/files.h"
#include "platform/render/renderer.h"

namespace orv {

namespace {

bool EndsWith(const std::string& s, const std::string& tail) {
  if (s.size() < tail.size()) return false;
  return std::equal(tail.rbegin(), tail.rend(), s.rbegin(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
  });
}

std::string WithSuffix(const std::string& path, const std::string& suffix, const std::string& ext) {
  size_t dot = path.find_last_of('.');
  size_t slash = path.find_last_of('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) return path + suffix + ext;
  return path.substr(0, dot) + suffix + ext;
}

std::string Quote(const std::string& s) {
  std::string q = "'";
  for (char c : s) {
    if (c == '\'') q += "'\\''";
    else q += c;
  }
  return q + "'";
}

}  // namespace

PreviewForm::PreviewForm() {
  VSP.SetHost(this);
  notify_ = [](const std::string& m) { std::fprintf(stderr, "%s\n", m.c_str()); };
}

PreviewForm::~PreviewForm() { VSP.SetHost(nullptr); }

void PreviewForm::Show() {
  visible_ = true;
  ++show_count_;
  if (!output_.empty()) WriteDocument(output_);
}

void PreviewForm::Visible(bool visible) {
  if (visible && !visible_) {
    Show();
    return;
  }
  visible_ = visible;
}

void PreviewForm::WriteDocument(const std::string& path) {
  const render::Document& doc = VSP.Document();
  if (EndsWith(path, ".png")) {
    for (int p = 1; p <= static_cast<int>(doc.pages.size()); ++p) {
      std::string file = p == 1 ? path : WithSuffix(path, "-" + std::to_string(p), ".png");
      render::RenderPng(doc, p, 96, file);
      written_.push_back(file);
    }
  } else if (EndsWith(path, ".txt")) {
    std::ofstream out(path, std::ios::binary | std::ios::trunc);
    if (!out) throw ReportError(75, "Path/File access error: " + path);
    out << DocumentText(doc);
    written_.push_back(path);
  } else {
    render::RenderPdf(doc, path);
    written_.push_back(path);
  }
}

void PreviewForm::Print(const render::Document& doc, bool ask) {
  ++print_count_;
  if (ask && ShowDialog(0) == 0) return;
  std::string printer = selected_printer_.empty() ? printer_ : selected_printer_;
  std::string file = print_file_;
  if (file.empty()) file = output_.empty() ? "printed.pdf" : WithSuffix(output_, "-printed", ".pdf");
  if (printer.empty()) {
    render::RenderPdf(doc, file);
    written_.push_back(file);
    notify_("No printer is set up; the document was written to " + file);
    return;
  }
  // Print through CUPS: render to a temporary PDF and hand it to lp.
  std::string tmp = host::GetNewTempFile("orv");
  if (tmp.empty()) throw ReportError(75, "Cannot create a temporary file to print");
  std::string pdf = tmp + ".pdf";
  render::RenderPdf(doc, pdf);
  bool ok = host::SyncShell("lp -d " + Quote(printer) + " " + Quote(pdf) + " >/dev/null 2>&1", 60000);
  std::remove(pdf.c_str());
  std::remove(tmp.c_str());
  if (!ok) {
    render::RenderPdf(doc, file);
    written_.push_back(file);
    notify_("The printer " + printer + " did not take the document; it was written to " + file);
  }
}

int PreviewForm::ShowDialog(int kind) { return dialog_answer_; }

std::string DocumentText(const render::Document& doc) {
  std::string out;
  for (size_t p = 0; p < doc.pages.size(); ++p) {
    if (p) out += '\f';
    // Group runs by baseline (rounded to a twip), then order each line by x.
    std::map<long, std::vector<const render::TextRun*>> lines;
    for (const auto& item : doc.pages[p].items) {
      if (const auto* run = std::get_if<render::TextRun>(&item)) {
        lines[std::lround(run->baseline.value())].push_back(run);
      }
    }
    for (auto& [y, runs] : lines) {
      std::stable_sort(runs.begin(), runs.end(),
                       [](auto* a, auto* b) { return a->x.value() < b->x.value(); });
      std::string line;
      double end = -1;
      for (const auto* r : runs) {
        // Separate runs that do not touch by at least one blank.
        if (end >= 0 && r->x.value() > end + 20 && (line.empty() || line.back() != ' ')) line += ' ';
        line += r->text;
        end = r->x.value() + r->width.value();
      }
      out += line;
      out += '\n';
    }
  }
  return out;
}

}  // namespace orv
