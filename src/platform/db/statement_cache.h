// The per-connection cache of translated and prepared statements.
//
// Reports build statements by concatenation, so a lookup by key produces a
// new text for every key ("... where ID = 17", "... where ID = 18") and a
// count per day a new text for every day ("... FromDate <= '2026-11-20'").
// Like the server's simple parameterisation, the cache lifts such literals
// out as parameters, so that all those texts share one translation and one
// prepared statement, and binds the values on each run. Three kinds are
// lifted: a whole-number literal that follows "=", and, quoted after a
// comparison ("=", "<", ">", "<=", ">=", "<>"), a whole number written as
// text ("PatientID = '17'", bound as that text) and, on SQLite, a date
// (bound as the date the server reads in it; see LiftsDates).
// The translator sees the statement with a sentinel in each such place; if
// a sentinel does not come back exactly once in the engine's text (the
// translator folded or moved it, or read a quoted date as text rather than
// as a date), that statement form is cached by its full text instead.
#pragma once

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "common/variant.h"
#include "platform/db/engine.h"
#include "platform/sql/translate.h"

namespace orv::db {

struct StatementForm;

class StatementCache {
 public:
  StatementCache(Engine& engine, const sql::Schema& schema) : engine_(engine), schema_(schema) {}

  struct Entry {
    sql::Translation translation;
    std::unique_ptr<EngineStatement> stmt;
    int parameters = 0;  // bound from the statement's literals: numbers, then quoted ones
    bool in_use = false;
  };

  // One run of a cached statement: bound, stepped, then reset by Done or by
  // the destructor.
  class Lease {
   public:
    Lease(Entry* entry, std::unique_ptr<Entry> own) : entry_(entry), own_(std::move(own)) {}
    Lease(Lease&& o) noexcept
        : entry_(o.entry_),
          own_(std::move(o.own_)),
          engine_(o.engine_),
          values_(std::move(o.values_)),
          quoted_(std::move(o.quoted_)) {
      o.entry_ = nullptr;
    }
    Lease& operator=(Lease&&) = delete;
    ~Lease() { Done(); }
    const sql::Translation& translation() const { return entry_->translation; }
    // Next row; false at the end. An engine error names the values bound in
    // place of the statement's literals, since the engine text shows markers.
    bool Step();
    int ColumnCount() const { return entry_->stmt->ColumnCount(); }
    std::string ColumnName(int i) const { return entry_->stmt->ColumnName(i); }
    Variant Column(int i) const { return entry_->stmt->Column(i); }
    bool ColumnView(int i, StoredView* out) const { return entry_->stmt->ColumnView(i, out); }
    void Done();

   private:
    friend class StatementCache;
    Entry* entry_;
    std::unique_ptr<Entry> own_;  // a one-off entry when the cached one is busy
    // The values bound in place of the statement's literals, for the
    // message of a failed step; no engine when none were bound.
    Engine* engine_ = nullptr;
    std::vector<int64_t> values_;
    std::vector<Variant> quoted_;
    // "?1 = 17, ?2 = '2026-11-20 00:00:00'"
    std::string Bound() const;
  };

  // Translates (once) and prepares (once) `statement`, binds its literals and
  // returns it ready to step. Throws sql::SqlError or DatabaseError.
  Lease Get(const std::string& statement);
  // The same, with the statement's form already taken apart by the caller.
  Lease Get(const std::string& statement, StatementForm form);

  size_t size() const { return by_form_.size() + by_text_.size(); }
  Engine& engine() const { return engine_; }

 private:
  sql::Translation Translate(const std::string& text, const std::string& statement);
  std::unique_ptr<Entry> Build(const std::string& statement);
  std::unique_ptr<Entry> BuildForm(const StatementForm& f, const std::string& statement);

  Engine& engine_;
  const sql::Schema& schema_;
  // Statement form (literals replaced by sentinels) -> entry, or nullptr when
  // the form cannot be parameterised.
  std::unordered_map<std::string, std::unique_ptr<Entry>> by_form_;
  std::unordered_map<std::string, std::unique_ptr<Entry>> by_text_;
};

// Splits a statement into its form and the literals lifted out of it (outside
// quotes, brackets and comments): the whole-number literals that follow "=",
// and the quoted whole numbers and dates that follow a comparison (dates
// only with `dates`). In the form each literal is replaced by the sentinel
// of its position. Exposed for tests.
struct StatementForm {
  std::string form;
  std::vector<int64_t> values;
  std::vector<std::string> sentinels;
  std::vector<size_t> offsets;  // where each number starts in the statement
  // The quoted literals: a whole number as its text, a date as the server
  // reads it (a DateTime); and the sentinel that stands for each in the
  // form, between its quotes.
  std::vector<Variant> quoted;
  std::vector<std::string> quoted_sentinels;
  std::vector<size_t> quoted_offsets;  // where each opening quote stands

  bool Parameterised() const { return !values.empty() || !quoted.empty(); }
};
StatementForm ParameteriseLiterals(const std::string& statement, bool dates = true);

// Whether an engine takes quoted dates as parameters. SQLite plans a
// statement without looking at its values. A PostgreSQL session keeps one
// generic plan per prepared statement (see postgres_engine.cpp), which
// suits a key compared by "=", but a date range is planned by its span (a
// day reads differently from ten years), and a query without ORDER BY would
// then give its rows in another order than the plan of its own dates: there
// dates stay in the text.
inline bool LiftsDates(sql::Dialect dialect) { return dialect == sql::Dialect::SQLite; }

}  // namespace orv::db
