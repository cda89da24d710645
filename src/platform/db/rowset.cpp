#include "platform/db/rowset.h"

#include <algorithm>
#include <atomic>
#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>

#include "platform/db/value_compare.h"

namespace orv::db {

uint64_t NextRowSetId() {
  // Atomic: a host may run reports on several connections at once (the
  // browser host runs two), and the ids must stay unique across them.
  static std::atomic<uint64_t> next{0};
  return ++next;
}

namespace {

uint32_t NameHash(std::string_view name) {
  uint32_t hash = 2166136261u;
  for (char c : name) hash = (hash ^ static_cast<unsigned char>(FoldCase(c))) * 16777619u;
  return hash;
}

}  // namespace

int RowSet::FindField(std::string_view name) const {
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']')
    name = name.substr(1, name.size() - 2);
  const uint32_t hash = NameHash(name);
  if (!names_ || names_->field_count != fields.size()) {
    // Each name once, at its first field: a scan finds the first field of a
    // name that two fields share (SELECT a.ID, b.ID).
    auto table = std::make_shared<NameTable>();
    table->field_count = fields.size();
    table->slots.resize(std::bit_ceil(fields.size() * 2 + 2));
    const size_t mask = table->slots.size() - 1;
    for (size_t i = 0; i < fields.size(); ++i) {
      const uint32_t h = NameHash(fields[i].name);
      size_t at = h & mask;
      for (; table->slots[at].index >= 0; at = (at + 1) & mask)
        if (table->slots[at].hash == h && EqualsNoCase(fields[table->slots[at].index].name, fields[i].name)) break;
      if (table->slots[at].index < 0) table->slots[at] = {h, static_cast<int>(i)};
    }
    names_ = std::move(table);
  }
  const auto& slots = names_->slots;
  const size_t mask = slots.size() - 1;
  for (size_t at = hash & mask; slots[at].index >= 0; at = (at + 1) & mask) {
    const int i = slots[at].index;
    if (slots[at].hash == hash && static_cast<size_t>(i) < fields.size() && EqualsNoCase(fields[i].name, name))
      return i;
  }
  // Not in the table: no field has the name, unless a field was renamed
  // in place since the table was built, which a scan still finds.
  for (size_t i = 0; i < fields.size(); ++i)
    if (EqualsNoCase(fields[i].name, name)) return static_cast<int>(i);
  return -1;
}

namespace {

std::string_view Unbracketed(std::string_view name) {
  if (name.size() >= 2 && name.front() == '[' && name.back() == ']') name = name.substr(1, name.size() - 2);
  return name;
}

}  // namespace

FieldSelection::FieldSelection(std::vector<std::string> names) {
  for (std::string& name : names) {
    if (name.find('.') == std::string::npos)
      here_.emplace_back(Unbracketed(name));
    else
      below_.push_back(std::move(name));
  }
}

bool FieldSelection::Holds(std::string_view field) const {
  if (here_.empty()) return true;
  field = Unbracketed(field);
  for (const std::string& name : here_)
    if (EqualsNoCase(name, field)) return true;
  return false;
}

void FieldSelection::Add(std::string_view field) {
  if (!here_.empty() && !Holds(field)) here_.emplace_back(Unbracketed(field));
}

FieldSelection FieldSelection::Chapter(std::string_view chapter) const {
  std::vector<std::string> names;
  for (const std::string& name : below_) {
    const size_t dot = name.find('.');
    if (EqualsNoCase(Unbracketed(std::string_view(name).substr(0, dot)), Unbracketed(chapter)))
      names.push_back(name.substr(dot + 1));
  }
  return FieldSelection(std::move(names));
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

namespace {

// A cell made from an engine's value: its kind and payload, or its bytes
// for a String or Binary cell.
struct StoredCell {
  ColumnStore::Kind kind = ColumnStore::Kind::Null;
  uint64_t bits = 0;
  bool has_bytes = false;
  std::string_view bytes;
  char digits[24];  // the text of a whole number read into a text field
};

// The cell a value as the engine holds it makes in a field of `kind`, as
// ValueOfKind converts it; false for the rarer conversions that only
// ValueOfKind makes. Throws OverflowError for money beyond its range.
bool CellOfStored(sql::ValueKind kind, const StoredView& value, StoredCell* out) {
  using Kind = ColumnStore::Kind;
  using Class = StoredView::Class;
  using sql::ValueKind;
  auto set = [&](Kind k, uint64_t bits) {
    out->kind = k;
    out->bits = bits;
    return true;
  };
  auto set_bytes = [&](Kind k, std::string_view bytes) {
    out->kind = k;
    out->has_bytes = true;
    out->bytes = bytes;
    return true;
  };
  auto whole = [&](int64_t n) {
    const bool small = n >= INT32_MIN && n <= INT32_MAX;
    return set(small ? Kind::Long : Kind::LongLong, static_cast<uint64_t>(n));
  };
  auto date = [&](double serial) { return set(Kind::Date, std::bit_cast<uint64_t>(DateTime(serial).serial())); };
  switch (value.cls) {
    case Class::Null: return set(Kind::Null, 0);
    case Class::Blob: return set_bytes(Kind::Binary, value.bytes);
    case Class::Money: return set(Kind::Currency, static_cast<uint64_t>(value.integer));
    case Class::Integer: {
      const int64_t i = value.integer;
      switch (kind) {
        case ValueKind::Integer:
        case ValueKind::Unknown: return whole(i);
        case ValueKind::Boolean: return set(Kind::Boolean, i != 0);
        case ValueKind::Money: return set(Kind::Currency, static_cast<uint64_t>(Currency::FromInt(i).raw()));
        case ValueKind::Date: return date(static_cast<double>(i));
        case ValueKind::Float:
        case ValueKind::Decimal: return set(Kind::Double, std::bit_cast<uint64_t>(static_cast<double>(i)));
        case ValueKind::Text: {
          const char* end = std::to_chars(out->digits, out->digits + sizeof out->digits, i).ptr;
          return set_bytes(Kind::String, std::string_view(out->digits, end - out->digits));
        }
        case ValueKind::Blob: return set(Kind::LongLong, static_cast<uint64_t>(i));
      }
      return false;
    }
    case Class::Float: {
      const double d = value.number;
      switch (kind) {
        case ValueKind::Integer:
          if (std::trunc(d) == d && std::fabs(d) < 9.2e18) return whole(static_cast<int64_t>(d));
          return set(Kind::Double, std::bit_cast<uint64_t>(d));
        case ValueKind::Boolean: return set(Kind::Boolean, d != 0);
        case ValueKind::Money: return set(Kind::Currency, static_cast<uint64_t>(Currency::FromDouble(d).raw()));
        case ValueKind::Date: return date(d);
        case ValueKind::Text: return false;
        default: return set(Kind::Double, std::bit_cast<uint64_t>(d));
      }
    }
    case Class::Text:
      switch (kind) {
        case ValueKind::Date:
          if (auto dt = ParseIsoDateTime(value.bytes)) return set(Kind::Date, std::bit_cast<uint64_t>(dt->serial()));
          return false;
        case ValueKind::Money:
        case ValueKind::Float:
        case ValueKind::Decimal: return false;
        case ValueKind::Blob: return set_bytes(Kind::Binary, value.bytes);
        default: return set_bytes(Kind::String, value.bytes);
      }
  }
  return false;
}

}  // namespace

bool RowSet::SetStored(size_t row, int field, const StoredView& value) {
  StoredCell cell;
  if (!CellOfStored(fields[field].kind, value, &cell)) return false;
  if (cell.has_bytes)
    cells_.SetBytes(row, Col(field), cell.kind, cell.bytes);
  else
    cells_.SetCell(row, Col(field), cell.kind, cell.bits);
  ++version;
  return true;
}

bool RowSet::PushStored(int field, const StoredView& value) {
  StoredCell cell;
  if (!CellOfStored(fields[field].kind, value, &cell)) return false;
  SyncColumns();
  if (cell.has_bytes)
    cells_.PushBytes(Col(field), cell.kind, cell.bytes);
  else
    cells_.PushCell(Col(field), cell.kind, cell.bits);
  return true;
}

void RowSet::PushValue(int field, const Variant& value) {
  SyncColumns();
  cells_.PushValue(Col(field), value);
}

size_t RowSet::EndRow() {
  ++version;
  return cells_.EndRow();
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

void RowSet::Reorder(const std::vector<uint32_t>& order) {
  cells_ = ColumnStore::Reordered(std::move(cells_), order);
  ++version;
  std::vector<size_t> related;
  for (ChapterLink& link : chapters) {
    // A child a chapter recordset already reads keeps its row numbers; its
    // rows are still found by key.
    if (link.child.use_count() != 1) continue;
    // The child's rows in the order the parent's rows now ask for them:
    // each key's rows together, where the first parent row of that key
    // reaches them, then the rows no parent row relates to, as they were.
    constexpr uint32_t kUnplaced = UINT32_MAX;
    const size_t child_rows = link.child->RowCount();
    std::vector<uint32_t> child_order, new_of_old(child_rows, kUnplaced);
    child_order.reserve(child_rows);
    std::vector<std::pair<uint32_t, uint32_t>> runs(RowCount());
    for (size_t row = 0; row < RowCount(); ++row) {
      link.index.RowsFor(*this, row, link.parent_fields, &related);
      if (related.empty()) continue;
      const auto size = static_cast<uint32_t>(related.size());
      // A key that an earlier parent row shares was placed whole then.
      if (new_of_old[related[0]] != kUnplaced) {
        runs[row] = {new_of_old[related[0]], new_of_old[related[0]] + size};
        continue;
      }
      const auto begin = static_cast<uint32_t>(child_order.size());
      for (const size_t r : related) {
        new_of_old[r] = static_cast<uint32_t>(child_order.size());
        child_order.push_back(static_cast<uint32_t>(r));
      }
      runs[row] = {begin, begin + size};
    }
    for (size_t r = 0; r < child_rows; ++r) {
      if (new_of_old[r] != kUnplaced) continue;
      new_of_old[r] = static_cast<uint32_t>(child_order.size());
      child_order.push_back(static_cast<uint32_t>(r));
    }
    link.child->Reorder(child_order);
    link.index.Renumber(new_of_old);
    link.index.KeepRuns(*this, std::move(runs));
  }
}

namespace {
// The whole numbers RelateKey writes as integers.
constexpr int64_t kWholeKeyMax = 9'000'000'000'000'000'000;
}  // namespace

RelateClass RelateClassOf(const ColumnStore& cells, size_t row, size_t column, int64_t* key) {
  using Kind = ColumnStore::Kind;
  if (column >= cells.ColumnCount()) return RelateClass::Null;
  const ColumnStore::Cell cell = cells.CellAt(row, column);
  const uint64_t bits = cell.bits;
  switch (cell.kind) {
    case Kind::Empty:
    case Kind::Null: return RelateClass::Null;
    case Kind::Long:
    case Kind::LongLong: {
      const auto n = static_cast<int64_t>(bits);
      if (n <= -kWholeKeyMax || n >= kWholeKeyMax) return RelateClass::Other;
      *key = n;
      return RelateClass::Whole;
    }
    case Kind::Double: {
      const double d = std::bit_cast<double>(bits);
      if (!(std::fabs(d) < 9e18) || std::trunc(d) != d) return RelateClass::Other;
      *key = static_cast<int64_t>(d);
      return RelateClass::Whole;
    }
    case Kind::Currency: {
      const auto raw = static_cast<int64_t>(bits);
      if (raw % Currency::kScale != 0) return RelateClass::Other;
      *key = raw / Currency::kScale;
      return RelateClass::Whole;
    }
    case Kind::Boolean: *key = bits ? -1 : 0; return RelateClass::Whole;
    default: return RelateClass::Other;
  }
}

std::string RowKey(const RowSet& rows, size_t row, const std::vector<int>& fields, bool* has_null) {
  std::string key;
  *has_null = false;
  for (size_t i = 0; i < fields.size(); ++i) {
    // A whole-number key, the usual relation, is written straight from its
    // cell, as RelateKey writes it, without making a Variant.
    int64_t n = 0;
    if (RelateClassOf(rows.cells(), row, static_cast<size_t>(fields[i]), &n) == RelateClass::Whole) {
      if (i) key += '\x1f';
      key += 'n';
      char buf[24];
      key.append(buf, std::to_chars(buf, buf + sizeof buf, n).ptr);
      continue;
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

namespace {
uint64_t SlotHash(int64_t key) { return static_cast<uint64_t>(key) * 0x9E3779B97F4A7C15ull; }
}  // namespace

const RelateIndex::Slot* RelateIndex::FindSlot(int64_t key) const {
  if (slots_.empty()) return nullptr;
  const size_t mask = slots_.size() - 1;
  for (size_t i = SlotHash(key) >> 32 & mask;; i = (i + 1) & mask) {
    if (slots_[i].begin == kNoGroup) return nullptr;
    if (slots_[i].key == key) return &slots_[i];
  }
}

void RelateIndex::GrowSlots() {
  std::vector<Slot> old = std::move(slots_);
  slots_.assign(std::max<size_t>(64, old.size() * 2), Slot());
  const size_t mask = slots_.size() - 1;
  for (const Slot& slot : old) {
    if (slot.begin == kNoGroup) continue;
    size_t i = SlotHash(slot.key) >> 32 & mask;
    while (slots_[i].begin != kNoGroup) i = (i + 1) & mask;
    slots_[i] = slot;
  }
}

uint32_t RelateIndex::AddWholeGroup(int64_t key) {
  if ((whole_count_ + 1) * 2 > slots_.size()) GrowSlots();
  const size_t mask = slots_.size() - 1;
  size_t i = SlotHash(key) >> 32 & mask;
  while (slots_[i].begin != kNoGroup) i = (i + 1) & mask;
  slots_[i].key = key;
  slots_[i].begin = static_cast<uint32_t>(whole_count_);
  return static_cast<uint32_t>(whole_count_++);
}

void RelateIndex::Build(const RowSet& child, const std::vector<int>& child_fields) {
  *this = RelateIndex();
  const size_t n = child.RowCount();
  const ColumnStore& cells = child.cells();
  int64_t key = 0;
  whole_ = child_fields.size() == 1;
  for (size_t r = 0; whole_ && r < n; ++r)
    whole_ = RelateClassOf(cells, r, static_cast<size_t>(child_fields[0]), &key) != RelateClass::Other;

  // 1. The group of each row: its key's place in the range of keys when
  // they are dense, else numbered as keys first appear.
  std::vector<uint32_t> group_of(n, kNoGroup);
  uint32_t groups = 0;
  if (whole_) {
    int64_t low = INT64_MAX, high = INT64_MIN;
    for (size_t r = 0; r < n; ++r) {
      if (RelateClassOf(cells, r, static_cast<size_t>(child_fields[0]), &key) != RelateClass::Whole) continue;
      low = std::min(low, key);
      high = std::max(high, key);
    }
    // The width in unsigned arithmetic: keys lie within -9e18..9e18.
    dense_ = low <= high &&
             static_cast<uint64_t>(high) - static_cast<uint64_t>(low) < 4 * static_cast<uint64_t>(n) + 64;
    dense_min_ = low;
  }
  for (size_t r = 0; r < n; ++r) {
    if (dense_) {
      if (RelateClassOf(cells, r, static_cast<size_t>(child_fields[0]), &key) != RelateClass::Whole) continue;
      group_of[r] = static_cast<uint32_t>(static_cast<uint64_t>(key) - static_cast<uint64_t>(dense_min_));
    } else if (whole_) {
      if (RelateClassOf(cells, r, static_cast<size_t>(child_fields[0]), &key) != RelateClass::Whole) continue;
      const Slot* slot = FindSlot(key);
      group_of[r] = slot ? slot->begin : AddWholeGroup(key);
    } else {
      bool has_null = false;
      std::string text = RowKey(child, r, child_fields, &has_null);
      if (has_null) continue;
      group_of[r] = text_groups_.try_emplace(std::move(text), groups).first->second;
    }
    groups = std::max(groups, group_of[r] + 1);
  }
  // 2. Where each group starts, from the counts; 3. the rows in place, in
  // the child's order within each group.
  starts_.assign(size_t{groups} + 1, 0);
  for (uint32_t g : group_of)
    if (g != kNoGroup) ++starts_[g + 1];
  for (size_t g = 0; g < groups; ++g) starts_[g + 1] += starts_[g];
  rows_.resize(starts_[groups]);
  std::vector<uint32_t> next(starts_.begin(), starts_.end() - 1);
  for (size_t r = 0; r < n; ++r)
    if (group_of[r] != kNoGroup) rows_[next[group_of[r]]++] = static_cast<uint32_t>(r);
  // 4. Each whole key's slot takes its group's place in rows_.
  for (Slot& slot : slots_) {
    if (slot.begin == kNoGroup) continue;
    const uint32_t g = slot.begin;
    slot.begin = starts_[g];
    slot.end = starts_[g + 1];
  }
}

void RelateIndex::Renumber(const std::vector<uint32_t>& new_of_old) {
  // A key's rows keep their order among themselves, so each group stays
  // in the child's order.
  for (uint32_t& r : rows_) r = new_of_old[r];
  runs_.clear();
}

void RelateIndex::KeepRuns(const RowSet& parent, std::vector<std::pair<uint32_t, uint32_t>> runs) {
  runs_parent_ = parent.id;
  runs_version_ = parent.version;
  runs_ = std::move(runs);
}

RelateIndex::Related RelateIndex::Find(const RowSet& parent, size_t row,
                                       const std::vector<int>& parent_fields) const {
  // A parent laid out with its child reads its row's run in order; a key
  // looked up here is a cache miss in a table as large as the child's keys.
  if (row < runs_.size() && parent.id == runs_parent_ && parent.version == runs_version_) {
    const auto [begin, end] = runs_[row];
    return {nullptr, begin, end - begin};
  }
  auto group = [&](uint32_t begin, uint32_t end) { return Related{rows_.data() + begin, 0, end - begin}; };
  if (whole_) {
    // A parent value that is no whole number relates to none of the
    // child's whole keys, as its RelateKey text differs from theirs.
    // The usual key, a Long, is read here in line.
    if (parent_fields.size() != 1) return {};
    const ColumnStore& cells = parent.cells();
    const auto column = static_cast<size_t>(parent_fields[0]);
    int64_t key = 0;
    const ColumnStore::Cell cell =
        column < cells.ColumnCount() ? cells.CellAt(row, column) : ColumnStore::Cell{ColumnStore::Kind::Null, 0};
    if (cell.kind == ColumnStore::Kind::Long)
      key = static_cast<int64_t>(cell.bits);
    else if (RelateClassOf(cells, row, column, &key) != RelateClass::Whole)
      return {};
    if (dense_) {
      const uint64_t g = static_cast<uint64_t>(key) - static_cast<uint64_t>(dense_min_);
      if (key < dense_min_ || g + 1 >= starts_.size()) return {};
      return group(starts_[g], starts_[g + 1]);
    }
    if (const Slot* slot = FindSlot(key)) return group(slot->begin, slot->end);
    return {};
  }
  bool has_null = false;
  std::string text = RowKey(parent, row, parent_fields, &has_null);
  if (has_null) return {};
  auto it = text_groups_.find(text);
  if (it == text_groups_.end()) return {};
  return group(starts_[it->second], starts_[it->second + 1]);
}

void RelateIndex::RowsFor(const RowSet& parent, size_t row, const std::vector<int>& parent_fields,
                          std::vector<size_t>* out) const {
  const Related related = Find(parent, row, parent_fields);
  out->resize(related.count);
  for (uint32_t i = 0; i < related.count; ++i) (*out)[i] = related[i];
}

}  // namespace orv::db
