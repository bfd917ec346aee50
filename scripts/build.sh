#!/usr/bin/env bash
# Configures and builds Zorvel in build/ (warnings are errors).
set -euo pipefail
cd "$(dirname "$0")/.."
cmake -S . -B build -G Ninja -DCMAKE_BUILD_TYPE=RelWithDebInfo -DZORVEL_WERROR=ON >/dev/null
ninja -C build
