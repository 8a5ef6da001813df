"""Fits of clouds that lie in parts on several processes or machines, or do not fit into memory, by Dask.

Each round reduces every chunk to some kilobytes at a common feature, joins the reductions and takes one step. The
result is that of the whole cloud, to rounding. The tasks are pure: where a worker is lost its chunks are reduced again.

    >>> import dask.array as da, numpy as np
    >>> from nu import dask as nu_dask
    >>> rng = np.random.default_rng(1)
    >>> cloud = da.from_array(rng.normal(size=(1000, 3)) * [9, 9, 0.1], chunks=(100, 3))
    >>> fit = nu_dask.fit_plane(cloud)
    >>> fit.n_points
    1000
"""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import dask as _untyped
import numpy as np

import nu
from nu import _core
from nu._errors import ArgumentError, FitError
from nu._fits import CRITERIA, NAMES, Criterion, criterion_of
from nu._points import as_points

__all__ = ["PartsFit", *[f"fit_{name}" for name in NAMES]]

dask: Any = _untyped

# The points of each chunk that the fit of the start takes, at most.
_SAMPLE = 500
# Some five rounds are usual.
_MAX_ROUNDS = 100
# A step below this part of the extent of the points is rounding.
_ROUNDING = 1e-13


@dataclass(frozen=True)
class PartsFit:
    """The fit of a cloud in parts; see `nu.Fit` for the names."""

    feature: Any
    criterion: Criterion
    n_points: int
    form: float
    peak: float
    valley: float
    rms: float
    sum_squares: float
    #: How often all points were read.
    rounds: int


def _chunks(cloud: Any) -> list[Any]:
    """The parts of a dask.array or a dask.bag as delayed objects."""
    if hasattr(cloud, "rechunk"):
        if cloud.ndim != 2 or (cloud.shape[1] != 3 and not np.isnan(cloud.shape[1])):
            raise ArgumentError(f"points have the shape (n, 3), not {cloud.shape}")
        return list(cloud.rechunk({1: -1}).to_delayed().ravel())
    if hasattr(cloud, "to_delayed"):
        return list(cloud.to_delayed())
    raise ArgumentError("the points of a dask.array or a dask.bag")


def _points(chunk: Any) -> Any:
    if isinstance(chunk, np.ndarray):
        return as_points(chunk)
    items = [np.atleast_2d(item) for item in chunk]
    return as_points(np.concatenate(items)) if items else np.empty((0, 3))


def _sample(chunk: Any) -> Any:
    points = _points(chunk)
    return points[:: max(1, len(points) // _SAMPLE)]


def _reduce(chunk: Any, feature: Any, middle: Any) -> Any:
    return _core.Part(_points(chunk), feature, middle)


def _join(parts: list[Any]) -> Any:
    joined = _core.Part()
    for part in parts:
        joined.join(part)
    return joined


def _joined(chunks: list[Any], feature: Any, middle: Any) -> Any:
    """All chunks reduced at the feature, joined in a tree of a fixed shape, so that the bits do not depend on time."""
    level = [dask.delayed(_reduce)(chunk, feature, middle) for chunk in chunks]
    while len(level) > 1:
        level = [dask.delayed(_join)(level[i : i + 8]) for i in range(0, len(level), 8)]
    return level[0].compute()


def _fit(name: str, cloud: Any, criterion: str | Criterion, start: Any) -> PartsFit:
    chosen = criterion_of(criterion)
    chunks = _chunks(cloud)
    if not chunks:
        raise ArgumentError("there are no points")
    sample = np.concatenate(dask.compute(*[dask.delayed(_sample)(chunk) for chunk in chunks]))
    fit_sample = getattr(nu, f"fit_{name}")
    feature = fit_sample(sample, chosen).feature if start is None else start
    middle = sample.mean(axis=0) if len(sample) else np.zeros(3)
    extent = float(np.max(np.abs(sample - middle))) if len(sample) else 0.0
    is_square = chosen is Criterion.LEAST_SQUARES
    candidates = _core.Candidates()
    last_step = last_value = np.inf
    for rounds in range(1, _MAX_ROUNDS + 1):
        joined = _joined(chunks, feature, middle)
        if is_square:
            moved, step = joined.step(feature)
            # The last steps are rounding, and do not shrink any more.
            if step <= _ROUNDING * extent or (step >= last_step and step < 1e-9 * extent):
                return _result(feature, chosen, joined, rounds)
            last_step = step
        else:
            candidates.add(joined)
            moved, value = candidates.fit(CRITERIA.index(chosen), feature)
            largest, smallest = joined.largest_deviation, joined.smallest_deviation
            beyond = {
                Criterion.MINIMUM_ZONE: max(largest, -smallest) - last_value,
                Criterion.MINIMUM_CIRCUMSCRIBED: largest,
                Criterion.MAXIMUM_INSCRIBED: -smallest,
            }[chosen]
            if last_value < np.inf and beyond <= _ROUNDING * 10 * extent:
                return _result(feature, chosen, joined, rounds)
            last_value = value
        feature = moved
    raise FitError(f"no optimum after {_MAX_ROUNDS} rounds")


def _result(feature: Any, criterion: Criterion, joined: Any, rounds: int) -> PartsFit:
    n, largest, smallest = joined.n_points, joined.largest_deviation, joined.smallest_deviation
    return PartsFit(
        feature,
        criterion,
        n,
        # Distances from a line have no sign: its form is the diameter of the cylinder of the points.
        2.0 * largest if isinstance(feature, nu.Line) else largest - smallest,
        max(largest, 0.0),
        max(-smallest, 0.0),
        float(np.sqrt(joined.sum_squares / n)),
        joined.sum_squares,
        rounds,
    )


def _fitter(name: str) -> Any:
    def fit(cloud: Any, criterion: str | Criterion = Criterion.LEAST_SQUARES, *, start: Any = None) -> PartsFit:
        return _fit(name, cloud, criterion, start)

    fit.__name__ = fit.__qualname__ = f"fit_{name}"
    fit.__doc__ = f"""Fit a {name} to a dask.array of shape (n, 3), or to a dask.bag of points or of (k, 3) arrays.

    `start` is a {name} near to the result; otherwise a sample is fitted. Raises what `nu.fit_{name}` does.
    """
    return fit


fit_line, fit_plane, fit_circle, fit_ellipse, fit_hyperbola = map(_fitter, NAMES[:5])
fit_parabola, fit_sphere, fit_cylinder, fit_cone, fit_torus = map(_fitter, NAMES[5:])
