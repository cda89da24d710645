#include "platform/render/renderer.h"

#include <cairo-pdf.h>
#include <cairo.h>

#include <cmath>
#include <cstdlib>
#include <numbers>
#include <string_view>

#include "platform/render/cairo_fonts.h"
#include "platform/render/pdf_metadata.h"
#include "platform/render/pdf_renderer.h"

namespace orv::render {
namespace {

double Pt(Twips t) {
  return t.points();
}

void SetColor(cairo_t* cr, Rgb c) {
  cairo_set_source_rgb(cr, c.r / 255.0, c.g / 255.0, c.b / 255.0);
}

class Painter {
 public:
  Painter(cairo_t* cr, const Document& doc) : cr_(cr), doc_(doc) {
    SetUnhinted(cr_);
    faces_.resize(doc.fonts.size(), nullptr);
  }

  void Paint(const Page& page) {
    for (const auto& item : page.items) std::visit([&](const auto& x) { Draw(x); }, item);
    Flush();
  }

 private:
  // Runs in one font, size and colour, upright and unclipped, that follow one
  // another are painted by one call: the PDF then holds one text object per
  // group instead of one per run, which is most of the cost of a long table.
  void Draw(const TextRun& t) {
    if (t.font >= faces_.size()) throw RenderError("Text run names a font the document lacks");
    if (!faces_[t.font]) faces_[t.font] = FaceFor(doc_.fonts[t.font]);
    const bool plain = !t.clip && t.angle == 0 && !t.underline;
    if (!plain || (!batch_.empty() &&
                   !(t.font == batch_font_ && t.size_pt == batch_size_ && t.color == batch_color_)))
      Flush();
    if (t.font != set_font_ || t.size_pt != set_size_) {
      cairo_set_font_face(cr_, faces_[t.font]);
      cairo_set_font_size(cr_, t.size_pt);
      set_font_ = t.font;
      set_size_ = t.size_pt;
    }
    const bool bold = doc_.fonts[t.font].synthetic_bold;
    if (plain) {
      PlaceGlyphs(cairo_get_scaled_font(cr_), t, bold, Pt(t.x), Pt(t.baseline), &placer_, batch_);
      batch_font_ = t.font;
      batch_size_ = t.size_pt;
      batch_color_ = t.color;
      return;
    }
    cairo_save(cr_);
    if (t.clip) {
      cairo_rectangle(cr_, Pt(t.clip->x), Pt(t.clip->y), Pt(t.clip->width), Pt(t.clip->height));
      cairo_clip(cr_);
    }
    SetColor(cr_, t.color);
    cairo_translate(cr_, Pt(t.x), Pt(t.top));
    if (t.angle != 0) cairo_rotate(cr_, -t.angle * std::numbers::pi / 1800.0);
    std::vector<cairo_glyph_t> glyphs;
    PlaceGlyphs(cairo_get_scaled_font(cr_), t, bold, 0, Pt(t.baseline - t.top), nullptr, glyphs);
    cairo_show_glyphs(cr_, glyphs.data(), int(glyphs.size()));
    if (t.underline) {
      cairo_set_line_width(cr_, t.size_pt / 16.0);
      cairo_move_to(cr_, 0, Pt(t.baseline - t.top) + t.size_pt / 8.0);
      cairo_rel_line_to(cr_, Pt(t.width), 0);
      cairo_stroke(cr_);
    }
    cairo_restore(cr_);
  }

 public:
  void Flush() {
    if (batch_.empty()) return;
    SetColor(cr_, batch_color_);
    cairo_show_glyphs(cr_, batch_.data(), int(batch_.size()));
    batch_.clear();
  }

 private:
  void Draw(const Line& l) {
    Flush();
    cairo_save(cr_);
    // Width 0 is the thinnest line the device draws: a hairline.
    const double w = std::max(Pt(l.width), 0.25);
    cairo_set_line_width(cr_, w);
    SetColor(cr_, l.color);
    if (l.dotted) {
      const double dash[] = {w, 2 * w + 1};
      cairo_set_dash(cr_, dash, 2, 0);
    }
    cairo_move_to(cr_, Pt(l.x1), Pt(l.y1));
    cairo_line_to(cr_, Pt(l.x2), Pt(l.y2));
    cairo_stroke(cr_);
    cairo_restore(cr_);
  }

  void Draw(const FilledRect& r) {
    Flush();
    SetColor(cr_, r.color);
    cairo_rectangle(cr_, Pt(r.box.x), Pt(r.box.y), Pt(r.box.width), Pt(r.box.height));
    cairo_fill(cr_);
  }

  void Draw(const Picture& p) {
    Flush();
    if (!p.image || p.image->width <= 0 || p.image->height <= 0) return;
    const Image& img = *p.image;
    cairo_surface_t* s = cairo_image_surface_create_for_data(
        reinterpret_cast<unsigned char*>(const_cast<uint32_t*>(img.pixels.data())),
        CAIRO_FORMAT_ARGB32, img.width, img.height, img.width * 4);
    cairo_save(cr_);
    cairo_translate(cr_, Pt(p.box.x), Pt(p.box.y));
    cairo_scale(cr_, Pt(p.box.width) / img.width, Pt(p.box.height) / img.height);
    cairo_set_source_surface(cr_, s, 0, 0);
    cairo_paint(cr_);
    cairo_restore(cr_);
    cairo_surface_destroy(s);
  }

  void Draw(const ScaledBlock&) {}  // a record of the layout, nothing to paint

  cairo_t* cr_;
  const Document& doc_;
  std::vector<cairo_font_face_t*> faces_;
  uint16_t set_font_ = UINT16_MAX;  // the font and size set on the context
  float set_size_ = 0;
  std::vector<cairo_glyph_t> batch_;
  GlyphPlacer placer_;
  uint16_t batch_font_ = 0;
  float batch_size_ = 0;
  Rgb batch_color_;
};

void Check(cairo_status_t st, const std::string& path) {
  if (st != CAIRO_STATUS_SUCCESS)
    throw RenderError("Cannot write " + path + ": " + cairo_status_to_string(st));
}

// The PDF through cairo's PDF surface, pages `first` to `last` (both valid).
void RenderCairoPdf(const Document& doc, const std::string& path, int first, int last) {
  const Page p0 = doc.pages.Read(first - 1);
  cairo_surface_t* surface = cairo_pdf_surface_create(path.c_str(), Pt(p0.width), Pt(p0.height));
  Check(cairo_surface_status(surface), path);
  // The document's name and identity (pdf_metadata.h); cairo leaves out
  // what is not set.
  const PdfMetadata meta = MetadataOf(doc);
  const std::pair<cairo_pdf_metadata_t, const std::string*> entries[] = {
      {CAIRO_PDF_METADATA_TITLE, &meta.title},     {CAIRO_PDF_METADATA_AUTHOR, &meta.author},
      {CAIRO_PDF_METADATA_SUBJECT, &meta.subject}, {CAIRO_PDF_METADATA_KEYWORDS, &meta.keywords},
      {CAIRO_PDF_METADATA_CREATOR, &meta.creator},
  };
  for (const auto& [key, value] : entries)
    if (!value->empty()) cairo_pdf_surface_set_metadata(surface, key, value->c_str());
  cairo_t* cr = cairo_create(surface);
  try {
    Painter painter(cr, doc);
    for (int i = first; i <= last; ++i) {
      const Page page = doc.pages.Read(i - 1);
      cairo_pdf_surface_set_size(surface, Pt(page.width), Pt(page.height));
      painter.Paint(page);
      cairo_show_page(cr);
    }
  } catch (...) {
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    throw;
  }
  cairo_destroy(cr);
  cairo_surface_finish(surface);
  const cairo_status_t st = cairo_surface_status(surface);
  cairo_surface_destroy(surface);
  Check(st, path);
}

}  // namespace

void RenderPdf(const Document& doc, const std::string& path, int first, int last) {
  const int n = int(doc.pages.size());
  if (last == 0) last = n;
  if (n == 0 || first < 1 || last > n || first > last)
    throw RenderError("RenderPdf: pages " + std::to_string(first) + " to " + std::to_string(last) +
                      " are not in a document of " + std::to_string(n) + " pages");
  // ORVENDA_PDF_ENGINE=cairo writes through cairo's PDF surface as before
  // the program had its own writer. It stays for a release so that a page
  // that reads wrong can be compared with the older file made from the
  // same document (scripts/compare-pdf-engines.sh).
  const char* engine = std::getenv("ORVENDA_PDF_ENGINE");
  if (engine && std::string_view(engine) == "cairo") {
    RenderCairoPdf(doc, path, first, last);
  } else {
    WritePdf(doc, path, first, last);
  }
}

std::vector<double> GlyphEdges(const Document& doc, const TextRun& run) {
  if (run.font >= doc.fonts.size()) throw RenderError("Text run names a font the document lacks");
  cairo_surface_t* surface = cairo_recording_surface_create(CAIRO_CONTENT_COLOR, nullptr);
  cairo_t* cr = cairo_create(surface);
  SetUnhinted(cr);
  cairo_set_font_face(cr, FaceFor(doc.fonts[run.font]));
  cairo_set_font_size(cr, run.size_pt);
  cairo_scaled_font_t* font = cairo_get_scaled_font(cr);
  std::vector<cairo_glyph_t> glyphs;
  PlaceGlyphs(font, run, doc.fonts[run.font].synthetic_bold, Pt(run.x), Pt(run.baseline), nullptr,
              glyphs);
  std::vector<double> edges;
  for (const auto& g : glyphs) edges.push_back(g.x);
  if (!glyphs.empty()) {
    cairo_text_extents_t e;
    cairo_scaled_font_glyph_extents(font, &glyphs.back(), 1, &e);
    const bool bold = doc.fonts[run.font].synthetic_bold && e.x_advance != 0;
    edges.push_back(glyphs.back().x + e.x_advance + (bold ? run.size_pt / 24.0 : 0));
  }
  cairo_destroy(cr);
  cairo_surface_destroy(surface);
  return edges;
}

void RenderPng(const Document& doc, int page, double dpi, const std::string& path) {
  if (page < 1 || page > int(doc.pages.size()))
    throw RenderError("RenderPng: the document has no page " + std::to_string(page));
  if (!(dpi > 0 && dpi <= 1200)) throw RenderError("RenderPng: resolution out of range");
  const Page p = doc.pages.Read(page - 1);
  const int w = int(std::ceil(p.width.inches() * dpi)), h = int(std::ceil(p.height.inches() * dpi));
  cairo_surface_t* surface = cairo_image_surface_create(CAIRO_FORMAT_RGB24, w, h);
  cairo_t* cr = cairo_create(surface);
  cairo_set_source_rgb(cr, 1, 1, 1);
  cairo_paint(cr);
  cairo_scale(cr, dpi / 72.0, dpi / 72.0);
  try {
    Painter(cr, doc).Paint(p);
  } catch (...) {
    cairo_destroy(cr);
    cairo_surface_destroy(surface);
    throw;
  }
  cairo_destroy(cr);
  const cairo_status_t st = cairo_surface_write_to_png(surface, path.c_str());
  cairo_surface_destroy(surface);
  Check(st, path);
}

}  // namespace orv::render
