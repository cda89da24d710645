// The table operations of the print surface and the drawing of a laid-out
// table into the display list.
#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include "frame/surface/surface.h"
#include "frame/surface/surface_error.h"
#include "frame/surface/table_layout.h"

namespace orv::frame {

void PrintSurface::AddTable(std::string_view format, std::string_view header, std::string_view body,
                            std::optional<uint32_t> header_color,
                            std::optional<uint32_t> body_color, bool append) {
  RequireDrawable("AddTable");
  if (building_table_) {
    table_->Add(format, header, body, header_color, body_color, append, style_);
    return;
  }
  // A table of one call is laid out at once: one Table serves them all,
  // its rows' room kept from one to the next.
  one_call_table_.Add(format, header, body, header_color, body_color, false, style_);
  LayOutTable(one_call_table_, true);
}

void PrintSurface::AddTableRow(std::string_view format, std::string_view header,
                               std::span<std::string> cells, std::optional<uint32_t> header_color,
                               std::optional<uint32_t> body_color) {
  RequireDrawable("AddTableRow");
  if (building_table_) throw SurfaceError("AddTableRow between StartTable and EndTable");
  one_call_table_.AddRow(format, header, cells, header_color, body_color, style_);
  LayOutTable(one_call_table_, true);
}

void PrintSurface::AddTableRows(std::string_view format, std::string_view header,
                                std::span<std::string> cells, size_t per_row,
                                std::optional<uint32_t> header_color,
                                std::optional<uint32_t> body_color) {
  RequireDrawable("AddTableRows");
  if (building_table_) throw SurfaceError("AddTableRows between StartTable and EndTable");
  one_call_table_.AddRows(format, header, cells, per_row, header_color, body_color, style_);
  LayOutTable(one_call_table_, true);
}

void PrintSurface::RecordCells(const Table& table) {
  // The cells as the report gave them, for the CSV of the document: the
  // text is already unescaped and composed, and is not yet broken into
  // lines or fitted to its column.
  render::TableCells cells;
  cells.page = page_ + 1;
  cells.has_header = table.has_header;
  const size_t first = table.has_header ? 0 : 1;
  size_t count = 0, bytes = 0;
  for (size_t r = first; r < table.rows.size(); ++r) {
    count += table.rows[r].cells.size();
    for (const Cell& cell : table.rows[r].cells) bytes += cell.text.size();
  }
  cells.rows.Reserve(table.rows.size() - std::min(first, table.rows.size()), count, bytes);
  for (size_t r = first; r < table.rows.size(); ++r) {
    cells.rows.StartRow();
    for (const Cell& cell : table.rows[r].cells) cells.rows.AddCell(cell.text);
  }
  doc_.tables.push_back(std::move(cells));
}

void PrintSurface::StartTable() {
  RequireDrawable("StartTable");
  building_table_ = true;
  table_ = std::make_unique<Table>();
}

void PrintSurface::EndTable() {
  RequireDrawable("EndTable");
  if (!building_table_) throw SurfaceError("EndTable without StartTable");
  building_table_ = false;
  std::unique_ptr<Table> t = std::move(table_);
  LayOutTable(*t, true);
}

void PrintSurface::TableHeaderRows(int n) {
  if (n < 0) throw SurfaceError("TableHeaderRows must not be negative");
  header_rows_ = n;
}

void PrintSurface::MeasureTable(std::string_view spelled) {
  // format ";" header ";" body: neither the format nor the header holds a ";".
  const size_t a = spelled.find(';');
  const size_t b = a == std::string_view::npos ? a : spelled.find(';', a + 1);
  Table t;
  t.Add(spelled.substr(0, a), a == std::string_view::npos ? "" : spelled.substr(a + 1, b - a - 1),
        b == std::string_view::npos ? "" : spelled.substr(b + 1), std::nullopt, std::nullopt, false,
        style_);
  LayOutTable(t, false);
}

namespace {

// Which lines a TableBorder value draws. 0 none; 3 the inner grid without the
// box; 4 the box; 7 box and grid; 8 the box and a rule under the header;
// 9 the box and lines between rows. Other values draw the box.
struct BorderStyle {
  bool box = false, inner_h = false, inner_v = false, header_rule = false;
};

BorderStyle BorderFor(int code) {
  switch (code) {
    case 0:
      return {};
    case 3:
      return {false, true, true, true};
    case 7:
      return {true, true, true, true};
    case 8:
      return {true, false, false, true};
    case 9:
      return {true, true, false, true};
    default:
      return {true, false, false, false};
  }
}

constexpr Twips kTableLine = Twips(10);  // half a point
void AddBox(std::vector<render::DisplayItem>& items, Twips x1, Twips y1, Twips x2, Twips y2) {
  const render::Rgb black{0, 0, 0};
  items.emplace_back(render::Line{x1, y1, x2, y1, kTableLine, black, false});
  items.emplace_back(render::Line{x2, y1, x2, y2, kTableLine, black, false});
  items.emplace_back(render::Line{x1, y2, x2, y2, kTableLine, black, false});
  items.emplace_back(render::Line{x1, y1, x1, y2, kTableLine, black, false});
}

constexpr uint8_t kCoveredByRowSpan = 1, kCoveredByColSpan = 2;

// Collects ruled pieces along one line and joins those that touch, so a grid
// is one line per boundary and page, not one per cell.
class LineMerger {
 public:
  explicit LineMerger(std::vector<render::DisplayItem>& out) : out_(out) {}
  void Add(Twips x1, Twips y1, Twips x2, Twips y2) {
    if (open_ && x1 == x2 && cur_.x1 == x1 && cur_.x2 == x2 && cur_.y2 == y1) {
      cur_.y2 = y2;
      return;
    }
    if (open_ && y1 == y2 && cur_.y1 == y1 && cur_.y2 == y2 && cur_.x2 == x1) {
      cur_.x2 = x2;
      return;
    }
    Flush();
    cur_ = render::Line{x1, y1, x2, y2, kTableLine, {0, 0, 0}, false};
    open_ = true;
  }
  void Flush() {
    if (open_) out_.emplace_back(cur_);
    open_ = false;
  }

 private:
  std::vector<render::DisplayItem>& out_;
  render::Line cur_;
  bool open_ = false;
};

}  // namespace

void PrintSurface::LayOutTable(Table& table, bool draw) {
  table.Normalise();
  if (table.Empty() || table.columns.empty()) {
    if (!draw) measured_height_ = Twips(0);
    return;  // nothing drawn, the pen stays
  }
  const int ncols = int(table.columns.size());
  const int nrows = int(table.rows.size());

  TableScratch own;
  const bool shared = !table_scratch_busy_;
  TableScratch& scratch = shared ? table_scratch_ : own;
  struct Release {
    bool& busy;
    bool shared;
    ~Release() {
      if (shared) busy = false;
    }
  } release{table_scratch_busy_, shared};
  table_scratch_busy_ = true;

  // Which cells another cell's span covers.
  std::vector<uint8_t>& covered = scratch.covered;
  covered.assign(size_t(nrows) * ncols, 0);
  bool any_row_span = false;
  for (int r = 0; r < nrows; ++r) {
    for (int c = 0; c < ncols; ++c) {
      if (covered[size_t(r) * ncols + c]) continue;
      const auto& a = table.rows[r].cells[c].attr;
      if (a.row_span <= 1 && a.col_span <= 1) continue;  // most cells cover only themselves
      for (int rr = r; rr < r + a.row_span; ++rr)
        for (int cc = c; cc < c + a.col_span; ++cc)
          if (rr != r || cc != c)
            covered[size_t(rr) * ncols + cc] |= rr != r ? kCoveredByRowSpan : kCoveredByColSpan;
      any_row_span = any_row_span || a.row_span > 1;
    }
  }

  // 0. Across. TextAlign 1 centres the table between the margins, 2 sets it
  //    at the right margin, and anything else at the left margin and
  //    indents. A table wider than the room it has is scaled to fit that
  //    room: its columns in proportion and its type with them.
  const int h_align = ((align_ % 4) + 4) % 4;
  const Twips band_left = ColumnLeft(), band_right = ColumnRight();
  Twips natural_width;
  for (const auto& col : table.columns) natural_width += col.width;
  const Twips indented = band_left + indent_left_ + table.indent;
  const Twips room = h_align == 1 || h_align == 2 || indented >= band_right
                         ? band_right - band_left
                         : band_right - indented;
  const double scale =
      natural_width > room && room.value() > 0 ? room.value() / natural_width.value() : 1.0;
  const bool scaled = scale < 1.0;

  std::vector<Twips>& col_x = scratch.col_x;
  col_x.assign(size_t(ncols) + 1, Twips(0));
  for (int c = 0; c < ncols; ++c)
    col_x[c + 1] = col_x[c] + (scaled ? table.columns[c].width * scale : table.columns[c].width);
  const Twips total_width = col_x[ncols];
  const Twips pad_x = scaled ? kCellPadX * scale : kCellPadX;
  Twips left = indented;
  if (h_align == 1) left = band_left + (band_right - band_left - total_width) / 2 + table.indent;
  if (h_align == 2 || (scaled && h_align != 1)) left = band_right - total_width;
  if (h_align == 1 && scaled) left = band_left;

  struct CellFont {
    FontHandle font;
    double size;
  };
  // The fonts of the table's styles, bold and italic or not, looked up once
  // a table rather than once a cell.
  std::vector<std::optional<FontHandle>>& style_fonts = scratch.style_fonts;
  style_fonts.assign(table.styles.size() * 4, std::nullopt);
  auto style_font = [&](uint16_t style, bool bold, bool italic) {
    auto& font = style_fonts[size_t(style) * 4 + (bold ? 2 : 0) + (italic ? 1 : 0)];
    if (!font) font = Font(table.styles[style].family, bold, italic);
    return *font;
  };
  auto cell_font = [&](const Row& row, const Cell& cell) {
    const TextStyle& st = table.styles[row.style];
    const bool bold = cell.attr.bold >= 0 ? cell.attr.bold != 0 : st.bold;
    const bool italic = cell.attr.italic >= 0 ? cell.attr.italic != 0 : st.italic;
    const double size = cell.attr.font_size > 0 ? double(cell.attr.font_size) : st.size;
    return CellFont{style_font(row.style, bold, italic), scaled ? size * scale : size};
  };
  // A cell's lines. A word or figure wider than the cell is never cut: the
  // cell's text is set smaller until it fits, down to the legible floor.
  struct CellLines {
    std::vector<TextLine> lines;
    double size;
  };
  // The lines depend on nothing but the text, the font, its size, the room
  // and the wrapping, so a cell that recurs (the column heads repeated on
  // every page of a list, whose longer heads wrap) is taken as broken the
  // last time.
  auto cell_lines = [&](const Cell& cell, const CellFont& cf, Twips room) {
    const bool wrap = cell.attr.no_wrap <= 0;
    for (const BrokenCell& b : broken_cells_)
      if (b.metrics == cf.font.metrics && b.size == cf.size && b.room == room && b.wrap == wrap &&
          b.text == cell.text)
        return CellLines{b.lines, b.fitted};
    CellLines out{BreakLines(cell.text, Measurer(cf.font.metrics, cf.size), room, room, wrap),
                  cf.size};
    const double fitted = FitSize(cf.size, WidestLine(out.lines), room);
    if (fitted < cf.size) {
      out.size = fitted;
      out.lines = BreakLines(cell.text, Measurer(cf.font.metrics, fitted), room, room, wrap);
    }
    BrokenCell& kept = broken_cells_.size() < kBrokenCellsKept
                           ? broken_cells_.emplace_back()
                           : broken_cells_[next_broken_cell_++ % kBrokenCellsKept];
    kept = BrokenCell{cell.text, cf.font.metrics, cf.size, room, wrap, out.lines, out.size};
    return out;
  };
  auto span_width = [&](int c, const Cell& cell) {
    return col_x[c + cell.attr.col_span] - col_x[c];
  };

  // Most cells are one line holding all their text at the row's size. For
  // those the row heights take the width alone (SingleLineWidth, the width
  // BreakLines would give) and keep it (NaN for a cell not kept), and the
  // cell is drawn as one run of its text; other cells are broken into lines.
  std::vector<Twips>& one_line = scratch.one_line;
  one_line.assign(draw ? size_t(nrows) * ncols : 0, Twips(std::numeric_limits<double>::quiet_NaN()));
  // Cells of several lines (an address, two phone numbers on two lines, a
  // note wrapped over a few) keep them as places in their text
  // (PlacedLines), for every cell: `short_of` says which of `short_lines`
  // are a cell's.
  using ShortSpan = TableScratch::ShortSpan;
  std::vector<ShortLine>& short_lines = scratch.short_lines;
  short_lines.clear();
  std::vector<ShortSpan>& short_of = scratch.short_of;
  short_of.assign(draw ? size_t(nrows) * ncols : 0, ShortSpan{});
  // The others (a tab, a word set smaller to fit) keep the lines the row
  // heights broke them into for drawing, by cell number (row * columns +
  // column), made in rising order, up to a bound, so that a table of
  // thousands of such cells does not hold all their lines at once; past it
  // they are broken again when drawn.
  constexpr size_t kKeptBroken = 4096;
  std::vector<std::pair<size_t, CellLines>> broken;

  // 1. Row heights: the tallest cell that does not span rows, with the row's
  //    margins; a row spanned over takes no extra height from that cell.
  std::vector<int>& drawn = scratch.drawn;  // table rows in drawing order
  drawn.clear();
  if (table.has_header) drawn.push_back(0);
  for (int r = 1; r < nrows; ++r) drawn.push_back(r);
  std::vector<Twips>& heights = scratch.heights;
  heights.assign(drawn.size(), Twips(0));
  for (size_t k = 0; k < drawn.size(); ++k) {
    const Row& row = table.rows[drawn[k]];
    const TextStyle& st = table.styles[row.style];
    Twips h = style_font(row.style, st.bold, st.italic)
                  .metrics->LineHeight(scaled ? st.size * scale : st.size);
    for (int c = 0; c < ncols; ++c) {
      if (covered[size_t(drawn[k]) * ncols + c]) continue;
      const Cell& cell = row.cells[c];
      const CellFont cf = cell_font(row, cell);
      const Twips lh = cf.font.metrics->LineHeight(cf.size);
      if (cell.attr.row_span > 1) continue;
      if (cell.text.empty()) {
        h = std::max(h, lh);
        continue;
      }
      const Twips room = span_width(c, cell) - pad_x * 2;
      // A column of a list repeats itself down the rows (the provider and
      // invoice number on every line of an invoice, the date on most, a
      // plan's standard note): a cell that holds what the cell above it
      // held, in the same font, size and span, has the lines that cell had,
      // at their widths, and the same places in the same text.
      if (draw && k > 0) {
        const size_t up_at = size_t(drawn[k - 1]) * ncols + c;
        const Twips above_width = one_line[up_at];
        const ShortSpan above_lines = short_of[up_at];
        const Row& above_row = table.rows[drawn[k - 1]];
        const Cell& up = above_row.cells[c];
        if ((!std::isnan(above_width.value()) || above_lines.count > 0) &&
            above_row.style == row.style && up.text == cell.text &&
            up.attr.bold == cell.attr.bold && up.attr.italic == cell.attr.italic &&
            up.attr.font_size == cell.attr.font_size && up.attr.no_wrap == cell.attr.no_wrap &&
            up.attr.col_span == cell.attr.col_span) {
          h = std::max(h, lh * double(above_lines.count > 0 ? above_lines.count : 1));
          one_line[size_t(drawn[k]) * ncols + c] = above_width;
          short_of[size_t(drawn[k]) * ncols + c] = above_lines;
          continue;
        }
      }
      const FontMeasure measure{cf.font.metrics, cf.size};
      // One pass over the text tells a cell of one line from one of a few:
      // the one line of a text that neither breaks nor wraps is the whole
      // text, at the width SingleLineWidth gives.
      const size_t before = short_lines.size();
      if (PlacedLines(cell.text, measure, room, cell.attr.no_wrap <= 0,
                      LineEnds::kAtBreaksAndWraps, short_lines)) {
        const size_t count = short_lines.size() - before;
        h = std::max(h, lh * double(count));
        if (draw && count == 1) {
          one_line[size_t(drawn[k]) * ncols + c] = short_lines[before].width;
          short_lines.resize(before);
        } else if (draw) {
          short_of[size_t(drawn[k]) * ncols + c] = {uint32_t(before), uint32_t(count)};
        } else {
          short_lines.resize(before);
        }
        continue;
      }
      CellLines cl = cell_lines(cell, cf, room);
      h = std::max(h, lh * double(cl.lines.size()));
      if (draw && broken.size() < kKeptBroken)
        broken.emplace_back(size_t(drawn[k]) * ncols + c, std::move(cl));
    }
    heights[k] = std::max(h + kCellPadY * 2 + row.margin_top + row.margin_bottom, row.min_height);
  }

  if (!draw) {
    Twips total;
    for (Twips h : heights) total += h;
    measured_height_ = total;
    return;
  }
  RecordCells(table);

  const BorderStyle border = BorderFor(table_border_);

  // 2. Where the rows go. An overlay cannot add pages, so there the table
  //    runs on past the margin. The header keeps with the first body row;
  //    the last body row, the totals of most tables, keeps the row before it
  //    with it; rows the report marked keep with the row after them.
  PlacementRules rules;
  rules.header_rows = table.has_header ? std::max(1, header_rows_) : 0;
  rules.repeat_header = table.repeat_header;
  rules.keep_together = table.keep_together;
  // The rows' flags are the scratch list's, lent to the rules until the
  // rows are placed.
  rules.keep_with_next.swap(scratch.keep_with_next);
  rules.keep_with_next.assign(drawn.size(), false);
  for (size_t k = 0; k < drawn.size(); ++k)
    rules.keep_with_next[k] = table.rows[drawn[k]].keep_with_next;
  const size_t nbody = drawn.size() - size_t(table.has_header ? 1 : 0);
  if (nbody >= 2) rules.keep_with_next[drawn.size() - 2] = true;

  // 3. A heading kept with this table by KeepWithNext: the table starts on
  //    its page (or takes it along), and, if it is a heading's size, is
  //    repeated above the header on each page the table continues on.
  //    A table kept together starts whole where it starts, so the chain
  //    needs room for all of it.
  Twips first_need;
  for (size_t k = 0; k < drawn.size(); ++k) {
    first_need += heights[k];
    if (!rules.keep_together && !(size_t(rules.header_rows) > k || rules.keep_with_next[k])) break;
  }
  const Mark start = BeginUnit(first_need);
  std::vector<render::DisplayItem> lead;
  Twips lead_top = y_;
  if (keep_ && keep_->page == page_ && y_ - keep_->top <= Twips::Inches(1) &&
      rules.header_rows > 0) {
    const auto& items = CurrentPageRef().items;
    for (size_t i = keep_->item; i < start.item; ++i)
      if (render::TopOf(items[i]) >= keep_->top) lead.push_back(items[i]);
    if (!lead.empty()) {
      rules.repeat_lead = y_ - keep_->top;
      lead_top = keep_->top;
    }
  }

  const Twips bottom =
      state_ == State::kOpen ? PageBottom() : Twips(std::numeric_limits<double>::max() / 4);
  const TablePlacement placement = PlaceRows(heights, rules, y_, PageTop(), bottom);
  rules.keep_with_next.swap(scratch.keep_with_next);

  // Rows drawn on one page, for the borders of that page's part of the table.
  using Placed = TableScratch::Placed;
  std::vector<Placed>& segment = scratch.segment;
  segment.clear();

  auto draw_cell = [&](int r, int c, const render::Box& box) {
    const Row& row = table.rows[r];
    const Cell& cell = row.cells[c];
    auto& items = CurrentPageRef().items;
    const int64_t fill = cell.attr.back_color >= 0 ? cell.attr.back_color : row.fill;
    if (fill >= 0) items.emplace_back(render::FilledRect{box, ToRgb(uint32_t(fill))});
    if (cell.attr.cell_border > 0)
      AddBox(items, box.x, box.y, box.x + box.width, box.y + box.height);
    if (cell.text.empty()) return;
    const CellFont cf = cell_font(row, cell);
    const Twips lh = cf.font.metrics->LineHeight(cf.size);
    const Twips room = box.width - pad_x * 2;
    const Twips kept = one_line[size_t(r) * ncols + c];  // drawing: one_line is full
    const bool one = !std::isnan(kept.value());
    const ShortSpan shorts = short_of[size_t(r) * ncols + c];
    const ShortLine* short_line = short_lines.data() + shorts.first;
    CellLines fresh{{}, cf.size};
    const CellLines* kept_lines = nullptr;
    if (!one && shorts.count == 0) {
      const size_t cell_number = size_t(r) * ncols + c;
      const auto it =
          std::lower_bound(broken.begin(), broken.end(), cell_number,
                           [](const auto& kept, size_t number) { return kept.first < number; });
      if (it != broken.end() && it->first == cell_number)
        kept_lines = &it->second;
      else
        fresh = cell_lines(cell, cf, room);
    }
    const CellLines& cl = kept_lines ? *kept_lines : fresh;
    const auto& lines = cl.lines;
    const size_t nlines = one ? 1 : shorts.count > 0 ? shorts.count : lines.size();
    auto line_width = [&](size_t i) {
      return one ? kept : shorts.count > 0 ? short_line[i].width : lines[i].width;
    };
    // tcAlign codes run left, centre, right in threes, each top, middle,
    // bottom; without one the column's flags decide.
    int h = table.columns[c].align, v = table.columns[c].tilde ? 1 : 0;
    if (cell.attr.align >= 0) {
      h = std::min(cell.attr.align / 3, 2);
      v = cell.attr.align % 3;
    }
    const Twips inner_top = box.y + row.margin_top + kCellPadY;
    const Twips inner_h = box.height - row.margin_top - row.margin_bottom - kCellPadY * 2;
    const Twips block = lh * double(nlines);
    Twips top = inner_top;
    if (v == 1) top += (inner_h - block) / 2;
    if (v == 2) top += inner_h - block;
    bool overruns = block > inner_h + Twips(0.5);
    Twips widest;
    for (size_t i = 0; i < nlines; ++i) {
      overruns = overruns || line_width(i) > room + Twips(0.5);
      widest = std::max(widest, line_width(i));
    }
    // Below the floor a word may run into the cell's padding, never past it.
    Twips text_x = box.x + pad_x;
    Twips text_room = room;
    if (widest > room + Twips(0.5)) {
      text_x = box.x;
      text_room = box.width;
    }
    const std::optional<render::Box> clip = overruns ? std::optional(box) : std::nullopt;
    const render::Rgb color = ToRgb(cell.attr.fore_color >= 0 ? uint32_t(cell.attr.fore_color)
                                                              : table.styles[row.style].color);
    // Text set smaller to fit (cl.size) sits on the baseline of the row's
    // size, as EmitSegment places it; table text is never rotated.
    const Twips ascent = cf.font.metrics->Ascent(std::max(cl.size, cf.size));
    auto add_run = [&](std::string_view text, Twips x, Twips width, Twips line_top) {
      if (text.find_first_not_of(' ') == std::string_view::npos) return;  // blanks paint nothing
      AddRun(items, text, cf.font, cl.size, color, x, line_top, line_top + ascent, width, clip);
    };
    for (size_t i = 0; i < nlines; ++i) {
      const Twips line_top = top + lh * double(i);
      if (line_top >= box.y + box.height) break;
      const Twips x = text_x + AlignOffset(h, text_room, line_width(i));
      if (one) {
        add_run(cell.text, x, kept, line_top);
      } else if (shorts.count > 0) {
        add_run(std::string_view(cell.text).substr(short_line[i].offset, short_line[i].length), x,
                short_line[i].width, line_top);
      } else {
        for (const LineSegment& seg : lines[i].segments)
          add_run(seg.text, x + seg.x, seg.width, line_top);
      }
    }
  };

  // Height of a cell that spans rows: the rows it covers on its own page.
  auto span_height = [&](size_t k, int row_span) {
    Twips h = heights[k];
    for (size_t j = k + 1; j < drawn.size() && j < k + size_t(row_span); ++j) {
      if (placement.rows[j].page != placement.rows[k].page) break;
      h += heights[j];
    }
    return h;
  };

  auto draw_row = [&](size_t k, Twips y, bool repeat) {
    const int r = drawn[k];
    for (int c = 0; c < ncols; ++c) {
      const uint8_t cov = covered[size_t(r) * ncols + c];
      const Cell& cell = table.rows[r].cells[c];
      if (cov & kCoveredByColSpan) continue;
      if (cov & kCoveredByRowSpan) {
        // A span cut by a page break starts again at the top of the page.
        if (repeat || k == 0 || placement.rows[k].page == placement.rows[k - 1].page) continue;
      }
      const Twips h =
          cell.attr.row_span > 1 && !repeat ? span_height(k, cell.attr.row_span) : heights[k];
      draw_cell(r, c, render::Box{left + col_x[c], y, span_width(c, cell), h});
    }
    segment.push_back({r, y, heights[k], k});
  };

  auto vertical_wanted = [&](int r, int boundary) {
    const Cell& a = table.rows[r].cells[boundary - 1];
    const Cell& b = table.rows[r].cells[boundary];
    if (covered[size_t(r) * ncols + boundary] & kCoveredByColSpan) return false;
    if (a.attr.col_border >= 0) return a.attr.col_border > 0;
    if (b.attr.col_border >= 0) return b.attr.col_border > 0;
    return border.inner_v;
  };

  auto flush_borders = [&]() {
    if (segment.empty()) return;
    auto& items = CurrentPageRef().items;
    const Twips top = segment.front().y, bot = segment.back().y + segment.back().h;
    const Twips right = left + total_width;
    LineMerger lines(items);
    // Lines between rows and the lines above rows that ask for one.
    for (size_t i = 0; i < segment.size(); ++i) {
      const Placed& p = segment[i];
      const bool header_below =
          border.header_rule && i > 0 && segment[i - 1].row == 0 && p.row != 0;
      for (int c = 0; c < ncols; ++c) {
        const Cell& cell = table.rows[p.row].cells[c];
        const bool spanned =
            any_row_span && (covered[size_t(p.row) * ncols + c] & kCoveredByRowSpan);
        bool want = i > 0 && (border.inner_h || header_below) && !spanned;
        if (cell.attr.border_above >= 0 && !spanned)
          want = cell.attr.border_above > 0 && (i > 0 || !border.box);
        if (want) lines.Add(left + col_x[c], p.y, left + col_x[c + 1], p.y);
      }
      lines.Flush();
    }
    // Lines between columns, row by row so spans and tcColBorder can break them.
    for (int b = 1; b < ncols; ++b) {
      for (const Placed& p : segment)
        if (vertical_wanted(p.row, b)) lines.Add(left + col_x[b], p.y, left + col_x[b], p.y + p.h);
      lines.Flush();
    }
    if (border.box) AddBox(items, left, top, right, bot);
    segment.clear();
  };

  if (scaled) {
    // The record of the scale, where the table starts.
    const Twips top = placement.rows.empty() ? y_ : placement.rows[0].y;
    CurrentPageRef().items.emplace_back(
        render::ScaledBlock{render::Box{left, top, total_width, Twips(0)}, scale});
  }

  const int first_page = page_;
  size_t next_repeat = 0;
  Mark last_row = start;
  for (size_t k = 0; k < drawn.size(); ++k) {
    const RowPlacement& at = placement.rows[k];
    if (first_page + at.page != page_) {
      flush_borders();
      while (page_ < first_page + at.page) OpenPage();
      // The heading and the header block again at the top of the new page.
      if (next_repeat < placement.repeats.size() &&
          placement.repeats[next_repeat].page == at.page) {
        Twips y = placement.repeats[next_repeat++].y;
        for (render::DisplayItem item : lead) {
          render::Shift(item, y - lead_top);
          CurrentPageRef().items.push_back(std::move(item));
        }
        y += rules.repeat_lead;
        for (size_t h = 0; h < size_t(rules.header_rows); ++h) {
          draw_row(h, y, true);
          y += heights[h];
        }
      }
    }
    if (k + 1 == drawn.size()) {
      last_row = Here();
      last_row.top = at.y;
      last_row.table_row = true;
      last_row.left = left;
      last_row.right = left + total_width;
      last_row.box = border.box;
      last_row.rules = border.inner_h;
    }
    draw_row(k, at.y, false);
  }
  flush_borders();

  EndUnit(last_row, false);
  x_ = margin_left_ + indent_left_;
  y_ = placement.end_y;
}

}  // namespace orv::frame
