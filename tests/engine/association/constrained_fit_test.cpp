#include "nu/engine/association/constrained_fit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

// Laws that hold for every kind of feature and every criterion.
namespace {

using namespace nu::internal;

constexpr FeatureKind kKinds[] = {FeatureKind::lineInPlane, FeatureKind::line,    FeatureKind::plane,
                                  FeatureKind::circle,      FeatureKind::ellipse, FeatureKind::hyperbola,
                                  FeatureKind::parabola,    FeatureKind::sphere,  FeatureKind::cylinder,
                                  FeatureKind::cone,        FeatureKind::torus,   FeatureKind::circleInSpace};

double Distance(const Vec3& a, const Vec3& b) {
  return std::sqrt(Dot(a - b, a - b));
}

struct Measured {
  Feature truth;
  std::vector<Vec3> points;

  PointView View() const { return {&points[0].x, sizeof(Vec3), points.size()}; }
};

// A point next to the feature comes to lie on it, but for the noise.
Measured Measure(FeatureKind kind, int count, double noise, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  const auto vector = [&] { return Vec3{unit(random), unit(random), unit(random)}; };
  Measured set;
  set.truth.kind = kind;
  set.truth.frame = AxisFrame::Along(5.0 * vector(), Unit(vector()), vector());
  set.truth.size[0] = 2.0;
  set.truth.size[1] = 0.7;
  const UnknownMask flat = UnknownsOf(kind) & 1U << kShiftZ;
  for (int trial = 0; trial < 10 * count && set.points.size() < static_cast<std::size_t>(count); ++trial) {
    const AxisFrame& f = set.truth.frame;
    const Vec3 q = 3.0 * vector();
    Vec3 p = f.origin + q.x * f.x + q.y * f.y + (flat == 0U ? q.z : 0.5 * q.z) * f.z;
    for (int k = 0; k < 40; ++k) {
      double slope[kUnknowns];
      const double e = DeviationOf(set.truth, p, slope);
      p = p + e * (slope[kShiftX] * f.x + slope[kShiftY] * f.y + slope[kShiftZ] * f.z);
    }
    if (std::fabs(DeviationOf(set.truth, p)) < 1e-9) set.points.push_back(p + noise * vector());
  }
  return set;
}

Feature Nearby(const Feature& feature, UnknownMask free, double size, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  double step[kUnknowns] = {};
  for (int k = 0; k < kUnknowns; ++k)
    if (free >> k & 1U) step[k] = size * unit(random);
  return Moved(feature, step);
}

// What the criterion makes least.
double Objective(const FitProblem& problem, const Feature& feature) {
  double squares = 0.0, least = 1e300, most = -1e300;
  const bool isSize = problem.criterion == FitCriterion::circumscribed || problem.criterion == FitCriterion::inscribed;
  Feature seen = feature;
  if (isSize) seen.size[0] = 0.0;
  for (std::size_t i = 0; i < problem.points.Size(); ++i) {
    const double e = DeviationOf(seen, LoadVec3(problem.points[i]));
    squares += (problem.weights == nullptr ? 1.0 : problem.weights[i]) * e * e;
    least = std::min(least, e), most = std::max(most, e);
  }
  if (problem.criterion == FitCriterion::leastSquares) return std::sqrt(squares);
  if (problem.criterion == FitCriterion::inscribed) return -least;
  return problem.criterion == FitCriterion::zone ? std::max(most, -least) : most;
}

TEST(ConstrainedFitTest, NoNearbyFeatureThatMeetsTheConstraintsIsBetter) {
  constexpr UnknownMask kPosition = 1U << kShiftX | 1U << kShiftY | 1U << kShiftZ;
  constexpr UnknownMask kDirection = 1U << kTiltX | 1U << kTiltY | 1U << kTurn;
  std::mt19937 random(3);
  for (const FeatureKind kind : kKinds) {
    const bool isRound = kind == FeatureKind::circle || kind == FeatureKind::sphere || kind == FeatureKind::cylinder;
    for (const UnknownMask fixed : {UnknownMask{0}, kPosition, kDirection, UnknownMask{1U << kSize0}}) {
      for (int criterion = 0; criterion < (isRound ? 4 : 2); ++criterion) {
        SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", fixed " << fixed << ", criterion "
                                        << criterion);
        const Measured set = Measure(kind, 60, 0.01, random);
        FitProblem problem;
        problem.points = set.View();
        problem.criterion = static_cast<FitCriterion>(criterion);
        problem.fixed = fixed;
        const UnknownMask free = UnknownsOf(kind) & ~fixed;
        const Feature start = Nearby(set.truth, free, 0.05, random);
        const FittedFeature found = FitFrom(problem, start);
        ASSERT_EQ(found.end, FitEnd::converged);
        const double best = Objective(problem, found.feature);
        for (int k = 0; k < 20; ++k) {
          const Feature near = Nearby(found.feature, free, std::pow(0.1, 2 + k % 6), random);
          EXPECT_GE(Objective(problem, near), best - 1e-14);
        }
        for (int k = 0; k < 2; ++k) EXPECT_TRUE(free >> (kSize0 + k) & 1U || found.feature.size[k] == start.size[k]);
        EXPECT_TRUE(free & kDirection || Distance(found.feature.frame.z, start.frame.z) == 0.0);
        const bool isHeld = (fixed & kPosition) && kind != FeatureKind::plane;
        EXPECT_TRUE(!isHeld || Distance(found.feature.frame.origin, start.frame.origin) == 0.0);
      }
    }
  }
}

// Whatever is fixed at its own optimum stays the optimum, in any order of the points, with weights for copies: so many
// that they are summed by rows.
TEST(ConstrainedFitTest, EqualProblemsHaveEqualOptima) {
  constexpr int kCopies = 130;
  std::mt19937 random(4);
  for (const FeatureKind kind : kKinds) {
    SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind));
    Measured set = Measure(kind, 50, 0.01, random);
    FitProblem problem;
    problem.points = set.View();
    std::vector<double> weights;
    Measured copied;
    for (std::size_t i = 0; i < set.points.size(); ++i) {
      weights.push_back(static_cast<double>(i % 4));
      copied.points.insert(copied.points.end(), kCopies * (i % 4), set.points[i]);
    }
    problem.weights = weights.data();
    const FittedFeature weighted = FitFrom(problem, set.truth);
    std::shuffle(copied.points.begin(), copied.points.end(), random);
    FitProblem plain;
    plain.points = copied.View();
    const FittedFeature repeated = FitFrom(plain, set.truth);
    ASSERT_EQ(weighted.end, FitEnd::converged);
    ASSERT_EQ(repeated.end, FitEnd::converged);
    EXPECT_NEAR(weighted.objective, repeated.objective / kCopies, 1e-12 * weighted.objective);
    for (const Vec3& p : set.points)
      EXPECT_NEAR(DeviationOf(weighted.feature, p), DeviationOf(repeated.feature, p), 1e-11);
    for (int k = 0; k < kUnknowns; ++k) {
      problem.fixed = 1U << k;
      const FittedFeature fixed = FitFrom(problem, weighted.feature);
      EXPECT_EQ(fixed.end, FitEnd::converged);
      EXPECT_NEAR(fixed.objective, weighted.objective, 1e-13 * weighted.objective) << k;
    }
  }
}

TEST(ConstrainedFitTest, OneSidedFeaturesTouchAndKeepAllPointsOnTheirSide) {
  std::mt19937 random(5);
  for (const FeatureKind kind : kKinds) {
    if (kind == FeatureKind::line || kind == FeatureKind::circleInSpace) continue;
    for (const PointSide side : {PointSide::positive, PointSide::negative}) {
      for (const FitCriterion criterion : {FitCriterion::leastSquares, FitCriterion::zone}) {
        SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", side " << static_cast<int>(side)
                                        << ", criterion " << static_cast<int>(criterion));
        const Measured set = Measure(kind, 60, 0.01, random);
        FitProblem problem;
        problem.points = set.View();
        problem.side = side;
        problem.criterion = criterion;
        const FittedFeature found = FitFrom(problem, set.truth);
        ASSERT_EQ(found.end, FitEnd::converged);
        double nearest = 1e300, farthest = -1e300;
        for (const Vec3& p : set.points) {
          const double e = (side == PointSide::positive ? 1.0 : -1.0) * DeviationOf(found.feature, p);
          nearest = std::min(nearest, e), farthest = std::max(farthest, e);
        }
        EXPECT_NEAR(nearest, 0.0, 1e-13);
        EXPECT_TRUE(criterion != FitCriterion::zone || std::fabs(farthest - found.objective) < 1e-13);
        EXPECT_LT(found.objective, 0.1);
      }
    }
  }
}

// A free fit of a short arc may have its centre on the wrong side and its axis across.
TEST(ConstrainedFitTest, FixedRadiiFindTheArcFromAnyStart) {
  std::mt19937 random(7);
  for (const FeatureKind kind : {FeatureKind::circle, FeatureKind::sphere, FeatureKind::cylinder}) {
    for (int trial = 0; trial < 10; ++trial) {
      SCOPED_TRACE(testing::Message() << "kind " << static_cast<int>(kind) << ", trial " << trial);
      Measured set = Measure(kind, 120, 0.001, random);
      const AxisFrame& f = set.truth.frame;
      std::erase_if(set.points, [&](const Vec3& p) { return Dot(p - f.origin, f.x) < 1.6; });
      FitProblem problem;
      problem.points = set.View();
      problem.fixed = 1U << kSize0;
      const UnknownMask flat = kind == FeatureKind::circle ? 1U << kTiltX | 1U << kTiltY : 0U;
      const Feature start = Nearby(set.truth, UnknownsOf(FeatureKind::cylinder) & ~problem.fixed & ~flat, 2.0, random);
      const FittedFeature found = FitNear(problem, start);
      EXPECT_EQ(found.end, FitEnd::converged);
      EXPECT_LE(std::sqrt(found.objective), Objective(problem, set.truth));
    }
  }
}

TEST(ConstrainedFitTest, MonitorsSeeTheStepsAndCancel) {
  std::mt19937 random(6);
  const Measured set = Measure(FeatureKind::cylinder, 50, 0.01, random);
  FitProblem problem;
  problem.points = set.View();
  long seen = 0;
  problem.monitor.context = &seen;
  problem.monitor.function = [](void* context, long step, double, double) {
    *static_cast<long*>(context) = step;
    return step < 2;
  };
  const FittedFeature found = FitFrom(problem, Nearby(set.truth, UnknownsOf(FeatureKind::cylinder), 0.1, random));
  EXPECT_EQ(found.end, FitEnd::cancelled);
  EXPECT_EQ(seen, 2);
}

}  // namespace
