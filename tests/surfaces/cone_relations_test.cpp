#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// Points at a known place of a cone that is turned at random: `up` along a generator from the apex, `out` across it.
TEST(Cone, PointsKnowTheirDistanceFootAndSide) {
  Random random(61);
  for (int k = 0; k < 2000; ++k) {
    const Motion motion = RandomMotion(random, 100.0);
    const double angle = random.Below(3) == 0 ? std::pow(10.0, random.Uniform(-4.0, 0.0)) : random.Uniform(1.0, 89.9);
    const double c = std::cos(angle * kDegree), s = std::sin(angle * kDegree), turn = random.Uniform(0.0, 6.3);
    const double up = random.Uniform(0.1, 50.0), nappe = random.Below(2) == 0 ? 1.0 : -1.0;
    const double out = random.Uniform(-0.9 * up * s / c, 0.9 * up * c / s);  // on this side of the axis, on this nappe
    const auto at = [&](double across) {
      const double rho = up * s + across * c, h = up * c - across * s;
      return motion(CNuPoint(rho * std::cos(turn), rho * std::sin(turn), nappe * h));
    };
    const CNuConSurf cone(angle, motion(CNuPoint()), motion.Direction(CNuPoint(0, 0, 3)));
    const double tol = 1e-14 * (100.0 + up + std::fabs(out));
    EXPECT_NEAR(at(out).DistanceTo(cone), std::fabs(out), tol);
    EXPECT_LE(at(out).ProjectionOn(cone).DistanceTo(at(0.0)), tol * (1.0 + std::fabs(out) / (up * s + out * c)));
    EXPECT_EQ(at(out).SurfaceSide(cone, 1e-9), out > 0.0 ? CNuGeometry::SIDE_OUTSIDE : CNuGeometry::SIDE_INSIDE);
    EXPECT_EQ(at(0.0).SurfaceSide(cone, 1e-9), CNuGeometry::SIDE_ON);
  }
  // "On" is judged across the axis: beside a flat cone that is far more than the distance from it.
  const CNuConSurf flat(80.0);
  EXPECT_EQ(CNuPoint(0, 10, 10 / std::tan(80 * kDegree) + 0.1).SurfaceSide(flat, 0.5), CNuGeometry::SIDE_INSIDE);
  const CNuConSurf cone(30.0);
  EXPECT_NEAR(CNuPoint(2, 0, 0).DistanceTo(cone), std::sqrt(3.0), 1e-15);
  EXPECT_GT(CNuPoint(2, 0, 0).ProjectionOn(cone).z(), 0.0) << "both nappes are as close";
  EXPECT_EQ(CNuPoint().ProjectionOn(cone).z(), 0.0);
  EXPECT_NEAR(CNuPoint(0, 0, -4).DistanceTo(cone), 2.0, 1e-15);
  EXPECT_EQ(FailureOf([&] { CNuPoint(0, 0, 5).ProjectionOn(cone); }),
            "operation 9 calculation|CNuPoint::ProjectionOn() [0,0]");
}

// Common points are on both, and the line changes sides at no others. Closest points are as far from the cone as the
// line is said to be, and none of many samples is closer.
TEST(Cone, LinesMeetItOrComeClose) {
  Random random(62);
  int met[3] = {};
  for (int run = 0; run < 10000; ++run) {
    const double size = std::pow(10.0, random.Below(7) - 3);
    const Motion motion = RandomMotion(random, size * (random.Below(4) == 0 ? 1e4 : 1.0));
    const double angle = random.Below(4) == 0 ? std::pow(10.0, random.Uniform(-3.0, 0.0)) : random.Uniform(1.0, 89.5);
    const CNuConSurf cone(angle, motion(CNuPoint()), motion.Direction(CNuPoint(0, 0, 1)));
    // Any direction, or next to that of a generator.
    const double beside = (2 * random.Below(2) - 1) * std::pow(10.0, random.Uniform(-7.0, 0.0));
    const double lean = (random.Below(3) == 0 ? angle + beside : random.Uniform(0.0, 180.0)) * kDegree;
    const auto any = [&] { return size * random.Uniform(-1.0, 1.0); };
    const double x = any(), y = any();
    const CNuLine line(motion(CNuPoint(x, y, any())),
                       motion.Direction({std::sin(lean), 0.0, std::cos(lean)}).To3DVector());
    CNuPoint p[2], q[2];
    const int count = cone.IntersectWith(line, &p[0], &p[1]);
    const int near = line.ClosestPointsTo(cone, &q[0], &q[1]);
    const double distance = line.DistanceTo(cone);
    ++met[count];
    ASSERT_EQ(count > 0, distance == 0.0);
    ASSERT_EQ(near, std::max(count, 1));
    for (int i = 0; i < near; ++i) {
      const double extent = std::max({size, std::fabs(q[i].x()), std::fabs(q[i].y()), std::fabs(q[i].z())});
      ASSERT_LE(q[i].DistanceTo(line), 1e-14 * extent) << run;
      ASSERT_NEAR(q[i].DistanceTo(cone), distance, 1e-14 * extent) << run;
    }
    if (count == 2) {
      ASSERT_GT((p[1] - p[0]).To3DVector() % line.GetDirection(), 0.0);
    }
    const double middle = (cone.GetApex() - line.GetPoint()).To3DVector() % line.GetDirection();
    int changes = 0, side = -1;
    for (double u = -1.56; u <= 1.56; u += 0.02) {
      const CNuPoint on = Along(line.GetPoint(), line.GetDirection(), middle + size * std::tan(u));
      ASSERT_GE(on.DistanceTo(cone), distance * (1.0 - 1e-9)) << run;
      const int here = on.SurfaceSide(cone, 1e-10 * size);
      if (here == CNuGeometry::SIDE_ON) continue;
      if (side >= 0 && here != side) ++changes;
      side = here;
    }
    ASSERT_LE(changes, count) << run;
  }
  EXPECT_GT(std::min(met[0], met[2]), 2000);
}

// Around a cone of 3 : 4, upright, at home and far away: how many points lines have in common with it, how many are
// closest, and the distance.
TEST(Cone, LinesTouchMissAndRunAlongIt) {
  const double off = 1e-9;
  for (const CNuPoint& origin : {CNuPoint(), CNuPoint(1e4, -2e4, 5e3)}) {
    const CNuConSurf cone(std::atan(0.75) / kDegree, origin, CNuVector(0, 0, 1));
    struct {
      CNuPoint at;
      CNuVector direction;
      int common, closest;
      double distance;
    } rows[] = {{{0, 0, 4}, {1, 0, 0}, 2, 2, 0.0},
                {{3, 9, 4}, {0, 1, 0}, 1, 1, 0.0},  // touches
                {{3 - off, 9, 4}, {0, 1, 0}, 2, 2, 0.0},
                {{3 + off, 9, 4}, {0, 1, 0}, 0, 1, 0.8 * off},
                {{5, 7, 4}, {0, 1, 0}, 0, 1, 1.6},
                {{5, 7, 0}, {0, 1, 0}, 0, 1, 4.0},                     // at the height of the apex
                {{5, 0, 0}, {0, 4, 3}, 0, 2, 6.25 * std::sqrt(0.28)},  // as close to both nappes
                {{0, 0, 7}, {0, 0, 1}, 1, 1, 0.0},                     // the axis
                {{0, 0, 0}, {1, 2, 0}, 1, 1, 0.0},                     // through the apex alone
                {{1, 2, 9}, {0, 0, -1}, 2, 2, 0.0},
                {{2, 1, 0}, {3, 0, 4}, 1, 1, 0.0},   // parallel to a generator
                {{0, 1, 0}, {3, 0, 4}, 0, 0, 0.0},   // in the plane that touches along it
                {{3, 0, 4}, {3, 0, 4}, 0, 0, 0.0}};  // a generator
    for (const auto& row : rows) {
      const CNuLine line(origin + row.at, row.direction);
      CNuPoint p, q;
      EXPECT_EQ(line.IntersectWith(cone, &p, &q), row.common) << row.at.x() << " " << row.at.y();
      EXPECT_EQ(line.ClosestPointsTo(cone, &p, &q), row.closest) << row.at.x() << " " << row.at.y();
      EXPECT_NEAR(line.DistanceTo(cone), row.distance, 1e-11) << row.at.x() << " " << row.at.y();
    }
  }
}

}  // namespace
