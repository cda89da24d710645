// What a Recordset handle points at: the shared rows, the visible rows after
// chapter, Filter and Sort, the position, and a pending edit. Private to the
// recordset and field files.
#pragma once

#include <unordered_map>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/db/connection.h"
#include "platform/db/criteria.h"
#include "platform/db/rowset.h"

namespace orv::db {

struct RecordsetState {
  bool open = false;
  bool fabricated = false;
  std::optional<Connection> connection;
  std::string source;      // as given
  std::string statement;   // as run (a table name becomes SELECT * FROM it)
  int cursor_type = 0;
  int lock_type = 1;
  int options = -1;

  std::shared_ptr<RowSet> data;
  // The fields whose values Open and Requery read (Recordset::KeepFields).
  FieldSelection keep;
  std::vector<FieldInfo> pending_fields;  // appended before a fabricated Open

  // Row numbers of `data`: `base` are the rows of this recordset (all,
  // or a chapter's), `view` those that pass the filter, in sort order.
  std::vector<size_t> base;
  std::vector<size_t> view;
  // A chapter with no filter and no sort sees all its rows in their
  // order, so a move of its parent writes them into `view` alone and
  // `base` is taken from it when a Filter or Sort first needs it.
  bool base_in_view = false;
  long pos = 0;  // index into view; -1 is BOF, view.size() is EOF

  Variant filter{std::string()};
  std::optional<Criteria> criteria;
  // The hash behind equality filters on a numeric field (EqualityCandidates).
  struct EqIndex {
    int field = -1;
    uint64_t rowset = 0;
    uint64_t version = 0;
    size_t base_size = 0;
    bool usable = true;
    std::unordered_map<double, std::vector<size_t>> rows;
  };
  std::optional<EqIndex> eq_index;
  const std::vector<size_t>* EqualityCandidates(int field, double key);
  std::string sort;

  // A chapter follows the current row of its parent.
  std::weak_ptr<RecordsetState> parent;
  RecordsetState* parent_state = nullptr;  // what `parent` points at
  int parent_chapter = -1;
  long bound_parent_row = -2;
  // The id of the parent's row set that `bound_parent_row` numbers a row
  // of; 0 before the first.
  uint64_t bound_parent_rows = 0;
  std::vector<std::shared_ptr<RecordsetState>> chapter_states;

  // Pending edit of the current row.
  int edit = 0;  // EditMode
  std::vector<Variant> original;
  size_t edit_row = 0;

  // GetChunk's read offset: field -> bytes read, reset when the row changes.
  long chunk_row = -1;
  std::vector<size_t> chunk_offset;

  // Table and key fields for writes, found at the first write.
  std::string table;
  std::vector<int> key_fields;

  // Checks that the recordset is open and, for a chapter, follows the
  // parent's current row. In line for an open recordset of its own: every
  // value a report reads and every move checks it.
  void Ready() {
    if (!open || parent_chapter >= 0) FollowParent();
  }
  // Ready's work for a chapter, and its error for a closed recordset.
  void FollowParent();
  // FollowParent's work when the parent (`p`, ready) is on another row or
  // holds other rows than the chapter last followed.
  [[gnu::noinline]] void Rebind(const RecordsetState& p);
  // Shows the rows that `link` relates to row `row` of the parent `p`
  // (none for -1, the parent at BOF or EOF), from the first.
  void Bind(const RecordsetState& p, const ChapterLink& link, long row);
  // The data row index of the current row; throws at BOF/EOF.
  size_t CurrentRow();
  bool AtRow() const { return pos >= 0 && pos < static_cast<long>(view.size()); }
  // Recomputes `view` from `base` by criteria and sort; moves to the first
  // row.
  void Rebuild();
  // Puts this recordset on its first row, and its chapters on theirs.
  void Restart();
  // A sorted listing is walked in its sorted order, which has nothing to
  // do with the order its rows were read in (payments come by number, and
  // print by provider, date and payee). Each value read then fell on
  // another cache line and another page, for the row and for its
  // chapter's rows; at 900,000 payments the walk took two and a half
  // times as long as the same walk in stored order. So a sort of all the
  // rows of a large recordset lays the rows (and its SHAPE children) out
  // anew in the sorted order: a pass over the rows that is paid back by
  // the first walk. Smaller recordsets lie in the cache whatever their
  // order, a filtered view is left as it lies (a report that filters and
  // unfilters would lay the rows out again each time), and a chapter's
  // rows are shared by every parent row.
  static constexpr size_t kLayOutRows = size_t{1} << 14;
  void LayOutInViewOrder();
  // Writes a pending edit (Update); in line for the usual move, which has
  // none.
  void Commit() {
    if (edit != 0) WriteEdit();
  }
  void WriteEdit();
  void Cancel();
  void Moved();
  // The fields read by Value (the first 64), so that a move forward can
  // bring their cells in the row after the new one into the cache while
  // the report works on this one: a sorted listing reads its rows out of
  // their stored order, and each value read was a wait on memory.
  uint64_t fields_read = 0;
  void NoteRead(int field) {
    if (field < 64) fields_read |= uint64_t{1} << field;
  }
  const FieldInfo& FieldAt(int index) const;
  int FieldIndex(std::string_view name) const;
  // The index of field `name` for a Sort, Filter or Find (`what`): -1 when
  // there is no such field; throws when its values were not read.
  int ComparedField(std::string_view name, const char* what) const;
  // Throws when some field's values were not read, for the writes.
  void CheckHoldsAll() const;
};

}  // namespace orv::db
