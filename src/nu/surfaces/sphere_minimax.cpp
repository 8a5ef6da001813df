#include <algorithm>
#include <cmath>

#include "nu/curves/circle.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/minimax/empty_ball.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/minimax/spherical_shell.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/mean.h"
#include "nu/geometry/line.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "nu/surfaces/sphere.h"

// Minimax spheres; the problems behind them are those of nu/engine/minimax.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSphSurf";
constexpr int kLeastPoints = 4;

// Two points that are not finite count as a line, too.
Sphere3 BallOnLine(const CNuPointArray& points, double tol) {
  RequireFinite(points, kName);
  if (CNuGeometry::NumberDistinctPoints(points, 2, tol) == 0) return {Components(points[0]), 0.0};
  CNuLine line;
  line.Fit(points);
  const Vec3 origin = Components(line.GetPoint());
  const Vec3 direction = Components(line.GetDirection());
  int first = 0;
  int last = 0;
  double low = 0.0;
  double high = 0.0;
  for (int i = 0; i < points.GetSize(); ++i) {
    const double along = Dot(Components(points[i]) - origin, direction);
    if (i == 0 || along < low) low = along, first = i;
    if (i == 0 || along > high) high = along, last = i;
  }
  const Vec3 p = Components(points[first]);
  const Vec3 half = 0.5 * Components(points[last]) - 0.5 * p;
  return {p + half, Hypot(half.x, half.y, half.z)};
}

Sphere3 MinimumZoneCircle(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  RequireFinite(points, kName);
  CNuCircle circle(1.0);
  circle.FitMinZone(points, zone, tol, maxIter);
  return {Components(circle.GetCentre()), circle.GetRadius()};
}

Sphere3 FindMinimalSphericalShell(const CNuPointArray& points, PointBlocks& blocks, const Sphere3& start, double* zone,
                                  long maxIter) {
  const Vec3& origin = blocks.Origin();
  const Vec3 mean = MeanOf(ViewOf(points)) - origin;
  const SphericalShell shell = ThinnestShell(blocks, mean, start.centre - origin, start.radius, maxIter);
  // Required: the limit is reached by the step that ends the search, too; hosts count on a limit that is never used up.
  if (shell.end == MinimaxEnd::limitReached || shell.steps >= maxIter) FailFit(kIterationLimit, kName);
  if (shell.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  *zone = shell.outer - shell.inner;
  return {origin + shell.centre, 0.5 * shell.inner + 0.5 * shell.outer};
}

// Fewer than four points count as coplanar.
Sphere3 MinimumZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  if (LieInOnePlane(ViewOf(points), tol)) return MinimumZoneCircle(points, zone, tol, maxIter);
  PointBlocks blocks = BlocksOf(points);
  const auto start = FitSphere(points, blocks, true, maxIter);
  *zone = 0.0;
  if (start.Form() < tol) return start.surface;
  return FindMinimalSphericalShell(points, blocks, start.surface, zone, maxIter);
}

}  // namespace

void CNuSphSurf::Place(double radius, const CNuPoint& centre) {
  if (!IsFinite(Components(centre)) || !std::isfinite(radius)) FailFit(kNumericalFailure, kName);
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  m_radius = radius;
}

void CNuSphSurf::FitMin(const CNuPointArray& points, double tol) {
  RequireCount(points, 1, kName);
  if (LieOnOneLine(ViewOf(points), tol)) {
    const Sphere3 ball = BallOnLine(points, tol);
    return Place(ball.radius, ToPoint(ball.centre));
  }
  PointBlocks blocks = BlocksOf(points);
  const EnclosingBall found = SmallestEnclosingBall<3>(blocks, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
  if (!found.found) FailFit(kNumericalFailure, kName);
  Place(found.radius, ToPoint(blocks.Origin() + found.centre));
}

// Required: this runs FitMax and not FitMin. Hosts written for it expect the inscribed sphere, and a failure where
// FitMax has none.
ENuFitResult CNuSphSurf::FitMinEx(const CNuPointArray& points, double tol) {
  return FitMaxEx(points, tol);
}

void CNuSphSurf::FitMax(const CNuPointArray& points, double tol) {
  RequireCount(points, kLeastPoints, kName);
  if (LieOnOneLine(ViewOf(points), tol)) FailFit(kCollinearPoints, kName, 3);
  constexpr long passesPerPoint = 10;
  PointBlocks blocks = BlocksOf(points);
  const Vec3 mean = MeanOf(ViewOf(points)) - blocks.Origin();
  const EmptyBall found = GrowEmptyBall(blocks, mean, passesPerPoint * points.GetSize());
  if (!found.found) FailFit(kNumericalFailure, kName);
  Place(found.radius, ToPoint(blocks.Origin() + found.centre));
}

ENuFitResult CNuSphSurf::FitMaxEx(const CNuPointArray& points, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMax(points, tol); }) == NuFitSuccess ? NuFitSuccess : NuFitFailure;
}

void CNuSphSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  RequireIterations(maxIter, kName);
  RequireCount(points, 1, kName);
  double width;
  const Sphere3 ball = MinimumZone(points, &width, tol, maxIter);
  Place(ball.radius, ToPoint(ball.centre));
  Output(zone, width);
}

void CNuSphSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  const double half = std::fabs(width) >= NuGetTol() ? 0.5 * width : 0.0;
  CNuSphSurf innermost(*this);
  CNuSphSurf outermost(*this);
  innermost.m_radius = std::max(0.0, m_radius - half);
  outermost.m_radius += half;
  Output(zone, width);
  Output(inner, innermost);
  Output(outer, outermost);
}

ENuFitResult CNuSphSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, tol, maxIter); });
}

ENuFitResult CNuSphSurf::FitMinZoneEx(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer,
                                      double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMinZone(points, zone, inner, outer, tol, maxIter); });
}
