// The host language's string functions with their 1-based positions and
// their errors, for report code that is written position by position
// (address splitting, filter parsing). Out-of-range arguments raise
// ReportError 5 ("Invalid procedure call or argument") exactly where the host
// language does, because some callers rely on that failure to fall into their
// trap.
#pragma once

#include <string>
#include <string_view>

namespace orv::vb {

// InStr(start, s, find): 1-based position of `find` in `s` at or after
// `start`, 0 when absent. start < 1 raises error 5; start beyond the end
// gives 0. An empty `find` gives `start`.
long InStr(long start, std::string_view s, std::string_view find);
inline long InStr(std::string_view s, std::string_view find) {
  return InStr(1, s, find);
}
// InStrRev(s, find): 1-based position of the last occurrence, 0 when absent.
long InStrRev(std::string_view s, std::string_view find);

// Mid(s, start[, length]): start < 1 or length < 0 raise error 5; a start
// beyond the end gives "".
std::string Mid(std::string_view s, long start);
std::string Mid(std::string_view s, long start, long length);
// Left/Right(s, n): n < 0 raises error 5.
std::string Left(std::string_view s, long n);
std::string Right(std::string_view s, long n);

// Trim, LTrim, RTrim remove blanks (spaces only, as the host language does).
std::string Trim(std::string_view s);
std::string LTrim(std::string_view s);
std::string RTrim(std::string_view s);
// Trim's text as a view into `s`, for a loop that appends it somewhere.
std::string_view TrimView(std::string_view s);

std::string UCase(std::string_view s);
std::string LCase(std::string_view s);

// Replace(s, find, with): every occurrence, compared exactly.
std::string Replace(std::string_view s, std::string_view find, std::string_view with);

// Val(s): the number at the start of the text, as a float. Blanks, tabs and
// line feeds are skipped wherever they stand ("1 2" is 12); then a sign,
// digits, one '.', and an exponent with 'E' or 'D' are read up to the first
// character that cannot continue the number. "&H" and "&O" start hexadecimal
// and octal whole numbers, which wrap to negative as 16-bit values up to
// &HFFFF and as 32-bit values above. Text without a leading number gives 0;
// the locale plays no part ("1,234" is 1). Raises OverflowError past the
// float range.
double Val(std::string_view s);

}  // namespace orv::vb
