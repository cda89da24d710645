// The provider summary the partners read: per provider the period's fees
// (dental, lab, interest, write-offs) beside the payments that reached the
// provider's lines, then the hygienists' production, then each provider's
// new receivable at the start and at the end of the period.
#include <cstdlib>
#include <map>
#include <vector>

#include "closing/closing_common.h"
#include "closing/hygiene_production.h"
#include "closing/opening_receivable.h"
#include "closing/summary_rows.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"

namespace orv {

namespace {

using closing::InPeriod;

// The record of a provider id, or null for a line of nobody on the list.
RepEmpData* Find(std::vector<RepEmpData>& providers, const std::map<int32_t, size_t>& index,
                 int32_t id) {
  auto it = index.find(id);
  return it == index.end() ? nullptr : &providers[it->second];
}

std::map<int32_t, size_t> IndexOf(const std::vector<RepEmpData>& providers) {
  std::map<int32_t, size_t> index;
  for (size_t i = 0; i < providers.size(); ++i) index[providers[i].EmployeeID] = i;
  return index;
}

}  // namespace

void clsReports::srptProductSumPayments(DateTime dtStartDate, DateTime dtEndDate,
                                        std::vector<RepEmpData>& Providers) {
  clsCommonFunctions& cf = Common();
  const std::map<int32_t, size_t> index = IndexOf(Providers);
  // The money applied in the period to each provider's lines, by the date
  // it was applied. The provider is the one of the line, so money moved
  // from the provider who took the cheque to the one who did the work is
  // already where it landed: no reallocation list is added on top.
  // Adjustments are not money received; the fee walk puts them in W/O and
  // Adjusts, so they are left out here rather than counted twice.
  db::Recordset rs = Open(
      "SELECT InvoiceDetails.ProviderID, InvoiceDetails.Code, InvoicePaymentAllocations.Amount "
      "FROM InvoicePaymentAllocations INNER JOIN InvoicePayments ON InvoicePayments.ID = "
      "InvoicePaymentAllocations.InvoicePaymentID INNER JOIN PaymentTypes ON "
      "InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN InvoiceDetails ON "
      "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID WHERE "
      "InvoicePaymentAllocations.AppliedDate between '" +
      dtStartDate.ToIsoDate() + "' AND '" + dtEndDate.ToIsoDate() +
      "' AND ISNULL(PaymentTypes.[Adjustment?], 0) = 0 ORDER BY InvoiceDetails.ProviderID, "
      "InvoicePayments.ID");
  while (!rs.Eof()) {
    RepEmpData* p =
        Find(Providers, index, static_cast<int32_t>(cf.ReturnVal(rs["ProviderID"].Value())));
    if (p != nullptr) {
      const Currency amount = cf.ReturnCur(rs["Amount"].Value());
      // Lab payments are those on "99" lines, as lab fees are here.
      if (vb::Left(cf.returnStr(rs["Code"].Value(), true), 2) == "99") {
        p->LabPayment += amount;
      } else {
        p->RegPayment += amount;
      }
      p->isUsed = true;
    }
    rs.MoveNext();
  }
  rs.Close();
}

void clsReports::ProductSumReport(DateTime dtStartDate, DateTime dtEndDate, std::string UserName) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // A run that has a document open gets the summary drawn into it;
  // otherwise the summary is a document of its own.
  const bool own_document = !vsp.IsOpen();
  if (own_document && dtEndDate.DatePart() < dtStartDate.DatePart()) {
    Host().MsgBox("The period ends (" + Format(Variant(dtEndDate), "mmm/dd/yyyy") +
                      ") before it starts (" + Format(Variant(dtStartDate), "mmm/dd/yyyy") + ").",
                  host::vbOKOnly, "");
    return;
  }
  const std::string title = "Provider Summary Report";
  const std::string period = "From " + Format(Variant(dtStartDate), "MMM/d/yyyy") + " to " +
                             Format(Variant(dtEndDate), "MMM/d/yyyy");
  if (own_document) {
    // Ten columns of 7.2 inches: across the page.
    vsp.Orientation(1);
    vsp.DocName(title);
    vsp.StartDoc();
  } else if (vsp.CurrentY() > vsp.MarginTop() || vsp.PageCount() > 1) {
    vsp.NewPage();
  }
  PrintReportHeading(title, UserName, period);
  vsp.TextAlign(1);
  vsp.FontBold(false);
  vsp.FontSize(9);

  // The providers, one record each.
  std::vector<RepEmpData> providers;
  {
    db::Recordset rs =
        Open("Select ID, LastName, FirstName, TypeID from Employees ORDER BY LastName, FirstName "
             "DESC");
    while (!rs.Eof()) {
      RepEmpData e;
      e.EmployeeID = static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value()));
      e.TypeID = static_cast<int32_t>(cf.ReturnVal(rs["TypeID"].Value()));
      e.EmpName = cf.returnStr(rs["LastName"].Value()) + ", " + cf.returnStr(rs["FirstName"].Value());
      providers.push_back(std::move(e));
      rs.MoveNext();
    }
  }
  const std::map<int32_t, size_t> index = IndexOf(providers);

  // Fees. One read of every line that matters: entered or cancelled in the
  // period, or carrying an adjustment dated in it. A line comes once per
  // allocation, so its fee counts on its first row only; the allocation
  // columns count on every row.
  const std::string start = dtStartDate.ToIsoDate();
  const std::string end = dtEndDate.ToIsoDate();
  db::Recordset rs = Open(
      "Select InvoiceDetails.ID, Cost, InvoiceDetails.Date, Code, Invoices.Cancelled, "
      "Invoices.CancellationDate, Invoices.InterestInvoiceID, InvoiceDetails.Status, "
      "InvoiceDetails.ProviderID, recafterdep, [Adjustment?] , [ToTotalPaid?], NSF, "
      "PaymentTypes.OfficePayment, InvoiceDetails.EntryDate, Amount, CheckDate, Refund, Value, "
      "Invoices.OverseerID, InvoiceDetails.ProviderID as IvProv from InvoiceDetails inner join "
      "Invoices on InvoiceDetails.InvoiceID = Invoices.ID left outer join "
      "InvoicePaymentAllocations on InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID "
      "left outer join InvoicePayments on InvoicePaymentID = InvoicePayments.ID left outer join "
      "PaymentTypes on PaymentTypeID = PaymentTypes.ID where Status = 'Complete' and "
      "(InvoiceDetails.EntryDate >= '" +
      start + "' and InvoiceDetails.EntryDate <= '" + end +
      "' OR (Invoices.CancellationDate >= '" + start + "' and Invoices.CancellationDate <= '" +
      end + "')  OR (InvoicePayments.CheckDate >= '" + start +
      "' and InvoicePayments.CheckDate <= '" + end +
      "' And [Adjustment?] = 1 )) Order by InvoiceDetails.ID ");
  Variant last_id;
  while (!rs.Eof()) {
    RepEmpData* p =
        Find(providers, index, static_cast<int32_t>(cf.ReturnVal(rs["IvProv"].Value())));
    const Variant id = rs["ID"].Value();
    const bool first_row = last_id.IsEmpty() || cf.ReturnVal(id) != cf.ReturnVal(last_id);
    last_id = id;
    if (p != nullptr && first_row) {
      const Currency cost = cf.ReturnCur(rs["Cost"].Value());
      // Entered in the period, the fee counts; cancelled in it, it counts
      // negated; both in one period net to nothing.
      Currency fee;
      if (InPeriod(rs["EntryDate"].Value(), dtStartDate, dtEndDate)) fee += cost;
      if (cf.ReturnVal(rs["Cancelled"].Value()) != 0 &&
          InPeriod(rs["CancellationDate"].Value(), dtStartDate, dtEndDate)) {
        fee -= cost;
      }
      // Lab is "99" here, not "-99": a reversed lab fee stays dental. The
      // lines of an interest invoice are the interest column.
      if (vb::Left(cf.returnStr(rs["Code"].Value(), true), 2) == "99") {
        p->LabFee += fee;
      } else if (!rs["InterestInvoiceID"].Value().IsNull()) {
        p->IntFee += fee;
      } else {
        p->DocFee += fee;
      }
      if (!fee.IsZero()) p->isUsed = true;
    }
    if (p != nullptr && cf.ReturnVal(rs["Adjustment?"].Value()) == 1 &&
        InPeriod(rs["CheckDate"].Value(), dtStartDate, dtEndDate)) {
      const Currency amount = cf.ReturnCur(rs["Amount"].Value());
      if (cf.ReturnVal(rs["OfficePayment"].Value()) != 0) {
        p->Adjustments += amount;  // W/O
      } else {
        p->PayAdjustments += amount;  // Adjusts
      }
      p->isUsed = true;
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  rs.Close();

  srptProductSumPayments(dtStartDate, dtEndDate, providers);

  // The table. Ten columns over the seven widths: Provider 1.1in, the
  // dental columns .75in, lab .67in, interest .55in, W/O .65in, the Net
  // columns .74in and Adjusts .6in. Each Net closes its group: fees are
  // dental + lab + interest less the write-offs, payments dental + labs
  // plus the adjustments, write-offs and adjustments by absolute value
  // (they are stored negative).
  closing::SummaryRows table("Provider|Dental|Lab|Int.|W/O|Net|Dental|Labs|Adjusts|Net;", 9);
  for (RepEmpData& p : providers) {
    p.TotalFees = p.DocFee + p.LabFee + p.IntFee - closing::Abs(p.Adjustments);
    p.CurFee = p.RegPayment + p.LabPayment + closing::Abs(p.PayAdjustments);
    if (!p.isUsed) continue;
    table.Add(p.EmpName, {p.DocFee, p.LabFee, p.IntFee, p.Adjustments, p.TotalFees, p.RegPayment, p.LabPayment,
                          p.PayAdjustments, p.CurFee});
  }
  vsp.StartTable();
  vsp.AddTable("<1.1in|>.75in|>.67in|>.55in|>.65in|>.74in|>.75in|>.67in|>.6in|>.74in",
               "|Fees($)|||||Payments($)|||", table.Body(), kHeaderColor);
  // The group names span their columns; the column names are the first
  // body row, dressed as a header and repeated with it on a new page.
  vsp.TableCell(frame::tcColSpan, 0, 2) = 5;
  vsp.TableCell(frame::tcColSpan, 0, 7) = 4;
  vsp.TableCell(frame::tcAlign, 0, 1, 0, 10) = 4;
  vsp.TableCell(frame::tcBackColor, 1, 1, 1, 10) = static_cast<double>(kHeaderColor);
  vsp.TableCell(frame::tcFontBold, 1, 1, 1, 10) = true;
  vsp.TableCell(frame::tcAlign, 1, 1, 1, 10) = 4;
  vsp.TableHeaderRows(2);
  vsp.EndTable();
  // The two header rows are this table's alone: the tables after it, here
  // or in a package that goes on drawing, have one.
  vsp.TableHeaderRows(1);

  // The hygienists: their production beside each other's.
  std::map<int32_t, closing::HygieneFigures> hygiene;
  for (const RepEmpData& p : providers)
    if (p.isUsed) hygiene[p.EmployeeID] = {p.DocFee + p.IntFee, p.LabFee};
  closing::PrintHygieneProduction(*this, hygiene);

  // New receivable per provider, before the period and at its end, read
  // as the summary analysis reads it, by allocated payments: money counts
  // against the provider whose lines it was applied to.
  vsp.FontBold(true);
  vsp.FontSize(11);
  vsp.Text("New A/R Summary Report");
  vsp.FontSize(9);
  vsp.FontBold(false);
  //
  // Every provider's figures come from one read of the history, grouped by
  // the provider of the line: asked provider by provider, the whole
  // history was read again for each of them.
  const std::map<std::string, closing::OpeningClosing> receivable = closing::OpeningReceivableBy(
      *this, dtStartDate, dtEndDate, {"1 = 1", "1 = 1"}, true, "InvoiceDetails.ProviderID",
      "InvoicePayments.InitialProviderID");
  std::string ar_body;
  Currency t_open, t_close;
  for (const RepEmpData& p : providers) {
    if (!p.isUsed) continue;
    const auto found = receivable.find(std::to_string(p.EmployeeID));
    const Currency o = found == receivable.end() ? Currency() : found->second.Opening;
    const Currency c = found == receivable.end() ? Currency() : found->second.Closing;
    ar_body += frame::EscapeCell(p.EmpName) + "|" + closing::SummaryFigure(o) + "|" + closing::SummaryFigure(c) + ";";
    t_open += o;
    t_close += c;
  }
  vsp.AddTable("^1.65in|^1.91in|^1.91in", "Provider|Opening New A/R($)|Closing New A/R($)", "",
               kHeaderColor);
  vsp.AddTable("<1.65in|>1.91in|>1.91in", "", ar_body);
  vsp.AddTable("^1.65in|>1.91in|>1.91in", "", "Total|" + closing::SummaryFigure(t_open) + "|" + closing::SummaryFigure(t_close) + ";");

  if (own_document) {
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  }
}

void clsReports::rptPartnershipReport(DateTime dtStartDate, DateTime dtEndDate,
                                      std::string UserName) {
  ProductSumReport(dtStartDate, dtEndDate, UserName);
}

}  // namespace orv
