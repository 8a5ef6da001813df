// Lines against points, lines, planes, circles, conics, spheres, cylinders and cones.
//
// With unit directions d1, d2 turned to make no obtuse angle, the two lines' bisector has the direction d1 + d2. The
// point P1 and the point Q = P2 + s d2 as far from the crossing as P1 make an isosceles triangle, (Q - P1).(d1 + d2) =
// 0, so s = (P1 - P2).(d1 + d2) / (1 + d1.d2), and the middle of P1 and Q is on the bisector. The divisor is 1 at
// least: no angle between the lines is too small. For a plane with normal n, d2 is the direction q of the projection of
// d1.

#include <cmath>

#include "nu/curves/internal/conic_relations.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/feature_data.h"
#include "nu/geometry/internal/line_circle.h"
#include "nu/geometry/internal/surface_data.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/sphere.h"

using nu::internal::Approach;
using nu::internal::ClosestApproach;
using nu::internal::Components;
using nu::internal::DataOf;
using nu::internal::FailOperation;
using nu::internal::IsParallel;
using nu::internal::Line3;
using nu::internal::ParallelTol;
using nu::internal::Plane3;
using nu::internal::SineTol;
using nu::internal::Store;
using nu::internal::ToPoint;
using nu::internal::TouchTol;
using nu::internal::ToVector;
using nu::internal::Vec3;

namespace {

ENuBoolean Truth(bool value) {
  return value ? NuTrue : NuFalse;
}

Approach Approaching(const CNuLine& first, const CNuLine& second) {
  return ClosestApproach(DataOf(first), DataOf(second), ParallelTol());
}

nu::internal::NearLine Nearest(const CNuLine& l, const CNuCircle& circle) {
  const Line3 line = DataOf(l);
  const auto data = DataOf(circle);
  return ClosestTo(line, data, TouchTol(data.radius, line.point, data.centre));
}

nu::internal::ConeApproach Approaching(const CNuLine& l, const CNuConSurf& cone) {
  return ApproachTo(DataOf(cone), DataOf(l), NuGetLengthTol(), ParallelTol());
}

CNuLine Bisector(const Line3& first, Vec3 secondPoint, Vec3 secondDirection) {
  const Vec3 sum = first.direction + secondDirection;
  const double s = Dot(first.point - secondPoint, sum) / Dot(secondDirection, sum);
  const Vec3 q = secondPoint + s * secondDirection;
  return CNuLine(ToPoint(first.point + 0.5 * (q - first.point)), ToVector(sum));
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
  return Truth(Norm(Cross(Components(m_direction), Components(l.m_direction))) <= SineTol(tol));
}

ENuBoolean CNuLine::IsParallelTo(const CNuPlane& pl, double tol) const {
  return Truth(std::fabs(Dot(Components(m_direction), Components(pl.GetNormal()))) <= SineTol(tol));
}

ENuBoolean CNuLine::IsCoplanarWith(const CNuLine& l, double degreeTol, double lengthTol) const {
  return Truth(IsParallelTo(l, degreeTol) == NuTrue || DistanceTo(l) < lengthTol);
}

CNuLine CNuLine::MidLine(const CNuPoint& p) const {
  return CNuLine(p.MidPoint(*this), m_direction);
}

CNuLine CNuLine::MidLine(const CNuLine& l) const {
  const Line3 first = DataOf(*this);
  const Line3 second = DataOf(l);
  const bool obtuse = Dot(first.direction, second.direction) < 0.0;
  return Bisector(first, second.point, obtuse ? -1.0 * second.direction : second.direction);
}

CNuLine CNuLine::MidLine(const CNuPlane& pl) const {
  const Line3 line = DataOf(*this);
  const Plane3 plane = DataOf(pl);
  const Vec3 projected = Rejection(line.direction, plane.normal);
  if (IsParallel(Norm(projected), ParallelTol())) FailOperation(22, "calculation", "CNuLine::MidLine(CNuPlane)");
  const Vec3 foot = line.point - plane.Height(line.point) * plane.normal;
  return Bisector(line, foot, Unit(projected));
}

// The common normal is the direction of the shortest way, which may lie far off: the plane is put up at this line's
// point.
CNuPlane CNuLine::MidPlane(const CNuLine& l) const {
  const Approach approach = Approaching(*this, l);
  if (approach.distance < NuGetLengthTol()) FailOperation(23, "calculation", "CNuLine::MidPlane(CNuLine)");
  const Line3 first = DataOf(*this);
  const Vec3 back = first.point - Components(l.m_point);
  const Vec3 direction = Components(l.m_direction);
  const Vec3 normal = Unit(approach.parallel ? Rejection(back, direction) : Cross(first.direction, direction));
  const double height = Dot(back, normal);
  return CNuPlane(ToPoint(first.point - 0.5 * height * normal), ToVector(height < 0.0 ? -1.0 * normal : normal));
}

double CNuLine::DistanceTo(const CNuLine& l) const {
  return Approaching(*this, l).distance;
}

double CNuLine::DistanceTo(const CNuCircle& circle) const {
  return Nearest(*this, circle).distance;
}

double CNuLine::DistanceTo(const CNuPlane& pl) const {
  if (!IsParallel(std::fabs(Dot(Components(m_direction), Components(pl.GetNormal()))), ParallelTol())) return 0.0;
  return m_point.DistanceTo(pl);
}

double CNuLine::DistanceTo(const CNuSphSurf& sphere) const {
  return std::fmax(sphere.GetCentre().DistanceTo(*this) - sphere.GetRadius(), 0.0);
}

double CNuLine::DistanceTo(const CNuCylSurf& cylinder) const {
  const Approach approach = Approaching(*this, cylinder.GetAxis());
  if (approach.parallel) return std::fabs(approach.distance - cylinder.GetRadius());
  return std::fmax(approach.distance - cylinder.GetRadius(), 0.0);
}

double CNuLine::DistanceTo(const CNuConSurf& cone) const {
  return Approaching(*this, cone).distance;
}

int CNuLine::ClosestPointsTo(const CNuLine& l, CNuPoint* p) const {
  const Approach approach = Approaching(*this, l);
  if (approach.parallel) return 0;
  *p = ToPoint(DataOf(*this).At(approach.alongFirst));
  return 1;
}

int CNuLine::ClosestPointsTo(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const {
  return Store(Nearest(*this, circle).points, p1, p2);
}

int CNuLine::ClosestPointsTo(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const {
  const int common = IntersectWith(sphere, p1, p2);
  if (common > 0) return common;
  *p1 = sphere.GetCentre().ProjectionOn(*this);
  return 1;
}

int CNuLine::ClosestPointsTo(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const {
  const Approach approach = Approaching(*this, cylinder.GetAxis());
  if (approach.parallel) return 0;
  const int common = IntersectWith(cylinder, p1, p2);
  if (common > 0) return common;
  *p1 = ToPoint(DataOf(*this).At(approach.alongFirst));
  return 1;
}

int CNuLine::ClosestPointsTo(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const {
  return Store(Approaching(*this, cone).points, p1, p2);
}

int CNuLine::IntersectWith(const CNuLine& l, CNuPoint* p) const {
  const Approach approach = Approaching(*this, l);
  const Vec3 here = DataOf(*this).At(approach.alongFirst);
  const Vec3 there = DataOf(l).At(approach.alongSecond);
  const double tol = TouchTol(0.0, Components(m_point), Components(l.m_point), here);
  if (approach.parallel || !(approach.distance <= tol)) return 0;
  *p = ToPoint(here + 0.5 * (there - here));
  return 1;
}

int CNuLine::IntersectWith(const CNuPlane& pl, CNuPoint* p) const {
  const Line3 line = DataOf(*this);
  const Plane3 plane = DataOf(pl);
  const double slope = Dot(line.direction, plane.normal);
  if (IsParallel(std::fabs(slope), ParallelTol())) return 0;
  *p = ToPoint(line.At(-plane.Height(line.point) / slope));
  return 1;
}

int CNuLine::IntersectWith(const CNuCircle& circle, CNuPoint* p1, CNuPoint* p2) const {
  const Line3 line = DataOf(*this);
  const auto data = DataOf(circle);
  return Store(Meet(line, data, TouchTol(data.radius, line.point, data.centre)), p1, p2);
}

int CNuLine::IntersectWith(const CNuEllipse& ellipse, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), ellipse, p1, p2);
}

int CNuLine::IntersectWith(const CNuHyperbola& hyperbola, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), hyperbola, p1, p2);
}

int CNuLine::IntersectWith(const CNuParabola& parabola, CNuPoint* p1, CNuPoint* p2) const {
  return StoreCommon(DataOf(*this), parabola, p1, p2);
}

int CNuLine::IntersectWith(const CNuSphSurf& sphere, CNuPoint* p1, CNuPoint* p2) const {
  const Line3 line = DataOf(*this);
  const Vec3 centre = Components(sphere.GetCentre());
  const double tol = TouchTol(sphere.GetRadius(), line.point, centre);
  return Store(MeetSphere(line, centre, sphere.GetRadius(), tol), p1, p2);
}

int CNuLine::IntersectWith(const CNuCylSurf& cylinder, CNuPoint* p1, CNuPoint* p2) const {
  const Line3 line = DataOf(*this);
  const Line3 axis = DataOf(cylinder.GetAxis());
  const Approach approach = ClosestApproach(line, axis, ParallelTol());
  const double tol = TouchTol(cylinder.GetRadius(), line.point, axis.point, line.At(approach.alongFirst));
  return Store(MeetCylinder(line, axis, approach, cylinder.GetRadius(), tol), p1, p2);
}

int CNuLine::IntersectWith(const CNuConSurf& cone, CNuPoint* p1, CNuPoint* p2) const {
  const auto approach = Approaching(*this, cone);
  return approach.meets ? Store(approach.points, p1, p2) : 0;
}
