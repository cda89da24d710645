// Payroll: what the practice owes each listed employee for a period. Staff
// on the time clock get the hourly form; dentists on a share of what they
// collect get the collections form with overseen work, adjustments and lab
// deductions. Pay cheques are written from this report, so every sum stays
// in money and only the two products the paper shows are floats.
#include <cstdlib>

#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/color.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"

namespace orv {

namespace {

const char* const kWeekdayNames[] = {"Sunday",   "Monday", "Tuesday", "Wednesday",
                                     "Thursday", "Friday", "Saturday"};

// The grey of the section bars, under white bold text.
constexpr uint32_t kBarGrey = frame::RGB(100, 100, 100);

std::string Money(Currency c) { return Format(Variant(c), "Currency"); }

}  // namespace

std::string clsReports::ReturnAccountList(const std::string& Sql, int32_t ID) {
  // The accounts a payment went to are a courtesy column: a failure leaves
  // the cell with what was gathered and the pay figures stand.
  std::string list;
  try {
    db::Recordset rs = Open(Sql + std::to_string(ID), db::adOpenForwardOnly);
    while (!rs.Eof()) {
      if (!list.empty()) list += ",";
      list += Common().returnStr(rs["AccountID"].Value());
      rs.MoveNext();
    }
    rs.Close();
  } catch (const std::exception&) {
  }
  return list;
}

// The line that stands for an empty section, in the section's own columns.
// The note spans them all: in the first column alone ("<1in") it would
// break into a word a line.
void clsReports::PayrollNote(const std::string& format, const std::string& note, int columns) {
  frame::PrintSurface& vsp = VSP();
  vsp.StartTable();
  vsp.AddTable(format, note, "");
  vsp.TableCell(frame::tcColSpan, 0, 1) = columns;
  vsp.EndTable();
}

// The white-on-grey bar that opens each section of a pay form.
void clsReports::PayrollBar(const std::string& caption) {
  frame::PrintSurface& vsp = VSP();
  vsp.TableBorder(7);
  vsp.TextColor(frame::RGB(255, 255, 255));
  vsp.FontBold(true);
  vsp.AddTable("<7.5in", caption, "", kBarGrey);
  vsp.FontBold(false);
  vsp.TextColor(0);
}

void clsReports::rptPayroll(std::string strEmployees, DateTime dtStart, DateTime dtEnd,
                            std::string UserName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  const std::string period =
      "From: " + Format(Variant(dtStart), "MMM/d/yyyy") + " to " + Format(Variant(dtEnd), "MMM/d/yyyy");

  // ---- Opening ----
  const int32_t count = cf.GetNumberOfIDFromProviderName(strEmployees);
  vsp.Orientation(0);
  vsp.StartDoc();
  vsp.TextAlign(1);
  vsp.FontBold(true);
  vsp.FontSize(12);
  PrintReportHeading("Payroll Report", UserName, period);
  vsp.FontBold(false);
  vsp.Text("");

  db::Recordset employees = Open("SELECT * FROM Employees");
  db::Recordset split_counts =
      Open("SELECT COUNT(ID) as Count, EmployeeID FROM EmployeeCodeSplit group by EmployeeID");

  // Set once an hourly form is on paper: a collections form after it starts
  // a page of its own, so a dentist's pay never shares a page with staff.
  bool hourly_printed = false;

  // The name and period row that heads either form.
  auto name_row = [&]() {
    vsp.AddTable("<3.5in|>4in", "",
                 frame::EscapeCell(cf.returnStr(employees["FullName"].Value())) + "|" +
                     frame::EscapeCell(period) + ";");
  };

  for (int32_t index = 1; index <= count; ++index) {
    const int32_t ID = cf.GetIDFromProviderName(strEmployees, index);
    employees.Filter(Variant("ID = " + std::to_string(ID)));
    split_counts.Filter(Variant("EmployeeID = " + std::to_string(ID)));
    // An ID the filter names but the practice does not know has no name,
    // rate or share to pay from: the run stops and says which one.
    if (employees.Eof()) {
      // The list is read two characters after each "=", so "ID =12" names
      // ID 2: say so where the list has lost its blank.
      std::string hint;
      const size_t eq = strEmployees.find('=');
      if (eq != std::string::npos && eq + 1 < strEmployees.size() && strEmployees[eq + 1] != ' ')
        hint = "; write each ID as \"ID = 12\", with a blank after \"=\"";
      throw ReportError(kErrInvalidProcedureCall, "rptPayroll: no employee with ID " + std::to_string(ID) +
                                                      " (from \"" + strEmployees + "\")" + hint);
    }
    Variant commission_value = employees["Commission"].Value();
    const int32_t commission = cf.ReturnNumber(commission_value);

    // One test, read by both forms, so a person gets exactly one of them:
    // hourly only with no split row and no commission.
    const bool hourly = split_counts.Eof() && commission <= 0;

    // ---- Hourly form ----
    if (hourly) {
      vsp.TextAlign(1);
      vsp.TableBorder(0);
      vsp.PenWidth(".001in");
      vsp.PenStyle(2);
      vsp.DrawLine("0in", vsp.CurrentY(), "8.5in", vsp.CurrentY());
      vsp.PenStyle(0);
      vsp.PenWidth("0");
      vsp.Text("");
      name_row();
      PayrollBar("Times In/Out");

      db::Recordset punches = Open("Select * from Punch where UserID = " + std::to_string(ID) +
                                   " and [Date] >= '" + start + "' and [Date] <= '" + end +
                                   "' order by [Date] ASC");
      int64_t total_minutes = 0;
      std::string body;
      while (!punches.Eof()) {
        const DateTime day = cf.ReturnDate(punches["Date"].Value());
        const std::string weekday = kWeekdayNames[day.Weekday() - 1];
        // A missed punch-out falls back to the end of the person's day, and
        // where the person has none that day, to the closing hour of the
        // office the component runs for (its OfficeID).
        Variant out = punches["Timeout"].Value();
        if (out.IsNull()) {
          out = employees[weekday + "To"].Value();
          if (out.IsNull() || cf.returnStr(out).empty()) {
            out = db::ReturnValue(conn_, "OfficeInformation", "ID", Variant(OfficeID),
                                  "HourTo" + weekday);
          }
        }
        const int32_t out_minutes = cf.TimeToInt(out);
        const int32_t in_minutes = cf.TimeToInt(punches["TimeIn"].Value());
        // A shift over midnight (out not after in) pays nothing: the clock
        // keeps no date with the time, and the office settles such nights
        // by hand.
        if (out_minutes > in_minutes) {
          const int32_t minutes = out_minutes - in_minutes;
          body += Format(Variant(day), "MMM/d/yyyy") + "|" +
                  Format(punches["TimeIn"].Value(), "h:mm AMPM") + "|" +
                  frame::EscapeCell(Format(out, "h:mm AMPM")) + "|" + std::to_string(minutes / 60) +
                  " Hours " + std::to_string(minutes % 60) + " Minutes;";
          total_minutes += minutes;
        }
        RaiseProgress(punches);
        punches.MoveNext();
      }
      punches.Close();
      vsp.TableBorder(0);
      vsp.AddTable("<2in|<1in|<1in|<3.5in", "Date|Time In|Time Out|Total", body);
      vsp.Text("");
      vsp.PenWidth(".02in");
      vsp.DrawLine("1in", vsp.CurrentY(), "7.5in", vsp.CurrentY());
      vsp.PenWidth("0");
      vsp.Text("");

      vsp.TextAlign(5);
      vsp.FontBold(true);
      const Currency rate = cf.ReturnCur(employees["Payrate"].Value());
      vsp.Text("Total Time Worked: " + std::to_string(total_minutes / 60) + " Hours " +
               std::to_string(total_minutes % 60) + " Minutes");
      vsp.Text("@ " + Money(rate) + "/Hour");
      // The product is formatted as it stands: rounding the hours first
      // would move the cheque by cents.
      const double payable = rate.ToDouble() * (static_cast<double>(total_minutes) / 60.0);
      vsp.Text("Total Payable: " + Format(Variant(payable), "Currency"));
      vsp.FontSize(8);
      vsp.FontBold(false);
      hourly_printed = true;
    }

    // ---- Collections form ----
    if (!hourly) {
      if (hourly_printed) vsp.NewPage();
      vsp.TextAlign(1);
      vsp.FontSize(10);
      vsp.TableBorder(0);
      name_row();
      PayrollBar("Payments Made");

      Currency total_paid, total_overseen, total_adjusted, total_deductions;

      // Payments. The join can return a detail twice; the list of detail
      // IDs already printed keeps each one to a single row.
      EmployeeIDs().clear();
      db::Recordset payments = Open(
          "SELECT InvoicePaymentDetails.Amount, InvoicePaymentDetails.ID as DetailID, "
          "PaymentTypes.Name AS PaymentType, PaymentTypes.[Adjustment?], InvoicePayments.Notes, "
          "InvoicePayments.CheckDate, Invoices.[Invoice#], Invoices.PatientID, Invoices.InvoiceTotal "
          "FROM (InvoicePayments INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID) "
          "INNER JOIN (Invoices INNER JOIN InvoicePaymentDetails ON Invoices.ID = InvoicePaymentDetails.InvoiceID) "
          "ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID"
          " WHERE (InvoicePaymentDetails.Date >= '" + start + "' and InvoicePaymentDetails.Date <= '" + end +
          "') and Amount > 0 and ProviderID = " + std::to_string(ID) +
          " and ([Adjustment?] = 0 or [Adjustment?] is null) order by CheckDate");
      auto patient_value = [&](const Variant& patient, const char* field) {
        return cf.returnStr(db::ReturnValue(conn_, "Patient", "ID", patient, field));
      };
      std::string body;
      while (!payments.Eof()) {
        Variant detail_value = payments["DetailID"].Value();
        const int32_t detail = cf.ReturnNumber(detail_value);
        if (!IsPayrollEmployee(detail)) {
          const Variant patient = payments["PatientID"].Value();
          body += frame::EscapeCell(cf.returnStr(payments["Invoice#"].Value())) + "|" +
                  frame::EscapeCell(patient_value(patient, "FirstName") + " " +
                                    patient_value(patient, "LastName")) +
                  "|" + frame::EscapeCell(patient_value(patient, "DoctorID")) + "|" +
                  frame::EscapeCell(cf.returnStr(payments["PaymentType"].Value())) + "|" +
                  frame::EscapeCell(ReturnAccountList(
                      "select AccountID from invoicepayments inner join invoicepaymentDetails on "
                      "invoicepayments.ID = invoicepaymentDetails.InvoicePaymentID where "
                      "invoicepaymentDetails.ID = ",
                      detail)) +
                  "|" + frame::EscapeCell(cf.returnStr(payments["Notes"].Value())) + "|" +
                  cf.MyFormat(payments["Amount"].Value(), "Currency") + ";";
          // Slot 0 of the list is never searched: the first ID goes in at 1.
          if (EmployeeIDs().empty()) EmployeeIDs().push_back(0);
          EmployeeIDs().push_back(detail);
          total_paid += cf.ReturnCur(payments["Amount"].Value());
        }
        RaiseProgress(payments);
        payments.MoveNext();
      }
      payments.Close();
      vsp.AddTable("<0.5in|<1.7in|^0.6in|<1.3in|^0.6in|<2.2in|>0.6in",
                   "Invoice #|Patient|Doctor|Type|Acount|Payment Note|Paid($)", body);
      vsp.TextAlign(5);
      vsp.Text("Total Paid: " + cf.MyFormat(total_paid, "Currency"));

      // Work overseen, by the day the invoice was paid off. A dentist on
      // commission is paid here only for work another provider did; one
      // without commission for everything overseen.
      PayrollBar("Work Overseen");
      const std::string overseen_tail =
          commission == 0 ? " AND Invoices.cancelled IS NULL AND Invoices.InvoiceFinalTotal IS NOT NULL"
                          : " AND Invoices.cancelled IS NULL AND Invoices.OverSeerID <> Invoices.ProviderID "
                            "AND Invoices.InvoiceFinalTotal IS NOT NULL";
      db::Recordset overseen = Open(
          "SELECT Invoices.Invoice#, Invoices.ID as InvoiceID, Invoices.PatientID, Invoices.Date, "
          "Invoices.ProviderID, InvoiceDetails.Cost, InvoiceDetails.ID as DetailsID, InvoiceDetails.Code, "
          "InvoiceDetails.[Date] as CodeDate FROM InvoiceDetails INNER JOIN Invoices ON "
          "InvoiceDetails.InvoiceID = Invoices.ID WHERE Status <> 'In Progress' AND Invoices.FinalDate >= '" +
          start + "' and Invoices.FinalDate <= '" + end + "' and Invoices.OverSeerID = " + std::to_string(ID) +
          overseen_tail + " ORDER BY InvoiceDetails.[Date] ");
      db::Recordset splits =
          Open("Select * from EmployeeCodeSplit WHERE EmployeeID = " + std::to_string(ID));
      body.clear();
      while (!overseen.Eof()) {
        // Codes are text ("01202" < "20000"): the split ranges compare as
        // text, the way the office typed them.
        const std::string code = cf.returnStr(overseen["Code"].Value());
        splits.Filter(Variant("StartCode <= '" + vb::Replace(code, "'", "''") + "' AND EndCode >= '" +
                              vb::Replace(code, "'", "''") + "'"));
        if (!splits.Eof()) {
          const std::string share = cf.returnStr(splits["Amount"].Value());
          const Currency cost = cf.ReturnCur(overseen["Cost"].Value());
          // "$25" pays 25.00 a line whatever the line cost; "40%" pays that
          // share of the line with the running total kept to the cent (half
          // to even); a share with neither marker is a typing slip and pays
          // nothing rather than a guess.
          Currency line;
          if (share.find('$') != std::string::npos) {
            line = cf.ReturnCur(Variant(share));
            total_overseen += line;
          } else if (share.find('%') != std::string::npos) {
            line = Currency::FromDouble(cost.ToDouble() * cf.ReturnVal(Variant(share)) / 100.0);
            total_overseen = Round(total_overseen + line, 2);
          }
          const Variant patient = overseen["PatientID"].Value();
          Variant line_id = overseen["DetailsID"].Value();
          body += frame::EscapeCell(cf.returnStr(overseen["Invoice#"].Value())) + "|" +
                  frame::EscapeCell(patient_value(patient, "FirstName") + " " +
                                    patient_value(patient, "LastName")) +
                  "|" + frame::EscapeCell(patient_value(patient, "DoctorID")) + "|" +
                  Format(overseen["CodeDate"].Value(), "mmm/dd/yyyy") + "|" +
                  frame::EscapeCell(ReturnAccountList(
                      "Select distinct accountID from invoicepaymentallocations inner join invoicedetails on "
                      "invoicepaymentallocations.InvoiceDetailsID = invoicedetails.ID inner join "
                      "invoicepayments on invoicepayments.ID = invoicepaymentallocations.InvoicePaymentID "
                      "where cancelled is null and Value > 0 and invoicedetails.ID =",
                      cf.ReturnNumber(line_id))) +
                  "|" + Money(cost) + "|" + frame::EscapeCell(share) + "|" + Money(line) + ";";
        }
        RaiseProgress(overseen);
        overseen.MoveNext();
      }
      overseen.Close();
      splits.Close();
      vsp.TextAlign(1);
      if (!body.empty()) {
        vsp.AddTable("<0.8in|<2in|^0.6in|<1in|^0.6in|>1in|>0.5in|>1in",
                     "Invoice #|Patient|Doctor|Date|Account|Total($)|@|Split Total($)", body);
      } else {
        PayrollNote("<0.8in|<2in|<0.6in|<1in|<0.6in|>1in|>0.5in|>1in", "No Overseen Work On File", 8);
      }
      vsp.TextAlign(5);
      vsp.Text("Total Overseen: " + cf.MyFormat(total_overseen, "Currency"));

      // Adjustments that reduce what was paid: printed as the money taken
      // back, counted by size whatever sign the office entered them with.
      PayrollBar("Adjustments");
      db::Recordset adjustments = Open(
          "SELECT InvoicePaymentDetails.Amount, PaymentTypes.Name AS PaymentType, PaymentTypes.[Adjustment?], "
          "PaymentTypes.[ToTotalPaid?], InvoicePayments.Notes, InvoicePayments.CheckDate, Invoices.[Invoice#], "
          "InvoicePaymentDetails.InvoiceID, InvoicePayments.ID, Invoices.ProviderID,"
          " (SELECT FirstName + ' ' + LastName FROM Patient Where Invoices.PatientID = Patient.ID) AS PatientName "
          "FROM InvoicePayments INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID "
          "INNER JOIN (Invoices INNER JOIN InvoicePaymentDetails ON Invoices.ID = InvoicePaymentDetails.InvoiceID) "
          "ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID WHERE InvoicePaymentDetails.[Date] >= '" +
          start + "' and InvoicePaymentDetails.[Date] <= '" + end + "' AND ProviderID = " + std::to_string(ID) +
          " AND [Adjustment?] <> 0 AND [ToTotalPaid?] <> 0 ORDER BY CheckDate");
      body.clear();
      while (!adjustments.Eof()) {
        const Currency amount = cf.ReturnCur(adjustments["Amount"].Value());
        body += frame::EscapeCell(cf.returnStr(adjustments["Invoice#"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(adjustments["PaymentType"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(adjustments["Notes"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(adjustments["PatientName"].Value())) + "|" +
                cf.MyFormat(-amount, "Currency") + ";";
        total_adjusted += amount < Currency() ? -amount : amount;
        RaiseProgress(adjustments);
        adjustments.MoveNext();
      }
      adjustments.Close();
      vsp.TextAlign(1);
      if (!body.empty()) {
        vsp.AddTable("<1in|<2.0in|<2.0in|<1.5in|>1in", "Invoice #|Type|Adjustment Note|Patient|Paid($)", body);
      } else {
        PayrollNote("<1in|<2.0in|<2.0in|<1.5in|>1in", "No Adjustments", 5);
      }
      vsp.TextAlign(5);
      vsp.Text("Total Adjusted: " + cf.MyFormat(total_adjusted, "Currency"));

      // Lab fees: the "99" lines of the dentist's completed invoices are
      // costs the practice paid out and come off the dentist's share.
      PayrollBar("Lab Fees/Additional Costs");
      db::Recordset labs = Open(
          "SELECT InvoiceDetails.Cost, InvoiceDetails.Code, Invoices.Date, Invoices.Invoice# , Patient.FullName "
          "FROM InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID INNER JOIN Patient "
          "ON Invoices.PatientID = Patient.ID WHERE [Complete?] <> 0 AND Invoices.Date >= '" +
          start + "' and Invoices.Date <= '" + end +
          "' and Cost > 0 and not Code is null and Invoices.Cancelled IS NULL AND Invoices.ProviderID = " +
          std::to_string(ID));
      body.clear();
      while (!labs.Eof()) {
        const std::string code = cf.returnStr(labs["Code"].Value());
        if (code.substr(0, 2) == "99") {
          const Currency cost = cf.ReturnCur(labs["Cost"].Value());
          body += frame::EscapeCell(cf.returnStr(labs["Invoice#"].Value())) + "|" + frame::EscapeCell(code) +
                  "|" + frame::EscapeCell(cf.returnStr(labs["FullName"].Value())) + "|" +
                  Format(labs["Date"].Value(), "mmm/dd/yyyy") + "|" + cf.MyFormat(-cost, "Currency") + ";";
          total_deductions += cost;
        }
        RaiseProgress(labs);
        labs.MoveNext();
      }
      labs.Close();
      vsp.TextAlign(1);
      if (!body.empty()) {
        vsp.AddTable("<1in|>1in|<2in|<2in|>1.5in", "Invoice #|Code|Patient|Date|Deduction($)", body);
      } else {
        PayrollNote("<1in|>1in|<2in|<2in|>1.5in", "No Labs to Deduct", 5);
      }
      vsp.TextAlign(5);
      vsp.Text("Total deductions due to labs and expenses: " + cf.MyFormat(total_deductions, "Currency"));

      // ---- The payment foot ----
      vsp.FontSize(12);
      vsp.TextAlign(5);
      vsp.Text("Total Paid: " + cf.MyFormat(total_paid, "Currency"));
      vsp.TextColor(255);
      vsp.Text("Less Total Adjustments: " + cf.MyFormat(total_adjusted, "Currency"));
      vsp.Text("Less Total Deductions: " + cf.MyFormat(total_deductions, "Currency"));
      vsp.TextColor(0);
      const Currency sub_total = total_paid - total_adjusted - total_deductions;
      vsp.Text("Payment Sub Total: " + cf.MyFormat(sub_total, "Currency"));
      vsp.FontSize(10);
      // The share is shown as the float product; the cheque below takes it
      // into money (four decimals) before the overseen work is added.
      const double grand_total = sub_total.ToDouble() * commission / 100.0;
      vsp.Text("Payment Grand Total @ " + std::to_string(commission) +
               "%: " + Format(Variant(grand_total), "Currency"));
      vsp.Text("+ Total from Overseen Work: " + Money(total_overseen));
      vsp.FontSize(14);
      vsp.Text("Payable to Dentist: " + Money(Currency::FromDouble(grand_total) + total_overseen));
      vsp.FontBold(false);
      vsp.PenWidth("0");
    }
  }

  employees.Close();
  split_counts.Close();
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
}

}  // namespace orv
