#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <limits>
#include <numeric>

#include "nu/engine/minimax/enclosing_cylinder.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/geometry/internal/fit_guards.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

// Rows with values of their own, or small whole numbers: equal rows, dependent gradients, many optima.
template<int K>
MinimaxRows<K> RandomRows(Random& random, int size, bool whole) {
  MinimaxRows<K> rows;
  rows.size = size;
  const auto number = [&] { return whole ? random.Below(5) - 2.0 : random.Uniform(-1.0, 1.0); };
  for (int i = 0; i < size; ++i) {
    rows.value[i] = number();
    for (int k = 0; k < K; ++k) rows.gradient[k][i] = number();
  }
  return rows;
}

// Gauss elimination; false for a singular system.
template<int N>
bool SolveEquations(std::array<std::array<double, N + 1>, N> a, std::array<double, N>& x) {
  for (int j = 0; j < N; ++j) {
    int pivot = j;
    for (int i = j; i < N; ++i)
      if (std::fabs(a[i][j]) > std::fabs(a[pivot][j])) pivot = i;
    if (std::fabs(a[pivot][j]) < 1e-9) return false;
    std::swap(a[j], a[pivot]);
    for (int i = 0; i < N; ++i) {
      const double f = a[i][j] / a[j][j];
      for (int k = j; k <= N && i != j; ++k) a[i][k] -= f * a[j][k];
    }
  }
  for (int j = 0; j < N; ++j) x[j] = a[j][N] / a[j][j];
  return true;
}

// The least t over all vertices: every choice of K + 1 of the rows and bounds as equations.
template<int K>
double LeastByEnumeration(const MinimaxRows<K>& rows, double bound) {
  constexpr int n = K + 1;
  const int all = rows.size + 2 * K;
  std::array<int, n> chosen;
  std::iota(chosen.begin(), chosen.end(), 0);
  double least = std::numeric_limits<double>::infinity();
  for (;;) {
    std::array<std::array<double, n + 1>, n> a{};
    for (int j = 0; j < n; ++j) {
      const int c = chosen[j];
      if (c < rows.size) {
        for (int k = 0; k < K; ++k) a[j][k] = rows.gradient[k][c];
        a[j][K] = -1.0;
        a[j][n] = -rows.value[c];
      } else {
        a[j][(c - rows.size) / 2] = 1.0;
        a[j][n] = (c - rows.size) % 2 == 0 ? bound : -bound;
      }
    }
    std::array<double, n> x;
    if (SolveEquations<n>(a, x)) {
      double step[K];
      bool inside = true;
      for (int k = 0; k < K; ++k) {
        step[k] = x[k];
        inside = inside && std::fabs(x[k]) <= bound * (1.0 + 1e-9);
      }
      for (int i = 0; i < rows.size; ++i) inside = inside && rows.After(step, i) <= x[K] + 1e-9;
      if (inside) least = std::min(least, x[K]);
    }
    int j = n - 1;
    while (j >= 0 && chosen[j] == all - n + j) --j;
    if (j < 0) return least;
    ++chosen[j];
    for (int k = j + 1; k < n; ++k) chosen[k] = chosen[k - 1] + 1;
  }
}

template<int K>
void ExpectContacts(const MinimaxRows<K>& rows, const MinimaxContacts<K>& contacts, const double (&step)[K],
                    double value, double tolerance) {
  double sum = 0.0;
  for (int j = 0; j < contacts.count; ++j) {
    EXPECT_GE(contacts.multiplier[j], 0.0);
    EXPECT_NEAR(rows.After(step, contacts.row[j]), value, tolerance);
    sum += contacts.multiplier[j];
  }
  EXPECT_NEAR(sum, 1.0, tolerance);
  for (int i = 0; i < rows.size; ++i) EXPECT_LE(rows.After(step, i), value + tolerance);
}

template<int K>
void CheckPrograms(Random& random, int cases) {
  constexpr double kTolerance = 1e-10;
  for (int c = 0; c < cases; ++c) {
    SCOPED_TRACE(c);
    const bool whole = c % 2 == 0;
    const MinimaxRows<K> rows = RandomRows<K>(random, 1 + random.Below(7), whole);
    const double bound = std::pow(10.0, random.Uniform(-2.0, 1.0));
    LinearMinimax<K> linear;
    ASSERT_TRUE(linear.Solve(rows, bound, 1e-14));
    EXPECT_NEAR(linear.Value(), LeastByEnumeration(rows, bound), kTolerance);
    ExpectContacts(rows, linear.Contacts(), linear.Step(), linear.Value(), kTolerance);
    for (const double s : linear.Step()) EXPECT_LE(std::fabs(s), bound * (1.0 + kTolerance));

    // With curvature: the multipliers balance the gradients against it.
    double h[K][K] = {};
    for (int i = 0; i < K; ++i) h[i][i] = random.Uniform(0.1, 2.0);
    h[0][K - 1] = 0.05;
    h[K - 1][0] = 0.05;
    CurvedMinimax<K> curved;
    MinimaxContacts<K> contacts = linear.Contacts();
    ASSERT_TRUE(curved.Solve(rows, h, 1e-13, contacts));
    ExpectContacts(rows, contacts, curved.Step(), curved.Value(), kTolerance);
    for (int k = 0; k < K; ++k) {
      double balance = 0.0;
      for (int i = 0; i < K; ++i) balance += h[k][i] * curved.Step()[i];
      for (int j = 0; j < contacts.count; ++j) balance += contacts.multiplier[j] * rows.gradient[k][contacts.row[j]];
      EXPECT_NEAR(balance, 0.0, kTolerance);
    }
  }
}

TEST(Minimax, ProgramsAgreeWithEnumeration) {
  Random random(11);
  CheckPrograms<4>(random, 200);
  CheckPrograms<2>(random, 2000);
  CheckPrograms<3>(random, 1000);
}

// Four contacts in a square leave one direction without positive curvature; it is found.
TEST(Minimax, SaddlesAreRecognised) {
  MinimaxRows<2> rows;
  rows.size = 2;
  for (int i = 0; i < 2; ++i) {
    rows.value[i] = 1.0;
    rows.gradient[0][i] = i == 0 ? 1.0 : -1.0;
    rows.gradient[1][i] = 0.0;
  }
  const double h[2][2] = {{1.0, 0.0}, {0.0, -0.5}};
  CurvedMinimax<2> curved;
  MinimaxContacts<2> contacts;
  contacts.Add(0, 0.5);
  contacts.Add(1, 0.5);
  EXPECT_FALSE(curved.Solve(rows, h, 1e-15, contacts));
  EXPECT_TRUE(curved.IsIndefinite());
  EXPECT_EQ(std::fabs(curved.NegativeCurvatureDirection()[1]), 1.0);
  EXPECT_EQ(curved.NegativeCurvatureDirection()[0], 0.0);
}

// All points are inside, the contacts on the boundary, and their gradients balance.
template<class Model>
void ExpectOptimum(PointBlocks& blocks, const MinimaxSolution<Model>& found, double least, double most,
                   double tolerance) {
  ASSERT_EQ(found.end, MinimaxEnd::converged);
  static double deviation[kBlockPoints], gradient[Model::kUnknowns][kMostRows];
  blocks.ForEach([&](const PointBlock& block) {
    double smallest, largest;
    found.model.Deviations(block, deviation, smallest, largest);
    EXPECT_GE(smallest, least - tolerance);
    EXPECT_LE(largest, most + tolerance);
  });
  PointBlock contacts;
  double total = 0.0;
  for (int j = 0; j < kLanes; ++j) {
    const Vec3& p = found.contact[std::min(j, found.contacts - 1)];
    contacts.x[j] = p.x, contacts.y[j] = p.y, contacts.z[j] = p.z;
  }
  contacts.size = static_cast<std::size_t>(found.contacts);
  found.model.Gradients(contacts, deviation, gradient);
  for (int j = 0; j < found.contacts; ++j) {
    EXPECT_GE(found.multiplier[j], 0.0);
    EXPECT_NEAR(found.sign[j] * deviation[j], found.value, tolerance);
    total += found.multiplier[j];
  }
  EXPECT_NEAR(total, 1.0, 1e-12);
  for (int k = 0; k < Model::kUnknowns; ++k) {
    double sum = 0.0;
    for (int j = 0; j < found.contacts; ++j) sum += found.multiplier[j] * found.sign[j] * gradient[k][j];
    EXPECT_NEAR(sum, 0.0, 1e-7);
  }
}

// A shaft with form deviations: the smallest cylinder around it and the largest inside.
TEST(Minimax, ReachesTheOptimumOnEitherSide) {
  constexpr double kRounding = 1e-14;
  Random random(12);
  for (int c = 0; c < 150; ++c) {
    SCOPED_TRACE(c);
    CNuPointArray points(0);
    const int n = c % 20 == 0 ? 3000 : 60 + random.Below(100);
    for (int i = 0; i < n; ++i) {
      const double angle = random.Uniform(0.0, 360.0) * kDegree;
      const double r = 5.0 + 0.01 * std::cos(3.0 * angle) + 0.002 * random.Bell();
      points.Add({r * std::cos(angle), r * std::sin(angle), random.Uniform(-20.0, 20.0)});
    }
    PointBlocks blocks(ViewOf(points), MiddleOf(ViewOf(points)));
    const Vec3 middle = Vec3{} - blocks.Origin();
    const AxisDistance start{AxisFrame::Along(middle, Unit({0.003, -0.002, 1.0})), 20.0};
    const auto outer = Minimax<AxisDistance>(blocks, MinimaxSide::outer, kRounding, 1000).Solve(start);
    ExpectOptimum(blocks, outer, 0.0, outer.value, 1e-12);
    const auto inner = Minimax<AxisDistance>(blocks, MinimaxSide::inner, kRounding, 1000).Solve(start);
    ExpectOptimum(blocks, inner, -inner.value, kInf, 1e-12);
  }
}

}  // namespace
