#include "nu/association/association.h"

#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "support/failures.h"
#include "support/fitted.h"

// An association against the plain fits, and what its report says of them.
namespace {

using namespace nu::test;

TEST(Criteria, HaveTheLettersOfTheStandard) {
  const char* const letters[] = {"G", "C", "N", "X", ""};
  for (int i = 0; i < 5; ++i) EXPECT_STREQ(NuCriterionLetter(static_cast<ENuCriterion>(i)), letters[i]);
  EXPECT_STREQ(NuCriterionName(NuMaximumInscribed), "maximum inscribed");
}

// x, y, z of each point, every `stride` numbers.
std::vector<double> BlockOf(const CNuPointArray& points, int stride) {
  std::vector<double> block(static_cast<std::size_t>(stride) * points.GetSize(), kNaN);
  for (int i = 0; i < points.GetSize(); ++i) {
    const double xyz[] = {points[i].x(), points[i].y(), points[i].z()};
    for (int k = 0; k < 3; ++k) block[i * stride + k] = xyz[k];
  }
  return block;
}

// To the bit, from an array and from a block, whatever the report holds.
TEST(Association, WithoutOptionsIsThePlainFit) {
  Random random(41);
  for (const AnyFit& fit : kAllFits) {
    if (fit.associate == nullptr) continue;
    for (const int n : {30, 300}) {
      SCOPED_TRACE(fit.Name());
      const CNuPointArray points = RandomMotion(random, 50.0)(fit.points(random, n));
      const Fitted plain = FitOf(fit, points, NuGetLengthTol());
      const std::vector<double> block = BlockOf(points, 5);
      CNuAssociation associations[] = {CNuAssociation(points), CNuAssociation(block.data(), n, 5)};
      for (CNuAssociation& association : associations) {
        for (const int details : {NuDetailNone, NuDetailForm, NuDetailAll}) {
          association.SetDetails(details);
          Fitted found;
          const CNuAssociationReport report = fit.associate(association, NuGetLengthTol(), 1000, found);
          EXPECT_EQ(report.GetEnd(), NuConverged);
          EXPECT_EQ(report.GetCause(), 0);
          EXPECT_TRUE(static_cast<const Shape&>(plain) == found);
          if (details == NuDetailNone) continue;
          if (plain.form >= 0.0) {
            EXPECT_EQ(report.GetForm(), plain.form);
          }
          if (plain.sumsq >= 0.0) {
            EXPECT_EQ(report.GetSumSquares(), plain.sumsq);
          }
        }
      }
    }
  }
}

// T, P, V and Q are those of the deviations, which lie on the promised side of every feature.
TEST(Association, FormIsThatOfTheDeviations) {
  Random random(42);
  constexpr int n = 200;
  for (const AnyFit& fit : kAllFits) {
    if (fit.associate == nullptr) continue;
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = RandomMotion(random, 50.0)(fit.points(random, n));
    CNuAssociation association(points);
    association.SetDetails(NuDetailDeviations);
    Fitted found;
    const CNuAssociationReport report = fit.associate(association, NuGetLengthTol(), 1000, found);
    const CNuDoubleArray& d = report.GetDeviations();
    ASSERT_EQ(d.GetSize(), n);
    double squares = 0.0;
    for (int i = 0; i < n; ++i) squares += d[i] * d[i];
    const double rounding = 1e-13 * 50.0;
    EXPECT_EQ(d[report.GetHighestPoint()], d.Max());
    EXPECT_EQ(d[report.GetLowestPoint()], d.Min());
    EXPECT_NEAR(report.GetPeak(), std::max(0.0, d.Max()), rounding);
    EXPECT_NEAR(report.GetRootMeanSquare(), std::sqrt(squares / n), rounding);
    EXPECT_NEAR(report.GetSumSquares(), squares, n * 0.1 * rounding);
    const bool isDistance = fit.Is("CNuTorSurf", kCircumscribed) || std::string(fit.className) == "CNuLine";
    EXPECT_NEAR(report.GetForm(), isDistance ? 2.0 * report.GetPeak() : report.GetPeak() + report.GetValley(),
                rounding);
    if (fit.criterion == kZone && !isDistance) {
      EXPECT_NEAR(report.GetPeak(), report.GetValley(), rounding);
    }
    if (fit.criterion == kCircumscribed && !isDistance) {
      EXPECT_LE(report.GetPeak(), rounding);
    }
    if (fit.criterion == kInscribed) {
      EXPECT_LE(report.GetValley(), rounding);
    }
  }
}

constexpr double kTol = 1e-12;

// How far the shapes are apart: lengths by their unit, directions as they are.
double Difference(const Shape& a, const Shape& b, double unit) {
  double most = 0.0;
  for (std::size_t k = 0; k < a.Lengths().size(); ++k)
    most = std::max(most, std::fabs(a.Lengths()[k] - b.Lengths()[k]) / unit);
  for (std::size_t k = 0; k < a.Ratios().size(); ++k) most = std::max(most, std::fabs(a.Ratios()[k] - b.Ratios()[k]));
  return most;
}

TEST(Association, WeightsAreRepeatedPoints) {
  Random random(43);
  for (const AnyFit& fit : kAllFits) {
    if (fit.associate == nullptr || fit.criterion != kLeastSquares) continue;
    SCOPED_TRACE(fit.Name());
    const CNuPointArray points = fit.points(random, 40);
    CNuPointArray repeated(100);
    CNuDoubleArray weights(40);
    for (int i = 0; i < 40; ++i) {
      weights.Add(i % 4);
      for (int k = 0; k < i % 4; ++k) repeated.Add(points[i]);
    }
    CNuAssociation weighted(points), plain(repeated);
    weighted.SetWeights(weights);
    Fitted a, b;
    const CNuAssociationReport report = fit.associate(weighted, kTol, 1000, a);
    const CNuAssociationReport other = fit.associate(plain, kTol, 1000, b);
    ASSERT_EQ(report.GetEnd(), NuConverged);
    // The last step of a sphere, of a squared length below NuGetTol(), is not applied.
    EXPECT_LE(Difference(a, b, 1.0), std::sqrt(NuGetTol()));
    EXPECT_NEAR(report.GetSumSquares(), other.GetSumSquares(), 1e-12);
  }
}

// What of a feature can be fixed, at the values that it has.
void Fix(const AnyFit& fit, const Fitted& f, unsigned which, CNuAssociation* association) {
  const std::string name = fit.className;
  const bool isTorus = name == "CNuTorSurf";
  const bool isRound = name == "CNuCircle" || name == "CNuSphSurf" || name == "CNuCylSurf";
  const bool isConic = name == "CNuEllipse" || name == "CNuHyperbola" || name == "CNuParabola";
  if (which == 0 && name != "CNuSphSurf") association->FixDirection(isConic ? f.normal : f.axis);
  if (which == 1) association->FixPoint(f.place);
  if (which == 2 && isRound) association->FixRadius(f.radius);
  if (which == 2 && isTorus) association->FixMajorRadius(f.radius);
  if (which == 2 && name == "CNuConSurf") association->FixSemiAngle(f.angle);
}

// A parameter that is fixed at the optimum leaves the optimum where it is; fixed elsewhere it costs.
TEST(Association, FixedParametersStay) {
  Random random(44);
  for (const AnyFit& fit : kAllFits) {
    if (fit.associate == nullptr) continue;
    const CNuPointArray points = RandomMotion(random, 20.0)(fit.points(random, 60));
    CNuAssociation free(points);
    Fitted optimum;
    const CNuAssociationReport best = fit.associate(free, kTol, 1000, optimum);
    for (const unsigned which : {0u, 1u, 2u}) {
      SCOPED_TRACE(fit.Name() + " " + std::to_string(which));
      CNuAssociation association(points);
      Fix(fit, optimum, which, &association);
      Fitted found;
      const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
      EXPECT_EQ(report.GetEnd(), NuConverged);
      if (report.GetEnd() != NuConverged) continue;
      EXPECT_NEAR(found.radius, optimum.radius, 1e-6);
      if (fit.criterion == kLeastSquares) {
        EXPECT_NEAR(report.GetSumSquares(), best.GetSumSquares(), 1e-9);
      }
      if (fit.criterion == kZone) {
        EXPECT_NEAR(report.GetForm(), best.GetForm(), 1e-9);
      }
    }
  }
}

TEST(Association, MaterialStaysOnItsSide) {
  Random random(45);
  for (const AnyFit& fit : kAllFits) {
    const bool hasSide = fit.criterion == kLeastSquares || fit.criterion == kZone;
    if (fit.associate == nullptr || !hasSide) continue;
    const bool isLine = std::string(fit.className) == "CNuLine";
    const CNuPointArray points = isLine ? CircleCloud(random, 60, 50.0, 20.0, 0.01) : fit.points(random, 60);
    for (const ENuMaterialSide side : {NuOutside, NuInside}) {
      SCOPED_TRACE(fit.Name() + " " + std::to_string(side));
      CNuAssociation association(points);
      association.SetDetails(NuDetailDeviations);
      association.RestrictToMaterialSide(side);
      Fitted found;
      const CNuAssociationReport report = fit.associate(association, kTol, 1000, found);
      EXPECT_EQ(report.GetEnd(), NuConverged);
      if (report.GetEnd() != NuConverged) continue;
      const double beyond = side == NuOutside ? report.GetValley() : report.GetPeak();
      EXPECT_LE(beyond, 1e-12);
      EXPECT_NEAR(side == NuOutside ? report.GetDeviations().Min() : report.GetDeviations().Max(), 0.0, 1e-12);
    }
  }
}

}  // namespace
