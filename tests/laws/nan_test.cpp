// The rule for what is no number: an operation on a NaN gives a NaN or fails, and a comparison with one does not hold.

#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/failures.h"

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInf = std::numeric_limits<double>::infinity();

using Numbers = std::vector<double>;

Numbers Of(double x) {
  return {x};
}
Numbers Of(const CNuPoint& p) {
  return {p.x(), p.y(), p.z()};
}
Numbers Of(const CNuLine& l) {
  return Of(l.GetPoint());
}
Numbers Of(const CNuPlane& pl) {
  return Of(pl.GetPoint());
}
Numbers Of(const CNuMatrix& m) {
  Numbers all;
  for (int i = 0; i < m.GetRowSize(); ++i) {
    for (int j = 0; j < m.GetColumnSize(); ++j) all.push_back(m.Element(i, j));
  }
  return all;
}
Numbers Of(const CNuPointArray& points) {
  Numbers all;
  for (int i = 0; i < points.GetSize(); ++i) {
    for (const double x : Of(points[i])) all.push_back(x);
  }
  return all;
}

// An operation on two features, one at p and the other one at q. A count is no NaN: such an operation has to fail.
struct Row {
  const char* name;
  std::function<Numbers(const CNuPoint& p, const CNuPoint& q)> run;
};

const CNuVector kAxis(1, 2, 3), kAcross(3, 0, -1), kOther(2, -1, 1);

CNuLine LineAt(const CNuPoint& p) {
  return CNuLine(p, kAxis);
}
CNuPlane PlaneAt(const CNuPoint& p) {
  return CNuPlane(p, kOther);
}
CNuCircle CircleAt(const CNuPoint& p) {
  return CNuCircle(2, p, kOther);
}
CNuEllipse EllipseAt(const CNuPoint& p) {
  return CNuEllipse(2, 1, p, kOther);
}
CNuHyperbola HyperbolaAt(const CNuPoint& p) {
  return CNuHyperbola(2, 1, p, kOther);
}
CNuParabola ParabolaAt(const CNuPoint& p) {
  return CNuParabola(2, p, kOther);
}
CNuSphSurf SphereAt(const CNuPoint& p) {
  return CNuSphSurf(2, p);
}
CNuCylSurf CylinderAt(const CNuPoint& p) {
  return CNuCylSurf(2, p, kOther);
}
CNuConSurf ConeAt(const CNuPoint& p) {
  return CNuConSurf(30, p, kOther);
}

// Of any operation with two outputs for points, and of one with an array.
template<class First, class Second>
Numbers Crossing(const First& first, const Second& second) {
  CNuPoint a, b;
  first.IntersectWith(second, &a, &b);
  return {};
}
template<class Second>
Numbers Closest(const CNuLine& first, const Second& second) {
  CNuPoint a, b;
  first.ClosestPointsTo(second, &a, &b);
  return {};
}
template<class First, class Second>
Numbers Meeting(const First& first, const Second& second) {
  CNuObjArray found(4);
  first.IntersectWith(second, &found);
  for (int i = 0; i < found.GetSize(); ++i) delete found[i];
  return {};
}

template<class First, class Second, class Result>
Numbers Single(const First& first, const Second& second, Result found) {
  first.IntersectWith(second, &found);
  return {};
}
template<class Call>
Numbers Done(Call call) {
  call();
  return {};
}
template<class Feature, class Change>
Feature Changed(Feature feature, Change change) {
  change(feature);
  return feature;
}

using P = const CNuPoint&;

const Row kRelations[] = {
    {"point, point", [](P p, P q) { return Of(p.DistanceTo(q)); }},
    {"point, line", [](P p, P q) { return Of(p.DistanceTo(LineAt(q))); }},
    {"point, plane", [](P p, P q) { return Of(p.DistanceTo(PlaneAt(q))); }},
    {"point, circle", [](P p, P q) { return Of(p.DistanceTo(CircleAt(q))); }},
    {"point, sphere", [](P p, P q) { return Of(p.DistanceTo(SphereAt(q))); }},
    {"point, cylinder", [](P p, P q) { return Of(p.DistanceTo(CylinderAt(q))); }},
    {"point, cone", [](P p, P q) { return Of(p.DistanceTo(ConeAt(q))); }},
    {"ellipse, point", [](P p, P q) { return Of(EllipseAt(p).DistanceTo(q)); }},
    {"hyperbola, point", [](P p, P q) { return Of(HyperbolaAt(p).DistanceTo(q)); }},
    {"parabola, point", [](P p, P q) { return Of(ParabolaAt(p).DistanceTo(q)); }},
    {"line, line", [](P p, P q) { return Of(LineAt(p).DistanceTo(CNuLine(q, kOther))); }},
    {"line, parallel line", [](P p, P q) { return Of(LineAt(p).DistanceTo(LineAt(q))); }},
    {"line, circle", [](P p, P q) { return Of(LineAt(p).DistanceTo(CircleAt(q))); }},
    {"line, plane", [](P p, P q) { return Of(LineAt(p).DistanceTo(PlaneAt(q))); }},
    {"line, parallel plane", [](P p, P q) { return Of(LineAt(p).DistanceTo(CNuPlane(q, kAcross))); }},
    {"line, sphere", [](P p, P q) { return Of(LineAt(p).DistanceTo(SphereAt(q))); }},
    {"line, cylinder", [](P p, P q) { return Of(LineAt(p).DistanceTo(CylinderAt(q))); }},
    {"line, cone", [](P p, P q) { return Of(LineAt(p).DistanceTo(ConeAt(q))); }},
    {"plane, plane", [](P p, P q) { return Of(PlaneAt(p).DistanceTo(CNuPlane(q, kAxis))); }},
    {"plane, parallel plane", [](P p, P q) { return Of(PlaneAt(p).DistanceTo(PlaneAt(q))); }},
    {"projection on line", [](P p, P q) { return Of(p.ProjectionOn(LineAt(q))); }},
    {"projection on plane", [](P p, P q) { return Of(p.ProjectionOn(PlaneAt(q))); }},
    {"projection on sphere", [](P p, P q) { return Of(p.ProjectionOn(SphereAt(q))); }},
    {"projection on cylinder", [](P p, P q) { return Of(p.ProjectionOn(CylinderAt(q))); }},
    {"projection on cone", [](P p, P q) { return Of(p.ProjectionOn(ConeAt(q))); }},
    {"middle of points", [](P p, P q) { return Of(p.MidPoint(q)); }},
    {"middle of point and line", [](P p, P q) { return Of(p.MidPoint(LineAt(q))); }},
    {"middle of point and plane", [](P p, P q) { return Of(p.MidPoint(PlaneAt(q))); }},
    {"plane between points", [](P p, P q) { return Of(p.MidPlane(q)); }},
    {"plane between point and line", [](P p, P q) { return Of(p.MidPlane(LineAt(q))); }},
    {"line between line and point", [](P p, P q) { return Of(LineAt(p).MidLine(q)); }},
    {"line between lines", [](P p, P q) { return Of(LineAt(p).MidLine(CNuLine(q, kOther))); }},
    {"line between line and plane", [](P p, P q) { return Of(LineAt(p).MidLine(PlaneAt(q))); }},
    {"plane between lines", [](P p, P q) { return Of(LineAt(p).MidPlane(CNuLine(q, kOther))); }},
    {"plane between plane and point", [](P p, P q) { return Of(PlaneAt(p).MidPlane(q)); }},
    {"plane between plane and line", [](P p, P q) { return Of(PlaneAt(p).MidPlane(LineAt(q))); }},
    {"plane between planes", [](P p, P q) { return Of(PlaneAt(p).MidPlane(CNuPlane(q, kAxis))); }},
    {"side of line", [](P p, P q) { return p.LineSide(LineAt(q), 1e-9), Numbers(); }},
    {"side of circle", [](P p, P q) { return p.CurveSide(CircleAt(q), 1e-9), Numbers(); }},
    {"side of ellipse", [](P p, P q) { return p.CurveSide(EllipseAt(q), 1e-9), Numbers(); }},
    {"side of hyperbola", [](P p, P q) { return p.CurveSide(HyperbolaAt(q), 1e-9), Numbers(); }},
    {"side of parabola", [](P p, P q) { return p.CurveSide(ParabolaAt(q), 1e-9), Numbers(); }},
    {"side of plane", [](P p, P q) { return p.SurfaceSide(PlaneAt(q), 1e-9), Numbers(); }},
    {"side of sphere", [](P p, P q) { return p.SurfaceSide(SphereAt(q), 1e-9), Numbers(); }},
    {"side of cylinder", [](P p, P q) { return p.SurfaceSide(CylinderAt(q), 1e-9), Numbers(); }},
    {"side of cone", [](P p, P q) { return p.SurfaceSide(ConeAt(q), 1e-9), Numbers(); }},
    {"line meets line", [](P p, P q) { return Single(LineAt(p), CNuLine(q, kOther), CNuPoint()); }},
    {"line meets plane", [](P p, P q) { return Single(LineAt(p), PlaneAt(q), CNuPoint()); }},
    {"plane meets plane", [](P p, P q) { return Single(PlaneAt(p), CNuPlane(q, kAxis), CNuLine()); }},
    {"line meets circle", [](P p, P q) { return Crossing(LineAt(p), CircleAt(q)); }},
    {"line meets ellipse", [](P p, P q) { return Crossing(LineAt(p), EllipseAt(q)); }},
    {"line meets hyperbola", [](P p, P q) { return Crossing(LineAt(p), HyperbolaAt(q)); }},
    {"line meets parabola", [](P p, P q) { return Crossing(LineAt(p), ParabolaAt(q)); }},
    {"line meets sphere", [](P p, P q) { return Crossing(LineAt(p), SphereAt(q)); }},
    {"line meets cylinder", [](P p, P q) { return Crossing(LineAt(p), CylinderAt(q)); }},
    {"line meets cone", [](P p, P q) { return Crossing(LineAt(p), ConeAt(q)); }},
    {"circle meets circle", [](P p, P q) { return Crossing(CircleAt(p), CNuCircle(3, q, kAxis)); }},
    {"circle meets plane", [](P p, P q) { return Crossing(CircleAt(p), CNuPlane(q, kAxis)); }},
    {"ellipse meets plane", [](P p, P q) { return Crossing(EllipseAt(p), CNuPlane(q, kAxis)); }},
    {"hyperbola meets plane", [](P p, P q) { return Crossing(HyperbolaAt(p), CNuPlane(q, kAxis)); }},
    {"parabola meets plane", [](P p, P q) { return Crossing(ParabolaAt(p), CNuPlane(q, kAxis)); }},
    {"closest to line",
     [](P p,
        P q) { return Done([&, f = CNuPoint()]() mutable { LineAt(p).ClosestPointsTo(CNuLine(q, kOther), &f); }); }},
    {"closest to circle", [](P p, P q) { return Closest(LineAt(p), CircleAt(q)); }},
    {"closest to sphere", [](P p, P q) { return Closest(LineAt(p), SphereAt(q)); }},
    {"closest to cylinder", [](P p, P q) { return Closest(LineAt(p), CylinderAt(q)); }},
    {"closest to cone", [](P p, P q) { return Closest(LineAt(p), ConeAt(q)); }},
    {"plane meets sphere", [](P p, P q) { return Meeting(PlaneAt(p), SphereAt(q)); }},
    {"plane meets cylinder", [](P p, P q) { return Meeting(PlaneAt(p), CylinderAt(q)); }},
    {"plane meets cone", [](P p, P q) { return Meeting(PlaneAt(p), ConeAt(q)); }},
    {"sphere meets sphere", [](P p, P q) { return Meeting(SphereAt(p), SphereAt(q)); }},
    {"cylinder meets sphere", [](P p, P q) { return Meeting(CylinderAt(p), SphereAt(q)); }},
    {"cylinder meets cylinder", [](P p, P q) { return Meeting(CylinderAt(p), CNuCylSurf(1, q, kAxis)); }},
    {"cylinder meets cone", [](P p, P q) { return Meeting(CylinderAt(p), CNuConSurf(20, q, kAxis)); }},
    {"cone meets sphere", [](P p, P q) { return Meeting(ConeAt(p), SphereAt(q)); }},
    {"cone meets cone", [](P p, P q) { return Meeting(ConeAt(p), CNuConSurf(20, q, kAxis)); }},
};

// Points of no feature, one of them p and one q.
CNuPointArray Cloud(P p, P q) {
  CNuPointArray points(12);
  for (const double t : {0.1, 1.2, 2.3, 3.1, 4.4, 5.5, 5.9, 0.7, 2.9, 4.9}) {
    points.Add(CNuPoint(3 * std::cos(t), 2 * std::sin(t), std::cos(3 * t)));
  }
  points.Add(p);
  points.Add(q);
  return points;
}

CNuLineSegment SegmentAt(P p) {
  return Changed(CNuLineSegment(), [&](auto& s) { s.Translate(p); });
}
CNuCircularArc ArcAt(P p) {
  return Changed(CNuCircularArc(CNuPoint(), {2, 0, 0}, {0, 2, 0}, NuTrue), [&](auto& a) { a.Translate(p); });
}
CNuPolyline PolylineAt(P p) {
  return CNuPolyline(Cloud(CNuPoint(), p));
}
CNuCompositeCurve ChainAt(P p) {
  CNuCompositeCurve chain;
  chain.AddSegment(SegmentAt(CNuPoint()), NuTrue);
  chain.AddSegment(CNuCircularArc({1, 1, 0}, {1, 0, 0}, {2, 1, 0}, NuTrue), NuTrue);
  chain.Translate(p);
  return chain;
}
// Of two cylinders.
CNuPCurve CommonAt(P p) {
  CNuObjArray found(4);
  CNuCylSurf(1).IntersectWith(CNuCylSurf(2, CNuPoint(), kAxis), &found);
  CNuPCurve curve = dynamic_cast<CNuPCurve&>(*found[0]);
  for (int i = 0; i < found.GetSize(); ++i) delete found[i];
  curve.Translate(p);
  return curve;
}

// Operations of a bounded curve at a point.
template<class Place>
std::vector<Row> OfBoundedCurve(Place at) {
  const auto box = [at](P p, P q) {
    CNuPoint low, high;
    at(p + q).BoundingBox(&low, &high);
    return std::isnan(high.x()) ? Of(low) : Numbers();
  };
  const auto ball = [at](P p, P q) {
    CNuPoint centre;
    double radius = 0;
    at(p + q).BoundingCircle(&radius, &centre);
    return std::isnan(radius) ? Of(centre) : Numbers();
  };
  const auto normal = [at](P p, P q) {
    CNuVector n(3);
    at(p + q).GetStartData(nullptr, nullptr, &n);
    return Numbers{n[0], n[1], n[2]};
  };
  const auto between = [at](P p, P q) {
    CNuPoint a, b;
    const CNuPolyline other = PolylineAt(q);
    const double distance = at(p).DistanceTo(&other, &a, &b);
    return std::isnan(distance) ? Of(a) : Numbers();
  };
  return {{"box", box},
          {"ball", ball},
          {"normal", normal},
          {"distance between curves", between},
          {"distance of a point", [at](P p, P q) { return Of(at(p).DistanceTo(q)); }},
          {"offset", [at](P p, P q) {
             const std::unique_ptr<CNuBoundedCurve> moved(at(p + q).Offset(0.1));
             return Of(moved->GetStartPoint());
           }}};
}

const Row kOthers[] = {
    {"sum", [](P p, P q) { return Of(p + q); }},
    {"turn", [](P p, P q) { return Of(Changed(p, [&](auto& r) { r.Rotate(20, kAxis, q); })); }},
    {"point in frame", [](P p, P q) { return Of(Changed(p, [&](auto& r) { r.MoveTo(q, kAxis, kAcross); })); }},
    {"line in frame", [](P p, P q) { return Of(Changed(LineAt(p), [&](auto& l) { l.MoveTo(CircleAt(q)); })); }},
    {"circle to points",
     [](P p, P q) { return Of(Changed(CircleAt(p), [&](auto& c) { c.Rotate(2, kAxis, q); }).ToPointArray(5)); }},
    {"ellipse to points",
     [](P p, P q) { return Of(Changed(EllipseAt(p), [&](auto& c) { c.Rotate(2, kAxis, q); }).ToPointArray(5)); }},
    {"cylinder to matrix", [](P p, P q) { return Of(CylinderAt(p).ToAlgebraicForm(CircleAt(q))); }},
    {"line through points", [](P p, P q) { return Of(CNuLine(p, q)); }},
    {"plane through point and line", [](P p, P q) { return Of(CNuPlane(p, LineAt(q))); }},
    {"mean", [](P p, P q) { return Of(Cloud(p, q).MeanPoint()); }},
    {"projection of points", [](P p, P q) { return Of(CNuGeometry::Projection2D(Cloud(p, q), p, kAxis, kAcross)); }},
    {"radius", [](P p, P q) { return Of(CNuCircle(p.x() + q.x() + p.y() + q.y() + p.z() + q.z()).GetRadius()); }},
    {"segment", [](P p, P q) { return Of(CNuLineSegment(p, q).Length()); }},
    {"arc", [](P p, P q) { return Of(CNuCircularArc(p, q, CNuPoint(5, 0, 1)).Length()); }},
    {"polyline, length", [](P p, P q) { return Of(CNuPolyline(Cloud(p, q)).Length()); }},
    {"polyline, area", [](P p, P q) { return Of(CNuPolyline(Cloud(p, q)).Area()); }},
    {"polyline, centroid", [](P p, P q) { return Of(CNuPolyline(Cloud(p, q)).Centroid()); }},
    {"simplified curve", [](P p, P q) { return Of(CNuSimplifiedCurve(Cloud(p, q), 1).GetMaxDeviation()); }},
    {"simplified points", [](P p, P q) { return Of(CNuSimplifiedCurve(Cloud(p, q), 1).GetPoints()); }},
    {"segments meet", [](P p, P q) { return Single(SegmentAt(p), SegmentAt(q), CNuPoint()); }},
    {"segment meets arc", [](P p, P q) { return Crossing(SegmentAt(p), ArcAt(q)); }},
    {"segment meets line", [](P p, P q) { return Single(SegmentAt(p), LineAt(q), CNuPoint()); }},
    {"common curve, point", [](P p, P q) { return Of(CommonAt(p).DistanceTo(q)); }},
    {"common curve, closest", [](P p, P q) { return Of(CommonAt(p).ClosestPoint(q, nullptr)); }},
    {"common curve, parameter",
     [](P p, P q) {
       double u = 0;
       CommonAt(p).ClosestPoint(q, &u);
       return Of(u);
     }},
    {"common curve, value", [](P p, P q) { return Of(CommonAt(p).ValueAt(q.x() + q.y() + q.z())); }},
    {"common curve, points", [](P p, P q) { return Of(CommonAt(p + q).ToPointArray(9)); }},
    {"common curve, polyline", [](P p, P q) { return Of(CommonAt(p + q).ToPointArrayWithin(0.1)); }},
    {"common curve, clipped", [](P p, P q) { return CommonAt(CNuPoint()).ClipTo(p, q, nullptr), Numbers(); }},
    {"common curve, in a box",
     [](P p, P q) {
       return CommonAt(p + q).ClipTo(q, {9, 9, 9}, nullptr), Numbers();
     }},
};

// Calls with one coordinate replaced after the other.
template<class Call>
void ForEachCoordinate(double value, Call call) {
  for (int i = 0; i < 6; ++i) {
    double x[] = {0.5, -0.25, 2.0, 1.5, 0.75, -1.0};
    x[i] = value;
    call(CNuPoint(x[0], x[1], x[2]), CNuPoint(x[3], x[4], x[5]));
  }
}

TEST(NotANumber, GivesOneOrFails) {
  const auto check = [](const Row& row) {
    ForEachCoordinate(kNaN, [&row](P p, P q) {
      Numbers numbers;
      if (FailureOf([&] { numbers = row.run(p, q); }) != "nothing") return;
      bool any = false;
      for (const double x : numbers) any = any || std::isnan(x);
      EXPECT_TRUE(any) << row.name;
    });
  };
  for (const Row& row : kRelations) check(row);
  for (const Row& row : kOthers) check(row);
  for (const Row& row : OfBoundedCurve(SegmentAt)) check(row);
  for (const Row& row : OfBoundedCurve(ArcAt)) check(row);
  for (const Row& row : OfBoundedCurve(PolylineAt)) check(row);
  for (const Row& row : OfBoundedCurve(ChainAt)) check(row);
}

TEST(NotANumber, ComesOfNoDifferenceThatOverflows) {
  const double far = 1.7e308;
  CNuPointArray corners(2);
  for (const double x : {-far, far}) corners.Add(CNuPoint(x, 0, 0));
  EXPECT_EQ(CNuPolyline(corners).DistanceTo(CNuPoint(0, 0.5 * far, 0)), 0.5 * far);
}

// What relations of features that are too large, or turned by no number, cannot answer is their own failure.
TEST(NotANumber, RelationsNameThemselvesWhenTheyFail) {
  for (const Row& row : kRelations) {
    for (const double value : {kNaN, kInf, -kInf, 1e308, -1.7e308, 1e160}) {
      ForEachCoordinate(value, [&](P p, P q) {
        const std::string failure = FailureOf([&] { row.run(p, q); });
        const bool isOwn = failure.rfind("operation", 0) == 0 && failure.find("::") != std::string::npos;
        EXPECT_TRUE(failure == "nothing" || isOwn) << row.name << " of " << value << ": " << failure;
      });
    }
  }
  CNuCylSurf turned(1, CNuPoint(), kAxis);
  turned.Rotate(kNaN, kOther);
  EXPECT_TRUE(std::isnan(CNuPoint(1, 2, 3).DistanceTo(turned)) && std::isnan(LineAt(CNuPoint()).DistanceTo(turned)));
  CNuPoint a, b;
  EXPECT_EQ(FailureOf([&] { LineAt(a).IntersectWith(turned, &a, &b); }),
            "operation 45 calculation|CNuLine::IntersectWith(CNuCylSurf) [0,0]");
}

TEST(NotANumber, HoldsForNoComparison) {
  CNuLine line = LineAt(CNuPoint());
  CNuPlane plane = PlaneAt(CNuPoint());
  line.Rotate(kNaN, kOther);
  plane.Rotate(kNaN, kAxis);
  EXPECT_FALSE(line.IsParallelTo(LineAt(CNuPoint()), 1) || LineAt(CNuPoint()).IsParallelTo(plane, 1));
  EXPECT_FALSE(line.IsCoplanarWith(LineAt(CNuPoint()), 1, 1) || plane.IsParallelTo(plane, 1) ||
               plane.IsEqual(plane, 1, 1));
  const CNuPoint p(1, kNaN, 2);
  EXPECT_FALSE(p.IsEqual(p, 1) || CNuPoint(kNaN).IsZero(1));
  const CNuPolyline loop = PolylineAt(p);
  EXPECT_FALSE(loop.IsSelfIntersecting() || loop.IsPlanar(9) || loop.IsClosed(9));
}

TEST(NotANumber, InfiniteSizesAreRefused) {
  const auto refused = [](const char* name, const char* what) {
    return std::string("construction 5 ") + what + "|" + name + " [0,0]";
  };
  for (const double bad : {kInf, -kInf, kNaN, 0.0}) {
    EXPECT_EQ(FailureOf([&] { CNuCircle c(bad); }), refused("CNuCircle", "radius"));
    EXPECT_EQ(FailureOf([&] { CNuSphSurf c(bad); }), refused("CNuSphSurf", "radius"));
    EXPECT_EQ(FailureOf([&] { CNuCylSurf c(bad); }), refused("CNuCylSurf", "radius"));
    EXPECT_EQ(FailureOf([&] { CNuTorSurf c(bad, 1); }), refused("CNuTorSurf", "radius"));
    EXPECT_EQ(FailureOf([&] { CNuEllipse c(bad, 1); }), refused("CNuEllipse", "semi-axis"));
    EXPECT_EQ(FailureOf([&] { CNuHyperbola c(1, bad); }), refused("CNuHyperbola", "semi-axis"));
    EXPECT_EQ(FailureOf([&] { CNuParabola c(bad); }), refused("CNuParabola", "focal-length"));
  }
}

}  // namespace
