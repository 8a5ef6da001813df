#include "nu/engine/minimax/smallest_tube.h"

#include <gtest/gtest.h>

#include <cmath>

#include "nu/geometry/internal/fit_guards.h"
#include "support/clouds.h"

// What proves a minimum torus: derivatives that are those of the distance, and contacts that hold it.
namespace {

using namespace nu::internal;
using namespace nu::test;

constexpr int K = TubeDistance::kUnknowns;

struct Linear {
  Linear(const TubeDistance& tube, const Vec3& p) {
    PointBlock block;
    double deviation[kLanes], rows[K][kMostRows];
    block.size = 1;
    for (int l = 0; l < kLanes; ++l) block.x[l] = p.x, block.y[l] = p.y, block.z[l] = p.z;
    tube.Gradients(block, deviation, rows);
    value = deviation[0];
    for (int k = 0; k < K; ++k) gradient[k] = rows[k][0];
  }
  double value;
  double gradient[K];
};

// Circles from nearly straight to small ones, points on all sides, steps of five unknowns: two tilts follow one another
// in any order, and a step that widens a closed circle is bent on purpose.
TEST(TubeDistance, KnowsItsDerivatives) {
  Random random(81);
  const auto any = [&](double reach) {
    return Vec3{random.Uniform(-reach, reach), random.Uniform(-reach, reach), random.Uniform(-reach, reach)};
  };
  for (int k = 0; k < 2000; ++k) {
    SCOPED_TRACE(k);
    const double bend = k % 10 == 0 ? 0.0 : std::pow(10.0, random.Uniform(-6.0, 0.5));
    const TubeDistance tube{AxisFrame::Along(any(2.0), Unit(any(1.0))), bend, 3.0};
    const Vec3 p = any(2.0), local = tube.frame.Local(p);
    const double away = std::hypot(1.0 + bend * local.x, bend * local.y);
    const Linear here(tube, p);
    if (away < 0.2 || here.value < 0.2) continue;
    EXPECT_TRUE(bend < 1e-3 || std::fabs(here.value - std::hypot((away - 1.0) / bend, local.z)) < 1e-12);
    double step[K], back[K], first = 0.0, second = 0.0, curvature[K][K] = {};
    tube.AddCurvature(p, 1.0, curvature);
    for (int i = 0; i < K; ++i) {
      const bool closed = i > 3 && bend * tube.half >= 1.0;
      step[i] = i == 2 + k % 2 || closed ? 0.0 : 1e-4 * random.Uniform(-1.0, 1.0);
      back[i] = -step[i];
    }
    for (int i = 0; i < K; ++i) first += here.gradient[i] * step[i];
    for (int i = 0; i < K; ++i)
      for (int j = 0; j < K; ++j) second += step[i] * curvature[i][j] * step[j];
    const double after = Linear(tube.Moved(step), p).value, before = Linear(tube.Moved(back), p).value;
    EXPECT_NEAR(0.5 * (after - before), first, 1e-10);
    EXPECT_NEAR(after - 2.0 * here.value + before, second, 1e-11);
  }
}

// Tubes long and short, thick and thin, rings down to noise at the rounding level, boxes, rods, caps.
CNuPointArray Part(Random& random, int kind, int n) {
  const double part = random.Uniform(0.0, 1.0);
  switch (kind) {
    case 0:
      return TorusCloud(random, n, 40.0, 10.0, 240.0, 240.0, 0.025);
    case 1:
      return TorusCloud(random, n, 40.0, 36.0 * part, 360.0, 360.0, 0.025);
    case 2:
      return TorusCloud(random, n, 40.0, 3.0, 10.0 + 80.0 * part, 360.0, 0.01);
    case 3:
      return CircleCloud(random, n, 40.0, 5.0 + 355.0 * part, std::pow(10.0, random.Uniform(-12, 0)), 1e-9);
    case 4:
      return BoxCloud(random, n, 3.0, 2.0, 2.0 * part);
    case 5:
      return LineCloud(random, n, 100.0, std::pow(10.0, -4.0 * part));
    case 6:
      return SphereCloud(random, n, 1.0, 20.0 + 160.0 * part, 0.01);
    default:
      return TwoArcsCloud(random, n, 1.0, std::pow(10.0, -1.0 - 6.0 * part));
  }
}

double LargestDistance(PointBlocks& points, const TubeDistance& tube) {
  double most = 0.0;
  points.ForEach([&](const PointBlock& block) {
    double deviation[kBlockPoints], smallest, largest;
    tube.Deviations(block, deviation, smallest, largest);
    most = std::max(most, largest);
  });
  return most;
}

// All points are inside, the contacts on the surface, their gradients balance, and no parameter can be changed, alone
// or with others, to make the tube thinner.
TEST(SmallestTube, IsHeldByItsContacts) {
  Random random(82);
  for (int k = 0; k < 900; ++k) {
    SCOPED_TRACE(k);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    CNuPointArray part = RandomMotion(random, 0.0)(Part(random, k % 8, 4 + random.Below(k % 5 ? 60 : 900)));
    for (int i = 0; i < part.GetSize(); ++i) part[i] = part[i] * size;
    PointBlocks blocks(ViewOf(part), MiddleOf(ViewOf(part)));
    const MinimaxSolution<TubeDistance> found = SmallestTube(blocks, TubeStarts::many, 20000).solution;
    ASSERT_EQ(found.end, MinimaxEnd::converged);
    const double rounding = 32.0 * kEps * found.model.half;
    EXPECT_NEAR(LargestDistance(blocks, found.model), found.value, rounding);
    if (found.value < 4.0 * rounding) continue;
    double balance[K] = {}, total = 0.0;
    for (int j = 0; j < found.contacts; ++j) {
      const Linear contact(found.model, found.contact[j]);
      EXPECT_NEAR(contact.value, found.value, rounding);
      EXPECT_GE(found.multiplier[j], 0.0);
      total += found.multiplier[j];
      for (int i = 0; i < K; ++i) balance[i] += found.multiplier[j] * contact.gradient[i];
    }
    EXPECT_NEAR(total, 1.0, 1e-12);
    for (const double b : balance) EXPECT_NEAR(b, 0.0, 1e-9 + 4.0 * rounding / found.value);
    // Not farther: a tenth of the tube away some caps have another optimum, beyond a rise.
    for (int trial = 0; trial < 60; ++trial) {
      const double length = found.value * std::pow(10.0, -2.0 - trial % 5);
      double step[K];
      for (int i = 0; i < K; ++i) step[i] = trial < 2 * K ? (trial / 2 == i) : random.Uniform(-1.0, 1.0);
      for (double& s : step) s *= trial % 2 == 0 ? length : -length;
      EXPECT_GE(LargestDistance(blocks, found.model.Moved(step)), found.value - rounding);
    }
  }
}

// Shapeless sets have many optima: random circles seldom lead to a better one.
TEST(SmallestTube, IsSeldomThinnerElsewhere) {
  Random random(83);
  int missed = 0;
  for (int k = 0; k < 120; ++k) {
    CNuPointArray cloud = k % 2 ? BoxCloud(random, 200, 3.0, 2.0, 1.5) : SphereCloud(random, 200, 1.0, 180.0, 0.1);
    const double flat = random.Uniform(0.3, 1.0), narrow = random.Uniform(0.3, 1.0);
    for (int i = 0; i < 200; ++i) cloud[i] = CNuPoint(cloud[i].x(), narrow * cloud[i].y(), flat * cloud[i].z());
    PointBlocks blocks(ViewOf(cloud), MiddleOf(ViewOf(cloud)));
    blocks.Keep();
    const MinimaxSolution<TubeDistance> found = SmallestTube(blocks, TubeStarts::many, 1000).solution;
    ASSERT_EQ(found.end, MinimaxEnd::converged);
    Minimax<TubeDistance> minimax(blocks, MinimaxSide::outer, 1e-14, 1000);
    minimax.Solve(found.model);
    bool better = false;
    for (int start = 0; start < 12; ++start) {
      const CNuPoint p = RandomPoint(random, 1.0), axis = RandomPoint(random, 1.0);
      const AxisFrame frame = AxisFrame::Along({p.x(), p.y(), p.z()}, Unit({axis.x(), axis.y(), axis.z()}));
      const auto other = minimax.Improve({frame, random.Uniform(0.3, 3.0), 4.0}, found.value * (1.0 - 1e-9));
      better = better || (other.end == MinimaxEnd::converged && other.value < found.value * (1.0 - 1e-6));
    }
    missed += better;
  }
  EXPECT_LE(missed, 1);
}

}  // namespace
