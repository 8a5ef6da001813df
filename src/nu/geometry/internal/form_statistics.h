#ifndef NU_GEOMETRY_INTERNAL_FORM_STATISTICS_H
#define NU_GEOMETRY_INTERNAL_FORM_STATISTICS_H

#include "nu/geometry/internal/point_blocks.h"

namespace nu::internal {

// Sum of the squared deviations of a point set from a feature, and the extreme deviations, in the unit of the points.
struct Deviations {
  double sumSquares = 0.0;
  double smallest = 0.0;
  double largest = 0.0;
};

// From a plane through `mean` (as the blocks have it: relative to their origin, scaled), along its unit normal.
Deviations PlaneDeviations(PointBlocks& points, const Vec3& mean, const Vec3& normal);

// From a line in a plane z = const: the z component of direction x (p - mean).
Deviations PlanarLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction);

// Distances from a line in space; the smallest is given as 0.
Deviations SpaceLineDeviations(PointBlocks& points, const Vec3& mean, const Vec3& direction);

}  // namespace nu::internal

#endif
