// Invoices, invoice statements and receipts, on a copy of the demo practice
// with a few hand-made accounts added (IDs from 90001, clear of the demo's).
#include <gtest/gtest.h>

#include <string>

#include "common/errors.h"
#include "frame/surface/surface.h"
#include "platform/db/recordset.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Today is Friday 2026-11-20 (the fixture's clock).
//
// People:
//   90001 Claire Fortin, born 1980, holder of herself, 12 Main St, Ottawa
//   90002 Zoe Fortin, born 2015 (11 on the DateDiff year count), holder 90001
//   90003 every column NULL but the ID
// Provider 90001 Anne Cote. Payment type 90001 "Cheque".
//
// Invoices (total / final):
//   90101 #590101 Claire 2026-11-02  185.50 / 200.00   lines 120.00 + 65.50
//   90102 #590102 Zoe    2026-11-05   80.00 /          line 80.00 with 10% off
//   90103 #590103 90003  2026-11-06   40.00 / 30.00    no lines
//   90104 #590104 Claire 2026-11-07   99.99 /          no payments
// Payments:
//   90201 Claire 100.00 = 50.00 on 90101 + 30.25 on 90102 + 19.75 to credit
//   90202 Claire  25.00 on 90101 (entered Nov 10, cheque Nov 12)
//   90203 Zoe     40.00 all to credit, no shares
class InvoiceReports : public ReportTest {
 protected:
  void SetUp() override {
    ReportTest::SetUpPractice(R"sql(
INSERT INTO Employees (ID, LastName, FirstName) VALUES (90001, 'Cote', 'Anne');
INSERT INTO PaymentTypes (ID, Name) VALUES (90001, 'Cheque');
INSERT INTO FeeCodes (ID, Description) VALUES ('91001', 'Examination, complete'),
  ('91002', 'Scaling, one unit');
INSERT INTO Patient (ID, FirstName, LastName, FullName, BirthDate, Address, PrimaryHolderID) VALUES
 (90001, 'Claire', 'Fortin', 'Fortin, Claire', '1980-05-05 00:00:00',
  '12 Main St' || char(13) || char(10) || 'Ottawa, ON' || char(13) || char(10) || 'K1A 0B1', 90001),
 (90002, 'Zoe', 'Fortin', 'Fortin, Zoe', '2015-03-01 00:00:00', 'Zoe''s own address', 90001);
INSERT INTO Patient (ID) VALUES (90003);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Time], [Complete?],
  InvoiceTotal, InvoiceFinalTotal) VALUES
 (90101, 590101, 90001, 90001, '2026-11-02 00:00:00', 600, 1, 185.50, 200.00),
 (90102, 590102, 90002, 90001, '2026-11-05 00:00:00', 600, 1, 80.00, NULL),
 (90103, 590103, 90003, 90001, '2026-11-06 00:00:00', 600, 1, 40.00, 30.00),
 (90104, 590104, 90001, 90001, '2026-11-07 00:00:00', 600, 1, 99.99, NULL);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, [Tooth#], Surface, Cost, Discount, Status, [Date]) VALUES
 (90301, 90101, '91001', NULL, NULL, 120.00, NULL, 'Complete', '2026-11-02 00:00:00'),
 (90302, 90101, '91002', '16', 'MOD', 65.50, 0, 'Complete', '2026-11-02 00:00:00'),
 (90303, 90102, '91001', NULL, NULL, 80.00, 0.10, 'Complete', '2026-11-05 00:00:00');
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, PaymentName, Value, TotalAllocated,
  TotalToCredit, Notes, [Date], CheckDate, [Check#], IsInsurance) VALUES
 (90201, 90001, 90001, 'Claire Fortin', 100.00, 80.25, 19.75, NULL, '2026-11-03 00:00:00',
  '2026-11-03 00:00:00', '311', 0),
 (90202, 90001, 90001, 'Claire Fortin', 25.00, 25.00, 0, 'Paid at the desk', '2026-11-10 00:00:00',
  '2026-11-12 00:00:00', NULL, 0),
 (90203, 90002, 90001, 'Marie Fortin', 40.00, 0, 40.00, '', '2026-11-15 00:00:00',
  '2026-11-15 00:00:00', NULL, 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (90401, 90201, 90101, 50.00, '2026-11-03 00:00:00'),
 (90402, 90201, 90102, 30.25, '2026-11-03 00:00:00'),
 (90403, 90202, 90101, 25.00, '2026-11-12 00:00:00');
UPDATE OfficeInformation SET Message = 'Closed Dec 24 to Jan 2', InvoiceFooter = NULL WHERE ID = 1;
)sql");
    reports.OfficeID = 1;
    reports.InterestRate = 0.02f;
  }
};

// ---- rptInvoice ----

TEST_F(InvoiceReports, InvoiceFiguresLayoutAndTheOfficesFooter) {
  reports.rptInvoice(90101, "", "");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(form.ShowCount(), 1) << "an invoice is previewed";
  EXPECT_EQ(form.PrintCount(), 0);
  EXPECT_EQ(form.VSP.DocName(), "Invoice");

  EXPECT_TRUE(HasAll(Text(), {"Date Invoice #\nNov/02/2026 590101\n",
                              "Claire Fortin Provider: Anne Cote\n12 Main St\nOttawa, ON\nK1A 0B1",
                              "Office Message: Closed Dec 24 to Jan 2",
                              // No line has a discount: the six-column form.
                              "Procedure Tooth # Surface Date of Service Status Fee($)\n"}));
  EXPECT_FALSE(Has("Discount"));
  // The code with the fee code's wording below it, wrapped in its column.
  EXPECT_TRUE(HasAll(Text(), {"91001 Nov/02/2026 Complete 120.00\nExamination,\ncomplete",
                              "91002 16 MOD Nov/02/2026 Complete 65.50\nScaling, one unit"}));

  // Sub Total is the stored 185.50. The invoice is settled at 200.00 and
  // asked about today, so it stands for its final total: Total 200.00, and
  // Interest is the difference 200.00 - 185.50 = 14.50.
  EXPECT_TRUE(HasAll(Text(), {"Sub Total $185.50\nInterest $14.50\nTotal $200.00\n",
                              "Payment is Required on Date of Service"}));
  EXPECT_TRUE(Has(kPrintedBy));

  RawExec("UPDATE OfficeInformation SET InvoiceFooter = 'Thank you.', Message = NULL WHERE ID = 1");
  reports.rptInvoice(90101, "", "");
  EXPECT_TRUE(Has("Thank you."));
  EXPECT_TRUE(HasNone(Text(), {"Payment is Required on Date of Service", "Office Message:"}));
}

TEST_F(InvoiceReports, SeparatorsInNamesAndStreetsStayInTheirCells) {
  // A ";" ends a row and a "|" a cell in the table language: in data they
  // are text, on the invoice, its statement and the receipt alike.
  RawExec(
      "UPDATE Patient SET FirstName = 'Smith;Evil|9999|Row', Address = '12 Main St; Unit 4' || "
      "char(13) || char(10) || 'Ottawa, ON' WHERE ID = 90001;"
      "UPDATE InvoiceDetails SET Surface = 'M;O|D' WHERE ID = 90302;");
  reports.rptInvoice(90101, "", "");
  EXPECT_TRUE(HasAll(
      Text(), {"Smith;Evil|9999|Row Fortin Provider: Anne Cote\n12 Main St; Unit 4\nOttawa, ON",
               "91002 16 M;O|D Nov/02/2026 Complete 65.50"}));
  reports.rptReceipt(90201, "", "");
  EXPECT_TRUE(Has("590101 Smith;Evil|9999|Row Fortin Nov/02/2026 50.00\n")) << Text();
}

TEST_F(InvoiceReports, EachInvoiceItsTotalsItsFormAndWhoIsBilled) {
  // 90103: stored 40.00, settled at 30.00: Interest 30.00 - 40.00 = -10.00.
  // No name in the database: the host's name and address stand in.
  reports.rptInvoice(90103, "Front Desk Name", "1 Desk St");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_TRUE(HasAll(Text(), {"Sub Total $40.00\nInterest -$10.00\nTotal $30.00\n",
                              "Front Desk Name Provider: Anne Cote\n1 Desk St"}));

  // 90104: 99.99 with no final total; rounding to the cent changes nothing.
  reports.rptInvoice(90104, "", "");
  EXPECT_TRUE(
      HasAll(Text(), {"Sub Total $99.99\nInterest $0.00\nTotal $99.99\n",
                      // An invoice without lines still prints the header of the lines table.
                      "Procedure Tooth # Surface Date of Service Status Fee($)\n"}));

  // A discounted line: the seven-column form. Zoe is 11 (2026 - 2015) and
  // names Claire as holder: Claire is billed.
  reports.rptInvoice(90102, "", "");
  EXPECT_TRUE(HasAll(Text(), {"Procedure Tooth # Surface Date of Service Status Fee($) Discount\n",
                              "91001 Nov/05/2026 Complete 80.00 10.00%",
                              "Claire Fortin Provider: Anne Cote\n12 Main St"}));
  EXPECT_FALSE(Has("Zoe's own address"));

  // Of age, Zoe gets her own invoice at her own address.
  RawExec("UPDATE Patient SET BirthDate = '2008-01-01 00:00:00' WHERE ID = 90002");
  reports.rptInvoice(90102, "", "");
  EXPECT_TRUE(Has("Zoe Fortin Provider: Anne Cote\nZoe's own address")) << Text();
}

TEST_F(InvoiceReports, UnknownInvoiceShowsTheMessageAndMakesNoDocument) {
  reports.rptInvoice(987654, "", "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "You have not selected a valid invoice from the list. Please select a valid invoice "
            "from the list and try again.");
  EXPECT_EQ(form.VSP.PageCount(), 0);
  EXPECT_EQ(form.ShowCount(), 0);

  reports.rptInvoiceStatement(987654, "", "");
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[1].prompt, host.messages[0].prompt);
  EXPECT_EQ(form.VSP.PageCount(), 0);
  EXPECT_EQ(form.PrintCount(), 0);
}

// ---- rptInvoiceStatement ----

TEST_F(InvoiceReports, StatementListsPaymentsWhatRemainsAndTheStamp) {
  const std::string stamp = "SELECT LastStatement FROM Patient WHERE ID = ";
  ASSERT_TRUE(ValueOf(stamp + "90001").IsNull());
  reports.rptInvoiceStatement(90101, "", "");
  EXPECT_EQ(form.PrintCount(), 1) << "the statement goes to the printer";
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_EQ(form.VSP.DocName(), "Invoice Statement on Invoice #590101");
  EXPECT_TRUE(HasAll(
      Text(),
      {"Invoice Statement\n", "Nov/02/2026 Invoice#: 590101",
       // The invoice stands for 200.00 today (its final total).
       "Current Total: $200.00\nGrand Total: $200.00\n",
       "Payments Made Towards Invoice\nDate Applied Date of Payment Type Amount Paid\n",
       "Nov/03/2026 Nov/03/2026 Cheque #311 50.00\n", "Nov/12/2026 Nov/12/2026 Cheque 25.00\n",
       // 200.00 - 50.00 - 25.00 = 125.00; the 30.25 of payment 90201 went on
       // another invoice and does not count here.
       "Current Remaining: $125.00"}));
  EXPECT_FALSE(ValueOf(stamp + "90001").IsNull()) << "the statement stamps the patient";
  EXPECT_TRUE(ValueOf(stamp + "90002").IsNull()) << "and no one else";

  reports.rptInvoiceStatement(90104, "", "");
  EXPECT_TRUE(HasAll(Text(), {"No payments on file.", "Current Remaining: $99.99"}));
  EXPECT_FALSE(Has("Payments Made Towards Invoice"));
}

// ---- rptReceipt ----

TEST_F(InvoiceReports, ReceiptsSplitThePaymentBetweenInvoicesAndCredit) {
  reports.rptReceipt(90201, "", "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 1) << "the receipt goes to the printer";
  EXPECT_EQ(form.VSP.DocName(), "Receipt");
  EXPECT_TRUE(HasAll(
      Text(), {"Date Payment #\nNov/03/2026 90201\n",
               // The payer is the patient of the first invoice paid.
               "Claire Fortin\n12 Main St",
               "Name Payment Details\nClaire Fortin Payment Type: Cheque\nNote: (None)",
               "Invoice # Patient Name Date Amount Paid($)\n",
               "590101 Claire Fortin Nov/02/2026 50.00\n", "590102 Zoe Fortin Nov/05/2026 30.25\n",
               // 100.00 received: 50.00 + 30.25 = 80.25 on invoices, 19.75 to credit.
               "Total Paid($) 100.00\nAmount to Credit($) 19.75\n"}));

  reports.rptReceipt(90203, "", "");
  // No share on an invoice: the payer is the payment's own patient, Zoe, and
  // an empty note reads "(None)".
  EXPECT_TRUE(HasAll(
      Text(), {"Zoe Fortin\nZoe's own address", "Marie Fortin Payment Type: Cheque\nNote: (None)",
               "Invoice # Patient Name Date Amount Paid($)\n",
               "Total Paid($) 40.00\nAmount to Credit($) 40.00\n"}));

  // A payment of 12.00 from 90003 with no shares, no name and no note: the
  // host's name stands in and everything is credit.
  RawExec(
      "INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, Value, TotalAllocated, "
      "TotalToCredit) VALUES (90204, 90003, 90001, 12.00, 0, 12.00)");
  reports.rptReceipt(90204, "Walk-in", "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 3);
  EXPECT_TRUE(HasAll(Text(), {"Walk-in\n", "Payment Type: Cheque\nNote: (None)",
                              "Total Paid($) 12.00\nAmount to Credit($) 12.00\n"}));

  reports.rptReceipt(90202, "", "");
  EXPECT_TRUE(Has("Note: Paid at the desk")) << Text();

  reports.rptReceipt(987654, "", "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("You have not selected a valid invoice"),
            std::string::npos);
}

TEST_F(InvoiceReports, ReceiptFailureIsTrappedWithItsMessage) {
  // A payment whose type is gone falls out of the inner join: that is the
  // unknown-payment message. A broken table is a failure inside the run,
  // caught by the receipt's trap and shown with its fixed text.
  RawExec("ALTER TABLE InvoicePaymentDetails RENAME TO IPD_Gone");
  EXPECT_NO_THROW(reports.rptReceipt(90201, "", ""));
  ASSERT_TRUE(SaidOnce(host, "An Error has occurred in sub rptReceipt in object clsReports\n"));
  EXPECT_EQ(form.PrintCount(), 0);
}

}  // namespace
}  // namespace orv::testing
