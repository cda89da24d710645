// The database engine behind a Connection. A Connection speaks only to this
// interface, so a second engine (PostgreSQL) can stand beside SQLite without
// the recordsets knowing which one runs the statement.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "common/variant.h"
#include "platform/db/table_def.h"
#include "platform/sql/translate.h"

namespace orv::db {

// A column value as the engine holds it in the current row, without a
// copy: the text or blob bytes stay the engine's and are good until the
// next Step or Reset.
struct StoredView {
  // Money: `integer` holds an amount's raw count (Currency::raw), read
  // exactly from a server's decimal text; it stays money whatever the
  // field's kind.
  enum class Class : uint8_t { Null, Integer, Float, Text, Blob, Money };
  Class cls = Class::Null;
  int64_t integer = 0;
  double number = 0;
  std::string_view bytes;
};

// One prepared statement of an engine. It is stepped row by row and reset to
// run again; column values come back in the engine's own storage classes as
// Variants: Null, a 64-bit integer (Variant::Int64), a double, text or Bytes.
class EngineStatement {
 public:
  virtual ~EngineStatement() = default;
  // Makes the statement ready to run again and clears its bound values.
  virtual void Reset() = 0;
  // Binds the value of parameter `index` (1-based).
  virtual void Bind(int index, const Variant& value) = 0;
  // Advances to the next row; false when there is none. Throws DatabaseError
  // with the engine's message on failure.
  virtual bool Step() = 0;
  virtual int ColumnCount() const = 0;
  virtual std::string ColumnName(int column) const = 0;
  // The value of `column` (0-based) in the current row.
  virtual Variant Column(int column) const = 0;
  // The same value seen in place, for reading whole results: false when the
  // engine cannot give it so (the caller then reads Column).
  virtual bool ColumnView(int column, StoredView* out) const { return false; }
  // The engine's text of the statement.
  virtual const std::string& Sql() const = 0;
};

class Engine {
 public:
  virtual ~Engine() = default;
  // Prepares engine SQL. Throws DatabaseError naming `original` (the
  // statement the caller gave, for the message) and the place of the fault.
  virtual std::unique_ptr<EngineStatement> Prepare(const std::string& sql,
                                                   const std::string& original) = 0;
  // Rows changed by the last INSERT, UPDATE or DELETE.
  virtual int64_t Changes() const = 0;
  // Key given to the last inserted row.
  virtual int64_t LastInsertId() const = 0;
  // Tables and declared column types, for the translator.
  virtual sql::Schema LoadSchema() = 0;
  // Columns of the primary key of `table`, in key order; empty when none.
  virtual std::vector<std::string> PrimaryKey(const std::string& table) = 0;
  virtual sql::Dialect dialect() const = 0;
  // The text of parameter n (1-based) in the engine's SQL ("?1", "$1").
  virtual std::string ParameterMarker(int n) const = 0;
  // Names the database for messages: the file, or host, port and database
  // of a server. Never holds a password.
  virtual std::string Describe() const = 0;
  // What the engine itself says the database is, the same however the URL
  // spelled it (a server's instance and database, a file's device and
  // inode); "" when it cannot tell (an in-memory database).
  virtual std::string Identity() = 0;

  // Holds one consistent view of the database for the statements that
  // follow, until EndSnapshot. An engine whose readers already see one
  // moment per statement and where a long read would block the practice's
  // writers (SQLite) does nothing.
  virtual void BeginSnapshot() {}
  virtual void EndSnapshot() {}

  // For copying a practice between engines: the tables with their declared
  // types, keys and indexes; creating and dropping them; loading rows.
  virtual std::vector<TableDef> ListTables() = 0;
  virtual void CreateTable(const TableDef& table) = 0;
  virtual void DropTable(const std::string& table) = 0;
  // Appends rows (values in the table's column order, as Variants of the
  // layer: Currency, DateTime, text, integers, Bytes, Null).
  virtual void InsertRows(const TableDef& table, const std::vector<std::vector<Variant>>& rows) = 0;
  // Called once a table's rows are in: lets the engine move its key
  // generator past the largest key copied.
  virtual void FinishTable(const TableDef& table) {}
  // Called once a whole copy is committed.
  virtual void FinishCopy() {}
};

// Opens the engine a connection URL names: "sqlite:/path/practice.db",
// "sqlite::memory:", or a bare file path (SQLite). Throws DatabaseError for a
// file that cannot be opened or is no database, and for an unknown scheme.
// With `create`, a SQLite file that does not exist is made (empty).
std::unique_ptr<Engine> OpenEngine(const std::string& url, bool create = false);

}  // namespace orv::db
