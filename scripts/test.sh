#!/usr/bin/env bash
# The project's test command (CI runs it): the formatting check, a build with
# the dev preset (any compiler warning fails it), each fuzz target replayed
# over its seed corpus (a regression check, not a fuzzing session: the same
# inputs every run; NEBRA_FUZZ_SECONDS=N searches for N s more, NEBRA_SKIP_FUZZ=1
# leaves it out), then every test through CTest on Qt's
# offscreen platform. Arguments go to ctest (e.g. -R DataFolders).
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
preset=${BUILD_PRESET:-dev}
"$root/scripts/install-deps.sh"
"$root/scripts/check-format.sh"
BUILD_PRESET=$preset "$root/scripts/build.sh"
if [ "${NEBRA_SKIP_FUZZ:-0}" != 1 ]; then
  "$root/scripts/fuzz.sh" "${NEBRA_FUZZ_SECONDS:-0}"
fi
export QT_QPA_PLATFORM=offscreen
# QtWebEngine refuses to start as root with its sandbox on.
if [ "$(id -u)" -eq 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi
cd "$root"
ctest --preset "$preset" "$@"
