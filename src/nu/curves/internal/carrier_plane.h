#ifndef NU_CURVES_INTERNAL_CARRIER_PLANE_H
#define NU_CURVES_INTERNAL_CARRIER_PLANE_H

#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/plane.h"

namespace nu::internal {

// The least-squares plane in which a curve called `name` is fitted. Failures of the plane keep its name, but a
// numerical one gets that of the curve.
inline CNuPlane CarrierPlane(const CNuPointArray& points, const char* name) {
  CNuPlane plane;
  try {
    plane.Fit(points);
  } catch (const CNuBestfitException& failure) {
    if (failure.GetCause() == kNumericalFailure) FailFit(kNumericalFailure, name);
    throw;
  }
  return plane;
}

}  // namespace nu::internal

#endif
