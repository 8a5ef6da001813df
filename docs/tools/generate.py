"""Generates the pages and tables that follow from the library: docs/generated in the copied tree.

generate.py DOCS BUILD XML: the copied docs/, a build directory of the library, the XML of Doxygen.
"""

import sys
from pathlib import Path

import causes
import check_names
import costs
import examples
import figures
import python_reference
import reference
import scores


class Writer:
    """Writes below one directory: only what changed, and removes what was not written again."""

    def __init__(self, root):
        self.root = root
        self.written = set()

    def write(self, name, text):
        path = self.root / name
        self.written.add(path)
        if path.exists() and path.read_text(encoding="utf-8") == text:
            return
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")

    def finish(self):
        for path in [path for path in self.root.rglob("*") if path.is_file()]:
            if path not in self.written:
                path.unlink()


def main(docs, build, xml):
    check_names.check(docs, xml)
    writer = Writer(docs / "generated")
    reference.generate(writer, xml, docs.parent)
    causes.generate(writer, Path("src/nu/foundation"), docs / "causes.json")
    examples.generate(writer, docs.parent)
    scores.generate(writer, build)
    costs.generate(writer)
    python_reference.generate(writer)
    figures.generate(writer, build, Path(__file__).parent)
    writer.finish()


main(*map(Path, sys.argv[1:4]))
