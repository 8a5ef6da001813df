// Planes against points, lines and planes.
//
// Two planes with normals n1, n2, turned to make no obtuse angle, are equally far from the points of
// (n1 + n2).x = n1.P1 + n2.P2; from P1 such a point lies n2.(P2 - P1) / |n1 + n2|^2 along n1 + n2, whose square is 2 at
// least. Between a plane and a line with direction d, q that of its projection, the bisecting plane holds the bisector
// d + q and has the normal n (1 + d.q) - q (d.n).

#include <cmath>

#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/geometry/internal/feature_data.h"

using namespace nu::internal;

double CNuPlane::AngleWith(const CNuPlane& pl) const {
  return m_normal.AngleWith(pl.m_normal);
}

double CNuPlane::DistanceTo(const CNuPlane& pl) const {
  return DistanceOrNaN(DataOf(*this), DataOf(pl), [](const Plane3& first, const Plane3& second) {
    return AreParallel(first.normal, second.normal) ? std::fabs(first.Height(second.point)) : 0.0;
  });
}

ENuBoolean CNuPlane::IsEqual(const CNuPlane& pl, double degreeTol, double lengthTol) const {
  const bool close = pl.m_point.DistanceTo(*this) < lengthTol && m_point.DistanceTo(pl) < lengthTol;
  return close ? IsParallelTo(pl, degreeTol) : NuFalse;
}

ENuBoolean CNuPlane::IsParallelTo(const CNuPlane& pl, double tol) const {
  return Norm(Cross(Components(m_normal), Components(pl.m_normal))) <= SineTol(tol) ? NuTrue : NuFalse;
}

CNuPlane CNuPlane::MidPlane(const CNuPoint& p) const {
  return PlaneFor(Components(p.MidPoint(*this)), Components(m_normal), "CNuPlane::MidPlane(CNuPoint)");
}

CNuPlane CNuPlane::MidPlane(const CNuLine& l) const {
  constexpr const char* where = "CNuPlane::MidPlane(CNuLine)";
  const auto [line, plane] = FiniteData(where, DataOf(l), DataOf(*this));
  const double rise = Dot(line.direction, plane.normal);
  const Vec3 projected = Rejection(line.direction, plane.normal);
  if (IsParallel(Norm(projected), ParallelTol())) FailOperation(NuOperationPlaneAcrossLine, "calculation", where);
  const Vec3 q = Unit(projected);
  const Vec3 normal = (1.0 + Dot(line.direction, q)) * plane.normal - rise * q;
  return PlaneFor(Components(l.MidLine(*this).GetPoint()), normal, where);
}

CNuPlane CNuPlane::MidPlane(const CNuPlane& pl) const {
  const Plane3 first = DataOf(*this);
  const Plane3 second = DataOf(pl);
  const Vec3 other = Dot(first.normal, second.normal) < 0.0 ? -1.0 * second.normal : second.normal;
  const Vec3 sum = first.normal + other;
  const double factor = Dot(other, second.point - first.point) / Dot(sum, sum);
  return PlaneFor(first.point + factor * sum, sum, "CNuPlane::MidPlane(CNuPlane)");
}

int CNuPlane::IntersectWith(const CNuLine& l, CNuPoint* p) const {
  return l.IntersectWith(*this, p);
}

int CNuPlane::IntersectWith(const CNuPlane& pl, CNuLine* l) const {
  constexpr const char* where = "CNuPlane::IntersectWith(CNuPlane)";
  const auto [first, second] = FiniteData(where, DataOf(*this), DataOf(pl));
  if (AreParallel(first.normal, second.normal)) return 0;
  const Line3 common = Intersect(first, second);
  Output(l, LineFor(common.point, common.direction, where));
  return 1;
}
