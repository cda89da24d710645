#include "frame/surface/text_layout.h"

#include <cmath>

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
  void Tab() {
    x = Twips((std::floor(x.value() / kTabStop.value()) + 1) * kTabStop.value());
    open_segment = false;
    line.width = x;
  }
  bool Empty() const { return line.segments.empty() && x.value() == 0; }
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

// Splits a word that does not fit on a line of its own between characters.
size_t FitPrefix(std::string_view word, const MeasureFn& measure, Twips room) {
  size_t fit = 0, i = 0;
  while (i < word.size()) {
    size_t next = i + 1;
    while (next < word.size() && (static_cast<unsigned char>(word[next]) & 0xC0) == 0x80) ++next;
    if (measure(word.substr(0, next)) > room) break;
    fit = i = next;
  }
  if (fit == 0) {  // not even one character fits: take one anyway
    fit = 1;
    while (fit < word.size() && (static_cast<unsigned char>(word[fit]) & 0xC0) == 0x80) ++fit;
  }
  return fit;
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
      b.Tab();
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
    std::string_view word = text.substr(i, j - i);
    Twips w = measure(word);
    if (wrap && b.x + w > room()) {
      // A word that does not fit moves to the next line; on a first line
      // shortened by the pen's position it moves down rather than being
      // cut into pieces.
      if (!b.Empty() || (lines.empty() && first_width < next_width)) finish(false);
      while (w > room()) {
        const size_t fit = FitPrefix(word, measure, room());
        if (fit >= word.size()) break;
        b.Add(word.substr(0, fit), measure(word.substr(0, fit)));
        finish(false);
        word.remove_prefix(fit);
        w = measure(word);
      }
    }
    b.Add(word, w);
    i = j;
  }
  finish(true);
  return lines;
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
