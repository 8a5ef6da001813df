#!/usr/bin/env python3
"""Writes sets.json: hard sets for fits, with answers from 60-digit arithmetic (needs mpmath and scipy).

Each set is made of a feature, a seed and what makes it hard. Its points are doubles. The least-squares answer is the
optimum for exactly these doubles: Gauss-Newton on the orthogonal distances in 60 digits, from the feature that the
points were made of, until its steps are below 1e-45. The circumscribed circle is found by trying all pairs and triples. A minimum zone is
found by linear programs in doubles, which name the points that hold it, and then by Newton's method in 60 digits on the
conditions of Karush, Kuhn and Tucker for these; the multipliers must be positive, all other points inside, and no
sampled step may narrow the zone.
"""
import json
import math
import random
from itertools import chain, combinations
from pathlib import Path

import mpmath
from mpmath import mp, mpf

mp.dps = 60
VERSION = "2.0"


def dot(a, b):
    return sum(x * y for x, y in zip(a, b))


def minus(a, b):
    return [x - y for x, y in zip(a, b)]


def unit(a):
    length = mpmath.sqrt(dot(a, a))
    return [x / length for x in a]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def across(axis):
    """Two unit vectors that make a frame with the axis."""
    least = min(range(3), key=lambda i: abs(axis[i]))
    u = unit(cross(axis, [mpf(i == least) for i in range(3)]))
    return u, cross(axis, u)


# A model is a list of numbers; residual(model, point) is the signed orthogonal distance. Directions are moved by two
# unknowns across them, and places of lines and planes likewise, so that no unknown is free.
class Line:
    def __init__(self, point, axis):
        self.point, self.axis = point, unit(axis)
        self.u, self.v = across(self.axis)

    size = 4

    def moved(self, step):
        point = [p + step[0] * a + step[1] * b for p, a, b in zip(self.point, self.u, self.v)]
        return type(self)(point, [d + step[2] * a + step[3] * b for d, a, b in zip(self.axis, self.u, self.v)])

    def residuals(self, p):
        d = minus(p, self.point)
        return [dot(d, self.u), dot(d, self.v)]

    def rows(self, p):
        t = dot(minus(p, self.point), self.axis)
        return [[mpf(-1), mpf(0), -t, mpf(0)], [mpf(0), mpf(-1), mpf(0), -t]]

    def result(self, points):
        mean = [sum(c) / len(points) for c in zip(*points)]
        t = dot(minus(mean, self.point), self.axis)
        return {"point": [p + t * a for p, a in zip(self.point, self.axis)], "direction": self.axis}


class Cylinder(Line):
    size = 5

    def __init__(self, point, axis, radius):
        super().__init__(point, axis)
        self.radius = radius

    def moved(self, step):
        line = Line(self.point, self.axis).moved(step)
        return Cylinder(line.point, line.axis, self.radius + step[4])

    def polar(self, p):
        d = minus(p, self.point)
        x, y = dot(d, self.u), dot(d, self.v)
        r = mpmath.sqrt(x * x + y * y)
        return x / r, y / r, r, dot(d, self.axis)

    def residuals(self, p):
        return [self.polar(p)[2] - self.radius]

    def rows(self, p):
        x, y, _, t = self.polar(p)
        return [[-x, -y, -t * x, -t * y, mpf(-1)]]

    def result(self, points):
        line = Line.result(self, points)
        return {"axis_point": line["point"], "direction": self.axis, "radius": self.radius}


class Cone(Cylinder):
    """The radius is that at the point of the axis; the angle is between the axis and the generators."""

    size = 6

    def __init__(self, point, axis, radius, angle):
        super().__init__(point, axis, radius)
        self.angle = angle

    def moved(self, step):
        line = Line(self.point, self.axis).moved(step)
        return Cone(line.point, line.axis, self.radius + step[4], self.angle + step[5])

    def residuals(self, p):
        _, _, r, t = self.polar(p)
        return [(r - self.radius) * mpmath.cos(self.angle) - t * mpmath.sin(self.angle)]

    def rows(self, p):
        x, y, r, t = self.polar(p)
        c, s = mpmath.cos(self.angle), mpmath.sin(self.angle)
        lean = -t * c - r * s  # of the distance from the axis, and of the height along it
        return [[-x * c, -y * c, x * lean, y * lean, -c, -(r - self.radius) * s - t * c]]

    def result(self, points):
        foot = Line.result(self, points)["point"]
        t = dot(minus(foot, self.point), self.axis)
        radius = self.radius + t * mpmath.tan(self.angle)
        height = radius / mpmath.tan(self.angle)
        return {"axis_point": foot, "direction": self.axis, "semi_angle": self.angle,
                "apex": [p - height * a for p, a in zip(foot, self.axis)]}


class Torus(Cylinder):
    """The point is the centre; the radius is that of the tube's centre line."""

    size = 7

    def __init__(self, point, axis, radius, minor):
        super().__init__(point, axis, radius)
        self.minor = minor

    def moved(self, step):
        point = [p + step[0] * a + step[1] * b + step[5] * c for p, a, b, c in zip(self.point, self.u, self.v, self.axis)]
        axis = [d + step[2] * a + step[3] * b for d, a, b in zip(self.axis, self.u, self.v)]
        return Torus(point, axis, self.radius + step[4], self.minor + step[6])

    def tube(self, p):
        """As `polar`, and the unit vector from the centre line of the tube, outwards and along the axis."""
        x, y, r, t = self.polar(p)
        s = mpmath.sqrt((r - self.radius) ** 2 + t * t)
        return x, y, r, t, (r - self.radius) / s, t / s, s

    def residuals(self, p):
        return [self.tube(p)[-1] - self.minor]

    def rows(self, p):
        x, y, r, t, out, up, _ = self.tube(p)
        turn = r * up - t * out
        return [[-x * out, -y * out, x * turn, y * turn, -out, -up, mpf(-1)]]

    def result(self, points):
        return {"centre": self.point, "direction": self.axis, "major_radius": self.radius, "minor_radius": self.minor}


class Ring(Torus):
    """Of the least minor radius about a circle: its distances, none of which has a sign."""

    size = 6

    def __init__(self, point, axis, radius):
        super().__init__(point, axis, radius, mpf(0))

    def moved(self, step):
        torus = Torus.moved(self, [*step, mpf(0)])
        return Ring(torus.point, torus.axis, torus.radius)

    def rows(self, p):
        return [row[:6] for row in Torus.rows(self, p)]

    def result(self, points):
        return {"centre": self.point, "direction": self.axis, "major_radius": self.radius,
                "minor_radius": worst(self, points)}


class Tube(Cylinder):
    """Of the least radius about a line: its distances, none of which has a sign."""

    size = 4

    def __init__(self, point, axis, radius=mpf(0)):
        super().__init__(point, axis, mpf(0))

    def moved(self, step):
        line = Line(self.point, self.axis).moved(step)
        return Tube(line.point, line.axis)

    def rows(self, p):
        return [row[:4] for row in Cylinder.rows(self, p)]

    def result(self, points):
        return Line.result(self, points)


class Plane:
    size = 3

    def __init__(self, point, axis):
        self.point, self.axis = point, unit(axis)
        self.u, self.v = across(self.axis)

    def moved(self, step):
        point = [p + step[0] * a for p, a in zip(self.point, self.axis)]
        return Plane(point, [d + step[1] * a + step[2] * b for d, a, b in zip(self.axis, self.u, self.v)])

    def residuals(self, p):
        return [dot(minus(p, self.point), self.axis)]

    def rows(self, p):
        d = minus(p, self.point)
        return [[mpf(-1), dot(d, self.u), dot(d, self.v)]]

    def result(self, points):
        mean = [sum(c) / len(points) for c in zip(*points)]
        t = dot(minus(mean, self.point), self.axis)
        return {"point": [m - t * a for m, a in zip(mean, self.axis)], "direction": self.axis}


class Sphere:
    size = 4

    def __init__(self, centre, radius):
        self.centre, self.radius = centre, radius

    def moved(self, step):
        return type(self)([c + s for c, s in zip(self.centre, step)], self.radius + step[self.size - 1])

    def residuals(self, p):
        d = minus(p, self.centre)
        return [mpmath.sqrt(dot(d, d)) - self.radius]

    def rows(self, p):
        return [[-x for x in unit(minus(p, self.centre))][: self.size - 1] + [mpf(-1)]]

    def result(self, points):
        return {"centre": self.centre, "radius": self.radius}


class Circle(Sphere):
    """In the plane z = 0."""

    size = 3

    def moved(self, step):
        return Circle([self.centre[0] + step[0], self.centre[1] + step[1], self.centre[2]], self.radius + step[2])


def least_squares(model, points):
    for _ in range(200):
        rows = [row for p in points for row in model.rows(p)]
        right = [-r for p in points for r in model.residuals(p)]
        normal = mpmath.matrix(model.size)
        gradient = mpmath.matrix(model.size, 1)
        for row, r in zip(rows, right):
            for i in range(model.size):
                gradient[i] += row[i] * r
                for j in range(i, model.size):
                    normal[i, j] += row[i] * row[j]
                    normal[j, i] = normal[i, j]
        step = list(mpmath.lu_solve(normal, gradient))
        model = model.moved(step)
        if max(abs(s) for s in step) < mpf(10) ** -45 * (1 + max(abs(c) for p in points for c in p)):
            return model
    raise ArithmeticError("no convergence")


def circumscribed(points):
    """In the plane z = 0, by all pairs and triples of the points that are not twice there."""
    distinct = [list(p) for p in sorted(set(map(tuple, points)))]
    best = None

    def consider(centre):
        nonlocal best
        square = max(dot(d, d) for d in (minus(p, centre) for p in distinct))
        if best is None or square < best[0]:
            best = (square, centre)

    for a, b in combinations(distinct, 2):
        consider([(x + y) / 2 for x, y in zip(a, b)])
    for a, b, c in combinations(distinct, 3):
        u, v = minus(b, a), minus(c, a)
        det = 2 * (u[0] * v[1] - u[1] * v[0])
        if det != 0:
            x = (v[1] * dot(u, u) - u[1] * dot(v, v)) / det
            y = (u[0] * dot(v, v) - v[0] * dot(u, u)) / det
            consider([a[0] + x, a[1] + y, a[2]])
    return {"centre": best[1], "radius": mpmath.sqrt(best[0])}


def worst(model, points):
    return max(abs(r) for p in points for r in model.residuals(p))


def holding(model, points):
    """The model at the minimum zone, to the digits of doubles, and the residuals that hold it, with their signs."""
    from scipy.optimize import linprog  # least squares do without it

    reach, trust, active = worst(model, points), 0.1, None
    size = max(mpmath.sqrt(dot(p, p)) for p in points)
    while trust > 1e-13:
        residuals = [float(model.residuals(p)[0] / reach) for p in points]
        rows = [[float(c) for c in model.rows(p)[0]] for p in points]
        # A step is as long as the farthest move of the surface by it.
        far = [max(abs(row[k]) for row in rows) for k in range(model.size)]
        table = [[c * sign / f for c, f in zip(row, far)] + [-1.0] for sign in (1, -1) for row in rows]
        limit = float(trust * size / reach)
        found = linprog([0.0] * model.size + [1.0], table, [-sign * r for sign in (1, -1) for r in residuals],
                        bounds=[(-limit, limit)] * model.size + [(0, None)])
        step = [mpf(x) * reach / mpf(f) for x, f in zip(found.x, far)]
        other = model.moved(step)
        if worst(other, points) < reach:
            model, reach = other, worst(other, points)
            active = [(i % len(points), 1 if i < len(points) else -1)
                      for i, m in enumerate(found.ineqlin.marginals) if m < -1e-9]
        else:
            trust /= 4
    return model, active


def held(model, points):
    """The model at the minimum zone, half of that zone, and how the model moves when one of the points that hold it
    after the other moves by 1 along its deviation."""
    mean = [sum(c) / len(points) for c in zip(*points)]
    near = [minus(p, mean) for p in points]
    for name in ("point", "centre"):
        if hasattr(model, name):
            setattr(model, name, minus(getattr(model, name), mean))
    model, active = holding(model, near)
    count, size = len(active), model.size
    multipliers, reach = [mpf(1) / count] * count, worst(model, near)

    def conditions(model, multipliers, reach):
        rows = [[sign * c for c in model.rows(near[i])[0]] for i, sign in active]
        return ([sign * model.residuals(near[i])[0] - reach for i, sign in active]
                + [sum(m * row[k] for m, row in zip(multipliers, rows)) for k in range(size)] + [sum(multipliers) - 1])

    unknowns, tiny = size + count + 1, mpf(10) ** -25
    for _ in range(60):
        here = conditions(model, multipliers, reach)

        def at(step):
            return model.moved(step[:size]), [m + s for m, s in zip(multipliers, step[size:-1])], reach + step[-1]

        jacobian = mpmath.matrix(unknowns)
        for j in range(unknowns):
            there = conditions(*at([tiny * (k == j) for k in range(unknowns)]))
            for i in range(unknowns):
                jacobian[i, j] = (there[i] - here[i]) / tiny
        step = list(mpmath.lu_solve(jacobian, -mpmath.matrix(here)))
        model, multipliers, reach = at(step)
        if max(abs(s) for s in step) < mpf(10) ** -45:
            break
    else:
        raise ArithmeticError("no convergence")
    rng = random.Random(1)
    assert min(multipliers) > 0 and worst(model, near) - reach < mpf(10) ** -45
    for _ in range(200):
        scale = mpf(10) ** rng.uniform(-9, -2)
        assert worst(model.moved([scale * rng.uniform(-1, 1) for _ in range(size)]), near) > reach
    for name in ("point", "centre"):
        if hasattr(model, name):
            setattr(model, name, [a + b for a, b in zip(getattr(model, name), mean)])
    inverse = jacobian**-1
    moves = [[-sign * inverse[k, i] for i, (_, sign) in enumerate(active)] for k in range(size)]
    return model, reach, moves


def minimum_zone(model, points):
    model, reach, _ = held(model, points)
    result = model.result(points)
    result.pop("radius", None)
    return {**result, "zone": 2 * reach}


def noise(rng, scale):
    return scale * rng.uniform(-1, 1)


def arc(rng, n, sweep, radius, centre, scatter, lobes=0):
    points = []
    for i in range(n):
        t = sweep * i / n
        r = radius + noise(rng, scatter) + 10 * scatter * math.cos(lobes * t) * (lobes > 0)
        points.append([centre[0] + r * math.cos(t), centre[1] + r * math.sin(t), 0.0])
    return points


def around(rng, n, axis, centre, radius_at, length, sweep, scatter):
    """Points about an axis: radius_at(height)."""
    axis = [float(a) for a in unit([mpf(a) for a in axis])]
    u, v = across([mpf(a) for a in axis])
    u, v = [float(a) for a in u], [float(a) for a in v]
    points = []
    for i in range(n):
        h, t = rng.uniform(-0.5, 0.5) * length, sweep * i / n
        r = radius_at(h) + noise(rng, scatter)
        points.append([c + h * a + r * (math.cos(t) * b + math.sin(t) * d) for c, a, b, d in zip(centre, axis, u, v)])
    return points


def wide(vector):
    return [mpf(c) for c in vector]


def sets():
    full = 2 * math.pi
    zero = [0.0, 0.0, 0.0]
    for degrees in (90, 10, 1, 0.1):
        rng = random.Random(int(degrees * 10))
        yield (f"circle, arc of {degrees} degrees", "short arc", "circle", "ls",
               arc(rng, 40, math.radians(degrees), 25.0, zero, 1e-9), Circle(wide(zero), mpf(25)))
    for far in (1e4, 1e6, 1e8):
        centre = [far, -far / 3, 0.0]
        yield (f"circle, {far:g} from the origin", "far from the origin", "circle", "ls",
               arc(random.Random(2), 40, full, 25.0, centre, 1e-3), Circle(wide(centre), mpf(25)))
        centre = [far, far, -far]
        rng = random.Random(3)
        cloud = []
        while len(cloud) < 40:
            d = [rng.gauss(0, 1) for _ in range(3)]
            r = (10 + noise(rng, 1e-3)) / math.sqrt(sum(x * x for x in d))
            cloud.append([c + r * x for c, x in zip(centre, d)])
        yield (f"sphere, {far:g} from the origin", "far from the origin", "sphere", "ls", cloud,
               Sphere(wide(centre), mpf(10)))
        axis = [1.0, 2.0, 3.0]
        yield (f"cylinder, {far:g} from the origin", "far from the origin", "cylinder", "ls",
               around(random.Random(4), 40, axis, centre, lambda h: 8.0, 30.0, full * 7, 1e-3),
               Cylinder(wide(centre), wide(axis), mpf(8)))
        line = [[c + t * a for c, a in zip(centre, axis)] for t in range(-20, 20)]
        yield (f"line, {far:g} from the origin", "far from the origin", "line", "ls",
               [[x + noise(rng, 1e-3) for x in p] for p in line], Line(wide(centre), wide(axis)))
        flat = [[centre[0] + rng.uniform(-9, 9), centre[1] + rng.uniform(-9, 9), centre[2] + noise(rng, 1e-3)]
                for _ in range(40)]
        yield (f"plane, {far:g} from the origin", "far from the origin", "plane", "ls", flat,
               Plane(wide(centre), wide([0.0, 0.0, 1.0])))
    for lobes in (2, 3, 9):
        yield (f"circle with {lobes} lobes", "lobed", "circle", "ls",
               arc(random.Random(lobes), 36, full, 25.0, zero, 1e-3, lobes), Circle(wide(zero), mpf(25)))
        yield (f"circle with {lobes} lobes", "lobed", "circle", "mc",
               arc(random.Random(lobes), 36, full, 25.0, zero, 1e-3, lobes), None)
    lattice = [[float(x), float(y), 0.0] for x in range(6) for y in range(6)]
    yield "square lattice", "lattice ties", "circle", "mc", lattice, None
    pythagorean = [[a * s, b * t, 0.0] for a, b in ((3, 4), (4, 3), (5, 0), (0, 5)) for s in (1, -1) for t in (1, -1)]
    yield "twelve points on a circle, four of them twice", "lattice ties", "circle", "mc", [list(map(float, p)) for p in pythagorean], None
    for copies in (3, 10):
        base = arc(random.Random(5), 8, full, 25.0, zero, 1e-2)
        yield (f"eight points, each {copies} times", "duplicates", "circle", "ls", base * copies, Circle(wide(zero), mpf(25)))
        yield f"eight points, each {copies} times", "duplicates", "circle", "mc", base * copies, None
    for degrees in (45, 1, 0.01):
        slope = math.tan(math.radians(degrees))
        axis = [0.3, -0.2, 1.0]
        yield (f"cone of {degrees} degrees", "near-degenerate cone", "cone", "ls",
               around(random.Random(6), 60, axis, [5.0, 6.0, 7.0], lambda h, k=slope: 20 + k * h, 20.0, full * 11, 1e-4),
               Cone(wide([5.0, 6.0, 7.0]), wide(axis), mpf(20), mpmath.radians(mpf(degrees))))
    for degrees in (30, 5):
        yield (f"cylinder, arc of {degrees} degrees", "short arc", "cylinder", "ls",
               around(random.Random(8), 60, [1.0, 1.0, 1.0], zero, lambda h: 20.0, 40.0, math.radians(degrees), 1e-8),
               Cylinder(wide(zero), wide([1.0, 1.0, 1.0]), mpf(20)))
    for gap in (1e-3, 1e-6):
        rng = random.Random(7)
        ends = [[x * 50 + gap * rng.uniform(-1, 1) for x in end] for end in ((1, 0, 0), (-1, 0, 0)) for _ in range(20)]
        yield (f"two clusters of {gap:g}", "clusters", "line", "ls", ends, Line(wide(zero), wide([1.0, 0.0, 0.0])))


def tube_points(rng, n, centre, axis, major, minor, sweep, girth, scatter):
    """Points of a torus: `sweep` around its axis and `girth` around its tube, about the outermost line."""
    axis = [float(a) for a in unit([mpf(a) for a in axis])]
    u, v = ([float(a) for a in b] for b in across([mpf(a) for a in axis]))
    points = []
    for _ in range(n):
        t, g = rng.uniform(0, sweep), rng.uniform(-0.5, 0.5) * girth
        r = minor + noise(rng, scatter)
        out, up = major + r * math.cos(g), r * math.sin(g)
        points.append([c + up * a + out * (math.cos(t) * b + math.sin(t) * d) for c, a, b, d in zip(centre, axis, u, v)])
    return points


def tori():
    full, axis = 2 * math.pi, [0.3, -0.2, 1.0]
    for name, kind, centre, sweep, girth, scatter in (
            ("torus, whole", "torus", [5.0, 6.0, 7.0], full, full, 1e-3),
            ("torus, 60 degrees of 120 degrees", "short arc", [5.0, 6.0, 7.0], full / 6, full / 3, 1e-6),
            ("torus, 1e+06 from the origin", "far from the origin", [1e6, 1e6, -1e6], full, full / 2, 1e-3)):
        points = tube_points(random.Random(9), 60, centre, axis, 20.0, 5.0, sweep, girth, scatter)
        yield name, kind, "torus", "ls", points, Torus(wide(centre), wide(axis), mpf(20), mpf(5))


def zones():
    full, zero, axis = 2 * math.pi, [0.0, 0.0, 0.0], [1.0, 2.0, 3.0]
    for far in (0.0, 1e6):
        centre = [far, -far / 3, 0.0]
        rng = random.Random(21)
        where = f"{far:g} from the origin" if far else "at the origin"
        kind = "far from the origin" if far else "minimum zone"
        yield (f"circle, {where}", kind, "circle", "mz", arc(rng, 40, full, 25.0, centre, 1e-3),
               Circle(wide(centre), mpf(25)))
        centre = [far, far, -far]
        ball = [[rng.gauss(0, 1) for _ in range(3)] for _ in range(40)]
        ball = [[c + (10 + noise(rng, 1e-3)) * x / math.hypot(*d) for c, x in zip(centre, d)] for d in ball]
        yield f"sphere, {where}", kind, "sphere", "mz", ball, Sphere(wide(centre), mpf(10))
        shaft = around(rng, 40, axis, centre, lambda h: 8.0, 30.0, full * 7, 1e-3)
        yield f"cylinder, {where}", kind, "cylinder", "mz", shaft, Cylinder(wide(centre), wide(axis), mpf(8))
        line = [[c + t * a + noise(rng, 1e-3) for c, a in zip(centre, axis)] for t in range(-20, 20)]
        yield f"line, {where}", kind, "line", "mz", line, Tube(wide(centre), wide(axis))
        flat = [[centre[0] + rng.uniform(-9, 9), centre[1] + rng.uniform(-9, 9), centre[2] + noise(rng, 1e-3)]
                for _ in range(40)]
        yield f"plane, {where}", kind, "plane", "mz", flat, Plane(wide(centre), wide([0.0, 0.0, 1.0]))
    for lobes in (2, 3, 9):
        yield (f"circle with {lobes} lobes", "lobed", "circle", "mz",
               arc(random.Random(lobes), 36, full, 25.0, zero, 1e-3, lobes), Circle(wide(zero), mpf(25)))
    for degrees in (90, 10):
        yield (f"circle, arc of {degrees} degrees", "short arc", "circle", "mz",
               arc(random.Random(degrees), 40, math.radians(degrees), 25.0, zero, 1e-6), Circle(wide(zero), mpf(25)))


def answer(criterion, start, points):
    if criterion == "mc":
        return circumscribed(points)
    return minimum_zone(start, points) if criterion == "mz" else least_squares(start, points).result(points)


def digits(value):
    if isinstance(value, list):
        return [digits(v) for v in value]
    return mpmath.nstr(value, 30, strip_zeros=False)


def main():
    package = {"version": VERSION, "unit": "any", "sets": []}
    for name, kind, feature, criterion, points, start in chain(sets(), tori(), zones()):
        exact = [wide(p) for p in points]
        result = answer(criterion, start, exact)
        mean = [math.fsum(c) / len(points) for c in zip(*points)]
        package["sets"].append({"name": name, "kind": kind, "feature": feature, "criterion": criterion,
                                "size": max(math.dist(p, mean) for p in points), "points": points,
                                "result": {key: digits(value) for key, value in result.items()}})
        print(f"{feature:9} {criterion} {name}")
    text = json.dumps(package)
    for mark in ('{"name"', '"points"', '"result"'):
        text = text.replace(mark, "\n" + mark)
    Path(__file__).with_name("sets.json").write_text(text + "\n")


if __name__ == "__main__":
    main()
