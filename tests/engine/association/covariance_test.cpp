#include "nu/engine/association/covariance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <vector>

#include "nu/curves/circle.h"
#include "nu/engine/association/feature_kernels.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/geometry/plane.h"
#include "nu/surfaces/cylinder.h"
#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

constexpr UnknownMask kAll = ~0U;
const AxisFrame kWorld{{}, {1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}};

double Variance(const Covariance& c, const Gradient& gradient) {
  const double u = UncertaintyPerUnit(c, gradient);
  return u * u;
}

void ExpectClose(double value, double expected, double relative, const char* what) {
  EXPECT_NEAR(value, expected, relative * std::fabs(expected)) << what;
}

const Feature kEvery[] = {
    {FeatureKind::lineInPlane, kWorld, {}},
    {FeatureKind::line, kWorld, {}},
    {FeatureKind::plane, kWorld, {}},
    {FeatureKind::circle, kWorld, {5.0, 0.0}},
    {FeatureKind::circleInSpace, kWorld, {5.0, 0.0}},
    {FeatureKind::ellipse, kWorld, {5.0, 3.0}},
    {FeatureKind::hyperbola, kWorld, {2.0, 3.0}},
    {FeatureKind::parabola, kWorld, {1.5, 0.0}},
    {FeatureKind::sphere, kWorld, {5.0, 0.0}},
    {FeatureKind::cylinder, kWorld, {5.0, 0.0}},
    {FeatureKind::cone, kWorld, {5.0, 0.4}},
    {FeatureKind::cone, kWorld, {1.0, 0.4}, true},
    {FeatureKind::torus, kWorld, {5.0, 1.0}},
};

// Lanes give what the definition gives for one point; changes of a feature are found again.
TEST(FeatureKernels, AgreeWithTheDefinition) {
  Random random(1);
  const CNuPointArray cloud = BoxCloud(random, 21, 12.0, 12.0, 12.0);
  for (const Feature& given : kEvery) {
    double step[kUnknowns];
    for (int k = 0; k < kUnknowns; ++k)
      step[k] = (UnknownsOf(given.kind) >> k & 1U) != 0 ? random.Uniform(-1e-7, 1e-7) : 0.0;
    const Feature feature = Moved(given, step);
    double change[kUnknowns];
    FindChange(given, feature, change);
    for (int k = 0; k < kUnknowns; ++k) EXPECT_NEAR(change[k], step[k], 1e-13) << static_cast<int>(given.kind);

    PointBlocks blocks(ViewOf(cloud), feature.frame.origin);
    blocks.ForEach([&](const PointBlock& block) {
      double values[kUnknowns + 2][kBlockPoints], low, high;
      double* column[kUnknowns];
      for (int k = 0; k < kUnknowns; ++k) {
        const bool moves = ResidualsPerPoint(feature.kind) == 1 && (UnknownsOf(feature.kind) >> k & 1U) != 0;
        column[k] = moves ? values[k] : nullptr;
      }
      FindDeviations(block, feature, values[kUnknowns], low, high);
      FindRows(block, 0, block.size, feature, 0, column, values[kUnknowns + 1]);
      EXPECT_EQ(high, *std::max_element(values[kUnknowns], values[kUnknowns] + block.size));
      for (std::size_t i = 0; i < block.size; ++i) {
        const Vec3 p = LoadVec3(ViewOf(cloud)[i]);
        double gradient[kUnknowns];
        EXPECT_NEAR(values[kUnknowns][i], DeviationOf(feature, p, gradient), 1e-14 * 20);
        for (int k = 0; k < kUnknowns; ++k)
          EXPECT_NEAR(column[k] != nullptr ? values[k][i] : gradient[k], gradient[k], 1e-14 * 20) << i << " " << k;
      }
    });
  }
}

TEST(Covariance, IsThatOfTheAnalyticCases) {
  constexpr int kCount = 16;
  CNuPointArray ring(kCount), tube(2 * kCount), grid(25), rod(9);
  for (int i = 0; i < kCount; ++i) {
    const double x = 5.0 * std::cos(22.5 * i * kDegree), y = 5.0 * std::sin(22.5 * i * kDegree);
    ring.Add({x, y, 0.0});
    tube.Add({x, y, -10.0});
    tube.Add({x, y, 10.0});
  }
  for (int i = 0; i < 25; ++i) grid.Add({i % 5 - 2.0, 3.0 * (i / 5 - 2.0), 0.0});
  for (int i = 0; i < 9; ++i) rod.Add({0.0, 0.0, i - 4.0});
  constexpr double kRounding = 1e-14;

  const Covariance circle = CovarianceOf(ViewOf(ring), nullptr, {FeatureKind::circle, kWorld, {5.0, 0.0}}, kAll);
  ExpectClose(Variance(circle, UnknownGradient(kSize0, 2.0)), 4.0 / kCount, kRounding, "diameter");
  ExpectClose(Variance(circle, Gradient{{0.6, 0.8, 0.0}}), 2.0 / kCount, kRounding, "centre");
  ExpectClose(circle.condition, std::sqrt(2.0), kRounding, "condition");
  EXPECT_EQ(circle.degreesOfFreedom, kCount - 3);

  const Feature bore{FeatureKind::cylinder, kWorld, {5.0, 0.0}};
  const Covariance cylinder = CovarianceOf(ViewOf(tube), nullptr, bore, kAll);
  ExpectClose(Variance(cylinder, AxisPointGradient(30.0, 0.0, 1.0)), 2.0 / 32 * (1.0 + 9.0), kRounding, "axis");
  ExpectClose(Variance(cylinder, SurfaceGradient(bore, {5.0, 0.0, 0.0})), 3.0 / 32, kRounding, "surface");

  const Feature flat{FeatureKind::plane, kWorld, {}};
  const Covariance plane = CovarianceOf(ViewOf(grid), nullptr, flat, kAll);
  ExpectClose(Variance(plane, SurfaceGradient(flat, {2.0, 6.0, 0.0})), (1.0 + 2.0 + 2.0) / 25, kRounding, "corner");
  // From far away the plane below the points is as certain as from among them.
  Feature far = flat;
  far.frame.origin = {1e6, 0.0, 0.0};
  const Covariance remote = CovarianceOf(ViewOf(grid), nullptr, far, kAll);
  ExpectClose(Variance(remote, SurfaceGradient(far, {})), 1.0 / 25, 1e-9, "remote");
  EXPECT_GT(remote.condition, 1e5);
  EXPECT_EQ(CentredOn(ViewOf(grid), far).frame.origin.x, 0.0);

  const Covariance line = CovarianceOf(ViewOf(rod), nullptr, {FeatureKind::line, kWorld, {}}, kAll);
  ExpectClose(Variance(line, AxisPointGradient(4.0, 1.0, 0.0)), 1.0 / 9 + 16.0 / 60, kRounding, "rod");
  EXPECT_EQ(line.degreesOfFreedom, 2 * 9 - 4);
}

// NIST Statistical Reference Datasets, https://www.itl.nist.gov/div898/strd: univariate NumAcc3 and NumAcc4, linear
// regression Norris. A line that may only shift has the uncertainty of a mean; one that hardly slopes has distances
// across it that are those along y.
TEST(Covariance, GivesTheCertifiedStandardErrors) {
  for (const double base : {1e6, 1e7}) {
    CNuPointArray values(1001);
    for (int i = 0; i < 1001; ++i) values.Add({0.0, base + (i == 0 ? 0.2 : i % 2 == 1 ? 0.1 : 0.3), 0.0});
    Feature mean{FeatureKind::lineInPlane, kWorld, {}};
    mean.frame.origin = {0.0, base + 0.2, 0.0};
    const Covariance c = CovarianceOf(ViewOf(values), nullptr, mean, 1U << kShiftY);
    ExpectClose(c.sigma, 0.1, 2 * kEps * base / 0.1, "standard deviation");
    ExpectClose(StandardUncertainty(c, UnknownGradient(kShiftY)), c.sigma / std::sqrt(1001.0), 1e-14, "mean");
  }

  const double norris[][2] = {
      {0.2, 0.1},     {337.4, 338.8}, {118.2, 118.1}, {884.6, 888.0}, {10.1, 9.2},    {226.5, 228.1},
      {666.3, 668.5}, {996.3, 998.5}, {448.6, 449.1}, {777.0, 778.9}, {558.2, 559.2}, {0.4, 0.3},
      {0.6, 0.1},     {775.5, 778.1}, {666.9, 668.8}, {338.0, 339.3}, {447.5, 448.9}, {11.6, 10.8},
      {556.0, 557.7}, {228.1, 228.3}, {995.8, 998.0}, {887.6, 888.8}, {120.2, 119.6}, {0.3, 0.3},
      {0.3, 0.6},     {556.8, 557.6}, {339.1, 339.3}, {887.2, 888.0}, {999.0, 998.5}, {779.0, 778.9},
      {11.1, 10.2},   {118.3, 117.6}, {229.2, 228.9}, {669.1, 668.4}, {448.9, 449.2}, {0.5, 0.2}};
  constexpr double kFlat = 0x1p-24;
  CNuPointArray points(36);
  for (const auto& [x, y] : norris) points.Add({x, kFlat * y, 0.0});
  const double slope = kFlat * 1.00211681802045;
  Feature line{FeatureKind::lineInPlane, kWorld, {}};
  line.frame = AxisFrame::Along({0.0, kFlat * -0.262323073774029, 0.0}, {0.0, 0.0, 1.0}, {1.0, slope, 0.0});
  const Covariance c = CovarianceOf(ViewOf(points), nullptr, line, kAll);
  ExpectClose(c.sigma, kFlat * 0.884796396144373, 1e-12, "residual standard deviation");
  ExpectClose(StandardUncertainty(c, UnknownGradient(kShiftY)), kFlat * 0.232818234301152, 1e-12, "intercept");
  ExpectClose(StandardUncertainty(c, UnknownGradient(kTurn)), kFlat * 0.429796848199937e-3, 1e-12, "slope");
}

TEST(Covariance, TakesWeightsAsRepetitionsAndConstraintsAsKnown) {
  Random random(5);
  const CNuPointArray points = CylinderCloud(random, 40, 5.0, 20.0, 100.0, 1e-3);
  CNuPointArray repeated(200);
  std::vector<double> weights;
  for (int i = 0; i < points.GetSize(); ++i) {
    weights.push_back(random.Below(4));
    for (int k = 0; k < weights.back(); ++k) repeated.Add(points[i]);
  }
  const Feature bore{FeatureKind::cylinder, kWorld, {5.0, 0.0}};
  const Covariance weighted = CovarianceOf(ViewOf(points), weights.data(), bore, kAll);
  const Covariance plain = CovarianceOf(ViewOf(repeated), nullptr, bore, kAll);
  for (int k = 0; k < 5; ++k) {
    const Gradient gradient = UnknownGradient(plain.unknown[k]);
    ExpectClose(UncertaintyPerUnit(weighted, gradient), UncertaintyPerUnit(plain, gradient), 1e-12, "weight");
  }
  ExpectClose(weighted.sumSquares, plain.sumSquares, 1e-13, "sum");
  EXPECT_EQ(weighted.degreesOfFreedom, 40 - std::count(weights.begin(), weights.end(), 0.0) - 5);

  double matrix[kUnknowns][kUnknowns];
  FillCovariance(plain, 1.0, matrix);
  const Covariance known = CovarianceOf(ViewOf(repeated), nullptr, bore, ~(1U << kSize0));
  for (int i = 0; i < 4; ++i) {
    ExpectClose(matrix[i][i], Variance(plain, UnknownGradient(plain.unknown[i])), 1e-12, "diagonal");
    // What a known radius leaves of a variance: less the share that it correlates with (Schur's complement).
    const double left = matrix[i][i] - matrix[i][4] * matrix[i][4] / matrix[4][4];
    EXPECT_NEAR(Variance(known, UnknownGradient(plain.unknown[i])), left, 1e-10 * matrix[i][i]);
  }
  EXPECT_EQ(UncertaintyPerUnit(known, UnknownGradient(kSize0)), 0.0);
}

// What nothing holds has no number, and what is held keeps its own.
TEST(Covariance, IsInfiniteWhereNothingHoldsTheFeature) {
  Random random(6);
  const CNuPointArray ring = CircleCloud(random, 30, 3.0, 360.0, 0.0);
  Feature ball{FeatureKind::sphere, kWorld, {5.0, 0.0}};
  ball.frame.origin = {0.0, 0.0, -4.0};
  const Covariance sphere = CovarianceOf(ViewOf(ring), nullptr, ball, kAll);
  EXPECT_EQ(sphere.undetermined, 1);
  EXPECT_EQ(sphere.condition, kInf);
  EXPECT_EQ(UncertaintyPerUnit(sphere, UnknownGradient(kSize0)), kInf);
  EXPECT_EQ(UncertaintyPerUnit(sphere, UnknownGradient(kShiftZ)), kInf);
  EXPECT_LT(UncertaintyPerUnit(sphere, UnknownGradient(kShiftX)), 1.0);
  EXPECT_LT(UncertaintyPerUnit(sphere, SurfaceGradient(ball, {3.0, 0.0, 0.0})), 1.0);
  double matrix[kUnknowns][kUnknowns];
  FillCovariance(sphere, 1e-3, matrix);
  EXPECT_EQ(matrix[3][3], kInf);
  EXPECT_LT(matrix[0][0], 1e-6);

  const Covariance tube = CovarianceOf(ViewOf(ring), nullptr, {FeatureKind::cylinder, kWorld, {3.0, 0.0}}, kAll);
  EXPECT_EQ(tube.undetermined, 2);
  EXPECT_EQ(UncertaintyPerUnit(tube, AxisPointGradient(1.0, 1.0, 0.0)), kInf);
  EXPECT_LT(UncertaintyPerUnit(tube, AxisPointGradient(0.0, 1.0, 0.0)), 1.0);

  const Covariance exact =
      CovarianceOf(ViewOf(ring).Part(0, 3), nullptr, {FeatureKind::circle, kWorld, {3.0, 0.0}}, kAll);
  EXPECT_EQ(exact.degreesOfFreedom, 0);
  EXPECT_EQ(StandardUncertainty(exact, UnknownGradient(kSize0)), kInf);
  EXPECT_EQ(StandardUncertainty(exact, UnknownGradient(kSize1)), 0.0);

  const CNuPointArray bad = PointsOf({{kNaN, 0.0, 0.0}, {1.0, 0.0, 0.0}, {0.0, kInf, 0.0}});
  EXPECT_FALSE(CovarianceOf(ViewOf(bad), nullptr, ball, kAll).finite);
}

// The spread of refitted features is the one promised.
template<class Fit>
void ExpectSpread(const CNuPointArray& nominal, const Feature& feature, bool isPlanar, Fit fit, const char* what) {
  constexpr int kSamples = 300;
  constexpr double kSigma = 1e-4;
  constexpr double kFiveSigma = 5.0 * 0.041;  // of a standard deviation from 300 samples: 1 / sqrt(600) each
  Random random(8);
  const Covariance c = CovarianceOf(ViewOf(nominal), nullptr, feature, kAll);
  double squares[kUnknowns] = {};
  for (int s = 0; s < kSamples; ++s) {
    CNuPointArray points = nominal;
    for (int i = 0; i < points.GetSize(); ++i) {
      const double dx = kSigma * random.Bell(), dy = kSigma * random.Bell(), dz = kSigma * random.Bell();
      points[i] = points[i] + CNuPoint(dx, dy, isPlanar ? 0.0 : dz);
    }
    double change[kUnknowns];
    FindChange(feature, fit(points), change);
    for (int k = 0; k < kUnknowns; ++k) squares[k] += change[k] * change[k] / kSamples;
  }
  for (int j = 0; j < c.unknowns; ++j) {
    const double promised = kSigma * UncertaintyPerUnit(c, UnknownGradient(c.unknown[j]));
    EXPECT_NEAR(std::sqrt(squares[c.unknown[j]]) / promised, 1.0, kFiveSigma) << what << " " << c.unknown[j];
  }
}

TEST(Covariance, IsTheSpreadOfRefittedFeatures) {
  Random random(7);
  const auto frame = [](const CNuPoint& p, const CNuVector& d) {
    const double side = d[2] < 0.0 ? -1.0 : 1.0;
    return AxisFrame::Along({p.x(), p.y(), p.z()}, side * Vec3{d[0], d[1], d[2]}, {1.0, 0.0, 0.0});
  };
  const auto plane = [&](const CNuPointArray& points) {
    CNuPlane found;
    found.Fit(points);
    return Feature{FeatureKind::plane, frame(found.GetPoint(), found.GetNormal()), {}};
  };
  ExpectSpread(PlaneCloud(random, 30, 10.0, 4.0, 0.0), {FeatureKind::plane, kWorld, {}}, false, plane, "plane");
  const auto circle = [&](const CNuPointArray& points) {
    CNuCircle found(1.0);
    found.Fit(points, 100);
    Feature feature{FeatureKind::circle, kWorld, {found.GetRadius(), 0.0}};
    feature.frame.origin = {found.GetCentre().x(), found.GetCentre().y(), 0.0};
    return feature;
  };
  ExpectSpread(CircleCloud(random, 30, 5.0, 60.0, 0.0), {FeatureKind::circle, kWorld, {5.0, 0.0}}, true, circle,
               "circle");
  const auto cylinder = [&](const CNuPointArray& points) {
    CNuCylSurf found(1.0);
    found.Fit(points, 100);
    return Feature{FeatureKind::cylinder, frame(found.GetAxisPoint(), found.GetAxisDirection()), {found.GetRadius()}};
  };
  ExpectSpread(CylinderCloud(random, 30, 5.0, 20.0, 150.0, 0.0), {FeatureKind::cylinder, kWorld, {5.0, 0.0}}, false,
               cylinder, "cylinder");
}

}  // namespace
