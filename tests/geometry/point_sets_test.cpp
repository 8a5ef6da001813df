#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

std::vector<int> ToStd(const CNuIntArray& a) {
  return {a.GetData(), a.GetData() + a.GetSize()};
}

// ---- clouds that search structures dislike

constexpr int kCloudKinds = 17;

CNuPoint HostilePoint(Random& random, const CNuPointArray& before, int kind, int n, int lattice) {
  const double x = random.Uniform(-1.0, 1.0);
  const double y = random.Uniform(-1.0, 1.0);
  const double z = random.Uniform(-1.0, 1.0);
  const auto onLattice = [&] { return static_cast<double>(random.Below(lattice)); };
  const auto ulps = [&] { return 1.0 + 0x1p-52 * random.Below(4); };
  const int i = before.GetSize();
  const double even = 720.0 * (i % (n / 2 + 1)) / (n + 2) * kDegree;
  switch (kind) {
    case 0:
      return {x, y, z};
    case 1:
      return {onLattice(), onLattice(), onLattice()};
    case 2:
      return {std::cos(3.2 * x), std::sin(3.2 * x), 0.0};
    case 3:
      return {std::cos(even), std::sin(even), 1.0};
    case 4:
      return {x / std::hypot(x, y, z), y / std::hypot(x, y, z), z / std::hypot(x, y, z)};
    case 5:
      return {onLattice(), 0.0, 0.0};
    case 6:
      return i > 0 && random.Below(2) == 0 ? before[random.Below(i)] : CNuPoint(x, y, z);
    case 7:
      return {1e8 + x, -1e8 + y, z};
    case 8:
      return {i % 2 == 0 ? 1.0 : 1e-20 * x, 1e-20 * y, 1e-20 * z};
    case 9:
      return i % 2 == 0 ? CNuPoint(ulps(), ulps(), ulps()) : CNuPoint(1e-20 * x, 1e-18 * y, 1e-20 * z);
    case 10:
      return {std::exp(40.0 * x), std::exp(40.0 * y), 0.0};
    case 11:
      return {random.Below(2) == 0 ? 0.0 : -0.0, onLattice(), -0.0};
    case 12:
      return {1e-170 * x, 1e-170 * y, 1e-170 * z};
    case 13:
      if (i == n / 2 && n % 2 == 0) return {2.6e306 * x, 2.6e306 * y, 2.6e306 * z};
      return {1e-9 * x + (i == n / 2 ? 1.0 : 0.0), 1e-9 * y, 0.0};
    case 15:
      return {1.7e308 * x, 1.2e308 * y, i % 3 == 0 ? 1e307 * z : 0.0};
    case 14: {
      const double odd[] = {kInf, -kInf, kNaN, 0.0, 1.0, -0.0};
      return {odd[random.Below(6)], odd[random.Below(6)], random.Below(3) == 0 ? odd[random.Below(6)] : 2.0};
    }
    default:
      return {random.Below(20) == 0 ? kNaN : onLattice(), random.Below(20) == 0 ? kInf : onLattice(), z};
  }
}

CNuPointArray HostileCloud(Random& random, int kind, int n) {
  CNuPointArray points(n);
  const int lattice = 1 + random.Below(8);
  for (int i = 0; i < n; ++i) points.Add(HostilePoint(random, points, kind, n, lattice));
  return points;
}

// Calls check(points) with thousands of clouds: most of them small, some beyond every threshold of the searches.
template<class Check>
void ForHostileClouds(int rounds, Check check) {
  Random random(11);
  for (int round = 0; round < rounds; ++round) {
    for (int kind = 0; kind < kCloudKinds; ++kind) {
      const int n = round % 25 == 24 ? 700 : 1 + random.Below(round % 2 == 0 ? 30 : 200);
      SCOPED_TRACE(testing::Message() << "round " << round << ", kind " << kind << ", points " << n);
      check(HostileCloud(random, kind, n));
      if (testing::Test::HasFatalFailure()) return;
    }
  }
}

// ---- edges

struct Edge {
  double length;
  int m = 0, n = 0;
  bool operator==(const Edge&) const = default;
};
std::ostream& operator<<(std::ostream& out, const Edge& e) {
  return out << e.length << " (" << e.m << ", " << e.n << ")";
}

template<class Better>
Edge PlainEdge(const CNuPointArray& points, double start, Better better) {
  Edge best{start};
  const CNuPoint* p = points.GetData();
  for (int i = 0; i < points.GetSize(); ++i) {
    for (int j = i + 1; j < points.GetSize(); ++j) {
      const double length = p[i].DistanceTo(p[j]);
      if (better(length, best.length)) best = {length, i, j};
    }
  }
  return best;
}

Edge MaxEdge(const CNuPointArray& points) {
  Edge e{0.0, -1, -1};
  e.length = points.MaxEdge(&e.m, &e.n);
  return e;
}
Edge MinEdge(const CNuPointArray& points) {
  Edge e{0.0, -1, -1};
  e.length = points.MinEdge(&e.m, &e.n);
  return e;
}

TEST(PointSetEdges, AreThoseOfTheLoopOverAllPairs) {
  // What a host may set as zero changes which edges have no length.
  for (const double zero : {1e-300, 0.5, 0.0, kNaN, kInf}) {
    NuSetZero(zero);
    NuSetLarge(zero == 0.5 ? 0.75 : 1e300);
    ForHostileClouds(zero == 1e-300 ? 100 : 25, [](const CNuPointArray& points) {
      if (points.GetSize() < 2) return;
      ASSERT_EQ(MaxEdge(points), PlainEdge(points, -0.1, std::greater<>()));
      ASSERT_EQ(MinEdge(points), PlainEdge(points, NuGetLarge(), std::less<>()));
    });
  }
  NuSetZero(1e-300);
  NuSetLarge(1e300);
  // A dense clump and some points about as far from it as from each other.
  Random random(2);
  for (int far = 2; far < 8; ++far) {
    CNuPointArray points(2000);
    for (int i = 0; i < 2000; ++i) points.Add(RandomPoint(random, i < far ? 1e3 : 1.0));
    ASSERT_EQ(MaxEdge(points), PlainEdge(points, -0.1, std::greater<>())) << far;
  }
  EXPECT_EQ(MaxEdge(PointsOf({{1, 2, 3}})), (Edge{0.0, 0, 0}));
  EXPECT_EQ(MinEdge(PointsOf({{1, 2, 3}})), (Edge{0.0, 0, 0}));
  EXPECT_EQ(MaxEdge(PointsOf({{0, 0, 0}, {0.05, 0, 0}})), (Edge{0.05, 0, 1}));
}

// Pairwise work on any of these would take hours.
TEST(PointSetEdges, AreFoundInLargeClouds) {
  constexpr int kSize = 200000;
  Random random(3);
  CNuPointArray circle(kSize), twins(kSize), wall(kSize);
  for (int i = 0; i < kSize; ++i) {
    const double angle = 360.0 * i / kSize * kDegree;
    circle.Add({std::cos(angle), std::sin(angle), 0.0});
    twins.Add({i % 2 == 0 ? 1.0 : -1.0, 0.0, 0.0});
    wall.Add({0.5, static_cast<double>(i / 500), static_cast<double>(i % 500)});
  }
  EXPECT_DOUBLE_EQ(MaxEdge(circle).length, 2.0);
  EXPECT_NEAR(MinEdge(circle).length, 2.0 * std::sin(kDegree * 180.0 / kSize), 1e-14);
  EXPECT_EQ(MaxEdge(twins), (Edge{2.0, 0, 1}));
  EXPECT_EQ(MinEdge(twins), (Edge{0.0, 0, 2}));
  EXPECT_EQ(MaxEdge(wall), (Edge{CNuPoint(0, 399, 499).DistanceTo(CNuPoint()), 0, kSize - 1}));
  EXPECT_EQ(MinEdge(wall), (Edge{1.0, 0, 1}));
  CNuPointArray sphere = SphereCloud(random, kSize, 50.0, 180.0, 0.0);
  EXPECT_NEAR(MaxEdge(sphere).length, 100.0, 1e-3);
}

// ---- coincident points

std::vector<CNuPoint> PlainWithoutDuplicates(const CNuPointArray& points, double tol) {
  std::vector<CNuPoint> kept;
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuPoint p = points[i];
    if (std::none_of(kept.begin(), kept.end(), [&](const CNuPoint& q) { return p.IsEqual(q, tol) == NuTrue; })) {
      kept.push_back(p);
    }
  }
  return kept;
}

void ExpectSamePoints(const CNuPointArray& points, const std::vector<CNuPoint>& expected) {
  ASSERT_EQ(points.GetSize(), static_cast<int>(expected.size()));
  for (int i = 0; i < points.GetSize(); ++i) {
    const CNuPoint p = points[i];
    const double got[] = {p.x(), p.y(), p.z()};
    const double want[] = {expected[i].x(), expected[i].y(), expected[i].z()};
    for (int k = 0; k < 3; ++k) ASSERT_TRUE(got[k] == want[k] || (std::isnan(got[k]) && std::isnan(want[k]))) << i;
  }
}

constexpr double kTolerances[] = {0.0,  -1.0,  kNaN, kInf, 1e308, 1e-310, 1e-300, 1e-16,
                                  1e-9, 0.125, 0.3,  1.0,  2.5,   1e7,    1e9};

TEST(PointSetDuplicates, AreRemovedAsByTheLoopOverKeptPoints) {
  ForHostileClouds(30, [](const CNuPointArray& points) {
    for (const double tol : kTolerances) {
      CNuPointArray reduced = points;
      reduced.RemoveDuplicate(tol);
      ExpectSamePoints(reduced, PlainWithoutDuplicates(points, tol));
      if (testing::Test::HasFatalFailure()) return;
    }
  });
  CNuPointArray runs = PointsOf({{0, 0, 0}, {0.6, 0, 0}, {1.2, 0, 0}, {0, 0, 0}});
  runs.RemoveAdjacentDuplicate(1.0);
  ExpectSamePoints(runs, {{0, 0, 0}, {1.2, 0, 0}, {0, 0, 0}});
}

bool PlainContainsAll(const CNuPointArray& set, const CNuPointArray& points, double tol) {
  bool all = true;
  for (int i = 0; i < points.GetSize() && all; ++i) all = set.IsIn(points[i], tol) == NuTrue;
  return all;
}

TEST(PointSetDuplicates, DoNotMatterToEquality) {
  Random random(8);
  ForHostileClouds(12, [&](const CNuPointArray& points) {
    for (const double tol : kTolerances) {
      CNuPointArray other = Shuffled(random, points);
      if (random.Below(2) == 0) other[0] = points[random.Below(points.GetSize())];
      if (random.Below(2) == 0) other[0].x() += 0.99 * tol;
      ASSERT_EQ(points.IsEqual(other, tol) == NuTrue,
                PlainContainsAll(points, other, tol) && PlainContainsAll(other, points, tol))
          << tol;
    }
  });
  EXPECT_TRUE(CNuPointArray(0).IsEqual(CNuPointArray(3), 0.0));
  EXPECT_FALSE(PointsOf({{1, 1, 1}}).IsEqual(PointsOf({{1, 1, 1}, {1, 1, 1}}), 1.0));
}

TEST(PointSetDuplicates, AreNotDistinct) {
  ForHostileClouds(12, [](const CNuPointArray& points) {
    for (const double tol : kTolerances) {
      std::vector<CNuPoint> kept = {points[0]};
      for (int i = 1; i < points.GetSize(); ++i) {
        const auto isFar = [&](const CNuPoint& q) { return points[i].DistanceTo(q) >= tol; };
        if (std::all_of(kept.begin(), kept.end(), isFar)) kept.push_back(points[i]);
      }
      const int most = static_cast<int>(kept.size());
      for (const int n : {1, 2, most - 1, most, most + 1, points.GetSize() + 1}) {
        ASSERT_EQ(CNuGeometry::NumberDistinctPoints(points, n, tol), n <= most ? 1 : 0) << n << " at " << tol;
      }
    }
  });
}

// A dense scan is thinned at its spacing, far above it and far below it.
TEST(PointSetDuplicates, AreFoundInLargeClouds) {
  Random random(4);
  CNuPointArray points = PlaneCloud(random, 200000, 100.0, 100.0, 0.01);
  CNuPointArray twice = points;
  twice.Append(points);
  twice.RemoveDuplicate(1e-9);
  EXPECT_EQ(twice.GetSize(), points.GetSize());
  EXPECT_TRUE(Shuffled(random, points).IsEqual(points, 1e-9));
  EXPECT_TRUE(CNuGeometry::NumberDistinctPoints(points, 150000, 1e-3));
  for (const double tol : {0.2, 30.0}) {
    CNuPointArray thinned = points;
    thinned.RemoveDuplicate(tol);
    EXPECT_TRUE(points.IsIn(thinned[thinned.GetSize() - 1], 1e-12));
    EXPECT_GE(MinEdge(thinned).length, tol);
  }
}

// ---- hull

double Turn(const CNuPoint& a, const CNuPoint& b, const CNuPoint& c) {
  return (b.x() - a.x()) * (c.y() - a.y()) - (b.y() - a.y()) * (c.x() - a.x());
}

// The differences of the coordinates are small integers times a power of two, so Turn is exact.
void ExpectHull(const CNuPointArray& points) {
  CNuIntArray indices(0);
  points.ConvexHull(&indices);
  const std::vector<int> hull = ToStd(indices);
  const int count = static_cast<int>(hull.size());
  const CNuPoint* p = points.GetData();
  CNuPoint centroid;
  for (const int h : hull) centroid += p[h] / count;
  double angle = -1.0;
  for (int k = 0; k < count; ++k) {
    const int h = hull[k];
    for (int i = 0; i < h; ++i)
      ASSERT_FALSE(p[i].x() == p[h].x() && p[i].y() == p[h].y()) << "not the first of its place";
    const CNuPoint& next = p[hull[(k + 1) % count]];
    for (int i = 0; i < points.GetSize() && count >= 2; ++i)
      ASSERT_GE(Turn(p[h], next, p[i]), 0.0) << i << " is outside";
    if (count < 3) continue;
    ASSERT_GT(Turn(p[h], next, p[hull[(k + 2) % count]]), 0.0) << "no corner at " << next.x() << ", " << next.y();
    const double last = angle;
    angle = CNuVector(1, 0, 0).AngleWith(CNuVector(p[h].x() - centroid.x(), p[h].y() - centroid.y(), 0),
                                         CNuVector(0, 0, 1));
    ASSERT_GT(angle, last);
  }
  ASSERT_EQ(count == 1,
            std::all_of(p, p + points.GetSize(), [&](const CNuPoint& q) { return q.IsEqual(p[0], 1e-300); }));
}

TEST(PointSetHull, HoldsAllPointsAndHasOnlyCorners) {
  Random random(21);
  for (int round = 0; round < 3000; ++round) {
    const int n = round % 60 == 59 ? 3000 : 1 + random.Below(round % 3 == 0 ? 400 : 12);
    const int size = 1 + random.Below(round % 2 == 0 ? 4 : 1000);
    const double step = round % 5 == 0 ? 0x1p-26 : 1.0;
    const double offset = round % 5 < 2 ? 1048576.0 : 0.0;
    const int slope = random.Below(4);
    CNuPointArray points(n);
    for (int i = 0; i < n; ++i) {
      const int x = random.Below(size);
      int y = slope == 0   ? random.Below(size)
              : slope == 1 ? 3 * x
              : slope == 2 ? x + random.Below(2)
                           : random.Below(2 * size);
      if (slope == 3) y = std::min(y, x * (size - x) / size);
      points.Add({offset + step * x, -offset + step * y, n == 1 ? 0.0 : -7.0});
    }
    SCOPED_TRACE(testing::Message() << "round " << round);
    ExpectHull(points);
    if (HasFatalFailure()) return;
  }
}

TEST(PointSetHull, OfNamedSets) {
  const auto hull = [](const CNuPointArray& points) {
    CNuIntArray indices(3);
    indices.Add(99);
    points.ConvexHull(&indices);
    return ToStd(indices);
  };
  using Indices = std::vector<int>;
  EXPECT_EQ(hull(CNuPointArray(2)), Indices{});
  EXPECT_EQ(hull(PointsOf({{4, 5, 0}})), Indices{0});
  EXPECT_EQ(hull(PointsOf({{1, 1, 3}, {2, 2, 3}, {0, 0, 3}})), (Indices{2, 1}));
  EXPECT_EQ(hull(PointsOf({{0, 0, 1}, {2, 0, 1}, {2, 2, 1}, {0, 2, 1}, {1, 1, 1}, {1, 2, 1}})), (Indices{2, 3, 0, 1}));
  EXPECT_EQ(hull(PointsOf({{kNaN, 0, 1}, {1, 1, 1}, {0, kInf, 1}, {-1, 1, 1}, {0, -1, 1}})), (Indices{1, 3, 4}));
  // Three points that only exact arithmetic tells from a line.
  const double third = 1.0 / 3.0;
  EXPECT_EQ(hull(PointsOf({{0, 0, 0}, {third, third, 0}, {1, 1, 0}, {0.5, std::nextafter(0.5, 1.0), 0}})).size(), 3u);
  for (const double size : {1e-300, 1e-160, 1e150, 1e307}) {
    EXPECT_EQ(hull(PointsOf({{0, 0, 0}, {size, 0, 0}, {size, size, 0}, {0, size, 0}, {size / 2, size / 3, 0}})),
              (Indices{2, 3, 0, 1}));
  }
  Random random(6);
  const CNuPointArray round = CircleCloud(random, 100000, 50.0, 360.0, 0.0);
  EXPECT_GT(hull(round).size(), 99000u);
}

// ---- the rest

TEST(PointSet, MeanIsRoundedOnce) {
  Random random(9);
  for (const double offset : {0.0, 1e3, 1e9}) {
    const CNuPointArray points =
        Motion{{{1, 0, 0}, {0, 1, 0}, {0, 0, 1}}, {offset, -offset, 3.0}}(BoxCloud(random, 300007, 1.0, 2.0, 3.0));
    long double sum[3] = {};
    for (int i = 0; i < points.GetSize(); ++i) {
      sum[0] += points[i].x(), sum[1] += points[i].y(), sum[2] += points[i].z();
    }
    const CNuPoint mean = points.MeanPoint();
    const double scale = 1.0 + offset;
    EXPECT_NEAR(mean.x(), static_cast<double>(sum[0] / points.GetSize()), scale * 2e-16);
    EXPECT_NEAR(mean.y(), static_cast<double>(sum[1] / points.GetSize()), scale * 2e-16);
    EXPECT_NEAR(mean.z(), static_cast<double>(sum[2] / points.GetSize()), 1e-15);
  }
  EXPECT_EQ(PointsOf({{kInf, 1, 0}, {2, 3, 0}}).MeanPoint().x(), kInf);
  EXPECT_EQ(PointsOf({{0.1, 1e308, 0}, {0.1, -1e308, 0}}).MeanPoint().x(), 0.1);
}

TEST(PointSet, MovesIntoFrames) {
  Random random(10);
  const CNuPointArray points = BoxCloud(random, 20, 1.0, 1.0, 1.0);
  const CNuPoint origin(3, -4, 5);
  CNuVector z(1, 2, 3), x, y;
  z.OrthonormalXY(&x, &y);
  CNuPointArray toPoint = points, toAxis = points, toBoth = points, toFrame = points;
  toPoint.MoveTo(toPoint[0]);
  toAxis.MoveTo(z);
  toBoth.MoveTo(origin, z);
  toFrame.MoveTo(origin, x * 2.0, z * 3.0);
  for (int i = 0; i < points.GetSize(); ++i) {
    CNuPoint expected = points[i];
    expected.MoveTo(origin, x, z);
    EXPECT_TRUE(toFrame[i].IsEqual(expected, 1e-14));
    EXPECT_TRUE(toBoth[i].IsEqual(expected, 1e-14));
    EXPECT_TRUE(toAxis[i].IsEqual(
        CNuPoint(points[i].To3DVector() % x, points[i].To3DVector() % y, points[i].To3DVector() % z), 1e-14));
    EXPECT_TRUE(toPoint[i].IsEqual(points[i] - points[0], 1e-300));
  }
  const CNuPointArray flat = CNuGeometry::Projection2D(points, origin, x, y * 2.0);
  EXPECT_TRUE(flat[7].IsEqual(CNuPoint(toFrame[7].x(), 2.0 * toFrame[7].y(), 0.0), 1e-14));
  CNuVector normal(2, 4, 6);
  EXPECT_TRUE(CNuGeometry::Projection2D(points, normal)[7].IsEqual(CNuPoint(toAxis[7].x(), toAxis[7].y(), 0), 1e-14));
  EXPECT_NEAR(normal.Magnitude(), 1.0, 1e-15);
}

TEST(PointSet, KnowsLinesAndPlanes) {
  const CNuPointArray lying = PointsOf({{0, 0, 5}, {0, 0, 5}, {1, 0, 5}, {2, 0, 5}, {1, 1, 5}, {3, 1, 5}});
  const CNuPointArray line = lying.SubArray(0, 3);
  CNuPointArray solid = lying;
  for (int i = 0; i < 600; ++i) solid.Add({1.0 + i, 0.25 * i, 5.0});
  solid[300].z() = 5.5;
  CNuIntArray idx(0);
  EXPECT_FALSE(line.IsNoncollinear(&idx, 1e-9));
  EXPECT_TRUE(lying.IsNoncollinear(&idx, 1e-9));
  EXPECT_EQ(ToStd(idx), (std::vector<int>{0, 2, 4}));
  EXPECT_FALSE(lying.IsNoncoplanar(&idx, 1e-9));
  EXPECT_TRUE(solid.IsNoncoplanar(&idx, 1e-9));
  EXPECT_EQ(ToStd(idx), (std::vector<int>{0, 2, 605, 300}));
  EXPECT_FALSE(PointsOf({{0, 0, 0}, {0, 0, 0}, {1, 0, 0}}).IsNoncollinear(&idx, 1e-9));
  EXPECT_FALSE(PointsOf({{1, 1, 5}}).Is2D());
  EXPECT_TRUE(lying.Is2D());
  EXPECT_FALSE(solid.Is2D());

  CNuVector normal(7, 7, 7);
  EXPECT_EQ(CNuGeometry::AreCollinear(line, &normal, 1e-9), 1);
  EXPECT_EQ(normal[0], 7.0);
  EXPECT_EQ(CNuGeometry::AreCollinear(lying, &normal, 1e-9), 0);
  EXPECT_TRUE(normal.IsEqual(CNuVector(0, 0, 1), 1e-15));
  CNuPlane plane;
  EXPECT_EQ(CNuGeometry::AreCoplanar(lying, &plane, 1e-9), 1);
  EXPECT_NEAR(CNuPoint(9, 9, 5).DistanceTo(plane), 0.0, 1e-14);
  EXPECT_EQ(CNuGeometry::AreCoplanar(solid, 1e-9), 0);
  EXPECT_EQ(CNuGeometry::AreCoplanar(solid, 0.6), 1);
  EXPECT_EQ(CNuGeometry::AreCoplanar(line, &plane, 1e-9), 1);
  EXPECT_TRUE(plane.GetNormal().IsEqual(CNuVector(1, 0, 0), 1e-15));
  // Nothing but one place, with a tolerance that calls no difference zero.
  EXPECT_EQ(CNuGeometry::AreCoplanar(PointsOf({{1, 1, 1}, {1, 1, 1}, {1, 1, 1}, {1, 1, 1}}), &plane, 0.0), 1);
  EXPECT_EQ(CNuGeometry::NumberDistinctPoints(lying, 7, 0.0), 0);
}

TEST(PointSet, IsBounded) {
  CNuPoint low, high, centre;
  double radius = -1.0;
  const CNuPointArray points = PointsOf({{1, -2, 3}, {-4, 5, -6}, {0, 0, 9}});
  points.BoundingBox(&low, &high);
  EXPECT_TRUE(low.IsEqual({-4, -2, -6}, 1e-300) && high.IsEqual({1, 5, 9}, 1e-300));
  points.BoundingSphere(&radius, &centre);
  EXPECT_DOUBLE_EQ(radius, centre.DistanceTo(high));
  CNuPointArray(0).BoundingSphere(&radius, &centre);
  EXPECT_TRUE(radius == 0.0 && centre.IsZero(1e-300));
}

TEST(PointSet, SaysWhatItCannotDo) {
  CNuPointArray none(0);
  CNuIntArray idx(0);
  int i = 0;
  const CNuVector axis(0, 0, 1);
  const auto expected = [](const char* what, const char* signature) {
    // The text has room for so many characters.
    const std::string where = std::string("CNuPointArray::") + signature;
    return std::string("operation 8 ") + what + " operation|" + where.substr(0, sizeof(CNuException::m_szWhere) - 1) +
           " [0,0]";
  };
  EXPECT_EQ(FailureOf([&] { none.IsNoncollinear(&idx, 1); }), expected("IsNoncollinear", "IsNoncollinear()"));
  EXPECT_EQ(FailureOf([&] { none.IsNoncoplanar(&idx, 1); }), expected("IsNoncoplanar", "IsNoncoplanar()"));
  EXPECT_EQ(FailureOf([&] { none.Is2D(); }), expected("Is2D", "Is2D()"));
  EXPECT_EQ(FailureOf([&] { none.MeanPoint(); }), expected("MeanPoint", "MeanPoint()"));
  EXPECT_EQ(FailureOf([&] { none.MoveTo(CNuPoint()); }), expected("MoveTo", "MoveTo(const CNuPoint& origin)"));
  EXPECT_EQ(FailureOf([&] { none.MoveTo(axis); }), expected("MoveTo", "MoveTo(const CNuVector& zaxis)"));
  EXPECT_EQ(FailureOf([&] { none.MoveTo(CNuPoint(), axis); }),
            expected("MoveTo", "MoveTo(const CNuPoint& origin, const CNuVector& zaxis)"));
  EXPECT_EQ(FailureOf([&] { none.MoveTo(CNuPoint(), axis, axis); }),
            expected("MoveTo", "MoveTo(const CNuPoint& origin, const CNuVector& xaxis, const CNuVector& zaxis)"));
  EXPECT_EQ(FailureOf([&] { none.MaxEdge(&i, &i); }), expected("MaxEdge", "MaxEdge(int* m, int* n) const"));
  EXPECT_EQ(FailureOf([&] { none.MinEdge(&i, &i); }), expected("MinEdge", "MinEdge(int* m, int* n) const"));
  EXPECT_EQ(FailureOf([&] {
              PointsOf({{0, 0, 1}, {0, 0, 2}}).ConvexHull(&idx);
            }),
            "operation 45 calculation of 3D convex hull|CNuPointArray [0,0]");
}

}  // namespace
