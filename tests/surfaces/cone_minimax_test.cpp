#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

struct Extremes {
  double smallest = kInf;
  double largest = -kInf;
};

// On both nappes a point counts from the one on its side.
Extremes DeviationsFrom(const CNuConSurf& cone, const CNuPointArray& points, bool bothNappes = false) {
  const double a = cone.GetSemiAngle() * kDegree;
  const CNuVector axis = cone.GetAxisDirection();
  Extremes e;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuVector q = (points[i] - cone.GetApex()).To3DVector();
    const double height = bothNappes ? std::fabs(axis % q) : axis % q;
    const double d = (axis * q).Magnitude() * std::cos(a) - height * std::sin(a);
    e.smallest = std::min(e.smallest, d);
    e.largest = std::max(e.largest, d);
  }
  return e;
}

// A zone below NuGetTol() leaves both boundaries where the cone is.
TEST(MinimumZoneCone, HasParallelBoundaries) {
  Random random(772);
  const CNuPointArray points = ConeCloud(random, 50, 30.0, 10.0, 8.0, 360.0, 1e-3);
  CNuConSurf cone(45.0), inner(45.0), outer(45.0);
  double zone = 0.0;
  for (const bool apart : {true, false}) {
    if (!apart) NuSetTol(1.0);
    cone.FitMinZone(points, &zone, &inner, &outer, 1e-9, 1000);
    NuSetTol(4.45e-16);
    const double way = apart ? 0.5 * zone / std::sin(cone.GetSemiAngle() * kDegree) : 0.0;
    for (const double side : {1.0, -1.0}) {
      const CNuConSurf& boundary = side > 0.0 ? inner : outer;
      const CNuVector moved = (boundary.GetApex() - cone.GetApex()).To3DVector();
      EXPECT_NEAR((moved - side * way * cone.GetAxisDirection()).Magnitude(), 0.0, 1e-14);
      EXPECT_EQ(boundary.GetSemiAngle(), cone.GetSemiAngle());
      EXPECT_EQ((boundary.GetAxisDirection() - cone.GetAxisDirection()).Magnitude(), 0.0);
    }
    if (!apart) continue;
    EXPECT_NEAR(DeviationsFrom(inner, points).smallest, 0.0, 1e-14);
    EXPECT_NEAR(DeviationsFrom(outer, points).largest, 0.0, 1e-14);
  }
}

// Few of them fit exactly, and all others to rounding: there is nothing to gain from any.
TEST(MinimumZoneCone, EndsOnExactPoints) {
  Random random(774);
  for (int run = 0; run < 300; ++run) {
    const double angle = random.Uniform(2.0, 80.0);
    const Motion motion = RandomMotion(random, run % 2 == 0 ? 0.0 : 1.0);
    const CNuPointArray points = motion(ConeCloud(random, 20 + random.Below(300), angle, 1.0, 1.5, 360.0, 0.0));
    CNuConSurf cone(45.0);
    double zone = -1.0;
    ASSERT_EQ(cone.FitMinZoneEx(points, &zone, 1e-12, 1000), NuFitSuccess) << run;
    ASSERT_LE(zone, 1e-13);
    ASSERT_NEAR(cone.GetSemiAngle(), angle, 1e-10);
  }
}

// No small change of the cone narrows the range of the deviations, and it is not wider than the least-squares form.
TEST(MinimumZoneCone, OfPointsOnBothNappes) {
  Random random(775);
  for (int run = 0; run < 60; ++run) {
    SCOPED_TRACE(run);
    CNuPointArray points = ConeCloud(random, 60, random.Uniform(10.0, 75.0), 10.0, 12.0, 360.0, 0.01);
    const int there = 3 + random.Below(57);
    for (int i = 0; i < there; ++i) points[i] = -points[i];
    points = RandomMotion(random, 50.0)(points);
    CNuConSurf cone(45.0), start(45.0);
    double zone = 0.0, form = 0.0, sumsq = 0.0;
    start.Fit(points, &form, &sumsq, 1000);
    cone.FitMinZone(points, &zone, 1e-9, 1000);
    EXPECT_LT(zone, form);
    const Extremes e = DeviationsFrom(cone, points, true);
    EXPECT_NEAR(e.largest - e.smallest, zone, 1e-13);
    const auto change = [&] { return random.Uniform(-1e-4, 1e-4) * zone; };
    for (int k = 0; k < 200; ++k) {
      const CNuConSurf other(cone.GetSemiAngle() + 6.0 * change(),
                             cone.GetApex() + CNuPoint(change(), change(), change()),
                             cone.GetAxisDirection() + 0.1 * CNuVector(change(), change(), change()));
      const Extremes near = DeviationsFrom(other, points, true);
      ASSERT_GE(near.largest - near.smallest, zone - 1e-13);
    }
  }
}

// From their least-squares cones the way leads to a plane; there are optima next to other cones.
TEST(MinimumZoneCone, OfNearlyFlatPoints) {
  Random random(776);
  int found = 0, sets = 0;
  for (int run = 0; run < 14; ++run) {
    const bool isTorus = run % 2 == 0;
    const CNuPointArray points = isTorus ? TorusCloud(random, 20 + 12 * run, 1.0, 0.3, 360.0, 360.0, 0.02)
                                         : BoxCloud(random, 20 + 9 * run, 1.0, 0.6, 0.1);
    CNuConSurf cone(45.0);
    double zone = 0.0, form = 0.0, sumsq = 0.0;
    if (cone.FitEx(points, &form, &sumsq, 1000) != NuFitSuccess) continue;
    ++sets;
    const std::string failure = FailureOf([&] { cone.FitMinZone(points, &zone, 1e-9, 1000); });
    if (failure == "nothing")
      ++found;
    else
      EXPECT_EQ(failure, "bestfit 11 |CNuConSurf::FitMinZone [0,0]") << run;
    EXPECT_LE(zone, form) << run;
  }
  EXPECT_GE(sets, 12);
  EXPECT_GE(found, sets - 1);
}

// Rigid motion, size and order carry the zone along, sizes whose squares overflow or vanish included; the axis points
// into the data, and the zone is never wider than the least-squares form.
TEST(MinimumZoneCone, FollowsItsPoints) {
  Random random(773);
  for (const double angle : {0.05, 3.0, 30.0, 80.0, 89.5}) {
    for (const double sweep : {360.0, 200.0, 60.0}) {
      for (const int n : {12, 300, 5000}) {
        const double noise = 1e-3 * std::cos(angle * kDegree);
        const CNuPointArray points = ConeCloud(random, n, angle, 10.0, 12.0, sweep, noise);
        const Motion motion = RandomMotion(random, 100.0);
        CNuConSurf a(45.0), b(45.0);
        double zone = 0.0, moved = 0.0, form = 0.0, sumsq = 0.0;
        a.FitMinZone(points, &zone, 1e-9, 1000);
        const Extremes e = DeviationsFrom(a, points);
        const double reach = 10.0 + a.GetApex().DistanceTo(points[0]);
        // An error of the semi-angle moves the apex by its square of the way to it.
        const double apexTol = 1e-9 * reach + 1e-11 * reach * reach;
        EXPECT_NEAR(e.largest - e.smallest, zone, 1e-15 * reach);
        EXPECT_NEAR(e.largest + e.smallest, 0.0, 1e-15 * reach);
        b.Fit(points, &form, &sumsq, 1000);
        EXPECT_LE(zone, form);
        for (const double size : {1.0, 1e-3, 1e5, 1e-150, 1e150}) {
          SCOPED_TRACE(::testing::Message() << angle << " " << sweep << " " << n << " " << size);
          const CNuPointArray other = Scaled(Shuffled(random, motion(points)), size);
          ASSERT_EQ(b.FitMinZoneEx(other, &moved, 0.0, 1000), NuFitSuccess);
          EXPECT_NEAR(moved / size, zone, 1e-15 * (reach + 100.0));
          EXPECT_NEAR(b.GetSemiAngle(), a.GetSemiAngle(), 1e-8);
          const CNuVector turned = motion.Direction(a.GetAxisDirection().To3DPoint()).To3DVector();
          EXPECT_NEAR((turned - b.GetAxisDirection()).Magnitude(), 0.0, 1e-9);
          EXPECT_NEAR(motion(a.GetApex()).DistanceTo(b.GetApex() * (1.0 / size)), 0.0, apexTol);
          EXPECT_GT((other[0] - b.GetApex()).To3DVector() % b.GetAxisDirection(), 0.0);
        }
      }
    }
  }
}

}  // namespace
