#!/usr/bin/env bash
# Installs the Debian packages the build, the tests and the demo need, and
# only those that are missing. Safe to run again.
set -euo pipefail
pkgs=(build-essential cmake pkg-config libgtest-dev libsqlite3-dev sqlite3 libpq-dev
      libcairo2-dev libpango1.0-dev libfmt-dev libfreetype-dev libfontconfig-dev libjpeg-dev libdeflate-dev fonts-dejavu-core fonts-wine fonts-liberation
      libcpp-httplib-dev nlohmann-json3-dev
      poppler-utils qpdf python3 chromium
      postgresql postgresql-client
      cups cups-client cups-filters
      clang libclang-rt-14-dev)
missing=()
for p in "${pkgs[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "installing: ${missing[*]}"
  sudo=""
  [ "$(id -u)" -eq 0 ] || sudo="sudo"
  $sudo apt-get update -qq
  DEBIAN_FRONTEND=noninteractive $sudo apt-get install -y -qq --no-install-recommends "${missing[@]}"
fi
