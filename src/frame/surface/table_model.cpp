#include "frame/surface/table_model.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "frame/surface/length.h"
#include "frame/surface/surface_error.h"
#include "frame/surface/text_layout.h"

namespace orv::frame {

namespace {
// What EscapeCell puts in place of "|" and ";".
constexpr char kEscapedBar = '\x1C';
constexpr char kEscapedSemicolon = '\x1D';
}  // namespace

double CellValue::Number() const {
  if (auto d = std::get_if<double>(&v_)) return *d;
  const std::string& s = std::get<std::string>(v_);
  if (s.empty()) return 0;
  double out = 0;
  auto [end, ec] = std::from_chars(s.data(), s.data() + s.size(), out);
  if (ec != std::errc() || end != s.data() + s.size())
    throw SurfaceError("Type mismatch: \"" + s + "\" is not a number", kErrTypeMismatch);
  return out;
}

std::string CellValue::String() const {
  if (auto s = std::get_if<std::string>(&v_)) return *s;
  const double d = std::get<double>(v_);
  char buf[32];
  if (d == std::floor(d) && std::fabs(d) < 1e15) {
    std::snprintf(buf, sizeof buf, "%.0f", d);
  } else {
    std::snprintf(buf, sizeof buf, "%.15g", d);
  }
  return buf;
}

Twips CellValue::AsLength() const {
  if (auto s = std::get_if<std::string>(&v_)) return ParseLength(*s);
  return Twips(std::get<double>(v_));
}

std::vector<ColumnFormat> ParseFormat(std::string_view format) {
  std::vector<ColumnFormat> cols;
  size_t start = 0;
  while (true) {
    const size_t bar = format.find('|', start);
    std::string_view entry =
        format.substr(start, bar == std::string_view::npos ? bar : bar - start);
    ColumnFormat col;
    size_t k = 0;
    for (; k < entry.size(); ++k) {
      const char c = entry[k];
      if (c == '<')
        col.align = 0;
      else if (c == '^')
        col.align = 1;
      else if (c == '>')
        col.align = 2;
      else if (c == '!')
        col.bang = true;
      else if (c == '~')
        col.tilde = true;
      else if (c == '+')
        col.plus = true;
      else if (c == ' ')
        continue;
      else
        break;
    }
    std::string_view width = entry.substr(k);
    col.width = width.empty() ? Twips::Inches(1) : ParseLength(width);
    cols.push_back(col);
    if (bar == std::string_view::npos) break;
    start = bar + 1;
  }
  return cols;
}

std::string EscapeCell(std::string_view value) {
  std::string out;
  AppendEscapedCell(out, value);
  return out;
}

void AppendEscapedCell(std::string& out, std::string_view value) {
  // Most values hold neither separator: they are copied whole, and only
  // the rest from the first separator on is looked at character by
  // character.
  auto special = [](char c) {
    return c == '|' || c == ';' || c == kEscapedBar || c == kEscapedSemicolon;
  };
  // Eight bytes at a time while none of them is one of the four: a byte
  // equal to the pattern's is a zero byte of their difference. FS and GS
  // differ only in their last bit, and are looked for together.
  constexpr uint64_t kOnes = 0x0101010101010101, kHighs = 0x8080808080808080;
  auto has_zero_byte = [](uint64_t x) { return (x - kOnes) & ~x & kHighs; };
  size_t plain = 0;
  for (uint64_t w; plain + 8 <= value.size(); plain += 8) {
    std::memcpy(&w, value.data() + plain, 8);
    if (has_zero_byte(w ^ (kOnes * '|')) | has_zero_byte(w ^ (kOnes * ';')) |
        has_zero_byte((w ^ (kOnes * kEscapedBar)) & (kOnes * 0xFE)))
      break;
  }
  while (plain < value.size() && !special(value[plain])) ++plain;
  out.append(value.substr(0, plain));
  if (plain == value.size()) return;
  out.reserve(out.size() + value.size() - plain);
  for (const char c : value.substr(plain)) {
    if (c == '|')
      out += kEscapedBar;
    else if (c == ';')
      out += kEscapedSemicolon;
    else if (c != kEscapedBar && c != kEscapedSemicolon)
      out += c;
  }
}

uint16_t Table::StyleIndex(const TextStyle& s) {
  for (size_t i = 0; i < styles.size(); ++i)
    if (styles[i] == s) return uint16_t(i);
  styles.push_back(s);
  return uint16_t(styles.size() - 1);
}

namespace {

// Turns the escaped separators of EscapeCell back into text.
void UnescapeCell(std::string& text) {
  for (char& c : text) {
    if (c == kEscapedBar)
      c = '|';
    else if (c == kEscapedSemicolon)
      c = ';';
  }
}

// Splits one row's text at "|" into the row's cells; missing ones stay
// blank, and cells beyond the column count are dropped. A table is as wide
// as its format: a row that runs longer never widens it, nor pushes its
// surplus into the last column, where a figure would stand under another
// column's heading (a totals row written for six columns and printed in
// two, say, shows its first figures and not the others beneath them).
void FillRow(Row& row, std::string_view text, size_t cols) {
  row.cells.resize(cols);
  size_t c = 0, start = 0;
  while (c < cols) {
    const size_t bar = text.find('|', start);
    row.cells[c].text.assign(text.substr(start, bar == std::string_view::npos ? bar : bar - start));
    UnescapeCell(row.cells[c].text);
    ++c;
    if (bar == std::string_view::npos) break;
    start = bar + 1;
  }
}

}  // namespace

uint16_t Table::Begin(std::string_view format, std::string_view header,
                      std::optional<uint32_t> header_color, bool append, const TextStyle& style) {
  const bool fresh = !append || columns.empty();
  if (fresh) {
    // Parse before changing anything, so a bad format leaves the table as it was.
    // A list that prints each record as a table of its own passes the same
    // format thousands of times: the last one parsed is kept per thread.
    thread_local std::string last_format;
    thread_local std::vector<ColumnFormat> last_columns;
    if (last_columns.empty() || format != last_format) {
      last_columns = ParseFormat(format);
      last_format.assign(format);
    }
    Reset();
    columns = last_columns;
  }
  const uint16_t st = StyleIndex(style);
  if (fresh) {
    rows[0].style = st;
    FillRow(rows[0], header, columns.size());
    has_header = !header.empty();
    if (header_color) rows[0].fill = *header_color;
  }
  return st;
}

void Table::Add(std::string_view format, std::string_view header, std::string_view body,
                std::optional<uint32_t> header_color, std::optional<uint32_t> body_color,
                bool append, const TextStyle& style) {
  const uint16_t st = Begin(format, header, header_color, append, style);
  const size_t ncols = columns.size();
  const int64_t fill = body_color && *body_color != 0 ? int64_t(*body_color) : -1;

  // One pass over the body: each ";" closes a row; text after the last ";"
  // is a row of its own, and nothing after it is none.
  rows.reserve(rows.size() + size_t(std::count(body.begin(), body.end(), ';')) + 1);
  size_t start = 0;
  while (start < body.size()) {
    size_t semi = body.find(';', start);
    if (semi == std::string_view::npos) semi = body.size();
    Row row = NewRow();
    row.style = st;
    row.fill = fill;
    FillRow(row, body.substr(start, semi - start), ncols);
    rows.push_back(std::move(row));
    start = semi + 1;
  }
}

void Table::AddRow(std::string_view format, std::string_view header, std::span<std::string> cells,
                   std::optional<uint32_t> header_color, std::optional<uint32_t> body_color,
                   const TextStyle& style) {
  const uint16_t st = Begin(format, header, header_color, false, style);
  // A row of no cells is a row all the same, its cells blank.
  TakeRow(cells, st, body_color && *body_color != 0 ? int64_t(*body_color) : -1);
}

void Table::AddRows(std::string_view format, std::string_view header, std::span<std::string> cells,
                    size_t per_row, std::optional<uint32_t> header_color,
                    std::optional<uint32_t> body_color, const TextStyle& style) {
  const uint16_t st = Begin(format, header, header_color, false, style);
  const int64_t fill = body_color && *body_color != 0 ? int64_t(*body_color) : -1;
  if (per_row == 0) per_row = 1;
  rows.reserve(rows.size() + (cells.size() + per_row - 1) / per_row);
  for (size_t at = 0; at < cells.size(); at += per_row)
    TakeRow(cells.subspan(at, std::min(per_row, cells.size() - at)), st, fill);
}

void Table::TakeRow(std::span<std::string> cells, uint16_t style, int64_t fill) {
  const size_t ncols = columns.size();
  Row row = NewRow();
  row.style = style;
  row.fill = fill;
  // As a body row of one table string: the cells past the format's last
  // column are dropped, and the missing ones stay blank. The texts trade
  // places with the spare row's, which NewRow left empty.
  row.cells.resize(ncols);
  for (size_t c = 0; c < cells.size(); ++c) {
    if (c < ncols) row.cells[c].text.swap(cells[c]);
    cells[c].clear();
  }
  rows.push_back(std::move(row));
}

void Table::Reset() {
  // A few rows are kept: enough for the tables of a record or two, not the
  // whole of a long list held past its layout.
  constexpr size_t kSpareRows = 64;
  for (Row& r : rows) {
    if (spare_.size() == kSpareRows) break;
    spare_.push_back(std::move(r));
  }
  rows.clear();
  rows.push_back(NewRow());
  columns.clear();
  styles.clear();
  has_header = false;
  indent = Twips();
  repeat_header = true;
  header_rows = 1;
  keep_header_with_body = false;
  keep_together = false;
}

Row Table::NewRow() {
  if (spare_.empty()) return Row();
  Row row = std::move(spare_.back());
  spare_.pop_back();
  // Its cells keep the room of their texts, and nothing else.
  for (Cell& c : row.cells) {
    c.text.clear();
    c.attr = CellAttributes();
  }
  std::vector<Cell> cells = std::move(row.cells);
  row = Row();
  row.cells = std::move(cells);
  return row;
}

void Table::Resize(int nrows, int ncols) {
  if (nrows < 0 || ncols < 0) throw CellRangeError("Subscript out of range");
  if (ncols != int(columns.size())) columns.resize(ncols, ColumnFormat{Twips::Inches(1)});
  const uint16_t st = rows.empty() ? 0 : rows.back().style;
  const int64_t fill = rows.size() > 1 ? rows.back().fill : -1;
  while (int(rows.size()) < nrows + 1) {
    Row r;
    r.style = st;
    r.fill = fill;
    rows.push_back(std::move(r));
  }
  rows.resize(nrows + 1);
  for (auto& r : rows) r.cells.resize(ncols);
  if (styles.empty()) styles.emplace_back();
}

namespace {

struct Range {
  int r1, c1, r2, c2;
};

bool WholeRowSelector(int sel) {
  switch (sel) {
    case tcRowBorderAbove:
    case tcMarginTop:
    case tcMarginBottom:
    case tcRowHeight:
    case tcKeepWithNext:
    case tcColBorder:
    case tcAlign:
    case tcBackColor:
    case tcForeColor:
    case tcFontSize:
    case tcFontBold:
    case tcFontItalic:
    case tcNoWrap:
      return true;
    default:
      return false;
  }
}

}  // namespace

CellValue Table::Get(int sel, int row1, int col1, int row2, int col2) const {
  const int ncols = int(columns.size()), nrows = BodyRows();
  auto cell = [&]() -> const Cell& {
    if (row1 < 0 || row1 > nrows || col1 < 1 || col1 > ncols)
      throw CellRangeError("TableCell: no cell at row " + std::to_string(row1) + ", column " +
                           std::to_string(col1));
    return rows[row1].cells[col1 - 1];
  };
  auto column = [&]() -> const ColumnFormat& {
    if (col1 < 1 || col1 > ncols)
      throw CellRangeError("TableCell: no column " + std::to_string(col1));
    return columns[col1 - 1];
  };
  switch (sel) {
    case tcIndent:
      return indent;
    case tcRows:
      return nrows;
    case tcCols:
      return ncols;
    case tcRepeatHeader:
      return repeat_header;
    case tcKeepTogether:
      return keep_together;
    case tcRowHeader:
      return keep_header_with_body ? 3 : 0;
    case tcColWidth:
      return column().width;
    case tcText:
      return cell().text;
    case tcColSpan:
      return int(cell().attr.col_span);
    case tcRowSpan:
      return int(cell().attr.row_span);
    case tcAlign:
      return int(cell().attr.align);
    case tcBackColor:
      return double(cell().attr.back_color);
    case tcForeColor:
      return double(cell().attr.fore_color);
    case tcFontSize: {
      const Cell& c = cell();
      return c.attr.font_size > 0 ? double(c.attr.font_size) : styles[rows[row1].style].size;
    }
    case tcFontBold: {
      const Cell& c = cell();
      return c.attr.bold >= 0 ? c.attr.bold != 0 : styles[rows[row1].style].bold;
    }
    case tcFontItalic:
      return cell().attr.italic > 0;
    case tcNoWrap:
      return cell().attr.no_wrap > 0;
    case tcRowBorderAbove:
      return cell().attr.border_above > 0;
    case tcColBorder:
      return int(cell().attr.col_border);
    case tcCellBorder:
      return int(cell().attr.cell_border);
    case tcBorderMode:
      return int(cell().attr.border_mode);
    case tcKeepWithNext:
    case tcMarginTop:
    case tcMarginBottom:
    case tcRowHeight: {
      if (row1 < 0 || row1 > nrows)
        throw CellRangeError("TableCell: no row " + std::to_string(row1));
      const Row& r = rows[row1];
      if (sel == tcKeepWithNext) return r.keep_with_next;
      return sel == tcMarginTop      ? r.margin_top
             : sel == tcMarginBottom ? r.margin_bottom
                                     : r.min_height;
    }
    default:
      throw SurfaceError("TableCell: unknown selector " + std::to_string(sel));
  }
}

void Table::Set(int sel, const CellValue& v, int row1, int col1, int row2, int col2) {
  switch (sel) {  // settings of the whole table
    case tcIndent:
      indent = v.AsLength();
      return;
    case tcRows:
      Resize(int(v.Number()), int(columns.size()));
      return;
    case tcCols:
      Resize(BodyRows(), int(v.Number()));
      return;
    case tcRepeatHeader:
      repeat_header = v.AsFlag();
      return;
    case tcKeepTogether:
      keep_together = v.AsFlag();
      return;
    case tcRowHeader:
      keep_header_with_body = v.AsFlag();
      return;
    case tcInsertCol: {
      const int at = int(v.Number());
      if (at < 1 || at > int(columns.size()) + 1)
        throw CellRangeError("TableCell: cannot insert a column at " + std::to_string(at));
      columns.insert(columns.begin() + (at - 1), ColumnFormat{Twips::Inches(1)});
      for (auto& r : rows)
        if (int(r.cells.size()) >= at - 1) r.cells.insert(r.cells.begin() + (at - 1), Cell());
      return;
    }
    case tcColWidth: {
      const Twips w = v.AsLength();
      const int last = col2 >= 1 ? col2 : col1;
      const int first = col1 < 1 && col2 < 1 ? 1 : col1;
      const int end = col1 < 1 && col2 < 1 ? int(columns.size()) : last;
      if (first < 1 || end > int(columns.size()) || first > end)
        throw CellRangeError("TableCell: no column " + std::to_string(col1));
      for (int c = first; c <= end; ++c) columns[c - 1].width = w;
      return;
    }
    default:
      break;
  }

  // Everything else applies to a rectangle of cells.
  const int ncols = int(columns.size()), nrows = BodyRows();
  Range r{row1, col1, row2 < 0 ? row1 : row2, col2 < 0 ? col1 : col2};
  if (row1 == -1) r = {1, col1, nrows, col2 < 0 ? col1 : col2};  // no row: all rows of the column
  if (r.c1 <= 0 && WholeRowSelector(sel)) {                      // column 0: the row as a whole
    r.c1 = 1;
    if (r.c2 <= 0) r.c2 = ncols;
  }
  if (r.r1 > r.r2) std::swap(r.r1, r.r2);
  if (r.c1 > r.c2) std::swap(r.c1, r.c2);
  if (r.r1 < 0 || r.r2 > nrows || r.c1 < 1 || r.c2 > ncols)
    throw CellRangeError("TableCell: cells (" + std::to_string(row1) + ", " + std::to_string(col1) +
                         ") to (" + std::to_string(r.r2) + ", " + std::to_string(r.c2) +
                         ") lie outside a table of " + std::to_string(nrows) + " rows and " +
                         std::to_string(ncols) + " columns");

  if (sel == tcKeepWithNext) {
    const bool keep = v.AsFlag();
    for (int row = r.r1; row <= r.r2; ++row) rows[row].keep_with_next = keep;
    return;
  }
  if (sel == tcMarginTop || sel == tcMarginBottom || sel == tcRowHeight) {
    const Twips len = v.AsLength();
    for (int row = r.r1; row <= r.r2; ++row) {
      Row& target = rows[row];
      (sel == tcMarginTop      ? target.margin_top
       : sel == tcMarginBottom ? target.margin_bottom
                               : target.min_height) = len;
    }
    return;
  }

  // Convert once, outside the loop, so a bad value raises before any change.
  std::string text;
  double number = 0;
  if (sel == tcText)
    text = v.String();
  else
    number = v.Number();
  for (int row = r.r1; row <= r.r2; ++row) {
    for (int col = r.c1; col <= r.c2; ++col) {
      Cell& c = rows[row].cells[col - 1];
      auto flag = [&]() { return int8_t(number != 0 ? 1 : 0); };
      switch (sel) {
        case tcText:
          c.text = text;
          break;
        case tcRowBorderAbove:
          c.attr.border_above = flag();
          break;
        case tcColBorder:
          c.attr.col_border = flag();
          break;
        case tcColSpan:
          c.attr.col_span = int16_t(std::max(1.0, number));
          break;
        case tcRowSpan:
          c.attr.row_span = int16_t(std::max(1.0, std::min(number, 32000.0)));
          break;
        case tcAlign:
          c.attr.align = int8_t(number);
          break;
        case tcBackColor:
          c.attr.back_color = int64_t(number);
          break;
        case tcForeColor:
          c.attr.fore_color = int64_t(number);
          break;
        case tcFontSize:
          c.attr.font_size = float(number);
          break;
        case tcFontBold:
          c.attr.bold = flag();
          break;
        case tcFontItalic:
          c.attr.italic = flag();
          break;
        case tcBorderMode:
          c.attr.border_mode = int8_t(number);
          break;
        case tcNoWrap:
          c.attr.no_wrap = flag();
          break;
        case tcCellBorder:
          c.attr.cell_border = int8_t(number);
          break;
        default:
          throw SurfaceError("TableCell: unknown selector " + std::to_string(sel));
      }
    }
  }
}

void Table::Normalise() {
  const int ncols = int(columns.size()), nrows = int(rows.size());
  for (int row = 0; row < nrows; ++row) {
    rows[row].cells.resize(ncols);
    for (int col = 0; col < ncols; ++col) {
      auto& a = rows[row].cells[col].attr;
      a.col_span = int16_t(std::min<int>(a.col_span, ncols - col));
      // The header row never spans into the body; body spans stop at the last row.
      a.row_span = row == 0 ? 1 : int16_t(std::min<int>(a.row_span, nrows - row));
      std::string& text = rows[row].cells[col].text;
      if (!IsPlainAscii(text)) text = ComposeText(text);
    }
  }
}

}  // namespace orv::frame
