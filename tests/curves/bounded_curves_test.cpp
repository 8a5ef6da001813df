#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <memory>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {



CNuPointArray Points(const std::vector<CNuPoint>& list) {
  CNuPointArray points(static_cast<int>(list.size()));
  for (const CNuPoint& p : list) points.Add(p);
  return points;
}

CNuPolyline Chain(const std::vector<CNuPoint>& list) {
  return CNuPolyline(Points(list));
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
  const double nan = std::nan("");
  const auto offset = [](CNuPolyline& curve, double d, const CNuVector& normal, int shape) {
    return FailureOf([&] { delete curve.Offset(d, normal, shape); });
  };
  const std::string where = "|CNuPolyline::Offset() [0,0]";
  EXPECT_EQ(FailureOf([] { CNuPolyline(CNuPointArray(3)); }), "construction 1 size of CNuPointArray|CNuPolyline [0,0]");
  EXPECT_EQ(FailureOf([&] { square.GetPoint(5); }), "operation 3 operation|CNuPolyline::GetPoint() [0,4]");
  EXPECT_EQ(FailureOf([&] { square[-1]; }), "operation 3 element operator[]|CNuPolyline [0,4]");
  EXPECT_EQ(offset(square, 1, CNuVector(0, 0, 0), 0), "operation 9 Offset" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(4), 0), "operation 10 Offset" + where);
  EXPECT_EQ(offset(square, nan, z, 0), "operation 29 Offset" + where);
  EXPECT_EQ(offset(square, 1, CNuVector(0, 1, 1), 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(space, 1, z, 0), "operation 45 Offset of non-planar curve" + where);
  EXPECT_EQ(offset(square, 1, z, 1), "operation 45 Offset with different shape" + where);
  EXPECT_EQ(offset(square, -1.1, z, 0), "operation 28 Offset" + where);
  CNuPolyline slot =
      Chain({{0, 0, 0}, {10, 0, 0}, {10, 10, 0}, {6, 10, 0}, {5, 1, 0}, {4, 10, 0}, {0, 10, 0}, {0, 0, 0}});
  EXPECT_EQ(offset(slot, -1, z, 0), "operation 30 Offset" + where);
  CNuPolyline back = Chain({{0, 0, 0}, {5, 0, 0}, {1, 0, 0}});
  EXPECT_EQ(offset(back, 1, z, 0), "operation 28 Offset" + where);
  EXPECT_EQ(FailureOf([] { CNuCircle(1).ToPolyline(1); }),
            "operation 12 conversion|CNuCircle::ToPolyline/PointArray() [0,0]");
  EXPECT_EQ(CNuCircle(1).ToPolyline(2).GetSize(), 2);
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
  const int n = 200000;
  CNuPointArray spiral(n);
  for (int i = 0; i < n; ++i) spiral.Add(CNuPoint(1e-3 * i * std::cos(1e-2 * i), 1e-3 * i * std::sin(1e-2 * i), 0));
  EXPECT_FALSE(CNuPolyline(spiral).IsSelfIntersecting());
  spiral.Add(CNuPoint());
  EXPECT_TRUE(CNuPolyline(spiral).IsSelfIntersecting());
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

}  // namespace
