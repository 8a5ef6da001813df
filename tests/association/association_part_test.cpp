#include "nu/association/association_part.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/fitted.h"

namespace {

using namespace nu::test;

constexpr int kParts = 8;
const CNuPoint kMiddle(0.0, 0.0, 1.0);

CNuAssociationPart PartOf(const CNuPointArray& points, int k, const CNuGeometry& feature) {
  const int begin = points.GetSize() * k / kParts;
  const double* first = &const_cast<CNuPoint&>(points.GetData()[begin]).x();
  const std::ptrdiff_t stride = sizeof(CNuPoint) / sizeof(double);
  return {first, points.GetSize() * (k + 1) / kParts - begin, stride, feature, kMiddle};
}

// As from other machines.
CNuAssociationPart Joined(const CNuPointArray& points, const CNuGeometry& feature) {
  CNuAssociationPart all;
  for (int k = 0; k < kParts; ++k) {
    const CNuAssociationPart part = PartOf(points, k, feature);
    std::vector<unsigned char> bytes(static_cast<std::size_t>(part.GetNumberBytes()));
    part.GetBytes(bytes.data());
    all.Join(CNuAssociationPart::FromBytes(bytes.data(), static_cast<int>(bytes.size())));
  }
  return all;
}

TEST(AssociationPart, LeadsToTheFitOfTheWhole) {
  Random random(41);
  const CNuPointArray points = CylinderCloud(random, 5000, 5.0, 8.0, 330.0, 0.01);
  CNuCylSurf whole(1.0);
  double form, sumSquares, zone;
  whole.Fit(points, &form, &sumSquares, 100);
  CNuCylSurf bore(5.1, CNuPoint(0.02, 0.01, 0.0), CNuVector(0.001, -0.002, 1.0));
  double step = 1.0;
  for (int round = 0; round < 8 && step > 1e-12; ++round) step = Joined(points, bore).Step(&bore);
  EXPECT_LE(step, 1e-12);
  const CNuAssociationPart all = Joined(points, bore);
  EXPECT_EQ(all.GetNumberPoints(), 5000U);
  EXPECT_NEAR(all.GetSumSquares(), sumSquares, 1e-12);
  EXPECT_NEAR(all.GetLargestDeviation() - all.GetSmallestDeviation(), form, 1e-9);
  EXPECT_NEAR(bore.GetRadius(), whole.GetRadius(), 1e-9);

  whole.FitMinZone(points, &zone, 0.0, 100);
  CNuAssociationCandidates candidates;
  double half = 0.0;
  bool isWithin = false;
  for (int round = 0; round < 12 && !isWithin; ++round) {
    const CNuAssociationPart joined = Joined(points, bore);
    isWithin =
        round > 0 && joined.GetLargestDeviation() <= half + 1e-13 && -joined.GetSmallestDeviation() <= half + 1e-13;
    candidates.Add(joined);
    half = candidates.Fit(NuMinimumZone, &bore);
  }
  EXPECT_TRUE(isWithin);
  EXPECT_NEAR(2.0 * half, zone, 1e-12);
  EXPECT_NEAR(bore.GetRadius(), whole.GetRadius(), 1e-12);
}

// The parts of an association have its weights and its fixed parameters: the optimum is that of the whole.
template<class F>
void ExpectWholeWithOptions(CNuAssociation& whole, CNuAssociation (&parts)[2], F feature, const char* what) {
  SCOPED_TRACE(what);
  for (CNuAssociation* association : {&whole, &parts[0], &parts[1]}) {
    CNuDoubleArray weights(association->GetNumberPoints());
    for (int i = 0; i < association->GetNumberPoints(); ++i) weights.Add(i % 3 + 0.5);
    association->SetWeights(weights);
  }
  F optimum = feature;
  const CNuAssociationReport report = whole.Fit(NuLeastSquares, &optimum);
  report.Require();
  CNuAssociationPart all;
  double step = 1.0;
  for (int round = 0; round < 20 && step > 1e-12; ++round) {
    all = CNuAssociationPart(parts[0], feature, kMiddle);
    all.Join(CNuAssociationPart(parts[1], feature, kMiddle));
    step = all.Step(&feature);
  }
  EXPECT_LE(step, 1e-12);
  EXPECT_NEAR(all.GetSumSquares(), report.GetSumSquares(), 1e-11);
  EXPECT_NEAR(all.GetRootMeanSquare(), report.GetRootMeanSquare(), 1e-9);
  Shape a, b;
  Read(optimum, a);
  Read(feature, b);
  for (std::size_t k = 3; k < a.Lengths().size(); ++k) EXPECT_NEAR(a.Lengths()[k], b.Lengths()[k], 1e-9);
  for (std::size_t k = 0; k < a.Ratios().size(); ++k) EXPECT_NEAR(a.Ratios()[k], b.Ratios()[k], 1e-9);
}

TEST(AssociationPart, TakesWeightsAndFixedParameters) {
  Random random(44);
  const auto expect = [](const CNuPointArray& points, auto feature, const auto& fix, const char* what) {
    CNuAssociation whole(points);
    const CNuPointArray first = points.SubArray(0, 299), second = points.SubArray(300, points.GetSize() - 1);
    CNuAssociation parts[] = {CNuAssociation(first), CNuAssociation(second)};
    for (CNuAssociation* association : {&whole, &parts[0], &parts[1]}) fix(*association);
    ExpectWholeWithOptions(whole, parts, feature, what);
  };
  const CNuVector up(0.001, 0.0, 1.0);
  expect(
      CylinderCloud(random, 600, 5.0, 8.0, 330.0, 0.01), CNuCylSurf(5.1),
      [&](CNuAssociation& a) { a.FixDirection(up), a.FixRadius(5.002); }, "cylinder");
  expect(
      ConeCloud(random, 600, 20.0, 4.0, 8.0, 300.0, 0.01), CNuConSurf(20.3),
      [](CNuAssociation& a) { a.FixSemiAngle(20.1); }, "cone");
  expect(
      TorusCloud(random, 600, 4.0, 1.0, 240.0, 360.0, 0.01), CNuTorSurf(4.1, 1.1),
      [](CNuAssociation& a) { a.FixMajorRadius(4.01); }, "torus");
  expect(
      PlaneCloud(random, 600, 20.0, 8.0, 0.01), CNuPlane(),
      [](CNuAssociation& a) {
        a.FixPoint({1.0, 2.0, 0.01});
      },
      "plane");
}

// The zone of a torus in parts is the tube of the whole.
TEST(AssociationPart, FindsTheTubeOfTheWhole) {
  Random random(45);
  const CNuPointArray points = TorusCloud(random, 800, 4.0, 1.0, 240.0, 360.0, 0.01);
  CNuTorSurf whole(2.0, 1.0), ring(4.05, 1.0);
  whole.FitMin(points, 0.0, 1000);
  CNuAssociationCandidates candidates;
  double half = 0.0;
  for (int round = 0; round < 20; ++round) {
    const CNuAssociationPart joined = Joined(points, ring);
    if (round > 0 && joined.GetLargestDeviation() <= 1e-13) break;
    candidates.Add(joined);
    half = candidates.Fit(NuMinimumZone, &ring);
  }
  EXPECT_NEAR(half, whole.GetMinorRadius(), 1e-12);
  EXPECT_EQ(ring.GetMinorRadius(), half);
}

// Points on both nappes, of which some parts have only one: the optimum is that of the whole.
TEST(AssociationPart, CountsBothNappes) {
  Random random(46);
  CNuPointArray points(600);
  for (int i = 0; i < 600; ++i) {
    const double angle = 0.7 * i, z = random.Uniform(0.5, 4.0) * (i < 300 ? 1.0 : -1.0);
    const double r = 0.5 * std::fabs(z) + 1e-3 * random.Bell();
    points.Add({r * std::cos(angle), r * std::sin(angle), z});
  }
  CNuConSurf whole(30.0), cone(27.0, CNuPoint(0.01, 0.0, -0.02), CNuVector(0.001, 0.002, 1.0));
  double form, sumSquares, zone;
  whole.Fit(points, &form, &sumSquares, 100);
  double step = 1.0;
  for (int round = 0; round < 12 && step > 1e-12; ++round) step = Joined(points, cone).Step(&cone);
  EXPECT_LE(step, 1e-12);
  EXPECT_NEAR(Joined(points, cone).GetSumSquares(), sumSquares, 1e-13);
  EXPECT_NEAR(cone.GetSemiAngle(), whole.GetSemiAngle(), 1e-8);

  whole.FitMinZone(points, &zone, 0.0, 100);
  CNuAssociationCandidates candidates;
  double half = 0.0, range = 1.0;
  for (int round = 0; round < 12 && range > 2.0 * half + 1e-12; ++round) {
    candidates.Add(Joined(points, cone));
    half = candidates.Fit(NuMinimumZone, &cone);
    const CNuAssociationPart joined = Joined(points, cone);
    range = joined.GetLargestDeviation() - joined.GetSmallestDeviation();
  }
  EXPECT_NEAR(range, zone, 1e-11);
}

TEST(AssociationPart, RefusesWhatDoesNotFit) {
  Random random(43);
  const CNuPointArray points = CylinderCloud(random, 50, 5.0, 8.0, 330.0, 0.01);
  CNuCylSurf bore(5.0);
  CNuSphSurf ball(5.0);
  CNuAssociationPart part(points, bore, kMiddle);
  EXPECT_EQ(FailureOf([&] { part.Join(CNuAssociationPart(points, CNuCylSurf(4.0), kMiddle)); }),
            "operation 41 association|CNuAssociationPart::Join [0,0]");
  EXPECT_EQ(part.GetNumberPoints(), 50U);
  CNuAssociation inside(points);
  inside.RestrictToMaterialSide(NuInside);
  EXPECT_EQ(FailureOf([&] { CNuAssociationPart(inside, bore, kMiddle); }),
            "operation 45 association|CNuAssociationPart [0,0]");
  EXPECT_EQ(FailureOf([&] { part.Step(&ball); }), "operation 45 association|CNuAssociationPart::Step [0,0]");
  EXPECT_EQ(FailureOf([&] { CNuAssociationPart().Step(&bore); }),
            "operation 45 association|CNuAssociationPart::Step [0,0]");
  const unsigned char bytes[24] = {};
  EXPECT_EQ(FailureOf([&] { CNuAssociationPart::FromBytes(bytes, 24); }),
            "operation 41 association|CNuAssociationPart::FromBytes [0,0]");
  CNuAssociationCandidates candidates;
  EXPECT_EQ(FailureOf([&] { candidates.Fit(NuMinimumZone, &bore); }),
            "operation 46 association|CNuAssociationCandidates::Fit [0,0]");
  EXPECT_EQ(FailureOf([&] { candidates.Fit(NuLeastSquares, &bore); }),
            "operation 45 association|CNuAssociationCandidates::Fit [0,0]");
}

}  // namespace
