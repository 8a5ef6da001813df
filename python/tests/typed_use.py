"""What a user's type checker must accept; mypy reads this, nothing runs it."""

from __future__ import annotations

import numpy as np
from numpy.typing import NDArray

import nu


def use(points: NDArray[np.float32]) -> float:
    bore: nu.CylinderFit = nu.fit_cylinder(points, "minimum_zone", radius=5.0)
    face = nu.fit_plane(points.tolist(), weights=[1.0] * len(points))
    plane: nu.Plane = face.feature
    where: NDArray[np.float64] = bore.axis_point + bore.axis_direction
    distance: float = plane.distance_to(where)
    angle: float = bore.feature.axis.angle_with(plane)
    contacts: nu.Contacts = bore.contacts
    moved: nu.Plane = plane.translated([0, 0, 1]).rotated(90, (1, 0, 0))
    return distance + angle + bore.form + float(contacts.multipliers[0]) + moved.distance_to((0, 0, 0))
