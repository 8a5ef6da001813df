"""Pages of the Python reference: every name that the installed package exports, described by its docstrings."""

import inspect
import re

import nu

TITLES = {
    "fits": ("Fits", "One function for each feature, one for samples of a function, and one for many clouds at once."),
    "results": ("Results of fits", "What a fit returns. Results never change; details are computed when they are first read."),
    "features": ("Features", "Ideal features and their relations. Lengths are in your unit, angles in degrees."),
    "failures": ("Failures", "All exceptions derive from `nu.Error`. [Causes](../../causes.md) gives each cause with its remedy."),
}
# What the members of all features have in common is said here once; their own docstrings hold what is special.
COMMON = {
    "angle_with": "Degrees between the directions, or the direction and the normal.",
    "apex": "The point where the nappes meet.",
    "axis": "The axis as a line.",
    "axis_direction": "The unit vector along the axis.",
    "axis_point": "A point of the axis.",
    "centre": "The centre.",
    "closest_points": "The two points, one on each feature, at which they are closest.",
    "direction": "The unit vector along the line.",
    "distance_to": "The shortest distance to a point or another feature, never negative; 0 where they meet.",
    "focal_length": "The distance from the vertex to the focus.",
    "intersect": "What the features have in common, as a tuple of points, lines and curves; empty where they do not meet.",
    "is_closed": "Whether the curve returns to its start.",
    "major_radius": "The radius of the middle circle.",
    "minor_radius": "The radius of the tube.",
    "normal": "The unit normal.",
    "point": "A point of the feature.",
    "point_at": "The point at a parameter.",
    "radius": "The radius, in the unit of the points.",
    "range": "The interval of the parameter.",
    "semi_angle": "Half the cone angle, in degrees.",
    "semi_axis_a": "The semi-axis along `x_axis`.",
    "semi_axis_b": "The semi-axis across `x_axis`.",
    "vertex": "The vertex.",
    "x_axis": "The unit vector of the first axis in the plane of the curve.",
}
# A line of a docstring that repeats a signature.
SIGNATURE = re.compile(r"^(\d+\. ``)?\w*\(self.*\) -> .*$")
ARRAY = re.compile(r"(?:numpy\.)?ndarray\[dtype=\w+, shape=\(([^)]*)\)[^\]]*\]")
CLASS_OPTIONS = ["   :members:", "   :inherited-members: Exception, ValueError, RuntimeError, str, Enum"]


def page_of(name, value):
    if inspect.isclass(value) and issubclass(value, BaseException):
        return "failures"
    if value.__module__ in ("nu", "nu._core"):
        return "features"
    return "results" if inspect.isclass(value) and name != "Criterion" else "fits"


def entry(name, value):
    if inspect.isclass(value):
        bases = [] if value.__bases__ == (object,) else ["   :show-inheritance:"]
        return [f".. autoclass:: nu.{name}", *CLASS_OPTIONS, *bases, ""]
    return [f".. autofunction:: nu.{name}", ""]


def public_members(value):
    """Methods and properties that a class adds to those of its bases, with their names; fields have comments instead."""
    for name, member in vars(value).items():
        if not name.startswith("_") and (callable(member) or isinstance(member, property)):
            yield name, member


def short_types(text):
    """Types of compiled functions as a reader would write them: an array by its shape."""
    text = ARRAY.sub(lambda match: f"array[{match[1].replace('*', 'n')}]", text)
    return text.replace("numpy.typing.", "").replace("nu._core.", "")


def describe(app, what, name, value, options, lines):
    """Docstrings of compiled members: signatures leave, and what all features share comes in."""
    if not re.match(r"nu\.[A-Z]\w+\.\w+$", name) or not (lines or name.rsplit(".", 1)[1] in COMMON):
        return
    types = [line.split(" -> ")[1] for line in lines if what == "property" and SIGNATURE.match(line.strip())]
    text = [line for line in lines if not SIGNATURE.match(line.strip()) and line.strip() != "Overloaded function."]
    while text and not text[0].strip():
        text.pop(0)
    if not text and name.rsplit(".", 1)[1] in COMMON:
        text = [COMMON[name.rsplit(".", 1)[1]], ""]
    if types:
        text[0] += f" (*{short_types(types[0])}*)"
    lines[:] = text


def undocumented():
    for name in nu.__all__:
        value = getattr(nu, name)
        if not value.__doc__:
            yield name
        if inspect.isclass(value):
            for inner, member in public_members(value):
                text = [line for line in (member.__doc__ or "").splitlines() if line and not SIGNATURE.match(line)]
                if not text and inner not in COMMON:
                    yield f"{name}.{inner}"


def generate(writer):
    pages = {page: [] for page in TITLES}
    for name in sorted(nu.__all__, key=lambda name: (not name.startswith("fit_"), name)):
        value = getattr(nu, name)
        pages[page_of(name, value)] += entry(name, value)
    for page, (title, text) in TITLES.items():
        lines = [f"# {title}", "", text, "", "```{eval-rst}", *pages[page], "```", ""]
        writer.write(f"python/{page}.md", "\n".join(lines))
    dask = ["# Clouds in parts", "", "```{eval-rst}", ".. automodule:: nu.dask", "   :members:", "```", ""]
    writer.write("python/dask.md", "\n".join(dask))
    index = ["# Python reference", "", "The package `nu`, as installed. [Python](../../python.md) introduces it.", ""]
    index += [f"- [{title}]({page}.md): {text}" for page, (title, text) in TITLES.items() if page != "failures"]
    index += ["- [Clouds in parts](dask.md): fits of dask arrays and bags.", "- [Failures](failures.md)", ""]
    index += ["```{toctree}", ":hidden:", "", *TITLES, "dask", "```", ""]
    writer.write("python/index.md", "\n".join(index))
    missing = list(undocumented())
    if missing:
        raise SystemExit(f"Python names without a docstring: {', '.join(missing)}")
