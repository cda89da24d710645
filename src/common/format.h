// Format(value, fmt): the host language's standard format function, which the
// reports use for every printed number and date.
//
// What a format string may hold:
// - Up to four sections separated by ';': positive; negative; zero; Null. An
//   empty or missing section falls back to the first. A negative value shown
//   by the first section gets a leading '-'; one shown by its own section does
//   not ("#,##0.00;(#,##0.00)" prints -5 as "(5.00)"). The section is chosen
//   by the value before rounding, so -0.001 in "0.00" prints "-0.00", as the
//   host language does.
// - Numbers: '0' (digit or 0), '#' (digit or nothing), '.' (the decimal point,
//   printed even with no digit after it: 0 in "#.##" is "."), ',' between
//   digit placeholders (group by thousands), ',' right before the decimal
//   point or at the end of the integer part (divide by 1000 each), '%'
//   (multiply by 100), "E+0" / "E-0" (scientific). Digits that do not fit the
//   integer placeholders all print at the first one; literals among the
//   placeholders print where they stand ("(###) ###-####").
// - Rounding: half away from zero on the decimal digits of the value. A float
//   is first written with 15 significant digits, as the host language writes
//   it, so 2.675 prints "2.68" in "0.00" although the stored binary value is a
//   hair below 2.675; money and whole numbers are exact (0.125 -> "0.13").
// - Dates and times (letters in any case): d dd ddd dddd ddddd (short date)
//   dddddd (long date), w ww, m mm mmm mmmm ("MM" is the same as "mm"), q, y
//   (day of the year), yy yyyy, h hh, n nn, s ss, ttttt (long time), c
//   (general date), AM/PM am/pm A/P a/p (12-hour clock in that case) and AMPM
//   (the locale's AM and PM texts). "m"/"mm" right after an hour token or
//   right before a seconds token means minutes. '/' and ':' print as they are.
// - Text: '@' (character or blank), '&' (character or nothing), '<' (lower
//   case), '>' (upper case), '!' (fill from the left). A second text section
//   serves Null and "".
// - Literals: "\x" prints x; "..." prints its contents; $ + - ( ) blanks and
//   any other character that is no token print as they are.
// - Named formats (any case): "General Number", "Currency", "Fixed",
//   "Standard", "Percent", "Scientific", "Yes/No", "True/False", "On/Off",
//   "General Date", "Long Date", "Medium Date", "Short Date", "Long Time",
//   "Medium Time", "Short Time".
//
// Values: text that reads as a number formats as that number, text that reads
// as a date formats as that date under a date format; other text comes back
// unchanged under a number or date format. Booleans are -1 and 0 as numbers.
// A date under a number format is its serial number. Null gives "" (or the
// fourth section), Empty gives "". An empty fmt gives the value's plain text
// (CStr; "" for Null).
//
// Errors: a date format over a number beyond the year 9999 raises
// OverflowError. Parsed format strings are cached per thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "common/locale.h"
#include "common/variant.h"

namespace orv {

// Formats with the current locale (Canadian English).
std::string Format(const Variant& value, std::string_view fmt = {});

// Formats with the given locale: its day and month names, AM/PM texts, decimal
// and thousands separators, currency symbol and the named formats it defines
// ("Long Date", "Short Date", "Long Time"). Used by the French forms.
std::string Format(const Variant& value, std::string_view fmt, const LocaleInfo& locale);

namespace format_detail {
struct Section;
}

// One format string read once, for a loop that prints thousands of values
// with it (a birth date on every line of a patient list). Append adds to
// `out` exactly the text Format(value, fmt, locale) returns, for every
// value; a date, Null or Empty under a format of one date section is
// rendered straight into `out`, without looking the format string up again
// or building a text of its own; the same date as the one before takes the
// text it had. `locale` must outlive the formatter, and a formatter serves
// one thread.
class DateFormatter {
 public:
  explicit DateFormatter(std::string_view fmt, const LocaleInfo& locale = CurrentLocale());
  void Append(const Variant& value, std::string& out) const;

 private:
  std::string fmt_;
  const LocaleInfo* locale_;
  // The date section when the short path serves; null when every value
  // goes through Format (a named format, a number or text format).
  std::shared_ptr<const format_detail::Section> date_;
  // The last date rendered on the short path (its serial's bits) and its
  // text: the lines of one invoice, the payments of one day, print one
  // date line after line.
  mutable uint64_t last_date_ = 0;
  mutable bool has_last_ = false;
  mutable std::string last_text_;
};

}  // namespace orv
