#include "platform/practice/row_writer.h"

#include <sqlite3.h>

namespace orv::practice {

RowWriter::RowWriter(sqlite3* db, const std::string& table) : db_(db), table_(table) {
  const Table* t = FindTable(table);
  if (!t) throw SchemaError("no table " + table + " in the practice schema");
  std::string cols, marks;
  for (size_t i = 0; i < t->columns.size(); ++i) {
    index_[t->columns[i].name] = static_cast<int>(i);
    cols += (i ? ", " : "") + QuoteName(t->columns[i].name);
    marks += i ? ", ?" : "?";
  }
  cells_.resize(t->columns.size());
  const std::string sql =
      "INSERT INTO " + QuoteName(t->name) + " (" + cols + ") VALUES (" + marks + ")";
  if (sqlite3_prepare_v2(db, sql.c_str(), -1, &stmt_, nullptr) != SQLITE_OK)
    throw SchemaError("preparing " + sql + ": " + sqlite3_errmsg(db));
}

RowWriter::~RowWriter() { sqlite3_finalize(stmt_); }

RowWriter::Cell& RowWriter::At(std::string_view column) {
  auto it = index_.find(std::string(column));
  if (it == index_.end())
    throw SchemaError("no column " + std::string(column) + " in table " + table_);
  return cells_[it->second];
}

RowWriter& RowWriter::Int(std::string_view column, int64_t value) {
  Cell& c = At(column);
  c.kind = Kind::Int;
  c.i = value;
  return *this;
}

RowWriter& RowWriter::Cents(std::string_view column, int64_t cents) {
  Cell& c = At(column);
  c.kind = Kind::Real;
  c.d = static_cast<double>(cents) / 100.0;
  return *this;
}

RowWriter& RowWriter::Real(std::string_view column, double value) {
  Cell& c = At(column);
  c.kind = Kind::Real;
  c.d = value;
  return *this;
}

RowWriter& RowWriter::Text(std::string_view column, std::string value) {
  Cell& c = At(column);
  c.kind = Kind::Text;
  c.s = std::move(value);
  return *this;
}

RowWriter& RowWriter::Blob(std::string_view column, std::vector<uint8_t> bytes) {
  Cell& c = At(column);
  c.kind = Kind::Blob;
  c.b = std::move(bytes);
  return *this;
}

int64_t RowWriter::Insert() {
  for (size_t i = 0; i < cells_.size(); ++i) {
    const int p = static_cast<int>(i) + 1;
    Cell& c = cells_[i];
    switch (c.kind) {
      case Kind::Null:
        sqlite3_bind_null(stmt_, p);
        break;
      case Kind::Int:
        sqlite3_bind_int64(stmt_, p, c.i);
        break;
      case Kind::Real:
        sqlite3_bind_double(stmt_, p, c.d);
        break;
      case Kind::Text:
        sqlite3_bind_text(stmt_, p, c.s.data(), static_cast<int>(c.s.size()), SQLITE_TRANSIENT);
        break;
      case Kind::Blob:
        sqlite3_bind_blob(stmt_, p, c.b.data(), static_cast<int>(c.b.size()), SQLITE_TRANSIENT);
        break;
    }
    c.kind = Kind::Null;
  }
  if (sqlite3_step(stmt_) != SQLITE_DONE)
    throw SchemaError("inserting into " + table_ + ": " + sqlite3_errmsg(db_));
  sqlite3_reset(stmt_);
  ++rows_;
  return sqlite3_last_insert_rowid(db_);
}

}  // namespace orv::practice
