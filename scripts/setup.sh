#!/usr/bin/env bash
# Installs every Debian 12 package the project needs. Idempotent: does nothing
# when all are present.
set -euo pipefail

PACKAGES=(
  # build
  cmake ninja-build ccache pkg-config clang libclang-rt-14-dev libfuzzer-14-dev
  # Qt 5.15
  qtbase5-dev qtbase5-dev-tools libqt5svg5-dev libqt5webkit5-dev libqt5sql5-sqlite
  # other libraries
  libexpat1-dev duktape-dev libsqlite3-dev libssl-dev openssl ca-certificates
  # run time: fonts of the sample skin and the manager's fixed fonts, D-Bus for
  # the QCop replacement
  fonts-droid-fallback fonts-dejavu-core fonts-open-sans fonts-motoya-l-maruberi
  fonts-motoya-l-cedar fonts-noto-core dbus
  # tests: another process writing to the database peer's file
  sqlite3
  # the HTTP proxy of the web services' tests and demo (the program, no service)
  tinyproxy-bin
)

missing=()
for p in "${PACKAGES[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "setup: installing ${missing[*]}"
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO="sudo"
export DEBIAN_FRONTEND=noninteractive
$SUDO apt-get update -q
$SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
