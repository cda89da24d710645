// A small hand-made practice for the compensation reports, with figures
// worked by hand. Today is Friday 2026-11-20; the pay period is October
// 2026 (Oct 1 a Thursday).
//
// Offices: 1 (UnitMinutes 10, closes 5:00 PM weekdays and 1:00 PM on
// Saturday, no Sunday hours, hygiene company codes 11000-11999 and
// 13000-13999); 2 (no hours, no hygiene company codes).
//
// Hourly: 20 Hana Hourly, PayRate 20.00, Monday 8:00 AM to 4:00 PM, no
// weekend hours. Punches:
//   Sep 30 08:00-12:00            outside the period
//   Oct 1  08:00-12:37            277 min
//   Oct 3  Sat 09:00-NULL         employee has no Saturday: office 1:00 PM, 240 min
//   Oct 4  Sun 10:00-NULL         nobody closes Sunday: 0 min, no row
//   Oct 5  Mon 09:00-NULL         employee's Monday 4:00 PM, 420 min
//   Oct 9  Fri 22:00-Oct 10 01:00 over midnight: no row
//   total 937 min = 15 h 37 min; 20.00 x 937 / 60 = 312.333 -> $312.33
//
// Commission: 21 Dora Dent, Commission 35, splits 01000-01999 "40%",
// 02000-02999 "$25", 03000-03999 "15" (no marker).
//   Invoice 2101 (#5001, patient 1, Oct 2, complete): lines 01202 1000.00,
//   99111 120.00 (lab), -9911 30.00 (not lab).
//   Payments on 2101: detail 4101 600 (Cash, Oct 5; the join sees it
//   twice), 4102 300 (Cheque, Oct 6), 4105 100 (type with a NULL
//   [Adjustment?], Oct 7), 4106 77 (Sep 30, outside). Paid 1,000.00.
//   Adjustments (Write-off, to total paid): 4103 -30 (Oct 8), 4104 20
//   (Oct 9): adjusted 50.00. Courtesy 4107 -9 (not to total paid): left out.
//   Overseen: invoice 2201 (#6001, patient 2 "Ben | Cole", provider 22,
//   final Oct 15): 01202 200.00 at 40% = 80.00, 02101 60.00 at $25 = 25.00,
//   03101 40.00 at "15" = 0, 05101 100.00 no split (skipped). Invoice 2202
//   Dora's own work and 2203 cancelled: left out. Overseen 105.00.
//   Sub total 830.00, grand total 290.50, payable 395.50.
// Commission 0 with a split: 23 Eli Oakes, split 01000-01999 "50%".
//   Overseen: 2301 (provider 22) 01202 8.01 on Oct 10 -> 4.005, the total
//   rounds half to even to 4.00; 2302 (his own) 01202 10.00 on Oct 11 ->
//   9.00. Payable $9.00 (9.01 if rounded half up).
//
// Monitor: 30 Hilda Hygienist (TypeID 5), PayRate 40, Monday 8:00 AM to
// 4:00 PM (48 units), TargetIncomePerDay 1000. Invoice 3001 on Mon Oct 5:
// 43427 x3, 43421, 11112, 01202, 13211; payment 100.00 and 7.00 of a type
// with a NULL [Adjustment?]; 6 units booked. Invoice 3002 on Wed Oct 7:
// 01400. Nothing on Tue Oct 6. Invoice 3003 on Mon Nov 2: 11111.
//
// Specialists (TypeID 12): 40 Sam First PayRate 50 (Oct 6 09:00-12:00, a
// Tuesday 09:00-NULL punch falls back to his Tuesday start: nothing);
// invoices 4001 Oct 10 500.00 (lines 99111 80.00, -9911 5.00, 01202
// 415.00) and 4002 Nov 3 300.00 cancelled (still production).
// 41 Tia Second Commission 50: invoice 4101 Oct 12 240.00 with 200.00 cash
// and 40.00 write-off paid on Oct 13: cost 100.00. 42 Uma Third PayRate
// 10, Commission 10: a 60-minute punch (10.00) and 100.00 collected
// (10.00). 43 Vic Fourth: nothing.
#pragma once

#include "accounts/account_fixture.h"

namespace orv::testing {

inline const char* kCompensationRows = R"sql(
DELETE FROM Invoices; DELETE FROM InvoiceDetails; DELETE FROM InvoicePayments;
DELETE FROM InvoicePaymentDetails; DELETE FROM InvoicePaymentAllocations; DELETE FROM Patient;
DELETE FROM PaymentTypes; DELETE FROM Employees; DELETE FROM OfficeInformation;
DELETE FROM OfficeHygieneCompanyCodes; DELETE FROM PatientAppointments; DELETE FROM Punch;
DELETE FROM EmployeeCodeSplit;

-- Without its key the detail table lets the payment join meet a detail twice.
DROP TABLE InvoicePaymentDetails;
CREATE TABLE InvoicePaymentDetails (ID INTEGER, InvoicePaymentID INTEGER, InvoiceID INTEGER,
  Amount MONEY, [Date] DATETIME);

INSERT INTO OfficeInformation (ID, Name, UnitMinutes, HourToMonday, HourToTuesday,
  HourToWednesday, HourToThursday, HourToFriday, HourToSaturday) VALUES
 (1, 'North Office', 10, '05:00 PM', '05:00 PM', '05:00 PM', '05:00 PM', '05:00 PM', '01:00 PM'),
 (2, 'South Office', 15, NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO OfficeHygieneCompanyCodes (OfficeID, Startcode, EndCode) VALUES
 (1, '11000', '11999'), (1, '13000', '13999');

INSERT INTO Employees (ID, FirstName, LastName, FullName, TypeID, Commission, PayRate, Salary,
  TargetIncomePerDay, MondayFrom, Mondayto, TuesdayFrom, Tuesdayto) VALUES
 (20, 'Hana', 'Hourly', 'Hana Hourly', 6, 0, 20, NULL, NULL, '08:00 AM', '04:00 PM', NULL, NULL),
 (21, 'Dora', 'Dent', 'Dora Dent', 3, 35, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (22, 'Pat', 'Provider', 'Pat Provider', 5, 0, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (23, 'Eli', 'Oakes', 'Eli Oakes', 3, 0, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (30, 'Hilda', 'Hygienist', 'Hilda Hygienist', 5, 0, 40, NULL, 1000, '08:00 AM', '04:00 PM', NULL, NULL),
 (40, 'Sam', 'First', 'Sam First', 12, 0, 50, NULL, NULL, NULL, NULL, '09:00 AM', '03:00 PM'),
 (41, 'Tia', 'Second', 'Tia Second', 12, 50, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (42, 'Uma', 'Third', 'Uma Third', 13, 10, 10, NULL, NULL, NULL, NULL, NULL, NULL),
 (43, 'Vic', 'Fourth', 'Vic Fourth', 14, 0, NULL, NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO EmployeeCodeSplit (ID, EmployeeID, StartCode, EndCode, Amount) VALUES
 (1, 21, '01000', '01999', '40%'), (2, 21, '02000', '02999', '$25'), (3, 21, '03000', '03999', '15'),
 (4, 23, '01000', '01999', '50%');

INSERT INTO Punch (ID, UserID, [Date], TimeIn, Timeout) VALUES
 (1, 20, '2026-09-30 00:00:00', '2026-09-30 08:00:00', '2026-09-30 12:00:00'),
 (2, 20, '2026-10-01 00:00:00', '2026-10-01 08:00:00', '2026-10-01 12:37:00'),
 (3, 20, '2026-10-03 00:00:00', '2026-10-03 09:00:00', NULL),
 (4, 20, '2026-10-04 00:00:00', '2026-10-04 10:00:00', NULL),
 (5, 20, '2026-10-05 00:00:00', '2026-10-05 09:00:00', NULL),
 (6, 20, '2026-10-09 00:00:00', '2026-10-09 22:00:00', '2026-10-10 01:00:00'),
 (7, 40, '2026-10-06 00:00:00', '2026-10-06 09:00:00', '2026-10-06 12:00:00'),
 (8, 40, '2026-10-13 00:00:00', '2026-10-13 09:00:00', NULL),
 (9, 42, '2026-10-14 00:00:00', '2026-10-14 10:00:00', '2026-10-14 11:00:00');

INSERT INTO Patient (ID, FirstName, LastName, FullName, DoctorID) VALUES
 (1, 'Ava', 'Stone', 'Stone, Ava', 21), (2, 'Ben |', 'Cole', 'Cole, Ben |', 22);

INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?]) VALUES
 (1, 'Cash', 0, 0), (2, 'Cheque', 0, 0), (3, 'Write-off', -1, -1), (4, 'Courtesy', 1, 0),
 (5, 'Unset', NULL, 0);

INSERT INTO Invoices (ID, [Invoice#], PatientID, ProviderID, OverseerID, [Date], [Complete?],
  InvoiceTotal, InvoiceFinalTotal, FinalDate, Cancelled) VALUES
 (2101, 5001, 1, 21, 21, '2026-10-02 00:00:00', 1, 1150, NULL, NULL, NULL),
 (2201, 6001, 2, 22, 21, '2026-10-03 00:00:00', 1, 400, 400, '2026-10-15 00:00:00', NULL),
 (2202, 6002, 1, 21, 21, '2026-10-03 00:00:00', 1, 90, 90, '2026-10-15 00:00:00', NULL),
 (2203, 6003, 2, 22, 21, '2026-10-03 00:00:00', 1, 70, 70, '2026-10-15 00:00:00', 1),
 (2301, 7001, 2, 22, 23, '2026-10-10 00:00:00', 1, 8.01, 8.01, '2026-10-20 00:00:00', NULL),
 (2302, 7002, 1, 23, 23, '2026-10-11 00:00:00', 1, 10, 10, '2026-10-20 00:00:00', NULL),
 (3001, 8001, 1, 30, 21, '2026-10-05 00:00:00', 1, 210, NULL, NULL, NULL),
 (3002, 8002, 2, 30, 21, '2026-10-07 00:00:00', 1, 45, NULL, NULL, NULL),
 (3003, 8003, 1, 30, 21, '2026-11-02 00:00:00', 1, 60, NULL, NULL, NULL),
 (4001, 9001, 1, 40, 40, '2026-10-10 00:00:00', 1, 500, NULL, NULL, NULL),
 (4002, 9002, 2, 40, 40, '2026-11-03 00:00:00', 1, 300, NULL, NULL, 1),
 (4101, 9101, 1, 41, 41, '2026-10-12 00:00:00', 1, 240, NULL, NULL, NULL),
 (4201, 9201, 2, 42, 42, '2026-10-14 00:00:00', 1, 100, NULL, NULL, NULL);
INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost, Status, [Date], ProviderID) VALUES
 (5101, 2101, '01202', 1000, 'Complete', '2026-10-02 00:00:00', 21),
 (5102, 2101, '99111', 120, 'Complete', '2026-10-02 00:00:00', 21),
 (5103, 2101, '-9911', 30, 'Complete', '2026-10-02 00:00:00', 21),
 (5201, 2201, '01202', 200, 'Complete', '2026-10-03 00:00:00', 22),
 (5202, 2201, '02101', 60, 'Complete', '2026-10-03 00:00:00', 22),
 (5203, 2201, '03101', 40, 'Complete', '2026-10-03 00:00:00', 22),
 (5204, 2201, '05101', 100, 'Complete', '2026-10-03 00:00:00', 22),
 (5205, 2202, '01202', 90, 'Complete', '2026-10-03 00:00:00', 21),
 (5206, 2203, '01202', 70, 'Complete', '2026-10-03 00:00:00', 22),
 (5301, 2301, '01202', 8.01, 'Complete', '2026-10-10 00:00:00', 22),
 (5302, 2302, '01202', 10, 'Complete', '2026-10-11 00:00:00', 23),
 (6001, 3001, '43427', 10, 'Complete', '2026-10-05 00:00:00', 30),
 (6002, 3001, '43427', 10, 'Complete', '2026-10-05 00:00:00', 30),
 (6003, 3001, '43427', 10, 'Complete', '2026-10-05 00:00:00', 30),
 (6004, 3001, '43421', 30, 'Complete', '2026-10-05 00:00:00', 30),
 (6005, 3001, '11112', 50, 'Complete', '2026-10-05 00:00:00', 30),
 (6006, 3001, '01202', 80, 'Complete', '2026-10-05 00:00:00', 30),
 (6007, 3001, '13211', 20, 'Complete', '2026-10-05 00:00:00', 30),
 (6008, 3002, '01400', 45, 'Complete', '2026-10-07 00:00:00', 30),
 (6009, 3003, '11111', 60, 'Complete', '2026-11-02 00:00:00', 30),
 (7001, 4001, '99111', 80, 'Complete', '2026-10-10 00:00:00', 40),
 (7002, 4001, '-9911', 5, 'Complete', '2026-10-10 00:00:00', 40),
 (7003, 4001, '01202', 415, 'Complete', '2026-10-10 00:00:00', 40),
 (7004, 4002, '01202', 300, 'Complete', '2026-11-03 00:00:00', 40),
 (7101, 4101, '01202', 240, 'Complete', '2026-10-12 00:00:00', 41),
 (7201, 4201, '01202', 100, 'Complete', '2026-10-14 00:00:00', 42);

INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, AccountID, Value, Notes, [Date],
  CheckDate) VALUES
 (3101, 1, 1, 2, 600, 'Front desk', '2026-10-05 00:00:00', '2026-10-05 00:00:00'),
 (3102, 1, 2, 1, 300, NULL, '2026-10-06 00:00:00', '2026-10-06 00:00:00'),
 (3103, 1, 3, 1, -30, 'Goodwill', '2026-10-08 00:00:00', '2026-10-08 00:00:00'),
 (3104, 1, 3, 1, 20, 'Reversed', '2026-10-09 00:00:00', '2026-10-09 00:00:00'),
 (3105, 1, 5, 1, 100, NULL, '2026-10-07 00:00:00', '2026-10-07 00:00:00'),
 (3106, 1, 1, 1, 77, NULL, '2026-09-30 00:00:00', '2026-09-30 00:00:00'),
 (3107, 1, 4, 1, -9, NULL, '2026-10-09 00:00:00', '2026-10-09 00:00:00'),
 (3201, 1, 1, 1, 100, NULL, '2026-10-05 00:00:00', '2026-10-05 00:00:00'),
 (3202, 1, 5, 1, 7, NULL, '2026-10-05 00:00:00', '2026-10-05 00:00:00'),
 (3301, 1, 1, 1, 200, NULL, '2026-10-13 00:00:00', '2026-10-13 00:00:00'),
 (3302, 1, 3, 1, 40, NULL, '2026-10-13 00:00:00', '2026-10-13 00:00:00'),
 (3303, 2, 1, 1, 100, NULL, '2026-10-15 00:00:00', '2026-10-15 00:00:00');
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (4101, 3101, 2101, 600, '2026-10-05 00:00:00'),
 (4101, 3101, 2101, 600, '2026-10-05 00:00:00'),
 (4102, 3102, 2101, 300, '2026-10-06 00:00:00'),
 (4103, 3103, 2101, -30, '2026-10-08 00:00:00'),
 (4104, 3104, 2101, 20, '2026-10-09 00:00:00'),
 (4105, 3105, 2101, 100, '2026-10-07 00:00:00'),
 (4106, 3106, 2101, 77, '2026-09-30 00:00:00'),
 (4107, 3107, 2101, -9, '2026-10-09 00:00:00'),
 (4201, 3201, 3001, 100, '2026-10-05 00:00:00'),
 (4202, 3202, 3001, 7, '2026-10-05 00:00:00'),
 (4301, 3301, 4101, 200, '2026-10-13 00:00:00'),
 (4302, 3302, 4101, 40, '2026-10-13 00:00:00'),
 (4303, 3303, 4201, 100, '2026-10-15 00:00:00');
INSERT INTO PatientAppointments (ID, PatientID, ProviderID, [Date], [Time], Units) VALUES
 (1, 1, 30, '2026-10-05 00:00:00', 540, 6);
)sql";

class CompensationTest : public AccountReportTest {
 protected:
  void SetUp() override {
    if (SetUpReports(kCompensationRows)) reports.OfficeID = 1;
  }

  // A line of the document that must be there, or must not.
  struct Line {
    const char* name;
    const char* text;
    bool printed;
  };
  void ExpectLines(std::initializer_list<Line> lines) const {
    const std::string text = Text();
    for (const Line& l : lines)
      EXPECT_EQ(text.find(l.text) != std::string::npos, l.printed) << l.name << "\n" << text;
  }
};

}  // namespace orv::testing
