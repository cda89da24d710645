// Breaking text into lines: pure functions over widths.
//
// The text is UTF-8. A carriage return and line feed, or either alone, ends a
// line. A tab moves to the next half-inch stop counted from the line's start
// that leaves at least a blank's width after the text before it.
// Lines wrap at blanks, and after a hyphen or slash that stands between two
// letters ("Smith-Jones", "Home/Work"). Nothing else breaks a word: a figure
// ("$37,558.62", "Nov/20/2026", "555-0100") or a policy number stays whole,
// and a word wider than the line stands alone on a line wider than asked;
// the caller sets such text smaller (FitSize). Widths come from a measuring
// function, so tests can use any.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/surface/font_metrics.h"
#include "platform/render/twips.h"

namespace orv::frame {

inline constexpr Twips kTabStop = Twips(720);

// Width of a piece of text that holds no line break or tab.
using MeasureFn = std::function<Twips(std::string_view)>;

// The width of text in one font at one size, as a MeasureFn built from the
// same font and size gives it. A plain value rather than a MeasureFn, so that
// a table measuring every word of thousands of cells does so without a call
// through a pointer for each word.
struct FontMeasure {
  const FontMetrics* metrics;
  double size_pt;
  Twips operator()(std::string_view s) const { return metrics->Width(s, size_pt); }
};

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

// The width of `text` when BreakLines would set it as one line holding one
// piece, the whole text, no wider than `room`; nothing otherwise (a line
// break or tab, a word that would wrap, an empty text). The width is the
// one BreakLines gives, to the last bit, so a caller that lays most cells
// out as one line can take this and keep BreakLines for the rest, without
// building lines it would throw away.
std::optional<Twips> SingleLineWidth(std::string_view text, const MeasureFn& measure, Twips room,
                                     bool wrap = true);
std::optional<Twips> SingleLineWidth(std::string_view text, const FontMeasure& measure, Twips room,
                                     bool wrap = true);

// One line of a text as BreakLines would set it: where it stands in the
// text, and its width.
struct ShortLine {
  uint32_t offset, length;
  Twips width;
};

// Where the lines PlacedLines gives may end.
enum class LineEnds : uint8_t {
  kAtBreaks,          // at line breaks only; a text a line of which would wrap is refused
  kAtBreaksAndWraps,  // at line breaks and where BreakLines wraps
};

// The lines BreakLines would give `text` when each of them fits `room` and
// none holds a tab, appended to `out`: one per line break and one more, and
// with kAtBreaksAndWraps one more per wrap, each wrapped line without the
// blanks BreakLines trims there; each with the width BreakLines gives it.
// False, with `out` as it was, for any other text: a tab, a word wider than
// the room (which BreakLines leaves alone on a line wider than asked), or
// with kAtBreaks a wrap. Like SingleLineWidth it lets a table keep most
// cells of a few lines (an address, two phone numbers, a wrapped note) as
// places in their text rather than as lines of their own.
bool PlacedLines(std::string_view text, const MeasureFn& measure, Twips room, bool wrap,
                 LineEnds ends, std::vector<ShortLine>& out);
bool PlacedLines(std::string_view text, const FontMeasure& measure, Twips room, bool wrap,
                 LineEnds ends, std::vector<ShortLine>& out);

// The widest line of `lines`.
Twips WidestLine(const std::vector<TextLine>& lines);

// The smallest size, in points, at which text is still set to keep a word
// whole in a narrow cell or line; below it the text overflows instead.
inline constexpr double kLegibleFloorPt = 6.0;

// The size at which text set at `size_pt`, whose widest line is `widest`,
// fits `room`: `size_pt` itself when it fits, else smaller in proportion
// (widths scale with the size), never below `floor_pt` nor above `size_pt`.
double FitSize(double size_pt, Twips widest, Twips room, double floor_pt = kLegibleFloorPt);

// The text in Unicode's composed form (NFC): a letter followed by combining
// accents ("E" U+0301) becomes the one accented letter the fonts hold ("É").
// Text without any byte above 0x7F is returned as it is, without a copy of
// the work. Invalid UTF-8 is returned unchanged, as the measuring reads it.
std::string ComposeText(std::string_view text);
// True when ComposeText would change nothing: plain ASCII.
bool IsPlainAscii(std::string_view text);

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
