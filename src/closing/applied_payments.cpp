// Applied payments: what each provider (or overseer, or preferred doctor)
// collected in a period, counted on the day the money was applied to an
// invoice, and the stand-alone income-by-provider report around it.
#include <string>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

void clsReports::srptAppliedPayments(DateTime dtStart, DateTime dtEnd, std::string ProviderFilter,
                                     int16_t Byoption) {
  if (!closing::ValidView(Byoption)) {
    throw ReportError(kErrInvalidProcedureCall,
                      closing::BadViewMessage("srptAppliedPayments", Byoption));
  }
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An Error has occured in sub srptAppliedPayments in class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    ProviderFilter = NoZeroFilter(ProviderFilter);
    const std::string start = dtStart.ToIsoDate();
    const std::string end = dtEnd.ToIsoDate();

    // The filter names its people by "ProviderID", as the closing runs
    // build it; on the staff table the same people are their "ID". An
    // empty filter (or "0") takes every member of staff. The date view has
    // no person of its own and reads the invoice's provider.
    const char* field = Byoption == 1 ? "OverseerID" : Byoption == 2 ? "DoctorID" : "ProviderID";
    const char* title = Byoption == 1   ? "Applied Payments by Overseer"
                        : Byoption == 2 ? "Applied Payments by Preferred Doctor"
                                        : "Applied Payments by Provider";
    const char* label = Byoption == 1   ? "By Overseer"
                        : Byoption == 2 ? "By Preferred Doctor"
                        : Byoption == 3 ? "By Date"
                                        : "By Provider";
    std::string people_sql = "Select * from Employees";
    if (!ProviderFilter.empty()) {
      people_sql += " where " + vb::Replace(ProviderFilter, "ProviderID", "ID");
    }
    people_sql += " ORDER BY LastName, FirstName";

    vsp.TextAlign(7);
    vsp.FontBold(true);
    vsp.FontSize(12);
    // The title and its label introduce the first person's money: never
    // alone at a page's foot.
    vsp.Text(title);
    vsp.KeepWithNext();
    vsp.FontSize(10);
    vsp.Text(label);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.TextAlign(0);

    db::Recordset people = Open(people_sql);
    long items = 0;
    Currency grand;
    while (!people.Eof()) {
      const std::string id = CStr(Variant(cf.ReturnVal(people["ID"].Value())));
      // The day of applying decides; the payment must have been entered by
      // the end of the period. Credits not yet applied have no row here.
      // A NULL [Adjustment?] is a plain payment.
      db::Recordset rs = Open(
          "SELECT Invoices.[Invoice#], InvoicePaymentDetails.[Date] AS AppliedOn, "
          "InvoicePayments.CheckDate, InvoicePayments.PaymentName, InvoicePaymentDetails.Amount "
          "as AppliedAmount, PaymentTypes.Name AS PaymentType FROM InvoicePaymentDetails INNER "
          "JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID INNER JOIN "
          "InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID INNER "
          "JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID WHERE Invoices." +
              std::string(field) + " = " + id + " AND InvoicePaymentDetails.[Date] <= '" + end +
              "' AND InvoicePaymentDetails.[Date] >= '" + start +
              "' AND InvoicePayments.[Date] <= '" + end +
              "' AND (ISNULL([Adjustment?], 0) = 0 OR (ISNULL([Adjustment?], 0) <> 0 AND "
              "ISNULL([ToTotalPaid?], 0) <> 0)) ORDER BY InvoicePaymentDetails.[Date]",
          db::adOpenForwardOnly);
      std::string body;
      long count = 0;
      Currency sum;
      while (!rs.Eof()) {
        const Currency amount = cf.ReturnCur(rs["AppliedAmount"].Value());
        body += frame::EscapeCell(cf.returnStr(rs["PaymentType"].Value())) + "|" +
                cf.ReturnFormatedDate(rs["CheckDate"].Value(), "mmm/dd/yyyy") + "|" +
                cf.ReturnFormatedDate(rs["AppliedOn"].Value(), "mmm/dd/yyyy") + "|" +
                frame::EscapeCell(cf.returnStr(rs["PaymentName"].Value())) + "|" +
                frame::EscapeCell(cf.returnStr(rs["Invoice#"].Value())) + "|" +
                cf.MyFormat(amount, "Currency") + ";";
        ++count;
        sum += amount;
        rs.MoveNext();
      }
      // A person with nothing applied in the period is left out, so that
      // the list shows the people who collected money.
      if (count > 0) {
        vsp.FontBold(true);
        // The name heads its table, and the table's last row carries its
        // count and sum below it: each stays on the page of what it belongs to.
        vsp.AddTable("<!3in", "", frame::EscapeCell(cf.returnStr(people["FullName"].Value())),
                     0);
        vsp.KeepWithNext();
        vsp.FontBold(false);
        vsp.FontSize(8);
        vsp.AddTable("<1.5in|^.9in|^.9in|<2.6in|^.8in|>.8in",
                     "Type|Pymt. Date|Applied On|Name on Payment|Invoice#|Amount($)", body,
                     kHeaderColor);
        vsp.KeepWithNext();
        vsp.FontSize(10);
        vsp.AddTable("<4in|^2.5in|>1in", "",
                     "|Total Items: " + std::to_string(count) + "|" +
                         cf.MyFormat(sum, "Currency"),
                     0);
        vsp.CurrentY(vsp.CurrentY() + Twips(150));
        items += count;
        grand += sum;
      }
      RaiseProgress(people);
      Host().DoEvents();
      people.MoveNext();
    }
    vsp.FontBold(true);
    vsp.AddTable("<3.5in|^2in|>2in", "",
                 "Grand Totals($)|# of Payment Items: " + std::to_string(items) + "|" +
                     cf.MyFormat(grand, "Currency"),
                 0);
    vsp.FontBold(false);
    vsp.CurrentY(vsp.CurrentY() + Twips(150));
    vsp.FontSize(8);
    vsp.Text(
        "Note: This Report show payments on the day that they were applied on. It does not "
        "include credits until the time that they are applied to invoices on the payment "
        "screen.");
    vsp.FontSize(10);
  });
}

void clsReports::rptIncomeByProvider(DateTime dtStartDate, DateTime dtEndDate,
                                     std::string strProviderFilter, bool Overseeing,
                                     std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  vsp.Orientation(0);
  vsp.MarginLeft(".5in");
  vsp.MarginRight(".5in");
  vsp.DocName("Income by Provider");
  vsp.StartDoc();
  PrintReportHeading("Income by Provider", UserName,
                     "From: " + Format(Variant(dtStartDate), "mmm/dd/yyyy") + " to " +
                         Format(Variant(dtEndDate), "mmm/dd/yyyy"));
  srptAppliedPayments(dtStartDate, dtEndDate, strProviderFilter, Overseeing ? 1 : 0);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

}  // namespace orv
