// Where the rows of a table go: a pure function over row heights.
#pragma once

#include <vector>

#include "platform/render/twips.h"

namespace orv::frame {

struct RowPlacement {
  int page = 0;  // pages after the one the table starts on
  Twips y;       // top of the row
};

struct TablePlacement {
  std::vector<RowPlacement> rows;     // one per input row
  std::vector<RowPlacement> repeats;  // where the lead and header block are drawn again
  int pages = 1;                      // pages the table touches
  Twips end_y;                        // bottom of the last row on the last page
};

struct PlacementRules {
  int header_rows = 0;         // leading rows that form the header block
  bool repeat_header = true;   // draw the header block again after each break
  bool keep_together = false;  // start on a fresh page unless the whole table fits
  // Rows that stay on the page of the row after them, indexed like the
  // heights (missing entries are false): a row that introduces the rows
  // below it, or the row before a closing totals row. The header rows always
  // keep with the first body row.
  std::vector<bool> keep_with_next;
  // Height drawn above the repeated header block on each continued page: a
  // heading that introduced the table and is repeated with it.
  Twips repeat_lead;
};

// Places rows of the given heights from `start_y` down, breaking to the next
// page (whose rows start at `page_top`) when a row would pass `page_bottom`.
// At a break, the rows just above it that keep with the next go to the new
// page with it, unless they fill their page from the top (then moving them
// would only leave a page empty) or would not fit on a page with it. So the
// header block is never alone at the foot of a page, nor a row that
// introduces others, and a row kept with a last row never leaves that row
// alone at the top of one. A row taller than a whole page is placed at the
// top of a page and overruns it, so the layout always ends.
TablePlacement PlaceRows(const std::vector<Twips>& heights, const PlacementRules& rules,
                         Twips start_y, Twips page_top, Twips page_bottom);

}  // namespace orv::frame
