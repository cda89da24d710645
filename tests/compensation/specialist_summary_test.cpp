// The specialist analysis on the hand-made practice
// (compensation_fixture.h): production, time and commission costs, lab by
// code, three specialists a page, and the cutting of table bodies.
#include <gtest/gtest.h>

#include "compensation/compensation_fixture.h"
#include "support/throws_saying.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using SpecialistSummaryTest = CompensationTest;

const DateTime kStart = DateTime::FromParts(2026, 10, 1);
const DateTime kEnd = DateTime::FromParts(2026, 11, 30);

TEST_F(SpecialistSummaryTest, ThreeSpecialistsShareOnePage) {
  reports.rptSpecialistYearlySummary("ID = 40 OR ID = 41 OR ID = 42", "Three", kStart, kEnd);
  ExpectLines({
      {"names over their columns", "Sam First Tia Second Uma Third", true},
      // Sam: 500.00 with an 80.00 lab line ("-9911" is none); 3 hours at
      // 50.00; the Tuesday punch with no punch-out falls back to his start.
      // Tia: 200.00 collected at 50 % (the write-off left out). Uma: one
      // hour at 10.00 and 10 % of 100.00.
      {"October", "Oct 2026 500.00 150.00 80.00 240.00 100.00 0.00 100.00 20.00 0.00", true},
      // The cancelled invoice is still production.
      {"November", "Nov 2026 300.00 0.00 0.00 0.00 0.00 0.00 0.00 0.00 0.00", true},
      {"totals", "Totals 800.00 150.00 80.00 240.00 100.00 0.00 100.00 20.00 0.00", true},
      {"profit", "Specialist Profit:      570.00", true},
      {"a caption keeps its blanks", "Total Lab Costs:        80.00", true},
      {"no continuation", "(Table continued on next page)", false},
  });
}

TEST_F(SpecialistSummaryTest, MonthsCutToTheRangeAFourthOnTheNextPageAndNoFilter) {
  // From Oct 7: Sam's Oct 6 punch is outside, his Oct 10 invoice inside.
  reports.rptSpecialistYearlySummary("ID = 40", "Sam", DateTime::FromParts(2026, 10, 7),
                                     DateTime::FromParts(2026, 11, 2));
  EXPECT_TRUE(HasAll(Text(), {"Oct 2026 500.00 0.00 80.00", "Nov 2026 0.00 0.00 0.00"}));

  reports.rptSpecialistYearlySummary("ID = 40 OR ID = 41 OR ID = 42 OR ID = 43", "Four", kStart, kEnd);
  ASSERT_GE(Pages(), 2);
  const std::string first = PageText(1), second = PageText(2);
  EXPECT_NE(first.find("(Table continued on next page)"), std::string::npos) << first;
  EXPECT_EQ(first.find("Vic Fourth"), std::string::npos) << first;
  EXPECT_TRUE(HasAll(second, {"Vic Fourth", "Month Production Cost Lab Costs",
                              // A specialist with nothing in a month shows zeros there.
                              "Oct 2026 0.00 0.00 0.00"}));

  EXPECT_TRUE(ThrowsSaying([&] { reports.rptSpecialistYearlySummary("", "", kStart, kEnd); },
                           {"SELECT ID, FullName FROM Employees WHERE"}));
}

TEST(TableRowsOf, CutsColumnsOutOfEveryRow) {
  struct Case {
    const char* name;
    const char* body;
    int32_t first, count;
    const char* expected;
  };
  const Case cases[] = {
      {"middle columns", "a|b|c|d;e|f|g|h;", 2, 2, "b|c;f|g;"},
      {"first column", "a|b|c;d|e|f;", 1, 1, "a;d;"},
      {"past the end keeps what there is", "a|b|c;", 3, 3, "c;"},
      {"a body without its final semicolon", "a|b;c|d", 2, 1, "b;d;"},
      {"empty cells stay cells", "|x||;", 1, 3, "|x|;"},
      {"escaped data is not split", "a\x1c" "b|c;", 1, 1, "a\x1c" "b;"},
      {"nothing", "", 1, 2, ""},
  };
  for (const Case& c : cases) EXPECT_EQ(clsReports::TableRowsOf(c.body, c.first, c.count), c.expected) << c.name;
}

}  // namespace
}  // namespace orv::testing
