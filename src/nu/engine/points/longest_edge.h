#ifndef NU_ENGINE_POINTS_LONGEST_EDGE_H
#define NU_ENGINE_POINTS_LONGEST_EDGE_H

#include "nu/engine/points/edge.h"

namespace nu::engine::points {

// The longest edge between two points as the loop over all pairs i < j, i ascending, then j ascending, finds it: of
// equal rounded lengths the first wins, and lengths that are NaN take no part. Starts at -0.1, which stays (with
// m = n = 0) when no pair has a length. `zero` is that of EdgeLength.
Edge LongestEdge(const PointView& points, double zero);

}  // namespace nu::engine::points

#endif
