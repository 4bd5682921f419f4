#!/usr/bin/env bash
# Runs the test suite of a Windows build under Wine: the library's objects
# with the Windows platform layer (global memory, wsprintfA, MessageBoxA) and
# the C example linked against the import library; on i686 also inkdot.dll
# itself, loaded and called by both names of every export.
#
#   scripts/test-wine.sh            # x86_64: build/win64 under 64-bit Wine
#   scripts/test-wine.sh i686       # i686: build/win32 under 32-bit Wine
#
# The i686 run needs wine32 from Debian's i386 architecture and a machine that
# runs 32-bit programs (scripts/ia32-exec.sh falls back to qemu-i386, which
# makes Wine very slow). wine32 installs only while every multiarch library
# has the same version in amd64 and i386, which fails when the mirror's i386
# security list is unreadable and an amd64 security update is installed.
set -euo pipefail
cd "$(dirname "$0")/.."
arch=${1:-x86_64}
case "$arch" in
  i686)
    scripts/install-packages.sh wine wine32:i386
    scripts/ia32-exec.sh
    scripts/build-dll.sh
    build=${INKDOT_WIN32_BUILD:-build/win32} ;;
  x86_64)
    scripts/install-packages.sh cmake ninja-build googletest wine wine64 \
      g++-mingw-w64-x86-64-posix binutils-mingw-w64-x86-64
    build=${INKDOT_WIN64_BUILD:-build/win64}
    cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-x86_64.cmake \
      -DCMAKE_BUILD_TYPE=Release
    cmake --build "$build" -j "${JOBS:-$(nproc)}" ;;
  *) echo "usage: $0 [x86_64|i686]"; exit 2 ;;
esac

export WINEPREFIX="$PWD/$build/wineprefix"
export WINEDEBUG=-all
# No Mono or Gecko installer prompts, no desktop menu entries.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
# No display: the allocation-failure box of the failure tests must not wait
# for a click (without a display driver MessageBoxA returns at once).
unset DISPLAY WAYLAND_DISPLAY
trap 'wineserver -k >/dev/null 2>&1 || true' EXIT

start=$(date +%s)
wineboot --init 2>/dev/null
wineserver -w
echo "Wine prefix ready in $(( $(date +%s) - start )) s"

ctest --test-dir "$build" --output-on-failure
# The C client binds to the plain names through the import library.
WINEPATH="$(winepath -w "$build")" wine "$build/tests/inkdot_c_client.exe"
