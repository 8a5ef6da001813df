#!/usr/bin/env python3
"""run.py LIBRARY_DIRECTORY [OUTPUT.md]: runs this library and its peers on data/scoreboard/sets.json and prints a table.

Adapters are compiled here with what is installed; a peer that is missing has no column. Needs mpmath. An adapter of
another library is any program that reads "feature criterion count" and the points, and prints "none" or, by name and
with 17 digits, what fit_nu.cpp prints; --add NAME=COMMAND gives it a column.
"""
import argparse
import json
import shlex
import subprocess
import sys
import tempfile
from pathlib import Path

from mpmath import mp, mpf, sqrt

mp.dps = 40
HERE = Path(__file__).resolve().parent
ROOT = HERE.parent


def compiled(name, scratch, options):
    program = Path(scratch) / name
    command = ["g++", "-std=c++17", "-O2", str(HERE / f"fit_{name}.cpp"), "-o", str(program), *options]
    built = subprocess.run(command, capture_output=True, text=True)
    if built.returncode != 0:
        print(f"{name}: not built, left out: {built.stderr.splitlines()[:1]}", file=sys.stderr)
        return None
    return [str(program)]


def adapters(library, scratch, added):
    nu = ["-I", str(ROOT / "src"), "-L", library, f"-Wl,-rpath,{library}", "-lnu"]
    eigen = ["-I", "/usr/include/eigen3"]
    found = {
        "Nu": compiled("nu", scratch, nu),
        "Eigen": compiled("eigen", scratch, eigen),
        "Ceres": compiled("ceres", scratch, eigen + ["-lceres", "-lglog"]),
        "CGAL": compiled("cgal", scratch, eigen + ["-DCGAL_EIGEN3_ENABLED", "-lgmp", "-lmpfr"]),
    }
    scipy = [sys.executable, str(HERE / "fit_scipy.py")]
    if subprocess.run([sys.executable, "-c", "import scipy"], capture_output=True).returncode == 0:
        found["SciPy"] = scipy
    found.update((name, shlex.split(command)) for name, command in (a.split("=", 1) for a in added))
    return {name: command for name, command in found.items() if command}


def fit(command, case):
    lines = [f"{case['feature']} {case['criterion']} {len(case['points'])}"]
    lines += [" ".join(map(repr, p)) for p in case["points"]]
    try:
        run = subprocess.run(command, input="\n".join(lines) + "\n", capture_output=True, text=True, timeout=300)
    except subprocess.TimeoutExpired:
        return {}
    words = [line.split() for line in run.stdout.splitlines()]
    result = {w[0]: [mpf(x) for x in w[1:]] for w in words if len(w) > 1}
    if words == [["none"]]:
        return None
    return result if run.returncode == 0 else {}


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def length(a):
    return sqrt(dot(a, a))


def minus(a, b):
    return [x - y for x, y in zip(a, b)]


def error(case, result):
    """The largest of the errors: lengths as parts of the size of the set, directions and angles in radians."""
    truth = {k: [mpf(x) for x in (v if isinstance(v, list) else [v])] for k, v in case["result"].items()}
    size, worst = mpf(case["size"]), mpf(0)
    axis = truth.get("direction")
    for name, found in result.items():
        if name not in truth:
            continue
        if name == "direction":
            found = [x / length(found) for x in found]
            worst = max(worst, min(length(minus(found, axis)), length([x + y for x, y in zip(found, axis)])))
        elif name == "semi_angle":
            worst = max(worst, abs(found[0] - truth[name][0]))
        elif name in ("axis_point", "apex") or (name == "point" and case["feature"] == "line"):
            # Any point of the axis will do; how far the apex lies on it is the angle's error.
            d = minus(found, truth["axis_point" if "axis_point" in truth else name])
            t = dot(d, axis)
            worst = max(worst, length([x - t * a for x, a in zip(d, axis)]) / size)
        elif name == "point":
            worst = max(worst, abs(dot(minus(found, truth[name]), axis)) / size)
        else:
            worst = max(worst, length(minus(found, truth[name])) / size)
    return worst


def cell(case, result):
    if result is None:
        return "-"
    if not result:
        return "fails"
    value = error(case, result)
    return "exact" if value == 0 else f"{float(value):.1e}"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("library")
    parser.add_argument("output", nargs="?")
    parser.add_argument("--add", action="append", default=[])
    options = parser.parse_args()
    package = json.loads((ROOT / "data/scoreboard/sets.json").read_text())
    with tempfile.TemporaryDirectory() as scratch:
        peers = adapters(str(Path(options.library).resolve()), scratch, options.add)
        rows = [f"| set (version {package['version']}) | feature | " + " | ".join(peers) + " |",
                "|---|---|" + "---|" * len(peers)]
        for case in package["sets"]:
            cells = [cell(case, fit(command, case)) for command in peers.values()]
            rows.append(f"| {case['name']} | {case['feature']}, {case['criterion']} | " + " | ".join(cells) + " |")
    text = "\n".join(rows) + "\n"
    print(text, end="")
    if options.output:
        Path(options.output).write_text(text)


if __name__ == "__main__":
    main()
