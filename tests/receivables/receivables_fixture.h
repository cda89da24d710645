// The hand-made practice of the account tests (accounts/account_fixture.h),
// with what the receivables reports read besides: providers, payment types,
// treatment lines with their providers and the allocations of payments to
// lines, and a component wired to a recording host and a preview form.
//
// Today is Friday 2026-11-20. Added to the account rows:
//
// Employees: 1 Moreau, Anne; 2 Chen, Paul; 3 Okafor, Ben.
// Payment types 1 Cash, 2 Cheque, 3 Insurance: none an adjustment.
//
// Invoices of patient 1 (101-105) and the new 106 have provider 1:
//   106 p1 2026-10-21 (exactly 30 days ago)  25.00  complete
// Invoices of Seamus (patient 6), provider 2:
//   601 2026-09-06 (75 days ago)  100.00                 complete
//   602 2026-11-01                120.00 / final 100.00  complete
//   603 (no date)                  30.00                 Complete 0
// Payment 611 p6, 40 on 602 (11-05), cheque 11-05, provider 2.
// Payment 221 (Marc, 10.0050 on account) was refunded in full on 11-10.
// Payment 262 p6, 10 with a 15 share on 161 (10-01): applied beyond its value.
//
// Treatment lines of patient 1 (Cost / PatientCost / PrimaryInsCost,
// Status, EntryDate, line provider):
//   1 inv 101  120 / 48 / 72   Complete 09-10  prov 1
//   2 inv 101   80 / 32 / 48   Complete 09-10  prov 1
//   3 inv 102  150 / 150 / 0   Complete 10-05  prov 1
//   4 inv 105   60 /  0 / 50   Complete 10-21  prov 2   (D - 30)
//   5 inv 104  300 / 300 / 0   Planned  11-15  prov 1   (never a charge)
//   6 inv 103   90 / 90 / 0    Complete 10-20  prov 2   (D - 31)
// Allocations to lines (payment, line, amount, applied):
//   201 -> 1 48, 201 -> 2 32 (09-15); 202 -> 1 72, 202 -> 2 48 (10-01);
//   203 -> 3 150 (10-06). Payment 202 names insurer 5 (InsuranceID).
// Invoice 101 and 105 are overseen by employee 3.
// Patient 7 Zoe Zero: only a cheque entered 11-19 dated 12-05, 50.
#pragma once

#include "accounts/account_fixture.h"

namespace orv::testing {

inline const char* kReceivableRows = R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName) VALUES
 (1, 'Moreau', 'Anne', 'Moreau, Anne'), (2, 'Chen', 'Paul', 'Chen, Paul'),
 (3, 'Okafor', 'Ben', 'Okafor, Ben');
INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?], OfficePayment) VALUES
 (1, 'Cash', 0, 0, 0), (2, 'Cheque', 0, 0, 0), (3, 'Insurance', 0, 0, 0);

UPDATE Invoices SET ProviderID = 1 WHERE PatientID = 1;
UPDATE Invoices SET OverseerID = 3 WHERE ID IN (101, 105);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Complete?], InvoiceTotal,
  InvoiceFinalTotal) VALUES
 (106, 1006, 1, 1, '2026-10-21 00:00:00', 1, 25, NULL),
 (601, 1601, 6, 2, '2026-09-06 00:00:00', 1, 100, NULL),
 (602, 1602, 6, 2, '2026-11-01 00:00:00', 1, 120, 100),
 (603, 1603, 6, 2, NULL, 0, 30, NULL);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (611, 6, 1, 2, 40, 40, 0, '2026-11-05 00:00:00', '2026-11-05 00:00:00', 0),
 (262, 6, 1, 1, 10, 15, 0, '2026-10-01 00:00:00', '2026-10-01 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (61, 611, 602, 40, '2026-11-05 00:00:00'),
 (62, 262, 161, 15, '2026-10-01 00:00:00');
UPDATE InvoicePayments SET RefundAmount = 10.005, RefundDate = '2026-11-10 00:00:00' WHERE ID = 221;
UPDATE InvoicePayments SET InsuranceID = 5 WHERE ID = 202;

UPDATE InvoiceDetails SET ProviderID = 1;
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, PatientCost, PrimaryInsCost,
  SecondaryInsCost, TertiaryInsCost, Status, [Date], EntryDate, ProviderID) VALUES
 (4, 105, '01202', 60, 0, 50, 0, 0, 'Complete', '2026-10-21 00:00:00', '2026-10-21 00:00:00', 2),
 (5, 104, '27211', 300, 300, 0, 0, 0, 'Planned', '2026-11-15 00:00:00', '2026-11-15 00:00:00', 1),
 (6, 103, '23111', 90, 90, 0, 0, 0, 'Complete', '2026-10-20 00:00:00', '2026-10-20 00:00:00', 2);
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (201, 1, 1, 48, '2026-09-15 00:00:00'), (201, 2, 1, 32, '2026-09-15 00:00:00'),
 (202, 1, 1, 72, '2026-10-01 00:00:00'), (202, 2, 1, 48, '2026-10-01 00:00:00'),
 (203, 3, 1, 150, '2026-10-06 00:00:00');

INSERT INTO Patient (ID, FirstName, LastName, FullName) VALUES (7, 'Zoe', 'Zero', 'Zero, Zoe');
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (271, 7, 2, 1, 50, 0, 50, '2026-11-19 00:00:00', '2026-12-05 00:00:00', 0);
)sql";

class ReceivablesTest : public AccountReportTest {
 protected:
  void SetUp() override { SetUpReports(kReceivableRows); }
};

}  // namespace orv::testing
