// What keeps a page printable: tables inside the margins, words and figures
// whole in their cells, accents composed before they are measured.
#include <gtest/gtest.h>

#include "frame/surface/surface.h"
#include "frame/surface/text_layout.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using namespace testing;

std::vector<render::ScaledBlock> Scales(const render::Page& page) {
  std::vector<render::ScaledBlock> out;
  for (const auto& item : page.items)
    if (auto b = std::get_if<render::ScaledBlock>(&item)) out.push_back(*b);
  return out;
}

// Letter portrait with the .6 in margins of the aged lists: a body 7.3 in wide.
class SurfaceFit : public ::testing::Test {
 protected:
  void SetUp() override {
    s.MarginLeft(".6in");
    s.MarginRight(".6in");
    Open(s);
  }
  Twips Left() const { return s.MarginLeft(); }
  Twips Right() const { return s.PageWidth() - s.MarginRight(); }
  // Every run and line of page `p` lies between the margins.
  void ExpectInsideMargins(int p, const std::string& name) {
    const auto& page = s.Document().pages[p];
    for (const auto& r : Runs(page)) {
      EXPECT_GE(r.x.value(), Left().value() - 1e-6) << name << ": " << r.text;
      EXPECT_LE((r.x + r.width).value(), Right().value() + 1e-6) << name << ": " << r.text;
    }
    for (const auto& l : Lines(page)) {
      EXPECT_GE(std::min(l.x1, l.x2).value(), Left().value() - 1e-6) << name;
      EXPECT_LE(std::max(l.x1, l.x2).value(), Right().value() + 1e-6) << name;
    }
  }
  PrintSurface s;
};

// The account status list: 2 in for the name and seven .9 in money columns,
// 8.3 in on a 7.3 in body.
constexpr const char* kWideFormat = "<!~+2in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in|>+!~.9in";
constexpr const char* kWideHeader =
    "Patient|Balance|Credit|Post Dates|0-30 Days|> 30 Days|> 60 Days|> 90 Days";
constexpr const char* kWideBody =
    "Abigail Lindgren|$113.60|$0.00|$0.00|$0.00|$0.00|$0.00|$113.60;"
    "Office Totals: |$37,558.62|$1,210.00|$0.00|$9,001.10|$7,100.00|$3,300.00|$18,157.52;";

TEST_F(SurfaceFit, WideTableIsScaledInsideTheMargins) {
  struct Case {
    const char* name;
    int align;
  } cases[] = {{"at the left margin", 0}, {"centred", 1}};
  for (const auto& c : cases) {
    s.StartDoc();
    s.TextAlign(c.align);
    s.TableBorder(7);
    s.AddTable(kWideFormat, kWideHeader, kWideBody, 12169126);
    const auto& page = s.Document().pages[0];
    const auto scales = Scales(page);
    ASSERT_EQ(scales.size(), 1u) << c.name;
    EXPECT_NEAR(scales[0].scale, 7.3 / 8.3, 1e-9) << c.name;
    EXPECT_NEAR(scales[0].box.x.value(), Left().value(), 1e-6) << c.name;
    EXPECT_NEAR(scales[0].box.width.value(), Twips::Inches(7.3).value(), 1e-6) << c.name;
    ExpectInsideMargins(0, c.name);
    // The type shrinks with the columns, and every figure is still there whole.
    EXPECT_NEAR(RunOf(page, "$113.60").size_pt, 10 * 7.3 / 8.3, 1e-4) << c.name;
    EXPECT_EQ(RunOf(page, "$18,157.52").text, "$18,157.52") << c.name;
    EXPECT_EQ(RunOf(page, "> 90 Days").text, "> 90 Days") << c.name;
  }
}

TEST_F(SurfaceFit, TableThatFitsIsLaidOutAsWritten) {
  s.TableBorder(7);
  const Twips y0 = s.CurrentY();
  s.AddTable("<2in|>1in|>1in", "Patient|Balance|Credit", "Abigail Lindgren|$113.60|$0.00;");
  const auto& page = s.Document().pages[0];
  EXPECT_TRUE(Scales(page).empty());
  const auto name = RunOf(page, "Abigail Lindgren"), balance = RunOf(page, "$113.60");
  EXPECT_EQ(name.size_pt, 10.0f);
  EXPECT_EQ(name.x, Left() + PrintSurface::kCellPadX);
  EXPECT_EQ(balance.x + balance.width, Left() + Twips::Inches(3) - PrintSurface::kCellPadX);
  EXPECT_EQ(s.CurrentY(), y0 + (s.TextHeight("X") + PrintSurface::kCellPadY * 2) * 2);
  double right = 0;
  for (const auto& l : Lines(page)) right = std::max({right, l.x1.value(), l.x2.value()});
  EXPECT_EQ(right, (Left() + Twips::Inches(4)).value()) << "the box ends at the table's width";
}

// A word or figure wider than its cell is set smaller in that cell, never
// cut; below the floor it may use the cell's padding, never more.
TEST_F(SurfaceFit, WideWordsAndFiguresStayWholeInTheirCell) {
  struct Case {
    const char* name;
    const char* format;
    const char* text;
    double size;
    bool bold;
    bool smaller;  // set below the asked size
    bool clipped;  // too wide even at the floor: painted only inside its cell
  } cases[] = {
      {"office total in a .6 in bold cell", ">.6in", "$37,558.62", 8, true, true, false},
      {"policy number in a .6 in cell", "<.6in", "G393198", 10, false, true, false},
      {"a figure that fits keeps its size", ">.9in", "$113.60", 10, false, false, false},
      {"a long word in a tiny cell", "<.2in", "Interest", 10, false, true, true},
  };
  for (const auto& c : cases) {
    s.StartDoc();
    s.FontSize(c.size);
    s.StartTable();
    s.AddTable(c.format, "", std::string("x;") + c.text + ";");
    if (c.bold) s.TableCell(tcFontBold, 2, 1) = true;
    s.EndTable();
    const auto& page = s.Document().pages[0];
    const auto texts = Texts(page);
    ASSERT_EQ(std::count(texts.begin(), texts.end(), c.text), 1) << c.name << ": one piece";
    const auto run = RunOf(page, c.text);
    const Twips cell_left = Left(), cell_right = Left() + ParseFormat(c.format)[0].width;
    Twips ink_left = run.x, ink_right = run.x + run.width;
    EXPECT_EQ(run.clip.has_value(), c.clipped) << c.name;
    if (run.clip) {
      ink_left = std::max(ink_left, run.clip->x);
      ink_right = std::min(ink_right, run.clip->x + run.clip->width);
    }
    EXPECT_GE(ink_left.value(), cell_left.value() - 1e-6) << c.name;
    EXPECT_LE(ink_right.value(), cell_right.value() + 1e-6) << c.name;
    EXPECT_EQ(run.size_pt < c.size, c.smaller) << c.name;
    EXPECT_GE(run.size_pt, kLegibleFloorPt - 1e-6) << c.name;
    EXPECT_EQ(run.top - RunOf(page, "x").top > Twips(0), true) << c.name << ": its own row";
  }
}

// A caption and a value parted by tabs in a cell too narrow for both: the
// value goes to the next line at the cell's own size, and the row grows.
TEST_F(SurfaceFit, TabsPastTheCellsEdgeBreakTheLine) {
  const Twips y0 = s.CurrentY();
  s.AddTable("<1.5in", "", "Relationship: Self\t\tDependant Code: 01;");
  const auto& page = s.Document().pages[0];
  const auto caption = RunOf(page, "Relationship: Self"), code = RunOf(page, "Dependant Code: 01");
  EXPECT_EQ(caption.size_pt, 10.0f);
  EXPECT_EQ(code.size_pt, 10.0f);
  EXPECT_EQ(code.x, Left() + PrintSurface::kCellPadX) << "the tabs went with the break";
  EXPECT_EQ(code.top, caption.top + s.TextHeight("X"));
  EXPECT_EQ(s.CurrentY(), y0 + s.TextHeight("X") * 2 + PrintSurface::kCellPadY * 2);
}

// A figure set smaller stands on the baseline of its row.
TEST_F(SurfaceFit, SmallerFigureKeepsTheRowsBaseline) {
  s.FontSize(8);
  s.FontBold(true);
  s.AddTable("<1.5in|>.6in|>.6in", "", "Office Totals: |$38,630.72|$11.52;");
  const auto& page = s.Document().pages[0];
  const auto label = RunOf(page, "Office Totals: "), total = RunOf(page, "$38,630.72"),
             interest = RunOf(page, "$11.52");
  EXPECT_LT(total.size_pt, 8.0f);
  EXPECT_EQ(interest.size_pt, 8.0f);
  EXPECT_EQ(total.baseline, label.baseline);
  EXPECT_EQ(interest.baseline, label.baseline);
}

TEST_F(SurfaceFit, FreeTextStaysWholeAndInsideThePaper) {
  // A word wider than the body is set smaller on its line, not cut.
  const std::string word = "Pneumonoultramicroscopicsilicovolcanoconiosis";
  s.FontSize(30);
  s.Text(word.substr(0, 45));
  const auto& page = s.Document().pages[0];
  const auto run = RunOf(page, word.substr(0, 45));
  EXPECT_LT(run.size_pt, 30.0f);
  EXPECT_LE((run.x + run.width).value(), Right().value() + 1e-6);
  // An inline piece placed near the edge ends inside the paper.
  s.FontSize(10);
  s.CurrentX(s.PageWidth() - Twips::Inches(0.8));
  s.InlineText("Balance Due($): 3,630.00");
  const auto inline_run = RunOf(s.Document().pages[0], "Balance Due($): 3,630.00");
  EXPECT_LE((inline_run.x + inline_run.width).value(),
            (s.PageWidth() - PrintSurface::kPaperInset).value() + 1e-6);
  // A right-aligned box reaching past the paper ends its text inside it.
  s.TextAlign(2);
  s.TextBox("Page 1 of 2", s.PageWidth() - Twips::Inches(2), s.CurrentY() + Twips(500),
            Twips::Inches(3), Twips::Inches(0.5));
  const auto boxed = RunOf(s.Document().pages[0], "Page 1 of 2");
  EXPECT_NEAR((boxed.x + boxed.width).value(),
              (s.PageWidth() - PrintSurface::kPaperInset).value(), 1e-6);
}

TEST_F(SurfaceFit, CombiningAccentsAreComposedBeforeMeasuring) {
  const std::string decomposed = "Ame\xCC\x81lie L\xC3\xA9vesque", composed = "Am\xC3\xA9lie L\xC3\xA9vesque";
  EXPECT_EQ(ComposeText("bad \xFF byte"), "bad \xFF byte") << "not UTF-8: left as it is";
  EXPECT_EQ(s.TextWidth(decomposed), s.TextWidth(composed));

  s.Text(decomposed);
  s.InlineText(decomposed);
  s.Text("");
  s.TextBox(decomposed, Left(), s.CurrentY(), Twips::Inches(3), Twips::Inches(1));
  s.AddTable("<3in", "", decomposed + ";");
  const auto runs = Runs(s.Document().pages[0]);
  ASSERT_EQ(runs.size(), 4u);
  for (const auto& r : runs) {
    EXPECT_EQ(r.text, composed);
    EXPECT_EQ(r.width, s.TextWidth(composed));
  }
}

TEST(TextFit, FitSize) {
  struct Case {
    const char* name;
    double size, widest, room, want;
  } cases[] = {
      {"fits", 10, 900, 1000, 10},
      {"shrinks in proportion", 10, 1000, 800, 8},
      {"stops at the floor", 10, 1000, 100, kLegibleFloorPt},
      {"never grows", 5, 1000, 100, 5},
  };
  for (const auto& c : cases)
    EXPECT_DOUBLE_EQ(FitSize(c.size, Twips(c.widest), Twips(c.room)), c.want) << c.name;
}

}  // namespace
}  // namespace orv::frame
