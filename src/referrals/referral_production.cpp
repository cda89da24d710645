// What each referring dentist is worth to the practice: the period's fees
// of the patients each sent, split Dental, Lab and Int. with the
// write-offs, beside the payments of those patients; then the hygienists'
// production of the same period.
#include <map>
#include <string>
#include <vector>

#include "closing/closing_common.h"
#include "closing/fee_columns.h"
#include "closing/hygiene_production.h"
#include "closing/summary_rows.h"
#include "common/common_functions.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

namespace {

constexpr uint32_t kGroupColor = 0xE0E0E0;

using closing::InPeriod;

using Row = clsReports::ReferralRow;

Row* RowOf(std::vector<Row>& rows, const std::map<int32_t, size_t>& index, const Variant& id) {
  if (id.IsNull() || id.IsEmpty()) return nullptr;
  auto it = index.find(static_cast<int32_t>(CDbl(id)));
  return it == index.end() ? nullptr : &rows[it->second];
}

std::map<int32_t, size_t> IndexOf(const std::vector<Row>& rows) {
  std::map<int32_t, size_t> index;
  for (size_t i = 0; i < rows.size(); ++i) index[rows[i].id] = i;
  return index;
}

}  // namespace

void clsReports::srptReferralPayments(DateTime dtStartDate, DateTime dtEndDate,
                                      std::vector<ReferralRow>& Rows) {
  clsCommonFunctions& cf = Common();
  const std::map<int32_t, size_t> index = IndexOf(Rows);
  const std::string start = dtStartDate.ToIsoDate();
  const std::string end = dtEndDate.ToIsoDate();
  // Money applied in the period goes to the referrer of the patient whose
  // line it was applied to; the rest of a cheque of the period, not applied
  // to any line in it, is credit and goes to the referrer of the patient
  // who paid. A payment thus counts once, split as it was applied.
  db::Recordset rs = Open(
      "Select InvoicePayments.ID, InvoicePayments.AccountID, InvoicePayments.CheckDate as PDate, "
      "PaymentTypes.Name as PDescription, InvoicePaymentAllocations.Amount as Payment, "
      "InvoiceDetails.Code as InvDetCode, PaymentTypes.[Adjustment?] as Adjustment, "
      "PaymentTypes.[ToTotalPaid?] as ToTotalPaid, Patient.ReferringDentistID "
      "FROM InvoicePaymentAllocations INNER JOIN InvoicePayments ON InvoicePayments.ID = "
      "InvoicePaymentAllocations.InvoicePaymentID INNER JOIN PaymentTypes ON "
      "InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN InvoiceDetails ON "
      "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID INNER JOIN Invoices ON "
      "Invoices.ID = InvoiceDetails.InvoiceID INNER JOIN Patient ON Patient.ID = "
      "Invoices.PatientID WHERE InvoicePaymentAllocations.AppliedDate >= '" +
      start + "' and InvoicePaymentAllocations.AppliedDate <= '" + end +
      "' UNION ALL "
      " Select InvoicePayments.ID, InvoicePayments.AccountID, InvoicePayments.CheckDate as PDate, "
      "(PaymentTypes.Name  + ' -  Credit from Partial Allocation') as PDescription, "
      "InvoicePayments.[Value] - ISNULL((SELECT SUM(A.Amount) FROM InvoicePaymentAllocations A "
      "WHERE A.InvoicePaymentID = InvoicePayments.ID AND A.AppliedDate >= '" +
      start + "' AND A.AppliedDate <= '" + end +
      "'), 0) as Payment, '000000' as InvDetCode, PaymentTypes.[Adjustment?] as "
      "Adjustment, PaymentTypes.[ToTotalPaid?] as ToTotalPaid, Patient.ReferringDentistID "
      "FROM InvoicePayments INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = "
      "PaymentTypes.ID INNER JOIN Patient ON Patient.ID = InvoicePayments.PatientID WHERE "
      "InvoicePayments.CheckDate >= '" +
      start + "' AND InvoicePayments.CheckDate <= '" + end + "' ORDER BY ReferringDentistID, ID");
  while (!rs.Eof()) {
    Row* r = RowOf(Rows, index, rs["ReferringDentistID"].Value());
    const Currency amount = cf.ReturnCur(rs["Payment"].Value());
    if (r != nullptr && !amount.IsZero()) {
      // An adjustment is no money received, unless its type counts toward
      // what was paid; money goes to Labs on a lab line, else to Dental
      // (credit, "000000", is Dental).
      const bool adjustment = cf.ReturnVal(rs["Adjustment"].Value()) != 0 &&
                              cf.ReturnVal(rs["ToTotalPaid"].Value()) == 0;
      if (adjustment) {
        r->pay_adjusts += amount;
      } else if (closing::FeeColumnOf(cf.returnStr(rs["InvDetCode"].Value(), true), false) ==
                 closing::FeeColumn::Lab) {
        r->pay_labs += amount;
      } else {
        r->pay_dental += amount;
      }
      r->used = true;
    }
    rs.MoveNext();
  }
}

void clsReports::ReferralProductSumReport(DateTime dtStartDate, DateTime dtEndDate,
                                          std::string UserName) {
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // Step 1: the links first, outside the report's snapshot, so that what
  // the repair changes is what the figures below read.
  CheckRelationships("ReferringDentists", "ID", "Patient", "ReferringDentistID");
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);

  const bool own_document = !vsp.IsOpen();
  const std::string title = "Referral Summary Report";
  if (own_document) {
    vsp.Orientation(1);
    vsp.DocName(title);
    vsp.StartDoc();
    PrintReportHeading(title, UserName,
                       "From " + Format(Variant(dtStartDate), "mmm/dd/yyyy") + " to " +
                           Format(Variant(dtEndDate), "mmm/dd/yyyy"));
  }
  vsp.FontSize(10);
  vsp.FontBold(false);
  vsp.Text(" ");

  // Step 2: the period. A line counts when entered or cancelled in it, or
  // when it carries an adjustment dated in it. The flag is compared with 1
  // as stored: a type whose flag holds -1 brings no line in by this clause.
  const std::string start = dtStartDate.ToIsoDate();
  const std::string end = dtEndDate.ToIsoDate();
  const std::string clause =
      "((InvoiceDetails.EntryDate >= '" + start + "' and InvoiceDetails.EntryDate <= '" + end +
      "') OR (Invoices.CancellationDate >= '" + start + "' and Invoices.CancellationDate <= '" +
      end + "')  OR (InvoicePayments.CheckDate >= '" + start +
      "' and InvoicePayments.CheckDate <= '" + end + "' And [Adjustment?] = 1 ))";

  // Step 3: a row per referring dentist, in memory, and the Total.
  std::vector<Row> rows;
  {
    db::Recordset rs = Open(
        "Select ID, ReferringDentists.Name, ReferringDentists.LastName FROM "
        "ReferringDentists");
    while (!rs.Eof()) {
      Row r;
      r.id = static_cast<int32_t>(cf.ReturnVal(rs["ID"].Value()));
      r.label = cf.returnStr(rs["LastName"].Value(), true) + ", " +
                cf.returnStr(rs["Name"].Value(), true);
      rows.push_back(std::move(r));
      rs.MoveNext();
    }
  }
  const std::map<int32_t, size_t> index = IndexOf(rows);

  // Step 4: the fees. A line comes once per allocation: its fee counts on
  // its first row, each adjustment allocation on its own row. Every
  // complete line counts, "-00100" included: this report credits what the
  // patient was billed, not the production by code.
  std::map<int32_t, closing::HygieneFigures> by_provider;
  db::Recordset rs = Open(
      "SELECT InvoiceDetails.ID, InvoiceDetails.Cost, InvoiceDetails.[Date], InvoiceDetails.Code, "
      "Patient.ReferringDentistID, Patient.ID AS Expr1, Invoices.PatientID,   Invoices.Cancelled, "
      "Invoices.CancellationDate, Invoices.InterestInvoiceID, InvoiceDetails.Status, "
      "InvoiceDetails.ProviderID, PaymentTypes.RecAfterDep,  PaymentTypes.[Adjustment?], "
      "PaymentTypes.[ToTotalPaid?], PaymentTypes.NSF, PaymentTypes.OfficePayment, "
      "InvoiceDetails.EntryDate,  InvoicePaymentAllocations.Amount, InvoicePayments.CheckDate, "
      "PaymentTypes.Refund, InvoicePayments.[Value], Invoices.OverseerID, "
      "InvoiceDetails.ProviderID "
      "AS IvProv FROM InvoiceDetails INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID "
      "INNER JOIN Patient ON Invoices.PatientID = Patient.ID LEFT OUTER JOIN  "
      "InvoicePaymentAllocations on InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID "
      " left outer join  InvoicePayments on InvoicePaymentID = InvoicePayments.ID  left outer join "
      " PaymentTypes on PaymentTypeID = PaymentTypes.ID  where  Status = 'Complete' and " +
      clause + " Order by  InvoiceDetails.ID ");
  double last_id = -1;
  while (!rs.Eof()) {
    Row* r = RowOf(rows, index, rs["ReferringDentistID"].Value());
    const double id = cf.ReturnVal(rs["ID"].Value());
    const bool first_row = id != last_id;
    last_id = id;
    if (first_row) {
      const Currency cost = cf.ReturnCur(rs["Cost"].Value());
      // Entered in the period the fee counts; cancelled in it, negated;
      // entered and cancelled in the same period it nets to nothing.
      Currency fee;
      if (InPeriod(rs["EntryDate"].Value(), dtStartDate, dtEndDate)) fee += cost;
      if (cf.ReturnVal(rs["Cancelled"].Value()) != 0 &&
          InPeriod(rs["CancellationDate"].Value(), dtStartDate, dtEndDate)) {
        fee -= cost;
      }
      const closing::FeeColumn column = closing::FeeColumnOf(
          cf.returnStr(rs["Code"].Value(), true), !rs["InterestInvoiceID"].Value().IsNull());
      if (r != nullptr && !fee.IsZero()) {
        if (column == closing::FeeColumn::Lab) {
          r->lab += fee;
        } else if (column == closing::FeeColumn::Interest) {
          r->interest += fee;
        } else {
          r->dental += fee;
        }
        r->used = true;
      }
      // The hygienists' section keeps the same walk by the line's
      // provider, whoever referred the patient.
      closing::HygieneFigures& h =
          by_provider[static_cast<int32_t>(cf.ReturnVal(rs["IvProv"].Value()))];
      if (column == closing::FeeColumn::Lab) {
        h.lab += fee;
      } else {
        h.production += fee;
      }
    }
    if (r != nullptr && cf.ReturnVal(rs["Adjustment?"].Value()) == 1 &&
        InPeriod(rs["CheckDate"].Value(), dtStartDate, dtEndDate)) {
      r->writeoff += cf.ReturnCur(rs["Amount"].Value());
      r->used = true;
    }
    RaiseProgress(rs);
    rs.MoveNext();
  }
  rs.Close();

  // Step 5: the payments.
  srptReferralPayments(dtStartDate, dtEndDate, rows);

  // Step 6: the table. Eleven columns, as named and sized: the referrer,
  // six under "Fees($)", four under "Payments($)"; a twelfth would have
  // neither a name nor a width. Fees: Total is Dental + Lab + Int.; Net is
  // Total less the write-offs (stored negative, taken by size). Payments:
  // Net is Dental + Labs with the adjustments by size, what was taken off
  // the patients' accounts either way. The Total row adds the rows shown,
  // so it equals their sum to the cent.
  closing::SummaryRows table("Referring Dentist|Dental|Lab|Int.|Total|W/O|Net|Dental|Labs|Adjusts|Net;", 10);
  for (Row& r : rows) {
    r.total = r.dental + r.lab + r.interest;
    r.net = r.total - closing::Abs(r.writeoff);
    r.pay_net = r.pay_dental + r.pay_labs + closing::Abs(r.pay_adjusts);
    if (!r.used) continue;
    table.Add(r.label, {r.dental, r.lab, r.interest, r.total, r.writeoff, r.net, r.pay_dental, r.pay_labs,
                        r.pay_adjusts, r.pay_net});
  }
  vsp.FontSize(9);
  vsp.StartTable();
  vsp.AddTable("<1.1in|>.75in|>.67in|>.55in|>.75in|>.65in|>.74in|>.74in|>.74in|>.6in|>.74in",
               "|Fees($)||||||Payments($)|||", table.Body(), kGroupColor);
  // The group names span their columns over the column names, which are
  // the first body row dressed as a header and repeated with it.
  vsp.TableCell(frame::tcColSpan, 0, 2) = 6;
  vsp.TableCell(frame::tcColSpan, 0, 8) = 4;
  vsp.TableCell(frame::tcAlign, 0, 1, 0, 11) = 4;
  vsp.TableCell(frame::tcBackColor, 1, 1, 1, 11) = static_cast<double>(kHeaderColor);
  vsp.TableCell(frame::tcFontBold, 1, 1, 1, 11) = true;
  vsp.TableCell(frame::tcAlign, 1, 1, 1, 11) = 4;
  vsp.TableHeaderRows(2);
  vsp.EndTable();

  // Step 7: the hygienists, those with a figure in the period.
  std::map<int32_t, closing::HygieneFigures> hygiene;
  for (const auto& [id, f] : by_provider)
    if (!(f.production.IsZero() && f.lab.IsZero())) hygiene[id] = f;
  closing::PrintHygieneProduction(*this, hygiene);

  if (own_document) {
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  }
}

}  // namespace orv
