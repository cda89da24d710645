// Field and the Fields collection of a recordset.
//
// Both are handles onto their recordset: a Field read after a move shows the
// new current row, as the reports' field objects do.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/variant.h"
#include "platform/db/field_type.h"

namespace orv::db {

class Recordset;
struct RecordsetState;

class Field {
 public:
  Field(std::shared_ptr<RecordsetState> s, int index) : s_(std::move(s)), index_(index) {}

  const std::string& Name() const;
  FieldType Type() const;
  // Declared size of a fabricated text field; 0 when not known.
  long DefinedSize() const;

  // The value in the current row. Throws when the recordset is at BOF or
  // EOF, and for a chapter field (read it with Chapter()).
  Variant Value() const;
  operator Variant() const { return Value(); }
  // The value's text as CStr gives it, "" for Null and Empty, read where
  // the recordset holds it when the value is text: a list that prints
  // thousands of names need not copy each into a Variant first. The view
  // lasts until the recordset moves or changes; `scratch` holds the text
  // of a value of any other kind. Throws as Value does.
  std::string_view Text(std::string& scratch) const;
  // Whether the value in the current row is Null, as Value().IsNull()
  // says, read from the cell without making the value: a list that tests
  // a link on every row before it follows it. Throws as Value does.
  bool IsNull() const;
  // Sets the value in the current row, converted to the field's type; the
  // row is written by Update (or by moving off it).
  void Value(const Variant& v);

  // Bytes of the value: text length, blob length, 0 for Null, the storage
  // size of a number or date.
  long ActualSize() const;
  // The next `length` bytes of a long binary or text value; successive calls
  // continue where the last one stopped, until the row changes.
  Bytes GetChunk(long length) const;

  bool IsChapter() const;
  // The child rows of a SHAPE chapter that relate to the current parent row.
  // The same child recordset follows the parent as it moves.
  Recordset Chapter() const;

  int index() const { return index_; }

 private:
  // The current row, once the field is known to hold a readable value.
  size_t ReadableRow() const;
  // The current row for the usual read (see field.cpp); false for any
  // other, which ReadableRow checks.
  bool PlainRow(size_t* row) const;

  std::shared_ptr<RecordsetState> s_;
  int index_;
  // The id of the row set in which this field was last found to be a
  // plain one (its values held, no chapter, a column of cells): those do
  // not change while the recordset reads the same rows, so the next read
  // checks the position alone. 0 before the first read.
  mutable uint64_t plain_rows_ = 0;
};

class FieldsCollection {
 public:
  explicit FieldsCollection(std::shared_ptr<RecordsetState> s) : s_(std::move(s)) {}
  long Count() const;
  // By position (0-based) or by name (case-insensitive, square brackets
  // ignored). Throws "Item cannot be found" for an unknown one.
  Field Item(long index) const;
  Field Item(std::string_view name) const;
  Field operator()(long index) const { return Item(index); }
  Field operator()(std::string_view name) const { return Item(name); }
  Field operator[](long index) const { return Item(index); }
  Field operator[](std::string_view name) const { return Item(name); }
  // Adds a field to a recordset that is not open yet (a fabricated one).
  void Append(const std::string& name, FieldType type, long defined_size = 0);

 private:
  std::shared_ptr<RecordsetState> s_;
};

}  // namespace orv::db
