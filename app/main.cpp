// orvenda-reports: the command-line host of the report library.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "platform/db/connection_url.h"
#include "platform/host/partial_files.h"
#include "report_host.h"

// The default database may come from ORVENDA_DB with a password in it:
// help shows it without.
static void PrintHelp() {
  std::printf("%s\ndefault database: %s\n\ncommands:\n", orv::app::ReportUsage(),
              orv::db::MaskSecrets(orv::app::DefaultDatabase()).c_str());
  auto cmds = orv::app::Commands();
  std::sort(cmds.begin(), cmds.end(), [](auto& a, auto& b) { return a.name < b.name; });
  for (const auto& c : cmds) std::printf("  %-10s %s\n             %s\n", c.name.c_str(), c.summary.c_str(), c.usage.c_str());
}

int main(int argc, char** argv) {
  // A run stopped from the terminal or by kill leaves no half-written file.
  orv::host::RemovePartialFilesOnSignal();
  if (argc < 2 || std::string(argv[1]) == "--help" || std::string(argv[1]) == "-h") {
    PrintHelp();
    return argc < 2 ? 2 : 0;
  }
  std::string name = argv[1];
  for (const auto& c : orv::app::Commands()) {
    if (c.name == name) return c.run(std::vector<std::string>(argv + 2, argv + argc));
  }
  // Not a command: options and a report method for the report host.
  return orv::app::RunReportHost(std::vector<std::string>(argv + 1, argv + argc));
}
