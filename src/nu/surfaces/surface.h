#ifndef NU_SURFACES_SURFACE_H
#define NU_SURFACES_SURFACE_H

#include "nu/export.h"
#include "nu/geometry/nonlinear_geometry.h"

// The root of the surfaces.
class NU_EXPORT CNuSurface : public CNuNonLinearGeometry {
 public:
  CNuSurface(const CNuSurface&) = default;
  CNuSurface& operator=(const CNuSurface&) = default;

 protected:
  CNuSurface() = default;
  explicit CNuSurface(ENuObjectType type) : CNuNonLinearGeometry(type) {}
};

#endif
