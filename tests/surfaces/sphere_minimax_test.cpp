#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using nu::test::Random;
using nu::test::SphereCloud;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

CNuPointArray PointsOf(std::initializer_list<CNuPoint> list) {
  CNuPointArray points(static_cast<int>(list.size()));
  for (const CNuPoint& p : list) points.Add(p);
  return points;
}

CNuPointArray Scaled(const CNuPointArray& points, double size) {
  CNuPointArray scaled(points.GetSize());
  for (int i = 0; i < points.GetSize(); ++i)
    scaled.Add({size * points[i].x(), size * points[i].y(), size * points[i].z()});
  return scaled;
}

struct Extremes {
  double nearest = kInf;
  double farthest = 0.0;
  double Width() const { return farthest - nearest; }
};

Extremes DistancesFrom(const CNuPoint& centre, const CNuPointArray& points) {
  Extremes e;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double d = points[i].DistanceTo(centre);
    if (!(d >= 0.0)) return {0.0, kInf};
    e.nearest = std::min(e.nearest, d);
    e.farthest = std::max(e.farthest, d);
  }
  return e;
}

// The point where three planes n.x = h meet; not finite when there is no such point.
CNuPoint Meet(const CNuVector (&n)[3], const double (&h)[3]) {
  const CNuVector a = n[1] * n[2];
  const CNuVector sum = h[0] * a + h[1] * (n[2] * n[0]) + h[2] * (n[0] * n[1]);
  const double volume = n[0] % a;
  return {sum[0] / volume, sum[1] / volume, sum[2] / volume};
}

// The plane of all points equidistant from two.
void Bisect(const CNuPoint& p, const CNuPoint& q, CNuVector& n, double& h) {
  n = (q - p).To3DVector();
  h = n % p.MidPoint(q).To3DVector();
}

CNuPoint EquidistantFrom(const CNuPoint& o, const CNuPoint& p, const CNuPoint& q, const CNuPoint& r) {
  CNuVector n[3];
  double h[3];
  Bisect(o, p, n[0], h[0]), Bisect(o, q, n[1], h[1]), Bisect(o, r, n[2], h[2]);
  return Meet(n, h);
}

CNuPoint EquidistantFrom(const CNuPoint& o, const CNuPoint& p, const CNuPoint& q) {
  CNuVector n[3] = {{}, {}, (p - o).To3DVector() * (q - o).To3DVector()};
  double h[3] = {0.0, 0.0, n[2] % o.To3DVector()};
  Bisect(o, p, n[0], h[0]), Bisect(o, q, n[1], h[1]);
  return Meet(n, h);
}

// 4 to 10 points: scattered, on a lattice, on a sphere or near one, and with copies among them.
CNuPointArray SmallSet(Random& random, int kind) {
  const int n = 4 + random.Below(7);
  CNuPointArray points(n);
  if (kind % 5 < 2) return SphereCloud(random, n, 1.0, 180.0, kind % 5 == 0 ? 0.01 : 0.2);
  for (int i = 0; i < n; ++i) {
    const double x = random.Uniform(-1.0, 1.0), y = random.Uniform(-1.0, 1.0), z = random.Uniform(-1.0, 1.0);
    if (kind % 5 == 2) {
      points.Add({x, y, z});
    } else if (kind % 5 == 3) {
      points.Add({std::round(2.0 * x), std::round(2.0 * y), std::round(2.0 * z)});
    } else {
      points.Add(i > 3 && random.Below(2) == 0 ? points[random.Below(i)] : CNuPoint(x, y, z));
    }
  }
  return points;
}

TEST(CircumscribedSphere, AgreesWithAllSupportSets) {
  Random random(701);
  for (int run = 0; run < 1500; ++run) {
    const CNuPointArray points = SmallSet(random, run);
    CNuVector normal;
    if (CNuGeometry::AreCollinear(points, &normal, 1e-12) == 1) continue;
    double best = kInf;
    const auto judge = [&](const CNuPoint& centre) { best = std::min(best, DistancesFrom(centre, points).farthest); };
    for (int i = 0; i < points.GetSize(); ++i) {
      for (int j = 0; j < i; ++j) {
        judge(points[i].MidPoint(points[j]));
        for (int k = 0; k < j; ++k) {
          judge(EquidistantFrom(points[i], points[j], points[k]));
          for (int l = 0; l < k; ++l) judge(EquidistantFrom(points[i], points[j], points[k], points[l]));
        }
      }
    }
    CNuSphSurf sphere(7.0);
    sphere.FitMin(points, 1e-12);
    ASSERT_NEAR(sphere.GetRadius(), best, 1e-14 * best) << run;
    ASSERT_NEAR(DistancesFrom(sphere.GetCentre(), points).farthest, sphere.GetRadius(), 4e-15) << run;
  }
}

TEST(CircumscribedSphere, OfPointsOnALineAndFailures) {
  CNuSphSurf sphere(7.0, CNuPoint(1, 2, 3));
  const auto failure = [&](const CNuPointArray& points) { return FailureOf([&] { sphere.FitMin(points, 1e-9); }); };
  EXPECT_EQ(failure(CNuPointArray(1)), "bestfit 1 |CNuSphSurf [1,0]");
  for (const double bad : {kNaN, kInf, -kInf}) {
    for (const CNuPoint& p : {CNuPoint(bad, 0), CNuPoint(0, bad), CNuPoint(0, 0, bad), CNuPoint(bad, bad, bad)}) {
      EXPECT_EQ(failure(PointsOf({{0, 0}, {1, 0}, {0, 1}, {3, 3, 3}, p})), "bestfit 11 |CNuSphSurf [0,0]");
      EXPECT_EQ(failure(PointsOf({p})), "bestfit 11 |CNuSphSurf [0,0]");
      EXPECT_EQ(failure(PointsOf({p, p, p, p})), "bestfit 11 |CNuSphSurf [0,0]");
      EXPECT_EQ(failure(PointsOf({{0, 0}, p, {1, 1}})), "bestfit 11 |CNuSphSurf [0,0]");
    }
  }
  // The line's own fit decides by the length tolerance.
  EXPECT_EQ(FailureOf([&] { sphere.FitMin(PointsOf({{0, 0}, {1e-13, 0}}), 1e-14); }), "bestfit 2 |CNuLine [2,0]");
  EXPECT_EQ(sphere.GetRadius(), 7.0);
  for (const int copies : {1, 2, 5}) {
    CNuPointArray points(copies);
    for (int i = 0; i < copies; ++i) points.Add({1 + 1e-10 * i, 2, 3});
    sphere.FitMin(points, 1e-9);
    EXPECT_EQ(sphere.GetRadius(), 0.0);
    EXPECT_EQ(sphere.GetCentre().DistanceTo(CNuPoint(1, 2, 3)), 0.0);
  }
  sphere.FitMin(PointsOf({{1, 1, 0}, {3, 3, 2}, {0, 0, -1}, {2, 2, 1}}), 1e-9);
  EXPECT_NEAR(sphere.GetRadius(), 0.5 * std::sqrt(27.0), 1e-15);
  EXPECT_NEAR(sphere.GetCentre().DistanceTo(CNuPoint(1.5, 1.5, 0.5)), 0.0, 1e-15);
}

// Whether the four points hold the centre of their sphere between them.
bool Holds(const CNuPoint& centre, const CNuPoint (&p)[4]) {
  for (int k = 0; k < 4; ++k) {
    const CNuPoint& o = p[(k + 1) % 4];
    const CNuVector n = (p[(k + 2) % 4] - o).To3DVector() * (p[(k + 3) % 4] - o).To3DVector();
    if (!((n % (p[k] - o).To3DVector()) * (n % (centre - o).To3DVector()) > 0.0)) return false;
  }
  return true;
}

// Every sphere that cannot grow has four contacts that hold its centre, but for degenerate ones.
TEST(InscribedSphere, IsOneOfThoseThatSupportSetsGive) {
  Random random(702);
  int found = 0;
  for (int run = 0; run < 1500; ++run) {
    const CNuPointArray points = SmallSet(random, run % 3);
    std::vector<CNuPoint> optima;
    for (int i = 0; i < points.GetSize(); ++i)
      for (int j = 0; j < i; ++j)
        for (int k = 0; k < j; ++k)
          for (int l = 0; l < k; ++l) {
            const CNuPoint p[] = {points[i], points[j], points[k], points[l]};
            const CNuPoint c = EquidistantFrom(p[0], p[1], p[2], p[3]);
            if (Holds(c, p) && DistancesFrom(c, points).nearest > p[0].DistanceTo(c) - 1e-12) optima.push_back(c);
          }
    CNuSphSurf sphere(7.0);
    if (sphere.FitMaxEx(points, 1e-12) != NuFitSuccess) continue;
    double closest = kInf;
    for (const CNuPoint& c : optima) closest = std::min(closest, c.DistanceTo(sphere.GetCentre()));
    ASSERT_LE(closest, 1e-11) << run;
    ASSERT_NEAR(DistancesFrom(sphere.GetCentre(), points).nearest, sphere.GetRadius(), 1e-14) << run;
    ++found;
  }
  EXPECT_GT(found, 500);
}

TEST(InscribedSphere, FailsInOrderAndLeavesTheSphere) {
  CNuSphSurf sphere(7.0, CNuPoint(1, 2, 3));
  const auto failure = [&](const CNuPointArray& points) { return FailureOf([&] { sphere.FitMax(points, 1e-9); }); };
  Random random(703);
  EXPECT_EQ(failure(PointsOf({{0, 0}, {kNaN, 0}, {1, 1}})), "bestfit 1 |CNuSphSurf [4,0]");
  EXPECT_EQ(failure(PointsOf({{0, 0}, {1, 1}, {3, 3}, {2, 2, 1e-10}})), "bestfit 3 |CNuSphSurf [3,0]");
  for (const double bad : {kNaN, kInf, -kInf}) {
    EXPECT_EQ(failure(PointsOf({{0, 0}, {1, 0}, {0, 1}, {1, 1, 1}, {0, 0, bad}})), "bestfit 11 |CNuSphSurf [0,0]");
    EXPECT_EQ(failure(PointsOf({{bad, 0}, {bad, 0}, {bad, 0}, {bad, 0}})), "bestfit 11 |CNuSphSurf [0,0]");
  }
  EXPECT_EQ(failure(nu::test::PlaneCloud(random, 50, 1.0, 2.0, 0.0)), "bestfit 11 |CNuSphSurf [0,0]");
  EXPECT_EQ(failure(PointsOf({{1, 1}, {-1, 1}, {1, -1}, {-1, -1}})), "bestfit 11 |CNuSphSurf [0,0]");
  EXPECT_EQ(failure(SphereCloud(random, 3000, 1.0, 80.0, 1e-3)), "bestfit 11 |CNuSphSurf [0,0]") << "out of a cap";
  EXPECT_EQ(sphere.GetRadius(), 7.0);
  EXPECT_EQ(sphere.GetCentre().z(), 3.0);
}

// Contacts at once in twos, sixes and eights; a point in the mean of all; near the axis of a cap a stylus was in the
// way.
TEST(InscribedSphere, FindsItsWayFromAwkwardStarts) {
  CNuSphSurf sphere(7.0);
  CNuPointArray cube(9);
  for (int k = 0; k < 8; ++k) cube.Add({k % 2 * 2.0 - 1.0, k / 2 % 2 * 2.0 - 1.0, k / 4 * 2.0 - 1.0});
  sphere.FitMax(cube, 1e-9);
  EXPECT_EQ(sphere.GetRadius(), std::sqrt(3.0));
  EXPECT_EQ(sphere.GetCentre().DistanceTo(CNuPoint()), 0.0);
  Random random(704);
  CNuPointArray even = nu::test::BoxCloud(random, 300, 2.0, 2.0, 2.0);
  for (int i = 0; i < 300; ++i) even.Add({-even[i].x(), -even[i].y(), -even[i].z()});
  even.Add(CNuPoint());
  sphere.FitMax(even, 1e-9);
  EXPECT_GT(sphere.GetRadius(), 0.1) << "away from the mean";
  EXPECT_NEAR(DistancesFrom(sphere.GetCentre(), even).nearest, sphere.GetRadius(), 1e-15);
  for (int run = 0; run < 30; ++run) {
    const CNuPointArray cap = SphereCloud(random, 2000, 10.0, 110.0, 1e-3);
    sphere.FitMax(cap, 1e-9);
    EXPECT_NEAR(sphere.GetRadius(), 10.0, 0.02);
    EXPECT_NEAR(DistancesFrom(sphere.GetCentre(), cap).nearest, sphere.GetRadius(), 1e-14);
  }
}

// Required: FitMinEx runs FitMax, and neither tells an iteration limit from other failures; hosts written for it rely
// on both.
TEST(InscribedSphere, IsWhatFitMinExGives) {
  Random random(705);
  const CNuPointArray points = SphereCloud(random, 100, 5.0, 180.0, 0.01);
  CNuSphSurf a(1.0), b(1.0), c(1.0);
  a.FitMax(points, 1e-9);
  NuSetLengthTol(1e-5);
  EXPECT_EQ(b.FitMinEx(points, 1e-9), NuFitSuccess);
  EXPECT_EQ(c.FitMaxEx(points, 1e-9), NuFitSuccess);
  for (const CNuSphSurf* s : {&b, &c}) {
    EXPECT_EQ(s->GetRadius(), a.GetRadius());
    EXPECT_EQ(s->GetCentre().DistanceTo(a.GetCentre()), 0.0);
  }
  EXPECT_EQ(b.FitMinEx(points.SubArray(0, 2), 1e-9), NuFitFailure);
  EXPECT_EQ(c.FitMaxEx(SphereCloud(random, 50, 1.0, 60.0, 0.01), 1e-9), NuFitFailure);
  EXPECT_EQ(NuGetLengthTol(), 1e-5);
  NuSetLengthTol(1e-12);
}

// Centres with five contacts: the outer ones equidistant, and the inner ones. None of them has a thinner shell.
TEST(ZoneSphere, IsNotBeatenByAnySupportSet) {
  Random random(706);
  int same = 0;
  constexpr int runs = 150;
  for (int run = 0; run < runs; ++run) {
    const CNuPointArray points = SphereCloud(random, 5 + random.Below(4), 1.0, 180.0, 0.01);
    const int n = points.GetSize();
    double best = kInf;
    const auto judge = [&](const CNuPoint& centre) { best = std::min(best, DistancesFrom(centre, points).Width()); };
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < i; ++j)
        for (int k = 0; k < j; ++k) {
          for (int l = 0; l < k; ++l) judge(EquidistantFrom(points[i], points[j], points[k], points[l]));
          for (int q = 0; q < n; ++q)
            for (int r = 0; r < q; ++r) {
              CNuVector across[3];
              double height[3];
              Bisect(points[i], points[j], across[0], height[0]), Bisect(points[i], points[k], across[1], height[1]);
              Bisect(points[q], points[r], across[2], height[2]);
              judge(Meet(across, height));
            }
        }
    CNuSphSurf sphere(7.0);
    double zone = -1.0;
    if (sphere.FitMinZoneEx(points, &zone, 1e-12, 1000) != NuFitSuccess) continue;
    ASSERT_NEAR(DistancesFrom(sphere.GetCentre(), points).Width(), zone, 1e-14) << run;
    if (std::fabs(zone - best) <= 1e-13) ++same;
  }
  EXPECT_GT(same, runs * 9 / 10) << "the others have several optima";
}

TEST(ZoneSphere, FailsInOrderAndLeavesEverything) {
  CNuSphSurf sphere(7.0), inner(7.0), outer(7.0);
  double zone = -1.0;
  const auto failure = [&](const CNuPointArray& points, long limit = 1000) {
    return FailureOf([&] { sphere.FitMinZone(points, &zone, &inner, &outer, 1e-9, limit); });
  };
  Random random(707);
  const CNuPointArray noisy = SphereCloud(random, 30, 10.0, 180.0, 0.05);
  EXPECT_EQ(failure(CNuPointArray(1), 0), "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(FailureOf([&] { sphere.FitMinZoneEx(noisy, &zone, 1e-9, 0); }), "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(FailureOf([&] { sphere.FitMinZoneEx(noisy, &zone, &inner, &outer, 1e-9, -1); }),
            "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(failure(CNuPointArray(1)), "bestfit 1 |CNuSphSurf [1,0]");
  EXPECT_EQ(failure(noisy, 1), "bestfit 12 |CNuSphSurf [0,0]");
  // Points in one plane go to the circle, and so do the names of its failures.
  EXPECT_EQ(failure(nu::test::CircleCloud(random, 30, 1.0, 360.0, 0.05), 1), "bestfit 12 |CNuCircle [0,0]");
  for (const double bad : {kNaN, kInf, -kInf}) {
    for (const CNuPoint& p : {CNuPoint(bad, 0), CNuPoint(0, bad), CNuPoint(0, 0, bad)}) {
      EXPECT_EQ(failure(PointsOf({{0, 0}, {1, 0}, {0, 1}, {1, 1, 1}, {1, 0, 1}, p})), "bestfit 11 |CNuSphSurf [0,0]");
      EXPECT_EQ(failure(PointsOf({p, {1, 0}, {0, 1}, {1, 1, 1}})), "bestfit 11 |CNuSphSurf [0,0]");
      EXPECT_EQ(failure(PointsOf({p})), "bestfit 11 |CNuSphSurf [0,0]");
    }
  }
  NuSetLengthTol(1e-5);
  EXPECT_EQ(sphere.FitMinZoneEx(noisy, &zone, &inner, &outer, 1e-9, 2), NuFitNoConvergence);
  EXPECT_EQ(sphere.FitMinZoneEx(CNuPointArray(1), &zone, 1e-9, 2), NuFitFailure);
  EXPECT_EQ(NuGetLengthTol(), 1e-5);
  NuSetLengthTol(1e-12);
  EXPECT_EQ(sphere.GetRadius() + inner.GetRadius() + outer.GetRadius(), 21.0);
  EXPECT_EQ(zone, -1.0);
  EXPECT_EQ(failure(SphereCloud(random, 40, 1.0, 180.0, 0.0)), "nothing");
  EXPECT_EQ(zone, 0.0) << "a least-squares sphere within the tolerance has no zone";
  EXPECT_EQ(inner.GetRadius(), sphere.GetRadius());
  EXPECT_EQ(outer.GetCentre().DistanceTo(sphere.GetCentre()), 0.0);
}

TEST(ZoneSphere, OfPointsInOnePlaneIsTheCircle) {
  Random random(708);
  for (int run = 0; run < 20; ++run) {
    const CNuPointArray flat =
        nu::test::RandomMotion(random, 10.0)(nu::test::CircleCloud(random, 4 + run, 3, 360, 0.1));
    CNuSphSurf sphere(7.0), inner(7.0), outer(7.0);
    CNuCircle circle(7.0);
    double zone = -1.0, form = -1.0;
    circle.FitMinZone(flat, &form, 1e-9, 1000);
    sphere.FitMinZone(flat, &zone, &inner, &outer, 1e-9, 1000);
    EXPECT_EQ(zone, form);
    EXPECT_EQ(sphere.GetRadius(), circle.GetRadius());
    EXPECT_EQ(sphere.GetCentre().DistanceTo(circle.GetCentre()), 0.0);
    EXPECT_NEAR(outer.GetRadius() - inner.GetRadius(), zone, 1e-15);
    EXPECT_EQ(sphere.FitMinZoneEx(flat, &zone, &inner, &outer, 1e-9, 1000), NuFitSuccess);
  }
}

// Rigid motion, size and order carry all three along, sizes whose squares overflow or vanish included; what encloses
// encloses and touches, and the zone is never wider than the least-squares form.
TEST(MinimaxSpheres, FollowTheirPoints) {
  Random random(709);
  for (const double cap : {180.0, 120.0, 60.0, 15.0}) {
    for (const int n : {12, 300, 5000}) {
      const CNuPointArray points = SphereCloud(random, n, 10.0, cap, 0.01);
      const nu::test::Motion motion = nu::test::RandomMotion(random, 100.0);
      const double sensitivity = std::pow(180.0 / cap, 2.0);
      CNuSphSurf a(1.0), b(1.0), inner(1.0), outer(1.0);
      for (const double size : {1.0, 1e-3, 1e5, 1e-150, 1e150}) {
        const CNuPointArray moved = Scaled(nu::test::Shuffled(random, motion(points)), size);
        const auto same = [&](const char* what) {
          SCOPED_TRACE(what + std::to_string(cap) + " " + std::to_string(n) + " " + std::to_string(size));
          const CNuPoint c = motion(a.GetCentre()), d = b.GetCentre();
          EXPECT_NEAR(b.GetRadius() / size, a.GetRadius(), 1e-11 * sensitivity);
          EXPECT_NEAR(c.DistanceTo(CNuPoint(d.x() / size, d.y() / size, d.z() / size)), 0.0, 1e-11 * sensitivity);
        };
        a.FitMin(points, 1e-9), b.FitMin(moved, 0.0);
        same("min ");
        EXPECT_NEAR(DistancesFrom(a.GetCentre(), points).farthest, a.GetRadius(), 1e-14);
        if (cap > 90.0 && n > 12) {
          a.FitMax(points, 1e-9), b.FitMax(moved, 0.0);
          same("max ");
          EXPECT_NEAR(DistancesFrom(a.GetCentre(), points).nearest, a.GetRadius(), 1e-14);
        }
        double zone = 0.0, zoneMoved = 0.0, form = 0.0, sumsq = 0.0;
        a.FitMinZone(points, &zone, &inner, &outer, 1e-9, 1000);
        ASSERT_EQ(b.FitMinZoneEx(moved, &zoneMoved, 0.0, 1000), NuFitSuccess) << cap << " " << n << " " << size;
        same("zone ");
        EXPECT_NEAR(zoneMoved / size, zone, 1e-11);
        const Extremes e = DistancesFrom(a.GetCentre(), points);
        EXPECT_NEAR(e.Width(), zone, 1e-13);
        EXPECT_NEAR(e.nearest, inner.GetRadius(), 1e-13);
        EXPECT_NEAR(e.farthest, outer.GetRadius(), 1e-13);
        b.Fit(points, &form, &sumsq, 1000);
        EXPECT_LE(zone, form);
      }
    }
  }
}

// Tolerances that mean nothing spoil a result at most.
TEST(MinimaxSpheres, EndWithAnyTolerance) {
  Random random(710);
  const CNuPointArray points = SphereCloud(random, 50, 1.0, 180.0, 0.01);
  CNuSphSurf s(1.0);
  double zone;
  for (const double tol : {0.0, -1.0, kInf, kNaN}) {
    FailureOf([&] { s.FitMin(points, tol), s.FitMax(points, tol); });
    FailureOf([&] { s.FitMinZone(points, &zone, tol, 1000); });
    s.FitMinEx(points, tol), s.FitMinZoneEx(points, &zone, tol, 1000);
    EXPECT_EQ(NuGetLengthTol(), 1e-12);
  }
}

}  // namespace
