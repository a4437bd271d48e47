#!/usr/bin/env bash
# Builds everything with warnings as errors (pedantic set included) and runs every test.
#   scripts/test.sh              # normal build in build/
#   QXNUM_SANITIZE=1 scripts/test.sh   # AddressSanitizer + UBSan build in build-asan/
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh

jobs=$(nproc 2>/dev/null || echo 2)
if [ "${QXNUM_SANITIZE:-0}" = 1 ]; then
  dir=build-asan
  extra=(-DQXNUM_SANITIZE=ON -DCMAKE_BUILD_TYPE=Debug -DQXNUM_BUILD_BENCH=OFF)
else
  dir=build
  extra=(-DCMAKE_BUILD_TYPE=RelWithDebInfo)
fi

cmake -S . -B "$dir" -G Ninja -DQXNUM_WERROR=ON -DQXNUM_PEDANTIC=ON "${extra[@]}"
cmake --build "$dir" -j "$jobs"
cd "$dir"
QT_QPA_PLATFORM=offscreen ctest --output-on-failure -j "$jobs"
