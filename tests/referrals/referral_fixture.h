// Referring dentists, their patients and alert criteria on top of the
// November of closing/closing_practice.h. Today is 2026-11-20.
//
// Referring dentists: 1 Dr. Ada Lind, 2 Dr. Bo Kerr, 3 Dr. Cy Moss,
// 4 Dr. Di Park (phones 555000000N). No placeholders yet.
// Patient 1 (invoices 701, 702) was sent by Lind, patient 3 (703-706) by
// Kerr; every other patient of the account practice has no referrer.
// Line 73 gets a third allocation: payment 805, cash 10 on 11-09.
//
// Sign-ups for the alerts (patients 1000 on), relative to today:
//   Lind  15 at 100 days ago, 1 at 10 days ago
//   Kerr  13 at 100 days ago, 3 at 10 days ago
//   Moss  12 at 100 days ago
//   Park   8 at 100 days ago, 2 at 40 days ago
// so over 120 days by 30 (R 4): Lind 16/4 = 4 and 1 recent; Kerr 16/4 = 4
// and 3; Moss 12/4 = 3 and 0; Park 10/4 = 2 (integer division) and 0.
// Over 45 days by 30 (R 1.5): Lind 1/1.5, Kerr 3/1.5 = 2, Moss 0,
// Park 2/1.5 = 1.33.
// Criteria: Moreau (1) at least 3, 30 of 120 days, 25 %; Chen (2) at least
// 1, 30 of 45 days, 25 %; Okafor (3) none.
#pragma once

#include "closing/closing_practice.h"

namespace orv::testing {

inline const char* kReferralRows = R"sql(
INSERT INTO ReferringDentists (ID, Title, Name, LastName, Phone) VALUES
 (1, 'Dr.', 'Ada', 'Lind', '5550000001'), (2, 'Dr.', 'Bo', 'Kerr', '5550000002'),
 (3, 'Dr.', 'Cy', 'Moss', '5550000003'), (4, 'Dr.', 'Di', 'Park', '5550000004');
UPDATE Patient SET ReferringDentistID = 1 WHERE ID = 1;
UPDATE Patient SET ReferringDentistID = 2 WHERE ID = 3;
INSERT INTO InvoicePayments (ID, PatientID, PaymentTypeID, InitialProviderID, Value,
  TotalAllocated, TotalToCredit, [Date], CheckDate, IsInsurance) VALUES
 (805, 1, 1, 2, 10, 10, 0, '2026-11-09 00:00:00', '2026-11-09 00:00:00', 0);
INSERT INTO InvoicePaymentAllocations (InvoicePaymentID, InvoiceDetailsID, PatientID, Amount,
  AppliedDate) VALUES (805, 73, 1, 10, '2026-11-09 00:00:00');
INSERT INTO ReferralAlerts (EmployeeID, AtLeast, InLast, AverageOver, AlertWhen) VALUES
 (1, 3, 30, 120, 25), (2, 1, 30, 45, 25);
WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n WHERE i < 59),
 plan(dentist, first, cnt, signup) AS (VALUES
  (1, 0, 15, '2026-08-12 09:00:00'), (1, 15, 1, '2026-11-10 09:00:00'),
  (2, 16, 13, '2026-08-12 09:00:00'), (2, 29, 3, '2026-11-10 09:00:00'),
  (3, 32, 12, '2026-08-12 09:00:00'),
  (4, 44, 8, '2026-08-12 09:00:00'), (4, 52, 2, '2026-10-11 09:00:00'))
INSERT INTO Patient (ID, FirstName, LastName, FullName, SignupDate, ReferringDentistID,
  [Active?], AccountholderOnly)
SELECT 1000 + n.i, 'Ref' || n.i, 'Patient', 'Patient, Ref' || n.i, plan.signup, plan.dentist,
  -1, 0
FROM n JOIN plan ON n.i >= plan.first AND n.i < plan.first + plan.cnt;
)sql";

class ReferralTest : public ProductionTest {
 protected:
  void SetUp() override { SetUpWith(kReferralRows); }
  // Rows read back through the component's own connection.
  std::string Scalar(const std::string& sql) {
    db::Recordset rs;
    rs.Open(sql, conn_, db::adOpenStatic);
    return rs.Eof() ? std::string("<none>") : CStr(rs[0].Value());
  }
  // The prompts of the boxes shown so far, by title.
  int Asked(const std::string& title) const {
    int n = 0;
    for (const auto& m : host.messages) n += m.title == title;
    return n;
  }
};

}  // namespace orv::testing
