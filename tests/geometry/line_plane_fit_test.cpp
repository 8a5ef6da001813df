#include <gtest/gtest.h>

#include <cmath>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

using namespace nu::test;

TEST(LinePlaneFit, RefusalsLeaveTheFeatureAndTheOutputsAlone) {
  CNuLine line({1, 2, 3}, CNuVector(0, 1, 0));
  CNuPlane plane({1, 2, 3}, CNuVector(0, 1, 0));
  double form = -1.0;
  double sumsq = -2.0;
  const auto lineFailure = [&](const CNuPointArray& pts) { return FailureOf([&] { line.Fit(pts, &form, &sumsq); }); };
  const auto planeFailure = [&](const CNuPointArray& pts) { return FailureOf([&] { plane.Fit(pts, &form, &sumsq); }); };
  EXPECT_EQ(lineFailure(PointsOf({{1, 1, 1}, {1, 1, 1 + 5e-13}})), "bestfit 2 |CNuLine [2,0]");
  EXPECT_EQ(lineFailure(PointsOf({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}})), "bestfit 2 |CNuLine [2,0]");
  NuSetLengthTol(0.0);
  EXPECT_EQ(lineFailure(PointsOf({{1, 1, 1}, {1, 1, 1}})), "bestfit 2 |CNuLine [2,0]");
  NuSetLengthTol(1e-12);
  EXPECT_EQ(planeFailure(PointsOf({{1, 1, 1}, {2, 5, 1}})), "bestfit 1 |CNuPlane [3,0]");
  EXPECT_EQ(planeFailure(PointsOf({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}})), "bestfit 3 |CNuPlane [3,0]");
  EXPECT_EQ(line.GetPoint().z() + line.GetDirection()[1] + plane.GetPoint().z() + plane.GetNormal()[1], 8.0);
  EXPECT_EQ(form, -1.0);
  EXPECT_EQ(sumsq, -2.0);
  // A zero above every coordinate makes all points one plane and no extent, but refuses no two distinct points.
  NuSetZero(2.0);
  EXPECT_EQ(CNuGeometry::AreCoplanar(PointsOf({{0, 0, 0}, {1, 0, 0}, {0, 1, 0}, {0, 0, 1}}), &plane, 1e-12), 1);
  EXPECT_EQ(lineFailure(PointsOf({{0, 0, 0}, {0, 1, 0}})), "nothing");
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
