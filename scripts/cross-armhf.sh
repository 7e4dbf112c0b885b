#!/usr/bin/env bash
# The phones' 32-bit ARM (armhf): builds the library, the programs, the
# benchmarks and the tests with Debian's cross compiler against an armhf
# sysroot, then runs the test suite under qemu-arm (user-mode emulation, on
# Qt's offscreen platform). Slow; not part of .ci/run.
#
#   bash scripts/cross-armhf.sh            # everything
#   bash scripts/cross-armhf.sh -R log     # extra arguments go to ctest
#
# TGUI_ARMHF_BUILD (default build/armhf) and TGUI_ARMHF_SYSROOT (default
# build/armhf-sysroot) move the trees; TGUI_ARMHF_JOBS (default 2) sets the
# compile jobs.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
build="${TGUI_ARMHF_BUILD:-$root/build/armhf}"
sysroot="${TGUI_ARMHF_SYSROOT:-$root/build/armhf-sysroot}"
jobs="${TGUI_ARMHF_JOBS:-2}"
start=$(date +%s)
stamp() { echo "cross-armhf: $* ($(( $(date +%s) - start )) s)"; }

# Host side: cmake, ninja, the host's moc and rcc (same Qt version as the
# sysroot's), then the cross compiler, the emulator and the sysroot maker.
bash "$root/scripts/setup.sh"
cross=(g++-arm-linux-gnueabihf qemu-user mmdebstrap)
missing=()
for p in "${cross[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed" || missing+=("$p")
done
if [ ${#missing[@]} -gt 0 ]; then
  echo "cross-armhf: installing ${missing[*]}"
  SUDO=""
  [ "$(id -u)" -eq 0 ] || SUDO="sudo"
  export DEBIAN_FRONTEND=noninteractive
  $SUDO apt-get update -q
  $SUDO apt-get install -y -q --no-install-recommends "${missing[@]}"
fi

# The armhf packages: every development library and font that setup.sh
# installs for the host (so a library added there comes along), the C and C++
# run time, and fontconfig's configuration. Host-only tools (compilers,
# sanitizer run times, servers) stay out.
packages=(libc6-dev libstdc++-12-dev fontconfig-config)
while read -r p; do
  case "$p" in
    libclang-rt-*|libfuzzer-*|*-dev-tools) ;;
    *-dev|libqt5*|fonts-*) packages+=("$p") ;;
  esac
done < <(sed -n '/^PACKAGES=(/,/^)/p' "$root/scripts/setup.sh" | sed 's/#.*//; s/PACKAGES=(//; s/)//' | tr -s ' \t' '\n' | sed '/^$/d')
wanted="$(printf '%s\n' "${packages[@]}" | sort -u | tr '\n' ' ')"

# A separate sysroot rather than armhf as a second dpkg architecture: the
# host's security updates exist for x86-64 only, and multiarch needs the same
# version of a package on both. The sysroot takes the release and its
# updates suite from the host's Debian mirror.
if [ ! -f "$sysroot/.tgui-packages" ] || [ "$(cat "$sysroot/.tgui-packages")" != "$wanted" ]; then
  mirror=$(awk '/^URIs:/ && $2 !~ /security/ {print $2; exit}' /etc/apt/sources.list.d/*.sources 2>/dev/null || true)
  [ -n "$mirror" ] || mirror=$(awk '/^deb / && $2 !~ /security/ {print $2; exit}' /etc/apt/sources.list /etc/apt/sources.list.d/*.list 2>/dev/null || true)
  [ -n "$mirror" ] || { echo "cross-armhf: no Debian mirror in the host's apt sources" >&2; exit 1; }
  suite=$(. /etc/os-release && echo "$VERSION_CODENAME")
  stamp "making the armhf sysroot in $sysroot: $wanted"
  rm -rf "$sysroot"
  mkdir -p "$(dirname "$sysroot")"
  nice -n 19 mmdebstrap --variant=extract --arch=armhf --include="$(echo "$wanted" | tr ' ' ',' | sed 's/,$//')" \
    "$suite" "$sysroot" "deb $mirror $suite main" "deb $mirror $suite-updates main"
  # Links such as usr/lib/.../libexpat.so -> /lib/... must stay inside the
  # sysroot for the linker and the emulator.
  while IFS= read -r -d '' link; do
    target=$(readlink "$link")
    ln -sfn "$(realpath -m --relative-to="$(dirname "$link")" "$sysroot$target")" "$link"
  done < <(find "$sysroot" -type l -lname '/*' -print0)
  echo "$wanted" > "$sysroot/.tgui-packages"
  stamp "sysroot ready, $(du -sh "$sysroot" | cut -f1)"
fi

# Share compiled objects between checkouts of the tree.
export CCACHE_BASEDIR="$root" CCACHE_NOHASHDIR=1
# Debug semantics as in the host's test tree (assertions on), without debug
# information; no sanitizers on ARM.
cmake -S "$root" -B "$build" -G Ninja \
  -DCMAKE_TOOLCHAIN_FILE="$root/cmake/armhf-toolchain.cmake" -DTGUI_ARMHF_SYSROOT="$sysroot" \
  -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG="-O1" -DCMAKE_C_FLAGS_DEBUG="-O1" \
  -DTGUI_SANITIZE=OFF -DTGUI_FUZZ=OFF
stamp "building in $build"
# moc runs again for every target: with Ninja a header that joins a target does
# not by itself make CMake's autogen step run, and the tree outlives merges.
find "$build" -path '*_autogen/timestamp' -delete 2>/dev/null || true
nice -n 19 cmake --build "$build" -j "$jobs"
stamp "built"

# Each test runs as `qemu-arm -L <sysroot> <test>` (CMAKE_CROSSCOMPILING_EMULATOR);
# the programs a test starts run through the wrappers in emulated-bin/.
# Tests that cannot run under user-mode emulation, as a ctest regular
# expression (see README, "32-bit ARM"): none today.
exclude=''
export QT_QPA_PLATFORM=offscreen
cd "$build"
status=0
nice -n 19 ctest --output-on-failure -j "$jobs" ${exclude:+-E "$exclude"} "$@" || status=$?
stamp "tests done, exit code $status"
exit $status
