#include "frame/preview_form.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <map>

#include "common/errors.h"
#include "platform/host/cups.h"
#include "platform/host/files.h"
#include "platform/host/partial_files.h"
#include "platform/render/csv.h"
#include "platform/render/renderer.h"

namespace orv {

namespace {

bool EndsWith(const std::string& s, const std::string& tail) {
  if (s.size() < tail.size()) return false;
  return std::equal(tail.rbegin(), tail.rend(), s.rbegin(), [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  });
}

std::string WithSuffix(const std::string& path, const std::string& suffix, const std::string& ext) {
  size_t dot = path.find_last_of('.');
  size_t slash = path.find_last_of('/');
  if (dot == std::string::npos || (slash != std::string::npos && dot < slash))
    return path + suffix + ext;
  return path.substr(0, dot) + suffix + ext;
}

// True for an existing file that begins as every SQLite database does.
// Read with the system's own calls: every document written asks, and an
// input stream (the first of the process, with its locale) cost a short
// report more than the rename that follows.
bool IsDatabaseFile(const std::string& path) {
  const int fd = ::open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return false;
  char head[16] = {};
  const ssize_t got = ::read(fd, head, sizeof head);
  ::close(fd);
  return got == ssize_t(sizeof head) && std::memcmp(head, "SQLite format 3\0", sizeof head) == 0;
}

}  // namespace

PreviewForm::PreviewForm() {
  VSP.SetHost(this);
  notify_ = [](const std::string& m) { std::fprintf(stderr, "%s\n", m.c_str()); };
}

PreviewForm::~PreviewForm() {
  DiscardWrites();
  VSP.SetHost(nullptr);
}

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

bool PreviewForm::IsKnownOutput(const std::string& path) {
  return EndsWith(path, ".pdf") || EndsWith(path, ".png") || EndsWith(path, ".txt") ||
         EndsWith(path, ".csv");
}

void PreviewForm::SetOutput(std::string path) {
  if (!path.empty() && !IsKnownOutput(path)) {
    throw ReportError(
        5, "The output " + path + " has no known kind: name it .pdf, .png, .txt or .csv");
  }
  output_ = std::move(path);
  PaintAheadForPdf();
}

void PreviewForm::PaintAheadForPdf() {
  // A printer is sent a PDF file too.
  VSP.PaintPdfAhead(EndsWith(output_, ".pdf") || !printer_.empty());
}

std::string PreviewForm::Staged(const std::string& target) {
  // Beside the target (same folder, so the rename stays on one file
  // system), hidden, unique to this process, with the target's extension
  // so the renderer picks the same format.
  // The folder and the name are cut at the last slash, and the extension
  // at the name's last dot, as std::filesystem::path cuts them ("a.b.pdf"
  // ends in ".pdf"; ".pdf" and ".." have none).
  const size_t slash = target.find_last_of('/');
  const size_t begin = slash == std::string::npos ? 0 : slash + 1;
  const std::string_view file = std::string_view(target).substr(begin);
  const size_t dot = file.find_last_of('.');
  const std::string_view extension =
      dot == std::string_view::npos || dot == 0 || file == ".." ? std::string_view() : file.substr(dot);
  std::string staged = target.substr(0, begin);
  staged += '.';
  staged += file;
  staged += ".part-" + std::to_string(::getpid()) + "-" +
            std::to_string(pending_.size() + written_.size());
  staged += extension;
  return staged;
}

void PreviewForm::Commit(const std::string& staged, const std::string& target) {
  // A document never replaces a database, whatever the output was called.
  if (IsDatabaseFile(target)) {
    host::RemovePartialFile(staged);
    throw ReportError(75, target + " is a database; a document is not written over it");
  }
  if (hold_) {
    pending_.emplace_back(staged, target);
    return;
  }
  std::error_code ec;
  host::RenamePartialFile(staged, target, ec);
  if (ec) {
    host::RemovePartialFile(staged);
    throw ReportError(75, "Path/File access error: " + target);
  }
  written_.push_back(target);
}

void PreviewForm::CommitWrites() {
  hold_ = false;
  auto pending = std::move(pending_);
  pending_.clear();
  for (const auto& [staged, target] : pending) Commit(staged, target);
}

void PreviewForm::DiscardWrites() {
  for (const auto& [staged, target] : pending_) host::RemovePartialFile(staged);
  pending_.clear();
}

void PreviewForm::WriteDocument(const std::string& path) {
  const render::Document& doc = VSP.Document();
  // Writes one file under its temporary name; a failed write leaves no
  // temporary file behind.
  auto write = [&](const std::string& target,
                   const std::function<void(const std::string&)>& render) {
    std::string staged = Staged(target);
    host::TrackPartialFile(staged);
    try {
      render(staged);
    } catch (...) {
      host::RemovePartialFile(staged);
      throw;
    }
    Commit(staged, target);
  };
  if (EndsWith(path, ".png")) {
    for (int p = 1; p <= static_cast<int>(doc.pages.size()); ++p) {
      std::string file = p == 1 ? path : WithSuffix(path, "-" + std::to_string(p), ".png");
      write(file, [&](const std::string& f) { render::RenderPng(doc, p, 96, f); });
    }
  } else if (EndsWith(path, ".txt")) {
    write(path, [&](const std::string& f) {
      std::ofstream out(f, std::ios::binary | std::ios::trunc);
      out << DocumentText(doc);
      out.flush();
      if (!out) throw ReportError(75, "Path/File access error: " + path);
    });
  } else if (EndsWith(path, ".csv")) {
    write(path, [&](const std::string& f) { render::WriteCsv(doc, f); });
  } else {
    write(path, [&](const std::string& f) { render::RenderPdf(doc, f); });
  }
}

void PreviewForm::Print(const render::Document& doc, bool ask) {
  ++print_count_;
  if (ask && ShowDialog(0) == 0) return;
  std::string printer = selected_printer_.empty() ? printer_ : selected_printer_;
  // Without a printer the job goes where the host asked the document to
  // go, in that file's format; the person is told that nothing printed.
  std::string file = print_file_;
  if (file.empty()) file = output_.empty() ? "printed.pdf" : output_;
  if (printer.empty()) {
    printed_to_file_ = true;
    WriteDocument(file);
    notify_("No printer was set; the document was written to " + file + " instead");
    return;
  }
  // Print through CUPS: render to a temporary PDF and hand it to lp.
  std::string tmp = host::GetNewTempFile("orv");
  if (tmp.empty()) throw ReportError(75, "Cannot create a temporary file to print");
  std::string pdf = tmp + ".pdf";
  host::PrintOutcome outcome;
  try {
    render::RenderPdf(doc, pdf);
    outcome = host::PrintPdfWithCups(printer, pdf, doc.name);
  } catch (...) {
    std::remove(pdf.c_str());
    std::remove(tmp.c_str());
    throw;
  }
  std::remove(pdf.c_str());
  std::remove(tmp.c_str());
  if (outcome.printed) {
    print_jobs_.push_back(outcome.job);
    return;
  }
  // The job is lost to the printer; the host has to know the run failed.
  // A host that holds its writes discards this file with the run.
  print_refused_ = true;
  WriteDocument(file);
  notify_(outcome.message + (hold_ ? "" : "; the document was written to " + file));
}

int PreviewForm::ShowDialog(int kind) {
  return dialog_answer_;
}

}  // namespace orv
