#!/usr/bin/env bash
# Installs the Debian packages Zorvel needs to build and test, only those missing.
set -euo pipefail

packages=(
  g++ cmake ninja-build pkg-config
  libgtest-dev libcli11-dev
  gputils gpsim
  qt6-base-dev libqscintilla2-qt6-dev libqt6svg6 libgl-dev fonts-dejavu-core
  xvfb xauth
  clang-14 libfuzzer-14-dev
)

missing=()
for p in "${packages[@]}"; do
  if ! dpkg-query -W -f='${Status}' "$p" 2>/dev/null | grep -q 'install ok installed'; then
    missing+=("$p")
  fi
done

if [ ${#missing[@]} -eq 0 ]; then
  echo "bootstrap: all packages present"
  exit 0
fi

sudo=""
if [ "$(id -u)" -ne 0 ]; then sudo="sudo"; fi
echo "bootstrap: installing ${missing[*]}"
export DEBIAN_FRONTEND=noninteractive
$sudo apt-get update -q
$sudo apt-get install -y -q --no-install-recommends "${missing[@]}"
