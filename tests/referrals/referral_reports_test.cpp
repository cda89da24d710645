// The referral package and its public sections on referral_fixture.h.
// In October and November Lind's patients signed up 1, Kerr's 3, Park's 2,
// Moss's none; none of them has a preferred doctor.
#include <gtest/gtest.h>

#include "referral_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using ReferralPackage = ReferralTest;

DateTime Oct1() {
  return DateTime::FromParts(2026, 10, 1);
}

TEST_F(ReferralPackage, ProcedureTypesCountEachDentistsCodesInThePeriod) {
  // Lind's patient 1 has 01202 and 99111 on 701 (11-02), 11101 and 01202
  // on 702 (11-05). Kerr's patient 3 has 11101 on 706 (11-03), 00100 and
  // -00100 on 704, -11101 on 703 (11-10), 01202 on 705 (11-12); the
  // reversed codes are no fee codes and are left out. Moss and Park bill
  // nothing and get no table.
  struct Case {
    const char* name;
    DateTime end;
    std::vector<std::string> in_order;  // dentists by last name, codes by code
    std::vector<std::string> absent;
  };
  const Case cases[] = {
      {"the month",
       Nov(30),
       {"Dr. Bo Kerr", "00100 Internal 1", "01202 Recall exam 1", "11101 Scaling 1", "Dr. Ada Lind",
        "01202 Recall exam 2", "11101 Scaling 1", "99111 Lab fee 1"},
       {"Moss", "Park", "-00100", "-11101"}},
      {"its first four days",
       Nov(4),
       {"Dr. Bo Kerr", "11101 Scaling 1", "Dr. Ada Lind", "01202 Recall exam 1", "99111 Lab fee 1"},
       {"Moss", "Park", "00100", "Recall exam 2"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    InDocument([&] { reports.srptReferringDentistType(Nov(1), c.end); });
    const std::string text = Text();
    EXPECT_TRUE(InOrder(text, c.in_order));
    for (const std::string& word : c.absent) EXPECT_FALSE(Has(word)) << word << "\n" << text;
  }
}

TEST_F(ReferralPackage, DetailsInEachOrder) {
  struct Case {
    const char* name;
    int32_t order;
    const char* order_line;  // null: none
    std::vector<std::string> in_order;
    const char* grand;  // null: no details at all
  };
  const Case cases[] = {
      {"by referring dentist, by name",
       1,
       "By Referring Dentist",
       {"Total: 3 for Dr. Bo Kerr", "Total: 1 for Dr. Ada Lind", "Total: 2 for Dr. Di Park"},
       "Grand Total: 6 Referring Dentists"},
      {"by number, most first",
       3,
       "By Number of Referred Patients",
       {"Total: 3 for Dr. Bo Kerr", "Total: 2 for Dr. Di Park", "Total: 1 for Dr. Ada Lind"},
       "Grand Total: 6 Referring Dentists"},
      {"by preferred doctor: none is known",
       0,
       "By Preferred Doctor",
       {"Total: 6 for Doctor Name Unspecified"},
       "Grand Total: 6 Preferred Dentists"},
      {"an order the package does not know", 2, nullptr, {}, nullptr},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reports.rptReferralReports(true, false, true, true, false, false, Oct1(), Nov(30), "dana", "",
                               7, {}, c.order);
    const std::string text = Text();
    EXPECT_NE(text.find("Referral Details Report"), std::string::npos) << text;
    for (const char* line :
         {"By Referring Dentist", "By Number of Referred Patients", "By Preferred Doctor"}) {
      const bool expected = c.order_line && std::string(c.order_line) == line;
      EXPECT_EQ(text.find(line) != std::string::npos, expected) << line << "\n" << text;
    }
    EXPECT_TRUE(InOrder(text, c.in_order));
    EXPECT_EQ(text.find("Cy Moss"), std::string::npos) << "an empty group prints nothing";
    if (c.grand)
      EXPECT_NE(text.find(c.grand), std::string::npos) << text;
    else
      EXPECT_TRUE(HasNone(text, {"Grand Total",
                                 // The list and the patients-by-patients flags draw nothing here.
                                 "Date Last Patient Referred"}));
    EXPECT_TRUE(host.messages.empty());
  }
}

TEST_F(ReferralPackage, SectionsInTheirOrderEachOnItsPage) {
  host.answer = host::vbNo;
  reports.rptReferralReports(false, true, true, false, true, true, Nov(1), Nov(30), "dana",
                             "All providers", 0, {1}, 1);
  const std::string text = Text();
  EXPECT_TRUE(InOrder(text, {"Referral Dentist Procedure Type Report", "Referral Details Report",
                                      "Referral Summary Report", "Referral Alert Report"}));
  EXPECT_TRUE(HasAll(text, {"From: Nov/01/2026 to Nov/30/2026",
                            // Lind's patient 1 had 01202 and 11101 and 99111 billed in November.
                            "11101 Scaling 1"}));
  EXPECT_GE(form.VSP.PageCount(), 4);
  EXPECT_EQ(form.ShowCount(), 1);
  // The summary is the production summary, after the question on links.
  EXPECT_EQ(Asked("Invalid Relationship"), 1);
  EXPECT_NE(text.find("Fees($) Payments($)"), std::string::npos);
  EXPECT_EQ(text.find("# Patients"), std::string::npos);
}

TEST_F(ReferralPackage, PublicSections) {
  Exec(
      "UPDATE Patient SET RefferedBy = 'Claire Tremblay', ReferalReason = 'Friend', "
      "ReferredByAddID = 'Patient' WHERE ID = 1052;"
      "UPDATE Patient SET RefferedBy = '0' WHERE ID = 1053;");
  InDocument([&] {
    reports.srptReferringDentistList();
    reports.srptRefferedByPatient(Oct1(), Nov(30));
    reports.srptReferringDentistSummary(Oct1(), Nov(30), 0);
  });
  // Moss's last sign-up was August; Lind's newest is 11-10.
  EXPECT_TRUE(HasAll(Text(), {"Dr. Cy Moss Aug/12/2026", "Dr. Ada Lind Nov/10/2026",
                              // Referred by a patient: only the one with a name there.
                              "Ref52 Patient Claire Tremblay Friend Patient"}));
  EXPECT_FALSE(Has("Ref53 Patient"));
  // Sign-ups of the period, invoices none: counts and zero sums.
  EXPECT_TRUE(HasAll(Text(), {"Dr. Bo Kerr 3 $0.00 $0.00", "Dr. Cy Moss 0 $0.00 $0.00"}));
}

// Wherever the details start on a page, a dentist's name goes with the
// first rows of the group and its "Total:" line with the last.
TEST_F(ReferralPackage, DetailGroupsKeepTheirHeadingAndTotal) {
  const int kept = ExpectKeptTogether(
      90, 40,
      [&] { reports.srptReferringDentistDetailed(DateTime::FromParts(2026, 8, 1), Nov(30), {}, 1); },
      [](const std::string& l) { return StartsWith(l, "Dr. ") && l.find(" for ") == std::string::npos; },
      [](const std::string& l) { return StartsWith(l, "Total: "); });
  EXPECT_GT(kept, 0);
}

TEST_F(ReferralPackage, ADentistWithoutPatientsIsNotApplicable) {
  Exec("UPDATE Patient SET ReferringDentistID = NULL WHERE ReferringDentistID = 3;");
  InDocument([&] { reports.srptReferringDentistList(); });
  EXPECT_TRUE(Has("Dr. Cy Moss  N/A ")) << Text();
}

}  // namespace
}  // namespace orv::testing
