#include "platform/render/pdf_renderer.h"

#include <cairo.h>

#include <cmath>
#include <future>
#include <map>
#include <memory>
#include <numbers>
#include <optional>
#include <vector>

#include "platform/render/cairo_fonts.h"
#include "platform/render/pdf_fonts.h"
#include "platform/render/pdf_metadata.h"
#include "platform/render/pdf_writer.h"
#include "platform/render/renderer.h"

namespace orv::render {
namespace {

using pdf::AppendNumber;

double Pt(Twips t) {
  return t.points();
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
};

// The glyphs and positions of the runs, through a cairo context set up as
// the cairo renderers set theirs: the same placer, so the same doubles.
class Glyphs {
 public:
  explicit Glyphs(const Document& doc) : doc_(doc) {
    surface_ = cairo_recording_surface_create(CAIRO_CONTENT_COLOR, nullptr);
    cr_ = cairo_create(surface_);
    SetUnhinted(cr_);
  }
  ~Glyphs() {
    cairo_destroy(cr_);
    cairo_surface_destroy(surface_);
  }
  Glyphs(const Glyphs&) = delete;
  Glyphs& operator=(const Glyphs&) = delete;

  // The glyphs of `t`, set from the origin.
  const std::vector<cairo_glyph_t>& Of(const TextRun& t) {
    const FontFace& face = doc_.fonts[t.font];
    if (t.font != font_ || t.size_pt != size_) {
      cairo_set_font_face(cr_, FaceFor(face));
      cairo_set_font_size(cr_, t.size_pt);
      font_ = t.font;
      size_ = t.size_pt;
    }
    out_.clear();
    PlaceGlyphs(cairo_get_scaled_font(cr_), t, face.synthetic_bold, 0, 0, &placer_, out_);
    return out_;
  }

 private:
  const Document& doc_;
  cairo_surface_t* surface_;
  cairo_t* cr_;
  GlyphPlacer placer_;
  uint16_t font_ = UINT16_MAX;
  float size_ = 0;
  std::vector<cairo_glyph_t> out_;
};

class PdfPainter {
 public:
  PdfPainter(const Document& doc, pdf::PdfFile& file)
      : doc_(doc), file_(file), glyphs_(doc), font_of_(doc.fonts.size(), -1) {}

  // The content stream of `page`.
  const std::string& Paint(const Page& page) {
    out_.clear();
    state_ = State{};
    saved_.clear();
    in_text_ = false;
    line_ = TextLine{};
    height_ = Pt(page.height);
    for (const auto& item : page.items) std::visit([&](const auto& x) { Draw(x); }, item);
    EndText();
    return out_;
  }

  // The fonts and pictures every page names, as one resource dictionary.
  std::string Resources() const {
    std::string d = "<< /Font <<";
    for (size_t i = 0; i < fonts_.size(); ++i)
      d += " /F" + std::to_string(i) + " " + std::to_string(fonts_[i]->object_id()) + " 0 R";
    d += " >> /XObject <<";
    // By resource number, the name the pages draw each picture by; the map
    // itself runs in the order of the pictures' addresses.
    std::vector<int> objects(images_.size());
    for (const auto& [image, id] : images_) objects[id.first] = id.second;
    for (size_t i = 0; i < objects.size(); ++i)
      d += " /I" + std::to_string(i) + " " + std::to_string(objects[i]) + " 0 R";
    return d + " >> >>";
  }

  void WriteFonts() {
    for (const auto& f : fonts_) f->Write(file_);
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
    if (in_text_) return;
    Op("BT");
    in_text_ = true;
    // A text object begins at the identity matrix.
    upright_ = true;
    line_x_ = line_y_ = 0;
  }
  void EndText() {
    CloseLine();
    if (!in_text_) return;
    Op("ET");
    in_text_ = false;
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

  // The document's font `index` as a font of the file, embedded on first use.
  pdf::EmbeddedFont& FontOf(uint16_t index, int& resource) {
    if (font_of_[index] < 0) {
      const std::string& path = doc_.fonts[index].file;
      auto it = by_file_.find(path);
      if (it == by_file_.end()) {
        fonts_.push_back(std::make_unique<pdf::EmbeddedFont>(path, file_.Reserve()));
        it = by_file_.emplace(path, int(fonts_.size() - 1)).first;
      }
      font_of_[index] = it->second;
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
    CloseLine();
    e = std::round(e * 10000) / 10000;
    f = std::round(f * 10000) / 10000;
    const bool upright = a == 1 && b == 0 && c == 0 && d == 1;
    if (upright && upright_) {
      Num(e - line_x_, 4);
      Num(f - line_y_, 4);
      out_ += "Td\n[(";
    } else {
      Num(a, 5);
      Num(b, 5);
      Num(c, 5);
      Num(d, 5);
      Num(e, 4);
      Num(f, 4);
      out_ += "Tm\n[(";
    }
    upright_ = upright;
    line_x_ = e;
    line_y_ = f;
    line_ = TextLine{true, e, f, 0, 0, 0};
  }

  // Appends glyph `g` to a literal string: its two bytes, escaped where
  // the string's syntax needs it.
  void Glyph(uint16_t g) {
    for (const auto byte : {char(g >> 8), char(g & 0xFF)}) {
      if (byte == '(' || byte == ')' || byte == '\\') {
        out_.push_back('\\');
      } else if (byte == '\r') {
        out_ += "\\r";
        continue;
      }
      out_.push_back(byte);
    }
  }

  // A run: glyphs placed as the cairo renderers place them, written as
  // above; synthetic bold strokes the outlines in the fill colour at the
  // width FreeType grows them by, synthetic italic slants the matrix.
  void Draw(const TextRun& t) {
    if (t.font >= doc_.fonts.size()) throw RenderError("Text run names a font the document lacks");
    const FontFace& face = doc_.fonts[t.font];
    const std::vector<cairo_glyph_t>& glyphs = glyphs_.Of(t);
    if (glyphs.empty() && !t.underline) return;
    int resource = 0;
    pdf::EmbeddedFont& font = FontOf(t.font, resource);
    // The character each glyph stands for: the placer sets one glyph per
    // character, so the two line up unless the text was not plain UTF-8.
    const std::u32string chars = pdf::DecodeUtf8(t.text);
    const bool paired = chars.size() == glyphs.size();
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
    if (!glyphs.empty()) {
      // A style the open line does not have ends it.
      const double size = std::round(double(t.size_pt) * 10000) / 10000;
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
      for (size_t i = 0; i < glyphs.size(); ++i) {
        // The glyph's place on the line, in em.
        double at = glyphs[i].x / size;
        if (plain) {
          const double x = base_x + glyphs[i].x, y = base_y;
          at = (x - line_.x) / size;
          if (!line_.open || std::abs(y - line_.y) / size > kSameLine ||
              std::abs(at - line_.advances) > kFarAway) {
            OpenLine(1, 0, 0, 1, x, y);
            at = 0;
          }
        }
        const auto g = uint16_t(glyphs[i].index);
        font.Use(g, paired ? chars[i] : 0);
        if (at != line_.pen) {
          const double adjust = std::round(-1000 * (at - line_.pen));
          if (std::abs(adjust) >= 3) {
            out_ += ')';
            AppendNumber(out_, adjust, 0);
            out_ += '(';
            line_.pen -= adjust / 1000;
          }
        }
        Glyph(g);
        const double advance = font.Width(g) / 1000;
        line_.pen += advance;
        line_.advances += advance;
        if (++line_.batch == kBatch) {
          line_.batch = 0;
          line_.advances = line_.pen;
        }
      }
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

  // The resource number of a picture, written on first use: pages share one
  // image object for a logo printed on each of them (the page store hands
  // every page the same Image).
  size_t ImageOf(const std::shared_ptr<const Image>& image) {
    auto it = images_.find(image.get());
    if (it != images_.end()) return it->second.first;
    const Image& img = *image;
    const size_t n = size_t(img.width) * size_t(img.height);
    if (img.pixels.size() < n) throw RenderError("A picture holds fewer pixels than its size");
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
    const int id = file_.Reserve();
    std::string dict = "/Type /XObject /Subtype /Image " + size +
                       " /ColorSpace /DeviceRGB /BitsPerComponent 8 /Interpolate true";
    if (!opaque) {
      const int mask = file_.Reserve();
      file_.Stream(mask,
                   "/Type /XObject /Subtype /Image " + size +
                       " /ColorSpace /DeviceGray /BitsPerComponent 8 /Interpolate true",
                   alpha);
      dict += " /SMask " + std::to_string(mask) + " 0 R";
    }
    file_.Stream(id, dict, rgb);
    const size_t number = images_.size();
    images_.emplace(image.get(), std::pair{number, id});
    kept_.push_back(image);
    return number;
  }

  const Document& doc_;
  pdf::PdfFile& file_;
  Glyphs glyphs_;
  std::vector<int> font_of_;  // document font -> index in fonts_, -1 before use
  std::map<std::string, int> by_file_;
  std::vector<std::unique_ptr<pdf::EmbeddedFont>> fonts_;
  // Picture -> (resource number, object number); the pictures are kept
  // alive so that no other picture takes an address written down here.
  std::map<const Image*, std::pair<size_t, int>> images_;
  std::vector<std::shared_ptr<const Image>> kept_;

  std::string out_;
  State state_;
  std::vector<State> saved_;
  bool in_text_ = false;
  TextLine line_;
  // The text line matrix of the open text object: a translation to
  // (line_x_, line_y_) while upright_.
  bool upright_ = true;
  double line_x_ = 0, line_y_ = 0;
  double height_ = 0;
};

}  // namespace

void WritePdf(const Document& doc, const std::string& path, int first, int last) {
  pdf::PdfFile file(path);
  const int catalog = file.Reserve(), pages = file.Reserve(), resources = file.Reserve(),
            info = file.Reserve();
  PdfPainter painter(doc, file);
  std::string kids;
  // Compressing page contents is about half of the writer's time on a long
  // table, and it needs nothing but the page's own bytes: pages are painted
  // in batches, and while one batch is painted the one before is compressed
  // on a second thread. The file itself is written from this thread only,
  // in page order. A batch of pages rather than one page a thread keeps the
  // cost of starting threads small on a report of thousands of pages.
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
                  std::vector<std::string> out;
                  out.reserve(pages.size());
                  for (const auto& p : pages) out.push_back(pdf::Deflate(p, pdf::kDeflateLevel));
                  return out;
                })};
    batch_ids.clear();
    batch.clear();
    write_pending();
    pending = std::move(next);
  };
  for (int i = first; i <= last; ++i) {
    const Page page = doc.pages.Read(size_t(i - 1));
    const int content = file.Reserve(), id = file.Reserve();
    batch_ids.push_back(content);
    batch.push_back(painter.Paint(page));
    if (batch.size() == kPagesABatch) send_batch();
    std::string d = "<< /Type /Page /Parent " + std::to_string(pages) + " 0 R /MediaBox [0 0 ";
    AppendNumber(d, Pt(page.width));
    d += ' ';
    AppendNumber(d, Pt(page.height));
    d += "] /Resources " + std::to_string(resources) + " 0 R /Contents " + std::to_string(content) +
         " 0 R >>";
    file.Object(id, d);
    kids += std::to_string(id) + " 0 R ";
  }
  send_batch();
  write_pending();
  painter.WriteFonts();
  file.Object(resources, painter.Resources());
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

}  // namespace orv::render
