// Time spent inside SQLite, for the benchmarks: a benchmark program that
// includes this header (once) defines sqlite3_step and sqlite3_prepare_v2/v3
// itself; the program's own definitions come before the shared library's,
// so every call from the database layer is timed here and passed on.
#pragma once

#include <dlfcn.h>
#include <sqlite3.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace {

using SqlClock = std::chrono::steady_clock;

// Time inside SQLite and the number of calls, gathered by the wrappers.
SqlClock::duration g_sql_time{};
// Time in sqlite3_step by the engine's statement text, for the slowest list.
std::map<std::string, SqlClock::duration>* g_by_statement = nullptr;
long g_steps = 0;
long g_prepares = 0;

// Prints the `count` statements of `by_statement` that spent longest in
// sqlite3_step, slowest first, each cut to its first 110 characters.
inline void PrintSlowestStatements(const std::map<std::string, SqlClock::duration>& by_statement, size_t count = 3) {
  std::vector<std::pair<SqlClock::duration, std::string>> slow;
  for (const auto& [text, spent] : by_statement) slow.emplace_back(spent, text);
  std::sort(slow.rbegin(), slow.rend());
  for (size_t i = 0; i < slow.size() && i < count; ++i)
    std::printf("    %7.3f s  %.110s...\n", std::chrono::duration<double>(slow[i].first).count(),
                slow[i].second.c_str());
}

template <typename F>
F Real(const char* name) {
  static_assert(sizeof(F) == sizeof(void*));
  void* sym = dlsym(RTLD_NEXT, name);
  if (sym == nullptr) {
    std::fprintf(stderr, "cannot find %s in the shared libraries\n", name);
    std::abort();
  }
  F f;
  std::memcpy(&f, &sym, sizeof f);
  return f;
}

}  // namespace

// The program's own definitions come before the shared library's, so every
// call from the database layer lands here first.
extern "C" int sqlite3_step(sqlite3_stmt* stmt) {
  static auto real = Real<int (*)(sqlite3_stmt*)>("sqlite3_step");
  auto start = SqlClock::now();
  int rc = real(stmt);
  auto spent = SqlClock::now() - start;
  g_sql_time += spent;
  ++g_steps;
  if (g_by_statement != nullptr) (*g_by_statement)[sqlite3_sql(stmt)] += spent;
  return rc;
}

extern "C" int sqlite3_prepare_v2(sqlite3* db, const char* sql, int n, sqlite3_stmt** stmt,
                                  const char** tail) {
  static auto real =
      Real<int (*)(sqlite3*, const char*, int, sqlite3_stmt**, const char**)>("sqlite3_prepare_v2");
  auto start = SqlClock::now();
  int rc = real(db, sql, n, stmt, tail);
  g_sql_time += SqlClock::now() - start;
  ++g_prepares;
  return rc;
}

extern "C" int sqlite3_prepare_v3(sqlite3* db, const char* sql, int n, unsigned int flags,
                                  sqlite3_stmt** stmt, const char** tail) {
  static auto real =
      Real<int (*)(sqlite3*, const char*, int, unsigned int, sqlite3_stmt**, const char**)>(
          "sqlite3_prepare_v3");
  auto start = SqlClock::now();
  int rc = real(db, sql, n, flags, stmt, tail);
  g_sql_time += SqlClock::now() - start;
  ++g_prepares;
  return rc;
}

