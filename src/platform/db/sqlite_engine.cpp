#include "platform/db/sqlite_engine.h"

#include <sys/stat.h>

#include <sqlite3.h>

#include <algorithm>

#include "platform/db/connection_url.h"
#include "platform/db/db_error.h"
#include "platform/db/postgres_engine.h"
#include "platform/sql/sqlite_functions.h"

namespace orv::db {

namespace {

// How long a statement waits for another process's lock before it fails with
// "database is locked". Reports run on the desk while the host writes, so a
// short wait rides out a write in progress without hanging the report.
constexpr int kBusyTimeoutMs = 2000;

class SqliteStatement : public EngineStatement {
 public:
  SqliteStatement(sqlite3* db, sqlite3_stmt* stmt, std::string sql, std::string original)
      : db_(db), stmt_(stmt), sql_(std::move(sql)), original_(std::move(original)) {}
  ~SqliteStatement() override { sqlite3_finalize(stmt_); }

  void Reset() override {
    sqlite3_reset(stmt_);
    sqlite3_clear_bindings(stmt_);
  }

  void Bind(int index, const Variant& value) override {
    int rc = SQLITE_OK;
    const auto& s = value.storage();
    if (value.IsNull() || value.IsEmpty()) {
      rc = sqlite3_bind_null(stmt_, index);
    } else if (auto* i = std::get_if<int32_t>(&s)) {
      rc = sqlite3_bind_int64(stmt_, index, *i);
    } else if (auto* l = std::get_if<int64_t>(&s)) {
      rc = sqlite3_bind_int64(stmt_, index, *l);
    } else if (auto* d = std::get_if<double>(&s)) {
      rc = sqlite3_bind_double(stmt_, index, *d);
    } else if (auto* b = std::get_if<bool>(&s)) {
      // Flags are stored as the host's -1/0.
      rc = sqlite3_bind_int64(stmt_, index, *b ? -1 : 0);
    } else if (auto* c = std::get_if<Currency>(&s)) {
      // Whole amounts go in as integers so that the stored text shows no
      // float noise; others as the nearest double, which SQLite keeps.
      if (c->raw() % Currency::kScale == 0)
        rc = sqlite3_bind_int64(stmt_, index, c->raw() / Currency::kScale);
      else
        rc = sqlite3_bind_double(stmt_, index, c->ToDouble());
    } else if (auto* dt = std::get_if<DateTime>(&s)) {
      std::string iso = dt->ToIso();
      rc = sqlite3_bind_text(stmt_, index, iso.c_str(), static_cast<int>(iso.size()),
                             SQLITE_TRANSIENT);
    } else if (auto* t = std::get_if<std::string>(&s)) {
      rc = sqlite3_bind_text(stmt_, index, t->data(), static_cast<int>(t->size()),
                             SQLITE_TRANSIENT);
    } else if (auto* bytes = std::get_if<Bytes>(&s)) {
      rc = sqlite3_bind_blob(stmt_, index, bytes->data(), static_cast<int>(bytes->size()),
                             SQLITE_TRANSIENT);
    }
    if (rc != SQLITE_OK) Fail("cannot bind a value");
  }

  bool Step() override {
    int rc = sqlite3_step(stmt_);
    if (rc == SQLITE_ROW) return true;
    if (rc == SQLITE_DONE) return false;
    Fail("the database rejected the statement");
    return false;
  }

  int ColumnCount() const override { return sqlite3_column_count(stmt_); }
  std::string ColumnName(int column) const override {
    const char* n = sqlite3_column_name(stmt_, column);
    return n ? n : "";
  }

  Variant Column(int column) const override {
    switch (sqlite3_column_type(stmt_, column)) {
      case SQLITE_INTEGER:
        return Variant::Int64(sqlite3_column_int64(stmt_, column));
      case SQLITE_FLOAT:
        return Variant(sqlite3_column_double(stmt_, column));
      case SQLITE_TEXT: {
        auto* p = reinterpret_cast<const char*>(sqlite3_column_text(stmt_, column));
        return Variant(std::string(p, sqlite3_column_bytes(stmt_, column)));
      }
      case SQLITE_BLOB: {
        auto* p = static_cast<const unsigned char*>(sqlite3_column_blob(stmt_, column));
        int n = sqlite3_column_bytes(stmt_, column);
        return Variant(Bytes(p, p + n));
      }
      default:
        return Variant::Null();
    }
  }

  // The column's value is taken once and read with the sqlite3_value
  // calls: each sqlite3_column_* call checks the statement and its row
  // again, three times for a text, and a large result reads millions of
  // values. The value is the statement's own (unprotected), which is safe
  // here as a connection serves one thread at a time.
  bool ColumnView(int column, StoredView* out) const override {
    sqlite3_value* v = sqlite3_column_value(stmt_, column);
    switch (sqlite3_value_type(v)) {
      case SQLITE_INTEGER:
        out->cls = StoredView::Class::Integer;
        out->integer = sqlite3_value_int64(v);
        return true;
      case SQLITE_FLOAT:
        out->cls = StoredView::Class::Float;
        out->number = sqlite3_value_double(v);
        return true;
      case SQLITE_TEXT: {
        auto* p = reinterpret_cast<const char*>(sqlite3_value_text(v));
        out->cls = StoredView::Class::Text;
        out->bytes = std::string_view(p, static_cast<size_t>(sqlite3_value_bytes(v)));
        return true;
      }
      case SQLITE_BLOB: {
        auto* p = static_cast<const char*>(sqlite3_value_blob(v));
        out->cls = StoredView::Class::Blob;
        out->bytes = std::string_view(p, static_cast<size_t>(sqlite3_value_bytes(v)));
        return true;
      }
      default:
        out->cls = StoredView::Class::Null;
        return true;
    }
  }

  const std::string& Sql() const override { return sql_; }

 private:
  [[noreturn]] void Fail(const std::string& what) {
    std::string reason = what + ": " + sqlite3_errmsg(db_);
    int offset = sqlite3_error_offset(db_);
    sqlite3_reset(stmt_);
    throw DatabaseError(DescribeStatementError(reason, original_, sql_, offset));
  }

  sqlite3* db_;
  sqlite3_stmt* stmt_;
  std::string sql_;
  std::string original_;
};

}  // namespace

SqliteEngine::SqliteEngine(const std::string& path, bool create) : path_(path) {
  // The file must exist: a report never creates a practice database, and a
  // mistyped path should say so rather than yield an empty one. Only the
  // commands that write a whole practice create one.
  // A connection serves one thread at a time (its caches are not shared
  // across threads; the server guards its own with a lock), so SQLite's
  // lock around every call is left out: reading a column took the lock
  // twice, a tenth of the time spent reading a large result into cells.
  int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI | SQLITE_OPEN_NOMUTEX | (create ? SQLITE_OPEN_CREATE : 0);
  int rc = sqlite3_open_v2(path.c_str(), &db_, flags, nullptr);
  if (rc != SQLITE_OK) {
    std::string msg = db_ ? sqlite3_errmsg(db_) : sqlite3_errstr(rc);
    sqlite3_close(db_);
    db_ = nullptr;
    throw DatabaseError("cannot open the database '" + path + "': " + msg);
  }
  sqlite3_extended_result_codes(db_, 1);
  sqlite3_busy_timeout(db_, kBusyTimeoutMs);
  // Reading the schema version touches the file header, so a file that is no
  // database fails here, at open, with SQLite's words.
  char* err = nullptr;
  rc = sqlite3_exec(db_, "PRAGMA schema_version", nullptr, nullptr, &err);
  if (rc != SQLITE_OK) {
    std::string msg = err ? err : sqlite3_errmsg(db_);
    sqlite3_free(err);
    sqlite3_close(db_);
    db_ = nullptr;
    throw DatabaseError("cannot open the database '" + path + "': " + msg);
  }
  sql::RegisterSqliteFunctions(db_);
}

SqliteEngine::~SqliteEngine() { sqlite3_close_v2(db_); }

// The file SQLite opened, by device and inode: a symlink, "./" or a URI
// names the same file the same way.
std::string SqliteEngine::Identity() {
  const char* file = sqlite3_db_filename(db_, "main");
  struct stat st {};
  if (file == nullptr || *file == '\0' || ::stat(file, &st) != 0) return "";
  return "sqlite file " + std::to_string(st.st_dev) + ":" + std::to_string(st.st_ino);
}

std::unique_ptr<EngineStatement> SqliteEngine::Prepare(const std::string& sql,
                                                       const std::string& original) {
  sqlite3_stmt* stmt = nullptr;
  const char* tail = nullptr;
  int rc = sqlite3_prepare_v3(db_, sql.c_str(), static_cast<int>(sql.size()),
                              SQLITE_PREPARE_PERSISTENT, &stmt, &tail);
  if (rc != SQLITE_OK) {
    std::string reason = std::string("the database rejected the statement: ") + sqlite3_errmsg(db_);
    int offset = sqlite3_error_offset(db_);
    sqlite3_finalize(stmt);
    throw DatabaseError(DescribeStatementError(reason, original, sql, offset));
  }
  if (!stmt) throw DatabaseError(DescribeStatementError("the statement is empty", original, sql));
  return std::make_unique<SqliteStatement>(db_, stmt, sql, original);
}

int64_t SqliteEngine::Changes() const { return sqlite3_changes64(db_); }
int64_t SqliteEngine::LastInsertId() const { return sqlite3_last_insert_rowid(db_); }

sql::Schema SqliteEngine::LoadSchema() { return sql::LoadSqliteSchema(db_); }

std::vector<std::string> SqliteEngine::PrimaryKey(const std::string& table) {
  std::vector<std::pair<int, std::string>> keyed;
  sqlite3_stmt* stmt = nullptr;
  if (sqlite3_prepare_v2(db_, "SELECT name, pk FROM pragma_table_info(?1)", -1, &stmt, nullptr) !=
      SQLITE_OK)
    return {};
  sqlite3_bind_text(stmt, 1, table.c_str(), -1, SQLITE_TRANSIENT);
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    int pk = sqlite3_column_int(stmt, 1);
    if (pk > 0)
      keyed.emplace_back(pk, reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0)));
  }
  sqlite3_finalize(stmt);
  std::sort(keyed.begin(), keyed.end());
  std::vector<std::string> out;
  for (auto& k : keyed) out.push_back(k.second);
  return out;
}

std::vector<TableDef> SqliteEngine::ListTables() {
  std::vector<TableDef> tables;
  sql::Schema schema = LoadSchema();
  sqlite3_stmt* stmt = nullptr;
  sqlite3_prepare_v2(db_,
                     "SELECT name FROM sqlite_master WHERE type = 'table' AND name NOT LIKE 'sqlite_%' "
                     "ORDER BY name",
                     -1, &stmt, nullptr);
  while (sqlite3_step(stmt) == SQLITE_ROW) {
    TableDef t;
    t.name = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
    if (const auto* cols = schema.FindTable(t.name)) t.columns = *cols;
    tables.push_back(std::move(t));
  }
  sqlite3_finalize(stmt);
  for (TableDef& t : tables) {
    t.primary_key = PrimaryKey(t.name);
    // Indexes the practice made (not the ones SQLite makes for keys).
    sqlite3_prepare_v2(db_,
                       "SELECT il.name, il.\"unique\", ii.name FROM pragma_index_list(?1) AS il, "
                       "pragma_index_info(il.name) AS ii WHERE il.origin = 'c' ORDER BY il.name, ii.seqno",
                       -1, &stmt, nullptr);
    sqlite3_bind_text(stmt, 1, t.name.c_str(), -1, SQLITE_TRANSIENT);
    while (sqlite3_step(stmt) == SQLITE_ROW) {
      std::string index = reinterpret_cast<const char*>(sqlite3_column_text(stmt, 0));
      if (t.indexes.empty() || t.indexes.back().name != index)
        t.indexes.push_back(IndexDef{index, {}, sqlite3_column_int(stmt, 1) != 0});
      t.indexes.back().columns.emplace_back(reinterpret_cast<const char*>(sqlite3_column_text(stmt, 2)));
    }
    sqlite3_finalize(stmt);
  }
  return tables;
}

namespace {

void Exec(sqlite3* db, const std::string& sql, const std::string& what) {
  char* err = nullptr;
  if (sqlite3_exec(db, sql.c_str(), nullptr, nullptr, &err) != SQLITE_OK) {
    std::string msg = err ? err : sqlite3_errmsg(db);
    sqlite3_free(err);
    throw DatabaseError(DescribeStatementError(what + ": " + msg, sql));
  }
}

}  // namespace

void SqliteEngine::CreateTable(const TableDef& t) {
  // The declared SQL Server types are kept as they are: the translator
  // reads them back to know money, dates and text.
  std::string ddl = "CREATE TABLE " + QuoteIdent(t.name) + " (";
  bool single_key = t.primary_key.size() == 1;
  for (size_t i = 0; i < t.columns.size(); ++i) {
    const auto& c = t.columns[i];
    ddl += (i ? ", " : "") + QuoteIdent(c.name) + " " + c.declared;
    if (single_key && c.name == t.primary_key[0]) ddl += " PRIMARY KEY";
  }
  if (t.primary_key.size() > 1) {
    ddl += ", PRIMARY KEY (";
    for (size_t i = 0; i < t.primary_key.size(); ++i) ddl += (i ? ", " : "") + QuoteIdent(t.primary_key[i]);
    ddl += ")";
  }
  Exec(db_, ddl + ")", "cannot create table " + t.name);
  for (const IndexDef& ix : t.indexes) {
    std::string cols;
    for (const auto& c : ix.columns) cols += (cols.empty() ? "" : ", ") + QuoteIdent(c);
    Exec(db_,
         std::string(ix.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + QuoteIdent(ix.name) + " ON " +
             QuoteIdent(t.name) + " (" + cols + ")",
         "cannot create index " + ix.name);
  }
}

void SqliteEngine::DropTable(const std::string& table) {
  Exec(db_, "DROP TABLE IF EXISTS " + QuoteIdent(table), "cannot drop table " + table);
}

void SqliteEngine::InsertRows(const TableDef& t, const std::vector<std::vector<Variant>>& rows) {
  if (rows.empty()) return;
  std::string cols, marks;
  for (size_t i = 0; i < t.columns.size(); ++i) {
    cols += (i ? ", " : "") + QuoteIdent(t.columns[i].name);
    marks += (i ? ", ?" : "?") + std::to_string(i + 1);
  }
  auto stmt = Prepare("INSERT INTO " + QuoteIdent(t.name) + " (" + cols + ") VALUES (" + marks + ")",
                      "copying rows into " + t.name);
  for (const auto& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) stmt->Bind(static_cast<int>(i) + 1, row[i]);
    while (stmt->Step()) {
    }
    stmt->Reset();
  }
}

std::unique_ptr<Engine> OpenEngine(const std::string& url, bool create) {
  // "mysql://..." or a misspelled "postgresq://..." is no file name: say so
  // rather than make a SQLite file of that name.
  if (std::string scheme = UnknownScheme(url); !scheme.empty()) {
    throw DatabaseError("cannot open " + MaskSecrets(url) + ": no database engine is called '" + scheme +
                        "' (postgresql://, postgres:// or sqlite:)");
  }
  if (EngineOfUrl(url) == EngineKind::PostgreSQL) {
    // A password typed with "@", "/" or "?" in it reaches libpq encoded, so
    // that libpq neither splits it nor quotes its tail in a message.
    std::string encoded = EncodeUserInfo(url);
    if (create) CreatePostgresDatabaseIfMissing(encoded);
    return OpenPostgresEngine(encoded);
  }
  std::string path = SqlitePath(url);
  if (path.empty()) throw DatabaseError("cannot open the database: the connection names no file");
  return std::make_unique<SqliteEngine>(path, create);
}

}  // namespace orv::db
