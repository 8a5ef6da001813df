"""Points of any origin, results as values, many fits, relations."""

import _thread
import copy
import json
import pickle
import threading
import time
from types import SimpleNamespace as Holder

import numpy as np
import pandas
import polars
import pytest
import trimesh
from clouds import FITS, cloud

import nu

LAYOUTS = {
    "list": (lambda p: p.tolist(), False),
    "fortran": (np.asfortranarray, False),
    "rows": (lambda p: np.repeat(p, 2, axis=0)[::2], True),
    "columns": (lambda p: np.hstack([p, p])[:, 3:], True),
    "backwards": (lambda p: p[::-1].copy()[::-1], False),
    "big-endian": (lambda p: p.astype(">f8"), False),
    "unaligned": (lambda p: np.frombuffer(b"\0" + p.tobytes(), np.float64, offset=1).reshape(-1, 3), False),
    "read-only": (lambda p: np.frombuffer(p.tobytes()).reshape(-1, 3), True),
    "pandas": (lambda p: pandas.DataFrame(p, columns=list("xyz")), False),
    "polars": (lambda p: polars.DataFrame(p, schema=list("xyz")), False),
    "trimesh": (trimesh.PointCloud, False),
    "tensors": (lambda p: Holder(point=Holder(positions=Holder(numpy=lambda: p))), False),
    "array interface": (
        lambda p: type("Cloud", (), {"__array_interface__": p.__array_interface__, "owner": p})(),
        True,
    ),
}


@pytest.mark.parametrize("layout", LAYOUTS)
def test_every_layout_gives_the_same_bits(layout):
    make, borrowed = LAYOUTS[layout]
    points = cloud("sphere")
    given = make(points)
    assert nu.fit_sphere(given) == nu.fit_sphere(points)
    if borrowed:
        assert np.shares_memory(nu.as_points(given), np.asarray(given))


def test_small_floats_and_integers_are_exact():
    for dtype in (np.float32, np.float16, np.int16, np.uint8):
        points = (120 + 4 * cloud("sphere", seed=6)).clip(0, 250).astype(dtype)
        assert nu.fit_plane(points) == nu.fit_plane(points.astype(np.float64))


def test_results_are_frozen_values():
    for name, fit_ in FITS.items():
        for criterion in ("G", "C"):
            if criterion == "C" and name in ("ellipse", "hyperbola", "parabola"):
                continue
            points = cloud(name)
            fit = fit_(points, criterion)
            twin = pickle.loads(pickle.dumps(fit))
            assert twin == fit == copy.copy(fit) and hash(twin) == hash(fit) and twin != fit_(points[1:], criterion)
            assert pickle.loads(pickle.dumps(fit.feature)) == fit.feature
            # Not equality alone: the further fits of both agree.
            assert fit_(points, criterion, start=twin.feature) == fit_(points, criterion, start=fit.feature)
            assert np.array_equal(twin.deviations, fit.deviations) and twin.explain() == fit.explain() != ""
            assert (fit.P, fit.V, fit.T, fit.Q) == (fit.peak, fit.valley, fit.form, fit.rms)
            assert not fit.deviations.flags.writeable
            assert json.loads(json.dumps(fit.to_dict(deviations=True)))["form"] == fit.form
            assert type(fit).__name__ in repr(fit) and repr(fit.feature) in repr(fit)
            again = eval(repr(fit.feature), vars(nu))
            assert str(again)[:40] == str(fit.feature)[:40]
            with pytest.raises(AttributeError):
                fit.form = 0.0
            with pytest.raises(AttributeError):
                fit.feature.radius = 1.0


def test_details_come_late_but_from_the_same_points():
    points = cloud("circle")
    late, early = nu.fit_circle(points), nu.fit_circle(points, details="all")
    assert np.array_equal(late.deviations, early.deviations) and np.array_equal(late.covariance, early.covariance)
    assert late.deviations @ late.deviations == pytest.approx(late.sum_squares)
    with pytest.raises(nu.CalculationError):
        _ = late.contacts
    with pytest.raises(nu.CalculationError):
        _ = nu.fit_sphere(cloud("sphere"), "X").covariance
    with pytest.raises(nu.ArgumentError):
        nu.fit_circle(points, details=["colour"])
    stale = nu.fit_circle(points)
    points[3] += 0.5
    with pytest.raises(nu.CalculationError, match="points have changed"):
        _ = stale.covariance


def test_many_fits_are_the_single_ones():
    clouds = [cloud("cylinder", seed=i, n=40 + i) for i in range(60)]
    seen = [nu.fit_cylinder(c, "C") for c in clouds]
    assert nu.fit_many(clouds, "cylinder", "C", workers=4) == seen
    offsets = np.cumsum([0] + [len(c) for c in clouds])
    assert nu.fit_many(np.vstack(clouds), "cylinder", "C", offsets=offsets, progress=True) == seen
    assert nu.fit_many(np.array([c[:40] for c in clouds]), "plane") == [nu.fit_plane(c[:40]) for c in clouds]
    weights = [np.arange(len(c)) for c in clouds]
    many = nu.fit_many(clouds, "cylinder", weights=weights, radius=3.0, details="all")
    assert many == [nu.fit_cylinder(c, weights=w, radius=3.0) for c, w in zip(clouds, weights, strict=True)]
    assert many[0].explain() and many[7].covariance.shape == (4, 4)
    assert nu.fit_many([], "line") == []

    found = nu.fit_many([clouds[0], clouds[1][:3], clouds[2]], "sphere", on_error="return")
    assert isinstance(found[1], nu.PointsError) and found[0] == nu.fit_sphere(clouds[0])
    with pytest.raises(nu.PointsError):
        nu.fit_many([clouds[1][:3]], "sphere")
    for bad in ({"feature": "cube"}, {"feature": "plane", "radius": 1.0}, {"feature": "plane", "offsets": [0, 5]}):
        with pytest.raises(nu.ArgumentError):
            nu.fit_many(clouds[0], **bad)


def test_other_threads_run_and_an_interrupt_ends_a_fit():
    points = [cloud("cone", seed=i, n=20_000) for i in range(50)]
    ticks = 0
    ended = threading.Event()

    def tick():
        nonlocal ticks
        while not ended.is_set():
            ticks += 1
            time.sleep(0.001)

    ticker = threading.Thread(target=tick)
    ticker.start()
    try:
        before, end = ticks, time.monotonic() + 0.3
        while time.monotonic() < end:
            nu.fit_cone(points[0], "C", details="all")
        assert ticks > before + 3
        threading.Timer(0.1, _thread.interrupt_main).start()
        with pytest.raises(KeyboardInterrupt):
            for _ in range(1000):
                nu.fit_many(points, "cone", "C", workers=2)
    finally:
        ended.set()
        ticker.join()


def test_relations():
    z = nu.Cylinder(2.0, [0, 0, 0], [0, 0, 1])
    plane = nu.Plane([0, 0, 3], [0, 0, 1])
    (circle,) = plane.intersect(z)
    assert circle == nu.Circle(2.0, [0, 0, 3], [0, 0, 1]) and z.intersect(plane) == (circle,)
    line = nu.Line([0, 0, 0], [1, 0, 0])
    assert [p.tolist() for p in z.intersect(line)] == [[-2, 0, 0], [2, 0, 0]]
    assert line.distance_to([0, 3, 4]) == 5.0
    assert line.distance_to(plane) == plane.distance_to(line) == 3.0
    assert line.angle_with(plane) == plane.angle_with(line) == 90.0
    assert line.intersect(plane) == () and line.is_parallel_to(plane, 1e-9)
    assert plane.project([1, 2, 9]).tolist() == [1, 2, 3]
    assert z.project([4, 0, 1]) == pytest.approx([2, 0, 1])
    assert z.distances(np.array([[5.0, 0, 1], [0, 1, 0]])) == pytest.approx([3, 1])
    assert line.closest_points(nu.Line([1, 5, 1], [0, 0, 1]))[0] == pytest.approx([1, 0, 0])
    branches = z.intersect(nu.Cylinder(1.0, [0, 0, 0], [1, 0, 0]))
    assert len(branches) == 2
    for branch in branches:
        assert branch.is_closed and "closed" in repr(branch)
        curve = branch.points(50)
        assert z.distances(curve) == pytest.approx(np.zeros(50), abs=1e-12)
        assert branch.distance_to(curve[7]) == pytest.approx(0, abs=1e-12)
    turned = line.rotated(90, [0, 0, 1]).translated([0, 0, 2])
    assert turned.direction == pytest.approx([0, 1, 0], abs=1e-15) and turned.point[2] == 2
    assert turned.mid_line(line).point == pytest.approx([0, 0, 1])
    assert plane.mid_plane(nu.Plane([0, 0, 1], [0, 0, 1])).point[2] == 2
    assert {line, nu.Line([0, 0, 0], [2, 0, 0])} == {line} and line != plane
    with pytest.raises(nu.ArgumentError):
        line.mid_plane(turned.translated([0, 0, -2]))
    with pytest.raises(TypeError):
        line.distance_to("far")
