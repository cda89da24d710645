#include "platform/render/cairo_fonts.h"

#include <cairo-ft.h>
#include <dlfcn.h>
#include <ft2build.h>
#include FT_FREETYPE_H

#include <cmath>
#include <limits>
#include <map>
#include <mutex>
#include <tuple>

#include "platform/render/renderer.h"

namespace orv::render {
namespace {

// FreeType comes into the process with cairo. Its two entry points that
// open a face from a file are looked up at run time because the build links
// cairo alone: among the libraries already loaded first (cairo brought it
// in, and opening it again costs a one-page report a tenth of a
// millisecond), then by name; the lookup fails loudly if FreeType is not
// there.
class FreeType {
 public:
  static FreeType& Get() {
    static FreeType ft;
    return ft;
  }
  FT_Face Open(const std::string& path) {
    if (!new_face_ || !library_) throw RenderError("FreeType is not available to load " + path);
    FT_Face face = nullptr;
    if (new_face_(library_, path.c_str(), 0, &face) != 0)
      throw RenderError("Cannot load font file " + path);
    return face;
  }

 private:
  using InitFn = FT_Error (*)(FT_Library*);
  using NewFaceFn = FT_Error (*)(FT_Library, const char*, FT_Long, FT_Face*);
  FreeType() {
    void* init = dlsym(RTLD_DEFAULT, "FT_Init_FreeType");
    void* new_face = dlsym(RTLD_DEFAULT, "FT_New_Face");
    if (!init || !new_face) {
      if (void* lib = dlopen("libfreetype.so.6", RTLD_NOW | RTLD_GLOBAL)) {
        init = dlsym(lib, "FT_Init_FreeType");
        new_face = dlsym(lib, "FT_New_Face");
      }
    }
    if (!init || !new_face) return;
    new_face_ = reinterpret_cast<NewFaceFn>(new_face);
    if (reinterpret_cast<InitFn>(init)(&library_) != 0) library_ = nullptr;
  }
  FT_Library library_ = nullptr;
  NewFaceFn new_face_ = nullptr;
};

}  // namespace

// One cairo font face per file and synthetic style, kept for the life of the
// process: fonts are few and loading them is the slow part.
cairo_font_face_t* FaceFor(const FontFace& f) {
  static std::mutex mu;
  static std::map<std::tuple<std::string, bool, bool>, cairo_font_face_t*> faces;
  std::lock_guard lock(mu);
  auto key = std::tuple{f.file, f.synthetic_bold, f.synthetic_italic};
  if (auto it = faces.find(key); it != faces.end()) return it->second;
  FT_Face ft = FreeType::Get().Open(f.file);
  // Outlines only: some font files carry bitmap strikes for small sizes on
  // screen, which draw other shapes (and drop strokes) than the outlines
  // the PDF and the layout's measures use.
  cairo_font_face_t* face = cairo_ft_font_face_create_for_ft_face(ft, FT_LOAD_NO_BITMAP);
  unsigned synth = 0;
  if (f.synthetic_bold) synth |= CAIRO_FT_SYNTHESIZE_BOLD;
  if (f.synthetic_italic) synth |= CAIRO_FT_SYNTHESIZE_OBLIQUE;
  if (synth) cairo_ft_font_face_set_synthesize(face, synth);
  faces.emplace(key, face);
  return face;
}

void SetUnhinted(cairo_t* cr) {
  cairo_font_options_t* options = cairo_font_options_create();
  cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
  cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
  cairo_set_font_options(cr, options);
  cairo_font_options_destroy(options);
}

char32_t NextBmpChar(std::string_view s, size_t& i) {
  const auto b0 = static_cast<unsigned char>(s[i]);
  if (b0 < 0x80) {
    ++i;
    return b0;
  }
  auto cont = [&](size_t k) {
    return k < s.size() && (static_cast<unsigned char>(s[k]) & 0xC0) == 0x80
               ? char32_t(static_cast<unsigned char>(s[k]) & 0x3F)
               : char32_t(UINT32_MAX);
  };
  if (b0 >= 0xC2 && b0 <= 0xDF) {
    const char32_t c1 = cont(i + 1);
    if (c1 == UINT32_MAX) return 0;
    i += 2;
    return char32_t(b0 & 0x1F) << 6 | c1;
  }
  if (b0 >= 0xE0 && b0 <= 0xEF) {
    const char32_t c1 = cont(i + 1), c2 = cont(i + 2);
    if (c1 == UINT32_MAX || c2 == UINT32_MAX) return 0;
    const char32_t c = char32_t(b0 & 0x0F) << 12 | c1 << 6 | c2;
    if (c < 0x800 || (c >= 0xD800 && c <= 0xDFFF)) return 0;
    i += 3;
    return c;
  }
  return 0;
}

uint32_t GlyphPlacer::GlyphOf(cairo_scaled_font_t* font, uint16_t font_index, char32_t c) {
  if (glyphs_.size() <= font_index) glyphs_.resize(size_t(font_index) + 1);
  auto& blocks = glyphs_[font_index];
  if (blocks.empty()) blocks.resize(0x10000 / 256);
  auto& block = blocks[c >> 8];
  if (!block) {
    block = std::make_unique<GlyphBlock>();
    block->fill(kUnknown);
  }
  uint32_t& entry = (*block)[c & 0xFF];
  if (entry != kUnknown) return entry;
  // cairo's own mapping of the one character, once.
  char utf8[3];
  int len = 1;
  if (c < 0x80) {
    utf8[0] = char(c);
  } else if (c < 0x800) {
    utf8[0] = char(0xC0 | (c >> 6));
    utf8[1] = char(0x80 | (c & 0x3F));
    len = 2;
  } else {
    utf8[0] = char(0xE0 | (c >> 12));
    utf8[1] = char(0x80 | ((c >> 6) & 0x3F));
    utf8[2] = char(0x80 | (c & 0x3F));
    len = 3;
  }
  cairo_glyph_t* glyphs = nullptr;
  int count = 0;
  if (cairo_scaled_font_text_to_glyphs(font, 0, 0, utf8, len, &glyphs, &count, nullptr, nullptr,
                                       nullptr) != CAIRO_STATUS_SUCCESS)
    return kUnknown;
  const uint32_t glyph = count == 1 ? uint32_t(glyphs[0].index) : kUnknown;
  cairo_glyph_free(glyphs);
  entry = glyph;
  return glyph;
}

const std::pair<double, double>& GlyphPlacer::AdvanceOf(
    cairo_scaled_font_t* font, std::vector<std::pair<double, double>>& advances, uint32_t glyph) {
  if (advances.size() <= glyph)
    advances.resize(size_t(glyph) + 1, {std::numeric_limits<double>::quiet_NaN(), 0.0});
  auto& a = advances[glyph];
  if (std::isnan(a.first)) {
    // One glyph at the origin: its extents' advance is its metrics' advance,
    // the amount cairo moves the pen by after it.
    cairo_glyph_t g{glyph, 0, 0};
    cairo_text_extents_t e;
    cairo_scaled_font_glyph_extents(font, &g, 1, &e);
    a = {e.x_advance, e.y_advance};
  }
  return a;
}

bool GlyphPlacer::Place(cairo_scaled_font_t* font, uint16_t font_index, float size_pt,
                        std::string_view utf8, double x, double y,
                        std::vector<cairo_glyph_t>& out) {
  const size_t start = out.size();
  const std::pair<uint16_t, float> key{font_index, size_pt};
  if (!last_ || key != last_key_) {
    last_ = &advances_[key];
    last_key_ = key;
  }
  const double x0 = x, y0 = y;
  bool mapped = true;
  size_t i = 0;
  while (i < utf8.size()) {
    const char32_t c = NextBmpChar(utf8, i);
    const uint32_t glyph = c == 0 ? kUnknown : GlyphOf(font, font_index, c);
    if (glyph == kUnknown) {
      mapped = false;
      break;
    }
    // As cairo does: the glyph where the pen is, then the pen moves on.
    out.push_back(cairo_glyph_t{glyph, x, y});
    const auto& [dx, dy] = AdvanceOf(font, *last_, glyph);
    x += dx;
    y += dy;
  }
  if (mapped) return true;

  // Text outside the tables: cairo maps it.
  out.resize(start);
  cairo_glyph_t* glyphs = nullptr;
  int count = 0;
  if (cairo_scaled_font_text_to_glyphs(font, x0, y0, utf8.data(), int(utf8.size()), &glyphs, &count,
                                       nullptr, nullptr, nullptr) != CAIRO_STATUS_SUCCESS)
    return false;
  out.insert(out.end(), glyphs, glyphs + count);
  cairo_glyph_free(glyphs);
  return true;
}

void PlaceGlyphs(cairo_scaled_font_t* font, const TextRun& t, bool synthetic_bold, double x,
                 double y, GlyphPlacer* placer, std::vector<cairo_glyph_t>& out) {
  const size_t first = out.size();
  if (placer) {
    if (!placer->Place(font, t.font, t.size_pt, t.text, x, y, out)) return;
  } else {
    cairo_glyph_t* glyphs = nullptr;
    int count = 0;
    if (cairo_scaled_font_text_to_glyphs(font, x, y, t.text.c_str(), int(t.text.size()), &glyphs,
                                         &count, nullptr, nullptr, nullptr) != CAIRO_STATUS_SUCCESS)
      return;
    out.insert(out.end(), glyphs, glyphs + count);
    cairo_glyph_free(glyphs);
  }
  if (synthetic_bold && out.size() > first) {
    cairo_text_extents_t e;
    cairo_scaled_font_glyph_extents(font, &out.back(), 1, &e);
    SpaceEmboldened(out, first, t.size_pt, e.x_advance);
  }
}

void SpaceEmboldened(std::vector<cairo_glyph_t>& out, size_t first, double size_pt,
                     double last_advance) {
  const double extra = size_pt / 24.0;
  double shift = 0;
  for (size_t i = first; i < out.size(); ++i) {
    const double advance = i + 1 < out.size() ? out[i + 1].x - out[i].x : last_advance;
    out[i].x += shift;
    if (advance != 0) shift += extra;
  }
}

}  // namespace orv::render
