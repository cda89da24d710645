// Text measurement from TrueType files loaded by path.
//
// The advance widths and vertical metrics come straight from the font file's
// `cmap`, `hmtx`, `head` and `OS/2` tables, so a layout is the same on every
// machine that has the same font packages, whatever the system's font
// configuration says. Kerning is not applied, and the renderers do not apply
// it either, so measured and painted widths agree.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "platform/render/display_list.h"
#include "platform/render/twips.h"

namespace orv::frame {

// Decodes one code point from UTF-8 at `i` and advances `i`. A byte that does
// not start a valid sequence is taken as a Latin-1 character, so text from an
// older code page still measures and prints.
char32_t NextCodePoint(std::string_view s, size_t& i);

// Metrics of one font file. Advances of the first 2,048 code points (the
// Latin, Greek and Cyrillic scripts and their accents) sit in a flat table,
// which makes measuring a string a sum of lookups; the rest of the Basic
// Multilingual Plane that the font maps is kept sorted and searched. Only
// the tables named above are read from the file, so loading a font costs
// little more than its character map.
class FontMetrics {
 public:
  // Reads the file; throws SurfaceError when it is missing or not TrueType.
  // With `synthetic_bold` the metrics are those of the file's shapes made
  // bold by the renderer (FreeType's emboldening): each glyph with an
  // advance takes a 24th of an em more, the width the stroke grows by, so
  // emboldened text keeps the spacing of the regular.
  static std::shared_ptr<const FontMetrics> Load(const std::string& path,
                                                 bool synthetic_bold = false);
  // The metrics of `regular` (loaded without synthetic_bold) as Load gives
  // them with synthetic_bold, without reading the file again.
  static std::shared_ptr<const FontMetrics> Emboldened(const FontMetrics& regular);

  int units_per_em() const { return units_per_em_; }
  // Ascent and descent as the host platform measures a line: the font's
  // "win" metrics, in font units.
  int ascent() const { return ascent_; }
  int descent() const { return descent_; }

  // Advances are kept in 24ths of a font unit, so that the emboldening width
  // of a 24th of an em adds up exactly.
  static constexpr int kSubUnits = 24;
  // Advance of one character in 24ths of a font unit; characters the font
  // lacks take the advance of its missing-glyph shape.
  uint32_t Advance(char32_t c) const { return c < kDirect ? direct_[c] : Beyond(c); }
  // Sum of the advances of a UTF-8 string, in 24ths of a font unit. Inline,
  // as layout measures every word of every cell with it.
  int64_t Units(std::string_view utf8) const {
    int64_t sum = 0;
    size_t i = 0;
    while (i < utf8.size()) {
      const auto b = static_cast<unsigned char>(utf8[i]);
      if (b < 0x80) {  // the common case, without the decoder
        sum += direct_[b];
        ++i;
      } else {
        sum += Advance(NextCodePoint(utf8, i));
      }
    }
    return sum;
  }

  Twips Width(std::string_view utf8, double size_pt) const { return Width(Units(utf8), size_pt); }
  // The width of `units` (24ths of a font unit, as Units sums them).
  Twips Width(int64_t units, double size_pt) const {
    return Twips(double(units) * size_pt * Twips::kPerPoint / (double(units_per_em_) * kSubUnits));
  }
  Twips Scale(int64_t units, double size_pt) const {
    return Twips(double(units) * size_pt * Twips::kPerPoint / units_per_em_);
  }
  Twips LineHeight(double size_pt) const { return Scale(ascent_ + descent_, size_pt); }
  Twips Ascent(double size_pt) const { return Scale(ascent_, size_pt); }

 private:
  int units_per_em_ = 2048;
  int ascent_ = 0;
  int descent_ = 0;
  static constexpr char32_t kDirect = 0x800;
  uint32_t Beyond(char32_t c) const;

  uint32_t missing_advance_ = 0;
  std::array<uint32_t, kDirect> direct_{};  // indexed by code point
  // (code point, advance) from kDirect to 0xFFFF, in code point order, for
  // the characters the font maps.
  std::vector<std::pair<char32_t, uint32_t>> beyond_;
};

// A font as the reports name it, resolved to a file and its metrics.
struct ResolvedFont {
  render::FontFace face;
  std::shared_ptr<const FontMetrics> metrics;
};

// Maps family names to the free, metric-compatible fonts installed with the
// project's font packages:
//   "Tahoma"        -> Tahoma of fonts-wine (the regular file, emboldened for
//                      bold: the package's bold file draws regular-weight
//                      shapes on bold advances, which prints light and
//                      letter-spaced)
//   "Arial Narrow"  -> Liberation Sans Narrow of fonts-liberation
//   "Arial"         -> Liberation Sans
//   anything else   -> DejaVu Sans of fonts-dejavu-core
// Files are loaded once per process and shared.
class FontLibrary {
 public:
  static ResolvedFont Resolve(std::string_view family, bool bold, bool italic);
};

}  // namespace orv::frame
