#!/usr/bin/env bash
# Installs the build into a fresh prefix and checks that the installed
# programs find their home folder without options.
set -euo pipefail
build="$1"; source_dir="$2"
prefix="$(mktemp -d)"
trap 'rm -rf "$prefix"' EXIT
cmake --install "$build" --prefix "$prefix" >/dev/null
for f in bin/zorvel bin/zorvel-ide share/zorvel/inc/P16F84.inf share/zorvel/inc/P16F877.zvi \
         share/zorvel/inc/ZORVEL.HTM share/zorvel/inc/Zorvel.ini \
         share/zorvel/examples/ring_buffer.bas share/applications/zorvel-ide.desktop share/icons/hicolor/scalable/apps/zorvel-ide.svg; do
  [ -e "$prefix/$f" ] || { echo "missing after install: $f"; exit 1; }
done
work="$(mktemp -d)"
trap 'rm -rf "$prefix" "$work"' EXIT
cp "$prefix/share/zorvel/examples/ring_buffer.bas" "$work/ring buffer.bas"
(cd / && env -u ZORVEL_HOME "$prefix/bin/zorvel" build "$work/ring buffer.bas") > "$work/out.txt"
grep -q "ZORVEL COMPILED OK" "$work/out.txt" || { cat "$work/out.txt"; exit 1; }
[ -s "$work/ring buffer.hex" ] || { echo "no HEX file"; exit 1; }
version="$(env -u ZORVEL_HOME QT_QPA_PLATFORM=offscreen "$prefix/bin/zorvel-ide" --version)"
[[ "$version" == *"V1.10"* ]] || { echo "unexpected version: $version"; exit 1; }
home="$(cd / && env -u ZORVEL_HOME QT_QPA_PLATFORM=offscreen "$prefix/bin/zorvel-ide" --print-home)"
[ "$(realpath "$home")" = "$(realpath "$prefix/share/zorvel")" ] || { echo "IDE home: $home"; exit 1; }
echo "installed and ran from $prefix"
