#!/usr/bin/env bash
# Builds everything and runs every test: the pure logic natively under the sanitizers and the fuzzer,
# what threads share of it under ThreadSanitizer, everything else as Windows programs under Wine.
# Arguments go to ctest, for instance: ./test.sh -L unit
# GLAZEL_PRESETS names other presets than these three: GLAZEL_PRESETS=debug runs with assertions on.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./setup.sh

jobs=$(nproc)
read -r -a presets <<<"${GLAZEL_PRESETS:-native tsan release}"
log=build/log
mkdir -p "$log"

# Runs a step quietly and shows its output only when it fails.
step() {
  local name=$1
  shift
  echo "== $name"
  if ! "$@" >"$log/$name.txt" 2>&1; then
    tail -n 60 "$log/$name.txt" >&2
    echo "test: $name failed; all of its output is in $log/$name.txt" >&2
    exit 1
  fi
}

step format cmake/check_format.sh
step tidy cmake/check_tidy.sh --changed
for preset in "${presets[@]}"; do
  step "configure-$preset" cmake --preset "$preset"
  step "build-$preset" cmake --build --preset "$preset"
done

others=
cleanup() {
  [ -z "$others" ] || kill -- -"$others" 2>/dev/null || true
}
trap cleanup EXIT

# The tests of each preset, one preset after the other, run by a command if one is named:
# run_tests PRESETS COMMAND ARGUMENTS...
run_tests() {
  local preset status=0 within=()
  [ -z "$2" ] || within=("$2")
  for preset in $1; do
    echo "== test-$preset"
    "${within[@]}" ctest --preset "$preset" -j "$jobs" --no-tests=error "${@:3}" || status=1
  done
  return $status
}

# Windows tests wait a good deal, native ones never: these run in what time those leave.
native=() windows=()
for preset in "${presets[@]}"; do
  case $preset in
    native | fuzz | tsan) native+=("$preset") ;;
    *) windows+=("$preset") ;;
  esac
done
status=0
set -m # a process group of their own
(
  renice -n 10 "$BASHPID" >/dev/null
  run_tests "${native[*]}" "" "$@"
) >"$log/test-native.txt" 2>&1 </dev/null &
others=$!
set +m
run_tests "${windows[*]}" cmake/wine-display.sh "$@" || status=1
wait "$others" || status=1
others=
cat "$log/test-native.txt"
exit $status
