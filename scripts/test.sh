#!/usr/bin/env bash
# The whole test suite: installs what is missing, builds with clang under
# AddressSanitizer and UndefinedBehaviorSanitizer (warnings are errors), and
# runs every test through CTest on Qt's offscreen platform, fuzzers included.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"

build="${TGUI_TEST_BUILD:-$root/build/test}"
# Share compiled objects between checkouts of the tree.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_C_FLAGS_DEBUG="-O1 -g" \
  -DTGUI_SANITIZE=ON -DTGUI_FUZZ=ON -DTGUI_WERROR=ON
cmake --build "$build"

export QT_QPA_PLATFORM=offscreen
cd "$build"
ctest --output-on-failure -j2 "$@"
