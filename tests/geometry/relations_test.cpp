#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <tuple>

#include "nu/nu.h"
#include "support/clouds.h"
#include "support/failures.h"

namespace {

using namespace nu::test;

// A part of a given size somewhere: all features of a case are near `base`, and what a coordinate's last place is worth
// there bounds every error.
struct Place {
  Place(Random& source, double length, double offset)
      : random(source),
        size(length),
        base(RandomPoint(source, 1.0) * (length * offset)),
        rounding(kEps * size * (1 + offset)) {}

  CNuPoint Point() { return base + RandomPoint(random, 1.0) * size; }
  CNuVector Direction() {
    CNuVector v = RandomPoint(random, 1.0).To3DVector();
    v.Normalise();
    return v;
  }
  double Radius() { return size * random.Uniform(0.2, 2.0); }

  Random& random;
  double size;
  CNuPoint base;
  double rounding;
};

template<class Case>
void ForPlaces(int count, Case check) {
  Random random(20);
  for (const double size : {1e-3, 1.0, 1e5}) {
    for (const double offset : {0.0, 1.0, 1e4}) {
      for (int i = 0; i < count; ++i) {
        Place place(random, size, offset);
        check(place);
      }
    }
  }
}

// A circle in some plane that passes through both points.
CNuCircle CircleThrough(Place& place, const CNuPoint& p, const CNuPoint& q) {
  CNuVector way = (p - q).To3DVector();
  CNuVector normal = way * place.Direction();
  way.Normalise();
  normal.Normalise();
  const CNuPoint centre = Along(p.MidPoint(q), way * normal, place.size * place.random.Uniform(-1, 1));
  return CNuCircle(centre.DistanceTo(p), centre, normal);
}

bool Holds(const CNuPoint (&found)[2], const CNuPoint& p, double tol) {
  return std::min(found[0].DistanceTo(p), found[1].DistanceTo(p)) <= tol;
}

// Two points on each of two curves are found again; how well depends on the angle under which the curves cross.
TEST(Intersections, FindThePointsThatCurvesWereBuiltThrough) {
  ForPlaces(60, [](Place& place) {
    const CNuPoint p = place.Point(), q = place.Point();
    const CNuCircle circle = CircleThrough(place, p, q), second = CircleThrough(place, p, q);
    const CNuSphSurf sphere(circle.GetRadius(), circle.GetCentre());
    const CNuLine line(p, q);
    CNuPlane plane(p, CNuLine(q, place.Direction()));
    CNuPoint found[2];
    const double half = 0.5 * p.DistanceTo(q);
    const double tol = 1e3 * place.rounding * circle.GetRadius() / half;
    if (half < 0.05 * place.size) return;
    EXPECT_EQ(line.IntersectWith(circle, &found[0], &found[1]), 2);
    EXPECT_TRUE(Holds(found, p, tol) && Holds(found, q, tol));
    EXPECT_LT((found[1] - found[0]).To3DVector() % line.GetDirection() - 2 * half, tol);
    EXPECT_EQ(line.IntersectWith(sphere, &found[0], &found[1]), 2);
    EXPECT_TRUE(Holds(found, p, tol) && Holds(found, q, tol));
    const double steep = std::sin(plane.AngleWith(circle.GetPlane()) * Nu_PI / 180);
    if (steep > 0.05) {
      EXPECT_EQ(circle.IntersectWith(plane, &found[0], &found[1]), 2);
      EXPECT_TRUE(Holds(found, p, tol / steep) && Holds(found, q, tol / steep));
    }
    // The circles must be given to the tolerance of what touches; a host with rounded data widens it.
    NuSetLengthTol(std::max(1e-12, tol));
    EXPECT_EQ(second.IntersectWith(circle, &found[0], &found[1]), 2);
    EXPECT_EQ(circle.IntersectWith(second, &found[0], &found[1]), 2);
    EXPECT_TRUE(Holds(found, p, 2 * tol) && Holds(found, q, 2 * tol));
    NuSetLengthTol(1e-12);
  });
}

TEST(Intersections, OfLinesAndPlanesLieOnBoth) {
  ForPlaces(60, [](Place& place) {
    const CNuPoint p = place.Point();
    const CNuLine first(Along(p, place.Direction(), 0), place.Direction()), second(p, place.Direction());
    const CNuPlane plane(place.Point(), place.Direction()), other(place.Point(), place.Direction());
    CNuPoint found;
    CNuLine common;
    const double tol = 1e3 * place.rounding;
    if (first.GetDirection().IsParallelTo(second.GetDirection(), 0.02)) return;
    EXPECT_EQ(first.IntersectWith(second, &found), 1);
    EXPECT_LT(found.DistanceTo(p), tol);
    CNuLine apart = second;
    CNuVector across = first.GetDirection() * second.GetDirection();
    across.Normalise();
    apart.Translate(Along(p, across, 0.25 * place.size));
    EXPECT_EQ(first.IntersectWith(apart, &found), 0);
    EXPECT_NEAR(first.DistanceTo(apart), 0.25 * place.size, tol);
    EXPECT_EQ(first.ClosestPointsTo(apart, &found), 1);
    EXPECT_LT(found.DistanceTo(p), tol);
    if (std::fabs(first.GetDirection() % plane.GetNormal()) > 0.02) {
      EXPECT_EQ(plane.IntersectWith(first, &found), 1);
      EXPECT_LT(found.DistanceTo(plane) + found.DistanceTo(first), tol);
    }
    if (plane.GetNormal().IsParallelTo(other.GetNormal(), 0.02)) return;
    EXPECT_EQ(plane.IntersectWith(other, &common), 1);
    for (const double t : {-1.0, 0.0, 1.0}) {
      const CNuPoint on = Along(common.GetPoint(), common.GetDirection(), t * place.size);
      EXPECT_LT(on.DistanceTo(plane) + on.DistanceTo(other), tol);
    }
    EXPECT_LT(common.GetPoint().DistanceTo(place.base), 200 * place.size);
    // Of normals that are nearly parallel the product has few places left.
    const double tilt = std::pow(10.0, place.random.Uniform(-7, -1));
    const CNuPlane tilted(plane.GetPoint(), plane.GetNormal() + tilt * place.Direction());
    const CNuCircle rim(place.size, plane.GetPoint(), plane.GetNormal());
    CNuPoint ends[2];
    EXPECT_EQ(rim.IntersectWith(tilted, &ends[0], &ends[1]), 2);
    EXPECT_LT(ends[0].DistanceTo(rim) + ends[1].DistanceTo(rim), tol);
    EXPECT_EQ(plane.IntersectWith(tilted, &common), 1);
    for (const CNuPoint& on : {ends[0], ends[1], Along(common.GetPoint(), common.GetDirection(), place.size)}) {
      EXPECT_LT(on.DistanceTo(plane) + on.DistanceTo(tilted), tol) << tilt;
    }
    // A line that crosses another one next to parallel, seen from far along it.
    const CNuLine flat(Along(p, first.GetDirection(), place.size), first.GetDirection() + tilt * place.Direction());
    EXPECT_LT(first.DistanceTo(flat), tol) << tilt;
  });
}

// Around a circle of radius 5 in the plane z = 0, at home and far away; each row is one way to meet it.
TEST(Intersections, CountTouchingMissingAndCoincidentFeatures) {
  for (const CNuPoint& c : {CNuPoint(), CNuPoint(2e4, -1e4, 3e4)}) {
    const CNuVector x(1, 0, 0), y(0, 1, 0), z(0, 0, 1);
    const CNuCircle circle(5, c, z);
    const CNuSphSurf sphere(5, c);
    CNuPoint p, q;
    const double off = 1e-9;  // well above the tolerance, at home and where coordinates are large
    struct {
      CNuLine line;
      int circle, sphere;
    } lines[] = {{{c, x}, 2, 2},
                 {{c + CNuPoint(0, 5, 0), x}, 1, 1},
                 {{c + CNuPoint(0, 5 + off, 0), x}, 0, 0},
                 {{c + CNuPoint(0, 5 - off, 0), x}, 2, 2},
                 {{c + CNuPoint(0, 0, off), x}, 0, 2},
                 {{c + CNuPoint(0, 5, 0), z}, 1, 1},
                 {{c + CNuPoint(0, 5, 0), y}, 2, 2},
                 {{c + CNuPoint(0, 5 - off, 0), z}, 0, 2},
                 {{c, z}, 0, 2},
                 {{c + CNuPoint(3, 4, 0), CNuVector(1, 1, 1)}, 1, 2}};
    for (const auto& row : lines) {
      EXPECT_EQ(circle.IntersectWith(row.line, &p, &q), row.circle) << row.line.GetPoint().y();
      EXPECT_EQ(row.line.IntersectWith(sphere, &p, &q), row.sphere) << row.line.GetPoint().y();
    }
    struct {
      CNuCircle other;
      int count;
    } circles[] = {{CNuCircle(5, c, z), 0},
                   {CNuCircle(4, c, z), 0},
                   {CNuCircle(5, c, -z), 0},
                   {CNuCircle(2, c + CNuPoint(7, 0, 0), z), 1},
                   {CNuCircle(2, c + CNuPoint(3, 0, 0), z), 1},
                   {CNuCircle(9, c + CNuPoint(4, 0, 0), z), 1},
                   {CNuCircle(2, c + CNuPoint(7 + off, 0, 0), z), 0},
                   {CNuCircle(2, c + CNuPoint(7 - off, 0, 0), z), 2},
                   {CNuCircle(2, c + CNuPoint(3 - off, 0, 0), z), 0},
                   {CNuCircle(5, c + CNuPoint(6, 0, 0), -z), 2},
                   {CNuCircle(5, c + CNuPoint(6, 0, off), z), 0},
                   {CNuCircle(5, c, x), 2},
                   {CNuCircle(5, c + CNuPoint(0, 0, 5), x), 0},
                   {CNuCircle(1, c + CNuPoint(0, 4, 0), x), 1},
                   {CNuCircle(1, c + CNuPoint(5, 0, 1), y), 1}};
    for (const auto& row : circles) {
      EXPECT_EQ(circle.IntersectWith(row.other, &p, &q), row.count) << row.other.GetCentre().x();
      EXPECT_EQ(row.other.IntersectWith(circle, &p, &q), row.count) << row.other.GetCentre().x();
    }
    const CNuCircle left(5, c + CNuPoint(6, 0, 0), z);
    EXPECT_EQ(circle.IntersectWith(left, &p, &q), 2);
    EXPECT_LT(p.DistanceTo(c + CNuPoint(3, 4, 0)) + q.DistanceTo(c + CNuPoint(3, -4, 0)), 1e-10);
    EXPECT_EQ(circle.IntersectWith(CNuPlane(c, z), &p, &q), 0);
    EXPECT_EQ(circle.IntersectWith(CNuPlane(c + CNuPoint(0, 5, 0), y), &p, &q), 1);
    EXPECT_EQ(circle.IntersectWith(CNuPlane(c + CNuPoint(0, 5 + off, 0), y), &p, &q), 0);
    EXPECT_EQ(CNuLine(c, x).IntersectWith(CNuLine(c, -x), &p), 0);
    EXPECT_EQ(CNuLine(c, x).ClosestPointsTo(CNuLine(c + CNuPoint(0, 1, 0), x), &p), 0);
    EXPECT_EQ(CNuLine(c, x).IntersectWith(CNuPlane(c, z), &p), 0);
    CNuLine line;
    EXPECT_EQ(CNuPlane(c, z).IntersectWith(CNuPlane(c, -z), &line), 0);
  }
}

// Whatever rounding makes of the angle between them: features without an end do not meet in the distance.
TEST(Intersections, OfParallelFeaturesApartDoNotExist) {
  ForPlaces(4000, [](Place& place) {
    const double size = place.size;
    const CNuHyperbola hyperbola(size, 0.3 * size, place.Point(), place.Direction());
    const CNuVector n = hyperbola.GetNormal(), x = hyperbola.GetXaxis();
    const CNuPoint c = hyperbola.GetCentre();
    const CNuParabola parabola(size, c, x, n);
    const CNuEllipse ellipse(size, 0.5 * size, c, x, n);
    const CNuCircle circle(size, c, n);
    const double turn = place.random.Uniform(0, Nu_2PI);
    const CNuVector inPlane = std::cos(turn) * x + std::sin(turn) * (n * x);
    const CNuPoint apart = Along(c, n, size * place.random.Uniform(0.1, 10));
    const CNuPlane plane(apart,
                         (1.0 - 2.0 * place.random.Below(2)) * n + 4e-16 * place.random.Below(2) * place.Direction());
    const CNuCylSurf cylinder(0.5 * size, c, inPlane);
    const CNuLine along(Along(c, n * inPlane, size), inPlane);
    CNuPoint p, q;
    CNuLine common;
    for (const CNuVector& direction : {inPlane, x, 1.0 * x + 0.3 * (n * x)}) {
      const CNuLine line(apart, direction + 4e-16 * place.Direction());
      EXPECT_EQ(line.IntersectWith(hyperbola, &p, &q) + line.IntersectWith(parabola, &p, &q), 0);
      EXPECT_EQ(line.IntersectWith(ellipse, &p, &q) + line.IntersectWith(circle, &p, &q), 0);
      EXPECT_EQ(line.IntersectWith(circle.GetPlane(), &p), 0);
    }
    EXPECT_EQ(hyperbola.IntersectWith(plane, &p, &q) + parabola.IntersectWith(plane, &p, &q), 0);
    EXPECT_EQ(ellipse.IntersectWith(plane, &p, &q) + circle.IntersectWith(plane, &p, &q), 0);
    EXPECT_EQ(plane.IntersectWith(circle.GetPlane(), &common), 0);
    EXPECT_EQ(along.IntersectWith(cylinder, &p, &q) + along.IntersectWith(cylinder.GetAxis(), &p), 0);
    const CNuPlane across(c, n * x + 4e-16 * place.Direction());  // holds the axis of the conics
    EXPECT_EQ(hyperbola.IntersectWith(across, &p, &q), 2);
    EXPECT_EQ(parabola.IntersectWith(across, &p, &q), 1);
  });
}

TEST(Intersections, OfPlaneAndSphereAreNewCirclesAndPoints) {
  const CNuPoint c(1e3, 2, 3);
  const CNuSphSurf sphere(5, c);
  CNuObjArray found(1);
  const CNuVector normal(2, -1, 2);
  const CNuVector unit = CNuPlane(c, normal).GetNormal();
  for (const auto& [height, count, type] : {std::tuple(3.0, 1, CNuObject::NuTypeCircle),
                                            {5.0, 1, CNuObject::NuTypePoint},
                                            {5 + 1e-9, 0, CNuObject::NuTypeNone},
                                            {0.0, 1, CNuObject::NuTypeCircle}}) {
    const CNuPlane plane(Along(c, unit, height), normal);
    ASSERT_EQ(plane.IntersectWith(sphere, &found), count);
    ASSERT_EQ(found.GetSize(), count);
    const std::unique_ptr<CNuObject> owned(count == 1 ? found[0] : nullptr);
    if (count == 0) continue;
    EXPECT_EQ(owned->GetType(), type);
    if (type == CNuObject::NuTypePoint) continue;
    const auto& circle = static_cast<const CNuCircle&>(*owned);
    EXPECT_NEAR(circle.GetRadius(), std::sqrt(25 - height * height), 1e-12);
    EXPECT_LT(circle.GetCentre().DistanceTo(plane.GetPoint()), 1e-12);
    EXPECT_TRUE(circle.GetNormal().IsEqual(unit, 1e-15));
  }
}

// No point of a finely divided circle is closer, and the closest one is as close as its neighbours allow.
TEST(Distances, OfLineAndCircleAreTheLeastOnes) {
  ForPlaces(25, [](Place& place) {
    const CNuCircle circle(place.Radius(), place.Point(), place.Direction());
    const CNuPointArray rim = circle.ToPointArray(2001);
    // A line somewhere, one through the rim, one that touches it, one across the centre, the axis, one nearly in the
    // plane
    CNuVector tangent = circle.GetNormal() * (rim[77] - circle.GetCentre()).To3DVector();
    const CNuLine lines[] = {{place.Point(), place.Direction()},
                             {rim[100], place.Direction()},
                             {rim[77], tangent},
                             {circle.GetCentre(), place.Direction()},
                             {circle.GetCentre(), circle.GetNormal()},
                             {place.Point(), tangent + 1e-9 * circle.GetNormal()}};
    for (const CNuLine& line : lines) {
      double least = 1e300;
      for (int i = 0; i < rim.GetSize(); ++i) least = std::min(least, rim[i].DistanceTo(line));
      const double distance = line.DistanceTo(circle);
      const double tol = 100 * place.rounding;
      EXPECT_LE(distance, least + tol);
      EXPECT_GE(distance, least - circle.GetRadius() * Nu_2PI / 4000);
      CNuPoint p[2];
      const int count = line.ClosestPointsTo(circle, &p[0], &p[1]);
      ASSERT_GE(count, 1);
      for (int i = 0; i < count; ++i) EXPECT_NEAR(p[i].DistanceTo(circle), distance, 1e-12 + tol);
      for (int i = 0; i < count; ++i) EXPECT_LT(p[i].DistanceTo(line), tol);
    }
    EXPECT_LT(lines[1].DistanceTo(circle) + lines[2].DistanceTo(circle), 100 * place.rounding);
    EXPECT_NEAR(lines[4].DistanceTo(circle), circle.GetRadius(), 100 * place.rounding);
    // One through the rim, hardly off the plane.
    CNuPoint p, q;
    const double tilt = std::pow(10.0, place.random.Uniform(-16, -2));
    const CNuLine flat(rim[50], (rim[900] - rim[50]).To3DVector() + (tilt * place.size) * circle.GetNormal());
    const int met = flat.IntersectWith(circle, &p, &q);
    ASSERT_GE(met, 1) << tilt;
    for (const CNuPoint& on : {p, met > 1 ? q : p})
      EXPECT_LT(on.DistanceTo(circle) + on.DistanceTo(flat), 1e-11 + 100 * place.rounding);
  });
  CNuPoint p[2];
  EXPECT_EQ(CNuLine(CNuPoint(0, 0, 1), CNuVector(1, 0, 0)).ClosestPointsTo(CNuCircle(5), &p[0], &p[1]), 2);
  EXPECT_LT(p[0].DistanceTo(CNuPoint(-5, 0, 1)) + p[1].DistanceTo(CNuPoint(5, 0, 1)), 1e-14);
  EXPECT_EQ(CNuLine(CNuPoint(0, 7, 0), CNuVector(1, 0, 0)).ClosestPointsTo(CNuSphSurf(5), &p[0], &p[1]), 1);
  EXPECT_EQ(CNuLine(CNuPoint(0, 7, 0), CNuVector(1, 0, 0)).DistanceTo(CNuSphSurf(5)), 2.0);
  EXPECT_EQ(CNuLine(CNuPoint(0, 3, 0), CNuVector(1, 0, 0)).DistanceTo(CNuSphSurf(5)), 0.0);
}

// Every point of a mid element is as far from one feature as from the other, at any angle between them.
TEST(MidElements, AreEquallyFarFromBoth) {
  ForPlaces(40, [](Place& place) {
    const CNuLine line(place.Point(), place.Direction());
    const double tilt = std::pow(10.0, place.random.Uniform(-14, 0));
    const CNuLine second(place.Point(), place.random.Below(2) * 2.0 * line.GetDirection() - line.GetDirection() +
                                            tilt * place.Direction());
    const CNuPlane plane(place.Point(), (line.GetDirection() * place.Direction()) + tilt * place.Direction());
    const CNuPlane other(place.Point(), plane.GetNormal() + tilt * place.Direction());
    const CNuPoint p = place.Point();
    const double tol = 100 * place.rounding;
    const auto equallyFar = [&](const CNuPoint& on, const auto& a, const auto& b) {
      EXPECT_NEAR(on.DistanceTo(a), on.DistanceTo(b), tol) << tilt;
    };
    for (const double t : {-1.0, 0.3, 2.0}) {
      const auto at = [&](const CNuLine& mid) { return Along(mid.GetPoint(), mid.GetDirection(), t * place.size); };
      const auto in = [&](const CNuPlane& mid) {
        CNuVector x, y, normal = mid.GetNormal();
        normal.OrthonormalXY(&x, &y);
        return Along(Along(mid.GetPoint(), x, t * place.size), y, (1 - t) * place.size);
      };
      equallyFar(at(line.MidLine(second)), line, second);
      equallyFar(at(line.MidLine(plane)), line, plane);
      EXPECT_NEAR(at(line.MidLine(p)).DistanceTo(line), 0.5 * p.DistanceTo(line), tol);
      equallyFar(in(plane.MidPlane(other)), plane, other);
      EXPECT_NEAR(in(plane.MidPlane(p)).DistanceTo(plane), 0.5 * p.DistanceTo(plane), tol);
      const CNuLine mid = line.MidLine(plane);
      EXPECT_LT(at(mid).DistanceTo(plane.MidPlane(line)), tol);
    }
    EXPECT_LE(line.MidLine(second).AngleWith(line), 45.0 + 1e-12);
    if (line.DistanceTo(second) < 1e-3 * place.size || tilt < 1e-6) return;
    const CNuPlane across = line.MidPlane(second);
    EXPECT_NEAR(line.GetPoint().DistanceTo(across), 0.5 * line.DistanceTo(second), tol / tilt);
    EXPECT_NEAR(second.GetPoint().DistanceTo(across), 0.5 * line.DistanceTo(second), tol / tilt);
    EXPECT_EQ(line.GetPoint().SurfaceSide(across, 0.0), CNuGeometry::SIDE_OUTSIDE);
  });
}

TEST(Relations, TellAnglesAndParallelismInTheirUnits) {
  const CNuLine x(CNuPoint(1, 2, 3), CNuVector(1, 0, 0)), tilted(CNuPoint(), CNuVector(1, 1, 0));
  const CNuPlane xy(CNuPoint(0, 0, 3), CNuVector(0, 0, 1)), below(CNuPoint(5, 5, 1), CNuVector(0, 0, -1));
  EXPECT_NEAR(x.AngleWith(tilted), 45, 1e-13);
  EXPECT_NEAR(x.AngleWith(tilted, CNuVector(0, 0, -1)), 315, 1e-13);
  EXPECT_EQ(x.AngleWith(xy), 90.0);
  EXPECT_EQ(xy.AngleWith(below), 180.0);
  const CNuLine nearly(CNuPoint(0, 7, 3), CNuVector(-1, 1e-3, 0));
  const double off = 1e-3 * 180 / Nu_PI;  // degrees
  EXPECT_EQ(x.IsParallelTo(nearly, 1.001 * off), NuTrue);
  EXPECT_EQ(x.IsParallelTo(nearly, 0.999 * off), NuFalse);
  EXPECT_EQ(x.IsParallelTo(xy, 1e-12), NuTrue);
  EXPECT_EQ(x.IsParallelTo(CNuPlane(CNuPoint(), CNuVector(1e-3, 0, 1)), 0.999 * off), NuFalse);
  EXPECT_EQ(x.IsCoplanarWith(nearly, 1e-12, 1e-9), NuTrue);
  EXPECT_EQ(x.IsCoplanarWith(tilted, 1e-12, 3.0), NuFalse);  // the distance is exactly 3: not below
  EXPECT_EQ(x.IsCoplanarWith(tilted, 1e-12, 3.1), NuTrue);
  EXPECT_EQ(x.IsCoplanarWith(tilted, 45.1, 1e-9), NuTrue);
  EXPECT_EQ(xy.DistanceTo(below), 2.0);
  EXPECT_EQ(x.DistanceTo(below), 2.0);
  EXPECT_EQ(x.DistanceTo(CNuPlane(CNuPoint(9, 9, 9), CNuVector(1, 0, 1))), 0.0);
  EXPECT_EQ(xy.IsEqual(below, 1e-12, 2.1), NuTrue);
  EXPECT_EQ(xy.IsEqual(below, 1e-12, 2.0), NuFalse);
  EXPECT_EQ(xy.IsEqual(CNuPlane(CNuPoint(0, 0, 3), CNuVector(0, 1e-3, 1)), 0.999 * off, 1e-9), NuFalse);
  const CNuLine z(CNuPoint(1, 1, 1), CNuVector(0, 0, 1));
  EXPECT_EQ(FailureOf([&] { z.MidLine(xy); }), "operation 22 calculation|CNuLine::MidLine(CNuPlane) [0,0]");
  EXPECT_EQ(FailureOf([&] { x.MidPlane(x); }), "operation 23 calculation|CNuLine::MidPlane(CNuLine) [0,0]");
  EXPECT_EQ(FailureOf([&] { xy.MidPlane(z); }), "operation 24 calculation|CNuPlane::MidPlane(CNuLine) [0,0]");
}

// One tolerance, in degrees, decides for all pairs of features; each row says 1 for parallel ones.
TEST(Relations, DecideOnParallelismByDegrees) {
  const double tol = 1.0;
  NuSetDegreeTol(tol);
  NuSetRadianTol(1.0);
  for (const double angle : {0.99 * tol, 1.01 * tol}) {
    const int parallel = angle < tol ? 1 : 0;
    const double c = std::cos(angle * Nu_PI / 180), s = std::sin(angle * Nu_PI / 180);
    const CNuVector z(0, 0, 1), tilted(0, s, c), flat(c, 0, s);
    const CNuPoint o, p(3, 0, 0);
    const CNuLine axis(o, z), line(p, tilted), nearlyIn(CNuPoint(0, 0, 1), flat);
    const CNuPlane plane(o, z), leaning(CNuPoint(0, 0, 2), tilted);
    const CNuLineSegment segment(o, CNuPoint(0, 0, 1));
    CNuPoint q;
    CNuLine common;
    CNuObjArray found(2);
    EXPECT_EQ(axis.IsParallelTo(line, tol), parallel);
    EXPECT_EQ(nearlyIn.IsParallelTo(plane, tol), parallel);
    EXPECT_EQ(plane.IsParallelTo(leaning, tol), parallel);
    EXPECT_EQ(plane.IsEqual(leaning, tol, 2.1), parallel);
    EXPECT_EQ(axis.IsCoplanarWith(line, tol, 1e-9), parallel);
    EXPECT_EQ(axis.ClosestPointsTo(line, &q), 1 - parallel);
    EXPECT_EQ(nearlyIn.IntersectWith(plane, &q), 1 - parallel);
    EXPECT_EQ(nearlyIn.DistanceTo(plane) > 0, parallel);
    EXPECT_EQ(plane.IntersectWith(leaning, &common), 1 - parallel);
    EXPECT_EQ(plane.DistanceTo(leaning) > 0, parallel);
    EXPECT_EQ(segment.IntersectWith(CNuLine(o, tilted), &q), 1 - parallel);
    EXPECT_EQ(line.IntersectWith(CNuCylSurf(5), &q, &q), 2 * (1 - parallel));
    EXPECT_EQ(line.DistanceTo(CNuCylSurf(5)) > 0, parallel);
    const auto expectFirst = [&](CNuObject::ENuObjectType type) {
      ASSERT_GT(found.GetSize(), 0);
      EXPECT_EQ(found[0]->GetType(), type);
      for (int i = 0; i < found.GetSize(); ++i) delete found[i];
    };
    CNuPlane(o, CNuVector(0, c, -s)).IntersectWith(CNuCylSurf(5), &found);
    expectFirst(parallel ? CNuObject::NuTypeLine : CNuObject::NuTypeEllipse);
    const CNuCylSurf tube(5, p, tilted);  // a common line of so coarse a tolerance is on neither
    EXPECT_EQ(FailureOf([&] { CNuCylSurf(5).IntersectWith(tube, &found); }) != "nothing", parallel);
    if (!parallel) expectFirst(CNuObject::NuTypePCurve);
  }
  NuSetDegreeTol(2.777777777778e-10);
  NuSetRadianTol(4.848136811094e-12);
}

TEST(Circles, DivideEvenlyFromTheirXAxis) {
  const CNuCircle circle(5, CNuPoint(1, 2, 3), CNuVector(1, 2, 2));
  for (const int n : {2, 3, 5, 1000, 300001}) {
    const CNuPointArray points = circle.ToPointArray(n);
    ASSERT_EQ(points.GetSize(), n);
    EXPECT_TRUE(points[0].IsEqual(Along(circle.GetCentre(), circle.GetXaxis(), 5), 1e-14));
    EXPECT_TRUE(points[n - 1].IsEqual(points[0], 1e-300));
    const double edge = 10 * std::sin(Nu_PI / (n - 1));
    for (int i = 1; i < n; i += 1 + n / 50) {
      EXPECT_NEAR(points[i].DistanceTo(points[i - 1]), edge, 3e-14);
      EXPECT_LT(points[i].DistanceTo(circle), 1e-14);
    }
    if (n < 5) continue;
    const CNuVector turn = (points[0] - circle.GetCentre()).To3DVector() * (points[1] - points[0]).To3DVector();
    EXPECT_GT(turn % circle.GetNormal(), 0);
  }
  for (const int n : {1, 0, -7}) {
    EXPECT_EQ(FailureOf([&] { circle.ToPointArray(n); }),
              "operation 12 conversion|CNuCircle::ToPolyline/PointArray() [0,0]");
  }
}

}  // namespace
