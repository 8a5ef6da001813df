#ifndef NU_CURVES_INTERNAL_CONIC_RELATIONS_H
#define NU_CURVES_INTERNAL_CONIC_RELATIONS_H

#include "nu/curves/internal/conic_class.h"
#include "nu/foundation/numeric_helpers.h"
#include "nu/geometry/internal/feature_data.h"

// Conics of the interface against points, lines and planes.
namespace nu::internal {

// A line (Line3) or a plane (Plane3).
template<class Other, class Conic>
int StoreCommon(const Other& other, const Conic& conic, CNuPoint* p1, CNuPoint* p2, const char* where) {
  const auto data = DataOf(conic);
  RequireFinite(where, other, data);
  const double tol = TouchTol(data.curve.Size(), data.origin, other.point);
  if constexpr (std::is_same_v<Other, Line3>)
    return Store(Intersect(other, data, tol, ParallelTol()), p1, p2, where);
  else
    return Store(Intersect(data, other, tol, ParallelTol()), p1, p2, where);
}

// A point seen from a conic: the distance in the plane from its foot on the curve, the height over the plane, 0 within
// NuGetLengthTol(), and whether it is outside.
struct ConicCoordinates {
  double Distance() const { return NuPythag(height, inPlane); }

  double inPlane;
  double height;
  bool outside;
};

template<class Conic>
ConicCoordinates CoordinatesFor(const CNuPoint& p, const Conic& conic) {
  const auto data = DataOf(conic);
  const Vec3 world = Components(p);
  const Vec2 at = data.Local(world);
  const Vec2 offset = at - FootOn(data.curve, at);
  const double height = data.Height(world);
  return {NuPythag(offset.x, offset.y), std::fabs(height) < NuGetLengthTol() ? 0.0 : height, !data.curve.Holds(at)};
}

}  // namespace nu::internal

#endif
