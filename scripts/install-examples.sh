#!/usr/bin/env bash
# Copies the shipped example assays to the fixed example source folder,
# /opt/Example Assays, from which the Organiser seeds new data folders.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
dest="/opt/Example Assays"
src="$root/data/Example Assays"
if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1; then
  as_root=(sudo)
else
  echo "Cannot write $dest without root. Run this, then try again:" >&2
  echo "  sudo mkdir -p '$dest' && sudo cp -r '$src/.' '$dest/'" >&2
  exit 1
fi
"${as_root[@]}" mkdir -p "$dest"
"${as_root[@]}" cp -r "$src/." "$dest/"
