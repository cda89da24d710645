// Connection URLs: which engine a URL names, and its text with any password
// taken out, for messages, logs and the report footer.
#pragma once

#include <string>

namespace orv::db {

enum class EngineKind { SQLite, PostgreSQL };

// "postgresql://...", "postgres://..." and libpq's key=value form
// ("host=db1 dbname=practice") name PostgreSQL; anything else ("sqlite:...",
// a bare path) names a SQLite file.
EngineKind EngineOfUrl(const std::string& url);

// The URL with its password removed: "postgresql://ann:secret@h/db" becomes
// "postgresql://ann@h/db", "password=..." disappears from the key=value form
// and from a URL's query. Text without a password comes back unchanged.
std::string RedactPassword(const std::string& url);

}  // namespace orv::db
