#ifndef NU_CURVES_INTERNAL_PLANE_AXES_H
#define NU_CURVES_INTERNAL_PLANE_AXES_H

#include "nu/engine/shapes/incidence.h"
#include "nu/engine/shapes/vec2.h"
#include "nu/geometry/internal/conversions.h"

namespace nu::internal {

// A plane with two axes, from whose normal the first one is a quarter turn to the right of the second.
struct PlaneAxes {
  explicit PlaneAxes(const Plane3& plane) : origin(plane.point), normal(plane.normal) {
    CNuVector direction = ToVector(normal);
    CNuVector first, second;
    direction.OrthonormalXY(&first, &second);
    x = Components(first);
    y = Components(second);
  }
  Vec2 LocalDirection(Vec3 v) const { return {Dot(v, x), Dot(v, y)}; }
  Vec2 Local(Vec3 p) const { return LocalDirection(p - origin); }
  Vec3 Global(Vec2 p) const { return origin + p.x * x + p.y * y; }

  Vec3 origin, normal, x, y;
};

}  // namespace nu::internal

#endif
