// Breaking text into lines: pure functions over widths.
//
// The text is UTF-8. A carriage return and line feed, or either alone, ends a
// line. A tab moves to the next half-inch stop counted from the line's start.
// Lines wrap at blanks; a word longer than the whole width is broken between
// characters. Widths come from a measuring function, so tests can use any.
#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/render/twips.h"

namespace orv::frame {

inline constexpr Twips kTabStop = Twips(720);

// Width of a piece of text that holds no line break or tab.
using MeasureFn = std::function<Twips(std::string_view)>;

// A piece of a line without tabs, at `x` from the line's start.
struct LineSegment {
  std::string text;
  Twips x;
  Twips width;
};

struct TextLine {
  std::vector<LineSegment> segments;
  Twips width;                  // from the line's start to the end of its last piece
  bool ends_paragraph = false;  // the last line, or one ended by a line break
};

// Breaks `text` into lines no wider than `first_width` (first line) and
// `next_width` (the others). With `wrap` false lines break only at line
// breaks. An empty text gives one empty line.
std::vector<TextLine> BreakLines(std::string_view text, const MeasureFn& measure, Twips first_width,
                                 Twips next_width, bool wrap = true);

// Horizontal offset of a line of `line_width` in a band of `band_width` for
// the horizontal part of an alignment code (code modulo 4: 0 left, 1 centre,
// 2 right, 3 justified, which sits at the left).
Twips AlignOffset(int align, Twips band_width, Twips line_width);

// Spreads the words of a line over `band_width` for justified text. Lines that
// end a paragraph, hold a tab or hold one word stay as they are.
TextLine Justify(const TextLine& line, const MeasureFn& measure, Twips band_width);

// Vertical offset of a block of `block_height` in a box of `box_height` for a
// TextBox alignment code: 0-3 top, 4-7 middle, 8 and above bottom.
Twips VerticalOffset(int align, Twips box_height, Twips block_height);

}  // namespace orv::frame
