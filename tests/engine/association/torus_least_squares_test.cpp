#include "nu/engine/association/torus_least_squares.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <vector>

namespace {

using namespace nu::internal;

// Full rings and arcs, full tubes and parts of them, anywhere in space: the optimum is never worse than the torus from
// which the points were made; nor is one of a known minor radius with all points outside, from a start of another axis.
TEST(TorusLeastSquaresTest, FindsATorusNoWorseThanTheOneThatWasMeasured) {
  std::mt19937 random(1);
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  const auto vector = [&] { return Vec3{unit(random), unit(random), unit(random)}; };
  for (const double ring : {3.14, 1.6, 0.4}) {
    for (const double tube : {3.14, 1.6, 0.8}) {
      for (const double noise : {0.0, 1e-3}) {
        SCOPED_TRACE(testing::Message() << "ring " << ring << ", tube " << tube << ", noise " << noise);
        const AxisFrame f = AxisFrame::Along(100.0 * vector(), Unit(vector()), vector());
        std::vector<Vec3> points;
        for (int i = 0; i < 80; ++i) {
          const double a = ring * unit(random), b = tube * unit(random), rho = 20.0 + 6.0 * std::cos(b);
          const Vec3 q{rho * std::cos(a), rho * std::sin(a), 6.0 * std::sin(b)};
          points.push_back(f.origin + q.x * f.x + q.y * f.y + q.z * f.z + noise * vector());
        }
        constexpr double kBelow = 2e-3;
        double truth = 0.0, truthOutside = 0.0;
        for (const Vec3& p : points) {
          const Vec3 q = f.Local(p);
          const double e = std::hypot(std::hypot(q.x, q.y) - 20.0, q.z) - 6.0;
          truth += e * e;
          truthOutside += (e + kBelow) * (e + kBelow);
        }
        FitProblem problem;
        problem.points = {&points[0].x, sizeof(Vec3), points.size()};
        const FittedFeature found = LeastSquaresTorus(problem);
        ASSERT_EQ(found.end, FitEnd::converged);
        EXPECT_LE(std::sqrt(found.objective), std::sqrt(truth) + 1e-12);
        problem.side = PointSide::positive;
        problem.fixed = 1U << kSize1;
        const AxisFrame across = AxisFrame::Along(f.origin, Unit(f.z + 0.7 * f.x));
        const FittedFeature outside = FitNear(problem, {FeatureKind::torus, across, {10.0, 6.0 - kBelow}});
        ASSERT_EQ(outside.end, FitEnd::converged);
        EXPECT_LE(std::sqrt(outside.objective), std::sqrt(truthOutside) + 1e-12);
      }
    }
  }
}

// Few points often come nearer to a surface that meets its own axis; that must not hide the torus next to them. They
// have many optima: one set in some tens ends in another one.
TEST(TorusLeastSquaresTest, FindsTheTorusOfFewPoints) {
  std::mt19937 random(2);
  std::uniform_real_distribution<double> unit(0.0, 1.0);
  int compared = 0, worse = 0;
  for (int set = 0; set < 20; ++set) {
    Feature truth{FeatureKind::torus, AxisFrame::Along({}, {0.0, 0.0, 1.0}), {5.0, 5.0 * (0.3 + 0.6 * unit(random))}};
    std::vector<Vec3> points;
    for (int i = 0; i < 9; ++i) {
      const double a = 3.5 * unit(random), b = 5.0 * unit(random);
      const double minor = truth.size[1] + 0.02 * (unit(random) - 0.5);
      const double rho = truth.size[0] + minor * std::cos(b);
      points.push_back({rho * std::cos(a), rho * std::sin(a), minor * std::sin(b)});
    }
    FitProblem problem;
    problem.points = {&points[0].x, sizeof(Vec3), points.size()};
    const FittedFeature near = FitFrom(problem, truth);
    if (near.end != FitEnd::converged || !(near.feature.size[0] > near.feature.size[1])) continue;
    ++compared;
    SCOPED_TRACE(set);
    const FittedFeature found = LeastSquaresTorus(problem);
    ASSERT_EQ(found.end, FitEnd::converged);
    EXPECT_GT(found.feature.size[0], found.feature.size[1]);
    if (found.objective > near.objective * (1.0 + 1e-9) + 1e-24) ++worse;
  }
  EXPECT_GT(compared, 10);
  EXPECT_LE(worse, 1);
}

TEST(TorusLeastSquaresTest, PointsWithoutATorusEndWithoutOne) {
  const double nan = std::nan("");
  const std::vector<std::vector<Vec3>> sets = {
      {}, {{1.0, 2.0, 3.0}}, std::vector<Vec3>(20, {1.0, 2.0, 3.0}), {{0.0, 0.0, 0.0}, {1.0, nan, 0.0}}};
  for (const auto& points : sets) {
    FitProblem problem;
    problem.points = {points.empty() ? nullptr : &points[0].x, sizeof(Vec3), points.size()};
    EXPECT_EQ(LeastSquaresTorus(problem).end, FitEnd::noOptimum);
  }
}

}  // namespace
