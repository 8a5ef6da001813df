#include "nu/engine/association/explain.h"

#include <gtest/gtest.h>

#include "nu/geometry/internal/point_set.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

const AxisFrame kWorld{{}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

// The promise of a probing place holds when the point is taken, and no other place of a fine search is better.
void ExpectBestPlace(const Feature& feature, const CNuPointArray& points, const char* what) {
  const Covariance before = CovarianceOf(ViewOf(points), nullptr, feature, ~0U);
  const Coverage coverage = CoverageOf(ViewOf(points), feature);
  const WeakDirection weak = WeakestDirection(before);
  Gradient along;
  for (int j = 0; j < before.unknowns; ++j)
    along.by[before.unknown[j]] = weak.share[before.unknown[j]] / before.scale[j];
  const ProbingPlace best = BestProbingPlace(feature, before, coverage);
  const auto with = [&](const Vec3& place) {
    CNuPointArray more = points;
    more.Add({place.x, place.y, place.z});
    return UncertaintyPerUnit(CovarianceOf(ViewOf(more), nullptr, feature, ~0U), along);
  };
  EXPECT_NEAR(UncertaintyPerUnit(before, along) / weak.uncertainty, 1.0, 1e-10) << what;
  ASSERT_TRUE(best.found) << what;
  EXPECT_NEAR(DeviationOf(feature, best.place), 0.0, 1e-14 * 20) << what;
  EXPECT_NEAR(with(best.place) / best.uncertainty, 1.0, 1e-10) << what;
  Random random(4);
  for (int i = 0; i < 100; ++i) {
    const double z = random.Uniform(coverage.low.z, coverage.high.z), angle = random.Uniform(0.0, 360.0) * kDegree;
    const double rho = feature.size[0] + (feature.kind == FeatureKind::cone ? z * std::tan(feature.size[1]) : 0.0);
    EXPECT_GT(with({rho * std::cos(angle), rho * std::sin(angle), z}), best.uncertainty * (1.0 - 1e-5)) << what;
  }
}

TEST(Explain, FindsThePlaceThatHelpsMost) {
  Random random(1);
  ExpectBestPlace({FeatureKind::circle, kWorld, {5.0, 0.0}}, CircleCloud(random, 40, 5.0, 14.0, 0.0), "circle");
  ExpectBestPlace({FeatureKind::cylinder, kWorld, {5.0, 0.0}}, CylinderCloud(random, 40, 5.0, 20.0, 50.0, 0.0), "bore");
  CNuPointArray strip = ConeCloud(random, 40, 20.0, 8.0, 15.0, 60.0, 0.0);
  ExpectBestPlace({FeatureKind::cone, kWorld, {0.0, 20.0 * kDegree}}, strip, "cone");
}

TEST(Explain, MeasuresWhatThePointsCover) {
  Random random(2);
  for (const double sweep : {0.6, 14.0, 100.0, 181.0, 300.0, 356.0}) {
    CNuPointArray ring(200), ball(200);
    const double from = random.Uniform(0.0, 360.0);
    for (int i = 0; i < 200; ++i) {
      const double angle = (from + sweep * i / 199) * kDegree;
      ring.Add({10.0 + 2.0 * std::cos(angle), 0.0, 2.0 * std::sin(angle)});
      ball.Add({5.0 * std::cos(angle), 5.0 * std::sin(angle), i * 0.01});
    }
    const Coverage arc = CoverageOf(ViewOf(ball), {FeatureKind::cylinder, kWorld, {5.0, 0.0}});
    EXPECT_NEAR(arc.arc, sweep, 1e-10);
    EXPECT_NEAR(std::remainder(arc.arcStart - from, 360.0), 0.0, 1e-10);
    EXPECT_EQ(arc.high.z - arc.low.z, 199 * 0.01);
    EXPECT_NEAR(CoverageOf(ViewOf(ring), {FeatureKind::torus, kWorld, {10.0, 2.0}}).tubeArc, sweep, 1e-10);
    if (sweep < 180.0 || sweep > 300.0) continue;
    const CNuPointArray cap = RandomMotion(random, 0.0)(SphereCloud(random, 3000, 5.0, sweep / 2.0, 0.0));
    const Coverage held = CoverageOf(ViewOf(cap), {FeatureKind::sphere, kWorld, {5.0, 0.0}});
    EXPECT_NEAR(held.cap, sweep / 2.0, 3.0);
    for (int i = 0; i < cap.GetSize(); ++i)
      EXPECT_GE(Dot(held.capAxis, LoadVec3(ViewOf(cap)[i])), 5.0 * std::cos(held.cap * kDegree) - 1e-12);
  }
}

TEST(Explain, SummarisesPointsOfAnyKind) {
  Random random(3);
  CNuPointArray points(401);
  for (int i = 0; i <= 400; ++i)
    points.Add({5.0 * std::cos(0.5 * i * kDegree), 5.0 * std::sin(0.5 * i * kDegree), 0.0});
  points = RandomMotion(random, 9.0)(points);
  PointsSummary summary = SummaryOf(ViewOf(points), 1e-6);
  EXPECT_NEAR(summary.arc, 200.0, 1e-6);
  EXPECT_NEAR(summary.length, 10.0, 1e-2);
  EXPECT_LT(summary.thickness, 1e-13);
  EXPECT_NEAR(SummaryOf(ViewOf(CircleCloud(random, 2000, 5.0, 14.0, 0.0)), 0.1).arc, 14.0, 1.0);
  summary = SummaryOf(ViewOf(RandomMotion(random, 9.0)(LineCloud(random, 50, 1e9, 1.0))), 1e-6);
  EXPECT_NEAR(summary.fromLine, 3.0, 3.0);
  summary = SummaryOf(ViewOf(PointsOf({{1.0, 2.0, 3.0}, {1.0, 2.0, 3.0}, {1.5, 2.0, 3.0}})), 1e-6);
  EXPECT_EQ(summary.distinct, 2U);
  EXPECT_EQ(summary.length, 0.5);
  EXPECT_EQ(summary.width, 0.0);
  EXPECT_EQ(SummaryOf({}, 1e-6).count, 0U);
  points[7].y() = kNaN;
  EXPECT_EQ(SummaryOf(ViewOf(points), 1e-6).nonFinite, 7U);
  for (const double extreme : {kNaN, kInf, 1e308, 0.0}) {
    for (const FeatureKind kind : {FeatureKind::sphere, FeatureKind::torus, FeatureKind::hyperbola}) {
      const Feature feature{kind, kWorld, {extreme, 1.0}};
      const Coverage coverage = CoverageOf(ViewOf(points), feature);
      BestProbingPlace(feature, CovarianceOf(ViewOf(points), nullptr, feature, ~0U), coverage);
    }
  }
}

}  // namespace
