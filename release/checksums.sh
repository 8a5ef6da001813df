#!/usr/bin/env bash
# checksums.sh FILE...: writes SHA256SUMS beside the files of a release, and SHA256SUMS.asc where gpg has a key to sign
# with; SHA256SUMS.asc is the maintainer's to make otherwise. All files are in one directory.
set -euo pipefail
[ $# -gt 0 ] || { echo "usage: checksums.sh FILE..." >&2; exit 2; }
directory=$(dirname "$1")
names=()
for file in "$@"; do
  [ "$(dirname "$file")" = "$directory" ] || { echo "checksums.sh: $file is in another directory" >&2; exit 2; }
  names+=("$(basename "$file")")
done
cd "$directory"
sha256sum -- "${names[@]}" > SHA256SUMS
sha256sum --check --quiet SHA256SUMS
if command -v gpg > /dev/null && [ -n "$(gpg --list-secret-keys 2> /dev/null)" ]; then
  gpg --yes --armor --detach-sign SHA256SUMS
else
  echo "SHA256SUMS is not signed: no key here"
fi
