#!/usr/bin/env bash
# package.sh [FOLDER]: builds a release and makes what is handed out, into FOLDER or else out/: the
# installer, the portable archive, the debug symbols and the list of what is inside (SPDX).
set -euo pipefail
out=$(realpath -m "${1:-$(dirname "${BASH_SOURCE[0]}")/out}")
cd "$(dirname "${BASH_SOURCE[0]}")"
./setup.sh
build=${GLAZEL_BUILD:-$PWD/build/release} # an own build folder, for those who have one
log=$(mktemp)
trap 'rm -f "$log"' EXIT
echo "package: building" >&2
mkdir -p build
build() (
  flock 9 # shared with ./glazel, which may build at the same time
  { [ -e "$build/build.ninja" ] || cmake --preset release -B "$build"; } &&
    cmake --build "$build" --target GlazelDX_x64 GZ3Renderer_x64 glazelhost
) 9>build/render.lock
if ! build >"$log" 2>&1; then
  tail -n 60 "$log" >&2
  echo "package.sh: the build failed, see above" >&2
  exit 1
fi
/usr/bin/python3 -B packaging/package.py --build "$build" --out "$out"
