#include <gtest/gtest.h>

#include <optional>
#include <string>

#include "common/datetime.h"
#include "frame/patient.h"
#include "frame/surface/surface.h"
#include "lists/mailing_text.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

DateTime D(int y, int m, int d) { return DateTime::FromParts(y, m, d, 0, 0, 0); }

TEST(ReactivationGap, CalendarDifferencesYearsFirst) {
  struct Case {
    const char* name;
    DateTime visit, today;
    const char* gap;
  } cases[] = {
      {"January to December of one year", D(2026, 1, 31), D(2026, 12, 1), "11 months"},
      {"last day of one month to the first of the next", D(2026, 10, 31), D(2026, 11, 1), "1 month"},
      {"earlier this month", D(2026, 11, 2), D(2026, 11, 20), "0 month"},
      {"three calendar years", D(2023, 12, 31), D(2026, 1, 1), "3 years"},
  };
  for (const auto& c : cases) EXPECT_EQ(lists::ReactivationGap(c.visit, c.today), c.gap) << c.name;
}

using Letters = ReportTest;

TEST_F(Letters, ReactivationWritesToTheUnseenAndSkipsThoseSeenThisMonth) {
  RawExec(
      "DELETE FROM PatientAppointments WHERE PatientID IN (1, 2, 3);"
      "INSERT INTO PatientAppointments (PatientID, Date, Time) VALUES (2, '2026-11-05', 600);"
      "INSERT INTO PatientAppointments (PatientID, Date, Time) VALUES (3, '2025-12-20', 600);"
      "INSERT INTO PatientAppointments (PatientID, Date, Time) VALUES (3, '2027-01-20', 600);"
      "UPDATE Employees SET LastName = 'Okafor' WHERE ID = (SELECT MIN(ID) FROM Employees);"
      "UPDATE Patient SET DoctorID = (SELECT MIN(ID) FROM Employees) WHERE ID = 1;"
      "UPDATE Patient SET DoctorID = NULL, DefaultOfficeID = 2 WHERE ID = 3;");
  reports.OfficeID = 1;
  reports.rptReActivationLetter("ID IN (1, 2, 3)", "Demo Dental", "Demo Dental, Ottawa");
  // Patient 1 was never seen: a letter with an empty gap. Patient 2 came
  // this month: none. Patient 3's booking after today does not count.
  ASSERT_EQ(form.VSP.PageCount(), 3) << "two letters and the trailing empty page";
  EXPECT_NE(PageText(1).find("it has been since your last visit"), std::string::npos) << PageText(1);
  EXPECT_NE(PageText(2).find("it has been 1 year since your last visit"), std::string::npos) << PageText(2);
  // The doctor signs by name; a patient without one gets the bare title.
  EXPECT_NE(PageText(1).find("Dr. Okafor\n"), std::string::npos) << PageText(1);
  EXPECT_NE(PageText(2).find("Dr. \n"), std::string::npos) << PageText(2);
  // The last patient of the run stays on the record, with its office.
  EXPECT_EQ(reports.Patient().PatientID(), 3);
  EXPECT_EQ(reports.OfficeID, 2);
  EXPECT_EQ(PageText(3).find_first_not_of(" \n"), std::string::npos);
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Reactivation Letter");

  // No one selected: the run still ends and prints its one empty page.
  reports.rptReActivationLetter("ID < 0", "", "");
  EXPECT_EQ(form.VSP.PageCount(), 1);
  EXPECT_EQ(form.PrintCount(), 2);
}

TEST_F(Letters, NoShowWritesToAMinorsGuardianWithThePronoun) {
  RawExec(
      "UPDATE Patient SET Title = 'Mrs.', LastName = 'Holm' WHERE ID = 2;"
      "UPDATE PatientAppointments SET PatientID = 1, Time = 785, Date = '2026-11-18' WHERE ID = 1;");
  struct Case {
    const char* name;
    const char* birth;
    const char* holder;
    const char* sex;
    const char* title;
    const char* expected;
  } cases[] = {
      {"17 by calendar years, with a holder", "2009-12-31", "2", "Female", "Miss",
       "Dear Mrs. Holm,\nWe are concerned that Ada did not come to her scheduled appointment at 1:05 PM"},
      {"'F' is not 'FEMALE'", "2009-12-31", "2", "F", "Miss", "Ada did not come to his scheduled"},
      {"upper case of the word counts", "2009-12-31", "2", "female", "Miss", "to her scheduled"},
      {"18 by calendar years before the birthday", "2008-12-31", "2", "Female", "Miss",
       "Dear Miss Berg,\nWe are concerned that you did not come to your scheduled appointment at 1:05 PM"},
      {"17 without a holder", "2009-12-31", "NULL", "Female", "Miss", "Dear Miss Berg,"},
      {"an empty title drops its blank", "1980-01-01", "NULL", "Male", "", "Dear Berg,"},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    RawExec(std::string("UPDATE Patient SET FirstName = 'Ada', LastName = 'Berg', BirthDate = '") + c.birth +
            "', PrimaryHolderID = " + c.holder + ", Sex = '" + c.sex + "', Title = '" + c.title +
            "' WHERE ID = 1");
    reports.rptNoShowLetter(1, "Dr. Demo", Variant("Please call us."), "Demo Dental", "Front desk");
    EXPECT_NE(Text().find(c.expected), std::string::npos) << Text();
  }
  EXPECT_NE(Text().find("on November 18,"), std::string::npos) << Text();
}

TEST_F(Letters, ReferralChoosesGreetingBodyAndSigner) {
  RawExec(
      "UPDATE OfficeInformation SET ReferralLetter = 'To a colleague.', RefferalLetterBody = 'To a friend.';"
      "UPDATE ReferringDentists SET Title = 'Dr.', LastName = 'Quaresma' WHERE ID = 4;"
      "UPDATE Patient SET ReferringDentistID = 4, RefferedBy = '0', DefaultOfficeID = 2 WHERE ID = 5;"
      "UPDATE Patient SET ReferringDentistID = NULL, RefferedBy = 'Nora Vale', DefaultOfficeID = 3 WHERE ID = 6;");
  struct Case {
    const char* name;
    int patient;
    std::optional<bool> dentist;
    const char* greeting;
    const char* body;
  } cases[] = {
      {"a referring dentist, dentist's letter", 5, true, "Dear Dr. Quaresma,", "To a colleague."},
      {"a referring dentist, patient's letter", 5, false, "Dear Dr. Quaresma,", "To a friend."},
      {"left out: the patient's letter", 6, std::nullopt, "Dear Nora Vale,", "To a friend."},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.name);
    reports.OfficeID = 1;
    reports.rptRefferalLetter(c.patient, c.dentist);
    EXPECT_NE(Text().find(c.greeting), std::string::npos) << Text();
    EXPECT_NE(Text().find(c.body), std::string::npos) << Text();
    // The patient's office stays the component's office after the run.
    EXPECT_EQ(reports.OfficeID, c.patient == 5 ? 2 : 3);
    EXPECT_EQ(form.VSP.DocName(), "Refferal Letter");
  }
  // The signer: the type-4 employee, else the first of type 8, else none.
  const std::string four =
      TextOf("SELECT FirstName + ' ' + LastName FROM Employees WHERE TypeID = 4");
  const std::string eight =
      TextOf("SELECT FirstName + ' ' + LastName FROM Employees WHERE TypeID = 8");
  ASSERT_FALSE(four.empty());
  ASSERT_FALSE(eight.empty());
  reports.rptRefferalLetter(6, false);
  EXPECT_NE(Text().find("Sincerely,\n" + four), std::string::npos) << Text();
  RawExec("UPDATE Employees SET TypeID = 99 WHERE TypeID = 4");
  reports.rptRefferalLetter(6, false);
  EXPECT_NE(Text().find("Sincerely,\n" + eight), std::string::npos) << Text();
  RawExec("UPDATE Employees SET TypeID = 99 WHERE TypeID = 8");
  reports.rptRefferalLetter(6, false);
  EXPECT_EQ(Text().find(eight), std::string::npos);
  EXPECT_EQ(Text().find(four), std::string::npos);
}

TEST_F(Letters, NewPatientLetterPrintsThoughTheBoxIsRefused) {
  RawExec("UPDATE Patient SET Title = NULL, FirstName = 'Zoë', LastName = 'Côté', DefaultOfficeID = 2 WHERE ID = 7");
  form.SetDialogAnswer(0);
  reports.OfficeID = 1;
  reports.NewPatientLetter(7, "Welcome aboard.", "Demo Dental");
  EXPECT_EQ(form.PrintCount(), 1);
  EXPECT_EQ(form.VSP.DocName(), "Refferal Letter");
  EXPECT_TRUE(HasAll(Text(), {"Zoë Côté\n", "Welcome aboard."}));
  EXPECT_EQ(reports.OfficeID, 2);
}

TEST_F(Letters, PolicyStatementBenefitsAndSectionsWithText) {
  RawExec(
      "UPDATE OfficeInformation SET ConfirmationPolicyText = 'We call two days ahead.', BillingPolicyText = '', "
      "BillingOverCoveragePolicyText = NULL, ReschedulePolicyText = '48 hours, please.' WHERE ID = 1;");
  struct Case {
    const char* policy;
    const char* secondary;
    const char* benefits;
  } cases[] = {
      {"NULL", "'S-2'", "Patient does not have benefits"},
      {"'P-1'", "NULL", "Patient has primary benefits"},
      {"'P-1'", "'S-2'", "Patient has primary and secondary benefits"},
  };
  for (const auto& c : cases) {
    RawExec(std::string("UPDATE Patient SET [Policy#] = ") + c.policy + ", [SecondaryPolicy#] = " +
            c.secondary + ", MondayAvail = 1, TuesdayAvail = 0, FridayAvail = 1, SundayAvail = 0, "
            "WednesdayAvail = 0, ThursdayAvail = 0, SaturdayAvail = 0, ShortNotice = 1, "
            "BestAppointmentTime = NULL WHERE ID = 8");
    reports.OfficePolicyAcknowledgement(8, 1);
    EXPECT_NE(Text().find(c.benefits), std::string::npos) << c.benefits;
  }
  const std::string text = Text();
  for (const char* words :
       {"Confirmations\nWe call two days ahead.", "Short Notice or No Show Cancelations\n48 hours, please.",
        "mistakes and/or ommissions.", "don't hessitate to ask.", "Monday, Friday", "(No Preference)", "YES"})
    EXPECT_NE(text.find(words), std::string::npos) << words << "\n" << text;
  EXPECT_EQ(text.find("Billing and Payment"), std::string::npos) << "an empty policy prints no section";
  EXPECT_EQ(text.find("Billing over Benefit Plan Coverage"), std::string::npos);
  EXPECT_EQ(form.PrintCount(), 3);
}

}  // namespace
}  // namespace orv::testing
