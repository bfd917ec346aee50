#!/usr/bin/env bash
# Installs what is missing, builds Zorvel and compiles an example program,
# printing the compiler's messages and the start of the assembly it wrote.
set -euo pipefail
cd "$(dirname "$0")/.."
scripts/bootstrap.sh
scripts/build.sh
example="${1:-examples/blink.bas}"
work="$(mktemp -d)"
cp "$example" "$work/"
source_file="$work/$(basename "$example")"
echo "== zorvel build $example"
status=0
build/cli/zorvel build "$source_file" || status=$?
asm="${source_file%.*}.asm"
if [ -f "$asm" ]; then
  echo "== first lines of $(basename "$asm")"
  head -n 40 "$asm" | tr -d '\r'
fi
rm -rf "$work"
exit $status
