#!/usr/bin/env bash
# Installs what is missing, builds Zorvel, compiles an example program to a HEX
# file (printing the compiler's messages) and runs the HEX in the simulator.
# The default, examples/hello.bas, sends text with RSOUT: the simulator decodes
# its serial pin and prints the text. examples/blink.bas flashes an LED on
# PORTB.0 of a 16F84A (a logic probe lists its first edges and measures the
# period, 500 ms), examples/lcd_counter.bas shows the LCD's two lines,
# examples/echo.bas answers a line typed into its serial input,
# examples/tones.bas shows the edge count of its speaker pin, and any other
# example runs for 50 ms at its crystal and shows where it stopped.
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
xtal="$(grep -i -m1 '^ *DECLARE  *XTAL ' "$source_file" | awk '{print $3}')"
xtal="${xtal:-4}"
case "$(basename "$example")" in
blink.bas) sim_options=(--xtal 4 --ms 2100 --probe PORTB.0 --probe-edges 8) ;;
hello.bas) sim_options=(--xtal 4 --ms 60 --uart-rx PORTB.0:9600) ;;
lcd_counter.bas) sim_options=(--xtal 4 --ms 1050 --lcd PORTB.3,PORTB.2,PORTB.4,PORTB.5,PORTB.6,PORTB.7:2) ;;
echo.bas) sim_options=(--xtal 4 --ms 200 --uart-rx PORTC.6:9600 --uart-tx 'PORTC.7:9600:Hi there\r') ;;
tones.bas) sim_options=(--xtal "$xtal" --ms 5200 --probe PORTB.0 --probe-edges 0) ;;
*) sim_options=(--xtal "$xtal" --ms 50) ;;
esac
echo "== zorvel sim $(basename "$hex") --device $device ${sim_options[*]}"
build/cli/zorvel sim "$hex" --device "$device" "${sim_options[@]}"
