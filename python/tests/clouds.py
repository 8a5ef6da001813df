"""Points near known features, by a seed."""

import numpy as np

import nu

FITS = {name: getattr(nu, f"fit_{name}") for name in nu._features.NAMES}


def ideal(feature, rng, n=80):
    """n points of a feature in a frame of its own."""
    t = rng.uniform(0, 2 * np.pi, n)
    u = rng.uniform(-1, 1, n)
    c, s, zero = np.cos(t), np.sin(t), np.zeros(n)
    if feature == "line":
        return np.column_stack([9 * u, zero, zero])
    if feature == "plane":
        return np.column_stack([9 * u, 5 * c, zero])
    if feature == "circle":
        return np.column_stack([4 * c, 4 * s, zero])
    if feature == "ellipse":
        return np.column_stack([6 * c, 3 * s, zero])
    if feature == "hyperbola":
        return np.column_stack([np.where(t < np.pi, 2, -2) * np.cosh(u * 1.5), 3 * np.sinh(u * 1.5), zero])
    if feature == "parabola":
        return np.column_stack([8 * u**2, 8 * u, zero])
    if feature == "sphere":
        r = np.sqrt(1 - u**2)
        return 5 * np.column_stack([r * c, r * s, u])
    if feature == "cylinder":
        return np.column_stack([3 * c, 3 * s, 10 * u])
    if feature == "cone":
        h = 12 + 6 * u
        return np.column_stack([0.4 * h * c, 0.4 * h * s, h])
    v = np.pi * u
    r = 8 + 2 * np.cos(v)
    return np.column_stack([r * c, r * s, 2 * np.sin(v)])


def rotation(rng):
    q = np.linalg.qr(rng.normal(size=(3, 3)))[0]
    return q * np.sign(np.linalg.det(q))


def cloud(feature, seed=1, n=80, noise=0.01):
    """n points near a feature somewhere in space."""
    rng = np.random.default_rng(seed)
    points = ideal(feature, rng, n) + noise * rng.normal(size=(n, 3))
    return points @ rotation(rng).T + rng.uniform(-20, 20, 3)
