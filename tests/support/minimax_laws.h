#ifndef NU_TESTS_SUPPORT_MINIMAX_LAWS_H
#define NU_TESTS_SUPPORT_MINIMAX_LAWS_H

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <limits>
#include <string>

#include "support/failures.h"
#include "support/fitted.h"

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

// Rigid motion, size and order carry all three fits of a feature with a radius along, sizes whose squares overflow or
// vanish included; what encloses encloses and touches, and the zone is never wider than the least-squares form. `cloud`
// makes points of a part of the feature, which is `whole` degrees.
template<class Cloud>
void ExpectFollowing(const std::string& className, Random random, double whole, std::initializer_list<double> parts,
                     Cloud cloud) {
  constexpr double kTouch = 1e-13;
  const auto distances = [&](const Fitted& f, const CNuPointArray& points) {
    return className == "CNuCylSurf" ? DistancesFrom(CNuLine(f.place, f.axis), points) : DistancesFrom(f.place, points);
  };
  for (const double part : parts) {
    for (const int n : {12, 300, 5000}) {
      const CNuPointArray points = cloud(random, n, part);
      const Motion motion = RandomMotion(random, 100.0);
      const double tol = 1e-11 * std::pow(whole / part, 2.0);
      for (const Criterion by : {kCircumscribed, kInscribed, kZone}) {
        if (by == kInscribed && (part <= 0.5 * whole || n == 12)) continue;
        const AnyFit& fit = TheFit(className, by);
        const Fitted a = FitOf(fit, points);
        const Extremes e = distances(a, points);
        EXPECT_NEAR(by == kInscribed ? e.nearest : e.farthest, by == kZone ? a.outer.radius : a.radius, kTouch);
        if (by == kZone) {
          EXPECT_NEAR(e.nearest, a.inner.radius, kTouch);
          EXPECT_LE(a.form, FitOf(TheFit(className), points).form);
        }
        const CNuVector axis = motion.Direction(a.axis.To3DPoint()).To3DVector();
        for (const double size : {1.0, 1e-3, 1e5, 1e-150, 1e150}) {
          SCOPED_TRACE(fit.Name() + " " + std::to_string(part) + " " + std::to_string(n) + " " + std::to_string(size));
          const CNuPointArray moved = Scaled(Shuffled(random, motion(points)), size);
          Fitted b;
          ASSERT_EQ(
              fit.runEx == nullptr ? (fit.run(moved, 0.0, 1000, b), NuFitSuccess) : fit.runEx(moved, 0.0, 1000, b),
              NuFitSuccess);
          EXPECT_NEAR(b.radius / size, a.radius, tol);
          EXPECT_NEAR(motion(a.place).DistanceTo(b.place * (1.0 / size)), 0.0, tol);
          EXPECT_NEAR((axis * b.axis).Magnitude(), 0.0, tol);
          EXPECT_NEAR(by == kZone ? b.form / size : a.form, a.form, 1e-11);
        }
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
