#!/usr/bin/env bash
# Runs a Windows program under Wine in a prefix of its own inside the build folder, which it makes
# when it is not there. GLAZEL_WINEPREFIX names another prefix.
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)
export WINEPREFIX=${GLAZEL_WINEPREFIX:-$root/build/wineprefix}
export WINEARCH=win64 WINEDEBUG=${WINEDEBUG:--all}
# Wine reads the words of a command line by the locale: without UTF-8 other letters would be lost.
[ "$(locale charmap 2>/dev/null)" = UTF-8 ] || export LC_ALL=C.UTF-8
# No browser engine, no managed code: their absence must not ask for a download.
export WINEDLLOVERRIDES=${WINEDLLOVERRIDES:-mscoree,mshtml=}

if [ ! -e "$WINEPREFIX/.ready" ]; then
  mkdir -p "$WINEPREFIX"
  (
    flock 9
    if [ ! -e "$WINEPREFIX/.ready" ]; then
      wineboot --init >/dev/null 2>&1 </dev/null
      # A desktop of Wine's own: with no window manager every closing window would wait for one.
      wine reg add 'HKCU\Software\Wine\Explorer' /v Desktop /d Default /f >/dev/null 2>&1 </dev/null
      wine reg add 'HKCU\Software\Wine\Explorer\Desktops' /v Default /d 1280x1024 /f >/dev/null 2>&1 </dev/null
      # A crash must end a test, not wait for somebody to answer a dialog.
      wine reg add 'HKCU\Software\Wine\WineDbg' /v ShowCrashDialog /t REG_DWORD /d 0 /f >/dev/null 2>&1 </dev/null
      wineserver -w
      touch "$WINEPREFIX/.ready"
    fi
  ) 9>"$WINEPREFIX.lock"
fi
exec wine "$@"
