// The program's own PDF files, read back as a reader reads them: the text
// pdftotext gives, the pages pdfinfo and pdftoppm see, the fonts and
// pictures inside.
#include "platform/render/pdf_writer.h"

#include <cairo.h>
#include <gtest/gtest.h>
#include <libdeflate.h>
#include <unistd.h>

#include <chrono>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <set>
#include <sstream>
#include <thread>
#include <vector>

#include "platform/render/cairo_fonts.h"
#include "platform/render/cairo_glyphs.h"
#include "platform/render/pdf_fonts.h"
#include "platform/render/pdf_renderer.h"
#include "platform/render/renderer.h"
#include "platform/render/sample_document.h"
#include "support/shell.h"
#include "support/throws_saying.h"

namespace orv::render {
namespace {

namespace fs = std::filesystem;
using orv::testing::FileBytes;
using orv::testing::Shell;

const char* const kDejaVu = "/usr/share/fonts/truetype/dejavu/DejaVuSans.ttf";

std::string TempPath(const std::string& name) {
  return orv::testing::TempPath("orv_pdfw_", name);
}

TEST(PdfNumbers, FixedDecimalsWithoutLocale) {
  const struct {
    const char* name;
    double value;
    int decimals;
    const char* text;
  } cases[] = {
      {"trailing zeros dropped", 1.5, 3, "1.5"},
      {"rounded", 72.00049, 3, "72"},
      {"rounded up", 0.0996, 3, "0.1"},
      {"small fraction keeps its zeros", 0.05, 2, "0.05"},
      {"negative", -41.6667, 2, "-41.67"},
      {"minus zero", -0.0001, 3, "0"},
      {"large", 123456.789, 3, "123456.789"},
      {"no decimals", 545.9, 0, "546"},
      {"a half rounds away from zero", 0.0625, 3, "0.063"},
      {"a negative half too", -2.5, 0, "-3"},
      {"just under a half", 0.49999999999999994, 0, "0"},
      {"past the exact fractions", 1e13 + 0.5, 3, "10000000000000.5"},
  };
  for (const auto& c : cases) {
    std::string out;
    pdf::AppendNumber(out, c.value, c.decimals);
    EXPECT_EQ(out, c.text) << c.name;
  }
  // Numbers already counted in ten-thousandths (the moves between lines of
  // text) are written as AppendNumber writes their value.
  const struct {
    const char* name;
    int64_t units;
    const char* text;
  } scaled[] = {
      {"a move left and down", -5477938, "-547.7938"},
      {"no move", 0, "0"},
      {"whole points", 1002062 - 2062, "100"},
      {"zeros after the point kept", 5, "0.0005"},
      {"negative fraction", -120, "-0.012"},
  };
  for (const auto& c : scaled) {
    std::string out = "x";
    pdf::AppendScaled(out, c.units, 4);
    EXPECT_EQ(out, std::string("x") + c.text) << c.name;
    std::string number;
    pdf::AppendNumber(number, double(c.units) / 10000, 4);
    EXPECT_EQ(number, c.text) << c.name;
  }
  // Every count of ten-thousandths near the page's scale, and some far past
  // it on either side of the 32-bit range, against printf's digits with the
  // fraction's trailing zeros (and a bare point) dropped.
  std::vector<int64_t> counts;
  for (int64_t u = -200000; u <= 200000; ++u) counts.push_back(u);
  for (const int64_t big : {int64_t(UINT32_MAX) - 1, int64_t(UINT32_MAX), int64_t(UINT32_MAX) + 1,
                            int64_t(1) << 40, INT64_MAX / 3, int64_t(61234567890)})
    for (const int64_t u : {big, -big, big / 7 * 10, -(big / 7 * 10)}) counts.push_back(u);
  for (const int64_t u : counts) {
    char expected[48];
    std::snprintf(expected, sizeof expected, "%s%lld.%04lld", u < 0 ? "-" : "",
                  static_cast<long long>((u < 0 ? -u : u) / 10000),
                  static_cast<long long>((u < 0 ? -u : u) % 10000));
    std::string want = expected;
    while (want.back() == '0') want.pop_back();
    if (want.back() == '.') want.pop_back();
    if (u == 0) want = "0";
    char room[pdf::kScaledRoom];
    const std::string written(room, pdf::WriteScaled(room, u, 4));
    if (written != want) {
      ADD_FAILURE() << u << " written as " << written << ", not " << want;
      break;
    }
  }
}

// Subsets read back through cairo: a glyph the subset keeps has ink, one it
// dropped has none.
class SubsetFont : public ::testing::Test {
 protected:
  static std::vector<unsigned long> GlyphsOf(const std::string& file, const std::string& text) {
    cairo_scaled_font_t* font = Font(file);
    bool ok = false;
    std::vector<unsigned long> out;
    for (const cairo_glyph_t& g : CairoGlyphs(font, text, 0, 0, ok)) out.push_back(g.index);
    cairo_scaled_font_destroy(font);
    return out;
  }
  static bool HasInk(const std::string& file, unsigned long glyph) {
    cairo_scaled_font_t* font = Font(file);
    cairo_glyph_t g{glyph, 0, 0};
    cairo_text_extents_t e;
    cairo_scaled_font_glyph_extents(font, &g, 1, &e);
    cairo_scaled_font_destroy(font);
    return e.width > 0 && e.height > 0;
  }
  static cairo_scaled_font_t* Font(const std::string& file) {
    cairo_font_face_t* face = FaceFor({"", file, false, false, false, false});
    cairo_matrix_t size, identity;
    cairo_matrix_init_scale(&size, 100, 100);
    cairo_matrix_init_identity(&identity);
    cairo_font_options_t* options = cairo_font_options_create();
    cairo_scaled_font_t* font = cairo_scaled_font_create(face, &size, &identity, options);
    cairo_font_options_destroy(options);
    return font;
  }

  // Each table sums to what its directory entry says, and the whole file to
  // the constant head's adjustment aims at; a table whose length is no
  // multiple of four (head's 54 bytes) sums as if padded with zeros.
  static void ExpectChecksumsHold(const std::string& font, const char* name) {
    auto word = [&](size_t at) {
      uint32_t w = 0;
      for (size_t k = 0; k < 4; ++k)
        w = w << 8 | (at + k < font.size() ? uint8_t(font[at + k]) : 0u);
      return w;
    };
    auto sum = [&](size_t from, size_t length) {
      uint32_t s = 0;
      for (size_t at = from; at < from + length; at += 4) {
        uint32_t w = 0;
        for (size_t k = 0; k < 4; ++k) w = w << 8 | (at + k < from + length ? uint8_t(font[at + k]) : 0u);
        s += w;
      }
      return s;
    };
    const size_t tables = word(4) >> 16;
    for (size_t i = 0; i < tables; ++i) {
      const size_t entry = 12 + 16 * i, at = word(entry + 8);
      const std::string tag = font.substr(entry, 4);
      uint32_t got = sum(at, word(entry + 12));
      // head is summed with its checksumAdjustment (at 8) taken as zero.
      if (tag == "head") got -= word(at + 8);
      EXPECT_EQ(got, word(entry + 4)) << name << ": table " << tag;
    }
    EXPECT_EQ(sum(0, font.size()), 0xB1B0AFBAu) << name << ": the whole file";
  }
};

TEST_F(SubsetFont, HoldsExactlyTheGlyphsShownAndTheirParts) {
  const struct {
    const char* name;
    const char* file;
    std::string shown, absent;
  } cases[] = {
      {"Tahoma, accents", kTahoma, "D\xC3\xA9p\xC3\xB4t", "ZQx"},
      // DejaVu builds its accented letters from the plain letter and the
      // accent: both parts must stay although neither is shown alone.
      {"DejaVu, composite accents", kDejaVu, "\xC3\xA9\xC3\x89\xC3\xA0", "ZQx"},
  };
  for (const auto& c : cases) {
    const std::vector<unsigned long> shown = GlyphsOf(c.file, c.shown);
    const std::vector<unsigned long> absent = GlyphsOf(c.file, c.absent);
    std::set<uint16_t> used(shown.begin(), shown.end());
    const std::string path = TempPath(std::string("subset_") + c.name[0] + ".ttf");
    const std::string subset = pdf::SubsetTrueType(FileBytes(c.file), used);
    {
      std::ofstream out(path, std::ios::binary);
      out << subset;
    }
    ExpectChecksumsHold(subset, c.name);
    EXPECT_LT(fs::file_size(path), fs::file_size(c.file) / 4) << c.name;
    for (unsigned long g : shown) EXPECT_TRUE(HasInk(path, g)) << c.name << ": glyph " << g;
    for (unsigned long g : absent) {
      ASSERT_TRUE(HasInk(c.file, g)) << c.name << ": the whole font draws glyph " << g;
      EXPECT_FALSE(HasInk(path, g)) << c.name << ": glyph " << g << " was not asked for";
    }
    fs::remove(path);
  }
}

TEST(PdfWriter, ReadsBackAsWritten) {
  const Document d = SampleDocument();
  const std::string pdf = TempPath("sample.pdf");
  RenderPdf(d, pdf);
  EXPECT_NE(Shell("qpdf --check " + pdf + " 2>&1").find("No syntax or stream encoding errors"),
            std::string::npos);

  // Each page at its own size; the document's accented name. (The rest of
  // its identity, as the host fills it: tests/app/document_outputs_test.cpp.)
  const std::string info = Shell("pdfinfo -f 1 -l 2 " + pdf);
  EXPECT_NE(info.find("612 x 792"), std::string::npos) << info;
  EXPECT_NE(info.find("792 x 612"), std::string::npos) << info;
  EXPECT_NE(info.find("Title:           Relev\xC3\xA9 de compte"), std::string::npos) << info;

  // One font file in the PDF for the regular and the emboldened face, and
  // one picture with its mask for both pages.
  const std::string fonts = Shell("pdffonts " + pdf);
  EXPECT_NE(fonts.find("CID TrueType"), std::string::npos) << fonts;
  EXPECT_EQ(std::count(fonts.begin(), fonts.end(), '\n'), 3) << fonts;
  const std::string images = Shell("pdfimages -list " + pdf);
  EXPECT_NE(images.find("smask"), std::string::npos) << images;
  const std::string second = Shell("pdfimages -f 2 -list " + pdf + " | awk 'NR>2 {print $11}'");
  const std::string first = Shell("pdfimages -l 1 -list " + pdf + " | awk 'NR>2 {print $11}'");
  EXPECT_EQ(first, second) << "the second page names its own copy of the picture";

  // A range of pages: the second alone, at its size.
  const std::string second_only = TempPath("second.pdf");
  RenderPdf(d, second_only, 2, 2);
  EXPECT_EQ(Shell("pdftotext " + second_only + " -").find("compte"), std::string::npos);
  EXPECT_NE(Shell("pdfinfo " + second_only).find("792 x 612"), std::string::npos);
  fs::remove(second_only);
  fs::remove(pdf);
}

struct WordBox {
  std::string text;
  double x0, x1;
};

// The words of a PDF with their left and right edges, as pdftotext reads them.
std::vector<WordBox> Words(const std::string& pdf) {
  std::vector<WordBox> words;
  std::istringstream lines(Shell("pdftotext -bbox " + pdf + " -"));
  std::string line;
  while (std::getline(lines, line)) {
    double x0, y0, x1, y1;
    char text[256];
    if (std::sscanf(line.c_str(),
                    " <word xMin=\"%lf\" yMin=\"%lf\" xMax=\"%lf\" yMax=\"%lf\">%255[^<]", &x0, &y0,
                    &x1, &y1, text) == 5)
      words.push_back({text, x0, x1});
  }
  return words;
}

// The pixels of a small part of page 1 at 72 dpi, as pdftoppm draws it.
std::string Pixels(const std::string& pdf, int x, int y, int w, int h) {
  const std::string ppm = TempPath("crop");
  Shell("pdftoppm -r 72 -f 1 -l 1 -gray -singlefile -x " + std::to_string(x) + " -y " +
        std::to_string(y) + " -W " + std::to_string(w) + " -H " + std::to_string(h) + " " + pdf +
        " " + ppm);
  std::string data = FileBytes(ppm + ".pgm");
  fs::remove(ppm + ".pgm");
  const std::string header = "P5\n" + std::to_string(w) + " " + std::to_string(h) + "\n255\n";
  return data.size() == header.size() + size_t(w * h) ? data.substr(header.size()) : "";
}

TEST(PdfWriter, DrawsWhatCairoDraws) {
  const Document d = SampleDocument();
  const std::string own = TempPath("own.pdf"), cairo = TempPath("cairo.pdf");
  RenderPdf(d, own);
  setenv("ORVENDA_PDF_ENGINE", "cairo", 1);
  RenderPdf(d, cairo);
  unsetenv("ORVENDA_PDF_ENGINE");
  // The text a reader gets, accents, the clipped run's hidden part and the
  // turned run included, is the text of cairo's file.
  EXPECT_EQ(Shell("pdftotext -layout " + own + " -"), Shell("pdftotext -layout " + cairo + " -"));
  // Every word where cairo's file put it, the turned one standing upright:
  // the glyphs are written with the widths and adjustments cairo wrote, so
  // a reader measures the same.
  const std::vector<WordBox> own_words = Words(own), cairo_words = Words(cairo);
  ASSERT_EQ(own_words.size(), cairo_words.size());
  for (size_t i = 0; i < own_words.size(); ++i) {
    EXPECT_EQ(own_words[i].text, cairo_words[i].text);
    EXPECT_NEAR(own_words[i].x0, cairo_words[i].x0, 0.01) << own_words[i].text;
    EXPECT_NEAR(own_words[i].x1, cairo_words[i].x1, 0.01) << own_words[i].text;
  }

  // Inked and blank parts of the page alike: the clip hides the run past
  // 117 pt, the picture's transparent quarter shows the paper.
  const struct {
    const char* name;
    int x, y, w, h;
    bool inked;
  } parts[] = {
      {"clipped run, inside", 72, 150, 40, 14, true},
      {"clipped run, outside", 125, 150, 80, 14, false},
      {"picture, opaque corner", 73, 201, 20, 20, true},
      {"picture, transparent corner", 124, 252, 19, 19, false},
      {"dotted rule", 72, 124, 400, 3, true},
      {"underline", 300, 113, 50, 3, true},
  };
  for (const auto& p : parts) {
    const std::string a = Pixels(own, p.x, p.y, p.w, p.h), b = Pixels(cairo, p.x, p.y, p.w, p.h);
    ASSERT_FALSE(a.empty()) << p.name;
    const bool inked = a.find_first_not_of('\xFF') != std::string::npos;
    EXPECT_EQ(inked, p.inked) << p.name;
    size_t differ = 0;
    for (size_t i = 0; i < a.size() && i < b.size(); ++i) differ += std::abs(a[i] - b[i]) > 64;
    EXPECT_LE(differ, a.size() / 20) << p.name << ": " << differ << " of " << a.size();
  }
  fs::remove(own);
  fs::remove(cairo);
}

// The operators of a page's contents, each literal string read back into
// its glyph numbers (two bytes a glyph, escapes undone) written as
// "<g g g>", so that two pages' contents compare glyph by glyph.
std::vector<std::string> ContentTokens(const std::string& pdf) {
  const size_t bt = pdf.find("\nBT\n");
  const size_t end = pdf.find("endstream", bt);
  std::vector<std::string> tokens;
  std::string token;
  for (size_t i = bt + 1; i < end; ++i) {
    const char c = pdf[i];
    if (c != '(') {
      if (c == ' ' || c == '\n' || c == '[' || c == ']') {
        if (!token.empty()) tokens.push_back(token);
        token.clear();
      } else {
        token += c;
      }
      continue;
    }
    if (!token.empty()) tokens.push_back(token);
    token.clear();
    std::string bytes;
    for (++i; pdf[i] != ')'; ++i) {
      if (pdf[i] == '\\') {
        ++i;
        bytes += pdf[i] == 'r' ? '\r' : pdf[i];
      } else {
        bytes += pdf[i];
      }
    }
    std::string glyphs = "<";
    for (size_t k = 0; k + 1 < bytes.size(); k += 2)
      glyphs += std::to_string((uint8_t(bytes[k]) << 8) | uint8_t(bytes[k + 1])) + " ";
    tokens.push_back(glyphs + ">");
  }
  return tokens;
}

// Runs of plain ASCII text, a list's nearly every run, are written by a
// path of their own; they come out as the same runs ending in an accented
// letter of the same advance come out of the general one, but for that
// letter's glyph. The lines hold what that path must hand on: a run longer
// than the bytes gathered at once and than a batch of glyphs, runs that
// carry on along a line with an adjustment and one far enough to start a
// line of its own, glyphs whose numbers the string escapes, characters
// first shown in the middle of a run, and runs at fractions of a twip.
TEST(PdfWriter, AsciiRunsAreWrittenAsTheGeneralPathWritesThem) {
  pdf::EmbeddedFont tahoma(kTahoma);
  ASSERT_EQ(tahoma.Map(U'e').advance, tahoma.Map(U'\u00E9').advance);
  // The characters whose glyph numbers hold a byte the string escapes.
  std::string escaped;
  for (char c = ' '; c < 127; ++c) {
    const uint16_t g = tahoma.Map(char32_t(c)).glyph;
    if ((g & 0xFF) == '(' || (g & 0xFF) == ')' || (g & 0xFF) == '\\' || (g & 0xFF) == '\r')
      escaped += c;
  }
  ASSERT_FALSE(escaped.empty());
  std::string long_run;
  while (long_run.size() < 300) long_run += "Abernathy, Bennett 6135552766 ";
  // Twips from the left end of a run of 9-point `text` to its right end,
  // its last letter included.
  const auto width = [&](const std::string& text) {
    double units = tahoma.Map(U'e').advance;
    for (const char c : text) units += tahoma.Map(char32_t(c)).advance;
    return units * 9 / tahoma.units_per_em() * 20;
  };
  struct Run {
    std::string text;
    double x, top;
  };
  std::vector<Run> runs = {
      {long_run, 300, 1000},
      {"Kanata, ON", 1440, 1400},
      {"K2X 1V8", 2900, 1400},
      {"Nov/22/1993", 4700.35, 1400},
      {"Prairie Shield", 11000, 1400},
      {escaped, 1440, 1800},
      {"(a) [b] {c} \\d", 1440.5, 2200},
      {"qxz QXZ #@!", 3000.25, 2200},
      // A tenth of a point past the run before: an adjustment of ten
      // thousandths of an em at the first glyph.
      {"Ottawa", 1440, 2600},
  };
  runs.push_back({"ON", runs.back().x + width(runs.back().text) + 1.8, 2600});
  // Along one line, 3 em apart and then 8: the second gap is within reach
  // of the line's pen only as the pen stands after its 200th glyph.
  runs.push_back({std::string(120, 'l'), 1000, 3000});
  runs.push_back({std::string(100, 'l'), runs.back().x + width(runs.back().text) + 540, 3000});
  runs.push_back({"lll", runs.back().x + width(runs.back().text) + 1440, 3000});
  const auto contents = [&](const char* last) {
    Document d = SampleDocument();
    Page page{Twips(15840), Twips(12240), {}};
    for (const Run& r : runs) {
      TextRun run = At(r.text + last, r.x, r.top);
      run.size_pt = 9;
      page.items.push_back(run);
    }
    d.pages = {page};
    const std::string pdf = TempPath("ascii.pdf");
    RenderPdf(d, pdf);
    std::string bytes = FileBytes(pdf);
    fs::remove(pdf);
    return ContentTokens(bytes);
  };
  const std::vector<std::string> ascii = contents("e");
  std::vector<std::string> general = contents("\u00E9");
  const std::string e = " " + std::to_string(tahoma.Map(U'e').glyph) + " ";
  const std::string e_acute = " " + std::to_string(tahoma.Map(U'\u00E9').glyph) + " ";
  for (std::string& token : general) {
    if (token[0] != '<') continue;
    token = " " + token.substr(1);
    for (size_t at = 0; (at = token.find(e_acute, at)) != std::string::npos; at += e.size() - 1)
      token.replace(at, e_acute.size(), e);
    token = "<" + token.substr(1);
  }
  ASSERT_GT(ascii.size(), 20u);
  EXPECT_EQ(ascii, general);
}

// A picture whose stream is larger than the file's write buffer goes to the
// file past the buffer: the objects after it are still found where the
// cross-reference table says.
TEST(PdfWriter, StreamsLargerThanTheWriteBufferKeepTheCrossReferenceTrue) {
  Document d = SampleDocument();
  auto noise = std::make_shared<Image>();
  noise->width = noise->height = 160;
  uint32_t seed = 1;
  for (int i = 0; i < 160 * 160; ++i) {
    seed = seed * 1664525u + 1013904223u;
    noise->pixels.push_back(0xFF000000u | (seed >> 8));
  }
  Page first{Twips(12240), Twips(15840), {}}, second = first;
  first.items.push_back(Picture{{Twips(1440), Twips(1440), Twips(2400), Twips(2400)}, noise});
  second.items.push_back(At("After the picture", 1440, 1440));
  d.pages = {first, second};
  const std::string pdf = TempPath("large.pdf");
  RenderPdf(d, pdf);
  const std::string check = Shell("qpdf --check " + pdf + " 2>&1");
  EXPECT_EQ(check.find("WARNING"), std::string::npos) << check;
  EXPECT_NE(check.find("No syntax or stream encoding errors"), std::string::npos) << check;
  EXPECT_NE(Shell("pdftotext " + pdf + " -").find("After the picture"), std::string::npos);
  fs::remove(pdf);
}

// Short streams are stored, longer ones compressed; either way a reader's
// inflater gives the data back, its checksum and all.
TEST(PdfWriter, StreamsInflateToTheirData) {
  std::string contents;
  for (int i = 0; contents.size() < 5000; ++i)
    contents += "BT /F1 9 Tf 1 0 0 1 72 " + std::to_string(700 - i) + " Tm <00120034> Tj ET\n";
  const struct {
    const char* name;
    size_t length;
  } cases[] = {{"empty", 0}, {"one byte", 1}, {"just under 4 KB", 4095}, {"4 KB", 4096}, {"a page", 5000}};
  pdf::Deflater deflate(pdf::kDeflateLevel);
  libdeflate_decompressor* inflater = libdeflate_alloc_decompressor();
  for (const auto& c : cases) {
    const std::string data = contents.substr(0, c.length);
    for (const std::string& packed : {deflate(data), pdf::Deflate(data, 6)}) {
      std::string back(data.size() + 16, '\0');
      size_t size = 0;
      ASSERT_EQ(libdeflate_zlib_decompress(inflater, packed.data(), packed.size(), back.data(), back.size(), &size),
                LIBDEFLATE_SUCCESS)
          << c.name;
      EXPECT_EQ(back.substr(0, size), data) << c.name;
    }
  }
  EXPECT_LT(deflate(contents).size(), contents.size() / 2) << "a page is compressed";
  libdeflate_free_decompressor(inflater);
}

// A document of up to 16 pages keeps its page contents as painted; a
// longer one compresses every page, the first 16 too, whether its pages
// were painted ahead or when the file is written.
TEST(PdfWriter, ShortDocumentsStoreTheirPagesLongerOnesCompressThemAll) {
  const struct {
    const char* name;
    int pages;
    bool ahead;
  } cases[] = {{"16 pages painted ahead", 16, true},
               {"17 pages painted ahead", 17, true},
               {"16 pages painted at the write", 16, false},
               {"17 pages painted at the write", 17, false}};
  const std::string pdf = TempPath("stored.pdf");
  for (const auto& c : cases) {
    Document d = SampleDocument();
    d.pages.clear();
    if (c.ahead) d.pages.HandOver(PaintPdfAhead(d.fonts, size_t(1) << 30));
    for (int i = 1; i <= c.pages; ++i) {
      Page p{Twips(12240), Twips(15840), {}};
      // Some 6 KB of contents a page, as a page of a list has.
      for (int line = 0; line < 100; ++line)
        p.items.push_back(At("Page " + std::to_string(i) + ", line " + std::to_string(line), 1440,
                             1440 + line * 140));
      d.pages.push_back(std::move(p));
      d.pages.Seal(size_t(i - 1));
    }
    RenderPdf(d, pdf);
    const auto size = fs::file_size(pdf);
    if (c.pages <= 16)
      EXPECT_GT(size, size_t(c.pages) * 5000) << c.name;
    else
      EXPECT_LT(size, size_t(c.pages) * 5000 / 2) << c.name;
    const std::string text = Shell("pdftotext " + pdf + " -");
    for (int i = 1; i <= c.pages; ++i)
      EXPECT_NE(text.find("Page " + std::to_string(i) + ", line 99\n"), std::string::npos)
          << c.name << ": page " << i;
  }
  fs::remove(pdf);
}

// Drops the pages of `d`, whose pages from now on are painted ahead.
void PaintAhead(Document& d) {
  d.pages.clear();
  d.pages.HandOver(PaintPdfAhead(d.fonts, size_t(1) << 30));
}

// A page opened once pages were painted ahead takes the list of a painted
// page, emptied of its items but not of its room; every page still shows
// its own lines and no other page's.
TEST(PdfWriter, PagesOpenedAfterPaintedOnesTakeTheirListsEmptied) {
  Document d = SampleDocument();
  PaintAhead(d);
  constexpr int kPages = 40, kLines = 100;
  for (int i = 1; i <= kPages; ++i) {
    if (i == 30) d.pages.Sink()->Drain();
    d.pages.push_back(Page{Twips(12240), Twips(15840), {}});
    std::vector<DisplayItem>& items = d.pages[size_t(i - 1)].items;
    EXPECT_TRUE(items.empty()) << "page " << i;
    if (i == 30) EXPECT_GE(items.capacity(), size_t(kLines)) << "a painted page's list";
    for (int line = 0; line < kLines; ++line)
      items.push_back(At("Page " + std::to_string(i) + ", line " + std::to_string(line), 1440,
                         1440 + line * 140));
    d.pages.Seal(size_t(i - 1));
  }
  const std::string pdf = TempPath("spare.pdf");
  RenderPdf(d, pdf);
  for (const int i : {1, 29, 30, 31, kPages}) {
    const std::string text =
        Shell("pdftotext -f " + std::to_string(i) + " -l " + std::to_string(i) + " " + pdf + " -");
    const std::string own = "Page " + std::to_string(i) + ", line ";
    size_t lines = 0, own_lines = 0;
    for (size_t at = 0; (at = text.find(", line ", at)) != std::string::npos; ++at) ++lines;
    for (size_t at = 0; (at = text.find(own, at)) != std::string::npos; ++at) ++own_lines;
    EXPECT_EQ(lines, size_t(kLines)) << "page " << i;
    EXPECT_EQ(own_lines, size_t(kLines)) << "page " << i;
  }
  fs::remove(pdf);
}

// Pages laid out far faster than they are painted: the report's thread,
// held while as many wait as the painter allows, packs the waiting pages
// for the store itself. Each page is stored as it was handed over, and
// the file shows every page in order.
TEST(PdfWriter, PagesWaitingForThePainterAreStoredAsTheyWere) {
  Document d = SampleDocument();
  PaintAhead(d);
  constexpr int kPages = 60, kLines = 60;
  const std::string wide(100, 'W');
  for (int i = 1; i <= kPages; ++i) {
    Page p{Twips(12240), Twips(15840), {}};
    p.items.push_back(At("Page " + std::to_string(i), 1440, 1000));
    for (int line = 1; line <= kLines; ++line) p.items.push_back(At(wide, 300, 1000 + line * 200));
    d.pages.push_back(std::move(p));
    d.pages.Seal(size_t(i - 1));
  }
  const PageStore copy = d.pages;
  for (int i = 1; i <= kPages; ++i) {
    const Page page = copy.Read(size_t(i - 1));
    ASSERT_EQ(page.items.size(), size_t(kLines + 1)) << "page " << i;
    EXPECT_EQ(std::get<TextRun>(page.items[0]).text, "Page " + std::to_string(i));
  }
  const std::string pdf = TempPath("waiting.pdf");
  RenderPdf(d, pdf);
  const std::string text = Shell("pdftotext " + pdf + " -");
  size_t at = 0;
  for (int i = 1; i <= kPages; ++i) {
    at = text.find("Page " + std::to_string(i) + "\n", at);
    ASSERT_NE(at, std::string::npos) << "page " << i << " in order";
  }
  fs::remove(pdf);
}

TEST(PdfWriter, AFailedWriteNamesThePathAndLeavesNoFile) {
  Document d = SampleDocument();
  const std::string missing = TempPath("no-such-folder") + "/out.pdf";
  EXPECT_TRUE(orv::testing::ThrowsSaying([&] { RenderPdf(d, missing); }, {missing}));

  // A font that cannot be read stops the run half way: nothing is left.
  d.fonts[0].file = TempPath("missing.ttf");
  const std::string pdf = TempPath("half.pdf");
  EXPECT_THROW(RenderPdf(d, pdf), ReportError);
  EXPECT_FALSE(fs::exists(pdf));
}

// The threads of this process.
size_t Threads() {
  size_t n = 0;
  for ([[maybe_unused]] const auto& t : fs::directory_iterator("/proc/self/task")) ++n;
  return n;
}

// Pages painted on a second thread as they are finished: a picture that
// cannot be painted on page 40 of 70 fails the write with the painter's
// own error, on the writer's thread, and no file is left. Pages painted
// into the temporary file are read back in order. A document dropped while
// its pages are painted takes the thread with it. Pages of a line or two,
// as memos are, are painted on the report's thread, however many.
TEST(PdfWriter, PaintingAheadFailsTheWriteAndEndsWithTheDocument) {
  const std::string pdf = TempPath("ahead.pdf");
  const size_t threads = Threads();
  auto broken = std::make_shared<Image>();
  broken->width = broken->height = 4;  // and no pixels
  // Each page its number and `lines` lines more, as a page of a list.
  const auto paint_ahead = [&](Document& d, bool fail, size_t held_in_memory = size_t(1) << 30,
                               int lines = 60) {
    d.pages.clear();
    d.pages.HandOver(PaintPdfAhead(d.fonts, held_in_memory));
    for (int i = 1; i <= 70; ++i) {
      Page p{Twips(12240), Twips(15840), {}};
      p.items.push_back(At("Page " + std::to_string(i), 1440, 1440));
      for (int line = 1; line <= lines; ++line) p.items.push_back(At("A line", 1440, 1440 + line * 200));
      if (fail && i == 40)
        p.items.push_back(Picture{{Twips(1440), Twips(4000), Twips(720), Twips(720)}, broken});
      d.pages.push_back(std::move(p));
      d.pages.Seal(size_t(i - 1));
    }
  };
  {
    Document d = SampleDocument();
    paint_ahead(d, false, size_t(1) << 30, 0);
    EXPECT_EQ(Threads(), threads) << "light pages are painted here";
    RenderPdf(d, pdf);
    EXPECT_NE(Shell("pdftotext " + pdf + " -").find("Page 70\n"), std::string::npos);
    fs::remove(pdf);
  }
  {
    Document d = SampleDocument();
    paint_ahead(d, true);
    EXPECT_GT(Threads(), threads) << "pages are painted on a second thread";
    // The store's packed pages are made there too (or on this thread while
    // it waits for the second one), those after the failure as well; a
    // copy of the store holds them, each page its own items.
    const PageStore copy = d.pages;
    for (int i = 1; i <= 70; ++i) {
      const Page page = copy.Read(size_t(i - 1));
      ASSERT_FALSE(page.items.empty()) << "page " << i;
      EXPECT_EQ(std::get<TextRun>(page.items[0]).text, "Page " + std::to_string(i));
      EXPECT_EQ(page.items.size(), i == 40 ? 62u : 61u) << "page " << i;
    }
    EXPECT_TRUE(orv::testing::ThrowsSaying([&] { RenderPdf(d, pdf); }, {"fewer pixels"}));
    EXPECT_FALSE(fs::exists(pdf));
    // Again, the painter's thread stopped: the failure stands.
    EXPECT_THROW(RenderPdf(d, pdf), ReportError);
    EXPECT_FALSE(fs::exists(pdf));
  }
  {
    Document d = SampleDocument();
    paint_ahead(d, false, 0);
    RenderPdf(d, pdf);
    const std::string text = Shell("pdftotext " + pdf + " -");
    size_t at = 0;
    for (int i = 1; i <= 70; ++i) {
      at = text.find("Page " + std::to_string(i) + "\n", at);
      ASSERT_NE(at, std::string::npos) << "page " << i << " in order";
    }
    fs::remove(pdf);
  }
  {
    Document d = SampleDocument();
    paint_ahead(d, false);
  }
  // A thread joined may linger in /proc for a moment.
  for (int wait = 0; wait < 100 && Threads() != threads; ++wait)
    std::this_thread::sleep_for(std::chrono::milliseconds(10));
  EXPECT_EQ(Threads(), threads);
}

}  // namespace
}  // namespace orv::render
