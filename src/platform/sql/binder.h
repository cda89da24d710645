// Names and types: binds a parsed statement against the schema.
//
// Every column reference is resolved to its table (innermost scope first, as
// SQL Server does for correlated subqueries) and typed from the declared
// column type. Each operator gets its server meaning (BoundOp), implicit
// conversions become explicit Convert nodes, and date literals compared with
// dates are normalised to 'YYYY-MM-DD HH:MM:SS' here, once.
#pragma once

#include <string>

#include "platform/sql/ast.h"

namespace orv::sql {

// Binds `st` in place. `text` is the statement, for error messages. Throws
// SqlError for an unknown table or column, an ambiguous name, a date
// literal that is no date, or a construct the layer does not support.
void Bind(Statement& st, const Schema& schema, std::string_view text);

}  // namespace orv::sql
