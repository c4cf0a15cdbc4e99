#!/usr/bin/env bash
# System calls of one round trip, both processes together: the difference of a long and a short run under strace. Adds
# its lines to the file that ZELTO_BENCH_RESULTS names, as bench/support/report.h says.
# usage: system_calls.sh PATH/TO/pipes_bench
set -euo pipefail
readonly bench=$1 few=200 many=2200

# calls PEER SIZE ROUNDS: how many system calls the run made.
calls() {
  local log
  log=$(mktemp)
  strace -f -c -o "$log" "$bench" "$1" "$2" "$3" >/dev/null
  awk '$NF == "total" { print $4 }' "$log"
  rm -f "$log"
}

# measure PEER NAME SIZE
measure() {
  awk -v who="$2" -v size="$3" -v a="$(calls "$1" "$3" "$few")" -v b="$(calls "$1" "$3" "$many")" \
    -v rounds="$((many - few))" -v results="${ZELTO_BENCH_RESULTS:-/dev/null}" 'BEGIN {
      count = (b - a) / rounds
      printf "%-12s %5d bytes: %.2f system calls per round trip\n", who, size, count
      printf "figure\tpipes_bench\tround trip, %d bytes\t%s\t%.2f\tsystem calls\n", size, who, count >> results }'
}

for size in 100 4096; do
  measure zelto Zelto "$size"
  measure socket "bare socket" "$size"
  measure zeromq ZeroMQ "$size"
done
