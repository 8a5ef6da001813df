#include <gtest/gtest.h>

#include <cmath>

#include "nu/engine/minimax/cylinder_minimax.h"
#include "nu/engine/minimax/enclosing_cylinder.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/canonical_order.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "support/clouds.h"
#include "support/minimax_laws.h"

// The contacts and multipliers that prove the minimax cylinders.
namespace {

using namespace nu::internal;
using namespace nu::test;

struct Case {
  Case(Random& random, int run) {
    const double sweeps[] = {360.0, 270.0, 200.0, 90.0, 30.0, 10.0};
    size = std::pow(10.0, random.Below(9) - 3);
    const int n = run % 4 == 0 ? 3000 : 6 + random.Below(200);
    const double length = size * std::pow(10.0, random.Uniform(-0.5, 1.0));
    points = CylinderCloud(random, n, size, length, sweeps[run % 6], size * std::pow(0.1, run / 6 % 6 + 3));
    points = InCanonicalOrder(ViewOf(points), [](PointView data) {  // as the fits do
      CNuPointArray ordered(static_cast<int>(data.Size()));
      for (std::size_t i = 0; i < data.Size(); ++i) ordered.Add(ToPoint(LoadVec3(data[i])));
      return ordered;
    });
    FitStart();
  }
  explicit Case(const CNuPointArray& set) : size(1.0), points(set) { FitStart(); }

  void FitStart() {
    double sumsq;
    start.Fit(points, &form, &sumsq, 1000);
  }

  template<class Problem>
  CylinderMinimax Solve(Problem problem, long limit = 1000) const {
    PointBlocks blocks = BlocksOf(ViewOf(points));
    Cylinder3 local = FitCylinder(ViewOf(points), blocks, {.maxIter = 1000}).shape;
    local.axis.point = local.axis.point - blocks.Origin();
    return problem(blocks, MeanOf(ViewOf(points)) - blocks.Origin(), local, limit, {});
  }

  double size;
  CNuPointArray points{1};
  CNuCylSurf start{1.0};
  double form = 0.0;
};

// The directions from the axis, weighted, cancel, and so do their moments; the contacts are where they should be.
void ExpectHeld(const CylinderMinimax& found, double tol, double balance = 1e-9) {
  ASSERT_EQ(found.end, MinimaxEnd::converged);
  const Vec3& axis = found.cylinder.axis.direction;
  double reach = 0.0, weight = 0.0, difference = 0.0;
  Vec3 sum, moment;
  for (int k = 0; k < found.contacts; ++k) {
    const Vec3 q = found.contact[k] - found.cylinder.axis.point;
    const Vec3 from = Rejection(q, axis);
    ASSERT_NEAR(Norm(from), found.cylinder.radius + 0.5 * found.sign[k] * found.zone, tol);
    ASSERT_GE(found.multiplier[k], 0.0);
    const Vec3 force = found.sign[k] * found.multiplier[k] / Norm(from) * from;
    sum = sum + force;
    moment = moment + Dot(q, axis) * force;
    weight += found.multiplier[k];
    difference += found.sign[k] * found.multiplier[k];
    reach = std::max(reach, std::fabs(Dot(q, axis)));
  }
  ASSERT_NEAR(weight, 1.0, 1e-9);
  ASSERT_LE(Norm(sum), balance);
  ASSERT_LE(Norm(moment), balance * reach);
  ASSERT_NEAR(found.zone > 0.0 ? difference : 0.0, 0.0, balance);
}

TEST(CylinderContacts, HoldCylindersAndZones) {
  Random random(751);
  int bores = 0;
  for (int run = 0; run < 600; ++run) {
    SCOPED_TRACE(run);
    const Case c(random, run);
    const double tol = 1e-13 * c.size * (1.0 + c.start.GetRadius() / c.size);
    const CylinderMinimax zone = c.Solve(NarrowestCylinderZone);
    ExpectHeld(zone, tol);
    ASSERT_LE(zone.zone, c.form);
    ExpectHeld(c.Solve(SmallestCylinderAround), tol);
    const CylinderMinimax bore = c.Solve(LargestCylinderInside);
    if (bore.end == MinimaxEnd::converged) ExpectHeld(bore, tol), ++bores;
  }
  EXPECT_GT(bores, 250);
}

// Of points that are no cylinder, too, a result is an optimum, no worse than the least-squares cylinder, or none.
TEST(CylinderContacts, HoldWhateverIsReturned) {
  constexpr double flat = 1e-6;  // in a flat valley the steps that change nothing are long
  Random random(757);
  int zones = 0, bores = 0;
  for (int run = 0; run < 600; ++run) {
    SCOPED_TRACE(run);
    const int n = 20 + random.Below(300);
    const Case c(run % 3 == 0   ? TwoArcsCloud(random, n, 1.0, std::pow(10.0, random.Uniform(-7.0, -3.0)))
                 : run % 3 == 1 ? BoxCloud(random, n, 1.0, random.Uniform(0.1, 1.0), random.Uniform(0.1, 1.0))
                                : TorusCloud(random, n, 1.0, random.Uniform(0.1, 0.9), 270.0, 300.0, 1e-3));
    const CylinderMinimax zone = c.Solve(NarrowestCylinderZone);
    if (zone.end == MinimaxEnd::converged) {
      ExpectHeld(zone, 1e-13 * (1.0 + zone.cylinder.radius), flat);
      ASSERT_LE(zone.zone, c.form * (1.0 + 1e-9));
      ++zones;
    }
    ExpectHeld(c.Solve(SmallestCylinderAround), 1e-13, flat);
    const CylinderMinimax bore = c.Solve(LargestCylinderInside);
    if (bore.end == MinimaxEnd::converged) ExpectHeld(bore, 1e-13, flat), ++bores;
    ASSERT_NE(bore.end, MinimaxEnd::limitReached);
  }
  EXPECT_GT(zones, 580);
  EXPECT_GT(bores, 350);
}

// Short sets have many local optima.
TEST(CylinderContacts, NoOtherStartLeadsToASmallerCylinder) {
  Random random(757);
  for (int run = 0; run < 90; ++run) {
    SCOPED_TRACE(run);
    const int n = 10 + random.Below(150);
    const double flat = random.Uniform(0.02, 1.0), noise = run % 2 ? 5e-4 : 0.05;
    const Case c(RandomMotion(random, 1.0)(run % 3 == 0   ? BoxCloud(random, n, 1.0, random.Uniform(0.5, 1.0), flat)
                                           : run % 3 == 1 ? CylinderCloud(random, n, 0.5, 0.5 * flat, 360.0, noise)
                                                          : SphereCloud(random, n, 0.5, 180.0, 0.05)));
    const double radius = c.Solve(SmallestCylinderAround).cylinder.radius;
    PointBlocks blocks(ViewOf(c.points), MeanOf(ViewOf(c.points)));
    Minimax<AxisDistance> minimax(blocks, MinimaxSide::outer, kDistanceRoundings * kEps, 1000);
    for (int start = 0; start < 30; ++start) {
      const Vec3 direction = Components(RandomMotion(random, 0.0).Direction({0.0, 0.0, 1.0}));
      const MinimaxSolution<AxisDistance> other = minimax.Solve({AxisFrame::Along({}, direction), 1.0});
      if (other.end != MinimaxEnd::converged) continue;
      ASSERT_LE(radius, other.value * (1.0 + 1e-9));
    }
  }
}

// Required: hosts count on a limit that is not used up.
TEST(CylinderContacts, TheLimitCountsTheLastStep) {
  ExpectLastStepToCount<Case>(Random(753), "CNuCylSurf", [](const Case& c) {
    long steps = 1;
    while (c.Solve(NarrowestCylinderZone, steps).end == MinimaxEnd::limitReached) ++steps;
    return steps;
  });
}

}  // namespace
