#include "platform/render/pdf_fonts.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "platform/render/renderer.h"

namespace orv::render::pdf {
namespace {

uint16_t U16(std::string_view d, size_t at) {
  if (at + 2 > d.size()) throw RenderError("A font file ends inside a table");
  return uint16_t(uint8_t(d[at]) << 8 | uint8_t(d[at + 1]));
}
int16_t S16(std::string_view d, size_t at) {
  return int16_t(U16(d, at));
}
uint32_t U32(std::string_view d, size_t at) {
  return uint32_t(U16(d, at)) << 16 | U16(d, at + 2);
}
void Put16(std::string& d, size_t at, uint16_t v) {
  d[at] = char(v >> 8);
  d[at + 1] = char(v);
}
void Put32(std::string& d, size_t at, uint32_t v) {
  Put16(d, at, uint16_t(v >> 16));
  Put16(d, at + 2, uint16_t(v));
}
void Append16(std::string& d, uint16_t v) {
  d.push_back(char(v >> 8));
  d.push_back(char(v));
}
void Append32(std::string& d, uint32_t v) {
  Append16(d, uint16_t(v >> 16));
  Append16(d, uint16_t(v));
}

// The sum of the big-endian words of `t`, the last padded with zeros. Every
// document sums its subsets twice over (each table, then the whole file):
// whole words are read four bytes at once, only the tail byte by byte.
uint32_t Checksum(std::string_view t) {
  uint32_t sum = 0;
  const auto* p = reinterpret_cast<const unsigned char*>(t.data());
  const size_t whole = t.size() / 4 * 4;
  for (size_t i = 0; i < whole; i += 4)
    sum += uint32_t(p[i]) << 24 | uint32_t(p[i + 1]) << 16 | uint32_t(p[i + 2]) << 8 | p[i + 3];
  uint32_t last = 0;
  for (size_t i = whole; i < whole + 4; ++i) last = last << 8 | (i < t.size() ? p[i] : 0);
  return whole < t.size() ? sum + last : sum;
}

// The tables of a TrueType file by tag: a file holds a score of them, and
// a look along the list finds one without a tree of strings made for each
// look-up (a document parses its font when it is opened and again when
// its subset is written).
class FontTables {
 public:
  explicit FontTables(std::string_view font) {
    const uint32_t version = U32(font, 0);
    if (version != 0x00010000 && version != 0x74727565)  // 1.0 or 'true'
      throw RenderError("Not a TrueType font with outlines");
    const uint16_t count = U16(font, 4);
    tables_.reserve(count);
    for (uint16_t i = 0; i < count; ++i) {
      const size_t at = 12 + size_t(i) * 16;
      const uint32_t offset = U32(font, at + 8), length = U32(font, at + 12);
      if (size_t(offset) + length > font.size()) throw RenderError("A font table lies past its file");
      // The first of a tag counts, should a file list one twice.
      if (!Find(font.substr(at, 4))) tables_.push_back({font.substr(at, 4), font.substr(offset, length)});
    }
    for (const char* need : {"head", "hhea", "hmtx", "maxp", "loca", "glyf"})
      if (!Find(need)) throw RenderError(std::string("A font file lacks its ") + need);
  }
  // The table `tag`, or null when the file has none.
  const std::string_view* Find(std::string_view tag) const {
    for (const auto& t : tables_)
      if (t.tag == tag) return &t.body;
    return nullptr;
  }
  // A table every TrueType file has (checked when the file was read).
  std::string_view At(std::string_view tag) const { return *Find(tag); }

 private:
  struct Table {
    std::string_view tag, body;
  };
  std::vector<Table> tables_;
};

// The glyph data of glyph `g` in `glyf`, by the offsets in `loca`.
class GlyphData {
 public:
  explicit GlyphData(const FontTables& t)
      : loca_(t.At("loca")),
        glyf_(t.At("glyf")),
        long_offsets_(S16(t.At("head"), 50) == 1),
        count_(U16(t.At("maxp"), 4)) {}
  uint16_t count() const { return count_; }
  std::string_view operator[](uint16_t g) const {
    const size_t begin =
        long_offsets_ ? U32(loca_, size_t(g) * 4) : size_t(U16(loca_, size_t(g) * 2)) * 2;
    const size_t end =
        long_offsets_ ? U32(loca_, size_t(g) * 4 + 4) : size_t(U16(loca_, size_t(g) * 2 + 2)) * 2;
    if (end < begin || end > glyf_.size()) throw RenderError("A font's glyph lies past its table");
    return glyf_.substr(begin, end - begin);
  }

 private:
  std::string_view loca_, glyf_;
  bool long_offsets_;
  uint16_t count_;
};

// The glyphs a composite glyph is made of.
std::vector<uint16_t> Components(std::string_view glyph) {
  std::vector<uint16_t> parts;
  if (glyph.size() < 10 || S16(glyph, 0) >= 0) return parts;
  constexpr uint16_t kWords = 0x0001, kScale = 0x0008, kMore = 0x0020, kXYScale = 0x0040,
                     kTwoByTwo = 0x0080;
  size_t at = 10;
  uint16_t flags;
  do {
    flags = U16(glyph, at);
    parts.push_back(U16(glyph, at + 2));
    at += 4 + ((flags & kWords) ? 4 : 2);
    if (flags & kScale)
      at += 2;
    else if (flags & kXYScale)
      at += 4;
    else if (flags & kTwoByTwo)
      at += 8;
  } while (flags & kMore);
  return parts;
}

// The PostScript name of the font (name 6), or "" when it has none.
std::string PostScriptName(const FontTables& t) {
  const std::string_view* table = t.Find("name");
  if (!table) return "";
  const std::string_view name = *table;
  const uint16_t count = U16(name, 2), strings = U16(name, 4);
  for (uint16_t i = 0; i < count; ++i) {
    const size_t at = 6 + size_t(i) * 12;
    const uint16_t platform = U16(name, at), id = U16(name, at + 6);
    const uint16_t length = U16(name, at + 8), offset = U16(name, at + 10);
    if (id != 6 || size_t(strings) + offset + length > name.size()) continue;
    const std::string_view raw = name.substr(size_t(strings) + offset, length);
    std::string out;
    // Windows names are UTF-16BE; Macintosh ones single bytes.
    for (size_t k = platform == 3 ? 1 : 0; k < raw.size(); k += platform == 3 ? 2 : 1)
      if (raw[k] > ' ' && raw[k] < 0x7F && raw[k] != '/' && raw[k] != '(' && raw[k] != ')')
        out.push_back(raw[k]);
    if (!out.empty()) return out;
  }
  return "";
}

// SubsetTrueType over the tables of the font, read already.
std::string Subset(const FontTables& tables, const std::set<uint16_t>& glyphs) {
  const GlyphData data(tables);
  // The glyphs kept: those asked for, glyph 0, and every part of a
  // composite among them, followed down.
  std::set<uint16_t> keep{0};
  std::vector<uint16_t> todo(glyphs.begin(), glyphs.end());
  while (!todo.empty()) {
    const uint16_t g = todo.back();
    todo.pop_back();
    if (g >= data.count() || !keep.insert(g).second) continue;
    for (uint16_t part : Components(data[g])) todo.push_back(part);
  }
  keep.erase(keep.upper_bound(uint16_t(data.count() - 1)), keep.end());
  const uint16_t count = uint16_t(*keep.rbegin() + 1);

  // glyf and loca anew (long offsets); glyphs not kept are empty. Every
  // glyph up to the last kept has its entries, written in place: a page of
  // plain text shows glyphs numbered into the hundreds.
  size_t glyf_size = 0;
  for (uint16_t g : keep) glyf_size += (data[g].size() + 3) / 4 * 4;
  std::string glyf, loca(size_t(count + 1) * 4, '\0');
  glyf.reserve(glyf_size);
  uint16_t next = 0;  // glyphs before it have their entries
  for (uint16_t g : keep) {
    for (; next <= g; ++next) Put32(loca, size_t(next) * 4, uint32_t(glyf.size()));
    glyf.append(data[g]);
    glyf.append((4 - glyf.size() % 4) % 4, '\0');
  }
  Put32(loca, size_t(count) * 4, uint32_t(glyf.size()));

  // Every glyph kept gets an advance and side bearing of its own.
  const std::string_view hmtx_in = tables.At("hmtx");
  const uint16_t metrics = U16(tables.At("hhea"), 34);
  std::string hmtx(size_t(count) * 4, '\0');
  for (uint16_t g = 0; g < count; ++g) {
    const uint16_t advance = U16(hmtx_in, size_t(std::min<uint16_t>(g, metrics - 1)) * 4);
    const int16_t lsb = g < metrics ? S16(hmtx_in, size_t(g) * 4 + 2)
                                    : S16(hmtx_in, size_t(metrics) * 4 + size_t(g - metrics) * 2);
    Put16(hmtx, size_t(g) * 4, advance);
    Put16(hmtx, size_t(g) * 4 + 2, uint16_t(lsb));
  }
  std::string head(tables.At("head")), hhea(tables.At("hhea")), maxp(tables.At("maxp"));
  Put32(head, 8, 0);   // checkSumAdjustment, set below
  Put16(head, 50, 1);  // long loca offsets
  Put16(hhea, 34, count);
  Put16(maxp, 4, count);

  // The tables written, by tag; the bodies of those made anew live above.
  std::vector<std::pair<std::string_view, std::string_view>> out{
      {"glyf", glyf}, {"loca", loca}, {"hmtx", hmtx}, {"head", head}, {"hhea", hhea}, {"maxp", maxp}};
  // The hinting programs and the metrics of OS/2 as they are; glyph names
  // (post format 2) would name glyphs past the end, so the post table
  // keeps its header only, as version 3. The name table stays out: readers
  // take the font's name from the PDF's own font dictionary, and in the
  // fonts the reports use it is a third of a typical subset (3.7 KB of
  // copyright and licence text), compressed again in every document.
  for (const char* tag : {"cvt ", "fpgm", "prep", "OS/2"})
    if (const std::string_view* t = tables.Find(tag)) out.emplace_back(tag, *t);
  std::string post;
  if (const std::string_view* t = tables.Find("post"); t && t->size() >= 32) {
    post = t->substr(0, 32);
    Put32(post, 0, 0x00030000);
    out.emplace_back("post", post);
  }
  std::sort(out.begin(), out.end());

  // The directory, then the tables in tag order, each on four bytes.
  const uint16_t n = uint16_t(out.size());
  uint16_t power = 1, log2 = 0;
  while (power * 2 <= n) {
    power *= 2;
    ++log2;
  }
  size_t size = 12 + size_t(n) * 16;
  for (const auto& [tag, table] : out) size += (table.size() + 3) / 4 * 4;
  std::string file;
  file.reserve(size);
  Append32(file, 0x00010000);
  Append16(file, n);
  Append16(file, uint16_t(power * 16));
  Append16(file, log2);
  Append16(file, uint16_t(n * 16 - power * 16));
  size_t offset = 12 + size_t(n) * 16, head_at = 0;
  for (const auto& [tag, body] : out) {
    file += tag;
    Append32(file, Checksum(body));
    Append32(file, uint32_t(offset));
    Append32(file, uint32_t(body.size()));
    if (tag == "head") head_at = offset;
    offset += (body.size() + 3) / 4 * 4;
  }
  for (const auto& [tag, body] : out) {
    file += body;
    file.append((4 - body.size() % 4) % 4, '\0');
  }
  Put32(file, head_at + 8, 0xB1B0AFBA - Checksum(file));
  return file;
}

}  // namespace

std::string SubsetTrueType(std::string_view font, const std::set<uint16_t>& glyphs) {
  return Subset(FontTables(font), glyphs);
}

EmbeddedFont::EmbeddedFont(std::string file)
    : file_(std::move(file)), mapped_(host::MappedFile::Shared(file_)) {
  latin_.fill(Mapped{kNotLooked, 0});
  data_ = mapped_->bytes();
  if (data_.empty()) throw RenderError("Cannot read font file " + file_);
  const FontTables tables(data_);
  text_.assign(U16(tables.At("maxp"), 4), kUnused);
  units_per_em_ = U16(tables.At("head"), 18);
  if (units_per_em_ == 0) throw RenderError("A font file gives no size of its em: " + file_);
  advance_count_ = U16(tables.At("hhea"), 34);
  if (advance_count_ == 0) throw RenderError("A font file gives no advances: " + file_);
  hmtx_ = size_t(tables.At("hmtx").data() - data_.data());
  hmtx_length_ = tables.At("hmtx").size();

  // The Unicode map FreeType selects (find_unicode_charmap): a UCS-4 one
  // (3,10 or 0,4), else any Unicode one (platform 0, or 3,1), each the last
  // of its kind in the directory. Only formats 4 and 12 are read.
  if (const std::string_view* table = tables.Find("cmap"); table && table->size() >= 4) {
    const std::string_view cmap = *table;
    const size_t base = size_t(cmap.data() - data_.data());
    const uint16_t count = U16(cmap, 2);
    size_t chosen = 0;
    for (int pass = 0; pass < 2 && !chosen; ++pass) {
      for (int i = count - 1; i >= 0 && !chosen; --i) {
        const size_t at = 4 + size_t(i) * 8;
        if (at + 8 > cmap.size()) continue;
        const uint16_t platform = U16(cmap, at), encoding = U16(cmap, at + 2);
        const uint32_t offset = U32(cmap, at + 4);
        const bool ucs4 = (platform == 3 && encoding == 10) || (platform == 0 && encoding == 4);
        const bool unicode = platform == 0 || (platform == 3 && (encoding == 1 || encoding == 10));
        if ((pass == 0 ? ucs4 : unicode) && offset + 4 <= cmap.size()) chosen = offset;
      }
    }
    if (chosen) {
      const uint16_t format = U16(cmap, chosen);
      if (format == 4 || format == 12) {
        cmap_ = base + chosen;
        cmap_format_ = format;
      }
    }
  }
}

uint16_t EmbeddedFont::AdvanceUnits(uint16_t glyph) const {
  const size_t at = hmtx_ + size_t(std::min(glyph, uint16_t(advance_count_ - 1))) * 4;
  if (at + 2 > hmtx_ + hmtx_length_) return 0;
  return U16(data_, at);
}

uint16_t EmbeddedFont::GlyphOf(char32_t c) const {
  const uint32_t g = MappedGlyph(c);
  // A glyph number past the file's glyphs is none, as FreeType takes it.
  return g < text_.size() ? uint16_t(g) : 0;
}

uint32_t EmbeddedFont::MappedGlyph(char32_t c) const {
  if (!cmap_) return 0;
  const size_t sub = cmap_;
  if (cmap_format_ == 12) {
    // Groups of (first, last, first glyph), in order: a binary search.
    const uint32_t groups = U32(data_, sub + 12);
    uint32_t lo = 0, hi = groups;
    while (lo < hi) {
      const uint32_t mid = (lo + hi) / 2;
      const size_t at = sub + 16 + size_t(mid) * 12;
      if (c > U32(data_, at + 4)) {
        lo = mid + 1;
      } else if (c < U32(data_, at)) {
        hi = mid;
      } else {
        return U32(data_, at + 8) + (c - U32(data_, at));
      }
    }
    return 0;
  }
  if (c > 0xFFFF) return 0;
  // Format 4: segments by their last character, in order.
  const uint16_t segments = U16(data_, sub + 6) / 2;
  const size_t ends = sub + 14, starts = ends + 2 + size_t(segments) * 2,
               deltas = starts + size_t(segments) * 2, ranges = deltas + size_t(segments) * 2;
  uint16_t lo = 0, hi = segments;
  while (lo < hi) {
    const uint16_t mid = uint16_t((lo + hi) / 2);
    if (U16(data_, ends + size_t(mid) * 2) < c)
      lo = uint16_t(mid + 1);
    else
      hi = mid;
  }
  if (lo == segments) return 0;
  const uint16_t start = U16(data_, starts + size_t(lo) * 2);
  if (c < start) return 0;
  const uint16_t delta = U16(data_, deltas + size_t(lo) * 2);
  const uint16_t range = U16(data_, ranges + size_t(lo) * 2);
  if (range == 0) return uint16_t(c + delta);
  const uint16_t g = U16(data_, ranges + size_t(lo) * 2 + range + 2 * (c - start));
  return g == 0 ? 0u : uint16_t(g + delta);
}

double EmbeddedFont::Width(uint16_t glyph) const {
  const size_t at = hmtx_ + size_t(std::min(glyph, uint16_t(advance_count_ - 1))) * 4;
  if (at + 2 > hmtx_ + hmtx_length_) return 0;
  return U16(data_, at) * 1000.0 / units_per_em_;
}

int EmbeddedFont::Write(PdfFile& pdf) const {
  const FontTables tables(data_);
  std::set<uint16_t> glyphs;
  for (size_t g = 0; g < text_.size(); ++g)
    if (text_[g] != kUnused) glyphs.insert(uint16_t(g));
  const std::string subset = Subset(tables, glyphs);

  // A subset is named with a tag of six capitals made from its glyphs, so
  // that two subsets of one font in different files are told apart.
  uint32_t hash = 2166136261u;
  for (uint16_t g : glyphs) hash = (hash ^ g) * 16777619u;
  std::string name;
  for (int i = 0; i < 6; ++i, hash /= 26) name.push_back(char('A' + hash % 26));
  std::string ps = PostScriptName(tables);
  name += "+" + (ps.empty() ? std::string("Font") : ps);

  const double k = 1000.0 / units_per_em_;
  const std::string_view head = tables.At("head"), hhea = tables.At("hhea");
  // Metrics in whole thousandths cut toward zero, and the cap height the
  // top of the bounding box, as cairo wrote them: readers size the boxes of
  // words from them (pdftotext -bbox, -layout).
  auto metric = [&](std::string& out, int16_t units) {
    AppendNumber(out, std::trunc(units * k), 0);
  };
  const int type0 = pdf.Reserve(), cid = pdf.Reserve(), descriptor = pdf.Reserve(), file = pdf.Reserve(),
            to_unicode = pdf.Reserve();
  std::string d = "<< /Type /Font /Subtype /Type0 /BaseFont /" + name +
                  " /Encoding /Identity-H /DescendantFonts [" + std::to_string(cid) +
                  " 0 R] /ToUnicode " + std::to_string(to_unicode) + " 0 R >>";
  pdf.Object(type0, d);

  // Widths of the glyphs shown, in runs of consecutive glyph numbers.
  d = "<< /Type /Font /Subtype /CIDFontType2 /BaseFont /" + name +
      " /CIDSystemInfo << /Registry (Adobe) /Ordering (Identity) /Supplement 0 >> "
      "/FontDescriptor " +
      std::to_string(descriptor) + " 0 R /CIDToGIDMap /Identity /DW 0 /W [";
  int previous = -2;
  for (uint16_t g : glyphs) {
    if (int(g) != previous + 1) {
      if (previous >= 0) d += "] ";
      d += std::to_string(g) + " [";
    } else {
      d += ' ';
    }
    AppendNumber(d, std::floor(Width(g)), 0);
    previous = g;
  }
  if (previous >= 0) d += "]";
  d += "] >>";
  pdf.Object(cid, d);

  d = "<< /Type /FontDescriptor /FontName /" + name + " /Flags 32 /FontBBox [";
  for (size_t at : {36, 38, 40, 42}) {
    metric(d, S16(head, at));
    d += at == 42 ? "]" : " ";
  }
  d += " /ItalicAngle 0 /Ascent ";
  metric(d, S16(hhea, 4));
  d += " /Descent ";
  metric(d, S16(hhea, 6));
  d += " /CapHeight ";
  metric(d, S16(head, 42));
  d += " /StemV 80 /FontFile2 " + std::to_string(file) + " 0 R >>";
  pdf.Object(descriptor, d);
  // The font file goes in as it is. Outlines are dense: the subset of the
  // few dozen glyphs a report shows (some 6.5 KB of Tahoma) compressed by
  // a fifth, for more work than painting the page that shows them.
  pdf.Stream(file, "/Length1 " + std::to_string(subset.size()), subset, 0);

  // The character each glyph stands for, as UTF-16BE, a hundred to a block.
  std::string cmap =
      "/CIDInit /ProcSet findresource begin\n12 dict begin\nbegincmap\n"
      "/CIDSystemInfo << /Registry (Adobe) /Ordering (UCS) /Supplement 0 >> def\n"
      "/CMapName /Adobe-Identity-UCS def\n/CMapType 2 def\n"
      "1 begincodespacerange\n<0000> <FFFF>\nendcodespacerange\n";
  std::vector<uint16_t> mapped;
  for (uint16_t g : glyphs)
    if (text_[g] != 0 && text_[g] <= 0x10FFFF) mapped.push_back(g);
  for (size_t i = 0; i < mapped.size(); i += 100) {
    const size_t n = std::min<size_t>(100, mapped.size() - i);
    cmap += std::to_string(n) + " beginbfchar\n";
    for (size_t j = i; j < i + n; ++j) {
      const char32_t c = text_[mapped[j]];
      cmap += '<';
      AppendHex16(cmap, mapped[j]);
      cmap += "> <";
      AppendUtf16Hex(cmap, c);
      cmap += ">\n";
    }
    cmap += "endbfchar\n";
  }
  cmap += "endcmap\nCMapName currentdict /CMap defineresource pop\nend\nend\n";
  pdf.Stream(to_unicode, "", cmap);
  return type0;
}

}  // namespace orv::render::pdf
