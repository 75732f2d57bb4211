#!/usr/bin/env bash
# Builds the plug-in and plays it for long under Wine: 100,000 frames while looks and keyframes
# change, the page is open and projects are saved; 20,000 effects; 2,000 pages; 1,000 look editors.
# Nothing may stand still, and nothing may be left. The tests run a hundredth of it.
#   ./soak.sh            all of it once, in some minutes
#   ./soak.sh SECONDS    again and again, until that time is over
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")"

refuse() {
  echo "soak: $1" >&2
  exit 2
}

if [ "${1-}" = --help ] || [ "${1-}" = -h ]; then
  sed -n '2,$ { /^#/!q; s/^# \{0,1\}//; p; }' soak.sh
  exit 0
fi
[ $# -le 1 ] || refuse "too many words: give a number of seconds"
seconds=${1-0}
[ $# -eq 0 ] || [[ $seconds =~ ^[1-9][0-9]{0,6}$ ]] ||
  refuse "\"$seconds\" is no number of seconds; give a whole one from 1 to 9999999"

./setup.sh
mkdir -p build/log
log=build/log/soak.txt
if ! { cmake --preset release && cmake --build --preset release --target soak_test look_editor_test; } >"$log" 2>&1; then
  echo "soak: the build failed; see $log" >&2
  exit 1
fi
export GLAZEL_SOAK_PERCENT=100
begin=$SECONDS
round=0
while [ "$round" -eq 0 ] || [ $((SECONDS - begin)) -lt "$seconds" ]; do
  round=$((round + 1))
  if ! (cd build/release/bin && xvfb-run -a -s "-screen 0 1280x1024x24" bash -ec \
    "../../../cmake/wine-test.sh soak_test.exe
    ../../../cmake/wine-test.sh look_editor_test.exe --gtest_filter=*SessionsLeave*") >"$log" 2>&1; then
    tail -n 30 "$log" >&2
    echo "soak: round $round failed; all of its output is in $log" >&2
    exit 1
  fi
  sed -n 's/^\[       OK \] [A-Za-z]*\.//p' "$log" | tr -d '\r'
done
echo "$round rounds in $((SECONDS - begin)) s: nothing was left"
