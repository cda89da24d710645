#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds with AddressSanitizer
# and UndefinedBehaviorSanitizer, runs every test with CTest, runs the T-SQL
# conformance cases through the command-line host, and fuzzes the T-SQL
# parser briefly.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash scripts/deps.sh
jobs=$(nproc)
build=${BUILD_DIR:-build-asan}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DORVENDA_SANITIZE=ON >/dev/null
cmake --build "$build" -j"$jobs"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build" --output-on-failure -j"$jobs"

# The shared T-SQL conformance cases, run through `orvenda-reports sql` as a
# support person would run them (they sit beside the checkout when present).
cases="$root/../shared/tsql-cases"
if [ -x "$cases/run.sh" ]; then
  echo "== T-SQL conformance cases"
  bash "$cases/run.sh" -c "$root/$build/app/orvenda-reports sql --db sqlite:{db} --today 2026-11-20 --format tsv" \
    | tail -n 1
fi

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
