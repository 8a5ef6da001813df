#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

double DistanceToEdge(const CNuPoint& p, const CNuPoint& start, const CNuPoint& end) {
  const CNuVector along = (end - start).To3DVector(), from = (p - start).To3DVector();
  const double t = std::fmin(std::fmax(along % from / (along % along), 0.0), 1.0);
  return t > 0 ? (from - along * t).Magnitude() : from.Magnitude();
}

// The fewest vertices, from all pairs of points.
int FewestVertices(const CNuPointArray& points, double tol) {
  std::vector<int> edges(points.GetSize(), points.GetSize());
  edges[0] = 0;
  for (int i = 0; i < points.GetSize(); ++i) {
    for (int j = i + 1; j < points.GetSize(); ++j) {
      bool allowed = true;
      for (int k = i + 1; k < j && allowed; ++k) allowed = DistanceToEdge(points[k], points[i], points[j]) <= tol;
      if (allowed) edges[j] = std::min(edges[j], edges[i] + 1);
    }
  }
  return edges.back() + 1;
}

// The distance of every point from the edge that bridges it, at most.
double Deviation(const CNuPointArray& points, const CNuPointArray& kept) {
  double largest = 0;
  int e = 0;
  for (int i = 0; i < points.GetSize(); ++i) {
    if (e < kept.GetSize() && points[i].DistanceTo(kept[e]) == 0.0) {
      ++e;
    } else if (e == 0 || e == kept.GetSize()) {
      return std::numeric_limits<double>::infinity();
    } else {
      largest = std::max(largest, DistanceToEdge(points[i], kept[e - 1], kept[e]));
    }
  }
  return e == kept.GetSize() ? largest : std::numeric_limits<double>::infinity();
}

// Waves, clouds, zigzags, spirals, walks, lattices and hairpins; in space every second time.
CNuPointArray PathOf(Random& random, int kind, int n, bool spatial) {
  CNuPointArray points(n);
  CNuPoint walk;
  const auto side = [&](double size) { return random.Uniform(-size, size); };
  for (int i = 0; i < n; ++i) {
    const double t = static_cast<double>(i) / n, z = spatial ? side(0.1) : 0.0, turn = 20 * t;
    walk += CNuPoint(side(1), side(1), spatial ? side(1) : 0.0);
    if (kind == 0) points.Add({t, std::sin(7 * t), z});
    if (kind == 1) points.Add({side(0.5), side(0.5), 5 * z});
    if (kind == 2) points.Add({t, i % 2 * random.Uniform(0.09, 0.1), z});
    if (kind == 3) points.Add({t * std::cos(turn), t * std::sin(turn), z});
    if (kind == 4) points.Add(walk);
    if (kind == 5) points.Add({1.0 * random.Below(4), 1.0 * random.Below(3), 0});
    if (kind == 6) points.Add({std::fabs(std::fmod(5 * t, 2) - 1), 0.05 * random.Bell(), z});
  }
  return points;
}

TEST(SimplifiedCurve, HasTheFewestVerticesWithinTheTolerance) {
  Random random(81);
  for (int k = 0; k < 1400; ++k) {
    const int kind = k % 7, n = 2 + random.Below(k % 20 == 0 ? 200 : 40);
    const double tol = kind == 5 ? 0.5 * random.Below(5) : std::pow(10.0, random.Uniform(-3, 0.3));
    const CNuPointArray points = PathOf(random, kind, n, k % 2 == 0);
    const CNuSimplifiedCurve curve(points, tol);
    SCOPED_TRACE(std::to_string(k) + " n " + std::to_string(n) + " tol " + std::to_string(tol));
    EXPECT_EQ(curve.GetSize(), FewestVertices(points, tol));
    EXPECT_LE(curve.GetMaxDeviation(), tol * (1 + 1e-12));
    if (kind == 5) continue;  // several points at one place: the kept ones cannot be told
    EXPECT_NEAR(curve.GetMaxDeviation(), Deviation(points, curve.GetPoints()), 1e-12);
  }
}

// No time that grows as the square: thousands of points of every kind, at tolerances from the noise to the size.
TEST(SimplifiedCurve, ManyPointsAreQuick) {
  Random random(82);
  for (int kind = 0; kind < 7; ++kind) {
    for (const double tol : {1e-6, 1e-2, 0.6, 5.0}) {
      const CNuPointArray points = PathOf(random, kind, 15000, kind % 2 == 1);
      const CNuSimplifiedCurve curve(points, tol);
      EXPECT_LE(kind == 5 ? curve.GetMaxDeviation() : Deviation(points, curve.GetPoints()), tol * (1 + 1e-12)) << kind;
    }
  }
  // Of a circle every edge spans the same angle: acos(1 - tol) to either side.
  CNuPointArray circle(20001);
  for (int i = 0; i <= 20000; ++i) circle.Add({std::cos(i * 3.14159265e-4), std::sin(i * 3.14159265e-4), 5});
  for (const double tol : {1e-6, 1e-4, 1e-2}) {
    const double points = std::floor(2 * std::acos(1 - tol) / 3.14159265e-4);
    EXPECT_EQ(CNuSimplifiedCurve(circle, tol).GetSize(), 1 + std::ceil(20000 / points)) << tol;
  }
}

TEST(SimplifiedCurve, LimitsMotionsAndFailures) {
  const double nan = std::nan(""), infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(FailureOf([] { CNuSimplifiedCurve(CNuPointArray(1), 1); }),
            "construction 1 size of CNuPointArray|CNuSimplifiedCurve [0,0]");
  CNuPointArray points(9);
  for (int i = 0; i < 8; ++i) points.Add({1.0 * i, i == 4 ? 0.5 : 0.0, 0});
  const auto size = [&](double tol) { return CNuSimplifiedCurve(points, tol).GetSize(); };
  EXPECT_TRUE(size(0.0) == 5 && size(0.49) == 3 && size(0.5) == 2 && size(infinity) == 2);
  EXPECT_TRUE(size(-1.0) == 8 && size(nan) == 8);
  points.Add(points[0]);
  EXPECT_TRUE(size(0.0) == 6 && size(infinity) == 2) << "a closed sequence keeps both ends";
  for (const double scale : {1e-300, 1e300}) {
    CNuPointArray scaled(points);
    for (int i = 0; i < 9; ++i) scaled[i] *= scale;
    EXPECT_EQ(CNuSimplifiedCurve(scaled, 1e-3 * scale).GetSize(), 6);
  }
  points[2].y() = nan;
  points[5].x() = infinity;
  EXPECT_EQ(size(10.0), 8) << "the ends of the finite stretches and what is between them";

  CNuPointArray corner(4);
  for (const CNuPoint& p : {CNuPoint(1, 0, 0), CNuPoint(2, 1e-3, 0), CNuPoint(3, 0, 0), CNuPoint(3, 5, 0)})
    corner.Add(p);
  CNuSimplifiedCurve curve(corner, 0.01);
  EXPECT_TRUE(curve.GetType() == 32 && curve.GetMaxDeviation() == 1e-3);
  EXPECT_TRUE(curve.GetPoints().IsEqual(CNuSimplifiedCurve(curve).GetPoints(), 1e-300));
  curve.Rotate(90, CNuGeometry::Z_AXIS);
  EXPECT_TRUE(curve.GetPoint(2).IsEqual(CNuPoint(-5, 3, 0), 1e-14) && curve.GetPoints()[1].IsEqual({0, 3, 0}, 1e-14));
  EXPECT_EQ(FailureOf([&] { curve.GetPoint(3); }), "operation 3 operation|CNuSimplifiedCurve::GetPoint() [0,2]");
}

}  // namespace
