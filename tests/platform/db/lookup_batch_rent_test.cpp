// When the batcher reads all keys at once: a form qualifies after sixteen
// runs that differ in one key, and then waits until its runs key by key have
// cost what the engine expects the batched read to cost, or until the keys
// still to come of a walk it knows would. The engine is stood in for by a
// reader and an estimator that count their calls.
#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <sstream>
#include <string>

#include "platform/db/lookup_batch.h"

namespace orv::db {
namespace {

class BatchRent : public ::testing::Test {
 protected:
  BatchRent() {
    schema_.AddTable("InvoicePaymentDetails", {{"ID", "INTEGER", sql::ValueKind::Integer},
                                               {"InvoiceID", "INTEGER", sql::ValueKind::Integer},
                                               {"Amount", "MONEY", sql::ValueKind::Money}},
                     {"ID"});
  }

  // A batcher whose engine expects the batched read of every key to take
  // `cost` seconds and give 500 rows (nothing: it cannot say), and the read
  // of walked keys alone `walked_cost`. The batched read gives invoice k the
  // total k + 0.25 for k = 1..500, or for the keys its statement names.
  // `walks`: the key sets the report walks; the first that holds every key
  // asked is the walk (none: not known).
  LookupBatcher Make(std::optional<double> cost, std::optional<double> walked_cost = std::nullopt,
                     std::vector<std::vector<int64_t>> walks = {}) {
    auto names_keys = [](const sql::Translation& tr) { return tr.sql.find(" IN (") != std::string::npos; };
    return LookupBatcher(
        schema_, sql::Dialect::PostgreSQL,
        [this, names_keys](const sql::Translation& tr, const std::string&) {
          ++(names_keys(tr) ? walked_reads_ : reads_);
          EXPECT_NE(tr.sql.find("GROUP BY"), std::string::npos) << tr.sql;
          std::vector<int64_t> named;  // the keys of "IN (k, k, ...)"
          if (names_keys(tr)) {
            std::istringstream in(tr.sql.substr(tr.sql.find(" IN (") + 5));
            int64_t k = 0;
            char comma = ',';
            while (comma == ',' && in >> k >> comma) named.push_back(k);
          }
          auto rows = std::make_shared<RowSet>();
          rows->fields = {FieldInfo{"orv_batch_key", adInteger, sql::ValueKind::Integer},
                          FieldInfo{"Total", adCurrency, sql::ValueKind::Money}};
          for (int k = 1; k <= 500; ++k) {
            if (names_keys(tr) && std::find(named.begin(), named.end(), k) == named.end()) continue;
            rows->AppendRow({Variant::Int64(k), Variant(Currency::FromDecimalText(std::to_string(k) + ".25"))});
          }
          return rows;
        },
        [this, names_keys, cost, walked_cost](const sql::Translation& tr, const std::string&) {
          ++estimates_;
          const std::optional<double> seconds = names_keys(tr) ? walked_cost : cost;
          return seconds ? std::optional<LookupBatcher::Estimate>({*seconds, 500}) : std::nullopt;
        },
        [this, walks](const std::vector<int64_t>& asked) -> std::shared_ptr<const std::vector<int64_t>> {
          asked_ = asked;
          for (const std::vector<int64_t>& walk : walks)
            if (std::all_of(asked.begin(), asked.end(), [&](int64_t k) {
                  return std::find(walk.begin(), walk.end(), k) != walk.end();
                }))
              return std::make_shared<const std::vector<int64_t>>(walk);
          return nullptr;
        });
  }

  // Asks for invoice `key` (written as `key_text`, by default the number);
  // when the batcher declines, the caller's own run takes `seconds`. The
  // total it got, or "" when it must run it itself.
  static std::string Ask(LookupBatcher& batcher, int key, double seconds, std::string key_text = "") {
    if (key_text.empty()) key_text = std::to_string(key);
    const std::string statement =
        "SELECT SUM(Amount) AS Total FROM InvoicePaymentDetails WHERE InvoiceID = " + key_text;
    auto rows = batcher.Find(statement, ParameteriseLiterals(statement));
    if (!rows) {
      batcher.Spent(seconds);
      return "";
    }
    if (rows->RowCount() != 1) return "rows: " + std::to_string(rows->RowCount());
    const Variant total = rows->Get(0, 0);
    return total.IsNull() ? "Null" : CStr(total);
  }

  // Asks for invoices 1..`keys` in turn, each run key by key taking
  // `seconds`: the first key served from a batch (0: none). Once one is,
  // every later one must be, with its own total.
  static int Walk(LookupBatcher& batcher, int keys, double seconds) {
    int first_served = 0;
    for (int key = 1; key <= keys; ++key) {
      const std::string got = Ask(batcher, key, seconds);
      if (got.empty()) {
        EXPECT_EQ(first_served, 0) << "declined key " << key << " after serving from the batch";
        continue;
      }
      if (first_served == 0) first_served = key;
      EXPECT_EQ(got, std::to_string(key) + ".25");
    }
    return first_served;
  }

  sql::Schema schema_;
  int reads_ = 0;         // batched reads of every key
  int walked_reads_ = 0;  // batched reads of the walked keys alone
  int estimates_ = 0;
  std::vector<int64_t> asked_;  // what the batcher last asked the walk about
};

TEST_F(BatchRent, ReadsAllKeysOnlyOnceTheRunsKeyByKeyHaveCostAsMuch) {
  struct Case {
    const char* name;
    std::optional<double> cost;  // what the engine expects the batch to take
    double per_run;              // what each run key by key takes
    int first_served;            // the first key served from the batch
  };
  const Case cases[] = {
      // No estimate: batched as soon as the form qualifies (the sixteenth
      // change of key, at the seventeenth run).
      {"engine cannot say", std::nullopt, 0.125, 17},
      // The sixteen runs so far have cost more than the batch.
      {"cheap batch", 1.0, 0.125, 17},
      // 8 s of batch at 0.125 s a run: sixty-four runs first.
      {"dear batch", 8.0, 0.125, 65},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reads_ = estimates_ = 0;
    LookupBatcher batcher = Make(c.cost);
    const int first_served = Walk(batcher, 300, c.per_run);
    EXPECT_EQ(first_served, c.first_served);
    EXPECT_EQ(reads_, 1);
    EXPECT_EQ(estimates_, 1);
    EXPECT_EQ(batcher.stats().served, 300 - c.first_served + 1);
  }

  // A report that asks for few keys of a dear batch never reads it.
  reads_ = 0;
  LookupBatcher few = Make(5.0);
  for (int key = 1; key <= 40; ++key) EXPECT_EQ(Ask(few, key, 0.125), "");
  EXPECT_EQ(reads_, 0);
  EXPECT_EQ(few.stats().batches, 0);

  // Time spent on another form does not count towards this one.
  reads_ = 0;
  LookupBatcher other = Make(1.0);
  for (int key = 1; key <= 10; ++key) {
    const std::string statement = "SELECT ID FROM InvoicePaymentDetails WHERE ID = " + std::to_string(key);
    ASSERT_EQ(other.Find(statement, ParameteriseLiterals(statement)), nullptr);
    other.Spent(100.0);
  }
  for (int key = 1; key <= 20; ++key) EXPECT_EQ(Ask(other, key, 0.03125), "") << key;
  EXPECT_EQ(reads_, 0);
}

TEST_F(BatchRent, AKnownWalkBuysOnceItsRemainingKeysWouldCostMoreAndReadsTheCheaperBatch) {
  std::vector<int64_t> walk40, walk30, walk200, walk300;
  for (int k = 1; k <= 300; ++k) {
    if (k <= 30) walk30.push_back(k);
    if (k <= 40) walk40.push_back(k);
    if (k <= 200) walk200.push_back(k);
    walk300.push_back(k);
  }
  struct Case {
    const char* name;
    std::optional<double> cost, walked_cost;  // the whole read, the walked keys' own
    const std::vector<int64_t>* walk;
    int first_served;  // 0: none
    int reads, walked_reads, estimates;
    const char* outside;  // what key 400, not walked, then gets
  };
  // Each run key by key takes 0.125 s; the report asks for the walked keys
  // (1..100 when no walk is known), the key becoming known at the 17th.
  const Case cases[] = {
      // 183 keys to come would cost 22.9 s, more than either batch: the
      // walked keys' own (4 s) is read at once, though the runs so far
      // have cost only 2 s. Key 400 is not in it and is run as given.
      {"walk of 200, its own batch cheaper", 8.0, 4.0, &walk200, 17, 0, 1, 2, ""},
      {"walk of 200, the whole batch cheaper", 8.0, 9.0, &walk200, 17, 1, 0, 2, "400.25"},
      // 23 keys to come (2.9 s) are cheaper than the walked keys' 4 s: rent
      // until the runs have cost 4 s.
      {"walk of 40", 8.0, 4.0, &walk40, 33, 0, 1, 2, ""},
      {"walk of 30 never pays", 8.0, 5.0, &walk30, 0, 0, 0, 2, ""},
      // More keys walked than half the rows of the whole read: only it is
      // priced, and read at once.
      {"walk of 300", 8.0, 0.5, &walk300, 17, 1, 0, 1, "400.25"},
      {"walk not known", 8.0, 0.5, nullptr, 65, 1, 0, 1, "400.25"},
      // The engine cannot price: the walked keys alone, at once.
      {"no prices", std::nullopt, std::nullopt, &walk200, 17, 0, 1, 2, ""},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.name);
    reads_ = walked_reads_ = estimates_ = 0;
    LookupBatcher batcher = Make(c.cost, c.walked_cost, c.walk ? std::vector<std::vector<int64_t>>{*c.walk}
                                                                      : std::vector<std::vector<int64_t>>{});
    const int asks = c.walk ? static_cast<int>(c.walk->size()) : 100;
    const int first_served = Walk(batcher, asks, 0.125);
    EXPECT_EQ(first_served, c.first_served);
    EXPECT_EQ(reads_, c.reads);
    EXPECT_EQ(walked_reads_, c.walked_reads);
    EXPECT_EQ(estimates_, c.estimates);
    EXPECT_EQ(batcher.stats().chosen, c.walked_reads);
    EXPECT_EQ(Ask(batcher, 400, 0.125), c.outside);
    // A walked key is still served after a key outside the batch.
    if (first_served) {
      EXPECT_EQ(Ask(batcher, 5, 0.125), "5.25");
    }
  }
  // The walk is asked about the keys of the runs that made the key known.
  std::vector<int64_t> first17(walk200.begin(), walk200.begin() + 17);
  EXPECT_EQ(asked_, first17);

  // The report goes on to walk keys 301..400, none of them read: sixteen
  // run as given, then the batch makes way for one of every key, not of
  // the second walk's keys alone, bought at once as the 84 keys still to
  // come of that walk would cost more (10.5 s).
  std::vector<int64_t> second_walk;
  for (int k = 301; k <= 400; ++k) second_walk.push_back(k);
  reads_ = walked_reads_ = 0;
  LookupBatcher batcher = Make(8.0, 4.0, {walk200, second_walk});
  ASSERT_EQ(Walk(batcher, 200, 0.125), 17);
  int first_served = 0;
  for (int key = 301; key <= 400; ++key) {
    const std::string got = Ask(batcher, key, 0.125);
    if (got.empty()) {
      EXPECT_EQ(first_served, 0) << key;
      continue;
    }
    if (first_served == 0) first_served = key;
    EXPECT_EQ(got, std::to_string(key) + ".25");
  }
  EXPECT_EQ(first_served, 317);
  EXPECT_EQ(walked_reads_, 1);
  EXPECT_EQ(reads_, 1);
  EXPECT_EQ(Ask(batcher, 7, 0.125), "7.25");
  EXPECT_EQ(batcher.stats().rows, 500);
}

TEST_F(BatchRent, AKeyWrittenAsTextIsServedByTheNumberItSpells) {
  LookupBatcher batcher = Make(std::nullopt);
  for (int key = 1; key <= 16; ++key) EXPECT_EQ(Ask(batcher, key, 0.01, "'" + std::to_string(key) + "'"), "");
  EXPECT_EQ(Ask(batcher, 17, 0.01, "'17'"), "17.25");
  // An integer column compared with '0042' compares with 42.
  EXPECT_EQ(Ask(batcher, 42, 0.01, "'0042'"), "42.25");
  // No payment on invoice 900: a sum of no rows.
  EXPECT_EQ(Ask(batcher, 900, 0.01, "'900'"), "Null");
  EXPECT_EQ(reads_, 1);
  EXPECT_EQ(batcher.stats().served, 3);
}

}  // namespace
}  // namespace orv::db
