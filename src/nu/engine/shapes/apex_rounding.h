#ifndef NU_ENGINE_SHAPES_APEX_ROUNDING_H
#define NU_ENGINE_SHAPES_APEX_ROUNDING_H

#include <cmath>

#include "nu/engine/base/double_double.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// The point of a line at about this distance from `point`, where the coordinate that says most about it is a double:
// an apex far away, whose rounding errors would otherwise move the axis at the data.
inline Vec3 PointAlong(const Vec3& point, const Vec3& direction, double distance) {
  const double p[3] = {point.x, point.y, point.z};
  const double d[3] = {direction.x, direction.y, direction.z};
  double found[3];
  int main = 0;
  for (int i = 0; i < 3; ++i) {
    found[i] = p[i] + distance * d[i];
    if (std::fabs(found[i] * d[i]) > std::fabs(found[main] * d[main])) main = i;
  }
  if (d[main] == 0.0) return point;
  const DoubleDouble there = (DoubleDouble{found[main]} - DoubleDouble{p[main]}) / DoubleDouble{d[main]};
  for (int i = 0; i < 3; ++i)
    if (i != main) found[i] = (DoubleDouble{p[i]} + there * DoubleDouble{d[i]}).high;
  return LoadVec3(found);
}

}  // namespace nu::engine::shapes

#endif
