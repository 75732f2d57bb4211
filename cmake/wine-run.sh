#!/usr/bin/env bash
# Runs a Windows program under Wine in a prefix of its own inside the build folder, which it makes
# when it is not there. GLAZEL_WINEPREFIX names another prefix.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${GLAZEL_WINEPREFIX:-$root/build/wineprefix}
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
# Wine reads the words of a command line by the locale: without UTF-8 other letters would be lost.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8
# No browser engine, no managed code: their absence must not ask for a download. No menus: they would
# be the user's own, outside the prefix.
no_extras=mscoree,mshtml,winemenubuilder.exe=
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-$no_extras}

set_up() {
  # A desktop of Wine's own: with no window manager every closing window would wait for one. And a
  # crash must end a test, not wait for somebody to answer a dialog.
  WINEDLLOVERRIDES=$no_extras
  wineboot --init &&
    wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d Default /f &&
    wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Default /d 1280x1024 /f &&
    wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f &&
    wineserver -w &&
    touch "$WINEPREFIX/.ready"
}

if [ ! -e "$WINEPREFIX/.ready" ]; then
  mkdir -p "$WINEPREFIX" 2>/dev/null && (
    flock 9
    [ -e "$WINEPREFIX/.ready" ] || set_up >/dev/null 2>&1 </dev/null
  ) 9>"$WINEPREFIX.lock" || {
    echo "wine-run: $WINEPREFIX: Wine cannot set up its folder there;" \
      "check that the disk has room and that the folder is yours, and run again" >&2
    exit 1
  }
fi
exec wine "$@"
