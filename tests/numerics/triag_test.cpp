#include <gtest/gtest.h>

#include <algorithm>
#include <climits>
#include <cmath>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// Less whole turns, by more digits of 2 pi than some C libraries take. Exact up to 2^29 turns but for the last digits.
long double WithoutTurns(long double angle) {
  constexpr long double kTurn = 0x6487ED511p-32L;
  constexpr long double kRest = 0xB4611A62633145C0p-100L;
  const long double turns = std::nearbyint(angle / kTurn);
  return (angle - turns * kTurn) - turns * kRest;
}

// A sum of a_k cos ku + b_k sin ku with more digits than the library has: to build polynomials from their roots, and to
// look at the library's values and roots.
struct Exact {
  std::vector<long double> a = {1}, b = {0};

  int Degree() const { return static_cast<int>(a.size()) - 1; }

  // Times c0 + c1 cos u + s1 sin u.
  void Multiply(long double c0, long double c1, long double s1) {
    std::vector<long double> p(a.size() + 1), q(a.size() + 1);
    for (int k = 0; k <= Degree(); ++k) {
      const int below = std::abs(k - 1);
      p[k] += c0 * a[k];
      q[k] += c0 * b[k];
      p[k + 1] += (c1 * a[k] - s1 * b[k]) / 2;
      q[k + 1] += (s1 * a[k] + c1 * b[k]) / 2;
      p[below] += (c1 * a[k] + s1 * b[k]) / 2;
      q[below] += (k == 0 ? -1 : 1) * (c1 * b[k] - s1 * a[k]) / 2;
    }
    q[0] = 0;
    a = p;
    b = q;
  }
  // sin((u - r)/2) sin((u - s)/2), twice.
  void MultiplyRoots(long double r, long double s) {
    Multiply(std::cos((r - s) / 2), -std::cos((r + s) / 2), -std::sin((r + s) / 2));
  }
  // c - cos(u - r).
  void MultiplyPositive(long double c, long double r) { Multiply(c, -std::cos(r), -std::sin(r)); }

  // Order 0 or 1; k u has no rounding.
  long double Derivative(int order, long double u) const {
    long double sum = 0;
    for (int k = 0; k <= Degree(); ++k) {
      const long double angle = WithoutTurns(k * u);
      const long double c = std::cos(angle), s = std::sin(angle);
      sum += order == 0 ? a[k] * c + b[k] * s : k * (b[k] * c - a[k] * s);
    }
    return sum;
  }
  long double Size(int power = 0) const {
    long double sum = 0;
    for (int k = 0; k <= Degree(); ++k)
      sum += std::pow(static_cast<long double>(k), power) * (std::fabs(a[k]) + std::fabs(b[k]));
    return sum;
  }
  CNuTriagPolynomial Rounded(double factor = 1.0) const {
    CNuTriagPolynomial p(Degree());
    for (int k = 0; k <= Degree(); ++k) {
      p.Cos(k) = static_cast<double>(a[k]) * factor;
      p.Sin(k) = static_cast<double>(b[k]) * factor;
    }
    return p;
  }
};

Exact FromLibrary(const CNuTriagPolynomial& p) {
  Exact f;
  f.a.assign(p.GetCosData(), p.GetCosData() + p.GetDegree() + 1);
  f.b.assign(p.GetSinData(), p.GetSinData() + p.GetDegree() + 1);
  return f;
}

CNuTriagPolynomial AnyPolynomial(Random& random, int degree) {
  CNuTriagPolynomial p(degree);
  for (int k = 0; k <= degree; ++k) {
    p.Cos(k) = random.Uniform(-1, 1);
    p.Sin(k) = k == 0 ? 0 : random.Uniform(-1, 1);
  }
  return p;
}

std::vector<double> ToVector(const CNuDoubleArray& a) {
  return {a.GetData(), a.GetData() + a.GetSize()};
}

template<class Function>
std::vector<double> RootsOf(const Function& f) {
  CNuTriagEqu equation;
  equation.Solve(f);
  EXPECT_EQ(equation.GetNumberRoots(), equation.GetRoots().GetSize());
  return ToVector(equation.GetRoots());
}

double Apart(double u, double v) {
  return std::fabs(std::remainder(u - v, Nu_2PI));
}

struct Wanted {
  double u;
  double within;
};

// The same roots, where one near 0 may stand at either end.
void ExpectRoots(const std::vector<double>& got, std::vector<Wanted> wanted, const std::string& name) {
  ASSERT_EQ(got.size(), wanted.size()) << name;
  ASSERT_TRUE(std::is_sorted(got.begin(), got.end())) << name;
  for (const double u : got) ASSERT_TRUE(u >= 0 && u < Nu_2PI) << name;
  std::sort(wanted.begin(), wanted.end(), [](const Wanted& v, const Wanted& w) { return v.u < w.u; });
  const auto same = [&] {
    for (std::size_t i = 0; i < got.size(); ++i)
      if (!(Apart(got[i], wanted[i].u) <= wanted[i].within)) return false;
    return true;
  };
  for (std::size_t i = 0; i < got.size(); ++i) {
    if (same()) return;
    std::rotate(wanted.begin(), wanted.begin() + 1, wanted.end());
  }
  EXPECT_TRUE(same()) << name << testing::PrintToString(got);
}

TEST(Triag, WaveWithAmplitudeAndPhase) {
  for (double turn = 0; turn < 6.2; turn += 0.37) {
    const double a = 5 * std::cos(turn), b = 5 * std::sin(turn);
    const CNuTriag wave(a, b, -2);
    EXPECT_NEAR(wave.Amplitude(), 5, 4 * kEps);
    EXPECT_NEAR(wave.Phase(), turn, 8 * kEps);
    EXPECT_NEAR(wave.ValueAt(wave.Phase() + 1), 5 * std::cos(1.0) - 2, 40 * kEps);
    EXPECT_NEAR(wave.DerivativeAt(wave.Phase() + 1), -5 * std::sin(1.0), 40 * kEps);
    EXPECT_TRUE(((2 * wave - wave / 2) * 2).IsEqual(wave + wave + wave, 40 * kEps) && (wave + -wave).IsZero(1e-300));
  }
  EXPECT_EQ(CNuTriag(1, -1e-300, 0).Phase(), 0.0);
  EXPECT_EQ(CNuTriag(-0.0, -0.0, 1).Phase(), 0.0);
  EXPECT_DOUBLE_EQ(CNuTriag(3e300, 4e300, 0).Amplitude(), 5e300);
  EXPECT_FALSE(CNuTriag(0, 0, kNaN).IsZero(1) || CNuTriag(0, 1, 0).IsEqual(CNuTriag(0, 0, 0), 1));
}

TEST(TriagPolynomial, AlgebraHoldsPointwise) {
  Random random(1);
  for (int i = 0; i < 200; ++i) {
    const CNuTriagPolynomial p = AnyPolynomial(random, random.Below(9)), q = AnyPolynomial(random, random.Below(9));
    const double u = random.Uniform(-10, 10), f = p.ValueAt(u), g = q.ValueAt(u), bound = 300 * kEps;
    EXPECT_EQ((p * q).GetDegree(), p.GetDegree() + q.GetDegree());
    EXPECT_NEAR((p * q).ValueAt(u), f * g, bound);
    EXPECT_NEAR((p * q).DerivativeAt(u), p.DerivativeAt(u) * g + f * q.DerivativeAt(u), 30 * bound);
    EXPECT_NEAR((p + q).ValueAt(u), f + g, bound);
    EXPECT_NEAR((p - 2 * q / 4).ValueAt(u), f - g / 2, bound);
    EXPECT_TRUE((p - p).IsZero(1e-300) && (-p).IsEqual(p * -1, 1e-300) && (p * q).IsEqual(q * p, 50 * kEps));
  }
  CNuTriagPolynomial p(CNuTriag(1, 2, 3));
  EXPECT_TRUE(p.GetDegree() == 1 && p.Cos(0) == 3 && p.Cos(1) == 1 && p.Sin(1) == 2);
  p.Cos(1) = 1e-9;
  p.Sin(1) = kNaN;
  p.Simplify(1e-8);
  EXPECT_EQ(p.GetDegree(), 1);
  p.Sin(1) = -1e-9;
  p.Simplify(1e-8);
  EXPECT_TRUE(p.GetDegree() == 0 && !p.IsZero(3) && p.IsZero(3.1) && !p.IsEqual(CNuTriagPolynomial(1), 9));
}

TEST(TriagPolynomial, ValuesWithinTheirBound) {
  Random random(2);
  for (int i = 0; i < 200; ++i) {
    const CNuTriagPolynomial p = AnyPolynomial(random, 1 + random.Below(200));
    const Exact f = FromLibrary(p);
    const double u = i % 2 == 0 ? random.Uniform(-7, 7) : random.Uniform(-1e5, 1e5);
    EXPECT_NEAR(p.ValueAt(u), static_cast<double>(f.Derivative(0, u)), static_cast<double>(kEps * f.Size()));
    EXPECT_NEAR(p.DerivativeAt(u), static_cast<double>(f.Derivative(1, u)), static_cast<double>(2 * kEps * f.Size(1)));
  }
  EXPECT_TRUE(std::isnan(AnyPolynomial(random, 3).ValueAt(kInf)) &&
              std::isnan(AnyPolynomial(random, 3).DerivativeAt(kNaN)));
}

TEST(Triag, Failures) {
  CNuTriagPolynomial p(2);
  CNuTriag t(1, 2, 3);
  const std::vector<std::pair<std::string, std::function<void()>>> cases = {
      {"construction 2 degree|CNuTriagPolynomial [0,0]", [] { CNuTriagPolynomial(-1); }},
      {"memory 301 |CNuTriagPolynomial::Init() [0,0]", [] { CNuTriagPolynomial(INT_MAX); }},
      {"operation 4 operation|CNuTriagPolynomial::Cos() [0,2]", [&] { p.Cos(3); }},
      {"operation 4 operation|CNuTriagPolynomial::Sin() [0,2]", [&] { std::as_const(p).Sin(-1); }},
      {"operation 7 operator*|CNuTriagPolynomial [0,0]", [&] { p * 1e301; }},
      {"operation 7 operator*=|CNuTriagPolynomial [0,0]", [&] { p *= -kInf; }},
      {"operation 6 operator/|CNuTriagPolynomial [0,0]", [&] { p / 1e-301; }},
      {"operation 6 operator/=|CNuTriagPolynomial [0,0]", [&] { p /= 0.0; }},
      {"operation 7 operator*|CNuTriag [0,0]", [&] { t * 1e301; }},
      {"operation 7 operator*=|CNuTriag [0,0]", [&] { t *= kInf; }},
      {"operation 6 operator/|CNuTriag [0,0]", [&] { t / 0.0; }},
      {"operation 6 operator/=|CNuTriag [0,0]", [&] { t /= -1e-301; }},
  };
  for (const auto& [failure, call] : cases) EXPECT_EQ(FailureOf(call), failure);
  EXPECT_TRUE(p.IsZero(1e-300) && t.IsEqual(CNuTriag(1, 2, 3), 1e-300));
  const CNuObject::ENuObjectType types[] = {CNuTriag(t).GetType(), CNuTriagPolynomial(p).GetType(),
                                            CNuTriagEqu().GetType()};
  EXPECT_TRUE(types[0] == 14 && types[1] == 16 && types[2] == 15);
}

// Roots apart from each other, single and double, beside factors without roots.
TEST(TriagEqu, FindsTheRootsItIsBuiltFrom) {
  Random random(3);
  long held = 0, all = 0;
  for (int i = 0; i < 10000; ++i) {
    const int degree = 1 + i % 16;
    const int pairs = random.Below(degree + 1);
    std::vector<int> multiplicities;
    for (int left = 2 * pairs; left > 0; left -= multiplicities.back())
      multiplicities.push_back(left > 1 && random.Below(5) == 0 ? 2 : 1);
    std::vector<Wanted> wanted;
    const double start = random.Uniform(1, 2), spread = Nu_2PI / static_cast<double>(multiplicities.size());
    for (std::size_t slot = 0; slot < multiplicities.size(); ++slot) {
      const double u = std::fmod((start + static_cast<double>(slot) + random.Uniform(-0.25, 0.25)) * spread, Nu_2PI);
      wanted.insert(wanted.end(), multiplicities[slot], {u, multiplicities[slot] == 1 ? 1e-12 : 1e-7});
    }
    Exact f;
    // Factors of roots next to each other would let the coefficients of the first products grow.
    for (int pair = 0; pair < pairs; ++pair) f.MultiplyRoots(wanted[pair].u, wanted[pair + pairs].u);
    for (int k = pairs; k < degree; ++k)
      f.MultiplyPositive(1 + std::pow(10, random.Uniform(-2, 1)), random.Uniform(0, Nu_2PI));
    // What the rounding of the coefficients moves, where it is more than a few digits.
    for (Wanted& w : wanted) {
      const double rounding = static_cast<double>(kEps * f.Size() / std::fabs(f.Derivative(1, w.u)));
      if (w.within == 1e-7) continue;
      held += rounding <= w.within ? 1 : 0;
      ++all;
      w.within = std::max(w.within, rounding);
    }
    const double scale = i % 3 == 0 ? 1.0 : i % 3 == 1 ? 1e150 : 1e-150;
    const std::vector<double> got = RootsOf(f.Rounded(scale));
    ASSERT_NO_FATAL_FAILURE(ExpectRoots(got, wanted, "case " + std::to_string(i)));
  }
  EXPECT_GT(100 * held, 99 * all) << held << " of " << all;
}

// Every sign change between dense samples is a root; every root is where the value is rounding; no more than that.
TEST(TriagEqu, FindsEverySignChange) {
  Random random(4);
  for (int i = 0; i < 300; ++i) {
    const CNuTriagPolynomial p = AnyPolynomial(random, 1 + i % 40);
    const Exact f = FromLibrary(p);
    const std::vector<double> roots = RootsOf(p);
    const int samples = 40 * p.GetDegree();
    std::size_t next = 0;
    for (int j = 0; j < samples; ++j) {
      const double left = Nu_2PI * j / samples, right = Nu_2PI * (j + 1) / samples;
      const std::size_t first = next;
      while (next < roots.size() && roots[next] < right) ++next;
      const bool changes = (p.ValueAt(left) > 0) != (p.ValueAt(right) > 0);
      ASSERT_EQ((next - first) % 2 == 1, changes) << "case " << i;
    }
    for (const double u : roots) {
      const long double rounding = 8 * std::fabs(f.Derivative(1, u)) + 20 * f.Size();
      ASSERT_LE(std::fabs(f.Derivative(0, u)), kEps * rounding) << "case " << i;
    }
  }
}

// Extrema of 0, of some roundings, and well beyond: for degree 1, 2 in its general form, 2 as a multiple and higher.
TEST(TriagEqu, TellsTouchingFromMissing) {
  const std::pair<double, std::size_t> excesses[] = {{0, 2},    {4 * kEps, 2},    {-4 * kEps, 2}, {100 * kEps, 0},
                                                     {1e-6, 0}, {-100 * kEps, 2}, {-1e-6, 2}};
  for (const auto& [excess, count] : excesses) {
    for (int n : {1, 2, 5}) {
      for (double phase : {0.0, 1.0, 4.0, Nu_PI}) {
        Exact f;
        f.MultiplyPositive(1 + static_cast<long double>(excess), phase);
        for (int k = 1; k < n; ++k) f.MultiplyPositive(3, phase + k);
        const std::vector<double> roots = RootsOf(f.Rounded());
        ASSERT_EQ(roots.size(), count) << n << " " << excess;
        if (count == 0) continue;
        const double half = std::fabs(excess) < 20 * kEps ? 0.0 : std::acos(1 + excess);
        ExpectRoots(roots, {{phase - half, 2e-8}, {phase + half, 2e-8}}, "excess " + std::to_string(excess));
        EXPECT_EQ(Apart(roots[0], roots[1]) == 0, half == 0) << n << " " << excess;
      }
    }
    CNuTriagPolynomial repeated(12);
    repeated.Cos(0) = 1 + excess;
    repeated.Sin(12) = 1;
    EXPECT_EQ(RootsOf(repeated).size(), 12 * count) << excess;
  }
}

TEST(TriagEqu, CountsRootsOfHighMultiplicity) {
  for (int multiplicity = 1; multiplicity <= 9; ++multiplicity) {
    for (double u : {0.0, 2.0}) {
      Exact f;
      std::vector<Wanted> wanted(multiplicity, {u, multiplicity == 1 ? 1e-14 : 1e-7});
      for (int k = multiplicity; k > 1; k -= 2) f.MultiplyRoots(u, u);
      if (multiplicity % 2 == 1) {
        f.MultiplyRoots(u, u + 3);
        wanted.push_back({u + 3, 1e-14});
      }
      f.MultiplyPositive(1.5, 1);
      ExpectRoots(RootsOf(f.Rounded()), wanted, "multiplicity " + std::to_string(multiplicity));
    }
  }
  // Beyond what double coefficients can tell it must still end, and with an even number.
  Exact f;
  for (int k = 0; k < 60; ++k) f.MultiplyPositive(1, 5);
  EXPECT_EQ(RootsOf(f.Rounded()).size() % 2, 0u);
}

TEST(TriagEqu, KeepsCloseRootsApart) {
  for (double gap : {1e-1, 1e-3, 1e-5}) {
    Exact f;
    f.MultiplyRoots(1, 1.0L + gap);
    f.MultiplyRoots(6, 4);
    f.MultiplyPositive(1.2, 2);
    const double within = 50 * kEps / gap;
    ExpectRoots(RootsOf(f.Rounded()), {{1, within}, {1 + gap, within}, {4, 1e-14}, {6, 1e-14}}, "gap");
  }
}

TEST(TriagEqu, AnyInput) {
  CNuTriagPolynomial p(3);
  EXPECT_TRUE(RootsOf(p).empty());
  p.Cos(0) = 2;
  EXPECT_TRUE(RootsOf(p).empty() && RootsOf(CNuTriag(0, 0, 0)).empty());
  // The sine of 0 has no meaning; harmonics below rounding have no effect; the largest and smallest doubles have.
  p.Sin(0) = kNaN;
  p.Cos(0) = 1e-17;
  p.Cos(3) = 1e-18;
  for (double size : {1.0, 1e300, 5e-324 * 64}) {
    p.Sin(1) = size;
    ExpectRoots(RootsOf(p), {{0, 0}, {Nu_PI, kEps}}, "sine");
    p.Cos(0) = p.Cos(3) = 0;
  }
  ExpectRoots(RootsOf(CNuTriag(1.5e308, 1.5e308, -1.5e308)), {{0, 1e-15}, {Nu_PI / 2, 1e-15}}, "large");

  CNuTriagEqu equation;
  equation.Solve(CNuTriag(0, 1, 0));
  for (double bad : {kNaN, kInf, -kInf}) {
    p.Sin(2) = bad;
    EXPECT_EQ(FailureOf([&] { equation.Solve(p); }), "operation 46 calculation|CNuTriagEqu::Solve() [0,0]");
    EXPECT_EQ(FailureOf([&] { equation.Solve(CNuTriag(bad, 0, 0)); }),
              "operation 46 calculation|CNuTriagEqu::Solve() [0,0]");
  }
  const CNuTriagEqu copy(equation);
  EXPECT_EQ(copy.GetNumberRoots(), 2);
}

TEST(TriagEqu, MergesRootsAcrossTheSeam) {
  Exact f;
  f.MultiplyRoots(0.001L, -0.003L);
  f.MultiplyRoots(2, 2);
  CNuTriagEqu equation;
  equation.Solve(f.Rounded());
  EXPECT_EQ(equation.GetDistinctRoots(kNaN).GetSize(), 4);
  EXPECT_EQ(equation.GetDistinctRoots(0).GetSize(), 3);
  const CNuDoubleArray merged = equation.GetDistinctRoots(0.005);
  ASSERT_EQ(merged.GetSize(), 2);
  EXPECT_NEAR(merged[0], 2, 1e-7);
  EXPECT_NEAR(merged[1], Nu_2PI - 0.001, 1e-13);
  EXPECT_EQ(equation.GetDistinctRoots(kInf).GetSize(), 1);
  EXPECT_EQ(CNuTriagEqu().GetDistinctRoots(1).GetSize(), 0);
}

}  // namespace
