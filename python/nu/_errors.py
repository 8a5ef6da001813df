"""The exceptions of the package, and their place among those of Python."""

from __future__ import annotations

from typing import Any

__all__ = ["ArgumentError", "CalculationError", "Error", "FitError", "PointsError"]


class Error(Exception):
    """What the library refuses or cannot do.

    Attributes
    ----------
    cause : int
        The number of the cause, as in the C++ library.
    cause_name : str
        Its name there, for example ``"NuBestfitTooFewPoints"``.
    where, what : str
        The class or operation that failed, and what of it; either may be empty.
    limits : tuple of float
        The range that an argument must keep to, or (0, 0).
    explanation : str
        Of a fit: the reason in a sentence, with its remedy where there is one; else empty.
    """

    cause: int = 0
    cause_name: str = ""
    where: str = ""
    what: str = ""
    limits: tuple[float, float] = (0.0, 0.0)
    explanation: str = ""

    def __reduce__(self) -> tuple[Any, ...]:
        return type(self), self.args, self.__dict__


class ArgumentError(Error, ValueError):
    """An argument outside of its domain, or an operation that these operands do not have."""


class CalculationError(Error, RuntimeError):
    """A calculation that failed."""


class FitError(Error, RuntimeError):
    """Points that could not be fitted."""


class PointsError(FitError, ValueError):
    """Too few points, or points in a special position, such as on one line."""


_OPERATIONS_THAT_FAIL = {17, 44, 46, 47, 48, 49}
_FITS_OF_UNFIT_POINTS = {1, 2, 3, 4, 5, 6, 13}


def _class_of(kind: int, cause: int) -> type[Error]:
    if kind == 2:
        return PointsError if cause in _FITS_OF_UNFIT_POINTS else FitError
    if kind == 1 and cause in _OPERATIONS_THAT_FAIL:
        return CalculationError
    return ArgumentError


def _from_library(
    kind: int,
    cause: int,
    name: str,
    text: str,
    where: str,
    what: str,
    lower: int,
    upper: int,
    real_lower: float,
    real_upper: float,
) -> Error:
    source = ", ".join(part for part in (where, what) if part)
    error = _class_of(kind, cause)(f"{text} ({source})" if source else text)
    error.cause, error.cause_name, error.where, error.what = cause, name, where, what
    error.limits = (float(lower), float(upper)) if (lower, upper) != (0, 0) else (real_lower, real_upper)
    return error
