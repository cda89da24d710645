// The production summary of the closing packages: per provider the fees,
// the lab fees, the invoice adjustments and the write-offs of the period,
// with a subtotal and a total.
#include <map>
#include <utility>
#include <vector>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/report_math.h"
#include "common/vbstrings.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/host/settings.h"

namespace orv {

void clsReports::srptProductionSummary(DateTime dtStart, DateTime dtEnd,
                                       std::string ProviderFilter, int16_t Byoption) {
  // A view outside 0-3 names nobody: refused before anything is drawn.
  if (!closing::ValidView(Byoption)) {
    throw ReportError(kErrInvalidProcedureCall,
                      closing::BadViewMessage("srptProductionSummary", Byoption));
  }
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  ProviderFilter = NoZeroFilter(ProviderFilter);
  vsp.TableBorder(static_cast<int>(
      vb::Val(host::AppSettings().Get("Settings", "TableBorder", "3"))));

  // Whose figures a row holds: the invoice's provider, overseer or
  // preferred doctor. The by-date view (3) is the provider's, read by
  // treatment date rather than entry date.
  const char* field = Byoption == 1   ? "Invoices.OverseerID"
                      : Byoption == 2 ? "Invoices.DoctorID"
                                      : "Invoices.ProviderID";
  const char* day_column = Byoption == 3 ? "InvoiceDetails.[Date]" : "InvoiceDetails.EntryDate";

  // The people: the ids of the filter ("ID = 3 OR ID = 5"), in its order.
  // Without a filter, every employee, and only those with a figure print.
  std::vector<int32_t> ids;
  const bool everyone = ProviderFilter.empty();
  if (everyone) {
    db::Recordset all = Open("SELECT ID FROM Employees ORDER BY LastName, FirstName");
    while (!all.Eof()) {
      ids.push_back(static_cast<int32_t>(cf.ReturnVal(all["ID"].Value())));
      all.MoveNext();
    }
  } else {
    // Each " OR " part holds one id after its "="; "or" in any case.
    const std::string upper = vb::UCase(ProviderFilter);
    size_t from = 0;
    while (from <= ProviderFilter.size()) {
      size_t at = upper.find(" OR ", from);
      if (at == std::string::npos) at = ProviderFilter.size();
      const std::string part = ProviderFilter.substr(from, at - from);
      const size_t eq = part.find('=');
      if (eq != std::string::npos) {
        ids.push_back(static_cast<int32_t>(cf.ReturnVal(Variant(part.substr(eq + 1)))));
      }
      from = at + 4;
    }
  }

  // The period is summed at once rather than day by day: each day's test
  // is "= day" on dates held at midnight, and the days of the period add
  // up to the period.
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  const std::string in_period = std::string(day_column) + " >= '" + start + "' AND " +
                                day_column + " <= '" + end + "'";
  auto money = [](Currency c) { return Format(Variant(c), "Currency"); };

  // Each cell is read for everybody at once, grouped by the person, rather
  // than once per person: the allocation cells scan the period's
  // allocations, and a practice has many people.
  auto by_person = [&](const std::string& sql, const char* key_column = nullptr) {
    std::map<std::pair<int32_t, int>, Currency> sums;
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    while (!rs.Eof()) {
      const int key = key_column ? static_cast<int>(cf.ReturnVal(rs[key_column].Value())) : 0;
      sums[{static_cast<int32_t>(cf.ReturnVal(rs["PersonID"].Value())), key}] +=
          cf.ReturnCur(rs["theTotal"].Value());
      rs.MoveNext();
    }
    rs.Close();
    return sums;
  };
  const std::string person = std::string(field) + " AS PersonID";
  auto lab_sums = by_person(
      "SELECT " + person + ", SUM(InvoiceDetails.Cost) AS theTotal FROM InvoiceDetails INNER "
      "JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID WHERE ((InvoiceDetails.Code like "
      "'99%') or (InvoiceDetails.Code like '-99%')) AND " +
      in_period + " AND InvoiceDetails.Status <> 'In Progress' GROUP BY " + field);
  // The fee query has no Status test, unlike the lab one: lines still in
  // progress are in the fee. This is the figure the closing packages have
  // always printed, and the incomplete-invoice report lists that work.
  auto fee_sums = by_person("SELECT " + person +
                            ", SUM(InvoiceDetails.Cost) as theTotal FROM InvoiceDetails INNER "
                            "JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID WHERE " +
                            in_period + " GROUP BY " + field);
  // Invoice adjustments (OfficePayment 0) and write-offs (1) in one read.
  auto adjustment_sums = by_person(
      "SELECT " + person +
          ", PaymentTypes.OfficePayment AS Office, SUM(InvoicePaymentAllocations.Amount) AS "
          "theTotal FROM InvoicePayments INNER JOIN InvoicePaymentAllocations ON "
          "InvoicePayments.ID = InvoicePaymentAllocations.InvoicePaymentID INNER JOIN "
          "PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN "
          "InvoiceDetails ON InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID INNER "
          "JOIN Invoices ON Invoices.ID = InvoiceDetails.InvoiceID WHERE "
          "(InvoicePaymentAllocations.AppliedDate >= '" +
          start + "' AND InvoicePaymentAllocations.AppliedDate <= '" + end +
          "') and [Adjustment?] = 1 AND [ToTotalPaid?] = 0 AND (OfficePayment = 0 OR "
          "OfficePayment = 1) GROUP BY " +
          field + ", PaymentTypes.OfficePayment",
      "Office");
  auto cell = [](std::map<std::pair<int32_t, int>, Currency>& sums, int32_t id, int key = 0) {
    auto it = sums.find({id, key});
    return it == sums.end() ? Currency() : it->second;
  };

  Currency t_fee, t_lab, t_adjust, t_sub, t_write_off, t_total;
  std::string body;
  long done = 0;
  for (int32_t id : ids) {
    const Currency lab = cell(lab_sums, id);
    const Currency fee = cell(fee_sums, id) - lab;
    const Currency adjustment = cell(adjustment_sums, id, 0);
    const Currency write_off = cell(adjustment_sums, id, 1);
    // Adjustments and write-offs are subtracted as stored. They are stored
    // negative, so a stored -20.00 adjustment raises the subtotal by 20.00;
    // the analysis reports take absolute values, this one never has.
    const Currency subtotal = fee + lab - adjustment;
    const Currency total = subtotal - write_off;
    ++done;
    RaiseProgress(ProgressPercent(done, static_cast<long>(ids.size())));
    if (everyone && fee.IsZero() && lab.IsZero() && adjustment.IsZero() && write_off.IsZero()) {
      continue;
    }
    // A provider without a title still has a name.
    db::Recordset person = Open(
        "SELECT ISNULL([Professional Title] + ' ', '') + FirstName + ' ' + LastName AS "
        "ProviderName FROM Employees WHERE ID = " +
            std::to_string(id),
        db::adOpenForwardOnly);
    const std::string name = person.Eof() ? "" : cf.returnStr(person["ProviderName"].Value());
    person.Close();
    body += frame::EscapeCell(vb::Trim(name)) + "|" + money(fee) + "|" + money(lab) +
            "|" + money(adjustment) + "|" + money(subtotal) + "|" + money(write_off) + "|" +
            money(total) + ";";
    t_fee += fee;
    t_lab += lab;
    t_adjust += adjustment;
    t_sub += subtotal;
    t_write_off += write_off;
    t_total += total;
  }
  body += "Total|" + money(t_fee) + "|" + money(t_lab) + "|" + money(t_adjust) + "|" +
          money(t_sub) + "|" + money(t_write_off) + "|" + money(t_total) + ";";
  vsp.AddTable("<1.5in|>1in|>1in|>1in|>1in|>1in|>1in",
               "Doctor|Fee($)|Lab($)|Adjustment($)|SubTotal($)|Write Off($)|Total($)", body,
               kHeaderColor);
}

}  // namespace orv
