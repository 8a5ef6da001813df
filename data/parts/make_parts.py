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


def sleeve():
    """A honed sleeve on a form tester: 16 turns up the bore, columns for turntable and lift beside the coordinates."""
    noise = random.Random(1205)
    radius, turns, count = 22.0124, 16, 180
    frame = frame_of((0.0021, 0.0034, 1.0), (1.0, 0.0, 0.0))
    lines = ["C/deg\tlift/mm\tx\ty\tz"]
    for turn in range(turns):
        lift = 4.0 + 3.6 * turn
        for k in range(count):
            degrees = 360.0 * k / count
            t = lift / 31.0 - 1.0
            form = 2.4 * t * t - 1.1 * t  # barrelled, and wider below
            form += 1.7 * math.cos(math.radians(2.0 * degrees - 50.0)) * (1.0 - 0.4 * t)  # oval
            form += 0.8 * math.cos(math.radians(3.0 * degrees + 17.0))  # three jaws
            form += noise.gauss(0.0, 0.15)
            r = radius + form * MICROMETRE
            p = place((60.5021, -18.2214, -75.0), frame,
                      (r * math.cos(math.radians(degrees)), r * math.sin(math.radians(degrees)), lift))
            lines.append(f"{degrees:.1f}\t{lift:.2f}\t" + "\t".join(f"{c:.5f}" for c in p))
    write("sleeve.txt", lines)


def pin():
    """A taper pin 1:50 between centres, probed along 24 generators from the small end to the large one."""
    noise = random.Random(1206)
    semi_angle = math.atan(0.01)
    frame = frame_of((0.9962, 0.0871, 0.0012), (0.0, 0.0, 1.0))
    lines = ["; taper pin 10 x 70, generators from the small end", "X,Y,Z"]
    for generator in range(24):
        degrees = 15.0 * generator
        for k in range(45):
            s = 1.0 + 68.0 * k / 44
            t = s / 35.0 - 1.0
            form = 1.6 * (1.0 - t * t) - 0.7  # bellied by the grinding
            form += 0.9 * math.cos(math.radians(5.0 * degrees + 40.0 * t))  # lobes of centreless grinding
            form += 1.8 * dent(math.hypot(s - 22.0, 0.1 * (degrees - 120.0)), 6.0)  # a burr, pressed on
            form += noise.gauss(0.0, 0.13)
            r = 5.0 + s * math.tan(semi_angle) + form * MICROMETRE * math.cos(semi_angle)
            p = place((141.2203, 77.9135, 40.0061), frame,
                      (r * math.cos(math.radians(degrees)), r * math.sin(math.radians(degrees)),
                       s - form * MICROMETRE * math.sin(semi_angle)))
            lines.append(",".join(f"{c:.5f}" for c in p))
    write("pin.csv", lines)


def flange():
    """The outline of an oval flange, traced once around in steps of half a degree; the trace stops at the lug."""
    noise = random.Random(1207)
    a, b = 48.2, 31.4
    frame = frame_of((0.0, 0.0, 1.0), (math.cos(0.41), math.sin(0.41), 0.0))
    lines = ["# oval flange, outline at mid height", "# X Y Z"]
    for k in range(720):
        u = math.radians(0.5 * k)
        if 4.05 < u < 4.35:
            continue
        nx, ny = unit([math.cos(u) / a, math.sin(u) / b])
        form = 6.0 * math.cos(3.0 * u - 0.8) + 2.5 * math.cos(8.0 * u) + 9.0 * dent(u - 1.2, 0.09)
        form += noise.gauss(0.0, 0.8)
        p = place((210.4402, 95.3817, 12.5), frame,
                  (a * math.cos(u) + nx * form * MICROMETRE, b * math.sin(u) + ny * form * MICROMETRE, 0.0))
        lines.append(" ".join(f"{c:.4f}" for c in p))
    write("flange.xyz", lines)


def reflector():
    """The section of a parabolic reflector through its axis, one trace over the vertex."""
    noise = random.Random(1208)
    f = 18.35
    frame = frame_of((0.0, 1.0, 0.0), (0.02, 0.0, 0.9998))
    lines = ["x;y;z"]
    for k in range(401):
        y = -40.0 + 0.2 * k
        nx, ny = unit([-2.0 * f, y])
        form = 3.5 * math.cos(2.0 * math.pi * y / 26.0) + noise.gauss(0.0, 0.5)
        p = place((5.1183, 0.0, -61.7402), frame,
                  (y * y / (4.0 * f) + nx * form * MICROMETRE, y + ny * form * MICROMETRE, 0.0))
        lines.append(";".join(f"{c:.5f}" for c in p))
    write("reflector.csv", lines)


def roller():
    """A feed roller for bars, a hyperboloid: both flanks in the section along its axis, from a contour tracer."""
    noise = random.Random(1209)
    a, b = 12.4, 55.0
    frame = frame_of((0.0, 1.0, 0.0), (0.0, 0.0, 1.0))
    lines = ["feed roller 25, contour right and left", "point x y z"]
    for branch in (1.0, -1.0):
        for k in range(161):
            t = -0.62 + 1.24 * k / 160
            x, y = branch * a * math.cosh(t), b * math.sinh(t)
            nx, ny = unit([-x / a ** 2, y / b ** 2])
            form = 5.0 * math.cos(9.0 * t + branch) + noise.gauss(0.0, 0.9)
            p = place((-4.8813, 0.0, 33.2071), frame, (x + nx * form * MICROMETRE, y + ny * form * MICROMETRE, 0.0))
            lines.append(f"{len(lines) - 1} " + " ".join(f"{c:.4f}" for c in p))
    write("roller.txt", lines)


def ring():
    """The hardened master of an O-ring, a torus: sections all around the tube, one every four degrees of a turntable."""
    noise = random.Random(1210)
    major, minor = 34.5, 2.61
    frame = frame_of((-0.0031, 0.0017, 1.0), (1.0, 0.0, 0.0))
    lines = ["N X Y Z"]
    for k in range(90):
        around = math.radians(4.0 * k)
        for j in range(16):
            tube = math.radians(22.5 * j + 2.0 * (k % 2))
            form = 2.2 * math.cos(2.0 * around - 0.7) + 1.6 * math.cos(tube) * math.cos(5.0 * around)
            form += 0.9 * math.cos(2.0 * tube + 0.3)
            form += noise.gauss(0.0, 0.3)
            r = minor + form * MICROMETRE
            rho = major + r * math.cos(tube)
            p = place((-12.3304, 71.8816, 22.4075), frame,
                      (rho * math.cos(around), rho * math.sin(around), r * math.sin(tube)))
            lines.append(f"{len(lines)} " + " ".join(f"{c:.5f}" for c in p))
    write("ring.txt", lines)


def carrier():
    """A bearing carrier on a coordinate measuring machine, all of its features in one file."""
    noise = random.Random(1211)
    frame = frame_of((0.012, -0.021, 1.0), (0.97, 0.24, 0.0))
    lines = ["Carrier 0815, machine 3", "Feature;X [mm];Y [mm];Z [mm]"]

    def probe(feature, local):
        p = place((311.2046, 158.7713, 92.4401), frame, local)
        lines.append(f"{feature};" + ";".join(f"{c:.5f}" for c in p))

    def off(sigma=0.4):
        return noise.gauss(0.0, sigma) * MICROMETRE

    for i in range(13):
        for j in range(9):
            x, y = 6.0 + 9.0 * i, 5.0 + 10.0 * j
            if math.hypot(x - 60.0, y - 45.0) > 24.0:
                probe("A", (x, y, off()))
    for i in range(16):
        for j in range(3):
            probe("B", (off(), 5.0 + 5.0 * i, 4.0 + 5.0 * j))
            probe("C", (6.0 + 7.0 * i, 0.2 * MICROMETRE * (4.0 + 5.0 * j) + off(), 4.0 + 5.0 * j))
    for i in range(13):
        for j in range(9):
            x, y = 6.0 + 9.0 * i, 5.0 + 10.0 * j
            if math.hypot(x - 60.0, y - 45.0) > 24.0:
                probe("face", (x, y, 18.006 + 0.05 * MICROMETRE * x + off()))
    for k in range(5):  # it leans by 0.4 micrometres per millimetre towards x
        for i in range(72):
            angle, z = math.radians(5.0 * i), 2.0 + 3.5 * k
            r = 20.0061 + 1.2 * MICROMETRE * math.cos(3.0 * angle + 0.4) + off(0.3)
            probe("seat", (60.004 + 0.4 * MICROMETRE * z + r * math.cos(angle), 44.997 + r * math.sin(angle), z))
    for k in range(4):
        for i in range(48):
            angle, z = math.radians(7.5 * i), 24.0 + 4.0 * k
            r = 14.9952 + off(0.3)
            probe("pilot", (60.007 + r * math.cos(angle), 44.999 + r * math.sin(angle), z))
    for k in range(4):
        for i in range(36):
            angle, t = math.radians(10.0 * i), 2.0 * k
            r = 10.0 + 0.5 * t + off(0.3)
            probe("chamfer", (60.006 + r * math.cos(angle), 44.998 + r * math.sin(angle), 38.0 + t))
    for name, x, y in (("dowel 1", 15.006, 14.995), ("dowel 2", 105.002, 75.009)):
        for i in range(60):
            angle = math.radians(6.0 * i)
            r = 4.0052 + 0.6 * MICROMETRE * math.cos(2.0 * angle) + off(0.3)
            probe(name, (x + r * math.cos(angle), y + r * math.sin(angle), 9.0 + off()))
    for i in range(720):
        angle = math.radians(0.5 * i)
        form = 2.1 * math.cos(3.0 * angle) + 0.8 * math.cos(120.0 * angle) + noise.gauss(0.0, 0.15)
        r = 20.0061 + form * MICROMETRE
        probe("seat at 9", (60.0076 + r * math.cos(angle), 44.997 + r * math.sin(angle), 9.0))
    write("carrier.csv", lines)


if __name__ == "__main__":
    bore()
    edge()
    plate()
    ball()
    sleeve()
    pin()
    flange()
    reflector()
    roller()
    ring()
    carrier()
