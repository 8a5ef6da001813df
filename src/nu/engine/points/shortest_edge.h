#ifndef NU_ENGINE_POINTS_SHORTEST_EDGE_H
#define NU_ENGINE_POINTS_SHORTEST_EDGE_H

#include "nu/engine/points/edge.h"

namespace nu::engine::points {

// The shortest edge between two points as the loop over all pairs i < j, i ascending, then j ascending, finds it: of
// equal rounded lengths the first wins, and lengths that are NaN take no part. Starts at `large`, which stays (with
// m = n = 0) when no pair is below it. `zero` is that of EdgeLength.
Edge ShortestEdge(const PointView& points, double zero, double large);

}  // namespace nu::engine::points

#endif
