"""Circle and ellipse of the example programs, by scikit-image."""

import numpy as np
from skimage.measure import CircleModel, EllipseModel

# CNuAssociation: 40 degrees of a circle of radius 25 around (5, 0).
u = np.radians(70 + 5 * np.arange(9))
radius = 25 + np.where(np.arange(9) % 2 == 0, 0.001, -0.001)
arc = np.column_stack([5 + radius * np.cos(u), radius * np.sin(u)])
circle = CircleModel()
circle.estimate(arc)
print(f"arc: radius {circle.params[2]:.4f}, centre y {circle.params[1]:.4f}")

# CNuEllipse: an oval hole.
hole = np.array(
    [[6.001, 0.000], [5.196, 2.001], [3.000, 3.463], [0.001, 4.000], [-2.999, 3.465], [-5.197, 1.999],
     [-6.000, 0.001], [-5.195, -2.000], [-3.001, -3.464], [0.000, -4.001], [3.001, -3.463], [5.196, -1.999]]
)  # fmt: skip
ellipse = EllipseModel()
ellipse.estimate(hole)
print(f"hole: semi-axes {ellipse.params[2]:.4f} and {ellipse.params[3]:.4f}")
