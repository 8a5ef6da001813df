#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

CNuPolyline Chain(const std::vector<CNuPoint>& list) {
  CNuPointArray points(1);
  for (const CNuPoint& p : list) points.Add(p);
  return CNuPolyline(points);
}

CNuPolyline Square(double side) {
  return Chain({{0, 0, 0}, {side, 0, 0}, {side, side, 0}, {0, side, 0}, {0, 0, 0}});
}

CNuPolyline OffsetOf(CNuPolyline curve, double distance) {
  const std::unique_ptr<CNuBoundedCurve> moved(curve.Offset(distance));
  return dynamic_cast<const CNuPolyline&>(*moved);
}

TEST(Polyline, AnswersForItsShape) {
  CNuPolyline square = Square(2);
  EXPECT_EQ(square.GetType(), CNuObject::NuTypePolyline);
  EXPECT_EQ(square.GetSize(), 5);
  EXPECT_EQ(square.Length(), 8);
  EXPECT_EQ(square.Area(), 4);
  EXPECT_LT(square.Centroid().DistanceTo(CNuPoint(1, 1, 0)), 1e-15);
  EXPECT_TRUE(square.IsClosed(1e-12) && square.IsPlanar(1e-12) && !square.IsSelfIntersecting());
  CNuPoint p, q;
  CNuVector tangent, normal;
  square.GetStartData(&p, &tangent, &normal);
  EXPECT_TRUE(tangent.IsEqual(CNuVector(1, 0, 0), 1e-15) && normal.IsEqual(CNuVector(0, 0, 1), 1e-15));
  square.Reverse();
  square.GetEndData(&p, &tangent, &normal);
  EXPECT_TRUE(tangent.IsEqual(CNuVector(-1, 0, 0), 1e-15) && normal.IsEqual(CNuVector(0, 0, -1), 1e-15));
  double radius = 0;
  square.BoundingBox(&p, &q);
  EXPECT_TRUE(p.IsZero(1e-300) && q.IsEqual(CNuPoint(2, 2, 0), 1e-300));
  square.BoundingCircle(&radius, &p);
  EXPECT_NEAR(radius, std::sqrt(2.0), 1e-15);
  EXPECT_LT(p.DistanceTo(CNuPoint(1, 1, 0)), 1e-15);
  const CNuPolyline open = Chain({{0, 0, 0}, {4, 0, 0}, {4, 4, 1}, {0, 4, 0}});
  EXPECT_FALSE(open.IsClosed(1) || open.IsPlanar(0.1));
  EXPECT_EQ(Chain({{0, 0, 0}, {2, 0, 0}, {2, 4, 0}, {2, 0, 0}}).Area(), 0);
  EXPECT_LT(Chain({{0, 0, 0}, {2, 0, 0}, {2, 2, 0}}).Centroid().DistanceTo(CNuPoint(4 / 3.0, 2 / 3.0, 0)), 1e-15);
  EXPECT_LT(Chain({{0, 0, 5}, {2, 0, 5}}).Centroid().DistanceTo(CNuPoint(1, 0, 5)), 1e-15);
}

TEST(Polyline, MovesWithItsFrame) {
  CNuPolyline square = Square(2);
  square.Translate(1, 2, 3);
  square.Rotate(90, CNuVector(1, 0, 0), CNuPoint(1, 2, 3));
  EXPECT_LT(square.GetPoint(2).DistanceTo(CNuPoint(3, 2, 5)), 1e-15);
  square.Translate(CNuPoint(7, 8, 9));
  EXPECT_EQ(square[0].DistanceTo(CNuPoint(7, 8, 9)), 0);
  EXPECT_NEAR(square.Area(), 4, 1e-14);
  EXPECT_LT(square.Centroid().DistanceTo(CNuPoint(8, 8, 10)), 1e-14);
  EXPECT_NEAR(CNuPoint(8, 13, 10).DistanceTo(square), std::sqrt(26.0), 1e-14);
}

TEST(Polyline, RefusesWhatHasNoMeaning) {
  CNuPolyline square = Square(2), space = Chain({{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {1, 1, 1}});
  const CNuVector z(0, 0, 1);
  const auto offset = [](CNuPolyline& curve, double d, const CNuVector& normal, int shape) {
    return FailureOf([&] { delete curve.Offset(d, normal, shape); });
  };
  const std::string where = "|CNuPolyline::Offset() [0,0]";
  EXPECT_EQ(FailureOf([] { CNuPolyline(CNuPointArray(3)); }), "construction 1 size of CNuPointArray|CNuPolyline [0,0]");
  EXPECT_EQ(FailureOf([&] { square.GetPoint(5); }), "operation 3 operation|CNuPolyline::GetPoint() [0,4]");
  EXPECT_EQ(FailureOf([&] { square[-1]; }), "operation 3 element operator[]|CNuPolyline [0,4]");
  EXPECT_EQ(offset(square, 1, CNuVector(0, 0, 0), 0), "operation 9 Offset" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(4), 0), "operation 10 Offset" + where);
  EXPECT_EQ(offset(square, kNaN, z, 0), "operation 29 Offset" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(0, 1, 1), 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(space, 1, z, 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(square, 1, z, 2), "operation 45 Offset with different shape" + where);
  EXPECT_EQ(offset(square, -1.1, z, 0), "operation 28 Offset" + where);
  CNuPolyline slot =
      Chain({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {6, 10, 0}, {5, 1, 0}, {4, 10, 0}, {0, 10, 0}, {0, 0, 0}});
  for (const int shape : {0, 1}) {
    CNuObjArray rooms(1);
    EXPECT_EQ(offset(slot, -1, z, shape), "operation 30 Offset" + where);
    ASSERT_TRUE(slot.OffsetAll(-1, z, shape, nullptr) == 2 && slot.OffsetAll(-1, z, shape, &rooms) == 2);
    const std::unique_ptr<CNuObject> left(rooms[0]), right(rooms[1]);
    EXPECT_NEAR(dynamic_cast<CNuBoundedCurve&>(*left).Length(), dynamic_cast<CNuBoundedCurve&>(*right).Length(), 1e-12);
    EXPECT_EQ(left->GetType(), shape == 0 ? CNuObject::NuTypePolyline : CNuObject::NuTypeCompositeCurve);
    EXPECT_EQ(square.OffsetAll(-1.1, z, shape, &rooms), 0);
  }
  CNuPolyline back = Chain({{0, 0, 0}, {5, 0, 0}, {1, 0, 0}});
  EXPECT_EQ(offset(back, 1, z, 0), "operation 28 Offset" + where);
  EXPECT_EQ(CNuCircle(1).ToPolyline(2).GetSize(), 2);
  // Every curve has the same bounds on the number of its samples.
  const CNuCircularArc arc(CNuPoint(), CNuPoint(1, 0, 0), CNuPoint(0, 1, 0), NuTrue);
  for (const int n : {-1, 1, 10'000'001, std::numeric_limits<int>::max()}) {
    EXPECT_NE(FailureOf([&] { CNuLineSegment().ToPolyline(n); }).find("operation 12 conversion"), std::string::npos);
    EXPECT_NE(FailureOf([&] { arc.ToPointArray(n); }).find("operation 12 conversion"), std::string::npos);
    EXPECT_NE(FailureOf([&] { CNuCircle(1).ToPointArray(n); }).find("operation 12 conversion"), std::string::npos);
    EXPECT_NE(FailureOf([&] { CNuEllipse(2, 1).ToPointArray(n); }).find("operation 12 conversion"), std::string::npos);
  }
}

// It has no points then, which no other polyline lacks.
TEST(Polyline, FailsWhenItWasMovedFrom) {
  CNuPointArray corners(2);
  for (const int x : {0, 3}) corners.Add(CNuPoint(x, 0, 0));
  CNuPolyline line(corners);
  const CNuPolyline other(std::move(line));
  CNuPoint p;
  const std::string empty = "operation 8 element operator[]|CNuPointArray [0,0]";
  EXPECT_EQ(FailureOf([&] { line.GetStartData(&p, nullptr, nullptr); }), empty);
  EXPECT_EQ(FailureOf([&] { line.GetEndData(&p, nullptr, nullptr); }), empty);
  EXPECT_EQ(FailureOf([&] { line.Centroid(); }), empty);
  EXPECT_EQ(FailureOf([&] { line.Area(); }), empty);
  EXPECT_EQ(FailureOf([&] { line.DistanceTo(&other, &p, &p); }), empty);
  EXPECT_EQ(FailureOf([&] { other.DistanceTo(&line, &p, &p); }), empty);
  EXPECT_EQ(line.Length(), 0.0);
}

TEST(Polyline, OffsetsWithSharpCorners) {
  EXPECT_NEAR(OffsetOf(Square(4), 1).Area(), 36, 1e-13);
  EXPECT_NEAR(OffsetOf(Square(4), -1).Area(), 4, 1e-13);
  CNuPolyline clockwise = Square(4);
  clockwise.Reverse();
  EXPECT_NEAR(OffsetOf(clockwise, 1).Area(), 36, 1e-13);
  const std::unique_ptr<CNuBoundedCurve> inside(clockwise.Offset(1, CNuVector(0, 0, 3), 0));
  EXPECT_NEAR(inside->Length(), 8, 1e-13);
  // A chamfer of length 1 is gone at an inward offset of 2, an arm of width 2 at one of 1.1.
  const double c = std::sqrt(0.5);
  CNuPolyline chamfered = Chain({{0, 0, 0}, {9, 0, 0}, {9, 9, 0}, {c, 9, 0}, {0, 9 - c, 0}, {0, 0, 0}});
  EXPECT_EQ(OffsetOf(chamfered, -2).GetSize(), 5);
  EXPECT_NEAR(OffsetOf(chamfered, -2).Area(), 25, 1e-12);
  CNuPolyline arm =
      Chain({{0, 0, 0}, {4, 0, 0}, {4, 1, 0}, {9, 1, 0}, {9, 3, 0}, {4, 3, 0}, {4, 4, 0}, {0, 4, 0}, {0, 0, 0}});
  EXPECT_NEAR(OffsetOf(arm, -1.1).Area(), 1.8 * 1.8, 1e-12);
  const CNuPolyline open = OffsetOf(Chain({{0, 0, 0}, {5, 0, 0}, {5, 5, 0}}), -1);
  EXPECT_EQ(open.GetSize(), 3);
  EXPECT_LT(open[0].DistanceTo(CNuPoint(0, 1, 0)) + open[1].DistanceTo(CNuPoint(4, 1, 0)), 1e-14);
}

TEST(Polyline, TellsCrossingsFromNeighbours) {
  const struct {
    std::vector<CNuPoint> points;
    bool crosses;
  } cases[] = {{{{0, 0, 0}}, false},
               {{{0, 0, 0}, {1, 0, 0}}, false},
               {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 0, 0}}, false},
               {{{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 0}}, true},
               {{{0, 0, 0}, {1, 1, 0}, {1, 0, 0}, {0, 1, 1e-9}, {0, 2, 0}}, true},
               {{{0, 0, 0}, {1, 1, 0}, {1, 0, 1}, {0, 1, 1}}, false},
               {{{0, 0, 0}, {2, 0, 0}, {1, 0, 0}}, true},
               {{{0, 0, 0}, {2, 0, 0}, {2, 0, 0}, {3, 0, 0}}, false},
               {{{0, 0, 0}, {2, 0, 0}, {2, 1, 0}, {1, 0, 0}}, true},
               {{{0, 0, 0}, {2, 0, 0}, {0, 0, 0}}, true}};
  for (const auto& row : cases) {
    CNuPolyline curve = Chain(row.points);
    if (row.points.size() == 5 && row.points[3].z() > 0) NuSetLengthTol(1e-8);
    EXPECT_EQ(curve.IsSelfIntersecting() == NuTrue, row.crosses) << row.points.size() << " " << row.points.back().x();
    curve.Reverse();
    EXPECT_EQ(curve.IsSelfIntersecting() == NuTrue, row.crosses);
    NuSetLengthTol(1e-12);
  }
  const int n = 50000;
  CNuPointArray spiral(n);
  for (int i = 0; i < n; ++i) spiral.Add(CNuPoint(1e-3 * i * std::cos(1e-2 * i), 1e-3 * i * std::sin(1e-2 * i), 0));
  EXPECT_FALSE(CNuPolyline(spiral).IsSelfIntersecting());
  spiral.Add(CNuPoint());
  EXPECT_TRUE(CNuPolyline(spiral).IsSelfIntersecting());
  // The strands of a rope pass the same cells; halving these took minutes where comparing all pairs takes a moment.
  Random random(61);
  CNuPointArray rope(1500);
  for (int i = 0; i < 1500; ++i) rope.Add(RandomPoint(random, 1e-3) + CNuPoint(i % 2, 0, 0));
  EXPECT_FALSE(CNuPolyline(rope).IsSelfIntersecting());
}

TEST(Polyline, KeepsNoShortEdge) {
  const double e = 0.4e-9;
  const struct {
    std::vector<CNuPoint> points;
    int left;
  } cases[] = {{{{0, 0, 0}}, 1},
               {{{0, 0, 0}, {e, 0, 0}}, 1},
               {{{0, 0, 0}, {e, 0, 0}, {2 * e, 0, 0}, {3 * e, 0, 0}, {5, 0, 0}}, 3},
               {{{0, 0, 0}, {1, 0, 0}, {1 + e, 0, 0}}, 2},
               {{{0, 0, 0}, {1, 0, 0}, {1, 1, 0}, {e, 0, 0}, {0, 0, 0}}, 4}};
  for (const auto& row : cases) {
    CNuPolyline curve = Chain(row.points);
    const CNuPoint end = curve.GetEndPoint();
    curve.RemoveShortEdges();
    EXPECT_EQ(curve.GetSize(), row.left);
    EXPECT_TRUE(row.left == 1 || curve.GetEndPoint().DistanceTo(end) == 0);
    for (int i = 1; i < curve.GetSize(); ++i) EXPECT_GE(curve[i].DistanceTo(curve[i - 1]), 1e-9);
  }
}

// A law that every bounded curve keeps is asked of every kind: 0 a segment, 1 an arc, 2 a polyline, 3 a composite
// curve, flat ones (all in z = 0) too.
std::unique_ptr<CNuBoundedCurve> AnyCurve(Random& random, int kind, bool flat) {
  const auto point = [&] {
    CNuPoint p = RandomPoint(random, 2);
    if (flat) p.z() = 0;
    return p;
  };
  if (kind == 0) return std::make_unique<CNuLineSegment>(point(), point());
  if (kind == 1 && random.Below(4) == 0) {
    const CNuPoint c = point(), start = c + CNuPoint(random.Uniform(0.1, 2), 0, 0);
    auto turn = std::make_unique<CNuCircularArc>(c, start, start, NuTrue);
    if (!flat) turn->Rotate(random.Uniform(0, 360), RandomPoint(random, 1).To3DVector(), c);
    return turn;
  }
  if (kind == 1) return std::make_unique<CNuCircularArc>(point(), point(), point());
  CNuPointArray points(4);
  for (int i = 0; i < 4; ++i) points.Add(point());
  if (kind == 2) return std::make_unique<CNuPolyline>(points);
  auto chain = std::make_unique<CNuCompositeCurve>();
  chain->AddSegment(CNuCircularArc(points[0], points[1], points[2]), NuTrue);
  chain->AddSegment(CNuLineSegment(points[2], points[3]), NuTrue);
  chain->AddSegment(CNuLineSegment(point(), points[0]), NuFalse);
  return chain;
}

// Arcs through random points can have a centre far away, with the rounding of its coordinates.
double Slack(const CNuBoundedCurve& curve) {
  if (curve.GetType() == CNuObject::NuTypeCompositeCurve) {
    return Slack(*static_cast<const CNuCompositeCurve&>(curve).GetSegment(1));
  }
  const bool isArc = curve.GetType() == CNuObject::NuTypeCircularArc;
  return 50 * kEps * (1 + (isArc ? static_cast<const CNuCircularArc&>(curve).GetRadius() : 0));
}

CNuPointArray Samples(const CNuBoundedCurve& curve, int n) {
  if (curve.GetType() == CNuObject::NuTypeCircularArc) return static_cast<const CNuCircularArc&>(curve).ToPointArray(n);
  if (curve.GetType() == CNuObject::NuTypeLineSegment) {
    return static_cast<const CNuLineSegment&>(curve).ToPolyline(n).GetPoints();
  }
  CNuPointArray samples(n);
  if (curve.GetType() == CNuObject::NuTypeCompositeCurve) {
    const auto& chain = static_cast<const CNuCompositeCurve&>(curve);
    for (int i = 0; i < 3; ++i) samples.Append(Samples(*chain.GetSegment(i), n / 3));
    return samples;
  }
  const auto& chain = static_cast<const CNuPolyline&>(curve);
  for (int i = 1; i < chain.GetSize(); ++i) {
    const CNuLineSegment edge(chain[i - 1], chain[i]);
    samples.Append(edge.ToPolyline(n / (chain.GetSize() - 1)).GetPoints());
  }
  return samples;
}

// Of the distances of one curve's samples from the other the least may be too large by no more than half their spacing
// lets it, and is never smaller than the answer.
TEST(BoundedCurves, HaveTheLeastDistanceThatSamplesShow) {
  Random random(31);
  for (int i = 0; i < 400; ++i) {
    const int kinds = i % 16;
    const bool flat = i % 2 == 0;
    const auto first = AnyCurve(random, kinds / 4, flat), second = AnyCurve(random, kinds % 4, flat);
    CNuPoint p, q, r, s;
    const double distance = first->DistanceTo(second.get(), &p, &q);
    EXPECT_NEAR(distance, p.DistanceTo(q), 8 * kEps);
    const double slack = Slack(*first) + Slack(*second);
    EXPECT_LT(p.DistanceTo(*first) + q.DistanceTo(*second), slack) << i;
    EXPECT_NEAR(second->DistanceTo(first.get(), &r, &s), distance, slack) << i;
    const int n = 301;
    const CNuPointArray samples = Samples(*first, n);
    double least = 1e9;
    for (int k = 0; k < samples.GetSize(); ++k) least = std::min(least, samples[k].DistanceTo(*second));
    EXPECT_GE(least, distance - slack) << i;
    EXPECT_LE(least, distance + first->Length() / (n - 4)) << i;
  }
}

// A rigid motion by the frame carries every answer along; the box and the circle enclose the samples and touch them.
TEST(BoundedCurves, KeepTheLawsOfMotionAndEnclosure) {
  Random random(32);
  for (int i = 0; i < 300; ++i) {
    const bool flat = i % 2 == 0;
    const auto first = AnyCurve(random, i % 4, flat), second = AnyCurve(random, i / 4 % 4, flat);
    const CNuPoint target = RandomPoint(random, 3), centre = RandomPoint(random, 3);
    const CNuVector axis = RandomPoint(random, 1).To3DVector();
    CNuPoint p, q, low, high, middle, turned = target;
    CNuVector tangent, normal, tangentAfter, normalAfter;
    double radius = 0, radiusAfter = 0;
    const double before = first->DistanceTo(second.get(), &p, &q), toTarget = first->DistanceTo(target);
    const double length = first->Length();
    first->BoundingBox(&low, &high);
    first->BoundingCircle(&radius, &middle);
    const CNuPointArray samples = Samples(*first, 400);
    CNuPoint sampledLow, sampledHigh;
    samples.BoundingBox(&sampledLow, &sampledHigh);
    const double slack = 1e-3 * length;
    EXPECT_LT(low.DistanceTo(sampledLow) + high.DistanceTo(sampledHigh), slack);
    for (int k = 0; k < 3; ++k) {
      EXPECT_LE(low.To3DVector()[k], sampledLow.To3DVector()[k] + 10 * kEps);
      EXPECT_GE(high.To3DVector()[k], sampledHigh.To3DVector()[k] - 10 * kEps);
    }
    double farthest = 0;
    for (int k = 0; k < samples.GetSize(); ++k) farthest = std::max(farthest, samples[k].DistanceTo(middle));
    EXPECT_LE(farthest, radius * (1 + 20 * kEps)) << i;
    EXPECT_GE(farthest, radius - slack) << i;
    EXPECT_TRUE(radius <= 0.5 * low.DistanceTo(high) * (1 + 1e-12)) << i;
    first->GetEndData(&p, &tangent, &normal);
    EXPECT_EQ(p.DistanceTo(first->GetEndPoint()), 0);
    EXPECT_LT(std::fabs(tangent.Magnitude() - 1) + std::fabs(normal.Magnitude() - 1), 1e-14);
    EXPECT_TRUE(i % 4 >= 2 || std::fabs(tangent % normal) < 1e-14);
    for (CNuBoundedCurve* curve : {first.get(), second.get()}) {
      curve->Rotate(70, axis, centre);
      curve->Translate(1, 2, 3);
    }
    turned.Rotate(70, axis, centre);
    turned.Translate(1, 2, 3);
    EXPECT_NEAR(first->DistanceTo(second.get(), &p, &q), before, 200 * kEps);
    EXPECT_NEAR(first->DistanceTo(turned), toTarget, 100 * kEps);
    first->BoundingCircle(&radiusAfter, &middle);
    EXPECT_NEAR(radiusAfter, radius, 100 * kEps * (1 + radius));
    EXPECT_EQ(first->Length(), length);
    first->Translate(target);
    EXPECT_EQ(first->GetTranslation().To3DPoint().DistanceTo(target), 0);
  }
}

// However flat it is, the arc passes through its points, and is rebuilt from its centre, ends and sense.
TEST(CircularArc, PassesThroughItsThreePoints) {
  Random random(23);
  for (int i = 0; i < 2000; ++i) {
    const auto any = [&](double size) { return RandomPoint(random, size); };
    const CNuPoint p1 = any(3), p3 = any(3);
    const CNuPoint p2 = p1 + (p3 - p1) * random.Uniform(0.05, 0.95) + any(std::pow(10, random.Uniform(-8, 1)));
    const CNuCircularArc arc(p1, p2, p3);
    const double rounding = 10 * kEps * (3 + arc.GetRadius());
    EXPECT_LT(arc.DistanceTo(p2), rounding) << i << " " << arc.GetRadius();
    const CNuCircularArc again(arc.GetCentre(), arc.GetStartPoint(), arc.GetEndPoint(), arc.GetSense());
    EXPECT_LT(again.DistanceTo(p2), rounding + (arc.GetSweep() < 179 ? 0 : 1e-6)) << i << " " << arc.GetSweep();
  }
  const auto far = [](double angle) { return CNuPoint(1e306 * std::cos(angle), 1e306 * std::sin(angle), 0); };
  EXPECT_NEAR(CNuCircularArc(far(0.0), far(0.2), far(0.4)).GetRadius() / 1e306, 1.0, 1e-13);
}

TEST(CircularArc, KnowsWhereItRuns) {
  const CNuPoint c(1, 2, 3), east(2, 2, 3), north(1, 3, 3), west(0, 2, 3), up(1, 2, 4);
  const struct {
    CNuPoint start, end;
    ENuBoolean sense;
    double sweep;
    CNuVector normal;
    CNuPoint middle;
  } cases[] = {{east, north, NuTrue, 90, {0, 0, 1}, {1 + std::sqrt(0.5), 2 + std::sqrt(0.5), 3}},
               {east, north, NuFalse, 270, {0, 0, 1}, {1 - std::sqrt(0.5), 2 - std::sqrt(0.5), 3}},
               {north, east, NuTrue, 270, {0, 0, 1}, {1 - std::sqrt(0.5), 2 - std::sqrt(0.5), 3}},
               {east, west, NuTrue, 180, {0, 0, 1}, {1, 3, 3}},
               {east, west, NuFalse, 180, {0, 0, 1}, {1, 1, 3}},
               {east, east, NuTrue, 360, {0, 0, 1}, {0, 2, 3}},
               {east, east, NuFalse, 360, {0, 0, 1}, {0, 2, 3}},
               {up, up, NuTrue, 360, {1, 0, 0}, {1, 2, 2}},
               {east, up, NuTrue, 270, {0, 1, 0}, {1 - std::sqrt(0.5), 2, 3 - std::sqrt(0.5)}}};
  for (const auto& row : cases) {
    CNuCircularArc arc(c, row.start, row.end, row.sense);
    EXPECT_EQ(arc.GetSense(), row.sense);
    EXPECT_NEAR(arc.GetSweep(), row.sweep, 1e-13);
    EXPECT_TRUE(arc.GetNormal().IsEqual(row.normal, 1e-15)) << row.sweep;
    EXPECT_LT(arc.ToPointArray(3)[1].DistanceTo(row.middle), 1e-14) << row.sweep;
    EXPECT_EQ(arc.GetStartPoint().DistanceTo(row.start) + arc.GetEndPoint().DistanceTo(row.end), 0);
    EXPECT_NEAR(arc.Length(), arc.GetCircle().GetRadius() * row.sweep * kDegree, 1e-14);
    // It is rebuilt from what it tells, also after a motion, but for the plane of half and full turns.
    CNuCircularArc moved(arc);
    moved.Rotate(110, CNuVector(3, 1, 2));
    if (std::fmod(row.sweep, 180) != 0) {
      const CNuCircularArc again(moved.GetCentre(), moved.GetStartPoint(), moved.GetEndPoint(), moved.GetSense());
      EXPECT_LT(again.ToPointArray(3)[1].DistanceTo(moved.ToPointArray(3)[1]), 1e-14);
    }
    arc.Reverse();
    EXPECT_LT(arc.ToPointArray(3)[1].DistanceTo(row.middle), 1e-14) << row.sweep;
    EXPECT_NE(arc.GetSense(), row.sense);
  }
}

TEST(BoundedCurves, RefuseWhatTheyCannotBe) {
  const CNuPoint o, x(1, 0, 0), y(0, 1, 0), nan(kNaN, 0, 0);
  const std::string segment = "construction 10 |CNuLineSegment [0,0]", arc = "construction 12 |CNuCircularArc [0,0]";
  EXPECT_EQ(FailureOf([&] { CNuLineSegment(x, x + CNuPoint(0, 1e-13, 0)); }), segment);
  EXPECT_EQ(FailureOf([&] { CNuLineSegment(x, nan); }), segment);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(o, x, y * 1.001, NuTrue); }), arc);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(x, x, x, NuTrue); }), arc);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(o, nan, x, NuTrue); }), arc);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(o, x, x * 3); }), arc);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(o, x, nan); }), arc);
  EXPECT_EQ(FailureOf([&] { CNuCircularArc(o, x, x); }), "construction 10 |CNuCircularArc [0,0]");
  CNuLineSegment s;
  CNuCircularArc a(o, x, y, NuTrue);
  EXPECT_EQ(FailureOf([&] { s.ToPolyline(1); }), "operation 12 conversion|CNuLineSegment::ToPolyline() [0,0]");
  EXPECT_EQ(FailureOf([&] { s.DistanceTo(nullptr, nullptr, nullptr); }),
            "operation 45 calculation|CNuBoundedCurve::DistanceTo() [0,0]");
  EXPECT_EQ(FailureOf([&] { a.ToPointArray(1); }),
            "operation 12 conversion|CNuCircularArc::ToPolyline/PointArray() [0,0]");
  const auto offset = [](CNuBoundedCurve& curve, double d, const CNuVector& n) {
    return FailureOf([&] { delete curve.Offset(d, n, 0); });
  };
  EXPECT_EQ(offset(s, 1, CNuVector()), "operation 9 Offset|CNuLineSegment::Offset() [0,0]");
  EXPECT_EQ(offset(s, 1, CNuVector(2, 0, 0)), "operation 26 Offset|CNuLineSegment::Offset() [0,0]");
  EXPECT_EQ(offset(a, 1, CNuVector()), "operation 9 Offset|CNuCircularArc::Offset() [0,0]");
  EXPECT_EQ(offset(a, 1, CNuVector(0, 1, 1)), "operation 45 Offset of non-planar curve|CNuCircularArc::Offset() [0,0]");
  EXPECT_EQ(offset(a, -1, CNuVector(0, 0, 1)), "operation 27 Offset|CNuCircularArc::Offset() [0,0]");
  EXPECT_EQ(offset(a, 2, CNuVector(0, 0, -1)), "operation 27 Offset|CNuCircularArc::Offset() [0,0]");
}

TEST(BoundedCurves, OffsetToTheRight) {
  CNuLineSegment segment;
  const std::unique_ptr<CNuBoundedCurve> below(segment.Offset(2)), above(segment.Offset(2, CNuVector(1, 0, -1), 7));
  EXPECT_EQ(below->GetStartPoint().DistanceTo(CNuPoint(0, -2, 0)), 0);
  EXPECT_EQ(above->GetEndPoint().DistanceTo(CNuPoint(1, 2, 0)), 0);
  for (const double d : {0.75, -0.5}) {
    for (const ENuBoolean sense : {NuTrue, NuFalse}) {
      CNuCircularArc arc(CNuPoint(1, 1, 1), CNuPoint(2, 1, 1), CNuPoint(1, 2, 1), sense);
      arc.Rotate(30, CNuVector(1, 0, 0));
      const std::unique_ptr<CNuBoundedCurve> moved(arc.Offset(d));
      const auto& other = dynamic_cast<const CNuCircularArc&>(*moved);
      EXPECT_NEAR(other.GetRadius(), sense ? 1 + d : 1 - d, 1e-15);
      EXPECT_NEAR(other.GetSweep(), arc.GetSweep(), 1e-13);
      for (int i = 0; i < 7; ++i) EXPECT_NEAR(other.ToPointArray(7)[i].DistanceTo(arc), std::fabs(d), 1e-14);
    }
  }
}

TEST(LineSegment, CountsWhatItMeets) {
  for (const CNuPoint& c : {CNuPoint(), CNuPoint(2e4, -1e4, 3e4)}) {
    const auto at = [&](double x, double y, double z = 0) { return c + CNuPoint(x, y, z); };
    const double off = 1e-9;
    const CNuLineSegment s(at(0, 0), at(4, 0));
    CNuPoint p, q;
    const struct {
      CNuPoint start, end;
      int segment, line;
    } segments[] = {{at(1, -1), at(1, 1), 1, 1},
                    {at(1, 0), at(1, 1), 1, 1},
                    {at(1, off), at(1, 1), 0, 1},
                    {at(1, 1), at(1, 2), 0, 1},
                    {at(4, -1), at(4, 1), 1, 1},
                    {at(4 + off, -1), at(4 + off, 1), 0, 0},
                    {at(1, -1, off), at(1, 1, off), 0, 0},
                    {at(4, 0), at(6, 0), 1, 0},
                    {at(3, 0), at(6, 0), 0, 0},
                    {at(5, 0), at(6, 0), 0, 0},
                    {at(0, 0), at(4, 0), 0, 0},
                    {at(0, 1), at(4, 1), 0, 0}};
    for (const auto& row : segments) {
      const CNuLineSegment other(row.start, row.end);
      EXPECT_EQ(s.IntersectWith(other, &p), row.segment) << row.start.x() - c.x();
      EXPECT_EQ(other.IntersectWith(s, &q), row.segment);
      EXPECT_TRUE(row.segment == 0 || p.DistanceTo(s) + p.DistanceTo(other) + p.DistanceTo(q) < 1e-10);
      EXPECT_EQ(s.IntersectWith(other.GetLine(), &p), row.line) << row.start.x() - c.x();
    }
    const struct {
      CNuPoint centre, start, end;
      ENuBoolean sense;
      int count;
    } arcs[] = {{at(2, 0), at(1, 0), at(3, 0), NuTrue, 2},
                {at(2, 0), at(2, 1), at(2, -1), NuTrue, 1},
                {at(2, 1), at(1, 1), at(3, 1), NuTrue, 1},
                {at(2, 1), at(1, 1), at(3, 1), NuFalse, 0},
                {at(2, 1 - off), at(3, 1 - off), at(3, 1 - off), NuTrue, 2},
                {at(2, 1 + off), at(3, 1 + off), at(3, 1 + off), NuTrue, 0},
                {at(5, 0), at(6, 0), at(4, 0), NuTrue, 1},
                {at(5 + off, 0), at(6 + off, 0), at(4 + off, 0), NuTrue, 0},
                {at(2, 3), at(2, 0), at(2, 0), NuTrue, 1},
                {at(2, 0, 1), at(3, 0, 1), at(2, 0, 2), NuTrue, 1}};
    for (const auto& row : arcs) {
      const CNuCircularArc arc(row.centre, row.start, row.end, row.sense);
      EXPECT_EQ(s.IntersectWith(arc, &p, &q), row.count) << row.centre.x() - c.x() << " " << row.centre.y() - c.y();
      EXPECT_TRUE(row.count == 0 || p.DistanceTo(s) + p.DistanceTo(arc) < 1e-10);
      EXPECT_TRUE(row.count < 2 || p.x() < q.x());
    }
  }
  CNuLineSegment s(CNuPoint(1, 2, 3), CNuPoint(1, 2, 7));
  s.Reverse();
  EXPECT_EQ(s.GetStartPoint().z(), 7);
  EXPECT_EQ(s.MidPoint().DistanceTo(CNuPoint(1, 2, 5)) + s.ToPolyline(5)[3].DistanceTo(CNuPoint(1, 2, 4)), 0);
}

TEST(BoundedCurves, OfAnySize) {
  CNuPoint p, q;
  NuSetLengthTol(0);
  for (const double size : {1e-150, 1e-6, 1e150}) {
    const CNuCircularArc one(CNuPoint(), CNuPoint(size, 0, 0), CNuPoint(0, size, 0), NuTrue);
    const CNuCircularArc other(CNuPoint(3 * size, 0, 0), CNuPoint(2 * size, 0, 0), CNuPoint(2 * size, 0, 0), NuTrue);
    EXPECT_NEAR(one.DistanceTo(&other, &p, &q) / size, 1, 1e-14);
    const CNuLineSegment side(CNuPoint(size, -size, size), CNuPoint(size, size, size));
    EXPECT_NEAR(one.DistanceTo(&side, &p, &q) / size, 1, 1e-14);
  }
  NuSetLengthTol(1e-12);
}

// Two spirals of 30 000 edges each: all pairs would take minutes.
TEST(Polyline, FindsTheNearestPairAmongMany) {
  const int n = 30000;
  CNuPointArray inner(n), outer(n);
  for (int i = 0; i < n; ++i) {
    const double u = 3e-3 * i, r = 1 + 1e-2 * u;
    inner.Add(CNuPoint(r * std::cos(u), r * std::sin(u), 0));
    outer.Add(CNuPoint(r * std::cos(u), r * std::sin(u), i == 22222 ? 0.25 : 1));
  }
  CNuPoint p, q;
  const CNuPolyline first(inner), second(outer);
  EXPECT_NEAR(first.DistanceTo(&second, &p, &q), 0.25, 1e-3);
  EXPECT_EQ(q.z(), 0.25);
}

// Edges between scattered points cross the whole cloud; hardly any come as close as 1e-7, but for the pair made so.
TEST(Polyline, FindsTheNearestPairOfTangles) {
  Random random(83);
  const int n = 2000;
  const auto any = [&] { return RandomPoint(random, 1); };
  for (const double gap : {1e-9, 0.0}) {
    CNuPointArray first(2 * n), second(n);
    for (int i = 0; i < n; ++i) first.Add(any());
    for (int i = 0; i < n; ++i) second.Add(any());
    const int at = random.Below(n - 1);
    const CNuPoint a = first[at], b = first[at + 1];
    const auto between = [](double from, double to) { return from + 0.375 * (to - from); };
    const CNuPoint on(between(a.x(), b.x()), between(a.y(), b.y()), between(a.z(), b.z()));
    second[random.Below(n)] = CNuPoint(on.x(), on.y(), on.z() + gap);
    const CNuPolyline one(first), other(second);
    CNuPoint p, q;
    EXPECT_LE(one.DistanceTo(&other, &p, &q), gap + 1e-15);
    EXPECT_LT(p.DistanceTo(on) + q.DistanceTo(on), 1e-8);
    EXPECT_FALSE(one.IsSelfIntersecting());
    for (int i = 0; i < n; ++i) first.Add(second[i]);
    EXPECT_EQ(CNuPolyline(first).IsSelfIntersecting(), gap == 0.0 ? NuTrue : NuFalse);
  }
}

}  // namespace
