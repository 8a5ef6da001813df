"""Many fits at once, on all cores."""

from __future__ import annotations

import os
from collections.abc import Callable, Iterable, Sequence
from typing import Any

import numpy as np
from numpy.typing import ArrayLike

from nu import _core
from nu._errors import ArgumentError, Error
from nu._features import CLASSES, FIXED, NAMES
from nu._fits import CRITERIA, Criterion, Fit, Options, Request, criterion_of, details_of, request, result
from nu._points import as_points, as_weights

__all__ = ["fit_many"]


def _parts(parts: Any, offsets: ArrayLike | None) -> list[Any]:
    if offsets is None:
        return list(parts)
    cloud = as_points(parts)
    ends = np.asarray(offsets)
    if ends.ndim != 1 or ends.dtype.kind not in "iu" or len(ends) < 1:
        raise ArgumentError("offsets are integers, one more than there are parts")
    if ends[0] != 0 or ends[-1] != len(cloud) or np.any(np.diff(ends) < 0):
        raise ArgumentError("offsets ascend from 0 to the number of points")
    return [cloud[a:b] for a, b in zip(ends[:-1], ends[1:], strict=True)]


def _bar(progress: bool | None, total: int) -> Any:
    """Make a progress bar of tqdm, or None."""
    if progress is False:
        return None
    try:
        from tqdm.auto import tqdm
    except ImportError:
        if progress:
            raise
        return None
    # Shown unasked only for what takes a while, and where somebody looks.
    return tqdm(total=total, delay=0.0 if progress else 1.0, disable=False if progress else None, unit="fit")


def fit_many(
    parts: Iterable[Any] | ArrayLike,
    feature: str,
    criterion: str | Criterion = Criterion.LEAST_SQUARES,
    *,
    offsets: ArrayLike | None = None,
    weights: Sequence[Any] | None = None,
    material: str | None = None,
    start: Any = None,
    max_steps: int | None = None,
    tolerance: float | None = None,
    details: str | Iterable[str] = (),
    workers: int | None = None,
    progress: bool | None = None,
    on_error: str = "raise",
    **fixed: Any,
) -> list[Any]:
    """Fit a feature to each of many sets of points, on several threads.

    The results are those of single fits to the last bit, in the order of the parts.

    Parameters
    ----------
    parts : iterable of array-likes of shape (n_i, 3), or an array of shape (m, n, 3)
        Or one array of shape (n, 3) with `offsets`: part i is ``parts[offsets[i]:offsets[i + 1]]``.
    feature : str
        "line", "plane", "circle", "ellipse", "hyperbola", "parabola", "sphere", "cylinder", "cone" or "torus".
    weights : sequence, optional
        Per part an array of weights, or None.
    workers : int, optional
        The number of threads; the processors that the process may use.
    progress : bool, optional
        Whether tqdm shows a bar: by default, if it is installed, on a terminal and after a second.
    on_error : {"raise", "return"}
        Whether the first failure is raised, or exceptions stand among the results.
    criterion, material, start, max_steps, tolerance, details, fixed
        As for the single fits, for all parts: ``radius=5.0`` for example.

    Returns
    -------
    list of Fit
        With ``on_error="return"`` exceptions stand in the places of failures.

    Raises
    ------
    ArgumentError
        For arguments that do not fit together, before anything is fitted.
    PointsError, FitError
        The first failure, with ``on_error="raise"``; its notes name the part.
    KeyboardInterrupt
        For Ctrl-C, when all threads have ended.

    Examples
    --------
    >>> import numpy as np
    >>> angle = np.linspace(0, 6, 20)
    >>> rings = [np.column_stack([r * np.cos(angle), r * np.sin(angle), 0 * angle]) for r in (1.0, 2.0, 3.0)]
    >>> [round(fit.radius, 9) for fit in fit_many(rings, "circle")]
    [1.0, 2.0, 3.0]
    """
    if feature not in NAMES:
        raise ArgumentError(f"no feature {feature!r}: there are {', '.join(NAMES)}")
    if on_error not in ("raise", "return"):
        raise ArgumentError("on_error is 'raise' or 'return'")
    kind = NAMES.index(feature)
    unknown = set(fixed) - set(FIXED[kind])
    if unknown:
        raise ArgumentError(f"a {feature} has no {', '.join(sorted(unknown))} to fix")
    renamed = {FIXED[kind][name]: value for name, value in fixed.items()}
    chosen = CRITERIA.index(criterion_of(criterion))
    options = request(Options(material, start, max_steps, tolerance), renamed)
    clouds = [as_points(part) for part in _parts(parts, offsets)]
    masses: list[Any] | None = None
    if weights is not None:
        if len(weights) != len(clouds):
            raise ArgumentError(f"{len(clouds)} parts have as many arrays of weights, not {len(weights)}")
        masses = [None if w is None else as_weights(w, len(c)) for w, c in zip(weights, clouds, strict=True)]
    if workers is None:
        workers = len(os.sched_getaffinity(0)) if hasattr(os, "sched_getaffinity") else os.cpu_count() or 1
    workers = max(1, min(int(workers), len(clouds)))
    bar = _bar(progress, len(clouds))
    show: Callable[[int], None] | None = None
    if bar is not None:

        def show(done: int) -> None:
            bar.update(done - bar.n)

    try:
        mask = details_of(details)
        found = _core.fit_many(kind, chosen, clouds, masses, options, mask, workers, show)
    finally:
        if bar is not None:
            bar.close()
    results: list[Fit[Any] | Error] = []
    for i, one in enumerate(found):
        if isinstance(one, BaseException):
            if on_error == "raise" or not isinstance(one, Error):
                one.add_note(f"in part {i}") if hasattr(one, "add_note") else None
                raise one
            results.append(one)
        else:
            asked = Request(kind, chosen, options, masses[i] if masses else None, 0)
            results.append(result(CLASSES[kind], one, asked, clouds[i]))
    return results
