// Planes against points, lines and planes.
//
// Two planes with normals n1, n2, turned to make no obtuse angle, are equally far from the points of
// (n1 + n2).x = n1.P1 + n2.P2; from P1 such a point lies n2.(P2 - P1) / |n1 + n2|^2 along n1 + n2, whose square is 2 at
// least. Between a plane and a line with direction d, q that of its projection, the bisecting plane holds the bisector
// d + q and has the normal n (1 + d.q) - q (d.n).

#include <cmath>

#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/feature_data.h"

using nu::internal::AreParallel;
using nu::internal::Components;
using nu::internal::DataOf;
using nu::internal::FailOperation;
using nu::internal::IsParallel;
using nu::internal::Line3;
using nu::internal::ParallelTol;
using nu::internal::Plane3;
using nu::internal::SineTol;
using nu::internal::ToPoint;
using nu::internal::ToVector;
using nu::internal::Vec3;

double CNuPlane::AngleWith(const CNuPlane& pl) const {
  return m_normal.AngleWith(pl.m_normal);
}

double CNuPlane::DistanceTo(const CNuPlane& pl) const {
  return AreParallel(Components(m_normal), Components(pl.m_normal)) ? pl.m_point.DistanceTo(*this) : 0.0;
}

ENuBoolean CNuPlane::IsEqual(const CNuPlane& pl, double degreeTol, double lengthTol) const {
  const bool close = pl.m_point.DistanceTo(*this) < lengthTol && m_point.DistanceTo(pl) < lengthTol;
  return close ? IsParallelTo(pl, degreeTol) : NuFalse;
}

ENuBoolean CNuPlane::IsParallelTo(const CNuPlane& pl, double tol) const {
  return Norm(Cross(Components(m_normal), Components(pl.m_normal))) <= SineTol(tol) ? NuTrue : NuFalse;
}

CNuPlane CNuPlane::MidPlane(const CNuPoint& p) const {
  return CNuPlane(p.MidPoint(*this), m_normal);
}

CNuPlane CNuPlane::MidPlane(const CNuLine& l) const {
  const Line3 line = DataOf(l);
  const Plane3 plane = DataOf(*this);
  const double rise = Dot(line.direction, plane.normal);
  const Vec3 projected = Rejection(line.direction, plane.normal);
  if (IsParallel(Norm(projected), ParallelTol())) FailOperation(24, "calculation", "CNuPlane::MidPlane(CNuLine)");
  const Vec3 q = Unit(projected);
  const Vec3 normal = (1.0 + Dot(line.direction, q)) * plane.normal - rise * q;
  return CNuPlane(l.MidLine(*this).GetPoint(), ToVector(normal));
}

CNuPlane CNuPlane::MidPlane(const CNuPlane& pl) const {
  const Plane3 first = DataOf(*this);
  const Plane3 second = DataOf(pl);
  const Vec3 other = Dot(first.normal, second.normal) < 0.0 ? -1.0 * second.normal : second.normal;
  const Vec3 sum = first.normal + other;
  const double way = Dot(other, second.point - first.point) / Dot(sum, sum);
  return CNuPlane(ToPoint(first.point + way * sum), ToVector(sum));
}

int CNuPlane::IntersectWith(const CNuLine& l, CNuPoint* p) const {
  return l.IntersectWith(*this, p);
}

int CNuPlane::IntersectWith(const CNuPlane& pl, CNuLine* l) const {
  const Plane3 first = DataOf(*this);
  const Plane3 second = DataOf(pl);
  if (AreParallel(first.normal, second.normal)) return 0;
  const Line3 common = Meet(first, second);
  *l = CNuLine(ToPoint(common.point), ToVector(common.direction));
  return 1;
}
