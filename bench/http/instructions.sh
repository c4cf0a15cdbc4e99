#!/usr/bin/env bash
# Instructions of one request in this process: the difference of a long and a short run under callgrind. Adds its lines to
# the file that ZELTO_BENCH_RESULTS names, as bench/support/report.h says.
# usage: instructions.sh PATH/TO/http_bench
set -euo pipefail
readonly bench=$1

# count CLIENT SIZE TIMES
count() {
  valgrind --tool=callgrind --callgrind-out-file=/dev/null "$bench" "$@" 2>&1 | sed -n 's/.*Collected : \([0-9]*\).*/\1/p'
}

# compare SIZE FEW MANY
compare() {
  local bare zelto
  bare=$((($(count bare "$1" "$3") - $(count bare "$1" "$2")) / ($3 - $2)))
  zelto=$((($(count zelto "$1" "$3") - $(count zelto "$1" "$2")) / ($3 - $2)))
  awk -v size="$1" -v zelto="$zelto" -v bare="$bare" -v results="${ZELTO_BENCH_RESULTS:-/dev/null}" 'BEGIN {
    printf "GET of %d bytes: %d instructions, bare libcurl %d: %+.1f %%\n", size, zelto, bare, (zelto / bare - 1) * 100
    format = "figure\thttp_bench\tGET of %d bytes\t%s\t%.0f\tinstructions\n"
    printf format, size, "Zelto", zelto >> results
    printf format, size, "bare libcurl", bare >> results }'
}

compare 1024 100 1100
compare 104857600 1 4
