#!/usr/bin/env bash
# A staged installation (DESTDIR, prefix /usr) is complete, its programs run
# with the source and build trees out of reach, and its desktop files pass the
# validators the desktops and Debian use.
# Usage: check-install.sh BUILD_DIR SOURCE_DIR VERSION
set -uo pipefail
build=$1 source=$2 version=$3
here=$(cd "$(dirname "$0")" && pwd)
app=example.quorvix.Organiser
for tool in desktop-file-validate appstreamcli xmllint update-mime-database man; do
  command -v "$tool" >/dev/null || { echo "SKIP: $tool is not installed (scripts/install-deps.sh)"; exit 77; }
done

failures=0
fail() { echo "FAIL: $*"; failures=$((failures + 1)); }

stage=$(mktemp -d /tmp/nebra-stage.XXXXXX)
trap 'rm -rf "$stage"' EXIT
DESTDIR="$stage" cmake --install "$build" --prefix /usr >"$stage.log" 2>&1 || { cat "$stage.log"; exit 1; }
rm -f "$stage.log"

# Every listed path, and every file of the suite's data folder.
while IFS= read -r path; do
  [[ -z $path || $path == \#* ]] && continue
  # The pattern may cross folders (the multiarch library folder), so find matches it.
  [ -n "$(find "$stage" -path "$stage/$path" -print -quit)" ] || fail "not installed: /$path"
done <"$here/installed-paths.txt"
while IFS= read -r file; do
  case $file in
    "Example Assays/"*) target="$stage/opt/$file" ;;
    *) target="$stage/usr/share/nebra/$file" ;;
  esac
  [ -e "$target" ] || fail "data file not installed: $file"
done < <(cd "$source/data" && find . -type f | sed 's|^\./||')

# The programs, run from the staged tree while the trees they were built from
# cannot be seen: a private mount namespace lays empty folders over them, and
# the staged /opt over the machine's.
namespaces=false
if [ "$(id -u)" -eq 0 ] && unshare -m true 2>/dev/null; then namespaces=true; fi
run_out_of_reach() {
  local hide=("$source")
  [[ $build == "$source"/* ]] || hide+=("$build")
  if $namespaces; then
    unshare -m bash -c 'mount --bind "$STAGE/opt" /opt || exit 97
      for d in "${@:2}"; do mount -t tmpfs none "$d" || exit 97; done; eval "$1"' run "$1" "${hide[@]}"
  else
    bash -c "$1"
  fi
}
export STAGE=$stage
out=$(QT_QPA_PLATFORM=offscreen run_out_of_reach '"$STAGE/usr/bin/NMain5" --version') ||
  fail "NMain5 --version exited with $?"
[ "$out" = "NMain5 $version" ] || fail "NMain5 --version printed \"$out\""
out=$(run_out_of_reach '"$STAGE/usr/bin/nebra-secadmin" --help') || fail "nebra-secadmin --help exited with $?"
grep -q '^Commands:' <<<"$out" || fail "nebra-secadmin --help printed no commands"

# A first start of the staged Organiser makes the data folders from the
# installed data alone: a folder for the catalogue's driver (share/nebra) and
# the example protocols (/opt/Example Assays).
if $namespaces; then
  export DRIVER=$(sed -n 's/.*"FullName" *: *"\([^"]*\)".*/\1/p' "$source/data/drivers.json" | head -n 1)
  export HOME=$stage/home XDG_CONFIG_HOME=$stage/home/.config XDG_DATA_HOME=$stage/home/.local/share
  export XDG_STATE_HOME=$stage/home/.local/state XDG_RUNTIME_DIR=$stage/runtime QT_QPA_PLATFORM=offscreen
  mkdir -p "$HOME" "$XDG_RUNTIME_DIR" && chmod 700 "$XDG_RUNTIME_DIR"
  run_out_of_reach '"$STAGE/usr/bin/NMain5" >"$STAGE/organiser.log" 2>&1 & pid=$!
    assays="$HOME/Nebra Data/My Assays"
    for _ in $(seq 600); do
      [ -d "$assays/Read Configurations/$DRIVER" ] && [ -f "$assays/Protocols/ELISA IgG Quantitation.apr" ] && break
      kill -0 $pid 2>/dev/null || break
      sleep 0.1
    done
    kill $pid 2>/dev/null; wait $pid 2>/dev/null; true'
  [ -d "$HOME/Nebra Data/My Assays/Read Configurations/$DRIVER" ] ||
    fail "the staged Organiser made no folder for the driver \"$DRIVER\" of share/nebra: $(cat "$stage/organiser.log")"
  [ -f "$HOME/Nebra Data/My Assays/Protocols/ELISA IgG Quantitation.apr" ] ||
    fail "the staged Organiser did not copy the example assays from /opt/Example Assays"
else
  echo "note: not root or no mount namespaces: the trees stay visible and the Organiser is not started"
fi

# Desktop entry, metadata, MIME types and manual pages, as their own tools see them.
share=$stage/usr/share
desktop=$share/applications/$app.desktop
desktop-file-validate "$desktop" || fail "desktop-file-validate"
appstreamcli validate --no-net "$share/metainfo/$app.metainfo.xml" || fail "appstreamcli validate"
xmllint --noout "$share/mime/packages/nebra-documents.xml" || fail "xmllint of the MIME types"
exec_name=$(sed -n 's/^Exec=\([^ ]*\).*/\1/p' "$desktop")
[ -x "$stage/usr/bin/$exec_name" ] || fail "Exec=$exec_name is not an installed program"
icon=$(sed -n 's/^Icon=//p' "$desktop")
[ -e "$share/icons/hicolor/scalable/apps/$icon.svg" ] || fail "Icon=$icon has no installed icon"
grep -q "<launchable type=\"desktop-id\">$app.desktop</launchable>" "$share/metainfo/$app.metainfo.xml" ||
  fail "the metadata does not launch the installed desktop entry"
grep -q "<release version=\"$version\"" "$share/metainfo/$app.metainfo.xml" ||
  fail "the metadata has no release $version"

# The MIME database a desktop builds from the file: each type by its pattern,
# with an installed icon of its name.
mime=$stage/mime
mkdir -p "$mime/packages"
cp "$share/mime/packages/nebra-documents.xml" /usr/share/mime/packages/freedesktop.org.xml "$mime/packages/"
XDG_DATA_DIRS=$stage update-mime-database "$mime" || fail "update-mime-database"
for pair in protocol:apr layout:mlo results:ars read-configuration:daq; do
  type=application/x-nebra-${pair%%:*}
  grep -q "^50:$type:\*\.${pair##*:}$" "$mime/globs2" || fail "*.${pair##*:} is not $type"
  [ -e "$share/icons/hicolor/scalable/mimetypes/${type/\//-}.svg" ] || fail "no icon for $type"
done

for page in man1/NMain5.1.gz man8/nebra-secadmin.8.gz; do
  warnings=$(LC_ALL=C.UTF-8 man --warnings -E UTF-8 -l "$share/man/$page" 2>&1 >/dev/null)
  [ -z "$warnings" ] || fail "man --warnings $page: $warnings"
done

[ "$failures" -eq 0 ] || { echo "$failures check(s) failed"; exit 1; }
echo "The staged installation is complete and valid."
