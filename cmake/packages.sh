# Sourced by the scripts of this repository: collects the Debian packages that are missing and installs them.
# shellcheck shell=bash
missing=()

# need COMMAND PACKAGE
need() {
  command -v "$1" > /dev/null || missing+=("$2")
}

# need_header FILE PACKAGE
need_header() {
  local dir
  for dir in /usr/include /usr/local/include; do
    if [ -e "$dir/$1" ]; then return 0; fi
  done
  missing+=("$2")
}

# As root, or by sudo where it needs no password or can ask for one.
may_install() {
  command -v apt-get > /dev/null || return 1
  if [ "$(id -u)" = 0 ]; then return 0; fi
  asRoot=(sudo)
  command -v sudo > /dev/null && { [ -t 0 ] || sudo -n true 2> /dev/null; }
}

install_needed() {
  if [ ${#missing[@]} -eq 0 ]; then return 0; fi
  local -a asRoot=()
  if ! may_install; then
    echo "Packages are missing: sudo apt-get install ${missing[*]}" >&2
    exit 1
  fi
  echo "Installing ${missing[*]}"
  "${asRoot[@]}" apt-get update -q
  "${asRoot[@]}" env DEBIAN_FRONTEND=noninteractive apt-get install -q -y --no-install-recommends "${missing[@]}"
  missing=()
}

# need_cmake VERSION: an older CMake would stumble over the presets with a message that names no version.
need_cmake() {
  local version
  version=$(cmake --version | sed -n 's/^cmake version //p')
  if [ "$(printf '%s\n%s\n' "$1" "$version" | sort -V | head -n 1)" != "$1" ]; then
    echo "CMake $1 is needed, this is $version." >&2
    exit 1
  fi
}
