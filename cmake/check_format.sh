#!/usr/bin/env bash
# Says which C++ files clang-format would change; --fix changes them.
set -euo pipefail
cd "$(dirname "${BASH_SOURCE[0]}")/.."
mode=(--dry-run -Werror)
[ "${1:-}" = --fix ] && mode=(-i)
git ls-files -z --cached --others --exclude-standard -- '*.cpp' '*.h' | xargs -0 clang-format "${mode[@]}"
