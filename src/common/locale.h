// The locale the reports format and parse by: Canadian English, with the
// French day and month names beside it for the French reports. Everything
// that depends on the locale reads it from this one table.
#pragma once

#include <array>
#include <string>

#include "common/datetime.h"

namespace orv {

struct LocaleInfo {
  std::string currency_symbol;  // "$"
  char decimal_separator;       // '.'
  char thousands_separator;     // ','
  int currency_digits;          // 2
  // Negative money: 0 = "($1.00)", 1 = "-$1.00".
  int currency_negative_form;
  std::string am, pm;      // "AM", "PM"
  std::string short_date;  // format of CStr(date)
  std::string long_date;   // the "Long Date" named format
  std::string long_time;   // the "Long Time" named format
  std::array<std::string, 12> month_names, month_abbrev;
  std::array<std::string, 7> day_names, day_abbrev;  // Sunday first
  // Money puts the symbol after the amount with a blank ("1 234,50 $")
  // instead of before it ("$1,234.50").
  bool currency_symbol_after = false;
};

// Canadian English (the default) and French day/month names.
const LocaleInfo& EnglishCanada();
const LocaleInfo& FrenchCanada();
// The locale formatting and parsing use; English unless a caller selects
// French names explicitly through the formatter.
const LocaleInfo& CurrentLocale();

// CStr of a date (the "General Date" form): the short date, then a blank and
// the long time when the value has a time of day. A value whose date part is
// 0 (1899-12-30) prints the time alone, so midnight of that day prints
// "12:00:00 AM". In Canadian English that reads "2001-03-01" and
// "2001-03-01 9:05:00 AM".
std::string DateToLocaleText(DateTime d);
std::string DateToLocaleText(DateTime d, const LocaleInfo& locale);

}  // namespace orv
