// The table language and the table under construction.
//
// `AddTable` takes a format ("<1in|>.75in|^!~+1.3in"), a header ("A|B|C") and
// a body ("a|b|c;d|e|f;"). This file parses them, in one pass over the body,
// into a Table that `TableCell` can read and change until the surface lays it
// out. Row 0 is the header row; body rows count from 1; columns from 1.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "platform/render/twips.h"

namespace orv::frame {

// The selectors of `TableCell`, numbered as the reports pass them.
enum TableCellSelector : int {
  tcIndent = 0,          // table: left indent, a length
  tcRows = 1,            // table: body row count
  tcCols = 2,            // table: column count
  tcInsertCol = 4,       // table: writing n inserts a blank column before column n
  tcRowBorderAbove = 8,  // cells: 1 draws a line above the cell, 0 removes it
  tcColWidth = 13,       // column: a length
  tcColBorder = 14,      // cells: 0 removes the line left of the cell, 1 draws it
  tcColSpan = 17,        // cell: columns spanned
  tcText = 18,           // cell: text
  tcAlign = 19,          // cells: 0-2 left, 3-5 centre, 6-8 right; top, middle, bottom
  tcBackColor = 20,      // cells: background colour
  tcForeColor = 21,      // cells: text colour
  tcFontSize = 24,       // cells: points
  tcFontBold = 25,       // cells: flag
  tcFontItalic = 26,     // cells: flag
  tcBorderMode = 31,     // cell: recorded; a spanning cell never has lines inside
  tcNoWrap = 32,         // cells: flag, text stays on one line
  tcMarginTop = 34,      // rows: space above the text, a length
  tcMarginBottom = 35,   // rows: space below the text, a length
  tcRowHeader = 36,      // row 0: nonzero keeps the header row with the first body row
  tcCellBorder = 37,     // cell: nonzero draws a box around the cell
  tcRepeatHeader = 40,   // table: flag, header rows repeat on each page (the default)
  tcRowSpan = 41,        // cell: rows spanned, cut at the last row
  tcRowHeight = 43,      // rows: minimum height, a length
  tcKeepTogether = 44,   // table: nonzero starts the table on a new page unless it fits
  tcKeepWithNext = 45,   // rows: nonzero keeps the row on the page of the row after it
};

// A value read from or written to `TableCell`: a number or a text.
class CellValue {
 public:
  CellValue(int v) : v_(double(v)) {}
  CellValue(unsigned v) : v_(double(v)) {}
  CellValue(long v) : v_(double(v)) {}
  CellValue(long long v) : v_(double(v)) {}
  CellValue(double v) : v_(v) {}
  CellValue(bool v) : v_(v ? 1.0 : 0.0) {}
  CellValue(const char* v) : v_(std::string(v)) {}
  CellValue(std::string v) : v_(std::move(v)) {}
  CellValue(std::string_view v) : v_(std::string(v)) {}
  CellValue(Twips v) : v_(v.value()) {}

  bool is_text() const { return std::holds_alternative<std::string>(v_); }
  // The number, or the text read as a number; a text that is none raises.
  double Number() const;
  // The text, or the number in its shortest decimal form ("12369084", "0.5").
  std::string String() const;
  // A number of twips, or a length string.
  Twips AsLength() const;
  bool AsFlag() const { return Number() != 0; }

 private:
  std::variant<double, std::string> v_;
};

// A data value made safe for a table string: a "|" or ";" inside it stays
// text in its cell instead of starting a new cell or row. Every value a
// report reads from the database and puts into a Header or Body goes through
// this; the report's own separators and literal texts do not.
//
// The two separators become the control characters FS (0x1C) and GS (0x1D),
// which the table parser turns back into "|" and ";" once the cell is cut
// out. Practice data never holds control characters; any FS or GS already
// in the value is dropped so that it cannot pose as an escaped separator.
std::string EscapeCell(std::string_view value);
// The same text added to the end of `out`, for a row built in one string.
void AppendEscapedCell(std::string& out, std::string_view value);

// A format entry: flags, then the width.
struct ColumnFormat {
  Twips width;
  int align = 0;       // 0 left, 1 centre, 2 right
  bool bang = false;   // '!': recorded, no visible effect
  bool tilde = false;  // '~': text centred in the row's height
  bool plus = false;   // '+': recorded, no visible effect
};

// Parses "flags width|flags width|..."; an entry without a width is one inch.
// A width that is not a length raises SurfaceError.
std::vector<ColumnFormat> ParseFormat(std::string_view format);

// The attributes a report can set on a cell. -1 means "as the row says".
struct CellAttributes {
  int8_t align = -1;  // tcAlign code
  int8_t bold = -1, italic = -1, no_wrap = -1;
  int8_t border_above = -1, col_border = -1, cell_border = -1, border_mode = -1;
  int16_t col_span = 1, row_span = 1;
  float font_size = 0;  // 0: the row's size
  int64_t back_color = -1, fore_color = -1;
};

struct Cell {
  std::string text;
  CellAttributes attr;
};

// The text attributes in force at the `AddTable` that added a row.
struct TextStyle {
  std::string family = "Tahoma";
  double size = 10;
  bool bold = false;
  bool italic = false;
  uint32_t color = 0;
  friend bool operator==(const TextStyle&, const TextStyle&) = default;
};

struct Row {
  std::vector<Cell> cells;  // one per column once the table is complete
  uint16_t style = 0;       // index into Table::styles
  int64_t fill = -1;        // background from HeaderColor or BodyColor
  Twips margin_top, margin_bottom, min_height;
  bool keep_with_next = false;  // tcKeepWithNext: a row that introduces the next
};

class Table {
 public:
  std::vector<ColumnFormat> columns;
  std::vector<Row> rows;  // rows[0] is the header row, drawn only if has_header
  std::vector<TextStyle> styles;
  bool has_header = false;
  Twips indent;
  bool repeat_header = true;
  int header_rows = 1;  // rows from the top that repeat: the header and n-1 body rows
  bool keep_header_with_body = false;
  bool keep_together = false;

  Table() { rows.emplace_back(); }
  int BodyRows() const { return int(rows.size()) - 1; }
  bool Empty() const { return !has_header && rows.size() == 1; }

  // Adds the rows of one `AddTable` call. With `append` the format and header
  // of a table that already has columns are kept and the body rows follow
  // the existing ones; otherwise the table starts afresh.
  void Add(std::string_view format, std::string_view header, std::string_view body,
           std::optional<uint32_t> header_color, std::optional<uint32_t> body_color, bool append,
           const TextStyle& style);
  // As Add with no body and a fresh table, then one body row whose cells
  // are `cells` as they stand: the texts are data, not a table string, so
  // nothing in them is escaped or split. Each text is taken into the row
  // and `cells` is handed back empty, its strings keeping the room of an
  // earlier table's cells, so a list that prints each record as a table
  // of its own builds every record's cells in the same strings.
  void AddRow(std::string_view format, std::string_view header, std::span<std::string> cells,
              std::optional<uint32_t> header_color, std::optional<uint32_t> body_color,
              const TextStyle& style);
  // As AddRow for a table of several body rows, `cells` holding them one
  // after another, `per_row` texts to a row (the last may have fewer); no
  // cells, no body rows.
  void AddRows(std::string_view format, std::string_view header, std::span<std::string> cells,
               size_t per_row, std::optional<uint32_t> header_color,
               std::optional<uint32_t> body_color, const TextStyle& style);

  // As a new Table, keeping the room its rows, cells and texts took for the
  // next table added to it: a list that prints each record as a table of
  // its own adds thousands, each as large as the one before.
  void Reset();

  // `TableCell`. Rows and columns of -1 are "not given". Out-of-range rows or
  // columns raise CellRangeError.
  CellValue Get(int selector, int row1, int col1, int row2, int col2) const;
  void Set(int selector, const CellValue& value, int row1, int col1, int row2, int col2);

  // Every cell with its row and column spans cut to the table's edges, and
  // its text in composed form (ComposeText), as the layout measures it.
  void Normalise();

 private:
  uint16_t StyleIndex(const TextStyle& s);
  // The format and header of Add and AddRow; the style index of the rows.
  uint16_t Begin(std::string_view format, std::string_view header,
                 std::optional<uint32_t> header_color, bool append, const TextStyle& style);
  void Resize(int rows, int cols);
  // One body row of AddRows, its texts taken from `cells`.
  void TakeRow(std::span<std::string> cells, uint16_t style, int64_t fill);
  // A blank row, made from a spare one where there is one.
  Row NewRow();
  std::vector<Row> spare_;  // rows of the tables before Reset, for NewRow
};

}  // namespace orv::frame
