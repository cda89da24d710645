#include "platform/db/sort_keys.h"

#include <cctype>

#include "platform/db/db_error.h"
#include "platform/db/value_compare.h"

namespace orv::db {

namespace {

std::string_view Trim(std::string_view s) {
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.front()))) s.remove_prefix(1);
  while (!s.empty() && std::isspace(static_cast<unsigned char>(s.back()))) s.remove_suffix(1);
  return s;
}

}  // namespace

std::vector<SortKey> ParseSortKeys(std::string_view text) {
  std::vector<SortKey> keys;
  if (Trim(text).empty()) return keys;
  size_t start = 0;
  bool in_bracket = false;
  for (size_t i = 0; i <= text.size(); ++i) {
    if (i < text.size() && text[i] == '[') in_bracket = true;
    if (i < text.size() && text[i] == ']') in_bracket = false;
    if (i < text.size() && (text[i] != ',' || in_bracket)) continue;
    if (in_bracket) throw DatabaseError("malformed sort: a ']' is missing in: " + std::string(text));
    std::string_view item = Trim(text.substr(start, i - start));
    start = i + 1;
    SortKey key;
    // A trailing ASC or DESC word, separated by blanks from the name; a key
    // ending in ']' is a bracketed name with no direction.
    size_t blank = item.find_last_of(" \t");
    if (blank != std::string_view::npos && item.back() != ']') {
      std::string_view word = item.substr(blank + 1);
      if (EqualsNoCase(word, "DESC") || EqualsNoCase(word, "ASC")) {
        key.descending = EqualsNoCase(word, "DESC");
        item = Trim(item.substr(0, blank));
      }
    }
    if (item.size() >= 2 && item.front() == '[' && item.back() == ']')
      item = item.substr(1, item.size() - 2);
    if (item.empty()) throw DatabaseError("malformed sort: an empty key in: " + std::string(text));
    key.field = std::string(item);
    keys.push_back(std::move(key));
  }
  return keys;
}

}  // namespace orv::db
