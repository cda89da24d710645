// The small arithmetic of the report component: the share of two
// amounts as a percentage text, the month-end test, and the progress
// percentage raised by the Progress event.
#pragma once

#include <cstdint>
#include <string>

#include "common/datetime.h"
#include "common/variant.h"

namespace orv {

// `a` / `b` in the "Percent" format ("33.33%"). Both go through ReturnCur
// first: when either is 0 (or Null, blank, or no number) the result is the
// literal "0.00%" and nothing is divided. Otherwise the division uses the
// values as they came in, as floats, not their money-rounded forms.
std::string ReturnPercent(const Variant& a, const Variant& b);

// True when the next day falls in another month (February 29 of a leap year
// is a month end, February 28 of that year is not).
bool IsMonthEnd(DateTime date);

// The Progress event's percentage: absolutePosition / recordCount * 100 in
// floats, converted to a byte rounding half to even (1 of 8 is 12, 3 of 8 is
// 38). Raises DivisionByZeroError for a count of 0 (OverflowError for 0 of 0,
// as the host language's 0 / 0 does) and OverflowError when the result does
// not fit a byte, as for the unknown position -1.
uint8_t ProgressPercent(int64_t absolutePosition, int64_t recordCount);

}  // namespace orv
