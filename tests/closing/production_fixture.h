// A hand-made November for the production reports, on top of the account
// practice (accounts/account_fixture.h, whose lines are all dated before
// November and belong to no provider). Today is 2026-11-20; the period is
// 2026-11-01 to 2026-11-30.
//
// Employees: 1 Dr. Anne Moreau (type 3); 2 RDH Paul Chen and 3 RDH Ben
// Okafor (hygienists, type 5).
// Payment types: 1 Cash, 4 Insurance Cheque (money); 2 Write-off (an office
// adjustment), 3 Discount (an adjustment, not the office's).
// Fee codes 00100, 01202, 11101, 99111 (and none reversed).
// Office 1 leases its hygiene: codes 11000-11999.
//
// Invoices and lines (line: code cost status entry date, treatment date if
// other, line provider):
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
//   705 p3 prov 1, 11-12, total 40
//       78 01202    40 In Progress 11-12 prov 1
//   706 p3 prov 1, 11-03, total 60, CANCELLED 11-20
//       79 11101    60 Complete 11-03 prov 1
//
// Payments (value, cheque date) with their allocations to lines (applied
// on the cheque's date) and shares on invoices:
//   801 Cash 150 (11-06): line 73 80, line 74 50, line 72 20;
//       invoice 702 130, invoice 701 20
//   802 Insurance cheque 20 (11-07): line 73 20; invoice 702 20
//       (line 73 thus has two allocations)
//   803 Write-off -10 (11-08): line 74 -10; invoice 702 -10
//   804 Discount -5 (11-08): line 71 -5; invoice 701 -5
#pragma once

#include "accounts/account_fixture.h"
#include "platform/host/settings.h"

namespace orv::testing {

inline const char* kProductionRows = R"sql(
INSERT INTO Employees (ID, LastName, FirstName, FullName, [Professional Title], TypeID) VALUES
 (1, 'Moreau', 'Anne', 'Anne Moreau', 'Dr.', 3), (2, 'Chen', 'Paul', 'Paul Chen', 'RDH', 5),
 (3, 'Okafor', 'Ben', 'Ben Okafor', 'RDH', 5);
INSERT INTO PaymentTypes (ID, Name, [Adjustment?], [ToTotalPaid?], OfficePayment) VALUES
 (1, 'Cash', 0, 0, 0), (2, 'Write-off', 1, 0, 1), (3, 'Discount', 1, 0, 0),
 (4, 'Insurance Cheque', 0, 0, 0);
INSERT INTO FeeCodes (ID, Description) VALUES
 ('00100', 'Internal'), ('01202', 'Recall exam'), ('11101', 'Scaling'), ('99111', 'Lab fee');
INSERT INTO OfficeHygieneCompanyCodes (OfficeID, Startcode, EndCode) VALUES (1, '11000', '11999');

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
)sql";

class ProductionTest : public AccountReportTest {
 protected:
  void SetUp() override { SetUpWith(""); }

  // The November above with `more_rows` added (SQLite text), for fixtures
  // built on it.
  void SetUpWith(const std::string& more_rows) {
    if (!SetUpReports(std::string(kProductionRows) + more_rows)) return;
    settings_file_ = (std::filesystem::temp_directory_path() /
                      ("orv-production-settings-" + std::to_string(::getpid()) + ".ini"))
                         .string();
    std::filesystem::remove(settings_file_);
    host::SetAppSettings(host::SettingsStore(settings_file_));
    reports.OfficeID = 1;
  }
  void TearDown() override {
    AccountFixture::TearDown();
    if (!settings_file_.empty()) std::filesystem::remove(settings_file_);
  }

  // Runs a section in a document of its own, as a run would.
  template <typename F>
  void InDocument(F section) {
    form.VSP.StartDoc();
    section();
    form.VSP.EndDoc();
  }

  static DateTime Nov(int day) { return DateTime::FromParts(2026, 11, day); }

 private:
  std::string settings_file_;
};

}  // namespace orv::testing
