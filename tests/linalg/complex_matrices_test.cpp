#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <utility>
#include <vector>

#include "nu/linalg/complex_matrix.h"
#include "nu/linalg/complex_vector.h"
#include "support/failures.h"
#include "support/matrix_clouds.h"

namespace {

using namespace nu::test;

using Factor = CNuComplexMatrix;
constexpr double kExactly = std::numeric_limits<double>::denorm_min();  // only equal numbers differ by less
const CNuComplex kI(0, 1);

double Largest(const Factor& m) {
  return std::max(LargestElement(m.RealPart()), LargestElement(m.ImaginaryPart()));
}

double RoundingsBetween(const Factor& a, const Factor& b) {
  const double size = std::max(Largest(b), std::numeric_limits<double>::min());
  return Largest(a - b) / (std::max(a.GetRowSize(), a.GetColumnSize()) * kEps * size);
}

void ExpectUnitary(const Factor& q) {
  const Factor unit = Factor::Identity(q.GetColumnSize());
  EXPECT_LT(RoundingsBetween(q.ConjugateTranspose() * q, unit), kRoundings);
}

Factor UniformComplex(Random& random, int rows, int columns) {
  const CNuMatrix re = UniformMatrix(random, rows, columns);
  return {re, UniformMatrix(random, rows, columns)};
}

Factor Unitary(Random& random, int n) {
  Factor q(n, n);
  UniformComplex(random, n, n).QR(&q, nullptr);
  return q;
}

// Exact zeros below the diagonal, or as many diagonals further down.
void ExpectZerosBelow(const Factor& m, int diagonals) {
  for (int j = 0; j < m.GetColumnSize(); ++j)
    for (int i = j + diagonals + 1; i < m.GetRowSize(); ++i) EXPECT_TRUE(m.Element(i, j).IsZero(kExactly));
}

void CheckSquare(const Factor& a) {
  const int n = a.GetRowSize();
  const double unit = std::ldexp(1.0, -std::clamp(std::ilogb(Largest(a)), -900, 900));
  const Factor scaled = a * unit;
  Factor q(1, 1), h(1, 1), t(a);
  a.Hessenberg(&q, &h);
  ExpectUnitary(q);
  ExpectZerosBelow(h, 1);
  EXPECT_LT(RoundingsBetween(q * (h * unit) * q.ConjugateTranspose(), scaled), kRoundings);
  t.Schur(&q, &t);
  ExpectUnitary(q);
  ExpectZerosBelow(t, 0);
  EXPECT_LT(RoundingsBetween(q * (t * unit) * q.ConjugateTranspose(), scaled), kRoundings);
  // The values alone take fewer operations on the same numbers.
  const CNuComplexVector values = a.EigenValues();
  Factor only(1, 1);
  a.Schur(nullptr, &only);
  EXPECT_TRUE(only.IsEqual(t, kExactly));
  for (int i = 0; i < n; ++i) {
    EXPECT_TRUE(i == 0 || values[i - 1].r() <= values[i].r());
    int found = 0;
    for (int j = 0; j < n; ++j) found += values[i].IsEqual(t.Element(j, j), kExactly) != NuFalse;
    EXPECT_GT(found, 0);
  }
}

TEST(ComplexDecompositions, SquareMatricesOfAllKinds) {
  for (const int n : {1, 2, 3, 4, 7, 8, 9, 16, 17, 33, 100}) {
    for (const Kind kind : kAllKinds) {
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " n " + std::to_string(n));
      Random random(static_cast<unsigned>(n) + 3);
      const CNuMatrix re = MatrixOf(kind, random, n, n);
      const Factor a(re, MatrixOf(kind, random, n, n));
      CheckSquare(a);
      if (n > 33) continue;
      CheckSquare(a + a.ConjugateTranspose());
      CheckSquare(a - a.ConjugateTranspose());
      CheckSquare(Factor(re));
    }
  }
}

TEST(ComplexDecompositions, DefectiveRepeatedAndCyclicMatrices) {
  for (const int n : {2, 3, 4, 9, 24, 40, 100}) {
    SCOPED_TRACE("n " + std::to_string(n));
    Random random(static_cast<unsigned>(n));
    Factor zero(n, n), jordan(n, n), nilpotent(n, n), cycle(n, n), companion(n, n), repeated(n, n), ones(n, n);
    for (int i = 0; i < n; ++i) {
      jordan.Element(i, i) = {3, -1};
      repeated.Element(i, i) = CNuComplex(1, 2) * (1.0 + i / 3);
      cycle.Element(i, (i + 1) % n) = {1, 0};
      companion.Element(0, i) = {-1, 0};
      if (i > 0) companion.Element(i, i - 1) = jordan.Element(i - 1, i) = nilpotent.Element(i - 1, i) = {1, 0};
      for (int j = 0; j < n; ++j) ones.Element(i, j) = {1, 0};
    }
    const Factor u = Unitary(random, n);
    const auto hidden = [&u](const Factor& m) { return u * m * u.ConjugateTranspose(); };
    for (const Factor& a : {zero, Factor::Identity(n) * kI, jordan, jordan.Transpose(), hidden(jordan), nilpotent,
                            nilpotent.Transpose(), hidden(nilpotent), cycle, cycle * kI, hidden(cycle), companion,
                            companion.Transpose(), repeated, hidden(repeated), u, u + u, ones, ones + jordan}) {
      CheckSquare(a);
    }
    EXPECT_TRUE(zero.EigenValues().IsZero(kExactly));
    EXPECT_TRUE(u.IsUnitary(1e-13) && hidden(cycle).IsUnitary(1e-12));
    // The roots of unity, and multiple values in a normal matrix, are as well conditioned as can be.
    const CNuComplexVector roots = hidden(cycle).EigenValues();
    for (int i = 0; i < n; ++i) EXPECT_NEAR(roots[i].Modulus(), 1.0, kRoundings * n * kEps);
    const CNuComplexVector values = hidden(repeated).EigenValues();
    for (int i = 0; i < n; ++i) {
      const CNuComplex expected = CNuComplex(1, 2) * (1.0 + i / 3);
      EXPECT_TRUE(values[i].IsEqual(expected, kRoundings * n * n * kEps));
    }
  }
}

TEST(ComplexDecompositions, SmallIntegersWithFewDifferentElements) {
  Random random(5);
  for (int k = 0; k < 3000; ++k) {
    const int n = 2 + k % 5;
    Factor a(n, n);
    for (int i = 0; i < n; ++i)
      for (int j = 0; j < n; ++j) a.Element(i, j) = {random.Below(3) - 1.0, k % 2 == 0 ? 0.0 : random.Below(3) - 1.0};
    CheckSquare(a);
  }
}

TEST(ComplexDecompositions, TriangleOfAnyShape) {
  const std::pair<int, int> shapes[] = {{1, 1}, {1, 5}, {5, 1}, {3, 3}, {9, 4}, {4, 9}, {17, 16}, {100, 30}, {30, 100}};
  for (const auto& [rows, columns] : shapes) {
    for (const Kind kind : kAllKinds) {
      SCOPED_TRACE(std::to_string(rows) + " x " + std::to_string(columns));
      Random random(static_cast<unsigned>(rows + 7 * columns));
      const CNuMatrix re = MatrixOf(kind, random, rows, columns);
      const Factor a(re, MatrixOf(kind, random, rows, columns));
      const double unit = std::ldexp(1.0, -std::ilogb(Largest(a)));
      Factor q(a), r(1, 1);
      q.QR(&q, &r);
      ASSERT_TRUE(q.GetRowSize() == rows && r.GetRowSize() == rows && r.GetColumnSize() == columns);
      ExpectUnitary(q);
      ExpectZerosBelow(r, 0);
      EXPECT_LT(RoundingsBetween(q * (r * unit), a * unit), kRoundings);
      for (int k = 0; k < std::min(rows, columns); ++k)
        EXPECT_TRUE(r.Element(k, k).r() >= 0.0 && r.Element(k, k).i() == 0.0);
    }
  }
}

TEST(ComplexDecompositions, FailuresAndElementsThatAreNotFinite) {
  const Factor wide(2, 3);
  EXPECT_EQ(FailureOf([&] { wide.Hessenberg(nullptr, nullptr); }),
            "operation 16 calculation|CNuComplexMatrix::Hessenberg() [0,0]");
  EXPECT_EQ(FailureOf([&] { wide.Schur(nullptr, nullptr); }),
            "operation 16 calculation|CNuComplexMatrix::Schur() [0,0]");
  EXPECT_EQ(FailureOf([&] { wide.EigenValues(); }), "operation 16 calculation|CNuComplexMatrix::EigenValues() [0,0]");
  for (const double bad : {kNaN, kInf, -kInf}) {
    for (const int n : {1, 4, 20}) {
      Factor a = Factor::Identity(n), q(1, 2), t(1, 2);
      a.Element(n - 1, 0) = {0, bad};
      const std::pair<std::string, std::function<void()>> cases[] = {{"QR", [&] { a.QR(&q, &t); }},
                                                                     {"Hessenberg", [&] { a.Hessenberg(&q, &t); }},
                                                                     {"Schur", [&] { a.Schur(&q, &t); }},
                                                                     {"EigenValues", [&] { a.EigenValues(); }}};
      for (const auto& [name, call] : cases)
        EXPECT_EQ(FailureOf(call), "operation 46 calculation|CNuComplexMatrix::" + name + "() [0,0]");
      EXPECT_EQ(q.GetColumnSize() + t.GetColumnSize(), 4);
    }
  }
  Factor gone = wide;
  const Factor taken = std::move(gone);
  EXPECT_EQ(FailureOf([&] { gone.QR(nullptr, nullptr); }), "operation 16 calculation|CNuComplexMatrix::QR() [0,0]");
}

TEST(ComplexMatrix, ProductsSumsAndPredicates) {
  for (const int n : {1, 2, 3, 5, 8, 17, 60}) {
    Random random(static_cast<unsigned>(n));
    const Factor a = UniformComplex(random, n, n + 2), b = UniformComplex(random, n + 2, n);
    const Factor c = a * b;
    for (int i = 0; i < n; ++i) {
      for (int j = 0; j < n; ++j) {
        CNuComplex sum;
        for (int k = 0; k < n + 2; ++k) sum += a.Element(i, k) * b.Element(k, j);
        EXPECT_TRUE(c.Element(i, j).IsEqual(sum, 4 * (n + 2) * kEps));
      }
    }
    // (a b) x = a (b x), and a row from the left.
    const CNuComplexVector x(UniformMatrix(random, n, 1).GetColumnVector(0),
                             UniformMatrix(random, n, 1).GetColumnVector(0));
    EXPECT_TRUE((c * x).IsEqual(a * (b * x), 1e-13 * n * n));
    EXPECT_TRUE((x * a).IsEqual(a.Transpose() * x, 1e-14 * n));
    EXPECT_TRUE((a * b).ConjugateTranspose().IsEqual(b.ConjugateTranspose() * a.ConjugateTranspose(), 1e-13 * n));
    EXPECT_TRUE((c + c - c * 2.0).IsZero(kExactly) && (-c + 1.0 * c).IsZero(kExactly));
    EXPECT_TRUE((c * kI / kI).IsEqual(c, 1e-14 * n) && (kI * c * CNuComplex(0, -2) / 2.0).IsEqual(c, kExactly));
    EXPECT_TRUE(Factor(c.RealPart(), c.ImaginaryPart()).IsEqual(c, kExactly));
    const Factor hermitian = c + c.ConjugateTranspose();
    EXPECT_TRUE(hermitian.IsHermitian(kExactly) && !c.IsHermitian(1e-3) && !(hermitian * kI).IsHermitian(1e-3));
    EXPECT_TRUE(Unitary(random, n).IsUnitary(1e-13 * n) && !hermitian.IsUnitary(1e-3));
  }
  const Factor wide(2, 3);
  EXPECT_TRUE(wide.IsZero(kExactly) && !wide.IsHermitian(1) && !wide.IsUnitary(1) && !wide.IsEqual(Factor(3, 2), 1));
  EXPECT_FALSE(Factor(CNuMatrix::Identity(2) * kNaN).IsZero(1));
  // A scalar that is an element of the matrix itself keeps its value until the end.
  Factor m = Factor::Identity(2) * CNuComplex(0, 2);
  m *= m.Element(0, 0);
  EXPECT_TRUE(m.IsEqual(Factor::Identity(2) * -4.0, kExactly));
  m /= m.Element(1, 1);
  EXPECT_TRUE(m.IsEqual(Factor::Identity(2), kExactly));
}

// What the parts give, as far as real matrices have it.
TEST(ComplexMatrix, BlocksRowsAndColumnsAreThoseOfTheParts) {
  Random random(3);
  const CNuMatrix re = UniformMatrix(random, 4, 6), im = UniformMatrix(random, 4, 6);
  const Factor m(re, im);
  const auto isMade = [](const Factor& c, const CNuMatrix& a, const CNuMatrix& b) {
    return c.RealPart().IsEqual(a, kExactly) && c.ImaginaryPart().IsEqual(b, kExactly);
  };
  EXPECT_TRUE(isMade(m.SubMatrix(1, 2, 3, 5), re.SubMatrix(1, 2, 3, 5), im.SubMatrix(1, 2, 3, 5)));
  Factor target(m);
  CNuMatrix targetRe(re), targetIm(im);
  target.SetSubMatrix(0, 1, 1, 3, m.SubMatrix(1, 2, 3, 5));
  targetRe.SetSubMatrix(0, 1, 1, 3, re.SubMatrix(1, 2, 3, 5));
  targetIm.SetSubMatrix(0, 1, 1, 3, im.SubMatrix(1, 2, 3, 5));
  target.SetRowVector(3, m.GetRowVector(0));
  targetRe.SetRowVector(3, re.GetRowVector(0));
  targetIm.SetRowVector(3, im.GetRowVector(0));
  target.SetColumnVector(0, m.GetColumnVector(5));
  targetRe.SetColumnVector(0, re.GetColumnVector(5));
  targetIm.SetColumnVector(0, im.GetColumnVector(5));
  target.SetElement(2, 2, m.GetElement(3, 1));
  targetRe.SetElement(2, 2, re.GetElement(3, 1));
  targetIm.SetElement(2, 2, im.GetElement(3, 1));
  EXPECT_TRUE(isMade(target, targetRe, targetIm));
  const Factor square = m.SubMatrix(0, 3, 1, 4);
  EXPECT_TRUE(square.Trace().IsEqual({re.SubMatrix(0, 3, 1, 4).Trace(), im.SubMatrix(0, 3, 1, 4).Trace()}, kExactly));
  EXPECT_TRUE(Factor::DiagonalMatrix(m.GetRowVector(1))
                  .Trace()
                  .IsEqual({re.GetRowVector(1).Sum(), im.GetRowVector(1).Sum()}, kExactly));
}

TEST(ComplexVector, Algebra) {
  const CNuComplexVector v(CNuVector(1, 2, 3), CNuVector(-1, 0, 2)), w(CNuVector(0, 1, 1), CNuVector(1, 1, 0));
  EXPECT_TRUE((v % w).IsEqual({6, 5}, kExactly) && v.InnerProduct(w).IsEqual({4, 1}, kExactly));
  EXPECT_TRUE((v.Conjugate() % w).IsEqual(v.InnerProduct(w), kExactly));
  EXPECT_TRUE((v + w - w).IsEqual(v, kExactly) && (-v + v).IsZero(kExactly));
  EXPECT_TRUE((2.0 * v * kI / CNuComplex(0, 2) / 0.5).IsEqual(v * 2.0, kExactly));
  EXPECT_TRUE((kI * v).IsEqual(CNuComplexVector(-v.ImaginaryPart(), v.RealPart()), kExactly));
  EXPECT_TRUE(
      v.SubVector(1, 2).IsEqual(CNuComplexVector(CNuVector(0, 2, 3), CNuVector(0, 0, 2)).SubVector(1, 2), kExactly));
  EXPECT_TRUE(CNuComplexVector(v.RealPart()).IsReal(kExactly) && !v.IsReal(2) && v.IsReal(2.1) && !v.IsZero(3));
  EXPECT_FALSE(v.IsEqual(v.SubVector(0, 1), 1e9));
  CNuComplexVector self = v;
  self /= self[2];
  EXPECT_TRUE(self[2].IsEqual({1, 0}, kEps) && (self * v[2]).IsEqual(v, 8 * kEps));
}

TEST(ComplexVector, LengthsOfAnySize) {
  for (const double size : {1.0, 1e300, 1.5e308, 1e-150, 1e-299, 4e-310}) {
    CNuComplexVector v(CNuVector(0.5 * size, 0, 0.25 * size), CNuVector(0, 0.75 * size, 0.25 * size));
    const double length = std::sqrt(0.9375);
    EXPECT_NEAR(v.Magnitude() / size, length, size < 1e-308 ? 1e-13 : 4 * kEps);
    const CNuComplexVector before = v;
    v.Normalise();
    if (size < 1e-300) {
      EXPECT_TRUE(v.IsEqual(before, kExactly));
    } else {
      EXPECT_TRUE(v[1].IsEqual({0, 0.75 / length}, 4 * kEps));
      EXPECT_NEAR(v.Magnitude(), 1, 4 * kEps);
    }
  }
  // Too long for a double, yet of a direction.
  CNuComplexVector longest(CNuVector(1.5e308, 1.5e308, 0), CNuVector(0, 0, 0));
  EXPECT_EQ(longest.Magnitude(), kInf);
  longest.Normalise();
  EXPECT_NEAR(longest[0].r(), std::sqrt(0.5), kEps);
  for (const double bad : {kInf, kNaN}) {
    CNuComplexVector v(CNuVector(1, 2, 3), CNuVector(0, bad, 0));
    EXPECT_FALSE(std::isfinite(v.Magnitude()));
    v.Normalise();
    EXPECT_EQ(v[2].r(), 3);
  }
}

TEST(ComplexVectorAndMatrix, Failures) {
  CNuComplexVector v(3), two(2);
  Factor m(2, 3), turned(3, 2);
  const CNuComplex huge(1e301, 0), tiny(0, 1e-301);
  const std::pair<std::string, std::function<void()>> cases[] = {
      {"construction 1 size|CNuComplexVector [0,0]", [] { CNuComplexVector(0); }},
      {"construction 1 number of rows/columns|CNuComplexMatrix [0,0]", [] { Factor::Identity(0); }},
      {"operation 5 operation|CNuComplexMatrix [0,0]", [] { Factor(CNuMatrix(2, 2), CNuMatrix(2, 3)); }},
      {"operation 5 operator+|CNuComplexVector [0,0]", [&] { v + two; }},
      {"operation 5 operator-|CNuComplexVector [0,0]", [&] { v - two; }},
      {"operation 5 operator+=|CNuComplexVector [0,0]", [&] { v += two; }},
      {"operation 5 operator-=|CNuComplexVector [0,0]", [&] { v -= two; }},
      {"operation 5 operator%|CNuComplexVector [0,0]", [&] { v % two; }},
      {"operation 5 operation|CNuComplexVector::InnerProduct() [0,0]", [&] { v.InnerProduct(two); }},
      {"operation 5 operator*|CNuComplexVector [0,0]", [&] { v* m; }},
      {"operation 7 operator*|CNuComplexVector [0,0]", [&] { v* kNaN; }},
      {"operation 7 operator*|CNuComplexVector [0,0]", [&] { huge* v; }},
      {"operation 7 operator*=|CNuComplexVector [0,0]", [&] { v *= huge; }},
      {"operation 7 operator*=|CNuComplexVector [0,0]", [&] { v *= 1e301; }},
      {"operation 6 operator/|CNuComplexVector [0,0]", [&] { v / 0.0; }},
      {"operation 6 operator/|CNuComplexVector [0,0]", [&] { v / tiny; }},
      {"operation 6 operator/=|CNuComplexVector [0,0]", [&] { v /= tiny; }},
      {"operation 6 operator/=|CNuComplexVector [0,0]", [&] { v /= 1e-301; }},
      {"operation 3 operation|CNuComplexVector::SubVector(i, j) [0,2]", [&] { v.SubVector(1, 3); }},
      {"operation 15 operation|CNuComplexVector::SubVector(i, j) [0,0]", [&] { v.SubVector(2, 1); }},
      {"operation 3 operation|CNuComplexMatrix::GetRowVector() [0,1]", [&] { m.GetRowVector(2); }},
      {"operation 3 operation|CNuComplexMatrix::GetColumnVector() [0,2]", [&] { m.GetColumnVector(-1); }},
      {"operation 5 operation|CNuComplexMatrix::SetRowVector() [0,0]", [&] { m.SetRowVector(1, two); }},
      {"operation 5 operation|CNuComplexMatrix::SetColumnVector() [0,0]", [&] { m.SetColumnVector(1, v); }},
      {"operation 15 operation|CNuComplexMatrix::SubMatrix() [0,0]", [&] { m.SubMatrix(9, 8, 0, 0); }},
      {"operation 3 operation|CNuComplexMatrix::SetSubMatrix() [0,1]", [&] { m.SetSubMatrix(1, 2, 0, 0, m); }},
      {"operation 5 operation|CNuComplexMatrix::SetSubMatrix() [0,0]", [&] { m.SetSubMatrix(0, 1, 0, 1, m); }},
      {"operation 16 calculation|CNuComplexMatrix::Trace() [0,0]", [&] { m.Trace(); }},
      {"operation 5 operator+|CNuComplexMatrix [0,0]", [&] { m + turned; }},
      {"operation 5 operator-|CNuComplexMatrix [0,0]", [&] { m - turned; }},
      {"operation 5 operator+=|CNuComplexMatrix [0,0]", [&] { m += turned; }},
      {"operation 5 operator-=|CNuComplexMatrix [0,0]", [&] { m -= turned; }},
      {"operation 5 operator*|CNuComplexMatrix [0,0]", [&] { m* m; }},
      {"operation 5 operator*|CNuComplexMatrix [0,0]", [&] { m* two; }},
      {"operation 7 operator*|CNuComplexMatrix [0,0]", [&] { m * 1e301; }},
      {"operation 7 operator*|CNuComplexMatrix [0,0]", [&] { huge* m; }},
      {"operation 7 operator*=|CNuComplexMatrix [0,0]", [&] { m *= huge; }},
      {"operation 7 operator*=|CNuComplexMatrix [0,0]", [&] { m *= -1e301; }},
      {"operation 6 operator/|CNuComplexMatrix [0,0]", [&] { m / tiny; }},
      {"operation 6 operator/|CNuComplexMatrix [0,0]", [&] { m / 0.0; }},
      {"operation 6 operator/=|CNuComplexMatrix [0,0]", [&] { m /= tiny; }},
      {"operation 6 operator/=|CNuComplexMatrix [0,0]", [&] { m /= 0.0; }},
  };
  for (const auto& [failure, call] : cases) EXPECT_EQ(FailureOf(call), failure);
  EXPECT_TRUE(v.IsZero(kExactly) && m.IsZero(kExactly));
}

}  // namespace
