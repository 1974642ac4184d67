#!/usr/bin/env bash
# Installs the Debian 12 packages the Organiser needs to build, run and test.
# Runs apt-get directly as root, through sudo otherwise; when neither can work it
# prints the exact command to run and stops.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config clang-format
  clang-14 libclang-rt-14-dev llvm-14
  qt6-base-dev qt6-base-dev-tools libqt6sql6-sqlite qt6-qpa-plugins
  qt6-webengine-dev qt6-webengine-dev-tools
  qt6-tools-dev qt6-tools-dev-tools qt6-l10n-tools qt6-documentation-tools
  libsodium-dev libgl-dev libvulkan-dev dbus-daemon
  postgresql libpq-dev openssl libssl-dev
  xvfb xauth openbox fonts-dejavu-core poppler-utils bindfs fuse3
  librsvg2-bin dpkg-dev desktop-file-utils appstream libxml2-utils shared-mime-info man-db lintian
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q "install ok installed"; then
    missing+=("$p")
  fi
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing missing packages: ${missing[*]}"
if [ "$(id -u)" -eq 0 ]; then
  as_root=()
elif command -v sudo >/dev/null 2>&1 && sudo -n true 2>/dev/null; then
  as_root=(sudo)
elif command -v sudo >/dev/null 2>&1 && [ -t 0 ]; then
  as_root=(sudo)
else
  echo "Cannot install packages without root. Run this, then try again:" >&2
  echo "  sudo apt-get update && sudo apt-get install -y --no-install-recommends ${missing[*]}" >&2
  exit 1
fi
export DEBIAN_FRONTEND=noninteractive
"${as_root[@]}" apt-get update
"${as_root[@]}" apt-get install -y --no-install-recommends "${missing[@]}"
