#!/usr/bin/env bash
# Renders the case editor, each of its sections and a gallery of the controls offscreen, in a light
# and a dark palette, into docs/images/ (or the folder given). Fails when a picture is blank.
set -euo pipefail
cd "$(dirname "$0")/.."
out=${1:-docs/images}
scripts/deps.sh
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo >/dev/null
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target qxnum_demo
QT_QPA_PLATFORM=offscreen build/apps/demo/qxnum_demo --screenshots "$out"
