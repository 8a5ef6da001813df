#include "nu/engine/minimax/strip2.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

struct Pair {
  double x, y;
};
using Set = std::vector<Pair>;
using Long = long double;

Strip2 StripOf(const Set& set) {
  return NarrowestStrip({set.empty() ? nullptr : &set[0].x, sizeof(Pair), set.size()});
}

// Extent of the set across the direction p q, times its length.
Long ExtentAcross(const Set& set, Long dx, Long dy) {
  Long least = std::numeric_limits<Long>::infinity(), most = -least;
  for (const Pair& r : set) {
    const Long height = dx * (Long{r.y} - Long{set[0].y}) - dy * (Long{r.x} - Long{set[0].x});
    least = std::min(least, height), most = std::max(most, height);
  }
  return most - least;
}

// Every pair of points gives a direction.
double BruteWidth(const Set& set) {
  Long best = std::numeric_limits<Long>::infinity();
  for (const Pair& p : set) {
    for (const Pair& q : set) {
      const Long dx = Long{q.x} - Long{p.x}, dy = Long{q.y} - Long{p.y};
      if (dx != 0 || dy != 0) best = std::min(best, ExtentAcross(set, dx, dy) / std::sqrt(dx * dx + dy * dy));
    }
  }
  return static_cast<double>(best);
}

Set RandomSet(Random& random, int kind) {
  constexpr Pair onCircle[] = {{7, 1}, {5, 5}, {1, 7}, {-1, 7}, {-5, 5}, {-7, 1}};
  Set set;
  const int n = 3 + random.Below(10);
  const double dx = random.Uniform(-1, 1), dy = random.Uniform(-1, 1);
  for (int i = 0; i < n; ++i) {
    const double u = random.Uniform(-1, 1), v = random.Uniform(-1, 1);
    const Pair even{u, v};
    const Pair lattice{static_cast<double>(random.Below(5)), static_cast<double>(random.Below(5))};
    const Pair circle = onCircle[random.Below(6)];
    const double sign = random.Below(2) == 0 ? 1.0 : -1.0;
    switch (kind) {
      case 0:
        set.push_back(even);
        break;
      case 1:
        set.push_back(lattice);
        break;
      case 2:
        set.push_back({sign * circle.x, sign * circle.y});
        break;
      case 3:
        set.push_back(i == 0 ? lattice : Pair{u, u});
        break;
      case 4:
        set.push_back(i > 2 && random.Below(2) == 0 ? set[static_cast<std::size_t>(i) / 2] : even);
        break;
      case 5:
        set.push_back({1e4 + 50 * u * dx - 1e-4 * v * dy, -1e4 + 50 * u * dy + 1e-4 * v * dx});
        break;
      case 6:
        set.push_back({1e300 * u, 1e300 * v});
        break;
      default:
        set.push_back({0x1p-1000 * lattice.x, 0x1p-1000 * lattice.y});
        break;
    }
  }
  return set;
}

void CheckContacts(const Set& set, const Strip2& s) {
  const Pair& p = set[static_cast<std::size_t>(s.edge[0])];
  const Pair& q = set[static_cast<std::size_t>(s.edge[1])];
  const Pair& a = set[static_cast<std::size_t>(s.apex)];
  double reach = 0.0;
  for (const Pair& r : set) reach = std::max({reach, std::fabs(r.x), std::fabs(r.y)});
  const double rounding = 4 * std::numeric_limits<double>::epsilon() * reach;
  const auto height = [&](const Pair& r) {
    return (r.x - s.middle[0]) * s.normal[0] + (r.y - s.middle[1]) * s.normal[1];
  };
  for (const Pair& r : set) EXPECT_LE(std::fabs(height(r)), 0.5 * s.width + rounding);
  EXPECT_NEAR(height(p), -0.5 * s.width, rounding);
  EXPECT_NEAR(height(q), -0.5 * s.width, rounding);
  EXPECT_NEAR(height(a), 0.5 * s.width, rounding);
  EXPECT_NEAR(s.share[0] + s.share[1], 1.0, 1e-15);
  EXPECT_GE(std::min(s.share[0], s.share[1]), 0.0);
  // No way to turn the strip makes it narrower: the edge pushes against the vertex.
  EXPECT_NEAR(s.share[0] * p.x + s.share[1] * q.x, a.x - s.width * s.normal[0], rounding);
  EXPECT_NEAR(s.share[0] * p.y + s.share[1] * q.y, a.y - s.width * s.normal[1], rounding);
}

TEST(NarrowestStrip, AgreesWithAllPairs) {
  Random random(41);
  for (int k = 0; k < 8000; ++k) {
    SCOPED_TRACE(k);
    Set set = RandomSet(random, k % 8);
    const Strip2 strip = StripOf(set);
    const double truth = BruteWidth(set);
    if (std::isinf(truth)) {  // one place, several times
      EXPECT_EQ(strip.width, 0.0);
      continue;
    }
    EXPECT_NEAR(strip.width, truth, 1e-12 * truth);
    CheckContacts(set, strip);
    for (std::size_t i = set.size() - 1; i > 0; --i) {
      std::swap(set[i], set[static_cast<std::size_t>(random.Below(static_cast<int>(i) + 1))]);
    }
    const Strip2 other = StripOf(set);
    for (int c = 0; c < 2; ++c) {
      EXPECT_EQ(other.normal[c], strip.normal[c]);
      EXPECT_EQ(other.middle[c], strip.middle[c]);
    }
    EXPECT_EQ(other.width, strip.width);
  }
}

TEST(NarrowestStrip, TakesAnyInput) {
  EXPECT_EQ(StripOf({}).apex, -1);
  EXPECT_EQ(StripOf({{kNaN, 1}, {2, kNaN}}).apex, -1);
  const Strip2 one = StripOf({{kNaN, 1}, {3, 4}, {3, 4}});
  EXPECT_EQ(one.edge[1], 1);
  EXPECT_EQ(one.middle[1], 4.0);
  const Strip2 line = StripOf({{0, 1}, {3, 4}, {2, 3}});
  EXPECT_EQ(line.width, 0.0);
  EXPECT_NEAR(line.normal[0] + line.normal[1], 0.0, 1e-15);
  // Equal strips: that of the edge which comes first from the least x.
  const Strip2 square = StripOf({{1, 1}, {0, 1}, {1, 0}, {0, 0}});
  EXPECT_EQ(square.edge[0], 3);
  EXPECT_EQ(square.edge[1], 2);
}

// Regular polygons: the vertex across goes all the way round, and the width is known.
TEST(NarrowestStrip, RunsRoundLargeHulls) {
  for (const int n : {3, 5, 8, 999, 100000}) {
    Set set;
    for (int i = 0; i < n; ++i) {
      const double t = 360.0 * kDegree * i / n;
      set.push_back({1e4 + std::cos(t), std::sin(t)});
    }
    const double step = 180.0 * kDegree / n;
    const double width = n % 2 == 0 ? 2 * std::cos(step) : 1 + std::cos(step);
    EXPECT_NEAR(StripOf(set).width, width, 1e-11) << n;
  }
}

}  // namespace
