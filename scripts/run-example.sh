#!/usr/bin/env bash
# Installs what is missing, builds Zorvel, compiles an example program to a HEX
# file (printing the compiler's messages) and runs the HEX in the simulator,
# showing what the program sends on its serial pin.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
scripts/build.sh
example="${1:-examples/hello.bas}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp "$example" "$work/"
source_file="$work/$(basename "$example")"
echo "== zorvel build $example"
build/cli/zorvel build "$source_file"
hex="${source_file%.*}.hex"
device="$(grep -i -m1 '^ *DEVICE ' "$source_file" | awk '{print $2}')"
device="${device:-16F84}"
echo "== zorvel sim $(basename "$hex") --device $device --ms 50 --uart-rx PORTB.0:9600"
build/cli/zorvel sim "$hex" --device "$device" --ms 50 --uart-rx PORTB.0:9600
