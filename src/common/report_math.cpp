#include "common/report_math.h"

#include <cmath>

#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"

namespace orv {

std::string ReturnPercent(const Variant& a, const Variant& b) {
  clsCommonFunctions cf;
  if (cf.ReturnCur(a).IsZero() || cf.ReturnCur(b).IsZero()) return "0.00%";
  return Format(Variant(CDbl(a) / CDbl(b)), "Percent");
}

bool IsMonthEnd(DateTime date) {
  return DateAdd("d", 1, date).Month() != date.Month();
}

uint8_t ProgressPercent(int64_t absolutePosition, int64_t recordCount) {
  if (recordCount == 0) {
    if (absolutePosition == 0) throw OverflowError();
    throw DivisionByZeroError();
  }
  double percent = static_cast<double>(absolutePosition) / static_cast<double>(recordCount) * 100;
  double rounded = std::nearbyint(percent);  // the default rounding mode: ties to even
  if (!(rounded >= 0 && rounded <= 255)) throw OverflowError();
  return static_cast<uint8_t>(rounded);
}

}  // namespace orv
