// The bank deposit slip: the payments of the period that go to the bank
// on a slip, by payment type, the bank bulk cheques, the grand total and
// a blank grid for counting the cash by hand. And the adjustment report,
// which hosts still call and which prints nothing.
#include <iostream>
#include <string>

#include "closing/closing_common.h"
#include "common/common_functions.h"
#include "common/currency.h"
#include "common/flags.h"
#include "common/format.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"

namespace orv {

void clsReports::rptBankDepositSlip(DateTime StartDate, DateTime Enddate, std::string UserName,
                                    int32_t AccountID) {
  const db::Snapshot snapshot(conn_);
  Trap("An Error has occurred in Sub rptBankDepositSlip in Class clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    closing::HalfInchPortrait(vsp);
    vsp.DocName("Bank Deposit Slip");
    vsp.StartDoc();
    PrintReportHeading("Bank Deposit Slip", UserName,
                       "From: " + Format(Variant(StartDate), "mmm/dd/yyyy") + " to " +
                           Format(Variant(Enddate), "mmm/dd/yyyy"));
    srptBankDepositSlip(StartDate, Enddate, UserName, AccountID);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    Form().Show();
  });
}

void clsReports::srptBankDepositSlip(DateTime StartDate, DateTime Enddate, std::string UserName,
                                     int32_t AccountID) {
  (void)UserName;  // the heading is the caller's
  const db::Snapshot snapshot(conn_);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  const std::string start = StartDate.ToIsoDate();
  const std::string end = Enddate.ToIsoDate();
  const DateTime first_day = StartDate.DatePart();
  const DateTime last_day = Enddate.DatePart();
  const std::string account = std::to_string(AccountID);

  // The child keeps out what never reached the bank: a payment cancelled
  // on its own day, and a cheque dated before it was entered (its money
  // went on an earlier slip). A payment cancelled later is in the set; step
  // 3 decides whether it is listed. "Not cancelled" is read as Cancelled
  // NULL or 0: the payment screens write either.
  db::Recordset types = Open(
      "SHAPE {SELECT Name, ID FROM PaymentTypes WHERE ([Adjustment?] = 0 OR [Adjustment?] IS "
      "NULL) AND BankDeposit <> 0 AND BulkPayment <> 1 ORDER BY Name}  AS rptBankDepositSlip "
      "APPEND ({SELECT InvoicePayments.ID, InvoicePayments.Notes, InvoicePayments.Date, "
      "InvoicePayments.Check#, InvoicePayments.Value, InvoicePayments.CheckDate, "
      "InvoicePayments.PaymentName, InvoicePayments.Cancelled, InvoicePayments.CancellationDate, "
      "Accounts.Name AS AccountName, InvoicePayments.PaymentTypeID FROM InvoicePayments LEFT "
      "OUTER JOIN Accounts ON InvoicePayments.AccountID = Accounts.ID where " +
      (AccountID < 1 ? std::string() : "AccountID = " + account + " AND ") + "CheckDate >= '" +
      start + "' and CheckDate <= '" + end +
      "' AND (CancellationDate > CheckDate OR ISNULL(Cancelled, 0) = 0) AND CheckDate >= [Date] "
      "ORDER BY InvoicePayments.Date, InvoicePayments.ID} AS rptBankDepositSlipDetails RELATE "
      "'ID' TO 'PaymentTypeID') AS rptBankDepositSlipDetails");

  if (AccountID >= 1) {
    vsp.TextAlign(7);
    vsp.FontSize(10);
    vsp.FontBold(true);
    PrintAccountLine(account);
    vsp.FontBold(false);
    vsp.TextAlign(0);
  }

  Currency grand_total;
  const auto totals_row = [&](long count, Currency total) {
    vsp.TableBorder(4);
    vsp.FontBold(true);
    vsp.AddTable("<!3.75in|>!3.75in", "",
                 "Total # of Payments: " + std::to_string(count) + "|Total to Deposit ($): " +
                     cf.MyFormat(total, "Currency"),
                 0);
    vsp.FontBold(false);
  };
  const auto type_heading = [&](const std::string& name) {
    // A type's heading is never left alone at the foot of a page.
    vsp.FontSize(10);
    vsp.FontBold(true);
    if (vsp.CurrentY() > vsp.PageHeight() - vsp.MarginBottom() - 4 * vsp.TextHeight("X")) {
      vsp.NewPage();
    }
    vsp.TableBorder(4);
    vsp.AddTable("<2.5in", "", frame::EscapeCell(name), 0);
    vsp.KeepWithNext();
    vsp.FontBold(false);
    vsp.FontSize(8);
  };

  while (!types.Eof()) {
    db::Recordset rows = types["rptBankDepositSlipDetails"].Chapter();
    if (rows.Eof()) {
      types.MoveNext();
      continue;
    }
    type_heading(cf.returnStr(types["Name"].Value()));
    Currency type_total;
    std::string body;
    for (; !rows.Eof(); rows.MoveNext()) {
      // A payment cancelled after the slip's dates was deposited and is
      // listed; one cancelled within them is left out of the list (it is
      // still counted in the number of payments below).
      if (FlagSet(rows["Cancelled"].Value())) {
        const Variant on = rows["CancellationDate"].Value();
        if (!on.IsNull()) {
          const DateTime day = CDate(on).DatePart();
          if (day >= first_day && day <= last_day) continue;
        }
      }
      const Currency value = cf.ReturnCur(rows["Value"].Value());
      std::string check = cf.returnStr(rows["Check#"].Value(), true);
      if (check.empty() || check == "0") check = "(N/A)";
      body += cf.ReturnFormatedDate(rows["CheckDate"].Value(), "mmm/dd/yyyy") + "|" +
              frame::EscapeCell(check) + "|" + frame::EscapeCell(cf.returnStr(rows["ID"].Value())) +
              "|" + frame::EscapeCell(cf.returnStr(rows["PaymentName"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(rows["Notes"].Value())) + "|" +
              cf.MyFormat(value, "Currency") + ";";
      type_total += value;
    }
    vsp.TableBorder(8);
    vsp.AddTable("<!1in|<!.7in|<!.7in|<!2in|<!2in|>!1.1in",
                 "Payment Date|Check #|Trans #|Name on Payment|Notes|Amount($)", body, kHeaderColor);
    totals_row(rows.RecordCount(), type_total);
    grand_total += type_total;
    RaiseProgress(types);
    Host().DoEvents();
    types.MoveNext();
  }

  // The bank bulk cheques of the period, by their entry date.
  db::Recordset bulk = Open(
      "SELECT BulkPayments.*, BulkPayments.ID as TranID From BulkPayments INNER JOIN PaymentTypes "
      "ON Bulkpayments.PaymentTypeID = PaymentTypes.ID WHERE EntryDate >= '" +
      start + "' AND EntryDate <= '" + end + "' AND RecAfterDep = 0 AND BankDeposit = 1 " +
      (AccountID < 1 ? std::string() : " AND AccountID = " + account) +
      " ORDER BY BulkPayments.ID");
  if (!bulk.Eof()) {
    type_heading("BulkPayments");
    Currency bulk_total;
    std::string body;
    long count = 0;
    for (; !bulk.Eof(); bulk.MoveNext()) {
      const Currency amount = cf.ReturnCur(bulk["Amount"].Value());
      body += cf.ReturnFormatedDate(bulk["EntryDate"].Value(), "mmm/dd/yyyy") + "|" +
              frame::EscapeCell(cf.returnStr(bulk["CheckNo"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(bulk["TranID"].Value())) + "|" +
              frame::EscapeCell(cf.returnStr(bulk["PaymentName"].Value())) + "||" +
              Format(Variant(amount), "Currency") + ";";
      bulk_total += amount;
      ++count;
    }
    vsp.TableBorder(8);
    vsp.AddTable("<!1in|<!.8in|<!.6in|<!2in|<!2in|>!1.1in",
                 "Payment Date|Check #|Trans #|Name on Payment|Notes|Amount($)", body, kHeaderColor);
    totals_row(count, bulk_total);
    grand_total += bulk_total;
  }

  vsp.TextAlign(2);
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.InlineText("Grand Total($): " + cf.MyFormat(grand_total, "Currency"));
  vsp.Text("");
  vsp.CurrentX(vsp.MarginLeft());
  vsp.TextAlign(0);
  vsp.Text("Cash");
  vsp.KeepWithNext();
  vsp.FontSize(8);
  vsp.FontBold(false);
  vsp.TableBorder(7);
  // The second cell is left blank for counting by hand.
  vsp.AddTable("<1in|1in", "",
               "$100.00 X|;$50.00 X|;$20.00 X|;$10.00 X|;$5.00 X|;$2.00 X|;$1.00 X|;Coin|;Total|",
               0);
  vsp.FontSize(10);
}

void clsReports::rptAdjustmentReport(DateTime StartDate, DateTime Enddate, std::string UserName) {
  // Kept on the interface for the hosts that still call it; it has never
  // printed anything. It says so on the error stream so that a run from
  // the command line does not look like a lost file.
  (void)StartDate;
  (void)Enddate;
  (void)UserName;
  std::cerr << "rptAdjustmentReport prints nothing: it is kept for hosts that call it.\n";
}

}  // namespace orv
