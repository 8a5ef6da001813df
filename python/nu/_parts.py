"""The rounds in which clouds in parts are fitted."""

from __future__ import annotations

from dataclasses import dataclass, replace
from typing import Any, Generic

import dask as _untyped
import dask.array as _untyped_array
import numpy as np

import nu
from nu import _core
from nu._errors import ArgumentError, FitError, PointsError
from nu._features import CLASSES, NAMES
from nu._fits import CRITERIA, Criterion, F, Options, _fit, criterion_of, request
from nu._points import as_points, as_weights

dask: Any = _untyped
dask_array: Any = _untyped_array

# The points of each chunk that the fit of the start takes, at most.
_SAMPLE = 500
# Some five rounds are usual.
_MAX_ROUNDS = 100
# A step below this part of the extent of the points is rounding.
_ROUNDING = 1e-13
# Steps below this one may be rounding, and are where they do not shrink.
_SMALL = 1e-9
# Curves whose plane is that of all points.
_CURVES = ("circle", "ellipse", "hyperbola", "parabola")


@dataclass(frozen=True)
class PartsFit(Generic[F]):
    """The fit of a cloud in parts; see `nu.Fit` for the names. Deviations from a line are distances in space."""

    feature: F
    criterion: Criterion
    n_points: int
    form: float
    peak: float
    valley: float
    rms: float
    sum_squares: float
    #: Of the iteration; each reads all points once.
    rounds: int


def _chunks(cloud: Any) -> list[Any]:
    """Take a dask.array or a dask.bag apart into delayed objects."""
    if hasattr(cloud, "rechunk"):
        if cloud.ndim != 2 or (cloud.shape[1] != 3 and not np.isnan(cloud.shape[1])):
            raise ArgumentError(f"points have the shape (n, 3), not {cloud.shape}")
        return list(cloud.rechunk({1: -1}).to_delayed().ravel())
    if hasattr(cloud, "to_delayed"):
        return list(cloud.to_delayed())
    raise ArgumentError("the points of a dask.array or a dask.bag")


def _weight_chunks(weights: Any, cloud: Any, count: int) -> list[Any]:
    """Take the weights apart as the points: an object, or None, per chunk."""
    if weights is None:
        return [None] * count
    rows = cloud.chunks[0] if hasattr(cloud, "chunks") and not np.isnan(cloud.shape[0]) else None
    if not hasattr(weights, "to_delayed"):
        if rows is None:
            raise ArgumentError("points without a known number have weights in chunks or partitions of their own")
        weights = dask_array.from_array(as_weights(weights, cloud.shape[0]), chunks=(rows,))
    elif rows is not None and hasattr(weights, "rechunk"):
        if weights.shape != (cloud.shape[0],) and not np.isnan(weights.shape).any():
            raise ArgumentError(f"points of the shape {cloud.shape} have no weights of the shape {weights.shape}")
        weights = weights if np.isnan(weights.shape).any() else weights.rechunk((rows,))
    parts = weights.to_delayed()
    chunks = list(parts.ravel()) if isinstance(parts, np.ndarray) else list(parts)
    if len(chunks) != count:
        raise ArgumentError(f"{count} parts have no weights in {len(chunks)} parts")
    return chunks


def _points(chunk: Any) -> Any:
    if isinstance(chunk, np.ndarray):
        return as_points(chunk)
    items = [np.atleast_2d(item) for item in chunk]
    return as_points(np.concatenate(items)) if items else np.empty((0, 3))


def _masses(weights: Any, count: int) -> Any:
    """Check the weights of a chunk of so many points."""
    if weights is None:
        return None
    if not isinstance(weights, np.ndarray):
        items = [np.atleast_1d(item) for item in weights]
        weights = np.concatenate(items) if items else np.empty(0)
    return as_weights(weights, count)


def _summary(chunk: Any, weights: Any) -> Any:
    """Return a sample of the points that count with their weights, the sum of all weights, the mean of all points."""
    points = _points(chunk)
    masses = _masses(weights, len(points))
    if masses is not None:
        points, masses = points[masses > 0], masses[masses > 0]
    total = float(len(points) if masses is None else masses.sum())
    mean = np.average(points, axis=0, weights=masses) if total > 0 else np.zeros(3)
    step = max(1, len(points) // _SAMPLE)
    return points[::step], None if masses is None else masses[::step], total, mean


def _reduce(chunk: Any, weights: Any, feature: Any, middle: Any, fixed: dict[str, Any]) -> Any:
    points = _points(chunk)
    return _core.Part(points, _masses(weights, len(points)), request(Options(), fixed), feature, middle)


def _join(parts: list[Any]) -> Any:
    joined = _core.Part()
    for part in parts:
        joined.join(part)
    return joined


@dataclass(frozen=True)
class _Cloud:
    """The chunks of a cloud with their weights, and what was seen of them."""

    chunks: list[Any]
    weights: list[Any]
    sample: Any
    sample_weights: Any
    middle: Any
    extent: float

    @classmethod
    def of(cls, cloud: Any, weights: Any) -> _Cloud:
        """Read every chunk once."""
        chunks = _chunks(cloud)
        if not chunks:
            raise ArgumentError("there are no points")
        masses = _weight_chunks(weights, cloud, len(chunks))
        found = dask.compute(*[dask.delayed(_summary)(c, w) for c, w in zip(chunks, masses, strict=True)])
        samples, their_weights, totals, means = zip(*found, strict=True)
        sample = np.concatenate(samples)
        sample_weights = None if weights is None else np.concatenate(their_weights)
        middle = np.average(means, axis=0, weights=totals) if len(sample) else np.zeros(3)
        extent = float(np.max(np.abs(sample - middle))) if len(sample) else 0.0
        return cls(chunks, masses, sample, sample_weights, middle, extent)

    def fit_sample(self, name: str, criterion: Criterion, start: Any = None, **fixed: Any) -> Any:
        """Fit a feature to the sample."""
        kind, options = NAMES.index(name), Options(start=start)
        return _fit(CLASSES[kind], kind, self.sample, criterion, self.sample_weights, options, fixed, (), 0).feature

    def unweighted(self) -> _Cloud:
        """Take the same points with the weight 1."""
        return replace(self, weights=[None] * len(self.chunks), sample_weights=None)

    def reduced(self, feature: Any, fixed: dict[str, Any]) -> Any:
        """Reduce all chunks, and join them in a tree of a fixed shape, so that the bits do not depend on time."""
        pairs = zip(self.chunks, self.weights, strict=True)
        level = [dask.delayed(_reduce)(chunk, masses, feature, self.middle, fixed) for chunk, masses in pairs]
        while len(level) > 1:
            level = [dask.delayed(_join)(level[i : i + 8]) for i in range(0, len(level), 8)]
        return level[0].compute()


def _fit_parts(
    name: str, cloud: Any, criterion: str | Criterion, weights: Any, start: Any, fixed: dict[str, Any]
) -> PartsFit[Any]:
    chosen = criterion_of(criterion)
    if name == "torus" and chosen is not Criterion.LEAST_SQUARES:
        raise ArgumentError("parts of a cloud have no tube, which is the minimum zone of a torus")
    seen = _Cloud.of(cloud, weights)
    # With all options, so that what does not go together is refused here.
    feature = seen.fit_sample(name, chosen, start, **fixed)
    if name in _CURVES and start is None:
        feature = _in_plane(seen.unweighted(), name, feature, chosen, fixed)
    if chosen is Criterion.LEAST_SQUARES:
        return _by_steps(seen, feature, fixed)
    return _by_exchange(seen, feature, chosen, fixed)


def _in_plane(cloud: _Cloud, name: str, curve: Any, criterion: Criterion, fixed: dict[str, Any]) -> Any:
    """Move a curve into the plane of the whole cloud; fits of curves choose the plane first, without weights."""
    plane = _by_steps(cloud, cloud.fit_sample("plane", Criterion.LEAST_SQUARES), {})
    if criterion is not Criterion.LEAST_SQUARES and plane.form > _core.length_tolerance():
        raise PointsError("the points do not lie in one plane, which this criterion needs")
    if fixed.get("direction") is None:
        curve = _moved(curve, plane.feature, plane.feature.normal)
    else:
        # A fixed normal turns the plane about the centre that the curve has without it.
        free = _moved(cloud.fit_sample(name, Criterion.LEAST_SQUARES), plane.feature, plane.feature.normal)
        about = nu.Plane(_origin(_by_steps(cloud, free, {}).feature), curve.normal)
        curve = _moved(curve, about, curve.normal)
    return curve


def _origin(curve: Any) -> Any:
    return curve.vertex if isinstance(curve, nu.Parabola) else curve.centre


def _moved(curve: Any, plane: Any, normal: Any) -> Any:
    """Return the curve with its centre in a plane, and with this normal or the opposite one."""
    values = curve.to_dict()
    del values["type"]
    values["normal"] = normal if normal @ curve.normal > 0 else -normal
    origin = "vertex" if "vertex" in values else "centre"
    values[origin] = plane.project(values[origin])
    if "x_axis" in values:
        values["x_axis"] = values["x_axis"] - (normal @ values["x_axis"]) * normal
    return type(curve)(**values)


def _by_steps(cloud: _Cloud, feature: Any, fixed: dict[str, Any]) -> PartsFit[Any]:
    """Take least-squares steps until they are rounding, and do not shrink any more."""
    last_step = np.inf
    for rounds in range(1, _MAX_ROUNDS + 1):
        joined = cloud.reduced(feature, fixed)
        moved, step = joined.step(feature)
        if step <= _ROUNDING * cloud.extent or (step >= last_step and step < _SMALL * cloud.extent):
            return _result(feature, Criterion.LEAST_SQUARES, joined, rounds)
        feature, last_step = moved, step
    raise FitError(f"no optimum after {_MAX_ROUNDS} rounds")


def _by_exchange(cloud: _Cloud, feature: Any, criterion: Criterion, fixed: dict[str, Any]) -> PartsFit[Any]:
    """Fit the extreme points of all rounds, by the other criteria, until no point is beyond."""
    candidates = _core.Candidates()
    last_value = np.inf
    for rounds in range(1, _MAX_ROUNDS + 1):
        joined = cloud.reduced(feature, fixed)
        largest, smallest = joined.largest_deviation, joined.smallest_deviation
        beyond = {
            Criterion.MINIMUM_ZONE: max(largest, -smallest) - last_value,
            Criterion.MINIMUM_CIRCUMSCRIBED: largest,
            Criterion.MAXIMUM_INSCRIBED: -smallest,
        }[criterion]
        if last_value < np.inf and beyond <= _ROUNDING * 10 * cloud.extent:
            return _result(feature, criterion, joined, rounds)
        candidates.add(joined)
        feature, last_value = candidates.fit(CRITERIA.index(criterion), feature)
    raise FitError(f"no optimum after {_MAX_ROUNDS} rounds")


def _result(feature: Any, criterion: Criterion, joined: Any, rounds: int) -> PartsFit[Any]:
    largest, smallest = joined.largest_deviation, joined.smallest_deviation
    return PartsFit(
        feature,
        criterion,
        joined.n_points,
        # Distances from a line have no sign: its form is the diameter of the cylinder of the points.
        2.0 * largest if isinstance(feature, _core.Line) else largest - smallest,
        max(largest, 0.0),
        max(-smallest, 0.0),
        joined.rms,
        joined.sum_squares,
        rounds,
    )
