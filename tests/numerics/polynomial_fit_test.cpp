#include <gtest/gtest.h>

#include <cmath>
#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "nu/foundation/double_array.h"
#include "nu/foundation/tolerances.h"
#include "nu/numerics/polynomial.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

struct Samples {
  CNuDoubleArray x{0}, y{0};
};

Samples Sampled(int n, double low, double high, const std::function<double(double)>& f) {
  Samples s;
  for (int i = 0; i < n; ++i) {
    s.x.Add(n == 1 ? low : low + (high - low) * i / (n - 1));
    s.y.Add(f(s.x.Last()));
  }
  return s;
}

// The coefficients and the residual sum.
std::vector<double> FitOf(int degree, const Samples& s) {
  CNuPolynomial p(degree);
  p.FitMinMax(0, 1, std::exp);  // detached by the fit
  double sum = -1.0;
  p.Fit(s.x, s.y, &sum);
  std::vector<double> numbers(p.GetData(), p.GetData() + degree + 1);
  numbers.push_back(sum);
  return numbers;
}

double Line(double x) {
  return 1 + 2 * x;
}

// Every remainder of the blocks in which samples are read, degrees above that of the samples, and what too few of them,
// or coinciding ones, determine: the smallest coefficients. Coefficients below 1e-10 and small sums are exactly 0.
TEST(PolynomialFit, FindsTheCoefficients) {
  const auto cubic = [](double x) { return 3 - x * (2 - x * (1 - x / 4)); };
  const std::pair<Samples, std::vector<double>> cases[] = {
      {Sampled(3, 0, 2, Line), {1, 2}},
      {Sampled(6, -1, 3, cubic), {3, -2, 1, -0.25, 0, 0}},
      {Sampled(255, -1, 3, cubic), {3, -2, 1, -0.25}},
      {Sampled(5001, -1, 3, cubic), {3, -2, 1, -0.25, 0}},
      {Sampled(11, -1, 1, [](double x) { return 1 + 5e-11 * x; }), {1, 0}},
      {Sampled(2, 0, 1, Line), {1, 1, 1}},
      {Sampled(1, 2, 2, [](double) { return 85; }), {1, 2, 4, 8}},
      {Sampled(300, 2, 2, [](double) { return 85; }), {1, 2, 4, 8}},
      {Sampled(20, 0x1p249, 0x1p250, [](double x) { return x * x; }), {0, 0, 1}},
  };
  for (const auto& [samples, expected] : cases) {
    const std::vector<double> fitted = FitOf(static_cast<int>(expected.size()) - 1, samples);
    for (std::size_t i = 0; i < expected.size(); ++i)
      EXPECT_NEAR(fitted[i], expected[i], expected[i] == 0.0 ? 0.0 : 2e-14) << expected.size();
    EXPECT_EQ(fitted.back() == 0.0, samples.x[0] < 1e9) << expected.size();
  }
}

// The sum belongs to the coefficients, and y times a power of two, up to where squares overflow, has the same digits.
TEST(PolynomialFit, LawsOfTheSolution) {
  const auto wave = [](double x) { return std::sin(40 * x) + 3; };
  const std::vector<double> a = FitOf(2, Sampled(1001, 1, 2, wave));
  double sum = 0.0;
  Sampled(1001, 1, 2, [&](double x) { return sum += std::pow(wave(x) - (a[0] + x * (a[1] + x * a[2])), 2); });
  EXPECT_NEAR(a[3], sum, 1e-13 * sum);
  for (const double f : {0x1p-8, 0x1p600, 0x1p1020}) {
    const std::vector<double> scaled = FitOf(2, Sampled(1001, 1, 2, [&](double x) { return f * wave(x); }));
    for (int j = 0; j <= 2; ++j) EXPECT_EQ(scaled[j], f * a[j]);
  }
}

TEST(PolynomialFit, BadInputEndsAsDocumented) {
  const auto with = [](double x, double y) {
    Samples s = Sampled(9, 0, 1, Line);
    s.x[4] = x;
    s.y[2] = y;
    return s;
  };
  const auto failure = [](int degree, const Samples& s) {
    CNuPolynomial p(degree);
    const std::string text = FailureOf([&] { p.Fit(s.x, s.y); });
    return p.IsZero(1e-300) ? text : "fitted";
  };
  const std::string refused = "operation 46 calculation|CNuMatrix::SVD() [0,0]";
  const std::string cases[][2] = {
      {failure(1, {CNuDoubleArray(0), with(0, 0).y}), "operation 5 data checking|CNuPolynomial::Fit() [0,0]"},
      {failure(1, {}), "construction 1 number of rows/columns|CNuMatrix [0,0]"},
      {failure(1, with(kNaN, 0)), refused},
      {failure(1, with(-HUGE_VAL, 0)), refused},
      {failure(4, with(1e80, kNaN)), refused},
      {failure(3, with(0.5, HUGE_VAL)), refused},
      {failure(12, with(0.5, kNaN)), refused},
  };
  for (const auto& c : cases) EXPECT_EQ(c[0], c[1]);
  const double tol = NuGetTol(), zero = NuGetZero();
  for (const double t : {0.0, -1.0, 1.0, HUGE_VAL, kNaN}) {
    NuSetTol(t);
    NuSetZero(t);
    EXPECT_EQ(FailureOf([&] { FitOf(3, with(0.5, 2)); }), "nothing") << t;
  }
  NuSetTol(tol);
  NuSetZero(zero);
}

}  // namespace
