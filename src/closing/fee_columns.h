// Which fee column a treatment line's amount goes to in the summaries that
// split fees into Dental, Lab and Int.
//
// Lab is a "99" code and its reversal "-99": a reversed lab fee takes back
// lab, as the production reports count it (closing::IsLabCode), so that a
// lab fee entered and reversed leaves Lab at nothing instead of moving money
// from Dental to Lab. Int. is every line of an interest invoice (an invoice
// that points at the invoice it charges interest on); interest is neither
// treatment nor lab, whatever code the line carries.
#pragma once

#include <string_view>

#include "closing/code_ranges.h"

namespace orv::closing {

enum class FeeColumn { Dental, Lab, Interest };

inline FeeColumn FeeColumnOf(std::string_view code, bool interest_invoice) {
  if (interest_invoice) return FeeColumn::Interest;
  if (IsLabCode(code)) return FeeColumn::Lab;
  return FeeColumn::Dental;
}

}  // namespace orv::closing
