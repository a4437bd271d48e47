#!/usr/bin/env bash
# Generates the API reference (build/docs/html/index.html) from the public headers and the guide,
# and fails when Doxygen warns.
set -euo pipefail
cd "$(dirname "$0")/.."
command -v doxygen >/dev/null || scripts/deps.sh
mkdir -p build/docs
doxygen docs/Doxyfile
if [ -s build/docs/warnings.log ]; then
  cat build/docs/warnings.log
  echo "docs.sh: Doxygen warnings (above)"
  exit 1
fi
echo "API reference: build/docs/html/index.html"
