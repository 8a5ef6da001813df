#ifndef NU_ENGINE_SHAPES_PLANE_AXES_H
#define NU_ENGINE_SHAPES_PLANE_AXES_H

#include "nu/engine/shapes/vec2.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// A plane with an origin and two orthonormal axes. Seen from the tip of the normal, x turns to y counter-clockwise.
struct PlaneAxes {
  Vec3 Normal() const { return Cross(x, y); }
  Vec2 LocalDirection(Vec3 v) const { return {Dot(v, x), Dot(v, y)}; }
  Vec2 Local(Vec3 p) const { return LocalDirection(p - origin); }
  Vec3 Global(Vec2 p) const { return origin + p.x * x + p.y * y; }

  Vec3 origin;
  Vec3 x;
  Vec3 y;
};

}  // namespace nu::engine::shapes

#endif
