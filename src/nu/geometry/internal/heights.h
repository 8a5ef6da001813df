#ifndef NU_GEOMETRY_INTERNAL_HEIGHTS_H
#define NU_GEOMETRY_INTERNAL_HEIGHTS_H

#include "nu/geometry/internal/point_view.h"
#include "nu/geometry/internal/vec3.h"

namespace nu::internal {

// The highest index from `from` on of a point p with |(p - origin) . normal| > tol; -1 when there is none.
int LastBeyond(const PointView& points, int from, Vec3 origin, Vec3 normal, double tol);

}  // namespace nu::internal

#endif
