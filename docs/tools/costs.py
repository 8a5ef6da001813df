"""Tables of what fits cost: the instructions of docs/costs.json.

costs.py BUILD: counts them anew under callgrind (valgrind), with the library of this build directory.
"""

import json
import subprocess
import sys
import tempfile
from pathlib import Path

COUNTS = Path("docs/costs.json")
SIZES = [1_000, 10_000, 100_000]
CRITERIA = {"": "least squares", ", circumscribed": "minimum circumscribed", ", inscribed": "maximum inscribed", ", zone": "minimum zone"}
# The classes of each page; the minimum torus is the minimum zone of a torus.
PAGES = {"line": ["CNuLine"], "plane": ["CNuPlane"], "circle": ["CNuCircle"], "ellipse": ["CNuEllipse"],
         "hyperbola": ["CNuHyperbola"], "parabola": ["CNuParabola"], "sphere": ["CNuSphSurf"], "cylinder": ["CNuCylSurf"],
         "cone": ["CNuConSurf"], "torus": ["CNuTorSurf"], "wave": ["CNuSineCurve"]}
TITLES = {"CNuTorSurf, circumscribed": "minimum torus"}
NOTE = """
Instructions of one call, counted by callgrind on 23 November 2026, on typical points with a noise of 0.01 at features of 1 to 20
units in size. A processor executes some billions of them per second. `docs/tools/costs.py` counts them anew.
"""


def count(program, size, scratch):
    """{fit: instructions} of one call each."""
    out = scratch / f"out{size}"
    names = subprocess.run(["valgrind", "--tool=callgrind", "--toggle-collect=Counted", "--dump-after=Counted",
                            f"--callgrind-out-file={out}", program, str(size)],
                           check=True, capture_output=True, text=True).stdout.splitlines()
    for number, name in enumerate(names, 1):
        lines = Path(f"{out}.{number}").read_text(encoding="utf-8").splitlines()
        yield name, max(int(line.split()[1]) for line in lines if line.startswith(("totals:", "summary:")))


def renew(build):
    library = build.resolve() / "src/nu"
    counts = {}
    with tempfile.TemporaryDirectory() as scratch:
        program = Path(scratch) / "costs"
        source = Path(__file__).with_suffix(".cpp")
        subprocess.run(["g++", "-std=c++20", "-O1", "-I", "src", "-I", "tests", str(source), "-o", str(program),
                        f"-L{library}", "-lnu", f"-Wl,-rpath,{library}"], check=True)
        for size in SIZES:
            for name, instructions in count(program, size, Path(scratch)):
                counts.setdefault(name, []).append(instructions)
    lines = ",\n".join(f"  {json.dumps(name)}: {instructions}" for name, instructions in counts.items())
    COUNTS.write_text(f"{{\n{lines}\n}}\n", encoding="utf-8")


def millions(instructions):
    return f"{instructions / 1e6:.3g}" if instructions < 1e8 else f"{instructions / 1e6:.0f}"


def title_of(name):
    return TITLES.get(name) or CRITERIA[name.removeprefix(name.split(",")[0])]


def fits_of(counts, classes):
    return [c + by for c in classes for by in CRITERIA if c + by in counts]


def rows(counts, names):
    yield "| Instructions in millions | " + " | ".join(f"{size:,} points".replace(",", " ") for size in SIZES) + " | per point |"
    yield "|---|" + "---|" * (len(SIZES) + 1)
    for name in names:
        yield f"| {title_of(name)} | " + " | ".join(map(millions, counts[name])) + f" | {counts[name][-1] / SIZES[-1]:.0f} |"


def overview(counts):
    yield "| Fit | Instructions per point |"
    yield "|---|---|"
    for page, classes in PAGES.items():
        for name in fits_of(counts, classes):
            yield f"| [{page}](fits/{page}.md), {title_of(name)} | {counts[name][-1] / SIZES[-1]:.0f} |"


def generate(writer):
    counts = json.loads(COUNTS.read_text(encoding="utf-8"))
    for page, classes in PAGES.items():
        names = fits_of(counts, classes)
        writer.write(f"include/costs-{page}.md", "\n".join(rows(counts, names)) + "\n" + NOTE)
    writer.write("include/costs.md", "\n".join(overview(counts)) + "\n" + NOTE)


if __name__ == "__main__":
    renew(Path(sys.argv[1]))
