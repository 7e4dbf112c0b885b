#!/bin/sh
# Builds the host without CMake, from pkg-config alone:
#   sh build-with-pkg-config.sh [output folder]      (default: ./build-pc)
# PKG_CONFIG_PATH must reach TGUILib.pc when TGUILib is not installed under
# /usr or /usr/local: <prefix>/lib/<arch>/pkgconfig or <prefix>/lib/pkgconfig.
# CXX, CXXFLAGS and LDFLAGS are honoured.
set -eu
src="$(cd "$(dirname "$0")" && pwd)"
out="${1:-build-pc}"
CXX="${CXX:-c++}"
MOC="${MOC:-$(pkg-config --variable=host_bins Qt5Core)/moc}"
mkdir -p "$out"

# moc for the two classes with Q_OBJECT, then one compiler call. Qt wants
# position-independent code in programs that link it.
"$MOC" "$src/HostManager.h" -o "$out/moc_HostManager.cpp"
"$MOC" "$src/HostScreen.h" -o "$out/moc_HostScreen.cpp"
# shellcheck disable=SC2046,SC2086
$CXX -std=c++17 -fPIC ${CXXFLAGS:-} $(pkg-config --cflags TGUILib) -I"$src" \
  "$src/main.cpp" "$src/HostManager.cpp" "$src/HostScreen.cpp" \
  "$out/moc_HostManager.cpp" "$out/moc_HostScreen.cpp" \
  -o "$out/tgui-host" ${LDFLAGS:-} $(pkg-config --libs TGUILib)
echo "built $out/tgui-host"
