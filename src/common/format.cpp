#include "common/format.h"

#include <bit>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <limits>

#include "common/errors.h"
#include "common/format_parse.h"

namespace orv {

using format_detail::CachedFormat;
using format_detail::ParsedFormat;
using format_detail::Section;
using format_detail::SectionKind;
using format_detail::Tok;
using format_detail::Token;

namespace {

// ---- Decimal digits of a value --------------------------------------------

// A magnitude as decimal digits: 0.d[0]d[1]...d[n-1] x 10^point, without
// leading or trailing zeros; n == 0 is zero. Fixed storage, no allocation: a
// 64-bit integer has 19 digits, a float is written with 15.
struct Decimal {
  bool neg = false;
  int n = 0;
  int point = 0;
  char d[24];
  char Digit(int index) const { return index >= 0 && index < n ? d[index] : '0'; }
};

void StripZeros(Decimal& v) {
  int lead = 0;
  while (lead < v.n && v.d[lead] == '0') ++lead;
  if (lead > 0) {
    std::memmove(v.d, v.d + lead, static_cast<size_t>(v.n - lead));
    v.n -= lead;
    v.point -= lead;
  }
  while (v.n > 0 && v.d[v.n - 1] == '0') --v.n;
}

// |u| / 10^scale.
Decimal FromUnsigned(unsigned long long u, int scale, bool neg) {
  Decimal v;
  char buf[24];
  int len = 0;
  do {
    buf[len++] = static_cast<char>('0' + u % 10);
    u /= 10;
  } while (u != 0);
  for (int k = 0; k < len; ++k) v.d[k] = buf[len - 1 - k];
  v.n = len;
  v.point = len - scale;
  v.neg = neg;
  StripZeros(v);
  return v;
}

Decimal FromInteger(long long i) {
  unsigned long long u =
      i < 0 ? 0ULL - static_cast<unsigned long long>(i) : static_cast<unsigned long long>(i);
  return FromUnsigned(u, 0, i < 0);
}

// A float as the host language writes it: 15 significant digits, so that the
// rounding that follows works on the digits a person sees (2.675, not
// 2.67499999999999982236431605997495353221893310546875).
Decimal FromDouble(double x) {
  if (!std::isfinite(x)) throw OverflowError();
  Decimal v;
  v.neg = std::signbit(x) && x != 0;
  if (x == 0) return v;
  char buf[40];
  auto res = std::to_chars(buf, buf + sizeof buf, std::fabs(x), std::chars_format::scientific, 14);
  *res.ptr = '\0';
  // buf is "d.dddddddddddddde[+-]xx[x]".
  v.d[0] = buf[0];
  std::memcpy(v.d + 1, buf + 2, 14);
  v.n = 15;
  v.point = std::atoi(buf + 17) + 1;
  StripZeros(v);
  return v;
}

// Rounds to `places` digits after the point, half away from zero (the
// magnitude's digit after the last kept one decides).
void RoundTo(Decimal& v, int places) {
  int keep = v.point + places;
  if (keep >= v.n) return;
  if (keep < 0) {
    v.n = 0;
    return;
  }
  bool up = v.d[keep] >= '5';
  v.n = keep;
  if (up) {
    int k = v.n - 1;
    while (k >= 0 && v.d[k] == '9') v.d[k--] = '0';
    if (k >= 0) {
      ++v.d[k];
    } else {
      // All nines (or nothing kept): the value becomes 10^point.
      v.d[0] = '1';
      v.n = 1;
      ++v.point;
    }
  }
  StripZeros(v);
}

// ---- Values --------------------------------------------------------------

enum class Got { kValue, kNull, kEmpty, kUnchanged };

// The number a value shows under a number format. Text that is no number
// comes back unchanged, as in the host language.
Got NumberOf(const Variant& value, Decimal& out) {
  switch (value.type()) {
    case VarType::Null:
      return Got::kNull;
    case VarType::Empty:
      return Got::kEmpty;
    case VarType::Long:
    case VarType::LongLong:
      out = FromInteger(value.AsInteger());
      return Got::kValue;
    case VarType::Boolean:
      out = FromInteger(value.AsBool() ? -1 : 0);
      return Got::kValue;
    case VarType::Currency: {
      long long raw = value.AsCurrency().raw();
      unsigned long long u = raw < 0 ? 0ULL - static_cast<unsigned long long>(raw)
                                     : static_cast<unsigned long long>(raw);
      out = FromUnsigned(u, 4, raw < 0);
      return Got::kValue;
    }
    case VarType::Double:
      out = FromDouble(value.AsDouble());
      return Got::kValue;
    case VarType::Date:
      out = FromDouble(value.AsDate().serial());
      return Got::kValue;
    case VarType::String: {
      double d;
      if (!TryTextToDouble(value.AsString(), d)) return Got::kUnchanged;
      out = FromDouble(d);
      return Got::kValue;
    }
    case VarType::Binary:
      return Got::kUnchanged;
  }
  return Got::kUnchanged;
}

// The date range of the host language: 100-01-01 to 9999-12-31.
constexpr double kMinSerial = -657434.0;
constexpr double kMaxSerial = 2958466.0;

DateTime SerialToDate(double serial) {
  if (!(serial >= kMinSerial && serial < kMaxSerial)) throw OverflowError();
  return DateTime(serial);
}

// The date a value shows under a date format.
Got DateOf(const Variant& value, DateTime& out) {
  switch (value.type()) {
    case VarType::Null:
      return Got::kNull;
    case VarType::Empty:
      return Got::kEmpty;
    case VarType::Date:
      out = value.AsDate();
      return Got::kValue;
    case VarType::Long:
    case VarType::LongLong:
    case VarType::Double:
    case VarType::Currency:
    case VarType::Boolean:
      out = SerialToDate(CDbl(value));
      return Got::kValue;
    case VarType::String: {
      const std::string& s = value.AsString();
      double d;
      if (TryTextToDouble(s, d)) {
        out = SerialToDate(d);
        return Got::kValue;
      }
      if (auto parsed = ParseDateText(s)) {
        out = *parsed;
        return Got::kValue;
      }
      return Got::kUnchanged;
    }
    case VarType::Binary:
      return Got::kUnchanged;
  }
  return Got::kUnchanged;
}

// Decimal digits of v, zero-padded to `width`; printf would cost more than
// the rest of a date's formatting.
void AppendInt(std::string& out, long long v, int width = 1) {
  if (v < 0) {
    out += '-';
    v = -v;
  }
  char buf[24];
  int len = 0;
  do {
    buf[len++] = static_cast<char>('0' + v % 10);
    v /= 10;
  } while (v != 0);
  for (int k = len; k < width; ++k) out += '0';
  while (len > 0) out += buf[--len];
}

// Writes a number's plain text with the locale's decimal separator.
void AppendWithDecimal(std::string& out, const std::string& text, const LocaleInfo& loc) {
  for (char c : text) out += c == '.' ? loc.decimal_separator : c;
}

void AppendGeneralDate(DateTime dt, const LocaleInfo& loc, std::string& out);

// The plain text of a value (an empty format): CStr with the locale's dates
// and decimal separator, "" for Null.
std::string PlainText(const Variant& value, const LocaleInfo& loc) {
  std::string out;
  switch (value.type()) {
    case VarType::Null:
    case VarType::Empty:
      return out;
    case VarType::Date:
      AppendGeneralDate(value.AsDate(), loc, out);
      return out;
    case VarType::Double:
    case VarType::Currency:
      AppendWithDecimal(out, CStr(value), loc);
      return out;
    default:
      return CStr(value);
  }
}

// ---- Numbers -------------------------------------------------------------

void RenderNumber(const Section& sec, Decimal v, bool minus, const LocaleInfo& loc,
                  std::string& out) {
  v.point += sec.shift;
  int exp10 = 0;
  if (sec.scientific) {
    int k = sec.min_int_digits > 0 ? sec.min_int_digits : 1;
    if (v.n > 0) {
      exp10 = v.point - k;
      v.point = k;
      RoundTo(v, sec.frac_places);
      if (v.point > k) {  // 9.999 rounded up to 10.00
        v.point = k;
        ++exp10;
      }
    }
  } else {
    RoundTo(v, sec.frac_places);
  }

  // Integer digits, padded to the placeholders from the first '0'.
  std::string digits;
  for (int k = 0; k < v.point; ++k) digits += v.Digit(k);
  // A zero scaled by '%' keeps its point two places on ("00"): leading
  // zeros come only from the placeholders.
  digits.erase(0, digits.find_first_not_of('0') == std::string::npos ? digits.size()
                                                                      : digits.find_first_not_of('0'));
  if (static_cast<int>(digits.size()) < sec.min_int_digits)
    digits.insert(0, static_cast<size_t>(sec.min_int_digits) - digits.size(), '0');
  const int len = static_cast<int>(digits.size());
  const int places = sec.int_places;

  // The last fraction placeholder that prints: a '#' prints no trailing zero.
  int last_frac = -1;
  {
    int j = 0;
    for (const Token& t : sec.tokens) {
      if (!t.in_fraction || (t.kind != Tok::kDigitZero && t.kind != Tok::kDigitHash)) continue;
      if (t.kind == Tok::kDigitZero || v.Digit(v.point + j) != '0') last_frac = j;
      ++j;
    }
  }

  if (minus) out += '-';
  auto emit_int = [&](int index) {
    out += digits[static_cast<size_t>(index)];
    int rest = len - 1 - index;
    if (sec.grouping && rest > 0 && rest % 3 == 0) out += loc.thousands_separator;
  };
  bool int_done = places > 0;  // without integer placeholders the digits go
  auto emit_all_int = [&] {    // before the decimal point or the fraction
    if (int_done) return;
    for (int k = 0; k < len; ++k) emit_int(k);
    int_done = true;
  };
  int int_seen = 0, frac_seen = 0;
  for (const Token& t : sec.tokens) {
    switch (t.kind) {
      case Tok::kLiteral:
        out += t.text;
        break;
      case Tok::kDigitZero:
      case Tok::kDigitHash:
        if (!t.in_fraction) {
          int k = int_seen++;
          if (len >= places) {
            if (k == 0) {
              for (int m = 0; m <= len - places; ++m) emit_int(m);
            } else {
              emit_int(len - places + k);
            }
          } else if (k >= places - len) {
            emit_int(k - (places - len));
          }
        } else {
          emit_all_int();
          int j = frac_seen++;
          if (j <= last_frac) out += v.Digit(v.point + j);
        }
        break;
      case Tok::kDecimal:
        emit_all_int();
        out += loc.decimal_separator;
        break;
      case Tok::kPercent:
        emit_all_int();
        out += '%';
        break;
      case Tok::kExponent: {
        emit_all_int();
        out += t.text[0];
        if (exp10 < 0) {
          out += '-';
        } else if (t.text[1] == '+') {
          out += '+';
        }
        AppendInt(out, exp10 < 0 ? -exp10 : exp10, sec.exp_min_digits > 0 ? sec.exp_min_digits : 1);
        break;
      }
      default:
        break;  // exponent digits print with the exponent; no other token here
    }
  }
}

// Chooses the section for a number and renders it.
std::string FormatNumber(const ParsedFormat& pf, const Variant& value, const LocaleInfo& loc) {
  Decimal v;
  std::string out;
  switch (NumberOf(value, v)) {
    case Got::kNull:
      if (pf.sections.size() >= 4 && !pf.sections[3].empty)
        RenderNumber(pf.sections[3], Decimal{}, false, loc, out);
      return out;
    case Got::kEmpty:
      return out;
    case Got::kUnchanged:
      return PlainText(value, loc);
    case Got::kValue:
      break;
  }
  const auto& s = pf.sections;
  const Section* sec = &s[0];
  bool minus = false;
  if (v.neg && v.n > 0) {
    if (s.size() >= 2 && !s[1].empty) {
      sec = &s[1];
    } else {
      minus = true;
    }
  } else if (v.n == 0 && s.size() >= 3 && !s[2].empty) {
    sec = &s[2];
  }
  v.neg = false;
  RenderNumber(*sec, v, minus, loc, out);
  return out;
}

// ---- Dates ---------------------------------------------------------------

void RenderDate(const Section& sec, DateTime dt, const LocaleInfo& loc, std::string& out);

void RenderDateFormat(std::string_view fmt, DateTime dt, const LocaleInfo& loc, std::string& out) {
  ParsedFormat scratch;
  const ParsedFormat& pf = CachedFormat(fmt, scratch);
  RenderDate(pf.sections[0], dt, loc, out);
}

void AppendGeneralDate(DateTime dt, const LocaleInfo& loc, std::string& out) {
  bool has_date = dt.DatePart().serial() != 0;
  bool has_time = dt.TimePart().serial() != 0;
  if (has_date) RenderDateFormat(loc.short_date, dt, loc, out);
  if (has_time || !has_date) {
    if (has_date) out += ' ';
    RenderDateFormat(loc.long_time, dt, loc, out);
  }
}

// Week of the year with Sunday as its first day and January 1 in week 1.
int WeekOfYear(DateTime dt) {
  DateTime jan1 = DateTime::FromParts(dt.Year(), 1, 1);
  return (dt.DayOfYear() + jan1.Weekday() - 2) / 7 + 1;
}

void RenderDate(const Section& sec, DateTime dt, const LocaleInfo& loc, std::string& out) {
  const DateParts p = dt.Parts();
  const int hour12 = p.hour % 12 == 0 ? 12 : p.hour % 12;
  const int hour = sec.twelve_hour ? hour12 : p.hour;
  const bool am = p.hour < 12;
  for (const Token& t : sec.tokens) {
    switch (t.kind) {
      case Tok::kLiteral:
        out += t.text;
        break;
      case Tok::kDay:
        AppendInt(out, p.day);
        break;
      case Tok::kDay2:
        AppendInt(out, p.day, 2);
        break;
      case Tok::kDayAbbrev:
        out += loc.day_abbrev[static_cast<size_t>(dt.Weekday() - 1)];
        break;
      case Tok::kDayName:
        out += loc.day_names[static_cast<size_t>(dt.Weekday() - 1)];
        break;
      case Tok::kShortDate:
        RenderDateFormat(loc.short_date, dt, loc, out);
        break;
      case Tok::kLongDate:
        RenderDateFormat(loc.long_date, dt, loc, out);
        break;
      case Tok::kWeekday:
        AppendInt(out, dt.Weekday());
        break;
      case Tok::kWeekOfYear:
        AppendInt(out, WeekOfYear(dt));
        break;
      case Tok::kMonth:
        AppendInt(out, p.month);
        break;
      case Tok::kMonth2:
        AppendInt(out, p.month, 2);
        break;
      case Tok::kMonthAbbrev:
        out += loc.month_abbrev[static_cast<size_t>(p.month - 1)];
        break;
      case Tok::kMonthName:
        out += loc.month_names[static_cast<size_t>(p.month - 1)];
        break;
      case Tok::kQuarter:
        AppendInt(out, (p.month - 1) / 3 + 1);
        break;
      case Tok::kDayOfYear:
        AppendInt(out, dt.DayOfYear());
        break;
      case Tok::kYear2:
        AppendInt(out, p.year % 100, 2);
        break;
      case Tok::kYear4:
        AppendInt(out, p.year);
        break;
      case Tok::kHour:
        AppendInt(out, hour);
        break;
      case Tok::kHour2:
        AppendInt(out, hour, 2);
        break;
      case Tok::kMinute:
        AppendInt(out, p.minute);
        break;
      case Tok::kMinute2:
        AppendInt(out, p.minute, 2);
        break;
      case Tok::kSecond:
        AppendInt(out, p.second);
        break;
      case Tok::kSecond2:
        AppendInt(out, p.second, 2);
        break;
      case Tok::kAmPmUpper:
        out += am ? "AM" : "PM";
        break;
      case Tok::kAmPmLower:
        out += am ? "am" : "pm";
        break;
      case Tok::kAPUpper:
        out += am ? 'A' : 'P';
        break;
      case Tok::kAPLower:
        out += am ? 'a' : 'p';
        break;
      case Tok::kAmPmLocale:
        out += am ? loc.am : loc.pm;
        break;
      case Tok::kLongTime:
        RenderDateFormat(loc.long_time, dt, loc, out);
        break;
      case Tok::kGeneralDate:
        AppendGeneralDate(dt, loc, out);
        break;
      default:
        break;
    }
  }
}

std::string FormatDate(const Section& sec, const Variant& value, const LocaleInfo& loc) {
  DateTime dt;
  switch (DateOf(value, dt)) {
    case Got::kValue: {
      std::string out;
      RenderDate(sec, dt, loc, out);
      return out;
    }
    case Got::kNull:
    case Got::kEmpty:
      return {};
    case Got::kUnchanged:
      break;
  }
  return PlainText(value, loc);
}

std::string FormatDate(std::string_view fmt, const Variant& value, const LocaleInfo& loc) {
  ParsedFormat scratch;
  return FormatDate(CachedFormat(fmt, scratch).sections[0], value, loc);
}

// ---- Text ----------------------------------------------------------------

std::string FormatText(const ParsedFormat& pf, const Variant& value, const LocaleInfo& loc) {
  std::string s = PlainText(value, loc);
  const Section* sec = &pf.sections[0];
  if (s.empty() && pf.sections.size() >= 2 && !pf.sections[1].empty) {
    sec = &pf.sections[1];
  } else if (value.IsNull() || value.IsEmpty()) {
    return s;  // Null without a section of its own gives "", not blanks
  }
  if (sec->to_lower || sec->to_upper) {
    for (char& c : s) {
      auto u = static_cast<unsigned char>(c);
      c = static_cast<char>(sec->to_lower ? std::tolower(u) : std::toupper(u));
    }
  }
  // Characters, not bytes: a name with an accent fills one placeholder.
  std::vector<std::string_view> chars;
  for (size_t i = 0; i < s.size();) {
    size_t len = 1;
    auto lead = static_cast<unsigned char>(s[i]);
    if (lead >= 0xF0)
      len = 4;
    else if (lead >= 0xE0)
      len = 3;
    else if (lead >= 0xC0)
      len = 2;
    len = std::min(len, s.size() - i);
    chars.emplace_back(s.data() + i, len);
    i += len;
  }
  const int count = static_cast<int>(chars.size());
  const int places = sec->text_places;
  std::string out;
  if (places == 0) {
    for (const Token& t : sec->tokens) out += t.text;
    out += s;
    return out;
  }
  // Right to left by default: the text's last character meets the last
  // placeholder, and characters beyond the placeholders print at the first.
  // With '!' the first character meets the first placeholder and the overflow
  // prints at the last.
  int slot = 0;
  for (const Token& t : sec->tokens) {
    if (t.kind == Tok::kLiteral) {
      out += t.text;
      continue;
    }
    int k = slot++;
    int from, to;  // characters [from, to) go into this placeholder
    if (sec->left_to_right) {
      from = k;
      to = k == places - 1 ? count : k + 1;
    } else {
      int offset = count - places;  // index of the character for slot 0
      from = k == 0 ? 0 : k + offset;
      to = k + offset + 1;
    }
    if (from < 0) from = 0;
    if (to > count) to = count;
    if (from >= to) {
      if (t.kind == Tok::kTextAt) out += ' ';
      continue;
    }
    for (int c = from; c < to; ++c) out += chars[static_cast<size_t>(c)];
  }
  return out;
}

// ---- Named formats -------------------------------------------------------

enum class Named {
  kNone,
  kGeneralNumber,
  kCurrency,
  kFixed,
  kStandard,
  kPercent,
  kScientific,
  kYesNo,
  kTrueFalse,
  kOnOff,
  kGeneralDate,
  kLongDate,
  kMediumDate,
  kShortDate,
  kLongTime,
  kMediumTime,
  kShortTime,
};

Named FindNamed(std::string_view fmt) {
  struct Entry {
    std::string_view name;
    Named named;
  };
  static constexpr Entry kNames[] = {
      {"general number", Named::kGeneralNumber},
      {"currency", Named::kCurrency},
      {"fixed", Named::kFixed},
      {"standard", Named::kStandard},
      {"percent", Named::kPercent},
      {"scientific", Named::kScientific},
      {"yes/no", Named::kYesNo},
      {"true/false", Named::kTrueFalse},
      {"on/off", Named::kOnOff},
      {"general date", Named::kGeneralDate},
      {"long date", Named::kLongDate},
      {"medium date", Named::kMediumDate},
      {"short date", Named::kShortDate},
      {"long time", Named::kLongTime},
      {"medium time", Named::kMediumTime},
      {"short time", Named::kShortTime},
  };
  if (fmt.size() < 5 || fmt.size() > 14) return Named::kNone;
  for (const Entry& e : kNames) {
    if (e.name.size() != fmt.size()) continue;
    bool same = true;
    for (size_t i = 0; same && i < fmt.size(); ++i) {
      char c = fmt[i];
      same = (c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c) == e.name[i];
    }
    if (same) return e.named;
  }
  return Named::kNone;
}

// A money value's ten-thousandths `u` as "#,##0" with `digits` zeros after
// the point renders them: rounded half away from zero at the last place,
// the thousands grouped, no sign. Money is a whole number of
// ten-thousandths, so this is integer arithmetic, and gives what
// RenderNumber gives for the same section; a list formats a fee a line.
void AppendMoneyAmount(std::string& out, unsigned long long u, int digits, const LocaleInfo& loc) {
  static constexpr unsigned long long kPow10[] = {1, 10, 100, 1000, 10000};
  const unsigned long long unit = kPow10[4 - digits];
  unsigned long long q = u / unit;
  if ((u % unit) * 2 >= unit) ++q;
  unsigned long long whole = q / kPow10[digits];
  const unsigned long long frac = q % kPow10[digits];
  char reversed[24];
  int n = 0;
  do {
    reversed[n++] = char('0' + whole % 10);
    whole /= 10;
  } while (whole > 0);
  for (int i = n - 1; i >= 0; --i) {
    out += reversed[i];
    if (i > 0 && i % 3 == 0) out += loc.thousands_separator;
  }
  if (digits == 0) return;
  out += loc.decimal_separator;
  for (int k = digits - 1; k >= 0; --k) out += char('0' + frac / kPow10[k] % 10);
}

std::string FormatCurrency(const Variant& value, const LocaleInfo& loc) {
  const int digits =
      loc.currency_digits < 0 ? 0 : loc.currency_digits > 4 ? 4 : loc.currency_digits;
  std::string out;
  auto wrap = [&](bool negative, auto&& amount) {
    if (negative) out += loc.currency_negative_form == 0 ? '(' : '-';
    if (loc.currency_symbol_after) {
      amount();
      out += ' ';
      out += loc.currency_symbol;
    } else {
      out += loc.currency_symbol;
      amount();
    }
    if (negative && loc.currency_negative_form == 0) out += ')';
  };
  if (value.type() == VarType::Currency) {
    const long long raw = value.AsCurrency().raw();
    const unsigned long long u = raw < 0 ? 0ULL - static_cast<unsigned long long>(raw)
                                         : static_cast<unsigned long long>(raw);
    wrap(raw < 0, [&] { AppendMoneyAmount(out, u, digits, loc); });
    return out;
  }
  Decimal v;
  switch (NumberOf(value, v)) {
    case Got::kNull:
    case Got::kEmpty:
      return {};
    case Got::kUnchanged:
      return PlainText(value, loc);
    case Got::kValue:
      break;
  }
  static constexpr std::string_view kByDigits[] = {"#,##0", "#,##0.0", "#,##0.00", "#,##0.000",
                                                   "#,##0.0000"};
  ParsedFormat scratch;
  const Section& sec = CachedFormat(kByDigits[digits], scratch).sections[0];
  const bool negative = v.neg && v.n > 0;
  v.neg = false;
  wrap(negative, [&] { RenderNumber(sec, v, false, loc, out); });
  return out;
}

std::string FormatGeneralNumber(const Variant& value, const LocaleInfo& loc) {
  std::string out;
  switch (value.type()) {
    case VarType::Null:
    case VarType::Empty:
      return out;
    case VarType::Boolean:
      return value.AsBool() ? "-1" : "0";
    case VarType::Date:
      AppendWithDecimal(out, DoubleToString(value.AsDate().serial()), loc);
      return out;
    case VarType::String: {
      double d;
      if (!TryTextToDouble(value.AsString(), d)) return value.AsString();
      AppendWithDecimal(out, DoubleToString(d), loc);
      return out;
    }
    default:
      return PlainText(value, loc);
  }
}

std::string FormatFlag(const Variant& value, const LocaleInfo& loc, const char* yes,
                       const char* no) {
  Decimal v;
  switch (NumberOf(value, v)) {
    case Got::kNull:
    case Got::kEmpty:
      return {};
    case Got::kUnchanged:
      return PlainText(value, loc);
    case Got::kValue:
      break;
  }
  return v.n > 0 ? yes : no;
}

std::string FormatNamed(const Variant& value, Named named, const LocaleInfo& loc) {
  switch (named) {
    case Named::kGeneralNumber:
      return FormatGeneralNumber(value, loc);
    case Named::kCurrency:
      return FormatCurrency(value, loc);
    case Named::kFixed:
      return Format(value, "0.00", loc);
    case Named::kStandard:
      return Format(value, "#,##0.00", loc);
    case Named::kPercent:
      return Format(value, "0.00%", loc);
    case Named::kScientific:
      return Format(value, "0.00E+00", loc);
    case Named::kYesNo:
      return FormatFlag(value, loc, "Yes", "No");
    case Named::kTrueFalse:
      return FormatFlag(value, loc, "True", "False");
    case Named::kOnOff:
      return FormatFlag(value, loc, "On", "Off");
    case Named::kGeneralDate:
      return FormatDate("c", value, loc);
    case Named::kLongDate:
      return FormatDate(loc.long_date, value, loc);
    case Named::kMediumDate:
      return FormatDate("dd-mmm-yy", value, loc);
    case Named::kShortDate:
      return FormatDate(loc.short_date, value, loc);
    case Named::kLongTime:
      return FormatDate(loc.long_time, value, loc);
    case Named::kMediumTime:
      return FormatDate("hh:nn AMPM", value, loc);
    case Named::kShortTime:
      return FormatDate("hh:nn", value, loc);
    case Named::kNone:
      break;
  }
  return PlainText(value, loc);
}

}  // namespace

std::string Format(const Variant& value, std::string_view fmt) {
  return Format(value, fmt, CurrentLocale());
}

std::string Format(const Variant& value, std::string_view fmt, const LocaleInfo& locale) {
  if (fmt.empty()) return PlainText(value, locale);
  Named named = FindNamed(fmt);
  if (named != Named::kNone) return FormatNamed(value, named, locale);
  ParsedFormat scratch;
  const ParsedFormat& pf = CachedFormat(fmt, scratch);
  switch (pf.sections[0].kind) {
    case SectionKind::kDate:
      return FormatDate(pf.sections[0], value, locale);
    case SectionKind::kText:
      return FormatText(pf, value, locale);
    case SectionKind::kNumber:
      break;
  }
  return FormatNumber(pf, value, locale);
}

DateFormatter::DateFormatter(std::string_view fmt, const LocaleInfo& locale) : fmt_(fmt), locale_(&locale) {
  // The short path takes what Format would send to FormatDate: a format
  // that is no named one and whose first section is a date section.
  if (fmt_.empty() || FindNamed(fmt_) != Named::kNone) return;
  ParsedFormat parsed = format_detail::ParseFormat(fmt_);
  if (parsed.sections[0].kind == SectionKind::kDate)
    date_ = std::make_shared<const Section>(std::move(parsed.sections[0]));
}

void DateFormatter::Append(const Variant& value, std::string& out) const {
  if (date_) {
    // As FormatDate reads these three kinds: a date is rendered as it is,
    // Null and Empty print nothing. Every other kind (a serial, a text
    // that reads as a date) takes the whole way.
    switch (value.type()) {
      case VarType::Date: {
        const DateTime date = value.AsDate();
        const auto bits = std::bit_cast<uint64_t>(date.serial());
        if (has_last_ && bits == last_date_) {
          out += last_text_;
          return;
        }
        const size_t start = out.size();
        RenderDate(*date_, date, *locale_, out);
        last_text_.assign(out, start);
        last_date_ = bits;
        has_last_ = true;
        return;
      }
      case VarType::Null:
      case VarType::Empty:
        return;
      default:
        break;
    }
  }
  out += Format(value, fmt_, *locale_);
}

std::string DateToLocaleText(DateTime d, const LocaleInfo& locale) {
  std::string out;
  AppendGeneralDate(d, locale, out);
  return out;
}

}  // namespace orv
