#ifndef NU_ENGINE_POINTS_UNBOUNDED_POINTS_H
#define NU_ENGINE_POINTS_UNBOUNDED_POINTS_H

#include <vector>

#include "nu/engine/points/box_tree.h"
#include "nu/engine/points/edge.h"

// Edges of sets in which some coordinates are infinite or NaN.
namespace nu::engine::points {

std::vector<IndexedPoint> FinitePoints(const PointView& points);

// The first pair whose length is infinite because a coordinate is; no pair when there is none.
Edge FirstInfiniteEdge(const PointView& points, double zero);

}  // namespace nu::engine::points

#endif
