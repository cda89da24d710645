// What differs between SQL Server and PostgreSQL, for the PostgreSQL printer.
#pragma once

#include <string>
#include <utility>

namespace orv::sql {

// The names PrintPostgres calls, in one place. Everything named orvenda.*
// is installed by PostgresSupportStatements (postgres_support.cpp).
struct PostgresTraits {
  // SQL Server's default collation (case-insensitive, accent-sensitive).
  // Table text columns carry it already; derived text is cast to bpchar
  // (trailing blanks insignificant) under it before it is compared.
  static constexpr const char* kCollated = " AS bpchar) COLLATE orvenda.orv_ci";
  // A bpchar value as text with its trailing blanks.
  static constexpr const char* kText = "orvenda.orv_text";
  // Sort key of text (ORDER BY, MIN, MAX, <, >, BETWEEN): the dictionary
  // order of common/collation.h, compared bytewise.
  static constexpr const char* kSortKey = "orvenda.orv_key";
  static constexpr const char* kSortCollation = " COLLATE \"C\"";
  static constexpr const char* kMin = "orvenda.orv_min";
  static constexpr const char* kMax = "orvenda.orv_max";
  // GETDATE() reads the session setting orvenda.now (the host clock).
  static constexpr const char* kNow = "orvenda.orv_getdate()";
  static constexpr const char* kAddDays = "orvenda.orv_adddays";
  static constexpr const char* kDatePart = "orvenda.orv_datepart";
  static constexpr const char* kLike = "orvenda.orv_like";
  static constexpr const char* kTextToInt = "orvenda.orv_int";
  static constexpr const char* kTextToFloat = "orvenda.orv_float";
  static constexpr const char* kTextToNumeric = "orvenda.orv_num";
  static constexpr const char* kToDate = "orvenda.orv_date";
  static constexpr const char* kMoneyText = "orvenda.orv_money_text";
  static constexpr const char* kFloatText = "orvenda.orv_float_text";
  static constexpr const char* kDateText = "orvenda.orv_date_text";

  // Functions whose PostgreSQL name differs or that are installed ones;
  // their arguments print unchanged. Names not listed print as written.
  static const char* FunctionName(const std::string& tsql) {
    static const std::pair<const char*, const char*> kMap[] = {
        {"ISNULL", "COALESCE"},           {"DATEADD", "orvenda.orv_dateadd"},
        {"DATEDIFF", "orvenda.orv_datediff"}, {"DATEPART", "orvenda.orv_datepart"},
        {"DATENAME", "orvenda.orv_datename"}, {"RIGHT", "orvenda.orv_right"},
        {"REPLACE", "orvenda.orv_replace"}, {"CHARINDEX", "orvenda.orv_charindex"},
        {"SPACE", "orvenda.orv_space"},   {"REPLICATE", "orvenda.orv_replicate"},
        {"STR", "orvenda.orv_str"},       {"ROUND", "orvenda.orv_round"},
        {"ASCII", "ascii"},               {"UNICODE", "ascii"},
        {"FLOOR", "floor"},               {"CEILING", "ceiling"},
        {"SIGN", "sign"},                 {"ABS", "abs"},
        {"UPPER", "upper"},               {"LOWER", "lower"},
        {"LTRIM", "ltrim"},               {"RTRIM", "rtrim"},
        {"TRIM", "btrim"},
        {"COUNT_BIG", "COUNT"}};
    for (const auto& [from, to] : kMap) {
      if (tsql == from) return to;
    }
    return nullptr;
  }
};

}  // namespace orv::sql
