// orvenda-reports: the command-line host of the report library.
#include <algorithm>
#include <cstdio>
#include <string>
#include <vector>

#include "command.h"
#include "platform/db/connection_url.h"
#include "report_host.h"
#include "common/datetime.h"

namespace orv::app {

std::vector<Command>& Commands() {
  static std::vector<Command> commands;
  return commands;
}

bool ApplyToday(const std::string& text) {
  auto d = ParseDateText(text);
  if (!d) {
    std::fprintf(stderr, "orvenda-reports: --today wants a date as yyyy-mm-dd, not '%s'\n",
                 text.c_str());
    return false;
  }
  // Midnight of that day, so reports that compare with "now" see the whole
  // day as past.
  Clock::SetFixed(d->DatePart());
  return true;
}

}  // namespace orv::app

// The default database may come from ORVENDA_DB with a password in it:
// help shows it without.
static void PrintHelp() {
  std::printf(
      "usage: orvenda-reports [OPTIONS] METHOD [ARG | Name=Value]...   run a report method\n"
      "       orvenda-reports COMMAND [OPTIONS]\n\n"
      "report options: --db URL (default %s), --out FILE.pdf|.png|.txt, --office N,\n"
      "  --user NAME, --today yyyy-mm-dd, --setting [Section.]Key=Value, --printer NAME,\n"
      "  --interest-rate R, --interest-delay DAYS\n\ncommands:\n",
      orv::db::RedactPassword(orv::app::DefaultDatabase()).c_str());
  auto cmds = orv::app::Commands();
  std::sort(cmds.begin(), cmds.end(), [](auto& a, auto& b) { return a.name < b.name; });
  for (const auto& c : cmds) std::printf("  %-10s %s\n             %s\n", c.name.c_str(), c.summary.c_str(), c.usage.c_str());
}

int main(int argc, char** argv) {
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
