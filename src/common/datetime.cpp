#include "common/datetime.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <mutex>

#include "common/errors.h"

namespace orv {

namespace {

// Days from 1970-01-01 for a proleptic Gregorian date (H. Hinnant's
// days_from_civil), and the inverse.
long long DaysFromCivil(long long y, unsigned m, unsigned d) {
  y -= m <= 2;
  const long long era = (y >= 0 ? y : y - 399) / 400;
  const unsigned yoe = static_cast<unsigned>(y - era * 400);
  const unsigned doy = (153 * (m + (m > 2 ? -3 : 9)) + 2) / 5 + d - 1;
  const unsigned doe = yoe * 365 + yoe / 4 - yoe / 100 + doy;
  return era * 146097 + static_cast<long long>(doe) - 719468;
}

void CivilFromDays(long long z, int& y, int& m, int& d) {
  z += 719468;
  const long long era = (z >= 0 ? z : z - 146096) / 146097;
  const unsigned doe = static_cast<unsigned>(z - era * 146097);
  const unsigned yoe = (doe - doe / 1460 + doe / 36524 - doe / 146096) / 365;
  const long long yy = static_cast<long long>(yoe) + era * 400;
  const unsigned doy = doe - (365 * yoe + yoe / 4 - yoe / 100);
  const unsigned mp = (5 * doy + 2) / 153;
  d = static_cast<int>(doy - (153 * mp + 2) / 5 + 1);
  m = static_cast<int>(mp < 10 ? mp + 3 : mp - 9);
  y = static_cast<int>(yy + (m <= 2));
}

// 1899-12-30 is day 0 of the floating date.
constexpr long long kEpochOffset = 25569;  // days from 1899-12-30 to 1970-01-01

// Splits a serial into whole day and seconds of the day. For negative serials
// the fraction is still the time, counted forward from the day's midnight.
void Split(double serial, long long& day, long long& secs) {
  double whole = std::trunc(serial);
  double frac = std::fabs(serial - whole);
  secs = std::llround(frac * 86400.0);
  day = static_cast<long long>(whole);
  if (secs >= 86400) {
    // Rounded up to the next midnight: the next calendar day, which is one
    // day number up on both sides of the base day (-1.9999999 is 1899-12-29
    // at 23:59:59.99, so it rounds to 1899-12-30, day 0).
    secs -= 86400;
    day += 1;
  }
}

double Join(long long day, long long secs) {
  double frac = static_cast<double>(secs) / 86400.0;
  if (day < 0) return static_cast<double>(day) - frac;
  return static_cast<double>(day) + frac;
}

void Civil(double serial, int& y, int& m, int& d) {
  long long day, secs;
  Split(serial, day, secs);
  CivilFromDays(day - kEpochOffset, y, m, d);
}

long long SecondsOfDay(double serial) {
  long long day, secs;
  Split(serial, day, secs);
  return secs;
}

std::mutex g_clock_mutex;
bool g_clock_fixed = false;
DateTime g_clock_value;

}  // namespace

bool IsValidDate(int year, int month, int day) {
  return month >= 1 && month <= 12 && day >= 1 && day <= DaysInMonth(year, month) && year >= 100 &&
         year <= 9999;
}

int DaysInMonth(int year, int month) {
  static const int kDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  if (month == 2) {
    bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    return leap ? 29 : 28;
  }
  return kDays[(month - 1 + 1200) % 12];
}

DateTime DateTime::FromParts(int year, int month, int day, int hour, int minute, int second) {
  // Roll months over into years first, then let days run freely.
  long long m0 = static_cast<long long>(month) - 1;
  long long y = year + (m0 >= 0 ? m0 / 12 : (m0 - 11) / 12);
  long long m = ((m0 % 12) + 12) % 12 + 1;
  long long days = DaysFromCivil(y, static_cast<unsigned>(m), 1) + (day - 1) + kEpochOffset;
  long long secs =
      static_cast<long long>(hour) * 3600 + static_cast<long long>(minute) * 60 + second;
  days += secs >= 0 ? secs / 86400 : -((-secs + 86399) / 86400);
  secs = ((secs % 86400) + 86400) % 86400;
  return DateTime(Join(days, secs));
}

int DateTime::Year() const {
  int y, m, d;
  Civil(serial_, y, m, d);
  return y;
}
int DateTime::Month() const {
  int y, m, d;
  Civil(serial_, y, m, d);
  return m;
}
int DateTime::Day() const {
  int y, m, d;
  Civil(serial_, y, m, d);
  return d;
}
int DateTime::Weekday() const {
  long long day, secs;
  Split(serial_, day, secs);
  // 1899-12-30 was a Saturday (7).
  long long w = ((day % 7) + 7) % 7;  // 0 = Saturday
  return static_cast<int>((w + 6) % 7) + 1;
}
int DateTime::Hour() const {
  return static_cast<int>(SecondsOfDay(serial_) / 3600);
}
int DateTime::Minute() const {
  return static_cast<int>(SecondsOfDay(serial_) / 60 % 60);
}
int DateTime::Second() const {
  return static_cast<int>(SecondsOfDay(serial_) % 60);
}
int DateTime::DayOfYear() const {
  int y = Year();
  return static_cast<int>(DatePart().serial() - FromParts(y, 1, 1).serial()) + 1;
}

DateParts DateTime::Parts() const {
  long long day, secs;
  Split(serial_, day, secs);
  DateParts p{};
  CivilFromDays(day - kEpochOffset, p.year, p.month, p.day);
  p.hour = static_cast<int>(secs / 3600);
  p.minute = static_cast<int>(secs / 60 % 60);
  p.second = static_cast<int>(secs % 60);
  return p;
}

DateTime DateTime::DatePart() const {
  long long day, secs;
  Split(serial_, day, secs);
  return DateTime(static_cast<double>(day));
}

DateTime DateTime::TimePart() const {
  return DateTime(SecondsOfDay(serial_) / 86400.0);
}

std::string DateTime::ToIso() const {
  int y, m, d;
  Civil(serial_, y, m, d);
  long long s = SecondsOfDay(serial_);
  char buf[64];
  std::snprintf(buf, sizeof buf, "%04d-%02d-%02d %02lld:%02lld:%02lld", y, m, d, s / 3600,
                s / 60 % 60, s % 60);
  return buf;
}

std::string DateTime::ToIsoDate() const {
  return ToIso().substr(0, 10);
}

DateTime DateAdd(const std::string& interval, double n, DateTime date) {
  std::string iv;
  for (char c : interval) iv += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  long long k = static_cast<long long>(std::trunc(n));
  auto add_months = [&](long long months) {
    int y = date.Year(), m = date.Month(), d = date.Day();
    long long total = static_cast<long long>(y) * 12 + (m - 1) + months;
    int ny = static_cast<int>(total >= 0 ? total / 12 : (total - 11) / 12);
    int nm = static_cast<int>(total - static_cast<long long>(ny) * 12) + 1;
    int nd = std::min(d, DaysInMonth(ny, nm));
    // Rebuilt from its parts so that the time stays the time of day when the
    // result lands on the other side of the base day.
    return DateTime::FromParts(ny, nm, nd, date.Hour(), date.Minute(), date.Second());
  };
  auto add_seconds = [&](long long secs) {
    long long day, s;
    Split(date.serial(), day, s);
    long long total = s + secs;
    long long dd = total >= 0 ? total / 86400 : -((-total + 86399) / 86400);
    total -= dd * 86400;
    return DateTime(Join(day + dd, total));
  };
  if (iv == "yyyy") return add_months(k * 12);
  if (iv == "q") return add_months(k * 3);
  if (iv == "m") return add_months(k);
  if (iv == "d" || iv == "y" || iv == "w") return add_seconds(k * 86400);
  if (iv == "ww") return add_seconds(k * 7 * 86400);
  if (iv == "h") return add_seconds(k * 3600);
  if (iv == "n") return add_seconds(k * 60);
  if (iv == "s") return add_seconds(k);
  throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
}

long long DateDiff(const std::string& interval, DateTime d1, DateTime d2) {
  std::string iv;
  for (char c : interval) iv += static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  long long day1, s1, day2, s2;
  Split(d1.serial(), day1, s1);
  Split(d2.serial(), day2, s2);
  if (iv == "yyyy") return d2.Year() - d1.Year();
  if (iv == "q") {
    return (static_cast<long long>(d2.Year()) * 4 + (d2.Month() - 1) / 3) -
           (static_cast<long long>(d1.Year()) * 4 + (d1.Month() - 1) / 3);
  }
  if (iv == "m") {
    return (static_cast<long long>(d2.Year()) * 12 + d2.Month()) -
           (static_cast<long long>(d1.Year()) * 12 + d1.Month());
  }
  if (iv == "d" || iv == "y") return day2 - day1;
  if (iv == "w") return (day2 - day1) / 7;
  if (iv == "ww") {
    // Sundays crossed: weeks counted by their first day.
    auto week = [](long long day) {
      long long w = day + 6;  // day 1 (1899-12-31) is a Sunday
      return w >= 0 ? w / 7 : (w - 6) / 7;
    };
    return week(day2) - week(day1);
  }
  // Seconds on one line through the base day; boundaries are counted with
  // floor division so that times before 1899-12-30 count like those after.
  long long t1 = day1 * 86400 + s1, t2 = day2 * 86400 + s2;
  auto floor_div = [](long long a, long long b) { return a >= 0 ? a / b : -((-a + b - 1) / b); };
  if (iv == "h") return floor_div(t2, 3600) - floor_div(t1, 3600);
  if (iv == "n") return floor_div(t2, 60) - floor_div(t1, 60);
  if (iv == "s") return t2 - t1;
  throw ReportError(kErrInvalidProcedureCall, "Invalid procedure call or argument");
}

DateTime Clock::Now() {
  std::lock_guard<std::mutex> lock(g_clock_mutex);
  if (g_clock_fixed) return g_clock_value;
  std::time_t t = std::time(nullptr);
  std::tm local{};
  localtime_r(&t, &local);
  return DateTime::FromParts(local.tm_year + 1900, local.tm_mon + 1, local.tm_mday, local.tm_hour,
                             local.tm_min, local.tm_sec);
}

DateTime Clock::Today() {
  return Now().DatePart();
}

void Clock::SetFixed(DateTime now) {
  std::lock_guard<std::mutex> lock(g_clock_mutex);
  g_clock_fixed = true;
  g_clock_value = now;
}

void Clock::UseSystem() {
  std::lock_guard<std::mutex> lock(g_clock_mutex);
  g_clock_fixed = false;
}

bool Clock::IsFixed() {
  std::lock_guard<std::mutex> lock(g_clock_mutex);
  return g_clock_fixed;
}

}  // namespace orv
