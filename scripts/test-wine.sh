#!/usr/bin/env bash
# Runs the test suite of the 32-bit Windows build under Wine: the library's
# objects with the Windows platform layer (global memory, wsprintfA,
# MessageBoxA), inkdot.dll itself loaded and called by both names of every
# export, and the C example linked against the import library.
#
#   scripts/test-wine.sh            # builds into build/win32, then runs there
#
# Installs Wine from Debian's i386 architecture. Wine's loader is a 32-bit
# Linux program: where the kernel runs none, scripts/ia32-exec.sh routes them
# through qemu-i386, which makes Wine slow but correct.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/install-packages.sh wine wine32:i386
scripts/ia32-exec.sh
scripts/build-dll.sh
build=${INKDOT_WIN32_BUILD:-build/win32}

export WINEPREFIX="$PWD/$build/wineprefix"
export WINEDEBUG=-all
# No Mono or Gecko installer prompts, no desktop menu entries.
export WINEDLLOVERRIDES="mscoree,mshtml=;winemenubuilder.exe=d"
# No display: the allocation-failure box of the failure tests must not wait
# for a click (without a display driver MessageBoxA returns at once).
unset DISPLAY WAYLAND_DISPLAY
trap 'wineserver -k >/dev/null 2>&1 || true' EXIT

start=$(date +%s)
wineboot --init
wineserver -w
echo "Wine prefix ready in $(( $(date +%s) - start )) s"

ctest --test-dir "$build" --output-on-failure
wine "$build/examples/lut_summary.exe"
