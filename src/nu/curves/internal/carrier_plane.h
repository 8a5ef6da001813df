#ifndef NU_CURVES_INTERNAL_CARRIER_PLANE_H
#define NU_CURVES_INTERNAL_CARRIER_PLANE_H

#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/plane_fits.h"

namespace nu::internal {

// The least-squares plane in which a curve called `name` is fitted. Failures of the plane keep its name, but a
// numerical one gets that of the curve.
inline Plane3 CarrierPlane(PointView points, const char* name) {
  try {
    return FitPlane(points, {}).shape;
  } catch (const CNuBestfitException& failure) {
    if (failure.GetCause() == kNumericalFailure) FailFit(kNumericalFailure, name);
    throw;
  }
}

}  // namespace nu::internal

#endif
