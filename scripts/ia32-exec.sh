#!/usr/bin/env bash
# Makes 32-bit x86 Linux programs runnable on this machine: the 32-bit test
# suite and Wine's 32-bit loader are such programs. When the kernel runs them
# itself, nothing is done. When it was started without 32-bit emulation
# (ia32_emulation=off: exec fails with "Exec format error"), qemu-i386 is
# installed and registered with binfmt_misc as the interpreter of 32-bit x86
# programs, so that every way of starting one (ctest, Wine starting its own
# helper processes) goes through it.
set -euo pipefail
cd "$(dirname "$0")/.."
[ -e /lib/ld-linux.so.2 ] || scripts/install-packages.sh libc6-i386

# The smallest 32-bit program at hand: the dynamic loader itself.
if /lib/ld-linux.so.2 --version >/dev/null 2>&1; then exit 0; fi

echo "the kernel does not run 32-bit programs here; registering qemu-i386 with binfmt_misc"
scripts/install-packages.sh qemu-user
SUDO=""
[ "$(id -u)" -eq 0 ] || SUDO=sudo
binfmt=/proc/sys/fs/binfmt_misc
[ -e "$binfmt/register" ] || $SUDO mount -t binfmt_misc binfmt_misc "$binfmt"
if [ ! -e "$binfmt/qemu-i386" ]; then
  # ELF, 32-bit, little-endian, executable or shared object, machine 3 (i386).
  magic='\x7fELF\x01\x01\x01\x00\x00\x00\x00\x00\x00\x00\x00\x00\x02\x00\x03\x00'
  mask='\xff\xff\xff\xff\xff\xfe\xfe\x00\xff\xff\xff\xff\xff\xff\xff\xff\xfe\xff\xff\xff'
  echo ":qemu-i386:M::${magic}:${mask}:$(command -v qemu-i386):" | $SUDO tee "$binfmt/register" >/dev/null
fi
/lib/ld-linux.so.2 --version >/dev/null 2>&1 || { echo "32-bit programs still do not run"; exit 1; }
