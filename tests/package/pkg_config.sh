#!/usr/bin/env bash
# pkg_config.sh COMPILER PREFIX WORK SOURCE [--static]: builds SOURCE with nothing but what nu.pc under PREFIX says.
set -euo pipefail
compiler=$1
prefix=$2
work=$3
source=$4
command -v pkg-config > /dev/null || { echo "pkg-config is missing" >&2; exit 1; }
PKG_CONFIG_LIBDIR=$(dirname "$(find "$prefix" -name nu.pc)")
export PKG_CONFIG_LIBDIR
pkg-config --print-errors --exact-version=3.0.0 nu
read -r -a flags <<< "$(pkg-config "${@:5}" --cflags --libs nu)"
echo "${flags[*]}"
mkdir -p "$work"
"$compiler" -std=c++17 -Wall -Wextra -Werror "$source" -o "$work/consumer" "${flags[@]}"
LD_LIBRARY_PATH=$(pkg-config --variable=libdir nu) "$work/consumer"
