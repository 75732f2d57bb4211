#!/usr/bin/env bash
# clang-tidy over the product, the tools and the reference renderer, as .clang-tidy says: pure logic as it is
# built natively, the rest as it is built for Windows. Arguments pick sources by a part of their
# path; --changed picks those that differ from the main branch, or include a header that does. All
# of them take some minutes, so test.sh looks at what has changed.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."

product='^(binding|effect|module|platform|propertypage|reference_renderer|support|tools)/'
if [ "${1:-}" = --changed ]; then
  main=$(git rev-parse -q --verify origin/main || git rev-parse -q --verify main) || exit 0 # no clone
  mapfile -t files < <(git diff --name-only --diff-filter=d "$(git merge-base HEAD "$main")" |
    grep -E "$product.*\.(cpp|h)$")
  set --
  for file in "${files[@]}"; do
    case $file in
      *.cpp) set -- "$@" "$file" ;;
      *) mapfile -t users < <(git grep -lF "#include \"$file\"" -- '*.cpp' | grep -E "$product") &&
        set -- "$@" "${users[@]}" ;;
    esac
  done
  [ $# -gt 0 ] || exit 0
  mapfile -t files < <(printf '%s\n' "$@" | sort -u)
  set -- "${files[@]}"
fi

# The folders that the cross compiler searches for the system's headers, but not its own intrinsics.
mapfile -t folders < <(x86_64-w64-mingw32-g++-win32 -E -v -x c++ - </dev/null 2>&1 >/dev/null |
  sed -n '/^#include </,/^End of search/s/^ //p' | grep -E '/c\+\+|/x86_64-w64-mingw32/include$')
windows=(--extra-arg-before=--target=x86_64-w64-windows-gnu --extra-arg-before=-nostdlibinc)
for folder in "${folders[@]}"; do
  windows+=("--extra-arg=-isystem$folder")
done

sources() { # BUILD FOLDER: the sources of its compile commands, from the root
  sed -n 's/^ *"file": "\(.*\)",\{0,1\}$/\1/p' "$1/compile_commands.json" | sed "s|^$PWD/||" |
    grep -E "$product.*\.cpp$" |
    { grep -F -- "$pattern" || true; } | sort -u
}

# One complaint without a place is this version's own: it does not know what `requires` makes of a type.
tidy() { # BUILD FOLDER, OPTION..., then sources on standard input
  xargs -r -P "$(nproc)" -n 1 clang-tidy --quiet -p "$@" 2>/dev/null |
    grep -vE "^[0-9]+ warnings? treated as error|^error: invalid case style" | tee "$output" >&2
  ! grep -qE '(^|: )(error|warning): ' "$output"
}

# Both are options of GCC that clang does not know.
gcc_flags=(--extra-arg=-Wno-unknown-warning-option --extra-arg=-Wno-ignored-optimization-argument)

output=$(mktemp)
trap 'rm -f "$output"' EXIT
# Build folders of its own: clang cannot read GCC's precompiled headers, and is to name our sources.
for preset in native release; do
  cmake --preset "$preset" -B "build/tidy/$preset" -DGLAZEL_PRECOMPILE=OFF -DGLAZEL_UNITY=OFF >"$output" 2>&1 ||
    { cat "$output" >&2; exit 1; }
  # Which clang refuses, and the other two do not silence.
  sed -i -E 's/ (-fno-ipa-ra|--param [^ ]+)//g' "build/tidy/$preset/compile_commands.json"
done
status=0
for pattern in "${@:-}"; do
  sources build/tidy/native | tidy build/tidy/native "${gcc_flags[@]}" || status=1
  comm -13 <(sources build/tidy/native) <(sources build/tidy/release) |
    tidy build/tidy/release "${gcc_flags[@]}" "${windows[@]}" || status=1
done
exit $status
