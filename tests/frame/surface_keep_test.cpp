// Headings, group rows and totals that keep with what they belong to across
// a page break.
#include <gtest/gtest.h>

#include "frame/surface/surface.h"
#include "frame/surface/table_layout.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using namespace testing;

// A heading repeated with the header block pushes the continued rows down.
TEST(TableLayout, RepeatedLeadAboveTheHeader) {
  PlacementRules lead;
  lead.header_rows = 1;
  lead.repeat_lead = Twips(50);
  const auto p = PlaceRows(std::vector<Twips>(6, Twips(100)), lead, Twips(1000), Twips(1000),
                           Twips(1450));
  ASSERT_EQ(p.repeats.size(), 1u);
  EXPECT_EQ(p.repeats[0].y, Twips(1000));
  EXPECT_EQ(p.rows[4].y, Twips(1150));
}

// Letter portrait, 1 in margins, Tahoma 10: a row is a line and its padding.
class SurfaceKeep : public ::testing::Test {
 protected:
  void SetUp() override {
    Open(s);
    lh = s.TextHeight("X");
    row = lh + PrintSurface::kCellPadY * 2;
  }
  Twips Bottom() const { return s.PageHeight() - s.MarginBottom(); }
  std::vector<std::string> PageTexts(int p) const { return Texts(s.Document().pages[p]); }
  static bool Has(const std::vector<std::string>& texts, const std::string& t) {
    return std::find(texts.begin(), texts.end(), t) != texts.end();
  }
  PrintSurface s;
  Twips lh, row;
};

TEST_F(SurfaceKeep, HeadingAtThePageFootMovesWithWhatItIntroduces) {
  struct Case {
    const char* name;
    void (*write)(PrintSurface&);
    std::vector<std::string> second_page_starts;  // first texts of page 2
  } cases[] = {
      {"a heading kept with its table",
       [](PrintSurface& s) {
         s.Text("Transactions");
         s.KeepWithNext();
         s.AddTable("<2in|>1in", "Date|Amount", "Nov/02/2026|$12.00;Nov/03/2026|$4.00;");
       },
       {"Transactions", "Date", "Amount", "Nov/02/2026"}},
      {"two headings and a blank line kept as a chain",
       [](PrintSurface& s) {
         s.Text("Lindgren, Abigail");
         s.KeepWithNext();
         s.Text(" ");
         s.Text("Transactions");
         s.KeepWithNext();
         s.AddTable("<2in|>1in", "Date|Amount", "Nov/02/2026|$12.00;");
       },
       {"Lindgren, Abigail", "Transactions", "Date"}},
      {"a note heading kept with its first line",
       [](PrintSurface& s) {
         s.Text("Notes: ");
         s.KeepWithNext();
         s.Text("Balance = 0 Days + 30 Days + 60 Days + 90 Days");
       },
       {"Notes: ", "Balance = 0 Days + 30 Days + 60 Days + 90 Days"}},
      {"without a mark the heading stays where it fell",
       [](PrintSurface& s) {
         s.Text("Transactions");
         s.AddTable("<2in|>1in", "Date|Amount", "Nov/02/2026|$12.00;Nov/03/2026|$4.00;");
       },
       {"Date", "Amount"}},
      {"a page the report breaks itself drops the mark",
       [](PrintSurface& s) {
         s.Text("Transactions");
         s.KeepWithNext();
         s.NewPage();
         s.AddTable("<2in|>1in", "Date|Amount", "Nov/02/2026|$12.00;");
       },
       {"Date", "Amount"}},
  };
  for (const auto& c : cases) {
    s.StartDoc();
    s.Text("Earlier text on the first page");
    // Room for one more line, not for a line and a table's first rows.
    s.CurrentY(Bottom() - lh * 1.5);
    c.write(s);
    ASSERT_EQ(s.PageCount(), 2) << c.name;
    const auto second = PageTexts(1);
    ASSERT_GE(second.size(), c.second_page_starts.size()) << c.name;
    EXPECT_EQ(std::vector<std::string>(second.begin(), second.begin() + c.second_page_starts.size()),
              c.second_page_starts)
        << c.name;
    EXPECT_LE(Runs(s.Document().pages[1]).front().top, s.MarginTop() + PrintSurface::kCellPadY)
        << c.name << ": at the top of the page";
    for (const auto& r : Runs(s.Document().pages[0]))
      EXPECT_LE(r.baseline.value(), Bottom().value()) << c.name << ": " << r.text;
  }
}

// A heading kept with a table that keeps together goes where the whole
// table goes: where the first rows would still fit under it but not the
// table, both start the next page.
TEST_F(SurfaceKeep, HeadingGoesWithATableKeptTogether) {
  for (bool kept_together : {true, false}) {
    s.StartDoc();
    s.Text("Earlier text on the first page");
    s.CurrentY(Bottom() - lh - row * 2.5);
    s.Text("Counts");
    s.KeepWithNext();
    s.StartTable();
    s.AddTable("<2in|>1in", "", "EOB|2;Acknowledgment|11;Rejection|2;Total|13");
    s.TableCell(tcKeepTogether) = kept_together;
    s.EndTable();
    ASSERT_EQ(s.PageCount(), 2) << kept_together;
    const auto first = PageTexts(0), second = PageTexts(1);
    // Kept together: heading and all four rows on page 2. Otherwise the
    // heading stays with the rows that fit, the last two go over.
    EXPECT_EQ(Has(second, "Counts"), kept_together);
    EXPECT_EQ(Has(second, "EOB"), kept_together);
    EXPECT_TRUE(Has(second, "Total"));
    EXPECT_FALSE(Has(first, "Total"));
  }
}

// Rows that fill page 1 but for the last: without the rule the totals row
// would stand alone under the repeated header of page 2.
TEST_F(SurfaceKeep, TotalsRowIsNeverAloneAtTheTopOfAPage) {
  const int fit = int((Bottom() - s.MarginTop()).value() / row.value());  // rows with the header
  std::string body;
  for (int i = 1; i < fit; ++i) body += "row " + std::to_string(i) + "|$1.00;";
  body += "Office Totals: |$" + std::to_string(fit - 1) + ".00;";
  s.TableBorder(7);
  s.AddTable("<2in|>1in", "Patient|Balance", body, 12169126);
  ASSERT_EQ(s.PageCount(), 2);
  const auto first = PageTexts(0), second = PageTexts(1);
  EXPECT_FALSE(Has(first, "row " + std::to_string(fit - 1)));
  EXPECT_TRUE(Has(first, "row " + std::to_string(fit - 2)));
  EXPECT_EQ(second, (std::vector<std::string>{"Patient", "Balance",
                                               "row " + std::to_string(fit - 1), "$1.00",
                                               "Office Totals: ", "$" + std::to_string(fit - 1) +
                                                                      ".00"}));
}

// A closing note block that would start a page takes the table's last row
// along, and the table is closed where the row left it.
TEST_F(SurfaceKeep, ClosingNotesTakeTheLastRowAlong) {
  s.TableBorder(4);
  // The table ends a little above the foot: room for the blank line, not
  // for the note heading and its first line.
  s.CurrentY(Bottom() - row * 3 - lh * 1.5);
  s.AddTable("<2in|>1in", "Patient|Balance", "Abigail Lindgren|$113.60;Office Totals: |$113.60;",
             12169126);
  const Twips totals_top = RunOf(s.Document().pages[0], "Office Totals: ").top -
                           PrintSurface::kCellPadY;
  s.Text("");
  s.KeepWithNext();  // after the blank line: the table's last row is meant
  s.FontBold(true);
  s.Text("Notes: ");
  s.KeepWithNext();
  s.FontBold(false);
  s.Text("Balance = 0 Days + 30 Days + 60 Days + 90 Days");
  ASSERT_EQ(s.PageCount(), 2);
  const auto first = PageTexts(0), second = PageTexts(1);
  EXPECT_TRUE(Has(first, "Abigail Lindgren"));
  EXPECT_FALSE(Has(first, "Office Totals: "));
  EXPECT_EQ(second.front(), "Office Totals: ");
  EXPECT_TRUE(Has(second, "Notes: "));
  // The box of page 1 closes at the moved row's top; page 2 opens its own.
  double lowest = 0;
  for (const auto& l : Lines(s.Document().pages[0])) lowest = std::max({lowest, l.y1.value(), l.y2.value()});
  EXPECT_EQ(lowest, totals_top.value());
  double highest = 1e9;
  for (const auto& l : Lines(s.Document().pages[1])) highest = std::min({highest, l.y1.value(), l.y2.value()});
  EXPECT_EQ(highest, s.MarginTop().value());
}

// A long table in a grid: every page opens with the heading and the
// header, nothing passes the bottom margin, and the grid closes on each page.
TEST_F(SurfaceKeep, ContinuedTableRepeatsItsHeaderAndHeading) {
  s.TableBorder(7);
  s.FontBold(true);
  s.Text("Transactions");
  s.KeepWithNext();
  s.FontBold(false);
  std::string body;
  for (int i = 1; i <= 120; ++i) body += "Nov/02/2026|visit " + std::to_string(i) + ";";
  s.AddTable("<2in|<3in", "Date|Description", body, 12169126);
  ASSERT_GE(s.PageCount(), 2);
  for (int p = 1; p < s.PageCount(); ++p) {
    const auto texts = PageTexts(p);
    ASSERT_GE(texts.size(), 3u);
    EXPECT_EQ(texts[0], "Transactions") << "page " << p + 1;
    EXPECT_EQ(texts[1], "Date") << "page " << p + 1;
    const auto runs = Runs(s.Document().pages[p]);
    EXPECT_EQ(runs[0].top, s.MarginTop());
    EXPECT_TRUE(s.Document().fonts[runs[0].font].bold) << "the heading as it was written";
  }
  int seen = 0;
  for (int p = 0; p < s.PageCount(); ++p) {
    for (const auto& r : Runs(s.Document().pages[p])) {
      EXPECT_LE(r.baseline.value(), Bottom().value()) << "page " << p + 1;
      if (r.text.rfind("visit ", 0) == 0) EXPECT_EQ(r.text, "visit " + std::to_string(++seen));
    }
    double lowest = 0;
    for (const auto& l : Lines(s.Document().pages[p])) lowest = std::max(lowest, l.y2.value());
    EXPECT_LE(lowest, Bottom().value()) << "page " << p + 1;
  }
  EXPECT_EQ(seen, 120) << "every row once, in order";
}

TEST_F(SurfaceKeep, GroupRowsMarkedInATableKeepWithTheirFirstMember) {
  const int fit = int((Bottom() - s.MarginTop()).value() / row.value());
  std::string body;
  for (int i = 1; i < fit; ++i) body += "filler " + std::to_string(i) + "|;";
  body += "Lindgren, Abigail|$113.60;  Abigail|$113.60;  Emma|$0.00;Office Totals: |$113.60;";
  s.StartTable();
  s.AddTable("<2in|>1in", "", body);
  s.TableCell(tcKeepWithNext, fit, 0) = 1;  // the family's name row
  EXPECT_EQ(s.TableCell(tcKeepWithNext, fit, 1).Number(), 1);
  s.EndTable();
  ASSERT_EQ(s.PageCount(), 2);
  EXPECT_FALSE(Has(PageTexts(0), "Lindgren, Abigail"));
  EXPECT_EQ(PageTexts(1).front(), "Lindgren, Abigail");
}

}  // namespace
}  // namespace orv::frame
