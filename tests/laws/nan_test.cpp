// The rule for what is no number: an operation on a NaN gives a NaN or fails, and a comparison with one does not hold.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"
#include "support/relations.h"

namespace {

using namespace nu::test;

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

using P = const CNuPoint&;

// An operation on two features, one at p and the other one at q. A count is no NaN: such an operation has to fail.
struct Row {
  std::string name;
  std::function<Numbers(P p, P q)> run;
};

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

// Whatever the first feature can be asked about the second.
std::vector<Row> Relations() {
  std::vector<Row> rows;
  ForAllPairs([&](const auto& first, const auto& second) {
    const auto add = [&](const std::string& what, auto call) {
      rows.push_back({first.name + what + second.name,
                      [call, a = first.at, b = second.at](P p, P q) { return call(a(p), b(q)); }});
    };
    using A = decltype(first.at(CNuPoint()));
    using B = decltype(second.at(CNuPoint()));
    if constexpr (requires(A a, B b) { a.DistanceTo(b); }) add(" to ", [](A a, B b) { return Of(a.DistanceTo(b)); });
    if constexpr (requires(A a, B b) { a.ProjectionOn(b); })
      add(" onto ", [](A a, B b) { return Of(a.ProjectionOn(b)); });
    if constexpr (requires(A a, B b) { a.MidPoint(b); })
      add(", mid point, ", [](A a, B b) { return Of(a.MidPoint(b)); });
    if constexpr (requires(A a, B b) { a.MidLine(b); }) add(", mid line, ", [](A a, B b) { return Of(a.MidLine(b)); });
    if constexpr (requires(A a, B b) { a.MidPlane(b); })
      add(", mid plane, ", [](A a, B b) { return Of(a.MidPlane(b)); });
    if constexpr (requires(A a, B b) { a.LineSide(b, 1e-9); })
      add(" beside ", [](A a, B b) { return a.LineSide(b, 1e-9), Numbers(); });
    if constexpr (requires(A a, B b) { a.CurveSide(b, 1e-9); }) {
      add(" in ", [](A a, B b) { return a.CurveSide(b, 1e-9), Numbers(); });
      add(" inside ", [](A a, B b) { return a.SurfaceSide(b, 1e-9), Numbers(); });
    }
    if constexpr (requires(A a, B b, CNuPoint p) { a.IntersectWith(b, &p); })
      add(" meets ", [](A a, B b) { return Done([&, p = CNuPoint()]() mutable { a.IntersectWith(b, &p); }); });
    if constexpr (requires(A a, B b, CNuPoint p) { a.IntersectWith(b, &p, &p); })
      add(" crosses ", [](A a, B b) { return Done([&, p = CNuPoint()]() mutable { a.IntersectWith(b, &p, &p); }); });
    if constexpr (requires(A a, B b, CNuLine l) { a.IntersectWith(b, &l); })
      add(" meets ", [](A a, B b) { return Done([&, l = CNuLine()]() mutable { a.IntersectWith(b, &l); }); });
    if constexpr (requires(A a, B b, CNuPoint p) { a.ClosestPointsTo(b, &p); })
      add(" next to ", [](A a, B b) { return Done([&, p = CNuPoint()]() mutable { a.ClosestPointsTo(b, &p); }); });
    if constexpr (requires(A a, B b, CNuPoint p) { a.ClosestPointsTo(b, &p, &p); })
      add(" next to ", [](A a, B b) { return Done([&, p = CNuPoint()]() mutable { a.ClosestPointsTo(b, &p, &p); }); });
    if constexpr (requires(A a, B b, CNuObjArray o) { a.IntersectWith(b, &o); })
      add(" cuts ", [](A a, B b) {
        CNuObjArray found(4);
        a.IntersectWith(b, &found);
        for (int i = 0; i < found.GetSize(); ++i) delete found[i];
        return Numbers();
      });
  });
  return rows;
}

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

CNuLine LineAt(P p) {
  return CNuLine(p, kAxis);
}
CNuCircle CircleAt(P p) {
  return CNuCircle(2, p, kOther);
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
     [](P p, P q) {
       return Of(Changed(CNuEllipse(2, 1, p, kOther), [&](auto& c) { c.Rotate(2, kAxis, q); }).ToPointArray(5));
     }},
    {"cylinder to matrix", [](P p, P q) { return Of(CNuCylSurf(2, p, kOther).ToAlgebraicForm(CircleAt(q))); }},
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
    {"segments meet",
     [](P p, P q) { return Done([&, a = CNuPoint()]() mutable { SegmentAt(p).IntersectWith(SegmentAt(q), &a); }); }},
    {"segment meets arc",
     [](P p, P q) { return Done([&, a = CNuPoint()]() mutable { SegmentAt(p).IntersectWith(ArcAt(q), &a, &a); }); }},
    {"segment meets line",
     [](P p, P q) { return Done([&, a = CNuPoint()]() mutable { SegmentAt(p).IntersectWith(LineAt(q), &a); }); }},
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

std::vector<Row> Others() {
  std::vector<Row> rows(std::begin(kOthers), std::end(kOthers));
  for (const auto& more :
       {OfBoundedCurve(SegmentAt), OfBoundedCurve(ArcAt), OfBoundedCurve(PolylineAt), OfBoundedCurve(ChainAt)})
    rows.insert(rows.end(), more.begin(), more.end());
  return rows;
}

TEST(NotANumber, GivesOneOrFails) {
  for (const auto& rows : {Relations(), Others()}) {
    for (const Row& row : rows) {
      ForEachCoordinate(kNaN, [&row](P p, P q) {
        Numbers numbers;
        if (FailureOf([&] { numbers = row.run(p, q); }) != "nothing") return;
        EXPECT_TRUE(std::any_of(numbers.begin(), numbers.end(), [](double x) { return std::isnan(x); })) << row.name;
      });
    }
  }
}

TEST(NotANumber, ComesOfNoDifferenceThatOverflows) {
  const double far = 1.7e308;
  CNuPointArray corners(2);
  for (const double x : {-far, far}) corners.Add(CNuPoint(x, 0, 0));
  EXPECT_EQ(CNuPolyline(corners).DistanceTo(CNuPoint(0, 0.5 * far, 0)), 0.5 * far);
}

bool IsOwn(const std::string& failure) {
  return failure == "nothing" || (failure.rfind("operation", 0) == 0 && failure.find("::") != std::string::npos);
}

// No square of a length overflows yet.
TEST(NotANumber, ComesOfNoCoordinateUpTo1e150) {
  const std::vector<Row> relations = Relations();
  ForEachCoordinate(1e150, [&](P p, P q) {
    for (const Row& row : relations) {
      if (row.name.find("large circle") != std::string::npos) continue;  // its radius is 1e308
      Numbers numbers;
      FailureOf([&] { numbers = row.run(p, q); });
      EXPECT_TRUE(std::all_of(numbers.begin(), numbers.end(), [](double x) { return std::isfinite(x); })) << row.name;
    }
  });
}

// What relations of features that are too large, or turned by no number, cannot answer is their own failure; all other
// operations end.
TEST(NotANumber, RelationsNameThemselvesWhenTheyFail) {
  const std::vector<Row> relations = Relations(), others = Others();
  for (const double value : {kNaN, kInf, -kInf, 1e308, -1.7e308, 1e160}) {
    ForEachCoordinate(value, [&](P p, P q) {
      for (const Row& row : relations) {
        const std::string failure = FailureOf([&] { row.run(p, q); });
        EXPECT_TRUE(IsOwn(failure)) << row.name << " of " << value << ": " << failure;
      }
      for (const Row& row : others) FailureOf([&] { row.run(p, q); });
    });
  }
  CNuCylSurf turned(1, CNuPoint(), kAxis);
  turned.Rotate(kNaN, kOther);
  EXPECT_TRUE(std::isnan(CNuPoint(1, 2, 3).DistanceTo(turned)) && std::isnan(LineAt(CNuPoint()).DistanceTo(turned)));
  CNuPoint a, b;
  EXPECT_EQ(FailureOf([&] { LineAt(a).IntersectWith(turned, &a, &b); }),
            "operation 45 calculation|CNuLine::IntersectWith(CNuCylSurf) [0,0]");
}

// Whatever the numbers and the tolerances.
TEST(NotANumber, RelationsAnswerOrSayWhyNot) {
  const double odd[] = {0.0, 1.0, -1e300, 1e308, 5e-324, kInf, kNaN};
  Random random(21);
  const auto pick = [&] { return odd[random.Below(7)]; };
  const std::vector<Row> relations = Relations();
  int answers = 0;
  for (int i = 0; i < 300; ++i) {
    const CNuPoint p(pick(), pick(), pick()), q(pick(), pick(), pick());
    NuSetLengthTol(pick());
    NuSetDegreeTol(pick());
    for (const Row& row : relations) {
      const std::string failure = FailureOf([&] { row.run(p, q); });
      EXPECT_TRUE(IsOwn(failure)) << row.name << ": " << failure;
      answers += failure == "nothing";
    }
  }
  NuSetLengthTol(1e-12);
  NuSetDegreeTol(2.777777777778e-10);
  EXPECT_GT(answers, 10000);
}

TEST(NotANumber, HoldsForNoComparison) {
  CNuLine line = LineAt(CNuPoint());
  CNuPlane plane = CNuPlane(CNuPoint(), kOther);
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
