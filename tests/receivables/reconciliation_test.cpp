// The receivables reconciliation on a practice whose books agree, worked
// out by hand as of 2026-11-20, and the same practice with a cancelled
// invoice left complete and without lines.
//
// The account practice's patients, with only these records:
//   inv 701 (#1701) p1 Claire 11-02: lines 7011 100 and 7012 50, total 150
//   inv 702 (#1702) p3 Priya  08-10: line 7021 80, total 80
//   pay 801 p1 60 cheque 11-05: 60 on 701, allocated to line 7011
//   pay 802 p3 100 cheque 09-01: 80 on 702 (line 7021), 20 left on account
//   pay 803 p6 Seamus 25 cheque 10-10: all on account
//
// Aged list: Debit 150 - 60 = 90 (Claire, 0-30); Credit 20 + 25 = 45;
// Balance 45. Patient balances: Claire 150 - 60 = 90, Priya 80 - 80 - 20 =
// -20, Seamus -25: 45. Balance lists: Claire owes 90 on 701; the unapplied
// list holds 802's 20 and 803's 25: 45.
#include "receivables/reconciliation.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <variant>

#include "accounts/account_fixture.h"
#include "common/currency.h"
#include "platform/host/settings.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

inline const char* kAgreeingBooks = R"sql(
DELETE FROM InvoicePaymentAllocations; DELETE FROM InvoicePaymentDetails;
DELETE FROM InvoicePayments; DELETE FROM InvoiceDetails; DELETE FROM Invoices;
INSERT INTO Employees (ID, LastName, FirstName, FullName) VALUES (1, 'Moreau', 'Anne', 'Moreau, Anne');
INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?], OfficePayment) VALUES
 (1, 'Cheque', 0, 0, 0);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Complete?], InvoiceTotal,
  PatientTotal, IsAssignment) VALUES
 (701, 1701, 1, 1, '2026-11-02 00:00:00', 1, 150, 150, 0),
 (702, 1702, 3, 1, '2026-08-10 00:00:00', 1, 80, 80, 0);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, PrimaryInsCost,
  SecondaryInsCost, TertiaryInsCost, Status, [Date], EntryDate, ProviderID) VALUES
 (7011, 701, '01202', 100, 100, 0, 0, 0, 'Complete', '2026-11-02 00:00:00', '2026-11-02 00:00:00', 1),
 (7012, 701, '11101', 50, 50, 0, 0, 0, 'Complete', '2026-11-02 00:00:00', '2026-11-02 00:00:00', 1),
 (7021, 702, '23111', 80, 80, 0, 0, 0, 'Complete', '2026-08-10 00:00:00', '2026-08-10 00:00:00', 1);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (801, 1, 1, 1, 60, 60, 0, '2026-11-05 00:00:00', '2026-11-05 00:00:00', 0),
 (802, 3, 1, 1, 100, 80, 20, '2026-09-01 00:00:00', '2026-09-01 00:00:00', 0),
 (803, 6, 1, 1, 25, 0, 25, '2026-10-10 00:00:00', '2026-10-10 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (81, 801, 701, 60, '2026-11-05 00:00:00'), (82, 802, 702, 80, '2026-09-01 00:00:00');
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (801, 7011, 1, 60, '2026-11-05 00:00:00'), (802, 7021, 3, 80, '2026-09-01 00:00:00');
)sql";

// Arjun's invoice, cancelled two days after it was made, still marked
// complete; its lines were taken off.
inline const char* kCancelledInvoice =
    "INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Complete?], "
    "Cancelled, CancellationDate, InvoiceTotal, PatientTotal, IsAssignment) VALUES "
    "(703, 1703, 4, 1, '2026-11-10 00:00:00', 1, 1, '2026-11-12 00:00:00', 55, 55, 0);";

class Reconciliation : public AccountReportTest {
 protected:
  void SetUp() override {
    if (!SetUpReports(kAgreeingBooks)) return;
    // A settings store of the test's own, with the reconciliation on.
    settings_ = (std::filesystem::temp_directory_path() /
                 ("orv-reconcile-" + std::to_string(::getpid()) + ".ini"))
                    .string();
    std::filesystem::remove(settings_);
    host::SetAppSettings(host::SettingsStore(settings_));
    host::AppSettings().Override("Settings", "MonthEndReconciliation", "True");
  }
  void TearDown() override {
    host::SetAppSettings(host::SettingsStore(settings_ + ".unused"));
    std::filesystem::remove(settings_);
    AccountReportTest::TearDown();
  }

  // The month-end package with every section off: the reconciliation alone.
  void RunPackage() {
    reports.rptMonthEndReport(false, false, false, false, false, false, false, Day(2026, 11, 1),
                              Day(2026, 11, 20), 0, "dana", "", false, false, false, false, false,
                              "", false);
  }
  // Lines wrapped by the page read as one.
  bool HasJoined(const std::string& s) const {
    std::string text = Text();
    for (char& c : text) c = c == '\n' ? ' ' : c;
    return text.find(s) != std::string::npos;
  }
  // Whether the run reading `text` is bold.
  bool BoldRun(const std::string& text) const {
    const render::Document& doc = form.VSP.Document();
    for (const render::Page& page : doc.pages) {
      for (const render::DisplayItem& item : page.items) {
        const auto* run = std::get_if<render::TextRun>(&item);
        if (run != nullptr && run->text == text) return doc.fonts[run->font].bold;
      }
    }
    ADD_FAILURE() << "no run \"" << text << "\"";
    return false;
  }

  std::string settings_;
};

TEST_F(Reconciliation, ConsistentBooksAgreeEverywhere) {
  const receivables::ReconciliationFigures f =
      receivables::ReconcileReceivables(reports, Day(2026, 11, 20));
  EXPECT_EQ(f.aged.debit, Money("90"));
  EXPECT_EQ(f.aged.credit, Money("45"));
  EXPECT_EQ(f.aged.thirty, Money("90"));
  EXPECT_EQ(f.patient_balances, Money("45"));
  EXPECT_EQ(f.office_totals, Money("90"));
  EXPECT_EQ(f.unapplied, Money("45"));
  for (const receivables::ReconciliationCheck& check : receivables::ReconciliationChecks(f)) {
    EXPECT_TRUE(check.Agrees()) << check.name;
  }
  EXPECT_TRUE(f.differences.empty());
  EXPECT_TRUE(f.causes.empty());

  RunPackage();
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_TRUE(HasAll(
      Text(),
      {"Receivables Reconciliation", "As of: Nov/20/2026", "Owed $90.00 - $90.00",
       "Credit $45.00 - $45.00", "Net $45.00 $45.00 $45.00",
       "Balance Lists: Credit against Aged Receivables $0.00 Agrees", "Every figure agrees."}));
  EXPECT_TRUE(HasNone(Text(), {"Differs", "Where they differ"}));
}

TEST_F(Reconciliation, CancelledCompleteInvoiceIsFlaggedByItsAmount) {
  Exec(kCancelledInvoice);
  RunPackage();
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  // The patient balances and the balance lists count the 55.00, the aged
  // list (no lines) does not; the money on file is untouched.
  EXPECT_TRUE(HasAll(Text(), {"Owed $90.00 - $145.00", "Net $45.00 $100.00 $100.00",
                              "Patient Balances: Net against Aged Receivables $55.00 Differs",
                              "Balance Lists: Owed against Aged Receivables $55.00 Differs",
                              "Balance Lists: Credit against Aged Receivables $0.00 Agrees",
                              "Balance Lists: Net against Aged Receivables $55.00 Differs",
                              "Age classes (0-30, 31-60, 61-90, > 90) against Owed $0.00 Agrees"}));
  EXPECT_TRUE(BoldRun("Differs"));
  EXPECT_FALSE(BoldRun("Agrees"));
  // Where: Arjun alone, and the cause with the invoice, its patient and
  // its amount.
  EXPECT_TRUE(HasAll(Text(), {"Where they differ",
                              "1 patient differs:", "Singh, Arjun $0.00 $55.00 $55.00 $55.00"}));
  EXPECT_FALSE(HasJoined("Tremblay, Claire $"));
  EXPECT_TRUE(
      HasJoined("Cancelled invoices, which the patient balances and the balance lists still "
          "count at their total and the aged list by their complete lines: 1, $55.00. "
          "invoice #1703, Singh, Arjun, $55.00 (complete lines $0.00)."))
      << Text();
  // The other causes do not apply to these books.
  EXPECT_TRUE(HasNone(Text(), {"Refunds", "whose total is not the sum"}));
}

// The list of patients that differ keeps the 25 largest differences.
TEST_F(Reconciliation, LargestDifferencesFirst) {
  std::string rows;
  for (int i = 0; i < 30; ++i) {
    const int id = 900 + i;
    // An invoice without lines: the patient balances and the balance
    // lists count it, the aged list does not.
    rows += "INSERT INTO Patient (ID, FirstName, LastName, FullName) VALUES (" +
            std::to_string(id) + ", 'P', 'N" + std::to_string(id) + "', 'N" + std::to_string(id) +
            ", P');";
    rows +=
        "INSERT INTO Invoices (ID, [Invoice#], PatientID, [Date], [Complete?], InvoiceTotal, "
        "IsAssignment) VALUES (" +
        std::to_string(id) + ", " + std::to_string(id) + ", " + std::to_string(id) +
        ", '2026-11-03 00:00:00', 1, " + std::to_string(10 + i) + ", 0);";
  }
  Exec(rows);
  const receivables::ReconciliationFigures f =
      receivables::ReconcileReceivables(reports, Day(2026, 11, 20));
  ASSERT_EQ(f.differences.size(), 30u);
  EXPECT_EQ(f.differences.front().name, "N929, P");
  EXPECT_EQ(f.differences.front().Largest(), Money("39"));
  for (size_t i = 1; i < f.differences.size(); ++i) {
    EXPECT_GE(f.differences[i - 1].Largest(), f.differences[i].Largest());
  }
  RunPackage();
  EXPECT_TRUE(HasAll(Text(), {"30 patients differ; the 25 with the largest difference:",
                              "N905, P $0.00 $15.00 $15.00 $15.00"}));
  EXPECT_FALSE(HasJoined("N904, P $"));
}

}  // namespace
}  // namespace orv::testing
