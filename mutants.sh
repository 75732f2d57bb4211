#!/usr/bin/env bash
# Breaks the product one line at a time, as the rows of tests/mutants/mutants.txt say, and sees whether
# the tests notice: each such mutant must make one fail. A run of the tests takes some by chance.
#   ./mutants.sh         all of them, in a quarter of an hour on two cores
#   ./mutants.sh TEXT    those in whose line of output TEXT stands, such as a file's name
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

refuse() {
  echo "mutants: $1" >&2
  exit 2
}

if [ "${1-}" = --help ] || [ "${1-}" = -h ]; then
  sed -n '2,$ { /^#/!q; s/^# \{0,1\}//; p; }' mutants.sh
  exit 0
fi
[ $# -le 1 ] || refuse "too many words: give one text, quoted if it has spaces"
text=${1-}
found=$(/usr/bin/python3 -B tests/mutants/mutants.py build --list --only="$text")
[ -n "$found" ] || refuse "no mutant has \"$text\" in its line, where a file, a rule and both texts stand"

./setup.sh
mkdir -p build/log
log=build/log/mutants.txt
build() {
  local targets
  mapfile -t targets < <(
    awk -v kind="$2" '$2 == kind { sub(".*/", "", $3); print $3 }' tests/mutants/programs.txt | sort -u
  )
  cmake --preset "$1" && cmake --build --preset "$1" --target "${targets[@]}"
}
if ! { build native native && build release windows; } >"$log" 2>&1; then
  tail -n 20 "$log" >&2
  echo "mutants: the build failed; all of its output is in $log" >&2
  exit 1
fi

export GLAZEL_WINEPREFIX=$PWD/build/mutants/wineprefix
mkdir -p build/mutants
judge=(/usr/bin/python3 -B tests/mutants/mutants.py --equivalent --only="$text" --jobs "$(nproc)")
status=0
"${judge[@]}" build/native || status=1
cmake/wine-display.sh "${judge[@]}" build/release || status=1
[ "$status" -ne 0 ] || echo "mutants: each was noticed"
exit "$status"
