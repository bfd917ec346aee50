#!/usr/bin/env bash
# Usage: sim.sh ZORVEL HOME PROGRAMS — `zorvel sim`: argument mistakes and bad
# HEX files exit 2 with one line; a good run prints the decoded serial text.
set -u
zorvel="$1"
home="$2"
programs="$3"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
failures=0
passed=0
check() {
  local name="$1" want="$2"; shift 2
  local out status
  out="$("$zorvel" "$@" 2>&1)"; status=$?
  if [ "$status" -ne "$want" ]; then
    echo "FAIL $name: exit status $status, expected $want: $out"; failures=$((failures + 1))
  elif [ "$want" -eq 2 ] && [ "$(echo "$out" | wc -l)" -ne 1 ]; then
    echo "FAIL $name: expected one line, got: $out"; failures=$((failures + 1))
  else
    passed=$((passed + 1))
  fi
}

printf ':020000000A28CC\n:00000001FF\n' > "$work/good.hex"
printf ':0200000028\n' > "$work/truncated.hex"
printf 'hello\n' > "$work/text.hex"
printf ':020000000A28CD\n:00000001FF\n' > "$work/checksum.hex"
gpasm -a inhx8m -i -w 2 -p p16f877 -o "$work/hello.hex" "$programs/uart_hello.asm" > /dev/null 2>&1

check sim-without-file 2 sim --device 16F877
check sim-without-device 2 sim "$work/good.hex"
check sim-unknown-device 2 sim "$work/good.hex" --device 16F999 --home "$home"
check sim-missing-file 2 sim "$work/absent.hex" --device 16F877 --home "$home"
check sim-truncated-hex 2 sim "$work/truncated.hex" --device 16F877 --home "$home"
check sim-text-hex 2 sim "$work/text.hex" --device 16F877 --home "$home"
check sim-bad-checksum 2 sim "$work/checksum.hex" --device 16F877 --home "$home"
check sim-bad-uart 2 sim "$work/good.hex" --device 16F877 --home "$home" --uart-rx PORTB.0
check sim-bad-baud 2 sim "$work/good.hex" --device 16F877 --home "$home" --uart-rx PORTB.0:fast
check sim-unknown-pin 2 sim "$work/good.hex" --device 16F877 --home "$home" --uart-rx PORTZ.3:9600
check sim-bad-lcd 2 sim "$work/good.hex" --device 16F877 --home "$home" --lcd RB4,RB5
check sim-bad-dump 2 sim "$work/good.hex" --device 16F877 --home "$home" --dump all
check sim-cycles-and-ms 2 sim "$work/good.hex" --device 16F877 --home "$home" --cycles 5 --ms 5
check sim-bad-xtal 2 sim "$work/good.hex" --device 16F877 --home "$home" --xtal 0
check sim-good-run 0 sim "$work/good.hex" --device 16F877 --home "$home" --cycles 100 --dump regs

out="$("$zorvel" sim "$work/hello.hex" --device 16F877 --home "$home" --ms 30 \
  --uart-rx PORTB.0:9600 --vcd "$work/run.vcd" 2>&1)"
if echo "$out" | grep -qx 'uart PORTB.0: Hello' && grep -q '^\$enddefinitions' "$work/run.vcd"; then
  passed=$((passed + 1))
else
  echo "FAIL sim-uart-text: $out"; failures=$((failures + 1))
fi
out="$("$zorvel" sim "$work/hello.hex" --device 16F877 --home "$home" --ms 30 \
  --uart-rx PORTB.0:9600:inv 2>&1)"
if echo "$out" | grep -q 'uart PORTB.0: Hello'; then
  echo "FAIL sim-uart-inverted decoded a true-level line: $out"; failures=$((failures + 1))
else
  passed=$((passed + 1))
fi
echo "sim: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
