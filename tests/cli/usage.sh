#!/usr/bin/env bash
# Usage: usage.sh ZORVEL HOME — command-line mistakes exit 2 with one line.
set -u
zorvel="$1"
home="$2"
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
check no-subcommand 2
check unknown-subcommand 2 frobnicate
check build-without-file 2 build
check unknown-option 2 build x.bas --bogus
check home-without-inc 2 build x.bas --home /nonexistent-folder
check help 0 --help
echo "usage: $passed passed, $failures failed"
[ "$failures" -eq 0 ]
