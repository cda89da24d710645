// The clinical day's small outputs: the progress notes awaiting follow-up,
// staff memos, a prescription, and the count of memos due for a user.
#include <string>
#include <unordered_map>

#include "common/common_functions.h"
#include "common/format.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "lists/mailing_text.h"

namespace orv {

namespace {

// A date bound into a statement where the desk's SQL reads the server's
// clock: the host's today, so a fixed `--today` gives the same list.
std::string TodayLiteral() { return "'" + Format(Variant(Clock::Today()), "yyyy-mm-dd") + "'"; }

}  // namespace

void clsReports::rptProgressNotesList() {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // `Complete = 0` leaves out notes whose flag was never set (NULL), as
  // the server reads it.
  db::Recordset rs = Open(
      "SELECT PatientProgressNotes.ID, Patient.LastName, Patient.FirstName, Patient.DoctorID, "
      "PatientProgressNotes.Treatment, (SELECT FirstName + ' ' + LastName FROM Employees WHERE ID = "
      "Patient.DoctorID) AS DoctorName, (SELECT FirstName + ' ' + LastName FROM Employees WHERE ID = "
      "PatientProgressNotes.EmployeeID) AS EmployeeName FROM PatientProgressNotes INNER JOIN Patient "
      "ON PatientProgressNotes.PatientID = Patient.ID WHERE Complete = 0 AND ReminderDate <= " +
      TodayLiteral() + " AND Type > 1 ORDER BY Patient.DoctorID, ReminderDate, PatientProgressNotes.ID");
  vsp.Orientation(0);
  vsp.DocName("Progress Notes List");
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), "", "");
  vsp.FontSize(10);
  std::string body;
  while (!rs.Eof()) {
    body += frame::EscapeCell(lists::JoinedName(cf, rs, {"FirstName", "LastName"})) + "|" +
            frame::EscapeCell(cf.returnStr(rs["Treatment"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["DoctorName"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["EmployeeName"].Value())) + ";";
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.AddTable("<1in|<3in|<1in|<1in", "Patient|Note|Doctor|Team Member", body, kHeaderColor);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  // Previewed: the list is read at the desk and printed from the preview
  // when wanted, rather than sent to the printer unasked.
  Form().Show();
}

void clsReports::rptProgressNotes(std::string txtfilter, std::string UserName) {
  // The notes trap their errors with the desk's own message (the name of
  // the routine misspelt as it always was): whoever prints a chart's notes
  // learns that they did not print, instead of a bare failure of the call.
  Trap("An error has occurred in rptProgresNotes in object clsReports", [&] {
    const db::Snapshot snapshot(conn_);
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    // "0", "" or blanks select every note: the statement then goes without
    // its " where ", never with the word alone.
    txtfilter = NoZeroFilter(txtfilter);
    const bool all = cf.returnStr(Variant(txtfilter), true).empty();

    // 1. The notes. The appointment joins its provider and then meets the
    //    notes from the right, so a note without an appointment (or whose
    //    appointment is gone) still prints, its appointment columns Null.
    //    The signer joins from the left for the same reason. Notes come in
    //    the order they were written.
    db::Recordset rs = Open(
        "SELECT Employees1.FirstName AS DentistFirstName, Employees1.LastName AS DentistLastName, "
        "PatientProgressNotes.*, Employees.LastName AS SignedByLastName, Employees.FirstName AS "
        "SignedByFirstName, PatientAppointments.Date AS AppointmentDate, (SELECT Patient.FirstName "
        "+ ' ' + Patient. LastName FROM Patient WHERE Patient.ID = PatientProgressNotes.PatientID) "
        "AS PatientName FROM Employees Employees1 INNER JOIN PatientAppointments ON Employees1.ID = "
        "PatientAppointments.ProviderID RIGHT OUTER JOIN PatientProgressNotes ON "
        "PatientAppointments.ID = PatientProgressNotes.AppointmentID LEFT OUTER JOIN Employees ON "
        "PatientProgressNotes.EmployeeID = Employees.ID" +
        (all ? std::string() : " where " + txtfilter) +
        " ORDER BY PatientProgressNotes.Date, PatientProgressNotes.ID");

    vsp.Orientation(0);
    vsp.DocName("Progress Notes");
    vsp.StartDoc();
    PrintReportHeading(vsp.DocName(), UserName, "");
    vsp.TextAlign(0);
    vsp.FontSize(10);
    vsp.TableBorder(7);

    // A caption in bold and its value on one line.
    auto line = [&](const std::string& caption, const std::string& value) {
      vsp.FontBold(true);
      vsp.InlineText(caption);
      vsp.FontBold(false);
      vsp.Text(value);
    };
    while (!rs.Eof()) {
      // 2. The note's own lines; the appointment's two only where the note
      //    names one.
      vsp.Text(" ");
      line("Patient: ", cf.returnStr(rs["PatientName"].Value()));
      line("Signed By: ", lists::JoinedName(cf, rs, {"SignedByFirstName", "SignedByLastName"}));
      line("Date: ", Format(rs["Date"].Value(), "MMM/d/yyyy"));
      const Variant appointment = rs["AppointmentID"].Value();
      if (!appointment.IsNull() && CLng(appointment) != 0) {
        line("Appointment Date: ", Format(rs["AppointmentDate"].Value(), "MMM/d/yyyy"));
        line("Appointment Provider: ",
             lists::JoinedName(cf, rs, {"DentistFirstName", "DentistLastName"}));
      }
      line("Note Recorded: ", cf.returnStr(rs["Treatment"].Value()));
      // The note's lines stay with its details on one page.
      vsp.KeepWithNext();

      // 3. What was done, line by line; a note without details keeps the
      //    table's head, so the reader sees that none were recorded.
      db::Recordset details =
          Open("SELECT * From PatientProgressNoteDetails WHERE PatientProgressNoteID = " +
               cf.returnStr(rs["ID"].Value()) + " ORDER BY ID");
      std::string body;
      while (!details.Eof()) {
        for (const char* field : {"Code", "Tooth#", "Liner", "Material", "Colour", "Surface",
                                  "Units", "Instruments", "AnaestheticNote"})
          body += frame::EscapeCell(cf.returnStr(details[field].Value())) + "|";
        body += frame::EscapeCell(cf.returnStr(details["ProceduralNote"].Value())) + ";";
        details.MoveNext();
      }
      vsp.FontSize(8);
      vsp.AddTable("<.5in|<.5in|<.5in|<.5in|<.5in|<.5in|<.5in|<.5in|<1in|<1in",
                   "Code|Tooth#|Liner|Material|Colour|Surface|Units|Instr.|Anaesthetic Note|"
                   "Procedural Note",
                   body, kHeaderColor);
      vsp.FontSize(10);
      RaiseProgress(rs);
      rs.MoveNext();
    }
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::rptMemos(std::string txtfilter, DateTime printDate, std::string UserName) {
  (void)printDate;  // the host's own; the memos carry their dates
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  db::Recordset rs = Open("Select * from Memos" + (txtfilter.empty() ? std::string() : " where " + txtfilter) +
                          " ORDER BY ID");
  vsp.DocName("Email(s) for " + UserName);
  vsp.Orientation(0);
  vsp.StartDoc();
  // Every employee's name, read once: each memo names its sender and
  // often its receiver, and a statement per name cost more than the memo.
  std::unordered_map<int32_t, std::string> employee_names;
  {
    db::Recordset staff = Open("Select ID, FirstName, LastName from Employees");
    const db::Field id = staff["ID"];
    for (; !staff.Eof(); staff.MoveNext())
      employee_names.emplace(CLng(id.Value()), lists::JoinedName(cf, staff, {"FirstName", "LastName"}));
  }
  auto employee = [&](const Variant& id) {
    const auto found = employee_names.find(CLng(id));
    if (found != employee_names.end()) return found->second;
    // Not on file: the lookup of its own, which fails the run as it
    // always has.
    return lists::JoinedName(cf, Open("Select FirstName, LastName from Employees where ID = " +
                                      std::to_string(CLng(id))),
                             {"FirstName", "LastName"});
  };
  while (!rs.Eof()) {
    vsp.TextAlign(1);
    vsp.FontBold(true);
    vsp.FontSize(16);
    vsp.Text("Email");
    vsp.FontSize(10);
    vsp.TextAlign(0);
    vsp.Text("From: " + employee(rs["EmployeeID"].Value()));
    const Variant to = rs["DestinationID"].Value();
    if (!to.IsNull() && CLng(to) != 0) vsp.Text("To: " + employee(to));
    vsp.Text("Due Date: " + Format(rs["DueDate"].Value(), "mmm/dd/yyyy"));
    const Variant importance = rs["Importance"].Value();
    const int level = importance.IsNull() ? 0 : CLng(importance);
    vsp.Text(std::string("Importance: ") + (level >= 2 ? "High" : level == 1 ? "Medium" : "Low"));
    vsp.Text(" ");
    vsp.FontBold(false);
    vsp.Text(cf.returnStr(rs["Message"].Value()));
    // One page a memo; the last leaves the empty page the run always had.
    vsp.NewPage();
    rs.MoveNext();
  }
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptPrescriptions(int32_t ID, std::string Header, std::string OfficeName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(
      "SELECT PatientPrescriptions.*, Patient.FullName AS PatientName, Patient.Address AS "
      "PatientAddress, Patient.BirthDate AS PatientBirthDate, Employees.FullName AS ProviderName, "
      "Employees.[Reg#] AS ProviderReg, Employees.[CDA#] AS ProviderCDA FROM PatientPrescriptions "
      "LEFT OUTER JOIN Employees ON PatientPrescriptions.EmployeeID = Employees.ID LEFT OUTER JOIN "
      "Patient ON PatientPrescriptions.PatientID = Patient.ID where PatientPrescriptions.ID = " +
      std::to_string(ID));
  if (rs.Eof()) {
    Host().ShowFailure("Prescription: prescription " + std::to_string(ID) +
                       " is not on file (PatientPrescriptions); nothing was printed.");
    return;
  }
  vsp.Orientation(0);
  vsp.DocName("Prescription");
  vsp.StartDoc();
  Patient().PatientID(CLng(rs["PatientID"].Value()));
  OfficeID = Patient().OfficeID();
  // The office's name and the host's heading head the pad.
  vsp.TextAlign(1);
  vsp.FontBold(true);
  if (!OfficeName.empty()) vsp.Text(OfficeName);
  vsp.FontBold(false);
  if (!Header.empty()) vsp.Text(Header);
  vsp.CurrentY(vsp.CurrentY() + Twips(500));
  vsp.TextAlign(0);
  vsp.Text("Patient Name: " + cf.returnStr(rs["PatientName"].Value()));
  vsp.Text("Patient Address: " + cf.returnStr(rs["PatientAddress"].Value()));
  vsp.Text("Patient Birth Date:" + Format(rs["PatientBirthDate"].Value(), "mmm/dd/yyyy"));
  vsp.Text(" ");
  vsp.Text("Date: " + Format(rs["Date"].Value(), "mmm/dd/yyyy"));
  vsp.Text(" ");
  db::Recordset details = Open("Select * from PatientPrescriptionDetails WHERE PatientPrescriptionID = " +
                               std::to_string(ID) + " ORDER BY ID");
  // Every caption prints, a Null column leaving its value empty.
  while (!details.Eof()) {
    vsp.Text("Rx: " + cf.returnStr(details["RX"].Value()));
    vsp.Text("Dispense: " + cf.returnStr(details["Dispense"].Value()));
    vsp.Text("Label: " + cf.returnStr(details["Label"].Value()));
    vsp.Text(" ");
    vsp.Text("Repeats: " + cf.returnStr(details["Repeats"].Value()));
    vsp.Text(" ");
    details.MoveNext();
  }
  vsp.Text("Prescribing Dentist: " + cf.returnStr(rs["ProviderName"].Value()));
  vsp.Text(" ");
  vsp.Text("Signature: ____________________________________");
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

int16_t clsReports::ToDoEmail(int32_t UserID) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string today = TodayLiteral();
  const std::string user = std::to_string(UserID);
  // The OR as the desk has always run it: the test on the message binds to
  // the memos to this user only, so memos to all come through even when
  // their message is empty.
  db::Recordset rs = Open(
      "SELECT Memos.*, Employees.FullName AS Fullname FROM Memos INNER JOIN Employees ON "
      "Memos.EmployeeID = Employees.ID WHERE (Memos.DestinationID = 0) AND (Memos.DueDate <= " +
      today + ") OR (Memos.DestinationID = " + user + ") AND (Memos.DueDate <= " + today +
      ") AND (NOT (Memos.Message IS NULL)) ORDER BY Memos.DueDate, Memos.ID");
  if (rs.Eof()) return 0;
  std::string body;
  while (!rs.Eof()) {
    body += frame::EscapeCell(cf.returnStr(rs["Fullname"].Value())) + "|" +
            frame::EscapeCell(Format(rs["Date"].Value(), "mmm/dd/yyyy")) + "|" +
            frame::EscapeCell(cf.returnStr(rs["Message"].Value())) + ";";
    rs.MoveNext();
  }
  vsp.StartDoc();
  vsp.AddTable("1in|1in|2in", "Name|Date|Message", body);
  vsp.EndDoc();
  return -1;
}

}  // namespace orv
