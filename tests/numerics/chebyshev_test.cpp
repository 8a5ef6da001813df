#include "nu/numerics/chebyshev.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <stdexcept>
#include <vector>

#include "nu/foundation/constants.h"
#include "support/failures.h"

namespace {

constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

using Function = double (*)(double);
using Expression = CNuChebyshevPolynomialExpression;

Expression FittedTo(Function f, double a, double b, int degree) {
  Expression e(degree);
  e.FitMinMax(a, b, f);
  return e;
}

CNuPolynomial Recursive(int n) {
  CNuPolynomial p(n == 0 ? 0 : 1);
  p[p.GetDegree()] = 1.0;
  if (n < 2) return p;
  p[1] = 2.0;
  return p * Recursive(n - 1) - Recursive(n - 2);
}

TEST(ChebyshevPolynomial, HasTheBitsOfTheRecursiveDefinition) {
  for (int n = 0; n <= 20; ++n) {
    const CNuPolynomial t = CNuChebyshevPolynomial(n).ToPolynomial();
    const CNuPolynomial expected = Recursive(n);
    ASSERT_EQ(t.GetDegree(), n);
    EXPECT_EQ(std::memcmp(t.GetData(), expected.GetData(), sizeof(double) * (n + 1)), 0) << n;
  }
  const CNuPolynomial t3 = CNuChebyshevPolynomial(3).ToPolynomial();
  for (int i = 0; i <= 3; ++i) EXPECT_EQ(t3[i], (std::vector<double>{0, -3, 0, 4})[i]);
  const CNuPolynomial t60 = CNuChebyshevPolynomial(60).ToPolynomial();
  EXPECT_EQ(t60[0], 1.0);
  EXPECT_EQ(t60[2], -1800.0);
  EXPECT_EQ(t60[60], 0x1p59);
  EXPECT_EQ(CNuChebyshevPolynomial(5).GetType(), 8);
}

TEST(ChebyshevExpression, ReproducesPolynomials) {
  const struct {
    Function f;
    std::vector<double> powers;
  } cases[] = {{[](double) { return 2.0; }, {2}},
               {[](double x) { return x * x * x; }, {0, 0, 0, 1}},
               {[](double x) { return 1 - x * (2 - x * x * (3 - x * x)); }, {1, -2, 0, 3, 0, -1}}};
  for (const auto& [f, powers] : cases) {
    const int least = static_cast<int>(powers.size()) - 1;
    for (const int degree : {least, least + 1, least + 9}) {
      for (const auto& [a, b] : {std::pair(-1.0, 1.0), std::pair(0.0, 2.0), std::pair(-2.0, 0.5)}) {
        const Expression e = FittedTo(f, a, b, degree);
        const CNuPolynomial p = e.ToPolynomial();
        const double largest = std::max({1.0, std::fabs(f(a)), std::fabs(f(b))});
        ASSERT_EQ(p.GetDegree(), degree);
        for (int i = 0; i <= degree; ++i)
          EXPECT_NEAR(p[i], i <= least ? powers[i] : 0.0, 3e-16 * largest * std::pow(6.0, degree));
        for (const double x : {a, 0.7 * a + 0.3 * b, b}) {
          double derivative = 0.0;
          for (int i = least; i >= 1; --i) derivative = derivative * x + i * powers[i];
          EXPECT_NEAR(e.ValueAt(x), f(x), 2e-15 * largest);
          EXPECT_NEAR(e.DerivativeAt(x), derivative, 1e-15 * (degree + 1) * (degree + 1) * largest);
        }
      }
    }
  }
  const CNuPolynomial cube = FittedTo([](double x) { return x * x * x; }, -1, 1, 3).ToPolynomial();
  EXPECT_EQ(cube[0], 0.0);
  EXPECT_EQ(cube[2], 0.0);
  EXPECT_NEAR(cube[1], 0.0, 1e-15);
  EXPECT_NEAR(cube[3], 1.0, 1e-15);
}

// Far from 0 the place in a narrow interval is still exact at its ends.
TEST(ChebyshevExpression, IntervalsFarAway) {
  const Expression e = FittedTo([](double x) { return std::sin(x - 1e9); }, 1e9, 1e9 + 1, 12);
  for (const double x : {0.0, 0.25, 0.5, 1.0}) {
    EXPECT_NEAR(e.ValueAt(1e9 + x), std::sin(x), 3e-7);  // the nodes are rounded to 1.2e-7
    EXPECT_NEAR(e.DerivativeAt(1e9 + x), std::cos(x), 3e-5);
  }
  const double least = std::numeric_limits<double>::denorm_min(), most = 0.25 * std::numeric_limits<double>::max();
  EXPECT_EQ(FittedTo([](double) { return 1.0; }, -most, most, 2).ValueAt(most), 1.0);
  EXPECT_EQ(FittedTo([](double) { return 1.0; }, 0.0, least, 2).ValueAt(least), 1.0);
}

// The least possible largest error of a polynomial of degree n on a fine grid, by exchange: the error is levelled at
// n + 2 points, and these move to the extremes of what it is elsewhere.
double MinimaxError(Function f, double a, double b, int n) {
  const int m = n + 2, last = 60 * m;
  std::vector<double> t(last + 1), values(last + 1), error(last + 1);
  for (int g = 0; g <= last; ++g) {
    t[g] = -std::cos(Nu_PI * g / last);
    values[g] = f(std::clamp(0.5 * (a + b) + 0.5 * (b - a) * t[g], a, b));
  }
  std::vector<int> reference;
  for (int i = 0; i < m; ++i) reference.push_back(last * i / (m - 1));
  double level = 0.0;
  for (int round = 0; round < 30; ++round) {
    std::vector<double> weight(m, 1.0);
    double share = 0.0, whole = 0.0;
    for (int i = 0; i < m; ++i) {
      for (int j = 0; j < m; ++j) weight[i] /= j == i ? 1.0 : 2.0 * (t[reference[i]] - t[reference[j]]);
      share += weight[i] * values[reference[i]];
      whole += (i % 2 == 0 ? 1.0 : -1.0) * weight[i];
    }
    level = share / whole;
    // Barycentric interpolation of f -+ level, which is a polynomial of degree n.
    for (int g = 0; g <= last; ++g) {
      double above = 0.0, below = 0.0;
      for (int i = 0; i < m; ++i) {
        const double part = weight[i] / (t[g] - t[reference[i]]);
        above += part * (values[reference[i]] - (i % 2 == 0 ? level : -level));
        below += part;
      }
      error[g] = values[g] - above / below;
    }
    for (int i = 0; i < m; ++i) error[reference[i]] = i % 2 == 0 ? level : -level;
    std::vector<int> peaks = {0};
    for (int g = 1; g <= last; ++g) {
      if ((error[g] > 0) != (error[peaks.back()] > 0)) {
        peaks.push_back(g);
      } else if (std::fabs(error[g]) > std::fabs(error[peaks.back()])) {
        peaks.back() = g;
      }
    }
    while (static_cast<int>(peaks.size()) > m) {
      const bool fromFront = std::fabs(error[peaks.front()]) < std::fabs(error[peaks.back()]);
      peaks.erase(fromFront ? peaks.begin() : peaks.end() - 1);
    }
    if (peaks == reference) break;
    reference = peaks;
  }
  return std::fabs(level);
}

// What truncation leaves is nearly c_(n+1) T_(n+1). Where coefficients fall by r from one to the next, the minimax
// error is smaller by 1 + r: for entire functions r sinks with the degree, for others the nearest singularity fixes it.
TEST(ChebyshevExpression, IsNearlyMinimax) {
  const auto ratio = [](double y) { return y - std::sqrt(y * y - 1.0); };  // a singularity at y, [-1, 1] the interval
  const struct {
    const char* name;
    Function f;
    double a, b, factor;
    std::vector<int> degrees;
  } cases[] = {
      {"exp", [](double x) { return std::exp(x); }, -1, 1, 1.1, {3, 4, 6, 9}},
      {"sin", [](double x) { return std::sin(x); }, -1, 1, 1.1, {1, 2, 6, 9}},
      {"sin of a turn", [](double x) { return std::sin(x); }, 0, Nu_2PI, 1.1, {2, 4, 8, 14}},
      {"cos", [](double x) { return std::cos(x); }, -0.5, 1.5, 1.1, {3, 5, 8}},
      {"exp of 5 x", [](double x) { return std::exp(x); }, 0, 5, 1.1, {11, 13, 15}},
      {"1 / (x + 2)", [](double x) { return 1 / (x + 2); }, -1, 1, 1 + ratio(2), {1, 4, 12, 20}},
      {"log", [](double x) { return std::log(x); }, 1, 10, 1 + ratio(11.0 / 9.0), {1, 4, 12, 20}},
      {"sqrt", [](double x) { return std::sqrt(x); }, 1, 4, 1 + ratio(5.0 / 3.0), {1, 4, 12, 20}},
  };
  for (const auto& c : cases) {
    for (const int degree : c.degrees) {
      const Expression e = FittedTo(c.f, c.a, c.b, degree);
      double largest = 0.0;
      for (int i = 0; i <= 4000; ++i) {
        const double x = c.a + (c.b - c.a) * i / 4000;
        largest = std::max(largest, std::fabs(c.f(x) - e.ValueAt(x)));
      }
      const double minimax = MinimaxError(c.f, c.a, c.b, degree);
      EXPECT_GT(minimax, 1e-13) << c.name << ", degree " << degree;
      EXPECT_LE(largest, c.factor * minimax * 1.001) << c.name << ", degree " << degree;
      EXPECT_GE(largest, 0.999 * minimax) << c.name << ", degree " << degree;
    }
  }
}

TEST(ChebyshevExpression, CopiesAndTheirPolynomialsAreDeep) {
  const Expression e = FittedTo([](double x) { return std::exp(x); }, 0, 1, 5);
  Expression copy(e), assigned(2);
  assigned = e;
  copy.FitMinMax(0, 1, [](double) { return 7.0; });
  EXPECT_EQ(copy.GetType(), 9);
  EXPECT_EQ(assigned.ValueAt(0.5), e.ValueAt(0.5));

  CNuPolynomial p(5);
  p.FitMinMax(0, 1, [](double x) { return std::exp(x); });
  const CNuPolynomial q(p);
  CNuPolynomial r(1);
  r.FitMinMax(2, 3, [](double x) { return x; });
  r = p;
  EXPECT_TRUE(p.IsEqual(e.ToPolynomial(), 1e-300));
  // Required: a change of a coefficient leaves the expression in charge; hosts adjust coefficients for display.
  p[0] = 100.0;
  for (const double x : {0.0, 0.3, 1.0}) {
    for (const CNuPolynomial& fitted : {p, q, r}) {
      EXPECT_EQ(fitted.ValueAt(x), e.ValueAt(x));
      EXPECT_EQ(fitted.DerivativeAt(x), e.DerivativeAt(x));
    }
  }
  // Results of the arithmetic are given by their coefficients, outside the interval too.
  EXPECT_EQ((p + 1.0).ValueAt(-3.0), (p * 1.0)[0] + 1.0 + ((p - p[0]) / 1.0).ValueAt(-3.0));
  p.FitMinMax(0, 1, [](double) { return 3.0; });
  EXPECT_NEAR(p.ValueAt(0.3), 3.0, 1e-15);
}

TEST(ChebyshevExpression, UnfittedIsZeroEverywhere) {
  const Expression e(4);
  EXPECT_EQ(e.ValueAt(5.0), 0.0);
  EXPECT_EQ(e.DerivativeAt(kNan), 0.0);
  EXPECT_EQ(e.ToPolynomial().GetDegree(), 0);
}

TEST(ChebyshevExpression, Failures) {
  Expression e = FittedTo([](double x) { return x; }, 1, 2, 3);
  const auto fit = [&](double a, double b) { return [&e, a, b] { e.FitMinMax(a, b, [](double) { return 9.0; }); }; };
  const std::string refused = "operation 41 data checking|CNuChebyshevPolynomialExpression::FitMinMax() [0,0]";
  const std::string value = "operation 40 data checking|CNuChebyshevPolynomialExpression::ValueAt() [0,0]";
  const std::string derivative = "operation 40 data checking|CNuChebyshevPolynomialExpression::DerivativeAt() [0,0]";
  const struct {
    std::string failure, expected;
  } cases[] = {
      {FailureOf([] { CNuChebyshevPolynomial(-1); }), "construction 2 degree|CNuChebyshevPolynomial [0,0]"},
      {FailureOf([] { Expression(-1); }), "construction 2 degree|CNuChebyshevPolynomialExpression [0,0]"},
      {FailureOf(fit(1, 1)), refused},
      {FailureOf(fit(2, 1)), refused},
      {FailureOf(fit(kNan, 1)), refused},
      {FailureOf(fit(1, kNan)), refused},
      {FailureOf(fit(1, kInfinity)), refused},
      {FailureOf(fit(-kInfinity, 1)), refused},
      {FailureOf([&] { e.ValueAt(std::nextafter(1.0, 0.0)); }), value},
      {FailureOf([&] { e.ValueAt(std::nextafter(2.0, 3.0)); }), value},
      {FailureOf([&] { e.DerivativeAt(std::nextafter(1.0, 0.0)); }), derivative},
      {FailureOf([&] { e.DerivativeAt(kInfinity); }), derivative},
      {FailureOf([&] { e.ValueAt(1.0), e.ValueAt(2.0), e.DerivativeAt(1.0), e.DerivativeAt(2.0); }), "nothing"},
  };
  for (const auto& c : cases) EXPECT_EQ(c.failure, c.expected);
  try {
    e.ValueAt(3.0);
  } catch (const CNuOperationException& outside) {
    EXPECT_EQ(outside.m_dLower, 1.0);
    EXPECT_EQ(outside.m_dUpper, 2.0);
  }
  CNuPolynomial p(2);
  p[2] = 1.0;
  EXPECT_EQ(FailureOf([&] { p.FitMinMax(1, 0, [](double x) { return x; }); }), refused);
  EXPECT_THROW(p.FitMinMax(0, 1, [](double x) { return x < 0.5 ? throw std::runtime_error("host") : x; }),
               std::runtime_error);
  EXPECT_EQ(p.ValueAt(3.0), 9.0);
  EXPECT_NEAR(e.ValueAt(1.5), 1.5, 1e-15);
  EXPECT_TRUE(std::isnan(e.ValueAt(kNan)));
  for (const Function f : {Function([](double) { return kNan; }), Function([](double) { return kInfinity; })}) {
    EXPECT_FALSE(std::isfinite(FittedTo(f, 0, 1, 3).ValueAt(0.5)));
  }
}

}  // namespace
