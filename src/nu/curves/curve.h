#ifndef NU_CURVES_CURVE_H
#define NU_CURVES_CURVE_H

#include "nu/export.h"
#include "nu/geometry/nonlinear_geometry.h"

// The root of the curves.
class NU_EXPORT CNuCurve : public CNuNonLinearGeometry {
 public:
  CNuCurve(const CNuCurve&) = default;
  CNuCurve& operator=(const CNuCurve&) = default;

 protected:
  CNuCurve() = default;
  explicit CNuCurve(ENuObjectType type) : CNuNonLinearGeometry(type) {}
};

#endif
