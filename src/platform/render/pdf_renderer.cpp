#include "platform/render/pdf_renderer.h"

#include <cairo.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <deque>
#include <exception>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <numbers>
#include <optional>
#include <span>
#include <system_error>
#include <thread>
#include <type_traits>
#include <vector>

#include "platform/render/cairo_fonts.h"
#include "platform/render/pdf_fonts.h"
#include "platform/render/pdf_metadata.h"
#include "platform/render/pdf_writer.h"
#include "platform/render/renderer.h"
#include "platform/render/spill_file.h"

namespace orv::render {
namespace {

using pdf::AppendNumber;

double Pt(Twips t) {
  return t.points();
}

// `v` rounded half away from zero to a whole number, as std::round rounds
// it. Below 2^52 the fraction left by truncating is exact, and a page's
// coordinates in ten-thousandths of a point are far below.
int64_t Rounded(double v) {
  if (!(std::fabs(v) < 4503599627370496.0)) return std::llround(v);
  const auto n = static_cast<int64_t>(v);
  const double fraction = v - static_cast<double>(n);
  return fraction >= 0.5 ? n + 1 : fraction <= -0.5 ? n - 1 : n;
}

// The slant FreeType gives a face it obliques (FT_GlyphSlot_Oblique): x
// moves by 0x0366A/0x10000 of y, about 12 degrees.
constexpr double kObliqueSlant = 0x0366A / 65536.0;

// The parts of the graphics state the contents set, as the reader has them
// at this point of the stream; nullopt where they are unknown.
struct State {
  std::optional<Rgb> fill = Rgb{}, stroke = Rgb{};
  double line_width = 1;
  double dash = 0;  // the dotted line's dot length, 0 for solid
  int font = -1;
  double size = 0;
  int render_mode = 0;
  // Inside a text object; its text line matrix a translation to
  // (line_x, line_y) ten-thousandths of a point while upright.
  bool in_text = false;
  bool upright = true;
  int64_t line_x = 0, line_y = 0;
};

// The glyphs and positions of the runs as the cairo renderers place them,
// the very doubles. The glyphs come from the font file's own character map
// and advances where that gives what cairo gives: with metrics unhinted,
// cairo advances a glyph by its advance in font units times the size over
// the units per em, and with units per em a power of two (2,048 in every
// font the layout loads) that product is exact whichever way it is
// computed. Elsewhere (another font, a character the map lacks, text that
// is not well-formed UTF-8 of the Basic Multilingual Plane) a cairo context
// set up as the cairo renderers set theirs places them, made on first
// need: opening FreeType and a face, and loading each glyph to measure it,
// was a tenth of a one-page report's time. The test
// GlyphPlacerTest.FontFilesGiveCairosGlyphsAndAdvances holds the two ways
// to the same glyphs.
class Glyphs {
 public:
  explicit Glyphs(const std::vector<FontFace>& fonts) : fonts_(fonts) {}
  ~Glyphs() {
    if (cr_) cairo_destroy(cr_);
    if (surface_) cairo_surface_destroy(surface_);
  }
  Glyphs(const Glyphs&) = delete;
  Glyphs& operator=(const Glyphs&) = delete;

  // A glyph the file's tables placed: its number, its advance in font
  // units as the file gives it (EmbeddedFont::AdvanceUnits) and the
  // character it stands for.
  struct Placed {
    uint16_t glyph;
    uint16_t units;
    char32_t c;
  };

  // Places the glyphs of `t`, set from the origin, and returns how many
  // there are; `file` is its font's file.
  size_t Of(const TextRun& t, pdf::EmbeddedFont& file) {
    const FontFace& face = fonts_[t.font];
    ascii_ = face.synthetic_bold ? nullptr : Ascii(t.text, file);
    if (ascii_) {
      own_ = true;
      positions_ = false;
      return t.text.size();
    }
    own_ = Own(t, face, file);
    if (own_) return count_;
    out_.clear();
    if (!cr_) {
      surface_ = cairo_recording_surface_create(CAIRO_CONTENT_COLOR, nullptr);
      cr_ = cairo_create(surface_);
      SetUnhinted(cr_);
    }
    if (t.font != font_ || t.size_pt != size_) {
      cairo_set_font_face(cr_, FaceFor(face));
      cairo_set_font_size(cr_, t.size_pt);
      font_ = t.font;
      size_ = t.size_pt;
    }
    PlaceGlyphs(cairo_get_scaled_font(cr_), t, face.synthetic_bold, 0, 0, &placer_, out_);
    positions_ = true;
    return out_.size();
  }
  // The glyphs of the last Of as the file's tables placed them (its text
  // was then well-formed UTF-8 of the Basic Multilingual Plane, as
  // pdf::DecodeUtf8 reads it too); null when cairo placed them.
  const Placed* Own() const { return own_ && !ascii_ ? placed_.data() : nullptr; }
  // The glyphs of the ASCII characters as the file's tables map them, by
  // character, when the last Of was of ASCII text that they all map and
  // that is set one glyph after another: glyph i of the run is then the
  // entry of its i-th byte, and Own's table was not written.
  const Placed* AsciiGlyphs() const { return ascii_; }
  // The glyphs of the last Of with their positions, where they do not
  // simply follow one another by their advances (cairo placed them, or the
  // face is emboldened); null where they do: glyph i then sits at the sum
  // of the advances before it, each the glyph's units times the size over
  // the units per em, added up in order from 0 (Advance).
  const cairo_glyph_t* Positions() const { return positions_ ? out_.data() : nullptr; }
  // The advance of a glyph of `units` at `size_pt`, as a run's positions
  // add it up.
  static double Advance(uint16_t units, double size_pt, double per_unit) {
    return double(units) * size_pt * per_unit;
  }

 private:
  // The table of `file`'s ASCII glyphs when every byte of `text` is an
  // ASCII character the file maps (as Own would map them), else null. Most
  // runs of a list are such text: one look at each byte tells, and the
  // glyphs are read from the table as they are written.
  const Placed* Ascii(std::string_view text, pdf::EmbeddedFont& file) {
    if (&file != ascii_file_) {
      ascii_file_ = &file;
      ascii_table_ = nullptr;
      const unsigned units = file.units_per_em();
      if (units == 0 || (units & (units - 1)) != 0) return nullptr;
      auto it = std::find_if(ascii_tables_.begin(), ascii_tables_.end(),
                             [&](const auto& known) { return known.first == &file; });
      if (it == ascii_tables_.end()) {
        auto table = std::make_unique<AsciiTable>();
        // NUL maps to nothing here, as Own takes it.
        table->placed[0] = Placed{0, 0, 0};
        for (char32_t c = 1; c < 128; ++c) {
          const pdf::EmbeddedFont::Mapped m = file.Map(c);
          table->placed[c] = Placed{m.glyph, m.advance, c};
          table->mapped[c] = m.glyph != 0;
        }
        table->printable = std::all_of(table->mapped.begin() + ' ', table->mapped.begin() + '~' + 1,
                                       [](bool m) { return m; });
        it = ascii_tables_.emplace(ascii_tables_.end(), &file, std::move(table));
      }
      ascii_table_ = it->second.get();
    }
    if (!ascii_table_) return nullptr;
    const size_t n = text.size();
    size_t i = 0;
    if (ascii_table_->printable) {
      // Eight bytes at a time while each lies from the blank to the tilde,
      // a character the file maps; a word holding another byte leaves the
      // rest to the table.
      constexpr uint64_t kOnes = ~uint64_t(0) / 255, kHigh = kOnes * 0x80;
      for (; i + 8 <= n; i += 8) {
        uint64_t w;
        std::memcpy(&w, text.data() + i, 8);
        const uint64_t below_blank = (w - kOnes * 0x20) & ~w & kHigh;
        const uint64_t past_tilde = ((w + kOnes) | w) & kHigh;
        if (below_blank | past_tilde) break;
      }
    }
    bool mapped = true;
    for (; i < n; ++i) mapped &= ascii_table_->mapped[static_cast<unsigned char>(text[i])];
    return mapped ? ascii_table_->placed.data() : nullptr;
  }

  // Maps `t` through the file's tables into placed_, and for an emboldened
  // face places it into out_; false when the tables do not serve.
  //
  // A run has at most as many characters as bytes, so the tables are grown
  // to that first, never shrunk, and written in place, count_ of them
  // holding the run: a long list places millions of glyphs, and growing
  // each table a glyph at a time cost more than mapping the glyph. With
  // units per em a power of two, dividing by them is multiplying by their
  // inverse, exactly. The positions of a face that is not emboldened are
  // left for the painter to add up as it writes the glyphs.
  bool Own(const TextRun& t, const FontFace& face, pdf::EmbeddedFont& file) {
    positions_ = false;
    const unsigned units = file.units_per_em();
    if (units == 0 || (units & (units - 1)) != 0) return false;
    const std::string_view text = t.text;
    if (placed_.size() < text.size()) placed_.resize(text.size());
    Placed* const placed = placed_.data();
    size_t n = 0;
    for (size_t i = 0; i < text.size(); ++n) {
      const auto byte = static_cast<unsigned char>(text[i]);
      char32_t c = byte;
      if (byte >= 0x80) {
        c = NextBmpChar(text, i);
      } else {
        ++i;
      }
      const pdf::EmbeddedFont::Mapped m = c == 0 ? pdf::EmbeddedFont::Mapped{0, 0} : file.Map(c);
      if (m.glyph == 0) return false;
      placed[n] = Placed{m.glyph, m.advance, c};
    }
    count_ = n;
    if (face.synthetic_bold) {
      const double size = t.size_pt, per_unit = 1.0 / units;
      out_.resize(n);
      double x = 0, advance = 0;
      for (size_t k = 0; k < n; ++k) {
        out_[k] = cairo_glyph_t{placed[k].glyph, x, 0};
        advance = Advance(placed[k].units, size, per_unit);
        x += advance;
      }
      SpaceEmboldened(out_, 0, t.size_pt, advance);
      positions_ = true;
    }
    return true;
  }

  const std::vector<FontFace>& fonts_;
  cairo_surface_t* surface_ = nullptr;
  cairo_t* cr_ = nullptr;
  GlyphPlacer placer_;
  uint16_t font_ = UINT16_MAX;
  float size_ = 0;
  std::vector<cairo_glyph_t> out_;
  std::vector<Placed> placed_;
  // The ASCII glyphs of a font file, and by byte whether it is an ASCII
  // character the file maps: one look a byte tells whether a run is ASCII
  // text that the table places.
  struct AsciiTable {
    std::array<Placed, 128> placed;
    std::array<bool, 256> mapped{};
    bool printable = false;  // every byte from the blank to the tilde is mapped
  };
  // The table of each font file met (Ascii), the last one's at hand.
  std::vector<std::pair<const pdf::EmbeddedFont*, std::unique_ptr<AsciiTable>>> ascii_tables_;
  const pdf::EmbeddedFont* ascii_file_ = nullptr;
  const AsciiTable* ascii_table_ = nullptr;
  const Placed* ascii_ = nullptr;  // the last run's, when Ascii placed it
  size_t count_ = 0;  // the glyphs of the last run the file's tables placed
  bool own_ = false;
  bool positions_ = false;  // out_ holds the last run's glyphs
};

// Paints pages into content streams. Fonts and pictures are named by
// resource numbers given in the order of first use and written into the
// file once every page is painted, so that pages may be painted before the
// file is opened (PdfPaintAhead below) and a font first shown on the last
// page is still embedded with every glyph shown.
class PdfPainter {
 public:
  // `fonts` is the document's font table; it may grow between pages.
  explicit PdfPainter(const std::vector<FontFace>& fonts) : fonts_of_doc_(fonts), glyphs_(fonts) {}

  // The content stream of `items` on a page `height` high, painted from
  // `state`, the reader's graphics state where the stream begins (State{}
  // at the start of a page); `state` is left as the stream leaves it. A
  // page's contents may be painted in parts that follow one another (the
  // items an overlay added after the page was painted): each part begins
  // in the state the part before left, as the reader reads them.
  //
  // With `open` the stream may end inside a text object (its last TJ array
  // closed), as the stream of the next part goes on where it ends: a page
  // painted in parts then holds the operators of the page painted at once,
  // the text an overlay adds set from the same text matrix, so a reader
  // puts every glyph where it would have. The last part ends the object
  // (an "ET" of its own when nothing follows).
  const std::string& Paint(const std::vector<DisplayItem>& items, Twips height, State& state,
                           bool open = false) {
    out_.clear();
    state_ = state;
    saved_.clear();
    line_ = TextLine{};
    height_ = Pt(height);
    for (const auto& item : items) std::visit([&](const auto& x) { Draw(x); }, item);
    if (open) {
      CloseLine();
    } else {
      EndText();
    }
    state = state_;
    return out_;
  }

  // Writes the fonts and pictures the pages painted so far show, and
  // returns the resource dictionary every page names.
  std::string WriteResources(pdf::PdfFile& file) const {
    std::string d = "<< /Font <<";
    for (size_t i = 0; i < fonts_.size(); ++i)
      d += " /F" + std::to_string(i) + " " + std::to_string(fonts_[i]->Write(file)) + " 0 R";
    d += " >> /XObject <<";
    for (size_t i = 0; i < images_.size(); ++i)
      d += " /I" + std::to_string(i) + " " + std::to_string(WriteImage(file, *images_[i])) + " 0 R";
    return d + " >> >>";
  }

 private:
  void Num(double v, int decimals = 3) {
    AppendNumber(out_, v, decimals);
    out_.push_back(' ');
  }
  void Op(const char* op) {
    out_ += op;
    out_.push_back('\n');
  }
  void Color(Rgb c) {
    Num(c.r / 255.0);
    Num(c.g / 255.0);
    Num(c.b / 255.0);
  }
  void Fill(Rgb c) {
    if (state_.fill == c) return;
    Color(c);
    Op("rg");
    state_.fill = c;
  }
  void Stroke(Rgb c) {
    if (state_.stroke == c) return;
    Color(c);
    Op("RG");
    state_.stroke = c;
  }
  void LineWidth(double w) {
    if (state_.line_width == w) return;
    Num(w);
    Op("w");
    state_.line_width = w;
  }
  void Dash(double dot) {
    if (state_.dash == dot) return;
    if (dot == 0) {
      out_ += "[] 0 d\n";
    } else {
      out_.push_back('[');
      Num(dot);
      AppendNumber(out_, 2 * dot + 1);
      out_ += "] 0 d\n";
    }
    state_.dash = dot;
  }
  void BeginText() {
    if (state_.in_text) return;
    Op("BT");
    state_.in_text = true;
    // A text object begins at the identity matrix.
    state_.upright = true;
    state_.line_x = state_.line_y = 0;
  }
  void EndText() {
    CloseLine();
    if (!state_.in_text) return;
    Op("ET");
    state_.in_text = false;
  }
  void Save() {
    EndText();
    Op("q");
    saved_.push_back(state_);
  }
  void Restore() {
    EndText();
    Op("Q");
    state_ = saved_.back();
    saved_.pop_back();
  }

  // The file of the document's font `index`, mapped on first use; found
  // by the font's index after its first run.
  pdf::EmbeddedFont& FileOf(uint16_t index) {
    if (index < file_of_.size() && file_of_[index]) return *file_of_[index];
    const std::string& path = fonts_of_doc_[index].file;
    auto it = files_.find(path);
    if (it == files_.end()) it = files_.emplace(path, std::make_unique<pdf::EmbeddedFont>(path)).first;
    if (index >= file_of_.size()) file_of_.resize(size_t(index) + 1, nullptr);
    file_of_[index] = it->second.get();
    return *it->second;
  }

  // The document's font `index` as a font of the file, numbered as a
  // resource when first shown.
  pdf::EmbeddedFont& FontOf(uint16_t index, int& resource) {
    if (index >= font_of_.size()) font_of_.resize(size_t(index) + 1, -1);
    if (font_of_[index] < 0) {
      pdf::EmbeddedFont* file = &FileOf(index);
      auto it = std::find(fonts_.begin(), fonts_.end(), file);
      if (it == fonts_.end()) it = fonts_.insert(fonts_.end(), file);
      font_of_[index] = int(it - fonts_.begin());
    }
    resource = font_of_[index];
    return *fonts_[size_t(resource)];
  }

  // Text is written as cairo's PDF surface wrote it, so that readers see
  // the pages they saw: runs of one font, size and colour that follow one
  // another along a baseline share one TJ array from one text matrix;
  // widths are the font's advances cut to whole thousandths of an em; a
  // glyph is moved by a whole-thousandths adjustment where the placer put
  // it elsewhere than the advances before it, smaller ones than three
  // dropped. The pen is followed in exact advances as cairo follows it, so
  // a run drifts from the layout's positions by at most what cutting the
  // widths makes (a few hundredths of a point over a word), and
  // `pdftotext -layout` lays the columns out as it did from cairo's files.
  static constexpr double kSameLine = 0.001;  // em: a glyph still on the line
  static constexpr double kFarAway = 10;      // em: past this, a new matrix
  static constexpr int kBatch = 200;          // glyphs cairo writes at once

  // The TJ array being written, in em of its text matrix.
  struct TextLine {
    bool open = false;
    double x = 0, y = 0;  // the matrix's origin on the page, points
    double pen = 0;       // where the next glyph goes without adjustment
    double advances = 0;  // advances since the origin or the last batch
    int batch = 0;
  };

  void CloseLine() {
    if (!line_.open) return;
    out_ += ")] TJ\n";
    line_.open = false;
  }

  // Opens a TJ array from the matrix (a b c d) at (e, f). An upright line
  // after an upright line moves by Td from where the last one began: a
  // table row is then "0 -11.2 Td" rather than a whole matrix.
  void OpenLine(double a, double b, double c, double d, double e, double f) {
    // To ten-thousandths of a point, where the move is written: the move
    // from the last line counted in them is the difference of two whole
    // numbers, written without rounding anything again.
    const int64_t e_units = Rounded(e * 10000), f_units = Rounded(f * 10000);
    e = double(e_units) / 10000;
    f = double(f_units) / 10000;
    const bool upright = a == 1 && b == 0 && c == 0 && d == 1;
    if (upright && state_.upright) {
      // A table's every cell: the end of the line before and the move
      // gather here and go into the contents at once.
      char text[2 * pdf::kScaledRoom + 16];
      char* p = text;
      if (line_.open) {
        p = std::copy_n(")] TJ\n", 6, p);
        line_.open = false;
      }
      p = pdf::WriteScaled(p, e_units - state_.line_x, 4);
      *p++ = ' ';
      p = pdf::WriteScaled(p, f_units - state_.line_y, 4);
      p = std::copy_n(" Td\n[(", 6, p);
      out_.append(text, size_t(p - text));
    } else {
      CloseLine();
      Num(a, 5);
      Num(b, 5);
      Num(c, 5);
      Num(d, 5);
      Num(e, 4);
      Num(f, 4);
      out_ += "Tm\n[(";
    }
    state_.upright = upright;
    state_.line_x = e_units;
    state_.line_y = f_units;
    line_ = TextLine{true, e, f, 0, 0, 0};
  }

  // The bytes a literal string escapes.
  static constexpr auto kEscaped = [] {
    std::array<bool, 256> escaped{};
    for (const char c : {'(', ')', '\\', '\r'}) escaped[static_cast<unsigned char>(c)] = true;
    return escaped;
  }();

  // Writes glyph `g` as it stands in a literal string at `to`: its two
  // bytes, escaped where the string's syntax needs it. Returns the bytes
  // written, at most four.
  static size_t GlyphBytes(uint16_t g, char* to) {
    // Most glyphs of a practice's text are numbered below 256 and need no
    // escape: their two bytes as they are.
    if (g < 0x100 && !kEscaped[g]) {
      to[0] = 0;
      to[1] = char(g);
      return 2;
    }
    size_t n = 0;
    for (const auto byte : {char(g >> 8), char(g & 0xFF)}) {
      if (byte == '(' || byte == ')' || byte == '\\') {
        to[n++] = '\\';
      } else if (byte == '\r') {
        to[n++] = '\\';
        to[n++] = 'r';
        continue;
      }
      to[n++] = byte;
    }
    return n;
  }

  // A run: glyphs placed as the cairo renderers place them, written as
  // above; synthetic bold strokes the outlines in the fill colour at the
  // width FreeType grows them by, synthetic italic slants the matrix.
  void Draw(const TextRun& t) {
    if (t.font >= fonts_of_doc_.size())
      throw RenderError("Text run names a font the document lacks");
    const FontFace& face = fonts_of_doc_[t.font];
    const size_t count = glyphs_.Of(t, FileOf(t.font));
    if (count == 0 && !t.underline) return;
    int resource = 0;
    pdf::EmbeddedFont& font = FontOf(t.font, resource);
    // Where cairo placed the glyphs, the character each stands for: the
    // placer sets one glyph per character, so the two line up unless the
    // text was not plain UTF-8.
    const Glyphs::Placed* const own = glyphs_.Own();
    const Glyphs::Placed* const ascii = glyphs_.AsciiGlyphs();
    const auto* const text = reinterpret_cast<const unsigned char*>(t.text.data());
    const bool from_file = own || ascii;
    if (!from_file) pdf::DecodeUtf8(t.text, chars_);
    const bool paired = from_file || chars_.size() == count;
    const bool plain = !t.clip && t.angle == 0 && !t.underline && !face.synthetic_italic;

    if (t.clip) {
      Save();
      Num(Pt(t.clip->x));
      Num(height_ - Pt(t.clip->y) - Pt(t.clip->height));
      Num(Pt(t.clip->width));
      Num(Pt(t.clip->height));
      Op("re W n");
    }
    // The run turns about its reference point (x, top); its glyphs sit on
    // the baseline below it.
    const double angle = t.angle * std::numbers::pi / 1800.0;
    const double cs = t.angle ? std::cos(angle) : 1, sn = t.angle ? std::sin(angle) : 0;
    const double descent = Pt(t.baseline - t.top);
    const double ref_x = Pt(t.x), ref_y = height_ - Pt(t.top);
    if (count > 0) {
      // A style the open line does not have ends it.
      // Runs of a page nearly all share a size: rounded once for them.
      if (t.size_pt != rounded_.size_pt || !rounded_.known)
        rounded_ = {true, t.size_pt, std::round(double(t.size_pt) * 10000) / 10000};
      const double size = rounded_.size;
      if (!plain || state_.font != resource || state_.size != size || state_.fill != t.color ||
          (state_.render_mode == 2) != face.synthetic_bold)
        CloseLine();
      BeginText();
      if (state_.font != resource || state_.size != size) {
        out_ += "/F" + std::to_string(resource) + ' ';
        Num(size, 4);
        Op("Tf");
        state_.font = resource;
        state_.size = size;
      }
      Fill(t.color);
      // A face FreeType emboldens: its outlines stroked in the fill colour
      // at the width they grow by, a 24th of an em. FreeType's outline also
      // sits half that growth further right and up; drawing the glyphs
      // there would come closer to cairo's pixels, but would move the words
      // a reader measures (and pdftotext's columns), so they stay in place.
      const int mode = face.synthetic_bold ? 2 : 0;
      if (face.synthetic_bold) {
        Stroke(t.color);
        LineWidth(std::round(t.size_pt / 24.0 * 1000) / 1000);
      }
      if (state_.render_mode != mode) {
        out_ += mode == 2 ? "2 Tr\n" : "0 Tr\n";
        state_.render_mode = mode;
      }
      const double base_x = ref_x + descent * sn, base_y = ref_y - descent * cs;
      if (!plain) {
        // Slanted as the PNG renderer slants it (cairo's PDF surface wrote
        // these glyphs upright).
        const double slant = face.synthetic_italic ? kObliqueSlant : 0;
        OpenLine(cs, sn, slant * cs - sn, slant * sn + cs, base_x, base_y);
      }
      // The glyphs' bytes gather here and go into the contents a batch at
      // a time: a long list shows millions of glyphs, and adding each to
      // the contents alone was a sixth of its painting. Whatever else is
      // written in the loop sends them first.
      char bytes[256];
      size_t nbytes = 0;
      auto flush = [&] {
        if (nbytes == 0) return;  // a run's first glyph opens its line
        out_.append(bytes, nbytes);
        nbytes = 0;
      };
      // The advance of a glyph in em: with the file's advances and units per
      // em a power of two, units times the inverse of the em is the very
      // double the widths give (thousandths of units over the em, over a
      // thousand), without dividing twice a glyph.
      const double per_unit = from_file ? 1.0 / font.units_per_em() : 0;
      const double run_size = t.size_pt;
      if (shown_.size() <= size_t(resource)) shown_.resize(size_t(resource) + 1);
      std::array<bool, kLatin>& latin_shown = shown_[size_t(resource)];
      const cairo_glyph_t* const positions = glyphs_.Positions();
      // A run lies on one baseline: whether it is off the open line changes
      // only where a line is opened.
      const auto off_line = [&] {
        return !line_.open || std::abs(base_y - line_.y) / size > kSameLine;
      };
      bool off = plain && off_line();
      // One loop for the three ways a run's glyphs come (the file's tables
      // placing them one after another, the file's tables on an emboldened
      // face, cairo), made for each: a long list writes millions of glyphs,
      // nearly all the first way, and the glyph's place is then added up
      // here rather than written down and read back.
      //
      // The open line's pen is followed in locals, and line_ brought up to
      // date where the line is opened and once the run is written: kept in
      // the painter, it went to memory and back at every glyph.
      const auto write = [&](auto from_file, auto placed, auto by_byte) {
        double pen_x = 0;  // the glyph's place from the file's advances
        double line_x = line_.x, pen = line_.pen, advances = line_.advances;
        int batch = line_.batch;
        for (size_t i = 0; i < count; ++i) {
          if constexpr (decltype(by_byte)::value) {
            // Nearly every glyph of a list: on the open line, its character
            // shown before, standing within the dropped adjustment of the
            // pen, written as two plain bytes. These go through a loop of
            // their own that calls nothing and holds what it reads in
            // locals: a byte written to the batch may alias anything, and
            // the loop below read the run's every constant from memory
            // again after it. The arithmetic is the loop's below, term for
            // term, so the doubles are the same; the first glyph that is
            // not such a glyph goes on below.
            if (plain && !off) {
              const Glyphs::Placed* const table = ascii;
              const bool* const shown = latin_shown.data();
              const unsigned char* const chars = text;
              char* const to = bytes;
              const double origin = base_x, from = line_x, em = size, unit = per_unit,
                           grow = run_size;
              const size_t end = count;
              double px = pen_x, pn = pen, adv = advances;
              int bt = batch;
              size_t n = nbytes;
              for (; i < end && n + 4 <= sizeof bytes; ++i) {
                const double at = (origin + px - from) / em;
                if (std::abs(at - adv) > kFarAway) break;
                const Glyphs::Placed& glyph = table[chars[i]];
                if (!shown[glyph.c] || std::abs(-1000 * (at - pn)) >= 2.5) break;
                const uint16_t g = glyph.glyph;
                if (g >= 0x100 || kEscaped[g]) break;
                to[n] = 0;
                to[n + 1] = char(g);
                n += 2;
                const double advance = double(glyph.units) * unit;
                px += Glyphs::Advance(glyph.units, grow, unit);
                pn += advance;
                adv += advance;
                if (++bt == kBatch) {
                  bt = 0;
                  adv = pn;
                }
              }
              pen_x = px;
              pen = pn;
              advances = adv;
              batch = bt;
              nbytes = n;
              if (i == end) break;
            }
          }
          double glyph_x;
          if constexpr (decltype(placed)::value) {
            glyph_x = positions[i].x;
          } else {
            glyph_x = pen_x;
          }
          // The glyph's place on the line, in em.
          double at;
          if (plain) {
            const double x = base_x + glyph_x;
            at = (x - line_x) / size;
            if (off || std::abs(at - advances) > kFarAway) {
              flush();
              OpenLine(1, 0, 0, 1, x, base_y);
              off = off_line();
              at = 0;
              line_x = line_.x;
              pen = line_.pen;
              advances = line_.advances;
              batch = line_.batch;
            }
          } else {
            at = glyph_x / size;
          }
          uint16_t g;
          const Glyphs::Placed* glyph = nullptr;
          if constexpr (decltype(by_byte)::value) {
            glyph = &ascii[text[i]];
          } else if constexpr (decltype(from_file)::value) {
            glyph = &own[i];
          }
          if constexpr (decltype(from_file)::value) {
            g = glyph->glyph;
            // A character the file's tables mapped is marked shown once:
            // after that its glyph stands for it (or for a character met
            // before), and EmbeddedFont::Use would change nothing.
            const char32_t c = glyph->c;
            if (c >= kLatin || !latin_shown[c]) {
              font.Use(g, c);
              if (c < kLatin) latin_shown[c] = true;
            }
          } else {
            g = uint16_t(positions[i].index);
            font.Use(g, paired ? chars_[i] : 0);
          }
          // Rounding half away from zero, a move of less than 2.5 thousandths
          // rounds below 3 and is dropped: most glyphs stand within that of
          // the pen, and are written without rounding anything.
          if (const double move = -1000 * (at - pen); std::abs(move) >= 2.5) {
            const double adjust = std::round(move);
            if (std::abs(adjust) >= 3) {
              if (std::abs(adjust) < 1e15) {
                // A whole number, written into the batch between the
                // strings as AppendNumber writes it.
                if (nbytes + pdf::kScaledRoom + 2 > sizeof bytes) flush();
                char* p = bytes + nbytes;
                *p++ = ')';
                p = pdf::WriteScaled(p, static_cast<int64_t>(adjust), 0);
                *p++ = '(';
                nbytes = size_t(p - bytes);
              } else {
                flush();
                out_ += ')';
                AppendNumber(out_, adjust, 0);
                out_ += '(';
              }
              pen -= adjust / 1000;
            }
          }
          if (nbytes + 4 > sizeof bytes) flush();
          if (g < 0x100 && !kEscaped[g]) {
            // Nearly every glyph, written here as GlyphBytes writes it.
            bytes[nbytes] = 0;
            bytes[nbytes + 1] = char(g);
            nbytes += 2;
          } else {
            nbytes += GlyphBytes(g, bytes + nbytes);
          }
          double advance;
          if constexpr (decltype(from_file)::value) {
            advance = double(glyph->units) * per_unit;
            if constexpr (!decltype(placed)::value)
              pen_x += Glyphs::Advance(glyph->units, run_size, per_unit);
          } else {
            advance = font.Width(g) / 1000;
          }
          pen += advance;
          advances += advance;
          if (++batch == kBatch) {
            batch = 0;
            advances = pen;
          }
        }
        line_.pen = pen;
        line_.advances = advances;
        line_.batch = batch;
      };
      if (!from_file) {
        write(std::false_type{}, std::true_type{}, std::false_type{});
      } else if (positions) {
        write(std::true_type{}, std::true_type{}, std::false_type{});
      } else if (ascii) {
        write(std::true_type{}, std::false_type{}, std::true_type{});
      } else {
        write(std::true_type{}, std::false_type{}, std::false_type{});
      }
      flush();
      if (!plain) CloseLine();
    }
    if (t.underline) {
      Save();
      Num(cs, 5);
      Num(sn, 5);
      Num(-sn, 5);
      Num(cs, 5);
      Num(ref_x);
      Num(ref_y);
      Op("cm");
      Stroke(t.color);
      LineWidth(t.size_pt / 16.0);
      Dash(0);
      const double below = -(descent + t.size_pt / 8.0);
      out_ += "0 ";
      Num(below);
      out_ += "m ";
      Num(Pt(t.width));
      Num(below);
      Op("l S");
      Restore();
    }
    if (t.clip) Restore();
  }

  void Draw(const Line& l) {
    EndText();
    // Width 0 is the thinnest line the device draws: a hairline.
    const double w = std::max(Pt(l.width), 0.25);
    LineWidth(w);
    Stroke(l.color);
    Dash(l.dotted ? w : 0);
    Num(Pt(l.x1));
    Num(height_ - Pt(l.y1));
    out_ += "m ";
    Num(Pt(l.x2));
    Num(height_ - Pt(l.y2));
    Op("l S");
  }

  void Draw(const FilledRect& r) {
    EndText();
    Fill(r.color);
    Num(Pt(r.box.x));
    Num(height_ - Pt(r.box.y) - Pt(r.box.height));
    Num(Pt(r.box.width));
    Num(Pt(r.box.height));
    Op("re f");
  }

  void Draw(const Picture& p) {
    if (!p.image || p.image->width <= 0 || p.image->height <= 0) return;
    EndText();
    out_ += "q ";
    Num(Pt(p.box.width));
    out_ += "0 0 ";
    Num(Pt(p.box.height));
    Num(Pt(p.box.x));
    Num(height_ - Pt(p.box.y) - Pt(p.box.height));
    out_ += "cm /I" + std::to_string(ImageOf(p.image)) + " Do Q\n";
  }

  void Draw(const ScaledBlock&) {}  // a record of the layout, nothing to paint

  // The resource number of a picture: pages share one image object for a
  // logo printed on each of them (the page store hands every page the same
  // Image). The picture is kept alive, so that no other picture takes an
  // address written down here.
  size_t ImageOf(const std::shared_ptr<const Image>& image) {
    const Image& img = *image;
    if (img.pixels.size() < size_t(img.width) * size_t(img.height))
      throw RenderError("A picture holds fewer pixels than its size");
    auto [it, added] = image_numbers_.emplace(image.get(), images_.size());
    if (added) images_.push_back(image);
    return it->second;
  }

  // Writes a picture and returns its object number.
  static int WriteImage(pdf::PdfFile& file, const Image& img) {
    const size_t n = size_t(img.width) * size_t(img.height);
    // Premultiplied ARGB to plain RGB beside an alpha mask, the mask left
    // out when every pixel is opaque.
    std::string rgb(n * 3, '\0'), alpha(n, '\0');
    bool opaque = true;
    for (size_t i = 0; i < n; ++i) {
      const uint32_t px = img.pixels[i];
      const uint32_t a = px >> 24;
      uint32_t r = (px >> 16) & 0xFF, g = (px >> 8) & 0xFF, b = px & 0xFF;
      if (a != 0xFF) {
        opaque = false;
        if (a == 0) {
          r = g = b = 0;
        } else {
          r = (r * 255 + a / 2) / a;
          g = (g * 255 + a / 2) / a;
          b = (b * 255 + a / 2) / a;
        }
      }
      rgb[i * 3] = char(std::min(r, 255u));
      rgb[i * 3 + 1] = char(std::min(g, 255u));
      rgb[i * 3 + 2] = char(std::min(b, 255u));
      alpha[i] = char(a);
    }
    const std::string size =
        "/Width " + std::to_string(img.width) + " /Height " + std::to_string(img.height);
    const int id = file.Reserve();
    std::string dict = "/Type /XObject /Subtype /Image " + size +
                       " /ColorSpace /DeviceRGB /BitsPerComponent 8 /Interpolate true";
    if (!opaque) {
      const int mask = file.Reserve();
      file.Stream(mask,
                  "/Type /XObject /Subtype /Image " + size +
                      " /ColorSpace /DeviceGray /BitsPerComponent 8 /Interpolate true",
                  alpha);
      dict += " /SMask " + std::to_string(mask) + " 0 R";
    }
    file.Stream(id, dict, rgb);
    return id;
  }

  const std::vector<FontFace>& fonts_of_doc_;
  Glyphs glyphs_;
  std::vector<int> font_of_;  // document font -> index in fonts_, -1 before use
  std::map<std::string, std::unique_ptr<pdf::EmbeddedFont>> files_;
  std::vector<pdf::EmbeddedFont*> file_of_;  // document font -> its file, null before use
  std::vector<pdf::EmbeddedFont*> fonts_;  // by resource number
  // By resource number, the characters below kLatin already marked shown
  // in the font as the file's tables map them.
  static constexpr char32_t kLatin = 256;
  std::vector<std::array<bool, kLatin>> shown_;
  std::map<const Image*, size_t> image_numbers_;
  std::vector<std::shared_ptr<const Image>> images_;  // by resource number

  // The size of the last run drawn, as the contents write it.
  struct RoundedSize {
    bool known = false;
    float size_pt = 0;
    double size = 0;
  } rounded_;
  std::string out_;
  std::u32string chars_;  // the characters of the run being drawn
  State state_;
  std::vector<State> saved_;
  TextLine line_;
  double height_ = 0;
};

// Pages of a document that is no longer than this go into its file as
// they were painted, not compressed. Compressing a page costs the same
// whichever its document: libdeflate makes and clears its tables and
// weighs its codes for each stream, then some 25 instructions a byte. On an
// eight-page patient list that was a ninth of the report's time, on the
// six pages of the month's new patients a fifteenth, to save some 50 KB of
// a file the front desk prints or mails at once (26 KB stored is 77 KB).
// A longer document compresses every page: the first ones are kept as
// painted until the file is written, when its length is known, and
// compressed then, on the report's thread, where they were painted.
constexpr size_t kStoredPages = 16;

// A page painted before the file was opened: its contents compressed (or
// as painted, for the first pages), and the contents of the items added to
// it afterwards (the footers stamped on every page once the page count is
// known), which go into a second stream of the page. The contents may end
// inside a text object (PdfPainter::Paint with `open`); the stream after
// them ends it.
struct PaintedPage {
  bool painted = false;
  // `contents` as painted, not compressed: a page among the first
  // kStoredPages, or shorter than pdf::kStoredBelow.
  bool raw = false;
  Twips width, height;
  std::string contents;  // compressed, when held in memory
  int64_t spilled = -1;  // else their offset in the temporary file
  uint32_t spilled_size = 0;
  std::string added;         // as painted, the text object left open
  std::string added_packed;  // the text object ended, compressed unless added_raw
  bool added_raw = false;    // added_packed shorter than pdf::kStoredBelow, as painted
  State end;                 // the reader's state where `contents` and `added` end
  // Painted and waiting to be compressed (PdfPaintAhead's raw pages): the
  // number its raw contents were queued under, 0 when none wait.
  uint64_t waiting = 0;
};

// Paints the pages of a document for a PDF file on a second thread while
// the report lays out the rest: each page as it is finished, the items an
// overlay adds to it as they are added. Laying a long list out (its SQL,
// its rows, its tables) and painting and compressing its pages then share
// the machine's two cores, and writing the file is little more than
// copying the painted pages into it.
//
// Everything the second thread reads it is handed: the page's items (the
// store keeps its packed copy) and the fonts the document took since the
// last page, as the report's thread may add fonts while a page is painted.
// The painter and the painted pages are the second thread's until CatchUp
// has it stop; the thread is started again by the next page handed over,
// and stopped and joined by Cleared and by the destructor, so none outlives
// the document.
//
// Compressing a page takes longer than painting it, and on a long list the
// two together take longer than laying the page out: the report's thread
// used to sit waiting for room among the pages handed over, and again at
// CatchUp, while the second thread painted and compressed alone. A page's
// compressed bytes depend only on its painted bytes, so that half of the
// work goes to whichever thread is free: the second thread paints, and
// queues the painted contents; the report's thread, instead of waiting,
// compresses the oldest queued page, and the second thread compresses
// what is queued whenever it has nothing to paint. Painting itself stays
// on the second thread, in page order (fonts are named in order of first
// use and each page carries on from the state the one before left), so
// the file is the same byte for byte whichever thread compressed a page.
class PdfPaintAhead final : public PageSink {
 public:
  PdfPaintAhead(const std::vector<FontFace>& fonts, size_t held_in_memory)
      : doc_fonts_(fonts), held_in_memory_(held_in_memory) {}
  ~PdfPaintAhead() override { Stop(false); }
  PdfPaintAhead(const PdfPaintAhead&) = delete;
  PdfPaintAhead& operator=(const PdfPaintAhead&) = delete;

  void Finished(size_t i, Twips width, Twips height, std::vector<DisplayItem> items,
                PageStore::Packer pack) override {
    Push(Job{Job::kPage, i, width, height, std::move(items), {}, std::move(pack)});
  }
  void Added(size_t i, std::vector<DisplayItem> items) override {
    Push(Job{Job::kAdded, i, {}, {}, std::move(items), {}, {}});
  }
  void Changed(size_t i) override { Push(Job{Job::kForget, i, {}, {}, {}, {}, {}}); }
  // A list the second thread is done with, emptied here: its items were
  // made on this thread and are freed on it.
  std::vector<DisplayItem> Spare() override {
    std::vector<DisplayItem> items;
    {
      std::lock_guard lock(mu_);
      if (spare_.empty()) return items;
      items = std::move(spare_.back());
      spare_.pop_back();
    }
    items.clear();
    return items;
  }
  void Cleared() override {
    Stop(false);
    pages_.clear();
    spare_.clear();
    spill_ = std::make_unique<SpillFile>();
    held_ = 0;
    painter_.reset();
    fonts_.clear();
    sent_ = 0;
    error_ = nullptr;
  }

  // Every page handed over is packed once it is painted: the store reading
  // a page waits for all of them, as CatchUp does, without raising what
  // painting raised (the file's writing does).
  void Drain() override { Finish(); }

  // Waits until every page handed over is painted and compressed, taking
  // its share of the compressing, and stops the second thread; raises what
  // either thread raised. The painter and the pages are then this thread's,
  // the painter knowing every font of the document. Jobs that never
  // gathered enough to start the thread are done here.
  void CatchUp() {
    Finish();
    if (error_) std::rethrow_exception(error_);
    fonts_.insert(fonts_.end(),
                  doc_fonts_.begin() + std::ptrdiff_t(std::min(fonts_.size(), doc_fonts_.size())),
                  doc_fonts_.end());
    if (!painter_) painter_ = std::make_unique<PdfPainter>(fonts_);
  }
  // CatchUp's waiting: every job handed over done, the thread stopped or
  // its painter taken back.
  void Finish() {
    bool taken_back = false;
    {
      std::unique_lock lock(mu_);
      stopping_ = true;
      // A second thread that is not painting (it waits for pages, or was
      // never given a core) is not woken to paint what is left: on a
      // machine whose other core is busy the wake alone took milliseconds.
      // The painter comes back to this thread, which does the rest, and
      // the idle thread ends when it next runs (joined by Stop). One that
      // is painting finishes its batch first, while this thread
      // compresses what it queues.
      while (worker_.joinable() && !worker_done_ && worker_busy_) {
        if (!SqueezeOne(lock) && !PackOne(lock)) {
          report_waiting_ = true;
          room_.wait(lock);
          report_waiting_ = false;
        }
      }
      if (worker_.joinable() && !worker_done_) {
        taken_back = true;
        released_ = true;
        waiting_pages_ = 0;
      }
      work_.notify_one();
    }
    if (!taken_back) Stop(true);
    std::deque<Job> rest;
    rest.swap(jobs_);
    DoHere(rest);
  }
  PdfPainter& Painter() { return *painter_; }
  // The compressor the pages were compressed with, for the file's other
  // streams; made here when no page was compressed.
  pdf::Deflater& Deflater() {
    if (!deflate_) deflate_ = std::make_unique<pdf::Deflater>(pdf::kDeflateLevel);
    return *deflate_;
  }
  // The compressed contents of `page`, read into `buffer` if they were put
  // in the temporary file.
  std::string_view Contents(const PaintedPage& page, std::string& buffer) const {
    if (page.spilled < 0) return page.contents;
    buffer = spill_->Read(page.spilled, page.spilled_size);
    return buffer;
  }
  // Page `i` as painted, or null when it was not (or no longer holds).
  const PaintedPage* Painted(size_t i) const {
    return i < pages_.size() && pages_[i].painted && pages_[i].waiting == 0 ? &pages_[i] : nullptr;
  }

 private:
  struct Job {
    enum Kind { kPage, kAdded, kForget } kind;
    size_t page;
    Twips width, height;
    std::vector<DisplayItem> items;
    std::vector<FontFace> fonts;  // the document's fonts taken since the last job
    PageStore::Packer pack;       // a finished page's, for the store
  };
  // Pages handed over and not yet painted, at most. A page finished while
  // as many wait holds the report's thread until the second thread takes
  // them. Skipping the page instead (to paint it when the file is written)
  // would spare the report's thread a wait on a busy machine, but which
  // pages were skipped would then depend on timing, and with it the order
  // fonts are named in and how each page's contents are split: two runs of
  // one report would give different files. The items waiting stay few
  // either way.
  static constexpr size_t kMostWaiting = 32;
  // Jobs the second thread lets gather before it is woken: a page of a
  // long list is painted faster than it is laid out, and waking the thread
  // for each page costs two switches of the processor a page. The thread
  // itself is started when the first jobs have gathered: a letter or a
  // form of a page or two is painted when its file is written, on the
  // report's thread, as painting it ahead would win nothing and starting a
  // thread (its stack, its own heap arena) costs a one-page report about a
  // tenth of its time. The pages come out the same either way.
  static constexpr size_t kWakeAt = 8;
  // Pages painted on the report's thread, as they gather, before the
  // second thread is started. A document of a dozen pages is painted in
  // a millisecond or two, and handing its pages to a second thread wins
  // little of that back: on a machine whose other core was busy the
  // report's thread waited at CatchUp for the second one to be given a
  // core (an eight-page patient list took 7.8 ms instead of 3.0; see
  // CatchUp for the longer documents).
  static constexpr size_t kHereUpTo = 16;
  // Items the jobs gathered must hold, at least, for the second thread to
  // be started past kHereUpTo: eight pages of a list hold a thousand and
  // more, and painting them is worth a core of its own; eight memos or
  // letters hold a few dozen, painted here in a fraction of what starting
  // the thread cost a 25-page run of memos (and, with the other core busy,
  // the report's thread then waited for the second one at CatchUp). The
  // pages come out the same either way.
  static constexpr size_t kItemsForAThread = 400;
  // Painted pages left waiting to be compressed, at most: past it the
  // second thread compresses one itself after each page it paints, so that
  // the raw contents (some 7 KB a page of a list) never pile up.
  static constexpr size_t kMostRaw = 64;
  // Lists of painted pages kept for the pages to come (Spare), at most:
  // the report's thread takes one a page, so a few are enough to never
  // make one afresh while the second thread keeps up.
  static constexpr size_t kMostSpare = 4;

  // Painted contents waiting to be compressed, and compressed contents
  // waiting to be kept with their page, each under the number its page
  // was queued with (PaintedPage::waiting).
  struct Squeeze {
    size_t page;
    uint64_t number;
    std::string data;
  };

  void Push(Job job) {
    // A thread that gave the painter back at CatchUp ends before another
    // is started.
    if (released_) Stop(true);
    if (doc_fonts_.size() > sent_) {
      job.fonts.assign(doc_fonts_.begin() + std::ptrdiff_t(sent_), doc_fonts_.end());
      sent_ = doc_fonts_.size();
    }
    std::unique_lock lock(mu_);
    if (job.kind == Job::kPage) {
      // The second thread was woken when the jobs reached kWakeAt. While
      // it is behind, compress what it has painted rather than wait.
      while (waiting_pages_ >= kMostWaiting) {
        if (!SqueezeOne(lock) && !PackOne(lock)) {
          report_waiting_ = true;
          room_.wait(lock);
          report_waiting_ = false;
        }
      }
      ++waiting_pages_;
    }
    const bool short_so_far = job.page < kHereUpTo;
    jobs_.push_back(std::move(job));
    if (jobs_.size() < kWakeAt) return;
    if (worker_.joinable()) {
      work_.notify_one();
      return;
    }
    size_t items = 0;
    for (const Job& gathered : jobs_) items += gathered.items.size();
    if (short_so_far || items < kItemsForAThread) {
      std::deque<Job> jobs;
      jobs.swap(jobs_);
      waiting_pages_ = 0;
      lock.unlock();
      DoHere(jobs);
      return;
    }
    stopping_ = false;
    try {
      worker_ = std::thread([this] { Run(); });
    } catch (const std::system_error&) {
      // No thread to be had: the jobs are done here as they gather.
      std::deque<Job> jobs;
      jobs.swap(jobs_);
      waiting_pages_ = 0;
      lock.unlock();
      DoHere(jobs);
    }
  }

  // Stops the second thread once it has done the jobs handed to it, or at
  // once, dropping them.
  void Stop(bool finish) {
    {
      std::lock_guard lock(mu_);
      stopping_ = true;
      if (!finish) {
        jobs_.clear();
        abandon_ = true;
      }
      work_.notify_one();
    }
    if (worker_.joinable()) worker_.join();
    waiting_pages_ = 0;
    abandon_ = false;
    worker_done_ = false;
    worker_busy_ = false;
    released_ = false;
    if (!finish) {
      raw_.clear();
      squeezed_.clear();
    }
  }

  // On the report's thread, `lock` held: compresses the oldest painted
  // page waiting, the lock let go meanwhile. False when none waits.
  bool SqueezeOne(std::unique_lock<std::mutex>& lock) {
    if (raw_.empty()) return false;
    Squeeze s = std::move(raw_.front());
    raw_.pop_front();
    lock.unlock();
    try {
      if (!report_deflate_) report_deflate_ = std::make_unique<pdf::Deflater>(pdf::kDeflateLevel);
      s.data = (*report_deflate_)(s.data);
    } catch (...) {
      lock.lock();
      if (!report_error_) report_error_ = std::current_exception();
      return true;
    }
    lock.lock();
    squeezed_.push_back(std::move(s));
    return true;
  }

  // On the report's thread, `lock` held: packs for the store the newest
  // page waiting to be painted that is not packed yet, the lock let go
  // meanwhile; the second thread then paints it without packing it. False
  // when none waits. Packing a page costs about a sixth of painting it,
  // and the items the store reads back from a page are the same whichever
  // thread packed it (the style numbers in its bytes follow the order the
  // pages were packed in): the report's thread, held until the second
  // thread takes the pages waiting, takes that off it rather than sit idle.
  bool PackOne(std::unique_lock<std::mutex>& lock) {
    const auto job = std::find_if(jobs_.rbegin(), jobs_.rend(),
                                  [](const Job& j) { return j.kind == Job::kPage && j.pack; });
    if (job == jobs_.rend()) return false;
    const PageStore::Packer pack = std::move(job->pack);
    ++packing_there_;
    lock.unlock();
    // The second thread takes no job while one is packed here (Run), so
    // the items stay where they are and are only read.
    pack(job->items);
    lock.lock();
    if (--packing_there_ == 0) work_.notify_one();
    return true;
  }

  // Keeps the pages the report's thread compressed with their pages, on
  // the thread that owns the pages; a page painted again or forgotten since
  // it was queued drops what was compressed for it.
  void TakeSqueezed() {
    std::deque<Squeeze> done;
    {
      std::lock_guard lock(mu_);
      done.swap(squeezed_);
      if (report_error_ && !error_) error_ = report_error_;
      report_error_ = nullptr;
    }
    for (Squeeze& s : done)
      if (s.page < pages_.size() && pages_[s.page].waiting == s.number)
        Keep(pages_[s.page], std::move(s.data));
  }

  // Keeps `contents` (compressed, or as painted for a page marked raw) as
  // `page`'s contents: in memory up to the budget, past it in the
  // temporary file.
  void Keep(PaintedPage& page, std::string contents) {
    page.waiting = 0;
    page.contents = std::move(contents);
    if (held_ + page.contents.size() > held_in_memory_) {
      if (const int64_t at = spill_->Append(page.contents); at >= 0) {
        page.spilled = at;
        page.spilled_size = uint32_t(page.contents.size());
        std::string().swap(page.contents);
        return;
      }
    }
    held_ += page.contents.size();
  }

  // On the second thread: compresses the oldest painted page waiting
  // itself. False when none waits.
  bool SqueezeHere() {
    Squeeze s;
    {
      std::lock_guard lock(mu_);
      if (raw_.empty()) return false;
      s = std::move(raw_.front());
      raw_.pop_front();
    }
    if (s.page < pages_.size() && pages_[s.page].waiting == s.number)
      Keep(pages_[s.page], Deflate(s.data));
    return true;
  }

  // The second thread: takes the jobs gathered so far, all at once, and
  // does them in order.
  void Run() {
    for (;;) {
      std::deque<Job> jobs;
      {
        std::unique_lock lock(mu_);
        worker_busy_ = false;
        if (report_waiting_) room_.notify_all();
        // A page the report's thread packs stays among the jobs until it is
        // done (PackOne).
        work_.wait(lock, [&] {
          return released_ || (packing_there_ == 0 &&
                               (jobs_.size() >= kWakeAt || stopping_ || !raw_.empty()));
        });
        if (released_) return;
        worker_busy_ = true;
        if (jobs_.size() < kWakeAt && !stopping_) {
          // Nothing to paint yet: compress what waits.
          lock.unlock();
          TakeSqueezed();
          SqueezeHere();
          continue;
        }
        if (jobs_.empty()) {
          // Stopping, every page painted: what is still raw is compressed
          // here and by the report's thread together.
          lock.unlock();
          if (abandon_) return;
          while (!abandon_ && SqueezeHere()) {
          }
          TakeSqueezed();
          std::lock_guard done(mu_);
          worker_done_ = true;
          room_.notify_all();
          return;
        }
        jobs.swap(jobs_);
        waiting_pages_ = 0;
      }
      room_.notify_all();
      TakeSqueezed();
      Do(jobs);
      if (abandon_) return;
    }
  }

  // Keeps the list of a page that was painted, items and all, for Spare,
  // when fewer than kMostSpare wait there.
  void Recycle(std::vector<DisplayItem>& items) {
    std::lock_guard lock(mu_);
    if (spare_.size() < kMostSpare) spare_.push_back(std::move(items));
  }

  // Does `jobs` in order, on whichever thread holds the painter.
  void Do(std::deque<Job>& jobs) {
    for (Job& job : jobs) {
      if (abandon_) return;
      fonts_.insert(fonts_.end(), job.fonts.begin(), job.fonts.end());
      // The store's copy of a page is packed here, painted or not.
      if (job.pack) job.pack(job.items);
      // After a failure the rest is dropped; CatchUp raises the failure.
      if (error_) continue;
      try {
        Do(job);
      } catch (...) {
        error_ = std::current_exception();
      }
      // A finished page's list goes back for a page to come (Spare); what
      // is not taken back goes here, as the page is done.
      if (job.kind == Job::kPage) Recycle(job.items);
      std::vector<DisplayItem>().swap(job.items);
    }
  }

  // On the report's thread, no second thread running: does `jobs` and
  // compresses what they painted.
  void DoHere(std::deque<Job>& jobs) {
    Do(jobs);
    while (SqueezeHere()) {
    }
    TakeSqueezed();
  }

  std::string Deflate(std::string_view data) { return Deflater()(data); }

  void Do(const Job& job) {
    if (!painter_) painter_ = std::make_unique<PdfPainter>(fonts_);
    if (job.page >= pages_.size()) pages_.resize(job.page + 1);
    PaintedPage& page = pages_[job.page];
    switch (job.kind) {
      case Job::kPage: {
        held_ -= page.contents.size();
        page = PaintedPage{};
        page.width = job.width;
        page.height = job.height;
        page.painted = true;
        const std::string& painted = painter_->Paint(job.items, job.height, page.end, true);
        // A short page is never compressed, so it is kept as painted too.
        if (job.page < kStoredPages || painted.size() < pdf::kStoredBelow) {
          page.raw = true;
          Keep(page, painted);
          break;
        }
        page.waiting = ++queued_;
        Squeeze raw{job.page, page.waiting, painted};
        bool crowded = false;
        {
          std::lock_guard lock(mu_);
          raw_.push_back(std::move(raw));
          crowded = raw_.size() > kMostRaw;
          if (report_waiting_) room_.notify_all();
        }
        if (crowded) SqueezeHere();
        break;
      }
      case Job::kAdded:
        // Items added to a page that was not painted go with it when the
        // file is written.
        if (!page.painted) break;
        page.added += painter_->Paint(job.items, page.height, page.end, true);
        page.added_packed = page.end.in_text ? page.added + "ET\n" : page.added;
        page.added_raw = page.added_packed.size() < pdf::kStoredBelow;
        if (!page.added_raw) page.added_packed = Deflate(page.added_packed);
        break;
      case Job::kForget:
        held_ -= page.contents.size();
        page = PaintedPage{};
        break;
    }
  }

  const std::vector<FontFace>& doc_fonts_;
  const size_t held_in_memory_;
  size_t sent_ = 0;  // fonts of the document handed to the second thread

  std::mutex mu_;
  std::condition_variable work_;
  std::condition_variable room_;  // the report's thread waits here for room
  std::deque<Job> jobs_;
  size_t waiting_pages_ = 0;
  bool stopping_ = false;
  bool worker_done_ = false;     // the second thread has done every job and returns
  // The second thread holds the painter: it is doing jobs or compressing,
  // not waiting for them.
  bool worker_busy_ = false;
  // The painter was taken back by CatchUp from the idle second thread,
  // which returns without doing anything more.
  bool released_ = false;
  bool report_waiting_ = false;  // the report's thread waits on room_
  size_t packing_there_ = 0;     // jobs_ the report's thread packs (PackOne)
  std::deque<Squeeze> raw_;      // painted, to be compressed
  std::deque<Squeeze> squeezed_;  // compressed by the report's thread
  std::vector<std::vector<DisplayItem>> spare_;  // painted pages' lists (Spare)
  std::exception_ptr report_error_;  // raised compressing on the report's thread
  std::unique_ptr<pdf::Deflater> report_deflate_;  // the report's thread's
  std::atomic<bool> abandon_ = false;  // stop without doing the jobs taken
  std::thread worker_;

  // The second thread's while it runs.
  std::vector<FontFace> fonts_;
  std::unique_ptr<PdfPainter> painter_;
  std::vector<PaintedPage> pages_;
  std::unique_ptr<SpillFile> spill_ = std::make_unique<SpillFile>();
  size_t held_ = 0;  // bytes of pages_' contents in memory
  uint64_t queued_ = 0;  // the last number a painted page was queued under
  std::unique_ptr<pdf::Deflater> deflate_;  // made at the first page
  std::exception_ptr error_;
};

// Writes pages `first` to `last` with `painter`; pages painted ahead are
// taken from `ahead` (null: none).
void Write(const Document& doc, const std::string& path, int first, int last, PdfPainter& painter,
           PdfPaintAhead* ahead) {
  pdf::PdfFile file(path, ahead ? &ahead->Deflater() : nullptr);
  const int catalog = file.Reserve(), pages = file.Reserve(), resources = file.Reserve(),
            info = file.Reserve();
  const bool stored = size_t(last - first + 1) <= kStoredPages;
  std::string kids;
  int end_text = 0;
  std::string read_back;
  // Pages not painted ahead are painted here in batches, and while one
  // batch is painted the one before is compressed on a second thread: it
  // needs nothing but the pages' own bytes. The file itself is written
  // from this thread only, in page order. A batch of pages rather than one
  // page a thread keeps the cost of starting threads small on a report of
  // thousands of pages.
  struct Packed {
    std::vector<int> ids;
    std::future<std::vector<std::string>> data;
  };
  constexpr size_t kPagesABatch = 32;
  std::vector<int> batch_ids;
  std::vector<std::string> batch;
  Packed pending;
  const auto write_pending = [&] {
    if (!pending.data.valid()) return;
    const std::vector<std::string> packed = pending.data.get();
    for (size_t k = 0; k < packed.size(); ++k)
      file.Stream(pending.ids[k], "/Filter /FlateDecode", packed[k], 0);
  };
  const auto send_batch = [&] {
    if (batch.empty()) return;
    Packed next{std::move(batch_ids), std::async(std::launch::async, [pages = std::move(batch)] {
                  pdf::Deflater deflate(pdf::kDeflateLevel);
                  std::vector<std::string> out;
                  out.reserve(pages.size());
                  for (const auto& p : pages) out.push_back(deflate(p));
                  return out;
                })};
    batch_ids.clear();
    batch.clear();
    write_pending();
    pending = std::move(next);
  };
  for (int i = first; i <= last; ++i) {
    // A page reopened and not yet packed again holds items not handed over.
    const PaintedPage* painted =
        ahead && doc.pages.Sealed(size_t(i - 1)) ? ahead->Painted(size_t(i - 1)) : nullptr;
    Twips width, height;
    std::string contents;
    if (painted) {
      width = painted->width;
      height = painted->height;
      const int content = file.Reserve();
      const std::string_view painted_contents = ahead->Contents(*painted, read_back);
      if (!painted->raw)
        file.Stream(content, "/Filter /FlateDecode", painted_contents, 0);
      else if (stored || painted_contents.size() < pdf::kStoredBelow)
        file.Stream(content, "", painted_contents, 0);
      else
        file.Stream(content, "/Filter /FlateDecode", ahead->Deflater()(painted_contents), 0);
      contents = std::to_string(content) + " 0 R";
      int more = 0;
      if (!painted->added.empty()) {
        more = file.Reserve();
        file.Stream(more, painted->added_raw ? "" : "/Filter /FlateDecode", painted->added_packed, 0);
      } else if (painted->end.in_text) {
        // Pages without additions share one stream that ends their text.
        if (!end_text) {
          end_text = file.Reserve();
          file.Stream(end_text, "", "ET\n", 0);
        }
        more = end_text;
      }
      if (more) contents = "[" + contents + " " + std::to_string(more) + " 0 R]";
    } else {
      const Page page = doc.pages.Read(size_t(i - 1));
      width = page.width;
      height = page.height;
      const int content = file.Reserve();
      State state;
      const std::string& painted = painter.Paint(page.items, page.height, state);
      if (stored || painted.size() < pdf::kStoredBelow) {
        file.Stream(content, "", painted, 0);
      } else {
        batch_ids.push_back(content);
        batch.push_back(painted);
        if (batch.size() == kPagesABatch) send_batch();
      }
      contents = std::to_string(content) + " 0 R";
    }
    const int id = file.Reserve();
    std::string d = "<< /Type /Page /Parent " + std::to_string(pages) + " 0 R /MediaBox [0 0 ";
    AppendNumber(d, Pt(width));
    d += ' ';
    AppendNumber(d, Pt(height));
    d += "] /Resources " + std::to_string(resources) + " 0 R /Contents " + contents + " >>";
    file.Object(id, d);
    kids += std::to_string(id) + " 0 R ";
  }
  send_batch();
  write_pending();
  file.Object(resources, painter.WriteResources(file));
  file.Object(pages, "<< /Type /Pages /Kids [" + kids + "] /Count " +
                         std::to_string(last - first + 1) + " >>");
  file.Object(catalog, "<< /Type /Catalog /Pages " + std::to_string(pages) + " 0 R >>");

  // The document's name and identity (pdf_metadata.h), entries with
  // nothing to say left out. No date: two runs of one report on one day
  // give the same file, and the identity names the day the run took as
  // today.
  const PdfMetadata meta = MetadataOf(doc);
  const std::pair<const char*, const std::string*> entries[] = {
      {"/Title ", &meta.title},       {"/Author ", &meta.author},   {"/Subject ", &meta.subject},
      {"/Keywords ", &meta.keywords}, {"/Creator ", &meta.creator},
  };
  std::string d = "<<";
  for (const auto& [key, value] : entries) {
    if (value->empty()) continue;
    d += ' ';
    d += key;
    pdf::AppendTextString(d, *value);
  }
  file.Object(info, d + " >>");
  file.Finish(catalog, info);
}

}  // namespace

std::shared_ptr<PageSink> PaintPdfAhead(const std::vector<FontFace>& fonts, size_t held_in_memory) {
  return std::make_shared<PdfPaintAhead>(fonts, held_in_memory);
}

void WritePdf(const Document& doc, const std::string& path, int first, int last) {
  // Pages painted ahead serve a file of the whole document; a file of some
  // of its pages (one letter of a run) is painted afresh, so that it holds
  // only the fonts and pictures of its own pages.
  auto* ahead = dynamic_cast<PdfPaintAhead*>(doc.pages.Sink());
  if (ahead && first == 1 && last == int(doc.pages.size())) {
    ahead->CatchUp();
    Write(doc, path, first, last, ahead->Painter(), ahead);
    return;
  }
  PdfPainter painter(doc.fonts);
  Write(doc, path, first, last, painter, nullptr);
}

}  // namespace orv::render
