#include "nu/engine/linear/nnls.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using namespace nu::test;

struct Problem {
  Problem(int m, int n, std::uint64_t seed) : a(m, std::vector<double>(n)), b(m) {
    Random random(seed);
    for (int i = 0; i < m; ++i) {
      for (double& x : a[i]) x = random.Bell();
      b[i] = random.Bell();
    }
  }

  bool Solve(double tolerance, std::vector<double>* x) const {
    std::vector<const double*> row;
    for (const auto& values : a) row.push_back(values.data());
    x->assign(a[0].size(), -1.0);
    nu::internal::TallReduction reduction(static_cast<int>(x->size()) + 1);
    reduction.AddRows(row.data(), b.data(), static_cast<int>(b.size()));
    reduction.Finish();
    return nu::internal::SolveNonNegative(reduction, tolerance, x->data());
  }

  // x >= 0; the gradient vanishes for positive unknowns and does not ask the others to grow.
  void ExpectOptimal(double tolerance, const char* what) const {
    std::vector<double> x, rest = b;
    EXPECT_TRUE(Solve(tolerance, &x)) << what;
    double size = 0;
    for (std::size_t i = 0; i < b.size(); ++i) {
      for (std::size_t j = 0; j < x.size(); ++j) rest[i] -= a[i][j] * x[j];
      size += b[i] * b[i];
    }
    for (std::size_t j = 0; j < x.size(); ++j) {
      double gradient = 0, norm = 0;
      for (std::size_t i = 0; i < b.size(); ++i) {
        gradient += a[i][j] * rest[i];
        norm += a[i][j] * a[i][j];
      }
      const double rounding = 1e-13 * std::sqrt(norm * size);
      EXPECT_GE(x[j], 0.0) << what;
      EXPECT_LE(gradient, tolerance + rounding) << what << " " << j;
      EXPECT_TRUE(x[j] == 0.0 || gradient >= -rounding) << what << " " << j;
    }
  }

  std::vector<std::vector<double>> a;
  std::vector<double> b;
};

TEST(Nnls, MeetsTheOptimalityConditions) {
  for (auto [rows, columns] : {std::pair{1, 1}, {4, 3}, {3, 7}, {30, 12}, {300, 40}, {12, 60}}) {
    for (std::uint64_t seed = 0; seed < 20; ++seed) {
      Problem p(rows, columns, seed);
      p.ExpectOptimal(1e-10, "random");
      // Positive columns, as in unmixing: many unknowns come and go.
      for (int i = 0; i < rows; ++i) {
        for (double& x : p.a[i]) x = std::fabs(x) + 0.5;
        p.b[i] = std::fabs(p.b[i]);
      }
      p.ExpectOptimal(1e-10, "positive");
      // Repeated and vanishing columns, and consistent data, whose gradients end in rounding alone.
      for (int i = 0; i < rows; ++i) {
        p.b[i] = 0.0;
        for (int j = 0; j < columns; ++j) {
          if (j % 3 == 1) p.a[i][j] = p.a[i][j - 1];
          if (j % 5 == 4) p.a[i][j] = 0.0;
          if (j % 2 == 0) p.b[i] += p.a[i][j];
        }
      }
      p.ExpectOptimal(0.0, "degenerate");
    }
  }
}

TEST(Nnls, EndsForAnyToleranceAndRefusesWhatIsNotFinite) {
  Problem p(40, 10, 2);
  std::vector<double> x;
  for (double tolerance : {-1.0, 1e300, kNaN, -std::numeric_limits<double>::infinity()}) {
    p.Solve(tolerance, &x);
    for (double value : x) EXPECT_GE(value, 0.0);
  }
  p.a[3][4] = kNaN;
  EXPECT_FALSE(p.Solve(1e-10, &x));
}

}  // namespace
