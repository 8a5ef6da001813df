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

}  // namespace
