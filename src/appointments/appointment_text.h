// Pieces of text the appointment reports share.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "common/datetime.h"
#include "common/variant.h"

namespace orv {
class clsCommonFunctions;
namespace appointments {

// " AND (filter)" with "ProviderID" replaced by `column`, for a provider
// filter as a host writes it ("ProviderID = 3 OR ProviderID = 5"); "" and
// "0" ask for every provider and give "".
std::string ProviderCondition(const std::string& filter, const std::string& column);

// An appointment time (minutes after midnight) as the front desk reads it,
// "h:nn AMPM": 785 is "1:05 PM".
std::string PrintedTime(clsCommonFunctions& cf, const Variant& minutes);

// PrintedTime for the many rows of one listing: each minute of the day is
// formatted once and kept. The day book of a month formatted 3,000 times
// the same few dozen times, a tenth of its own work.
class TimeTexts {
 public:
  explicit TimeTexts(clsCommonFunctions& cf) : cf_(cf) {}
  const std::string& operator()(const Variant& minutes);

 private:
  clsCommonFunctions& cf_;
  std::vector<std::string> texts_ = std::vector<std::string>(1440);  // "" until formatted
};

// Minutes after midnight of a stored time: a number is taken as minutes
// already (holidays and special days keep them so), text such as "08:00 AM"
// is read by TimeToInt (working hours and the office's day).
int32_t Minutes(clsCommonFunctions& cf, const Variant& value);

// The running sum of available units with `span` minutes added: a 32-bit
// integer, rounded to the nearest unit at each step, ties to even.
// `unit_minutes` 0 raises a division fault.
int32_t AddUnits(int32_t sum, double span, int unit_minutes);

// The day sheet's grid for an office day from `s` to `e` minutes in units
// of `u` minutes: the count of rows below the header, the row a time
// starts in, and the last row of a range ending at a time (the row that
// begins at that time is free again). Rows are 16-bit integers rounded
// ties to even; `u` 0 raises a division fault.
int GridRows(int32_t s, int32_t e, int u);
int StartRow(int32_t t, int32_t s, int u);
int EndRow(int32_t t, int32_t s, int u);

// The patient's age on the routing slip: calendar years between the birth
// date and today.
int SlipAge(const DateTime& birth, const DateTime& today);

}  // namespace appointments
}  // namespace orv
