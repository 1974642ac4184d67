#!/usr/bin/env bash
# Builds everything and runs every test with CTest on Qt's offscreen platform.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
"$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen
# QtWebEngine refuses to start as root with its sandbox on.
if [ "$(id -u)" -eq 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi
cd "$build"
ctest --output-on-failure --timeout 300 "$@"
