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

#include "frame/surface/print_host.h"
#include "frame/surface/surface.h"

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
  // x.png, x-2.png, ...), "x.txt" (the text of every page). Empty: nowhere.
  void SetOutput(std::string path) { output_ = std::move(path); }
  const std::string& Output() const { return output_; }
  // The CUPS printer that PrintDoc sends to; empty: write a PDF instead.
  void SetPrinter(std::string name) { printer_ = std::move(name); }
  // Answer of PrintDialog (nonzero confirms). Default: confirm.
  void SetDialogAnswer(int answer) { dialog_answer_ = answer; }
  // Where a PrintDoc without a printer writes its PDF. Default: beside the
  // output, with "-printed" before the extension, or ./printed.pdf.
  void SetPrintFile(std::string path) { print_file_ = std::move(path); }
  // A sink for the form's messages to the person (default: stderr).
  void SetNotifier(std::function<void(const std::string&)> n) { notify_ = std::move(n); }

  // --- What happened (for the host and for tests) ---
  int ShowCount() const { return show_count_; }
  int PrintCount() const { return print_count_; }
  const std::vector<std::string>& WrittenFiles() const { return written_; }

  // PrintHost
  void Print(const render::Document& doc, bool ask) override;
  int ShowDialog(int kind) override;
  void SelectPrinter(const std::string& device) override { selected_printer_ = device; }

 private:
  void WriteDocument(const std::string& path);

  bool visible_ = false;
  int show_count_ = 0;
  int print_count_ = 0;
  int dialog_answer_ = 1;
  std::string output_, printer_, print_file_, selected_printer_;
  std::vector<std::string> written_;
  std::function<void(const std::string&)> notify_;
};

// The text of a document, page by page: each line of text runs that share a
// baseline, left to right, pages separated by a form feed. What the ".txt"
// output holds and what tests read.
std::string DocumentText(const render::Document& doc);

}  // namespace orv
