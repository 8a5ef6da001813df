"""Copies what the manual is made of to a directory of its own, where generated pages join it.

Only what changed is written, so that unchanged pages are not built again; what is gone is removed.
copy_tree.py DESTINATION
"""

import filecmp
import shutil
import sys
from pathlib import Path

PARTS = ["docs", "examples", "inspect", "python", "bench/README.md", "data/parts", "data/reference/README.md", "README.md",
         "CHANGELOG.md", "CONTRIBUTING.md", "SECURITY.md"]
SUFFIXES = {".md", ".py", ".cpp", ".c", ".h", ".css", ".js", ".svg", ".txt", ".json", ".csv", ".out", ".pyi"}
GENERATED = Path("docs/generated")


def sources():
    for part in map(Path, PARTS):
        if part.is_dir():
            yield from (path for path in part.rglob("*") if path.is_file() and path.suffix in SUFFIXES)
        elif part.exists():
            yield part


def main(destination):
    wanted = set(sources())
    for path in wanted:
        copy = destination / path
        if not copy.exists() or not filecmp.cmp(path, copy, shallow=False):
            copy.parent.mkdir(parents=True, exist_ok=True)
            shutil.copyfile(path, copy)
    for copy in [path for path in destination.rglob("*") if path.is_file()]:
        path = copy.relative_to(destination)
        if path not in wanted and GENERATED not in path.parents:
            copy.unlink()


main(Path(sys.argv[1]))
