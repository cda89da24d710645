#include "platform/db/recordset.h"

#include <algorithm>
#include <bit>
#include <cctype>
#include <optional>
#include <unordered_map>

#include "common/collation.h"
#include "platform/db/db_error.h"
#include "platform/db/recordset_state.h"
#include "platform/db/sort_keys.h"
#include "platform/db/value_compare.h"

namespace orv::db {

namespace {

[[noreturn]] void NoCurrentRecord() {
  throw DatabaseError(kErrNoCurrentRecord,
                      "Either BOF or EOF is True, or the current record has been deleted. "
                      "Requested operation requires a current record.");
}

[[noreturn]] void NotUpdatable(const std::string& source) {
  throw DatabaseError(kErrNotUpdatable,
                      "Current Recordset does not support updating (it was opened read-only): " +
                          source);
}

bool IsBareName(std::string_view s) {
  if (s.size() >= 2 && s.front() == '[' && s.back() == ']') return true;
  if (s.empty()) return false;
  for (char c : s)
    if (!(std::isalnum(static_cast<unsigned char>(c)) || c == '_' || c == '.' || c == '#' ||
          c == '$'))
      return false;
  return true;
}

std::string QuoteName(std::string_view name) {
  std::string q = "\"";
  for (char c : name) {
    if (c == '"') q += '"';
    q += c;
  }
  return q + "\"";
}

size_t FindWordNoCase(std::string_view s, std::string_view word, size_t from = 0) {
  for (size_t i = from; i + word.size() <= s.size(); ++i) {
    if (!EqualsNoCase(s.substr(i, word.size()), word)) continue;
    bool before = i == 0 || !std::isalnum(static_cast<unsigned char>(s[i - 1]));
    size_t e = i + word.size();
    bool after = e >= s.size() || !std::isalnum(static_cast<unsigned char>(s[e]));
    if (before && after) return i;
  }
  return std::string_view::npos;
}

// The one table a "SELECT ... FROM T [WHERE ...] [ORDER BY ...]" reads, or
// "" when the statement joins, lists several tables or is no such SELECT.
std::string SingleTableOf(const std::string& statement) {
  std::string_view s = statement;
  // The first FROM outside parentheses (the select list may hold subqueries).
  int depth = 0;
  size_t from = std::string_view::npos;
  for (size_t i = 0; i < s.size(); ++i) {
    if (s[i] == '(') ++depth;
    if (s[i] == ')') --depth;
    if (depth == 0 && (i == 0 || std::isspace(static_cast<unsigned char>(s[i - 1]))) &&
        FindWordNoCase(s.substr(i, 4), "FROM") == 0) {
      from = i;
      break;
    }
  }
  if (from == std::string_view::npos) return {};
  std::string_view rest = s.substr(from + 4);
  while (!rest.empty() && std::isspace(static_cast<unsigned char>(rest.front()))) rest.remove_prefix(1);
  size_t end = 0;
  if (!rest.empty() && rest.front() == '[') {
    end = rest.find(']');
    if (end == std::string_view::npos) return {};
    ++end;
  } else {
    while (end < rest.size() && !std::isspace(static_cast<unsigned char>(rest[end])) && rest[end] != ',')
      ++end;
  }
  std::string table(rest.substr(0, end));
  std::string_view tail = rest.substr(end);
  while (!tail.empty() && std::isspace(static_cast<unsigned char>(tail.front()))) tail.remove_prefix(1);
  if (!tail.empty() && FindWordNoCase(tail, "WHERE") != 0 && FindWordNoCase(tail, "ORDER") != 0)
    return {};
  if (FindWordNoCase(tail, "JOIN") != std::string_view::npos) return {};
  if (table.size() > 4 && EqualsNoCase(std::string_view(table).substr(0, 4), "dbo.")) table = table.substr(4);
  if (table.size() >= 2 && table.front() == '[') table = table.substr(1, table.size() - 2);
  return table;
}

// Whether row `row` of `data` meets `c`; each value is made as the
// criteria asks for it, and only that one is held.
bool RowMatches(const Criteria& c, const RowSet& data, size_t row) {
  Variant value;
  return c.Matches([&](int f) -> const Variant& {
    value = data.Get(row, f);
    return value;
  });
}

// Sort codes of one sort column over the rows of `view`: unsigned numbers
// that order as Compare orders the cells, so that a sort compares two
// numbers in place of two cells. Given when every value of the column is
// of one class (the usual column): text (by `rank`, the ranks of its
// texts), whole numbers, money, floats or dates; Null and Empty take 0,
// below every value, as Compare puts them first. Empty (compare the
// cells) for a column of mixed kinds, flags or blobs.
std::vector<uint64_t> OrderCodes(const ColumnStore& cells, const std::vector<size_t>& view, size_t column,
                                 const std::vector<uint32_t>& rank) {
  using Kind = ColumnStore::Kind;
  constexpr uint64_t kSign = uint64_t{1} << 63;
  enum Class { kNone, kText, kWhole, kMoney, kFloat, kDate, kOther };
  auto class_of = [](Kind k) {
    switch (k) {
      case Kind::Empty:
      case Kind::Null: return kNone;
      case Kind::String: return kText;
      case Kind::Long:
      case Kind::LongLong: return kWhole;
      case Kind::Currency: return kMoney;
      case Kind::Double: return kFloat;
      case Kind::Date: return kDate;
      default: return kOther;
    }
  };
  int seen = kNone;
  for (size_t row : view) {
    const int c = class_of(cells.KindAt(row, column));
    if (c == kNone || c == seen) continue;
    if (seen != kNone || c == kOther) return {};
    seen = c;
  }
  std::vector<uint64_t> codes(view.size(), 0);
  for (size_t i = 0; i < view.size(); ++i) {
    if (class_of(cells.KindAt(view[i], column)) == kNone) continue;
    const uint64_t bits = cells.BitsAt(view[i], column);
    uint64_t& code = codes[i];
    if (seen == kText) {
      code = uint64_t{rank[i]} + 1;
    } else if (seen == kWhole || seen == kMoney) {
      // Two's complement with the sign bit flipped orders as unsigned;
      // the least number would take 0, the code of Null.
      if (bits == kSign) return {};
      code = bits ^ kSign;
    } else {
      // A float's bits order as unsigned once the negatives are turned
      // over and the positives raised above them; -0 is 0, as Compare has
      // it, and no number takes 0. NaN, which orders against nothing, is
      // left to Compare.
      double d = std::bit_cast<double>(bits);
      if (d != d) return {};
      if (d == 0) d = 0;
      const uint64_t b = std::bit_cast<uint64_t>(d);
      code = b & kSign ? ~b : b | kSign;
    }
  }
  return codes;
}

// Replaces each code by its rank among the distinct codes (0, 1, ...) and
// returns how many there are. Codes that lie close together (whole
// numbers, text ranks) are ranked by their distance from the least; others
// (dates, money, floats) by a hash of their distinct values, sorted.
size_t DenseRanks(std::vector<uint64_t>& codes) {
  const auto [low, high] = std::minmax_element(codes.begin(), codes.end());
  const uint64_t least = *low;
  if (*high - least <= 2 * codes.size() + 64) {
    for (uint64_t& x : codes) x -= least;
    return static_cast<size_t>(*std::max_element(codes.begin(), codes.end())) + 1;
  }
  std::unordered_map<uint64_t, uint64_t> seen;
  // Rows of one value often lie together (payments of one day); the last
  // value's number spares the hash for them.
  uint64_t last = codes.front(), last_id = 0;
  seen.emplace(last, 0);
  for (uint64_t& x : codes) {
    if (x != last) {
      last = x;
      last_id = seen.try_emplace(x, seen.size()).first->second;
    }
    x = last_id;
  }
  std::vector<std::pair<uint64_t, uint64_t>> distinct(seen.begin(), seen.end());
  std::sort(distinct.begin(), distinct.end());
  std::vector<uint64_t> rank_of(distinct.size());
  for (size_t r = 0; r < distinct.size(); ++r) rank_of[distinct[r].second] = r;
  for (uint64_t& x : codes) x = rank_of[x];
  return distinct.size();
}

// The order of rows 0 to n - 1 by their sort codes (one vector per key,
// `cols` saying which keys descend), ties kept in row order, as the stable
// sort of Rebuild orders them; nullopt when a key has no codes. A
// counting sort by each key's rank, from the last key to the first: each
// pass is stable, so rows end ordered by the first key, then the second,
// and so on. Comparing key by key through three arrays made the sort of
// 180,000 payments by provider, date and name a twentieth of the report's
// run; this is a few passes over the rows.
std::optional<std::vector<uint32_t>> CountingOrder(std::vector<std::vector<uint64_t>>& codes,
                                                   const std::vector<std::pair<int, bool>>& cols, size_t n) {
  if (n < 2 || n > UINT32_MAX) return std::nullopt;
  for (const auto& c : codes)
    if (c.empty()) return std::nullopt;
  std::vector<uint32_t> order(n), next(n);
  for (size_t i = 0; i < n; ++i) order[i] = static_cast<uint32_t>(i);
  std::vector<uint32_t> starts;
  for (size_t k = codes.size(); k-- > 0;) {
    std::vector<uint64_t>& rank = codes[k];
    const size_t buckets = DenseRanks(rank);
    if (buckets < 2) continue;
    // A descending key counts down from its highest rank.
    if (cols[k].second)
      for (uint64_t& x : rank) x = buckets - 1 - x;
    starts.assign(buckets + 1, 0);
    for (size_t i = 0; i < n; ++i) ++starts[rank[i] + 1];
    for (size_t b = 0; b < buckets; ++b) starts[b + 1] += starts[b];
    for (const uint32_t row : order) next[starts[rank[row]]++] = row;
    order.swap(next);
  }
  return order;
}

}  // namespace

// ---- RecordsetState -------------------------------------------------------

void RecordsetState::FollowParent() {
  if (!open)
    throw DatabaseError(kErrObjectClosed, "Operation is not allowed when the object is closed.");
  if (parent_chapter < 0) return;
  // The parent is looked at without taking a count of it: lock() is two
  // atomic operations, and every value a report reads from a chapter two
  // levels down walks up twice. A parent that still has an owner is alive,
  // and only the report's own thread could let it go meanwhile.
  if (parent.expired()) return;
  RecordsetState& p = *parent_state;
  p.Ready();
  // Most calls find the parent on the row this chapter already follows,
  // in the rows it followed it in (every value read from the chapter
  // asks, and a billing list reads three levels down): that test is made
  // here, and the rest out of line.
  if (p.data->id == bound_parent_rows && (p.AtRow() ? static_cast<long>(p.view[p.pos]) : -1) == bound_parent_row)
    return;
  Rebind(p);
}

void RecordsetState::Rebind(const RecordsetState& p) {
  const std::vector<ChapterLink>& links = p.data->chapters;
  if (static_cast<size_t>(parent_chapter) >= links.size()) {
    // The parent was opened again on other rows: this chapter is empty.
    bound_parent_rows = 0;
    base.clear();
    base_in_view = false;
    Rebuild();
    return;
  }
  const ChapterLink& link = links[parent_chapter];
  // A Requery of the parent brings new child rows; follow them.
  if (data != link.child) {
    data = link.child;
    bound_parent_row = -2;
  }
  bound_parent_rows = p.data->id;
  const long row = p.AtRow() ? static_cast<long>(p.view[p.pos]) : -1;
  if (row != bound_parent_row) Bind(p, link, row);
}

void RecordsetState::Bind(const RecordsetState& p, const ChapterLink& link, long row) {
  bound_parent_row = row;
  // The rows of the parent row's key lie together in the index: one
  // lookup finds them. A chapter as the statement gave it (the usual one)
  // shows them as they are; a filtered or sorted one filters and sorts
  // them anew.
  const RelateIndex::Related related =
      row >= 0 ? link.index.Find(*p.data, static_cast<size_t>(row), link.parent_fields) : RelateIndex::Related();
  const bool as_given = !criteria && sort.empty();
  std::vector<size_t>& rows = as_given ? view : base;
  rows.clear();
  for (uint32_t i = 0; i < related.count; ++i) rows.push_back(related[i]);
  base_in_view = as_given;
  if (as_given)
    Restart();
  else
    Rebuild();
}

size_t RecordsetState::CurrentRow() {
  Ready();
  if (!AtRow()) NoCurrentRecord();
  return view[pos];
}

const FieldInfo& RecordsetState::FieldAt(int index) const {
  const auto& fields = data ? data->fields : pending_fields;
  if (index < 0 || index >= static_cast<int>(fields.size()))
    throw DatabaseError(kErrItemNotFound,
                        "Item cannot be found in the collection corresponding to the requested "
                        "name or ordinal: field " +
                            std::to_string(index) + " of " + source);
  return fields[index];
}

int RecordsetState::FieldIndex(std::string_view name) const {
  int i = data ? data->FindField(name) : -1;
  if (i < 0)
    throw DatabaseError(kErrItemNotFound,
                        "Item cannot be found in the collection corresponding to the requested "
                        "name or ordinal: '" +
                            std::string(name) + "' in " + (source.empty() ? "the recordset" : source));
  return i;
}

int RecordsetState::ComparedField(std::string_view name, const char* what) const {
  const int f = data->FindField(name);
  if (f >= 0 && !data->fields[f].held)
    throw DatabaseError(kErrNotAllowed, std::string("the ") + what + " names the field '" + data->fields[f].name +
                                            "', which the recordset was opened without (KeepFields): " + source);
  return f;
}

void RecordsetState::CheckHoldsAll() const {
  if (data)
    for (const FieldInfo& f : data->fields)
      if (!f.held)
        throw DatabaseError(kErrNotUpdatable, "the recordset was opened with only some of its fields (KeepFields) "
                                              "and cannot be written: " + source);
}

// Rows whose `field` may equal the number `key`: a hash of the base rows by
// the field's numeric value, built at the first filter of the form
// "Field = number" and kept while the rows stay the same. Reports filter a
// related recordset once per row of another ("PatientID = 17"), and a scan
// per filter would make such a report quadratic. Returns nullptr when the
// field holds anything but numbers and Nulls; the caller then scans.
const std::vector<size_t>* RecordsetState::EqualityCandidates(int field, double key) {
  static const std::vector<size_t> kNone;
  // A chapter's rows change as its parent moves; only a recordset's own
  // rows are indexed.
  if (parent_chapter >= 0) return nullptr;
  if (!eq_index || eq_index->field != field || eq_index->rowset != data->id ||
      eq_index->version != data->version || eq_index->base_size != base.size()) {
    EqIndex ix;
    ix.field = field;
    ix.rowset = data->id;
    ix.version = data->version;
    ix.base_size = base.size();
    const ColumnStore& cells = data->cells();
    const auto column = static_cast<size_t>(field);
    for (size_t r : base) {
      VarType t = cells.TypeAt(r, column);
      if (t == VarType::Null) continue;
      if (t != VarType::Long && t != VarType::LongLong && t != VarType::Double &&
          t != VarType::Currency) {
        ix.usable = false;
        break;
      }
      ix.rows[cells.NumberAt(r, column)].push_back(r);
    }
    eq_index = std::move(ix);
  }
  if (!eq_index->usable) return nullptr;
  auto it = eq_index->rows.find(key);
  return it == eq_index->rows.end() ? &kNone : &it->second;
}

void RecordsetState::Rebuild() {
  if (base_in_view) {
    base = view;
    base_in_view = false;
  }
  view.clear();
  std::optional<std::pair<int, Variant>> eq = criteria ? criteria->SingleEquality() : std::nullopt;
  const std::vector<size_t>* candidates = nullptr;
  if (eq && eq->first >= 0 && eq->second.IsNumeric() && eq->second.type() != VarType::Boolean) {
    candidates = EqualityCandidates(eq->first, CDbl(eq->second));
  }
  if (candidates) {
    // Every candidate is still checked, so the index only narrows the scan.
    for (size_t r : *candidates)
      if (RowMatches(*criteria, *data, r)) view.push_back(r);
  } else if (criteria) {
    for (size_t r : base)
      if (RowMatches(*criteria, *data, r)) view.push_back(r);
  } else {
    view = base;
  }
  // A chapter is rebuilt for every parent row it follows, mostly unsorted.
  const auto keys = sort.empty() ? std::vector<SortKey>() : ParseSortKeys(sort);
  if (!keys.empty()) {
    std::vector<std::pair<int, bool>> cols;
    for (const auto& k : keys) {
      int f = ComparedField(k.field, "sort");
      if (f < 0)
        throw DatabaseError(kErrItemNotFound, "the sort names a field the recordset does not have: '" +
                                                  k.field + "' in: " + sort);
      cols.emplace_back(f, k.descending);
    }
    // Text is ordered by rank: each distinct text of a sort column is keyed
    // once (collation.h), the keys are sorted, and every row holds its
    // text's rank. A sort of n names makes n log n comparisons, and Compare
    // keys a name with an accent or a hyphen at each of them; the same few
    // providers and one name per patient recur through a listing of
    // payments, so the distinct texts are few, and the ranks cost four
    // bytes a row where a key per row cost a copy of the text three times
    // over. Two texts compare as their keys do, so the order is the one
    // Compare gives; cells of other kinds are compared in place.
    const ColumnStore& cells = data->cells();
    const size_t n = view.size();
    constexpr uint32_t kNoRank = UINT32_MAX;
    std::vector<std::vector<uint32_t>> ranks(cols.size());
    for (size_t k = 0; k < cols.size(); ++k) {
      const auto column = static_cast<size_t>(cols[k].first);
      std::unordered_map<std::string_view, uint32_t> distinct;
      std::vector<uint32_t>& rank = ranks[k];
      for (size_t i = 0; i < n; ++i) {
        if (cells.KindAt(view[i], column) != ColumnStore::Kind::String) continue;
        if (rank.empty()) rank.assign(n, kNoRank);
        auto it = distinct.try_emplace(cells.BytesAt(view[i], column), static_cast<uint32_t>(distinct.size())).first;
        rank[i] = it->second;
      }
      if (rank.empty()) continue;
      std::vector<std::pair<std::string, uint32_t>> keyed;
      keyed.reserve(distinct.size());
      for (const auto& [text, index] : distinct) keyed.emplace_back(collation::SortKey(text), index);
      std::sort(keyed.begin(), keyed.end());
      std::vector<uint32_t> rank_of(distinct.size());
      uint32_t r = 0;
      for (size_t j = 0; j < keyed.size(); ++j) {
        if (j > 0 && keyed[j].first != keyed[j - 1].first) ++r;
        rank_of[keyed[j].second] = r;
      }
      for (uint32_t& x : rank)
        if (x != kNoRank) x = rank_of[x];
    }
    std::vector<std::vector<uint64_t>> codes(cols.size());
    for (size_t k = 0; k < cols.size(); ++k) {
      codes[k] = OrderCodes(cells, view, static_cast<size_t>(cols[k].first), ranks[k]);
      // The codes hold the ranks now; the sort of a large listing is at
      // the run's peak.
      if (!codes[k].empty()) std::vector<uint32_t>().swap(ranks[k]);
    }
    std::optional<std::vector<uint32_t>> order = CountingOrder(codes, cols, n);
    if (!order) {
      order.emplace(n);
      for (size_t i = 0; i < n; ++i) (*order)[i] = static_cast<uint32_t>(i);
      std::stable_sort(order->begin(), order->end(), [&](uint32_t a, uint32_t b) {
        for (size_t k = 0; k < cols.size(); ++k) {
          int c;
          if (!codes[k].empty()) {
            c = codes[k][a] < codes[k][b] ? -1 : (codes[k][a] > codes[k][b] ? 1 : 0);
          } else if (!ranks[k].empty() && ranks[k][a] != kNoRank && ranks[k][b] != kNoRank) {
            c = ranks[k][a] < ranks[k][b] ? -1 : (ranks[k][a] > ranks[k][b] ? 1 : 0);
          } else {
            c = cells.Compare(view[a], view[b], static_cast<size_t>(cols[k].first));
          }
          if (c != 0) return cols[k].second ? c > 0 : c < 0;
        }
        return false;
      });
    }
    std::vector<size_t> sorted(n);
    for (size_t i = 0; i < n; ++i) sorted[i] = view[(*order)[i]];
    view = std::move(sorted);
    if (!criteria && parent_chapter < 0 && view.size() >= kLayOutRows && data.use_count() == 1 &&
        view.size() <= UINT32_MAX && !std::is_sorted(view.begin(), view.end()))
      LayOutInViewOrder();
  }
  Restart();
}

void RecordsetState::Restart() {
  pos = 0;
  chunk_row = -1;
  // This recordset is back on its first row, perhaps the very row it was
  // on: its chapters start over at their first rows too, rather than stay
  // where the last walk left them. Two parent rows of one key share the
  // chapter below them, and the second found its grandchildren at EOF.
  for (const auto& chapter : chapter_states)
    if (chapter) chapter->bound_parent_row = -2;
}

void RecordsetState::LayOutInViewOrder() {
  // Every row once: the view's, then any the view leaves out, as they lie.
  std::vector<uint32_t> order;
  order.reserve(data->RowCount());
  constexpr uint32_t kUnplaced = UINT32_MAX;
  std::vector<uint32_t> new_of_old(data->RowCount(), kUnplaced);
  for (const size_t r : view) {
    new_of_old[r] = static_cast<uint32_t>(order.size());
    order.push_back(static_cast<uint32_t>(r));
  }
  for (size_t r = 0; r < new_of_old.size(); ++r) {
    if (new_of_old[r] != kUnplaced) continue;
    new_of_old[r] = static_cast<uint32_t>(order.size());
    order.push_back(static_cast<uint32_t>(r));
  }
  // The statement's order stays in `base`, for a Sort of "" and for the
  // ties of the next sort.
  for (size_t& r : base) r = new_of_old[r];
  for (size_t i = 0; i < view.size(); ++i) view[i] = i;
  // Given back before the copy, whose old and new text are the peak.
  std::vector<uint32_t>().swap(new_of_old);
  data->Reorder(order);
  eq_index.reset();
}

void RecordsetState::WriteEdit() {
  if (edit == adEditNone) return;
  if (fabricated || !connection) {
    edit = adEditNone;
    original.clear();
    return;
  }
  if (table.empty()) {
    table = SingleTableOf(statement);
    if (table.empty())
      throw DatabaseError(kErrNotUpdatable,
                          "cannot write the row back: the statement does not read a single table: " +
                              source);
    key_fields.clear();
    for (const auto& k : connection->PrimaryKey(table)) {
      int f = data->FindField(k);
      if (f >= 0) key_fields.push_back(f);
    }
    if (key_fields.empty()) {
      int f = data->FindField("ID");
      if (f >= 0) key_fields.push_back(f);
    }
    if (key_fields.empty()) {
      table.clear();
      throw DatabaseError(kErrNotUpdatable,
                          "cannot write the row back: the recordset holds no key of its table: " +
                              source);
    }
  }
  const std::vector<Variant> row = data->GetRow(edit_row);
  std::vector<Variant> values;
  std::string sql;
  if (edit == adEditAdd) {
    std::string cols, marks;
    for (size_t f = 0; f < data->fields.size(); ++f) {
      if (data->fields[f].chapter >= 0 || row[f].IsNull() || row[f].IsEmpty()) continue;
      if (!values.empty()) {
        cols += ", ";
        marks += ", ";
      }
      values.push_back(row[f]);
      cols += QuoteName(data->fields[f].name);
      marks += "?" + std::to_string(values.size());
    }
    sql = values.empty() ? "INSERT INTO " + QuoteName(table) + " DEFAULT VALUES"
                         : "INSERT INTO " + QuoteName(table) + " (" + cols + ") VALUES (" + marks + ")";
    connection->RunEngineSql(sql, values, "AddNew/Update on " + source);
    // A key the database assigned is read back into the row.
    if (key_fields.size() == 1 && row[key_fields[0]].IsNull())
      data->Set(edit_row, key_fields[0],
                ValueOfKind(Variant::Int64(connection->LastInsertId()), sql::ValueKind::Integer));
  } else {
    std::string sets, where;
    for (size_t f = 0; f < data->fields.size(); ++f) {
      if (data->fields[f].chapter >= 0 || row[f] == original[f]) continue;
      if (!values.empty()) sets += ", ";
      values.push_back(row[f]);
      sets += QuoteName(data->fields[f].name) + " = ?" + std::to_string(values.size());
    }
    if (values.empty()) {
      edit = adEditNone;
      return;
    }
    for (int k : key_fields) {
      if (!where.empty()) where += " AND ";
      values.push_back(original[k]);
      where += QuoteName(data->fields[k].name) + " = ?" + std::to_string(values.size());
    }
    sql = "UPDATE " + QuoteName(table) + " SET " + sets + " WHERE " + where;
    if (connection->RunEngineSql(sql, values, "Update on " + source) == 0)
      throw DatabaseError(kErrNotUpdatable,
                          "the row to update was not found by its key (changed or deleted "
                          "meanwhile): " + source);
  }
  edit = adEditNone;
  original.clear();
}

void RecordsetState::Cancel() {
  if (edit == adEditAdd) {
    // The added row is always the last one of the rows and of the view.
    data->PopRow();
    base.erase(std::remove(base.begin(), base.end(), edit_row), base.end());
    view.erase(std::remove(view.begin(), view.end(), edit_row), view.end());
    pos = view.empty() ? 0 : static_cast<long>(view.size()) - 1;
  } else if (edit == adEditInProgress) {
    data->SetRow(edit_row, original);
  }
  edit = adEditNone;
  original.clear();
}

void RecordsetState::Moved() {
  chunk_row = -1;
  const size_t ahead = static_cast<size_t>(pos) + 1;
  if (fields_read == 0 || pos < 0 || ahead >= view.size()) return;
  // A walk in stored order (most listings, and a large sorted one once it
  // is laid out anew) reads each column forward through memory, which the
  // processor follows by itself: asking for each field's cell again only
  // cost the move a few instructions a field.
  if (view[ahead] == view[pos] + 1) return;
  const ColumnStore& cells = data->cells();
  for (uint64_t f = fields_read; f != 0; f &= f - 1) {
    const auto column = static_cast<size_t>(std::countr_zero(f));
    if (column < cells.ColumnCount()) cells.Prefetch(view[ahead], column);
  }
}

// ---- Recordset ------------------------------------------------------------

Recordset::Recordset() : s_(std::make_shared<RecordsetState>()) {}

void Recordset::Open(const std::string& source, const Connection& connection, int cursor_type,
                     int lock_type, int options) {
  if (s_->open) throw DatabaseError(kErrNotAllowed, "Operation is not allowed when the object is open.");
  if (connection.State() != adStateOpen)
    throw DatabaseError(kErrObjectClosed, "the connection is not open, for: " + source);
  std::string_view trimmed = source;
  while (!trimmed.empty() && std::isspace(static_cast<unsigned char>(trimmed.back()))) trimmed.remove_suffix(1);
  while (!trimmed.empty() && std::isspace(static_cast<unsigned char>(trimmed.front()))) trimmed.remove_prefix(1);
  std::string statement = (options == adCmdTable || IsBareName(trimmed))
                              ? "SELECT * FROM " + std::string(trimmed)
                              : source;
  // Run first, so that a failure leaves this recordset closed and as it was.
  std::shared_ptr<RowSet> data = connection.Query(statement, s_->keep);
  RecordsetState& s = *s_;
  s.connection = connection;
  s.source = source;
  s.statement = std::move(statement);
  // Unspecified is forward-only, the connection's default cursor; a client
  // cursor location makes every cursor static.
  bool forward = cursor_type == adOpenForwardOnly || cursor_type == adOpenUnspecified;
  s.cursor_type = forward && connection.CursorLocation() != adUseClient ? adOpenForwardOnly : adOpenStatic;
  s.lock_type = lock_type;
  s.options = options;
  s.data = std::move(data);
  s.base.resize(s.data->RowCount());
  for (size_t i = 0; i < s.base.size(); ++i) s.base[i] = i;
  s.open = true;
  s.Rebuild();
}

void Recordset::KeepFields(std::vector<std::string> names) {
  if (s_->open) throw DatabaseError(kErrNotAllowed, "Operation is not allowed when the object is open.");
  s_->keep = FieldSelection(std::move(names));
}

void Recordset::Open() {
  if (s_->open) throw DatabaseError(kErrNotAllowed, "Operation is not allowed when the object is open.");
  if (s_->pending_fields.empty())
    throw DatabaseError(kErrNotAllowed, "a fabricated recordset needs fields: Fields.Append them before Open");
  s_->data = std::make_shared<RowSet>();
  s_->data->fields = std::move(s_->pending_fields);
  s_->pending_fields.clear();
  s_->fabricated = true;
  s_->cursor_type = adOpenStatic;
  s_->lock_type = adLockOptimistic;
  s_->open = true;
  s_->base.clear();
  s_->Rebuild();
}

void Recordset::Close() {
  if (!s_->open) throw DatabaseError(kErrObjectClosed, "Operation is not allowed when the object is closed.");
  auto fields = s_->fabricated ? s_->data->fields : std::vector<FieldInfo>{};
  *s_ = RecordsetState();
  // A closed fabricated recordset keeps its field list, so it can open again.
  s_->pending_fields = std::move(fields);
}

int Recordset::State() const { return s_->open ? adStateOpen : adStateClosed; }

bool Recordset::Eof() const {
  s_->Ready();
  return s_->view.empty() || s_->pos >= static_cast<long>(s_->view.size());
}

bool Recordset::Bof() const {
  s_->Ready();
  return s_->view.empty() || s_->pos < 0;
}

void Recordset::MoveNext() {
  s_->Ready();
  if (s_->pos >= static_cast<long>(s_->view.size())) NoCurrentRecord();
  s_->Commit();
  ++s_->pos;
  s_->Moved();
}

void Recordset::MovePrevious() {
  s_->Ready();
  if (s_->cursor_type == adOpenForwardOnly)
    throw DatabaseError(kErrNotAllowed, "Rowset does not support fetching backward: " + s_->source);
  if (s_->pos < 0) NoCurrentRecord();
  s_->Commit();
  --s_->pos;
  s_->Moved();
}

void Recordset::MoveFirst() {
  s_->Ready();
  if (s_->view.empty()) NoCurrentRecord();
  s_->Commit();
  s_->pos = 0;
  s_->Moved();
}

void Recordset::MoveLast() {
  s_->Ready();
  if (s_->cursor_type == adOpenForwardOnly)
    throw DatabaseError(kErrNotAllowed, "Rowset does not support fetching backward: " + s_->source);
  if (s_->view.empty()) NoCurrentRecord();
  s_->Commit();
  s_->pos = static_cast<long>(s_->view.size()) - 1;
  s_->Moved();
}

void Recordset::Move(long n) {
  s_->Ready();
  if (n < 0 && s_->cursor_type == adOpenForwardOnly)
    throw DatabaseError(kErrNotAllowed, "Rowset does not support fetching backward: " + s_->source);
  if (n != 0 && !s_->AtRow()) NoCurrentRecord();
  s_->Commit();
  long size = static_cast<long>(s_->view.size());
  s_->pos = std::clamp(s_->pos + n, -1L, size);
  s_->Moved();
}

long Recordset::RecordCount() const {
  s_->Ready();
  if (s_->cursor_type == adOpenForwardOnly) return -1;
  return static_cast<long>(s_->view.size());
}

long Recordset::AbsolutePosition() const {
  s_->Ready();
  if (s_->cursor_type == adOpenForwardOnly) return adPosUnknown;
  if (s_->view.empty() || s_->pos < 0) return adPosBOF;
  if (s_->pos >= static_cast<long>(s_->view.size())) return adPosEOF;
  return s_->pos + 1;
}

void Recordset::AbsolutePosition(long position) {
  s_->Ready();
  if (position < 1 || position > static_cast<long>(s_->view.size()))
    throw DatabaseError(kErrNotAllowed, "AbsolutePosition " + std::to_string(position) +
                                            " is outside the recordset's rows");
  s_->Commit();
  s_->pos = position - 1;
  s_->Moved();
}

FieldsCollection Recordset::Fields() const { return FieldsCollection(s_); }
// By name the handle is made at once: a report reads rs["Value"] for every
// value of every row, and a collection made on the way cost two more
// counts of the shared state.
Field Recordset::Fields(std::string_view name) const {
  if (!s_->data) return FieldsCollection(s_).Item(name);
  return Field(s_, s_->FieldIndex(name));
}
Field Recordset::Fields(long index) const { return FieldsCollection(s_).Item(index); }

void Recordset::Find(const std::string& criteria, long skip, int direction, int start) {
  s_->Ready();
  Criteria c = Criteria::Parse(criteria);
  if (c.ComparisonCount() != 1)
    throw DatabaseError(kErrNotAllowed, "Find takes exactly one comparison: " + criteria);
  c.Bind([&](std::string_view name) { return s_->ComparedField(name, "Find"); });
  if (direction == adSearchBackward && s_->cursor_type == adOpenForwardOnly)
    throw DatabaseError(kErrNotAllowed, "Rowset does not support fetching backward: " + s_->source);
  s_->Commit();
  long size = static_cast<long>(s_->view.size());
  long p = s_->pos;
  if (start == adBookmarkFirst) p = 0;
  if (start == adBookmarkLast) p = size - 1;
  long step = direction == adSearchBackward ? -1 : 1;
  p += step * skip;
  if (direction != adSearchBackward && p < 0) p = 0;
  if (direction == adSearchBackward && p >= size) p = size - 1;
  for (; p >= 0 && p < size; p += step)
    if (RowMatches(c, *s_->data, s_->view[p])) break;
  s_->pos = direction == adSearchBackward ? std::max(p, -1L) : std::min(p, size);
  s_->Moved();
}

void Recordset::Filter(const Variant& criteria) {
  s_->Ready();
  s_->Commit();
  std::optional<Criteria> compiled;
  bool none = criteria.IsEmpty() || criteria.IsNull() ||
              (criteria.IsString() && criteria.AsString().find_first_not_of(" \t") == std::string::npos);
  if (!none && criteria.IsNumeric()) {
    if (CDbl(criteria) != 0)
      throw DatabaseError(kErrNotAllowed, "a numeric filter other than 0 is not supported: " +
                                              CStr(criteria));
    none = true;
  }
  if (!none) {
    compiled = Criteria::Parse(CStr(criteria));
    compiled->Bind([&](std::string_view name) { return s_->ComparedField(name, "Filter"); });
  }
  s_->criteria = std::move(compiled);
  s_->filter = none ? Variant(std::string()) : criteria;
  s_->Rebuild();
}

const Variant& Recordset::Filter() const { return s_->filter; }

void Recordset::Sort(const std::string& keys) {
  s_->Ready();
  s_->Commit();
  std::string old = s_->sort;
  s_->sort = keys;
  try {
    s_->Rebuild();
  } catch (...) {
    s_->sort = old;
    s_->Rebuild();
    throw;
  }
}

const std::string& Recordset::Sort() const { return s_->sort; }

void Recordset::Requery() {
  s_->Ready();
  if (s_->fabricated || !s_->connection || s_->parent_chapter >= 0)
    throw DatabaseError(kErrNotAllowed, "Requery needs a recordset opened from a statement");
  s_->Commit();
  s_->data = s_->connection->Query(s_->statement, s_->keep);
  s_->base.resize(s_->data->RowCount());
  for (size_t i = 0; i < s_->base.size(); ++i) s_->base[i] = i;
  s_->chapter_states.clear();
  if (s_->criteria) s_->criteria->Bind([&](std::string_view name) { return s_->ComparedField(name, "Filter"); });
  s_->Rebuild();
}

const std::string& Recordset::Source() const { return s_->source; }

void Recordset::AddNew() {
  s_->Ready();
  if (!s_->fabricated && (s_->lock_type == adLockReadOnly || s_->lock_type == adLockUnspecified))
    NotUpdatable(s_->source);
  if (s_->parent_chapter >= 0) NotUpdatable(s_->source);
  s_->CheckHoldsAll();
  s_->Commit();
  size_t r = s_->data->AppendRow();
  s_->base.push_back(r);
  s_->view.push_back(r);
  s_->pos = static_cast<long>(s_->view.size()) - 1;
  s_->edit = adEditAdd;
  s_->edit_row = r;
  s_->Moved();
}

void Recordset::Update() {
  s_->Ready();
  s_->Commit();
}

void Recordset::CancelUpdate() {
  s_->Ready();
  s_->Cancel();
}

int Recordset::EditMode() const { return s_->edit; }

}  // namespace orv::db
