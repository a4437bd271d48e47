#!/usr/bin/env bash
# Builds the library and runs the demo application. Without a display it renders the demo
# offscreen into demo.png and exits.
set -euo pipefail
cd "$(dirname "$0")/.."

scripts/deps.sh

cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo
cmake --build build -j "$(nproc 2>/dev/null || echo 2)" --target qxnum_demo
if [ -n "${DISPLAY:-}${WAYLAND_DISPLAY:-}" ]; then
  exec build/apps/demo/qxnum_demo "$@"
else
  QT_QPA_PLATFORM=offscreen build/apps/demo/qxnum_demo --screenshot demo.png "$@"
  echo "No display: the demo was rendered to demo.png"
fi
