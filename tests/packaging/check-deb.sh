#!/usr/bin/env bash
# The Debian package CPack makes from a build folder: its control fields, every
# expected path in `dpkg-deb --contents`, and no lintian error.
# Usage: check-deb.sh BUILD_DIR VERSION
set -uo pipefail
build=$1 version=$2
here=$(cd "$(dirname "$0")" && pwd)
for tool in cpack dpkg-deb dpkg-shlibdeps lintian; do
  command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed (scripts/install-deps.sh)"; exit 77; }
done

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

out=$(mktemp -d /tmp/nebra-deb.XXXXXX)
trap 'rm -rf "$out"' EXIT
cpack --config "$build/CPackConfig.cmake" -G DEB -B "$out" >"$out/cpack.log" 2>&1 ||
  { cat "$out/cpack.log"; exit 1; }
deb=$(ls "$out"/*.deb)
echo "Package: $(basename "$deb"), $(du -k "$deb" | cut -f1) KiB"

field() { dpkg-deb --field "$deb" "$1"; }
[ "$(field Package)" = nebra-organiser ] || fail "Package: $(field Package)"
[ "$(field Version)" = "$version" ] || fail "Version: $(field Version)"
[ "$(field Section)" = science ] || fail "Section: $(field Section)"
# Computed from the binaries, plus what they use without linking it.
for dependency in libqt6core6 libqt6webenginewidgets6 libsodium23 libqt6sql6-sqlite qt6-qpa-plugins xdg-utils; do
  field Depends | grep -q "\b$dependency\b" || fail "Depends lacks $dependency: $(field Depends)"
done

contents=$(dpkg-deb --contents "$deb")
while IFS= read -r path; do
  [[ -z $path || $path == \#* ]] && continue
  # shellcheck disable=SC2053 # the listed path is a pattern on purpose
  found=false
  while IFS= read -r entry; do [[ $entry == ./$path ]] && { found=true; break; }; done < <(awk '{ $1=$2=$3=$4=$5=""; sub(/^ +/, ""); sub(/ -> .*$/, ""); print }' <<<"$contents")
  $found || fail "the package lacks /$path"
done <"$here/installed-paths.txt"
if grep -E ' \./usr/(local|lib/debug)/' <<<"$contents"; then fail "files outside the package's prefix"; fi

# Lintian's errors fail; its warnings are explained in docs/packaging.md.
lintian --fail-on error --tag-display-limit 0 "$deb" || fail "lintian reports errors"

[ "$failures" -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "The package is complete and lintian reports no error."
