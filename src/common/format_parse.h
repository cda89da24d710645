// Internal to Format: a format string split into sections and tokens, and the
// per-thread cache of parsed strings. The rules are listed in format.h.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace orv::format_detail {

enum class Tok : uint8_t {
  kLiteral,
  // Numbers.
  kDigitZero,  // '0' before the decimal point or after it
  kDigitHash,  // '#'
  kDecimal,    // the first '.'
  kPercent,    // '%'
  kExponent,   // "E+", "E-", "e+", "e-": `text` holds the letter and sign
  kExpZero,    // '0' after the exponent
  kExpHash,    // '#' after the exponent
  kComma,      // ',' of the integer part; resolved away by the parser
  // Dates and times.
  kDay,
  kDay2,
  kDayAbbrev,
  kDayName,
  kShortDate,
  kLongDate,
  kWeekday,
  kWeekOfYear,
  kMonth,
  kMonth2,
  kMonthAbbrev,
  kMonthName,
  kQuarter,
  kDayOfYear,
  kYear2,
  kYear4,
  kHour,
  kHour2,
  kMinute,
  kMinute2,
  kSecond,
  kSecond2,
  kAmPmUpper,
  kAmPmLower,
  kAPUpper,
  kAPLower,
  kAmPmLocale,
  kLongTime,
  kGeneralDate,
  // Text.
  kTextAt,   // '@'
  kTextAmp,  // '&'
};

struct Token {
  Tok kind;
  bool in_fraction = false;  // digit placeholders: after the decimal point
  std::string text;          // kLiteral, kExponent
};

enum class SectionKind : uint8_t { kNumber, kDate, kText };

struct Section {
  SectionKind kind = SectionKind::kNumber;
  bool empty = true;  // nothing between its semicolons
  std::vector<Token> tokens;

  // Numbers.
  int int_places = 0;      // digit placeholders before the decimal point
  int min_int_digits = 0;  // placeholders from the first '0' to the decimal point
  int frac_places = 0;     // digit placeholders after the decimal point
  int shift = 0;           // decimal shift: +2 per '%', -3 per scaling ','
  bool grouping = false;   // thousands separators between the integer digits
  bool scientific = false;
  int exp_min_digits = 0;  // '0' placeholders of the exponent

  // Dates: an AM/PM token switches the hours to the 12-hour clock.
  bool twelve_hour = false;

  // Text.
  bool to_lower = false, to_upper = false, left_to_right = false;
  int text_places = 0;
};

struct ParsedFormat {
  std::vector<Section> sections;  // one to four
};

ParsedFormat ParseFormat(std::string_view fmt);

// The parsed form of `fmt`, from this thread's cache. Entries are never
// dropped, so the reference stays valid; past a fixed number of distinct
// strings the parse goes into `scratch` instead of the cache.
const ParsedFormat& CachedFormat(std::string_view fmt, ParsedFormat& scratch);

}  // namespace orv::format_detail
