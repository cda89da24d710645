#include "appointments/availability.h"

#include <cmath>
#include <limits>

#include "appointments/appointment_text.h"
#include "common/common_functions.h"
#include "common/errors.h"
#include "common/format.h"
#include "frame/reports.h"

namespace orv::appointments {

int32_t AddUnits(int32_t sum, double span, int unit_minutes) {
  // An office without a unit length cannot count units: that is a fault,
  // not a day with none.
  if (unit_minutes == 0) throw DivisionByZeroError();
  // The sum is a 32-bit integer: each step's result is rounded to the
  // nearest whole unit, ties to even, as it is stored (4.5 + 4.5 makes 4 + 4).
  const double v = std::nearbyint(static_cast<double>(sum) + span / unit_minutes);
  if (v > std::numeric_limits<int32_t>::max() || v < std::numeric_limits<int32_t>::min())
    throw OverflowError();
  return static_cast<int32_t>(v);
}

namespace {

std::string Day(const DateTime& d) {
  return Format(Variant(d), "yyyy-mm-dd");
}

}  // namespace

Availability::Availability(clsReports& reports, int32_t office_id)
    : r_(reports), cf_(reports.Common()), office_id_(office_id) {
  db::Recordset office =
      r_.Open("Select UnitMinutes from OfficeInformation where ID = " + std::to_string(office_id));
  // Without the office there is no unit to count in: say which office,
  // rather than fail later on a division.
  if (office.Eof())
    throw ReportError(0, "The office " + std::to_string(office_id) + " is not on file");
  unit_minutes_ = static_cast<int>(cf_.ReturnVal(office["UnitMinutes"].Value()));
}

int32_t Availability::Add(int32_t units, double span) const {
  // The fault is raised where a unit is first needed, as a division would:
  // a practice with no working hours on file still prints its tables.
  if (unit_minutes_ == 0) {
    throw ReportError(kErrDivisionByZero,
                      "Division by zero: the appointment unit of office " +
                          std::to_string(office_id_) +
                          " (UnitMinutes) is 0 minutes, so free units cannot be counted. Set the "
                          "unit length in the office's information.");
  }
  return AddUnits(units, span, unit_minutes_);
}

int32_t Availability::AddDay(const db::Recordset& emp, const std::string& provider,
                             const DateTime& day, DayStatements statements, int32_t units) {
  const bool last_year = statements == DayStatements::LastYear;
  const std::string d = Day(day);
  // A whole day off counts nothing, whatever the working hours.
  db::Recordset off = r_.Open(
      last_year ? "Select * from EmployeeHolidays where FromTime is null and ToTime is null and "
                  "FromDate <= '" +
                      d + "' AND ToDate >= '" + d + "' AND EmployeeID = " + provider
                : "SELECT * FROM EmployeeHolidays WHERE (FromDate <= '" + d +
                      "') AND (ToDate >= '" + d + "') AND (EmployeeID = " + provider +
                      ") AND (FromTime IS NULL) AND (ToTime IS NULL)",
      db::adOpenForwardOnly);
  if (!off.Eof()) return units;
  const std::string wd = Format(Variant(day), "dddd");
  units = Add(units, Minutes(cf_, emp[wd + "to"].Value()) - Minutes(cf_, emp[wd + "From"].Value()));
  // Lunch is read from the columns the schedule keeps, LunchFrom<Weekday>
  // and Lunchto<Weekday>, the ones the day sheet shades: an office keeps
  // one lunch, and every report must count the same one.
  units = Add(units, -(Minutes(cf_, emp["Lunchto" + wd].Value()) -
                       Minutes(cf_, emp["LunchFrom" + wd].Value())));
  // Partly free days subtract their own span. The whole days off were
  // counted above, so only rows with both times take part here (a row
  // without times has no span), for this year and last alike.
  db::Recordset part = r_.Open("Select * from EmployeeHolidays where FromDate <= '" + d +
                                   "' and ToDate >='" + d + "' and  EmployeeID = " + provider,
                               db::adOpenForwardOnly);
  for (; !part.Eof(); part.MoveNext()) {
    if (!part["FromTime"].Value().IsNull() && !part["ToTime"].Value().IsNull())
      units = Add(units,
                  -(Minutes(cf_, part["ToTime"].Value()) - Minutes(cf_, part["FromTime"].Value())));
  }
  db::Recordset extra =
      r_.Open(last_year ? "Select * from EmployeeSpecialDays where EmployeeID = " + provider +
                              " and StartDate <= '" + d + "' and EndDate >='" + d + "'"
                        : "Select * from EmployeeSpecialDays where StartDate <= '" + d +
                              "' and EndDate >='" + d + "' and EmployeeID = " + provider,
              db::adOpenForwardOnly);
  for (; !extra.Eof(); extra.MoveNext())
    units = Add(units,
                Minutes(cf_, extra["EndTime"].Value()) - Minutes(cf_, extra["StartTime"].Value()));
  return units;
}

void Availability::AddPeriod(const db::Recordset& emp, const std::string& provider,
                             const DateTime& first, const DateTime& last,
                             DayStatements last_year_statements, int32_t& this_year,
                             int32_t& last_year) {
  // Last year is each day moved back by calendar subtraction: Feb 29 is
  // counted as Feb 28, so a period over Feb 29 counts last year's Feb 28
  // twice and both columns cover as many days.
  for (DateTime d = first; d <= last; d = DateAdd("d", 1, d)) {
    this_year = AddDay(emp, provider, d, DayStatements::ThisYear, this_year);
    last_year = AddDay(emp, provider, DateAdd("yyyy", -1, d), last_year_statements, last_year);
  }
}

}  // namespace orv::appointments
