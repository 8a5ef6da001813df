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
(
  flock 9
  # Left to itself, the server of wine ends with its last program, and a program that starts in that moment
  # loses its connection. Where one runs already, this one ends at once.
  wineserver -p300 < /dev/null > /dev/null 2>&1 9>&- || true
  if [ ! -e "$WINEPREFIX/ready" ]; then
    wineboot --init > /dev/null 2>&1
    touch "$WINEPREFIX/ready"
  fi
) 9> "$build/wine.lock"
exec wine "$@"
