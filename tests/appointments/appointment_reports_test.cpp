#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "appointments/appointment_text.h"
#include "common/common_functions.h"
#include "frame/surface/surface.h"
#include "platform/host/settings.h"
#include "support/forged_cells.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

const char* const kWeekdays[] = {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"};

// A small practice worked by hand, in place of the demo's appointments and
// staff: Aster (a dentist, chair A1) works 08:00 to 17:00 with an hour's
// lunch, Birk (a hygienist, no chair) 09:00 to 13:30 without, every day of
// the week; Cole books. The office counts 20-minute units. The days around
// Feb 29 2028 hold a full holiday, a partial one and a special day, and the
// same season of 2027 one appointment and a partial holiday.
std::string HandPractice() {
  std::string sql =
      "DELETE FROM PatientAppointments; DELETE FROM PatientAppointmentDetails; DELETE FROM "
      "PatientAppointmentCodes; DELETE FROM PatientFuture; DELETE FROM PatientPredTreatments; "
      "DELETE FROM EmployeeHolidays; DELETE FROM EmployeeSpecialDays; DELETE FROM Employees; "
      "DELETE FROM LabIO;"
      "INSERT INTO Employees (ID, LastName, FirstName, TypeID, ChairID, Symbol) VALUES "
      "(1, 'None', '(None)', 0, NULL, NULL), (501, 'Aster', 'Ann', 3, 'A1', 'AA'), "
      "(502, 'Birk', 'Bo', 5, NULL, 'BB'), (503, 'Cole', 'Cy', 6, NULL, NULL);"
      "UPDATE OfficeInformation SET UnitMinutes = 20 WHERE ID = 1;";
  for (const char* d : kWeekdays) {
    const std::string w = d;
    sql += "UPDATE Employees SET " + w + "From = '08:00 AM', " + w + "to = '05:00 PM', LunchFrom" + w +
           " = '12:00 PM', Lunchto" + w + " = '01:00 PM' WHERE ID = 501;";
    sql += "UPDATE Employees SET " + w + "From = '09:00 AM', " + w + "to = '01:30 PM' WHERE ID = 502;";
    sql += "UPDATE OfficeInformation SET HourFrom" + w + " = '08:00 AM', HourTo" + w + " = '05:00 PM' WHERE ID = 1;";
  }
  sql +=
      "INSERT INTO ProcedureCategories (ID, Name, Colour) VALUES (901, 'Exam', 255), (902, 'Hygiene', 65280);"
      "INSERT INTO Patient (ID, FirstName, LastName, FullName, HomePhone, BirthDate, PremedType, "
      "MedicalAlert, Title) VALUES "
      "(9001, 'Pia', 'Quill', 'Quill, Pia', '6135550001', '1990-12-20 00:00:00', 'Amox', 'Asthma', 'Ms.'),"
      "(9002, 'Rex', 'Stone', 'Stone, Rex', '6135550002', '1980-01-01 00:00:00', NULL, NULL, 'Mr.');"
      "INSERT INTO EmployeeHolidays (EmployeeID, FromDate, ToDate, FromTime, ToTime) VALUES "
      "(501, '2028-03-01 00:00:00', '2028-03-01 00:00:00', NULL, NULL),"
      "(501, '2028-03-02 00:00:00', '2028-03-02 00:00:00', 600, 720),"
      "(501, '2027-03-02 00:00:00', '2027-03-02 00:00:00', 600, 660);"
      "INSERT INTO EmployeeSpecialDays (EmployeeID, StartDate, EndDate, StartTime, EndTime) VALUES "
      "(501, '2028-02-28 00:00:00', '2028-02-28 00:00:00', 1080, 1200);"
      "INSERT INTO PatientAppointments (ID, PatientID, ProviderID, EmployeeID, ProcedureCat, Date, "
      "Time, Units, Estimate, Confirmed, Complete, Message, Reason) VALUES "
      "(7001, 9001, 501, 503, 901, '2028-02-29 00:00:00', 540, 6, 100, 1, 1, 0, 'Crown'),"
      "(7002, 9002, 501, 503, 901, '2028-03-02 00:00:00', 785, 4, 60, 0, 0, 0, 'Check'),"
      "(7003, 9001, 502, 501, 902, '2028-02-28 00:00:00', 600, 3, NULL, 1, NULL, 1, 'Clean'),"
      "(7004, 9002, 501, 503, 901, '2027-02-28 00:00:00', 600, 5, 80, 1, 1, 0, NULL),"
      "(7005, 9002, 502, 501, 902, '2028-02-29 00:00:00', 600, 2, 40, 0, NULL, 0, NULL);"
      "INSERT INTO PatientAppointmentDetails (ID, AppointmentID, Date, Time, Specific, Note, "
      "EmployeeID, [Reschedule?]) VALUES "
      "(8001, 7001, '2028-02-20 00:00:00', 600, 'Sick', 'call back', 503, 0),"
      "(8002, 7002, '2028-02-21 00:00:00', 600, 'Snow', NULL, NULL, 1),"
      "(8003, 7005, '2028-02-22 00:00:00', 600, 'Late', NULL, 503, NULL);"
      "INSERT INTO PatientFuture (ID, PatientID, ProviderID, ProcedureCategoryID, DueDate, "
      "EstScheduleDate, Estimate, Units, Approved) VALUES "
      "(6001, 9001, NULL, 901, '2028-02-01 00:00:00', '2028-02-28 00:00:00', 50, 2, NULL),"
      "(6002, 9002, 501, 901, '2028-02-01 00:00:00', NULL, 70, 2, NULL),"
      "(6003, 9002, 502, 902, '2028-02-01 00:00:00', '2028-02-29 00:00:00', 90, 2, 0);"
      "INSERT INTO PatientPredTreatments (ID, PatientID, ProviderID, CreatedbyID, DatePosted, "
      "Complete, Notes, TotalAmount) VALUES "
      "(5001, 9001, 501, 503, '2028-02-28 00:00:00', NULL, 'n1', 100),"
      "(5002, 9002, 501, 503, '2028-02-29 00:00:00', 1, 'n2', 250);";
  return sql;
}

class AppointmentReports : public ReportTest {
 protected:
  void SetUp() override {
    SetUpPractice(HandPractice());
    if (IsSkipped() || HasFatalFailure()) return;
    reports.OfficeID = 1;
  }
  // Runs a section inside a document of its own, as the host does.
  template <class F>
  void InDocument(F&& section) {
    form.VSP.StartDoc();
    section();
    form.VSP.EndDoc();
  }
  DateTime D(int y, int m, int d) { return DateTime::FromParts(y, m, d); }
};

// Times are minutes after midnight and print through the time of day;
// provider filters take each section's column wherever they name it (the
// day book's tests walk "0", "" and one provider).
TEST(AppointmentText, TimesAndProviderFilters) {
  clsCommonFunctions cf;
  struct TimeCase {
    long minutes;
    const char* text;
  } times[] = {{785, "1:05 PM"}, {0, "12:00 AM"}, {720, "12:00 PM"}, {545, "9:05 AM"}, {1439, "11:59 PM"}};
  // The listings' kept texts read alike, a minute outside the day too, and
  // a second reading of a minute is the first one's text.
  appointments::TimeTexts kept(cf);
  for (const TimeCase& c : times) {
    EXPECT_EQ(appointments::PrintedTime(cf, Variant(static_cast<int32_t>(c.minutes))), c.text) << c.minutes;
    EXPECT_EQ(kept(Variant(static_cast<int32_t>(c.minutes + 1440))), c.text) << c.minutes;
    EXPECT_EQ(kept(Variant(static_cast<int32_t>(c.minutes - 1440))), c.text) << c.minutes;
  }
  EXPECT_EQ(appointments::ProviderCondition("ProviderID = 3 OR ProviderID = 5", "PatientFuture.ProviderID"),
            " AND (PatientFuture.ProviderID = 3 OR PatientFuture.ProviderID = 5)");
}

// Units add up as a 32-bit integer rounded half to even at each step, so
// two days of 4.5 units make 8, not 9; the sheet's rows are 16-bit and
// round the same way; a unit of 0 minutes is a fault, not a zero.
TEST(AppointmentText, UnitsAndRowsRoundHalfToEven) {
  EXPECT_EQ(appointments::AddUnits(appointments::AddUnits(0, 90, 20), 90, 20), 8);
  EXPECT_EQ(appointments::AddUnits(0, 270, 20), 14);   // 13.5
  EXPECT_EQ(appointments::AddUnits(14, 270, 20), 28);  // 27.5
  EXPECT_EQ(appointments::AddUnits(10, -60, 20), 7);
  EXPECT_THROW(appointments::AddUnits(0, 60, 0), ReportError);

  struct RowCase {
    const char* name;
    int got, want;
  } rows[] = {
      {"09:10 on a 15-minute grid from 08:00", appointments::StartRow(550, 480, 15), 7},
      {"a range ending 10:00", appointments::EndRow(600, 480, 15), 9},
      {"the day's first time", appointments::StartRow(480, 480, 15), 2},
      {"a tie rounds down to even", appointments::StartRow(490, 480, 20), 2},
      {"a tie rounds up to even", appointments::StartRow(510, 480, 20), 4},
      {"rows of 08:00 to 17:00 by 15", appointments::GridRows(480, 1020, 15), 37},
  };
  for (const RowCase& c : rows) EXPECT_EQ(c.got, c.want) << c.name;
  EXPECT_THROW(appointments::StartRow(550, 480, 0), ReportError);
}

// Two days, two providers: a date bar, then a provider bar and a table with
// its total per provider; the second day opens again with a provider bar.
// A NULL estimate prints "N/E" and adds nothing.
TEST_F(AppointmentReports, DayBookAcrossTwoDaysAndTwoProviders) {
  // Birk again on the next day: the day opens a provider block of its own
  // though the provider is the same as the last one.
  RawExec(
      "INSERT INTO PatientAppointments (ID, PatientID, ProviderID, EmployeeID, ProcedureCat, Date, Time, "
      "Units, Estimate) VALUES (7006, 9002, 502, 501, 902, '2028-03-01 00:00:00', 555, 1, 12.5)");
  InDocument([&] { reports.srptAppointments(D(2028, 2, 28), D(2028, 3, 1), "", 0, false); });
  EXPECT_TRUE(InOrder(Text(), {"February 28, 2028", "Birk", "10:00 AM", "N/E", "Total($) $0.00",
                               "February 29, 2028", "Aster", "9:00 AM", "$100.00",
                               "Total($) $100.00", "Birk", "10:00 AM", "$40.00", "Total($) $40.00",
                               "March 1, 2028", "Birk", "9:15 AM", "Total($) $12.50"}));
  EXPECT_TRUE(Has("Pia Quill")) << Text();

  struct FilterCase {
    const char* name;
    std::string filter;
    bool complete;
    std::vector<std::string> present, absent;
  } cases[] = {
      {"one provider", "ProviderID = 502", false, {"Birk", "Rex Stone"}, {"Aster"}},
      {"all by 0", "0", false, {"Birk", "Aster"}, {}},
      // Complete: only appointments not yet complete, whatever NULL holds.
      {"incomplete only", "", true, {"1:05 PM", "N/E", "Rex Stone"}, {"9:00 AM", "$100.00"}},
  };
  for (const FilterCase& c : cases) {
    InDocument([&] { reports.srptAppointments(D(2028, 2, 28), D(2028, 3, 2), c.filter, 0, c.complete); });
    for (const std::string& p : c.present) EXPECT_TRUE(Has(p)) << c.name << ": " << p << "\n" << Text();
    for (const std::string& a : c.absent) EXPECT_FALSE(Has(a)) << c.name << ": " << a << "\n" << Text();
  }
}

// The run prints its sections in its own order whatever the flags' order,
// each on a new page; with no flag it is one page of footers.
TEST_F(AppointmentReports, RunPrintsSectionsInItsOrder) {
  reports.rptAppointmentReports(true, true, true, true, true, true, false, D(2028, 2, 28), D(2028, 3, 2),
                                "Tess", "", 0);
  const char* titles[] = {"Appointment Report", "Appointment Reschedule Report", "Incomplete Appointment Report",
                          "Outstanding Planned Appointments Report", "Treatment Plan Report", "Operatory Report"};
  for (int i = 0; i < 6; ++i) {
    EXPECT_EQ(PageText(i + 1).find(titles[i]), 0u) << titles[i] << "\n" << PageText(i + 1);
    EXPECT_NE(PageText(i + 1).find("From: Feb/28/2028 to Mar/02/2028"), std::string::npos) << titles[i];
  }
  EXPECT_EQ(form.VSP.PageCount(), 6);

  reports.rptAppointmentReports(false, false, false, false, false, false, false, D(2028, 2, 28),
                                D(2028, 3, 2), "Tess", "0", 0);
  EXPECT_EQ(form.VSP.PageCount(), 1);
  EXPECT_FALSE(Has("From:")) << Text();
  EXPECT_TRUE(Has("Printed by Orvenda")) << Text();
  // The only message of the two runs is the reschedule section's, about
  // the detail row without an employee.
  ASSERT_TRUE(SaidOnce(host, "There is a NULL PatientID"));
}

// Reschedules: any non-NULL mark counts, 0 too; a NULL employee shows the
// message once and the run goes on; planned rows keep those without a
// provider and never those without a date; plans with NULL Complete are
// incomplete.
TEST_F(AppointmentReports, ReschedulesPlannedAndPlans) {
  InDocument([&] { reports.srptAppointmentReschedules("", D(2028, 2, 28), D(2028, 3, 2)); });
  EXPECT_TRUE(HasAll(Text(), {"Sick", "call back", "Cy Cole"}));
  EXPECT_TRUE(HasNone(Text(), {"Snow", "Late"}));
  EXPECT_TRUE(SaidOnce(host, "There is a NULL PatientID in the Appointments Table or a NULL EmployeeID in "
                             "the AppointmentsDetails Table\r\nPlease contact Technical Support to "
                             "resolve this issue."));

  InDocument([&] { reports.srptPlannedAppointmentsList("", D(2028, 2, 1), D(2028, 3, 31), 0); });
  EXPECT_TRUE(HasAll(Text(), {"Monday February 28, 2028", "$50.00"}));
  EXPECT_TRUE(HasNone(Text(), {"$70.00", "$90.00"}));

  InDocument([&] { reports.srptTreatmentPlansOutstanding("ProviderID = 501", D(2028, 2, 1), D(2028, 3, 31)); });
  const char* lines[] = {"Completed Treatments 1", "Total Completed Treatments $250.00",
                         "Incompleted Treatments 1", "Total Incompleted Treatments $100.00",
                         "Treatments 2", "Total Treatments $350.00"};
  for (const char* l : lines) EXPECT_TRUE(Has(l)) << l << "\n" << Text();
  EXPECT_TRUE(HasAll(Text(), {"$100.00 I", "$250.00 C"}));
}

// A patient, a provider, a category and a plan's notes holding "|" and
// ";" print inside their own cells in the planned list and the plans (the
// plans' name column is narrow: the first name wraps above the last).
TEST_F(AppointmentReports, SeparatorsInTheDataStayInTheirCells) {
  const std::string forged = kForgedLastName;
  RawExec("UPDATE Patient SET LastName = '" + forged + "' WHERE ID = 9001; UPDATE Employees SET LastName = '" +
          forged + "' WHERE ID = 501; UPDATE ProcedureCategories SET Name = 'Recall;Check|Up' WHERE ID = 901; "
          "UPDATE PatientPredTreatments SET Notes = 'Crown;Bridge|Wax' WHERE ID = 5001");
  struct Case {
    const char* name;
    std::function<void()> section;
    std::vector<std::string> cells;
  } cases[] = {
      {"planned list",
       [&] { reports.srptPlannedAppointmentsList("", D(2028, 2, 1), D(2028, 3, 31), 0); },
       {"Pia " + forged, "Recall;Check|Up"}},
      {"treatment plans",
       [&] { reports.srptTreatmentPlansOutstanding("", D(2028, 2, 1), D(2028, 3, 31)); },
       {forged, "Crown;Bridge|Wax"}},
  };
  for (const Case& c : cases) {
    InDocument(c.section);
    for (const std::string& cell : c.cells) ExpectWholeCell(form.VSP.Document(), cell, c.name);
  }
}

// The operatory list's notes: a patient's alerts in the order of the alert
// list, then the appointment's reason; the reason alone, or "N/A", for a
// patient without alerts. A patient's alerts print on each of their
// appointments, and the provider filter leaves them with the rows it keeps.
TEST_F(AppointmentReports, OperatoryNotesCarryEachPatientsAlerts) {
  RawExec(
      "DELETE FROM PatientAlerts; DELETE FROM ListAlerts;"
      "INSERT INTO ListAlerts (ID, Name) VALUES (1, 'Latex'), (2, 'Penicillin'), (3, 'Anxious');"
      "INSERT INTO PatientAlerts (PatientID, AlertID) VALUES (9001, 3), (9001, 1), (9003, 2);");
  struct Case {
    const char* name;
    std::string filter;
    std::vector<std::string> in_order, absent;
  } cases[] = {
      // The notes cell's lines stand about the middle of the row, the
      // first above the name.
      {"all providers",
       "",
       {"Latex", "Ms. Pia Quill", "Anxious", "Clean", "Latex", "Ms. Pia Quill", "Anxious", "Crown", "Mr. Rex Stone",
        "N/A", "Mr. Rex Stone", "Check"},
       {"Penicillin"}},
      {"one provider", "ProviderID = 502", {"Latex", "Ms. Pia Quill", "Anxious", "Clean", "Mr. Rex Stone", "N/A"},
       {"Crown", "Check", "Penicillin"}},
  };
  for (const Case& c : cases) {
    InDocument([&] { reports.srptOperatoryList(c.filter, D(2028, 2, 28), D(2028, 3, 2), 0); });
    EXPECT_TRUE(InOrder(Text(), c.in_order)) << c.name << "\n" << Text();
    EXPECT_TRUE(HasNone(Text(), c.absent)) << c.name << "\n" << Text();
  }
}

// Available and booked units of two providers over four days around Feb 29
// with a full holiday, a partial one and a special day, against the same
// days a year before (Feb 29 falls back to Feb 28, which counts twice).
//   Aster: Feb 28 24 + 6 special, Feb 29 24, Mar 1 off, Mar 2 24 - 6 = 72;
//          last year 4 x 24 less a 3-unit partial holiday = 93.
//   Birk:  13.5 a day, rounded at each step: 14, 28, 42, 56; last year 56.
// Booked: Aster 10 units, Birk 5, the office 15; last year Aster's 5.
TEST_F(AppointmentReports, BookingDiagnosticsWorkedByHand) {
  InDocument([&] { reports.srptBookingDiagnostics(D(2028, 2, 28), D(2028, 3, 2)); });
  const std::string text = Text();
  const char* rows[] = {
      "Aster, Ann A1 72 10 13.89% 66.67% 93 5 5.38% 100.00%",
      "Birk, Bo 56 5 8.93% 33.33% 56 0 0.00% 0.00%",
      "Office Totals 128 15 11.72% 100.00% 149 5 3.36% 100.00%",
      // The team: appointments each member booked.
      "Aster, Ann 2 50.00% 5 $40.00 0 0.00% 0 $0.00",
      "Cole, Cy 2 50.00% 10 $160.00 1 100.00% 5 $80.00",
      "Totals 4 100.00% 15 $200.00 1 100.00% 5 $80.00",
  };
  for (const char* r : rows) EXPECT_TRUE(text.find(r) != std::string::npos) << r << "\n" << text;

  RawExec("UPDATE OfficeInformation SET UnitMinutes = 0 WHERE ID = 1");
  form.VSP.StartDoc();
  EXPECT_THROW(reports.srptBookingDiagnostics(D(2028, 2, 28), D(2028, 3, 2)), ReportError);
}

// The day sheet: one page, shaded time out, appointments in their rows with
// their flags; an appointment past the grid is left out; a broken day gives
// one message, not one per cell.
TEST_F(AppointmentReports, DaySheetOnePageAndOneMessage) {
  RawExec(
      "UPDATE OfficeInformation SET UnitMinutes = 15 WHERE ID = 1;"
      "INSERT INTO PatientAppointments (ID, PatientID, ProviderID, EmployeeID, ProcedureCat, Date, Time, "
      "Units, Confirmed, Message) VALUES (7010, 9002, 501, 503, 901, '2028-02-28 00:00:00', 1100, 2, 0, 0),"
      "(7011, 9002, 501, 503, 901, '2028-02-28 00:00:00', 960, 99, 0, 1)");
  std::vector<int32_t> providers = {501, 502};
  reports.rptDaySheet(D(2028, 2, 28), providers, "Tess", "Birch Street");
  EXPECT_FALSE(form.IsDaySheet);
  EXPECT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  const std::string text = Text();
  EXPECT_TRUE(HasAll(Text(), {"Monday February 28, 2028 - Birch Street", "Aster A1"}));
  EXPECT_TRUE(Has("Quill Pia CMPA")) << text;  // confirmed, message, premed, alert
  EXPECT_TRUE(Has("Stone Rex NCM")) << text;   // the long one at 4:00 PM
  EXPECT_TRUE(Has("12369084")) << text;        // shaded lunch
  // 18:20 is past the grid: only one Stone appointment is on the sheet.
  EXPECT_EQ(text.find("Stone Rex", text.find("Stone Rex") + 1), std::string::npos) << text;

  // Landscape and the long form from the settings.
  host::AppSettings().Override("Settings", "DaysheetLandscape", "1");
  host::AppSettings().Override("Settings", "DaySheetType", "O");
  reports.rptDaySheet(D(2028, 2, 28), providers, "Tess", "Birch Street");
  EXPECT_EQ(form.VSP.Orientation(), 1);
  EXPECT_EQ(form.VSP.PageCount(), 1);
  EXPECT_TRUE(Has("Quill Pia, CMPA")) << Text();  // no overseer, so no symbol before the flags
  host::AppSettings().Override("Settings", "DaysheetLandscape", "0");
  host::AppSettings().Override("Settings", "DaySheetType", "");

  RawExec("UPDATE OfficeInformation SET UnitMinutes = 0 WHERE ID = 1");
  reports.rptDaySheet(D(2028, 2, 28), providers, "Tess", "Birch Street");
  EXPECT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(form.VSP.PageCount(), 1);
}

// A sheet that cannot be printed stops the run after the grid is drawn; the
// host then still sees the day sheet's flag, and the next run that prints
// clears it again.
TEST_F(AppointmentReports, DaySheetFlagStaysSetWhenTheRunFails) {
  std::vector<int32_t> providers = {501, 502};
  form.SetPrintFile(db_file + ".missing-folder/sheet.pdf");
  EXPECT_THROW(reports.rptDaySheet(D(2028, 2, 28), providers, "Tess", "Birch Street"), ReportError);
  EXPECT_TRUE(form.IsDaySheet);
  EXPECT_EQ(form.VSP.PageCount(), 1) << "the sheet was drawn before the print failed";
  EXPECT_TRUE(host.messages.empty()) << "a failed print is not a cell the sheet resumes past";

  form.SetPrintFile(db_file + ".printed.pdf");
  reports.rptDaySheet(D(2028, 2, 28), providers, "Tess", "Birch Street");
  EXPECT_FALSE(form.IsDaySheet);
}

// The slip: the first row only, the age by calendar years, the family's
// other coming appointments without this one; no row gives the message.
TEST_F(AppointmentReports, RoutingSlip) {
  Clock::SetFixed(DateTime::FromParts(2028, 1, 10, 9, 0, 0));
  reports.rptRoutingSlip("PatientAppointments.ID = 7001", "Tess");
  const std::string text = Text();
  EXPECT_TRUE(HasAll(
      Text(), {"For: Ms. Pia Quill", "Age: 38", "Health Issues: Asthma", "Family Information"}));
  EXPECT_TRUE(Has("Monday February 28, 2028")) << text;    // the other appointment
  EXPECT_FALSE(Has("Tuesday February 29, 2028")) << text;  // this one, not listed again
  EXPECT_TRUE(Has("All information contained herein is confidential")) << text;
  EXPECT_FALSE(Has("Printed by Orvenda")) << text;
  EXPECT_TRUE(host.messages.empty());

  const int pages = form.VSP.PageCount();
  reports.rptRoutingSlip("PatientAppointments.ID = 999999", "Tess");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("Please select a vaild appointment"), std::string::npos);
  EXPECT_EQ(form.VSP.PageCount(), pages) << "nothing new is drawn";
}

TEST_F(AppointmentReports, AppointmentsByPatientListsTheChosenPatientsOnly) {
  // Quill (9001) booked Crown and Clean; Stone (9002) Check and two
  // without a reason. The filter is over the patients: "ID" is the
  // patient's, not the appointment's (7001 to 7005).
  struct Case {
    const char* name;
    const char* filter;
    std::vector<std::string> in_order;
    std::vector<std::string> absent;
  };
  const Case cases[] = {
      {"everyone", "", {"Quill, Pia", "Clean", "Crown", "Stone, Rex", "Check"}, {"No Results"}},
      {"one patient by ID", "ID = 9001", {"Quill, Pia", "Clean", "Crown"}, {"Stone", "Check"}},
      {"one patient by name", "LastName = 'Stone'", {"Stone, Rex", "Check"}, {"Quill", "Crown"}},
      {"an appointment's ID names no patient", "ID = 7001", {"No Results to display"},
       {"Quill", "Crown"}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reports.rptAppointmentsByPatient(c.filter, "desk");
    const std::string text = Text();
    EXPECT_TRUE(InOrder(text, c.in_order));
    for (const std::string& word : c.absent) EXPECT_FALSE(Has(word)) << word << "\n" << text;
  }
}

}  // namespace
}  // namespace orv::testing
