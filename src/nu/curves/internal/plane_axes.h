#ifndef NU_CURVES_INTERNAL_PLANE_AXES_H
#define NU_CURVES_INTERNAL_PLANE_AXES_H

#include "nu/engine/shapes/plane_axes.h"
#include "nu/geometry/internal/conversions.h"

namespace nu::internal {

struct PlaneFrame : PlaneAxes {
  Vec3 normal;  // normalised, as the axes are
};

// The axes of CNuVector::OrthonormalXY across a normal.
inline PlaneFrame AxesAcross(Vec3 normal, Vec3 origin) {
  CNuVector x, y, z = ToVector(normal);
  z.OrthonormalXY(&x, &y);
  return {{origin, Components(x), Components(y)}, Components(z)};
}

}  // namespace nu::internal

#endif
