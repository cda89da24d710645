// The patients with a balance and the unapplied payments. Figures by hand
// from the rows of accounts/account_fixture.h; the end date is 2026-11-20
// (E), so E-30 = 10-21, E-60 = 09-21, E-90 = 08-22.
#include <gtest/gtest.h>

#include "accounts/account_fixture.h"
#include "frame/surface/surface.h"
#include "support/forged_cells.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using PatientsWithABalance = LedgerTest;
using UnappliedPayments = LedgerTest;

const DateTime kEnd = DateTime::FromParts(2026, 11, 20);

TEST_F(PatientsWithABalance, AgesEachInvoiceAndSplitsTheObligations) {
  // The insurer pays 30 of invoice 105 on 11-19.
  Exec(
      "INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value, "
      "TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES (206, 1, 3, 1, 30, "
      "30, "
      "0, '2026-11-19 00:00:00', '2026-11-19 00:00:00', 1);"
      "INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES "
      "(10, 206, 105, 30, '2026-11-19 00:00:00');");
  reports.rptPatientsWithABalance("dana", kEnd, "ProviderID = 1");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(form.Visible());
  EXPECT_EQ(form.VSP.DocName(), "Patients With A Balance");
  EXPECT_TRUE(
      HasAll(Text(), {"Ending Nov/20/2026", "Providers: Moreau",
                      // "Post Dates" wraps in its .6in column.
                      "Patient Balance Interest 0-30 Days > 30 Days > 60 Days > 90 Days",
                      // Claire, provider 1's invoices: 101 and 102 fully paid, not aged.
                      // 103 (10-20, 31 days) 90 in > 30. 104 300, 106 (10-21, exactly 30
                      // days) 25 and 105 60 - 30 = 30 in 0-30: 355. Balance 445.
                      // Post dates: 105's 40 on a cheque entered 11-10, dated 11-21.
                      "Tremblay, Claire $445.00 $0.00 $40.00 $355.00 $90.00 $0.00 $0.00",
                      // 105 is assigned with no patient total: the patient owes nothing of
                      // it; the insurer 60 less its own 30 = 30. Claire's 40 cheque is not the
                      // insurer's.
                      // The obligation rows leave the name column empty and carry their label
                      // in the Balance column (where it wraps); the patient's row carries the
                      // patient's interest and post dates, the insurer's leaves them empty.
                      "Patient\n$0.00 $40.00 $0.00 $0.00 $0.00 $0.00\nObligation\n",
                      "Insurance\n$30.00 $0.00 $0.00 $0.00\nObligation\n"}));
  // Nobody else has an invoice of provider 1, and credits do not count.
  EXPECT_TRUE(HasNone(Text(), {"Tremblay, Luc", "Singh, Priya"}));
  EXPECT_TRUE(
      HasAll(Text(), {"Office Totals: $445.00 $0.00 $40.00 $355.00 $90.00 $0.00 $0.00",
                      "Balance = 0 Days + 30 Days + 60 Days + 90 Days",
                      "Post Dates and Interest Columns are for informational purposes only.",
                      "This report DOES NOT include credits."}));
  EXPECT_EQ(form.VSP.Orientation(), 0);

  // The cells of the rows under the patient, by position: the name column
  // is empty, the label stands in the first figure column; and the line
  // naming the providers is centred between the margins.
  const render::Document& doc = form.VSP.Document();
  const Twips left = form.VSP.MarginLeft();
  const Twips name_column = Twips::Inches(1.5);
  const auto names = RunsOf(doc, "Tremblay, Claire");
  ASSERT_EQ(names.size(), 1u) << Text();
  for (const char* label : {"Patient", "Insurance"}) {
    // The column head "Patient" stands in the name column; the label in
    // the next one.
    bool in_balance_column = false;
    for (const render::TextRun& run : RunsOf(doc, label)) {
      EXPECT_TRUE(run.x < left + name_column || run.top > names[0].top) << label;
      if (run.x >= left + name_column && run.top > names[0].top) in_balance_column = true;
    }
    EXPECT_TRUE(in_balance_column) << label << "\n" << Text();
  }
  EXPECT_TRUE(RunsOf(doc, "Patient Obligation").empty());
  EXPECT_TRUE(RunsOf(doc, "Insurance Obligation").empty());

  const auto providers = RunsOf(doc, "Providers: Moreau");
  ASSERT_EQ(providers.size(), 1u) << Text();
  const Twips middle = (left + form.VSP.PageWidth() - form.VSP.MarginRight()) / 2;
  const Twips run_middle = providers[0].x + providers[0].width / 2;
  EXPECT_LT(std::abs((run_middle - middle).value()), 20) << run_middle.value() << " vs " << middle.value();
}

TEST_F(PatientsWithABalance, WithCreditsTheRowsCarryDebitCreditAndBalance) {
  form.VSP.StartDoc();
  reports.srptPatientsWithaBalance("", kEnd, "ProviderID = 2", 0, false);
  form.VSP.EndDoc();
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(HasAll(
      Text(), {"Patient Debit Credit Balance Interest 0-30 Days > 30 Days > 60 Days > 90 Days",
               // Seamus: 601 (09-06, 75 days) 100 unpaid in > 60; 602 is settled with
               // no final date and 603 undated: neither is selected. Payment 611 is all
               // on 602: no credit.
               "O'Brien, Seamus $100.00 $0.00 $100.00 $0.00 $0.00 $0.00 $0.00 $100.00 $0.00",
               // Claire owes provider 2 nothing, but payment 203 (provider 2) has
               // 200 - 150 = 50 left.
               "Tremblay, Claire $0.00 $50.00 -$50.00 $0.00 $0.00 $0.00 $0.00 $0.00 $0.00",
               // Debit 100, credit 50, balance 50.
               "Office Totals: $100.00 $50.00 $50.00 $0.00 $0.00 $0.00 $0.00 $100.00 $0.00"}));
  EXPECT_FALSE(Has("This report DOES NOT include credits."));

  // Without credits the patient whose only entry is money on file goes.
  form.VSP.StartDoc();
  reports.srptPatientsWithaBalance("", kEnd, "ProviderID = 2", 0, true);
  form.VSP.EndDoc();
  EXPECT_FALSE(Has("Tremblay, Claire"));
  EXPECT_TRUE(Has("O'Brien, Seamus $100.00 $0.00 $0.00 $0.00 $0.00 $100.00 $0.00"));
}

TEST_F(PatientsWithABalance, OverseerAndPreferredDoctorViews) {
  // Okafor (3) oversees 101 (paid) and 105: 60 in 0-30, with its post-dated
  // 40. No payment names him, and the payments query still runs.
  reports.rptPatientsWithABalance("", kEnd, "ProviderID = 3", 1);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(HasAll(Text(), {"Overseers: Okafor",
                              "Tremblay, Claire $60.00 $0.00 $40.00 $60.00 $0.00 $0.00 $0.00"}));

  // Chen (2) is the preferred doctor on invoice 104 and Claire's own
  // doctor, so her payments are his too.
  Exec(
      "UPDATE Invoices SET DoctorID = 2 WHERE ID = 104; UPDATE Patient SET DoctorID = 2 WHERE ID = "
      "1;");
  reports.rptPatientsWithABalance("", kEnd, "ProviderID = 2", 2);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(HasAll(Text(), {"Preferred Doctors: Chen",
                              "Tremblay, Claire $300.00 $0.00 $0.00 $300.00 $0.00 $0.00 $0.00"}));
}

TEST_F(PatientsWithABalance, FailureShowsTheTrapMessage) {
  form.VSP.StartDoc();
  reports.srptPatientsWithaBalance("", kEnd, "NoSuchColumn = 1", 0, true);
  ASSERT_TRUE(SaidOnce(
      host, "An error has occurred in sub srptPatientsWithaBalance in Class clsReports\n"));
}

TEST_F(UnappliedPayments, ListsMoneyLeftOverByProviderDateAndPayee) {
  reports.rptUnAppliedPayments(kEnd, "dana");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 1);
  const std::string text = Text();
  EXPECT_TRUE(HasAll(text, {"Ending: Nov/20/2026",
                            // The heads wrap in their narrow columns; the first and the last stand.
                            "Payee", "Credit($)"}));
  // Chen first: 203, 200 less 150 applied. Then Moreau's by cheque date:
  // 261 (09-01), 232 (10-01), 233 (10-02), 212 (11-01).
  EXPECT_TRUE(InOrder(text, {"Tremblay, Claire 203 Chen Oct/6/2026 $200.00 $50.00",
                             "O'Brien, Seamus 261 Moreau Sep/1/2026 $20.00 $20.00",
                             "Singh, Priya 232 Moreau Oct/1/2026 $60.00 $60.00",
                             "Singh, Priya 233 Moreau Oct/2/2026 $15.00 $15.00",
                             "Tremblay, Luc 212 Moreau Nov/1/2026 $26.00 $26.00"}));
  // Left out: fully applied payments, Marc's refunded 10.0050, 262 applied
  // beyond its value (-5), and cheques dated after the end (204, 205, 271).
  EXPECT_TRUE(HasNone(text, {"Tremblay, Marc", " 262 ", " 204 ", "Zero, Zoe"}));
  // 50 + 20 + 60 + 15 + 26 = 171.
  EXPECT_NE(text.find("Total Unapplied Payments: $171.00"), std::string::npos) << text;
}

// A refund is tested by its day, as every other date of the list: one paid
// back in the afternoon of the end date is paid back by it.
TEST_F(UnappliedPayments, ARefundOnTheEndDateAFilterAFailureAndSeparators) {
  Exec("UPDATE InvoicePayments SET RefundDate = '2026-11-20 15:30:00' WHERE ID = 221;");
  reports.rptUnAppliedPayments(kEnd, "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_FALSE(Has("Tremblay, Marc")) << Text();
  EXPECT_TRUE(Has("Total Unapplied Payments: $171.00")) << Text();

  form.VSP.StartDoc();
  reports.srptUnAppliedPayments(kEnd, "", "InitialProviderID = 2");
  form.VSP.EndDoc();
  EXPECT_NE(Text().find("Total Unapplied Payments: $50.00"), std::string::npos) << Text();
  EXPECT_EQ(Text().find("Moreau"), std::string::npos);

  form.VSP.StartDoc();
  reports.srptUnAppliedPayments(kEnd, "", "NoSuchColumn = 1");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].title, " Error in Class clsReport.srptUnAppliedPayments");

  // Names holding "|" and ";" stay in their cells in both lists.
  Exec(std::string("UPDATE Patient SET LastName = '") + kForgedLastName + "', FullName = '" +
       kForgedLastName + ", Claire' WHERE ID = 1; UPDATE Employees SET LastName = '" +
       kForgedLastName + "' WHERE ID = 2;");
  reports.rptUnAppliedPayments(kEnd, "");
  ExpectWholeCell(form.VSP.Document(), std::string(kForgedLastName) + ",", "unapplied payments");
  reports.rptPatientsWithABalance("", kEnd, "");
  ExpectWholeCell(form.VSP.Document(), std::string(kForgedLastName) + ",",
                  "patients with a balance");
}

}  // namespace
}  // namespace orv::testing
