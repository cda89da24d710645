// The provider summary and the hygiene company report on November of
// the closing practice (closing_practice.h); figures by hand.
#include <gtest/gtest.h>

#include "closing/closing_practice.h"
#include "support/forged_cells.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

using ProviderSummary = ProductionTest;
using HygieneCompany = ProductionTest;

TEST_F(ProviderSummary, FeesOnceAPaymentsAsAppliedAndTheNewReceivable) {
  reports.ProductSumReport(Nov(1), Nov(30), "dana");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_TRUE(HasAll(
      Text(), {"Provider Summary Report", "From Nov/1/2026 to Nov/30/2026", "Fees($) Payments($)",
               "Provider Dental Lab Int. W/O Net Dental Labs Adjusts Net",
               // Chen: 73 (100, two allocations, counted once) + 74 (50) + the
               // reversal 75 (-120) = 30; 74's write-off -10; net 20. Payments on his
               // lines: 80 + 50 + 20 = 150.
               "Chen, Paul 30.00 0.00 0.00 (10.00) 20.00 150.00 0.00 0.00 150.00",
               // Moreau: 71 100, 76 -50 (no exclusion here), 77 50, 79 entered and
               // cancelled in the period: 0; lab 72 200. The 20 on the lab line is a
               // lab payment; the discount -5 is an adjustment: net 20 + 5.
               "Moreau, Anne 100.00 200.00 0.00 0.00 300.00 0.00 20.00 (5.00) 25.00",
               "Total 130.00 200.00 0.00 (10.00) 320.00 150.00 20.00 (5.00) 175.00"}));
  // Okafor did nothing: no row.
  EXPECT_FALSE(Has("Okafor"));
  // Hygienists: Chen alone.
  EXPECT_TRUE(HasAll(
      Text(), {"Chen, Paul 30.00 0.00 30.00 100.00", "Hygenists Totals 30.00 0.00 30.00 100.00",
               // New receivable: nothing of theirs before November. By the end,
               // Moreau 100 + 200 - 50 + 50 + 60 less 20 and -5 applied: 345; Chen 30
               // less 80 + 50 + 20 - 10: -110.
               "Moreau, Anne 0.00 345.00", "Chen, Paul 0.00 (110.00)", "Total 0.00 235.00"}));
  // The partnership report is this summary under its other name (drawn
  // into a run: ClosingPackages.SectionsComeInTheirFixedOrder).
  const std::string alone = Text();
  PreviewForm& partnership = FreshForm();
  reports.rptPartnershipReport(Nov(1), Nov(30), "dana");
  EXPECT_EQ(DocumentText(partnership.VSP.Document()), alone);
}

TEST_F(ProviderSummary, AReversedLabFeeIsLabInProductionButDentalHere) {
  Exec("INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, "
       "ProviderID) VALUES (80, 701, '-99111', -30, 'Complete', '2026-11-02 00:00:00', "
       "'2026-11-02 00:00:00', 1);");
  // Production takes "-99" as lab: 200 - 30.
  InDocument([&] { reports.srptProductionByProvider(Nov(1), Nov(30), "", "", "", 0); });
  EXPECT_TRUE(Has("Overall Total: Production Total 410.00 Lab Total 170.00")) << Text();
  // The summary's lab is "99" only: the reversal lowers Moreau's dental.
  PreviewForm& summary = FreshForm();
  reports.ProductSumReport(Nov(1), Nov(30), "dana");
  const std::string text = DocumentText(summary.VSP.Document());
  EXPECT_NE(text.find("Moreau, Anne 70.00 200.00 0.00 0.00 270.00"), std::string::npos) << text;
}

TEST_F(HygieneCompany, SplitsEachPaymentByTheHygieneLines) {
  reports.rptHygieneCompanyReport(Nov(1), Nov(30), "", "dana");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(HasAll(Text(), {"Nov/01/2026 To Nov/30/2026",
                              // Chen. Billed 702 150 and 703 -120: 30, less the write-off 10: 20.
                              // Paid 130 + 20. Of 702 (150) the hygiene line is 73 (100); of 703
                              // the reversal -120: hygiene -20, less the write-off's share -10 x
                              // 100/150 = -6.67: -26.67. The payments' shares 130 x 100/150 = 86.67
                              // and 20 x 100/150 = 13.33, each rounded to the cent: 100.00.
                              "Paul Chen $20.00 $150.00 -$26.67 $100.00 $46.67 $50.00",
                              "Ben Okafor $0.00 $0.00 $0.00 $0.00 $0.00 $0.00",
                              "Overall $20.00 $150.00 -$26.67 $100.00 $46.67 $50.00",
                              // Hill's February invoice 904 opens the period owing 70, of
                              // which the company's line 95 (90): Seamus's cheque on it is of
                              // a type without an adjustment flag, which takes no side.
                              // Closing: 70 + 20 - 150 and 90 - 26.67 - 100.
                              "Opening AR From Selected Hygienists: $70.00",
                              "Opening AR From Hygiene Company : $90.00",
                              "Closing AR From Selected Hygienists: -$60.00",
                              "Closing AR From Hygiene Company : -$36.67",
                              // The company's payments by type, whatever the types' IDs.
                              "Breakdown of the Hygiene applied payments:", "Cash $86.67",
                              "Insurance Cheque $13.33", "Total $100.00"}));
}

TEST_F(HygieneCompany, TheClosingFollowsFromTheOpeningWhereverThePeriodStarts) {
  // From 11-06 invoice 702 (11-05) is in the opening, unpaid at the start:
  // 150, of which the company's 100. The closing is as before.
  reports.rptHygieneCompanyReport(Nov(6), Nov(30), "ID = 2", "dana");
  EXPECT_TRUE(HasAll(Text(), {"Opening AR From Selected Hygienists: $150.00",
                              "Opening AR From Hygiene Company : $100.00",
                              "Closing AR From Selected Hygienists: -$130.00",
                              "Closing AR From Hygiene Company : -$126.67"}));
}

TEST_F(HygieneCompany, NoHygienistsNoCodesAndBadFilters) {
  // Nobody selected: the opening and closing lines alone.
  reports.rptHygieneCompanyReport(Nov(1), Nov(30), "ID = 1 AND TypeID = 5", "dana");
  EXPECT_TRUE(HasAll(Text(), {"Opening AR From Selected Hygienists: $0.00",
                              "Closing AR From Hygiene Company : $0.00"}));
  EXPECT_TRUE(HasNone(Text(), {"Net Billing", "Breakdown"}));

  // An office without codes: the two sentences, and no document.
  PreviewForm& other = FreshForm();
  reports.OfficeID = 9;
  reports.rptHygieneCompanyReport(Nov(1), Nov(30), "", "dana");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "You must setup the codes you wish to use for your hygiene company before you can "
            "run this report.\nTo do so go to Office Setup and click on the Hygiene Company tab "
            "and add the codes you wish to use.");
  EXPECT_EQ(other.VSP.PageCount(), 0);

  // A filter the database refuses: the section's trap text.
  host.messages.clear();
  reports.OfficeID = 1;
  other.VSP.StartDoc();
  reports.srptHygieneCompanyReport(Nov(1), Nov(30), "NoSuchColumn = 1");
  other.VSP.EndDoc();
  ASSERT_TRUE(SaidOnce(
      host, "An Error has occurred in Sub srptHygieneCompanyReport in Class clsReports.\n"));
}

}  // namespace
}  // namespace orv::testing

namespace orv::testing {
namespace {

using ProductionSeparators = ProductionTest;

// Names holding the table's separators print whole in their cells in
// every section and report of this family.
TEST_F(ProductionSeparators, NamesStayInTheirCells) {
  Exec(std::string("UPDATE Patient SET LastName = '") + kForgedLastName + "' WHERE ID = 3;" +
       "UPDATE Employees SET LastName = '" + kForgedLastName + "', FullName = 'Paul " +
       kForgedLastName + "' WHERE ID = 2;" + "UPDATE PaymentTypes SET Name = 'Cash|Till;2' " +
       "WHERE ID = 1;" + "UPDATE FeeCodes SET Description = 'Scaling; one unit|x' " +
       "WHERE ID = '11101';");
  const std::string patient = std::string("Priya ") + kForgedLastName;
  const std::string hygienist = std::string("Paul ") + kForgedLastName;
  reports.rptProductionReports(true, true, true, true, true, true, Nov(1), Nov(30), 0, "dana", "",
                               "", "");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  ExpectWholeCell(form.VSP.Document(), patient, "production by provider and by code");
  ExpectWholeCell(form.VSP.Document(), "Provider: RDH " + hygienist, "provider heading");
  ExpectWholeCell(form.VSP.Document(), "RDH " + hygienist, "production summary");
  ExpectWholeCell(form.VSP.Document(), "11101: Scaling; one unit|x", "code heading");

  PreviewForm& summary = FreshForm();
  reports.ProductSumReport(Nov(1), Nov(30), "dana");
  ExpectWholeCell(summary.VSP.Document(), std::string(kForgedLastName) + ", Paul",
                  "provider summary");

  PreviewForm& hygiene = FreshForm();
  reports.rptHygieneCompanyReport(Nov(1), Nov(30), "", "dana");
  ExpectWholeCell(hygiene.VSP.Document(), hygienist, "hygiene company");
  ExpectWholeCell(hygiene.VSP.Document(), "Cash|Till;2", "payment type breakdown");
}

}  // namespace
}  // namespace orv::testing
