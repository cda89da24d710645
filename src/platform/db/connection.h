// Connection: an open practice database, as the reports' connection object.
//
// A Connection is a handle: copies share one open database, which closes when
// the last copy (and the last recordset opened on it) goes, as a reference to
// the host's connection object does. Statements are the caller's T-SQL text,
// run as given: nothing is escaped or validated here. Each distinct text is
// translated once and prepared once per connection.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "platform/db/engine.h"
#include "platform/db/rowset.h"

namespace orv::db {

enum ObjectState : int { adStateClosed = 0, adStateOpen = 1 };
enum CursorLocation : int { adUseServer = 2, adUseClient = 3 };

class Connection {
 public:
  Connection();
  // Opens at once; see Open.
  explicit Connection(const std::string& url);

  // Opens the database a URL names: "sqlite:/path/practice.db", a bare path,
  // "sqlite::memory:". Throws DatabaseError when the file is missing, locked
  // beyond the wait, or no database.
  void Open(const std::string& url);
  // Closes this handle's database (recordsets already read keep their rows).
  void Close();
  // adStateOpen or adStateClosed.
  int State() const;
  // The URL the connection was opened with, without its password.
  const std::string& ConnectionString() const;

  // Where cursors live: adUseServer (the default) or adUseClient. With a
  // client cursor every recordset opened here is static, whatever cursor
  // type it asks for, as rows are then held on the client.
  int CursorLocation() const;
  void CursorLocation(int location);

  // Runs one statement that returns no rows (UPDATE, INSERT, DELETE) and
  // returns the number of rows it changed; a query is run and gives -1.
  // Throws DatabaseError or sql::SqlError naming the statement.
  long Execute(const std::string& statement);

  // One level of transaction around the reports' writes. BeginTrans inside
  // an open transaction, and Commit/Rollback outside one, throw.
  void BeginTrans();
  void CommitTrans();
  void RollbackTrans();

  // One consistent view of the database for every statement until the
  // matching EndSnapshot (calls nest; the outermost pair counts). On a
  // server the reads then run in one read-only snapshot transaction, so a
  // report's totals never mix two moments of a busy day; its writes go
  // through a second session in their own short transactions. Does nothing
  // on SQLite. Prefer the Snapshot guard below.
  void BeginSnapshot();
  void EndSnapshot();

  // Names the database for messages (file, or server host, port and
  // database), never with a password.
  std::string Describe() const;
  sql::Dialect Dialect() const;

  // The engine's text for a statement, without running it (a SHAPE is not a
  // single statement and throws).
  std::string EngineText(const std::string& statement);

  // True when the statement is a query (a SELECT or a SHAPE), which a
  // recordset opens; false for one that Execute runs. Translates it (once).
  bool ReturnsRows(const std::string& statement);

  // Reads the tables and columns again (after the schema changed).
  void RefreshSchema();

  // Runs a query, SHAPE included, and returns its rows. Used by Recordset.
  // With a selection other than the whole, only the values of the fields
  // it holds are read from the result (the others are marked not held),
  // and the result is neither taken from nor kept in the snapshot's caches.
  std::shared_ptr<RowSet> Query(const std::string& statement, const FieldSelection& keep = {}) const;

  // Columns of the primary key of `table`. Used by Recordset's writes.
  std::vector<std::string> PrimaryKey(const std::string& table);
  // Runs engine SQL with parameters ?1..?n bound to `values`; returns rows
  // changed. Used by Recordset's writes.
  int64_t RunEngineSql(const std::string& sql, const std::vector<Variant>& values,
                       const std::string& original);
  int64_t LastInsertId();

  // Number of translations and prepared statements held (for tests and the
  // benchmark to see that the cache works).
  size_t CachedStatementCount() const;

  // Within a server snapshot, a lookup run for many keys is read for all
  // keys at once (see lookup_batch.h). On by default; off runs every
  // statement as given (to compare, and to measure). BatchedLookupCount is
  // the number of statements answered from such reads so far in the
  // current snapshot.
  void BatchLookups(bool on);
  int64_t BatchedLookupCount() const;

  class Impl;

 private:
  Impl& impl() const;
  std::shared_ptr<Impl> impl_;
};

// Holds a connection's snapshot for the life of a scope: a report's run.
class Snapshot {
 public:
  // What a snapshot that cannot be begun (the server went away between two
  // reports) does: throw, or let the scope run without one. A report takes
  // the second, so that its first statement meets the same fault inside the
  // report's own error handling, as any database error would.
  enum class OnFailure { Throw, RunWithout };

  explicit Snapshot(Connection& connection, OnFailure on_failure = OnFailure::Throw) : connection_(connection) {
    if (connection_.State() != adStateOpen) return;
    try {
      connection_.BeginSnapshot();
      held_ = true;
    } catch (...) {
      if (on_failure == OnFailure::Throw) throw;
    }
  }
  ~Snapshot() {
    if (!held_) return;
    try {
      connection_.EndSnapshot();
    } catch (...) {
      // Ending a read-only transaction loses nothing; a connection that
      // broke has already been reported by the statement that failed.
    }
  }
  Snapshot(const Snapshot&) = delete;
  Snapshot& operator=(const Snapshot&) = delete;

 private:
  Connection& connection_;
  bool held_ = false;
};

}  // namespace orv::db
