"""Score tables: what the reference test of this build measured, as parts of the bounds of data/reference/README.md."""

import os
import re
import subprocess
import tempfile
from pathlib import Path

CRITERIA = {"ls": "least squares", "mz": "minimum zone", "mc": "minimum circumscribed", "mi": "maximum inscribed"}
FEATURES = ["line", "plane", "circle", "ellipse", "hyperbola", "parabola", "sphere", "cylinder", "cone"]
# The quantities of the sets in columns.
COLUMNS = {
    "place": ["point", "centre", "axis_point", "apex", "origin"],
    "direction": ["direction", "normal", "axis_direction", "x_axis"],
    "size": ["radius", "parameters"],
    "angle": ["semi_angle_rad"],
    "form or zone": ["form", "zone"],
    "sum of squares": ["sumsq"],
}


def measure(build):
    """{(feature, criterion): (names of sets, comparisons, {column: worst part of the bound})}"""
    with tempfile.TemporaryDirectory() as scratch:
        file = Path(scratch) / "scores.tsv"
        subprocess.run([build / "tests/reference/nu_reference_test", "--gtest_brief=1"], check=True,
                       stdout=subprocess.DEVNULL, env={**os.environ, "NU_SCORES": str(file)})
        lines = file.read_text(encoding="utf-8").splitlines()
    column_of = {quantity: column for column, quantities in COLUMNS.items() for quantity in quantities}
    table = {}
    for line in lines:
        name, bounds, quantity, error, bound = line.split("\t")
        match = re.fullmatch(r"(?:lit-|hard-)?(ls|mz|mc|mi)-([a-z]+)(?:[23]d)?-\d+", name)
        if bounds != "full" or not match:
            continue
        criterion, feature = match.groups()
        sets, worst = table.setdefault((feature, criterion), (set(), {}))
        sets.add(name)
        column = column_of[quantity]
        part = float(error) / float(bound) if float(bound) > 0.0 else 0.0
        worst[column] = max(worst.get(column, 0.0), part)
    return table


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
    table = measure(build)
    note = "\nEach figure is the worst error over the sets as a part of the bound for full accuracy: 1 would be at the bound.\n"
    for feature in FEATURES:
        writer.write(f"include/scores-{feature}.md", "\n".join(rows(table, [feature])) + "\n" + note)
    total = sum(len(sets) for sets, _ in table.values())
    writer.write("include/scores.md", "\n".join(rows(table, FEATURES)) + "\n" + note + f"\n{total} sets in all.\n")
