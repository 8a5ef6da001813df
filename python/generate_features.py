"""Writes the modules of the package that say the same of every feature: the classes of the results and the fits.

generate_features.py FOLDER writes _features.py and _parts_features.py. Signatures are explicit and docstrings complete,
as editors and type checkers read them; what differs between the features is in FEATURES.
"""

from __future__ import annotations

import pathlib
import sys
import textwrap
from dataclasses import dataclass

LENGTH = ("float", "a length above 0")
ANGLE = ("float", "degrees in (0, 90)")
POINT = ("ArrayLike", "a point")
DIRECTION = ("ArrayLike", "a direction")

ALL = "all four"
ZONE = "least squares, minimum zone"
SQUARES = "least squares"


@dataclass(frozen=True)
class Feature:
    """What sets the fits of a feature apart. The order of FEATURES is that of the classes in the extension."""

    name: str
    fewest: int
    criteria: str
    # What can be fixed: the name here, its type and domain, and the name in the library.
    fixed: dict[str, tuple[tuple[str, str], str]]
    # What the result has of the feature: a number or a vector, and its meaning.
    properties: dict[str, str]
    example: str

    @property
    def title(self) -> str:
        """The name of the class."""
        return self.name.capitalize()

    @property
    def article(self) -> str:
        """Before the name."""
        return "an" if self.name[0] in "aeiou" else "a"

    @property
    def has_proof(self) -> bool:
        """Whether a branch and bound looks for a better feature."""
        return self.criteria != SQUARES


PLACED = {"centre": (POINT, "point"), "normal": (DIRECTION, "direction")}
AXIS = {"axis_direction": (DIRECTION, "direction")}
RADIUS = {"radius": (LENGTH, "radius")}
NORMAL = {"normal": "The unit normal of its plane."}
CENTRE = {"centre": "The centre."}

FEATURES = [
    Feature(
        "line",
        2,
        ZONE,
        {"point": (POINT, "point"), "direction": (DIRECTION, "direction")},
        {"point": "A point of the line.", "direction": "Its unit direction."},
        """
        >>> fit = fit_line([[0, 0, 0], [1, 1, 0], [2, 2, 0]])
        >>> round(float(fit.direction[0]), 6)
        0.707107
        """,
    ),
    Feature(
        "plane",
        3,
        ZONE,
        {"point": (POINT, "point"), "normal": (DIRECTION, "direction")},
        {"point": "A point of the plane.", "normal": "Its unit normal."},
        """
        >>> fit = fit_plane([[0, 0, 1], [1, 0, 1], [0, 1, 1], [1, 1, 1]])
        >>> fit.form
        0.0
        """,
    ),
    Feature(
        "circle",
        3,
        ALL,
        {**RADIUS, **PLACED},
        {"radius": "The radius.", **CENTRE, **NORMAL},
        """
        >>> fit = fit_circle([[1, 0, 0], [0, 1, 0], [-1, 0, 0], [0, -1, 0]])
        >>> round(fit.radius, 9)
        1.0
        """,
    ),
    Feature(
        "ellipse",
        5,
        SQUARES,
        PLACED,
        {
            "semi_axis_a": "The larger semi-axis.",
            "semi_axis_b": "The smaller semi-axis.",
            **CENTRE,
            "x_axis": "The unit direction of the larger axis.",
            **NORMAL,
        },
        """
        >>> fit = fit_ellipse([[2, 0, 0], [0, 1, 0], [-2, 0, 0], [0, -1, 0], [1.6, 0.6, 0], [1.6, -0.6, 0]])
        >>> round(fit.semi_axis_a, 9), round(fit.semi_axis_b, 9)
        (2.0, 1.0)
        """,
    ),
    Feature(
        "hyperbola",
        5,
        SQUARES,
        PLACED,
        {
            "semi_axis_a": "The semi-axis through the vertices.",
            "semi_axis_b": "The other semi-axis.",
            **CENTRE,
            "x_axis": "The unit direction through the vertices.",
            **NORMAL,
        },
        """
        >>> points = [[1, 0, 0], [1.25, 0.75, 0], [1.25, -0.75, 0], [5 / 3, 4 / 3, 0], [5 / 3, -4 / 3, 0], [-1, 0, 0]]
        >>> fit = fit_hyperbola(points)
        >>> round(fit.semi_axis_a, 9), round(fit.semi_axis_b, 9)
        (1.0, 1.0)
        """,
    ),
    Feature(
        "parabola",
        5,
        SQUARES,
        {"vertex": (POINT, "point"), "normal": (DIRECTION, "direction")},
        {
            "focal_length": "The focal length.",
            "vertex": "The vertex.",
            "x_axis": "The unit direction in which it opens.",
            **NORMAL,
        },
        """
        >>> fit = fit_parabola([[0, 0, 0], [1, 2, 0], [1, -2, 0], [4, 4, 0], [4, -4, 0], [2.25, 3, 0]])
        >>> round(fit.focal_length, 9)
        1.0
        """,
    ),
    Feature(
        "sphere",
        4,
        ALL,
        {**RADIUS, "centre": (POINT, "point")},
        {"radius": "The radius.", **CENTRE},
        """
        >>> fit = fit_sphere([[1, 0, 0], [-1, 0, 0], [0, 1, 0], [0, 0, 1], [0, 0, -1]])
        >>> round(fit.radius, 9)
        1.0
        """,
    ),
    Feature(
        "cylinder",
        5,
        ALL,
        {**RADIUS, "axis_point": (POINT, "point"), **AXIS},
        {
            "radius": "The radius.",
            "axis_point": "A point of the axis.",
            "axis_direction": "The unit direction of the axis.",
        },
        """
        >>> fit = fit_cylinder([[1, 0, 0], [0, 1, 1], [-1, 0, 0], [0, -1, 1], [1, 0, 2], [0, 1, 3], [0.6, 0.8, 4]])
        >>> round(fit.radius, 9)
        1.0
        """,
    ),
    Feature(
        "cone",
        6,
        ZONE,
        {"semi_angle": (ANGLE, "semi_angle"), "apex": (POINT, "point"), **AXIS},
        {
            "semi_angle": "The semi-angle in degrees.",
            "apex": "The apex.",
            "axis_direction": "The unit direction from the apex into the points.",
        },
        """
        >>> fit = fit_cone([[1, 0, 1], [0, 1, 1], [-1, 0, 1], [0, -2, 2], [2, 0, 2], [0, 3, 3], [-3, 0, 3]])
        >>> round(fit.semi_angle, 6)
        45.0
        """,
    ),
    Feature(
        "torus",
        7,
        ZONE,
        {
            "major_radius": (LENGTH, "major_radius"),
            "minor_radius": (LENGTH, "radius"),
            "centre": (POINT, "point"),
            **AXIS,
        },
        {
            "major_radius": "The major radius.",
            "minor_radius": "The minor radius.",
            **CENTRE,
            "axis_direction": "The unit direction of the axis.",
        },
        """
        >>> around, across = [(1, 0), (0, 1), (-1, 0), (0, -1)], [(1, 0), (0, 1), (-1, 0)]
        >>> fit = fit_torus([[(3 + r) * c, (3 + r) * s, h] for c, s in around for r, h in across])
        >>> round(fit.major_radius, 9), round(fit.minor_radius, 9)
        (3.0, 1.0)
        """,
    ),
]

NUMBERS = {"radius", "major_radius", "minor_radius", "semi_angle", "focal_length", "semi_axis_a", "semi_axis_b"}

HEADER = '''"""{title}, one by one.

Made by generate_features.py; changes belong there.
"""

from __future__ import annotations

'''

CLASS = '''

@dataclass(frozen=True, eq=False, repr=False)
class {title}Fit(Fit[{title}]):
    """The fit of {article} {name}; see `Fit` for what all fits have."""
'''

PROPERTY = '''
    @property
    def {name}(self) -> {type}:
        """{meaning}"""
        return self.feature.{name}
'''

CRITERION = """criterion : str
    {Criteria}; see `Criterion`.
"""

FIXED = """{names} : optional
    What keeps its value: {domains}.
"""

PARAMETERS = (
    """points : array-like, shape (n, 3)
    n >= {fewest} finite points; see `as_points`. They are borrowed where their layout allows.
"""
    + CRITERION
    + """weights : array-like, shape (n,), optional
    Of the squared deviations, not negative; least squares only.
"""
    + FIXED
    + """material : {{"outside", "inside"}}, optional
    The side on which all points lie.
start : {title}, optional
    The fit leads to the optimum next to it.
max_steps, tolerance : optional
    The limit on the steps, 1000, and the length tolerance.
details : str or iterable of str
    What is computed with the fit: "deviations", "uncertainty", "contacts", "explanation" or "all".
"""
)

PROOF = """prove_global : int
    With a number of boxes a branch and bound looks for a better feature anywhere; fills `bound` and `gap`.
"""

RAISES = """Raises
------
ArgumentError
    For arguments of another shape or domain, and options that do not go together.
PointsError, FitError
    Where the points are too few or in a special position, or no optimum is found. Its `explanation` has the remedy.
"""

PARTS_PARAMETERS = (
    """cloud : dask.array.Array, shape (n, 3), or dask.bag.Bag
    A bag holds points or arrays of shape (k, 3). n >= {fewest} finite points.
"""
    + CRITERION
    + """weights : dask.array.Array or array-like, shape (n,), or dask.bag.Bag, optional
    In chunks or partitions like those of the cloud; arrays are put into them. Least squares only.
"""
    + FIXED
    + """start : {title}, optional
    Near to the result; otherwise a sample of the points is fitted.
"""
)

PARTS_RAISES = """Raises
------
ArgumentError
    For arguments of another shape or domain, and options that do not go together.
PointsError, FitError
    Where the points are too few or in a special position, or no optimum is found.
CalculationError
    Where the points do not determine the feature.
"""


def wrapped(text: str, indent: str) -> str:
    """Break long lines of a docstring into lines of 120 characters, each indented."""
    lines: list[str] = []
    for line in text.splitlines():
        inner = indent + " " * (len(line) - len(line.lstrip()))
        lines += textwrap.wrap(line.strip(), 120, initial_indent=inner, subsequent_indent=inner) or [""]
    return "\n".join(lines)


def sections(feature: Feature, criteria: str, parameters: str, result: str, raises: str) -> str:
    """Return the sections of a docstring for a fit of the feature."""
    texts = {
        "fewest": feature.fewest,
        "Criteria": criteria.capitalize(),
        "names": ", ".join(feature.fixed),
        "domains": "; ".join(f"{domain} for `{name}`" for name, ((_, domain), _) in feature.fixed.items()),
        "title": feature.title,
    }
    return f"Parameters\n----------\n{parameters.format(**texts)}\nReturns\n-------\n{result}\n\n{raises}"


def class_of(feature: Feature) -> str:
    """Return the class of the results."""
    text = CLASS.format(title=feature.title, article=feature.article, name=feature.name)
    for name, meaning in feature.properties.items():
        is_number = name in NUMBERS
        type_ = "float" if is_number else "Doubles"
        text += PROPERTY.format(name=name, type=type_, meaning=meaning if is_number else meaning[:-1] + ", shape (3,).")
    return text


def function(feature: Feature, first: str, options: list[str], result: str, docstring: str, call: str) -> str:
    """Return a fit with its signature."""
    fixed = [f"{name}: {type_} | None = None" for name, ((type_, _), _) in feature.fixed.items()]
    weights = "weights: ArrayLike | Any | None = None"
    arguments = [first, "criterion: str | Criterion = Criterion.LEAST_SQUARES", "*", weights, *fixed, *options]
    signature = "".join(f"    {argument},\n" for argument in arguments)
    return f'\n\ndef fit_{feature.name}(\n{signature}) -> {result}:\n    """{docstring}\n    """\n    return {call}\n'


def fixed_of(feature: Feature) -> str:
    """Return a dictionary of what is fixed, by the names in the library."""
    return "{" + ", ".join(f'"{inner}": {name}' for name, (_, inner) in feature.fixed.items()) + "}"


def fit_of(feature: Feature, number: int) -> str:
    """Return the fit of points in memory."""
    proof = PROOF if feature.has_proof else ""
    body = sections(feature, feature.criteria, PARAMETERS + proof, f"{feature.title}Fit", RAISES)
    example = textwrap.dedent(feature.example).strip()
    text = wrapped(body, "    ") + "\n\n    Examples\n    --------\n" + textwrap.indent(example, "    ")
    options = [
        "material: str | None = None",
        f"start: {feature.title} | None = None",
        "max_steps: int | None = None",
        "tolerance: float | None = None",
        "details: str | Iterable[str] = ()",
        *(["prove_global: int = 0"] if feature.has_proof else []),
    ]
    arguments = [
        f"{feature.title}Fit",
        number,
        "points",
        "criterion",
        "weights",
        "Options(material, start, max_steps, tolerance)",
        fixed_of(feature),
        "details",
        "prove_global" if feature.has_proof else 0,
    ]
    call = "_fit(\n" + "".join(f"        {argument},\n" for argument in arguments) + "    )"
    opening = f"Fit {feature.article} {feature.name} to points.\n\n"
    return function(feature, "points: ArrayLike | Any", options, f"{feature.title}Fit", opening + text, call)


def parts_fit_of(feature: Feature) -> str:
    """Return the fit of a cloud in parts."""
    criteria = SQUARES if feature.name == "torus" else feature.criteria
    body = sections(feature, criteria, PARTS_PARAMETERS, "PartsFit", PARTS_RAISES)
    arguments = ["cloud", "criterion", "weights", "start", fixed_of(feature)]
    call = "_fit_parts(\n" + "".join(f"        {a},\n" for a in [f'"{feature.name}"', *arguments]) + "    )"
    opening = f"Fit {feature.article} {feature.name} to a cloud in parts.\n\n"
    options = [f"start: {feature.title} | None = None"]
    return function(feature, "cloud: Any", options, f"PartsFit[{feature.title}]", opening + wrapped(body, "    "), call)


def main() -> None:
    """Write both modules."""
    folder = pathlib.Path(sys.argv[1])
    titles = ", ".join(sorted(feature.title for feature in FEATURES))
    fixed = "".join(
        f"    {{{', '.join(f'{n!r}: {inner!r}' for n, (_, inner) in feature.fixed.items())}}},\n".replace("'", '"')
        for feature in FEATURES
    )
    classes = "".join(f"    {feature.title}Fit,\n" for feature in FEATURES)
    folder.joinpath("_features.py").write_text(
        HEADER.format(title="The results and fits of the features")
        + "from collections.abc import Iterable\nfrom dataclasses import dataclass\nfrom typing import Any\n\n"
        + f"from numpy.typing import ArrayLike\n\nfrom nu._core import {titles}\n"
        + "from nu._fits import Criterion, Doubles, Fit, Options, _fit\n"
        + "".join(map(class_of, FEATURES))
        + f"\n\nNAMES = [{', '.join(f'{chr(34)}{feature.name}{chr(34)}' for feature in FEATURES)}]\n"
        + f"CLASSES: list[Any] = [\n{classes}]\n"
        + f"# What may be fixed, and the name of that in the library.\nFIXED: list[dict[str, str]] = [\n{fixed}]\n"
        + "".join(fit_of(feature, number) for number, feature in enumerate(FEATURES))
    )
    folder.joinpath("_parts_features.py").write_text(
        HEADER.format(title="The fits of clouds in parts")
        + "from typing import Any\n\nfrom numpy.typing import ArrayLike\n\n"
        + f"from nu._core import {titles}\nfrom nu._fits import Criterion\nfrom nu._parts import PartsFit, _fit_parts\n"
        + "".join(map(parts_fit_of, FEATURES))
    )


if __name__ == "__main__":
    main()
