#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

constexpr double kTol = 1e-9;
constexpr long kLimit = 1000;

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

TEST(Torus, HoldsTwoRadiiAndAnAxis) {
  const CNuVector flat(2), zero(0, 0, 0);
  const auto failure = [](double major, double minor, const CNuVector& axis) {
    return FailureOf([&] { CNuTorSurf t(major, minor, CNuPoint(), axis); });
  };
  for (const double bad : {0.0, -1.0, kNaN, kInf}) {
    EXPECT_EQ(failure(bad, 1.0, flat), "construction 5 radius|CNuTorSurf [0,0]");
    EXPECT_EQ(failure(0.5, bad, flat), "construction 5 radius|CNuTorSurf [0,0]");
  }
  for (const double bad : {2.0, 3.0}) {
    EXPECT_EQ(failure(2.0, bad, flat), "construction 7 radius|CNuTorSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { CNuTorSurf t(2.0, bad); }), "construction 7 radius|CNuTorSurf [0,0]");
  }
  EXPECT_EQ(failure(2.0, 1.0, flat), "construction 4 |CNuTorSurf [0,0]");
  EXPECT_EQ(failure(2.0, 1.0, zero), "construction 3 |CNuTorSurf [0,0]");
  EXPECT_EQ(CNuTorSurf(2.0, 1.0).IsPositionSet(), NuFalse);
  EXPECT_EQ(CNuTorSurf(2.0, 1.0, CNuPoint(1, 2, 3)).GetRotation().Element(0, 0), 1.0);

  CNuTorSurf torus(2.0, 0.5, CNuPoint(1, 2, 3), CNuVector(0, 4, 0));
  const CNuTorSurf copy(torus);
  torus.Rotate(90.0, CNuGeometry::X_AXIS, CNuPoint(1, 2, 3));
  EXPECT_NEAR(torus.GetAxis().GetDirection()[2], 1.0, 4 * kEps);
  torus = copy;
  const Data data(torus);
  EXPECT_TRUE(data.major == 2.0 && data.minor == 0.5 && data.centre.y() == 2.0 && data.axis[1] == 1.0);
  EXPECT_EQ(torus.GetType(), 36);
}

// Single values of features that have been moved are those of all their data.
TEST(Accessors, FollowTheFrame) {
  const CNuPoint start(1, 2, 3), end(4, 2, -1);
  const CNuVector axis(0, 0, 1), x(1, 0, 0);
  CNuTorSurf torus(5.0, 3.0, start, axis);
  CNuCylSurf cylinder(5.0, start, axis);
  CNuEllipse ellipse(5.0, 3.0, start, x, axis);
  CNuHyperbola hyperbola(5.0, 3.0, start, x, axis);
  CNuLineSegment segment(start, end);
  CNuNonLinearGeometry* const all[] = {&torus, &cylinder, &ellipse, &hyperbola, &segment};
  for (CNuNonLinearGeometry* g : all) g->Rotate(30.0, CNuGeometry::X_AXIS), g->Translate(1.0, 2.0, 3.0);
  const auto moved = [](const CNuPoint& p) {
    const double c = std::cos(30.0 * kDegree), s = 0.5;
    return CNuPoint(p.x() + 1.0, c * p.y() - s * p.z() + 2.0, s * p.y() + c * p.z() + 3.0);
  };
  const CNuBoundedCurve& curve = segment;
  for (const CNuPoint& p : {torus.GetCentre(), cylinder.GetAxisPoint(), ellipse.GetCentre(), hyperbola.GetCentre(),
                            curve.GetStartPoint()}) {
    EXPECT_LE(p.DistanceTo(moved(start)), 1e-14);
  }
  EXPECT_LE(curve.GetEndPoint().DistanceTo(moved(end)), 1e-14);
  EXPECT_TRUE(ellipse.GetSemiAxisA() == 5.0 && hyperbola.GetSemiAxisA() == 5.0);
  EXPECT_TRUE(ellipse.GetSemiAxisB() == 3.0 && hyperbola.GetSemiAxisB() == 3.0);
}

// Required: hosts that walk over pairs of surfaces rely on these failures.
TEST(Torus, MeetsNothing) {
  const auto expect = [](const char* name, const auto& other) {
    EXPECT_EQ(FailureOf([&] { CNuTorSurf(2.0, 0.5).IntersectWith(other, nullptr); }),
              std::string("operation 45 calculation|CNuTorSurf::IntersectWith(") + name + ") [0,0]");
  };
  expect("CNuPlane", CNuPlane()), expect("CNuCylSurf", CNuCylSurf(1.0));
  expect("CNuConSurf", CNuConSurf(1.0)), expect("CNuSphSurf", CNuSphSurf(1.0));
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

// Two tubes, then sets that many circles fit equally well: a box, a rough ball, a filled rectangle, a lattice.
CNuPointArray Cloud(Random& random, int kind, int n) {
  if (kind == 0) return TorusCloud(random, n, 4.0, 1.0, 240.0, 240.0, 0.01);
  if (kind == 1) return TorusCloud(random, n, 4.0, 0.2, 60.0, 360.0, 0.01);
  if (kind == 3) return SphereCloud(random, n, 1.0, 180.0, 0.1);
  CNuPointArray points = BoxCloud(random, n, 3.0, 2.0, kind == 4 ? 0.0 : 1.0);
  for (int i = 0; i < n && kind == 5; ++i) points[i] = CNuPoint(random.Below(4), random.Below(3), random.Below(3));
  return points;
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
    for (int i = 0; i < points.GetSize(); ++i) ASSERT_LE(a.DistanceOf(points[i]), a.minor + 1e-15 * (a.major + 8.0));
    if (kind > 1) {  // several optima may be equal: the order must not choose
      EXPECT_LE(a.centre.DistanceTo(b.centre) + (a.axis - b.axis).Magnitude(), kind == 5 ? 0.0 : 1e-6);
      continue;
    }
    const Motion motion = RandomMotion(random, 10.0);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    const Data c(Fitted(Scaled(motion(points), size), 1e-13 * size));
    EXPECT_NEAR(c.minor, size * a.minor, 1e-13 * size);
    EXPECT_GE(std::max({c.axis[0], c.axis[1], c.axis[2]}), -std::min({c.axis[0], c.axis[1], c.axis[2]}));
    EXPECT_NEAR(c.major, size * a.major, 1e-10 * size);
    EXPECT_LE(c.centre.DistanceTo(motion(a.centre) * size), 1e-10 * size);
  }
  EXPECT_GE(fitted, 230);
}

}  // namespace
