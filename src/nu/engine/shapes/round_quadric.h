#ifndef NU_ENGINE_SHAPES_ROUND_QUADRIC_H
#define NU_ENGINE_SHAPES_ROUND_QUADRIC_H

#include "nu/engine/shapes/incidence.h"

namespace nu::engine::shapes {

// A surface of revolution of degree two: a sphere around the point, a cylinder around the axis through it, or the cone
// with its apex there and both nappes.
struct RoundQuadric {
  enum class Kind { kCylinder, kCone, kSphere };

  // The signed distance from the surface, of the nappe that is nearer, and its gradient, of length 1 but on the axis.
  struct Offset {
    double distance = 0.0;
    Vec3 normal;
  };
  Offset OffsetOf(Vec3 p) const {
    const Vec3 w = p - point;
    if (kind == Kind::kSphere) return {Norm(w) - radius, Unit(w)};
    const double along = Dot(w, axis);
    const Vec3 across = w - along * axis;
    const Vec3 outwards = Unit(across);
    if (kind == Kind::kCylinder) return {Norm(across) - radius, outwards};
    return {cosine * Norm(across) - sine * std::fabs(along), cosine * outwards - std::copysign(sine, along) * axis};
  }

  Kind kind = Kind::kSphere;
  Vec3 point;
  Vec3 axis;            // a unit vector, zero for a sphere
  double radius = 0.0;  // 0 for a cone
  double sine = 0.0;    // of the semi-angle of a cone
  double cosine = 1.0;
  double semiAngle = 0.0;  // in degrees, of a cone
};

}  // namespace nu::engine::shapes

#endif
