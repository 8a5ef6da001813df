#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/failures.h"
#include "support/matrix_clouds.h"

namespace {

using namespace nu::test;

// Around every switch of road: unrolled, stack, panels, blocks.
constexpr int kSizes[] = {1, 2, 3, 4, 5, 8, 10, 16, 17, 33, 48, 100, 200};

CNuMatrix Hilbert(int n) {
  CNuMatrix m(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) m.Element(i, j) = 1.0 / (i + j + 1);
  return m;
}

CNuMatrix Pascal(int n) {
  CNuMatrix m(n, n);
  for (int i = 0; i < n; ++i)
    for (int j = 0; j < n; ++j) m.Element(i, j) = i == 0 || j == 0 ? 1.0 : m.Element(i - 1, j) + m.Element(i, j - 1);
  return m;
}

CNuMatrix Absolute(CNuMatrix m) {
  for (int i = 0; i < m.GetRowSize(); ++i)
    for (int j = 0; j < m.GetColumnSize(); ++j) m.Element(i, j) = std::fabs(m.Element(i, j));
  return m;
}

TEST(Product, SumsEachElementInOrder) {
  Random random(1);
  const int shapes[][3] = {{1, 1, 1},    {3, 3, 3},    {4, 4, 4},     {2, 3, 4},     {10, 10, 10},
                           {5, 300, 17}, {37, 65, 29}, {103, 7, 271}, {20, 520, 16}, {130, 1, 5}};
  for (const auto& s : shapes) {
    const CNuMatrix a = UniformMatrix(random, s[0], s[1]);
    const CNuMatrix b = UniformMatrix(random, s[1], s[2]);
    const CNuMatrix product = WithExchangedRows(a) * WithExchangedRows(b);
    for (int i = 0; i < s[0]; ++i) {
      for (int j = 0; j < s[2]; ++j) {
        double sum = 0.0;
        for (int k = 0; k < s[1]; ++k) sum += a.GetElement(i, k) * b.GetElement(k, j);
        ASSERT_EQ(product.GetElement(i, j), sum) << s[0] << "x" << s[1] << "x" << s[2] << " at " << i << "," << j;
      }
    }
  }
}

TEST(Lu, RebuildsTheMatrixOrSaysThatItIsSingular) {
  for (Kind kind : kAllKinds) {
    for (int n : kSizes) {
      Random random(static_cast<unsigned>(n));
      const CNuMatrix a = MatrixOf(kind, random, n, n);
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " n " + std::to_string(n));
      if (kind == Kind::kRankDeficient && n > 1) {
        EXPECT_EQ(FailureOf([&] { a.LUD2(nullptr, nullptr, nullptr); }),
                  "operation 16 calculation|CNuMatrix::LUD() [0,0]");
        continue;
      }
      CNuMatrix l, u, p;
      a.LUD2(&l, &u, &p);
      const double unit = UnitOf(a);
      EXPECT_LT(RoundingsBetween(l * (u * unit), p * a * unit), kRoundings);
      EXPECT_TRUE(p.IsOrthogonal(DBL_MIN));
      if (kind == Kind::kUniform || kind == Kind::kRepeated) {
        EXPECT_EQ(LargestElement(l), 1.0);
      }

      CNuMatrix factors = WithExchangedRows(a);
      CNuIntArray index(3);
      int parity = 0, status = -1;
      factors.LUD(&index, &parity, &status);
      EXPECT_EQ(status, 0);
      ASSERT_EQ(index.GetSize(), n);
      for (int i = 0; i < n; ++i) {
        EXPECT_EQ(p.GetElement(i, index[i]), 1.0);
        for (int j = 0; j < n; ++j) ASSERT_EQ(factors.GetElement(i, j), (j < i ? l : u).GetElement(i, j));
      }
    }
  }
}

TEST(Lu, LeavesUsableFactorsOfASingularMatrix) {
  CNuMatrix a(3, 3);
  for (int i = 0; i < 9; ++i) a.Element(i / 3, i % 3) = i + 1;
  CNuMatrix zeroRow = CNuMatrix::Identity(5);
  zeroRow.Element(2, 2) = 0.0;
  for (CNuMatrix m : {a, zeroRow, CNuMatrix(2, 2)}) {
    CNuIntArray index(1);
    int parity = 0, status = -1;
    EXPECT_EQ(FailureOf([&] { m.LUD(&index, &parity, &status); }), "operation 16 calculation|CNuMatrix::LUD() [0,0]");
    EXPECT_EQ(status, 1);
    EXPECT_EQ(std::abs(parity), 1);
    ASSERT_EQ(index.GetSize(), m.GetRowSize());
    for (int i = 0; i < m.GetRowSize(); ++i) {
      EXPECT_NE(m.GetElement(i, i), 0.0);
      EXPECT_TRUE(std::isfinite(1.0 / m.GetElement(i, i)));
    }
  }
  // A tolerance of zero lets everything pass but an exact zero.
  NuSetTol(0.0);
  EXPECT_EQ(FailureOf([&] { Hilbert(13).LUD2(nullptr, nullptr, nullptr); }), "nothing");
  NuSetTol(4.45e-16);
  EXPECT_EQ(FailureOf([&] { Hilbert(15).LUD2(nullptr, nullptr, nullptr); }),
            "operation 16 calculation|CNuMatrix::LUD() [0,0]");
}

TEST(Inverse, IsOneFromBothSides) {
  for (Kind kind :
       {Kind::kUniform, Kind::kRepeated, Kind::kGradedColumns, Kind::kGradedRows, Kind::kHuge, Kind::kTiny}) {
    for (int n : kSizes) {
      Random random(static_cast<unsigned>(n) + 100);
      CNuMatrix a = MatrixOf(kind, random, n, n);
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " n " + std::to_string(n));
      ENuStatus status = NuStatusNone;
      const CNuMatrix inverse = a.Inverse(&status);
      EXPECT_EQ(status, NuStatusComputed);
      // The grading of rows or columns cancels on one side.
      const bool left = kind == Kind::kGradedRows;
      const CNuMatrix one = left ? inverse * a : a * inverse;
      const CNuMatrix size = left ? Absolute(inverse) * Absolute(a) : Absolute(a) * Absolute(inverse);
      EXPECT_LT(LargestElement(one - CNuMatrix::Identity(n)), kRoundings * n * kEps * LargestElement(size));
    }
  }
  ENuStatus status = NuStatusComputed;
  CNuMatrix singular(4, 4);
  EXPECT_EQ(FailureOf([&] { singular.Inverse(&status); }), "operation 16 calculation|CNuMatrix::Inverse() [0,0]");
  EXPECT_EQ(status, NuStatusNone);
}

// Both refuse, or both succeed.
bool IsTakenAsSingular(CNuMatrix a) {
  CNuLinearEquSys system(0);
  system.Solve(a, CNuVector(a.GetRowSize()));
  const bool refused = FailureOf([&] { a.Inverse(nullptr); }) == "operation 16 calculation|CNuMatrix::Inverse() [0,0]";
  EXPECT_EQ(refused, !system.SolutionExists());
  return refused;
}

// Rank n - 1 leaves pivots that rounding has lifted off zero; scales that differ do not make a matrix singular.
TEST(Inverse, RefusesWhatRoundingAloneMakesRegular) {
  Random random(8);
  for (int n : {3, 4, 5, 8, 20, 50}) {
    for (int k = 0; k < 20000 / (n * n); ++k) {
      CNuMatrix exact(n, n);
      for (int i = 0; i + 1 < n; ++i)
        for (int j = 0; j < n; ++j) exact.Element(i, j) = random.Below(19) - 9;
      for (int i = 0; i + 1 < n; ++i)
        exact.SetRowVector(n - 1, exact.GetRowVector(n - 1) + (random.Below(7) - 3) * exact.GetRowVector(i));
      exact.SetRowVector(n - 1, exact.GetRowVector(n - 1) + exact.GetRowVector(0));
      CNuMatrix product = UniformMatrix(random, n, n - 1) * UniformMatrix(random, n - 1, n);
      CNuMatrix regular = UniformMatrix(random, n, n);
      for (int i = 0; i < n; ++i) {
        const int row = random.Below(660) - 330, column = random.Below(660) - 330;
        for (int j = 0; j < n; ++j)
          for (CNuMatrix* m : {&product, &regular}) {
            m->Element(i, j) = std::ldexp(m->Element(i, j), row);
            m->Element(j, i) = std::ldexp(m->Element(j, i), column);
          }
      }
      EXPECT_TRUE(IsTakenAsSingular(exact) && IsTakenAsSingular(product) && !IsTakenAsSingular(regular)) << n;
    }
  }
  // The elements of this triangle determine its inverse, whose largest is 2^58, to all digits.
  CNuMatrix triangle = CNuMatrix::Identity(60);
  for (int i = 0; i < 60; ++i)
    for (int j = i + 1; j < 60; ++j) triangle.Element(i, j) = -1.0;
  EXPECT_FALSE(IsTakenAsSingular(triangle) || IsTakenAsSingular(Hilbert(11)) || IsTakenAsSingular(Pascal(16)));
  EXPECT_TRUE(IsTakenAsSingular(Hilbert(13)) && IsTakenAsSingular(Pascal(20)));
}

TEST(Determinant, KnownValuesWithoutOverflowOnTheWay) {
  EXPECT_EQ(CNuMatrix::Identity(7).Determinant(), 1.0);
  EXPECT_NEAR(Pascal(12).Determinant(), 1.0, 1e-4);
  // The exact value for n = 6 is 1 / 186313420339200000.
  EXPECT_NEAR(Hilbert(6).Determinant() * 186313420339200000.0, 1.0, 1e-9);
  CNuMatrix cycle(5, 5);
  for (int i = 0; i < 5; ++i) cycle.Element(i, (i + 1) % 5) = 1.0;
  EXPECT_EQ(cycle.Determinant(), 1.0);
  std::swap(cycle.GetData()[0], cycle.GetData()[3]);
  EXPECT_EQ(cycle.Determinant(), -1.0);
  const double ends[] = {1e200, 1e200, 1e-200, 1e-200, 1e-290, 1e300};
  CNuMatrix graded(6, 6);
  for (int i = 0; i < 6; ++i)
    for (int j = 0; j <= i; ++j) graded.Element(i, j) = i == j ? ends[i] : 1e-295;
  EXPECT_NEAR(graded.Determinant() / 1e10, 1.0, 1e-14);
  Random random(3);
  CNuMatrix twins = UniformMatrix(random, 6, 6);
  twins.SetRowVector(4, twins.GetRowVector(1));
  EXPECT_EQ(twins.Determinant(), 0.0);
}

TEST(Svd, RebuildsTheMatrix) {
  const int tall[][2] = {{3, 2},   {2, 3},   {1, 4},    {9, 1},   {1000, 9}, {258, 2},
                         {259, 3}, {700, 3}, {300, 40}, {20, 30}, {64, 63}};
  const auto check = [](Kind kind, int rows, int columns) {
    Random random(static_cast<unsigned>(rows + 1000 * columns));
    const CNuMatrix a = MatrixOf(kind, random, rows, columns);
    SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " " + std::to_string(rows) + " x " +
                 std::to_string(columns));
    CNuMatrix u = WithExchangedRows(a), v;
    CNuVector w;
    u.SVD(&w, &v);
    ASSERT_EQ(w.GetSize(), columns);
    const double unit = UnitOf(a);
    EXPECT_LT(RoundingsBetween(u * CNuMatrix::DiagonalMatrix(w) * unit * v.Transpose(), a * unit), kRoundings);
    EXPECT_LT(RoundingsFromOrthogonal(v), kRoundings);
    EXPECT_LT(RoundingsFromOrthogonal(rows < columns ? u.Transpose() : u), kRoundings);
    int zeros = 0;
    for (int i = 0; i < columns; ++i) {
      EXPECT_GE(w[i], 0.0);
      EXPECT_FALSE(std::signbit(w[i]));
      zeros += w[i] == 0.0;
    }
    const int rank = kind == Kind::kRankDeficient ? std::min(rows, std::max(1, columns / 2)) : std::min(rows, columns);
    const bool graded = kind >= Kind::kGradedUp && kind <= Kind::kGradedRows;
    EXPECT_TRUE(graded || zeros == columns - rank) << zeros;
  };
  for (Kind kind : kAllKinds) {
    for (int n : kSizes) check(kind, n, n);
    for (const auto& s : tall) check(kind, s[0], s[1]);
  }
}

TEST(Svd, DegenerateForms) {
  for (int n : {1, 3, 6, 20}) {
    CNuMatrix zero(n, n), v;
    CNuVector w;
    zero.SVD(&w, &v);
    EXPECT_EQ(w.Sum(), 0.0);
    EXPECT_LT(RoundingsFromOrthogonal(zero), kRoundings);
    // A bidiagonal matrix whose diagonal vanishes in the middle, then in all places.
    CNuMatrix chain(n, n);
    for (int i = 0; i + 1 < n; ++i) chain.Element(i, i + 1) = 1.0 + i;
    if (n > 1) chain.Element(0, 0) = 2.0;
    CNuMatrix u(chain);
    u.SVD(&w, &v);
    EXPECT_LT(LargestElement(u * CNuMatrix::DiagonalMatrix(w) * v.Transpose() - chain), kRoundings * n * n * kEps);
  }
}

TEST(Decompositions, ShapesAreCheckedUnderTheirOwnNames) {
  CNuMatrix a(2, 3);
  CNuIntArray index(1);
  EXPECT_EQ(FailureOf([&] { a.LUD(&index, nullptr, nullptr); }), "operation 16 calculation|CNuMatrix::LUD() [0,0]");
  EXPECT_EQ(FailureOf([&] { a.Determinant(); }), "operation 16 calculation|CNuMatrix::Determinant() [0,0]");
  EXPECT_EQ(FailureOf([&] { a.Inverse(nullptr); }), "operation 16 calculation|CNuMatrix::Inverse() [0,0]");
  EXPECT_EQ(FailureOf([&] { a* a; }), "operation 5 operator*|CNuMatrix [0,0]");
}

// Every position of a NaN and of both infinities: each operation ends, with a result or its own failure.
TEST(Decompositions, NonFiniteElementsEnd) {
  Random random(9);
  for (int n : {1, 2, 3, 5, 20}) {
    for (double bad : {kNaN, kInf, -kInf}) {
      for (int at = 0; at<n * n; at += n> 5 ? 7 : 1) {
        CNuMatrix a = UniformMatrix(random, n, n);
        a.Element(at / n, at % n) = bad;
        EXPECT_TRUE(std::isnan(a.Determinant()));
        EXPECT_EQ(FailureOf([&] { CNuMatrix(a).SVD(nullptr, nullptr); }),
                  "operation 46 calculation|CNuMatrix::SVD() [0,0]");
        EXPECT_EQ(FailureOf([&] { a.EigenValuesVectors(nullptr, nullptr, nullptr); }),
                  "operation 46 calculation|CNuMatrix::EigenValues() [0,0]");
        FailureOf([&] { a.LUD2(nullptr, nullptr, nullptr); });
        FailureOf([&] { a.Inverse(nullptr); });
      }
    }
  }
}

TEST(Decompositions, UnsoundTolerancesEnd) {
  Random random(10);
  const CNuMatrix a = UniformMatrix(random, 6, 6);
  for (double tolerance : {0.0, -1.0, kInf, kNaN}) {
    for (bool zeroToo : {false, true}) {
      NuSetTol(tolerance);
      if (zeroToo) NuSetZero(tolerance);
      FailureOf([&] { a.LUD2(nullptr, nullptr, nullptr); });
      FailureOf([&] { CNuMatrix(a).SVD(nullptr, nullptr); });
      FailureOf([&] { a.EigenValuesVectors(nullptr, nullptr, nullptr); });
      FailureOf([&] { CNuMatrix(a).EigenValues(nullptr); });
      FailureOf([&] { CNuMatrix(a).Inverse(nullptr); });
      NuSetTol(4.45e-16);
      NuSetZero(1e-300);
    }
  }
}

}  // namespace
