#!/usr/bin/env bash
# Installs what is missing, builds Zorvel and runs every test: the unit and
# output tests, the device data checks, the robustness tests under
# AddressSanitizer and UndefinedBehaviorSanitizer (a clang tree that also
# holds the fuzz targets), then 30 seconds of each fuzz target and of the
# random program generator.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
# The compiler tests (label "sanitize") run once, in the sanitizer tree below:
# the release tree is built without them.
cmake -S . -B build -G Ninja -DZORVEL_COMPILER_TESTS=OFF >/dev/null
scripts/build.sh
jobs="$(nproc)"
# The sweeps over every crystal (label "sweep") run before an issue is closed:
# ninja -C build exec_sweeps && ctest --test-dir build -L sweep
ctest --test-dir build --output-on-failure -j "$jobs" -LE 'sweep|sanitize'

echo "== sanitizer build"
CXX=clang++-14 cmake -S . -B build-sanitize -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZORVEL_WERROR=ON \
  -DZORVEL_FUZZ=ON -DZORVEL_BUILD_IDE=OFF >/dev/null
ninja -C build-sanitize zorvel-cli compiler_tests
ctest --test-dir build-sanitize --output-on-failure -j "$jobs" -L sanitize

echo "== fuzzing"
scripts/fuzz.sh --seconds 30
