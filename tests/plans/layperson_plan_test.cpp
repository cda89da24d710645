// The layperson treatment plan letter, English and French, on a hand-built
// plan added to the demo practice (IDs from 96001).
#include <gtest/gtest.h>

#include <string>

#include "frame/surface/surface.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

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
};

TEST_F(LaypersonPlan, AssignedPatientSeesSectionsFiguresAndFallbacks) {
  reports.rptLaypersonTreatmentPlan("ignored office", "ignored address", 96001, "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_TRUE(progress.empty());
  EXPECT_EQ(form.VSP.DocName(), "Layperson Treatment Plan");
  // The patient's office rules the letterhead and stays the component's,
  // and its text stands trimmed in place of the stock introduction.
  EXPECT_EQ(reports.OfficeID, 2);
  EXPECT_TRUE(HasAll(Text(), {"Plan Office Two", "Proposed Dental Treatment\n",
                              "Friday November 20, 2026", "Estimate prepared for: Eve Roy",
                              "\nOur own words for you.\n",
                              "Code Tooth Description Total Fee Benefits Your Portion"}));
  // Sections in order; a section without lines prints nothing, the Bogus
  // line nowhere. Plain words with the reason below; blank-only plain words
  // fall back to the clinical wording; an unknown code prints the bare
  // reason key. Totals from the database's sums: Required 150.00, benefits
  // 60 + 10 (the Null benefit left out of SUM), patient 80.00. In Phase 4
  // the section's second benefits are all Null: SUM is Null, both figures
  // 0. Assigned rows say Totals in Option 3 too.
  EXPECT_TRUE(InOrder(Text(), {"Required Treatment:",
                               "96001 16 Cleaning of your teeth $100.00 $70.00 $30.00\nDecay",
                               "96002 Scaling, one unit $50.00 $0.00 $50.00",
                               "Totals $150.00 $70.00 $80.00", "Phase 4 Treatment:",
                               "Totals $40.00 $0.00 $0.00", "Option 3 Treatment:",
                               "96009 12 $30.00 $0.00 $30.00", "Totals $30.00 $0.00 $30.00",
                               "Should you have any questions regarding the proposed treatment",
                               "Sincerely,"}));
  EXPECT_TRUE(HasNone(Text(), {"ignored office", "Below you will find", "Suggested Treatment:",
                               "99.00", "Prophylaxis"}));
}

TEST_F(LaypersonPlan, UnassignedPatientSeesFeesOnlyAndTheOfficeNote) {
  reports.rptLaypersonTreatmentPlan("", "", 96002, "0");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(reports.OfficeID, 1);
  // Two columns: the surplus benefit and portion figures are dropped;
  // Option 3 of a patient without assignment says Total. The office's note
  // replaces the closing and the signature.
  EXPECT_TRUE(HasAll(Text(), {"Code Tooth Description Total Fee\n",
                              "Below you will find a break down of the work", "Totals $80.00\n",
                              "Total $20.00\n", "Bring your plan booklet; we will call you."}));
  EXPECT_TRUE(HasNone(Text(), {"Benefits", "$12.00", "Should you have any questions",
                               "Sincerely,"}));
}

TEST_F(LaypersonPlan, FilterSelectsLinesAndTotalsAlike) {
  reports.rptLaypersonTreatmentPlan("", "", 96001, " and Code = '96002'");
  // The one line left has a Null first benefit: SUM over it is Null, so
  // benefits and patient portion total 0 while the line itself shows 50.00.
  EXPECT_TRUE(HasAll(Text(), {"96002 Scaling, one unit $50.00", "Totals $50.00 $0.00 $0.00"}));
  EXPECT_TRUE(HasNone(Text(), {"Cleaning of your teeth", "Phase 4 Treatment:"}));
}

TEST_F(LaypersonPlan, FrenchLetterKnowsNineSections) {
  reports.rptLaypersonTreatmentPlanF("", "", 96001, "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.VSP.DocName(), "Layperson Treatment Plan");
  // The office's text is the same on both letters; the half-inch code
  // columns wrap their titles word by word; the French letter leaves out
  // Phase 4 to 6 and Option 4 to 6.
  EXPECT_TRUE(HasAll(
      Text(), {"Traitement Dentaire Propose\n", "vendredi novembre 20, 2026",
               "Coûts estimatifs préparés pour: Eve Roy", "Our own words for you.",
               "Code Code Description Honoraire du Avantages Portion du\nde de dentiste vous\n"
               "l'acte dents\n",
               "Traitement Requis:", "3e option Traitement:",
               "Total des honoraires demandés $150.00 $70.00 $80.00",
               "Notre Personnel est disponsible pour répondre à vos Questions", "Bien à vous,"}));
  EXPECT_TRUE(HasNone(Text(), {"Phase 4", "$40.00"}));

  reports.rptLaypersonTreatmentPlanF("", "", 96002, "");
  EXPECT_TRUE(HasAll(Text(), {"Ci-dessous, vous trouvez un plan detaille du traitement dentaire",
                              "Total des honoraires demandés $20.00\n"}));
}

TEST_F(LaypersonPlan, UnknownPlanShowsTheClaimMessageAndPrintsNothing) {
  for (bool french : {false, true}) {
    host.messages.clear();
    if (french) reports.rptLaypersonTreatmentPlanF("", "", 987654, "");
    else reports.rptLaypersonTreatmentPlan("", "", 987654, "");
    EXPECT_TRUE(SaidOnce(host, "There has been an error printing. One or more pieces of information "
                               "has not been correctly entered for the patient.\nThis could include "
                               "any insurance information"));
    EXPECT_EQ(form.VSP.PageCount(), 0);
    EXPECT_EQ(form.PrintCount(), 0);
  }
}

}  // namespace
}  // namespace orv::testing
