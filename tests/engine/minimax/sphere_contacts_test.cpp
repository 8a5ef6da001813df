#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "nu/engine/minimax/empty_ball.h"
#include "nu/engine/minimax/spherical_shell.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/surfaces/sphere.h"
#include "support/clouds.h"
#include "support/minimax_laws.h"

// The contacts and multipliers that prove the minimax spheres.
namespace {

using namespace nu::internal;
using namespace nu::test;

struct Case {
  Case(Random& random, int run) {
    const double caps[] = {180.0, 150.0, 120.0, 45.0, 10.0};
    size = std::pow(10.0, random.Below(9) - 3);
    const int n = run % 4 == 0 ? 3000 : 20 + random.Below(200);
    const double noise = size * std::pow(0.1, run / 6 % 6 + 3);
    // Of a plate the centre is far away, and may be on either side.
    points = run % 6 == 5 ? PlaneCloud(random, n, 2.0 * size, size, 100.0 * noise)
                          : SphereCloud(random, n, size, caps[run % 6], noise);
    FitStart();
  }
  explicit Case(const CNuPointArray& set) : size(1.0), points(set) { FitStart(); }

  void FitStart() {
    double sumsq;
    start.Fit(points, &form, &sumsq, 1000);
  }

  EmptyBall Ball() const {
    PointBlocks blocks(ViewOf(points), MiddleOf(ViewOf(points)));
    return GrowEmptyBall(blocks, MeanOf(ViewOf(points)) - MiddleOf(ViewOf(points)), 10 * points.GetSize());
  }
  SphericalShell Shell() const {
    const Vec3 origin = MiddleOf(ViewOf(points));
    PointBlocks blocks(ViewOf(points), origin);
    const Vec3 centre = Components(start.GetCentre()) - origin;
    return ThinnestShell(blocks, MeanOf(ViewOf(points)) - origin, centre, start.GetRadius(), 1000);
  }

  double size;
  CNuPointArray points{1};
  CNuSphSurf start{1.0};
  double form = 0.0;
};

// Directions from the centre, weighted, cancel; the contacts are as far away as they should be.
template<class Found>
void ExpectHeld(const Found& found, double outer, double inner, double tol) {
  Vec3 sum;
  double weight = 0.0;
  for (int k = 0; k < found.contacts; ++k) {
    const Vec3 from = found.contact[k] - found.centre;
    ASSERT_NEAR(Norm(from), found.sign[k] > 0.0 ? outer : inner, tol);
    ASSERT_GE(found.multiplier[k], 0.0);
    sum = sum + found.sign[k] * found.multiplier[k] / Norm(from) * from;
    weight += found.multiplier[k];
  }
  ASSERT_NEAR(weight, 1.0, 1e-9);
  ASSERT_LE(Norm(sum), 1e-9);
}

void ExpectShellHeld(const Case& c) {
  const SphericalShell shell = c.Shell();
  ASSERT_EQ(shell.end, MinimaxEnd::converged);
  ExpectHeld(shell, shell.outer, shell.inner, 1e-13 * shell.outer);
  double difference = 0.0;
  for (int k = 0; k < shell.contacts; ++k) difference += shell.sign[k] * shell.multiplier[k];
  ASSERT_NEAR(difference, 0.0, 1e-9);
  ASSERT_LE(shell.outer - shell.inner, c.form);
}

TEST(SphereContacts, HoldBallsAndShells) {
  Random random(721);
  int balls = 0;
  for (int run = 0; run < 400; ++run) {
    SCOPED_TRACE(run);
    const Case c(random, run);
    const EmptyBall ball = c.Ball();
    if (ball.found) ExpectHeld(ball, ball.radius, ball.radius, 1e-13 * c.size), ++balls;
    ExpectShellHeld(c);
  }
  EXPECT_GT(balls, 150);
}

// Within a coil the ball rolls from point to point; more turns make its contacts pairs of neighbours.
TEST(SphereContacts, HoldBallsInCoils) {
  Random random(727);
  for (const double turns : {3.0, 10.0}) {
    CNuPointArray coil(100'000);
    for (int i = 0; i < 100'000; ++i) {
      const double t = random.Uniform(0.0, 360.0) * kDegree;
      coil.Add(CNuPoint(std::cos(turns * t), std::sin(turns * t), t));
    }
    const Case c(coil);
    const EmptyBall ball = c.Ball();
    ASSERT_TRUE(ball.found);
    ExpectHeld(ball, ball.radius, ball.radius, 1e-13);
    double nearest = ball.radius;
    const Vec3 centre = MiddleOf(ViewOf(coil)) + ball.centre;
    for (int i = 0; i < coil.GetSize(); ++i) nearest = std::min(nearest, Norm(Components(coil[i]) - centre));
    EXPECT_NEAR(nearest, ball.radius, 1e-13);
  }
}

// Of two arcs the optimum of few points is often far below that of all, along a flat valley.
TEST(SphereContacts, HoldShellsOfTwoArcs) {
  Random random(725);
  for (int run = 0; run < 1000; ++run) {
    SCOPED_TRACE(run);
    const double noise = std::pow(10.0, random.Uniform(-7.0, -4.0));
    ExpectShellHeld(Case(TwoArcsCloud(random, 20 + random.Below(500), 1.0, noise)));
  }
}

// Required: hosts count on a limit that is not used up.
TEST(SphereContacts, TheLimitCountsTheLastStep) {
  ExpectLastStepToCount<Case>(Random(723), "CNuSphSurf", [](const Case& c) { return c.Shell().steps; });
}

}  // namespace
