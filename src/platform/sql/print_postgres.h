// Bound statement tree to PostgreSQL text.
#pragma once

#include <string>

#include "platform/sql/ast.h"

namespace orv::sql {

// Prints a bound statement for PostgreSQL 15. The text calls the functions
// and the collation that PostgresSupportStatements installs (schema
// orvenda), and relies on the practice schema's PostgreSQL form: text
// columns are bpchar under orvenda.orv_ci, money numeric(19,4), dates
// timestamp, flags and keys integer. Parameters may stand for whole-number
// literals as bigint.
std::string PrintPostgres(const Statement& st);

}  // namespace orv::sql
