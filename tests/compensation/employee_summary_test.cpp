// The yearly employee monitor on the hand-made practice
// (compensation_fixture.h): the day's counts by code, the half units, the
// quiet day, the month pages and the office without hygiene company codes.
#include <gtest/gtest.h>

#include "compensation/compensation_fixture.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using EmployeeSummaryTest = CompensationTest;

TEST_F(EmployeeSummaryTest, DayRowCountsEveryCodeWithItsWeight) {
  reports.rptYearlyEmployeeSummary(30, DateTime::FromParts(2026, 10, 5), DateTime::FromParts(2026, 10, 7), 50);
  const std::string text = Text();
  // Oct 5: payments 100.00 (the 7.00 of a type with no adjustment flag
  // drops out), 1 patient, 1 self care, perio 1 + 3 x 0.5 = 2.5, scaling 2
  // (11112), therapy 1 + 1.5 = 2.5, one 3/4-month unit; production is the
  // hygiene company codes only (11112 50 + 13211 20 = 70.00); units worked
  // 2 + 2.5 + 1 = 5.5, 55 minutes = 0.92 h; 70 / 5.5 = 12.73, 70 / (55/60)
  // = 76.36.
  ExpectLines({
      {"the busy day", "Oct/05/2026 100.00 1 1 0 0 0 0 0 2.5 2 2.5 1 70.00 5.5 12.73 0.92 76.36", true},
      // "Code = 01400" compares the text code as a number.
      {"a follow-up alone", "Oct/07/2026 0.00 1 0 1 0 0 0 0 0 0 0 0 0.00 0 0.00 0.00 0.00", true},
      {"a day without activity prints no row", "Oct/06/2026", false},
      {"the range's sums", "Range Totals 100.00 2 1 1 0 0 0 0 2.5 2 2.5 1 70.00 5.5 12.73 0.92 76.36", true},
      // Two days worked; only Monday is scheduled (48 units of 10 min), 6
      // booked, 42 open; RC # counts the 01202.
      {"the hygienist's summary",
       "Total 2 2 1 1 1 0 0 0 48 6 42 0 36.67", true},
      // 2 days x 1000 projected; actual 70; gross 40 x 0.9167 h = 36.67.
      {"the second summary line", "Total 1.00 12.50% 2,000.00 70.00 -1,930.00 76.36 52.38%", true},
  });
}

TEST_F(EmployeeSummaryTest, EachMonthStartsAPage) {
  reports.rptYearlyEmployeeSummary(30, DateTime::FromParts(2026, 10, 30), DateTime::FromParts(2026, 11, 3), 50);
  // October holds no activity after the 29th, so its page shows the header
  // alone; November's page has the 11111 day (scaling 1, production 60).
  ASSERT_GE(Pages(), 2);
  EXPECT_NE(PageText(1).find("October 2026"), std::string::npos);
  EXPECT_EQ(PageText(1).find("Nov/02/2026"), std::string::npos);
  EXPECT_TRUE(HasAll(
      PageText(2),
      {"November 2026", "Nov/02/2026 0.00 1 0 0 0 0 0 0 0 1 0 0 60.00 1 60.00 0.17 360.00"}));
}

TEST_F(EmployeeSummaryTest, OfficeWithoutHygieneCompanyCodesGetsTheMessageAndNoDocument) {
  reports.OfficeID = 2;
  reports.rptYearlyEmployeeSummary(30, DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 31), 50);
  EXPECT_TRUE(SaidOnce(host,
            "You must setup the codes you wish to use for your hygiene company before you can run this "
            "report.\nTo do so go to Office Setup and click on the Hygiene Company tab and add the codes "
            "you wish to use."));
  EXPECT_EQ(Pages(), 0);
}

TEST_F(EmployeeSummaryTest, TitleAndSummaryFollowTheKindOfEmployee) {
  struct Case {
    const char* name;
    int32_t id;
    const char* title;
    const char* summary_header;
  };
  const Case cases[] = {
      {"assistant", 20, "PDA Monitor for Hana Hourly", "C&B Units"},
      {"dentist", 21, "Dentist Monitor for Dora Dent", "C&B Units"},
      {"specialist", 40, "Specialist Monitor for Sam First", "C&B Units"},
      {"hygienist", 30, "Hygienist Monitor for Hilda Hygienist", "Niteguards"},
  };
  for (const Case& c : cases) {
    reports.rptYearlyEmployeeSummary(c.id, DateTime::FromParts(2026, 10, 1), DateTime::FromParts(2026, 10, 2), 0);
    EXPECT_NE(Text().find(c.title), std::string::npos) << c.name;
    EXPECT_NE(Text().find(c.summary_header), std::string::npos) << c.name;
  }
}

}  // namespace
}  // namespace orv::testing
