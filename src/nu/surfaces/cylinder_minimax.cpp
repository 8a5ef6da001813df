#include "nu/engine/minimax/cylinder_minimax.h"

#include "nu/curves/internal/circle_fits.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/canonical_order.h"
#include "nu/engine/points/mean.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/surface_fits.h"

// Minimax cylinders; the problems behind them are those of nu/engine/minimax/cylinder_minimax.h.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCylSurf";

// Two points that are not finite count as a line, too.
FeatureFit<Cylinder3> CylinderOnLine(PointView points, double tol) {
  RequireFinite(points, kName);
  if (HasFewerDistinct(points, 2, tol)) return {{{LoadVec3(points[0]), {0.0, 0.0, 1.0}}, 0.0}};
  return {{FitLine(points, {}).shape, 0.0}};
}

FeatureFit<Cylinder3> InscribedCircle(PointView points, const FitOptions& options) {
  RequireFinite(points, kName);
  const PlacedCircle circle = FitMaxCircle(points, options).shape;
  return {{{circle.centre, circle.normal}, circle.radius}};
}

// `problem` is one of those of cylinder_minimax.h; the result is in the frame of the points.
template<class Problem>
CylinderMinimax Solve(PointView points, PointBlocks& blocks, const Cylinder3& start, const FitOptions& options,
                      Problem problem) {
  const Vec3& origin = blocks.Origin();
  const Cylinder3 local{{start.axis.point - origin, start.axis.direction}, start.radius};
  // Required: the limit is reached by the step that ends the search, too; hosts count on a limit that is never used up.
  CylinderMinimax found = problem(blocks, MeanOf(points) - origin, local, options.maxIter - 1, options.monitor);
  if (found.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  found.cylinder.axis.point = origin + found.cylinder.axis.point;
  return found;
}

template<class Problem>
FeatureFit<Cylinder3> FromLeastSquares(PointView points, const FitOptions& options, Problem problem) {
  return InCanonicalOrder(points, [&](PointView data) -> FeatureFit<Cylinder3> {
    PointBlocks blocks = BlocksOf(data);
    const Cylinder3 start = FitCylinder(data, blocks, {.maxIter = options.maxIter, .monitor = options.monitor}).shape;
    return {Solve(data, blocks, start, options, problem).cylinder};
  });
}

// Where the least-squares cylinder is the optimum, rounding decides which is better. An optimum that is worse is
// another than the one next to it.
FeatureFit<Cylinder3> ZoneFromLeastSquares(PointView points, const FitOptions& options) {
  PointBlocks blocks = BlocksOf(points);
  const auto start =
      FitCylinder(points, blocks, {.maxIter = options.maxIter, .wantsDeviations = true, .monitor = options.monitor});
  const CylinderMinimax found = Solve(points, blocks, start.shape, options, NarrowestCylinderZone);
  if (found.zone > start.form + kFormRoundings * found.rounding) FailFit(kNumericalFailure, kName);
  const bool stays = found.zone > start.form;
  return {stays ? start.shape : found.cylinder, stays ? start.form : found.zone};
}

FeatureFit<Cylinder3> Circumscribed(PointView points, const FitOptions& options) {
  if (LieOnOneLine(points, options.tol)) return CylinderOnLine(points, options.tol);
  return FromLeastSquares(points, options, SmallestCylinderAround);
}

FeatureFit<Cylinder3> Inscribed(PointView points, const FitOptions& options) {
  if (LieOnOneLine(points, options.tol)) return CylinderOnLine(points, options.tol);
  if (LieInOnePlane(points, options.tol)) return InscribedCircle(points, options);
  return FromLeastSquares(points, options, LargestCylinderInside);
}

FeatureFit<Cylinder3> MinimumZone(PointView points, const FitOptions& options) {
  if (LieOnOneLine(points, options.tol)) return CylinderOnLine(points, options.tol);
  return InCanonicalOrder(points, [&](PointView data) { return ZoneFromLeastSquares(data, options); });
}

template<class Find>
FeatureFit<Cylinder3> FiniteFit(PointView points, const FitOptions& options, Find find) {
  RequireIterations(options.maxIter, kName);
  RequireCount(points, 1, kName);
  return Monitored(options, [&](const FitOptions& watched) { return RequireFinite(find(points, watched), kName); });
}

}  // namespace

FeatureFit<Cylinder3> nu::internal::FitMinCylinder(PointView points, const FitOptions& options) {
  return FiniteFit(points, options, Circumscribed);
}

FeatureFit<Cylinder3> nu::internal::FitMaxCylinder(PointView points, const FitOptions& options) {
  return FiniteFit(points, options, Inscribed);
}

FeatureFit<Cylinder3> nu::internal::FitMinZoneCylinder(PointView points, const FitOptions& options) {
  return FiniteFit(points, options, MinimumZone);
}

void CNuCylSurf::FitMin(const CNuPointArray& points, double tol, long maxIter) {
  const Cylinder3 found =
      WithMemory(kName, [&] { return FitMinCylinder(ViewOf(points), {.maxIter = maxIter, .tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.axis.point), ToVector(found.axis.direction));
}

ENuFitResult CNuCylSurf::FitMinEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMin(points, tol, maxIter); });
}

void CNuCylSurf::FitMax(const CNuPointArray& points, double tol, long maxIter) {
  const Cylinder3 found =
      WithMemory(kName, [&] { return FitMaxCylinder(ViewOf(points), {.maxIter = maxIter, .tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.axis.point), ToVector(found.axis.direction));
}

ENuFitResult CNuCylSurf::FitMaxEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMax(points, tol, maxIter); });
}

void CNuCylSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  const auto found =
      WithMemory(kName, [&] { return FitMinZoneCylinder(ViewOf(points), {.maxIter = maxIter, .tol = tol}); });
  const Line3& axis = found.shape.axis;
  Place(found.shape.radius, ToPoint(axis.point), ToVector(axis.direction));
  Output(zone, found.form);
}

void CNuCylSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  StoreBoundaries(*this, &CNuCylSurf::m_radius, width, inner, outer);
  Output(zone, width);
}

NU_DEFINE_ZONE_VARIANTS(CNuCylSurf, kName)
