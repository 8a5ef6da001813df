#!/usr/bin/env bash
# forward.sh SOURCE_ROOT: nu/fwd.h declares every public class.
set -euo pipefail
cd "$1"
missing=0
classes=$(find nu -name '*.h' -not -path '*/internal/*' -not -path 'nu/engine/*' -print0 |
  xargs -0 sed -nE 's/^class( NU_EXPORT)? (CNu[A-Za-z0-9]+).*/\2/p' | sort -u)
[ -n "$classes" ]
for class in $classes; do
  if ! grep -qx "class $class;" nu/fwd.h; then
    echo "nu/fwd.h does not declare $class" >&2
    missing=1
  fi
done
exit $missing
