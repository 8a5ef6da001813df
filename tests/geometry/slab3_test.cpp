#include "nu/engine/minimax/slab3.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <vector>

#include "support/clouds.h"

namespace {

using namespace nu::internal;
using namespace nu::test;

struct Xyz {
  double x, y, z;
};
using Set = std::vector<Xyz>;
using Long = long double;

struct LongVec {
  Long x, y, z;
};
LongVec Way(const Xyz& p, const Xyz& q) {
  return {Long{q.x} - Long{p.x}, Long{q.y} - Long{p.y}, Long{q.z} - Long{p.z}};
}
LongVec Cross(const LongVec& a, const LongVec& b) {
  return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}
Long Dot(const LongVec& a, const LongVec& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

Slab3 SlabOf(const Set& set, const Vec3& origin) {
  return NarrowestSlab({set.empty() ? nullptr : &set[0].x, sizeof(Xyz), set.size()}, origin);
}

Long ExtentAlong(const Set& set, const LongVec& n) {
  Long least = 0, most = 0;
  for (const Xyz& p : set) {
    const Long height = Dot(n, Way(set[0], p));
    least = std::min(least, height), most = std::max(most, height);
  }
  return most - least;
}

// Every two pairs of points give a direction; two pairs with a point in common stand for three points.
double BruteWidth(const Set& set) {
  const std::size_t count = set.size();
  std::vector<LongVec> ways;
  for (std::size_t i = 0; i < count; ++i)
    for (std::size_t j = 0; j < i; ++j) ways.push_back(Way(set[i], set[j]));
  Long best = std::numeric_limits<Long>::infinity();
  for (std::size_t i = 0; i < ways.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const LongVec n = Cross(ways[i], ways[j]);
      const Long square = Dot(n, n);
      if (square <= 1e-30L * Dot(ways[i], ways[i]) * Dot(ways[j], ways[j])) continue;
      best = std::min(best, ExtentAlong(set, n) / std::sqrt(square));
    }
  }
  return static_cast<double>(best);
}

Set RandomSet(Random& random, int kind, int n) {
  constexpr double onSphere[] = {1, 2, 2};
  constexpr int kLattice = 4;
  const Motion motion = RandomMotion(random, 1e4);
  const auto moved = [&](double x, double y, double z) {
    const CNuPoint p = motion(CNuPoint(x, y, z));
    return Xyz{p.x(), p.y(), p.z()};
  };
  Set set;
  for (int i = 0; i < n; ++i) {
    const double u = random.Uniform(-1, 1), v = random.Uniform(-1, 1), w = random.Uniform(-1, 1);
    const Xyz even{u, v, w};
    const Xyz lattice{1.0 * random.Below(kLattice), 1.0 * random.Below(kLattice), 1.0 * random.Below(kLattice)};
    const int turn = random.Below(3), signs = random.Below(8);
    const auto coordinate = [&](int k) { return onSphere[(turn + k) % 3] * ((signs >> k) % 2 == 0 ? 1.0 : -1.0); };
    switch (kind) {
      case 0:
        set.push_back(even);
        break;
      case 1:
        set.push_back(lattice);
        break;
      case 2:
        set.push_back({coordinate(0), coordinate(1), coordinate(2)});
        break;
      case 3:
        set.push_back(i == 0 ? even : Xyz{lattice.x, lattice.y, lattice.x + 2 * lattice.y});
        break;
      case 4:
        set.push_back(i > 3 && random.Below(2) == 0 ? set[static_cast<std::size_t>(i) / 2] : even);
        break;
      case 5:
        set.push_back(moved(50 * u, 50 * v, 1e-2 * w));
        break;
      case 6:
        set.push_back({1e300 * u, 1e300 * v, 1e300 * w});
        break;
      case 7:
        set.push_back({0x1p-1000 * lattice.x, 0x1p-1000 * lattice.y, 0x1p-1000 * lattice.z});
        break;
      default:
        set.push_back({10 * u, 10 * v, w > 0.0 ? 1.0 : 0.0});
        break;
    }
  }
  return set;
}

void CheckContacts(const Set& set, const Slab3& s, const Xyz& origin) {
  double reach = 0.0;
  for (const Xyz& p : set) reach = std::max({reach, std::fabs(p.x), std::fabs(p.y), std::fabs(p.z)});
  const double rounding = 8 * std::numeric_limits<double>::epsilon() * reach;
  const auto from = [&](const Xyz& p) { return Vec3{p.x - origin.x, p.y - origin.y, p.z - origin.z}; };
  const auto height = [&](const Xyz& p) { return Dot(from(p), s.normal) - s.height; };
  for (const Xyz& p : set) EXPECT_LE(std::fabs(height(p)), 0.5 * s.width + rounding);
  if (s.above == 0) return;
  Vec3 foot[2];
  double sum[2] = {};
  for (int k = 0; k < 4; ++k) {
    const bool isAbove = k < s.above;
    const Xyz& p = set[static_cast<std::size_t>(s.contact[k])];
    EXPECT_NEAR(height(p), isAbove ? 0.5 * s.width : -0.5 * s.width, rounding);
    EXPECT_GE(s.share[k], 0.0);
    foot[isAbove] = foot[isAbove] + s.share[k] * from(p);
    sum[isAbove] += s.share[k];
  }
  EXPECT_NEAR(sum[0], 1.0, 1e-15);
  EXPECT_NEAR(sum[1], 1.0, 1e-15);
  // No turn makes the slab narrower: the contacts push against each other.
  const Vec3 off = foot[1] - foot[0] - s.width * s.normal;
  EXPECT_LE(std::max({std::fabs(off.x), std::fabs(off.y), std::fabs(off.z)}), rounding + 1e-12 * s.width);
}

TEST(NarrowestSlab, AgreesWithAllTriplesAndPairsOfPairs) {
  Random random(51);
  for (int k = 0; k < 1800; ++k) {
    SCOPED_TRACE(k);
    const int kind = k % 9;
    Set set = RandomSet(random, kind, 3 + random.Below(10));
    const Xyz o = set[0];
    const Slab3 slab = SlabOf(set, {o.x, o.y, o.z});
    const double truth = BruteWidth(set);
    if (std::isinf(truth)) {  // one line
      EXPECT_EQ(slab.width, 0.0);
      continue;
    }
    // Sets of three are flat, and so are lattices now and then: 0 but for the rounding of the brute force.
    const double size = kind == 6 ? 1e300 : kind == 7 ? 0.0 : 1e2;
    EXPECT_NEAR(slab.width, truth, 1e-12 * truth + 1e-18 * size);
    // A flat side of a lattice has many contacts, of which the result names four.
    if (kind == 0 || kind == 4 || kind == 5 || kind == 6) CheckContacts(set, slab, o);
    for (std::size_t i = set.size() - 1; i > 0; --i) {
      std::swap(set[i], set[static_cast<std::size_t>(random.Below(static_cast<int>(i) + 1))]);
    }
    const Slab3 other = SlabOf(set, {o.x, o.y, o.z});
    EXPECT_NEAR(Dot(other.normal, slab.normal), 1.0, 1e-15);
    EXPECT_NEAR(other.width, slab.width, 1e-15 * slab.width);
  }
}

TEST(NarrowestSlab, AgreesForWorkingSets) {
  Random random(52);
  for (const int kind : {1, 5, 8}) {
    SCOPED_TRACE(kind);
    const Set set = RandomSet(random, kind, 43);
    const double truth = BruteWidth(set);
    const Slab3 slab = SlabOf(set, {set[0].x, set[0].y, set[0].z});
    EXPECT_NEAR(slab.width, truth, 1e-12 * truth);
  }
}

TEST(NarrowestSlab, TakesAnyInput) {
  EXPECT_FALSE(SlabOf({{0, 0, 0}, {1, kNaN, 0}}, {}).found);
  EXPECT_FALSE(SlabOf({{0, 0, 0}, {1, -1.0 / 0.0, 0}}, {}).found);
  EXPECT_EQ(SlabOf({{3, 4, 5}, {3, 4, 5}}, {}).height, 5.0);
  const Slab3 line = SlabOf({{0, 0, 0}, {1, 1, 1}, {4, 4, 4}}, {});
  EXPECT_NEAR(line.normal.x + line.normal.y + line.normal.z, 0.0, 1e-15);
  EXPECT_EQ(SlabOf({{0, 0, 1}, {0, 0, 4}}, {}).normal.x, 1.0);
  // Coordinates of all sizes: what is too small for the largest does not count.
  const Slab3 mixed = SlabOf({{1e300, 0, 0}, {0, 1e-300, 0}, {0, 0, 1}, {-1, 5e-324, 1e-200}, {0, 2, 0}}, {});
  EXPECT_TRUE(mixed.found);
  EXPECT_GE(mixed.width, 0.0);
  // Equal slabs: the normal nearest to z.
  Set cube;
  for (int i = 0; i < 64; ++i) cube.push_back({1.0 * (i % 4), 1.0 * (i / 4 % 4), 1.0 * (i / 16)});
  const Slab3 slab = SlabOf(cube, {});
  EXPECT_EQ(slab.normal.z, 1.0);
  EXPECT_EQ(slab.width, 3.0);
  EXPECT_EQ(slab.height, 1.5);
}

// Sets with about the same width in very many directions, with all points on the hull.
TEST(NarrowestSlab, EndsWhereManyDirectionsCompete) {
  Random random(53);
  const int n = 4000;
  Set sphere, bar, arcs, helix, saddle;
  for (int i = 0; i < n; ++i) {
    const double t = random.Uniform(0, 360) * kDegree, c = random.Uniform(-1, 1);
    const double s = std::sqrt(1 - c * c);
    sphere.push_back({s * std::cos(t), s * std::sin(t), c});
    bar.push_back({std::cos(t), std::sin(t), 20 * c});
    const double a = random.Uniform(-1, 1);
    arcs.push_back(i % 2 == 0 ? Xyz{std::sin(a), 0, std::cos(a)} : Xyz{0, std::sin(a), -std::cos(a)});
  }
  // Either end of a helix is a neighbour of very many corners, and round a closed curve the ways across are long.
  for (int i = 0; i < 5 * n; ++i) {
    const double t = random.Uniform(0, 360) * kDegree;
    helix.push_back({std::cos(3 * t), std::sin(3 * t), t});
    saddle.push_back({std::cos(t), std::sin(t), std::cos(2 * t)});
  }
  CheckContacts(helix, SlabOf(helix, {}), {0, 0, 0});
  CheckContacts(saddle, SlabOf(saddle, {}), {0, 0, 0});
  // Below the diameter by about the depth of the largest gap between the points.
  EXPECT_NEAR(SlabOf(sphere, {}).width, 2.0 - 20.0 / n, 20.0 / n);
  EXPECT_NEAR(SlabOf(bar, {}).width, 2.0 - 1e-4, 1e-4);
  // Across the two arcs, which end at the angle 1, the width is least half way between their planes.
  EXPECT_NEAR(SlabOf(arcs, {}).width, 2 * std::sin(1.0) * std::sqrt(0.5), 1e-3);
}

}  // namespace
