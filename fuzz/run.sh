#!/usr/bin/env bash
# Runs the fuzz targets one after the other: fuzz/run.sh FOLDER_OF_PROGRAMS [SECONDS_EACH [TARGET...]].
# What is found goes to the target's folder in fuzz/corpus; what only reaches new code goes to build/fuzz/corpus and is
# the beginning of the next run.
set -euo pipefail
root="$(cd "$(dirname "${BASH_SOURCE[0]}")/.." && pwd)"
readonly programs=${1:?folder of programs} seconds=${2:-60}
targets=("${@:3}")
# Without a number, libFuzzer would go on for ever.
[[ $seconds =~ ^[1-9][0-9]*$ ]] || { echo "fuzz: '$seconds' is no number of seconds" >&2; exit 2; }
for target in ${targets[@]+"${targets[@]}"}; do
  [ -x "$programs/zelto_fuzz_$target" ] || { echo "fuzz: there is no target '$target'" >&2; exit 2; }
done
if [ ${#targets[@]} -eq 0 ]; then
  for program in "$programs"/zelto_fuzz_*; do
    targets+=("${program##*/zelto_fuzz_}")
  done
fi

# statistic NAME LOG: a number that libFuzzer printed at its end; 0 without one.
statistic() {
  local value
  value=$(sed -n "s/^stat::$1: *//p" "$2" | tail -n 1)
  echo "${value:-0}"
}

finds=0
printf '%-16s %8s %12s %9s %6s  %s\n' target seconds executions "per s" new finds
for target in "${targets[@]}"; do
  seeds="$root/fuzz/corpus/$target" grown="$root/build/fuzz/corpus/$target" log="$root/build/fuzz/$target.log"
  dictionary="$root/fuzz/dictionaries/$target.dict"
  options=()
  [ ! -f "$dictionary" ] || options+=("-dict=$dictionary")
  mkdir -p "$seeds" "$grown"
  find "$seeds" -type f | sort >"$log.before"
  status=0
  begin=$SECONDS
  nice -n 15 "$programs/zelto_fuzz_$target" "$grown" "$seeds" -max_total_time="$seconds" -max_len=2048 -timeout=30 \
    -rss_limit_mb=3000 -artifact_prefix="$seeds/" -print_final_stats=1 ${options[@]+"${options[@]}"} >"$log" 2>&1 ||
    status=$?
  found=$(find "$seeds" -type f | sort | comm -13 "$log.before" -)
  printf '%-16s %8d %12d %9d %6d  %s\n' "$target" $((SECONDS - begin)) \
    "$(statistic number_of_executed_units "$log")" "$(statistic average_exec_per_sec "$log")" \
    "$(statistic new_units_added "$log")" "${found:-none}"
  if [ "$status" -ne 0 ] || [ -n "$found" ]; then
    finds=$((finds + 1))
    grep -E 'FINDING|ERROR|SUMMARY|runtime error|uncaught|terminate' "$log" | head -n 5 | sed 's/^/    /'
    echo "    $log"
  fi
done
[ "$finds" -eq 0 ]
