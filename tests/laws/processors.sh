#!/usr/bin/env bash
# processors.sh PROGRAM: the fingerprint that nu_bits prints here must come out of the same program on processors with
# fewer instruction sets: on the plainest of the 64-bit kind, where QEMU runs the kernels compiled for SSE2, and with
# AVX2, where it runs under valgrind, which looks for reads of what was never written, bad accesses and leaks as well.
set -euo pipefail
program=$(realpath "$1")
cd "$(dirname "$0")/../.."
. cmake/packages.sh
need valgrind valgrind
need qemu-x86_64 qemu-user
install_needed

# same NAME EXPECTED COMMAND...
same() {
  local name=$1 expected=$2 found
  shift 2
  found=$("$@")
  echo "$name: $found"
  if [ "$found" != "$expected" ]; then
    echo "processors.sh: $name: expected $expected" >&2
    exit 1
  fi
}

all=$("$program") sample=$("$program" sample)
echo "here: $all, sample $sample"
same "SSE2" "$all" qemu-x86_64 -cpu Nehalem "$program"
same "AVX2 and memory, sample" "$sample" \
  valgrind --quiet --leak-check=full --errors-for-leak-kinds=definite,possible --error-exitcode=1 "$program" sample
