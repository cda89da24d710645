#include "platform/db/postgres_engine.h"

#include <libpq-fe.h>

#include <algorithm>
#include <cctype>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <deque>
#include <map>
#include <system_error>
#include <vector>

#include "common/currency.h"
#include "common/datetime.h"
#include "platform/db/connection_url.h"
#include "platform/db/db_error.h"
#include "platform/sql/postgres_support.h"

namespace orv::db {

namespace {

// Type OIDs of the built-in types the engine reads and binds.
constexpr Oid kBool = 16, kBytea = 17, kInt8 = 20, kInt2 = 21, kInt4 = 23, kOid = 26,
              kFloat4 = 700, kFloat8 = 701, kDate = 1082, kTimestamp = 1114,
              kTimestampTz = 1184, kNumeric = 1700;

// Seconds a connection attempt may take when neither the URL nor
// PGCONNECT_TIMEOUT says: a server that is down must not hang the desk.
constexpr const char* kDefaultConnectTimeout = "10";

// How long a statement waits for a lock another session holds (a copy or a
// change of the tables under way) and how long it may run, before it fails
// with the statement in its message instead of hanging the desk. The URL
// may set either, as a query parameter ("?lock_timeout=30s") or a word of
// the key=value form ("lock_timeout=30s"); 0 waits without end. The
// defaults go to the server as libpq's "options", so a URL that gives its
// own options ("-c statement_timeout=...") is taken at its word. The
// statement timeout is generous: the longest report on a large practice
// runs for seconds.
constexpr const char* kDefaultLimits = "-c lock_timeout=10s -c statement_timeout=5min";

// The limits the URL sets itself; "" leaves the session's.
struct SessionLimits {
  std::string lock_timeout, statement_timeout;
};

// A duration as the server reads it: whole number, optional unit.
bool IsDuration(const std::string& v) {
  size_t i = 0;
  while (i < v.size() && std::isdigit(static_cast<unsigned char>(v[i]))) ++i;
  if (i == 0 || i > 9) return false;
  std::string unit = v.substr(i);
  return unit.empty() || unit == "ms" || unit == "s" || unit == "min" || unit == "h" || unit == "d";
}

// Takes lock_timeout and statement_timeout out of `url` (libpq refuses
// parameters it does not know) into the limits the session sets.
SessionLimits TakeSessionLimits(std::string& url) {
  SessionLimits limits;
  auto take = [&](const std::string& key, const std::string& value) {
    std::string* slot = key == "lock_timeout"        ? &limits.lock_timeout
                        : key == "statement_timeout" ? &limits.statement_timeout
                                                     : nullptr;
    if (!slot) return false;
    if (!IsDuration(value))
      throw DatabaseError("the connection's " + key + " must be a duration such as 30s, 2min or 0 (no limit), not '" +
                          value + "'");
    *slot = value;
    return true;
  };
  bool uri = url.rfind("postgresql://", 0) == 0 || url.rfind("postgres://", 0) == 0;
  std::string kept;
  if (uri) {
    size_t q = url.find('?');
    if (q == std::string::npos) return limits;
    for (size_t i = q + 1; i <= url.size();) {
      size_t amp = std::min(url.find('&', i), url.size());
      std::string item = url.substr(i, amp - i);
      size_t eq = item.find('=');
      if (!item.empty() && (eq == std::string::npos || !take(item.substr(0, eq), item.substr(eq + 1))))
        kept += (kept.empty() ? "" : "&") + item;
      i = amp + 1;
    }
    url = url.substr(0, q) + (kept.empty() ? "" : "?" + kept);
    return limits;
  }
  // key=value form: the two settings written as single words.
  size_t i = 0;
  while (i < url.size()) {
    size_t start = url.find_first_not_of(' ', i);
    if (start == std::string::npos) break;
    size_t end = std::min(url.find(' ', start), url.size());
    std::string word = url.substr(start, end - start);
    size_t eq = word.find('=');
    if (eq == std::string::npos || !take(word.substr(0, eq), word.substr(eq + 1)))
      kept += (kept.empty() ? "" : " ") + word;
    i = end;
  }
  url = kept;
  return limits;
}

// The key of the advisory lock that serialises installing the report
// functions when several workstations connect to a new database at once.
constexpr const char* kInstallLock = "741105";

std::string Hex(const Bytes& bytes) {
  static const char* digits = "0123456789abcdef";
  std::string out = "\\x";
  out.reserve(2 + bytes.size() * 2);
  for (uint8_t b : bytes) {
    out += digits[b >> 4];
    out += digits[b & 15];
  }
  return out;
}

Bytes FromHex(const char* text, size_t n) {
  Bytes out;
  if (n < 2 || text[0] != '\\' || text[1] != 'x') return Bytes(text, text + n);
  out.reserve((n - 2) / 2);
  auto val = [](char c) { return c <= '9' ? c - '0' : (c | 32) - 'a' + 10; };
  for (size_t i = 2; i + 1 < n; i += 2) out.push_back(static_cast<uint8_t>(val(text[i]) * 16 + val(text[i + 1])));
  return out;
}

// A numeric with at most four decimals and fifteen whole digits is money (or
// a count) and becomes Currency exactly; anything else a double.
Variant NumericValue(const char* text) {
  const char* dot = std::strchr(text, '.');
  size_t scale = dot ? std::strlen(dot + 1) : 0;
  size_t whole = dot ? static_cast<size_t>(dot - text) : std::strlen(text);
  if (text[0] == '-') --whole;
  if (scale <= 4 && whole <= 15 && std::strcmp(text, "NaN") != 0) {
    try {
      return Variant(Currency::FromDecimalText(text));
    } catch (const ReportError&) {
    }
  }
  return Variant(std::strtod(text, nullptr));
}

// The text of a parameter and the type the server should take it as; text
// goes as "unknown" so that the statement's context decides, as a literal.
std::pair<std::optional<std::string>, Oid> ParameterText(const Variant& value) {
  const auto& s = value.storage();
  if (value.IsNull() || value.IsEmpty()) return {std::nullopt, 0};
  if (auto* i = std::get_if<int32_t>(&s)) return {std::to_string(*i), kInt8};
  if (auto* l = std::get_if<int64_t>(&s)) return {std::to_string(*l), kInt8};
  if (auto* d = std::get_if<double>(&s)) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%.17g", *d);
    return {std::string(buf), kFloat8};
  }
  // Flags are stored as the host's -1/0.
  if (auto* b = std::get_if<bool>(&s)) return {std::string(*b ? "-1" : "0"), kInt8};
  if (auto* c = std::get_if<Currency>(&s)) return {c->ToFixed4(), kNumeric};
  if (auto* dt = std::get_if<DateTime>(&s)) return {dt->ToIso(), kTimestamp};
  if (auto* t = std::get_if<std::string>(&s)) return {*t, 0};
  if (auto* bytes = std::get_if<Bytes>(&s)) return {Hex(*bytes), kBytea};
  return {std::nullopt, 0};
}

// PostgreSQL keeps the first 63 bytes of a name (NAMEDATALEN - 1) and
// drops the rest, so two long index names that begin alike would become one.
constexpr size_t kMaxNameBytes = 63;

// The name an index gets on the server: the name itself when it fits, else
// its first bytes (up to 54, cut at a character boundary), "_" and 8 hex
// digits of a hash (32-bit FNV-1a) of the whole name. Deterministic, so
// reading the catalog back can tell a shortened name from its full one.
std::string ServerIndexName(const std::string& name) {
  if (name.size() <= kMaxNameBytes) return name;
  uint32_t hash = 2166136261u;
  for (unsigned char c : name) hash = (hash ^ c) * 16777619u;
  size_t cut = kMaxNameBytes - 9;
  while (cut > 0 && (static_cast<unsigned char>(name[cut]) & 0xC0) == 0x80) --cut;
  char digits[9];
  std::snprintf(digits, sizeof digits, "%08x", hash);
  return name.substr(0, cut) + "_" + digits;
}

std::string Lower(std::string text) {
  for (char& c : text) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return text;
}

std::string QuoteLiteral(const std::string& text) {
  std::string out = "'";
  for (char c : text) {
    if (c == '\'') out += '\'';
    out += c;
  }
  return out + "'";
}

class PgResult {
 public:
  explicit PgResult(PGresult* r = nullptr) : r_(r) {}
  ~PgResult() { PQclear(r_); }
  PgResult(const PgResult&) = delete;
  PgResult(PgResult&& o) noexcept : r_(o.r_) { o.r_ = nullptr; }
  PgResult& operator=(PgResult&& o) noexcept {
    if (this != &o) {
      PQclear(r_);
      r_ = o.r_;
      o.r_ = nullptr;
    }
    return *this;
  }
  PGresult* get() const { return r_; }
  bool ok() const {
    auto st = PQresultStatus(r_);
    return r_ && (st == PGRES_COMMAND_OK || st == PGRES_TUPLES_OK || st == PGRES_COPY_IN);
  }

 private:
  PGresult* r_;
};

class PostgresEngine;

class PostgresStatement : public EngineStatement {
 public:
  PostgresStatement(PostgresEngine& engine, std::string sql, std::string original)
      : engine_(engine), sql_(std::move(sql)), original_(std::move(original)) {}
  ~PostgresStatement() override;

  void Reset() override {
    Discard();
    result_ = PgResult();
    row_ = -1;
    executed_ = false;
    values_.clear();
    types_.clear();
  }
  void Bind(int index, const Variant& value) override {
    if (index < 1) return;
    if (static_cast<size_t>(index) > values_.size()) {
      values_.resize(index);
      types_.resize(index, 0);
    }
    auto [text, type] = ParameterText(value);
    values_[index - 1] = std::move(text);
    types_[index - 1] = type;
  }
  bool Step() override;
  // The shape of the result is known once the statement has run; asking
  // for it first runs the statement with the values bound so far (callers
  // bind, then ask, then step), as SQLite knows it after preparing.
  int ColumnCount() const override {
    if (!executed_) const_cast<PostgresStatement*>(this)->Execute();
    return PQnfields(result_.get());
  }
  std::string ColumnName(int column) const override {
    if (!executed_) const_cast<PostgresStatement*>(this)->Execute();
    const char* n = PQfname(result_.get(), column);
    return n ? n : "";
  }
  Variant Column(int column) const override;
  bool ColumnView(int column, StoredView* out) const override;
  const std::string& Sql() const override { return sql_; }

  // Reads the rest of the results off the connection and keeps them, so
  // that another statement can run while this one is still being stepped.
  void Buffer();

 private:
  void Execute();
  // The next result of the running statement (kept ones first), or none.
  PgResult NextResult();
  // Makes `r` the current result: a row, or the last result (the end of
  // the rows, a command's outcome, or a failure, which throws).
  void Take(PgResult r);
  // Drops whatever the running statement has not yet delivered.
  void Discard();

  PostgresEngine& engine_;
  std::string sql_, original_;
  std::string name_;               // server-side name once prepared
  std::vector<Oid> prepared_types_;
  std::vector<std::optional<std::string>> values_;
  std::vector<Oid> types_;
  PgResult result_;
  int row_ = -1;
  bool executed_ = false;
  // Rows come one result each (single-row mode), so a large result is
  // never held whole by libpq as well as by the recordset reading it.
  // A cursor in the snapshot (DECLARE ... NO SCROLL CURSOR, FETCH FORWARD
  // 1,000 to 10,000 rows a time) was tried in its place and not kept: the
  // patient list of 20,000 patients cost the same client time either way
  // (0.34 s of CPU), the peaks were the same, and the server ran a
  // cursor's query without parallel workers, so the long lists took as
  // long or longer (100,000 patients: patient list 7.1 s against 8.6 s,
  // unapplied payments 8.5 s against 9.5 s); a lookup would also pay
  // three round trips (declare, fetch, close) for its one row.
  // "COPY (statement) TO STDOUT" for the statements without parameters,
  // its text rows split and unescaped in place, was tried too and not
  // kept: it saved the client up to 1 µs a row (0.11 s of CPU for the patient
  // list of 100,000 patients, 0.04 s for the 296,000 invoice lines of
  // billing by client at 20,000), but the server spent more writing COPY
  // text than result rows (0.27-0.29 s against 0.22-0.26 s on the same
  // reads), and the server, not the client, is the slower side of a large
  // read: on a busy two-core machine the patient list took 15% longer by
  // the clock (median of three), billing by client 5% (of five). COPY's
  // binary form cost the server as much.
  bool on_wire_ = false;          // results still to read off the connection
  std::deque<PgResult> buffered_;  // read off early by Buffer
  // The columns' type OIDs, read off the first row of a run: in
  // single-row mode each row is a result of its own, and asking each for
  // the type of each cell was a library call per cell.
  mutable std::vector<Oid> column_types_;
};

class PostgresEngine : public Engine {
 public:
  explicit PostgresEngine(const std::string& url) { Connect(url); }
  ~PostgresEngine() override {
    if (conn_) PQfinish(conn_);
  }

  std::unique_ptr<EngineStatement> Prepare(const std::string& sql, const std::string& original) override {
    // The server parses the statement when it first runs, with the types of
    // the values bound to it; a statement the server rejects fails there,
    // with the server's words and place.
    return std::make_unique<PostgresStatement>(*this, sql, original);
  }
  int64_t Changes() const override { return changes_; }
  int64_t LastInsertId() const override {
    PgResult r(PQexec(Idle(), "SELECT lastval()"));
    if (!r.ok()) return 0;
    return std::strtoll(PQgetvalue(r.get(), 0, 0), nullptr, 10);
  }
  sql::Schema LoadSchema() override;
  std::vector<std::string> PrimaryKey(const std::string& table) override;
  sql::Dialect dialect() const override { return sql::Dialect::PostgreSQL; }
  std::string ParameterMarker(int n) const override { return "$" + std::to_string(n); }
  std::string Describe() const override { return where_; }
  // The server instance (its start time and port) and the database's own
  // number, which no spelling of the URL changes.
  std::string Identity() override {
    PgResult r(PQexec(Idle(),
                      "SELECT CAST(pg_postmaster_start_time() AS text) || ' port ' || current_setting('port') || "
                      "' database ' || CAST(oid AS text) FROM pg_database WHERE datname = current_database()"));
    if (!r.ok() || PQntuples(r.get()) != 1) return "";
    return std::string("postgresql ") + PQgetvalue(r.get(), 0, 0);
  }

  void BeginSnapshot() override {
    // Every statement of the report reads the same committed state, however
    // busy the practice is, and the report cannot write by mistake.
    Run("BEGIN ISOLATION LEVEL REPEATABLE READ READ ONLY", "the report's snapshot");
  }
  void EndSnapshot() override {
    if (PQtransactionStatus(Idle()) == PQTRANS_IDLE) return;
    Run(PQtransactionStatus(conn_) == PQTRANS_INERROR ? "ROLLBACK" : "COMMIT", "the report's snapshot");
  }

  std::vector<TableDef> ListTables() override;
  void CreateTable(const TableDef& table) override;
  void DropTable(const std::string& table) override {
    primary_keys_.clear();
    Run("DROP TABLE IF EXISTS " + QuoteIdent(table) + " CASCADE", "dropping " + table);
  }
  void InsertRows(const TableDef& table, const std::vector<std::vector<Variant>>& rows) override;
  void FinishTable(const TableDef& table) override;
  // The planner needs statistics of the new rows before the first report:
  // without them a receivables statement with per-patient subqueries was
  // planned as full index range scans and ran for minutes instead of
  // seconds (bench/engines.cpp), before autovacuum would have caught up.
  void FinishCopy() override { Run("ANALYZE", "gathering statistics after the copy"); }

  // --- for statements ---
  PGconn* conn() const { return conn_; }
  // The connection, free for a new command: a statement whose rows are
  // still coming keeps the rest first.
  PGconn* Idle() const {
    if (PostgresStatement* s = streaming_) {
      streaming_ = nullptr;
      s->Buffer();
    }
    return conn_;
  }
  // The statement whose results are on the connection; nullptr when none.
  void Streaming(PostgresStatement* s) { streaming_ = s; }
  void StreamDone(const PostgresStatement* s) {
    if (streaming_ == s) streaming_ = nullptr;
  }
  std::string NextName() { return "orv" + std::to_string(++statement_number_); }
  void SetChanges(int64_t n) { changes_ = n; }
  // Sends the host's "now" to the session when it changed since the last
  // statement: GETDATE() on the server reads it, so every report sees the
  // injectable clock and the statement text stays cacheable.
  void SyncClock(const std::string& original);
  // The message of a failed command: the server's words, the place in the
  // statement, and the database, and whether the connection itself is gone.
  [[noreturn]] void Fail(PGresult* result, const std::string& original, const std::string& sql);

 private:
  void Connect(const std::string& url);
  void InstallSupport();
  PgResult Run(const std::string& sql, const std::string& what) {
    SyncClock(what);
    PgResult r(PQexec(Idle(), sql.c_str()));
    if (!r.ok()) Fail(r.get(), what, sql);
    return r;
  }

  PGconn* conn_ = nullptr;
  mutable PostgresStatement* streaming_ = nullptr;
  std::string where_;
  SessionLimits limits_;
  int64_t changes_ = 0;
  int statement_number_ = 0;
  std::string clock_sent_;
  std::map<std::string, std::vector<std::string>> primary_keys_;  // by lower-case table name
};

void PostgresEngine::Connect(const std::string& given_url) {
  std::string url = given_url;
  limits_ = TakeSessionLimits(url);
  // Keywords given before "dbname" are defaults that the URL's own
  // parameters override (libpq expands dbname in place).
  const char* keys[] = {"connect_timeout", "application_name", "options", "dbname", nullptr};
  const char* timeout = std::getenv("PGCONNECT_TIMEOUT");
  const char* vals[] = {timeout && *timeout ? timeout : kDefaultConnectTimeout, "orvenda-reports", kDefaultLimits,
                        url.c_str(), nullptr};
  conn_ = PQconnectdbParams(keys, vals, 1);
  if (!conn_) throw DatabaseError("cannot connect to PostgreSQL: out of memory");
  auto text = [](const char* s) { return std::string(s && *s ? s : "?"); };
  if (PQstatus(conn_) != CONNECTION_OK) {
    // Before a session exists PQhost and friends may be empty; the URL
    // without its password still says where we tried.
    std::string msg = PQerrorMessage(conn_);
    while (!msg.empty() && (msg.back() == '\n' || msg.back() == ' ')) msg.pop_back();
    PQfinish(conn_);
    conn_ = nullptr;
    throw DatabaseError("cannot connect to PostgreSQL (" + RedactPassword(url) + "): " + MaskSecrets(msg));
  }
  where_ = "PostgreSQL at host " + text(PQhost(conn_)) + " port " + text(PQport(conn_)) +
           " database " + text(PQdb(conn_));
  // Dates in ISO form both ways, T-SQL's month-first reading of "1/2/2026",
  // UTF-8 text, and the report functions on the search path.
  // The practice's tables live in "public"; "orvenda" holds only the
  // report functions (a login named orvenda must not pull the tables there).
  PQsetNoticeProcessor(conn_, [](void*, const char*) {}, nullptr);
  // No JIT: the reports' statements are many correlated subqueries whose
  // estimated cost passes the JIT threshold, and compiling them took longer
  // than running them (2.3 s of 4.3 s for the aged receivables by patient).
  // One plan per prepared statement: the only parameters the layer binds
  // are whole-number keys compared by "=", where the plan does not depend
  // on the value, and re-planning an OR over three holder columns for each
  // family cost more than running it (bulk statements 1.40 s against 0.82 s
  // for 1,241 families).
  Run("SET client_encoding = 'UTF8'; SET DateStyle = 'ISO, MDY'; "
      "SET search_path = public, orvenda; SET jit = off; SET plan_cache_mode = force_generic_plan" +
          (limits_.lock_timeout.empty() ? "" : "; SET lock_timeout = '" + limits_.lock_timeout + "'") +
          (limits_.statement_timeout.empty() ? "" : "; SET statement_timeout = '" + limits_.statement_timeout + "'"),
      "setting up the session");
  // The limits in force, for the message of a statement they stop.
  PgResult limits(PQexec(conn_, "SELECT current_setting('lock_timeout'), current_setting('statement_timeout')"));
  if (limits.ok() && PQntuples(limits.get()) == 1) {
    limits_.lock_timeout = PQgetvalue(limits.get(), 0, 0);
    limits_.statement_timeout = PQgetvalue(limits.get(), 0, 1);
  }
  InstallSupport();
}

// The printed SQL calls functions and a collation of schema "orvenda". A new
// database gets them on first connect; an older set is replaced. One
// workstation installs while the others wait on an advisory lock.
void PostgresEngine::InstallSupport() {
  // Asks without failing, so that the question can run inside the install's
  // transaction too.
  auto version = [&]() -> int {
    PgResult exists(PQexec(conn_, "SELECT to_regproc('orvenda.orv_support_version') IS NOT NULL"));
    if (!exists.ok() || PQntuples(exists.get()) != 1 || PQgetvalue(exists.get(), 0, 0)[0] != 't') return 0;
    PgResult r(PQexec(conn_, "SELECT orvenda.orv_support_version()"));
    if (!r.ok() || PQntuples(r.get()) != 1) return 0;
    return std::atoi(PQgetvalue(r.get(), 0, 0));
  };
  if (version() >= sql::kPostgresSupportVersion) return;
  try {
    Run("BEGIN", "installing the report functions");
    Run(std::string("SELECT pg_advisory_xact_lock(") + kInstallLock + ")", "installing the report functions");
    if (version() < sql::kPostgresSupportVersion)
      for (const std::string& statement : sql::PostgresSupportStatements())
        Run(statement, "installing the report functions");
    Run("COMMIT", "installing the report functions");
  } catch (const ReportError& e) {
    PQclear(PQexec(conn_, "ROLLBACK"));
    throw DatabaseError(e.number(), "the database lacks the report functions and they could not be installed (" +
                                        where_ + "): " + e.description());
  }
}

void PostgresEngine::SyncClock(const std::string& original) {
  std::string now = Clock::Now().ToIso();
  if (now == clock_sent_) return;
  const char* values[] = {now.c_str()};
  PgResult r(PQexecParams(Idle(), "SELECT set_config('orvenda.now', $1, false)", 1, nullptr, values,
                          nullptr, nullptr, 0));
  if (!r.ok()) Fail(r.get(), original, "SELECT set_config('orvenda.now', ...)");
  clock_sent_ = now;
}

void PostgresEngine::Fail(PGresult* result, const std::string& original, const std::string& sql) {
  std::string msg;
  int offset = -1;
  if (result) {
    const char* primary = PQresultErrorField(result, PG_DIAG_MESSAGE_PRIMARY);
    const char* position = PQresultErrorField(result, PG_DIAG_STATEMENT_POSITION);
    const char* state = PQresultErrorField(result, PG_DIAG_SQLSTATE);
    msg = primary ? primary : PQresultErrorMessage(result);
    if (position) offset = std::atoi(position) - 1;
    // A wait cut short by the session's limits says which limit and how to
    // change it.
    if (state && std::strcmp(state, "55P03") == 0) {
      msg += " (waited " + limits_.lock_timeout + ", the lock timeout; another session holds the table; "
             "lock_timeout= in the URL sets the wait)";
    } else if (state && std::strcmp(state, "57014") == 0 && msg.find("statement timeout") != std::string::npos) {
      msg += " (ran " + limits_.statement_timeout + ", the statement timeout; statement_timeout= in the URL "
             "sets the limit)";
    }
  }
  if (msg.empty()) msg = PQerrorMessage(conn_);
  while (!msg.empty() && (msg.back() == '\n' || msg.back() == ' ')) msg.pop_back();
  if (PQstatus(conn_) != CONNECTION_OK) {
    // The server went away (stopped, restarted, network): say so plainly;
    // the session's state is gone, so nothing can be retried silently.
    clock_sent_.clear();
    throw DatabaseError("lost the connection to " + where_ + ": " + msg + "\nin statement: " + original);
  }
  throw DatabaseError(DescribeStatementError("the database rejected the statement (" + where_ + "): " + msg,
                                             original, sql, offset));
}

PostgresStatement::~PostgresStatement() {
  Discard();
  if (!name_.empty() && engine_.conn() && PQstatus(engine_.conn()) == CONNECTION_OK) {
    PQclear(PQexec(engine_.Idle(), ("DEALLOCATE " + name_).c_str()));
  }
}

void PostgresStatement::Execute() {
  Discard();
  PGconn* conn = engine_.Idle();
  engine_.SyncClock(original_);
  // Prepared once per statement; again only when the bound values' types
  // change (a NULL bound where a number was, say).
  if (name_.empty() || prepared_types_ != types_) {
    if (!name_.empty()) PQclear(PQexec(conn, ("DEALLOCATE " + name_).c_str()));
    name_.clear();
    std::string name = engine_.NextName();
    PgResult prepared(PQprepare(conn, name.c_str(), sql_.c_str(), static_cast<int>(types_.size()),
                                types_.empty() ? nullptr : types_.data()));
    if (!prepared.ok()) engine_.Fail(prepared.get(), original_, sql_);
    name_ = name;
    prepared_types_ = types_;
  }
  std::vector<const char*> values(values_.size());
  for (size_t i = 0; i < values_.size(); ++i) values[i] = values_[i] ? values_[i]->c_str() : nullptr;
  result_ = PgResult();
  row_ = -1;
  column_types_.clear();
  if (!PQsendQueryPrepared(conn, name_.c_str(), static_cast<int>(values.size()),
                           values.empty() ? nullptr : values.data(), nullptr, nullptr, 0))
    engine_.Fail(nullptr, original_, sql_);
  // Without single-row mode (refused) the rows come in one result, as
  // before; Step reads either.
  PQsetSingleRowMode(conn);
  on_wire_ = true;
  engine_.Streaming(this);
  executed_ = true;
  engine_.SetChanges(0);
  Take(NextResult());
}

PgResult PostgresStatement::NextResult() {
  if (!buffered_.empty()) {
    PgResult r = std::move(buffered_.front());
    buffered_.pop_front();
    return r;
  }
  if (!on_wire_) return PgResult();
  PgResult r(PQgetResult(engine_.conn()));
  if (!r.get()) {
    on_wire_ = false;
    engine_.StreamDone(this);
  }
  return r;
}

void PostgresStatement::Take(PgResult r) {
  if (!r.get()) return;
  if (PQresultStatus(r.get()) == PGRES_SINGLE_TUPLE) {
    result_ = std::move(r);
    row_ = -1;
    return;
  }
  // The last result: the connection is free once the end is read.
  Discard();
  result_ = PgResult();
  row_ = -1;
  if (!r.ok()) engine_.Fail(r.get(), original_, sql_);
  const char* tuples = PQcmdTuples(r.get());
  engine_.SetChanges(tuples && *tuples ? std::strtoll(tuples, nullptr, 10) : 0);
  result_ = std::move(r);
}

void PostgresStatement::Buffer() {
  while (on_wire_) {
    PgResult r(PQgetResult(engine_.conn()));
    if (!r.get()) {
      on_wire_ = false;
    } else {
      buffered_.push_back(std::move(r));
    }
  }
  engine_.StreamDone(this);
}

void PostgresStatement::Discard() {
  buffered_.clear();
  while (on_wire_) {
    PGresult* r = PQgetResult(engine_.conn());
    if (!r) on_wire_ = false;
    PQclear(r);
  }
  engine_.StreamDone(this);
}

bool PostgresStatement::Step() {
  if (!executed_) Execute();
  for (;;) {
    if (result_.get() && row_ + 1 < PQntuples(result_.get())) {
      ++row_;
      return true;
    }
    if (!on_wire_ && buffered_.empty()) return false;
    Take(NextResult());
  }
}

Variant PostgresStatement::Column(int column) const {
  PGresult* r = result_.get();
  if (!r || row_ < 0 || PQgetisnull(r, row_, column)) return Variant::Null();
  const char* v = PQgetvalue(r, row_, column);
  size_t n = static_cast<size_t>(PQgetlength(r, row_, column));
  switch (PQftype(r, column)) {
    case kInt2:
    case kInt4:
    case kInt8:
    case kOid:
      return Variant::Int64(std::strtoll(v, nullptr, 10));
    case kBool:
      return Variant::Int64(v[0] == 't' ? 1 : 0);
    case kFloat4:
    case kFloat8:
      return Variant(std::strtod(v, nullptr));
    case kNumeric:
      return NumericValue(v);
    case kDate:
      return Variant(std::string(v, n) + " 00:00:00");
    case kTimestamp:
    case kTimestampTz:
      return Variant(std::string(v, n));
    case kBytea:
      return Variant(FromHex(v, n));
    default:
      return Variant(std::string(v, n));
  }
}

// The raw count of the amount a numeric's text writes, when NumericValue
// makes it money (at most fifteen whole digits and four decimals) and the
// text is plain digits, as the server prints them; false for anything else
// (NaN, a longer fraction, an amount at or past money's edge), which
// NumericValue then reads.
bool PlainMoneyText(std::string_view text, int64_t* raw) {
  size_t i = 0;
  const bool negative = !text.empty() && text[0] == '-';
  if (negative) ++i;
  int64_t whole = 0;
  size_t whole_digits = 0;
  for (; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, ++whole_digits) whole = whole * 10 + (text[i] - '0');
  // Past what money holds (its edge too), NumericValue decides.
  if (whole_digits == 0 || whole_digits > 15 || whole >= 922337203685477) return false;
  int64_t fraction = 0;
  size_t scale = 0;
  if (i < text.size() && text[i] == '.') {
    for (++i; i < text.size() && text[i] >= '0' && text[i] <= '9'; ++i, ++scale) {
      if (scale == 4) return false;
      fraction = fraction * 10 + (text[i] - '0');
    }
  }
  if (i != text.size()) return false;
  for (size_t s = scale; s < 4; ++s) fraction *= 10;
  const int64_t count = whole * Currency::kScale + fraction;
  *raw = negative ? -count : count;
  return true;
}

// Numbers, money, timestamps and text in place, as Column would give them;
// a numeric that is no plain amount, a date (Column adds its time) and
// blobs go through Column. Money and timestamps through Column made a
// string and a Variant per cell, parsed again as they were stored.
bool PostgresStatement::ColumnView(int column, StoredView* out) const {
  PGresult* r = result_.get();
  if (!r || row_ < 0) {
    out->cls = StoredView::Class::Null;
    return true;
  }
  if (column_types_.empty()) {
    const int n = PQnfields(r);
    column_types_.resize(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) column_types_[static_cast<size_t>(i)] = PQftype(r, i);
  }
  if (column < 0 || static_cast<size_t>(column) >= column_types_.size()) return false;
  // A Null reads as no bytes, so only a value of no bytes is asked whether
  // it is one: the length is wanted anyway, and a long list reads millions
  // of values.
  const size_t n = static_cast<size_t>(PQgetlength(r, row_, column));
  if (n == 0 && PQgetisnull(r, row_, column)) {
    out->cls = StoredView::Class::Null;
    return true;
  }
  const char* v = PQgetvalue(r, row_, column);
  switch (column_types_[static_cast<size_t>(column)]) {
    case kInt2:
    case kInt4:
    case kInt8:
    case kOid:
      // The server writes whole numbers as plain decimal digits.
      if (std::from_chars(v, v + n, out->integer).ec != std::errc()) return false;
      out->cls = StoredView::Class::Integer;
      return true;
    case kBool:
      out->cls = StoredView::Class::Integer;
      out->integer = v[0] == 't' ? 1 : 0;
      return true;
    case kFloat4:
    case kFloat8:
      out->cls = StoredView::Class::Float;
      out->number = std::strtod(v, nullptr);
      return true;
    case kNumeric:
      if (!PlainMoneyText(std::string_view(v, n), &out->integer)) return false;
      out->cls = StoredView::Class::Money;
      return true;
    case kDate:
    case kBytea:
      return false;
    default:  // text, and timestamps, which Column gives as their text
      out->cls = StoredView::Class::Text;
      out->bytes = std::string_view(v, n);
      return true;
  }
}

// The declared SQL Server type of each column is kept as the column's
// comment, so the translator sees the same types as on SQLite; a table made
// by other means falls back to a mapping of PostgreSQL's types.
std::string DeclaredOf(const std::string& pg_type) {
  if (pg_type == "numeric(19,4)") return "MONEY";
  if (pg_type.rfind("timestamp", 0) == 0 || pg_type == "date") return "DATETIME";
  if (pg_type == "integer" || pg_type == "smallint") return "INTEGER";
  if (pg_type == "bigint") return "BIGINT";
  if (pg_type == "double precision" || pg_type == "real") return "FLOAT";
  if (pg_type == "bytea") return "BLOB";
  if (pg_type.rfind("numeric", 0) == 0) return "DECIMAL" + pg_type.substr(7);
  if (pg_type.rfind("character varying", 0) == 0) return "VARCHAR" + pg_type.substr(17);
  if (pg_type.rfind("character", 0) == 0 && pg_type.size() > 9) return "CHAR" + pg_type.substr(9);
  if (pg_type == "boolean") return "BIT";
  return "TEXT";
}

sql::Schema PostgresEngine::LoadSchema() {
  primary_keys_.clear();
  sql::Schema schema;
  for (TableDef& t : ListTables()) schema.AddTable(t.name, std::move(t.columns), std::move(t.primary_key));
  return schema;
}

std::vector<TableDef> PostgresEngine::ListTables() {
  PgResult cols = Run(
      "SELECT c.relname, a.attname, format_type(a.atttypid, a.atttypmod), "
      "col_description(c.oid, a.attnum) "
      "FROM pg_class c JOIN pg_namespace n ON n.oid = c.relnamespace "
      "JOIN pg_attribute a ON a.attrelid = c.oid "
      "WHERE n.nspname = current_schema() AND c.relkind IN ('r', 'v', 'p') "
      "AND a.attnum > 0 AND NOT a.attisdropped ORDER BY c.relname, a.attnum",
      "reading the tables");
  std::vector<TableDef> tables;
  std::map<std::string, size_t> by_name;
  for (int i = 0; i < PQntuples(cols.get()); ++i) {
    std::string table = PQgetvalue(cols.get(), i, 0);
    auto it = by_name.find(table);
    if (it == by_name.end()) {
      it = by_name.emplace(table, tables.size()).first;
      tables.push_back(TableDef{table, {}, {}, {}});
    }
    sql::ColumnType c;
    c.name = PQgetvalue(cols.get(), i, 1);
    c.declared = PQgetisnull(cols.get(), i, 3) ? DeclaredOf(PQgetvalue(cols.get(), i, 2))
                                               : std::string(PQgetvalue(cols.get(), i, 3));
    c.kind = sql::Schema::KindOfDeclared(c.declared, &c.length);
    tables[it->second].columns.push_back(std::move(c));
  }
  PgResult idx = Run(
      "SELECT t.relname, i.relname, x.indisprimary, x.indisunique, a.attname, obj_description(i.oid, 'pg_class') "
      "FROM pg_index x JOIN pg_class i ON i.oid = x.indexrelid JOIN pg_class t ON t.oid = x.indrelid "
      "JOIN pg_namespace n ON n.oid = t.relnamespace "
      "CROSS JOIN LATERAL unnest(x.indkey::int2[]) WITH ORDINALITY AS k(attnum, ord) "
      "JOIN pg_attribute a ON a.attrelid = t.oid AND a.attnum = k.attnum "
      "WHERE n.nspname = current_schema() ORDER BY t.relname, i.relname, k.ord",
      "reading the indexes");
  for (int i = 0; i < PQntuples(idx.get()); ++i) {
    auto it = by_name.find(PQgetvalue(idx.get(), i, 0));
    if (it == by_name.end()) continue;
    TableDef& t = tables[it->second];
    std::string index = PQgetvalue(idx.get(), i, 1);
    std::string column = PQgetvalue(idx.get(), i, 4);
    // A shortened name reads back as the full name its comment keeps, so
    // a copy back to a file has the index's own name again.
    if (!PQgetisnull(idx.get(), i, 5)) {
      std::string full = PQgetvalue(idx.get(), i, 5);
      if (full != index && ServerIndexName(full) == index) index = full;
    }
    if (PQgetvalue(idx.get(), i, 2)[0] == 't') {
      t.primary_key.push_back(column);
      continue;
    }
    if (t.indexes.empty() || t.indexes.back().name != index)
      t.indexes.push_back(IndexDef{index, {}, PQgetvalue(idx.get(), i, 3)[0] == 't'});
    t.indexes.back().columns.push_back(column);
  }
  return tables;
}

std::vector<std::string> PostgresEngine::PrimaryKey(const std::string& table) {
  // Asked on every recordset write: the catalog is read once per schema
  // load, keyed by lower-case name (names compare without regard to case,
  // as on SQL Server).
  if (primary_keys_.empty())
    for (const TableDef& t : ListTables()) primary_keys_[Lower(t.name)] = t.primary_key;
  auto it = primary_keys_.find(Lower(table));
  return it == primary_keys_.end() ? std::vector<std::string>{} : it->second;
}

// The PostgreSQL column type of a declared SQL Server type. Text of every
// kind is unbounded bpchar (trailing blanks do not count in comparisons)
// with the case-insensitive collation, so that =, IN, GROUP BY and DISTINCT
// compare text as SQL Server's default collation does.
std::string PostgresType(const sql::ColumnType& c, bool identity) {
  switch (c.kind) {
    case sql::ValueKind::Integer:
    case sql::ValueKind::Boolean: {
      std::string upper;
      for (char ch : c.declared) upper += static_cast<char>(std::toupper(static_cast<unsigned char>(ch)));
      std::string base = upper.find("BIGINT") != std::string::npos ? "bigint" : "integer";
      return identity ? base + " GENERATED BY DEFAULT AS IDENTITY" : base;
    }
    case sql::ValueKind::Money: return "numeric(19,4)";
    case sql::ValueKind::Decimal: {
      size_t open = c.declared.find('(');
      return open == std::string::npos ? "numeric" : "numeric" + c.declared.substr(open);
    }
    case sql::ValueKind::Float: return "double precision";
    case sql::ValueKind::Date: return "timestamp";
    case sql::ValueKind::Blob: return "bytea";
    case sql::ValueKind::Text:
    case sql::ValueKind::Unknown: return "bpchar COLLATE orvenda.orv_ci";
  }
  return "bpchar COLLATE orvenda.orv_ci";
}

void PostgresEngine::CreateTable(const TableDef& t) {
  primary_keys_.clear();
  bool single_int_key = t.primary_key.size() == 1;
  std::string ddl = "CREATE TABLE " + QuoteIdent(t.name) + " (";
  for (size_t i = 0; i < t.columns.size(); ++i) {
    const auto& c = t.columns[i];
    bool identity = single_int_key && c.name == t.primary_key[0] && c.kind == sql::ValueKind::Integer;
    ddl += (i ? ", " : "") + QuoteIdent(c.name) + " " + PostgresType(c, identity);
  }
  if (!t.primary_key.empty()) {
    ddl += ", PRIMARY KEY (";
    for (size_t i = 0; i < t.primary_key.size(); ++i) ddl += (i ? ", " : "") + QuoteIdent(t.primary_key[i]);
    ddl += ")";
  }
  ddl += ")";
  Run(ddl, "creating table " + t.name);
  for (const auto& c : t.columns)
    Run("COMMENT ON COLUMN " + QuoteIdent(t.name) + "." + QuoteIdent(c.name) + " IS " + QuoteLiteral(c.declared),
        "creating table " + t.name);
  for (const IndexDef& ix : t.indexes) {
    std::string cols;
    for (const auto& c : ix.columns) cols += (cols.empty() ? "" : ", ") + QuoteIdent(c);
    std::string name = ServerIndexName(ix.name);
    Run(std::string(ix.unique ? "CREATE UNIQUE INDEX " : "CREATE INDEX ") + QuoteIdent(name) + " ON " +
            QuoteIdent(t.name) + " (" + cols + ")",
        "creating index " + ix.name);
    if (name != ix.name)
      Run("COMMENT ON INDEX " + QuoteIdent(name) + " IS " + QuoteLiteral(ix.name), "creating index " + ix.name);
  }
}

// COPY's text form of one value: tab-separated, \N for NULL, backslash
// escapes for the characters that would end the field or the row.
void AppendCopyValue(std::string& out, const Variant& value) {
  auto [text, type] = ParameterText(value);
  if (!text) {
    out += "\\N";
    return;
  }
  for (char c : *text) {
    switch (c) {
      case '\\': out += "\\\\"; break;
      case '\t': out += "\\t"; break;
      case '\n': out += "\\n"; break;
      case '\r': out += "\\r"; break;
      default: out += c;
    }
  }
}

void PostgresEngine::InsertRows(const TableDef& t, const std::vector<std::vector<Variant>>& rows) {
  if (rows.empty()) return;
  std::string cols;
  for (const auto& c : t.columns) cols += (cols.empty() ? "" : ", ") + QuoteIdent(c.name);
  std::string copy = "COPY " + QuoteIdent(t.name) + " (" + cols + ") FROM STDIN";
  SyncClock(copy);
  PgResult start(PQexec(Idle(), copy.c_str()));
  if (PQresultStatus(start.get()) != PGRES_COPY_IN) Fail(start.get(), "copying rows into " + t.name, copy);
  std::string buffer;
  for (const auto& row : rows) {
    for (size_t i = 0; i < row.size(); ++i) {
      if (i) buffer += '\t';
      AppendCopyValue(buffer, row[i]);
    }
    buffer += '\n';
    if (buffer.size() > (1 << 20)) {
      if (PQputCopyData(conn_, buffer.data(), static_cast<int>(buffer.size())) != 1)
        Fail(nullptr, "copying rows into " + t.name, copy);
      buffer.clear();
    }
  }
  if (!buffer.empty() && PQputCopyData(conn_, buffer.data(), static_cast<int>(buffer.size())) != 1)
    Fail(nullptr, "copying rows into " + t.name, copy);
  if (PQputCopyEnd(conn_, nullptr) != 1) Fail(nullptr, "copying rows into " + t.name, copy);
  PgResult end(PQgetResult(conn_));
  if (!end.ok()) Fail(end.get(), "copying rows into " + t.name, copy);
  while (PGresult* extra = PQgetResult(conn_)) PQclear(extra);
}

void PostgresEngine::FinishTable(const TableDef& t) {
  if (t.primary_key.size() != 1) return;
  for (const auto& c : t.columns) {
    if (c.name != t.primary_key[0] || c.kind != sql::ValueKind::Integer) continue;
    // The identity goes on from the largest key copied, so the next invoice
    // the host adds does not collide with a copied one.
    std::string table = QuoteIdent(t.name), column = QuoteIdent(c.name);
    Run("SELECT setval(pg_get_serial_sequence(" + QuoteLiteral(table) + ", " + QuoteLiteral(c.name) +
            "), COALESCE((SELECT MAX(" + column + ") FROM " + table + "), 0) + 1, false)",
        "setting the key of " + t.name);
  }
}

}  // namespace

std::unique_ptr<Engine> OpenPostgresEngine(const std::string& url) {
  return std::make_unique<PostgresEngine>(url);
}

void CreatePostgresDatabaseIfMissing(const std::string& given_url) {
  std::string url = given_url;
  TakeSessionLimits(url);
  PQconninfoOption* opts = PQconninfoParse(url.c_str(), nullptr);
  if (!opts) throw DatabaseError("not a PostgreSQL connection: " + RedactPassword(url));
  std::vector<std::string> keys, values;
  std::string dbname;
  for (PQconninfoOption* o = opts; o->keyword; ++o) {
    if (!o->val) continue;
    if (std::strcmp(o->keyword, "dbname") == 0) {
      dbname = o->val;
      continue;
    }
    keys.emplace_back(o->keyword);
    values.emplace_back(o->val);
  }
  PQconninfoFree(opts);
  if (dbname.empty() || dbname == "postgres") return;
  keys.emplace_back("dbname");
  values.emplace_back("postgres");
  std::vector<const char*> k, v;
  k.push_back("connect_timeout");
  const char* timeout = std::getenv("PGCONNECT_TIMEOUT");
  v.push_back(timeout && *timeout ? timeout : kDefaultConnectTimeout);
  for (size_t i = 0; i < keys.size(); ++i) {
    k.push_back(keys[i].c_str());
    v.push_back(values[i].c_str());
  }
  k.push_back(nullptr);
  v.push_back(nullptr);
  PGconn* conn = PQconnectdbParams(k.data(), v.data(), 0);
  if (PQstatus(conn) != CONNECTION_OK) {
    // Not fatal here: connecting to the database itself will give the
    // clearer message.
    PQfinish(conn);
    return;
  }
  const char* param[] = {dbname.c_str()};
  PgResult exists(PQexecParams(conn, "SELECT 1 FROM pg_database WHERE datname = $1", 1, nullptr, param,
                               nullptr, nullptr, 0));
  if (exists.ok() && PQntuples(exists.get()) == 0) {
    PgResult made(PQexec(conn, ("CREATE DATABASE " + QuoteIdent(dbname)).c_str()));
    if (!made.ok()) {
      std::string msg = PQresultErrorField(made.get(), PG_DIAG_MESSAGE_PRIMARY)
                            ? PQresultErrorField(made.get(), PG_DIAG_MESSAGE_PRIMARY)
                            : "";
      PQfinish(conn);
      throw DatabaseError("cannot create the database " + dbname + " (" + RedactPassword(url) + "): " + msg);
    }
  }
  PQfinish(conn);
}

}  // namespace orv::db
