#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <stdexcept>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

constexpr double kPi = 3.14159265358979323846;
// What tolerances below it count as.
constexpr double kLeastTolerance = 16 * std::numeric_limits<double>::epsilon();

double Square(double x) {
  return x * x;
}

// What became of an integral: 0 met its tolerance, else the cause. A value beyond the tolerance fails the test.
template<class Calculate>
int CauseOf(const char* name, double exact, double tol, Calculate calculate) {
  try {
    const double value = calculate(tol);
    EXPECT_LE(std::fabs(value - exact), std::fmax(tol, kLeastTolerance) * std::fmax(1.0, std::fabs(exact)))
        << name << ", tolerance " << tol;
    return 0;
  } catch (const CNuOperationException& e) {
    return e.GetCause();
  }
}

struct Case {
  const char* name;
  double (*f)(double);
  double a, b, exact;
  double tightest;  // must be met; below it cause 44 is as good
};

TEST(Integral, MeetsItsToleranceOrThrows) {
  const Case cases[] = {
      {"constant", [](double) { return 0.1; }, 0, 1, 0.1, 0},
      {"degree 5", [](double x) { return x * x * x * x * x; }, 0, 2, 64.0 / 6, 0},
      {"exp", [](double x) { return std::exp(x); }, 0, 10, std::exp(10.0) - 1, 0},
      {"Runge", [](double x) { return 1 / (1 + 25 * x * x); }, -1, 1, 0.4 * std::atan(5.0), 0},
      {"Bessel", [](double x) { return std::cos(50 * std::sin(x) - 20 * x) / kPi; }, 0, kPi, -0.116704352759579737,
       1e-14},  // J_20(50)
      {"sin 200 x", [](double x) { return std::sin(200 * x); }, 0, 1, (1 - std::cos(200.0)) / 200, 1e-14},
      {"sin 1e4 x", [](double x) { return std::sin(1e4 * x); }, 0, 1, (1 - std::cos(1e4)) / 1e4, 1e-10},
      {"1/sqrt", [](double x) { return 1 / std::sqrt(x); }, 0, 1, 2, 1e-14},
      {"1/sqrt at both ends", [](double x) { return 1 / std::sqrt(1 - x * x); }, -1, 1, kPi, 1e-12},
      {"with a pole outside", [](double x) { return 1 / ((x + 1.5) * std::sqrt(1 - x * x)); }, -1, 1,
       kPi / std::sqrt(1.25), 1e-12},
      {"with waves", [](double x) { return std::cos(256 * x) / std::sqrt(x * (1 - x)); }, 0, 1,
       kPi * std::cos(128.0) * 0.001472222328185149752, 1e-12},  // J_0(128)
      {"root of the tangent", [](double x) { return std::sqrt(std::tan(x)); }, 0, kPi / 2, kPi / std::sqrt(2.0), 1e-12},
      {"root over root", [](double x) { return std::sqrt(x) / std::sqrt(1 - x * x); }, 0, 1,
       std::tgamma(0.75) * std::tgamma(0.5) / (2 * std::tgamma(1.25)), 1e-12},
      {"1/sqrt at 1, cut off", [](double x) { return 1 - x < 1e-9 ? 0 : 1 / std::sqrt(1 - x); }, 0, 1,
       2 - 2 * std::sqrt(1e-9), 1e-3},
      {"1/sqrt at 1, with a jump", [](double x) { return (1 - x < 2e-5 ? 0.9 : 1.0) / std::sqrt(1 - x); }, 0, 1,
       2 - 0.2 * std::sqrt(2e-5), 1e-1},
      {"1/sqrt at 1/3", [](double x) { return 1 / std::sqrt(std::fabs(x - 1.0 / 3)); }, 0, 1,
       2 * (std::sqrt(1.0 / 3) + std::sqrt(2.0 / 3)), 1e-12},
      {"1/sqrt at a joint", [](double x) { return 1 / std::sqrt(std::fabs(x - 0.375)); }, 0, 1,
       2 * (std::sqrt(0.375) + std::sqrt(0.625)), 1e-12},
      {"1/sqrt that is hit", [](double x) { return 1 / std::sqrt(std::fabs(x - 1.0 / 256)); }, 0, 1,
       (1 + std::sqrt(255.0)) / 8, 1e-12},
      {"1/sqrt at three places", [](double x) { return 1 / std::sqrt(std::fabs((x - 0.2) * (x - 0.55) * (x - 0.7))); },
       0, 1, 15.6038678411125971, 1e-12},
      {"0/0 that is hit", [](double x) { return std::sin(x - 1.0 / 256) / (x - 1.0 / 256); }, 0, 1,
       0.946700025664033665, 0},
      {"1/sqrt at the joint", [](double x) { return 1 / std::sqrt(std::fabs(x)); }, -1, 1, 4, 1e-12},
      {"x^-0.9", [](double x) { return std::pow(x, -0.9); }, 0, 1, 10, 1e-12},
      {"x^-0.99", [](double x) { return std::pow(x, -0.99); }, 0, 1, 100, 1},
      {"log", [](double x) { return std::log(x); }, 0, 1, -1, 0},
      {"log inside", [](double x) { return std::log(std::fabs(x - 0.3)); }, 0, 1,
       0.3 * std::log(0.3) + 0.7 * std::log(0.7) - 1, 1e-10},
      {"sqrt", [](double x) { return std::sqrt(x); }, 0, 1, 2.0 / 3, 0},
      {"half circle", [](double x) { return std::sqrt(1 - x * x); }, -1, 1, kPi / 2, 1e-14},
      {"overflow on the way", [](double x) { return std::pow(x, 1.5) / (x * x); }, 0, 1, 2, 1e-12},
      {"essential", [](double x) { return std::exp(-1 / x) / (x * x); }, 0, 1, std::exp(-1.0), 1e-14},
      {"kink", [](double x) { return std::fabs(x - 1.0 / 3); }, 0, 1, 5.0 / 18, 1e-12},
      {"kinks", [](double x) { return std::fabs(std::sin(50 * x)); }, 0, kPi, 2, 1e-10},
      {"step", [](double x) { return x < 0.3 ? 0.0 : 1.0; }, 0, 1, 0.7, 1e-12},
      {"step at a joint", [](double x) { return x < 0.5 ? 0.0 : 1.0; }, 0, 1, 0.5, 1e-12},
      {"step beside a joint", [](double x) { return x < 0.500001 ? 0.0 : 1.0; }, 0, 1, 0.499999, 1e-12},
      {"steps", [](double x) { return std::floor(10 * x); }, 0, 1, 4.5, 1e-10},
      {"Lorentz 1e-4", [](double x) { return 1e-4 / (Square(x - 0.3137) + 1e-8); }, 0, 1,
       std::atan(6863.0) + std::atan(3137.0), 1e-12},
      {"Gauss 1e-4", [](double x) { return std::exp(-Square((x - 0.3137) / 1e-4)); }, 0, 1, 1e-4 * std::sqrt(kPi),
       1e-14},
      {"Gauss on 1", [](double x) { return 1 + std::exp(-Square((x - 0.7713) / 2e-4)); }, 0, 1,
       1 + 2e-4 * std::sqrt(kPi), 1e-14},
      {"tanh 1e5", [](double x) { return std::tanh(1e5 * (x - 0.123)); }, 0, 1, 0.754, 1e-12},
      {"cos(1/x)", [](double x) { return std::cos(1 / x); }, 0, 1, -0.08441095055957389, 1e-3},
      {"noise", [](double x) { return (1 - std::cos(1e-4 * x)) / 1e-8; }, 0, 1, 1.0 / 6, 1e-7},
      {"huge interval", [](double) { return 1e-300; }, -1e300, 1e300, 2, 0},
      {"overflowing width", [](double) { return 1e-308; }, -1e308, 1e308, 2, 0},
      {"tiny interval", [](double) { return 1e-3; }, 0, 1e-300, 1e-303, 0},
      {"two doubles", [](double) { return 1.0; }, 1, std::nextafter(1.0, 2.0), 0x1p-52, 0}};
  CNuIntegral integral;
  for (const Case& c : cases) {
    for (double tol : {1.0, 1e-3, 1e-6, 1e-7, 1e-8, 1e-10, 1e-12, 1e-14, 0.0}) {
      const long levels = tol < c.tightest ? 1 : 20;  // else it may spend all its samples on nothing
      const int cause =
          CauseOf(c.name, c.exact, tol, [&](double t) { return integral.Calculate(c.f, c.a, c.b, t, levels); });
      EXPECT_TRUE(cause == 0 || (cause == 44 && tol < c.tightest)) << c.name << ", tolerance " << tol;
      const double limit = std::fmax(tol, kLeastTolerance) * std::fmax(1.0, std::fabs(integral.GetValue()));
      EXPECT_TRUE(cause != 0 || integral.GetErrorEstimate() <= limit) << c.name << ", tolerance " << tol;
    }
  }
}

double g_place = 0.0;
double g_width = 0.0;

// Anywhere in [0, 1], every third time within 1e-12 to 1e-3 of an end.
double RandomPlace(Random& random, int i) {
  if (i % 3 != 0) return random.Uniform(0.001, 0.999);
  const double distance = std::pow(10.0, random.Uniform(-12, -3));
  return i % 2 == 0 ? distance : 1 - distance;
}

// Random places and tolerances: no coincidence may pass for convergence.
TEST(Integral, IsNotFooledByChance) {
  const auto over = [](double p, double c) { return (std::pow(c, p) + std::pow(1 - c, p)) / p; };
  Random random(11);
  CNuIntegral integral;
  int met = 0;
  for (int i = 0; i < 1500; ++i) {
    const double c = g_place = RandomPlace(random, i / 8);
    const double w = g_width = std::pow(10.0, random.Uniform(-4, -1));
    const double tol = std::pow(10.0, random.Uniform(-11, -1));
    const Case cases[] = {
        {"step", [](double x) { return x < g_place ? 0.0 : 1.0; }, 0, 1, 1 - c, 0},
        {"kink", [](double x) { return std::fabs(x - g_place); }, 0, 1, over(2, c), 0},
        {"root", [](double x) { return std::sqrt(std::fabs(x - g_place)); }, 0, 1, over(1.5, c), 0},
        {"inverse", [](double x) { return std::pow(std::fabs(x - g_place), -0.4); }, 0, 1, over(0.6, c), 0},
        {"at the end", [](double x) { return std::pow(x, -0.9 * g_place); }, 0, 1, 1 / (1 - 0.9 * c), 0},
        {"at an end other than 0", [](double x) { return std::pow(3 - x, -0.9 * g_place) * std::log(3 - x); }, 2, 3,
         -1 / Square(1 - 0.9 * c), 0},
        {"edge beside a singularity", [](double x) { return (3 - x < 1e-3 * g_width ? 1.01 : 1) / std::sqrt(3 - x); },
         2, 3, 2 + 0.02 * std::sqrt(1e-3 * w), 0},
        {"peak", [](double x) { return std::exp(-Square((x - g_place) / g_width)); }, 0, 1,
         w * std::sqrt(kPi) / 2 * (std::erf((1 - c) / w) + std::erf(c / w)), 0}};
    const Case& k = cases[i % 8];
    met += CauseOf(k.name, k.exact, tol, [&](double t) { return integral.Calculate(k.f, k.a, k.b, t); }) == 0;
  }
  EXPECT_GT(met, 1350);
}

TEST(Integral, DivergentIntegralsThrow) {
  CNuIntegral integral;
  for (double tol : {1e-2, 1e-6}) {
    const auto failure = [&](double (*f)(double), double a, double b) {
      return FailureOf([&] { integral.Calculate(f, a, b, tol); });
    };
    const std::string limit = "operation 44 operation|CNuIntegral::Calculate() [0,0]";
    EXPECT_EQ(failure([](double x) { return 1 / x; }, 0, 1), limit);
    EXPECT_EQ(failure([](double x) { return 1 / x; }, -1, 1), limit);
    EXPECT_EQ(failure([](double x) { return 1 / x; }, -1, 2), limit);
    EXPECT_EQ(failure([](double x) { return 1 / (x - 1.0 / 256); }, 0, 1), limit);
    EXPECT_EQ(failure([](double x) { return std::tan(x); }, 0, 3), limit);
  }
}

TEST(Integral, OrientationStateAndLimits) {
  CNuIntegral integral;
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeNone);
  const auto f = [](double x) { return std::exp(x); };
  const double forward = integral.Calculate(f, -1, 2, 1e-10);
  EXPECT_EQ(integral.Calculate(f, 2, -1, 1e-10), -forward);
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeIntegral);
  const double error = integral.GetErrorEstimate();
  EXPECT_TRUE(error > 0 && error < 1e-10);

  const auto kept = [&](auto call) {
    const std::string failure = FailureOf(call);
    EXPECT_TRUE(integral.GetValue() == -forward && integral.GetErrorEstimate() == error);
    return failure;
  };
  const std::string notFinite = "operation 43 operation|CNuIntegral::Calculate() [0,0]";
  const std::string limit = "operation 44 operation|CNuIntegral::Calculate() [0,0]";
  double (*const none)(double) = nullptr;
  EXPECT_EQ(kept([&] { integral.Calculate(none, 0, 1, 1e-6); }), notFinite);
  EXPECT_EQ(kept([&] { integral.Calculate([](double x) { return std::sqrt(x - 0.5); }, 0, 1, 1e-6); }), notFinite);
  EXPECT_EQ(kept([&] { integral.Calculate([](double) { return 1e308; }, 0, 10, 1e-6); }), notFinite);
  const auto hole = [](double x) { return std::fabs(x - 1.0 / 256) < 1e-9 ? std::nan("") : 1.0; };
  EXPECT_EQ(kept([&] { integral.Calculate(hole, 0, 1, 1e-6); }), notFinite);
  for (double bad : {kInf, -kInf, std::nan("")}) {
    EXPECT_EQ(kept([&] { integral.Calculate(f, bad, 1, 1e-6); }), notFinite);
    EXPECT_EQ(kept([&] { integral.Calculate(f, 0, bad, 1e-6); }), notFinite);
  }
  const auto step = [](double x) { return x < 0.3 ? 0.0 : 1.0; };
  const auto wave = [](double x) { return std::sin(1e5 * x); };
  for (long limitOf : {-5L, 0L, 1L, 2L}) EXPECT_EQ(kept([&] { integral.Calculate(wave, 0, 1, 1e-9, limitOf); }), limit);
  EXPECT_THROW(integral.Calculate([](double) -> double { throw std::runtime_error("host"); }, 0, 1, 1e-6),
               std::runtime_error);
  EXPECT_THROW(integral.Calculate([](double x) -> double { return x < 1e-9 ? throw std::bad_alloc() : std::log(x); }, 0,
                                  1, 1e-9),
               std::bad_alloc);
  EXPECT_EQ(integral.GetValue(), -forward);

  EXPECT_NEAR(integral.Calculate(step, 0, 1, 1e-9, 1'000'000'000), 0.7, 1e-9);
  EXPECT_NEAR(integral.Calculate(f, 0, 1, -1.0, 0), std::exp(1.0) - 1, 1e-14);
  EXPECT_NEAR(integral.Calculate(f, 0, 1, std::nan(""), 0), std::exp(1.0) - 1, 1e-14);
  EXPECT_NEAR(integral.Calculate(f, 0, 1, kInf, 0), std::exp(1.0) - 1, 1e-14);
  EXPECT_EQ(integral.Calculate([](double) { return std::nan(""); }, 3, 3, 1e-6), 0.0);
  EXPECT_EQ(integral.GetErrorEstimate(), 0.0);
}

double Zero(double) {
  return 0.0;
}
double Half(double x) {
  return std::sqrt(1 - x * x);
}
double MinusHalf(double x) {
  return -Half(x);
}

TEST(Integral2D, AreasOfConstantAndCurvedBounds) {
  CNuIntegral2D integral;
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeNone);
  struct Area {
    const char* name;
    double (*f)(double, double);
    double (*ay)(double);
    double (*by)(double);
    double a, b, exact, tightest;
  };
  const Area areas[] = {
      {"unit disc", [](double, double) { return 1.0; }, MinusHalf, Half, -1, 1, kPi, 1e-12},
      {"hemisphere", [](double x, double y) { return std::sqrt(std::fmax(0.0, 1 - x * x - y * y)); }, MinusHalf, Half,
       -1, 1, 2 * kPi / 3, 1e-10},
      {"triangle", [](double x, double y) { return x * y; }, Zero, [](double x) { return 1 - x; }, 0, 1, 1.0 / 24, 0},
      {"reversed below 0", [](double, double) { return 1.0; }, Zero, [](double x) { return x; }, -1, 2, 1.5, 0},
      {"odd, large", [](double x, double y) { return 1e6 * (std::sin(y) + x); }, MinusHalf, Half, 0, 1, 2e6 / 3, 1e-12},
      {"corner", [](double x, double y) { return 1 / std::sqrt(x + y); }, Zero, [](double) { return 1.0; }, 0, 1,
       4.0 / 3 * (2 * std::sqrt(2.0) - 2), 1e-10},
      {"disc in square", [](double x, double y) { return x * x + y * y < 0.5 ? 1.0 : 0.0; }, Zero,
       [](double) { return 1.0; }, 0, 1, kPi / 8, 1e-12},
      {"corner of products", [](double x, double y) { return 1 / std::sqrt(x * y); }, Zero, [](double) { return 1.0; },
       0, 1, 4, 1e-12},
      {"edge that is hit", [](double x, double y) { return y / std::sqrt(std::fabs(x - 1.0 / 32)); }, Zero,
       [](double) { return 1.0; }, 0, 1, std::sqrt(1.0 / 32) + std::sqrt(31.0 / 32), 1e-12},
      {"peak", [](double x, double y) { return std::exp(-1e4 * (Square(x - 0.31) + Square(y - 0.72))); }, Zero,
       [](double) { return 1.0; }, 0, 1, kPi * 1e-4, 1e-10}};
  for (const Area& c : areas) {
    for (double tol : {1e-3, 1e-6, 1e-8, 1e-10, 1e-12, 0.0}) {
      if (tol < c.tightest) continue;
      EXPECT_EQ(
          CauseOf(c.name, c.exact, tol, [&](double t) { return integral.Calculate(c.f, c.a, c.b, c.ay, c.by, t); }), 0)
          << c.name << ", tolerance " << tol;
    }
  }
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeIntegral2D);
  const auto f = [](double x, double y) { return std::exp(x - 2 * y); };
  const double exact = (std::exp(1.0) - 1) * (1 - std::exp(-4.0)) / 2;
  EXPECT_NEAR(integral.Calculate(f, 0, 1, 0, 2, 1e-12), exact, 1e-12);
  EXPECT_NEAR(integral.Calculate(f, 1, 0, 0, 2, 1e-12), -exact, 1e-12);
  EXPECT_NEAR(integral.Calculate(f, 1, 0, 2, 0, 1e-12), exact, 1e-12);
}

// The integral of max(0, a[0] x + a[1] y + ... + c)^q / q! over the unit cube of n dimensions.
double OverCube(const double* a, int n, double c, int q) {
  double sum = 0.0;
  double divisor = 1.0;
  for (int i = 0; i < n; ++i) divisor *= a[i];
  for (int i = 2; i <= n + q; ++i) divisor *= i;
  for (int corner = 0; corner < 1 << n; ++corner) {
    double height = c;
    double sign = 1.0;
    for (int i = 0; i < n; ++i) (corner >> i & 1) != 0 ? height += a[i] : sign = -sign;
    sum += sign * std::pow(std::fmax(0.0, height), n + q);
  }
  return sum / divisor;
}

double g_a[3];
double g_c = 0.0;

double Height(double x, double y, double z) {
  return g_a[0] * x + g_a[1] * y + g_a[2] * z + g_c;
}

// A plane through a random place in the cube, every third time close to its side x = 1.
void ChoosePlane(Random& random, int n, int i) {
  g_c = 0.0;
  for (int k = 0; k < 3; ++k) {
    g_a[k] = k < n ? random.Uniform(0.05, 1) * (random.Below(2) == 0 ? -1 : 1) : 0.0;
    g_c -= g_a[k] * (k == 0 && i % 3 == 0 ? 1 - 1e-5 : random.Uniform(0, 1));
  }
}

// No edge passes unseen, wherever it leaves the area: a value within the tolerance, or a failure.
TEST(Integral2D, IsNotFooledByEdgesAndStrips) {
  Random random(12);
  CNuIntegral2D integral;
  int met = 0;
  for (int i = 0; i < 30; ++i) {
    ChoosePlane(random, 2, i);
    const double w = g_width = std::pow(10.0, random.Uniform(-3, -2));
    const double r = g_place = random.Uniform(0.01, 0.5);
    const double tol = std::pow(10.0, random.Uniform(-10, -3));
    const auto met2 = [&](const char* name, double exact, double (*f)(double, double)) {
      return CauseOf(name, exact, tol, [&](double t) { return integral.Calculate(f, 0, 1, 0, 1, t); }) == 0 ? 1 : 0;
    };
    const double above = OverCube(g_a, 2, g_c, 0);
    met += met2("step", above, [](double x, double y) { return Height(x, y, 0) > 0 ? 1.0 : 0.0; });
    met += met2("kink", 2 * OverCube(g_a, 2, g_c, 1) - Height(0.5, 0.5, 0),
                [](double x, double y) { return std::fabs(Height(x, y, 0)); });
    met += met2("strip", above - OverCube(g_a, 2, g_c - w, 0),
                [](double x, double y) { return Height(x, y, 0) > 0 && Height(x, y, 0) < g_width ? 1.0 : 0.0; });
    met += met2("disc that touches the sides", kPi * r * r,
                [](double x, double y) { return std::hypot(x - g_place, y - g_place) < g_place ? 1.0 : 0.0; });
  }
  EXPECT_GT(met, 115);
}

TEST(Integral2D, FailuresOfInnerIntegralsKeepTheirCause) {
  CNuIntegral2D integral;
  const auto causeOf = [&](double (*f)(double, double), double b) {
    return FailureOf([&] { integral.Calculate(f, 0, 1, 0, b, 1e-8); });
  };
  EXPECT_EQ(causeOf([](double, double y) { return 1 / y; }, 1),
            "operation 44 operation|CNuIntegral2D::Calculate() [0,0]");
  EXPECT_EQ(causeOf([](double x, double y) { return std::sqrt(x + y - 1); }, 1),
            "operation 43 operation|CNuIntegral2D::Calculate() [0,0]");
  EXPECT_EQ(causeOf([](double, double) { return 1.0; }, kInf),
            "operation 43 operation|CNuIntegral2D::Calculate() [0,0]");
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeIntegral2D);
}

TEST(Integral3D, VolumesOfConstantAndCurvedBounds) {
  CNuIntegral3D integral;
  const auto one = [](double, double, double) { return 1.0; };
  const auto top = [](double x, double y) { return std::sqrt(std::fmax(0.0, 1 - x * x - y * y)); };
  const auto bottom = [](double x, double y) { return -std::sqrt(std::fmax(0.0, 1 - x * x - y * y)); };
  const auto wave = [](double x, double y, double z) { return std::exp(x) * std::cos(y) * (1 + z * z); };
  const double exact = (std::exp(1.0) - 1) * std::sin(2.0) * 12;
  for (double tol : {1e-3, 1e-8, 1e-11}) {
    EXPECT_EQ(CauseOf("ball", 4 * kPi / 3, tol,
                      [&](double t) { return integral.Calculate(one, -1, 1, MinusHalf, Half, bottom, top, t); }),
              0);
    EXPECT_EQ(CauseOf("box", exact, tol, [&](double t) { return integral.Calculate(wave, 0, 1, 0, 2, 0, 3, t); }), 0);
    EXPECT_EQ(CauseOf("box", -exact, tol, [&](double t) { return integral.Calculate(wave, 0, 1, 2, 0, 0, 3, t); }), 0);
  }
  EXPECT_EQ(integral.GetType(), CNuObject::NuTypeIntegral3D);
  EXPECT_EQ(FailureOf([&] {
              integral.Calculate([](double, double, double z) { return std::log(-z); }, 0, 1, 0, 1, 0, 1, 1e-6);
            }),
            "operation 43 operation|CNuIntegral3D::Calculate() [0,0]");
}

long g_calls = 0;

TEST(Integral3D, IsNotFooledByEdgesAndKeepsItsLimit) {
  Random random(13);
  CNuIntegral3D integral;
  const auto step = [](double x, double y, double z) {
    ++g_calls;
    return Height(x, y, z) > 0 ? 1.0 : 0.0;
  };
  for (int i = 0; i < 4; ++i) {
    ChoosePlane(random, 3, i);
    const double exact = OverCube(g_a, 3, g_c, 0);
    EXPECT_EQ(CauseOf("step", exact, 1e-4, [&](double t) { return integral.Calculate(step, 0, 1, 0, 1, 0, 1, t); }), 0);
    g_calls = 0;
    EXPECT_EQ(CauseOf("step", exact, 0, [&](double t) { return integral.Calculate(step, 0, 1, 0, 1, 0, 1, t, 1); }),
              44);
    EXPECT_LT(g_calls, 2200000);
  }
}

}  // namespace
