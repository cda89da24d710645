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
  std::vector<RowPlacement> repeats;  // where the header block is drawn again
  int pages = 1;                      // pages the table touches
  Twips end_y;                        // bottom of the last row on the last page
};

struct PlacementRules {
  int header_rows = 0;         // leading rows that form the header block
  bool repeat_header = true;   // draw the header block again after each break
  bool keep_together = false;  // start on a fresh page unless the whole table fits
};

// Places rows of the given heights from `start_y` down, breaking to the next
// page (whose rows start at `page_top`) when a row would pass `page_bottom`.
// A row taller than a whole page is placed at the top of a page and overruns
// it, so the layout always ends. The header block is never left alone at the
// foot of a page: it moves with the first body row.
TablePlacement PlaceRows(const std::vector<Twips>& heights, const PlacementRules& rules,
                         Twips start_y, Twips page_top, Twips page_bottom);

}  // namespace orv::frame
