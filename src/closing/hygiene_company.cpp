// The hygiene company report: for offices that lease their hygiene to a
// company, what each hygienist billed and collected, and how much of it
// falls under the office's hygiene company codes, with the receivable of
// both at the start and at the end of the period.
#include <cstdlib>
#include <map>
#include <optional>
#include <stdexcept>
#include <vector>

#include "closing/closing_common.h"
#include "closing/code_ranges.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "common/report_math.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"

namespace orv {

namespace {

constexpr const char* kNoCodesMessage =
    "You must setup the codes you wish to use for your hygiene company before you can run this "
    "report.\nTo do so go to Office Setup and click on the Hygiene Company tab and add the codes "
    "you wish to use.";

// The office's hygiene company codes as one condition on InvoiceDetails.Code
// (ranges joined by OR), or nothing when the office has none. A range whose
// codes are not fee codes stops the report with a message naming it.
std::optional<std::string> HygieneCodeCondition(clsReports& r, int32_t office) {
  clsCommonFunctions& cf = r.Common();
  db::Recordset rs = r.Open("Select * from OfficeHygieneCompanyCodes WHERE OfficeID = " +
                                std::to_string(office),
                            db::adOpenForwardOnly);
  std::string condition;
  while (!rs.Eof()) {
    const closing::CodeRange range = closing::NormaliseCodeRange(
        cf.returnStr(rs["Startcode"].Value()), cf.returnStr(rs["EndCode"].Value()));
    if (!condition.empty()) condition += " OR ";
    condition += closing::CodeRangeCondition("InvoiceDetails.Code", range);
    rs.MoveNext();
  }
  rs.Close();
  if (condition.empty()) return std::nullopt;
  return condition;
}

// The company's part of a payment on an invoice: the payment times the
// invoice's hygiene lines over its total. It is rounded to the cent (half
// away from zero) where it is worked out, per payment and invoice, so that
// the breakdown by payment type adds up to the hygienists' column exactly.
// An invoice without a total gives the company nothing.
Currency ShareOf(Currency amount, Currency part, Currency whole) {
  if (whole.IsZero() || part.IsZero() || amount.IsZero()) return Currency();
  const __int128 num = static_cast<__int128>(amount.raw()) * part.raw();
  const __int128 den = whole.raw();
  // Raw units are ten-thousandths; a cent is 100 of them.
  const __int128 cents_num = num;
  const __int128 cents_den = den * 100;
  __int128 q = cents_num / cents_den;
  __int128 rem = cents_num % cents_den;
  if (rem < 0) rem = -rem;
  const __int128 abs_den = cents_den < 0 ? -cents_den : cents_den;
  if (rem * 2 >= abs_den) q += ((cents_num < 0) != (cents_den < 0)) ? -1 : 1;
  return Currency::FromRaw(static_cast<int64_t>(q * 100));
}


}  // namespace

void clsReports::srptHygieneCompanyReport(DateTime dtStart, DateTime dtEnd,
                                          std::string txtfilter) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An Error has occurred in Sub srptHygieneCompanyReport in Class clsReports.", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    txtfilter = NoZeroFilter(txtfilter);

    // 1-2. The office's codes; without them nothing prints.
    const std::optional<std::string> codes = HygieneCodeCondition(*this, OfficeID);
    if (!codes) {
      Host().MsgBox(kNoCodesMessage, host::vbOKOnly, "");
      return;
    }

    // 3. The hygienists; without a filter, every hygienist (type 5).
    db::Recordset people = Open("Select * from Employees WHERE " +
                                (txtfilter.empty() ? std::string("TypeID = 5") : txtfilter) +
                                " ORDER BY LastName");
    // Payment types by ID, whatever the IDs are.
    std::map<int32_t, Currency> by_type;

    const std::string start = dtStart.ToIsoDate();
    const std::string end = dtEnd.ToIsoDate();
    Currency open_all, open_company, t_billing, t_applied, t_hyg_billing, t_hyg_applied;
    std::string body;
    while (!people.Eof()) {
      const std::string id = std::to_string(static_cast<int32_t>(cf.ReturnVal(people["ID"].Value())));
      // Each hygienist is read on a connection of its own, which is the
      // run's connection: one snapshot for the whole report.
      int32_t location = 3;
      db::Connection c = ReturnConnection(location);

      // 4-5. The hygienist's complete invoices up to the end: what each
      // billed, what of it falls under the company's codes, and its total
      // (the base of the company's share of its payments).
      //
      // The receivable at the start counts every invoice dated before it,
      // whether paid off since or not: left out, an invoice paid during the
      // period would have its payments in the period but not its balance at
      // the start, and the closing would not follow from the opening.
      struct Invoice {
        bool before = false;
        Currency hygiene, total;
      };
      std::map<int32_t, Invoice> invoices;
      Currency billed_open, hyg_open, billed_period, hyg_period;
      db::Recordset inv;
      inv.Open(
          "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, SUM(InvoiceDetails.Cost) "
          "AS Billed, SUM(CASE WHEN (" +
              *codes +
              ") AND InvoiceDetails.Status <> 'In Progress' THEN InvoiceDetails.Cost ELSE 0 END) "
              "AS Hygiene FROM Invoices INNER JOIN InvoiceDetails ON Invoices.ID = "
              "InvoiceDetails.InvoiceID WHERE Invoices.ProviderID = " +
              id + " AND [Complete?] <> 0 AND Invoices.[Date] <= '" + end +
              "' GROUP BY Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal",
          c, db::adOpenForwardOnly, db::adLockReadOnly, db::adCmdText);
      while (!inv.Eof()) {
        Invoice i;
        i.before = CDate(inv["Date"].Value()).DatePart() < dtStart.DatePart();
        i.hygiene = cf.ReturnCur(inv["Hygiene"].Value());
        i.total = cf.ReturnCur(inv["InvoiceTotal"].Value());
        const Currency billed = cf.ReturnCur(inv["Billed"].Value());
        (i.before ? billed_open : billed_period) += billed;
        (i.before ? hyg_open : hyg_period) += i.hygiene;
        invoices[static_cast<int32_t>(cf.ReturnVal(inv["ID"].Value()))] = i;
        inv.MoveNext();
      }
      inv.Close();

      // What was applied to those invoices by the end, split into
      // write-offs (adjustments that are not money paid) and payments
      // (money, or adjustments that count as paid). A payment cancelled
      // before the start never counts.
      Currency wo_open, paid_open, wo_period, paid_period;
      Currency wo_open_share, paid_open_share, wo_period_share, paid_period_share;
      db::Recordset pay;
      pay.Open(
          "SELECT InvoicePaymentDetails.InvoiceID, InvoicePayments.PaymentTypeID, "
          "PaymentTypes.[Adjustment?] AS Adjustment, PaymentTypes.[ToTotalPaid?] AS ToTotalPaid, "
          "InvoicePaymentDetails.[Date] AS Applied, InvoicePaymentDetails.Amount FROM Invoices "
          "INNER JOIN InvoicePaymentDetails ON Invoices.ID = InvoicePaymentDetails.InvoiceID "
          "INNER JOIN InvoicePayments ON InvoicePayments.ID = "
          "InvoicePaymentDetails.InvoicePaymentID INNER JOIN PaymentTypes ON PaymentTypes.ID = "
          "InvoicePayments.PaymentTypeID WHERE Invoices.ProviderID = " +
              id + " AND [Complete?] <> 0 AND Invoices.[Date] <= '" + end +
              "' AND InvoicePaymentDetails.[Date] <= '" + end +
              "' AND (InvoicePayments.CancellationDate IS NULL OR "
              "InvoicePayments.CancellationDate > '" +
              start + "')",
          c, db::adOpenForwardOnly, db::adLockReadOnly, db::adCmdText);
      while (!pay.Eof()) {
        // NULL flags take no side, as "= 0" and "<> 0" both fail on them.
        const Variant adj = pay["Adjustment"].Value();
        const Variant to_paid = pay["ToTotalPaid"].Value();
        const bool adj_null = adj.IsNull();
        const bool is_adj = !adj_null && cf.ReturnVal(adj) != 0;
        const bool write_off = is_adj && !to_paid.IsNull() && cf.ReturnVal(to_paid) == 0;
        const bool paid =
            (!adj_null && !is_adj) || (is_adj && !to_paid.IsNull() && cf.ReturnVal(to_paid) != 0);
        const Currency amount = cf.ReturnCur(pay["Amount"].Value());
        const Invoice& i = invoices[static_cast<int32_t>(cf.ReturnVal(pay["InvoiceID"].Value()))];
        const Currency share = ShareOf(amount, i.hygiene, i.total);
        const bool before = CDate(pay["Applied"].Value()).DatePart() < dtStart.DatePart();
        if (write_off) {
          (before ? wo_open : wo_period) += amount;
          (before ? wo_open_share : wo_period_share) += share;
        } else if (paid) {
          (before ? paid_open : paid_period) += amount;
          (before ? paid_open_share : paid_period_share) += share;
          if (!before) {
            by_type[static_cast<int32_t>(cf.ReturnVal(pay["PaymentTypeID"].Value()))] += share;
          }
        }
        pay.MoveNext();
      }
      pay.Close();

      // Write-offs lower what is owed whatever sign they are stored with
      // (adjustments are kept negative).
      open_all += billed_open - closing::Abs(wo_open) - paid_open;
      open_company += hyg_open - closing::Abs(wo_open_share) - paid_open_share;
      const Currency net_billing = billed_period - closing::Abs(wo_period);
      const Currency hyg_billing = hyg_period - closing::Abs(wo_period_share);
      body += frame::EscapeCell(cf.returnStr(people["FullName"].Value())) + "|" +
              Format(Variant(net_billing), "Currency") + "|" +
              Format(Variant(paid_period), "Currency") + "|" +
              Format(Variant(hyg_billing), "Currency") + "|" +
              Format(Variant(paid_period_share), "Currency") + "|" +
              Format(Variant(net_billing - hyg_billing), "Currency") + "|" +
              Format(Variant(paid_period - paid_period_share), "Currency") + ";";
      t_billing += net_billing;
      t_applied += paid_period;
      t_hyg_billing += hyg_billing;
      t_hyg_applied += paid_period_share;
      RaiseProgress(people);
      Host().DoEvents();
      people.MoveNext();
    }
    const bool any = people.RecordCount() > 0;
    people.Close();

    auto line = [&](const std::string& text) {
      vsp.FontBold(true);
      vsp.TextAlign(0);
      vsp.Text(text);
      vsp.FontBold(false);
    };
    line("Opening AR From Selected Hygienists: " + Format(Variant(open_all), "Currency"));
    line("Opening AR From Hygiene Company : " + Format(Variant(open_company), "Currency"));
    if (any) {
      body += "Overall|" + Format(Variant(t_billing), "Currency") + "|" +
              Format(Variant(t_applied), "Currency") + "|" +
              Format(Variant(t_hyg_billing), "Currency") + "|" +
              Format(Variant(t_hyg_applied), "Currency") + "|" +
              Format(Variant(t_billing - t_hyg_billing), "Currency") + "|" +
              Format(Variant(t_applied - t_hyg_applied), "Currency") + ";";
      vsp.AddTable("<1.8in|>.9in|>.9in|>.9in|>.9in|>.9in|>.9in",
                   "Name|Net Billing|Net Applied Pymts|Hyg. Billing|Hyg. Applied Pymts|Billing "
                   "Diff.|Applied Pymts Diff.",
                   body, kHeaderColor);
    }
    // 6. The closing receivable: the opening plus what the period billed
    // less what it collected.
    line("Closing AR From Selected Hygienists: " +
         Format(Variant(open_all + t_billing - t_applied), "Currency"));
    line("Closing AR From Hygiene Company : " +
         Format(Variant(open_company + t_hyg_billing - t_hyg_applied), "Currency"));
    if (!any) return;

    // 7. The company's payments by payment type.
    line("Breakdown of the Hygiene applied payments:");
    db::Recordset types = Open("Select id, name from PaymentTypes order by id");
    std::string rows;
    Currency total;
    while (!types.Eof()) {
      const int32_t type = static_cast<int32_t>(cf.ReturnVal(types["id"].Value()));
      const Currency amount = by_type.count(type) ? by_type[type] : Currency();
      rows += frame::EscapeCell(cf.returnStr(types["name"].Value())) + "|" +
              Format(Variant(amount), "Currency") + ";";
      total += amount;
      types.MoveNext();
    }
    types.Close();
    rows += "Total|" + Format(Variant(total), "Currency") + ";";
    vsp.AddTable("<1.8in|>0.9in", "Payment Type|Payments Applied", rows, kHeaderColor);
  });
}

void clsReports::rptHygieneCompanyReport(DateTime dtStart, DateTime dtEnd, std::string txtfilter,
                                         std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  // Without codes there is nothing to report: the message, and no document.
  bool has_codes = false;
  try {
    has_codes = HygieneCodeCondition(*this, OfficeID).has_value();
  } catch (const std::exception& e) {
    Host().MsgBox(std::string("An error has occurred in Sub rptHygieneCompanyReport in object "
                              "clsReports\n") +
                      e.what(),
                  host::vbOKOnly, "");
    return;
  }
  if (!has_codes) {
    Host().MsgBox(kNoCodesMessage, host::vbOKOnly, "");
    return;
  }
  if (dtEnd.DatePart() < dtStart.DatePart()) {
    Host().MsgBox("The period ends (" + Format(Variant(dtEnd), "mmm/dd/yyyy") +
                      ") before it starts (" + Format(Variant(dtStart), "mmm/dd/yyyy") + ").",
                  host::vbOKOnly, "");
    return;
  }
  Trap("An error has occurred in Sub rptHygieneCompanyReport in object clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    Host().SetMousePointer(11);
    Host().DoEvents();
    // The table is 7.2 inches wide: across the page.
    vsp.Orientation(1);
    vsp.DocName("Hygiene Company Report");
    vsp.StartDoc();
    PrintReportHeading(vsp.DocName(), UserName,
                       Format(Variant(dtStart), "mmm/dd/yyyy") + " To " +
                           Format(Variant(dtEnd), "mmm/dd/yyyy"));
    vsp.TextAlign(1);
    vsp.FontBold(false);
    vsp.FontSize(10);
    srptHygieneCompanyReport(dtStart, dtEnd, txtfilter);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
    Host().SetMousePointer(0);
  });
}

}  // namespace orv
