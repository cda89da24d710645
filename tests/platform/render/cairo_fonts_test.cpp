#include "platform/render/cairo_fonts.h"

#include "platform/render/cairo_glyphs.h"
#include "platform/render/pdf_fonts.h"

#include <gtest/gtest.h>

#include <cstring>
#include <iterator>
#include <string>
#include <vector>

namespace orv::render {
namespace {

// The project's faces at a few sizes on a context set up as the renderers set theirs
// (unhinted metrics), each compared with cairo's own mapping of the text.
class GlyphPlacerTest : public ::testing::Test {
 protected:
  void SetUp() override {
    surface_ = cairo_recording_surface_create(CAIRO_CONTENT_COLOR, nullptr);
    cr_ = cairo_create(surface_);
    SetUnhinted(cr_);
  }
  void TearDown() override {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
  }
  cairo_scaled_font_t* Font(const FontFace& face, double size) {
    cairo_set_font_face(cr_, FaceFor(face));
    cairo_set_font_size(cr_, size);
    return cairo_get_scaled_font(cr_);
  }
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cr_ = nullptr;
};

TEST_F(GlyphPlacerTest, GivesCairosGlyphsAndPositionsBitForBit) {
  const struct {
    const char* name;
    std::string text;
  } texts[] = {
      {"plain figures", "$37,558.62"},
      {"a name with blanks", "Abernathy,  Farid "},
      {"accents", "D\xC3\xA9p\xC3\xB4t \xC3\xA0 la banque"},
      {"a combining accent", "E\xCC\x81t\xC3\xA9"},
      {"three-byte characters", "\xE2\x82\xAC 12 \xE2\x80\x94 \xE4\xB8\xAD"},
      {"past the plane", "tooth \xF0\x9F\xA6\xB7 chart"},
      {"a broken sequence", "Bor\xC3(ale"},
      {"an overlong slash", "a\xC0\xAF" "b"},
      {"a surrogate", "x\xED\xA0\x80y"},
      {"a lone continuation byte", "x\x80y"},
      {"empty", ""},
  };
  // Tahoma as the reports set it, regular and emboldened by FreeType, and a
  // face whose glyph numbers differ from Tahoma's.
  const FontFace faces[] = {
      {"Tahoma", "/usr/share/wine/fonts/tahoma.ttf", false, false, false, false},
      {"Tahoma", "/usr/share/wine/fonts/tahoma.ttf", true, false, true, false},
      {"DejaVu Sans", "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf", false, false, false, false},
  };
  const float sizes[] = {10.0f, 8.666667f, 7.25f};

  GlyphPlacer placer;
  // Every face and size interleaved on one placer, twice over, so that a
  // table kept for one font or size and read for another shows.
  for (int pass = 0; pass < 2; ++pass) {
    for (const auto& t : texts) {
      for (const float size : sizes) {
        for (uint16_t index = 0; index < std::size(faces); ++index) {
          const FontFace& face = faces[index];
          cairo_scaled_font_t* font = Font(face, size);
          const double x = 72.5 + pass, y = 130.314131;
          bool cairo_ok = false;
          const auto want = CairoGlyphs(font, t.text, x, y, cairo_ok);
          std::vector<cairo_glyph_t> got = {{7, 1, 2}};  // what was there stays
          const bool ok = placer.Place(font, index, size, t.text, x, y, got);
          const std::string where =
              std::string(t.name) + ", " + face.file + (face.synthetic_bold ? " bold " : " ") +
              std::to_string(size);
          ASSERT_EQ(ok, cairo_ok) << where;
          ASSERT_EQ(got.size(), want.size() + 1) << where;
          EXPECT_EQ(got[0].index, 7u) << where;
          for (size_t i = 0; i < want.size(); ++i) {
            EXPECT_EQ(got[i + 1].index, want[i].index) << where << ", glyph " << i;
            EXPECT_EQ(std::memcmp(&got[i + 1].x, &want[i].x, sizeof(double)), 0)
                << where << ", glyph " << i << ": " << got[i + 1].x << " against " << want[i].x;
            EXPECT_EQ(std::memcmp(&got[i + 1].y, &want[i].y, sizeof(double)), 0)
                << where << ", glyph " << i;
          }
        }
      }
    }
  }
}

// The PDF painter takes glyphs and advances from the font files' own
// tables where they serve, and must then place every glyph where cairo
// would: the glyph of each character the file's Unicode map gives, and an
// advance of its units times the size over the units per em, bit for bit,
// for every face the layout loads, regular and emboldened.
TEST_F(GlyphPlacerTest, FontFilesGiveCairosGlyphsAndAdvances) {
  const char* const files[] = {
      "/usr/share/wine/fonts/tahoma.ttf",
      "/usr/share/fonts/truetype/liberation/LiberationSans-Regular.ttf",
      "/usr/share/fonts/truetype/liberation/LiberationSans-Bold.ttf",
      "/usr/share/fonts/truetype/liberation/LiberationSansNarrow-Regular.ttf",
      "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf",
      "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf",
  };
  // Latin, Greek and Cyrillic, punctuation and currency, ligatures, the
  // replacement character.
  std::vector<char32_t> chars;
  for (char32_t c = 0x20; c < 0x800; ++c) chars.push_back(c);
  for (char32_t c = 0x2000; c < 0x20D0; ++c) chars.push_back(c);
  for (char32_t c : {0xFB01, 0xFB02, 0xFFFD}) chars.push_back(c);
  for (const char* file : files) {
    pdf::EmbeddedFont font(file);
    const unsigned units = font.units_per_em();
    EXPECT_EQ(units & (units - 1), 0u) << file << ": " << units << " units per em";
    for (const bool bold : {false, true}) {
      for (const float size : {10.0f, 8.666667f}) {
        cairo_scaled_font_t* scaled = Font({"", file, bold, false, bold, false}, size);
        int mapped = 0;
        for (const char32_t c : chars) {
          const uint16_t glyph = font.GlyphOf(c);
          // The painter's lookup, kept per character from the first pass on.
          const auto kept = font.Map(c);
          EXPECT_EQ(kept.glyph, glyph) << file << " U+" << std::hex << uint32_t(c);
          EXPECT_EQ(kept.advance, font.AdvanceUnits(glyph))
              << file << " U+" << std::hex << uint32_t(c);
          if (glyph == 0) continue;
          ++mapped;
          std::string utf8;
          if (c < 0x80) {
            utf8 = {char(c)};
          } else if (c < 0x800) {
            utf8 = {char(0xC0 | c >> 6), char(0x80 | (c & 0x3F))};
          } else {
            utf8 = {char(0xE0 | c >> 12), char(0x80 | ((c >> 6) & 0x3F)), char(0x80 | (c & 0x3F))};
          }
          bool ok = false;
          const auto want = CairoGlyphs(scaled, utf8, 0, 0, ok);
          ASSERT_TRUE(ok && want.size() == 1) << file << " U+" << std::hex << uint32_t(c);
          EXPECT_EQ(glyph, want[0].index) << file << " U+" << std::hex << uint32_t(c);
          cairo_text_extents_t e;
          cairo_scaled_font_glyph_extents(scaled, &want[0], 1, &e);
          const double advance = double(font.AdvanceUnits(glyph)) * double(size) / units;
          EXPECT_EQ(std::memcmp(&advance, &e.x_advance, sizeof(double)), 0)
              << file << (bold ? " bold" : "") << " U+" << std::hex << uint32_t(c) << std::dec
              << " at " << size << ": " << advance << " against " << e.x_advance;
        }
        EXPECT_GT(mapped, 180) << file;
      }
    }
  }
}

}  // namespace
}  // namespace orv::render
