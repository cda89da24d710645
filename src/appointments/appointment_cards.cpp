// Appointment cards and family schedules: the confirmation of one
// appointment with its planned work and fees, and the family's coming
// appointments, in detail or as the summary table the statements reuse.
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/contact_cells.h"
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
// The card and the detailed schedule send "where", the summary that the
// statements reuse "WHERE": each statement is sent as its report writes it.
std::string FamilyAppointmentsSql(const std::string& select, const char* where, int32_t patient) {
  return select +
         " FROM PatientAppointments INNER JOIN ProcedureCategories ON PatientAppointments.ProcedureCat "
         "= ProcedureCategories.ID INNER Join Patient ON PatientAppointments.PatientID = Patient.ID " +
         where +
         " Patient.ResponsibleFamilyMemberID in (select ResponsibleFamilyMemberID from patient "
         "where ID = " +
         std::to_string(patient) + ") ORDER BY" + " Date, Time, LastName";
}

const char* kFamilySelect =
    "SELECT PatientAppointments.ID as ID,  PatientAppointments.Date, PatientAppointments.Time, "
    "ProcedureCategories.Name, Patient.FirstName, Patient.LastName";

// Appointment times are kept as minutes after midnight; printed as a time of
// day.
std::string TimeText(clsCommonFunctions& cf, const Variant& minutes) {
  return Format(Variant(DateTime(cf.ReturnVal(minutes) / 1440.0)), "h:nn AMPM");
}

// Today's own appointments are not coming ones: only those dated after
// today stay.
// One table row per appointment of the family query, as far as the
// recordset's filter lets them through: name, long date, time, category.
// `rows` counts them.
std::string FamilyRows(clsCommonFunctions& cf, db::Recordset& rs, long& rows) {
  std::string body;
  rows = 0;
  while (!rs.Eof()) {
    ++rows;
    body += frame::EscapeCell(cf.returnStr(rs["FirstName"].Value()) + " " +
                              cf.returnStr(rs["LastName"].Value())) +
            "|" + Format(rs["Date"].Value(), "dddd mmmm d, yyyy") + "|" +
            TimeText(cf, rs["Time"].Value()) + "|" +
            frame::EscapeCell(cf.returnStr(rs["Name"].Value())) + ";";
    rs.MoveNext();
  }
  return body;
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
    body += frame::EscapeCell(cf.returnStr(code)) + "|" +
            frame::EscapeCell(
                cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "Description")));
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

// The insurer's phone with its extension.
static std::string InsurerPhone(clsCommonFunctions& cf, const db::Recordset& rs) {
  return PhoneWithExt(cf.returnStr(rs["Phone"].Value()), cf.returnStr(rs["PhoneExt"].Value()),
                      " Ext: ");
}

// The heading of a card or a schedule: the office the host names stands in
// the heading in place of the component's, so that one office prints, once.
// Without a name from the host the component's office line stands.
static void PrintCardHeading(clsReports& r, const std::string& subtitle,
                             const std::string& office_line) {
  const std::string title = r.VSP().DocName();
  if (office_line.empty()) {
    r.PrintReportHeading(title, "", subtitle);
  } else {
    r.PrintReportHeading(title, "", subtitle, office_line);
  }
}

// The start of both family schedules: the document, the heading with the
// office and its address, and who the schedule is for.
static void StartFamilySchedule(clsReports& r, const char* title, const std::string& Header,
                                const std::string& OfficeName, const std::string& OfficeAddress,
                                const std::string& PatientName) {
  frame::PrintSurface& vsp = r.VSP();
  vsp.DocName(title);
  vsp.Orientation(0);
  vsp.StartDoc();
  std::string office = OfficeName;
  if (!OfficeName.empty() && !OfficeAddress.empty()) office += "\r\n" + OfficeAddress;
  PrintCardHeading(r, Header, office);
  vsp.TextAlign(0);
  vsp.FontSize(10);
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
  // The host hands the office's phone as it wants it printed.
  std::string office = OfficeName;
  if (!OfficeName.empty() && !OfficePhone.empty()) office += " Phone #: " + OfficePhone;
  PrintCardHeading(*this, "", office);
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
          cf.returnStr(rs["ProviderLastName"].Value());
  when = frame::EscapeCell(when) + "|" + Format(Variant(date), "dddd mmmm d, yyyy") + "|" +
         TimeText(cf, rs["Time"].Value()) + "|" +
         frame::EscapeCell(cf.returnStr(rs["Category"].Value())) + ";";
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

  // The family's coming appointments, this one among them: the card then
  // holds the whole family's schedule, and the front desk sees at a glance
  // who comes on the same day.
  db::Recordset family = Open(FamilyAppointmentsSql(kFamilySelect, "where", patient));
  family.Filter(Variant(ComingFilter()));
  {
    long rows = 0;
    const std::string body = FamilyRows(cf, family, rows);
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
      vsp.Text(InsurerPhone(cf, cover));
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
      "where", ID));
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
      vsp.Text(cf.returnStr(cover["CompanyName"].Value()) + "  " + InsurerPhone(cf, cover));
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
  db::Recordset rs = Open(FamilyAppointmentsSql(kFamilySelect, "WHERE", ID));
  rs.Filter(Variant(ComingFilter()));
  if (rs.Eof()) return;
  long rows = 0;
  const std::string body = FamilyRows(cf, rs, rows);
  vsp.StartTable();
  vsp.AddTable("<+2in|<+2in|<+1in|<+1.5in", "Name|Date|Time|Type", body, kHeaderColor);
  vsp.TableCell(frame::tcMarginTop, 1, 0, static_cast<int>(rows), 0) = "0.025in";
  vsp.TableCell(frame::tcMarginBottom, 1, 0, static_cast<int>(rows), 0) = "0.025in";
  vsp.EndTable();
}

bool clsReports::FamilyHasComingAppointments(int32_t ID) {
  db::Recordset rs = Open(FamilyAppointmentsSql(kFamilySelect, "WHERE", ID));
  rs.Filter(Variant(ComingFilter()));
  return !rs.Eof();
}

}  // namespace orv
