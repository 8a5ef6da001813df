#!/usr/bin/env bash
# checksums.sh FILE...: writes SHA256SUMS beside the files of a release, all in one directory, and SHA256SUMS.asc, the
# signature of gpg with the key NU_SIGNING_KEY or its default one. Without any key nothing is signed, which it says; a
# signature that was asked for and cannot be made is a failure.
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
rm -f SHA256SUMS.asc
if [ -n "${NU_SIGNING_KEY:-}" ]; then
  gpg --yes --armor --local-user "$NU_SIGNING_KEY" --detach-sign SHA256SUMS
elif command -v gpg > /dev/null && [ -n "$(gpg --list-secret-keys 2> /dev/null)" ]; then
  gpg --yes --armor --detach-sign SHA256SUMS
else
  echo "SHA256SUMS is not signed: no key here"
  exit 0
fi
gpg --verify SHA256SUMS.asc SHA256SUMS
