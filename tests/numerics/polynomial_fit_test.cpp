#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <random>

#include "nu/foundation/double_array.h"
#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "nu/numerics/polynomial.h"
#include "support/failures.h"

namespace {

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

struct Samples {
  CNuDoubleArray x{0};
  CNuDoubleArray y{0};
};

Samples Sampled(int n, double low, double high, const std::function<double(double)>& f) {
  Samples s;
  for (int i = 0; i < n; ++i) {
    s.x.Add(n == 1 ? low : low + (high - low) * i / (n - 1));
    s.y.Add(f(s.x.Last()));
  }
  return s;
}

struct Fitted {
  CNuPolynomial p;
  double sum = -1.0;
};

Fitted FitOf(int degree, const Samples& s) {
  Fitted fitted{CNuPolynomial(degree)};
  fitted.p.Fit(s.x, s.y, &fitted.sum);
  return fitted;
}

// The same fit by the singular value decomposition of the whole design matrix.
CNuPolynomial ByDecomposition(int degree, const Samples& s) {
  CNuMatrix u(s.x.GetSize(), degree + 1), v;
  CNuVector w, b(s.x.GetSize());
  for (int i = 0; i < s.x.GetSize(); ++i) {
    b[i] = s.y[i];
    double power = 1.0;
    for (int j = 0; j <= degree; ++j, power *= s.x[i]) u.Element(i, j) = power;
  }
  u.SVD(&w, &v);
  double largest = 0.0;
  for (int k = 0; k <= degree; ++k) largest = std::max(largest, w[k]);
  CNuPolynomial p(degree);
  for (int k = 0; k <= degree; ++k) {
    double share = 0.0;
    for (int i = 0; i < s.x.GetSize(); ++i) share += u.Element(i, k) * b[i];
    for (int j = 0; j <= degree && !(w[k] < 1e-10 * largest); ++j) p[j] += v.Element(j, k) * share / w[k];
  }
  return p;
}

double LargestDifference(const CNuPolynomial& a, const CNuPolynomial& b) {
  double largest = 0.0;
  for (int i = 0; i <= a.GetDegree(); ++i) largest = std::max(largest, std::fabs(a[i] - b[i]));
  return largest;
}

TEST(PolynomialFit, LineThroughThreePoints) {
  const Fitted line = FitOf(1, Sampled(3, 0, 2, [](double x) { return 1 + 2 * x; }));
  EXPECT_NEAR(line.p[0], 1.0, 4 * kEps);
  EXPECT_NEAR(line.p[1], 2.0, 4 * kEps);
  EXPECT_EQ(line.sum, 0.0);
}

// Every size of the blocks in which the samples are read, with remainders; the degree of the samples or more.
TEST(PolynomialFit, FindsThePolynomialOfTheSamples) {
  for (const int n : {6, 7, 8, 9, 100, 255, 256, 257, 5001}) {
    for (const int degree : {3, 5}) {
      const Fitted fitted = FitOf(degree, Sampled(n, -1, 3, [](double x) { return 3 - x * (2 - x * (1 - x / 4)); }));
      const double expected[] = {3, -2, 1, -0.25, 0, 0};
      for (int i = 0; i <= degree; ++i) EXPECT_NEAR(fitted.p[i], expected[i], 2e-14) << n << " points";
      EXPECT_EQ(fitted.p[degree] == 0.0, degree == 5);
      EXPECT_EQ(fitted.sum, 0.0);
    }
  }
}

TEST(PolynomialFit, SumBelongsToTheCoefficients) {
  std::mt19937 engine(3);
  std::normal_distribution<double> noise(0.0, 0.01);
  for (const int n : {5, 64, 1001}) {
    const Samples s = Sampled(n, -2, 2, [&](double x) { return 1 + x * x + noise(engine); });
    const Fitted fitted = FitOf(2, s);
    double sum = 0.0, slope[3] = {};
    for (int i = 0; i < n; ++i) {
      const double residual = s.y[i] - fitted.p.ValueAt(s.x[i]);
      sum += residual * residual;
      for (int j = 0; j < 3; ++j) slope[j] += residual * std::pow(s.x[i], j);
    }
    EXPECT_NEAR(fitted.sum, sum, 1e-13 * sum);
    for (const double g : slope) EXPECT_NEAR(g, 0.0, 1e-14 * n);
  }
}

// Scaling the samples by powers of two scales the coefficients and changes no digit of theirs, up to where squares and
// powers overflow.
TEST(PolynomialFit, ScalesWithTheSamples) {
  const auto wave = [](double x) { return std::sin(2 * x) + 3; };
  const CNuPolynomial p = FitOf(4, Sampled(50, 1, 2, wave)).p;
  for (const double f : {0x1p10, 0x1p600, 0x1p1020}) {
    const CNuPolynomial scaled = FitOf(4, Sampled(50, 1, 2, [&](double x) { return f * wave(x); })).p;
    for (int i = 0; i <= 4; ++i) EXPECT_EQ(scaled[i], f * p[i]) << f;
  }
  const CNuPolynomial huge = FitOf(2, Sampled(20, 0x1p499, 0x1p500, [](double x) { return x * x; })).p;
  EXPECT_NEAR(huge[2], 1.0, 1e-14);
}

// Without full rank, by too few points, by points that coincide or by powers that differ too little, the smallest
// coefficients are the answer, as by the decomposition of the whole matrix.
TEST(PolynomialFit, MinimumNormAgreesWithTheDecomposition) {
  const auto cubic = [](double x) { return 1 - x + 0.5 * x * x * x; };
  const struct {
    int points, degree;
    double low, high, tolerance;
  } cases[] = {{2, 2, 0, 1, 1e-14},   {1, 3, 2, 2, 1e-14},     {5, 3, 2, 2, 1e-14},
               {4, 9, -1, 1, 1e-13},  {40, 30, -1, 1, 1e-5},   {100, 4, 1000, 1001, 1e-5},
               {30, 8, 20, 30, 1e-4}, {12, 2, 5e5, 3e6, 1e-7}, {300, 7, -3, 3, 1e-11}};
  for (const auto& c : cases) {
    const Samples s = Sampled(c.points, c.low, c.high, cubic);
    const CNuPolynomial expected = ByDecomposition(c.degree, s);
    double largest = 0.0;
    for (int i = 0; i <= c.degree; ++i) largest = std::max(largest, std::fabs(expected[i]));
    EXPECT_LE(LargestDifference(FitOf(c.degree, s).p, expected), c.tolerance * largest + 1e-10)
        << c.points << " points, degree " << c.degree;
  }
}

TEST(PolynomialFit, SmallCoefficientsVanish) {
  const auto fit = [](double c) { return FitOf(1, Sampled(11, -1, 1, [c](double x) { return 1 + c * x; })).p; };
  EXPECT_EQ(fit(5e-11)[1], 0.0);
  EXPECT_NEAR(fit(2e-10)[1], 2e-10, 1e-15);
  EXPECT_EQ(FitOf(1, Sampled(11, -1, 1, [](double) { return 5e-11; })).sum, 0.0);
}

TEST(PolynomialFit, DetachesTheChebyshevExpression) {
  CNuPolynomial p(1);
  p.FitMinMax(0, 1, [](double x) { return x * x; });
  const Samples s = Sampled(5, 0, 9, [](double x) { return 7 - x; });
  p.Fit(s.x, s.y);
  EXPECT_NEAR(p.ValueAt(100.0), -93.0, 1e-12);
}

TEST(PolynomialFit, RefusesAndKeepsThePolynomial) {
  const auto withX = [](double x) {
    Samples s = Sampled(9, 0, 1, [](double t) { return t; });
    s.x[4] = x;
    return s;
  };
  const struct {
    Samples samples;
    int degree;
    std::string expected;
  } cases[] = {
      {{CNuDoubleArray(0), Sampled(1, 0, 0, [](double t) { return t; }).y},
       1,
       "operation 5 data checking|CNuPolynomial::Fit() [0,0]"},
      {{}, 1, "construction 1 number of rows/columns|CNuMatrix [0,0]"},
      {withX(kNan), 1, "operation 46 calculation|CNuMatrix::SVD() [0,0]"},
      {withX(-kInfinity), 1, "operation 46 calculation|CNuMatrix::SVD() [0,0]"},
      {withX(1e80), 4, "operation 46 calculation|CNuMatrix::SVD() [0,0]"},
      {withX(1e80), 3, "nothing"},
  };
  for (const auto& c : cases) {
    CNuPolynomial p(c.degree);
    p[0] = 0.25;
    double sum = -1.0;
    EXPECT_EQ(FailureOf([&] { p.Fit(c.samples.x, c.samples.y, &sum); }), c.expected);
    EXPECT_EQ(p[0] == 0.25 && sum == -1.0, c.expected != "nothing") << c.expected;
  }
}

TEST(PolynomialFit, OrdinatesThatAreNotFiniteGiveNaN) {
  for (const double bad : {kNan, kInfinity, -kInfinity}) {
    for (const int points : {2, 300}) {
      Samples s = Sampled(points, 0, 1, [](double t) { return t; });
      s.y[1] = bad;
      const Fitted fitted = FitOf(3, s);
      for (int i = 0; i <= 3; ++i) EXPECT_TRUE(std::isnan(fitted.p[i]));
      EXPECT_TRUE(std::isnan(fitted.sum));
    }
  }
}

TEST(PolynomialFit, EndsUnderAnyTolerance) {
  const double tol = NuGetTol(), zero = NuGetZero();
  for (const double t : {0.0, -1.0, 1.0, 1e300, kInfinity, kNan}) {
    NuSetTol(t);
    NuSetZero(t);
    EXPECT_EQ(FailureOf([] { FitOf(3, Sampled(20, 0, 1, [](double x) { return x; })); }), "nothing") << t;
  }
  NuSetTol(tol);
  NuSetZero(zero);
}

}  // namespace
