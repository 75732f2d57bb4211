#!/usr/bin/env bash
# Builds everything and runs every test: the pure logic natively under the sanitizers and the fuzzer,
# everything else as Windows programs under Wine. Arguments go to ctest, for instance: ./test.sh -L unit
# GLAZEL_PRESETS names other presets than these three: GLAZEL_PRESETS=debug runs with assertions on.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./setup.sh

jobs=$(nproc)
read -r -a presets <<<"${GLAZEL_PRESETS:-native fuzz release}"
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

# Windows tests need a display. The X server picks a free number itself and says it on descriptor 3.
display_file=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$display_file" >/dev/null 2>&1 &
xvfb=$!
# A Wine server of its own for as long as the tests run: programs that start while none is running
# wait for one, and two that start one at once can fail.
export WINEPREFIX=$PWD/build/wineprefix
others=
cleanup() {
  [ -z "$others" ] || kill -- -"$others" 2>/dev/null || true
  wineserver -k 2>/dev/null || true
  kill "$xvfb" 2>/dev/null || true
  rm -f "$display_file"
}
trap cleanup EXIT
for ((try = 0; try < 100; try++)); do
  [ -s "$display_file" ] && break
  kill -0 "$xvfb" 2>/dev/null || { echo "test: Xvfb did not start" >&2; exit 1; }
  sleep 0.1
done
DISPLAY=:$(cat "$display_file")
export DISPLAY
cmake/wine-run.sh cmd /c exit # makes the prefix
wineserver -w
wineserver -p
# One window that stays open: without any, Wine starts its desktop anew for every test. A test that
# came before it would start the desktop, with its own outputs, and not be over before that is.
cmake/wine-run.sh notepad >/dev/null 2>&1 &
for ((try = 0; try < 600; try++)); do
  grep -qs explorer.exe /proc/[0-9]*/cmdline && break
  sleep 0.1
done

# The tests of each preset, one preset after the other.
run_tests() {
  local preset status=0
  for preset in $1; do
    echo "== test-$preset"
    ctest --preset "$preset" -j "$jobs" --no-tests=error "${@:2}" || status=1
  done
  return $status
}

# Windows tests wait a good deal, native ones never: these run in what time those leave.
native=() windows=()
for preset in "${presets[@]}"; do
  case $preset in
    native | fuzz) native+=("$preset") ;;
    *) windows+=("$preset") ;;
  esac
done
status=0
set -m # a process group of their own
(
  renice -n 10 "$BASHPID" >/dev/null
  run_tests "${native[*]}" "$@"
) >"$log/test-native.txt" 2>&1 </dev/null &
others=$!
set +m
run_tests "${windows[*]}" "$@" || status=1
wait "$others" || status=1
others=
cat "$log/test-native.txt"
exit $status
