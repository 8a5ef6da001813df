#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

CNuDoubleArray ArrayOf(const std::vector<double>& values) {
  CNuDoubleArray array(static_cast<int>(values.size()));
  for (double value : values) array.Add(value);
  return array;
}

// Gaps over so many decades. A spline magnifies the rounding of its data by the ratio of neighbouring gaps.
CNuDoubleArray Nodes(Random& random, int n, double decades) {
  CNuDoubleArray x(n);
  double place = random.Uniform(-5, 5);
  for (int i = 0; i < n; ++i) x.Add(place += std::pow(10.0, random.Uniform(-decades, 0)));
  return x;
}

template<class F>
CNuDoubleArray ValuesAt(const CNuDoubleArray& x, F f) {
  CNuDoubleArray y(x.GetSize());
  for (int i = 0; i < x.GetSize(); ++i) y.Add(f(x[i]));
  return y;
}

double LargestOf(const CNuDoubleArray& y) {
  return std::max(std::fabs(y.Max()), std::fabs(y.Min()));
}

TEST(Interpolation, PassesThroughItsPoints) {
  Random random(3);
  for (int n : {2, 3, 4, 17}) {
    const CNuDoubleArray x = Nodes(random, n, 4);
    const CNuDoubleArray y =
        ValuesAt(x, [&](double) { return random.Uniform(-1, 1) * std::pow(10, random.Uniform(0, 9)); });
    const CNuInterpolation through(x, y);
    EXPECT_EQ(through.GetType(), CNuObject::NuTypeInterpolation);
    for (int i = 0; i < n; ++i) {
      double error = -1;
      EXPECT_TRUE(through.Linear(x[i]) == y[i] && through.Spline(x[i]) == y[i]);
      EXPECT_TRUE(through.Polynomial(x[i], &error) == y[i] && error == 0);
    }
  }
}

TEST(Interpolation, ReproducesWhatItMust) {
  Random random(5);
  for (int n : {2, 3, 5, 9, 14}) {
    const CNuDoubleArray x = Nodes(random, n, 0.5);
    const CNuDoubleArray line = ValuesAt(x, [](double at) { return 3 - 7 * at; });
    const auto power = [&](double at) { return std::pow((at - x.First()) / (x.Last() - x.First()) - 0.4, n - 1); };
    const CNuInterpolation straight(x, line);
    const CNuInterpolation curved(x, ValuesAt(x, power));
    for (int k = 0; k < 200; ++k) {
      const double at = random.Uniform(x.First(), x.Last());
      const double rounding = 8 * kEps * LargestOf(line);
      EXPECT_NEAR(straight.Linear(at), 3 - 7 * at, rounding);
      EXPECT_NEAR(straight.Spline(at), 3 - 7 * at, rounding);
      double gap = 1;
      for (int i = 1; i < n; ++i) gap = std::min(gap, x[i] - x[i - 1]);
      EXPECT_NEAR(straight.SplineDerivative(at), -7, rounding / gap);
      double error = 0;
      const double value = curved.Polynomial(at, &error);
      EXPECT_NEAR(value, power(at), std::min(error + 8 * kEps, 1e-12)) << n;
      EXPECT_EQ(curved.Polynomial(at, nullptr), value);
    }
  }
  // Nodes where interpolation converges: nothing but rounding is left, and the estimate says so.
  CNuDoubleArray x(30);
  for (int i = 0; i < 30; ++i) x.Add(-std::cos((i + 0.5) * 3.14159265358979323846 / 30));
  const CNuInterpolation smooth(x, ValuesAt(x, [](double at) { return std::exp(at); }));
  for (double at = -0.99; at < 0.99; at += 0.013) {
    double error = 0;
    EXPECT_NEAR(smooth.Polynomial(at, &error), std::exp(at), 4e-15);
    EXPECT_LT(error, 1e-13);
  }
}

// The natural spline is the one interpolant with s, s', s'' continuous and s'' = 0 at the ends.
TEST(Interpolation, SplineIsNaturalAndSmooth) {
  Random random(7);
  for (int n : {3, 4, 12}) {
    const CNuDoubleArray x = Nodes(random, n, 4);
    const CNuInterpolation spline(x, ValuesAt(x, [&](double) { return random.Uniform(-1, 1); }));
    // s'' at either end of an interval, from s' at the ends and in the middle, which is a parabola there.
    const auto second = [&](int i, double end) {
      const double h = x[i + 1] - x[i];
      const double middle = spline.SplineDerivative(x[i] + 0.5 * h);
      const double first = spline.SplineDerivative(x[i]);
      const double last = spline.SplineDerivative(x[i + 1]);
      return end == 0 ? (4 * middle - 3 * first - last) / h : (first + 3 * last - 4 * middle) / h;
    };
    double size = 0;
    for (int i = 0; i + 1 < n; ++i) size = std::max({size, std::fabs(second(i, 0)), std::fabs(second(i, 1))});
    EXPECT_NEAR(second(0, 0), 0, 1e-8 * size);
    EXPECT_NEAR(second(n - 2, 1), 0, 1e-8 * size);
    for (int i = 1; i + 1 < n; ++i) {
      EXPECT_NEAR(second(i - 1, 1), second(i, 0), 1e-8 * size);
      const double slope = spline.SplineDerivative(x[i]);
      const double step = 1e-9 * std::min(x[i] - x[i - 1], x[i + 1] - x[i]);
      EXPECT_NEAR(spline.SplineDerivative(x[i] - step), slope, 2 * step * size + 1e-12 * std::fabs(slope));
      EXPECT_NEAR(spline.SplineDerivative(x[i] + step), slope, 2 * step * size + 1e-12 * std::fabs(slope));
    }
    for (int k = 0; k < 50; ++k) {
      const double at = random.Uniform(x.First(), x.Last());
      const double step = 1e-6 * std::min(at - x.First(), x.Last() - at);
      EXPECT_NEAR(spline.Spline(at + step) - spline.Spline(at - step), 2 * step * spline.SplineDerivative(at),
                  step * step * size + 1e-12);
    }
  }
}

TEST(Interpolation, ConvergesOnAMillionPointsAndHugeScales) {
  const int n = 1'000'000;
  for (double scale : {1.0, 1e-150, 1e150}) {
    CNuDoubleArray x(n);
    CNuDoubleArray y(n);
    for (int i = 0; i < n; ++i) x.Add(scale * i), y.Add(std::sin(1e-3 * i));
    const CNuInterpolation sine(x, y);
    for (double at : {0.5, 1e5 + 0.3, 7e5 + 0.9, n - 1.5}) {
      EXPECT_NEAR(sine.Linear(scale * at), std::sin(1e-3 * at), 2e-7);
      EXPECT_NEAR(sine.Spline(scale * at), std::sin(1e-3 * at), at < n - 2 ? 1e-12 : 1e-7);
      EXPECT_NEAR(sine.SplineDerivative(scale * at) * scale, 1e-3 * std::cos(1e-3 * at), 1e-7);
    }
    // In the middle of its 512 points the polynomial converges, at the ends of the range it need only come to an end.
    EXPECT_NEAR(sine.Polynomial(scale * (1e5 + 0.3), nullptr), std::sin(100.0003), 1e-12);
    sine.Polynomial(scale * 0.5, nullptr);
  }
}

TEST(Interpolation, RefusesBadDataAndPlacesOutside) {
  const auto failure = [](const std::vector<double>& x, const std::vector<double>& y) {
    return FailureOf([&] { CNuInterpolation(ArrayOf(x), ArrayOf(y)); });
  };
  EXPECT_EQ(failure({1, 2}, {1}), "operation 5 array data checking|CNuInterpolation [0,0]");
  const std::string invalid = "operation 41 array data checking|CNuInterpolation [0,0]";
  const double nan = std::nan("");
  for (const std::vector<double>& x : {std::vector<double>{},
                                       {1},
                                       {1, 1},
                                       {2, 1},
                                       {0, nan},
                                       {nan, 0},
                                       {nan, nan},
                                       {0, kInf},
                                       {-kInf, 0},
                                       {-1e308, 1e308},
                                       {0, 1, nan, 2}})
    EXPECT_EQ(failure(x, std::vector<double>(x.size())), invalid);
  EXPECT_EQ(failure({0, 1}, {0, kInf}), invalid);

  CNuInterpolation f(ArrayOf({-1, 0, 4}), ArrayOf({1e308, -1e308, 1}));
  for (double outside : {-1.0000000001, 4.0000000001, kInf, -kInf, nan}) {
    const auto range = [&](const char* where, auto call) {
      try {
        call();
        ADD_FAILURE() << where;
      } catch (const CNuOperationException& e) {
        EXPECT_TRUE(e.GetCause() == 40 && e.m_dLower == -1 && e.m_dUpper == 4) << where;
        EXPECT_STREQ(e.m_szWhere, where);
        EXPECT_STREQ(e.m_szWhat, "data checking");
      }
    };
    range("CNuInterpolation::Linear()", [&] { f.Linear(outside); });
    range("CNuInterpolation::Polynomial()", [&] { f.Polynomial(outside, nullptr); });
    range("CNuInterpolation::Spline()", [&] { f.Spline(outside); });
    range("CNuInterpolation::SplineDerivative()", [&] { f.SplineDerivative(outside); });
  }
  EXPECT_NEAR(f.Linear(-0.5), 0, 1e292);

  const CNuInterpolation copy(f);
  CNuInterpolation moved(std::move(f));
  EXPECT_EQ(moved.Linear(2), copy.Linear(2));
  EXPECT_EQ(FailureOf([&] { f.Spline(0); }), "operation 40 data checking|CNuInterpolation::Spline() [0,0]");
  f = copy;
  moved = CNuInterpolation(ArrayOf({0, 1}), ArrayOf({0, 1}));
  EXPECT_EQ(f.Linear(2), copy.Linear(2));
  EXPECT_EQ(moved.Spline(0.25), 0.25);
}

template<class F>
CNuMatrix Table(const CNuDoubleArray& x, const CNuDoubleArray& y, F f) {
  CNuMatrix z(x.GetSize(), y.GetSize());
  for (int i = 0; i < x.GetSize(); ++i)
    for (int j = 0; j < y.GetSize(); ++j) z.Element(i, j) = f(x[i], y[j]);
  return z;
}

TEST(Interpolation2D, ReproducesNodesBilinearFunctionsAndSplines) {
  Random random(9);
  for (int n : {2, 3, 8}) {
    const CNuDoubleArray x = Nodes(random, n, 0.5);
    const CNuDoubleArray y = Nodes(random, n + 1, 0.5);
    const auto bilinear = [](double u, double v) { return 2 - u + 3 * v + 0.5 * u * v; };
    const CNuMatrix noise = Table(x, y, [&](double, double) { return random.Uniform(-1, 1); });
    const CNuInterpolation2D flat(x, y, Table(x, y, bilinear));
    const CNuInterpolation2D rough(x, y, noise);
    // A product is interpolated by the product of the splines.
    const CNuDoubleArray p = ValuesAt(x, [&](double) { return random.Uniform(-1, 1); });
    const CNuDoubleArray q = ValuesAt(y, [&](double) { return random.Uniform(-1, 1); });
    CNuMatrix product(n, n + 1);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= n; ++j) product.Element(i, j) = p[i] * q[j];
    const CNuInterpolation2D tensor(x, y, product);
    const CNuInterpolation alongX(x, p);
    const CNuInterpolation alongY(y, q);
    EXPECT_EQ(flat.GetType(), CNuObject::NuTypeInterpolation2D);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j <= n; ++j)
        EXPECT_TRUE(rough.Bilinear(x[i], y[j]) == noise.Element(i, j) &&
                    rough.Bicubic(x[i], y[j]) == noise.Element(i, j));
    for (int k = 0; k < 300; ++k) {
      const double u = random.Uniform(x.First(), x.Last());
      const double v = random.Uniform(y.First(), y.Last());
      EXPECT_NEAR(flat.Bilinear(u, v), bilinear(u, v), 200 * kEps);
      EXPECT_NEAR(flat.Bicubic(u, v), bilinear(u, v), 400 * kEps);
      const double s = alongX.Spline(u);
      const double t = alongY.Spline(v);
      EXPECT_NEAR(tensor.Bicubic(u, v), s * t, 1e-12 * (1 + std::fabs(s)) * (1 + std::fabs(t)));
      EXPECT_NEAR(tensor.Bilinear(u, v), alongX.Linear(u) * alongY.Linear(v), 4 * kEps);
    }
  }
}

TEST(Interpolation2D, RefusesBadDataAndPlacesOutside) {
  const double nan = std::nan("");
  const CNuDoubleArray x = ArrayOf({0, 1, 3});
  const CNuDoubleArray y = ArrayOf({5, 6});
  const auto failure = [&](const CNuDoubleArray& u, const CNuDoubleArray& v, const CNuMatrix& z) {
    return FailureOf([&] { CNuInterpolation2D(u, v, z); });
  };
  const std::string sizes = "operation 5 matrix and array data checking|CNuInterpolation2D [0,0]";
  const std::string invalid = "operation 41 matrix and array data checking|CNuInterpolation2D [0,0]";
  EXPECT_EQ(failure(x, y, CNuMatrix(2, 3)), sizes);
  EXPECT_EQ(failure(x, CNuDoubleArray(0), CNuMatrix(3, 2)), sizes);
  EXPECT_EQ(failure(x, ArrayOf({5}), CNuMatrix(3, 1)), invalid);
  EXPECT_EQ(failure(ArrayOf({0, 1, 1}), y, CNuMatrix(3, 2)), invalid);
  EXPECT_EQ(failure(x, ArrayOf({6, nan}), CNuMatrix(3, 2)), invalid);
  CNuMatrix z(3, 2);
  CNuInterpolation2D f(x, y, z);
  z.Element(2, 1) = nan;
  EXPECT_EQ(failure(x, y, z), invalid);
  const auto range = [&](double u, double v, double lower, double upper) {
    for (bool cubic : {false, true}) {
      try {
        cubic ? f.Bicubic(u, v) : f.Bilinear(u, v);
        ADD_FAILURE() << u << ", " << v;
      } catch (const CNuOperationException& e) {
        EXPECT_TRUE(e.GetCause() == 40 && e.m_dLower == lower && e.m_dUpper == upper) << u << ", " << v;
        EXPECT_STREQ(e.m_szWhere, cubic ? "CNuInterpolation2D::Bicubic()" : "CNuInterpolation2D::Bilinear()");
      }
    }
  };
  range(-1, 9, 0, 3);
  range(nan, 5, 0, 3);
  range(1, 6.5, 5, 6);
  range(1, nan, 5, 6);
  const CNuInterpolation2D moved(std::move(f));
  EXPECT_EQ(moved.Bicubic(2, 5.5), 0.0);
  range(1, 5, 0, 0);
}

}  // namespace
