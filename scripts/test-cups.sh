#!/usr/bin/env bash
# The CUPS filter in a real print queue: installs CUPS, builds rastertoinkdot,
# runs its unit tests, then starts a private CUPS scheduler on loopback
# (127.0.0.1, port $INKDOT_CUPS_PORT, default 8631) with its own configuration,
# spool, logs and server-bin tree, adds a queue with the inkdot PPD and a
# file: device, prints the test chart as PNG through it and checks the raster
# that comes out. Last, it times rastertoinkdot alone on A4 pages.
#
#   scripts/test-cups.sh            everything
#   INKDOT_CUPS_KEEP=1 ...          keep the scheduler's directory for a look
#   INKDOT_CUPS_PERF=0 ...          leave out the timing
set -euo pipefail
cd "$(dirname "$0")/.."
root=$PWD

scripts/deps.sh
scripts/install-packages.sh cups-daemon cups-client cups-ppdc cups-filters libcups2-dev

build=build/release
cmake -S . -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DINKDOT_BUILD_BENCH=ON >/dev/null
cmake --build "$build" -j "$(nproc)" --target rastertoinkdot inkdot_rastercheck inkdot_cli inkdot_ppd inkdot_tests
filter=$root/$build/tools/cups/rastertoinkdot
check=$root/$build/tools/cups/inkdot-rastercheck
inkdot=$root/$build/tools/inkdot
ppd=$root/$build/tools/cups/ppd/inkdot.ppd

echo "--- unit tests of the filter"
"$build/tests/inkdot_tests" --gtest_filter='Cups*' --gtest_brief=1

port=${INKDOT_CUPS_PORT:-8631}
work=$(mktemp -d /tmp/inkdot-cups.XXXXXX)
# The filters run as the scheduler's user (lp): they must reach the tree.
chmod 755 "$work"
. scripts/private-cupsd.sh

teardown() {
  local status=$?
  stop_private_cupsd "$status"
  if [ "${INKDOT_CUPS_KEEP:-0}" = 1 ]; then echo "kept $work"; else rm -rf "$work"; fi
  exit "$status"
}
trap teardown EXIT

# The server-bin tree: the system's backends, daemons and filters by link,
# plus our filter (a copy: the scheduler checks that filters are root's and
# not writable by others).
mkdir -p "$work"/{bin/filter,out}
for d in /usr/lib/cups/*; do
  [ "$(basename "$d")" = filter ] || ln -s "$d" "$work/bin/$(basename "$d")"
done
for f in /usr/lib/cups/filter/*; do ln -s "$f" "$work/bin/filter/$(basename "$f")"; done
install -m 755 "$filter" "$work/bin/filter/rastertoinkdot"
chown lp:lp "$work/out"

start_private_cupsd "$work" "$work/bin" "$port" INKDOT_CUPS_PORT

lpadmin -h "$server" -p inkdot -E -v "file:$work/out/page.ras" -P "$ppd"
lpstat -h "$server" -p inkdot

"$inkdot" chart -o "$work/chart.png" --width 827 --height 1169 >/dev/null

# Prints the chart with the given options, waits (at most 300 s) for the job
# to complete and keeps its output as $work/$name.ras.
print_chart() {
  local name=$1
  shift
  local request job state=""
  request=$(lp -h "$server" -d inkdot -t "chart $name" "$@" "$work/chart.png")
  job=$(sed -n 's/^request id is \(inkdot-[0-9]*\).*/\1/p' <<<"$request")
  [ -n "$job" ] || { echo "lp gave no job id: $request" >&2; return 1; }
  local start=$SECONDS
  # Active first, then finished: a job that ends between the two questions
  # is still found. A finished job has completed, or was aborted or cancelled.
  while [ $((SECONDS - start)) -lt 300 ]; do
    if ! lpstat -h "$server" -W not-completed -o inkdot | grep -q "^$job " &&
       lpstat -h "$server" -W completed -o inkdot | grep -q "^$job "; then
      if grep -q "\[Job ${job#inkdot-}\] Job completed\." "$work/log/error_log"; then
        state=completed
      else
        state="stopped without completing"
      fi
      break
    fi
    sleep 0.5
  done
  if [ "$state" != completed ]; then
    echo "job $job ($name) did not complete: ${state:-timed out}" >&2
    grep -E "\[Job ${job#inkdot-}\] (E |.*ERROR)" "$work/log/error_log" | tail -20 >&2 || true
    return 1
  fi
  echo "job $job ($name) completed in $((SECONDS - start)) s"
  cp "$work/out/page.ras" "$work/$name.ras"
}

# A4 with the imageable area the PPD's media gives (595 x 841 points):
# width 595 and height 841 points at the page's resolution.
echo "--- colour, 720x720, normal quality (two-bit dither), banded"
print_chart colour -o InkdotQuality=Normal
"$check" "$work/colour.ras" --pages 1 --width 5950 --height 8410 --space cmyk --bits 2 --order banded \
  --reference "$work/chart.png" --quality normal

echo "--- colour, 1440x720, high quality (two-bit error diffusion), planar, two copies"
print_chart fine -n 2 -o Resolution=1440x720dpi -o InkdotQuality=High -o InkdotOrder=Planar
"$check" "$work/fine.ras" --pages 2 --width 11900 --height 8410 --space cmyk --bits 2 --order planar \
  --reference "$work/chart.png" --quality high

echo "--- grayscale, 720x360, draft (one-bit threshold)"
print_chart gray -o ColorModel=Gray -o Resolution=720x360dpi -o InkdotQuality=Draft
"$check" "$work/gray.ras" --pages 1 --width 5950 --height 4205 --space k --bits 1 --order banded \
  --reference "$work/chart.png" --quality draft

grep -q "Started filter .*/rastertoinkdot" "$work/log/error_log" || { echo "the scheduler never ran rastertoinkdot" >&2; exit 1; }
echo "--- page log (the pages rastertoinkdot reported: 1, 2 and 1)"
cat "$work/log/page_log"
for expect in "1 1" "2 2" "3 1"; do
  grep -Eq " ${expect% *} \[[^]]*\] total ${expect#* } " "$work/log/page_log" ||
    { echo "the page log lacks job ${expect% *} with ${expect#* } page(s)" >&2; exit 1; }
done

if [ "${INKDOT_CUPS_PERF:-1}" = 1 ]; then
  echo "--- rastertoinkdot alone: A4 pages per minute (raster from a file, output to /dev/null)"
  for res in 720 1440x720; do
    PPD=$ppd /usr/lib/cups/filter/imagetoraster 1 perf chart 1 "Resolution=${res}dpi" "$work/chart.png" \
      >"$work/a4-$res.ras" 2>/dev/null
    for quality in Draft Normal High; do
      start=$(date +%s%N)
      "$filter" 1 perf chart 1 "InkdotQuality=$quality" "$work/a4-$res.ras" >/dev/null 2>"$work/perf.log"
      ms=$((($(date +%s%N) - start) / 1000000))
      printf '  %-9s %-7s %6d ms a page  %6.1f pages a minute\n' "$res" "$quality" "$ms" \
        "$(awk -v ms="$ms" 'BEGIN { print 60000 / ms }')"
    done
  done
fi
echo "CUPS print queue test passed"
