#!/usr/bin/env bash
# A throwaway PostgreSQL cluster for the tests: its own data directory,
# loopback only, run by an unprivileged user, on a free port.
#
#   scripts/pg.sh start DIR   creates (if needed) and starts the cluster in DIR,
#                             prints the URL to reach it
#   scripts/pg.sh stop DIR    stops it
#   scripts/pg.sh url DIR     prints the URL of a running cluster
#
# The URL names the superuser "orvenda" with trust authentication on
# 127.0.0.1 only, so nothing outside this machine can reach it. A second
# login, "orvenda_pw" with the password "right-password", must give its
# password, so that the tests can try a wrong one.
set -euo pipefail
cmd=${1:?usage: pg.sh start|stop|url DIR}
dir=${2:?usage: pg.sh start|stop|url DIR}
bin=$(ls -d /usr/lib/postgresql/*/bin 2>/dev/null | sort -V | tail -n 1)
[ -n "$bin" ] || { echo "PostgreSQL server programs are not installed" >&2; exit 2; }

# The server refuses to run as root; under root it runs as a user of its own.
run_as=()
owner=$(id -un)
if [ "$(id -u)" = 0 ]; then
  owner=orvenda-pg
  id "$owner" >/dev/null 2>&1 || useradd --system --no-create-home --shell /usr/sbin/nologin "$owner"
  run_as=(runuser -u "$owner" --)
fi

free_port() {
  python3 -c 'import socket; s=socket.socket(); s.bind(("127.0.0.1",0)); print(s.getsockname()[1]); s.close()'
}

case $cmd in
  start)
    mkdir -p "$dir"
    dir=$(cd "$dir" && pwd)
    if [ "$(id -u)" = 0 ]; then chown "$owner" "$dir"; fi
    if [ ! -f "$dir/data/PG_VERSION" ]; then
      "${run_as[@]}" "$bin/initdb" -D "$dir/data" -U orvenda --auth=trust --encoding=UTF8 \
        --locale=C.UTF-8 >"$dir/initdb.log" 2>&1 || { cat "$dir/initdb.log" >&2; exit 1; }
      hba="$dir/data/pg_hba.conf"
      { echo "host all orvenda_pw 127.0.0.1/32 scram-sha-256"; cat "$hba"; } >"$hba.new"
      mv "$hba.new" "$hba"
      if [ "$(id -u)" = 0 ]; then chown "$owner" "$hba"; fi
      fresh=1
    fi
    port=$(free_port)
    echo "$port" >"$dir/port"
    "${run_as[@]}" "$bin/pg_ctl" -D "$dir/data" -l "$dir/server.log" -w -t 60 \
      -o "-c listen_addresses=127.0.0.1 -p $port -k $dir -c fsync=off -c synchronous_commit=off -c full_page_writes=off -c max_connections=60" \
      start >/dev/null || { cat "$dir/server.log" >&2; exit 1; }
    if [ "${fresh:-0}" = 1 ]; then
      psql -q "postgresql://orvenda@127.0.0.1:$port/postgres" \
        -c "CREATE ROLE orvenda_pw LOGIN PASSWORD 'right-password' CREATEDB" >/dev/null
    fi
    echo "postgresql://orvenda@127.0.0.1:$port/postgres"
    ;;
  stop)
    dir=$(cd "$dir" && pwd)
    "${run_as[@]}" "$bin/pg_ctl" -D "$dir/data" -m fast -w stop >/dev/null 2>&1 || true
    ;;
  url)
    echo "postgresql://orvenda@127.0.0.1:$(cat "$dir/port")/postgres"
    ;;
  *) echo "usage: pg.sh start|stop|url DIR" >&2; exit 2 ;;
esac
