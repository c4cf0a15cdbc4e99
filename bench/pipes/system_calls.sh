#!/usr/bin/env bash
# System calls of one round trip, both processes together: the difference of a long and a short run under strace.
# usage: system_calls.sh PATH/TO/pipes_bench
set -euo pipefail
readonly bench=$1 few=1000 many=11000

# calls PEER SIZE ROUNDS: how many system calls the run made.
calls() {
  local log
  log=$(mktemp)
  strace -f -c -o "$log" "$bench" "$1" "$2" "$3" >/dev/null
  awk '$NF == "total" { print $4 }' "$log"
  rm -f "$log"
}

for size in 100 4096; do
  for peer in zelto socket zeromq; do
    awk -v peer="$peer" -v size="$size" -v a="$(calls "$peer" "$size" "$few")" -v b="$(calls "$peer" "$size" "$many")" \
      -v rounds="$((many - few))" 'BEGIN { printf "%-7s %5d bytes: %.2f system calls per round trip\n", peer, size, (b - a) / rounds }'
  done
done
