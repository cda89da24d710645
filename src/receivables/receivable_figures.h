// The figures of the receivables lists, worked out apart from their pages:
// each list reads its figures through one of these functions and then
// draws them, and the month-end reconciliation reads the very same figures
// to set the lists side by side. A function runs the list's own statements
// and walk (raising Progress as the list does) and draws nothing.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "common/variant.h"

namespace orv {
class clsReports;
}

namespace orv::receivables {

// One patient of the practice-wide aged list (srptAccountReceivable).
struct AgedRow {
  int32_t id = 0;
  std::string name;  // "LastName, FirstName", trimmed
  Currency debit, patient_debit, credit;
  Currency thirty, sixty, ninety, over;  // 0-30, 31-60, 61-90, > 90
  Currency post_dates;
  Currency Balance() const { return debit - credit; }
};

// The rows the list prints (a patient who is square is left out) and their
// sums, the list's "Balances" row.
struct AgedFigures {
  std::vector<AgedRow> rows;
  AgedRow totals;
};

// The aged list as of `dtEndDate` in the view `Byoption` with the filter over
// "ProviderID" ("" or "0": none).
AgedFigures AgedReceivableFigures(clsReports& r, DateTime dtEndDate, int16_t Byoption,
                                  std::string ProviderFilter);

// One patient of the list of patients with a balance (srptPatientsWithaBalance).
struct BalanceListRow {
  int32_t id = 0;
  std::string name;  // FullName
  // Balance, interest, post dates, then 0-30, > 30, > 60, > 90 days.
  std::array<Currency, 7> figures{};
  // Money on file: payments less their shares on invoices by the end date.
  Currency net_credit;
  // The patient's and the insurer's share of each class, for the obligation
  // rows; `assigned` when an assigned invoice of the patient is owed on.
  std::array<Currency, 4> patient_part{};
  std::array<Currency, 4> insurer_part{};
  bool assigned = false;
};

// The rows the list prints and its "Office Totals: " row.
struct BalanceListFigures {
  std::vector<BalanceListRow> rows;
  std::array<Currency, 7> office{};
  Currency office_credit;
};

BalanceListFigures PatientsWithaBalanceFigures(clsReports& r, DateTime dtEndDate,
                                               std::string txtfilter, int16_t SortType,
                                               bool NoCredits);

// One payment with money not yet applied (srptUnAppliedPayments).
struct UnappliedRow {
  int32_t patient_id = 0;
  std::string patient_name;
  std::string id;
  std::string provider;
  Variant check_date;
  Currency value, credit;
};

struct UnappliedFigures {
  std::vector<UnappliedRow> rows;
  Currency total;  // "Total Unapplied Payments: "
};

UnappliedFigures UnappliedPaymentFigures(clsReports& r, DateTime dtEndDate, std::string strFilter);

}  // namespace orv::receivables
