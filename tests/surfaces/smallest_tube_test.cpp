#include "nu/surfaces/internal/smallest_tube.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "nu/geometry/internal/fit_guards.h"
#include "support/clouds.h"

// What proves a minimum torus: derivatives that are those of the distance, and contacts that hold it.
namespace {

using namespace nu::internal;
using nu::test::Random;

constexpr int K = TubeDistance::kUnknowns;
constexpr double kEps = std::numeric_limits<double>::epsilon();

double DistanceOf(const TubeDistance& tube, const Vec3& p) {
  PointBlock block;
  double deviation[kLanes], gradient[K][kMostRows];
  block.size = 1;
  for (int l = 0; l < kLanes; ++l) block.x[l] = p.x, block.y[l] = p.y, block.z[l] = p.z;
  tube.Gradients(block, deviation, gradient);
  return deviation[0];
}

// Circles from nearly straight to small ones, points on all sides.
TEST(TubeDistance, KnowsItsDerivatives) {
  Random random(81);
  const auto any = [&](double reach) {
    return Vec3{random.Uniform(-reach, reach), random.Uniform(-reach, reach), random.Uniform(-reach, reach)};
  };
  for (int k = 0; k < 1000; ++k) {
    SCOPED_TRACE(k);
    const double bend = k % 10 == 0 ? 0.0 : std::pow(10.0, random.Uniform(-6.0, 0.5));
    const TubeDistance tube{AxisFrame::Along(any(2.0), Unit(any(1.0))), bend, 3.0};
    const Vec3 p = any(2.0), local = tube.frame.Local(p);
    const double away = std::hypot(1.0 + bend * local.x, bend * local.y);
    const double distance = DistanceOf(tube, p);
    if (away < 0.2 || distance < 0.2) continue;
    if (bend > 1e-3) {
      EXPECT_NEAR(distance, std::hypot((away - 1.0) / bend, local.z), 1e-12);
    }

    PointBlock block;
    block.size = 1;
    for (int l = 0; l < kLanes; ++l) block.x[l] = p.x, block.y[l] = p.y, block.z[l] = p.z;
    double deviation[kLanes], gradient[K][kMostRows], second[K][K] = {};
    tube.Gradients(block, deviation, gradient);
    tube.AddCurvature(p, 1.0, second);
    const auto after = [&](int i, double a, int j, double b) {
      double step[K] = {};
      step[i] += a;
      step[j] += b;
      return DistanceOf(tube.Moved(step), p);
    };
    for (int i = 0; i < K; ++i) {
      EXPECT_NEAR((after(i, 1e-6, i, 0.0) - after(i, -1e-6, i, 0.0)) / 2e-6, gradient[i][0], 1e-5);
      for (int j = 0; j <= i; ++j) {
        EXPECT_EQ(second[i][j], second[j][i]);
        // A step that widens a closed circle is bent on purpose, and two tilts follow one another.
        if ((i > 3 && bend * 3.0 >= 1.0) || (i == 3 && j == 2)) continue;
        constexpr double h = 1e-4;
        const double difference = (after(i, h, j, h) - after(i, h, j, -h) - after(i, -h, j, h) + after(i, -h, j, -h));
        EXPECT_NEAR(difference / (4.0 * h * h), second[i][j], 1e-4 * (1.0 + std::fabs(second[i][j])));
      }
    }
  }
}

CNuPointArray Part(Random& random, int kind, int n) {
  switch (kind) {
    case 0:
      return nu::test::TorusCloud(random, n, 40.0, 10.0, 240.0, 240.0, 0.025);
    case 1:
      return nu::test::TorusCloud(random, n, 40.0, random.Uniform(1.0, 36.0), 360.0, 360.0, 0.025);
    case 2:
      return nu::test::TorusCloud(random, n, 40.0, 3.0, random.Uniform(10.0, 90.0), 360.0, 0.01);
    case 3:  // a ring in space, down to noise at the rounding level
      return nu::test::CircleCloud(random, n, 40.0, random.Uniform(5.0, 360.0), std::pow(10.0, random.Uniform(-12, 0)),
                                   1e-9);
    case 4:
      return nu::test::BoxCloud(random, n, 3.0, 2.0, random.Uniform(0.0, 2.0));
    case 5:
      return nu::test::LineCloud(random, n, 100.0, std::pow(10.0, random.Uniform(-4.0, 0.0)));
    case 6:
      return nu::test::SphereCloud(random, n, 1.0, random.Uniform(20.0, 180.0), 0.01);
    default: {  // a helix
      const double turns = random.Uniform(0.2, 4.0);
      CNuPointArray points(n);
      for (int i = 0; i < n; ++i) {
        const double t = 6.2831853 * turns * random.Uniform(0.0, 1.0);
        points.Add({std::cos(t), std::sin(t), 0.1 * t});
      }
      return points;
    }
  }
}

// All points are inside, the contacts on the surface, and their gradients balance.
void ExpectHeld(PointBlocks& points, const MinimaxSolution<TubeDistance>& found, double rounding) {
  double most = 0.0, balance[K] = {}, total = 0.0;
  points.ForEach([&](const PointBlock& block) {
    double deviation[kBlockPoints], smallest, largest;
    found.model.Deviations(block, deviation, smallest, largest);
    most = std::max(most, largest);
  });
  EXPECT_NEAR(most, found.value, rounding);
  for (int j = 0; j < found.contacts; ++j) {
    PointBlock block;
    double deviation[kLanes], gradient[K][kMostRows];
    block.size = 1;
    const Vec3& p = found.contact[j];
    for (int l = 0; l < kLanes; ++l) block.x[l] = p.x, block.y[l] = p.y, block.z[l] = p.z;
    found.model.Gradients(block, deviation, gradient);
    EXPECT_NEAR(deviation[0], found.value, rounding);
    EXPECT_GE(found.multiplier[j], 0.0);
    total += found.multiplier[j];
    for (int k = 0; k < K; ++k) balance[k] += found.multiplier[j] * gradient[k][0];
  }
  EXPECT_NEAR(total, 1.0, 1e-12);
  for (int k = 0; k < K; ++k) EXPECT_NEAR(balance[k], 0.0, 1e-9 + rounding / found.value) << k;
}

// No parameter can be changed alone, or together with others, to make the tube thinner.
void ExpectNoBetterNeighbour(Random& random, PointBlocks& points, const MinimaxSolution<TubeDistance>& found,
                             double rounding) {
  for (int trial = 0; trial < 60; ++trial) {
    double step[K] = {};
    const double length = found.value * std::pow(10.0, -1.0 - trial % 5);
    if (trial < 2 * K) {
      step[trial / 2] = trial % 2 == 0 ? length : -length;
    } else {
      for (double& s : step) s = length * random.Uniform(-1.0, 1.0);
    }
    double most = 0.0;
    points.ForEach([&](const PointBlock& block) {
      double deviation[kBlockPoints], smallest, largest;
      found.model.Moved(step).Deviations(block, deviation, smallest, largest);
      most = std::max(most, largest);
    });
    EXPECT_GE(most, found.value - rounding) << trial;
  }
}

TEST(SmallestTube, IsHeldByItsContacts) {
  Random random(82);
  for (int k = 0; k < 1200; ++k) {
    SCOPED_TRACE(k);
    const double size = std::pow(10.0, random.Uniform(-3.0, 5.0));
    CNuPointArray part =
        nu::test::RandomMotion(random, 0.0)(Part(random, k % 8, 4 + random.Below(k % 5 == 0 ? 900 : 60)));
    for (int i = 0; i < part.GetSize(); ++i) part[i] = part[i] * size;
    PointBlocks blocks(ViewOf(part), MiddleOf(part));
    const Tube tube = SmallestTube(blocks, TubeStarts::many, 20000);
    ASSERT_EQ(tube.solution.end, MinimaxEnd::converged);
    const double rounding = 32.0 * kEps * tube.solution.model.half;
    if (tube.solution.value < 4.0 * rounding) continue;
    ExpectHeld(blocks, tube.solution, rounding);
    ExpectNoBetterNeighbour(random, blocks, tube.solution, rounding);
  }
}

}  // namespace
