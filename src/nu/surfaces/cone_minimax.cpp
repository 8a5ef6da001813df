#include "nu/engine/minimax/cone_minimax.h"

#include <cmath>

#include "nu/engine/base/elementary.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/mean.h"
#include "nu/engine/shapes/apex_rounding.h"
#include "nu/surfaces/cone.h"
#include "nu/surfaces/internal/surface_fits.h"

// Minimum-zone cone; the problem behind it is that of nu/engine/minimax/cone_minimax.h.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuConSurf";
constexpr int kLeastPoints = 6;

// What a search that found no optimum ran into. Required: the limit is reached by the step that ends the search, too;
// hosts count on a limit that is never used up.
void RequireOptimum(const ConeZone& found, long maxIter) {
  if (!found.linearised) FailOperation(NuOperationFailed, "calculation", "CNuConSurf::FitMinZone()::mzconp()");
  if (found.end == MinimaxEnd::limitReached || found.steps >= maxIter) FailFit(kIterationLimit, kName);
  if (found.end == MinimaxEnd::unsolved)
    FailOperation(NuOperationUnsolvable, "solving a linear system with inequality constraints",
                  "CNuConSurf::acm552m()");
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, "CNuConSurf::FitMinZone");
}

ConeZone FindZone(PointView points, PointBlocks& blocks, const FeatureFit<Cone3>& start, const FitOptions& options) {
  const Vec3& origin = blocks.Origin();
  Cone3 local = start.shape;
  local.axis.point = local.axis.point - origin;
  ConeZone found =
      NarrowestConeZone(blocks, MeanOf(points) - origin, local, start.form, options.maxIter, options.monitor);
  RequireOptimum(found, options.maxIter);
  found.cone.axis.point = origin + found.cone.axis.point;
  return found;
}

FeatureFit<Cone3> MinimumZone(PointView points, const FitOptions& options) {
  PointBlocks blocks = BlocksOf(points);
  const FitOptions leastSquares{.maxIter = options.maxIter, .wantsDeviations = true, .monitor = options.monitor};
  const auto start = FitCone(points, blocks, leastSquares);
  const ConeZone found = FindZone(points, blocks, start, options);
  if (found.width > start.form + kFormRoundings * found.rounding) FailFit(kNumericalFailure, "CNuConSurf::FitMinZone");
  // Where the least-squares cone is the optimum, rounding decides which is better.
  const bool stays = start.form < found.width;
  const Cone3& cone = stays ? start.shape : found.cone;
  const double degrees = DegreesOf(cone);
  if (!(degrees > 0.0 && degrees < 90.0 && IsFinite(cone.Apex()))) FailFit(kNumericalFailure, kName);
  return {cone, stays ? start.form : found.width};
}

}  // namespace

FeatureFit<Cone3> nu::internal::FitMinZoneCone(PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  RequireSolid(points, kLeastPoints, 4, options.tol, kName);
  return Monitored(options, [&](const FitOptions& watched) { return MinimumZone(points, watched); });
}

void CNuConSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  const auto found =
      WithMemory(kName, [&] { return FitMinZoneCone(ViewOf(points), {.maxIter = maxIter, .tol = tol}); });
  const Cone3& cone = found.shape;
  Place(DegreesOf(cone), ToPoint(StoredApex(cone)), ToVector(cone.axis.direction));
  Output(zone, found.form);
}

// The boundaries are parallel surfaces: they differ in the apex only.
void CNuConSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuConSurf* inner, CNuConSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  CNuConSurf innermost(*this);
  CNuConSurf outermost(*this);
  if (std::fabs(width) >= NuGetTol()) {
    const double way = 0.5 * width / nu::internal::Sin(m_semiAngle * (Nu_PI / 180.0));
    const Vec3 apex = Components(GetApex());
    const Vec3 axis = Components(GetAxisDirection());
    innermost.Translate(ToPoint(PointAlong(apex, axis, way)));
    outermost.Translate(ToPoint(PointAlong(apex, axis, -way)));
  }
  Output(zone, width);
  Output(inner, innermost);
  Output(outer, outermost);
}

NU_DEFINE_ZONE_VARIANTS(CNuConSurf, kName)
