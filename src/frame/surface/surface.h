// The print surface: the `VSP` member of the host's preview form.
//
// A document of finished pages, the page being written, the pen and the
// current text and table attributes. Every drawing operation lands in the
// display list of a page (platform/render/display_list.h), which the
// renderers paint and tests read. Properties are pairs of overloads: `X()`
// reads and `X(value)` writes, as the reports use them. Lengths are twips;
// where a length is written, a unit string such as ".5in" is accepted too.
#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "frame/surface/color.h"
#include "frame/surface/font_metrics.h"
#include "frame/surface/length.h"
#include "frame/surface/print_host.h"
#include "frame/surface/table_model.h"
#include "frame/surface/text_layout.h"
#include "platform/render/display_list.h"

namespace orv::frame {

// A picture a report can assign to `Picture`: PNG or JPEG, decoded once.
using PictureImage = std::shared_ptr<const render::Image>;
// Loads a picture file; raises SurfaceError if it cannot be read.
PictureImage LoadPicture(const std::string& path);
// Decodes a picture held in memory (a file's bytes, a picture field);
// raises SurfaceError naming `what` if it is not a readable PNG or JPEG.
PictureImage DecodePicture(const std::vector<unsigned char>& data, const std::string& what);

class PrintSurface;

// `TableCell(selector, row1, col1, row2, col2)`, readable and writable.
class TableCellRef {
 public:
  TableCellRef(PrintSurface& s, int sel, int r1, int c1, int r2, int c2)
      : s_(s), sel_(sel), r1_(r1), c1_(c1), r2_(r2), c2_(c2) {}
  TableCellRef& operator=(const CellValue& v);
  CellValue Value() const;
  double Number() const { return Value().Number(); }
  std::string String() const { return Value().String(); }

 private:
  PrintSurface& s_;
  int sel_, r1_, c1_, r2_, c2_;
};

class PrintSurface {
 public:
  // Paper sizes by the codes reports pass to `PaperSize`.
  static constexpr int kPaperLetter = 1;
  static constexpr int kPaperEnvelope10 = 20;

  PrintSurface();

  // The form that prints and shows dialogs; may be null (requests are then
  // only recorded).
  void SetHost(PrintHost* host) { host_ = host; }
  // Whether the document will be written as a PDF file: its pages are then
  // painted for the file on a second thread as each is finished, while the
  // report lays out the next (render::PaintPdfAhead). Takes effect at the
  // next StartDoc. Off by default: a document nobody writes as a PDF would
  // be painted for nothing.
  void PaintPdfAhead(bool on) { paint_pdf_ahead_ = on; }

  // --- Document ---
  void StartDoc();
  void EndDoc();
  void KillDoc();
  void Action(int code);  // 3 StartDoc, 6 EndDoc
  void NewPage();
  void PrintDoc(std::optional<bool> ask = std::nullopt);
  int PrintDialog(int kind);
  void PrinterDevice(const std::string& device);
  const std::string& PrinterDevice() const { return printer_device_; }
  void CancelDialog(bool value) { cancel_dialog_ = value; }
  bool CancelDialog() const { return cancel_dialog_; }
  const std::string& DocName() const { return doc_.name; }
  void DocName(std::string name) { doc_.name = std::move(name); }
  int PageCount() const { return int(doc_.pages.size()); }
  int CurrentPage() const { return page_ + 1; }
  void StartOverlay(int page, bool clear = false);
  void EndOverlay();

  // Whether a document is open for writing (after StartDoc, before EndDoc).
  bool IsOpen() const { return state_ == State::kOpen; }
  // Times PrintDoc was called since the last StartDoc.
  int PrintRequests() const { return print_requests_; }
  // The pages so far; the renderers take this.
  const render::Document& Document() const { return doc_; }
  // The letters of a document printed as several (a run of statements),
  // for writing one file per letter; StartDoc clears them.
  void Letters(std::vector<render::Letter> letters) { doc_.letters = std::move(letters); }
  // Who made the document and how (written into its PDF's metadata). The
  // host sets it before the run; StartDoc keeps it.
  void Identity(render::DocumentIdentity identity) { doc_.identity = std::move(identity); }

  // --- Page geometry ---
  int Orientation() const { return orientation_; }
  void Orientation(int value);
  int PaperSize() const { return paper_; }
  void PaperSize(int code);
  // Which way round the envelope is reported. Envelopes feed long edge
  // first, so in portrait (`Orientation` 0) the No. 10 envelope is 9.5 in
  // wide and 4.125 in high, and a report that sets it and writes across it
  // fits whether or not it checks the width. Some drivers report it the
  // narrow way round in portrait; `EnvelopeNarrowFirst(true)` behaves as
  // they do, so reports can be tried against both.
  bool EnvelopeNarrowFirst() const { return envelope_narrow_first_; }
  void EnvelopeNarrowFirst(bool narrow) { envelope_narrow_first_ = narrow; }
  Twips PageWidth() const;
  Twips PageHeight() const;
  Twips MarginLeft() const { return margin_left_; }
  void MarginLeft(Length v) { margin_left_ = v; }
  Twips MarginTop() const { return margin_top_; }
  void MarginTop(Length v) { margin_top_ = v; }
  Twips MarginRight() const { return margin_right_; }
  void MarginRight(Length v) { margin_right_ = v; }
  Twips MarginBottom() const { return margin_bottom_; }
  void MarginBottom(Length v) { margin_bottom_ = v; }
  Twips MarginHeader() const { return margin_header_; }
  void MarginHeader(Length v) { margin_header_ = v; }
  int Columns() const { return columns_; }
  void Columns(int n);
  Twips ColumnSpacing() const { return column_spacing_; }
  void ColumnSpacing(Length v) { column_spacing_ = v; }
  void NewColumn();
  // One dot of the output device. The document is laid out for the printer,
  // taken as 300 dots per inch, so the letterhead's 400-dot logo box is
  // 1.33 inches square, as it prints.
  double TwipsPerPixelX() const { return 4.8; }
  double TwipsPerPixelY() const { return 4.8; }

  // --- Text ---
  void Text(std::string_view text);
  void InlineText(std::string_view text);
  void TextBox(std::string_view text, Length x, Length y, Length width, Length height,
               bool flag = false);
  const std::string& FontName() const { return style_.family; }
  void FontName(std::string family);
  double FontSize() const { return style_.size; }
  void FontSize(double points);
  bool FontBold() const { return style_.bold; }
  void FontBold(bool bold);
  bool FontItalic() const { return style_.italic; }
  void FontItalic(bool italic);
  uint32_t TextColor() const { return style_.color; }
  void TextColor(uint32_t color) { style_.color = color; }
  int TextAngle() const { return angle_; }
  void TextAngle(int tenths) { angle_ = tenths; }
  int TextAlign() const { return align_; }
  void TextAlign(int code) { align_ = code; }
  Twips IndentLeft() const { return indent_left_; }
  void IndentLeft(Length v) { indent_left_ = v; }
  Twips IndentFirst() const { return indent_first_; }
  void IndentFirst(Length v) { indent_first_ = v; }
  Twips IndentHanging() const { return indent_hanging_; }
  void IndentHanging(Length v) { indent_hanging_ = v; }
  Twips CurrentX() const { return x_; }
  void CurrentX(Length v) { x_ = v; }
  Twips CurrentY() const { return y_; }
  void CurrentY(Length v) { y_ = v; }
  Twips TextWidth(std::string_view text);
  Twips TextHeight(std::string_view text);

  // --- Lines and pictures ---
  void DrawLine(Length x1, Length y1, Length x2, Length y2);
  Twips PenWidth() const { return pen_width_; }
  void PenWidth(Length v) { pen_width_ = v; }
  int PenStyle() const { return pen_style_; }
  void PenStyle(int style) { pen_style_ = style; }
  void PenColor(uint32_t color) { pen_color_ = color; }
  void PictureLeft(Length v) { picture_box_.x = v; }
  void PictureTop(Length v) { picture_box_.y = v; }
  void PictureRight(Length v) { picture_right_ = v; }
  void PictureBottom(Length v) { picture_bottom_ = v; }
  void Picture(const PictureImage& image);

  // --- Tables ---
  void AddTable(std::string_view format, std::string_view header, std::string_view body,
                std::optional<uint32_t> header_color = std::nullopt,
                std::optional<uint32_t> body_color = std::nullopt, bool append = false);
  // A table of one body row, laid out at once as AddTable lays out a table
  // given outside StartTable ... EndTable, whose row comes as its cells'
  // texts rather than in a table string: the texts are data as they stand,
  // never escaped, and nothing in them separates cells or rows. Each text
  // is taken into the table and `cells` handed back empty, its strings
  // keeping room from an earlier table, so a list that prints each record
  // as a table of its own builds every record in the same strings. Not
  // between StartTable and EndTable (SurfaceError).
  void AddTableRow(std::string_view format, std::string_view header, std::span<std::string> cells,
                   std::optional<uint32_t> header_color = std::nullopt,
                   std::optional<uint32_t> body_color = std::nullopt);
  // As AddTableRow for a table of several body rows: `cells` holds them one
  // after another, `per_row` texts to a row (the last may have fewer), and
  // is handed back as AddTableRow hands back its cells. No cells draw the
  // header alone, as an AddTable with an empty body does.
  void AddTableRows(std::string_view format, std::string_view header,
                    std::span<std::string> cells, size_t per_row,
                    std::optional<uint32_t> header_color = std::nullopt,
                    std::optional<uint32_t> body_color = std::nullopt);
  void StartTable();
  void EndTable();
  int TableBorder() const { return table_border_; }
  void TableBorder(int style) { table_border_ = style; }
  TableCellRef TableCell(int selector, int row1 = -1, int col1 = -1, int row2 = -1, int col2 = -1) {
    return TableCellRef(*this, selector, row1, col1, row2, col2);
  }
  void MeasureTable(std::string_view spelled);
  Twips MeasuredTableHeight() const { return measured_height_; }
  void TableHeaderRows(int n);

  // --- Keeping things together ---
  // Keeps what was just written on the page of the first line or row of what
  // is written next. "What was just written" is the last paragraph of
  // `Text`, or the last row of the last table; a report calls it after a
  // heading, a group's name line or the last row before a closing note, and
  // the surface moves that to the next page rather than leave it alone at a
  // page's foot. Marks chain: a heading marked after a heading marked keeps
  // both with what follows. Blank paragraphs are spacing: they stay in a
  // chain, and a mark set after one refers to what was written before it.
  // When the next thing is a table that runs onto further pages, a heading
  // kept with it is repeated above its header there. `NewPage` drops the
  // mark; where a whole chain would not fit on one page it stays where it is.
  // Rows inside one table keep together by `tcKeepWithNext`; the surface
  // itself keeps a table's header with its first body row and its last body
  // row (the totals) with the row before it.
  void KeepWithNext();

  // Where free text may reach: a printer leaves this band at the paper's
  // edges blank, so text placed by position is kept this far inside.
  static constexpr Twips kPaperInset = Twips(360);

  // Space between a cell's edge and its text.
  static constexpr Twips kCellPadX = Twips(60);
  static constexpr Twips kCellPadY = Twips(15);

 private:
  friend class TableCellRef;
  enum class State { kNone, kOpen, kEnded, kOverlay };

  struct FontHandle {
    uint16_t index;  // in the document's font table
    const FontMetrics* metrics;
  };

  void RequireOpen(const char* what) const;
  void RequireDrawable(const char* what) const;
  void RequireNoTableUnderConstruction(const char* what) const;
  void OpenPage();
  // The page being written. An overlay writes into a finished page through
  // the store's Reopen: what it draws goes after what the page holds,
  // without the page being unpacked.
  render::Page& CurrentPageRef() {
    return state_ == State::kOverlay ? doc_.pages.Reopen(size_t(page_)) : doc_.pages[page_];
  }
  Twips PageTop() const { return margin_top_; }
  Twips PageBottom() const { return PageHeight() - margin_bottom_; }
  Twips ColumnLeft() const;
  Twips ColumnRight() const;
  FontHandle Font(const std::string& family, bool bold, bool italic);
  FontHandle CurrentFont() { return Font(style_.family, style_.bold, style_.italic); }
  MeasureFn Measurer(const FontMetrics* m, double size) const;
  // Text set smaller than its line (`size` below `line_size`) sits on the
  // line's baseline, so a row or a line still reads as one.
  void EmitLine(const TextLine& line, Twips x, Twips top, const FontHandle& f, double size,
                render::Rgb color, const std::optional<render::Box>& clip,
                double line_size = 0);
  // One piece of a line, `seg_x` from the line's start at `x`.
  void EmitSegment(std::string_view text, Twips x, Twips seg_x, Twips width, Twips top,
                   const FontHandle& f, double size, render::Rgb color,
                   const std::optional<render::Box>& clip, double line_size);
  // A run of text at the end of `items` (a page's list), unrotated: the
  // one place a run is made, for paragraphs and table cells alike.
  static render::TextRun& AddRun(std::vector<render::DisplayItem>& items, std::string_view text,
                                 const FontHandle& f, double size, render::Rgb color, Twips x,
                                 Twips top, Twips baseline, Twips width,
                                 const std::optional<render::Box>& clip);
  void LayOutTable(Table& table, bool draw);
  // The working lists of one table's layout (LayOutTable says what each
  // holds), kept from one table to the next: a list that prints each record
  // as a table of its own lays out thousands of tables, and each would
  // otherwise allocate and free them all again.
  struct TableScratch {
    struct ShortSpan {
      uint32_t first = 0, count = 0;
    };
    struct Placed {
      int row;  // table row
      Twips y, h;
      size_t k;  // index in `drawn`
    };
    std::vector<uint8_t> covered;
    std::vector<Twips> col_x;
    std::vector<std::optional<FontHandle>> style_fonts;
    std::vector<Twips> one_line;
    std::vector<ShortLine> short_lines;
    std::vector<ShortSpan> short_of;
    std::vector<int> drawn;
    std::vector<Twips> heights;
    std::vector<bool> keep_with_next;
    std::vector<Placed> segment;
  };
  // Keeps the cells of a table being drawn in the document (Document::tables).
  void RecordCells(const Table& table);

  // Where a paragraph, a table row or a chain of them starts: its page, the
  // index of its first display item there, and its top. For a table row,
  // the table's edges and whether it draws a box or lines between rows, so
  // that a move closes the table where the row leaves it and opens it again
  // on the new page.
  struct Mark {
    int page = -1;
    size_t item = 0;
    Twips top;
    bool table_row = false;
    Twips left, right;
    bool box = false, rules = false;
  };
  // A mark at the pen, on the current page after what it already holds.
  Mark Here() {
    Mark m;
    m.page = page_;
    m.item = CurrentPageRef().items.size();
    m.top = y_;
    return m;
  }
  // The start of a paragraph or table: moves the marked chain that waits for
  // it to a new page when `need` (its first line or rows) does not fit under
  // it. Returns where the unit starts.
  Mark BeginUnit(Twips need);
  // The end of a paragraph or table whose last line or row starts at `last`;
  // a blank paragraph changes nothing.
  void EndUnit(const Mark& last, bool blank);
  // Moves what was drawn on the current page from `from` on, at or below its
  // top, to the top of a new page.
  void CarryToNewPage(const Mark& from);

  PrintHost* host_ = nullptr;
  bool paint_pdf_ahead_ = false;
  render::Document doc_;
  State state_ = State::kNone;
  int page_ = 0;
  int overlay_return_page_ = 0;
  Twips x_, y_;
  int print_requests_ = 0;
  std::string printer_device_;
  bool cancel_dialog_ = true;

  int orientation_ = 0;
  int paper_ = kPaperLetter;
  bool envelope_narrow_first_ = false;
  Twips margin_left_ = Twips(1440), margin_top_ = Twips(1440), margin_right_ = Twips(1440),
        margin_bottom_ = Twips(1440), margin_header_ = Twips(720);
  int columns_ = 1;
  int column_ = 0;
  Twips column_spacing_ = Twips(720);

  TextStyle style_;
  int angle_ = 0;
  int align_ = 0;
  Twips indent_left_, indent_first_, indent_hanging_;

  Twips pen_width_;
  int pen_style_ = 0;
  uint32_t pen_color_ = 0;
  render::Box picture_box_;
  Twips picture_right_, picture_bottom_;

  Mark last_unit_;                // the last paragraph or table row written
  std::optional<Mark> keep_;      // a chain waiting for the next unit
  std::optional<Mark> answered_;  // the chain the last unit went with

  int table_border_ = 0;
  int header_rows_ = 1;
  bool building_table_ = false;
  std::unique_ptr<Table> table_;
  Table one_call_table_;  // AddTable's outside StartTable ... EndTable
  Twips measured_height_;
  // Layout does not call back into the surface's tables, so one set of
  // lists serves; `table_scratch_busy_` guards against it all the same.
  TableScratch table_scratch_;
  bool table_scratch_busy_ = false;
  // The last cells of tables broken into lines by BreakLines, with what
  // they were broken for (LayOutTable's cell_lines); a few, replaced in
  // turn. StartDoc does not clear them: the lines do not depend on the
  // document.
  struct BrokenCell {
    std::string text;
    const FontMetrics* metrics = nullptr;
    double size = 0;
    Twips room;
    bool wrap = true;
    std::vector<TextLine> lines;
    double fitted = 0;  // the size the lines are set at
  };
  static constexpr size_t kBrokenCellsKept = 8;
  std::vector<BrokenCell> broken_cells_;
  size_t next_broken_cell_ = 0;
  // The lines of the last TextBox, kept from one box to the next: a sheet
  // of labels sets one box a label.
  std::vector<ShortLine> box_lines_;
  // Paragraphs of Text broken into lines (and justified, for justified
  // text), with what they were broken for: a run of letters writes the
  // same paragraphs on every letter. The lines depend on nothing but the
  // text, the font, its size and the room on each line, so StartDoc does
  // not clear them; past kBrokenParagraphsKept they are dropped together.
  // Each is shared with the Text that sets it, which keeps it while a new
  // page's furniture may set paragraphs of its own.
  struct BrokenParagraph {
    const FontMetrics* metrics = nullptr;
    double size = 0;
    Twips column_width, first_off, next_off;
    bool justified = false;
    double fitted = 0;  // the size the lines are set at
    std::vector<TextLine> lines;
  };
  std::shared_ptr<const BrokenParagraph> ParagraphLines(std::string_view text,
                                                        const FontMetrics* metrics, double size,
                                                        Twips column_width, Twips first_off,
                                                        Twips next_off, bool justified);
  static constexpr size_t kBrokenParagraphsKept = 256;
  std::unordered_map<std::string, std::vector<std::shared_ptr<const BrokenParagraph>>>
      broken_paragraphs_;
  size_t broken_paragraph_count_ = 0;

  // Fonts resolved for this document, by family, bold and italic.
  struct FontKey {
    std::string family;
    bool bold, italic;
    FontHandle handle;
    std::shared_ptr<const FontMetrics> keep;
  };
  std::vector<FontKey> fonts_;
};

}  // namespace orv::frame
