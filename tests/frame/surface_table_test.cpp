#include <gtest/gtest.h>

#include <cstring>
#include <numeric>
#include <sstream>
#include <tuple>

#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"
#include "frame/surface/table_layout.h"
#include "frame/surface/text_layout.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using testing::Fills;
using testing::Lines;
using testing::OpenSurface;
using testing::RunOf;
using testing::Runs;
using testing::Texts;

TEST(TableLanguage, Format) {
  struct Case {
    const char* format;
    std::vector<double> widths;
    std::vector<int> aligns;
  } cases[] = {
      {">.75in", {1080}, {2}},
      {"^!~+1.3in|>+!~1in|>!~+1in", {1872, 1440, 1440}, {1, 2, 2}},
      {"|1.95in", {1440, 2808}, {0, 0}},
      {"^.8In|<2cm|>1440", {1152, 1133.858, 1440}, {1, 0, 2}},
  };
  for (const auto& c : cases) {
    const auto cols = ParseFormat(c.format);
    ASSERT_EQ(cols.size(), c.widths.size()) << c.format;
    for (size_t i = 0; i < cols.size(); ++i) {
      EXPECT_NEAR(cols[i].width.value(), c.widths[i], 1e-3) << c.format << " column " << i;
      EXPECT_EQ(cols[i].align, c.aligns[i]) << c.format << " column " << i;
    }
  }
  const auto a = ParseFormat(">+!~1in"), b = ParseFormat(">!~+1in");
  EXPECT_TRUE(a[0].bang && a[0].tilde && a[0].plus);
  EXPECT_EQ(a[0].tilde, b[0].tilde);
  EXPECT_THROW(ParseFormat("<1inch"), SurfaceError);
}

TEST(TableLanguage, BodyRowsAndCells) {
  struct Case {
    const char* name;
    const char* body;
    std::vector<std::vector<std::string>> rows;
  } cases[] = {
      {"trailing semicolon adds no row", "a|b;c|d;", {{"a", "b"}, {"c", "d"}}},
      {"no trailing semicolon", "a|b;c|d", {{"a", "b"}, {"c", "d"}}},
      {"short row leaves blanks", "a;c|d;", {{"a", ""}, {"c", "d"}}},
      {"empty row kept", "|;x|y;", {{"", ""}, {"x", "y"}}},
      {"extra cells dropped", "a|b|c;", {{"a", "b"}}},
      {"line break inside a cell", "two\r\nlines|b;", {{"two\r\nlines", "b"}}},
      {"empty body", "", {}},
  };
  for (const auto& c : cases) {
    Table t;
    t.Add("1in|1in", "H1|H2", c.body, std::nullopt, std::nullopt, false, TextStyle());
    std::vector<std::vector<std::string>> got;
    for (int r = 1; r <= t.BodyRows(); ++r)
      got.push_back({t.rows[r].cells[0].text, t.rows[r].cells[1].text});
    EXPECT_EQ(got, c.rows) << c.name;
  }
}

// Data holding the separators, escaped as the reports escape every value:
// one row, two cells, the text as it was; a stray control character that
// could pose as an escaped separator is dropped.
TEST(TableLanguage, EscapedDataStaysInItsCell) {
  const std::string forged = "Smith;Evil|9999|Row";
  const std::string body = EscapeCell(forged) + "|" + EscapeCell("12 Main St; Apt 4|B") + ";";
  Table t;
  t.Add("1in|1in", EscapeCell("Name|Header") + "|Street", body, std::nullopt, std::nullopt, false,
        TextStyle());
  ASSERT_EQ(t.BodyRows(), 1);
  EXPECT_EQ(t.rows[0].cells[0].text, "Name|Header");
  EXPECT_EQ(t.rows[1].cells[0].text, forged);
  EXPECT_EQ(t.rows[1].cells[1].text, "12 Main St; Apt 4|B");
  EXPECT_EQ(EscapeCell("plain text, no separators"), "plain text, no separators");
  EXPECT_EQ(EscapeCell(std::string("a\x1C|b\x1D")).find('\x1C'), 1u);
  Table u;
  u.Add("1in", "", EscapeCell(std::string("x\x1Cy\x1Dz")), std::nullopt, std::nullopt, false,
        TextStyle());
  EXPECT_EQ(u.rows[1].cells[0].text, "xyz");
  // Each separator and control character at every place of a longer value,
  // which is looked at eight bytes at a time.
  for (const char special : {'|', ';', '\x1C', '\x1D'}) {
    for (size_t at = 0; at < 21; ++at) {
      std::string value(21, 'a');
      value[at] = special;
      std::string expected = value;
      if (special == '|' || special == ';')
        expected[at] = special == '|' ? '\x1C' : '\x1D';
      else
        expected.erase(at, 1);
      EXPECT_EQ(EscapeCell(value), expected) << "byte " << int(special) << " at " << at;
    }
  }
}

// Placement of rows 100 tall on pages whose rows run from 1000 to 1450.
// Places read "page:y", one for every row in order.
TEST(TableLayout, PlaceRows) {
  struct Case {
    const char* name;
    int rows, header_rows;
    bool repeat;
    double start;
    const char* want;       // every row
    const char* repeats;    // the header block again
    const char* keep = "";  // K: the row is kept with the next
  } cases[] = {
      {"fits on the page", 3, 0, true, 1000, "0:1000 0:1100 0:1200", ""},
      {"breaks when the next row would pass the bottom", 6, 0, true, 1000,
       "0:1000 0:1100 0:1200 0:1300 1:1000 1:1100", ""},
      {"header repeats after a break", 6, 1, true, 1000,
       "0:1000 0:1100 0:1200 0:1300 1:1100 1:1200", "1:1000"},
      {"no repeat when switched off", 6, 1, false, 1000,
       "0:1000 0:1100 0:1200 0:1300 1:1000 1:1100", ""},
      {"header never alone at the foot", 3, 1, true, 1300, "1:1000 1:1100 1:1200", ""},
      {"starts low: first row moves", 2, 0, true, 1400, "1:1000 1:1100", ""},
      {"a group row at the foot moves with its first member", 4, 0, true, 1100,
       "0:1100 0:1200 1:1000 1:1100", "", "..K."},
      {"the row before the totals goes with them", 5, 0, true, 1000,
       "0:1000 0:1100 0:1200 1:1000 1:1100", "", "...K."},
      {"a chain of kept rows moves whole", 5, 0, true, 1000, "0:1000 1:1000 1:1100 1:1200 1:1300",
       "", ".KKK."},
      {"a chain that fills its page from the top stays", 6, 0, true, 1000,
       "0:1000 0:1100 0:1200 0:1300 1:1000 1:1100", "", "KKKK.."},
      {"a chain that reaches the header takes the header along", 3, 1, true, 1200,
       "1:1000 1:1100 1:1200", "", ".K."},
      {"a kept row after a break comes under the repeated header", 6, 1, true, 1000,
       "0:1000 0:1100 0:1200 1:1100 1:1200 1:1300", "1:1000", "...K.."},
  };
  auto places = [](const auto& rows) {
    std::ostringstream out;
    for (const auto& r : rows) out << (out.tellp() ? " " : "") << r.page << ":" << r.y.value();
    return out.str();
  };
  for (const auto& c : cases) {
    PlacementRules rules;
    rules.header_rows = c.header_rows;
    rules.repeat_header = c.repeat;
    for (const char* k = c.keep; *k; ++k) rules.keep_with_next.push_back(*k == 'K');
    const auto p = PlaceRows(std::vector<Twips>(c.rows, Twips(100)), rules, Twips(c.start),
                             Twips(1000), Twips(1450));
    EXPECT_EQ(places(p.rows), c.want) << c.name;
    EXPECT_EQ(places(p.repeats), c.repeats) << c.name;
  }
  // A row taller than a page still gets a place, and the layout ends.
  const auto tall = PlaceRows({Twips(5000), Twips(100)}, {}, Twips(1000), Twips(1000), Twips(1450));
  EXPECT_EQ(tall.rows[0].page, 0);
  EXPECT_EQ(tall.rows[1].page, 1);
  PlacementRules keep;
  keep.keep_together = true;
  EXPECT_EQ(
      PlaceRows({Twips(100), Twips(100)}, keep, Twips(1300), Twips(1000), Twips(1450)).rows[0].page,
      1);
}

TEST(SurfaceTable, EdgeCasesOfAddTable) {
  OpenSurface s;
  const Twips y0 = s.CurrentY();
  s.AddTable("1in|1in", "", "");
  EXPECT_TRUE(s.Document().pages[0].items.empty()) << "empty header and body draw nothing";
  EXPECT_EQ(s.CurrentY(), y0);

  s.AddTable("<1in|1in", "Code|Fee", "", 12169126);
  const auto& page = s.Document().pages[0];
  EXPECT_EQ(Texts(page), (std::vector<std::string>{"Code", "Fee"})) << "the header row alone";
  ASSERT_EQ(Fills(page).size(), 2u);
  EXPECT_EQ(Fills(page)[0].color, (render::Rgb{166, 175, 185}));
  EXPECT_GT(s.CurrentY(), y0);
  EXPECT_EQ(RunOf(page, "Fee").x, s.MarginLeft() + Twips(1440) + PrintSurface::kCellPadX)
      << "a width without a flag is left aligned";

  // A table keeps nothing of the one before it: the cells a row leaves out
  // are blank, and rows without a colour are not filled.
  s.AddTable("1in|1in|1in", "", "a|b|c;d|e|f;");
  s.AddTable("1in|1in|1in", "", "x;y|z");
  const auto& after = s.Document().pages[0];
  EXPECT_EQ(Texts(after),
            (std::vector<std::string>{"Code", "Fee", "a", "b", "c", "d", "e", "f", "x", "y", "z"}));
  EXPECT_EQ(Fills(after).size(), 2u);
}

// A row handed over as its cells prints as the same row escaped into a
// table string: the separators in its texts are data, cells past the last
// column are dropped, and the strings come back empty to build the next
// row in, with nothing of the last row left in the table.
TEST(SurfaceTable, RowOfCellsPrintsAsItsTableString) {
  const char* format = "<1.5in|<1in|>1in";
  OpenSurface by_string, by_cells;
  std::vector<std::string> cells = {"Smith | Jones; Ann", "two\r\nlines", "$3.00", "dropped"};
  by_string.AddTable(format, "Name|Note|Fee",
                     EscapeCell(cells[0]) + "|" + EscapeCell(cells[1]) + "|" + cells[2] + ";",
                     0xB9AFA6);
  by_cells.AddTableRow(format, "Name|Note|Fee", cells, 0xB9AFA6);
  EXPECT_EQ(cells, std::vector<std::string>(4)) << "the texts are taken, the strings kept";
  cells[0] = "a;b";
  by_string.AddTable(format, "", "a" + EscapeCell(";") + "b;");
  by_cells.AddTableRow(format, "", std::span(cells).first(1));

  const auto& a = by_string.Document().pages[0];
  const auto& b = by_cells.Document().pages[0];
  EXPECT_EQ(Texts(b), (std::vector<std::string>{"Name", "Note", "Fee", "Smith | Jones; Ann", "two",
                                                "lines", "$3.00", "a;b"}));
  ASSERT_EQ(Runs(a).size(), Runs(b).size());
  for (size_t i = 0; i < Runs(a).size(); ++i) {
    EXPECT_EQ(Runs(a)[i].text, Runs(b)[i].text);
    EXPECT_EQ(Runs(a)[i].x, Runs(b)[i].x) << Runs(a)[i].text;
    EXPECT_EQ(Runs(a)[i].top, Runs(b)[i].top) << Runs(a)[i].text;
  }
  EXPECT_EQ(Fills(a).size(), Fills(b).size());
  EXPECT_EQ(by_string.CurrentY(), by_cells.CurrentY());
  ASSERT_EQ(by_cells.Document().tables.size(), 2u);
  EXPECT_EQ(by_cells.Document().tables[1].rows,
            (std::vector<std::vector<std::string>>{{"a;b", "", ""}}));
  // Several rows of cells in one list, the last one short; none at all is
  // the header alone.
  std::vector<std::string> rows = {"x|1", "y", "$1.00", "z;2"};
  by_string.AddTable(format, "Name|Note|Fee",
                     EscapeCell("x|1") + "|y|$1.00;" + EscapeCell("z;2") + ";");
  by_cells.AddTableRows(format, "Name|Note|Fee", rows, 3);
  EXPECT_EQ(rows, std::vector<std::string>(4));
  by_string.AddTable(format, "Name|Note|Fee", "");
  by_cells.AddTableRows(format, "Name|Note|Fee", {}, 3);
  ASSERT_EQ(by_cells.Document().tables.size(), 4u);
  EXPECT_EQ(by_cells.Document().tables[2].rows,
            (std::vector<std::vector<std::string>>{
                {"Name", "Note", "Fee"}, {"x|1", "y", "$1.00"}, {"z;2", "", ""}}));
  EXPECT_EQ(by_cells.Document().tables[3].rows,
            (std::vector<std::vector<std::string>>{{"Name", "Note", "Fee"}}));
  EXPECT_EQ(Texts(by_string.Document().pages[0]), Texts(by_cells.Document().pages[0]));
  EXPECT_EQ(by_string.CurrentY(), by_cells.CurrentY());
  by_cells.StartTable();
  EXPECT_THROW(by_cells.AddTableRow(format, "", cells), SurfaceError);
  EXPECT_THROW(by_cells.AddTableRows(format, "", cells, 3), SurfaceError);
}

TEST(SurfaceTable, RowsGrowToTheirTallestCellAndThePenGoesBelow) {
  OpenSurface s;
  const Twips lh = s.TextHeight("X");
  const Twips row = lh + PrintSurface::kCellPadY * 2;
  const Twips y0 = s.CurrentY();
  s.AddTable("<1in|>1in", "Code|Amount",
             "01101|$12.00;two\r\nlines|$3.00;"
             "a description long enough to wrap at one inch|$1.00;");
  const auto& page = s.Document().pages[0];
  const auto amount1 = RunOf(page, "$12.00"), amount2 = RunOf(page, "$3.00"),
             amount3 = RunOf(page, "$1.00");
  EXPECT_EQ(amount1.top, y0 + row + PrintSurface::kCellPadY);
  EXPECT_EQ(amount2.top, amount1.top + row);
  EXPECT_EQ(RunOf(page, "lines").top, amount2.top + lh);
  EXPECT_EQ(amount3.top, amount2.top + row + lh) << "the two-line row is one line taller";
  // Right alignment: the amount ends at the cell's padding.
  EXPECT_NEAR((amount1.x + amount1.width).value(),
              (s.MarginLeft() + Twips(2880) - PrintSurface::kCellPadX).value(), 1e-6);
  // The long description wrapped inside its column.
  int wrapped_lines = 0;
  for (const auto& r : Runs(page)) {
    if (r.top >= amount3.top && r.x < s.MarginLeft() + Twips(1440)) {
      ++wrapped_lines;
      EXPECT_LE((r.x + r.width).value(), (s.MarginLeft() + Twips(1440)).value()) << r.text;
    }
  }
  EXPECT_GE(wrapped_lines, 3);
  EXPECT_EQ(s.CurrentY(), y0 + row * 4 + lh + lh * double(wrapped_lines - 1));
  EXPECT_EQ(s.CurrentX(), s.MarginLeft());
}

// A cell broken into lines is kept and taken again where the same text
// recurs (column heads on every page): it must break as it would alone, in
// its own column width, type size and weight, whatever was broken before.
TEST(SurfaceTable, RecurringWrappedCellsBreakAsTheyWouldAlone) {
  const std::string text = "a description long enough to wrap at one inch";
  struct Case {
    const char* name;
    const char* format;
    double size;
    bool bold;
  } cases[] = {
      {"one inch", "<1in", 10, false},
      {"a wider column", "<1.5in", 10, false},
      {"smaller type", "<1in", 8, false},
      {"bold", "<1in", 10, true},
  };
  // The runs one table adds: text, width and place across.
  using Line = std::tuple<std::string, double, double>;
  auto lines_of = [&](PrintSurface& s, const Case& c) {
    s.FontSize(c.size);
    s.FontBold(c.bold);
    const size_t before = Runs(s.Document().pages[0]).size();
    s.AddTable(c.format, "", text + ";");
    const auto runs = Runs(s.Document().pages[0]);
    std::vector<Line> out;
    for (size_t i = before; i < runs.size(); ++i)
      out.emplace_back(runs[i].text, runs[i].width.value(), runs[i].x.value());
    return out;
  };
  OpenSurface together;
  for (int pass = 0; pass < 2; ++pass)
    for (const Case& c : cases) {
      OpenSurface alone;
      const auto want = lines_of(alone, c);
      EXPECT_GE(want.size(), 2u) << c.name;
      EXPECT_EQ(lines_of(together, c), want) << c.name << ", pass " << pass;
    }
}

// Wrapped cells are drawn as the lines BreakLines gives their text in the
// cell's room: the same pieces, at the same widths to the bit, placed by the
// column's alignment; blanks before a wrap take no room.
TEST(SurfaceTable, WrappedCellsDrawTheLinesBreakLinesGives) {
  OpenSurface s;
  const auto metrics = FontLibrary::Resolve("Tahoma", false, false).metrics;
  const MeasureFn measure = [&](std::string_view t) { return metrics->Width(t, 10); };
  const Twips column = Twips::Inches(1), room = column - PrintSurface::kCellPadX * 2;
  const int aligns[] = {0, 1, 2};
  const std::vector<std::string> texts = {
      "a description long enough to wrap at one inch",
      "Crown    prep,   upper molar",
      "Smith-Jones-Abernathy Home/Work",
      "re-cement\r\ntwo lines, the second wrapping once",
      "Nov/20/2026 $37,558.62 555-0100",
      "short",
  };
  std::vector<std::string> cells = texts;
  const size_t before = Runs(s.Document().pages[0]).size();
  s.AddTableRows("<1in|^1in|>1in", "", cells, 3);
  const auto runs = Runs(s.Document().pages[0]);
  size_t next = before;
  for (size_t i = 0; i < texts.size(); ++i) {
    const int col = int(i % 3);
    const Twips cell_left = s.MarginLeft() + column * double(col) + PrintSurface::kCellPadX;
    for (const TextLine& line : BreakLines(texts[i], measure, room, room)) {
      ASSERT_LE(line.width, room) << texts[i];
      for (const LineSegment& seg : line.segments) {
        SCOPED_TRACE(texts[i] + ": " + seg.text);
        ASSERT_LT(next, runs.size());
        const render::TextRun& run = runs[next++];
        EXPECT_EQ(run.text, seg.text);
        const double got = run.width.value(), want = seg.width.value();
        EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << got << " against " << want;
        EXPECT_EQ(run.x, cell_left + AlignOffset(aligns[col], room, line.width));
      }
    }
  }
  EXPECT_EQ(next, runs.size());
}

TEST(SurfaceTable, PlacementByTextAlign) {
  struct Case {
    int align;
    double indent;
    double left;  // of a 3-inch table on letter paper with 1-inch margins
  } cases[] = {{0, 0, 1440},
               {7, 0, 1440},
               {1, 0, 1440 + (9360 - 4320) / 2.0},
               {2, 0, 10800 - 4320},
               {0, 300, 1740}};
  for (const auto& c : cases) {
    OpenSurface s;
    s.TextAlign(c.align);
    s.TableBorder(4);
    s.StartTable();
    s.AddTable("1in|2in", "", "a|b");
    s.TableCell(tcIndent) = c.indent;
    s.EndTable();
    const auto lines = Lines(s.Document().pages[0]);
    double left = 1e9;
    for (const auto& l : lines) left = std::min({left, l.x1.value(), l.x2.value()});
    EXPECT_NEAR(left, c.left, 1e-6) << c.align;
  }
}

TEST(SurfaceTable, ColoursOfHeaderAndBody) {
  OpenSurface s;
  // The one-row table that looks like a header: no header, body in the colour.
  s.AddTable("<2in|<2in", "", "Name|Phone;", std::nullopt, 12169126);
  auto fills = Fills(s.Document().pages[0]);
  ASSERT_EQ(fills.size(), 2u);
  EXPECT_EQ(fills[0].color, (render::Rgb{166, 175, 185}));
  s.AddTable("<2in|<2in", "A|B", "a|b;", 2147483663u, 0);
  fills = Fills(s.Document().pages[0]);
  ASSERT_EQ(fills.size(), 4u) << "body colour 0 means none";
  EXPECT_EQ(fills[2].color, (render::Rgb{212, 212, 212}));
}

TEST(SurfaceTable, TotalRowThroughTableCell) {
  OpenSurface s;
  s.TableBorder(0);
  s.StartTable();
  s.AddTable("<2in|>1in", "Item|Amount", "a|1.00;b|2.00;", 12169126, std::nullopt, true);
  s.AddTable("<2in|>1in", "ignored|ignored", "Total|3.00;", std::nullopt, std::nullopt, true);
  const int last = int(s.TableCell(tcRows).Number());
  EXPECT_EQ(last, 3);
  EXPECT_EQ(s.TableCell(tcCols).Number(), 2);
  s.TableCell(tcRowBorderAbove, last, 1, last, 2) = 1;
  s.TableCell(tcFontBold, last, 1, last, 2) = true;
  EXPECT_EQ(s.TableCell(tcText, last, 2).String(), "3.00");
  EXPECT_EQ(s.TableCell(tcText, 0, 1).String(), "Item") << "append keeps the first header";
  EXPECT_TRUE(s.Document().pages[0].items.empty()) << "nothing drawn before EndTable";
  s.EndTable();
  const auto& page = s.Document().pages[0];
  const auto total = RunOf(page, "Total"), b = RunOf(page, "b");
  EXPECT_TRUE(s.Document().fonts[total.font].bold);
  EXPECT_FALSE(s.Document().fonts[b.font].bold);
  const auto lines = Lines(page);
  ASSERT_EQ(lines.size(), 1u) << "border 0 draws only the line above the total";
  EXPECT_EQ(lines[0].y1, total.top - PrintSurface::kCellPadY);
  EXPECT_EQ(lines[0].x2 - lines[0].x1, Twips(4320));
}

// A figure repeated down a column is measured again wherever its font
// changes: set bold or larger it is wider, and every copy still ends at the
// column's right edge.
TEST(SurfaceTable, RepeatedFigureTakesEachRowsFont) {
  OpenSurface s;
  s.StartTable();
  s.AddTable(">1in|<1in", "", "1,000|a;1,000|b;1,000|c;1,000|d;1,000|e;");
  s.TableCell(tcFontBold, 2, 1) = true;
  s.TableCell(tcFontSize, 4, 1) = 14;
  s.EndTable();
  std::vector<render::TextRun> figures;
  for (const auto& r : Runs(s.Document().pages[0]))
    if (r.text == "1,000") figures.push_back(r);
  ASSERT_EQ(figures.size(), 5u);
  const Twips plain = figures[0].width;
  for (size_t i = 0; i < figures.size(); ++i) {
    EXPECT_EQ(figures[i].x + figures[i].width, figures[0].x + plain) << "row " << i + 1;
    if (i % 2 == 0) EXPECT_EQ(figures[i].width, plain) << "row " << i + 1;
  }
  EXPECT_GT(figures[1].width, plain) << "bold";
  EXPECT_GT(figures[3].width, plain) << "14 points";
}

// A cell of several lines that repeats the cell above it (a plan's standard
// note, a day and provider on two lines) takes that cell's lines: each row
// draws all of them and is as tall as they are, and a row in another font
// breaks its text afresh.
TEST(SurfaceTable, RepeatedCellsOfSeveralLinesKeepTheirLines) {
  for (const std::string text :
       {"a description long enough to wrap at one inch", "Wednesday\r\nDr. Abernathy"}) {
    SCOPED_TRACE(text);
    OpenSurface s;
    const Twips lh = s.TextHeight("X");
    std::string body;
    for (int row = 0; row < 5; ++row) body += text + "|x;";
    s.StartTable();
    s.AddTable("<1in|<1in", "", body);
    s.TableCell(tcFontBold, 3, 1) = true;
    s.EndTable();
    const Twips room = Twips::Inches(1) - PrintSurface::kCellPadX * 2;
    std::vector<render::TextRun> runs;
    for (const auto& r : Runs(s.Document().pages[0]))
      if (r.x < s.MarginLeft() + Twips::Inches(1)) runs.push_back(r);
    size_t next = 0;
    Twips row_top = runs.at(0).top - PrintSurface::kCellPadY;
    for (int row = 1; row <= 5; ++row) {
      const auto metrics = FontLibrary::Resolve("Tahoma", row == 3, false).metrics;
      const auto lines = BreakLines(text, [&](std::string_view t) { return metrics->Width(t, 10); },
                                    room, room);
      ASSERT_GE(lines.size(), 2u);
      for (size_t i = 0; i < lines.size(); ++i) {
        ASSERT_LT(next, runs.size()) << "row " << row;
        const render::TextRun& run = runs[next++];
        EXPECT_EQ(run.text, lines[i].segments.at(0).text) << "row " << row;
        EXPECT_EQ(run.width, lines[i].width) << "row " << row;
        EXPECT_EQ(run.top, row_top + PrintSurface::kCellPadY + lh * double(i)) << "row " << row;
      }
      row_top += lh * double(lines.size()) + PrintSurface::kCellPadY * 2;
    }
    EXPECT_EQ(next, runs.size());
    EXPECT_EQ(s.CurrentY(), row_top);
  }
}

TEST(SurfaceTable, BuiltCellByCellWithSpans) {
  OpenSurface s;
  s.StartTable();
  s.TableCell(tcCols) = 4;
  s.TableCell(tcRows) = 2;
  for (int c = 1; c <= 4; ++c) s.TableCell(tcColWidth, -1, c) = "1.5in";
  s.TableCell(tcText, 1, 1) = "Date: Nov/23/2026";
  s.TableCell(tcText, 1, 3) = 12.5;
  s.TableCell(tcText, 2, 1) = "Patient: a name wider than one column";
  s.TableCell(tcColSpan, 2, 1) = 2;
  s.TableCell(tcText, 2, 2) = "hidden under the span";
  s.TableCell(tcText, 2, 3) = "Phone: 555-0100";
  EXPECT_EQ(s.TableCell(tcColWidth, -1, 2).Number(), 2160);
  s.EndTable();
  const auto& page = s.Document().pages[0];
  const auto texts = Texts(page);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "hidden under the span"), 0);
  EXPECT_EQ(RunOf(page, "12.5").x, s.MarginLeft() + Twips(2 * 2160) + PrintSurface::kCellPadX);
  const auto patient = RunOf(page, "Patient: a name wider than one column");
  EXPECT_GT(patient.width, Twips(2160)) << "one line across the two spanned columns";
  EXPECT_EQ(RunOf(page, "Phone: 555-0100").top, patient.top);
}

TEST(SurfaceTable, CellsOutOfRangeRaise) {
  struct Case {
    int selector, r1, c1, r2, c2;
  } cases[] = {
      {tcText, 3, 1, -1, -1},   {tcText, 1, 4, -1, -1},      {tcText, 1, 0, -1, -1},
      {tcFontBold, 1, 1, 5, 3}, {tcColWidth, -1, 4, -1, -1}, {tcRowBorderAbove, -2, 1, -1, -1},
  };
  for (const auto& c : cases) {
    OpenSurface s;
    s.StartTable();
    s.AddTable("1in|1in|1in", "A|B|C", "a|b|c;d|e|f;");
    try {
      s.TableCell(c.selector, c.r1, c.c1, c.r2, c.c2) = 1;
      ADD_FAILURE() << "selector " << c.selector << " accepted (" << c.r1 << "," << c.c1 << ")";
    } catch (const ReportError& e) {
      EXPECT_EQ(e.number(), kErrSubscript) << e.what();
    }
    EXPECT_EQ(s.TableCell(tcText, 2, 3).String(), "f") << "the table is unchanged";
  }
  OpenSurface s;
  s.StartTable();
  s.AddTable("1in", "", "a");
  EXPECT_THROW(s.TableCell(tcFontSize, 1, 1) = "big", ReportError);
  EXPECT_THROW(s.TableCell(99, 1, 1) = 1, SurfaceError);
  EXPECT_THROW(s.TableCell(tcInsertCol) = 5, CellRangeError);
  // Column 0 stands for the row as a whole where a selector sets the row.
  s.TableCell(tcFontBold, 0, 0, 1, 1) = true;
  EXPECT_EQ(s.TableCell(tcFontBold, 1, 1).Number(), 1);
}

TEST(SurfaceTable, BorderStyles) {
  struct Case {
    int border;
    size_t lines;  // for a 3-column table of header and two rows, no breaks
  } cases[] = {
      {0, 0},         {4, 4},  // the box
      {7, 4 + 2 + 2},          // the box, two lines between rows, two between columns
      {3, 2 + 2},              // the same grid without the box
      {8, 4 + 1},              // the box and the rule under the header
      {9, 4 + 2},              // the box and the lines between rows
  };
  for (const auto& c : cases) {
    OpenSurface s;
    s.TableBorder(c.border);
    s.AddTable("1in|1in|1in", "A|B|C", "a|b|c;d|e|f;");
    const size_t want = c.lines;
    EXPECT_EQ(Lines(s.Document().pages[0]).size(), want) << c.border;
  }
  // tcColBorder 0 takes the lines of a column away in a grid.
  OpenSurface s;
  s.TableBorder(7);
  s.StartTable();
  s.AddTable("1in|1in|1in", "", "a|b|c;d|e|f;");
  s.TableCell(tcColBorder, 1, 1, 2, 1) = 0;
  s.EndTable();
  size_t verticals = 0;
  for (const auto& l : Lines(s.Document().pages[0]))
    if (l.x1 == l.x2 && l.x1 == s.MarginLeft() + Twips(1440)) ++verticals;
  EXPECT_EQ(verticals, 0u);
}

TEST(SurfaceTable, RowSpansAndInsertedColumns) {
  OpenSurface s;
  s.FontName("Arial Narrow");
  s.FontSize(9);
  s.StartTable();
  s.AddTable("1in|1in", "Smith 1|Jones 2", ";;;;");
  s.TableCell(tcInsertCol) = 1;
  s.TableCell(tcColWidth, -1, 1) = ".6in";
  s.TableCell(tcText, 1, 1) = "8:00";
  s.TableCell(tcText, 2, 2) = "\tBrown";
  s.TableCell(tcBackColor, 2, 2) = 12369084;
  s.TableCell(tcRowSpan, 2, 2) = 9;  // more than the rows left: cut at the last row
  s.TableCell(tcText, 3, 2) = "under the span";
  EXPECT_EQ(s.TableCell(tcCols).Number(), 3);
  const Twips y0 = s.CurrentY();
  s.EndTable();
  const auto& page = s.Document().pages[0];
  const auto texts = Texts(page);
  EXPECT_EQ(std::count(texts.begin(), texts.end(), "under the span"), 0);
  const auto fills = Fills(page);
  ASSERT_EQ(fills.size(), 1u);
  EXPECT_EQ(fills[0].box.y + fills[0].box.height, s.CurrentY()) << "the span reaches the last row";
  EXPECT_EQ(fills[0].box.x, s.MarginLeft() + Twips(864));
  EXPECT_EQ(RunOf(page, "Brown").x, fills[0].box.x + PrintSurface::kCellPadX + Twips(720))
      << "a tab in a cell goes to the half-inch stop";
  EXPECT_GT(s.CurrentY(), y0);
}

TEST(SurfaceTable, MeasureTableMatchesTheDrawnHeight) {
  OpenSurface s;
  s.MeasureTable(
      "^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in;Current|> 30 Days|> 60 Days|> 90 "
      "Days|Total Due($);$1.00|$2.00|$3.00|$4.00|$10.00");
  const Twips measured = s.MeasuredTableHeight();
  EXPECT_TRUE(s.Document().pages[0].items.empty()) << "measuring draws nothing";
  const Twips y0 = s.CurrentY();
  s.AddTable("^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in|^!~+1.3in",
             "Current|> 30 Days|> 60 Days|> 90 Days|Total Due($)",
             "$1.00|$2.00|$3.00|$4.00|$10.00");
  EXPECT_EQ(s.CurrentY() - y0, measured);
  const Twips row = s.TextHeight("X") + PrintSurface::kCellPadY * 2;
  EXPECT_EQ(measured, row * 2);
}

}  // namespace
}  // namespace orv::frame

namespace orv::frame {
namespace {

TEST(SurfaceTable, HeaderRowsRowHeightsAndKeepTogether) {
  OpenSurface s;
  s.TableHeaderRows(2);  // the header and the first body row repeat
  s.StartTable();
  std::string body = "8:00|;";
  for (int i = 0; i < 80; ++i) body += "slot " + std::to_string(i) + "|;";
  s.AddTable("1in|2in", "Time|Smith 1", body);
  s.TableCell(tcRowHeight, 2, 0, int(s.TableCell(tcRows).Number()), 0) = "0.25in";
  s.EndTable();
  ASSERT_GE(s.PageCount(), 3);
  for (int p = 1; p < s.PageCount(); ++p) {
    const auto texts = Texts(s.Document().pages[p]);
    ASSERT_GE(texts.size(), 3u);
    EXPECT_EQ(texts[0], "Time") << "page " << p + 1;
    EXPECT_EQ(texts[2], "8:00") << "page " << p + 1;
  }
  const auto& first = s.Document().pages[0];
  EXPECT_EQ(RunOf(first, "slot 1").top - RunOf(first, "slot 0").top, Twips(360));

  // A table kept together starts on a fresh page when it does not fit.
  OpenSurface k;
  k.CurrentY(k.PageHeight() - k.MarginBottom() - Twips(500));
  k.StartTable();
  k.AddTable("1in", "Head", "a;b;c;d;");
  k.TableCell(tcKeepTogether) = 1;
  k.EndTable();
  EXPECT_EQ(k.PageCount(), 2);
  EXPECT_TRUE(k.Document().pages[0].items.empty());
  EXPECT_EQ(Texts(k.Document().pages[1]).size(), 5u);
}

}  // namespace
}  // namespace orv::frame
