// Patient statements: one document holding a statement per patient or per
// family of a list. Each statement has the office letterhead, the addressee
// in the envelope window, an opening balance, the dated charges and payments
// of the period with running portions, totals, the current balance and the
// year's payments, then post-dated payments, treatments in progress and the
// family's coming appointments, and a summary box laid over its first page
// once the document is complete. With UpdateLastStatementDate the run
// stamps Patient.LastStatement.
#include <algorithm>
#include <optional>
#include <string>
#include <vector>

#include "accounts/account_model.h"
#include "accounts/stamp_transaction.h"
#include "accounts/statement_words.h"
#include "common/common_functions.h"
#include "common/datetime.h"
#include "common/errors.h"
#include "common/format.h"
#include "common/report_math.h"
#include "common/vbstrings.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/surface.h"
#include "platform/db/lookup.h"

namespace orv {

namespace {

using statements::StatementWords;

const char* kStatementsTrap = "An Error has occurred in Sub rptStatements in Class clsReports.";

// One line of a statement: a charge (positive) or a payment (negative), with
// the share of it that lies on the insurer and on the patient.
struct Line {
  int32_t patient = 0;
  std::string name;
  DateTime date;
  std::string description;
  Currency amount;
  Currency insurance_portion;
  Currency patient_portion;
  bool is_insurance = false;
};

// Every amount on the statement, in the statement's own money format.
std::string Money(Currency c) {
  return Format(Variant(c), "$######.00");
}

// An opening figure prints only when there is one.
std::string OpeningCell(Currency c) {
  return c == Currency() ? std::string() : Money(c);
}

bool IsSet(const Variant& flag, clsCommonFunctions& cf) {
  return !flag.IsNull() && cf.ReturnVal(flag) != 0;
}

// A text as one cell of the table language, whose "|" and ";" separate
// cells and rows.
std::string Cell(const std::string& text) {
  return vb::Replace(vb::Replace(vb::Trim(text), "|", "/"), ";", ",");
}

// A closing section of the statement (post-dated payments, treatments in
// progress): a bold heading over a small borderless table.
void SectionTable(frame::PrintSurface& vsp, const std::string& heading, const char* format,
                  const std::string& header, const std::string& body) {
  vsp.Text(" ");
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text(heading);
  vsp.FontBold(false);
  vsp.FontSize(8);
  vsp.TableBorder(0);
  vsp.AddTable(format, header, body, kHeaderColor);
  vsp.FontSize(10);
}

int32_t IdOf(clsCommonFunctions& cf, const db::Recordset& rs, const char* field) {
  Variant v = rs[field].Value();
  return cf.ReturnNumber(v);
}

// Adds the rows of an invoice query (fields IDate, PatientID, FirstName,
// LastName, IDescription, ICost, IPatientPortion, InsurancePortion,
// IsAssignment) to the statement's lines.
//
// A portion the row does not name stays 0, and a NULL cost is 0: an
// unassigned invoice lies wholly on the patient, so its insurance share is
// nothing rather than unknown, and a line without a cost charges nothing.
void AddInvoiceRows(clsCommonFunctions& cf, db::Recordset& rs, std::vector<Line>& lines,
                    bool& has_insurance) {
  while (!rs.Eof()) {
    Line line;
    line.patient = IdOf(cf, rs, "PatientID");
    line.name = cf.returnStr(rs["FirstName"].Value()) + " " + cf.returnStr(rs["LastName"].Value());
    line.date = cf.ReturnDate(rs["IDate"].Value());
    std::string description = cf.returnStr(rs["IDescription"].Value());
    if (description.empty()) {
      line.description = "Dental Treatment";
    } else if (description[0] == '-') {
      line.description = description + " Account Adjustment";
    } else {
      line.description = description;
    }
    line.amount = cf.ReturnCur(rs["ICost"].Value());
    if (!IsSet(rs["IsAssignment"].Value(), cf)) {
      line.patient_portion = line.amount;
      line.is_insurance = false;
    } else {
      line.patient_portion = cf.ReturnCur(rs["IPatientPortion"].Value());
      line.insurance_portion = cf.ReturnCur(rs["InsurancePortion"].Value());
      line.is_insurance = true;
      has_insurance = true;
    }
    lines.push_back(std::move(line));
    rs.MoveNext();
  }
  rs.Close();
}

// Adds the rows of a payment query (fields PDate, PDescription, Payment,
// PIsInsurance, PatientID, FirstName, LastName). The payment is negative
// already and lies wholly on the patient or wholly on the insurer.
void AddPaymentRows(clsCommonFunctions& cf, db::Recordset& rs, std::vector<Line>& lines,
                    bool& has_insurance) {
  while (!rs.Eof()) {
    Line line;
    line.patient = IdOf(cf, rs, "PatientID");
    line.name = cf.returnStr(rs["FirstName"].Value()) + " " + cf.returnStr(rs["LastName"].Value());
    line.date = cf.ReturnDate(rs["PDate"].Value());
    line.description = cf.returnStr(rs["PDescription"].Value());
    line.amount = cf.ReturnCur(rs["Payment"].Value());
    if (!IsSet(rs["PIsInsurance"].Value(), cf)) {
      line.patient_portion = line.amount;
    } else {
      line.insurance_portion = line.amount;
      line.is_insurance = true;
      has_insurance = true;
    }
    lines.push_back(std::move(line));
    rs.MoveNext();
  }
  rs.Close();
}

// The single value of a one-row sum, NULL as 0.
Currency SumOf(clsReports& r, const std::string& sql) {
  db::Recordset rs = r.Open(sql, db::adOpenForwardOnly);
  Currency sum = rs.Eof() ? Currency() : r.Common().ReturnCur(rs[0L].Value());
  rs.Close();
  return sum;
}


// A heading to write on a page once the document is complete.
struct PendingText {
  int page;
  Twips y;
  std::string text;
};

}  // namespace

void clsReports::rptStatements(DateTime dtStart, DateTime dtEnd, std::vector<int32_t>& PatientIDs,
                               bool Family, std::string PatientFooter, bool AppSummary,
                               bool IncompleteTreatment, bool PostDated, bool Details, bool YTD,
                               bool UpdateLastStatementDate, bool DetailOutstanding) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  Trap(kStatementsTrap, [&] {
    frame::PrintSurface& vsp = VSP();
    clsCommonFunctions& cf = Common();
    AccountModel model(conn(), InterestRate);
    const int32_t host_office = OfficeID;

    // 1. The pointer, the arrays by the list's upper bound and a fresh
    // document. The host's list carries one spare slot at its end, which is
    // never printed.
    Host().SetMousePointer(11);
    Host().DoEvents();
    const int statements = PatientIDs.empty() ? 0 : int(PatientIDs.size()) - 1;
    std::vector<int> first_page(statements, 0);
    std::vector<Currency> patient_balance(statements), insurance_balance(statements);
    std::vector<bool> french(statements, false);
    std::vector<bool> printed(statements, false);
    std::vector<Twips> address_top(statements);
    std::vector<PendingText> pending;
    vsp.KillDoc();

    // 2. Every listed patient is read before the document starts: one that
    // is not on file stops the run before anything is printed or stamped.
    std::vector<int32_t> responsible(statements, 0);
    for (int i = 0; i < statements; ++i) {
      db::Recordset who = Open("SELECT ID, ResponsibleFamilyMemberID FROM Patient WHERE ID = " +
                                   std::to_string(PatientIDs[i]),
                               db::adOpenForwardOnly);
      if (who.Eof()) {
        throw ReportError(kErrDatabase,
                          "There is no patient with the ID " + std::to_string(PatientIDs[i]) + ".");
      }
      Variant r = who["ResponsibleFamilyMemberID"].Value();
      responsible[i] = cf.ReturnNumber(r);
      who.Close();
    }

    vsp.Orientation(0);
    vsp.CancelDialog(false);
    vsp.StartDoc();
    const std::string start_text = Format(Variant(dtStart), "yyyy-MM-dd");
    const std::string end_text = Format(Variant(dtEnd), "yyyy-MM-dd");
    const std::string today_text = Format(Variant(Clock::Today()), "yyyy-mm-dd");
    const DateTime day_before_start = DateAdd("d", -1, dtStart);
    // With DetailOutstanding the statement shows only what is still open at
    // dtEnd: its invoices and their payments, without an opening balance.
    // The flag governs on its own, with or without Details, so that asking
    // for the open items never prints paid ones.
    const bool detailed = Details || DetailOutstanding;
    std::optional<StampTransaction> stamps;
    if (UpdateLastStatementDate) stamps.emplace(conn());
    bool any_printed = false;

    for (int i = 0; i < statements; ++i) {
      const int32_t patient_id = PatientIDs[i];
      // The family is everyone who shares the patient's responsible member.
      // A patient who names none has a family of one: the condition on
      // ResponsibleFamilyMemberID would not even find the patient, so such a
      // statement is drawn by the patient's own ID.
      const bool by_family = Family && responsible[i] != 0;
      const int32_t family_id = responsible[i] != 0 ? responsible[i] : patient_id;
      const std::string id_text = std::to_string(patient_id);
      const std::string family_text = std::to_string(family_id);
      const std::string who =
          by_family ? " WHERE ResponsibleFamilyMemberID = " + family_text : " WHERE Patient.ID = " + id_text;
      const std::string invoice_dates = " AND [Complete?] <> 0 AND Invoices.[Date] >= '" +
                                        start_text + "' AND Invoices.[Date] <= '" + end_text;
      const std::string payment_dates = " AND InvoicePayments.CheckDate >= '" + start_text +
                                        "' AND InvoicePayments.CheckDate <= '" + end_text;
      const std::string invoice_order =
          DetailOutstanding ? "' and (invoices.finaldate is null or invoices.finaldate >= '" +
                                  end_text +
                                  "') Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC"
                            : "' Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC";

      // 3. The title by the kind of statement, and the invoice queries.
      if (Family) {
        vsp.DocName(detailed ? "Detailed Family Statement" : "Family Statement");
      } else if (Details) {
        vsp.DocName("Detailed Patient Statement");
      } else {
        // The outstanding form of a patient's statement has always carried
        // the family title.
        vsp.DocName(DetailOutstanding ? "Detailed Family Statement" : "Patient Statement");
      }
      const std::string head =
          "SELECT Invoices.[Date] as IDate, Patient.ID as PatientID, Patient.LastName, "
          "Patient.FirstName,";
      std::vector<Line> lines;
      bool has_insurance = false;
      if (detailed) {
        db::Recordset rs = Open(
            head +
            " 'IDescription' = CASE WHEN (FeeCodes.LaypersonDescription IS NOT NULL) THEN "
            "InvoiceDetails.Code + ' ' + CAST(ISNULL(FeeCodes.LaypersonDescription, '') AS "
            "varchar(50))WHEN (FeeCodes.LaypersonDescription IS NULL) THEN InvoiceDetails.Code + "
            "' ' + ISNULL(FeeCodes.Description, '') END,"
            " InvoiceDetails.Cost as ICost, ISNULL(InvoiceDetails.PatientCost, "
            "InvoiceDetails.Cost) as IPatientPortion, (InvoiceDetails.Cost - "
            "ISNULL(InvoiceDetails.PatientCost, InvoiceDetails.Cost)) as InsurancePortion, "
            "IsAssignment"
            " FROM Invoices"
            " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
            " INNER JOIN InvoiceDetails ON  Invoices.ID = InvoiceDetails.InvoiceID"
            " LEFT OUTER JOIN FeeCodes ON InvoiceDetails.Code = FeeCodes.ID " +
            who + invoice_dates + invoice_order);
        AddInvoiceRows(cf, rs, lines, has_insurance);
        // The invoices that have no lines print as one line each. This
        // query names its insurance column "InsurancePorion": on an
        // assigned invoice without lines the column the merge reads is not
        // there, and the run stops at the trap.
        const std::string no_lines =
            by_family ? " WHERE InvoiceDetails.InvoiceID IS NULL AND ResponsibleFamilyMemberID = " +
                         family_text
                   : " WHERE InvoiceDetails.InvoiceID IS NULL AND Patient.ID = " + id_text;
        db::Recordset bare = Open(
            head +
            " 'Dental Treatment' AS IDescription, IsAssignment,"
            " Invoices.InvoiceTotal as ICost, ISNULL(Invoices.PatientTotal, Invoices.Invoicetotal) "
            "as IPatientPortion, (Invoices.InvoiceTotal - ISNULL(Invoices.PatientTotal, "
            "Invoices.InvoiceTotal)) as InsurancePorion, IsAssignment"
            " FROM Invoices"
            " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
            " LEFT OUTER JOIN InvoiceDetails ON  Invoices.ID = InvoiceDetails.InvoiceID" +
            no_lines + invoice_dates + invoice_order);
        AddInvoiceRows(cf, bare, lines, has_insurance);
      } else {
        db::Recordset rs = Open(
            head +
            " IDescription = CASE WHEN InterestInvoiceID IS NULL THEN 'Dental Treatment' ELSE "
            "'Interest' END, IsAssignment,"
            " Invoices.InvoiceTotal as ICost, ISNULL(Invoices.PatientTotal, Invoices.Invoicetotal) "
            "as IPatientPortion, (Invoices.InvoiceTotal - ISNULL(Invoices.PatientTotal, "
            "Invoices.InvoiceTotal)) as InsurancePortion, IsAssignment"
            " FROM Invoices"
            " INNER JOIN Patient ON Invoices.PatientID = Patient.ID" +
            who + invoice_dates + invoice_order);
        AddInvoiceRows(cf, rs, lines, has_insurance);
      }

      // 4. The payments of the period, in up to two parts each: the shares
      // put on invoices (found under the invoice's patient) and what is left
      // on account (under the payer); a payment put on no invoice at all
      // prints whole.
      const std::string payment_description =
          " Select InvoicePayments.CheckDate as PDate, PDescription = CASE WHEN "
          "InvoicePayments.[Check#] <> '0' THEN PaymentTypes.Name + ' - Cheque:' + "
          "InvoicePayments.[Check#] ELSE PaymentTypes.Name END,";
      const std::string payer_columns =
          " InvoicePayments.IsInsurance as PIsinsurance, Patient.ID as PatientID, "
          "Patient.LastName, Patient.FirstName ";
      const std::string payment_types =
          " LEFT OUTER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID";
      {
        db::Recordset rs = Open(payment_description +
                                " -(InvoicePayments.Value - InvoicePayments.TotalAllocated) as "
                                "Payment," +
                                payer_columns +
                                " FROM InvoicePayments"
                                " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                                payment_types + who + payment_dates +
                                "' AND TotalAllocated = 0 ORDER BY InvoicePayments.CheckDate");
        AddPaymentRows(cf, rs, lines, has_insurance);
      }
      {
        const std::string closing =
            DetailOutstanding
                ? "'  AND InvoicePayments.TotalAllocated <> 0 AND (invoices.finaldate is null or "
                  "invoices.finaldate >= '" +
                      end_text + "') ORDER BY InvoicePayments.CheckDate"
                : "' AND InvoicePayments.TotalAllocated <> 0 ORDER BY InvoicePayments.CheckDate";
        db::Recordset rs = Open(
            payment_description + " -InvoicePaymentDetails.Amount as Payment," + payer_columns +
            " FROM InvoicePayments"
            " INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID  = "
            "InvoicePaymentDetails.InvoicePaymentID"
            " INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID"
            " INNER JOIN Patient ON Invoices.PatientID = Patient.ID" +
            payment_types + who + payment_dates + closing);
        AddPaymentRows(cf, rs, lines, has_insurance);
      }
      {
        const std::string payer =
            by_family ? who : " WHERE InvoicePayments.PatientID = " + id_text;
        db::Recordset rs = Open(
            " Select InvoicePayments.CheckDate as PDate, PDescription = CASE WHEN "
            "InvoicePayments.[Check#] <> '0' THEN 'Credit from Partial Allocation - Cheque:' + "
            "InvoicePayments.[Check#] ELSE PaymentTypes.Name END, -(InvoicePayments.Value - "
            "InvoicePayments.TotalAllocated) as Payment," +
            payer_columns +
            " FROM InvoicePayments"
            " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
            payment_types + payer + payment_dates +
            "' AND (InvoicePayments.Value - InvoicePayments.TotalAllocated) > 0 AND "
            "(InvoicePayments.Value - InvoicePayments.TotalAllocated) <> Value ORDER BY "
            "InvoicePayments.CheckDate");
        AddPaymentRows(cf, rs, lines, has_insurance);
      }

      // 5. Oldest first, by patient and by day. The charges went in before
      // the payments, so on one day an invoice stands above the payment
      // that settles it and the running balance rises before it falls,
      // whatever hour the invoice was written at. Lines of one day
      // otherwise keep the order their query gave them (invoices latest
      // first, the lines of one invoice as the database returns them).
      std::stable_sort(lines.begin(), lines.end(), [](const Line& a, const Line& b) {
        return a.patient != b.patient ? a.patient < b.patient
                                      : a.date.DatePart() < b.date.DatePart();
      });

      // 6. The people told on the statement, with their opening figures as
      // of the day before the period. The figures are all known before
      // anything prints, so that one member's insurance gives every table
      // of the statement the insurance columns.
      struct Member {
        int32_t id;
        Currency a, pp, pb, ip, ib;
        bool has_lines = false;
      };
      std::vector<Member> members;
      {
        std::vector<int32_t> ids;
        if (by_family) {
          db::Recordset rs = Open(
              "SELECT ID"
              " FROM Patient"
              " WHERE ResponsibleFamilyMemberID = " +
                  family_text,
              db::adOpenForwardOnly);
          while (!rs.Eof()) {
            ids.push_back(IdOf(cf, rs, "ID"));
            rs.MoveNext();
          }
          rs.Close();
        } else {
          ids.push_back(patient_id);
        }
        for (int32_t id : ids) {
          Member m{id, {}, {}, {}, {}, {}};
          if (!DetailOutstanding) {
            Variant as_of(day_before_start);
            m.a = cf.ReturnCur(model.ReturnPatientBalance(id, false, as_of, 0));
            m.pp = m.pb = cf.ReturnCur(model.ReturnPatientBalance(id, false, as_of, 1));
            m.ip = m.ib = cf.ReturnCur(model.ReturnPatientBalance(id, false, as_of, 2));
          }
          if (m.ip != Currency()) has_insurance = true;
          m.has_lines = std::any_of(lines.begin(), lines.end(),
                                    [&](const Line& l) { return l.patient == id; });
          members.push_back(m);
        }
      }
      // A member is told when the period has lines for them or an opening
      // figure is not 0; a statement is laid out when anyone is told, so a
      // balance carried into a quiet period still reaches the patient.
      auto told = [](const Member& m) {
        return m.has_lines || m.a != Currency() || m.pp != Currency() || m.ip != Currency();
      };
      const bool lay_out = std::any_of(members.begin(), members.end(), told);

      if (lay_out) {
        // 7. Page set-up: the addressee is the responsible member when the
        // patient has another one, else the patient; the language, the name
        // and the address are theirs, so that the envelope shows one person.
        const int32_t addressee =
            responsible[i] != 0 && responsible[i] != patient_id ? responsible[i] : patient_id;
        const Variant addressee_key(static_cast<int>(addressee));
        french[i] = cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", addressee_key,
                                                 "Language"),
                                 true) == "F";
        const StatementWords& words = french[i] ? statements::kFrench : statements::kEnglish;
        if (any_printed) vsp.NewPage();
        any_printed = true;
        printed[i] = true;
        first_page[i] = vsp.CurrentPage();
        vsp.MarginLeft(".75in");
        vsp.MarginRight(".75in");
        vsp.MarginHeader(".5in");
        vsp.FontName("Tahoma");

        // The letterhead of the addressee's office; one without an office
        // on file gets the host's.
        Patient().PatientID(addressee);
        OfficeID = Patient().OfficeID() > 0 ? Patient().OfficeID() : host_office;
        PrintLetterHead();
        const Twips below_letterhead = vsp.CurrentY();
        vsp.FontName("Tahoma");
        vsp.FontSize(10);
        vsp.FontBold(true);
        const Twips title_width = vsp.TextWidth(words.title);
        const Twips title_height = vsp.TextHeight(words.title);
        vsp.TextBox(words.title, vsp.PageWidth() - vsp.MarginRight() - title_width,
                    vsp.MarginHeader(), title_width, title_height);
        vsp.FontBold(false);

        // The name and address where the window of the envelope shows them,
        // or just below a letterhead that reaches that far down.
        const Twips window = frame::ParseLength(".9in");
        Twips top = frame::ParseLength("2.5in");
        if (below_letterhead > top) top = below_letterhead;
        address_top[i] = top;
        vsp.CurrentY(top);
        vsp.CurrentX(window);
        vsp.TextAlign(0);
        vsp.IndentLeft(window - vsp.MarginLeft());
        const std::string address =
            cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", addressee_key, "Address"));
        vsp.Text(vb::Trim(
            cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", addressee_key, "FirstName")) +
            " " +
            cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", addressee_key, "LastName"))));
        const std::string street = ReturnAddressPart(address, 0);
        const std::string street2 = ReturnAddressPart(address, 1);
        const std::string city = ReturnAddressPart(address, 2);
        const std::string province = vb::UCase(ReturnAddressPart(address, 3));
        const std::string postal = ReturnAddressPart(address, 4);
        if (street.empty() && city.empty() && province.empty() && postal.empty()) {
          // An address the parts cannot be read from prints as it stands.
          if (!vb::Trim(address).empty()) vsp.Text(address);
        } else {
          vsp.Text(street);
          if (!street2.empty()) vsp.Text(street2);
          vsp.Text(city + ", " + province + " " + postal);
        }
        vsp.IndentLeft(0);
        vsp.CurrentX(vsp.MarginLeft());
        // The summary box goes in beside the address once the document is
        // complete; the body starts below the taller of the two. Whether the
        // box has its insurance rows is known now: the insurer's balance is
        // the members' openings and their lines' insurance portions.
        Currency insurer_owes;
        for (const Member& m : members) {
          if (!told(m)) continue;
          insurer_owes += m.ib;
          for (const Line& line : lines)
            if (line.patient == m.id) insurer_owes += line.insurance_portion;
        }
        const bool box_has_insurance = insurer_owes != Currency();
        std::string box = std::string("<1in|>1.7in;") + words.summary_header + ";Date|x;" +
                          words.summary_family + "x;";
        if (box_has_insurance)
          box += std::string(words.summary_insurance) + "x;" + words.summary_total + "x;";
        vsp.FontSize(10);
        vsp.MeasureTable(box);
        const int box_rows = box_has_insurance ? 5 : 3;
        const Twips below_box = top + vsp.MeasuredTableHeight() + Twips(box_rows * 72);
        if (vsp.CurrentY() < below_box) vsp.CurrentY(below_box);
        vsp.Text(" ");

        const char* format = has_insurance ? "<.75in|<2in|>0.75in|>.75in|>.75in|>.75in|>.75in"
                                           : "<1in|<3in|>1.25in|>1.25in";
        const char* header = has_insurance ? words.header_insurance : words.header_plain;

        // 8. The body, one table per member: the opening, the lines with
        // the running figures, the totals.
        Currency family_pb, family_ib;
        for (Member& m : members) {
          if (!told(m)) continue;
          Currency a = m.a, pp = m.pp, pb = m.pb, ip = m.ip, ib = m.ib;
          // The member's name stays with the head of the table: with less
          // than an inch left, the member starts on the next page.
          if (vsp.CurrentY() + Twips(1440) > vsp.PageHeight() - vsp.MarginBottom()) vsp.NewPage();
          vsp.FontSize(10);
          vsp.FontBold(true);
          vsp.TextAlign(0);
          const Variant member_key(static_cast<int>(m.id));
          vsp.Text(vb::Trim(
              cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", member_key, "FirstName")) +
              " " +
              cf.returnStr(db::ReturnValue(conn(), "Patient", "ID", member_key, "LastName"))));
          vsp.FontBold(false);
          vsp.FontSize(8);

          std::string body = words.opening;
          if (has_insurance) {
            body += OpeningCell(a) + "|" + OpeningCell(ip) + "|" + OpeningCell(pp) + "|" +
                    OpeningCell(ib) + "|" + OpeningCell(pb) + ";";
          } else {
            body += OpeningCell(a) + "|" + OpeningCell(pb) + ";";
          }
          std::vector<int> payment_rows;
          int row = 1;
          for (const Line& line : lines) {
            if (line.patient != m.id) continue;
            ++row;
            a += line.amount;
            pp += line.patient_portion;
            pb += line.patient_portion;
            ip += line.insurance_portion;
            ib += line.insurance_portion;
            body += Format(Variant(line.date), "MMM/d/yyyy") + "|" +
                    Cell(line.description) + "|" + Money(line.amount);
            if (has_insurance) {
              body += "|" + Money(line.insurance_portion) + "|" + Money(line.patient_portion) +
                      "|" + Money(ib) + "|" + Money(pb) + ";";
            } else {
              body += "|" + Money(a) + ";";
            }
            if (line.amount < Currency()) payment_rows.push_back(row);
            Host().DoEvents();
          }
          body += words.totals;
          if (has_insurance) {
            body += Money(a) + "|" + Money(ip) + "|" + Money(pp) + "|" + Money(ib) + "|" +
                    Money(pb) + ";";
          } else {
            body += Money(a) + "|" + Money(pb) + ";";
          }
          const int totals_row = row + 1;
          family_pb += pb;
          family_ib += ib;

          vsp.TableBorder(0);
          vsp.StartTable();
          vsp.AddTable(format, header, body, kHeaderColor);
          // Payments stand apart from charges in italics; the header and
          // the totals are set off by a little space and a rule.
          const int columns = has_insurance ? 7 : 4;
          for (int p : payment_rows) vsp.TableCell(frame::tcFontItalic, p, 1, p, columns) = true;
          vsp.TableCell(frame::tcMarginBottom, 0, 0, 0, 0) = ".05in";
          vsp.TableCell(frame::tcMarginTop, totals_row, 0, totals_row, 0) = ".05in";
          vsp.TableCell(frame::tcRowBorderAbove, totals_row, 0, totals_row, 0) = 1;
          vsp.TableCell(frame::tcFontBold, totals_row, 1, totals_row, columns) = true;
          vsp.EndTable();
          vsp.FontSize(10);
          vsp.Text(" ");
        }
        patient_balance[i] = family_pb;
        insurance_balance[i] = family_ib;

        // 9. The balance: what the whole account owes, the patient's and
        // the insurer's running balances together, as the summary box's
        // total shows it.
        vsp.FontSize(10);
        vsp.FontBold(true);
        vsp.TextAlign(0);
        vsp.Text(std::string(Family ? words.family_balance : words.patient_balance) +
                 Format(Variant(dtEnd), "MMM/d/yyyy") + ": " +
                 Format(Variant(family_pb + family_ib), "Currency"));

        // 10. The year's payments, printed only when asked: the lines say
        // "YTD", and a sum over the period alone under that name would
        // mislead. Each sum is the money not put on any invoice, the shares
        // on the family's invoices (office and pure adjustment types left
        // out) and the credit left over from cheques partly put on invoices;
        // a payment with nothing allocated counts whole in the first part
        // and not again in the third.
        if (YTD) {
          const std::string year_start = std::to_string(dtStart.Year()) + "-01-01";
          const std::string dates = " AND InvoicePayments.CheckDate >= '" + year_start +
                                    "' AND InvoicePayments.CheckDate <= '" + end_text;
          auto year_sum = [&](const std::string& kind) {
            return SumOf(*this,
                         " Select ISNULL(SUM(InvoicePayments.Value), 0) as Payment "
                         " FROM InvoicePayments"
                         " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                             who + dates + "' AND TotalAllocated = 0 AND " + kind) +
                   SumOf(*this,
                         " Select ISNULL(SUM(InvoicePaymentDetails.Amount), 0) as Payment "
                         " FROM InvoicePayments"
                         " INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID  = "
                         "InvoicePaymentDetails.InvoicePaymentID"
                         " INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID"
                         " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
                         " INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = "
                         "PaymentTypes.ID" +
                             who + dates +
                             "' AND PaymentTypes.OfficePayment = 0 AND NOT ([Adjustment?] = 1 AND "
                             "[ToTotalPaid?] = 0 AND BankDeposit = 0 AND Refund = 0 AND "
                             "OfficePayment = 0 AND BulkPayment = 0 AND RecAfterDep = 0) AND " +
                             kind) +
                   SumOf(*this,
                         " Select ISNULL(SUM(InvoicePayments.Value - "
                         "InvoicePayments.TotalAllocated), 0) as Payment"
                         " FROM InvoicePayments"
                         " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                             who + dates +
                             "' AND (InvoicePayments.Value - InvoicePayments.TotalAllocated) > 0 "
                             "AND (InvoicePayments.Value - InvoicePayments.TotalAllocated) <> "
                             "Value AND " +
                             kind);
          };
          Currency paid = year_sum("(IsInsurance = 0 OR IsInsurance IS NULL)");
          Currency insurer_paid = year_sum("IsInsurance = 1");
          vsp.Text(std::string(Family ? words.family_payment_ytd : words.patient_payment_ytd) +
                   Format(Variant(paid), "Currency"));
          vsp.Text(std::string(Family ? words.family_insurance_ytd : words.patient_insurance_ytd) +
                   Format(Variant(insurer_paid), "Currency"));
        }
        vsp.FontBold(false);

        // 11. The sections asked for, each only when it has rows.
        if (PostDated) {
          db::Recordset rs = Open(
              " SELECT InvoicePayments.CheckDate AS PDate, PaymentTypes.Name as PDescription, "
              "InvoicePayments.Value as Payment, InvoicePayments.IsInsurance as PIsInsurance, "
              "Patient.ID as PatientID, Patient.LastName, Patient.FirstName "
              " FROM InvoicePayments"
              " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
              payment_types + who + " AND  InvoicePayments.CheckDate > '" + end_text + "'" +
              " ORDER BY CheckDate");
          if (!rs.Eof()) {
            std::string body;
            while (!rs.Eof()) {
              body += Format(rs["PDate"].Value(), "MMM/d/yyyy") + "|" +
                      Cell(cf.returnStr(rs["PDescription"].Value())) + "|" +
                      Money(cf.ReturnCur(rs["Payment"].Value())) + ";";
              rs.MoveNext();
            }
            SectionTable(vsp, words.post_dated_heading, "^1in|^2in|>1in", words.post_dated_header, body);
          }
          rs.Close();
        }
        if (IncompleteTreatment) {
          db::Recordset rs = Open(
              head +
              " IDescription = CASE WHEN FeeCodes.LaypersonDescription IS NOT NULL THEN "
              "InvoiceDetails.Code + ' ' + CAST(FeeCodes.LaypersonDescription AS varchar(50)) "
              "WHEN FeeCodes.LaypersonDescription IS NULL THEN InvoiceDetails.Code + ' ' + "
              "FeeCodes.Description END,"
              " InvoiceDetails.Cost as ICost, InvoiceDetails.PatientCost as IPatientPortion, "
              "InvoiceDetails.Cost - InvoiceDetails.PatientCost as InsurancePortion, "
              "Patient.FirstName, Patient.LastName, IsAssignment"
              " FROM Invoices"
              " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
              " INNER JOIN InvoiceDetails ON  Invoices.ID = InvoiceDetails.InvoiceID"
              " LEFT OUTER JOIN FeeCodes ON InvoiceDetails.Code = FeeCodes.ID " +
              who + " AND [Complete?] = 0 AND Invoices.[Date] >= '" + start_text +
              "' AND Invoices.[Date] <= '" + end_text +
              "' Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC");
          if (!rs.Eof()) {
            std::string body;
            while (!rs.Eof()) {
              body += Format(rs["IDate"].Value(), "MMM/d/yyyy") + "|" +
                      cf.returnStr(rs["FirstName"].Value()) + " " +
                      cf.returnStr(rs["LastName"].Value()) + "|" +
                      Cell(cf.returnStr(rs["IDescription"].Value())) + "|" +
                      Money(cf.ReturnCur(rs["ICost"].Value())) + ";";
              rs.MoveNext();
            }
            SectionTable(vsp, words.in_progress_heading, "<1in|<1in|<2in|>1in", words.in_progress_header, body);
          }
          rs.Close();
        }
        if (AppSummary) {
          // Room for the heading is left above the table; the heading goes
          // in only when the table printed (the pen moved). It is written
          // once the document is complete, on the page where the table
          // began, since a long table may have carried the pen onward.
          const Twips heading_room = Twips(300);
          vsp.FontSize(10);
          vsp.Text(" ");
          if (vsp.CurrentY() + heading_room + Twips(1440) > vsp.PageHeight() - vsp.MarginBottom())
            vsp.NewPage();
          vsp.CurrentY(vsp.CurrentY() + heading_room);
          const Twips began = vsp.CurrentY();
          const int began_page = vsp.CurrentPage();
          vsp.FontSize(8);
          vsp.TextAlign(0);
          FamilyAppointmentsSummary(family_id);
          if (vsp.CurrentY() != began || vsp.CurrentPage() != began_page) {
            pending.push_back({began_page, began - heading_room, words.appointments_heading});
          } else {
            vsp.CurrentY(began - heading_room);
          }
          vsp.FontSize(10);
        }

        // 12. The footers of the statement.
        vsp.FontSize(10);
        vsp.FontBold(false);
        vsp.TextAlign(0);
        if (!PatientFooter.empty()) {
          vsp.Text(" ");
          vsp.Text(PatientFooter);
        }
        std::string office_footer = cf.returnStr(ReturnOfficeValue("StatementFooter"), true);
        if (!office_footer.empty()) {
          vsp.Text(" ");
          vsp.Text(office_footer);
        }
      }

      // 13. The stamp, once per list position, printed or not. It records
      // the day of the run, not dtEnd.
      if (UpdateLastStatementDate) {
        conn().Execute("UPDATE Patient SET LastStatement = '" + today_text +
                       (by_family ? "' WHERE ResponsibleFamilyMemberID = " + family_text
                               : "' WHERE ID = " + id_text));
      }
      RaiseProgress(ProgressPercent(i + 1, statements));
      Host().DoEvents();
    }
    if (stamps) stamps->Commit();

    // 14. The page footers end the document, in the language of the last
    // statement; then each statement's summary box goes over its first page.
    const bool last_french = statements > 0 && french[statements - 1];
    PrintPageFooters(last_french ? statements::kFrench.title : kPrintedBy);
    vsp.EndDoc();
    for (const PendingText& text : pending) {
      vsp.StartOverlay(text.page, false);
      vsp.FontName("Tahoma");
      vsp.FontSize(10);
      vsp.FontBold(true);
      vsp.TextAlign(0);
      vsp.CurrentX(vsp.MarginLeft());
      vsp.CurrentY(text.y);
      vsp.Text(text.text);
      vsp.FontBold(false);
      vsp.EndOverlay();
    }
    for (int i = 0; i < statements; ++i) {
      if (!printed[i]) continue;
      const StatementWords& words = french[i] ? statements::kFrench : statements::kEnglish;
      int rows = 2;
      std::string body = "Date|" + Format(Variant(dtStart), "MMM/d/yyyy") + " - " +
                         Format(Variant(dtEnd), "MMM/d/yyyy") + ";" + words.summary_family +
                         Format(Variant(patient_balance[i]), "Currency") + ";";
      if (insurance_balance[i] != Currency()) {
        body += words.summary_insurance + Format(Variant(insurance_balance[i]), "Currency") + ";" +
                words.summary_total +
                Format(Variant(patient_balance[i] + insurance_balance[i]), "Currency") + ";";
        rows = 4;
      }
      vsp.StartOverlay(first_page[i], false);
      vsp.FontName("Tahoma");
      vsp.FontSize(10);
      vsp.FontBold(false);
      // Beside the address block, at the window line or below a tall
      // letterhead, so that the box never lies over the office's lines.
      vsp.CurrentY(address_top[i]);
      vsp.TextAlign(2);
      vsp.TableBorder(0);
      vsp.StartTable();
      vsp.AddTable("<1in|>1.7in", words.summary_header, body, kHeaderColor);
      vsp.TableCell(frame::tcMarginBottom, 0, 0, rows, 0) = ".05in";
      // The period stays on one line; it runs a little into the label
      // column, which is empty beside it.
      vsp.TableCell(frame::tcNoWrap, 1, 2, 1, 2) = true;
      vsp.EndTable();
      vsp.TextAlign(0);
      vsp.EndOverlay();
    }
    Form().Show();
    Host().SetMousePointer(0);
  });
}

}  // namespace orv
