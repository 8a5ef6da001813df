#ifndef NU_ENGINE_SHAPES_AXIS_FRAME_H
#define NU_ENGINE_SHAPES_AXIS_FRAME_H

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// A unit vector.
inline Vec3 AnyOrthogonal(Vec3 unit) {
  const bool alongX = std::fabs(unit.x) > std::fabs(unit.y);
  return Unit(Cross(unit, alongX ? Vec3{0.0, 1.0, 0.0} : Vec3{1.0, 0.0, 0.0}));
}

// A straight axis: a point on it and a right-handed frame whose z runs along it.
struct AxisFrame {
  Vec3 origin;
  Vec3 x;
  Vec3 y;
  Vec3 z;

  // The frame's x is as near to `across` as it can be; without one, to the coordinate axis farthest from the unit
  // direction.
  static AxisFrame Along(const Vec3& origin, const Vec3& direction, const Vec3& across) {
    const Vec3 x = Unit(Rejection(across, direction));
    return {origin, x, Cross(direction, x), direction};
  }
  static AxisFrame Along(const Vec3& origin, const Vec3& direction) {
    const double ax = std::fabs(direction.x);
    const double ay = std::fabs(direction.y);
    const double az = std::fabs(direction.z);
    if (ax <= ay && ax <= az) return Along(origin, direction, {1.0, 0.0, 0.0});
    return Along(origin, direction, ay <= az ? Vec3{0.0, 1.0, 0.0} : Vec3{0.0, 0.0, 1.0});
  }

  Vec3 Local(const Vec3& p) const {
    const Vec3 q = p - origin;
    return {Dot(q, x), Dot(q, y), Dot(q, z)};
  }

  bool operator==(const AxisFrame&) const = default;

  // Shifted across by (a, b), then tilted to the direction (alpha, beta, 1); the frame follows with the least turn.
  AxisFrame Moved(double a, double b, double alpha, double beta) const {
    return Along(origin + a * x + b * y, Unit(z + alpha * x + beta * y), x);
  }
};

}  // namespace nu::engine::shapes

#endif
