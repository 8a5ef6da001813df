#!/usr/bin/env bash
# abi.sh LIBRARY: fails when LIBRARY, built with -g, breaks hosts that were built with what abi.xml.xz describes: members,
# virtual functions and exported names may be added, not moved, changed or taken away.
# abi.sh LIBRARY --accept: makes LIBRARY the new description.
set -euo pipefail
library=$1
here=$(cd "$(dirname "$0")" && pwd)
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

# Only what a host can name counts.
(cd "$here/../../src" && find nu -name '*.h' -not -path '*/internal/*' -not -path '*/engine/*' -exec cp -t "$work" --parents {} +)
abidw --headers-dir "$work/nu" --drop-private-types --no-show-locs --no-corpus-path --no-comp-dir-path \
  --out-file "$work/now.xml" "$library"
if [ "${2-}" = --accept ]; then
  xz -9e < "$work/now.xml" > "$here/abi.xml.xz"
else
  xz -d < "$here/abi.xml.xz" > "$work/before.xml"
  abidiff --no-added-syms "$work/before.xml" "$work/now.xml"
fi
