#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds with AddressSanitizer
# and UndefinedBehaviorSanitizer, runs every test with CTest, then the T-SQL
# conformance cases through the command-line host.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash scripts/deps.sh
build=${BUILD_DIR:-build-asan}
cmake -S . -B "$build" -DCMAKE_BUILD_TYPE=Debug -DORVENDA_SANITIZE=ON >/dev/null
cmake --build "$build" -j"$(nproc)"
export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
ctest --test-dir "$build" --output-on-failure -j"$(nproc)"
