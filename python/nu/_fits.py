"""Fits and their results."""

from __future__ import annotations

import enum
from collections.abc import Iterable
from dataclasses import dataclass, field
from typing import TYPE_CHECKING, Any, Generic, TypeVar

import numpy as np
from numpy.typing import ArrayLike, NDArray

from nu import _core
from nu._core import Circle, Cone, Cylinder, Ellipse, Hyperbola, Line, Parabola, Plane, Sphere, Torus
from nu._errors import ArgumentError, CalculationError, FitError
from nu._points import as_points, as_weights

if TYPE_CHECKING:
    from matplotlib.axes import Axes

Doubles = NDArray[np.float64]
F = TypeVar("F", Line, Plane, Circle, Ellipse, Hyperbola, Parabola, Sphere, Cylinder, Cone, Torus)


class Criterion(str, enum.Enum):
    """What a fit minimises. Fits take the value, the letter of ISO 1101 or this."""

    LEAST_SQUARES = "least_squares"
    MINIMUM_ZONE = "minimum_zone"
    MINIMUM_CIRCUMSCRIBED = "minimum_circumscribed"
    MAXIMUM_INSCRIBED = "maximum_inscribed"

    __str__ = str.__str__


CRITERIA = list(Criterion)
LETTERS = "GCNX"
SIDES = {None: 0, "outside": 1, "inside": 2}
DETAILS = {"form": 1, "deviations": 3, "uncertainty": 4, "contacts": 8, "explanation": 16}


def criterion_of(criterion: str | Criterion) -> Criterion:
    """The criterion by its name or its letter of ISO 1101."""
    if criterion in LETTERS and len(criterion) == 1:
        return CRITERIA[LETTERS.index(criterion)]
    try:
        return Criterion(criterion)
    except ValueError:
        names = ", ".join(repr(c.value) for c in CRITERIA)
        raise ArgumentError(f"no criterion {criterion!r}: there are {names}, or the letters G, C, N, X") from None


def details_of(details: str | Iterable[str]) -> int:
    """The sum of the details by their names."""
    names = [details] if isinstance(details, str) else list(details)
    if names == ["all"]:
        names = list(DETAILS)
    mask = 0
    for name in names:
        if name not in DETAILS:
            raise ArgumentError(f"no detail {name!r}: there are {', '.join(DETAILS)}, or 'all'")
        mask |= DETAILS[name]
    return mask


@dataclass(frozen=True, eq=False)
class Uncertainty:
    """How uncertain the parameters of a least-squares fit are, from its residuals.

    The parameters are changes of the feature in a frame of its own: shifts of its origin along the axes, tilts of the
    z axis towards x and y and a turn about z in degrees, and sizes.
    """

    parameters: tuple[str, ...]
    #: Which parameters are angles, in degrees.
    is_angle: tuple[bool, ...]
    #: One per parameter; infinite where the points do not determine it.
    standard_uncertainties: Doubles
    #: Shape (p, p).
    covariance: Doubles
    #: Shape (3,) and (3, 3): the frame, one axis per row.
    origin: Doubles
    axes: Doubles
    degrees_of_freedom: int
    #: Of a point of weight 1; infinite without a degree of freedom.
    standard_deviation: float
    #: The largest by the smallest singular value of the derivatives.
    condition: float


@dataclass(frozen=True, eq=False)
class Contacts:
    """The points that hold a minimum-zone, circumscribed or inscribed feature.

    A multiplier says by how much half of the zone, or the radius, grows when its point moves outwards. Multipliers are
    not negative and their sum is 1; those of points that only touch a boundary are missing or 0.
    """

    #: Indices of points; those with a multiplier come first.
    indices: NDArray[np.int32]
    #: 1 on the outer boundary, -1 on the inner one.
    sides: NDArray[np.int32]
    multipliers: Doubles


@dataclass(frozen=True)
class Explanation:
    """Why a feature is as uncertain as it is, and what helps."""

    text: str
    weakest_parameter: str
    #: Per unit of the uncertainty of a point; degrees per length for an angle.
    weakest_uncertainty: float
    #: Degrees of a full turn that the points cover; of a sphere half of the opening of the cap that holds them.
    coverage: float
    #: Where one more point would help most, or None.
    probing_place: tuple[float, float, float] | None

    def __str__(self) -> str:
        return self.text


@dataclass(frozen=True)
class Request:
    """What was asked for, to compute further details of the same fit."""

    kind: int
    criterion: int
    options: _core.Options
    weights: Doubles | None
    budget: int


@dataclass(frozen=True, eq=False, repr=False)
class Fit(Generic[F]):
    """The result of a fit. It never changes; equality compares all numbers, to the last bit.

    Lengths are in the unit of the points. P, V, T and Q are the parameters of ISO 12180, 12181, 12780 and 12781.
    Deviations are positive outside of the feature, or on the side of the normal of a plane.

    Details (deviations, covariance, contacts, the explanation) are computed when they are first asked for, unless the
    fit was told to compute them with it. The points must then be as they were: a change raises CalculationError. A fit
    computes all of them before it is pickled, as the points stay behind.
    """

    feature: F
    criterion: Criterion
    #: The number of points.
    n_points: int
    #: T: peak + valley; of a minimum zone its width; of a line in space the diameter of the cylinder of the points.
    form: float
    #: P: the largest deviation.
    peak: float
    #: V: minus the smallest deviation.
    valley: float
    #: Q: the root of the mean of the squared deviations.
    rms: float
    #: The sum of the squared deviations times their weights.
    sum_squares: float
    #: Steps of the iteration, and the length of the last one; 0 for a feature that is computed directly.
    steps: int
    last_step: float
    #: Whether no other feature of the kind is better: proven by the method or by `prove_global`.
    is_global: bool
    #: With `prove_global`: no feature has a smaller zone or radius, and what is left between that and the feature's.
    bound: float | None
    gap: float | None
    _details: dict[str, Any] = field(default_factory=dict)
    _points: Doubles | None = None
    _request: Request | None = None

    @property
    def P(self) -> float:  # noqa: N802
        """The largest deviation: `peak`."""
        return self.peak

    @property
    def V(self) -> float:  # noqa: N802
        """Minus the smallest deviation: `valley`."""
        return self.valley

    @property
    def T(self) -> float:  # noqa: N802
        """The form: P + V, or the width of the zone."""
        return self.form

    @property
    def Q(self) -> float:  # noqa: N802
        """The root mean square of the deviations: `rms`."""
        return self.rms

    def _detail(self, name: str) -> Any:
        if name not in self._details:
            if self._points is None or self._request is None:
                raise CalculationError(f"{name}: the points of this fit are not here any more")
            r = self._request
            found = _core.fit(r.kind, r.criterion, self._points, r.weights, r.options, DETAILS[name], r.budget)
            if found[0] != self.feature:
                raise CalculationError(f"{name}: the points have changed since the fit")
            self._details[name] = found[2][name]
        return self._details[name]

    @property
    def deviations(self) -> Doubles:
        """The signed deviation of every point, shape (n,), in their order. Of a line in space distances, without a
        sign; of a line in a plane z = const positive to the left."""
        values: Doubles = self._detail("deviations")
        return values

    @property
    def uncertainty(self) -> Uncertainty:
        """Of least squares. Raises CalculationError for the other criteria."""
        found = self._detail("uncertainty")
        if found is None:
            raise CalculationError(f"a fit by {self.criterion} has no covariance")
        return Uncertainty(**found)

    @property
    def covariance(self) -> Doubles:
        """Of the parameters that `uncertainty` names, shape (p, p). Raises CalculationError without least squares."""
        return self.uncertainty.covariance

    @property
    def contacts(self) -> Contacts:
        """Of the criteria other than least squares, which raises CalculationError."""
        found = self._detail("contacts")
        if found is None:
            raise CalculationError(f"a fit by {self.criterion} has no contacts")
        return Contacts(**found)

    @property
    def explanation(self) -> Explanation:
        """The parameter that the points determine least, and the place where one more point would help most."""
        found = dict(self._detail("explanation"))
        place = found["probing_place"]
        found["probing_place"] = None if place is None else tuple(float(c) for c in place)
        return Explanation(**found)

    def explain(self) -> str:
        """In a sentence, why the feature is as uncertain as it is and what helps."""
        return self.explanation.text

    @property
    def points(self) -> Doubles | None:
        """The points that were fitted, or None for a fit that comes from a pickle."""
        return self._points

    def plot(self, points: ArrayLike | None = None, *, ax: Axes | None = None, **options: Any) -> Axes:
        """A picture of the deviations, by matplotlib.

        Circles, spheres, cones, tori: a polar roundness plot. Cylinders: a map of the unrolled surface, or with
        ``kind="polar"`` the roundness plot. Others: a map of the deviations in the plane of the feature, or along a
        line.

        Parameters
        ----------
        points : array-like, shape (n, 3), optional
            The points, for a fit that comes from a pickle.
        ax : matplotlib.axes.Axes, optional
            Where to draw, with the projection that the picture needs; a new figure otherwise.
        options
            ``kind``: "polar" or "map". ``magnification`` of the deviations of a polar plot; chosen otherwise.
        """
        from nu._plot import plot_fit

        cloud = self._points if points is None else as_points(points)
        picture: Axes = plot_fit(self, cloud, ax, **options)
        return picture

    def _numbers(self) -> tuple[Any, ...]:
        return (
            self.feature,
            self.criterion,
            self.n_points,
            self.form,
            self.peak,
            self.valley,
            self.rms,
            self.sum_squares,
            self.steps,
            self.last_step,
            self.is_global,
            self.bound,
            self.gap,
        )

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, Fit) or type(self) is not type(other):
            return NotImplemented
        return self._numbers() == other._numbers()

    def __hash__(self) -> int:
        return hash(self._numbers())

    def __reduce__(self) -> tuple[Any, ...]:
        details = {name: self._detail(name) for name in DETAILS if name != "form"}
        return type(self), (*self._numbers(), details)

    def to_dict(self, *, deviations: bool = False) -> dict[str, Any]:
        """Plain numbers, texts, lists and dictionaries, such as JSON holds.

        >>> import nu
        >>> fit = nu.fit_sphere([[2, 0, 0], [0, 2, 0], [0, 0, 2], [-2, 0, 0], [0, -2, 0], [0, 0, -2]])
        >>> fit.to_dict()["feature"]
        {'type': 'Sphere', 'radius': 2.0, 'centre': (0.0, 0.0, 0.0)}
        """
        names = "n_points form peak valley rms sum_squares steps last_step is_global bound gap"
        all_: dict[str, Any] = {"feature": self.feature.to_dict(), "criterion": self.criterion.value}
        all_.update({name: getattr(self, name) for name in names.split()})
        if self.criterion is Criterion.LEAST_SQUARES:
            u = self.uncertainty
            all_["parameters"] = list(u.parameters)
            all_["standard_uncertainties"] = u.standard_uncertainties.tolist()
            all_["covariance"] = u.covariance.tolist()
            all_["degrees_of_freedom"] = u.degrees_of_freedom
        elif self._detail("contacts") is not None:
            c = self.contacts
            all_["contacts"] = {name: getattr(c, name).tolist() for name in ("indices", "sides", "multipliers")}
        all_["explanation"] = self.explain()
        if deviations:
            all_["deviations"] = self.deviations.tolist()
        return all_

    def __repr__(self) -> str:
        return (
            f"{type(self).__name__}({self.criterion.value}, {self.n_points} points: {self.feature!r}, "
            f"form={self.form:.6g}, rms={self.rms:.6g})"
        )


def _request(
    criterion: str | Criterion,
    material: str | None,
    start: Any,
    max_steps: int | None,
    tolerance: float | None,
    fixed: dict[str, Any],
) -> tuple[Criterion, _core.Options]:
    chosen = criterion_of(criterion)
    if material not in SIDES:
        raise ArgumentError(f"material is 'outside', 'inside' or None, not {material!r}")
    options = _core.Options()
    for name, value in fixed.items():
        if value is not None:
            setattr(options, name, value)
    options.material_side = SIDES[material]
    options.start = start
    options.max_steps = max_steps
    options.tolerance = None if tolerance is None else float(tolerance)
    return chosen, options


def _result(
    kind: int, criterion: Criterion, found: Any, points: Doubles, weights: Doubles | None, options: Any, budget: int
) -> Fit[Any]:
    feature, numbers, details = found
    request = Request(kind, CRITERIA.index(criterion), options, weights, budget)
    result: Fit[Any] = CLASSES[kind](feature, criterion, *numbers, details, points, request)
    return result


def _fit(
    kind: int,
    points: Any,
    criterion: str | Criterion,
    weights: Any,
    details: str | Iterable[str],
    prove_global: int,
    material: str | None,
    start: Any,
    max_steps: int | None,
    tolerance: float | None,
    **fixed: Any,
) -> Any:
    chosen, options = _request(criterion, material, start, max_steps, tolerance, fixed)
    cloud = as_points(points)
    masses = None if weights is None else as_weights(weights, len(cloud))
    number = CRITERIA.index(chosen)
    try:
        found = _core.fit(kind, number, cloud, masses, options, details_of(details), prove_global)
    except FitError as error:
        error.explanation = _core.explain_failure(kind, number, cloud, masses, options)
        raise
    return _result(kind, chosen, found, cloud, masses, options, prove_global)


@dataclass(frozen=True, eq=False, repr=False)
class LineFit(Fit[Line]):
    """The fit of a line; see `Fit`."""

    @property
    def point(self) -> Doubles:
        """A point of the line, shape (3,)."""
        return self.feature.point

    @property
    def direction(self) -> Doubles:
        """Its direction, shape (3,)."""
        return self.feature.direction


@dataclass(frozen=True, eq=False, repr=False)
class PlaneFit(Fit[Plane]):
    """The fit of a plane; see `Fit`."""

    @property
    def point(self) -> Doubles:
        """A point of the plane, shape (3,)."""
        return self.feature.point

    @property
    def normal(self) -> Doubles:
        """Its unit normal, shape (3,)."""
        return self.feature.normal


@dataclass(frozen=True, eq=False, repr=False)
class CircleFit(Fit[Circle]):
    """The fit of a circle; see `Fit`."""

    @property
    def radius(self) -> float:
        """The radius."""
        return self.feature.radius

    @property
    def centre(self) -> Doubles:
        """The centre, shape (3,)."""
        return self.feature.centre

    @property
    def normal(self) -> Doubles:
        """The unit normal of its plane, shape (3,)."""
        return self.feature.normal


@dataclass(frozen=True, eq=False, repr=False)
class EllipseFit(Fit[Ellipse]):
    """The fit of a ellipse; see `Fit`."""

    @property
    def semi_axis_a(self) -> float:
        """The larger semi-axis."""
        return self.feature.semi_axis_a

    @property
    def semi_axis_b(self) -> float:
        """The smaller semi-axis."""
        return self.feature.semi_axis_b

    @property
    def centre(self) -> Doubles:
        """The centre, shape (3,)."""
        return self.feature.centre

    @property
    def x_axis(self) -> Doubles:
        """The unit direction of the larger axis, shape (3,)."""
        return self.feature.x_axis

    @property
    def normal(self) -> Doubles:
        """The unit normal of its plane, shape (3,)."""
        return self.feature.normal


@dataclass(frozen=True, eq=False, repr=False)
class HyperbolaFit(Fit[Hyperbola]):
    """The fit of a hyperbola; see `Fit`."""

    @property
    def semi_axis_a(self) -> float:
        """The semi-axis through the vertices."""
        return self.feature.semi_axis_a

    @property
    def semi_axis_b(self) -> float:
        """The other semi-axis."""
        return self.feature.semi_axis_b

    @property
    def centre(self) -> Doubles:
        """The centre, shape (3,)."""
        return self.feature.centre

    @property
    def x_axis(self) -> Doubles:
        """The unit direction through the vertices, shape (3,)."""
        return self.feature.x_axis

    @property
    def normal(self) -> Doubles:
        """The unit normal of its plane, shape (3,)."""
        return self.feature.normal


@dataclass(frozen=True, eq=False, repr=False)
class ParabolaFit(Fit[Parabola]):
    """The fit of a parabola; see `Fit`."""

    @property
    def focal_length(self) -> float:
        """The focal length."""
        return self.feature.focal_length

    @property
    def vertex(self) -> Doubles:
        """The vertex, shape (3,)."""
        return self.feature.vertex

    @property
    def x_axis(self) -> Doubles:
        """The unit direction in which it opens, shape (3,)."""
        return self.feature.x_axis

    @property
    def normal(self) -> Doubles:
        """The unit normal of its plane, shape (3,)."""
        return self.feature.normal


@dataclass(frozen=True, eq=False, repr=False)
class SphereFit(Fit[Sphere]):
    """The fit of a sphere; see `Fit`."""

    @property
    def radius(self) -> float:
        """The radius."""
        return self.feature.radius

    @property
    def centre(self) -> Doubles:
        """The centre, shape (3,)."""
        return self.feature.centre


@dataclass(frozen=True, eq=False, repr=False)
class CylinderFit(Fit[Cylinder]):
    """The fit of a cylinder; see `Fit`."""

    @property
    def radius(self) -> float:
        """The radius."""
        return self.feature.radius

    @property
    def axis_point(self) -> Doubles:
        """A point of the axis, shape (3,)."""
        return self.feature.axis_point

    @property
    def axis_direction(self) -> Doubles:
        """The unit direction of the axis, shape (3,)."""
        return self.feature.axis_direction


@dataclass(frozen=True, eq=False, repr=False)
class ConeFit(Fit[Cone]):
    """The fit of a cone; see `Fit`."""

    @property
    def semi_angle(self) -> float:
        """The semi-angle in degrees."""
        return self.feature.semi_angle

    @property
    def apex(self) -> Doubles:
        """The apex, shape (3,)."""
        return self.feature.apex

    @property
    def axis_direction(self) -> Doubles:
        """The unit direction from the apex into the points, shape (3,)."""
        return self.feature.axis_direction


@dataclass(frozen=True, eq=False, repr=False)
class TorusFit(Fit[Torus]):
    """The fit of a torus; see `Fit`."""

    @property
    def major_radius(self) -> float:
        """The major radius."""
        return self.feature.major_radius

    @property
    def minor_radius(self) -> float:
        """The minor radius."""
        return self.feature.minor_radius

    @property
    def centre(self) -> Doubles:
        """The centre, shape (3,)."""
        return self.feature.centre

    @property
    def axis_direction(self) -> Doubles:
        """The unit direction of the axis, shape (3,)."""
        return self.feature.axis_direction


# In the order of the classes in the extension.
CLASSES: list[Any] = [
    LineFit,
    PlaneFit,
    CircleFit,
    EllipseFit,
    HyperbolaFit,
    ParabolaFit,
    SphereFit,
    CylinderFit,
    ConeFit,
    TorusFit,
]
NAMES = ["line", "plane", "circle", "ellipse", "hyperbola", "parabola", "sphere", "cylinder", "cone", "torus"]
# What may be fixed of a feature, and the name of that in the library.
FIXED: list[dict[str, str]] = [
    {"point": "point", "direction": "direction"},
    {"point": "point", "normal": "direction"},
    {"radius": "radius", "centre": "point", "normal": "direction"},
    {"centre": "point", "normal": "direction"},
    {"centre": "point", "normal": "direction"},
    {"vertex": "point", "normal": "direction"},
    {"radius": "radius", "centre": "point"},
    {"radius": "radius", "axis_point": "point", "axis_direction": "direction"},
    {"semi_angle": "semi_angle", "apex": "point", "axis_direction": "direction"},
    {"major_radius": "major_radius", "minor_radius": "radius", "centre": "point", "axis_direction": "direction"},
]


def fit_line(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    point: ArrayLike | None = None,
    direction: ArrayLike | None = None,
    material: str | None = None,
    start: Line | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> LineFit:
    """Fit a line to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 2 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares, minimum zone; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    point, direction : optional
        What keeps its value: a point for `point`; a direction for `direction`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Line, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_line([[0, 0, 0], [1, 1, 0], [2, 2, 0]])
    >>> round(float(fit.direction[0]), 6)
    0.707107
    """
    result: LineFit = _fit(
        0,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        point=point,
        direction=direction,
    )
    return result


def fit_plane(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    point: ArrayLike | None = None,
    normal: ArrayLike | None = None,
    material: str | None = None,
    start: Plane | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> PlaneFit:
    """Fit a plane to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 3 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares, minimum zone; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    point, normal : optional
        What keeps its value: a point for `point`; a direction for `normal`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Plane, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_plane([[0, 0, 1], [1, 0, 1], [0, 1, 1], [1, 1, 1]])
    >>> fit.form
    0.0
    """
    result: PlaneFit = _fit(
        1,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        point=point,
        direction=normal,
    )
    return result


def fit_circle(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    radius: float | None = None,
    centre: ArrayLike | None = None,
    normal: ArrayLike | None = None,
    material: str | None = None,
    start: Circle | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> CircleFit:
    """Fit a circle to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 3 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        All four; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    radius, centre, normal : optional
        What keeps its value: a length above 0 for `radius`; a point for `centre`; a direction for `normal`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Circle, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_circle([[1, 0, 0], [0, 1, 0], [-1, 0, 0], [0, -1, 0]])
    >>> round(fit.radius, 9)
    1.0
    """
    result: CircleFit = _fit(
        2,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        radius=radius,
        point=centre,
        direction=normal,
    )
    return result


def fit_ellipse(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    centre: ArrayLike | None = None,
    normal: ArrayLike | None = None,
    material: str | None = None,
    start: Ellipse | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
) -> EllipseFit:
    """Fit an ellipse to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 5 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    centre, normal : optional
        What keeps its value: a point for `centre`; a direction for `normal`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Ellipse, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_ellipse([[2, 0, 0], [0, 1, 0], [-2, 0, 0], [0, -1, 0], [1.6, 0.6, 0], [1.6, -0.6, 0]])
    >>> round(fit.semi_axis_a, 9), round(fit.semi_axis_b, 9)
    (2.0, 1.0)
    """
    result: EllipseFit = _fit(
        3,
        points,
        criterion,
        weights,
        details,
        0,
        material,
        start,
        max_steps,
        tolerance,
        point=centre,
        direction=normal,
    )
    return result


def fit_hyperbola(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    centre: ArrayLike | None = None,
    normal: ArrayLike | None = None,
    material: str | None = None,
    start: Hyperbola | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
) -> HyperbolaFit:
    """Fit a hyperbola to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 5 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    centre, normal : optional
        What keeps its value: a point for `centre`; a direction for `normal`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Hyperbola, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> points = [[1, 0, 0], [1.25, 0.75, 0], [1.25, -0.75, 0], [5 / 3, 4 / 3, 0], [5 / 3, -4 / 3, 0], [-1, 0, 0]]
    >>> fit = fit_hyperbola(points)
    >>> round(fit.semi_axis_a, 9), round(fit.semi_axis_b, 9)
    (1.0, 1.0)
    """
    result: HyperbolaFit = _fit(
        4,
        points,
        criterion,
        weights,
        details,
        0,
        material,
        start,
        max_steps,
        tolerance,
        point=centre,
        direction=normal,
    )
    return result


def fit_parabola(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    vertex: ArrayLike | None = None,
    normal: ArrayLike | None = None,
    material: str | None = None,
    start: Parabola | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
) -> ParabolaFit:
    """Fit a parabola to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 5 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    vertex, normal : optional
        What keeps its value: a point for `vertex`; a direction for `normal`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Parabola, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_parabola([[0, 0, 0], [1, 2, 0], [1, -2, 0], [4, 4, 0], [4, -4, 0], [2.25, 3, 0]])
    >>> round(fit.focal_length, 9)
    1.0
    """
    result: ParabolaFit = _fit(
        5,
        points,
        criterion,
        weights,
        details,
        0,
        material,
        start,
        max_steps,
        tolerance,
        point=vertex,
        direction=normal,
    )
    return result


def fit_sphere(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    radius: float | None = None,
    centre: ArrayLike | None = None,
    material: str | None = None,
    start: Sphere | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> SphereFit:
    """Fit a sphere to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 4 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        All four; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    radius, centre : optional
        What keeps its value: a length above 0 for `radius`; a point for `centre`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Sphere, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_sphere([[1, 0, 0], [-1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, -1]])
    >>> round(fit.radius, 9)
    1.0
    """
    result: SphereFit = _fit(
        6,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        radius=radius,
        point=centre,
    )
    return result


def fit_cylinder(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    radius: float | None = None,
    axis_point: ArrayLike | None = None,
    axis_direction: ArrayLike | None = None,
    material: str | None = None,
    start: Cylinder | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> CylinderFit:
    """Fit a cylinder to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 5 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        All four; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    radius, axis_point, axis_direction : optional
        What keeps its value: a length above 0 for `radius`; a point for `axis_point`; a direction for `axis_direction`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Cylinder, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_cylinder([[1, 0, 0], [0, 1, 1], [-1, 0, 0], [0, -1, 1], [1, 0, 2], [0, 1, 3], [0.6, 0.8, 4]])
    >>> round(fit.radius, 9)
    1.0
    """
    result: CylinderFit = _fit(
        7,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        radius=radius,
        point=axis_point,
        direction=axis_direction,
    )
    return result


def fit_cone(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    semi_angle: float | None = None,
    apex: ArrayLike | None = None,
    axis_direction: ArrayLike | None = None,
    material: str | None = None,
    start: Cone | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> ConeFit:
    """Fit a cone to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 6 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares, minimum zone; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    semi_angle, apex, axis_direction : optional
        What keeps its value: degrees in (0, 90) for `semi_angle`; a point for `apex`; a direction for `axis_direction`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Cone, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> fit = fit_cone([[1, 0, 1], [0, 1, 1], [-1, 0, 1], [0, -2, 2], [2, 0, 2], [0, 3, 3], [-3, 0, 3]])
    >>> round(fit.semi_angle, 6)
    45.0
    """
    result: ConeFit = _fit(
        8,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        semi_angle=semi_angle,
        point=apex,
        direction=axis_direction,
    )
    return result


def fit_torus(
    points: ArrayLike | Any,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    weights: ArrayLike | Any | None = None,
    major_radius: float | None = None,
    minor_radius: float | None = None,
    centre: ArrayLike | None = None,
    axis_direction: ArrayLike | None = None,
    material: str | None = None,
    start: Torus | None = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    prove_global: int = 0,
) -> TorusFit:
    """Fit a torus to points.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        n >= 7 finite points; see `as_points`. They are borrowed where their layout allows.
    criterion : str
        Least squares, minimum zone; see `Criterion`.
    weights : array-like, shape (n,), optional
        Of the squared deviations, not negative; least squares only.
    major_radius, minor_radius, centre, axis_direction : optional
        What keeps its value: a length above 0 for `major_radius`; a length above 0 for `minor_radius`;
        a point for `centre`; a direction for `axis_direction`.
    material : {"outside", "inside"}, optional
        The side on which all points lie.
    start : Torus, optional
        The fit leads to the optimum next to it.
    max_steps, tolerance : optional
        The limit on the steps, 1000, and the length tolerance.
    details : str or iterable of str
        What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
    prove_global : int
        With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.

    Raises
    ------
    ArgumentError
        For arguments of another shape or domain, and options that do not go together.
    PointsError, FitError
        Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.

    >>> around, across = [(1, 0), (0, 1), (-1, 0), (0, -1)], [(1, 0), (0, 1), (-1, 0)]
    >>> fit = fit_torus([[(3 + r) * c, (3 + r) * s, h] for c, s in around for r, h in across])
    >>> round(fit.major_radius, 9), round(fit.minor_radius, 9)
    (3.0, 1.0)
    """
    result: TorusFit = _fit(
        9,
        points,
        criterion,
        weights,
        details,
        prove_global,
        material,
        start,
        max_steps,
        tolerance,
        major_radius=major_radius,
        radius=minor_radius,
        point=centre,
        direction=axis_direction,
    )
    return result
