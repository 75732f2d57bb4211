#!/usr/bin/env bash
# Builds everything and runs every test: the pure logic natively under the sanitizers and the fuzzer,
# what threads share of it under ThreadSanitizer, everything else as Windows programs under Wine, and
# the plug-in's own tests once more with assertions on.
# Arguments go to ctest, for instance: ./test.sh -L unit, and leave out the last of these, which is a
# choice of tests itself. GLAZEL_PRESETS names other presets: GLAZEL_PRESETS=debug has assertions in
# everything.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"
./setup.sh

all=(native tsan release)
[ $# != 0 ] || all+=(assertions)
read -r -a presets <<<"${GLAZEL_PRESETS:-${all[*]}}"
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

build() {
  for preset in "$@"; do
    step "configure-$preset" cmake --preset "$preset"
    step "build-$preset" cmake --build --preset "$preset"
  done
}

native=() windows=()
for preset in "${presets[@]}"; do
  case $preset in
    native | tsan) native+=("$preset") ;;
    *) windows+=("$preset") ;;
  esac
done
step format cmake/check_format.sh
build "${windows[@]}"

others=
cleanup() {
  [ -z "$others" ] || kill -- -"$others" 2>/dev/null || true
}
trap cleanup EXIT

# The tests of each preset, one preset after the other, so many at a time, run by a command if one
# is named: run_tests PRESETS JOBS COMMAND ARGUMENTS...
run_tests() {
  local preset status=0 within=() none=error
  [ -z "$3" ] || within=("$3")
  [ $# = 3 ] || none=ignore # not every preset has each test
  for preset in $1; do
    echo "== test-$preset"
    "${within[@]}" ctest --preset "$preset" -j "$2" --no-tests=$none "${@:4}" 2>&1 |
      sed -u -E '/^ +Start +[0-9]+: /d; s/ \.{4,} *([A-Z*])/ ... \1/' || status=1
  done
  return $status
}

said=Testing/Temporary/LastTest.log
for preset in "${presets[@]}"; do rm -f "build/$preset/$said"; done
any_ran() {
  local preset
  for preset in "${presets[@]}"; do
    ! grep -qs ' Testing: ' "build/$preset/$said" || return 0
  done
  return 1
}
# What the failed tests of a preset said, once more: it stands far above the end.
show_failures() {
  [ -e "build/$1/$said" ] || return 0
  awk '/^[0-9]+\/[0-9]+ Testing: / { said = "" }
       { said = said $0 "\n" }
       /^Test Failed\.$/ { printf "%s\n", said }' "build/$1/$said"
}

# Windows tests wait a good deal, all else never does: it runs in what time those leave.
status=0
set -m # a process group of its own
(
  renice -n 10 "$BASHPID" >/dev/null
  build "${native[@]}"
  step tidy cmake/check_tidy.sh --changed
  run_tests "${native[*]}" "$(nproc)" "" "$@"
) >"$log/beside.txt" 2>&1 </dev/null &
others=$!
set +m
run_tests "${windows[*]}" $(($(nproc) + 1)) cmake/wine-display.sh "$@" || status=1
wait "$others" || status=1
others=
cat "$log/beside.txt"
if [ $status = 0 ] && ! any_ran; then
  echo "test: no test ran: none fits \"$*\"; ctest --preset PRESET -N lists them" >&2
  exit 1
fi
if [ $status != 0 ]; then
  echo "== failed"
  for preset in "${presets[@]}"; do show_failures "$preset" | tail -n 150; done
fi
exit $status
