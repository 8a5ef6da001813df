#include <cmath>

#include "nu/engine/minimax/smallest_tube.h"
#include "nu/engine/points/canonical_order.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/surfaces/internal/surface_fits.h"
#include "nu/surfaces/torus.h"

// Minimum torus: the circle in space whose largest distance to a point is the least.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuTorSurf";
constexpr const char* kFitMin = "CNuTorSurf::FitMin";
constexpr int kLeastPoints = 3;

struct SolvedTorus {
  Torus3 torus;
  bool isClear = false;
};

SolvedTorus SmallestTorus(PointView points, TubeStarts starts, const FitOptions& options) {
  PointBlocks blocks = BlocksOf(points);
  blocks.Keep();
  const Tube tube = SmallestTube(blocks, starts, options.maxIter, options.monitor);
  if (tube.solution.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  const TubeDistance& circle = tube.solution.model;
  const Vec3 centre = blocks.InCallersFrame(circle.frame.origin - circle.Radius() * circle.frame.x);
  const double major = circle.Radius() / blocks.Scale();
  const double minor = tube.solution.value / blocks.Scale();
  const bool isRound = tube.solution.end == MinimaxEnd::converged && circle.IsRound();
  if (!isRound || !IsFinite(centre) || !std::isfinite(major + minor)) FailFit(kNumericalFailure, kFitMin);
  return {{centre, WithLargestPositive(circle.frame.z), major, minor}, tube.isClear};
}

// Few points that leave doubt are taken once more, in an order of their own.
SolvedTorus SmallestTorusInAnyOrder(PointView points, const FitOptions& options) {
  const auto bestOfMany = [&](PointView data) { return SmallestTorus(data, TubeStarts::many, options); };
  if (!NeedsCanonicalOrder(points)) return bestOfMany(points);
  const SolvedTorus nearest = SmallestTorus(points, TubeStarts::one, options);
  return nearest.isClear ? nearest : InOrder(points, bestOfMany);
}

}  // namespace

FeatureFit<Torus3> nu::internal::FitMinTorus(PointView points, const FitOptions& options) {
  // Required: the limit is reported under the name of the sphere, and hosts look for that name.
  RequireIterations(options.maxIter, "CNuSphSurf");
  RequireCount(points, kLeastPoints, kName);
  RequireFinite(points, kFitMin);
  int corner[3];
  if (!FindTriangle(points, options.tol, corner)) FailFit(kCollinearPoints, kName, kLeastPoints);
  return Monitored(options, [&](const FitOptions& watched) {
    return FeatureFit<Torus3>{SmallestTorusInAnyOrder(points, watched).torus};
  });
}

void CNuTorSurf::FitMin(const CNuPointArray& points, double tol, long maxIter) {
  const Torus3 torus =
      WithMemory(kName, [&] { return FitMinTorus(ViewOf(points), {.maxIter = maxIter, .tol = tol}); }).shape;
  Place(torus.majorRadius, torus.minorRadius, ToPoint(torus.centre), ToVector(torus.axis));
}

ENuFitResult CNuTorSurf::FitMinEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMin(points, tol, maxIter); });
}
