#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"

namespace {

using namespace nu::test;

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
