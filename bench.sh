#!/usr/bin/env bash
# Builds what is needed and measures what a person waits for, beside plain copies and ffmpeg on this
# machine. Prints a table, writes build/bench.json and build/bench.svg.
#   ./bench.sh                     all of it, in a quarter of an hour; best on an idle machine
#   ./bench.sh --compare OLD.json  names also what became slower since that run
#   ./bench.sh --rounds 5          fewer runs of each figure than 15
#   ./bench.sh --clone             also from a clean clone to the first picture, which builds all
set -euo pipefail
root=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
case " $* " in *" --help "* | *" -h "*) ;; *)
  "$root/setup.sh"
  mkdir -p "$root/build/log"
  log=$root/build/log/bench.txt
  if ! (cd "$root" && cmake --preset release && cmake --build --preset release --target benchmarks) \
    >"$log" 2>&1; then
    echo "bench: the build failed; see $log" >&2
    exit 1
  fi
  ;;
esac
exec /usr/bin/python3 -B "$root/tests/bench/run_benchmarks.py" "$@"
