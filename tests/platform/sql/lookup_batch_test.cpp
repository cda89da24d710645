// The batched form of a per-row lookup, run on the shared fixture: every key
// must get exactly the rows its own statement gives.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "platform/sql/lookup_batch.h"
#include "sql_test_support.h"

namespace orv::sql::testing {
namespace {

// `tsql` with "{}" replaced by `key`.
std::string WithKey(std::string tsql, const std::string& key) {
  return tsql.replace(tsql.find("{}"), 2, key);
}

// Where the key literal starts in a one-line statement: "{}", or its
// opening quote in '{}'.
Pos KeyPos(const std::string& tsql) {
  const size_t at = tsql.find("{}");
  return Pos{1, static_cast<int>(at > 0 && tsql[at - 1] == '\'' ? at - 1 : at) + 1};
}

std::optional<BatchedLookup> Batch(const FixtureDb& db, const std::string& tsql,
                                   const std::vector<int64_t>* only = nullptr) {
  return TranslateBatchedLookup(WithKey(tsql, "0"), KeyPos(tsql), db.schema(), Dialect::SQLite, 1000, only);
}

TEST(LookupBatch, EveryKeyGetsTheRowsItsOwnStatementGives) {
  FixtureDb db;
  struct Case {
    const char* tsql;
    bool aggregate;
  };
  const Case cases[] = {
      // What is paid on an invoice by the patient up to a day: shares on
      // payments by insurers (payment 2) and after the day (share 9) stay out.
      {"SELECT SUM(InvoicePaymentDetails.Amount) AS Total FROM InvoicePaymentDetails INNER JOIN "
       "InvoicePayments ON InvoicePaymentDetails.InvoicePaymentID = InvoicePayments.ID WHERE "
       "InvoicePaymentDetails.InvoiceID = {} AND InvoicePaymentDetails.Date <= '2026-11-01' AND "
       "(IsInsurance = 0 OR IsInsurance IS NULL)",
       true},
      // COUNT of no rows is 0, MAX of none NULL.
      {"SELECT COUNT(*) AS N, MAX(Amount) AS Largest FROM InvoicePaymentDetails WHERE InvoiceID = {}", true},
      // Several rows a key, in the statement's own order.
      {"SELECT Invoices.ID, Invoices.[Date], InvoiceTotal, Patient.LastName FROM Invoices INNER JOIN Patient "
       "ON Invoices.PatientID = Patient.ID WHERE NOT InvoiceTotal IS NULL AND Invoices.PatientID = {} "
       "ORDER BY Invoices.[Date] DESC",
       false},
      // The literal on the left, every column, a key with a second literal.
      {"SELECT * FROM Invoices WHERE {} = ProviderID AND [Complete?] = 1", false},
      // A key written as text and compared with an integer column, as the
      // operatory list looks up each patient's alerts.
      {"SELECT ID, InvoiceTotal FROM Invoices WHERE PatientID = '{}' ORDER BY ID DESC", false},
      {"SELECT COUNT(*) AS N FROM Invoices WHERE '{}' = ProviderID", true},
  };
  // Every key, or only the keys a report walks (a key of no rows among
  // them); a key not chosen has no rows in the batch.
  const std::vector<int64_t> chosen = {1, 3, 4, 11, 99};
  for (const Case& c : cases) {
    for (const std::vector<int64_t>* only : {static_cast<const std::vector<int64_t>*>(nullptr), &chosen}) {
      SCOPED_TRACE(std::string(c.tsql) + (only ? " (chosen keys)" : ""));
      auto batch = Batch(db, c.tsql, only);
      ASSERT_TRUE(batch.has_value());
      EXPECT_EQ(batch->aggregate, c.aggregate);
      const FixtureDb::Result all = db.RunTranslated(batch->translation);
      ASSERT_FALSE(all.header.empty());
      EXPECT_EQ(all.header[0], "orv_batch_key");
      for (int key = 0; key <= 12; ++key) {
        const FixtureDb::Result own = db.Run(WithKey(c.tsql, std::to_string(key)));
        ASSERT_EQ(std::vector<std::string>(all.header.begin() + 1, all.header.end()), own.header);
        std::vector<std::vector<std::string>> rows;
        for (const auto& row : all.rows)
          if (row[0] == std::to_string(key)) rows.emplace_back(row.begin() + 1, row.end());
        if (only && std::find(only->begin(), only->end(), key) == only->end()) {
          EXPECT_TRUE(rows.empty()) << "key " << key << " was not chosen";
          continue;
        }
        if (rows.empty() && batch->aggregate) {
          std::vector<std::string> none;
          for (bool count : batch->count_columns) none.push_back(count ? "0" : "NULL");
          rows.push_back(none);
        }
        EXPECT_EQ(rows, own.rows) << "key " << key;
      }
    }
  }
  // Worked by hand, so the comparison above is known to compare figures:
  // invoice 1 has 50 by the patient on 09-15, 200 by the insurer, and -50
  // after the day.
  EXPECT_EQ(db.Run(WithKey(cases[0].tsql, "1")).rows, (std::vector<std::vector<std::string>>{{"50.0000"}}));
}

TEST(LookupBatch, LeavesAloneWhatIsNoLookupByOneKey) {
  FixtureDb db;
  const char* refused[] = {
      // The key under OR selects more than its own rows.
      "SELECT ID FROM Invoices WHERE PatientID = {} OR ProviderID = 2",
      // Text and money keys group otherwise than "=" compares ('7' and '07'
      // are different notes).
      "SELECT ID FROM Invoices WHERE notes = {}",
      "SELECT ID FROM Invoices WHERE notes = '{}'",
      "SELECT ID FROM Invoices WHERE InvoiceTotal = {}",
      // TOP, DISTINCT, GROUP BY and UNION change what one key's rows are.
      "SELECT TOP 1 ID FROM Invoices WHERE PatientID = {}",
      "SELECT DISTINCT PatientID FROM Invoices WHERE ProviderID = {}",
      "SELECT PatientID, COUNT(*) AS N FROM Invoices WHERE ProviderID = {} GROUP BY PatientID",
      "SELECT ID FROM Invoices WHERE PatientID = {} UNION SELECT ID FROM Invoices WHERE ProviderID = 2",
      // ISNULL(SUM(..), 0) of no rows is 0, not NULL: only bare aggregates
      // have a known row for a key without rows.
      "SELECT ISNULL(SUM(Amount), 0) AS Total FROM InvoicePaymentDetails WHERE InvoiceID = {}",
      // The literal inside a subquery is not the outer query's key.
      "SELECT ID FROM Invoices WHERE ID IN (SELECT InvoiceID FROM InvoicePaymentDetails WHERE "
      "InvoicePaymentID = {})",
      "UPDATE Invoices SET notes = 'x' WHERE ID = {}",
  };
  for (const char* tsql : refused) EXPECT_FALSE(Batch(db, tsql).has_value()) << tsql;
}

TEST(RestrictedToKeys, KeepsExactlyTheRowsOfTheKeysInTheirOrder) {
  FixtureDb db;
  struct Case {
    const char* tsql;
    const char* column;
  };
  const Case cases[] = {
      // The lines of invoices, as an invoice's SHAPE relates them.
      {"SELECT Code, InvoiceID, Cost, [Tooth#], Surface, Date, Status, Discount FROM InvoiceDetails",
       "InvoiceID"},
      // Every column by star, a WHERE clause of its own with an OR.
      {"SELECT * FROM InvoiceDetails WHERE Cost > 0 OR Code = '01202'", "InvoiceID"},
      // The column under an alias of its own, a join, an order of its own.
      {"SELECT InvoiceDetails.InvoiceID AS Inv, InvoiceDetails.Code, Invoices.PatientID FROM InvoiceDetails "
       "INNER JOIN Invoices ON InvoiceDetails.InvoiceID = Invoices.ID ORDER BY InvoiceDetails.Code DESC",
       "Inv"},
  };
  const std::vector<int64_t> keys = {1, 3, 4, 999};
  for (const Case& c : cases) {
    SCOPED_TRACE(c.tsql);
    auto restricted = TranslateRestrictedToKeys(c.tsql, c.column, keys, db.schema(), Dialect::SQLite);
    ASSERT_TRUE(restricted.has_value());
    const FixtureDb::Result all = db.Run(c.tsql);
    const FixtureDb::Result some = db.RunTranslated(*restricted);
    ASSERT_EQ(some.header, all.header);
    const size_t col = std::find(all.header.begin(), all.header.end(), c.column) - all.header.begin();
    ASSERT_LT(col, all.header.size());
    std::vector<std::vector<std::string>> expected;
    for (const auto& row : all.rows)
      if (row[col] == "1" || row[col] == "3" || row[col] == "4") expected.push_back(row);
    ASSERT_FALSE(expected.empty());
    EXPECT_LT(expected.size(), all.rows.size());
    EXPECT_EQ(some.rows, expected);
  }

  // No key: no rows, the same columns.
  auto none = TranslateRestrictedToKeys(cases[0].tsql, "InvoiceID", {}, db.schema(), Dialect::SQLite);
  ASSERT_TRUE(none.has_value());
  const FixtureDb::Result empty = db.RunTranslated(*none);
  EXPECT_EQ(empty.header, db.Run(cases[0].tsql).header);
  EXPECT_TRUE(empty.rows.empty());

  const Case refused[] = {
      // TOP and DISTINCT choose among the rows of all keys.
      {"SELECT TOP 2 InvoiceID, Code FROM InvoiceDetails", "InvoiceID"},
      {"SELECT DISTINCT InvoiceID FROM InvoiceDetails", "InvoiceID"},
      // An aggregate is one row of all keys.
      {"SELECT MAX(InvoiceID) AS InvoiceID FROM InvoiceDetails", "InvoiceID"},
      // A computed column or a text one is no key the server compares as
      // the relation does.
      {"SELECT InvoiceID + 0 AS InvoiceID, Code FROM InvoiceDetails", "InvoiceID"},
      {"SELECT Code AS InvoiceID FROM InvoiceDetails", "InvoiceID"},
      // No such column, or the statement is a UNION.
      {"SELECT Code FROM InvoiceDetails", "InvoiceID"},
      {"SELECT InvoiceID FROM InvoiceDetails UNION SELECT ID FROM Invoices", "InvoiceID"},
  };
  for (const Case& c : refused)
    EXPECT_FALSE(TranslateRestrictedToKeys(c.tsql, c.column, keys, db.schema(), Dialect::SQLite).has_value())
        << c.tsql;
}

}  // namespace
}  // namespace orv::sql::testing
