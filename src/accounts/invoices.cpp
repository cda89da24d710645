// Invoices and receipts: the single documents the front desk hands or mails
// to a patient. An invoice with its lines and totals, the same invoice as a
// statement with the payments made towards it, and the receipt of one
// payment. All three stand on the office letterhead with the addressee's
// name and address at 2.25 in down, or below a letterhead that reaches
// further.
#include "accounts/account_model.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/format.h"
#include "common/vbstrings.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"
#include "platform/host/host_services.h"

namespace orv {

namespace {

const char* kNoInvoice =
    "You have not selected a valid invoice from the list. Please select a valid invoice from the "
    "list and try again.";

// The invoice with its provider and patient, and its lines as a chapter.
// The chapter reads only this invoice's lines: the relation would keep no
// others, and read whole the table of every line of the practice came into
// memory for one invoice (over a second and 50 MB at 20,000 patients).
std::string InvoiceShape(int32_t ID) {
  return "SHAPE {SELECT Invoices.*, Employees.LastName AS ProviderLastName, Employees.FirstName AS "
         "ProviderFirstName, Patient.ID as PatientID, Patient.PrimaryHolderID as PrimaryHolderID, "
         "Patient.BirthDate as BirthDate, Patient.FirstName AS PatientFirstName, Patient.LastName "
         "AS PatientLastName, Patient.Address AS PatientAddress FROM Invoices INNER JOIN Employees "
         "ON Invoices.ProviderID = Employees.ID INNER JOIN Patient ON Invoices.PatientID = "
         "Patient.ID WHERE Invoices.ID = " +
         std::to_string(ID) + "}  AS rptInvoice" +
         " APPEND ({SELECT Code, InvoiceID, Cost, Tooth#, Surface, Date, Status, Discount FROM "
         "InvoiceDetails WHERE InvoiceID = " +
         std::to_string(ID) +
         "}  AS rptInvoiceDetails RELATE 'ID' TO 'InvoiceID') AS rptInvoiceDetails";
}

// Children under this age with a primary holder other than themselves are
// billed to the holder.
constexpr long long kAgeOfMajority = 18;

// The top of the address block of invoices and receipts. A quarter inch
// above the top of a No. 10 envelope's window (2.5in on a letter page
// folded in three, where the statements put their addressee): the block's
// first line shows only when the letter rides up in the envelope.
constexpr Twips kWindowTop = Twips(3240);  // 2.25in

// Who an invoice is addressed to: the patient, or for a minor the primary
// holder. A patient without a birth date is taken to be of age, since
// nothing says otherwise. Names and address come from Patient; where the
// database has no name the host's `Name` and `Address` stand in.
struct Addressee {
  std::string name;
  std::string address;
};

Addressee InvoiceAddressee(clsReports& r, const db::Recordset& rs, const std::string& Name,
                           const std::string& Address) {
  clsCommonFunctions& cf = r.Common();
  Variant who = rs["PatientID"].Value();
  Variant holder = rs["PrimaryHolderID"].Value();
  Variant born = rs["BirthDate"].Value();
  if (!born.IsNull() && !holder.IsNull() && cf.ReturnVal(holder) != cf.ReturnVal(who)) {
    long long age = DateDiff("yyyy", cf.ReturnDate(born), Clock::Today());
    if (age < kAgeOfMajority) who = holder;
  }
  Addressee a;
  a.name =
      vb::Trim(cf.returnStr(db::ReturnValue(r.conn(), "Patient", "ID", who, "FirstName")) + " " +
               cf.returnStr(db::ReturnValue(r.conn(), "Patient", "ID", who, "LastName")));
  a.address = cf.returnStr(db::ReturnValue(r.conn(), "Patient", "ID", who, "Address"));
  if (a.name.empty()) {
    a.name = Name;
    if (a.address.empty()) a.address = Address;
  }
  return a;
}

// The document title in the centre below the letterhead.
void Title(frame::PrintSurface& vsp, const std::string& title) {
  vsp.FontName("Tahoma");
  vsp.FontSize(20);
  vsp.FontBold(true);
  vsp.TextAlign(1);
  vsp.Text(title);
  vsp.FontSize(10);
  vsp.FontBold(false);
  vsp.TextAlign(0);
}

// The addressee on the left at the envelope window, with `right` beside it.
void AddressBlock(frame::PrintSurface& vsp, const Addressee& a, const std::string& right) {
  if (vsp.CurrentY() < kWindowTop) vsp.CurrentY(kWindowTop);
  vsp.TextAlign(0);
  vsp.TableBorder(0);
  vsp.AddTable("<3.75in|<2.75in", "",
               frame::EscapeCell(a.name) + "\r\n" + frame::EscapeCell(a.address) + "|" +
                   frame::EscapeCell(right));
  vsp.Text(" ");
}

// The lines of an invoice: the seven-column form with the discount when any
// line has one, the six-column one with `plain_format` otherwise. The
// procedure cell carries the code and, below it, the fee code's wording.
void InvoiceLines(clsReports& r, db::Recordset lines, const std::string& plain_format) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  bool discounted = false;
  while (!lines.Eof()) {
    if (cf.ReturnCur(lines["Discount"].Value()) != Currency()) discounted = true;
    lines.MoveNext();
  }
  if (lines.RecordCount() > 0) lines.MoveFirst();
  std::string body;
  while (!lines.Eof()) {
    Variant code = lines["Code"].Value();
    std::string procedure = frame::EscapeCell(cf.returnStr(code, true));
    std::string wording =
        cf.returnStr(r.ReturnLookupValue("FeeCodes", "ID", code, "Description"), true);
    if (!wording.empty()) procedure += "\r\n" + frame::EscapeCell(wording);
    body += procedure + "|" + frame::EscapeCell(cf.returnStr(lines["Tooth#"].Value())) + "|" +
            frame::EscapeCell(cf.returnStr(lines["Surface"].Value())) + "|" +
            Format(lines["Date"].Value(), "mmm/dd/yyyy") + "|" +
            frame::EscapeCell(cf.returnStr(lines["Status"].Value())) + "|" +
            cf.MyFormat(cf.ReturnCur(lines["Cost"].Value()), "Currency");
    if (discounted) {
      Currency discount = cf.ReturnCur(lines["Discount"].Value());
      body += "|" +
              (discount == Currency() ? std::string("N/A") : Format(Variant(discount), "Percent"));
    }
    body += ";";
    lines.MoveNext();
  }
  vsp.TextAlign(0);
  vsp.TableBorder(7);
  if (discounted) {
    vsp.AddTable("<1.1in|^.75in|^.75in|^1.2in|<.9in|>1in|^.8In",
                 "Procedure|Tooth #|Surface|Date of Service|Status|Fee($)|Discount", body,
                 kHeaderColor);
  } else {
    vsp.AddTable(plain_format, "Procedure|Tooth #|Surface|Date of Service|Status|Fee($)", body,
                 kHeaderColor);
  }
  vsp.TableBorder(0);
}

// A figure in the "Currency" format ("$1,234.50"), as the invoices and
// receipts print their totals.
std::string CurrencyText(Currency c) {
  return Format(Variant(c), "Currency");
}

// A small table of figures that must not be torn across a page break (the
// totals of a document): it moves to the next page whole when it does not fit.
void FiguresTable(frame::PrintSurface& vsp, const std::string& format, const std::string& body) {
  vsp.StartTable();
  vsp.AddTable(format, "", body);
  vsp.TableCell(frame::tcKeepTogether) = true;
  vsp.EndTable();
}

// The office's message and invoice footer, by OfficeID.
std::string OfficeText(clsReports& r, const char* field) {
  return r.Common().returnStr(
      r.ReturnLookupValue("OfficeInformation", "ID", Variant(r.OfficeID), field), true);
}

// The addressee with the invoice's provider beside it, then the office's
// message to every patient, shared by the invoice and its statement.
void InvoiceAddressAndMessage(clsReports& r, const db::Recordset& rs, const Addressee& to) {
  frame::PrintSurface& vsp = r.VSP();
  clsCommonFunctions& cf = r.Common();
  AddressBlock(vsp, to,
               "Provider: " + cf.returnStr(rs["ProviderFirstName"].Value()) + " " +
                   cf.returnStr(rs["ProviderLastName"].Value()));
  std::string message = OfficeText(r, "Message");
  if (!message.empty()) {
    vsp.Text("Office Message: " + message);
    vsp.Text(" ");
  }
}

}  // namespace

void clsReports::rptInvoice(int32_t ID, std::string Name, std::string Address) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(InvoiceShape(ID));
  if (rs.Eof()) {
    Host().ShowFailure(kNoInvoice, host::vbOKOnly, "");
    return;
  }
  AccountModel model(conn(), InterestRate);
  Addressee to = InvoiceAddressee(*this, rs, Name, Address);

  vsp.DocName("Invoice");
  vsp.Orientation(0);
  vsp.StartDoc();
  PrintLetterHead();
  Title(vsp, "Invoice");

  // Date and number on the right, the addressee at the envelope window.
  vsp.TextAlign(2);
  vsp.TableBorder(7);
  vsp.AddTable(
      "^1in|^1in", "Date|Invoice #",
      Format(rs["Date"].Value(), "mmm/dd/yyyy") + "|" +
          frame::EscapeCell(cf.returnStr(rs["Invoice#"].Value())),
      kHeaderColor);
  InvoiceAddressAndMessage(*this, rs, to);

  InvoiceLines(*this, rs["rptInvoiceDetails"].Chapter(),
               "<1.3in|^.85in|^.85in|^1.2in|<1.1in|>1.2in");

  // The interest is only what the stored total and the amount the invoice
  // stands for today differ by; no rate is applied here.
  Currency subtotal = cf.ReturnCur(rs["InvoiceTotal"].Value());
  Currency total = model.ReturnInvoiceAmount(ID);
  vsp.Text(" ");
  vsp.TextAlign(2);
  vsp.TableBorder(0);
  FiguresTable(vsp, "<1in|>1.2in",
               "Sub Total|" + CurrencyText(subtotal) + ";Interest|" + CurrencyText(total - subtotal) + ";Total|" +
                   CurrencyText(total) + ";");
  vsp.TextAlign(0);

  std::string footer = OfficeText(*this, "InvoiceFooter");
  vsp.Text(" ");
  vsp.FontBold(true);
  vsp.Text(footer.empty() ? "Payment is Required on Date of Service" : footer);
  vsp.FontBold(false);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  Form().Show();
}

void clsReports::rptInvoiceStatement(int32_t ID, std::string Name, std::string Address) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  frame::PrintSurface& vsp = VSP();
  clsCommonFunctions& cf = Common();
  db::Recordset rs = Open(InvoiceShape(ID));
  if (rs.Eof()) {
    Host().ShowFailure(kNoInvoice, host::vbOKOnly, "");
    return;
  }
  AccountModel model(conn(), InterestRate);
  Addressee to = InvoiceAddressee(*this, rs, Name, Address);
  std::string number = cf.returnStr(rs["Invoice#"].Value());

  vsp.DocName("Invoice Statement on Invoice #" + number);
  vsp.Orientation(0);
  vsp.StartDoc();
  // The server's clock stamps the statement, not the client's day.
  conn().Execute("UPDATE Patient SET LastStatement = GETDATE() WHERE ID = " +
                 cf.returnStr(rs["PatientID"].Value()));
  PrintLetterHead();
  Title(vsp, "Invoice Statement");

  vsp.TextAlign(0);
  vsp.TableBorder(0);
  vsp.AddTable("<1in|>5in", "",
               Format(rs["Date"].Value(), "mmm/dd/yyyy") + "|Invoice#: " +
                   frame::EscapeCell(number));
  InvoiceAddressAndMessage(*this, rs, to);

  InvoiceLines(*this, rs["rptInvoiceDetails"].Chapter(),
               "<1.3in|^.85in|^.85in|^1.2in|<1.0in|>1.2in");

  Currency amount = model.ReturnInvoiceAmount(ID);
  vsp.Text(" ");
  vsp.TextAlign(2);
  vsp.FontBold(true);
  vsp.Text("Current Total: " + CurrencyText(amount));
  vsp.Text("Grand Total: " + CurrencyText(amount));
  vsp.FontBold(false);
  vsp.TextAlign(0);
  vsp.Text(" ");

  // Every share of a payment on this invoice counts, a payment without a
  // type among them: the type is only a label here.
  db::Recordset pay = Open(
      "SELECT InvoicePaymentDetails.Amount, InvoicePaymentDetails.[Date], InvoicePayments.Check#, "
      "InvoicePayments.CheckDate, InvoicePayments.PaymentName, PaymentTypes.Name AS PaymentType "
      "FROM InvoicePaymentDetails INNER JOIN InvoicePayments ON "
      "InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID LEFT OUTER JOIN PaymentTypes ON "
      "InvoicePayments.PaymentTypeID = PaymentTypes.ID WHERE InvoicePaymentDetails.InvoiceID = " +
      std::to_string(ID) + " ORDER BY InvoicePaymentDetails.[Date], InvoicePaymentDetails.ID");
  Currency paid;
  if (pay.Eof()) {
    vsp.Text("No payments on file.");
  } else {
    vsp.FontBold(true);
    vsp.Text("Payments Made Towards Invoice");
    vsp.FontBold(false);
    std::string body;
    while (!pay.Eof()) {
      Currency share = cf.ReturnCur(pay["Amount"].Value());
      paid += share;
      std::string type = cf.returnStr(pay["PaymentType"].Value(), true);
      std::string cheque = cf.returnStr(pay["Check#"].Value(), true);
      // Cards and cash carry a cheque number of 0: only a real one is shown.
      if (!cheque.empty() && cheque != "0") type += " #" + cheque;
      body += Format(pay["Date"].Value(), "mmm/dd/yyyy") + "|" +
              Format(pay["CheckDate"].Value(), "mmm/dd/yyyy") + "|" + frame::EscapeCell(type) + "|" +
              cf.MyFormat(share, "Currency") + ";";
      pay.MoveNext();
    }
    vsp.TableBorder(7);
    vsp.AddTable("<1.5in|<1.5in|<2in|>1.5in", "Date Applied|Date of Payment|Type|Amount Paid", body,
                 kHeaderColor);
    vsp.TableBorder(0);
  }
  vsp.Text(" ");
  vsp.TextAlign(2);
  vsp.FontBold(true);
  vsp.Text("Current Remaining: " + CurrencyText(amount - paid));
  vsp.FontBold(false);
  vsp.TextAlign(0);

  std::string footer = OfficeText(*this, "InvoiceFooter");
  vsp.Text(" ");
  vsp.Text(footer.empty() ? "Payment is Required on Date of Service" : footer);
  PrintPageFooters(kPrintedBy);
  vsp.EndDoc();
  vsp.PrintDoc(true);
}

void clsReports::rptReceipt(int32_t ID, std::string Name, std::string Address) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap("An Error has occurred in sub rptReceipt in object clsReports", [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    // The details are this payment's alone, as for the invoice's lines.
    db::Recordset rs = Open(
        "SHAPE {SELECT InvoicePayments.*, PaymentTypes.Name AS PaymentType FROM InvoicePayments "
        "INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID where "
        "InvoicePayments.ID = " +
        std::to_string(ID) + "}  AS rptReceipt" +
        " APPEND ({SELECT InvoicePaymentDetails.InvoicePaymentID, InvoicePaymentDetails.Amount, "
        "Invoices.Invoice#, Invoices.Date, Patient.FirstName AS PatientFirstName, Patient.LastName "
        "AS PatientLastName, Patient.Address as PatientAddress FROM InvoicePaymentDetails" +
        " INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID INNER JOIN Patient "
        "ON Invoices.PatientID = Patient.ID WHERE InvoicePaymentDetails.InvoicePaymentID = " +
        std::to_string(ID) +
        "}  AS rptReceiptDetails RELATE 'ID' TO 'InvoicePaymentID') AS rptReceiptDetails");
    if (rs.Eof()) {
      Host().ShowFailure(kNoInvoice, host::vbOKOnly, "");
      return;
    }
    db::Recordset details = rs["rptReceiptDetails"].Chapter();

    // The payer: the patient of the first invoice paid, or with no share on
    // any invoice the patient the payment was taken from.
    Addressee to;
    if (!details.Eof()) {
      to.name = vb::Trim(cf.returnStr(details["PatientFirstName"].Value()) + " " +
                         cf.returnStr(details["PatientLastName"].Value()));
      to.address = cf.returnStr(details["PatientAddress"].Value());
    } else {
      Variant who = rs["PatientID"].Value();
      to.name =
          vb::Trim(cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", who, "FirstName")) + " " +
                   cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", who, "LastName")));
      to.address = cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", who, "Address"));
    }
    if (to.name.empty()) {
      to.name = Name;
      if (to.address.empty()) to.address = Address;
    }

    vsp.DocName("Receipt");
    vsp.Orientation(0);
    vsp.StartDoc();
    PrintLetterHead();
    Title(vsp, "Receipt");

    vsp.TextAlign(2);
    vsp.TableBorder(7);
    vsp.AddTable("^1in|^1in", "Date|Payment #",
                 Format(rs["Date"].Value(), "mmm/dd/yyyy") + "|" +
                     frame::EscapeCell(cf.returnStr(rs["ID"].Value())),
                 kHeaderColor);
    AddressBlock(vsp, to, "");

    std::string note = cf.returnStr(rs["Notes"].Value(), true);
    vsp.TextAlign(0);
    vsp.TableBorder(7);
    vsp.AddTable("<2.5in|<4in", "Name|Payment Details",
                 frame::EscapeCell(cf.returnStr(rs["PaymentName"].Value())) +
                     "|Payment Type: " + frame::EscapeCell(cf.returnStr(rs["PaymentType"].Value())) +
                     "\r\nNote: " + (note.empty() ? std::string("(None)") : frame::EscapeCell(note)),
                 kHeaderColor);
    vsp.Text(" ");

    std::string body;
    while (!details.Eof()) {
      body += frame::EscapeCell(cf.returnStr(details["Invoice#"].Value())) + "|" +
              frame::EscapeCell(vb::Trim(cf.returnStr(details["PatientFirstName"].Value()) + " " +
                                         cf.returnStr(details["PatientLastName"].Value()))) +
              "|" + Format(details["Date"].Value(), "mmm/dd/yyyy") + "|" +
              cf.MyFormat(cf.ReturnCur(details["Amount"].Value()), "Currency") + ";";
      details.MoveNext();
    }
    vsp.AddTable("<1.4in|<2.2in|^1.5in|>1.4in", "Invoice #|Patient Name|Date|Amount Paid($)", body,
                 kHeaderColor);

    vsp.Text(" ");
    vsp.TextAlign(2);
    vsp.TableBorder(0);
    vsp.FontBold(true);
    FiguresTable(vsp, "<1.5in|>1.2in",
                 "Total Paid($)|" + cf.MyFormat(cf.ReturnCur(rs["Value"].Value()), "Currency") +
                     ";Amount to Credit($)|" +
                     cf.MyFormat(cf.ReturnCur(rs["TotalToCredit"].Value()), "Currency") + ";");
    vsp.FontBold(false);
    vsp.TextAlign(0);
    PrintPageFooters(kPrintedBy);
    vsp.EndDoc();
    vsp.PrintDoc(true);
  });
}

}  // namespace orv
