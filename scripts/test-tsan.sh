#!/usr/bin/env bash
# Builds the test suite under ThreadSanitizer and runs the thread cases:
# separate instances driven on separate threads at the same time, and the
# inkdot command's prints, whose page pipeline runs its stages on their own
# threads (any data race report fails the run).
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/deps.sh
jobs="${TSAN_BUILD_JOBS:-$(nproc)}"
cmake -S . -B build/tsan -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DINKDOT_SANITIZE=thread \
  -DINKDOT_BUILD_TOOLS=ON >/dev/null
cmake --build build/tsan -j "$jobs" --target inkdot_tests
TSAN_OPTIONS=halt_on_error=1:second_deadlock_stack=1 \
  build/tsan/tests/inkdot_tests --gtest_filter='Threads.*:Cli.*'
