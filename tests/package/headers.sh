#!/bin/sh
# headers.sh COMPILER INCLUDE_ROOT LIST: every header that LIST names compiles alone, as C++17 and C++20, and all of them
# after <windows.h>-style macros. Static and shared declarations, and a host's warnings, take turns.
set -eu
compiler=$1
root=$2
list=$3
work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
options="-fsyntax-only -Wall -Wextra -Wpedantic -Wshadow -Werror -x c++ -I $root"

alone() {
  printf '#include "%s"\n#include "%s"\nint main() { return 0; }\n' "$header" "$header" > "$work/alone.cpp"
  "$compiler" $options -std=$1 $2 "$work/alone.cpp" || { echo "$header does not compile alone as $1 $2" >&2; exit 1; }
}
while read -r header; do
  alone c++17 -DNU_STATIC
  alone c++20 ""
done < "$list"

# The standard headers come first: it is Nu's own text that must stand the macros.
{
  (cd "$root" && xargs grep -h '^#include <') < "$list" | sort -u || true
  echo '#define min(a, b) (((a) < (b)) ? (a) : (b))'
  echo '#define max(a, b) (((a) > (b)) ? (a) : (b))'
  echo '#define near'
  echo '#define far'
  sed 's/.*/#include "&"/' "$list"
  echo 'int main() { return 0; }'
} > "$work/macros.cpp"
"$compiler" $options -std=c++17 "$work/macros.cpp"
echo "$(wc -l < "$list") headers"
