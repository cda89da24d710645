// The test of a flag column read from the practice database.
#pragma once

#include "common/variant.h"

namespace orv {

// A flag column is set when it is neither NULL nor 0. The older screens
// store -1 for set and the newer ones 1; both mean set. Text that is no
// number (never written by the screens) counts as not set.
inline bool FlagSet(const Variant& v) {
  return !v.IsNull() && !v.IsEmpty() && IsNumericValue(v) && CDbl(v) != 0;
}

}  // namespace orv
