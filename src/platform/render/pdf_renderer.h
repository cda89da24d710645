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

#include <memory>
#include <string>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::render {

// Writes pages `first` to `last` (from 1, both valid) of `doc` to a PDF
// file at `path`. Raises RenderError naming the path when the file cannot
// be written; a file it began is removed again.
// When the document was laid out with pages handed to PaintPdfAhead, a
// file of all its pages takes them as they were painted then.
void WritePdf(const Document& doc, const std::string& path, int first, int last);

// A sink for a document's pages (PageStore::HandOver) that paints each page
// for WritePdf on a second thread as soon as it is finished, while the rest
// is laid out. `fonts` is the document's font table, read on the thread that
// hands the pages over; it must outlive the sink.
//
// The painted pages' compressed contents past `held_in_memory` bytes go to
// a temporary file until the PDF is written. The billing list of a
// 20,000-patient practice paints 7,687 pages into some 17 MB: held whole,
// they would add that to a run whose recordsets are still in memory.
std::shared_ptr<PageSink> PaintPdfAhead(const std::vector<FontFace>& fonts,
                                        size_t held_in_memory = size_t(2) << 20);

}  // namespace orv::render
