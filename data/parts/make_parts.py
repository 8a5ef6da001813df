#!/usr/bin/env python3
"""Writes the point files of this directory. README.md tells what each imitates and lists every constant.

The files are the same on every run: each part has a seed of its own, and only the standard library is used.
"""

import math
import random
from pathlib import Path

HERE = Path(__file__).parent
MICROMETRE = 1e-3


def unit(v):
    length = math.sqrt(sum(c * c for c in v))
    return [c / length for c in v]


def cross(a, b):
    return [a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]]


def place(origin, axes, local):
    """The point with coordinates `local` in the frame of `axes` at `origin`."""
    return [origin[i] + sum(local[k] * axes[k][i] for k in range(3)) for i in range(3)]


def frame_of(normal, x_hint):
    z = unit(normal)
    y = unit(cross(z, x_hint))
    return [cross(y, z), y, z]


def dent(distance, half_width):
    """A smooth bump of height 1 that ends at `half_width`."""
    return math.cos(0.5 * math.pi * distance / half_width) ** 2 if abs(distance) < half_width else 0.0


def write(name, lines, line_end="\n", encoding="utf-8"):
    (HERE / name).write_bytes((line_end.join(lines) + line_end).encode(encoding))


def bore():
    """A reamed bore, scanned once around at one depth; export of a German workstation."""
    noise = random.Random(1201)
    radius, count = 12.5038, 3600
    frame = frame_of((0.0061, -0.0043, 1.0), (1.0, 0.0, 0.0))
    lobes = [  # undulations per turn, amplitude in micrometres, phase in degrees
        (2, 0.45, 31.0), (3, 1.85, 74.0), (5, 0.95, 12.0), (7, 0.28, 151.0), (24, 0.22, 0.0), (57, 0.14, 40.0)]
    lines = ["Messprotokoll Bohrung D25 H7, Schnitt 2", "Punkt;X [mm];Y [mm];Z [mm]"]
    for i in range(count):
        degrees = 360.0 * i / count
        form = sum(a * math.cos(math.radians(n * degrees - phase)) for n, a, phase in lobes)
        form += 1.3 * dent(degrees - 228.0, 2.2)  # a scratch goes into the material
        form += noise.gauss(0.0, 0.11)
        r = radius + form * MICROMETRE
        across = noise.gauss(0.0, 0.9) * MICROMETRE
        p = place((412.38517, 287.14263, -36.51408), frame,
                  (r * math.cos(math.radians(degrees)), r * math.sin(math.radians(degrees)), across))
        lines.append(f"{i + 1};" + ";".join(f"{c:.5f}".replace(".", ",") for c in p))
    write("bore.csv", lines, "\r\n", "utf-8-sig")


def edge():
    """A ground edge in the image of a video measuring machine: one focus height, the points of many frames."""
    noise = random.Random(1202)
    length, count = 80.0, 1601
    along = math.radians(17.4)
    lines = ["# edge of gauge 4711, transmitted light, 2x", "# X Y Z / mm"]
    for i in range(count):
        s = length * i / (count - 1)
        t = 2.0 * s / length - 1.0
        form = 3.1 * (1.0 - t * t)  # it is hollow: the grinding wheel was dressed so
        form += 0.8 * math.sin(2.0 * math.pi * s / 11.5 + 0.6)  # chatter
        form += 0.3 * math.sin(2.0 * math.pi * s / 2.3)
        form -= 6.5 * dent(s - 61.7, 0.35)  # a nick
        form += noise.gauss(0.0, 0.32)
        d = form * MICROMETRE
        x = 154.2087 + s * math.cos(along) - d * math.sin(along)
        y = -61.9342 + s * math.sin(along) + d * math.cos(along)
        lines.append(f"{x:11.5f} {y:11.5f} {38.25:9.4f}")
    write("edge.xyz", lines)


def plate():
    """A lapped plate of 300 mm x 200 mm, scanned in 41 lines with the scanning direction alternating."""
    noise = random.Random(1203)
    columns, rows = 61, 41
    frame = frame_of((-0.00035, 0.00062, 1.0), (0.99985, 0.01745, 0.0))
    normal = " ".join(f"{c:.6f}" for c in frame[2])
    lines = ["SCAN    PLATE 300x200", "DATE    17-MAR-2021", "UNITS   MM", "POINTS  2501", "X Y Z I J K"]
    for row in range(rows):
        order = range(columns) if row % 2 == 0 else range(columns - 1, -1, -1)
        for column in order:
            u = -145.0 + 290.0 * column / (columns - 1) + noise.uniform(-0.4, 0.4)
            v = -95.0 + 190.0 * row / (rows - 1) + noise.uniform(-0.05, 0.05)
            a, b = u / 145.0, v / 95.0
            form = 1.9 * a * b  # twist
            form += 1.1 * (a * a - 0.8 * b * b)  # saddle
            form += 0.6 * math.sin(2.0 * math.pi * u / 58.0 + 0.4) * math.cos(2.0 * math.pi * v / 76.0)  # lapping
            form += 1.4 * dent(math.hypot(u - 62.0, v + 31.0), 14.0)  # a raised spot
            form += noise.gauss(0.0, 0.16)
            p = place((520.1274, 344.8812, 118.4031), frame, (u, v, form * MICROMETRE))
            lines.append(" ".join(f"{c:12.5f}" for c in p) + " " + normal)
    write("plate.asc", lines)


def ball():
    """A reference ball of 25 mm on a stem, probed on circles of latitude; the lobes are those of the probe."""
    noise = random.Random(1204)
    radius, rings = 12.50007, 27
    lines = ["index,x,y,z"]
    for ring in range(rings):
        latitude = math.radians(90.0 - 125.0 * ring / (rings - 1))  # the stem leaves no room below -35 degrees
        count = max(1, round(96 * math.cos(latitude)))
        for k in range(count):
            longitude = 2.0 * math.pi * (k + 0.5 * (ring % 2)) / count
            side = math.cos(latitude)
            form = 0.62 * side ** 3 * math.cos(3.0 * longitude - 0.5)  # three contacts of a kinematic probe
            form += 0.35 * (1.5 * math.sin(latitude) ** 2 - 0.5)  # it is softer sideways
            form += 0.18 * side ** 2 * math.cos(2.0 * longitude + 1.1)
            form += noise.gauss(0.0, 0.09)
            r = radius + form * MICROMETRE
            p = (-83.41172 + r * side * math.cos(longitude), 215.60458 + r * side * math.sin(longitude),
                 74.98316 + r * math.sin(latitude))
            lines.append(f"{len(lines)}," + ",".join(f"{c:.6f}" for c in p))
    write("ball.csv", lines)


if __name__ == "__main__":
    bore()
    edge()
    plate()
    ball()
