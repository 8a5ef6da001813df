#!/usr/bin/env bash
# release.sh SOURCE: makes the bill of materials and the checksums of a release, signed with a key made for it where gpg
# is installed, and finds a file that was changed afterwards.
set -euo pipefail
work=$(mktemp -d)
trap 'GNUPGHOME=$work/key gpgconf --kill all 2> /dev/null || true; rm -rf "$work"' EXIT
mkdir -m 700 "$work/key" "$work/files"
python3 "$1/release/sbom.py" "$work/files/nu.cdx.json"
python3 - "$work/files/nu.cdx.json" << 'END'
import json, sys
bill = json.load(open(sys.argv[1]))
assert bill["bomFormat"] == "CycloneDX" and bill["metadata"]["component"]["name"] == "nu", bill
assert len(bill["components"]) == 1 and len(bill["metadata"]["component"]["hashes"][0]["content"]) == 64, bill
END
export GNUPGHOME=$work/key
unset NU_SIGNING_KEY
if command -v gpg > /dev/null; then
  gpg --batch --quiet --passphrase '' --quick-generate-key release@example.org ed25519 sign never 2> /dev/null
fi
"$1/release/checksums.sh" "$work/files/nu.cdx.json"
cd "$work/files"
if command -v gpg > /dev/null; then gpg --verify SHA256SUMS.asc SHA256SUMS; fi
sha256sum --check SHA256SUMS
echo >> nu.cdx.json
if sha256sum --check --quiet SHA256SUMS 2> /dev/null; then echo "a changed file passes" >&2; exit 1; fi
