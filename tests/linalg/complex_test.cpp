#include <gtest/gtest.h>

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

void ExpectNear(const CNuComplex& c, double re, double im) {
  const double bound = 8 * kEps * std::hypot(re, im);
  EXPECT_NEAR(c.r(), re, bound);
  EXPECT_NEAR(c.i(), im, bound);
}

TEST(Complex, DividesAndTakesRootsWithoutOverflow) {
  const CNuComplex huge(3e300, 4e300), tiny(3e-300, -4e-300);
  ExpectNear(huge / huge, 1, 0);
  ExpectNear(CNuComplex(1, 2) / tiny * 1e-300, -0.2, 0.4);
  ExpectNear(CNuComplex(1, 2) / CNuComplex(0, 2), 1, -0.5);
  EXPECT_DOUBLE_EQ(huge.Modulus(), 5e300);
  EXPECT_FALSE(std::isfinite((CNuComplex(1, 1) / CNuComplex(0, 0)).r()));
  for (double re : {-4.0, 4.0, 0.0, 1e300, -1e-100, 3.0}) {
    for (double im : {0.0, -0.0, 5.0, -1e300, 1e-90}) {
      const CNuComplex root = CNuComplex(re, im).Sqrt();
      EXPECT_GE(root.r(), 0.0);
      ExpectNear(root * root, re, im);
      EXPECT_TRUE(root.i() > 0.0 || im != 0.0 || re >= 0.0);
    }
  }
}

TEST(Complex, PowersAndRootsInOrder) {
  ExpectNear(CNuComplex(1, -2).Power(3), -11, 2);
  const CNuComplexArray unit = CNuComplex(1, 0).Roots(4);
  const double expected[4][2] = {{1, 0}, {0, 1}, {-1, 0}, {0, -1}};
  ASSERT_EQ(unit.GetSize(), 4);
  for (int k = 0; k < 4; ++k) ExpectNear(unit[k], expected[k][0], expected[k][1]);
  const CNuComplex c(-3, 0.5);
  const CNuComplexArray roots = c.Roots(7);
  // The arguments reach 14 pi before the cosine.
  for (int k = 0; k < 7; ++k) EXPECT_TRUE(roots[k].Power(7).IsEqual(c, 14 * Nu_PI * 8 * kEps));
  EXPECT_EQ(CNuComplexPolar(2, 3).Power(2).Argument(), 6.0);
  EXPECT_DOUBLE_EQ(CNuComplexPolar(8, -1).Roots(3)[2].Argument(), (4 * Nu_PI - 1) / 3);
  // The modulus of the second is beyond the range of numbers, that of its roots is not.
  for (const double size : {1.2e308, 1.5e308}) {
    const CNuComplex large(size, -size), root = large.Roots(2)[0];
    ExpectNear(root / 1e154 * (root / 1e154) / (size / 1e308), 1, -1);
    ExpectNear(large.Roots(1)[0], size, -size);
  }
  EXPECT_DOUBLE_EQ(CNuComplex(1.2e308, -1.2e308).ToPolarForm().Argument(), 1.75 * Nu_PI);
  ExpectNear((CNuComplexPolar(6, 1) / CNuComplexPolar(3, 0.5) * CNuComplexPolar(1, -0.5)).ToCartesianForm(), 2, 0);
}

TEST(Complex, Predicates) {
  const CNuComplex zero, c(1e-9, 1);
  EXPECT_TRUE(zero.IsZero(1e-12) && zero.IsReal(1e-12) && c.IsImaginary(1e-8) && c.IsEqual({0, 1}, 1e-8));
  EXPECT_FALSE(zero.IsImaginary(1e-12) || c.IsImaginary(1e-9) || c.IsReal(1) || c.IsEqual({0, 1}, 1e-9));
  EXPECT_FALSE(CNuComplex(kNaN, 0).IsZero(1));
}

TEST(Complex, Failures) {
  CNuComplex c(1, 1);
  const CNuComplex zero;
  const CNuComplexPolar huge(1e301, 0), p(1, 1), tiny(1e-301, 0);
  const std::vector<std::pair<std::string, std::function<void()>>> cases = {
      {"construction 5 modulus|CNuComplexPolar [0,0]", [] { CNuComplexPolar(kNaN, 0); }},
      {"construction 5 modulus|CNuComplexPolar [0,0]", [&] { zero.ToPolarForm(); }},
      {"construction 5 modulus|CNuComplexPolar [0,0]", [&] { zero.Roots(2); }},
      {"construction 5 modulus|CNuComplexPolar [0,0]", [&] { tiny.Roots(2); }},
      {"construction 5 modulus|CNuComplexPolar [0,0]", [] { CNuComplex(1.7e308, 1.7e308).ToPolarForm(); }},
      {"operation 7 calculation|CNuComplexPolar::Power() [0,0]", [] { CNuComplex(1.7e308, 1.7e308).Power(2); }},
      {"operation 7 operator*|CNuComplex [0,0]", [&] { c * 1e301; }},
      {"operation 7 operator*=|CNuComplex [0,0]", [&] { c *= kNaN; }},
      {"operation 6 operator/|CNuComplex [0,0]", [&] { c / 0.0; }},
      {"operation 6 operator/=|CNuComplex [0,0]", [&] { c /= kNaN; }},
      {"operation 7 operator*|CNuComplexPolar [0,0]", [&] { p* huge; }},
      {"operation 6 operator/|CNuComplexPolar [0,0]", [&] { p / tiny; }},
      {"operation 2 calculation|CNuComplex::Power() [0,0]", [&] { c.Power(0); }},
      {"operation 2 calculation|CNuComplex::Roots() [1,0]", [&] { zero.Roots(0); }},
      {"operation 7 calculation|CNuComplexPolar::Power() [0,0]", [&] { huge.Power(0); }},
      {"operation 2 calculation|CNuComplexPolar::Power() [0,0]", [&] { p.Power(0); }},
      {"operation 2 calculation|CNuComplexPolar::Roots() [0,0]", [&] { p.Roots(-1); }},
      {"operation 2 calculation|CNuComplexPolar::Roots() [0,0]", [&] { tiny.Roots(0); }},
      {"operation 8 First operator[]|CNuComplexArray [0,0]", [] { CNuComplexArray(0).First(); }},
      {"operation 8 Last operator[]|CNuComplexPolarArray::Last() [0,0]", [] { CNuComplexPolarArray(0).Last(); }},
      {"operation 3 operation|CNuComplexMatrix::Element() [0,2]", [] { CNuComplexMatrix(2, 3).Element(0, 3); }},
      {"memory 301 |CNuComplexMatrix::Init() [0,0]", [] { CNuComplexMatrix(INT_MAX, INT_MAX); }},
      {"operation 3 element operator[]|CNuComplexVector [0,1]", [] { CNuComplexVector(2)[2]; }},
      {"operation 5 operation|CNuComplexVector [0,0]", [] { CNuComplexVector(CNuVector(2), CNuVector(3)); }},
  };
  for (const auto& [failure, call] : cases) EXPECT_EQ(FailureOf(call), failure);
  EXPECT_TRUE(c.r() == 1 && c.i() == 1);
}

// Over the operations below the geometry: null is skipped, and of two outputs that are one object the later holds.
TEST(Outputs, MayBeNullOrOneObject) {
  CNuVector v(3, 0, 4), y;
  CNuComplexMatrix square = CNuComplexMatrix::Identity(3) * CNuComplex(0, 2), product(square), q(1, 1);
  const CNuMatrix real = 2.0 * CNuMatrix::Identity(3);
  double one = 0.0;
  CNuComplex(1, 2).GetData(nullptr, nullptr);
  CNuComplex(1, 2).GetData(&one, &one);
  EXPECT_EQ(one, 2.0);
  CNuComplexPolar(1, 3).GetData(nullptr, &one);
  EXPECT_EQ(one, 3.0);
  CNuInterval(4, 5, 0, 0).GetBounds(nullptr, &one);
  EXPECT_EQ(one, 5.0);
  CNuTriag(6, 7, 8).GetData(nullptr, nullptr, &one);
  EXPECT_EQ(one, 8.0);
  NuCosSin(0.5, nullptr, nullptr);
  NuCosSin(0.0, &one, &one);
  EXPECT_EQ(one, 0.0);
  v.Sort(static_cast<CNuIntArray*>(nullptr));
  v.OrthonormalX(nullptr);
  v.OrthonormalXY(nullptr, &y);
  EXPECT_NEAR(v.Magnitude() + y.Magnitude(), 2.0, 4 * kEps);
  v.OrthonormalXY(&v, &y);
  EXPECT_NEAR(v % y, 0.0, kEps);
  product.Schur(&product, &product);
  square.Schur(nullptr, &q);
  EXPECT_TRUE(product.IsEqual(q, 1e-300) && q.Element(0, 0).i() == 2.0);
  CNuMatrix last(1, 1);
  real.LUD2(&last, &last, nullptr);
  EXPECT_EQ(last.Trace(), 6.0);
}

TEST(Complex, VectorsAndMatricesFromRealOnes) {
  CNuMatrix m(2, 3);
  m.Element(1, 2) = 7;
  CNuComplexMatrix c = m;
  c.Element(0, 1) = {1, 2};
  const CNuComplexMatrix copy = c;
  EXPECT_TRUE(copy.GetRowSize() == 2 && copy.GetColumnSize() == 3 && copy.GetType() == CNuObject::NuTypeComplexMatrix);
  EXPECT_TRUE(copy.Element(1, 2).IsEqual({7, 0}, 1e-300) && copy.Element(0, 1).i() == 2);
  CNuComplexVector v = CNuVector(1, 2, 3);
  v = CNuComplexVector(CNuVector(1, 2, 3), CNuVector(4, 5, 6));
  EXPECT_TRUE(v[2].IsEqual({3, 6}, 1e-300) && v.GetType() == CNuObject::NuTypeComplexVector);
}

}  // namespace
