// The text of Recordset.Sort: "A, B DESC, [C d] ASC".
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace orv::db {

struct SortKey {
  std::string field;  // without square brackets
  bool descending = false;
};

// Parses sort keys separated by commas; each is a field name (bare or in
// square brackets) and an optional ASC or DESC, blanks anywhere. "" gives no
// keys. Throws DatabaseError naming the text for an empty key or an unclosed
// bracket.
std::vector<SortKey> ParseSortKeys(std::string_view text);

}  // namespace orv::db
