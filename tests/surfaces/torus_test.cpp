#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using nu::test::kDegree;
using nu::test::Motion;
using nu::test::Random;
using nu::test::RandomMotion;
using nu::test::Shuffled;
using nu::test::TorusCloud;

constexpr double kEps = std::numeric_limits<double>::epsilon();
constexpr double kTol = 1e-9;
constexpr long kLimit = 1000;
const double kNan = std::nan("");

struct Data {
  explicit Data(const CNuTorSurf& torus) { torus.GetData(&major, &minor, &centre, &axis); }

  double DistanceOf(const CNuPoint& p) const {
    const CNuVector q = (p - centre).To3DVector();
    const double height = q % axis;
    return std::hypot((q * axis).Magnitude() - major, height);
  }

  double major = 0.0;
  double minor = 0.0;
  CNuPoint centre;
  CNuVector axis;
};

CNuTorSurf Fitted(const CNuPointArray& points, double tol = kTol, long limit = kLimit) {
  CNuTorSurf torus(2.0, 1.0);
  torus.FitMin(points, tol, limit);
  return torus;
}

CNuPointArray Scaled(CNuPointArray points, double f) {
  for (int i = 0; i < points.GetSize(); ++i)
    points[i] = CNuPoint(points[i].x() * f, points[i].y() * f, points[i].z() * f);
  return points;
}

TEST(Torus, HoldsTwoRadiiAndAnAxis) {
  const CNuVector flat(2), zero(0, 0, 0);
  const CNuPoint origin;
  const double infinity = std::numeric_limits<double>::infinity();
  for (const double bad : {0.0, -1.0, kNan}) {
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(bad, 1.0); }), "construction 5 radius|CNuTorSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(0.5, bad, origin); }), "construction 5 radius|CNuTorSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, bad, origin, flat); }), "construction 5 radius|CNuTorSurf [0,0]");
  }
  for (const double bad : {2.0, 3.0, infinity}) {
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, bad); }), "construction 7 radius|CNuTorSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, bad, origin, flat); }), "construction 7 radius|CNuTorSurf [0,0]");
  }
  EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, 1.0, origin, flat); }), "construction 4 |CNuTorSurf [0,0]");
  EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, 1.0, origin, zero); }), "construction 3 |CNuTorSurf [0,0]");

  EXPECT_EQ(CNuTorSurf(2.0, 1.0).IsPositionSet(), NuFalse);
  EXPECT_EQ(CNuTorSurf(2.0, 1.0, CNuPoint(1, 2, 3)).GetRotation().GetRowVector(0)[0], 1.0);
  CNuTorSurf torus(2.0, 0.5, CNuPoint(1, 2, 3), CNuVector(0, 4, 0));
  const CNuTorSurf copy(torus);
  EXPECT_EQ(copy.GetType(), 36);
  const Data data(copy);
  EXPECT_TRUE(data.major == 2.0 && data.minor == 0.5 && data.centre.y() == 2.0 && data.axis[1] == 1.0);
  EXPECT_TRUE(copy.GetMajorRadius() == 2.0 && copy.GetMinorRadius() == 0.5);
  torus.Rotate(90.0, CNuGeometry::X_AXIS, CNuPoint(1, 2, 3));
  torus.Translate(1.0, 0.0, 0.0);
  EXPECT_LE(torus.GetAxis().GetPoint().DistanceTo(CNuPoint(2, 2, 3)), 4 * kEps);
  EXPECT_NEAR(torus.GetAxisDirection()[2], 1.0, 4 * kEps);
  torus = copy;
  EXPECT_EQ(torus.GetAxisDirection()[1], 1.0);
}

// Required: hosts that walk over pairs of surfaces rely on these failures.
TEST(Torus, MeetsNothing) {
  const CNuTorSurf torus(2.0, 0.5);
  CNuObjArray result(0);
  EXPECT_EQ(FailureOf([&] { torus.IntersectWith(CNuPlane(), &result); }),
            "operation 45 calculation|CNuTorSurf::IntersectWith(CNuPlane) [0,0]");
  EXPECT_EQ(FailureOf([&] { torus.IntersectWith(CNuCylSurf(1.0), &result); }),
            "operation 45 calculation|CNuTorSurf::IntersectWith(CNuCylSurf) [0,0]");
  EXPECT_EQ(FailureOf([&] { torus.IntersectWith(CNuConSurf(1.0), &result); }),
            "operation 45 calculation|CNuTorSurf::IntersectWith(CNuConSurf) [0,0]");
  EXPECT_EQ(FailureOf([&] { torus.IntersectWith(CNuSphSurf(1.0), nullptr); }),
            "operation 45 calculation|CNuTorSurf::IntersectWith(CNuSphSurf) [0,0]");
}

TEST(TorusFit, RefusesInOrderAndStaysAsItWas) {
  Random random(91);
  const CNuPointArray good = TorusCloud(random, 40, 4.0, 1.0, 240.0, 360.0, 0.01);
  const CNuPointArray straight = nu::test::LineCloud(random, 10, 10.0, 0.1);
  CNuPointArray two(2), far(3);
  two.Add({0, 0, 0}), two.Add({kNan, 0, 0});
  CNuTorSurf torus(2.0, 1.0, CNuPoint(7, 7, 7));
  const auto failure = [&](const CNuPointArray& points, double tol, long limit) {
    return FailureOf([&] { torus.FitMin(points, tol, limit); });
  };
  // Required: the plain fit names the sphere, its twin the torus.
  EXPECT_EQ(failure(two, kTol, 0), "bestfit 13 |CNuSphSurf [0,0]");
  EXPECT_EQ(FailureOf([&] { torus.FitMinEx(two, kTol, 0); }), "bestfit 13 |CNuTorSurf [0,0]");
  EXPECT_EQ(failure(two, kTol, 1), "bestfit 1 |CNuTorSurf [3,0]");
  EXPECT_EQ(failure(straight, 5.0, 1), "bestfit 3 |CNuTorSurf [3,0]");
  EXPECT_EQ(failure(good, kTol, 1), "bestfit 12 |CNuTorSurf [0,0]");
  for (const double bad : {kNan, 1.0 / kEps / 0.0}) {
    for (int i = 0; i < 40; ++i) {
      CNuPointArray spoilt(good);
      spoilt[i].y() = bad;
      EXPECT_EQ(failure(spoilt, i % 2 == 0 ? kTol : 100.0, kLimit), "bestfit 11 |CNuTorSurf::FitMin [0,0]");
    }
  }
  // Four lines of a square shaft: every circle is worse than a straight tube.
  CNuPointArray shaft(40);
  for (int i = 0; i < 40; ++i) shaft.Add(CNuPoint(i % 2, i / 2 % 2, i / 4));
  EXPECT_EQ(failure(shaft, kTol, kLimit), "bestfit 11 |CNuTorSurf::FitMin [0,0]");
  const Data data(torus);
  EXPECT_TRUE(data.major == 2.0 && data.minor == 1.0 && data.centre.x() == 7.0);

  constexpr double kHosts = 3e-7;
  NuSetLengthTol(kHosts);
  EXPECT_EQ(torus.FitMinEx(good, kTol, kLimit), NuFitSuccess);
  EXPECT_EQ(torus.FitMinEx(good, kTol, 1), NuFitNoConvergence);
  EXPECT_EQ(torus.FitMinEx(straight, 5.0, 1), NuFitFailure);
  EXPECT_EQ(torus.FitMinEx(two, kTol, 1), NuFitFailure);
  EXPECT_EQ(NuGetLengthTol(), kHosts);
  NuSetLengthTol(1e-12);
}

// Points on a circle, three of them or many, near and far, small and large, on short arcs, too.
TEST(TorusFit, PassesThroughPointsOfACircle) {
  Random random(92);
  for (int k = 0; k < 400; ++k) {
    SCOPED_TRACE(k);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0)), sweep = random.Uniform(10.0, 360.0) * kDegree;
    const Motion motion = RandomMotion(random, k % 2 == 0 ? 0.0 : 1e4 * size);
    const int n = k % 3 == 0 ? 3 : 4 + random.Below(40);
    CNuPointArray points(n);
    for (int i = 0; i < n; ++i) {
      const double angle = sweep * (i == 0 ? 0.0 : i == 1 ? 1.0 : i == 2 ? 0.5 : random.Uniform(0.0, 1.0));
      points.Add({size * std::cos(angle), size * std::sin(angle), 0.0});
    }
    const Data data(Fitted(motion(points), 1e-9 * size));
    // Across a chord as short as the arc's, rounding is worth more.
    const double rounding = 16.0 * kEps * size * (k % 2 == 0 ? 1.0 : 1e4);
    const double error = rounding * std::pow(std::fmax(1.0, 2.0 / sweep), 2) * 4.0;
    if (n == 3) {
      EXPECT_EQ(data.minor, 0.0);
    }
    EXPECT_LE(data.minor, rounding);
    EXPECT_NEAR(data.major, size, error);
    EXPECT_LE(data.centre.DistanceTo(motion(CNuPoint())), error);
    EXPECT_LE((data.axis * motion.Direction(CNuPoint(0, 0, 1)).To3DVector()).Magnitude(), error / size);
  }
}

// A full tube whose points are on it exactly is found; noise makes the result thinner than the tube that is known.
TEST(TorusFit, FindsTheTubeAndHoldsThePoints) {
  Random random(93);
  for (int k = 0; k < 300; ++k) {
    SCOPED_TRACE(k);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0)), minor = random.Uniform(0.001, 0.7);
    const double noise = k % 3 == 0 ? 0.0 : minor * std::pow(10.0, random.Uniform(-4.0, -1.5));
    const bool far = k % 2 == 1;
    const Motion motion = RandomMotion(random, far ? 1e4 * size : 0.0);
    const CNuPointArray part = TorusCloud(random, 400, 1.0, minor, random.Uniform(200.0, 360.0), 360.0, noise);
    const Data data(Fitted(motion(Scaled(part, size))));
    const double rounding = 32.0 * kEps * size * (far ? 2e4 : 2.0);
    EXPECT_LE(data.minor, size * (minor + 6.0 * noise) + rounding);
    EXPECT_GE(data.minor, size * (minor - 6.0 * noise) * (noise == 0.0 ? 0.98 : 0.5));
    for (int i = 0; i < part.GetSize(); ++i) {
      ASSERT_LE(data.DistanceOf(motion(part[i] * size)), data.minor + rounding);
    }
    EXPECT_NEAR(data.major, size, 0.5 * size * minor + size * 0.02);
    for (int i = 0; i < 3; ++i) {
      EXPECT_TRUE(std::fabs(data.axis[i]) < 0.8 || data.axis[i] > 0.0);
    }
  }
}

CNuPointArray Cloud(Random& random, int kind, int n) {
  switch (kind) {
    case 0:
      return TorusCloud(random, n, 4.0, 1.0, 240.0, 240.0, 0.01);
    case 1:
      return TorusCloud(random, n, 4.0, 0.2, 60.0, 360.0, 0.01);
    case 2:
      return nu::test::BoxCloud(random, n, 3.0, 2.0, 1.0);
    case 3:
      return nu::test::SphereCloud(random, n, 1.0, 180.0, 0.1);
    case 4:
      return nu::test::BoxCloud(random, n, 3.0, 2.0, 0.0);
    default: {
      CNuPointArray points(n);
      for (int i = 0; i < n; ++i) points.Add(CNuPoint(random.Below(4), random.Below(3), random.Below(3)));
      return points;
    }
  }
}

TEST(TorusFit, IsCarriedAlongByMotionScaleAndOrder) {
  Random random(94);
  int fitted = 0;
  for (int k = 0; k < 240; ++k) {
    SCOPED_TRACE(k);
    const int kind = k % 6;
    const CNuPointArray points = Cloud(random, kind, 8 + random.Below(60));
    CNuTorSurf first(2.0, 1.0), second(2.0, 1.0);
    const ENuFitResult result = first.FitMinEx(points, 1e-13, kLimit);
    ASSERT_EQ(second.FitMinEx(Shuffled(random, points), 1e-13, kLimit), result);
    if (result != NuFitSuccess) continue;
    ++fitted;
    const Data a(first), b(second);
    EXPECT_NEAR(b.minor, a.minor, 1e-14 * 8.0);
    if (kind > 1) {  // several optima may be equal: the order must not choose
      EXPECT_LE(a.centre.DistanceTo(b.centre) + (a.axis - b.axis).Magnitude(), kind == 5 ? 0.0 : 1e-6);
      continue;
    }
    const Motion motion = RandomMotion(random, 10.0);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    const Data c(Fitted(Scaled(motion(points), size), 1e-13 * size));
    EXPECT_NEAR(c.minor, size * a.minor, 1e-13 * size);
    EXPECT_NEAR(c.major, size * a.major, 1e-10 * size);
    EXPECT_LE(c.centre.DistanceTo(motion(a.centre) * size), 1e-10 * size);
  }
  EXPECT_GE(fitted, 230);
}

TEST(TorusFit, TheLimitOnlyEndsTheSteps) {
  Random random(95);
  const CNuPointArray points = Cloud(random, 0, 2000);
  const double minor = Fitted(points).GetMinorRadius();
  long needed = 0;
  for (long limit = 1; limit < 80; ++limit) {
    CNuTorSurf torus(2.0, 1.0);
    if (torus.FitMinEx(points, kTol, limit) == NuFitNoConvergence) {
      EXPECT_EQ(needed, limit - 1);
      needed = limit;
    } else {
      EXPECT_EQ(torus.GetMinorRadius(), minor);
    }
  }
  EXPECT_TRUE(needed >= 2 && needed < 60) << needed;
}

// Whatever a host passes, the fit ends, and what it returns is finite.
TEST(TorusFit, ExtremesEnd) {
  Random random(96);
  for (const double size : {1e300, 1e150, 1e-150, 1e-300, 5e-324}) {
    for (int kind = 0; kind < 6; ++kind) {
      CNuTorSurf torus(2.0, 1.0);
      if (torus.FitMinEx(Scaled(Cloud(random, kind, 50), size), 0.0, kLimit) != NuFitSuccess) continue;
      EXPECT_TRUE(std::isfinite(torus.GetMajorRadius() + torus.GetMinorRadius()));
      EXPECT_TRUE(size < 1e-200 || torus.GetMinorRadius() <= 3.0 * size);
    }
  }
  for (const double tol : {0.0, -1.0, kNan, 1e300, 1e-320}) {
    CNuTorSurf torus(2.0, 1.0);
    torus.FitMinEx(Cloud(random, 2, 50), tol, kLimit);
    for (const auto& set : {NuSetTol, NuSetZero, NuSetLengthTol}) {
      set(tol);
      torus.FitMinEx(Cloud(random, 2, 50), kTol, kLimit);
      NuSetTol(4.45e-16), NuSetZero(1e-300), NuSetLengthTol(1e-12);
    }
  }
}

}  // namespace
