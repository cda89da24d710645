// The aged receivables: the practice list on treatment lines and
// allocations, and the provider list on invoices. Figures by hand from the
// rows of accounts/account_fixture.h; today and the as-of day are
// 2026-11-20.
#include <gtest/gtest.h>

#include "accounts/account_fixture.h"
#include "frame/surface/surface.h"
#include "support/forged_cells.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using PracticeReceivable = LedgerTest;
using ProviderReceivable = LedgerTest;

// The practice list draws into a running document.
void RunPractice(clsReports& reports, PreviewForm& form, int16_t option,
                 const std::string& filter) {
  form.VSP.StartDoc();
  reports.srptAccountReceivable(DateTime::FromParts(2026, 11, 20), option, filter, "dana");
  form.VSP.EndDoc();
}

// A name holding "|" and ";" stays in its cell in both lists.
TEST_F(PracticeReceivable, SeparatorsInNames) {
  Exec(std::string("UPDATE Patient SET LastName = '") + kForgedLastName +
       "' WHERE ID = 1; UPDATE Employees SET FullName = '" + kForgedLastName + "' WHERE ID = 1;");
  RunPractice(reports, form, 0, "");
  ExpectWholeCell(form.VSP.Document(), std::string(kForgedLastName) + ",", "practice list");

  reports.rptAccountsReceivable("", "", "", "");
  ExpectWholeCell(form.VSP.Document(), kForgedLastName, "provider list");
}

TEST_F(PracticeReceivable, WholePracticeWithoutFilter) {
  RunPractice(reports, form, 0, "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(
      HasAll(Text(), {"Accounts Receivable for the Practice", "Printed on: Nov/20/2026", "By: dana",
                      "Period Ending: Nov/20/2026",
                      "Patient Balance Patient Insurance Credit 0-30 31-60 61-90 > 90 Post Dates",
                      // Claire. Charges: complete lines 120 + 80 + 150 + 60 + 90 = 500 (line 5
                      // is only planned); allocated by D: 48 + 32 + 72 + 48 + 150 = 350; Debit
                      // 150. Her share: 48 + 32 + 150 + 0 + 90 = 320 less the allocations of
                      // payments without an insurer (48 + 32 + 150 = 230) = 90; insurance
                      // 150 - 90 = 60. Credit: cheques by D 80 + 120 + 200 = 400 less their
                      // allocations 350 = 50. Balance 150 - 50 = 100.
                      // 0-30 (10-21..11-20): line 4, 60. 31-60 (09-21..10-20): line 6 90, line 3
                      // 150 - 150 = 0. 61-90 (08-22..09-20): lines 1, 2: 200 - 200 = 0.
                      // Post dates: cheques entered by D and dated after it: 40 + 30 = 70.
                      "Tremblay, Claire 100.00 90.00 60.00 50.00 60.00 90.00 0.00 0.00 70.00",
                      // Luc has only money on account: 100 + 26 - 0 allocated.
                      "Tremblay, Luc -126.00 0.00 0.00 126.00 0.00 0.00 0.00 0.00 0.00"}));
  // Zoe's only cheque is post-dated: Debit and Credit 0, so no row.
  EXPECT_FALSE(Has("Zero, Zoe"));
  // No line is charged to anyone else, so every other row is credit:
  // Luc 126, Priya 60 + 15 = 75, Arjun 80, Marc 10.0050 (a refund is not
  // this report's business), Seamus 20 + 40 + 10 = 70 (611's share is on an
  // invoice, not on a line), Nadia 100.04, Emile 33.3250: 494.37. With
  // Claire's 50 the credit is 544.37; balance 150 - 544.37 = -394.37.
  EXPECT_TRUE(Has("Balances -394.37 90.00 60.00 544.37 60.00 90.00 0.00 0.00 70.00")) << Text();
}

TEST_F(PracticeReceivable, ProviderFilterTestsLinesAndPaymentsApart) {
  // "ProviderID = 2": charges and allocations on lines of provider 2 (lines
  // 4 and 6), payments taken in by provider 2 (203, 611).
  RunPractice(reports, form, 0, "ProviderID = 2");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  // Claire: Debit 60 + 90 = 150, nothing allocated to those lines. Share
  // 0 + 90 = 90; insurance 60. Credit: 203's 200 less its 150 allocated =
  // 50. Balance 100. 0-30 line 4 60; 31-60 line 6 90. Her post-dated
  // cheques were taken in by provider 1: 0.
  EXPECT_TRUE(
      HasAll(Text(), {"Tremblay, Claire 100.00 90.00 60.00 50.00 60.00 90.00 0.00 0.00 0.00",
                      // Seamus: payment 611, 40, none of it allocated to a line: credit 40.
                      "O'Brien, Seamus -40.00 0.00 0.00 40.00 0.00 0.00 0.00 0.00 0.00"}));
  EXPECT_FALSE(Has("Tremblay, Luc"));
  EXPECT_TRUE(Has("Balances 60.00 90.00 60.00 90.00 60.00 90.00 0.00 0.00 0.00")) << Text();
}

TEST_F(PracticeReceivable, OverseerFormTakesTheShareFromTheInsurersCosts) {
  // Employee 3 oversees invoices 101 and 105: lines 1, 2 and 4.
  RunPractice(reports, form, 1, "ProviderID = 3");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  // Debit: 120 + 80 + 60 = 260 less 48 + 32 + 72 + 48 = 200: 60.
  // Share by cost less insurers: (260 - 72 - 48 - 50) = 90, less the
  // patient's allocations 48 + 32 = 80: 10 (PatientCost would give 0 - 0).
  // Insurance 60 - 10 = 50. No payment taken in by employee 3: credit 0.
  // 0-30: line 4 60; 61-90: lines 1, 2 200 - 200 = 0.
  EXPECT_TRUE(HasAll(Text(), {"Tremblay, Claire 60.00 10.00 50.00 0.00 60.00 0.00 0.00 0.00 0.00",
                              "Balances 60.00 10.00 50.00 0.00 60.00 0.00 0.00 0.00 0.00"}));
}

TEST_F(PracticeReceivable, BoundsPreferredDoctorAndTheTrapMessage) {
  // As of 2026-11-21 line 4 (10-21) is 31 days old and line 6 (10-20) 32:
  // both in 31-60 (60 + 90 = 150), and 0-30 is empty.
  form.VSP.StartDoc();
  reports.srptAccountReceivable(DateTime::FromParts(2026, 11, 21), 0, "ProviderID = 2", "");
  form.VSP.EndDoc();
  EXPECT_TRUE(Has("Tremblay, Claire 100.00 90.00 60.00 50.00 0.00 150.00 0.00 0.00 0.00"))
      << Text();

  Exec("UPDATE Patient SET DoctorID = 2 WHERE ID = 1;");
  RunPractice(reports, form, 2, "ProviderID = 2");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  // Claire's whole account, as without a filter; nobody else.
  EXPECT_TRUE(Has("Tremblay, Claire 100.00 90.00 60.00 50.00 60.00 90.00 0.00 0.00 70.00"))
      << Text();
  EXPECT_FALSE(Has("Tremblay, Luc"));

  RunPractice(reports, form, 0, "NoSuchColumn = 1");
  ASSERT_TRUE(
      SaidOnce(host, "An error has occurred in sub srptAccountReceivable in Class clsReports\n"));
}

TEST_F(ProviderReceivable, AgesByProviderFromToday) {
  reports.rptAccountsReceivable("", "", "", "dana");
  EXPECT_EQ(form.VSP.DocName(), "Accounts Receivable");
  EXPECT_EQ(form.ShowCount(), 1);
  const std::string text = Text();
  EXPECT_TRUE(HasAll(
      text,
      {"Provider Total Current 31-60 Days 61-90 Days > 91 Days Incomplete",
       // Chen (provider 2): 601, 75 days old and unpaid: 31-60 (no lower bound),
       // P 100. 602: settled at 100 today, 40 paid: P 60, I 120 - 100 = 20,
       // Current. 603: undated: > 91, P 30, and incomplete 30.
       // Total P 190, I 20, 210. Shares 80/210 = 38.10%, 100/210 = 47.62%,
       // 0.00%, 30/210 = 14.29%.
       "Chen, Paul P: $190.00 $60.00 $100.00 $0.00 $30.00 $30.00",
       "I: $20.00 $20.00 $0.00 $0.00 $0.00", "Total: $210.00 $80.00 $100.00 $0.00 $30.00",
       "38.10% 47.62% 0.00% 14.29%",
       // Moreau (provider 1): 101 and 102 fully paid, skipped. 103 (10-20, 90,
       // cancelled but still selected) 31-60. 104 (11-15, 300, in progress)
       // Current and incomplete 300. 105 (11-18, 60, its 40 is dated tomorrow)
       // Current 60. 106 (10-21, exactly 30 days) Current 25.
       // Current 385, 31-60 90, total 475: 81.05% and 18.95%.
       "Moreau, Anne P: $475.00 $385.00 $90.00 $0.00 $0.00 $300.00", "81.05% 18.95% 0.00% 0.00%",
       // Grand: 210 + 475 = 685; Current 80 + 385 = 465; 31-60 190; > 91 30;
       // incomplete 330.
       "Grand Totals $685.00 $465.00 $190.00 $0.00 $30.00 $330.00"}));
  // Progress per provider: three of them.
  EXPECT_EQ(progress, (std::vector<uint8_t>{33, 67, 100}));
}

TEST_F(ProviderReceivable, FiltersSelectProvidersAndInvoices) {
  reports.rptAccountsReceivable("", "ID = 1", "ID <> 104", "");
  const std::string text = Text();
  EXPECT_EQ(text.find("Chen, Paul"), std::string::npos);
  // Without 104: Current 60 + 25 = 85, 31-60 90, total 175; nothing
  // incomplete. 85/175 = 48.571 -> 48.57%, 90/175 = 51.43%.
  EXPECT_TRUE(HasAll(text, {"Moreau, Anne P: $175.00 $85.00 $90.00 $0.00 $0.00 $0.00",
                            "48.57% 51.43% 0.00% 0.00%"}));
  // "0" means no filter.
  reports.rptAccountsReceivable("", "0", "0", "");
  EXPECT_NE(Text().find("Chen, Paul"), std::string::npos);
}

}  // namespace
}  // namespace orv::testing
