// Aged receivables: the practice-wide list of what each patient owes by age
// of the treatment line (srptAccountReceivable), and the list by provider on
// the invoice-level model (rptAccountsReceivable).
#include <vector>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/flags.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "receivables/receivable_figures.h"

namespace orv {

namespace receivables {

AgedFigures AgedReceivableFigures(clsReports& r, DateTime dtEndDate, int16_t Byoption,
                                  std::string ProviderFilter) {
  const db::Snapshot snapshot(r.conn(), db::Snapshot::OnFailure::RunWithout);
  clsCommonFunctions& cf = r.Common();
  ProviderFilter = NoZeroFilter(ProviderFilter);

  // The provider filter is a condition over "ProviderID". Charges and
  // allocations are tested on the treatment line (or, by overseer, on the
  // invoice); payments on the provider who took them in. By preferred
  // doctor the subqueries carry no filter and the patients are chosen by
  // their own doctor. The by-date view (3) has no person of its own and
  // keeps the provider's reading, as the balance list does.
  const bool by_overseer = Byoption == 1;
  const bool by_doctor = Byoption == 2;
  std::string charge_filter;
  std::string payment_filter;
  if (!ProviderFilter.empty() && !by_doctor) {
    charge_filter =
        vb::Replace(ProviderFilter, "ProviderID",
                    by_overseer ? "invoices.OverseerID" : "InvoiceDetails.ProviderID");
    payment_filter = vb::Replace(ProviderFilter, "ProviderID", "InitialProviderID");
  }
  // With no filter every subquery ends at its date test: the forms differ
  // only by the filter they append. The filter goes in brackets: a host
  // joins providers with OR ("ProviderID = 2 OR ProviderID = 5"), and
  // without them the ORs would reach past the patient's own rows.
  auto and_charge = [&] {
    return charge_filter.empty() ? std::string() : " AND (" + charge_filter + ")";
  };
  auto and_payment = [&] {
    return payment_filter.empty() ? std::string() : " AND (" + payment_filter + ")";
  };
  // The overseer sits on the invoice, so every allocation side that tests
  // him reaches the invoice through the line.
  const std::string alloc_invoice_join =
      by_overseer && !charge_filter.empty()
          ? " INNER JOIN Invoices On Invoices.ID = InvoiceDetails.InvoiceID"
          : "";

  auto day = [&](int offset) { return DateAdd("d", offset, dtEndDate).ToIsoDate(); };
  const std::string D = day(0);

  // One age class: the complete charges entered between `low` (none when
  // empty) and `high`, less every allocation made by D on those lines.
  auto age_class = [&](const std::string& low, const std::string& high, const char* name) {
    std::string charge_range =
        low.empty() ? "" : " AND InvoiceDetails.EntryDate >= '" + low + "'";
    charge_range += " AND InvoiceDetails.EntryDate <= '" + high + "'";
    return " ISNULL((SELECT SUM(Cost) FROM InvoiceDetails INNER JOIN Invoices ON Invoices.ID = "
           "InvoiceDetails.InvoiceID"
           " WHERE Invoices.PatientID = Patient.ID AND InvoiceDetails.Status = 'Complete'" +
           charge_range + and_charge() +
           "), 0)"
           " - ISNULL ((SELECT SUM(Amount) FROM InvoicePaymentAllocations INNER JOIN "
           "InvoiceDetails "
           "ON InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID" +
           alloc_invoice_join +
           " WHERE InvoicePaymentAllocations.PatientID = Patient.ID AND AppliedDate <= '" + D +
           "'" + charge_range + and_charge() + "), 0) AS " + name + ",";
  };

  std::string sql = "SELECT ID, LastName + ', ' + FirstName AS PatientName,";
  sql +=
      " ISNULL((SELECT SUM(Cost) FROM InvoiceDetails INNER JOIN Invoices ON Invoices.ID = "
      "InvoiceDetails.InvoiceID"
      " WHERE Invoices.PatientID = Patient.ID AND InvoiceDetails.Status = 'Complete' AND "
      "InvoiceDetails.EntryDate <= '" +
      D + "'" + and_charge() +
      "), 0)"
      " - ISNULL ((SELECT SUM(Amount) FROM InvoicePaymentAllocations INNER JOIN InvoiceDetails "
      "ON "
      "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID" +
      alloc_invoice_join +
      " WHERE InvoicePaymentAllocations.PatientID = Patient.ID AND AppliedDate <= '" + D + "'" +
      and_charge() + "), 0) AS Debit,";
  // The patient's share of the lines. By overseer it is the cost less the
  // three insurers' shares; every other view reads the line's own
  // PatientCost, the share as it was entered. A payment is the patient's
  // when it names no insurer.
  if (by_overseer && !charge_filter.empty()) {
    sql +=
        " ISNULL ((SELECT ISNULL(SUM(Cost), 0) - ISNULL(SUM(PrimaryInsCost), 0)"
        " - ISNULL(SUM(SecondaryInsCost), 0) - ISNULL(SUM(TertiaryInsCost), 0)";
  } else {
    sql += " ISNULL ((select Sum(PatientCost)";
  }
  sql +=
      " FROM InvoiceDetails INNER JOIN Invoices ON Invoices.ID = InvoiceDetails.InvoiceID"
      " WHERE Invoices.PatientID = Patient.ID AND InvoiceDetails.Status = 'Complete' AND "
      "InvoiceDetails.EntryDate <= '" +
      D + "'" + and_charge() +
      "), 0) - ISNULL"
      " ((SELECT SUM(Amount) FROM InvoicePaymentAllocations INNER JOIN InvoicePayments ON "
      "InvoicePayments.ID = InvoicePaymentAllocations.InvoicePaymentID"
      " INNER JOIN InvoiceDetails On InvoiceDetails.ID = "
      "InvoicePaymentAllocations.InvoiceDetailsID" +
      alloc_invoice_join +
      " WHERE InvoicePaymentAllocations.PatientID = Patient.ID AND InvoicePayments.InsuranceID "
      "IS "
      "NULL AND AppliedDate <= '" +
      D + "'" + and_charge() + "), 0) AS PatientDebit,";
  // Credit: the money taken in by D less what of it was applied by D. Both
  // sums carry the payment form of the filter, so that the credit is that
  // of the same payments on both sides; a filter on one side only would
  // set one provider's allocations against every provider's receipts.
  sql +=
      " ISNULL((SELECT SUM(Value) FROM InvoicePayments"
      " WHERE InvoicePayments.PatientID = Patient.ID AND InvoicePayments.CheckDate <= '" +
      D + "'" + and_payment() +
      "), 0)"
      " - ISNULL((SELECT SUM(Amount) FROM InvoicePaymentAllocations INNER JOIN InvoicePayments "
      "ON "
      "InvoicePayments.ID = InvoicePaymentAllocations.InvoicePaymentID"
      " WHERE InvoicePayments.PatientID = Patient.ID AND InvoicePayments.CheckDate <= '" +
      D + "' AND InvoicePaymentAllocations.AppliedDate <= '" + D + "'" + and_payment() +
      "), 0) AS Credit,";
  // The classes: both ends inclusive, so a line 30 days old is in 0-30
  // and one 31 days old in 31-60.
  sql += age_class(day(-30), D, "ThirtyDay");
  sql += age_class(day(-60), day(-31), "SixtyDay");
  sql += age_class(day(-90), day(-61), "NinetyDay");
  sql += age_class("", day(-91), "OverNinetyDay");
  // Money taken in by D on a cheque dated after it.
  sql +=
      " (SELECT ISNULL(SUM(Value), 0) FROM InvoicePayments"
      " WHERE CheckDate > '" +
      D + "' AND [Date] <= '" + D + "'" + and_payment() +
      " AND PatientID = Patient.ID)"
      " AS PostDates";
  if (by_doctor && !ProviderFilter.empty()) {
    sql += " FROM Patient WHERE " + vb::Replace(ProviderFilter, "ProviderID", "DoctorID") +
           " ORDER BY LastName, FirstName";
  } else {
    sql += " FROM Patient ORDER BY LastName, FirstName";
  }

  db::Recordset rs = r.Open(sql);
  // A patient who is square is left out, whatever is post-dated.
  rs.Filter(Variant(" Debit <> 0 OR Credit <> 0"));

  AgedFigures figures;
  AgedRow& sum = figures.totals;
  while (!rs.Eof()) {
    AgedRow row;
    row.id = static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value()));
    row.name = vb::Trim(cf.returnStr(rs["PatientName"].Value()));
    row.debit = cf.ReturnCur(rs["Debit"].Value());
    row.patient_debit = cf.ReturnCur(rs["PatientDebit"].Value());
    row.credit = cf.ReturnCur(rs["Credit"].Value());
    row.thirty = cf.ReturnCur(rs["ThirtyDay"].Value());
    row.sixty = cf.ReturnCur(rs["SixtyDay"].Value());
    row.ninety = cf.ReturnCur(rs["NinetyDay"].Value());
    row.over = cf.ReturnCur(rs["OverNinetyDay"].Value());
    row.post_dates = cf.ReturnCur(rs["PostDates"].Value());
    sum.debit += row.debit;
    sum.patient_debit += row.patient_debit;
    sum.credit += row.credit;
    sum.thirty += row.thirty;
    sum.sixty += row.sixty;
    sum.ninety += row.ninety;
    sum.over += row.over;
    sum.post_dates += row.post_dates;
    figures.rows.push_back(std::move(row));
    r.RaiseProgress(rs);
    r.Host().DoEvents();
    rs.MoveNext();
  }
  rs.Close();
  return figures;
}

}  // namespace receivables

void clsReports::srptAccountReceivable(DateTime dtEndDate, int16_t Byoption,
                                       std::string ProviderFilter, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An error has occurred in sub srptAccountReceivable in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    const receivables::AgedFigures figures =
        receivables::AgedReceivableFigures(*this, dtEndDate, Byoption, ProviderFilter);

    // The title in the size of every report's title; the lines under it
    // are the list's own (a tab before the user, the period's end).
    vsp.TextAlign(7);
    vsp.FontSize(20);
    vsp.FontBold(true);
    vsp.Text("Accounts Receivable for the Practice");
    vsp.FontSize(10);
    vsp.Text("Printed on: " + Format(Variant(Clock::Today()), "mmm/dd/yyyy") + "\t" +
             "By: " + UserName);
    vsp.Text("Period Ending: " + Format(Variant(dtEndDate), "mmm/dd/yyyy"));
    vsp.FontBold(false);
    vsp.TextAlign(1);
    vsp.FontSize(8);

    // Each row: the balance (debit less credit), the patient's share, the
    // insurers' share (debit less the patient's), the credit, the classes
    // and the post-dated money; the "Balances" row carries their sums.
    auto cell = [&](Currency c) { return Format(Variant(c), "0.00"); };
    auto cells = [&](const receivables::AgedRow& row) {
      return cell(row.Balance()) + "|" + cell(row.patient_debit) + "|" +
             cell(row.debit - row.patient_debit) + "|" + cell(row.credit) + "|" +
             cell(row.thirty) + "|" + cell(row.sixty) + "|" + cell(row.ninety) + "|" +
             cell(row.over) + "|" + cell(row.post_dates) + ";";
    };
    std::string body;
    for (const receivables::AgedRow& row : figures.rows) {
      body += frame::EscapeCell(row.name) + "|" + cells(row);
    }
    body += "Balances|" + cells(figures.totals);
    vsp.AddTable("<1.2in|>0.7in|^1.4in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in", "||Debit|||||||",
                 "", kHeaderColor);
    // The "Debit" band over the column heads stays with them.
    vsp.KeepWithNext();
    vsp.AddTable("<1.2in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in|>0.7in",
                 "Patient|Balance|Patient|Insurance|Credit|0-30|31-60|61-90|> 90|Post Dates", body,
                 kHeaderColor);
  });
}

void clsReports::rptAccountsReceivable(std::string Comments, std::string txtProvFilter,
                                       std::string txtInvFilter, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // Only the rate reaches the model, where it decides the rounding of an
  // invoice's worth. InterestDelay is not read: an invoice's column is
  // decided by its age, and no grace period moves it.
  AccountModel accounts(conn(), InterestRate);
  txtProvFilter = NoZeroFilter(txtProvFilter);
  txtInvFilter = NoZeroFilter(txtInvFilter);

  vsp.Orientation(0);
  vsp.DocName("Accounts Receivable");
  db::Recordset providers =
      Open(txtProvFilter.empty() ? "SELECT FullName, ID FROM Employees ORDER BY FullName"
                                 : "SELECT FullName, ID FROM Employees WHERE " + txtProvFilter +
                                       " ORDER BY FullName");
  vsp.StartDoc();
  PrintReportHeading(vsp.DocName(), UserName, "");
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(10);

  // Per provider and per class (Current, 31-60, 61-90, > 91): what the
  // patients owe and what the insurers owe, and the incomplete work.
  const long count = providers.RecordCount();
  std::vector<std::vector<Currency>> pat(count, std::vector<Currency>(4));
  std::vector<std::vector<Currency>> ins(count, std::vector<Currency>(4));
  std::vector<Currency> incomplete(count);
  std::vector<Currency> grand(5);

  const DateTime today = Clock::Today();
  const DateTime day30 = DateAdd("d", -30, today);
  auto money = [](Currency c) { return Format(Variant(c), "Currency"); };

  std::string body;
  for (long p = 0; !providers.Eof(); ++p) {
    Variant provider_id = providers["ID"].Value();
    const std::string id = std::to_string(cf.ReturnNumber(provider_id));
    db::Recordset invoices = Open(
        "SHAPE {SELECT Invoices.ID, InvoiceTotal, [Complete?], Date, ProviderID FROM Invoices "
        "WHERE "
        "ProviderID = " +
        id + (txtInvFilter.empty() ? std::string() : " AND (" + txtInvFilter + ")") +
        "}  AS rptAccountsReceivables APPEND ({SELECT InvoicePayments.CheckDate, "
        "InvoicePaymentDetails.InvoiceID, InvoicePaymentDetails.Amount FROM InvoicePayments INNER "
        "JOIN InvoicePaymentDetails ON InvoicePayments.ID = "
        "InvoicePaymentDetails.InvoicePaymentID}  "
        "AS rptAccountsReceivablePayments RELATE 'ID' TO 'InvoiceID') AS "
        "rptAccountsReceivablePayments");
    while (!invoices.Eof()) {
      const int32_t invoice = static_cast<int32_t>(cf.ReturnVal(invoices["ID"].Value()));
      const Currency paid = accounts.ReturnInvoicePaid(true, invoice, today, 0);
      // The amount is read by the invoice's ID and not from this row: the
      // row has no InvoiceFinalTotal, and an invoice settled below its
      // total must count at its settled total today, as every balance of
      // the account model does. An invoice without a total is worth 0.
      const Currency amount = accounts.ReturnInvoiceAmount(invoice);
      const Currency total = cf.ReturnCur(invoices["InvoiceTotal"].Value());
      if (amount > paid) {
        // Age from today. Everything older than 30 days lands in 31-60, a
        // settled fact of this report (that column has no lower bound), so
        // a dated invoice never reaches 61-90, which stays empty. An
        // undated invoice is of no known age and lands in > 91.
        const Variant date = invoices["Date"].Value();
        int age_class = 3;
        if (!date.IsNull()) age_class = CDate(date).DatePart() >= day30 ? 0 : 1;
        pat[p][age_class] += amount - paid;
        ins[p][age_class] += total - amount;
        // Incomplete means the flag is not set: 0 or NULL.
        if (!FlagSet(invoices["Complete?"].Value())) incomplete[p] += total;
      }
      invoices.MoveNext();
    }
    invoices.Close();

    // The provider's row: P:, I: and the total for each class, with the
    // class's share of the provider's total under it. The Total column
    // holds the same three figures over all four classes. A share is the
    // class total over the provider's total, as floats (the only floats of
    // the report), times 100 and rounded half to even to two places; a
    // provider with nothing owing shows no shares rather than a division
    // by zero.
    Currency provider_total;
    for (int c = 0; c < 4; ++c) provider_total += pat[p][c] + ins[p][c];
    Currency pat_total, ins_total;
    for (int c = 0; c < 4; ++c) {
      pat_total += pat[p][c];
      ins_total += ins[p][c];
    }
    body += frame::EscapeCell(cf.returnStr(providers["FullName"].Value())) + "|P:\nI:\n\nTotal:|" + money(pat_total) +
            "\n" + money(ins_total) + "\n--------\n" + money(provider_total);
    for (int c = 0; c < 4; ++c) {
      const Currency class_total = pat[p][c] + ins[p][c];
      std::string share;
      if (!provider_total.IsZero()) {
        share =
            Format(
                Variant(RoundHalfEven(class_total.ToDouble() / provider_total.ToDouble() * 100, 2)),
                "0.00") +
            "%";
      }
      body += "|" + money(pat[p][c]) + "\n" + money(ins[p][c]) + "\n--------\n" +
              money(class_total) + "\n" + share;
      grand[c + 1] += class_total;
    }
    body += "|" + money(incomplete[p]) + ";";
    grand[0] += provider_total;
    RaiseProgress(providers);
    Host().DoEvents();
    providers.MoveNext();
  }
  // The grand row carries the class totals (patients and insurers
  // together) and the incomplete work: its format has no P:/I: column.
  Currency grand_incomplete;
  for (const Currency& c : incomplete) grand_incomplete += c;
  vsp.AddTable("<1.5in|>.5in|>1in|>1in|>1in|>1in|>1in|>1in",
               "Provider||Total|Current|31-60 Days|61-90 Days|> 91 Days|Incomplete", body,
               kHeaderColor);
  // The grand totals never open a page alone: the last provider comes along.
  vsp.KeepWithNext();
  vsp.AddTable(">2in|>1in|>1in|>1in|>1in|>1in|>1in", "",
               "Grand Totals|" + money(grand[0]) + "|" + money(grand[1]) + "|" + money(grand[2]) +
                   "|" + money(grand[3]) + "|" + money(grand[4]) + "|" + money(grand_incomplete) +
                   ";");
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv
