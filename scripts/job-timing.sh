#!/usr/bin/env bash
# Whole-job timings of `inkdot print` on an A4 page at 1440x720: the
# synthetic photograph as a 4134 x 5669 RGB PNG, printed with two columns per
# pixel (8268 x 5669 dots), in four settings, on every core the process may
# use (its stages overlapped) and on one core (taskset; stages in turn).
# Prints wall and CPU seconds and peak memory (/usr/bin/time).
#
#   scripts/job-timing.sh [SETTINGS…]   e.g. "--method ed --bits 1"
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh time util-linux
build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DINKDOT_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target inkdot_cli inkdot_photo_png
work=$(mktemp -d /tmp/inkdot-job.XXXXXX)
trap 'rm -rf "$work"' EXIT
"$build/bench/job/inkdot_photo_png" "$work/photo.png"

settings=("$@")
[ ${#settings[@]} -gt 0 ] ||
  settings=("--method ed --bits 1" "--method ed --bits 2" "--method dither --bits 2" "--mono --method ed --bits 1")
for s in "${settings[@]}"; do
  for cores in all one; do
    prefix=()
    [ "$cores" = one ] && prefix=(taskset -c 0)
    # shellcheck disable=SC2086  # the settings are several words
    /usr/bin/time -f "%e %U %S %M" -o "$work/time" "${prefix[@]}" "$build/tools/inkdot" print "$work/photo.png" \
      -o "$work/out" --resolution 1440x720 $s >/dev/null
    read -r wall user sys mem <"$work/time"
    printf '%-28s %-4s core(s): %5.2f s wall, %5.2f s CPU, %6d KB peak\n' "$s" "$cores" "$wall" \
      "$(awk -v u="$user" -v s="$sys" 'BEGIN { print u + s }')" "$mem"
  done
done
