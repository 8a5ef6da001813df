#ifndef NU_ENGINE_POINTS_PRINCIPAL_DIRECTION_H
#define NU_ENGINE_POINTS_PRINCIPAL_DIRECTION_H

#include "nu/engine/points/point_blocks.h"

namespace nu::engine::points {

// The direction in which a point set extends farthest (the least-squares line) or least (the normal of the
// least-squares plane): a right singular vector of the matrix whose rows are the points relative to their mean.
enum class Extent { largest, smallest };

struct PrincipalDirection {
  bool finite = false;           // false: a coordinate was not finite, and nothing else has a meaning
  Vec3 mean;                     // of the points of the blocks: relative to their origin, scaled
  Vec3 direction;                // unit length, either sign; zero for points that all coincide
  double largestSingular = 0.0;  // in the unit of the points
};

// Sets the scale of the blocks. Throws std::bad_alloc.
PrincipalDirection FindPrincipalDirection(PointBlocks& points, Extent extent);

}  // namespace nu::engine::points

#endif
