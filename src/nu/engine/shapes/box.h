#ifndef NU_ENGINE_SHAPES_BOX_H
#define NU_ENGINE_SHAPES_BOX_H

#include <algorithm>
#include <cmath>

#include "nu/engine/shapes/vec3.h"

namespace nu::engine::shapes {

// A box with its sides along the axes.
struct Box {
  double low[3];
  double high[3];
};

// The box without points, to which points and boxes can be added.
inline Box EmptyBox() {
  return {{HUGE_VAL, HUGE_VAL, HUGE_VAL}, {-HUGE_VAL, -HUGE_VAL, -HUGE_VAL}};
}

// The box grows to hold a point or another box. NaN coordinates are passed over.
inline void Include(Vec3 p, Box& box) {
  const double xyz[3] = {p.x, p.y, p.z};
  for (int k = 0; k < 3; ++k) {
    if (xyz[k] < box.low[k]) box.low[k] = xyz[k];
    if (xyz[k] > box.high[k]) box.high[k] = xyz[k];
  }
}
inline void Include(const Box& part, Box& box) {
  Include(LoadVec3(part.low), box);
  Include(LoadVec3(part.high), box);
}

// The distance between two boxes; 0 where they overlap.
inline double Gap(const Box& a, const Box& b) {
  double gap[3];
  for (int k = 0; k < 3; ++k) gap[k] = std::max({0.0, a.low[k] - b.high[k], b.low[k] - a.high[k]});
  return std::sqrt(gap[0] * gap[0] + gap[1] * gap[1] + gap[2] * gap[2]);
}

}  // namespace nu::engine::shapes

#endif
