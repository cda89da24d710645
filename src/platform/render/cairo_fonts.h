// The fonts of the cairo renderers: faces loaded from the font files the
// layout measured, and text runs turned into positioned glyphs from tables.
//
// cairo can map UTF-8 to glyphs itself (cairo_scaled_font_text_to_glyphs),
// but it validates, allocates and looks every glyph up in its caches for
// each call: in a document of thousands of table pages that is a good part
// of the time spent painting. The placer keeps, per font of the document, the
// glyph of each character and, per font and size, the advance of each glyph,
// asked of cairo once, and sets the pen as cairo does (each glyph at the sum
// of the advances before it), so the positions are the very doubles cairo
// would give.
#pragma once

#include <cairo.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/render/display_list.h"

namespace orv::render {

// The cairo face of a document font: its file, emboldened or slanted by
// FreeType where the face is synthetic. Loaded once per file and style and
// kept for the life of the process; raises RenderError when the file cannot
// be loaded.
cairo_font_face_t* FaceFor(const FontFace& f);

// Sets `cr` to unhinted outlines and metrics, as the layout measures them:
// glyphs then advance exactly as measured.
void SetUnhinted(cairo_t* cr);

class GlyphPlacer {
 public:
  // Appends the glyphs of `utf8` set from the pen (x, y) with `font`, which
  // is font `font_index` of the document at `size_pt` and the context's
  // usual transformation (not rotated or moved: the cache keys on the font
  // and size alone). Returns false, appending nothing, when cairo cannot
  // map the text (invalid UTF-8).
  bool Place(cairo_scaled_font_t* font, uint16_t font_index, float size_pt, std::string_view utf8,
             double x, double y, std::vector<cairo_glyph_t>& out);

 private:
  static constexpr uint32_t kUnknown = UINT32_MAX;
  // The glyph of code point `c` (below 0x10000) in font `font_index`.
  uint32_t GlyphOf(cairo_scaled_font_t* font, uint16_t font_index, char32_t c);
  // The advance (x, y) of `glyph` in the font and size of `advances`.
  const std::pair<double, double>& AdvanceOf(cairo_scaled_font_t* font,
                                             std::vector<std::pair<double, double>>& advances,
                                             uint32_t glyph);

  // Per font: code point -> glyph, in blocks of 256 code points made on
  // first use (a document prints from a few blocks; a whole plane per font
  // was a quarter megabyte of fresh pages for every document).
  using GlyphBlock = std::array<uint32_t, 256>;
  std::vector<std::vector<std::unique_ptr<GlyphBlock>>> glyphs_;
  std::map<std::pair<uint16_t, float>, std::vector<std::pair<double, double>>> advances_;
  // The advances of the last font and size asked for.
  std::pair<uint16_t, float> last_key_{UINT16_MAX, 0.0f};
  std::vector<std::pair<double, double>>* last_ = nullptr;
};

// The glyphs of a run from the pen (x, y) on, placed as the layout measured
// them: the unhinted advances of the font file, as cairo places them with
// hinting of metrics off, and for a face emboldened by FreeType each glyph
// that advances a 24th of an em further, the width its stroke grew by (the
// layout's FontMetrics measure synthetic bold the same way).
//
// With a `placer` the glyphs come from its tables, which hold for the
// context's usual transformation only; runs drawn turned or moved take
// cairo's mapping. The glyphs are appended to `out`.
void PlaceGlyphs(cairo_scaled_font_t* font, const TextRun& t, bool synthetic_bold, double x,
                 double y, GlyphPlacer* placer, std::vector<cairo_glyph_t>& out);

// Spaces the glyphs of a run from `first` on as a face FreeType emboldens
// is measured: each glyph after one with an advance sits a 24th of an em
// (of `size_pt`) further right. `last_advance` is the advance of the run's
// last glyph, which no glyph after it gives.
void SpaceEmboldened(std::vector<cairo_glyph_t>& out, size_t first, double size_pt,
                     double last_advance);

// Decodes one character of the Basic Multilingual Plane from well-formed
// UTF-8 at `i`, advancing `i`; 0 for anything else (a NUL, a malformed or
// overlong sequence, a surrogate, a character past the plane), which sends
// the whole run to cairo's own mapping.
char32_t NextBmpChar(std::string_view s, size_t& i);

}  // namespace orv::render
