// The summary analysis of a period: one row per day with fees on the left,
// payments on the right and the receivable that results, from the
// receivable before the period to the one at its end; then the adjustments
// by type and the period's totals.
//
// How payments count. By allocated payment, money counts on the day it was
// applied to a treatment line, for the person of that line. With all
// payments, money counts on its cheque's day: what was applied by then for
// the people of the lines, the rest for the provider who took it in; and
// when a credit is applied on a later day, it moves on that day from the
// provider who took it in to the person of the line (a reallocation). The
// day rows and the receivable before and after the period are read the same
// way, so the opening plus the rows is the closing, to the cent.
#include <map>
#include <set>
#include <vector>

#include "closing/closing_common.h"
#include "common/flags.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

using closing::Abs;
using closing::SqlClear;
using closing::SqlSet;

using DayMap = std::map<std::string, Currency>;

// The joins from an allocation to its payment, type, line and invoice.
const char* kAllocationJoins =
    " FROM InvoicePayments INNER JOIN InvoicePaymentAllocations ON InvoicePayments.ID = "
    "InvoicePaymentAllocations.InvoicePaymentID INNER JOIN PaymentTypes ON "
    "InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN InvoiceDetails ON "
    "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID INNER JOIN Invoices ON "
    "Invoices.ID = InvoiceDetails.InvoiceID";

// The three kinds of payment type: money, adjustments of a charge (invoice
// adjustments, write-offs among them), and adjustments that count toward
// what was paid (refunds, returned cheques).
std::string PaymentClass() { return SqlClear("PaymentTypes.[Adjustment?]"); }
std::string InvoiceAdjustmentClass() {
  return SqlSet("PaymentTypes.[Adjustment?]") + " AND " + SqlClear("PaymentTypes.[ToTotalPaid?]");
}
std::string PaymentAdjustmentClass() {
  return SqlSet("PaymentTypes.[Adjustment?]") + " AND " + SqlSet("PaymentTypes.[ToTotalPaid?]");
}

}  // namespace

void clsReports::srptOpeningReceivable(DateTime dtStart, DateTime dtEnd,
                                       const ReceivableFilters& Filters, bool byAllocatedPayment,
                                       Currency& Opening, Currency& Closing) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  clsCommonFunctions& cf = Common();
  auto sum = [&](const std::string& sql) {
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    return rs.Eof() ? Currency() : cf.ReturnCur(rs["theTotal"].Value());
  };
  // The receivable as of a date: `op` "<" with the first day gives the
  // receivable before the period, "<=" with the last day the one at its
  // end.
  auto receivable = [&](const std::string& op, const std::string& day) {
    const std::string at = " " + op + " '" + day + "'";
    Currency r = sum(
        "SELECT SUM(InvoiceDetails.Cost) as theTotal FROM Invoices INNER JOIN InvoiceDetails ON "
        "Invoices.ID = InvoiceDetails.InvoiceID WHERE (" +
        Filters.charges + ") AND InvoiceDetails.EntryDate" + at +
        " AND InvoiceDetails.Status <> 'In Progress'");
    // Invoice adjustments lie on lines, whichever reading of payments.
    r -= sum("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal" +
             std::string(kAllocationJoins) + " WHERE InvoicePaymentAllocations.AppliedDate" + at +
             " AND " + InvoiceAdjustmentClass() + " AND (" + Filters.charges + ")");
    const std::string paid_classes =
        "(" + PaymentClass() + " OR (" + PaymentAdjustmentClass() + "))";
    if (byAllocatedPayment) {
      r -= sum("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal" +
               std::string(kAllocationJoins) + " WHERE InvoicePaymentAllocations.AppliedDate" +
               at + " AND " + paid_classes + " AND (" + Filters.charges + ")");
    } else {
      // Payments taken in by then: what was applied by then for the people
      // of the lines, and the rest for whoever took the payment in.
      r -= sum("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal" +
               std::string(kAllocationJoins) + " WHERE InvoicePayments.CheckDate" + at +
               " AND InvoicePaymentAllocations.AppliedDate" + at + " AND " + paid_classes +
               " AND (" + Filters.charges + ")");
      r -= sum(
          "SELECT SUM(InvoicePayments.Value - ISNULL((SELECT SUM(InvoicePaymentAllocations.Amount) "
          "FROM InvoicePaymentAllocations WHERE InvoicePaymentAllocations.InvoicePaymentID = "
          "InvoicePayments.ID AND InvoicePaymentAllocations.AppliedDate" +
          at +
          "), 0)) AS theTotal FROM InvoicePayments INNER JOIN PaymentTypes ON "
          "InvoicePayments.PaymentTypeID = PaymentTypes.ID WHERE (InvoicePayments.CheckDate" +
          at + ") AND " + paid_classes + " AND (" + Filters.taken_in + ")");
    }
    return r;
  };
  Opening = receivable("<", dtStart.ToIsoDate());
  Closing = receivable("<=", dtEnd.ToIsoDate());
}

void clsReports::srptSummaryAnalysis(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                     int16_t Byoption, std::string Title,
                                     bool byAllocatedPayment) {
  if (!closing::ValidView(Byoption)) {
    throw ReportError(kErrInvalidProcedureCall,
                      closing::BadViewMessage("srptSummaryAnalysis", Byoption));
  }
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  ProviderFilter = NoZeroFilter(ProviderFilter);
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();

  // "ID" in the filter becomes the person of the view: on the line by
  // provider (and by date, which has no person of its own and keeps the
  // chosen providers' work), on the invoice by overseer and doctor. Money
  // taken in is the provider's who took it in; by preferred doctor, the
  // doctor's of the paying patient. Interest is charged to the invoice's
  // provider. No filter means the whole practice: the condition is then
  // always true, so that every statement keeps one form.
  auto with = [&](const std::string& field) {
    return ProviderFilter.empty() ? std::string("1 = 1")
                                  : vb::Replace(ProviderFilter, "ID", field);
  };
  ReceivableFilters filters;
  filters.charges = with(Byoption == 1   ? "Invoices.OverseerID"
                         : Byoption == 2 ? "Invoices.DoctorID"
                                         : "InvoiceDetails.ProviderID");
  filters.taken_in =
      with(Byoption == 2
               ? "(SELECT DoctorID FROM Patient WHERE Patient.ID = InvoicePayments.PatientID)"
               : "InvoicePayments.InitialProviderID");
  const std::string interest_filter = with("Invoices.ProviderID");

  // Reads a per-day sum into `into`, added with `sign`.
  auto by_day = [&](const std::string& sql, const char* date_col, DayMap& into, int sign) {
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    while (!rs.Eof()) {
      const std::string day = cf.ReturnFormatedDate(rs[date_col].Value(), "yyyy-mm-dd");
      const Currency amount = cf.ReturnCur(rs["theTotal"].Value());
      into[day] += sign < 0 ? -amount : amount;
      rs.MoveNext();
    }
  };
  auto single = [&](const std::string& sql) {
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    return rs.Eof() ? Currency() : cf.ReturnCur(rs.Fields(0L).Value());
  };
  const std::string period_entry =
      " AND InvoiceDetails.EntryDate >= '" + start + "' AND InvoiceDetails.EntryDate <= '" + end +
      "' AND InvoiceDetails.Status <> 'In Progress' GROUP BY InvoiceDetails.EntryDate";

  // ---- The day columns ----
  DayMap fees, lab, invoice_adjustments, payments, payment_adjustments, reallocations;
  by_day("SELECT SUM(InvoiceDetails.Cost) as theTotal, InvoiceDetails.EntryDate FROM "
         "InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID WHERE (" +
             filters.charges + ")" + period_entry,
         "EntryDate", fees, 1);
  RaiseProgress(10);
  by_day("SELECT SUM(InvoiceDetails.Cost) as theTotal, InvoiceDetails.EntryDate FROM "
         "InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID WHERE "
         "((InvoiceDetails.Code like '99%') or (InvoiceDetails.Code like '-99%')) AND (" +
             filters.charges + ")" + period_entry,
         "EntryDate", lab, 1);
  RaiseProgress(20);
  const std::string applied_in_period = " WHERE InvoicePaymentAllocations.AppliedDate >= '" +
                                        start + "' AND InvoicePaymentAllocations.AppliedDate <= '" +
                                        end + "'";
  by_day("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal, "
         "InvoicePaymentAllocations.AppliedDate AS PDate" +
             std::string(kAllocationJoins) + applied_in_period + " AND " +
             InvoiceAdjustmentClass() + " AND (" + filters.charges +
             ") GROUP BY InvoicePaymentAllocations.AppliedDate",
         "PDate", invoice_adjustments, 1);
  RaiseProgress(30);

  // Payments and payment adjustments, by the reading of the report.
  auto payment_days = [&](const std::string& type_class, DayMap& into, DayMap* moved) {
    if (byAllocatedPayment) {
      by_day("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal, "
             "InvoicePaymentAllocations.AppliedDate AS PDate" +
                 std::string(kAllocationJoins) + applied_in_period + " AND " + type_class +
                 " AND (" + filters.charges + ") GROUP BY InvoicePaymentAllocations.AppliedDate",
             "PDate", into, 1);
      return;
    }
    const std::string cheque_in_period = " WHERE InvoicePayments.CheckDate >= '" + start +
                                         "' AND InvoicePayments.CheckDate <= '" + end + "'";
    // 1. On the cheque's day, what was applied by then, for the lines'
    //    people.
    by_day("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal, InvoicePayments.CheckDate "
           "AS PDate" +
               std::string(kAllocationJoins) + cheque_in_period +
               " AND InvoicePaymentAllocations.AppliedDate <= InvoicePayments.CheckDate AND " +
               type_class + " AND (" + filters.charges + ") GROUP BY InvoicePayments.CheckDate",
           "PDate", into, 1);
    // 2. On the cheque's day, the rest, for whoever took it in.
    by_day("SELECT SUM(InvoicePayments.Value - ISNULL((SELECT "
           "SUM(InvoicePaymentAllocations.Amount) FROM InvoicePaymentAllocations WHERE "
           "InvoicePaymentAllocations.InvoicePaymentID = InvoicePayments.ID AND "
           "InvoicePaymentAllocations.AppliedDate <= InvoicePayments.CheckDate), 0)) AS "
           "theTotal, InvoicePayments.CheckDate AS PDate FROM InvoicePayments INNER JOIN "
           "PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID" +
               cheque_in_period + " AND " + type_class + " AND (" + filters.taken_in +
               ") GROUP BY InvoicePayments.CheckDate",
           "PDate", into, 1);
    // 3. A credit applied after its cheque's day moves that day onto the
    //    line's person and away from whoever took it in.
    const std::string later = std::string(kAllocationJoins) + applied_in_period +
                              " AND InvoicePayments.CheckDate < "
                              "InvoicePaymentAllocations.AppliedDate AND " +
                              type_class;
    for (int side : {1, -1}) {
      const std::string sql =
          "SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal, "
          "InvoicePaymentAllocations.AppliedDate AS PDate" +
          later + " AND (" + (side > 0 ? filters.charges : filters.taken_in) +
          ") GROUP BY InvoicePaymentAllocations.AppliedDate";
      by_day(sql, "PDate", into, side);
      if (moved != nullptr) by_day(sql, "PDate", *moved, side);
    }
  };
  payment_days(PaymentClass(), payments, &reallocations);
  RaiseProgress(50);
  payment_days(PaymentAdjustmentClass(), payment_adjustments, nullptr);
  RaiseProgress(60);

  Currency opening, closing;
  srptOpeningReceivable(dtStart, dtEnd, filters, byAllocatedPayment, opening, closing);
  RaiseProgress(70);

  // ---- The day table ----
  auto money = [&](Currency c) { return cf.MyFormat(c, "Currency"); };
  std::set<std::string> days;
  for (const DayMap* m : {&fees, &lab, &invoice_adjustments, &payments, &payment_adjustments})
    for (const auto& [day, amount] : *m) days.insert(day);
  auto at = [](const DayMap& m, const std::string& day) {
    const auto it = m.find(day);
    return it == m.end() ? Currency() : it->second;
  };
  std::string body = "-|-|-|-|-|-|-|-|" + money(opening) + ";";
  Currency receivable = opening;
  Currency dental_sum, lab_sum, invoice_adjustment_sum, fee_sum, payment_sum,
      payment_adjustment_sum, payment_total_sum;
  for (const std::string& day : days) {
    const Currency lab_fee = at(lab, day);
    const Currency dental = at(fees, day) - lab_fee;
    const Currency invoice_adjustment = at(invoice_adjustments, day);
    const Currency paid = at(payments, day);
    const Currency paid_adjustment = at(payment_adjustments, day);
    // A day whose sums all come to nothing prints no row.
    if (dental.IsZero() && lab_fee.IsZero() && invoice_adjustment.IsZero() && paid.IsZero() &&
        paid_adjustment.IsZero()) {
      continue;
    }
    receivable += dental + lab_fee - invoice_adjustment - paid - paid_adjustment;
    body += cf.ReturnFormatedDate(Variant(CDate(Variant(day))), "mm/dd/yyyy") + "|" +
            money(dental) + "|" + money(lab_fee) + "|" + money(invoice_adjustment) + "|" +
            money(dental + lab_fee - invoice_adjustment) + "|" + money(paid) + "|" +
            money(paid_adjustment) + "|" + money(paid + paid_adjustment) + "|" +
            money(receivable) + ";";
    dental_sum += dental;
    lab_sum += lab_fee;
    invoice_adjustment_sum += invoice_adjustment;
    fee_sum += dental + lab_fee - invoice_adjustment;
    payment_sum += paid;
    payment_adjustment_sum += paid_adjustment;
    payment_total_sum += paid + paid_adjustment;
  }
  // The adjustment totals are shown by their size, whatever sign the types
  // store them with.
  body += "Total|" + money(dental_sum) + "|" + money(lab_sum) + "|" +
          money(Abs(invoice_adjustment_sum)) + "|" + money(fee_sum) + "|" + money(payment_sum) +
          "|" + money(Abs(payment_adjustment_sum)) + "|" + money(payment_total_sum) + "|" +
          money(receivable) + ";";

  vsp.TextAlign(0);
  vsp.FontBold(true);
  vsp.FontSize(11);
  vsp.Text(Title);
  // The title names the day table below: never alone at a page's foot.
  vsp.KeepWithNext();
  vsp.FontSize(8);
  vsp.FontBold(false);
  vsp.StartTable();
  vsp.AddTable("1in|>.8in|>.8in|>.8in|>.8in|>.8in|>.8in|>.9in|>.8in",
               byAllocatedPayment
                   ? "Entry Date|Dental Fee($)|Lab Fee($)|Inv. Adj.($)|Total Fee($)|Applied "
                     "Pmts($)|Pmt. Adj.($)|Pmt. Total($)|New A/R($)"
                   : "Entry Date|Dental Fee($)|Lab Fee($)|Inv. Adj.($)|Total Fee($)|Payments($)|"
                     "Pmt. Adj.($)|Pmt. Total($)|New A/R($)",
               body, kHeaderColor);
  const int rows = static_cast<int>(vsp.TableCell(frame::tcRows).Number());
  vsp.TableCell(frame::tcFontBold, rows, 1, rows, 9) = true;
  vsp.TableCell(frame::tcRowBorderAbove, rows, 1, rows, 9) = 1;
  vsp.EndTable();
  RaiseProgress(80);

  // ---- Adjustments by type ----
  // Per type, what was applied in the period, and what was entered in the
  // period without being applied to anything.
  DayMap by_type;  // keyed by PaymentTypes.ID
  {
    db::Recordset rs =
        Open("SELECT SUM(InvoicePaymentAllocations.Amount) AS theTotal, PaymentTypeID" +
                 std::string(kAllocationJoins) + applied_in_period + " AND (" + filters.charges +
                 ") GROUP BY PaymentTypeID",
             db::adOpenForwardOnly);
    while (!rs.Eof()) {
      by_type[CStr(Variant(cf.ReturnVal(rs["PaymentTypeID"].Value())))] +=
          cf.ReturnCur(rs["theTotal"].Value());
      rs.MoveNext();
    }
    db::Recordset un = Open(
        " SELECT SUM(InvoicePayments.Value) AS theTotal, PaymentTypeID FROM InvoicePayments"
        " LEFT OUTER JOIN InvoicePaymentDetails ON InvoicePayments.ID = "
        "InvoicePaymentDetails.InvoicePaymentID"
        " WHERE InvoicePaymentDetails.ID IS NULL AND InvoicePayments.Date >= '" +
            start + "' AND InvoicePayments.Date <= '" + end + "' AND (" + filters.taken_in +
            ") GROUP BY PaymentTypeID",
        db::adOpenForwardOnly);
    while (!un.Eof()) {
      by_type[CStr(Variant(cf.ReturnVal(un["PaymentTypeID"].Value())))] +=
          cf.ReturnCur(un["theTotal"].Value());
      un.MoveNext();
    }
  }
  Currency write_offs, payment_reversals, refunds;
  std::string list;
  {
    db::Recordset types = Open("SELECT * FROM PaymentTypes WHERE " +
                                   SqlSet("[Adjustment?]") + " OR " + SqlSet("RecAfterDep") +
                                   " ORDER BY Name",
                               db::adOpenForwardOnly);
    while (!types.Eof()) {
      const std::string id = CStr(Variant(cf.ReturnVal(types["ID"].Value())));
      const Currency amount = at(by_type, id);
      if (!amount.IsZero()) {
        list += frame::EscapeCell(cf.returnStr(types["Name"].Value())) + "|" +
                (FlagSet(types["ToTotalPaid?"].Value()) ? "Payment Adj." : "Invoice Adj.") +
                "|" + frame::EscapeCell(cf.returnStr(types["Description"].Value())) + "|" +
                money(amount) + ";";
        if (FlagSet(types["OfficePayment"].Value())) write_offs += amount;
        if (FlagSet(types["RecAfterDep"].Value())) payment_reversals += amount;
        if (FlagSet(types["Refund"].Value())) refunds += amount;
      }
      types.MoveNext();
    }
  }
  vsp.CurrentY(vsp.CurrentY() + Twips(200));
  vsp.AddTable("1.2in|1in|2.55in|>1.2in",
               "Adjustment Name|Payment Type|Adjustment Description|Adjustment Amount", list,
               kHeaderColor);
  RaiseProgress(90);

  // ---- Totals ----
  // Interest: what was charged in the period on overdue accounts, less what
  // of it is still owed at the end of the period, is what was collected.
  const std::string interest_from =
      " FROM Invoices INNER JOIN Invoices InvoiceLookup On Invoices.InterestInvoiceID = "
      "InvoiceLookup.ID WHERE (" +
      interest_filter + ") AND Invoices.[Date] >= '" + start + "' AND Invoices.[Date] <= '" +
      end + "' AND Invoices.ChargeInterest = 1";
  const Currency interest_charged =
      single("SELECT SUM(Invoices.InvoiceTotal) AS InvoiceTotal" + interest_from);
  const Currency interest_owed = single(
      "SELECT SUM(Invoices.InvoiceTotal - ISNULL((SELECT SUM(InvoicePaymentDetails.Amount) FROM "
      "InvoicePaymentDetails WHERE InvoicePaymentDetails.InvoiceID = Invoices.ID AND "
      "InvoicePaymentDetails.[Date] <= '" +
      end + "'), 0)) AS InvoiceTotal" + interest_from);
  const Currency reversals = single(
      "SELECT SUM(InvoiceDetails.Cost) AS theTotal FROM InvoiceDetails INNER JOIN Invoices ON "
      "InvoiceDetails.InvoiceID = Invoices.ID WHERE Invoices.Cancelled = 1 AND "
      "Invoices.CancellationDate >= '" +
      start + "' AND Invoices.CancellationDate <= '" + end +
      "' AND InvoiceDetails.Status <> 'In Progress' AND (" + filters.charges + ")");
  Currency moved;
  for (const auto& [day, amount] : reallocations) moved += amount;

  // The fees count cancelled lines as entered; the reversals take them
  // back. Invoice adjustments other than write-offs are the day table's
  // invoice adjustments less the write-offs among them.
  const Currency subtotal = dental_sum + lab_sum - Abs(reversals);
  const Currency other_adjustments = invoice_adjustment_sum - write_offs;
  const Currency total_fees = subtotal - Abs(write_offs) - Abs(other_adjustments);
  // Gross payments hold the money moved onto (or away from) the selection
  // after its cheque's day; the net leaves it out again, with the reversals
  // and refunds, so that it is what the selection took in. The reallocation
  // keeps its sign: positive when money came to the selection.
  const Currency net_payments =
      payment_sum - Abs(payment_reversals) - moved - Abs(refunds);

  vsp.CurrentY(vsp.CurrentY() + Twips(200));
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text("Interest Collected on Behalf of the Practice: " +
           money(interest_charged - interest_owed));
  vsp.FontBold(false);
  vsp.AddTable("<2in|>1in", "",
               "Total Dental Fee|" + money(dental_sum) + ";Total Lab Fee|" + money(lab_sum) +
                   ";Total Invoice Reversals|" + money(Abs(reversals)) + ";Total SubTotal|" +
                   money(subtotal) + ";Total Write Offs|" + money(Abs(write_offs)) +
                   ";Total Fees|" + money(total_fees) + ";Gross Payments|" + money(payment_sum) +
                   ";Payment Reversals|" + money(Abs(payment_reversals)) +
                   ";Payment Reallocations|" + money(moved) + ";Refunds|" +
                   money(Abs(refunds)) + ";Net Payments|" + money(net_payments) + ";",
               kHeaderColor);
  vsp.FontSize(10);
  RaiseProgress(100);
}

}  // namespace orv
