#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "nu/foundation/constants.h"
#include "nu/foundation/interval.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/foundation/tolerances.h"
#include "support/failures.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kEps = std::numeric_limits<double>::epsilon();

TEST(Helpers, ConstantsAndLabels) {
  EXPECT_EQ(Nu_PI, std::acos(-1.0));
  EXPECT_EQ(Nu_2PI, Nu_PI + Nu_PI);
  EXPECT_EQ(Nu_E, std::exp(1.0));
  EXPECT_EQ(Nu_SQRT2, std::sqrt(2.0));
  EXPECT_EQ(NuMajorVersionLabel * 100 + NuMinorVersionLabel * 10 + NuBuildVersionLabel, 300u);
}

TEST(Helpers, EqualityIsStrictAndRefusesBadArrays) {
  double a[] = {1.0, 2.0};
  double b[] = {1.0, 2.5};
  EXPECT_FALSE(NuIsEqual(2, 2, a, b, 0.5));
  EXPECT_TRUE(NuIsEqual(2, 2, a, b, 0.5 + kEps));
  EXPECT_TRUE(NuIsEqual(0, 0, a, b, 0.0));
  EXPECT_FALSE(NuIsEqual(2, 1, a, b, 9.0) || NuIsEqual(-1, -1, a, b, 9.0) || NuIsEqual(0, 0, nullptr, b, 9.0) ||
               NuIsEqual(0, 0, a, nullptr, 9.0));
}

TEST(Helpers, HypotenusesKeepTheirAccuracyAtEverySize) {
  const auto expectNear = [](double value, double expected) {
    EXPECT_NEAR(value / expected, 1.0, 2 * kEps) << expected;
  };
  for (const double scale : {1e-299, 1e-160, 1.0, 1e160, 1e307}) {
    expectNear(NuPythag(-3 * scale, 4 * scale), 5 * scale);
    expectNear(NuPythag(scale, scale), Nu_SQRT2 * scale);
    for (const int first : {0, 1, 2}) {
      const double side[] = {2, -3, 6};
      expectNear(NuPythag(side[first] * scale, side[(first + 1) % 3] * scale, side[(first + 2) % 3] * scale),
                 7 * scale);
    }
  }
  EXPECT_EQ(NuPythag(0.9e-300, 0.9e-300), 0.0);
  EXPECT_EQ(NuPythag(0.9e-300, 0.9e-300, 0.9e-300), 0.0);
  for (const double other : {0.0, 1e-301, 1.0, kInf}) {
    for (const double special : {kNaN, kInf}) {
      const double sums[] = {NuPythag(special, other),        NuPythag(other, special),
                             NuPythag(special, other, other), NuPythag(other, special, other),
                             NuPythag(other, other, special), NuPythag(other, special, special)};
      for (const double sum : sums) EXPECT_TRUE(std::isnan(special) ? std::isnan(sum) : sum == kInf) << other;
    }
  }
}

double ReducedTurnByTurn(double x, double turn) {
  while (x < 0.0) x += turn;
  while (x >= turn) x -= turn;
  return x;
}

TEST(Helpers, AnglesAreReducedAsByWholeTurns) {
  std::mt19937_64 random(11);
  for (const double reach : {1e-18, 1.0, 400.0, 1e6}) {
    std::uniform_real_distribution<double> uniform(-reach, reach);
    for (int i = 0; i < 300; ++i) {
      const double x = uniform(random);
      ASSERT_EQ(NuAngleIn360Degree(x), ReducedTurnByTurn(x, 360.0)) << x;
      ASSERT_EQ(NuAngleIn2Pi(x), ReducedTurnByTurn(x, Nu_2PI)) << x;
    }
  }
  EXPECT_EQ(NuAngleIn360Degree(-30.0), 330.0);
  EXPECT_EQ(NuAngleIn2Pi(-Nu_PI / 2), 1.5 * Nu_PI);
  for (const double zero : {0.0, -0.0, 360.0, 720.0, -360.0, 1e-301, -1e-301, 3.6e20}) {
    EXPECT_EQ(NuAngleIn360Degree(zero), 0.0);
    EXPECT_FALSE(std::signbit(NuAngleIn360Degree(zero)));
  }
  // A loop over whole turns would not end here.
  for (const double huge : {1e18, -1e18, 1e300, -std::numeric_limits<double>::max()}) {
    EXPECT_TRUE(NuAngleIn360Degree(huge) >= 0.0 && NuAngleIn360Degree(huge) < 360.0) << huge;
    EXPECT_TRUE(NuAngleIn2Pi(huge) >= 0.0 && NuAngleIn2Pi(huge) < Nu_2PI) << huge;
  }
  for (const double bad : {kNaN, kInf, -kInf}) {
    EXPECT_TRUE(std::isnan(NuAngleIn360Degree(bad)) && std::isnan(NuAngleIn2Pi(bad)));
  }
}

TEST(Helpers, AngleOfCosineAndSine) {
  const struct {
    double c, s, turns;
  } cases[] = {{0, 0, 0.75},    {0, 1, 0.25},        {0, -1, 0.75},         {-1, 0, 0.5},           {1, 0, 0},
               {1, -1, 0.875},  {1, 1, 0.125},       {-1, 1, 0.375},        {-1, -1, 0.625},        {1e200, 1e-200, 0},
               {1, -1e-17, 0},  {1e200, -1e-200, 0}, {-1e200, 1e-200, 0.5}, {-1e200, -1e-200, 0.5}, {1e-301, 5, 0.25},
               {5, -1e-301, 0}, {-5, -1e-301, 0.5},  {1e-250, 1e250, 0.25}};
  for (const auto& c : cases) EXPECT_NEAR(NuArcCosSin(c.c, c.s), c.turns * Nu_2PI, kEps) << c.c << " " << c.s;
  for (int i = 0; i < 720; ++i) {
    const double angle = i * Nu_PI / 360;
    EXPECT_NEAR(NuArcCosSin(7 * std::cos(angle), 7 * std::sin(angle)), angle, 4 * kEps * (1 + angle));
  }
  EXPECT_TRUE(std::isnan(NuArcCosSin(kNaN, 1.0)) && std::isnan(NuArcCosSin(1.0, kNaN)));
}

TEST(Helpers, CosineAndSineSnap) {
  for (int i = -9; i <= 9; ++i) {
    double c = kNaN, s = kNaN;
    NuCosSin(i * Nu_PI / 4, &c, &s);
    EXPECT_TRUE(i % 2 != 0 || std::fabs(c) + std::fabs(s) == 1.0) << i;
    EXPECT_TRUE((i + 15) % 4 != 0 || c == s) << i;
    EXPECT_NEAR(c, std::cos(i * Nu_PI / 4), 2 * kEps);
    EXPECT_NEAR(s, std::sin(i * Nu_PI / 4), 2 * kEps);
  }
  double c = 0, s = 0;
  NuCosSin(kInf, &c, &s);
  EXPECT_TRUE(std::isnan(c) && std::isnan(s));
}

TEST(Helpers, InverseHyperbolicCosine) {
  EXPECT_EQ(nu::acosh(1.0), 0.0);
  for (const double y : {1e-6, 0.5, 3.0, 40.0, 700.0}) {
    EXPECT_NEAR(std::cosh(nu::acosh(std::cosh(y))), std::cosh(y), 1e3 * kEps * std::cosh(y)) << y;
  }
  for (const double x : {0.5, 1.0 - kEps, -kInf, kNaN}) {
    EXPECT_EQ(FailureOf([x] { nu::acosh(x); }), "operation 1 calculation|acosh [0,0]");
  }
}

TEST(Helpers, TrianglesHaveNoStraightCorner) {
  double side[] = {3, 4, 5};
  for (int i = 0; i < 3; ++i) {
    const double a = side[i], b = side[(i + 1) % 3], c = side[(i + 2) % 3];
    EXPECT_TRUE(NuIsTriangle(a, b, c, 1.9));
    EXPECT_FALSE(NuIsTriangle(a, b, c, 2.0));
    EXPECT_FALSE(NuIsTriangle(a + b, a, b, 0.0) || NuIsTriangle(a, a + b, b, 0.0) || NuIsTriangle(a, b, a + b, 0.0));
  }
}

TEST(Interval, IsClosedWhateverItsFlagsSay) {
  const CNuInterval open(0.0, 1.0, 5, 7);
  EXPECT_EQ(open.IsLeftOpen() * 10 + open.IsRightOpen(), 57);
  EXPECT_TRUE(open.IsIn(0.0) == 1 && open.IsIn(1.0) == 1 && open.IsIn(-1e-300) == 0 && open.IsIn(kNaN) == 0);
  const struct {
    double lower, upper;
    int overlapping;
  } cases[] = {{1, 2, 1}, {0.25, 0.5, 1}, {-1, 3, 1}, {2, 3, 0}, {-1, 0, 1}, {-kInf, kInf, 1}};
  for (const auto& c : cases) EXPECT_EQ(open.IsOverlapping(CNuInterval(c.lower, c.upper, 0, 0)), c.overlapping);
  double lower = 0, upper = 0;
  const CNuInterval full;
  full.GetBounds(&lower, &upper);
  EXPECT_TRUE(lower == 0.0 && upper == Nu_2PI && full.IsLeftOpen() == 0 && full.IsRightOpen() == 0);
  EXPECT_EQ(full.GetType(), 1);
  for (const double bound : {1.0, 0.5, -kInf, kNaN}) {
    EXPECT_EQ(FailureOf([bound] { CNuInterval(1.0, bound, 0, 0); }), "construction 11 |CNuInterval [0,0]");
  }
}

}  // namespace
