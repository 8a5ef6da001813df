"""Times fits beside those of other packages: ratios to this one, of the best of several runs in one process.

Peers that are not installed are left out: pip install scipy scikit-image circle-fit cylinder-fitting
"""

from __future__ import annotations

import importlib
import time
from collections.abc import Callable
from typing import Any

import numpy as np
import scipy.optimize

import nu


def best(run: Callable[[], Any]) -> float:
    """The least time of a run, in seconds."""
    run()
    times, end = [], time.perf_counter() + 0.5
    while len(times) < 3 or (time.perf_counter() < end and len(times) < 1000):
        start = time.perf_counter()
        run()
        times.append(time.perf_counter() - start)
    return min(times)


def optional(name: str) -> Any:
    try:
        return importlib.import_module(name)
    except ImportError:
        return None


def table(title: str, runs: dict[str, Callable[[], Any]]) -> None:
    own = best(runs["nu"])
    for name, run in runs.items():
        seconds = own if name == "nu" else best(run)
        print(f"| {title} | {name} | {1e6 * seconds:,.0f} | {seconds / own:,.1f} |", flush=True)


def main() -> None:
    rng = np.random.default_rng(1)
    circle_fit, fitting, measure = optional("circle_fit"), optional("cylinder_fitting"), optional("skimage.measure")
    print("| Task | Package | Microseconds | Ratio |\n|---|---|---:|---:|")
    for n in (100, 10_000):
        t = rng.uniform(0, 2 * np.pi, n)
        r = 5 + 0.01 * rng.normal(size=n)
        ring = np.column_stack([r * np.cos(t), r * np.sin(t), np.zeros(n)])
        flat = np.ascontiguousarray(ring[:, :2])
        runs: dict[str, Callable[[], Any]] = {
            "nu": lambda ring=ring: nu.fit_circle(ring),
            "scipy.optimize.least_squares": lambda flat=flat: scipy.optimize.least_squares(
                lambda p: np.hypot(flat[:, 0] - p[0], flat[:, 1] - p[1]) - p[2], [0.1, 0.1, 4.0]
            ),
        }
        if measure is not None:
            runs["scikit-image CircleModel (algebraic)"] = lambda flat=flat: measure.CircleModel.from_estimate(flat)
        if circle_fit is not None:
            runs["circle-fit (geometric)"] = lambda flat=flat: circle_fit.standardLSQ(flat)
        table(f"circle, {n:,} points", runs)

        z = rng.uniform(-5, 5, n)
        tube = np.column_stack([r * np.cos(t), r * np.sin(t), z])

        def residuals(p: Any, tube: Any = tube) -> Any:
            d = np.array([p[2], p[3], 1.0])
            offsets = np.cross(tube - np.array([p[0], p[1], 0.0]), d)
            return np.linalg.norm(offsets, axis=1) / np.linalg.norm(d) - p[4]

        runs = {
            "nu": lambda tube=tube: nu.fit_cylinder(tube),
            "scipy.optimize.least_squares": lambda f=residuals: scipy.optimize.least_squares(
                f, [0.1, 0.1, 0.01, 0.01, 4.0]
            ),
        }
        if fitting is not None and n <= 100:
            runs["cylinder-fitting"] = lambda tube=tube: fitting.fit(tube)
        table(f"cylinder, {n:,} points", runs)


if __name__ == "__main__":
    main()
