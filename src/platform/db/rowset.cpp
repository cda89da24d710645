#include "platform/db/rowset.h"

#include <atomic>

#include "platform/db/value_compare.h"

namespace orv::db {

uint64_t NextRowSetId() {
  // Atomic: a host may run reports on several connections at once (the
  // browser host runs two), and the ids must stay unique across them.
  static std::atomic<uint64_t> next{0};
  return ++next;
}

int RowSet::FindField(std::string_view name) const {
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']')
    name = name.substr(1, name.size() - 2);
  for (size_t i = 0; i < fields.size(); ++i)
    if (EqualsNoCase(fields[i].name, name)) return static_cast<int>(i);
  return -1;
}

int RowSet::AddField(FieldInfo f) {
  fields.push_back(std::move(f));
  for (auto& r : rows) r.emplace_back();
  return static_cast<int>(fields.size()) - 1;
}

std::string RowKey(const std::vector<Variant>& row, const std::vector<int>& fields, bool* has_null) {
  std::string key;
  *has_null = false;
  for (size_t i = 0; i < fields.size(); ++i) {
    auto k = RelateKey(row[fields[i]]);
    if (!k) {
      *has_null = true;
      return {};
    }
    // A separator that no key text starts with keeps ("1","23") apart from
    // ("12","3").
    if (i) key += '\x1f';
    key += *k;
  }
  return key;
}

}  // namespace orv::db
