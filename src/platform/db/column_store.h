// The values of a result set, held by column and sized by the data.
//
// A cell is one kind byte and eight bytes of payload: a whole number, the
// bits of a float or a date serial, the raw count of a money amount, or, for
// text and blobs, the offset of its bytes in one arena shared by the whole
// store (a length prefix, then the bytes). A million-row listing of ten
// columns takes about 90 MB plus its text, where a Variant per cell took
// four to five times that and an allocation per row; a value becomes a
// Variant only when a report reads it.
//
// The kind of each cell is kept, not the column's, because a column may mix
// kinds: a money column yields its text when the stored value is no amount,
// and a fabricated recordset's fields take whatever they are given.
#pragma once

#include <cstdint>

#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"

namespace orv::db {

class ColumnStore {
 public:
  // What a cell holds; one byte.
  enum class Kind : uint8_t { Empty, Null, Long, LongLong, Double, Currency, Date, String, Boolean, Binary };

  size_t RowCount() const { return rows_; }
  size_t ColumnCount() const { return columns_.size(); }

  // Adds a column whose cells in the rows already held are Empty.
  void AddColumn();
  // Adds a row of Null cells; returns its index.
  size_t AppendRow();
  // Adds a row holding cell `first_column` onwards of row `row` of `from`
  // (which may be this store): a lookup serves its rows without its key.
  size_t AppendRowFrom(const ColumnStore& from, size_t row, size_t first_column);
  // Adds a row cell by cell, for reading a result without first filling
  // it with Nulls: PushCell, PushBytes or PushValue add the next cell of a
  // column (every column once), then EndRow counts the row and returns its
  // index. Until EndRow the row is not held.
  void PushCell(size_t column, Kind kind, uint64_t bits) { columns_[column].Push(kind, bits); }
  // A short text the column took a little before (a fee code, its
  // description, a provider's name, repeated line after line) shares that
  // one's bytes, once the result has grown past a few hundred rows.
  void PushBytes(size_t column, Kind kind, std::string_view bytes);
  // Lets go of what PushBytes keeps to find texts again, once a result is
  // read; pushing may go on later, finding the texts it pushes from then on.
  void DonePushing();
  void PushValue(size_t column, const Variant& value);
  size_t EndRow() { return rows_++; }
  // Drops the last row.
  void PopRow();
  void Reserve(size_t rows);

  Variant Get(size_t row, size_t column) const { return ValueOf(CellAt(row, column)); }
  void Set(size_t row, size_t column, const Variant& value);
  // Sets a cell from its kind and payload (as BitsAt reads it), or a
  // String or Binary cell from its bytes, without a Variant.
  void SetCell(size_t row, size_t column, Kind kind, uint64_t bits) { Assign(columns_[column], row, kind, bits); }
  void SetBytes(size_t row, size_t column, Kind kind, std::string_view bytes) {
    Assign(columns_[column], row, kind, AddBytes(bytes));
  }

  // A cell's kind and payload, read from its chunk together: a report
  // reads a value of the current row this way on every read, and each of
  // KindAt and BitsAt found the chunk again.
  struct Cell {
    Kind kind;
    uint64_t bits;
  };
  Cell CellAt(size_t row, size_t column) const {
    const Chunk& chunk = columns_[column].chunks[row >> kChunkShift];
    const size_t i = row & (kChunkRows - 1);
    return {chunk.mixed ? chunk.kinds[i] : chunk.only, chunk.bits[i]};
  }
  // The value of a cell read by CellAt.
  Variant ValueOf(Cell cell) const;
  // The bytes of a String or Binary cell from its payload. Most texts are
  // shorter than 128 bytes and take one byte of length, read here in line.
  std::string_view BytesOf(uint64_t at) const {
    const char* entry = arena_[at >> 32].data() + static_cast<uint32_t>(at);
    const auto length = static_cast<unsigned char>(*entry);
    if (length < 0x80) return {entry + 1, length};
    return EntryAt(at);
  }

  // Reading without making a Variant, for the loops that visit every row
  // (Sort, Filter's index, SHAPE's relating).
  Kind KindAt(size_t row, size_t column) const { return columns_[column].kind(row); }
  VarType TypeAt(size_t row, size_t column) const;
  // The bytes of a String or Binary cell; "" for any other kind.
  std::string_view BytesAt(size_t row, size_t column) const;
  // A number cell (Long, LongLong, Double, Currency, Boolean) as a double,
  // as CDbl reads it.
  double NumberAt(size_t row, size_t column) const;
  // The eight payload bytes of a cell, as its kind reads them: a whole
  // number, the bits of a double or date serial, money's raw count, a
  // flag's 0 or 1, an arena place.
  uint64_t BitsAt(size_t row, size_t column) const { return columns_[column].bits(row); }
  // A Long or LongLong cell's whole number; 0 for any other kind.
  int64_t IntegerAt(size_t row, size_t column) const;
  // Three-way order of two cells of one column, as CompareValues orders
  // their values; cells of the usual kinds are compared in place.
  int Compare(size_t a, size_t b, size_t column) const;

  // Asks the processor to bring a cell into its cache ahead of its read.
  void Prefetch(size_t row, size_t column) const {
    const Chunk& chunk = columns_[column].chunks[row >> kChunkShift];
    __builtin_prefetch(chunk.bits.data() + (row & (kChunkRows - 1)));
    if (chunk.mixed) __builtin_prefetch(chunk.kinds.data() + (row & (kChunkRows - 1)));
  }

  // Bytes held for values: cells and the text arena (capacity aside).
  size_t MemoryBytes() const;

  // The rows of `from` in the order `order` (each of its rows once: row i
  // of the result is row order[i] of `from`), text and blobs copied into a
  // new arena in that order too. `from` is taken whole and gives up each
  // column's cells once they are copied, so that the copy holds at most
  // one column more than the store did, and its text.
  static ColumnStore Reordered(ColumnStore from, const std::vector<uint32_t>& order);

 private:
  // Rows are held in chunks of kChunkRows: a store that grows never copies
  // the cells it holds (a vector grown by doubling briefly held its old and
  // new arrays, 1.5 times the cells, at the end of every large read) and
  // overshoots by at most one chunk a column. The first chunk grows as a
  // vector does, so that a lookup of one row keeps a few bytes, not a chunk.
  static constexpr size_t kChunkShift = 12;
  static constexpr size_t kChunkRows = size_t{1} << kChunkShift;
  //
  // A chunk whose cells are all of one kind (most are: an ID, a date
  // that is never Null, a name) holds that kind once and no byte per cell.
  // A report reading a sorted listing jumps from row to row, and each cell
  // it reads then cost a cache miss for its kind besides one for its
  // payload; the byte per cell was also a ninth of the store.
  struct Chunk {
    std::vector<Kind> kinds;  // one per cell once `mixed`
    std::vector<uint64_t> bits;
    Kind only = Kind::Empty;  // the kind of every cell while not `mixed`
    bool mixed = false;
    Kind kind(size_t i) const { return mixed ? kinds[i] : only; }
    void SetKind(size_t i, Kind k);
    // Inline, as a large result pushes millions of cells.
    void Push(Kind k, uint64_t b) {
      if (bits.empty()) only = k;
      bits.push_back(b);
      if (mixed)
        kinds.push_back(k);
      else if (k != only)
        SetKind(bits.size() - 1, k);
    }
  };
  // A short text pushed into a column, found again by a hash of its bytes.
  struct RecentText {
    uint32_t tag = 0;  // the upper half of the hash
    uint64_t at = 0;   // its arena entry; 0 for none
  };
  struct Column {
    std::vector<Chunk> chunks;
    // The texts of PushBytes, by the lower bits of their hash; empty until
    // the store holds enough rows, and for good once the column's texts
    // turn out to repeat too seldom to pay for the looking.
    std::vector<RecentText> recent;
    uint32_t probes = 0, found = 0;
    bool shares = true;
    Kind kind(size_t row) const { return chunks[row >> kChunkShift].kind(row & (kChunkRows - 1)); }
    void SetKind(size_t row, Kind k) { chunks[row >> kChunkShift].SetKind(row & (kChunkRows - 1), k); }
    uint64_t& bits(size_t row) { return chunks[row >> kChunkShift].bits[row & (kChunkRows - 1)]; }
    uint64_t bits(size_t row) const { return chunks[row >> kChunkShift].bits[row & (kChunkRows - 1)]; }
    void Push(Kind k, uint64_t b) {
      if (chunks.empty() || chunks.back().bits.size() == kChunkRows) AddChunk();
      chunks.back().Push(k, b);
    }
    void AddChunk();
    void Pop();
  };
  uint64_t AddBytes(std::string_view bytes);
  // The arena entry at `at`: its bytes, and the bytes it takes with its
  // length prefix.
  std::string_view EntryAt(uint64_t at, size_t* taken = nullptr) const;
  void Assign(Column& c, size_t row, Kind kind, uint64_t bits);
  void CompactArena();

  std::vector<Column> columns_;
  size_t rows_ = 0;
  // Text and blob bytes, each after its length as a base-128 varint, in
  // blocks of kBlockBytes that are never moved once full (a text longer
  // than a block has one of its own); a cell holds the block in its upper
  // 32 bits and the place in it in the lower. The first block grows as a
  // string does and starts with the empty text, at 0, which every "" shares.
  // Other cells may share an entry too (Reordered gives a run of one text
  // one entry, PushBytes a text it took before); a write counts the entry
  // it replaces as garbage all the same, which at worst compacts the arena
  // early.
  static constexpr size_t kBlockBytes = size_t{1} << 16;
  std::vector<std::string> arena_ = {std::string(1, '\0')};
  size_t arena_bytes_ = 1;
  // Arena bytes no cell points at any more (text overwritten by a write);
  // reclaimed once they are the greater part.
  size_t garbage_ = 0;
};

}  // namespace orv::db
