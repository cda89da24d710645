// The practice database: one description of every table, column, key and
// index that the reports read or write, kept as C++ data.
//
// The description is the only source of the schema. The SQLite DDL is
// printed from it (SqliteDdl), the demo practice generator writes through it,
// and the printers for other engines are meant to read the same tables.
//
// Names are the ones the report statements use, odd characters and
// misspellings included ("[Complete?]", "RefferedBy", "Patientcategories").
// The database compares names without regard to case.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/practice/schema_error.h"

struct sqlite3;

namespace orv::practice {

// The portable type of a column. The SQLite declared type tells a reader what
// the column is on SQL Server:
//   Key, Integer, Flag  INTEGER   keys and links; counts; flags (0, 1, -1, NULL)
//   Money               MONEY     four decimals, comes back as Currency
//   Date                DATETIME  'YYYY-MM-DD HH:MM:SS' text
//   Text(n)             VARCHAR(n)
//   Char(n)             CHAR(n)
//   Memo                TEXT      long free text
//   Float               FLOAT
//   Blob                BLOB      images
enum class ColumnType { Key, Integer, Flag, Money, Date, Text, Char, Memo, Float, Blob };

struct Column {
  std::string name;
  ColumnType type;
  int length = 0;  // characters, for Text and Char only
};

struct Index {
  std::vector<std::string> columns;
};

struct Table {
  std::string name;
  std::vector<Column> columns;
  std::string primary_key;  // empty: the table has no key of its own
  std::vector<Index> indexes;

  // The column of that name (any case), or nullptr.
  const Column* FindColumn(std::string_view column) const;
};

// Every table, in the order the DDL creates them.
const std::vector<Table>& Tables();

// The table of that name (any case), or nullptr.
const Table* FindTable(std::string_view name);

// "INTEGER", "MONEY", "VARCHAR(60)", ...: the SQLite declared type.
std::string SqliteType(const Column& column);

// The name as SQL text: bracketed when it is not a plain identifier
// ("[Complete?]", "[Professional Title]"), as it is otherwise.
std::string QuoteName(std::string_view name);

// CREATE TABLE and CREATE INDEX statements for every table, each ended by
// ";\n". Index names are "IX_<table>_<columns>".
std::string SqliteDdl();

// Runs SqliteDdl on an open connection. Throws orv::practice::SchemaError with
// SQLite's message when a statement fails (a table that exists already, a
// read-only file).
void CreateSchema(sqlite3* db);

}  // namespace orv::practice
