// Variant: what a database field or a report parameter holds.
//
// The kinds follow the host language's Variant: Empty (never assigned), Null
// (the database's missing value), text, whole numbers (32- and 64-bit), a
// 64-bit float, money, a date, a boolean and binary data. Conversions follow
// the host language's rules the reports rely on: text to number through the
// locale ("$1,234.50", "(5)"), number to text, booleans as -1/0, and Null
// propagating through arithmetic but failing a typed conversion.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"

namespace orv {

// The host language's VarType codes, so a report can ask "is it a String".
enum class VarType : int {
  Empty = 0,
  Null = 1,
  Long = 3,
  Double = 5,
  Currency = 6,
  Date = 7,
  String = 8,
  Boolean = 11,
  LongLong = 20,
  Binary = 8209,  // array of bytes
};

using Bytes = std::vector<unsigned char>;

class Variant {
 public:
  struct NullTag {
    friend bool operator==(NullTag, NullTag) { return true; }
  };
  struct EmptyTag {
    friend bool operator==(EmptyTag, EmptyTag) { return true; }
  };

  Variant() = default;  // Empty
  Variant(NullTag) : v_(NullTag{}) {}
  Variant(int v) : v_(static_cast<int32_t>(v)) {}
  Variant(long v) : v_(static_cast<int64_t>(v)) {}
  Variant(long long v) : v_(static_cast<int64_t>(v)) {}
  Variant(double v) : v_(v) {}
  Variant(Currency v) : v_(v) {}
  Variant(DateTime v) : v_(v) {}
  Variant(bool v) : v_(v) {}
  Variant(std::string v) : v_(std::move(v)) {}
  Variant(std::string_view v) : v_(std::string(v)) {}
  Variant(const char* v) : v_(std::string(v)) {}
  Variant(Bytes v) : v_(std::move(v)) {}

  static Variant Null() { return Variant(NullTag{}); }
  static Variant Empty() { return Variant(); }
  static Variant Int64(int64_t v) {
    Variant r;
    r.v_ = v;
    return r;
  }

  VarType type() const;
  bool IsNull() const { return std::holds_alternative<NullTag>(v_); }
  bool IsEmpty() const { return std::holds_alternative<EmptyTag>(v_); }
  bool IsString() const { return std::holds_alternative<std::string>(v_); }
  bool IsNumeric() const;  // Long, LongLong, Double, Currency, Boolean
  bool IsDate() const { return std::holds_alternative<DateTime>(v_); }

  // Direct access; each throws ConversionError when the kind differs.
  const std::string& AsString() const;
  int64_t AsInteger() const;  // Long or LongLong
  double AsDouble() const;
  Currency AsCurrency() const;
  DateTime AsDate() const;
  bool AsBool() const;
  const Bytes& AsBytes() const;

  // Identity of kind and value (Null equals Null here); used by tests and
  // containers, not the host language's "=" (see Compare in conversions).
  friend bool operator==(const Variant& a, const Variant& b) { return a.v_ == b.v_; }

  using Storage = std::variant<EmptyTag, NullTag, int32_t, int64_t, double, Currency, DateTime,
                               std::string, bool, Bytes>;
  const Storage& storage() const { return v_; }

 private:
  Storage v_;
};

// ---- Conversions with the host language's semantics ----------------------
// Each throws NullError on Null (except CStrOrEmpty), ConversionError on text
// that is no value of the type, OverflowError when out of range.

// CStr: text of a value. Empty gives "", booleans "True"/"False", dates as
// DateToLocaleText ("2001-03-01", "2001-03-01 9:05:00 AM", a time alone for
// day 0), money and floats without trailing zeros ("12.5").
std::string CStr(const Variant& v);
// CDbl: float. Text is read by the locale: blanks, "$", grouping commas, a
// sign or parentheses for negatives.
double CDbl(const Variant& v);
// CLng: 32-bit integer, rounding ties to even.
int32_t CLng(const Variant& v);
// CLngLng: 64-bit integer, rounding ties to even.
int64_t CLngLng(const Variant& v);
// CCur: money, rounding half to even at the fourth decimal.
Currency CCur(const Variant& v);
// CDate: a date from a date, a number (serial), date text (ParseDateText) or,
// failing that, number text read as a serial ("36951" is 2001-03-01).
DateTime CDate(const Variant& v);
// CBool: numbers are true when nonzero; text "True"/"False" (any case) or a
// number in text.
bool CBool(const Variant& v);

// True when CDbl would succeed on the value (the host language's IsNumeric).
bool IsNumericValue(const Variant& v);
// The host language's IsDate: true for a date, and for text that reads as a
// date or a time (ParseDateText). Numeric text is no date here, although CDate
// accepts it as a serial number.
bool IsDateValue(const Variant& v);

// Reads number text as CDbl does (by the locale: blanks, one sign, "$",
// grouping, parentheses for negatives, an exponent). False when the text is no
// number or out of range; never throws.
bool TryTextToDouble(std::string_view text, double& out);
// CStr of a float: up to 15 significant digits, no trailing zeros, "E+nn" /
// "E-nn" for very large and very small values ("1234.5", "1E+20").
std::string DoubleToString(double d);

}  // namespace orv
