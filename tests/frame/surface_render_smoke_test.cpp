// Whole documents from the surface through the cairo renderers.
#include <gtest/gtest.h>

#include "support/shell.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>

#include "frame/surface/surface.h"
#include "platform/render/renderer.h"

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
  for (int p = 1; p <= s.PageCount(); ++p) {
    s.StartOverlay(p, false);
    s.CurrentY(s.PageHeight() - s.MarginBottom());
    s.FontSize(8);
    s.CurrentX(s.MarginLeft());
    s.TextAlign(0);
    s.InlineText("Nov/23/2026");
    s.TextAlign(1);
    s.InlineText("Printed by Orvenda");
    s.TextAlign(2);
    s.InlineText("Page " + std::to_string(p) + " of " + std::to_string(s.PageCount()));
    s.EndOverlay();
  }
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
  std::vector<std::string> in_order = {"Patient Statement",
                                       "Printed On: Nov/23/2026 By: Reception",
                                       "H\xC3\xA9l\xC3\xA8ne Fran\xC3\xA7ois",
                                       "Date",
                                       "Amount($)",
                                       "visite 1",
                                       "Page 1 of 2",
                                       "visite 60",
                                       "Balance Due($): 3,630.00",
                                       "Page 2 of 2"};
  size_t at = 0;
  for (const auto& want : in_order) {
    const size_t found = text.find(want, at);
    ASSERT_NE(found, std::string::npos) << "\"" << want << "\" after offset " << at << " in\n"
                                        << text;
    at = found + want.size();
  }
  EXPECT_EQ(Shell("qpdf --show-npages " + pdf), "2\n");
  EXPECT_GT(fs::file_size(png), 10000u);
  if (!std::getenv("ORVENDA_RENDER_OUT")) {
    fs::remove(pdf);
    fs::remove(png);
  }
}

}  // namespace
}  // namespace orv::frame
