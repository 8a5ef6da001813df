"""Clouds in parts by Dask, and pictures."""

import os
import pickle
import signal

import dask.array
import dask.bag
import matplotlib.pyplot as plt
import nu.dask
import numpy as np
import pytest
from clouds import FITS, cloud
from distributed import Client, LocalCluster
from test_fits import numbers

import nu


@pytest.mark.parametrize("name", FITS)
def test_parts_equal_the_whole(name):
    points = cloud(name, n=5000)  # more than the samples have
    whole = FITS[name](points)
    with dask.config.set(scheduler="synchronous"):
        parts = getattr(nu.dask, f"fit_{name}")(dask.array.from_array(points, chunks=(1700, 2)))
    assert numbers(parts.feature) == pytest.approx(numbers(whole.feature), rel=1e-7, abs=1e-7)
    assert parts.n_points == 5000 and parts.sum_squares == pytest.approx(whole.sum_squares, rel=1e-9)
    assert parts.form == pytest.approx(whole.form, rel=1e-6)


def test_bags_and_other_criteria():
    points = cloud("cylinder", n=600)
    bag = dask.bag.from_sequence(list(points), npartitions=5)
    with dask.config.set(scheduler="synchronous"):
        for criterion in nu.Criterion:
            parts, whole = nu.dask.fit_cylinder(bag, criterion), nu.fit_cylinder(points, criterion)
            assert parts.feature.radius == pytest.approx(whole.radius, rel=1e-9)
            assert parts.form == pytest.approx(whole.form, rel=1e-7)
        tight, loose = nu.fit_cylinder(points, "C", radius=3.01), nu.dask.fit_cylinder(bag, "C", radius=3.01)
        assert loose.form == pytest.approx(tight.form, rel=1e-7) and loose.feature.radius == 3.01
        masses = dask.bag.from_sequence(np.arange(600) + 1.0, npartitions=5)
        weighted = nu.dask.fit_cylinder(bag, weights=masses).feature
        assert weighted.radius == pytest.approx(nu.fit_cylinder(points, weights=np.arange(600) + 1.0).radius, rel=1e-9)
        flat = cloud("circle", n=3000, noise=0.0)
        for criterion in nu.Criterion:
            ring = nu.dask.fit_circle(dask.array.from_array(flat, chunks=(1600, 3)), criterion)
            assert ring.feature.radius == pytest.approx(nu.fit_circle(flat, criterion).radius, rel=1e-9)
        with pytest.raises(nu.PointsError):
            nu.dask.fit_circle(bag, "C")
        array = dask.array.from_array(points, chunks=(100, 3))
        for refused in (
            lambda: nu.dask.fit_line(points),
            lambda: nu.dask.fit_torus(array, "C"),
            lambda: nu.dask.fit_cylinder(array, weights=np.ones(5)),
            lambda: nu.dask.fit_cylinder(array, weights=dask.array.ones(7)),
            lambda: nu.dask.fit_cylinder(bag, weights=np.ones(600)),
            lambda: nu.dask.fit_cylinder(array, "X", weights=np.ones(600)),
            lambda: nu.dask.fit_cylinder(array, radius=-1.0),
        ):
            with pytest.raises(nu.ArgumentError):
                refused()


# What a fit of the cloud keeps, some hundredths beside what it would find.
FIXED = {
    "line": ("point", "direction"),
    "plane": ("normal",),
    "circle": ("radius", "normal"),
    "ellipse": ("centre",),
    "hyperbola": ("normal",),
    "parabola": ("vertex",),
    "sphere": ("radius", "centre"),
    "cylinder": ("radius", "axis_point"),
    "cone": ("semi_angle", "apex"),
    "torus": ("major_radius", "axis_direction"),
}


@pytest.mark.parametrize("name", FITS)
def test_parts_have_weights_and_fixed_parameters(name):
    points = cloud(name, n=3000)
    weights = np.arange(3000) % 5 / 2
    free = FITS[name](points).feature
    cloud_ = dask.array.from_array(points, chunks=(1500, 3))
    for fixed in ({}, *({key: 1.0005 * getattr(free, key)} for key in FIXED[name])):
        whole = FITS[name](points, weights=weights, **fixed)
        given = dask.array.from_array(weights, chunks=900) if fixed else weights
        with dask.config.set(scheduler="synchronous"):
            parts = getattr(nu.dask, f"fit_{name}")(cloud_, weights=given, **fixed)
        for key, value in fixed.items():
            if np.ndim(value) == 0:
                assert getattr(parts.feature, key) == value
        # A conic is symmetric: its x axis has two senses.
        ours, theirs = parts.feature.to_dict(), whole.feature.to_dict()
        if "x_axis" in ours and np.dot(ours["x_axis"], theirs["x_axis"]) < 0:
            ours["x_axis"] = tuple(-c for c in ours["x_axis"])
        for key in list(ours)[1:]:
            assert ours[key] == pytest.approx(theirs[key], rel=1e-6, abs=1e-6), (fixed, key)
        assert parts.sum_squares == pytest.approx(whole.sum_squares, rel=1e-9)
        assert (parts.rms, parts.form) == pytest.approx((whole.rms, whole.form), rel=1e-6)


def slow_and_fatal(block, marker=None):
    """Kills its own worker the first time."""
    if not os.path.exists(marker):
        open(marker, "w").close()
        os.kill(os.getpid(), signal.SIGKILL)
    return block


def test_a_lost_worker_changes_nothing(tmp_path):
    points = cloud("sphere", n=2000)
    with (
        LocalCluster(n_workers=2, threads_per_worker=1, dashboard_address=None, processes=True) as cluster,
        Client(cluster),
    ):
        array = dask.array.from_array(points, chunks=(250, 3))
        calm = nu.dask.fit_sphere(array)
        marker = tmp_path / "killed"
        fatal = array.map_blocks(slow_and_fatal, marker=str(marker), dtype=float, meta=np.empty((0, 3)))
        assert nu.dask.fit_sphere(fatal) == calm and marker.exists()
    assert numbers(calm.feature) == pytest.approx(numbers(nu.fit_sphere(points).feature), rel=1e-9)


def test_every_fit_has_a_picture(tmp_path):
    for name, fit_ in FITS.items():
        fit = fit_(cloud(name))
        ax = fit.plot()
        ax.figure.savefig(tmp_path / f"{name}.png")
        assert f"{fit.form:.4g}" in ax.get_title()
        with pytest.raises(nu.CalculationError):
            pickle.loads(pickle.dumps(fit)).plot()
        assert pickle.loads(pickle.dumps(fit)).plot(cloud(name)).lines or ax.collections
        plt.close("all")
    ax = nu.fit_cylinder(cloud("cylinder")).plot(kind="polar", magnification=10)
    assert "x 10" in ax.get_title()
    with pytest.raises(nu.ArgumentError):
        nu.fit_line(cloud("line")).plot(kind="polar")
