// When the batcher reads all keys at once: a form qualifies after sixteen
// runs that differ in one key, and then waits until its runs key by key have
// cost what the engine expects the batched read to cost. The engine is
// stood in for by a reader and an estimator that count their calls.
#include <gtest/gtest.h>

#include <optional>
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

  // A batcher whose engine expects the batched read to take `cost` seconds
  // (nothing: it cannot say). The batched read gives invoice k the total
  // k + 0.25 for k = 1..500.
  LookupBatcher Make(std::optional<double> cost) {
    return LookupBatcher(
        schema_, sql::Dialect::PostgreSQL,
        [this](const sql::Translation& tr, const std::string&) {
          ++reads_;
          EXPECT_NE(tr.sql.find("GROUP BY"), std::string::npos) << tr.sql;
          auto rows = std::make_shared<RowSet>();
          rows->fields = {FieldInfo{"orv_batch_key", adInteger, sql::ValueKind::Integer},
                          FieldInfo{"Total", adCurrency, sql::ValueKind::Money}};
          for (int k = 1; k <= 500; ++k)
            rows->AppendRow({Variant::Int64(k), Variant(Currency::FromDecimalText(std::to_string(k) + ".25"))});
          return rows;
        },
        [this, cost](const sql::Translation&, const std::string&) {
          ++estimates_;
          return cost;
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

  sql::Schema schema_;
  int reads_ = 0;
  int estimates_ = 0;
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
    int first_served = 0;
    for (int key = 1; key <= 300; ++key) {
      const std::string got = Ask(batcher, key, c.per_run);
      if (got.empty()) {
        ASSERT_EQ(first_served, 0) << "declined key " << key << " after serving from the batch";
        continue;
      }
      if (first_served == 0) first_served = key;
      ASSERT_EQ(got, std::to_string(key) + ".25");
    }
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
