#include "nu/linalg/linear_equ_sys.h"

#include <gtest/gtest.h>

#include <cmath>
#include <initializer_list>
#include <limits>
#include <vector>

#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/reference_data.h"

namespace {

using nu::test::Random;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr int kExact = 0;
constexpr int kLeastSquares = 1;

CNuMatrix Matrix(std::initializer_list<std::initializer_list<double>> rows) {
  CNuMatrix m(static_cast<int>(rows.size()), static_cast<int>(rows.begin()->size()));
  int i = 0;
  for (const auto& row : rows) std::copy(row.begin(), row.end(), m.GetData()[i++]);
  return m;
}

CNuMatrix DrawMatrix(int rows, int columns, Random* random) {
  CNuMatrix m(rows, columns);
  for (int i = 0; i < rows; ++i) {
    for (int j = 0; j < columns; ++j) m.GetData()[i][j] = random->Bell();
  }
  return m;
}

CNuVector DrawVector(int n, Random* random) {
  CNuVector v(n);
  for (int i = 0; i < n; ++i) v[i] = random->Bell();
  return v;
}

CNuVector Product(const CNuMatrix& m, const CNuVector& x) {
  CNuVector b(m.GetRowSize());
  for (int i = 0; i < m.GetRowSize(); ++i) {
    for (int j = 0; j < m.GetColumnSize(); ++j) b[i] += m.GetData()[i][j] * x[j];
  }
  return b;
}

CNuVector Solution(int method, const CNuMatrix& a, const CNuVector& b) {
  CNuLinearEquSys system(method);
  system.Solve(a, b);
  EXPECT_TRUE(system.SolutionExists());
  return system.GetSolution();
}

TEST(LinearEquSys, CertifiedRegressionsReachTheFullBound) {
  for (double tol : {1e-32, NuGetTol()}) {
    NuSetTol(tol);
    for (const auto& file : nu::test::ReferenceFiles("lit-ls-linear-system")) {
      const nu::test::Json set = nu::test::ReadReference(file);
      const std::vector<double> expected = set["result"]["solution"].Numbers();
      const std::vector<double> rhs = set["rhs"].Numbers();
      CNuMatrix a(static_cast<int>(rhs.size()), static_cast<int>(expected.size()));
      CNuVector b(a.GetRowSize());
      for (int i = 0; i < b.GetSize(); ++i) {
        const std::vector<double> row = set["matrix"][i].Numbers();
        std::copy(row.begin(), row.end(), a.GetData()[i]);
        b[i] = rhs[i];
      }
      const CNuVector x = Solution(kLeastSquares, a, b);
      double largest = 0.0;
      for (double value : expected) largest = std::max(largest, std::fabs(value));
      const double bound = 1024 * kEps * set["sensitivity"]["solution"].Number() * largest;
      for (int j = 0; j < x.GetSize(); ++j) EXPECT_NEAR(x[j], expected[j], bound) << file << " " << j;
      const CNuVector rest = b - Product(a, x);
      EXPECT_NEAR(rest % rest, set["result"]["residual_sum"].Number(), 1e-9 * (rest % rest)) << file;
    }
  }
}

TEST(LinearEquSys, SolvesEveryShapeForEveryRightHandSide) {
  Random random(1);
  for (int columns : {1, 2, 3, 4, 9, 11, 30}) {
    for (int rows : {columns, columns + 1, 40, 300, 520}) {
      const CNuMatrix a = DrawMatrix(rows, columns, &random);
      for (int method : {kExact, kLeastSquares}) {
        if (method == kExact && rows != columns) continue;
        CNuLinearEquSys system(method);
        system.Solve(a, DrawVector(rows, &random));
        const CNuVector x = DrawVector(columns, &random);
        const CNuVector b = Product(a, x);
        CNuLinearEquSys copy = system;
        copy.SetRightHandSide(b);
        EXPECT_TRUE(copy.GetSolution().IsEqual(x, 1e-11)) << rows << " " << columns;
        const CNuVector other = DrawVector(rows, &random);
        system.SetRightHandSide(other);
        EXPECT_TRUE(system.GetSolution().IsEqual(Solution(method, a, other), 1e-300)) << "not the same bits";
        if (method == kExact) continue;
        // The residual is orthogonal to the columns.
        const CNuVector rest = other - Product(a, system.GetSolution());
        EXPECT_TRUE(Product(a.Transpose(), rest).IsZero(1e-11)) << rows << " " << columns;
      }
    }
  }
}

// Of all that fit best, the shortest: it is a combination of the rows, so the part of any other solution along the null
// space is missing from it.
TEST(LinearEquSys, DeficientSystemsGiveTheShortestSolution) {
  Random random(2);
  for (auto [rows, columns, rank] : {std::tuple{2, 2, 1}, {3, 5, 3}, {5, 3, 2}, {40, 6, 4}, {300, 12, 5}, {4, 9, 2}}) {
    const CNuMatrix right = DrawMatrix(rank, columns, &random);
    CNuMatrix a(rows, columns);
    const CNuMatrix left = DrawMatrix(rows, rank, &random);
    for (int i = 0; i < rows; ++i) a.SetRowVector(i, Product(right.Transpose(), left.GetRowVector(i)));
    const CNuVector shortest = Product(right.Transpose(), DrawVector(rank, &random));
    CNuLinearEquSys system(kLeastSquares);
    system.Solve(a, Product(a, shortest));
    EXPECT_TRUE(system.GetSolution().IsEqual(shortest, 1e-11)) << rows << " " << columns;
    system.SetRightHandSide(Product(a, 2.0 * shortest));
    EXPECT_TRUE(system.GetSolution().IsEqual(2.0 * shortest, 1e-11)) << rows << " " << columns;
  }
}

// Columns in units far apart: an error of the large one must not spill into the small one.
TEST(LinearEquSys, LeastSquaresKeepsColumnsOfDifferentSizeApart) {
  Random random(3);
  CNuMatrix a = DrawMatrix(50, 3, &random);
  for (int i = 0; i < 50; ++i) a.GetData()[i][0] *= 1e8;
  const CNuVector x(3e-8, -2.0, 5.0);
  const CNuVector found = Solution(kLeastSquares, a, Product(a, x));
  for (int j = 0; j < 3; ++j) EXPECT_NEAR(found[j] / x[j], 1.0, 1e-13);
}

TEST(LinearEquSys, SingularSystemsAndModes) {
  const CNuMatrix singular = Matrix({{1, 2}, {2, 4}});
  const CNuMatrix regular = Matrix({{2, 1}, {1, 3}});
  CNuVector b(2);
  b[0] = 3;
  b[1] = 4;
  CNuLinearEquSys exact(kExact);
  exact.Solve(regular, b);
  EXPECT_TRUE(exact.GetSolution().IsEqual(Solution(kLeastSquares, regular, b), 1e-15));
  exact.Solve(singular, b);
  EXPECT_FALSE(exact.SolutionExists());
  EXPECT_TRUE(exact.GetSolution().GetSize() == 3 && exact.GetSolution().IsZero(1e-300));
  exact.SetSingularSolvable();
  exact.Solve(singular, b);
  EXPECT_TRUE(exact.SolutionExists() && exact.GetSolution().GetSize() == 2);
  for (int constraint : {1, 2, 3}) {
    for (int method : {kExact, kLeastSquares}) {
      CNuLinearEquSys system(method);
      const char* refusal =
          "operation 45 solving a set of equations with equality/inequality constraints|CNuLinearEquSys [0,0]";
      if (constraint & 1) {
        EXPECT_EQ(FailureOf([&] { system.SetEquality(regular, b); }), refusal);
      }
      if (constraint & 2) {
        EXPECT_EQ(FailureOf([&] { system.SetInequality(regular, b); }), refusal);
      }
      system.Solve(regular, b);
      EXPECT_EQ(system.SolutionExists(), method == kExact ? NuTrue : NuFalse);
    }
  }
  CNuLinearEquSys distance(kLeastSquares);
  const char* refusal = "operation 45 least distance programming|CNuLinearEquSys [0,0]";
  EXPECT_EQ(FailureOf([&] { distance.SetLeastDistance(); }), refusal);
  EXPECT_EQ(FailureOf([&] { distance.Solve(regular, b); }), refusal);
  distance.SetSingularSolvable();
  distance.Solve(regular, b);
  EXPECT_FALSE(distance.SolutionExists());
  EXPECT_EQ(FailureOf([&] { distance.Solve(); }), refusal);
}

TEST(LinearEquSys, Nonnegative) {
  CNuLinearEquSys system(kLeastSquares);
  system.SetNonnegative();
  const CNuMatrix a = Matrix({{1, 0}, {0, 1}, {1, 1}});
  system.Solve(a, CNuVector(2, -1, 1));
  EXPECT_TRUE(system.SolutionExists());
  EXPECT_NEAR(system.GetSolution()[0], 1.5, 1e-15);
  EXPECT_EQ(system.GetSolution()[1], 0.0);
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(CNuVector(1, 1, 1)); }),
            "operation 17 solving a set of equations|CNuLinearEquSys::SetRightHandSide() [0,0]");
  system.Solve(a, CNuVector(2, kNaN, 1));
  EXPECT_FALSE(system.SolutionExists());
}

TEST(LinearEquSys, FailuresAndWhatTheyLeave) {
  const CNuMatrix a = Matrix({{2, 1}, {1, 3}, {0, 1}});
  const CNuVector b(1, 2, 3), wrong(2);
  CNuLinearEquSys system(kLeastSquares);
  const char* noFactors = "operation 17 solving a set of equations|CNuLinearEquSys::SetRightHandSide() [0,0]";
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(b); }), noFactors);
  system.Solve(a, b);
  const CNuVector x = system.GetSolution();
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(wrong); }), noFactors);
  EXPECT_TRUE(system.SolutionExists() && system.GetSolution().IsEqual(x, 1e-300));
  EXPECT_EQ(FailureOf([&] { system.Solve(a, wrong); }),
            "operation 17 solving a set of equations|CNuLinearEquSys::Solve() [0,0]");
  EXPECT_FALSE(system.SolutionExists());
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(b); }), noFactors);
  EXPECT_EQ(FailureOf([&] { CNuLinearEquSys(kExact).Solve(a, b); }),
            "operation 45 solving an exact set of equations|CNuLinearEquSys [0,0]");
  for (double bad : {kNaN, std::numeric_limits<double>::infinity()}) {
    CNuMatrix broken = a;
    broken.Element(1, 1) = bad;
    EXPECT_EQ(FailureOf([&] { system.Solve(broken, b); }), "operation 46 calculation|CNuMatrix::SVD() [0,0]");
    EXPECT_FALSE(system.SolutionExists());
    CNuLinearEquSys exact(kExact);
    exact.Solve(broken.SubMatrix(0, 1, 0, 1), wrong);
    EXPECT_FALSE(exact.SolutionExists());
    system.Solve(a, CNuVector(1, bad, 0));
    EXPECT_TRUE(std::isnan(system.GetSolution()[0]));
  }
}

}  // namespace
