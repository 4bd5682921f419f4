#!/usr/bin/env bash
# Builds the libFuzzer targets (clang, AddressSanitizer and
# UndefinedBehaviorSanitizer), writes the seed corpora from the test writers
# and runs each target for a bounded time.
#
#   scripts/fuzz.sh            # 25 seconds per target (the CI run)
#   scripts/fuzz.sh 600        # ten minutes per target
#   FUZZ_TARGETS="cm_protocol" scripts/fuzz.sh 3600
#
# Corpora grow in build-fuzz/corpus/<target>/ across runs; a crash leaves
# its input as build-fuzz/crash-<target>-* and fails the script. Reproduce
# with build-fuzz/fuzz_<target> <input>.
set -euo pipefail
cd "$(dirname "$0")/.."
seconds="${1:-25}"
targets="${FUZZ_TARGETS:-index_text cm_protocol ht_protocol halftone_run resource_sources}"
jobs="${FUZZ_BUILD_JOBS:-2}"
out=build-fuzz

scripts/install-packages.sh clang libclang-rt-14-dev cmake ninja-build
command -v clang++ >/dev/null || { echo "clang++ is needed (Debian package clang)"; exit 1; }
cmake -S fuzz -B "$out" -G Ninja -DCMAKE_CXX_COMPILER=clang++ -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build "$out" -j "$jobs"

for target in $targets; do mkdir -p "$out/corpus/$target"; done
"$out/fuzz_seeds" "$out/corpus"

export ASAN_OPTIONS=detect_leaks=1:abort_on_error=1:allocator_may_return_null=1
export UBSAN_OPTIONS=print_stacktrace=1:halt_on_error=1
status=0
for target in $targets; do
  echo "== fuzz_$target: $seconds s"
  if ! "$out/fuzz_$target" "$out/corpus/$target" -max_total_time="$seconds" -max_len=70000 \
       -rss_limit_mb=2048 -artifact_prefix="$out/crash-$target-" -print_final_stats=1 2>"$out/$target.log"; then
    status=1
    tail -n 60 "$out/$target.log"
  fi
  grep -E "^stat::number_of_executed_units|^stat::peak_rss_mb|Done [0-9]+ runs" "$out/$target.log" || true
done
exit $status
