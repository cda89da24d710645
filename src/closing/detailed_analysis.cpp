// The detailed analysis of a period: every treatment line entered and every
// payment taken, grouped by provider, overseer, preferred doctor or date,
// with the money that moved between providers and the totals by bank
// account. The day-end and month-end runs draw it into their document.
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
using closing::AndFilter;
using closing::SqlClear;
using closing::SqlSet;

// The group a row falls in: the person of the view (or, by date, the day)
// to compare rows by, the heading to print, and the id the group's
// adjustments and reallocations are read by.
struct Group {
  std::string key, name, id;
};

// The group of the current row of `rs`: by date the day of `date_col`;
// otherwise the name in `name_col` ("None" when missing) and the id in
// `id_col`.
Group GroupOf(clsCommonFunctions& cf, const db::Recordset& rs, bool by_date,
              const char* date_col, const char* name_col, const char* id_col) {
  Group g;
  if (by_date) {
    g.key = cf.ReturnFormatedDate(rs[date_col].Value(), "yyyy-mm-dd");
    g.name = cf.ReturnFormatedDate(rs[date_col].Value(), "mmm/dd/yyyy");
    g.id = g.key;
  } else {
    const Variant name = rs[name_col].Value();
    g.key = name.IsNull() ? "None" : cf.returnStr(name);
    g.name = g.key;
    g.id = CStr(Variant(cf.ReturnVal(rs[id_col].Value())));
  }
  return g;
}

// One treatment line (or a cancellation of one, or an invoice without
// lines) as the walk reads it.
struct TreatmentRow {
  std::string invoice, complete;
  Group group;
  std::string entry, treated, patient, doctor, provider, overseer, description;
  Currency cost, patient_part, insurance_part;
};

// One allocated share of a payment, or the share nobody allocated.
struct PaymentRow {
  std::string id, description, full_name, payment_name, account;
  Group group;
  bool listed = false, refund = false, insurance = false, to_total_paid = false, adjustment = false;
  Currency payment;
};

// A written-off share, for the list under each group.
struct WriteOffRow {
  std::string invoice, invoice_date, adjustment_date, type, patient;
  Currency amount;
};

std::string Money(clsCommonFunctions& cf, Currency c) { return cf.MyFormat(c, "Currency"); }

std::string Cell(const std::string& value) { return frame::EscapeCell(value); }

// The person of a view as a SQL expression on the treatment line: the
// provider falls back to the invoice's provider, the overseer too, and
// the preferred doctor is 0 when the invoice names none.
const char* kProviderOfLine = "ISNULL(InvoiceDetails.ProviderID, Invoices.ProviderID)";
const char* kOverseerOfInvoice = "ISNULL(Invoices.OverseerID, Invoices.ProviderID)";
const char* kDoctorOfInvoice = "ISNULL(Invoices.DoctorID, 0)";

std::string NameOf(const std::string& id_expr) {
  return "ISNULL((SELECT TOP 1 LastName + ', ' + FirstName FROM Employees WHERE Employees.ID = " +
         id_expr + "), 'None')";
}

}  // namespace

void clsReports::srptDetailedAnalysis(DateTime dtStart, DateTime dtEnd, int16_t Byoption,
                                      std::string UserName, std::string ProviderNames,
                                      bool byAllocatedPayment) {
  if (!closing::ValidView(Byoption)) {
    throw ReportError(kErrInvalidProcedureCall,
                      closing::BadViewMessage("srptDetailedAnalysis", Byoption));
  }
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Host().SetMousePointer(11);
  Host().DoEvents();
  Trap("An Error has occurred in Sub srptDetailedAnalysis in Class clsReports.", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    ProviderNames = NoZeroFilter(ProviderNames);
    if (ProviderNames.empty()) {
      vsp.Text("Please select a provider");
      return;
    }
    const std::string start = dtStart.ToIsoDate();
    const std::string end = dtEnd.ToIsoDate();
    const bool by_date = Byoption == 3;

    // The filter field of each view. The table of views gives the preferred
    // doctor's view its own field (Invoices.DoctorID), which is what the
    // office picks doctors for; the date view has no person of its own and
    // keeps the selection by the provider on the line, so that a day's list
    // still shows only the chosen providers' work.
    const char* field = Byoption == 1   ? "Invoices.OverseerID"
                        : Byoption == 2 ? "Invoices.DoctorID"
                                        : "InvoiceDetails.ProviderID";
    const std::string filter = " AND (" + vb::Replace(ProviderNames, "ProviderID", field) + ")";
    // An invoice without lines has no line provider; for it the provider's
    // field is the invoice's own provider, so that the third rule carries
    // the selection instead of never matching it.
    const std::string no_lines_filter =
        Byoption == 0 || by_date
            ? " AND (" + vb::Replace(ProviderNames, "ProviderID", "Invoices.ProviderID") + ")"
            : filter;

    const char* group_name_col = Byoption == 1   ? "OverseerName"
                                 : Byoption == 2 ? "DoctorName"
                                 : Byoption == 3 ? "IDate"
                                                 : "ProviderName";
    const char* group_id_col = Byoption == 1   ? "OverseerID"
                               : Byoption == 2 ? "DoctorID"
                               : Byoption == 3 ? "IDate"
                                               : "ProviderID";
    const char* treatment_heading = Byoption == 1   ? "Sorted by OverSeer"
                                    : Byoption == 2 ? "Sorted by Preferred Doctor"
                                    : Byoption == 3 ? "Sorted by Date"
                                                    : "Sorted by Provider";
    // The lines of one invoice tie on the view's order; their code and
    // amount settle it, so that every engine lists them alike.
    const char* treatment_order =
        Byoption == 1 ? " ORDER BY OverSeerName, IDate DESC, [Time] DESC, [Invoice#] ASC, "
                        "IDescription, ICost"
        : Byoption == 2 ? " ORDER BY DoctorName, IDate DESC, [Time] DESC, [Invoice#] ASC, "
                          "IDescription, ICost"
        : Byoption == 3 ? " ORDER BY IDate ASC, [Time] DESC, [Invoice#] ASC, IDescription, ICost"
                        : " ORDER BY ProviderName, IDate DESC, [Time] DESC, [Invoice#] ASC, "
                          "IDescription, ICost";

    // ---- Chapter 1: treatment ----
    PrintReportHeading(vsp.DocName().empty() ? "Detailed Analysis" : vsp.DocName(), UserName,
                       "");
    vsp.TextAlign(7);
    vsp.FontBold(true);
    vsp.Text("");
    vsp.Text("Range Selected: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
             Format(Variant(dtEnd), "mmm/dd/yyyy"));
    vsp.Text("Treatment List");
    vsp.Text(treatment_heading);
    vsp.Text("Listed by Treatment Entry Date");
    // The chapter's heading lines go with its first group, and each
    // heading below (a group's name, "Write Offs", a reallocation's title,
    // the account summary's) with the rows it names; a group's lab fees and
    // adjustments stay under its totals. None is left alone on a page.
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.TextAlign(0);

    // The columns of the first two rules; a cancellation reads the same
    // line with its three amounts negated. Its entry date is the day of the
    // cancellation, so that it falls in the period (and, by date, on the
    // day) it was cancelled; the treatment date still prints as it was.
    auto line_select = [&](bool cancellation) {
      const std::string sign = cancellation ? "-" : "";
      const std::string entry =
          cancellation ? "Invoices.CancellationDate" : "InvoiceDetails.EntryDate";
      return "SELECT CAST(Invoices.[Invoice#] AS varchar(20)) AS [Invoice#], CASE WHEN "
             "InvoiceDetails.Status = 'Complete' THEN 'C' ELSE 'I' END AS Complete, " +
             entry + " AS IDate, Invoices.[Time], Invoices.PatientID, Patient.LastName, " +
             "Patient.FirstName, " + kDoctorOfInvoice + " AS DoctorID, " + kProviderOfLine +
             " AS ProviderID, " + kOverseerOfInvoice + " AS OverseerID, " +
             NameOf(kProviderOfLine) + " AS ProviderName, " + NameOf(kOverseerOfInvoice) +
             " AS OverseerName, " + NameOf(kDoctorOfInvoice) + " AS DoctorName, " +
             "InvoiceDetails.Code + ' ' + ISNULL(CAST(InvoiceDetails.[Tooth#] AS varchar(2)), "
             "'') + ' ' + ISNULL(InvoiceDetails.Surface, '') AS IDescription, "
             "InvoiceDetails.[Date] AS TreatmentDate, " +
             entry + " AS EntryDate, " + sign + "InvoiceDetails.Cost AS ICost, " + sign +
             "ISNULL(InvoiceDetails.PatientCost, InvoiceDetails.Cost) AS IPatientPortion, " +
             sign +
             "(InvoiceDetails.Cost - ISNULL(InvoiceDetails.PatientCost, InvoiceDetails.Cost)) "
             "AS InsurancePortion, Invoices.IsAssignment FROM InvoiceDetails INNER JOIN "
             "Invoices ON InvoiceDetails.InvoiceID = Invoices.ID INNER JOIN Patient ON "
             "Invoices.PatientID = Patient.ID ";
    };
    std::string sql =
        line_select(false) + "WHERE InvoiceDetails.EntryDate >= '" + start +
        "' AND InvoiceDetails.EntryDate <= '" + end + "' " + filter +
        " AND InvoiceDetails.Status <> 'In Progress'" + " UNION ALL " + line_select(true) +
        "WHERE Invoices.CancellationDate >= '" + start + "' AND Invoices.CancellationDate <= '" +
        end + "'" + filter + " AND InvoiceDetails.Status <> 'In Progress' AND Cancelled = 1" +
        " UNION ALL " +
        "SELECT CAST(Invoices.[Invoice#] AS varchar(20)) AS [Invoice#], CASE "
        "Invoices.[Complete?] WHEN 0 THEN 'I' ELSE 'C' END AS Complete, Invoices.[Date] AS "
        "IDate, Invoices.[Time], Invoices.PatientID, Patient.LastName, Patient.FirstName, " +
        kDoctorOfInvoice + " AS DoctorID, Invoices.ProviderID AS ProviderID, " +
        kOverseerOfInvoice + " AS OverseerID, " + NameOf("Invoices.ProviderID") +
        " AS ProviderName, " + NameOf(kOverseerOfInvoice) + " AS OverseerName, " +
        NameOf(kDoctorOfInvoice) +
        " AS DoctorName, ' ' AS IDescription, Invoices.[Date] AS TreatmentDate, "
        "Invoices.[Date] AS EntryDate, Invoices.InvoiceTotal AS ICost, "
        "ISNULL(Invoices.PatientTotal, Invoices.Invoicetotal) AS IPatientPortion, "
        "(Invoices.InvoiceTotal - ISNULL(Invoices.PatientTotal, Invoices.InvoiceTotal)) AS "
        "InsurancePortion, Invoices.IsAssignment FROM Invoices INNER JOIN Patient ON "
        "Invoices.PatientID = Patient.ID LEFT OUTER JOIN InvoiceDetails ON "
        "InvoiceDetails.InvoiceID = Invoices.ID WHERE InvoiceDetails.InvoiceID IS NULL AND "
        "Invoices.[Date] >= '" +
        start + "' AND Invoices.[Date] <= '" + end + "'" + no_lines_filter + treatment_order;

    std::vector<TreatmentRow> rows;
    {
      db::Recordset rs = Open(sql);
      int n = 0;
      while (!rs.Eof()) {
        TreatmentRow r;
        r.invoice = cf.returnStr(rs["Invoice#"].Value());
        r.complete = cf.returnStr(rs["Complete"].Value());
        r.group = GroupOf(cf, rs, by_date, "IDate", group_name_col, group_id_col);
        r.entry = cf.ReturnFormatedDate(rs["EntryDate"].Value(), "mm/dd/yyyy");
        r.treated = cf.ReturnFormatedDate(rs["TreatmentDate"].Value(), "mm/dd/yyyy");
        r.patient = cf.returnStr(rs["LastName"].Value()) + ", " +
                    cf.returnStr(rs["FirstName"].Value());
        r.doctor = cf.returnStr(rs["DoctorName"].Value());
        r.provider = cf.returnStr(rs["ProviderName"].Value());
        r.overseer = cf.returnStr(rs["OverseerName"].Value());
        r.description = vb::Trim(cf.returnStr(rs["IDescription"].Value()));
        r.cost = cf.ReturnCur(rs["ICost"].Value());
        r.patient_part = cf.ReturnCur(rs["IPatientPortion"].Value());
        r.insurance_part = cf.ReturnCur(rs["InsurancePortion"].Value());
        rows.push_back(std::move(r));
        if (++n % 100 == 0) RaiseProgress(rs);
        rs.MoveNext();
      }
    }

    // Invoice adjustments and write-offs, read once for the whole period
    // and kept per person of the view (per day in the date view), instead
    // of one statement per group and payment type.
    const std::string person_of_adjustment =
        by_date ? "InvoicePayments.[Date]"
                : std::string(Byoption == 1   ? "Invoices.OverseerID"
                              : Byoption == 2 ? "Invoices.DoctorID"
                                              : "InvoiceDetails.ProviderID");
    const std::string adjustment_joins =
        " FROM InvoicePayments INNER JOIN InvoicePaymentAllocations ON InvoicePayments.ID = "
        "InvoicePaymentAllocations.InvoicePaymentID INNER JOIN PaymentTypes ON "
        "InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN InvoiceDetails ON "
        "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID INNER JOIN Invoices ON "
        "InvoiceDetails.InvoiceID = Invoices.ID";
    // The invoice adjustments are the types that correct a charge and do
    // not count toward what was paid. The flags are read as set when not 0,
    // since the office stores -1 as well as 1.
    std::map<std::string, Currency> adjustments;
    {
      db::Recordset rs = Open(
          "SELECT " + person_of_adjustment +
              " AS Person, SUM(InvoicePaymentAllocations.Amount) as theTotal" + adjustment_joins +
              " WHERE CheckDate >= '" + start + "' AND CheckDate <= '" + end + "' AND " +
              SqlSet("PaymentTypes.[Adjustment?]") + " AND " +
              SqlClear("PaymentTypes.[ToTotalPaid?]") + filter + " GROUP BY " +
              person_of_adjustment,
          db::adOpenForwardOnly);
      while (!rs.Eof()) {
        const std::string key = by_date
                                    ? cf.ReturnFormatedDate(rs["Person"].Value(), "yyyy-mm-dd")
                                    : CStr(Variant(cf.ReturnVal(rs["Person"].Value())));
        adjustments[key] += cf.ReturnCur(rs["theTotal"].Value());
        rs.MoveNext();
      }
    }
    std::map<std::string, std::vector<WriteOffRow>> write_offs;
    {
      db::Recordset rs = Open(
          "SELECT " + person_of_adjustment +
              " AS Person, CAST(Invoices.[Invoice#] AS varchar(20)) AS [Invoice#], "
              "Invoices.[Date], InvoicePaymentAllocations.AppliedDate AS AdjustmentDate, "
              "PaymentTypes.Name, Patient.FirstName, Patient.LastName, "
              "InvoicePaymentAllocations.Amount" +
              adjustment_joins +
              " INNER JOIN Patient ON Invoices.PatientID = Patient.ID WHERE CheckDate >= '" +
              start + "' AND CheckDate <= '" + end + "' AND " +
              SqlSet("PaymentTypes.[Adjustment?]") + " AND " +
              SqlSet("PaymentTypes.OfficePayment") + filter +
              " ORDER BY InvoicePayments.Date, InvoicePayments.ID",
          db::adOpenForwardOnly);
      while (!rs.Eof()) {
        const std::string key = by_date
                                    ? cf.ReturnFormatedDate(rs["Person"].Value(), "yyyy-mm-dd")
                                    : CStr(Variant(cf.ReturnVal(rs["Person"].Value())));
        WriteOffRow w;
        w.invoice = cf.returnStr(rs["Invoice#"].Value());
        w.invoice_date = cf.ReturnFormatedDate(rs["Date"].Value(), "mm/dd/yyyy");
        w.adjustment_date = cf.ReturnFormatedDate(rs["AdjustmentDate"].Value(), "mm/dd/yyyy");
        w.type = cf.returnStr(rs["Name"].Value());
        w.patient = cf.returnStr(rs["FirstName"].Value()) + " " +
                    cf.returnStr(rs["LastName"].Value());
        w.amount = cf.ReturnCur(rs["Amount"].Value());
        write_offs[key].push_back(std::move(w));
        rs.MoveNext();
      }
    }

    Currency patient_sum, insurance_sum, lab_sum, overall_sum, write_off_sum;
    std::string seen_ids = "ID = -1";
    std::set<std::string> seen_keys;

    // The write-offs of one group: the amount of an invoice prints on its
    // last row, as the treatment list prints its invoice totals.
    auto print_write_offs = [&](const std::vector<WriteOffRow>& list) {
      if (list.empty()) return;
      Currency invoice_sum, total;
      std::string body;
      for (size_t i = 0; i < list.size(); ++i) {
        const WriteOffRow& w = list[i];
        invoice_sum += w.amount;
        total += w.amount;
        const bool last_of_invoice = i + 1 == list.size() || list[i + 1].invoice != w.invoice;
        body += Cell(w.invoice) + "|" + Cell(w.invoice_date) + "|" + Cell(w.adjustment_date) +
                "|" + Cell(w.type) + "|" + Cell(w.patient) + "|" +
                (last_of_invoice ? Money(cf, invoice_sum) : "") + ";";
        if (last_of_invoice) invoice_sum = Currency();
      }
      body += "||||Totals:|" + Money(cf, total) + ";";
      vsp.FontBold(true);
      vsp.Text("Write Offs");
      vsp.KeepWithNext();
      vsp.FontBold(false);
      vsp.FontSize(8);
      vsp.AddTable("<1in|<1in|<1in|<1.3in|<1.8in|>1in",
                   "Invoice Number|Invoice Date|Adjustment Date|AdjustmentType|Patient "
                   "Name|Amount($)",
                   body, kHeaderColor);
      vsp.FontSize(10);
    };

    // One group of treatment: its pairs of rows, its totals, its lab fees,
    // its invoice adjustments and its write-offs.
    auto close_group = [&](const std::string& body, int pairs, const std::string& key,
                           Currency patient, Currency insurance, Currency lab) {
      vsp.FontSize(8);
      vsp.StartTable();
      vsp.AddTable("^1.5in|<1.5in|<1in|^1.5in|>1in|>1in",
                   "Entry Date\r\nTreatment Date|Patient \r\nPref. Doctor|Provider\r\nOverseer|"
                   "Invoice# \r\nCode|Patient($) \r\nInsurance($)|Invoice\r\nTotal($)",
                   body + "|||Totals:|" + Money(cf, patient) + "|" +
                       Money(cf, patient + insurance) + ";||||" + Money(cf, insurance) + "|;",
                   kHeaderColor);
      // A line reads as a pair: the second row of each pair (the rows in
      // even positions) is set in italics, and every other pair is shaded,
      // so the eye keeps the two rows together down the page.
      for (int r = 2; r <= 2 * pairs; r += 2) {
        vsp.TableCell(frame::tcFontItalic, r, 1, r, 6) = true;
        if ((r / 2) % 2 == 0) vsp.TableCell(frame::tcBackColor, r - 1, 1, r, 6) = 0xF2F2F2;
      }
      // The totals read as a pair too: patient and overall, then insurance.
      const int totals = 2 * pairs + 1;
      vsp.TableCell(frame::tcRowBorderAbove, totals, 1, totals, 6) = 1;
      vsp.TableCell(frame::tcFontBold, totals, 1, totals + 1, 6) = true;
      vsp.EndTable();
      vsp.KeepWithNext();
      vsp.FontSize(10);
      vsp.CurrentY(vsp.CurrentY() + Twips(100));

      const Currency adjustment = adjustments.count(key) ? adjustments[key] : Currency();
      vsp.AddTable(">2in|>1in", "",
                   "Lab Fees:|" + Money(cf, lab) + ";Invoice Adjustments:|" +
                       Money(cf, adjustment) + ";",
                   kHeaderColor);
      write_off_sum += adjustment;
      if (write_offs.count(key)) print_write_offs(write_offs[key]);
      vsp.CurrentY(vsp.CurrentY() + Twips(200));
      patient_sum += patient;
      insurance_sum += insurance;
      lab_sum += lab;
      overall_sum += patient + insurance;
    };

    // The walk. A group opens at each new value of the view's column; the
    // invoice total cell looks one row ahead and prints on the last row of
    // its invoice, the end of the rows counting as a last row.
    std::string body;
    int pairs = 0;
    Currency group_patient, group_insurance, group_lab, invoice_total;
    std::string current_key, current_id;
    bool open = false;
    for (size_t i = 0; i < rows.size(); ++i) {
      const TreatmentRow& r = rows[i];
      if (!open || r.group.key != current_key) {
        if (open) {
          close_group(body, pairs, current_id, group_patient, group_insurance, group_lab);
        }
        body.clear();
        pairs = 0;
        group_patient = group_insurance = group_lab = Currency();
        current_key = r.group.key;
        current_id = r.group.id;
        open = true;
        seen_keys.insert(r.group.id);
        if (!by_date) seen_ids += " OR ID = " + r.group.id;
        vsp.FontBold(true);
        vsp.FontSize(11);
        vsp.Text(r.group.name);
        vsp.KeepWithNext();
        vsp.FontSize(10);
        vsp.FontBold(false);
      }
      invoice_total += r.patient_part + r.insurance_part;
      const bool last_of_invoice = i + 1 == rows.size() || rows[i + 1].invoice != r.invoice ||
                                   rows[i + 1].group.key != r.group.key;
      body += Cell(r.entry) + "|" + Cell(r.patient) + "|" + Cell(r.provider) + "|" +
              Cell(r.invoice + r.complete) + "|" + Money(cf, r.patient_part) + "|" +
              (last_of_invoice ? Money(cf, invoice_total) : "") + ";";
      body += Cell(r.treated) + "|" + Cell(r.doctor) + "|" + Cell(r.overseer) + "|" +
              Cell(r.description) + "|" + Money(cf, r.insurance_part) + "|;";
      ++pairs;
      if (last_of_invoice) invoice_total = Currency();
      group_patient += r.patient_part;
      group_insurance += r.insurance_part;
      // Laboratory fees are the codes of the 99 range, reversals included:
      // the prefix of the description is the only mark they carry.
      if (vb::Left(r.description, 2) == "99" || vb::Left(r.description, 3) == "-99") {
        group_lab += r.cost;
      }
      Host().DoEvents();
    }
    if (open) close_group(body, pairs, current_id, group_patient, group_insurance, group_lab);

    // Money adjusted on people (or, by date, on days) without treatment in
    // the period still counts: their invoice adjustments and write-offs
    // print under their name and join the totals.
    auto fallback = [&](const std::string& key, const std::string& name) {
      const Currency adjustment = adjustments.count(key) ? adjustments[key] : Currency();
      Currency written_off;
      if (write_offs.count(key)) {
        for (const auto& w : write_offs[key]) written_off += w.amount;
      }
      if (adjustment.IsZero() && written_off.IsZero()) return;
      vsp.FontBold(true);
      vsp.Text(name);
      vsp.KeepWithNext();
      vsp.FontBold(false);
      std::string rows_text;
      if (!adjustment.IsZero()) rows_text += "Invoice Adjustments: |" + Money(cf, adjustment) + ";";
      if (!written_off.IsZero()) rows_text += "Write Offs: |" + Money(cf, written_off) + ";";
      vsp.AddTable(">2in|>1in", "", rows_text, kHeaderColor);
      write_off_sum += adjustment;
    };
    if (by_date) {
      // Days are not people: the days with adjustments and no treatment
      // print by date, in order, so that no adjustment is lost.
      std::set<std::string> days;
      for (const auto& [key, amount] : adjustments) days.insert(key);
      for (const auto& [key, list] : write_offs) days.insert(key);
      for (const std::string& day : days) {
        if (seen_keys.count(day)) continue;
        fallback(day, Format(Variant(CDate(Variant(day))), "mmm/dd/yyyy"));
      }
    } else {
      // Only the people chosen for the report: another provider's
      // adjustments are not this report's money.
      db::Recordset people =
          Open("SELECT ID, FullName FROM Employees WHERE NOT (" + seen_ids + ") AND (" +
                   vb::Replace(ProviderNames, "ProviderID", "ID") + ")  Order by LastName",
               db::adOpenForwardOnly);
      while (!people.Eof()) {
        fallback(CStr(Variant(cf.ReturnVal(people["ID"].Value()))),
                 cf.returnStr(people["FullName"].Value()));
        people.MoveNext();
      }
    }

    vsp.CurrentY(vsp.CurrentY() + Twips(200));
    vsp.FontBold(true);
    // The net takes the write-offs by their size, whichever sign the
    // adjustments were stored with.
    vsp.AddTable(">2in|>1in", "",
                 "Lab Total:|" + Money(cf, lab_sum) + ";Patient Total:|" +
                     Money(cf, patient_sum) + ";Insurance Total:|" + Money(cf, insurance_sum) +
                     ";Overall Total:|" + Money(cf, overall_sum) + ";Write offs:|" +
                     Money(cf, write_off_sum) + ";Net Total:|" +
                     Money(cf, overall_sum - Abs(write_off_sum)) + ";",
                 kHeaderColor);
    vsp.FontBold(false);
    vsp.NewPage();

    // ---- Chapter 2: payments ----
    vsp.TextAlign(7);
    vsp.FontBold(true);
    vsp.Text("");
    vsp.Text("Payments for Period: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
             Format(Variant(dtEnd), "mmm/dd/yyyy"));
    vsp.Text(byAllocatedPayment ? "By Allocated Payments" : "All Payments");
    vsp.Text(Byoption == 1   ? "Summarized by Overseer"
             : Byoption == 2 ? "Summarized by Doctor"
             : Byoption == 3 ? "Summarized by Date"
                             : "Summarized by Provider");
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.TextAlign(0);

    const char* pay_group_col = Byoption == 1   ? "OverseerName"
                                : Byoption == 2 ? "DoctorName"
                                : Byoption == 3 ? "PDate"
                                                : "ProviderName";
    const char* pay_id_col = Byoption == 1   ? "OverseerID"
                             : Byoption == 2 ? "DoctorID"
                             : Byoption == 3 ? "PDate"
                                             : "ProviderID";
    // A union is ordered by its own column names; a single select by the
    // payment's key, which "ID" alone would not name among its tables.
    const std::string pay_id = byAllocatedPayment ? "InvoicePayments.ID" : "ID";
    const std::string pay_order = Byoption == 1   ? " ORDER BY  OverseerName, " + pay_id
                                  : Byoption == 2 ? " ORDER BY DoctorName, " + pay_id
                                  : Byoption == 3 ? " ORDER BY PDate, " + pay_id
                                                  : " ORDER BY ProviderName, " + pay_id;
    const std::string pay_period =
        byAllocatedPayment
            ? " WHERE InvoicePaymentAllocations.AppliedDate between'" + start + "' AND '" + end +
                  "'"
            : " WHERE InvoicePayments.CheckDate between '" + start + "' AND '" + end +
                  "' AND InvoicePaymentAllocations.AppliedDate Between '" + start + "' AND '" +
                  end + "'";
    std::string pay_sql =
        "Select InvoicePayments.ID, InvoicePayments.AccountID, InvoicePayments.CheckDate as "
        "PDate,PaymentTypes.refund as Refund, PaymentTypes.Name as PDescription, "
        "InvoicePaymentAllocations.Amount as Payment, InvoicePayments.IsInsurance as "
        "PIsInsurance, Patient.ID AS PatientID, Patient.FullName, InvoiceDetails.ProviderID, "
        "Invoices.OverseerID, Invoices.DoctorID, PaymentTypes.[ToTotalPaid?] AS ToTotalPaid, "
        "PaymentTypes.[Adjustment?] AS Adjustment, ISNULL((Select TOP 1 Lastname +', '+ "
        "FirstName FROM Employees WHERE Employees.ID = InvoiceDetails.ProviderID), 'None') AS "
        "ProviderName, ISNULL((Select TOP 1 Lastname +', '+ FirstName FROM Employees WHERE "
        "Employees.ID = Invoices.OverseerID), 'None') AS OverseerName, ISNULL((Select TOP 1 "
        "Lastname +', '+ FirstName FROM Employees WHERE Employees.ID = Invoices.DoctorID), "
        "'None') AS DoctorName, InvoicePayments.PaymentName FROM InvoicePayments INNER JOIN "
        "InvoicePaymentAllocations ON InvoicePayments.ID = "
        "InvoicePaymentAllocations.InvoicePaymentID INNER JOIN PaymentTypes ON "
        "InvoicePayments.PaymentTypeID = PaymentTypes.ID INNER JOIN InvoiceDetails ON "
        "InvoiceDetails.ID = InvoicePaymentAllocations.InvoiceDetailsID INNER JOIN Invoices ON "
        "Invoices.ID = InvoiceDetails.InvoiceID LEFT OUTER JOIN Patient ON Patient.ID = "
        "InvoicePayments.PatientID" +
        pay_period + filter;
    if (!byAllocatedPayment) {
      // What nobody allocated in the period belongs to the provider who took
      // the payment in, in the period of its cheque. By preferred doctor it
      // belongs to the patient's doctor, the person that view groups it
      // under. A payment allocated in full leaves no row.
      const std::string unallocated_filter =
          " AND (" +
          vb::Replace(ProviderNames, "ProviderID",
                      Byoption == 2 ? "Patient.DoctorID" : "InvoicePayments.InitialProviderID") +
          ")";
      const std::string remainder =
          "InvoicePayments.Value - (SELECT ISNULL(SUM(Amount),0) FROM InvoicePaymentAllocations "
          "WHERE InvoicePaymentAllocations.InvoicePaymentID = InvoicePayments.ID AND AppliedDate "
          " Between '" +
          start + "' AND '" + end + "')";
      pay_sql +=
          " UNION ALL  Select InvoicePayments.ID, InvoicePayments.AccountID, "
          "InvoicePayments.CheckDate as PDate, PaymentTypes.refund as Refund, "
          "(PaymentTypes.Name  + ' -  Credit from Partial Allocation') as PDescription, " +
          remainder +
          " AS Payment, InvoicePayments.IsInsurance as PIsInsurance, Patient.ID AS PatientID, "
          "Patient.FullName, InvoicePayments.InitialProviderID AS ProviderID, "
          "InvoicePayments.InitialProviderID AS OverseerID, Patient.DoctorID AS DoctorID, "
          "PaymentTypes.[ToTotalPaid?] AS ToTotalPaid, PaymentTypes.[Adjustment?] AS "
          "Adjustment, " +
          NameOf("InvoicePayments.InitialProviderID") + " AS ProviderName, " +
          NameOf("InvoicePayments.InitialProviderID") + " AS OverseerName, " +
          NameOf("Patient.DoctorID") +
          " AS DoctorName, InvoicePayments.PaymentName FROM InvoicePayments INNER JOIN "
          "PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID LEFT OUTER JOIN "
          "Patient ON Patient.ID = InvoicePayments.PatientID WHERE InvoicePayments.CheckDate >= "
          "'" +
          start + "' AND  InvoicePayments.CheckDate <= '" + end + "'" + unallocated_filter +
          " AND " + remainder + " <> 0";
    }
    pay_sql += pay_order;

    db::Recordset payments = Open(pay_sql);
    std::vector<PaymentRow> prows;
    {
      int n = 0;
      while (!payments.Eof()) {
        // A share of nothing says nothing. The credit rows' own test in SQL
        // ("<> 0") can let through a remainder of a few millionths of a
        // cent from an engine that subtracts money in floating point.
        if (cf.ReturnCur(payments["Payment"].Value()).IsZero()) {
          payments.MoveNext();
          continue;
        }
        PaymentRow p;
        p.id = cf.returnStr(payments["ID"].Value());
        p.description = cf.returnStr(payments["PDescription"].Value());
        p.full_name = cf.returnStr(payments["FullName"].Value());
        p.payment_name = cf.returnStr(payments["PaymentName"].Value());
        p.account = cf.returnStr(payments["AccountID"].Value());
        p.group = GroupOf(cf, payments, by_date, "PDate", pay_group_col, pay_id_col);
        p.adjustment = FlagSet(payments["Adjustment"].Value());
        p.to_total_paid = FlagSet(payments["ToTotalPaid"].Value());
        p.refund = FlagSet(payments["Refund"].Value());
        p.insurance = FlagSet(payments["PIsInsurance"].Value());
        p.listed = (p.adjustment && p.to_total_paid) || !p.adjustment;
        p.payment = cf.ReturnCur(payments["Payment"].Value());
        prows.push_back(std::move(p));
        if (++n % 100 == 0) RaiseProgress(payments);
        payments.MoveNext();
      }
    }

    Currency patient_sum2, insurance_sum2, overall_sum2, adjustment_sum2;
    Currency realloc_adjustment, realloc_payment;
    std::set<std::string> pay_groups;
    const char* pay_format = "^0.75in|<1.0in|<1.0in|<1.0in|^0.75in|>1in|>1in|>1in";
    const char* pay_header =
        "Trans\r\n#|Patient\r\nName|Payee\r\nName|Payment\r\nType|Account\r\nID|Patient\r\n"
        "Amount($)|Insurance\r\nAmount($)|Payment\r\nTotal($)";

    auto close_payment_group = [&](const std::string& pbody, const std::string& id,
                                   Currency patient, Currency insurance, Currency adjustment,
                                   Currency refund) {
      vsp.FontSize(8);
      vsp.StartTable();
      vsp.AddTable(pay_format, pay_header,
                   pbody + "||||Total|" + Money(cf, patient) + "|" + Money(cf, insurance) + "|" +
                       Money(cf, patient + insurance) + ";",
                   kHeaderColor);
      vsp.EndTable();
      vsp.FontSize(10);
      // The money moved to or from this person after the payment was
      // taken. It shows where a payment came from; the rows above already
      // count every applied share under the provider of its line (and the
      // share nobody applied under whoever took it in), so moving it in the
      // patient and insurance sums as well would count it twice for the
      // provider it reached. A day is nobody's, so the date view has no
      // such list.
      if (!by_date) {
        srptPaymentReallocation(static_cast<int32_t>(cf.ReturnVal(Variant(id))), dtStart, dtEnd,
                                Byoption, realloc_adjustment, realloc_payment);
      }
      // Every group, the last one too, closes with the same two-column
      // rows, so the eye finds them in one place. Refunds are kept apart
      // from the other payment adjustments and show when there are any.
      std::string rows_text = "Payment Adjustment Total|" + Money(cf, adjustment) + ";";
      if (!refund.IsZero()) rows_text += "Payment Refund Total|" + Money(cf, refund) + ";";
      vsp.AddTable("<2in|>1in", "", rows_text, kHeaderColor);
      vsp.CurrentY(vsp.CurrentY() + Twips(200));
      patient_sum2 += patient;
      insurance_sum2 += insurance;
      adjustment_sum2 += adjustment;
    };

    std::string pbody;
    Currency g_patient, g_insurance, g_adjustment, g_refund, row_patient, row_insurance;
    std::string pkey, pid;
    bool popen = false;
    for (size_t i = 0; i < prows.size(); ++i) {
      const PaymentRow& p = prows[i];
      if (!popen || p.group.key != pkey) {
        if (popen) close_payment_group(pbody, pid, g_patient, g_insurance, g_adjustment, g_refund);
        pbody.clear();
        g_patient = g_insurance = g_adjustment = g_refund = Currency();
        pkey = p.group.key;
        pid = p.group.id;
        popen = true;
        pay_groups.insert(pid);
        vsp.FontBold(true);
        vsp.FontSize(11);
        vsp.Text(p.group.name);
        vsp.KeepWithNext();
        vsp.FontSize(10);
        vsp.FontBold(false);
      }
      if (p.listed) {
        (p.insurance ? row_insurance : row_patient) += p.payment;
        (p.insurance ? g_insurance : g_patient) += p.payment;
        overall_sum2 += p.payment;
        // The lines of one transaction fold into one row, printed at its
        // last line. The share nobody allocated keeps a row of its own, so
        // that the credit reads apart from what was put on invoices.
        const bool last = i + 1 == prows.size() || prows[i + 1].id != p.id ||
                          prows[i + 1].description != p.description ||
                          prows[i + 1].group.key != p.group.key || !prows[i + 1].listed;
        if (last) {
          pbody += Cell(p.id) + "|" + Cell(p.full_name) + "|" + Cell(p.payment_name) + "|" +
                   Cell(p.description) + "|" + Cell(p.account) + "|" + Money(cf, row_patient) +
                   "|" + Money(cf, row_insurance) + "|" +
                   Money(cf, row_patient + row_insurance) + ";";
          row_patient = row_insurance = Currency();
        }
      }
      if (p.to_total_paid && p.adjustment && p.refund) {
        g_refund += p.payment;
      } else if (p.to_total_paid && p.adjustment) {
        g_adjustment += p.payment;
      }
    }
    if (popen) close_payment_group(pbody, pid, g_patient, g_insurance, g_adjustment, g_refund);

    // A provider who took nothing in the period can still have had money
    // moved away from or onto his work: his reallocations print too, in
    // both payment views, so that the reallocation totals below are whole.
    if (!by_date) {
      const int count = cf.GetNumberOfIDFromProviderName(ProviderNames);
      std::set<int32_t> done;
      for (int k = 1; k <= count; ++k) {
        const int32_t id = cf.GetIDFromProviderName(ProviderNames, k);
        if (pay_groups.count(CStr(Variant(id))) || !done.insert(id).second) continue;
        srptPaymentReallocation(id, dtStart, dtEnd, Byoption, realloc_adjustment,
                                realloc_payment);
      }
    }

    vsp.CurrentY(vsp.CurrentY() + Twips(200));
    vsp.FontBold(true);
    vsp.AddTable(">2in|>1in", "",
                 "Payment Adjustment Total|" + Money(cf, adjustment_sum2) +
                     ";Net New Payments|" + Money(cf, overall_sum2) +
                     ";Reallocation Adjustment|" +
                     (realloc_adjustment.IsZero() ? "" : "-") + Money(cf, realloc_adjustment) +
                     ";Reallocation Payment|" + Money(cf, realloc_payment) + ";Patient Total|" +
                     Money(cf, patient_sum2) + ";Insurance Total|" + Money(cf, insurance_sum2) +
                     ";Net Total|" + Money(cf, patient_sum2 + insurance_sum2) + ";",
                 kHeaderColor);
    vsp.FontBold(false);

    srptAccountSummary(payments);
  });
  Host().SetMousePointer(0);
}

void clsReports::srptPaymentReallocation(int32_t ProviderID, DateTime dtStart, DateTime dtEnd,
                                         int16_t Byoption, Currency& AdjustmentSum,
                                         Currency& PaymentSum) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  const std::string id = std::to_string(ProviderID);

  // A reallocation is money applied on another day than its cheque, away
  // from the provider who took it in (the overseer of the invoice) to
  // another provider of the invoice; by overseer, to another overseer. The
  // dates go in as yyyy-mm-dd, the one form both engines read.
  std::string base;
  if (Byoption == 1) {
    base =
        "SELECT (SELECT TOP 1 FirstName + ' ' + LastName FROM Employees WHERE Employees.ID = "
        "Invoices.OverseerID) AS ProviderName, Invoices.[Invoice#], InvoicePaymentDetails.[Date] "
        "AS [Date], InvoicePayments.CheckDate, Patient.FirstName, Patient.LastName, "
        "InvoicePayments.AccountID, Employees.FirstName +' ' + Employees.LastName AS "
        "initialProviderName, InvoicePaymentDetails.Amount, InvoicePayments.IsInsurance as "
        "Insurance FROM InvoicePayments INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID = "
        "InvoicePaymentDetails.InvoicePaymentID INNER JOIN Invoices ON "
        "InvoicePaymentDetails.InvoiceID = Invoices.ID AND InvoicePayments.InitialProviderID <> "
        "Invoices.OverseerID INNER JOIN Patient ON Invoices.PatientID = Patient.ID INNER JOIN "
        "Employees ON InvoicePayments.InitialProviderID = Employees.ID WHERE "
        "InvoicePaymentDetails.Date >= '" +
        start + "' AND InvoicePaymentDetails.Date <= '" + end +
        "' AND InvoicePayments.CheckDate <> InvoicePaymentDetails.Date and ";
  } else {
    base =
        "SELECT InvoicePaymentAllocations.AppliedDate as [Date], InvoicePayments.CheckDate, "
        "Patient.FirstName, Patient.LastName, Invoices.[Invoice#], InvoicePayments.AccountID, "
        "Employees.FirstName +' ' + Employees.LastName AS initialProviderName, "
        "Employees_1.FirstName + ' ' + Employees_1.LastName AS ProviderName, "
        "InvoicePaymentAllocations.Amount,InvoicePayments.IsInsurance as Insurance FROM "
        "InvoicePayments INNER JOIN InvoicePaymentAllocations ON InvoicePayments.ID = "
        "InvoicePaymentAllocations.InvoicePaymentID AND InvoicePayments.CheckDate <> "
        "InvoicePaymentAllocations.AppliedDate INNER JOIN InvoiceDetails ON InvoiceDetails.ID = "
        "InvoicePaymentAllocations.InvoiceDetailsID INNER JOIN Invoices ON Invoices.ID = "
        "InvoiceDetails.InvoiceID AND InvoicePayments.InitialProviderID <> "
        "InvoiceDetails.ProviderID AND InvoicePayments.InitialProviderID = Invoices.OverseerID "
        "INNER JOIN Patient ON Invoices.PatientID = Patient.ID INNER JOIN Employees ON "
        "InvoicePayments.InitialProviderID = Employees.ID INNER JOIN Employees Employees_1 ON "
        "InvoiceDetails.ProviderID = Employees_1.ID WHERE "
        "(InvoicePaymentAllocations.AppliedDate >= '" +
        start + "') AND (InvoicePaymentAllocations.AppliedDate <= '" + end + "') AND ";
  }
  const std::string away = Byoption == 1 ? "InvoicePayments.InitialProviderID =" + id
                                         : "InvoicePayments.InitialProviderID =" + id;
  const std::string onto = Byoption == 1 ? "Invoices.overseerID =" + id
                                         : "InvoiceDetails.ProviderID =" + id;

  std::string body;
  Currency adjustment, payment;
  auto add_rows = [&](const std::string& sql, bool leaving) {
    db::Recordset rs = Open(sql, db::adOpenForwardOnly);
    while (!rs.Eof()) {
      const Currency amount = cf.ReturnCur(rs["Amount"].Value());
      body += cf.ReturnFormatedDate(rs["Date"].Value(), "mm/dd/yyyy") + "\r\n" +
              cf.ReturnFormatedDate(rs["CheckDate"].Value(), "mm/dd/yyyy") + "|" +
              Cell(cf.returnStr(rs["FirstName"].Value()) + " " +
                   cf.returnStr(rs["LastName"].Value())) +
              "|" + Cell(cf.returnStr(rs["Invoice#"].Value())) + "|" +
              Cell(cf.returnStr(rs["AccountID"].Value())) + "|" +
              Cell(cf.returnStr(rs["initialProviderName"].Value())) + "|" +
              Cell(cf.returnStr(rs["ProviderName"].Value())) + "|" +
              (leaving ? "-" : "") + Money(cf, amount) + ";";
      (leaving ? adjustment : payment) += amount;
      rs.MoveNext();
    }
  };
  add_rows(base + away, true);
  add_rows(base + onto, false);
  if (body.empty()) return;

  std::string name;
  {
    db::Recordset rs = Open("SELECT FullName FROM Employees WHERE ID ='" + id + "'",
                            db::adOpenForwardOnly);
    if (!rs.Eof()) name = cf.returnStr(rs["FullName"].Value());
  }
  vsp.FontBold(true);
  vsp.Text("Payment Reallocation by " + name);
  vsp.KeepWithNext();
  vsp.FontBold(false);
  vsp.FontSize(8);
  vsp.AddTable("^1in|<1.5in|<1in|^1in|^1in|^1in|>1in",
               "Applied Date\r\nCheck Date|Patient\r\nName|Invoice\r\n#|Account\r\nID|Initial\r\n"
               "Allocation|Final\r\nAllocation|Amount",
               body, kHeaderColor);
  vsp.KeepWithNext();
  vsp.FontSize(10);
  vsp.AddTable("<2in|>1in", "",
               "Reallocation Adjustment:|" + std::string(adjustment.IsZero() ? "" : "-") +
                   Money(cf, adjustment) + ";Reallocation Payment:|" + Money(cf, payment) +
                   ";Net Payments:|" + Money(cf, payment - adjustment) + ";",
               kHeaderColor);
  AdjustmentSum += adjustment;
  PaymentSum += payment;
}

void clsReports::srptAccountSummary(db::Recordset& Payments) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // What each bank account took: the real payments and the adjustments that
  // count toward what was paid, read once from the payment rows.
  std::map<std::string, Currency> by_account;
  if (Payments.RecordCount() > 0) Payments.MoveFirst();
  while (!Payments.Eof()) {
    const bool adjustment = FlagSet(Payments["Adjustment"].Value());
    const bool to_total = FlagSet(Payments["ToTotalPaid"].Value());
    if (!adjustment || to_total) {
      const Variant account = Payments["AccountID"].Value();
      by_account[account.IsNull() || account.IsEmpty() ? std::string()
                                                        : CStr(Variant(cf.ReturnVal(account)))] +=
          cf.ReturnCur(Payments["Payment"].Value());
    }
    Payments.MoveNext();
  }
  std::string body;
  Currency total;
  db::Recordset accounts = Open("Select ID,Name from Accounts order by ID ", db::adOpenForwardOnly);
  while (!accounts.Eof()) {
    const std::string id = CStr(Variant(cf.ReturnVal(accounts["ID"].Value())));
    const Currency sum = by_account.count(id) ? by_account[id] : Currency();
    body += Cell(id) + "|" + Cell(cf.returnStr(accounts["Name"].Value())) + "|" + Money(cf, sum) +
            ";";
    total += sum;
    by_account.erase(id);
    accounts.MoveNext();
  }
  // Payments on no account (write-offs and the like, or an account since
  // removed) close the list as "None".
  Currency none;
  for (const auto& [id, sum] : by_account) none += sum;
  body += "|None|" + Money(cf, none) + ";";
  total += none;
  body += "Total||" + Money(cf, total) + ";";

  vsp.CurrentY(vsp.CurrentY() + Twips(300));
  vsp.TextAlign(7);
  vsp.FontBold(true);
  vsp.Text("Account Summary");
  vsp.KeepWithNext();
  vsp.FontBold(false);
  vsp.TextAlign(0);
  vsp.StartTable();
  vsp.AddTable("^2in|<3.5in|>2in", "Account ID|Account Name|Payments Total", body, kHeaderColor);
  const int last = vsp.TableCell(frame::tcRows).Number() > 0
                       ? static_cast<int>(vsp.TableCell(frame::tcRows).Number())
                       : 0;
  if (last > 0) {
    vsp.TableCell(frame::tcFontBold, last, 1, last, 3) = true;
    vsp.TableCell(frame::tcRowBorderAbove, last, 1, last, 3) = 1;
  }
  vsp.EndTable();
}

}  // namespace orv
