#!/usr/bin/env bash
# The project's test command (CI runs it): the formatting check, a build with
# the dev preset (any compiler warning fails it), then every test through CTest
# on Qt's offscreen platform. Arguments go to ctest (e.g. -R DataFolders).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
preset=${BUILD_PRESET:-dev}
"$root/scripts/install-deps.sh"
"$root/scripts/check-format.sh"
BUILD_PRESET=$preset "$root/scripts/build.sh"
export QT_QPA_PLATFORM=offscreen
# QtWebEngine refuses to start as root with its sandbox on.
if [ "$(id -u)" -eq 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi
cd "$root"
ctest --preset "$preset" "$@"
