#!/usr/bin/env bash
# Counts which lines and branches of the plug-in run in its tests, native and under Wine together.
# The report, with the reason for each line that does not run, is in build/coverage.txt.
#   ./coverage.sh    builds and runs them in some minutes
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

case "$#:${1-}" in
  0:) ;;
  1:--help | 1:-h)
    sed -n '2,$ { /^#/!q; s/^# \{0,1\}//; p; }' coverage.sh
    exit 0
    ;;
  *)
    echo "coverage: \"$1\" is too much: it takes no words" >&2
    exit 2
    ;;
esac

./setup.sh
folders=(platform support binding effect propertypage module contract registration)
mkdir -p build/log
log=build/log/coverage.txt
fail() {
  tail -n 30 "$log" >&2
  echo "coverage: $1; all of the output is in $log" >&2
  exit 1
}

: >"$log"
for preset in coverage-native coverage-windows; do
  targets=()
  cmake --preset "$preset" >>"$log" 2>&1 || fail "$preset cannot be set up"
  for folder in "${folders[@]}"; do
    [ ! -d "build/$preset/tests/$folder" ] || targets+=("tests/$folder/all")
  done
  cmake --build --preset "$preset" --target "${targets[@]}" >>"$log" 2>&1 || fail "the build failed"
  find "build/$preset" -name '*.gcda' -delete # of earlier runs
done

# One test at a time for Windows: there, programs that end at once spoil each other's counts.
for folder in "${folders[@]}"; do
  [ ! -d "build/coverage-native/tests/$folder" ] ||
    ctest --test-dir "build/coverage-native/tests/$folder" --output-on-failure >>"$log" 2>&1 ||
    fail "a native test failed"
done
# GCOV_PREFIX: the root of this machine, whatever drive a program works on.
# shellcheck disable=SC2016 # for the inner shell
GCOV_PREFIX=Z: cmake/wine-display.sh bash -ec '
  for folder; do
    ctest --test-dir "build/coverage-windows/tests/$folder" --output-on-failure -E "[.]guarded_"
  done' tests "${folders[@]}" >>"$log" 2>&1 || fail "a test for Windows failed"

status=0
/usr/bin/python3 -B tests/coverage/covered_lines.py build/coverage-native=gcov \
  build/coverage-windows=x86_64-w64-mingw32-gcov-win32 >build/coverage.txt || status=1
sed '/^$/,$ d' build/coverage.txt
exit "$status"
