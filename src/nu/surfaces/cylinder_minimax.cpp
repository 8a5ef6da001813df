#include "nu/engine/minimax/cylinder_minimax.h"

#include <algorithm>
#include <cmath>

#include "nu/curves/circle.h"
#include "nu/engine/minimax/round_minimax.h"
#include "nu/engine/points/mean.h"
#include "nu/geometry/internal/point_order.h"
#include "nu/geometry/line.h"
#include "nu/surfaces/cylinder.h"
#include "nu/surfaces/internal/surface_fits.h"

// Minimax cylinders; the problems behind them are those of nu/engine/minimax/cylinder_minimax.h.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCylSurf";

// Two points that are not finite count as a line, too.
Cylinder3 CylinderOnLine(const CNuPointArray& points, double tol) {
  RequireFinite(points, kName);
  if (CNuGeometry::NumberDistinctPoints(points, 2, tol) == 0) return {{Components(points[0]), {0.0, 0.0, 1.0}}, 0.0};
  CNuLine line;
  line.Fit(points);
  return {{Components(line.GetPoint()), Components(line.GetDirection())}, 0.0};
}

Cylinder3 InscribedCircle(const CNuPointArray& points, double tol) {
  RequireFinite(points, kName);
  CNuCircle circle(1.0);
  circle.FitMax(points, tol);
  return {{Components(circle.GetCentre()), Components(circle.GetNormal())}, circle.GetRadius()};
}

// `problem` is one of those of cylinder_minimax.h; the result is in the frame of the points.
template<class Problem>
CylinderMinimax Solve(const CNuPointArray& points, PointBlocks& blocks, const Cylinder3& start, long maxIter,
                      Problem problem) {
  const Vec3& origin = blocks.Origin();
  const Cylinder3 local{{start.axis.point - origin, start.axis.direction}, start.radius};
  // Required: the limit is reached by the step that ends the search, too; hosts count on a limit that is never used up.
  CylinderMinimax found = problem(blocks, MeanOf(ViewOf(points)) - origin, local, maxIter - 1);
  if (found.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  if (found.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  found.cylinder.axis.point = origin + found.cylinder.axis.point;
  return found;
}

template<class Fit>
auto CanonicalOrder(const CNuPointArray& points, Fit fit) {
  const bool few = NeedsCanonicalOrder(points) && ExtentsOf(ViewOf(points)).isFinite;
  return few ? fit(Ordered(points)) : fit(points);
}

void RequireArguments(const CNuPointArray& points, long maxIter) {
  RequireIterations(maxIter, kName);
  RequireCount(points, 1, kName);
}

template<class Problem>
Cylinder3 FromLeastSquares(const CNuPointArray& points, long maxIter, Problem problem) {
  return CanonicalOrder(points, [&](const CNuPointArray& data) {
    PointBlocks blocks = BlocksOf(data);
    const Cylinder3 start = FitCylinder(data, blocks, false, maxIter).surface;
    return Solve(data, blocks, start, maxIter, problem).cylinder;
  });
}

Cylinder3 Circumscribed(const CNuPointArray& points, double tol, long maxIter) {
  if (LieOnOneLine(ViewOf(points), tol)) return CylinderOnLine(points, tol);
  return FromLeastSquares(points, maxIter, SmallestCylinderAround);
}

Cylinder3 Inscribed(const CNuPointArray& points, double tol, long maxIter) {
  if (LieOnOneLine(ViewOf(points), tol)) return CylinderOnLine(points, tol);
  if (LieInOnePlane(ViewOf(points), tol)) return InscribedCircle(points, tol);
  return FromLeastSquares(points, maxIter, LargestCylinderInside);
}

struct Zone {
  Cylinder3 cylinder;
  double width = 0.0;
};

// Where the least-squares cylinder is the optimum, rounding decides which is better. An optimum that is worse is
// another than the one next to it.
Zone MinimumZone(const CNuPointArray& points, double tol, long maxIter) {
  if (LieOnOneLine(ViewOf(points), tol)) return {CylinderOnLine(points, tol)};
  return CanonicalOrder(points, [&](const CNuPointArray& data) -> Zone {
    PointBlocks blocks = BlocksOf(data);
    const auto start = FitCylinder(data, blocks, true, maxIter);
    const double form = start.Form();
    const CylinderMinimax found = Solve(data, blocks, start.surface, maxIter, NarrowestCylinderZone);
    if (found.zone > form + kFormRoundings * found.rounding) FailFit(kNumericalFailure, kName);
    if (found.zone > form) return {start.surface, form};
    return {found.cylinder, found.zone};
  });
}

}  // namespace

void CNuCylSurf::FitMin(const CNuPointArray& points, double tol, long maxIter) {
  RequireArguments(points, maxIter);
  const Cylinder3 found = Circumscribed(points, tol, maxIter);
  if (!IsFinite(found)) FailFit(kNumericalFailure, kName);
  Place(found.radius, ToPoint(found.axis.point), ToVector(found.axis.direction));
}

ENuFitResult CNuCylSurf::FitMinEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMin(points, tol, maxIter); });
}

void CNuCylSurf::FitMax(const CNuPointArray& points, double tol, long maxIter) {
  RequireArguments(points, maxIter);
  const Cylinder3 found = Inscribed(points, tol, maxIter);
  if (!IsFinite(found)) FailFit(kNumericalFailure, kName);
  Place(found.radius, ToPoint(found.axis.point), ToVector(found.axis.direction));
}

ENuFitResult CNuCylSurf::FitMaxEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMax(points, tol, maxIter); });
}

void CNuCylSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  RequireArguments(points, maxIter);
  const Zone found = MinimumZone(points, tol, maxIter);
  const Cylinder3& middle = found.cylinder;
  if (!IsFinite(middle) || !std::isfinite(found.width)) FailFit(kNumericalFailure, kName);
  Place(middle.radius, ToPoint(middle.axis.point), ToVector(middle.axis.direction));
  Output(zone, found.width);
}

void CNuCylSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  const double half = std::fabs(width) >= NuGetTol() ? 0.5 * width : 0.0;
  CNuCylSurf innermost(*this);
  CNuCylSurf outermost(*this);
  innermost.m_radius = std::max(0.0, m_radius - half);
  outermost.m_radius += half;
  Output(zone, width);
  Output(inner, innermost);
  Output(outer, outermost);
}

ENuFitResult CNuCylSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, tol, maxIter); });
}

ENuFitResult CNuCylSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuCylSurf* inner, CNuCylSurf* outer,
                                      double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, inner, outer, tol, maxIter); });
}
