// What the PostgreSQL text of the T-SQL layer relies on in the database:
// the schema "orvenda" with the collation orv_ci and the orv_* functions
// that keep SQL Server's meaning where PostgreSQL's differs (date parts,
// LIKE with [] sets, CONVERT styles, strict text-to-number conversion,
// ordering of text as the SQLite path orders it, the host's clock).
#pragma once

#include <string>
#include <vector>

namespace orv::sql {

// Version of the statements below; orvenda.orv_support_version() returns
// it once they are installed. Raised whenever a statement changes.
constexpr int kPostgresSupportVersion = 4;

// Idempotent statements (CREATE ... IF NOT EXISTS / OR REPLACE) installing
// everything PrintPostgres's text calls, in order. Run them in one
// transaction when orvenda.orv_support_version() is missing or returns less
// than kPostgresSupportVersion. The database must use the UTF8 encoding and
// a server built with ICU.
//
// At run time the session must hold the setting orvenda.now, the host
// clock as 'YYYY-MM-DD HH:MM:SS' (SET orvenda.now = '...'): GETDATE()
// reads it, so translated text stays independent of the clock. Without it
// GETDATE() falls back to the server's local time.
const std::vector<std::string>& PostgresSupportStatements();

}  // namespace orv::sql
