#!/usr/bin/env python3
"""An adapter of the scoreboard: least squares by SciPy (Levenberg-Marquardt of MINPACK), lines and planes by numpy's
singular vectors. Reads and prints what fit_nu.cpp does."""
import sys

import numpy as np
from scipy.optimize import least_squares

TIGHT = {"method": "lm", "xtol": 1e-15, "ftol": 1e-15, "gtol": 1e-15, "max_nfev": 20000}


def show(name, value):
    print(name, *(f"{v:.17g}" for v in np.atleast_1d(value)))


def round_feature(points, mean, used):
    d = (points - mean)[:, :used]
    system = np.hstack([2 * d, np.ones((len(d), 1))])
    start = np.linalg.lstsq(system, (d * d).sum(1), rcond=None)[0]
    start[used] = np.sqrt(start[used] + (start[:used] ** 2).sum())
    found = least_squares(lambda x: np.linalg.norm(d - x[:used], axis=1) - x[used], start, **TIGHT).x
    centre = mean.copy()
    centre[:used] += found[:used]
    show("centre", centre)
    show("radius", found[used])


def direction(angles):
    return np.array([np.cos(angles[0]) * np.cos(angles[1]), np.sin(angles[0]) * np.cos(angles[1]), np.sin(angles[1])])


def axial(points, mean, is_cone):
    d = points - mean

    def residuals(x):
        axis = direction(x[3:5])
        h = (d - x[:3]) @ axis
        r = np.linalg.norm((d - x[:3]) - np.outer(h, axis), axis=1)
        return (r - x[5]) * np.cos(x[6]) - h * np.sin(x[6]) if is_cone else r - x[5]

    best = None
    for lead in np.vstack([np.linalg.svd(d)[2], np.eye(3)]):
        for tilt in (0.2, -0.2) if is_cone else (0.0,):
            start = np.concatenate([np.zeros(3), [np.arctan2(lead[1], lead[0]), np.arcsin(np.clip(lead[2], -1, 1))],
                                    [np.linalg.norm(np.cross(d, lead), axis=1).mean()], [tilt] if is_cone else []])
            found = least_squares(residuals, start, **TIGHT)
            if best is None or found.cost < best.cost:
                best = found
    x, axis = best.x, direction(best.x[3:5])
    show("direction", axis)
    if is_cone:
        show("apex", mean + x[:3] - x[5] / np.tan(x[6]) * axis)
        show("semi_angle", abs(x[6]))
    else:
        show("axis_point", mean + x[:3])
        show("radius", abs(x[5]))


def main():
    feature, criterion, _ = sys.stdin.readline().split()
    points = np.loadtxt(sys.stdin)
    mean = points.mean(0)
    if criterion != "ls":
        print("none")
    elif feature in ("line", "plane"):
        show("point", mean)
        show("direction", np.linalg.svd(points - mean)[2][0 if feature == "line" else 2])
    elif feature in ("circle", "sphere"):
        round_feature(points, mean, 2 if feature == "circle" else 3)
    else:
        axial(points, mean, feature == "cone")


if __name__ == "__main__":
    main()
