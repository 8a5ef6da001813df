#include <gtest/gtest.h>

#include <atomic>
#include <cmath>
#include <numbers>
#include <string>
#include <thread>
#include <vector>

#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "nu/linalg/vector.h"
#include "support/failures.h"
#include "support/matrix_clouds.h"

namespace {

using namespace nu::test;

constexpr int kSizes[] = {1, 2, 3, 4, 5, 8, 10, 16, 17, 33, 48, 100, 200};

CNuMatrix FromRows(std::initializer_list<std::initializer_list<double>> rows) {
  CNuMatrix m(static_cast<int>(rows.size()), static_cast<int>(rows.begin()->size()));
  int i = 0;
  for (const auto& row : rows) {
    int j = 0;
    for (double x : row) m.Element(i, j++) = x;
    ++i;
  }
  return m;
}

TEST(SymmetricEigen, RebuildsTheMatrixInAscendingOrder) {
  for (Kind kind : kAllKinds) {
    if (kind == Kind::kGradedColumns || kind == Kind::kGradedRows) continue;
    for (int n : kSizes) {
      Random random(static_cast<unsigned>(n) + 7);
      const CNuMatrix a = Symmetric(MatrixOf(kind, random, n, n));
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " n " + std::to_string(n));
      ENuStatus status = NuStatusNone;
      CNuVector values;
      CNuMatrix vectors;
      WithExchangedRows(a).EigenValuesVectors(&status, &values, &vectors);
      EXPECT_EQ(status, NuStatusComputed);
      for (int i = 1; i < n; ++i) EXPECT_LE(values[i - 1], values[i]);
      const double unit = UnitOf(a);
      EXPECT_LT(RoundingsBetween(vectors * (CNuMatrix::DiagonalMatrix(values) * unit) * vectors.Transpose(), a * unit),
                kRoundings);
      EXPECT_LT(RoundingsFromOrthogonal(vectors), kRoundings);
    }
  }
}

TEST(SymmetricEigen, KnownValues) {
  // The second difference matrix: 2 - 2 cos(k pi / (n + 1)).
  for (int n : {3, 10, 60}) {
    CNuMatrix a(n, n);
    for (int i = 0; i < n; ++i) {
      a.Element(i, i) = 2.0;
      if (i > 0) a.Element(i, i - 1) = a.Element(i - 1, i) = -1.0;
    }
    const CNuVector values = a.EigenValues(nullptr);
    for (int k = 1; k <= n; ++k)
      EXPECT_NEAR(values[k - 1], 2.0 - 2.0 * std::cos(k * std::numbers::pi / (n + 1)), 1e-14);
  }
  // Asymmetry within the tolerance: still the symmetric road, on the mean of the two triangles.
  CNuMatrix a = FromRows({{2.0, 1.0}, {1.0 + 2e-16, 2.0}});
  CNuVector values;
  CNuMatrix vectors;
  a.EigenValuesVectors(nullptr, &values, &vectors);
  EXPECT_LT(RoundingsFromOrthogonal(vectors), kRoundings);
}

// R^T D R is symmetric but for rounding at every size, and equal values leave the general algorithm no orthogonal
// vectors. Asymmetry beyond the rounding of its own rows is meant, however large the rest of the matrix.
TEST(SymmetricEigen, RoundingOfProductsCountsAsSymmetric) {
  Random random(11);
  for (double size : {1e-200, 1e-3, 1.0, 1e2, 1e6, 1e200}) {
    for (int n : {2, 3, 4, 10, 30}) {
      for (int k = 0; k < 20; ++k) {
        const CNuMatrix r = OrthogonalMatrix(random, n);
        CNuVector d(n);
        for (int i = 0; i < n; ++i) d[i] = i + 1 < n ? size : -size / 7.0;
        const CNuMatrix a = r.Transpose() * CNuMatrix::DiagonalMatrix(d) * r;
        ENuStatus status = NuStatusNone;
        CNuMatrix vectors;
        a.EigenValuesVectors(&status, nullptr, &vectors);
        EXPECT_LT(RoundingsFromOrthogonal(vectors), kRoundings) << size << " " << n;
      }
    }
  }
  CNuMatrix graded = FromRows({{1e12, 0.0, 0.0}, {0.0, 1.0, 1e-6}, {0.0, 0.0, 1.0}});
  EXPECT_EQ(graded.EigenValues(nullptr)[0], 1.0);
}

// A x = value x for every column, or for a pair of columns the same in complex numbers.
void CheckGeneral(const CNuMatrix& a) {
  const int n = a.GetRowSize();
  ENuStatus status = NuStatusNone;
  CNuVector values;
  CNuMatrix vectors;
  a.EigenValuesVectors(&status, &values, &vectors);
  const double unit = UnitOf(a);
  const CNuMatrix scaled = a * unit;
  const CNuMatrix image = scaled * vectors;
  const double bound = kRoundings * n * kEps * LargestElement(scaled);
  bool complex = false;
  for (int k = 0; k < n; ++k) {
    EXPECT_TRUE(k == 0 || values[k - 1] <= values[k]);
    const double value = values[k] * unit;
    const CNuVector x = vectors.GetColumnVector(k);
    const CNuVector ax = image.GetColumnVector(k);
    const CNuVector y = vectors.GetColumnVector(std::min(k + 1, n - 1));
    const double both = x % x + y % y;
    if (std::fabs(both - 1.0) > 1e-13) {
      EXPECT_NEAR(x.Magnitude(), 1.0, 1e-14);
      EXPECT_TRUE((ax - x * value).IsZero(bound));
      continue;
    }
    // Two columns that are of unit length together; b follows from A x = a x - b y and A y = a y + b x.
    complex = true;
    ASSERT_LT(k + 1, n);
    EXPECT_EQ(values[k], values[k + 1]);
    const CNuVector ay = image.GetColumnVector(k + 1);
    const double b = (x * value - ax) % y + (ay - y * value) % x;
    EXPECT_GT(b, -bound);
    EXPECT_TRUE((ax - x * value + y * b).IsZero(bound));
    EXPECT_TRUE((ay - y * value - x * b).IsZero(bound));
    ++k;
  }
  EXPECT_EQ(status, complex ? NuStatusComplex : NuStatusComputed);
  const CNuVector sum = values * unit;
  EXPECT_NEAR(sum.Sum(), scaled.Trace(), bound * n);
}

TEST(GeneralEigen, ColumnsAreEigenvectors) {
  for (Kind kind : kAllKinds) {
    for (int n : kSizes) {
      Random random(static_cast<unsigned>(n) + 70);
      SCOPED_TRACE("kind " + std::to_string(static_cast<int>(kind)) + " n " + std::to_string(n));
      CNuMatrix a = MatrixOf(kind, random, n, n);
      // A similarity by graded rows keeps repeated values and is no longer symmetric.
      if (kind == Kind::kRepeated)
        for (int i = 0; i < n; ++i)
          for (int j = 0; j < n; ++j) a.Element(i, j) *= (1.0 + i) / (1.0 + j);
      CheckGeneral(a);
    }
  }
}

TEST(GeneralEigen, DefectiveCyclicAndTriangularMatrices) {
  for (int n : {2, 3, 4, 9, 40}) {
    CNuMatrix jordan(n, n), cycle(n, n), companion(n, n), triangle(n, n), flip(n, n);
    for (int i = 0; i < n; ++i) {
      jordan.Element(i, i) = 3.0;
      if (i + 1 < n) jordan.Element(i, i + 1) = 1.0;
      // Needs the exceptional shifts: every ordinary one is zero.
      cycle.Element(i, (i + 1) % n) = 1.0;
      companion.Element(0, i) = -1.0;
      if (i > 0) companion.Element(i, i - 1) = 1.0;
      for (int j = 0; j <= i; ++j) triangle.Element(i, j) = 1.0 + (i + j) % 4;
      flip.Element(i, n - 1 - i) = i < n / 2 ? 1.0 : -2.0;
    }
    for (const CNuMatrix& a : {jordan, cycle, companion, triangle, flip}) CheckGeneral(a);
  }
  // Small integers: many matrices have defective values, above all a multiple 0.
  Random random(5);
  for (int k = 0; k < 3000; ++k) {
    CNuMatrix a(3 + k % 4, 3 + k % 4);
    for (int i = 0; i < a.GetRowSize(); ++i)
      for (int j = 0; j < a.GetRowSize(); ++j)
        a.Element(i, j) = k % 2 == 0 ? random.Below(2) * 2 - 1 : random.Below(3) - 1;
    CheckGeneral(a);
  }
  CNuMatrix rotation = FromRows({{0.0, -2.0}, {2.0, 0.0}});
  ENuStatus status = NuStatusNone;
  EXPECT_EQ(rotation.EigenValues(&status).Max(), 0.0);
  EXPECT_EQ(status, NuStatusComplex);
  // Balancing must not make much of the smallest elements.
  CheckGeneral(FromRows({{1.0, 1e-20, 1e-9}, {1.0, 2.0, 1e-30}, {1e10, 1.0, 3.0}}));
  CheckGeneral(FromRows({{1e-200, 2e-200}, {3e-200, 4e-200}}));
}

TEST(Eigen, NotSquareFailsUnderOneName) {
  CNuMatrix a(2, 3);
  const char* failure = "operation 16 calculation|CNuMatrix::EigenValuesVectors() [0,0]";
  ENuStatus status = NuStatusComputed;
  EXPECT_EQ(FailureOf([&] { a.EigenValues(&status); }), failure);
  EXPECT_EQ(status, NuStatusNone);
  EXPECT_EQ(FailureOf([&] { a.EigenVectors(&status); }), failure);
  EXPECT_EQ(FailureOf([&] { a.EigenValuesVectors(&status, nullptr, nullptr); }), failure);
}

TEST(EigenCache, AnswersWithinTheSquaredToleranceOnly) {
  CNuMatrix a = FromRows({{2.0, 1.0, 0.0}, {1.0, 3.0, 0.0}, {0.0, 0.0, 5.0}});
  // A host's coarse tolerance makes the reuse visible.
  NuSetTol(1e-3);
  ENuStatus status = NuStatusNone;
  const CNuVector first = a.EigenValues(&status);
  EXPECT_EQ(status, NuStatusComputed);
  CNuMatrix near(a), far(a);
  near.Element(2, 2) += 0.5e-6;
  far.Element(2, 2) += 2e-6;
  status = NuStatusNone;
  EXPECT_EQ(near.EigenValues(&status)[2], first[2]);
  EXPECT_EQ(status, NuStatusComputed);
  EXPECT_NE(far.EigenValues(nullptr)[2], first[2]);
  NuSetTol(4.45e-16);
  // Matrices below the squared tolerance are still told apart.
  for (double unit : {1e-40, 1e-200}) {
    CNuMatrix small = a * unit;
    EXPECT_NEAR(small.EigenValues(nullptr)[2], 5.0 * unit, 1e-15 * unit);
    CNuMatrix other = small * 2.0;
    EXPECT_NEAR(other.EigenValues(nullptr)[2], 10.0 * unit, 1e-15 * unit);
    EXPECT_NEAR(std::fabs(other.EigenVectors(nullptr).Element(2, 2)), 1.0, 1e-15);
  }
}

// At a tolerance of 1 the matrix below is taken as symmetric: what that gives is no answer for a thread with another.
TEST(EigenCache, KeepsTheAnswersOfThreadsApart) {
  CNuMatrix a = FromRows({{1.0, 0.5}, {0.0, 1.0}});
  const auto largestOfThread = [&a](double tol) {
    double largest = 0.0;
    std::thread([&] {
      NuSetTol(tol);
      a.EigenVectors(nullptr);
      largest = a.EigenValues(nullptr)[1];
    }).join();
    return largest;
  };
  EXPECT_EQ(largestOfThread(1.0), 1.25);
  EXPECT_EQ(largestOfThread(4.45e-16), 1.0);
  EXPECT_NEAR(std::fabs(a.EigenVectors(nullptr).Element(0, 1)), 1.0, 1e-15);
  EXPECT_EQ(largestOfThread(1.0), 1.25);
}

TEST(EigenCache, ServesManyThreads) {
  std::atomic<int> wrong = 0;
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t, &wrong] {
      for (int i = 0; i < 200; ++i) {
        const double d = 1.0 + (t + i) % 3;
        CNuMatrix a = FromRows({{d, 0.0}, {0.0, 2.0 * d}});
        ENuStatus status = NuStatusNone;
        if (a.EigenValues(&status)[1] != 2.0 * d || status != NuStatusComputed) ++wrong;
        if (std::fabs(a.EigenVectors(nullptr).Element(0, 0)) != 1.0) ++wrong;
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
