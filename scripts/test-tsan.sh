#!/usr/bin/env bash
# ThreadSanitizer run of the threaded parts: the library built with
# -fsanitize=thread in build/tsan (or $TGUI_TSAN_BUILD), then the tests of the
# core link's socket thread, the simulated core, the log client, the managers
# (layout manager, application manager) and the database peer, whose tgui-dbs
# runs a core link of its own. Extra arguments go to ctest.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TGUI_TSAN_BUILD:-$root/build/tsan}"
tests=(tst_core_corecom tst_core_tguicore tst_log_logclient tst_layout_layoutmgr tst_supervision_appmgr
       tst_dbs_peer)
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_C_COMPILER=clang -DCMAKE_CXX_COMPILER=clang++ \
  -DCMAKE_CXX_FLAGS_DEBUG="-O1 -g" -DCMAKE_C_FLAGS_DEBUG="-O1 -g" \
  -DTGUI_TSAN=ON -DTGUI_SANITIZE=OFF -DTGUI_FUZZ=OFF -DTGUI_WERROR=ON \
  -DTGUI_BUILD_BENCH=OFF -DTGUI_BUILD_EXAMPLES=OFF
cmake --build "$build" -j "${TGUI_JOBS:-2}" --target tgui-core tgui-dbs tgui-child "${tests[@]}"
export QT_QPA_PLATFORM=offscreen
cd "$build"
regex="^($(IFS='|'; echo "${tests[*]}"))\$"
ctest --output-on-failure -R "$regex" "$@"
