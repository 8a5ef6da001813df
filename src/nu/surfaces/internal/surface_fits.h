#ifndef NU_SURFACES_INTERNAL_SURFACE_FITS_H
#define NU_SURFACES_INTERNAL_SURFACE_FITS_H

#include <algorithm>

#include "nu/engine/points/form_statistics.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"

// What the fits of several surfaces share. `name` is the class of the feature.
namespace nu::internal {

// No start was found in these points.
[[noreturn]] inline void FailStart(const PointBlocks& blocks, const char* name) {
  if (!blocks.AllFinite()) FailFit(kNumericalFailure, name);
  // Required: this failure is the algebraic fit's own, and hosts catch it as such.
  FailOperation(46, "calculation", "CNuSurface::QuadricAxes()");
}

inline void StoreFormWithin(const Deviations& deviations, double* form, double* sumSquares) {
  // The extremes start at -NuGetLarge() and NuGetLarge(): required, and hosts that narrow the range see it.
  const double large = NuGetLarge();
  Output(form, std::max(deviations.largest, -large) - std::min(deviations.smallest, large));
  Output(sumSquares, deviations.sumSquares);
}

}  // namespace nu::internal

#endif
