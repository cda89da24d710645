// Small pieces the period-closing sections share: how a view names its
// person in SQL, how a flag column reads, and amounts without their sign.
#pragma once

#include <cstdint>
#include <string>

#include "common/currency.h"
#include "common/variant.h"
#include "frame/surface/surface.h"

namespace orv::closing {

// The test of common/flags.h in SQL, for the payment type columns: a
// flag is set when neither NULL nor 0.
inline std::string SqlSet(const std::string& column) { return "ISNULL(" + column + ", 0) <> 0"; }
inline std::string SqlClear(const std::string& column) { return "ISNULL(" + column + ", 0) = 0"; }

inline Currency Abs(Currency c) { return c < Currency() ? -c : c; }

// The views of the closing sections: 0 provider, 1 overseer, 2 preferred
// doctor, 3 date.
inline bool ValidView(int16_t view) { return view >= 0 && view <= 3; }

// Why a view outside 0-3 is refused; the section says it before it draws
// anything, since no heading, grouping or filter field fits such a view.
inline std::string BadViewMessage(const char* section, int16_t view) {
  return std::string(section) + ": Byoption must be 0 (by provider), 1 (by overseer), " +
         "2 (by preferred doctor) or 3 (by date), not " + std::to_string(view) + ".";
}

// " AND (" filter ")", or nothing for no filter.
inline std::string AndFilter(const std::string& filter) {
  return filter.empty() ? std::string() : " AND (" + filter + ")";
}

// The paper of the cash reports: portrait, half an inch all round, which
// their 7.5-inch tables fill.
inline void HalfInchPortrait(frame::PrintSurface& vsp) {
  vsp.Orientation(0);
  vsp.MarginLeft(720);
  vsp.MarginRight(720);
  vsp.MarginTop(720);
  vsp.MarginBottom(720);
}

}  // namespace orv::closing
