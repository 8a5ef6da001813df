#include <gtest/gtest.h>

#include <cmath>

#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

using namespace nu::test;

TEST(CircleFit, RefusesWhatIsNoCircle) {
  Random random(31);
  const CNuPointArray noCircle = PointsOf({{1, -2, -1}, {0, 1}, {-1, 1}, {0, 0, -1}});
  for (int run = 0; run < 1000; ++run) {
    EXPECT_EQ(FailureOf([&] { FitOf(kCircle, RandomMotion(random, 10.0)(noCircle)); }), "bestfit 11 |CNuCircle [0,0]")
        << "best is a line";
  }
  NuSetLarge(50.0);
  EXPECT_EQ(FailureOf([&] { FitOf(kCircle, CircleCloud(random, 30, 10.0, 120.0, 0.05)); }),
            "bestfit 11 |CNuCircle [0,0]")
      << "start radius above a tenth of NuGetLarge()";
  NuSetLarge(1e300);
}

// Steps of a circle of 1e9 end at 1e-7, far above the default tolerance: that is convergence, not failure.
TEST(CircleFit, RoundingLevelIsConvergence) {
  Random random(32);
  CNuCircle circle(1.0);
  for (const double radius : {1.0, 1e6, 1e9, 1e15}) {
    CNuPointArray points = CircleCloud(random, 50, radius, 200.0, 1e-3 * radius);
    points.MoveTo(CNuPoint(1e9, -1e9, 0.0));
    ASSERT_EQ(circle.FitEx(points, 100), NuFitSuccess) << radius;
    EXPECT_NEAR(circle.GetRadius(), radius, 2e-3 * radius);
  }
  NuSetTol(0.0);
  EXPECT_EQ(circle.FitEx(CircleCloud(random, 50, 1.0, 360.0, 0.0), 100), NuFitSuccess);
  NuSetTol(4.45e-16);
}

// Plain Gauss-Newton steps creep or swing on points that are hardly a circle: they took thousands.
TEST(CircleFit, RoughPointsTakeFewSteps) {
  Random random(33);
  CNuPointArray clusters(400), grid(400), helix(400);
  for (int i = 0; i < 400; ++i) {
    clusters.Add({i % 2 * 10.0 + 0.1 * random.Bell(), 0.1 * random.Bell(), 0.0});
    grid.Add({i % 20 * 1.0, i / 20 * 1.0, 0.0});
    helix.Add({std::cos(0.1 * i), std::sin(0.1 * i), 0.03 * i});
  }
  for (const CNuPointArray& points : {clusters, grid, helix, BoxCloud(random, 400, 2.0, 2.0, 2.0)}) {
    CNuCircle circle(1.0);
    EXPECT_EQ(circle.FitEx(points, 60), NuFitSuccess);
  }
  // Newton's equations have a ridge there, or next to no curvature, for a long way.
  for (const int n : {100, 1000, 2000}) {
    for (const auto& [size, limit] : {std::pair{1e-3, 22}, {1e-4, 100}}) {
      CNuPointArray tight(n);
      for (int i = 0; i < n; ++i) tight.Add(RandomPoint(random, size) + CNuPoint(i % 2, 0.0, 0.0));
      for (const Feature feature : {kCircle, kSphere})
        EXPECT_NO_THROW(FitOf(feature, tight, limit)) << n << " " << size;
    }
  }
}

// Points that say next to nothing about the centre but all the more about the apex; y is 1 - cos t.
TEST(CircleFit, TinyArcsKeepTheirCurvature) {
  NuSetLengthTol(1e-30);
  for (const double half : {1e-2, 1e-4, 1e-6}) {
    CNuPointArray points(41);
    for (double t = -half; t <= half; t += half / 20) points.Add({std::sin(t), 2.0 * std::pow(std::sin(t / 2), 2), 0});
    const Fitted f = FitOf(kCircle, points);
    EXPECT_NEAR(f.radius, 1.0, 1e-15 / half);
    EXPECT_LE(f.form, 4e-16 * half);
  }
  NuSetLengthTol(1e-12);
}

}  // namespace
