// The rows a recordset reads: field descriptions and values, shared by every
// recordset handle, clone and chapter that looks at them.
#pragma once

#include <cstdint>

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "common/variant.h"
#include "platform/db/column_store.h"
#include "platform/db/engine.h"
#include "platform/db/field_type.h"
#include "platform/sql/translate.h"

namespace orv::db {

struct RowSet;

struct FieldInfo {
  std::string name;
  FieldType type = adVariant;
  sql::ValueKind kind = sql::ValueKind::Unknown;
  int defined_size = 0;
  int chapter = -1;  // index into RowSet::chapters for a chapter field
  // False for a field whose values were left unread (FieldSelection): it
  // keeps its name and type, and its cells hold nothing.
  bool held = true;
};

// The fields whose values a query holds, named as a report reads them:
// "Value" for a field of the statement itself, "Lines.Amount" for a field
// of its SHAPE chapter Lines (and "Lines.Taxes.Rate" one level further).
// A level of the statement of which no field is named holds every field,
// so a list only ever narrows what it speaks of. The fields a SHAPE
// relates by are held on both sides whatever the list says.
class FieldSelection {
 public:
  // Holds every field.
  FieldSelection() = default;
  explicit FieldSelection(std::vector<std::string> names);

  // Whether every field of this level is held.
  bool All() const { return here_.empty(); }
  bool Holds(std::string_view field) const;
  // Holds `field` as well (a relate field); nothing when All.
  void Add(std::string_view field);
  // The selection of the chapter named `chapter` of this level.
  FieldSelection Chapter(std::string_view chapter) const;

 private:
  std::vector<std::string> here_;   // this level's fields, brackets off
  std::vector<std::string> below_;  // "Chapter.Field" and deeper
};

// The rows of a SHAPE child grouped by their relate key, so that the rows
// of one parent row are found without a scan, in the child's own order.
//
// The usual relation is one whole-number column (an ID to a PatientID):
// its keys are hashed as integers in one open-addressed table, and the
// rows of every key lie side by side in one array. A key made into text
// per row, with a list of rows per key, cost the unapplied payments a
// third of their run on 180,000 payment lines (an allocation per row and
// a cache miss per lookup). Any other relation (several columns, text,
// dates, fractions) is keyed by RowKey's text, as RelateKey orders it.
class RelateIndex {
 public:
  // Groups the rows of `child` by `child_fields`; rows with a Null part
  // relate to nothing.
  void Build(const RowSet& child, const std::vector<int>& child_fields);
  // The child rows related to `row` of `parent`, in the child's order:
  // `count` rows, listed at `rows`, or numbered on from `first` when
  // `rows` is null (a child laid out with its parent). Valid while the
  // index stays as it is.
  struct Related {
    const uint32_t* rows = nullptr;
    uint32_t first = 0;
    uint32_t count = 0;
    size_t operator[](uint32_t i) const { return rows ? rows[i] : size_t{first} + i; }
  };
  Related Find(const RowSet& parent, size_t row, const std::vector<int>& parent_fields) const;
  // Replaces `out` with the child rows related to `row` of `parent`.
  void RowsFor(const RowSet& parent, size_t row, const std::vector<int>& parent_fields,
               std::vector<size_t>* out) const;

  // After the child's rows are renumbered (row r is now new_of_old[r]).
  void Renumber(const std::vector<uint32_t>& new_of_old);
  // The child rows of each row of `parent` as it stands, as one run
  // [begin, end) of row numbers: `runs[i]` for parent row i. Kept while the
  // parent holds the same rows and values, and read before the keys.
  void KeepRuns(const RowSet& parent, std::vector<std::pair<uint32_t, uint32_t>> runs);

 private:
  static constexpr uint32_t kNoGroup = UINT32_MAX;
  // A whole key and, once built, where its rows lie in rows_ (while
  // building, `begin` holds the key's group); `begin` is kNoGroup in a free
  // slot. Key and rows in one place: a lookup is one cache miss there and
  // one in rows_.
  struct Slot {
    int64_t key = 0;
    uint32_t begin = kNoGroup;
    uint32_t end = 0;
  };
  const Slot* FindSlot(int64_t key) const;
  uint32_t AddWholeGroup(int64_t key);
  void GrowSlots();

  bool whole_ = true;
  // Keys that fill most of their range (the usual serial IDs) index
  // starts_ directly, by key less dense_min_: four bytes a key in one
  // array, where a hashed key took a slot of sixteen in a table twice the
  // keys' size, and the lookup that misses the cache misses it once.
  bool dense_ = false;
  int64_t dense_min_ = 0;
  // Open addressing by whole key, at most half full.
  std::vector<Slot> slots_;
  size_t whole_count_ = 0;
  std::unordered_map<std::string, uint32_t> text_groups_;
  // Group g's rows are rows_[starts_[g]] to rows_[starts_[g + 1]]; in the
  // dense form, the group of key k is k - dense_min_.
  std::vector<uint32_t> starts_;
  std::vector<uint32_t> rows_;
  // KeepRuns: the parent's id and version they hold for, and the runs.
  uint64_t runs_parent_ = 0;
  uint64_t runs_version_ = 0;
  std::vector<std::pair<uint32_t, uint32_t>> runs_;
};

// A SHAPE child related to its parent.
struct ChapterLink {
  std::shared_ptr<RowSet> child;
  std::vector<int> parent_fields;
  std::vector<int> child_fields;
  RelateIndex index;
};

uint64_t NextRowSetId();

// The rows of a result: field descriptions, the values (held compactly in a
// ColumnStore and made into Variants as they are read) and the SHAPE
// children. Rows are numbered from 0 in the order the statement gave them.
struct RowSet {
  // Set before the first row is added; a field added later (AddField, or
  // pushed here) reads Empty in the rows already held.
  std::vector<FieldInfo> fields;
  std::vector<ChapterLink> chapters;
  // Bumped whenever a row is added or a value changes, so that indexes built
  // over the rows (see RecordsetState's filter index) know they are stale.
  uint64_t version = 0;
  // Unique for the life of the process, so that an index never mistakes a
  // new row set (after Requery) for the one it was built on.
  uint64_t id = NextRowSetId();

  size_t RowCount() const { return cells_.RowCount(); }
  // The value of `field` in `row`; a chapter field, and a field not held,
  // hold Empty.
  Variant Get(size_t row, int field) const {
    return Col(field) < cells_.ColumnCount() && fields[Col(field)].held ? cells_.Get(row, Col(field)) : Variant();
  }
  // Sets one value (bumps `version`).
  void Set(size_t row, int field, const Variant& value);
  // Sets one value as the engine holds it, converted for the field's kind
  // as ValueOfKind converts it, without making Variants on the way. False
  // (nothing set) for the rarer conversions that only ValueOfKind makes:
  // text read as money, a number or a date in another form, a float as
  // text. Throws OverflowError for money beyond its range.
  bool SetStored(size_t row, int field, const StoredView& value);
  // Appends a row of a result cell by cell, in field order, without a row
  // of Nulls first: PushStored takes the next value as the engine holds it
  // and converts it as SetStored does (false, nothing added, where
  // SetStored gives false), PushValue takes a value made otherwise. EndRow
  // ends the row once every field has its cell and returns its index.
  bool PushStored(int field, const StoredView& value);
  void PushValue(int field, const Variant& value);
  size_t EndRow();
  // The result is read whole: what the reading kept to share repeated
  // texts is let go.
  void EndRows() { cells_.DonePushing(); }
  // Every value of a row, and all of them at once (a cancelled edit).
  std::vector<Variant> GetRow(size_t row) const;
  void SetRow(size_t row, const std::vector<Variant>& values);
  // Appends a row of Nulls, or of `values` (one per field); returns its
  // index. Bumps `version`.
  size_t AppendRow();
  size_t AppendRow(const std::vector<Variant>& values);
  // Appends row `row` of `from` without its first `skip` fields.
  size_t AppendRowFrom(const RowSet& from, size_t row, int skip);
  // Drops the last row (an AddNew cancelled).
  void PopRow();
  void Reserve(size_t rows);
  // Lays the rows out in the order `order` (every row once: row i becomes
  // what row order[i] was), and each SHAPE child that no recordset looks
  // at yet in the order the parent's rows now reach it, so that a walk of
  // the parent and its chapters in row order reads memory forward. Bumps
  // `version`.
  void Reorder(const std::vector<uint32_t>& order);

  // The cell store itself, for loops over every row that compare or hash
  // values in place (Sort, the filter index, relating SHAPE children).
  const ColumnStore& cells() const { return cells_; }

  // Index of the field `name` (case-insensitive, square brackets ignored),
  // or -1.
  int FindField(std::string_view name) const;
  // Appends a field (Empty in every row held); returns its index.
  int AddField(FieldInfo f);

 private:
  size_t Col(int field) const { return static_cast<size_t>(field); }
  // Fields found by name: every field's name folded to lower case in one
  // open-addressed table, built at the first lookup. A report reads
  // rs["Value"] on every row; a scan of a SELECT * of thirty fields per
  // read was a twentieth of a listing's run, and a cache of the last few
  // names still missed whenever a row read more names than it held (the
  // patient list reads sixteen). A pointer, shared by the copies of the
  // rows, while no lookup has run: a server snapshot keeps thousands of
  // small lookup results. The table knows how many fields it was built on
  // and is built again when fields have been added since.
  struct NameTable {
    struct Slot {
      uint32_t hash = 0;
      int index = -1;  // -1: a free slot
    };
    size_t field_count = 0;
    std::vector<Slot> slots;  // a power of two, at most half full
  };
  mutable std::shared_ptr<const NameTable> names_;
  // Gives the store a column for every field.
  void SyncColumns();
  ColumnStore cells_;
};

// The relate key of `row` of `rows` over `fields`; empty when any part is
// Null.
std::string RowKey(const RowSet& rows, size_t row, const std::vector<int>& fields, bool* has_null);

// How one cell relates: Null (to nothing), as the whole number `*key`, or
// otherwise (by RowKey's text). A whole number is the key RelateKey writes
// as "n" and its digits: integers, and floats, money and flags of whole
// value, below 9e18 in size.
enum class RelateClass { Null, Whole, Other };
RelateClass RelateClassOf(const ColumnStore& cells, size_t row, size_t column, int64_t* key);

}  // namespace orv::db
