// Whole documents from the surface through the cairo renderers.
#include <cairo.h>
#include <gtest/gtest.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "frame/surface/surface.h"
#include "platform/render/renderer.h"
#include "support/shell.h"
#include "support/text_order.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

namespace fs = std::filesystem;

using orv::testing::Shell;

// Where to keep the files: ORVENDA_RENDER_OUT if set, for looking at them.
std::string OutPath(const std::string& name) {
  const char* dir = std::getenv("ORVENDA_RENDER_OUT");
  const fs::path base = dir ? fs::path(dir) : fs::temp_directory_path();
  return (base / ("orv_surface_" + name)).string();
}

// A statement-like report of two pages with page stamps by overlay.
void WriteReport(PrintSurface& s) {
  s.DocName("Patient Statement");
  s.StartDoc();
  s.FontName("Tahoma");
  s.TextAlign(7);
  s.FontSize(20);
  s.FontBold(true);
  s.Text("Patient Statement");
  s.FontSize(10);
  s.Text("Printed On: Nov/23/2026 By: Reception");
  s.FontBold(false);
  s.Text(" ");
  s.InlineText("Patient: ");
  s.FontBold(true);
  s.InlineText("H\xC3\xA9l\xC3\xA8ne Fran\xC3\xA7ois");
  s.FontBold(false);
  s.Text("");
  s.TableBorder(7);
  std::string body;
  for (int i = 1; i <= 60; ++i)
    body += "Nov/" + std::to_string(i % 28 + 1) + "/2026|0" + std::to_string(1100 + i) +
            "|Examen et d\xC3\xA9tartrage, visite " + std::to_string(i) + "|$" +
            std::to_string(40 + i) + ".00;";
  s.AddTable("<1in|<.8in|<3.5in|>1.2in", "Date|Code|Description|Amount($)", body, 12169126);
  s.Text(" ");
  s.TextAlign(2);
  s.FontBold(true);
  s.InlineText("Balance Due($): 3,630.00");
  s.FontBold(false);
  s.PenWidth(".02in");
  s.PenStyle(2);
  s.DrawLine(s.MarginLeft(), s.CurrentY() + Twips(400), s.PageWidth() - s.MarginRight(),
             s.CurrentY() + Twips(400));
  s.Action(6);
  testing::StampFooters(s, "Printed by Orvenda");
  s.EndDoc();
}

TEST(SurfaceRenderSmoke, PdfReadsBackInReadingOrderAndPngMatches) {
  PrintSurface s;
  WriteReport(s);
  ASSERT_EQ(s.PageCount(), 2);
  const std::string pdf = OutPath("statement.pdf"), png = OutPath("statement_p1.png");
  render::RenderPdf(s.Document(), pdf);
  render::RenderPng(s.Document(), 1, 100, png);
  EXPECT_NE(Shell("qpdf --check " + pdf + " 2>&1").find("No syntax or stream encoding errors"),
            std::string::npos);
  const std::string text = Shell("pdftotext -layout " + pdf + " -");
  EXPECT_TRUE(orv::testing::InOrder(
      text, {"Patient Statement", "Printed On: Nov/23/2026 By: Reception",
             "H\xC3\xA9l\xC3\xA8ne Fran\xC3\xA7ois", "Date", "Amount($)", "visite 1", "Page 1 of 2",
             "visite 60", "Balance Due($): 3,630.00", "Page 2 of 2"}));
  EXPECT_EQ(Shell("qpdf --show-npages " + pdf), "2\n");
  EXPECT_GT(fs::file_size(png), 10000u);
  if (!std::getenv("ORVENDA_RENDER_OUT")) {
    fs::remove(pdf);
    fs::remove(png);
  }
}

// Text as the renderers set it: each glyph where the layout measured it, in
// the regular and the bold face, and bold darker than regular on paper with
// the blanks between its words still blank.
TEST(SurfaceRenderSmoke, GlyphsLandWhereTheLayoutMeasuredThem) {
  PrintSurface s;
  s.FontName("Tahoma");
  s.FontSize(10);
  s.StartDoc();
  const std::string line = "Printed On: Nov/20/2026 By: desk";
  const Twips line_height = s.TextHeight("X");
  s.Text(line);
  s.FontBold(true);
  s.Text(line);
  s.FontSize(20);
  s.Text("Am\xC3\xA9lie $37,558.62");
  const auto& doc = s.Document();
  const auto& runs = doc.pages[0].items;
  ASSERT_EQ(runs.size(), 3u);
  for (const auto& item : runs) {
    const auto& run = std::get<render::TextRun>(item);
    const auto edges = render::GlyphEdges(doc, run);
    ASSERT_FALSE(edges.empty());
    EXPECT_NEAR(edges.front(), run.x.points(), 1e-6) << run.text;
    EXPECT_NEAR(edges.back(), (run.x + run.width).points(), 0.01) << run.text;
    // Every glyph starts where the layout's measure of the text before it ends.
    auto m = FontLibrary::Resolve("Tahoma", doc.fonts[run.font].bold, false).metrics;
    size_t i = 0, g = 0;
    while (i < run.text.size() && g < edges.size()) {
      EXPECT_NEAR(edges[g], (run.x + m->Width(run.text.substr(0, i), run.size_pt)).points(), 0.01)
          << run.text << " glyph " << g;
      NextCodePoint(run.text, i);
      ++g;
    }
  }

  // On PNGs at the host's 96 dpi and at 300 dpi: the text is drawn from the
  // outlines, smoothed (a font's screen bitmaps are black and white and
  // drop strokes), the middle of each blank between words is blank, and the
  // bold line holds clearly more ink than the regular one.
  for (const double dpi : {96.0, 300.0}) {
    const std::string png = OutPath("glyphs.png");
    render::RenderPng(doc, 1, dpi, png);
    cairo_surface_t* img = cairo_image_surface_create_from_png(png.c_str());
    ASSERT_EQ(cairo_surface_status(img), CAIRO_STATUS_SUCCESS);
    const int stride = cairo_image_surface_get_stride(img);
    const unsigned char* data = cairo_image_surface_get_data(img);
    auto green = [&](int x, int y) {
      return (*reinterpret_cast<const uint32_t*>(data + y * stride + x * 4) >> 8) & 0xFF;
    };
    auto px = [&](Twips t) { return int(t.inches() * dpi); };
    long ink[2] = {0, 0}, grey = 0;
    for (int k = 0; k < 2; ++k) {
      const auto& run = std::get<render::TextRun>(runs[size_t(k)]);
      const int top = px(run.top), bottom = px(run.top + line_height);
      for (int y = top; y < bottom; ++y) {
        for (int x = px(run.x); x < px(run.x + run.width); ++x) {
          const unsigned g = green(x, y);
          ink[k] += 255 - g;
          grey += g > 40 && g < 215;
        }
      }
      const auto edges = render::GlyphEdges(doc, run);
      for (size_t at = 0, g = 0; at < run.text.size(); ++g) {
        const bool blank = run.text[at] == ' ';
        NextCodePoint(run.text, at);
        if (!blank) continue;
        const int mid = int((edges[g] + edges[g + 1]) / 2 / 72 * dpi);
        long column_ink = 0;
        for (int y = top; y < bottom; ++y) column_ink += 255 - green(mid, y);
        EXPECT_LT(column_ink, 255) << dpi << " dpi, " << (k ? "bold" : "regular")
                                   << ": the blank before glyph " << g + 1 << " is inked";
      }
    }
    EXPECT_GT(grey, 100) << dpi << " dpi: smoothed outlines";
    EXPECT_GT(double(ink[1]), 1.25 * double(ink[0])) << dpi << " dpi: bold is darker";
    cairo_surface_destroy(img);
    if (!std::getenv("ORVENDA_RENDER_OUT")) fs::remove(png);
  }
}

}  // namespace
}  // namespace orv::frame
