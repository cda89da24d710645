#include "platform/db/column_store.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "common/collation.h"
#include "platform/db/value_compare.h"

namespace orv::db {

namespace {

using Kind = ColumnStore::Kind;

bool HoldsBytes(Kind k) { return k == Kind::String || k == Kind::Binary; }

// The length prefix of an arena entry: its value and the bytes it takes.
size_t ReadLength(const std::string& block, size_t at, size_t* prefix) {
  size_t n = 0;
  int shift = 0;
  size_t i = at;
  for (;;) {
    auto byte = static_cast<unsigned char>(block[i++]);
    n |= static_cast<size_t>(byte & 0x7f) << shift;
    if (!(byte & 0x80)) break;
    shift += 7;
  }
  *prefix = i - at;
  return n;
}

// PushBytes looks for texts of up to kShortText bytes among the last
// texts of the column, two for each value of the lower bits of their hash
// (kRecentSlots in all: a practice's few hundred fee codes fit, and two
// that share their bits do not push each other out at every line), from
// row kRowsBeforeSharing on: a lookup of a row or two takes no table.
// After kProbesToJudge texts, a column that found fewer than one in
// kFoundAtLeast of them again stops looking (names, notes, numbers as
// text).
constexpr size_t kShortText = 64;
constexpr size_t kRecentSlots = 1024;
constexpr size_t kRowsBeforeSharing = 256;
constexpr uint32_t kProbesToJudge = 4096;
constexpr uint32_t kFoundAtLeast = 8;

// A hash of a short text, eight bytes at a time.
uint64_t HashOf(std::string_view bytes) {
  uint64_t h = bytes.size() * 0x9E3779B97F4A7C15ull;
  auto mix = [&h](uint64_t word) {
    h = (h ^ word) * 0xff51afd7ed558ccdull;
    h ^= h >> 32;
  };
  size_t i = 0;
  for (; i + 8 <= bytes.size(); i += 8) {
    uint64_t word;
    std::memcpy(&word, bytes.data() + i, 8);
    mix(word);
  }
  if (i < bytes.size()) {
    uint64_t word = 0;
    std::memcpy(&word, bytes.data() + i, bytes.size() - i);
    mix(word);
  }
  return h;
}

template <typename T>
int Sign(T a, T b) {
  return a < b ? -1 : (b < a ? 1 : 0);
}

}  // namespace

void ColumnStore::Chunk::SetKind(size_t i, Kind k) {
  if (!mixed) {
    if (k == only) return;
    // The first cell of another kind: every cell takes its byte.
    kinds.reserve(bits.capacity());
    kinds.assign(bits.size(), only);
    mixed = true;
  }
  kinds[i] = k;
}

void ColumnStore::Column::AddChunk() {
  chunks.emplace_back();
  // Past the first chunk every chunk is taken whole at once.
  if (chunks.size() > 1) chunks.back().bits.reserve(kChunkRows);
}

void ColumnStore::Column::Pop() {
  Chunk& last = chunks.back();
  last.bits.pop_back();
  if (last.mixed) last.kinds.pop_back();
  if (last.bits.empty()) chunks.pop_back();
}

void ColumnStore::AddColumn() {
  Column c;
  for (size_t r = 0; r < rows_; ++r) c.Push(Kind::Empty, 0);
  columns_.push_back(std::move(c));
}

size_t ColumnStore::AppendRow() {
  for (Column& c : columns_) c.Push(Kind::Null, 0);
  return rows_++;
}

size_t ColumnStore::AppendRowFrom(const ColumnStore& from, size_t row, size_t first_column) {
  size_t r = AppendRow();
  for (size_t c = 0; c < columns_.size() && first_column + c < from.columns_.size(); ++c) {
    Kind k = from.KindAt(row, first_column + c);
    uint64_t bits = from.columns_[first_column + c].bits(row);
    if (HoldsBytes(k)) {
      // Copied first: adding to this arena may move the bytes of its
      // growing block when `from` is this store.
      std::string bytes(from.BytesAt(row, first_column + c));
      bits = AddBytes(bytes);
    }
    columns_[c].SetKind(r, k);
    columns_[c].bits(r) = bits;
  }
  return r;
}

void ColumnStore::PopRow() {
  if (rows_ == 0) return;
  --rows_;
  for (Column& c : columns_) {
    if (HoldsBytes(c.kind(rows_)) && c.bits(rows_) != 0) {
      size_t taken = 0;
      EntryAt(c.bits(rows_), &taken);
      garbage_ += taken;
    }
    c.Pop();
  }
}

void ColumnStore::Reserve(size_t rows) {
  // Only the first chunk grows by reallocation; the others are whole.
  for (Column& c : columns_) {
    if (c.chunks.empty()) c.chunks.emplace_back();
    c.chunks.front().bits.reserve(std::min(rows, kChunkRows));
    c.chunks.reserve((rows + kChunkRows - 1) >> kChunkShift);
  }
}

uint64_t ColumnStore::AddBytes(std::string_view bytes) {
  if (bytes.empty()) return 0;
  char prefix[10];
  size_t p = 0;
  for (size_t n = bytes.size();; n >>= 7) {
    if (n < 0x80) {
      prefix[p++] = static_cast<char>(n);
      break;
    }
    prefix[p++] = static_cast<char>((n & 0x7f) | 0x80);
  }
  const size_t need = p + bytes.size();
  if (arena_.back().size() + need > std::max(kBlockBytes, arena_.back().capacity())) {
    // A new block, taken whole, so that it never moves; a larger entry
    // gets a block of its own size.
    arena_.emplace_back();
    arena_.back().reserve(std::max(kBlockBytes, need));
  }
  std::string& block = arena_.back();
  uint64_t at = (static_cast<uint64_t>(arena_.size() - 1) << 32) | block.size();
  block.append(prefix, p);
  block.append(bytes);
  arena_bytes_ += need;
  return at;
}

void ColumnStore::PushBytes(size_t column, Kind kind, std::string_view bytes) {
  Column& c = columns_[column];
  if (kind != Kind::String || bytes.empty() || bytes.size() > kShortText || !c.shares ||
      (c.recent.empty() && rows_ < kRowsBeforeSharing)) {
    c.Push(kind, AddBytes(bytes));
    return;
  }
  if (c.recent.empty()) c.recent.resize(kRecentSlots);
  const uint64_t h = HashOf(bytes);
  RecentText* pair = &c.recent[(h & (kRecentSlots / 2 - 1)) * 2];
  const auto tag = static_cast<uint32_t>(h >> 32);
  ++c.probes;
  // The tag spares reading the arena entry of a text that differs.
  for (int i = 0; i < 2; ++i) {
    if (pair[i].at != 0 && pair[i].tag == tag && BytesOf(pair[i].at) == bytes) {
      ++c.found;
      c.Push(kind, pair[i].at);
      return;
    }
  }
  // The newest text first; the one it displaces second.
  pair[1] = pair[0];
  pair[0] = {tag, AddBytes(bytes)};
  c.Push(kind, pair[0].at);
  if (c.probes == kProbesToJudge && c.found * kFoundAtLeast < c.probes) {
    c.shares = false;
    std::vector<RecentText>().swap(c.recent);
  }
}

void ColumnStore::DonePushing() {
  for (Column& c : columns_) std::vector<RecentText>().swap(c.recent);
}

std::string_view ColumnStore::EntryAt(uint64_t at, size_t* taken) const {
  const std::string& block = arena_[at >> 32];
  size_t place = static_cast<uint32_t>(at);
  size_t prefix = 0;
  size_t n = ReadLength(block, place, &prefix);
  if (taken) *taken = prefix + n;
  return std::string_view(block).substr(place + prefix, n);
}

std::string_view ColumnStore::BytesAt(size_t row, size_t column) const {
  const Cell cell = CellAt(row, column);
  if (!HoldsBytes(cell.kind)) return {};
  return BytesOf(cell.bits);
}

void ColumnStore::Assign(Column& c, size_t row, Kind kind, uint64_t bits) {
  uint64_t& b = c.bits(row);
  if (HoldsBytes(c.kind(row)) && b != 0) {
    size_t taken = 0;
    EntryAt(b, &taken);
    garbage_ += taken;
  }
  c.SetKind(row, kind);
  b = bits;
  // A fabricated recordset whose text fields are rewritten row after row
  // would otherwise grow its arena without bound.
  if (garbage_ > (size_t{1} << 20) && garbage_ * 2 > arena_bytes_) CompactArena();
}

void ColumnStore::CompactArena() {
  std::vector<std::string> old = std::move(arena_);
  arena_ = {std::string(1, '\0')};
  arena_bytes_ = 1;
  for (Column& c : columns_) {
    // The texts PushBytes remembers are at their old places.
    std::fill(c.recent.begin(), c.recent.end(), RecentText{});
    for (size_t r = 0; r < rows_; ++r) {
      uint64_t& b = c.bits(r);
      if (!HoldsBytes(c.kind(r)) || b == 0) continue;
      const std::string& block = old[b >> 32];
      size_t place = static_cast<uint32_t>(b), prefix = 0;
      size_t n = ReadLength(block, place, &prefix);
      b = AddBytes(std::string_view(block).substr(place + prefix, n));
    }
  }
  garbage_ = 0;
}

void ColumnStore::Set(size_t row, size_t column, const Variant& value) {
  Column& c = columns_[column];
  const auto& s = value.storage();
  switch (s.index()) {
    case 0: return Assign(c, row, Kind::Empty, 0);
    case 1: return Assign(c, row, Kind::Null, 0);
    case 2: return Assign(c, row, Kind::Long, static_cast<uint64_t>(static_cast<int64_t>(std::get<int32_t>(s))));
    case 3: return Assign(c, row, Kind::LongLong, static_cast<uint64_t>(std::get<int64_t>(s)));
    case 4: return Assign(c, row, Kind::Double, std::bit_cast<uint64_t>(std::get<double>(s)));
    case 5: return Assign(c, row, Kind::Currency, static_cast<uint64_t>(std::get<Currency>(s).raw()));
    case 6: return Assign(c, row, Kind::Date, std::bit_cast<uint64_t>(std::get<DateTime>(s).serial()));
    case 7: {
      uint64_t at = AddBytes(std::get<std::string>(s));
      return Assign(c, row, Kind::String, at);
    }
    case 8: return Assign(c, row, Kind::Boolean, std::get<bool>(s) ? 1 : 0);
    default: {
      const Bytes& b = std::get<Bytes>(s);
      uint64_t at = AddBytes(std::string_view(reinterpret_cast<const char*>(b.data()), b.size()));
      return Assign(c, row, Kind::Binary, at);
    }
  }
}

void ColumnStore::PushValue(size_t column, const Variant& value) {
  columns_[column].Push(Kind::Null, 0);
  Set(rows_, column, value);
}

Variant ColumnStore::ValueOf(Cell cell) const {
  const uint64_t bits = cell.bits;
  switch (cell.kind) {
    case Kind::Empty: return Variant();
    case Kind::Null: return Variant::Null();
    case Kind::Long: return Variant(static_cast<int>(static_cast<int64_t>(bits)));
    case Kind::LongLong: return Variant::Int64(static_cast<int64_t>(bits));
    case Kind::Double: return Variant(std::bit_cast<double>(bits));
    case Kind::Currency: return Variant(Currency::FromRaw(static_cast<int64_t>(bits)));
    case Kind::Date: return Variant(DateTime(std::bit_cast<double>(bits)));
    case Kind::String: return Variant(BytesOf(bits));
    case Kind::Boolean: return Variant(bits != 0);
    case Kind::Binary: {
      const std::string_view b = BytesOf(bits);
      return Variant(Bytes(b.begin(), b.end()));
    }
  }
  return Variant();
}

VarType ColumnStore::TypeAt(size_t row, size_t column) const {
  static constexpr VarType kTypes[] = {VarType::Empty,    VarType::Null, VarType::Long,   VarType::LongLong,
                                       VarType::Double,   VarType::Currency, VarType::Date, VarType::String,
                                       VarType::Boolean,  VarType::Binary};
  return kTypes[static_cast<int>(KindAt(row, column))];
}

double ColumnStore::NumberAt(size_t row, size_t column) const {
  uint64_t bits = columns_[column].bits(row);
  switch (KindAt(row, column)) {
    case Kind::Long:
    case Kind::LongLong: return static_cast<double>(static_cast<int64_t>(bits));
    case Kind::Double: return std::bit_cast<double>(bits);
    case Kind::Currency: return Currency::FromRaw(static_cast<int64_t>(bits)).ToDouble();
    case Kind::Boolean: return bits ? -1 : 0;
    default: return CDbl(Get(row, column));
  }
}

int64_t ColumnStore::IntegerAt(size_t row, size_t column) const {
  Kind k = KindAt(row, column);
  return k == Kind::Long || k == Kind::LongLong ? static_cast<int64_t>(columns_[column].bits(row)) : 0;
}

int ColumnStore::Compare(size_t a, size_t b, size_t column) const {
  const Column& c = columns_[column];
  Kind ka = c.kind(a), kb = c.kind(b);
  bool none_a = ka == Kind::Empty || ka == Kind::Null, none_b = kb == Kind::Empty || kb == Kind::Null;
  // Null and Empty first, as CompareValues orders them.
  if (none_a || none_b) return Sign(none_a ? 0 : 1, none_b ? 0 : 1);
  if (ka == kb) {
    uint64_t x = c.bits(a), y = c.bits(b);
    switch (ka) {
      case Kind::Long:
      case Kind::LongLong:
      case Kind::Currency: return Sign(static_cast<int64_t>(x), static_cast<int64_t>(y));
      case Kind::Double:
      case Kind::Date: return Sign(std::bit_cast<double>(x), std::bit_cast<double>(y));
      case Kind::String: return collation::Compare(BytesAt(a, column), BytesAt(b, column));
      default: break;
    }
  }
  return CompareValues(Get(a, column), Get(b, column));
}

ColumnStore ColumnStore::Reordered(ColumnStore from, const std::vector<uint32_t>& order) {
  ColumnStore to;
  to.rows_ = order.size();
  to.columns_.resize(from.columns_.size());
  for (size_t c = 0; c < from.columns_.size(); ++c) {
    Column& out = to.columns_[c];
    const Column& in = from.columns_[c];
    // A column of nothing but Empty (a SHAPE's chapter field) or nothing
    // but Null reads the same in any order; its payloads are all 0.
    const bool uniform =
        !in.chunks.empty() && std::all_of(in.chunks.begin(), in.chunks.end(), [&](const Chunk& chunk) {
          return !chunk.mixed && chunk.only == in.chunks.front().only &&
                 (chunk.only == Kind::Empty || chunk.only == Kind::Null);
        });
    if (uniform) {
      const Kind k = in.chunks.front().only;
      for (size_t i = 0; i < order.size(); ++i) out.Push(k, 0);
    } else if (!in.chunks.empty()) {  // a field left unread has no cells, and keeps none
      // A text equal to the one above shares its entry: a column sorted
      // on (a provider's name) is long runs of one text.
      std::string_view last;
      uint64_t last_at = 0;
      // The rows are read out of order, each a cache miss: the cell of the
      // row kCellAhead on and the text of the row kTextAhead on (whose cell
      // has come by then) are asked for ahead, so that the misses overlap.
      constexpr size_t kCellAhead = 32, kTextAhead = 16;
      const size_t n = order.size();
      for (size_t i = 0; i < n; ++i) {
        if (i + kCellAhead < n) from.Prefetch(order[i + kCellAhead], c);
        if (i + kTextAhead < n) {
          const uint32_t ahead = order[i + kTextAhead];
          if (HoldsBytes(in.kind(ahead))) {
            const uint64_t at = in.bits(ahead);
            __builtin_prefetch(from.arena_[at >> 32].data() + static_cast<uint32_t>(at));
          }
        }
        const uint32_t row = order[i];
        const Kind k = in.kind(row);
        uint64_t bits = in.bits(row);
        if (HoldsBytes(k) && bits != 0) {
          const std::string_view bytes = from.EntryAt(bits);
          if (last_at == 0 || bytes != last) {
            last = bytes;
            last_at = to.AddBytes(bytes);
          }
          bits = last_at;
        }
        out.Push(k, bits);
      }
    }
    from.columns_[c] = Column();
  }
  return to;
}

size_t ColumnStore::MemoryBytes() const {
  size_t bytes = arena_bytes_;
  for (const Column& c : columns_)
    for (const Chunk& chunk : c.chunks) bytes += chunk.bits.size() * sizeof(uint64_t) + chunk.kinds.size() * sizeof(Kind);
  return bytes;
}

}  // namespace orv::db
