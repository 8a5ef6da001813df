#include "nu/engine/association/partial_sums.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "nu/association/internal/feature_classes.h"
#include "nu/engine/association/covariance.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/internal/point_set.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

constexpr std::size_t kParts = 8;

// All parts, each by way of its bytes, as from other machines.
PartSums SumOfParts(PointView points, const PartRequest& request) {
  std::optional<PartSums> joined;
  for (std::size_t k = 0; k < kParts; ++k) {
    const std::size_t begin = k * points.Size() / kParts;
    const PointView part = points.Part(begin, (k + 1) * points.Size() / kParts - begin);
    const std::vector<unsigned char> bytes = BytesOf(SumPart(part, nullptr, request));
    const std::optional<PartSums> sums = SumsFrom(bytes.data(), bytes.size());
    if (!sums) return {};
    joined = joined ? Join(*joined, *sums) : *sums;
  }
  return *joined;
}

Feature MovedABit(const Feature& feature, Random& random) {
  double step[kUnknowns] = {};
  for (int k = 0; k < kUnknowns; ++k)
    if ((UnknownsOf(feature.kind) >> k & 1U) != 0) step[k] = random.Uniform(-0.02, 0.02);
  return Moved(feature, step);
}

double LargestUnknown(const Feature& from, const Feature& to) {
  double change[kUnknowns];
  FindChange(from, to, change);
  double largest = 0.0;
  for (const double c : change) largest = std::max(largest, std::fabs(c));
  return largest;
}

// From a feature some hundredths away, 8 parts lead to the optimum of the whole.
template<class Class>
void ExpectWhole(const CNuPointArray& points, const Class& fitted, Random& random, const char* what) {
  SCOPED_TRACE(what);
  const Feature whole = CentredOn(ViewOf(points), FeatureOf(fitted));
  PartRequest request{MovedABit(whole, random), ~0U, 10.0};
  double length = 1.0;
  int rounds = 0;
  for (; rounds < 30 && length > 1e-13; ++rounds) {
    const PartSums sums = SumOfParts(ViewOf(points), request);
    EXPECT_EQ(sums.points, static_cast<std::size_t>(points.GetSize()));
    const std::optional<PartStep> next = StepOf(sums);
    ASSERT_TRUE(next.has_value());
    request.feature = CentredOn(ViewOf(points), next->feature);
    length = next->length;
  }
  EXPECT_LE(rounds, 9);
  EXPECT_LE(LargestUnknown(whole, request.feature), 1e-12);
}

template<class Class>
void ExpectWholeMinimax(const CNuPointArray& points, const Class& fitted, FitCriterion criterion, double value,
                        Random& random, const char* what) {
  SCOPED_TRACE(what);
  PartRequest request{MovedABit(CentredOn(ViewOf(points), FeatureOf(fitted)), random), ~0U, 10.0};
  PartCandidates candidates;
  double bound = 0.0, outside = 1.0;
  int rounds = 0;
  for (; rounds < 20 && outside > 1e-13; ++rounds) {
    const PartSums sums = SumOfParts(ViewOf(points), request);
    outside = 0.0;
    for (int k = 0; k < PartSums::kStrata; ++k) {
      if (!sums.highest[k]) continue;
      const double low = criterion == FitCriterion::zone ? -sums.lowest[k]->deviation : 0.0;
      outside = std::max({outside, sums.highest[k]->deviation - bound, low - bound});
    }
    candidates.Add(sums);
    const FittedFeature next = candidates.Fit(criterion, request);
    ASSERT_EQ(next.end, FitEnd::converged);
    request.feature = next.feature;
    bound = criterion == FitCriterion::zone ? next.objective : 0.0;
    if (rounds == 0) outside = 1.0;
  }
  EXPECT_LE(rounds, 12);
  const double reached = criterion == FitCriterion::zone ? 2.0 * bound : request.feature.size[0];
  EXPECT_NEAR(reached, value, 1e-12);
}

// The fits of the whole to all digits.
class PartialSums : public ::testing::Test {
 protected:
  void SetUp() override { NuSetTol(1e-32); }
  void TearDown() override { NuSetTol(m_tol); }
  const double m_tol = NuGetTol();
};

TEST_F(PartialSums, LeadToTheWhole) {
  Random random(31);
  const Motion motion = RandomMotion(random, 5.0);
  constexpr int n = 3000;
  CNuPointArray points = motion(PlaneCloud(random, n, 10.0, 6.0, 0.01));
  CNuPlane plane;
  plane.Fit(points), ExpectWhole(points, plane, random, "plane");
  points = motion(LineCloud(random, n, 10.0, 0.01));
  CNuLine line;
  line.Fit(points), ExpectWhole(points, line, random, "line");
  points = motion(CircleCloud(random, n, 5.0, 200.0, 0.01));
  CNuCircle circle(1.0);
  circle.Fit(points, 100), ExpectWhole(points, circle, random, "circle");
  points = motion(SphereCloud(random, n, 5.0, 100.0, 0.01));
  CNuSphSurf sphere(1.0);
  double zone;
  sphere.Fit(points, 100), ExpectWhole(points, sphere, random, "sphere");
  sphere.FitMinZone(points, &zone, 0.0, 100);
  ExpectWholeMinimax(points, sphere, FitCriterion::zone, zone, random, "sphere zone");
  sphere.FitMin(points, 0.0);
  ExpectWholeMinimax(points, sphere, FitCriterion::circumscribed, sphere.GetRadius(), random, "sphere around");
  points = motion(CylinderCloud(random, n, 5.0, 8.0, 300.0, 0.01));
  CNuCylSurf cylinder(1.0);
  cylinder.Fit(points, 100), ExpectWhole(points, cylinder, random, "cylinder");
  cylinder.FitMinZone(points, &zone, 0.0, 100);
  ExpectWholeMinimax(points, cylinder, FitCriterion::zone, zone, random, "cylinder zone");
  points = motion(ConeCloud(random, n, 20.0, 4.0, 8.0, 300.0, 0.01));
  CNuConSurf cone(1.0);
  cone.Fit(points, 100), ExpectWhole(points, cone, random, "cone");
}

TEST_F(PartialSums, RefuseDamagedBytes) {
  Random random(33);
  const CNuPointArray points = SphereCloud(random, 50, 5.0, 100.0, 0.01);
  const Feature sphere{FeatureKind::sphere, AxisFrame::Along({}, {0.0, 0.0, 1.0}), {5.0, 0.0}};
  std::vector<unsigned char> bytes = BytesOf(SumPart(ViewOf(points), nullptr, {sphere, ~0U, 5.0}));
  EXPECT_TRUE(SumsFrom(bytes.data(), bytes.size()).has_value());
  for (const std::size_t count : {std::size_t{0}, std::size_t{7}, std::size_t{60}, bytes.size() - 1})
    EXPECT_FALSE(SumsFrom(bytes.data(), count).has_value()) << count;
  for (int k = 0; k < 200; ++k) {
    unsigned char& byte = bytes[static_cast<std::size_t>(random.Below(static_cast<int>(bytes.size())))];
    byte ^= 0x10U;
    EXPECT_FALSE(SumsFrom(bytes.data(), bytes.size()).has_value());
    byte ^= 0x10U;
  }
  // No sphere follows from points on a circle.
  EXPECT_FALSE(
      StepOf(SumPart(ViewOf(CircleCloud(random, 50, 3.0, 360.0, 0.0)), nullptr, {sphere, ~0U, 5.0})).has_value());
}

}  // namespace
