#!/usr/bin/env bash
# `orvenda-reports sql` against a PostgreSQL copy of a SQLite file: how the
# shared T-SQL conformance cases run on the server engine. The runner hands
# each case a fresh fixture file; it is copied into one scratch database on
# the server (replacing the last case's tables), then the statement runs
# there.
#
#   scripts/pg-sql.sh BINARY SERVER_URL FIXTURE.db [sql options...] STATEMENT
set -uo pipefail
bin=${1:?binary}; server=${2:?server url}; fixture=${3:?fixture file}
shift 3
target="${server%/*}/tsql_cases"
"$bin" copy-db "sqlite:$fixture" "$target" --replace >/dev/null 2>"$fixture.copy.log" || {
  cat "$fixture.copy.log" >&2
  exit 1
}
exec "$bin" sql --db "$target" "$@"
