// The PostgreSQL engine: one server session per connection, reached through
// libpq. Statements are prepared once on the server and run with their
// parameters in text form; rows come back whole, in PostgreSQL's text form,
// and are turned into the same Variants the SQLite engine gives (numeric
// into Currency without passing through a float).
#pragma once

#include <memory>
#include <string>

#include "platform/db/engine.h"

namespace orv::db {

// Connects to the server a URL names ("postgresql://user@host:port/db",
// "postgres://...", or libpq's "host=... dbname=..." form). Passwords come
// from the URL, PGPASSWORD or ~/.pgpass; other libpq parameters pass through.
// Connecting gives up after 10 seconds unless the URL or PGCONNECT_TIMEOUT
// says otherwise. Throws DatabaseError naming host, port and database (never
// the password).
std::unique_ptr<Engine> OpenPostgresEngine(const std::string& url);

// Makes the database a URL names when it does not exist yet, by connecting
// to the server's "postgres" database with the same credentials. Used by the
// commands that write a whole practice (demo-db, copy-db).
void CreatePostgresDatabaseIfMissing(const std::string& url);

}  // namespace orv::db
