#!/usr/bin/env bash
# The main job: the sample phone GUI zedagui against the simulated core.
# With no DISPLAY it runs headless and writes screenshots to out/screens.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
bash "$root/scripts/setup.sh"

build="${TGUI_DEMO_BUILD:-$root/build/release}"
cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DBUILD_TESTING=OFF >/dev/null
cmake --build "$build" --target zedagui tgui-core

out="${TGUI_DEMO_OUT:-$root/out/screens}"
cd "$root/run"
# The simulated core plays the demo scenario to zedagui; it ends with the demo.
"$build/bin/tgui-core" --port "${TGUI_DEMO_PORT:-10010}" --scenario scenarios/demo.txt &
core=$!
trap 'kill "$core" 2>/dev/null || true' EXIT
sleep 0.3
if [ -z "${DISPLAY:-}" ]; then
  rm -rf "$out"; mkdir -p "$out"
  QT_QPA_PLATFORM=offscreen "$build/bin/zedagui" --screenshots "$out" --exit-after 2000
  echo "screenshots in $out:"; ls "$out"
else
  "$build/bin/zedagui"
fi
