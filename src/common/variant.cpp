#include "common/variant.h"

#include <cctype>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <iterator>
#include <limits>

#include "common/errors.h"
#include "common/locale.h"

namespace orv {

namespace {

template <class... Ts>
struct Overloaded : Ts... {
  using Ts::operator()...;
};
template <class... Ts>
Overloaded(Ts...) -> Overloaded<Ts...>;

std::string Trim(std::string_view s) {
  size_t b = 0, e = s.size();
  while (b < e && std::isspace(static_cast<unsigned char>(s[b]))) ++b;
  while (e > b && std::isspace(static_cast<unsigned char>(s[e - 1]))) --e;
  return std::string(s.substr(b, e - b));
}

std::string Lower(std::string_view s) {
  std::string r(s);
  for (char& c : r) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return r;
}

// Reduces locale number text to plain decimal text: "$1,234.50" -> "1234.50",
// "(5.00)" -> "-5.00", "12-" -> "-12", " - $ 5 " -> "-5". Around the digits
// there may be blanks, one sign and one currency symbol, in any order, or
// parentheses for a negative; inside them only grouping separators (after a
// digit of the integer part), one decimal separator and an exponent. Returns
// false for anything else, so "416 555 1234" and "1-2" are no numbers.
bool NormalizeNumberText(std::string_view in, std::string& out) {
  const LocaleInfo& loc = CurrentLocale();
  std::string_view s = in;
  auto blank = [](char c) { return c == ' ' || c == '\t'; };
  while (!s.empty() && blank(s.front())) s.remove_prefix(1);
  while (!s.empty() && blank(s.back())) s.remove_suffix(1);
  if (s.empty()) return false;
  bool neg = false, parens = false;
  if (s.front() == '(' && s.back() == ')') {
    parens = neg = true;
    s = s.substr(1, s.size() - 2);
  }
  const size_t n = s.size();
  size_t i = 0;
  bool sign_seen = false, symbol_seen = false;
  auto affixes = [&] {
    while (i < n) {
      if (blank(s[i])) {
        ++i;
      } else if (!sign_seen && !parens && (s[i] == '-' || s[i] == '+')) {
        sign_seen = true;
        if (s[i] == '-') neg = true;
        ++i;
      } else if (!symbol_seen && !loc.currency_symbol.empty() &&
                 s.compare(i, loc.currency_symbol.size(), loc.currency_symbol) == 0) {
        symbol_seen = true;
        i += loc.currency_symbol.size();
      } else {
        break;
      }
    }
  };
  auto digit = [&](size_t k) { return k < n && std::isdigit(static_cast<unsigned char>(s[k])); };
  affixes();
  std::string t;
  bool digits = false;
  while (i < n && (digit(i) || (digits && s[i] == loc.thousands_separator))) {
    if (s[i] != loc.thousands_separator) t += s[i];
    digits = true;
    ++i;
  }
  if (i < n && s[i] == loc.decimal_separator) {
    t += '.';
    ++i;
    while (digit(i)) {
      t += s[i++];
      digits = true;
    }
  }
  if (!digits) return false;
  if (i < n && (s[i] == 'e' || s[i] == 'E')) {
    t += 'e';
    ++i;
    if (i < n && (s[i] == '+' || s[i] == '-')) t += s[i++];
    if (!digit(i)) return false;
    while (digit(i)) t += s[i++];
  }
  affixes();
  if (i != n) return false;
  out.clear();
  if (neg) out += '-';
  out += t;
  return true;
}

double TextToDouble(const std::string& s) {
  std::string norm;
  if (!NormalizeNumberText(s, norm)) throw ConversionError();
  errno = 0;
  double d = std::strtod(norm.c_str(), nullptr);
  if (errno == ERANGE && std::isinf(d)) throw OverflowError();
  return d;
}

int64_t RoundToInt64(double d) {
  if (!std::isfinite(d)) throw OverflowError();
  double r = std::nearbyint(d);  // ties to even
  if (r >= 9.2233720368547758e18 || r < -9.2233720368547758e18) throw OverflowError();
  return static_cast<int64_t>(r);
}

}  // namespace

VarType Variant::type() const {
  // By the index of the alternative, in the order of Storage: reports ask
  // the type of every value they read, so no visit here.
  static constexpr VarType kTypes[] = {VarType::Empty,  VarType::Null,     VarType::Long,
                                       VarType::LongLong, VarType::Double, VarType::Currency,
                                       VarType::Date,   VarType::String,   VarType::Boolean,
                                       VarType::Binary};
  static_assert(std::variant_size_v<Storage> == std::size(kTypes));
  return kTypes[v_.index()];
}

bool Variant::IsNumeric() const {
  switch (type()) {
    case VarType::Long:
    case VarType::LongLong:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Boolean:
      return true;
    default:
      return false;
  }
}

const std::string& Variant::AsString() const {
  if (auto* p = std::get_if<std::string>(&v_)) return *p;
  throw ConversionError();
}
int64_t Variant::AsInteger() const {
  if (auto* p = std::get_if<int32_t>(&v_)) return *p;
  if (auto* p = std::get_if<int64_t>(&v_)) return *p;
  throw ConversionError();
}
double Variant::AsDouble() const {
  if (auto* p = std::get_if<double>(&v_)) return *p;
  throw ConversionError();
}
Currency Variant::AsCurrency() const {
  if (auto* p = std::get_if<Currency>(&v_)) return *p;
  throw ConversionError();
}
DateTime Variant::AsDate() const {
  if (auto* p = std::get_if<DateTime>(&v_)) return *p;
  throw ConversionError();
}
bool Variant::AsBool() const {
  if (auto* p = std::get_if<bool>(&v_)) return *p;
  throw ConversionError();
}
const Bytes& Variant::AsBytes() const {
  if (auto* p = std::get_if<Bytes>(&v_)) return *p;
  throw ConversionError();
}

bool TryTextToDouble(std::string_view text, double& out) {
  std::string norm;
  if (!NormalizeNumberText(text, norm)) return false;
  errno = 0;
  double d = std::strtod(norm.c_str(), nullptr);
  if (errno == ERANGE && std::isinf(d)) return false;
  out = d;
  return true;
}

std::string DoubleToString(double d) {
  // The host language prints up to 15 significant digits, "E+nn" exponents.
  if (d == 0) return "0";
  char buf[64];
  std::snprintf(buf, sizeof buf, "%.15G", d);
  std::string s = buf;
  size_t e = s.find('E');
  std::string mant = e == std::string::npos ? s : s.substr(0, e);
  std::string expo = e == std::string::npos ? "" : s.substr(e);
  if (mant.find('.') != std::string::npos) {
    while (!mant.empty() && mant.back() == '0') mant.pop_back();
    if (!mant.empty() && mant.back() == '.') mant.pop_back();
  }
  return mant + expo;
}

std::string CStr(const Variant& v) {
  return std::visit(
      Overloaded{
          [](Variant::EmptyTag) -> std::string { return ""; },
          [](Variant::NullTag) -> std::string { throw NullError(); },
          [](int32_t i) -> std::string { return std::to_string(i); },
          [](int64_t i) -> std::string { return std::to_string(i); },
          [](double d) -> std::string { return DoubleToString(d); },
          [](Currency c) -> std::string { return c.ToString(); },
          [](DateTime d) -> std::string { return DateToLocaleText(d); },
          [](const std::string& s) -> std::string { return s; },
          [](bool b) -> std::string { return b ? "True" : "False"; },
          [](const Bytes& b) -> std::string { return std::string(b.begin(), b.end()); },
      },
      v.storage());
}

double CDbl(const Variant& v) {
  return std::visit(Overloaded{
                        [](Variant::EmptyTag) -> double { return 0; },
                        [](Variant::NullTag) -> double { throw NullError(); },
                        [](int32_t i) -> double { return i; },
                        [](int64_t i) -> double { return static_cast<double>(i); },
                        [](double d) -> double { return d; },
                        [](Currency c) -> double { return c.ToDouble(); },
                        [](DateTime d) -> double { return d.serial(); },
                        [](const std::string& s) -> double { return TextToDouble(s); },
                        [](bool b) -> double { return b ? -1 : 0; },
                        [](const Bytes&) -> double { throw ConversionError(); },
                    },
                    v.storage());
}

int64_t CLngLng(const Variant& v) {
  if (auto* p = std::get_if<int32_t>(&v.storage())) return *p;
  if (auto* p = std::get_if<int64_t>(&v.storage())) return *p;
  if (auto* p = std::get_if<Currency>(&v.storage())) {
    // Exact half-even rounding of the fixed-point value.
    return Round(*p, 0).raw() / Currency::kScale;
  }
  return RoundToInt64(CDbl(v));
}

int32_t CLng(const Variant& v) {
  int64_t r = CLngLng(v);
  if (r > std::numeric_limits<int32_t>::max() || r < std::numeric_limits<int32_t>::min())
    throw OverflowError();
  return static_cast<int32_t>(r);
}

Currency CCur(const Variant& v) {
  return std::visit(Overloaded{
                        [](Variant::EmptyTag) { return Currency(); },
                        [](Variant::NullTag) -> Currency { throw NullError(); },
                        [](int32_t i) { return Currency::FromInt(i); },
                        [](int64_t i) { return Currency::FromInt(i); },
                        [](double d) { return Currency::FromDouble(d); },
                        [](Currency c) { return c; },
                        [](DateTime d) { return Currency::FromDouble(d.serial()); },
                        [](const std::string& s) {
                          std::string norm;
                          if (!NormalizeNumberText(s, norm)) throw ConversionError();
                          return Currency::FromDecimalText(norm);
                        },
                        [](bool b) { return Currency::FromInt(b ? -1 : 0); },
                        [](const Bytes&) -> Currency { throw ConversionError(); },
                    },
                    v.storage());
}

DateTime CDate(const Variant& v) {
  return std::visit(Overloaded{
                        [](Variant::EmptyTag) { return DateTime(); },
                        [](Variant::NullTag) -> DateTime { throw NullError(); },
                        [](int32_t i) { return DateTime(i); },
                        [](int64_t i) { return DateTime(static_cast<double>(i)); },
                        [](double d) { return DateTime(d); },
                        [](Currency c) { return DateTime(c.ToDouble()); },
                        [](DateTime d) { return d; },
                        [](const std::string& s) {
                          if (auto d = ParseDateText(s)) return *d;
                          std::string norm;
                          if (NormalizeNumberText(s, norm))
                            return DateTime(std::strtod(norm.c_str(), nullptr));
                          throw ConversionError();
                        },
                        [](bool b) { return DateTime(b ? -1 : 0); },
                        [](const Bytes&) -> DateTime { throw ConversionError(); },
                    },
                    v.storage());
}

bool CBool(const Variant& v) {
  return std::visit(Overloaded{
                        [](Variant::EmptyTag) { return false; },
                        [](Variant::NullTag) -> bool { throw NullError(); },
                        [](int32_t i) { return i != 0; },
                        [](int64_t i) { return i != 0; },
                        [](double d) { return d != 0; },
                        [](Currency c) { return !c.IsZero(); },
                        [](DateTime d) { return d.serial() != 0; },
                        [](const std::string& s) {
                          std::string l = Lower(Trim(s));
                          if (l == "true") return true;
                          if (l == "false") return false;
                          return TextToDouble(s) != 0;
                        },
                        [](bool b) { return b; },
                        [](const Bytes&) -> bool { throw ConversionError(); },
                    },
                    v.storage());
}

bool IsNumericValue(const Variant& v) {
  if (v.IsNumeric() || v.IsEmpty()) return true;
  if (v.IsString()) {
    std::string norm;
    return NormalizeNumberText(v.AsString(), norm);
  }
  return false;
}

bool IsDateValue(const Variant& v) {
  if (v.IsDate()) return true;
  if (v.IsString()) return ParseDateText(v.AsString()).has_value();
  return false;
}

}  // namespace orv
