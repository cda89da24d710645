#include "accounts/account_model.h"

#include <algorithm>
#include <initializer_list>
#include <map>
#include <utility>
#include <vector>

#include "common/errors.h"
#include "common/flags.h"
#include "common/vbstrings.h"
#include "platform/db/lookup.h"

namespace orv {
namespace {

using db::adCmdText;
using db::adLockReadOnly;
using db::adOpenForwardOnly;
using db::adOpenStatic;

// Interest applied to invoices dated from this day on; before it, an
// invoice's stored total stands whatever the rate. Compiled in on purpose:
// it is a fact of the practice's history, not a setting.
const DateTime kInterestStart = DateTime::FromParts(2001, 3, 1);

// A date as the statements carry it: "yyyy-mm-dd".
std::string SqlDate(DateTime d) {
  return d.ToIsoDate();
}

// A date argument that may be Null or missing: either means today.
DateTime DateOrToday(const Variant& v) {
  return v.IsNull() || v.IsEmpty() ? Clock::Today() : CDate(v);
}

void CheckCode(int16_t code) {
  if (code < 0 || code > 2)
    throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
}

// The payment shares on one patient's invoices, joined to the payments so
// that their cheque date and payer can be tested.
std::string PaidOnInvoicesJoined(const std::string& id) {
  return "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails "
         "INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID "
         "INNER JOIN InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = "
         "InvoicePayments.ID WHERE Invoices.PatientID = " +
         id;
}

}  // namespace

AccountModel::AccountModel(const db::Connection& connection, float InterestRate)
    : conn_(connection), interest_rate_(InterestRate) {}

Currency AccountModel::SumOf(const std::string& sql) const {
  db::Recordset rs;
  rs.Open(sql, conn_, adOpenForwardOnly, adLockReadOnly, adCmdText);
  Currency total = rs.Eof() ? Currency() : common_.ReturnCur(rs[0].Value());
  rs.Close();
  return total;
}

void AccountModel::ReadHolders(int32_t PatientID, int32_t& P, int32_t& S) const {
  Variant primary = db::ReturnValue(conn_, "Patient", "ID", Variant(PatientID), "PrimaryHolderID");
  Variant secondary =
      db::ReturnValue(conn_, "Patient", "ID", Variant(PatientID), "SecondaryHolderID");
  P = common_.ReturnNumber(primary);
  S = common_.ReturnNumber(secondary);
}

Currency AccountModel::ReturnInvoiceAmount(int32_t ID, const Variant& EndDate,
                                           const db::Recordset* Source) const {
  const DateTime end = DateOrToday(EndDate);
  db::Recordset own;
  const db::Recordset* rs = Source;
  if (rs == nullptr) {
    own.Open(
        "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceTotal, Invoices.[Complete?], "
        "Invoices.InvoiceFinalTotal, Patient.Interest FROM Invoices INNER JOIN Patient ON "
        "Invoices.PatientID = Patient.ID WHERE NOT InvoiceTotal IS NULL AND Invoices.ID = " +
            std::to_string(ID),
        conn_, adOpenForwardOnly, adLockReadOnly, adCmdText);
    rs = &own;
  }

  Currency amount;
  if (!rs->Eof()) {
    const Currency final_total = common_.ReturnCur((*rs)["InvoiceFinalTotal"].Value());
    const Currency total = common_.ReturnCur((*rs)["InvoiceTotal"].Value());
    const Variant date = (*rs)["Date"].Value();
    // The settled total answers only a question asked as of today (the
    // day, whatever time the caller's date carries); as of any other day
    // the invoice falls through to its total. A zero or negative settled
    // total never counts.
    if (final_total > Currency() && end.DatePart() == Clock::Today()) {
      amount = Round(final_total, 2);
    } else if (!date.IsNull() && CDate(date) < kInterestStart) {
      // An undated invoice (NULL [Date]) is not known to predate interest
      // and takes the tests below.
      amount = total;
    } else if (interest_rate_ == 0 || !FlagSet((*rs)["Complete?"].Value())) {
      amount = total;
    } else {
      // An interest-bearing invoice is brought to whole cents.
      amount = Round(total, 2);
    }
  }
  if (Source == nullptr) own.Close();
  return amount;
}

Variant AccountModel::ReturnPatientBalance(int32_t PatientID, bool IgnoreDate,
                                           const Variant& EndDate, int16_t Portion) const {
  CheckCode(Portion);
  const std::string date = SqlDate(CDate(EndDate));
  const std::string id = std::to_string(PatientID);

  // Cancelled invoices are not excluded here, unlike every other balance of
  // the model: the statements' opening figures have always counted them.
  db::Recordset rs;
  rs.Open(
      "Select ID, InvoiceTotal, PatientTotal, IsAssignment from Invoices WHERE [Complete?] <> 0 "
      "AND NOT InvoiceTotal IS NULL and [Date] <= '" +
          date + "' AND PatientID = " + id + " ORDER BY ID",
      conn_, adOpenStatic, adLockReadOnly, adCmdText);
  Currency invoices;
  while (!rs.Eof()) {
    const Currency total = common_.ReturnCur(rs["InvoiceTotal"].Value());
    const Variant patient_total = rs["PatientTotal"].Value();
    const bool assigned = FlagSet(rs["IsAssignment"].Value());
    switch (Portion) {
      case 0:
        invoices += total;
        break;
      case 1:
        // An assigned invoice with no patient total adds nothing.
        invoices += assigned ? common_.ReturnCur(patient_total) : total;
        break;
      case 2:
        if (assigned && !patient_total.IsNull())
          invoices += total - common_.ReturnCur(patient_total);
        break;
    }
    rs.MoveNext();
  }
  rs.Close();

  const std::string date_test = " AND InvoicePayments.[CheckDate] <= '" + date + "'";
  const std::string credit_head =
      "SELECT SUM(TotaltoCredit) AS theTotal FROM InvoicePayments WHERE TotaltoCredit <> 0 AND ";
  std::string paid_sql, credit_sql;
  switch (Portion) {
    case 0:
      if (IgnoreDate) {
        paid_sql =
            "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails "
            "INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
            "Invoices.PatientID = " +
            id;
      } else {
        paid_sql = PaidOnInvoicesJoined(id) + date_test;
      }
      credit_sql = credit_head + "InvoicePayments.PatientID = " + id;
      break;
    case 1:
      if (IgnoreDate) {
        // Names InvoicePayments without joining it: the database rejects
        // this statement, and no report asks for it.
        paid_sql =
            "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails "
            "INNER JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE "
            "Invoices.PatientID = " +
            id + " AND (InvoicePayments.IsInsurance = 0 OR InvoicePayments.IsInsurance IS NULL)";
      } else {
        paid_sql = PaidOnInvoicesJoined(id) + " AND InvoicePayments.[CheckDate] <= '" + date +
                   "' AND (InvoicePayments.IsInsurance = 0 OR InvoicePayments.IsInsurance IS "
                   "NULL)";
      }
      credit_sql = credit_head +
                   "(IsInsurance = 0 OR IsInsurance IS NULL) AND "
                   "InvoicePayments.PatientID = " +
                   id;
      break;
    case 2:
      if (IgnoreDate) {
        paid_sql = PaidOnInvoicesJoined(id) + " AND InvoicePayments.IsInsurance = 1";
      } else {
        paid_sql = PaidOnInvoicesJoined(id) + " AND InvoicePayments.[CheckDate] <= '" + date +
                   "' AND InvoicePayments.IsInsurance = 1";
      }
      credit_sql = credit_head + "IsInsurance = 1 AND InvoicePayments.PatientID = " + id;
      break;
  }
  if (!IgnoreDate) credit_sql += date_test;

  return Variant(invoices - SumOf(paid_sql) - SumOf(credit_sql));
}

Variant AccountModel::ReturnOldBalance(int32_t PatientID, bool AllPayments, int16_t Days,
                                       const Variant& DaysVariant) const {
  const std::string id = std::to_string(PatientID);
  const double today = Clock::Today().serial();
  // The invoices are cut off by DaysVariant and the dated payments by Days;
  // callers pass the same count in both.
  const std::string invoice_cutoff = SqlDate(DateTime(today - CDbl(DaysVariant)));
  const std::string payment_cutoff = SqlDate(DateTime(today - Days));

  db::Recordset rs;
  rs.Open(
      "Select ID, InvoiceFinalTotal from Invoices WHERE [Complete?] <> 0 AND NOT InvoiceTotal IS "
      "NULL AND Cancelled IS NULL AND [Date] <= '" +
          invoice_cutoff + "' AND PatientID = " + id + " ORDER BY ID",
      conn_, adOpenStatic, adLockReadOnly, adCmdText);
  Currency balance = WorthOfInvoices(rs);
  rs.Close();

  if (AllPayments) {
    balance -= SumOf(
        "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails INNER "
        "JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID WHERE Invoices.PatientID "
        "= " +
        id + " AND Invoices.Cancelled IS NULL");
  } else {
    balance -= SumOf(PaidOnInvoicesJoined(id) + " AND InvoicePayments.[CheckDate] <= '" +
                     payment_cutoff + "' AND Invoices.Cancelled IS NULL");
  }
  // The patient's own credit as of today, whatever Days says.
  balance -= ReturnAccountCredit(PatientID, false, 1, "", NoEndDate());
  return Variant(balance);
}

Currency AccountModel::ReturnAccountCredit(int32_t PatientID, bool IgnoreDate, int16_t Kind,
                                           std::string ProviderFilter, DateTime EndDate) const {
  CheckCode(Kind);
  if (EndDate == NoEndDate()) EndDate = Clock::Today();
  // "0" means no filter, as it does for every filter a host hands in.
  if (ProviderFilter == "0") ProviderFilter.clear();
  std::string provider;
  if (!ProviderFilter.empty())
    provider = " AND (" +
               vb::Replace(ProviderFilter, "ProviderID", "Invoicepayments.InitialProviderID") + ")";

  std::string tail;
  if (!IgnoreDate) {
    tail = " AND CheckDate <= '" + SqlDate(EndDate);
    static const char* const kDated[] = {"'", "' AND (IsInsurance = 0 OR IsInsurance IS NULL)",
                                         "' AND (IsInsurance = 1)"};
    tail += kDated[Kind];
  } else {
    static const char* const kUndated[] = {"", " AND (IsInsurance = 0 OR IsInsurance IS NULL)",
                                           " AND (IsInsurance = 1)"};
    tail = kUndated[Kind];
  }
  tail += provider;

  const std::string id = std::to_string(PatientID);
  // Both sums run over the payer's PatientID: a payment spread over another
  // patient's invoice lowers the payer's credit. Cancelled payments are not
  // filtered out.
  const Currency received =
      SumOf("Select SUM([Value]) as Total FROM InvoicePayments where PatientID = " + id + tail);
  const Currency spread = SumOf(
      "Select SUM(Amount) as Total FROM InvoicePaymentDetails INNER JOIN InvoicePayments On "
      "InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID WHERE PatientID = " +
      id + tail);
  return received - spread;
}

// The terms of the family-by-holder condition for one holder read as `P`,
// or nothing when the holder was not set. A holder read as 0 (NULL, or 0 as
// stored) links no one: "PrimaryHolderID = 0" would otherwise reach every
// patient who stores 0 in a holder column, a stranger to the family, and
// count that stranger's money in the family's figures.
namespace {
std::vector<std::string> HolderTerms(int32_t holder, std::initializer_list<const char*> columns) {
  std::vector<std::string> terms;
  if (holder == 0) return terms;
  for (const char* column : columns) terms.push_back(std::string(column) + " = " + std::to_string(holder));
  return terms;
}

std::string JoinedWithOr(const std::vector<std::string>& terms) {
  std::string joined;
  for (const std::string& t : terms) joined += (joined.empty() ? "" : " OR ") + t;
  return joined;
}
}  // namespace

Currency AccountModel::ReturnFamilyCredit(int32_t PatientID, bool IncludePostDates) const {
  int32_t P = 0, S = 0;
  ReadHolders(PatientID, P, S);
  // The family by holder: each holder set and whoever names that holder as
  // primary or secondary. The patient's own ID is deliberately not part of
  // it, so a patient with neither holder has no family credit and no query
  // runs.
  std::vector<std::string> terms =
      HolderTerms(P, {"Patient.ID", "PrimaryHolderID", "SecondaryHolderID"});
  for (std::string& t : HolderTerms(S, {"Patient.ID", "PrimaryHolderID", "SecondaryHolderID"}))
    terms.push_back(std::move(t));
  if (terms.empty()) return Currency();

  const std::string condition = JoinedWithOr(terms);
  std::string sql =
      "Select SUM([TotalToCredit]) as TotalToCredit FROM InvoicePayments INNER JOIN Patient ON "
      "PatientID = Patient.ID WHERE ";
  if (IncludePostDates) {
    sql += condition;
  } else {
    sql += "(" + condition + ") AND CheckDate <= '" + SqlDate(Clock::Today()) + "'";
  }
  return Round(SumOf(sql), 2);
}

std::vector<std::string> IdLists(const std::vector<int32_t>& ids, size_t per_read) {
  per_read = std::max<size_t>(1, per_read);
  std::vector<std::string> lists;
  for (size_t first = 0; first < ids.size(); first += per_read) {
    std::string list;
    for (size_t i = first; i < ids.size() && i < first + per_read; ++i)
      list += (list.empty() ? "" : ", ") + std::to_string(ids[i]);
    lists.push_back(std::move(list));
  }
  return lists;
}

std::map<int32_t, Currency> AccountModel::ReturnFamilyCredits(const std::vector<int32_t>& PatientIDs,
                                                              size_t per_read) const {
  std::vector<int32_t> patients = PatientIDs;
  std::sort(patients.begin(), patients.end());
  patients.erase(std::unique(patients.begin(), patients.end()), patients.end());

  // 1. Each patient's primary and secondary holder, as ReadHolders reads
  // them; a patient not found has neither.
  std::map<int32_t, std::pair<int32_t, int32_t>> holders;
  std::vector<int32_t> keys;
  for (const std::string& list : IdLists(patients, per_read)) {
    db::Recordset rs;
    rs.Open("SELECT ID, PrimaryHolderID, SecondaryHolderID FROM Patient WHERE ID IN (" + list + ")", conn_,
            adOpenForwardOnly, adLockReadOnly, adCmdText);
    while (!rs.Eof()) {
      Variant primary = rs["PrimaryHolderID"].Value(), secondary = rs["SecondaryHolderID"].Value();
      const int32_t P = common_.ReturnNumber(primary), S = common_.ReturnNumber(secondary);
      holders[CLng(rs["ID"].Value())] = {P, S};
      for (const int32_t h : {P, S})
        if (h != 0) keys.push_back(h);
      rs.MoveNext();
    }
  }
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());

  // 2. The credit of each patient a holder reaches (the holder, and whoever
  // names the holder as primary or secondary), by cheque date up to today.
  // A patient reached from two reads comes in both, with the same sum.
  struct Member {
    int32_t primary, secondary;
    Currency credit;
  };
  std::map<int32_t, Member> members;
  const std::string today = SqlDate(Clock::Today());
  for (const std::string& list : IdLists(keys, per_read)) {
    db::Recordset rs;
    rs.Open(
        "SELECT Patient.ID, Patient.PrimaryHolderID, Patient.SecondaryHolderID, SUM([TotalToCredit]) as "
        "TotalToCredit FROM InvoicePayments INNER JOIN Patient ON PatientID = Patient.ID WHERE (Patient.ID IN (" +
            list + ") OR PrimaryHolderID IN (" + list + ") OR SecondaryHolderID IN (" + list +
            ")) AND CheckDate <= '" + today +
            "' GROUP BY Patient.ID, Patient.PrimaryHolderID, Patient.SecondaryHolderID",
        conn_, adOpenForwardOnly, adLockReadOnly, adCmdText);
    while (!rs.Eof()) {
      Variant primary = rs["PrimaryHolderID"].Value(), secondary = rs["SecondaryHolderID"].Value();
      members[CLng(rs["ID"].Value())] = {common_.ReturnNumber(primary), common_.ReturnNumber(secondary),
                                         common_.ReturnCur(rs["TotalToCredit"].Value())};
      rs.MoveNext();
    }
  }
  std::multimap<int32_t, int32_t> by_holder;  // holder -> member who names it
  for (const auto& [id, m] : members) {
    if (m.primary != 0) by_holder.emplace(m.primary, id);
    if (m.secondary != 0 && m.secondary != m.primary) by_holder.emplace(m.secondary, id);
  }

  // 3. Each family's credit: every member reached once, whichever way.
  std::map<int32_t, Currency> credits;
  for (const int32_t patient : patients) {
    const auto found = holders.find(patient);
    const auto [P, S] = found == holders.end() ? std::pair<int32_t, int32_t>{0, 0} : found->second;
    std::vector<int32_t> reached;
    for (const int32_t h : {P, S}) {
      if (h == 0) continue;
      if (members.count(h)) reached.push_back(h);
      for (auto [it, end] = by_holder.equal_range(h); it != end; ++it) reached.push_back(it->second);
    }
    std::sort(reached.begin(), reached.end());
    reached.erase(std::unique(reached.begin(), reached.end()), reached.end());
    Currency total;
    for (const int32_t id : reached) total += members.at(id).credit;
    credits[patient] = Round(total, 2);
  }
  return credits;
}

Currency AccountModel::ReturnFamilyBalance(int32_t PatientID, const Variant& EndDate,
                                           bool IgnoreDate, bool LessCredit) const {
  int32_t P = 0, S = 0;
  ReadHolders(PatientID, P, S);
  const std::string date = SqlDate(DateOrToday(EndDate));

  // The family by holder: whoever names a holder, whoever names this patient
  // as a holder, and the holders themselves; this patient's own invoices
  // count only when one of those reaches them. The terms keep the order of
  // the long-standing condition, less those of a holder read as 0.
  std::vector<std::string> terms;
  for (std::string& t : HolderTerms(P, {"PrimaryHolderID"})) terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(S, {"PrimaryHolderID"})) terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(P, {"SecondaryHolderID"})) terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(S, {"SecondaryHolderID"})) terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(PatientID, {"PrimaryHolderID", "SecondaryHolderID"}))
    terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(P, {"Patient.ID"})) terms.push_back(std::move(t));
  for (std::string& t : HolderTerms(S, {"Patient.ID"})) terms.push_back(std::move(t));
  if (terms.empty()) return Currency();

  db::Recordset rs;
  rs.Open(
      "SELECT Invoices.ID, Invoices.[Date], Invoices.InvoiceFinalTotal FROM Invoices INNER JOIN "
      "Patient ON Invoices.PatientID = Patient.ID WHERE (" +
          JoinedWithOr(terms) +
          ") AND Invoices.Cancelled IS NULL AND [Complete?] <> 0 Order By [Date] DESC, [Time] "
          "DESC, [Invoice#] DESC",
      conn_, adOpenStatic, adLockReadOnly, adCmdText);
  rs.Filter(Variant("Date <= #" + date + "#"));
  // Reached with no settled total only, so valuing as of today cannot
  // change the answer for the as-of day.
  Currency balance = WorthOfInvoices(rs);
  const std::string condition = ReturnWhereClause(rs);
  rs.Close();

  const std::string paid_head =
      "SELECT SUM(InvoicePaymentDetails.Amount) AS theTotal FROM InvoicePaymentDetails INNER "
      "JOIN Invoices ON InvoicePaymentDetails.InvoiceID = Invoices.ID INNER JOIN Patient ON "
      "Invoices.PatientID = Patient.ID INNER JOIN InvoicePayments ON "
      "InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID WHERE ";
  if (IgnoreDate) {
    balance -= SumOf(paid_head + "(" + condition + ")");
  } else {
    balance -=
        SumOf(paid_head + "InvoicePayments.CheckDate <= '" + date + "' AND (" + condition + ")");
  }
  if (LessCredit) balance -= ReturnFamilyCredit(PatientID, false);
  return balance;
}

Currency AccountModel::ReturnInvoicePaid(bool OnOrBefore, int32_t InvoiceID, DateTime EndDate,
                                         int16_t Kind) const {
  CheckCode(Kind);
  if (EndDate.Year() < 1900) EndDate = Clock::Today();
  const std::string id = std::to_string(InvoiceID), date = SqlDate(EndDate);
  const char* const kPayer[] = {"'", "' AND (IsInsurance = 0 OR isInsurance IS NULL)",
                                "' AND IsInsurance = 1"};
  std::string sql;
  if (OnOrBefore) {
    sql =
        "SELECT SUM(InvoicePaymentDetails.Amount) AS Total FROM InvoicePaymentDetails INNER "
        "JOIN InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID "
        "WHERE InvoicePaymentDetails.InvoiceID = " +
        id + " AND InvoicePaymentDetails.Date <= '" + date + kPayer[Kind];
  } else {
    sql =
        "SELECT SUM(InvoicePaymentDetails.Amount) AS Total FROM InvoicePaymentDetails INNER "
        "JOIN InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID "
        "WHERE NOT InvoicePaymentDetails.Amount IS NULL and InvoicePaymentDetails.InvoiceID = " +
        id + " AND InvoicePaymentDetails.Date > '" + date;
    // After the date, Kind 0 is the post-dated share: only payments entered
    // ahead of their cheque date. Kinds 1 and 2 select by payer as before.
    sql += Kind == 0 ? "' AND InvoicePayments.Date < InvoicePayments.CheckDate" : kPayer[Kind];
  }
  return Round(SumOf(sql), 2);
}

std::string ReturnWhereClause(const db::Recordset& Source) {
  const std::string& text = Source.Source();
  const std::string upper = vb::UCase(text);
  const size_t where = upper.find("WHERE");
  if (where == std::string::npos) return "";
  const size_t start = where + 5;
  const size_t order = upper.find("ORDER BY", start);
  return vb::Trim(order == std::string::npos ? text.substr(start)
                                             : text.substr(start, order - start));
}

Currency AccountModel::WorthOfInvoices(db::Recordset& rs) const {
  Currency worth;
  while (!rs.Eof()) {
    const Variant final_total = rs["InvoiceFinalTotal"].Value();
    if (!final_total.IsNull()) {
      worth += common_.ReturnCur(final_total);
    } else {
      worth += ReturnInvoiceAmount(CLng(rs["ID"].Value()), Variant::Null());
    }
    rs.MoveNext();
  }
  return worth;
}

}  // namespace orv
