#!/usr/bin/env bash
# Fuzzes the compiler, the HEX readers, the device-file readers and the
# simulator with libFuzzer (clang, AddressSanitizer and UndefinedBehaviorSanitizer),
# and runs the random program generator through gpasm, all at once.
#
#   scripts/fuzz.sh --seconds N   each target N seconds (the test run uses 30)
#   scripts/fuzz.sh --minutes N   a long campaign: each target N minutes
#
# The corpus grows in build-sanitize/fuzz/corpus/<target> and is kept between
# runs; findings go to build-sanitize/fuzz/findings. Prints executions,
# coverage and findings per target; exits 1 when anything was found.
set -euo pipefail
cd "$(dirname "$0")/.."

seconds=30
case "${1:-}" in
  --seconds) seconds="${2:?--seconds wants a number}" ;;
  --minutes) seconds=$(( ${2:?--minutes wants a number} * 60 )) ;;
  "") ;;
  *) echo "usage: scripts/fuzz.sh [--seconds N | --minutes N]" >&2; exit 2 ;;
esac
if ! [[ "$seconds" =~ ^[0-9]+$ ]] || [ "$seconds" -lt 1 ]; then
  echo "fuzz.sh: the time must be a whole number above 0" >&2; exit 2
fi

tree=build-sanitize
CXX=clang++-14 cmake -S . -B "$tree" -G Ninja -DCMAKE_BUILD_TYPE=Debug -DZORVEL_WERROR=ON \
  -DZORVEL_FUZZ=ON -DZORVEL_BUILD_IDE=OFF >/dev/null
ninja -C "$tree" compile_fuzzer hex_fuzzer device_file_fuzzer simulator_fuzzer \
  make_fuzz_dictionary zorvel-cli zorvel-generate-programs

work="$tree/fuzz"
seeds="$work/seeds"
rm -rf "$seeds" "$work/logs"
mkdir -p "$seeds"/{compile,hex,device_file,simulator} "$work/logs" "$work/findings"
"$tree/fuzz/make_fuzz_dictionary" > "$work/zorvel.dict"

# Seeds: the examples and every example of the manual, the HEX files they
# build to, the raw program images of those, and the project's device files.
cp examples/*.bas "$seeds/compile/"
awk -v dir="$seeds/compile" '
  /<pre class="example[^"]*">/ { n++; on = 1; sub(/.*<pre class="example[^"]*">/, "") }
  on && /<\/pre>/ { sub(/<\/pre>.*/, ""); print > (dir "/manual" n ".bas"); on = 0; next }
  on {
    gsub(/&lt;/, "<"); gsub(/&gt;/, ">"); gsub(/&quot;/, "\""); gsub(/&amp;/, "\\&")
    print > (dir "/manual" n ".bas")
  }' data/inc/ZORVEL.HTM
cp data/inc/*.inf "$seeds/device_file/"

# The release build compiles the seeds faster when the test command made it.
zorvel="build/cli/zorvel"
[ -x "$zorvel" ] || zorvel="$tree/cli/zorvel"
build_dir="$(mktemp -d)"
trap 'rm -rf "$build_dir"' EXIT
for bas in "$seeds"/compile/*.bas; do
  name="$(basename "$bas" .bas)"
  cp "$bas" "$build_dir/$name.bas"
  ASAN_OPTIONS=detect_leaks=0 "$zorvel" build "$build_dir/$name.bas" --home data \
    >/dev/null 2>&1 || true
  [ -f "$build_dir/$name.hex" ] || continue
  cp "$build_dir/$name.hex" "$seeds/hex/"
  # Device 16F877 (index 2), 4 MHz, watchdog off; then the words in address order.
  data="\\x02\\x00\\xFB"
  while IFS= read -r record; do
    record="${record%$'\r'}"
    [ "${record:7:2}" = "00" ] || continue
    [ $((16#${record:3:4})) -lt 16384 ] || continue
    bytes="${record:9:$((16#${record:1:2} * 2))}"
    data+="$(echo "$bytes" | sed 's/../\\x&/g')"
  done < "$build_dir/$name.hex"
  printf "$data" > "$seeds/simulator/$name.bin"
done

# Runs one target for the time given and summarises its log.
declare -A max_len=([compile]=16384 [hex]=16384 [device_file]=16384 [simulator]=8192)
run_target() {
  local name="$1" corpus="$work/corpus/$1"
  mkdir -p "$corpus"
  "$tree/fuzz/${name}_fuzzer" "$corpus" "$seeds/$name" -dict="$work/zorvel.dict" \
    -max_total_time="$seconds" -timeout=10 -rss_limit_mb=2048 -max_len="${max_len[$name]}" \
    -print_final_stats=1 -artifact_prefix="$work/findings/$name-" \
    >"$work/logs/$name.log" 2>&1
}

pids=()
for t in compile hex device_file simulator; do
  run_target "$t" & pids+=($!)
done
"$tree/fuzz/zorvel-generate-programs" --seconds "$seconds" --home data \
  --keep "$work/findings/generated" >"$work/logs/generated.log" 2>&1 & pids+=($!)
status=0
for p in "${pids[@]}"; do wait "$p" || status=1; done

for t in compile hex device_file simulator; do
  log="$work/logs/$t.log"
  runs="$(grep -o 'stat::number_of_executed_units:[[:space:]]*[0-9]*' "$log" | grep -o '[0-9]*$' || echo 0)"
  rate="$(grep -o 'stat::average_exec_per_sec:[[:space:]]*[0-9]*' "$log" | grep -o '[0-9]*$' || echo 0)"
  cov="$(grep -o 'cov: [0-9]* ft: [0-9]*' "$log" | tail -n 1 || true)"
  corpus="$(ls "$work/corpus/$t" | wc -l)"
  found="$(ls "$work/findings" | grep -c "^$t-" || true)"
  echo "fuzz $t: $runs executions ($rate/s), ${cov:-cov: ?}, corpus $corpus, findings $found"
  if grep -q -E 'ERROR: (AddressSanitizer|LeakSanitizer|libFuzzer)|runtime error|SUMMARY' "$log"; then
    grep -E -A 30 'ERROR: |runtime error' "$log" | head -n 60
  fi
done
grep -E 'programs|passed' "$work/logs/generated.log" | tail -n 3 | sed 's/^/generated programs: /'
if [ "$status" -ne 0 ]; then
  echo "fuzz: findings in $work/findings"
  tail -n 40 "$work/logs/generated.log"
fi
exit "$status"
