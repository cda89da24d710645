#include <gtest/gtest.h>

#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using testing::Open;
using testing::OpenSurface;
using testing::RunOf;
using testing::Runs;
using testing::Texts;

TEST(SurfaceDocument, LifeOfADocument) {
  PrintSurface s;
  EXPECT_FALSE(s.IsOpen());
  s.DocName("Fee Guide");
  s.Action(3);
  EXPECT_TRUE(s.IsOpen());
  EXPECT_EQ(s.PageCount(), 1);
  EXPECT_EQ(s.CurrentPage(), 1);
  EXPECT_EQ(s.CurrentX(), s.MarginLeft());
  EXPECT_EQ(s.CurrentY(), s.MarginTop());
  s.Text("page one");
  s.CurrentX(5000);
  s.CurrentY(9000);
  s.NewPage();
  EXPECT_EQ(s.CurrentX(), s.MarginLeft()) << "NewPage returns the pen to the margins";
  EXPECT_EQ(s.CurrentY(), s.MarginTop());
  s.Text("page two");
  EXPECT_EQ(s.PageCount(), 2);
  EXPECT_EQ(s.CurrentPage(), 2);
  s.EndDoc();
  EXPECT_FALSE(s.IsOpen());
  s.Action(6);  // the footer routine ends it first; the report ends it again
  s.EndDoc();
  EXPECT_EQ(s.PageCount(), 2);
  EXPECT_EQ(s.DocName(), "Fee Guide");
  EXPECT_EQ(Texts(s.Document().pages[1]), std::vector<std::string>{"page two"});

  // A new document discards the old one; KillDoc discards the one in progress.
  s.StartDoc();
  EXPECT_EQ(s.PageCount(), 1);
  EXPECT_TRUE(s.Document().pages[0].items.empty());
  s.Text("dropped");
  s.KillDoc();
  EXPECT_EQ(s.PageCount(), 0);
  EXPECT_FALSE(s.IsOpen());
}

TEST(SurfaceDocument, DrawingNeedsAnOpenDocument) {
  struct Case {
    const char* name;
    std::function<void(PrintSurface&)> op;
  } cases[] = {
      {"Text", [](PrintSurface& s) { s.Text("x"); }},
      {"InlineText", [](PrintSurface& s) { s.InlineText("x"); }},
      {"NewPage", [](PrintSurface& s) { s.NewPage(); }},
      {"AddTable", [](PrintSurface& s) { s.AddTable("1in", "A", "b"); }},
      {"StartTable", [](PrintSurface& s) { s.StartTable(); }},
      {"DrawLine", [](PrintSurface& s) { s.DrawLine(0, 0, 100, 100); }},
      {"TableCell", [](PrintSurface& s) { s.TableCell(tcRows).Number(); }},
      {"StartOverlay before EndDoc", [](PrintSurface& s) { s.StartOverlay(1); }},
      {"Action 4", [](PrintSurface& s) { s.Action(4); }},
  };
  for (const auto& c : cases) {
    PrintSurface never;
    EXPECT_THROW(c.op(never), ReportError) << c.name << " with no document";
    PrintSurface ended;
    ended.StartDoc();
    ended.EndDoc();
    if (std::string(c.name) != "StartOverlay before EndDoc") {
      EXPECT_THROW(c.op(ended), ReportError) << c.name << " on an ended document";
    }
  }
  PrintSurface s;
  s.StartDoc();
  s.StartTable();
  EXPECT_THROW(s.Text("x"), SurfaceError) << "a table under construction comes first";
  s.EndTable();
  EXPECT_NO_THROW(s.Text("x"));
}

TEST(SurfaceDocument, PageNumbersStampedByAnOverlayPass) {
  OpenSurface s;
  s.Text("body 1");
  s.NewPage();
  s.Text("body 2");
  s.NewPage();
  s.Text("body 3");
  s.Action(6);
  const int n = s.PageCount();
  ASSERT_EQ(n, 3);
  testing::StampFooters(s, "Printed by the office");
  s.EndDoc();
  EXPECT_EQ(s.PageCount(), 3) << "overlays add no pages";
  for (int p = 1; p <= n; ++p) {
    const auto& page = s.Document().pages[p - 1];
    EXPECT_EQ(Texts(page), (std::vector<std::string>{"body " + std::to_string(p), "Nov/23/2026",
                                                     "Printed by the office",
                                                     "Page " + std::to_string(p) + " of 3"}));
    const auto date = RunOf(page, "Nov/23/2026");
    const auto stamp = RunOf(page, "Page " + std::to_string(p) + " of 3");
    EXPECT_EQ(date.top, stamp.top) << "the three items share one Y";
    EXPECT_EQ(date.top, s.PageHeight() - s.MarginBottom());
    EXPECT_NEAR((stamp.x + stamp.width).value(), (s.PageWidth() - s.MarginRight()).value(), 1e-6);
  }
  EXPECT_THROW(s.StartOverlay(4), SurfaceError);
}

TEST(SurfaceDocument, Geometry) {
  struct Case {
    int paper, orientation;
    double width, height;
  } cases[] = {
      {1, 0, 12240, 15840},
      {1, 1, 15840, 12240},
      {20, 0, 13680, 5940},
      {20, 1, 5940, 13680},
  };
  for (const auto& c : cases) {
    PrintSurface s;
    s.PaperSize(c.paper);
    s.Orientation(c.orientation);
    EXPECT_EQ(s.PageWidth().value(), c.width);
    EXPECT_EQ(s.PageHeight().value(), c.height);
    s.StartDoc();
    EXPECT_EQ(s.Document().pages[0].width.value(), c.width);
    EXPECT_EQ(s.Orientation(), c.orientation);
  }
  {
    // A driver that reports the envelope narrow side first in portrait.
    PrintSurface narrow;
    narrow.EnvelopeNarrowFirst(true);
    narrow.PaperSize(20);
    EXPECT_EQ(narrow.PageWidth().value(), 5940);
    narrow.Orientation(1);
    EXPECT_EQ(narrow.PageWidth().value(), 13680);
    narrow.PaperSize(1);
    EXPECT_EQ(narrow.PageWidth().value(), 15840) << "letter paper is not affected";
  }
  PrintSurface s;
  s.MarginLeft("1in");
  s.MarginTop(".5in");
  EXPECT_EQ(s.TwipsPerPixelX(), 4.8);
  EXPECT_THROW(s.MarginLeft("one inch"), SurfaceError);
  EXPECT_EQ(s.MarginLeft(), Twips(1440)) << "a bad length changes nothing";
  EXPECT_THROW(s.PaperSize(9), SurfaceError);

  // The pen reads back what arithmetic put there, in both directions.
  s.StartDoc();
  s.CurrentY(s.CurrentY() + Twips(250));
  EXPECT_EQ(s.CurrentY(), Twips(720 + 250));
  s.CurrentX(s.PageWidth() - s.MarginRight() - s.TextWidth("X"));
  s.CurrentY(s.CurrentY() - Twips(100));
  EXPECT_EQ(s.CurrentY(), Twips(870));
}

TEST(SurfaceDocument, NewspaperColumns) {
  PrintSurface s;
  s.Columns(3);
  s.ColumnSpacing(".5cm");
  Open(s);
  s.Text("label 1");
  s.NewColumn();
  s.Text("label 2");
  s.NewColumn();
  s.Text("label 3");
  s.NewColumn();
  s.Text("label 4");
  ASSERT_EQ(s.PageCount(), 2);
  const auto& p1 = s.Document().pages[0];
  const Twips usable = s.PageWidth() - s.MarginLeft() - s.MarginRight();
  const Twips col = (usable - Twips(2 * 1440 * 0.5 / 2.54)) / 3;
  EXPECT_EQ(RunOf(p1, "label 1").x, s.MarginLeft());
  EXPECT_NEAR(RunOf(p1, "label 2").x.value(),
              (s.MarginLeft() + col + Twips(1440 * .5 / 2.54)).value(), 1e-6);
  EXPECT_EQ(RunOf(p1, "label 2").top, s.MarginTop());
  EXPECT_EQ(RunOf(s.Document().pages[1], "label 4").x, s.MarginLeft());
}

TEST(SurfaceDocument, LinesAndPictures) {
  OpenSurface s;
  s.PenWidth(".02in");
  EXPECT_NEAR(s.PenWidth().value(), 28.8, 1e-9);
  s.PenStyle(2);
  s.DrawLine("0in", 2000, "8.5in", 2000);
  s.PenStyle(0);
  s.PenWidth("0");
  s.DrawLine(0, 0, 100, 100);
  const auto lines = testing::Lines(s.Document().pages[0]);
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_TRUE(lines[0].dotted);
  EXPECT_EQ(lines[0].x2, Twips(12240));
  EXPECT_NEAR(lines[0].width.value(), 28.8, 1e-9);
  EXPECT_FALSE(lines[1].dotted);
  EXPECT_EQ(lines[1].width, Twips(0));

  auto img = std::make_shared<render::Image>();
  img->width = 2;
  img->height = 1;
  img->pixels = {0xFFFF0000u, 0xFF0000FFu};
  s.PictureLeft("1in");
  s.PictureTop(".5in");
  s.PictureRight("3in");
  s.PictureBottom("1.5in");
  s.Picture(img);
  const auto& last = s.Document().pages[0].items.back();
  ASSERT_TRUE(std::holds_alternative<render::Picture>(last));
  EXPECT_EQ(std::get<render::Picture>(last).box,
            (render::Box{Twips(1440), Twips(720), Twips(2880), Twips(1440)}));
  EXPECT_THROW(s.Picture(nullptr), SurfaceError);
}

// A form that records what the surface forwards to it.
class RecordingHost : public PrintHost {
 public:
  std::vector<std::string> calls;
  int answer = 1;
  void Print(const render::Document& doc, bool ask) override {
    calls.push_back("print " + std::to_string(doc.pages.size()) + (ask ? " ask" : ""));
  }
  int ShowDialog(int kind) override {
    calls.push_back("dialog " + std::to_string(kind));
    return answer;
  }
  void SelectPrinter(const std::string& device) override {
    calls.push_back("device [" + device + "]");
  }
};

TEST(SurfaceDocument, PrintingIsForwardedToTheForm) {
  RecordingHost host;
  PrintSurface s;
  s.SetHost(&host);
  s.CancelDialog(false);
  Open(s);
  s.Text("x");
  EXPECT_EQ(s.PrintDialog(0), 1);
  host.answer = 0;
  EXPECT_EQ(s.PrintDialog(2), 0);
  s.PrintDoc(true);  // ends the document first
  s.PrintDoc();
  s.PrinterDevice("");
  EXPECT_EQ(host.calls, (std::vector<std::string>{"dialog 0", "dialog 2", "print 1 ask", "print 1",
                                                  "device []"}));
  EXPECT_EQ(s.PrintRequests(), 2);
  EXPECT_FALSE(s.CancelDialog());

  PrintSurface alone;  // with no form, requests are recorded only
  EXPECT_EQ(alone.PrintDialog(0), 0);
  EXPECT_THROW(alone.PrintDoc(), SurfaceError);
}

}  // namespace
}  // namespace orv::frame
