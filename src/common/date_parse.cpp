#include <cctype>
#include <cstdlib>

#include "common/datetime.h"

namespace orv {

// Minimal first version: ISO "yyyy-mm-dd[ hh:nn[:ss]]" only.
std::optional<DateTime> ParseDateText(const std::string& text) {
  int y, m, d, h = 0, n = 0, s = 0;
  int used = 0;
  if (std::sscanf(text.c_str(), " %4d-%2d-%2d%n", &y, &m, &d, &used) < 3) return std::nullopt;
  std::sscanf(text.c_str() + used, " %2d:%2d:%2d", &h, &n, &s);
  if (!IsValidDate(y, m, d)) return std::nullopt;
  return DateTime::FromParts(y, m, d, h, n, s);
}

}  // namespace orv
