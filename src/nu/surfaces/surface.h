#ifndef NU_SURFACES_SURFACE_H
#define NU_SURFACES_SURFACE_H

#include "nu/export.h"
#include "nu/fwd.h"
#include "nu/geometry/nonlinear_geometry.h"

// The root of the surfaces.
class NU_EXPORT CNuSurface : public CNuNonLinearGeometry {
 public:
  CNuSurface(const CNuSurface&) = default;
  CNuSurface& operator=(const CNuSurface&) = default;

 protected:
  CNuSurface() = default;
  explicit CNuSurface(ENuObjectType type) : CNuNonLinearGeometry(type) {}

  // The axis of the quadric that fits the points algebraically, as a start for cylinders and cones: a unit direction
  // whose component of largest magnitude is positive, and the point of the axis that is nearest to `meanPoint`, the
  // mean of the points. Of more than some thousand points a sample is asked. No points, points that all coincide, and
  // coordinates that are not finite: CNuOperationException cause 46, "calculation", and no output is written.
  static void QuadricAxes(const CNuPointArray& points, const CNuPoint& meanPoint, CNuPoint* axisPoint,
                          CNuVector* axisDirection);
};

#endif
