// The layout's font metrics against the renderer's: what the surface
// measures is where the painted glyphs end, for every character of the
// Basic Multilingual Plane in every face the reports use.
#include <gtest/gtest.h>

#include <cairo.h>
#include <unistd.h>

#include <cmath>
#include <filesystem>
#include <fstream>
#include <string>

#include "frame/surface/font_metrics.h"
#include "frame/surface/surface_error.h"
#include "platform/render/cairo_fonts.h"

namespace orv::frame {
namespace {

std::string Utf8(char32_t c) {
  std::string s;
  if (c < 0x80) {
    s += char(c);
  } else if (c < 0x800) {
    s += char(0xC0 | (c >> 6));
    s += char(0x80 | (c & 0x3F));
  } else {
    s += char(0xE0 | (c >> 12));
    s += char(0x80 | ((c >> 6) & 0x3F));
    s += char(0x80 | (c & 0x3F));
  }
  return s;
}

// cairo's advance of each character at a size of one em in font units, with
// metrics unhinted as the renderers draw them, in the font units of `m`.
class RendererAdvances {
 public:
  RendererAdvances(const render::FontFace& face, const FontMetrics& m) {
    surface_ = cairo_image_surface_create(CAIRO_FORMAT_ARGB32, 1, 1);
    cr_ = cairo_create(surface_);
    render::SetUnhinted(cr_);
    cairo_set_font_face(cr_, render::FaceFor(face));
    cairo_set_font_size(cr_, m.units_per_em());
    font_ = cairo_get_scaled_font(cr_);
  }
  ~RendererAdvances() {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
  }
  double Of(char32_t c) {
    const std::string s = Utf8(c);
    cairo_glyph_t* glyphs = nullptr;
    int count = 0;
    if (cairo_scaled_font_text_to_glyphs(font_, 0, 0, s.data(), int(s.size()), &glyphs, &count,
                                         nullptr, nullptr, nullptr) != CAIRO_STATUS_SUCCESS ||
        count != 1)
      return -1;
    cairo_text_extents_t e;
    cairo_scaled_font_glyph_extents(font_, glyphs, 1, &e);
    cairo_glyph_free(glyphs);
    return e.x_advance;
  }

 private:
  cairo_surface_t* surface_;
  cairo_t* cr_;
  cairo_scaled_font_t* font_;
};

TEST(FontMetrics, EveryCharacterMeasuresAsTheRendererPaintsIt) {
  struct Face {
    const char* family;
    bool bold;
  } faces[] = {
      {"Tahoma", false},      {"Tahoma", true},   // bold made from the regular file
      {"Arial", false},       {"Arial", true},    // a bold file of its own
      {"Arial Narrow", false}, {"Courier", false},  // no such family: DejaVu Sans
  };
  for (const auto& f : faces) {
    ResolvedFont r = FontLibrary::Resolve(f.family, f.bold, false);
    SCOPED_TRACE(r.face.file + (r.face.synthetic_bold ? " emboldened" : ""));
    RendererAdvances painted(r.face, *r.metrics);
    int differ = 0;
    for (char32_t c = 0x20; c < 0x10000; ++c) {
      if (c >= 0xD800 && c < 0xE000) continue;  // surrogates are no characters
      double want = painted.Of(c);
      if (want < 0) continue;  // a noncharacter cairo will not map (U+FDD0, U+FFFE)
      // The renderer sets an emboldened glyph a 24th of an em further on
      // (PlaceGlyphs); cairo's extents are those of the regular shapes.
      if (r.face.synthetic_bold && want != 0) want += r.metrics->units_per_em() / 24.0;
      const double got = double(r.metrics->Advance(c)) / FontMetrics::kSubUnits;
      if (std::abs(want - got) > 1e-6 && ++differ <= 5)
        ADD_FAILURE() << "U+" << std::hex << uint32_t(c) << std::dec << ": measured " << got
                      << ", painted " << want;
    }
    EXPECT_EQ(differ, 0);
    // Past the plane the missing glyph stands in.
    EXPECT_EQ(r.metrics->Advance(0x1F600), r.metrics->Advance(0xFFFF));
  }
}

TEST(FontMetrics, TheLibrarySharesMetricsButNotTheCallersName) {
  ResolvedFont first = FontLibrary::Resolve("tahoma ", true, false);
  ResolvedFont second = FontLibrary::Resolve("Tahoma", true, false);
  EXPECT_EQ(first.metrics.get(), second.metrics.get());
  EXPECT_EQ(first.face.family, "tahoma ");
  EXPECT_EQ(second.face.family, "Tahoma");
  EXPECT_EQ(FontLibrary::Resolve("tahoma ", true, false).face.family, "tahoma ");
  EXPECT_TRUE(second.face.synthetic_bold);
}

TEST(FontMetrics, DamagedFilesAreRefusedByName) {
  const std::string real = FontLibrary::Resolve("Arial", false, false).face.file;
  const std::string dir = std::filesystem::temp_directory_path() /
                          ("orv_fonts_" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  auto write = [&](const std::string& name, size_t bytes) {
    std::ifstream in(real, std::ios::binary);
    std::string data(bytes, '\0');
    in.read(data.data(), std::streamsize(bytes));
    std::ofstream(dir + "/" + name, std::ios::binary).write(data.data(), in.gcount());
    return dir + "/" + name;
  };
  struct Case {
    const char* name;
    std::string path;
    const char* says;
  } cases[] = {
      {"missing", dir + "/none.ttf", "Font file not found"},
      {"empty", write("empty.ttf", 0), "Damaged font file"},
      {"header only", write("header.ttf", 40), "Damaged font file"},
      {"cut in its tables", write("cut.ttf", 2000), "Damaged font file"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    try {
      FontMetrics::Load(c.path);
      ADD_FAILURE() << "loaded";
    } catch (const SurfaceError& e) {
      EXPECT_NE(std::string(e.what()).find(c.says), std::string::npos) << e.what();
      EXPECT_NE(std::string(e.what()).find(c.path), std::string::npos) << e.what();
    }
  }
  std::filesystem::remove_all(dir);
}

}  // namespace
}  // namespace orv::frame
