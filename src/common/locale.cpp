#include "common/locale.h"

#include <cstdio>

namespace orv {

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
  };
  return info;
}

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
  };
  return info;
}

const LocaleInfo& CurrentLocale() { return EnglishCanada(); }

std::string DateToLocaleText(DateTime d) {
  // Short date, then the long time when the value has a time of day; a value
  // with a zero date part and a time prints the time alone.
  char buf[64];
  std::string date;
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d", d.Year(), d.Month(), d.Day());
  date = buf;
  int h = d.Hour(), n = d.Minute(), s = d.Second();
  bool has_time = h || n || s;
  bool has_date = d.DatePart().serial() != 0;
  std::string time;
  if (has_time) {
    int h12 = h % 12 == 0 ? 12 : h % 12;
    std::snprintf(buf, sizeof buf, "%d:%02d:%02d %s", h12, n, s,
                  h < 12 ? CurrentLocale().am.c_str() : CurrentLocale().pm.c_str());
    time = buf;
  }
  if (!has_date && has_time) return time;
  return has_time ? date + " " + time : date;
}

}  // namespace orv
