"""Polynomials through samples by least squares."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from nu import _core
from nu._errors import ArgumentError
from nu._points import as_weights

__all__ = ["PolynomialFit", "fit_polynomial"]


@dataclass(frozen=True, eq=False)
class PolynomialFit:
    """A polynomial c_0 + c_1 x + ... + c_n x^n that fits samples; call it for its values."""

    #: From the constant term on, shape (degree + 1,).
    coefficients: NDArray[np.float64]
    #: The sum of the squared residuals.
    sum_squares: float
    n_points: int

    @property
    def degree(self) -> int:
        """The highest power."""
        return len(self.coefficients) - 1

    def __call__(self, x: ArrayLike | Any) -> NDArray[np.float64]:
        """Evaluate the polynomial; values have the shape of x."""
        places = np.asarray(x, dtype=np.float64)
        values: NDArray[np.float64] = _core.polynomial_values(self.coefficients, np.ascontiguousarray(places.ravel()))
        return values.reshape(places.shape)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, PolynomialFit):
            return NotImplemented
        return self.to_dict() == other.to_dict()

    def __hash__(self) -> int:
        return hash((tuple(self.coefficients), self.sum_squares))

    def to_dict(self) -> dict[str, Any]:
        """Plain numbers and lists."""
        return {
            "coefficients": self.coefficients.tolist(),
            "sum_squares": self.sum_squares,
            "n_points": self.n_points,
        }


def fit_polynomial(x: ArrayLike | Any, y: ArrayLike | Any, degree: int) -> PolynomialFit:
    """Fit a polynomial to samples (x_i, y_i) by least squares.

    Coefficients that the samples do not determine come out as small as possible; those below 1e-10 are 0.

    Parameters
    ----------
    x, y : array-like, shape (n,)
        At least one sample.
    degree : int
        Not negative.

    Returns
    -------
    PolynomialFit

    Raises
    ------
    ArgumentError
        For arrays that differ in size, no samples, a negative degree.
    CalculationError
        For samples that are not finite.

    Examples
    --------
    >>> fit = fit_polynomial([0, 1, 2, 3], [1, 2, 5, 10], 2)
    >>> fit.coefficients.round(9).tolist()
    [1.0, 0.0, 1.0]
    >>> float(fit(4).round(9))
    17.0
    """
    xs = np.atleast_1d(np.asarray(x))
    if xs.ndim != 1:
        raise ArgumentError(f"x has the shape (n,), not {xs.shape}")
    abscissae = as_weights(xs, len(xs))
    ordinates = as_weights(np.atleast_1d(np.asarray(y)), len(xs))
    coefficients, sum_squares = _core.fit_polynomial(abscissae, ordinates, degree)
    return PolynomialFit(coefficients, sum_squares, len(xs))
