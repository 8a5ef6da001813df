#include "nu/numerics/chebyshev.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <cstring>
#include <stdexcept>
#include <string>

#include "nu/foundation/constants.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

using Function = double (*)(double);
using Expression = CNuChebyshevPolynomialExpression;

Expression FittedTo(Function f, double a, double b, int degree) {
  Expression e(degree);
  e.FitMinMax(a, b, f);
  return e;
}

double Cube(double x) {
  return x * x * x;
}

double Inverse(double x) {
  return 1 / x;
}

CNuPolynomial Recursive(int n) {
  CNuPolynomial p(n == 0 ? 0 : 1);
  p[p.GetDegree()] = n < 2 ? 1.0 : 2.0;
  return n < 2 ? p : p * Recursive(n - 1) - Recursive(n - 2);
}

TEST(ChebyshevPolynomial, HasTheBitsOfTheRecursiveDefinition) {
  for (int n = 0; n <= 20; ++n) {
    const CNuPolynomial t = CNuChebyshevPolynomial(n).ToPolynomial();
    ASSERT_EQ(t.GetDegree(), n);
    EXPECT_EQ(std::memcmp(t.GetData(), Recursive(n).GetData(), sizeof(double) * (n + 1)), 0) << n;
  }
  const CNuPolynomial t60 = CNuChebyshevPolynomial(60).ToPolynomial();
  EXPECT_EQ(t60[2], -1800.0);
  EXPECT_EQ(t60[60], 0x1p59);
}

TEST(ChebyshevExpression, ReproducesPolynomials) {
  const CNuPolynomial cube = FittedTo(Cube, -1, 1, 3).ToPolynomial();
  for (int i = 0; i <= 3; ++i) EXPECT_NEAR(cube[i], i == 3 ? 1.0 : 0.0, i % 2 == 0 ? 0.0 : 1e-15);
  for (const int degree : {3, 4, 12}) {
    for (const double a : {-2.0, -0.5, 0.0}) {
      const Expression e = FittedTo(Cube, a, 2, degree);
      const CNuPolynomial p = e.ToPolynomial();
      for (int i = 0; i <= degree; ++i) EXPECT_NEAR(p[i], i == 3 ? 1.0 : 0.0, 4e-15 * std::pow(3.0, degree));
      for (const double x : {a, 0.3, 2.0}) {
        EXPECT_NEAR(e.ValueAt(x), Cube(x), 1e-14);
        EXPECT_NEAR(e.DerivativeAt(x), 3 * x * x, 1e-14 * degree * degree);
      }
    }
  }
}

// The least possible largest errors were found by exchange in extended precision. What truncation leaves is nearly
// c_(n+1) T_(n+1); where coefficients fall by r from one to the next, the minimax error is smaller by 1 + r. For entire
// functions r sinks with the degree, for others the nearest singularity fixes it.
TEST(ChebyshevExpression, IsNearlyMinimax) {
  const struct {
    Function f;
    double a, b;
    int degree;
    double minimax, factor;
  } cases[] = {
      {std::exp, -1, 1, 3, 5.52837e-3, 1.1},       {std::exp, -1, 1, 9, 5.5172464e-10, 1.1},
      {std::sin, -1, 1, 1, 3.9133069e-2, 1.01},    {std::sin, -1, 1, 8, 1.0498555e-8, 1.01},
      {std::sin, 0, Nu_2PI, 4, 1.0473084e-1, 1.1}, {std::sin, 0, Nu_2PI, 14, 1.145736e-9, 1.01},
      {std::exp, 0, 5, 11, 8.419471e-7, 1.1},      {Inverse, 1, 3, 4, 1.7182587e-3, 1.268},
      {Inverse, 1, 3, 20, 1.2132774e-12, 1.268},   {std::log, 1, 10, 20, 1.3453878e-7, 1.52},
      {std::sqrt, 1, 4, 1, 4.1666666e-2, 1.2},     {std::sqrt, 1, 4, 20, 8.972853e-13, 1.34},
  };
  for (const auto& c : cases) {
    const Expression e = FittedTo(c.f, c.a, c.b, c.degree);
    double largest = 0.0;
    for (int i = 0; i <= 4000; ++i) {
      const double x = c.a + (c.b - c.a) * i / 4000;
      largest = std::max(largest, std::fabs(c.f(x) - e.ValueAt(x)));
    }
    EXPECT_LE(largest, 1.001 * c.factor * c.minimax) << "case " << &c - cases;
    EXPECT_GE(largest, 0.999 * c.minimax) << "case " << &c - cases;
  }
}

TEST(ChebyshevExpression, GivesTheValuesOfItsPolynomialAndOfCopies) {
  const Expression e = FittedTo(std::exp, 0, 1, 5);
  CNuPolynomial p(5);
  p.FitMinMax(2, 3, std::exp);
  p.FitMinMax(0, 1, std::exp);
  EXPECT_TRUE(p.IsEqual(e.ToPolynomial(), 1e-300));
  // Required: a changed coefficient does not show in the values; hosts that edit coefficients rely on the fit's values.
  p[0] = 100.0;
  const CNuPolynomial copy(p);
  EXPECT_EQ(p.DerivativeAt(0.3), e.DerivativeAt(0.3));
  EXPECT_EQ(copy.ValueAt(1.0), e.ValueAt(1.0));
  // Results of the arithmetic have values outside the interval.
  for (const CNuPolynomial& q : {p + 1.0, p - 1.0, p * 2.0, p / 2.0, -p, p + p, p * p})
    EXPECT_EQ(FailureOf([&] { q.ValueAt(-3.0); }), "nothing");
}

TEST(ChebyshevExpression, Failures) {
  Expression e(3);
  EXPECT_EQ(e.ValueAt(5.0), 0.0);
  EXPECT_EQ(e.DerivativeAt(5.0), 0.0);
  EXPECT_EQ(e.ToPolynomial().GetDegree(), 0);
  e.FitMinMax(1, 2, Inverse);
  const double inside = e.ValueAt(1.5);
  const std::string refused = "operation 41 data checking|CNuChebyshevPolynomialExpression::FitMinMax() [0,0]";
  const std::string outside = "operation 40 data checking|CNuChebyshevPolynomialExpression::";
  const std::string cases[][2] = {
      {FailureOf([] { CNuChebyshevPolynomial(-1); }), "construction 2 degree|CNuChebyshevPolynomial [0,0]"},
      {FailureOf([] { CNuChebyshevPolynomial(INT_MAX); }), "memory 301 |CNuPolynomial() [0,0]"},
      {FailureOf([] { Expression(-1); }), "construction 2 degree|CNuChebyshevPolynomialExpression [0,0]"},
      {FailureOf([&] { e.FitMinMax(1, 1, Cube); }), refused},
      {FailureOf([&] { e.FitMinMax(kNaN, 1, Cube); }), refused},
      {FailureOf([&] { e.FitMinMax(0, 1, nullptr); }), refused},
      {FailureOf([&] { e.FitMinMax(-HUGE_VAL, 1, Cube); }), refused},
      {FailureOf([&] { e.FitMinMax(-1e308, 1e308, Cube); }), refused},
      {FailureOf([&] { e.ValueAt(std::nextafter(1.0, 0.0)); }), outside + "ValueAt() [0,0]"},
      {FailureOf([&] { e.DerivativeAt(std::nextafter(2.0, 3.0)); }), outside + "DerivativeAt() [0,0]"},
      {FailureOf([&] { e.ValueAt(1.0), e.ValueAt(2.0), e.DerivativeAt(1.0), e.DerivativeAt(2.0); }), "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c[0], c[1]);
  try {
    e.ValueAt(3.0);
  } catch (const CNuOperationException& range) {
    EXPECT_EQ(range.m_dLower + 10 * range.m_dUpper, 21.0);
  }
  const auto throwing = [](double x) { return x < 0.5 ? throw std::runtime_error("host") : x; };
  EXPECT_THROW(e.FitMinMax(0, 1, throwing), std::runtime_error);
  EXPECT_EQ(e.ValueAt(1.5), inside);
  EXPECT_TRUE(std::isnan(e.ValueAt(kNaN)));
  EXPECT_TRUE(std::isnan(FittedTo([](double) { return kNaN; }, 0, 1, 3).ValueAt(0.5)));
}

}  // namespace
