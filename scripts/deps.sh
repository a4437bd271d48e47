#!/usr/bin/env bash
# Installs the Debian packages the build needs, skipping those already present.
set -euo pipefail

packages=(
  build-essential cmake ninja-build pkg-config
  qt6-base-dev qt6-svg-dev qt6-tools-dev libgl-dev
  libpugixml-dev libmuparser-dev
  libgtest-dev libgmock-dev googletest libbenchmark-dev
  xvfb xdotool doxygen
)
# xvfb and xdotool run the case editor's scripted session (tests/gui). Optional: clang for the fuzz
# targets.
[ "${QXNUM_WITH_FUZZ:-0}" = 1 ] && packages+=(clang libclang-rt-dev)

missing=()
for p in "${packages[@]}"; do
  dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed' || missing+=("$p")
done
[ ${#missing[@]} -eq 0 ] && exit 0

echo "Installing: ${missing[*]}"
sudo_cmd=()
[ "$(id -u)" -ne 0 ] && sudo_cmd=(sudo)
export DEBIAN_FRONTEND=noninteractive
"${sudo_cmd[@]}" apt-get update -qq
"${sudo_cmd[@]}" apt-get install -y -qq --no-install-recommends "${missing[@]}"
