#include "platform/db/connection.h"

#include <algorithm>
#include <cctype>
#include <chrono>
#include <cstdlib>
#include <functional>
#include <optional>
#include <unordered_map>
#include <unordered_set>

#include "common/errors.h"
#include "platform/db/connection_url.h"
#include "platform/db/db_error.h"
#include "platform/db/lookup_batch.h"
#include "platform/db/shape.h"
#include "platform/db/statement_cache.h"
#include "platform/db/value_compare.h"
#include "platform/sql/lookup_batch.h"

namespace orv::db {

class Connection::Impl {
 public:
  explicit Impl(const std::string& url)
      : url_(url), shown_url_(RedactPassword(url)), engine_(OpenEngine(url)) {
    schema_ = engine_->LoadSchema();
    cache_ = std::make_unique<StatementCache>(*engine_, schema_);
  }

  // While a report holds a snapshot on a server engine, its session is
  // read-only; writes (LastStatement, a repair) go through a second session
  // of their own, opened on the first write, in their own short
  // transactions, and are visible to the practice at once. A transaction's
  // writes stay on the session it began on.
  bool SnapshotSeparatesWrites() const {
    return snapshot_depth_ > 0 && engine_->dialect() == sql::Dialect::PostgreSQL;
  }
  // Reads stay in the snapshot even inside a transaction the writer holds
  // (the stamps of a statement run): the report's figures come from one
  // moment, and no report reads back what it stamped.
  //
  // Only the server's snapshot keeps small results and batches per-row
  // lookups. On the SQLite file a lookup is a few microseconds in process,
  // and batching there was measured (every report of the catalogue on a
  // 20,000-patient practice, with the batcher and the result cache let into
  // SQLite snapshots): the lists that look up every patient gained 7 to 26%
  // (aged receivables 14.9 s to 13.7 s) at up to twice the memory (60 to
  // 115 MB), while a filtered run paid for reading every key (reactivation
  // letters of 30 patients 0.05 s to 0.84 s, the referral summary 0.12 s
  // to 0.84 s, outstanding treatment 2.0 s to 4.3 s), and the catalogue as
  // a whole took 11% longer.
  bool ReadsFromSnapshot() const {
    return snapshot_depth_ > 0 && engine_->dialect() == sql::Dialect::PostgreSQL &&
           (!in_transaction_ || tx_on_writer_);
  }
  bool UseWriter(bool write) {
    bool use = write ? (in_transaction_ ? tx_on_writer_ : SnapshotSeparatesWrites())
                     : in_transaction_ && tx_on_writer_ && !ReadsFromSnapshot();
    if (use && !writer_) {
      writer_ = OpenEngine(url_);
      writer_cache_ = std::make_unique<StatementCache>(*writer_, schema_);
    }
    return use;
  }
  StatementCache& cache(bool write) { return UseWriter(write) ? *writer_cache_ : *cache_; }
  Engine& engine(bool write) { return UseWriter(write) ? *writer_ : *engine_; }

  std::string url_;
  std::string shown_url_;  // without its password
  std::unique_ptr<Engine> engine_;
  sql::Schema schema_;
  std::unique_ptr<StatementCache> cache_;
  std::unique_ptr<Engine> writer_;
  std::unique_ptr<StatementCache> writer_cache_;
  bool in_transaction_ = false;
  bool tx_on_writer_ = false;
  int snapshot_depth_ = 0;
  // Small results read during a server snapshot, by statement text. The
  // snapshot cannot change, so the same lookup (a provider's name for each
  // of thousands of invoices) asks the server once per report, not once per
  // row. Dropped when the snapshot ends.
  std::unordered_map<std::string, std::shared_ptr<const RowSet>> snapshot_rows_;
  // The child commands of SHAPE statements read during a server snapshot,
  // by text. A report that opens one SHAPE per provider relates each
  // provider's invoices to the same unfiltered child (every payment of the
  // practice): 13 providers read 180,000 payment rows 13 times, 6.5 of the
  // aged receivables' 8.7 s on 20,000 patients. Each SHAPE gets its own
  // copy, since its chapters are recordsets of their own. Children are kept
  // up to kShapeChildRowsMax rows in all; dropped when the snapshot ends.
  // (A parent of few keys reads its child restricted to them instead; see
  // ReadShapeChild.)
  static constexpr int64_t kShapeChildRowsMax = 2000000;
  std::unordered_map<std::string, std::shared_ptr<const RowSet>> shape_children_;
  std::unordered_set<std::string> shape_children_seen_;
  int64_t shape_child_rows_ = 0;
  // The rows of a SHAPE child command (not itself a SHAPE) for `parent`.
  std::shared_ptr<RowSet> ReadShapeChild(StatementCache& cache, const ShapeChild& child, const RowSet& parent,
                                         const FieldSelection& keep);
  bool batch_lookups_ = true;
  std::unique_ptr<LookupBatcher> batcher_;
  // The results of more than a few rows read during a server snapshot, as
  // long as the report holds them: a report that walks one (its patients, a
  // SHAPE's open invoices) and looks up each row's key tells the batcher
  // which keys are to come. Not owned: a recordset alone on its rows may
  // reorder them in place.
  std::vector<std::weak_ptr<const RowSet>> held_;
  void Hold(const std::shared_ptr<RowSet>& rows) {
    if (rows->RowCount() <= static_cast<size_t>(LookupBatcher::kThreshold) && rows->chapters.empty()) return;
    if (held_.size() >= 64)
      held_.erase(std::remove_if(held_.begin(), held_.end(), [](const auto& w) { return w.expired(); }),
                  held_.end());
    held_.push_back(rows);
  }
  std::shared_ptr<const std::vector<int64_t>> WalkedKeys(const std::vector<int64_t>& asked) const;
  int cursor_location_ = adUseServer;

  LookupBatcher& batcher() {
    if (!batcher_) {
      batcher_ = std::make_unique<LookupBatcher>(
          schema_, engine_->dialect(),
          [this](const sql::Translation& tr, const std::string& original) { return ReadBatch(tr, original); },
          [this](const sql::Translation& tr, const std::string& original) { return EstimateBatch(tr, original); },
          [this](const std::vector<int64_t>& asked) { return WalkedKeys(asked); });
    }
    return *batcher_;
  }
  // A batched lookup runs under a savepoint: should the server refuse it,
  // the snapshot stays usable and the report goes on key by key.
  std::shared_ptr<RowSet> ReadBatch(const sql::Translation& tr, const std::string& original);
  // The seconds a batched read is expected to take and the rows it gives,
  // from the server's plan.
  std::optional<LookupBatcher::Estimate> EstimateBatch(const sql::Translation& tr, const std::string& original);
  void RunPlain(const char* sql) {
    auto stmt = engine_->Prepare(sql, sql);
    while (stmt->Step()) {
    }
  }
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
  return impl_ ? impl_->shown_url_ : none;
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
  // A query runs in the report's snapshot; anything else may write, and
  // goes to the writing session while a server snapshot is held. Only then
  // is the statement looked at twice.
  bool write = im.SnapshotSeparatesWrites() && !im.cache(false).Get(statement).translation().is_query;
  StatementCache::Lease lease = im.cache(write).Get(statement);
  bool query = lease.translation().is_query;
  while (lease.Step()) {
  }
  lease.Done();
  if (query) return -1;
  return static_cast<long>(im.engine(write).Changes());
}

void Connection::BeginTrans() {
  Impl& im = impl();
  if (im.in_transaction_) throw DatabaseError("a transaction is already open on this connection");
  im.tx_on_writer_ = im.SnapshotSeparatesWrites();
  im.in_transaction_ = true;
  try {
    RunEngineSql("BEGIN", {}, "BeginTrans");
  } catch (...) {
    im.in_transaction_ = false;
    throw;
  }
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
  try {
    RunEngineSql("ROLLBACK", {}, "RollbackTrans");
  } catch (...) {
    im.in_transaction_ = false;
    throw;
  }
  im.in_transaction_ = false;
}

void Connection::BeginSnapshot() {
  Impl& im = impl();
  if (im.snapshot_depth_ == 0 && !im.in_transaction_) im.engine_->BeginSnapshot();
  ++im.snapshot_depth_;
}

void Connection::EndSnapshot() {
  Impl& im = impl();
  if (im.snapshot_depth_ == 0) return;
  if (--im.snapshot_depth_ > 0) return;
  im.snapshot_rows_.clear();
  im.shape_children_.clear();
  im.shape_children_seen_.clear();
  im.shape_child_rows_ = 0;
  im.held_.clear();
  if (im.batcher_) im.batcher_->Clear();
  if (!im.in_transaction_ || im.tx_on_writer_) im.engine_->EndSnapshot();
}

std::string Connection::Describe() const { return impl().engine_->Describe(); }

std::string Connection::EngineText(const std::string& statement) {
  if (IsShapeStatement(statement))
    throw DatabaseError("a SHAPE statement is run as several statements; translate its commands one by one: " +
                        statement);
  Impl& im = impl();
  return sql::Translate(statement, im.schema_, im.engine_->dialect()).sql;
}

bool Connection::ReturnsRows(const std::string& statement) {
  if (IsShapeStatement(statement)) return true;
  return impl().cache(false).Get(statement).translation().is_query;
}

void Connection::RefreshSchema() {
  Impl& im = impl();
  im.schema_ = im.engine_->LoadSchema();
  im.cache_ = std::make_unique<StatementCache>(*im.engine_, im.schema_);
  im.batcher_.reset();
}

namespace {

bool MentionsTable(const std::string& statement, const std::string& table) {
  return Lower(statement).find(Lower(table)) != std::string::npos;
}

// A money value past the range of Currency stops the report. So that the
// practice can mend the row, the message names where such a value is
// stored: the money columns of the tables the statement names (of every
// table when it names none that holds one) are searched for values out of
// range, and the first few are given by table, column and key. A total
// that overflows with every stored value in range is said as such.
[[noreturn]] void FailMoneyOverflow(Engine& engine, const std::string& field, const std::string& statement) {
  constexpr const char* kRange = "922337203685477.5807";
  std::vector<TableDef> tables = engine.ListTables();
  bool any_named = false;
  for (const TableDef& t : tables)
    for (const auto& c : t.columns)
      if (c.kind == sql::ValueKind::Money && MentionsTable(statement, t.name)) any_named = true;
  std::string found;
  int count = 0;
  for (const TableDef& t : tables) {
    if (any_named && !MentionsTable(statement, t.name)) continue;
    std::string key = t.primary_key.empty() ? "rowid" : t.primary_key[0];
    for (const auto& c : t.columns) {
      if (c.kind != sql::ValueKind::Money || count >= 3) continue;
      std::string col = QuoteIdent(c.name);
      auto stmt = engine.Prepare("SELECT " + QuoteIdent(key) + ", " + col + " FROM " + QuoteIdent(t.name) + " WHERE " +
                                     col + " > " + kRange + " OR " + col + " < -" + kRange,
                                 "looking for money out of range in " + t.name);
      while (count < 3 && stmt->Step()) {
        found += std::string(found.empty() ? "" : "; ") + "table " + t.name + ", column " + c.name + ", " + key +
                 " " + CStr(stmt->Column(0)) + " holds " + CStr(stmt->Column(1));
        ++count;
      }
    }
  }
  std::string where = found.empty()
                          ? "the column " + field + " adds up to more than money holds"
                          : "a stored money value is beyond what money holds (" + found + ")";
  throw ReportError(kErrOverflow, "Overflow: " + where + "; money runs from -" + std::string(kRange) + " to " +
                                      kRange + ", in statement: " + statement);
}

// The rows of a running statement (a cache lease or an engine statement),
// typed by its translation's result columns, holding the values of the
// fields `keep` holds. `engine` and `statement` serve the message of a
// money value out of range.
template <typename Running>
std::shared_ptr<RowSet> CollectRows(Running& lease, const sql::Translation& tr, Engine& engine,
                                    const std::string& statement, const FieldSelection& keep) {
  auto rows = std::make_shared<RowSet>();
  int n = lease.ColumnCount();
  bool typed = static_cast<int>(tr.columns.size()) == n;
  rows->fields.reserve(n);
  for (int i = 0; i < n; ++i) {
    FieldInfo f;
    f.name = typed ? tr.columns[i].name : lease.ColumnName(i);
    f.kind = typed ? tr.columns[i].kind : sql::ValueKind::Unknown;
    f.type = FieldTypeOfKind(f.kind);
    f.held = keep.Holds(f.name);
    rows->fields.push_back(std::move(f));
  }
  std::vector<int> held;
  for (int i = 0; i < n; ++i)
    if (rows->fields[i].held) held.push_back(i);
  // Each value goes from the engine's row into the cell store as it lies
  // there, appended to its column; only the rarer conversions make a
  // Variant on the way. A field not held is not read at all, and its
  // column takes no cells.
  StoredView view;
  while (lease.Step()) {
    for (const int i : held) {
      try {
        if (lease.ColumnView(i, &view) && rows->PushStored(i, view)) continue;
        rows->PushValue(i, ValueOfKind(lease.Column(i), rows->fields[i].kind));
      } catch (const OverflowError&) {
        FailMoneyOverflow(engine, rows->fields[i].name, statement);
      }
    }
    rows->EndRow();
  }
  rows->EndRows();
  return rows;
}

std::shared_ptr<RowSet> ReadRows(StatementCache& cache, const std::string& statement,
                                 StatementForm* form = nullptr, const FieldSelection& keep = {}) {
  StatementCache::Lease lease = form ? cache.Get(statement, std::move(*form)) : cache.Get(statement);
  const sql::Translation& tr = lease.translation();
  if (!tr.is_query)
    throw DatabaseError("the statement returns no rows; run it with Execute: " + statement);
  auto rows = CollectRows(lease, tr, cache.engine(), statement, keep);
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

}  // namespace

std::shared_ptr<RowSet> Connection::Impl::ReadShapeChild(StatementCache& cache, const ShapeChild& child,
                                                          const RowSet& parent, const FieldSelection& keep) {
  const std::string& command = child.node.command;
  // The child is read for the parent's keys only, not every row of its
  // table: one invoice relates to all the practice's invoice lines (0.8 s
  // on a server of 20,000 patients), and the aged receivables relate each
  // provider's invoices to every payment of the practice. One integer
  // relate column; anything else is read whole, and so is the child of a
  // parent of many rows, which is likely to relate most of the child's
  // table anyway: listing 20,000 patients' keys in the statement cost the
  // billing list 25 MB and saved nothing.
  constexpr size_t kRestrictParentRows = 5000;
  const int key_field = child.relate.size() == 1 ? parent.FindField(child.relate[0].first) : -1;
  if (key_field >= 0 && parent.RowCount() <= kRestrictParentRows &&
      parent.fields[key_field].kind == sql::ValueKind::Integer) {
    std::vector<int64_t> keys;
    for (size_t r = 0; r < parent.RowCount(); ++r) {
      const Variant v = parent.Get(r, key_field);
      if (!v.IsNull()) keys.push_back(v.AsInteger());
    }
    std::sort(keys.begin(), keys.end());
    keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
    std::optional<sql::Translation> restricted;
    try {
      restricted = sql::TranslateRestrictedToKeys(command, child.relate[0].second, keys, schema_,
                                                  cache.engine().dialect());
    } catch (const ReportError&) {
      // The statement's own read below says what is wrong with it.
    }
    if (restricted) {
      auto stmt = cache.engine().Prepare(restricted->sql, command);
      auto rows = CollectRows(*stmt, *restricted, cache.engine(), command, keep);
      stmt->Reset();
      return rows;
    }
  }
  // A child read in part is nobody else's child: it is not kept.
  if (&cache != cache_.get() || !ReadsFromSnapshot() || !keep.All())
    return ReadRows(cache, command, nullptr, keep);
  auto kept = shape_children_.find(command);
  if (kept == shape_children_.end()) {
    auto rows = ReadRows(*cache_, command);
    // Kept from its second read on: a SHAPE run once (the billing list)
    // holds no second copy of its child.
    if (shape_children_seen_.insert(command).second) return rows;
    const int64_t count = static_cast<int64_t>(rows->RowCount());
    if (shape_child_rows_ + count > kShapeChildRowsMax) return rows;
    shape_child_rows_ += count;
    kept = shape_children_.emplace(command, std::move(rows)).first;
  }
  auto copy = std::make_shared<RowSet>(*kept->second);
  copy->id = NextRowSetId();
  return copy;
}

namespace {

// Runs each command of a SHAPE once and relates the children to their
// parent in memory: the child's rows are hashed by the child's relate
// columns, so a chapter is one lookup per parent row. `read_child` reads a
// child command.
using ChildReader =
    std::function<std::shared_ptr<RowSet>(const ShapeChild&, const RowSet& parent, const FieldSelection& keep)>;

// `keep` names the fields held at this level and below; the fields a
// chapter relates by are held on both sides.
std::shared_ptr<RowSet> RunShape(StatementCache& cache, const ShapeNode& node, const std::string& statement,
                                 const ChildReader& read_child, const FieldSelection& keep) {
  FieldSelection keep_here = keep;
  for (const ShapeChild& c : node.children)
    for (const auto& [pcol, ccol] : c.relate) keep_here.Add(pcol);
  auto parent = ReadRows(cache, node.command, nullptr, keep_here);
  for (const ShapeChild& c : node.children) {
    ChapterLink link;
    FieldSelection keep_child = keep.Chapter(c.name);
    for (const auto& [pcol, ccol] : c.relate) keep_child.Add(ccol);
    link.child = c.node.children.empty() ? read_child(c, *parent, keep_child)
                                         : RunShape(cache, c.node, statement, read_child, keep_child);
    for (const auto& [pcol, ccol] : c.relate) {
      link.parent_fields.push_back(RelateField(*parent, pcol, "parent", statement));
      link.child_fields.push_back(RelateField(*link.child, ccol, "child", statement));
    }
    link.index.Build(*link.child, link.child_fields);
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

std::shared_ptr<RowSet> Connection::Query(const std::string& statement, const FieldSelection& keep) const {
  Impl& im = impl();
  if (IsShapeStatement(statement)) {
    ShapeNode node = ParseShape(statement);
    try {
      StatementCache& cache = im.cache(false);
      auto rows = RunShape(
          cache, node, statement,
          [&](const ShapeChild& child, const RowSet& parent, const FieldSelection& keep_child) {
            return im.ReadShapeChild(cache, child, parent, keep_child);
          },
          keep);
      if (im.ReadsFromSnapshot()) im.Hold(rows);
      return rows;
    } catch (const ReportError& e) {
      // A command's own message names the inner command; add the SHAPE
      // statement it came from.
      if (e.description().find(statement) != std::string::npos) throw;
      throw DatabaseError(e.number(), e.description() + "\nin the SHAPE statement: " + statement);
    }
  }
  // Only results a lookup gives (a few rows) are kept; a report's main
  // listing is read once anyway. Each caller gets its own copy, since a
  // recordset may change its rows.
  constexpr size_t kCachedRowsMax = 16, kCachedStatementsMax = 50000;
  bool cacheable = im.ReadsFromSnapshot();
  if (!keep.All()) {
    auto rows = ReadRows(im.cache(false), statement, nullptr, keep);
    if (cacheable) im.Hold(rows);
    return rows;
  }
  if (cacheable) {
    auto hit = im.snapshot_rows_.find(statement);
    if (hit != im.snapshot_rows_.end()) {
      auto copy = std::make_shared<RowSet>(*hit->second);
      copy->id = NextRowSetId();
      return copy;
    }
  }
  // The statement is taken apart once, for the batcher and the cache.
  std::optional<StatementForm> form;
  if (cacheable && im.batch_lookups_) {
    form = ParameteriseLiterals(statement, LiftsDates(im.engine_->dialect()));
    if (auto rows = im.batcher().Find(statement, *form)) return rows;
  }
  const auto started = std::chrono::steady_clock::now();
  auto rows = ReadRows(im.cache(false), statement, form ? &*form : nullptr);
  if (form) im.batcher().Spent(std::chrono::duration<double>(std::chrono::steady_clock::now() - started).count());
  if (cacheable && rows->RowCount() <= kCachedRowsMax && im.snapshot_rows_.size() < kCachedStatementsMax)
    im.snapshot_rows_.emplace(statement, std::make_shared<const RowSet>(*rows));
  if (cacheable) im.Hold(rows);
  return rows;
}

std::vector<std::string> Connection::PrimaryKey(const std::string& table) {
  return impl().engine_->PrimaryKey(table);
}

int64_t Connection::RunEngineSql(const std::string& sql, const std::vector<Variant>& values,
                                 const std::string& original) {
  Impl& im = impl();
  Engine& engine = im.engine(true);
  // The engine's own marker for each value ("?1" is written by the callers).
  std::string text = sql;
  if (engine.dialect() != sql::Dialect::SQLite) {
    for (size_t i = values.size(); i >= 1; --i) {
      std::string from = "?" + std::to_string(i), to = engine.ParameterMarker(static_cast<int>(i));
      for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size()))
        text.replace(at, from.size(), to);
    }
  }
  auto stmt = engine.Prepare(text, original);
  for (size_t i = 0; i < values.size(); ++i) stmt->Bind(static_cast<int>(i) + 1, values[i]);
  while (stmt->Step()) {
  }
  stmt->Reset();
  return engine.Changes();
}

int64_t Connection::LastInsertId() { return impl().engine(true).LastInsertId(); }

sql::Dialect Connection::Dialect() const { return impl().engine_->dialect(); }

std::shared_ptr<RowSet> Connection::Impl::ReadBatch(const sql::Translation& tr, const std::string& original) {
  RunPlain("SAVEPOINT orv_lookup_batch");
  try {
    auto stmt = engine_->Prepare(tr.sql, original);
    auto rows = CollectRows(*stmt, tr, *engine_, original, FieldSelection());
    stmt->Reset();
    RunPlain("RELEASE SAVEPOINT orv_lookup_batch");
    return rows;
  } catch (...) {
    try {
      RunPlain("ROLLBACK TO SAVEPOINT orv_lookup_batch");
      RunPlain("RELEASE SAVEPOINT orv_lookup_batch");
    } catch (...) {
      // The session itself is gone; the statement run key by key will say so.
    }
    throw;
  }
}

std::shared_ptr<const std::vector<int64_t>> Connection::Impl::WalkedKeys(const std::vector<int64_t>& asked) const {
  if (asked.empty()) return nullptr;
  const std::unordered_set<int64_t> wanted(asked.begin(), asked.end());
  // Of the integer columns that hold every key asked (the rows held and
  // their chapters' children), the one of fewest values: a report walking
  // its open invoices asks for those, and the column of every payment's
  // invoice holds them too, and many more.
  std::shared_ptr<std::vector<int64_t>> best;
  std::function<void(const RowSet&)> visit = [&](const RowSet& rows) {
    for (size_t f = 0; f < rows.fields.size(); ++f) {
      const FieldInfo& field = rows.fields[f];
      if (!field.held || field.kind != sql::ValueKind::Integer || field.chapter >= 0) continue;
      std::unordered_set<int64_t> missing = wanted;
      for (size_t r = 0; r < rows.RowCount() && !missing.empty(); ++r) {
        const Variant v = rows.Get(r, static_cast<int>(f));
        if (!v.IsNull()) missing.erase(v.AsInteger());
      }
      if (!missing.empty()) continue;
      auto keys = std::make_shared<std::vector<int64_t>>();
      keys->reserve(rows.RowCount());
      for (size_t r = 0; r < rows.RowCount(); ++r) {
        const Variant v = rows.Get(r, static_cast<int>(f));
        if (!v.IsNull()) keys->push_back(v.AsInteger());
      }
      std::sort(keys->begin(), keys->end());
      keys->erase(std::unique(keys->begin(), keys->end()), keys->end());
      if (!best || keys->size() < best->size()) best = std::move(keys);
    }
    for (const ChapterLink& link : rows.chapters)
      if (link.child) visit(*link.child);
  };
  for (const auto& weak : held_)
    if (const auto rows = weak.lock()) visit(*rows);
  return best;
}

std::optional<LookupBatcher::Estimate> Connection::Impl::EstimateBatch(const sql::Translation& tr,
                                                                        const std::string& original) {
  // The server's cost of the whole plan (the second figure of the top
  // node's "cost=start..total") in its own units, where reading a page in
  // order costs 1. Batched reads on loopback took 10 to 20 µs a unit
  // (every key's payments on 20,000 patients: 37,000 units in 0.6 s); the
  // lower figure is taken, so a large lookup is batched somewhat early
  // rather than late.
  constexpr double kSecondsPerCostUnit = 10e-6;
  sql::Translation explain;
  explain.sql = "EXPLAIN " + tr.sql;
  explain.is_query = true;
  explain.columns.push_back({"QUERY PLAN", sql::ValueKind::Text});
  auto plan = ReadBatch(explain, original);
  if (plan->RowCount() == 0) return std::nullopt;
  const std::string top = CStr(plan->Get(0, 0));
  const size_t cost = top.find("cost=");
  const size_t dots = cost == std::string::npos ? cost : top.find("..", cost);
  const size_t rows = dots == std::string::npos ? dots : top.find("rows=", dots);
  if (rows == std::string::npos) return std::nullopt;
  LookupBatcher::Estimate e;
  e.seconds = std::strtod(top.c_str() + dots + 2, nullptr) * kSecondsPerCostUnit;
  e.rows = std::strtod(top.c_str() + rows + 5, nullptr);
  return e;
}

void Connection::BatchLookups(bool on) {
  Impl& im = impl();
  im.batch_lookups_ = on;
  if (!on && im.batcher_) im.batcher_->Clear();
}

int64_t Connection::BatchedLookupCount() const {
  return impl_ && impl_->batcher_ ? impl_->batcher_->stats().served : 0;
}

size_t Connection::CachedStatementCount() const { return impl_ ? impl_->cache_->size() : 0; }

}  // namespace orv::db
