// libFuzzer target: any text through the T-SQL lexer, parser, binder and
// both printers, and through the SHAPE parser when it begins with SHAPE
// (each of its commands then goes the same way). A statement the layer
// cannot take must end in SqlError (DatabaseError for SHAPE); anything else
// (a crash, a stack overflow, a sanitizer report, another exception) is a
// bug. When the translation succeeds, SQLite must accept the printed text.
#include <sqlite3.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "platform/db/db_error.h"
#include "platform/db/shape.h"
#include "platform/sql/sqlite_functions.h"
#include "platform/sql/translate.h"

namespace {

// A few tables with every kind of column the binder types differently.
const char* const kSchema =
    "CREATE TABLE Patient (ID INTEGER, LastName VARCHAR(30), FirstName VARCHAR(30), PreferredName "
    "VARCHAR(10),"
    " BirthDate DATETIME, [Active?] INTEGER, Balance MONEY, Score FLOAT, Logo BLOB, Notes TEXT);"
    "CREATE TABLE Invoices (ID INTEGER, [Invoice#] INTEGER, PatientID INTEGER, [Date] DATETIME,"
    " InvoiceTotal MONEY, [Complete?] INTEGER, Code VARCHAR(6), Rate DECIMAL(10,2));";

struct Engine {
  sqlite3* db = nullptr;
  orv::sql::Schema schema;
  Engine() {
    sqlite3_open(":memory:", &db);
    orv::sql::RegisterSqliteFunctions(db);
    sqlite3_exec(db, kSchema, nullptr, nullptr, nullptr);
    schema = orv::sql::LoadSqliteSchema(db);
  }
};

void Statement(const Engine& engine, const std::string& text);

void Shape(const Engine& engine, const orv::db::ShapeNode& node) {
  Statement(engine, node.command);
  for (const auto& child : node.children) Shape(engine, child.node);
}

void Statement(const Engine& engine, const std::string& text) {
  try {
    (void)orv::sql::Translate(text, engine.schema, orv::sql::Dialect::PostgreSQL);
  } catch (const orv::sql::SqlError&) {
  }
  orv::sql::Translation t;
  try {
    t = orv::sql::Translate(text, engine.schema, orv::sql::Dialect::SQLite);
  } catch (const orv::sql::SqlError&) {
    return;
  }
  sqlite3_stmt* stmt = nullptr;
  int rc =
      sqlite3_prepare_v2(engine.db, t.sql.c_str(), static_cast<int>(t.sql.size()), &stmt, nullptr);
  sqlite3_finalize(stmt);
  // SQLite's own limits (expression depth, compound size) may refuse a
  // statement; a syntax error means the printer wrote something wrong.
  if (rc != SQLITE_OK) {
    std::string msg = sqlite3_errmsg(engine.db);
    if (msg.find("syntax error") != std::string::npos ||
        msg.find("no such column") != std::string::npos) {
      std::abort();
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static Engine engine;
  std::string text(reinterpret_cast<const char*>(data), size);
  if (orv::db::IsShapeStatement(text)) {
    try {
      Shape(engine, orv::db::ParseShape(text));
    } catch (const orv::db::DatabaseError&) {
    }
    return 0;
  }
  Statement(engine, text);
  return 0;
}
