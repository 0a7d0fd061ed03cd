#!/usr/bin/env bash
# Fails when a C++ file of ours is not formatted as .clang-format says; --fix rewrites them.
set -euo pipefail
cd "$(dirname "$0")/.."
mapfile -t files < <(git ls-files -co --exclude-standard -- 'src/*.cpp' 'src/*.h' 'tests/*.cpp' 'tests/*.h' 'bench/*.cpp' 'bench/*.h' 'fuzz/*.cpp')
[ ${#files[@]} -gt 0 ] || exit 0
if [ "${1:-}" = "--fix" ]; then
  clang-format -i "${files[@]}"
else
  clang-format --dry-run --Werror "${files[@]}"
  echo "format: ${#files[@]} files clean"
fi
