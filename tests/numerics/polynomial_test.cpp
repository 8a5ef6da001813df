#include "nu/numerics/polynomial.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <utility>

#include "support/failures.h"

namespace {

CNuPolynomial Poly(std::initializer_list<double> coefficients) {
  CNuPolynomial p(static_cast<int>(coefficients.size()) - 1);
  std::copy(coefficients.begin(), coefficients.end(), p.GetData());
  return p;
}

TEST(Polynomial, CopiesAndMovesKeepTheValueAcrossTheSmallSize) {
  const CNuPolynomial sources[] = {Poly({7}), Poly({1, 2, 3, 4, 5}), Poly({1, 2, 3, 4, 5, 6, 7})};
  for (const CNuPolynomial& source : sources) {
    for (CNuPolynomial target : sources) {
      target.FitMinMax(1.0, 2.0, [](double x) { return x; });
      target = source;
      EXPECT_TRUE(target.IsEqual(source, 1e-300));
      EXPECT_EQ(target.ValueAt(5.0), source.ValueAt(5.0));
      CNuPolynomial taken(std::move(target));
      EXPECT_TRUE(target.IsEqual(Poly({0}), 1e-300));  // NOLINT(bugprone-use-after-move): it is the zero polynomial
      target = std::move(taken);
      target[0] += 1.0;
      EXPECT_TRUE((target - source).IsEqual(Poly({1}), 1e-300));
      EXPECT_EQ(target.GetType(), 7);
    }
  }
}

TEST(Polynomial, Arithmetic) {
  const CNuPolynomial p = Poly({1, 2, 0});
  CNuPolynomial changed = p, simple = Poly({0, 2, 1e-301, -1e-301});
  ((changed += 4.0) *= 2.0) -= 1.0;
  simple.Simplify();
  const CNuPolynomial cases[][2] = {
      // Simplified with a polynomial,
      {Poly({-1, 0, 1}) + Poly({1, 0, -1}), Poly({0})},
      {Poly({1, 1}) * Poly({1, -1}), Poly({1, 0, -1})},
      {Poly({0, 5}) - Poly({1, 2, 3}), Poly({-1, 3, -3})},
      {Poly({0, 1e-200}) * Poly({0, 1e-200}), Poly({0})},
      {simple, Poly({0, 2})},
      // and not with a number.
      {p + 3.0, Poly({4, 2, 0})},
      {p - 3.0, Poly({-2, 2, 0})},
      {3.0 * p / 2.0, Poly({1.5, 3, 0})},
      {-p, Poly({-1, -2, 0})},
      {changed /= 4.0, Poly({2.25, 1, 0})},
  };
  for (const auto& c : cases) EXPECT_TRUE(c[0].IsEqual(c[1], 1e-300)) << &c - cases;
}

TEST(Polynomial, ValuesComparisonsAndFailures) {
  CNuPolynomial p = Poly({1, 2, 3});
  EXPECT_EQ(p.ValueAt(2.0), 17.0);
  EXPECT_EQ(p.DerivativeAt(2.0), 14.0);
  EXPECT_EQ(Poly({5}).DerivativeAt(3.0), 0.0);
  EXPECT_TRUE(Poly({1e-9, -1e-9}).IsZero(2e-9));
  EXPECT_FALSE(Poly({1e-9, -1e-9}).IsZero(1e-9));
  EXPECT_FALSE(Poly({0, std::nan("")}).IsZero(1.0));
  EXPECT_FALSE(p.IsEqual(Poly({1, 2, 3.25}), 0.25));
  EXPECT_FALSE(p.IsEqual(Poly({1, 2, 3, 0}), 0.25));
  const std::string cases[][2] = {
      {FailureOf([] { CNuPolynomial(-1); }), "construction 2 degree|CNuPolynomial [0,0]"},
      {FailureOf([&] { (void)p[3]; }), "operation 3 element operator[]|CNuPolynomial [0,2]"},
      {FailureOf([&] { (void)std::as_const(p)[-1]; }), "operation 3 element operator[]|CNuPolynomial [0,2]"},
      {FailureOf([&] { -HUGE_VAL* p; }), "operation 7 operator*|CNuPolynomial [0,0]"},
      {FailureOf([&] { p *= 1.1e300; }), "operation 7 operator*=|CNuPolynomial [0,0]"},
      {FailureOf([&] { p / 0.0; }), "operation 6 operator/|CNuPolynomial [0,0]"},
      {FailureOf([&] { p /= 9e-301; }), "operation 6 operator/=|CNuPolynomial [0,0]"},
      {FailureOf([&] { p*(p / 1e-300 * 1e300); }), "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c[0], c[1]);
  EXPECT_TRUE(p.IsEqual(Poly({1, 2, 3}), 1e-300));
}

}  // namespace
