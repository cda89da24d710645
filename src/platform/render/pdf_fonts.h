// Fonts embedded in the PDFs the program writes: each TrueType file the
// layout measured goes in once, as a CID-keyed font whose character codes
// are the file's own glyph numbers (Identity-H), cut down to the glyphs the
// document shows.
//
// Glyph numbers stay as they are in the file, so the page contents show the
// glyphs the placer chose (cairo_fonts.h) without any renumbering; the
// subset keeps every table a reader needs to draw them and empties the
// outlines of the glyphs that are not shown. A ToUnicode map gives the text
// back to a reader that copies or searches it.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "platform/host/mapped_file.h"
#include "platform/render/pdf_writer.h"

namespace orv::render::pdf {

// The TrueType font `font` (the bytes of a .ttf file) with only the outlines
// of `glyphs`, of glyph 0 (the missing glyph) and of the parts of composite
// glyphs among them; glyph numbers are kept, and the file ends after the
// last glyph kept. Raises RenderError for a file that is not a TrueType
// font with outlines.
std::string SubsetTrueType(std::string_view font, const std::set<uint16_t>& glyphs);

// One font file of a document: the glyphs shown from it and the character
// each stands for, written into the PDF once the pages are done.
class EmbeddedFont {
 public:
  // Maps the font file; raises RenderError naming it when it cannot be
  // read or is no TrueType font.
  explicit EmbeddedFont(std::string file);
  // The advance of `glyph` in thousandths of the type size, exact. The
  // font's widths array gives it cut to whole thousandths, as cairo wrote
  // widths (see the text of pdf_renderer.cpp).
  double Width(uint16_t glyph) const;
  // The advance of `glyph` in font units, as the file gives it.
  uint16_t AdvanceUnits(uint16_t glyph) const;
  uint16_t units_per_em() const { return units_per_em_; }
  // The glyph of character `c` in the Unicode character map FreeType
  // chooses for the file (a UCS-4 map when the file has one, else the
  // last UCS-2 one); 0 for a character it does not map or when the file has
  // no such map in format 4 or 12.
  uint16_t GlyphOf(char32_t c) const;
  // GlyphOf(c) and the AdvanceUnits of that glyph together. Characters
  // below 256, nearly all a practice's text, are looked up in the file once
  // and kept: a long list shows millions of them, and searching the
  // character map for each was a third of the painting.
  struct Mapped {
    uint16_t glyph;
    uint16_t advance;
  };
  Mapped Map(char32_t c) {
    if (c < latin_.size()) {
      Mapped& m = latin_[c];
      if (m.glyph == kNotLooked) m = Look(c);
      return m;
    }
    return Look(c);
  }
  // Marks `glyph` as shown, standing for the character `c` (0 for none
  // known); the first character a glyph is shown for is the one a reader
  // gets back.
  // Glyph numbers past the file's glyphs are not in it and are left out.
  void Use(uint16_t glyph, char32_t c) {
    if (glyph >= text_.size()) return;
    uint32_t& known = text_[glyph];
    if (known == kUnused || known == 0) known = c;
  }

  // Writes the font's objects: the Type 0 font, its CID font, descriptor,
  // subset file and ToUnicode map. Returns the object number of the Type 0
  // font, which page resources name.
  int Write(PdfFile& pdf) const;

 private:
  std::string file_;
  // Mapped, not read: of a file of some hundreds of kilobytes a document
  // touches its metrics and the outlines of the glyphs it shows.
  std::shared_ptr<const host::MappedFile> mapped_;
  std::string_view data_;
  uint16_t units_per_em_ = 1000;
  uint16_t advance_count_ = 0;  // glyphs with an advance of their own
  size_t hmtx_ = 0;             // offset of the advances in data_
  size_t hmtx_length_ = 0;
  size_t cmap_ = 0;             // offset in data_ of the character map read, 0: none
  uint16_t cmap_format_ = 0;
  uint32_t MappedGlyph(char32_t c) const;
  Mapped Look(char32_t c) const {
    const uint16_t g = GlyphOf(c);
    return {g, AdvanceUnits(g)};
  }
  // No glyph number reaches it: a file holds at most 65,535 glyphs.
  static constexpr uint16_t kNotLooked = UINT16_MAX;
  std::array<Mapped, 256> latin_;  // by character; kNotLooked until met
  static constexpr uint32_t kUnused = UINT32_MAX;
  std::vector<uint32_t> text_;  // glyph -> character, one entry per glyph of the file
};

}  // namespace orv::render::pdf
