"""Tasks of the example programs, by NumPy and SciPy."""

import numpy as np
from scipy import integrate, interpolate, optimize

# CNuCircle: a bore by least squares and as the minimum zone.
bore = np.array(
    [[10.004, 0.001], [7.069, 7.074], [0.002, 9.996], [-7.075, 7.069], [-9.997, -0.003], [-7.066, -7.071],
     [-0.001, -10.003], [7.073, -7.068]]
)  # fmt: skip


def radii(centre):
    return np.hypot(*(bore - centre).T)


def residuals(c):
    return radii(c[:2]) - c[2]


circle = optimize.least_squares(residuals, [*bore.mean(axis=0), 1.0], xtol=1e-15, ftol=1e-15, gtol=1e-15).x
print(f"circle: diameter {2 * circle[2]:.4f}, roundness {np.ptp(radii(circle[:2])):.4f}")
zone = optimize.minimize(lambda c: np.ptp(radii(c)), circle[:2], method="Nelder-Mead")
print(f"zone by Nelder-Mead: roundness {zone.fun:.6f}")

# CNuPlane: a face by least squares.
heights = np.array([[0.002, -0.001, 0.000], [-0.001, -0.003, 0.001], [0.001, 0.000, 0.003]])
i, j = np.indices(heights.shape)
face = np.column_stack([20.0 * i.ravel(), 15.0 * j.ravel(), 8.0 + heights.ravel()])
normal = np.linalg.svd(face - face.mean(axis=0))[2][2]
print(f"plane: flatness {np.ptp(face @ normal):.5f}")

# CNuAlgEqu: the roots of x^4 - 3 x^3 + 2 x^2 + 2 x - 4.
print("roots:", *(f"{r:.12f}" for r in sorted(np.roots([1, -3, 2, 2, -4]), key=lambda r: (r.imag, r.real))))

# CNuIntegral: the perimeter of an ellipse.
perimeter = integrate.quad(lambda t: np.sqrt(4 * np.sin(t) ** 2 + np.cos(t) ** 2), 0, 2 * np.pi, epsabs=1e-12)[0]
print(f"integral: {perimeter:.10f}")

# CNuInterpolation: a natural spline through a table.
spline = interpolate.CubicSpline([0, 10, 20, 30, 40], [-230.2, -115.4, 0.0, 116.1, 232.9], bc_type="natural")
print(f"spline at 23.4: {spline(23.4):.4f}")
