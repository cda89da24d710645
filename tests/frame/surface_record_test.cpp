// What the surface keeps of a document besides its pages: the cells of
// every table it lays out, the letters of a run, and the identity.
#include <gtest/gtest.h>

#include "frame/page_parts.h"
#include "frame/surface/surface.h"
#include "surface_test_util.h"

namespace orv::frame {
namespace {

using testing::OpenSurface;
using Rows = std::vector<std::vector<std::string>>;

TEST(SurfaceRecord, TablesKeepTheirCellsAsTheReportGaveThem) {
  OpenSurface s;
  s.Text("Heading");
  // A name with both separators, escaped as every report escapes data, and
  // a cell of two lines.
  s.AddTable("<2in|>1in", "Name|Total($)",
             EscapeCell("Smith; Jones | Co") + "|$1,005.10;Lee|Sub Total $1.00\r\nInterest $0.10;");
  // Measured only: never drawn, never kept.
  s.MeasureTable("<1in;Head;Body;");
  // No header; cells changed between StartTable and EndTable count as
  // changed.
  s.StartTable();
  s.AddTable("<1in|<1in", "", "a|b;");
  s.TableCell(tcText, 1, 2) = "changed";
  s.EndTable();
  s.NewPage();
  s.AddTable("<1in", "Second", "x;");

  const auto& tables = s.Document().tables;
  ASSERT_EQ(tables.size(), 3u);
  EXPECT_TRUE(tables[0].has_header);
  EXPECT_EQ(tables[0].page, 1);
  EXPECT_EQ(tables[0].rows, (Rows{{"Name", "Total($)"},
                                  {"Smith; Jones | Co", "$1,005.10"},
                                  {"Lee", "Sub Total $1.00\r\nInterest $0.10"}}));
  EXPECT_FALSE(tables[1].has_header);
  EXPECT_EQ(tables[1].rows, (Rows{{"a", "changed"}}));
  EXPECT_EQ(tables[2].page, 2);
  EXPECT_EQ(tables[2].rows, (Rows{{"Second"}, {"x"}}));

  // A table in an overlay is kept, on the overlay's page.
  s.EndDoc();
  s.StartOverlay(1, false);
  s.AddTable("<1in", "Summary", "Due;");
  s.EndOverlay();
  ASSERT_EQ(s.Document().tables.size(), 4u);
  EXPECT_EQ(s.Document().tables[3].page, 1);
}

TEST(SurfaceRecord, ANewDocumentForgetsTablesAndLettersButKeepsItsIdentity) {
  OpenSurface s;
  render::DocumentIdentity id;
  id.method = "rptStatements";
  id.user = "desk";
  s.Identity(id);
  s.AddTable("<1in", "A", "1;");
  s.NewPage();
  // The parts a statement run hands to its footers: only those that are
  // someone's letter are kept as letters.
  const std::vector<DocumentPart> parts{{1, "Printed by", 0, ""},
                                        {1, "Printed by", 12, "Callum Nakagawa"},
                                        {2, "French", 20, "Hélène Bédard"}};
  s.Letters(LettersOf(parts));
  ASSERT_EQ(s.Document().letters.size(), 2u);
  EXPECT_EQ(s.Document().letters[1].first_page, 2);
  EXPECT_EQ(s.Document().letters[1].account, 20);
  EXPECT_EQ(s.Document().letters[1].name, "Hélène Bédard");

  s.EndDoc();
  s.StartDoc();
  EXPECT_TRUE(s.Document().tables.empty());
  EXPECT_TRUE(s.Document().letters.empty());
  EXPECT_EQ(s.Document().identity.method, "rptStatements");
  EXPECT_EQ(s.Document().identity.user, "desk");
}

}  // namespace
}  // namespace orv::frame
