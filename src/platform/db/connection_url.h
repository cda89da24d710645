// Connection URLs: which engine a URL names, the file a SQLite URL opens,
// and the text of any message with the secrets of every URL taken out.
#pragma once

#include <string>

namespace orv::db {

enum class EngineKind { SQLite, PostgreSQL };

// "postgresql://...", "postgres://..." (scheme in any case) and libpq's
// key=value form ("host=db1 dbname=practice") name PostgreSQL; anything
// else ("sqlite:...", a bare path) names a SQLite file.
EngineKind EngineOfUrl(const std::string& url);

// The scheme of a URL written "scheme://..." that names neither engine
// ("mysql", "postgresq"), lower-cased; "" when the scheme is known or the
// text has none. Such a URL is refused before anything is opened, since
// taking it for a file name would only hide the typo.
std::string UnknownScheme(const std::string& url);

// The file a SQLite URL names: "sqlite:/srv/p.db", "sqlite:///srv/p.db"
// and "p.db" give the path after the scheme.
std::string SqlitePath(const std::string& url);

// A PostgreSQL URL whose user-info holds characters that end it early for
// libpq ("@", "/", "?", "#" in a password typed as it is) with those
// characters percent-encoded. The user-info runs to the last "@" of the
// URL, since a host or database name never holds one. Other forms come
// back unchanged.
std::string EncodeUserInfo(const std::string& url);

// `text` (a URL or a whole message that may quote one or more) with every
// password taken out: the password of any "scheme://user:password@" of
// whatever scheme (the user-info runs to the last "@" of the URL, so a
// password holding "@", "/" or "?" goes whole), "password=" items of a
// URL's query, and "password=..." items of libpq's key=value form.
std::string MaskSecrets(const std::string& text);

// The URL with its password removed: "postgresql://ann:secret@h/db" becomes
// "postgresql://ann@h/db", "password=..." disappears from the key=value form
// and from a URL's query. Text without a password comes back unchanged.
std::string RedactPassword(const std::string& url);

}  // namespace orv::db
