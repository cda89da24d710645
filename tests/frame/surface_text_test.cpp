#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <optional>
#include <tuple>
#include <vector>

#include "frame/surface/font_metrics.h"
#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"
#include "frame/surface/text_layout.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using testing::OpenSurface;
using testing::RunOf;
using testing::Runs;
using testing::Texts;

// Every character is 100 twips wide: line breaking can be checked by counting.
Twips Fixed(std::string_view s) {
  return Twips(100.0 * double(s.size()));
}

// The characters of `s`, counted as code points.
double CodePoints(std::string_view s) {
  size_t n = 0;
  for (unsigned char ch : s) n += (ch & 0xC0) != 0x80;
  return double(n);
}

// 100.1 twips a character and 0.37 a call: a width summed over other
// pieces than BreakLines measures comes out different in its last bits.
Twips Uneven(std::string_view s) { return Twips(100.1 * CodePoints(s) + 0.37); }

std::vector<std::string> LineTexts(const std::vector<TextLine>& lines) {
  std::vector<std::string> out;
  for (const auto& l : lines) {
    std::string s;
    for (const auto& seg : l.segments) s += (s.empty() ? "" : "|") + seg.text;
    out.push_back(s);
  }
  return out;
}

TEST(TextLayout, BreakLines) {
  struct Case {
    const char* name;
    const char* text;
    double width;
    bool wrap;
    std::vector<std::string> lines;
    double first_width = 0;  // 0: as wide as the others
  } cases[] = {
      {"fits", "abc def", 1000, true, {"abc def"}},
      {"wraps at blank", "abc def ghi", 750, true, {"abc def", "ghi"}},
      {"blanks before a break vanish", "abc    def", 500, true, {"abc", "def"}},
      {"a word wider than the line stays whole", "abcdefghij", 400, true, {"abcdefghij"}},
      {"a long word stands alone between others", "ab abcdefghij cd", 400, true,
       {"ab", "abcdefghij", "cd"}},
      {"money is never split", "Total $37,558.62", 600, true, {"Total", "$37,558.62"}},
      {"a hyphen between letters may break", "Smith-Jones", 700, true, {"Smith-", "Jones"}},
      {"a slash between letters may break", "Home/Work", 600, true, {"Home/", "Work"}},
      {"a date never breaks at its slashes", "Nov/20/2026", 500, true, {"Nov/20/2026"}},
      {"a phone number never breaks at its hyphen", "555-0100", 500, true, {"555-0100"}},
      {"a leading minus stays with its figure", "-$5.00", 200, true, {"-$5.00"}},
      {"an indented word stays on its line", "  Emma", 300, true, {"  Emma"}},
      {"CR LF breaks", "one\r\ntwo", 5000, true, {"one", "two"}},
      {"lone LF and CR break", "a\nb\rc", 5000, true, {"a", "b", "c"}},
      {"no wrap keeps a long line", "abc def ghi", 300, false, {"abc def ghi"}},
      {"empty gives one empty line", "", 1000, true, {""}},
      {"tab splits segments", "a\tb", 5000, true, {"a|b"}},
      {"without wrapping a tab runs on", "abcdefgh\tij", 1000, false, {"abcdefgh|ij"}},
      {"a tab kept clear of its text may end the line", "abcdefg\tij", 1000, true,
       {"abcdefg", "ij"}},
      {"accents count as one character",
       "\xC3\xA9t\xC3\xA9 \xC3\xA0",
       300,
       true,
       {"\xC3\xA9t\xC3\xA9", "\xC3\xA0"}},
      {"a short first line takes the words that fit", "ab cd ef", 1000, true, {"ab", "cd ef"}, 300},
      {"a word wider than a short first line moves down",
       "abcd ef",
       1000,
       true,
       {"", "abcd ef"},
       150},
  };
  const auto measure = [](std::string_view s) { return Twips(100.0 * CodePoints(s)); };
  for (const auto& c : cases) {
    const Twips first(c.first_width > 0 ? c.first_width : c.width);
    EXPECT_EQ(LineTexts(BreakLines(c.text, measure, first, Twips(c.width), c.wrap)), c.lines)
        << c.name;
  }
}

// Table cells take SingleLineWidth in place of BreakLines where the cell
// is one line; the width must be BreakLines' own, bit for bit, or drawn
// positions move.
TEST(TextLayout, SingleLineWidthIsTheWidthBreakLinesGives) {
  const MeasureFn measure = Uneven;
  const double own = measure("abcd").value();  // a room exactly as wide as "abcd"
  struct Case {
    const char* name;
    const char* text;
    double room;
    bool wrap;
    bool single;  // BreakLines gives one line of the whole text, within the room
  } cases[] = {
      {"a name that fits", "Abernathy, Farid", 5000, true, true},
      {"blanks before and after stay", "  Emma  ", 5000, true, true},
      {"accents", "\xC3\xA9t\xC3\xA9 \xC3\xA0", 5000, true, true},
      {"a word exactly as wide as the room", "abcd", own, true, true},
      {"without wrapping, within the room", "abc def", 5000, false, true},
      {"blanks alone", "   ", 5000, true, true},
      {"text that wraps", "abc def ghi", 750, true, false},
      {"a hyphenated name that breaks", "Smith-Jones", 700, true, false},
      {"a word wider than the room", "abcdefghij", 400, true, false},
      {"without wrapping, wider than the room", "abc def ghi", 300, false, false},
      {"a tab", "a\tb", 5000, true, false},
      {"a line break", "a\r\nb", 5000, true, false},
      {"empty", "", 5000, true, false},
  };
  for (const auto& c : cases) {
    const std::optional<Twips> width = SingleLineWidth(c.text, measure, Twips(c.room), c.wrap);
    ASSERT_EQ(width.has_value(), c.single) << c.name;
    if (!c.single) continue;
    const auto lines = BreakLines(c.text, measure, Twips(c.room), Twips(c.room), c.wrap);
    ASSERT_EQ(lines.size(), 1u) << c.name;
    ASSERT_EQ(lines[0].segments.size(), 1u) << c.name;
    EXPECT_EQ(lines[0].segments[0].text, c.text) << c.name;
    const double got = width->value(), want = lines[0].width.value();
    EXPECT_EQ(std::memcmp(&got, &want, sizeof got), 0) << c.name << ": " << got << " against " << want;
    EXPECT_LE(got, c.room) << c.name;
  }
}

// Cells and boxes of a few lines keep PlacedLines in place of BreakLines'
// lines: the same lines, the same texts and widths bit for bit, and a
// refusal wherever BreakLines would tab, set a line wider than the room or,
// when only line breaks may end a line, wrap.
TEST(TextLayout, PlacedLinesAreTheLinesBreakLinesGives) {
  const MeasureFn measure = Uneven;
  const double own = measure("abcd").value();
  struct Case {
    const char* name;
    const char* text;
    double room;
    bool wrap;
    bool short_lines;    // every line fits whole and none holds a tab
    bool wrapped_lines;  // every line, wrapped or not, fits and none holds a tab
  } cases[] = {
      {"lone line feeds and returns", "a\nb\rc", 5000, true, true, true},
      {"an empty second line", "Jun/04/1980\r\n", 5000, true, true, true},
      {"an empty first line", "\r\nAcme Dental Plan", 5000, true, true, true},
      {"two breaks in a row", "a\r\n\r\nb", 5000, true, true, true},
      {"blanks at the ends stay", "  Emma  \r\n b ", 5000, true, true, true},
      {"one line", "Abernathy, Farid", 5000, true, true, true},
      {"empty", "", 5000, true, true, true},
      {"a line exactly as wide as the room", "ab\r\nabcd", own, true, true, true},
      {"accents", "\xC3\xA9t\xC3\xA9\r\n\xC3\xA0", 5000, true, true, true},
      {"a second line that wraps", "a\r\nabc def ghi", 750, true, false, true},
      {"blanks before a wrap are trimmed", "abc    def", 500, true, false, true},
      {"a wrapped line is measured whole", "ab cd  ef", 600, true, false, true},
      {"a wrap, a break and a wrap", "abc def\r\nghi jkl mno", 450, true, false, true},
      {"a hyphenated name that breaks", "x\nSmith-Jones", 700, true, false, true},
      {"a wrapped accent", "\xC3\xA9t\xC3\xA9 \xC3\xA0", 350, true, false, true},
      {"a word wider than the room", "ab\r\nabcdefghij", 400, true, false, false},
      {"a word wider than the room after others", "ab abcdefghij cd", 400, true, false, false},
      {"an indented word wider than what is left", "  Emma", 300, true, false, false},
      {"blanks past the room at the end", "abc      ", 500, true, false, false},
      {"without wrapping, wider than the room", "a\nabc def ghi", 300, false, false, false},
      {"a tab", "a\r\nb\tc", 5000, true, false, false},
      {"a tab after a wrap", "abc def\tg", 450, true, false, false},
  };
  for (const auto& c : cases) {
    for (const bool wrapping : {false, true}) {
      SCOPED_TRACE(std::string(c.name) + (wrapping ? ", wrapped" : ", short"));
      const bool placed = wrapping ? c.wrapped_lines : c.short_lines;
      std::vector<ShortLine> got{{7, 7, Twips(7)}};  // what was there stays
      const LineEnds ends = wrapping ? LineEnds::kAtBreaksAndWraps : LineEnds::kAtBreaks;
      ASSERT_EQ(PlacedLines(c.text, measure, Twips(c.room), c.wrap, ends, got), placed);
      ASSERT_EQ(got.front().offset, 7u);
      if (!placed) {
        EXPECT_EQ(got.size(), 1u);
        continue;
      }
      const std::string_view text = c.text;
      const auto lines = BreakLines(text, measure, Twips(c.room), Twips(c.room), c.wrap);
      ASSERT_EQ(got.size(), lines.size() + 1);
      for (size_t i = 0; i < lines.size(); ++i) {
        const ShortLine& line = got[i + 1];
        const std::string piece(text.substr(line.offset, line.length));
        EXPECT_EQ(piece.empty() ? std::string() : lines[i].segments.at(0).text, piece) << i;
        EXPECT_EQ(lines[i].segments.size(), piece.empty() ? 0u : 1u) << i;
        const double w = line.width.value(), want = lines[i].width.value();
        EXPECT_EQ(std::memcmp(&w, &want, sizeof w), 0) << i << ": " << w << " against " << want;
        EXPECT_LE(w, c.room) << i;
      }
    }
  }
}

// Table cells measure with FontMeasure, which sums a line's pieces in one
// pass; the widths and refusals must be those of the same font measured
// piece by piece through a MeasureFn, bit for bit, at every room.
TEST(TextLayout, FontMeasureGivesTheWidthsOfAMeasureFn) {
  const auto font = FontLibrary::Resolve("Tahoma", true, false).metrics;
  const double size = 9.5;
  const FontMeasure fast{font.get(), size};
  const MeasureFn slow = [&](std::string_view s) { return font->Width(s, size); };
  const char* texts[] = {
      "Abernathy, Farid",  "  Emma  ",       "Smith-Jones",       "Smith-Jones-Lee",
      "-ab a-b- x/y/z a-", "Jun/04/1980",    "905-555-0100[12]",  "\xC3\xA9t\xC3\xA9-\xC3\xA0" "b",
      "caf\xE9-bar",       "a--b //x",       "123 Main St.\r\nUnit 4", "a\tb",
      "\r\nAcme Dental Plan", "",   "Home-\r\nWork",     "a-b\r\nc-d e/f\nSmith-Jones",
      "Jun/04/1980\r\n",  "Crown  prep, upper-left molar/re-cement \xC3\xA0 redo",
      "ab cd  ef\r\n  gh-ij",
  };
  for (const char* text : texts) {
    const std::optional<Twips> whole = SingleLineWidth(text, slow, Twips(1e6));
    // Rooms around the text's own width and its pieces' widths.
    std::vector<double> rooms = {1e6, 0, 300};
    if (whole) rooms.insert(rooms.end(), {whole->value(), std::nextafter(whole->value(), 0.0)});
    for (std::string_view rest = text; !rest.empty(); rest.remove_suffix(1))
      rooms.push_back(slow(rest).value());
    for (const double room : rooms)
      for (const bool wrap : {true, false}) {
        SCOPED_TRACE(std::string(text) + " in " + std::to_string(room) + (wrap ? "" : " unwrapped"));
        const auto want = SingleLineWidth(text, slow, Twips(room), wrap);
        const auto got = SingleLineWidth(text, fast, Twips(room), wrap);
        ASSERT_EQ(got.has_value(), want.has_value());
        if (want) {
          EXPECT_EQ(std::memcmp(&*got, &*want, sizeof(Twips)), 0);
        }
        std::vector<ShortLine> want_lines, got_lines;
        for (const LineEnds ends : {LineEnds::kAtBreaks, LineEnds::kAtBreaksAndWraps})
          ASSERT_EQ(PlacedLines(text, fast, Twips(room), wrap, ends, got_lines),
                    PlacedLines(text, slow, Twips(room), wrap, ends, want_lines));
        ASSERT_EQ(got_lines.size(), want_lines.size());
        for (size_t i = 0; i < got_lines.size(); ++i) {
          EXPECT_EQ(got_lines[i].offset, want_lines[i].offset);
          EXPECT_EQ(got_lines[i].length, want_lines[i].length);
          EXPECT_EQ(std::memcmp(&got_lines[i].width, &want_lines[i].width, sizeof(Twips)), 0) << i;
        }
      }
  }
}

// Texts are read eight bytes at a time: a character past ASCII is seen
// wherever it stands, in a whole word of eight or in the tail.
TEST(TextLayout, PlainAsciiSeesAnAccentAnywhere) {
  for (size_t length = 1; length <= 19; ++length)
    for (size_t at = 0; at < length; ++at) {
      std::string text(length, 'a');
      EXPECT_TRUE(IsPlainAscii(text));
      text[at] = '\xE9';
      EXPECT_FALSE(IsPlainAscii(text)) << length << " " << at;
    }
}

TEST(TextLayout, TabsAdvanceToTheNextHalfInchStop) {
  struct Case {
    const char* text;
    std::vector<double> xs;
  } cases[] = {
      {"a\tb", {0, 720}},          // 100 wide: the stop at 720
      {"abcdefgh\tb", {0, 1440}},  // 800 wide: past 720, so 1440
      {"\tb", {720}},              // a leading tab
      {"\t\tb", {1440}},
      // Text ending short of a stop by less than a blank (100 here) is kept
      // clear of what follows: the tab goes on to the stop after.
      {"abcdef\tb", {0, 720}},         // 120 short of 720: room enough
      {"abcdefg\tb", {0, 1440}},       // 20 short of 720
      {"abcdefghijklmn\tb", {0, 2160}},  // 40 short of 1440
      {"abcdefg\t\tb", {0, 2160}},     // a second tab counts from the first's stop
  };
  // A stop past the line's end breaks the line there: the line keeps its
  // text's width, and the tabs at the break go with it.
  for (const char* text : {"abcdefgh\tij", "abcdefgh\t\tij"}) {
    auto lines = BreakLines(text, Fixed, Twips(1000), Twips(1000));
    ASSERT_EQ(lines.size(), 2u) << text;
    EXPECT_EQ(lines[0].width, Twips(800)) << text;
    EXPECT_EQ(lines[1].segments[0].x, Twips(0)) << text;
  }
  // With nothing behind them on their line such tabs vanish: no empty line.
  for (auto [text, count] : {std::pair{"abcdefgh\t", 1u}, std::pair{"abcdefgh\t\t\r\nij", 2u}}) {
    auto lines = BreakLines(text, Fixed, Twips(1000), Twips(1000));
    ASSERT_EQ(lines.size(), count) << text;
    EXPECT_EQ(lines[0].width, Twips(800)) << text;
  }
  for (const auto& c : cases) {
    auto lines = BreakLines(c.text, Fixed, Twips(10000), Twips(10000));
    ASSERT_EQ(lines.size(), 1u);
    std::vector<double> xs;
    for (const auto& s : lines[0].segments) xs.push_back(s.x.value());
    EXPECT_EQ(xs, c.xs) << c.text;
  }
}

TEST(TextLayout, JustifySpreadsAllButTheLastLine) {
  auto lines = BreakLines("aa bb cc dd", Fixed, Twips(900), Twips(900));
  ASSERT_EQ(LineTexts(lines), (std::vector<std::string>{"aa bb cc", "dd"}));
  const TextLine first = Justify(lines[0], Fixed, Twips(900));
  ASSERT_EQ(first.segments.size(), 3u);
  EXPECT_EQ(first.segments[2].x + first.segments[2].width, Twips(900));
  EXPECT_EQ(first.segments[1].x, Twips(350));
  const TextLine last = Justify(lines[1], Fixed, Twips(900));
  EXPECT_EQ(last.segments[0].x, Twips(0));
  EXPECT_EQ(last.width, Twips(200));
}

TEST(SurfaceText, MetricsComeFromTheFontFiles) {
  PrintSurface s;
  s.FontName("Tahoma");
  s.FontSize(10);
  const Twips x10 = s.TextHeight("X");
  // Tahoma's line is 2472 of 2048 units: 241.4 twips at 10 point.
  EXPECT_NEAR(x10.value(), 241.40625, 1e-6);
  EXPECT_EQ(s.TextHeight("A\r\nB"), x10 * 2);
  s.FontSize(20);
  EXPECT_EQ(s.TextHeight("X"), x10 * 2);
  s.FontSize(10);
  const Twips w = s.TextWidth("Total");
  EXPECT_GT(w, Twips(300));
  EXPECT_LT(w, Twips(700));
  s.FontBold(true);
  EXPECT_GT(s.TextWidth("Total"), w) << "bold Tahoma is a file of its own, wider";
  EXPECT_EQ(s.TextWidth("ab\r\nabcd"), s.TextWidth("abcd"));
  s.FontBold(false);
  s.FontName("Arial Narrow");
  EXPECT_LT(s.TextWidth("Total"), w);
  EXPECT_GT(s.TextWidth("\xC3\xA9t\xC3\xA9"), Twips(0));
}

TEST(SurfaceText, TextWritesAParagraphAndEndsTheLine) {
  OpenSurface s;
  const Twips lh = s.TextHeight("X");
  const Twips y0 = s.CurrentY();
  s.CurrentX(3000);
  s.Text("Hello");
  auto run = RunOf(s.Document().pages[0], "Hello");
  EXPECT_EQ(run.x, Twips(3000));
  EXPECT_EQ(run.top, y0);
  EXPECT_GT(run.baseline, run.top);
  EXPECT_EQ(s.CurrentX(), s.MarginLeft()) << "the next line starts at the margin";
  EXPECT_EQ(s.CurrentY(), y0 + lh);

  // A single blank makes an empty line and paints nothing.
  const size_t items = s.Document().pages[0].items.size();
  s.Text(" ");
  EXPECT_EQ(s.CurrentY(), y0 + lh * 2);
  EXPECT_EQ(s.Document().pages[0].items.size(), items);

  s.Text("one\r\ntwo");
  EXPECT_EQ(RunOf(s.Document().pages[0], "two").top, y0 + lh * 3);
  EXPECT_EQ(s.CurrentY(), y0 + lh * 4);

  s.IndentLeft("0.5in");
  s.Text("indented");
  EXPECT_EQ(RunOf(s.Document().pages[0], "indented").x, s.MarginLeft());
  EXPECT_EQ(s.CurrentX(), s.MarginLeft() + Twips(720));
  s.Text("next");
  EXPECT_EQ(RunOf(s.Document().pages[0], "next").x, s.MarginLeft() + Twips(720));
}

TEST(SurfaceText, AlignmentOfTextAndInlineText) {
  struct Case {
    int align;
    const char* where;  // "left", "centre", "right"
  } cases[] = {{0, "left"}, {1, "centre"}, {2, "right"}, {7, "left"}, {5, "centre"}, {6, "right"}};
  for (const auto& c : cases) {
    for (bool inline_text : {false, true}) {
      OpenSurface s;
      s.TextAlign(c.align);
      const Twips w = s.TextWidth("Word");
      if (inline_text)
        s.InlineText("Word");
      else
        s.Text("Word");
      const auto run = RunOf(s.Document().pages[0], "Word");
      const Twips left = s.MarginLeft(), right = s.PageWidth() - s.MarginRight();
      const Twips want = std::string(c.where) == "left"    ? left
                         : std::string(c.where) == "right" ? right - w
                                                           : left + (right - left - w) / 2;
      EXPECT_NEAR(run.x.value(), want.value(), 1e-6) << c.align << (inline_text ? " inline" : "");
    }
  }
}

TEST(SurfaceText, InlinePiecesShareALine) {
  OpenSurface s;
  const Twips y = s.CurrentY();
  s.InlineText("Balance: ");
  const Twips after_caption = s.CurrentX();
  s.FontBold(true);
  s.InlineText("$12.00");
  const auto& page = s.Document().pages[0];
  const auto caption = RunOf(page, "Balance: "), value = RunOf(page, "$12.00");
  EXPECT_EQ(caption.top, y);
  EXPECT_EQ(value.top, y);
  EXPECT_EQ(value.x, after_caption);
  EXPECT_EQ(after_caption, s.MarginLeft() + caption.width);
  EXPECT_NE(page.items.size(), 0u);
  EXPECT_NE(caption.font, value.font) << "the value is set in the bold face";
  EXPECT_EQ(s.CurrentY(), y) << "InlineText stays on the line";
}

TEST(SurfaceText, LongTextWrapsAndOverflowsToANewPage) {
  OpenSurface s;
  std::string para;
  for (int i = 0; i < 40; ++i) para += "lorem ipsum dolor sit amet ";
  s.Text(para);
  const auto runs = Runs(s.Document().pages[0]);
  ASSERT_GT(runs.size(), 3u);
  for (const auto& r : runs)
    EXPECT_LE((r.x + r.width).value(), (s.PageWidth() - s.MarginRight()).value() + 1e-6);

  const Twips lh = s.TextHeight("X");
  const int lines_per_page =
      int((s.PageHeight() - s.MarginBottom() - s.MarginTop()).value() / lh.value());
  for (int i = 0; i < lines_per_page + 5; ++i) s.Text("line " + std::to_string(i));
  EXPECT_EQ(s.PageCount(), 2);
  EXPECT_EQ(s.CurrentPage(), 2);
  for (const auto& r : Runs(s.Document().pages[0]))
    EXPECT_LE((r.top + lh).value(), (s.PageHeight() - s.MarginBottom()).value() + 1e-6) << r.text;
  EXPECT_EQ(Runs(s.Document().pages[1]).front().top, s.MarginTop());
}

// The surface keeps the lines of the paragraphs it has broken: a paragraph
// written again, with the pen, the indents, the margins, the font or the
// alignment changed in between, is set as a surface that never saw it sets it.
TEST(SurfaceText, AParagraphWrittenAgainIsSetForItsOwnPlace) {
  const std::string para =
      "We also wonder if we should maintain your records on active status. Please help us by "
      "checking the proper line below and returning this slip today. The most convenient time to "
      "reach me is in the morning, at the telephone number on file, any day but Sunday.";
  struct Case {
    const char* name;
    void (*change)(PrintSurface&);
  } cases[] = {
      {"same_place", [](PrintSurface&) {}},
      {"pen_moved", [](PrintSurface& s) { s.CurrentX(s.MarginLeft() + Twips(2000)); }},
      {"left_indent", [](PrintSurface& s) { s.IndentLeft("0.5in"); }},
      {"narrower_margins", [](PrintSurface& s) { s.MarginRight(s.MarginRight() + Twips(1440)); }},
      {"bold", [](PrintSurface& s) { s.FontBold(true); }},
      {"larger", [](PrintSurface& s) { s.FontSize(14); }},
      {"justified", [](PrintSurface& s) { s.TextAlign(7); }},
      {"centred", [](PrintSurface& s) { s.TextAlign(1); }},
  };
  // The runs of a paragraph as (text, x, width, height below its first line).
  auto shape = [](const std::vector<render::TextRun>& runs) {
    std::vector<std::tuple<std::string, double, double, double>> out;
    for (const auto& r : runs)
      out.emplace_back(r.text, r.x.value(), r.width.value(), (r.top - runs.front().top).value());
    return out;
  };
  for (const Case& c : cases) {
    OpenSurface again;
    again.Text(para);
    const size_t before = Runs(again.Document().pages[0]).size();
    c.change(again);
    again.Text(para);
    const auto all = Runs(again.Document().pages[0]);
    const std::vector<render::TextRun> second(all.begin() + std::ptrdiff_t(before), all.end());

    OpenSurface fresh;
    c.change(fresh);
    fresh.Text(para);
    EXPECT_EQ(shape(second), shape(Runs(fresh.Document().pages[0]))) << c.name;
  }
}

TEST(SurfaceText, TextBoxWrapsPlacesAndClips) {
  struct Case {
    int align;
    double top_offset;  // of the first line, in lines, in a box four lines tall
  } cases[] = {{0, 0}, {1, 0}, {4, 1}, {7, 1}, {8, 2}, {9, 2}};
  for (const auto& c : cases) {
    OpenSurface s;
    const Twips lh = s.TextHeight("X");
    s.TextAlign(c.align);
    const Twips pen_x = s.CurrentX(), pen_y = s.CurrentY();
    s.TextBox("first second", 2000, 5000, s.TextWidth("first second") - Twips(1), lh * 4);
    const auto& page = s.Document().pages[0];
    const auto first = RunOf(page, "first"), second = RunOf(page, "second");
    EXPECT_NEAR(first.top.value(), 5000 + c.top_offset * lh.value(), 1e-6) << c.align;
    EXPECT_EQ(second.top, first.top + lh) << "wrapped inside the box";
    EXPECT_FALSE(first.clip.has_value()) << "fits, so no clip";
    EXPECT_EQ(s.CurrentX(), pen_x);
    EXPECT_EQ(s.CurrentY(), pen_y);
  }
  OpenSurface s;
  const Twips lh = s.TextHeight("X");
  s.TextBox("one\r\ntwo\r\nthree\r\nfour", 2000, 5000, 3000, lh * 2.5);
  const auto texts = Texts(s.Document().pages[0]);
  EXPECT_EQ(texts, (std::vector<std::string>{"one", "two", "three"})) << "the fourth line is cut";
  const auto third = RunOf(s.Document().pages[0], "three");
  ASSERT_TRUE(third.clip.has_value());
  EXPECT_EQ(third.clip->height, lh * 2.5);
}

TEST(SurfaceText, ColourAngleAndAccentsReachTheRuns) {
  OpenSurface s;
  s.TextColor(255);
  s.TextAngle(1800);
  s.Text(
      "R\xC3\xA9sum\xC3\xA9 fran\xC3\xA7"
      "ais");
  const auto run = Runs(s.Document().pages[0]).at(0);
  EXPECT_EQ(run.color, (render::Rgb{255, 0, 0}));
  EXPECT_EQ(run.angle, 1800);
  EXPECT_EQ(run.text,
            "R\xC3\xA9sum\xC3\xA9 fran\xC3\xA7"
            "ais");
  EXPECT_NE(s.Document().fonts[run.font].file.find("tahoma"), std::string::npos);
}

}  // namespace
}  // namespace orv::frame
