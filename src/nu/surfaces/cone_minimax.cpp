#include "nu/engine/minimax/cone_minimax.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/shapes/apex_rounding.h"
#include "nu/foundation/internal/failures.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/surfaces/cone.h"

// Minimum-zone cone; the problem behind it is that of nu/engine/minimax/cone_minimax.h.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuConSurf";
constexpr int kLeastPoints = 6;
constexpr double kRadians = 3.14159265358979323846 / 180.0;

void RequirePoints(const CNuPointArray& points, double tol) {
  RequireCount(points, kLeastPoints, kName);
  const bool coplanar = LieInOnePlane(ViewOf(points), tol);
  if (coplanar) FailFit(kCoplanarPoints, kName, 4);
  const bool distinct = CNuGeometry::NumberDistinctPoints(points, kLeastPoints, tol) == 1;
  // What is not finite has no distance from each other.
  if (!distinct) RequireFinite(points, kName);
  if (!distinct) FailFit(kDegeneratePoints, kName, kLeastPoints);
}

// What a search that found no optimum ran into. Required: the limit is reached by the step that ends the search, too;
// hosts count on a limit that is never used up.
void RequireOptimum(const ConeZone& found, long maxIter) {
  if (!found.linearised) FailOperation(46, "calculation", "CNuConSurf::FitMinZone()::mzconp()");
  if (found.end == MinimaxEnd::limitReached || found.steps >= maxIter) FailFit(kIterationLimit, kName);
  if (found.end == MinimaxEnd::unsolved)
    FailOperation(17, "solving a linear system with inequality constraints", "CNuConSurf::acm552m()");
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, "CNuConSurf::FitMinZone");
}

// Starts from this cone.
ConeZone FindZone(const CNuPointArray& points, const CNuConSurf& start, double form, long maxIter) {
  const Vec3 origin = MiddleOf(points);
  PointBlocks blocks(ViewOf(points), origin);
  const Vec3 mean = MeanOf(ViewOf(points)) - origin;
  const Cone3 cone{Components(start.GetApex()) - origin, Components(start.GetAxisDirection()), 0.0,
                   start.GetSemiAngle() * kRadians};
  ConeZone found = NarrowestConeZone(blocks, mean, cone, form, maxIter);
  RequireOptimum(found, maxIter);
  found.cone.axisPoint = origin + found.cone.axisPoint;
  return found;
}

}  // namespace

void CNuConSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  RequireIterations(maxIter, kName);
  RequirePoints(points, tol);
  CNuConSurf leastSquares(*this);
  double form, sumSquares;
  leastSquares.Fit(points, &form, &sumSquares, maxIter);
  const ConeZone found = FindZone(points, leastSquares, form, maxIter);
  if (found.width > form + kFormRoundings * found.rounding) {
    FailFit(kNumericalFailure, "CNuConSurf::FitMinZone");
  }
  // Where the least-squares cone is the optimum, rounding decides which is better.
  if (form < found.width) {
    *this = leastSquares;
    Output(zone, form);
    return;
  }
  const Cone3& cone = found.cone;
  const double degrees = cone.semiAngle / kRadians;
  if (!(degrees > 0.0 && degrees < 90.0 && IsFinite(cone.Apex()))) FailFit(kNumericalFailure, kName);
  Place(degrees, ToPoint(cone.axisPoint), ToVector(cone.axisDirection));
  Translate(ToPoint(PointAlong(cone.axisPoint, Components(GetAxisDirection()), cone.toApex)));
  Output(zone, found.width);
}

// The boundaries are parallel surfaces: they differ in the apex only.
void CNuConSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuConSurf* inner, CNuConSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  CNuConSurf innermost(*this);
  CNuConSurf outermost(*this);
  if (std::fabs(width) >= NuGetTol()) {
    const double way = 0.5 * width / nu::internal::Sin(m_semiAngle * kRadians);
    const Vec3 apex = Components(GetApex());
    const Vec3 axis = Components(GetAxisDirection());
    innermost.Translate(ToPoint(PointAlong(apex, axis, way)));
    outermost.Translate(ToPoint(PointAlong(apex, axis, -way)));
  }
  Output(zone, width);
  Output(inner, innermost);
  Output(outer, outermost);
}

ENuFitResult CNuConSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, tol, maxIter); });
}

ENuFitResult CNuConSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuConSurf* inner, CNuConSurf* outer,
                                      double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, inner, outer, tol, maxIter); });
}
