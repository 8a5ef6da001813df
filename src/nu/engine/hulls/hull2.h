#ifndef NU_ENGINE_HULLS_HULL2_H
#define NU_ENGINE_HULLS_HULL2_H

#include <vector>

#include "nu/engine/points/point_view.h"

namespace nu::engine::hulls {

// The vertices of the convex hull of the points' x and y, counter-clockwise from the least x (ties: least y). The hull
// is that of the given doubles, without rounding: no vertex lies on the line of its neighbours. Of coincident points
// the first stands for all; points with a non-finite x or y are left out. One vertex when all points coincide, two when
// they lie on one line. n log n at worst, linear where few points are near the hull.
std::vector<int> ConvexHull2(const PointView& points);

}  // namespace nu::engine::hulls

#endif
