#!/usr/bin/env bash
# The main job: builds inkdot, draws the test chart and prints it in colour by
# error diffusion at 1440x720 dpi.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
# The build directory is shared with the test scripts, so its options are left
# as they are and only the tool is built.
cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j "$(nproc)" --target inkdot_cli
inkdot=build/release/tools/inkdot
mkdir -p out
"$inkdot" chart -o out/chart.png
"$inkdot" print out/chart.png -o out/ --resolution 1440x720 --method ed
echo "ink planes: out/chart-cyan.pbm out/chart-magenta.pbm out/chart-yellow.pbm out/chart-black.pbm"
echo "preview of the printed page: out/chart-preview.png"
