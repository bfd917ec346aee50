# Sourced by the command-line test scripts. They set `failures` and `passed`.
export ASAN_OPTIONS="detect_leaks=1:exitcode=86"
export UBSAN_OPTIONS="print_stacktrace=1:halt_on_error=1:exitcode=87"

# run_expect NAME STATUS TEXT COMMAND...: runs COMMAND for at most 60 s and checks
# its exit status, that its output holds TEXT and that no sanitizer spoke.
run_expect() {
  local name="$1" want="$2" text="$3"; shift 3
  local out status
  out="$(timeout 60 "$@" 2>&1)"; status=$?
  if [ "$status" -ne "$want" ]; then
    echo "FAIL $name: exit status $status, expected $want"; echo "$out" | head -n 20
    failures=$((failures + 1)); return
  fi
  if echo "$out" | grep -q -E 'AddressSanitizer|runtime error|LeakSanitizer'; then
    echo "FAIL $name: sanitizer report"; echo "$out" | head -n 40
    failures=$((failures + 1)); return
  fi
  if ! echo "$out" | grep -q -F -- "$text"; then
    echo "FAIL $name: output lacks '$text'"; echo "$out" | head -n 20
    failures=$((failures + 1)); return
  fi
  passed=$((passed + 1))
}

# lock_folder DIR: makes DIR unwritable and prints how (chmod, chattr or no).
# Root ignores permissions, so as root the folder is made immutable where the
# file system allows it.
lock_folder() {
  if [ "$(id -u)" -ne 0 ]; then
    chmod a-w "$1" && echo chmod && return
  elif command -v chattr >/dev/null && chattr +i "$1" 2>/dev/null; then
    echo chattr && return
  fi
  echo no
}

# unlock_folder DIR HOW: undoes lock_folder.
unlock_folder() {
  [ "$2" = chattr ] && chattr -i "$1"
  [ "$2" = chmod ] && chmod u+w "$1"
  return 0
}
