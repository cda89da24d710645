#include <gtest/gtest.h>

#include <string>

#include "frame/surface/surface.h"
#include "support/report_fixture.h"

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
  EXPECT_NE(PageText(2).find("To: "), std::string::npos);
  EXPECT_NE(PageText(2).find("Importance: Medium"), std::string::npos);
  EXPECT_NE(PageText(2).find("Call the lab"), std::string::npos);
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
  EXPECT_EQ(text.find("Not yet due"), std::string::npos);
  EXPECT_EQ(text.find("For someone else"), std::string::npos);
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
  EXPECT_NE(Text().find("Progress Notes List"), std::string::npos);
  EXPECT_NE(Text().find("Team Member"), std::string::npos);
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

  reports.rptPrescriptions(987654, "", "");
  ASSERT_EQ(host.messages.size(), 1u);
  EXPECT_NE(host.messages[0].prompt.find("987654"), std::string::npos);
  EXPECT_EQ(form.PrintCount(), 1);
}

}  // namespace
}  // namespace orv::testing
