// Bound statement tree to SQLite text.
#pragma once

#include <string>

#include "platform/sql/ast.h"

namespace orv::sql {

// Prints a bound statement for SQLite. The text relies on the functions and
// the collation that RegisterSqliteFunctions installs. Constructs SQLite
// lacks are rewritten: RIGHT JOIN as a LEFT JOIN with the operands swapped,
// GROUP BY ... WITH ROLLUP as a UNION ALL of the grouping levels, TOP as
// LIMIT.
std::string PrintSqlite(const Statement& st);

}  // namespace orv::sql
