#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

constexpr double kPi = 3.14159265358979323846;

struct Data {
  double a = 0, b = 0, c = 0, d = 0;
};

template<class Curve>
Data DataOf(const Curve& curve) {
  Data data;
  curve.GetData(&data.a, &data.b, &data.c, &data.d);
  return data;
}

TEST(SineCurve, HoldsItsParametersAndIsExactFarOut) {
  for (const double bad : {0.0, -1.0, kNaN, kInf}) {
    EXPECT_EQ(FailureOf([=] { CNuSineCurve(bad, 1, 0, 0); }), "construction 8 |CNuSineCurve [0,0]");
    EXPECT_EQ(FailureOf([=] { CNuCosineCurve(1, bad, 0, 0); }), "construction 8 |CNuCosineCurve [0,0]");
  }
  const CNuSineCurve sine(2, 3, 0.5, 7);
  const CNuCosineCurve cosine(2, 3, 0.5, 7);
  EXPECT_TRUE(CNuSineCurve(sine).GetType() == 13 && CNuCosineCurve(cosine).GetType() == 12);
  EXPECT_TRUE(DataOf(sine).a == 2 && DataOf(sine).b == 3 && DataOf(cosine).c == 0.5 && DataOf(cosine).d == 7);
  EXPECT_DOUBLE_EQ(sine.Period(), 2 * kPi / 3);
  // Some 10^14 periods away b x is no double: it is x + 2^10 - 2^-40.
  const double x = 0x1p50 - 1, rest = 0.25 - 0x1p-40;
  const double expected = std::sin(x + 1024) * std::cos(rest) + std::cos(x + 1024) * std::sin(rest);
  EXPECT_NEAR(CNuSineCurve(1, 1 + 0x1p-40, 0.25, 0).ValueAt(x), expected, 4 * kEps);
  for (double t = -5; t < 5; t += 0.37) {
    EXPECT_NEAR(sine.ValueAt(t), 2 * std::sin(3 * t + 0.5) + 7, 8 * kEps * 9);
    EXPECT_NEAR(sine.DerivativeAt(t), 6 * std::cos(3 * t + 0.5), 64 * kEps);
    EXPECT_NEAR(cosine.ValueAt(t), 2 * std::cos(3 * t + 0.5) + 7, 8 * kEps * 9);
    EXPECT_NEAR(cosine.DerivativeAt(t), -6 * std::sin(3 * t + 0.5), 64 * kEps);
  }
}

// Points at even, uneven or repeated places, a tenth of the amplitude off at most.
struct Signal {
  Data truth;
  double range = 0, squares = 0;
  CNuPointArray points{1};

  Signal(Random& random, int n, int places, double periods, double noise, double offset) {
    range = std::pow(10.0, random.Uniform(-3, 3));
    const double start = random.Uniform(-1, 1) * offset * range;
    truth.a = std::pow(10.0, random.Uniform(-3, 3));
    truth.b = 2 * kPi * periods / range;
    truth.c = random.Uniform(0, 2 * kPi);
    truth.d = random.Uniform(-1, 1) * offset * truth.a;
    for (int i = 0; i < n; ++i) {
      double u = static_cast<double>(i) / (n - 1);
      if (places == 1 && i > 0 && i < n - 1) u = random.Uniform(0, 1);
      if (places == 2) u = static_cast<double>(i / 2) / ((n - 1) / 2);
      const double x = start + range * u, e = noise * truth.a * random.Uniform(-1, 1);
      squares += e * e;
      points.Add({x, truth.a * std::sin(truth.b * (x - start) + truth.c) + truth.d + e, random.Uniform(-1, 1)});
    }
  }

  template<class Curve>
  double SumFor(const Curve& curve) const {
    double sum = 0;
    for (int i = 0; i < points.GetSize(); ++i) {
      const double e = points[i].y() - curve.ValueAt(points[i].x());
      sum += e * e;
    }
    return sum;
  }

  // What rounding of the coordinates adds to a sum of squares of about `sum`.
  double Rounding(double sum, double offset) const {
    const double e = 16 * kEps * (std::fabs(truth.d) + truth.a * (1 + truth.b * range * (1 + offset)));
    return 2 * e * std::sqrt(sum * points.GetSize()) + e * e * points.GetSize();
  }
};

template<class Curve>
void ExpectLeast(Random& random, const Signal& signal, double offset, double noise) {
  Curve curve(1, 1, 0, 0);
  double form = -1, sum = -1;
  ASSERT_EQ(FailureOf([&] { curve.Fit(signal.points, &form, &sum, 100); }), "nothing");
  const double slack = signal.Rounding(sum, offset);
  EXPECT_LE(sum, signal.squares * (1 + 1e-12) + slack);
  EXPECT_NEAR(sum, signal.SumFor(curve), slack);
  EXPECT_TRUE(form * form <= 4 * sum && form * form * signal.points.GetSize() >= sum - slack);
  const Data best = DataOf(curve);
  EXPECT_TRUE(best.c >= 0 && best.c < 2 * kPi);
  if (noise == 0.0) {
    EXPECT_NEAR((best.b - signal.truth.b) * signal.range, 0.0, 1e-9);
  }
  for (int trial = 0; trial < 10; ++trial) {
    const double h = std::pow(10.0, random.Uniform(-7, -3));
    const auto change = [&] { return h * random.Uniform(-1, 1); };
    const double b = best.b + change() / signal.range;
    const double middle = signal.points[0].x() + 0.5 * signal.range;
    const Curve other(best.a * (1 + change()), b, best.c + change() - (b - best.b) * middle,
                      best.d + best.a * change());
    EXPECT_GE(signal.SumFor(other), sum - slack) << h;
  }
}

// No sum of squares is above that of the curve from which the points come, and no small change lowers it.
TEST(SineFit, FindsTheFrequencyOfAThousandSignals) {
  Random random(71);
  for (int k = 0; k < 1000; ++k) {
    const int n = k % 10 == 0 ? 900 : k % 3 == 0 ? 9 + random.Below(20) : 30 + random.Below(100), places = k % 4 % 3;
    const double nyquist = places == 2 ? (n - 1) / 2 / 2.0 : (n - 1) / 2.0;
    const double noise = k % 5 == 0 ? 0.0 : 0.1, offset = k % 7 == 0 ? 1e4 : 3;
    const double periods = std::exp(random.Uniform(std::log(0.7), std::log(0.95 * nyquist)));
    SCOPED_TRACE(std::to_string(k) + " n " + std::to_string(n) + " periods " + std::to_string(periods));
    const Signal signal(random, n, places, periods, noise, offset);
    if (k % 2 == 0) ExpectLeast<CNuSineCurve>(random, signal, offset, noise);
    if (k % 2 == 1) ExpectLeast<CNuCosineCurve>(random, signal, offset, noise);
  }
}

// Four points determine the curve when they are evenly spaced; so does a hundredth of a period, to what it says.
TEST(SineFit, FewPointsAndSmallPartsOfAPeriod) {
  Random random(72);
  for (int k = 0; k < 200; ++k) {
    const int n = 4 + k % 5;
    const Signal few(random, n, 0, random.Uniform(0.3, 0.45 * (n - 1)), 0.0, 1);
    SCOPED_TRACE(k);
    ExpectLeast<CNuSineCurve>(random, few, 1, 1);
    const double periods = random.Uniform(0.05, 0.7);
    const Signal part(random, 200, k % 2, periods, 0.0, 1);
    CNuSineCurve curve(1, 1, 0, 0);
    ASSERT_EQ(FailureOf([&] { curve.Fit(part.points, 100); }), "nothing") << periods;
    EXPECT_NEAR(DataOf(curve).b / part.truth.b, 1.0, 1e-12 / std::pow(periods, 5));
    EXPECT_LE(part.SumFor(curve), part.Rounding(0, 1));
  }
}

// Repeated scans whose places differ by a little have the Nyquist limit of one of them; a burst of close points
// beside sparse ones does not hide the frequency of the rest; points left out of a grid do not lower its limit.
TEST(SineFit, TheLimitIsThatOfTheSpacing) {
  Random random(73);
  const auto frequency = [&](double b, int n, auto place) {
    CNuPointArray points(n);
    for (int i = 0; i < n; ++i) {
      const double x = place(i);
      points.Add({x, 3 * std::sin(b * x + 1) + 0.1 * random.Bell()});
    }
    CNuSineCurve curve(1, 1, 0, 0);
    curve.Fit(points, 100);
    return DataOf(curve).b;
  };
  for (const double b : {0.1, 1.0, 2.0, 3.0}) {
    EXPECT_NEAR(frequency(b, 200, [&](int i) { return i / 2 + 1e-4 * random.Bell(); }), b, 1e-2) << "two scans";
    EXPECT_NEAR(frequency(b, 150, [](int i) { return i + i / 3 * 2; }), b, 1e-2) << "two of five are missing";
    EXPECT_NEAR(frequency(b, 300, [](int i) { return i < 100 ? 0.01 * i : i - 99; }), b, 1e-2) << "a burst";
  }
}

// Whatever the numbers and the tolerances, an answer comes; powers of two and the order carry over exactly.
TEST(SineFit, ExtremesEndAndScalesCarryOver) {
  Random random(74);
  const Signal signal(random, 3000, 1, 400, 0.1, 3);
  CNuSineCurve unit(1, 1, 0, 0), scaled(1, 1, 0, 0);
  unit.Fit(signal.points, 100);
  scaled.Fit(Shuffled(random, signal.points), 100);
  EXPECT_TRUE(DataOf(scaled).a == DataOf(unit).a && DataOf(scaled).b == DataOf(unit).b) << "in another order";
  NuSetLengthTol(0.0);
  for (const double size : {0x1p-1000, 0x1p-300, 0x1p300, 0x1p1000}) {
    CNuPointArray points(signal.points);
    for (int i = 0; i < points.GetSize(); ++i) points[i] = CNuPoint(points[i].x() / size, points[i].y() * size);
    EXPECT_EQ(FailureOf([&] { scaled.Fit(points, 100); }), "nothing") << size;
    EXPECT_TRUE(DataOf(scaled).a == DataOf(unit).a * size && DataOf(scaled).b == DataOf(unit).b * size) << size;
  }
  const double values[] = {0, 1, -1, 1e-320, 1e300, -1e308, 1.7e308, kInf, kNaN};
  for (const double tol : {1e-12, 0.0, -1.0, kInf, kNaN}) {
    NuSetTol(tol);
    for (int k = 0; k < 300; ++k) {
      NuSetLengthTol(k % 2 == 0 ? tol : 0.0);
      CNuPointArray points(12);
      const int n = 4 + random.Below(9), kinds = k % 3 == 0 ? 9 : 7;
      for (int i = 0; i < n; ++i) points.Add({values[random.Below(kinds)] * i, values[random.Below(kinds)]});
      scaled.FitEx(points, 1000000000);
    }
    EXPECT_TRUE(std::isfinite(DataOf(scaled).a) && DataOf(scaled).b > 0.0);
  }
  NuSetTol(4.45e-16);
  NuSetLengthTol(1e-12);
}

}  // namespace
