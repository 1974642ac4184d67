#!/usr/bin/env bash
# Configures and builds the project into build/ (or $BUILD_DIR).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
type=${BUILD_TYPE:-RelWithDebInfo}
"$root/scripts/install-deps.sh"
if [ ! -f "$build/build.ninja" ]; then
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE="$type"
fi
cmake --build "$build" --parallel "$(nproc)"
