#include <cmath>

#include "nu/curves/circle.h"
#include "nu/curves/internal/carrier_plane.h"
#include "nu/curves/internal/circle_fits.h"
#include "nu/curves/internal/plane_axes.h"
#include "nu/engine/least_squares/round_least_squares.h"
#include "nu/geometry/internal/fit_guards.h"

// Least-squares circle. The carrier plane is the least-squares plane of the points; in it, with the points projected
// onto the in-plane axes X and Y, the centre (a, b) and the radius r minimise the sum of
// (sqrt((u - a)^2 + (v - b)^2) - r)^2: an algebraic start, then Gauss-Newton until the squared length of the correction
// to (a, b, r) is below NuGetTol(). The correction is applied each time.

using namespace nu::internal;

namespace {

constexpr const char* kName = "CNuCircle";
constexpr int kLeastPoints = 3;

// From the first point, which is on the circle and the origin of the axes.
FeatureFit<PlacedCircle> CircleThroughThree(PointView points, const PlaneFrame& axes) {
  const Vec2 p = axes.LocalDirection(LoadVec3(points[1]) - axes.origin);
  const Vec2 q = axes.LocalDirection(LoadVec3(points[2]) - axes.origin);
  const double pp = p.x * p.x + p.y * p.y;
  const double qq = q.x * q.x + q.y * q.y;
  const double area = 2.0 * (p.x * q.y - q.x * p.y);
  const double a = (q.y * pp - p.y * qq) / area;
  const double b = (p.x * qq - q.x * pp) / area;
  const Vec3 toCentre = a * axes.x + b * axes.y;
  return {{{axes.origin + toCentre, axes.normal, std::sqrt(a * a + b * b)}, axes.x}};
}

FeatureFit<PlacedCircle> LeastSquaresCircle(PointView points, const PlaneFrame& axes, const FitOptions& options) {
  PointBlocks blocks(points, axes.origin);
  RoundLeastSquares<2> fit(blocks, {axes.x, axes.y});
  const double large = NuGetLarge();
  if (!fit.Start(points) || !(fit.Radius() < 0.1 * large)) FailFit(kNumericalFailure, kName);
  const GaussNewtonRule rule{.tolerance = NuGetTol(),
                             .large = large,
                             .limit = options.maxIter,
                             .takesLastStep = true,
                             .endsAtGrowth = false,
                             .endsBeforeLimit = false,
                             .monitor = options.monitor};
  RequireConverged(fit.Run(rule), kName, kName);
  const PlacedCircle circle{{axes.origin + fit.Centre(), axes.normal, fit.Radius()}, axes.x};
  const Deviations deviations = options.wantsDeviations ? fit.DeviationsNow() : Deviations{};
  return {circle, deviations.largest - deviations.smallest, deviations};
}

}  // namespace

FeatureFit<PlacedCircle> nu::internal::FitCircle(PointView points, const FitOptions& options) {
  RequireIterations(options.maxIter, kName);
  return TranslateForeign(kName, options, [&](const FitOptions& watched) {
    const Plane3 plane = CarrierPlane(points, kName);
    const bool exact = points.Size() == kLeastPoints;
    const PlaneFrame axes = AxesAcross(plane.normal, exact ? LoadVec3(points[0]) : plane.point);
    const auto found = exact ? CircleThroughThree(points, axes) : LeastSquaresCircle(points, axes, watched);
    if (!IsFinite(found.shape)) FailFit(kNumericalFailure, kName);
    RequireBend(points, found.shape.radius, kName);
    return found;
  });
}

void CNuCircle::Fit(const CNuPointArray& points, double* form, double* sumSquares, long maxIter) {
  const auto found =
      MemoryAsNumericalFailure(kName, [&] { return FitCircle(ViewOf(points), OptionsFor(form, sumSquares, maxIter)); });
  const PlacedCircle& circle = found.shape;
  Place(circle.radius, ToPoint(circle.centre), ToVector(circle.xAxis), ToVector(circle.normal));
  StoreForm(found, form, sumSquares);
}

NU_DEFINE_FIT_VARIANTS(CNuCircle, kName)
