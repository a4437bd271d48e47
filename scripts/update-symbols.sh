#!/usr/bin/env bash
# Regenerates the allow-lists of exported symbols (tests/package/symbols-*.txt) from a build.
#   scripts/update-symbols.sh [BUILD_DIR]   (default build/, a RelWithDebInfo build)
set -euo pipefail
cd "$(dirname "$0")/.."
dir=${1:-build}
cmake --build "$dir" --target QXNumCore QXNumWidgets
for lib in core widgets; do
  so=$(ls "$dir"/src/$lib/libqxnum$lib.so.*.*.* | head -n 1)
  tests/package/symbols.sh list "$so" >tests/package/symbols-$lib.txt
  echo "tests/package/symbols-$lib.txt: $(wc -l <tests/package/symbols-$lib.txt) symbols"
done
