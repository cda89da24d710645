#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds with AddressSanitizer
# and UndefinedBehaviorSanitizer, starts a throwaway PostgreSQL server, runs
# every test with CTest, runs the sample T-SQL cases (when ../shared holds
# them) through the command-line host on both engines, compares every report's text between
# the engines, and fuzzes the T-SQL parser briefly.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash scripts/deps.sh
# A compiler cache, where the machine has one, makes a second run of the
# suite rebuild only what changed. Paths are taken relative to the checkout,
# so every clone on the machine shares the cached objects.
if command -v ccache >/dev/null; then
  export CMAKE_C_COMPILER_LAUNCHER=${CMAKE_C_COMPILER_LAUNCHER:-ccache}
  export CMAKE_CXX_COMPILER_LAUNCHER=${CMAKE_CXX_COMPILER_LAUNCHER:-ccache}
  export CCACHE_BASEDIR=${CCACHE_BASEDIR:-$root}
  export CCACHE_NOHASHDIR=${CCACHE_NOHASHDIR:-1}
fi
jobs=$(nproc)
build=${BUILD_DIR:-build-asan}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DORVENDA_SANITIZE=ON >/dev/null
cmake --build "$build" -j"$jobs"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
app="$root/$build/app/orvenda-reports"

# The servers the tests start are stopped on the way out, whatever happens.
on_exit=()
cleanup() { for c in "${on_exit[@]}"; do eval "$c"; done; }
trap cleanup EXIT

# A PostgreSQL cluster of our own (own data folder, loopback, free port),
# stopped on the way out. Under CI the server tests must run; elsewhere a
# machine without the server skips them and says so.
pg_dir=""
if [ -z "${ORVENDA_TEST_PG:-}" ]; then
  pg_dir=$(mktemp -d /tmp/orvenda-pg.XXXXXX)
  if ORVENDA_TEST_PG=$(bash scripts/pg.sh start "$pg_dir"); then
    export ORVENDA_TEST_PG
    on_exit+=('bash "$root/scripts/pg.sh" stop "$pg_dir"; rm -rf "$pg_dir"')
    echo "== PostgreSQL test server at $ORVENDA_TEST_PG"
  else
    rm -rf "$pg_dir"
    unset ORVENDA_TEST_PG
    if [ -n "${CI:-}" ]; then echo "PostgreSQL did not start; under CI its tests must run" >&2; exit 1; fi
    echo "== PostgreSQL is not available here: its tests are skipped"
  fi
fi

# A CUPS scheduler of our own with a queue that prints to a file, for the
# printing tests (scripts/cups.sh); without one they report themselves
# skipped, and under CI they must run.
if [ -z "${CUPS_SERVER:-}" ]; then
  cups_dir=$(mktemp -d /tmp/orvenda-cups.XXXXXX)
  if CUPS_SERVER=$(bash scripts/cups.sh start "$cups_dir"); then
    export CUPS_SERVER
    on_exit+=('bash "$root/scripts/cups.sh" stop "$cups_dir"; rm -rf "$cups_dir"')
    echo "== CUPS test scheduler at $CUPS_SERVER, queue orvenda-test"
  else
    rm -rf "$cups_dir"
    if [ -n "${CI:-}" ]; then echo "CUPS did not start; under CI its tests must run" >&2; exit 1; fi
    echo "== CUPS is not available here: the printing tests are skipped"
  fi
fi

ctest --test-dir "$build" --output-on-failure -j"$jobs"

# The sample T-SQL conformance cases, run through `orvenda-reports sql` as a
# support person would run them: an extra step when they sit beside the
# checkout (../shared/tsql-cases); the project's own fixture and cases under
# tests/ ran above either way.
cases="$root/../shared/tsql-cases"
status=0
if [ ! -f "$cases/run.sh" ]; then
  echo "== no sample T-SQL cases at $cases: that extra step is skipped"
else
  echo "== T-SQL conformance cases on SQLite"
  result=$(bash "$cases/run.sh" -c "$app sql --db sqlite:{db} --today 2026-11-20 --format tsv" | tail -n 1 || true)
  echo "$result"
  case $result in *" 0 failed") ;; *) status=1 ;; esac
  if [ -n "${ORVENDA_TEST_PG:-}" ]; then
    echo "== T-SQL conformance cases on PostgreSQL"
    result=$(bash "$cases/run.sh" \
      -c "bash $root/scripts/pg-sql.sh $app $ORVENDA_TEST_PG {db} --today 2026-11-20 --format tsv" | tail -n 1 || true)
    echo "$result"
    case $result in *" 0 failed") ;; *) status=1 ;; esac
  fi
fi

# Every report on the same demo practice, once from the file and once from
# the server: the documents' text must be the same.
if [ -n "${ORVENDA_TEST_PG:-}" ]; then
  echo "== reports on SQLite and on PostgreSQL"
  work="$root/$build/engines"
  rm -rf "$work" && mkdir -p "$work"
  "$app" demo-db "$work/demo.db" --patients 300 --today 2026-11-23 >/dev/null
  "$app" copy-db "$work/demo.db" "${ORVENDA_TEST_PG%/*}/engines_demo" --replace >/dev/null 2>&1
  bash scripts/compare-engines.sh "$app" "$work/demo.db" "${ORVENDA_TEST_PG%/*}/engines_demo" "$work/out" \
    | tail -n 25 || status=1
fi
[ $status = 0 ] || { echo "conformance or engine comparison failed" >&2; exit 1; }

# A short libFuzzer run of the T-SQL parser (clang only).
if command -v clang++ >/dev/null && [ "${ORVENDA_SKIP_FUZZ:-0}" != 1 ]; then
  echo "== fuzzing the T-SQL parser for ${ORVENDA_FUZZ_SECONDS:-30} s"
  cmake -S . -B build-fuzz -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_C_COMPILER=clang \
    -DCMAKE_CXX_COMPILER=clang++ -DORVENDA_FUZZ=ON -DORVENDA_TESTS=OFF >/dev/null
  cmake --build build-fuzz -j"$jobs" --target tsql_parser_fuzz
  mkdir -p build-fuzz/corpus
  build-fuzz/fuzz/tsql_parser_fuzz -max_total_time="${ORVENDA_FUZZ_SECONDS:-30}" -max_len=4096 \
    build-fuzz/corpus fuzz/corpus 2>&1 | tail -n 3
fi
