#!/usr/bin/env bash
# One command for the side-by-side comparison: installs the LittleCMS 2,
# MagickCore and Gutenprint development files when missing, builds
# inkdot_compare in Release and runs it. Arguments are passed to inkdot_compare
# (--width N --height N --reps N --magick-threads N --clock cpu|wall).
set -euo pipefail
root="$(cd "$(dirname "$0")/.." && pwd)"
build="$root/build/compare"

"$root/scripts/deps.sh"

# Some development packages pin the exact version of a runtime library that
# an image may hold at an older build (libpcre2 here); naming the runtime
# libraries lets apt move them up together.
peers=(liblcms2-dev libmagickcore-dev libgutenprint-dev)
"$root/scripts/install-packages.sh" "${peers[@]}" ||
  "$root/scripts/install-packages.sh" "${peers[@]}" libpcre2-8-0 liblcms2-2

cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release \
  -DINKDOT_BUILD_BENCH=ON -DINKDOT_BUILD_TESTS=OFF -DINKDOT_BUILD_TOOLS=OFF >/dev/null
cmake --build "$build" --target inkdot_compare -- -j2
exec "$build/bench/compare/inkdot_compare" "$@"
