#include <gtest/gtest.h>

#include <cmath>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

using namespace nu::test;

// It makes all points one plane and no extent, but refuses no two distinct points.
TEST(LinePlaneFit, ZeroMayBeAboveEveryCoordinate) {
  NuSetZero(2.0);
  EXPECT_EQ(CNuGeometry::AreCoplanar(PointsOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}), 1e-12), 1);
  EXPECT_EQ(FailureOf([] { FitOf(kLine, PointsOf({{0, 0, 0}, {0, 1, 0}})); }), "nothing");
  NuSetZero(1e-300);
}

// Noise of a few micrometres on a ruler of metres: the moments alone would lose the narrow direction.
TEST(LinePlaneFit, NarrowPlateIsFittedAsWellAsItIsMeasured) {
  Random random(21);
  for (const double width : {1e-2, 1e-4, 1e-6}) {
    const CNuPointArray points = PlaneCloud(random, 200, 2.0, width, 1e-3 * width);
    const Motion motion = RandomMotion(random, 0.0);
    const Fitted flat = FitOf(kPlane, points);
    const Fitted turned = FitOf(kPlane, motion(points));
    constexpr double kRounding = 4e-16;
    EXPECT_NEAR(flat.form, turned.form, 8.0 * kRounding);
    EXPECT_NEAR(flat.sumsq, turned.sumsq, 200.0 * kRounding * flat.form);
    const CNuVector normal = motion.Direction(flat.axis.To3DPoint()).To3DVector();
    EXPECT_LE((normal * turned.axis).Magnitude(), 8.0 * kRounding / width);
  }
}

}  // namespace
