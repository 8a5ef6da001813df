#!/usr/bin/env python3
"""Writes the sets of tori and waves, ls-torus-*, mc-torus-*, ls-sine-* and ls-cosine-* (needs mpmath and SciPy).

Models, points of tori, Gauss-Newton steps and conditions of an optimum in 60 digits are those of the hard sets,
data/scoreboard/generate.py. The points are doubles, and the results are the optimum for exactly these.
"""
import json
import math
import random
import sys
from pathlib import Path

import mpmath
from mpmath import mpf

HERE = Path(__file__).resolve().parent
sys.path.insert(0, str(HERE.parent / "scoreboard"))

from generate import Ring, Torus, dot, held, least_squares, tube_points, wide  # noqa: E402


class Wave:
    """y = a trig(b x + c) + d by the differences in y; x and the phase from the middle of the points."""

    size = 4

    def __init__(self, trig, slope, middle, unknowns):
        self.trig, self.slope, self.middle, self.unknowns = trig, slope, middle, unknowns

    def moved(self, step):
        return Wave(self.trig, self.slope, self.middle, [u + s for u, s in zip(self.unknowns, step)])

    def residuals(self, p):
        a, b, c, d = self.unknowns
        return [p[1] - a * self.trig(b * (p[0] - self.middle) + c) - d]

    def rows(self, p):
        a, b, c, _ = self.unknowns
        x = p[0] - self.middle
        slope = a * self.slope(b * x + c)
        return [[-self.trig(b * x + c), -slope * x, -slope, mpf(-1)]]

    def result(self, points):
        a, b, c, d = self.unknowns
        phase = (c - b * self.middle) % (2 * mpmath.pi)
        return {"amplitude": a, "frequency": b, "phase": phase, "offset": d}


def responses(model, points):
    """For each unknown, how it moves when one point after the other moves by 1 along its deviation; to first order."""
    rows = [model.rows(p)[0] for p in points]
    normal = mpmath.matrix(model.size)
    for row in rows:
        for i in range(model.size):
            for j in range(model.size):
                normal[i, j] += row[i] * row[j]
    inverse = normal**-1
    return [[dot(inverse[i, :], row) for row in rows] for i in range(model.size)]


def worst(*moves):
    """Of the components of a quantity that all points move at once."""
    return max(sum(abs(m) for m in component) for component in moves)


def world(model, moves):
    """The components along x, y and z of moves along the vectors of the model's frame."""
    frame = [model.u, model.v, model.axis][: len(moves)]
    return [[dot(move, [f[k] for f in frame]) for move in zip(*moves)] for k in range(3)]


def torus_sensitivity(model, points):
    return moved_torus(model, responses(model, points))


def moved_torus(model, r):
    return {"centre": worst(*world(model, [r[0], r[1], r[5]])), "axis_direction": worst(*world(model, r[2:4])),
            "major_radius": worst(r[4]), "minor_radius": worst(r[6]) if len(r) > 6 else 1.0}


def wave_sensitivity(model, points):
    a, b, c, d = responses(model, points)
    phase = [m - model.middle * k for m, k in zip(c, b)]
    return {"amplitude": worst(a), "frequency": worst(b), "phase": worst(phase), "offset": worst(d)}


def tori():
    turn, axis = 360.0, [0.3, -0.2, 1.0]
    for notes, centre, axis, major, minor, sweep, girth, scatter, n in (
            ("whole ring", [5.0, 6.0, 7.0], axis, 20.0, 5.0, turn, turn, 1e-3, 60),
            ("whole ring, rough", [0.0, 0.0, 0.0], [1.0, 1.0, 1.0], 20.0, 5.0, turn, turn, 0.05, 24),
            ("whole ring, near-perfect", [-30.0, 10.0, 2.0], axis, 12.5, 3.5, turn, turn, 1e-11, 50),
            ("slender ring", [5.0, 6.0, 7.0], [0.0, 1.0, 0.2], 200.0, 1.5, turn, turn, 1e-3, 60),
            ("groove: a third of the tube all around", [1.0, 2.0, 3.0], [0.1, 0.0, 1.0], 31.0, 4.0, turn, 120.0, 1e-4, 60),
            ("fillet: a quarter of the ring, a quarter of the tube", [5.0, 6.0, 7.0], axis, 20.0, 5.0, 90.0, 90.0, 1e-5, 60),
            ("sector of 30 degrees, half of the tube", [5.0, 6.0, 7.0], axis, 20.0, 5.0, 30.0, 180.0, 1e-6, 60),
            ("groove, 100000 from the origin", [1e5, 1e5, -1e5], axis, 20.0, 5.0, turn, 150.0, 1e-3, 60)):
        points = tube_points(random.Random(9), n, centre, axis, major, minor, math.radians(sweep), math.radians(girth), scatter)
        yield "torus", notes, points, Torus(wide(centre), wide(axis), mpf(major), mpf(minor)), torus_sensitivity


def minimum_tori():
    """The thinnest tubes that hold all points, from the best tube of least squares."""
    turn, axis = 360.0, [0.3, -0.2, 1.0]
    for notes, centre, axis, major, minor, sweep, girth, scatter, n in (
            ("whole ring", [5.0, 6.0, 7.0], axis, 20.0, 5.0, turn, turn, 1e-3, 60),
            ("whole ring, rough", [0.0, 0.0, 0.0], [1.0, 1.0, 1.0], 20.0, 5.0, turn, turn, 0.05, 24),
            ("slender ring", [5.0, 6.0, 7.0], [0.0, 1.0, 0.2], 200.0, 1.5, turn, turn, 1e-3, 60),
            ("sector of 90 degrees", [5.0, 6.0, 7.0], axis, 20.0, 5.0, 90.0, turn, 1e-3, 60),
            ("whole ring, 100000 from the origin", [1e5, 1e5, -1e5], axis, 20.0, 5.0, turn, turn, 1e-3, 60)):
        points = tube_points(random.Random(9), n, centre, axis, major, minor, math.radians(sweep), math.radians(girth), scatter)
        start = least_squares(Torus(wide(centre), wide(axis), mpf(major), mpf(minor)), [wide(p) for p in points])
        yield notes, points, Ring(start.point, start.axis, start.radius)


def waves():
    sine, cosine = (mpmath.sin, mpmath.cos), (mpmath.cos, lambda t: -mpmath.sin(t))
    for name, (trig, slope), notes, start, length, a, b, c, d, scatter, n in (
            ("sine", sine, "three periods at uneven places", 0.0, 30.0, 1.2, 0.63, 0.8, 4.0, 1e-3, 40),
            ("sine", sine, "six tenths of a period", 2.0, 60.0, 0.7, 0.0628, 1.9, -0.3, 1e-6, 50),
            ("sine", sine, "20000 from the origin in x, 1000 in y", 2e4, 90.0, 0.05, 0.4, 2.5, 1e3, 1e-4, 80),
            ("sine", sine, "forty periods", -50.0, 100.0, 0.3, 2.51, 5.1, 0.0, 1e-3, 160),
            ("sine", sine, "near-perfect", 0.0, 20.0, 0.8, 0.9, 4.0, 1.0, 1e-13, 30),
            ("cosine", cosine, "runout of an eccentric over one turn in degrees", 0.0, 360.0, 0.012, math.pi / 180,
             1.1, 0.25, 2e-4, 36),
            ("cosine", cosine, "rough", 0.0, 25.0, 1.0, 1.1, 3.0, 0.0, 0.2, 60),
            ("cosine", cosine, "seven points", -3.0, 8.0, 0.5, 0.9, 2.0, 10.0, 1e-3, 7)):
        rng, points = random.Random(11), []
        for i in range(n):
            x = start + length * (i + rng.uniform(0.1, 0.9)) / n
            points.append([x, a * float(trig(b * (x - start) + c)) + d + scatter * rng.uniform(-1, 1), 0.0])
        middle = mpf(start + length / 2)
        unknowns = [mpf(a), mpf(b), mpf(b) * mpf(length) / 2 + mpf(c), mpf(d)]
        yield name, notes, points, Wave(trig, slope, middle, unknowns), wave_sensitivity


def canonical(result):
    """The component of largest magnitude of the axis is positive."""
    if "direction" in result:
        axis = result.pop("direction")
        sign = mpmath.sign(max(axis, key=abs))
        result["axis_direction"] = [sign * c for c in axis]
    return result


def digits(value):
    """More than a double has, so that a set can be moved to another place; the marks leave the text later."""
    return [digits(v) for v in value] if isinstance(value, list) else f"<{mpmath.nstr(value, 25)}>"


def write(name, feature, criterion, notes, points, result, sensitivity, **more):
    exact = [wide(p) for p in points]
    mean = [sum(c) / len(exact) for c in zip(*exact)]
    far = max(mpmath.sqrt(sum((x - m) ** 2 for x, m in zip(p, mean))) for p in exact)
    given = {"name": name, "feature": feature, "criterion": criterion, "points": points, "result": {key: digits(v) for key, v in result.items()},
             "notes": notes, "source": "generated", "size": float(max(far, result.get("major_radius", 0))),
             "sensitivity": {key: float(v) for key, v in sensitivity.items()}, **more}
    text = json.dumps(given).replace('"<', "").replace('>"', "")
    for key in ("points", "result", "notes"):
        text = text.replace(f'"{key}"', f'\n"{key}"')
    (HERE / f"{name}.json").write_text(text + "\n", encoding="utf-8")
    print(name, notes, given["sensitivity"])


def main():
    counts = {}
    for feature, notes, points, start, sensitivity in [*tori(), *waves()]:
        exact = [wide(p) for p in points]
        model = least_squares(start, exact)
        deviations = [model.residuals(p)[0] for p in exact]
        result = {**canonical(model.result(exact)), "form": max(deviations) - min(deviations), "sumsq": dot(deviations, deviations)}
        counts[feature] = counts.get(feature, 0) + 1
        write(f"ls-{feature}-{counts[feature]:02}", feature, "least-squares", notes, points, result, sensitivity(model, exact))
    for number, (notes, points, start) in enumerate(minimum_tori(), 1):
        exact = [wide(p) for p in points]
        model, _, moves = held(start, exact)
        write(f"mc-torus-{number:02}", "torus", "minimum-circumscribed", f"{notes}; {len(moves[0])} contacts", points,
              canonical(model.result(exact)), moved_torus(model, moves), arguments={"tol": 1e-12, "maxiter": 1000})


if __name__ == "__main__":
    main()
