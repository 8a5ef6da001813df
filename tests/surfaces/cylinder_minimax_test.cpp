#include <gtest/gtest.h>

#include <cmath>
#include <utility>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/minimax_laws.h"

namespace {

using namespace nu::test;

TEST(MinimaxCylinders, OfPointsOnALineOrInAPlane) {
  CNuCylSurf a(7.0), b(7.0), c(7.0), inner(7.0), outer(7.0);
  double zone = -1.0;
  const auto fitAll = [&](const CNuPointArray& points) {
    a.FitMin(points, 1e-9, 9), b.FitMax(points, 1e-9, 9);
    c.FitMinZone(points, &zone, &inner, &outer, 1e-9, 9);
    EXPECT_EQ(a.GetRadius() + b.GetRadius() + c.GetRadius() + zone + inner.GetRadius() + outer.GetRadius(), 0.0);
  };
  for (const int copies : {1, 2, 5}) {
    CNuPointArray points(copies);
    for (int i = 0; i < copies; ++i) points.Add({1 + 1e-10 * i, 2, 3});
    fitAll(points);
    for (const CNuCylSurf* cylinder : {&a, &b, &c, &inner, &outer}) {
      EXPECT_EQ(cylinder->GetAxis().GetPoint().DistanceTo(CNuPoint(1, 2, 3)), 0.0);
      EXPECT_EQ(cylinder->GetAxisDirection()[2], 1.0);
    }
  }
  const CNuPointArray line = PointsOf({{1, 1, 0}, {3, 3, 2}, {0, 0, -1}, {2, 2, 1}});
  fitAll(line);
  for (const CNuCylSurf* cylinder : {&a, &b, &c, &inner, &outer})
    EXPECT_LE(DistancesFrom(cylinder->GetAxis(), line).farthest, 1e-15);
  // The inscribed circle of a plane, as a cylinder.
  Random random(742);
  const Motion motion = RandomMotion(random, 10.0);
  const CNuPointArray flat = motion(CircleCloud(random, 40, 3.0, 360.0, 0.1));
  CNuCircle circle(1.0);
  circle.FitMax(flat, 1e-9), a.FitMax(flat, 1e-9, 9);
  EXPECT_EQ(a.GetRadius() - circle.GetRadius() + a.GetAxis().GetPoint().DistanceTo(circle.GetCentre()), 0.0);
  EXPECT_NEAR(std::fabs(a.GetAxisDirection() % circle.GetNormal()), 1.0, 1e-15);
}

TEST(MinimaxCylinders, FollowTheirPoints) {
  ExpectFollowing(
      "CNuCylSurf", Random(743), 360.0, {360.0, 220.0, 60.0, 15.0},
      [](Random& random, int n, double sweep) { return CylinderCloud(random, n, 10.0, 50.0, sweep, 0.01); });
}

// More points than are all taken at once, none farther from the axis than the others.
TEST(MinimaxCylinders, OfExactlyEqualDistances) {
  CNuPointArray points(36);
  for (int z = -1; z <= 1; ++z) {
    for (const auto& [x, y] : {std::pair{5, 0}, {4, 3}, {3, 4}, {0, 5}, {-3, 4}, {-4, 3}}) {
      points.Add(CNuPoint(x, y, 20 * z)), points.Add(CNuPoint(-x, -y, 20 * z));
    }
  }
  CNuCylSurf cylinder(1.0);
  cylinder.FitMin(points, 1e-9, 1000);
  EXPECT_NEAR(cylinder.GetRadius(), 5.0, 1e-14);
  cylinder.FitMax(points, 1e-9, 1000);
  EXPECT_NEAR(cylinder.GetRadius(), 5.0, 1e-14);
  CNuPointArray same(30);
  for (int i = 0; i < 30; ++i) same.Add(CNuPoint(-49.1, 63.3, -29.9));
  EXPECT_EQ(FailureOf([&] { CNuTorSurf(2.0, 1.0).FitMin(same, 0.0, 1000); }), "bestfit 11 |CNuTorSurf::FitMin [0,0]");
}

// One of them may be the cylinder that is fitted; a zone below NuGetTol() leaves both where that is.
TEST(MinimaxCylinders, HaveBoundaries) {
  Random random(744);
  const CNuPointArray points = CylinderCloud(random, 50, 10.0, 20.0, 360.0, 0.01);
  CNuCylSurf cylinder(1.0), inner(1.0), outer(1.0);
  double zone = 0.0;
  for (const bool apart : {true, false}) {
    cylinder.FitMinZone(points, &zone, 1e-9, 1000);
    const double radius = cylinder.GetRadius();
    const double half = apart ? 0.5 * zone : 0.0;
    if (!apart) NuSetTol(1.0);
    cylinder.FitMinZone(points, &zone, &cylinder, &outer, 1e-9, 1000);
    EXPECT_EQ(cylinder.GetRadius(), radius - half);
    EXPECT_EQ(outer.GetRadius(), radius + half);
    cylinder.FitMinZone(points, &zone, &inner, &cylinder, 1e-9, 1000);
    EXPECT_EQ(inner.GetRadius(), radius - half);
    EXPECT_EQ(cylinder.GetRadius(), radius + half);
    NuSetTol(4.45e-16);
  }
}

// Eight contacts on a line, a point on the axis, hardly more than half of the circumference, plates, and equal optima,
// among which no order of the points may choose.
TEST(MinimaxCylinders, FindTheirWayInAwkwardSets) {
  Random random(744);
  CNuCylSurf a(7.0), b(7.0);
  CNuPointArray regular(25);
  for (int k = 0; k < 24; ++k) regular.Add({std::cos(k * 15.0 * kDegree), std::sin(k * 15.0 * kDegree), k % 3 - 1.0});
  regular.Add({0.0, 0.0, 0.3});
  a.FitMax(regular, 1e-9, 1000);
  EXPECT_GT(a.GetRadius(), 0.4) << "away from the axis";
  for (int run = 0; run < 100; ++run)
    EXPECT_EQ(a.FitMaxEx(CylinderCloud(random, 200, 1.0, 2.0, 200.0, 1e-3), 1e-9, 1000), NuFitSuccess) << run;
  for (int run = 0; run < 30; ++run) {
    const CNuPointArray plate = BoxCloud(random, 20 + 5 * run, 1.0, 0.6, 0.1);
    double zone, form, sumSquares;
    b.Fit(plate, &form, &sumSquares, 1000);
    EXPECT_EQ(a.FitMinZoneEx(plate, &zone, 1e-9, 1000), NuFitSuccess) << run;
    EXPECT_LE(zone, form) << run;
  }
  for (int run = 0; run < 100; ++run) {
    CNuPointArray lattice = BoxCloud(random, 6 + random.Below(30), 5.0, 5.0, 5.0);
    for (int i = 0; i < lattice.GetSize(); ++i)
      lattice[i] = {std::round(lattice[i].x()), std::round(lattice[i].y()), std::round(lattice[i].z())};
    const CNuPointArray shuffled = Shuffled(random, lattice);
    double zone, other;
    ASSERT_EQ(a.FitMinEx(lattice, 1e-9, 1000), b.FitMinEx(shuffled, 1e-9, 1000));
    EXPECT_EQ(a.GetAxis().GetPoint().DistanceTo(b.GetAxis().GetPoint()), 0.0) << run;
    ASSERT_EQ(a.FitMinZoneEx(lattice, &zone, 1e-9, 1000), b.FitMinZoneEx(shuffled, &other, 1e-9, 1000));
    EXPECT_EQ(a.GetAxis().GetPoint().DistanceTo(b.GetAxis().GetPoint()), 0.0) << run;
  }
}

}  // namespace
