// A per-row lookup rewritten to read every key at once.
//
// Reports walk thousands of rows and, for each, ask the database one small
// question by key: "SELECT SUM(Amount) ... WHERE InvoiceID = 17 AND ...". On
// a server each question is a round trip. Within a report's snapshot the
// answers cannot change, so the database layer may ask once for all keys:
//
//   SELECT InvoiceID, SUM(Amount) ... WHERE ... GROUP BY InvoiceID
//
// and answer each key from memory. This file decides whether a statement is
// such a lookup and prints its batched form; the database layer decides
// when it pays (db/lookup_batch.h).
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "platform/sql/lexer.h"
#include "platform/sql/translate.h"

namespace orv::sql {

struct BatchedLookup {
  // The key first, then the lookup's own columns; ordered by the key.
  Translation translation;
  // The lookup is aggregates only (SUM, COUNT, MIN, MAX, AVG, without
  // GROUP BY): it gives one row for every key, and a key without rows gets
  // the aggregates of no rows: COUNT 0, the others NULL. `count_columns`
  // marks the COUNT columns (of the lookup's own columns). A plain lookup
  // gives a key's rows, or none.
  bool aggregate = false;
  std::vector<bool> count_columns;
};

// The batched form of `tsql` over the whole-number literal that starts at
// `key` (line and column as the lexer counts them), or nothing when the
// statement is not a lookup by that literal:
// - one SELECT (no UNION, TOP, DISTINCT, GROUP BY or HAVING);
// - the literal (a whole number, or one written as text: '17') is compared
//   by "=" with an integer column, as a conjunct at the top of the WHERE
//   clause, so that grouping by the column gives exactly the rows each key
//   would select;
// - the select list is all plain columns and expressions, or all bare
//   aggregates (no ORDER BY then).
// At most `row_limit` + 1 rows are read, so a caller can tell an oversized
// result. With `only`, the batch reads those keys alone ("column IN
// (only...)" in place of the key's comparison), not every key of the table:
// the invoices a report is walking, not all the practice's. Throws SqlError
// for a statement that does not translate at all.
std::optional<BatchedLookup> TranslateBatchedLookup(std::string_view tsql, Pos key, const Schema& schema,
                                                    Dialect dialect, int64_t row_limit,
                                                    const std::vector<int64_t>* only = nullptr);

// `tsql` restricted to the rows whose result column `column` is one of
// `keys`: the same statement with "AND column IN (keys...)" at the top of
// its WHERE clause, so the rows keep their order and their columns; no rows
// for no keys. A SHAPE
// reads its child this way when its parent holds few keys: the lines of one
// invoice, not every invoice line of the practice. Nothing when the
// statement cannot be restricted so (not one plain SELECT; TOP, DISTINCT,
// grouping or aggregates; the column is no integer column of a table).
std::optional<Translation> TranslateRestrictedToKeys(std::string_view tsql, std::string_view column,
                                                     const std::vector<int64_t>& keys, const Schema& schema,
                                                     Dialect dialect);

}  // namespace orv::sql
