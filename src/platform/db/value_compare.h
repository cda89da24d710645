// Ordering and equality of field values, as Filter, Find, Sort and the
// relating of SHAPE children use them.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/variant.h"

namespace orv::db {

// Three-way comparison of two field values: <0, 0, >0. Null and Empty sort
// before every value. Numbers (integers, floats, money, flags) compare by
// value; dates by their serial; text in the server's dictionary order
// (common/collation.h): case-insensitive, accents after the plain letter,
// trailing blanks ignored. Text against a date or a number is
// read as a date or number when it is one, and otherwise compared as text.
int CompareValues(const Variant& a, const Variant& b);

// The key under which a value relates a SHAPE child row to its parent:
// numbers by value (5, 5.0 and money 5.0000 relate), text case-insensitively
// without trailing blanks, dates by serial. nullopt for Null and Empty, which
// relate to nothing.
std::optional<std::string> RelateKey(const Variant& v);

// ASCII lower case of one byte; other bytes as they are.
inline char FoldCase(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c; }
// ASCII lower case.
std::string Lower(std::string_view s);
// Equal ignoring ASCII case. Inline: a report finds its fields by name
// for every value it reads.
inline bool EqualsNoCase(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (size_t i = 0; i < a.size(); ++i)
    if (FoldCase(a[i]) != FoldCase(b[i])) return false;
  return true;
}

}  // namespace orv::db
