#!/usr/bin/env bash
# Builds the fuzz targets (preset "fuzz": clang, libFuzzer, AddressSanitizer,
# UndefinedBehaviorSanitizer; the readers' libraries only) and runs each one
# for SECONDS seconds, starting from its seed corpus in fuzz/corpus/<target>.
#   scripts/fuzz.sh [SECONDS] [TARGET...]     default: 5 seconds, every target
# SECONDS 0 replays the seed corpus once and searches no further: the same
# inputs on every run, which is what a test command wants.
# The seed corpus is read, never written: what a run finds goes to
# $FUZZ_WORK/<target> (default a temporary folder), and a failing input to
# $FUZZ_WORK/<target>-crash-*. Extra libFuzzer options go in $FUZZ_OPTIONS.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
seconds=${1:-5}
shift || true
cd "$root"
launcher=()
if command -v ccache >/dev/null 2>&1; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
if [ ! -f build-fuzz/build.ninja ]; then
  cmake --preset fuzz "${launcher[@]}" >/dev/null
fi
cmake --build --preset fuzz --parallel "$(nproc)"
mapfile -t targets < <(if [ $# -gt 0 ]; then printf '%s\n' "$@"; else ls fuzz/corpus; fi)
work=${FUZZ_WORK:-$(mktemp -d)}
export ASAN_OPTIONS=${ASAN_OPTIONS:-detect_leaks=1:abort_on_error=1}
export UBSAN_OPTIONS=${UBSAN_OPTIONS:-print_stacktrace=1:halt_on_error=1}
for target in "${targets[@]}"; do
  mkdir -p "$work/$target"
  if [ "$seconds" = 0 ]; then
    options=(-runs=0 -print_final_stats=1 -artifact_prefix="$work/$target-")
  else
    options=(-max_total_time="$seconds" -print_final_stats=1 -artifact_prefix="$work/$target-")
  fi
  [ -f "fuzz/dict/$target.dict" ] && options+=(-dict="fuzz/dict/$target.dict")
  echo "== $target: ${seconds} s from fuzz/corpus/$target (0: the corpus replayed)"
  # shellcheck disable=SC2086
  "build-fuzz/fuzz/$target" "${options[@]}" ${FUZZ_OPTIONS:-} "$work/$target" "fuzz/corpus/$target" 2>"$work/$target.log" ||
    { tail -n 60 "$work/$target.log" >&2; echo "$target failed; the input is in $work" >&2; exit 1; }
  grep -E '^stat::(number_of_executed_units|average_exec_per_sec|new_units_added)' "$work/$target.log" || true
done
# A temporary work folder goes once every target has passed; a failing run keeps it.
[ -n "${FUZZ_WORK:-}" ] || rm -rf "$work"
