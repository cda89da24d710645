// The application-defined SQL functions and the collation that translated
// statements rely on, and the schema of a SQLite database.
#pragma once

#include <sqlite3.h>

#include "platform/sql/translate.h"

namespace orv::sql {

// Installs on `db`:
//   collation orv_ci           SQL Server's default text comparison: the
//                              dictionary order of common/collation.h
//   orv_getdate()              orv::Clock::Now() as 'YYYY-MM-DD HH:MM:SS', read
//                              each time the statement runs
//   orv_date(x)                date text in any form SQL Server reads, or a
//                              number of days since 1900-01-01, to ISO text
//   orv_date_only(x)           ISO date text with the time set to midnight
//   orv_adddays(d, n)          d + n days (n may have a fraction)
//   orv_dateadd(part, n, d), orv_datediff(part, a, b), orv_datepart(part, d),
//   orv_datename(part, d)      DATEADD, DATEDIFF, DATEPART, DATENAME
//   orv_int(x), orv_float(x)   text to a number as the server converts it,
//                              failing the statement on text that is no number
//   orv_like(x, pattern[, escape])  LIKE with [abc] and [^abc], case-insensitive
//   orv_to_text(x, kind, style)     CAST/CONVERT to varchar of money, datetime, float
//   orv_right, orv_replace, orv_charindex, orv_space, orv_replicate, orv_str,
//   orv_floor, orv_ceiling, orv_round, orv_power, orv_sqrt, orv_sign,
//   orv_isnumeric, orv_isdate  the T-SQL functions of those names
// Throws ReportError when SQLite refuses a registration.
void RegisterSqliteFunctions(sqlite3* db);

// The schema of `db`: the declared type of every column of a table or view
// (pragma_table_info), in declaration order, and its primary key, each
// table read from `db` when first named. `db` must outlive the schema's
// lookups. A table that cannot be read throws SchemaError from the lookup.
Schema LoadSqliteSchema(sqlite3* db);

}  // namespace orv::sql
