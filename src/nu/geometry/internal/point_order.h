#ifndef NU_GEOMETRY_INTERNAL_POINT_ORDER_H
#define NU_GEOMETRY_INTERNAL_POINT_ORDER_H

#include <algorithm>
#include <tuple>

#include "nu/geometry/point_array.h"

namespace nu::internal {

// Only few and regular points, those of a lattice, have several optima that are equal to the last digit. There rounding
// would let the order of the points choose, so it is made the same for all.
inline bool NeedsCanonicalOrder(const CNuPointArray& points) {
  constexpr int kFewPoints = 256;
  return points.GetSize() <= kFewPoints;
}

inline CNuPointArray Ordered(const CNuPointArray& points) {
  CNuPointArray ordered(points);
  std::sort(ordered.GetData(), ordered.GetData() + ordered.GetSize(), [](const CNuPoint& p, const CNuPoint& q) {
    return std::make_tuple(p.x(), p.y(), p.z()) < std::make_tuple(q.x(), q.y(), q.z());
  });
  return ordered;
}

}  // namespace nu::internal

#endif
