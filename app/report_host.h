// The report host: runs one public method of the component from the command
// line, as a host application would (Connection, SetPrintPreview, OfficeID,
// InterestRate, InterestDelay, then the method), and writes the document.
#pragma once

#include <string>
#include <vector>

#include "common/variant.h"

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

// `args` are the command line after the program name: options (before or
// after the method), the method name, then its arguments. Returns 0 done,
// 1 the report failed (nothing written), 2 bad usage (nothing run).
int RunReportHost(const std::vector<std::string>& args);

// The database a report runs on when --db is not given: ORVENDA_DB, else
// the demo practice of the README's checkout, by absolute path.
std::string DefaultDatabase();

// The usage of report runs, for --help.
const char* ReportUsage();

}  // namespace orv::app
