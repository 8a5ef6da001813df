#include "nu/linalg/linear_equ_sys.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "nu/foundation/tolerances.h"
#include "nu/linalg/matrix.h"
#include "support/failures.h"
#include "support/matrix_clouds.h"
#include "support/reference_data.h"

namespace {

using namespace nu::test;

constexpr double kExactly = std::numeric_limits<double>::denorm_min();
constexpr int kExact = 0;
constexpr int kLeastSquares = 1;
constexpr const char* kNoFactors = "operation 17 solving a set of equations|CNuLinearEquSys::SetRightHandSide() [0,0]";

CNuMatrix DrawMatrix(int rows, int columns) {
  static Random random(1);
  return UniformMatrix(random, rows, columns);
}

CNuVector DrawVector(int n) {
  return DrawMatrix(n, 1).GetColumnVector(0);
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
    for (const auto& file : ReferenceFiles("lit-ls-linear-system")) {
      const Json set = ReadReference(file);
      const std::vector<double> expected = set["result"]["solution"].Numbers();
      CNuVector b(static_cast<int>(set["rhs"].Size()));
      CNuMatrix a(b.GetSize(), static_cast<int>(expected.size()));
      for (int i = 0; i < b.GetSize(); ++i) {
        b[i] = set["rhs"][i].Number();
        for (int j = 0; j < a.GetColumnSize(); ++j) a.GetData()[i][j] = set["matrix"][i][j].Number();
      }
      const CNuVector x = Solution(kLeastSquares, a, b);
      double largest = 0.0;
      for (double value : expected) largest = std::max(largest, std::fabs(value));
      const double bound = 1024 * 0x1p-52 * set["sensitivity"]["solution"].Number() * largest;
      for (int j = 0; j < x.GetSize(); ++j) EXPECT_NEAR(x[j], expected[j], bound) << file << " " << j;
    }
  }
}

TEST(LinearEquSys, SolvesEveryShapeForEveryRightHandSide) {
  for (int columns : {1, 2, 3, 4, 9, 11, 30}) {
    for (int rows : {columns, columns + 1, 40, 300, 520}) {
      const CNuMatrix a = DrawMatrix(rows, columns);
      for (int method : {kExact, kLeastSquares}) {
        if (method == kExact && rows != columns) continue;
        CNuLinearEquSys system(method);
        system.Solve(a, DrawVector(rows));
        CNuLinearEquSys copy = system;
        const CNuVector x = DrawVector(columns), b = DrawVector(rows);
        copy.SetRightHandSide(a * x);
        EXPECT_TRUE(copy.GetSolution().IsEqual(x, 1e-11)) << rows << " " << columns;
        system.SetRightHandSide(b);
        EXPECT_TRUE(system.GetSolution().IsEqual(Solution(method, a, b), kExactly)) << rows << " " << columns;
        // The residual is orthogonal to the columns.
        EXPECT_TRUE(((b - a * system.GetSolution()) * a).IsZero(1e-11)) << rows << " " << columns;
      }
    }
  }
}

// Of all that fit best the shortest: a combination of the rows.
TEST(LinearEquSys, DeficientSystemsGiveTheShortestSolution) {
  // Columns in units far apart, but of full rank: errors of the large one do not spill into the small ones.
  CNuMatrix uneven = DrawMatrix(50, 3);
  for (int i = 0; i < 50; ++i) uneven.GetData()[i][0] *= 1e8;
  EXPECT_TRUE(Solution(kLeastSquares, uneven, uneven * CNuVector(3e-8, -2, 5)).IsEqual(CNuVector(3e-8, -2, 5), 1e-13));
  for (auto [rows, columns, rank] : {std::tuple{2, 2, 1}, {3, 5, 3}, {5, 3, 2}, {40, 6, 4}, {300, 12, 5}, {4, 9, 2}}) {
    const CNuMatrix right = DrawMatrix(rank, columns);
    const CNuMatrix a = DrawMatrix(rows, rank) * right;
    const CNuVector shortest = DrawVector(rank) * right;
    CNuLinearEquSys system(kLeastSquares);
    system.Solve(a, a * shortest);
    EXPECT_TRUE(system.GetSolution().IsEqual(shortest, 1e-11)) << rows << " " << columns;
    system.SetRightHandSide(a * (2.0 * shortest));
    EXPECT_TRUE(system.GetSolution().IsEqual(2.0 * shortest, 1e-11)) << rows << " " << columns;
  }
}

TEST(LinearEquSys, SingularSystemsAndModes) {
  const CNuMatrix singular = DrawMatrix(2, 1) * DrawMatrix(1, 2), regular = DrawMatrix(2, 2);
  const CNuVector b = DrawVector(2);
  CNuLinearEquSys exact(kExact);
  exact.Solve(singular, b);
  EXPECT_FALSE(exact.SolutionExists());
  EXPECT_TRUE(exact.GetSolution().IsEqual(CNuVector(0, 0, 0), kExactly));
  exact.SetSingularSolvable();
  exact.Solve(singular, b);
  EXPECT_TRUE(exact.SolutionExists() && exact.GetSolution().GetSize() == 2);
  const char* distance = "operation 45 least distance programming|CNuLinearEquSys [0,0]";
  const char* constraints =
      "operation 45 solving a set of equations with equality/inequality constraints|CNuLinearEquSys [0,0]";
  CNuLinearEquSys least(kLeastSquares);
  for (auto set : {&CNuLinearEquSys::SetEquality, &CNuLinearEquSys::SetInequality}) {
    EXPECT_EQ(FailureOf([&] { (least.*set)(regular, b); }), constraints);
    EXPECT_EQ(FailureOf([&] { (exact.*set)(regular, b); }), constraints);
    least.Solve(regular, b);
    exact.Solve(regular, b);
    EXPECT_TRUE(exact.SolutionExists() && !least.SolutionExists());
  }
  EXPECT_EQ(FailureOf([&] { least.SetLeastDistance(); }), distance);
  EXPECT_EQ(FailureOf([&] { least.Solve(regular, b); }), distance);
  EXPECT_EQ(FailureOf([&] { least.Solve(); }), distance);
  least.SetNonnegative();
  least.Solve(CNuMatrix::Identity(3), CNuVector(-1, 3, 0));
  EXPECT_TRUE(least.GetSolution().IsEqual(CNuVector(0, 3, 0), 1e-15));
  EXPECT_EQ(FailureOf([&] { least.SetRightHandSide(b); }), kNoFactors);
  least.SetSingularSolvable();
  least.Solve(regular, b);
  EXPECT_FALSE(least.SolutionExists());
}

TEST(LinearEquSys, FailuresAndWhatTheyLeave) {
  CNuMatrix a = DrawMatrix(3, 2);
  const CNuVector b(1, 2, 3), wrong(2);
  CNuLinearEquSys system(kLeastSquares);
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(b); }), kNoFactors);
  system.Solve(a, b);
  const CNuVector x = system.GetSolution();
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(wrong); }), kNoFactors);
  EXPECT_TRUE(system.SolutionExists() && system.GetSolution().IsEqual(x, kExactly));
  EXPECT_EQ(FailureOf([&] { system.Solve(a, wrong); }),
            "operation 17 solving a set of equations|CNuLinearEquSys::Solve() [0,0]");
  EXPECT_FALSE(system.SolutionExists());
  EXPECT_EQ(FailureOf([&] { system.SetRightHandSide(b); }), kNoFactors);
  EXPECT_EQ(FailureOf([&] { CNuLinearEquSys(kExact).Solve(a, b); }),
            "operation 45 solving an exact set of equations|CNuLinearEquSys [0,0]");
  system.Solve(a, CNuVector(1, kNaN, 0));
  EXPECT_TRUE(std::isnan(system.GetSolution()[0]));
  for (double bad : {kNaN, std::numeric_limits<double>::infinity()}) {
    a.Element(1, 1) = bad;
    EXPECT_EQ(FailureOf([&] { system.Solve(a, b); }), "operation 46 calculation|CNuMatrix::SVD() [0,0]");
    CNuLinearEquSys exact(kExact), nonnegative(kLeastSquares);
    nonnegative.SetNonnegative();
    exact.Solve(a.SubMatrix(0, 1, 0, 1), wrong);
    nonnegative.Solve(a, b);
    EXPECT_FALSE(system.SolutionExists() || exact.SolutionExists() || nonnegative.SolutionExists());
  }
}

}  // namespace
