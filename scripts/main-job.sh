#!/usr/bin/env bash
# The main job: builds inkdot and runs it end to end.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release -DINKDOT_BUILD_TESTS=OFF
cmake --build build/release -j "$(nproc)"
build/release/examples/lut_summary
