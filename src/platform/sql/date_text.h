// Date text as SQL Server reads and writes it.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "common/datetime.h"

namespace orv::sql {

// Reads a date the way SQL Server does under us_english (DATEFORMAT mdy):
// 'yyyy-mm-dd', 'yyyy/mm/dd', 'yyyymmdd', 'mm-dd-yyyy', 'mm/dd/yyyy',
// 'mm.dd.yyyy', 'Mon/d/yyyy', 'Mon d, yyyy', 'd Mon yyyy', each with an
// optional time 'hh:mm[:ss[.fff]]' and AM/PM, blanks allowed around the parts.
// A two-digit year means 1950-2049; empty text is 1900-01-01, as the server
// converts ''. nullopt when the text is no date.
std::optional<DateTime> ReadServerDate(std::string_view text);

// 'YYYY-MM-DD HH:MM:SS' of a date text, or "" when it is no date.
std::string NormaliseDateText(std::string_view text);

}  // namespace orv::sql
