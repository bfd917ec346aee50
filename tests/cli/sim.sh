#!/usr/bin/env bash
# Usage: sim.sh ZORVEL HOME PROGRAMS — `zorvel sim`: argument mistakes and bad
# HEX files exit 2 with one line; hostile values and files (devices, FIFOs,
# huge files, unwritable VCD paths) exit 2 with their message, within a time
# limit and with no sanitizer report; a good run prints the decoded serial text.
set -u
zorvel="$1"
home="$2"
programs="$3"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
failures=0
passed=0
source "$(dirname "$0")/expect.sh"
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

# expect NAME STATUS TEXT ARGS...: `zorvel sim ARGS` ends with STATUS and TEXT.
expect() {
  local name="$1" want="$2" text="$3"; shift 3
  run_expect "$name" "$want" "$text" "$zorvel" sim "$@"
}
dev=(--device 16F877 --home "$home")
# Far longer than the time limit: an error that waits for the end of the run fails.
long=(--cycles 10000000000)

xtal="--xtal wants a crystal frequency in MHz from 0.032 to 40"
expect xtal-tiny 2 "$xtal" "$work/good.hex" "${dev[@]}" --xtal 0.0001
expect xtal-below-range 2 "$xtal" "$work/good.hex" "${dev[@]}" --xtal 0.031
expect xtal-above-range 2 "$xtal" "$work/good.hex" "${dev[@]}" --xtal 40.001
expect xtal-nan 2 "$xtal" "$work/good.hex" "${dev[@]}" --xtal nan
expect xtal-lowest 0 "cycles=100000" "$work/good.hex" "${dev[@]}" --xtal 0.032 --cycles 100000
expect xtal-highest 0 "cycles=100000" "$work/good.hex" "${dev[@]}" --xtal 40 --cycles 100000

cycles="--cycles wants a whole number from 0 to 10000000000"
expect cycles-negative 2 "$cycles, not '-1'" "$work/good.hex" "${dev[@]}" --cycles -1
expect cycles-negative-joined 2 "$cycles, not '-1'" "$work/good.hex" "${dev[@]}" --cycles=-1
expect cycles-overflow 2 "$cycles, not '99999999999999999999'" \
  "$work/good.hex" "${dev[@]}" --cycles 99999999999999999999
expect cycles-above-max 2 "$cycles, not '10000000001'" \
  "$work/good.hex" "${dev[@]}" --cycles 10000000001
expect cycles-fraction 2 "$cycles, not '1.5'" "$work/good.hex" "${dev[@]}" --cycles 1.5
expect cycles-zero 0 "cycles=0" "$work/good.hex" "${dev[@]}" --cycles 0
expect ms-negative 2 "--ms wants a number of milliseconds from 0 to 10000000 at 4 MHz" \
  "$work/good.hex" "${dev[@]}" --ms -1
expect ms-above-max 2 "--ms wants a number of milliseconds from 0 to 10000000 at 4 MHz" \
  "$work/good.hex" "${dev[@]}" --ms 10000001
expect ms-above-max-40mhz 2 "--ms wants a number of milliseconds from 0 to 1000000 at 40 MHz" \
  "$work/good.hex" "${dev[@]}" --xtal 40 --ms 1000001
expect ms-infinite 2 "--ms wants a number of milliseconds" "$work/good.hex" "${dev[@]}" --ms inf

mkfifo "$work/fifo.hex"
ln -s /dev/zero "$work/zero.hex"
truncate -s 17M "$work/big.hex"
printf ':020000040001F9\n:02000000AA0054\n:00000001FF\n' > "$work/pic18.hex"
expect hex-dev-zero 2 "HEX file /dev/zero is not a regular file" /dev/zero "${dev[@]}"
expect hex-link-to-dev-zero 2 "HEX file $work/zero.hex is not a regular file" \
  "$work/zero.hex" "${dev[@]}"
expect hex-fifo 2 "HEX file $work/fifo.hex is not a regular file" "$work/fifo.hex" "${dev[@]}"
expect hex-folder 2 "HEX file $work is not a regular file" "$work" "${dev[@]}"
expect hex-too-large 2 "HEX file $work/big.hex is larger than 16 MiB" "$work/big.hex" "${dev[@]}"
expect hex-outside-memory 2 "line 2: data beyond byte address 0x43FF, outside PIC16 memory" \
  "$work/pic18.hex" "${dev[@]}"

# Device files, through a home folder whose P16F877.inf is hostile.
mkdir -p "$work/fifohome/inc" "$work/zerohome/inc" "$work/bighome/inc"
mkfifo "$work/fifohome/inc/P16F877.inf"
ln -s /dev/zero "$work/zerohome/inc/P16F877.inf"
truncate -s 2M "$work/bighome/inc/P16F877.inf"
expect device-fifo 2 "device file $work/fifohome/inc/P16F877.inf is not a regular file" \
  "$work/good.hex" --device 16F877 --home "$work/fifohome"
expect device-link-to-dev-zero 2 \
  "device file $work/zerohome/inc/P16F877.inf is not a regular file" \
  "$work/good.hex" --device 16F877 --home "$work/zerohome"
expect device-too-large 2 "device file $work/bighome/inc/P16F877.inf is larger than 1 MiB" \
  "$work/good.hex" --device 16F877 --home "$work/bighome"

# VCD files: an unwritable path is refused before the (long) run, a failed
# write after it; both name the path.
expect vcd-full-device 2 "cannot write /dev/full: No space left on device" \
  "$work/good.hex" "${dev[@]}" --cycles 1000 --vcd /dev/full
expect vcd-missing-folder 2 "cannot write $work/nowhere/run.vcd" \
  "$work/good.hex" "${dev[@]}" "${long[@]}" --vcd "$work/nowhere/run.vcd"
expect vcd-folder 2 "cannot write $work: Is a directory" \
  "$work/good.hex" "${dev[@]}" "${long[@]}" --vcd "$work"
sum="$(sha256sum < "$work/good.hex")"
expect vcd-over-hex 2 "--vcd $work/./good.hex would overwrite the HEX file" \
  "$work/good.hex" "${dev[@]}" "${long[@]}" --vcd "$work/./good.hex"
if [ "$(sha256sum < "$work/good.hex")" = "$sum" ]; then
  passed=$((passed + 1))
else
  echo "FAIL vcd-over-hex: the HEX file changed"; failures=$((failures + 1))
fi
expect vcd-null 0 "cycles=1000" "$work/good.hex" "${dev[@]}" --cycles 1000 --vcd /dev/null
# A read-only folder; root ignores permissions, so as root the folder is made
# immutable where the file system allows it.
mkdir "$work/ro"
locked="$(lock_folder "$work/ro")"
if [ "$locked" != no ]; then
  expect vcd-read-only-folder 2 "cannot write $work/ro/run.vcd" \
    "$work/good.hex" "${dev[@]}" "${long[@]}" --vcd "$work/ro/run.vcd"
  unlock_folder "$work/ro" "$locked"
else
  echo "note: read-only VCD folder case not run (cannot lock a folder here)"
fi

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

# Logic probes and driven inputs, on small programs assembled here.
cat > "$work/toggle.asm" <<'EOF'
        list    p=16f877
        #include <p16f877.inc>
        org     0
        bsf     STATUS, RP0
        bcf     TRISB, 1
        bcf     STATUS, RP0
loop    bsf     PORTB, 1            ; high for 2 cycles, low for 3
        nop
        bcf     PORTB, 1
        goto    loop
        end
EOF
cat > "$work/copy.asm" <<'EOF'
        list    p=16f877
        #include <p16f877.inc>
        org     0
        bsf     STATUS, RP0
        clrf    TRISD
        bcf     STATUS, RP0
loop    movf    PORTB, w            ; PORTB copied to PORTD every 4 cycles
        movwf   PORTD
        goto    loop
        end
EOF
cat > "$work/rctime.asm" <<'EOF'
        list    p=16f877
        #include <p16f877.inc>
        cblock  0x20
        count
        endc
        org     0
        bcf     PORTB, 2            ; discharge the capacitor on RB2
        bsf     STATUS, RP0
        bcf     TRISB, 2
        clrf    TRISD
        bcf     STATUS, RP0
        nop
        bsf     STATUS, RP0
        bsf     TRISB, 2            ; release it (cycle 7)
        bcf     STATUS, RP0
        clrf    count
wait    incf    count, f            ; 4 cycles a pass until RB2 reads high
        btfss   PORTB, 2
        goto    wait
        movf    count, w
        movwf   PORTD
done    goto    done
        end
EOF
for program in toggle copy rctime; do
  gpasm -a inhx8m -i -w 2 -p p16f877 -o "$work/$program.hex" "$work/$program.asm" > /dev/null 2>&1
done

# expect_probe NAME WANT ARGS...: `zorvel sim ARGS` exits 0 and its lines
# starting with "probe " are exactly WANT.
expect_probe() {
  local name="$1" want="$2"; shift 2
  local out status
  out="$(timeout 60 "$zorvel" sim "$@" 2>&1)"; status=$?
  if [ "$status" -ne 0 ]; then
    echo "FAIL $name: exit status $status: $out"; failures=$((failures + 1))
  elif [ "$(echo "$out" | grep '^probe ')" != "$want" ]; then
    echo "FAIL $name: expected"; echo "$want"; echo "got"; echo "$out"
    failures=$((failures + 1))
  else
    passed=$((passed + 1))
  fi
}

# At 20 MHz a cycle is 0.2 us: bsf at cycle 3, bcf at 5, then every 5 cycles.
expect_probe probe-toggle-20mhz "probe PORTB.1: starts low
probe PORTB.1: 0.600 us cycle 3 high
probe PORTB.1: 1.000 us cycle 5 low
probe PORTB.1: 1.600 us cycle 8 high
probe PORTB.1: 2.000 us cycle 10 low
probe PORTB.1: 395 more edges not listed
probe PORTB.1: 399 edges, 200 rising; high 0.400 to 0.400 us; low 0.600 to 0.600 us; \
period 1.000 us; duty 40.00 %; frequency 1000000.000 Hz" \
  "$work/toggle.hex" "${dev[@]}" --xtal 20 --cycles 1000 --probe PORTB.1 --probe-edges 4
expect_probe probe-untouched-pin "probe PORTB.2: starts low
probe PORTB.2: 0 edges, 0 rising; high none; low none; no complete period" \
  "$work/toggle.hex" "${dev[@]}" --cycles 1000 --probe PORTB.2
out="$("$zorvel" sim "$work/toggle.hex" "${dev[@]}" --cycles 1000 --probe RB1 2>&1)"
if [ "$(echo "$out" | grep -c '^probe RB1: .* us cycle ')" -eq 50 ] &&
   echo "$out" | grep -qx 'probe RB1: 349 more edges not listed'; then
  passed=$((passed + 1))
else
  echo "FAIL probe-default-edges: expected 50 edges listed: $out"; failures=$((failures + 1))
fi

# A square wave of 10 kHz, 25 % duty, on RB0 from cycle 0, seen on the pin
# itself and on RD0 where the program copies it: the 4-cycle copy loop moves
# both edges to its passes, so the copy is high for 24 us of every 100.
expect_probe drive-square "probe PORTB.0: starts high
probe PORTB.0: 25.000 us cycle 25 low
probe PORTB.0: 100.000 us cycle 100 high
probe PORTB.0: 17 more edges not listed
probe PORTB.0: 19 edges, 9 rising; high 25.000 to 25.000 us; low 75.000 to 75.000 us; \
period 100.000 us; duty 25.00 %; frequency 10000.000 Hz
probe PORTD.0: starts low
probe PORTD.0: 4.000 us cycle 4 high
probe PORTD.0: 28.000 us cycle 28 low
probe PORTD.0: 18 more edges not listed
probe PORTD.0: 20 edges, 10 rising; high 24.000 to 24.000 us; low 76.000 to 76.000 us; \
period 100.000 us; duty 24.00 %; frequency 10000.000 Hz" \
  "$work/copy.hex" "${dev[@]}" --cycles 1000 --drive PORTB.0:square:10000:25 \
  --probe PORTB.0 --probe PORTD.0 --probe-edges 2
# Half the instruction clock, the fastest square wave: 2 cycles a period.
expect_probe drive-square-fastest "probe PORTB.4: starts high
probe PORTB.4: 99 more edges not listed
probe PORTB.4: 99 edges, 49 rising; high 2.000 to 2.000 us; low 2.000 to 2.000 us; \
period 4.000 us; duty 50.00 %; frequency 250000.000 Hz" \
  "$work/copy.hex" "${dev[@]}" --xtal 2 --cycles 100 --drive PORTB.4:square:250000 \
  --probe PORTB.4 --probe-edges 0
# One pulse from 100 us for 50 us on RB0, copied to RD0 at the next pass; one
# pulse low on RB3 (idle high), its times rounded to whole cycles.
expect_probe drive-pulses "probe PORTD.0: starts low
probe PORTD.0: 104.000 us cycle 104 high
probe PORTD.0: 152.000 us cycle 152 low
probe PORTD.0: 2 edges, 1 rising; high 48.000 to 48.000 us; low none; no complete period
probe PORTB.3: starts high
probe PORTB.3: 101.000 us cycle 101 low
probe PORTB.3: 151.000 us cycle 151 high
probe PORTB.3: 2 edges, 1 rising; high none; low 50.000 to 50.000 us; no complete period" \
  "$work/copy.hex" "${dev[@]}" --cycles 1000 --drive PORTB.0:pulse:100:50 \
  --drive PORTB.3:pulse:100.6:50.25:low --probe PORTD.0 --probe PORTB.3
# An RC network charging for 200 us after the release at cycle 7: RB2 reads
# high from cycle 208 (the release is seen the cycle after), so the loop's
# btfss (cycle 11 + 4n) first sees it in pass 51, which goes to PORTD.
expect_probe drive-rc-edges "probe PORTB.2: starts high
probe PORTB.2: 2.000 us cycle 2 low
probe PORTB.2: 208.000 us cycle 208 high
probe PORTB.2: 2 edges, 1 rising; high none; low 206.000 to 206.000 us; no complete period" \
  "$work/rctime.hex" "${dev[@]}" --cycles 1000 --drive PORTB.2:rc:200 --probe PORTB.2
expect drive-rc-count 0 "PORTD (0x008) = 0x33" \
  "$work/rctime.hex" "${dev[@]}" --cycles 1000 --drive PORTB.2:rc:200 --dump regs
# Half the charge time: high from cycle 108, seen in pass 26.
expect drive-rc-count-shorter 0 "PORTD (0x008) = 0x1A" \
  "$work/rctime.hex" "${dev[@]}" --cycles 1000 --drive PORTB.2:rc:100 --dump regs

# Malformed drives and probes are refused before the (long) run.
forms="--drive wants PIN:square:HZ[:DUTY], PIN:pulse:START_US:WIDTH_US[:low] or PIN:rc:CHARGE_US"
square="--drive square wants a frequency from 0.01 to 500000 Hz at 4 MHz"
square="$square (a period of at least two cycles)"
duty="--drive square wants a duty above 0 and below 100 %"
pulse="--drive pulse wants START_US and WIDTH_US from 0 to 10000000000"
rc="--drive rc wants a charge time in us from 0 to 10000000000"
bad=("$work/copy.hex" "${dev[@]}" "${long[@]}")
expect drive-no-signal 2 "$forms, not 'PORTB.0'" "${bad[@]}" --drive PORTB.0
expect drive-no-pin 2 "$forms, not ':square:1000'" "${bad[@]}" --drive :square:1000
expect drive-unknown-kind 2 "$forms, not 'PORTB.0:sine:1000'" "${bad[@]}" --drive PORTB.0:sine:1000
expect drive-square-extra 2 "$forms, not 'PORTB.0:square:1000:50:1'" \
  "${bad[@]}" --drive PORTB.0:square:1000:50:1
expect drive-square-text 2 "$square, not 'abc'" "${bad[@]}" --drive PORTB.0:square:abc
expect drive-square-zero 2 "$square, not '0'" "${bad[@]}" --drive PORTB.0:square:0
expect drive-square-exponent 2 "$square, not '1e3'" "${bad[@]}" --drive PORTB.0:square:1e3
expect drive-square-too-fast 2 "$square, not '500001'" "${bad[@]}" --drive PORTB.0:square:500001
expect drive-square-too-fast-20mhz 2 \
  "--drive square wants a frequency from 0.01 to 2500000 Hz at 20 MHz" \
  "${bad[@]}" --xtal 20 --drive PORTB.0:square:2500001
expect drive-duty-zero 2 "$duty, not '0'" "${bad[@]}" --drive PORTB.0:square:1000:0
expect drive-duty-full 2 "$duty, not '100'" "${bad[@]}" --drive PORTB.0:square:1000:100
expect drive-duty-negative 2 "$duty, not '-5'" "${bad[@]}" --drive PORTB.0:square:1000:-5
expect drive-duty-under-a-cycle 2 \
  "--drive square: a duty of 10 % of a 3-cycle period leaves one level shorter than a cycle" \
  "${bad[@]}" --drive PORTB.0:square:400000:10
expect drive-pulse-no-width 2 "$forms, not 'PORTB.0:pulse:10'" "${bad[@]}" --drive PORTB.0:pulse:10
expect drive-pulse-bad-polarity 2 "$forms, not 'PORTB.0:pulse:10:5:high'" \
  "${bad[@]}" --drive PORTB.0:pulse:10:5:high
expect drive-pulse-negative 2 "$pulse, not 'PORTB.0:pulse:-1:5'" \
  "${bad[@]}" --drive PORTB.0:pulse:-1:5
expect drive-pulse-too-late 2 "$pulse, not 'PORTB.0:pulse:10000000001:5'" \
  "${bad[@]}" --drive PORTB.0:pulse:10000000001:5
expect drive-pulse-under-a-cycle 2 \
  "--drive pulse: a width of 0.4 us is less than one cycle at 4 MHz" \
  "${bad[@]}" --drive PORTB.0:pulse:10:0.4
expect drive-rc-empty 2 "$rc, not ''" "${bad[@]}" --drive PORTB.0:rc:
expect drive-rc-text 2 "$rc, not 'slow'" "${bad[@]}" --drive PORTB.0:rc:slow
expect drive-rc-extra 2 "$forms, not 'PORTB.0:rc:5:6'" "${bad[@]}" --drive PORTB.0:rc:5:6
expect drive-unknown-pin 2 "no pin called PORTZ.0 on 16F877" \
  "${bad[@]}" --drive PORTZ.0:square:1000
expect drive-gpio-on-877 2 "no pin called GPIO.2 on 16F877" "${bad[@]}" --drive GPIO.2:rc:10
expect drive-twice 2 "--drive: RB0 is driven twice" \
  "${bad[@]}" --drive PORTB.0:rc:10 --drive RB0:square:1000
expect probe-unknown-pin 2 "no pin called PORTZ.0 on 16F877" "${bad[@]}" --probe PORTZ.0
expect probe-edges-negative 2 \
  "--probe-edges wants a whole number from 0 to 1000000, not '-1'" \
  "${bad[@]}" --probe PORTB.0 --probe-edges -1
expect probe-edges-too-many 2 \
  "--probe-edges wants a whole number from 0 to 1000000, not '1000001'" \
  "${bad[@]}" --probe PORTB.0 --probe-edges 1000001
# The character LCD in 8-bit form and in other shapes, a keypad pressed in
# turn and serial text sent into a pin, on programs built here.
printf '%s\n' 'DEVICE 16F877' 'DECLARE LCD_INTERFACE 8' 'DECLARE LCD_DTPIN PORTD.0' \
  'DECLARE LCD_RSPIN PORTC.0' 'DECLARE LCD_ENPIN PORTC.1' 'DIM K AS BYTE' 'PRINT "8-bit ok"' \
  'Again:' 'K = INKEY' 'PRINT AT 2, 1, "key ", DEC2 K' 'GOTO Again' > "$work/lcd8.bas"
"$zorvel" build "$work/lcd8.bas" --home "$home" > /dev/null 2>&1
lcd8=(--lcd PORTC.0,PORTC.1,PORTD.0,PORTD.1,PORTD.2,PORTD.3,PORTD.4,PORTD.5,PORTD.6,PORTD.7)
keys=PORTB.0,PORTB.1,PORTB.2,PORTB.3,PORTB.4,PORTB.5,PORTB.6,PORTB.7
# expect_lines NAME WANT ARGS...: `zorvel sim ARGS` exits 0 and its lines
# starting with "lcd" are exactly WANT (so no busy or bus timing complaint).
expect_lines() {
  local name="$1" want="$2"; shift 2
  local out status
  out="$(timeout 60 "$zorvel" sim "$@" 2>&1)"; status=$?
  if [ "$status" -ne 0 ]; then
    echo "FAIL $name: exit status $status: $out"; failures=$((failures + 1))
  elif [ "$(echo "$out" | grep '^lcd')" != "$want" ]; then
    echo "FAIL $name: expected"; echo "$want"; echo "got"; echo "$out"
    failures=$((failures + 1))
  else
    passed=$((passed + 1))
  fi
}
expect_lines lcd-8bit "lcd |8-bit ok        |
lcd |key 16          |" "$work/lcd8.hex" "${dev[@]}" --ms 40 "${lcd8[@]}"
expect_lines lcd-8bit-4x16 "lcd |8-bit ok        |
lcd |key 16          |
lcd |                |
lcd |                |" "$work/lcd8.hex" "${dev[@]}" --ms 40 "${lcd8[@]}:4x16"
expect_lines lcd-8bit-1x20 "lcd |8-bit ok            |" \
  "$work/lcd8.hex" "${dev[@]}" --ms 40 "${lcd8[@]}:1x20"
# '#' (key 14) goes down at 30 ms and up at 60 ms, '5' down at 90 ms.
expect_lines keypad-held "lcd |8-bit ok        |
lcd |key 14          |" "$work/lcd8.hex" "${dev[@]}" --ms 55 "${lcd8[@]}" --keypad "$keys:#5:30"
expect_lines keypad-released "lcd |8-bit ok        |
lcd |key 16          |" "$work/lcd8.hex" "${dev[@]}" --ms 85 "${lcd8[@]}" --keypad "$keys:#5:30"
expect_lines keypad-next "lcd |8-bit ok        |
lcd |key 05          |" "$work/lcd8.hex" "${dev[@]}" --ms 115 "${lcd8[@]}" --keypad "$keys:#5:30"
expect_lines keypad-gap "lcd |8-bit ok        |
lcd |key 16          |" "$work/lcd8.hex" "${dev[@]}" --ms 55 "${lcd8[@]}" --keypad "$keys:-#:30"
# The 4-bit form on the wrong pins: the controller never leaves 8-bit mode
# and its display stays off.
expect_lines lcd-wrong-nibble "lcd |                |
lcd |                |" "$work/lcd8.hex" "${dev[@]}" --ms 40 \
  --lcd PORTC.0,PORTC.1,PORTD.0,PORTD.1,PORTD.2,PORTD.3

# Serial text into RB1, copied to RD1 by the copy loop and decoded there.
expect uart-tx-text 0 'uart PORTD.1: ok:A\ B' "$work/copy.hex" "${dev[@]}" --ms 30 \
  --uart-tx 'PORTB.1:9600:ok:\x41\\ B' --uart-rx PORTD.1:9600
expect uart-tx-inverted 0 'uart PORTD.1: Hi' "$work/copy.hex" "${dev[@]}" --ms 30 \
  --uart-tx PORTB.1:9600:inv:Hi --uart-rx PORTD.1:9600:inv
out="$("$zorvel" sim "$work/copy.hex" "${dev[@]}" --ms 30 --uart-tx 'PORTB.1:19200:a\nb' \
  --uart-rx PORTD.1:19200 2>&1)"
if echo "$out" | grep -qx 'uart PORTD.1: a' && echo "$out" | grep -qx 'b'; then
  passed=$((passed + 1))
else
  echo "FAIL uart-tx-newline: $out"; failures=$((failures + 1))
fi
# Nothing arrives before 10 ms of idle line.
out="$("$zorvel" sim "$work/copy.hex" "${dev[@]}" --ms 9 --uart-tx PORTB.1:9600:late \
  --uart-rx PORTD.1:9600 2>&1)"
if echo "$out" | grep -qx 'uart PORTD.1: '; then
  passed=$((passed + 1))
else
  echo "FAIL uart-tx-idle: $out"; failures=$((failures + 1))
fi

lcdforms="--lcd wants RS,E,D4,D5,D6,D7 or RS,E,D0,...,D7, then :LINES or :LINESxCOLUMNS"
expect lcd-seven-pins 2 "$lcdforms if wanted, not 'RB1,RB2,RB3,RB4,RB5,RB6,RB7'" \
  "${bad[@]}" --lcd RB1,RB2,RB3,RB4,RB5,RB6,RB7
expect lcd-three-lines 2 "$lcdforms if wanted, not 'RB1,RB2,RB3,RB4,RB5,RB6:3'" \
  "${bad[@]}" --lcd RB1,RB2,RB3,RB4,RB5,RB6:3
expect lcd-narrow 2 "$lcdforms if wanted, not 'RB1,RB2,RB3,RB4,RB5,RB6:2x7'" \
  "${bad[@]}" --lcd RB1,RB2,RB3,RB4,RB5,RB6:2x7
expect lcd-unknown-pin 2 "no pin called PORTZ.1 on 16F877" \
  "${bad[@]}" --lcd PORTZ.1,RB2,RB3,RB4,RB5,RB6
keypadforms="--keypad wants ROW0,ROW1,ROW2,ROW3,COL0,COL1,COL2,COL3:KEYS or ...:KEYS:MS"
expect keypad-seven-pins 2 "$keypadforms" "${bad[@]}" --keypad RB0,RB1,RB2,RB3,RB4,RB5,RB6:1
expect keypad-bad-key 2 "$keypadforms" "${bad[@]}" --keypad "$keys:12X"
expect keypad-no-keys 2 "$keypadforms" "${bad[@]}" --keypad "$keys:"
expect keypad-zero-ms 2 "$keypadforms" "${bad[@]}" --keypad "$keys:1:0"
expect keypad-unknown-pin 2 "no pin called PORTZ.0 on 16F877" \
  "${bad[@]}" --keypad PORTZ.0,RB1,RB2,RB3,RB4,RB5,RB6,RB7:1
txforms="--uart-tx wants PIN:BAUD:TEXT or PIN:BAUD:inv:TEXT"
expect uart-tx-no-text 2 "$txforms" "${bad[@]}" --uart-tx PORTB.1:9600
expect uart-tx-empty-text 2 "$txforms" "${bad[@]}" --uart-tx PORTB.1:9600:
expect uart-tx-bad-escape 2 "$txforms" "${bad[@]}" --uart-tx 'PORTB.1:9600:a\qb'
expect uart-tx-short-hex 2 "$txforms" "${bad[@]}" --uart-tx 'PORTB.1:9600:\x4'
expect uart-tx-bad-baud 2 "$txforms" "${bad[@]}" --uart-tx PORTB.1:fast:Hi
expect uart-tx-unknown-pin 2 "no pin called PORTZ.1 on 16F877" \
  "${bad[@]}" --uart-tx PORTZ.1:9600:Hi
echo "sim: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
