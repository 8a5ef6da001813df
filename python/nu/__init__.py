"""Ideal features from measured points: fits, form deviation, and relations between features.

    >>> import nu
    >>> fit = nu.fit_circle([[1, 0, 0], [0, 1, 0], [-1, 0, 0], [0, -1, 0]])
    >>> round(fit.radius, 12), fit.n_points
    (1.0, 4)

Lengths are in the unit of the points, angles in degrees. Results are those of the C++ library to the last bit.
"""

from nu._core import (
    Circle,
    Cone,
    Cylinder,
    Ellipse,
    Hyperbola,
    IntersectionCurve,
    Line,
    Parabola,
    Plane,
    Sphere,
    Torus,
)
from nu._errors import ArgumentError, CalculationError, Error, FitError, PointsError
from nu._features import (
    CircleFit,
    ConeFit,
    CylinderFit,
    EllipseFit,
    HyperbolaFit,
    LineFit,
    ParabolaFit,
    PlaneFit,
    SphereFit,
    TorusFit,
    fit_circle,
    fit_cone,
    fit_cylinder,
    fit_ellipse,
    fit_hyperbola,
    fit_line,
    fit_parabola,
    fit_plane,
    fit_sphere,
    fit_torus,
)
from nu._fits import Contacts, Criterion, Explanation, Fit, Uncertainty
from nu._many import fit_many
from nu._points import as_points
from nu._polynomial import PolynomialFit, fit_polynomial

__version__ = "3.0.0"

for _feature in (Circle, Cone, Cylinder, Ellipse, Hyperbola, IntersectionCurve, Line, Parabola, Plane, Sphere, Torus):
    _feature.__module__ = "nu"  # where users find it, and pickles
del _feature

__all__ = [
    "ArgumentError",
    "CalculationError",
    "Circle",
    "CircleFit",
    "Cone",
    "ConeFit",
    "Contacts",
    "Criterion",
    "Cylinder",
    "CylinderFit",
    "Ellipse",
    "EllipseFit",
    "Error",
    "Explanation",
    "Fit",
    "FitError",
    "Hyperbola",
    "HyperbolaFit",
    "IntersectionCurve",
    "Line",
    "LineFit",
    "Parabola",
    "ParabolaFit",
    "Plane",
    "PlaneFit",
    "PointsError",
    "PolynomialFit",
    "Sphere",
    "SphereFit",
    "Torus",
    "TorusFit",
    "Uncertainty",
    "as_points",
    "fit_circle",
    "fit_cone",
    "fit_cylinder",
    "fit_ellipse",
    "fit_hyperbola",
    "fit_line",
    "fit_many",
    "fit_parabola",
    "fit_plane",
    "fit_polynomial",
    "fit_sphere",
    "fit_torus",
]
