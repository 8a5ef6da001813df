#ifndef NU_ENGINE_POINTS_CANONICAL_ORDER_H
#define NU_ENGINE_POINTS_CANONICAL_ORDER_H

#include <algorithm>
#include <tuple>
#include <vector>

#include "nu/engine/points/extents.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::points {

// What fit(points) finds with finite points in the order of their coordinates.
template<class Fit>
auto InOrder(PointView points, Fit fit) {
  std::vector<Vec3> ordered;
  ordered.reserve(points.Size());
  for (std::size_t i = 0; i < points.Size(); ++i) ordered.push_back(LoadVec3(points[i]));
  std::sort(ordered.begin(), ordered.end(),
            [](const Vec3& p, const Vec3& q) { return std::tie(p.x, p.y, p.z) < std::tie(q.x, q.y, q.z); });
  return fit(PointView(&ordered.data()->x, sizeof(Vec3), ordered.size()));
}

// Only few and regular points, those of a lattice, have several optima that are equal to the last digit. There rounding
// would let the order of the points choose, so it is made the same for all.
inline bool NeedsCanonicalOrder(PointView points) {
  constexpr std::size_t kFewPoints = 256;
  return points.Size() <= kFewPoints && ExtentsOf(points).isFinite;
}

// What fit(points) finds, few points taken in that order.
template<class Fit>
auto InCanonicalOrder(PointView points, Fit fit) {
  return NeedsCanonicalOrder(points) ? InOrder(points, fit) : fit(points);
}

}  // namespace nu::engine::points

#endif
