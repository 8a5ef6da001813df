#!/usr/bin/env python3
"""An adapter of the scoreboard: least squares by SciPy (Levenberg-Marquardt of MINPACK), lines and planes by numpy's
singular vectors; minimum zones by its sequential quadratic programming (SLSQP) from there, with the reach of the
residuals as one more unknown. Reads and prints what fit_nu.cpp does."""
import sys

import numpy as np
from scipy.optimize import least_squares, minimize

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


def torus(points, mean):
    d = points - mean

    def residuals(x):
        axis = direction(x[3:5])
        h = (d - x[:3]) @ axis
        r = np.linalg.norm((d - x[:3]) - np.outer(h, axis), axis=1)
        return np.hypot(r - x[5], h) - x[6]

    best = None
    for lead in np.vstack([np.linalg.svd(d)[2], np.eye(3)]):
        h = d @ lead
        r = np.linalg.norm(d - np.outer(h, lead), axis=1)
        start = np.concatenate([np.zeros(3), [np.arctan2(lead[1], lead[0]), np.arcsin(np.clip(lead[2], -1, 1))],
                                [r.mean(), max(np.ptp(h) / 2, 1e-3)]])
        found = least_squares(residuals, start, **TIGHT)
        if best is None or found.cost < best.cost:
            best = found
    show("centre", mean + best.x[:3])
    show("direction", direction(best.x[3:5]))
    show("major_radius", abs(best.x[5]))
    show("minor_radius", abs(best.x[6]))


def zone(feature, points, mean):
    """Of the residuals in the frame of the mean and the principal directions, scaled by their size."""
    size = np.linalg.norm(points - mean, axis=1).max()
    frame = np.linalg.svd(points - mean)[2]
    lead = {"line": 0, "plane": 2}.get(feature)
    axes = [frame[lead]] if lead is not None else list(np.vstack([frame, np.eye(3)])) if feature == "cylinder" else [None]
    best = None
    for axis in axes:
        if axis is None:
            turn = np.eye(3)
        else:  # the axis becomes z
            x = np.cross(axis, np.eye(3)[np.abs(axis).argmin()])
            x /= np.linalg.norm(x)
            turn = np.array([x, np.cross(axis, x), axis])
        d = (points - mean) @ turn.T / size

        def tilted(x):
            a = np.array([x[0], x[1], 1.0])
            return a / np.linalg.norm(a)

        def residuals(x):
            if feature == "plane":
                return d @ tilted(x) - x[2]
            if feature in ("circle", "sphere"):
                used = 2 if feature == "circle" else 3
                return np.linalg.norm(d[:, :used] - x[:used], axis=1) - x[used]
            r = np.linalg.norm(np.cross(d - [x[2], x[3], 0.0], tilted(x)), axis=1)
            return r - x[4] if feature == "cylinder" else r

        count = {"plane": 3, "circle": 3, "sphere": 4, "line": 4, "cylinder": 5}[feature]
        start = np.zeros(count)
        if feature in ("circle", "sphere", "cylinder"):
            start[-1] = 1.0
        start = least_squares(residuals, start, **TIGHT).x
        start = np.append(start, np.abs(residuals(start)).max())
        found = minimize(lambda x: x[-1], start, method="SLSQP", options={"ftol": 1e-16, "maxiter": 1000},
                         constraints={"type": "ineq", "fun": lambda x: np.concatenate(
                             [x[-1] - residuals(x[:-1]), x[-1] + residuals(x[:-1])])})
        reach = np.abs(residuals(found.x[:-1])).max()
        if best is None or reach < best[0]:
            best = reach, found.x, turn, tilted(found.x)
    reach, x, turn, axis = best
    show("zone", 2 * reach * size)
    if feature in ("circle", "sphere"):
        centre = mean.copy()
        centre[: count - 1] += x[: count - 1] * size
        return show("centre", centre)
    show("direction", axis @ turn)
    if feature == "plane":
        show("point", mean + x[2] * size * axis @ turn)
    else:
        show("axis_point" if feature == "cylinder" else "point", mean + np.array([x[2], x[3], 0.0]) @ turn * size)


def main():
    feature, criterion, _ = sys.stdin.readline().split()
    points = np.loadtxt(sys.stdin)
    mean = points.mean(0)
    if criterion == "mz":
        zone(feature, points, mean)
    elif criterion != "ls":
        print("none")
    elif feature == "torus":
        torus(points, mean)
    elif feature in ("line", "plane"):
        show("point", mean)
        show("direction", np.linalg.svd(points - mean)[2][0 if feature == "line" else 2])
    elif feature in ("circle", "sphere"):
        round_feature(points, mean, 2 if feature == "circle" else 3)
    else:
        axial(points, mean, feature == "cone")


if __name__ == "__main__":
    main()
