// Invoices, invoice statements and receipts on the account practice with
// its ledger rows (account_fixture.h), office 1 with a message, the
// wording of two fee codes and a tooth on one line. Today is
// Friday 2026-11-20. A rate of 2% is set: the documents print what an
// invoice stands for and apply no rate of their own.
//
// What the documents read, by hand from the practice's table:
//   1001 (101) Claire, Sep/10, Moreau: 200.00, no settled total: Sub Total
//     200.00, Interest 0, Total 200.00. Lines 01202 120.00 and 11101 (tooth
//     16, MOD) 80.00. Shares: 201 cash 80 (Sep/15), 202 insurer 120
//     (Oct/1): nothing remains.
//   1002 (102) Claire, Oct/5: 150.00; line 23111 150.00. Cheque 203 #311
//     puts 150 on it (Oct/6) and 50 on account.
//   1005 (105) Claire, Nov/18: 60.00; cheque 204 #312 puts 40 on it, dated
//     Nov/21: a statement counts every share, so 20.00 remains.
//   1006 (106) Claire, Oct/21: 25.00, no payment.
//   1602 (602) Seamus, Nov/1, Chen: 120.00 settled at 100.00, asked today:
//     Interest -20.00, Total 100.00; no lines. Cash 611 puts 40 on it
//     (Nov/5): 60.00 remains.
// Receipts: 203 (200.00: 150.00 on 1002, 50.00 to credit); 281 Nadia's
// 100.04 on 1084 and 1085, 50.02 each; 241 Arjun's 80.00, all on Priya's
// 1031 (the payer is the patient of the first invoice paid); 212 Luc's
// 26.00, all to credit.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "accounts/account_fixture.h"
#include "frame/surface/surface.h"
#include "support/host_said.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

class InvoiceReports : public LedgerTest {
 protected:
  void SetUp() override {
    SetUpLetters(R"sql(
UPDATE OfficeInformation SET Message = 'Closed Dec 24 to Jan 2' WHERE ID = 1;
INSERT INTO FeeCodes (ID, Description) VALUES ('01202', 'Examination, complete'),
  ('11101', 'Scaling, one unit');
UPDATE InvoiceDetails SET [Tooth#] = '16', Surface = 'MOD' WHERE ID = 2;
)sql");
    reports.InterestRate = 0.02f;
  }
  bool Stamped(int id) { return !LastStatementOf(id).IsNull(); }
};

// ---- rptInvoice ----

TEST_F(InvoiceReports, InvoiceFiguresLayoutAndTheOfficesFooter) {
  reports.rptInvoice(101, "", "");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(form.ShowCount(), 1) << "an invoice is previewed";
  EXPECT_EQ(form.PrintCount(), 0);
  EXPECT_EQ(form.VSP.DocName(), "Invoice");
  EXPECT_TRUE(
      HasAll(Text(), {"Date Invoice #\nSep/10/2026 1001\n",
                      "Claire Tremblay Provider: Anne Moreau\n12 Main St\nOttawa, ON\nK1A 0B1",
                      "Office Message: Closed Dec 24 to Jan 2",
                      // No line has a discount: the six-column form.
                      "Procedure Tooth # Surface Date of Service Status Fee($)\n",
                      // The code with the fee code's wording below it, wrapped in its
                      // column.
                      "01202 Sep/10/2026 Complete 120.00\nExamination,\ncomplete",
                      "11101 16 MOD Sep/10/2026 Complete 80.00\nScaling, one unit",
                      "Sub Total $200.00\nInterest $0.00\nTotal $200.00\n",
                      "Payment is Required on Date of Service", kPrintedBy}));
  EXPECT_FALSE(Has("Discount"));

  Exec("UPDATE OfficeInformation SET InvoiceFooter = 'Thank you.', Message = NULL WHERE ID = 1");
  reports.rptInvoice(101, "", "");
  EXPECT_TRUE(Has("Thank you."));
  EXPECT_TRUE(HasNone(Text(), {"Payment is Required on Date of Service", "Office Message:"}));
}

TEST_F(InvoiceReports, SeparatorsInNamesAndStreetsStayInTheirCells) {
  // A ";" ends a row and a "|" a cell in the table language: in data they
  // are text, on the invoice and the receipt alike.
  Exec(
      "UPDATE Patient SET FirstName = 'Smith;Evil|9999|Row', Address = '12 Main St; Unit 4' || "
      "char(13) || char(10) || 'Ottawa, ON' WHERE ID = 1;"
      "UPDATE InvoiceDetails SET Surface = 'M;O|D' WHERE ID = 2;");
  reports.rptInvoice(101, "", "");
  EXPECT_TRUE(HasAll(
      Text(), {"Smith;Evil|9999|Row Tremblay Provider: Anne Moreau\n12 Main St; Unit 4\nOttawa, ON",
               "11101 16 M;O|D Sep/10/2026 Complete 80.00"}));
  reports.rptReceipt(201, "", "");
  EXPECT_TRUE(Has("1001 Smith;Evil|9999|Row Tremblay Sep/10/2026 80.00\n")) << Text();
}

TEST_F(InvoiceReports, EachInvoiceItsTotalsItsFormAndWhoIsBilled) {
  // 1602: settled below its total, and no lines: the header of the lines
  // table still prints. Without a name in the database the host's name and
  // address stand in.
  Exec("UPDATE Patient SET FirstName = NULL, LastName = NULL WHERE ID = 6");
  reports.rptInvoice(602, "Front Desk Name", "1 Desk St");
  EXPECT_TRUE(host.messages.empty());
  EXPECT_EQ(form.ShowCount(), 1);
  EXPECT_TRUE(HasAll(Text(), {"Sub Total $120.00\nInterest -$20.00\nTotal $100.00\n",
                              "Front Desk Name Provider: Paul Chen\n1 Desk St",
                              "Procedure Tooth # Surface Date of Service Status Fee($)\n"}));

  // A discounted line: the seven-column form.
  Exec("UPDATE InvoiceDetails SET Discount = 0.10 WHERE ID = 3");
  reports.rptInvoice(102, "", "");
  EXPECT_TRUE(HasAll(Text(), {"Procedure Tooth # Surface Date of Service Status Fee($) Discount\n",
                              "23111 Oct/05/2026 Complete 150.00 10.00%"}));

  // Luc is 11 (2026 - 2015) and names Claire as holder: Claire is billed.
  Exec(
      "UPDATE Invoices SET ProviderID = 1 WHERE ID = 111;"
      "UPDATE Patient SET BirthDate = '2015-03-01 00:00:00', Address = 'Luc''s own address' "
      "WHERE ID = 2;");
  reports.rptInvoice(111, "", "");
  EXPECT_TRUE(Has("Claire Tremblay Provider: Anne Moreau\n12 Main St")) << Text();
  EXPECT_FALSE(Has("Luc's own address"));
  // Of age, Luc gets his own invoice at his own address.
  Exec("UPDATE Patient SET BirthDate = '2008-01-01 00:00:00' WHERE ID = 2");
  reports.rptInvoice(111, "", "");
  EXPECT_TRUE(Has("Luc Tremblay Provider: Anne Moreau\nLuc's own address")) << Text();
}

TEST_F(InvoiceReports, UnknownInvoiceShowsTheMessageAndMakesNoDocument) {
  // 987654 is no invoice; 181 is Nadia's, with no provider to join.
  reports.rptInvoice(987654, "", "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "You have not selected a valid invoice from the list. Please select a valid invoice "
            "from the list and try again.");
  EXPECT_EQ(form.VSP.PageCount(), 0);
  EXPECT_EQ(form.ShowCount(), 0);

  reports.rptInvoiceStatement(181, "", "");
  ASSERT_EQ(host.messages.size(), 2u);
  EXPECT_EQ(host.messages[1].prompt, host.messages[0].prompt);
  EXPECT_EQ(form.VSP.PageCount(), 0);
  EXPECT_EQ(form.PrintCount(), 0);
}

// ---- rptInvoiceStatement ----

TEST_F(InvoiceReports, StatementListsPaymentsWhatRemainsAndTheStamp) {
  struct Case {
    const char* name;
    int32_t invoice;
    std::vector<std::string> parts;
  } const cases[] = {
      {"settled total, one payment",
       602,
       {"Invoice Statement\n", "Nov/01/2026 Invoice#: 1602",
        // The invoice stands for 100.00 today (its settled total).
        "Current Total: $100.00\nGrand Total: $100.00\n",
        "Payments Made Towards Invoice\nDate Applied Date of Payment Type Amount Paid\n",
        // Cash carries no cheque number.
        "Nov/05/2026 Nov/05/2026 Cash 40.00\n", "Current Remaining: $60.00"}},
      {"two payers, the insurer's too",
       101,
       {"Sep/15/2026 Sep/15/2026 Cash 80.00\n", "Oct/01/2026 Oct/01/2026 Insurance 120.00\n",
        "Current Remaining: $0.00"}},
      // The 50 of cheque 203 left on account is not on this invoice.
      {"a cheque's number",
       102,
       {"Oct/06/2026 Oct/06/2026 Cheque #311 150.00\n", "Current Remaining: $0.00"}},
      {"a post-dated share",
       105,
       {"Nov/21/2026 Nov/21/2026 Cheque #312 40.00\n", "Current Remaining: $20.00"}},
      {"no payment", 106, {"No payments on file.", "Current Remaining: $25.00"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reports.rptInvoiceStatement(c.invoice, "", "");
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    EXPECT_TRUE(HasAll(Text(), c.parts));
    if (c.invoice == 106) EXPECT_FALSE(Has("Payments Made Towards Invoice"));
  }
  EXPECT_EQ(form.VSP.DocName(), "Invoice Statement on Invoice #1006");
  EXPECT_EQ(form.PrintCount(), 5) << "each statement goes to the printer";
  EXPECT_EQ(form.ShowCount(), 0);
  // Each statement stamps its invoice's patient, and no one else.
  EXPECT_TRUE(Stamped(6));
  EXPECT_TRUE(Stamped(1));
  EXPECT_FALSE(Stamped(2));

  // Nadia's cash 281 is split over 1084 and 1085 (50.02 each): 1084's
  // statement lists its own share only.
  Exec("UPDATE Invoices SET ProviderID = 1 WHERE ID = 184");
  reports.rptInvoiceStatement(184, "", "");
  EXPECT_EQ(LinesWith("Cash 50.02").size(), 1u) << Text();
}

// ---- rptReceipt ----

TEST_F(InvoiceReports, ReceiptsSplitThePaymentBetweenInvoicesAndCredit) {
  reports.rptReceipt(203, "", "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 1) << "the receipt goes to the printer";
  EXPECT_EQ(form.VSP.DocName(), "Receipt");
  EXPECT_TRUE(HasAll(
      Text(), {"Date Payment #\nOct/06/2026 203\n", "Claire Tremblay\n12 Main St",
               "Payment Type: Cheque\nNote: (None)", "Invoice # Patient Name Date Amount Paid($)\n",
               "1002 Claire Tremblay Oct/05/2026 150.00\n",
               "Total Paid($) 200.00\nAmount to Credit($) 50.00\n"}));

  // Shares on two invoices, to the last cent.
  reports.rptReceipt(281, "", "");
  EXPECT_TRUE(
      HasAll(Text(), {"1084 Nadia Roy Feb/28/2001 50.02\n", "1085 Nadia Roy Mar/01/2001 50.02\n",
                      "Total Paid($) 100.04\nAmount to Credit($) 0.00\n"}));

  // Arjun paid Priya's invoice: the receipt goes to Priya.
  reports.rptReceipt(241, "", "");
  EXPECT_TRUE(HasAll(Text(), {"Priya Singh\n", "1031 Priya Singh Aug/01/2026 80.00\n"}));
  EXPECT_FALSE(Has("Arjun"));

  // No share on an invoice: the payer is the payment's own patient; the
  // name on the payment is whoever handed it in.
  Exec(
      "UPDATE InvoicePayments SET Notes = 'Paid at the desk', PaymentName = 'Marie Tremblay' "
      "WHERE ID = 212");
  reports.rptReceipt(212, "", "");
  EXPECT_TRUE(
      HasAll(Text(), {"Luc Tremblay\n", "Marie Tremblay Payment Type: Cash\nNote: Paid at the desk",
                      "Total Paid($) 26.00\nAmount to Credit($) 26.00\n"}));

  // A payment from a patient with no name, no shares and no note: the
  // host's name stands in and everything is credit.
  Exec(
      "INSERT INTO Patient (ID) VALUES (10);"
      "INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, Value, TotalAllocated, "
      "TotalToCredit) VALUES (210, 10, 1, 12.00, 0, 12.00)");
  reports.rptReceipt(210, "Walk-in", "");
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.PrintCount(), 5);
  EXPECT_TRUE(HasAll(Text(), {"Walk-in\n", "Payment Type: Cash\nNote: (None)",
                              "Total Paid($) 12.00\nAmount to Credit($) 12.00\n"}));

  reports.rptReceipt(987654, "", "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("You have not selected a valid invoice"),
            std::string::npos);
}

TEST_F(InvoiceReports, ReceiptFailureIsTrappedWithItsMessage) {
  // A payment whose type is gone falls out of the inner join: that is the
  // unknown-payment message. A broken table is a failure inside the run,
  // caught by the receipt's trap and shown with its fixed text.
  Exec("ALTER TABLE InvoicePaymentDetails RENAME TO IPD_Gone");
  EXPECT_NO_THROW(reports.rptReceipt(203, "", ""));
  ASSERT_TRUE(SaidOnce(host, "An Error has occurred in sub rptReceipt in object clsReports\n"));
  EXPECT_EQ(form.PrintCount(), 0);
}

}  // namespace
}  // namespace orv::testing
