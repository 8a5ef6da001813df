#include "nu/linalg/internal/nnls.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using nu::internal::NnlsResult;
using nu::internal::SolveNonNegative;
using nu::internal::TallReduction;
using nu::test::Random;

struct Problem {
  int rows, columns;
  std::vector<double> a, b;  // a row by row

  double& At(int i, int j) { return a[static_cast<std::size_t>(i) * columns + j]; }

  NnlsResult Solve(double tolerance, std::vector<double>* x) {
    std::vector<const double*> row;
    for (int i = 0; i < rows; ++i) row.push_back(&At(i, 0));
    TallReduction reduction(columns + 1);
    reduction.AddRows(row.data(), b.data(), rows);
    reduction.Finish();
    x->assign(columns, -1.0);
    return SolveNonNegative(reduction, tolerance, x->data());
  }

  // x >= 0; the gradient vanishes for positive unknowns and does not ask the others to grow.
  void ExpectOptimal(double tolerance, const char* what) {
    std::vector<double> x, rest = b;
    const NnlsResult result = Solve(tolerance, &x);
    EXPECT_TRUE(result.converged) << what;
    double square = 0, size = 0;
    for (int i = 0; i < rows; ++i) {
      for (int j = 0; j < columns; ++j) rest[i] -= At(i, j) * x[j];
      square += rest[i] * rest[i];
      size += b[i] * b[i];
    }
    EXPECT_NEAR(result.residualNorm, std::sqrt(square), 1e-12 * std::sqrt(size)) << what;
    for (int j = 0; j < columns; ++j) {
      double gradient = 0, norm = 0;
      for (int i = 0; i < rows; ++i) {
        gradient += At(i, j) * rest[i];
        norm += At(i, j) * At(i, j);
      }
      const double rounding = 1e-13 * std::sqrt(norm * size);
      EXPECT_GE(x[j], 0.0) << what;
      EXPECT_LE(gradient, tolerance + rounding) << what << " " << j;
      EXPECT_TRUE(x[j] == 0.0 || gradient >= -rounding) << what << " " << j;
    }
  }
};

Problem Draw(int rows, int columns, std::uint64_t seed) {
  Random random(seed);
  Problem p{rows, columns, std::vector<double>(static_cast<std::size_t>(rows) * columns), std::vector<double>(rows)};
  for (double& x : p.a) x = random.Bell();
  for (double& x : p.b) x = random.Bell();
  return p;
}

TEST(Nnls, MeetsTheOptimalityConditions) {
  for (auto [rows, columns] : {std::pair{1, 1}, {4, 3}, {3, 7}, {30, 12}, {300, 40}, {12, 60}}) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
      Problem p = Draw(rows, columns, seed);
      p.ExpectOptimal(1e-10, "random");
      // Positive columns, as in unmixing: many unknowns come and go.
      for (double& x : p.a) x = std::fabs(x) + 0.5;
      for (double& x : p.b) x = std::fabs(x);
      p.ExpectOptimal(1e-10, "positive");
      // Repeated and vanishing columns; and exactly consistent data, whose gradients end in rounding alone.
      for (int i = 0; i < rows; ++i) {
        p.b[i] = 0.0;
        for (int j = 0; j < columns; ++j) {
          if (j % 3 == 1) p.At(i, j) = p.At(i, j - 1);
          if (j % 5 == 4) p.At(i, j) = 0.0;
          if (j % 2 == 0) p.b[i] += p.At(i, j);
        }
      }
      p.ExpectOptimal(0.0, "degenerate");
    }
  }
}

TEST(Nnls, FindsTheUnconstrainedSolutionWhenItIsPositive) {
  Problem p = Draw(50, 6, 1);
  for (int i = 0; i < 50; ++i) {
    p.b[i] = 0.0;
    for (int j = 0; j < 6; ++j) p.b[i] += p.At(i, j) * (j + 1);
  }
  std::vector<double> x;
  EXPECT_TRUE(p.Solve(1e-10, &x).converged);
  for (int j = 0; j < 6; ++j) EXPECT_NEAR(x[j], j + 1, 1e-13);
}

TEST(Nnls, EndsForAnyToleranceAndRefusesWhatIsNotFinite) {
  constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
  std::vector<double> x;
  for (double tolerance : {-1.0, 1e300, kNaN, -std::numeric_limits<double>::infinity()}) {
    Draw(40, 10, 2).Solve(tolerance, &x);
    for (double value : x) EXPECT_GE(value, 0.0);
  }
  Problem p = Draw(40, 10, 2);
  p.At(3, 4) = kNaN;
  EXPECT_FALSE(p.Solve(1e-10, &x).converged);
}

}  // namespace
