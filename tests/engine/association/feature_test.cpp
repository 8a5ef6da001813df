#include "nu/engine/association/feature.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace {

using namespace nu::internal;

constexpr int kKinds = static_cast<int>(FeatureKind::torus) + 1;

struct Case {
  Feature feature;
  Vec3 point;
};

Case AnyCase(FeatureKind kind, std::mt19937& random) {
  std::uniform_real_distribution<double> unit(-1.0, 1.0);
  const auto vector = [&] { return Vec3{unit(random), unit(random), unit(random)}; };
  Case any;
  any.feature.kind = kind;
  any.feature.frame = AxisFrame::Along(vector(), Unit(vector()), vector());
  any.feature.size[0] = 1.5 + unit(random);
  any.feature.size[1] = 0.6 + 0.4 * unit(random);
  any.feature.bothNappes = unit(random) > 0.0;
  any.point = any.feature.frame.origin + 3.0 * vector();
  return any;
}

double Along(const Case& at, int i, double di, int j = 0, double dj = 0.0) {
  double step[kUnknowns] = {};
  step[i] += di;
  step[j] += dj;
  return DeviationOf(Moved(at.feature, step), at.point);
}

// By central differences of h and 2 h, extrapolated.
double First(const Case& at, int i) {
  const double h = 1e-3;
  const auto slope = [&](double d) { return (Along(at, i, d) - Along(at, i, -d)) / (2.0 * d); };
  return (4.0 * slope(h) - slope(2.0 * h)) / 3.0;
}
double Second(const Case& at, int i, int j) {
  const double h = 1e-3;
  const auto mixed = [&](double d) {
    const double sum = Along(at, i, d, j, d) + Along(at, i, -d, j, -d);
    return (sum - Along(at, i, d, j, -d) - Along(at, i, -d, j, d)) / (4.0 * d * d);
  };
  return (4.0 * mixed(h) - mixed(2.0 * h)) / 3.0;
}

using Matrix = double[kUnknowns][kUnknowns];

void FindSecond(const Case& at, UnknownMask mask, Matrix& second) {
  for (int i = 0; i < kUnknowns; ++i)
    for (int j = 0; j < kUnknowns; ++j) second[i][j] = (mask >> i & mask >> j & 1U) ? Second(at, i, j) : 0.0;
}

// Next to an axis, a centre or an evolute derivatives grow without bound, and differences reach across: those cases
// leave.
bool IsSmooth(const Matrix& second) {
  for (const auto& row : second)
    for (const double value : row)
      if (std::fabs(value) > 10.0) return false;
  return true;
}

TEST(FeatureTest, DerivativesAreThoseOfTheDeviationsAlongTheMove) {
  std::mt19937 random(1);
  for (int kind = 0; kind < kKinds; ++kind) {
    const UnknownMask mask = UnknownsOf(static_cast<FeatureKind>(kind));
    int checked = 0;
    for (int trial = 0; trial < 40; ++trial) {
      SCOPED_TRACE(testing::Message() << "kind " << kind << ", trial " << trial);
      const Case at = AnyCase(static_cast<FeatureKind>(kind), random);
      double gradient[kUnknowns];
      Matrix second = {};
      Matrix differences;
      EXPECT_NEAR(DeviationOf(at.feature, at.point, gradient), DeviationOf(at.feature, at.point), 1e-15);
      AddCurvature(at.feature, at.point, 1.0, second);
      FindSecond(at, mask, differences);
      if (!IsSmooth(second) || !IsSmooth(differences)) continue;
      ++checked;
      for (int i = 0; i < kUnknowns; ++i) {
        EXPECT_NEAR(gradient[i], (mask >> i & 1U) ? First(at, i) : 0.0, 1e-7) << i;
        for (int j = 0; j < kUnknowns; ++j) EXPECT_NEAR(second[i][j], differences[i][j], 1e-5) << i << j;
      }
    }
    EXPECT_GT(checked, 20);
  }
}

TEST(FeatureTest, PointsWithoutADirectionHaveDeviationsAndNoSlope) {
  for (const FeatureKind kind : {FeatureKind::line, FeatureKind::circle, FeatureKind::sphere, FeatureKind::cylinder,
                                 FeatureKind::circleInSpace, FeatureKind::ellipse}) {
    Feature feature;
    feature.kind = kind;
    feature.frame = AxisFrame::Along({}, {0.0, 0.0, 1.0}, {1.0, 0.0, 0.0});
    feature.size[0] = 2.0;
    feature.size[1] = 2.0;
    const bool isOnCurve = kind == FeatureKind::circleInSpace;
    double gradient[kUnknowns];
    double second[kUnknowns][kUnknowns] = {};
    const Vec3 point{isOnCurve ? 2.0 : 0.0, 0.0, 0.0};
    EXPECT_EQ(DeviationOf(feature, point, gradient), isOnCurve || kind == FeatureKind::line ? 0.0 : -2.0);
    AddCurvature(feature, point, 1.0, second);
    if (kind != FeatureKind::ellipse) {
      EXPECT_EQ(gradient[kShiftX], 0.0);
      EXPECT_EQ(gradient[kShiftY], 0.0);
    }
    for (const auto& row : second)
      for (const double value : row) EXPECT_TRUE(std::isfinite(value));
  }
}

TEST(FeatureTest, ConesTakeTheNappeOfThePointWhereTheyHaveBoth) {
  Feature cone;
  cone.kind = FeatureKind::cone;
  cone.frame = AxisFrame::Along({}, {0.0, 0.0, 1.0}, {1.0, 0.0, 0.0});
  cone.size[0] = 1.0;
  cone.size[1] = std::atan(0.5);
  const Vec3 behind{0.0, 3.0, -6.0};  // the apex is at -2
  EXPECT_NEAR(DeviationOf(cone, behind), 5.0 * std::cos(cone.size[1]), 1e-15);
  cone.bothNappes = true;
  EXPECT_NEAR(DeviationOf(cone, behind), 1.0 * std::cos(cone.size[1]), 1e-15);
}

// Sizes in either order, signs on both sides of every conic.
TEST(FeatureTest, ConicsAreNegativeOnTheSideOfTheirFoci) {
  Feature conic;
  conic.frame = AxisFrame::Along({1.0, 2.0, 0.0}, {0.0, 0.0, 1.0}, {0.0, 1.0, 0.0});
  conic.kind = FeatureKind::ellipse;
  conic.size[0] = 2.0;
  conic.size[1] = 5.0;  // along -x
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {-5.0, 2.0, 7.0}), 1.0);
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {1.0, 3.5, 7.0}), -0.5);
  conic.kind = FeatureKind::hyperbola;
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {1.0, 2.5, 0.0}), 1.5);
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {1.0, -1.0, 0.0}), -1.0);
  conic.kind = FeatureKind::parabola;
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {1.0, 1.0, 0.0}), 1.0);
  EXPECT_DOUBLE_EQ(DeviationOf(conic, {1.0, 3.0, 0.0}), -1.0);
}

}  // namespace
