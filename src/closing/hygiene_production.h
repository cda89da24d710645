// The "Hygiene Production Report" table the partners' and the referral
// summaries end with: each hygienist's production and lab fees of the
// period beside the others', with each one's share of the total.
#pragma once

#include <cstdint>
#include <map>

#include "common/currency.h"

namespace orv {
class clsReports;
}

namespace orv::closing {

struct HygieneFigures {
  Currency production;  // dental and interest fees
  Currency lab;
};

// Draws the heading and the table into the running document: a row per
// hygienist (Employees.TypeID 5) found in `by_provider`, by last name, then
// "Hygenists Totals".
void PrintHygieneProduction(clsReports& reports,
                            const std::map<int32_t, HygieneFigures>& by_provider);

}  // namespace orv::closing
