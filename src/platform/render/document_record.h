// What a document carries besides its pages: the cells of its tables, the
// letters a run of statements is made of, and who made it with what.
//
// The surface fills the first two as it lays the document out; the host
// sets the identity before the run. The CSV writer reads the tables, the
// one-file-per-letter writer the letters, and the PDF renderer writes the
// identity into the file's metadata.
#pragma once

#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace orv::render {

// The rows of one recorded table, every cell's text in one buffer. A
// listing of a large practice records over a million cells; a string per
// cell and a vector per row took about sixty bytes a cell beside the text
// (100 MB for the billing list of 20,000 patients), this takes four.
class CellRows {
 public:
  // One row, read in place; valid until the next row is added.
  class Row {
   public:
    size_t size() const { return end_ - begin_; }
    bool empty() const { return begin_ == end_; }
    std::string_view operator[](size_t i) const { return rows_->Cell(begin_ + i); }

   private:
    friend class CellRows;
    Row(const CellRows* rows, size_t begin, size_t end) : rows_(rows), begin_(begin), end_(end) {}
    const CellRows* rows_;
    size_t begin_, end_;
  };

  CellRows() = default;
  CellRows(std::initializer_list<std::vector<std::string>> rows) {
    for (const auto& row : rows) push_back(row);
  }

  size_t size() const { return row_end_.size(); }
  bool empty() const { return row_end_.empty(); }
  Row operator[](size_t r) const { return Row(this, r == 0 ? 0 : row_end_[r - 1], row_end_[r]); }

  // Room for `rows` rows of `cells` cells and `text` bytes in all, so that
  // a table recorded whole takes what it needs and no more.
  void Reserve(size_t rows, size_t cells, size_t text) {
    row_end_.reserve(row_end_.size() + rows);
    cell_end_.reserve(cell_end_.size() + cells);
    text_.reserve(text_.size() + text);
  }
  // Adds a row: StartRow, then each cell in turn.
  void StartRow() { row_end_.push_back(static_cast<uint32_t>(cell_end_.size())); }
  void AddCell(std::string_view text) {
    text_.append(text);
    cell_end_.push_back(static_cast<uint32_t>(text_.size()));
    ++row_end_.back();
  }
  void push_back(const std::vector<std::string>& row) {
    StartRow();
    for (const auto& cell : row) AddCell(cell);
  }

  friend bool operator==(const CellRows& a, const std::vector<std::vector<std::string>>& b) {
    if (a.size() != b.size()) return false;
    for (size_t r = 0; r < b.size(); ++r) {
      Row row = a[r];
      if (row.size() != b[r].size()) return false;
      for (size_t c = 0; c < row.size(); ++c)
        if (row[c] != b[r][c]) return false;
    }
    return true;
  }

 private:
  std::string_view Cell(size_t i) const {
    size_t begin = i == 0 ? 0 : cell_end_[i - 1];
    return std::string_view(text_).substr(begin, cell_end_[i] - begin);
  }
  std::string text_;
  // Offsets of 32 bits: one table's text stays far below 4 GB.
  std::vector<uint32_t> cell_end_;  // end of each cell's text in text_
  std::vector<uint32_t> row_end_;  // end of each row's cells in cell_end_
};

// One table as the report handed it to the surface: every cell's text
// before layout (escaped separators already turned back into "|" and ";",
// line breaks kept), the header row first when the table has one.
struct TableCells {
  int page = 1;  // the page it was laid out from, from 1
  bool has_header = false;
  CellRows rows;
};

// One letter of a document printed as several (a statement of a run): its
// first page and whose account it is. It runs to the page before the next
// letter's first page, the last one to the end of the document.
struct Letter {
  int first_page = 1;
  int32_t account = 0;  // the addressee's patient ID
  std::string name;     // the addressee's name as printed, "First Last"
};

// Who made the document and how to make it again. Every item is text as
// the person would type it back; an empty item is left out of the file.
struct DocumentIdentity {
  std::string method;  // "rptAgedReceivables"
  // The method's arguments in signature order, by parameter name, as given.
  std::vector<std::pair<std::string, std::string>> arguments;
  std::string database;  // where it ran, never with a password in it
  std::string today;     // the day the run took as today, yyyy-mm-dd
  std::string user;      // the signed-in user
  std::string office;    // the office the run was for
  std::string version;   // the program's version
  std::string program;   // the program that made it, "orvenda-reports"
};

}  // namespace orv::render
