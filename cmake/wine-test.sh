#!/usr/bin/env bash
# Runs a GoogleTest program under Wine, where one that crashes ends with 0: one that does not say how
# its tests ended fails. On a busy machine Wine now and then fails to start a
# process, loses the connection to its server, or kills a program that has ended but is not gone
# after half a second; that says nothing about the program, so it is started again.
set -euo pipefail
runner=$(dirname "${BASH_SOURCE[0]}")/wine-run.sh
output=$(mktemp)
trap 'rm -f "$output"' EXIT
for try in 1 2 3; do
  status=0
  case " $* " in
    *" --gtest_list_tests "*)
      # A program of the system that it starts may keep its output, and itself it may hang at its end.
      timeout 50 "$runner" "$@" >"$output" 2>&1 </dev/null || status=$?
      ;;
    *) "$runner" "$@" 2>&1 | tee "$output" || status=$? ;;
  esac
  grep -q '^Running main()' "$output" && ! grep -q '^wine client error:' "$output" &&
    [ "$status" -ne 137 ] && [ "$status" -ne 124 ] && break
  echo "wine-test: Wine failed (start $try, exit code $status)" >&2
done
case " $* " in *" --gtest_list_tests "*) cat "$output"; exit "$status" ;; esac
if [ "$status" -eq 0 ] && ! grep -q '^\[  PASSED  \]' "$output"; then
  echo "wine-test: $1 ended before its tests did; what it said last stands above" >&2
  exit 1
fi
exit "$status"
