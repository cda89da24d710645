// Small sections of the closing runs: the invoices not yet complete, the
// adjustments of a period (invoice reversals, adjustments by whether they
// count toward paid, money moved between providers), the EDI transactions
// and the patients who signed up.
#include <string>
#include <string_view>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/flags.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/host/settings.h"

namespace orv {

namespace {

// cf.ReturnFormatedDate(value, fmt) added to `out`, a date of 1900 or
// later through `dates` (the same format, read once) for a list's many
// rows; a missing or older date, or no date, by ReturnFormatedDate itself.
void AppendFormatedDate(clsCommonFunctions& cf, const DateFormatter& dates, std::string_view fmt,
                        const Variant& value, std::string& out) {
  if (value.IsDate() && value.AsDate().Year() >= 1900)
    dates.Append(value, out);
  else
    out += cf.ReturnFormatedDate(value, fmt);
}

}  // namespace

void clsReports::rptIncompleteInvoices(DateTime StartDate, DateTime Enddate,
                                       std::string OfficeName, std::string UserName,
                                       std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptIncompleteInvoices in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    vsp.Orientation(0);
    vsp.MarginLeft(".5in");
    vsp.MarginRight(".5in");
    vsp.DocName("Incomplete Invoices");
    vsp.StartDoc();
    // The dates do not limit the list (every incomplete invoice shows);
    // the heading says as of when it was printed.
    (void)StartDate;
    (void)Enddate;
    PrintReportHeading("Incomplete Invoices", UserName, "", OfficeName);
    srptIncompleteInvoices(txtfilter);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptIncompleteInvoices(std::string txtfilter) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  txtfilter = NoZeroFilter(txtfilter);
  const std::string filter = vb::Replace(txtfilter, "ProviderID", "Invoices.ProviderID");
  // Neither date limits the list: an invoice left incomplete from any day
  // is work the front desk still has to finish.
  const std::string where = filter.empty() ? " WHERE [Complete?] = 0"
                                           : " WHERE [Complete?] = 0 AND (" + filter + ")";
  db::Recordset rs = Open(
      "Select Invoices.[Invoice#], Patient.FullName, Invoices.[Date], Invoices.InvoiceTotal, "
      "ISNULL((SELECT FullName From Employees WHERE Employees.ID = Patient.DoctorID), '') AS "
      "DoctorName, ISNULL((SELECT FullName From Employees WHERE Employees.ID = "
      "Invoices.ProviderID), '') AS ProviderName, ISNULL((SELECT FullName From Employees WHERE "
      "Employees.ID = Invoices.OverseerID), '') AS OverseerName FROM Invoices INNER JOIN Patient "
      "ON Patient.ID = Invoices.PatientID" +
      where + " ORDER BY Invoices.ProviderID, Invoices.[Date]");
  std::string body;
  for (; !rs.Eof(); rs.MoveNext()) {
    body += frame::EscapeCell(cf.returnStr(rs["Invoice#"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["DoctorName"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["ProviderName"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["OverseerName"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(rs["FullName"].Value())) + "|" +
            cf.ReturnFormatedDate(rs["Date"].Value(), "mmm/dd/yyyy") + "|" +
            cf.MyFormat(cf.ReturnCur(rs["InvoiceTotal"].Value()), "Currency") + ";";
  }
  vsp.FontSize(8);
  vsp.AddTable("^!.6in|<!1.3in|<!1.3in|<!1.3in|>!1.5in|>!0.9in|>!0.7in",
               "Invoice #|Owner Doctor|Provider|Overseer|Patient Name|Date|Total($)", body,
               kHeaderColor);

  db::Recordset lines = Open(
      "SELECT InvoiceDetails.Cost, InvoiceDetails.Status FROM Invoices INNER JOIN InvoiceDetails "
      "ON Invoices.ID = InvoiceDetails.InvoiceID" +
      where);
  Currency complete, in_progress;
  for (; !lines.Eof(); lines.MoveNext()) {
    const Currency cost = cf.ReturnCur(lines["Cost"].Value());
    if (cf.returnStr(lines["Status"].Value(), true) == "Complete") {
      complete += cost;
    } else {
      in_progress += cost;
    }
  }
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text("");
  vsp.Text("Total Complete Status Treatment($): " + cf.MyFormat(complete, "Currency"));
  vsp.Text("Total In-Progress Status Treatment($): " + cf.MyFormat(in_progress, "Currency"));
  vsp.Text("Grand Total for all Incomplete Invoices($): " +
           cf.MyFormat(complete + in_progress, "Currency"));
  vsp.FontBold(false);
  vsp.FontSize(8);
  vsp.Text("");
  vsp.Text(
      "Please note that Complete Status treatment counts as production on the day the treatment "
      "is marked complete, not when the invoice is completed.");
  vsp.Text("In-Progress treatment does not count as production until the status is changed to "
           "complete.");
  vsp.Text("In-Progress treatment can be altered or deleted until it is complete.");
  vsp.FontSize(10);
}

void clsReports::srptAdjustmentReport(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                      int16_t Byoption) {
  if (!closing::ValidView(Byoption)) {
    throw ReportError(kErrInvalidProcedureCall,
                      closing::BadViewMessage("srptAdjustmentReport", Byoption));
  }
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  ProviderFilter = NoZeroFilter(ProviderFilter);
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  // The filter names its people by "ID" (the closing runs hand it over
  // so); each query puts the field of the view in its place.
  const char* field = Byoption == 1   ? "Invoices.OverseerID"
                      : Byoption == 2 ? "Invoices.DoctorID"
                                      : "InvoiceDetails.ProviderID";
  const auto and_filter = [&](const char* by) {
    return ProviderFilter.empty()
               ? std::string()
               : " AND (" + vb::Replace(vb::Replace(ProviderFilter, "ProviderID", "ID"), "ID", by) +
                     ")";
  };
  const auto total_row = [&](long count, Currency sum) {
    vsp.FontBold(true);
    vsp.AddTable("<3.75in|>3.75in", "",
                 "Total Adjustments: " + std::to_string(count) + "|Adjustment Type Total ($): " +
                     cf.MyFormat(sum, "Currency"),
                 0);
    vsp.FontBold(false);
  };
  const auto heading = [&](const std::string& text) {
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.AddTable("<2.5in", "", frame::EscapeCell(text), 0);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.FontSize(8);
  };

  // 1. Invoices cancelled in the period, by their lines that charged.
  heading("Invoice Reversals");
  {
    db::Recordset rs = Open(
        "select cancellationdate, [Invoice#],(select lastName from employees where id = "
        "invoicedetails.EmployeeID) as Name ,invoices.notes,invoicedetails.cost as Amount   from "
        "invoices join invoicedetails on invoices.ID = invoicedetails.invoiceID where "
        "invoices.cancelled = 1 and cancellationdate >= '" +
        start + "' and cancellationdate <= '" + end + "' and cost > 0 " + and_filter(field) +
        " order by [Invoice#]");
    std::string body;
    long count = 0;
    Currency sum;
    for (; !rs.Eof(); rs.MoveNext()) {
      const Currency amount = cf.ReturnCur(rs["Amount"].Value());
      body += cf.ReturnFormatedDate(rs["cancellationdate"].Value(), "mmm/dd/yyyy") + "|" +
              frame::EscapeCell(cf.returnStr(rs["Invoice#"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(rs["Name"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(rs["notes"].Value())) + "|" +
              cf.MyFormat(amount, "Currency") + ";";
      ++count;
      sum += amount;
    }
    vsp.AddTable("<1in|<1in|<2in|<2.6in|>.9in", "Date|Trans#|Team Member|Notes|Amount($)", body,
                 kHeaderColor);
    total_row(count, sum);
  }

  // 2 and 3. Adjustments by type, first those that do not count toward
  // the total paid, then those that do. An adjustment with nothing
  // allocated shows whole (by who took it in); one allocated, even in
  // part, shows as its allocations only (by the view's person). The
  // outer join of the allocations would also give every unallocated
  // payment a second, empty row; those are left out, since the first half
  // already lists them whole.
  db::Recordset types = Open(
      "SHAPE {SELECT ID, Name, [ToTotalPaid?] as ToTotalPaid FROM PaymentTypes WHERE "
      "([Adjustment?] <>0) ORDER BY [ToTotalPaid?], Name}  AS rptAdjustmentSlip APPEND ({SELECT "
      "InvoicePayments.ID, InvoicePayments.CheckDate, InvoicePayments.EmployeeID, "
      "InvoicePayments.PatientID, InvoicePayments.PaymentName, InvoicePayments.Notes , "
      "InvoicePayments.PaymentTypeID, InvoicePayments.[Value] as Total From InvoicePayments WHERE "
      "CheckDate >='" +
      start + "' AND CheckDate <= '" + end + "'" + and_filter("InvoicePayments.InitialProviderID") +
      " AND (TotalAllocated = 0) Union All SELECT InvoicePayments.ID, InvoicePayments.CheckDate, "
      "InvoicePayments.EmployeeID, InvoicePayments.PatientID, InvoicePayments.PaymentName, "
      "InvoicePayments.Notes , InvoicePayments.PaymentTypeID,  InvoicePaymentAllocations.Amount as "
      "Total FROM InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID "
      "INNER JOIN InvoicePaymentAllocations ON InvoiceDetails.ID = "
      "InvoicePaymentAllocations.InvoiceDetailsID RIGHT OUTER JOIN InvoicePayments ON "
      "InvoicePaymentAllocations.InvoicePaymentID = InvoicePayments.ID WHERE CheckDate >= '" +
      start + "' AND CheckDate <= '" + end +
      "' AND InvoicePaymentAllocations.InvoicePaymentID IS NOT NULL" + and_filter(field) +
      " ORDER BY ID }  AS rptAdjustmentSlipDetails RELATE 'ID' TO 'PaymentTypeID') AS "
      "rptAdjustmentSlipDetails");
  db::Recordset staff = Open(
      "SELECT ID, FirstName, LastName, [Professional Title] as Title, FullName FROM Employees "
      "order by LastName");
  // A practice without adjustment types has no rows to go back to.
  for (int to_total_paid = 0; to_total_paid <= 1 && types.RecordCount() > 0; ++to_total_paid) {
    for (types.MoveFirst(); !types.Eof(); types.MoveNext()) {
      if (FlagSet(types["ToTotalPaid"].Value()) != (to_total_paid == 1)) continue;
      db::Recordset rows = types["rptAdjustmentSlipDetails"].Chapter();
      if (rows.Eof()) continue;
      heading(cf.returnStr(types["Name"].Value()));
      std::string body;
      long count = 0;
      Currency sum;
      for (; !rows.Eof(); rows.MoveNext()) {
        std::string member;
        staff.Filter(Variant("ID = " + CStr(Variant(cf.ReturnVal(rows["EmployeeID"].Value())))));
        if (!staff.Eof()) member = cf.returnStr(staff["LastName"].Value());
        const Currency amount = cf.ReturnCur(rows["Total"].Value());
        body += cf.ReturnFormatedDate(rows["CheckDate"].Value(), "mmm/dd/yyyy") + "|" +
                frame::EscapeCell(cf.returnStr(rows["ID"].Value())) + "|" +
                frame::EscapeCell(member) + "|" +
                frame::EscapeCell(cf.returnStr(rows["PaymentName"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(rows["Notes"].Value())) + "|" +
                cf.MyFormat(amount, "Currency") + ";";
        ++count;
        sum += amount;
      }
      vsp.AddTable("<1in|<1in|<1in|<1.6in|<2in|>.9in",
                   "Date|Trans#|Team Member|Name on Payment|Notes|Amount($)", body, kHeaderColor);
      total_row(count, sum);
    }
  }

  // The money moved between providers, per provider of the filter.
  const int32_t people = cf.GetNumberOfIDFromProviderName(ProviderFilter);
  for (int32_t n = 1; n <= people; ++n) {
    srptAdjustmentReallocation(cf.GetIDFromProviderName(ProviderFilter, n), dtStart, dtEnd,
                               Byoption);
  }
  vsp.FontSize(10);
}

void clsReports::srptAdjustmentReallocation(int32_t ProviderID, DateTime dtStart, DateTime dtEnd,
                                            int16_t Byoption) {
  // The adjustment report shows the same list as the detailed analysis;
  // its sums belong to neither report's totals here.
  Currency adjustments, payments;
  srptPaymentReallocation(ProviderID, dtStart, dtEnd, Byoption, adjustments, payments);
}

void clsReports::rptEDITransactions(DateTime DateFrom, DateTime DateTo, std::string UserName) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptEDITransactions in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    vsp.Orientation(0);
    vsp.MarginLeft(".5in");
    vsp.MarginRight(".5in");
    vsp.DocName("EDI Transaction List Report");
    vsp.StartDoc();
    PrintReportHeading("EDI Transaction List Report", UserName,
                       "Starting: " + Format(Variant(DateFrom), "MMM/d/yyyy") + "    Ending: " +
                           Format(Variant(DateTo), "MMM/d/yyyy"));
    srptEDITransactions(DateFrom, DateTo, UserName);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptEDITransactions(DateTime DateFrom, DateTime DateTo, std::string UserName) {
  (void)UserName;
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // DatePosted carries the time of sending: the last day counts whole.
  db::Recordset rs = OpenKeeping(
      "SELECT PatientEDISends.*, PatientEDIResponses.TrsCode, PatientEDIResponses.Status, "
      "Patient.FirstName, Patient.LastName FROM PatientEDISends INNER JOIN Patient ON "
      "PatientEDISends.PatientID = Patient.ID INNER JOIN PatientEDIResponses ON "
      "PatientEDISends.ID = PatientEDIResponses.EDISendID where DatePosted >= '" +
          DateFrom.ToIsoDate() + "' and DatePosted < '" + DateTime(DateTo.DatePart().serial() + 1).ToIsoDate() +
          "' ORDER BY PatientEDISends.SequenceNumber",
      {"Type", "DatePosted", "FirstName", "LastName", "Sent?", "CarrierNumber", "SequenceNumber", "TrsCode",
       "Status"});
  const db::Field type_field = rs["Type"], posted = rs["DatePosted"], first_name = rs["FirstName"],
                  last_name = rs["LastName"], sent = rs["Sent?"], carrier = rs["CarrierNumber"],
                  sequence = rs["SequenceNumber"], trs_code = rs["TrsCode"], status_field = rs["Status"];
  vsp.TextAlign(7);
  vsp.FontSize(12);
  vsp.FontBold(true);
  vsp.Text("EDI Transactions (By Range)");
  vsp.TextAlign(0);
  vsp.FontSize(8);
  vsp.FontBold(false);
  std::string body, scratch;
  long total = 0, eobs = 0, acknowledgements = 0, rejections = 0;
  auto number = [&](const db::Field& f) { return cf.ReturnVal(f.Value()); };
  auto text = [&](const db::Field& f) { frame::AppendEscapedCell(body, f.Text(scratch)); };
  const DateFormatter posted_day("mmm/dd/yyyy");
  for (; !rs.Eof(); rs.MoveNext()) {
    const long type = static_cast<long>(number(type_field));
    const char* type_name = type == 0   ? "Claim"
                            : type == 1 ? "Predetermination"
                            : type == 2 ? "Eligibility Request"
                            : type == 3 ? "Reversal Request"
                                        : "Unknown Transaction";
    AppendFormatedDate(cf, posted_day, "mmm/dd/yyyy", posted.Value(), body);
    body += '|';
    text(first_name);
    body += ' ';
    text(last_name);
    body += '|';
    body += type_name;
    body += cf.ReturnBool(sent.Value()) ? "|Yes|" : "||";
    text(carrier);
    body += '|';
    text(sequence);
    body += '|';
    // TrsCode 21 is an explanation of benefits; anything else is an
    // acknowledgement. Status 2 is a rejection, 0 held, else accepted.
    if (number(trs_code) == 21) {
      body += "EOB|";
      ++eobs;
    } else {
      body += "Acknowledgement|";
      ++acknowledgements;
    }
    const long status = static_cast<long>(number(status_field));
    if (status == 0) {
      body += "Held;";
    } else if (status == 2) {
      body += "Rejected;";
      ++rejections;
    } else {
      body += "Accepted;";
    }
    ++total;
  }
  vsp.AddTable("<.9in|<1.5in|<1.0in|^.5in|^.7in|^.8in|^1.3in|^.8in",
               "Date Posted|Patient|Type|Sent?|Carrier #|Sequence #|Response Type|Status", body,
               kHeaderColor);
  const auto share = [&](long n) {
    return Format(Variant(total == 0 ? 0.0 : double(n) / double(total)), "Percent");
  };
  // The four lines of counts read as one block under the list: they move
  // to the next page whole, with the list's last row, rather than part.
  vsp.KeepWithNext();
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.StartTable();
  vsp.AddTable("<2.5in|>1in|>1in", "",
               "EOB |" + std::to_string(eobs) + "|" + share(eobs) + ";Acknowledgment|" +
                   std::to_string(acknowledgements) + "|" + share(acknowledgements) +
                   ";Rejection|" + std::to_string(rejections) + "|" + share(rejections) +
                   ";Total Transactions |" + std::to_string(total) + "|" + share(total),
               0);
  vsp.TableCell(frame::tcKeepTogether) = true;
  vsp.EndTable();
  vsp.FontBold(false);
}

void clsReports::srptNewPatientReport(DateTime fromdate, DateTime todate) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The referring dentist is named from the referring dentists' list.
  db::Recordset rs = Open(
      "SELECT (ISNULL(Patient.Title, '') + ' ' + Patient.FirstName + ' ' + Patient.LastName) AS "
      "PatientName, ISNULL((SELECT (ISNULL(Employees.[Professional Title], '') + ' ' + "
      "Employees.FirstName + ' ' + Employees.LastName) AS DocName FROM Employees WHERE ID = "
      "Patient.DoctorID), 'None') AS DoctorName, SignupDate, ReferalReason, ReferredByAddID, "
      "RefferedBy, ISNULL((SELECT ISNULL(ReferringDentists.Title, '') + ' ' + "
      "ISNULL(ReferringDentists.Name, '') + ' ' + ISNULL(ReferringDentists.LastName, '') FROM "
      "ReferringDentists WHERE ReferringDentists.ID = Patient.ReferringDentistID), '') AS "
      "ReferringDoctor FROM Patient WHERE SignupDate >= '" +
      fromdate.ToIsoDate() + "' AND SignupDate <= '" + todate.ToIsoDate() +
      "' ORDER BY DoctorID, SignupDate, Patient.ID");
  // The fields found once; each row's cells written into the body in
  // place, the texts read where the recordset holds them.
  const db::Field doctor = rs["DoctorName"], patient = rs["PatientName"], signup = rs["SignupDate"],
                  referral_type = rs["ReferredByAddID"], referred_by = rs["RefferedBy"],
                  referring = rs["ReferringDoctor"], reason = rs["ReferalReason"];
  const DateFormatter signup_day("mmm/dd/yyyy");
  std::string body, scratch;
  auto text = [&](const db::Field& f) { frame::AppendEscapedCell(body, f.Text(scratch)); };
  auto trimmed = [&](const db::Field& f) { frame::AppendEscapedCell(body, vb::TrimView(f.Text(scratch))); };
  long count = 0;
  for (; !rs.Eof(); rs.MoveNext()) {
    trimmed(doctor);
    body += '|';
    trimmed(patient);
    body += '|';
    AppendFormatedDate(cf, signup_day, "mmm/dd/yyyy", signup.Value(), body);
    body += '|';
    text(referral_type);
    body += '|';
    text(referred_by);
    body += '|';
    trimmed(referring);
    body += '|';
    text(reason);
    body += ';';
    ++count;
  }
  const int saved_border = vsp.TableBorder();
  vsp.TableBorder(static_cast<int>(vb::Val(host::AppSettings().Get("Settings", "TableBorder", "0"))));
  vsp.FontSize(8);
  vsp.AddTable("1in|1in|1in|1in|1in|1in|1in",
               "Preferred Dentist|Patient|Date|Referral Type| Referral Source|Referring "
               "Dentist|Notes",
               body, kHeaderColor);
  vsp.TableBorder(saved_border);
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text("New Patients: " + std::to_string(count));
  vsp.FontBold(false);
}

}  // namespace orv
