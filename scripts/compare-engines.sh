#!/usr/bin/env bash
# Runs every report of tests/engines/reports.txt on two databases holding the
# same practice (a SQLite file and its copy on PostgreSQL) and compares the
# text of the documents. Prints one line per report and exits 1 on any
# difference.
#
#   scripts/compare-engines.sh BINARY FIRST_DB SECOND_DB OUTDIR
set -uo pipefail
bin=${1:?binary}; first=${2:?first db}; second=${3:?second db}; out=${4:?output folder}
root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$out"
failed=0 passed=0
while IFS='|' read -r name call; do
  case $name in ''|\#*) continue ;; esac
  for side in first second; do
    db=$first; [ $side = second ] && db=$second
    eval "args=($call)"
    "$bin" --db "$db" --today 2026-11-23 --out "$out/$name.$side.txt" "${args[@]}" \
      >"$out/$name.$side.log" 2>&1
    echo $? >"$out/$name.$side.rc"
    # A report that prints straight to the printer leaves a PDF beside the
    # output instead (no printer here): compare its text.
    printed="$out/$name.$side-printed.pdf"
    if [ ! -f "$out/$name.$side.txt" ] && [ -f "$printed" ]; then
      pdftotext -layout "$printed" "$out/$name.$side.txt"
    fi
  done
  if [ "$(cat "$out/$name.first.rc")" != 0 ] || [ "$(cat "$out/$name.second.rc")" != 0 ]; then
    echo "FAIL $name: exit $(cat "$out/$name.first.rc") / $(cat "$out/$name.second.rc")"
    tail -n 3 "$out/$name.first.log" "$out/$name.second.log" | sed 's/^/    /'
    failed=$((failed + 1))
  elif ! diff -q "$out/$name.first.txt" "$out/$name.second.txt" >/dev/null; then
    echo "DIFF $name"
    diff "$out/$name.first.txt" "$out/$name.second.txt" | head -n 10 | sed 's/^/    /'
    failed=$((failed + 1))
  else
    echo "same $name ($(wc -l <"$out/$name.first.txt") lines)"
    passed=$((passed + 1))
  fi
done <"$root/tests/engines/reports.txt"
echo "$passed same, $failed different"
[ $failed = 0 ]
