// The cost of a single-value lookup by key: a raw SQLite prepared statement
// against ReturnValue through the database layer (statement text built per
// key, translated and prepared once per connection, rows read into a
// recordset). Prints microseconds per call for each.
//
//   bench_db_lookup [rows=20000] [calls=200000]
#include <sqlite3.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <random>
#include <string>
#include <vector>

#include "platform/db/lookup.h"
#include "platform/db/recordset.h"

namespace {

double Micros(std::chrono::steady_clock::duration d, long calls) {
  return std::chrono::duration<double, std::micro>(d).count() / static_cast<double>(calls);
}

}  // namespace

int main(int argc, char** argv) {
  const long rows = argc > 1 ? std::atol(argv[1]) : 20000;
  const long calls = argc > 2 ? std::atol(argv[2]) : 200000;
  const std::string path =
      (std::filesystem::temp_directory_path() / ("orvenda_bench_lookup_" + std::to_string(::getpid()) + ".db"))
          .string();
  std::filesystem::remove(path);

  // A patient table of `rows` rows with an integer key.
  sqlite3* raw = nullptr;
  sqlite3_open(path.c_str(), &raw);
  sqlite3_exec(raw,
               "CREATE TABLE Patient (ID INTEGER PRIMARY KEY, LastName VARCHAR(30), FirstName VARCHAR(30), "
               "Balance MONEY); BEGIN",
               nullptr, nullptr, nullptr);
  sqlite3_stmt* ins = nullptr;
  sqlite3_prepare_v2(raw, "INSERT INTO Patient VALUES (?1, ?2, ?3, ?4)", -1, &ins, nullptr);
  for (long i = 1; i <= rows; ++i) {
    std::string last = "Last" + std::to_string(i), first = "First" + std::to_string(i);
    sqlite3_bind_int64(ins, 1, i);
    sqlite3_bind_text(ins, 2, last.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_text(ins, 3, first.c_str(), -1, SQLITE_TRANSIENT);
    sqlite3_bind_double(ins, 4, static_cast<double>(i % 1000) / 4);
    sqlite3_step(ins);
    sqlite3_reset(ins);
  }
  sqlite3_finalize(ins);
  sqlite3_exec(raw, "COMMIT", nullptr, nullptr, nullptr);

  std::mt19937 rng(20261120);
  std::uniform_int_distribution<long> pick(1, rows);
  std::vector<long> keys(calls);
  for (auto& k : keys) k = pick(rng);

  // 1. Raw SQLite: one prepared statement, bind, step, read the text, reset.
  sqlite3_stmt* sel = nullptr;
  sqlite3_prepare_v2(raw, "SELECT LastName FROM Patient WHERE ID = ?1", -1, &sel, nullptr);
  size_t raw_bytes = 0;
  auto t0 = std::chrono::steady_clock::now();
  for (long k : keys) {
    sqlite3_bind_int64(sel, 1, k);
    if (sqlite3_step(sel) == SQLITE_ROW) {
      std::string v(reinterpret_cast<const char*>(sqlite3_column_text(sel, 0)), sqlite3_column_bytes(sel, 0));
      raw_bytes += v.size();
    }
    sqlite3_reset(sel);
  }
  auto raw_time = std::chrono::steady_clock::now() - t0;
  sqlite3_finalize(sel);
  sqlite3_close(raw);

  // 2. ReturnValue through the layer, as the reports call it.
  orv::db::Connection conn("sqlite:" + path);
  size_t layer_bytes = 0;
  t0 = std::chrono::steady_clock::now();
  for (long k : keys) layer_bytes += orv::CStr(orv::db::ReturnValue(conn, "Patient", "ID", orv::Variant(static_cast<int>(k)), "LastName")).size();
  auto layer_time = std::chrono::steady_clock::now() - t0;

  // 3. A forward-only recordset per key with two columns, as report loops do.
  t0 = std::chrono::steady_clock::now();
  for (long k : keys) {
    orv::db::Recordset rs;
    rs.Open("SELECT FirstName, Balance FROM Patient WHERE ID = " + std::to_string(k), conn);
    if (!rs.Eof()) layer_bytes += orv::CStr(rs["FirstName"].Value()).size();
  }
  auto rs_time = std::chrono::steady_clock::now() - t0;

  std::printf("rows %ld, calls %ld\n", rows, calls);
  std::printf("raw sqlite prepared lookup   %8.3f us/call\n", Micros(raw_time, calls));
  std::printf("ReturnValue through the layer %8.3f us/call (%+.3f us over raw)\n", Micros(layer_time, calls),
              Micros(layer_time - raw_time, calls));
  std::printf("Recordset.Open per key        %8.3f us/call\n", Micros(rs_time, calls));
  std::printf("statements cached: %zu\n", conn.CachedStatementCount());
  std::filesystem::remove(path);
  return raw_bytes > 0 && layer_bytes > 0 ? 0 : 1;
}
