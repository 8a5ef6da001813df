"""Pictures of fits, by matplotlib."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import NDArray

from nu._errors import ArgumentError, CalculationError

Doubles = NDArray[np.float64]

# A polar plot shows the largest deviation as this part of the radius of the feature.
_SHARE = 0.25
_POLAR = ("Circle", "Sphere", "Cone", "Torus", "Cylinder")


def _frame(direction: Doubles, x_axis: Doubles | None = None) -> tuple[Doubles, Doubles]:
    """Two unit vectors across a direction."""
    if x_axis is None:
        x_axis = np.eye(3)[np.argmin(np.abs(direction))]
        x_axis = x_axis - (x_axis @ direction) * direction
        x_axis = x_axis / np.linalg.norm(x_axis)
    return x_axis, np.cross(direction, x_axis)


def _local(feature: Any, points: Doubles) -> Doubles:
    """Coordinates in a frame whose z is the axis, the normal or the direction of the feature."""
    names = ("axis_point", "centre", "apex", "vertex", "point")
    origin = next(getattr(feature, name) for name in names if hasattr(feature, name))
    directions = [getattr(feature, n) for n in ("axis_direction", "normal", "direction") if hasattr(feature, n)]
    z = directions[0] if directions else np.array([0.0, 0.0, 1.0])
    x, y = _frame(z, getattr(feature, "x_axis", None))
    local: Doubles = (points - origin) @ np.column_stack([x, y, z])
    return local


def _size(feature: Any, local: Doubles) -> float:
    for name in ("radius", "major_radius"):
        if hasattr(feature, name):
            return float(getattr(feature, name))
    return float(np.mean(np.hypot(local[:, 0], local[:, 1])))


def _axes(ax: Any, projection: str | None) -> Any:
    if ax is not None:
        return ax
    import matplotlib.pyplot as plt

    return plt.subplots(subplot_kw={"projection": projection}, layout="constrained")[1]


def _polar(fit: Any, local: Doubles, ax: Any, magnification: float | None) -> Any:
    ax = _axes(ax, "polar")
    radius, deviations = _size(fit.feature, local), fit.deviations
    largest = float(np.max(np.abs(deviations)))
    if magnification is None:
        # A round number: 1, 2 or 5 times a power of ten.
        wanted = _SHARE * radius / largest if largest > 0 else 1.0
        power = 10.0 ** np.floor(np.log10(wanted))
        magnification = float(power * max(s for s in (1, 2, 5) if s * power <= wanted * (1 + 1e-9)))
    angle = np.arctan2(local[:, 1], local[:, 0]) % (2 * np.pi)
    order = np.argsort(angle, kind="stable")
    turn = np.linspace(0, 2 * np.pi, 361)
    is_profile = type(fit.feature).__name__ == "Circle"
    ends = np.append(order, order[0])
    ax.plot(
        angle[ends] if is_profile else angle,
        radius + magnification * (deviations[ends] if is_profile else deviations),
        "-" if is_profile else ".",
        lw=0.8,
        ms=2,
        label="points",
    )
    ax.plot(turn, np.full_like(turn, radius), "k-", lw=0.8, label=fit.criterion.value.replace("_", " "))
    for level in (fit.peak, -fit.valley):
        ax.plot(turn, np.full_like(turn, radius + magnification * level), "k--", lw=0.6)
    ax.set_ylim(0, radius + 1.3 * magnification * largest if largest > 0 else 1.3 * radius)
    ax.set_yticklabels([])
    ax.set_title(f"T = {fit.form:.4g}, deviations x {magnification:g}")
    ax.legend(loc="lower left", bbox_to_anchor=(-0.1, -0.1), fontsize="small")
    return ax


def _map(fit: Any, local: Doubles, ax: Any) -> Any:
    ax = _axes(ax, None)
    kind = type(fit.feature).__name__
    limit = float(np.max(np.abs(fit.deviations))) or 1.0
    title = f"T = {fit.form:.4g}"
    if kind == "Line":
        order = np.argsort(local[:, 2], kind="stable")
        ax.plot(local[order, 2], fit.deviations[order], ".-", ms=3, lw=0.6)
        ax.set(xlabel="along the line", ylabel="deviation", title=title)
        return ax
    if kind in _POLAR:
        across = np.degrees(np.arctan2(local[:, 1], local[:, 0])) % 360
        up, names = local[:, 2], ("angle in degrees", "height along the axis")
    else:
        across, up, names = local[:, 0], local[:, 1], ("x in the plane", "y in the plane")
        ax.set_aspect("equal")
    spots = ax.scatter(across, up, c=fit.deviations, s=10, cmap="RdBu_r", vmin=-limit, vmax=limit)
    ax.figure.colorbar(spots, ax=ax, label="deviation")
    ax.set(xlabel=names[0], ylabel=names[1], title=title)
    return ax


def plot_fit(fit: Any, points: Doubles | None, ax: Any, kind: str | None = None, magnification: Any = None) -> Any:
    """Draw the picture that `Fit.plot` describes."""
    if points is None:
        raise CalculationError("the points of this fit are not here any more: plot(points)")
    if len(points) != fit.n_points:
        raise ArgumentError(f"the fit has {fit.n_points} points, not {len(points)}")
    name = type(fit.feature).__name__
    if kind is None:
        kind = "polar" if name in _POLAR and name != "Cylinder" else "map"
    if kind not in ("polar", "map") or (kind == "polar" and name not in _POLAR):
        raise ArgumentError(f"a {name} has no picture of the kind {kind!r}")
    local = _local(fit.feature, points)
    return _polar(fit, local, ax, magnification) if kind == "polar" else _map(fit, local, ax)
