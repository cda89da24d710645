// Per-row lookups answered from one read of all keys, inside a snapshot.
//
// A report that walks 25,000 invoices and asks, for each, "what was paid on
// invoice N" sends 25,000 statements that differ only in N. On SQLite each
// is a few microseconds; on a server each is a round trip (about 55 µs on
// loopback, more over a network). While a report holds a snapshot the
// answers cannot change, so after a statement form has been run with
// enough different keys, the batcher reads the answers for every key in one
// statement (sql/lookup_batch.h) and serves the following runs from memory.
//
// The batch reads what the report would have read key by key, in the same
// snapshot, and gives each key the same rows, columns and types; only the
// number of round trips changes. It is kept for the snapshot's life and
// dropped with it.
//
// A batch reads every key of the table, which pays only when the report
// goes on to ask for enough of them: the statements of 40 patients asked
// for the invoice payments of the whole practice (0.6 s on 20,000
// patients) where their own 500 lookups took 0.1 s. The batcher does not
// know how many keys are still to come, so it rents before it buys: once a
// form qualifies it asks the engine what the batched read would cost, and
// reads the batch only once the form's statements have spent that long
// key by key. A report that asks for few keys pays the estimate's one
// question; one that asks for thousands pays at most about twice the batch.
//
// Often the keys to come are known: a report walks rows it already holds
// (the open invoices of a SHAPE's child) and looks each one up. When every
// key asked so far lies in one integer column of the rows the report holds
// (the caller says which: KeySource), the batcher reckons the rest of the
// walk key by key at the runs' mean time, and buys as soon as that exceeds
// the batch, without renting first. It also prices a batch of those keys
// alone ("InvoiceID IN (...)") and reads whichever of the two the engine
// expects cheaper: the account status of 20,000 patients wants the
// payments of 9,000 open invoices, not of all 100,000. A key outside a
// batch of chosen keys is run as its own statement; after as many such
// keys as make a form qualify, the report is taken to walk other rows (the
// next provider's invoices), and the batch makes way for one of all keys.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/db/rowset.h"
#include "platform/db/statement_cache.h"
#include "platform/sql/lookup_batch.h"
#include "platform/sql/translate.h"

namespace orv::db {

class LookupBatcher {
 public:
  // Reads the rows of a translated statement; `original` names it in
  // messages. A failure must leave the snapshot usable (the caller runs it
  // under a savepoint) and throws.
  using Reader = std::function<std::shared_ptr<RowSet>(const sql::Translation&, const std::string& original)>;
  // What the engine expects of a translated statement: the seconds it
  // takes and the rows it gives; nothing when it cannot say (the form is
  // then batched without waiting).
  struct Estimate {
    double seconds = 0;
    double rows = 0;
  };
  using Estimator = std::function<std::optional<Estimate>(const sql::Translation&, const std::string& original)>;
  // The keys a report is walking: the sorted distinct values of an integer
  // column of rows it holds that has every key of `asked`, or nullptr.
  using KeySource = std::function<std::shared_ptr<const std::vector<int64_t>>(const std::vector<int64_t>& asked)>;

  // A form is batched once this many runs of it differed only in one key.
  static constexpr int kThreshold = 16;
  // A batch larger than this is not kept (the form goes back to one
  // statement per key), and all batches of a snapshot together hold at
  // most kTotalRows rows. A group of 100,000 patients has half a million
  // invoices, each a key of the lookups by invoice: with room for only
  // 250,000 rows those went back to one round trip per invoice, and the
  // balance lists took 40 times as long as on 20,000 patients. A row of a
  // batch is a key and a few figures, some 30 bytes in the column store.
  static constexpr int64_t kBatchRows = 1000000;
  static constexpr int64_t kTotalRows = 3000000;
  // A batch of chosen keys names them all in its statement, which the
  // server takes time to plan (20,000 keys: 50 ms): it is priced only for
  // at most this many keys, and only when the whole read is expected to
  // give at least twice as many rows.
  static constexpr size_t kChosenKeysMax = 50000;

  LookupBatcher(const sql::Schema& schema, sql::Dialect dialect, Reader read, Estimator estimate = nullptr,
                KeySource walked = nullptr)
      : schema_(schema),
        dialect_(dialect),
        read_(std::move(read)),
        estimate_(std::move(estimate)),
        walked_(std::move(walked)) {}

  // The rows of `statement` (taken apart into `form`) from a batch, or
  // nullptr when the caller must run it itself.
  std::shared_ptr<RowSet> Find(const std::string& statement, const StatementForm& form);
  // The caller ran the statement that Find last declined, in `seconds`:
  // the time counts towards the batch of its form.
  void Spent(double seconds);
  // Forgets every batch (the snapshot ended).
  void Clear();

  struct Stats {
    int batches = 0;       // batched reads made
    int chosen = 0;        // of which read chosen keys alone
    int64_t served = 0;    // statements answered from them
    int64_t rows = 0;      // rows held
  };
  const Stats& stats() const { return stats_; }

 private:
  struct Batch {
    std::vector<FieldInfo> fields;  // the lookup's own columns
    bool aggregate = false;
    std::vector<Variant> empty_row;  // an aggregate lookup's row for a key without rows
    std::shared_ptr<RowSet> rows;  // as read: the key, then the lookup's own columns
    std::unordered_map<int64_t, std::pair<size_t, size_t>> by_key;  // rows [first, last)
    // The keys read, sorted, when the batch read chosen keys alone.
    std::shared_ptr<const std::vector<int64_t>> chosen;
    int64_t held = 0;  // rows counted in Stats::rows
  };
  struct Group {  // the runs of one form that agree on every literal but the key
    int runs = 0;
    std::vector<int64_t> asked;  // the keys of its first runs
    std::unique_ptr<Batch> batch;
    std::optional<sql::BatchedLookup> lookup;  // the batched read, once translated
    std::optional<double> cost;                // its expected seconds, once asked
    bool priced = false;
    // The keys being walked, when known: how many are still to come, and
    // the batch of them alone when the engine expects it cheaper.
    std::shared_ptr<const std::vector<int64_t>> walked;
    bool walked_only = false;  // `lookup` reads those keys alone
    std::vector<int64_t> missed;  // keys asked beyond a batch of those keys
    bool every_key = false;       // such a batch was outrun: read all keys
  };
  struct Form {
    bool refused = false;
    double spent = 0;             // seconds its statements ran key by key
    int spent_runs = 0;           // in that many runs
    int key = -1;                 // the position of the key literal, once chosen
    std::vector<std::string> last;  // the literals of the previous run, as written
    std::vector<int64_t> last_values;  // and their values
    std::vector<int> varied;      // runs in which each literal alone changed
    std::vector<std::vector<int64_t>> varied_values;  // the values it took then
    std::unordered_map<std::string, Group> groups;  // by the other literals
  };

  // Translates the batched read of the group's form into `group.lookup`,
  // and prices it; false when the form is no lookup (or its batch could not
  // be held) or the engine refused to price it.
  bool Prepare(Group& group, const std::string& statement, size_t offset);
  std::unique_ptr<Batch> Build(const sql::BatchedLookup& lookup, const std::string& statement);
  std::shared_ptr<RowSet> Serve(const Batch& batch, int64_t key);

  const sql::Schema& schema_;
  sql::Dialect dialect_;
  Reader read_;
  Estimator estimate_;
  KeySource walked_;
  std::unordered_map<std::string, Form> forms_;
  Form* declined_ = nullptr;  // the form whose statement the caller runs now
  Stats stats_;
};

}  // namespace orv::db
