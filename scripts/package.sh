#!/usr/bin/env bash
# Builds the Debian package of the Organiser into build-package/ (or
# $PACKAGE_BUILD_DIR): a release build with Debian's hardening flags, without
# tests, installed to /usr by CPack. Prints the package's path last.
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
build=${PACKAGE_BUILD_DIR:-$root/build-package}
"$root/scripts/install-deps.sh"

if [ ! -f "$build/build.ninja" ]; then
  export DEB_BUILD_MAINT_OPTIONS=hardening=+all
  launcher=()
  if command -v ccache >/dev/null 2>&1; then
    launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
  fi
  cmake -S "$root" -B "$build" -G Ninja -DCMAKE_BUILD_TYPE=Release -DNEBRA_BUILD_TESTS=OFF \
    -DCMAKE_INSTALL_PREFIX=/usr "${launcher[@]}" \
    -DCMAKE_CXX_FLAGS="$(dpkg-buildflags --get CPPFLAGS) $(dpkg-buildflags --get CXXFLAGS)" \
    -DCMAKE_EXE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" \
    -DCMAKE_SHARED_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)" \
    -DCMAKE_MODULE_LINKER_FLAGS="$(dpkg-buildflags --get LDFLAGS)"
fi
cmake --build "$build" --parallel "$(nproc)"
(cd "$build" && cpack -G DEB >/dev/null)
package=$(ls -t "$build"/*.deb | head -n 1)
echo "$package"
