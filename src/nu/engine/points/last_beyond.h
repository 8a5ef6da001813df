#ifndef NU_ENGINE_POINTS_LAST_BEYOND_H
#define NU_ENGINE_POINTS_LAST_BEYOND_H

#include "nu/engine/points/point_view.h"
#include "nu/engine/shapes/vec3.h"

namespace nu::engine::points {

// The highest index from `from` on of a point p with |(p - origin) . normal| > tol; -1 when there is none.
int LastBeyond(const PointView& points, int from, Vec3 origin, Vec3 normal, double tol);

}  // namespace nu::engine::points

#endif
