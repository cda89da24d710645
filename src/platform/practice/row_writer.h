// Prepared INSERT of one table of the schema: set columns by name, insert,
// and the row is cleared for the next one. Columns left unset are NULL.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/practice/schema.h"

struct sqlite3_stmt;

namespace orv::practice {

class RowWriter {
 public:
  RowWriter(sqlite3* db, const std::string& table);
  ~RowWriter();
  RowWriter(const RowWriter&) = delete;
  RowWriter& operator=(const RowWriter&) = delete;

  RowWriter& Int(std::string_view column, int64_t value);
  // Money in cents, stored as a number of dollars with two decimals.
  RowWriter& Cents(std::string_view column, int64_t cents);
  RowWriter& Real(std::string_view column, double value);
  RowWriter& Text(std::string_view column, std::string value);
  RowWriter& Blob(std::string_view column, std::vector<uint8_t> bytes);
  // Inserts the row and returns its rowid; throws SchemaError on failure.
  int64_t Insert();

  int64_t rows() const { return rows_; }

 private:
  enum class Kind { Null, Int, Real, Text, Blob };
  struct Cell {
    Kind kind = Kind::Null;
    int64_t i = 0;
    double d = 0;
    std::string s;
    std::vector<uint8_t> b;
  };
  Cell& At(std::string_view column);

  sqlite3* db_;
  sqlite3_stmt* stmt_ = nullptr;
  std::string table_;
  std::unordered_map<std::string, int> index_;  // column name -> position
  std::vector<Cell> cells_;
  int64_t rows_ = 0;
};

}  // namespace orv::practice
