#!/usr/bin/env python3
"""sbom.py [OUTPUT.json]: the bill of materials of the library as CycloneDX 1.5.

The library needs the C++ standard library, with the C library under it, and nothing else; what its sources include is
checked against that. The hash is that of the sources as they are committed.
"""
import datetime
import hashlib
import json
import re
import subprocess
import sys
import uuid
from pathlib import Path

ROOT = Path(__file__).resolve().parent.parent
# Of the C library, which the C++ standard library stands on, and each within a test for the system that has it.
SYSTEM_HEADERS = {"sys/mman.h"}


def git(*arguments):
    return subprocess.run(["git", "-C", str(ROOT), *arguments], check=True, capture_output=True, text=True).stdout


def foreign_includes(sources):
    """Includes of the library that are neither its own nor a header of the standard library or of the system."""
    foreign = set()
    for source in sources:
        for line in (ROOT / source).read_text().splitlines():
            found = re.match(r'\s*#\s*include\s*([<"])([^>"]+)[>"]', line)
            if not found or (found[1] == '"' and found[2].startswith("nu/")) or found[2] in SYSTEM_HEADERS:
                continue
            if not re.fullmatch(r"[a-z_0-9]+(\.h)?", found[2]):
                foreign.add(found[2])
    return sorted(foreign)


def main():
    version = re.search(r"project\(Nu VERSION ([\d.]+)", (ROOT / "CMakeLists.txt").read_text())[1]
    sources = [name for name in git("ls-files", "src").splitlines() if name.endswith((".h", ".cpp"))]
    foreign = foreign_includes(sources)
    if foreign:
        sys.exit(f"the library includes what is not accounted for: {foreign}")
    digest = hashlib.sha256()
    for name in sources:
        digest.update(name.encode() + b"\0" + (ROOT / name).read_bytes() + b"\0")
    stamp = int(git("log", "-1", "--format=%ct"))
    reference = f"pkg:generic/nu@{version}"
    bill = {
        "bomFormat": "CycloneDX",
        "specVersion": "1.5",
        "serialNumber": f"urn:uuid:{uuid.uuid5(uuid.NAMESPACE_URL, reference + digest.hexdigest())}",
        "version": 1,
        "metadata": {
            "timestamp": datetime.datetime.fromtimestamp(stamp, datetime.timezone.utc).isoformat(),
            "component": {
                "bom-ref": reference, "type": "library", "name": "nu", "version": version, "purl": reference,
                "licenses": [{"license": {"id": "MIT"}}],
                "hashes": [{"alg": "SHA-256", "content": digest.hexdigest()}],
            },
        },
        "components": [{
            "bom-ref": "c++-standard-library", "type": "library", "name": "C++ standard library", "scope": "required",
            "description": "of the compiler that builds the library, with the C library under it; the only dependency",
        }],
        "dependencies": [{"ref": reference, "dependsOn": ["c++-standard-library"]}],
    }
    text = json.dumps(bill, indent=2) + "\n"
    if len(sys.argv) > 1:
        Path(sys.argv[1]).write_text(text)
    else:
        print(text, end="")


if __name__ == "__main__":
    main()
