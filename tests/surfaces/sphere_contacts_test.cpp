#include <gtest/gtest.h>

#include <cmath>

#include "nu/geometry/internal/empty_ball.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/incidence.h"
#include "nu/geometry/internal/mean.h"
#include "nu/geometry/internal/spherical_shell.h"
#include "nu/surfaces/sphere.h"
#include "support/clouds.h"
#include "support/failures.h"

// The contacts and multipliers that prove the minimax spheres.
namespace {

using namespace nu::internal;
using nu::test::Random;
using nu::test::SphereCloud;

constexpr double kProof = 1e-9;

TEST(SphereContacts, HoldTheLargestEmptyBall) {
  Random random(721);
  for (int run = 0; run < 400; ++run) {
    const double size = std::pow(10.0, random.Below(9) - 3);
    const int n = run % 4 == 0 ? 3000 : 20 + random.Below(200);
    const CNuPointArray points =
        SphereCloud(random, n, size, 120.0 + random.Below(61), size * std::pow(0.1, run % 6 + 1));
    PointBlocks blocks(ViewOf(points), MiddleOf(points));
    const EmptyBall ball = GrowEmptyBall(blocks, MeanOf(ViewOf(points)) - MiddleOf(points), 1000);
    if (!ball.found) continue;
    Vec3 sum;
    double weight = 0.0;
    for (int k = 0; k < ball.contacts; ++k) {
      const Vec3 from = ball.contact[k] - ball.centre;
      ASSERT_NEAR(Norm(from), ball.radius, 1e-13 * size) << run;
      ASSERT_GE(ball.multiplier[k], 0.0) << run;
      sum = sum + ball.multiplier[k] / Norm(from) * from;
      weight += ball.multiplier[k];
    }
    ASSERT_NEAR(weight, 1.0, kProof) << run;
    ASSERT_LE(Norm(sum), kProof) << run;
  }
}

struct Case {
  CNuPointArray points;
  CNuSphSurf start;
  double form;

  SphericalShell Shell(long limit) const {
    const Vec3 origin = MiddleOf(points);
    PointBlocks blocks(ViewOf(points), origin);
    return ThinnestShell(blocks, MeanOf(ViewOf(points)) - origin, Components(start.GetCentre()) - origin,
                         start.GetRadius(), limit);
  }
};

Case MakeCase(Random& random, int run) {
  const double caps[] = {180.0, 150.0, 90.0, 45.0, 20.0, 10.0};
  const double size = std::pow(10.0, random.Below(9) - 3);
  const int n = run % 4 == 0 ? 3000 : 20 + random.Below(200);
  Case c{SphereCloud(random, n, size, caps[run % 6], size * std::pow(0.1, run / 6 % 6 + 3)), CNuSphSurf(1.0), 0.0};
  double sumsq;
  c.start.Fit(c.points, &c.form, &sumsq, 1000);
  return c;
}

TEST(SphereContacts, HoldTheThinnestShell) {
  Random random(722);
  for (int run = 0; run < 400; ++run) {
    const Case c = MakeCase(random, run);
    const SphericalShell shell = c.Shell(1000);
    ASSERT_EQ(shell.end, MinimaxEnd::converged) << run;
    Vec3 sum;
    double weight = 0.0, difference = 0.0;
    for (int k = 0; k < shell.contacts; ++k) {
      const Vec3 from = shell.contact[k] - shell.centre;
      ASSERT_NEAR(Norm(from), shell.sign[k] > 0.0 ? shell.outer : shell.inner, 1e-13 * shell.outer) << run;
      ASSERT_GE(shell.multiplier[k], 0.0) << run;
      sum = sum + shell.sign[k] * shell.multiplier[k] / Norm(from) * from;
      weight += shell.multiplier[k];
      difference += shell.sign[k] * shell.multiplier[k];
    }
    ASSERT_NEAR(weight, 1.0, kProof) << run;
    ASSERT_NEAR(difference, 0.0, kProof) << run;
    ASSERT_LE(Norm(sum), kProof) << run;
    ASSERT_LE(shell.outer - shell.inner, c.form) << run;
  }
}

// Required: the step that ends the search must not be the last permitted one; hosts count on a limit that is not used
// up.
TEST(SphereContacts, TheLimitCountsTheLastStep) {
  Random random(723);
  int checked = 0;
  for (int run = 0; run < 60; ++run) {
    Case c = MakeCase(random, run);
    const long steps = c.Shell(1000).steps;
    double zone = -1.0;
    // The least-squares start has the same limit.
    if (c.start.FitEx(c.points, steps) != NuFitSuccess) continue;
    EXPECT_EQ(FailureOf([&] { c.start.FitMinZone(c.points, &zone, 0.0, steps); }), "bestfit 12 |CNuSphSurf [0,0]");
    EXPECT_EQ(FailureOf([&] { c.start.FitMinZone(c.points, &zone, 0.0, steps + 1); }), "nothing");
    ++checked;
  }
  EXPECT_GT(checked, 20);
}

}  // namespace
