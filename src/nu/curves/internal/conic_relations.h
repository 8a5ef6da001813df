#ifndef NU_CURVES_INTERNAL_CONIC_RELATIONS_H
#define NU_CURVES_INTERNAL_CONIC_RELATIONS_H

#include "nu/curves/internal/conic_class.h"
#include "nu/geometry/internal/feature_data.h"

// Conics of the interface against lines and planes.
namespace nu::internal {

// A line (Line3) or a plane (Plane3).
template<class Other, class Conic>
int StoreCommon(const Other& other, const Conic& conic, CNuPoint* p1, CNuPoint* p2) {
  const auto data = DataOf(conic);
  const double tol = TouchTol(data.curve.Size(), data.origin, other.point);
  if constexpr (std::is_same_v<Other, Line3>)
    return Store(Meet(other, data, tol, NuGetRadianTol()), p1, p2);
  else
    return Store(Meet(data, other, tol, NuGetRadianTol()), p1, p2);
}

}  // namespace nu::internal

#endif
