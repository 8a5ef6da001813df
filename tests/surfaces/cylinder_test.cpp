#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// Points at a known place of a cylinder that is turned at random: p = axis point + rho along `across` + h along the
// axis.
TEST(Cylinder, PointsKnowTheirDistanceFootAndSide) {
  Random random(51);
  for (int k = 0; k < 200; ++k) {
    const Motion motion = RandomMotion(random, 100.0);
    const double radius = random.Uniform(0.5, 20.0), rho = random.Uniform(0.01, 40.0), turn = random.Uniform(0, 6.3);
    const double h = random.Uniform(-50.0, 50.0);
    const auto at = [&](double r) { return motion(CNuPoint(r * std::cos(turn), r * std::sin(turn), h)); };
    const CNuCylSurf cylinder(radius, motion(CNuPoint()), motion.Direction(CNuPoint(0, 0, 3)));
    const double tol = 300 * kEps * 10;
    const CNuPoint p = at(rho);
    EXPECT_NEAR(p.DistanceTo(cylinder), std::fabs(rho - radius), tol);
    EXPECT_LE(p.ProjectionOn(cylinder).DistanceTo(at(radius)), tol * (1.0 + radius / rho));
    EXPECT_EQ(p.SurfaceSide(cylinder, 1e-9), rho > radius ? CNuGeometry::SIDE_OUTSIDE : CNuGeometry::SIDE_INSIDE);
    EXPECT_EQ(at(radius).SurfaceSide(cylinder, 1e-9), CNuGeometry::SIDE_ON);
  }
  const CNuCylSurf upright(2.0);
  EXPECT_EQ(FailureOf([&] { CNuPoint(0, 0, 5).ProjectionOn(upright); }),
            "operation 9 calculation|CNuPoint::ProjectionOn() [0,0]");
}

TEST(Cylinder, LinesMeetItInTheirOrder) {
  Random random(52);
  int met[3] = {};
  for (int k = 0; k < 500; ++k) {
    const Motion motion = RandomMotion(random, 100.0);
    const double radius = random.Uniform(1.0, 10.0);
    const CNuCylSurf cylinder(radius, motion(RandomPoint(random, 5.0)), RandomPoint(random, 1.0));
    const CNuLine line(motion(RandomPoint(random, 10.0)), RandomPoint(random, 1.0).To3DVector());
    CNuPoint p[2], closest[2];
    const int count = cylinder.IntersectWith(line, &p[0], &p[1]);
    ++met[count];
    const double sine = (cylinder.GetAxisDirection() * line.GetDirection()).Magnitude();
    const double tol = 1e-12 / sine;
    for (int i = 0; i < count; ++i) EXPECT_LE(p[i].DistanceTo(cylinder) + p[i].DistanceTo(line), tol);
    const CNuLine axis = cylinder.GetAxis();
    EXPECT_EQ(count, line.DistanceTo(axis) < radius ? 2 : 0);
    EXPECT_NEAR(line.DistanceTo(cylinder), std::fmax(line.DistanceTo(axis) - radius, 0.0), tol);
    ASSERT_EQ(line.ClosestPointsTo(cylinder, &closest[0], &closest[1]), count == 2 ? 2 : 1);
    EXPECT_NEAR(closest[0].DistanceTo(cylinder), line.DistanceTo(cylinder), tol);
    if (count == 2) {
      EXPECT_GT((p[1] - p[0]).To3DVector() % line.GetDirection(), 0.0);
    }
  }
  EXPECT_TRUE(met[0] > 50 && met[2] > 50);

  const CNuCylSurf upright(2.0);
  CNuPoint p, q;
  EXPECT_EQ(CNuLine(CNuPoint(2, 7, 1), CNuVector(0, 1, 0)).IntersectWith(upright, &p, &q), 1);
  EXPECT_LE(p.DistanceTo(CNuPoint(2, 0, 1)), 4 * kEps);
  const CNuLine inside(CNuPoint(0.5, 0, 1), CNuVector(0, 0, 1));
  EXPECT_EQ(inside.IntersectWith(upright, &p, &q) + inside.ClosestPointsTo(upright, &p, &q), 0);
  EXPECT_EQ(inside.DistanceTo(upright), 1.5);
  EXPECT_EQ(CNuLine(CNuPoint(2, 0, 0), CNuVector(0, 0, 1)).IntersectWith(upright, &p, &q), 0);
}

}  // namespace
