#include "platform/db/sqlite_engine.h"

#include <sqlite3.h>

#include <algorithm>

#include "platform/db/db_error.h"
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

SqliteEngine::SqliteEngine(const std::string& path) : path_(path) {
  // The file must exist: a report never creates a practice database, and a
  // mistyped path should say so rather than yield an empty one.
  int flags = SQLITE_OPEN_READWRITE | SQLITE_OPEN_URI;
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

std::unique_ptr<Engine> OpenEngine(const std::string& url) {
  std::string path = url;
  if (url.rfind("sqlite:", 0) == 0) {
    path = url.substr(7);
    // "sqlite:///abs/path" and "sqlite://rel" are accepted like "sqlite:/abs".
    if (path.rfind("//", 0) == 0) path = path.substr(2);
  } else if (url.rfind("postgresql:", 0) == 0 || url.rfind("postgres:", 0) == 0) {
    throw DatabaseError("cannot open '" + url + "': the PostgreSQL engine is not built in");
  }
  if (path.empty()) throw DatabaseError("cannot open the database: the connection names no file");
  return std::make_unique<SqliteEngine>(path);
}

}  // namespace orv::db
