#!/usr/bin/env bash
# Line coverage of a reader reached by a fuzz target's inputs: builds the fuzz
# targets with llvm-cov coverage (preset "fuzz-coverage"), runs TARGET once
# over every input of the given folders (default its seed corpus) and prints
# llvm-cov's report for the reader's sources.
#   scripts/fuzz-coverage.sh TARGET [FOLDER...]
set -euo pipefail
root=$(cd "$(dirname "$0")/.." && pwd)
target=$1
shift
cd "$root"
declare -A sources=(
  [PlateLayoutFuzzer]="suite/layout/PlateLayout.cpp"
  [ProtocolFuzzer]="suite/protocol/AssayProtocol.cpp suite/protocol/ProtocolReader.cpp"
  [DriverCatalogueFuzzer]="suite/core/HLDCollection.cpp"
  [WizardCatalogueFuzzer]="suite/wizards/WizardCatalogue.cpp"
  [SettingsFileFuzzer]="suite/core/SettingsStore.cpp"
  [WelcomeLinkFuzzer]="src/shell/WelcomePage.cpp"
)
[ -n "${sources[$target]:-}" ] || { echo "unknown target $target" >&2; exit 1; }
launcher=()
if command -v ccache >/dev/null 2>&1; then
  launcher=(-DCMAKE_CXX_COMPILER_LAUNCHER=ccache)
fi
if [ ! -f build-fuzz-coverage/build.ninja ]; then
  cmake --preset fuzz-coverage "${launcher[@]}" >/dev/null
fi
cmake --build --preset fuzz-coverage --parallel "$(nproc)" >/dev/null
folders=("$@")
[ ${#folders[@]} -gt 0 ] || folders=("fuzz/corpus/$target")
profiles=$(mktemp -d)
LLVM_PROFILE_FILE="$profiles/%p.profraw" ASAN_OPTIONS=detect_leaks=0 \
  "build-fuzz-coverage/fuzz/$target" -runs=0 "${folders[@]}" 2>/dev/null
llvm-profdata-14 merge -sparse "$profiles"/*.profraw -o "$profiles/merged.profdata"
# The report lists every instrumented file the target links; the reader's
# own files are the ones that count.
llvm-cov-14 report "build-fuzz-coverage/fuzz/$target" -instr-profile="$profiles/merged.profdata" |
  grep -E "^(Filename|TOTAL)|$(echo "${sources[$target]}" | sed 's/ /|/g')"
rm -rf "$profiles"
