#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "nu/foundation/constants.h"
#include "nu/foundation/interval.h"
#include "nu/foundation/numeric_helpers.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

TEST(Helpers, ConstantsAndComparisons) {
  EXPECT_TRUE(Nu_PI == std::acos(-1.0) && Nu_2PI == 2 * Nu_PI && Nu_E == std::exp(1.0) && Nu_SQRT2 == std::sqrt(2.0));
  EXPECT_EQ(NuMajorVersionLabel * 100 + NuMinorVersionLabel * 10 + NuBuildVersionLabel, 300u);
  double a[] = {1.0, 2.0}, b[] = {1.0, 2.5};
  EXPECT_TRUE(NuIsEqual(2, 2, a, b, 0.5 + kEps) && NuIsEqual(0, 0, a, b, 0.0) && !NuIsEqual(2, 2, a, b, 0.5));
  EXPECT_FALSE(NuIsEqual(2, 1, a, b, 9.0) || NuIsEqual(-1, -1, a, b, 9.0) || NuIsEqual(0, 0, nullptr, b, 9.0) ||
               NuIsEqual(0, 0, a, nullptr, 9.0));
  const double nan[] = {1.0, kNaN}, inf[] = {1.0, kInf};
  EXPECT_FALSE(NuIsEqual(2, 2, nan, nan, 9.0) || NuIsEqual(2, 2, a, inf, kInf) || NuIsTriangle(3, 4, kNaN, 0));
  EXPECT_TRUE(NuIsTriangle(3, 4, 5, 1.9) && NuIsTriangle(4, 5, 3, 1.9) && NuIsTriangle(5, 3, 4, 1.9));
  EXPECT_FALSE(NuIsTriangle(3, 4, 5, 2.0) || NuIsTriangle(2, 1, 1, 0) || NuIsTriangle(1, 2, 1, 0));
}

TEST(Helpers, HypotenusesKeepTheirAccuracyAtEverySize) {
  for (const double scale : {1e-299, 1e-160, 1.0, 1e160, 1e307}) {
    EXPECT_NEAR(NuPythag(-3 * scale, 4 * scale) / scale, 5, 10 * kEps);
    EXPECT_NEAR(NuPythag(scale, scale) / scale, Nu_SQRT2, 2 * kEps);
    for (int i = 0; i < 3; ++i) {
      const double side[] = {2 * scale, -3 * scale, 6 * scale};
      EXPECT_NEAR(NuPythag(side[i], side[(i + 1) % 3], side[(i + 2) % 3]) / scale, 7, 14 * kEps);
    }
  }
  EXPECT_EQ(NuPythag(0.9e-300, 0.9e-300) + NuPythag(0.9e-300, 0.9e-300, 0.9e-300), 0.0);
  for (const double x : {0.0, 1e-301, 1.0, kInf}) {
    for (const double special : {kNaN, kInf}) {
      for (const double sum : {NuPythag(special, x), NuPythag(x, special), NuPythag(special, x, x),
                               NuPythag(x, special, x), NuPythag(x, x, special), NuPythag(x, special, special)}) {
        EXPECT_TRUE(std::isnan(special) ? std::isnan(sum) : sum == kInf) << x;
      }
    }
  }
}

double ReducedTurnByTurn(double x, double turn) {
  while (x < 0.0) x += turn;
  while (x >= turn) x -= turn;
  return x;
}

// Turns of 360 come out exactly one by one; those of Nu_2PI as in more digits, rounded once.
TEST(Helpers, AnglesAreReducedByWholeTurnsExactly) {
  std::mt19937_64 random(11);
  for (const double reach : {1e-18, 1.0, 400.0, 1e6}) {
    for (int i = 0; i < 300; ++i) {
      const double x = std::uniform_real_distribution<double>(-reach, reach)(random);
      ASSERT_EQ(NuAngleIn360Degree(x), ReducedTurnByTurn(x, 360.0)) << x;
      const long double rest = std::fmod(static_cast<long double>(x), static_cast<long double>(Nu_2PI));
      const double exact = static_cast<double>(rest < 0 ? rest + Nu_2PI : rest);
      ASSERT_NEAR(NuAngleIn2Pi(x), exact < Nu_2PI ? exact : 0.0, 4 * kEps) << x;
    }
  }
  for (const double zero : {0.0, -0.0, 360.0, 720.0, -360.0, 1e-301, -1e-301, 3.6e20}) {
    EXPECT_EQ(1.0 / NuAngleIn360Degree(zero), kInf) << zero;
  }
  // A loop over whole turns would not end here.
  for (const double huge : {1e18, -1e18, 1e300, -std::numeric_limits<double>::max()}) {
    EXPECT_TRUE(NuAngleIn360Degree(huge) >= 0.0 && NuAngleIn360Degree(huge) < 360.0) << huge;
    EXPECT_TRUE(NuAngleIn2Pi(huge) >= 0.0 && NuAngleIn2Pi(huge) < Nu_2PI) << huge;
  }
  for (const double x : {kNaN, kInf, -kInf})
    EXPECT_TRUE(std::isnan(NuAngleIn360Degree(x)) && std::isnan(NuAngleIn2Pi(x)));
}

TEST(Helpers, AngleOfCosineAndSine) {
  const double cases[][3] = {{0, 0, 0.75},        {0, 1, 0.25},          {0, -1, 0.75},          {-1, 0, 0.5},
                             {1, 0, 0},           {1, -1, 0.875},        {1, -1e-17, 0},         {1e200, 1e-200, 0},
                             {1e200, -1e-200, 0}, {-1e200, 1e-200, 0.5}, {-1e200, -1e-200, 0.5}, {1e-301, 5, 0.25},
                             {5, -1e-301, 0},     {-5, -1e-301, 0.5}};
  for (const auto& c : cases) EXPECT_NEAR(NuArcCosSin(c[0], c[1]), c[2] * Nu_2PI, kEps) << c[0] << " " << c[1];
  for (int i = 0; i < 720; ++i) {
    const double angle = i * Nu_PI / 360;
    EXPECT_NEAR(NuArcCosSin(7 * std::cos(angle), 7 * std::sin(angle)), angle, 4 * kEps * (1 + angle));
  }
  for (int i = -9; i <= 9; ++i) {
    double c = kNaN, s = kNaN;
    NuCosSin(i * Nu_PI / 4, &c, &s);
    EXPECT_TRUE(i % 2 != 0 || std::fabs(c) + std::fabs(s) == 1.0) << i;
    EXPECT_TRUE((i + 15) % 4 != 0 || c == s) << i;
    EXPECT_NEAR(c, std::cos(i * Nu_PI / 4), 2 * kEps);
    EXPECT_NEAR(s, std::sin(i * Nu_PI / 4), 2 * kEps);
  }
}

TEST(Helpers, InverseHyperbolicCosine) {
  EXPECT_EQ(nu::acosh(1.0), 0.0);
  for (const double y : {1e-6, 0.5, 3.0, 700.0})
    EXPECT_NEAR(std::cosh(nu::acosh(std::cosh(y))) / std::cosh(y), 1.0, 1e-13);
  for (const double x : {0.5, 1.0 - kEps, -kInf, kNaN}) {
    EXPECT_EQ(FailureOf([x] { nu::acosh(x); }), "operation 1 calculation|acosh [0,0]");
  }
}

TEST(Interval, IsClosedWhateverItsFlagsSay) {
  const CNuInterval open(0.0, 1.0, 5, 7), full;
  EXPECT_EQ(open.IsLeftOpen() * 10 + open.IsRightOpen(), 57);
  EXPECT_TRUE(open.IsIn(0.0) == 1 && open.IsIn(1.0) == 1 && open.IsIn(-1e-300) == 0 && open.IsIn(kNaN) == 0);
  const double overlaps[][3] = {{1, 2, 1}, {0.25, 0.5, 1}, {-1, 3, 1}, {2, 3, 0}, {-1, 0, 1}, {-kInf, kInf, 1}};
  for (const auto& c : overlaps) EXPECT_EQ(open.IsOverlapping(CNuInterval(c[0], c[1], 0, 0)), c[2]) << c[0];
  double lower = 9, upper = 0;
  full.GetBounds(&lower, &upper);
  EXPECT_TRUE(lower == 0.0 && upper == Nu_2PI && full.IsLeftOpen() + full.IsRightOpen() == 0 && full.GetType() == 1);
  for (const double bound : {1.0, 0.5, -kInf, kNaN}) {
    EXPECT_EQ(FailureOf([bound] { CNuInterval(1.0, bound, 0, 0); }), "construction 11 |CNuInterval [0,0]");
  }
}

}  // namespace
