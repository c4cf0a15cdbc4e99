#!/usr/bin/env bash
# Runs the benchmarks one after another and prints the table of their ratios. After all of them it writes
# docs/performance.md and the chart beside it. A program that fails is told and left out.
# usage: run.sh FOLDER_OF_PROGRAMS [NAME: only programs whose name holds NAME]
set -euo pipefail
readonly bin=$1 name=${2:-}
bench=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
export ZELTO_BENCH_RESULTS="$bin/../results.tsv"
rm -f "$ZELTO_BENCH_RESULTS"
touch "$ZELTO_BENCH_RESULTS"

# measure PROGRAM COMMAND...: runs the command when the program is wanted.
measure() {
  local program=$1
  shift
  case $program in *"$name"*) ;; *) return 0 ;; esac
  printf '\n== %s ==\n' "$program"
  "$@" || echo "$program failed: $?"
}

for room in text time json threading pipes files http; do
  for source in "$bench/$room"/*_bench.cpp; do
    program=$(basename "$source" .cpp)
    [ ! -x "$bin/$program" ] || measure "$program" "$bin/$program"
  done
done
measure pipes_bench "$bench/pipes/system_calls.sh" "$bin/pipes_bench"
measure http_bench "$bench/http/instructions.sh" "$bin/http_bench"

printf '\n== Ratios: above 1 Zelto is faster ==\n'
if [ -z "$name" ]; then
  python3 -B "$bench/report.py" "$ZELTO_BENCH_RESULTS" "$bench/../docs/performance.md" "$bench/../docs/performance.svg"
else
  python3 -B "$bench/report.py" "$ZELTO_BENCH_RESULTS"
fi
