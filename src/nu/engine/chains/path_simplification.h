#ifndef NU_ENGINE_CHAINS_PATH_SIMPLIFICATION_H
#define NU_ENGINE_CHAINS_PATH_SIMPLIFICATION_H

#include <cstddef>
#include <vector>

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::chains {

struct SimplifiedPath {
  std::vector<std::size_t> kept;  // ascending, from the first to the last point
  double deviation = 0.0;         // the largest distance of a point left out from the edge that bridges it
};

// The fewest of at least one point so that no other one is farther than the tolerance from the edge between the two
// kept ones around it. The mathematics is at the top of the source. Throws std::bad_alloc.
SimplifiedPath SimplifyPath(const std::vector<Vec3>& points, double tolerance);

}  // namespace nu::engine::chains

#endif
