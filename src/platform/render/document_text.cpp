#include "platform/render/document_text.h"

#include <algorithm>
#include <cmath>
#include <map>

namespace orv::render {

std::string DocumentText(const Document& doc) {
  std::string out;
  for (size_t p = 0; p < doc.pages.size(); ++p) {
    if (p) out += '\f';
    // Group runs by baseline (rounded to a twip), then order each line by x.
    // Each page is unpacked once, and let go once its lines are written.
    const Page page = doc.pages.Read(p);
    std::map<long, std::vector<const TextRun*>> lines;
    for (const auto& item : page.items) {
      if (const auto* run = std::get_if<TextRun>(&item)) {
        lines[std::lround(run->baseline.value())].push_back(run);
      }
    }
    for (auto& [y, runs] : lines) {
      std::stable_sort(runs.begin(), runs.end(),
                       [](auto* a, auto* b) { return a->x.value() < b->x.value(); });
      std::string line;
      double end = -1;
      for (const auto* r : runs) {
        // Separate runs that do not touch by at least one blank.
        if (end >= 0 && r->x.value() > end + 20 && (line.empty() || line.back() != ' '))
          line += ' ';
        line += r->text;
        end = r->x.value() + r->width.value();
      }
      out += line;
      out += '\n';
    }
  }
  return out;
}

}  // namespace orv::render
