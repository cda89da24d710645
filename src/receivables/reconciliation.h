// The receivables reconciliation: the practice's receivable as of one day
// read three ways, by the reports the office already prints, and set side
// by side so that the bookkeeper sees at once whether they tell the same
// story and, where they do not, where to look.
//
//  - the aged list (srptAccountReceivable, no filter): what the treatment
//    lines owe less their allocations, and the money on file;
//  - the patient balances (ReturnPatientBalance of every patient, as the
//    statements open): the invoices less the payments' shares and credit;
//  - the balance lists: the "Office Totals: " balance of the patients with
//    a balance and the "Total Unapplied Payments: " of the unapplied list.
//
// The figures are those the reports compute (receivable_figures.h): no
// statement of their own. Only the search for known causes reads the
// database for itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "receivables/receivable_figures.h"

namespace orv {
class clsReports;
}

namespace orv::receivables {

// One patient whose three readings differ.
struct PatientDifference {
  int32_t id = 0;
  std::string name;
  Currency aged_net;   // the aged list's balance (debit less credit)
  Currency balance;    // ReturnPatientBalance
  Currency lists_net;  // balance list less unapplied money
  // The larger, by size, of balance - aged and lists - aged.
  Currency Largest() const;
};

struct ReconciliationFigures {
  DateTime as_of;
  AgedRow aged;               // the aged list's "Balances" row
  Currency patient_balances;  // the sum over every patient
  Currency office_totals;     // "Office Totals: " balance
  Currency unapplied;         // "Total Unapplied Payments: "
  // Every patient whose readings differ by a cent or more, the largest
  // difference first.
  std::vector<PatientDifference> differences;
  // One line per known cause found in the practice's records (empty when
  // every figure agrees).
  std::vector<std::string> causes;
};

// One line of the checks: a figure less the aged one it is held against.
struct ReconciliationCheck {
  std::string name;
  Currency difference;
  // Zero to the cent.
  bool Agrees() const;
};

// Each figure against the aged one, and the age classes against the
// aged list's Debit, in the order they print.
std::vector<ReconciliationCheck> ReconciliationChecks(const ReconciliationFigures& f);

// Reads the figures as of `dtEnd`, practice-wide.
ReconciliationFigures ReconcileReceivables(clsReports& r, DateTime dtEnd);

// Draws the section "Receivables Reconciliation" at the pen.
void PrintReconciliation(clsReports& r, const ReconciliationFigures& f,
                         const std::string& UserName);

// How many patients "Where they differ" lists.
inline constexpr size_t kDifferencesListed = 25;

}  // namespace orv::receivables
