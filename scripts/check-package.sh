#!/usr/bin/env bash
# Installs the Debian package on this machine with apt, starts the installed
# Organiser once from its menu entry under Xvfb, runs the security tool, and
# removes the package again. Needs root (CI runs it when it is root).
#
#   scripts/check-package.sh [PACKAGE.deb]
#
# Without a package it makes one: from the test build folder (build/, or
# $BUILD_DIR) when there is one, which is quick, otherwise with scripts/package.sh.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${BUILD_DIR:-$root/build}
if [ "$(id -u)" -ne 0 ]; then
  echo "scripts/check-package.sh installs a package and must run as root." >&2
  exit 1
fi
"$root/scripts/install-deps.sh"

work=$(mktemp -d /tmp/nebra-check-package.XXXXXX)
pids=()
# Removing the package removes /opt/Example Assays; scripts/run.sh may have put
# them there before, so they are put back afterwards.
had_examples=false
[ -d "/opt/Example Assays" ] && had_examples=true
cleanup() {
  for pid in "${pids[@]}"; do kill "$pid" 2>/dev/null || true; done
  wait 2>/dev/null || true
  if dpkg-query -W -f='${Status}' nebra-organiser 2>/dev/null | grep -q "install ok installed"; then
    DEBIAN_FRONTEND=noninteractive apt-get remove -y nebra-organiser >/dev/null
    echo "Removed the package again."
  fi
  if $had_examples && [ ! -d "/opt/Example Assays" ]; then
    "$root/scripts/install-examples.sh"
  fi
  rm -rf "$work"
}
trap cleanup EXIT

deb=${1:-}
if [ -z "$deb" ] && [ -f "$build/CPackConfig.cmake" ]; then
  (cd "$build" && cpack -G DEB -B "$work/deb" >"$work/cpack.log") || { cat "$work/cpack.log"; exit 1; }
  deb=$(ls "$work"/deb/*.deb)
elif [ -z "$deb" ]; then
  deb=$("$root/scripts/package.sh" | tail -n 1)
fi
deb=$(realpath "$deb")
echo "Installing $deb ($(du -h "$deb" | cut -f1))"
DEBIAN_FRONTEND=noninteractive apt-get install -y "$deb" >"$work/apt.log" 2>&1 || { cat "$work/apt.log"; exit 1; }

fail() { echo "FAIL: $*" >&2; exit 1; }
# The triggers of the desktop's databases have taken the package's files in.
grep -q 'application/x-nebra-protocol:\*\.apr' /usr/share/mime/globs2 || fail "the MIME database lacks *.apr"
entry=/usr/share/applications/example.quorvix.Organiser.desktop
[ -f "$entry" ] || fail "no menu entry $entry"

# A user of its own: settings, data folders and the single-instance socket
# live in $work, so a running Organiser of this machine is not disturbed.
export HOME=$work/home XDG_CONFIG_HOME=$work/home/.config XDG_DATA_HOME=$work/home/.local/share
export XDG_STATE_HOME=$work/home/.local/state XDG_RUNTIME_DIR=$work/runtime
mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"

# Xvfb picks a free display and writes its number to fd 3.
Xvfb -displayfd 3 -screen 0 1280x800x24 -nolisten tcp 3>"$work/display" 2>"$work/xvfb.log" &
pids+=($!)
for _ in $(seq 100); do [ -s "$work/display" ] && break; sleep 0.1; done
[ -s "$work/display" ] || fail "Xvfb did not start: $(cat "$work/xvfb.log")"
export DISPLAY=:$(cat "$work/display")

# Started as the desktop's menu starts it: the Exec line of the installed entry.
exec_line=$(sed -n 's/^Exec=//p' "$entry")
echo "Starting \"$exec_line\" from $entry on display $DISPLAY"
bash -c "exec $exec_line" >"$work/organiser.log" 2>&1 &
organiser=$!
pids+=("$organiser")
assays="$HOME/Nebra Data/My Assays"
seeded="$assays/Protocols/ELISA IgG Quantitation.apr"
driver=$(sed -n 's/.*"FullName" *: *"\([^"]*\)".*/\1/p' /usr/share/nebra/drivers.json | head -n 1)
for _ in $(seq 120); do
  [ -f "$seeded" ] && [ -d "$assays/Read Configurations/$driver" ] && break
  kill -0 "$organiser" 2>/dev/null || fail "the Organiser ended at start-up: $(cat "$work/organiser.log")"
  sleep 0.5
done
[ -f "$seeded" ] || fail "the Organiser did not fill the data folders from /opt/Example Assays within 60 s"
[ -d "$assays/Read Configurations/$driver" ] ||
  fail "the Organiser made no folder for the driver \"$driver\" of /usr/share/nebra/drivers.json"
kill -0 "$organiser" 2>/dev/null || fail "the Organiser ended after start-up: $(cat "$work/organiser.log")"
echo "The installed Organiser is running, has copied the example assays and read the driver catalogue."

# create writes the site's policy to /etc/xdg/Nebra/Suite.ini and nowhere else. One there would
# secure every later run of the suite on this machine, its tests too, so a folder of the check's own
# is bound over /etc/xdg in a mount namespace of the check's own.
mkdir -p "$work/xdg"
unshare -m --propagation private sh -c 'mount --bind "$1/xdg" /etc/xdg &&
    nebra-secadmin --database "$1/Security.db" create && nebra-secadmin --database "$1/Security.db" verify &&
    test -f /etc/xdg/Nebra/Suite.ini' sh "$work" ||
  fail "nebra-secadmin create and verify, with /etc/xdg of their own (unshare -m)"
[ -f "$work/xdg/Nebra/Suite.ini" ] || fail "nebra-secadmin create did not write the policy to /etc/xdg/Nebra/Suite.ini"
[ ! -e /etc/xdg/Nebra/Suite.ini ] || fail "nebra-secadmin create wrote the machine's /etc/xdg/Nebra/Suite.ini"
man -w NMain5 >/dev/null && man -w 8 nebra-secadmin >/dev/null || fail "the manual pages are not found by man"
echo "The installed package works."
