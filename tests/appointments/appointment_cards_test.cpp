#include <gtest/gtest.h>

#include "common/format.h"
#include "frame/surface/surface.h"
#include "platform/db/recordset.h"
#include "support/report_fixture.h"

namespace orv::testing {
namespace {

class AppointmentCards : public ReportTest {
 protected:
  // A coming appointment that has planned procedures, and its patient.
  void SetUp() override {
    ReportTest::SetUp();
    if (IsSkipped() || HasFatalFailure()) return;
    db::Recordset rs;
    rs.Open(
        "SELECT TOP 1 PatientAppointments.ID, PatientAppointments.PatientID FROM PatientAppointments "
        "WHERE PatientAppointments.Date > '2026-11-20' AND EXISTS (SELECT * FROM "
        "PatientAppointmentCodes WHERE PatientAppointmentID = PatientAppointments.ID) ORDER BY "
        "PatientAppointments.Date",
        conn);
    ASSERT_FALSE(rs.Eof()) << "the demo practice should have booked appointments";
    appointment = CLng(rs["ID"].Value());
    patient = CLng(rs["PatientID"].Value());
    reports.OfficeID = 1;
  }
  int32_t appointment = 0, patient = 0;
};

TEST_F(AppointmentCards, CardShowsFeesUnlessTheOfficeHidesThem) {
  RawExec("UPDATE OfficeInformation SET HideFinancial = 0 WHERE ID = 1");
  reports.rptAppointmentCard(appointment, "", "See you soon", "Cedar", "6135550100", 15, false);
  std::string shown = Text();
  EXPECT_EQ(form.PrintCount(), 1) << "the card goes to the printer, not the preview";
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_NE(shown.find("Planned Procedures:"), std::string::npos);
  EXPECT_NE(shown.find("Code Description Fee"), std::string::npos) << shown;
  EXPECT_NE(shown.find("Estimated Fee: $"), std::string::npos);
  EXPECT_NE(shown.find("You are responsible to bring payment for the above amount on "),
            std::string::npos);

  // With insurance assignment the sentence speaks of what is not covered.
  reports.rptAppointmentCard(appointment, "", "", "Cedar", "", 15, true);
  EXPECT_NE(Text().find("not covered by your insurance (if any) on "), std::string::npos);

  RawExec("UPDATE OfficeInformation SET HideFinancial = 1 WHERE ID = 1");
  reports.rptAppointmentCard(appointment, "", "", "Cedar", "", 15, false);
  std::string hidden = Text();
  EXPECT_NE(hidden.find("Code Description\n"), std::string::npos) << hidden;
  EXPECT_EQ(hidden.find("Estimated Fee"), std::string::npos);
  EXPECT_EQ(hidden.find("You are responsible"), std::string::npos);
  EXPECT_EQ(hidden.find('$'), std::string::npos) << hidden;
}

TEST_F(AppointmentCards, UnknownAppointmentShowsTheMessageAndPrintsNothing) {
  reports.rptAppointmentCard(987654, "", "", "", "", 15, false);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_EQ(host.messages[0].prompt,
            "You have not selected a valid appointment.  As a result, nothing can be printed. Please "
            "select a vaild appointment from the list first, and try again.");
  EXPECT_EQ(form.PrintCount(), 0);
  EXPECT_EQ(form.VSP.PageCount(), 0);
}

TEST_F(AppointmentCards, NoCodesNoEmployerAndTodayIsNotComing) {
  RawExec("DELETE FROM PatientAppointmentCodes WHERE PatientAppointmentID = " +
          std::to_string(appointment) + "; UPDATE Patient SET EmployerID = NULL WHERE ID = " +
          std::to_string(patient));
  reports.rptAppointmentCard(appointment, "", "", "", "", 15, false);
  std::string text = Text();
  // The caption and an empty table's header still print.
  EXPECT_NE(text.find("Planned Procedures:\nCode Description Fee\n"), std::string::npos) << text;
  EXPECT_EQ(text.find("If you are unsure of insurance coverage"), std::string::npos);

  // The family schedule keeps only appointments after today: move every
  // family appointment to today and nothing is left to print.
  RawExec(
      "UPDATE PatientAppointments SET Date = '2026-11-20 00:00:00' WHERE PatientID IN (SELECT ID "
      "FROM Patient WHERE ResponsibleFamilyMemberID = (SELECT ResponsibleFamilyMemberID FROM Patient "
      "WHERE ID = " +
      std::to_string(patient) + "))");
  reports.rptFamilyAppointmentsDetailed(patient, "", "", "", "", "", 15);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("You have not selected a valid appointment."),
            std::string::npos);
}

TEST_F(AppointmentCards, FamilySummaryListsTheFamilysComingAppointments) {
  db::Recordset family;
  family.Open(
      "SELECT COUNT(*) AS N FROM PatientAppointments INNER JOIN Patient ON "
      "PatientAppointments.PatientID = Patient.ID WHERE PatientAppointments.Date > '2026-11-20 "
      "23:59:59' AND Patient.ResponsibleFamilyMemberID = (SELECT ResponsibleFamilyMemberID FROM "
      "Patient WHERE ID = " +
          std::to_string(patient) + ")",
      conn);
  int coming = CLng(family["N"].Value());
  ASSERT_GT(coming, 0);
  reports.rptFamilyAppointmentsSummary(patient, "Cedar", "1 Main St", "The Family", "", "", 15);
  EXPECT_TRUE(host.messages.empty());
  std::string text = Text();
  EXPECT_NE(text.find("For: The Family"), std::string::npos);
  // One line per coming appointment, each with its long date.
  size_t lines = 0;
  for (size_t p = text.find(", 20"); p != std::string::npos; p = text.find(", 20", p + 1)) ++lines;
  EXPECT_EQ(lines, static_cast<size_t>(coming)) << text;
  EXPECT_EQ(form.ShowCount(), 1);
}

}  // namespace
}  // namespace orv::testing
