// T-SQL to engine SQL: the entry point the database layer calls.
//
// A statement is parsed into a tree that keeps the source position of every
// node, bound against the schema (declared column types) so that SQL
// Server's type-dependent meaning is decided once (`+` on text, integer
// division, text compared with a number, ISNULL's type), and printed for the
// engine. SHAPE is not handled here: the database layer takes a SHAPE
// statement apart and hands each inner command to Translate.
#pragma once

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "common/errors.h"

namespace orv::sql {

// What a value is on the server, decided from declared column types and
// expression typing. The database layer turns engine values into Variants by
// this kind (Money -> Currency, Date -> DateTime, ...).
enum class ValueKind { Unknown, Integer, Boolean, Float, Decimal, Money, Date, Text, Blob };

struct ColumnType {
  std::string name;          // as declared
  std::string declared;      // declared type text, e.g. "VARCHAR(30)", "MONEY"
  ValueKind kind = ValueKind::Unknown;
  int length = 0;            // n of VARCHAR(n)/CHAR(n), 0 when none
};

// A table the schema could not read from the database (the file locked by
// another program's write, a view that no longer reads).
class SchemaError : public ReportError {
 public:
  explicit SchemaError(const std::string& description) : ReportError(kErrDatabase, description) {}
};

// One table as a schema reader finds it.
struct TableColumns {
  std::string name;  // as declared
  std::vector<ColumnType> columns;
  std::vector<std::string> primary_key;  // column names in key order
};

// The tables of a database with their columns in declaration order and
// their primary keys. Names compare case-insensitively, as on SQL Server.
//
// A schema is filled up front (AddTable) or, given a reader, one table at a
// time the first time a statement names it: a short report names a handful
// of the practice's tables, and reading all of them cost more than the
// report's own queries. A table once read keeps its columns; a name not
// found is asked of the reader again next time, so a table made after the
// first statement is found when a later one names it.
class Schema {
 public:
  // Reads the table of that name (any case); nullopt when there is none.
  // Throws SchemaError when the table cannot be read.
  using Reader = std::function<std::optional<TableColumns>(std::string_view table)>;

  Schema() = default;
  explicit Schema(Reader reader) : reader_(std::move(reader)) {}

  // `primary_key`: the key's column names in key order; empty when the
  // table has none.
  void AddTable(const std::string& table, std::vector<ColumnType> columns,
                std::vector<std::string> primary_key = {});
  // nullptr when there is no such table.
  const std::vector<ColumnType>* FindTable(std::string_view table) const;
  // The primary key's column names in key order; empty when the table has
  // none or there is no such table.
  const std::vector<std::string>& PrimaryKey(std::string_view table) const;
  // The name as declared (engines that keep names case-sensitive need it);
  // `table` itself when there is no such table.
  std::string TableName(std::string_view table) const;
  // Kind of a declared type text ("MONEY" -> Money, "DATETIME" -> Date,
  // "VARCHAR(n)" -> Text, "INTEGER" -> Integer, ...).
  static ValueKind KindOfDeclared(std::string_view declared, int* length = nullptr);

 private:
  struct Entry {
    std::string name;  // as declared
    std::vector<ColumnType> columns;
    std::vector<std::string> key;
  };
  // The entry of `table`, read on first use when there is a reader.
  const Entry* Find(std::string_view table) const;

  // Key: the lower-case name. Filled lazily from const lookups, hence
  // mutable; entries never move once made.
  mutable std::map<std::string, Entry, std::less<>> tables_;
  Reader reader_;
};

enum class Dialect { SQLite, PostgreSQL };

// One result column of a translated query.
struct ResultColumn {
  std::string name;  // the name a recordset's Fields use (alias or column name)
  ValueKind kind = ValueKind::Unknown;
};

struct Translation {
  std::string sql;                     // the engine's statement text
  bool is_query = false;               // returns rows (SELECT)
  std::vector<ResultColumn> columns;   // result columns in order, for a query
};

// A statement the layer cannot parse, bind or translate. The description
// holds the reason, the line and column, and the original statement.
class SqlError : public ReportError {
 public:
  SqlError(const std::string& reason, int line, int column, const std::string& statement);
  int line() const { return line_; }
  int column() const { return column_; }

 private:
  int line_, column_;
};

// Translates one T-SQL statement (SELECT, UPDATE, INSERT, DELETE). Throws
// SqlError. Pure: the result depends only on the text, the schema and the
// dialect, so callers may cache it by statement text.
Translation Translate(std::string_view tsql, const Schema& schema, Dialect dialect);

}  // namespace orv::sql
