// Balance and credit lists: the patients with a balance, aged by invoice
// date with the patient's and the insurer's obligations, and the payments
// with money not yet applied.
#include <array>
#include <functional>
#include <unordered_map>
#include <vector>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/errors.h"
#include "common/flags.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "receivables/age_class.h"
#include "receivables/receivable_figures.h"

namespace orv {

namespace {

// The trap of the unapplied payments: the error's number and text in one
// message titled with the routine, and the report returns normally.
void TrapNumbered(host::HostServices& host, const char* title, const std::function<void()>& body) {
  try {
    body();
  } catch (const ReportError& e) {
    host.ShowFailure(std::to_string(e.number()) + ": " + e.description(), host::vbOKOnly, title);
  } catch (const std::exception& e) {
    host.ShowFailure(std::string("0: ") + e.what(), host::vbOKOnly, title);
  }
}

}  // namespace

void clsReports::rptPatientsWithABalance(std::string UserName, DateTime dtEndDate,
                                         std::string txtfilter, int16_t SortType) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  vsp.MarginLeft(".6in");
  vsp.MarginRight(".6in");
  vsp.MarginTop(".6in");
  vsp.MarginBottom(".6in");
  vsp.Orientation(0);
  vsp.DocName("Patients With A Balance");
  vsp.Action(3);
  srptPatientsWithaBalance(UserName, dtEndDate, txtfilter, SortType, true);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Visible(true);
}

namespace receivables {

BalanceListFigures PatientsWithaBalanceFigures(clsReports& r, DateTime dtEndDate,
                                               std::string txtfilter, int16_t SortType,
                                               bool NoCredits) {
  const db::Snapshot snapshot(r.conn(), db::Snapshot::OnFailure::RunWithout);
  clsCommonFunctions& cf = r.Common();
  txtfilter = NoZeroFilter(txtfilter);
  const std::string end = dtEndDate.ToIsoDate();

  // The host's filter is a condition over "ProviderID". The invoices are
  // chosen by the person of the view; the payments, which sit on no
  // invoice, by the provider who took them in, for the provider and the
  // overseer views alike, and by the patient's own doctor for the
  // preferred-doctor view. The payment filter is made from the host's
  // text, not from the invoice filter, in which "ProviderID" is already
  // gone under views 1 and 2.
  std::string invoice_filter = txtfilter;
  std::string payment_filter = vb::Replace(txtfilter, "ProviderID", "InitialProviderID");
  if (SortType == 1) {
    invoice_filter = vb::Replace(txtfilter, "ProviderID", "OverseerID");
  } else if (SortType == 2) {
    invoice_filter = vb::Replace(txtfilter, "ProviderID", "Invoices.DoctorID");
    payment_filter = vb::Replace(
        txtfilter, "ProviderID",
        "(SELECT DoctorID FROM Patient WHERE Patient.ID = InvoicePayments.PatientID)");
  }
  auto and_filter = [](const std::string& f) {
    return f.empty() ? std::string() : " AND (" + f + ")";
  };

  const std::string open_invoices =
      " FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE "
      "(InvoiceFinalTotal IS NULL OR FinalDate > '" +
      end + "') AND [Date] <= '" + end + "'" + and_filter(invoice_filter);
  db::Recordset patients = r.Open(
      "SHAPE {SELECT FullName, ID FROM Patient ORDER BY Fullname} AS rptPatientsWithABalance "
      "APPEND "
      "({SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, Invoices.[Complete?], "
      "Invoices.InvoiceFinalTotal, ISNULL(Invoices.InterestInvoiceID, 0) as InterestInvoiceID, "
      "Invoices.IsAssignment, Invoices.PatientTotal, Patient.Interest, Invoices.PatientID" +
      open_invoices +
      "} AS rptPatientsWithABalanceInvoices RELATE 'ID' TO 'PatientID') AS "
      "rptPatientsWithABalanceInvoices");

  // What was paid on each open invoice, as AccountModel::ReturnInvoicePaid
  // gives it (by the end date: in all, by the patient, by the insurer; after
  // it: the post-dated share), read for every open invoice in one grouped
  // read. Asked invoice by invoice, four statements per invoice made most
  // of the list's time at 20,000 patients.
  struct Paid {
    Currency all, patient, insurer, post_dated;
  };
  std::unordered_map<int32_t, Paid> paid_on;
  {
    const std::string paid_end =
        (dtEndDate.Year() < 1900 ? Clock::Today() : dtEndDate).ToIsoDate();
    db::Recordset rs = r.Open(
        "SELECT InvoicePaymentDetails.InvoiceID, SUM(CASE WHEN InvoicePaymentDetails.Date <= '" +
            paid_end +
            "' THEN InvoicePaymentDetails.Amount END) AS PaidAll, SUM(CASE WHEN "
            "InvoicePaymentDetails.Date <= '" +
            paid_end +
            "' AND (IsInsurance = 0 OR isInsurance IS NULL) THEN InvoicePaymentDetails.Amount "
            "END) AS PaidPatient, SUM(CASE WHEN InvoicePaymentDetails.Date <= '" +
            paid_end +
            "' AND IsInsurance = 1 THEN InvoicePaymentDetails.Amount END) AS PaidInsurer, "
            "SUM(CASE WHEN InvoicePaymentDetails.Date > '" +
            paid_end +
            "' AND InvoicePayments.Date < InvoicePayments.CheckDate THEN "
            "InvoicePaymentDetails.Amount END) AS PostDated FROM InvoicePaymentDetails INNER "
            "JOIN InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID "
            "WHERE InvoicePaymentDetails.InvoiceID IN (SELECT Invoices.ID" +
            open_invoices + ") GROUP BY InvoicePaymentDetails.InvoiceID",
        db::adOpenForwardOnly);
    while (!rs.Eof()) {
      Paid& p = paid_on[static_cast<int32_t>(cf.ReturnVal(rs["InvoiceID"].Value()))];
      p.all = Round(cf.ReturnCur(rs["PaidAll"].Value()), 2);
      p.patient = Round(cf.ReturnCur(rs["PaidPatient"].Value()), 2);
      p.insurer = Round(cf.ReturnCur(rs["PaidInsurer"].Value()), 2);
      p.post_dated = Round(cf.ReturnCur(rs["PostDated"].Value()), 2);
      rs.MoveNext();
    }
  }
  db::Recordset payments = r.Open(
      "SHAPE {SELECT ID, PatientID, [Value] AS Total, IsInsurance FROM InvoicePayments WHERE "
      "CheckDate <= '" +
          end + "'" + and_filter(payment_filter) +
          "} AS rptPatientWithACredit APPEND ({SELECT InvoicePaymentID, Amount FROM "
          "InvoicePaymentDetails WHERE Date <= '" +
          end +
          "'} AS rptPatientWithACreditDetails RELATE 'ID' TO 'InvoicePaymentID') AS "
          "rptPatientWithACreditDetails",
      db::adOpenStatic, db::adLockOptimistic);

  BalanceListFigures figures;
  while (!patients.Eof()) {
    BalanceListRow row;
    std::array<Currency, 7>& f = row.figures;
    db::Recordset invoices = patients["rptPatientsWithABalanceInvoices"].Chapter();
    while (!invoices.Eof()) {
      const int32_t id = static_cast<int32_t>(cf.ReturnVal(invoices["ID"].Value()));
      const auto found = paid_on.find(id);
      const Paid on = found == paid_on.end() ? Paid{} : found->second;
      const Currency paid = on.all;
      const Currency paid_patient = on.patient;
      const Currency paid_insurer = on.insurer;
      const Currency amount = cf.ReturnCur(invoices["InvoiceTotal"].Value());
      if (cf.ReturnVal(invoices["InterestInvoiceID"].Value()) > 0) f[1] += amount;
      // Post dates: what was paid on the invoice after the end date on
      // cheques entered ahead of their date (the post-dated share).
      // Informational, as the notes say: it is in no class.
      f[2] += on.post_dated;

      // An assigned invoice splits into the patient's total and the rest
      // for the insurer. A NULL PatientTotal reads as 0: until the
      // patient's share is set the insurer row carries the whole, so that
      // the two obligation rows still add up to the class.
      const bool is_assigned = FlagSet(invoices["IsAssignment"].Value());
      const Currency patient_amount =
          is_assigned ? cf.ReturnCur(invoices["PatientTotal"].Value()) : amount;
      const Currency insurer_amount = amount - patient_amount;

      if (amount > paid) {
        const int c = AgeClass(invoices["Date"].Value(), dtEndDate);
        f[3 + c] += amount - paid;
        if (is_assigned) {
          row.assigned = true;
          row.patient_part[c] += patient_amount - paid_patient;
          row.insurer_part[c] += insurer_amount - paid_insurer;
        }
      }
      invoices.MoveNext();
    }

    // Money on file: each payment's total, the patient's and the
    // insurers' alike, less its shares on invoices by the end date.
    payments.Filter(Variant("PatientID = " + CStr(patients["ID"].Value())));
    while (!payments.Eof()) {
      Currency left = cf.ReturnCur(payments["Total"].Value());
      db::Recordset details = payments["rptPatientWithACreditDetails"].Chapter();
      while (!details.Eof()) {
        left -= cf.ReturnCur(details["Amount"].Value());
        details.MoveNext();
      }
      row.net_credit += left;
      payments.MoveNext();
    }

    f[0] = f[3] + f[4] + f[5] + f[6];
    if (!(f[0].IsZero() && (row.net_credit.IsZero() || NoCredits))) {
      row.id = static_cast<int32_t>(cf.ReturnVal(patients["ID"].Value()));
      row.name = cf.returnStr(patients["FullName"].Value());
      for (size_t i = 0; i < f.size(); ++i) figures.office[i] += f[i];
      figures.office_credit += row.net_credit;
      figures.rows.push_back(std::move(row));
    }
    r.RaiseProgress(patients);
    r.Host().DoEvents();
    patients.MoveNext();
  }
  return figures;
}

}  // namespace receivables

void clsReports::srptPatientsWithaBalance(std::string UserName, DateTime dtEndDate,
                                          std::string txtfilter, int16_t SortType, bool NoCredits) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An error has occurred in sub srptPatientsWithaBalance in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    txtfilter = NoZeroFilter(txtfilter);
    const receivables::BalanceListFigures figures =
        receivables::PatientsWithaBalanceFigures(*this, dtEndDate, txtfilter, SortType, NoCredits);

    PrintReportHeading("Patients With A Balance", UserName, "");
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.TextAlign(7);
    vsp.Text("Ending " + Format(Variant(dtEndDate), "MMM/dd/yyyy"));
    // The people the list covers, by the view. Without a filter it covers
    // everyone and no names are listed.
    if (!txtfilter.empty()) {
      db::Recordset people =
          Open("Select LastName from Employees WHERE " + vb::Replace(txtfilter, "ProviderID", "ID"),
               db::adOpenForwardOnly);
      std::string names;
      while (!people.Eof()) {
        if (!names.empty()) names += ", ";
        names += cf.returnStr(people["LastName"].Value());
        people.MoveNext();
      }
      people.Close();
      const char* label = SortType == 1   ? "Overseers: "
                          : SortType == 2 ? "Preferred Doctors: "
                                          : "Providers: ";
      vsp.TextAlign(1);
      vsp.Text(label + names);
    }
    vsp.FontBold(false);
    vsp.TextAlign(0);
    vsp.FontSize(8);

    using Row = std::array<Currency, 7>;
    auto money = [](Currency c) { return Format(Variant(c), "Currency"); };
    // Without credits a row is name|balance|...; with them the balance cell
    // is preceded by the debit (what is owed) and the credit (money on
    // file), and the balance is the debit less the credit.
    auto cells = [&](const Row& r, const std::string& credit_cell, Currency credit) {
      std::string s;
      if (NoCredits) {
        s = money(r[0]);
      } else {
        s = money(r[0]) + "|" + credit_cell + "|" + money(r[0] - credit);
      }
      for (size_t i = 1; i < r.size(); ++i) s += "|" + money(r[i]);
      return s;
    };
    // The two obligation rows under a patient leave the name column empty,
    // so the patient's name stands alone over them, and put their label in
    // the first figure column (Balance, or Debit with credits): what each
    // party owes is the sum of its four classes. The patient's row carries
    // the patient's interest and post-dated money, which are the patient's
    // alone; the insurer's row leaves those two cells empty.
    auto obligation = [&](const char* label, const std::string& interest_and_post,
                          const std::array<Currency, 4>& classes) {
      std::string s = std::string("|") + label + (NoCredits ? "" : "||");
      s += "|" + interest_and_post + "|";
      s += money(classes[0]) + "|" + money(classes[1]) + "|" + money(classes[2]) + "|" +
           money(classes[3]);
      return s + ";";
    };

    std::string body;
    // Body rows kept on the page of the row after them.
    std::vector<int> kept_rows;
    int rows = 0;
    for (const receivables::BalanceListRow& row : figures.rows) {
      body += frame::EscapeCell(row.name) + "|" +
              cells(row.figures, money(row.net_credit), row.net_credit) + ";";
      Currency patient_sum, insurer_sum;
      for (int c = 0; c < 4; ++c) {
        patient_sum += row.patient_part[c];
        insurer_sum += row.insurer_part[c];
      }
      ++rows;
      if (row.assigned && (!patient_sum.IsZero() || !insurer_sum.IsZero())) {
        body += obligation("Patient Obligation",
                           money(row.figures[1]) + "|" + money(row.figures[2]), row.patient_part);
        body += obligation("Insurance Obligation", "|", row.insurer_part);
        // The patient's row and its obligation rows stay on one page.
        kept_rows.push_back(rows);
        kept_rows.push_back(rows + 1);
        rows += 2;
      }
    }
    body += "Office Totals: |" + cells(figures.office, money(figures.office_credit),
                                       figures.office_credit) + ";";

    vsp.CurrentY(vsp.CurrentY() + Twips(200));
    vsp.StartTable();
    if (NoCredits) {
      vsp.AddTable("<!~+1.5in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in",
                   "Patient|Balance|Interest|Post Dates|0-30 Days|> 30 Days|> 60 Days|> 90 Days",
                   body, kHeaderColor);
    } else {
      vsp.AddTable(
          "<!~+1.5in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~.6in|>+!~."
          "6in",
          "Patient|Debit|Credit|Balance|Interest|Post Dates|0-30 Days|> 30 Days|> 60 Days|> 90 "
          "Days",
          body, kHeaderColor);
    }
    for (const int r : kept_rows) vsp.TableCell(frame::tcKeepWithNext, r, 0) = true;
    vsp.EndTable();

    // The notes are one closing block: it never opens a page without the
    // Office Totals row, and its heading never ends one.
    vsp.KeepWithNext();
    vsp.Text("");
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.Text("Notes: ");
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.Text("Balance = 0 Days + 30 Days + 60 Days + 90 Days");
    vsp.KeepWithNext();
    vsp.Text("Post Dates and Interest Columns are for informational purposes only.");
    if (NoCredits) {
      vsp.KeepWithNext();
      vsp.Text("This report DOES NOT include credits.");
    }
  });
}

void clsReports::rptUnAppliedPayments(DateTime dtEndDate, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  TrapNumbered(Host(), " Error in Class clsReport.rptUnAppliedPayments", [&] {
    frame::PrintSurface& vsp = VSP();
    vsp.CancelDialog(false);
    vsp.Orientation(0);
    vsp.DocName("Unapplied Payments Report");
    vsp.StartDoc();
    PrintReportHeading(vsp.DocName(), UserName,
                       "Ending: " + Format(Variant(dtEndDate), "MMM/d/yyyy"));
    srptUnAppliedPayments(dtEndDate, UserName);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

namespace receivables {

UnappliedFigures UnappliedPaymentFigures(clsReports& r, DateTime dtEndDate,
                                         std::string strFilter) {
  const db::Snapshot snapshot(r.conn(), db::Snapshot::OnFailure::RunWithout);
  clsCommonFunctions& cf = r.Common();
  strFilter = NoZeroFilter(strFilter);
  const std::string end = dtEndDate.ToIsoDate();
  // The payee's and the provider's names come by outer joins on their keys,
  // not by a subquery per payment: the server ran the subqueries once per
  // row of 170,000 payments (0.54 s at 20,000 patients, against 0.2 s
  // joined). The joined tables name only their key and the name, so a
  // filter over the payments' columns (InsuranceID, say, which Patient has
  // too) stays unambiguous. The payments come in the order of their
  // numbers, as a plain scan gives them, so that payments of equal sort
  // keys print in one order on both engines.
  std::string sql =
      "SHAPE {SELECT InvoicePayments.*, Payees.PatientName, Providers.InitialProviderName FROM "
      "InvoicePayments INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID "
      "LEFT OUTER JOIN (SELECT ID AS PayeeKey, LastName + ', ' + FirstName AS PatientName FROM Patient) "
      "AS Payees ON Payees.PayeeKey = InvoicePayments.PatientID "
      "LEFT OUTER JOIN (SELECT ID AS ProviderKey, LastName AS InitialProviderName FROM Employees) "
      "AS Providers ON Providers.ProviderKey = InvoicePayments.InitialProviderID "
      "WHERE CheckDate <= '" +
      end + "' AND (CancellationDate IS NULL OR CancellationDate > '" + end;
  if (strFilter.empty()) {
    sql += "') AND ([Adjustment?] = 0 AND OfficePayment = 0) ORDER BY InvoicePayments.ID}  as rptPayment APPEND ";
  } else {
    sql += "') AND ([Adjustment?] = 0 AND OfficePayment = 0) AND (" + strFilter +
           ") ORDER BY InvoicePayments.ID}  as rptPayment APPEND ";
  }
  sql += "({SELECT * FROM InvoicePaymentDetails WHERE [Date] <= '" + end +
         "'}  AS rptPaymentDetails RELATE 'ID' TO 'InvoicePaymentID') AS rptPaymentDetails";
  // The statement gives every column of the payment (22 with the two
  // names) and every column of its lines; the list reads eight and one.
  db::Recordset rs;
  rs.KeepFields({"ID", "PatientID", "PatientName", "InitialProviderName", "CheckDate", "Value", "RefundDate",
                 "RefundAmount", "rptPaymentDetails.Amount"});
  rs.Open(sql, r.conn(), db::adOpenStatic, db::adLockReadOnly, db::adCmdText);
  rs.Sort("InitialProviderName, CheckDate, PatientName");

  // The fields are found by name once; each handle reads the current row,
  // and the chapter follows the current payment.
  const db::Field value = rs["Value"], refund_date_field = rs["RefundDate"], refund_amount = rs["RefundAmount"],
                  patient_id = rs["PatientID"], patient_name = rs["PatientName"], id = rs["ID"],
                  provider = rs["InitialProviderName"], check_date = rs["CheckDate"];
  db::Recordset details = rs["rptPaymentDetails"].Chapter();
  const db::Field amount = details["Amount"];
  UnappliedFigures figures;
  while (!rs.Eof()) {
    // Money left on the payment: its value less its shares on invoices by
    // the end date, less a refund paid back by then. Whole days, as every
    // other date test of the list: a refund at 3 p.m. on the end date is
    // paid back by it.
    Currency credit = cf.ReturnCur(value.Value());
    while (!details.Eof()) {
      credit -= cf.ReturnCur(amount.Value());
      details.MoveNext();
    }
    const Variant refund_date = refund_date_field.Value();
    if (!refund_date.IsNull() && CDate(refund_date).DatePart() <= dtEndDate.DatePart()) {
      credit -= cf.ReturnCur(refund_amount.Value());
    }
    // Only money left over prints. A payment applied beyond its value
    // (a negative credit) is an error of allocation, not money on file,
    // and stays out of the list and its total.
    if (credit > Currency()) {
      UnappliedRow row;
      row.patient_id = static_cast<int32_t>(cf.ReturnVal(patient_id.Value()));
      row.patient_name = cf.returnStr(patient_name.Value());
      row.id = cf.returnStr(id.Value());
      row.provider = cf.returnStr(provider.Value());
      row.check_date = check_date.Value();
      row.value = cf.ReturnCur(value.Value());
      row.credit = credit;
      figures.total += credit;
      figures.rows.push_back(std::move(row));
    }
    r.RaiseProgress(rs);
    r.Host().DoEvents();
    rs.MoveNext();
  }
  return figures;
}

}  // namespace receivables

void clsReports::srptUnAppliedPayments(DateTime dtEndDate, std::string UserName,
                                       std::string strFilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  TrapNumbered(Host(), " Error in Class clsReport.srptUnAppliedPayments", [&] {
    frame::PrintSurface& vsp = VSP();
    const receivables::UnappliedFigures figures =
        receivables::UnappliedPaymentFigures(*this, dtEndDate, strFilter);

    vsp.TextAlign(1);
    vsp.FontBold(false);
    vsp.FontSize(10);
    std::string body;
    for (const receivables::UnappliedRow& row : figures.rows) {
      body += frame::EscapeCell(row.patient_name) + "|" + frame::EscapeCell(row.id) + "|" +
              frame::EscapeCell(row.provider) + "|" + Format(row.check_date, "MMM/d/yyyy") + "|" +
              Format(Variant(row.value), "Currency") + "|" + Format(Variant(row.credit), "Currency") +
              ";";
    }
    vsp.AddTable("<!2.5in|^.6in|<1.1in|^1.1in|>1.1in|>1.1in",
                 "Payee|Trans #|Provider|Date of Payment|Payment Total($)|Credit($)", body,
                 kHeaderColor);
    // The total never opens a page alone: the last payment comes along.
    vsp.KeepWithNext();
    vsp.Text("");
    vsp.Text("Total Unapplied Payments: " + Format(Variant(figures.total), "Currency"));
  });
}

}  // namespace orv
