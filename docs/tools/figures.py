"""Figures: pictures of the program inspect of the points of data/parts, and those of pictures.cpp."""

import subprocess
import tempfile
from pathlib import Path

# What inspect is asked for, and which of its pictures the pages show.
INSPECTIONS = [
    ("bore.csv", "circle", "all", ["--decimal-comma", "--material", "outside", "--tolerance", "0.010"]),
    ("edge.xyz", "line", "all", []),
    ("plate.asc", "plane", "all", []),
    ("ball.csv", "sphere", "all", []),
    ("sleeve.txt", "cylinder", "all", ["--material", "outside"]),
    ("pin.csv", "cone", "all", []),
    ("ring.txt", "torus", "all", []),
    ("flange.xyz", "ellipse", "ls", []),
    ("reflector.csv", "parabola", "ls", []),
    ("roller.txt", "hyperbola", "ls", []),
]


def generate(writer, build, tools):
    with tempfile.TemporaryDirectory() as scratch:
        scratch = Path(scratch)
        for part, feature, criterion, options in INSPECTIONS:
            report = subprocess.run(
                [build / "inspect/inspect", f"data/parts/{part}", "--feature", feature, "--criterion", criterion,
                 "--svg", f"{scratch}/", *options], capture_output=True, text=True, check=False)
            if report.returncode not in (0, 1):
                raise SystemExit(f"inspect {part}: {report.stderr}")
        program = scratch / "pictures"
        subprocess.run(["g++", "-std=c++20", "-O1", "-I", "src", str(tools / "pictures.cpp"), "-o", str(program),
                        f"-L{build}/src/nu", "-lnu", f"-Wl,-rpath,{build.resolve()}/src/nu"], check=True)
        subprocess.run([program, f"{scratch}/"], check=True)
        for picture in sorted(scratch.glob("*.svg")):
            # A picture as wide as its place: the size in millimetres is for print.
            writer.write(f"figures/{picture.name}", picture.read_text(encoding="utf-8"))
