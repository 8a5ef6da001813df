
#include "nu/curves/internal/circle_fits.h"
#include "nu/engine/base/elementary.h"
#include "nu/engine/minimax/empty_ball.h"
#include "nu/engine/minimax/enclosing_ball.h"
#include "nu/engine/minimax/spherical_shell.h"
#include "nu/engine/points/alignment.h"
#include "nu/engine/points/mean.h"
#include "nu/geometry/internal/line_fits.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "nu/surfaces/sphere.h"

// Minimax spheres; the problems behind them are those of nu/engine/minimax.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuSphSurf";
constexpr int kLeastPoints = 4;

// Two points that are not finite count as a line, too.
Sphere3 BallOnLine(PointView points, double tol) {
  RequireFinite(points, kName);
  if (HasFewerDistinct(points, 2, tol)) return {LoadVec3(points[0]), 0.0};
  const Line3 line = FitLine(points, {}).shape;
  std::size_t first = 0;
  std::size_t last = 0;
  double low = 0.0;
  double high = 0.0;
  for (std::size_t i = 0; i < points.Size(); ++i) {
    const double along = Dot(LoadVec3(points[i]) - line.point, line.direction);
    if (i == 0 || along < low) low = along, first = i;
    if (i == 0 || along > high) high = along, last = i;
  }
  const Vec3 p = LoadVec3(points[first]);
  const Vec3 half = 0.5 * LoadVec3(points[last]) - 0.5 * p;
  return {p + half, Hypot(half.x, half.y, half.z)};
}

Sphere3 Circumscribed(PointView points, double tol) {
  if (LieOnOneLine(points, tol)) return BallOnLine(points, tol);
  PointBlocks blocks = BlocksOf(points);
  const EnclosingBall found = SmallestEnclosingBall<3>(blocks, {{1.0, 0.0, 0.0}, {0.0, 1.0, 0.0}, {0.0, 0.0, 1.0}});
  if (!found.found) FailFit(kNumericalFailure, kName);
  return {blocks.Origin() + found.centre, found.radius};
}

FeatureFit<Sphere3> FlatZone(PointView points, const FitOptions& options) {
  RequireFinite(points, kName);
  const CircleZone zone = FitMinZoneCircle(points, options);
  return {{zone.shape.centre, zone.shape.radius}, zone.form, {}};
}

FeatureFit<Sphere3> MinimalSphericalShell(PointView points, PointBlocks& blocks, const Sphere3& start,
                                          const FitOptions& options) {
  const Vec3& origin = blocks.Origin();
  const Vec3 mean = MeanOf(points) - origin;
  const SphericalShell shell =
      ThinnestShell(blocks, mean, start.centre - origin, start.radius, options.maxIter, options.monitor);
  // Required: the limit is reached by the step that ends the search, too; hosts count on a limit that is never used up.
  if (shell.end == MinimaxEnd::limitReached || shell.steps >= options.maxIter) FailFit(kIterationLimit, kName);
  if (shell.end != MinimaxEnd::converged) FailFit(kNumericalFailure, kName);
  return {{origin + shell.centre, 0.5 * shell.inner + 0.5 * shell.outer}, shell.outer - shell.inner, {}};
}

// Fewer than four points count as coplanar.
FeatureFit<Sphere3> MinimumZone(PointView points, const FitOptions& options) {
  if (LieInOnePlane(points, options.tol)) return FlatZone(points, options);
  PointBlocks blocks = BlocksOf(points);
  blocks.Keep();
  const auto start =
      FitSphere(points, blocks, {.maxIter = options.maxIter, .wantsDeviations = true, .monitor = options.monitor});
  if (start.form < options.tol) {
    RequireBend(points, start.shape.radius, kName);
    return {start.shape};
  }
  return MinimalSphericalShell(points, blocks, start.shape, options);
}

}  // namespace

FeatureFit<Sphere3> nu::internal::FitMinSphere(PointView points, const FitOptions& options) {
  RequireCount(points, 1, kName);
  return Monitored(options, [&](const FitOptions& watched) {
    PassMonitor(watched);
    return RequireFinite(FeatureFit<Sphere3>{Circumscribed(points, watched.tol)}, kName);
  });
}

FeatureFit<Sphere3> nu::internal::FitMaxSphere(PointView points, const FitOptions& options) {
  RequireCount(points, kLeastPoints, kName);
  if (LieOnOneLine(points, options.tol)) FailFit(kCollinearPoints, kName, 3);
  return Monitored(options, [&](const FitOptions& watched) {
    constexpr long passesPerPoint = 10;
    PointBlocks blocks = BlocksOf(points);
    const Vec3 mean = MeanOf(points) - blocks.Origin();
    const long limit = passesPerPoint * static_cast<long>(points.Size());
    const EmptyBall found = GrowEmptyBall(blocks, mean, limit, watched.monitor);
    if (!found.found) FailFit(kNumericalFailure, kName);
    return RequireFinite(FeatureFit<Sphere3>{{blocks.Origin() + found.centre, found.radius}}, kName);
  });
}

FeatureFit<Sphere3> nu::internal::FitMinZoneSphere(PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  RequireCount(points, 1, kName);
  return Monitored(options,
                   [&](const FitOptions& watched) { return RequireFinite(MinimumZone(points, watched), kName); });
}

void CNuSphSurf::Place(double radius, const CNuPoint& centre) {
  SetPosition(centre, CNuVector(1.0, 0.0, 0.0), CNuVector(0.0, 0.0, 1.0));
  m_radius = radius;
}

void CNuSphSurf::FitMin(const CNuPointArray& points, double tol) {
  const Sphere3 found = WithMemory(kName, [&] { return FitMinSphere(ViewOf(points), {.tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.centre));
}

// Required: this runs FitMax and not FitMin. Hosts written for it expect the inscribed sphere, and a failure where
// FitMax has none.
ENuFitResult CNuSphSurf::FitMinEx(const CNuPointArray& points, double tol) {
  return FitMaxEx(points, tol);
}

void CNuSphSurf::FitMax(const CNuPointArray& points, double tol) {
  const Sphere3 found = WithMemory(kName, [&] { return FitMaxSphere(ViewOf(points), {.tol = tol}); }).shape;
  Place(found.radius, ToPoint(found.centre));
}

ENuFitResult CNuSphSurf::FitMaxEx(const CNuPointArray& points, double tol) {
  const LengthToleranceScope scope(tol);
  return ResultOf([&] { FitMax(points, tol); }) == NuFitSuccess ? NuFitSuccess : NuFitFailure;
}

void CNuSphSurf::FitMinZone(const CNuPointArray& points, double* zone, double tol, long maxIter) {
  const auto found =
      WithMemory(kName, [&] { return FitMinZoneSphere(ViewOf(points), {.maxIter = maxIter, .tol = tol}); });
  Place(found.shape.radius, ToPoint(found.shape.centre));
  Output(zone, found.form);
}

void CNuSphSurf::FitMinZone(const CNuPointArray& points, double* zone, CNuSphSurf* inner, CNuSphSurf* outer, double tol,
                            long maxIter) {
  double width;
  FitMinZone(points, &width, tol, maxIter);
  StoreBoundaries(*this, &CNuSphSurf::m_radius, width, inner, outer);
  Output(zone, width);
}

NU_DEFINE_ZONE_VARIANTS(CNuSphSurf, kName)
