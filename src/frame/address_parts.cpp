#include "frame/address_parts.h"

#include "common/errors.h"
#include "common/vbstrings.h"

namespace orv {

std::string ReturnAddressPart(const std::string& Address, int Part) {
  using vb::InStr;
  using vb::Mid;
  // The positions are worked out with 1-based InStr exactly as the address
  // was always split: a missing line end or comma makes a later InStr or Mid
  // fail, and any such failure gives "" for every part.
  try {
    long a = InStr(Address, "\r");
    long s = a + 2;
    long b = InStr(s, Address, "\r");
    long c = InStr(b, Address, ",");
    long d = 0;
    bool two_streets = c != 0;
    if (two_streets) {
      d = InStr(c, Address, "\r");
    } else {
      b = a;
      c = InStr(b, Address, ",");
      d = InStr(c, Address, "\r");
    }
    switch (Part) {
      case Street1:
        return vb::Left(Address, a - 1);
      case Street2:
        return two_streets ? vb::Trim(Mid(Address, s, b - s)) : "";
      case City:
        return vb::Trim(Mid(Address, b + 2, c - (b + 2)));
      case Prov:
        // Not trimmed: the blank after the comma is assumed and skipped.
        return Mid(Address, c + 2, d - (c + 2));
      case Postal:
        return Mid(Address, d + 2);
      default:
        return "";
    }
  } catch (const ReportError&) {
    return "";
  }
}

}  // namespace orv
