// The report host: runs one public method of the component from the command
// line, as a host application would (Connection, SetPrintPreview, OfficeID,
// InterestRate, InterestDelay, then the method), and writes the document.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/variant.h"
#include "method_catalog.h"
#include "platform/render/document_record.h"

namespace orv {
class clsReports;
class PreviewForm;
}  // namespace orv

namespace orv::app {

struct MethodSignature;
class MethodArgs;

// Calls a built method on a component that is connected and holds its
// form, as every host of the component does: a section (srpt...) runs in a
// document of its own, headed with the method's summary and footed with
// the pages' footer; any other method is called as it stands. Returns the
// method's result (Empty for a report). What the report raises passes
// through.
Variant CallMethod(clsReports& reports, PreviewForm& form, const MethodSignature& sig,
                   const MethodArgs& args, const std::string& user);

// What a caller that measures runs learns of one: the pages of the
// document, and two moments that set the report's own part of the command
// apart from the host's. `report_called` is called just before the method,
// with the practice open and the component set up as a host hands it over;
// `document_written` once the document stands where --out names (not on a
// failed run). Either may be empty.
struct RunWatch {
  int pages = 0;
  std::function<void()> report_called;
  std::function<void()> document_written;
};

// `args` are the command line after the program name: options (before or
// after the method), the method name, then its arguments. Returns 0 done,
// 1 the report failed (nothing written), 2 bad usage (nothing run).
int RunReportHost(const std::vector<std::string>& args, RunWatch* watch = nullptr);

// The database a report runs on when --db is not given: ORVENDA_DB, else
// the demo practice of the README's checkout, by absolute path.
std::string DefaultDatabase();

// The usage of report runs, for --help.
const char* ReportUsage();

// True for the methods whose document is a run of letters (statements)
// that can be written one file per letter (render::WriteLetterPdfs).
bool MakesLetters(const MethodSignature& sig);

// The identity a host gives the document of one run (its PDF's metadata):
// the method and its arguments as given (name, text), the database with
// any password masked, the clock's today, the user, the office, and this
// program and its version. Set it with PrintSurface::Identity before the
// run.
render::DocumentIdentity RunIdentity(const std::string& method,
                                     std::vector<std::pair<std::string, std::string>> arguments,
                                     const std::string& database, const std::string& user,
                                     std::optional<int32_t> office);

}  // namespace orv::app
