// cairo's own reading of text, for the tests that hold the painters to it.
#pragma once

#include <cairo.h>

#include <string>
#include <vector>

#include "platform/render/cairo_fonts.h"

namespace orv::render {

// cairo's glyphs for `text` at (x, y), or none with `ok` false when cairo
// refuses the text.
inline std::vector<cairo_glyph_t> CairoGlyphs(cairo_scaled_font_t* font, const std::string& text,
                                              double x, double y, bool& ok) {
  cairo_glyph_t* glyphs = nullptr;
  int count = 0;
  ok = cairo_scaled_font_text_to_glyphs(font, x, y, text.data(), int(text.size()), &glyphs, &count,
                                        nullptr, nullptr, nullptr) == CAIRO_STATUS_SUCCESS;
  std::vector<cairo_glyph_t> out;
  if (ok) out.assign(glyphs, glyphs + count);
  cairo_glyph_free(glyphs);
  return out;
}

}  // namespace orv::render
