// The routing slip: the one page that travels with the patient on the day
// of the visit, with the appointment, the patient's alerts and account, the
// planned appointments still to book, the family's coming appointments, the
// visit's work and room for the operatory's notes.
#include "accounts/account_model.h"
#include "appointments/appointment_text.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace appointments {

int SlipAge(const DateTime& birth, const DateTime& today) {
  // The slip counts calendar years, as the chart does: a patient born in
  // December is a year older on a January slip than by the birthday.
  return today.Year() - birth.Year();
}

}  // namespace appointments

namespace {

std::string Esc(clsCommonFunctions& cf, const Variant& v) { return frame::EscapeCell(cf.returnStr(v)); }

void SectionBar(frame::PrintSurface& vsp, const char* title) {
  vsp.FontBold(true);
  vsp.AddTable("^6.5in", title, "", kHeaderColor);
  vsp.FontBold(false);
  vsp.KeepWithNext();
}

}  // namespace

void clsReports::rptRoutingSlip(std::string txtfilter, std::string UserName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(
      "SELECT PatientAppointments.*, Patient.LastName AS PatientLastName, Patient.Title as "
      "PatientTitle, Patient.Assignment, Patient.ReferringDentistID, Patient.RefferedBy, "
      "Patient.PremedType, Patient.MedicalAlert, Patient.Sex, Patient.InsuranceID, "
      "Patient.SecondaryInsuranceID, Patient.BirthDate, Patient.FirstName AS PatientFirstName, "
      "Employees.FirstName AS ProviderFirstName, Employees.LastName AS ProviderLastName, "
      "InsuranceCompany.CompanyName AS InsuranceCompanyName,InsuranceCompany.Phone AS "
      "InsuranceCompanyPhone, InsuranceCompany.PhoneExt AS InsuranceCompanyPhoneExt, Patient.Policy# "
      "AS PatientPolicy#, Patient.Division# AS PatientDivision#, Patient.SubscriberID# AS "
      "PatientSubscriberID#, ProcedureCategories.Name AS Category, Employees.[Professional Title] AS "
      "ProviderTitle, Patient.PrimaryHolderID AS PrimaryHolderID, Patient.SecondaryHolderID AS "
      "SecondaryHolderID FROM PatientAppointments INNER JOIN Patient ON PatientAppointments.PatientID "
      "= Patient.ID INNER JOIN Employees ON PatientAppointments.ProviderID = Employees.ID LEFT OUTER "
      "JOIN ProcedureCategories ON PatientAppointments.ProcedureCat = ProcedureCategories.ID LEFT "
      "OUTER JOIN InsuranceCompany ON Patient.InsuranceID = InsuranceCompany.ID where " +
      txtfilter);
  if (rs.Eof()) {
    Host().MsgBox(
        "You have not selected a valid appointment.  As a result, nothing can be printed. Please "
        "select a vaild appointment from the list first, and try again.",
        host::vbOKOnly, "");
    return;
  }
  // Only the first row is the slip's appointment.
  const std::string appointment = cf.returnStr(rs["ID"].Value());
  const std::string patient = cf.returnStr(rs["PatientID"].Value());
  const std::string today = Format(Variant(Clock::Today()), "yyyy-mm-dd");

  vsp.DocName("Routing Slip");
  vsp.Orientation(0);
  vsp.StartDoc();
  vsp.TextAlign(7);
  vsp.FontSize(16);
  vsp.FontBold(true);
  vsp.Text("Routing Slip");
  vsp.FontSize(10);
  vsp.Text("Printed By: " + UserName);
  vsp.Text("For: " + cf.returnStr(rs["PatientTitle"].Value()) + " " +
           cf.returnStr(rs["PatientFirstName"].Value()) + " " + cf.returnStr(rs["PatientLastName"].Value()));
  vsp.TextAlign(0);
  vsp.FontBold(false);
  vsp.Text(" ");

  // Scheduling: the blank cells are for the front desk's pen.
  SectionBar(vsp, "Scheduling Information");
  vsp.StartTable();
  vsp.TableBorder(0);
  vsp.AddTable(">.8in|<1.8in|>.8in|<.8in|>.8in|<1.2in", "",
               "Date:|" + frame::EscapeCell(Format(rs["Date"].Value(), "Long Date")) + "|Time:|" +
                   appointments::PrintedTime(cf, rs["Time"].Value()) + "|Last Visit:| ;Provider:|" +
                   frame::EscapeCell(cf.returnStr(rs["ProviderFirstName"].Value()) + " " +
                                     cf.returnStr(rs["ProviderLastName"].Value())) +
                   "|Length:|" + Esc(cf, rs["Units"].Value()) + " units|Next Visit:| ;Category:|" +
                   Esc(cf, rs["Category"].Value()) + "||||;Notes:|" + Esc(cf, rs["Reason"].Value()) +
                   "||||;");
  // The notes run across the columns 2 to 6.
  vsp.TableCell(frame::tcColSpan, 4, 2) = 5;
  vsp.EndTable();
  vsp.TableBorder(7);

  SectionBar(vsp, "Patient Information");
  {
    db::Recordset who = Open("Select DoctorID from Patient where ID = " + patient);
    const Variant doctor = who.Eof() ? Variant() : who["DoctorID"].Value();
    const std::string dentist =
        doctor.IsNull() ? "" : cf.returnStr(ReturnLookupValue("Employees", "ID", doctor, "LastName"));
    const Variant birth = rs["BirthDate"].Value();
    const std::string age =
        birth.IsNull() ? "" : std::to_string(appointments::SlipAge(cf.ReturnDate(birth), Clock::Today()));
    vsp.Text("Primary Dentist: " + dentist + "\tSex: " + cf.returnStr(rs["Sex"].Value()) + "\tAge: " + age +
             "\t\tBirth Date: " + Format(birth, "mmm/dd/yyyy"));
    std::string second;
    const Variant sec = rs["SecondaryInsuranceID"].Value();
    // The secondary insurer is read from InsuranceCompanies, the schema's
    // view of the insurers under the name the slip has always used.
    if (!sec.IsNull() && cf.ReturnVal(sec) > 0)
      second = cf.returnStr(ReturnLookupValue("InsuranceCompanies", "ID", sec, "CompanyName"));
    vsp.Text("Primary Insurance: " + cf.returnStr(rs["InsuranceCompanyName"].Value()) +
             "\tSecondary Insurance: " + second);
    if (!cf.returnStr(rs["MedicalAlert"].Value()).empty())
      vsp.Text("Health Issues: " + cf.returnStr(rs["MedicalAlert"].Value()));
    if (!cf.returnStr(rs["PremedType"].Value()).empty())
      vsp.Text("Pre-Meds: " + cf.returnStr(rs["PremedType"].Value()));
    const Variant ref = rs["ReferringDentistID"].Value();
    if (!ref.IsNull() && cf.ReturnVal(ref) > 0) {
      db::Recordset d = Open("Select Title, Name, LastName from ReferringDentists where ID = " + cf.returnStr(ref));
      vsp.Text("Referred By: " + (d.Eof() ? std::string()
                                          : cf.returnStr(d["Title"].Value()) + " " + cf.returnStr(d["Name"].Value()) +
                                                " " + cf.returnStr(d["LastName"].Value())));
    } else {
      vsp.Text("Referred By: " + cf.returnStr(rs["RefferedBy"].Value()));
    }
    AccountModel accounts(conn(), InterestRate);
    const Currency balance = accounts.ReturnFamilyBalance(CLng(rs["PatientID"].Value()), Variant(), false, false);
    vsp.Text("Balance: " + Format(Variant(balance), "Currency") + "\t\tBilling Type: " +
             (cf.ReturnBool(rs["Assignment"].Value()) ? "Assignment" : "Non-Assignment"));
  }

  {
    db::Recordset fut = Open("Select * from PatientFuture where PatientID = " + patient + " and DueDate >= '" +
                             today + "' order by EstScheduleDate");
    if (!fut.Eof()) {
      vsp.Text(" ");
      SectionBar(vsp, "Planned Appointments to Book");
      std::string body;
      while (!fut.Eof()) {
        body += frame::EscapeCell(cf.returnStr(ReturnLookupValue("ProcedureCategories", "ID",
                                                                 fut["ProcedureCategoryID"].Value(), "Name"))) +
                "|" + Format(fut["DueDate"].Value(), "mmm/dd/yyyy") + "|" +
                Format(fut["EstScheduleDate"].Value(), "mmm/dd/yyyy") + "|" + Esc(cf, fut["Units"].Value()) + "|" +
                Format(Variant(cf.ReturnCur(fut["Estimate"].Value())), "Currency") + ";";
        fut.MoveNext();
      }
      vsp.AddTable("<1.2in|<1.1in|^1.1in|^.8in|>1in", "Category|Reminder Date|Schedule For|Units|Estimate", body,
                   kHeaderColor);
    }
  }

  {
    // The family: the patient and whoever names the patient's holders. A
    // holder that is not set links no one: its condition is left out rather
    // than written as "PrimaryHolderID =  or".
    std::string where = " where PatientID = " + patient;
    const Variant p1 = rs["PrimaryHolderID"].Value(), p2 = rs["SecondaryHolderID"].Value();
    if (!p1.IsNull() && cf.ReturnVal(p1) > 0) where += " or PrimaryHolderID = " + cf.returnStr(p1);
    if (!p2.IsNull() && cf.ReturnVal(p2) > 0) where += " or SecondaryHolderID = " + cf.returnStr(p2);
    db::Recordset fam = Open(
        "SELECT PatientAppointments.ID as ID,  PatientAppointments.Date, PatientAppointments.Time, "
        "ProcedureCategories.Name, Patient.FirstName, Patient.LastName FROM PatientAppointments INNER "
        "JOIN ProcedureCategories ON PatientAppointments.ProcedureCat = ProcedureCategories.ID INNER "
        "Join Patient ON PatientAppointments.PatientID = Patient.ID" +
        where);
    fam.Sort("LastName, Date");
    fam.Filter(Variant("Date > #" + today + "# and ID <> " + appointment));
    if (!fam.Eof()) {
      vsp.Text(" ");
      SectionBar(vsp, "Family Information");
      std::string body;
      while (!fam.Eof()) {
        body += frame::EscapeCell(cf.returnStr(fam["FirstName"].Value()) + " " + cf.returnStr(fam["LastName"].Value())) +
                "|" + Format(fam["Date"].Value(), "dddd mmmm d, yyyy") + "|" +
                appointments::PrintedTime(cf, fam["Time"].Value()) + "|" + Esc(cf, fam["Name"].Value()) + ";";
        fam.MoveNext();
      }
      vsp.AddTable("<2in|<2in|<.7in|<1.8in", "Name|Date|Time|Type", body, kHeaderColor);
    }
  }

  {
    db::Recordset work = Open("Select * from PatientAppointmentCodes where PatientAppointmentID = " + appointment);
    if (!work.Eof()) {
      vsp.Text(" ");
      SectionBar(vsp, "Today's Scheduled Work");
      std::string body;
      while (!work.Eof()) {
        body += Esc(cf, work["Code"].Value()) + "|" +
                frame::EscapeCell(cf.returnStr(ReturnLookupValue("Feecodes", "ID", work["Code"].Value(), "Description"))) +
                "|" + Esc(cf, work["Tooth#"].Value()) + "|" + Esc(cf, work["Surface"].Value()) + "|" +
                Format(work["Fee"].Value(), "Currency") + ";";
        work.MoveNext();
      }
      vsp.AddTable("<.7in|<3.3in|^.7in|^.8in|>1in", "Code|Description|Tooth#|Surface|Estimate", body, kHeaderColor);
    }
  }

  vsp.Text(" ");
  SectionBar(vsp, "Appointment In-Op Notes");
  // The confidentiality line stands at the foot of the page, one line above
  // the bottom margin; the slip has no page footers.
  const Twips x_height = vsp.TextHeight("X");
  vsp.FontSize(8);
  vsp.CurrentY(vsp.PageHeight() - vsp.MarginBottom() - x_height);
  vsp.Text("All information contained herein is confidential and proprietary to this office.");
  vsp.EndDoc();
  // The slip is for paper: it goes to the printer with the dialog, as the
  // card does, rather than waiting in the preview.
  vsp.PrintDoc(true);
}

}  // namespace orv
