// The program's own PDF writer of the display list: page contents written
// straight from the items, fonts embedded as subsets of their files,
// pictures as image objects shared by every page that shows them.
//
// It puts each glyph where the cairo renderers put it (both take their
// glyphs and positions from PlaceGlyphs, cairo_fonts.h), so a reader sees
// the same pages and gets the same text back; it is some times faster than
// cairo's PDF surface on table pages, which spends most of its time
// re-measuring glyphs and printing numbers through its general machinery.
#pragma once

#include <string>

#include "platform/render/display_list.h"

namespace orv::render {

// Writes pages `first` to `last` (from 1, both valid) of `doc` to a PDF
// file at `path`. Raises RenderError naming the path when the file cannot
// be written; a file it began is removed again.
void WritePdf(const Document& doc, const std::string& path, int first, int last);

}  // namespace orv::render
