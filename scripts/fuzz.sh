#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer), writes the seed corpora from the test writers,
# adds the text seeds of fuzz/seeds/, and runs each target, one after another for a bounded time, or as a long
# campaign of a number of executions per target, niced, two targets at once.
#
#   scripts/fuzz.sh                      # 25 seconds per target (the CI run)
#   scripts/fuzz.sh 600                  # ten minutes per target
#   FUZZ_TARGETS="cm_protocol" scripts/fuzz.sh 3600
#   scripts/fuzz.sh campaign 1000000     # a million executions per target
#   FUZZ_MAX_SECONDS=600 scripts/fuzz.sh campaign   # the same, at most ten minutes each
#
# Corpora grow in build-fuzz/corpus/<target>/ across runs; a crash leaves
# its input as build-fuzz/crash-<target>-* and fails the script. Reproduce
# with build-fuzz/fuzz_<target> <input>. Each target's log is
# build-fuzz/<target>.log; its last lines give executions and coverage.
set -euo pipefail
cd "$(dirname "$0")/.."
all="index_text cm_protocol ht_protocol halftone_run resource_sources image_readers pack raster_filter"
targets="${FUZZ_TARGETS:-$all}"
jobs="${FUZZ_BUILD_JOBS:-2}"
out=build-fuzz
mode=time
if [ "${1:-}" = campaign ]; then
  mode=campaign
  runs="${2:-1000000}"
else
  seconds="${1:-25}"
fi

scripts/install-packages.sh clang libclang-rt-14-dev cmake ninja-build libcups2-dev libpng-dev libtiff-dev
command -v clang++ >/dev/null || { echo "clang++ is needed (Debian package clang)"; exit 1; }
cmake -S fuzz -B "$out" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$out" -j "$jobs"

for target in $all; do mkdir -p "$out/corpus/$target"; done
"$out/fuzz_seeds" "$out/corpus"
for seeds in fuzz/seeds/*/; do cp "$seeds"* "$out/corpus/$(basename "$seeds")/"; done

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1

# One target: its limit (-max_total_time or -runs) in "$@".
fuzz() {
  local target=$1
  shift
  # The CUPS library sizes a line buffer from a page header in its own buffer
  # (later pages of a compressed stream) before the filter sees the header.
  # For the filter's target a claim of gigabytes fails, as on a machine
  # without the memory, and the library reports no page, instead of each
  # such input mapping gigabytes for seconds.
  local asan=$ASAN_OPTIONS
  [ "$target" = raster_filter ] && asan+=:max_allocation_size_mb=256
  ASAN_OPTIONS=$asan "$out/fuzz_$target" "$out/corpus/$target" "$@" -max_len=70000 -rss_limit_mb=2048 \
    -artifact_prefix="$out/crash-$target-" -print_final_stats=1 2>"$out/$target.log"
}

summary() {
  local target=$1
  echo "== fuzz_$target: $(grep -E '^#[0-9]+.*(DONE|cov:)' "$out/$target.log" | tail -n 1)"
  grep -E "^stat::number_of_executed_units|^stat::average_exec_per_sec|^stat::peak_rss_mb" "$out/$target.log" || true
}

status=0
if [ "$mode" = campaign ]; then
  pids=()
  for target in $targets; do
    while [ "$(jobs -rp | wc -l)" -ge "${FUZZ_JOBS:-2}" ]; do wait -n || status=1; done
    echo "== fuzz_$target: $runs executions"
    nice -n 10 bash -c "$(declare -f fuzz); out=$out; fuzz $target -runs=$runs -max_total_time=${FUZZ_MAX_SECONDS:-0}" &
  done
  while [ "$(jobs -rp | wc -l)" -gt 0 ]; do wait -n || status=1; done
  for target in $targets; do summary "$target"; done
else
  for target in $targets; do
    echo "== fuzz_$target: $seconds s"
    if ! fuzz "$target" -max_total_time="$seconds"; then
      status=1
      tail -n 60 "$out/$target.log"
    fi
    summary "$target"
  done
fi
ls "$out"/crash-* 2>/dev/null && status=1
exit $status
