// The demo practice: a complete, internally consistent practice database
// made up from a seed, for the report tests (small sizes) and the benchmarks
// (large sizes).
//
// The same seed, size and today give the same rows in the same order, so the
// same file byte for byte. Nothing reads the system clock.
#pragma once

#include <cstdint>
#include <string>

#include "platform/practice/schema.h"

namespace orv::practice {

struct DemoOptions {
  int patients = 500;        // patients to make; 0 writes the empty tables alone
  uint64_t seed = 1;
  int today_year = 2026;     // the last day of the history; appointments
  int today_month = 11;      // after it are the booked future
  int today_day = 20;
  int history_years = 4;     // how far back the practice's records go
};

// Counts of what was written, for the command's summary line.
struct DemoSummary {
  int64_t patients = 0;
  int64_t invoices = 0;
  int64_t payments = 0;
  int64_t appointments = 0;
  int64_t rows = 0;  // every row of every table
};

// Creates the schema in an empty database and fills it, all in one
// transaction. Throws SchemaError when SQLite refuses a statement.
DemoSummary WriteDemoPractice(sqlite3* db, const DemoOptions& options);

// The same into a new file; an existing file at that path is replaced.
DemoSummary WriteDemoPracticeFile(const std::string& path, const DemoOptions& options);

}  // namespace orv::practice
