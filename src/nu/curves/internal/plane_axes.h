#ifndef NU_CURVES_INTERNAL_PLANE_AXES_H
#define NU_CURVES_INTERNAL_PLANE_AXES_H

#include "nu/engine/shapes/plane_axes.h"
#include "nu/geometry/internal/conversions.h"

namespace nu::internal {

// The axes of CNuVector::OrthonormalXY across a unit normal.
inline PlaneAxes AxesAcross(CNuVector normal, Vec3 origin) {
  CNuVector x, y;
  normal.OrthonormalXY(&x, &y);
  return {origin, Components(x), Components(y)};
}

}  // namespace nu::internal

#endif
