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
  auto keeps_with_next = [&](size_t k) {
    return k < nhead || (k < rules.keep_with_next.size() && rules.keep_with_next[k]);
  };

  int page = 0;
  Twips y = start_y;
  // A break helps only if something stands above the row on its page.
  Twips content_top = page_top;

  auto new_page = [&](bool repeat) {
    ++page;
    y = page_top;
    content_top = y;
    if (repeat) {
      out.repeats.push_back({page, y});
      y += rules.repeat_lead + header_height;
      content_top = y;
    }
  };

  if (rules.keep_together && !heights.empty()) {
    Twips total;
    for (Twips h : heights) total += h;
    if (y + total > page_bottom && y > page_top) new_page(false);
  }

  for (size_t i = 0; i < heights.size(); ++i) {
    if (y + heights[i] > page_bottom && y > content_top) {
      // 1. The chain of rows above this one that keep with the next.
      size_t j = i;
      while (j > 0 && keeps_with_next(j - 1) && out.rows[j - 1].page == page) --j;
      // 2. It moves only if something stays above it and it fits on a page
      //    with this row under a repeated header.
      if (j < i) {
        const Twips chain = y - out.rows[j].y;
        const bool repeat = j >= nhead && nhead > 0 && rules.repeat_header;
        const Twips room = page_bottom - page_top - (repeat ? rules.repeat_lead + header_height
                                                            : Twips(0));
        if (out.rows[j].y <= content_top || chain + heights[i] > room) j = i;
      }
      // 3. A new page, the header block again where the break falls in the
      //    body, and the chain placed again at its top.
      new_page(j >= nhead && nhead > 0 && rules.repeat_header);
      for (size_t k = j; k < i; ++k) {
        out.rows[k] = {page, y};
        y += heights[k];
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
