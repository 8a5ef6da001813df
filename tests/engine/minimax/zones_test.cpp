#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <vector>

#include "nu/engine/minimax/empty_circle2.h"
#include "nu/engine/minimax/far_squares.h"
#include "nu/engine/minimax/slab3.h"
#include "nu/engine/minimax/slab_cells.h"
#include "nu/engine/minimax/strip2.h"
#include "support/clouds.h"

// The narrowest strip of points in the plane and the narrowest slab of points in space.
namespace {

using namespace nu::internal;
using namespace nu::test;

using Long = long double;
template<int N>
using Place = std::array<double, N>;
template<int N>
using Set = std::vector<Place<N>>;
template<int N>
using Way = std::array<Long, N>;

PointView ViewOf(const auto& set) {
  return {set.empty() ? nullptr : set[0].data(), sizeof set[0], set.size()};
}
Strip2 StripOf(const Set<2>& set) {
  return NarrowestStrip(ViewOf(set));
}
Slab3 SlabOf(const Set<3>& set, const Vec3& origin = {}) {
  return NarrowestSlab(ViewOf(set), origin);
}

template<int N>
Way<N> Between(const Place<N>& p, const Place<N>& q) {
  Way<N> way;
  for (int k = 0; k < N; ++k) way[k] = Long{q[k]} - Long{p[k]};
  return way;
}
template<int N>
Long Dot(const Way<N>& a, const Way<N>& b) {
  Long sum = 0;
  for (int k = 0; k < N; ++k) sum += a[k] * b[k];
  return sum;
}
Way<3> Cross(const Way<3>& a, const Way<3>& b) {
  return {a[1] * b[2] - a[2] * b[1], a[2] * b[0] - a[0] * b[2], a[0] * b[1] - a[1] * b[0]};
}

// Extent along n; not finite where n is no direction.
template<int N>
Long WidthAlong(const Set<N>& set, const Way<N>& n) {
  Long least = 0, most = 0;
  for (const Place<N>& p : set) {
    const Long height = Dot<N>(n, Between<N>(set[0], p));
    least = std::min(least, height), most = std::max(most, height);
  }
  return (most - least) / std::sqrt(Dot<N>(n, n));
}

// In the plane every pair of points gives a direction, in space every two pairs; two pairs with a point in common stand
// for three points.
template<int N>
double BruteWidth(const Set<N>& set) {
  std::vector<Way<N>> ways;
  for (std::size_t i = 0; i < set.size(); ++i)
    for (std::size_t j = 0; j < i; ++j) ways.push_back(Between<N>(set[i], set[j]));
  Long best = std::numeric_limits<Long>::infinity();
  for (std::size_t i = 0; i < ways.size(); ++i) {
    if constexpr (N == 2) {
      if (Dot<2>(ways[i], ways[i]) > 0) best = std::min(best, WidthAlong<2>(set, {-ways[i][1], ways[i][0]}));
    } else {
      for (std::size_t j = 0; j < i; ++j) {
        const Way<3> n = Cross(ways[i], ways[j]);
        if (Dot<3>(n, n) <= 1e-30L * Dot<3>(ways[i], ways[i]) * Dot<3>(ways[j], ways[j])) continue;
        best = std::min(best, WidthAlong<3>(set, n));
      }
    }
  }
  return static_cast<double>(best);
}

// Scattered, on a lattice, on a circle or sphere, on a line or plane but for one, with copies, thin and far away, huge,
// tiny, and in two layers.
constexpr int kKinds = 9;
template<int N>
Set<N> RandomSet(Random& random, int kind, int n) {
  constexpr double whole[][3] = {{7, 1, 0}, {1, 2, 2}};  // coordinates on a circle and on a sphere
  const Motion motion = RandomMotion(random, 1e4);
  Set<N> set;
  for (int i = 0; i < n; ++i) {
    Place<N> even, lattice, round, placed;
    const int turn = random.Below(N);
    for (int k = 0; k < N; ++k) {
      even[k] = random.Uniform(-1, 1);
      lattice[k] = random.Below(N == 2 ? 5 : 4);
      round[k] = whole[N - 2][(turn + k) % N] * (random.Below(2) == 0 ? 1.0 : -1.0);
    }
    placed = even;
    const CNuPoint thin = motion(CNuPoint(50 * even[0], N == 2 ? 0 : 50 * even[1], 1e-2 * even[N - 1]));
    const double far[] = {thin.x(), thin.y(), thin.z()};
    for (int k = 0; k < N; ++k) {
      if (kind == 1) placed[k] = lattice[k];
      if (kind == 2) placed[k] = round[k];
      if (kind == 3 && i > 0) placed[k] = k < N - 1 ? lattice[k] : lattice[0] + (N == 2 ? 0.0 : 2 * lattice[1]);
      if (kind == 4 && i > 3 && turn > 0) placed[k] = set[static_cast<std::size_t>(i) / 2][k];
      if (kind == 5) placed[k] = far[k];
      if (kind == 6) placed[k] = 1e300 * even[k];
      if (kind == 7) placed[k] = 0x1p-1000 * lattice[k];
      if (kind == 8) placed[k] = k < N - 1 ? 10 * even[k] : (even[k] > 0.0 ? 1.0 : 0.0);
    }
    set.push_back(placed);
  }
  return set;
}

template<int N>
void Shuffle(Random& random, Set<N>& set) {
  for (std::size_t i = set.size() - 1; i > 0; --i)
    std::swap(set[i], set[static_cast<std::size_t>(random.Below(static_cast<int>(i) + 1))]);
}

template<int N>
double RoundingOf(const Set<N>& set) {
  double reach = 0.0;
  for (const Place<N>& p : set)
    for (const double c : p) reach = std::max(reach, std::fabs(c));
  return 8 * kEps * reach;
}

void CheckContacts(const Set<2>& set, const Strip2& s) {
  const Place<2>& p = set[static_cast<std::size_t>(s.edge[0])];
  const Place<2>& q = set[static_cast<std::size_t>(s.edge[1])];
  const Place<2>& a = set[static_cast<std::size_t>(s.apex)];
  const double rounding = 0.5 * RoundingOf<2>(set);
  const auto height = [&](const Place<2>& r) {
    return (r[0] - s.middle[0]) * s.normal[0] + (r[1] - s.middle[1]) * s.normal[1];
  };
  for (const Place<2>& r : set) EXPECT_LE(std::fabs(height(r)), 0.5 * s.width + rounding);
  EXPECT_NEAR(height(p), -0.5 * s.width, rounding);
  EXPECT_NEAR(height(q), -0.5 * s.width, rounding);
  EXPECT_NEAR(height(a), 0.5 * s.width, rounding);
  EXPECT_NEAR(s.share[0] + s.share[1], 1.0, 1e-15);
  EXPECT_GE(std::min(s.share[0], s.share[1]), 0.0);
  // No turn makes the strip narrower: the edge pushes against the vertex.
  for (int k = 0; k < 2; ++k)
    EXPECT_NEAR(s.share[0] * p[k] + s.share[1] * q[k], a[k] - s.width * s.normal[k], rounding);
}

void CheckContacts(const Set<3>& set, const Slab3& s, const Place<3>& origin) {
  const double rounding = RoundingOf<3>(set);
  const auto from = [&](const Place<3>& p) { return Vec3{p[0] - origin[0], p[1] - origin[1], p[2] - origin[2]}; };
  const auto height = [&](const Place<3>& p) { return Dot(from(p), s.normal) - s.height; };
  for (const Place<3>& p : set) EXPECT_LE(std::fabs(height(p)), 0.5 * s.width + rounding);
  if (s.above == 0) return;
  Vec3 foot[2];
  double sum[2] = {};
  for (int k = 0; k < 4; ++k) {
    const bool isAbove = k < s.above;
    const Place<3>& p = set[static_cast<std::size_t>(s.contact[k])];
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

TEST(NarrowestStrip, AgreesWithAllPairs) {
  Random random(41);
  for (int k = 0; k < 8000; ++k) {
    SCOPED_TRACE(k);
    Set<2> set = RandomSet<2>(random, k % kKinds, 3 + random.Below(10));
    const Strip2 strip = StripOf(set);
    const double truth = BruteWidth<2>(set);
    if (std::isinf(truth)) {  // one place, several times
      EXPECT_EQ(strip.width, 0.0);
      continue;
    }
    EXPECT_NEAR(strip.width, truth, 1e-12 * truth);
    CheckContacts(set, strip);
    Shuffle<2>(random, set);
    const Strip2 other = StripOf(set);
    for (int c = 0; c < 2; ++c) {
      EXPECT_EQ(other.normal[c], strip.normal[c]);
      EXPECT_EQ(other.middle[c], strip.middle[c]);
    }
    EXPECT_EQ(other.width, strip.width);
  }
}

TEST(NarrowestSlab, AgreesWithAllTriplesAndPairsOfPairs) {
  Random random(51);
  for (int k = 0; k < 1800; ++k) {
    SCOPED_TRACE(k);
    const int kind = k % kKinds;
    Set<3> set = RandomSet<3>(random, kind, 3 + random.Below(10));
    const Place<3> o = set[0];
    const Slab3 slab = SlabOf(set, {o[0], o[1], o[2]});
    const double truth = BruteWidth<3>(set);
    if (std::isinf(truth)) {  // one line
      EXPECT_EQ(slab.width, 0.0);
      continue;
    }
    // Sets of three are flat, and so are lattices now and then: 0 but for the rounding of the brute force.
    const double size = kind == 6 ? 1e300 : kind == 7 ? 0.0 : 1e2;
    EXPECT_NEAR(slab.width, truth, 1e-12 * truth + 1e-18 * size);
    // A flat side of a lattice has many contacts, of which the result names four.
    if (kind == 0 || kind == 4 || kind == 5 || kind == 6) CheckContacts(set, slab, o);
    Shuffle<3>(random, set);
    const Slab3 other = SlabOf(set, {o[0], o[1], o[2]});
    EXPECT_NEAR(Dot(other.normal, slab.normal), 1.0, 1e-15);
    EXPECT_NEAR(other.width, slab.width, 1e-15 * slab.width);
  }
}

TEST(NarrowestSlab, AgreesForWorkingSets) {
  Random random(52);
  for (const int kind : {1, 5, 8}) {
    SCOPED_TRACE(kind);
    const Set<3> set = RandomSet<3>(random, kind, 43);
    const double truth = BruteWidth<3>(set);
    EXPECT_NEAR(SlabOf(set, {set[0][0], set[0][1], set[0][2]}).width, truth, 1e-12 * truth);
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
    Set<2> set;
    for (int i = 0; i < n; ++i) {
      const double t = 360.0 * kDegree * i / n;
      set.push_back({1e4 + std::cos(t), std::sin(t)});
    }
    const double step = 180.0 * kDegree / n;
    const double width = n % 2 == 0 ? 2 * std::cos(step) : 1 + std::cos(step);
    EXPECT_NEAR(StripOf(set).width, width, 1e-11) << n;
  }
}

TEST(NarrowestSlab, TakesAnyInput) {
  EXPECT_FALSE(SlabOf({{0, 0, 0}, {1, kNaN, 0}}).found);
  EXPECT_FALSE(SlabOf({{0, 0, 0}, {1, -1.0 / 0.0, 0}}).found);
  EXPECT_EQ(SlabOf({{3, 4, 5}, {3, 4, 5}}).height, 5.0);
  const Slab3 line = SlabOf({{0, 0, 0}, {1, 1, 1}, {4, 4, 4}});
  EXPECT_NEAR(line.normal.x + line.normal.y + line.normal.z, 0.0, 1e-15);
  EXPECT_EQ(SlabOf({{0, 0, 1}, {0, 0, 4}}).normal.x, 1.0);
  // Coordinates of all sizes: what is too small for the largest does not count.
  const Slab3 mixed = SlabOf({{1e300, 0, 0}, {0, 1e-300, 0}, {0, 0, 1}, {-1, 5e-324, 1e-200}, {0, 2, 0}});
  EXPECT_TRUE(mixed.found);
  EXPECT_GE(mixed.width, 0.0);
  // Equal slabs: the normal nearest to z.
  Set<3> cube;
  for (int i = 0; i < 64; ++i) cube.push_back({1.0 * (i % 4), 1.0 * (i / 4 % 4), 1.0 * (i / 16)});
  const Slab3 slab = SlabOf(cube);
  EXPECT_EQ(slab.normal.z, 1.0);
  EXPECT_EQ(slab.width, 3.0);
  EXPECT_EQ(slab.height, 1.5);
}

// Sets with about the same width in very many directions, with all points on the hull.
TEST(NarrowestSlab, EndsWhereManyDirectionsCompete) {
  Random random(53);
  const int n = 4000;
  Set<3> sphere, bar, arcs, helix, saddle;
  for (int i = 0; i < n; ++i) {
    const double t = random.Uniform(0, 360) * kDegree, c = random.Uniform(-1, 1);
    const double s = std::sqrt(1 - c * c);
    sphere.push_back({s * std::cos(t), s * std::sin(t), c});
    bar.push_back({std::cos(t), std::sin(t), 20 * c});
    const double a = random.Uniform(-1, 1);
    arcs.push_back(i % 2 == 0 ? Place<3>{std::sin(a), 0, std::cos(a)} : Place<3>{0, std::sin(a), -std::cos(a)});
  }
  // Either end of a helix is a neighbour of very many corners, and round a closed curve the ways across are long.
  for (int i = 0; i < 5 * n; ++i) {
    const double t = random.Uniform(0, 360) * kDegree;
    helix.push_back({std::cos(3 * t), std::sin(3 * t), t});
    saddle.push_back({std::cos(t), std::sin(t), std::cos(2 * t)});
  }
  CheckContacts(helix, SlabOf(helix), {0, 0, 0});
  CheckContacts(saddle, SlabOf(saddle), {0, 0, 0});
  // Below the diameter by about the depth of the largest gap between the points.
  EXPECT_NEAR(SlabOf(sphere).width, 2.0 - 20.0 / n, 20.0 / n);
  EXPECT_NEAR(SlabOf(bar).width, 2.0 - 1e-4, 1e-4);
  // Across the two arcs, which end at the angle 1, the width is least half way between their planes.
  EXPECT_NEAR(SlabOf(arcs).width, 2 * std::sin(1.0) * std::sqrt(0.5), 1e-3);
}

// Cells of directions give the slab of the hull of all points, on round sets with gaps, facets and copies.
TEST(NarrowestSlab, IsTheSameByCellsOfDirections) {
  struct Kind {
    const char* name;
    double stretch, noise, top;
    int copies;
    bool isCylinder = false;
  };
  constexpr Kind kinds[] = {{"sphere", 1, 0, 2, 1},    {"ellipsoid", 1.001, 0, 2, 1}, {"oblate", 1.1, 0, 2, 1},
                            {"rough", 1, 1e-9, 2, 1},  {"rougher", 1, 1e-4, 2, 1},    {"flattened", 1, 0, 0.98, 1},
                            {"repeated", 1, 0, 2, 10}, {"cylinder", 1, 0, 2, 1, true}};
  Random random(54);
  for (const Kind& kind : kinds) {
    SCOPED_TRACE(kind.name);
    std::vector<IndexedPoint> points;
    while (points.size() < 24000) {
      const double t = random.Uniform(0, 360) * kDegree, c = random.Uniform(-1, 1);
      const double r = 1.0 + random.Uniform(-1, 1) * kind.noise, s = kind.isCylinder ? r : r * std::sqrt(1 - c * c);
      const IndexedPoint p = {{5 + kind.stretch * s * std::cos(t), s * std::sin(t), std::min(r * c, kind.top)},
                              static_cast<int>(points.size())};
      points.insert(points.end(), static_cast<std::size_t>(kind.copies), p);
    }
    Hull3 hull;
    HullSlab whole;
    ASSERT_TRUE(hull.Add(points) && FindNarrowest(hull, kInfinity, nullptr, whole));
    CellSlab found;
    double limit = kInfinity;
    ASSERT_TRUE(FindNarrowestByCells(
        points, 8.0, [] { return true; }, limit, found));
    EXPECT_NEAR(found.slab.width.high, whole.width.high, 1e-15);
    EXPECT_NEAR(Dot(Rounded(found.slab.normal), Rounded(whole.normal)), 1.0, 1e-15);
    EXPECT_NEAR(limit, whole.width.high, 1e-14);
    EXPECT_FALSE(FindNarrowestByCells(
        points, 8.0, [] { return false; }, limit, found));
  }
}

// The largest empty circle by the triangulation of all points is about a place in one of the squares, and the points
// that it rests on are near: where points fill areas, leave holes inside and at the border, and make lattices.
TEST(FarSquares, HoldTheLargestEmptyCircle) {
  Random random(55);
  int found = 0;
  for (int kind = 0; kind < 24; ++kind) {
    SCOPED_TRACE(kind);
    const double hole[] = {random.Uniform(-1, 1), kind % 3 == 0 ? 1.0 : random.Uniform(-1, 1)};
    const double longest = kind % 4 == 1 ? 40.0 : 1.0, gap = 0.03 * (kind % 5);
    Set<3> set;
    while (set.size() < 20000) {
      const double x = random.Uniform(-1, 1), y = random.Uniform(-1, 1);
      if (std::hypot(x - hole[0], y - hole[1]) < gap || (kind % 6 == 5 && std::hypot(x, y) > 1)) continue;
      const double step = kind < 18 ? 0.0 : 0.01;
      set.push_back({longest * (step > 0 ? step * std::round(x / step) : x), y, 0});
    }
    PointBlocks blocks(ViewOf(set), {0, 0, 0});
    const Vec3 axes[] = {{1, 0, 0}, {0, 1, 0}};
    const EmptyCircle circle = LargestEmptyCircle(blocks, axes);
    const Grid2 grid = GridOf(blocks, axes);
    const ConvexPolygon2 hull(grid.points);
    const FarSquares squares(grid.points, hull);
    if (!squares.IsFound()) continue;
    ++found;
    const auto onGrid = [&](Vec2 p) { return (1.0 / grid.unit) * (p - grid.middle); };
    EXPECT_TRUE(squares.Hold(onGrid(circle.centre)));
    EXPECT_LE(squares.Radius(), circle.radius / grid.unit);
    EXPECT_GE(squares.Radius(), 0.95 * circle.radius / grid.unit);
    const std::vector<Vec2> near = squares.PointsNear(grid.points);
    EXPECT_LT(near.size(), grid.points.size() / 2);
    for (int k = 0; k < circle.contacts; ++k) {
      const Vec2 contact = GridFrame::Rounded(onGrid(circle.contact[k]));
      EXPECT_EQ(std::count(near.begin(), near.end(), contact), 1);
    }
  }
  EXPECT_GE(found, 18);
}

}  // namespace
