// Month-end figures of provider receivables: the detailed list of
// invoices and applied money of a range, and the day-by-day analysis of
// fees, invoice adjustments and applied money with the running A/R.
#include <map>
#include <string>
#include <vector>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {
namespace {

// " AND (" filter ")", or nothing: an empty filter (or "0") means every
// provider, so the term is left out rather than sent as "()".
std::string AndTerm(const std::string& filter) {
  return filter.empty() || filter == "0" ? std::string() : " AND (" + filter + ")";
}

}  // namespace

void clsReports::rptMonthEndAnalysis(DateTime fromdate, DateTime todate, std::string txtInvFilter,
                                     std::string txtPayFilter, std::string ProviderNames) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptMonthEndAnalysis in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    AccountModel accounts(conn(), InterestRate);
    // The invoice queries take txtInvFilter (over the invoice's
    // provider), the queries of applied money txtPayFilter (over the
    // invoice the money was applied to).
    const std::string inv = AndTerm(txtInvFilter);
    const std::string pay = AndTerm(txtPayFilter);
    const std::string start = fromdate.ToIsoDate();
    const std::string end = todate.ToIsoDate();
    const auto sum = [&](const std::string& sql) {
      db::Recordset rs = Open(sql, db::adOpenForwardOnly);
      return rs.Eof() ? Currency() : cf.ReturnCur(rs["theTotal"].Value());
    };

    vsp.Orientation(0);
    vsp.MarginLeft(".6in");
    vsp.MarginRight(".6in");
    vsp.MarginTop(".6in");
    vsp.MarginBottom(".6in");
    vsp.DocName("Month End Analysis Summary Report");
    vsp.StartDoc();
    PrintReportHeading("Month End Analysis Summary", "",
                       ProviderNames.empty() ? "Practice Totals" : "For : " + ProviderNames);
    vsp.TextAlign(7);
    vsp.FontBold(true);
    vsp.Text("Range Selected: " + Format(Variant(fromdate), "mmm/dd/yyyy") + " to " +
             Format(Variant(todate), "mmm/dd/yyyy"));
    vsp.FontBold(false);

    // The opening A/R: complete invoices before the start less the money
    // applied before it.
    Currency opening =
        sum("SELECT SUM([InvoiceTotal]) as theTotal FROM Invoices WHERE [Complete?] <> 0 AND "
            "[Date] < '" + start + "'" + inv) -
        sum("SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails "
            "INNER JOIN InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = "
            "InvoicePayments.ID INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = "
            "Invoices.ID INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = "
            "PaymentTypes.ID WHERE (InvoicePaymentDetails.Date < '" + start + "')" + pay);
    // The third read corrects that total for the invoices still open at
    // the start: each complete one dated before the start counts for what
    // it stood for on the eve of the start (its final total, its
    // interest) instead of its stored total. Invoices of the start day
    // itself are the first day's row, so no day is counted twice.
    {
      db::Recordset open_invoices = Open(
          "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, Invoices.[Complete?], "
          "Invoices.InvoiceFinalTotal, Patient.Interest FROM Invoices INNER JOIN Patient ON "
          "Invoices.PatientID = Patient.ID WHERE Invoices.[Date] <= '" + start +
          "' AND (FinalDate > '" + start + "' OR FinalDate IS NULL)" + inv +
          " ORDER BY Invoices.[Date]");
      const Variant eve(DateTime(fromdate.DatePart().serial() - 1));
      for (; !open_invoices.Eof(); open_invoices.MoveNext()) {
        if (cf.ReturnVal(open_invoices["Complete?"].Value()) == 0) continue;
        if (CDate(open_invoices["Date"].Value()).DatePart() >= fromdate.DatePart()) continue;
        const int32_t id = static_cast<int32_t>(cf.ReturnVal(open_invoices["ID"].Value()));
        opening += accounts.ReturnInvoiceAmount(id, eve) -
                   cf.ReturnCur(open_invoices["InvoiceTotal"].Value());
      }
    }

    // ---- One row per day ----
    std::string rows;
    Currency totals[6];
    Currency ar = opening;
    const double days = todate.DatePart().serial() - fromdate.DatePart().serial() + 1;
    long n = 0;
    for (DateTime day = fromdate.DatePart(); day <= todate.DatePart();
         day = DateTime(day.serial() + 1), ++n) {
      const std::string d = day.ToIsoDate();
      const Currency lab = sum(
          "SELECT SUM(InvoiceDetails.Cost) AS theTotal FROM InvoiceDetails INNER JOIN Invoices ON "
          "InvoiceDetails.InvoiceID = Invoices.ID WHERE (Invoices.[Complete?] <> 0) AND "
          "(InvoiceDetails.Code like '99%')" + inv + " AND Invoices.[Date] = '" + d + "'");
      const Currency fee = sum("SELECT SUM([InvoiceTotal]) as theTotal FROM Invoices WHERE "
                               "[Complete?] <> 0" + inv + " AND [Date] = '" + d + "'");
      const std::string applied =
          "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePayments INNER JOIN "
          "InvoicePaymentDetails ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID "
          "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN "
          "Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
          "(InvoicePaymentDetails.[Date] = '" + d + "') and ";
      const Currency inv_adj =
          sum(applied + "ISNULL([Adjustment?], 0) <> 0 AND ISNULL([ToTotalPaid?], 0) = 0" + pay);
      const Currency payments = sum(applied + "ISNULL([Adjustment?], 0) = 0" + pay);
      const Currency pay_adj =
          sum(applied + "ISNULL([Adjustment?], 0) <> 0 AND ISNULL([ToTotalPaid?], 0) <> 0" + pay);
      const Currency dental = fee - lab;
      ar = ar + fee - inv_adj - payments - pay_adj;
      const Currency cells[6] = {dental, lab, inv_adj, fee, payments, pay_adj};
      bool idle = true;
      for (int c = 0; c < 6; ++c) {
        totals[c] += cells[c];
        if (cells[c] != Currency()) idle = false;
      }
      rows += Format(Variant(day), "mmm/dd/yyyy");
      // A day without activity prints dashes; its A/R carries on to the
      // next day unchanged.
      if (idle) {
        rows += "|-|-|-|-|-|-|-;";
      } else {
        for (const Currency& c : cells) rows += "|" + cf.MyFormat(c, "Currency");
        rows += "|" + cf.MyFormat(ar, "Currency") + ";";
      }
      RaiseProgress(static_cast<uint8_t>(100.0 * (n + 1) / days));
      Host().DoEvents();
    }
    std::string total_row = "Total";
    for (const Currency& c : totals) total_row += "|" + cf.MyFormat(c, "Currency");
    total_row += "|" + cf.MyFormat(ar, "Currency");
    vsp.FontSize(8);
    vsp.Text("");
    vsp.Text("Opening A/R: " + cf.MyFormat(opening, "Currency"));
    vsp.AddTable(".85in|>.9in|>.9in|>.9in|>.9in|>.9in|>.9in|>1in",
                 "Date|Dental Fee|Lab Fee|Inv. Adj.|Total Fee|Applied Pmts|Pmt Adj.|New A/R",
                 rows + total_row, kHeaderColor);

    // ---- The adjustment types of the older screens ----
    // Only types stored with -1 are read, as that table always has; the
    // newer types stored with 1 show in the day rows above.
    db::Recordset types = Open("Select * from PaymentTypes where [Adjustment?] = -1 order by Name");
    std::string body;
    for (; !types.Eof(); types.MoveNext()) {
      const Currency amount = sum(
          "SELECT SUM(InvoicePaymentDetails.Amount) as theTotal FROM InvoicePayments INNER JOIN "
          "InvoicePaymentDetails ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID "
          "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID WHERE "
          "CheckDate >= '" + start + "' AND CheckDate <= '" + end + "' AND PaymentTypeID = " +
          cf.returnStr(types["ID"].Value()));
      body += frame::EscapeCell(cf.returnStr(types["Name"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(types["Description"].Value())) + "|" +
              cf.MyFormat(amount, "Currency") + ";";
    }
    vsp.Text("");
    vsp.AddTable("1.2in|2.55in|>1.2in",
                 "Adjustment Type|Adjustment Description|Adjustment Amount", body, kHeaderColor);

    // Interest collected: the money applied in the period to interest
    // invoices (those that point at the invoice they charge interest on).
    const Currency interest =
        sum("SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePayments INNER JOIN "
            "InvoicePaymentDetails ON InvoicePayments.ID = InvoicePaymentDetails.InvoicePaymentID "
            "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN "
            "Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
            "InvoicePaymentDetails.[Date] >= '" + start + "' AND InvoicePaymentDetails.[Date] <= '" +
            end + "' AND ISNULL([Adjustment?], 0) = 0 AND Invoices.InterestInvoiceID IS NOT NULL" +
            pay);
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.Text("");
    vsp.Text("Interest Collected on Behalf of the Practice: " + cf.MyFormat(interest, "Currency"));
    vsp.Text("");
    vsp.Text("Notes: ");
    vsp.FontBold(false);
    vsp.FontSize(8);
    vsp.Text("This report only includes APPLIED payments. Credits will be applied on the day that "
             "they were applied.");
    vsp.Text("This report does not include incomplete invoices. However, it does include payments "
             "on incomplete invoices.");
    vsp.Text("Payment Adjustment are indicated by the check box on the adjustment type under "
             "Adjustment Types in Office Categories.");
    vsp.Text("Note that A/R on this report refers to Provider A/R, not Practice A/R. It does not "
             "include interest.");
    vsp.Text("A/R Change = Invoices Total - Invoice Adjustments - (Applied Payments + Applied "
             "Payment Adjustments)");
    vsp.Text("This report is a summary version of of the Month End Analysis - Detailed Report.");
    vsp.FontSize(10);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}


void clsReports::rptNonAgedAR(DateTime dtStart, DateTime dtEnd, std::string txtPayFilter,
                              std::string txtInvFilter, std::string UserName,
                              std::string ProviderNames) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptNonAgedAR in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    // The invoices take txtInvFilter, over the invoice's provider (a bare
    // "ProviderID" is read as the invoice's); the three sections of
    // applied money take txtPayFilter, over the invoice it was applied to.
    const std::string inv =
        AndTerm(vb::Replace(vb::Replace(txtInvFilter, "Invoices.ProviderID", "ProviderID"),
                            "ProviderID", "Invoices.ProviderID"));
    const std::string pay = AndTerm(txtPayFilter);
    const std::string start = dtStart.ToIsoDate();
    const std::string end = dtEnd.ToIsoDate();
    const std::string range = Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                              Format(Variant(dtEnd), "mmm/dd/yyyy");
    const auto money = [&](Currency c) { return cf.MyFormat(c, "Currency"); };

    vsp.Orientation(0);
    vsp.DocName("Month End Analysis Detailed Report");
    vsp.StartDoc();
    PrintReportHeading("Month End Analysis Detailed Report", UserName,
                       "Range Selected: " + range);
    vsp.TextAlign(7);
    vsp.FontBold(true);
    vsp.Text("For: " + ProviderNames);
    vsp.FontBold(false);
    vsp.TextAlign(0);

    // ---- Section one: the complete invoices of the range by day ----
    // The lines are read for the invoices of the range only.
    db::Recordset invoices = Open(
        "SHAPE {SELECT Invoices.[Invoice#], Invoices.ID, Invoices.[Date], Invoices.ProviderID, "
        "Invoices.InvoiceTotal, Patient.ID AS PatID, Patient.Title, Patient.FirstName, "
        "Patient.LastName, Invoices.PatientID, Employees.ID AS EmpID, Employees.LastName AS "
        "DoctorName FROM Invoices INNER JOIN Patient ON Invoices.PatientID = Patient.ID INNER JOIN "
        "Employees ON Invoices.ProviderID = Employees.ID WHERE [Date] >= '" + start +
        "' AND [Date] <= '" + end + "'" + inv +
        " and [Complete?] <> 0 ORDER BY Employees.LastName, Invoices.[Invoice#]}  AS ARInvoices "
        "APPEND ({SELECT InvoiceID, Code, Cost FROM InvoiceDetails WHERE InvoiceID IN (SELECT ID "
        "FROM Invoices WHERE [Date] >= '" + start + "' AND [Date] <= '" + end +
        "')}  AS ARInvoiceDetails RELATE 'ID' TO 'InvoiceID') AS ARInvoiceDetails");
    struct Row {
      std::string cells;
      Currency regular, lab;
    };
    std::map<double, std::vector<Row>> by_day;
    for (; !invoices.Eof(); invoices.MoveNext()) {
      Row row;
      db::Recordset lines = invoices["ARInvoiceDetails"].Chapter();
      for (; !lines.Eof(); lines.MoveNext()) {
        // A lab fee and a lab credit both count as lab here.
        const std::string code = cf.returnStr(lines["Code"].Value(), true);
        const Currency cost = cf.ReturnCur(lines["Cost"].Value());
        if (code.rfind("99", 0) == 0 || code.rfind("-99", 0) == 0) {
          row.lab += cost;
        } else {
          row.regular += cost;
        }
      }
      // An invoice entered without lines stands for its total, as on the
      // summary report, so that the two reports' totals agree.
      if (lines.RecordCount() == 0) row.regular = cf.ReturnCur(invoices["InvoiceTotal"].Value());
      row.cells = frame::EscapeCell(cf.returnStr(invoices["Invoice#"].Value())) + "|" +
                  frame::EscapeCell(cf.returnStr(invoices["DoctorName"].Value())) + "|" +
                  frame::EscapeCell(cf.returnStr(invoices["FirstName"].Value()) + " " +
                                    cf.returnStr(invoices["LastName"].Value())) +
                  "|" + money(row.regular) + "|" + money(row.lab) + "|" +
                  money(row.regular + row.lab) + ";";
      by_day[CDate(invoices["Date"].Value()).DatePart().serial()].push_back(row);
    }
    vsp.FontBold(true);
    vsp.AddTable("<6.5in", "", "Invoices", kHeaderColor);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    Currency regular_total, lab_total;
    // Days without invoices print nothing: the summary report shows every
    // day, this list the invoices.
    for (const auto& [serial, rows] : by_day) {
      const DateTime day(serial);
      vsp.FontSize(10);
      vsp.FontBold(true);
      vsp.AddTable("<6.25in", "", Format(Variant(day), "MMM/d/yyyy"), 0);
      vsp.KeepWithNext();
      vsp.FontBold(false);
      vsp.FontSize(8);
      std::string body;
      Currency regular, lab;
      for (const Row& row : rows) {
        body += row.cells;
        regular += row.regular;
        lab += row.lab;
      }
      vsp.AddTable(">.75in|<1in|<1.65in|>.95in|>.95in|>.95in",
                   "Invoice#|Provider|Patient's Name|Regular Billing|Labs Billed|Total", body,
                   kHeaderColor);
      vsp.AddTable(">3.4in|>.95in|>.95in|>.95in", "",
                   "Total for " + Format(Variant(day), "MMM/d/yyyy") + "|" + money(regular) + "|" +
                       money(lab) + "|" + money(regular + lab),
                   0);
      regular_total += regular;
      lab_total += lab;
    }
    const Currency invoices_total = regular_total + lab_total;
    vsp.FontBold(true);
    vsp.AddTable(">3.65in|>.95in|>.95in|>.95in", "",
                 "Grand Total for " + range + "|" + money(regular_total) + "|" + money(lab_total) +
                     "|" + money(invoices_total),
                 0);
    vsp.FontBold(false);

    // ---- Sections two to four: the money applied in the range ----
    const std::string select =
        "SELECT InvoicePaymentDetails.Amount, InvoicePayments.PaymentName, InvoicePayments.[Check#], "
        "InvoicePayments.CheckDate, PaymentTypes.Name AS PaymentType, Invoices.[Invoice#] FROM "
        "InvoicePayments INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID = "
        "InvoicePaymentDetails.InvoicePaymentID INNER JOIN Invoices ON "
        "InvoicePaymentDetails.InvoiceID = Invoices.ID INNER JOIN PaymentTypes ON "
        "InvoicePayments.PaymentTypeID = PaymentTypes.ID WHERE ";
    // A detail without a date of its own falls in the range by its cheque.
    const std::string applied_in_range =
        "((InvoicePaymentDetails.Date IS NULL AND CheckDate >= '" + start + "' and CheckDate <= '" +
        end + "') OR (InvoicePaymentDetails.Date >= '" + start +
        "' and InvoicePaymentDetails.Date <= '" + end + "'))";
    const auto section = [&](const std::string& title, const std::string& sql,
                             const char* format, const char* foot_format,
                             const std::string& foot) {
      db::Recordset rs = Open(sql + " ORDER BY InvoicePayments.CheckDate, Invoices.[Invoice#]",
                              db::adOpenForwardOnly);
      std::string body;
      Currency sum;
      for (; !rs.Eof(); rs.MoveNext()) {
        const Currency amount = cf.ReturnCur(rs["Amount"].Value());
        body += frame::EscapeCell(cf.returnStr(rs["Invoice#"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(rs["Check#"].Value())) + "|" +
                cf.ReturnFormatedDate(rs["CheckDate"].Value(), "mmm/dd/yyyy") + "|" +
                frame::EscapeCell(cf.returnStr(rs["PaymentType"].Value())) + "|" +
                frame::EscapeCell(
                    cf.PursePaymentName(cf.returnStr(rs["PaymentName"].Value()), "Insurance")) +
                "|" + money(amount) + ";";
        sum += amount;
      }
      vsp.FontSize(10);
      vsp.Text("");
      vsp.FontBold(true);
      vsp.AddTable("<6.5in", "", title, kHeaderColor);
      vsp.KeepWithNext();
      vsp.FontBold(false);
      vsp.FontSize(8);
      vsp.AddTable(format, "Invoice#|Check#|Check Date|Payment Type|Payee Name|Amount", body,
                   kHeaderColor);
      vsp.FontBold(true);
      vsp.AddTable(foot_format, "", foot + "|" + money(sum), 0);
      vsp.FontBold(false);
      return sum;
    };
    const Currency invoice_adjustments = section(
        "Invoice Adjustments",
        select + "InvoicePaymentDetails.Date >= '" + start + "' and InvoicePaymentDetails.Date <= '" +
            end + "'" + pay +
            " AND ISNULL(PaymentTypes.[Adjustment?], 0) <> 0 AND ISNULL(PaymentTypes.[ToTotalPaid?], "
            "0) = 0",
        "^.9in|>.8in|<1in|<1.1in|<1.8in|>.9in", ">5.6in|>.9in", "Invoice Adjustment Total: ");
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.Text("Net Billing: " + money(invoices_total - invoice_adjustments));
    const Currency payments =
        section("Applied Payments",
                select + applied_in_range + pay + " AND ISNULL(PaymentTypes.[Adjustment?], 0) = 0",
                "^.8in|>.8in|<1in|<1.3in|<1.8in|>.8in", ">5.5in|>1in", "Applied Payments Total: ");
    const Currency payment_adjustments = section(
        "Applied Payment Adjustments",
        select + applied_in_range + pay +
            " AND ISNULL(PaymentTypes.[Adjustment?], 0) <> 0 and ISNULL(PaymentTypes.[ToTotalPaid?], "
            "0) <> 0",
        "^.8in|>.8in|<1in|<1.3in|<1.8in|>.8in", ">5.5in|>1in",
        "Applied Payment Adjustments Total: ");
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.Text("Net Payments: " + money(payments + payment_adjustments));
    vsp.Text("");
    vsp.Text("Accounts receivable change over range selected: " +
             money(invoices_total - invoice_adjustments - (payments + payment_adjustments)));
    vsp.Text("");
    vsp.Text("Notes: ");
    vsp.FontBold(false);
    vsp.FontSize(8);
    vsp.Text("This report only includes APPLIED payments. Credits will be applied on the day that "
             "they were applied.");
    vsp.Text("This report does not include incomplete invoices.");
    vsp.Text("Note that A/R on this report refers to Provider A/R, not Practice A/R.");
    vsp.Text("A/R Change = Invoices Total - Invoice Adjustments - (Applied Payments + Applied "
             "Payment Adjustments)");
    vsp.Text("This report is a detailed version of the Month End Analysis Report and as such the "
             "numbers presented here will directly equate to the numbers on the Month End "
             "Analysis Report.");
    vsp.FontSize(10);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}


namespace {
// The new-patient examination codes counted in the NPE column.
constexpr const char* kNewPatientExamCodes[] = {"01101", "01102", "01103"};
}  // namespace

void clsReports::rptMonthEndSummary(DateTime StartDate, DateTime Enddate, std::string txtInvFilter,
                                    std::string txtPayFilter, std::string ProviderNames,
                                    std::vector<int32_t>& ProviderID) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptMonthEndSummary in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    AccountModel model(conn(), InterestRate);
    const std::string start = StartDate.ToIsoDate();
    const std::string end = Enddate.ToIsoDate();
    const auto money = [&](Currency c) { return cf.MyFormat(c, "Currency"); };
    // The invoices of the providers in `ProviderID`, or of txtInvFilter
    // when the list is empty; the applied money by txtPayFilter (over the
    // invoice it was applied to). "" or "0" is the whole practice.
    const auto invoice_term = [&](const std::string& a, const std::string& b) {
      const std::string dates = "Invoices.[Date] >= '" + a + "' AND Invoices.[Date] <= '" + b + "'";
      if (ProviderID.empty()) return "(" + dates + ")" + AndTerm(txtInvFilter);
      std::string clause;
      for (int32_t id : ProviderID) {
        clause += std::string(clause.empty() ? "" : " OR ") + "(Invoices.ProviderID = " +
                  std::to_string(id) + " AND (" + dates + "))";
      }
      return "(" + clause + ")";
    };
    const std::string pay_where = AndTerm(txtPayFilter);

    // The accounts with expenses in the range each get two columns.
    db::Recordset accounts = Open(
        "SELECT DISTINCT Accounts.ID, Accounts.Name FROM Accounts INNER JOIN AccountsPayable ON "
        "AccountsPayable.AccountID = Accounts.ID WHERE AccountsPayable.[Date] >= '" + start +
        "' AND AccountsPayable.[Date] <= '" + end + "' ORDER BY Accounts.ID");
    std::vector<std::pair<std::string, std::string>> account_list;  // id, name
    for (; !accounts.Eof(); accounts.MoveNext()) {
      account_list.emplace_back(cf.returnStr(accounts["ID"].Value()),
                                cf.returnStr(accounts["Name"].Value()));
    }
    std::string format = "<1in|>1.3in|>1.3in|>1in|>1.3in";
    std::string header = "Month|Production|Collection|NPE|AR";
    for (const auto& account : account_list) {
      format += "|>1in|>1in";
      header += "|" + frame::EscapeCell(account.second) + "|% Prod";
    }
    format += "|>1in|>1in|>1in";
    header += "|Total Expenses|% of Prod|% of Receipts";

    // The opening A/R: what the complete invoices before the start stood
    // for then, less the payments before the start that reached them.
    Currency ar;
    {
      const std::string eve = DateTime(StartDate.DatePart().serial() - 1).ToIsoDate();
      db::Recordset before = Open(
          "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, Invoices.[Complete?], "
          "Invoices.InvoiceFinalTotal FROM Invoices WHERE " + invoice_term("1900-01-01", eve) +
          " and [Complete?] <> 0");
      const Variant eve_date(DateTime(StartDate.DatePart().serial() - 1));
      for (; !before.Eof(); before.MoveNext()) {
        ar += model.ReturnInvoiceAmount(static_cast<int32_t>(cf.ReturnVal(before["ID"].Value())),
                                        eve_date, &before);
      }
      db::Recordset paid = Open(
          "SELECT SUM(InvoicePayments.[Value]) AS theTotal FROM InvoicePayments WHERE CheckDate < '" +
          start + "' AND EXISTS (SELECT 1 FROM InvoicePaymentDetails INNER JOIN Invoices ON "
          "InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
          "InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID" + pay_where + ")");
      if (!paid.Eof()) ar -= cf.ReturnCur(paid["theTotal"].Value());
    }

    vsp.Orientation(1);
    vsp.DocName("Month End Summary");
    vsp.StartDoc();
    PrintReportHeading("Month End Summary", "",
                       "For :" + ProviderNames + "   " + Format(Variant(StartDate), "mmm/dd/yyyy") +
                           " to " + Format(Variant(Enddate), "mmm/dd/yyyy"));

    // A month runs from its first day to the day before the same day of
    // the next month; the last is cut at the end date. No day falls in
    // two months.
    std::string body;
    Currency production_total, collection_total, expenses_total;
    std::vector<Currency> account_totals(account_list.size());
    long npe_total = 0;
    for (DateTime a = StartDate.DatePart(); a <= Enddate.DatePart(); a = DateAdd("m", 1, a)) {
      DateTime b = DateTime(DateAdd("m", 1, a).serial() - 1);
      if (b > Enddate.DatePart()) b = Enddate.DatePart();
      const std::string from = a.ToIsoDate();
      const std::string to = b.ToIsoDate();
      db::Recordset invoices = Open(
          "SHAPE {SELECT ID, [Invoice#], ProviderID, [Date], InvoiceTotal FROM Invoices WHERE " +
          invoice_term(from, to) + " and [Complete?] <> 0}  AS Invoices APPEND ({SELECT InvoiceID, "
          "Code, Cost, [Date] FROM InvoiceDetails WHERE InvoiceID IN (SELECT ID FROM Invoices "
          "WHERE " + invoice_term(from, to) + ")}  AS InvoiceDetails RELATE 'ID' TO 'InvoiceID') "
          "AS InvoiceDetails");
      Currency production;
      long npe = 0;
      for (; !invoices.Eof(); invoices.MoveNext()) {
        production += cf.ReturnCur(invoices["InvoiceTotal"].Value());
        db::Recordset lines = invoices["InvoiceDetails"].Chapter();
        for (; !lines.Eof(); lines.MoveNext()) {
          const std::string code = cf.returnStr(lines["Code"].Value(), true);
          for (const char* npe_code : kNewPatientExamCodes) {
            if (code == npe_code) ++npe;
          }
        }
      }
      // Collection: the money of the month's cheques that reached the
      // filter's invoices, adjustments included.
      db::Recordset collected = Open(
          "SELECT SUM(InvoicePayments.[Value]) AS theTotal FROM InvoicePayments WHERE "
          "InvoicePayments.CheckDate >= '" + from + "' AND InvoicePayments.CheckDate <= '" + to +
          "' AND EXISTS (SELECT 1 FROM InvoicePaymentDetails INNER JOIN Invoices ON "
          "InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
          "InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID" + pay_where + ")");
      const Currency collection = collected.Eof() ? Currency() : cf.ReturnCur(collected["theTotal"].Value());
      ar = ar + production - collection;
      std::string row = Format(Variant(a), "mmmm yyyy") + "|" + money(production) + "|" +
                        money(collection) + "|" + std::to_string(npe) + "|" + money(ar);
      Currency expenses;
      for (size_t i = 0; i < account_list.size(); ++i) {
        db::Recordset ap = Open("SELECT SUM(Amount) AS theTotal FROM AccountsPayable WHERE "
                                "AccountID = " + account_list[i].first + " AND [Date] >= '" + from +
                                "' AND [Date] <= '" + to + "'");
        const Currency spent = ap.Eof() ? Currency() : cf.ReturnCur(ap["theTotal"].Value());
        row += "|" + money(spent) + "|" + ReturnPercent(Variant(spent), Variant(production));
        expenses += spent;
        account_totals[i] += spent;
      }
      row += "|" + money(expenses) + "|" + ReturnPercent(Variant(expenses), Variant(production)) +
             "|" + ReturnPercent(Variant(expenses), Variant(collection)) + ";";
      body += row;
      production_total += production;
      collection_total += collection;
      expenses_total += expenses;
      npe_total += npe;
      Host().DoEvents();
    }
    body += "Totals|" + money(production_total) + "|" + money(collection_total) + "|" +
            std::to_string(npe_total) + "|" + money(ar);
    for (size_t i = 0; i < account_list.size(); ++i) {
      body += "|" + money(account_totals[i]) + "|" +
              ReturnPercent(Variant(account_totals[i]), Variant(production_total));
    }
    body += "|" + money(expenses_total) + "|" +
            ReturnPercent(Variant(expenses_total), Variant(production_total)) + "|" +
            ReturnPercent(Variant(expenses_total), Variant(collection_total));
    vsp.FontSize(8);
    vsp.AddTable(format, header, body, kHeaderColor);
    vsp.FontSize(10);
    vsp.Text("");
    vsp.FontBold(true);
    vsp.Text("Notes: ");
    vsp.FontBold(false);
    vsp.FontSize(8);
    vsp.Text("To have the collection total for a given month balance with the detailed figures for "
             "that month on the month end analysis report please take the adjustment total and the "
             "receipt total on that report and total them together.  The collection figure on this "
             "report includes adjustments.");
    vsp.FontSize(10);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

}  // namespace orv
