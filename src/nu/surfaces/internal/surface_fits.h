#ifndef NU_SURFACES_INTERNAL_SURFACE_FITS_H
#define NU_SURFACES_INTERNAL_SURFACE_FITS_H

#include <algorithm>
#include <cmath>

#include "nu/engine/least_squares/gauss_newton.h"
#include "nu/engine/least_squares/sampled_start.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/form_statistics.h"
#include "nu/engine/points/point_sample.h"
#include "nu/engine/points/principal_direction.h"
#include "nu/engine/shapes/apex_rounding.h"
#include "nu/engine/shapes/incidence.h"
#include "nu/foundation/constants.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/feature_fit.h"
#include "nu/geometry/internal/fit_guards.h"

// What the fits of several surfaces share. `name` is the class of the feature.
namespace nu::internal {

// The fits of CNuSphSurf, CNuCylSurf, CNuConSurf and CNuTorSurf.
FeatureFit<Sphere3> FitSphere(PointView points, const FitOptions& options);
FeatureFit<Sphere3> FitMinSphere(PointView points, const FitOptions& options);
FeatureFit<Sphere3> FitMaxSphere(PointView points, const FitOptions& options);
FeatureFit<Sphere3> FitMinZoneSphere(PointView points, const FitOptions& options);

FeatureFit<Cylinder3> FitCylinder(PointView points, const FitOptions& options);
FeatureFit<Cylinder3> FitMinCylinder(PointView points, const FitOptions& options);
FeatureFit<Cylinder3> FitMaxCylinder(PointView points, const FitOptions& options);
FeatureFit<Cylinder3> FitMinZoneCylinder(PointView points, const FitOptions& options);

FeatureFit<Cone3> FitCone(PointView points, const FitOptions& options);
FeatureFit<Cone3> FitMinZoneCone(PointView points, const FitOptions& options);

FeatureFit<Torus3> FitMinTorus(PointView points, const FitOptions& options);

// The same for minimax fits that go on from there, however flat they are: `blocks` are those of the points, and their
// scale may change.
FeatureFit<Sphere3> FitSphere(PointView points, PointBlocks& blocks, const FitOptions& options);
FeatureFit<Cylinder3> FitCylinder(PointView points, PointBlocks& blocks, const FitOptions& options);
FeatureFit<Cone3> FitCone(PointView points, PointBlocks& blocks, const FitOptions& options);

// The extremes start at -NuGetLarge() and NuGetLarge(): required, and hosts that narrow the range see it.
template<class Surface>
FeatureFit<Surface> FitOf(const Surface& surface, const Deviations& deviations) {
  const double large = NuGetLarge();
  const double form = std::max(deviations.largest, -large) - std::min(deviations.smallest, large);
  return {surface, form, deviations};
}

template<class Surface>
FeatureFit<Surface> RequireFinite(const FeatureFit<Surface>& found, const char* name) {
  if (!IsFinite(found.shape) || !std::isfinite(found.form)) FailFit(kNumericalFailure, name);
  return found;
}

inline double DegreesOf(const Cone3& cone) {
  return cone.semiAngle / Nu_PI * 180.0;
}

// The apex on the axis as the class stores it, whose direction is normalised once more.
inline Vec3 StoredApex(const Cone3& cone) {
  CNuVector direction = ToVector(cone.axis.direction);
  direction.Normalise();
  return PointAlong(cone.axis.point, Components(direction), cone.toApex);
}

// At least `least` distinct points that are not in one plane, within `tol`. Cause 4 comes with the size `inPlane`.
inline void RequireSolid(PointView points, int least, int inPlane, double tol, const char* name) {
  RequireCount(points, least, name);
  if (LieInOnePlane(points, tol)) FailFit(kCoplanarPoints, name, inPlane);
  RequireDistinct(points, least, tol, name);
}

// Cylinder or cone: from a start that `start` finds, on a sample of many points.
template<class Fit>
GaussNewtonEnd RunSurfaceFit(PointView points, PointBlocks& blocks, Fit& fit, bool (*start)(PointBlocks&, Fit&),
                             const FitOptions& options, const char* name) {
  blocks.Keep();
  if (!StartFit(points, blocks, fit, start)) {
    if (!blocks.AllFinite()) FailFit(kNumericalFailure, name);
    // Required: this failure is the algebraic fit's own, and hosts catch it as such.
    FailOperation(NuOperationFailed, "calculation", "CNuSurface::QuadricAxes()");
  }
  // Steps by second derivatives that have not arrived after 24 lead on and on.
  constexpr CreepRule kLargeSets = {8, 100.0, 2};
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = NuGetLarge(),
                             .limit = options.maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = true,
                             .creeping = points.Size() > kRangedPoints ? kLargeSets : kPatientRule,
                             .monitor = options.monitor};
  long count;
  const GaussNewtonEnd end = RunGaussNewton(fit, rule, count);
  const bool creeps = end == GaussNewtonEnd::limitReached && count < std::min(options.maxIter, kMostGaussNewtonSteps);
  return creeps ? GaussNewtonEnd::unsolvable : end;
}

// Of the deviations from the least-squares plane.
inline double PlaneSumSquares(PointView points) {
  PointBlocks blocks = BlocksOf(points);
  const PrincipalDirection plane = FindPrincipalDirection(blocks, Extent::smallest);
  return plane.finite ? PlaneDeviations(blocks, plane.mean, plane.direction).sumSquares : 0.0;
}

// A plane is the limit of cylinders and cones: one that the points follow less is no least-squares one, and they
// determine none near it. A sample of them, which is enough as a rule, is no farther from its plane than all of them.
template<class Fit>
void RequireCloserThanPlane(PointView points, const PointBlocks& blocks, Fit& fit, const char* name) {
  constexpr std::size_t kSample = 64;
  constexpr double kClear = 100.0;           // the last step, from where the sum is known, has room in it
  constexpr double kRoundings = 1.0 + 1e-9;  // of sums
  const double before = InUnit(fit.Equations().deviations, blocks.Scale()).sumSquares;
  if (kClear * before < PlaneSumSquares(PointSample(points, kSample).View())) return;
  if (!(fit.DeviationsNow().sumSquares <= kRoundings * PlaneSumSquares(points))) FailFit(kNumericalFailure, name);
}

// Before a least-squares fit whose iterations are allowed: its outputs are 0 until it has succeeded.
inline void ClearForm(double* form, double* sumSquares, long maxIter, const char* name) {
  RequireIterations(maxIter, name);
  Output(form, 0.0);
  Output(sumSquares, 0.0);
}

// What `fit` finds for the points, if its size is not beyond what they can tell.
template<class Surface, class Fit>
FeatureFit<Surface> BentFit(PointView points, const FitOptions& options, const char* name, double Surface::*size,
                            Fit fit) {
  return Monitored(options, [&](const FitOptions& watched) {
    PointBlocks blocks = BlocksOf(points);
    const FeatureFit<Surface> found = fit(blocks, watched);
    RequireBend(points, found.shape.*size, name);
    return found;
  });
}

// The surfaces of a zone, half its width inside and outside the middle one.
template<class Surface>
void StoreBoundaries(const Surface& middle, double Surface::*radius, double width, Surface* inner, Surface* outer) {
  const double half = std::fabs(width) >= NuGetTol() ? 0.5 * width : 0.0;
  Surface innermost(middle), outermost(middle);
  innermost.*radius = std::max(0.0, innermost.*radius - half);
  outermost.*radius += half;
  Output(inner, innermost);
  Output(outer, outermost);
}

// What a fit does about points that are as close to a plane: start values of minimax fits may follow them as well.
enum class FlatPoints { refused, taken };

}  // namespace nu::internal

#endif
