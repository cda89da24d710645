#include <gtest/gtest.h>

#include <string>

#include "frame/surface/surface.h"
#include "support/host_said.h"
#include "support/report_fixture.h"
#include "support/text_order.h"

namespace orv::testing {
namespace {

// Memos of our own: the demo's are cleared so each case knows what is due.
class NotesAndMemos : public ReportTest {
 protected:
  void SetUp() override {
    SetUpPractice(
        "DELETE FROM Memos;"
        "INSERT INTO Memos (ID, EmployeeID, DestinationID, Date, DueDate, Importance, Message) VALUES"
        " (1, 1, 0, '2026-11-01', '2026-11-10', NULL, NULL),"
        " (2, 1, 2, '2026-11-02', '2026-11-11', 1, 'Call the lab'),"
        " (3, 1, 2, '2026-11-03', '2026-11-12', 2, NULL),"
        " (4, 1, 2, '2026-11-04', '2026-12-01', 5, 'Not yet due'),"
        " (5, 1, 3, '2026-11-05', '2026-11-13', 0, 'For someone else');");
  }
};

TEST_F(NotesAndMemos, MemosOneAPageWithImportanceAndRecipient) {
  reports.rptMemos("ID <= 2", DateTime::FromParts(2026, 11, 20, 0, 0, 0), "dana");
  EXPECT_EQ(form.VSP.DocName(), "Email(s) for dana");
  ASSERT_EQ(form.VSP.PageCount(), 3) << "two memos and the trailing empty page";
  EXPECT_NE(PageText(1).find("Importance: Low"), std::string::npos) << "NULL is Low\n" << PageText(1);
  EXPECT_EQ(PageText(1).find("To: "), std::string::npos) << "a memo to all names no recipient";
  EXPECT_TRUE(HasAll(PageText(2), {"To: ", "Importance: Medium", "Call the lab"}));
  reports.rptMemos("ID IN (3, 4)", DateTime(), "");
  EXPECT_NE(PageText(1).find("Importance: High"), std::string::npos);
  EXPECT_NE(PageText(2).find("Importance: High"), std::string::npos) << "2 and up is High";
  EXPECT_EQ(form.PrintCount(), 2);
}

TEST_F(NotesAndMemos, ToDoEmailReadsTheOrAsWritten) {
  // User 2: the memo to all passes with no message; their own memo 2 is
  // due; memo 3 is theirs and due but has no message; memo 4 is not due.
  EXPECT_EQ(reports.ToDoEmail(2), -1);
  const std::string text = Text();
  EXPECT_NE(text.find("Call the lab"), std::string::npos);
  EXPECT_TRUE(HasNone(text, {"Not yet due", "For someone else"}));
  EXPECT_EQ(form.ShowCount(), 0) << "drawn, not shown";

  // Only the memo to all, message empty, is due for user 9: still -1.
  form.VSP.KillDoc();
  EXPECT_EQ(reports.ToDoEmail(9), -1);
  EXPECT_EQ(form.VSP.PageCount(), 1);

  // Nothing due at all: 0 and nothing drawn.
  RawExec("DELETE FROM Memos WHERE ID IN (1, 2, 3, 5)");
  form.VSP.KillDoc();
  EXPECT_EQ(reports.ToDoEmail(2), 0);
  EXPECT_EQ(form.VSP.PageCount(), 0);
}

TEST_F(NotesAndMemos, ProgressNotesDueOnTheHostsTodayAndNotCompleteOnly) {
  RawExec(
      "DELETE FROM PatientProgressNotes;"
      "INSERT INTO PatientProgressNotes (ID, PatientID, EmployeeID, Date, Treatment, Complete, ReminderDate, Type) VALUES"
      " (1, 1, 1, '2026-11-01', 'Due today', 0, '2026-11-20', 2),"
      " (2, 1, 1, '2026-11-01', 'Due tomorrow', 0, '2026-11-21', 2),"
      " (3, 1, 1, '2026-11-01', 'Flag never set', NULL, '2026-11-01', 2),"
      " (4, 1, 1, '2026-11-01', 'Already done', 1, '2026-11-01', 2),"
      " (5, 1, 1, '2026-11-01', 'Plain note', 0, '2026-11-01', 1);");
  reports.rptProgressNotesList();
  const std::string text = Text();
  EXPECT_NE(text.find("Due today"), std::string::npos) << text;
  for (const char* left_out : {"Due tomorrow", "Flag never set", "Already done", "Plain note"})
    EXPECT_EQ(text.find(left_out), std::string::npos) << left_out;
  EXPECT_EQ(form.ShowCount(), 1);

  // No note due: the heading and the table's head still print.
  RawExec("DELETE FROM PatientProgressNotes");
  reports.rptProgressNotesList();
  EXPECT_TRUE(HasAll(Text(), {"Progress Notes List", "Team Member"}));
}

TEST_F(NotesAndMemos, PrescriptionPrintsEveryCaptionAndSetsTheOffice) {
  RawExec(
      "INSERT INTO PatientPrescriptions (ID, PatientID, EmployeeID, Date) VALUES (9001, 4, 1, '2026-11-19');"
      "INSERT INTO PatientPrescriptionDetails (PatientPrescriptionID, RX, Dispense, Label, Repeats) VALUES"
      " (9001, 'Ibuprofène 400 mg', NULL, NULL, NULL);"
      "UPDATE Patient SET DefaultOfficeID = 2 WHERE ID = 4;");
  reports.OfficeID = 1;
  reports.rptPrescriptions(9001, "Prescription", "Demo Dental");
  const std::string text = Text();
  for (const char* line : {"Rx: Ibuprofène 400 mg", "Dispense:", "Label:", "Repeats:", "Date: Nov/19/2026",
                           "Prescribing Dentist:", "Signature: ____"})
    EXPECT_NE(text.find(line), std::string::npos) << line << "\n" << text;
  EXPECT_EQ(reports.OfficeID, 2);
  EXPECT_EQ(form.PrintCount(), 1);
}

// One patient's chart: three notes written on Nov 3, 4 and 5 (stored out of
// that order), one at an appointment with Dr. Ada Moreau, one without an
// appointment, one whose appointment key is 0 and whose signer has left the
// employee list.
class ProgressNotes : public ReportTest {
 protected:
  void SetUp() override {
    SetUpPractice(
        "INSERT INTO Employees (ID, FirstName, LastName) VALUES"
        " (97001, 'Ada', 'Moreau'), (97002, 'Léa', 'Roy');"
        "INSERT INTO Patient (ID, FirstName, LastName) VALUES (97001, 'Jean', 'Tremblay');"
        "INSERT INTO PatientAppointments (ID, PatientID, ProviderID, Date) VALUES"
        " (97101, 97001, 97001, '2026-11-03 00:00:00');"
        "INSERT INTO PatientProgressNotes (ID, PatientID, EmployeeID, AppointmentID, Date, Treatment,"
        " Complete, Type) VALUES"
        " (97201, 97001, 97002, NULL, '2026-11-05 00:00:00', 'Phoned about sensitivity', 0, 1),"
        " (97202, 97001, 97002, 97101, '2026-11-03 00:00:00', 'Filled 36 O', 1, 1),"
        " (97203, 97001, 99999, 0, '2026-11-04 00:00:00', 'Reviewed x-rays', 1, 1);"
        "INSERT INTO PatientProgressNoteDetails (ID, PatientProgressNoteID, Code, [Tooth#], Liner,"
        " Material, Colour, Surface, Units, Instruments, AnaestheticNote, ProceduralNote) VALUES"
        " (97301, 97202, '23111', '36', NULL, 'Comp', 'A2', 'O', 1, 'Tray', 'Lido', 'Dam | rolls; dry'),"
        " (97302, 97202, '01202', NULL, NULL, NULL, NULL, NULL, 2, NULL, NULL, NULL);");
  }
};

TEST_F(ProgressNotes, EachNoteWithItsAppointmentAndDetails) {
  reports.rptProgressNotes("PatientProgressNotes.PatientID = 97001", "dana");
  ASSERT_TRUE(host.messages.empty()) << host.messages[0].prompt;
  EXPECT_EQ(form.VSP.DocName(), "Progress Notes");
  EXPECT_EQ(form.ShowCount(), 1) << "previewed";
  const std::string text = Text();
  // In the order written; the appointment's lines only under the note that
  // has one, its details in the note's table; a signer no longer on file
  // leaves the caption alone.
  EXPECT_TRUE(InOrder(text, {"Signed By: Léa Roy\nDate: Nov/3/2026\nAppointment Date: Nov/3/2026\n"
                             "Appointment Provider: Ada Moreau\nNote Recorded: Filled 36 O\n",
                             "\n23111 36 Comp A2 O 1 Tray Lido Dam | rolls; dry\n01202 2\n",
                             "Signed By: \nDate: Nov/4/2026\nNote Recorded: Reviewed x-rays\n",
                             "Date: Nov/5/2026\nNote Recorded: Phoned about sensitivity\n"}));
  EXPECT_EQ(Occurrences(text, "Patient: Jean Tremblay\n"), 3u);
  EXPECT_EQ(Occurrences(text, "01202 2\n"), 1u) << "details under their own note only";
  EXPECT_EQ(Occurrences(text, "Procedural Note\n"), 3u) << "every note keeps its table's head";
  EXPECT_EQ(text.find("Appointment Date", text.find("Reviewed x-rays")), std::string::npos)
      << "an appointment key of 0 names no appointment";
}

TEST_F(ProgressNotes, FiltersThatSelectEveryNoteAndOnesThatFail) {
  // "0", "" and blanks select every note, the demo's and ours.
  for (const char* every : {"0", "", "  "}) {
    host.messages.clear();
    reports.rptProgressNotes(every, "dana");
    ASSERT_TRUE(host.messages.empty()) << "'" << every << "': " << host.messages[0].prompt;
    EXPECT_NE(Text().find("Filled 36 O"), std::string::npos) << every;
    EXPECT_GT(form.VSP.PageCount(), 1) << every << ": the demo's notes too";
  }
  // One note by its key: the column named by its table.
  reports.rptProgressNotes("PatientProgressNotes.ID = 97203", "");
  EXPECT_NE(Text().find("Reviewed x-rays"), std::string::npos);
  EXPECT_EQ(Text().find("Filled 36 O"), std::string::npos);
  EXPECT_EQ(form.VSP.PageCount(), 1);

  // A condition the database refuses: the notes' own message, then the
  // error, and nothing shown.
  const int shown = form.ShowCount();
  reports.rptProgressNotes("NoSuchColumn = 1", "");
  ASSERT_TRUE(SaidOnce(host, "An error has occurred in rptProgresNotes in object clsReports\n"));
  EXPECT_NE(host.messages[0].prompt.find("NoSuchColumn"), std::string::npos) << host.messages[0].prompt;
  EXPECT_EQ(form.ShowCount(), shown);
}

}  // namespace
}  // namespace orv::testing
