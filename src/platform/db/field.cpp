#include "platform/db/field.h"

#include <algorithm>

#include "platform/db/db_error.h"
#include "platform/db/recordset.h"
#include "platform/db/recordset_state.h"

namespace orv::db {

const std::string& Field::Name() const { return s_->FieldAt(index_).name; }
FieldType Field::Type() const { return s_->FieldAt(index_).type; }
long Field::DefinedSize() const { return s_->FieldAt(index_).defined_size; }
bool Field::IsChapter() const { return s_->FieldAt(index_).chapter >= 0; }

namespace {

// The text of a cell that holds no text: "" for Null and Empty, else the
// value's text in `scratch`. Out of line, so that a read of text needs
// none of what making a Variant does.
[[gnu::noinline]] std::string_view OtherText(const ColumnStore& cells, ColumnStore::Cell cell,
                                             std::string& scratch) {
  if (cell.kind == ColumnStore::Kind::Empty || cell.kind == ColumnStore::Kind::Null) return {};
  scratch = CStr(cells.ValueOf(cell));
  return scratch;
}

inline std::string_view CellText(const ColumnStore& cells, size_t row, int index, std::string& scratch) {
  const ColumnStore::Cell cell = cells.CellAt(row, index);
  if (cell.kind == ColumnStore::Kind::String) return cells.BytesOf(cell.bits);
  return OtherText(cells, cell, scratch);
}

}  // namespace

// The usual read, in line: the recordset (a chapter once it has followed
// its parent) on a row, and a plain field, which is checked once per row
// set rather than at every read. Anything else goes to ReadableRow, which
// checks in its order and names what it throws for.
inline bool Field::PlainRow(size_t* row) const {
  RecordsetState& s = *s_;
  s.Ready();
  if (!s.AtRow()) return false;
  const RowSet& rows = *s.data;
  if (rows.id != plain_rows_) {
    const auto index = static_cast<size_t>(index_);
    if (index >= rows.fields.size() || rows.fields[index].chapter >= 0 || !rows.fields[index].held ||
        index >= rows.cells().ColumnCount())
      return false;
    plain_rows_ = rows.id;
  }
  s.NoteRead(index_);
  *row = s.view[s.pos];
  return true;
}

size_t Field::ReadableRow() const {
  size_t row = s_->CurrentRow();
  const FieldInfo& f = s_->FieldAt(index_);
  if (f.chapter >= 0)
    throw DatabaseError(kErrNotAllowed, "the field '" + f.name + "' is a chapter; read its rows with Chapter()");
  if (!f.held)
    throw DatabaseError(kErrNotAllowed, "the value of the field '" + f.name +
                                            "' was not read: the recordset was opened to hold only the fields "
                                            "named to KeepFields: " + s_->source);
  s_->NoteRead(index_);
  return row;
}

// Both reads go to the cell itself, checked once by PlainRow or
// ReadableRow. A field added after the rows were read has no column and
// reads Empty, as RowSet::Get gives it; only ReadableRow lets it through.
Variant Field::Value() const {
  size_t row;
  if (PlainRow(&row)) return s_->data->cells().ValueOf(s_->data->cells().CellAt(row, index_));
  row = ReadableRow();
  const ColumnStore& cells = s_->data->cells();
  if (static_cast<size_t>(index_) >= cells.ColumnCount()) return Variant();
  return cells.ValueOf(cells.CellAt(row, index_));
}

std::string_view Field::Text(std::string& scratch) const {
  size_t row;
  if (PlainRow(&row)) return CellText(s_->data->cells(), row, index_, scratch);
  row = ReadableRow();
  const ColumnStore& cells = s_->data->cells();
  if (static_cast<size_t>(index_) >= cells.ColumnCount()) return {};
  return CellText(cells, row, index_, scratch);
}

bool Field::IsNull() const {
  size_t row;
  if (!PlainRow(&row)) {
    row = ReadableRow();
    if (static_cast<size_t>(index_) >= s_->data->cells().ColumnCount()) return false;
  }
  return s_->data->cells().CellAt(row, index_).kind == ColumnStore::Kind::Null;
}

void Field::Value(const Variant& v) {
  size_t row = s_->CurrentRow();
  const FieldInfo& f = s_->FieldAt(index_);
  if (f.chapter >= 0 || s_->parent_chapter >= 0 ||
      (!s_->fabricated && (s_->lock_type == adLockReadOnly || s_->lock_type == adLockUnspecified)))
    throw DatabaseError(kErrNotUpdatable,
                        "Current Recordset does not support updating (it was opened read-only): " +
                            s_->source);
  s_->CheckHoldsAll();
  Variant coerced = CoerceToFieldType(v, f.type);
  if (s_->edit == adEditNone) {
    s_->edit = adEditInProgress;
    s_->edit_row = row;
    s_->original = s_->data->GetRow(row);
  }
  s_->data->Set(row, index_, coerced);
}

long Field::ActualSize() const {
  Variant v = Value();
  switch (v.type()) {
    case VarType::Empty:
    case VarType::Null: return 0;
    case VarType::String: return static_cast<long>(v.AsString().size());
    case VarType::Binary: return static_cast<long>(v.AsBytes().size());
    case VarType::Long: return 4;
    case VarType::Boolean: return 2;
    default: return 8;
  }
}

Bytes Field::GetChunk(long length) const {
  Variant v = Value();
  long row = s_->pos;
  if (s_->chunk_row != row) {
    s_->chunk_row = row;
    s_->chunk_offset.assign(s_->data->fields.size(), 0);
  }
  if (v.IsNull() || v.IsEmpty()) return {};
  Bytes all;
  if (v.type() == VarType::Binary) {
    all = v.AsBytes();
  } else {
    std::string t = CStr(v);
    all.assign(t.begin(), t.end());
  }
  size_t& off = s_->chunk_offset[index_];
  size_t n = std::min(all.size() - std::min(off, all.size()), static_cast<size_t>(std::max(length, 0L)));
  Bytes out(all.begin() + off, all.begin() + off + n);
  off += n;
  return out;
}

Recordset Field::Chapter() const {
  s_->Ready();
  const FieldInfo& f = s_->FieldAt(index_);
  if (f.chapter < 0)
    throw DatabaseError(kErrNotAllowed, "the field '" + f.name + "' is no chapter of a SHAPE statement");
  auto& states = s_->chapter_states;
  if (states.size() <= static_cast<size_t>(f.chapter)) states.resize(f.chapter + 1);
  auto& child = states[f.chapter];
  if (!child) {
    child = std::make_shared<RecordsetState>();
    child->open = true;
    child->connection = s_->connection;
    child->source = s_->source;
    child->cursor_type = adOpenStatic;
    child->lock_type = adLockReadOnly;
    child->data = s_->data->chapters[f.chapter].child;
    child->parent = s_;
    child->parent_state = s_.get();
    child->parent_chapter = f.chapter;
  }
  return Recordset(child);
}

long FieldsCollection::Count() const {
  return static_cast<long>(s_->data ? s_->data->fields.size() : s_->pending_fields.size());
}

Field FieldsCollection::Item(long index) const {
  s_->FieldAt(static_cast<int>(index));
  return Field(s_, static_cast<int>(index));
}

Field FieldsCollection::Item(std::string_view name) const {
  if (!s_->data) {
    for (size_t i = 0; i < s_->pending_fields.size(); ++i)
      if (s_->pending_fields[i].name == name) return Field(s_, static_cast<int>(i));
  }
  return Field(s_, s_->FieldIndex(name));
}

void FieldsCollection::Append(const std::string& name, FieldType type, long defined_size) {
  if (s_->open)
    throw DatabaseError(kErrNotAllowed, "Fields.Append is not allowed on an open recordset: " + name);
  FieldInfo f;
  f.name = name;
  f.type = type;
  f.defined_size = static_cast<int>(defined_size);
  s_->pending_fields.push_back(std::move(f));
}

}  // namespace orv::db
