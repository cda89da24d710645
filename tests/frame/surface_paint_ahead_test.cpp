// A document whose pages are painted for its PDF file while it is laid out
// reads, page for page and pixel for pixel, as the same document painted
// when the file is written.
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "frame/surface/surface.h"
#include "platform/render/renderer.h"
#include "support/shell.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

namespace fs = std::filesystem;
using orv::testing::FileBytes;
using orv::testing::Shell;

std::string TempPath(const std::string& name) {
  return orv::testing::TempPath("orv_ahead_", name);
}

// A list of some seventy pages, more than the painter lets wait: rows
// in Tahoma, grey and black in turn, and a rule under each tenth; a heading in a face first used on
// the last page; page 2 cleared and written again after the painter had
// it; the footers stamped on every page once the count is known, the last
// one in another face again.
void WriteList(PrintSurface& s) {
  s.DocName("Patient List");
  s.StartDoc();
  s.FontName("Tahoma");
  s.FontSize(10);
  for (int i = 1; i <= 4000; ++i) {
    s.TextColor(i % 2 ? 0x808080 : 0);
    s.Text("Patient " + std::to_string(i) + "    (613) 555-" + std::to_string(1000 + i % 9000));
    if (i % 10 == 0)
      s.DrawLine(s.MarginLeft(), s.CurrentY(), s.PageWidth() - s.MarginRight(), s.CurrentY());
  }
  s.TextColor(0);
  s.FontName("Arial");
  s.FontBold(true);
  s.Text("Total patients: 4,000");
  s.EndDoc();
  const int pages = s.PageCount();
  s.StartOverlay(2, true);
  s.FontName("Tahoma");
  s.FontBold(false);
  s.Text("Page two, written again");
  s.EndOverlay();
  testing::StampFooters(s, "Printed by Reception");
  s.StartOverlay(pages, false);
  s.FontName("Arial Narrow");
  s.FontItalic(true);
  s.Text("End of list");
  s.EndOverlay();
}

// The gray pixels of page `page` at 50 dpi.
std::string Pixels(const std::string& pdf, int page) {
  const std::string out = TempPath("page");
  Shell("pdftoppm -r 50 -gray -singlefile -f " + std::to_string(page) + " -l " +
        std::to_string(page) + " " + pdf + " " + out);
  std::string data = FileBytes(out + ".pgm");
  fs::remove(out + ".pgm");
  return data;
}

// Whether the text objects of a file's pages are all ended: as many "BT"
// as "ET" in its page contents, uncompressed.
void ExpectTextObjectsEnded(const std::string& pdf) {
  const std::string qdf = "qpdf --qdf --object-streams=disable " + pdf + " -";
  const std::string begun = Shell(qdf + " | grep -ac '^BT$'");
  EXPECT_NE(begun, "0\n") << pdf;
  EXPECT_EQ(begun, Shell(qdf + " | grep -ac '^ET$'")) << pdf;
  EXPECT_NE(Shell("qpdf --check " + pdf + " 2>&1").find("No syntax or stream encoding errors"),
            std::string::npos);
}

TEST(SurfacePaintAhead, ReadsAsThePagesPaintedWhenWritten) {
  PrintSurface ahead, after;
  ahead.PaintPdfAhead(true);
  WriteList(ahead);
  WriteList(after);
  const int pages = ahead.PageCount();
  ASSERT_GT(pages, 64);
  ASSERT_EQ(after.PageCount(), pages);
  const std::string a = TempPath("ahead.pdf"), b = TempPath("after.pdf");
  render::RenderPdf(ahead.Document(), a);
  render::RenderPdf(after.Document(), b);

  const std::string text = Shell("pdftotext -layout " + a + " -");
  EXPECT_EQ(text, Shell("pdftotext -layout " + b + " -"));
  // Every page with its own footer, in order; page 2 as it was written
  // again; the last page's lines in the faces first used there.
  size_t at = 0;
  for (int p = 1; p <= pages; ++p) {
    at = text.find("Page " + std::to_string(p) + " of " + std::to_string(pages), at);
    ASSERT_NE(at, std::string::npos) << "footer of page " << p;
  }
  EXPECT_NE(text.find("Page two, written again"), std::string::npos);
  EXPECT_EQ(Shell("pdftotext -f 2 -l 2 " + a + " -").find("Patient"), std::string::npos)
      << "page 2 as first painted";
  EXPECT_NE(text.find("Total patients: 4,000"), std::string::npos);
  EXPECT_NE(text.find("End of list"), std::string::npos);
  const std::string fonts = Shell("pdffonts " + a);
  for (const char* face : {"Tahoma", "LiberationSans-Bold", "LiberationSansNarrow-Italic"})
    EXPECT_NE(fonts.find(face), std::string::npos) << face << " in\n" << fonts;

  for (int p : {1, 2, pages / 2, pages}) {
    const std::string pixels = Pixels(a, p);
    ASSERT_GT(pixels.size(), 1000u) << "page " << p;
    EXPECT_TRUE(pixels == Pixels(b, p)) << "pixels of page " << p;
  }
  ExpectTextObjectsEnded(a);

  // The same list painted ahead again gives the same file to the byte,
  // however far the painting thread fell behind the layout either time.
  {
    PrintSurface again;
    again.PaintPdfAhead(true);
    WriteList(again);
    const std::string c = TempPath("again.pdf");
    render::RenderPdf(again.Document(), c);
    EXPECT_TRUE(FileBytes(a) == FileBytes(c)) << "two runs, two files";
    fs::remove(c);
  }

  // A document started again is painted afresh. Its one page is too few
  // to start the painting thread: the page and its footer are painted when
  // the file is written, in the order they came.
  ahead.StartDoc();
  ahead.Text("A second document");
  ahead.EndDoc();
  testing::StampFooters(ahead, "Printed by Reception");
  render::RenderPdf(ahead.Document(), a);
  const std::string second = Shell("pdftotext -layout " + a + " -");
  EXPECT_EQ(second.find("Patient"), std::string::npos);
  EXPECT_NE(second.find("Page 1 of 1"), std::string::npos) << second;
  EXPECT_EQ(Shell("pdfinfo " + a + " | awk '/^Pages:/ {print $2}'"), "1\n");
  ExpectTextObjectsEnded(a);
  fs::remove(a);
  fs::remove(b);
}

}  // namespace
}  // namespace orv::frame
