#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

CNuPointArray Points(std::initializer_list<CNuPoint> list) {
  CNuPointArray points(static_cast<int>(list.size()));
  for (const CNuPoint& p : list) points.Add(p);
  return points;
}

TEST(LinePlaneFit, RefusalsLeaveTheFeatureAndTheOutputsAlone) {
  CNuLine line({1, 2, 3}, CNuVector(0, 1, 0));
  CNuPlane plane({1, 2, 3}, CNuVector(0, 1, 0));
  double form = -1.0;
  double sumsq = -2.0;
  const auto lineFailure = [&](const CNuPointArray& pts) { return FailureOf([&] { line.Fit(pts, &form, &sumsq); }); };
  const auto planeFailure = [&](const CNuPointArray& pts) { return FailureOf([&] { plane.Fit(pts, &form, &sumsq); }); };
  EXPECT_EQ(lineFailure(CNuPointArray(1)), "bestfit 1 |CNuLine [2,0]");
  EXPECT_EQ(lineFailure(Points({{1, 1, 1}, {1, 1, 1 + 5e-13}})), "bestfit 2 |CNuLine [2,0]");
  EXPECT_EQ(lineFailure(Points({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}})), "bestfit 2 |CNuLine [2,0]");
  EXPECT_EQ(lineFailure(Points({{1, 1, 1}, {1, HUGE_VAL, 1}})), "bestfit 11 |CNuLine [0,0]");
  EXPECT_EQ(planeFailure(CNuPointArray(1)), "bestfit 1 |CNuPlane [3,0]");
  EXPECT_EQ(planeFailure(Points({{1, 1, 1}, {2, 5, 1}})), "bestfit 1 |CNuPlane [3,0]");
  EXPECT_EQ(planeFailure(Points({{0, 0, 0}, {1, 2, 3}, {2, 4, 6}})), "bestfit 3 |CNuPlane [3,0]");
  EXPECT_EQ(line.GetPoint().z() + line.GetDirection()[1] + plane.GetPoint().z() + plane.GetNormal()[1], 8.0);
  EXPECT_EQ(form, -1.0);
  EXPECT_EQ(sumsq, -2.0);
}

// Three points decide a line once they are more than NuGetZero() apart, two only from NuGetLengthTol() on.
TEST(LinePlaneFit, ThreePointsNeedNoLengthTolerance) {
  CNuLine line;
  line.Fit(Points({{0, 0, 0}, {1e-200, 0, 0}, {3e-200, 0, 0}}));
  EXPECT_EQ(line.GetDirection()[0], 1.0);
}

// Noise of a few micrometres on a ruler of metres: the moments alone would lose the narrow direction.
TEST(LinePlaneFit, NarrowPlateIsFittedAsWellAsItIsMeasured) {
  nu::test::Random random(21);
  for (const double width : {1e-2, 1e-4, 1e-6}) {
    CNuPointArray points = nu::test::PlaneCloud(random, 200, 2.0, width, 1e-3 * width);
    const nu::test::Motion motion = nu::test::RandomMotion(random, 0.0);
    CNuPlane flat;
    CNuPlane turned;
    double form[2];
    double sumsq[2];
    flat.Fit(points, &form[0], &sumsq[0]);
    turned.Fit(motion(points), &form[1], &sumsq[1]);
    constexpr double kRounding = 4e-16;
    EXPECT_NEAR(form[0], form[1], 8.0 * kRounding);
    EXPECT_NEAR(sumsq[0], sumsq[1], 200.0 * kRounding * form[0]);
    const CNuVector n = flat.GetNormal();
    const CNuPoint normal = motion.Direction({n[0], n[1], n[2]});
    const CNuVector across = CNuVector(normal.x(), normal.y(), normal.z()) * turned.GetNormal();
    EXPECT_LE(across.Magnitude(), 8.0 * kRounding / width);
  }
}

TEST(LinePlaneFit, DirectionsHaveTheCanonicalSign) {
  CNuLine line;
  line.Fit(Points({{0, 0, 0}, {1, -5, 2}}));
  EXPECT_GT(line.GetDirection()[1], 0.0);
  CNuPlane plane;
  plane.Fit(Points({{0, 0, 1}, {0, 4, 1}, {4, 0, 1}, {4, 4, 1}}));
  EXPECT_EQ(plane.GetNormal()[2], 1.0);
}

}  // namespace
