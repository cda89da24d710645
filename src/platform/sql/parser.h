// T-SQL text to the untyped statement tree.
#pragma once

#include <string_view>

#include "platform/sql/ast.h"

namespace orv::sql {

// Parses one statement: SELECT (with UNION/ORDER BY), UPDATE, INSERT or
// DELETE, with an optional trailing semicolon. Throws SqlError with the line
// and column of the first token it cannot read.
Statement Parse(std::string_view text);

}  // namespace orv::sql
