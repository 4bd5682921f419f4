#!/usr/bin/env bash
# Builds the whole library and test suite for 32-bit Linux (g++ -m32) and runs
# it: the record layouts of a 32-bit build hold, and no result depends on the
# pointer size. GoogleTest is compiled from /usr/src/googletest for 32 bits.
#
#   scripts/test-32bit.sh           # into build/linux32
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh cmake ninja-build googletest g++-multilib
scripts/ia32-exec.sh
build=${INKDOT_LINUX32_BUILD:-build/linux32}
jobs=${JOBS:-$(nproc)}

cmake -S . -B "$build" -G Ninja -DCMAKE_TOOLCHAIN_FILE=cmake/linux-i686.cmake -DCMAKE_BUILD_TYPE=Debug \
  -DINKDOT_BUILD_BENCH=OFF
cmake --build "$build" -j "$jobs"
ctest --test-dir "$build" --output-on-failure -j "$jobs"
