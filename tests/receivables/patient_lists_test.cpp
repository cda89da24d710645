// The account status, the families with a balance, the patients with a
// credit or with treatment to come, and the billing by client. Figures by
// hand from the rows of accounts/account_fixture.h; today and the end date
// are 2026-11-20.
#include <gtest/gtest.h>

#include <functional>

#include "accounts/account_fixture.h"
#include "frame/surface/surface.h"
#include "support/forged_cells.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using AccountStatus = LedgerTest;
using FamiliesWithABalance = LedgerTest;
using PatientsWithACredit = LedgerTest;
using OutstandingTreatment = LedgerTest;
using BillingByClient = LedgerTest;

const DateTime kToday = DateTime::FromParts(2026, 11, 20);

TEST_F(AccountStatus, BalanceIsWhatIsOwedLessTheCreditUndatedOldest) {
  reports.rptPatientAccountStatus("dana", DateTime::FromParts(2026, 11, 20));
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(form.VSP.DocName(), "Patients Account Status");
  // Claire: 103 cancelled and 104 in progress are not selected; 101 and
  // 102 are paid. 105 60 (its 40 is dated 11-21) and 106 25 in 0-30: 85.
  // Credit by 11-20: 80 + 120 + 200 less 80 + 120 + 150 = 50. Balance 35.
  // Post dates: 105's 40.
  EXPECT_TRUE(HasAll(Text(), {"Tremblay, Claire $35.00 $50.00 $40.00 $85.00 $0.00 $0.00 $0.00",
                              // Seamus: 161 (10-01) 45 less 262's 15 = 30 in > 30; 601 (09-06) 100
                              // in > 60; 602 settled without a final date and 603 in progress are
                              // not selected. Credit 20 + 40 + 10 less 40 + 15 = 15. Balance 115.
                              "O'Brien, Seamus $115.00 $15.00 $0.00 $0.00 $30.00 $100.00 $0.00"}));
  // Zoe's only cheque is dated after the end: nothing to show.
  EXPECT_FALSE(Has("Zero, Zoe"));
  EXPECT_TRUE(Has("WILL NOT equal that of your"));

  // 603 (undated, 30) marked complete: the statement takes it, as it has no
  // settled total, and it is of no known age.
  Exec("UPDATE Invoices SET [Complete?] = 1 WHERE ID = 603;");
  reports.rptPatientAccountStatus("", DateTime::FromParts(2026, 11, 20));
  // Seamus as above, with 30 more in > 90: owed 160, balance 160 - 15.
  EXPECT_TRUE(Has("O'Brien, Seamus $145.00 $15.00 $0.00 $0.00 $30.00 $100.00 $30.00")) << Text();
}

TEST_F(FamiliesWithABalance, FamiliesByPrimaryHolder) {
  // Whole amounts for Luc, and a post-dated invoice of his.
  Exec(
      "UPDATE Invoices SET InvoiceTotal = 100 WHERE ID = 111;"
      "UPDATE Invoices SET InvoiceTotal = 50 WHERE ID IN (112, 113);"
      "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal) VALUES "
      "(107, 1007, 2, '2026-12-01 00:00:00', 1, 35);");
  reports.rptFamiliesWithABalance("dana");
  EXPECT_EQ(form.ShowCount(), 1);
  // Claire: 101, 102 paid; 103 (complete, cancelled) 90 overdue (10-20 is
  // 31 days back); 105 60 current (its 40 is on a cheque dated tomorrow);
  // 106 25 current (exactly 30 days). 104 is in progress. 175.
  EXPECT_TRUE(HasAll(
      Text(), {"Claire $175.00 $0.00 $85.00 $90.00",
               // Luc: 111 paid; 112 and 113 50 each overdue; 107 35 post-dated. 135.
               "Luc $135.00 $35.00 $0.00 $100.00",
               // Marc: 121 75 current.
               "Marc $75.00 $0.00 $75.00 $0.00",
               // Family A: 175 + 135 + 75 = 385; post 35; current 85 + 75 = 160;
               // overdue 90 + 100 = 190.
               "Tremblay, Claire $385.00 $35.00 $160.00 $190.00",
               // Family B: Priya's 131 was paid by Arjun; Arjun's 141 40 current.
               "Singh, Priya $40.00 $0.00 $40.00 $0.00", "Arjun $40.00 $0.00 $40.00 $0.00",
               // Priya owes nothing of her own: her row still stands in her family.
               "Singh, Priya $40.00 $0.00 $40.00 $0.00\n  Priya $0.00 $0.00 $0.00 $0.00\n"}));
  // Nadia is nobody's primary holder of herself: no family.
  EXPECT_FALSE(Has("Roy, Nadia"));
  // 385 + 40 = 425; 35; 160 + 40 = 200; 190.
  EXPECT_TRUE(Has("$425.00 $35.00 $200.00 $190.00")) << Text();
}

TEST_F(PatientsWithACredit, OnlyMoneyOnFileTodayOrNone) {
  Exec("UPDATE InvoicePayments SET Value = 10, TotalToCredit = 10 WHERE ID = 221;");
  reports.rptPatientswithACredit("dana");
  EXPECT_EQ(form.VSP.Orientation(), 1);
  // Credits today, payments less their shares on invoices: Claire
  // 400 - 350 = 50; Luc 126 - 100 = 26; Priya 75; Marc 10; Seamus
  // 70 - 55 = 15. Arjun, Nadia and Emile have all theirs applied; Zoe's
  // cheque is dated 12-05.
  EXPECT_TRUE(HasAll(Text(), {"Credit: $50.00", "Credit: $26.00", "Credit: $15.00"}));
  EXPECT_TRUE(HasNone(Text(), {"Singh, Arjun", "Zero, Zoe"}));
  // 50 + 26 + 75 + 10 + 15 = 176.
  EXPECT_TRUE(Has("Total Credit On File: $176.00")) << Text();

  Exec("DELETE FROM InvoicePaymentDetails; DELETE FROM InvoicePayments;");
  reports.rptPatientswithACredit("");
  EXPECT_TRUE(HasAll(Text(), {"None on file.", "Total Credit On File: $0.00"}));
}

TEST_F(OutstandingTreatment, ListsOpenWorkOfPatientsWithBothCarriers) {
  Exec(
      "INSERT INTO InsuranceCompany (ID, CompanyName) VALUES (1, 'North Mutual'), (2, 'Lakeside');"
      "INSERT INTO Employers (ID, Name) VALUES (11, 'Mill Co'), (12, 'Harbour Ltd');"
      "UPDATE Patient SET InsuranceID = 1, SecondaryInsuranceID = 2 WHERE ID = 1;"
      "UPDATE Patient SET InsuranceID = 1, EmployerID = 11 WHERE ID = 2;"
      "INSERT INTO PatientTreatmentPlan (ID, PatientID, Code, [Tooth#], Surface, Cost) VALUES "
      "(1, 1, '23111', '36', 'MO', 150.5), (2, 2, '01202', '', '', 40);"
      "INSERT INTO PatientFuture (ID, PatientID, Description, EstScheduleDate, Units, "
      "[ShortNotice?], "
      "Estimate) VALUES (1, 1, 'Recall', '2027-01-15 00:00:00', 2, 1, 95);"
      "INSERT INTO PatientPredTreatments (ID, PatientID, TotalAmount, TotalBenefitAmount, "
      "ReminderDate) "
      "VALUES (1, 1, 3049, 640.25, '2026-12-15 00:00:00');");
  reports.rptPatientswithOustandingTreatment("dana");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  // Claire's credit today: 50. Her balance: live complete invoices to date
  // 200 + 150 + 60 + 25 = 435, less every share on them 80 + 120 + 150 + 40
  // = 390, less her own credit (patient payments 80 + 200 less 80 + 150 =
  // 50): -5.
  EXPECT_TRUE(HasAll(
      Text(),
      {"Tremblay, Claire Credit($): $50.00 Balance($): -$5.00",
       // The figures and the reminder date print as they are held, under
       // labels that carry their own "($)": no second sign.
       "Procedure: 23111 Tooth #: 36 Surface: MO Fee: 150.5", "Planned Appointment: Recall",
       "Jan/15/2027", "ShortNotice?: Yes Estimate($): 95",
       "Treatment Plan: Total($): 3049 Benefit Amount($): 640.25 Reminder", "Date: 2026-12-15"}));
  EXPECT_TRUE(HasNone(Text(), {"$150",
                               // Luc has a plan but no second insurer or employer: left out.
                               "Tremblay, Luc"}));
}

// A patient, an address and a fee code's description holding "|" and ";"
// print inside their cells in every patient list of the family.
TEST_F(BillingByClient, SeparatorsInTheDataStayInTheirCells) {
  const std::string forged = kForgedLastName;
  Exec("UPDATE Patient SET LastName = '" + forged + "', FullName = '" + forged + ", Claire', " +
       "Address = '" + kForgedStreet + "', InsuranceID = 1, SecondaryInsuranceID = 1, " +
       "EmployerID = 11, SecondaryEmployerID = 11 WHERE ID IN (1, 3);" +
       "INSERT INTO InsuranceCompany (ID, CompanyName) VALUES (1, 'North;Mutual');" +
       "INSERT INTO Employers (ID, Name) VALUES (11, 'Mill|Co');" +
       "INSERT INTO FeeCodes (ID, Description) VALUES ('01202', 'Recall;exam|A'), ('23111', 'F');" +
       "INSERT INTO PatientTreatmentPlan (ID, PatientID, Code, [Tooth#], Surface, Cost) VALUES " +
       "(1, 1, '23;11', '36', 'MO', 150);");
  struct Case {
    const char* name;
    std::function<void()> run;
    std::vector<std::string> cells;
  };
  const Case cases[] = {
      {"account status", [&] { reports.rptPatientAccountStatus("", kToday); }, {forged + ","}},
      {"families", [&] { reports.rptFamiliesWithABalance(""); }, {forged + ","}},
      {"credit", [&] { reports.rptPatientswithACredit(""); },
       {forged + ",", kForgedStreet, "North;Mutual", "Mill|Co"}},
      {"outstanding treatment", [&] { reports.rptPatientswithOustandingTreatment(""); },
       {forged + ",", "Procedure: 23;11"}},
      {"billing", [&] { reports.rptBillingByClient("", "0", "", ""); }, {"Recall;exam|A"}},
  };
  for (const Case& c : cases) {
    c.run();
    EXPECT_TRUE(host.messages.empty()) << c.name;
    for (const std::string& cell : c.cells) ExpectWholeCell(form.VSP.Document(), cell, c.name);
  }
}

TEST_F(BillingByClient, EachPatientsInvoicesLineByLine) {
  Exec(
      "INSERT INTO FeeCodes (ID, Description) VALUES ('01202', 'Recall exam'), ('23111', "
      "'Filling');");
  reports.rptBillingByClient("dana", "0", "", "");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_TRUE(HasAll(Text(), {"Claire Tremblay",
                              // Lines with a known fee code, under the invoice's provider.
                              "Moreau, Anne 1001 Sep/10/2026 01202 Recall exam $120.00",
                              "Moreau, Anne 1002 Oct/05/2026 23111 Filling $150.00",
                              "Moreau, Anne 1005 Oct/21/2026 01202 Recall exam $60.00"}));
  // Luc's invoices name no provider: he has no invoice here.
  EXPECT_FALSE(Has("Luc Tremblay"));

  reports.rptBillingByClient("dana", "ID = 6", "", "");
  EXPECT_FALSE(Has("Claire Tremblay"));
  EXPECT_TRUE(Has("Seamus O'Brien"));
}

}  // namespace
}  // namespace orv::testing
