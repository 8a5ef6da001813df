#include <cmath>

#include "nu/engine/minimax/smallest_tube.h"
#include "nu/engine/shapes/axis_direction.h"
#include "nu/foundation/int_array.h"
#include "nu/geometry/internal/fit_guards.h"
#include "nu/geometry/internal/point_order.h"
#include "nu/surfaces/torus.h"

// Minimum torus: the circle in space whose largest distance to a point is the least.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuTorSurf";
constexpr const char* kFitMin = "CNuTorSurf::FitMin";
constexpr int kLeastPoints = 3;

struct Torus {
  double majorRadius = 0.0;
  double minorRadius = 0.0;
  Vec3 centre;
  Vec3 axis;
  bool isClear = false;
};

void RequireNoncollinear(const CNuPointArray& points, double tol) {
  CNuIntArray index(0);
  if (points.IsNoncollinear(&index, tol) == NuFalse) FailFit(kCollinearPoints, kName, kLeastPoints);
}

Torus SmallestTorus(const CNuPointArray& points, TubeStarts starts, long maxIter) {
  PointBlocks blocks(ViewOf(points), MiddleOf(points));
  blocks.Keep();
  const Tube tube = SmallestTube(blocks, starts, maxIter);
  if (tube.solution.end == MinimaxEnd::limitReached) FailFit(kIterationLimit, kName);
  const TubeDistance& circle = tube.solution.model;
  const Vec3 centre = blocks.InCallersFrame(circle.frame.origin - circle.Radius() * circle.frame.x);
  const double major = circle.Radius() / blocks.Scale();
  const double minor = tube.solution.value / blocks.Scale();
  const bool isRound = tube.solution.end == MinimaxEnd::converged && circle.IsRound();
  if (!isRound || !IsFinite(centre) || !std::isfinite(major + minor)) FailFit(kNumericalFailure, kFitMin);
  return {major, minor, centre, WithLargestPositive(circle.frame.z), tube.isClear};
}

// Few points that leave doubt are taken once more, in an order of their own.
Torus SmallestTorusInAnyOrder(const CNuPointArray& points, long maxIter) {
  if (!NeedsCanonicalOrder(points)) return SmallestTorus(points, TubeStarts::many, maxIter);
  const Torus nearest = SmallestTorus(points, TubeStarts::one, maxIter);
  return nearest.isClear ? nearest : SmallestTorus(Ordered(points), TubeStarts::many, maxIter);
}

}  // namespace

void CNuTorSurf::FitMin(const CNuPointArray& points, double tol, long maxIter) {
  // Required: the limit is reported under the name of the sphere, and hosts look for that name.
  RequireIterations(maxIter, "CNuSphSurf");
  RequireCount(points, kLeastPoints, kName);
  RequireFinite(points, kFitMin);
  RequireNoncollinear(points, tol);
  const Torus torus = SmallestTorusInAnyOrder(points, maxIter);
  Place(torus.majorRadius, torus.minorRadius, ToPoint(torus.centre), ToVector(torus.axis));
}

ENuFitResult CNuTorSurf::FitMinEx(const CNuPointArray& points, double tol, long maxIter) {
  return ResultWithin(tol, maxIter, kName, [&] { FitMin(points, tol, maxIter); });
}
