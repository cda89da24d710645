// Cash in: every payment of a period by payment type with its reversals,
// refunds and bulk cheques (the detailed report), and the money of each
// day with the payment types' shares (the summary).
#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/flags.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"

namespace orv {
namespace {

// Where a payment's money goes: to the bank on a slip, to the bank by
// itself (cards), or nowhere, a payment re-entered after its deposit.
enum class Bucket { Bank, Direct, AfterDeposit };

Bucket BucketOf(bool bank_deposit, bool rec_after_dep) {
  if (bank_deposit) return Bucket::Bank;
  if (!rec_after_dep) return Bucket::Direct;
  return Bucket::AfterDeposit;
}

}  // namespace

void clsReports::PrintAccountLine(const std::string& AccountID) {
  // An account that is not on file leaves the line out.
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open("Select * FROM Accounts WHERE ID = " + AccountID);
  if (rs.Eof()) return;
  vsp.Text("Account: " + cf.returnStr(rs["Name"].Value()) + "\tNo.: " +
           cf.returnStr(rs["AccountNumber"].Value()) + "\tTrans.: " +
           cf.returnStr(rs["TransitNumber"].Value()));
}

void clsReports::rptCashInDetailed(DateTime& dtStart, DateTime& dtEnd, std::string txtfilter,
                                   std::string UserName) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptCashInDetailed in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    // Portrait on half-inch margins; a package that draws the section
    // into its own document keeps its own paper.
    closing::HalfInchPortrait(vsp);
    vsp.DocName("Detailed Cash-In Report");
    vsp.StartDoc();
    srptCashInDetailed(dtStart, dtEnd, txtfilter, UserName);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptCashInDetailed(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                                    std::string UserName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  const DateTime first_day = dtStart.DatePart();
  const DateTime last_day = dtEnd.DatePart();

  PrintReportHeading(vsp.DocName().empty() ? "Detailed Cash-In Report" : vsp.DocName(), UserName,
                     "");
  vsp.FontName("Tahoma");
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.CurrentY(vsp.CurrentY() + Twips(500));

  // The account comes as the term "AccountID = n"; the account line wants
  // the bare number.
  std::string account_term;
  if (!AccountID.empty()) {
    vsp.TextAlign(1);
    PrintAccountLine(vb::Trim(vb::Replace(AccountID, "AccountID = ", "")));
    vsp.CurrentY(vsp.CurrentY() + Twips(500));
    account_term = AccountID;
  }
  const std::string filter = account_term.empty() ? "" : account_term + " AND ";

  // ---- Section one: the payments by type ----
  db::Recordset types = Open(
      "SHAPE {SELECT Name, ID, BankDeposit, RecAfterDep, CASE BankDeposit WHEN 1 THEN 'Bank "
      "Deposit' ELSE 'Direct Deposit' END AS DePosit FROM PaymentTypes WHERE ([Adjustment?] = 0 "
      "OR [Adjustment?] IS NULL) AND BulkPayment = 0 ORDER BY BankDeposit, Name}  AS "
      "rptBankDepositSlip APPEND ({SELECT InvoicePayments.*, Accounts.Name AS AccountName FROM "
      "InvoicePayments LEFT OUTER JOIN Accounts ON InvoicePayments.AccountID = Accounts.ID WHERE " +
      filter + "CheckDate >= '" + start + "' and CheckDate <= '" + end +
      "' ORDER BY CheckDate, InvoicePayments.ID}  AS rptBankDepositSlipDetails RELATE 'ID' TO "
      "'PaymentTypeID') AS rptBankDepositSlipDetails");

  vsp.TextAlign(0);
  vsp.FontSize(14);
  vsp.FontBold(true);
  vsp.Text("Payments");
  vsp.FontSize(10);
  vsp.Text(first_day == last_day ? Format(Variant(dtStart), "mmm/dd/yyyy")
                                 : Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                                       Format(Variant(dtEnd), "mmm/dd/yyyy"));
  vsp.CurrentY(vsp.CurrentY() + Twips(250));
  vsp.TableBorder(0);
  vsp.CurrentY(vsp.CurrentY() + Twips(250));

  // Received after deposit is a period figure: it runs on over the types.
  Currency period_gross, gross_for_net, other_bank, other_direct, received_after_deposit;
  long period_count = 0;
  const auto employee = [&](const Variant& id) {
    return cf.returnStr(db::ReturnValue(conn_, "Employees", "ID", id, "UserName"));
  };
  const auto row_cells = [&](db::Recordset& rs, const std::string& notes) {
    const std::string name = cf.returnStr(rs["PaymentName"].Value());
    return frame::EscapeCell(cf.returnStr(rs["ID"].Value())) + "|" +
           frame::EscapeCell(employee(rs["EmployeeID"].Value())) + "|" +
           frame::EscapeCell(cf.PursePaymentName(name, "Insurance")) + "|" +
           frame::EscapeCell(cf.PursePaymentName(name, "Patient")) + "|" +
           frame::EscapeCell(notes) + "|" +
           cf.MyFormat(cf.ReturnCur(rs["Value"].Value()), "Currency") + ";";
  };

  // Which types have rows decides which print, and the last of them ends
  // without the space that separates one type from the next.
  std::vector<long> with_rows;
  for (long i = 1; !types.Eof(); ++i, types.MoveNext()) {
    db::Recordset rows = types["rptBankDepositSlipDetails"].Chapter();
    if (!rows.Eof()) with_rows.push_back(i);
  }
  if (types.RecordCount() > 0) types.MoveFirst();
  long type_index = 0;
  size_t printed_types = 0;
  while (!types.Eof()) {
    ++type_index;
    db::Recordset rows = types["rptBankDepositSlipDetails"].Chapter();
    if (rows.Eof()) {
      types.MoveNext();
      continue;
    }
    ++printed_types;
    const std::string type_name = cf.returnStr(types["Name"].Value());
    const Bucket bucket =
        BucketOf(FlagSet(types["BankDeposit"].Value()), FlagSet(types["RecAfterDep"].Value()));
    Currency type_gross, type_reversed, type_bank, type_direct;
    long count = 0;
    bool reversals = false;
    std::string body;

    vsp.FontBold(true);
    vsp.FontSize(10);
    vsp.AddTable("<5in", "",
                 frame::EscapeCell(type_name + " - " + cf.returnStr(types["DePosit"].Value())), 0);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.FontSize(8);

    const auto add_to_bucket = [&](Currency value) {
      switch (bucket) {
        case Bucket::Bank: type_bank += value; break;
        case Bucket::Direct: type_direct += value; break;
        case Bucket::AfterDeposit: received_after_deposit += value; break;
      }
    };
    while (!rows.Eof()) {
      if (!rows["CancellationDate"].Value().IsNull()) reversals = true;
      const Currency value = cf.ReturnCur(rows["Value"].Value());
      ++count;
      type_gross += value;
      add_to_bucket(value);
      body += row_cells(rows, cf.returnStr(rows["Notes"].Value()));
      rows.MoveNext();
    }
    vsp.AddTable("<.8in|<1in|<1.6in|<1in|^2.1in|>1in",
                 "Trans#|Team Member|Payment Name|Patient Name|Note|Total($)", body, kHeaderColor);
    vsp.AddTable("<3.4in|<1.1in|>3in", "",
                 "|Payments#:" + std::to_string(count) + "|Total ($): " +
                     cf.MyFormat(type_gross, "Currency"),
                 0);
    // Cancelled payments stay in the gross: the money came in that day.
    period_gross += type_gross;

    if (reversals) {
      // A reversal here is a payment cancelled on the date of its money,
      // within the period: it never reached the bank, so it leaves the
      // deposit bucket it went into. Later cancellations stay deposited.
      vsp.AddTable("<.8in|<1in|<1.6in|<1in|^2.1in|>1in",
                   "Trans#|Team Member|Reversals|Patient Name|Note|Total($)", "", kHeaderColor);
      std::string reversed_body;
      long reversed_count = 0;
      rows.MoveFirst();
      while (!rows.Eof()) {
        const Variant cancelled = rows["CancellationDate"].Value();
        if (!cancelled.IsNull()) {
          const DateTime on = CDate(cancelled).DatePart();
          const DateTime check = CDate(rows["CheckDate"].Value()).DatePart();
          if (on >= first_day && on <= last_day && on == check) {
            const Currency value = cf.ReturnCur(rows["Value"].Value());
            type_reversed += value;
            ++reversed_count;
            add_to_bucket(-value);
            reversed_body += row_cells(rows, cf.returnStr(rows["Notes"].Value()) +
                                                 " Cancellation Date:" +
                                                 Format(cancelled, "mmm/dd/yyyy"));
          }
        }
        rows.MoveNext();
      }
      if (!reversed_body.empty()) {
        vsp.AddTable("<.8in|<1in|<1.6in|<1in|^2.1in|>1in", "", reversed_body, 0);
      }
      vsp.AddTable("<3.4in|<1.1in|>3in", "",
                   "|Reversals#: " + std::to_string(reversed_count) + "|Total ($): " +
                       cf.MyFormat(type_reversed, "Currency"),
                   0);
    }
    vsp.AddTable("<3.4in|<1.1in|>3in", "",
                 "Total " + frame::EscapeCell(type_name) + ": | |" +
                     cf.MyFormat(type_gross - type_reversed, "Currency"),
                 0);
    period_count += count;
    gross_for_net += type_gross;
    other_bank += type_bank;
    other_direct += type_direct;
    if (printed_types < with_rows.size()) vsp.CurrentY(vsp.CurrentY() + Twips(500));
    RaiseProgress(types);
    Host().DoEvents();
    types.MoveNext();
  }
  vsp.FontSize(10);
  if (period_count == 0) vsp.Text("           No Payments on File");

  // ---- Section two: the bulk cheques, by the deposit of their rows ----
  vsp.CurrentY(vsp.CurrentY() + Twips(250));
  const std::string bulk_term =
      account_term.empty() ? "" : " AND " + vb::Replace(account_term, "AccountID", "BulkPayments.AccountID");
  Currency bulk_listed[2];
  for (int bank = 1; bank >= 0; --bank) {
    db::Recordset bulk = Open(
        "SELECT DISTINCT BulkPayments.ID AS Expr1, BulkPayments.*, (SELECT LastName FROM "
        "Employees WHERE ID = BulkPayments.EmployeeID) AS TeamMember FROM InvoicePayments INNER "
        "JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID RIGHT OUTER JOIN "
        "BulkPaymentDetails ON InvoicePayments.ID = BulkPaymentDetails.InvoicePaymentID RIGHT "
        "OUTER JOIN BulkPayments ON BulkPaymentDetails.BulkPaymentID = BulkPayments.ID WHERE "
        "BulkPayments.EntryDate BETWEEN '" +
        start + "' AND  '" + end + "' AND PaymentTypes.BankDeposit = " + std::to_string(bank) +
        bulk_term + " ORDER BY BulkPayments.ID");
    if (bulk.Eof()) continue;
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.AddTable("<7.5in", "", bank ? "Bank Bulk Payments" : "Direct Bulk Payments", 0);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.FontSize(8);
    std::string body;
    while (!bulk.Eof()) {
      const Currency amount = cf.ReturnCur(bulk["Amount"].Value());
      body += frame::EscapeCell(cf.returnStr(bulk["ID"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(bulk["TeamMember"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(bulk["PaymentName"].Value())) + "|" +
              cf.ReturnFormatedDate(bulk["EntryDate"].Value(), "mmm/dd/yyyy") + "|" +
              frame::EscapeCell(cf.returnStr(bulk["CheckNo"].Value())) + "|" +
              cf.MyFormat(amount, "Currency") + ";";
      bulk_listed[bank] += amount;
      bulk.MoveNext();
    }
    // The fourth column holds the entry date under "Check Date": the front
    // desk enters a bulk cheque on the day it arrives.
    vsp.AddTable("<.8in|<1in|<1.6in|<1in|^2.1in|>1in",
                 "Trans#|Team Member|Payment Name|Check Date|Check#|Total($)", body, kHeaderColor);
    vsp.AddTable("<3.4in|<1.1in|>3in", "",
                 std::string(bank ? "Total Bank Bulk: ||" : "Total Direct Bulk: ||") +
                     cf.MyFormat(bulk_listed[bank], "Currency"),
                 0);
  }
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text("Bulk Payments - Bank: " + cf.MyFormat(bulk_listed[1], "Currency"));
  vsp.Text("Other Payments - Bank: " + cf.MyFormat(other_bank, "Currency"));
  vsp.Text("Total Bank: " + cf.MyFormat(bulk_listed[1] + other_bank, "Currency"));
  vsp.Text("");
  vsp.Text("Bulk Payments - Direct: " + cf.MyFormat(bulk_listed[0], "Currency"));
  vsp.Text("Other Payments - Direct: " + cf.MyFormat(other_direct, "Currency"));
  vsp.Text("Total Direct: " + cf.MyFormat(bulk_listed[0] + other_direct, "Currency"));
  vsp.Text("");
  vsp.Text("Received after Deposit: " + cf.MyFormat(received_after_deposit, "Currency"));
  vsp.FontBold(false);
  const Currency bank_deposits = other_bank;
  const Currency direct_deposits = other_direct;

  // ---- Section three: reversals and refunds entered as adjustments ----
  db::Recordset adjustments = Open(
      "SHAPE {SELECT * FROM PaymentTypes WHERE [Adjustment?] = 1 AND [ToTotalPaid?] = 1 AND "
      "RecAfterDep <> 1 AND BulkPayment = 0 ORDER BY BankDeposit, Name}  AS rptBankDepositSlip "
      "APPEND ({SELECT InvoicePayments.*, Accounts.Name AS AccountName FROM InvoicePayments LEFT "
      "OUTER JOIN Accounts ON InvoicePayments.AccountID = Accounts.ID WHERE " +
      filter + "CheckDate >= '" + start + "' and CheckDate <= '" + end +
      "' ORDER BY CheckDate, InvoicePayments.ID}  AS rptBankDepositSlipDetails RELATE 'ID' TO "
      "'PaymentTypeID') AS rptBankDepositSlipDetails");
  vsp.CurrentY(vsp.CurrentY() + Twips(250));
  vsp.FontSize(14);
  vsp.FontBold(true);
  vsp.Text("Payments Reversals And Refunds");
  vsp.KeepWithNext();
  vsp.TableBorder(0);
  Currency adjustments_total, refunds;
  long adjustment_count = 0;
  while (!adjustments.Eof()) {
    db::Recordset rows = adjustments["rptBankDepositSlipDetails"].Chapter();
    if (rows.Eof()) {
      adjustments.MoveNext();
      continue;
    }
    const std::string type_name = cf.returnStr(adjustments["Name"].Value());
    const bool refund = FlagSet(adjustments["refund"].Value());
    vsp.FontSize(10);
    vsp.FontBold(true);
    vsp.AddTable("<3in", "", frame::EscapeCell(type_name), 0);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.FontSize(8);
    Currency type_total;
    long reversal_count = 0;
    std::string body;
    while (!rows.Eof()) {
      const Currency value = cf.ReturnCur(rows["Value"].Value());
      // Refunds are counted apart and their count goes no further: the
      // closing count is of reversals only.
      if (refund) {
        refunds += value;
      } else {
        ++reversal_count;
      }
      type_total += value;
      body += row_cells(rows, cf.returnStr(rows["Notes"].Value()));
      rows.MoveNext();
    }
    vsp.AddTable("<.8in|<1in|<1.6in|<1in|^2.1in|>1in",
                 "Trans#|Team Member|Payment Name|Patient Name|Note|Total($)", body, kHeaderColor);
    vsp.AddTable("<3.4in|<1.1in|>3in", "",
                 "Total " + frame::EscapeCell(type_name) + ":||" +
                     cf.MyFormat(type_total, "Currency"),
                 0);
    adjustments_total += type_total;
    adjustment_count += reversal_count;
    adjustments.MoveNext();
  }
  vsp.FontSize(10);
  vsp.FontBold(false);
  // Said even when refunds were listed above: the count is of reversals.
  if (adjustment_count == 0) vsp.Text("           No Payments Reversals or Refunds on File");
  vsp.FontSize(8);
  vsp.AddTable("<3.4in|<1.1in|>3in", "",
               "|Total #:" + std::to_string(adjustment_count) + "|Total ($): " +
                   cf.MyFormat(adjustments_total, "Currency"),
               0);

  // ---- The closing summaries ----
  const auto bulk_sum = [&](int bank) {
    db::Recordset rs = Open(
        "SELECT Sum(BulkPayments.Amount) AS Total FROM BulkPayments INNER JOIN PaymentTypes On "
        "BulkPayments.PaymentTypeID = PaymentTypes.ID WHERE BulkPayments.EntryDate BETWEEN '" +
        start + "' AND '" + end + "' AND BankDeposit = " + std::to_string(bank) + bulk_term);
    return rs.Eof() ? Currency() : cf.ReturnCur(rs["Total"].Value());
  };
  const Currency bank_bulk = bulk_sum(1);
  const Currency direct_bulk = bulk_sum(0);
  const Currency bulk_total = bank_bulk + direct_bulk;
  vsp.CurrentY(vsp.CurrentY() + Twips(250));
  vsp.FontSize(10);
  // Adjustment rows are stored negative, so reversals and refunds add in.
  const auto money = [&](Currency c) { return cf.MyFormat(c, "Currency"); };
  vsp.FontBold(true);
  vsp.AddTable("<3.4in|>4.1in", "", "Cash Summary|", 0);
  vsp.KeepWithNext();
  vsp.FontBold(false);
  vsp.AddTable("<3.4in|>4.1in", "",
               "Gross Payments Entered: |" + money(bulk_total + period_gross) +
                   ";Payment Reversals: |" + money(adjustments_total - refunds) +
                   ";Refunds: |" + money(refunds) + ";Net Payments:|" +
                   money(bulk_total + adjustments_total + period_gross),
               0);
  vsp.FontBold(true);
  vsp.AddTable("<3.4in|>4.1in", "", "Bank Summary|", 0);
  vsp.KeepWithNext();
  vsp.FontBold(false);
  vsp.AddTable("<3.4in|>4.1in", "",
               "Bank Deposits: |" + money(bank_deposits) + ";Direct Deposits: |" +
                   money(direct_deposits) + ";Bank Bulk Payments: |" + money(bank_bulk) +
                   ";Direct Bulk Payments: |" + money(direct_bulk) + ";Total to Bank: |" +
                   money(bulk_total + bank_deposits + direct_deposits),
               0);

  // ---- Section four: each bulk cheque with the patients it paid ----
  db::Recordset split = Open(
      "SELECT DISTINCT BulkPaymentDetails.InvoicePaymentID, BulkPayments.*, "
      "BulkPaymentDetails.BulkPaymentID, BulkPaymentDetails.InvoicePaymentID, InvoicePayments.ID "
      "AS PaymentTrans, InvoicePayments.Value, PaymentTypes.BankDeposit as BankFlag, (SELECT "
      "Fullname FROM Patient WHERE Patient.ID = InvoicePayments.PatientID) as PatientNameCredit "
      "FROM BulkPayments INNER JOIN BulkPaymentDetails ON BulkPayments.ID = "
      "BulkPaymentDetails.BulkPaymentID INNER JOIN InvoicePayments ON "
      "BulkPaymentDetails.InvoicePaymentID = InvoicePayments.ID INNER JOIN PaymentTypes ON "
      "BulkPayments.PaymentTypeID = PaymentTypes.ID WHERE BulkPayments.EntryDate >= '" +
      start + "' AND BulkPayments.EntryDate <= '" + end + "'" + bulk_term +
      " ORDER BY PaymentTypes.BankDeposit,BulkPaymentDetails.InvoicePaymentID");
  if (split.Eof()) return;
  vsp.NewPage();
  vsp.FontSize(14);
  vsp.FontBold(true);
  vsp.TextAlign(7);
  vsp.Text("BulkPayment Report");
  vsp.FontSize(8);
  vsp.TextAlign(0);
  bool bank_flag = FlagSet(split["BankFlag"].Value());
  vsp.AddTable("^7.5in", "", bank_flag ? "Bank Bulk" : "Direct Bulk", 0);
  vsp.KeepWithNext();
  std::string body;
  Variant last_id;
  const auto flush = [&] {
    if (body.empty()) return;
    vsp.FontBold(false);
    vsp.AddTable("<1in|<3in|>3.5in", "Trans #|Name|Amount", body, kHeaderColor);
    vsp.CurrentY(vsp.CurrentY() + Twips(150));
    body.clear();
  };
  while (!split.Eof()) {
    const Variant id = split["ID"].Value();
    if (last_id.IsEmpty() || CStr(id) != CStr(last_id)) {
      flush();
      if (FlagSet(split["BankFlag"].Value()) != bank_flag) {
        bank_flag = !bank_flag;
        vsp.FontBold(true);
        vsp.AddTable("^7.5in", "", bank_flag ? "Bank Bulk" : "Direct Bulk", 0);
        vsp.KeepWithNext();
      }
      vsp.FontBold(true);
      vsp.Text("Trans#: " + cf.returnStr(id) + "  Date:" +
               cf.ReturnFormatedDate(split["EntryDate"].Value(), "mmm/dd/yyyy") + "  Check No." +
               cf.returnStr(split["CheckNo"].Value()) + "  Amount:" +
               cf.MyFormat(cf.ReturnCur(split["Amount"].Value()), "Currency") + "  " +
               cf.returnStr(split["PaymentName"].Value()));
      vsp.KeepWithNext();
      last_id = id;
    }
    body += frame::EscapeCell(cf.returnStr(split["PaymentTrans"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(split["PatientNameCredit"].Value())) + "|" +
            cf.MyFormat(cf.ReturnCur(split["Value"].Value()), "Currency") + ";";
    split.MoveNext();
  }
  flush();
  vsp.FontBold(false);
}


void clsReports::rptCashInSummary(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                                  std::string UserName) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptCashInSummary in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    closing::HalfInchPortrait(vsp);
    vsp.DocName("Cash-In Summary Report");
    vsp.StartDoc();
    srptCashInSummary(dtStart, dtEnd, AccountID, UserName);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptCashInSummary(DateTime dtStart, DateTime dtEnd, std::string AccountID,
                                   std::string UserName) {
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  // The account comes as a bare number here (the detailed report takes the
  // term "AccountID = n").
  AccountID = vb::Trim(AccountID);
  const std::string start = dtStart.ToIsoDate();
  const std::string end = dtEnd.ToIsoDate();
  std::string term = "(CheckDate >= '" + start + "' AND CheckDate <= '" + end + "')";
  if (!AccountID.empty()) term += " AND AccountID = " + AccountID;
  const std::string from =
      " FROM InvoicePayments INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = "
      "PaymentTypes.ID LEFT OUTER JOIN Accounts ON InvoicePayments.AccountID = Accounts.ID";

  // A NULL [Adjustment?] or RecAfterDep is a plain payment, as on the
  // detailed report and every other money report: the summary reads the
  // flags with ISNULL so that a cheque type saved without the flag is not
  // dropped from the day's deposits while the detailed report lists it.
  db::Recordset deposits = Open(
      "SELECT InvoicePayments.*, PaymentTypes.ID as PaymentTypeID, PaymentTypes.Name AS "
      "PaymentType, PaymentTypes.[Adjustment?] as [Adjustment?], "
      "PaymentTypes.BankDeposit,PaymentTypes.NSF as NSF,PaymentTypes.BulkPayment as "
      "BulkPayment,PaymentTypes.[ToTotalPaid?] as ToTotalPaid, Accounts.Name AS AccountName" +
      from + " WHERE (" + term + ")And (ISNULL(PaymentTypes.[Adjustment?], 0)= 0) AND "
      "ISNULL(PaymentTypes.RecAfterDep, 0) <> 1 AND (ISNULL(CancellationDate, '1900-01-01') > "
      "CheckDate OR CancellationDate IS NULL) ORDER BY InvoicePayments.CheckDate");
  const auto adjustment_set = [&](const char* flag) {
    return Open("SELECT InvoicePayments.[Value], Accounts.Name AS AccountName, "
                "InvoicePayments.CheckDate, Accounts.ID" +
                from + " WHERE (" + term + ") And (PaymentTypes.[Adjustment?]= 1) AND "
                "ISNULL(PaymentTypes.RecAfterDep, 0) <> 1 and PaymentTypes." + flag +
                " =1 ORDER BY InvoicePayments.CheckDate");
  };
  db::Recordset nsf = adjustment_set("NSF");
  db::Recordset refund = adjustment_set("Refund");
  db::Recordset reentry = Open(
      "SELECT sum(InvoicePayments.[Value]) as Total" + from + " WHERE ((" + term +
      ") AND (ISNULL(PaymentTypes.[Adjustment?], 0) = 0) AND (PaymentTypes.RecAfterDep = 1)and "
      "(InvoicePayments.CancellationDate > '" + end + "')) OR ((" + term +
      ") AND (ISNULL(PaymentTypes.[Adjustment?], 0) = 0) AND (PaymentTypes.RecAfterDep = 1) AND "
      "(InvoicePayments.CancellationDate IS NULL))");
  db::Recordset cancelled = Open(
      "SELECT InvoicePayments.[Value], Accounts.Name AS AccountName, InvoicePayments.CheckDate, "
      "InvoicePayments.CancellationDate, Accounts.ID" + from + " WHERE (" +
      vb::Replace(term, "CheckDate", "CancellationDate") +
      ")And (ISNULL(PaymentTypes.[Adjustment?], 0)= 0) And InvoicePayments.CheckDate<> "
      "InvoicePayments.CancellationDate ORDER BY InvoicePayments.CancellationDate");

  // The summary prints no dates of its own, so the heading carries them.
  PrintReportHeading(vsp.DocName().empty() ? "Cash-In Summary Report" : vsp.DocName(), UserName,
                     "From: " + Format(Variant(dtStart), "mmm/dd/yyyy") + " to " +
                         Format(Variant(dtEnd), "mmm/dd/yyyy"));
  vsp.FontSize(10);
  if (!AccountID.empty()) {
    vsp.TextAlign(1);
    vsp.FontBold(true);
    PrintAccountLine(AccountID);
    vsp.FontBold(false);
  }

  // The day cells, in the order they print.
  enum Cell { DirectRegular, DirectBulk, BankRegular, BankBulk, Nsf, Reversal, Refund, Net };
  // Each set read once and summed by the day its money belongs to.
  std::map<double, std::vector<Currency>> by_day;
  const auto day_of = [&](const Variant& v) { return CDate(v).DatePart().serial(); };
  const auto slot = [&](double day) -> std::vector<Currency>& {
    auto& cells = by_day[day];
    if (cells.empty()) cells.resize(8);
    return cells;
  };
  // AdjustmentSeen would hold adjustment rows of the deposit set; the set
  // asks for none, so it stays 0 and only ever lowers the minimum to 0.
  Currency adjustment_seen;
  for (; !deposits.Eof(); deposits.MoveNext()) {
    const Currency value = cf.ReturnCur(deposits["Value"].Value());
    if (FlagSet(deposits["Adjustment?"].Value())) {
      adjustment_seen += value;
      continue;
    }
    const bool bank = FlagSet(deposits["BankDeposit"].Value());
    const bool bulk = FlagSet(deposits["BulkPayment"].Value());
    slot(day_of(deposits["CheckDate"].Value()))[bank ? (bulk ? BankBulk : BankRegular)
                                                     : (bulk ? DirectBulk : DirectRegular)] +=
        value;
  }
  for (; !nsf.Eof(); nsf.MoveNext()) {
    slot(day_of(nsf["CheckDate"].Value()))[Nsf] += cf.ReturnCur(nsf["Value"].Value());
  }
  for (; !refund.Eof(); refund.MoveNext()) {
    slot(day_of(refund["CheckDate"].Value()))[Refund] += cf.ReturnCur(refund["Value"].Value());
  }
  for (; !cancelled.Eof(); cancelled.MoveNext()) {
    slot(day_of(cancelled["CancellationDate"].Value()))[Reversal] -=
        cf.ReturnCur(cancelled["Value"].Value());
  }

  Currency totals[8];
  Currency min = Currency::FromDouble(9999999);
  Currency max;
  std::string rows;
  long day_count = 0;
  for (DateTime day = dtStart.DatePart(); day <= dtEnd.DatePart();
       day = DateTime(day.serial() + 1)) {
    Currency cells[8];
    if (auto it = by_day.find(day.serial()); it != by_day.end()) {
      for (int c = 0; c < 8; ++c) cells[c] = it->second[c];
    }
    cells[Net] = cells[DirectRegular] + cells[DirectBulk] + cells[BankRegular] + cells[BankBulk];
    // Reversals and refunds come off the day's net; the NSF cell only
    // tells how much of the reversal was a returned cheque.
    cells[Net] = cells[Net] - (closing::Abs(cells[Reversal]) + closing::Abs(cells[Refund]));
    cells[Reversal] = cells[Reversal] - cells[Nsf];
    // A day whose amounts cancel out prints nothing and leaves the minimum
    // and maximum alone, but its figures still go into the totals.
    if (cells[Net] != Currency()) {
      rows += Format(Variant(day), "ddd,dd mmm,yy");
      for (int c = 0; c < 8; ++c) rows += "|" + cf.MyFormat(cells[c], "Currency");
      rows += ";";
      ++day_count;
      max = std::max(max, cells[Net]);
      min = std::min(min, cells[Net]);
    }
    for (int c = 0; c < 8; ++c) totals[c] += cells[c];
  }
  // The minimum is taken against the adjustments seen (0), so a period of
  // only positive days reports a minimum of 0; the front desk reads it as
  // "no day went below zero".
  min = std::min(min, adjustment_seen);

  if (day_count == 0) {
    vsp.TextAlign(0);
    vsp.Text("No payments cleared the system on this (these) date(s).");
    return;
  }
  const auto money = [&](Currency c) { return cf.MyFormat(c, "Currency"); };
  const Currency direct_total = totals[DirectRegular] + totals[DirectBulk];
  const Currency bank_total = totals[BankRegular] + totals[BankBulk];
  const Currency deposits_total = direct_total + bank_total;
  const Currency adjustments_total = totals[Nsf] + totals[Reversal] + totals[Refund];
  vsp.TextAlign(7);
  vsp.AddTable("^4.3in|^2.4in|^0.8in", "Deposits|Adjustments|Net", "", kHeaderColor);
  vsp.AddTable("<!1.1in|^1.6in|^1.6in|^2.4in|^0.8in", "|Direct|Bank||", "", kHeaderColor);
  vsp.AddTable("<1.1in|^0.8in|^0.8in|^0.8in|^0.8in|^0.8in|^0.8in|^0.8in|^0.8in",
               "Date|Regular($)|Bulk($)|Regular($)|Bulk($)|NSF($)|Reversal($)|Refund($)|Net($)",
               "", kHeaderColor);
  vsp.AddTable("<1.1in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in", "", rows, 0);
  std::string sub = "Sub Totals:";
  for (int c = 0; c < 8; ++c) sub += "|" + money(totals[c]);
  vsp.FontBold(true);
  vsp.AddTable("<!1.1in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in|>0.8in", "", sub, 0);
  vsp.AddTable("<!1.1in|>1.6in|>1.6in|>2.4in|>0.8in", "",
               "|" + money(direct_total) + "|" + money(bank_total) + "|" +
                   money(adjustments_total) + "|",
               0);
  vsp.AddTable("<!1.1in|>3.2in|>2.4in|>0.8in", "",
               "Total:|" + money(deposits_total) + "|" + money(adjustments_total) + "|" +
                   money(totals[Net]),
               0);

  const Currency reentry_total = reentry.Eof() ? Currency() : cf.ReturnCur(reentry["Total"].Value());
  vsp.TextAlign(0);
  vsp.Text("");
  vsp.FontBold(true);
  vsp.Text("Payment Re-entry($): " + money(reentry_total));
  vsp.Text("Total Net Payment($): " + money(reentry_total + totals[Net]));
  vsp.Text("");
  // The average is over the days that printed a row.
  vsp.Text("Daily Net Average($): " +
           money(Currency::FromDouble((reentry_total + totals[Net]).ToDouble() / day_count)));
  vsp.Text("Minimum Daily Net Income($): " + money(min));
  vsp.Text("Maximum Daily Net Income($): " + money(max));

  // The payment types over the whole period, with their share of the
  // deposits.
  vsp.TextAlign(1);
  vsp.FontBold(false);
  deposits.Sort("PaymentTypeID");
  const double whole = deposits_total == Currency() ? 1.0 : deposits_total.ToDouble();
  std::string types;
  const auto type_row = [&](const std::string& name, Currency sum) {
    types += frame::EscapeCell(name) + "|" + money(sum) + "|" +
             Format(Variant(sum.ToDouble() / whole), "Percent") + ";";
  };
  Currency sum;
  std::string last_type, last_name;
  bool any = false;
  for (deposits.MoveFirst(); !deposits.Eof(); deposits.MoveNext()) {
    const std::string type = cf.returnStr(deposits["PaymentTypeID"].Value());
    if (any && type != last_type) {
      type_row(last_name, sum);
      sum = Currency();
    }
    any = true;
    last_type = type;
    last_name = cf.returnStr(deposits["PaymentType"].Value());
    sum += cf.ReturnCur(deposits["Value"].Value());
  }
  if (any && sum != Currency()) type_row(last_name, sum);
  vsp.Text("");
  vsp.AddTable("^3in|>1in|>1in", "Payment Type|Total($)|Total(%)", types, kHeaderColor);
  vsp.TextAlign(0);
  vsp.Text("");
  vsp.Text("");
  vsp.Text(
      "Note: Any Payments cancelled on the day that they were entered are assumed to have not "
      "been deposited and will not be displayed. They will be displayed on the month end "
      "analysis report.");
}

}  // namespace orv
