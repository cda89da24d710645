// The floating date: days since 1899-12-30 in the whole part, the time of day
// in the fraction, as the host language keeps its Date type.
//
// Dates before the base day are negative with a positive fraction taken as the
// time, as in the host language: -1.25 is 1899-12-29 06:00.
#pragma once

#include <compare>
#include <optional>
#include <string>

namespace orv {

// The calendar and clock fields of a date, all at once.
struct DateParts {
  int year, month, day, hour, minute, second;
};

class DateTime {
 public:
  constexpr DateTime() = default;
  constexpr explicit DateTime(double serial) : serial_(serial) {}

  // Builds a date from its parts. Months and days out of range roll over as
  // the host language's DateSerial does (month 13 is January of next year,
  // day 0 the last day of the month before).
  static DateTime FromParts(int year, int month, int day, int hour = 0, int minute = 0,
                            int second = 0);

  constexpr double serial() const { return serial_; }

  int Year() const;
  int Month() const;
  int Day() const;
  // 1 = Sunday ... 7 = Saturday (the host language's default).
  int Weekday() const;
  int Hour() const;
  int Minute() const;
  int Second() const;
  // Day of the year, 1..366.
  int DayOfYear() const;
  // Year, month, day, hour, minute and second in one pass.
  DateParts Parts() const;

  // The date without its time, and the time without its date.
  DateTime DatePart() const;
  DateTime TimePart() const;

  // "yyyy-mm-dd hh:nn:ss", the form dates are stored in.
  std::string ToIso() const;
  // "yyyy-mm-dd".
  std::string ToIsoDate() const;

  friend constexpr auto operator<=>(DateTime a, DateTime b) = default;
  friend constexpr bool operator==(DateTime a, DateTime b) = default;

 private:
  double serial_ = 0;
};

// True when year/month/day name a real calendar day.
bool IsValidDate(int year, int month, int day);
int DaysInMonth(int year, int month);

// DateAdd(interval, n, date) for "yyyy", "q", "m", "y", "d", "w", "ww", "h",
// "n", "s". Adding months keeps the day, clipped to the end of the month
// (Jan 31 + 1 month = Feb 28/29). Throws ReportError for an unknown interval.
DateTime DateAdd(const std::string& interval, double n, DateTime date);

// DateDiff(interval, d1, d2): the number of interval boundaries crossed from
// d1 to d2 ("yyyy" counts calendar-year boundaries: Dec 31 to Jan 1 is 1).
long long DateDiff(const std::string& interval, DateTime d1, DateTime d2);

// Parses date and time text as CDate does: "yyyy-mm-dd", "yyyy/mm/dd",
// "mm/dd/yyyy", "mm-dd-yyyy", "Mar/1/2001", "Mar 1, 2001", "1 Mar 2001",
// "01-Mar-01", "Thursday March 1, 2001", each with an optional time
// "h:nn[:ss[.fff]]" and an optional AM/PM, a time alone ("9:05 AM"), blanks
// anywhere between the parts. Numeric dates read month first (Canadian
// English), day first only when the month would be above 12; two-digit years
// 00-29 are 20xx. The full rules are at the top of date_parse.cpp. Returns
// nullopt when the text is no date.
std::optional<DateTime> ParseDateText(const std::string& text);

// The one clock every report, test and benchmark reads "today" and "now"
// from. By default it follows the system clock; a host fixes it with
// SetFixed (the --today option), and tests fix it to compare output.
class Clock {
 public:
  static DateTime Now();
  static DateTime Today();  // Now() without its time
  static void SetFixed(DateTime now);
  static void UseSystem();
  static bool IsFixed();
};

}  // namespace orv
