// The display list: what a page of the print surface holds, as plain data.
//
// The surface lays text, tables, lines and pictures out and appends the
// results here; the renderers only paint these items, and tests read them.
// All positions are twips from the top left corner of the page.
#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <type_traits>
#include <variant>
#include <vector>

#include "platform/render/document_record.h"
#include "platform/render/twips.h"

namespace orv::render {

struct Rgb {
  uint8_t r = 0, g = 0, b = 0;
  friend bool operator==(Rgb, Rgb) = default;
};

struct Box {
  Twips x, y, width, height;
  friend bool operator==(const Box&, const Box&) = default;
};

// A font file in the document's font table. Text runs refer to it by index so
// that a run stays small; the renderer loads each file once.
struct FontFace {
  std::string family;  // the name the report asked for, e.g. "Tahoma"
  std::string file;    // the TrueType file that stands for it
  bool bold = false;
  bool italic = false;
  // The file has no bold (italic) design of its own, so the renderer
  // emboldens (slants) the regular one.
  bool synthetic_bold = false;
  bool synthetic_italic = false;
};

// One run of text on one line in one font. `x` and `top` are the reference
// point: the left end of the run and the top of its line; `baseline` is the
// top plus the font's ascent. An angle rotates the run about its reference
// point, counter-clockwise in tenths of a degree.
struct TextRun {
  std::string text;  // UTF-8, without line breaks or tabs
  uint16_t font = 0;
  float size_pt = 10;
  Rgb color;
  bool underline = false;
  int16_t angle = 0;
  Twips x, top, baseline;
  Twips width;              // advance width as measured by the layout
  std::optional<Box> clip;  // text outside this box is not painted
};

struct Line {
  Twips x1, y1, x2, y2;
  Twips width;  // 0 is the thinnest line the device can draw
  Rgb color;
  bool dotted = false;
};

struct FilledRect {
  Box box;
  Rgb color;
};

// A decoded picture: rows of 32-bit premultiplied ARGB pixels, native byte
// order, stride = width * 4.
struct Image {
  int width = 0;
  int height = 0;
  std::vector<uint32_t> pixels;
};

struct Picture {
  Box box;  // the picture is scaled to fill it
  std::shared_ptr<const Image> image;
};

// A part of the page that the layout set smaller than the report asked, so
// that it stays inside the margins: a table wider than the body, scaled as a
// whole. `scale` is the factor applied to its widths and type sizes. It
// paints nothing; tests and checks read it.
struct ScaledBlock {
  Box box;
  double scale = 1;
};

using DisplayItem = std::variant<TextRun, Line, FilledRect, Picture, ScaledBlock>;

struct Page {
  Twips width, height;
  std::vector<DisplayItem> items;
};

// The top of an item on its page.
inline Twips TopOf(const DisplayItem& item) {
  return std::visit(
      [](const auto& x) {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, TextRun>) {
          return x.top;
        } else if constexpr (std::is_same_v<T, Line>) {
          return x.y1 < x.y2 ? x.y1 : x.y2;
        } else {
          return x.box.y;
        }
      },
      item);
}

// Moves an item `dy` down its page (up for a negative `dy`).
inline void Shift(DisplayItem& item, Twips dy) {
  std::visit(
      [&](auto& x) {
        using T = std::decay_t<decltype(x)>;
        if constexpr (std::is_same_v<T, TextRun>) {
          x.top += dy;
          x.baseline += dy;
          if (x.clip) x.clip->y += dy;
        } else if constexpr (std::is_same_v<T, Line>) {
          x.y1 += dy;
          x.y2 += dy;
        } else {
          x.box.y += dy;
        }
      },
      item);
}

struct Document {
  std::string name;
  std::vector<FontFace> fonts;
  std::vector<Page> pages;
  // Beside the pages (document_record.h): the tables' cells in the order
  // they were laid out, the letters of a run of statements, and the
  // document's identity.
  std::vector<TableCells> tables;
  std::vector<Letter> letters;
  DocumentIdentity identity;
};

}  // namespace orv::render
