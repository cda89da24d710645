// Patient statements: one document holding a statement per patient or per
// family of a list. Each statement has the office letterhead, the addressee
// in the envelope window, an opening balance, the dated charges and payments
// of the period with running portions, totals, the current balance and the
// year's payments, then post-dated payments, treatments in progress and the
// family's coming appointments, and a summary box laid over its first page
// once the document is complete. With UpdateLastStatementDate the run
// stamps Patient.LastStatement.
//
// The run reads as its steps: SetUp, then for each list position Merge,
// Openings, PageSetUp, BodyPerPatient, BalanceAndYearFigures, FurtherSections and
// Footer, and at the end SummaryOverlay. A run of statements is a stack of
// letters: each statement's pages are numbered within it and its page
// footer speaks its language.
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
#include "common/flags.h"
#include "common/format.h"
#include "common/report_math.h"
#include "common/vbstrings.h"
#include "frame/page_parts.h"
#include "frame/patient.h"
#include "frame/preview_form.h"
#include "frame/reports.h"
#include "frame/surface/length.h"
#include "frame/surface/surface.h"
#include "frame/surface/table_model.h"
#include "platform/db/lookup.h"

namespace orv {

namespace {

using statements::StatementWords;

const char* kStatementsTrap = "An Error has occurred in Sub rptStatements in Class clsReports.";

// The addressee's first line sits where the window of a No. 10 envelope
// shows it on a letter page folded in three, whatever the letterhead.
const Twips kWindowLeft = Twips::Inches(0.9);
const Twips kWindowTop = Twips::Inches(2.5);

// One line of a statement: a charge (positive) or a payment (negative), with
// the share of it that lies on the insurer and on the patient.
struct Line {
  int32_t patient = 0;
  DateTime date;
  std::string description;
  Currency amount;
  Currency insurance_portion;
  Currency patient_portion;
};

// One person told on a statement, with the opening figures as of the day
// before the period: A the whole account, PP/PB the patient's portion and
// running balance, IP/IB the insurer's.
struct Member {
  int32_t id = 0;
  Currency a, pp, pb, ip, ib;
  bool has_lines = false;
  // Told when the period has lines for them or an opening figure is not 0,
  // so that a balance carried into a quiet period still reaches the patient.
  bool Told() const { return has_lines || a != Currency() || pp != Currency() || ip != Currency(); }
};

// One statement of the run, from its list position to the summary box laid
// over its first page.
struct Statement {
  int32_t patient_id = 0;
  bool on_file = false;
  int32_t responsible = 0;  // ResponsibleFamilyMemberID, 0 when none
  bool by_family = false;   // drawn by responsible member rather than by ID
  int32_t family_id = 0;    // the responsible member, or the patient
  bool family = false;      // a family statement was asked for
  bool printed = false;
  int first_page = 0;
  int32_t addressee = 0;  // whose letter it is: the responsible member or the patient
  std::string addressee_name;
  bool french = false;
  Currency patient_balance, insurance_balance;
};

// What one statement is built from: its lines, whether it has insurance
// columns, the people it tells, and the condition on who.
struct Working {
  std::string who;
  std::vector<Line> lines;
  bool has_insurance = false;
  std::vector<Member> members;
};

// Every amount of the statement's tables, in the statement's own format.
std::string StatementAmount(Currency c) {
  return Format(Variant(c), "$######.00");
}

// An opening figure prints only when there is one.
std::string OpeningCell(Currency c) {
  return c == Currency() ? std::string() : StatementAmount(c);
}

// A data value as one cell of a table, trimmed.
std::string Cell(const std::string& text) {
  return frame::EscapeCell(vb::Trim(text));
}

// A closing section of the statement (post-dated payments, treatments in
// progress): a bold heading over a small borderless table.
void SectionTable(frame::PrintSurface& vsp, const std::string& heading, const char* format,
                  const std::string& header, const std::string& body) {
  vsp.Text(" ");
  vsp.FontSize(10);
  vsp.FontBold(true);
  vsp.Text(heading);
  vsp.KeepWithNext();
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

// Adds the rows of an invoice query (fields IDate, PatientID, IDescription,
// ICost, IPatientPortion, InsurancePortion, IsAssignment) to the lines.
//
// A portion the row does not name stays 0, and a NULL cost is 0: an
// unassigned invoice lies wholly on the patient, so its insurance share is
// nothing rather than unknown, and a line without a cost charges nothing.
void AddInvoiceRows(clsCommonFunctions& cf, db::Recordset& rs, Working& w) {
  while (!rs.Eof()) {
    Line line;
    line.patient = IdOf(cf, rs, "PatientID");
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
    if (!FlagSet(rs["IsAssignment"].Value())) {
      line.patient_portion = line.amount;
    } else {
      line.patient_portion = cf.ReturnCur(rs["IPatientPortion"].Value());
      line.insurance_portion = cf.ReturnCur(rs["InsurancePortion"].Value());
      w.has_insurance = true;
    }
    w.lines.push_back(std::move(line));
    rs.MoveNext();
  }
  rs.Close();
}

// Adds the rows of a payment query (fields PDate, PDescription, Payment,
// PIsInsurance, PatientID). The payment is negative already and lies wholly
// on the patient or wholly on the insurer.
void AddPaymentRows(clsCommonFunctions& cf, db::Recordset& rs, Working& w) {
  while (!rs.Eof()) {
    Line line;
    line.patient = IdOf(cf, rs, "PatientID");
    line.date = cf.ReturnDate(rs["PDate"].Value());
    line.description = cf.returnStr(rs["PDescription"].Value());
    line.amount = cf.ReturnCur(rs["Payment"].Value());
    if (!FlagSet(rs["PIsInsurance"].Value())) {
      line.patient_portion = line.amount;
    } else {
      line.insurance_portion = line.amount;
      w.has_insurance = true;
    }
    w.lines.push_back(std::move(line));
    rs.MoveNext();
  }
  rs.Close();
}

// The arguments of one run, as the host gave them.
struct StatementOptions {
  DateTime dtStart, dtEnd;
  bool Family, AppSummary, IncompleteTreatment, PostDated, Details, YTD, UpdateLastStatementDate,
      DetailOutstanding;
  std::string PatientFooter;
};

class StatementRun {
 public:
  StatementRun(clsReports& r, const StatementOptions& o)
      : r_(r),
        o_(o),
        vsp_(r.VSP()),
        cf_(r.Common()),
        model_(r.conn(), r.InterestRate),
        host_office_(r.OfficeID),
        start_text_(Format(Variant(o.dtStart), "yyyy-MM-dd")),
        end_text_(Format(Variant(o.dtEnd), "yyyy-MM-dd")),
        // With DetailOutstanding the statement shows only what is still open
        // at dtEnd: its invoices and their payments, without an opening
        // balance. The flag governs on its own, with or without Details, so
        // that asking for the open items never prints paid ones.
        detailed_(o.Details || o.DetailOutstanding) {}

  void Run(const std::vector<int32_t>& PatientIDs);

 private:
  void SetUp(const std::vector<int32_t>& PatientIDs);
  Working Merge(const Statement& s);
  void Openings(const Statement& s, Working& w);
  void PageSetUp(Statement& s, const Working& w);
  void BodyPerPatient(Statement& s, const Working& w);
  void BalanceAndYearFigures(const Statement& s, const Working& w);
  void FurtherSections(const Statement& s, const Working& w);
  void Footer();
  void SummaryOverlay();

  // The invoice queries' closing: the date tests, the open-items test, the
  // order.
  std::string InvoiceDates() const {
    return " AND [Complete?] <> 0 AND Invoices.[Date] >= '" + start_text_ +
           "' AND Invoices.[Date] <= '" + end_text_;
  }
  std::string InvoiceOrder(const Statement& s) const;
  const StatementWords& Words(const Statement& s) const {
    return s.french ? statements::kFrench : statements::kEnglish;
  }

  clsReports& r_;
  const StatementOptions& o_;
  frame::PrintSurface& vsp_;
  clsCommonFunctions& cf_;
  AccountModel model_;
  const int32_t host_office_;
  const std::string start_text_, end_text_;
  const bool detailed_;
  std::vector<Statement> statements_;
  std::optional<StampTransaction> stamps_;
  bool any_printed_ = false;
};

const char* const kInvoiceHead =
    "SELECT Invoices.[Date] as IDate, Patient.ID as PatientID, Patient.LastName, "
    "Patient.FirstName,";

std::string StatementRun::InvoiceOrder(const Statement& s) const {
  if (!o_.DetailOutstanding) return "' Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC";
  // A patient's statement closes the open-items test with ") ORDER BY".
  return "' and (invoices.finaldate is null or invoices.finaldate >= '" + end_text_ +
         (s.by_family ? "') Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC"
                      : "') ORDER BY Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC");
}

void StatementRun::Run(const std::vector<int32_t>& PatientIDs) {
  SetUp(PatientIDs);
  const int count = int(statements_.size());
  const std::string today_text = Format(Variant(Clock::Today()), "yyyy-mm-dd");
  for (int i = 0; i < count; ++i) {
    Statement& s = statements_[i];
    if (!s.on_file) {
      // A patient no longer on file prints nothing at this place of the
      // list; the rest of the run goes on, and the host may log which ID.
      r_.Host().Note("rptStatements: there is no patient with the ID " +
                     std::to_string(s.patient_id) + "; nothing printed for it.");
    } else {
      Working w = Merge(s);
      Openings(s, w);
      // A statement is laid out when anyone is told on it.
      if (std::any_of(w.members.begin(), w.members.end(),
                      [](const Member& m) { return m.Told(); })) {
        PageSetUp(s, w);
        BodyPerPatient(s, w);
        BalanceAndYearFigures(s, w);
        FurtherSections(s, w);
        Footer();
      }
      // The stamp, once per list position, printed or not. It records the
      // day of the run, not dtEnd.
      if (o_.UpdateLastStatementDate) {
        r_.conn().Execute(
            "UPDATE Patient SET LastStatement = '" + today_text +
            (s.by_family ? "' WHERE ResponsibleFamilyMemberID = " + std::to_string(s.family_id)
                         : "' WHERE ID = " + std::to_string(s.patient_id)));
      }
    }
    r_.RaiseProgress(ProgressPercent(i + 1, count));
    r_.Host().DoEvents();
  }
  if (stamps_) stamps_->Commit();
  SummaryOverlay();
  r_.Form().Show();
  r_.Host().SetMousePointer(0);
}

// Set-up: the pointer, the list, a fresh document. The host's list carries
// one spare slot at its end, which is never printed. Each position's
// responsible member is read here; a patient not on file is marked so.
void StatementRun::SetUp(const std::vector<int32_t>& PatientIDs) {
  r_.Host().SetMousePointer(11);
  r_.Host().DoEvents();
  const int count = PatientIDs.empty() ? 0 : int(PatientIDs.size()) - 1;
  statements_.resize(count);
  vsp_.KillDoc();
  for (int i = 0; i < count; ++i) {
    Statement& s = statements_[i];
    s.patient_id = PatientIDs[i];
    db::Recordset who = r_.Open("SELECT ID, ResponsibleFamilyMemberID FROM Patient WHERE ID = " +
                                    std::to_string(s.patient_id),
                                db::adOpenForwardOnly);
    s.on_file = !who.Eof();
    if (s.on_file) {
      Variant responsible = who["ResponsibleFamilyMemberID"].Value();
      s.responsible = cf_.ReturnNumber(responsible);
    }
    who.Close();
    // The family is everyone who shares the patient's responsible member.
    // A patient who names none has a family of one: the condition on
    // ResponsibleFamilyMemberID would not even find the patient, so such a
    // statement is drawn by the patient's own ID.
    s.family = o_.Family;
    s.by_family = o_.Family && s.responsible != 0;
    s.family_id = s.responsible != 0 ? s.responsible : s.patient_id;
  }
  vsp_.Orientation(0);
  vsp_.CancelDialog(false);
  vsp_.StartDoc();
  if (o_.UpdateLastStatementDate) stamps_.emplace(r_.conn());
}

// Merge: the title, the invoice and payment queries of the period, merged
// into one list of lines sorted by patient and day.
Working StatementRun::Merge(const Statement& s) {
  Working w;
  const std::string id_text = std::to_string(s.patient_id);
  const std::string family_text = std::to_string(s.family_id);
  w.who = s.by_family ? " WHERE ResponsibleFamilyMemberID = " + family_text
                      : " WHERE Patient.ID = " + id_text;

  // The title by the kind of statement.
  if (o_.Family) {
    vsp_.DocName(detailed_ ? "Detailed Family Statement" : "Family Statement");
  } else if (o_.Details) {
    vsp_.DocName("Detailed Patient Statement");
  } else {
    // The outstanding form of a patient's statement has always carried the
    // family title.
    vsp_.DocName(o_.DetailOutstanding ? "Detailed Family Statement" : "Patient Statement");
  }

  // The invoices, one line per invoice line or per invoice.
  if (detailed_) {
    db::Recordset rs = r_.Open(
        std::string(kInvoiceHead) +
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
        w.who + InvoiceDates() + InvoiceOrder(s));
    AddInvoiceRows(cf_, rs, w);
    // The invoices that have no lines print as one line each. This query
    // names its insurance column "InsurancePorion": on an assigned invoice
    // without lines the column the merge reads is not there, and the run
    // stops at the trap.
    const std::string no_lines =
        s.by_family ? " WHERE InvoiceDetails.InvoiceID IS NULL AND ResponsibleFamilyMemberID = " +
                          family_text
                    : " WHERE InvoiceDetails.InvoiceID IS NULL AND Patient.ID = " + id_text;
    db::Recordset bare = r_.Open(
        std::string(kInvoiceHead) +
        " 'Dental Treatment' AS IDescription, IsAssignment,"
        " Invoices.InvoiceTotal as ICost, ISNULL(Invoices.PatientTotal, Invoices.Invoicetotal) "
        "as IPatientPortion, (Invoices.InvoiceTotal - ISNULL(Invoices.PatientTotal, "
        "Invoices.InvoiceTotal)) as InsurancePorion, IsAssignment"
        " FROM Invoices"
        " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
        " LEFT OUTER JOIN InvoiceDetails ON  Invoices.ID = InvoiceDetails.InvoiceID" +
        no_lines + InvoiceDates() + InvoiceOrder(s));
    AddInvoiceRows(cf_, bare, w);
  } else {
    db::Recordset rs = r_.Open(
        std::string(kInvoiceHead) +
        " IDescription = CASE WHEN InterestInvoiceID IS NULL THEN 'Dental Treatment' ELSE "
        "'Interest' END, IsAssignment,"
        " Invoices.InvoiceTotal as ICost, ISNULL(Invoices.PatientTotal, Invoices.Invoicetotal) "
        "as IPatientPortion, (Invoices.InvoiceTotal - ISNULL(Invoices.PatientTotal, "
        "Invoices.InvoiceTotal)) as InsurancePortion, IsAssignment"
        " FROM Invoices"
        " INNER JOIN Patient ON Invoices.PatientID = Patient.ID" +
        w.who + InvoiceDates() + InvoiceOrder(s));
    AddInvoiceRows(cf_, rs, w);
  }

  // The payments of the period, in up to two parts each: the shares put on
  // invoices (found under the invoice's patient) and what is left on account
  // (under the payer); a payment put on no invoice at all prints whole.
  const std::string payment_dates = " AND InvoicePayments.CheckDate >= '" + start_text_ +
                                    "' AND InvoicePayments.CheckDate <= '" + end_text_;
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
    db::Recordset rs = r_.Open(payment_description +
                               " -(InvoicePayments.Value - InvoicePayments.TotalAllocated) as "
                               "Payment," +
                               payer_columns +
                               " FROM InvoicePayments"
                               " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                               payment_types + w.who + payment_dates +
                               "' AND TotalAllocated = 0 ORDER BY InvoicePayments.CheckDate");
    AddPaymentRows(cf_, rs, w);
  }
  {
    const std::string closing =
        o_.DetailOutstanding
            ? "'  AND InvoicePayments.TotalAllocated <> 0 AND (invoices.finaldate is null or "
              "invoices.finaldate >= '" +
                  end_text_ + "') ORDER BY InvoicePayments.CheckDate"
            : "' AND InvoicePayments.TotalAllocated <> 0 ORDER BY InvoicePayments.CheckDate";
    db::Recordset rs =
        r_.Open(payment_description + " -InvoicePaymentDetails.Amount as Payment," + payer_columns +
                " FROM InvoicePayments"
                " INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID  = "
                "InvoicePaymentDetails.InvoicePaymentID"
                " INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID"
                " INNER JOIN Patient ON Invoices.PatientID = Patient.ID" +
                payment_types + w.who + payment_dates + closing);
    AddPaymentRows(cf_, rs, w);
  }
  {
    const std::string payer = s.by_family ? w.who : " WHERE InvoicePayments.PatientID = " + id_text;
    db::Recordset rs = r_.Open(
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
    AddPaymentRows(cf_, rs, w);
  }

  // Oldest first, by patient and by day. The charges went in before the
  // payments, so on one day an invoice stands above the payment that settles
  // it and the running balance rises before it falls, whatever hour the
  // invoice was written at. Lines of one day otherwise keep the order their
  // query gave them (invoices latest first, the lines of one invoice as the
  // database returns them).
  std::stable_sort(w.lines.begin(), w.lines.end(), [](const Line& a, const Line& b) {
    return a.patient != b.patient ? a.patient < b.patient : a.date.DatePart() < b.date.DatePart();
  });

  return w;
}

// The openings: the people the statement tells, with their opening figures
// as of the day before the period. They are taken before anything prints,
// so that one member's insurance gives every table of the statement the
// insurance columns.
void StatementRun::Openings(const Statement& s, Working& w) {
  std::vector<int32_t> ids;
  if (s.by_family) {
    db::Recordset rs = r_.Open(
        "SELECT ID"
        " FROM Patient"
        " WHERE ResponsibleFamilyMemberID = " +
            std::to_string(s.family_id),
        db::adOpenForwardOnly);
    while (!rs.Eof()) {
      ids.push_back(IdOf(cf_, rs, "ID"));
      rs.MoveNext();
    }
    rs.Close();
  } else {
    ids.push_back(s.patient_id);
  }
  const Variant as_of(DateAdd("d", -1, o_.dtStart));
  for (int32_t id : ids) {
    Member m;
    m.id = id;
    if (!o_.DetailOutstanding) {
      m.a = cf_.ReturnCur(model_.ReturnPatientBalance(id, false, as_of, 0));
      m.pp = m.pb = cf_.ReturnCur(model_.ReturnPatientBalance(id, false, as_of, 1));
      m.ip = m.ib = cf_.ReturnCur(model_.ReturnPatientBalance(id, false, as_of, 2));
    }
    if (m.ip != Currency()) w.has_insurance = true;
    m.has_lines =
        std::any_of(w.lines.begin(), w.lines.end(), [&](const Line& l) { return l.patient == id; });
    w.members.push_back(m);
  }
}

// Page set-up: a new page, the letterhead of the addressee's office, the
// title, the addressee at the envelope window, and room for the summary box
// beside it. The addressee is the responsible member when the patient has
// another one, else the patient; the language, the name and the address are
// theirs, so that the envelope shows one person.
void StatementRun::PageSetUp(Statement& s, const Working& w) {
  const int32_t addressee =
      s.responsible != 0 && s.responsible != s.patient_id ? s.responsible : s.patient_id;
  const Variant key(static_cast<int>(addressee));
  db::Connection& conn = r_.conn();
  s.french = cf_.returnStr(db::ReturnValue(conn, "Patient", "ID", key, "Language"), true) == "F";
  const StatementWords& words = Words(s);
  if (any_printed_) vsp_.NewPage();
  any_printed_ = true;
  s.printed = true;
  s.first_page = vsp_.CurrentPage();
  vsp_.MarginLeft(".75in");
  vsp_.MarginRight(".75in");
  vsp_.MarginHeader(".5in");
  vsp_.FontName("Tahoma");

  // The letterhead of the addressee's office, ending above the window; one
  // without an office on file gets the host's.
  r_.Patient().PatientID(addressee);
  r_.OfficeID = r_.Patient().OfficeID() > 0 ? r_.Patient().OfficeID() : host_office_;
  r_.PrintLetterHead(kWindowTop);
  vsp_.FontName("Tahoma");
  vsp_.FontSize(10);
  vsp_.FontBold(true);
  const Twips title_width = vsp_.TextWidth(words.title);
  const Twips title_height = vsp_.TextHeight(words.title);
  vsp_.TextBox(words.title, vsp_.PageWidth() - vsp_.MarginRight() - title_width,
               vsp_.MarginHeader(), title_width, title_height);
  vsp_.FontBold(false);

  // The name and the address where the window of the envelope shows them.
  vsp_.CurrentY(kWindowTop);
  vsp_.CurrentX(kWindowLeft);
  vsp_.TextAlign(0);
  vsp_.IndentLeft(kWindowLeft - vsp_.MarginLeft());
  const std::string address = cf_.returnStr(db::ReturnValue(conn, "Patient", "ID", key, "Address"));
  s.addressee = addressee;
  s.addressee_name =
      vb::Trim(cf_.returnStr(db::ReturnValue(conn, "Patient", "ID", key, "FirstName")) + " " +
               cf_.returnStr(db::ReturnValue(conn, "Patient", "ID", key, "LastName")));
  vsp_.Text(s.addressee_name);
  const std::string street = r_.ReturnAddressPart(address, 0);
  const std::string street2 = r_.ReturnAddressPart(address, 1);
  const std::string city = r_.ReturnAddressPart(address, 2);
  const std::string province = vb::UCase(r_.ReturnAddressPart(address, 3));
  const std::string postal = r_.ReturnAddressPart(address, 4);
  if (street.empty() && city.empty() && province.empty() && postal.empty()) {
    // An address the parts cannot be read from prints as it stands.
    if (!vb::Trim(address).empty()) vsp_.Text(address);
  } else {
    vsp_.Text(street);
    if (!street2.empty()) vsp_.Text(street2);
    vsp_.Text(city + ", " + province + " " + postal);
  }
  vsp_.IndentLeft(0);
  vsp_.CurrentX(vsp_.MarginLeft());

  // The summary box goes in beside the address once the document is
  // complete; the body starts below the taller of the two. Whether the box
  // has its insurance rows is known now: the insurer's balance is the
  // members' openings and their lines' insurance portions.
  Currency insurer_owes;
  for (const Member& m : w.members) {
    if (!m.Told()) continue;
    insurer_owes += m.ib;
    for (const Line& line : w.lines)
      if (line.patient == m.id) insurer_owes += line.insurance_portion;
  }
  const bool box_has_insurance = insurer_owes != Currency();
  std::string box =
      std::string("<1in|>1.7in;") + words.summary_header + ";Date|x;" + words.summary_family + "x;";
  if (box_has_insurance)
    box += std::string(words.summary_insurance) + "x;" + words.summary_total + "x;";
  vsp_.FontSize(10);
  vsp_.MeasureTable(box);
  const int box_rows = box_has_insurance ? 5 : 3;
  const Twips below_box = kWindowTop + vsp_.MeasuredTableHeight() + Twips(box_rows * 72);
  if (vsp_.CurrentY() < below_box) vsp_.CurrentY(below_box);
  vsp_.Text(" ");
}

// The body, one table per member told: the name, the opening, the lines
// with the running figures, the totals. The members' closing balances make
// the statement's.
void StatementRun::BodyPerPatient(Statement& s, const Working& w) {
  const StatementWords& words = Words(s);
  const char* format = w.has_insurance ? "<.75in|<2in|>0.75in|>.75in|>.75in|>.75in|>.75in"
                                       : "<1in|<3in|>1.25in|>1.25in";
  const char* header = w.has_insurance ? words.header_insurance : words.header_plain;
  const int columns = w.has_insurance ? 7 : 4;
  for (const Member& m : w.members) {
    if (!m.Told()) continue;
    Currency a = m.a, pp = m.pp, pb = m.pb, ip = m.ip, ib = m.ib;
    vsp_.FontSize(10);
    vsp_.FontBold(true);
    vsp_.TextAlign(0);
    const Variant key(static_cast<int>(m.id));
    vsp_.Text(vb::Trim(
        cf_.returnStr(db::ReturnValue(r_.conn(), "Patient", "ID", key, "FirstName")) + " " +
        cf_.returnStr(db::ReturnValue(r_.conn(), "Patient", "ID", key, "LastName"))));
    // The member's name goes to the next page with the head of its table.
    vsp_.KeepWithNext();
    vsp_.FontBold(false);
    vsp_.FontSize(8);

    std::string body = words.opening;
    if (w.has_insurance) {
      body += OpeningCell(a) + "|" + OpeningCell(ip) + "|" + OpeningCell(pp) + "|" +
              OpeningCell(ib) + "|" + OpeningCell(pb) + ";";
    } else {
      body += OpeningCell(a) + "|" + OpeningCell(pb) + ";";
    }
    std::vector<int> payment_rows;
    int row = 1;
    for (const Line& line : w.lines) {
      if (line.patient != m.id) continue;
      ++row;
      a += line.amount;
      pp += line.patient_portion;
      pb += line.patient_portion;
      ip += line.insurance_portion;
      ib += line.insurance_portion;
      body += Format(Variant(line.date), "MMM/d/yyyy") + "|" + Cell(line.description) + "|" +
              StatementAmount(line.amount);
      if (w.has_insurance) {
        body += "|" + StatementAmount(line.insurance_portion) + "|" +
                StatementAmount(line.patient_portion) + "|" + StatementAmount(ib) + "|" +
                StatementAmount(pb) + ";";
      } else {
        body += "|" + StatementAmount(a) + ";";
      }
      if (line.amount < Currency()) payment_rows.push_back(row);
      r_.Host().DoEvents();
    }
    body += words.totals;
    if (w.has_insurance) {
      body += StatementAmount(a) + "|" + StatementAmount(ip) + "|" + StatementAmount(pp) + "|" +
              StatementAmount(ib) + "|" + StatementAmount(pb) + ";";
    } else {
      body += StatementAmount(a) + "|" + StatementAmount(pb) + ";";
    }
    const int totals_row = row + 1;
    s.patient_balance += pb;
    s.insurance_balance += ib;

    vsp_.TableBorder(0);
    vsp_.StartTable();
    vsp_.AddTable(format, header, body, kHeaderColor);
    // Payments stand apart from charges in italics; the header and the
    // totals are set off by a little space and a rule.
    for (int p : payment_rows) vsp_.TableCell(frame::tcFontItalic, p, 1, p, columns) = true;
    vsp_.TableCell(frame::tcMarginBottom, 0, 0, 0, 0) = ".05in";
    vsp_.TableCell(frame::tcMarginTop, totals_row, 0, totals_row, 0) = ".05in";
    vsp_.TableCell(frame::tcRowBorderAbove, totals_row, 0, totals_row, 0) = 1;
    vsp_.TableCell(frame::tcFontBold, totals_row, 1, totals_row, columns) = true;
    vsp_.EndTable();
    vsp_.FontSize(10);
    vsp_.Text(" ");
  }
}

// The balance and the year figures. The balance line shows what the whole
// account owes, the patient's and the insurer's running balances together,
// as the summary box's total shows it.
void StatementRun::BalanceAndYearFigures(const Statement& s, const Working& w) {
  const StatementWords& words = Words(s);
  vsp_.FontSize(10);
  vsp_.FontBold(true);
  vsp_.TextAlign(0);
  // The balance line never opens a page alone: the last totals row goes
  // with it.
  vsp_.KeepWithNext();
  vsp_.Text(std::string(s.family ? words.family_balance : words.patient_balance) +
            Format(Variant(o_.dtEnd), "MMM/d/yyyy") + ": " +
            Format(Variant(s.patient_balance + s.insurance_balance), "Currency"));
  if (o_.YTD) vsp_.KeepWithNext();

  // The year's payments, printed only when asked: the lines say "YTD", and
  // a sum over the period alone under that name would mislead. Each sum is
  // the money not put on any invoice, the shares on the family's invoices
  // (office and pure adjustment types left out) and the credit left over
  // from cheques partly put on invoices; a payment with nothing allocated
  // counts whole in the first part and not again in the third.
  if (o_.YTD) {
    const std::string year_start = std::to_string(o_.dtStart.Year()) + "-01-01";
    const std::string dates = " AND InvoicePayments.CheckDate >= '" + year_start +
                              "' AND InvoicePayments.CheckDate <= '" + end_text_;
    auto year_sum = [&](const std::string& kind) {
      return model_.SumOf(
                 " Select ISNULL(SUM(InvoicePayments.Value), 0) as Payment "
                 " FROM InvoicePayments"
                 " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                 w.who + dates + "' AND TotalAllocated = 0 AND " + kind) +
             model_.SumOf(
                 " Select ISNULL(SUM(InvoicePaymentDetails.Amount), 0) as Payment "
                 " FROM InvoicePayments"
                 " INNER JOIN InvoicePaymentDetails ON InvoicePayments.ID  = "
                 "InvoicePaymentDetails.InvoicePaymentID"
                 " INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID"
                 " INNER JOIN Patient ON Invoices.PatientID = Patient.ID"
                 " INNER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = "
                 "PaymentTypes.ID" +
                 w.who + dates +
                 "' AND PaymentTypes.OfficePayment = 0 AND NOT ([Adjustment?] = 1 AND "
                 "[ToTotalPaid?] = 0 AND BankDeposit = 0 AND Refund = 0 AND "
                 "OfficePayment = 0 AND BulkPayment = 0 AND RecAfterDep = 0) AND " +
                 kind) +
             model_.SumOf(
                 " Select ISNULL(SUM(InvoicePayments.Value - "
                 "InvoicePayments.TotalAllocated), 0) as Payment"
                 " FROM InvoicePayments"
                 " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID" +
                 w.who + dates +
                 "' AND (InvoicePayments.Value - InvoicePayments.TotalAllocated) > 0 "
                 "AND (InvoicePayments.Value - InvoicePayments.TotalAllocated) <> "
                 "Value AND " +
                 kind);
    };
    Currency paid = year_sum("(IsInsurance = 0 OR IsInsurance IS NULL)");
    Currency insurer_paid = year_sum("IsInsurance = 1");
    vsp_.Text(std::string(s.family ? words.family_payment_ytd : words.patient_payment_ytd) +
              Format(Variant(paid), "Currency"));
    vsp_.Text(std::string(s.family ? words.family_insurance_ytd : words.patient_insurance_ytd) +
              Format(Variant(insurer_paid), "Currency"));
  }
  vsp_.FontBold(false);
}

// The further sections asked for, each only when it has rows: post-dated
// payments, treatments in progress, the family's coming appointments.
void StatementRun::FurtherSections(const Statement& s, const Working& w) {
  const StatementWords& words = Words(s);
  if (o_.PostDated) {
    db::Recordset rs = r_.Open(
        " SELECT InvoicePayments.CheckDate AS PDate, PaymentTypes.Name as PDescription, "
        "InvoicePayments.Value as Payment, InvoicePayments.IsInsurance as PIsInsurance, "
        "Patient.ID as PatientID, Patient.LastName, Patient.FirstName "
        " FROM InvoicePayments"
        " INNER JOIN Patient ON InvoicePayments.PatientID  = Patient.ID"
        " LEFT OUTER JOIN PaymentTypes ON InvoicePayments.PaymentTypeID = PaymentTypes.ID" +
        w.who + " AND  InvoicePayments.CheckDate > '" + end_text_ + "'" + " ORDER BY CheckDate");
    if (!rs.Eof()) {
      std::string body;
      while (!rs.Eof()) {
        body += Format(rs["PDate"].Value(), "MMM/d/yyyy") + "|" +
                Cell(cf_.returnStr(rs["PDescription"].Value())) + "|" +
                StatementAmount(cf_.ReturnCur(rs["Payment"].Value())) + ";";
        rs.MoveNext();
      }
      SectionTable(vsp_, words.post_dated_heading, "^1in|^2in|>1in", words.post_dated_header, body);
    }
    rs.Close();
  }
  if (o_.IncompleteTreatment) {
    db::Recordset rs =
        r_.Open(std::string(kInvoiceHead) +
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
                w.who + " AND [Complete?] = 0 AND Invoices.[Date] >= '" + start_text_ +
                "' AND Invoices.[Date] <= '" + end_text_ +
                "' Order By Invoices.[Date] DESC, [Time] DESC, [Invoice#] DESC");
    if (!rs.Eof()) {
      std::string body;
      while (!rs.Eof()) {
        body += Format(rs["IDate"].Value(), "MMM/d/yyyy") + "|" +
                frame::EscapeCell(cf_.returnStr(rs["FirstName"].Value()) + " " +
                                  cf_.returnStr(rs["LastName"].Value())) +
                "|" + Cell(cf_.returnStr(rs["IDescription"].Value())) + "|" +
                StatementAmount(cf_.ReturnCur(rs["ICost"].Value())) + ";";
        rs.MoveNext();
      }
      SectionTable(vsp_, words.in_progress_heading, "<1in|<1in|<2in|>1in", words.in_progress_header,
                   body);
    }
    rs.Close();
  }
  // The appointments are asked about first, so that a statement never turns
  // a page for a section that then prints nothing. The heading goes to the
  // next page with the head of the table.
  if (o_.AppSummary && r_.FamilyHasComingAppointments(s.family_id)) {
    const Twips heading_room = Twips(300);
    vsp_.FontSize(10);
    vsp_.Text(" ");
    vsp_.FontBold(true);
    vsp_.TextAlign(0);
    vsp_.Text(words.appointments_heading);
    vsp_.KeepWithNext();
    // The table starts a fixed room below the heading's top, taken where the
    // heading landed: it may have opened a page of its own.
    const Twips heading_top = vsp_.CurrentY() - vsp_.TextHeight(words.appointments_heading);
    vsp_.FontBold(false);
    vsp_.CurrentY(heading_top + heading_room);
    vsp_.FontSize(8);
    r_.FamilyAppointmentsSummary(s.family_id);
    vsp_.FontSize(10);
  }
}

// The footer of the statement: the host's text for the patient, then the
// office's statement footer, each when there is one.
void StatementRun::Footer() {
  vsp_.FontSize(10);
  vsp_.FontBold(false);
  vsp_.TextAlign(0);
  if (!o_.PatientFooter.empty()) {
    vsp_.Text(" ");
    vsp_.Text(o_.PatientFooter);
  }
  std::string office_footer = cf_.returnStr(r_.ReturnOfficeValue("StatementFooter"), true);
  if (!office_footer.empty()) {
    vsp_.Text(" ");
    vsp_.Text(office_footer);
  }
}

// The end of the document: each statement's pages numbered within it under
// a footer in its language, then each statement's summary box over its
// first page, beside the address block.
void StatementRun::SummaryOverlay() {
  std::vector<frame::DocumentPart> parts;
  for (const Statement& s : statements_)
    if (s.printed)
      parts.push_back({s.first_page, s.french ? statements::kFrench.title : kPrintedBy, s.addressee,
                       s.addressee_name});
  if (parts.empty()) parts.push_back({1, kPrintedBy, 0, {}});
  r_.PrintPageFooters(parts);
  vsp_.EndDoc();
  for (const Statement& s : statements_) {
    if (!s.printed) continue;
    const StatementWords& words = Words(s);
    int rows = 2;
    std::string body = "Date|" + Format(Variant(o_.dtStart), "MMM/d/yyyy") + " - " +
                       Format(Variant(o_.dtEnd), "MMM/d/yyyy") + ";" + words.summary_family +
                       Format(Variant(s.patient_balance), "Currency") + ";";
    if (s.insurance_balance != Currency()) {
      body += words.summary_insurance + Format(Variant(s.insurance_balance), "Currency") + ";" +
              words.summary_total +
              Format(Variant(s.patient_balance + s.insurance_balance), "Currency") + ";";
      rows = 4;
    }
    vsp_.StartOverlay(s.first_page, false);
    vsp_.FontName("Tahoma");
    vsp_.FontSize(10);
    vsp_.FontBold(false);
    vsp_.CurrentY(kWindowTop);
    vsp_.TextAlign(2);
    vsp_.TableBorder(0);
    vsp_.StartTable();
    vsp_.AddTable("<1in|>1.7in", words.summary_header, body, kHeaderColor);
    vsp_.TableCell(frame::tcMarginBottom, 0, 0, rows, 0) = ".05in";
    // The period stays on one line; it runs a little into the label column,
    // which is empty beside it.
    vsp_.TableCell(frame::tcNoWrap, 1, 2, 1, 2) = true;
    vsp_.EndTable();
    vsp_.TextAlign(0);
    vsp_.EndOverlay();
  }
}

}  // namespace

void clsReports::rptStatements(DateTime dtStart, DateTime dtEnd, std::vector<int32_t>& PatientIDs,
                               bool Family, std::string PatientFooter, bool AppSummary,
                               bool IncompleteTreatment, bool PostDated, bool Details, bool YTD,
                               bool UpdateLastStatementDate, bool DetailOutstanding) {
  const db::Snapshot snapshot(conn_, db::Snapshot::OnFailure::RunWithout);
  const StatementOptions options{dtStart,
                                 dtEnd,
                                 Family,
                                 AppSummary,
                                 IncompleteTreatment,
                                 PostDated,
                                 Details,
                                 YTD,
                                 UpdateLastStatementDate,
                                 DetailOutstanding,
                                 PatientFooter};
  Trap(kStatementsTrap, [&] { StatementRun(*this, options).Run(PatientIDs); });
}

}  // namespace orv
