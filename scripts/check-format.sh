#!/usr/bin/env bash
# Fails when a C++ source or header differs from what .clang-format makes of it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
cd "$root"
if git rev-parse --is-inside-work-tree >/dev/null 2>&1; then
  mapfile -t files < <(git ls-files -- '*.cpp' '*.h')
else
  mapfile -t files < <(find src suite tests bench -name '*.cpp' -o -name '*.h' | sort)
fi
if ! clang-format --dry-run --Werror "${files[@]}"; then
  echo "Some files are not formatted; run: clang-format -i <file>" >&2
  exit 1
fi
