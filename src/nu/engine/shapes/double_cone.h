#ifndef NU_ENGINE_SHAPES_DOUBLE_CONE_H
#define NU_ENGINE_SHAPES_DOUBLE_CONE_H

#include "nu/engine/base/elementary.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/constants.h"

namespace nu::engine::shapes {

// The double cone of the lines through the apex that make the semi-angle, between 0 and a right angle, with the unit
// axis.
struct DoubleCone {
  // Each from the smaller of the angle and its complement, which is exact: a flat cone keeps the digits of its cosine.
  static DoubleCone OfDegrees(Vec3 apex, Vec3 axis, double semiAngle) {
    const double degree = Nu_PI / 180.0;
    constexpr double kHalf = 45.0;
    if (semiAngle <= kHalf) return {apex, axis, Sin(semiAngle * degree), Cos(semiAngle * degree)};
    const double complement = (90.0 - semiAngle) * degree;
    return {apex, axis, Cos(complement), Sin(complement)};
  }

  Vec3 apex;
  Vec3 axis;
  double sine = 0.0;
  double cosine = 1.0;
};

inline bool IsFinite(const DoubleCone& cone) {
  return IsFinite(cone.apex) && IsFinite(cone.axis);
}

// A line seen from a cone.
struct ConeApproach {
  bool meets = false;
  double distance = 0.0;  // from the cone, 0 for a line that comes ever closer to it without an end
  Points2 points;         // the common ones, or else the closest of the line, in its order
};

// What comes as close as the tolerance of lengths, or as the rounding of the coordinates, touches, and one passing the
// apex as close touches it there. A line that is parallel to a generator has one common point, and none when it is in
// the plane along that generator that touches the cone.
ConeApproach ApproachTo(const DoubleCone& cone, const Line3& line, double lengthTol, double sineTol);

}  // namespace nu::engine::shapes

#endif
