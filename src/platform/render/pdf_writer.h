// The bones of a PDF file: numbered objects, streams, the cross-reference
// table and the trailer, written front to back into one file.
//
// The writer knows nothing of pages or fonts; the page painter
// (pdf_renderer.cpp) and the font embedder (pdf_fonts.h) hand it finished
// dictionaries and stream data. Objects may be written in any order: an
// object number is reserved first, so that a page can name the fonts and the
// page tree written after it.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

namespace orv::render::pdf {

// Appends `v` rounded to `decimals` (at most 6) decimals, trailing zeros and
// a trailing point dropped, "-0" written as "0". No locale, no printf: a
// table page prints some thousand numbers.
void AppendNumber(std::string& out, double v, int decimals = 3);
// Appends `n` / 10^`decimals` (at most 6) as AppendNumber writes it: for a
// number already counted in those units.
void AppendScaled(std::string& out, int64_t n, int decimals);
// The same written at `to`, which has room for kScaledRoom bytes; returns
// the end of what it wrote. Bytes of that room past the end may be
// overwritten.
inline constexpr size_t kScaledRoom = 28;
char* WriteScaled(char* to, int64_t n, int decimals);

// Appends `v` as a PDF text string: a literal "(...)" with its specials
// escaped when the text is ASCII, else UTF-16BE in hex with its byte order
// mark, as readers expect for names with accents.
void AppendTextString(std::string& out, std::string_view utf8);

// The characters of `utf8`, read leniently: a broken sequence gives what its
// bytes spell and never stops the reading.
std::u32string DecodeUtf8(std::string_view utf8);
// The same into `out`, which it replaces: a caller that decodes run after
// run keeps one buffer.
void DecodeUtf8(std::string_view utf8, std::u32string& out);

// Appends the 16-bit `unit` as four hexadecimal capitals.
void AppendHex16(std::string& out, uint32_t unit);
// Appends `c` as UTF-16BE in hexadecimal: one unit, or a surrogate pair
// past the Basic Multilingual Plane.
void AppendUtf16Hex(std::string& out, char32_t c);

// Streams shorter than this are not compressed. Whatever its length,
// libdeflate clears its match tables and builds and weighs its Huffman
// codes for a stream, some 60,000 instructions, and then spends some 25 a
// byte: a letter's page of 2.5 KB took 130,000 to save 1.6 KB, as much as
// painting it, and each font's character map of 1 to 2 KB some 90,000 to
// save 700 bytes. A run of 22 reactivation letters spent a sixth of its
// time compressing its pages; stored, its file is 70 KB rather than 34 KB,
// and the catalogue's one-page documents grow by some 3 KB each. The pages
// of lists (6 to 8 KB of contents, a fifth of that compressed) are
// compressed as before, and so are fonts. A file's short streams go in as
// they are, with no filter (PdfFile::Stream); Deflate and Deflater, which
// must give the zlib format, give them as one stored block of it.
inline constexpr size_t kStoredBelow = 4096;

// `data` compressed in the zlib format (a PDF's FlateDecode) at `level`
// (1 fastest, 9 smaller, up to 12 smallest); under kStoredBelow stored as
// it is, in the same format.
std::string Deflate(std::string_view data, int level);

// Compresses one stream after another at `level` with one compressor: a
// long document has thousands of small page streams, and a compressor's
// tables are some hundreds of kilobytes of fresh memory. Gives the bytes
// Deflate gives (short streams stored, as there).
class Deflater {
 public:
  explicit Deflater(int level);
  ~Deflater();
  Deflater(const Deflater&) = delete;
  Deflater& operator=(const Deflater&) = delete;
  std::string operator()(std::string_view data);

 private:
  struct State;
  std::unique_ptr<State> state_;
};

// The level page contents, fonts and pictures are compressed at. On the
// patient list of a 20,000-patient practice (1,928 pages, 13.3 MB of page
// contents) zlib's level 1 took 260 ms and gave 3.24 MB, its default (6)
// 391 ms and 2.69 MB. Compressing is the larger half of writing the file
// and, on a long list, more than painting the pages, so the compressor is
// libdeflate's (the same format, written by a faster matcher): at level 1
// 135 ms and 3.04 MB, at 2 160 ms and 3.00 MB, at 6 250 ms and 2.81 MB.
// The fast level, for files an eighth larger than the smallest.
inline constexpr int kDeflateLevel = 1;

class PdfFile {
 public:
  // Creates (truncates) the file; raises RenderError naming `path` when it
  // cannot be opened. Streams compressed at kDeflateLevel go through
  // `deflater` when given (the one the pages were compressed with), else
  // through one of the file's own.
  explicit PdfFile(const std::string& path, Deflater* deflater = nullptr);
  // A file that was not finished is closed and removed: a failed run leaves
  // no half-written PDF behind.
  ~PdfFile();
  PdfFile(const PdfFile&) = delete;
  PdfFile& operator=(const PdfFile&) = delete;

  // A new object number, to be written later with Object or Stream.
  int Reserve();
  // Writes object `id`: "id 0 obj <body> endobj".
  void Object(int id, std::string_view body);
  // Writes object `id` as a stream of `data`, with `dict` (entries without
  // the << >> and without /Length) in its dictionary. With `level` > 0 the
  // data is Flate-compressed at that level first, unless it is shorter than
  // kStoredBelow: then it goes in as it is, without a filter.
  void Stream(int id, std::string_view dict, std::string_view data, int level = kDeflateLevel);
  // Writes the cross-reference table and the trailer naming `root` and
  // `info` (0 for none), then closes the file. Raises RenderError naming the
  // path when anything could not be written or an object reserved was never
  // written.
  void Finish(int root, int info);

  const std::string& path() const { return path_; }

 private:
  void Put(std::string_view s);
  void Flush();
  void Begin(int id);

  // Bytes gathered before they go to the file. Below the allocator's
  // threshold for a mapping of their own (128 KB), so that a one-page
  // document takes no fresh pages from the kernel for them; a stream larger
  // than this goes straight to the file.
  static constexpr size_t kBuffer = 64 << 10;

  std::string path_;
  FILE* file_ = nullptr;
  bool failed_ = false;
  bool finished_ = false;
  std::string buffer_;
  uint64_t offset_ = 0;            // bytes written before buffer_
  // One compressor for the file's streams, made at the first when none was
  // given: a one-page document still compresses a font file and a
  // character map per font.
  Deflater* deflater_ = nullptr;
  std::unique_ptr<Deflater> own_deflater_;
  std::vector<uint64_t> offsets_;  // per object number from 1; 0 = not yet written
};

}  // namespace orv::render::pdf
