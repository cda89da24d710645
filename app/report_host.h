// The report host: runs one public method of the component from the command
// line, as a host application would (Connection, SetPrintPreview, OfficeID,
// InterestRate, InterestDelay, then the method), and writes the document.
#pragma once

#include <string>
#include <vector>

namespace orv::app {

// `args` are the command line after the program name: options, the method
// name, then its arguments. Returns 0 done, 1 the report failed, 2 bad usage.
int RunReportHost(const std::vector<std::string>& args);

// The database a report runs on when --db is not given.
std::string DefaultDatabase();

}  // namespace orv::app
