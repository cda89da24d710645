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
#include <type_traits>
#include <utility>
#include <vector>

namespace orv::render {

// The cells of a table, row by row, their texts end to end in one buffer. A
// long list keeps a couple of million cells for its CSV; as a string each
// they would take several times the text itself. Rows may differ in length.
class CellRows {
 public:
  CellRows() = default;
  // Rows written out in full, as a test or a hand-made document gives them.
  CellRows(std::initializer_list<std::initializer_list<std::string_view>> rows);

  // Room for so many rows, cells and bytes of text in all, so that a table
  // whose size is known takes no more memory than it needs.
  void Reserve(size_t rows, size_t cells, size_t text_bytes) {
    row_starts_.reserve(rows);
    cells_.reserve(cells);
    text_.reserve(text_bytes);
  }
  // Appends a row, then its cells one by one.
  void AddRow() { row_starts_.push_back(uint32_t(cells_.size())); }
  void AddCell(std::string_view text);

  size_t size() const { return row_starts_.size(); }
  bool empty() const { return row_starts_.empty(); }
  // Columns of row `r`.
  size_t Columns(size_t r) const {
    return (r + 1 < row_starts_.size() ? row_starts_[r + 1] : cells_.size()) - row_starts_[r];
  }
  std::string_view Text(size_t r, size_t c) const {
    const auto& [at, length] = cells_[row_starts_[r] + c];
    return std::string_view(text_).substr(at, length);
  }
  // Replaces the text of a cell (its old text stays unused in the buffer).
  void SetText(size_t r, size_t c, std::string_view text);

  class CellRef {
   public:
    CellRef(CellRows* rows, size_t r, size_t c) : rows_(rows), r_(r), c_(c) {}
    operator std::string_view() const { return rows_->Text(r_, c_); }
    CellRef& operator=(std::string_view text) {
      rows_->SetText(r_, c_, text);
      return *this;
    }

   private:
    CellRows* rows_;
    size_t r_, c_;
  };
  // One row, read as `rows[r][c]`; through a row of a table that may be
  // written, `rows[r][c] = "text"` replaces a cell.
  template <typename Rows>
  class RowView {
   public:
    RowView(Rows* rows, size_t r) : rows_(rows), r_(r) {}
    size_t size() const { return rows_->Columns(r_); }
    auto operator[](size_t c) const {
      if constexpr (std::is_const_v<Rows>) {
        return rows_->Text(r_, c);
      } else {
        return CellRef{rows_, r_, c};
      }
    }

   private:
    Rows* rows_;
    size_t r_;
  };
  RowView<const CellRows> operator[](size_t r) const { return {this, r}; }
  RowView<CellRows> operator[](size_t r) { return {this, r}; }

  friend bool operator==(const CellRows& a, const CellRows& b);
  friend bool operator==(const CellRows& a, const std::vector<std::vector<std::string>>& b);

 private:
  std::string text_;
  std::vector<std::pair<uint32_t, uint32_t>> cells_;  // offset and length in text_
  std::vector<uint32_t> row_starts_;                  // the first cell of each row
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
