// Appointment cards and family schedules: the confirmation of one
// appointment with its planned work and fees, and the family's coming
// appointments, in detail or as the summary table the statements reuse.
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

const char* kNoAppointment =
    "You have not selected a valid appointment.  As a result, nothing can be printed. Please "
    "select a vaild appointment from the list first, and try again.";

// The family's appointments; the caller filters out those not after today.
std::string FamilyAppointmentsSql(const std::string& select, int32_t patient) {
  return select +
         " FROM PatientAppointments INNER JOIN ProcedureCategories ON PatientAppointments.ProcedureCat "
         "= ProcedureCategories.ID INNER Join Patient ON PatientAppointments.PatientID = Patient.ID "
         "where Patient.ResponsibleFamilyMemberID in (select ResponsibleFamilyMemberID from patient "
         "where ID = " +
         std::to_string(patient) + ") ORDER BY" + " Date, Time, LastName";
}

const char* kFamilySelect =
    "SELECT PatientAppointments.ID as ID,  PatientAppointments.Date, PatientAppointments.Time, "
    "ProcedureCategories.Name, Patient.FirstName, Patient.LastName";

// Today's own appointments are not coming ones: only those dated after
// today stay.
// Appointment times are kept as minutes after midnight; printed as a time of
// day.
std::string TimeText(clsCommonFunctions& cf, const Variant& minutes) {
  return Format(Variant(DateTime(cf.ReturnVal(minutes) / 1440.0)), "h:nn AMPM");
}

std::string ComingFilter() { return "Date > #" + Format(Variant(Clock::Today()), "yyyy-mm-dd") + "#"; }

}  // namespace

// The planned procedures of an appointment, with or without fees.
static void PlannedProcedures(clsReports& r, int32_t appointment, bool hide_financial) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  db::Recordset codes = r.Open("Select * from PatientAppointmentCodes where PatientAppointmentID = " +
                               std::to_string(appointment));
  std::string body;
  while (!codes.Eof()) {
    Variant code = codes["Code"].Value();
    body += cf.returnStr(code) + "|" +
            cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "Description"));
    if (!hide_financial) body += "|" + Format(codes["Fee"].Value(), "Currency");
    body += ";";
    codes.MoveNext();
  }
  if (hide_financial) {
    vsp.AddTable("<1in|<5.5in", "Code|Description", body, kHeaderColor);
  } else {
    vsp.AddTable("<1in|<4.5in|>1in", "Code|Description|Fee", body, kHeaderColor);
  }
}

static bool HideFinancial(clsReports& r) {
  db::Recordset office = r.Open("Select HideFinancial from OfficeInformation where ID = " +
                                    std::to_string(r.OfficeID),
                                db::adOpenForwardOnly);
  bool hide = !office.Eof() && r.Common().ReturnBool(office["HideFinancial"].Value());
  office.Close();
  return hide;
}

static std::string PhoneWithExt(clsCommonFunctions& cf, const db::Recordset& rs) {
  std::string phone = cf.returnStr(rs["Phone"].Value());
  std::string ext = cf.returnStr(rs["PhoneExt"].Value());
  if (!ext.empty()) phone += " Ext: " + ext;
  return phone;
}

// The start of both family schedules: the document, the heading, the office
// and who the schedule is for.
static void StartFamilySchedule(clsReports& r, const char* title, const std::string& Header,
                                const std::string& OfficeName, const std::string& OfficeAddress,
                                const std::string& PatientName) {
  frame::PrintSurface& vsp = r.VSP();
  vsp.DocName(title);
  vsp.Orientation(0);
  vsp.StartDoc();
  r.PrintReportHeading(vsp.DocName(), "", Header);
  vsp.TextAlign(0);
  vsp.FontSize(10);
  if (!OfficeName.empty()) vsp.Text(OfficeName);
  if (!OfficeAddress.empty()) vsp.Text(OfficeAddress);
  vsp.Text("For: " + PatientName);
  vsp.Text(" ");
}

void clsReports::rptAppointmentCard(int32_t ID, std::string Header, std::string Footer,
                                    std::string OfficeName, std::string OfficePhone,
                                    int16_t UnitMinutes, bool Assignment) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(
      "SELECT PatientAppointments.*, Patient.LastName AS PatientLastName, Patient.FirstName AS "
      "PatientFirstName, Employees.FirstName AS ProviderFirstName, Employees.LastName AS "
      "ProviderLastName, Patient.Policy# AS PatientPolicy#, Patient.Division# AS PatientDivision#, "
      "Patient.SubscriberID# AS PatientSubscriberID#, ProcedureCategories.Name AS Category, "
      "Employees.[Professional Title] AS ProviderTitle FROM PatientAppointments INNER JOIN Patient ON "
      "PatientAppointments.PatientID = Patient.ID INNER JOIN Employees ON "
      "PatientAppointments.ProviderID = Employees.ID LEFT OUTER JOIN ProcedureCategories ON "
      "PatientAppointments.ProcedureCat = ProcedureCategories.ID WHERE PatientAppointments.ID = " +
      std::to_string(ID));
  if (rs.Eof()) {
    Host().ShowFailure(kNoAppointment, host::vbOKOnly, "");
    return;
  }
  bool hide = HideFinancial(*this);
  int32_t patient = CLng(rs["PatientID"].Value());
  // The card's patient becomes the component's patient in hand.
  Patient().PatientID(patient);
  DateTime date = cf.ReturnDate(rs["Date"].Value());

  vsp.DocName("Appointment Confirmation");
  vsp.Orientation(0);
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), "", OfficeName + "  " + OfficePhone);
  vsp.TextAlign(0);
  vsp.FontSize(10);
  if (!Header.empty()) vsp.Text(Header);

  vsp.FontBold(true);
  vsp.Text("Patient: " + cf.returnStr(rs["PatientFirstName"].Value()) + " " +
           cf.returnStr(rs["PatientLastName"].Value()));
  vsp.FontBold(false);
  std::string when = cf.returnStr(rs["ProviderTitle"].Value(), true);
  if (!when.empty()) when += " ";
  when += cf.returnStr(rs["ProviderFirstName"].Value()) + " " +
          cf.returnStr(rs["ProviderLastName"].Value()) + "|" +
          Format(Variant(date), "dddd mmmm d, yyyy") + "|" +
          TimeText(cf, rs["Time"].Value()) +
          "|" + cf.returnStr(rs["Category"].Value()) + ";";
  vsp.AddTable("<2in|<2in|<1in|<1.5in", "Name|Date|Time|Type", when, kHeaderColor);
  // The length of the visit, where the office books in units.
  if (UnitMinutes > 0 && cf.ReturnVal(rs["Units"].Value()) > 0) {
    vsp.Text("Length: " + std::to_string(static_cast<long>(cf.ReturnVal(rs["Units"].Value()) * UnitMinutes)) +
             " minutes");
  }

  vsp.Text(" ");
  vsp.FontBold(true);
  vsp.Text("Planned Procedures:");
  vsp.FontBold(false);
  PlannedProcedures(*this, ID, hide);

  if (!hide) {
    vsp.Text(" ");
    vsp.Text("Estimated Fee: " + Format(rs["Estimate"].Value(), "Currency") + "\r\n" +
             (Assignment ? "You are responsible to bring payment not covered by your insurance (if "
                           "any) on "
                         : "You are responsible to bring payment for the above amount on ") +
             Format(Variant(date), "dddd mmmm d, yyyy"));
  }

  // The family's other coming appointments, this one left out.
  db::Recordset family = Open(FamilyAppointmentsSql(kFamilySelect, patient));
  family.Filter(Variant(ComingFilter()));
  {
    std::string body;
    while (!family.Eof()) {
      if (CLng(family["ID"].Value()) != ID) {
        body += cf.returnStr(family["FirstName"].Value()) + " " + cf.returnStr(family["LastName"].Value()) +
                "|" + Format(family["Date"].Value(), "dddd mmmm d, yyyy") + "|" +
                TimeText(cf, family["Time"].Value()) +
                "|" + cf.returnStr(family["Name"].Value()) + ";";
      }
      family.MoveNext();
    }
    if (!body.empty()) {
      vsp.Text(" ");
      vsp.FontBold(true);
      vsp.Text("Family Appointments:");
      vsp.FontBold(false);
      vsp.AddTable("<2in|<2in|<1in|<1.5in", "Name|Date|Time|Type", body, kHeaderColor);
    }
  }

  db::Recordset who = Open("Select EmployerID from Patient where ID = " + std::to_string(patient));
  if (!who.Eof() && !who["EmployerID"].Value().IsNull()) {
    db::Recordset cover = Open(
        "Select InsuranceCompany.CompanyName, InsuranceCompany.Phone, InsuranceCompany.PhoneExt, "
        "Employers.Policy#, Employers.DivisionNumber FROM Employers INNER JOIN InsuranceCompany ON "
        "Employers.InsuranceID = InsuranceCompany.ID WHERE Employers.ID = " +
        CStr(who["EmployerID"].Value()));
    if (!cover.Eof()) {
      vsp.Text(" ");
      vsp.Text("If you are unsure of insurance coverage please contact your insurance company at:");
      vsp.Text(cf.returnStr(cover["CompanyName"].Value()));
      vsp.Text(PhoneWithExt(cf, cover));
    }
  }

  if (!Footer.empty()) {
    vsp.Text(" ");
    vsp.Text(Footer);
  }
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptFamilyAppointmentsDetailed(int32_t ID, std::string OfficeName,
                                               std::string OfficeAddress, std::string PatientName,
                                               std::string Header, std::string Footer,
                                               int16_t UnitMinutes) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(FamilyAppointmentsSql(
      "SELECT Patient.ID as PatientID, PatientAppointments.ID as ID,  PatientAppointments.Date, "
      "PatientAppointments.Time, ProcedureCategories.Name as Category, Patient.FirstName, "
      "Patient.LastName",
      ID));
  rs.Filter(Variant(ComingFilter()));
  if (rs.Eof()) {
    Host().ShowFailure(kNoAppointment, host::vbOKOnly, "");
    return;
  }
  bool hide = HideFinancial(*this);
  StartFamilySchedule(*this, "Family Appointments - Detailed", Header, OfficeName, OfficeAddress,
                      PatientName);
  while (!rs.Eof()) {
    vsp.FontBold(true);
    vsp.Text(cf.returnStr(rs["FirstName"].Value()) + " " + cf.returnStr(rs["LastName"].Value()) +
             "    " + Format(rs["Date"].Value(), "dddd mmmm d, yyyy") + "   " +
             TimeText(cf, rs["Time"].Value()) + " " +
             cf.returnStr(rs["Category"].Value()));
    vsp.FontBold(false);
    PlannedProcedures(*this, CLng(rs["ID"].Value()), hide);
    db::Recordset cover = Open(
        "SELECT Patient.Policy#, Patient.Division#, Patient.SubscriberID#, "
        "InsuranceCompany.CompanyName, InsuranceCompany.Phone, InsuranceCompany.PhoneExt FROM Patient "
        "INNER JOIN  InsuranceCompany On Patient.InsuranceID = InsuranceCompany.ID WHERE Patient.ID = " +
        CStr(rs["PatientID"].Value()));
    if (!cover.Eof()) {
      vsp.Text("If you are unsure of insurance coverage please contact your insurance company at:");
      vsp.Text(cf.returnStr(cover["CompanyName"].Value()) + "  " + PhoneWithExt(cf, cover));
    }
    vsp.Text(" ");
    rs.MoveNext();
  }
  if (!Footer.empty()) vsp.Text(Footer);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptFamilyAppointmentsSummary(int32_t ID, std::string OfficeName,
                                              std::string OfficeAddress, std::string PatientName,
                                              std::string Header, std::string Footer,
                                              int16_t UnitMinutes) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An error has occurred in Sub rptFamilyAppointmentsSummary in class clsReport", [&] {
    frame::PrintSurface& vsp = VSP();
    StartFamilySchedule(*this, "Family Appointments - Summary", Header, OfficeName, OfficeAddress,
                        PatientName);
    FamilyAppointmentsSummary(ID);
    if (!Footer.empty()) vsp.Text(Footer);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::FamilyAppointmentsSummary(int32_t ID) {
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(FamilyAppointmentsSql(kFamilySelect, ID));
  rs.Filter(Variant(ComingFilter()));
  if (rs.Eof()) return;
  std::string body;
  long rows = 0;
  while (!rs.Eof()) {
    body += cf.returnStr(rs["FirstName"].Value()) + " " + cf.returnStr(rs["LastName"].Value()) + "|" +
            Format(rs["Date"].Value(), "dddd mmmm d, yyyy") + "|" +
            TimeText(cf, rs["Time"].Value()) + "|" +
            cf.returnStr(rs["Name"].Value()) + ";";
    ++rows;
    rs.MoveNext();
  }
  vsp.StartTable();
  vsp.AddTable("<+2in|<+2in|<+1in|<+1.5in", "Name|Date|Time|Type", body, kHeaderColor);
  vsp.TableCell(frame::tcMarginTop, 1, 0, static_cast<int>(rows), 0) = "0.025in";
  vsp.TableCell(frame::tcMarginBottom, 1, 0, static_cast<int>(rows), 0) = "0.025in";
  vsp.EndTable();
}

}  // namespace orv
