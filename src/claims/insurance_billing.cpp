// Insurance billing: per insurance company, what the practice billed by
// electronic claims and what the insurers' explanations of benefits paid
// back, for the office's follow-up of slow payers.
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

// Claims (type 0) and predeterminations (type 1) with their explanations of
// benefits (TrsCode 21), under the company of the patient's primary and of
// the secondary plan. The send meets its patient by the send's own ID, as
// the practice's billing list has always joined them.
const char* kBillingShape =
    "SHAPE {SELECT ID, CompanyName, Phone, PhoneExt, Street, Street2, City, PostalCode, Prov, Notes "
    "FROM InsuranceCompany}  AS Insurance APPEND (( SHAPE {SELECT PatientEDISends.ID, "
    "PatientEDISends.Type, PatientEDISends.InvoiceID, PatientEDISends.PatientID, Patient.ID AS "
    "PatID, Patient.InsuranceID, Invoices.ID AS InvID, Invoices.InvoiceTotal FROM PatientEDISends "
    "INNER JOIN Patient ON PatientEDISends.ID = Patient.ID INNER JOIN Invoices ON "
    "PatientEDISends.InvoiceID = Invoices.ID WHERE PatientEDISends.Type = 1 or "
    "PatientEDISends.Type = 0}  AS EDISendPrimary APPEND ({SELECT ID, EDISendID, "
    "TotalBenefitAmounts, TrsCode FROM PatientEDIResponses WHERE (TrsCode = 21)}  AS "
    "EDIResponsePrimary RELATE 'ID' TO 'EDISendID') AS EDIResponsePrimary) AS EDISendPrimary "
    "RELATE 'ID' TO 'InsuranceID') AS EDISendPrimary, (( SHAPE {SELECT PatientEDISends.ID, "
    "PatientEDISends.PatientID, PatientEDISends.InvoiceID, Patient.ID AS PatID, "
    "Patient.SecondaryInsuranceID, PatientEDISends.Type, Invoices.InvoiceTotal, Invoices.ID AS "
    "InvID FROM PatientEDISends INNER JOIN Patient ON PatientEDISends.ID = Patient.ID INNER JOIN "
    "Invoices ON PatientEDISends.InvoiceID = Invoices.ID WHERE Type = 1 OR Type = 0}  AS "
    "EDISendSecondary APPEND ({SELECT ID, EDISendID, TotalBenefitAmounts, TrsCode FROM "
    "PatientEDIResponses WHERE (TrsCode = 21)}  AS EDIResponseSecondary RELATE 'ID' TO "
    "'EDISendID') AS EDIResponseSecondary) AS EDISendSecondary RELATE 'ID' TO "
    "'SecondaryInsuranceID') AS EDISendSecondary";

// Adds a company's sends and their responses of one plan into the sums.
void AddSends(clsCommonFunctions& cf, db::Recordset sends, const char* responses_name,
              Currency& billed, Currency& received) {
  while (!sends.Eof()) {
    billed += cf.ReturnCur(sends["InvoiceTotal"].Value());
    db::Recordset responses = sends[responses_name].Chapter();
    while (!responses.Eof()) {
      received += cf.ReturnCur(responses["TotalBenefitAmounts"].Value());
      responses.MoveNext();
    }
    sends.MoveNext();
  }
}

}  // namespace

void clsReports::rptInsuranceBilling(std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(kBillingShape);

  vsp.StartDoc();
  vsp.DocName("Insurance Company Billing");
  PrintReportHeading("Insurance Company Billing", UserName, "");
  vsp.TextAlign(4);
  vsp.Text(" ");

  std::string body;
  while (!rs.Eof()) {
    // Both plans' sends go into the one Billed and the one Received.
    Currency billed, received;
    AddSends(cf, rs["EDISendPrimary"].Chapter(), "EDIResponsePrimary", billed, received);
    AddSends(cf, rs["EDISendSecondary"].Chapter(), "EDIResponseSecondary", billed, received);
    if (billed > Currency()) {
      std::string address = cf.returnStr(rs["Street"].Value());
      std::string street2 = cf.returnStr(rs["Street2"].Value());
      if (!street2.empty()) address += ", " + street2;
      address += "\r\n" + cf.returnStr(rs["City"].Value()) + ", " + cf.returnStr(rs["Prov"].Value()) +
                 " " + cf.returnStr(rs["PostalCode"].Value());
      std::string phone = cf.returnStr(rs["Phone"].Value());
      std::string ext = cf.returnStr(rs["PhoneExt"].Value());
      if (!ext.empty()) phone += " [" + ext + "]";
      body += frame::EscapeCell(cf.returnStr(rs["CompanyName"].Value())) + "|" +
              frame::EscapeCell(address) + "|" + frame::EscapeCell(phone) + "|" +
              frame::EscapeCell(cf.returnStr(rs["Notes"].Value())) + "|" +
              Format(Variant(billed), "Currency") + "|" + Format(Variant(received), "Currency") + ";";
    }
    rs.MoveNext();
  }
  vsp.AddTable("<1.75in|1.5in|1in|1in|.8in|.8in", "Company Name|Address|Phone|Notes|Billed|Received",
               body, kHeaderColor);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv
