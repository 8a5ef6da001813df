#include <gtest/gtest.h>

#include <cmath>

#include "nu/engine/minimax/cone_minimax.h"
#include "nu/engine/points/mean.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "support/clouds.h"
#include "support/minimax_laws.h"

// The contacts and multipliers that prove the minimum-zone cones.
namespace {

using namespace nu::internal;
using namespace nu::test;

struct Case {
  Case(Random& random, int run) {
    const double angles[] = {20.0, 45.0, 0.05, 89.5, 5.0, 75.0};
    const double sweeps[] = {360.0, 270.0, 200.0, 90.0, 30.0};
    size = std::pow(10.0, random.Below(9) - 3);
    const int n = run % 4 == 0 ? 3000 : 8 + random.Below(200);
    const double angle = angles[run % 6];
    const double noise = size * std::pow(0.1, run / 6 % 5 + 3) * std::cos(angle * kDegree);
    points = ConeCloud(random, n, angle, size, size * random.Uniform(0.3, 1.5), sweeps[run % 5], noise);
    double sumsq;
    start.Fit(points, &form, &sumsq, 1000);
  }

  ConeZone Solve(long limit = 1000) const {
    PointBlocks blocks = BlocksOf(ViewOf(points));
    Cone3 local = FitCone(ViewOf(points), blocks, {.maxIter = 1000}).shape;
    local.axis.point = local.axis.point - blocks.Origin();
    return NarrowestConeZone(blocks, MeanOf(ViewOf(points)) - blocks.Origin(), local, form, limit);
  }

  double size;
  CNuPointArray points{1};
  CNuConSurf start{45.0};
  double form = 0.0;
};

// Small changes of the six parameters move the deviation of a point by a combination of 1, sin phi, cos phi, and the
// same times the way y along the generator: each of them, weighted, cancels over the contacts.
void ExpectHeld(const ConeZone& found, double tol) {
  const Cone3& cone = found.cone;
  const double c = std::cos(cone.semiAngle);
  const double s = std::sin(cone.semiAngle);
  const AxisFrame axis = AxisFrame::Along(cone.axis.point, cone.axis.direction);
  const double radius = -cone.toApex * s / c;
  double weight = 0.0, reach = 0.0;
  double sum[6] = {};
  for (int k = 0; k < found.contacts; ++k) {
    const Vec3 q = axis.Local(found.contact[k]);
    const double d = std::hypot(q.x, q.y);
    ASSERT_NEAR(c * (d - radius) - s * q.z, 0.5 * found.sign[k] * found.width, tol);
    ASSERT_GE(found.multiplier[k], 0.0);
    const double force = found.sign[k] * found.multiplier[k];
    const double y = s * (d - radius) + c * q.z;
    const double functions[3] = {1.0, q.x / d, q.y / d};
    for (int i = 0; i < 3; ++i) {
      sum[i] += force * functions[i];
      sum[i + 3] += force * functions[i] * y;
    }
    weight += found.multiplier[k];
    reach = std::max(reach, std::fabs(y));
  }
  ASSERT_NEAR(weight, 1.0, 1e-9);
  for (int i = 0; i < 6; ++i) ASSERT_NEAR(sum[i], 0.0, i < 3 ? 1e-9 : 1e-9 * reach) << i;
}

TEST(ConeContacts, HoldZones) {
  Random random(761);
  for (int run = 0; run < 600; ++run) {
    SCOPED_TRACE(run);
    const Case c(random, run);
    const ConeZone zone = c.Solve();
    ASSERT_EQ(zone.end, MinimaxEnd::converged);
    ASSERT_GE(zone.contacts, 3);
    ASSERT_LE(zone.width, c.form);
    ExpectHeld(zone, 1e-13 * (c.size + Norm(zone.cone.axis.point) - zone.cone.toApex * std::sin(zone.cone.semiAngle)));
  }
}

// Required: hosts count on a limit that is not used up.
TEST(ConeContacts, TheLimitCountsTheLastStep) {
  ExpectLastStepToCount<Case>(Random(763), "CNuConSurf", [](const Case& c) { return c.Solve().steps; });
}

}  // namespace
