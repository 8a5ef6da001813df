#include "nu/engine/association/global_bound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "nu/engine/association/bounded_features.h"
#include "nu/engine/association/cell_bound.h"
#include "nu/geometry/internal/fit_guards.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

Vec3 Any(Random& random, double reach) {
  return {random.Uniform(-reach, reach), random.Uniform(-reach, reach), random.Uniform(-reach, reach)};
}

double CriterionOf(const CNuPointArray& points, const Vec3& origin, const Feature& feature,
                   BoundedCriterion criterion) {
  double low = kInf;
  double high = -kInf;
  for (int i = 0; i < points.GetSize(); ++i) {
    const Vec3 p{points[i].x(), points[i].y(), points[i].z()};
    const double d = DeviationOf(feature, p - origin);
    low = std::min(low, d);
    high = std::max(high, d);
  }
  if (criterion == BoundedCriterion::circumscribed)
    return feature.kind == FeatureKind::torus ? feature.size[1] + high : high + feature.size[0];
  const bool isCurve = feature.kind == FeatureKind::line || feature.kind == FeatureKind::circleInSpace;
  return isCurve ? 2.0 * high : high - low;
}

// Whatever the box, near and far, a deviation stays inside its enclosure.
template<class Model>
void ExpectEnclosed(Random& random) {
  constexpr int N = Model::kUnknowns;
  for (int trial = 0; trial < 3000; ++trial) {
    UnknownCell<N> cell;
    cell.chart = random.Below(Model::kCharts);
    double low[N], high[N];
    Model::Domain(std::pow(10.0, random.Uniform(0.0, 2.0)), low, high);
    const double size = std::pow(10.0, random.Uniform(-4.0, 0.0));
    for (int k = 0; k < N; ++k) {
      cell.middle[k] = random.Uniform(low[k], high[k]);
      cell.half[k] = size * random.Uniform(0.0, 0.5) * (high[k] - low[k]);
    }
    FirstOrder<N> x[N];
    cell.Unknowns(x);
    double at[N], d[N];
    for (int k = 0; k < N; ++k) {
      d[k] = trial % 2 ? random.Uniform(-1.0, 1.0) : 1.0 - 2.0 * random.Below(2);
      at[k] = cell.middle[k] + d[k] * cell.half[k];
    }
    const Vec3 p = Any(random, 0.5), q = Any(random, 0.5);
    const typename Model::template Deviations<FirstOrder<N>> enclosure(cell.chart, x, 1.0);
    const typename Model::template Deviations<double> deviation(cell.chart, at, 1.0);
    FirstOrder<N> e = enclosure(p);
    double value = deviation(p);
    if (Model::kIsLevelled) e = e - enclosure(q), value -= deviation(q);
    for (int k = 0; k < N; ++k) e.value += e.slope[k] * d[k];
    if (std::isnan(e.high)) continue;
    const double rounding = 1e-13 * (1.0 + std::fabs(high[N - 1]) + std::fabs(high[0]));
    ASSERT_GE(value, e.value + e.low - rounding) << trial;
    ASSERT_LE(value, e.value + e.high + rounding) << trial;
  }
}

TEST(FirstOrder, EnclosesDeviations) {
  Random random(7);
  ExpectEnclosed<BoundedSphere>(random);
  ExpectEnclosed<BoundedCylinder>(random);
  ExpectEnclosed<BoundedCone>(random);
  ExpectEnclosed<BoundedCircle>(random);
}

struct Problem {
  FeatureKind kind;
  BoundedCriterion criterion;
  double size[2];
  CNuPointArray points;
};

// About the z axis, with the part moved anywhere.
GlobalBound Bound(const Problem& problem, const Motion& motion, const BoundLimits& limits) {
  const CNuPointArray points = motion(problem.points);
  const Vec3 origin = MiddleOf(ViewOf(points));
  const CNuPoint centre = motion(CNuPoint(0.0, 0.0, 0.0)), axis = motion.Direction({0.0, 0.0, 1.0});
  const Vec3 from = Vec3{centre.x(), centre.y(), centre.z()} - origin;
  const Feature known{
      problem.kind, AxisFrame::Along(from, {axis.x(), axis.y(), axis.z()}), {problem.size[0], problem.size[1]}};
  const GlobalBound found = BoundGlobally(ViewOf(points), origin, known, problem.criterion, limits);
  EXPECT_LE(found.bound, found.best);
  EXPECT_NEAR(CriterionOf(points, origin, found.feature, problem.criterion), found.best, 1e-9 * found.best);
  return found;
}

// From the nominal feature to the optimum, and the proof that it is one. Solid sets fill what they are in.
TEST(GlobalBound, ProvesMeasuredParts) {
  using enum BoundedCriterion;
  Random random(11);
  const Problem problems[] = {
      {FeatureKind::sphere, zone, {1.0}, SphereCloud(random, 500, 1.0, 180.0, 1e-3)},
      {FeatureKind::sphere, zone, {1.0}, SphereCloud(random, 500, 1.0, 30.0, 1e-4)},
      {FeatureKind::cylinder, zone, {1.0}, CylinderCloud(random, 500, 1.0, 2.0, 360.0, 1e-3)},
      {FeatureKind::cylinder, circumscribed, {1.0}, CylinderCloud(random, 500, 1.0, 2.0, 200.0, 1e-3)},
      {FeatureKind::cylinder, circumscribed, {1.0}, BoxCloud(random, 500, 3.0, 2.0, 1.0)},
      {FeatureKind::cylinder, circumscribed, {1.0}, CylinderCloud(random, 500, 0.8, 0.2, 360.0, 0.1)},
      {FeatureKind::line, zone, {}, LineCloud(random, 500, 1.0, 1e-3)},
      {FeatureKind::plane, zone, {}, PlaneCloud(random, 500, 2.0, 1.0, 1e-3)},
      {FeatureKind::circle, zone, {1.0}, CircleCloud(random, 500, 1.0, 360.0, 1e-3)},
      {FeatureKind::circle, circumscribed, {1.0}, CircleCloud(random, 500, 1.0, 360.0, 1e-3)},
      {FeatureKind::sphere, circumscribed, {1.0}, SphereCloud(random, 500, 1.0, 180.0, 1e-3)}};
  for (const Problem& problem : problems) {
    SCOPED_TRACE(static_cast<int>(problem.kind));
    const GlobalBound found = Bound(problem, RandomMotion(random, 10.0), {});
    EXPECT_TRUE(found.proven);
    EXPECT_LE(found.best - found.bound, 4e-9);
    EXPECT_TRUE(found.improved);
    EXPECT_LT(found.boxes, 100000);
  }
}

// Scattered points, with little work, from features anywhere: no bound is above the best of all that any search finds.
TEST(GlobalBound, IsNotAboveAnyFeature) {
  using enum BoundedCriterion;
  constexpr int starts = 4;
  Random random(12);
  for (int set = 0; set < 4; ++set) {
    SCOPED_TRACE(set);
    const CNuPointArray points = BoxCloud(random, 8 + random.Below(20), 1.0, 0.9, 0.05 + 0.15 * set);
    const Problem problems[] = {{FeatureKind::sphere, zone, {1.0}, points},
                                {FeatureKind::cylinder, zone, {1.0}, points},
                                {FeatureKind::cone, zone, {0.5, 0.5}, points},
                                {FeatureKind::cylinder, circumscribed, {1.0}, points},
                                {FeatureKind::torus, circumscribed, {0.5, 0.1}, points},
                                {FeatureKind::circleInSpace, zone, {0.5}, points}};
    for (const Problem& problem : problems) {
      SCOPED_TRACE(static_cast<int>(problem.kind));
      double best = kInf;
      double bound = 0.0;
      for (int start = 0; start < starts; ++start) {
        Problem turned = problem;
        turned.points = RandomMotion(random, 1.0)(problem.points);
        const GlobalBound found = Bound(turned, RandomMotion(random, 0.0), {start == 0 ? 1000 : 200, 1e-9});
        best = std::min(best, found.best);
        bound = std::max(bound, found.bound);
      }
      EXPECT_LE(bound, best);
    }
  }
}

TEST(GlobalBound, ProvesNothingOfWhatIsNotFinite) {
  Random random(13);
  for (const double bad : {kNaN, kInf}) {
    for (const FeatureKind kind : {FeatureKind::sphere, FeatureKind::cylinder, FeatureKind::line, FeatureKind::circle,
                                   FeatureKind::plane, FeatureKind::lineInPlane, FeatureKind::parabola}) {
      CNuPointArray points = BoxCloud(random, 10, 1.0, 1.0, 1.0);
      Feature known{kind, AxisFrame::Along({}, {0.0, 0.0, 1.0}), {1.0}};
      points[3] = CNuPoint(bad, 0.0, 0.0);
      const GlobalBound found = BoundGlobally(ViewOf(points), {}, known, BoundedCriterion::zone, {});
      EXPECT_TRUE(!found.proven && found.bound == 0.0);
    }
  }
}

}  // namespace
