// Money: a signed 64-bit count of ten-thousandths of a dollar.
//
// Every amount the reports read, add and print is a Currency. Conversion from
// a float or from text rounds half to even at the fourth decimal (the host
// language's rule); arithmetic that leaves the range raises OverflowError and
// never wraps.
#pragma once

#include <compare>
#include <cstdint>
#include <string>

namespace orv {

class Currency {
 public:
  static constexpr int64_t kScale = 10000;

  constexpr Currency() = default;

  // From a whole number of dollars.
  static Currency FromInt(int64_t dollars);
  // From a raw count of ten-thousandths.
  static constexpr Currency FromRaw(int64_t raw) {
    Currency c;
    c.raw_ = raw;
    return c;
  }
  // From a float, rounded half to even at the fourth decimal.
  static Currency FromDouble(double value);
  // From plain decimal text ("-12.345", "1090.0000", "1e3"); throws
  // ConversionError for anything else. Locale forms ("$1,234.50", "(5.00)")
  // are handled by the Variant conversions, not here.
  static Currency FromDecimalText(const std::string& text);

  constexpr int64_t raw() const { return raw_; }
  double ToDouble() const { return static_cast<double>(raw_) / kScale; }
  // Fixed four decimals with '-' for negatives: "1090.0000", "-50.0000".
  std::string ToFixed4() const;
  // The host language's CStr of money: no trailing zeros, "." decimal ("12.5",
  // "-3", "0").
  std::string ToString() const;

  Currency operator-() const;
  Currency& operator+=(Currency o);
  Currency& operator-=(Currency o);
  friend Currency operator+(Currency a, Currency b) { return a += b; }
  friend Currency operator-(Currency a, Currency b) { return a -= b; }
  // Product of two amounts, rounded half to even to four decimals.
  friend Currency operator*(Currency a, Currency b);
  friend Currency operator*(Currency a, int64_t n);
  friend Currency operator*(int64_t n, Currency a) { return a * n; }
  // Division gives a float, as in the host language (Currency / Currency is a
  // Double); throws DivisionByZeroError on a zero divisor.
  friend double operator/(Currency a, Currency b);

  friend constexpr auto operator<=>(Currency a, Currency b) = default;
  friend constexpr bool operator==(Currency a, Currency b) = default;

  bool IsZero() const { return raw_ == 0; }

 private:
  int64_t raw_ = 0;
};

// Round(value, digits) with ties to even, as the host language's Round does.
// digits runs from 0 to 4; more than 4 leaves the value as it is.
Currency Round(Currency value, int digits);
double RoundHalfEven(double value, int digits);

}  // namespace orv
