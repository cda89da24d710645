// No. 10 envelopes to patients, insurance companies and referring dentists:
// the office's return address in the corner and the destination from 3.5 in
// across and 2 in down, one envelope a page.
#include "common/common_functions.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "lists/mailing_text.h"
#include "platform/host/host_services.h"

namespace orv {

namespace {

using lists::AddressBlock;
using lists::JoinedName;

// What a driver may say about the envelope: the envelope reports that check
// turn the page when it is reported narrow side first. The surface reports
// it long edge first (9.5 x 4.125 in), so the referring dentists' envelope,
// which has never checked, fits as well.
void EnvelopePage(frame::PrintSurface& vsp, const std::string& title, bool check_width) {
  vsp.DocName(title);
  vsp.PaperSize(frame::PrintSurface::kPaperEnvelope10);
  vsp.Orientation(0);
  if (check_width && vsp.PageWidth() < Twips(7200)) vsp.Orientation(1);
  vsp.MarginBottom(".5in");
  vsp.MarginTop(".2in");
  vsp.MarginLeft(".2in");
  vsp.MarginRight(".2in");
}

// The office's return address: name, street, second street when there is
// one, "City, Province" and the postal code on the same line. An office not
// on file gives an empty corner rather than a failed run.
std::string ReturnAddressText(clsReports& r) {
  clsCommonFunctions& cf = r.Common();
  db::Recordset rs = r.Open("Select * from OfficeInformation where ID = " + std::to_string(r.OfficeID));
  if (rs.Eof()) return "";
  return cf.returnStr(rs["Name"].Value()) + "\r\n" +
         AddressBlock(cf, rs, "Street", "Street2", "City", "Province", "PostalCode", "  ");
}

// One envelope on the page the pen is on: the return address when given,
// then the destination block.
void DrawEnvelope(frame::PrintSurface& vsp, const std::string& return_address,
                  const std::string& destination) {
  if (!return_address.empty()) {
    vsp.TextAlign(0);
    vsp.Text(return_address);
  }
  vsp.IndentLeft("3.5in");
  vsp.CurrentY("2in");
  vsp.CurrentX(vsp.IndentLeft() + vsp.MarginLeft());
  vsp.TextAlign(7);
  vsp.Text(destination);
  vsp.IndentLeft(0);
}

}  // namespace

void clsReports::rptPatientEnvelope(std::string txtfilter, bool ReturnAddress) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The message of this trap runs straight into the description.
  try {
    EnvelopePage(vsp, "Patient Envelope", true);
    if (vsp.PrintDialog(0) == 0) return;
    // Without a filter there is no where clause at all: "where " alone is
    // never sent.
    txtfilter = NoZeroFilter(txtfilter);
    db::Recordset rs = Open(txtfilter.empty() ? "Select * from Patient"
                                              : "Select * from Patient WHERE " + txtfilter);
    const std::string from = ReturnAddress ? ReturnAddressText(*this) : "";
    vsp.FontSize(10);
    vsp.StartDoc();
    while (!rs.Eof()) {
      const std::string address = cf.returnStr(rs["Address"].Value());
      // One patient without an address stops the whole run: nothing is
      // printed, not even the envelopes already drawn.
      if (address.empty()) {
        vsp.KillDoc();
        Host().ShowFailure("There is no address entered for this patient.");
        return;
      }
      DrawEnvelope(vsp, from, JoinedName(cf, rs, {"Title", "FirstName", "LastName"}) + "\r\n" + address);
      RaiseProgress(rs);
      rs.MoveNext();
      if (!rs.Eof()) vsp.NewPage();
    }
    vsp.EndDoc();
    Form().Show();
  } catch (const ReportError& e) {
    Host().ShowFailure("An error has occurred in rptPatientEnvelope: " + e.description());
  } catch (const std::exception& e) {
    Host().ShowFailure(std::string("An error has occurred in rptPatientEnvelope: ") + e.what());
  }
}

void clsReports::rptInsuranceCompanyEnvelopes(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  EnvelopePage(vsp, "Insurance Company Envelope", true);
  if (vsp.PrintDialog(0) == 0) return;
  txtfilter = NoZeroFilter(txtfilter);
  db::Recordset rs = Open(txtfilter.empty() ? "Select * from InsuranceCompany ORDER BY CompanyName, ID"
                                            : "Select * from InsuranceCompany WHERE " + txtfilter +
                                                  " ORDER BY CompanyName, ID");
  const std::string from = ReturnAddressText(*this);
  vsp.FontSize(10);
  vsp.StartDoc();
  while (!rs.Eof()) {
    DrawEnvelope(vsp, from,
                 cf.returnStr(rs["CompanyName"].Value()) + "\r\n" +
                     AddressBlock(cf, rs, "Street", "Street2", "City", "Prov", "PostalCode", "  "));
    RaiseProgress(rs);
    rs.MoveNext();
    if (!rs.Eof()) vsp.NewPage();
  }
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptReferringDentistMailingEnvelopes(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  EnvelopePage(vsp, "Referring Dentist Envelope", false);
  txtfilter = NoZeroFilter(txtfilter);
  db::Recordset rs = Open(txtfilter.empty() ? "Select * from ReferringDentists ORDER BY LastName, Name, ID"
                                            : "Select * from ReferringDentists WHERE " + txtfilter +
                                                  " ORDER BY LastName, Name, ID");
  const std::string from = ReturnAddressText(*this);
  vsp.FontSize(10);
  vsp.StartDoc();
  while (!rs.Eof()) {
    DrawEnvelope(vsp, from,
                 JoinedName(cf, rs, {"Title", "LastName"}) + "\r\n" +
                     AddressBlock(cf, rs, "Street", "Street2", "City", "Prov", "Postal", "  "));
    RaiseProgress(rs);
    rs.MoveNext();
    if (!rs.Eof()) vsp.NewPage();
  }
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

}  // namespace orv
