// ReturnAddressPart: one piece of an address kept as a single multi-line
// text ("street" CR LF ["street 2" CR LF] "City, Prov" CR LF "postal").
#pragma once

#include <string>

#include "frame/report_types.h"

namespace orv {

// Returns the piece named by `part`, or "" for a part above Postal and for
// any address that does not have the expected line ends and comma.
std::string ReturnAddressPart(const std::string& Address, int Part);

}  // namespace orv
