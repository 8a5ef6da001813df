#!/usr/bin/env bash
# version.sh VERSION [SOURCES]: every file that names the version of the release names this one.
set -euo pipefail
version=$1
cd "${2:-$(dirname "$0")/../..}"
bad=0

# names FILE PATTERN: the first group of each match of the extended pattern.
names() {
  local found
  found=$(sed -nE "s/.*$2.*/\1/p" "$1" | sort -u)
  if [ "$found" != "$version" ]; then
    echo "$1: expected version $version, found '$found'" >&2
    bad=1
  fi
}

number='([0-9]+\.[0-9]+\.[0-9]+)'
names CMakeLists.txt "^project\(Nu VERSION $number "
names CITATION.cff "^version: $number$"
names README.md "GIT_TAG v$number"
names docs/building.md "nu\/$number"
names docs/conf.py "NU_VERSION\", \"$number\""
names packaging/vcpkg/nu/vcpkg.json "\"version\": \"$number\""
names pyproject.toml "^version = \"$number\""
names python/nu/__init__.py "^__version__ = \"$number\""
names src/nu/c/nu.h "as a text, \"$number\""
names tests/package/pkg_config.sh "--exact-version=$number"
labels=$(sed -nE 's/^constinit .*Nu(Major|Minor|Build)VersionLabel = ([0-9]+);/\2/p' src/nu/foundation/constants.cpp | paste -sd.)
if [ "$labels" != "$version" ]; then
  echo "src/nu/foundation/constants.cpp: expected version $version, found '$labels'" >&2
  bad=1
fi
grep -q "^## \[$version\]\|^Towards $version\." CHANGELOG.md || { echo "CHANGELOG.md: no version $version" >&2; bad=1; }
exit $bad
