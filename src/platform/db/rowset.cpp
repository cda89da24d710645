#include "platform/db/rowset.h"

#include <atomic>
#include <charconv>

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
  SyncColumns();
  return static_cast<int>(fields.size()) - 1;
}

void RowSet::SyncColumns() {
  while (cells_.ColumnCount() < fields.size()) cells_.AddColumn();
}

void RowSet::Reserve(size_t rows) {
  SyncColumns();
  cells_.Reserve(rows);
}

void RowSet::Set(size_t row, int field, const Variant& value) {
  SyncColumns();
  cells_.Set(row, Col(field), value);
  ++version;
}

std::vector<Variant> RowSet::GetRow(size_t row) const {
  std::vector<Variant> values;
  values.reserve(fields.size());
  for (size_t f = 0; f < fields.size(); ++f) values.push_back(Get(row, static_cast<int>(f)));
  return values;
}

void RowSet::SetRow(size_t row, const std::vector<Variant>& values) {
  for (size_t f = 0; f < values.size() && f < fields.size(); ++f) Set(row, static_cast<int>(f), values[f]);
}

size_t RowSet::AppendRow() {
  SyncColumns();
  ++version;
  return cells_.AppendRow();
}

size_t RowSet::AppendRow(const std::vector<Variant>& values) {
  size_t r = AppendRow();
  SetRow(r, values);
  return r;
}

size_t RowSet::AppendRowFrom(const RowSet& from, size_t row, int skip) {
  SyncColumns();
  ++version;
  return cells_.AppendRowFrom(from.cells_, row, static_cast<size_t>(skip));
}

void RowSet::PopRow() {
  cells_.PopRow();
  ++version;
}

namespace {
// The whole numbers RelateKey writes as integers.
constexpr int64_t kWholeKeyMax = 9'000'000'000'000'000'000;
}  // namespace

std::string RowKey(const RowSet& rows, size_t row, const std::vector<int>& fields, bool* has_null) {
  std::string key;
  *has_null = false;
  for (size_t i = 0; i < fields.size(); ++i) {
    // A whole-number key, the usual relation, is written straight from its
    // cell, as RelateKey writes it, without making a Variant.
    const auto column = static_cast<size_t>(fields[i]);
    const ColumnStore::Kind kind =
        column < rows.cells().ColumnCount() ? rows.cells().KindAt(row, column) : ColumnStore::Kind::Empty;
    if (kind == ColumnStore::Kind::Long || kind == ColumnStore::Kind::LongLong) {
      const int64_t n = rows.cells().IntegerAt(row, column);
      if (n > -kWholeKeyMax && n < kWholeKeyMax) {
        if (i) key += '\x1f';
        key += 'n';
        char buf[24];
        key.append(buf, std::to_chars(buf, buf + sizeof buf, n).ptr);
        continue;
      }
    }
    auto k = RelateKey(rows.Get(row, fields[i]));
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
