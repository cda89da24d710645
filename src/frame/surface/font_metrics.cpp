#include "frame/surface/font_metrics.h"

#include <algorithm>
#include <filesystem>
#include <map>
#include <mutex>
#include <tuple>

#include "frame/surface/surface_error.h"
#include "platform/host/mapped_file.h"

namespace orv::frame {
namespace {

// Big-endian readers with bounds checks: a truncated file is an error, never
// a read past the buffer.
class Reader {
 public:
  Reader(const host::MappedFile& file, const std::string& path)
      : d_(reinterpret_cast<const uint8_t*>(file.bytes().data())),
        size_(file.bytes().size()),
        path_(path) {
    // An empty or unmappable file reads as no bytes: damaged.
    if (!file.opened()) throw SurfaceError("Font file not found: " + path);
  }
  uint16_t U16(size_t at) const {
    Need(at, 2);
    return uint16_t(d_[at] << 8 | d_[at + 1]);
  }
  int16_t S16(size_t at) const { return int16_t(U16(at)); }
  uint32_t U32(size_t at) const {
    Need(at, 4);
    return uint32_t(d_[at]) << 24 | uint32_t(d_[at + 1]) << 16 | uint32_t(d_[at + 2]) << 8 |
           d_[at + 3];
  }
  void Need(size_t at, size_t n) const {
    if (at + n > size_ || at + n < at) throw SurfaceError("Damaged font file: " + path_);
  }
  std::string_view Tag(size_t at) const {
    Need(at, 4);
    return std::string_view(reinterpret_cast<const char*>(d_ + at), 4);
  }

 private:
  const uint8_t* d_;
  size_t size_;
  const std::string& path_;
};

struct TableDirectory {
  std::map<std::string, size_t, std::less<>> offsets;
  size_t Find(const std::string& tag, const std::string& path) const {
    auto it = offsets.find(tag);
    if (it == offsets.end()) throw SurfaceError("Font file lacks the " + tag + " table: " + path);
    return it->second;
  }
};

// Calls glyph(c, g) for every BMP code point c that a format 4 subtable
// maps, in the subtable's order.
template <typename F>
void ReadFormat4(const Reader& r, size_t sub, F&& glyph) {
  const int segs = r.U16(sub + 6) / 2;
  const size_t ends = sub + 14, starts = ends + 2 * segs + 2, deltas = starts + 2 * segs,
               ranges = deltas + 2 * segs;
  for (int s = 0; s < segs; ++s) {
    const uint32_t end = r.U16(ends + 2 * s), start = r.U16(starts + 2 * s);
    const uint16_t delta = r.U16(deltas + 2 * s), range = r.U16(ranges + 2 * s);
    for (uint32_t c = start; c <= end && c < 0x10000; ++c) {
      uint16_t g;
      if (range == 0) {
        g = uint16_t(c + delta);
      } else {
        const size_t at = ranges + 2 * s + range + 2 * (c - start);
        g = r.U16(at);
        if (g != 0) g = uint16_t(g + delta);
      }
      glyph(c, g);
    }
  }
}

// The same for a format 12 subtable.
template <typename F>
void ReadFormat12(const Reader& r, size_t sub, F&& glyph) {
  const uint32_t groups = r.U32(sub + 12);
  for (uint32_t i = 0; i < groups; ++i) {
    const size_t at = sub + 16 + 12 * size_t(i);
    const uint32_t first = r.U32(at), last = r.U32(at + 4), start = r.U32(at + 8);
    for (uint32_t c = first; c <= last && c < 0x10000; ++c) glyph(c, uint16_t(start + c - first));
  }
}

}  // namespace

std::shared_ptr<const FontMetrics> FontMetrics::Load(const std::string& path,
                                                     bool synthetic_bold) {
  // Mapped rather than read: loading touches only the few tables it
  // parses, not the glyph outlines that make up most of the file. The
  // mapping is the one the PDF writer embeds the file from.
  const std::shared_ptr<const host::MappedFile> file = host::MappedFile::Shared(path);
  const Reader r(*file, path);

  TableDirectory dir;
  const int tables = r.U16(4);
  for (int i = 0; i < tables; ++i) {
    const size_t rec = 12 + 16 * size_t(i);
    r.Need(rec, 16);
    dir.offsets[std::string(r.Tag(rec))] = r.U32(rec + 8);
  }

  auto m = std::make_shared<FontMetrics>();
  const size_t head = dir.Find("head", path), hhea = dir.Find("hhea", path),
               hmtx = dir.Find("hmtx", path), cmap = dir.Find("cmap", path);
  m->units_per_em_ = r.U16(head + 18);
  if (m->units_per_em_ == 0) throw SurfaceError("Damaged font file: " + path);
  if (auto os2 = dir.offsets.find("OS/2"); os2 != dir.offsets.end()) {
    m->ascent_ = r.U16(os2->second + 74);
    m->descent_ = r.U16(os2->second + 76);
  } else {
    m->ascent_ = r.S16(hhea + 4);
    m->descent_ = -r.S16(hhea + 6);
  }
  const int metrics = r.U16(hhea + 34);
  if (metrics == 0) throw SurfaceError("Damaged font file: " + path);

  // Prefer the full Unicode subtable (3,10) and fall back to the BMP one
  // (3,1); of equals, the first.
  size_t best_sub = 0;
  int best = -1, best_format = 0;
  const int subtables = r.U16(cmap + 2);
  for (int i = 0; i < subtables; ++i) {
    const size_t rec = cmap + 4 + 8 * size_t(i);
    const int platform = r.U16(rec), encoding = r.U16(rec + 2);
    const size_t sub = cmap + r.U32(rec + 4);
    const int format = r.U16(sub);
    int rank = -1;
    if (platform == 3 && encoding == 10 && format == 12)
      rank = 3;
    else if (platform == 3 && encoding == 1 && format == 4)
      rank = 2;
    else if (platform == 0 && format == 4)
      rank = 1;
    if (rank > best) {
      best = rank;
      best_sub = sub;
      best_format = format;
    }
  }
  if (best < 0) throw SurfaceError("Font file has no Unicode character map: " + path);

  auto advance_of = [&](uint32_t glyph) {
    return r.U16(hmtx + 4 * size_t(glyph < uint32_t(metrics) ? glyph : metrics - 1));
  };
  // FreeType's emboldening strength: the em over 24, added to every advance
  // that is not zero (combining marks stay where they are).
  const uint32_t extra = synthetic_bold ? uint32_t(m->units_per_em_) : 0;
  auto advance = [&](uint32_t glyph) {
    const uint32_t a = advance_of(glyph);
    return a == 0 ? 0 : a * kSubUnits + extra;
  };
  // A character the font does not map takes the missing glyph's advance.
  m->missing_advance_ = advance(0);
  m->direct_.fill(m->missing_advance_);
  auto mapped = [&](uint32_t c, uint16_t glyph) {
    const uint32_t a = advance(glyph);
    if (c < kDirect)
      m->direct_[c] = a;
    else
      m->beyond_.emplace_back(c, a);
  };
  if (best_format == 12)
    ReadFormat12(r, best_sub, mapped);
  else
    ReadFormat4(r, best_sub, mapped);
  // Subtables list their ranges in order, but nothing forbids overlaps: the
  // last mapping of a character counts, as it would in a flat table. A
  // table in order (every font the reports use) is not sorted again.
  const auto by_code = [](const auto& a, const auto& b) { return a.first < b.first; };
  if (!std::is_sorted(m->beyond_.begin(), m->beyond_.end(), by_code))
    std::stable_sort(m->beyond_.begin(), m->beyond_.end(), by_code);
  auto last = std::unique(m->beyond_.rbegin(), m->beyond_.rend(),
                          [](const auto& a, const auto& b) { return a.first == b.first; });
  m->beyond_.erase(m->beyond_.begin(), last.base());
  m->beyond_.shrink_to_fit();
  return m;
}

std::shared_ptr<const FontMetrics> FontMetrics::Emboldened(const FontMetrics& regular) {
  // As Load adds FreeType's emboldening: an em over 24 to every advance
  // that is not zero.
  auto m = std::make_shared<FontMetrics>(regular);
  const uint32_t extra = uint32_t(m->units_per_em_);
  auto grow = [extra](uint32_t& a) { a = a == 0 ? 0 : a + extra; };
  grow(m->missing_advance_);
  for (uint32_t& a : m->direct_) grow(a);
  for (auto& entry : m->beyond_) grow(entry.second);
  return m;
}

uint32_t FontMetrics::Beyond(char32_t c) const {
  auto it = std::lower_bound(beyond_.begin(), beyond_.end(), c,
                             [](const auto& entry, char32_t key) { return entry.first < key; });
  return it != beyond_.end() && it->first == c ? it->second : missing_advance_;
}

char32_t NextCodePoint(std::string_view s, size_t& i) {
  const auto b0 = static_cast<unsigned char>(s[i]);
  int len = b0 < 0x80 ? 1 : (b0 >> 5) == 6 ? 2 : (b0 >> 4) == 14 ? 3 : (b0 >> 3) == 30 ? 4 : 0;
  if (len == 1 || len == 0 || i + len > s.size()) {
    ++i;
    return b0;
  }
  char32_t c = b0 & (0x7F >> len);
  for (int k = 1; k < len; ++k) {
    const auto b = static_cast<unsigned char>(s[i + k]);
    if ((b & 0xC0) != 0x80) {
      ++i;
      return b0;
    }
    c = (c << 6) | (b & 0x3F);
  }
  i += len;
  return c;
}

namespace {

struct Family {
  const char* name;
  const char* regular;
  const char* bold;
  const char* italic;
  const char* bold_italic;
};

constexpr const char* kWine = "/usr/share/wine/fonts/";
constexpr const char* kLiberation = "/usr/share/fonts/truetype/liberation/";
constexpr const char* kDejaVu = "/usr/share/fonts/truetype/dejavu/";

// Files absent from a package stay empty and the style is made synthetically
// from the regular (or bold) file.
const Family kFamilies[] = {
    {"tahoma", "tahoma.ttf", "", "", ""},
    {"arial narrow", "LiberationSansNarrow-Regular.ttf", "LiberationSansNarrow-Bold.ttf",
     "LiberationSansNarrow-Italic.ttf", "LiberationSansNarrow-BoldItalic.ttf"},
    {"arial", "LiberationSans-Regular.ttf", "LiberationSans-Bold.ttf", "LiberationSans-Italic.ttf",
     "LiberationSans-BoldItalic.ttf"},
    {"dejavu sans", "DejaVuSans.ttf", "DejaVuSans-Bold.ttf", "", ""},
};

const char* DirectoryOf(const Family& f) {
  if (std::string_view(f.name) == "tahoma") return kWine;
  if (std::string_view(f.name) == "dejavu sans") return kDejaVu;
  return kLiberation;
}

std::string Lower(std::string_view s) {
  std::string out(s);
  for (auto& c : out) c = char(std::tolower(static_cast<unsigned char>(c)));
  while (!out.empty() && out.back() == ' ') out.pop_back();
  while (!out.empty() && out.front() == ' ') out.erase(out.begin());
  return out;
}

}  // namespace

ResolvedFont FontLibrary::Resolve(std::string_view family, bool bold, bool italic) {
  static std::mutex mu;
  static std::map<std::tuple<std::string, bool, bool>, ResolvedFont> cache;
  // The plain metrics of each file, read once: a report that prints a
  // family in its regular, bold and italic styles makes the synthetic
  // styles from the one file, and its bold from the same advances.
  static std::map<std::string, std::shared_ptr<const FontMetrics>> plain;
  std::lock_guard lock(mu);
  const std::string key = Lower(family);
  auto found = cache.find({key, bold, italic});
  if (found != cache.end()) {
    // The face names what this caller asked for ("tahoma" or "Tahoma"),
    // not what the first caller of the process did.
    ResolvedFont out = found->second;
    out.face.family = std::string(family);
    return out;
  }

  const Family* fam = &kFamilies[3];
  for (const auto& f : kFamilies)
    if (key == f.name) fam = &f;
  // A family whose files are missing falls back to DejaVu Sans, which
  // fonts-dejavu-core puts on every machine.
  if (!std::filesystem::exists(std::string(DirectoryOf(*fam)) + fam->regular)) fam = &kFamilies[3];

  ResolvedFont out;
  out.face.family = std::string(family);
  out.face.bold = bold;
  out.face.italic = italic;
  const char* dir = DirectoryOf(*fam);
  auto usable = [&](const char* file) {
    return *file && std::filesystem::exists(std::string(dir) + file);
  };
  const char* file = fam->regular;
  if (bold && italic && usable(fam->bold_italic)) {
    file = fam->bold_italic;
  } else if (bold && usable(fam->bold)) {
    file = fam->bold;
    out.face.synthetic_italic = italic;
  } else if (italic && usable(fam->italic)) {
    file = fam->italic;
    out.face.synthetic_bold = bold;
  } else {
    out.face.synthetic_bold = bold;
    out.face.synthetic_italic = italic;
  }
  out.face.file = std::string(dir) + file;
  std::shared_ptr<const FontMetrics>& file_metrics = plain[out.face.file];
  if (!file_metrics) file_metrics = FontMetrics::Load(out.face.file);
  out.metrics = out.face.synthetic_bold ? FontMetrics::Emboldened(*file_metrics) : file_metrics;
  cache.emplace(std::tuple{key, bold, italic}, out);
  return out;
}

}  // namespace orv::frame
