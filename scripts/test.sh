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

# Starts a throwaway server with scripts/SCRIPT.sh in a folder of its own,
# exports what it prints (how to reach it) as VAR and stops it on the way
# out. Under CI the tests that need it must run; elsewhere a machine without
# it skips them and says so. A VAR already set names a server to use.
#   start_server SCRIPT VAR "WHAT"
start_server() {
  local script=$1 var=$2 what=$3 dir value
  [ -z "${!var:-}" ] || return 0
  dir=$(mktemp -d "/tmp/orvenda-$script.XXXXXX")
  if value=$(bash "scripts/$script.sh" start "$dir"); then
    export "$var=$value"
    on_exit+=("bash \"\$root/scripts/$script.sh\" stop '$dir'; rm -rf '$dir'")
    echo "== $what at $value"
  else
    rm -rf "$dir"
    unset "$var"
    if [ -n "${CI:-}" ]; then echo "$what did not start; under CI its tests must run" >&2; exit 1; fi
    echo "== $what is not available here: its tests are skipped"
  fi
}
# A PostgreSQL cluster of our own (own data folder, loopback, free port).
start_server pg ORVENDA_TEST_PG "PostgreSQL test server"
# A CUPS scheduler of our own whose queue orvenda-test prints to a file,
# for the printing tests.
start_server cups CUPS_SERVER "CUPS test scheduler"

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
