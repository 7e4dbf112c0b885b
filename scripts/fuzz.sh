#!/usr/bin/env bash
# A long local run of one fuzz target: scripts/fuzz.sh TARGET SECONDS
# Builds the target in the test tree (build/test, or $TGUI_TEST_BUILD) and runs
# it on its seeds and its growing corpus with a fixed memory limit of 2048 MB,
# so that a target that keeps memory stops on the limit with a report instead
# of taking the machine. Extra arguments go to libFuzzer (-jobs=2, -dict=...).
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
if [ $# -lt 2 ] || ! [[ "$2" =~ ^[0-9]+$ ]]; then
  echo "usage: scripts/fuzz.sh TARGET SECONDS [libFuzzer options]" >&2
  exit 2
fi
target="$1"
seconds="$2"
shift 2
build="${TGUI_TEST_BUILD:-$root/build/test}"
if [ ! -f "$build/build.ninja" ]; then
  echo "fuzz.sh: no test tree in $build; run scripts/test.sh first" >&2
  exit 2
fi
seeds="$(find "$root/tests" -type d -path "*/corpus/$target" | head -n 1)"
if [ -z "$seeds" ]; then
  echo "fuzz.sh: no seeds for $target under tests/*/corpus/" >&2
  exit 2
fi
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
nice cmake --build "$build" --target "$target" -j2
binary="$build/bin/$target"
corpus="$build/fuzz-corpus/$target"
mkdir -p "$corpus"
export QT_QPA_PLATFORM=offscreen
# A small quarantine: AddressSanitizer's default one holds 256 MB of freed memory,
# which reads as growth in the resident size the memory limit watches.
export ASAN_OPTIONS="${ASAN_OPTIONS:-detect_leaks=1:quarantine_size_mb=16}"
export LSAN_OPTIONS="${LSAN_OPTIONS:-suppressions=$root/tests/lsan.supp:print_suppressions=0}"
# Leaks are reported at the end of the run; the memory limit catches growth on the way.
exec "$binary" -max_total_time="$seconds" -rss_limit_mb=2048 -malloc_limit_mb=2048 -timeout=10 \
  -print_final_stats=1 "$@" "$corpus" "$seeds"
