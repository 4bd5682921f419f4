#!/usr/bin/env bash
# Cross-builds the 32-bit Windows library inkdot.dll (and its import library
# inkdot.dll.a, the test program and the example) with Debian's mingw-w64
# toolchain, then checks the DLL's export table.
#
#   scripts/build-dll.sh            # into build/win32
#
# The one command behind it:
#   cmake -S . -B build/win32 -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake \
#         -DCMAKE_BUILD_TYPE=Release && cmake --build build/win32
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh cmake ninja-build googletest g++-mingw-w64-i686 binutils-mingw-w64-i686
build=${INKDOT_WIN32_BUILD:-build/win32}
jobs=${JOBS:-$(nproc)}

cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/mingw-i686.cmake -DCMAKE_BUILD_TYPE=Release
cmake --build "$build" -j "$jobs"
scripts/check-dll-exports.sh "$build/inkdot.dll"
