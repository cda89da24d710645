#include "command.h"

#include <cstdio>

#include "common/datetime.h"
#include "invokers.h"

namespace orv::app {

std::vector<Command>& Commands() {
  static std::vector<Command> commands;
  return commands;
}

bool ApplyToday(const std::string& text) {
  auto d = ParseDateArgument(text);
  if (!d) {
    std::fprintf(
        stderr,
        "orvenda-reports: --today (Date) wants a date yyyy-mm-dd from 1753-01-01, e.g. 2026-11-20; "
        "not '%s'\n",
        text.c_str());
    return false;
  }
  // Midnight of that day, so reports that compare with "now" see the whole
  // day as past.
  Clock::SetFixed(d->DatePart());
  return true;
}

}  // namespace orv::app
