#!/usr/bin/env bash
# work.sh PROGRAM [N]: counts the instructions of every operation on every adversarial set of N and of 10 N points
# (10000) under callgrind, prints the ratios and fails where one is above 15: nothing may be quadratic. It takes minutes.
set -euo pipefail
program=$1 n=${2:-10000} limit=15
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

# One dump per call of Measured, in the order of the list.
count() {
  mkdir "$work/$1"
  (cd "$work/$1" && valgrind --tool=callgrind --toggle-collect=Measured --dump-after=Measured \
    --callgrind-out-file="$work/$1/out" "$program" "$1" > "$work/$1/names" 2> "$work/$1/log")
  for ((i = 1; i <= $(wc -l < "$work/$1/names"); ++i)); do
    awk '/^(totals|summary):/ { total = $2 } END { print total + 0 }' "$work/$1/out.$i"
  done > "$work/$1/counts"
}
program=$(realpath "$program")
count "$n" &
count $((10 * n)) &
wait
paste -d'|' "$work/$n/names" "$work/$n/counts" "$work/$((10 * n))/counts" | awk -F'|' -v limit=$limit '
  { ratio = $3 > 0 ? $4 / $3 : 0; printf "%-12s %-28s %14.0f %15.0f %7.2f%s\n", $1, $2, $3, $4, ratio, (ratio > limit ? "  ABOVE" : "")
    if (ratio > limit) bad++; if (ratio > worst) worst = ratio; cases++ }
  END { printf "%d cases, worst ratio %.2f, %d above %d\n", cases, worst, bad, limit; exit bad > 0 || cases == 0 }'
