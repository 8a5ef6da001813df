#ifndef NU_GEOMETRY_INTERNAL_UNBOUNDED_POINTS_H
#define NU_GEOMETRY_INTERNAL_UNBOUNDED_POINTS_H

#include <vector>

#include "nu/geometry/internal/box_tree.h"
#include "nu/geometry/internal/edge.h"

// Edges of sets in which some coordinates are infinite or NaN.
namespace nu::internal {

std::vector<IndexedPoint> FinitePoints(const PointView& points);

// The first pair whose length is infinite because a coordinate is; no pair when there is none.
Edge FirstInfiniteEdge(const PointView& points, double zero);

}  // namespace nu::internal

#endif
