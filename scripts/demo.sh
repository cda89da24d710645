#!/usr/bin/env bash
# Installs what is missing, builds the command-line host, creates the demo
# practice database and runs real reports to PDF files in out/.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
bash scripts/deps.sh
cmake -S . -B build -DCMAKE_BUILD_TYPE=Release -DORVENDA_TESTS=OFF >/dev/null
cmake --build build -j"$(nproc)" --target orvenda-reports
mkdir -p out
app=build/app/orvenda-reports
[ -f out/demo.db ] || $app demo-db out/demo.db --patients 500 --seed 1 --today 2026-11-20
run() { $app --db out/demo.db --today 2026-11-20 --office 1 --user frontdesk "$@"; }
run --out out/fee-guide.pdf rptFeeGuide 1
run --out out/patient-list.pdf rptPatientListSimple 0 frontdesk "Patient List"
echo "reports written to out/: fee-guide.pdf patient-list.pdf (more: $app list)"
