// The predetermination form and the insurance billing list, on the claim
// fixture's people with treatments and electronic sends added.
#include <gtest/gtest.h>

#include <string>

#include "claims/claims_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Treatments:
//   95501 Lea (not assigned), provider 95002, CarrierNotes: lines by
//         LineNumber: 0.00 "01202", 50.00 "-0120", 100.00 "11101"
//         (stored in the reverse ID order)
//   95502 Eve (assigned, no employer), no lines
// Sends (ID = the patient they meet, as the billing list joins them):
//   95001 type 0, invoice 95101 (999.99): responses 400.00 (21), 5.00 (11)
//   95003 type 2, invoice 95104 (10.00): an eligibility check
//   95004 type 1, invoice 95105 (10.00), PatientID 95001: meets Ina, who
//         has no insurer
// Lea's plans: 95001 primary, 95002 secondary; Tom's: 95002 primary.
// Insurer 95003 "Idle Mutual": Ina's send is of an invoice of 0.00 there.
class PredeterminationAndBilling : public ClaimTest {
 protected:
  PredeterminationAndBilling() {
    rows_ = R"sql(
INSERT INTO PatientPredTreatments (ID, PatientID, ProviderID, CarrierNotes) VALUES
 (95501, 95001, 95002, 'X-rays mailed separately'), (95502, 95005, 95001, NULL);
INSERT INTO PatientPredTreatmentDetails (ID, PatientPredTreatmentsID, Type, LineNumber, Code,
  [Tooth#], Surface, Cost) VALUES
 (95603, 95501, NULL, 1, '01202', '21', 'O', 0),
 (95602, 95501, NULL, 2, '-0120', NULL, NULL, 50.00),
 (95601, 95501, NULL, 3, '11101', NULL, NULL, 100.00);
UPDATE Patient SET InsuranceID = 95001, SecondaryInsuranceID = 95002 WHERE ID = 95001;
UPDATE Patient SET InsuranceID = 95002 WHERE ID = 95003;
INSERT INTO InsuranceCompany (ID, CompanyName, Phone, PhoneExt, Notes) VALUES
 (95003, 'Idle Mutual', '8005550000', '12', 'Nothing billed');
UPDATE Patient SET InsuranceID = 95003 WHERE ID = 95005;
UPDATE InsuranceCompany SET Phone = '8005551234', PhoneExt = '7', Notes = 'Fax first' WHERE ID = 95001;
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], InvoiceTotal) VALUES
 (95106, 595106, 95005, 95001, '2026-11-07 00:00:00', 0);
INSERT INTO PatientEDISends (ID, InvoiceID, PatientID, Type) VALUES
 (95001, 95101, 95001, 0), (95003, 95104, 95003, 2), (95004, 95105, 95001, 1),
 (95005, 95106, 95005, 0);
INSERT INTO PatientEDIResponses (ID, EDISendID, TrsCode, TotalBenefitAmounts) VALUES
 (95701, 95001, 21, 400.00), (95702, 95001, 11, 5.00);
)sql";
  }
};

TEST_F(PredeterminationAndBilling, PredeterminationPrintsEveryProposedLine) {
  reports.rptPredClaimForm(95501, 1, "");
  ASSERT_TRUE(host.messages.empty());
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.ShowCount(), 0) << "printed at once, never previewed";
  EXPECT_TRUE(progress.empty());
  EXPECT_EQ(form.VSP.DocName(), "Predeterminaion Claim Form");
  // Always the treatment's provider, his CDA# as the billing number; Lea
  // did not assign benefits. Every line by LineNumber, a fee of 0 and a
  // reversal code included.
  EXPECT_TRUE(HasAll(Text(), {"Predetermination Form\n", "Dr. Paul Girard", "BPN#: 654321",
                              "PAYABLE TO SUBSCRIBER", "X-rays mailed separately"}));
  EXPECT_TRUE(InOrder(Text(), {"Procedure Tooth# Surface Charge\n", "01202 21 O $0.00",
                               "-0120 $50.00", "11101 $100.00",
                               "This is an accurate statement of proposed service. Total Fee "
                               "Proposed: $150.00"}));
  EXPECT_FALSE(Has("Predetermination Number"));
  EXPECT_FALSE(Shows("I hereby assign"));
  for (const char* box : {"Patient's Relationship: Self", "Patient's Relationship: Child"})
    EXPECT_TRUE(Shows(box)) << box << "\n" << Text();
  EXPECT_TRUE(Shows("my plan benefits. I understand that if I opt for these treatments that I am "
                    "financially responsible to my dentist for the entire treatment.I authorize "
                    "the release of the information contained in this predetermination form"))
      << "the second sentence has no blank of its own";

  // A filter of lines; "0" is none.
  reports.rptPredClaimForm(95501, 1, " and Cost > 10");
  EXPECT_FALSE(Has("01202")) << Text();
  EXPECT_TRUE(Has("Total Fee Proposed: $150.00"));
  reports.rptPredClaimForm(95501, 1, "0");
  EXPECT_TRUE(Has("01202 21 O $0.00"));
}

TEST_F(PredeterminationAndBilling, PredeterminationWithoutLinesAndAssigned) {
  reports.rptPredClaimForm(95502, 1, "");
  ASSERT_EQ(form.PrintCount(), 1);
  EXPECT_TRUE(Has("PAYABLE TO DENTIST")) << Text();
  EXPECT_TRUE(Shows("I hereby assign benefits payable from this predetermination to the named dentist."))
      << Text();
  EXPECT_TRUE(Has("Total Fee Proposed: $0.00"));
  EXPECT_FALSE(Has("Instructions for Claim Submission")) << "Eve has no employer";
}

TEST_F(PredeterminationAndBilling, FrenchPredetermination) {
  reports.rptPredClaimFormF(95501, 1, "");
  ASSERT_EQ(form.PrintCount(), 1);
  // No doubled secondary holder on this form.
  for (const char* box : {"Sexe: Female", "Nom: Marc Moreau", "PAYABLE L'ABONNE",
                          "Total des honoraires proposés: $150.00",
                          "Lien de parenté avec l'employé participante au régime: Self",
                          "Code de l'acte", "Honoraire du dentiste"})
    EXPECT_TRUE(Shows(box)) << box << "\n" << Text();
  for (const char* box : {"Sex: ", "Name: Marc Moreau", "Date du traitement"})
    EXPECT_FALSE(Shows(box)) << box;
}

TEST_F(PredeterminationAndBilling, PredeterminationFailsSilently) {
  // An unknown treatment, and a patient whose employer has no insurer.
  RawExec("INSERT INTO PatientPredTreatments (ID, PatientID, ProviderID) VALUES (95503, 95004, 95001)");
  for (int32_t id : {987654, 95503}) {
    reports.rptPredClaimForm(id, 1, "");
    reports.rptPredClaimFormF(id, 1, "");
    EXPECT_TRUE(host.messages.empty()) << id;
    EXPECT_EQ(form.PrintCount(), 0) << id;
    EXPECT_EQ(form.VSP.PageCount(), 0) << id;
  }
}

TEST_F(PredeterminationAndBilling, BillingSumsPrimaryAndSecondarySendsOfClaimsOnly) {
  reports.rptInsuranceBilling("Front Desk");
  std::string text = Text();
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Insurance Company Billing");
  EXPECT_TRUE(Has("Company Name Address Phone Notes Billed Received\n")) << text;
  // Lea's claim under her primary insurer; only the explanation of
  // benefits (21) counts as received. The ";" of the name is data.
  EXPECT_TRUE(Has("North; Shore Life 1 Bay St 8005551234 Fax first $999.99 $400.00\n"
                  "Toronto, ON M5J 2N8 [7]\n"))
      << text;
  // The same send again under her secondary insurer; Tom's eligibility
  // check (type 2) adds nothing there.
  EXPECT_TRUE(Has("Second Life 2 Rue Peel, Bureau 4 $999.99 $400.00\nMontreal, QC H3A 1T1\n")) << text;
  // Eve's claim of 0.00 bills nothing: no row.
  EXPECT_FALSE(Has("Idle Mutual"));
}

}  // namespace
}  // namespace orv::testing
