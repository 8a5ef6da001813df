#!/usr/bin/env bash
# headers.sh COMPILER INCLUDE_ROOT LIST: every header that LIST names compiles alone, as C++17 and C++20, and all of them
# after <windows.h>-style macros, for Windows after <windows.h>. Static and shared declarations take turns.
set -euo pipefail
compiler=$1
root=$2
list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT

check() {
  "$compiler" -fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror -x c++ -I "$root" "$@"
}

# What is in the tree is installed, and nu.h has all of it but the header for C.
diff <(cd "$root" && find nu -name '*.h' -not -path '*/internal/*' -not -path '*/engine/*' | sort) <(sort "$list")
diff <(grep -vx 'nu/\(nu\|fwd\|export\|c/nu\).h' "$list" | sort) <(sed -n 's/^#include "\(.*\)"/\1/p' "$root/nu/nu.h" | sort)

while read -r header; do
  printf '#include "%s"\n#include "%s"\nint main() { return 0; }\n' "$header" "$header" > "$work/alone.cpp"
  check -std=c++17 -DNU_STATIC "$work/alone.cpp" || { echo "$header does not compile alone as C++17" >&2; exit 1; }
  check -std=c++20 "$work/alone.cpp" || { echo "$header does not compile alone as C++20" >&2; exit 1; }
done < "$list"

# The standard headers come first: it is Nu's own text that must stand the macros.
{
  (cd "$root" && xargs sed -n '/^#include </p') < "$list" | sort -u
  echo '#define min(a, b) (((a) < (b)) ? (a) : (b))'
  echo '#define max(a, b) (((a) > (b)) ? (a) : (b))'
  echo '#define near'
  echo '#define far'
  sed 's/.*/#include "&"/' "$list"
  echo 'int main() { return 0; }'
} > "$work/macros.cpp"
check -std=c++17 "$work/macros.cpp"

if "$compiler" -dumpmachine | grep -q mingw; then
  { echo '#include <windows.h>'; cat "$work/macros.cpp"; } > "$work/windows.cpp"
  check -std=c++17 "$work/windows.cpp"
fi
echo "$(wc -l < "$list") headers"
