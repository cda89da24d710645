// The practice analysis on February 2032 (a leap year) against February
// 2031, the last stretch of the closing practice (closing_practice.h).
#include <gtest/gtest.h>

#include "closing/closing_practice.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

class DayEndSummary : public ClosingTest {
 protected:
  void SetUp() override {
    ClosingTest::SetUp();
    // The report starts its own document.
    form.VSP.KillDoc();
  }
  void RunFebruary() { reports.rptDayEndSummary(Day(2032, 2, 1), Day(2032, 2, 29), "desk"); }
  // The first line holding `part` (the office's and a provider's tables
  // hold the same rows when one provider did everything).
  std::string FirstLineWith(const std::string& part) const {
    const std::vector<std::string> all = LinesWith(part);
    return all.empty() ? "" : all.front();
  }
  // The text from `from` up to `to` (to the end for "").
  std::string Between(const std::string& from, const std::string& to) const {
    const std::string text = Text();
    const size_t a = text.find(from);
    if (a == std::string::npos) return "";
    const size_t b = to.empty() ? std::string::npos : text.find(to, a);
    return text.substr(a, b == std::string::npos ? std::string::npos : b - a);
  }
};

// The whole month, every section's figures as worked out above.
TEST_F(DayEndSummary, FebruaryAgainstTheYearBefore) {
  RunFebruary();
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(LineWith("From: "), "From: Feb/1/2032 To: Feb/29/2032");
  const std::vector<std::string> lines = {
      // Production: Feb 29 2032 moves back to Feb 28 2031, so the one
      // procedure of that day is last year's and March 1 2031 is not. The
      // reversal nets its fee out and counts no procedure.
      "Diagnostic Services 1 $90.00 37.50% 0 $0.00 0.00%",
      "Restorative Services 0 $0.00 0.00% 1 $200.00 100.00%",
      "Total Procedures Performed: 3",
      "Total Production: $240.00",
      "Last Year Total Procedure Performed: 1",
      "Last Year Total Production: $200.00",
      "Production Difference This Year Compared to Last Year: 120.00%",
      "Provider Total 3 $240.00 100.00% 1 $200.00 100.00%",
      "Provider Total 0 $0.00 0.00% 0 $0.00 0.00%",
      // Cash in: 9303 counts in both of its invoices' rows with its whole
      // value; the total takes every payment entered in the period.
      "Immediate Payment 2 $170.00 57.63% 0 $0.00 0.00%",
      "1-30 Day Payment 0 $0.00 0.00% 0 $0.00 0.00%",
      "30-60 Day Payment 2 $120.00 40.68% 0 $0.00 0.00%",
      "No Payments Made 1 $30.00 12.50% 1 $200.00 100.00%",
      "Total Payments 6 $295.00 100.00% 0 $0.00 0.00%",
      "Cheque $50.00 1 $50.00",
      "Write-off $15.00 1 $15.00",
      "Patient Refund -$20.00 1 -$20.00",
      // Free units: 5 Sundays of 12 and 4 Fridays of 32 this year; last
      // year 4 Sundays and 4 Fridays, Feb 28 (a Friday) counted twice.
      "Ames C1 188 6 3.19% 75.00% 208 8 3.85% 100.00%",
      "Birch 0 2 0.00% 25.00% 0 0 0.00% 0.00%",
      "Office Totals 188 8 4.26% N/A 208 8 3.85% N/A",
      "Ada Ames 0 0.00% 0 $0.00 0 0.00% 0 $0.00",
      "Ben Birch 1 100.00% 6 $100.00 0 0.00% 0 $0.00",
      "Totals 1 100.00% 6 $100.00 0 0.00% 0 $0.00",
      "Number of appointments that were more units than were actually required: 1",
      "Number of appointments that were less units than were actually required: 0",
      "Number of appointments that were estimated at more income than actually billed: 0",
      "Number of appointments that were estimated at less income than actually billed: 1",
      "Number of appointments that were not billed for: 3",
      "New Patients: 2",
      "Patients Inactivated: 1",
      "Office Growth: 1",
  };
  for (const std::string& l : lines) EXPECT_EQ(FirstLineWith(l), l);
  // Referrals: the rollup row is the total, not a source of its own.
  EXPECT_EQ(Between("Referral Diagnostics", "Office Growth"),
            "Referral Diagnostics\nType Number Percent\nDentist 2 66.67%\nInternet 1 33.33%\n"
            "Office Totals: 3 100.00%\n");
  EXPECT_EQ(LineWith("Procedures Difference"), "")
      << "one procedure last year is too few to compare";
  // The office's table, then one per producing member by name, Ames
  // first: the eight others (not "(None)") idle.
  std::vector<std::string> preventive(10, "Preventitive Services 0 $0.00 0.00% 0 $0.00 0.00%");
  preventive[0] = preventive[1] = "Preventitive Services 2 $150.00 62.50% 0 $0.00 0.00%";
  EXPECT_EQ(LinesWith("Preventitive Services"), preventive);
  EXPECT_EQ(LinesWith("Endodontic Services 0 $0.00 0.00% 0 $0.00 0.00%").size(), 10u);
  // The type with a bar in its name keeps its columns; the post-dated
  // cheque is in its own table only.
  EXPECT_EQ(LinesWith("Till|Cash"),
            (std::vector<std::string>{"Till|Cash $170.00 2 $85.00", "Till|Cash $80.00 1 $80.00"}));
  // The sections in print order.
  EXPECT_TRUE(InOrder(Text(), {"Production Diagnostics", "Provider Diagnostics",
                               "Cash In Diagnostics", "Payment Type Diagnostics",
                               "Adjustment Diagnostics", "Post-Dated Payment Diagnostics",
                               "Appointment Booking Diagnostics", "Team Booking Diagnostics",
                               "Appointment Planning Diagnostics", "Referral Diagnostics",
                               "Office Growth"}));
}

// The comparison lines follow last year's activity: two procedures make
// the procedures line, an idle year leaves all four lines out and its
// shares at 0.00%.
TEST_F(DayEndSummary, LastYearLines) {
  struct Case {
    const char* name;
    const char* change;
    std::vector<std::string> want;
    std::vector<const char*> absent;
  } const cases[] = {
      {"two procedures last year",
       "INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost) VALUES (9242, 9204, '01202', 100);",
       {"Last Year Total Procedure Performed: 2", "Last Year Total Production: $300.00",
        "Procedures Difference This Year Compared to Last Year: 150.00%",
        "Production Difference This Year Compared to Last Year: 80.00%"},
       {}},
      {"an idle last year",
       "DELETE FROM InvoiceDetails WHERE InvoiceID = 9204;",
       {"Restorative Services 0 $0.00 0.00% 0 $0.00 0.00%", "Total Production: $240.00"},
       {"Last Year Total", "Difference This Year"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Exec(c.change);
    form.VSP.KillDoc();
    RunFebruary();
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    for (const std::string& l : c.want) EXPECT_EQ(FirstLineWith(l), l);
    for (const char* a : c.absent) EXPECT_EQ(LineWith(a), "") << a;
  }
}

// A month without sign-ups says so; an office whose unit is 0 minutes
// cannot count free units: the run stops there with one message that names
// the setting, and the document keeps the sections before it.
TEST_F(DayEndSummary, NoReferralsAndNoUnitLength) {
  reports.rptDayEndSummary(Day(2032, 4, 1), Day(2032, 4, 30), "desk");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(Between("Referral Diagnostics", "Office Growth"),
            "Referral Diagnostics\nNone on File\n");

  Exec("UPDATE OfficeInformation SET UnitMinutes = 0 WHERE ID = 1;");
  form.VSP.KillDoc();
  RunFebruary();
  ASSERT_EQ(host.messages.size(), 1u);
  const std::string& message = host.messages[0].prompt;
  EXPECT_EQ(message.rfind("An Error has occurred in Sub rptDayEndSummary in Class clsReports\n", 0),
            0u)
      << message;
  EXPECT_NE(message.find("UnitMinutes"), std::string::npos) << message;
  EXPECT_NE(Text().find("Post-Dated Payment Diagnostics"), std::string::npos);
  EXPECT_EQ(Text().find("Team Booking Diagnostics"), std::string::npos);
}

}  // namespace
}  // namespace orv::testing
