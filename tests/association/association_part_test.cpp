#include "nu/association/association_part.h"

#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

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

// Parts with weights and fixed parameters, at the feature that is given, lead to the fit of their association.
template<class Feature>
void ExpectSame(const CNuPointArray& points, const std::function<void(CNuAssociation*)>& fix, Feature feature) {
  const int n = points.GetSize();
  CNuDoubleArray weights(n);
  for (int i = 0; i < n; ++i) weights.Add(i % 3);
  CNuAssociation all(points);
  all.SetWeights(weights);
  all.SetTolerance(0.0);
  fix(&all);
  Feature whole = feature;
  const CNuAssociationReport report = all.Fit(NuLeastSquares, &whole);
  report.Require();
  CNuAssociationPart joined;
  double step = 1.0;
  for (int round = 0; round < 12 && step > 1e-12; ++round) {
    joined = CNuAssociationPart();
    for (int k = 0; k < kParts; ++k) {
      CNuPointArray some(n);
      CNuDoubleArray theirs(n);
      for (int i = n * k / kParts; i < n * (k + 1) / kParts; ++i) some.Add(points[i]), theirs.Add(weights[i]);
      CNuAssociation part(some);
      part.SetWeights(theirs);
      fix(&part);
      joined.Join(CNuAssociationPart(part, feature, kMiddle));
    }
    step = joined.Step(&feature);
  }
  EXPECT_LE(step, 1e-12);
  EXPECT_NEAR(joined.GetSumSquares(), report.GetSumSquares(), 1e-11 * report.GetSumSquares());
  EXPECT_NEAR(joined.GetRootMeanSquare(), report.GetRootMeanSquare(), 1e-9 * report.GetRootMeanSquare());
}

TEST(AssociationPart, KeepsWeightsAndFixedParameters) {
  Random random(42);
  const CNuPointArray tube = CylinderCloud(random, 900, 5.0, 8.0, 330.0, 0.01);
  const CNuCylSurf bore(5.0);
  ExpectSame(
      tube, [](CNuAssociation*) {}, bore);
  ExpectSame(
      tube, [](CNuAssociation* a) { a->FixRadius(5.02); }, bore);
  ExpectSame(
      tube, [](CNuAssociation* a) { a->FixDirection(CNuVector(0.01, 0.0, 1.0)); }, bore);
  ExpectSame(
      tube, [](CNuAssociation* a) { a->FixPoint(CNuPoint(0.01, 0.0, 9.0)); }, bore);
  const CNuPointArray funnel = ConeCloud(random, 900, 20.0, 4.0, 8.0, 300.0, 0.01);
  CNuConSurf cone(20.0);
  ASSERT_TRUE(CNuAssociation(funnel).Fit(NuLeastSquares, &cone).HasConverged());
  const CNuPoint apex = cone.GetApex();
  ExpectSame(
      funnel, [](CNuAssociation* a) { a->FixSemiAngle(20.1); }, cone);
  ExpectSame(
      funnel, [&](CNuAssociation* a) { a->FixPoint(CNuPoint(apex.x() + 0.01, apex.y(), apex.z())); }, cone);
  const CNuPointArray face = PlaneCloud(random, 900, 10.0, 6.0, 0.01);
  ExpectSame(
      face, [](CNuAssociation* a) { a->FixPoint(CNuPoint(1.0, 2.0, 0.02)); }, CNuPlane());

  CNuAssociation refused(face);
  refused.FixRadius(1.0);
  EXPECT_EQ(FailureOf([&] { CNuAssociationPart(refused, CNuPlane(), kMiddle); }),
            "operation 45 association|CNuAssociationPart [0,0]");
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
