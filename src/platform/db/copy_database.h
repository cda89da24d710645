// Copies a whole practice database between engines (SQLite to PostgreSQL and
// back): tables with their declared types, keys and indexes, then the rows,
// in one transaction on the target. How a practice that outgrows its file
// moves to a server, and how the demo practice reaches a server.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

namespace orv::db {

struct CopyOptions {
  // Drops whatever tables the target holds first. Without it a target that
  // holds any table is refused, so nothing is overwritten by mistake.
  bool replace = false;
  // Called as rows go in: percent done (0-100) and the table being copied.
  std::function<void(int percent, const std::string& table)> progress;
};

struct CopySummary {
  int tables = 0;
  int64_t rows = 0;
};

// Throws DatabaseError when either end cannot be opened, when the target is
// not empty and `replace` is false, or when a statement fails; the target is
// then left as it was (its transaction is rolled back; a SQLite file the copy
// created is removed).
CopySummary CopyDatabase(const std::string& from_url, const std::string& to_url,
                         const CopyOptions& options = {});

}  // namespace orv::db
