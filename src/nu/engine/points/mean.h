#ifndef NU_ENGINE_POINTS_MEAN_H
#define NU_ENGINE_POINTS_MEAN_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::points {

// The mean of one point or more, to about the rounding of its coordinates however many and however far out they are.
// Where a coordinate is not finite, or the sum overflows, it is what the plain sum gives.
Vec3 MeanOf(const PointView& points);

}  // namespace nu::engine::points

#endif
