#ifndef NU_ENGINE_SHAPES_AXIS_DIRECTION_H
#define NU_ENGINE_SHAPES_AXIS_DIRECTION_H

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// The one of d and -d whose component of largest magnitude, the first of equals, is positive.
inline Vec3 WithLargestPositive(Vec3 d) {
  const double x = std::fabs(d.x), y = std::fabs(d.y), z = std::fabs(d.z);
  const double largest = x >= y && x >= z ? d.x : y >= z ? d.y : d.z;
  return largest < 0.0 ? -1.0 * d : d;
}

// A unit vector across d, and across the coordinate axis that is farthest from it.
inline Vec3 AnyAcross(Vec3 d) {
  const double x = std::fabs(d.x), y = std::fabs(d.y), z = std::fabs(d.z);
  if (x <= y && x <= z) return Unit(Cross(d, {1.0, 0.0, 0.0}));
  return Unit(Cross(d, y <= z ? Vec3{0.0, 1.0, 0.0} : Vec3{0.0, 0.0, 1.0}));
}

}  // namespace nu::engine::shapes

#endif
