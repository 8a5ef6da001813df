# Sourced by the scripts of this folder, from the root of the repository: the tools that a build of the Python package
# needs, and a virtual environment below build/.
# shellcheck shell=bash

# shellcheck source=../cmake/packages.sh
. cmake/packages.sh
need cmake cmake
need ninja ninja-build
need g++ g++
need python3 python3
if ! python3 -c 'import ensurepip, venv' 2> /dev/null; then missing+=(python3-venv); fi
if ! python3 -c 'import sysconfig, sys, os; sys.exit(not os.path.exists(sysconfig.get_path("include") + "/Python.h"))'; then
  missing+=(python3-dev)
fi
install_needed
need_cmake 3.25

python=build/python/venv/bin/python

# python_environment ARGUMENTS...: the virtual environment with what pip is told to install; nothing to do the next time.
python_environment() {
  mkdir -p build/python
  if ! $python -c '' 2> /dev/null; then python3 -m venv build/python/venv; fi
  $python -m pip install -q --disable-pip-version-check "$@"
}
