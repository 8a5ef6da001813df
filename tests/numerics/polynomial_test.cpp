#include "nu/numerics/polynomial.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

#include "nu/foundation/tolerances.h"
#include "support/failures.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

CNuPolynomial Poly(std::initializer_list<double> coefficients) {
  CNuPolynomial p(static_cast<int>(coefficients.size()) - 1);
  int i = 0;
  for (double c : coefficients) p[i++] = c;
  return p;
}

CNuPolynomial Counted(int n) {
  CNuPolynomial p(n);
  for (int i = 0; i <= n; ++i) p[i] = i + 1.0;
  return p;
}

void ExpectCoefficients(const CNuPolynomial& p, std::initializer_list<double> expected) {
  ASSERT_EQ(p.GetDegree() + 1, static_cast<int>(expected.size()));
  int i = 0;
  for (double e : expected) EXPECT_EQ(p[i++], e) << "coefficient " << i - 1;
}

TEST(Polynomial, CopiesAndMovesKeepTheValueAcrossTheSmallSize) {
  for (int from : {0, 1, 4, 5, 9}) {
    for (int to : {0, 1, 4, 5, 9}) {
      const CNuPolynomial source = Counted(from);
      CNuPolynomial target = Counted(to);
      if (to > 0) target.FitMinMax(1.0, 2.0, [](double x) { return x; });
      target = source;
      EXPECT_TRUE(target.IsEqual(source, 1e-300)) << from << " to " << to;
      EXPECT_EQ(target.ValueAt(1.5), source.ValueAt(1.5));
      target[0] = -7.0;
      EXPECT_EQ(source[0], 1.0);
      CNuPolynomial taken(Counted(to));
      taken = CNuPolynomial(source);
      CNuPolynomial constructed(std::move(taken));
      EXPECT_TRUE(constructed.IsEqual(source, 1e-300));
      EXPECT_EQ(constructed.GetType(), 7);
      ExpectCoefficients(taken, {0.0});  // NOLINT(bugprone-use-after-move): it is the zero polynomial
      constructed = *&constructed;
      EXPECT_EQ(constructed.GetDegree(), from);
    }
  }
}

TEST(Polynomial, SumsAndProductsAreSimplified) {
  ExpectCoefficients(Poly({-1, 0, 1}) + Poly({1, 0, -1}), {0});
  ExpectCoefficients(Poly({1, 1}) * Poly({1, -1}), {1, 0, -1});
  ExpectCoefficients(Poly({1, 2, 3}) - Poly({0, 5}), {1, -3, 3});
  ExpectCoefficients(Poly({0, 5}) - Poly({1, 2, 3}), {-1, 3, -3});
  ExpectCoefficients(Poly({1, 2, 3}) - Poly({0, 2, 3}), {1});
  ExpectCoefficients(Poly({0, 1e-200}) * Poly({0, 1e-200}), {0});
  CNuPolynomial p = Poly({0, 2, 1e-301, -1e-301});
  p.Simplify();
  ExpectCoefficients(p, {0, 2});
}

TEST(Polynomial, NumbersAreNotSimplified) {
  CNuPolynomial p = Poly({1, 2, 0});
  ExpectCoefficients(p + 3.0, {4, 2, 0});
  ExpectCoefficients(p - 3.0, {-2, 2, 0});
  ExpectCoefficients(3.0 * p, {3, 6, 0});
  ExpectCoefficients(p * 0.0, {0, 0, 0});
  ExpectCoefficients(p / 2.0, {0.5, 1, 0});
  ExpectCoefficients(-p, {-1, -2, 0});
  ((p += 4.0) *= 2.0) -= 1.0;
  ExpectCoefficients(p /= 4.0, {2.25, 1, 0});
}

TEST(Polynomial, ValuesAndDerivatives) {
  EXPECT_EQ(Poly({1, 2, 3}).ValueAt(2.0), 17.0);
  EXPECT_EQ(Poly({1, 2, 3}).DerivativeAt(2.0), 14.0);
  EXPECT_EQ(Poly({5}).ValueAt(3.0), 5.0);
  EXPECT_EQ(Poly({5}).DerivativeAt(3.0), 0.0);
  EXPECT_TRUE(std::isnan(Poly({1, 2, 3}).ValueAt(kNan)));
  EXPECT_EQ(Poly({1, 2, 3}).ValueAt(-kInfinity), kInfinity);
}

TEST(Polynomial, Comparisons) {
  EXPECT_TRUE(Poly({1e-9, -1e-9}).IsZero(2e-9));
  EXPECT_FALSE(Poly({1e-9, -1e-9}).IsZero(1e-9));
  EXPECT_FALSE(Poly({0, kNan}).IsZero(1.0));
  EXPECT_TRUE(Poly({1, 2}).IsEqual(Poly({1, 2.25}), 0.26));
  EXPECT_FALSE(Poly({1, 2}).IsEqual(Poly({1, 2.25}), 0.25));
  EXPECT_FALSE(Poly({1, 2}).IsEqual(Poly({1, 2, 0}), 0.25));
}

TEST(Polynomial, Failures) {
  CNuPolynomial p = Poly({1, 2, 3});
  const CNuPolynomial& q = p;
  const struct {
    std::string failure, expected;
  } cases[] = {
      {FailureOf([] { CNuPolynomial(-1); }), "construction 2 degree|CNuPolynomial [0,0]"},
      {FailureOf([&] { (void)p[3]; }), "operation 3 element operator[]|CNuPolynomial [0,2]"},
      {FailureOf([&] { (void)q[-1]; }), "operation 3 element operator[]|CNuPolynomial [0,2]"},
      {FailureOf([&] { p * 1.1e300; }), "operation 7 operator*|CNuPolynomial [0,0]"},
      {FailureOf([&] { -kInfinity* p; }), "operation 7 operator*|CNuPolynomial [0,0]"},
      {FailureOf([&] { p *= 1.1e300; }), "operation 7 operator*=|CNuPolynomial [0,0]"},
      {FailureOf([&] { p / 0.0; }), "operation 6 operator/|CNuPolynomial [0,0]"},
      {FailureOf([&] { p /= 9e-301; }), "operation 6 operator/=|CNuPolynomial [0,0]"},
      {FailureOf([&] { (void)(p / 1e-300).IsEqual(p * 1e300, 1.0); }), "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.failure, c.expected);
  ExpectCoefficients(p, {1, 2, 3});
}

}  // namespace
