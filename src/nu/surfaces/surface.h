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
  // whose component of largest magnitude is positive, and the point of the axis nearest to `meanPoint`, the mean of the
  // points. Of more than some thousand points a sample is taken.
  // Fails with CNuOperationException ("CNuSurface::QuadricAxes()", "calculation"), the outputs unchanged:
  //   46  no points, points that all coincide, or a coordinate that is not finite
  static void QuadricAxes(const CNuPointArray& points, const CNuPoint& meanPoint, CNuPoint* axisPoint,
                          CNuVector* axisDirection);
};

#endif
