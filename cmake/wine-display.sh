#!/usr/bin/env bash
# Runs a command with a display and a Wine server of its own, which programs that it starts by
# wine-run.sh share: wine-display.sh COMMAND...
set -euo pipefail
runner=$(dirname "${BASH_SOURCE[0]}")/wine-run.sh
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${GLAZEL_WINEPREFIX:-$root/build/wineprefix}

# The X server picks a free number itself and says it on descriptor 3.
display_file=$(mktemp)
Xvfb -displayfd 3 -screen 0 1280x1024x24 -nolisten tcp 3>"$display_file" >/dev/null 2>&1 &
xvfb=$!
cleanup() {
  wineserver -k 2>/dev/null || true
  kill "$xvfb" 2>/dev/null || true
  rm -f "$display_file"
}
trap cleanup EXIT
for ((try = 0; try < 100; try++)); do
  [ -s "$display_file" ] && break
  kill -0 "$xvfb" 2>/dev/null || break
  sleep 0.1
done
[ -s "$display_file" ] || { echo "wine-display: Xvfb did not start; is it installed?" >&2; exit 1; }
DISPLAY=:$(cat "$display_file")
export DISPLAY

# Programs that start while no server is running wait for one, and two that start one at once can
# fail: this one stays.
"$runner" cmd /c exit # makes the prefix
wineserver -w
wineserver -p
# One window that stays open: without any, Wine starts its desktop anew for every test. A test that
# came before it would start the desktop, with its own outputs, and not be over before that is.
"$runner" notepad >/dev/null 2>&1 &
"$runner" rundll32 user32.dll,GetDesktopWindow >/dev/null 2>&1 || true # waits for the desktop
"$@"
