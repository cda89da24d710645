// The account model of the practice: what an invoice is worth, what has
// been paid on it, and the balances and credits of a patient and a family.
//
// This is the invoice-level model: `Invoices` against `InvoicePaymentDetails`
// and `InvoicePayments.TotalToCredit`, invoices dated by `Invoices.[Date]`
// and payments by `InvoicePayments.CheckDate`. Every statement is the
// server's T-SQL text, run on the component's connection; sums are taken by
// the database or added row by row in Currency, and nothing is rounded except
// where a routine says so (Round: half to even, to the cent).
//
// Signs: an invoice raises a balance, a payment share or an unspent credit
// lowers it. A positive balance is owed by the patient.
//
// Codes of `Portion` and `Kind`: 0 the whole account (every payment),
// 1 the patient (`IsInsurance` 0 or NULL), 2 the insurer (`IsInsurance` 1).
// Any other code raises ReportError before a query runs: the statements have
// no form for it, and a figure for an unknown portion would be silently wrong.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "common/common_functions.h"
#include "common/currency.h"
#include "common/datetime.h"
#include "common/variant.h"
#include "platform/db/connection.h"
#include "platform/db/recordset.h"

namespace orv {

// The accounts (patients, or families' holders) whose open invoices bulk
// statements read in one statement: a few hundred keep the statement's text
// short. Tests lower it to cross the edge of a read with a few accounts.
inline size_t BulkStatementKeysPerRead = 500;

// `ids` as comma-separated lists of at most `per_read` numbers each, in
// their order, for "IN (...)" conditions read or written a portion at a time.
std::vector<std::string> IdLists(const std::vector<int32_t>& ids, size_t per_read);

// The default `EndDate` of ReturnAccountCredit: Jan 1, 1900, read as today.
inline DateTime NoEndDate() {
  return DateTime::FromParts(1900, 1, 1);
}

class AccountModel {
 public:
  // `connection` is the component's connection (a shared handle, never
  // closed here); `InterestRate` the component's rate as the host set it,
  // read at construction. Build one per report run.
  AccountModel(const db::Connection& connection, float InterestRate);

  // What one invoice stands for as of `EndDate` (Null or Empty: today).
  // `Source`, when given, is an open recordset placed on the invoice's row
  // with the fields ID, [Date], InvoiceTotal, [Complete?] and
  // InvoiceFinalTotal; it is read, not moved and not closed. Otherwise
  // the invoice is read by `ID`; an invoice that does not exist or has no
  // InvoiceTotal is worth 0.
  Currency ReturnInvoiceAmount(int32_t ID, const Variant& EndDate = Variant::Null(),
                               const db::Recordset* Source = nullptr) const;

  // Balance of a patient on `EndDate`, whole (Portion 0) or by portion, as
  // a Variant holding Currency. Complete invoices dated up to `EndDate`, cancelled
  // ones included, less the payment shares on them and the patient's
  // unspent credit, both counted by cheque date up to `EndDate` unless
  // `IgnoreDate`. Portion 1 with IgnoreDate true is not supported: its
  // statement is rejected by the database.
  Variant ReturnPatientBalance(int32_t PatientID, bool IgnoreDate, const Variant& EndDate,
                               int16_t Portion) const;

  // What the patient owes of the live complete invoices at least
  // `DaysVariant` days old (as of today), less payments on live invoices
  // (all of them, or with `AllPayments` false those with a cheque date at
  // least `Days` days old), less the patient's own credit as of today.
  Variant ReturnOldBalance(int32_t PatientID, bool AllPayments, int16_t Days,
                           const Variant& DaysVariant) const;

  // Money the patient paid and that lies on no invoice: the sum of the
  // patient's payment values less the sum of their shares on invoices
  // (whoever's invoices), up to `EndDate` by cheque date (NoEndDate():
  // today) unless `IgnoreDate`. A `ProviderFilter` (a condition on
  // "ProviderID"; "" or "0" for none) is applied to the payment's
  // InitialProviderID. Not rounded.
  Currency ReturnAccountCredit(int32_t PatientID, bool IgnoreDate, int16_t Kind,
                               std::string ProviderFilter = "",
                               DateTime EndDate = NoEndDate()) const;

  // Credit on account held by the patient's family by holder: the payments
  // of the primary and secondary holders and of everyone who names either
  // as a holder, with cheque dates up to today unless `IncludePostDates`.
  // The patient's own ID is not part of the family; a holder read as 0
  // (NULL or a stored 0) links no one, so a patient with neither holder has
  // no family credit. Rounded to the cent.
  Currency ReturnFamilyCredit(int32_t PatientID, bool IncludePostDates = false) const;
  // ReturnFamilyCredit of each of `PatientIDs`, without post-dated cheques,
  // read for many families at once: the holders of up to `per_read`
  // patients a statement, then the credit of everyone those holders reach,
  // added up family by family here. A run of statements for a thousand
  // families makes a few statements instead of three per family.
  std::map<int32_t, Currency> ReturnFamilyCredits(const std::vector<int32_t>& PatientIDs, size_t per_read) const;

  // Balance of the patient's family by holder on `EndDate` (Null or Empty:
  // today), the family being reached through the holders set (a holder
  // read as 0 links no one): live complete invoices dated up to `EndDate`
  // less the payment
  // shares on them (by cheque date up to `EndDate` unless `IgnoreDate`),
  // and, with `LessCredit`, less the family credit without post-dated
  // cheques.
  Currency ReturnFamilyBalance(int32_t PatientID, const Variant& EndDate, bool IgnoreDate,
                               bool LessCredit) const;

  // Paid on one invoice by the date of the payment share: up to and
  // including `EndDate` with `OnOrBefore`, after it otherwise. A year of
  // `EndDate` before 1900 means today. After the date, Kind 0 counts only
  // post-dated payments (entered before their cheque date). Rounded to the
  // cent.
  Currency ReturnInvoicePaid(bool OnOrBefore, int32_t InvoiceID, DateTime EndDate,
                             int16_t Kind) const;

  // The single value of the first column of a one-row sum, through ReturnCur
  // (a SUM over no rows reads NULL and counts as 0).
  Currency SumOf(const std::string& sql) const;

 private:
  // The primary and secondary holder IDs of a patient, NULL as 0.
  void ReadHolders(int32_t PatientID, int32_t& P, int32_t& S) const;
  // What the invoices of `rs` (fields ID and InvoiceFinalTotal) are worth,
  // walked from the current row to the end: a settled total as stored
  // (zero and negative ones too), otherwise the invoice valued as of today.
  Currency WorthOfInvoices(db::Recordset& rs) const;

  db::Connection conn_;
  float interest_rate_;
  clsCommonFunctions common_;
};

// The condition of the statement `Source` was opened with: the trimmed text
// after the first "WHERE" (found in any case) up to the next "ORDER BY", or
// to the end; "" when there is no "WHERE". The text keeps its own case. A
// name or a quoted text holding either word confuses it.
std::string ReturnWhereClause(const db::Recordset& Source);

}  // namespace orv
