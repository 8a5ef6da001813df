// Lines against points, lines, planes, circles, conics, spheres, cylinders and cones.
//
// With unit directions d1, d2 turned to make no obtuse angle, the two lines' bisector has the direction d1 + d2. The
// point P1 and the point Q = P2 + s d2 as far from the crossing as P1 make an isosceles triangle, (Q - P1).(d1 + d2) =
// 0, so s = (P1 - P2).(d1 + d2) / (1 + d1.d2), and the middle of P1 and Q is on the bisector. The divisor is 1 at
// least: no angle between the lines is too small. For a plane with normal n, d2 is the direction q of the projection of
// d1.

#include <cmath>

#include "nu/curves/internal/conic_relations.h"
#include "nu/engine/shapes/line_circle.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/surface_data.h"

using namespace nu::internal;

namespace {

ENuBoolean ToENuBoolean(bool value) {
  return value ? NuTrue : NuFalse;
}

Approach Approaching(const Line3& first, const Line3& second) {
  return ClosestApproach(first, second, ParallelTol());
}

NearLine Nearest(const char* where, const Line3& line, const Circle3& circle) {
  return WithMemory(where, [&] { return ClosestTo(line, circle, TouchTol(circle.radius, line.point, circle.centre)); });
}

ConeApproach Approaching(const Line3& line, const DoubleCone& cone) {
  return ApproachTo(cone, line, NuGetLengthTol(), ParallelTol());
}

// From the surface of a ball, or of a tube across.
double Outside(double distance, double radius) {
  return distance < radius ? 0.0 : distance - radius;
}

Line3 Bisector(const Line3& first, Vec3 secondPoint, Vec3 secondDirection) {
  const Vec3 sum = first.direction + secondDirection;
  const double s = Dot(first.point - secondPoint, sum) / Dot(secondDirection, sum);
  const Vec3 q = secondPoint + s * secondDirection;
  return {first.point + 0.5 * (q - first.point), sum};
}

Points2 Common(const Line3& line, const Sphere3& sphere) {
  return Intersect(line, sphere, TouchTol(sphere.radius, line.point, sphere.centre));
}

Points2 Common(const Line3& line, const Cylinder3& cylinder, const Approach& approach) {
  const Vec3 nearest = line.At(approach.alongFirst);
  return Intersect(line, cylinder, approach, TouchTol(cylinder.radius, line.point, cylinder.axis.point, nearest));
}

int StoreOne(Vec3 found, CNuPoint* p, const char* where) {
  RequireFinite(where, found);
  Output(p, ToPoint(found));
  return 1;
}

}  // namespace

double CNuLine::AngleWith(const CNuLine& l) const {
  return m_direction.AngleWith(l.m_direction);
}

double CNuLine::AngleWith(const CNuPlane& pl) const {
  return m_direction.AngleWith(pl.GetNormal());
}

double CNuLine::AngleWith(const CNuLine& l, const CNuVector& axis) const {
  return m_direction.AngleWith(l.m_direction, axis);
}

ENuBoolean CNuLine::IsParallelTo(const CNuLine& l, double tol) const {
  return ToENuBoolean(Norm(Cross(Components(m_direction), Components(l.m_direction))) <= SineTol(tol));
}

ENuBoolean CNuLine::IsParallelTo(const CNuPlane& pl, double tol) const {
  return ToENuBoolean(std::fabs(Dot(Components(m_direction), Components(pl.GetNormal()))) <= SineTol(tol));
}

ENuBoolean CNuLine::IsCoplanarWith(const CNuLine& l, double degreeTol, double lengthTol) const {
  return ToENuBoolean(IsParallelTo(l, degreeTol) == NuTrue || DistanceTo(l) < lengthTol);
}

CNuLine CNuLine::MidLine(const CNuPoint& p) const {
  return LineFor(Components(p.MidPoint(*this)), Components(m_direction), "CNuLine::MidLine(CNuPoint)");
}

CNuLine CNuLine::MidLine(const CNuLine& l) const {
  const Line3 first = DataOf(*this);
  const Line3 second = DataOf(l);
  const bool obtuse = Dot(first.direction, second.direction) < 0.0;
  const Line3 mid = Bisector(first, second.point, obtuse ? -1.0 * second.direction : second.direction);
  return LineFor(mid.point, mid.direction, "CNuLine::MidLine(CNuLine)");
}

CNuLine CNuLine::MidLine(const CNuPlane& pl) const {
  constexpr const char* where = "CNuLine::MidLine(CNuPlane)";
  const auto [line, plane] = FiniteData(where, DataOf(*this), DataOf(pl));
  const Vec3 projected = Rejection(line.direction, plane.normal);
  if (IsParallel(Norm(projected), ParallelTol())) FailOperation(NuOperationLineAcrossPlane, "calculation", where);
  const Vec3 foot = line.point - plane.Height(line.point) * plane.normal;
  const Line3 mid = Bisector(line, foot, Unit(projected));
  return LineFor(mid.point, mid.direction, where);
}

// The common normal is the direction of the shortest way, which may lie far off: the plane is put up at this line's
// point.
CNuPlane CNuLine::MidPlane(const CNuLine& l) const {
  constexpr const char* where = "CNuLine::MidPlane(CNuLine)";
  const auto [first, second] = FiniteData(where, DataOf(*this), DataOf(l));
  const Approach approach = Approaching(first, second);
  if (approach.distance < NuGetLengthTol()) FailOperation(NuOperationLinesMeet, "calculation", where);
  const Vec3 back = first.point - second.point;
  const Vec3 across = approach.parallel ? Rejection(back, second.direction) : Cross(first.direction, second.direction);
  const Vec3 normal = Unit(across);
  const double height = Dot(back, normal);
  return PlaneFor(first.point - 0.5 * height * normal, height < 0.0 ? -1.0 * normal : normal, where);
}

double CNuLine::DistanceTo(const CNuLine& l) const {
  return DistanceOrNaN(DataOf(*this), DataOf(l),
                       [](const Line3& first, const Line3& second) { return Approaching(first, second).distance; });
}

double CNuLine::DistanceTo(const CNuCircle& circle) const {
  return DistanceOrNaN(DataOf(*this), DataOf(circle), [](const Line3& line, const Circle3& data) {
    return Nearest("CNuLine::DistanceTo(CNuCircle)", line, data).distance;
  });
}

double CNuLine::DistanceTo(const CNuPlane& pl) const {
  return DistanceOrNaN(DataOf(*this), DataOf(pl), [](const Line3& line, const Plane3& plane) {
    const bool parallel = IsParallel(std::fabs(Dot(line.direction, plane.normal)), ParallelTol());
    return parallel ? std::fabs(plane.Height(line.point)) : 0.0;
  });
}

double CNuLine::DistanceTo(const CNuSphSurf& sphere) const {
  return Outside(sphere.GetCentre().DistanceTo(*this), sphere.GetRadius());
}

double CNuLine::DistanceTo(const CNuCylSurf& cylinder) const {
  return DistanceOrNaN(DataOf(*this), DataOf(cylinder), [](const Line3& line, const Cylinder3& tube) {
    const Approach approach = Approaching(line, tube.axis);
    return approach.parallel ? std::fabs(approach.distance - tube.radius) : Outside(approach.distance, tube.radius);
  });
}

double CNuLine::DistanceTo(const CNuConSurf& cone) const {
  return DistanceOrNaN(DataOf(*this), DataOf(cone),
                       [](const Line3& line, const DoubleCone& data) { return Approaching(line, data).distance; });
}

int CNuLine::ClosestPointsTo(const CNuLine& l, CNuPoint* p) const {
  constexpr const char* where = "CNuLine::ClosestPointsTo(CNuLine)";
  const auto [first, second] = FiniteData(where, DataOf(*this), DataOf(l));
  const Approach approach = Approaching(first, second);
  return approach.parallel ? 0 : StoreOne(first.At(approach.alongFirst), p, where);
}

int CNuLine::ClosestPointsTo(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::ClosestPointsTo(CNuCircle)";
  const auto [line, data] = FiniteData(where, DataOf(*this), DataOf(circle));
  return Store(Nearest(where, line, data).points, p1, p2, where);
}

int CNuLine::ClosestPointsTo(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::ClosestPointsTo(CNuSphSurf)";
  const auto [line, ball] = FiniteData(where, DataOf(*this), DataOf(sphere));
  const Points2 common = Common(line, ball);
  if (common.count > 0) return Store(common, p1, p2, where);
  return StoreOne(line.At(Dot(ball.centre - line.point, line.direction)), p1, where);
}

int CNuLine::ClosestPointsTo(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::ClosestPointsTo(CNuCylSurf)";
  const auto [line, tube] = FiniteData(where, DataOf(*this), DataOf(cylinder));
  const Approach approach = Approaching(line, tube.axis);
  if (approach.parallel) return 0;
  const Points2 common = Common(line, tube, approach);
  if (common.count > 0) return Store(common, p1, p2, where);
  return StoreOne(line.At(approach.alongFirst), p1, where);
}

int CNuLine::ClosestPointsTo(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::ClosestPointsTo(CNuConSurf)";
  const auto [line, data] = FiniteData(where, DataOf(*this), DataOf(cone));
  return Store(Approaching(line, data).points, p1, p2, where);
}

int CNuLine::IntersectWith(const CNuLine& l, CNuPoint* p) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuLine)";
  const auto [first, second] = FiniteData(where, DataOf(*this), DataOf(l));
  const Approach approach = Approaching(first, second);
  const Vec3 here = first.At(approach.alongFirst);
  const Vec3 there = second.At(approach.alongSecond);
  const double tol = TouchTol(0.0, first.point, second.point, here);
  if (approach.parallel || approach.distance > tol) return 0;
  return StoreOne(here + 0.5 * (there - here), p, where);
}

int CNuLine::IntersectWith(const CNuPlane& pl, CNuPoint* p) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuPlane)";
  const auto [line, plane] = FiniteData(where, DataOf(*this), DataOf(pl));
  const double slope = Dot(line.direction, plane.normal);
  if (IsParallel(std::fabs(slope), ParallelTol())) return 0;
  return StoreOne(line.At(-plane.Height(line.point) / slope), p, where);
}

int CNuLine::IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuCircle)";
  const auto [line, data] = FiniteData(where, DataOf(*this), DataOf(circle));
  return Store(Intersect(line, data, TouchTol(data.radius, line.point, data.centre)), p1, p2, where);
}

int CNuLine::IntersectWith(const CNuEllipse& ellipse, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), ellipse, p1, p2, "CNuLine::IntersectWith(CNuEllipse)");
}

int CNuLine::IntersectWith(const CNuHyperbola& hyperbola, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), hyperbola, p1, p2, "CNuLine::IntersectWith(CNuHyperbola)");
}

int CNuLine::IntersectWith(const CNuParabola& parabola, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), parabola, p1, p2, "CNuLine::IntersectWith(CNuParabola)");
}

int CNuLine::IntersectWith(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuSphSurf)";
  const auto [line, ball] = FiniteData(where, DataOf(*this), DataOf(sphere));
  return Store(Common(line, ball), p1, p2, where);
}

int CNuLine::IntersectWith(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuCylSurf)";
  const auto [line, tube] = FiniteData(where, DataOf(*this), DataOf(cylinder));
  return Store(Common(line, tube, Approaching(line, tube.axis)), p1, p2, where);
}

int CNuLine::IntersectWith(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const {
  constexpr const char* where = "CNuLine::IntersectWith(CNuConSurf)";
  const auto [line, data] = FiniteData(where, DataOf(*this), DataOf(cone));
  const auto approach = Approaching(line, data);
  return approach.meets ? Store(approach.points, p1, p2, where) : 0;
}
