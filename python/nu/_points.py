"""Points of any origin as arrays that the library reads where they lie."""

from __future__ import annotations

from typing import Any

import numpy as np
from numpy.typing import ArrayLike, NDArray

from nu._errors import ArgumentError

__all__ = ["as_points", "as_weights"]

_DOUBLE = np.dtype(np.float64)
# The largest integer below which float64 holds all integers.
_LARGEST_EXACT = 2**53


def _unwrapped(points: Any) -> Any:
    """Find the array behind a table or a cloud: pandas, polars, trimesh, Open3D."""
    if isinstance(points, np.ndarray):
        return points
    for name in ("vertices", "points"):  # trimesh's clouds and meshes, Open3D's clouds
        inner = getattr(points, name, None)
        if inner is not None and not callable(inner):
            return inner
    for name in ("point", "vertex"):  # the clouds and meshes of Open3D that keep tensors
        points = getattr(getattr(points, name, None), "positions", points)
    for name in ("to_numpy", "numpy"):
        convert = getattr(points, name, None)
        if callable(convert):
            return convert()
    return points


def _as_doubles(points: Any) -> NDArray[np.float64]:
    array = np.asarray(_unwrapped(points))
    if array.dtype == _DOUBLE:
        return array
    if array.dtype.kind == "f" and array.dtype.itemsize <= _DOUBLE.itemsize:
        return array.astype(np.float64)
    if array.dtype.kind in "iu":
        if array.size and array.dtype.itemsize == 8 and max(int(array.max()), -int(array.min())) > _LARGEST_EXACT:
            raise ArgumentError("integers above 2**53 in magnitude have no exact value as float64")
        return array.astype(np.float64)
    raise ArgumentError(f"coordinates are floats, not {array.dtype}")


def as_points(points: ArrayLike | Any) -> NDArray[np.float64]:
    """Points as an (n, 3) array of float64, without a copy where x, y and z of a point lie next to each other.

    Takes arrays of any strides and byte order, sequences of points, tables of pandas and polars with three columns,
    clouds and meshes of trimesh and Open3D, tensors, and whatever has the array interface. float32 and smaller are
    converted exactly, and so are integers.

    Parameters
    ----------
    points : array-like, shape (n, 3)
        Lengths in any unit; what is not finite is left to the fits.

    Returns
    -------
    numpy.ndarray, shape (n, 3), float64
        The array of the caller, a view of it, or a copy in C order.

    Raises
    ------
    ArgumentError
        For another shape, numbers that are not real, and numbers that float64 cannot hold exactly.

    Examples
    --------
    >>> as_points([[0, 0, 1], [2, 0, 0]]).shape
    (2, 3)
    >>> import numpy as np
    >>> cloud = np.zeros((4, 6))
    >>> np.shares_memory(as_points(cloud[::2, 1:4]), cloud)
    True
    """
    array = _as_doubles(points)
    if array.ndim == 1 and array.size == 0:
        array = array.reshape(0, 3)
    if array.ndim != 2 or array.shape[1] != 3:
        raise ArgumentError(f"points have the shape (n, 3), not {array.shape}")
    row, item = array.strides
    is_borrowed = len(array) < 2 or (row % 8 == 0 and row >= 24 and item == 8)
    if is_borrowed and array.flags.aligned and (item == 8 or array.size == 0):
        return array
    return np.ascontiguousarray(array)


def as_weights(weights: ArrayLike | Any, count: int) -> NDArray[np.float64]:
    """One weight per point as a contiguous array of float64."""
    to_numpy = getattr(weights, "to_numpy", None)
    array = _as_doubles(to_numpy() if callable(to_numpy) else weights)
    if array.shape != (count,):
        raise ArgumentError(f"{count} points have weights of the shape ({count},), not {array.shape}")
    return np.ascontiguousarray(array)
