#!/usr/bin/env bash
# Builds the Organiser and what it starts from the build tree (the suite's
# layout editor, built beside NMain5 where the Organiser looks for it when no
# LayoutEditorPath is set, the wizard plug-ins and the help), but not the
# tests and benchmarks; installs the example assays where the program looks
# for them, and starts it. Without a display it runs under Xvfb and says so.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
"$root/scripts/build.sh" --target nebra_programs
"$root/scripts/install-examples.sh"

# QtWebEngine refuses to start as root with its sandbox on.
if [ "$(id -u)" -eq 0 ]; then
  export QTWEBENGINE_DISABLE_SANDBOX=1
fi

if [ -z "${DISPLAY:-}" ] && [ -z "${WAYLAND_DISPLAY:-}" ]; then
  echo "No display found: running the Organiser under Xvfb (a virtual X server) with the openbox window manager."
  # A window manager is what maximises windows on a desktop; Xvfb alone has none.
  exec xvfb-run -a -s "-screen 0 1920x1080x24" \
    bash -c 'openbox >/dev/null 2>&1 & exec "$0" "$@"' "$build/src/NMain5" "$@"
fi
exec "$build/src/NMain5" "$@"
