#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "nu/engine/hulls/grid2.h"
#include "nu/engine/minimax/annulus_overlay.h"
#include "support/clouds.h"

namespace {

using namespace nu::engine::hulls;
using namespace nu::engine::minimax;
using namespace nu::test;
using Long = long double;

Long WidthAround(Vec2 centre, const std::vector<Vec2>& points) {
  Long nearest = std::numeric_limits<Long>::infinity(), farthest = 0;
  for (const Vec2& p : points) {
    const Long x = Long{p.x} - centre.x, y = Long{p.y} - centre.y, distance = std::sqrt(x * x + y * y);
    nearest = std::min(nearest, distance), farthest = std::max(farthest, distance);
  }
  return farthest - nearest;
}

// Two flat caps that face each other, mirrored but for a step or two, between two ends: chords of the caps are parallel
// within the rounding of their angles, and which corner is the farthest from a centre far away hangs on it.
TEST(NarrowestGridAnnulus, HoldsItsPointsBetweenParallelChords) {
  Random random(601);
  int found = 0;
  for (int run = 0; run < 3000; ++run) {
    std::vector<Vec2> points;
    const auto add = [&](double x, double y) {
      for (const double side : {1.0, -1.0}) {
        const Vec2 onGrid = GridFrame::Rounded(side * kGridReach * Vec2{x, y});
        points.push_back(onGrid + Vec2{random.Below(3) - 1.0, random.Below(3) - 1.0});
      }
    };
    const int n = 3 + random.Below(12);
    const double half = std::pow(10.0, -1.0 - run % 6 * 0.7), rise = random.Uniform(0.1, 0.36);
    const double curvature = 1.0 / random.Uniform(0.02, 6.0);
    for (int i = 1 - n; i < n; ++i) add(half * i / n, rise - curvature * half * half * i * i / (n * n));
    add(0.99, 0.0);
    SortOnGrid(points);
    const GridAnnulus annulus = NarrowestGridAnnulus(points, std::numeric_limits<double>::infinity());
    const double far = std::sqrt(Dot(annulus.centre, annulus.centre));
    if (!annulus.found || far > 0x1p24 * kGridReach) continue;
    ++found;
    ASSERT_NEAR(static_cast<double>(WidthAround(annulus.centre, points)), annulus.width, 16.0 + 16.0 * kEps * far)
        << run;
  }
  EXPECT_GT(found, 100);
}

}  // namespace
