// Appointment units a provider has free: the one reckoning of the booking
// diagnostics and of the practice analysis, so both print the same count
// for the same provider and day.
#pragma once

#include <cstdint>
#include <string>

#include "common/datetime.h"
#include "platform/db/recordset.h"

namespace orv {
class clsReports;
class clsCommonFunctions;
namespace appointments {

// The statements that read a day's time off and extra hours. They return
// the same rows; the booking diagnostics word last year's differently and
// keep their texts.
enum class DayStatements { ThisYear, LastYear };

// Counts available units day by day for one office. Construct once per
// report run: it reads `UnitMinutes` of the office (a ReportError naming the
// office when there is no such office).
class Availability {
 public:
  Availability(clsReports& reports, int32_t office_id);

  // `units` with the units `provider` (its Employees row in `emp`, its key
  // as text) has free on `day` added:
  //  1. a whole day off counts nothing, whatever the working hours;
  //  2. the weekday's hours less its lunch, from `<Weekday>From`,
  //     `<Weekday>to`, `LunchFrom<Weekday>`, `Lunchto<Weekday>`;
  //  3. less every part of the day off (rows with both times);
  //  4. plus every special day's span.
  // Each step adds span / UnitMinutes to a 32-bit running sum rounded half
  // to even (AddUnits). An office whose unit is 0 minutes cannot count
  // units: a ReportError (division by zero) that says so.
  int32_t AddDay(const db::Recordset& emp, const std::string& provider, const DateTime& day,
                 DayStatements statements, int32_t units);

  // `AddDay` over every day from `first` to `last`, both included, and the
  // same days one year back (calendar subtraction, Feb 29 to Feb 28) into
  // `last_year`.
  void AddPeriod(const db::Recordset& emp, const std::string& provider, const DateTime& first,
                 const DateTime& last, DayStatements last_year_statements, int32_t& this_year,
                 int32_t& last_year);

  int unit_minutes() const { return unit_minutes_; }

 private:
  int32_t Add(int32_t units, double span) const;

  clsReports& r_;
  clsCommonFunctions& cf_;
  int32_t office_id_;
  int unit_minutes_ = 0;
};

}  // namespace appointments
}  // namespace orv
