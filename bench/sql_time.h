// Time spent inside SQLite, for the benchmarks: a benchmark program that
// includes this header (once) defines sqlite3_step and sqlite3_prepare_v2/v3
// itself; the program's own definitions come before the shared library's,
// so every call from the database layer is timed here and passed on.
//
// The wrappers read SqlClock twice a call, and a long list makes some
// 300,000 calls. On x86-64 with an invariant time-stamp counter SqlClock
// reads the counter itself, calibrated once against steady_clock when the
// program starts: about half the cost of a steady_clock read (a vDSO call
// that reads the same counter and converts under a sequence lock), and the
// less a wrapper spends the less of its cost lands on either side of the
// SQL figure. Elsewhere it is steady_clock.
#pragma once

#include <dlfcn.h>
#include <sqlite3.h>
#if defined(__x86_64__)
#include <cpuid.h>
#include <x86intrin.h>
#endif

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <algorithm>
#include <map>
#include <string>
#include <thread>
#include <utility>
#include <vector>

// A monotonic clock in nanoseconds over the processor's time-stamp counter
// where it ticks at one rate whatever the core's speed and sleep state
// (CPUID 0x80000007, EDX bit 8), else over steady_clock. Its time points
// are comparable within one process and its forked children only.
struct SqlClock {
  using duration = std::chrono::nanoseconds;
  using rep = duration::rep;
  using period = duration::period;
  using time_point = std::chrono::time_point<SqlClock>;
  static constexpr bool is_steady = true;

  static time_point now() noexcept {
#if defined(__x86_64__)
    if (rate_.ns_per_tick > 0)
      return time_point(duration(rep(double(__rdtsc() - rate_.tick0) * rate_.ns_per_tick)));
#endif
    return time_point(std::chrono::duration_cast<duration>(
        std::chrono::steady_clock::now().time_since_epoch()));
  }
  // True when now() reads the time-stamp counter.
  static bool CountsTicks() { return rate_.ns_per_tick > 0; }

 private:
  struct Rate {
    unsigned long long tick0 = 0;
    double ns_per_tick = 0;  // 0: steady_clock
  };
  // The counter's rate against steady_clock over 20 ms, each end read as a
  // pair of adjacent reads: a microsecond of jitter in 20 ms is 0.005%.
  static Rate Calibrate() {
    Rate r;
#if defined(__x86_64__)
    unsigned eax = 0, ebx = 0, ecx = 0, edx = 0;
    if (!__get_cpuid(0x80000007, &eax, &ebx, &ecx, &edx) || !(edx & (1u << 8))) return r;
    const auto s0 = std::chrono::steady_clock::now();
    const unsigned long long t0 = __rdtsc();
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
    const auto s1 = std::chrono::steady_clock::now();
    const unsigned long long t1 = __rdtsc();
    if (t1 <= t0) return r;
    r.tick0 = t0;
    r.ns_per_tick = double(std::chrono::duration_cast<duration>(s1 - s0).count()) / double(t1 - t0);
#endif
    return r;
  }
  static inline const Rate rate_ = Calibrate();
};

namespace {

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

