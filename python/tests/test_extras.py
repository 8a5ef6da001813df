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
    points = cloud(name, n=600)
    whole = FITS[name](points)
    with dask.config.set(scheduler="synchronous"):
        parts = getattr(nu.dask, f"fit_{name}")(dask.array.from_array(points, chunks=(70, 2)))
    assert numbers(parts.feature) == pytest.approx(numbers(whole.feature), rel=1e-7, abs=1e-7)
    assert parts.n_points == 600 and parts.sum_squares == pytest.approx(whole.sum_squares, rel=1e-9)
    assert parts.form == pytest.approx(whole.form, rel=1e-6)


def test_bags_and_other_criteria():
    points = cloud("cylinder", n=600)
    bag = dask.bag.from_sequence(list(points), npartitions=5)
    with dask.config.set(scheduler="synchronous"):
        for criterion in nu.Criterion:
            parts, whole = nu.dask.fit_cylinder(bag, criterion), nu.fit_cylinder(points, criterion)
            assert parts.feature.radius == pytest.approx(whole.radius, rel=1e-9)
            assert parts.form == pytest.approx(whole.form, rel=1e-7)
        with pytest.raises(nu.ArgumentError):
            nu.dask.fit_line(points)


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
