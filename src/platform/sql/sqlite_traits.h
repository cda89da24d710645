// What differs between SQL Server and SQLite, for the SQLite printer.
#pragma once

#include <string>
#include <utility>

namespace orv::sql {

// Everything that differs between SQL Server and SQLite for the printer,
// in one place. The functions named here are installed on every connection
// by RegisterSqliteFunctions (sqlite_functions.cpp).
struct SqliteTraits {
  // SQL Server's default collation: case-insensitive, trailing blanks
  // ignored. Applied to every text comparison, GROUP BY, DISTINCT, ORDER BY,
  // MIN and MAX over text.
  static constexpr const char* kTextCollation = "orv_ci";
  // GETDATE() reads the application clock when the statement runs, so a
  // cached translation stays right when the clock changes.
  static constexpr const char* kNow = "orv_getdate()";
  // Text to 'YYYY-MM-DD HH:MM:SS' (or NULL) at run time; literals are
  // normalised when translating instead.
  static constexpr const char* kToDate = "orv_date";
  static constexpr const char* kAddDays = "orv_adddays";
  // DATEPART, also for YEAR(), MONTH() and DAY().
  static constexpr const char* kDatePart = "orv_datepart";
  // CAST(x AS date): the day without its time.
  static constexpr const char* kDateOnly = "orv_date_only";
  // LIKE with SQL Server's wildcards ([abc], [^abc]) under the collation.
  static constexpr const char* kLike = "orv_like";
  // CAST/CONVERT of a non-text value to varchar: money with two decimals,
  // datetime by CONVERT style, float with up to six significant digits.
  static constexpr const char* kToText = "orv_to_text";
  // Text to int or float as the server converts it: text that is no number
  // fails the statement instead of reading as 0.
  static constexpr const char* kTextToInt = "orv_int";
  static constexpr const char* kTextToFloat = "orv_float";

  // Functions whose SQLite name differs or that are application-defined.
  // {T-SQL name, engine name}; names not listed print unchanged.
  static const char* FunctionName(const std::string& tsql) {
    static const std::pair<const char*, const char*> kMap[] = {
        {"ISNULL", "IFNULL"},          {"DATEADD", "orv_dateadd"},    {"DATEDIFF", "orv_datediff"},
        {"DATEPART", "orv_datepart"},  {"DATENAME", "orv_datename"},  {"SUBSTRING", "SUBSTR"},
        {"RIGHT", "orv_right"},        {"REPLACE", "orv_replace"},    {"CHARINDEX", "orv_charindex"},
        {"SPACE", "orv_space"},        {"REPLICATE", "orv_replicate"}, {"STR", "orv_str"},
        {"ASCII", "UNICODE"},          {"UNICODE", "UNICODE"},        {"FLOOR", "orv_floor"},
        {"CEILING", "orv_ceiling"},    {"ROUND", "orv_round"},        {"POWER", "orv_power"},
        {"SQRT", "orv_sqrt"},          {"ISNUMERIC", "orv_isnumeric"}, {"ISDATE", "orv_isdate"},
        {"COUNT_BIG", "COUNT"},        {"SIGN", "orv_sign"}};
    for (const auto& [from, to] : kMap) {
      if (tsql == from) return to;
    }
    return nullptr;
  }
};

}  // namespace orv::sql
