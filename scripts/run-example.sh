#!/usr/bin/env bash
# Installs what is missing, builds Zorvel, compiles an example program to a HEX
# file (printing the compiler's messages) and runs the HEX in the simulator.
# The default, examples/blink.bas, flashes an LED on PORTB.0 of a 16F84A; a
# logic probe on that pin lists its first edges and measures the period
# (500 ms). examples/hello.bas shows the text it sends on its serial pin,
# examples/tones.bas the edge count of its speaker pin, and any other example
# runs for 50 ms at its crystal and shows where it stopped.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
scripts/build.sh
example="${1:-examples/blink.bas}"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
cp "$example" "$work/"
source_file="$work/$(basename "$example")"
echo "== zorvel build $example"
build/cli/zorvel build "$source_file"
hex="${source_file%.*}.hex"
device="$(grep -i -m1 '^ *DEVICE ' "$source_file" | awk '{print $2}')"
device="${device:-16F84}"
xtal="$(grep -i -m1 '^ *DECLARE  *XTAL ' "$source_file" | awk '{print $3}')"
xtal="${xtal:-4}"
case "$(basename "$example")" in
blink.bas) sim_options=(--xtal 4 --ms 2100 --probe PORTB.0 --probe-edges 8) ;;
hello.bas) sim_options=(--ms 50 --uart-rx PORTB.0:9600) ;;
tones.bas) sim_options=(--xtal "$xtal" --ms 5200 --probe PORTB.0 --probe-edges 0) ;;
*) sim_options=(--xtal "$xtal" --ms 50) ;;
esac
echo "== zorvel sim $(basename "$hex") --device $device ${sim_options[*]}"
build/cli/zorvel sim "$hex" --device "$device" "${sim_options[@]}"
