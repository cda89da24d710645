// The lines of a document's text (pages parted by form feeds), each with the
// number of the page it stands on: for checking what a report keeps together.
#pragma once

#include <string>
#include <utility>
#include <vector>

namespace orv::testing {

// Page number (from 1) and text of every non-empty line, in order.
inline std::vector<std::pair<int, std::string>> PagedLines(const std::string& text) {
  std::vector<std::pair<int, std::string>> lines;
  int page = 1;
  std::string line;
  for (const char ch : text + "\n") {
    if (ch == '\n' || ch == '\f') {
      if (!line.empty()) lines.emplace_back(page, line);
      line.clear();
      if (ch == '\f') ++page;
    } else {
      line += ch;
    }
  }
  return lines;
}

}  // namespace orv::testing
