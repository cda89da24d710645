// The closing practice: the account practice (accounts/account_fixture.h,
// whose lines carry no provider) with four stretches of closing activity
// that never share a day, so each report reads one of them and the others
// only where it reads without dates (years to date, incomplete invoices,
// the staff lists). Today is 2026-11-20. Figures by hand, from this table.
//
// Office 1 "Harbour Dental": 15-minute units; hygiene codes 11000-11999.
// Staff: 99 (None) (type 0); 1 Dr. Anne Moreau, 11 Ada Bell, 13 Ivy Stone,
// 21 Ana Ng (user "ana"), 41 Ada Ames (dentists, type 3); 2 RDH Paul Chen,
// 3 RDH Ben Okafor, 12 Hugo Hill, 42 Ben Birch (hygienists, type 5). Only
// Ames has hours: chair C1, Sundays 09:00-12:00, Fridays 08:00-17:00 with
// lunch 12-1.
// Payment types (adjustment flag; money unless flagged):
//   1 Cash (bank)          2 Write-off "Small balance" (1, office's)
//   3 Discount (1)         4 Insurance Cheque "Insurer"
//   5 Cheque (NULL, bank)  6 Visa (direct)   7 Re-entry (after deposit)
//   8 Reversal, 9 Refund "Paid back" (refund), 10 NSF: 1, toward paid
//   11 Bulk Bank, 12 Bulk Direct (bulk)
//   13 Patient Refund "Credit paid back" (-1, toward paid, refund)
//   71 Till|Cash (a bar in its name)
// Accounts: 1 Operating (No. 12345, transit 00011), 2 Payroll (67890, 00022).
//
// == February 2026: the analyses (Bell 11, Hill 12, Stone 13) ==
// Before the period:
//   inv 901 (#9001) p1 Claire, 01-15, line 91 01202 100.00, prov 11
//   inv 906 (#9006) p6 Seamus, 01-10, line 97 01202  30.00, prov 13
//   pay 951 p1 cash 60.00, cheque 01-20, all on line 91 (01-20), account 1
//   so 70.00 is owed on Feb 1: 100 - 60 + 30.
// In February (entry dates; patient / insurance portions; Bell oversees
// and doctors every invoice):
//   inv 902 (#9002) p1 02-03, assigned: line 92 27201 500 (200 / 300,
//       treated 01-27), line 93 99111 150 (150 / 0, lab)          prov 11
//   inv 903 (#9003) p3 Priya 02-05: line 94 23111 80, CANCELLED 02-10  prov 11
//   inv 904 (#9004) p6 02-12: line 95 11101 90, line 96 -99111 -20     prov 12
//   inv 905 (#9005) p3 02-20: no lines, total 70                       prov 11
//   pay 954 p1 cash 150, cheque 02-03, on line 93 (02-03), account 2
//   pay 952 p6 cheque 100 taken in by 11, cheque 02-12, 60 on line 95
//       applied 02-14 (moved from Bell to Hill), 40 left on account, acct 1
//   pay 953 p1 insurance 300, cheque 02-20, on line 92 (02-20), account 1
//   pay 955 p1 write-off 40 taken by 11, 02-25, on line 91 (January's)
//   pay 956 p6 write-off 30 taken by 13, 02-26, on line 97 (Ivy's, January)
// Invoices 650 + 80 - 80 (cancelled) + 70 + 70 = 790, lab 150 - 20 = 130;
// write-offs 40 + 30 = 70; applied 150 + 60 + 300 = 510 (all payments 550,
// Seamus's 40 credit too). Read by lines (905 has none; the cancelled 903
// stays), what is owed goes from 70 on Feb 1 to 70 + 800 - 70 - 510 = 290
// by allocation, 250 counting every payment. Nothing after 02-26.
//
// == March 10-13 2026: cash in, deposit slip, period sections (Ng 21) ==
// Payments (value, cheque date; entered the same day unless said; nothing
// allocated unless said):
//   101 Cash    100  03-10  Check# '0'
//   102 Cash     50  03-10  cancelled 03-10 (same day), "Wrong patient"
//   103 Cheque  200  03-10  Check# 123
//   104 Visa     80  03-10
//   105 Re-entry 40  03-11
//   106 Cheque  300  03-11  Check# 456, cancelled 03-12 (a later day)
//   107 Cash     25  03-11  account 2, no Check#
//   108 Visa     60  03-12  cancelled 03-12 (same day)
//   109 Cheque   70  03-12  entered 03-13 (dated before its entry)
//   110 Cash     90  03-12  cancelled 03-20 (after the period)
//   111 Reversal -30 03-11;  112 Refund -20 03-12;  113 NSF -300 03-12 (acct 2)
//   114, 115 Bulk Bank 150 + 100 03-11 (bulk cheque 1 "MC-77", 250, acct 1)
//   116 Bulk Direct 120 03-12 (bulk cheque 2 "EFT-9", account 1)
//   117 Cash 45 03-13, 118 Refund -45 03-13: a day that nets to zero
//   119 Write-off -50 03-11 by Ng, no account, "Half used": 20 of it
//       allocated to line 3311
// Invoices: 331 (#1310) p3 03-11 by Ng, incomplete: line 3311 Complete
//   100, line 3312 In Progress 40; 332 (#1320) p1 03-11 by Ng, cancelled
//   03-11 "Billed twice": line 3321 80 entered by Ng.
// EDI sends: 1 (p3, claim, sent, seq 7, 03-11 14:30: EOB, accepted),
//   2 (p1, predetermination, not sent, seq 3, 03-12 09:00: acknowledged,
//   rejected), 3 (p6, unknown type 5, seq 9, 03-09: out of range).
// Sign-ups: p3 03-11 (preferred doctor Ng, Internet / Website, "Near work"),
// p6 02-01.
//
// == November 2026: production (Moreau 1, Chen 2, Okafor 3) ==
// Invoices and lines (code cost status entry date, treatment date if other,
// line provider):
//   701 p1 prov 1, no overseer, 11-02, total 300
//       71 01202   100 Complete 11-02 (treated 10-28) prov 1
//       72 99111   200 Complete 11-02                 prov 1  lab
//   702 p1 prov 2, overseer 1, 11-05, total 150
//       73 11101   100 Complete 11-05 prov 2
//       74 01202    50 Complete 11-05 prov 2
//   703 p3 prov 2, no overseer, 11-10, total -120
//       75 -11101 -120 Complete 11-10 prov 2  reversal
//   704 p3 prov 1, overseer 1, 11-10, total 0
//       76 -00100  -50 Complete 11-10 prov 1  left out of production
//       77 00100    50 Complete 11-10 prov 1
//   705 p3 prov 1, 11-12, total 40, incomplete
//       78 01202    40 In Progress 11-12 prov 1
//   706 p3 prov 1, 11-03, total 60, CANCELLED 11-20
//       79 11101    60 Complete 11-03 prov 1
// Payments (value, cheque date) with their allocations to lines (applied
// on the cheque's date) and shares on invoices:
//   801 Cash 150 (11-06): line 73 80, line 74 50, line 72 20;
//       invoice 702 130, invoice 701 20
//   802 Insurance cheque 20 (11-07): line 73 20; invoice 702 20
//       (line 73 thus has two allocations)
//   803 Write-off -10 (11-08): line 74 -10; invoice 702 -10
//   804 Discount -5 (11-08): line 71 -5; invoice 701 -5
// Production of November: Moreau 100 + 200 + 50 + 60 = 410 (the -00100
// and the line in progress out), Chen 100 + 50 - 120 = 30: 440, lab 200.
//
// == February 2032 (a leap year) against February 2031: day-end summary ==
// Production (invoice date; all Ames's):
//   9201 2032-02-29: 01202 90, 11101 150, 11101 60 and its reversal -60
//        (3 procedures, 240.00); appointment 8101, 4 units, total 240
//   9203 2032-02-29: no lines, total 30, never paid
//   9202 2032-01-15: no lines, total 120 (paid in the period)
//   9204 2031-02-28: 23111 200 (last year's one procedure)
//   9205 2031-03-01: 33111 999 (where Feb 29 would land by adding days)
// These lines carry no status.
// Payments (entered / cheque date, allocations):
//   9301 Till|Cash 100  02-29      100 on 9201 (02-29): immediate
//   9302 Cheque     50  02-29       50 on 9202 (02-29): 45 days, 30-60
//   9303 Till|Cash  70  02-29       40 on 9201, 30 on 9202: both rows
//   9304 Write-off  15  02-29
//   9305 Till|Cash  80  02-29 / 03-15  post-dated
//   9306 Patient Refund -20  02-29
// Appointments: 8101 Ames 2032-02-29 6 units est. 100, booked by Birch;
// 8102 Birch 2032-02-29 2 units, not billed; 8103 and 8104 the sign-up
// visits below (0 units); 8105 Ames 2031-02-28 8 units est. 120, no
// booker; 8106, 8107 visits outside the month.
// Sign-ups: 9101 Dentist 02-10 (active, 01101 on 02-12: new), 9102
// Dentist 02-20 (active, only 01202), 9103 Internet 02-29 (inactive,
// inactivated 02-25), 9104 '' 02-15 (exam before sign-up), 9105 NULL 02-01
// (active, 01103 on 2033-01-26, the 360th day: new), 9106 Dentist 03-01,
// 9107 inactivated 2031-02-10.
#pragma once

#include <cctype>
#include <filesystem>
#include <string>

#include "accounts/account_fixture.h"
#include "common/vbstrings.h"
#include "platform/host/settings.h"

namespace orv::testing {

inline const char* kClosingPracticeRows = R"sql(
INSERT INTO OfficeInformation (ID, Name, UnitMinutes) VALUES (1, 'Harbour Dental', 15);
INSERT INTO OfficeHygieneCompanyCodes (OfficeID, Startcode, EndCode) VALUES (1, '11000', '11999');
INSERT INTO Employees (ID, LastName, FirstName, FullName, UserName, [Professional Title], TypeID)
VALUES
 (99, 'None', '(None)', '(None)', NULL, NULL, 0),
 (1, 'Moreau', 'Anne', 'Anne Moreau', NULL, 'Dr.', 3),
 (2, 'Chen', 'Paul', 'Paul Chen', NULL, 'RDH', 5),
 (3, 'Okafor', 'Ben', 'Ben Okafor', NULL, 'RDH', 5),
 (11, 'Bell', 'Ada', 'Ada Bell', NULL, NULL, 3), (12, 'Hill', 'Hugo', 'Hugo Hill', NULL, NULL, 5),
 (13, 'Stone', 'Ivy', 'Ivy Stone', NULL, NULL, 3), (21, 'Ng', 'Ana', 'Ana Ng', 'ana', NULL, 3),
 (42, 'Birch', 'Ben', 'Ben Birch', NULL, NULL, 5);
INSERT INTO Employees (ID, LastName, FirstName, FullName, TypeID, ChairID, SundayFrom, Sundayto,
  FridayFrom, Fridayto, LunchFromFriday, LunchtoFriday) VALUES
 (41, 'Ames', 'Ada', 'Ada Ames', 3, 'C1', '09:00 AM', '12:00 PM', '08:00 AM', '05:00 PM',
  '12:00 PM', '01:00 PM');
INSERT INTO PaymentTypes (ID, Name, Description, [Adjustment?], [ToTotalPaid?], BankDeposit,
  Refund, OfficePayment, BulkPayment, RecAfterDep, NSF) VALUES
 (1, 'Cash', 'Cash', 0, 0, 1, 0, 0, 0, 0, 0),
 (2, 'Write-off', 'Small balance', 1, 0, 0, 0, 1, 0, 0, 0),
 (3, 'Discount', 'Courtesy', 1, 0, 0, 0, 0, 0, 0, 0),
 (4, 'Insurance Cheque', 'Insurer', 0, 0, 0, 0, 0, 0, 0, 0),
 (5, 'Cheque', 'Cheque', NULL, 0, 1, 0, 0, 0, 0, 0),
 (6, 'Visa', 'Card', 0, 0, 0, 0, 0, 0, 0, 0),
 (7, 'Re-entry', 'Entered again', 0, 0, 0, 0, 0, 0, 1, 0),
 (8, 'Reversal', 'Taken back', 1, 1, 0, 0, 0, 0, 0, 0),
 (9, 'Refund', 'Paid back', 1, 1, 0, 1, 0, 0, 0, 0),
 (10, 'NSF', 'Returned cheque', 1, 1, 0, 0, 0, 0, 0, 1),
 (11, 'Bulk Bank', 'Insurer cheque', 0, 0, 1, 0, 0, 1, 0, 0),
 (12, 'Bulk Direct', 'Insurer transfer', 0, 0, 0, 0, 0, 1, 0, 0),
 (13, 'Patient Refund', 'Credit paid back', -1, 1, 0, 1, 0, 0, 0, 0),
 (71, 'Till|Cash', 'Cash', 0, 0, 0, 0, 0, 0, 0, 0);
INSERT INTO Accounts (ID, Name, AccountNumber, TransitNumber) VALUES
 (1, 'Operating', '12345', '00011'), (2, 'Payroll', '67890', '00022');
INSERT INTO FeeCodes (ID, Description) VALUES
 ('00100', 'Internal'), ('01202', 'Recall exam'), ('11101', 'Scaling'), ('99111', 'Lab fee');

-- February 2026
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
 (952, 6, 5, 1, 11, 'Seamus', 100, 60, 40, '2026-02-12 00:00:00', '2026-02-12 00:00:00', NULL),
 (953, 1, 4, 1, 11, 'Maple Life-Claire', 300, 300, 0, '2026-02-20 00:00:00', '2026-02-20 00:00:00', 1),
 (955, 1, 2, NULL, 11, 'Office', 40, 40, 0, '2026-02-25 00:00:00', '2026-02-25 00:00:00', 0),
 (956, 6, 2, NULL, 13, 'Office', 30, 30, 0, '2026-02-26 00:00:00', '2026-02-26 00:00:00', 0);
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (951, 951, 901, 60, '2026-01-20 00:00:00'), (954, 954, 902, 150, '2026-02-03 00:00:00'),
 (952, 952, 904, 60, '2026-02-14 00:00:00'), (953, 953, 902, 300, '2026-02-20 00:00:00'),
 (955, 955, 901, 40, '2026-02-25 00:00:00'), (956, 956, 906, 30, '2026-02-26 00:00:00');
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (951, 91, 1, 60, '2026-01-20 00:00:00'), (954, 93, 1, 150, '2026-02-03 00:00:00'),
 (952, 95, 6, 60, '2026-02-14 00:00:00'), (953, 92, 1, 300, '2026-02-20 00:00:00'),
 (955, 91, 1, 40, '2026-02-25 00:00:00'), (956, 97, 6, 30, '2026-02-26 00:00:00');

-- March 2026
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, EmployeeID,
  InitialProviderID, PaymentName, Value, TotalAllocated, Notes, [Date], CheckDate, [Check#],
  Cancelled, CancellationDate) VALUES
 (101, 1, 1, 1, 21, NULL, 'Claire', 100, 0, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', '0', NULL, NULL),
 (102, 1, 1, 1, 21, NULL, 'Claire', 50, 0, 'Wrong patient', '2026-03-10 00:00:00', '2026-03-10 00:00:00', NULL, 1, '2026-03-10 00:00:00'),
 (103, 3, 5, 1, 21, NULL, 'Priya', 200, 0, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', '123', NULL, NULL),
 (104, 6, 6, 1, 21, NULL, 'Seamus', 80, 0, NULL, '2026-03-10 00:00:00', '2026-03-10 00:00:00', NULL, NULL, NULL),
 (105, 6, 7, 1, 21, NULL, 'Seamus', 40, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (106, 3, 5, 1, 21, NULL, 'Priya', 300, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', '456', 1, '2026-03-12 00:00:00'),
 (107, 1, 1, 2, 21, NULL, 'Claire', 25, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, 0, NULL),
 (108, 6, 6, 1, 21, NULL, 'Seamus', 60, 0, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, 1, '2026-03-12 00:00:00'),
 (109, 3, 5, 1, 21, NULL, 'Priya', 70, 0, NULL, '2026-03-13 00:00:00', '2026-03-12 00:00:00', '789', NULL, NULL),
 (110, 1, 1, 1, 21, NULL, 'Claire', 90, 0, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, 1, '2026-03-20 00:00:00'),
 (111, 1, 8, 1, 21, NULL, 'Claire', -30, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (112, 6, 9, 1, 21, NULL, 'Seamus', -20, 0, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (113, 3, 10, 2, 21, NULL, 'Priya', -300, 0, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (114, 1, 11, 1, 21, NULL, 'Maple Life', 150, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (115, 3, 11, 1, 21, NULL, 'Maple Life', 100, 0, NULL, '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL),
 (116, 6, 12, 1, 21, NULL, 'Birch Mutual', 120, 0, NULL, '2026-03-12 00:00:00', '2026-03-12 00:00:00', NULL, NULL, NULL),
 (117, 1, 1, 1, 21, NULL, 'Claire', 45, 0, NULL, '2026-03-13 00:00:00', '2026-03-13 00:00:00', NULL, NULL, NULL),
 (118, 1, 9, 1, 21, NULL, 'Claire', -45, 0, NULL, '2026-03-13 00:00:00', '2026-03-13 00:00:00', NULL, NULL, NULL),
 (119, 3, 2, NULL, 21, 21, 'Office', -50, 20, 'Half used', '2026-03-11 00:00:00', '2026-03-11 00:00:00', NULL, NULL, NULL);
INSERT INTO BulkPayments (ID, PaymentTypeID, AccountID, EmployeeID, Amount, EntryDate, CheckNo,
  PaymentName) VALUES
 (1, 11, 1, 21, 250, '2026-03-11 00:00:00', 'MC-77', 'Maple Life'),
 (2, 12, 1, 21, 120, '2026-03-12 00:00:00', 'EFT-9', 'Birch Mutual');
INSERT INTO BulkPaymentDetails (BulkPaymentID, InvoicePaymentID) VALUES (1, 114), (1, 115), (2, 116);
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, DoctorID, [Date], [Time],
  [Complete?], Cancelled, CancellationDate, InvoiceTotal, notes) VALUES
 (331, 1310, 3, 21, 21, 21, '2026-03-11 00:00:00', 600, 0, NULL, NULL, 140, NULL),
 (332, 1320, 1, 21, 21, 21, '2026-03-11 00:00:00', 600, 1, 1, '2026-03-11 00:00:00', 80, 'Billed twice');
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID,
  EmployeeID) VALUES
 (3311, 331, '01202', 100, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21),
 (3312, 331, '23111', 40, 'In Progress', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21),
 (3321, 332, '01202', 80, 'Complete', '2026-03-11 00:00:00', '2026-03-11 00:00:00', 21, 21);
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

-- November 2026
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, [Date], [Complete?],
  Cancelled, CancellationDate, InvoiceTotal) VALUES
 (701, 7001, 1, 1, NULL, '2026-11-02 00:00:00', 1, NULL, NULL, 300),
 (702, 7002, 1, 2, 1, '2026-11-05 00:00:00', 1, NULL, NULL, 150),
 (703, 7003, 3, 2, NULL, '2026-11-10 00:00:00', 1, NULL, NULL, -120),
 (704, 7004, 3, 1, 1, '2026-11-10 00:00:00', 1, NULL, NULL, 0),
 (705, 7005, 3, 1, NULL, '2026-11-12 00:00:00', 0, NULL, NULL, 40),
 (706, 7006, 3, 1, NULL, '2026-11-03 00:00:00', 1, 1, '2026-11-20 00:00:00', 60);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], EntryDate, ProviderID)
VALUES
 (71, 701, '01202', 100, 'Complete', '2026-10-28 00:00:00', '2026-11-02 00:00:00', 1),
 (72, 701, '99111', 200, 'Complete', '2026-11-02 00:00:00', '2026-11-02 00:00:00', 1),
 (73, 702, '11101', 100, 'Complete', '2026-11-05 00:00:00', '2026-11-05 00:00:00', 2),
 (74, 702, '01202', 50, 'Complete', '2026-11-05 00:00:00', '2026-11-05 00:00:00', 2),
 (75, 703, '-11101', -120, 'Complete', '2026-11-10 00:00:00', '2026-11-10 00:00:00', 2),
 (76, 704, '-00100', -50, 'Complete', '2026-11-10 00:00:00', '2026-11-10 00:00:00', 1),
 (77, 704, '00100', 50, 'Complete', '2026-11-10 00:00:00', '2026-11-10 00:00:00', 1),
 (78, 705, '01202', 40, 'In Progress', '2026-11-12 00:00:00', '2026-11-12 00:00:00', 1),
 (79, 706, '11101', 60, 'Complete', '2026-11-03 00:00:00', '2026-11-03 00:00:00', 1);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (801, 1, 1, 2, 150, 150, 0, '2026-11-06 00:00:00', '2026-11-06 00:00:00', 0),
 (802, 1, 4, 2, 20, 20, 0, '2026-11-07 00:00:00', '2026-11-07 00:00:00', 1),
 (803, 1, 2, 2, -10, -10, 0, '2026-11-08 00:00:00', '2026-11-08 00:00:00', 0),
 (804, 1, 3, 1, -5, -5, 0, '2026-11-08 00:00:00', '2026-11-08 00:00:00', 0);
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES
 (801, 73, 1, 80, '2026-11-06 00:00:00'), (801, 74, 1, 50, '2026-11-06 00:00:00'),
 (801, 72, 1, 20, '2026-11-06 00:00:00'), (802, 73, 1, 20, '2026-11-07 00:00:00'),
 (803, 74, 1, -10, '2026-11-08 00:00:00'), (804, 71, 1, -5, '2026-11-08 00:00:00');
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (801, 801, 702, 130, '2026-11-06 00:00:00'), (802, 801, 701, 20, '2026-11-06 00:00:00'),
 (803, 802, 702, 20, '2026-11-07 00:00:00'), (804, 803, 702, -10, '2026-11-08 00:00:00'),
 (805, 804, 701, -5, '2026-11-08 00:00:00');

-- February 2032 against February 2031
INSERT INTO Patient (ID, FirstName, LastName, FullName, SignupDate, [Active?], InactivationDate,
  ReferredByAddID) VALUES
 (9101, 'Ava', 'Quinn', 'Quinn, Ava', '2032-02-10 00:00:00', -1, NULL, 'Dentist'),
 (9102, 'Bo', 'Quinn', 'Quinn, Bo', '2032-02-20 00:00:00', -1, NULL, 'Dentist'),
 (9103, 'Cy', 'Quinn', 'Quinn, Cy', '2032-02-29 00:00:00', 0, '2032-02-25 00:00:00', 'Internet'),
 (9104, 'Di', 'Quinn', 'Quinn, Di', '2032-02-15 00:00:00', -1, NULL, ''),
 (9105, 'Ed', 'Quinn', 'Quinn, Ed', '2032-02-01 00:00:00', -1, NULL, NULL),
 (9106, 'Fay', 'Quinn', 'Quinn, Fay', '2032-03-01 00:00:00', -1, NULL, 'Dentist'),
 (9107, 'Gus', 'Quinn', 'Quinn, Gus', '2030-05-01 00:00:00', 0, '2031-02-10 00:00:00', NULL);
INSERT INTO PatientAppointments (ID, PatientID, ProviderID, EmployeeID, Date, Time, Units,
  Estimate) VALUES
 (8101, 9101, 41, 42, '2032-02-29 00:00:00', 540, 6, 100),
 (8102, 9102, 42, NULL, '2032-02-29 00:00:00', 600, 2, NULL),
 (8103, 9101, 42, NULL, '2032-02-12 00:00:00', 600, 0, NULL),
 (8104, 9104, 42, NULL, '2032-02-10 00:00:00', 600, 0, NULL),
 (8105, 9102, 41, NULL, '2031-02-28 00:00:00', 600, 8, 120),
 (8106, 9105, 42, NULL, '2033-01-26 00:00:00', 600, 0, NULL),
 (8107, 9103, 42, NULL, '2032-03-05 00:00:00', 600, 0, NULL);
INSERT INTO PatientAppointmentCodes (PatientAppointmentID, Code) VALUES
 (8103, '01101'), (8102, '01202'), (8104, '01102'), (8106, '01103'), (8107, '01103');
INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, [Date], [Complete?], InvoiceTotal,
  AppointmentID, Units) VALUES
 (9201, 9201, 9101, 41, '2032-02-29 00:00:00', 1, 240, 8101, 4),
 (9202, 9202, 9101, 41, '2032-01-15 00:00:00', 1, 120, NULL, NULL),
 (9203, 9203, 9102, 42, '2032-02-29 00:00:00', 1, 30, NULL, NULL),
 (9204, 9204, 9102, 41, '2031-02-28 00:00:00', 1, 200, NULL, NULL),
 (9205, 9205, 9102, 41, '2031-03-01 00:00:00', 1, 999, NULL, NULL);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, [Date], EntryDate, ProviderID) VALUES
 (9211, 9201, '01202', 90, '2032-02-29 00:00:00', '2032-02-29 00:00:00', 41),
 (9212, 9201, '11101', 150, '2032-02-29 00:00:00', '2032-02-29 00:00:00', 41),
 (9213, 9201, '11101', 60, '2032-02-29 00:00:00', '2032-02-29 00:00:00', 41),
 (9214, 9201, '-11101', -60, '2032-02-29 00:00:00', '2032-02-29 00:00:00', 41),
 (9241, 9204, '23111', 200, '2031-02-28 00:00:00', '2031-02-28 00:00:00', 41),
 (9251, 9205, '33111', 999, '2031-03-01 00:00:00', '2031-03-01 00:00:00', 41);
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, Value, [Date], CheckDate) VALUES
 (9301, 9101, 71, 100, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9302, 9101, 5, 50, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9303, 9101, 71, 70, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9304, 9101, 2, 15, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9305, 9102, 71, 80, '2032-02-29 00:00:00', '2032-03-15 00:00:00'),
 (9306, 9102, 13, -20, '2032-02-29 00:00:00', '2032-02-29 00:00:00');
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (9311, 9301, 9201, 100, '2032-02-29 00:00:00'), (9321, 9302, 9202, 50, '2032-02-29 00:00:00'),
 (9331, 9303, 9201, 40, '2032-02-29 00:00:00'), (9332, 9303, 9202, 30, '2032-02-29 00:00:00');
)sql";

// The February providers as the closing runs name them.
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

// The practice above, office 1 and settings of the test's own (so that a
// setting one test overrides never reaches another).
class ClosingTest : public AccountReportTest {
 protected:
  void SetUp() override { SetUpWith(""); }
  // The practice with `more_rows` added (SQLite text), for fixtures built
  // on it.
  void SetUpWith(const std::string& more_rows) {
    if (!SetUpReports(std::string(kClosingPracticeRows) + more_rows)) return;
    settings_file_ = (std::filesystem::temp_directory_path() /
                      ("orv-closing-settings-" + std::to_string(::getpid()) + ".ini"))
                         .string();
    std::filesystem::remove(settings_file_);
    host::SetAppSettings(host::SettingsStore(settings_file_));
    reports.OfficeID = 1;
  }
  void TearDown() override {
    AccountFixture::TearDown();
    if (!settings_file_.empty()) std::filesystem::remove(settings_file_);
  }

  // A fresh running document for a section.
  void NewDocument() {
    form.VSP.KillDoc();
    form.VSP.StartDoc();
  }
  // Runs a section in a document of its own, as a run would.
  template <typename F>
  void InDocument(F section) {
    NewDocument();
    section();
    form.VSP.EndDoc();
  }

  static DateTime Feb(int day) { return Day(2026, 2, day); }
  static DateTime Mar(int day) { return Day(2026, 3, day); }
  static DateTime Nov(int day) { return Day(2026, 11, day); }

 private:
  std::string settings_file_;
};

// The production tests and the referral fixture built on them.
using ProductionTest = ClosingTest;

}  // namespace orv::testing
