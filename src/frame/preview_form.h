// PreviewForm: our stand-in for the host's preview form, the object a host
// hands to SetPrintPreview.
//
// It carries the print surface (`VSP`), shows the finished document (here:
// writes it where the host asked, as PDF, PNG pages or plain text), and does
// what the surface's printing requests ask: print to the CUPS printer named
// in the settings, or, without one, write a PDF and say where.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "frame/surface/print_host.h"
#include "frame/surface/surface.h"
#include "platform/render/document_text.h"

namespace orv {

class PreviewForm : public frame::PrintHost {
 public:
  PreviewForm();
  ~PreviewForm() override;
  PreviewForm(const PreviewForm&) = delete;
  PreviewForm& operator=(const PreviewForm&) = delete;

  // The print surface the reports draw on.
  frame::PrintSurface VSP;

  // Shows the preview: writes the document to the output path (if any) and
  // marks the form shown.
  void Show();
  // Letting Visible true shows the form as Show does.
  void Visible(bool visible);
  bool Visible() const { return visible_; }
  // Set by the day sheet around its run.
  bool IsDaySheet = false;

  // --- What the host configures ---
  // Where Show writes: "x.pdf" (all pages), "x.png" (one PNG per page:
  // x.png, x-2.png, ...), "x.txt" (the text of every page), "x.csv" (the
  // tables, platform/render/csv.h). Empty: nowhere.
  // Any other extension is refused here (ReportError 5), before a report
  // runs, so a typo never ends in a file of the wrong kind.
  void SetOutput(std::string path);
  // True for the extensions SetOutput takes (any case).
  static bool IsKnownOutput(const std::string& path);
  // Every file is written under a temporary name beside its target and
  // renamed when complete, so an interrupted write never leaves half a file
  // where a good one stood. With writes held, the renames wait for
  // CommitWrites (the host calls it once the report has succeeded);
  // DiscardWrites removes the temporary files and leaves the targets as
  // they were.
  void HoldWrites(bool hold) { hold_ = hold; }
  void CommitWrites();
  void DiscardWrites();
  const std::string& Output() const { return output_; }
  // The CUPS printer that PrintDoc sends to; empty: write a PDF instead.
  void SetPrinter(std::string name) {
    printer_ = std::move(name);
    PaintAheadForPdf();
  }
  // Answer of PrintDialog (nonzero confirms). Default: confirm.
  void SetDialogAnswer(int answer) { dialog_answer_ = answer; }
  // Where a PrintDoc without a printer writes its document. Default: the
  // output (in its format), or ./printed.pdf without one.
  void SetPrintFile(std::string path) { print_file_ = std::move(path); }
  // A sink for the form's messages to the person (default: stderr).
  void SetNotifier(std::function<void(const std::string&)> n) { notify_ = std::move(n); }

  // --- What happened (for the host and for tests) ---
  int ShowCount() const { return show_count_; }
  int PrintCount() const { return print_count_; }
  // True when a printer was named and did not take a job.
  bool PrintRefused() const { return print_refused_; }
  // True when a job went to a file because no printer was named.
  bool PrintedWithoutPrinter() const { return printed_to_file_; }
  const std::vector<std::string>& WrittenFiles() const { return written_; }
  // The CUPS jobs the printer took ("orvenda-test-12"), in order.
  const std::vector<std::string>& PrintJobs() const { return print_jobs_; }

  // PrintHost
  void Print(const render::Document& doc, bool ask) override;
  int ShowDialog(int kind) override;
  void SelectPrinter(const std::string& device) override { selected_printer_ = device; }

 private:
  void WriteDocument(const std::string& path);
  // Has the surface paint pages for a PDF file as they are finished when
  // the document goes to one.
  void PaintAheadForPdf();
  // The temporary name a file is written under until it is complete.
  std::string Staged(const std::string& target);
  void Commit(const std::string& staged, const std::string& target);

  bool visible_ = false;
  bool hold_ = false;
  bool print_refused_ = false;
  bool printed_to_file_ = false;
  std::vector<std::pair<std::string, std::string>> pending_;  // staged, target
  int show_count_ = 0;
  int print_count_ = 0;
  int dialog_answer_ = 1;
  std::string output_, printer_, print_file_, selected_printer_;
  std::vector<std::string> written_;
  std::vector<std::string> print_jobs_;
  std::function<void(const std::string&)> notify_;
};

// The text of a document, page by page (platform/render/document_text.h).
using render::DocumentText;

}  // namespace orv
