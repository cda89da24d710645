// Pieces of text the appointment reports share.
#pragma once

#include <cstdint>
#include <string>

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

// Minutes after midnight of a stored time: a number is taken as minutes
// already (holidays and special days keep them so), text such as "08:00 AM"
// is read by TimeToInt (working hours and the office's day).
int32_t Minutes(clsCommonFunctions& cf, const Variant& value);

}  // namespace appointments
}  // namespace orv
