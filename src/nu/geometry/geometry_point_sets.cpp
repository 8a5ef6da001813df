#include "nu/engine/points/coincidence.h"
#include "nu/engine/points/last_beyond.h"
#include "nu/foundation/internal/failures.h"
#include "nu/foundation/internal/outputs.h"
#include "nu/foundation/tolerances.h"
#include "nu/geometry/geometry.h"
#include "nu/geometry/internal/conversions.h"
#include "nu/geometry/internal/point_set.h"
#include "nu/geometry/plane.h"
#include "nu/geometry/point_array.h"
#include "nu/linalg/vector.h"

using namespace nu::internal;

namespace {

// A plane through `point`; a normal that gives none is replaced by the z axis, even where NuGetZero() is so large that
// this one counts as zero too.
CNuPlane PlaneThrough(const CNuPoint& point, Vec3 normal) {
  if (!IsNull(normal, NuGetZero()) && IsFinite(normal)) return CNuPlane(point, ToVector(normal));
  CNuPlane plane;
  plane.Translate(point);
  return plane;
}

}  // namespace

int CNuGeometry::AreCollinear(const CNuPointArray& points, CNuVector* normal, double tol) {
  const CNuPoint* p = points.GetData();
  const int n = points.GetSize();
  if (n < 3) return 1;
  const Vec3 start = Components(p[0]);
  int i = 1;
  while (i < n && IsNull(Components(p[i]) - start, tol)) ++i;
  if (i == n) return 1;
  const Vec3 d = Components(p[i]) - start;
  for (int j = i + 1; j < n; ++j) {
    const Vec3 e = Components(p[j]) - start;
    if (IsNull(e, tol) || IsNull(Cross(d, e), tol)) continue;
    // The product itself may overflow, and under a tolerance that lets nothing be null it may be zero.
    const Vec3 c = Cross(Rescaled(d), Rescaled(e));
    if (IsNull(c, NuGetZero())) continue;
    CNuVector axis = ToVector(Unit(c));
    axis.SymmetricAxis(NuGetLengthTol(), 1);
    Output(normal, axis);
    return 0;
  }
  return 1;
}

int CNuGeometry::AreCoplanar(const CNuPointArray& points, double tol) {
  CNuPlane plane;
  return AreCoplanar(points, &plane, tol);
}

int CNuGeometry::AreCoplanar(const CNuPointArray& points, CNuPlane* plane, double tol) {
  const int n = points.GetSize();
  if (n < 4) return 1;
  const CNuPoint* p = points.GetData();
  CNuVector normal;
  if (AreCollinear(points, &normal, tol) == 1) {
    const Vec3 along = Components(p[n - 1]) - Components(p[0]);
    Output(plane, PlaneThrough(p[0], IsNull(along, tol) ? Vec3{0.0, 0.0, 1.0} : along));
    return 1;
  }
  const CNuPlane spanned = PlaneThrough(p[0], Components(normal));
  Output(plane, spanned);
  // The first three points span the plane.
  const Vec3 axis = Components(spanned.GetNormal());
  return LastBeyond(ViewOf(points), 3, Components(p[0]), axis, tol) < 0 ? 1 : 0;
}

int CNuGeometry::NumberDistinctPoints(const CNuPointArray& points, int n, double tol) {
  return WithMemory("CNuGeometry::NumberDistinctPoints()",
                    [&] { return HasDistinct(ViewOf(points), n, tol, NuGetZero()) ? 1 : 0; });
}

CNuPointArray CNuGeometry::Projection2D(const CNuPointArray& points, CNuVector& normal) {
  CNuVector unit(normal), x, y;
  unit.OrthonormalXY(&x, &y);
  CNuPointArray projected = Projection2D(points, CNuPoint(), x, y);
  normal = unit;
  return projected;
}

CNuPointArray CNuGeometry::Projection2D(const CNuPointArray& points, const CNuPoint& origin, const CNuVector& xaxis,
                                        const CNuVector& yaxis) {
  if (xaxis.GetSize() != 3 || yaxis.GetSize() != 3) FailOperation(NuOperationSizeMismatch, "operator%", "CNuVector");
  CNuPointArray projected(points.GetSize());
  const Vec3 start = Components(origin);
  const Vec3 x = Components(xaxis);
  const Vec3 y = Components(yaxis);
  for (int i = 0; i < points.GetSize(); ++i) {
    const Vec3 v = Components(points.GetData()[i]) - start;
    projected.Add(CNuPoint(Dot(v, x), Dot(v, y), 0.0));
  }
  return projected;
}
