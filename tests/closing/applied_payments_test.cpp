// Applied payments and income by provider on February of the closing
// practice (closing_practice.h).
#include <gtest/gtest.h>

#include "closing/closing_practice.h"

namespace orv::testing {
namespace {

using AppliedPayments = ClosingTest;

TEST_F(AppliedPayments, EachPersonsMoneyOnTheDayItWasApplied) {
  struct Case {
    const char* name;
    bool overseeing;
    std::vector<std::string> people;
    std::vector<std::string> item_totals;
  } const cases[] = {
      // Bell's invoices took Claire's cash and her insurer's cheque; Hill's
      // took 60 of Seamus's cheque, on the day it was applied. The 40 left
      // on account is in nobody's list, and write-offs are no income.
      {"by provider", false, {"Ada Bell", "Hugo Hill"}, {"Total Items: 2 450.00", "Total Items: 1 60.00"}},
      // Every invoice is overseen by Bell.
      {"by overseer", true, {"Ada Bell"}, {"Total Items: 3 510.00"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    form.VSP.KillDoc();
    reports.rptIncomeByProvider(Feb(1), Feb(28), kAllThree, c.overseeing, "Ana");
    EXPECT_TRUE(host.messages.empty());
    EXPECT_EQ(form.ShowCount() > 0, true);
    std::vector<std::string> people;
    for (const char* who : {"Ada Bell", "Hugo Hill", "Ivy Stone"}) {
      if (LineWith(who) == who) people.push_back(who);
    }
    EXPECT_EQ(people, c.people);
    EXPECT_EQ(LinesWith("Total Items:"), c.item_totals);
    EXPECT_EQ(LineWith("Grand Totals"), "Grand Totals($) # of Payment Items: 3 510.00");
    EXPECT_EQ(LineWith("Cash Feb/03/2026"), "Cash Feb/03/2026 Feb/03/2026 Claire 9002 150.00");
    EXPECT_EQ(LineWith("Cheque Feb/12/2026"), "Cheque Feb/12/2026 Feb/14/2026 Seamus 9004 60.00");
    EXPECT_NE(LineWith("Note: This Report show payments"), "");
  }
}

// Wherever the section starts on a page, its title, its label and each
// person's name go with what follows them, and "Total Items" with the last
// row above it: nothing is left alone at a page's foot or head.
TEST_F(AppliedPayments, HeadingsAndTotalsStayWithTheirRows) {
  const int kept = ExpectKeptTogether(
      60, 48, [&] { reports.srptAppliedPayments(Feb(1), Feb(28), kAllThree, 0); },
      [](const std::string& l) {
        return l == "Applied Payments by Provider" || l == "By Provider" || l == "Ada Bell" ||
               l == "Hugo Hill";
      },
      [](const std::string& l) { return StartsWith(l, "Total Items:"); });
  EXPECT_GT(kept, 2);
}

}  // namespace
}  // namespace orv::testing
