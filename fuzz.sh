#!/usr/bin/env bash
# Lets a fuzz target look for inputs that break a reader of foreign bytes, as long as asked.
#   ./fuzz.sh                    lists the targets
#   ./fuzz.sh TARGET [SECONDS]   runs one, for a minute unless told otherwise
#   ./fuzz.sh all [SECONDS]      runs each of them for that long
# What a target learns stays in build/corpus/TARGET for the next time. An input that breaks something
# is written to build/found/ and ends the run: it goes into tests/fuzz/seeds/TARGET, and as an
# ordinary test into those of the reader.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

targets=()
for source in tests/fuzz/*_fuzz.cpp; do
  name=${source##*/}
  targets+=("${name%_fuzz.cpp}")
done

refuse() {
  echo "fuzz: $1" >&2
  exit 2
}

if [ $# -eq 0 ] || [ "$1" = --help ] || [ "$1" = -h ]; then
  sed -n 's/^# \{0,1\}//; 2,8p' fuzz.sh
  echo "Targets:"
  printf '  %s\n' "${targets[@]}"
  exit 0
fi
[ $# -le 2 ] || refuse "too many words: give a target and a number of seconds"
chosen=$1 seconds=${2-60}
[ "$chosen" = all ] || grep -Fxq -- "$chosen" <<<"$(printf '%s\n' "${targets[@]}")" ||
  refuse "\"$chosen\" is no target; ./fuzz.sh lists them"
[[ $seconds =~ ^[1-9][0-9]{0,6}$ ]] ||
  refuse "\"$seconds\" is no number of seconds; give a whole one from 1 to 9999999"
[ "$chosen" = all ] || targets=("$chosen")

./setup.sh
log=build/log/fuzz.txt
mkdir -p build/log build/found
if ! { cmake --preset native && cmake --build --preset native --target "${targets[@]/%/_fuzz}"; } \
  >"$log" 2>&1; then
  echo "fuzz: the build failed; see $log" >&2
  exit 1
fi
for target in "${targets[@]}"; do
  corpora=("build/corpus/$target")
  mkdir -p "${corpora[0]}"
  [ ! -d "tests/fuzz/seeds/$target" ] || corpora+=("tests/fuzz/seeds/$target")
  echo "== $target, $seconds s"
  if ! "build/native/bin/${target}_fuzz" -max_total_time="$seconds" -timeout=20 -print_final_stats=1 \
    -artifact_prefix="build/found/$target-" "${corpora[@]}" >"build/log/fuzz-$target.txt" 2>&1; then
    tail -n 30 "build/log/fuzz-$target.txt" >&2
    echo "fuzz: $target found something: see build/log/fuzz-$target.txt and build/found/" >&2
    exit 1
  fi
  sed -n 's/^stat::number_of_executed_units: */inputs: /p' "build/log/fuzz-$target.txt"
done
