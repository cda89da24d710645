// Letters to patients: reactivation, missed appointment, thanks for a
// referral, welcome, and the practice policy statement to sign. Each goes to
// the printer, and each sets its patient on the component's patient record,
// whose office then becomes the component's office for the run and after.
#include <optional>

#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "lists/mailing_text.h"
#include "platform/db/lookup.h"
#include "platform/host/host_services.h"

namespace orv {

namespace {

using lists::JoinedName;

// The letter's date line: a blank paragraph, the date, a blank paragraph.
void DateLine(frame::PrintSurface& vsp, const std::string& format) {
  vsp.Text(" ");
  vsp.Text(Format(Variant(Clock::Today()), format));
  vsp.Text(" ");
}

// The host composes the office's name for the letters; it heads each one,
// bold and centred, where the letterhead paper has its name.
void OfficeLine(frame::PrintSurface& vsp, const std::string& OfficeName) {
  if (OfficeName.empty()) return;
  const int align = vsp.TextAlign();
  vsp.TextAlign(1);
  vsp.FontBold(true);
  vsp.Text(OfficeName);
  vsp.FontBold(false);
  vsp.TextAlign(align);
}

// "Title LastName" with the title's blank only when there is a title.
std::string TitledName(const std::string& title, const std::string& last) {
  return title.empty() ? last : title + " " + last;
}

}  // namespace

// Starts a letter's document in portrait and sets the patient on the
// component's record and the component's office from it: the letter is the
// patient's office's, and the office stays set after the run, as the desk's
// next report expects.
static void StartLetter(clsReports& r, const std::string& title, int32_t patient) {
  frame::PrintSurface& vsp = r.VSP();
  vsp.Orientation(0);
  vsp.DocName(title);
  vsp.StartDoc();
  r.Patient().PatientID(patient);
  r.OfficeID = r.Patient().OfficeID();
}

// The message for a letter whose row is not on file; the run prints nothing.
static void NotOnFile(clsReports& r, const std::string& title, const std::string& what, int32_t id,
                      const std::string& statement) {
  r.Host().ShowFailure(title + ": " + what + " " + std::to_string(id) + " is not on file (" + statement +
                       "); nothing was printed.");
}

std::string lists::ReactivationGap(DateTime last_visit, DateTime today) {
  // Calendar differences, years first: a visit on Dec 20 seen on Jan 5 is
  // "1 year" (one year boundary crossed), January to December of one year
  // "11 months". The interval the letter has always named "Y" is read as
  // years; the day-of-year reading would make every gap 0 or negative.
  const long long years = DateDiff("yyyy", last_visit, today);
  if (years > 1) return std::to_string(years) + " years";
  if (years == 1) return std::to_string(years) + " year";
  const long long months = DateDiff("m", last_visit, today);
  if (months > 1) return std::to_string(months) + " months";
  return std::to_string(months) + " month";
}

void clsReports::rptReActivationLetter(std::string txtfilter, std::string OfficeName, std::string Header) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  const std::string today = Format(Variant(Clock::Today()), "yyyy-mm-dd");
  // Each patient's last visit up to today and the doctor's name come with
  // the patient's row: a run over a few hundred patients sent three
  // statements a patient (the patient's record, the visits, the doctor),
  // and their set-up cost more than the letters. The latest date is the
  // first of the visits in descending order; a patient never seen gets
  // NULL. No filter, no where clause: "where " alone is never sent.
  db::Recordset rs = Open(
      "SELECT ID, FullName, Address, FirstName, (SELECT MAX(PatientAppointments.[Date]) "
      "FROM PatientAppointments WHERE PatientAppointments.PatientID = Patient.ID AND "
      "PatientAppointments.[Date] <= '" +
      today +
      "') AS LastVisit, (SELECT Employees.LastName FROM Employees WHERE Employees.ID = Patient.DoctorID) AS "
      "DoctorLastName FROM Patient" +
      (txtfilter.empty() ? std::string() : " where " + txtfilter));
  const db::Field id = rs["ID"], last_visit = rs["LastVisit"], full_name = rs["FullName"],
                  address = rs["Address"], first_name = rs["FirstName"], doctor = rs["DoctorLastName"];
  vsp.Orientation(0);
  vsp.DocName("Reactivation Letter");
  vsp.StartDoc();
  // The run leaves its last patient on the component's record and that
  // patient's office as the component's office; nothing in a letter reads
  // them, so the record is loaded once, for the last row, not per letter.
  std::optional<int32_t> last_patient;
  while (!rs.Eof()) {
    last_patient = CLng(id.Value());
    const Variant visit = last_visit.Value();
    std::string gap;
    if (!visit.IsNull()) gap = lists::ReactivationGap(CDate(visit), Clock::Today());
    // Seen this month: no letter. Never seen: a letter with the gap left
    // empty.
    if (visit.IsNull() || gap.substr(0, gap.find(' ')) != "0") {
      vsp.FontBold(false);
      vsp.TextAlign(0);
      OfficeLine(vsp, OfficeName);
      DateLine(vsp, "mmm/dd/yyyy");
      vsp.Text(cf.returnStr(full_name.Value()));
      vsp.Text(cf.returnStr(address.Value()));
      vsp.Text(" ");
      vsp.Text("Dear " + cf.returnStr(first_name.Value()) + ",");
      vsp.Text(" ");
      vsp.TextAlign(7);
      vsp.Text("Our records show that it has been " + gap +
               " since your last visit. We've missed you and are concerned that you are not "
               "receiving necessary care.  As you know, regular care is important in maintaining "
               "your dental health.");
      vsp.Text(" ");
      vsp.Text("We also wonder if we should maintain your records on active status. Please help us "
               "by checking the proper line below and returning this slip today.");
      vsp.Text(" ");
      vsp.Text("Thank you!");
      vsp.Text(" ");
      vsp.Text("Dr. " + cf.returnStr(doctor.Value()));
      vsp.Text(Header);
      vsp.Text(" ");
      vsp.Text(" ");
      vsp.Text("_________ I need to come in!  Please call me to set up an appointment.  The most "
               "convenient time to reach me is ___________________________ at telephone # "
               "_____________________.");
      vsp.Text(" ");
      vsp.Text("_________ I didn't realize it had been so long. I'll call for an appointment.");
      vsp.Text(" ");
      vsp.Text("_________ I'm not interested.  Please remove my name from your active list.");
      vsp.Text(" ");
      vsp.Text(" ");
      vsp.Text("____________________________________");
      vsp.Text("Signature");
      // Each letter ends with a new page, so the last one leaves an empty
      // page, as the printed run always has.
      vsp.NewPage();
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  if (last_patient) {
    Patient().PatientID(*last_patient);
    OfficeID = Patient().OfficeID();
  }
  // A filter that selects no one still ends and prints its empty page.
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptNoShowLetter(int32_t ID, std::string SignedBy, Variant Body, std::string OfficeName,
                                 std::string Header) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(
      "SELECT PatientAppointments.Date, PatientAppointments.ID, PatientAppointments.PatientID, "
      "Patient.Title, Patient.LastName, Patient.Sex, Patient.FirstName, Patient.BirthDate, "
      "Patient.PrimaryHolderID, PatientAppointments.Time FROM PatientAppointments INNER JOIN "
      "Patient ON PatientAppointments.PatientID = Patient.ID where PatientAppointments.ID = " +
      std::to_string(ID));
  if (rs.Eof()) return NotOnFile(*this, "No Show Letter", "appointment", ID, "PatientAppointments joined with Patient");
  StartLetter(*this, "No Show Letter", CLng(rs["PatientID"].Value()));
  // Under 18 by calendar years, whatever the birthday, and only with a
  // holder to write to; a patient without a birth date is an adult.
  const Variant birth = rs["BirthDate"].Value();
  const bool guardian = !birth.IsNull() && !rs["PrimaryHolderID"].Value().IsNull() &&
                        DateDiff("yyyy", CDate(birth), Clock::Today()) < 18;
  // Only the full word: the desk's "F" gives "his", as it always has.
  const std::string pronoun = vb::UCase(cf.returnStr(rs["Sex"].Value())) == "FEMALE" ? "her" : "his";
  const std::string time =
      Format(Variant(DateTime(cf.ReturnVal(rs["Time"].Value()) / 1440.0)), "h:nn AMPM");
  const std::string date = Format(rs["Date"].Value(), "Long Date");

  vsp.TextAlign(3);
  OfficeLine(vsp, OfficeName);
  DateLine(vsp, "Long Date");
  if (guardian) {
    const Variant holder = rs["PrimaryHolderID"].Value();
    vsp.Text("Dear " + TitledName(cf.returnStr(ReturnLookupValue("Patient", "ID", holder, "Title"), true),
                                  cf.returnStr(ReturnLookupValue("Patient", "ID", holder, "LastName"))) +
             ",");
    vsp.Text(" ");
    vsp.Text("We are concerned that " + cf.returnStr(rs["FirstName"].Value()) + " did not come to " +
             pronoun + " scheduled appointment at " + time + " on " + date + ".");
  } else {
    vsp.Text("Dear " + TitledName(cf.returnStr(rs["Title"].Value(), true), cf.returnStr(rs["LastName"].Value())) +
             ",");
    vsp.Text(" ");
    vsp.Text("We are concerned that you did not come to your scheduled appointment at " + time + " on " +
             date + ".");
  }
  vsp.Text(" ");
  vsp.Text(cf.returnStr(Body));
  vsp.Text(" ");
  vsp.Text("Sincerely,");
  vsp.Text(" ");
  vsp.Text(" ");
  vsp.Text(SignedBy);
  vsp.Text(Header);
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptRefferalLetter(int32_t ID, std::optional<bool> IsDentist) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(
      "SELECT RefferedBy, LastName, ReferringDentistID, FirstName, ID FROM Patient where ID = " +
      std::to_string(ID));
  if (rs.Eof()) return NotOnFile(*this, "Refferal Letter", "patient", ID, "Patient");
  StartLetter(*this, "Refferal Letter", ID);
  vsp.TextAlign(0);
  DateLine(vsp, "mmm/dd/yyyy");
  const Variant dentist = rs["ReferringDentistID"].Value();
  if (!dentist.IsNull() && cf.ReturnVal(dentist) > 0) {
    vsp.Text("Dear " +
             TitledName(cf.returnStr(db::ReturnValue(conn_, "ReferringDentists", "ID", dentist, "Title"), true),
                        cf.returnStr(db::ReturnValue(conn_, "ReferringDentists", "ID", dentist, "LastName"))) +
             ",");
  } else {
    vsp.Text("Dear " + cf.returnStr(rs["RefferedBy"].Value()) + ",");
  }
  vsp.Text(" ");
  vsp.Text("I would like to thank you for referring " + cf.returnStr(rs["FirstName"].Value()) + " " +
           cf.returnStr(rs["LastName"].Value()) + " to our practice.");
  vsp.Text(" ");
  // A dentist gets the professional letter; a patient, or a call that
  // leaves the choice out, the friendly one.
  const char* body = IsDentist.value_or(false) ? "ReferralLetter" : "RefferalLetterBody";
  vsp.Text(cf.returnStr(db::ReturnValue(conn_, "OfficeInformation", "ID", Variant(OfficeID), body)));
  vsp.Text(" ");
  vsp.Text("Sincerely,");
  vsp.Text(" ");
  vsp.Text(" ");
  vsp.Text(" ");
  // The dentist of type 4 signs; else the first of type 8; else the line
  // stays empty.
  db::Recordset signer = Open("Select * from Employees where TypeID = 4");
  if (signer.Eof()) signer = Open("Select * from Employees where TypeID = 8");
  if (!signer.Eof())
    vsp.Text(JoinedName(cf, signer, {"FirstName", "LastName"}));
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::NewPatientLetter(int32_t ID, std::string LetterBody, std::string OfficeName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The page set-up box is offered, and the letter prints whatever the
  // answer: the welcome letter has always gone out regardless.
  (void)vsp.PrintDialog(2);
  db::Recordset rs = Open("SELECT * from Patient where ID = " + std::to_string(ID));
  // The welcome letter has always carried the referral letter's title.
  if (rs.Eof()) return NotOnFile(*this, "Refferal Letter", "patient", ID, "Patient");
  StartLetter(*this, "Refferal Letter", ID);
  OfficeLine(vsp, OfficeName);
  vsp.Text(" ");
  vsp.TextAlign(9);
  vsp.Text(Format(Variant(Clock::Today()), "mmm/dd/yyyy"));
  vsp.Text(" ");
  vsp.Text(" ");
  vsp.TextAlign(0);
  vsp.Text(JoinedName(cf, rs, {"Title", "FirstName", "LastName"}));
  vsp.Text(cf.returnStr(rs["Address"].Value()));
  vsp.Text(" ");
  vsp.Text(" ");
  vsp.Text(LetterBody);
  vsp.EndDoc();
  vsp.PrintDoc(false);
}

void clsReports::OfficePolicyAcknowledgement(int32_t PatientID, int32_t OfficeID_) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open("SELECT * from Patient where ID = " + std::to_string(PatientID));
  if (rs.Eof()) return NotOnFile(*this, "Practice Policy Statement", "patient", PatientID, "Patient");
  db::Recordset office = Open("Select * from OfficeInformation where ID = " + std::to_string(OfficeID_));
  StartLetter(*this, "Practice Policy Statement", PatientID);
  // The office's name goes where the heading names the office.
  const std::string office_name = office.Eof() ? "" : cf.returnStr(office["Name"].Value());
  PrintReportHeading("Practice Policy Statement", "", "", office_name);
  vsp.TextAlign(0);
  vsp.FontSize(10);
  DateLine(vsp, "mmm/dd/yyyy");
  vsp.Text("Please review the following information to ensure that it is correct and up-to-date.  "
           "Please notify the receptionist if there are any mistakes and/or ommissions.");
  vsp.Text(" ");
  auto cell = [&](const char* f) { return frame::EscapeCell(cf.returnStr(rs[f].Value())); };
  const bool primary = !cf.returnStr(rs["Policy#"].Value(), true).empty();
  const bool secondary = !cf.returnStr(rs["SecondaryPolicy#"].Value(), true).empty();
  const std::string benefits = !primary   ? "Patient does not have benefits"
                               : secondary ? "Patient has primary and secondary benefits"
                                           : "Patient has primary benefits";
  const std::string preference = cf.returnStr(rs["BestAppointmentTime"].Value(), true);
  // The weekdays whose flag is set, in the week's order, by comma.
  std::string days;
  for (const char* day : {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"}) {
    if (!CBool(rs[std::string(day) + "Avail"].Value().IsNull() ? Variant(false) : rs[std::string(day) + "Avail"].Value()))
      continue;
    days += (days.empty() ? "" : ", ") + std::string(day);
  }
  // A flag as the desk reads it: "YES" or "NO" (no value: "NO").
  const Variant notice = rs["ShortNotice"].Value();
  const std::string short_notice = !notice.IsNull() && CBool(notice) ? "YES" : "NO";
  const std::string body =
      "Patient Name|" + cell("FullName") + ";Address|" + cell("Address") + ";Date of Birth|" +
      frame::EscapeCell(Format(rs["BirthDate"].Value(), "mmm/dd/yyyy")) + ";Benefits|" + benefits +
      ";Appointment Time Preference|" +
      (preference.empty() ? std::string("(No Preference)") : frame::EscapeCell(preference)) +
      ";Best Phone #|" + cell("BestPhoneNumber") + ";Best Time to Call|" + cell("BestTime") +
      ";Available on Short Notice|" + short_notice + ";Days Available|" + frame::EscapeCell(days) + ";";
  vsp.AddTable("<2.5in|<4.5in", "", body);
  vsp.Text(" ");
  vsp.Text("Please review the practice's policies below. It is important that you are aware of and "
           "fully understand each of these policies. If you have any questions and/or comments "
           "please don't hessitate to ask.");
  const std::pair<const char*, const char*> sections[] = {
      {"Confirmations", "ConfirmationPolicyText"},
      {"Billing and Payment", "BillingPolicyText"},
      {"Billing over Benefit Plan Coverage", "BillingOverCoveragePolicyText"},
      {"Short Notice or No Show Cancelations", "ReschedulePolicyText"}};
  for (const auto& [caption, column] : sections) {
    const std::string text = office.Eof() ? "" : cf.returnStr(office[column].Value());
    if (text.empty()) continue;
    vsp.Text(" ");
    vsp.FontBold(true);
    vsp.Text(caption);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.Text(text);
  }
  vsp.Text(" ");
  vsp.Text("I have read, understood, and agree to the above policies.");
  vsp.Text(" ");
  vsp.Text("Signature:  _________________________________________");
  vsp.Text(" ");
  vsp.Text("Date:  ______________________");
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

}  // namespace orv
