#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// The corner of a chain, and how far the way on from it leaves its chord to the right, over half the chord.
struct Corner {
  double x, y, bulge;
};

CNuCompositeCurve Chain(const std::vector<Corner>& corners, bool closed) {
  CNuCompositeCurve chain;
  for (std::size_t i = 0; i + (closed ? 0 : 1) < corners.size(); ++i) {
    const Corner a = corners[i], b = corners[(i + 1) % corners.size()];
    const CNuPoint p(a.x, a.y), q(b.x, b.y);
    const CNuPoint middle = p.MidPoint(q) + CNuPoint(b.y - a.y, a.x - b.x) * (0.5 * a.bulge);
    if (a.bulge == 0) {
      chain.AddSegment(CNuLineSegment(p, q), NuTrue);
    } else {
      chain.AddSegment(CNuCircularArc(p, middle, q), NuTrue);
    }
  }
  return chain;
}

CNuCompositeCurve OffsetOf(CNuBoundedCurve& curve, double distance, int shape) {
  const std::unique_ptr<CNuBoundedCurve> moved(curve.Offset(distance, CNuVector(0, 0, 1), shape));
  return dynamic_cast<const CNuCompositeCurve&>(*moved);
}

CNuPointArray Samples(const CNuBoundedCurve& segment, int n) {
  return segment.GetType() == CNuObject::NuTypeLineSegment
             ? static_cast<const CNuLineSegment&>(segment).ToPolyline(n).GetPoints()
             : static_cast<const CNuCircularArc&>(segment).ToPointArray(n);
}

double Area(const CNuCompositeCurve& curve) {
  return curve.ToPolyline(1e-7).Area();
}

const double kEighth = std::tan(Nu_PI / 8);  // the bulge of a quarter turn

TEST(CompositeCurveOffset, KnowsShapesThatHaveAName) {
  const CNuCompositeCurve square = Chain({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, true);
  const CNuCompositeCurve rounded = Chain(
      {{1, 0, 0}, {3, 0, kEighth}, {4, 1, 0}, {4, 3, kEighth}, {3, 4, 0}, {1, 4, kEighth}, {0, 3, 0}, {0, 1, kEighth}},
      true);
  const CNuCompositeCurve circle = Chain({{2, 0, 1}, {-2, 0, 1}}, true);
  const CNuCompositeCurve slot = Chain({{0, 0, 0}, {3, 0, 1}, {3, 2, 0}, {0, 2, 1}}, true);
  // Two rooms with a passage of a width of 2; its inner corners are round or go on straight.
  const CNuCompositeCurve rooms = Chain({{0, 0, 0},
                                         {6, 0, 0},
                                         {6, 2, 0},
                                         {8, 2, 0},
                                         {8, 0, 0},
                                         {13, 0, 0},
                                         {13, 6, 0},
                                         {8, 6, 0},
                                         {8, 4, 0},
                                         {6, 4, 0},
                                         {6, 6, 0},
                                         {0, 6, 0}},
                                        true);
  CNuCompositeCurve turn;
  turn.AddSegment(CNuCircularArc(CNuPoint(), CNuPoint(2, 0, 0), CNuPoint(2, 0, 0), NuTrue), NuTrue);
  const struct {
    const CNuCompositeCurve& curve;
    double distance;
    int shape, segments;
    double length;
  } cases[] = {{square, 1, 0, 4, 24},         {square, 1, 1, 8, 16 + 2 * Nu_PI}, {square, -1, 0, 4, 8},
               {square, -1, 1, 4, 8},         {rounded, 1, 0, 8, 8 + 4 * Nu_PI}, {rounded, -0.5, 1, 8, 8 + Nu_PI},
               {rounded, -1, 1, 4, 8},    // its arcs have shrunk to points
               {rounded, -1.5, 0, 4, 4},  // and are gone
               {circle, 1, 0, 2, 6 * Nu_PI},  {circle, -1, 1, 2, 2 * Nu_PI},     {turn, -1, 1, 1, 2 * Nu_PI},
               {slot, -0.5, 0, 4, 6 + Nu_PI}, {rooms, -0.5, 0, 12, 46 - 8 + 4},  {rooms, -0.5, 1, 16, 46 - 8 + Nu_PI},
               {rooms, 1.5, 0, 6, 50}};
  for (const auto& row : cases) {
    const std::size_t k = static_cast<std::size_t>(&row - cases);
    CNuCompositeCurve curve(row.curve), moved = OffsetOf(curve, row.distance, row.shape);
    EXPECT_EQ(moved.GetNumberSegments(), row.segments) << k;
    EXPECT_NEAR(moved.Length(), row.length, 1e-12) << k;
    EXPECT_TRUE(moved.IsClosed(1e-300)) << k;
    curve.Reverse();
    EXPECT_NEAR(OffsetOf(curve, -row.distance, row.shape).Length(), moved.Length(), 1e-12) << k;
    // In the curve's own plane what it runs around grows, wherever that is.
    curve.Rotate(40, CNuVector(1, 2, 3), CNuPoint(1000, 200, 30));
    const std::unique_ptr<CNuBoundedCurve> turned(curve.Offset(row.distance));
    EXPECT_TRUE(row.shape == 1 || std::fabs(turned->Length() - moved.Length()) < 1e-9) << k;
  }
  CNuPolyline polyline = square.ToPolyline(1);
  EXPECT_NEAR(OffsetOf(polyline, 1, 1).Length(), 16 + 2 * Nu_PI, 1e-13);
  CNuCompositeCurve hook = Chain({{0, 0, 0}, {4, 0, 1}, {4, 2, 0}, {1, 2, 0}}, false);
  const CNuCompositeCurve outside = OffsetOf(hook, 1, 0), inside = OffsetOf(hook, -0.5, 1);
  EXPECT_NEAR(outside.Length(), 4 + 2 * Nu_PI + 3, 1e-13);
  EXPECT_NEAR(inside.Length(), 4 + 0.5 * Nu_PI + 3, 1e-13);
}

TEST(CompositeCurveOffset, RefusesWhatHasNoMeaning) {
  CNuCompositeCurve square = Chain({{0, 0, 0}, {4, 0, 0}, {4, 4, 0}, {0, 4, 0}}, true);
  CNuCompositeCurve back = Chain({{0, 0, 0}, {4, 0, 0}, {1, 0, 0}}, false), gap = back, empty, space = back;
  gap.AddSegment(CNuLineSegment(CNuPoint(1, 1), CNuPoint(2, 5)), NuTrue);
  space.AddSegment(CNuLineSegment(CNuPoint(1, 0, 0), CNuPoint(2, 5, 1)), NuTrue);
  const auto offset = [](CNuCompositeCurve& curve, double d, const CNuVector& normal, int shape) {
    return FailureOf([&] { delete curve.Offset(d, normal, shape); });
  };
  const CNuVector z(0, 0, 1);
  const std::string where = "|CNuCompositeCurve::Offset() [0,0]";
  EXPECT_EQ(offset(empty, 1, z, 0), "operation 8 operation" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(3), 0), "operation 9 Offset" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(4), 0), "operation 10 Offset" + where);
  EXPECT_EQ(offset(square, std::nan(""), z, 0), "operation 29 Offset" + where);
  CNuCompositeCurve huge = Chain({{0, 0, 0}, {1.7e308, 0, 0}, {1.7e308, 1.7e308, 0}, {0, 1.7e308, 0}}, true);
  for (const int shape : {0, 1}) {
    EXPECT_EQ(offset(huge, 1e308, z, shape), "operation 29 Offset" + where);
    EXPECT_EQ(offset(huge, -1e307, z, shape), "nothing");
  }
  EXPECT_EQ(offset(square, 1, CNuVector(0, 1, 1), 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(space, 1, z, 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(square, 1, z, 2), "operation 45 Offset with different shape" + where);
  EXPECT_EQ(offset(gap, 1, z, 0), "operation 26 Offset" + where);
  EXPECT_EQ(offset(square, -2, z, 0), "operation 28 Offset" + where);
  EXPECT_EQ(offset(square, -9, z, 1), "operation 28 Offset" + where);
  EXPECT_EQ(offset(back, 1, z, 0), "operation 28 Offset" + where);
  EXPECT_EQ(offset(back, 1, z, 1), "nothing");
  EXPECT_EQ(OffsetOf(square, 0, 1).Length(), 16);
}

// Chains that do not cross themselves: stars with arcs, polygons with fillets that are tangent or nearly so, open ones,
// two rooms with a neck, and skylines whose sides are in line.
CNuCompositeCurve AnyChain(Random& random, int kind, bool& closed) {
  std::vector<Corner> corners;
  closed = kind % 3 != 0;
  const int n = 4 + random.Below(9);
  const double low = random.Uniform(0.1, 0.9);
  std::vector<CNuPoint> star;
  for (int i = 0; i < n; ++i) {
    const double angle = (i + random.Uniform(-0.25, 0.25)) * 2 * Nu_PI / n, r = random.Uniform(low, 1);
    star.push_back(CNuPoint(r * std::cos(angle), r * std::sin(angle)));
  }
  if (kind < 3) {
    for (const CNuPoint& p : star) corners.push_back({p.x(), p.y(), random.Below(2) * random.Uniform(-0.5, 0.5)});
  } else if (kind < 6) {
    const double error = kind == 4 ? std::pow(10, random.Uniform(-15, -2)) : 0;
    for (int i = 0; i < n; ++i) {
      const CNuPoint b = star[i], u = star[(i + n - 1) % n] - b, w = star[(i + 1) % n] - b, o;
      const double lu = u.DistanceTo(o), lw = w.DistanceTo(o), t = random.Uniform(0.05, 0.4) * std::min(lu, lw);
      const double turn = std::atan2(w.x() * u.y() - w.y() * u.x(), -u.x() * w.x() - u.y() * w.y());
      const CNuPoint from = b + u * (t / lu), to = b + w * (t / lw);
      corners.push_back({from.x(), from.y(), std::tan(turn / 4) * (1 + error)});
      corners.push_back({to.x(), to.y(), 0});
    }
  } else if (kind < 8) {
    closed = true;
    const double w = random.Uniform(0.05, 0.4), far = random.Uniform(2, 3);
    corners = {{0.5, -w, 0}, {far, -w, random.Uniform(1, 3)}, {far, w, 0}, {0.5, w, random.Uniform(1, 3)}};
  } else {
    closed = true;
    for (int i = 0; i < n; ++i) {
      const double depth = -0.25 * random.Below(4);
      corners.push_back({0.25 * i, depth, 0});
      corners.push_back({0.25 * (i + 1), depth, 0});
    }
    corners.push_back({0.25 * n, 0.5, 0});
    corners.push_back({0, 0.5, 0});
    for (std::size_t i = 1; i < corners.size(); ++i) {
      if (corners[i].x == corners[i - 1].x && corners[i].y == corners[i - 1].y)
        corners.erase(corners.begin() + static_cast<long>(i--));
    }
  }
  if (!closed) corners.resize(2 + static_cast<std::size_t>(random.Below(static_cast<int>(corners.size()) - 2)));
  return Chain(corners, closed);
}

// What is left of the offset of a piece by itself, with some room beside it, is part of the offset.
std::vector<CNuPoint> FreePoints(CNuCompositeCurve& chain, double distance) {
  std::vector<CNuPoint> free;
  for (int i = 0; i < chain.GetNumberSegments(); ++i) {
    try {
      auto& segment = const_cast<CNuBoundedCurve&>(*chain.GetSegment(i));
      const std::unique_ptr<CNuBoundedCurve> moved(segment.Offset(distance * (1 + 1e-6), CNuVector(0, 0, 1), 0));
      const CNuPointArray samples = Samples(*moved, 9);
      for (int k = 0; k < 9; ++k) {
        if (chain.DistanceTo(samples[k]) >= std::fabs(distance) * (1 + 1e-7)) free.push_back(samples[k]);
      }
    } catch (const CNuOperationException&) {
      continue;  // it has shrunk to nothing
    }
  }
  return free;
}

void ExpectOffset(const CNuCompositeCurve& chain, const CNuCompositeCurve& offset, double reach, int shape) {
  const double size = chain.Length() + reach;
  EXPECT_FALSE(offset.IsSelfIntersecting());
  CNuPoint last = Samples(*offset.GetSegment(0), 2)[0];
  for (int k = 0; k < offset.GetNumberSegments(); ++k) {
    const CNuPointArray samples = Samples(*offset.GetSegment(k), 15);
    EXPECT_EQ(samples[0].DistanceTo(last), 0);
    last = samples.Last();
    if (offset.GetSegment(k)->GetType() == CNuObject::NuTypeCircularArc) {  // as its file makes it again
      const auto& arc = static_cast<const CNuCircularArc&>(*offset.GetSegment(k));
      EXPECT_EQ(FailureOf([&] { CNuCircularArc(arc.GetCentre(), samples[0], last, arc.GetSense()); }), "nothing") << k;
    }
    for (int j = 0; j < samples.GetSize(); ++j) {
      const double off = chain.DistanceTo(samples[j]) - reach;
      ASSERT_GT(off, -1e-10 * size) << k;
      ASSERT_TRUE(shape == 0 || off < 1e-10 * size) << k << " " << off;
    }
  }
}

// Every curve of the offset, and none is missing. One alone is what Offset() returns.
TEST(CompositeCurveOffset, KeepsTheDistanceAndCrossesNowhere) {
  Random random(7);
  const CNuVector z(0, 0, 1);
  int counts[3] = {};
  for (int i = 0; i < 1000; ++i) {
    SCOPED_TRACE(i);
    bool closed = false;
    CNuCompositeCurve chain = AnyChain(random, i % 9, closed);
    if (chain.IsSelfIntersecting()) continue;
    if (random.Below(2) == 0) chain.Reverse();
    const double reach = i % 9 == 8 ? 0.125 * (1 + random.Below(3)) : std::pow(10, random.Uniform(-2, 0));
    const double distance = random.Below(2) == 0 ? reach : -reach;
    const int shape = i % 2;
    CNuObjArray found(1);
    const int count = chain.OffsetAll(distance, z, shape, &found);
    std::vector<std::unique_ptr<CNuCompositeCurve>> curves;
    for (int k = 0; k < found.GetSize(); ++k) curves.emplace_back(static_cast<CNuCompositeCurve*>(found[k]));
    ASSERT_EQ(count, found.GetSize());
    ++counts[std::min(count, 2)];
    for (const auto& curve : curves) {
      EXPECT_TRUE(!closed || curve->IsClosed(1e-300));
      ExpectOffset(chain, *curve, reach, shape);
    }
    const std::string failure = FailureOf([&] { OffsetOf(chain, distance, shape); });
    const std::string cause = count == 0 ? "28" : "30";
    EXPECT_EQ(failure, count == 1 ? "nothing" : "operation " + cause + " Offset|CNuCompositeCurve::Offset() [0,0]");
    if (shape == 0) continue;
    for (const CNuPoint& p : FreePoints(chain, distance)) {
      double nearest = HUGE_VAL;
      for (const auto& curve : curves) nearest = std::min(nearest, curve->DistanceTo(p));
      EXPECT_LT(nearest, 1.1e-6 * reach) << "a curve is missing at " << p.x() << ", " << p.y();
    }
  }
  EXPECT_TRUE(counts[0] > 50 && counts[1] > 500 && counts[2] > 10) << counts[0] << " " << counts[1] << " " << counts[2];
}

// Long edges that criss-cross leave thousands of loops in their gaps: all of them, at the distance.
TEST(CompositeCurveOffset, FindsTheLoopsInATangle) {
  Random random(8);
  std::vector<Corner> corners;
  for (int i = 0; i < 600; ++i) corners.push_back({random.Uniform(-1, 1), random.Uniform(-1, 1), 0});
  CNuCompositeCurve chain = Chain(corners, false);
  constexpr double kReach = 1e-3;
  CNuObjArray found(1);
  EXPECT_GT(chain.OffsetAll(kReach, CNuVector(0, 0, 1), 1, &found), 5000);
  for (int k = 0; k < found.GetSize(); ++k) {
    const std::unique_ptr<CNuCompositeCurve> curve(static_cast<CNuCompositeCurve*>(found[k]));
    if (k % 200 == 0) ExpectOffset(chain, *curve, kReach, 1);
  }
}

// A rough outline, whose arcs cross several times within the tolerance: exactly one curve, at the distance.
TEST(CompositeCurveOffset, HoldsWhereCrossingsCoincide) {
  for (const double tol : {1e-9, 1e-8}) {
    Random random(8);
    CNuPointArray points(10000);
    for (int i = 0; i < 9999; ++i) {
      const double t = Nu_2PI * i / 9999, r = 0.5 + 1e-5 * random.Bell();
      points.Add(CNuPoint(r * std::cos(t), r * std::sin(t)));
    }
    points.Add(CNuPoint(points[0]));
    CNuPolyline outline(points);
    NuSetLengthTol(tol);
    const CNuCompositeCurve moved = OffsetOf(outline, -0.1, 1);
    NuSetLengthTol(1e-12);
    EXPECT_TRUE(moved.IsClosed(1e-300));
    EXPECT_NEAR(moved.Length(), 0.8 * Nu_PI, 1e-3);
    for (int i = 0; i < moved.GetNumberSegments(); i += 10) {
      EXPECT_NEAR(outline.DistanceTo(moved.GetSegment(i)->GetStartPoint()), 0.1, 20 * tol);
    }
  }
}

// Edges that run along each other within roundings leave pieces and loops that shrink to nothing when their ends meet.
TEST(CompositeCurveOffset, LeavesOutWhatShrinksToNothing) {
  Random random(9);
  const auto place = [&] { return 0.25 * std::round(4.0 * random.Uniform(-1, 1)) + 1e-8 * random.Uniform(-1, 1); };
  int refused = 0;
  for (int round = 0; round < 100; ++round) {
    CNuPointArray points(30);
    for (int i = 0; i < 30; ++i) {
      const double x = place(), y = place();
      points.Add(CNuPoint(x, y));
    }
    CNuObjArray found(1);
    try {
      CNuPolyline(points).OffsetAll(1e-6, CNuVector(0, 0, 1), 1, &found);
    } catch (const CNuOperationException&) {
      ++refused;
    }
    for (int k = 0; k < found.GetSize(); ++k) {
      const std::unique_ptr<CNuBoundedCurve> curve(static_cast<CNuBoundedCurve*>(found[k]));
      EXPECT_GT(curve->Length(), NuGetLengthTol()) << round;
    }
  }
  EXPECT_LE(refused, 3);
}

// A power of two changes nothing but the size, where powers of the coordinates leave the doubles.
TEST(CompositeCurveOffset, WorksAtAnySize) {
  const double lengthTol = NuGetLengthTol();
  for (const double s : {0x1p-900, 0x1p-400, 0x1p-100, 0x1p100, 0x1p415, 0x1p800, 0x1p1019}) {
    const auto scaled = [&](const CNuPoint& p) { return CNuPoint(p.x() * s, p.y() * s, p.z() * s); };
    NuSetLengthTol(lengthTol * std::min(s, 1.0));
    CNuCompositeCurve chain, unit = Chain({{-3, -1, 0.5}, {3, -1, 0}, {3, 1, 0.5}, {-3, 1, 0}}, true);
    for (int i = 0; i < 4; ++i) {
      const CNuPointArray p = Samples(*unit.GetSegment(i), 3);
      if (i % 2 == 0) chain.AddSegment(CNuCircularArc(scaled(p[0]), scaled(p[1]), scaled(p[2])), NuTrue);
      if (i % 2 == 1) chain.AddSegment(CNuLineSegment(scaled(p[0]), scaled(p[2])), NuTrue);
    }
    EXPECT_TRUE(chain.IsPlanar(1e-12 * s) && !chain.IsSelfIntersecting()) << s;
    CNuPoint centre;
    double radius = 0, expected = 0;
    unit.BoundingCircle(&expected, &centre);
    chain.BoundingCircle(&radius, &centre);
    EXPECT_NEAR(radius / s, expected, 1e-13);
    for (const int shape : {0, 1}) {
      NuSetLengthTol(lengthTol);
      const double length = OffsetOf(unit, 0.5, shape).Length();
      NuSetLengthTol(lengthTol * std::min(s, 1.0));
      EXPECT_NEAR(OffsetOf(chain, 0.5 * s, shape).Length() / s, length, 1e-12) << s;
    }
  }
  NuSetLengthTol(lengthTol);
}

// J. Steiner: around what is convex the length grows by 2 pi d, and the area by length d + pi d^2. What has grown
// shrinks back.
TEST(CompositeCurveOffset, GrowsConvexShapesByTheBook) {
  Random random(8);
  for (int i = 0; i < 100; ++i) {
    std::vector<Corner> corners;
    const int n = 3 + random.Below(6);
    for (int k = 0; k < n; ++k) {
      const double angle = 2 * Nu_PI * (k + random.Uniform(-0.3, 0.3)) / n;
      corners.push_back({std::cos(angle), std::sin(angle), i % 2 * random.Uniform(0, 0.5) * std::tan(Nu_PI / 4 / n)});
    }
    CNuCompositeCurve chain = Chain(corners, true);
    const double d = random.Uniform(0.01, 3), length = chain.Length();
    CNuCompositeCurve grown = OffsetOf(chain, d, 1);
    EXPECT_NEAR(grown.Length(), length + 2 * Nu_PI * d, 1e-12);
    EXPECT_NEAR(Area(grown), Area(chain) + d * length + Nu_PI * d * d, 1e-5);
    EXPECT_EQ(grown.GetNumberSegments(), 2 * n);
    CNuCompositeCurve back = OffsetOf(grown, -d, 0);
    EXPECT_EQ(back.GetNumberSegments(), n);
    for (const Corner& corner : corners) EXPECT_LT(back.DistanceTo(CNuPoint(corner.x, corner.y)), 1e-11);
  }
}

}  // namespace
