#ifndef NU_TESTS_SUPPORT_MINIMAX_LAWS_H
#define NU_TESTS_SUPPORT_MINIMAX_LAWS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

// What the minimax fits of several features are judged by.
namespace nu::test {

struct Extremes {
  double nearest = std::numeric_limits<double>::infinity();
  double farthest = 0.0;
  double Width() const { return farthest - nearest; }
};

// From a point or a line; a place that is not finite is infinitely bad.
template<class Place>
Extremes DistancesFrom(const Place& place, const CNuPointArray& points) {
  Extremes e;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double d = points[i].DistanceTo(place);
    if (!std::isfinite(d)) return {0.0, std::numeric_limits<double>::infinity()};
    e.nearest = std::min(e.nearest, d);
    e.farthest = std::max(e.farthest, d);
  }
  return e;
}

// Rigid motion, size and order carry all three fits along, sizes whose squares overflow or vanish included; what
// encloses encloses and touches, and the zone is never wider than the least-squares form. A kind has a Feature with a
// radius, a Cloud up to kWhole degrees, Min and Max, a Place from which points are measured, and tells by ExpectMoved
// what else has to be the same.
template<class Kind>
void ExpectFollowing(Random& random, std::initializer_list<double> parts) {
  for (const double part : parts) {
    for (const int n : {12, 300, 5000}) {
      const CNuPointArray points = Kind::Cloud(random, n, part);
      const Motion motion = RandomMotion(random, 100.0);
      const double tol = 1e-11 * std::pow(Kind::kWhole / part, 2.0);
      typename Kind::Feature a(1.0), b(1.0), inner(1.0), outer(1.0);
      for (const double size : {1.0, 1e-3, 1e5, 1e-150, 1e150}) {
        const CNuPointArray moved = Scaled(Shuffled(random, motion(points)), size);
        const auto expectSame = [&](const char* what) {
          SCOPED_TRACE(what + std::to_string(part) + " " + std::to_string(n) + " " + std::to_string(size));
          EXPECT_NEAR(b.GetRadius() / size, a.GetRadius(), tol);
          Kind::ExpectMoved(motion, size, a, b, tol);
        };
        Kind::Min(a, points, 1e-9), Kind::Min(b, moved, 0.0);
        expectSame("min ");
        EXPECT_NEAR(DistancesFrom(Kind::Place(a), points).farthest, a.GetRadius(), Kind::kTouch);
        if (part > 0.5 * Kind::kWhole && n > 12) {
          Kind::Max(a, points, 1e-9), Kind::Max(b, moved, 0.0);
          expectSame("max ");
          EXPECT_NEAR(DistancesFrom(Kind::Place(a), points).nearest, a.GetRadius(), Kind::kTouch);
        }
        double zone = 0.0, zoneMoved = 0.0, form = 0.0, sumsq = 0.0;
        a.FitMinZone(points, &zone, &inner, &outer, 1e-9, 1000);
        ASSERT_EQ(b.FitMinZoneEx(moved, &zoneMoved, 0.0, 1000), NuFitSuccess) << part << " " << n << " " << size;
        expectSame("zone ");
        EXPECT_NEAR(zoneMoved / size, zone, 1e-11);
        const Extremes e = DistancesFrom(Kind::Place(a), points);
        EXPECT_NEAR(e.nearest, inner.GetRadius(), 1e-13);
        EXPECT_NEAR(e.farthest, outer.GetRadius(), 1e-13);
        b.Fit(points, &form, &sumsq, 1000);
        EXPECT_LE(zone, form);
      }
    }
  }
}

// The step that ends the search of a zone must not be the last permitted one. A case has its points and a start that
// fits them; `steps` tells how many it takes.
template<class Case, class Steps>
void ExpectLastStepToCount(Random random, const std::string& className, Steps steps) {
  int checked = 0;
  for (int run = 0; run < 60; ++run) {
    Case c(random, run);
    const long last = steps(c);
    double zone = -1.0;
    // The least-squares start has the same limit.
    if (c.start.FitEx(c.points, last) != NuFitSuccess) continue;
    EXPECT_EQ(FailureOf([&] { c.start.FitMinZone(c.points, &zone, 0.0, last); }),
              "bestfit 12 |" + className + " [0,0]");
    EXPECT_EQ(FailureOf([&] { c.start.FitMinZone(c.points, &zone, 0.0, last + 1); }), "nothing");
    ++checked;
  }
  EXPECT_GT(checked, 20);
}

}  // namespace nu::test

#endif
