#include "frame/surface/text_layout.h"

#include <glib.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace orv::frame {
namespace {

// Appends text to the last segment of the line, starting one if the line has
// none since the last tab.
struct LineBuilder {
  TextLine line;
  bool open_segment = false;  // the last segment may still grow
  Twips x;                    // pen within the line

  void Add(std::string_view piece, Twips w) {
    if (!open_segment) {
      line.segments.push_back({std::string(), x, Twips(0)});
      open_segment = true;
    }
    auto& seg = line.segments.back();
    seg.text.append(piece);
    seg.width += w;
    x += w;
    line.width = seg.x + seg.width;
  }
  void Tab(Twips stop) {
    x = stop;
    open_segment = false;
    line.width = x;
  }
  // Nothing but blanks so far (or nothing at all), and no tab.
  bool BlankOnly() const {
    if (line.segments.empty()) return x.value() == 0;
    if (line.segments.size() > 1 || line.segments[0].x.value() != 0) return false;
    return line.segments[0].text.find_first_not_of(' ') == std::string::npos;
  }
  // Blanks at the end of a wrapped line take no room.
  void TrimTrailingBlanks(const MeasureFn& measure) {
    if (line.segments.empty() || !open_segment) return;
    auto& seg = line.segments.back();
    size_t n = seg.text.size();
    while (n > 0 && seg.text[n - 1] == ' ') --n;
    if (n == seg.text.size()) return;
    seg.text.resize(n);
    seg.width = measure(seg.text);
    line.width = seg.x + seg.width;
    if (seg.text.empty()) line.segments.pop_back();
  }
};

// The stop a tab at `x` moves to: the next half-inch stop that leaves at
// least `gap` after the text before it. Text that ends a hair short of a
// stop would otherwise touch what the tab puts there, as if the two were one
// word; such a tab goes on to the stop after.
Twips NextTabStop(Twips x, Twips gap) {
  Twips stop((std::floor(x.value() / kTabStop.value()) + 1) * kTabStop.value());
  while (stop - x < gap) stop += kTabStop;
  return stop;
}

bool IsLetter(char c) {
  const auto u = static_cast<unsigned char>(c);
  return u >= 0x80 || (u >= 'A' && u <= 'Z') || (u >= 'a' && u <= 'z');
}

// Where a word may break: after a hyphen or slash with a letter on each
// side. A hyphen or slash next to a digit belongs to a figure or a date and
// never breaks. Returns the length of the word's first piece.
size_t FirstPiece(std::string_view word) {
  for (size_t k = 1; k + 1 < word.size(); ++k)
    if ((word[k] == '-' || word[k] == '/') && IsLetter(word[k - 1]) && IsLetter(word[k + 1]))
      return k + 1;
  return word.size();
}

}  // namespace

std::vector<TextLine> BreakLines(std::string_view text, const MeasureFn& measure, Twips first_width,
                                 Twips next_width, bool wrap) {
  std::vector<TextLine> lines;
  LineBuilder b;
  auto room = [&]() { return lines.empty() ? first_width : next_width; };
  auto finish = [&](bool paragraph_end) {
    if (!paragraph_end) b.TrimTrailingBlanks(measure);
    b.line.ends_paragraph = paragraph_end;
    lines.push_back(std::move(b.line));
    b = LineBuilder();
  };

  size_t i = 0;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '\r' || c == '\n') {
      finish(true);
      i += (c == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ? 2 : 1;
      continue;
    }
    if (c == '\t') {
      // A tab whose stop lies past the line's room ends the line, and the
      // tabs after it go with it as blanks at a break do: the text behind
      // them starts the next line rather than widen this one past its cell.
      // Tabs with no text behind them on their line simply vanish.
      // The gap is a blank's width; a tab at the line's start or behind
      // another tab has no text to keep clear of.
      const Twips stop = NextTabStop(b.x, b.open_segment ? measure(" ") : Twips(0));
      if (wrap && stop > room() && !b.line.segments.empty()) {
        while (i < text.size() && text[i] == '\t') ++i;
        if (i < text.size() && text[i] != '\r' && text[i] != '\n') finish(false);
        continue;
      }
      b.Tab(stop);
      ++i;
      continue;
    }
    if (c == ' ') {
      size_t j = i;
      while (j < text.size() && text[j] == ' ') ++j;
      b.Add(text.substr(i, j - i), measure(text.substr(i, j - i)));
      i = j;
      continue;
    }
    size_t j = i;
    while (j < text.size() && text[j] != ' ' && text[j] != '\t' && text[j] != '\r' &&
           text[j] != '\n')
      ++j;
    // The word goes on in pieces, each of which may start a new line. A
    // piece wider than the whole line still goes on whole: the caller sets
    // the text smaller rather than cut a word or a figure in two.
    std::string_view word = text.substr(i, j - i);
    bool first_piece = true;
    while (!word.empty()) {
      const std::string_view piece = word.substr(0, FirstPiece(word));
      const Twips w = measure(piece);
      if (wrap && b.x + w > room()) {
        // On a first line shortened by the pen's position a word that does
        // not fit moves down whole; a line of blanks alone is no line yet.
        const bool shortened_first = lines.empty() && first_width < next_width && first_piece;
        if (!b.BlankOnly() || shortened_first) finish(false);
      }
      b.Add(piece, w);
      word.remove_prefix(piece.size());
      first_piece = false;
    }
    i = j;
  }
  finish(true);
  return lines;
}

namespace {

// Where a line measured by LineWidthFrom stops.
struct LineStop {
  size_t end = 0;  // one past the line's last byte
  // Where the next line starts when this one wrapped; npos when it ended
  // at a line break or the text's end.
  size_t next = std::string_view::npos;
};

// A line of `text` from `start` that wraps before the piece at `at`, the
// line holding a word already: as BreakLines ends it, the blanks before the
// piece trimmed off, and, if there were any, what is left measured whole
// (`x` is the line's width summed piece by piece up to `at`). Nothing when
// the line is then wider than `room`.
template <typename Measure>
std::optional<Twips> WrappedBefore(std::string_view text, size_t start, size_t at, Twips x,
                                   const Measure& measure, Twips room, LineStop& stop) {
  size_t end = at;
  while (end > start && text[end - 1] == ' ') --end;
  stop.end = end;
  stop.next = at;
  const Twips width = Twips(0) + (end == at ? x : measure(text.substr(start, end - start)));
  if (width > room) return std::nullopt;
  return width;
}

// The width BreakLines gives the line of `text` that starts at `i`, up to
// its line break or the text's end, when it sets it as one piece that fits
// `room`, summed as BreakLines sums it (blanks, words and word pieces, in
// order); nothing when the line holds a tab or, unless `may_wrap`, a piece
// would wrap. With `may_wrap` the line ends where BreakLines wraps it,
// unless that leaves a piece wider than the room alone on a line (which
// BreakLines sets smaller). An empty line is no width.
template <typename Measure>
std::optional<Twips> WholeLineWidth(std::string_view text, size_t i, const Measure& measure,
                                    Twips room, bool wrap, bool may_wrap, LineStop& stop) {
  const size_t start = i;
  stop.next = std::string_view::npos;
  Twips x;
  bool has_word = false;
  while (i < text.size()) {
    const char c = text[i];
    if (c == '\t') return std::nullopt;
    if (c == '\r' || c == '\n') break;
    size_t j = i;
    if (c == ' ') {
      while (j < text.size() && text[j] == ' ') ++j;
      x += measure(text.substr(i, j - i));
      i = j;
      continue;
    }
    while (j < text.size() && text[j] != ' ' && text[j] != '\t' && text[j] != '\r' &&
           text[j] != '\n')
      ++j;
    std::string_view word = text.substr(i, j - i);
    while (!word.empty()) {
      const std::string_view piece = word.substr(0, FirstPiece(word));
      const Twips w = measure(piece);
      if (wrap && x + w > room) {
        if (!may_wrap || !has_word) return std::nullopt;
        return WrappedBefore(text, start, size_t(piece.data() - text.data()), x, measure, room,
                             stop);
      }
      x += w;
      has_word = true;
      word.remove_prefix(piece.size());
    }
    i = j;
  }
  stop.end = i;
  if (x > room) return std::nullopt;
  // The line's width is its one piece's, placed at the line's start.
  return Twips(0) + x;
}

// What a byte of a line is to the measuring in one pass: most bytes are
// part of a word and only add their advance; the rest end a piece or a
// line, or are read by the decoder.
enum ByteClass : uint8_t {
  kWordByte = 0,  // ASCII inside a word
  kBlankByte,     // ' '
  kBreakByte,     // tab, carriage return, line feed
  kJoinByte,      // '-' and '/': a piece may end after one
  kHighByte,      // part of a character past ASCII
};
constexpr std::array<uint8_t, 256> kByteClass = [] {
  std::array<uint8_t, 256> t{};
  t[' '] = kBlankByte;
  t['\t'] = t['\r'] = t['\n'] = kBreakByte;
  t['-'] = t['/'] = kJoinByte;
  for (int b = 0x80; b < 0x100; ++b) t[size_t(b)] = kHighByte;
  return t;
}();

// The width of the line of `text` that starts at `i`, and where it stops,
// as WholeLineWidth gives them for a font: each run of blanks and each word
// piece (FirstPiece's pieces) is summed in font units as it is read and
// converted as FontMeasure converts it, so the widths agree to the last
// bit. A piece holding a character past ASCII is measured whole, as the
// decoder reads it. One pass finds the line's end and measures it: a table
// measures every line of every cell this way.
std::optional<Twips> FontLineWidth(std::string_view text, size_t i, const FontMeasure& measure,
                                   Twips room, bool wrap, bool may_wrap, LineStop& stop) {
  const FontMetrics& m = *measure.metrics;
  const size_t n = text.size();
  const size_t start = i;
  stop.next = std::string_view::npos;
  Twips x;
  bool has_word = false;
  while (i < n) {
    const auto c = static_cast<unsigned char>(text[i]);
    const uint8_t cls = kByteClass[c];
    if (cls == kBreakByte) {
      if (c == '\t') return std::nullopt;
      break;  // the line ends here
    }
    size_t j = i;
    if (cls == kBlankByte) {
      while (j < n && text[j] == ' ') ++j;
      x += m.Width(int64_t(j - i) * m.Advance(U' '), measure.size_pt);
      i = j;
      continue;
    }
    size_t piece = i;  // where the piece being summed starts
    int64_t units = 0;
    bool ascii = true;
    // False when the piece ending at `end` does not fit: the line then
    // wraps before it, or is refused.
    auto add_piece = [&](size_t end) {
      const Twips w = ascii ? m.Width(units, measure.size_pt)
                            : measure(text.substr(piece, end - piece));
      if (wrap && x + w > room) return false;
      x += w;
      has_word = true;
      return true;
    };
    auto wrapped = [&]() -> std::optional<Twips> {
      if (!may_wrap || !has_word) return std::nullopt;
      return WrappedBefore(text, start, piece, x, measure, room, stop);
    };
    while (true) {
      if (j == n) {
        if (!add_piece(j)) return wrapped();
        break;
      }
      const auto b = static_cast<unsigned char>(text[j]);
      const uint8_t k = kByteClass[b];
      if (k == kWordByte) {
        units += m.Advance(b);
        ++j;
        continue;
      }
      if (k == kBlankByte || k == kBreakByte) {
        if (!add_piece(j)) return wrapped();
        break;
      }
      if (k == kHighByte) {
        ascii = false;
        ++j;
        continue;
      }
      units += m.Advance(b);
      // A hyphen or slash with a letter on each side ends a piece, never
      // the piece's first character. The byte after a line's last is a
      // line break or the end, never a letter.
      if (j > piece && j + 1 < n && IsLetter(text[j - 1]) && IsLetter(text[j + 1])) {
        if (!add_piece(j + 1)) return wrapped();
        piece = j + 1;
        units = 0;
        ascii = true;
      }
      ++j;
    }
    i = j;
  }
  stop.end = i;
  if (x > room) return std::nullopt;
  return Twips(0) + x;
}

std::optional<Twips> LineWidthFrom(std::string_view text, size_t i, const MeasureFn& measure,
                                   Twips room, bool wrap, bool may_wrap, LineStop& stop) {
  return WholeLineWidth(text, i, measure, room, wrap, may_wrap, stop);
}
std::optional<Twips> LineWidthFrom(std::string_view text, size_t i, const FontMeasure& measure,
                                   Twips room, bool wrap, bool may_wrap, LineStop& stop) {
  return FontLineWidth(text, i, measure, room, wrap, may_wrap, stop);
}

template <typename Measure>
std::optional<Twips> SingleLineWidthWith(std::string_view text, const Measure& measure, Twips room,
                                         bool wrap) {
  if (text.empty()) return std::nullopt;
  LineStop stop;
  const auto width = LineWidthFrom(text, 0, measure, room, wrap, false, stop);
  if (!width || stop.end != text.size()) return std::nullopt;
  return width;
}

template <typename Measure>
bool PlacedLinesWith(std::string_view text, const Measure& measure, Twips room, bool wrap,
                     bool may_wrap, std::vector<ShortLine>& out) {
  // BreakLines ends a line at each line break without trimming it, and
  // starts the next at no width; after the last break comes one more line.
  // A wrapped line goes on at the piece that did not fit.
  if (text.size() > UINT32_MAX) return false;
  const size_t first = out.size();
  size_t line_start = 0;
  while (true) {
    LineStop stop;
    const auto width = LineWidthFrom(text, line_start, measure, room, wrap, may_wrap, stop);
    if (!width) {
      out.resize(first);
      return false;
    }
    out.push_back({uint32_t(line_start), uint32_t(stop.end - line_start), *width});
    if (stop.next != std::string_view::npos) {
      line_start = stop.next;  // past a word, so the next line starts further on
      continue;
    }
    const size_t end = stop.end;
    if (end == text.size()) return true;
    line_start = end + (text[end] == '\r' && end + 1 < text.size() && text[end + 1] == '\n' ? 2 : 1);
  }
}

}  // namespace

std::optional<Twips> SingleLineWidth(std::string_view text, const MeasureFn& measure, Twips room,
                                     bool wrap) {
  return SingleLineWidthWith(text, measure, room, wrap);
}
std::optional<Twips> SingleLineWidth(std::string_view text, const FontMeasure& measure, Twips room,
                                     bool wrap) {
  return SingleLineWidthWith(text, measure, room, wrap);
}

bool PlacedLines(std::string_view text, const MeasureFn& measure, Twips room, bool wrap,
                 LineEnds ends, std::vector<ShortLine>& out) {
  return PlacedLinesWith(text, measure, room, wrap, ends == LineEnds::kAtBreaksAndWraps, out);
}
bool PlacedLines(std::string_view text, const FontMeasure& measure, Twips room, bool wrap,
                 LineEnds ends, std::vector<ShortLine>& out) {
  return PlacedLinesWith(text, measure, room, wrap, ends == LineEnds::kAtBreaksAndWraps, out);
}

Twips WidestLine(const std::vector<TextLine>& lines) {
  Twips widest;
  for (const auto& l : lines) widest = std::max(widest, l.width);
  return widest;
}

double FitSize(double size_pt, Twips widest, Twips room, double floor_pt) {
  if (widest <= room || widest.value() <= 0) return size_pt;
  const double fitted = size_pt * (room.value() / widest.value());
  return std::min(size_pt, std::max(fitted, floor_pt));
}

bool IsPlainAscii(std::string_view text) {
  // Eight bytes at a time: every cell of every table passes through here.
  size_t i = 0;
  for (; i + 8 <= text.size(); i += 8) {
    uint64_t word;
    std::memcpy(&word, text.data() + i, 8);
    if (word & 0x8080808080808080u) return false;
  }
  for (; i < text.size(); ++i)
    if (static_cast<unsigned char>(text[i]) >= 0x80) return false;
  return true;
}

namespace {

// True when every character of `text` lies below U+0300, where the
// combining accents begin: no such character decomposes into one that
// composes differently, nor combines with the one before it, so the text
// is its own composed form. Names in French and the other Latin-1
// languages take this path; bytes that are not UTF-8 also come back
// unchanged, as from the normaliser.
bool BelowCombiningMarks(std::string_view text) {
  for (const char c : text) {
    const auto u = static_cast<unsigned char>(c);
    // Lead bytes 0xCC and up begin U+0300 and above.
    if (u >= 0xCC) return false;
  }
  return true;
}

}  // namespace

std::string ComposeText(std::string_view text) {
  if (IsPlainAscii(text) || BelowCombiningMarks(text)) return std::string(text);
  // GLib's normaliser comes into the build with the renderers' text stack.
  if (!g_utf8_validate(text.data(), gssize(text.size()), nullptr)) return std::string(text);
  gchar* composed = g_utf8_normalize(text.data(), gssize(text.size()), G_NORMALIZE_NFC);
  if (composed == nullptr) return std::string(text);
  std::string out(composed);
  g_free(composed);
  return out;
}

Twips AlignOffset(int align, Twips band_width, Twips line_width) {
  switch (((align % 4) + 4) % 4) {
    case 1:
      return (band_width - line_width) / 2;
    case 2:
      return band_width - line_width;
    default:
      return Twips(0);
  }
}

TextLine Justify(const TextLine& line, const MeasureFn& measure, Twips band_width) {
  if (line.ends_paragraph || line.segments.size() != 1 || line.segments[0].x.value() != 0)
    return line;
  const std::string& s = line.segments[0].text;
  std::vector<std::string_view> words;
  size_t i = 0;
  while (i < s.size()) {
    while (i < s.size() && s[i] == ' ') ++i;
    size_t j = i;
    while (j < s.size() && s[j] != ' ') ++j;
    if (j > i) words.push_back(std::string_view(s).substr(i, j - i));
    i = j;
  }
  if (words.size() < 2) return line;
  Twips total;
  std::vector<Twips> widths;
  for (auto w : words) widths.push_back(measure(w)), total += widths.back();
  const Twips gap = (band_width - total) / double(words.size() - 1);
  TextLine out;
  out.ends_paragraph = false;
  Twips x;
  for (size_t k = 0; k < words.size(); ++k) {
    out.segments.push_back({std::string(words[k]), x, widths[k]});
    x += widths[k] + gap;
  }
  out.width = band_width;
  return out;
}

Twips VerticalOffset(int align, Twips box_height, Twips block_height) {
  if (align >= 8) return box_height - block_height;
  if (align >= 4) return (box_height - block_height) / 2;
  return Twips(0);
}

}  // namespace orv::frame
