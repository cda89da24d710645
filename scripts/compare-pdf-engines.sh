#!/usr/bin/env bash
# Runs every report of tests/engines/reports.txt twice on copies of one
# practice, writing the PDF once with the program's own writer and once
# through cairo (ORVENDA_PDF_ENGINE=cairo), and compares what a reader sees:
# the text of `pdftotext -layout`, and the pixels of the first and last
# pages at 100 dpi. Prints one line per report (the pixels that differ on
# the worse page, the sizes of both files) and exits 1 when a text differs
# or more than MAX_PIXELS pixels of a page differ by half the range or more.
#
# Small differences of shade along the edges of glyphs are expected: cairo
# writes glyph widths rounded to whole thousandths of an em and lets the
# error add up along a run (a word of eight letters ends some 0.05 pt short
# of where the layout measured it), where the program's writer puts every
# glyph where the layout put it. pdftoppm places glyphs on quarter pixels,
# so a glyph that lands across a quarter is shaded differently.
#
#   scripts/compare-pdf-engines.sh BINARY DB OUTDIR [MAX_PIXELS] [NAME...]
set -uo pipefail
bin=${1:?binary}; db=${2:?practice database}; out=${3:?output folder}
max=${4:-200}
shift $(($# < 4 ? $# : 4))
root=$(cd "$(dirname "$0")/.." && pwd)
mkdir -p "$out"
failed=0 passed=0

# Differing pixels of two PPM files of one size (a changed size counts all).
count_pixels() {
  python3 - "$1" "$2" <<'EOF'
import sys
def read(path):
    data = open(path, 'rb').read()
    fields, at = [], 0
    while len(fields) < 4:
        while data[at:at + 1].isspace():
            at += 1
        end = at
        while not data[end:end + 1].isspace():
            end += 1
        fields.append(data[at:end])
        at = end
    return (int(fields[1]), int(fields[2])), data[at + 1:]
(sa, a), (sb, b) = read(sys.argv[1]), read(sys.argv[2])
if sa != sb:
    print(sa[0] * sa[1], sa[0] * sa[1])
else:
    diffs = [max(abs(a[i + k] - b[i + k]) for k in range(3))
             for i in range(0, len(a), 3) if a[i:i + 3] != b[i:i + 3]]
    print(len(diffs), sum(1 for d in diffs if d >= 128))
EOF
}

while IFS='|' read -r name call; do
  case $name in ''|\#*) continue ;; esac
  if [ $# -gt 0 ] && ! printf '%s\n' "$@" | grep -qx "$name"; then continue; fi
  for engine in own cairo; do
    # A fresh copy each time: some reports write (the last statement date).
    cp "$db" "$out/practice.db"
    eval "args=($call)"
    env $([ $engine = cairo ] && echo ORVENDA_PDF_ENGINE=cairo) \
      "$bin" --db "$out/practice.db" --today 2026-11-23 --out "$out/$name.$engine.pdf" \
      "${args[@]}" >"$out/$name.$engine.log" 2>&1
    printed="$out/$name.$engine-printed.pdf"
    [ ! -f "$out/$name.$engine.pdf" ] && [ -f "$printed" ] && mv "$printed" "$out/$name.$engine.pdf"
  done
  if [ ! -f "$out/$name.own.pdf" ] || [ ! -f "$out/$name.cairo.pdf" ]; then
    echo "FAIL $name: no PDF"
    tail -n 3 "$out/$name.own.log" | sed 's/^/    /'
    failed=$((failed + 1))
    continue
  fi
  pdftotext -layout "$out/$name.own.pdf" "$out/$name.own.txt"
  pdftotext -layout "$out/$name.cairo.pdf" "$out/$name.cairo.txt"
  pages=$(pdfinfo "$out/$name.own.pdf" | awk '/^Pages:/ {print $2}')
  worst=0 strong=0
  for page in 1 "$pages"; do
    for engine in own cairo; do
      pdftoppm -r 100 -f "$page" -l "$page" -singlefile "$out/$name.$engine.pdf" \
        "$out/$name.$engine.p$page"
    done
    read -r n s < <(count_pixels "$out/$name.own.p$page.ppm" "$out/$name.cairo.p$page.ppm")
    [ "$n" -gt "$worst" ] && worst=$n
    [ "$s" -gt "$strong" ] && strong=$s
  done
  sizes="$(stat -c %s "$out/$name.own.pdf") / $(stat -c %s "$out/$name.cairo.pdf") bytes"
  if ! diff -q "$out/$name.own.txt" "$out/$name.cairo.txt" >/dev/null; then
    echo "TEXT $name ($sizes)"
    diff "$out/$name.own.txt" "$out/$name.cairo.txt" | head -n 6 | sed 's/^/    /'
    failed=$((failed + 1))
  elif [ "$strong" -gt "$max" ]; then
    echo "PIXELS $name: $worst pixels differ, $strong by half or more ($sizes)"
    failed=$((failed + 1))
  else
    echo "same $name: $pages pages, $worst pixels differ, $strong by half or more ($sizes)"
    passed=$((passed + 1))
  fi
done <"$root/tests/engines/reports.txt"
echo "$passed alike, $failed not"
[ "$failed" = 0 ]
