// The receivables reconciliation (see reconciliation.h): the figures of
// the aged list, the patient balances and the balance lists as of one day,
// the checks between them, and where they differ, by patient and by known
// cause.
#include "receivables/reconciliation.h"

#include <algorithm>
#include <initializer_list>
#include <map>

#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/flags.h"
#include "common/format.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv::receivables {

namespace {

Currency Magnitude(Currency c) {
  return c < Currency() ? -c : c;
}

// Zero to the cent: what a printed figure would show as 0.00.
bool ZeroToTheCent(Currency c) {
  return Round(c, 2).IsZero();
}

std::string Money(Currency c) {
  return Format(Variant(c), "Currency");
}

// One record behind a known cause, and its amount.
struct CauseItem {
  std::string what;
  Currency amount;
};

// A cause in one line: what it is, how many records and how much, and the
// largest few records by name, so the bookkeeper can go to them.
std::string CauseLine(const std::string& text, std::vector<CauseItem> items) {
  constexpr size_t kNamed = 5;
  std::stable_sort(items.begin(), items.end(), [](const CauseItem& a, const CauseItem& b) {
    return Magnitude(a.amount) > Magnitude(b.amount);
  });
  Currency sum;
  for (const CauseItem& item : items) sum += item.amount;
  std::string line = text + ": " + std::to_string(items.size()) + ", " + Money(sum) + ". ";
  for (size_t i = 0; i < items.size() && i < kNamed; ++i) {
    line += (i == 0 ? "" : "; ") + items[i].what;
  }
  if (items.size() > kNamed) line += "; and " + std::to_string(items.size() - kNamed) + " more";
  return line + ".";
}

// The checks of ReconciliationChecks, by position, that a cause bears on.
// The lists' net is their owed less their credit: a cause bears on it
// through one of those two.
enum CheckIndex { kBalancesNet, kListsOwed, kListsCredit };

// The records of the practice that make the three readings part, one
// line per cause found. Every invoice dated by the day and every payment
// dated by it are read once, with their lines, shares and allocations by
// the day, and sorted into the causes here. A cause is told only where a
// check it bears on differs (`differs`, by position), so that records
// that part the readings in ways that cancel out, such as a refund and
// the payment it paid back, do not crowd the page; with every check in
// agreement (patients differing both ways) every cause is told.
std::vector<std::string> KnownCauses(clsReports& r, DateTime dtEnd,
                                     const std::vector<bool>& differs) {
  clsCommonFunctions& cf = r.Common();
  const std::string D = dtEnd.ToIsoDate();
  const bool any_differs = std::find(differs.begin(), differs.end(), true) != differs.end();
  std::vector<std::string> causes;
  auto add = [&](const std::string& text, const std::vector<CauseItem>& items,
                 std::initializer_list<CheckIndex> bears_on) {
    bool told = !any_differs;
    for (const CheckIndex c : bears_on) told = told || differs[c];
    if (told && !items.empty()) causes.push_back(CauseLine(text, items));
  };

  // Each date test of the three readings: by the end of the day.
  const std::string by_end = " <= '" + D + "'";
  const std::string invoice_sql =
      "SELECT Invoices.ID, Invoices.[Invoice#], Invoices.InvoiceTotal, Invoices.[Complete?], "
      "Invoices.Cancelled, Invoices.InvoiceFinalTotal, Invoices.FinalDate, "
      "Patient.LastName + ', ' + Patient.FirstName AS PatientName, "
      "ISNULL((SELECT SUM(Cost) FROM InvoiceDetails "
      "WHERE InvoiceDetails.InvoiceID = Invoices.ID AND InvoiceDetails.Status = 'Complete' "
      "AND InvoiceDetails.EntryDate" + by_end + "), 0) AS Lines, "
      "ISNULL((SELECT SUM(Amount) FROM InvoicePaymentDetails "
      "WHERE InvoicePaymentDetails.InvoiceID = Invoices.ID "
      "AND InvoicePaymentDetails.[Date]" + by_end + "), 0) AS Paid "
      "FROM Invoices INNER JOIN Patient ON Patient.ID = Invoices.PatientID "
      "WHERE Invoices.[Date]" + by_end + " AND NOT Invoices.InvoiceTotal IS NULL "
      "ORDER BY Invoices.ID";
  db::Recordset invoices = r.Open(invoice_sql, db::adOpenForwardOnly);
  std::vector<CauseItem> cancelled, unlike_lines, incomplete, settled;
  while (!invoices.Eof()) {
    const Currency total = cf.ReturnCur(invoices["InvoiceTotal"].Value());
    const Currency lines = cf.ReturnCur(invoices["Lines"].Value());
    const Currency paid = cf.ReturnCur(invoices["Paid"].Value());
    const std::string who = "invoice #" + cf.returnStr(invoices["Invoice#"].Value()) + ", " +
                            cf.returnStr(invoices["PatientName"].Value());
    const bool complete = FlagSet(invoices["Complete?"].Value());
    const Variant final_date = invoices["FinalDate"].Value();
    const bool settled_by_end = !invoices["InvoiceFinalTotal"].Value().IsNull() &&
                                !final_date.IsNull() &&
                                CDate(final_date).DatePart() <= dtEnd.DatePart();
    // A cancelled invoice counts in every reading; it parts them only
    // where its total and its complete lines differ.
    if (complete && FlagSet(invoices["Cancelled"].Value())) {
      if (!ZeroToTheCent(total - lines)) {
        cancelled.push_back(
            {who + ", " + Money(total) + " (complete lines " + Money(lines) + ")", total - lines});
      }
    } else if (complete && !ZeroToTheCent(total - lines)) {
      unlike_lines.push_back(
          {who + ", " + Money(total) + " against lines of " + Money(lines), total - lines});
    }
    if (!complete && !settled_by_end && !total.IsZero()) {
      incomplete.push_back({who + ", " + Money(total), total});
    }
    if (complete && settled_by_end && !ZeroToTheCent(total - paid)) {
      settled.push_back(
          {who + ", " + Money(total) + " with shares of " + Money(paid), total - paid});
    }
    invoices.MoveNext();
  }
  invoices.Close();
  add("Cancelled invoices, which the patient balances and the balance lists still count at their "
      "total and the aged list by their complete lines",
      cancelled, {kBalancesNet, kListsOwed});
  add("Complete invoices whose total is not the sum of their complete lines entered by the day "
      "(the aged list reads the lines, the other figures the invoice)",
      unlike_lines, {kBalancesNet, kListsOwed});
  add("Invoices not complete, which only the balance lists count", incomplete, {kListsOwed});
  add("Invoices settled by the day without being paid to their total, which the balance lists "
      "leave out and the patient balances still count",
      settled, {kBalancesNet, kListsOwed});

  const std::string payment_sql =
      "SELECT InvoicePayments.ID, InvoicePayments.[Value], InvoicePayments.TotalToCredit, "
      "InvoicePayments.CancellationDate, InvoicePayments.RefundAmount, "
      "InvoicePayments.RefundDate, PaymentTypes.[Adjustment?], PaymentTypes.OfficePayment, "
      "(SELECT LastName + ', ' + FirstName FROM Patient "
      "WHERE Patient.ID = InvoicePayments.PatientID) AS PatientName, "
      "ISNULL((SELECT SUM(Amount) FROM InvoicePaymentDetails "
      "WHERE InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID "
      "AND InvoicePaymentDetails.[Date]" + by_end + "), 0) AS Shares, "
      "ISNULL((SELECT SUM(Amount) FROM InvoicePaymentAllocations "
      "WHERE InvoicePaymentAllocations.InvoicePaymentID = InvoicePayments.ID "
      "AND InvoicePaymentAllocations.AppliedDate" + by_end + "), 0) AS Allocated "
      "FROM InvoicePayments "
      "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID "
      "WHERE InvoicePayments.CheckDate" + by_end + " ORDER BY InvoicePayments.ID";
  db::Recordset payments = r.Open(payment_sql, db::adOpenForwardOnly);
  std::vector<CauseItem> cancelled_money, adjustments, refunds, over_applied, shares_apart,
      recorded_credit;
  while (!payments.Eof()) {
    const Currency value = cf.ReturnCur(payments["Value"].Value());
    const Currency shares = cf.ReturnCur(payments["Shares"].Value());
    const Currency allocated = cf.ReturnCur(payments["Allocated"].Value());
    const Currency left = value - shares;
    const std::string who = "payment " + cf.returnStr(payments["ID"].Value()) + ", " +
                            cf.returnStr(payments["PatientName"].Value());
    auto by_end = [&](const char* field) {
      const Variant v = payments[field].Value();
      return !v.IsNull() && CDate(v).DatePart() <= dtEnd.DatePart();
    };
    // The unapplied list reads a type as money only when both flags are
    // 0; NULL is neither.
    const Variant adjustment = payments["Adjustment?"].Value();
    const Variant office = payments["OfficePayment"].Value();
    const bool money_type = !adjustment.IsNull() && !office.IsNull() &&
                            cf.ReturnVal(adjustment) == 0 && cf.ReturnVal(office) == 0;
    if (!ZeroToTheCent(left)) {
      if (by_end("CancellationDate")) {
        cancelled_money.push_back({who + ", " + Money(left), left});
      } else if (!money_type) {
        adjustments.push_back({who + ", " + Money(left), left});
      } else if (left < Currency()) {
        over_applied.push_back({who + ", " + Money(left), left});
      }
    }
    if (by_end("RefundDate")) {
      const Currency refund = cf.ReturnCur(payments["RefundAmount"].Value());
      if (!refund.IsZero()) refunds.push_back({who + ", " + Money(refund), refund});
    }
    if (!ZeroToTheCent(shares - allocated)) {
      shares_apart.push_back(
          {who + ", shares " + Money(shares) + ", allocations " + Money(allocated),
           shares - allocated});
    }
    const Currency recorded = cf.ReturnCur(payments["TotalToCredit"].Value());
    if (!ZeroToTheCent(recorded - left)) {
      recorded_credit.push_back(
          {who + ", recorded " + Money(recorded) + ", left " + Money(left), recorded - left});
    }
    payments.MoveNext();
  }
  payments.Close();
  add("Payments cancelled by the day with money on account, which the aged list and the patient "
      "balances count as credit and the unapplied list does not",
      cancelled_money, {kListsCredit});
  add("Adjustments and office payments with money on account, which the unapplied list leaves "
      "out",
      adjustments, {kListsCredit});
  add("Payments applied beyond their value, which the unapplied list leaves out", over_applied,
      {kListsCredit});
  add("Refunds paid back by the day, which only the unapplied list takes off", refunds,
      {kListsCredit});
  add("Payments whose shares on invoices are not their allocations to treatment lines (the aged "
      "list reads the allocations, the other figures the shares)",
      shares_apart, {kBalancesNet, kListsOwed, kListsCredit});
  add("Payments whose recorded credit is not their value less their shares (the patient "
      "balances read the recorded credit)",
      recorded_credit, {kBalancesNet});
  return causes;
}

}  // namespace

Currency PatientDifference::Largest() const {
  const Currency a = balance - aged_net;
  const Currency b = lists_net - aged_net;
  return Magnitude(b) > Magnitude(a) ? b : a;
}

bool ReconciliationCheck::Agrees() const {
  return ZeroToTheCent(difference);
}

std::vector<ReconciliationCheck> ReconciliationChecks(const ReconciliationFigures& f) {
  const Currency aged_net = f.aged.Balance();
  const Currency classes = f.aged.thirty + f.aged.sixty + f.aged.ninety + f.aged.over;
  return {
      {"Patient Balances: Net against Aged Receivables", f.patient_balances - aged_net},
      {"Balance Lists: Owed against Aged Receivables", f.office_totals - f.aged.debit},
      {"Balance Lists: Credit against Aged Receivables", f.unapplied - f.aged.credit},
      {"Balance Lists: Net against Aged Receivables", (f.office_totals - f.unapplied) - aged_net},
      {"Age classes (0-30, 31-60, 61-90, > 90) against Owed", classes - f.aged.debit},
  };
}

ReconciliationFigures ReconcileReceivables(clsReports& r, DateTime dtEnd) {
  const db::Snapshot snapshot(r.conn(), db::Snapshot::OnFailure::RunWithout);
  clsCommonFunctions& cf = r.Common();
  ReconciliationFigures f;
  f.as_of = dtEnd;

  // 1. The reports' own figures, practice-wide.
  const AgedFigures aged = AgedReceivableFigures(r, dtEnd, 0, "");
  const BalanceListFigures lists = PatientsWithaBalanceFigures(r, dtEnd, "", 0, true);
  const UnappliedFigures unapplied = UnappliedPaymentFigures(r, dtEnd, "");
  f.aged = aged.totals;
  f.office_totals = lists.office[0];
  f.unapplied = unapplied.total;

  // 2. Every patient's balance as the statements open it, and the three
  // readings side by side per patient.
  std::map<int32_t, PatientDifference> by_patient;
  {
    AccountModel accounts(r.conn(), r.InterestRate);
    db::Recordset patients =
        r.Open("SELECT ID, LastName + ', ' + FirstName AS PatientName FROM Patient ORDER BY ID");
    const Variant as_of(dtEnd);
    while (!patients.Eof()) {
      PatientDifference p;
      p.id = static_cast<int32_t>(cf.ReturnVal(patients["ID"].Value()));
      p.name = cf.returnStr(patients["PatientName"].Value());
      p.balance = cf.ReturnCur(accounts.ReturnPatientBalance(p.id, false, as_of, 0));
      f.patient_balances += p.balance;
      by_patient[p.id] = std::move(p);
      r.RaiseProgress(patients);
      r.Host().DoEvents();
      patients.MoveNext();
    }
  }
  for (const AgedRow& row : aged.rows) by_patient[row.id].aged_net = row.Balance();
  for (const BalanceListRow& row : lists.rows) by_patient[row.id].lists_net += row.figures[0];
  for (const UnappliedRow& row : unapplied.rows) by_patient[row.patient_id].lists_net -= row.credit;

  for (auto& [id, p] : by_patient) {
    if (!ZeroToTheCent(p.balance - p.aged_net) || !ZeroToTheCent(p.lists_net - p.aged_net)) {
      f.differences.push_back(p);
    }
  }
  std::stable_sort(f.differences.begin(), f.differences.end(),
                   [](const PatientDifference& a, const PatientDifference& b) {
                     return Magnitude(a.Largest()) > Magnitude(b.Largest());
                   });

  // 3. Where anything parts, the records that explain it.
  std::vector<bool> differs;
  for (const ReconciliationCheck& check : ReconciliationChecks(f))
    differs.push_back(!check.Agrees());
  const bool all_agree =
      f.differences.empty() && std::find(differs.begin(), differs.end(), true) == differs.end();
  if (!all_agree) f.causes = KnownCauses(r, dtEnd, differs);
  return f;
}

void PrintReconciliation(clsReports& r, const ReconciliationFigures& f,
                         const std::string& UserName) {
  frame::PrintSurface& vsp = r.VSP();
  r.PrintReportHeading("Receivables Reconciliation", UserName,
                       "As of: " + Format(Variant(f.as_of), "mmm/dd/yyyy"));
  vsp.TextAlign(0);
  vsp.FontBold(false);
  vsp.FontSize(10);
  vsp.Text("");

  // The figures: what is owed, the money on file, and the net, as each
  // reading gives them. The patient balances have no owed and credit of
  // their own.
  const Currency aged_net = f.aged.Balance();
  vsp.AddTable(
      "<1.6in|>1.9in|>1.9in|>1.9in", "Figure|Aged Receivables|Patient Balances|Balance Lists",
      "Owed|" + Money(f.aged.debit) + "|-|" + Money(f.office_totals) + ";Credit|" +
          Money(f.aged.credit) + "|-|" + Money(f.unapplied) + ";Net|" + Money(aged_net) + "|" +
          Money(f.patient_balances) + "|" + Money(f.office_totals - f.unapplied) + ";",
      kHeaderColor);
  vsp.Text("");

  const std::vector<ReconciliationCheck> checks = ReconciliationChecks(f);
  std::string body;
  for (const ReconciliationCheck& check : checks) {
    body += check.name + "|" + Money(check.difference) + "|" +
            (check.Agrees() ? "Agrees" : "Differs") + ";";
  }
  vsp.StartTable();
  vsp.AddTable("<3.9in|>1.9in|^1.5in", "Check|Difference|Result", body, kHeaderColor);
  for (size_t i = 0; i < checks.size(); ++i) {
    if (!checks[i].Agrees()) vsp.TableCell(frame::tcFontBold, static_cast<int>(i + 1), 3) = true;
  }
  vsp.EndTable();
  vsp.Text("");

  bool all_agree = f.differences.empty();
  for (const ReconciliationCheck& check : checks) all_agree = all_agree && check.Agrees();
  if (all_agree) {
    vsp.Text("Every figure agrees.");
    return;
  }

  vsp.FontBold(true);
  vsp.FontSize(11);
  vsp.Text("Where they differ");
  vsp.KeepWithNext();
  vsp.FontBold(false);
  vsp.FontSize(10);
  if (!f.differences.empty()) {
    const size_t listed = std::min(f.differences.size(), kDifferencesListed);
    vsp.Text(std::to_string(f.differences.size()) +
             (f.differences.size() == 1 ? " patient differs" : " patients differ") +
             (f.differences.size() > listed
                  ? "; the " + std::to_string(listed) + " with the largest difference:"
                  : ":"));
    vsp.KeepWithNext();
    std::string rows;
    for (size_t i = 0; i < listed; ++i) {
      const PatientDifference& p = f.differences[i];
      rows += frame::EscapeCell(p.name) + "|" + Money(p.aged_net) + "|" + Money(p.balance) + "|" +
              Money(p.lists_net) + "|" + Money(p.Largest()) + ";";
    }
    vsp.AddTable("<2.2in|>1.3in|>1.3in|>1.3in|>1.3in",
                 "Patient|Aged Receivables|Patient Balances|Balance Lists|Difference", rows,
                 kHeaderColor);
    vsp.Text("");
  }
  if (f.causes.empty()) {
    vsp.Text("No known cause was found in the records.");
    return;
  }
  vsp.FontBold(true);
  vsp.Text("Known causes");
  vsp.KeepWithNext();
  vsp.FontBold(false);
  for (const std::string& cause : f.causes) vsp.Text(cause);
}

}  // namespace orv::receivables
