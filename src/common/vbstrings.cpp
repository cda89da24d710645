#include "common/vbstrings.h"

#include <cctype>

#include "common/errors.h"

namespace orv::vb {

namespace {

[[noreturn]] void InvalidCall() {
  throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
}

}  // namespace

long InStr(long start, std::string_view s, std::string_view find) {
  if (start < 1) InvalidCall();
  if (static_cast<size_t>(start) > s.size()) return find.empty() && static_cast<size_t>(start) == s.size() + 1 ? start : 0;
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

std::string Trim(std::string_view s) { return LTrim(RTrim(s)); }

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

}  // namespace orv::vb
