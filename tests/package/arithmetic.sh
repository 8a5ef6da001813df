#!/usr/bin/env bash
# arithmetic.sh SOURCE_ROOT: no source calls a function whose last digits the C library chooses. The elementary functions
# come from engine/base/elementary.h, the fused product from engine/base/error_free.h.
set -euo pipefail
cd "$1"

# calls NAMES: as std::name(, ::name(, __builtin_name( or name(; not in comments, declarations, members and nu::name.
calls() {
  grep -rnE --include='*.h' --include='*.cpp' "(std::|__builtin_|(^|[^[:alnum:]_:.>~])(::)?)($1)[fl]? *\(" nu |
    grep -vE '^[^:]*:[0-9]*: *(//|NU_EXPORT )' || true
}
elementary=$(calls 'a?(sin|cos|tan)h?|atan2|exp2?|expm1|log(2|10|1p)?|pow|hypot|cbrt|erfc?|[lt]gamma' |
  grep -v '^nu/engine/base/elementary\.' || true)
fused=$(calls 'fma' | grep -v '^nu/engine/base/error_free\.h:' || true)
if [ -n "$elementary$fused" ]; then
  printf '%s\n' "$elementary" "$fused" 'Take these from elementary.h and error_free.h' >&2
  exit 1
fi
