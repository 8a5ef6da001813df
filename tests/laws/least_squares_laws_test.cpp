#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <thread>
#include <vector>

#include "support/clouds.h"
#include "support/failing_new.h"
#include "support/failures.h"
#include "support/fitted.h"

// Laws that hold for every least-squares fit, checked for each feature over sizes, noise and partial shapes.
namespace {

using namespace nu::test;

double Deviation(Feature feature, const CNuPoint& point, const Fitted& f) {
  const CNuVector axis = feature == kSphere ? f.axis : f.axis / f.axis.Magnitude();
  const CNuVector p = (point - f.place).To3DVector();
  const double across = (p - axis * (p % axis)).Magnitude();
  const double turn = f.angle * kDegree;  // 0 but for a cone
  return feature == kPlane ? p % axis : across * std::cos(turn) - p % axis * std::sin(turn) - f.radius;
}

// The sum that the fit minimises; for a circle, in the plane of the fit. `form` receives the range of the deviations.
double Objective(Feature feature, const CNuPointArray& points, const Fitted& f, double* form = nullptr) {
  double sum = 0.0, least = INFINITY, most = -INFINITY;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double e = Deviation(feature, points[i], f);
    sum += e * e;
    least = std::min(least, e), most = std::max(most, e);
  }
  if (form != nullptr) *form = most - least;
  return sum;
}

constexpr double kConeAngle = 25.0;

struct Case {
  Feature feature;
  double size;
  double noise;  // relative to the size
  double part;   // degrees of an arc or across a cap; width of a plane relative to its length

  // How far the result moves when the points do.
  double Sensitivity() const {
    const double half = 0.5 * part * kDegree;
    const double round = 4.0 + 8.0 / (half * half);
    return feature == kLine ? 1.0 : feature == kPlane ? 1.0 / part : feature == kCone ? 16.0 * round : round;
  }
  CNuPointArray Points(Random& random, int n) const {
    switch (feature) {
      case kLine:
        return LineCloud(random, n, size, noise * size);
      case kPlane:
        return PlaneCloud(random, n, size, part * size, noise * size);
      case kCircle:
        return CircleCloud(random, n, size, part, noise * size, noise * size);
      case kCylinder:
        return CylinderCloud(random, n, size, size, part, noise * size);
      case kCone:
        return ConeCloud(random, n, kConeAngle, size, size, part, noise * size);
      default:
        return SphereCloud(random, n, size, 0.5 * part, noise * size);
    }
  }
  std::string Name() const {
    return std::string(kClassNames[feature]) + " size " + std::to_string(size) + " noise " + std::to_string(noise) +
           " part " + std::to_string(part);
  }
};

template<class Law>
void ForAllCases(Law law) {
  for (const double size : {1e-3, 1.0, 1e5}) {
    for (const double noise : {0.0, 1e-6, 1e-3}) {
      std::vector<Case> cases{{kLine, size, noise, 1.0}};
      for (const double part : {1.0, 0.3, 1e-2}) cases.push_back({kPlane, size, noise, part});
      for (const double part : {360.0, 90.0, 10.0}) {
        if (noise > 1e-4 && part < 20.0) continue;  // hardly an arc is left to see
        cases.push_back({kCircle, size, noise, part});
        cases.push_back({kSphere, size, noise, part});
        cases.push_back({kCylinder, size, noise, part});
        cases.push_back({kCone, size, noise, part});
      }
      for (const Case& c : cases) {
        SCOPED_TRACE(c.Name());
        law(c);
      }
    }
  }
}

constexpr Case kOneOfEach[] = {{kLine, 10.0, 1e-3, 1.0},    {kPlane, 10.0, 1e-3, 0.5},      {kCircle, 10.0, 1e-3, 90.0},
                               {kSphere, 10.0, 1e-3, 90.0}, {kCylinder, 10.0, 1e-3, 200.0}, {kCone, 10.0, 1e-3, 200.0}};

class LeastSquaresLaws : public ::testing::Test {
 protected:
  // All digits, so that results differ by rounding only; and nothing is so small that it counts as zero.
  void SetUp() override { NuSetTol(1e-32), NuSetLengthTol(1e-200); }
  void TearDown() override { NuSetTol(m_tol), NuSetLengthTol(m_lengthTol); }

  static void ExpectSame(const Case& c, const Fitted& a, const Fitted& b, double reach) {
    const double d = 32.0 * kEps * reach;
    const double s = c.Sensitivity();
    // The centre of a short arc moves with the tilt of its plane as well.
    const double tilt = c.feature == kCircle ? 2.0 + 2.0 / (c.part * kDegree) : 1.0;
    EXPECT_LE(a.place.DistanceTo(b.place), d * s * tilt);
    EXPECT_LE(std::min((a.axis - b.axis).Magnitude(), (a.axis + b.axis).Magnitude()), 4.0 * d * s / c.size);
    EXPECT_NEAR(a.radius, b.radius, d * s);
    EXPECT_NEAR(a.angle * kDegree, b.angle * kDegree, 4.0 * d * s / c.size);
    EXPECT_NEAR(a.form, b.form, d);
    EXPECT_NEAR(a.sumsq, b.sumsq, 8.0 * d * std::sqrt(a.sumsq) + 64.0 * d * d);
  }

  Random m_random{11};

 private:
  double m_tol = NuGetTol();
  double m_lengthTol = NuGetLengthTol();
};

// They start from a sample and end without a last pass over all points. A point far off that no sample sees does not
// lead them astray.
TEST_F(LeastSquaresLaws, LargeSetsKeepTheirDigits) {
  for (Case c : kOneOfEach) {
    for (const double noise : {1e-6, 1e-2}) {
      c.noise = noise;
      SCOPED_TRACE(c.Name());
      CNuPointArray points = c.Points(m_random, 40000);
      for (const bool isStray : {false, true}) {
        if (isStray) points[12345] += (points[12345] - points[0]) * 2.0;
        NuSetTol(1e-32);
        const Fitted exact = FitOf(c.feature, points);
        NuSetTol(4.45e-16);
        const Fitted usual = FitOf(c.feature, points);
        double form;
        const double part = 1e-12 + 4.0 * kEps * c.size / std::sqrt(usual.sumsq / points.GetSize());
        EXPECT_NEAR(usual.sumsq, Objective(c.feature, points, usual, &form), part * usual.sumsq);
        if (c.feature != kLine && !isStray) {
          EXPECT_NEAR(usual.form, form, 4096.0 * kEps * c.size);
        }
        EXPECT_NEAR(usual.sumsq, exact.sumsq, part * exact.sumsq);
        EXPECT_NEAR(usual.form, exact.form, 1e-8 * c.size);
        EXPECT_NEAR(usual.radius, exact.radius, 1e-8 * c.size);
      }
    }
  }
}

// The zone of a large set is that of its points near the boundaries.
TEST_F(LeastSquaresLaws, ZonesOfLargeSetsRestOnTheirOuterPoints) {
  for (const Case& c : kOneOfEach) {
    if (c.feature == kCircle || c.feature == kPlane) continue;
    SCOPED_TRACE(c.Name());
    const CNuPointArray points = c.Points(m_random, 40000);
    const Fitted fitted = FitOf(c.feature, points);
    CNuPointArray outer(0);
    for (int i = 0; i < points.GetSize(); ++i)
      if (std::fabs(Deviation(c.feature, points[i], fitted)) > 0.35 * fitted.form) outer.Add(points[i]);
    EXPECT_LT(outer.GetSize(), points.GetSize() / 4);
    const AnyFit& zone = TheFit(kClassNames[c.feature], kZone);
    EXPECT_NEAR(FitOf(zone, points).form, FitOf(zone, outer).form, 1e-12 * c.size);
  }
}

// Scaling by a power of two rounds nowhere, so it changes no digit.
TEST_F(LeastSquaresLaws, MotionOrderAndScaleOfThePointsCarryOver) {
  ForAllCases([&](const Case& c) {
    const CNuPointArray points = c.Points(m_random, 60);
    const Fitted fitted = FitOf(c.feature, points);
    ExpectSame(c, fitted, FitOf(c.feature, Shuffled(m_random, points)), c.size);
    const Motion motion = RandomMotion(m_random, 10.0 * c.size);
    Fitted moved = fitted;
    moved.place = motion(fitted.place);
    moved.axis = motion.Direction(fitted.axis.To3DPoint()).To3DVector();
    ExpectSame(c, moved, FitOf(c.feature, motion(points)), 20.0 * c.size);
    CNuPointArray scaled(points);
    for (int i = 0; i < scaled.GetSize(); ++i) scaled[i] *= 0x1p20;
    const Fitted f = FitOf(c.feature, scaled);
    EXPECT_EQ(f.place.DistanceTo(fitted.place * 0x1p20) + (f.axis - fitted.axis).Magnitude(), 0.0);
    EXPECT_EQ(f.radius, fitted.radius * 0x1p20);
    EXPECT_EQ(f.angle, fitted.angle);
    EXPECT_EQ(f.form, fitted.form * 0x1p20);
    EXPECT_EQ(f.sumsq, fitted.sumsq * 0x1p40);
  });
}

TEST_F(LeastSquaresLaws, NoSmallChangeLowersTheSum) {
  ForAllCases([&](const Case& c) {
    const CNuPointArray points = c.Points(m_random, 40);
    const Fitted best = FitOf(c.feature, points);
    const double sum = Objective(c.feature, points, best);
    const double rounding = 64.0 * kEps * c.size;
    EXPECT_NEAR(sum, best.sumsq, 16.0 * rounding * std::sqrt(sum) + 40.0 * rounding * rounding);
    for (int k = 0; k < 30; ++k) {
      const double h = std::pow(10.0, m_random.Uniform(-7.0, -3.0));
      const auto change = [&] { return h * m_random.Uniform(-1.0, 1.0); };
      Fitted other = best;
      CNuVector shift(change(), change(), change());
      if (c.feature == kCircle) shift -= best.axis * (shift % best.axis);
      other.place += (shift * c.size).To3DPoint();
      if (c.feature != kCircle && c.feature != kSphere) other.axis += CNuVector(change(), change(), change());
      if (c.feature >= kCircle) (c.feature == kCone ? other.angle : other.radius) += change() * c.size;
      EXPECT_GE(Objective(c.feature, points, other), sum - 16.0 * rounding * std::sqrt(sum)) << h;
    }
  });
}

// As many points as the feature needs, far from the origin: all are on it, and no step is needed. There is no closed
// form for a cylinder or a cone.
TEST_F(LeastSquaresLaws, FewestPointsLieOnTheFeature) {
  for (const Case& c : kOneOfEach) {
    if (c.feature >= kCylinder) continue;
    CNuPointArray points = c.Points(m_random, c.feature == kLine ? 2 : c.feature == kSphere ? 4 : 3);
    constexpr double kFar = 0x1p20;
    for (int i = 0; i < points.GetSize(); ++i) points[i].Translate(kFar, -kFar, kFar);
    const Fitted f = FitOf(c.feature, points, 1);
    EXPECT_EQ(f.form, 0.0);
    EXPECT_EQ(f.sumsq, 0.0);
    EXPECT_LE(std::sqrt(Objective(c.feature, points, f)), 4.0 * kEps * kFar) << c.Name();
  }
}

// More points than are kept repacked, and counts that do not fill the last lanes.
TEST_F(LeastSquaresLaws, CopiesOfThePointsChangeNothingButTheSum) {
  for (const Case& c : kOneOfEach) {
    for (const int n : {5, 8, 13, 67, 331}) {
      if (c.feature >= kCylinder && n < 13) continue;  // several of them pass through few points
      SCOPED_TRACE(c.Name() + " n " + std::to_string(n));
      const CNuPointArray points = c.Points(m_random, n);
      CNuPointArray copies(8 * n);
      for (int k = 0; k < 8; ++k) copies.Append(points);
      Fitted often = FitOf(c.feature, copies);
      often.sumsq /= 8.0;
      ExpectSame(c, FitOf(c.feature, points), often, 10.0 * c.size);
    }
  }
}

// Sizes whose squares and cubes leave the range of a double.
TEST_F(LeastSquaresLaws, AnySizeCanBeFitted) {
  for (Case c : kOneOfEach) {
    for (const double size : {1e-70, 1e-45, 1e45, 1e70}) {
      c.size = size;
      const Fitted f = FitOf(c.feature, c.Points(m_random, 30));
      if (c.feature == kCone)
        EXPECT_NEAR(f.angle, kConeAngle, 1.0);
      else
        EXPECT_NEAR(f.radius, c.feature >= kCircle ? size : 0.0, 1e-2 * size);
      EXPECT_NEAR(f.form, 5e-3 * size, 4e-3 * size) << c.Name();
    }
  }
}

// Where the rows are reduced by orthogonal steps instead of summed: a narrow plane; three clusters on a sphere, whose
// radius shows only within a cluster. Nothing else allocates.
TEST_F(LeastSquaresLaws, IllConditionedPointsAndLackOfMemory) {
  const CNuPointArray narrow = PlaneCloud(m_random, 40, 1.0, 1e-3, 1e-6);
  CNuPointArray clusters = BoxCloud(m_random, 42, 1e-5, 1e-5, 1e-5);
  const CNuPoint corners[] = {{2, 3, 6}, {-6, 2, 3}, {3, -6, 2}};
  for (int i = 0; i < 42; ++i) {
    clusters[i] += corners[i % 3];
    clusters[i] *= 7.0 / clusters[i].DistanceTo(CNuPoint());
  }
  EXPECT_NEAR(FitOf(kSphere, clusters).radius, 7.0, 4.0 * 7.0 * kEps / 1e-5);
  const long live = LiveAllocations();
  CNuPlane plane;
  CNuSphSurf sphere(3.0);
  FailAllocation(0);
  EXPECT_EQ(FailureOf([&] { plane.Fit(narrow); }), "bestfit 11 |CNuPlane [0,0]");
  FailAllocation(0);
  EXPECT_EQ(sphere.FitEx(clusters, 100), NuFitFailure);
  FailAllocation(0);
  EXPECT_THROW(sphere.Fit(clusters, 100), CNuMemoryException);
  EXPECT_EQ(LiveAllocations(), live);
}

TEST(LeastSquaresConcurrency, ThreadsFitWithTheirOwnTolerances) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([coarse = t % 2 == 1] {
      // A coarse thread takes any step for converged, so its spheres stay at the algebraic start.
      if (coarse) NuSetTol(0.1);
      Random random(17);
      for (int k = 0; k < 20; ++k) {
        CNuSphSurf sphere(1.0);
        EXPECT_EQ(sphere.FitEx(SphereCloud(random, 40, 1.0, 60.0, 1e-2), 2),
                  coarse ? NuFitSuccess : NuFitNoConvergence);
        FitOf(kCircle, CircleCloud(random, 40, 1.0, 200.0, 1e-2, 1e-2));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
