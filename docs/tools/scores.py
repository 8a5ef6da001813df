"""Score tables: what the reference test of this build measured, as parts of the bounds of data/reference/README.md."""

import json
import math
import os
import re
import subprocess
import tempfile
from pathlib import Path

CRITERIA = {"ls": "least squares", "mz": "minimum zone", "mc": "minimum circumscribed", "mi": "maximum inscribed"}
FEATURES = ["line", "plane", "circle", "ellipse", "hyperbola", "parabola", "sphere", "cylinder", "cone", "torus", "wave", "polynomial"]
WAVES = {"sine": "wave", "cosine": "wave"}
# The quantities of the sets in columns.
COLUMNS = {
    "place": ["point", "centre", "axis_point", "apex", "origin"],
    "direction": ["direction", "normal", "axis_direction", "x_axis"],
    "size": ["radius", "major_radius", "minor_radius", "parameters", "coefficients", "amplitude", "frequency", "offset"],
    "angle": ["semi_angle_rad", "phase"],
    "form or zone": ["form", "zone"],
    "sum of squares": ["sumsq", "residual_sum"],
}


def compare(build):
    """(set, quantity, error, bound) of every comparison of the reference test with the bounds for full accuracy."""
    with tempfile.TemporaryDirectory() as scratch:
        file = Path(scratch) / "scores.tsv"
        subprocess.run([build / "tests/reference/nu_reference_test", "--gtest_brief=1"], check=True,
                       stdout=subprocess.DEVNULL, env={**os.environ, "NU_SCORES": str(file)})
        lines = file.read_text(encoding="utf-8").splitlines()
    for line in lines:
        name, bounds, quantity, error, bound = line.split("\t")
        if bounds == "full":
            yield name, quantity, float(error), float(bound)


def worst_of(comparisons):
    """{(feature, criterion): (names of sets, {column: worst part of the bound})}"""
    column_of = {quantity: column for column, quantities in COLUMNS.items() for quantity in quantities}
    table = {}
    for name, quantity, error, bound in comparisons:
        match = re.fullmatch(r"(?:lit-|hard-)?(ls|mz|mc|mi)-([a-z]+)(?:[23]d)?-\d+", name)
        if not match:
            continue
        criterion, feature = match[1], WAVES.get(match[2], match[2])
        sets, worst = table.setdefault((feature, criterion), (set(), {}))
        sets.add(name)
        column = column_of[quantity]
        worst[column] = max(worst.get(column, 0.0), error / bound if bound > 0.0 else 0.0)
    return table


def published(comparisons, data):
    """Rows for the polynomials whose coefficients others certified: correct digits of the library's ones."""
    yield "| Set | Degree | Digits of the coefficients | Digits of the sum of squares |"
    yield "|---|---|---|---|"
    errors = {(name, quantity): error for name, quantity, error, _ in comparisons}
    for file in sorted(data.glob("lit-ls-polynomial-*.json")):
        given = json.loads(file.read_text(encoding="utf-8"))
        result = given["result"]
        # The fit drops directions of the others, which have no certified answer then.
        if result["coefficients"] != result["full_rank_coefficients"]:
            continue
        largest = max(abs(c) for c in result["coefficients"])
        cells = [given["notes"].split(",")[0], str(result["degree"])]
        for quantity, size in (("coefficients", largest), ("residual_sum", result["residual_sum"])):
            error = errors[given["name"], quantity]
            cells.append("all" if error == 0.0 else f"{-math.log10(error / size):.1f}")
        yield "| " + " | ".join(cells) + " |"


def rows(table, features):
    used = [c for c in COLUMNS if any(c in worst for (feature, _), (_, worst) in table.items() if feature in features)]
    head = (["Feature"] if len(features) > 1 else []) + ["Criterion", "Sets"] + used
    yield "| " + " | ".join(head) + " |"
    yield "|" + "---|" * len(head)
    for feature in features:
        for criterion, title in CRITERIA.items():
            if (feature, criterion) not in table:
                continue
            sets, worst = table[feature, criterion]
            cells = [feature] if len(features) > 1 else []
            cells += [title, str(len(sets))] + [f"{worst[c]:.3f}" if c in worst else "" for c in used]
            yield "| " + " | ".join(cells) + " |"


def generate(writer, build):
    comparisons = list(compare(build))
    table = worst_of(comparisons)
    note = "\nEach figure is the worst error over the sets as a part of the bound for full accuracy: 1 would be at the bound.\n"
    missing = [feature for feature in FEATURES if (feature, "ls") not in table]
    if missing:
        raise SystemExit(f"The reference test has no scores of {', '.join(missing)}: build it anew")
    for feature in FEATURES:
        writer.write(f"include/scores-{feature}.md", "\n".join(rows(table, [feature])) + "\n" + note)
    total = sum(len(sets) for sets, _ in table.values())
    writer.write("include/scores.md", "\n".join(rows(table, FEATURES)) + "\n" + note + f"\n{total} sets in all.\n")
    writer.write("include/published.md", "\n".join(published(comparisons, Path("data/reference"))) + "\n")
