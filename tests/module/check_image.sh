#!/usr/bin/env bash
# check_image.sh FILE EXPORTS LIBRARIES: fails unless FILE exports exactly the names in EXPORTS and
# imports from nothing but LIBRARIES and the system's API sets. Both are lists with spaces between;
# libraries stand there without ".dll".
set -euo pipefail
dump=$(x86_64-w64-mingw32-objdump -p "$1")

sorted() { tr ' ' '\n' | LC_ALL=C sort | xargs; }
exports=$(sed -n '/\[Ordinal\/Name Pointer\] Table/,/^$/p' <<<"$dump" |
  sed -n 's/^[[:space:]]*\[ *[0-9]*\].* \([A-Za-z0-9_]*\)$/\1/p' | sorted)
expected=$(sorted <<<"$2")
if [ "$exports" != "$expected" ]; then
  echo "$1: exports are '$exports', expected '$expected'" >&2
  exit 1
fi

imported=$(sed -n 's/.*DLL Name: //p' <<<"$dump" | tr 'A-Z' 'a-z' | sed 's/\.dll$//')
if ! grep -qx kernel32 <<<"$imported"; then
  echo "$1: its imports cannot be read" >&2
  exit 1
fi
foreign=$(grep -vxE "${3// /|}|api-ms-win-[a-z0-9-]+" <<<"$imported" | xargs || true)
if [ -n "$foreign" ]; then
  echo "$1: imports from libraries that are not the system's: $foreign" >&2
  exit 1
fi
