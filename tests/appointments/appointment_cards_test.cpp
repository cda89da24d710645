#include <gtest/gtest.h>

#include <functional>

#include "common/format.h"
#include "frame/surface/surface.h"
#include "platform/db/recordset.h"
#include "support/forged_cells.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

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
  size_t Occurrences(const std::string& what) const { return testing::Occurrences(Text(), what); }
  // The patient's family, for a statement's condition.
  std::string Family() const {
    return "(SELECT ResponsibleFamilyMemberID FROM Patient WHERE ID = " + std::to_string(patient) + ")";
  }
  // How many of the family's appointments meet `condition`.
  int FamilyAppointments(const std::string& condition) {
    return CLng(ValueOf("SELECT COUNT(*) FROM PatientAppointments INNER JOIN Patient ON "
                        "PatientAppointments.PatientID = Patient.ID WHERE "
                        "Patient.ResponsibleFamilyMemberID = " + Family() + " AND " + condition));
  }
  int32_t appointment = 0, patient = 0;
};

// The host names the office on a card and a schedule: that office stands in
// the heading, once, and the component's own office is not printed beside it.
TEST_F(AppointmentCards, OneOfficeTheHostsInTheHeading) {
  const std::string own = TextOf("SELECT Name FROM OfficeInformation WHERE ID = 1");
  ASSERT_NE(own, "Birch Street Dental");
  reports.rptAppointmentCard(appointment, "Your visit", "", "Birch Street Dental", "613-555-0199",
                             15, false);
  EXPECT_EQ(Occurrences("Birch Street Dental"), 1u) << Text();
  EXPECT_EQ(Occurrences("Birch Street Dental Phone #: 613-555-0199\n"), 1u) << Text();
  EXPECT_EQ(Occurrences(own), 0u) << Text();

  struct Schedule {
    const char* name;
    std::function<void()> run;
  };
  const Schedule schedules[] = {
      {"summary",
       [&] { reports.rptFamilyAppointmentsSummary(patient, "Birch Street Dental", "9 Birch St", "Them", "", "", 15); }},
      {"detailed",
       [&] { reports.rptFamilyAppointmentsDetailed(patient, "Birch Street Dental", "9 Birch St", "Them", "", "", 15); }},
  };
  for (const Schedule& s : schedules) {
    s.run();
    EXPECT_EQ(Occurrences("Birch Street Dental\n9 Birch St\n"), 1u) << s.name << "\n" << Text();
    EXPECT_EQ(Occurrences("Birch Street Dental"), 1u) << s.name;
    EXPECT_EQ(Occurrences(own), 0u) << s.name << "\n" << Text();
  }

  // Without an office from the host the component's own line stands.
  reports.rptAppointmentCard(appointment, "", "", "", "", 15, false);
  EXPECT_EQ(Occurrences(own + " Phone #: "), 1u) << Text();
}

// The card's "Family Appointments:" is the family's whole coming schedule,
// the card's own appointment among them.
TEST_F(AppointmentCards, FamilyListKeepsTheCardsOwnAppointment) {
  RawExec("UPDATE OfficeInformation SET HideFinancial = 1 WHERE ID = 1");
  const std::string day =
      Format(Variant(CDate(Variant(TextOf("SELECT Date FROM PatientAppointments WHERE ID = " +
                                          std::to_string(appointment))))),
             "dddd mmmm d, yyyy");
  // Family appointments on the same day, the card's own included.
  const int same_day = FamilyAppointments("PatientAppointments.Date = (SELECT Date FROM "
                                          "PatientAppointments WHERE ID = " + std::to_string(appointment) + ")");
  reports.rptAppointmentCard(appointment, "", "", "", "", 15, false);
  EXPECT_NE(Text().find("Family Appointments:"), std::string::npos) << Text();
  // Once in the card's own table, and once per appointment of the day in
  // the family's.
  EXPECT_EQ(Occurrences(day), static_cast<size_t>(1 + same_day)) << Text();
}

// The family statements go out as each report writes them: the summary the
// statements reuse sends "WHERE", the card's schedule "where". A failing
// statement shows its text in the message.
TEST_F(AppointmentCards, FamilyStatementsAreSentAsWritten) {
  RawExec("ALTER TABLE ProcedureCategories RENAME TO ProcedureCategoriesGone");
  reports.rptFamilyAppointmentsSummary(patient, "", "", "", "", "", 15);
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("WHERE Patient.ResponsibleFamilyMemberID in (select"),
            std::string::npos)
      << host.messages[0].prompt;
  try {
    reports.rptFamilyAppointmentsDetailed(patient, "", "", "", "", "", 15);
    ADD_FAILURE() << "the detailed schedule has no trap";
  } catch (const std::exception& e) {
    EXPECT_NE(std::string(e.what()).find("where Patient.ResponsibleFamilyMemberID in (select"),
              std::string::npos)
        << e.what();
  }
}

// A patient, a provider and a category holding "|" and ";" print inside
// their cells on the card and both schedules.
TEST_F(AppointmentCards, SeparatorsInTheDataStayInTheirCells) {
  const std::string forged = kForgedLastName;
  RawExec("UPDATE Patient SET LastName = '" + forged + "' WHERE ID = " + std::to_string(patient) +
          "; UPDATE Employees SET LastName = '" + forged +
          "' WHERE ID = (SELECT ProviderID FROM PatientAppointments WHERE ID = " +
          std::to_string(appointment) + "); UPDATE ProcedureCategories SET Name = 'Recall;Check|Up'");
  struct Run {
    const char* name;
    std::function<void()> run;
  };
  const Run runs[] = {
      {"card", [&] { reports.rptAppointmentCard(appointment, "", "", "", "", 15, false); }},
      {"summary", [&] { reports.rptFamilyAppointmentsSummary(patient, "", "", "", "", "", 15); }},
  };
  for (const Run& r : runs) {
    r.run();
    EXPECT_TRUE(host.messages.empty()) << r.name;
    ExpectWholeCell(form.VSP.Document(), forged, r.name);
    ExpectWholeCell(form.VSP.Document(), "Recall;Check|Up", r.name);
  }
}

TEST_F(AppointmentCards, CardShowsFeesUnlessTheOfficeHidesThem) {
  RawExec("UPDATE OfficeInformation SET HideFinancial = 0 WHERE ID = 1");
  reports.rptAppointmentCard(appointment, "", "See you soon", "Cedar", "6135550100", 15, false);
  std::string shown = Text();
  EXPECT_EQ(form.PrintCount(), 1) << "the card goes to the printer, not the preview";
  EXPECT_EQ(form.ShowCount(), 0);
  EXPECT_TRUE(HasAll(shown, {"Planned Procedures:", "Code Description Fee", "Estimated Fee: $",
                             "You are responsible to bring payment for the above amount on "}));

  // With insurance assignment the sentence speaks of what is not covered.
  reports.rptAppointmentCard(appointment, "", "", "Cedar", "", 15, true);
  EXPECT_NE(Text().find("not covered by your insurance (if any) on "), std::string::npos);

  RawExec("UPDATE OfficeInformation SET HideFinancial = 1 WHERE ID = 1");
  reports.rptAppointmentCard(appointment, "", "", "Cedar", "", 15, false);
  std::string hidden = Text();
  EXPECT_NE(hidden.find("Code Description\n"), std::string::npos) << hidden;
  EXPECT_TRUE(HasNone(hidden, {"Estimated Fee", "You are responsible"}));
  EXPECT_EQ(hidden.find('$'), std::string::npos) << hidden;
}

TEST_F(AppointmentCards, UnknownAppointmentShowsTheMessageAndPrintsNothing) {
  reports.rptAppointmentCard(987654, "", "", "", "", 15, false);
  EXPECT_TRUE(SaidOnce(host, "You have not selected a valid appointment.  As a result, nothing can be "
                             "printed. Please select a vaild appointment from the list first, and try again."));
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
  RawExec("UPDATE PatientAppointments SET Date = '2026-11-20 00:00:00' WHERE PatientID IN (SELECT ID "
          "FROM Patient WHERE ResponsibleFamilyMemberID = " + Family() + ")");
  reports.rptFamilyAppointmentsDetailed(patient, "", "", "", "", "", 15);
  EXPECT_TRUE(SaidOnce(host, "You have not selected a valid appointment."));
}

TEST_F(AppointmentCards, FamilySummaryListsTheFamilysComingAppointments) {
  const int coming = FamilyAppointments("PatientAppointments.Date > '2026-11-20 23:59:59'");
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
