// The practice analysis on a hand-made February 2032 (a leap year) against
// February 2031, clear of the account practice's rows (2001 and 2026).
//
// Office 1 counts 15-minute units. Staff: 1 (None), 41 Ames, Ada (dentist,
// chair C1: Sundays 09:00-12:00, Fridays 08:00-17:00 with lunch 12-1),
// 42 Birch, Ben (hygienist, no hours).
//
// Production (invoice date; all Ames's):
//   9201 2032-02-29: 01202 90, 11101 150, 11101 60 and its reversal -60
//        (3 procedures, 240.00); appointment 8101, 4 units, total 240
//   9203 2032-02-29: no lines, total 30, never paid
//   9202 2032-01-15: no lines, total 120 (paid in the period)
//   9204 2031-02-28: 23111 200 (last year's one procedure)
//   9205 2031-03-01: 33111 999 (where Feb 29 would land by adding days)
//
// Payments (entered / cheque date, allocations):
//   9301 Till|Cash 100  02-29      100 on 9201 (02-29): immediate
//   9302 Cheque     50  02-29       50 on 9202 (02-29): 45 days, 30-60
//   9303 Till|Cash  70  02-29       40 on 9201, 30 on 9202: both rows
//   9304 Write-off  15  02-29       ([Adjustment?] 1)
//   9305 Till|Cash  80  02-29 / 03-15  post-dated
//   9306 Refund    -20  02-29       ([Adjustment?] -1)
//
// Appointments: 8101 Ames 2032-02-29 6 units est. 100, booked by Birch;
// 8102 Birch 2032-02-29 2 units, not billed; 8103 and 8104 the sign-up
// visits below (0 units); 8105 Ames 2031-02-28 8 units est. 120, no
// booker; 8106, 8107 visits outside the month.
//
// Sign-ups: 9101 Dentist 02-10 (active, 01101 on 02-12: new), 9102
// Dentist 02-20 (active, only 01202), 9103 Internet 02-29 (inactive,
// inactivated 02-25), 9104 '' 02-15 (exam before sign-up), 9105 NULL 02-01
// (active, 01103 on 2033-01-26, the 360th day: new), 9106 Dentist 03-01.
#include <gtest/gtest.h>

#include "closing/closing_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

const char* const kDayEndRows = R"sql(
INSERT INTO OfficeInformation (ID, Name, UnitMinutes) VALUES (1, 'Harbour Dental', 15);
INSERT INTO Employees (ID, LastName, FirstName, FullName, TypeID, ChairID, SundayFrom, Sundayto,
  FridayFrom, Fridayto, LunchFromFriday, LunchtoFriday) VALUES
 (1, 'None', '(None)', '(None)', 0, NULL, NULL, NULL, NULL, NULL, NULL, NULL),
 (41, 'Ames', 'Ada', 'Ada Ames', 3, 'C1', '09:00 AM', '12:00 PM', '08:00 AM', '05:00 PM',
  '12:00 PM', '01:00 PM'),
 (42, 'Birch', 'Ben', 'Ben Birch', 5, NULL, NULL, NULL, NULL, NULL, NULL, NULL);
INSERT INTO PaymentTypes (ID, Name, Description, [Adjustment?], [ToTotalPaid?]) VALUES
 (71, 'Till|Cash', 'Cash', 0, 0), (72, 'Small Write-off', 'Write-off', 1, 0),
 (73, 'Cheque', 'Cheque', NULL, 0), (74, 'Patient Refund', 'Refund', -1, 1);
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
 (9302, 9101, 73, 50, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9303, 9101, 71, 70, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9304, 9101, 72, 15, '2032-02-29 00:00:00', '2032-02-29 00:00:00'),
 (9305, 9102, 71, 80, '2032-02-29 00:00:00', '2032-03-15 00:00:00'),
 (9306, 9102, 74, -20, '2032-02-29 00:00:00', '2032-02-29 00:00:00');
INSERT INTO InvoicePaymentDetails (ID, InvoicePaymentID, InvoiceID, Amount, [Date]) VALUES
 (9311, 9301, 9201, 100, '2032-02-29 00:00:00'), (9321, 9302, 9202, 50, '2032-02-29 00:00:00'),
 (9331, 9303, 9201, 40, '2032-02-29 00:00:00'), (9332, 9303, 9202, 30, '2032-02-29 00:00:00');
)sql";

class DayEndSummary : public ClosingTest {
 protected:
  std::string Rows() const override { return kDayEndRows; }
  void SetUp() override {
    ClosingTest::SetUp();
    // The report starts its own document.
    form.VSP.KillDoc();
    reports.OfficeID = 1;
  }
  void RunFebruary() { reports.rptDayEndSummary(Day(2032, 2, 1), Day(2032, 2, 29), "desk"); }
  // The first line holding `part` (the office's and a provider's tables
  // hold the same rows when one provider did everything).
  std::string FirstLineWith(const std::string& part) const {
    const std::vector<std::string> all = LinesWith(part);
    return all.empty() ? "" : all.front();
  }
  // The text from `from` up to `to` (to the end for "").
  std::string Between(const std::string& from, const std::string& to) const {
    const std::string text = Text();
    const size_t a = text.find(from);
    if (a == std::string::npos) return "";
    const size_t b = to.empty() ? std::string::npos : text.find(to, a);
    return text.substr(a, b == std::string::npos ? std::string::npos : b - a);
  }
};

// The whole month, every section's figures as worked out above.
TEST_F(DayEndSummary, FebruaryAgainstTheYearBefore) {
  RunFebruary();
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(LineWith("From: "), "From: Feb/1/2032 To: Feb/29/2032");
  const std::vector<std::string> lines = {
      // Production: Feb 29 2032 moves back to Feb 28 2031, so the one
      // procedure of that day is last year's and March 1 2031 is not. The
      // reversal nets its fee out and counts no procedure.
      "Diagnostic Services 1 $90.00 37.50% 0 $0.00 0.00%",
      "Restorative Services 0 $0.00 0.00% 1 $200.00 100.00%",
      "Total Procedures Performed: 3",
      "Total Production: $240.00",
      "Last Year Total Procedure Performed: 1",
      "Last Year Total Production: $200.00",
      "Production Difference This Year Compared to Last Year: 120.00%",
      "Provider Total 3 $240.00 100.00% 1 $200.00 100.00%",
      "Provider Total 0 $0.00 0.00% 0 $0.00 0.00%",
      // Cash in: 9303 counts in both of its invoices' rows with its whole
      // value; the total takes every payment entered in the period.
      "Immediate Payment 2 $170.00 57.63% 0 $0.00 0.00%",
      "1-30 Day Payment 0 $0.00 0.00% 0 $0.00 0.00%",
      "30-60 Day Payment 2 $120.00 40.68% 0 $0.00 0.00%",
      "No Payments Made 1 $30.00 12.50% 1 $200.00 100.00%",
      "Total Payments 6 $295.00 100.00% 0 $0.00 0.00%",
      "Cheque $50.00 1 $50.00",
      "Small Write-off $15.00 1 $15.00",
      "Patient Refund -$20.00 1 -$20.00",
      // Free units: 5 Sundays of 12 and 4 Fridays of 32 this year; last
      // year 4 Sundays and 4 Fridays, Feb 28 (a Friday) counted twice.
      "Ames C1 188 6 3.19% 75.00% 208 8 3.85% 100.00%",
      "Birch 0 2 0.00% 25.00% 0 0 0.00% 0.00%",
      "Office Totals 188 8 4.26% N/A 208 8 3.85% N/A",
      "Ada Ames 0 0.00% 0 $0.00 0 0.00% 0 $0.00",
      "Ben Birch 1 100.00% 6 $100.00 0 0.00% 0 $0.00",
      "Totals 1 100.00% 6 $100.00 0 0.00% 0 $0.00",
      "Number of appointments that were more units than were actually required: 1",
      "Number of appointments that were less units than were actually required: 0",
      "Number of appointments that were estimated at more income than actually billed: 0",
      "Number of appointments that were estimated at less income than actually billed: 1",
      "Number of appointments that were not billed for: 3",
      "New Patients: 2",
      "Patients Inactivated: 1",
      "Office Growth: 1",
  };
  for (const std::string& l : lines) EXPECT_EQ(FirstLineWith(l), l);
  // Referrals: the rollup row is the total, not a source of its own.
  EXPECT_EQ(Between("Referral Diagnostics", "Office Growth"),
            "Referral Diagnostics\nType Number Percent\nDentist 2 66.67%\nInternet 1 33.33%\n"
            "Office Totals: 3 100.00%\n");
  EXPECT_EQ(LineWith("Procedures Difference"), "")
      << "one procedure last year is too few to compare";
  EXPECT_EQ(LinesWith("Preventitive Services"),
            (std::vector<std::string>{"Preventitive Services 2 $150.00 62.50% 0 $0.00 0.00%",
                                      "Preventitive Services 2 $150.00 62.50% 0 $0.00 0.00%",
                                      "Preventitive Services 0 $0.00 0.00% 0 $0.00 0.00%"}));
  EXPECT_EQ(LinesWith("Endodontic Services 0 $0.00 0.00% 0 $0.00 0.00%").size(), 3u);
  // The type with a bar in its name keeps its columns; the post-dated
  // cheque is in its own table only.
  EXPECT_EQ(LinesWith("Till|Cash"),
            (std::vector<std::string>{"Till|Cash $170.00 2 $85.00", "Till|Cash $80.00 1 $80.00"}));
  // The sections in print order.
  EXPECT_TRUE(InOrder(Text(), {"Production Diagnostics", "Provider Diagnostics",
                               "Cash In Diagnostics", "Payment Type Diagnostics",
                               "Adjustment Diagnostics", "Post-Dated Payment Diagnostics",
                               "Appointment Booking Diagnostics", "Team Booking Diagnostics",
                               "Appointment Planning Diagnostics", "Referral Diagnostics",
                               "Office Growth"}));
}

// The comparison lines follow last year's activity: two procedures make
// the procedures line, an idle year leaves all four lines out and its
// shares at 0.00%.
TEST_F(DayEndSummary, LastYearLines) {
  struct Case {
    const char* name;
    const char* change;
    std::vector<std::string> want;
    std::vector<const char*> absent;
  } const cases[] = {
      {"two procedures last year",
       "INSERT INTO InvoiceDetails (ID, InvoiceID, Code, Cost) VALUES (9242, 9204, '01202', 100);",
       {"Last Year Total Procedure Performed: 2", "Last Year Total Production: $300.00",
        "Procedures Difference This Year Compared to Last Year: 150.00%",
        "Production Difference This Year Compared to Last Year: 80.00%"},
       {}},
      {"an idle last year",
       "DELETE FROM InvoiceDetails WHERE InvoiceID = 9204;",
       {"Restorative Services 0 $0.00 0.00% 0 $0.00 0.00%", "Total Production: $240.00"},
       {"Last Year Total", "Difference This Year"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    Exec(c.change);
    form.VSP.KillDoc();
    RunFebruary();
    ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
    for (const std::string& l : c.want) EXPECT_EQ(FirstLineWith(l), l);
    for (const char* a : c.absent) EXPECT_EQ(LineWith(a), "") << a;
  }
}

// A month without sign-ups says so; an office whose unit is 0 minutes
// cannot count free units: the run stops there with one message that names
// the setting, and the document keeps the sections before it.
TEST_F(DayEndSummary, NoReferralsAndNoUnitLength) {
  reports.rptDayEndSummary(Day(2032, 4, 1), Day(2032, 4, 30), "desk");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(Between("Referral Diagnostics", "Office Growth"),
            "Referral Diagnostics\nNone on File\n");

  Exec("UPDATE OfficeInformation SET UnitMinutes = 0 WHERE ID = 1;");
  form.VSP.KillDoc();
  RunFebruary();
  ASSERT_EQ(host.messages.size(), 1u);
  const std::string& message = host.messages[0].prompt;
  EXPECT_EQ(message.rfind("An Error has occurred in Sub rptDayEndSummary in Class clsReports\n", 0),
            0u)
      << message;
  EXPECT_NE(message.find("UnitMinutes"), std::string::npos) << message;
  EXPECT_NE(Text().find("Post-Dated Payment Diagnostics"), std::string::npos);
  EXPECT_EQ(Text().find("Team Booking Diagnostics"), std::string::npos);
}

}  // namespace
}  // namespace orv::testing
