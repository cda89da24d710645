// The layperson treatment plan letter, English and French, on a hand-built
// plan added to the demo practice (IDs from 96001).
#include <gtest/gtest.h>

#include <string>

#include "frame/surface/surface.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

// Codes: 96001 with plain words; 96002 with blank-only plain words and a
// clinical description; 96009 on no fee list.
// Plan 96001, Eve Roy (assigned, office 2), lines (Type, code, cost, first
// and second benefit, reason):
//   1 NULL      96001 100.00 60.00 10.00  reason 1 "Decay"
//   2 Required  96002  50.00  NULL  0.00
//   3 Phase 4   96001  40.00 20.00  NULL  (the section's SUM of second: NULL)
//   4 Option 3  96009  30.00  0.00  0.00  reason 12
//   5 Bogus     96001  99.00              (a Type no section knows)
// Plan 96002, Tom Blanc (not assigned, office 1), PatientNotes set:
//   1 Required 96001 80.00; 2 Option 3 96002 20.00 60% covered
class LaypersonPlan : public ReportTest {
 protected:
  void SetUp() override {
    ReportTest::SetUpPractice(R"sql(
INSERT INTO FeeCodes (ID, Description, LayPersonDescription) VALUES
 ('96001', 'Prophylaxis, one unit', 'Cleaning of your teeth'),
 ('96002', 'Scaling, one unit', '   ');
INSERT INTO Patient (ID, Title, FirstName, LastName, Assignment, DefaultOfficeID) VALUES
 (96001, 'Ms', 'Eve', 'Roy', -1, 2), (96002, 'Mr', 'Tom', 'Blanc', 0, 1);
INSERT INTO PatientPredTreatments (ID, PatientID, ProviderID, PatientNotes, TotalAmount) VALUES
 (96001, 96001, 1, NULL, 1.00), (96002, 96002, 1, 'Bring your plan booklet; we will call you.', 1.00);
INSERT INTO PatientPredTreatmentDetails (ID, PatientPredTreatmentsID, Type, LineNumber, Code,
  [Tooth#], ReasonID, Cost, BenefitAmountProcedure, SecondBenefitAmount) VALUES
 (96101, 96001, NULL, 1, '96001', '16', 1, 100.00, 60.00, 10.00),
 (96102, 96001, 'Required', 2, '96002', NULL, NULL, 50.00, NULL, 0),
 (96103, 96001, 'Phase 4', 3, '96001', NULL, NULL, 40.00, 20.00, NULL),
 (96104, 96001, 'Option 3', 4, '96009', NULL, 12, 30.00, 0, 0),
 (96105, 96001, 'Bogus', 5, '96001', NULL, NULL, 99.00, 0, 0),
 (96201, 96002, 'Required', 1, '96001', NULL, NULL, 80.00, 0, 0),
 (96202, 96002, 'Option 3', 2, '96002', NULL, NULL, 20.00, 12.00, 0);
UPDATE OfficeInformation SET Name = 'Plan Office Two', LaypersonHeader = '  Our own words for you.  '
  WHERE ID = 2;
UPDATE OfficeInformation SET LaypersonHeader = NULL WHERE ID = 1;
)sql");
    reports.OfficeID = 1;
  }
  bool Has(const std::string& what) const { return Text().find(what) != std::string::npos; }
  size_t At(const std::string& what) const { return Text().find(what); }
};

TEST_F(LaypersonPlan, AssignedPatientSeesSectionsFiguresAndFallbacks) {
  reports.rptLaypersonTreatmentPlan("ignored office", "ignored address", 96001, "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  std::string text = Text();
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_TRUE(progress.empty());
  EXPECT_EQ(form.VSP.DocName(), "Layperson Treatment Plan");
  // The patient's office rules the letterhead and stays the component's.
  EXPECT_EQ(reports.OfficeID, 2);
  EXPECT_TRUE(Has("Plan Office Two")) << text;
  EXPECT_FALSE(Has("ignored office"));
  EXPECT_TRUE(Has("Proposed Dental Treatment\n")) << text;
  EXPECT_TRUE(Has("Friday November 20, 2026")) << text;
  EXPECT_TRUE(Has("Estimate prepared for: Eve Roy")) << text;
  EXPECT_TRUE(Has("\nOur own words for you.\n")) << "the office's text, trimmed";
  EXPECT_FALSE(Has("Below you will find"));

  // Sections in order; the Bogus line nowhere.
  const size_t required = At("Required Treatment:"), phase4 = At("Phase 4 Treatment:"),
               option3 = At("Option 3 Treatment:");
  ASSERT_NE(required, std::string::npos) << text;
  ASSERT_NE(phase4, std::string::npos);
  ASSERT_NE(option3, std::string::npos);
  EXPECT_LT(required, phase4);
  EXPECT_LT(phase4, option3);
  EXPECT_FALSE(Has("Suggested Treatment:")) << "a section without lines prints nothing";
  EXPECT_FALSE(Has("99.00"));
  EXPECT_TRUE(Has("Code Tooth Description Total Fee Benefits Your Portion")) << text;

  // Plain words with the reason below; blank-only plain words fall back to
  // the clinical wording; an unknown code prints the bare reason key.
  EXPECT_TRUE(Has("96001 16 Cleaning of your teeth $100.00 $70.00 $30.00\nDecay")) << text;
  EXPECT_TRUE(Has("96002 Scaling, one unit $50.00 $0.00 $50.00")) << text;
  EXPECT_TRUE(Has("96009 12 $30.00 $0.00 $30.00")) << text;
  EXPECT_FALSE(Has("Prophylaxis"));

  // Totals from the database's sums: Required 150.00, benefits 60 + 10
  // (the Null benefit left out of SUM), patient 80.00. In Phase 4 the
  // section's second benefits are all Null: SUM is Null, both figures 0.
  EXPECT_TRUE(Has("Totals $150.00 $70.00 $80.00")) << text;
  EXPECT_TRUE(Has("Totals $40.00 $0.00 $0.00")) << text;
  EXPECT_TRUE(Has("Totals $30.00 $0.00 $30.00")) << "assigned rows say Totals in Option 3 too";
  EXPECT_TRUE(Has("Should you have any questions regarding the proposed treatment")) << text;
  EXPECT_TRUE(Has("Sincerely,"));
}

TEST_F(LaypersonPlan, UnassignedPatientSeesFeesOnlyAndTheOfficeNote) {
  reports.rptLaypersonTreatmentPlan("", "", 96002, "0");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  std::string text = Text();
  EXPECT_EQ(reports.OfficeID, 1);
  EXPECT_TRUE(Has("Code Tooth Description Total Fee\n")) << text;
  EXPECT_FALSE(Has("Benefits"));
  EXPECT_TRUE(Has("Below you will find a break down of the work")) << "the stock introduction";
  // Two columns: the surplus benefit and portion figures are dropped.
  EXPECT_TRUE(Has("Totals $80.00\n")) << text;
  EXPECT_TRUE(Has("Total $20.00\n")) << "Option 3 of a patient without assignment: Total";
  EXPECT_FALSE(Has("$12.00"));
  // The office's note replaces the closing and the signature.
  EXPECT_TRUE(Has("Bring your plan booklet; we will call you.")) << text;
  EXPECT_FALSE(Has("Should you have any questions"));
  EXPECT_FALSE(Has("Sincerely,"));
}

TEST_F(LaypersonPlan, FilterSelectsLinesAndTotalsAlike) {
  reports.rptLaypersonTreatmentPlan("", "", 96001, " and Code = '96002'");
  std::string text = Text();
  EXPECT_TRUE(Has("96002 Scaling, one unit $50.00")) << text;
  EXPECT_FALSE(Has("Cleaning of your teeth"));
  // The one line left has a Null first benefit: SUM over it is Null, so
  // benefits and patient portion total 0 while the line itself shows 50.00.
  EXPECT_TRUE(Has("Totals $50.00 $0.00 $0.00")) << text;
  EXPECT_FALSE(Has("Phase 4 Treatment:"));
}

TEST_F(LaypersonPlan, FrenchLetterKnowsNineSections) {
  reports.rptLaypersonTreatmentPlanF("", "", 96001, "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  std::string text = Text();
  EXPECT_EQ(form.VSP.DocName(), "Layperson Treatment Plan");
  EXPECT_TRUE(Has("Traitement Dentaire Propose\n")) << text;
  EXPECT_TRUE(Has("vendredi novembre 20, 2026")) << text;
  EXPECT_TRUE(Has("Coûts estimatifs préparés pour: Eve Roy")) << text;
  EXPECT_TRUE(Has("Our own words for you.")) << "the office's text is the same on both letters";
  EXPECT_TRUE(Has("Traitement Requis:")) << text;
  EXPECT_TRUE(Has("3e option Traitement:")) << text;
  EXPECT_FALSE(Has("Phase 4")) << "the French letter leaves out Phase 4 to 6 and Option 4 to 6";
  EXPECT_FALSE(Has("$40.00"));
  EXPECT_TRUE(Has("Total des honoraires demandés $150.00 $70.00 $80.00")) << text;
  EXPECT_TRUE(Has("Notre Personnel est disponsible pour répondre à vos Questions")) << text;
  EXPECT_TRUE(Has("Bien à vous,"));

  reports.rptLaypersonTreatmentPlanF("", "", 96002, "");
  text = Text();
  EXPECT_TRUE(Has("Ci-dessous, vous trouvez un plan detaille du traitement dentaire")) << text;
  EXPECT_TRUE(Has("Total des honoraires demandés $20.00\n")) << text;
}

TEST_F(LaypersonPlan, FrenchHeadersOfBothTables) {
  reports.rptLaypersonTreatmentPlanF("", "", 96001, "");
  // The half-inch code columns wrap their titles word by word.
  EXPECT_TRUE(Has("Code Code Description Honoraire du Avantages Portion du\nde de dentiste vous\nl'acte dents\n"))
      << Text();
  for (const char* title : {"Honoraire du", "Avantages", "Portion du"})
    EXPECT_TRUE(Has(title)) << title << "\n" << Text();
}

TEST_F(LaypersonPlan, UnknownPlanShowsTheClaimMessageAndPrintsNothing) {
  for (bool french : {false, true}) {
    host.messages.clear();
    if (french) reports.rptLaypersonTreatmentPlanF("", "", 987654, "");
    else reports.rptLaypersonTreatmentPlan("", "", 987654, "");
    ASSERT_EQ(host.messages.size(), 1u);
    EXPECT_EQ(host.messages[0].prompt.rfind("There has been an error printing. One or more pieces of "
                                            "information has not been correctly entered for the "
                                            "patient.\nThis could include any insurance information",
                                            0),
              0u)
        << host.messages[0].prompt;
    EXPECT_EQ(form.VSP.PageCount(), 0);
    EXPECT_EQ(form.PrintCount(), 0);
  }
}

}  // namespace
}  // namespace orv::testing
