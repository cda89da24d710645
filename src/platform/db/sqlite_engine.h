// The SQLite engine: one database file per connection, with the translator's
// SQL Server functions registered on it.
#pragma once

#include <string>

#include "platform/db/engine.h"

struct sqlite3;

namespace orv::db {

class SqliteEngine : public Engine {
 public:
  // Opens an existing database file (or ":memory:"). Throws DatabaseError when
  // the file is missing, unreadable or no SQLite database.
  // With `create`, a missing file is made.
  explicit SqliteEngine(const std::string& path, bool create = false);
  ~SqliteEngine() override;
  SqliteEngine(const SqliteEngine&) = delete;
  SqliteEngine& operator=(const SqliteEngine&) = delete;

  std::unique_ptr<EngineStatement> Prepare(const std::string& sql,
                                           const std::string& original) override;
  int64_t Changes() const override;
  int64_t LastInsertId() const override;
  sql::Schema LoadSchema() override;
  std::vector<std::string> PrimaryKey(const std::string& table) override;
  sql::Dialect dialect() const override { return sql::Dialect::SQLite; }
  std::string ParameterMarker(int n) const override {
    std::string marker = "?";
    marker += std::to_string(n);
    return marker;
  }

  std::string Describe() const override { return "SQLite database " + path_; }
  std::string Identity() override;
  std::vector<TableDef> ListTables() override;
  void CreateTable(const TableDef& table) override;
  void DropTable(const std::string& table) override;
  void InsertRows(const TableDef& table, const std::vector<std::vector<Variant>>& rows) override;

  sqlite3* handle() const { return db_; }

 private:
  sqlite3* db_ = nullptr;
  std::string path_;
};

}  // namespace orv::db
