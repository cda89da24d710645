#include "frame/surface/surface.h"

#include <cmath>
#include <numbers>
#include <variant>

#include <algorithm>
#include <iterator>
#include <limits>

#include "frame/surface/surface_error.h"
#include "platform/render/pdf_renderer.h"

namespace orv::frame {

PrintSurface::PrintSurface() = default;

// ---------------------------------------------------------------------------
// Document life

void PrintSurface::RequireOpen(const char* what) const {
  if (state_ != State::kOpen)
    throw SurfaceError(std::string(what) + " needs an open document (StartDoc first)");
}

void PrintSurface::RequireDrawable(const char* what) const {
  if (state_ != State::kOpen && state_ != State::kOverlay)
    throw SurfaceError(std::string(what) +
                       " needs an open document or a page reopened by StartOverlay");
}

void PrintSurface::RequireNoTableUnderConstruction(const char* what) const {
  if (building_table_)
    throw SurfaceError(std::string(what) + " while a table is under construction (EndTable first)");
}

void PrintSurface::OpenPage() {
  // The page written so far is finished: it is packed until the document is
  // written or an overlay reopens it. The new page takes room for as many
  // items as it held, as the pages of a long list hold about as many each.
  size_t room = 0;
  if (!doc_.pages.empty()) {
    room = doc_.pages[page_].items.size();
    doc_.pages.Seal(size_t(page_));
  }
  doc_.pages.push_back(render::Page{PageWidth(), PageHeight(), {}});
  page_ = int(doc_.pages.size()) - 1;
  doc_.pages[page_].items.reserve(room);
  column_ = 0;
}

void PrintSurface::StartDoc() {
  last_unit_ = Mark();
  keep_.reset();
  answered_.reset();
  doc_.pages.clear();
  doc_.fonts.clear();
  doc_.tables.clear();
  doc_.letters.clear();
  fonts_.clear();
  doc_.pages.HandOver(paint_pdf_ahead_ ? render::PaintPdfAhead(doc_.fonts) : nullptr);
  building_table_ = false;
  table_.reset();
  print_requests_ = 0;
  state_ = State::kOpen;
  OpenPage();
  x_ = margin_left_;
  y_ = margin_top_;
}

void PrintSurface::EndDoc() {
  if (state_ == State::kOverlay) EndOverlay();
  if (state_ != State::kOpen) return;  // a second EndDoc does nothing
  building_table_ = false;
  table_.reset();
  state_ = State::kEnded;
  doc_.pages.Seal(size_t(page_));
}

void PrintSurface::KillDoc() {
  last_unit_ = Mark();
  keep_.reset();
  answered_.reset();
  doc_.pages.clear();
  doc_.fonts.clear();
  doc_.tables.clear();
  doc_.letters.clear();
  fonts_.clear();
  building_table_ = false;
  table_.reset();
  page_ = 0;
  state_ = State::kNone;
}

void PrintSurface::Action(int code) {
  switch (code) {
    case 3:
      StartDoc();
      return;
    case 6:
      EndDoc();
      return;
    default:
      throw SurfaceError("Action " + std::to_string(code) + " is not supported");
  }
}

void PrintSurface::NewPage() {
  RequireOpen("NewPage");
  RequireNoTableUnderConstruction("NewPage");
  // A page the report breaks itself ends every chain: its own rule stands.
  keep_.reset();
  answered_.reset();
  OpenPage();
  x_ = margin_left_;
  y_ = margin_top_;
}

void PrintSurface::PrintDoc(std::optional<bool> ask) {
  if (state_ == State::kOpen || state_ == State::kOverlay) EndDoc();
  if (state_ != State::kEnded) throw SurfaceError("PrintDoc needs a document (StartDoc first)");
  ++print_requests_;
  if (host_) host_->Print(doc_, ask.value_or(false));
}

int PrintSurface::PrintDialog(int kind) {
  return host_ ? host_->ShowDialog(kind) : 0;
}

void PrintSurface::PrinterDevice(const std::string& device) {
  printer_device_ = device;
  if (host_) host_->SelectPrinter(device);
}

void PrintSurface::StartOverlay(int page, bool clear) {
  if (state_ != State::kEnded)
    throw SurfaceError("StartOverlay needs an ended document (EndDoc first)");
  if (page < 1 || page > PageCount())
    throw SurfaceError("StartOverlay: the document has no page " + std::to_string(page));
  overlay_return_page_ = page_;
  page_ = page - 1;
  if (clear) doc_.pages[page_].items.clear();
  state_ = State::kOverlay;
  x_ = margin_left_;
  y_ = margin_top_;
}

void PrintSurface::EndOverlay() {
  if (state_ != State::kOverlay) return;
  building_table_ = false;
  table_.reset();
  doc_.pages.Seal(size_t(page_));
  page_ = overlay_return_page_;
  state_ = State::kEnded;
}

// ---------------------------------------------------------------------------
// Keeping things together

void PrintSurface::KeepWithNext() {
  if (last_unit_.page < 0) return;  // nothing written yet
  // The chain the last unit went with still stands on that unit's page, so
  // the new mark extends it; otherwise the mark starts at the last unit.
  keep_ = answered_ && answered_->page == last_unit_.page ? *answered_ : last_unit_;
}

PrintSurface::Mark PrintSurface::BeginUnit(Twips need) {
  if (keep_ && state_ == State::kOpen && columns_ == 1 && keep_->page == page_ &&
      y_ + need > PageBottom()) {
    // The chain moves only if something stays above it and it fits on a
    // page with the unit's first line or rows.
    const Twips chain = y_ - keep_->top;
    if (keep_->top > PageTop() && chain + need <= PageBottom() - PageTop()) CarryToNewPage(*keep_);
  }
  return Here();
}

void PrintSurface::EndUnit(const Mark& last, bool blank) {
  // A blank paragraph is spacing: a chain waiting for the next unit still
  // waits, and a mark set after it still refers to what came before it.
  if (blank) return;
  last_unit_ = last;
  answered_ = keep_;
  keep_.reset();
}

void PrintSurface::CarryToNewPage(const Mark& from) {
  const int old_page = page_;
  auto& old_items = doc_.pages[old_page].items;
  // What was drawn before the mark stays where it is in the page's list
  // (a page of a long list holds hundreds of runs, not copied for a move);
  // only what follows the mark is sorted into what stays and what moves.
  std::vector<render::DisplayItem> kept, moved;
  // Whatever was drawn from the mark on and starts above it (the lines of a
  // table whose last row moves) stays; a vertical line that crosses the
  // mark is cut there and its lower part moves.
  for (size_t i = from.item; i < old_items.size(); ++i) {
    render::DisplayItem& item = old_items[i];
    auto* line = std::get_if<render::Line>(&item);
    if (line && line->x1 == line->x2 && std::min(line->y1, line->y2) < from.top &&
        std::max(line->y1, line->y2) > from.top) {
      render::Line upper = *line, lower = *line;
      upper.y1 = std::min(line->y1, line->y2);
      upper.y2 = from.top;
      lower.y1 = from.top;
      lower.y2 = std::max(line->y1, line->y2);
      kept.emplace_back(upper);
      moved.emplace_back(lower);
    } else if (render::TopOf(item) >= from.top) {
      moved.push_back(std::move(item));
    } else {
      kept.push_back(std::move(item));
    }
  }
  const render::Line edge{from.left, from.top, from.right, from.top, Twips(10), {0, 0, 0}, false};
  // A table row that leaves closes its table above it and opens it below.
  if (from.table_row && (from.box || from.rules)) kept.emplace_back(edge);
  old_items.erase(old_items.begin() + std::ptrdiff_t(from.item), old_items.end());
  old_items.insert(old_items.end(), std::make_move_iterator(kept.begin()),
                   std::make_move_iterator(kept.end()));

  const Twips dy = PageTop() - from.top;
  OpenPage();
  for (auto& item : moved) render::Shift(item, dy);
  if (from.table_row && from.box) {
    render::Line top = edge;
    top.y1 = top.y2 = PageTop();
    moved.emplace_back(top);
  }
  CurrentPageRef().items = std::move(moved);
  y_ += dy;
  keep_ = from;
  keep_->page = page_;
  keep_->item = 0;
  keep_->top = PageTop();
}

// ---------------------------------------------------------------------------
// Geometry

void PrintSurface::Orientation(int value) {
  if (value != 0 && value != 1) throw SurfaceError("Orientation must be 0 or 1");
  orientation_ = value;
}

void PrintSurface::PaperSize(int code) {
  if (code != kPaperLetter && code != kPaperEnvelope10)
    throw SurfaceError("PaperSize " + std::to_string(code) + " is not supported");
  paper_ = code;
}

Twips PrintSurface::PageWidth() const {
  const bool wide = paper_ == kPaperEnvelope10 ? !envelope_narrow_first_ : false;
  // Letter is 8.5 by 11 inches, the No. 10 envelope 9.5 by 4.125.
  const Twips w = paper_ == kPaperEnvelope10 ? Twips(5940) : Twips(12240);
  const Twips h = paper_ == kPaperEnvelope10 ? Twips(13680) : Twips(15840);
  return (orientation_ == 1) != wide ? h : w;
}

Twips PrintSurface::PageHeight() const {
  const bool wide = paper_ == kPaperEnvelope10 ? !envelope_narrow_first_ : false;
  const Twips w = paper_ == kPaperEnvelope10 ? Twips(5940) : Twips(12240);
  const Twips h = paper_ == kPaperEnvelope10 ? Twips(13680) : Twips(15840);
  return (orientation_ == 1) != wide ? w : h;
}

void PrintSurface::Columns(int n) {
  if (n < 1) throw SurfaceError("Columns must be at least 1");
  columns_ = n;
  column_ = std::min(column_, n - 1);
}

Twips PrintSurface::ColumnLeft() const {
  if (columns_ == 1) return margin_left_;
  const Twips usable = PageWidth() - margin_left_ - margin_right_;
  const Twips width = (usable - column_spacing_ * double(columns_ - 1)) / double(columns_);
  return margin_left_ + (width + column_spacing_) * double(column_);
}

Twips PrintSurface::ColumnRight() const {
  if (columns_ == 1) return PageWidth() - margin_right_;
  const Twips usable = PageWidth() - margin_left_ - margin_right_;
  const Twips width = (usable - column_spacing_ * double(columns_ - 1)) / double(columns_);
  return ColumnLeft() + width;
}

void PrintSurface::NewColumn() {
  RequireOpen("NewColumn");
  if (column_ + 1 >= columns_) {
    NewPage();
  } else {
    ++column_;
    y_ = margin_top_;
  }
  x_ = ColumnLeft();
}

// ---------------------------------------------------------------------------
// Fonts and text

PrintSurface::FontHandle PrintSurface::Font(const std::string& family, bool bold, bool italic) {
  for (const auto& f : fonts_)
    if (f.bold == bold && f.italic == italic && f.family == family) return f.handle;
  ResolvedFont r = FontLibrary::Resolve(family, bold, italic);
  // Runs refer to fonts by their index in the document's table; one file may
  // serve several requested names.
  uint16_t index = 0;
  auto same = [&](const render::FontFace& x) {
    return x.file == r.face.file && x.synthetic_bold == r.face.synthetic_bold &&
           x.synthetic_italic == r.face.synthetic_italic;
  };
  auto it = std::find_if(doc_.fonts.begin(), doc_.fonts.end(), same);
  if (it == doc_.fonts.end()) {
    doc_.fonts.push_back(r.face);
    index = uint16_t(doc_.fonts.size() - 1);
  } else {
    index = uint16_t(it - doc_.fonts.begin());
  }
  FontHandle h{index, r.metrics.get()};
  fonts_.push_back({family, bold, italic, h, r.metrics});
  return h;
}

void PrintSurface::FontName(std::string family) {
  style_.family = std::move(family);
}

void PrintSurface::FontSize(double points) {
  if (!(points > 0 && points < 1000))
    throw SurfaceError("FontSize must be a positive size in points");
  style_.size = points;
}

void PrintSurface::FontBold(bool bold) {
  style_.bold = bold;
}
void PrintSurface::FontItalic(bool italic) {
  style_.italic = italic;
}

MeasureFn PrintSurface::Measurer(const FontMetrics* m, double size) const {
  return [m, size](std::string_view s) { return m->Width(s, size); };
}

void PrintSurface::EmitLine(const TextLine& line, Twips x, Twips top, const FontHandle& f,
                            double size, render::Rgb color,
                            const std::optional<render::Box>& clip, double line_size) {
  for (const auto& seg : line.segments)
    EmitSegment(seg.text, x, seg.x, seg.width, top, f, size, color, clip, line_size);
}

void PrintSurface::EmitSegment(std::string_view text, Twips x, Twips seg_x, Twips width, Twips top,
                               const FontHandle& f, double size, render::Rgb color,
                               const std::optional<render::Box>& clip, double line_size) {
  if (text.find_first_not_of(' ') == std::string_view::npos) return;  // blanks paint nothing
  render::TextRun& run = AddRun(CurrentPageRef().items, text, f, size, color, x + seg_x, top,
                                top + f.metrics->Ascent(line_size > size ? line_size : size), width,
                                clip);
  run.angle = int16_t(angle_);
}

render::TextRun& PrintSurface::AddRun(std::vector<render::DisplayItem>& items, std::string_view text,
                                      const FontHandle& f, double size, render::Rgb color, Twips x,
                                      Twips top, Twips baseline, Twips width,
                                      const std::optional<render::Box>& clip) {
  // Made where it stays, in the page's list.
  auto& run = std::get<render::TextRun>(items.emplace_back(std::in_place_type<render::TextRun>));
  run.text = text;
  run.font = f.index;
  run.size_pt = float(size);
  run.color = color;
  run.x = x;
  run.top = top;
  run.baseline = baseline;
  run.width = width;
  run.clip = clip;
  return run;
}

namespace {

// The text as the fonts hold it: composed accents. Plain ASCII, the common
// case, is passed through without a copy.
std::string_view Composed(std::string_view text, std::string& holder) {
  if (IsPlainAscii(text)) return text;
  holder = ComposeText(text);
  return holder;
}

}  // namespace

std::shared_ptr<const PrintSurface::BrokenParagraph> PrintSurface::ParagraphLines(
    std::string_view text, const FontMetrics* metrics, double size, Twips column_width,
    Twips first_off, Twips next_off, bool justified) {
  auto found = broken_paragraphs_.find(std::string(text));
  if (found != broken_paragraphs_.end()) {
    for (const auto& p : found->second)
      if (p->metrics == metrics && p->size == size && p->column_width == column_width &&
          p->first_off == first_off && p->next_off == next_off && p->justified == justified)
        return p;
  }
  if (broken_paragraph_count_ >= kBrokenParagraphsKept) {
    broken_paragraphs_.clear();
    broken_paragraph_count_ = 0;
    found = broken_paragraphs_.end();
  }
  BrokenParagraph p{metrics, size, column_width, first_off, next_off, justified, size, {}};
  const Twips first_room = column_width - first_off, next_room = column_width - next_off;
  p.lines = BreakLines(text, Measurer(metrics, size), first_room, next_room);
  // A word wider than the whole line is set smaller, the paragraph with it,
  // so that it stays whole and inside the margins.
  for (size_t i = 0; i < p.lines.size(); ++i)
    p.fitted = std::min(p.fitted, FitSize(size, p.lines[i].width, i == 0 ? first_room : next_room));
  if (p.fitted < size) p.lines = BreakLines(text, Measurer(metrics, p.fitted), first_room, next_room);
  // Justified lines fill the band from where each starts to the column's
  // right edge.
  if (justified) {
    const MeasureFn measure = Measurer(metrics, p.fitted);
    for (size_t i = 0; i < p.lines.size(); ++i)
      p.lines[i] = Justify(p.lines[i], measure, i == 0 ? first_room : next_room);
  }
  if (found == broken_paragraphs_.end()) found = broken_paragraphs_.try_emplace(std::string(text)).first;
  ++broken_paragraph_count_;
  return found->second.emplace_back(std::make_shared<const BrokenParagraph>(std::move(p)));
}

void PrintSurface::Text(std::string_view raw) {
  RequireDrawable("Text");
  RequireNoTableUnderConstruction("Text");
  std::string holder;
  const std::string_view text = Composed(raw, holder);
  const FontHandle f = CurrentFont();
  const Twips lh = f.metrics->LineHeight(style_.size);
  // Offsets from the column's left edge, so that a paragraph that runs into
  // the next newspaper column keeps its shape there.
  const Twips column_width = ColumnRight() - ColumnLeft();
  const Twips left_off = indent_left_;
  const Twips first_off = x_ + indent_first_ - ColumnLeft();
  const Twips next_off = indent_left_ + indent_hanging_;
  const int h = ((align_ % 4) + 4) % 4;
  const std::shared_ptr<const BrokenParagraph> paragraph =
      ParagraphLines(text, f.metrics, style_.size, column_width, first_off, next_off, h == 3);
  const std::vector<TextLine>& lines = paragraph->lines;
  const double size = paragraph->fitted;
  const render::Rgb color = ToRgb(style_.color);
  const bool blank = text.find_first_not_of(" \r\n") == std::string_view::npos;

  Mark last_line = BeginUnit(lh);
  for (size_t i = 0; i < lines.size(); ++i) {
    // A line that would pass the bottom margin goes to the next column or
    // page; an overlay has no next page and writes where it is told.
    if (state_ == State::kOpen && y_ + lh > PageBottom() && y_ > PageTop()) NewColumn();
    if (i == 0) last_line = Here();
    const Twips col = ColumnLeft();
    // Left and justified lines start at the pen (first line) or the indent;
    // centred and right-aligned lines sit in the band between the indent and
    // the right margin.
    const Twips start_x = col + (h == 0 || h == 3 ? (i == 0 ? first_off : next_off) : left_off);
    const Twips band = col + column_width - start_x;
    if (h == 3) {
      EmitLine(lines[i], start_x, y_, f, size, color, std::nullopt, style_.size);
    } else {
      EmitLine(lines[i], start_x + AlignOffset(h, band, lines[i].width), y_, f, size, color,
               std::nullopt, style_.size);
    }
    y_ += lh;
  }
  // The paragraph is one unit: a heading of several lines moves whole.
  EndUnit(last_line, blank);
  x_ = ColumnLeft() + indent_left_;
}

void PrintSurface::InlineText(std::string_view raw) {
  RequireDrawable("InlineText");
  RequireNoTableUnderConstruction("InlineText");
  std::string holder;
  const std::string_view text = Composed(raw, holder);
  const FontHandle f = CurrentFont();
  const Twips lh = f.metrics->LineHeight(style_.size);
  const Twips left = ColumnLeft() + indent_left_, right = ColumnRight();
  const render::Rgb color = ToRgb(style_.color);
  const int h = ((align_ % 4) + 4) % 4;
  // The first piece on a line starts a unit a heading mark can refer to; the
  // pieces after it join that line.
  if (last_unit_.page != page_ || last_unit_.top != y_)
    last_unit_ = Here();
  const auto lines = BreakLines(text, Measurer(f.metrics, style_.size), Twips(0), Twips(0), false);
  const Twips paper_right = PageWidth() - kPaperInset;
  for (size_t i = 0; i < lines.size(); ++i) {
    if (i > 0) {
      y_ += lh;
      x_ = left;
    }
    // Centred and right-aligned pieces sit on the band between the margins,
    // which is how a footer puts three items on one line.
    Twips x = x_;
    if (h == 1 || h == 2) x = left + AlignOffset(h, right - left, lines[i].width);
    // A piece that would run off the paper is set smaller to end inside it,
    // and if it is still too long at the smallest legible size, moved left.
    double size = style_.size;
    TextLine line = lines[i];
    if (x + line.width > paper_right) {
      size = FitSize(size, line.width, std::max(paper_right - x, Twips(0)));
      // Without wrapping the lines are the same at any size.
      line = BreakLines(text, Measurer(f.metrics, size), Twips(0), Twips(0), false)[i];
      if (x + line.width > paper_right) x = std::max(kPaperInset, paper_right - line.width);
    }
    EmitLine(line, x, y_, f, size, color, std::nullopt, style_.size);
    x_ = x + line.width;
  }
}

void PrintSurface::TextBox(std::string_view raw, Length x, Length y, Length width, Length height,
                           bool /*flag: always false in the reports, no effect*/) {
  RequireDrawable("TextBox");
  RequireNoTableUnderConstruction("TextBox");
  std::string holder;
  const std::string_view text = Composed(raw, holder);
  const FontHandle f = CurrentFont();
  const Twips lh = f.metrics->LineHeight(style_.size);
  // A box that runs off the paper is cut at the band a printer leaves
  // blank, so its text wraps and aligns inside the paper.
  render::Box box{x, y, width, height};
  const Twips paper_right = PageWidth() - kPaperInset;
  if (box.x + box.width > paper_right && box.x < paper_right) box.width = paper_right - box.x;
  double size = style_.size;
  const int h = ((align_ % 4) + 4) % 4;
  // Most boxes hold a few whole lines (a label's name and address lines):
  // those are kept as places in the text, as table cells keep theirs,
  // rather than built into lines of their own; they are the lines
  // BreakLines gives. Each ends at a line break or the end of the text, so
  // justifying leaves it as it is. They are measured as cells are, in one
  // pass over the text: a sheet of labels sets thousands of boxes.
  std::vector<ShortLine>& shorts = box_lines_;
  shorts.clear();
  std::vector<TextLine> lines;
  if (!PlacedLines(text, FontMeasure{f.metrics, size}, box.width, true, LineEnds::kAtBreaks,
                   shorts)) {
    lines = BreakLines(text, Measurer(f.metrics, size), box.width, box.width);
    // A word wider than the box is set smaller to stay whole in it.
    if (const double fitted = FitSize(size, WidestLine(lines), box.width); fitted < size) {
      size = fitted;
      lines = BreakLines(text, Measurer(f.metrics, size), box.width, box.width);
    }
  }
  const size_t nlines = shorts.empty() ? lines.size() : shorts.size();
  auto line_width = [&](size_t i) { return shorts.empty() ? lines[i].width : shorts[i].width; };
  const Twips block = lh * double(nlines);
  const Twips top = box.y + VerticalOffset(align_, box.height, block);
  bool overruns = block > box.height;
  for (size_t i = 0; i < nlines; ++i) overruns = overruns || line_width(i) > box.width + Twips(0.5);
  const std::optional<render::Box> clip = overruns ? std::optional(box) : std::nullopt;
  const render::Rgb color = ToRgb(style_.color);
  const size_t first_item = CurrentPageRef().items.size();
  for (size_t i = 0; i < nlines; ++i) {
    const Twips line_top = top + lh * double(i);
    // Lines wholly outside the box are cut off here; the clip does the rest.
    if (line_top + lh <= box.y || line_top >= box.y + box.height) continue;
    if (!shorts.empty()) {
      EmitSegment(text.substr(shorts[i].offset, shorts[i].length),
                  box.x + AlignOffset(h, box.width, shorts[i].width), Twips(0), shorts[i].width,
                  line_top, f, size, color, clip, style_.size);
    } else if (h == 3) {
      EmitLine(Justify(lines[i], Measurer(f.metrics, size), box.width), box.x, line_top, f, size,
               color, clip, style_.size);
    } else {
      EmitLine(lines[i], box.x + AlignOffset(h, box.width, lines[i].width), line_top, f, size,
               color, clip, style_.size);
    }
  }
  // Turned text turns the whole box about its corner at (x, y), as a label
  // printed upside down above the fold: each run's reference point moves
  // with the box, and the run itself turns about it as it is painted.
  if (angle_ % 3600 != 0) {
    const double a = angle_ * std::numbers::pi / 1800.0;
    const double c = std::cos(a), sn = std::sin(a);
    auto& items = CurrentPageRef().items;
    for (size_t k = first_item; k < items.size(); ++k) {
      auto* run = std::get_if<render::TextRun>(&items[k]);
      if (run == nullptr) continue;
      const double dx = (run->x - box.x).value(), dy = (run->top - box.y).value();
      const Twips ascent = run->baseline - run->top;
      // Counter-clockwise on the page, whose y runs down.
      run->x = box.x + Twips(dx * c + dy * sn);
      run->top = box.y + Twips(-dx * sn + dy * c);
      run->baseline = run->top + ascent;
      // Half a turn keeps the clip a box; other angles paint unclipped.
      if (run->clip && angle_ % 3600 == 1800)
        run->clip = render::Box{box.x - box.width, box.y - box.height, box.width, box.height};
      else
        run->clip.reset();
    }
  }
}

Twips PrintSurface::TextWidth(std::string_view raw) {
  std::string holder;
  const std::string_view text = Composed(raw, holder);
  const FontHandle f = CurrentFont();
  Twips widest;
  for (const auto& l :
       BreakLines(text, Measurer(f.metrics, style_.size), Twips(0), Twips(0), false))
    widest = std::max(widest, l.width);
  return widest;
}

Twips PrintSurface::TextHeight(std::string_view text) {
  const FontHandle f = CurrentFont();
  size_t lines = 1;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\r' && i + 1 < text.size() && text[i + 1] == '\n') ++i;
    if (text[i] == '\r' || text[i] == '\n') ++lines;
  }
  return f.metrics->LineHeight(style_.size) * double(lines);
}

// ---------------------------------------------------------------------------
// Lines and pictures

void PrintSurface::DrawLine(Length x1, Length y1, Length x2, Length y2) {
  RequireDrawable("DrawLine");
  RequireNoTableUnderConstruction("DrawLine");
  CurrentPageRef().items.emplace_back(
      render::Line{x1, y1, x2, y2, pen_width_, ToRgb(pen_color_), pen_style_ == 2});
}

void PrintSurface::Picture(const PictureImage& image) {
  RequireDrawable("Picture");
  if (!image) throw SurfaceError("Picture: no picture was loaded");
  render::Box box = picture_box_;
  box.width = picture_right_ - picture_box_.x;
  box.height = picture_bottom_ - picture_box_.y;
  if (box.width <= Twips(0) || box.height <= Twips(0))
    throw SurfaceError("Picture: the picture rectangle is empty");
  CurrentPageRef().items.emplace_back(render::Picture{box, image});
}

// ---------------------------------------------------------------------------
// TableCell

TableCellRef& TableCellRef::operator=(const CellValue& v) {
  if (!s_.building_table_ || !s_.table_)
    throw SurfaceError("TableCell needs a table under construction (StartTable first)");
  s_.table_->Set(sel_, v, r1_, c1_, r2_, c2_);
  return *this;
}

CellValue TableCellRef::Value() const {
  if (!s_.building_table_ || !s_.table_)
    throw SurfaceError("TableCell needs a table under construction (StartTable first)");
  return s_.table_->Get(sel_, r1_, c1_, r2_, c2_);
}

}  // namespace orv::frame
