// The age classes of the balance lists, counted in whole days back from the
// end date.
#pragma once

#include "common/datetime.h"
#include "common/variant.h"

namespace orv {

// 0 for "0-30 Days" (dated on or after end - 30), 1 for "> 30 Days" (from
// end - 60), 2 for "> 60 Days" (from end - 90), 3 for "> 90 Days". Times of
// day are dropped, so an invoice dated exactly 30 days before the end is in
// class 0 and one dated 31 days before in class 1. An undated invoice is of
// no known age: it goes to the oldest class, where it draws attention, as in
// the provider list.
inline int AgeClass(const Variant& date, DateTime end) {
  if (date.IsNull() || date.IsEmpty()) return 3;
  const DateTime d = CDate(date).DatePart();
  const DateTime e = end.DatePart();
  if (d >= DateAdd("d", -30, e)) return 0;
  if (d >= DateAdd("d", -60, e)) return 1;
  if (d >= DateAdd("d", -90, e)) return 2;
  return 3;
}

}  // namespace orv
