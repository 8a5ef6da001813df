#ifndef NU_SURFACES_INTERNAL_SURFACE_FITS_H
#define NU_SURFACES_INTERNAL_SURFACE_FITS_H

#include <algorithm>

#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/least_squares/sampled_start.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"

// What the fits of several surfaces share. `name` is the class of the feature.
namespace nu::internal {

template<class Surface>
struct LeastSquaresFit {
  Surface surface;
  Deviations deviations;  // all 0 unless they are wanted

  // The extremes start at -NuGetLarge() and NuGetLarge(): required, and hosts that narrow the range see it.
  double Form() const {
    const double large = NuGetLarge();
    return std::max(deviations.largest, -large) - std::min(deviations.smallest, large);
  }
};

// The fits behind the classes' Fit, with all its failures, for the minimax fits, too: `blocks` are those of the points,
// and their scale may change.
LeastSquaresFit<Sphere3> FitSphere(const CNuPointArray& points, PointBlocks& blocks, bool wantsDeviations,
                                   long maxIter);
LeastSquaresFit<Cylinder3> FitCylinder(const CNuPointArray& points, PointBlocks& blocks, bool wantsDeviations,
                                       long maxIter);
LeastSquaresFit<Cone3> FitCone(const CNuPointArray& points, PointBlocks& blocks, bool wantsDeviations, long maxIter);

inline double DegreesOf(const Cone3& cone) {
  return cone.semiAngle / Nu_PI * 180.0;
}

// At least `least` distinct points that are not in one plane, within `tol`. Cause 4 comes with the size `inPlane`.
inline void RequireSolid(const CNuPointArray& points, int least, int inPlane, double tol, const char* name) {
  RequireCount(points, least, name);
  if (LieInOnePlane(ViewOf(points), tol)) FailFit(kCoplanarPoints, name, inPlane);
  if (CNuGeometry::NumberDistinctPoints(points, least, tol) == 1) return;
  // What is not finite has no distance from each other.
  RequireFinite(points, name);
  FailFit(kDegeneratePoints, name, least);
}

// Cylinder or cone: from a start that `start` finds, on a sample of many points.
template<class Fit>
GaussNewtonEnd RunSurfaceFit(PointView points, PointBlocks& blocks, Fit& fit, bool (*start)(PointBlocks&, Fit&),
                             long maxIter, const char* name) {
  blocks.Keep();
  if (!StartFit(points, blocks, fit, start)) {
    if (!blocks.AllFinite()) FailFit(kNumericalFailure, name);
    // Required: this failure is the algebraic fit's own, and hosts catch it as such.
    FailOperation(NuOperationFailed, "calculation", "CNuSurface::QuadricAxes()");
  }
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true,
                             .stopsCreeping = true};
  return RunGaussNewton(fit, rule);
}

template<class Surface>
void StoreForm(const LeastSquaresFit<Surface>& found, double* form, double* sumSquares) {
  Output(form, found.Form());
  Output(sumSquares, found.deviations.sumSquares);
}

}  // namespace nu::internal

#endif
