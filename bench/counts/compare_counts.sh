#!/usr/bin/env bash
# compare_counts.sh PROGRAM [--renew]: counts the instructions of each call under callgrind and compares them with
# counts.txt. Fails where a call takes 3 % more than there, or is not in it. --renew writes what was counted instead.
# The counts are those of valgrind's processor, which has AVX2, and of g++ 12 on Debian 12.
set -euo pipefail
program=$(realpath "$1") renew=${2:-}
table=$(cd "$(dirname "$0")" && pwd)/counts.txt
work=$(mktemp -d)
trap 'rm -r "$work"' EXIT

(cd "$work" && LD_BIND_NOW=1 valgrind --tool=callgrind --toggle-collect=Counted --dump-after=Counted \
  --callgrind-out-file="$work/out" "$program" > "$work/names" 2> "$work/log")
calls=$(wc -l < "$work/names")
for ((i = 1; i <= calls; ++i)); do
  printf '%s|%s\n' "$(sed -n "${i}p" "$work/names")" \
    "$(awk '/^(totals|summary):/ { total = $2 } END { print total + 0 }' "$work/out.$i")"
done > "$work/counts"
if [[ $renew == --renew ]]; then
  cp "$work/counts" "$table"
fi
awk -F'|' -v room=1.03 '
  NR == FNR { before[$1] = $2; next }
  { ratio = before[$1] > 0 ? $2 / before[$1] : 0; bad = !(ratio > 0 && ratio <= room)
    printf "%-26s %12d %12d %7.3f%s\n", $1, before[$1], $2, ratio, bad ? "  ABOVE" : ""; failed += bad; ++calls }
  END { printf "%d calls, %d above\n", calls, failed; exit failed > 0 || calls == 0 }' "$table" "$work/counts"
