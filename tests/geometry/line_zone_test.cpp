#include <gtest/gtest.h>

#include <cmath>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

constexpr double kTol = 1e-9;
constexpr long kLimit = 1000;

double LargestDistance(const CNuPointArray& points, const CNuPoint& place, const CNuVector& direction) {
  const CNuVector d = direction / direction.Magnitude();
  double largest = 0.0;
  for (int i = 0; i < points.GetSize(); ++i)
    largest = std::max(largest, ((points[i] - place).To3DVector() * d).Magnitude());
  return largest;
}

struct Fitted {
  CNuLine line, first, second;
  double zone = -1.0;
};

Fitted FitOf(const CNuPointArray& points, double tol = kTol, long limit = kLimit) {
  Fitted f;
  f.line.FitMinZone(points, &f.zone, &f.first, &f.second, tol, limit);
  return f;
}

CNuVector RandomVector(Random& random) {
  return CNuVector(random.Bell(), random.Bell(), random.Bell());
}

// What is flat has a strip, which needs no steps; a cylinder cannot do with one.
TEST(LineZone, ToleranceOfTheFitOrTheHostDecidesWhatIsFlat) {
  const CNuPointArray bent = PointsOf({{0, 0, 0}, {5, 0, 1}, {4, 3, 0.01}, {0, 3, 0}, {1, 1, 0.2}});
  Fitted f;
  EXPECT_EQ(f.line.FitMinZoneEx(bent, &f.zone, 1e-2, 1), NuFitNoConvergence);
  EXPECT_EQ(f.line.FitMinZoneEx(bent, &f.zone, 2.0, 1), NuFitSuccess);
  EXPECT_EQ(FailureOf([&] { FitOf(bent, 0.3, 1); }), "bestfit 12 |CNuLine [0,0]");
}

TEST(LineZone, PointsOnOneLineHaveAZoneOfNoWidth) {
  for (const CNuPointArray& points :
       {PointsOf({{1, 1, 1}, {3, 2, 3}}), PointsOf({{1, 1, 1}, {5, 3, 5}, {3, 2, 3}, {3, 2, 3}}),
        // within the tolerance of the fit, which is wider than that of lengths
        PointsOf({{1, 1, 1}, {5, 3, 5}, {3, 2 + 1e-11, 3}})}) {
    const Fitted f = FitOf(points);
    CNuLine least;
    least.Fit(points);
    EXPECT_EQ(f.zone, 0.0);
    for (const CNuLine& line : {f.line, f.first, f.second}) {
      EXPECT_EQ((line.GetPoint() - least.GetPoint()).To3DVector().Magnitude(), 0.0);
      EXPECT_EQ((line.GetDirection() - least.GetDirection()).Magnitude(), 0.0);
    }
  }
}

// A bent profile whose strip is known, in a plane z = const and in tilted planes, near and far, small and large. Some
// orders begin with three points on one line, which say nothing about a plane that is met to rounding: the fit in
// space has to find the same line.
TEST(LineZone, PlanarPointsHaveTheirStrip) {
  const CNuPointArray profile = PointsOf({{0, 0, 0}, {1, 0.5, 0}, {2, 1, 0}, {3, 0.25, 0}, {4, 0, 0}, {3.5, 0.5, 0}});
  Random random(5);
  for (int k = 0; k < 300; ++k) {
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    const Motion motion = RandomMotion(random, k % 2 == 0 ? 0.0 : 1e4);
    const bool tilted = k % 3 != 0;
    const CNuPointArray flat = Shuffled(random, Scaled(profile, size));
    const double rounding = 16.0 * kEps * (size + (tilted ? 1e4 : 0.0));
    Fitted f;
    f.line.FitMinZoneEx(tilted ? motion(flat) : flat, &f.zone, &f.first, &f.second, rounding, kLimit);
    EXPECT_NEAR(f.zone, size, 4.0 * rounding);
    CNuVector along(1, 0, 0);
    CNuPoint middle(13.5 / 6.0 * size, 0.5 * size, 0);
    if (tilted) {
      along = motion.Direction(CNuPoint(1, 0, 0)).To3DVector();
      middle = motion(middle);
    }
    EXPECT_LE((f.line.GetDirection() * along).Magnitude(), rounding / size);
    EXPECT_LE((f.line.GetPoint() - middle).To3DVector().Magnitude(), rounding);
    const CNuVector way = (f.first.GetPoint() - f.second.GetPoint()).To3DVector();
    EXPECT_NEAR(way.Magnitude(), size, rounding);
    EXPECT_LE(std::fabs(way % along), rounding);
  }
}

// Two rings of points around an axis, turned against each other, and points inside.
TEST(LineZone, RingsAreHeldByTheirCylinder) {
  Random random(6);
  for (int k = 0; k < 300; ++k) {
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    const double radius = size * random.Uniform(0.001, 0.2);
    CNuPointArray points(30);
    for (int i = 0; i < 30; ++i) {
      const double angle = (i < 6 ? 60.0 * i : random.Uniform(0.0, 360.0)) * kDegree;
      const double r = radius * (i < 6 ? 1.0 : random.Uniform(0.0, 0.9));
      const double z = i < 6 ? (i % 2 == 0 ? -size : size) : size * random.Uniform(-1.0, 1.0);
      points.Add({r * std::cos(angle), r * std::sin(angle), z});
    }
    const Motion motion = RandomMotion(random, k % 2 == 0 ? 0.0 : 1e4);
    const Fitted f = FitOf(motion(Shuffled(random, points)), 1e-9 * size);
    const double rounding = 32.0 * kEps * (size + (k % 2 == 0 ? 0.0 : 2e4));
    EXPECT_NEAR(f.zone, 2.0 * radius, rounding);
    const CNuVector axis = motion.Direction(CNuPoint(0, 0, 1)).To3DVector();
    EXPECT_LE((f.line.GetDirection() * axis).Magnitude(), 2.0 * rounding / size);
    EXPECT_LE(((f.line.GetPoint() - motion(CNuPoint())).To3DVector() * axis).Magnitude(), 2.0 * rounding);
  }
}

CNuPointArray Cloud(Random& random, int kind, int n) {
  switch (kind) {
    case 0:
      return LineCloud(random, n, 100.0, 0.01);
    case 1:
      return LineCloud(random, n, 1.0, 1e-9);
    case 2:
      return BoxCloud(random, n, 3.0, 1.0, 1.0);
    case 3:
      return BoxCloud(random, n, 1.0, 1.0, 1.0);
    case 4:
      return BoxCloud(random, n, 3.0, 1.0, 1e-4);
    case 5: {  // a lattice: many equal distances, many equal points
      CNuPointArray points(n);
      for (int i = 0; i < n; ++i) points.Add(CNuPoint(random.Below(7), random.Below(3), random.Below(3)));
      return points;
    }
    default: {  // far from straight: two legs and a lone point
      CNuPointArray points = LineCloud(random, n, 1.0, 0.01);
      for (int i = 0; i < n; ++i) points[i].y() += std::fabs(points[i].x());
      points[0].z() += 2.0;
      return points;
    }
  }
}

// No line near the result is better, the zone holds all points and touches them, and it is no wider than the cylinder
// around the least-squares line.
TEST(LineZone, IsAnOptimumWithItsBoundary) {
  Random random(7);
  for (int k = 0; k < 700; ++k) {
    SCOPED_TRACE(k);
    const CNuPointArray points =
        RandomMotion(random, 10.0)(Cloud(random, k % 7, 4 + random.Below(k % 10 == 0 ? 2000 : 40)));
    if (CNuGeometry::AreCoplanar(points, kTol) == 1) continue;
    const Fitted f = FitOf(points);
    CNuLine least;
    double form, sumsq;
    least.Fit(points, &form, &sumsq);
    EXPECT_LE(f.zone, form);
    const CNuPoint place = f.line.GetPoint();
    const CNuVector d = f.line.GetDirection();
    double reach = 0.0;
    for (int i = 0; i < points.GetSize(); ++i) reach = std::max(reach, points[i].DistanceTo(place));
    const double rounding = 32.0 * kEps * (reach + 20.0);
    EXPECT_NEAR(2.0 * LargestDistance(points, place, d), f.zone, rounding);
    for (const double h : {1e-2, 1e-4, 1e-6}) {
      for (int trial = 0; trial < 10; ++trial) {
        // Tilts and shifts of some parts of the width.
        const CNuVector tilt = d + RandomVector(random) * (h * f.zone / reach);
        const CNuPoint shifted = place + (RandomVector(random) * (h * f.zone)).To3DPoint();
        EXPECT_GE(2.0 * LargestDistance(points, shifted, tilt), f.zone - rounding);
      }
    }
    CNuVector canonical = d;
    canonical.SymmetricAxis(NuGetTol(), 1);
    EXPECT_EQ((canonical - d).Magnitude(), 0.0);
    EXPECT_LE(std::fabs((place - points.MeanPoint()).To3DVector() % d), rounding);
    const CNuVector way = (f.first.GetPoint() - place).To3DVector();
    EXPECT_NEAR(2.0 * way.Magnitude(), f.zone, rounding);
    EXPECT_LE(std::fabs(way % d), rounding);
    EXPECT_LE(((f.second.GetPoint() - place).To3DVector() + way).Magnitude(), rounding);
    double nearest = reach;
    for (int i = 0; i < points.GetSize(); ++i)
      nearest = std::min(nearest, ((points[i] - f.first.GetPoint()).To3DVector() * d).Magnitude());
    EXPECT_LE(nearest, std::sqrt(rounding * f.zone) + rounding);
  }
}

TEST(LineZone, IsCarriedAlongByMotionScaleAndOrder) {
  Random random(8);
  for (int k = 0; k < 600; ++k) {
    SCOPED_TRACE(k);
    const int kind = k % 5;
    const CNuPointArray points = Cloud(random, kind, 5 + random.Below(60));
    if (CNuGeometry::AreCoplanar(points, kTol) == 1) continue;
    // In a fat set one of several nearly equal optima may be found from one side and not from the other.
    const bool fat = kind == 2 || kind == 3;
    const Motion motion = RandomMotion(random, 10.0);
    const double size = std::pow(10.0, random.Uniform(-3.0, 3.0));
    const CNuPointArray shuffled = Shuffled(random, points);
    const CNuPointArray moved = Scaled(fat ? shuffled : motion(shuffled), size);
    // What is flat is decided by lengths, so these are scaled too.
    Fitted f, g;
    f.line.FitMinZoneEx(points, &f.zone, 1e-13, kLimit);
    g.line.FitMinZoneEx(moved, &g.zone, 1e-13 * size, kLimit);
    EXPECT_NEAR(g.zone, size * f.zone, 1e-13 * size * (kind == 0 ? 100.0 : 20.0));
    // Of straight sets the line is well determined too.
    if (kind > 1) continue;
    const CNuVector axis = motion.Direction(f.line.GetDirection().To3DPoint()).To3DVector();
    EXPECT_LE((axis * g.line.GetDirection()).Magnitude(), 1e-10);
    EXPECT_LE((motion(f.line.GetPoint()) * size - g.line.GetPoint()).To3DVector().Magnitude(), 1e-11 * size * 100.0);
  }
}

// Steps are counted alike under any limit: too small a limit fails, any other gives the same bits.
TEST(LineZone, TheLimitOnlyEndsTheSteps) {
  Random random(9);
  const CNuPointArray points = Cloud(random, 0, 500);
  const Fitted f = FitOf(points);
  bool reached = false;
  int needed = 0;
  for (long limit = 1; limit < 60; ++limit) {
    Fitted g;
    const ENuFitResult result = g.line.FitMinZoneEx(points, &g.zone, kTol, limit);
    EXPECT_EQ(result, reached || result == NuFitSuccess ? NuFitSuccess : NuFitNoConvergence);
    reached = result == NuFitSuccess;
    if (!reached) ++needed;
    EXPECT_EQ(g.zone, reached ? f.zone : -1.0);
  }
  EXPECT_TRUE(reached);
  EXPECT_GE(needed, 2);
}

// Points of a lattice have many axes that are equally good; which one is found is no matter of their order.
TEST(LineZone, ChoosesAmongEqualOptimaAlikeInAnyOrder) {
  Random random(31);
  const auto corner = [&] { return random.Below(3); };
  for (int set = 0; set < 100; ++set) {
    CNuPointArray points(12);
    for (int i = 0; i < 6 + set % 7; ++i) points.Add(CNuPoint(corner(), corner(), corner()));
    CNuLine first, line;
    double zone = 0.0, again = 0.0;
    first.FitMinZone(points, &zone, kTol, kLimit);
    for (int turn = 0; turn < 5; ++turn) {
      for (int i = points.GetSize() - 1; i > 0; --i) CNuPoint::Swap(points[i], points[random.Below(i + 1)]);
      line.FitMinZone(points, &again, kTol, kLimit);
      EXPECT_EQ(again, zone);
      for (int k = 0; k < 3; ++k) EXPECT_EQ(line.GetDirection()[k], first.GetDirection()[k]);
    }
  }
}

}  // namespace
