#include "nu/engine/association/global_bound.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "nu/engine/association/bounded_features.h"
#include "nu/engine/association/cell_bound.h"
#include "nu/engine/association/circle_cell.h"
#include "nu/engine/association/wedge_bound.h"
#include "nu/geometry/internal/fit_guards.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

Vec3 Any(Random& random, double reach) {
  return {random.Uniform(-reach, reach), random.Uniform(-reach, reach), random.Uniform(-reach, reach)};
}

CNuPointArray DoubleConeCloud(Random& random, int n, double semiAngle, double noise) {
  CNuPointArray points = ConeCloud(random, n, semiAngle, 1.0, 0.8, 360.0, noise);
  for (int i = 0; i < n; i += 2) points[i] = -points[i];
  return points;
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

template<int N>
void MoveTo(const double (&d)[N], FirstOrder<N>& e) {
  for (int k = 0; k < N; ++k) e.value += e.slope[k] * d[k];
}
template<int N>
void MoveTo(const double (&d)[N], SecondOrder<N>& e) {
  for (int k = 0; k < N; ++k) {
    e.value += e.slope[k] * d[k];
    for (int l = k; l < N; ++l) e.value += e.bend[k][l] * d[k] * d[l];
  }
}

// Whatever the box, near and far, a deviation stays inside its enclosure. Their widths shrink with a power of the size.
template<class Model, template<int> class Enclosure>
void ExpectEnclosed(Random& random, double power) {
  constexpr int N = Model::kUnknowns;
  constexpr int C = Model::kComponents;
  int found = 0;
  int shrunk = 0;
  for (int trial = 0; trial < 2000; ++trial) {
    UnknownCell<N> cell;
    cell.chart = random.Below(Model::kCharts);
    double low[N], high[N];
    Model::Domain(std::pow(10.0, random.Uniform(0.0, 2.0)), 1.0, low, high);
    const double size = std::pow(10.0, random.Uniform(-4.0, 0.0));
    for (int k = 0; k < N; ++k) {
      cell.middle[k] = random.Uniform(low[k], high[k]);
      cell.half[k] = size * random.Uniform(0.0, 0.5) * (high[k] - low[k]);
    }
    const Vec3 p = Any(random, 0.5), q = Any(random, 0.5);
    const auto difference = [&](const UnknownCell<N>& part, Enclosure<N>(&e)[C]) {
      Enclosure<N> x[N], other[C];
      part.Unknowns(x);
      const typename ComponentsOf<Model>::template In<Enclosure<N>> enclosure(part.chart, x, 1.0);
      enclosure.Of(p, e);
      enclosure.Of(q, other);
      for (int c = 0; c < C; ++c) e[c] = e[c] - other[c];
    };
    double at[N], d[N];
    for (int k = 0; k < N; ++k) {
      d[k] = trial % 2 ? random.Uniform(-1.0, 1.0) : 1.0 - 2.0 * random.Below(2);
      at[k] = cell.middle[k] + d[k] * cell.half[k];
    }
    const typename ComponentsOf<Model>::template In<double> deviation(cell.chart, at, 1.0);
    Enclosure<N> e[C], half[C];
    double value[C], otherValue[C];
    difference(cell, e);
    deviation.Of(p, value);
    deviation.Of(q, otherValue);
    UnknownCell<N> part = cell;
    for (double& h : part.half) h *= 0.5;
    difference(part, half);
    const double rounding = 1e-13 * (1.0 + std::fabs(high[N - 1]) + std::fabs(high[N - 2]));
    for (int c = 0; c < C; ++c) {
      const double width = e[c].high - e[c].low;
      if (!(width < kInf)) continue;
      ++found;
      shrunk += half[c].high - half[c].low <= std::pow(0.5, power) * width + rounding ? 1 : 0;
      MoveTo(d, e[c]);
      ASSERT_GE(value[c] - otherValue[c], e[c].value + e[c].low - rounding) << trial;
      ASSERT_LE(value[c] - otherValue[c], e[c].value + e[c].high + rounding) << trial;
    }
  }
  EXPECT_GT(found, 1000);
  EXPECT_GT(shrunk, 0.95 * found);  // but where a smaller box is far away as a whole
}

template<template<int> class Enclosure>
void ExpectEnclosures(double power) {
  Random random(7);
  ExpectEnclosed<BoundedSphere, Enclosure>(random, power);
  ExpectEnclosed<BoundedCylinder, Enclosure>(random, power);
  ExpectEnclosed<BoundedCone, Enclosure>(random, power);
  ExpectEnclosed<BoundedCircle, Enclosure>(random, power);
  ExpectEnclosed<BoundedDoubleCone, Enclosure>(random, power);
}

TEST(Enclosures, HoldDeviations) {
  ExpectEnclosures<FirstOrder>(1.9);
  ExpectEnclosures<SecondOrder>(2.9);
}

// Every axis is in its chart, and comes back from there.
TEST(AxisCharts, HoldAllDirections) {
  Random random(8);
  for (int trial = 0; trial < 5000; ++trial) {
    const Vec3 direction = Unit(Any(random, 1.0));
    const Feature axis{
        FeatureKind::cylinder, AxisFrame::Along(Rejection(Any(random, 1.0), direction), direction), {1.0}};
    double x[4];
    const int chart = BoundedCylinder::ChartOf(axis);
    ASSERT_TRUE(BoundedCylinder::Place(chart, axis, x));
    const Feature back = BoundedCylinder::At(chart, x, 1.0);
    const Vec3 turn = Rejection(back.frame.z, direction), shift = back.frame.origin - axis.frame.origin;
    ASSERT_LT(Dot(turn, turn) + Dot(shift, shift), 1e-28);
  }
}

const int kChartOfZ = ChartOfDirection({0.0, 0.0, 1.0});

// The root of the weighted mean square of the distances from the best circle about an axis.
double RootOfV(const double (&x)[4], const std::vector<Vec3>& points, const std::vector<double>& weights) {
  const BoundedCircle::Components<double> components(kChartOfZ, x, 1.0);
  double mean[2] = {};
  double square = 0.0;
  for (const bool isMean : {true, false}) {
    for (std::size_t i = 0; i < points.size(); ++i) {
      double at[2];
      components.Of(points[i], at);
      for (int c = 0; c < 2; ++c) {
        if (isMean) mean[c] += weights[i] * at[c];
        if (!isMean) square += weights[i] * (at[c] - mean[c]) * (at[c] - mean[c]);
      }
    }
  }
  return std::sqrt(square);
}

struct Problem {
  FeatureKind kind;
  BoundedCriterion criterion;
  double size[2];
  CNuPointArray points;
  bool bothNappes = false;
};

// About the z axis, with the part moved anywhere.
GlobalBound Bound(const Problem& problem, const Motion& motion, const BoundLimits& limits) {
  const CNuPointArray points = motion(problem.points);
  const Vec3 origin = MiddleOf(ViewOf(points));
  const CNuPoint centre = motion(CNuPoint(0.0, 0.0, 0.0)), axis = motion.Direction({0.0, 0.0, 1.0});
  const Vec3 from = Vec3{centre.x(), centre.y(), centre.z()} - origin;
  const Feature known{problem.kind,
                      AxisFrame::Along(from, {axis.x(), axis.y(), axis.z()}),
                      {problem.size[0], problem.size[1]},
                      problem.bothNappes};
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
      {FeatureKind::cone, zone, {1.0, 0.3}, ConeCloud(random, 500, 17.0, 1.0, 2.0, 120.0, 1e-3)},
      {FeatureKind::torus, circumscribed, {1.0, 0.2}, TorusCloud(random, 500, 1.0, 0.2, 360.0, 360.0, 1e-3)},
      {FeatureKind::torus, circumscribed, {1.0, 0.0}, TorusCloud(random, 500, 1.0, 0.002, 360.0, 360.0, 1e-3)},
      {FeatureKind::circleInSpace, zone, {1.0}, TorusCloud(random, 500, 1.0, 0.002, 100.0, 360.0, 1e-3)},
      {FeatureKind::line, zone, {}, LineCloud(random, 500, 1.0, 1e-3)},
      {FeatureKind::line, zone, {}, LineCloud(random, 500, 1.0, 1e-6)},
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

// Neither a cone of one nappe nor another one of two is better.
TEST(GlobalBound, ProvesDoubleCones) {
  Random random(16);
  const Problem problem{
      FeatureKind::cone, BoundedCriterion::zone, {0.0, 60.0 * kDegree}, DoubleConeCloud(random, 200, 60.0, 1e-3), true};
  const GlobalBound found = Bound(problem, RandomMotion(random, 10.0), {.boxes = 300000});
  EXPECT_TRUE(found.proven);
  EXPECT_LE(found.best - found.bound, 4e-9);
  EXPECT_TRUE(found.feature.bothNappes);
}

// Points of a wedge have a range of their own, which no bound is above. Points around both nappes of a cone are far
// from every wedge.
TEST(WedgeBound, IsNotAboveAnyWedge) {
  Random random(15);
  const auto boundOf = [](const CNuPointArray& points, double& reach) {
    PointBlocks blocks(ViewOf(points), {});
    blocks.Keep();
    BoundedPoints bounded(blocks, AxisFrame::Along({}, {0.0, 0.0, 1.0}));
    reach = bounded.Reach();
    return BoundWedges(bounded, reach);
  };
  double reach;
  for (int trial = 0; trial < 20; ++trial) {
    const Vec3 m = Unit(Any(random, 1.0)), n = Unit(Any(random, 1.0));
    const double k = random.Uniform(-0.3, 0.3), noise = random.Uniform(0.0, 0.5);
    const auto rise = [&](const Vec3& p) { return std::max(Dot(m, p), Dot(n, p) + k); };
    CNuPointArray points(100);
    double low = kInf, high = -kInf;
    while (points.GetSize() < 100) {
      const Vec3 p = Any(random, 1.0);
      if (std::fabs(rise(p)) > noise + 0.02) continue;
      points.Add({p.x, p.y, p.z});
      low = std::min(low, rise(p)), high = std::max(high, rise(p));
    }
    EXPECT_LE(boundOf(points, reach), high - low);
  }
  EXPECT_GT(boundOf(DoubleConeCloud(random, 200, 45.0, 1e-3), reach), 0.2 * reach);
}

// About axes near that of thin rings and their sectors: in the whole cell no axis has a circle with a smaller root than
// was asked for. Where none may be smaller than that of the axis itself, which is no optimum, there is no cell.
TEST(ConvexCell, HoldsNoBetterCircle) {
  Random random(14);
  int proven = 0;
  for (int trial = 0; trial < 50; ++trial) {
    SCOPED_TRACE(trial);
    const double sweep = random.Uniform(60.0, 360.0) * kDegree;
    const int count = 4 + random.Below(4);
    const std::vector<double> weights(static_cast<std::size_t>(count), 1.0 / count);
    std::vector<Vec3> points;
    for (int i = 0; i < count; ++i) {
      const double angle = sweep * (i + random.Uniform(0.0, 0.5)) / count;
      const double tube = i % 2 ? 1e-3 : -1e-3;
      points.push_back({(1.0 + tube) * std::cos(angle), (1.0 + tube) * std::sin(angle), tube});
    }
    UnknownCell<4> unit;
    unit.chart = kChartOfZ;
    for (double& x : unit.middle) x = random.Uniform(-3e-4, 3e-4);
    std::fill_n(unit.half, 4, 1.0);
    const double here = RootOfV(unit.middle, points, weights);
    const double least = random.Uniform(0.5, 1.0) * here;
    const UnknownCell<4> cell = ConvexCell(unit, points, weights, least);
    proven += cell.Volume() > 0.0 ? 1 : 0;
    for (int k = 0; k < 200 && cell.Volume() > 0.0; ++k) {
      double x[4];
      const double size = std::pow(10.0, random.Uniform(-2.0, 0.0));
      for (int j = 0; j < 4; ++j) x[j] = cell.middle[j] + size * cell.half[j] * random.Uniform(-1.0, 1.0);
      ASSERT_GE(RootOfV(x, points, weights), least * (1.0 - 1e-12));
    }
    EXPECT_EQ(ConvexCell(unit, points, weights, here).Volume(), 0.0);
  }
  EXPECT_GT(proven, 15);
  EXPECT_LT(proven, 50);
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
        const GlobalBound found = Bound(turned, RandomMotion(random, 0.0), {.boxes = start == 0 ? 1000 : 200});
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
