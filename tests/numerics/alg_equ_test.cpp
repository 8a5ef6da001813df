#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

using Numbers = std::vector<double>;

CNuPolynomial Polynomial(const Numbers& c) {
  CNuPolynomial p(static_cast<int>(c.size()) - 1);
  std::copy(c.begin(), c.end(), p.GetData());
  return p;
}
CNuAlgEqu Solved(const Numbers& c) {
  CNuAlgEqu equation;
  equation.Solve(Polynomial(c));
  return equation;
}
Numbers RealRoots(const CNuAlgEqu& equation) {
  const CNuDoubleArray roots = equation.GetRealRoots();
  return {roots.GetData(), roots.GetData() + roots.GetSize()};
}

Numbers Product(const Numbers& a, const Numbers& b) {
  Numbers product(a.size() + b.size() - 1);
  for (std::size_t i = 0; i < a.size(); ++i)
    for (std::size_t j = 0; j < b.size(); ++j) product[i + j] += a[i] * b[j];
  return product;
}
Numbers FromRoots(const Numbers& roots) {
  Numbers c = {1.0};
  for (const double r : roots) c = Product(c, {-r, 1.0});
  return c;
}
Numbers Pair(double re, double im) {
  return {re * re + im * im, -2.0 * re, 1.0};
}

// |p(x)| in units of n eps sum |c_i| |x|^i.
double Residual(const std::vector<CNuComplex>& c, double re, double im) {
  long double pRe = 0, pIm = 0, sum = 0;
  const long double size = std::hypot(static_cast<long double>(re), static_cast<long double>(im));
  for (std::size_t i = c.size(); i-- > 0;) {
    const long double next = pRe * re - pIm * im + c[i].r();
    pIm = pRe * im + pIm * re + c[i].i();
    pRe = next;
    sum = sum * size + std::hypot(c[i].r(), c[i].i());
  }
  if (pRe == 0 && pIm == 0) return 0.0;
  return static_cast<double>(std::hypot(pRe, pIm) / sum) / (kEps * static_cast<double>(c.size() - 1));
}

// As many roots as the degree says, real ones ascending, complex ones in exact pairs (for real coefficients), and every
// one a root to rounding. Returns the largest residual.
double Check(const CNuAlgEqu& equation, std::vector<CNuComplex> c, bool paired) {
  while (c.size() > 1 && c.back().IsZero(NuGetZero())) c.pop_back();
  const Numbers real = RealRoots(equation);
  const CNuComplexArray complex = equation.GetComplexRoots();
  EXPECT_EQ(real.size() + static_cast<std::size_t>(complex.GetSize()), c.size() - 1);
  EXPECT_TRUE(std::is_sorted(real.begin(), real.end()));
  double worst = 0.0;
  for (const double x : real) worst = std::max(worst, Residual(c, x, 0.0));
  for (int i = 0; i < complex.GetSize(); ++i) {
    worst = std::max(worst, Residual(c, complex[i].r(), complex[i].i()));
    EXPECT_NE(complex[i].i(), 0.0);
    EXPECT_TRUE(i == 0 || complex[i - 1].r() <= complex[i].r());
    if (!paired || i % 2 == 0) continue;
    EXPECT_EQ(complex[i - 1].r(), complex[i].r());
    EXPECT_EQ(complex[i - 1].i(), -complex[i].i());
  }
  EXPECT_LE(worst, 64.0);
  return worst;
}
double Check(const CNuAlgEqu& equation, const Numbers& c) {
  std::vector<CNuComplex> complex;
  for (const double x : c) complex.emplace_back(x, 0.0);
  return Check(equation, complex, true);
}
CNuComplexArray ArrayOf(const Numbers& re, const Numbers& im) {
  CNuComplexArray array(static_cast<int>(re.size()));
  for (std::size_t i = 0; i < re.size(); ++i) array.Add(CNuComplex(re[i], im[i]));
  return array;
}

// Of either sign, over so many decades.
double Over(Random& random, double decades) {
  return (random.Below(2) == 0 ? 1 : -1) * std::pow(10.0, random.Uniform(-0.5, 0.5) * decades);
}

constexpr int kKinds = 8;
Numbers RandomPolynomial(int kind, int degree, Random& random) {
  Numbers c(static_cast<std::size_t>(degree) + 1);
  const double middle = random.Uniform(-3, 3), radius = std::pow(10.0, random.Uniform(-9, -1));
  switch (kind) {
    case 0:
      for (double& x : c) x = Over(random, 12);
      return c;
    case 1:  // many missing
      for (double& x : c) x = random.Below(3) == 0 ? Over(random, 12) : 0.0;
      c.back() = Over(random, 12);
      return c;
    case 2:  // leading coefficients near 0, or so near that they do not count
      for (double& x : c) x = Over(random, 12);
      c.back() = std::pow(10.0, random.Below(3) == 0 ? -305 : random.Uniform(-250, -10));
      return c;
    case 3:  // all of very different size
      for (double& x : c) x = Over(random, 300);
      return c;
    default:
      break;
  }
  c = {1.0};
  while (static_cast<int>(c.size()) <= degree) {
    const bool pair = static_cast<int>(c.size()) < degree && random.Below(2) == 0;
    const double re = Over(random, 3), im = Over(random, 3);
    const double nearRe = middle + radius * random.Uniform(-1, 1);
    if (kind == 4) c = Product(c, pair ? Pair(re, im) : Numbers{-re, 1.0});
    if (kind == 5) c = Product(c, pair ? Pair(nearRe, radius * random.Uniform(0, 1)) : Numbers{-nearRe, 1.0});
    if (kind == 6) c = Product(c, random.Below(3) == 0 ? Numbers{0.0, 1.0} : Numbers{-re, 1.0});
    if (kind == 7) c = Product(c, {2.0 - random.Below(5), 1.0});
  }
  return c;
}

TEST(AlgEqu, RootsOfRandomPolynomialsSatisfyTheirEquation) {
  for (int kind = 0; kind < kKinds; ++kind) {
    Random random(static_cast<unsigned>(kind) + 1);
    for (int k = 0; k < 1250; ++k) {
      SCOPED_TRACE("kind " + std::to_string(kind) + ", polynomial " + std::to_string(k));
      const Numbers c = RandomPolynomial(kind, 1 + random.Below(30), random);
      Check(Solved(c), c);
      if (k % 5 != 0) continue;
      CNuAlgEqu equation;
      equation.Solve(ArrayOf(c, Numbers(c.size())));
      Check(equation, c);
      Numbers im(c.size());
      std::vector<CNuComplex> both;
      for (std::size_t i = 0; i < c.size(); ++i) {
        im[i] = Over(random, 6);
        both.emplace_back(c[i], im[i]);
      }
      equation.Solve(ArrayOf(c, im));
      Check(equation, both, false);
    }
  }
}

// What the rounding of the coefficients does to a root.
double ErrorOfRoot(const Numbers& c, double x) {
  double sum = 0.0;
  for (std::size_t i = 0; i < c.size(); ++i) sum += std::fabs(c[i] * std::pow(x, i));
  return 4.0 * kEps * sum / std::fabs(Polynomial(c).DerivativeAt(x));
}

TEST(AlgEqu, SeparateRealRootsAreAllFound) {
  Random random(3);
  for (int k = 0; k < 2000; ++k) {
    Numbers roots;
    const int degree = 1 + k % 8;
    for (int i = 0; i < degree; ++i)
      roots.push_back((random.Below(2) == 0 ? 1 : -1) * (1.0 + i) * random.Uniform(0.8, 1.2));
    Numbers c = FromRoots(roots);
    if (k % 3 == 0) c = Product(c, Pair(random.Uniform(-5, 5), random.Uniform(1, 5)));
    std::sort(roots.begin(), roots.end());
    const Numbers found = RealRoots(Solved(c));
    ASSERT_EQ(found.size(), roots.size());
    for (std::size_t i = 0; i < roots.size(); ++i) EXPECT_NEAR(found[i], roots[i], ErrorOfRoot(c, roots[i]));
  }
}

TEST(AlgEqu, ExactRootsComeExactly) {
  EXPECT_EQ(RealRoots(Solved({1, -2, 1})), (Numbers{1, 1}));
  EXPECT_EQ(Solved({1, -2, 1}).GetDistinctRealRoots().GetSize(), 1);
  EXPECT_EQ(RealRoots(Solved({0, -1, 0, 1})), (Numbers{-1, 0, 1}));
  EXPECT_EQ(RealRoots(Solved({0, 0, 0, 2})), (Numbers{0, 0, 0}));
  EXPECT_EQ(RealRoots(Solved({-6, 11, -6, 1})), (Numbers{1, 2, 3}));
  EXPECT_EQ(RealRoots(Solved({24, -50, 35, -10, 1})), (Numbers{1, 2, 3, 4}));
  EXPECT_EQ(RealRoots(Solved({0, -4, 0, 5, 0, -1})), (Numbers{-2, -1, 0, 1, 2}));
  // The double root in the middle and at the side of the others.
  EXPECT_EQ(RealRoots(Solved(FromRoots({0.5, 2, 2, 4}))), (Numbers{0.5, 2, 2, 4}));
  EXPECT_EQ(RealRoots(Solved(FromRoots({2, 2, 3, 5}))), (Numbers{2, 2, 3, 5}));
  EXPECT_EQ(RealRoots(Solved(Product({4, -4, 1}, {5, 0, 1}))), (Numbers{2, 2}));
  for (const Numbers& c : {Numbers{1, 0, 1}, Numbers{-1, 0, 0, 0, 1}, Numbers{1, 0, 3, 0, 3, 0, 1}}) {
    const CNuComplexArray roots = Solved(c).GetComplexRoots();
    ASSERT_EQ(roots.GetSize(), c.size() == 7 ? 6 : 2);
    EXPECT_EQ(roots[0].r(), 0.0);
    EXPECT_TRUE(c.size() == 7 || roots[0].i() == 1.0);
  }
}

// Parts below the chop that are no rounding stay.
TEST(AlgEqu, SmallRootsAreNotLost) {
  for (const int more : {0, 1, 4}) {
    Numbers others;
    for (int i = 0; i < more; ++i) others.push_back(2.0 + i);
    const Numbers rest = FromRoots(others);
    EXPECT_NEAR(RealRoots(Solved(Product(rest, {-1e-7, 1.0}))).front() * 1e7, 1.0, 1e-13);
    const CNuComplexArray near = Solved(Product(rest, Pair(1e-7, 1.0))).GetComplexRoots();
    ASSERT_EQ(near.GetSize(), 2);
    EXPECT_NEAR(near[0].r(), 1e-7, 1e-14);
    const CNuComplexArray both = Solved(Product(rest, Pair(1e-9, 1e-8))).GetComplexRoots();
    ASSERT_EQ(both.GetSize(), 2);
    EXPECT_NEAR(both[0].r() * 1e9, 1.0, 1e-6);
    EXPECT_NEAR(both[0].i() * 1e8, 1.0, 1e-6);
  }
}

// Where two circles or conics nearly touch: r - d and r + d beside two other roots, of any kind.
TEST(AlgEqu, NearlyDoubleRootsOfQuartics) {
  Random random(8);
  for (int k = 0; k < 3000; ++k) {
    const double r = random.Uniform(-2, 2), d = std::pow(10.0, random.Uniform(-9, -2));
    const Numbers others = k % 2 == 0 ? Pair(random.Uniform(-2, 2), random.Uniform(0.5, 2))
                                      : FromRoots({r + random.Uniform(1, 3), r - random.Uniform(1, 3)});
    const Numbers c = Product(others, FromRoots({r - d, r + d}));
    const CNuAlgEqu equation = Solved(c);
    Check(equation, c);
    if (d < 1e-6) continue;
    const double error = ErrorOfRoot(c, r + d) + ErrorOfRoot(c, r - d);
    int found = 0;
    for (const double x : RealRoots(equation)) found += std::fabs(std::fabs(x - r) - d) < error;
    EXPECT_EQ(found, 2) << "r " << r << " d " << d;
  }
}

TEST(AlgEqu, CoefficientsOfAnySize) {
  for (const double unit : {1e-150, 1e-60, 1e60, 1e150}) {
    for (int degree = 1; degree <= 6; ++degree) {
      Numbers roots;
      for (int i = 0; i < degree; ++i) roots.push_back((i % 2 == 0 ? 1.0 : -1.0) * (i + 1.0));
      Numbers c = FromRoots(roots);
      for (double& x : c) x *= unit;
      std::sort(roots.begin(), roots.end());
      const Numbers found = RealRoots(Solved(c));
      ASSERT_EQ(found.size(), roots.size());
      for (std::size_t i = 0; i < roots.size(); ++i) EXPECT_NEAR(found[i], roots[i], 1e-14 * degree * degree);
    }
  }
  // The products of the coefficients leave the range.
  const Numbers extremes = RealRoots(Solved({1e-150, -1e150, 1e-150}));
  EXPECT_DOUBLE_EQ(extremes.at(0), 1e-300);
  EXPECT_DOUBLE_EQ(extremes.at(1), 1e300);
  const Numbers wide = {1e-150, 1.0, 1e150, 1.0, -1e-150};
  Check(Solved(wide), wide);
  // A root that no double can hold is left out.
  EXPECT_EQ(RealRoots(Solved({1e-9, 1e12, 1e-299})).size(), 1U);
}

TEST(AlgEqu, WilkinsonsPolynomialAndDegree100) {
  Numbers integers;
  for (int i = 1; i <= 20; ++i) integers.push_back(i);
  const Numbers wilkinson = FromRoots(integers);
  EXPECT_LE(Check(Solved(wilkinson), wilkinson), 1.0);
  Random random(9);
  Numbers c(101), unity(101);
  for (double& x : c) x = random.Uniform(-1, 1) + random.Uniform(-1, 1) + random.Uniform(-1, 1);
  EXPECT_LE(Check(Solved(c), c), 1.0);
  unity[0] = -1.0;
  unity[100] = 1.0;
  EXPECT_LE(Check(Solved(unity), unity), 1.0);
  EXPECT_EQ(RealRoots(Solved(unity)), (Numbers{-1.0, 1.0}));
}

TEST(AlgEqu, WhatHasNoRootsAndWhatKeepsThem) {
  CNuAlgEqu equation;
  EXPECT_EQ(equation.GetType(), CNuObject::NuTypeAlgEqu);
  EXPECT_EQ(equation.GetRealRoots().GetSize() + equation.GetComplexRoots().GetSize(), 0);
  EXPECT_EQ(equation.GetDistinctRealRoots().GetSize(), 0);
  const auto count = [&] { return equation.GetNumberRealRoots() + 10 * equation.GetNumberComplexRoots(); };
  for (const Numbers& none : {Numbers{3.0}, Numbers{0.0}, Numbers{3.0, 0.0, 1e-301}, Numbers{0, 0, 0}}) {
    equation.Solve(Polynomial({-6, 11, -12, 12, -6, 1}));
    EXPECT_EQ(count(), 23);
    equation.Solve(Polynomial(none));
    EXPECT_EQ(count(), 0);
  }
  equation.Solve(Polynomial({-1, 0, 1}));
  // A complex list without an equation in it solves nothing, and hosts rely on the roots that are there.
  equation.Solve(CNuComplexArray(0));
  equation.Solve(ArrayOf({1.0, 0.0, 1e-301}, {0.0, 0.0, 0.0}));
  EXPECT_EQ(count(), 2);
  for (const double bad : {kNaN, kInf}) {
    const std::string failure = "operation 46 calculation|CNuAlgEqu::Solve() [0,0]";
    EXPECT_EQ(FailureOf([&] { equation.Solve(Polynomial({1.0, bad, 1.0})); }), failure);
    EXPECT_EQ(FailureOf([&] { equation.Solve(ArrayOf({1.0, 1.0}, {0.0, bad})); }), failure);
  }
  EXPECT_EQ(count(), 2);
  equation.Solve(ArrayOf({0.0, 0.0, 0.0, -1.0, 1.0}, {1.0, 0.0, 0.0, 1.0, 0.0}));
  const CNuAlgEqu copy = equation;
  CNuAlgEqu moved = std::move(equation);
  equation = copy;
  EXPECT_EQ(count(), 40);
  EXPECT_EQ(moved.GetComplexRoots()[3].i(), copy.GetComplexRoots()[3].i());
}

TEST(AlgEqu, AnyTolerancesEnd) {
  const double tol = NuGetTol(), sqrtTol = NuGetSqrtTol(), zero = NuGetZero(), large = NuGetLarge();
  const double lengthTol = NuGetLengthTol();
  for (const double value : {0.0, -1.0, 1e-3, kInf, -kInf, kNaN}) {
    for (int which = 0; which < 5; ++which) {
      if (which == 0) NuSetTol(value);
      if (which == 1) NuSetSqrtTol(value);
      if (which == 2) NuSetZero(value);
      if (which == 3) NuSetLarge(value);
      if (which == 4) NuSetLengthTol(value);
      for (int degree : {1, 2, 3, 4, 5, 12, 30}) {
        Random random(static_cast<unsigned>(degree));
        const Numbers c = RandomPolynomial(4, degree, random);
        const CNuAlgEqu equation = Solved(c);
        EXPECT_LE(equation.GetNumberRealRoots() + equation.GetNumberComplexRoots(), degree);
        if (which == 0 && value == kInf) {
          EXPECT_EQ(equation.GetNumberRealRoots(), degree);
        } else if (which != 2) {
          Check(equation, c);
        }
      }
      NuSetTol(tol);
      NuSetSqrtTol(sqrtTol);
      NuSetZero(zero);
      NuSetLarge(large);
      NuSetLengthTol(lengthTol);
    }
  }
}

// What a host sets above the default says which imaginary parts are rounding to it.
TEST(AlgEqu, ImaginaryPartsBelowTheToleranceAreReal) {
  const double tol = NuGetTol();
  for (const Numbers& others : {Numbers{}, Numbers{5}, Numbers{-3, 5}, Numbers{-3, 5, 7, 9}}) {
    const Numbers c = Product(FromRoots(others), Pair(1.0, 1e-4));
    const int count = static_cast<int>(others.size());
    for (const double set : {tol, 0.9e-4, 1.1e-4}) {
      const int real = set > 1e-4 ? count + 2 : count;
      NuSetTol(set);
      const CNuAlgEqu equation = Solved(c);
      EXPECT_EQ(equation.GetNumberRealRoots(), real);
      EXPECT_EQ(equation.GetNumberComplexRoots(), count + 2 - real);
      for (const double x : RealRoots(equation)) EXPECT_NEAR(std::fmod(std::fabs(x), 2.0), 1.0, 1e-7);
      CNuAlgEqu complex;
      complex.Solve(ArrayOf({-1.0, 1.0}, {-1e-4, 0.0}));
      EXPECT_EQ(complex.GetNumberRealRoots(), set > 1e-4 ? 1 : 0);
    }
  }
  NuSetTol(tol);
}

}  // namespace
