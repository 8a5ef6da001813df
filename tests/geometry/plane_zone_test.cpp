#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"

namespace {

using namespace nu::test;

constexpr double kTol = 1e-9;

struct Zone {
  CNuPlane plane, lower, upper;
  double form = -1.0;
};

Zone ZoneOf(const CNuPointArray& points) {
  Zone z;
  z.plane.FitMinZone(points, &z.form, &z.lower, &z.upper, kTol);
  return z;
}

double Height(const CNuPlane& plane, const CNuPoint& p) {
  return (p - plane.GetPoint()).To3DVector() % plane.GetNormal();
}

// What encloses touches: both planes on both sides, the plane half way, its point under the mean point.
void CheckZone(const CNuPointArray& points, const Zone& z, double rounding) {
  double least = 1e300, most = -1e300;
  for (int i = 0; i < points.GetSize(); ++i) {
    least = std::min(least, Height(z.plane, points[i]));
    most = std::max(most, Height(z.plane, points[i]));
  }
  EXPECT_NEAR(most, 0.5 * z.form, rounding);
  EXPECT_NEAR(least, -0.5 * z.form, rounding);
  EXPECT_NEAR(Height(z.plane, z.lower.GetPoint()), -0.5 * z.form, rounding);
  EXPECT_NEAR(Height(z.plane, z.upper.GetPoint()), 0.5 * z.form, rounding);
  for (const CNuPlane* p : {&z.lower, &z.upper}) EXPECT_EQ((p->GetNormal() - z.plane.GetNormal()).Magnitude(), 0.0);
  const CNuVector off = (points.MeanPoint() - z.plane.GetPoint()).To3DVector();
  EXPECT_LE((off * z.plane.GetNormal()).Magnitude(), rounding);
}

TEST(MinimumZonePlane, ObeysTheLawsOfItsData) {
  Random random(61);
  for (const int n : {4, 7, 30, 41, 300, 5000}) {
    for (const double noise : {1e-6, 0.02, 5.0}) {
      SCOPED_TRACE(testing::Message() << n << " points, noise " << noise);
      const CNuPointArray points = PlaneCloud(random, n, 100.0, 60.0, noise);
      const Zone z = ZoneOf(points);
      CheckZone(points, z, 1e-13);
      CNuPlane squares;
      double form = 0.0, sumsq = 0.0;
      squares.Fit(points, &form, &sumsq);
      EXPECT_LE(z.form, form * (1 + 1e-12));
      // No small turn makes the zone narrower.
      for (int k = 0; k < 20; ++k) {
        CNuPlane turned(z.plane);
        turned.Rotate(random.Uniform(-1e-3, 1e-3),
                      CNuVector(random.Uniform(-1, 1), random.Uniform(-1, 1), random.Uniform(-1, 1)));
        double least = 1e300, most = -1e300;
        for (int i = 0; i < n; ++i) {
          least = std::min(least, Height(turned, points[i])), most = std::max(most, Height(turned, points[i]));
        }
        EXPECT_GE(most - least, z.form - 1e-13);
      }
      // How far roundings of the moved points turn the plane: their size over that of the zone's contacts.
      const Motion motion = RandomMotion(random, 500.0);
      const Zone moved = ZoneOf(motion(points));
      EXPECT_NEAR(moved.form, z.form, 1e-11);
      const CNuVector normal =
          motion.Direction(CNuPoint(z.plane.GetNormal()[0], z.plane.GetNormal()[1], z.plane.GetNormal()[2]))
              .To3DVector();
      EXPECT_LE((normal * moved.plane.GetNormal()).Magnitude(), 1e-9);
      EXPECT_LE(std::fabs(Height(moved.plane, motion(z.plane.GetPoint()))), 1e-9);
      const Zone shuffled = ZoneOf(Shuffled(random, points));
      EXPECT_NEAR(shuffled.form, z.form, 1e-15 * z.form);
      EXPECT_LE((shuffled.plane.GetNormal() - z.plane.GetNormal()).Magnitude(), 1e-15);
      for (const double factor : {0x1p-20, 0x1p40, 0x1p900}) {
        const Zone scaled = ZoneOf(Scaled(points, factor));
        EXPECT_EQ(scaled.form, z.form * factor);
        EXPECT_EQ((scaled.plane.GetNormal() - z.plane.GetNormal()).Magnitude(), 0.0);
      }
    }
  }
}

TEST(MinimumZonePlane, IsExactForFlatAndForKnownParts) {
  // A plane of a lattice, exactly, and one that rounding has bent.
  CNuPointArray lattice(0), bent(0), brick(0);
  for (int i = 0; i < 900; ++i) {
    const int x = i % 30, y = i / 30;
    lattice.Add(CNuPoint(x, y, 2 * x - y));
    bent.Add(CNuPoint(0.1 * x, 0.1 * y, 1e4 + 0.3 * (0.1 * x)));
    brick.Add(CNuPoint(x, y, i % 7));
  }
  EXPECT_EQ(ZoneOf(lattice).form, 0.0);
  EXPECT_LE(ZoneOf(bent).form, 4e-12);
  CheckZone(lattice, ZoneOf(lattice), 1e-12);
  const Zone z = ZoneOf(brick);
  EXPECT_EQ(z.form, 6.0);
  EXPECT_EQ(z.plane.GetNormal()[2], 1.0);
  EXPECT_EQ(z.plane.GetPoint().z(), 3.0);
  EXPECT_EQ(z.lower.GetPoint().z(), 0.0);
  // A regular tetrahedron is narrowest between two opposite edges, a wedge along its height: three and six choices.
  CNuPointArray tetrahedron(0);
  for (int k = 0; k < 4; ++k) tetrahedron.Add(CNuPoint(k < 2 ? 1 : -1, k % 2 == 0 ? 1 : -1, k == 0 || k == 3 ? 1 : -1));
  EXPECT_EQ(ZoneOf(tetrahedron).form, 2.0);
  EXPECT_EQ(ZoneOf(tetrahedron).plane.GetNormal()[2], 1.0);
}

}  // namespace
