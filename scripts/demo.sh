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
run --out out/fee-guide.pdf rptFeeGuide 1 frontdesk
run --out out/patient-list.pdf rptPatientListSimple 0 frontdesk "Patient List"
run --out out/family-statement.pdf rptStatements 2026-01-01 2026-11-20 12 True
run --out out/aged-by-provider.pdf rptAccountsReceivable "" "" "" frontdesk
run --out out/patients-with-a-balance.pdf rptPatientsWithABalance frontdesk 2026-11-20 ""
run --out out/receipt.pdf rptReceipt 1 "" "" 2>/dev/null
run --out out/production.pdf rptProductionReports True True True True True True 2026-10-01 2026-10-31 0 frontdesk "" "" ""
run --out out/detailed-analysis.pdf srptDetailedAnalysis 2026-10-01 2026-10-31 0 frontdesk "ProviderID = 3 OR ProviderID = 5" True
run --out out/payroll.pdf rptPayroll "ID = 5 OR ID = 3" 2026-10-01 2026-10-31 frontdesk
run --out out/month-end.pdf rptMonthEndReport True True True True True True True 2026-10-01 2026-10-31 0 frontdesk "ProviderID = 2 OR ProviderID = 5" False True True True True "" True
run --out out/practice-analysis.pdf rptDayEndSummary 2026-10-01 2026-10-31 frontdesk
echo "reports written to out/ (more: $app list; $app help METHOD)"
