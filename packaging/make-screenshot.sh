#!/usr/bin/env bash
# Makes packaging/screenshots/main-window.png, the AppStream screenshot, from
# the real program: the Organiser of a build folder on a 1280x800 Xvfb screen
# with openbox, a fresh user whose data folders it fills with the example
# assays. Needs Xvfb, openbox, xwd (x11-apps) and netpbm. As root it lays the
# example assays at /opt/Example Assays inside a private mount namespace, so the
# machine's /opt is left alone; otherwise they must be installed there.
#   packaging/make-screenshot.sh [BUILD_DIR]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${1:-$root/build}
if [ "$(id -u)" -eq 0 ] && [ -z "${NEBRA_IN_NAMESPACE:-}" ]; then
  exec env NEBRA_IN_NAMESPACE=1 unshare -m bash -c \
    'mount -t tmpfs none /opt && cp -r "$1/data/Example Assays" /opt/ && exec "$0" "$2"' "$0" "$root" "$build"
fi
work=$(mktemp -d /tmp/nebra-screenshot.XXXXXX)
pids=()
trap 'for p in "${pids[@]}"; do kill "$p" 2>/dev/null || true; done; wait; rm -rf "$work"' EXIT
export HOME=$work XDG_CONFIG_HOME=$work/.config XDG_DATA_HOME=$work/.local/share
export XDG_STATE_HOME=$work/.local/state XDG_RUNTIME_DIR=$work/runtime
mkdir -p "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$work/display" 2>/dev/null &
pids+=($!)
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
export DISPLAY=:$(cat "$work/display")
openbox >/dev/null 2>&1 &
pids+=($!)
"$build/src/NMain5" >"$work/organiser.log" 2>&1 &
pids+=($!)
for _ in $(seq 120); do
  [ -f "$HOME/Nebra Data/My Assays/Protocols/ELISA IgG Quantitation.apr" ] && break
  sleep 0.5
done
# The welcome page is drawn by the web engine after the window is shown.
sleep "${SETTLE_SECONDS:-15}"
mkdir -p "$root/packaging/screenshots"
xwd -root -silent | xwdtopnm 2>/dev/null | pnmtopng >"$root/packaging/screenshots/main-window.png"
echo "$root/packaging/screenshots/main-window.png"
