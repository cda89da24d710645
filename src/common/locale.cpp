#include "common/locale.h"

namespace orv {

// Canadian English as the reports were designed for it.
//
// Short date (what CStr of a date and the "Short Date" format give):
// "yyyy-mm-dd". It is the Canadian English default of current systems, it
// cannot be misread day-first or month-first, it sorts as text, and it reads
// back through ParseDateText and CDate unchanged. The reports never print it
// on purpose: every printed date goes through an explicit format string
// ("mmm/dd/yyyy" and the like); CStr of a date only shows where a report
// concatenates a raw value.
//
// Long date "mmmm d, yyyy" ("March 1, 2001") and long time "h:nn:ss AMPM"
// ("9:05:00 AM"), with "AM" and "PM": TimeToInt reads the last two characters
// of "Medium Time" back as "PM", so they must stay in capitals.
//
// Negative money is "-$5.00" (form 1); the reports that want parentheses say
// so in their own format strings.
const LocaleInfo& EnglishCanada() {
  static const LocaleInfo info{
      "$",
      '.',
      ',',
      2,
      1,
      "AM",
      "PM",
      "yyyy-mm-dd",
      "mmmm d, yyyy",
      "h:nn:ss AMPM",
      {"January", "February", "March", "April", "May", "June", "July", "August", "September",
       "October", "November", "December"},
      {"Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"},
      {"Sunday", "Monday", "Tuesday", "Wednesday", "Thursday", "Friday", "Saturday"},
      {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"},
      false,
  };
  return info;
}

// Canadian French: the names of the French claim forms and treatment plans,
// 24-hour long time, "1 234,50 $" money.
const LocaleInfo& FrenchCanada() {
  static const LocaleInfo info{
      "$",
      ',',
      ' ',
      2,
      1,
      "AM",
      "PM",
      "yyyy-mm-dd",
      "d mmmm yyyy",
      "HH:nn:ss",
      {"janvier", "février", "mars", "avril", "mai", "juin", "juillet", "août", "septembre",
       "octobre", "novembre", "décembre"},
      {"janv.", "févr.", "mars", "avr.", "mai", "juin", "juil.", "août", "sept.", "oct.", "nov.",
       "déc."},
      {"dimanche", "lundi", "mardi", "mercredi", "jeudi", "vendredi", "samedi"},
      {"dim.", "lun.", "mar.", "mer.", "jeu.", "ven.", "sam."},
      true,
  };
  return info;
}

const LocaleInfo& CurrentLocale() {
  return EnglishCanada();
}

std::string DateToLocaleText(DateTime d) {
  return DateToLocaleText(d, CurrentLocale());
}

// DateToLocaleText(d, locale) lives in format.cpp beside the date renderer.

}  // namespace orv
