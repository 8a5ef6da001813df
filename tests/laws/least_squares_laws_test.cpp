#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failing_new.h"
#include "support/failures.h"

// Laws that hold for every least-squares fit, checked for each feature over sizes, noise and partial shapes.
namespace {

using nu::test::Motion;
using nu::test::Random;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr long kLimit = 200;

enum Feature { kLine, kPlane, kCircle, kSphere };
constexpr const char* kNames[] = {"CNuLine", "CNuPlane", "CNuCircle", "CNuSphSurf"};

struct Fitted {
  CNuPoint place;  // point or centre
  CNuPoint axis;   // direction or normal; a sphere has none
  double radius = 0.0;
  double form = 0.0;
  double sumsq = 0.0;
};

CNuPoint AsPoint(const CNuVector& v) {
  return CNuPoint(v[0], v[1], v[2]);
}
double Dot(const CNuPoint& a, const CNuPoint& b) {
  return a.x() * b.x() + a.y() * b.y() + a.z() * b.z();
}
double Length(const CNuPoint& a) {
  return std::sqrt(Dot(a, a));
}

Fitted FitOf(Feature feature, const CNuPointArray& points) {
  Fitted f;
  if (feature == kLine) {
    CNuLine line;
    line.Fit(points, &f.form, &f.sumsq);
    f.place = line.GetPoint(), f.axis = AsPoint(line.GetDirection());
  } else if (feature == kPlane) {
    CNuPlane plane;
    plane.Fit(points, &f.form, &f.sumsq);
    f.place = plane.GetPoint(), f.axis = AsPoint(plane.GetNormal());
  } else if (feature == kCircle) {
    CNuCircle circle(1.0);
    circle.Fit(points, &f.form, &f.sumsq, kLimit);
    f.place = circle.GetCentre(), f.axis = AsPoint(circle.GetNormal()), f.radius = circle.GetRadius();
  } else {
    CNuSphSurf sphere(1.0);
    sphere.Fit(points, &f.form, &f.sumsq, kLimit);
    f.place = sphere.GetCentre(), f.radius = sphere.GetRadius();
  }
  return f;
}

// The sum that the fit minimises; for a circle, in the plane of the fit.
double Objective(Feature feature, const CNuPointArray& points, const Fitted& f) {
  double sum = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuPoint p = points[i] - f.place;
    const double along = Dot(p, f.axis) / std::max(Length(f.axis), kEps);
    const double across = Length(p - f.axis * (along / std::max(Length(f.axis), kEps)));
    const double e = feature == kLine ? across : feature == kPlane ? along : across - f.radius;
    sum += e * e;
  }
  return sum;
}

struct Case {
  Feature feature;
  double size;
  double noise;  // relative to the size
  double part;   // degrees of arc or cap; width relative to length
  // How far a result moves, in units of the size, when the points do: the inverse of the height of the arc.
  double Condition() const {
    const double half = part / 2.0 * nu::test::kDegree;
    if (feature == kLine) return 1.0;
    return feature == kPlane ? 1.0 / part : 4.0 + 8.0 / (half * half);
  }
  std::string Name() const {
    return std::string(kNames[feature]) + " size " + std::to_string(size) + " noise " + std::to_string(noise) +
           " part " + std::to_string(part);
  }
};

CNuPointArray Make(Random& random, const Case& c, int n) {
  switch (c.feature) {
    case kLine:
      return nu::test::LineCloud(random, n, c.size, c.noise * c.size);
    case kPlane:
      return nu::test::PlaneCloud(random, n, c.size, c.part * c.size, c.noise * c.size);
    case kCircle:
      return nu::test::CircleCloud(random, n, c.size, c.part, c.noise * c.size, c.noise * c.size);
    default:
      return nu::test::SphereCloud(random, n, c.size, c.part / 2.0, c.noise * c.size);
  }
}

std::vector<Case> AllCases() {
  std::vector<Case> cases;
  for (const double size : {1e-3, 1.0, 1e5}) {
    for (const double noise : {0.0, 1e-6, 1e-3}) {
      cases.push_back({kLine, size, noise, 1.0});
      for (const double part : {1.0, 0.3, 1e-2}) cases.push_back({kPlane, size, noise, part});
      for (const double part : {360.0, 90.0, 10.0}) {
        // A sixth of the height of the arc is as much noise as leaves an arc to see.
        if (noise > 1e-4 && part < 20.0) continue;
        cases.push_back({kCircle, size, noise, part});
        cases.push_back({kSphere, size, noise, part});
      }
    }
  }
  return cases;
}

class LeastSquaresLaws : public ::testing::Test {
 protected:
  // All digits, so that results differ by rounding only; and nothing is so small that it counts as zero.
  void SetUp() override { NuSetTol(1e-32), NuSetLengthTol(1e-40); }
  void TearDown() override { NuSetTol(m_tol), NuSetLengthTol(m_lengthTol); }

  static void ExpectSame(const Case& c, const Fitted& a, const Fitted& b, double reach) {
    const double d = 32.0 * kEps * reach;
    const double s = c.Condition();
    const CNuPoint way = a.place - b.place;
    // Across the plane of a short arc the centre moves with the tilt of the plane.
    const double tilt = c.feature == kCircle ? 4.0 + 8.0 / (c.part * nu::test::kDegree) : 1.0;
    EXPECT_LE(Length(way), d * (s + tilt * s / 4.0));
    EXPECT_LE(std::min(Length(a.axis - b.axis), Length(a.axis + b.axis)),
              d / c.size * (c.feature == kCircle ? s : std::max(4.0, 4.0 * s)) + 4.0 * kEps);
    EXPECT_NEAR(a.radius, b.radius, d * s);
    EXPECT_NEAR(a.form, b.form, d);
    EXPECT_NEAR(a.sumsq, b.sumsq, d * std::sqrt(64.0 * a.sumsq) + 64.0 * d * d);
  }

 private:
  double m_tol = NuGetTol();
  double m_lengthTol = NuGetLengthTol();
};

TEST_F(LeastSquaresLaws, MotionAndOrderOfThePointsCarryOver) {
  Random random(11);
  for (const Case& c : AllCases()) {
    SCOPED_TRACE(c.Name());
    const CNuPointArray points = Make(random, c, 60);
    const Fitted fitted = FitOf(c.feature, points);
    ExpectSame(c, fitted, FitOf(c.feature, Shuffled(random, points)), c.size);
    const Motion motion = nu::test::RandomMotion(random, 10.0 * c.size);
    Fitted moved = fitted;
    moved.place = motion(fitted.place), moved.axis = motion.Direction(fitted.axis);
    ExpectSame(c, moved, FitOf(c.feature, motion(points)), 20.0 * c.size);
  }
}

// Powers of two scale without rounding, far beyond the sizes of parts as well.
TEST_F(LeastSquaresLaws, ScalingIsExact) {
  Random random(12);
  for (const Case& c : AllCases()) {
    SCOPED_TRACE(c.Name());
    const CNuPointArray points = Make(random, c, 50);
    const Fitted fitted = FitOf(c.feature, points);
    for (const double scale : {0x1p-8, 0x1p20}) {
      CNuPointArray scaled(points);
      for (int i = 0; i < scaled.GetSize(); ++i) scaled[i] *= scale;
      const Fitted f = FitOf(c.feature, scaled);
      EXPECT_EQ(Length(f.place - fitted.place * scale), 0.0);
      EXPECT_EQ(Length(f.axis - fitted.axis), 0.0);
      EXPECT_EQ(f.radius, fitted.radius * scale);
      EXPECT_EQ(f.form, fitted.form * scale);
      EXPECT_EQ(f.sumsq, fitted.sumsq * scale * scale);
    }
  }
}

TEST_F(LeastSquaresLaws, NoSmallChangeLowersTheSum) {
  Random random(13);
  for (const Case& c : AllCases()) {
    SCOPED_TRACE(c.Name());
    const CNuPointArray points = Make(random, c, 40);
    const Fitted best = FitOf(c.feature, points);
    const double sum = Objective(c.feature, points, best);
    const double rounding = 64.0 * kEps * c.size;
    EXPECT_NEAR(sum, best.sumsq, 16.0 * rounding * std::sqrt(sum) + 40.0 * rounding * rounding);
    for (int k = 0; k < 30; ++k) {
      // From visible changes down to where the difference of the sums is rounding.
      const double h = std::pow(10.0, random.Uniform(-7.0, -3.0));
      const auto change = [&] { return h * random.Uniform(-1.0, 1.0); };
      Fitted other = best;
      CNuPoint shift(change(), change(), change());
      if (c.feature == kCircle) shift -= best.axis * Dot(shift, best.axis);
      other.place += shift * c.size;
      if (c.feature == kLine || c.feature == kPlane) other.axis += CNuPoint(change(), change(), change());
      if (c.feature == kCircle || c.feature == kSphere) other.radius += change() * c.size;
      EXPECT_GE(Objective(c.feature, points, other), sum - 16.0 * rounding * std::sqrt(sum)) << h;
    }
  }
}

// More points than a block holds, and counts that do not fill the last lanes.
TEST_F(LeastSquaresLaws, CopiesOfThePointsChangeNothingButTheSum) {
  Random random(14);
  for (const Feature feature : {kLine, kPlane, kCircle, kSphere}) {
    const Case c{feature, 10.0, 1e-3, feature == kPlane ? 0.5 : 90.0};
    for (const int n : {5, 8, 13, 67, 331}) {
      SCOPED_TRACE(c.Name() + " n " + std::to_string(n));
      const CNuPointArray points = Make(random, c, n);
      const Fitted once = FitOf(feature, points);
      CNuPointArray copies(8 * n);
      for (int k = 0; k < 8; ++k) copies.Append(points);
      Fitted often = FitOf(feature, copies);
      often.sumsq /= 8.0;
      ExpectSame(c, once, often, 10.0 * c.size);
    }
  }
}

TEST_F(LeastSquaresLaws, PointsThatAreNotFiniteAreRefused) {
  Random random(15);
  for (const Feature feature : {kLine, kPlane, kCircle, kSphere}) {
    const CNuPointArray points = Make(random, {feature, 1.0, 1e-3, feature == kPlane ? 0.5 : 90.0}, 9);
    for (const double bad : {std::nan(""), HUGE_VAL, -HUGE_VAL}) {
      for (int k = 0; k < 3 * points.GetSize(); ++k) {
        CNuPointArray spoilt(points);
        CNuPoint& p = spoilt[k / 3];
        (k % 3 == 0 ? p.x() : k % 3 == 1 ? p.y() : p.z()) = bad;
        EXPECT_EQ(FailureOf([&] { FitOf(feature, spoilt); }), std::string("bestfit 11 |") + kNames[feature] + " [0,0]");
      }
    }
  }
}

// Sizes whose squares and cubes leave the range of a double.
TEST_F(LeastSquaresLaws, AnySizeCanBeFitted) {
  NuSetLengthTol(1e-200);
  Random random(16);
  for (const Feature feature : {kLine, kPlane, kCircle, kSphere}) {
    for (const double size : {1e-70, 1e-45, 1e45, 1e70}) {
      const Case c{feature, size, 1e-4, feature == kPlane ? 0.5 : 120.0};
      SCOPED_TRACE(c.Name());
      const Fitted f = FitOf(feature, Make(random, c, 30));
      EXPECT_LE(Length(f.place), 0.4 * size);
      EXPECT_LE(f.form, 2e-3 * size);
      EXPECT_GE(f.form, 1e-4 * size);
      EXPECT_NEAR(f.radius, feature >= kCircle ? size : 0.0, 1e-2 * size);
    }
  }
}

// Only the orthogonal reductions allocate: a plane that is narrow, points in clusters.
TEST_F(LeastSquaresLaws, LackOfMemoryIsReportedAndLeavesNothingBehind) {
  Random random(18);
  const CNuPointArray narrow = Make(random, {kPlane, 1.0, 1e-6, 1e-3}, 40);
  CNuPointArray clusters(40);
  for (int i = 0; i < 40; ++i) {
    const CNuPoint corner = i % 3 == 0 ? CNuPoint(2, 3, 6) : i % 3 == 1 ? CNuPoint(-6, 2, 3) : CNuPoint(3, -6, 2);
    clusters.Add(corner + CNuPoint(random.Bell(), random.Bell(), random.Bell()) * 1e-5);
  }
  const long live = nu::test::LiveAllocations();
  long planes = 0;
  for (;; ++planes) {
    nu::test::FailAllocation(planes);
    CNuPlane plane;
    const std::string failure = FailureOf([&] { plane.Fit(narrow); });
    nu::test::FailAllocation(-1);
    if (failure == "nothing") break;
    EXPECT_EQ(failure, "bestfit 11 |CNuPlane [0,0]");
    EXPECT_EQ(plane.GetPoint().DistanceTo(CNuPoint()), 0.0);
  }
  CNuSphSurf sphere(3.0);
  long spheres = 0;
  for (;; ++spheres) {
    nu::test::FailAllocation(spheres);
    ENuFitResult result = NuFitSuccess;
    bool thrown = false;
    try {
      sphere.Fit(clusters, kLimit);
    } catch (const std::bad_alloc&) {
      thrown = true;
    }
    nu::test::FailAllocation(spheres);
    if (thrown) result = sphere.FitEx(clusters, kLimit);
    nu::test::FailAllocation(-1);
    if (!thrown) break;
    EXPECT_EQ(result, NuFitFailure);
    EXPECT_EQ(sphere.GetRadius(), 3.0);
  }
  EXPECT_GT(planes * spheres, 0) << "no allocation to fail";
  EXPECT_EQ(nu::test::LiveAllocations(), live);
}

TEST(LeastSquaresConcurrency, ThreadsFitWithTheirOwnTolerances) {
  std::vector<std::thread> threads;
  for (int t = 0; t < 8; ++t) {
    threads.emplace_back([t] {
      // Odd threads keep a step of a length unit for converged, so their spheres stay at the algebraic start.
      if (t % 2 == 1) NuSetTol(1.0);
      for (int k = 0; k < 20; ++k) {
        Random random(17);
        const CNuPointArray points = Make(random, {kSphere, 1.0, 1e-2, 120.0}, 40);
        CNuSphSurf sphere(1.0);
        EXPECT_EQ(sphere.FitEx(points, 2), t % 2 == 1 ? NuFitSuccess : NuFitNoConvergence);
        FitOf(kLine, points);
        EXPECT_EQ(NuGetTol() == 1.0, t % 2 == 1);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
