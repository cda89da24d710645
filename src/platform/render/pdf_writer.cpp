#include "platform/render/pdf_writer.h"

#include <libdeflate.h>

#include <cerrno>
#include <cmath>
#include <cstring>

#include "platform/render/renderer.h"

namespace orv::render::pdf {

void AppendNumber(std::string& out, double v, int decimals) {
  static constexpr int64_t kScale[] = {1, 10, 100, 1000, 10000, 100000, 1000000};
  if (decimals < 0) decimals = 0;
  if (decimals > 6) decimals = 6;
  if (!std::isfinite(v)) v = 0;
  // Rounded half away from zero, as llround rounds. A page of a list prints
  // some thousand numbers, so below 2^52, where the fraction left by
  // truncating is exact, it is rounded here rather than through the
  // library call.
  const double scaled = v * double(kScale[decimals]);
  int64_t n;
  if (std::fabs(scaled) < 4503599627370496.0) {
    n = static_cast<int64_t>(scaled);
    const double fraction = scaled - static_cast<double>(n);
    if (fraction >= 0.5)
      ++n;
    else if (fraction <= -0.5)
      --n;
  } else {
    n = std::llround(scaled);
  }
  AppendScaled(out, n, decimals);
}

void AppendScaled(std::string& out, int64_t n, int decimals) {
  char text[kScaledRoom];
  out.append(text, size_t(WriteScaled(text, n, decimals) - text));
}

namespace {

constexpr char kPairs[] =
    "00010203040506070809101112131415161718192021222324252627282930313233343536373839"
    "40414243444546474849505152535455565758596061626364656667686970717273747576777879"
    "8081828384858687888990919293949596979899";

// Writes the whole number `u` backwards, ending at `end`, two digits at a
// time; returns where it begins.
template <typename U>
char* WholeBackwards(char* end, U u) {
  char* p = end;
  while (u >= 100) {
    p -= 2;
    std::memcpy(p, kPairs + (u % 100) * 2, 2);
    u /= 100;
  }
  if (u >= 10) {
    p -= 2;
    std::memcpy(p, kPairs + u * 2, 2);
  } else {
    *--p = char('0' + u);
  }
  return p;
}

// WriteScaled for ten-thousandths below 2^32 either way, the moves and
// positions of every line of text on a page: the whole part two digits at
// a time, the fraction as two pairs of digits trimmed of their trailing
// zeros, in 32-bit arithmetic. `n` is not 0.
char* WriteTenThousandths(char* to, int64_t n) {
  if (n < 0) *to++ = '-';
  const auto u = uint32_t(n < 0 ? -n : n);
  const uint32_t fraction = u % 10000;
  // The whole part (six digits at most), backwards into a buffer and then
  // copied eight bytes at once; the caller's room holds them.
  char digits[16] = {};
  char* const end = digits + 8;
  const char* const p = WholeBackwards(end, u / 10000);
  std::memcpy(to, p, 8);
  to += end - p;
  if (fraction == 0) return to;
  const uint32_t high = fraction / 100, low = fraction % 100;
  to[0] = '.';
  std::memcpy(to + 1, kPairs + high * 2, 2);
  std::memcpy(to + 3, kPairs + low * 2, 2);
  if (low != 0) return to + (low % 10 != 0 ? 5 : 4);
  return to + (high % 10 != 0 ? 3 : 2);
}

}  // namespace

char* WriteScaled(char* to, int64_t n, int decimals) {
  if (n == 0) {
    *to = '0';
    return to + 1;
  }
  if (decimals == 4 && n > -int64_t(UINT32_MAX) && n < int64_t(UINT32_MAX))
    return WriteTenThousandths(to, n);
  if (n < 0) {
    *to++ = '-';
    n = -n;
  }
  // Drop the fraction's trailing zeros before writing anything.
  while (decimals > 0 && n % 10 == 0) {
    n /= 10;
    --decimals;
  }
  // Written backwards into a buffer, then copied at once: the fraction's
  // digits and its point, then the whole part two digits at a time.
  char text[kScaledRoom];
  char* const end = text + sizeof text;
  char* p = end;
  auto u = static_cast<uint64_t>(n);
  if (decimals > 0) {
    for (int i = 0; i < decimals; ++i, u /= 10) *--p = char('0' + u % 10);
    *--p = '.';
  }
  p = WholeBackwards(p, u);
  std::memcpy(to, p, size_t(end - p));
  return to + (end - p);
}

void AppendTextString(std::string& out, std::string_view utf8) {
  bool ascii = true;
  for (unsigned char c : utf8) ascii = ascii && c >= 0x20 && c < 0x7F;
  if (ascii) {
    out.push_back('(');
    for (char c : utf8) {
      if (c == '(' || c == ')' || c == '\\') out.push_back('\\');
      out.push_back(c);
    }
    out.push_back(')');
    return;
  }
  out += "<FEFF";
  for (char32_t c : DecodeUtf8(utf8)) AppendUtf16Hex(out, c);
  out.push_back('>');
}

std::u32string DecodeUtf8(std::string_view utf8) {
  std::u32string chars;
  DecodeUtf8(utf8, chars);
  return chars;
}

void DecodeUtf8(std::string_view utf8, std::u32string& chars) {
  chars.clear();
  chars.reserve(utf8.size());
  for (size_t i = 0; i < utf8.size();) {
    const auto b = static_cast<unsigned char>(utf8[i]);
    const int len = b < 0x80 ? 1 : b >= 0xF0 ? 4 : b >= 0xE0 ? 3 : b >= 0xC0 ? 2 : 1;
    char32_t c = len == 1 ? b : b & (0x7F >> len);
    for (int k = 1; k < len && i + k < utf8.size(); ++k)
      c = c << 6 | (static_cast<unsigned char>(utf8[i + k]) & 0x3F);
    chars.push_back(c);
    i += size_t(len);
  }
}

void AppendHex16(std::string& out, uint32_t unit) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (int shift = 12; shift >= 0; shift -= 4) out.push_back(kHex[(unit >> shift) & 0xF]);
}

void AppendUtf16Hex(std::string& out, char32_t c) {
  if (c >= 0x10000) {
    AppendHex16(out, 0xD800 | ((c - 0x10000) >> 10));
    AppendHex16(out, 0xDC00 | ((c - 0x10000) & 0x3FF));
  } else {
    AppendHex16(out, c);
  }
}

namespace {

// libdeflate's levels run 1 to 12; zlib's 1 to 9 ask for the same balance
// at the same number, and anything past 12 is its smallest.
int CompressorLevel(int level) {
  return level < 1 ? 1 : level > 12 ? 12 : level;
}


// `data` (under 64 KB) in the zlib format, uncompressed: the header of a
// 32 KB window at the fastest level, one final stored block, the Adler-32
// of the data.
std::string Stored(std::string_view data) {
  std::string out;
  out.reserve(data.size() + 11);
  out += char(0x78);
  out += char(0x01);
  out += char(0x01);  // the final block, stored
  const auto length = uint16_t(data.size());
  const auto inverse = uint16_t(~length);
  out += char(length & 0xFF);
  out += char(length >> 8);
  out += char(inverse & 0xFF);
  out += char(inverse >> 8);
  out += data;
  const uint32_t check = libdeflate_adler32(1, data.data(), data.size());
  for (int shift = 24; shift >= 0; shift -= 8) out += char((check >> shift) & 0xFF);
  return out;
}

}  // namespace

std::string Deflate(std::string_view data, int level) {
  Deflater deflate(level);
  return deflate(data);
}

struct Deflater::State {
  int level;
  libdeflate_compressor* compressor = nullptr;
  std::string buffer;
};

// The compressor is made for the first stream long enough to be
// compressed: its tables are some hundreds of kilobytes of fresh memory,
// and a letter or a memo, whose every stream is stored, never needs them.
Deflater::Deflater(int level) : state_(std::make_unique<State>()) {
  state_->level = CompressorLevel(level);
}

Deflater::~Deflater() {
  if (state_->compressor) libdeflate_free_compressor(state_->compressor);
}

std::string Deflater::operator()(std::string_view data) {
  if (data.size() < kStoredBelow) return Stored(data);
  if (!state_->compressor) {
    state_->compressor = libdeflate_alloc_compressor(state_->level);
    if (state_->compressor == nullptr) throw RenderError("Cannot compress a PDF stream");
  }
  // Into a buffer kept from stream to stream, then copied at its size: the
  // pages painted ahead keep their compressed contents until the file is
  // written, and a string cut down to size would keep the room it had.
  state_->buffer.resize(libdeflate_zlib_compress_bound(state_->compressor, data.size()));
  const size_t size = libdeflate_zlib_compress(state_->compressor, data.data(), data.size(),
                                               state_->buffer.data(), state_->buffer.size());
  if (size == 0) throw RenderError("Cannot compress a PDF stream");
  return std::string(state_->buffer.data(), size);
}

PdfFile::PdfFile(const std::string& path, Deflater* deflater) : path_(path), deflater_(deflater) {
  file_ = std::fopen(path.c_str(), "wb");
  if (!file_) throw RenderError("Cannot write " + path + ": " + std::strerror(errno));
  buffer_.reserve(kBuffer);
  Put("%PDF-1.7\n%\xE2\xE3\xCF\xD3\n");
}

PdfFile::~PdfFile() {
  if (file_) std::fclose(file_);
  if (!finished_) std::remove(path_.c_str());
}

int PdfFile::Reserve() {
  offsets_.push_back(0);
  return int(offsets_.size());
}

void PdfFile::Put(std::string_view s) {
  if (buffer_.size() + s.size() > kBuffer) Flush();
  if (s.size() < kBuffer) {
    buffer_.append(s);
    return;
  }
  // A large stream goes straight to the file.
  if (std::fwrite(s.data(), 1, s.size(), file_) != s.size()) failed_ = true;
  offset_ += s.size();
}

void PdfFile::Flush() {
  if (buffer_.empty()) return;
  if (std::fwrite(buffer_.data(), 1, buffer_.size(), file_) != buffer_.size()) failed_ = true;
  offset_ += buffer_.size();
  buffer_.clear();
}

void PdfFile::Begin(int id) {
  offsets_.at(size_t(id - 1)) = offset_ + buffer_.size();
  std::string head = std::to_string(id);
  head += " 0 obj\n";
  Put(head);
}

void PdfFile::Object(int id, std::string_view body) {
  Begin(id);
  Put(body);
  Put("\nendobj\n");
}

void PdfFile::Stream(int id, std::string_view dict, std::string_view data, int level) {
  if (data.size() < kStoredBelow) level = 0;
  std::string packed;
  if (level == kDeflateLevel) {
    if (!deflater_) deflater_ = (own_deflater_ = std::make_unique<Deflater>(level)).get();
    packed = (*deflater_)(data);
  } else if (level > 0) {
    packed = Deflate(data, level);
  }
  const std::string_view body = level > 0 ? std::string_view(packed) : data;
  Begin(id);
  std::string head = "<< ";
  head += dict;
  if (level > 0) head += " /Filter /FlateDecode";
  head += " /Length ";
  head += std::to_string(body.size());
  head += " >>\nstream\n";
  Put(head);
  Put(body);
  Put("\nendstream\nendobj\n");
}

void PdfFile::Finish(int root, int info) {
  const uint64_t xref = offset_ + buffer_.size();
  std::string table = "xref\n0 " + std::to_string(offsets_.size() + 1) + "\n0000000000 65535 f \n";
  table.reserve(table.size() + offsets_.size() * 20 + 128);
  for (uint64_t at : offsets_) {
    if (at == 0) throw RenderError("Cannot write " + path_ + ": an object was never written");
    // "0000012345 00000 n \n": ten digits, as the table's fixed lines need.
    char line[20] = {'0', '0', '0', '0', '0', '0', '0', '0', '0', '0',
                     ' ', '0', '0', '0', '0', '0', ' ', 'n', ' ', '\n'};
    for (int i = 9; i >= 0 && at > 0; --i, at /= 10) line[i] = char('0' + at % 10);
    table.append(line, sizeof line);
  }
  table += "trailer\n<< /Size " + std::to_string(offsets_.size() + 1) + " /Root " +
           std::to_string(root) + " 0 R";
  if (info) table += " /Info " + std::to_string(info) + " 0 R";
  table += " >>\nstartxref\n" + std::to_string(xref) + "\n%%EOF\n";
  Put(table);
  Flush();
  const int error = std::fflush(file_) != 0 || std::ferror(file_) ? errno : 0;
  const bool closed = std::fclose(file_) == 0;
  file_ = nullptr;
  if (failed_ || error || !closed)
    throw RenderError("Cannot write " + path_ + ": " +
                      std::strerror(error   ? error
                                    : errno ? errno
                                            : EIO));
  finished_ = true;
}

}  // namespace orv::render::pdf
