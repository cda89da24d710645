// The hand-made practice of the account tests (accounts/account_fixture.h)
// with a month of closing activity added in February 2026, clear of the
// account rows (which lie in 2001 and from June 2026 on), and a component
// wired to a recording host and a preview form with a running document.
//
// Staff: 11 Bell, Ada (dentist; overseer and doctor of every invoice below);
// 12 Hill, Hugo (hygienist); 13 Stone, Ivy (no treatment in February).
// Payment types: 1 Cash, 2 Cheque, 3 Insurance (money); 4 Write-off
// (adjustment of a charge, office payment); 5 Refund (counts toward paid).
// Accounts: 1 Operating, 2 Payroll.
//
// Before the period:
//   inv 901 (#9001) p1 Claire, 01-15, line 91 01202 100.00, prov 11
//   inv 906 (#9006) p6 Seamus, 01-10, line 97 01202  30.00, prov 13
//   pay 951 p1 cash 60.00, cheque 01-20, all on line 91 (01-20), account 1
// In February (entry dates; patient / insurance portions):
//   inv 902 (#9002) p1 02-03, assigned: line 92 27201 500 (200 / 300),
//                                       line 93 99111 150 (150 / 0)   prov 11
//   inv 903 (#9003) p3 Priya 02-05: line 94 23111 80, CANCELLED 02-10  prov 11
//   inv 904 (#9004) p6 02-12: line 95 11101 90, line 96 -99111 -20     prov 12
//   inv 905 (#9005) p3 02-20: no lines, total 70                       prov 11
//   pay 954 p1 cash 150, cheque 02-03, on line 93 (02-03), account 2
//   pay 952 p6 cheque 100 taken in by 11, cheque 02-12, 60 on line 95
//       applied 02-14 (moved from Bell to Hill), 40 left on account, acct 1
//   pay 953 p1 insurance 300, cheque 02-20, on line 92 (02-20), account 1
//   pay 955 p1 write-off 40 taken by 11, 02-25, on line 91 (January's)
//   pay 956 p6 write-off 30 taken by 13, 02-26, on line 97 (Ivy's, January)
#pragma once

#include <cctype>
#include <string>

#include "accounts/account_fixture.h"
#include "common/vbstrings.h"

namespace orv::testing {

inline const char* kClosingRows = R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName, TypeID) VALUES
 (11, 'Bell', 'Ada', 'Ada Bell', 3), (12, 'Hill', 'Hugo', 'Hugo Hill', 5),
 (13, 'Stone', 'Ivy', 'Ivy Stone', 3);
INSERT INTO PaymentTypes (ID, Name, Description, [Adjustment?], [ToTotalPaid?], Refund,
  OfficePayment, RecAfterDep) VALUES
 (1, 'Cash', 'Cash', 0, 0, 0, 0, 0), (2, 'Cheque', 'Cheque', NULL, 0, 0, 0, 0),
 (3, 'Insurance', 'Insurer', 0, 0, 0, 0, 0),
 (4, 'Write-off', 'Small balance', 1, 0, 0, 1, 0),
 (5, 'Refund', 'Credit paid back', -1, 1, 1, 0, 0);
INSERT INTO Accounts (ID, Name) VALUES (1, 'Operating'), (2, 'Payroll');

INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, DoctorID, [Date], [Time],
  [Complete?], Cancelled, CancellationDate, InvoiceTotal, PatientTotal, IsAssignment) VALUES
 (901, 9001, 1, 11, 11, 11, '2026-01-15 00:00:00', 540, 1, NULL, NULL, 100, NULL, 0),
 (906, 9006, 6, 13, 11, 11, '2026-01-10 00:00:00', 540, 1, NULL, NULL, 30, NULL, 0),
 (902, 9002, 1, 11, 11, 11, '2026-02-03 00:00:00', 600, 1, NULL, NULL, 650, 350, 1),
 (903, 9003, 3, 11, 11, 11, '2026-02-05 00:00:00', 600, 1, 1, '2026-02-10 00:00:00', 80, NULL, 0),
 (904, 9004, 6, 12, 11, 11, '2026-02-12 00:00:00', 600, 1, NULL, NULL, 70, NULL, 0),
 (905, 9005, 3, 11, 11, 11, '2026-02-20 00:00:00', 600, 1, NULL, NULL, 70, 70, 0);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, PrimaryInsCost,
  SecondaryInsCost, TertiaryInsCost, Status, [Date], EntryDate, ProviderID) VALUES
 (91, 901, '01202', 100, 100, 0, 0, 0, 'Complete', '2026-01-15 00:00:00', '2026-01-15 00:00:00', 11),
 (97, 906, '01202', 30, 30, 0, 0, 0, 'Complete', '2026-01-10 00:00:00', '2026-01-10 00:00:00', 13),
 (92, 902, '27201', 500, 200, 300, 0, 0, 'Complete', '2026-01-27 00:00:00', '2026-02-03 00:00:00', 11),
 (93, 902, '99111', 150, 150, 0, 0, 0, 'Complete', '2026-02-03 00:00:00', '2026-02-03 00:00:00', 11),
 (94, 903, '23111', 80, 80, 0, 0, 0, 'Complete', '2026-02-05 00:00:00', '2026-02-05 00:00:00', 11),
 (95, 904, '11101', 90, 90, 0, 0, 0, 'Complete', '2026-02-12 00:00:00', '2026-02-12 00:00:00', 12),
 (96, 904, '-99111', -20, -20, 0, 0, 0, 'Complete', '2026-02-12 00:00:00', '2026-02-12 00:00:00', 12);

INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, InitialProviderID,
  PaymentName, Value, TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (951, 1, 1, 1, 11, 'Claire', 60, 60, 0, '2026-01-20 00:00:00', '2026-01-20 00:00:00', 0),
 (954, 1, 1, 2, 11, 'Claire', 150, 150, 0, '2026-02-03 00:00:00', '2026-02-03 00:00:00', 0),
 (952, 6, 2, 1, 11, 'Seamus', 100, 60, 40, '2026-02-12 00:00:00', '2026-02-12 00:00:00', NULL),
 (953, 1, 3, 1, 11, 'Maple Life-Claire', 300, 300, 0, '2026-02-20 00:00:00', '2026-02-20 00:00:00', 1),
 (955, 1, 4, NULL, 11, 'Office', 40, 40, 0, '2026-02-25 00:00:00', '2026-02-25 00:00:00', 0),
 (956, 6, 4, NULL, 13, 'Office', 30, 30, 0, '2026-02-26 00:00:00', '2026-02-26 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (951, 951, 901, 60, '2026-01-20 00:00:00'), (954, 954, 902, 150, '2026-02-03 00:00:00'),
 (952, 952, 904, 60, '2026-02-14 00:00:00'), (953, 953, 902, 300, '2026-02-20 00:00:00'),
 (955, 955, 901, 40, '2026-02-25 00:00:00'), (956, 956, 906, 30, '2026-02-26 00:00:00');
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (951, 91, 1, 60, '2026-01-20 00:00:00'), (954, 93, 1, 150, '2026-02-03 00:00:00'),
 (952, 95, 6, 60, '2026-02-14 00:00:00'), (953, 92, 1, 300, '2026-02-20 00:00:00'),
 (955, 91, 1, 40, '2026-02-25 00:00:00'), (956, 97, 6, 30, '2026-02-26 00:00:00');
)sql";

// The providers of the fixture as the closing runs name them.
inline const char* kAllThree = "ProviderID = 11 OR ProviderID = 12 OR ProviderID = 13";

// The filters of the summary analysis for a filter over "ID" and a view,
// as the section makes them, for reading its receivables on their own.
inline clsReports::ReceivableFilters SummaryFilters(const std::string& filter_text, int16_t view) {
  const std::string filter = NoZeroFilter(filter_text);
  const std::string field = view == 1   ? "Invoices.OverseerID"
                            : view == 2 ? "Invoices.DoctorID"
                                        : "InvoiceDetails.ProviderID";
  clsReports::ReceivableFilters filters;
  filters.charges = filter.empty() ? "1 = 1" : vb::Replace(filter, "ID", field);
  filters.taken_in =
      filter.empty() ? "1 = 1"
      : view == 2    ? vb::Replace(filter, "ID",
                                   "(SELECT DoctorID FROM Patient WHERE Patient.ID = "
                                   "InvoicePayments.PatientID)")
                     : vb::Replace(filter, "ID", "InvoicePayments.InitialProviderID");
  return filters;
}

// The "Total|" row of a summary's day table in document text: it starts
// with "Total " and a figure (the header and the totals block do not).
inline std::string SummaryTotalRow(const std::string& text) {
  size_t start = 0;
  while (start < text.size()) {
    size_t end = text.find_first_of("\n\f", start);
    if (end == std::string::npos) end = text.size();
    const std::string line = text.substr(start, end - start);
    if (line.size() > 6 && line.rfind("Total ", 0) == 0 &&
        (std::isdigit(static_cast<unsigned char>(line[6])) || line[6] == '-')) {
      return line;
    }
    start = end + 1;
  }
  return "";
}

class ClosingTest : public AccountReportTest {
 protected:
  // The rows the test's practice adds to the account fixture's.
  virtual std::string Rows() const { return kClosingRows; }
  void SetUp() override {
    if (SetUpReports(Rows())) reports.VSP().StartDoc();
  }

  static DateTime Feb(int day) { return Day(2026, 2, day); }
};

}  // namespace orv::testing
