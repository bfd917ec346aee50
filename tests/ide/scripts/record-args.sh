#!/bin/sh
# Records the arguments it was started with, one a line, for tests that
# start a program and check what it was given. The list goes to the file
# named by RECORD_ARGS_FILE, else to record-args.out beside this script. It
# is written under a temporary name and renamed, so a reader never sees half
# a list.
out=${RECORD_ARGS_FILE:-$(dirname "$0")/record-args.out}
tmp="$out.tmp.$$"
: >"$tmp" || exit 1
for arg in "$@"; do
    printf '%s\n' "$arg" >>"$tmp"
done
mv -f "$tmp" "$out"
