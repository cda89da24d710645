#include "platform/db/copy_database.h"

#include <filesystem>
#include <memory>
#include <utility>
#include <vector>

#include "common/variant.h"

#include "platform/db/connection_url.h"
#include "platform/db/db_error.h"
#include "platform/db/engine.h"
#include "platform/db/field_type.h"

namespace orv::db {

namespace {

// Rows sent to the target at a time: large enough that a server copy is one
// stream per batch, small enough to keep memory flat on a big practice.
constexpr size_t kBatchRows = 5000;

void Run(Engine& engine, const std::string& sql, const std::string& what) {
  auto stmt = engine.Prepare(sql, what);
  while (stmt->Step()) {
  }
}

int64_t CountRows(Engine& engine, const TableDef& t) {
  auto stmt = engine.Prepare("SELECT COUNT(*) FROM " + QuoteIdent(t.name), "counting " + t.name);
  if (!stmt->Step()) return 0;
  Variant v = stmt->Column(0);
  if (auto* i = std::get_if<int64_t>(&v.storage())) return *i;
  if (auto* c = std::get_if<Currency>(&v.storage())) return c->raw() / Currency::kScale;
  return 0;
}

// A stored value in the form the target binds. Money and dates are turned
// into Currency and DateTime (exact decimal, ISO text); everything else goes
// as stored, so flags keep their -1 and text its blanks.
Variant Portable(Variant stored, sql::ValueKind kind) {
  switch (kind) {
    case sql::ValueKind::Money:
    case sql::ValueKind::Date:
    case sql::ValueKind::Blob:
      return ValueOfKind(std::move(stored), kind);
    default:
      return stored;
  }
}

}  // namespace

CopySummary CopyDatabase(const std::string& from_url, const std::string& to_url, const CopyOptions& options) {
  if (from_url == to_url) throw DatabaseError("the source and the target are the same database");
  std::unique_ptr<Engine> from = OpenEngine(from_url);
  std::vector<TableDef> tables = from->ListTables();

  // A SQLite target that does not exist yet is made, and removed again if
  // the copy fails.
  std::string created_file;
  if (EngineOfUrl(to_url) == EngineKind::SQLite) {
    std::string path = to_url.rfind("sqlite:", 0) == 0 ? to_url.substr(7) : to_url;
    if (path.rfind("//", 0) == 0) path = path.substr(2);
    if (!path.empty() && path != ":memory:" && !std::filesystem::exists(path)) created_file = path;
  }
  std::unique_ptr<Engine> to;
  try {
    to = OpenEngine(to_url, true);
  } catch (...) {
    if (!created_file.empty()) std::filesystem::remove(created_file);
    throw;
  }

  // The same database under two spellings of its URL (a symlink, another
  // host name, a parameter more) would drop the tables being read, or wait
  // on its own locks: ask each engine what it is connected to.
  std::string identity = to->Identity();
  if (!identity.empty() && identity == from->Identity()) {
    to.reset();
    throw DatabaseError("the source and the target are the same database (" + from->Describe() + ")");
  }

  std::vector<TableDef> existing = to->ListTables();
  if (!existing.empty() && !options.replace) {
    throw DatabaseError("the target " + to->Describe() + " already holds " +
                        std::to_string(existing.size()) + " tables (" + existing.front().name +
                        ", ...); give --replace to overwrite them");
  }

  // The practice's views (a SQLite practice keeps them in its catalogue,
  // written with quoted names so that the server takes the same text). The
  // tables are copied first, the views made over them after.
  std::vector<std::pair<std::string, std::string>> views;
  if (EngineOfUrl(from_url) == EngineKind::SQLite) {
    auto list = from->Prepare("SELECT name, sql FROM sqlite_master WHERE type = 'view' ORDER BY name",
                              "reading the views");
    while (list->Step()) views.emplace_back(CStr(list->Column(0)), CStr(list->Column(1)));
  }

  int64_t total = 0;
  std::vector<int64_t> counts;
  for (const TableDef& t : tables) {
    counts.push_back(CountRows(*from, t));
    total += counts.back();
  }

  CopySummary summary;
  try {
    Run(*to, "BEGIN", "copy-db");
    // A view of the target goes before the tables: the server lists it
    // among them, and would not drop it as a table.
    for (const auto& v : views) Run(*to, "DROP VIEW IF EXISTS " + QuoteIdent(v.first), "copy-db");
    for (const TableDef& t : existing) to->DropTable(t.name);
    int64_t done = 0;
    for (size_t k = 0; k < tables.size(); ++k) {
      const TableDef& t = tables[k];
      if (options.progress) options.progress(total ? static_cast<int>(done * 100 / total) : 0, t.name);
      to->CreateTable(t);
      std::string cols;
      for (const auto& c : t.columns) cols += (cols.empty() ? "" : ", ") + QuoteIdent(c.name);
      auto rows_of = from->Prepare("SELECT " + cols + " FROM " + QuoteIdent(t.name), "reading " + t.name);
      std::vector<std::vector<Variant>> batch;
      batch.reserve(kBatchRows);
      while (rows_of->Step()) {
        std::vector<Variant> row;
        row.reserve(t.columns.size());
        for (size_t i = 0; i < t.columns.size(); ++i)
          row.push_back(Portable(rows_of->Column(static_cast<int>(i)), t.columns[i].kind));
        batch.push_back(std::move(row));
        if (batch.size() == kBatchRows) {
          to->InsertRows(t, batch);
          done += static_cast<int64_t>(batch.size());
          summary.rows += static_cast<int64_t>(batch.size());
          batch.clear();
          if (options.progress) options.progress(total ? static_cast<int>(done * 100 / total) : 0, t.name);
        }
      }
      to->InsertRows(t, batch);
      done += static_cast<int64_t>(batch.size());
      summary.rows += static_cast<int64_t>(batch.size());
      to->FinishTable(t);
      ++summary.tables;
    }
    for (const auto& v : views) Run(*to, v.second, "copy-db: making the view " + v.first);
    Run(*to, "COMMIT", "copy-db");
    to->FinishCopy();
    if (options.progress) options.progress(100, "");
  } catch (...) {
    try {
      Run(*to, "ROLLBACK", "copy-db");
    } catch (...) {
      // The connection may be the thing that failed; the server then drops
      // the transaction itself.
    }
    to.reset();
    if (!created_file.empty()) std::filesystem::remove(created_file);
    throw;
  }
  return summary;
}

}  // namespace orv::db
