#include "common/currency.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "common/errors.h"

namespace orv {

namespace {

int64_t CheckedAdd(int64_t a, int64_t b) {
  int64_t r;
  if (__builtin_add_overflow(a, b, &r)) throw OverflowError();
  return r;
}

// Divides a 128-bit value by a positive divisor, rounding half to even.
__int128 DivRoundHalfEven(__int128 n, __int128 d) {
  __int128 q = n / d;
  __int128 r = n % d;
  if (r < 0) r = -r;
  __int128 twice = r * 2;
  if (twice > d || (twice == d && (q % 2 != 0))) q += (n < 0) ? -1 : 1;
  return q;
}

int64_t Narrow(__int128 v) {
  if (v > std::numeric_limits<int64_t>::max() || v < std::numeric_limits<int64_t>::min())
    throw OverflowError();
  return static_cast<int64_t>(v);
}

}  // namespace

Currency Currency::FromInt(int64_t dollars) {
  return FromRaw(Narrow(static_cast<__int128>(dollars) * kScale));
}

Currency Currency::FromDouble(double value) {
  if (!std::isfinite(value)) throw OverflowError();
  // The default floating-point rounding mode rounds ties to even.
  double scaled = std::nearbyint(value * kScale);
  if (scaled >= 9.2233720368547758e18 || scaled < -9.2233720368547758e18) throw OverflowError();
  return FromRaw(static_cast<int64_t>(scaled));
}

Currency Currency::FromDecimalText(const std::string& text) {
  // Parse digits exactly where possible so that "0.1" is 1000 raw and not a
  // float neighbour; fall back to strtod for exponents.
  size_t i = 0, n = text.size();
  while (i < n && (text[i] == ' ' || text[i] == '\t')) ++i;
  size_t end = n;
  while (end > i && (text[end - 1] == ' ' || text[end - 1] == '\t')) --end;
  if (i == end) throw ConversionError();
  bool neg = false;
  if (text[i] == '+' || text[i] == '-') {
    neg = text[i] == '-';
    ++i;
  }
  __int128 whole = 0;
  int digits = 0;
  size_t j = i;
  for (; j < end && std::isdigit(static_cast<unsigned char>(text[j])); ++j, ++digits) {
    whole = whole * 10 + (text[j] - '0');
    if (whole > (static_cast<__int128>(1) << 80)) throw OverflowError();
  }
  __int128 frac = 0;
  int fdigits = 0;
  bool round_up_half = false, sticky = false;
  int next_digit = -1;
  if (j < end && text[j] == '.') {
    ++j;
    for (; j < end && std::isdigit(static_cast<unsigned char>(text[j])); ++j) {
      ++digits;
      if (fdigits < 4) {
        frac = frac * 10 + (text[j] - '0');
        ++fdigits;
      } else if (next_digit < 0) {
        next_digit = text[j] - '0';
      } else if (text[j] != '0') {
        sticky = true;
      }
    }
  }
  if (digits == 0) throw ConversionError();
  if (j != end) {
    // Exponent or anything else: let strtod decide, then round.
    std::string s = text.substr(0, end);
    char* stop = nullptr;
    errno = 0;
    double d = std::strtod(s.c_str(), &stop);
    if (stop == s.c_str() || *stop != '\0') throw ConversionError();
    return FromDouble(d);
  }
  while (fdigits < 4) {
    frac *= 10;
    ++fdigits;
  }
  __int128 raw = whole * kScale + frac;
  if (next_digit > 5 || (next_digit == 5 && (sticky || (raw % 2) != 0))) round_up_half = true;
  if (round_up_half) raw += 1;
  return FromRaw(Narrow(neg ? -raw : raw));
}

std::string Currency::ToFixed4() const {
  __int128 v = raw_;
  bool neg = v < 0;
  if (neg) v = -v;
  unsigned long long whole = static_cast<unsigned long long>(v / kScale);
  unsigned frac = static_cast<unsigned>(v % kScale);
  std::string s = std::to_string(whole);
  std::string f = std::to_string(frac);
  s += '.';
  s.append(4 - f.size(), '0');
  s += f;
  return neg ? "-" + s : s;
}

std::string Currency::ToString() const {
  std::string s = ToFixed4();
  while (s.back() == '0') s.pop_back();
  if (s.back() == '.') s.pop_back();
  if (s == "-0") s = "0";
  return s;
}

Currency Currency::operator-() const {
  if (raw_ == std::numeric_limits<int64_t>::min()) throw OverflowError();
  return FromRaw(-raw_);
}

Currency& Currency::operator+=(Currency o) {
  raw_ = CheckedAdd(raw_, o.raw_);
  return *this;
}

Currency& Currency::operator-=(Currency o) {
  int64_t r;
  if (__builtin_sub_overflow(raw_, o.raw_, &r)) throw OverflowError();
  raw_ = r;
  return *this;
}

Currency operator*(Currency a, Currency b) {
  __int128 p = static_cast<__int128>(a.raw_) * b.raw_;
  return Currency::FromRaw(Narrow(DivRoundHalfEven(p, Currency::kScale)));
}

Currency operator*(Currency a, int64_t n) {
  return Currency::FromRaw(Narrow(static_cast<__int128>(a.raw_) * n));
}

double operator/(Currency a, Currency b) {
  if (b.raw_ == 0) throw DivisionByZeroError();
  return static_cast<double>(a.raw_) / static_cast<double>(b.raw_);
}

Currency Round(Currency value, int digits) {
  if (digits >= 4) return value;
  if (digits < 0) throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
  int64_t unit = 1;
  for (int i = digits; i < 4; ++i) unit *= 10;
  __int128 q = DivRoundHalfEven(value.raw(), unit);
  return Currency::FromRaw(Narrow(q * unit));
}

double RoundHalfEven(double value, int digits) {
  if (digits < 0) throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
  // Scales in floating point and rounds ties to even, as the host language's
  // Round does: a scaled value that lands on a half is a tie (2.675 * 100 is
  // 267.5 after the multiplication's own rounding, so 2.68; 0.125 gives 0.12).
  // Format, by contrast, rounds half away from zero; see format.h.
  double scale = std::pow(10.0, digits);
  return std::nearbyint(value * scale) / scale;
}

}  // namespace orv
