#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

TEST(SphereFit, ChecksComeInOrderAndFailuresLeaveTheSphere) {
  CNuSphSurf sphere(7.0, CNuPoint(1, 2, 3));
  double form = -1.0;
  double sumsq = -1.0;
  const auto failure = [&](const CNuPointArray& pts, long limit) {
    return FailureOf([&] { sphere.Fit(pts, &form, &sumsq, limit); });
  };
  Random random(41);
  const CNuPointArray noisy = SphereCloud(random, 30, 10.0, 70.0, 0.05);
  EXPECT_EQ(failure(CNuPointArray(1), 0), "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(form, -1.0);
  EXPECT_EQ(FailureOf([&] { sphere.FitEx(noisy, 0); }), "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(failure(noisy.SubArray(0, 2), 9), "bestfit 1 |CNuSphSurf [4,0]");
  EXPECT_EQ(form, 0.0) << "outputs are cleared once the limit is found good";
  EXPECT_EQ(failure(PlaneCloud(random, 9, 1.0, 1.0, 0.0), 9), "bestfit 4 |CNuSphSurf [4,0]");
  EXPECT_EQ(failure(noisy, 2), "bestfit 12 |CNuSphSurf [0,0]");
  EXPECT_EQ(sphere.FitEx(noisy, 2), NuFitNoConvergence);
  EXPECT_EQ(sphere.FitEx(CNuPointArray(1), 2), NuFitFailure);
  EXPECT_EQ(sphere.GetRadius(), 7.0);
  EXPECT_EQ(sphere.GetCentre().z(), 3.0);
  EXPECT_EQ(sphere.FitEx(noisy, &form, &sumsq, 100), NuFitSuccess);
  EXPECT_NEAR(sumsq / 30.0, 0.05 * 0.05, 1e-3);
}

// Required: the limit counts the step that confirms convergence, so one step never suffices and two do for points that
// lie on a sphere; and the algebraic start then stays, with coordinates near zero made zero.
TEST(SphereFit, ExactPointsKeepTheAlgebraicStart) {
  Random random(42);
  const CNuPointArray exact = SphereCloud(random, 40, 3.0, 180.0, 0.0);
  CNuSphSurf sphere(1.0);
  EXPECT_EQ(sphere.FitEx(exact, 1), NuFitNoConvergence);
  ASSERT_EQ(sphere.FitEx(exact, 2), NuFitSuccess);
  EXPECT_EQ(sphere.GetCentre().DistanceTo(CNuPoint()), 0.0);
  EXPECT_NEAR(sphere.GetRadius(), 3.0, 4e-15);
}

double SumAbout(const CNuPoint& centre, const CNuPointArray& points) {
  double mean = 0.0, sum = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) mean += points[i].DistanceTo(centre) / points.GetSize();
  for (int i = 0; i < points.GetSize(); ++i) sum += std::pow(points[i].DistanceTo(centre) - mean, 2.0);
  return sum;
}

// On caps whose noise is a good part of their height the required iteration ends at a growing step, up to several
// times the least sum away.
TEST(SphereFit, RoughCapsEndInTheirOptimum) {
  Random random(43);
  for (int run = 0; run < 200; ++run) {
    const double half = std::pow(10.0, random.Uniform(0.0, 1.4));
    const double noise = random.Uniform(0.1, 1.0) * (1.0 - std::cos(half * kDegree));
    const CNuPointArray points = SphereCloud(random, 30, 1.0, half, noise);
    CNuSphSurf sphere(1.0);
    double form = 0.0, least = 0.0;
    ASSERT_EQ(sphere.FitEx(points, &form, &least, 100), NuFitSuccess) << run;
    const CNuPoint centre = sphere.GetCentre();
    const double reach = sphere.GetRadius();
    for (const double h : {1e-4, 1e-2, 0.1}) {
      for (const CNuPoint& way : {CNuPoint(1, 0, 0), CNuPoint(0, 1, 0), CNuPoint(0, 0, 1), CNuPoint(1, 1, 1)}) {
        EXPECT_GE(SumAbout(centre + way * (h * reach), points), least * (1.0 - 1e-6)) << run << " " << h;
        EXPECT_GE(SumAbout(centre - way * (h * reach), points), least * (1.0 - 1e-6)) << run << " " << h;
      }
    }
  }
}

}  // namespace
