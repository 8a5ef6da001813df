#!/usr/bin/env bash
# wine.sh PROGRAM.exe ARGUMENTS...: runs a cross-compiled program under wine, beside the DLLs of its compiler and with
# Windows files of its own in build/wine.
set -euo pipefail
build=$(cd "$(dirname "$0")/.." && pwd)/build
runtime_dir() {
  dirname "$(x86_64-w64-mingw32-g++ -print-file-name="$1")"
}
WINEPATH="$(runtime_dir libstdc++-6.dll);$(runtime_dir libwinpthread-1.dll)"
export WINEPATH WINEPREFIX=$build/wine WINEDEBUG=-all WINEDLLOVERRIDES="mscoree,mshtml="
unset DISPLAY

# Left to itself, the server of wine ends with its last program, and a program that starts in that moment loses its
# connection: this one lives on for five minutes. The services of Windows begin with it and not with the first program,
# whose outputs they would keep open.
start_server() {
  eval "exec $(seq -s ' ' -f '%.0f>&-' 3 254)"
  local code=0
  wineserver -p300 || code=$?
  case $code in
    0) wineboot --init ;;
    2) ;;  # it runs already
    *) return $code ;;
  esac
}
mkdir -p "$WINEPREFIX"
(
  flock 9
  (start_server) < /dev/null > /dev/null 2>&1
) 9> "$build/wine.lock"

# Now and then wine ends before it has started the program: with 1 and without a word, while the programs of this
# project say why they fail. Then it starts anew.
output=$(mktemp -d)
trap 'rm -r "$output"' EXIT
run() {
  code=0
  wine "$@" > "$output/out" 2> "$output/err" || code=$?
}
run "$@"
if [[ $code == 1 && ! -s $output/out && ! -s $output/err ]]; then
  echo "wine.sh: wine ended with 1 and no output; it starts $1 once more" >&2
  run "$@"
fi
cat "$output/out"
cat "$output/err" >&2
exit "$code"
