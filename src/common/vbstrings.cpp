#include "common/vbstrings.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "common/errors.h"

namespace orv::vb {

namespace {

[[noreturn]] void InvalidCall() {
  throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
}

}  // namespace

long InStr(long start, std::string_view s, std::string_view find) {
  if (start < 1) InvalidCall();
  if (static_cast<size_t>(start) > s.size())
    return find.empty() && static_cast<size_t>(start) == s.size() + 1 ? start : 0;
  if (find.empty()) return start;
  size_t pos = s.find(find, static_cast<size_t>(start - 1));
  return pos == std::string_view::npos ? 0 : static_cast<long>(pos) + 1;
}

long InStrRev(std::string_view s, std::string_view find) {
  if (find.empty()) return static_cast<long>(s.size());
  size_t pos = s.rfind(find);
  return pos == std::string_view::npos ? 0 : static_cast<long>(pos) + 1;
}

std::string Mid(std::string_view s, long start) {
  if (start < 1) InvalidCall();
  if (static_cast<size_t>(start) > s.size()) return "";
  return std::string(s.substr(static_cast<size_t>(start - 1)));
}

std::string Mid(std::string_view s, long start, long length) {
  if (start < 1 || length < 0) InvalidCall();
  if (static_cast<size_t>(start) > s.size()) return "";
  return std::string(s.substr(static_cast<size_t>(start - 1), static_cast<size_t>(length)));
}

std::string Left(std::string_view s, long n) {
  if (n < 0) InvalidCall();
  return std::string(s.substr(0, static_cast<size_t>(n)));
}

std::string Right(std::string_view s, long n) {
  if (n < 0) InvalidCall();
  size_t k = std::min(s.size(), static_cast<size_t>(n));
  return std::string(s.substr(s.size() - k));
}

std::string LTrim(std::string_view s) {
  size_t b = 0;
  while (b < s.size() && s[b] == ' ') ++b;
  return std::string(s.substr(b));
}

std::string RTrim(std::string_view s) {
  size_t e = s.size();
  while (e > 0 && s[e - 1] == ' ') --e;
  return std::string(s.substr(0, e));
}

std::string Trim(std::string_view s) {
  return std::string(TrimView(s));
}

std::string_view TrimView(std::string_view s) {
  size_t b = 0, e = s.size();
  while (b < e && s[b] == ' ') ++b;
  while (e > b && s[e - 1] == ' ') --e;
  return s.substr(b, e - b);
}

std::string UCase(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return r;
}

std::string LCase(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return r;
}

std::string Replace(std::string_view s, std::string_view find, std::string_view with) {
  if (find.empty()) return std::string(s);
  std::string out;
  size_t i = 0;
  while (true) {
    size_t p = s.find(find, i);
    if (p == std::string_view::npos) break;
    out.append(s.substr(i, p - i));
    out.append(with);
    i = p + find.size();
  }
  out.append(s.substr(i));
  return out;
}

double Val(std::string_view s) {
  // Collect the characters that form the number, blanks left out.
  std::string t;
  size_t i = 0;
  auto skip_blanks = [&] {
    while (i < s.size() && (s[i] == ' ' || s[i] == '\t' || s[i] == '\n' || s[i] == '\r')) ++i;
  };
  auto digit = [&](int base) {
    if (i >= s.size()) return false;
    char c = static_cast<char>(std::toupper(static_cast<unsigned char>(s[i])));
    if (base == 16) return std::isxdigit(static_cast<unsigned char>(c)) != 0;
    if (base == 8) return c >= '0' && c <= '7';
    return c >= '0' && c <= '9';
  };
  skip_blanks();
  if (i + 1 < s.size() && s[i] == '&') {
    char kind = static_cast<char>(std::toupper(static_cast<unsigned char>(s[i + 1])));
    if (kind == 'H' || kind == 'O') {
      int base = kind == 'H' ? 16 : 8;
      i += 2;
      uint64_t v = 0;
      for (skip_blanks(); digit(base); skip_blanks()) {
        int d = std::isdigit(static_cast<unsigned char>(s[i]))
                    ? s[i] - '0'
                    : std::toupper(static_cast<unsigned char>(s[i])) - 'A' + 10;
        v = v * static_cast<uint64_t>(base) + static_cast<uint64_t>(d);
        if (v > 0xFFFFFFFFull) throw OverflowError();
        ++i;
      }
      if (v <= 0xFFFF) return static_cast<int16_t>(static_cast<uint16_t>(v));
      return static_cast<int32_t>(static_cast<uint32_t>(v));
    }
  }
  if (i < s.size() && (s[i] == '-' || s[i] == '+')) {
    t += s[i++];
    skip_blanks();
  }
  bool any = false;
  for (; digit(10); skip_blanks()) t += s[i++], any = true;
  if (i < s.size() && s[i] == '.') {
    t += s[i++];
    for (skip_blanks(); digit(10); skip_blanks()) t += s[i++], any = true;
  }
  if (!any) return 0;
  if (i < s.size() && std::strchr("EeDd", s[i]) != nullptr) {
    size_t mark = i;
    std::string e = "e";
    ++i;
    skip_blanks();
    if (i < s.size() && (s[i] == '-' || s[i] == '+')) {
      e += s[i++];
      skip_blanks();
    }
    bool exp_digits = false;
    for (; digit(10); skip_blanks()) e += s[i++], exp_digits = true;
    if (exp_digits) {
      t += e;
    } else {
      i = mark;
    }
  }
  errno = 0;
  double v = std::strtod(t.c_str(), nullptr);
  if (errno == ERANGE && std::isinf(v)) throw OverflowError();
  return v;
}

}  // namespace orv::vb
