#!/usr/bin/env bash
# Builds inkdot (Release) and makes the print-quality report page: synthetic
# targets printed through the engine with every halftoning method, measured,
# and plotted into one self-contained HTML file.
#
#   scripts/report.sh                          # build/report/report.html
#   scripts/report.sh --bits 2 --resolution 1440x720 -o /tmp/r
#
# Options go to 'inkdot report' (see 'inkdot report --help'); -o sets the
# output directory (default build/report).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
scripts/install-packages.sh liblcms2-dev python3-matplotlib python3-numpy

args=("$@")
out=build/report
given=0
for ((i = 0; i < ${#args[@]}; i++)); do
  case "${args[$i]}" in
    -o|--output) out=${args[$((i + 1))]:-$out}; given=1 ;;
    --output=*) out=${args[$i]#--output=}; given=1 ;;
  esac
done
[ $given -eq 1 ] || args+=(-o "$out")

cmake -S . -B build/release -G Ninja -DCMAKE_BUILD_TYPE=Release >/dev/null
cmake --build build/release -j "${JOBS:-$(nproc)}" --target inkdot_cli
# The page comes from tools/report_plots.py, which inkdot runs itself.
build/release/tools/inkdot report "${args[@]}"
