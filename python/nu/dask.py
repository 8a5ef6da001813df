"""Fits of clouds that lie in parts on several processes or machines, or do not fit into memory, by Dask.

Each round reduces every chunk to some kilobytes at a common feature, joins the reductions and takes one step. The
result is that of the whole cloud, to rounding. The tasks are pure: where a worker is lost its chunks are reduced again.

    >>> import dask.array as da, numpy as np
    >>> from nu import dask as nu_dask
    >>> rng = np.random.default_rng(1)
    >>> cloud = da.from_array(rng.normal(size=(1000, 3)) * [9, 9, 0.1], chunks=(100, 3))
    >>> fit = nu_dask.fit_plane(cloud, normal=[0, 0, 1], weights=da.ones(1000, chunks=100))
    >>> fit.n_points, fit.feature.normal.tolist()
    (1000, [0.0, 0.0, 1.0])
"""

from nu._parts import PartsFit
from nu._parts_features import (
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

__all__ = [
    "PartsFit",
    "fit_circle",
    "fit_cone",
    "fit_cylinder",
    "fit_ellipse",
    "fit_hyperbola",
    "fit_line",
    "fit_parabola",
    "fit_plane",
    "fit_sphere",
    "fit_torus",
]
