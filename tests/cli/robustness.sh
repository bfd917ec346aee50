#!/usr/bin/env bash
# Usage: robustness.sh ZORVEL HOME
# Feeds broken and hostile sources to `zorvel build` and checks that each ends
# with its message and exit status 1, within a time limit, with no sanitizer report.
set -u
zorvel="$1"
home="$2"
work="$(mktemp -d)"
trap 'rm -rf "$work"' EXIT
failures=0
passed=0
source "$(dirname "$0")/expect.sh"

# expect NAME FILE STATUS PATTERN: `zorvel build FILE` ends with STATUS and PATTERN.
expect() {
  run_expect "$1" "$3" "$4" "$zorvel" build "$2" --home "$home"
}

# The source must be left exactly as it was.
unchanged() {
  local name="$1" file="$2" sum="$3"
  if [ "$(sha256sum < "$file")" != "$sum" ]; then
    echo "FAIL $name: source file changed"; failures=$((failures + 1))
  else
    passed=$((passed + 1))
  fi
}

printf 'INCLUDE "NOWHERE.INC"\r\nEND\r\n' > "$work/missing.bas"
expect missing-include "$work/missing.bas" 1 "Include file NOWHERE.INC Cannot be found!"

printf 'INCLUDE "self.bas"\n' > "$work/self.bas"
expect self-include "$work/self.bas" 1 "includes itself"

printf 'INCLUDE "b.inc"\n' > "$work/a.inc"
printf 'INCLUDE "a.inc"\n' > "$work/b.inc"
printf 'INCLUDE "a.inc"\nEND\n' > "$work/cycle.bas"
expect include-cycle "$work/cycle.bas" 1 "includes itself"

for i in $(seq 1 20); do printf 'INCLUDE "d%d.inc"\n' "$((i + 1))" > "$work/d$i.inc"; done
printf 'END\n' > "$work/d21.inc"
printf 'INCLUDE "d1.inc"\n' > "$work/deep.bas"
expect include-depth "$work/deep.bas" 1 "levels deep"

printf 'INCLUDE NOQUOTES.INC\n' > "$work/noquote.bas"
expect include-quotes "$work/noquote.bas" 1 "Quotes missing in INCLUDE directive!"

head -c 3000 /dev/zero > "$work/nul.bas"
printf '\n\n' >> "$work/nul.bas"
head -c 500 /dev/zero >> "$work/nul.bas"
expect nul-lines "$work/nul.bas" 1 "Unexpected control character (code 0)"

head -c 300000 "$zorvel" > "$work/binary.bas"
expect binary-file "$work/binary.bas" 1 "Too many COMPILER ERRORS."

printf 'INCLUDE "blob.inc"\n' > "$work/binary-include.bas"
head -c 300000 "$zorvel" > "$work/blob.inc"
expect binary-include "$work/binary-include.bas" 1 "Error at Line ["

# More working lines than a program may have.
yes "' filler" | head -n 100001 > "$work/huge.bas"
expect too-many-lines "$work/huge.bas" 1 "Source too long: more than 100000 lines"

head -c 10485760 /dev/urandom > "$work/random.bas"
sum="$(sha256sum < "$work/random.bas")"
expect random-10mb "$work/random.bas" 1 "Error at Line ["
unchanged random-10mb "$work/random.bas" "$sum"

expect missing-source "$work/does-not-exist.bas" 1 "Unable to read source file"

printf 'DEVICE 16F999\nEND\n' > "$work/baddevice.bas"
expect bad-device "$work/baddevice.bas" 1 "DEVICE NOT SPECIFIED"
expect bad-device-alert "$work/baddevice.bas" 1 "Unrecognised PIC type."

# A source named .asm would be the output file: it must survive.
printf 'END\n' > "$work/prog.asm"
sum="$(sha256sum < "$work/prog.asm")"
expect asm-source "$work/prog.asm" 1 "would be overwritten"
unchanged asm-source "$work/prog.asm" "$sum"

# A read-only output folder: message, status 1, source untouched. Root ignores
# permissions, so as root the folder is made immutable where the file system allows it.
mkdir "$work/ro"; printf 'END\n' > "$work/ro/prog.bas"
sum="$(sha256sum < "$work/ro/prog.bas")"
locked="$(lock_folder "$work/ro")"
if [ "$locked" != no ]; then
  expect read-only-folder "$work/ro/prog.bas" 1 "Unable to"
  unchanged read-only-folder "$work/ro/prog.bas" "$sum"
  unlock_folder "$work/ro" "$locked"
else
  echo "note: read-only folder case not run (cannot lock a folder here)"
fi

long="$(printf 'X%.0s' $(seq 1 300))"
printf "%s\nEND\n" "' $long" > "$work/long.bas"
expect long-comment "$work/long.bas" 0 "ZORVEL COMPILED OK."

# expect_with ARGS...: like expect, with extra command-line arguments.
expect_with() {
  local name="$1" file="$2" want="$3" pattern="$4"; shift 4
  local out status
  out="$(timeout 60 "$zorvel" build "$file" --home "$home" "$@" 2>&1)"
  status=$?
  if [ "$status" -ne "$want" ] || ! echo "$out" | grep -q -F -- "$pattern"; then
    echo "FAIL $name: status $status, output:"; echo "$out" | head -n 20
    failures=$((failures + 1)); return
  fi
  passed=$((passed + 1))
}

printf 'DEVICE 16F877\nEND\n' > "$work/noasm.bas"
sum="$(sha256sum < "$work/noasm.bas")"
expect_with missing-assembler "$work/noasm.bas" 1 "ASSEMBLER ERROR! HEX file NOT created" \
  --assembler /nonexistent/gpasm
expect_with missing-assembler-alert "$work/noasm.bas" 1 "Unable to Find /nonexistent/gpasm" \
  --assembler /nonexistent/gpasm
unchanged missing-assembler "$work/noasm.bas" "$sum"

printf 'ASM\n  movlw UNDEFINED_THING\nENDASM\n' > "$work/asmerr.bas"
sum="$(sha256sum < "$work/asmerr.bas")"
expect asm-error-line "$work/asmerr.bas" 1 "Error[113]"
expect asm-error-summary "$work/asmerr.bas" 1 "ASSEMBLER ERROR! HEX file NOT created"
unchanged asm-error "$work/asmerr.bas" "$sum"

# A device definition without its register include: the assembler says so.
fakehome="$work/fakehome"
mkdir -p "$fakehome/inc"
cp "$home/inc/P16F84.inf" "$fakehome/inc/"
printf 'END\n' > "$work/nozvi.bas"
out="$("$zorvel" build "$work/nozvi.bas" --home "$fakehome" 2>&1)"; status=$?
if [ "$status" -eq 1 ] && echo "$out" | grep -q 'P16F84.zvi' &&
   echo "$out" | grep -q -F 'ASSEMBLER ERROR! HEX file NOT created'; then
  passed=$((passed + 1))
else
  echo "FAIL missing-zvi: status $status"; echo "$out" | head; failures=$((failures + 1))
fi

# An output file that cannot be written (here a folder stands in its way).
mkdir -p "$work/blocked" "$work/blocked/prog.asm"
printf 'END\n' > "$work/blocked/prog.bas"
sum="$(sha256sum < "$work/blocked/prog.bas")"
expect blocked-output "$work/blocked/prog.bas" 1 "Unable to write"
unchanged blocked-output "$work/blocked/prog.bas" "$sum"

echo "robustness: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
