#!/usr/bin/env bash
# Configures (first time) and builds the project.
#   BUILD_PRESET=dev|asan   build with that preset of CMakePresets.json (into build-dev/, build-asan/)
#   otherwise               build into build/ (or $BUILD_DIR), type $BUILD_TYPE (default RelWithDebInfo)
# Arguments go to "cmake --build", e.g. "--target nebra_programs" for the programs only.
# ccache speeds up rebuilds when it is installed; nothing needs it.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
"$root/scripts/install-deps.sh"
launcher=()
if command -v ccache >/dev/null 2>&1; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
cd "$root"
if [ -n "${BUILD_PRESET:-}" ]; then
  if [ ! -f "build-$BUILD_PRESET/build.ninja" ]; then
    cmake --preset "$BUILD_PRESET" "${launcher[@]}"
  fi
  cmake --build --preset "$BUILD_PRESET" --parallel "$(nproc)" "$@"
  exit 0
fi
build=${BUILD_DIR:-$root/build}
type=${BUILD_TYPE:-RelWithDebInfo}
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="$type" "${launcher[@]}"
fi
cmake --build "$build" --parallel "$(nproc)" "$@"
