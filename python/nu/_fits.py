"""Fits and their results."""

from __future__ import annotations

import enum
from collections.abc import Callable, Iterable
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
R = TypeVar("R")
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
    """Find the criterion by its name or its letter of ISO 1101."""
    if criterion in LETTERS and len(criterion) == 1:
        return CRITERIA[LETTERS.index(criterion)]
    try:
        return Criterion(criterion)
    except ValueError:
        names = ", ".join(repr(c.value) for c in CRITERIA)
        raise ArgumentError(f"no criterion {criterion!r}: there are {names}, or the letters G, C, N, X") from None


def details_of(details: str | Iterable[str]) -> int:
    """Add the details up by their names."""
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
        """The signed deviation of every point, shape (n,), in their order.

        Of a line in space distances, without a sign; of a line in a plane z = const positive to the left.
        """
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
        """Tell in a sentence why the feature is as uncertain as it is and what helps."""
        return self.explanation.text

    @property
    def points(self) -> Doubles | None:
        """The points that were fitted, or None for a fit that comes from a pickle."""
        return self._points

    def plot(self, points: ArrayLike | None = None, *, ax: Axes | None = None, **options: Any) -> Axes:
        """Draw a picture of the deviations, by matplotlib.

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

        Returns
        -------
        matplotlib.axes.Axes

        Raises
        ------
        ArgumentError
            For another number of points, or a kind of picture that the feature does not have.
        CalculationError
            Without the points, or where they have changed since the fit.
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
        """Return plain numbers, texts, lists and dictionaries, such as JSON holds.

        Parameters
        ----------
        deviations : bool
            Whether the deviations of all points are among them.

        Returns
        -------
        dict

        Raises
        ------
        CalculationError
            Where the points have changed since the fit.

        Examples
        --------
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


@dataclass(frozen=True)
class Options:
    """What a fit is told beside the criterion and what is fixed."""

    material: str | None = None
    start: Any = None
    max_steps: int | None = None
    tolerance: float | None = None


def request(options: Options, fixed: dict[str, Any]) -> _core.Options:
    """Make the options of the library; what is fixed comes by the names of the library."""
    if options.material not in SIDES:
        raise ArgumentError(f"material is 'outside', 'inside' or None, not {options.material!r}")
    made = _core.Options()
    for name, value in fixed.items():
        if value is not None:
            setattr(made, name, value)
    made.material_side = SIDES[options.material]
    made.start = options.start
    made.max_steps = options.max_steps
    made.tolerance = None if options.tolerance is None else float(options.tolerance)
    return made


def result(class_: Callable[..., R], found: Any, request_: Request, points: Doubles) -> R:
    """Make the result of a fit that the library has made."""
    feature, numbers, details = found
    return class_(feature, CRITERIA[request_.criterion], *numbers, details, points, request_)


def _fit(
    class_: Callable[..., R],
    kind: int,
    points: Any,
    criterion: str | Criterion,
    weights: Any,
    options: Options,
    fixed: dict[str, Any],
    details: str | Iterable[str],
    budget: int,
) -> R:
    made = request(options, fixed)
    cloud = as_points(points)
    masses = None if weights is None else as_weights(weights, len(cloud))
    number = CRITERIA.index(criterion_of(criterion))
    try:
        found = _core.fit(kind, number, cloud, masses, made, details_of(details), budget)
    except FitError as error:
        error.explanation = _core.explain_failure(kind, number, cloud, masses, made)
        raise
    return result(class_, found, Request(kind, number, made, masses, budget), cloud)
