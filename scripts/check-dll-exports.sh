#!/usr/bin/env bash
# Checks the export table of inkdot.dll: the eight operations and the two sized
# resource calls under their plain names and under their decorated aliases
# _A_<name>@<argument bytes>, nothing else, each alias at the same address
# (RVA) as its plain name; and that the DLL imports only system libraries, so
# a driver can load it on its own.
#
#   scripts/check-dll-exports.sh build-win32/inkdot.dll
#
# Exits non-zero on any failure.
set -euo pipefail
dll="${1:?usage: $0 path/to/inkdot.dll}"

objdump=""
for tool in i686-w64-mingw32-objdump x86_64-w64-mingw32-objdump objdump; do
  if command -v "$tool" >/dev/null && "$tool" -p "$dll" >/dev/null 2>&1; then objdump=$tool; break; fi
done
[ -n "$objdump" ] || { echo "no objdump here reads $dll (install binutils-mingw-w64-i686)"; exit 2; }
dump=$("$objdump" -p "$dll")

# "name rva" for every exported name: the index in the name table is the
# entry's index in the export address table.
exports=$(awk '
  /^Export Address Table -- Ordinal Base/ { section = "eat"; next }
  /^\[Ordinal\/Name Pointer\] Table/      { section = "names"; next }
  /^$/                                    { section = "" }
  section == "eat"   && match($0, /^\t\[ *[0-9]+\]/) {
    index_ = substr($0, RSTART + 2, RLENGTH - 3) + 0
    split(substr($0, RSTART + RLENGTH), rest, " ")
    # "+base[   1] 14b0 Export RVA": the RVA is the word after the base.
    for (i = 1; i <= length(rest); ++i) if (rest[i] ~ /^[0-9a-f]+$/ && rest[i-1] ~ /\]$/) { rva[index_] = rest[i]; break }
  }
  section == "names" && match($0, /^\t\[ *[0-9]+\]/) {
    index_ = substr($0, RSTART + 2, RLENGTH - 3) + 0
    name = substr($0, RSTART + RLENGTH); sub(/^ +/, "", name)
    names[index_] = name
  }
  END { for (i in names) print names[i], (i in rva ? rva[i] : "none") }
' <<<"$dump" | sort)

declare -A rva_of
while read -r name rva; do rva_of[$name]=$rva; done <<<"$exports"

failed=0
fail() { echo "FAIL: $*"; failed=1; }

declare -A plain_at
for entry in CmNew:20 CmSetResource:12 CmSetResourceSized:16 CmGetLut:4 CmDelete:4 \
             HalftoneNew:20 HalftoneSetResource:12 HalftoneSetResourceSized:16 \
             Halftone:44 HalftoneDelete:4; do
  name=${entry%%:*}; bytes=${entry##*:}; alias="_A_${name}@${bytes}"
  plain=${rva_of[$name]:-}; aliased=${rva_of[$alias]:-}
  [ -n "$plain" ] || { fail "missing export $name"; continue; }
  [ -n "$aliased" ] || { fail "missing export $alias"; continue; }
  [ "$plain" != none ] || { fail "$name has no address"; continue; }
  [ "$plain" = "$aliased" ] || fail "$alias is at $aliased, $name at $plain"
  [ -z "${plain_at[$plain]:-}" ] || fail "$name shares address $plain with ${plain_at[$plain]}"
  plain_at[$plain]=$name
  echo "ok   $name = $alias  (RVA $plain)"
done

count=$(wc -l <<<"$exports")
[ "$count" -eq 20 ] || fail "expected 20 exported names, found $count: $(awk '{print $1}' <<<"$exports" | tr '\n' ' ')"

# Imports: system libraries only (the C++ runtime is linked in).
imports=$(awk '/^\tDLL Name:/ { print $3 }' <<<"$dump" | sort -u)
while read -r lib; do
  [ -n "$lib" ] || continue
  case "${lib,,}" in
    kernel32.dll|user32.dll|msvcrt.dll|api-ms-win-*.dll) echo "ok   imports $lib" ;;
    *) fail "imports $lib, which a driver's machine need not have" ;;
  esac
done <<<"$imports"

if [ "$failed" -ne 0 ]; then echo "inkdot.dll export check FAILED"; exit 1; fi
echo "inkdot.dll export check passed: 20 names: the 8 operations and the 2 sized resource calls"
