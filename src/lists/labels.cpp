// Sheets of mailing and folder labels, the single-label runs, the insurance
// company sheet and the appointment card label. None has a heading or a
// footer: each walks its rows and places text by fixed arithmetic.
#include "common/common_functions.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "lists/mailing_text.h"
#include "platform/db/db_error.h"
#include "platform/host/host_services.h"

namespace orv {

namespace {

using lists::AddressBlock;
using lists::JoinedName;

// The label sheets are 3 columns by 10 rows of 2.55 x 0.89 in labels: label
// (c, r) has its corner at c * 2.75 + 0.25 in across and r + 0.5 in down.
// The 31st label opens a new sheet at the first column and row; a sheet is
// only started for a label that exists, so 30 labels make one page.
class LabelSheet {
 public:
  // The thirteen corners are read once: a sheet of 20,000 patients spent a
  // tenth of its run writing and parsing the same lengths for every label.
  explicit LabelSheet(frame::PrintSurface& vsp) : vsp_(vsp) {
    for (int c = 0; c < 3; ++c) across_[c] = Inches(c * 2.75 + 0.25);
    for (int r = 0; r < 10; ++r) down_[r] = Inches(r + 0.5);
  }

  void Place(const std::string& text) {
    if (row_ == 10) {
      vsp_.NewPage();
      row_ = 0;
    }
    vsp_.TextBox(text, across_[column_], down_[row_], width_, height_, false);
    if (++column_ == 3) {
      column_ = 0;
      ++row_;
    }
  }

 private:
  // The number and "in", as the sheet's positions are written.
  static frame::Length Inches(double v) { return frame::Length(CStr(Variant(v)) + "in"); }

  frame::PrintSurface& vsp_;
  frame::Length across_[3] = {0, 0, 0};
  frame::Length down_[10] = {0, 0, 0, 0, 0, 0, 0, 0, 0, 0};
  const frame::Length width_{"2.55in"}, height_{"0.89in"};
  int column_ = 0;
  int row_ = 0;
};

// The patient label statement of the sheet and of the one-per-page runs.
// Patients sharing a last name follow by first name and ID, so that every
// run, on either engine, fills the sheet in the same order.
std::string PatientLabelSql(const std::string& txtfilter) {
  return txtfilter.empty() ? "Select Title, FirstName, LastName, Address FROM Patient ORDER BY LastName, FirstName, ID"
                           : "Select Title, FirstName, LastName, Address FROM Patient WHERE " +
                                 txtfilter + " ORDER BY LastName, FirstName, ID";
}

// A patient's label: the name as JoinedName joins it, then the address.
// The fields are found once for the sheet, not by name for every label,
// and each label is written into one text kept for the sheet, its values
// read where the recordset holds them.
class PatientLabel {
 public:
  explicit PatientLabel(const db::Recordset& rs)
      : title_(rs["Title"]), first_(rs["FirstName"]), last_(rs["LastName"]), address_(rs["Address"]) {}

  const std::string& Text() const {
    text_.clear();
    lists::AppendNamePart(text_, vb::TrimView(title_.Text(scratch_)));
    lists::AppendNamePart(text_, vb::TrimView(first_.Text(scratch_)));
    lists::AppendNamePart(text_, vb::TrimView(last_.Text(scratch_)));
    text_ += "\r\n";
    text_ += address_.Text(scratch_);
    return text_;
  }

 private:
  db::Field title_, first_, last_, address_;
  mutable std::string text_, scratch_;
};

// The one-label-per-page frame: margins of 200 twips all round, the page
// the way given, the document started and the text centred.
void StartSingleLabels(frame::PrintSurface& vsp, int orientation) {
  vsp.MarginLeft(200);
  vsp.MarginRight(200);
  vsp.MarginTop(200);
  vsp.MarginBottom(200);
  vsp.Orientation(orientation);
  vsp.StartDoc();
  vsp.TextAlign(7);
}

const char* kNoAppointment =
    "You have not selected a valid appointment.  As a result, nothing can be printed. Please "
    "select a vaild appointment from the list first, and try again.";

}  // namespace

void clsReports::rptMailingLabels(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  db::Recordset rs = Open(PatientLabelSql(NoZeroFilter(txtfilter)));
  vsp.Orientation(0);
  vsp.StartDoc();
  vsp.TextAlign(7);
  LabelSheet sheet(vsp);
  const PatientLabel label(rs);
  while (!rs.Eof()) {
    sheet.Place(label.Text());
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptFolderLabels(std::string Position, std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  db::Recordset rs = Open(txtfilter.empty() ? "Select FullName, LastName FROM Patient ORDER BY LastName, FirstName, ID"
                                            : "Select FullName, LastName FROM Patient where " +
                                                  txtfilter + " ORDER BY LastName, FirstName, ID");
  vsp.Orientation(0);
  vsp.StartDoc();
  // The three words as the desk's menu passes them; any other word leaves
  // the alignment the surface already has.
  if (Position == "top") vsp.TextAlign(1);
  if (Position == "middle") vsp.TextAlign(7);
  if (Position == "bottom") vsp.TextAlign(4);
  LabelSheet sheet(vsp);
  while (!rs.Eof()) {
    sheet.Place(cf.returnStr(rs["FullName"].Value()));
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptReferringDentistMailingLabels(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  db::Recordset rs = Open(txtfilter.empty() ? "Select * from ReferringDentists ORDER BY LastName, Name, ID"
                                            : "Select * from ReferringDentists WHERE " + txtfilter +
                                                  " ORDER BY LastName, Name, ID");
  vsp.DocName("Referring Dentist Mailing Labels");
  vsp.Orientation(0);
  vsp.StartDoc();
  LabelSheet sheet(vsp);
  while (!rs.Eof()) {
    sheet.Place(JoinedName(cf, rs, {"Title", "Name", "LastName"}) + "\r\n" +
                AddressBlock(cf, rs, "Street", "Street2", "City", "Prov", "Postal", "\r\n"));
    RaiseProgress(rs);
    rs.MoveNext();
  }
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptMailingLabelsSinglePage(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  // Asked before anything is read or drawn: a refusal leaves no document.
  if (vsp.PrintDialog(2) == 0) return;
  db::Recordset rs = Open(PatientLabelSql(NoZeroFilter(txtfilter)));
  StartSingleLabels(vsp, 1);
  const PatientLabel label(rs);
  while (!rs.Eof()) {
    vsp.Text(label.Text());
    RaiseProgress(rs);
    rs.MoveNext();
    if (!rs.Eof()) vsp.NewPage();
  }
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptFolderLabelsSingleSheet(std::string txtfilter, iPosition Position) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptFolderLabelsSingleSheet in Object clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    // The same frame as the one-label-per-page run: the page set-up dialog
    // first, the patients' statement, margins of 200 twips.
    if (vsp.PrintDialog(2) == 0) return;
    db::Recordset rs = Open(PatientLabelSql(NoZeroFilter(txtfilter)));
    StartSingleLabels(vsp, Position == rptTwo ? 1 : 0);
    if (Position == rptTwo) vsp.FontSize(14);
    while (!rs.Eof()) {
      const std::string name = JoinedName(cf, rs, {"Title", "FirstName", "LastName"});
      // The bottom of the span a name can start in: one line and a spare
      // above the bottom margin.
      const Twips lowest = vsp.PageHeight() - vsp.MarginBottom() - vsp.TextHeight("X") * 2.0;
      switch (Position) {
        case rptTop:
          vsp.CurrentY(vsp.MarginTop());
          vsp.Text(name);
          break;
        case rptBottom:
          vsp.CurrentY(lowest);
          vsp.Text(name);
          break;
        case rptMiddle:
          vsp.CurrentY(vsp.MarginTop() + (lowest - vsp.MarginTop()) / 2.0);
          vsp.Text(name);
          break;
        case rptTwo:
          // A tab folded in two: the upper half turned over, so that both
          // halves read upright once the tab is folded round the folder.
          vsp.TextAngle(1800);
          vsp.TextBox(name, "3.5in", "0.4in", "3.5in", "0.5in", false);
          vsp.TextAngle(0);
          vsp.TextBox(name, "0in", "0.6in", "3.5in", "0.5in", false);
          break;
      }
      RaiseProgress(rs);
      rs.MoveNext();
      if (!rs.Eof()) vsp.NewPage();
    }
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::rptInsuranceCompanyLabels(int32_t ID) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open("Select * from InsuranceCompany where ID = " + std::to_string(ID));
  // An unknown company fails here, on the first field read, before any
  // document is started; the failure names the company asked for.
  if (rs.Eof())
    throw db::DatabaseError(db::kErrNoCurrentRecord,
                            "There is no insurance company " + std::to_string(ID) +
                                " (InsuranceCompany.ID); nothing was printed.");
  vsp.DocName("Insurance Company Labels - " + cf.returnStr(rs["CompanyName"].Value()));
  const std::string company = cf.returnStr(rs["CompanyName"].Value());
  const std::string address =
      AddressBlock(cf, rs, "Street", "Street2", "City", "Prov", "PostalCode", "\r\n");
  vsp.Orientation(0);
  vsp.MarginLeft("0.6cm");
  vsp.MarginRight("0.6cm");
  vsp.MarginTop("1.5cm");
  vsp.MarginBottom("1.3cm");
  vsp.StartDoc();
  vsp.Columns(3);
  vsp.ColumnSpacing(".5cm");
  vsp.CurrentX(vsp.MarginLeft());
  vsp.FontName("Tahoma");
  vsp.FontSize(10);
  for (int column = 0; column < 3; ++column) {
    if (column > 0) vsp.NewColumn();
    for (int row = 0; row < 10; ++row) {
      vsp.CurrentY(vsp.MarginTop() + Twips(1440.0 * row));
      vsp.FontBold(true);
      vsp.Text(company);
      vsp.FontBold(false);
      vsp.Text(address);
    }
  }
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptAppointmentCardLabel(int32_t AppointmentID) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  vsp.Orientation(1);
  if (vsp.PrintDialog(0) == 0) return;
  // The provider's title and names are read apart and joined here, so that
  // a provider without a title still has a name on the label.
  db::Recordset rs = Open(
      "SELECT PatientAppointments.ID, PatientAppointments.Date, PatientAppointments.Time, "
      "Patient.FirstName AS PatientFirstName, Patient.LastName AS PatientLastName, "
      "Employees.[Professional Title] AS ProviderTitle, Employees.FirstName AS ProviderFirstName, "
      "Employees.LastName AS ProviderLastName FROM (PatientAppointments INNER JOIN Patient ON "
      "PatientAppointments.PatientID = Patient.ID) LEFT JOIN Employees ON "
      "PatientAppointments.ProviderID = Employees.ID WHERE PatientAppointments.ID = " +
      std::to_string(AppointmentID));
  if (rs.Eof()) {
    Host().ShowFailure(kNoAppointment);
    vsp.Orientation(0);
    return;
  }
  vsp.MarginLeft(300);
  vsp.MarginRight(300);
  vsp.MarginTop(300);
  vsp.MarginBottom(300);
  vsp.DocName("AppointmentCardLabel");
  vsp.StartDoc();
  vsp.FontName("Tahoma");
  vsp.FontSize(10);
  vsp.FontBold(false);
  vsp.TextAlign(1);
  vsp.Text(JoinedName(cf, rs, {"PatientFirstName", "PatientLastName"}));
  vsp.Text("Has an Appointment with:");
  vsp.Text(JoinedName(cf, rs, {"ProviderTitle", "ProviderFirstName", "ProviderLastName"}));
  // `Time` holds minutes after midnight: 785 is 1:05 PM.
  vsp.Text(Format(rs["Date"].Value(), "dddd dd MMM yyyy") + " at " +
           Format(Variant(DateTime(cf.ReturnVal(rs["Time"].Value()) / 1440.0)), "h:mm AM/PM"));
  vsp.EndDoc();
  vsp.PrintDoc(false);
  vsp.PrinterDevice("");
  vsp.Orientation(0);
}

}  // namespace orv
