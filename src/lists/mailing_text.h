// Names and address blocks as the labels and envelopes print them.
#pragma once

#include <string>
#include <string_view>

#include "common/common_functions.h"
#include "common/datetime.h"
#include "platform/db/recordset.h"

namespace orv::lists {

// The given columns' values joined by single blanks; an empty or Null part
// leaves no blank of its own, so a patient without a title prints no
// leading blank.
inline void AppendNamePart(std::string& name, std::string_view part) {
  if (part.empty()) return;
  if (!name.empty()) name += " ";
  name += part;
}

inline std::string JoinedName(clsCommonFunctions& cf, const db::Recordset& rs,
                              std::initializer_list<const char*> fields) {
  std::string name;
  for (const char* f : fields) AppendNamePart(name, cf.returnStr(rs[f].Value(), true));
  return name;
}

// Street, the second street on its own line when there is one, "City, Prov"
// and the postal code after `postal_sep` (a line break on the label sheets,
// two blanks on the envelopes, the way the post office reads an address).
inline std::string AddressBlock(clsCommonFunctions& cf, const db::Recordset& rs, const char* street,
                                const char* street2, const char* city, const char* prov,
                                const char* postal, const std::string& postal_sep) {
  std::string text = cf.returnStr(rs[street].Value()) + "\r\n";
  if (const std::string s2 = cf.returnStr(rs[street2].Value()); !s2.empty()) text += s2 + "\r\n";
  text += cf.returnStr(rs[city].Value()) + ", " + cf.returnStr(rs[prov].Value()) + postal_sep +
          cf.returnStr(rs[postal].Value());
  return text;
}

// How long since the last visit, as the reactivation letter says it:
// "2 years", "1 year", "11 months", "1 month", "0 month".
std::string ReactivationGap(DateTime last_visit, DateTime today);

}  // namespace orv::lists
