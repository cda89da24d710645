// The report host: runs one public method of the component from the command
// line, as a host application would (Connection, SetPrintPreview, OfficeID,
// InterestRate, InterestDelay, then the method), and writes the document.
#pragma once

#include <string>
#include <vector>

namespace orv::app {

// `args` are the command line after the program name: options (before or
// after the method), the method name, then its arguments. Returns 0 done,
// 1 the report failed (nothing written), 2 bad usage (nothing run). When
// `pages` is given it receives the pages of the document the run made.
int RunReportHost(const std::vector<std::string>& args, int* pages = nullptr);

// The database a report runs on when --db is not given: ORVENDA_DB, else
// the demo practice of the README's checkout, by absolute path.
std::string DefaultDatabase();

// The usage of report runs, for --help.
const char* ReportUsage();

}  // namespace orv::app
