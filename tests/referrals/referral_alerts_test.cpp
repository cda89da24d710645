// The referral alert pages on the sign-ups of referral_fixture.h, worked
// by hand there.
#include <gtest/gtest.h>

#include <regex>

#include "referral_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using ReferralAlerts = ReferralTest;

TEST_F(ReferralAlerts, WholeRatioStoppedAndSlackenedDentists) {
  struct Case {
    const char* name;
    int at_least;
    std::vector<std::string> present;
    std::vector<std::string> absent;
  };
  const Case cases[] = {
      // Moss: 12 in 120 days is 3 expected, none came: stopped. Lind: 4
      // expected, 1 came, under the bar of 3: a drop of 75. Kerr: 4
      // expected, 3 came: 3 is not under the bar, so he stands nowhere
      // though his drop is 25 %. Park: 10 / 4 is 2 in whole numbers, under
      // the bar.
      {"bar 3",
       3,
       {"Cy Moss\n12.00 3. 0 100 %", "Ada Lind\n16.00 4. 1 75. %"},
       {"Bo Kerr", "Di Park"}},
      // With a bar of 2 Park stands among the stopped dentists with 2, not
      // 2.5: the count is divided by a whole R in the database. Lind still
      // counts (1 under 2); Kerr's 3 does not.
      {"bar 2",
       2,
       {"Di Park\n8.00 2. 0 100 %", "Cy Moss\n12.00 3. 0 100 %", "Ada Lind\n16.00 4. 1 75. %"},
       {"Bo Kerr", "10.00", "2.5"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Exec("UPDATE ReferralAlerts SET AtLeast = " + std::to_string(c.at_least) +
         " WHERE EmployeeID = 1;");
    InDocument([&] { reports.srptReferralAlerts("1"); });
    const std::string text = Text();
    EXPECT_TRUE(HasAll(text, {"At least " + std::to_string(c.at_least) +
                                  " in last 30 days, averaged over 120 days.",
                              "Alert when referrals drop by 25%."}));
    // A dentist's row reads: the name, the figures beside the cell's
    // middle, then the phone.
    EXPECT_TRUE(HasAll(text, c.present));
    EXPECT_TRUE(HasNone(text, c.absent));
    // The stopped come first, then the slackened.
    EXPECT_LT(text.find("Cy Moss"), text.find("Ada Lind"));
    EXPECT_TRUE(host.messages.empty());
  }
}

TEST_F(ReferralAlerts, FractionalRatiosDentistsWithoutSignupsAndEmptyBlocks) {
  // Chen: 30 of 45 days, R 1.5. Park's 2 sign-ups 40 days ago make 1.33
  // expected, none came; Lind's single recent sign-up is 0.67, under the
  // bar of 1; Kerr's 3 recent ones are no drop under 1.
  InDocument([&] { reports.srptReferralAlerts("2"); });
  EXPECT_TRUE(Has("Di Park\n2.00 1.33 0 100 %")) << Text();
  EXPECT_TRUE(HasNone(Text(), {"Ada Lind", "Bo Kerr"}));
  EXPECT_TRUE(Has("Printed On: Nov/20/2026 For: Paul Chen"));

  // Chen with a bar of 0: Moss's 12 sign-ups are all older than 45 days,
  // so he is expected 0 and got 0, and still stands among the stopped.
  // Park's two sign-ups of 40 days ago lose their date: a patient without
  // one counts in neither period, and Park ties with Moss at 0.
  Exec("UPDATE ReferralAlerts SET AtLeast = 0 WHERE EmployeeID = 2;"
       "UPDATE Patient SET SignupDate = NULL WHERE ID IN (1052, 1053);");
  InDocument([&] { reports.srptReferralAlerts("2"); });
  EXPECT_TRUE(HasAll(Text(), {"Di Park\n.00 . 0 100 %", "Cy Moss\n.00 . 0 100 %"}));
  EXPECT_FALSE(Has("Bo Kerr"));
  // Equal averages come in the order of the dentists' IDs.
  EXPECT_LT(Text().find("Cy Moss"), Text().find("Di Park"));

  // Nobody was referred at all: the table is its header alone.
  Exec("UPDATE Patient SET ReferringDentistID = NULL;");
  InDocument([&] { reports.srptReferralAlerts("1"); });
  EXPECT_TRUE(HasAll(Text(), {"Referring Dentist", "Percent"}));
  EXPECT_FALSE(Has("100 %"));
}

TEST_F(ReferralAlerts, ProvidersWithoutCriteriaWarnOncePerRunAndGetNoPage) {
  // Okafor has no criteria; Chen's are made 0 on one field.
  Exec("UPDATE ReferralAlerts SET AlertWhen = 0 WHERE EmployeeID = 2;");
  reports.rptReferralReports(false, false, false, false, false, true, Nov(1), Nov(30), "dana", "",
                             0, {3, 1, 2, 3}, 0);
  EXPECT_EQ(Asked("Referral Alerts"), 1);
  EXPECT_NE(host.messages.at(0).prompt.find("do not have Referral Alerts setup"),
            std::string::npos);
  // Moreau's page alone, the first page untouched before it.
  EXPECT_EQ(form.VSP.PageCount(), 1) << Text();
  EXPECT_TRUE(Has("For: Anne Moreau"));
  EXPECT_FALSE(Has("For: Paul Chen"));
  EXPECT_EQ(form.ShowCount(), 1);
  // A second run warns again.
  host.messages.clear();
  reports.rptReferralReports(false, false, false, false, false, true, Nov(1), Nov(30), "dana", "",
                             0, {3}, 0);
  EXPECT_EQ(Asked("Referral Alerts"), 1);
}

}  // namespace
}  // namespace orv::testing
