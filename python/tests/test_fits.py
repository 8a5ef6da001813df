"""Fits against the C++ library, against laws and against scipy."""

import os
import subprocess

import numpy as np
import pytest
import scipy.optimize
from clouds import FITS, cloud, rotation
from hypothesis import given, settings
from hypothesis import strategies as st

import nu

FEATURES = sorted(FITS)


def numbers(feature):
    """The numbers of a feature in the order of its constructor."""
    values = list(feature.to_dict().values())[1:]
    return np.concatenate([np.atleast_1d(v) for v in values])


def bits(*values):
    return [f"{int(x):016x}" for x in np.concatenate([np.atleast_1d(v) for v in values]).view(np.uint64)]


@pytest.mark.parametrize("source", FEATURES)
def test_fits_have_the_bits_of_the_library(source):
    points = cloud(source, seed=5)
    program = os.environ["NU_PLAIN_FITS"]
    given_ = np.int64(len(points)).tobytes() + points.tobytes()
    lines = subprocess.run([program], input=given_, capture_output=True, check=True).stdout.decode().splitlines()
    assert len(lines) == 4 * len(FEATURES)
    converged = 0
    for line in lines:
        name, criterion, *expected = line.split()
        try:
            fit = FITS[name](points, "GCNX"[int(criterion)])
        except nu.Error as error:
            assert [error.cause_name] == expected
        else:
            assert bits(numbers(fit.feature), fit.form, fit.peak, fit.rms, fit.sum_squares) == expected
            converged += 1
    assert converged >= 8


# Iterations end by an absolute length, so a much smaller unit would end them earlier.
@settings(max_examples=25, deadline=None)
@given(st.sampled_from(FEATURES), st.integers(0, 10**6), st.sampled_from([1.0, 25.4, 1e4]))
def test_motions_scales_and_permutations_carry_the_fit_along(name, seed, scale):
    rng = np.random.default_rng(seed)
    points = cloud(name, seed=3)
    r, shift = rotation(rng), rng.uniform(-50, 50, 3)
    moved = scale * (points @ r.T + shift)[rng.permutation(len(points))]
    before, after = FITS[name](points), FITS[name](moved)
    assert after.form == pytest.approx(scale * before.form, rel=1e-6)
    assert after.sum_squares == pytest.approx(scale**2 * before.sum_squares, rel=1e-6)
    for key, value in before.feature.to_dict().items():
        there = after.feature.to_dict()[key]
        if isinstance(value, float):
            expected = value if key == "semi_angle" else scale * value
            assert there == pytest.approx(expected, rel=1e-5)
        elif key in ("direction", "normal", "x_axis", "axis_direction"):
            assert abs(np.dot(r @ value, there)) == pytest.approx(1.0, abs=1e-9)
        elif key in ("centre", "apex", "vertex"):
            assert there == pytest.approx(scale * (r @ value + shift), abs=1e-4 * scale)


def radial(points, p):
    """Distances from the axis through (p0, p1, 0) along (p2, p3, 1)."""
    d = np.array([p[2], p[3], 1.0])
    return np.linalg.norm(np.cross(points - [p[0], p[1], 0.0], d), axis=1) / np.linalg.norm(d)


def test_least_squares_are_those_of_scipy():
    rng = np.random.default_rng(4)
    points = cloud("sphere", seed=4)
    start = [*points.mean(axis=0), 1.0]
    found = scipy.optimize.least_squares(
        lambda p: np.linalg.norm(points - p[:3], axis=1) - p[3], start, xtol=1e-15, ftol=1e-15, gtol=1e-15
    )
    fit = nu.fit_sphere(points)
    assert np.r_[fit.centre, fit.radius] == pytest.approx(found.x, rel=1e-7)
    assert fit.sum_squares <= 2 * found.cost * (1 + 1e-12)

    t, z = rng.uniform(0, 6.2, 200), rng.uniform(-5, 5, 200)
    noisy = 3 + rng.normal(scale=0.01, size=200)
    points = np.column_stack([noisy * np.cos(t), noisy * np.sin(t), z]) + [1, 2, 0]
    found = scipy.optimize.least_squares(
        lambda p: radial(points, p) - p[4], [1, 2, 0, 0, 3], xtol=1e-15, ftol=1e-15, gtol=1e-15
    )
    fit = nu.fit_cylinder(points)
    assert fit.radius == pytest.approx(found.x[4], rel=1e-9)
    assert fit.sum_squares <= 2 * found.cost * (1 + 1e-12)
    # The covariance of the radius is that of the normal equations.
    j = found.jac
    s2 = 2 * found.cost / (200 - 5)
    radius = fit.uncertainty.parameters.index("radius")
    assert fit.covariance[radius, radius] == pytest.approx(s2 * np.linalg.inv(j.T @ j)[4, 4], rel=1e-4)


def test_minimax_fits_enclose_touch_and_are_narrower():
    points = cloud("cylinder", seed=8)
    fits = [nu.fit_cylinder(points, c) for c in nu.Criterion]
    squares, zone, ring, plug = fits
    assert zone.form < squares.form
    assert plug.radius < squares.radius < ring.radius
    assert np.max(ring.deviations) == pytest.approx(0, abs=1e-12)
    assert np.min(plug.deviations) == pytest.approx(0, abs=1e-12)
    assert np.max(np.abs(zone.deviations)) == pytest.approx(zone.form / 2, abs=1e-12)
    for fit in (zone, ring, plug):
        held = fit.contacts
        assert held.multipliers.sum() == pytest.approx(1.0)
        offset = fit.form / 2 if fit is zone else 0.0
        assert fit.deviations[held.indices] == pytest.approx(held.sides * offset, abs=1e-9)


def test_options_do_what_they_say():
    points = cloud("cylinder", seed=2)
    free = nu.fit_cylinder(points)
    fixed = nu.fit_cylinder(points, radius=3.1)
    assert fixed.radius == 3.1 and fixed.sum_squares > free.sum_squares
    along = nu.fit_cylinder(points, axis_direction=-free.axis_direction)
    assert along.axis_direction == pytest.approx(-free.axis_direction, abs=1e-15)
    through = nu.fit_cylinder(points, axis_point=free.axis_point + 0.01)
    axis = nu.Line(through.axis_point, through.axis_direction)
    assert axis.distance_to(free.axis_point + 0.01) == pytest.approx(0, abs=1e-9)
    assert nu.fit_cylinder(points, "C", material="outside").peak >= 0
    assert np.min(nu.fit_cylinder(points, material="outside").deviations) >= -1e-12
    # A weight of n is the point n times.
    weights = np.random.default_rng(0).integers(0, 4, len(points))
    repeated = nu.fit_cylinder(np.repeat(points, weights, axis=0))
    weighted = nu.fit_cylinder(points, weights=weights)
    assert weighted.radius == pytest.approx(repeated.radius, rel=1e-9)
    assert nu.fit_cylinder(points, start=free.feature).radius == pytest.approx(free.radius, rel=1e-9)
    proven = nu.fit_circle(cloud("circle", n=12), "C", prove_global=100_000)
    assert proven.bound is not None and proven.bound <= proven.form
    torus = nu.fit_torus(cloud("torus"), major_radius=8.0, minor_radius=2.0)
    assert (torus.major_radius, torus.minor_radius) == (8.0, 2.0)


def test_failures_are_value_and_runtime_errors_with_causes():
    with pytest.raises(ValueError, match="at least 4 are needed") as caught:
        nu.fit_sphere(np.eye(3))
    assert (caught.value.cause, caught.value.cause_name) == (1, "NuBestfitTooFewPoints")
    assert isinstance(caught.value, nu.FitError) and "4" in caught.value.explanation
    with pytest.raises(RuntimeError):
        nu.fit_sphere([[np.nan] * 3] * 5)
    with pytest.raises(nu.ArgumentError):
        nu.fit_line(np.eye(3), "maximum_inscribed")
    with pytest.raises(nu.ArgumentError, match="no criterion 'best'"):
        nu.fit_line(np.eye(3), "best")
    with pytest.raises(nu.ArgumentError):
        nu.fit_circle(np.eye(3), radius=-1.0)
    with pytest.raises(nu.ArgumentError):
        nu.fit_circle(np.eye(3), weights=[1, 2])
    with pytest.raises(TypeError):
        nu.fit_circle(np.eye(3), start=nu.Sphere(1, [0, 0, 0]), radius="wide")
    with pytest.raises(nu.ArgumentError):
        nu.fit_circle(np.eye(3), start=nu.Sphere(1, [0, 0, 0]))
    with pytest.raises(ValueError):
        nu.Cylinder(0.0, [0, 0, 0], [0, 0, 1])
    for bad in (np.zeros((3, 2)), np.zeros(9), np.array("text"), np.zeros((4, 3), complex), [[2**60 + 1, 0, 0]] * 4):
        with pytest.raises(nu.ArgumentError):
            nu.fit_plane(bad)


def test_polynomials():
    x = np.linspace(-1, 1, 50)
    fit = nu.fit_polynomial(x, 2 - x + 3 * x**3, 3)
    assert fit.coefficients == pytest.approx([2, -1, 0, 3], abs=1e-13)
    assert fit(x.reshape(5, 10)) == pytest.approx(np.polyval(fit.coefficients[::-1], x).reshape(5, 10))
    for args in (([], [], 1), ([1, 2], [1], 1), ([1, 2], [1, 2], -1)):
        with pytest.raises(nu.ArgumentError):
            nu.fit_polynomial(*args)
    with pytest.raises(nu.CalculationError):
        nu.fit_polynomial([1, np.nan], [1, 2], 1)
