#include "platform/db/connection.h"

#include <cctype>
#include <unordered_map>

#include "platform/db/db_error.h"
#include "platform/db/shape.h"
#include "platform/db/statement_cache.h"

namespace orv::db {

class Connection::Impl {
 public:
  explicit Impl(const std::string& url) : url_(url), engine_(OpenEngine(url)) {
    schema_ = engine_->LoadSchema();
    cache_ = std::make_unique<StatementCache>(*engine_, schema_);
  }

  std::string url_;
  std::unique_ptr<Engine> engine_;
  sql::Schema schema_;
  std::unique_ptr<StatementCache> cache_;
  bool in_transaction_ = false;
  int cursor_location_ = adUseServer;
};

Connection::Connection() = default;
Connection::Connection(const std::string& url) { Open(url); }

void Connection::Open(const std::string& url) {
  if (impl_) throw DatabaseError("the connection is already open");
  impl_ = std::make_shared<Impl>(url);
}

void Connection::Close() { impl_.reset(); }
int Connection::State() const { return impl_ ? adStateOpen : adStateClosed; }

const std::string& Connection::ConnectionString() const {
  static const std::string none;
  return impl_ ? impl_->url_ : none;
}

int Connection::CursorLocation() const { return impl_ ? impl_->cursor_location_ : adUseServer; }

void Connection::CursorLocation(int location) {
  if (location != adUseServer && location != adUseClient)
    throw DatabaseError(kErrNotAllowed, "CursorLocation is adUseServer (2) or adUseClient (3), not " +
                                            std::to_string(location));
  impl().cursor_location_ = location;
}

Connection::Impl& Connection::impl() const {
  if (!impl_) throw DatabaseError("the connection is closed");
  return *impl_;
}

long Connection::Execute(const std::string& statement) {
  if (IsShapeStatement(statement))
    throw DatabaseError("a SHAPE statement returns rows; open it in a recordset: " + statement);
  Impl& im = impl();
  StatementCache::Lease lease = im.cache_->Get(statement);
  bool query = lease.translation().is_query;
  while (lease.Step()) {
  }
  lease.Done();
  if (query) return -1;
  return static_cast<long>(im.engine_->Changes());
}

void Connection::BeginTrans() {
  Impl& im = impl();
  if (im.in_transaction_) throw DatabaseError("a transaction is already open on this connection");
  RunEngineSql("BEGIN", {}, "BeginTrans");
  im.in_transaction_ = true;
}

void Connection::CommitTrans() {
  Impl& im = impl();
  if (!im.in_transaction_) throw DatabaseError("CommitTrans without BeginTrans");
  RunEngineSql("COMMIT", {}, "CommitTrans");
  im.in_transaction_ = false;
}

void Connection::RollbackTrans() {
  Impl& im = impl();
  if (!im.in_transaction_) throw DatabaseError("RollbackTrans without BeginTrans");
  RunEngineSql("ROLLBACK", {}, "RollbackTrans");
  im.in_transaction_ = false;
}

std::string Connection::EngineText(const std::string& statement) {
  if (IsShapeStatement(statement))
    throw DatabaseError("a SHAPE statement is run as several statements; translate its commands one by one: " +
                        statement);
  Impl& im = impl();
  return sql::Translate(statement, im.schema_, im.engine_->dialect()).sql;
}

bool Connection::ReturnsRows(const std::string& statement) {
  if (IsShapeStatement(statement)) return true;
  return impl().cache_->Get(statement).translation().is_query;
}

void Connection::RefreshSchema() {
  Impl& im = impl();
  im.schema_ = im.engine_->LoadSchema();
  im.cache_ = std::make_unique<StatementCache>(*im.engine_, im.schema_);
}

namespace {

std::shared_ptr<RowSet> ReadRows(StatementCache& cache, const std::string& statement) {
  StatementCache::Lease lease = cache.Get(statement);
  const sql::Translation& tr = lease.translation();
  if (!tr.is_query)
    throw DatabaseError("the statement returns no rows; run it with Execute: " + statement);
  auto rows = std::make_shared<RowSet>();
  int n = lease.ColumnCount();
  bool typed = static_cast<int>(tr.columns.size()) == n;
  rows->fields.reserve(n);
  for (int i = 0; i < n; ++i) {
    FieldInfo f;
    f.name = typed ? tr.columns[i].name : lease.ColumnName(i);
    f.kind = typed ? tr.columns[i].kind : sql::ValueKind::Unknown;
    f.type = FieldTypeOfKind(f.kind);
    rows->fields.push_back(std::move(f));
  }
  while (lease.Step()) {
    std::vector<Variant> row;
    row.reserve(n);
    for (int i = 0; i < n; ++i) row.push_back(ValueOfKind(lease.Column(i), rows->fields[i].kind));
    rows->rows.push_back(std::move(row));
  }
  lease.Done();
  return rows;
}

int RelateField(const RowSet& rows, const std::string& name, const char* side,
                const std::string& statement) {
  int i = rows.FindField(name);
  if (i < 0)
    throw DatabaseError(std::string("SHAPE: the ") + side + " command has no column '" + name +
                        "' to relate by, in statement: " + statement);
  return i;
}

// Runs each command of a SHAPE once and relates the children to their
// parent in memory: the child's rows are hashed by the child's relate
// columns, so a chapter is one lookup per parent row.
std::shared_ptr<RowSet> RunShape(StatementCache& cache, const ShapeNode& node,
                                 const std::string& statement) {
  auto parent = ReadRows(cache, node.command);
  for (const ShapeChild& c : node.children) {
    ChapterLink link;
    link.child = c.node.children.empty() ? ReadRows(cache, c.node.command)
                                         : RunShape(cache, c.node, statement);
    for (const auto& [pcol, ccol] : c.relate) {
      link.parent_fields.push_back(RelateField(*parent, pcol, "parent", statement));
      link.child_fields.push_back(RelateField(*link.child, ccol, "child", statement));
    }
    const auto& child_rows = link.child->rows;
    for (size_t r = 0; r < child_rows.size(); ++r) {
      bool has_null = false;
      std::string key = RowKey(child_rows[r], link.child_fields, &has_null);
      if (!has_null) link.rows_by_key[key].push_back(r);
    }
    FieldInfo f;
    f.name = c.name;
    f.type = adChapter;
    f.chapter = static_cast<int>(parent->chapters.size());
    parent->chapters.push_back(std::move(link));
    parent->AddField(std::move(f));
  }
  return parent;
}

}  // namespace

std::shared_ptr<RowSet> Connection::Query(const std::string& statement) const {
  Impl& im = impl();
  if (IsShapeStatement(statement)) {
    ShapeNode node = ParseShape(statement);
    try {
      return RunShape(*im.cache_, node, statement);
    } catch (const ReportError& e) {
      // A command's own message names the inner command; add the SHAPE
      // statement it came from.
      if (e.description().find(statement) != std::string::npos) throw;
      throw DatabaseError(e.number(), e.description() + "\nin the SHAPE statement: " + statement);
    }
  }
  return ReadRows(*im.cache_, statement);
}

std::vector<std::string> Connection::PrimaryKey(const std::string& table) {
  return impl().engine_->PrimaryKey(table);
}

int64_t Connection::RunEngineSql(const std::string& sql, const std::vector<Variant>& values,
                                 const std::string& original) {
  Impl& im = impl();
  auto stmt = im.engine_->Prepare(sql, original);
  for (size_t i = 0; i < values.size(); ++i) stmt->Bind(static_cast<int>(i) + 1, values[i]);
  while (stmt->Step()) {
  }
  stmt->Reset();
  return im.engine_->Changes();
}

int64_t Connection::LastInsertId() { return impl().engine_->LastInsertId(); }

size_t Connection::CachedStatementCount() const { return impl_ ? impl_->cache_->size() : 0; }

}  // namespace orv::db
