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
# A line of a docstring that repeats a signature.
SIGNATURE = re.compile(r"^(\d+\. ``)?\w*\(self.*\) -> .*$")
ARRAY = re.compile(r"(?:numpy\.)?ndarray\[dtype=\w+, shape=\(([^)]*)\)[^\]]*\]")
COMPILED = (type(nu.Line.distance_to), property)
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
    return text.replace("numpy.typing.", "").replace("nu._core.", "nu.")


def fold(signatures):
    """Overloads that differ in the type of their first argument become one signature."""
    folded = {}
    for line in map(short_types, signatures):
        line = re.sub(r"\(self(, )?", "(", line)
        head, kind, tail = re.fullmatch(r"(\w+\((?:other: )?)([^,)=]*)(.*)", line).groups()
        folded.setdefault((head, tail), []).append(kind)
    return [head + " | ".join(kinds) + tail for (head, tail), kinds in folded.items()]


def docstring(member):
    """That of a compiled member: overloads together, types as a reader would write them, and nothing twice."""
    lines = (member.__doc__ or "").splitlines()
    signatures = [line for line in lines if SIGNATURE.match(line) and not line[0].isdigit()]
    text = [line for line in lines if not SIGNATURE.match(line) and line != "Overloaded function."]
    text = "\n".join(line for i, line in enumerate(text) if not line or line not in text[:i])
    text = re.sub(r"\n{3,}", "\n\n", text).strip()
    if isinstance(member, property):
        kind = short_types(signatures[0].split(" -> ")[1]) if signatures else ""
        first, *rest = text.split("\n")
        return "\n".join([f"{first} (*{kind}*)" if kind else first, *rest])
    return "\n".join([*fold(signatures), "", text])


def stand_in(name, member):
    """What autodoc reads in place of a compiled member, whose docstring cannot be changed."""
    if isinstance(member, property):
        return property(member.fget, doc=docstring(member))

    def method(self):
        raise NotImplementedError

    method.__name__, method.__doc__ = name, docstring(member)
    return method


def prepare():
    """Gives the classes of the extension the docstrings that the pages show."""
    for value in map(nu.__dict__.get, nu.__all__):
        if not inspect.isclass(value) or value.__module__ != nu.Line.__module__:
            continue
        for name, member in list(public_members(value)):
            if isinstance(member, COMPILED):
                setattr(value, name, stand_in(name, member))


def undocumented():
    for name in nu.__all__:
        value = getattr(nu, name)
        if not value.__doc__:
            yield name
        if inspect.isclass(value):
            for inner, member in public_members(value):
                text = [line for line in (member.__doc__ or "").splitlines() if line and not SIGNATURE.match(line)]
                if not text:
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
