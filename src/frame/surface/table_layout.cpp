#include "frame/surface/table_layout.h"

#include <algorithm>

namespace orv::frame {

TablePlacement PlaceRows(const std::vector<Twips>& heights, const PlacementRules& rules,
                         Twips start_y, Twips page_top, Twips page_bottom) {
  TablePlacement out;
  out.rows.resize(heights.size());
  const size_t nhead = std::min<size_t>(std::max(rules.header_rows, 0), heights.size());
  Twips header_height;
  for (size_t i = 0; i < nhead; ++i) header_height += heights[i];

  int page = 0;
  Twips y = start_y;
  // A break helps only if something stands above the row on its page.
  Twips content_top = page_top;

  auto new_page = [&]() {
    ++page;
    y = page_top;
    content_top = y;
  };

  if (rules.keep_together && !heights.empty()) {
    Twips total;
    for (Twips h : heights) total += h;
    if (y + total > page_bottom && y > page_top) new_page();
  }

  for (size_t i = 0; i < heights.size(); ++i) {
    Twips need = heights[i];
    // The header block goes only where the first body row fits under it.
    if (i == 0 && nhead > 0 && nhead < heights.size()) need = header_height + heights[nhead];
    const bool starts_header = i == 0 && nhead > 0;
    if ((i >= nhead || starts_header) && y + need > page_bottom && y > content_top) {
      new_page();
      if (i >= nhead && rules.repeat_header && nhead > 0) {
        out.repeats.push_back({page, y});
        y += header_height;
        content_top = y;
      }
    }
    out.rows[i] = {page, y};
    y += heights[i];
  }
  out.pages = page + 1;
  out.end_y = y;
  return out;
}

}  // namespace orv::frame
