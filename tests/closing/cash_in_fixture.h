// The hand-made practice of the account tests with three days of money in
// March 2026 (10th to 12th, and a zero day on the 13th) for the cash-in
// reports and the deposit slip, and a component with a running document.
//
// Payment types: 1 Cash (bank), 2 Visa (direct), 3 Re-entry (received
// after deposit), 4 Cheque (bank, [Adjustment?] NULL), 5 Reversal, 6 Refund,
// 7 NSF (adjustments toward paid), 8 Bulk Bank, 9 Bulk Direct.
// Accounts: 1 Operating (No. 12345, transit 00011), 2 Payroll.
//
// Payments (value, CheckDate; entry date the same unless said):
//   101 Cash    100  03-10  Check# '0'
//   102 Cash     50  03-10  cancelled 03-10 (same day)
//   103 Cheque  200  03-10  Check# 123
//   104 Visa     80  03-10
//   105 Re-entry 40  03-11
//   106 Cheque  300  03-11  Check# 456, cancelled 03-12 (a later day)
//   107 Cash     25  03-11  account 2, no Check#
//   108 Visa     60  03-12  cancelled 03-12 (same day)
//   109 Cheque   70  03-12  entered 03-13 (dated before its entry)
//   110 Cash     90  03-12  cancelled 03-20 (after the period)
//   111 Reversal -30 03-11;  112 Refund -20 03-12;  113 NSF -300 03-12 (acct 2)
//   114, 115 Bulk Bank 150 + 100 03-11 (bulk cheque 1, 250, account 1)
//   116 Bulk Direct 120 03-12 (bulk cheque 2, account 1)
//   117 Cash 45 03-13, 118 Refund -45 03-13: a day that nets to zero
#pragma once

#include <string>

#include "accounts/account_fixture.h"

namespace orv::testing {

inline const char* kCashInRows = R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName, UserName, TypeID) VALUES
 (21, 'Ng', 'Ana', 'Ana Ng', 'ana', 3);
INSERT INTO PaymentTypes (ID, Name, Description, [Adjustment?], [ToTotalPaid?], BankDeposit,
  Refund, OfficePayment, BulkPayment, RecAfterDep, NSF) VALUES
 (1, 'Cash', 'Cash', 0, 0, 1, 0, 0, 0, 0, 0),
 (2, 'Visa', 'Card', 0, 0, 0, 0, 0, 0, 0, 0),
 (3, 'Re-entry', 'Entered again', 0, 0, 0, 0, 0, 0, 1, 0),
 (4, 'Cheque', 'Cheque', NULL, 0, 1, 0, 0, 0, 0, 0),
 (5, 'Reversal', 'Taken back', 1, 1, 0, 0, 0, 0, 0, 0),
 (6, 'Refund', 'Paid back', 1, 1, 0, 1, 0, 0, 0, 0),
 (7, 'NSF', 'Returned cheque', 1, 1, 0, 0, 0, 0, 0, 1),
 (8, 'Bulk Bank', 'Insurer cheque', 0, 0, 1, 0, 0, 1, 0, 0),
 (9, 'Bulk Direct', 'Insurer transfer', 0, 0, 0, 0, 0, 1, 0, 0);
INSERT INTO Accounts (ID, Name, AccountNumber, TransitNumber) VALUES
 (1, 'Operating', '12345', '00011'), (2, 'Payroll', '67890', '00022');
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, EmployeeID, PaymentName,
  Value, Notes, [Date], CheckDate, [Check#], Cancelled, CancellationDate) VALUES
 (101, 1, 1, 1, 21, 'Claire', 100, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', '0', NULL, NULL),
 (102, 1, 1, 1, 21, 'Claire', 50, 'Wrong patient', '2026-03-10 00:00:00', '2026-03-10 00:00:00', NULL, 1, '2026-03-10 00:00:00'),
 (103, 3, 4, 1, 21, 'Priya', 200, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', '123', NULL, NULL),
 (104, 6, 2, 1, 21, 'Seamus', 80, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', NULL, NULL, NULL),
 (105, 6, 3, 1, 21, 'Seamus', 40, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (106, 3, 4, 1, 21, 'Priya', 300, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', '456', 1, '2026-03-12 00:00:00'),
 (107, 1, 1, 2, 21, 'Claire', 25, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, 0, NULL),
 (108, 6, 2, 1, 21, 'Seamus', 60, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, 1, '2026-03-12 00:00:00'),
 (109, 3, 4, 1, 21, 'Priya', 70, NULL, '2026-03-13 00:00:00', '2026-03-12 00:00:00', '789', NULL, NULL),
 (110, 1, 1, 1, 21, 'Claire', 90, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, 1, '2026-03-20 00:00:00'),
 (111, 1, 5, 1, 21, 'Claire', -30, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (112, 6, 6, 1, 21, 'Seamus', -20, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (113, 3, 7, 2, 21, 'Priya', -300, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (114, 1, 8, 1, 21, 'Maple Life', 150, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (115, 3, 8, 1, 21, 'Maple Life', 100, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (116, 6, 9, 1, 21, 'Birch Mutual', 120, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (117, 1, 1, 1, 21, 'Claire', 45, NULL, '2026-03-13 00:00:00', '2026-03-13 00:00:00', NULL, NULL, NULL),
 (118, 1, 6, 1, 21, 'Claire', -45, NULL, '2026-03-13 00:00:00', '2026-03-13 00:00:00', NULL, NULL, NULL);
INSERT INTO BulkPayments (ID, PaymentTypeID, AccountID, EmployeeID, Amount, EntryDate, CheckNo,
  PaymentName) VALUES
 (1, 8, 1, 21, 250, '2026-03-11 00:00:00', 'MC-77', 'Maple Life'),
 (2, 9, 1, 21, 120, '2026-03-12 00:00:00', 'EFT-9', 'Birch Mutual');
INSERT INTO BulkPaymentDetails (BulkPaymentID, InvoicePaymentID) VALUES (1, 114), (1, 115), (2, 116);
)sql";

// For the period sections, added to the rows above:
//   invoice 331 (#1310) p3 03-11 by Ng, incomplete: line 3311 Complete
//     100, line 3312 In Progress 40; invoice 332 (#1320) p1 03-11 by Ng,
//     cancelled 03-11: line 3321 80 entered by Ng;
//   type 10 Write-off (not toward paid): payment 119 -50 on 03-11 with 20
//     allocated to line 3311; every other payment has nothing allocated;
//   EDI sends 1 (p3, claim, sent, seq 7, 03-11 14:30: EOB, accepted),
//     2 (p1, predetermination, not sent, seq 3, 03-12 09:00: acknowledged,
//     rejected), 3 (p6, unknown type 5, seq 9, 03-09: out of range);
//   p3 signed up 03-11 (Ng, Internet / Website), p6 on 02-01.
inline const char* kSectionRows = R"sql(
UPDATE InvoicePayments SET TotalAllocated = 0;
INSERT INTO PaymentTypes (ID, Name, Description, [Adjustment?], [ToTotalPaid?], BankDeposit,
  Refund, OfficePayment, BulkPayment, RecAfterDep, NSF) VALUES
 (10, 'Write-off', 'Small balance', 1, 0, 0, 0, 1, 0, 0, 0);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, DoctorID, [Date], [Time],
  [Complete?], Cancelled, CancellationDate, InvoiceTotal, notes) VALUES
 (331, 1310, 3, 21, 21, 21, '2026-03-11 00:00:00', 600, 0, NULL, NULL, 140, NULL),
 (332, 1320, 1, 21, 21, 21, '2026-03-11 00:00:00', 600, 1, 1, '2026-03-11 00:00:00', 80, 'Billed twice');
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID,
  EmployeeID) VALUES
 (3311, 331, '01202', 100, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21),
 (3312, 331, '23111', 40, 'In Progress', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21),
 (3321, 332, '01202', 80, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, EmployeeID,
  InitialProviderID, PaymentName, Value, TotalAllocated, Notes, [Date], CheckDate) VALUES
 (119, 3, 10, NULL, 21, 21, 'Office', -50, 20, 'Half used', '2026-03-11 00:00:00', '2026-03-11 00:00:00');
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES (119, 3311, 3, 20, '2026-03-11 00:00:00');
INSERT INTO PatientEDISends (ID, InvoiceID, PatientID, SequenceNumber, Type, DatePosted, [Sent?],
  CarrierNumber) VALUES
 (1, 331, 3, 7, 0, '2026-03-11 14:30:00', 1, '000011'),
 (2, NULL, 1, 3, 1, '2026-03-12 09:00:00', 0, '000012'),
 (3, NULL, 6, 9, 5, '2026-03-09 10:00:00', 1, '000013');
INSERT INTO PatientEDIResponses (ID, EDISendID, Status, TrsCode) VALUES
 (1, 1, 1, 21), (2, 2, 2, 11), (3, 3, 0, 11);
UPDATE Patient SET SignupDate = '2026-03-11 00:00:00', DoctorID = 21, RefferedBy = 'Website',
  ReferredByAddID = 'Internet', ReferalReason = 'Near work' WHERE ID = 3;
UPDATE Patient SET SignupDate = '2026-02-01 00:00:00' WHERE ID = 6;
)sql";

class CashInTest : public AccountReportTest {
 protected:
  // The rows the test's practice adds to the account fixture's.
  virtual std::string Rows() const { return kCashInRows; }
  void SetUp() override { SetUpReports(Rows()); }
  // A fresh running document for a section.
  void NewDocument() {
    form.VSP.KillDoc();
    form.VSP.StartDoc();
  }

  static DateTime Mar(int day) { return Day(2026, 3, day); }
};

}  // namespace orv::testing
